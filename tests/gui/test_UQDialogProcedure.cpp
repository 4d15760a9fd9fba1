// The pieces every dialog callback is built from, on real dialogs and through the dialog manager
// (SendMessageW): the object kept on init, fetch-or-log with the callback's own literal, the exception
// barrier with its text, notification results through DWLP_MSGRESULT, a command answered before the
// object is fetched, and the user data cleared when a modeless panel goes.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQDialogProcedure.h"

#include <prsht.h>

#include <stdexcept>

using namespace toolkittest;

namespace {

const std::string TAB = "    ";
// A command the probe answers before it looks for its object, as a progress dialog's control 376.
const int ID_EARLY = 376;

class ProbeDialog {
public:
    static constexpr int RESULT_CANCEL = 0;
    static constexpr int RESULT_OK = 1;

    int mf_onInitDialog(HWND _hDlg) {
        m_hDlg = _hDlg;
        ++m_nInitCalls;
        m_nUserDataSeenInInit = GetWindowLongPtrW(_hDlg, GWLP_USERDATA);
        if (m_bFailInit)
            throw UQErrno(UQErrno::_E_::Resource);
        if (m_bFailInitOther)
            throw std::runtime_error("not a UQErrno");
        return 1;
    }

    int mf_onCommand(WPARAM _wParam, LPARAM) {
        m_commands.push_back(LOWORD(_wParam));
        switch (LOWORD(_wParam)) {
        case IDOK:
            EndDialog(m_hDlg, RESULT_OK);
            return 1;
        case IDC_PROBE_TEXT:
            throw UQErrno(UQErrno::_E_::Gui);
        case IDC_MISSING:
            throw std::runtime_error("not a UQErrno");
        default:
            return 0;
        }
    }

    HBRUSH mf_onCtlColorStatic(WPARAM _wParam, LPARAM _lParam) {
        m_hColouredDC = reinterpret_cast<HDC>(_wParam);
        m_hColouredControl = reinterpret_cast<HWND>(_lParam);
        return GetSysColorBrush(COLOR_INFOBK);
    }

    HWND m_hDlg = nullptr;
    int m_nInitCalls = 0;
    LONG_PTR m_nUserDataSeenInInit = 0;
    bool m_bFailInit = false;
    bool m_bFailInitOther = false;
    std::vector<int> m_commands;
    HDC m_hColouredDC = nullptr;
    HWND m_hColouredControl = nullptr;
    int m_nNotifications = 0;
};

const wchar_t* const PROBE_NO_USER_DATA = L"No user data pointer in probe dialog";
const wchar_t* const PROBE_INIT_FAILURE = L"Failure initializing probe dialog:\r\n%s%s";
const wchar_t* const PANEL_NO_USER_DATA = L"No user data pointer in panel '%s'";
const wchar_t* const PANEL_INIT_FAILURE = L"Failure initializing panel '%s':\r\n%s%s";

// A modal dialog's callback as the library writes them: one case per row of its table.
INT_PTR CALLBACK f_ProbeDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_ProbeDialogCallback";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<ProbeDialog>(
            _hDlg, _lParam, _sFunction_, PROBE_NO_USER_DATA, PROBE_INIT_FAILURE,
            [&](ProbeDialog& _probe) { return _probe.mf_onInitDialog(_hDlg); });
    case WM_COMMAND:
        if (LOWORD(_wParam) == ID_EARLY) {
            EndDialog(_hDlg, ID_EARLY);
            return 1;
        }
        if (HIWORD(_wParam) != BN_CLICKED)
            return 0;
        return Procedure::mf_forward<ProbeDialog>(
            _hDlg, _uMsg, _sFunction_, PROBE_NO_USER_DATA,
            [&](ProbeDialog& _probe) { return _probe.mf_onCommand(_wParam, _lParam); });
    case WM_CTLCOLORSTATIC:
        return Procedure::mf_forward<ProbeDialog>(
            _hDlg, _uMsg, _sFunction_, PROBE_NO_USER_DATA, [&](ProbeDialog& _probe) {
                return Procedure::mf_brushResult(_probe.mf_onCtlColorStatic(_wParam, _lParam));
            });
    case WM_NOTIFY:
        // Only the page's apply; the buttons' custom drawing is the dialog manager's.
        if (reinterpret_cast<const NMHDR*>(_lParam)->code != static_cast<UINT>(PSN_APPLY))
            return 0;
        return Procedure::mf_forward<ProbeDialog>(
            _hDlg, _uMsg, _sFunction_, PROBE_NO_USER_DATA, [&](ProbeDialog& _probe) {
                ++_probe.m_nNotifications;
                return Procedure::mf_setMessageResult(_hDlg, PSNRET_INVALID_NOCHANGEPAGE);
            });
    case WM_CLOSE:
        return Procedure::mf_forward<ProbeDialog>(
            _hDlg, _uMsg, _sFunction_, PROBE_NO_USER_DATA, [](ProbeDialog& _probe) {
                UQReport::mf_log(UQLogData::LEVEL_G, L"f_ProbeDialogCallback",
                                 L"Mouse [x] pressed, terminating dialog with "
                                 L"result RESULT_CANCEL");
                EndDialog(_probe.m_hDlg, ProbeDialog::RESULT_CANCEL);
                return 1;
            });
    default:
        return 0;
    }
}

