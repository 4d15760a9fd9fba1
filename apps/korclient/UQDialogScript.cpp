#include "UQDialogScript.h"

namespace {

// A wizard frame's Next button.
const int ITEM_NEXT = 440;
const UINT TICK_MS = 40;

thread_local UQDialogScript* t_pScript = nullptr;

std::wstring className(HWND _hWnd) {
    wchar_t szClass[64] = {};
    GetClassNameW(_hWnd, szClass, 64);
    return szClass;
}

bool isOurs(HWND _hWnd, DWORD& _rdwThread) {
    DWORD dwProcess = 0;
    _rdwThread = GetWindowThreadProcessId(_hWnd, &dwProcess);
    return dwProcess == GetCurrentProcessId();
}

} // namespace

UQDialogScript::UQDialogScript(DWORD _dwTimeLimitMs)
    : m_pPrevious(t_pScript), m_uTimer(0), m_uStart(GetTickCount64()), m_uDeadline(m_uStart + _dwTimeLimitMs),
      m_bBusy(false), m_bTimedOut(false) {
    t_pScript = this;
    m_uTimer = SetTimer(nullptr, 0, TICK_MS, &UQDialogScript::mf_tick);
    if (m_uTimer == 0)
        m_failures.push_back(L"no timer to drive the dialogs (system error " +
                             std::to_wstring(GetLastError()) + L")");
}

UQDialogScript::~UQDialogScript() {
    if (m_uTimer != 0)
        KillTimer(nullptr, m_uTimer);
    t_pScript = m_pPrevious;
}

void UQDialogScript::mf_then(const wchar_t* _pszName, Step _step) {
    m_steps.emplace_back(_pszName, std::move(_step));
}

void CALLBACK UQDialogScript::mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept {
    UQDialogScript* pScript = t_pScript;
    // A step that opens a modal loop ticks again inside it: that tick waits for the step to return.
    if (pScript == nullptr || pScript->m_bBusy)
        return;
    pScript->m_bBusy = true;
    try {
        pScript->mf_onTick();
    } catch (...) {
        pScript->m_failures.push_back(
            L"step '" + (pScript->m_steps.empty() ? std::wstring(L"?") : pScript->m_steps.front().first) +
            L"' failed with an exception");
        pScript->m_steps.clear();
        pScript->m_bTimedOut = true;
    }
    pScript->m_bBusy = false;
}

void UQDialogScript::mf_onTick() {
    if (m_bTimedOut) {
        mf_endDialogs();
        return;
    }
    if (m_steps.empty())
        return;
    const std::wstring sState = mf_describeWindows();
    if (sState != m_sLastState) {
        m_sLastState = sState;
        m_trace.push_back(std::to_wstring(GetTickCount64() - m_uStart) + L" ms, step '" +
                          m_steps.front().first + L"': " + sState);
    }
    if (GetTickCount64() > m_uDeadline) {
        m_failures.push_back(L"step '" + m_steps.front().first + L"' timed out; on the screen: " + sState);
        m_steps.clear();
        m_bTimedOut = true;
        mf_endDialogs();
        return;
    }
    if (m_steps.front().second())
        m_steps.pop_front();
}

void UQDialogScript::mf_endDialogs() {
    EnumWindows(
        [](HWND _hWnd, LPARAM) -> BOOL {
            DWORD dwThread = 0;
            if (!isOurs(_hWnd, dwThread) || !IsWindowVisible(_hWnd) || className(_hWnd) != L"#32770")
                return TRUE;
            if (dwThread == GetCurrentThreadId())
                EndDialog(_hWnd, IDCANCEL);
            else
                PostMessageW(_hWnd, WM_COMMAND, IDCANCEL, 0);
            return TRUE;
        },
        0);
}

HWND UQDialogScript::mf_findDialog(const std::wstring& _sCaption) {
    struct Search {
        const std::wstring& sCaption;
        HWND hFound;
    } search{_sCaption, nullptr};
    EnumThreadWindows(
        GetCurrentThreadId(),
        [](HWND _hWnd, LPARAM _lParam) -> BOOL {
            Search& rSearch = *reinterpret_cast<Search*>(_lParam);
            if (IsWindowVisible(_hWnd) && className(_hWnd) == L"#32770" &&
                mf_getText(_hWnd) == rSearch.sCaption) {
                rSearch.hFound = _hWnd;
                return FALSE;
            }
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&search));
    return search.hFound;
}

HWND UQDialogScript::mf_findPanel(HWND _hFrame, int _nItemId) {
    for (HWND hChild = GetWindow(_hFrame, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT))
        if (IsWindowVisible(hChild) && className(hChild) == L"#32770" &&
            GetDlgItem(hChild, _nItemId) != nullptr)
            return hChild;
    return nullptr;
}

void UQDialogScript::mf_click(HWND _hDlg, int _nId) {
    PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(_nId, BN_CLICKED),
                 reinterpret_cast<LPARAM>(GetDlgItem(_hDlg, _nId)));
}

void UQDialogScript::mf_type(HWND _hControl, const std::wstring& _sText) {
    COMBOBOXINFO combo{};
    combo.cbSize = sizeof(combo);
    HWND hEdit = GetComboBoxInfo(_hControl, &combo) && combo.hwndItem != nullptr ? combo.hwndItem : _hControl;
    SendMessageW(hEdit, EM_SETSEL, 0, -1);
    SendMessageW(hEdit, WM_CHAR, VK_BACK, 0);
    for (wchar_t ch : _sText)
        SendMessageW(hEdit, WM_CHAR, ch, 0);
}

std::wstring UQDialogScript::mf_getText(HWND _hWnd) {
    const int nLength = GetWindowTextLengthW(_hWnd);
    std::wstring sText(static_cast<std::size_t>(nLength) + 1, L'\0');
    const int nCopied = nLength > 0 ? GetWindowTextW(_hWnd, &sText[0], nLength + 1) : 0;
    sText.resize(static_cast<std::size_t>(nCopied > 0 ? nCopied : 0));
    return sText;
}

std::wstring UQDialogScript::mf_describeWindows() {
    std::wstring sText;
    EnumWindows(
        [](HWND _hWnd, LPARAM _lParam) -> BOOL {
            std::wstring& rText = *reinterpret_cast<std::wstring*>(_lParam);
            DWORD dwThread = 0;
            if (!isOurs(_hWnd, dwThread) || !IsWindowVisible(_hWnd))
                return TRUE;
            rText += L"[" + className(_hWnd) + L" '" + mf_getText(_hWnd) + L"'";
            if (dwThread != GetCurrentThreadId())
                rText += L" thread " + std::to_wstring(dwThread);
            if (!IsWindowEnabled(_hWnd))
                rText += L" disabled";
            int nPanels = 0;
            for (HWND hChild = GetWindow(_hWnd, GW_CHILD); hChild != nullptr;
                 hChild = GetWindow(hChild, GW_HWNDNEXT))
                nPanels += IsWindowVisible(hChild) && className(hChild) == L"#32770" ? 1 : 0;
            if (nPanels > 0)
                rText += L" panels " + std::to_wstring(nPanels);
            if (HWND hNext = GetDlgItem(_hWnd, ITEM_NEXT))
                rText += L" next '" + mf_getText(hNext) + (IsWindowEnabled(hNext) ? L"' on" : L"' off");
            rText += L"] ";
            return TRUE;
        },
        reinterpret_cast<LPARAM>(&sText));
    return sText.empty() ? L"nothing" : sText;
}
