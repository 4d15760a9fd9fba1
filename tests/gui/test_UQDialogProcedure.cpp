// The dialog procedure shared by the dialog classes, on a real modal dialog: the object in the window's
// user data, the initialisation and its failure text, commands, static colours, the close box, the
// "No user data pointer" records, and no exception ever leaving the procedure.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQDialogProcedure.h"

#include <stdexcept>

using namespace toolkittest;

namespace {

const std::string kTab = "    ";

// A dialog class as the library writes them, with a switch for each way its handlers can fail.
class ProbeDialog {
public:
    static constexpr int RESULT_CANCEL = 0;
    static constexpr int RESULT_OK = 1;

    INT_PTR mf_onInitDialog(HWND _hDlg) {
        m_hDlg = _hDlg;
        ++m_nInitCalls;
        m_pUserDataSeenInInit = GetWindowLongPtrW(_hDlg, GWLP_USERDATA);
        if (m_bFailInit)
            throw UQErrno(UQErrno::_E_::Resource);
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
            return -5;
        }
    }

    HBRUSH mf_onCtlColorStatic(WPARAM _wParam, LPARAM _lParam) {
        m_hColouredDC = reinterpret_cast<HDC>(_wParam);
        m_hColouredControl = reinterpret_cast<HWND>(_lParam);
        return GetSysColorBrush(COLOR_INFOBK);
    }

    void mf_onClose() {
        UQReport::mf_log(UQLogData::LEVEL_G, L"ProbeDialog::mf_onClose",
                         L"Mouse [x] pressed, terminating dialog with result RESULT_CANCEL");
        EndDialog(m_hDlg, RESULT_CANCEL);
    }

    HWND m_hDlg = nullptr;
    int m_nInitCalls = 0;
    LONG_PTR m_pUserDataSeenInInit = 0;
    bool m_bFailInit = false;
    std::vector<int> m_commands;
    HDC m_hColouredDC = nullptr;
    HWND m_hColouredControl = nullptr;
};

constexpr wchar_t kCallback[] = L"f_ProbeDialogCallback";
constexpr wchar_t kInitFailure[] = L"Failure initializing probe dialog:\r\n%s%s";
constexpr wchar_t kNoUserData[] = L"No user data pointer in probe dialog";

INT_PTR CALLBACK f_ProbeDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    return UQDialogProcedure<ProbeDialog, kCallback, kInitFailure, kNoUserData>::mf_dispatch(
        _hDlg, _uMsg, _wParam, _lParam);
}

// A class without static colours and with a literal that names its panel.
class PanelDialog {
public:
    INT_PTR mf_onInitDialog(HWND _hDlg) {
        m_hDlg = _hDlg;
        return 1;
    }
    int mf_onCommand(WPARAM, LPARAM) { return 0; }
    void mf_onClose() { EndDialog(m_hDlg, 0); }

    // It also wants timer messages.
    static int mf_handlesMessage(UINT _uMsg) { return _uMsg == WM_USER + 1; }
    INT_PTR mf_onMessage(HWND, UINT, WPARAM _wParam, LPARAM) {
        m_nUserMessages += static_cast<int>(_wParam);
        return 33;
    }

    HWND m_hDlg = nullptr;
    int m_nUserMessages = 0;
};

constexpr wchar_t kPanelCallback[] = L"f_PanelDialogProcedure";
constexpr wchar_t kPanelInitFailure[] = L"Failure initializing panel:\r\n%s%s";
constexpr wchar_t kPanelNoUserData[] = L"No user data pointer in panel '%s'";

INT_PTR CALLBACK f_PanelDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    return UQDialogProcedure<PanelDialog, kPanelCallback, kPanelInitFailure, kPanelNoUserData>::mf_dispatch(
        _hDlg, _uMsg, _wParam, _lParam);
}

INT_PTR showProbe(DLGPROC _procedure, void* _pObject) {
    return DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROBE), nullptr, _procedure,
                           reinterpret_cast<LPARAM>(_pObject));
}

} // namespace

TEST(UQDialogProcedure, InitialisationKeepsTheObjectInTheUserDataBeforeItRuns) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    LONG_PTR userData = 0;
    driver.then([&](HWND _hDlg) {
        userData = GetWindowLongPtrW(_hDlg, GWLP_USERDATA);
        EXPECT_EQ(probe.m_hDlg, _hDlg);
        DialogDriver::click(_hDlg, IDOK);
    });
    LogCheck log;
    EXPECT_EQ(showProbe(f_ProbeDialogCallback, &probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(userData, reinterpret_cast<LONG_PTR>(&probe));
    EXPECT_EQ(probe.m_pUserDataSeenInInit, reinterpret_cast<LONG_PTR>(&probe));
    EXPECT_EQ(probe.m_nInitCalls, 1);
    EXPECT_EQ(probe.m_commands, (std::vector<int>{IDOK}));
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQDialogProcedure, AFailedInitialisationIsLoggedWithTheClassesTextAndTheDialogGoesOn) {
    initCommonControls();
    ProbeDialog probe;
    probe.m_bFailInit = true;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_CLOSE, 0, 0); });
    LogCheck log;
    EXPECT_EQ(showProbe(f_ProbeDialogCallback, &probe), ProbeDialog::RESULT_CANCEL);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "f_ProbeDialogCallback",
                   "Failure initializing probe dialog:\r\n" + kTab + errorText(UQErrno::_E_::Resource, 0)},
                  {'G', "ProbeDialog::mf_onClose",
                   "Mouse [x] pressed, terminating dialog with result RESULT_CANCEL"}}));
}

