// The two hand-offs the dialogs build on these classes, without windows: the wizard's task event between
// the GUI thread and its "Wizard worker thread", and a progress dialog that listens to its
// worker's progress events and cancels it through the installed switch.
#include "ThreadTestSupport.h"
#include "support/LogCheck.h"

#include "interfaces/korutil.h"

#include <vector>

using threadtest::LIMIT_MS;
using threadtest::Signal;

namespace {

// The wizard's worker: waits for the auto-reset task event, executes the current panel or leaves on
// shutdown.
class WizardWorker : public UQThreads {
public:
    WizardWorker() : UQThreads(L"Wizard worker thread", UQThreadContext::TYPE_WORKER, 1) {
        m_hTaskEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    }
    ~WizardWorker() override {
        mf_stopWait(INFINITE);
        CloseHandle(m_hTaskEvent);
    }
    void mf_implExecute(int nThread) override {
        static const wchar_t* const _sFunction_ = L"UQWizard::mf_implExecute";
        called.raise();
        if (WaitForSingleObject(m_hTaskEvent, INFINITE) != WAIT_OBJECT_0)
            throw UQErrno(UQErrno::_E_::Synchronization);
        if (mf_isShutdown(nThread)) {
            UQThreadContext::mf_setLoggingLanguage();
            UQLog::mf_writeMessage(UQLogData::LEVEL_T, _sFunction_,
                                   L"Shutdown was signaled, exiting thread ...");
            return;
        }
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_executedOn.push_back(UQThreadContext::mf_getThreadName());
        }
        executed.raise();
    }
    // What the GUI thread does on Next of an execute panel, and when finishing.
    void requestExecution() { ASSERT_TRUE(SetEvent(m_hTaskEvent)); }
    UQErrnoNumber finish() {
        mf_stop();
        EXPECT_TRUE(SetEvent(m_hTaskEvent));
        return mf_stopWait(0xFFFFFFFF);
    }
    std::vector<CString> executedOn() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_executedOn;
    }

    Signal called;
    Signal executed;

private:
    HANDLE m_hTaskEvent;
    std::mutex m_mutex;
    std::vector<CString> m_executedOn;
};

} // namespace

TEST(HandOffs, WizardWorkerExecutesEachRequestAndLeavesOnShutdown) {
    LogCheck log;
    WizardWorker wizard;
    wizard.mf_start();
    wizard.mf_startWait();
    for (int i = 1; i <= 3; ++i) {
        wizard.requestExecution();
        ASSERT_TRUE(wizard.executed.waitFor(i)) << "execution " << i;
    }
    // The worker is back in its body, so it sees the shutdown there and says so. (Shutdown marked between
    // two calls ends the thread without a further call, and so without the record.)
    ASSERT_TRUE(wizard.called.waitFor(4));
    std::uint32_t result = 1;
    ASSERT_TRUE(threadtest::returnsWithin([&] { result = wizard.finish().mf_getNumber(); }));
    EXPECT_EQ(result, 0u);
    EXPECT_EQ(wizard.executedOn(), (std::vector<CString>(3, CString(L"Wizard worker thread"))));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'T', "UQWizard::mf_implExecute",
                                                  "Shutdown was signaled, exiting thread ..."}}));
}

namespace {

// An application's worker as a progress dialog runs it: one job, progress events on the way, the end
// action at the end, cancelled through the switch the dialog installed.
class CopyWorker : public UQThreads {
public:
    explicit CopyWorker(int nFiles)
        : UQThreads(L"Copy worker", UQThreadContext::TYPE_WORKER, 0), m_nFiles(nFiles) {}
    ~CopyWorker() override { mf_stopWait(INFINITE); }
    void mf_implExecute(int) override {
        UQProgressEvent(UQProgressEvent::ACTION_START).mf_publish();
        UQProgressEvent(UQProgressEvent::ACTION_ENABLE_CANCEL).mf_publish();
        for (int i = 1; i <= m_nFiles && !mf_isCancelled(); ++i) {
            UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, L"file", i, m_nFiles, i, m_nFiles).mf_publish();
            if (i == 1)
                firstFileDone.raise();
            if (m_bWaitForCancel && i == 1)
                mf_getCancelSwitch()->mf_waitCancelled(LIMIT_MS);
        }
        UQProgressEvent(UQProgressEvent::ACTION_DISABLE_CANCEL).mf_publish();
        UQProgressEvent(UQProgressEvent::ACTION_END).mf_publish();
    }
    bool m_bWaitForCancel = false;
    Signal firstFileDone;

private:
    int m_nFiles;
};

