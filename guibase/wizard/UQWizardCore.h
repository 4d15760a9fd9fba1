// The rules of the wizard that need no window: the panel index, the range and null checks, the skip rules
// of Back and Next, the label of Next, what Next does on an execute panel, the task event that hands an
// execution to the worker, the worker's body and the stopping of the worker. UQWizard owns one and applies
// its answers to the frame; the same code runs on both targets, so its tests run under ThreadSanitizer.
#pragma once

#include "interfaces/korbase.h"
#include "interfaces/korguibase_api.h"

#include <functional>

class KORGUIBASE_API UQWizardCore {
public:
    // What the rules need to know of the panel list; the wizard answers it from its panels.
    class UVPanels {
    public:
        virtual ~UVPanels() = default;
        virtual int mf_getCount() const = 0;
        // Whether the entry is a panel (not null).
        virtual int mf_isPresent(int _nIndex) const = 0;
        virtual int mf_isSkipped(int _nIndex) const = 0;
        virtual int mf_isExecute(int _nIndex) const = 0;
        virtual const UQErrnoData& mf_getResult(int _nIndex) const = 0;
        virtual CString mf_getTitle(int _nIndex) const = 0;
        // The panel's work; called on the worker thread.
        virtual void mf_execute(int _nIndex) = 0;
    };

    // Texts of the frame's buttons and title. An enumeration, so that no object of an exported class
    // has to be imported for them.
    enum TEXT : unsigned {
        TEXT_TITLE = 4533,
        TEXT_BACK = 3880,
        TEXT_NEXT_INITIAL = 3066,
        TEXT_CANCEL = 3155,
        TEXT_NEXT = 933,
        TEXT_FINISH = 932,
        TEXT_EXECUTE = 3095,
        TEXT_CANCEL_QUESTION = 931,
        TEXT_CANCEL_CAPTION = 804,
        TEXT_READ_FAILURE_CAPTION = 806,
        TEXT_EXECUTION_FAILURE_CAPTION = 655,
    };

    // What a click on Next comes to.
    enum NEXT { NEXT_EXECUTING, NEXT_REFUSED, NEXT_FINISH, NEXT_FORWARD };

    // Index -1 and a new auto-reset task event. A failing CreateEventW: "Failure initializing task event:
    // %s" under "UQWizard::UQWizard", _E_::Initialization with the system error.
    explicit UQWizardCore(UVPanels& _panels);
    // A core over other panels that shares _other's index and task event without owning the event.
    UQWizardCore(UVPanels& _panels, const UQWizardCore& _other);
    UQWizardCore(const UQWizardCore&) = delete;
    UQWizardCore& operator=(const UQWizardCore&) = delete;
    // Closes the event it owns: a failure logs "Failure closing task-event handle" under
    // "UQWizard::~UQWizard".
    ~UQWizardCore();

    int mf_getIndex() const noexcept { return m_nIndex; }
    void mf_setIndex(int _nIndex) noexcept { m_nIndex = _nIndex; }
    HANDLE mf_getTaskEvent() const noexcept { return m_hTaskEvent; }

    // The checks of UQWizard::mf_getPanel: out of range "Index %d out of range (0..%d)", _E_::Range; a null
    // entry "Panel with index %d is NULL", _E_::ItemNotFound.
    void mf_checkPanel(int _nIndex) const;

    // Forward over skipped panels: the index moves to the next panel that is not skipped; a skipped last
    // panel logs "Last panel must not be skipped" and throws _E_::Internal (the index names it then).
    void mf_stepForward();
    // Back over skipped panels; a skipped panel 0 reached so logs "First panel must not be skipped",
    // _E_::Internal. From index 0 or below the index goes below 0, so that showing it fails with the
    // range error.
    void mf_stepBack();

    // The label of Next on panel _nIndex: the execute text while an execute panel has no green result,
    // else the finish text on the last panel and the next text before it.
    unsigned mf_getNextLabel(int _nIndex) const;
    // The label after a green execution of the current panel.
    unsigned mf_getLabelAfterSuccess() const;

    // Next on the current panel. An execute panel without a green result signals the task event
    // (NEXT_EXECUTING). Other panels are read with _read; an error of the read or of the signal is logged
    // at LEVEL_W "Failure reading/executing panel '%s', index=%d:\r\n%s%s" under "UQWizard::mf_onCommand",
    // kept in _error and answered as NEXT_REFUSED. Otherwise the last panel finishes, the others move on.
    NEXT mf_next(const std::function<void()>& _read, UQErrnoData& _error);
    // Back on the current panel: reads with _read and ignores its UQErrno (the user may always go back).
    void mf_readBeforeBack(const std::function<void()>& _read) const;

    // Wakes the worker. A failing SetEvent logs "Failure signaling task event:\r\n%s%s" under _pszFunction
    // and throws _E_::Synchronization with the system error.
    void mf_signalTask(const wchar_t* _pszFunction) const;

    // One call of the worker's body: waits for the task event; then ends with a LEVEL_T "Shutdown was
    // signaled, exiting thread ..." when _thread is shut down, or executes the current panel. A failing
    // wait ("Failure waiting for task event:\r\n%s%s") and a failing execution ("Failure executing panel
    // %d (%s):\r\n%s%s") are logged under "UQWizard::mf_implExecute" and thrown on to the thread base.
    void mf_runTask(const UQThreads& _thread, int _nThread);

    // Steps 1 to 4 of finishing: marks shutdown, wakes the worker, waits for its end without a time-out;
    // a failure is logged as "Failure stopping wizard worker thread:\r\n%s%s" under
    // "UQWizard::mf_implFinalizeWizard". Never throws.
    void mf_stopWorker(UQThreads& _thread) noexcept;

private:
    UVPanels& m_panels;
    int m_nIndex;
    HANDLE m_hTaskEvent;
    int m_bOwnsEvent;
};