TEST(UQDialogProcedure, TheCloseBoxEndsTheDialogWithTheCancelResult) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0); });
    LogCheck log;
    EXPECT_EQ(showProbe(f_ProbeDialogCallback, &probe), ProbeDialog::RESULT_CANCEL);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "ProbeDialog::mf_onClose",
                                     "Mouse [x] pressed, terminating dialog with result RESULT_CANCEL"}}));
}

TEST(UQDialogProcedure, CommandResultsAreSignExtendedAndStaticColoursAnswerTheBrush) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    INT_PTR nCommand = 0;
    INT_PTR nColour = 0;
    HWND hLabel = nullptr;
    driver.then([&](HWND _hDlg) {
        nCommand = f_ProbeDialogCallback(_hDlg, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
        hLabel = GetDlgItem(_hDlg, IDC_PROBE_TEXT);
        HDC hDC = GetDC(hLabel);
        // The colour messages pass a dialog procedure's answer through unchanged.
        nColour = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                               reinterpret_cast<LPARAM>(hLabel));
        ReleaseDC(hLabel, hDC);
        DialogDriver::click(_hDlg, IDOK);
    });
    EXPECT_EQ(showProbe(f_ProbeDialogCallback, &probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(nCommand, static_cast<INT_PTR>(-5));
    EXPECT_EQ(nColour, reinterpret_cast<INT_PTR>(GetSysColorBrush(COLOR_INFOBK)));
    EXPECT_EQ(probe.m_hColouredControl, hLabel);
}

TEST(UQDialogProcedure, NoExceptionLeavesTheProcedure) {
    initCommonControls();
    ProbeDialog probe;
    DialogDriver driver;
    INT_PTR nUQErrno = -1;
    INT_PTR nOther = -1;
    driver.then([&](HWND _hDlg) {
        nUQErrno = f_ProbeDialogCallback(_hDlg, WM_COMMAND, IDC_PROBE_TEXT, 0);
        nOther = f_ProbeDialogCallback(_hDlg, WM_COMMAND, IDC_MISSING, 0);
        DialogDriver::click(_hDlg, IDOK);
    });
    LogCheck log;
    EXPECT_EQ(showProbe(f_ProbeDialogCallback, &probe), ProbeDialog::RESULT_OK);
    EXPECT_EQ(nUQErrno, 0);
    EXPECT_EQ(nOther, 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "f_ProbeDialogCallback",
                   "Failure handling window message 0x0111:\r\n" + kTab + errorText(UQErrno::_E_::Gui, 0)},
                  {'E', "f_ProbeDialogCallback",
                   "Failure handling window message 0x0111:\r\n" + kTab + "Unexpected exception"}}));
}

TEST(UQDialogProcedure, WithoutAnObjectEveryHandledMessageIsLoggedAndAnswersZero) {
    initCommonControls();
    DialogDriver driver;
    INT_PTR nCommand = -1;
    INT_PTR nClose = -1;
    INT_PTR nUser = -1;
    INT_PTR nOther = -1;
    driver.then([&](HWND _hDlg) {
        nCommand = f_PanelDialogProcedure(_hDlg, WM_COMMAND, IDOK, 0);
        nClose = f_PanelDialogProcedure(_hDlg, WM_CLOSE, 0, 0);
        nUser = f_PanelDialogProcedure(_hDlg, WM_USER + 1, 0, 0);
        nOther = f_PanelDialogProcedure(_hDlg, WM_SIZE, 0, 0);
        EndDialog(_hDlg, 42);
    });
    LogCheck log;
    // A class without static colours, so that painting adds no records of its own.
    EXPECT_EQ(showProbe(f_PanelDialogProcedure, nullptr), 42);
    EXPECT_EQ(nCommand, 0);
    EXPECT_EQ(nClose, 0);
    EXPECT_EQ(nUser, 0);
    EXPECT_EQ(nOther, 0);
    // The placeholder of the class's text gets the dialog's caption. One record at WM_INITDIALOG, then one
    // for each message the class handles; none for WM_SIZE, which it does not.
    const LogLine noUserData{'E', "f_PanelDialogProcedure", "No user data pointer in panel 'Probe'"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{noUserData, noUserData, noUserData, noUserData}));
}

TEST(UQDialogProcedure, AClassWithoutStaticColoursLeavesThemToTheDialogManager) {
    initCommonControls();
    PanelDialog panel;
    DialogDriver driver;
    INT_PTR nColour = -1;
    INT_PTR nUser = -1;
    INT_PTR nUnhandled = -1;
    driver.then([&](HWND _hDlg) {
        HWND hLabel = GetDlgItem(_hDlg, IDC_PROBE_TEXT);
        nColour = f_PanelDialogProcedure(_hDlg, WM_CTLCOLORSTATIC, 0, reinterpret_cast<LPARAM>(hLabel));
        nUser = f_PanelDialogProcedure(_hDlg, WM_USER + 1, 4, 0);
        nUnhandled = f_PanelDialogProcedure(_hDlg, WM_USER + 2, 4, 0);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    LogCheck log;
    EXPECT_EQ(showProbe(f_PanelDialogProcedure, &panel), 0);
    EXPECT_EQ(nColour, 0);
    EXPECT_EQ(nUser, 33);
    EXPECT_EQ(nUnhandled, 0);
    EXPECT_EQ(panel.m_nUserMessages, 4);
    EXPECT_EQ(log.count(), 0u);
}
