#include "DialogDriver.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// The driver of this thread; drivers nest, the innermost one acts.
thread_local DialogDriver* t_pDriver = nullptr;

// Handled dialogs carry a mark of their own, so that a new dialog that gets the handle of an old one is
// not taken for it.
const wchar_t* const HANDLED_MARK = L"KorDialogDriverHandled";

bool isHandled(HWND _hDialog) {
    return GetPropW(_hDialog, HANDLED_MARK) != nullptr;
}

void markHandled(HWND _hDialog) {
    SetPropW(_hDialog, HANDLED_MARK, reinterpret_cast<HANDLE>(1));
}

std::vector<HWND> visibleDialogs() {
    std::vector<HWND> dialogs;
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND _hWnd, LPARAM _lParam) -> BOOL {
            wchar_t szClass[16] = {0};
            GetClassNameW(_hWnd, szClass, 16);
            if (IsWindowVisible(_hWnd) && lstrcmpW(szClass, L"#32770") == 0)
                reinterpret_cast<std::vector<HWND>*>(_lParam)->push_back(_hWnd);
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&dialogs));
    return dialogs;
}

} // namespace

DialogDriver::DialogDriver(DWORD _dwTimeLimitMs)
    : m_pPrevious(t_pDriver), m_uTimer(0), m_uDeadline(GetTickCount64() + _dwTimeLimitMs), m_nUnexpected(0),
      m_nTaken(0), m_bTimedOut(false), m_bOnlyWatch(false) {
    // Dialogs that are open already (a test's modeless dialog) are not the driver's.
    for (HWND hDialog : visibleDialogs()) {
        if (!isHandled(hDialog)) {
            m_preExisting.insert(hDialog);
            markHandled(hDialog);
        }
    }
    t_pDriver = this;
    m_uTimer = SetTimer(nullptr, 0, USER_TIMER_MINIMUM, &DialogDriver::mf_tick);
    EXPECT_NE(m_uTimer, 0u) << "SetTimer failed with " << GetLastError();
}

DialogDriver::~DialogDriver() {
    if (m_uTimer != 0)
        KillTimer(nullptr, m_uTimer);
    for (HWND hDialog : m_preExisting) {
        if (IsWindow(hDialog))
            RemovePropW(hDialog, HANDLED_MARK);
    }
    t_pDriver = m_pPrevious;
}

DialogDriver& DialogDriver::then(Step _step) {
    m_steps.push_back(std::move(_step));
    return *this;
}

DialogDriver& DialogDriver::onlyWatchTheTime() {
    m_bOnlyWatch = true;
    return *this;
}

void DialogDriver::click(HWND _hDialog, int _nId) {
    PostMessageW(_hDialog, WM_COMMAND, MAKEWPARAM(_nId, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(_hDialog, _nId)));
}

void CALLBACK DialogDriver::mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept {
    if (t_pDriver != nullptr)
        t_pDriver->mf_onTick();
}

HWND DialogDriver::mf_newestDialog() const {
    // Top-level windows come in z-order: the first one not yet handled is the newest.
    for (HWND hDialog : visibleDialogs()) {
        if (!isHandled(hDialog))
            return hDialog;
    }
    return nullptr;
}

void DialogDriver::mf_onTick() noexcept {
    try {
        if (GetTickCount64() > m_uDeadline) {
            if (!m_bTimedOut)
                ADD_FAILURE() << "dialog driver: time limit reached, ending every dialog of the thread";
            m_bTimedOut = true;
            for (HWND hDialog : visibleDialogs()) {
                if (m_preExisting.count(hDialog) == 0)
                    EndDialog(hDialog, IDCANCEL);
            }
            return;
        }
        if (m_bOnlyWatch)
            return;
        HWND hDialog = mf_newestDialog();
        if (hDialog == nullptr)
            return;
        // Marked and taken before the step runs: a step that opens another dialog gets it handled by the
        // ticks of the nested loop.
        markHandled(hDialog);
        if (m_steps.empty()) {
            ++m_nUnexpected;
            PostMessageW(hDialog, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0);
            return;
        }
        Step step = std::move(m_steps.front());
        m_steps.pop_front();
        ++m_nTaken;
        step(hDialog);
    } catch (const std::exception& e) {
        ADD_FAILURE() << "dialog driver step threw: " << e.what();
    } catch (...) {
        ADD_FAILURE() << "dialog driver step threw";
    }
}
