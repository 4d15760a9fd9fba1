// 200 show/close cycles of every dialog of the toolkit leave the process with as many GDI and USER objects
// as before, and every font a caption box makes is gone with it. GetGuiResources answers 0 under Wine
// (Windows counts), so the windows of every cycle are also counted one by one and must all be gone.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQCaptionMessageBox.h"
#include "guibase/toolkit/UQHelpDialog.h"
#include "guibase/toolkit/UQInformationBox.h"
#include "guibase/toolkit/UQLineEditor.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "korlang_ids.h"

#include <cstdio>
#include <functional>
#include <vector>

using namespace toolkittest;

namespace {

const int CYCLES = 200;

struct Counts {
    DWORD dwGdi;
    DWORD dwUser;
};

Counts counts() {
    return {GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS),
            GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS)};
}

BOOL CALLBACK collectWindow(HWND _hWnd, LPARAM _lParam) {
    reinterpret_cast<std::vector<HWND>*>(_lParam)->push_back(_hWnd);
    return TRUE;
}

// Ends every dialog as soon as it is activated, by the button _nEndId (0: the [x] box), and keeps its
// windows: quicker than a timer for hundreds of dialogs.
class EndOnActivation {
public:
    explicit EndOnActivation(int _nEndId) : m_nEndId(_nEndId) {
        s_pCurrent = this;
        m_hHook = SetWindowsHookExW(WH_CBT, &EndOnActivation::hook, nullptr, GetCurrentThreadId());
        EXPECT_NE(m_hHook, nullptr);
    }
    ~EndOnActivation() {
        if (m_hHook != nullptr)
            UnhookWindowsHookEx(m_hHook);
        s_pCurrent = nullptr;
    }
    EndOnActivation(const EndOnActivation&) = delete;
    EndOnActivation& operator=(const EndOnActivation&) = delete;

    std::vector<HWND> m_windows;
    int m_nDialogs = 0;

private:
    static LRESULT CALLBACK hook(int _nCode, WPARAM _wParam, LPARAM _lParam) {
        if (_nCode == HCBT_ACTIVATE && s_pCurrent != nullptr)
            s_pCurrent->end(reinterpret_cast<HWND>(_wParam));
        return CallNextHookEx(nullptr, _nCode, _wParam, _lParam);
    }

    void end(HWND _hDlg) {
        // Only the dialogs, each once: activation also comes back to other windows as a dialog ends.
        wchar_t szClass[16] = {0};
        GetClassNameW(_hDlg, szClass, 16);
        if (lstrcmpW(szClass, L"#32770") != 0 || (!m_windows.empty() && m_windows.front() == _hDlg))
            return;
        ++m_nDialogs;
        m_windows.push_back(_hDlg);
        EnumChildWindows(_hDlg, collectWindow, reinterpret_cast<LPARAM>(&m_windows));
        if (m_nEndId == 0)
            PostMessageW(_hDlg, WM_CLOSE, 0, 0);
        else
            PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(m_nEndId, BN_CLICKED),
                         reinterpret_cast<LPARAM>(GetDlgItem(_hDlg, m_nEndId)));
    }

    static EndOnActivation* s_pCurrent;
    HHOOK m_hHook = nullptr;
    int m_nEndId;
};

EndOnActivation* EndOnActivation::s_pCurrent = nullptr;

// Shows a dialog CYCLES times, after one cycle to load what is loaded once (the language module, the
// shared icons, the common controls' classes).
void cycle(const char* _pszName, const std::function<void()>& _show, int _nEndId) {
    DialogDriver watchdog(120000);
    watchdog.onlyWatchTheTime();
    EndOnActivation ender(_nEndId);
    _show();
    const Counts before = counts();
    std::size_t uWindowsMade = 0;
    std::size_t uWindowsLeft = 0;
    for (int i = 0; i < CYCLES; ++i) {
        ender.m_windows.clear();
        _show();
        uWindowsMade += ender.m_windows.size();
        for (HWND hWnd : ender.m_windows)
            uWindowsLeft += IsWindow(hWnd) ? 1 : 0;
    }
    const Counts after = counts();
    EXPECT_FALSE(watchdog.timedOut()) << _pszName;
    EXPECT_EQ(ender.m_nDialogs, CYCLES + 1) << _pszName;
    EXPECT_GT(uWindowsMade, static_cast<std::size_t>(CYCLES) * 3) << _pszName;
    EXPECT_EQ(uWindowsLeft, 0u) << _pszName;
    EXPECT_EQ(after.dwGdi, before.dwGdi) << _pszName;
    EXPECT_EQ(after.dwUser, before.dwUser) << _pszName;
    std::printf(
        "%s: %d cycles, GDI objects %lu -> %lu, USER objects %lu -> %lu, windows made %lu, left %lu\n",
        _pszName, CYCLES, static_cast<unsigned long>(before.dwGdi), static_cast<unsigned long>(after.dwGdi),
        static_cast<unsigned long>(before.dwUser), static_cast<unsigned long>(after.dwUser),
        static_cast<unsigned long>(uWindowsMade), static_cast<unsigned long>(uWindowsLeft));
}

class DialogResources : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
    registrytest::RegistrySandbox m_sandbox;
};

} // namespace

TEST_F(DialogResources, MessageBoxes) {
    cycle(
        "UQMessageBox",
        [] {
            UQMessageBox box(L"Migrate?", UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO, L"x");
            box.mf_show(nullptr, 1);
        },
        IDC_MESSAGE_BUTTON1);
    cycle(
        "UQMessageBox from error data",
        [] {
            UQMessageBox box(UQErrnoData(UQErrno::_E_::File), CString());
            box.mf_show(nullptr);
        },
        IDC_MESSAGE_BUTTON2);
}

TEST_F(DialogResources, CaptionMessageBoxes) {
    cycle(
        "UQCaptionMessageBox",
        [] {
            UQCaptionMessageBox box(L"text", UQMessageBox::BUTTONS_SINGLE, L"line", L"caption");
            box.mf_show(nullptr);
        },
        IDC_MESSAGE_BUTTON2);
}

TEST_F(DialogResources, ACaptionBoxDeletesTheFontItMade) {
    HFONT hFont = nullptr;
    {
        UQCaptionMessageBox box(L"text", UQMessageBox::BUTTONS_SINGLE, L"line", L"caption");
        DialogDriver driver;
        driver.then([&](HWND _hDlg) {
            hFont = reinterpret_cast<HFONT>(
                SendDlgItemMessageW(_hDlg, IDC_MESSAGE_CAPTION_LINE, WM_GETFONT, 0, 0));
            PostMessageW(_hDlg, WM_CLOSE, 0, 0);
        });
        box.mf_show(nullptr);
        EXPECT_EQ(GetObjectType(hFont), static_cast<DWORD>(OBJ_FONT));
    }
    EXPECT_EQ(GetObjectType(hFont), 0u);
}

TEST_F(DialogResources, InformationHelpAndLineEditor) {
    cycle(
        "UQInformationBox",
        [] {
            UQInformationBox box(L"Tip", L"one", L"two", L"ResourceCycleTip");
            box.mf_show(nullptr);
        },
        IDC_INFORMATION_OK);
    cycle(
        "UQHelpDialog",
        [] {
            UQHelpDialog help(L"Help", L"text");
            help.mf_show(nullptr);
        },
        IDCANCEL);
    cycle(
        "UQLineEditor",
        [] {
            UQLineEditor editor(L"Rename", L"Name:");
            editor.mf_setText(L"name", 1);
            editor.mf_show(nullptr);
        },
        0);
}