// A modeless panel: its init failure and its missing object name it by its title.
class PanelDialog {
public:
    CString m_sTitle = L"Options";
    bool m_bFailInit = false;
    int m_nCommands = 0;
};

INT_PTR CALLBACK f_PanelDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_PanelDialogProcedure";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG: {
        PanelDialog* pPanel = Procedure::mf_storeOnInit<PanelDialog>(_hDlg, _lParam);
        if (pPanel == nullptr)
            return 0;
        return Procedure::mf_barrier(
            _sFunction_, PANEL_INIT_FAILURE,
            [&] {
                if (pPanel->m_bFailInit)
                    throw UQErrno(UQErrno::_E_::Resource);
                return 1;
            },
            pPanel->m_sTitle);
    }
    case WM_COMMAND: {
        PanelDialog* pPanel = Procedure::mf_fetch<PanelDialog>(_hDlg, _sFunction_, PANEL_NO_USER_DATA,
                                                               Procedure::mf_windowText(_hDlg));
        if (pPanel == nullptr)
            return 0;
        ++pPanel->m_nCommands;
        return 1;
    }
    case WM_NCDESTROY:
        Procedure::mf_clearUserData(_hDlg);
        return 0;
    default:
        return 0;
    }
}

INT_PTR showProbe(ProbeDialog* _pProbe) {
    return DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROBE), nullptr,
                           f_ProbeDialogCallback, reinterpret_cast<LPARAM>(_pProbe));
}

HWND createPanel(PanelDialog* _pPanel) {
    return CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROBE), nullptr,
                              f_PanelDialogProcedure, reinterpret_cast<LPARAM>(_pPanel));
}

std::string gui(const UQErrnoValue& _value) {
    return errorText(_value, 0);
}

} // namespace

TEST(UQDialogProcedure, InitialisationKeepsTheObjectInTheUserDataBeforeItRuns) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    LONG_PTR nUserData = 0;
    driver.then([&](HWND _hDlg) {
        nUserData = GetWindowLongPtrW(_hDlg, GWLP_USERDATA);
        EXPECT_EQ(probe.m_hDlg, _hDlg);
        DialogDriver::click(_hDlg, IDOK);
    });
    LogCheck log;
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(nUserData, reinterpret_cast<LONG_PTR>(&probe));
    EXPECT_EQ(probe.m_nUserDataSeenInInit, reinterpret_cast<LONG_PTR>(&probe));
    EXPECT_EQ(probe.m_nInitCalls, 1);
    EXPECT_EQ(probe.m_commands, (std::vector<int>{IDOK}));
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQDialogProcedure, AFailedInitialisationIsLoggedWithTheCallbacksTextAndTheDialogGoesOn) {
    initCommonControls();
    ProbeDialog probe;
    probe.m_bFailInit = true;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_CLOSE, 0, 0); });
    LogCheck log;
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_CANCEL);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "f_ProbeDialogCallback",
                                "Failure initializing probe dialog:\r\n" + TAB + gui(UQErrno::_E_::Resource)},
                               {'G', "f_ProbeDialogCallback",
                                "Mouse [x] pressed, terminating dialog with result RESULT_CANCEL"}}));
}

TEST(UQDialogProcedure, AnInitialisationThatThrowsSomethingElseIsLoggedAsUnexpected) {
    initCommonControls();
    ProbeDialog probe;
    probe.m_bFailInitOther = true;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_CLOSE, 0, 0); });
    LogCheck log;
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_CANCEL);
    ASSERT_EQ(log.count(), 2u);
    EXPECT_EQ(log.lines()[0],
              (LogLine{'E', "f_ProbeDialogCallback",
                       "Failure initializing probe dialog:\r\n" + TAB + "Unexpected exception"}));
}

TEST(UQDialogProcedure, TheCloseBoxEndsTheDialogWithTheCancelResult) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0); });
    LogCheck log;
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_CANCEL);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "f_ProbeDialogCallback",
                                     "Mouse [x] pressed, terminating dialog with result RESULT_CANCEL"}}));
}

