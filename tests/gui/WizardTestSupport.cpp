#include "WizardTestSupport.h"

#include "ToolkitTestSupport.h"

#include "korlang_ids.h"

namespace wizardtest {

namespace {

thread_local Script* t_pScript = nullptr;

} // namespace

std::string text(unsigned _uId) {
    return utf8(CString(UQString(_uId)));
}

TestWizard::~TestWizard() = default;

void TestWizard::mf_implInitPanel(UQWizardPanel& _panel) {
    inits.push_back(_panel.mf_getIndex());
    if (onInit)
        onInit(_panel);
}

void TestWizard::mf_implReadPanel(UQWizardPanel& _panel, int _bForward) {
    reads.emplace_back(_panel.mf_getIndex(), _bForward);
    if (onRead)
        onRead(_panel, _bForward);
}

UQWizardPanel& TestWizard::add(unsigned _uTemplate, unsigned _uTitle) {
    UQWizardPanel* pPanel = new UQWizardPanel(*this, mf_getPanelCount(), _uTitle, _uTemplate, 0);
    mf_addPanel(pPanel);
    return *pPanel;
}

RunPanel& TestWizard::addRun(unsigned _uTitle) {
    RunPanel* pPanel = new RunPanel(*this, mf_getPanelCount(), _uTitle);
    mf_addPanel(pPanel);
    return *pPanel;
}

RunPanel::RunPanel(UQWizard& _wizard, int _nIndex, unsigned _uTitle)
    : UQWizardPanel(_wizard, _nIndex, _uTitle, IDD_WIZARD_PANEL_RUN, 1) {}

void RunPanel::mf_execute() {
    {
        std::lock_guard<std::mutex> lock(mutex);
        threadIds.push_back(GetCurrentThreadId());
        threadNames.push_back(utf8(UQThreadContext::mf_getThreadName()));
    }
    ++executions;
    const UQErrnoData result = work ? work(*this) : UQErrnoData(UQErrno::_I_::StubFile);
    mf_setExecutionResult(result);
    if (report)
        mf_getWizard().mf_onPanelExecutionResult(result);
    ++returned;
}

bool frameReady(const UQWizard& _wizard) {
    HWND hFrame = _wizard.mf_getHandle();
    return hFrame != nullptr && IsWindowVisible(hFrame) && IsWindowEnabled(hFrame);
}

HWND boxOf(DWORD _dwThread, const std::string& _sCaption) {
    struct Search {
        std::string caption;
        HWND found;
    } search{_sCaption, nullptr};
    EnumThreadWindows(
        _dwThread == 0 ? GetCurrentThreadId() : _dwThread,
        [](HWND _hWnd, LPARAM _lParam) -> BOOL {
            Search& s = *reinterpret_cast<Search*>(_lParam);
            wchar_t szClass[16] = {0};
            GetClassNameW(_hWnd, szClass, 16);
            if (IsWindowVisible(_hWnd) && lstrcmpW(szClass, L"#32770") == 0 &&
                toolkittest::textOf(_hWnd) == s.caption) {
                s.found = _hWnd;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.found;
}

int visiblePanels(HWND _hFrame) {
    int nVisible = 0;
    for (HWND hChild = GetWindow(_hFrame, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        wchar_t szClass[16] = {0};
        GetClassNameW(hChild, szClass, 16);
        if (lstrcmpW(szClass, L"#32770") == 0 && IsWindowVisible(hChild))
            ++nVisible;
    }
    return nVisible;
}

Script::Script(UQWizard& _wizard, DWORD _dwTimeLimitMs)
    : m_wizard(_wizard), m_driver(_dwTimeLimitMs + 2000), m_pPrevious(t_pScript), m_uTimer(0),
      m_uDeadline(GetTickCount64() + _dwTimeLimitMs), m_bTimedOut(false) {
    m_driver.onlyWatchTheTime();
    t_pScript = this;
    m_uTimer = SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &Script::mf_tick);
    EXPECT_NE(m_uTimer, 0u);
}

Script::~Script() {
    if (m_uTimer != 0)
        KillTimer(nullptr, m_uTimer);
    t_pScript = m_pPrevious;
}

Script& Script::then(Action _action) {
    m_actions.push_back(std::move(_action));
    return *this;
}

Script& Script::click(int _nId) {
    return then([this, _nId] {
        if (!frameReady(m_wizard))
            return false;
        DialogDriver::click(m_wizard.mf_getHandle(), _nId);
        return true;
    });
}

Script& Script::answer(const std::string& _sCaption, int _nButton, DWORD _dwThread) {
    return then([this, _sCaption, _nButton, _dwThread] {
        HWND hBox = boxOf(_dwThread, _sCaption);
        if (hBox == nullptr)
            return false;
        answered.push_back(_sCaption);
        DialogDriver::click(hBox, _nButton);
        return true;
    });
}

Script& Script::answerWorkerBox(const std::string& _sCaption, int _nButton) {
    return then([this, _sCaption, _nButton] {
        const DWORD dwWorker = m_wizard.mf_getThreadId();
        HWND hBox = dwWorker != 0 ? boxOf(dwWorker, _sCaption) : nullptr;
        if (hBox == nullptr)
            return false;
        answered.push_back(_sCaption);
        DialogDriver::click(hBox, _nButton);
        return true;
    });
}

Script& Script::waitUntil(std::function<bool()> _condition) {
    return then(std::move(_condition));
}

void CALLBACK Script::mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept {
    if (t_pScript != nullptr)
        t_pScript->mf_onTick();
}

void Script::mf_onTick() noexcept {
    try {
        if (GetTickCount64() > m_uDeadline) {
            // The driver ends this thread's dialogs a little later; a failure box of the worker (one button,
            // 2) left open would keep the finishing frame waiting for the worker for ever.
            if (!m_bTimedOut)
                ADD_FAILURE() << "wizard script: time limit reached with " << m_actions.size()
                              << " actions left";
            m_bTimedOut = true;
            const DWORD dwWorker = m_wizard.mf_getThreadId();
            if (dwWorker != 0 && m_wizard.mf_isRunning()) {
                EnumThreadWindows(
                    dwWorker,
                    [](HWND _hWnd, LPARAM) -> BOOL {
                        PostMessageW(_hWnd, WM_COMMAND, MAKEWPARAM(IDC_MESSAGE_BUTTON2, BN_CLICKED), 0);
                        return TRUE;
                    },
                    0);
            }
            return;
        }
        if (!m_actions.empty() && m_actions.front()())
            m_actions.pop_front();
    } catch (...) {
        ADD_FAILURE() << "wizard script action threw";
        m_actions.clear();
    }
}

} // namespace wizardtest