// The dialog's event side: on the worker's thread it notes the actions, and on the end action stops the
// worker and "posts" the close request to its own thread.
class ProgressDialogCore : public UQEventListener {
public:
    explicit ProgressDialogCore(UQThreads& worker) : UQEventListener(UQEVENT_ID_PROGRESS), m_worker(worker) {
        worker.mf_installCancelSwitch(&m_cancel);
    }
    ~ProgressDialogCore() override { mf_unregister(); }
    void mf_onEvent(const UQEvent& event) override {
        const UQProgressEvent* progress = dynamic_cast<const UQProgressEvent*>(&event);
        if (progress == nullptr)
            return;
        std::lock_guard<std::mutex> lock(m_mutex);
        actions.push_back(progress->mf_getAction());
        if (progress->mf_getAction() == UQProgressEvent::ACTION_PROGRESS)
            lastPercent = progress->mf_calcCurDataPercent();
        if (progress->mf_getAction() == UQProgressEvent::ACTION_END) {
            m_worker.mf_stop();
            closeRequest.raise();
        }
    }
    // The Cancel button.
    int cancel() { return m_cancel.mf_implTryCancel(UQErrnoData(UQErrno::_W_::UserCanceled)); }
    // WM_USER + 1 on the GUI thread.
    std::uint32_t onCloseRequest() { return m_worker.mf_stopWait(0xFFFFFFFF).mf_getNumber(); }

    std::mutex m_mutex;
    std::vector<std::uint32_t> actions;
    unsigned long lastPercent = 0;
    Signal closeRequest;
    UQCancelSwitch m_cancel;

private:
    UQThreads& m_worker;
};

} // namespace

TEST(HandOffs, ProgressDialogFollowsItsWorkerToTheEnd) {
    CopyWorker worker(4);
    ProgressDialogCore dialog(worker);
    worker.mf_start();
    ASSERT_TRUE(dialog.closeRequest.waitFor());
    std::uint32_t result = 1;
    ASSERT_TRUE(threadtest::returnsWithin([&] { result = dialog.onCloseRequest(); }));
    EXPECT_EQ(result, 0u);
    std::lock_guard<std::mutex> lock(dialog.m_mutex);
    EXPECT_EQ(dialog.actions, (std::vector<std::uint32_t>{1, 3, 0, 0, 0, 0, 4, 2}));
    EXPECT_EQ(dialog.lastPercent, 100u);
    EXPECT_FALSE(dialog.m_cancel.mf_isCancelled());
}

TEST(HandOffs, CancelledWorkerEndsAndTheDialogWaitsForIt) {
    CopyWorker worker(1000);
    worker.m_bWaitForCancel = true;
    ProgressDialogCore dialog(worker);
    worker.mf_start();
    ASSERT_TRUE(worker.firstFileDone.waitFor());
    EXPECT_EQ(dialog.cancel(), 1);
    ASSERT_TRUE(dialog.closeRequest.waitFor());
    std::uint32_t result = 1;
    ASSERT_TRUE(threadtest::returnsWithin([&] { result = dialog.onCloseRequest(); }));
    EXPECT_EQ(result, 0u);
    EXPECT_TRUE(worker.mf_isCancelled());
    EXPECT_TRUE(dialog.m_cancel.mf_getCancelReason().mf_is(UQErrno::_W_::UserCanceled));
    std::lock_guard<std::mutex> lock(dialog.m_mutex);
    EXPECT_EQ(dialog.actions, (std::vector<std::uint32_t>{1, 3, 0, 4, 2})); // one file, then the end
}