TEST(UQDialogProcedure, StaticColoursAnswerTheHandlersBrushThroughTheDialogManager) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    LRESULT nColour = 0;
    HWND hLabel = nullptr;
    driver.then([&](HWND _hDlg) {
        hLabel = GetDlgItem(_hDlg, IDC_PROBE_TEXT);
        HDC hDC = GetDC(hLabel);
        // The colour messages pass a dialog procedure's answer through unchanged.
        nColour = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                               reinterpret_cast<LPARAM>(hLabel));
        ReleaseDC(hLabel, hDC);
        DialogDriver::click(_hDlg, IDOK);
    });
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(nColour, reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_INFOBK)));
    EXPECT_EQ(probe.m_hColouredControl, hLabel);
}

TEST(UQDialogProcedure, ANotificationResultReachesTheSenderThroughDWLP_MSGRESULT) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    LRESULT nResult = -1;
    driver.then([&](HWND _hDlg) {
        NMHDR header;
        ZeroMemory(&header, sizeof header);
        header.hwndFrom = GetDlgItem(_hDlg, IDC_PROBE_TEXT);
        header.idFrom = IDC_PROBE_TEXT;
        header.code = PSN_APPLY;
        nResult = SendMessageW(_hDlg, WM_NOTIFY, IDC_PROBE_TEXT, reinterpret_cast<LPARAM>(&header));
        DialogDriver::click(_hDlg, IDOK);
    });
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(probe.m_nNotifications, 1);
    EXPECT_EQ(nResult, PSNRET_INVALID_NOCHANGEPAGE);
}

TEST(UQDialogProcedure, NoExceptionLeavesTheCallback) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_PROBE_TEXT, BN_CLICKED), 0);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_MISSING, BN_CLICKED), 0);
        DialogDriver::click(_hDlg, IDOK);
    });
    LogCheck log;
    EXPECT_EQ(showProbe(&probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(probe.m_commands, (std::vector<int>{IDC_PROBE_TEXT, IDC_MISSING, IDOK}));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "f_ProbeDialogCallback",
                   "Failure handling window message 0x0111:\r\n" + TAB + gui(UQErrno::_E_::Gui)},
                  {'E', "f_ProbeDialogCallback",
                   "Failure handling window message 0x0111:\r\n" + TAB + "Unexpected exception"}}));
}

TEST(UQDialogProcedure, ACommandAnsweredBeforeTheLookupNeedsNoObjectAndFilteredCodesLogNothing) {
    initCommonControls();
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        // A notification the callback filters out before it fetches: no record.
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDOK, BN_SETFOCUS), 0);
        // A handled message without an object: the callback's literal.
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
        PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(ID_EARLY, BN_CLICKED), 0);
    });
    LogCheck log;
    EXPECT_EQ(DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROBE), nullptr,
                              f_ProbeDialogCallback, 0),
              ID_EARLY);
    const LogLine noUserData{'E', "f_ProbeDialogCallback", "No user data pointer in probe dialog"};
    // At WM_INITDIALOG, at every painted static (WM_CTLCOLORSTATIC), and at the clicked button.
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 2u);
    for (const LogLine& line : lines)
        EXPECT_EQ(line, noUserData);
}

TEST(UQDialogProcedure, APanelsInitFailureAndMissingObjectNameThePanel) {
    initCommonControls();
    PanelDialog panel;
    panel.m_bFailInit = true;
    LogCheck log;
    HWND hPanel = createPanel(&panel);
    ASSERT_NE(hPanel, nullptr);
    SetWindowTextW(hPanel, L"Options");
    SetWindowLongPtrW(hPanel, GWLP_USERDATA, 0);
    SendMessageW(hPanel, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    DestroyWindow(hPanel);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "f_PanelDialogProcedure",
                   "Failure initializing panel 'Options':\r\n" + TAB + gui(UQErrno::_E_::Resource)},
                  {'E', "f_PanelDialogProcedure", "No user data pointer in panel 'Options'"}}));
}

namespace {

LONG_PTR g_nUserDataAfterDestroy = -1;

LRESULT CALLBACK watchDestroy(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam, UINT_PTR, DWORD_PTR) {
    const LRESULT nResult = DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    if (_uMsg == WM_NCDESTROY)
        g_nUserDataAfterDestroy = GetWindowLongPtrW(_hWnd, GWLP_USERDATA);
    return nResult;
}

} // namespace

TEST(UQDialogProcedure, AModelessPanelForgetsItsObjectWhenItsWindowGoes) {
    initCommonControls();
    PanelDialog panel;
    HWND hPanel = createPanel(&panel);
    ASSERT_NE(hPanel, nullptr);
    SendMessageW(hPanel, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    EXPECT_EQ(panel.m_nCommands, 1);
    ASSERT_TRUE(SetWindowSubclass(hPanel, watchDestroy, 1, 0));
    EXPECT_EQ(GetWindowLongPtrW(hPanel, GWLP_USERDATA), reinterpret_cast<LONG_PTR>(&panel));
    DestroyWindow(hPanel);
    EXPECT_EQ(g_nUserDataAfterDestroy, 0);
}
