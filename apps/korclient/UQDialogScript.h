// Drives korclient's dialogs from inside their modal loops, as a user's clicks would: a thread timer fires
// in every modal loop of the thread, and on each tick the first step not yet done is tried; a step answers
// whether its window was ready and it acted. Past the time limit every dialog of the program is ended on
// each tick, the boxes that ending one opens included, so that nothing waits for ever. The tour and the
// tests use it.
#pragma once

#include <windows.h>

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

class UQDialogScript {
public:
    using Step = std::function<bool()>;

    explicit UQDialogScript(DWORD _dwTimeLimitMs);
    ~UQDialogScript();
    UQDialogScript(const UQDialogScript&) = delete;
    UQDialogScript& operator=(const UQDialogScript&) = delete;

    // Adds a step; _pszName names it in the trace and in a failure.
    void mf_then(const wchar_t* _pszName, Step _step);
    bool mf_isFinished() const noexcept { return m_steps.empty() && !m_bTimedOut; }
    bool mf_hasTimedOut() const noexcept { return m_bTimedOut; }
    // One line per failure: a step that timed out (with the windows then on the screen) or threw.
    const std::vector<std::wstring>& mf_getFailures() const noexcept { return m_failures; }
    // The windows on the screen whenever they changed, with the step then waiting.
    const std::vector<std::wstring>& mf_getTrace() const noexcept { return m_trace; }

    // The visible dialog of this thread with caption _sCaption; null when there is none.
    static HWND mf_findDialog(const std::wstring& _sCaption);
    // The visible child dialog of _hFrame (a wizard panel) that holds item _nItemId; null when none does.
    static HWND mf_findPanel(HWND _hFrame, int _nItemId);
    // A click on a button, posted as the button itself sends it.
    static void mf_click(HWND _hDlg, int _nId);
    // Types _sText over the text of an edit field or a combo box's edit field, key by key as a user does, so
    // that the control reacts as it does to typing (a combo box drops its selection).
    static void mf_type(HWND _hControl, const std::wstring& _sText);
    static std::wstring mf_getText(HWND _hWnd);
    // The visible windows of the program: class, caption, thread, input state, visible panels, and the
    // state of a wizard's Next button.
    static std::wstring mf_describeWindows();

private:
    static void CALLBACK mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept;
    void mf_onTick();
    static void mf_endDialogs();

    std::deque<std::pair<std::wstring, Step>> m_steps;
    std::vector<std::wstring> m_failures;
    std::vector<std::wstring> m_trace;
    std::wstring m_sLastState;
    UQDialogScript* m_pPrevious;
    UINT_PTR m_uTimer;
    ULONGLONG m_uStart;
    ULONGLONG m_uDeadline;
    bool m_bBusy;
    bool m_bTimedOut;
};
