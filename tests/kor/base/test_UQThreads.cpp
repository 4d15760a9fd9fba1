// The worker thread base: start, wait, stop, restart, failures of the body, names and the cancel switch.
#include "ThreadTestSupport.h"
#include "support/LogCheck.h"

#include <stdexcept>
#include <string>
#include <vector>

#if !defined(_WIN32)
#include <pthread.h>
#endif

using threadtest::LIMIT_MS;
using threadtest::Signal;

namespace {

// A worker whose steps are given by the test; it records what ran, in order, and where.
class Worker : public UQThreads {
public:
    explicit Worker(const wchar_t* name = L"Test worker thread", int bRepeat = 1)
        : UQThreads(name, UQThreadContext::TYPE_WORKER, bRepeat) {}
    // What UQThreads copies; the test's records start empty.
    Worker(const Worker& other) : UQThreads(other) {}
    ~Worker() override { mf_stopWait(INFINITE); }

    void mf_implExecuteOnStart(int nThread) override {
        note("start");
        if (onStart)
            onStart();
    }
    void mf_implExecuteOnStop(int nThread) override {
        note("stop");
        stopped.raise();
    }
    void mf_implExecute(int nThread) override {
        note("execute");
        {
            std::lock_guard<std::mutex> lock(mutex);
            sThreadName = UQThreadContext::mf_getThreadName();
            type = UQThreadContext::mf_getThreadType();
            pCurrent = UQThreadContext::mf_getCurrentThreads();
            dwThreadId = GetCurrentThreadId();
            nArgument = nThread;
        }
        executed.raise();
        if (body)
            body(*this);
    }

    std::vector<std::string> steps() {
        std::lock_guard<std::mutex> lock(mutex);
        return m_steps;
    }

    // UQThreads' protected wait, for bodies that wait until stopped.
    int waitForStop() { return mf_implWait(INFINITE); }

    std::function<void()> onStart;
    std::function<void(Worker&)> body;
    Signal executed;
    Signal stopped;
    std::mutex mutex;
    CString sThreadName;
    UQThreadContext::TYPE type = UQThreadContext::TYPE_NONE;
    UQThreads* pCurrent = nullptr;
    DWORD dwThreadId = 0;
    int nArgument = -1;

private:
    void note(const char* step) {
        std::lock_guard<std::mutex> lock(mutex);
        m_steps.push_back(step);
    }
    std::vector<std::string> m_steps;
};

std::string errorText(const UQErrnoValue& value) {
    return utf8(UQErrno(value).mf_toString());
}

} // namespace

TEST(UQThreads, BodyRunsOnItsOwnThreadNamedAfterTheObject) {
    Worker worker(L"Wizard worker thread");
    worker.body = [](Worker& w) { w.waitForStop(); };
    EXPECT_EQ(UQThreadContext::mf_getThreadName(), CString());
    EXPECT_EQ(UQThreadContext::mf_getThreadType(), UQThreadContext::TYPE_NONE);
    worker.mf_start();
    worker.mf_startWait();
    ASSERT_TRUE(worker.executed.waitFor());
    {
        std::lock_guard<std::mutex> lock(worker.mutex);
        EXPECT_EQ(worker.sThreadName, CString(L"Wizard worker thread"));
        EXPECT_EQ(worker.type, UQThreadContext::TYPE_WORKER);
        EXPECT_EQ(worker.pCurrent, &worker);
        EXPECT_NE(worker.dwThreadId, GetCurrentThreadId());
        EXPECT_EQ(worker.dwThreadId, worker.mf_getThreadId());
        EXPECT_EQ(worker.nArgument, 0);
    }
    EXPECT_EQ(worker.mf_getName(), CString(L"Wizard worker thread"));
    EXPECT_EQ(worker.mf_getType(), UQThreadContext::TYPE_WORKER);
    EXPECT_TRUE(worker.mf_isRunning());
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_FALSE(worker.mf_isRunning());
    // The test's own thread is none of UQThreads'.
    EXPECT_EQ(UQThreadContext::mf_getCurrentThreads(), nullptr);
}

// The system's own name of the thread, as a debugger shows it.
TEST(UQThreads, SystemKnowsTheThreadByItsName) {
    Worker worker(L"Wizard worker thread");
    std::string systemName = "<not read>";
    [[maybe_unused]] bool bReadable = true;
    worker.body = [&](Worker& w) {
#if defined(_WIN32)
        typedef HRESULT(WINAPI * GetThreadDescriptionFn)(HANDLE, PWSTR*);
        GetThreadDescriptionFn pfn = nullptr;
        for (const wchar_t* module : {L"kernel32.dll", L"kernelbase.dll"}) {
            HMODULE h = GetModuleHandleW(module);
            if (h != nullptr && pfn == nullptr)
                pfn = reinterpret_cast<GetThreadDescriptionFn>(
                    reinterpret_cast<void*>(GetProcAddress(h, "GetThreadDescription")));
        }
        PWSTR pszName = nullptr;
        if (pfn != nullptr && SUCCEEDED(pfn(GetCurrentThread(), &pszName)) && pszName != nullptr) {
            systemName = utf8(pszName);
            LocalFree(pszName);
        } else {
            bReadable = false;
        }
#else
        char name[64] = {};
        pthread_getname_np(pthread_self(), name, sizeof name);
        systemName = name;
#endif
        w.mf_stop();
    };
    worker.mf_start();
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
#if defined(_WIN32)
    if (!bReadable) {
        // A system without GetThreadDescription (Windows before 10 1607) keeps no name; the name is then
        // only UQThreadContext's, which the test above checks. (Wine 8 has it.)
        std::printf("No GetThreadDescription here: system thread name not checked\n");
        return;
    }
    EXPECT_EQ(systemName, "Wizard worker thread");
#else
    // Linux keeps 15 bytes of a thread's name.
    EXPECT_EQ(systemName, "Wizard worker t");
#endif
}

TEST(UQThreads, BodyIsCalledAgainAfterEachReturnUntilShutdown) {
    Worker worker;
    std::atomic<int> calls{0};
    worker.body = [&](Worker& w) {
        if (++calls == 3)
            w.mf_stop(); // from the thread itself
    };
    worker.mf_start();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(calls.load(), 3);
    EXPECT_TRUE(worker.mf_isShutdown(0));
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "execute", "execute", "execute", "stop"}));
}

TEST(UQThreads, BodyThatDoesNotRepeatRunsOnce) {
    Worker worker(L"One-shot worker", 0);
    EXPECT_EQ(worker.mf_isRepeating(), 0);
    worker.mf_start();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "execute", "stop"}));
    EXPECT_FALSE(worker.mf_isShutdown());
    EXPECT_FALSE(worker.mf_getExitError().mf_isError());
}

TEST(UQThreads, StartWaitReturnsOnceOnStartHasRun) {
    Worker worker;
    std::atomic<bool> bStartDone{false};
    UQCancelSwitch never;
    worker.onStart = [&] {
        never.mf_waitCancelled(50); // a slow start
        bStartDone = true;
    };
    worker.body = [](Worker& w) { w.waitForStop(); };
    worker.mf_start();
    worker.mf_startWait();
    EXPECT_TRUE(bStartDone.load());
    EXPECT_TRUE(worker.mf_isRunning());
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
}

TEST(UQThreads, StartWaitOfAThreadThatHasAlreadyEndedReturns) {
    Worker worker(L"Quick worker", 0);
    worker.mf_start();
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_TRUE(threadtest::returnsWithin([&] { worker.mf_startWait(); }));
}

TEST(UQThreads, StartWaitBeforeStartIsAnInitializationError) {
    LogCheck log;
    Worker worker(L"Idle worker");
    EXPECT_EQ(thrownCategory([&] { worker.mf_startWait(); }), "_E_::Initialization");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQThreads::mf_startWait",
                                                  "Thread 'Idle worker' has not been started"}}));
}

TEST(UQThreads, StartingARunningThreadIsRefused) {
    Worker worker(L"Busy worker");
    worker.body = [](Worker& w) { w.waitForStop(); };
    worker.mf_start();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { worker.mf_start(); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQThreads::mf_start", "Thread 'Busy worker' is already running"}}));
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
}

TEST(UQThreads, StartStopAndRestart) {
    Worker worker;
    worker.body = [](Worker& w) { w.waitForStop(); };
    worker.mf_start();
    worker.mf_startWait();
    ASSERT_TRUE(worker.executed.waitFor(1));
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_TRUE(worker.mf_isShutdown());

    worker.mf_start(); // a restart clears shutdown
    EXPECT_FALSE(worker.mf_isShutdown());
    worker.mf_startWait();
    ASSERT_TRUE(worker.executed.waitFor(2));
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(worker.steps(),
              (std::vector<std::string>{"start", "execute", "stop", "start", "execute", "stop"}));
}

TEST(UQThreads, RestartWithoutWaitingCollectsTheEndedThread) {
    Worker worker(L"Quick worker", 0);
    worker.mf_start();
    ASSERT_TRUE(worker.stopped.waitFor(1));
    ASSERT_TRUE(threadtest::eventually([&] { return !worker.mf_isRunning(); }));
    worker.mf_start();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(worker.executed.count(), 2);
}

TEST(UQThreads, StopWaitTimesOutWhileTheBodyRunsAndSucceedsAfterCancel) {
    UQCancelSwitch cancel;
    Worker worker(L"Stubborn worker");
    worker.mf_installCancelSwitch(&cancel);
    // Never returns until cancelled: it does not look at shutdown.
    worker.body = [](Worker& w) { w.mf_getCancelSwitch()->mf_waitCancelled(INFINITE); };
    worker.mf_start();
    ASSERT_TRUE(worker.executed.waitFor());
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(worker.mf_stopWait(30).mf_getNumber(), static_cast<std::uint32_t>(WAIT_TIMEOUT));
    EXPECT_GE(threadtest::msSince(start), 29.0);
    EXPECT_TRUE(worker.mf_isRunning());
    EXPECT_TRUE(worker.mf_isShutdown());
    EXPECT_EQ(worker.mf_stopWait(0).mf_getNumber(), static_cast<std::uint32_t>(WAIT_TIMEOUT));

    worker.mf_cancel();
    EXPECT_TRUE(worker.mf_isCancelled());
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_FALSE(worker.mf_isRunning());
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "execute", "stop"}));
}

TEST(UQThreads, StopWaitOfAThreadNeverStartedReturnsAtOnce) {
    Worker worker;
    EXPECT_EQ(worker.mf_stopWait(0).mf_getNumber(), 0u);
    EXPECT_EQ(worker.mf_getThreadId(), 0u);
}

TEST(UQThreads, BodyThrowingUQErrnoIsLoggedWithTheThreadNameAndEndsTheThread) {
    LogCheck log;
    Worker worker(L"Failing worker");
    worker.body = [](Worker&) { throw UQErrno(UQErrno::_E_::Range); };
    worker.mf_start();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "execute", "stop"}));
    EXPECT_TRUE(worker.mf_getExitError().mf_is(UQErrno::_E_::Range));
    EXPECT_FALSE(worker.mf_isShutdown()); // ended by the failure, not by a stop
    EXPECT_EQ(errorText(UQErrno::_E_::Range), "[E] _E_::Range: A value is out of range.");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQThreads::mf_implRun",
                                                  "Failure in mf_implExecute of thread 'Failing worker':\r\n"
                                                  "    [E] _E_::Range: A value is out of range."}}));
}

TEST(UQThreads, BodyThrowingAnythingElseIsLoggedAndEndsTheThread) {
    LogCheck log;
    Worker worker(L"Odd worker");
    worker.body = [](Worker&) { throw std::runtime_error("boom"); };
    worker.mf_start();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_TRUE(worker.mf_getExitError().mf_is(UQErrno::_E_::Internal));

    Worker other(L"Odder worker");
    other.body = [](Worker&) { throw 42; };
    other.mf_start();
    EXPECT_EQ(other.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(other.steps(), (std::vector<std::string>{"start", "execute", "stop"}));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQThreads::mf_implRun",
                   "Unexpected exception in mf_implExecute of thread 'Odd worker': boom"},
                  {'E', "UQThreads::mf_implRun",
                   "Unexpected exception in mf_implExecute of thread 'Odder worker': unknown type"}}));
}

TEST(UQThreads, FailingStartSkipsTheBodyButStillStops) {
    LogCheck log;
    Worker worker(L"Unready worker");
    worker.onStart = [] { throw UQErrno(UQErrno::_E_::Initialization); };
    worker.mf_start();
    worker.mf_startWait(); // returns although the start failed
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "stop"}));
    EXPECT_TRUE(worker.mf_getExitError().mf_is(UQErrno::_E_::Initialization));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQThreads::mf_implRun",
                                     "Failure in mf_implExecuteOnStart of thread 'Unready worker':\r\n"
                                     "    [E] _E_::Initialization: The object has not been "
                                     "initialized for this operation."}}));
}

TEST(UQThreads, FailureRecordIsWrittenOnTheWorkerThread) {
    UQLogCapture capture;
    Worker worker(L"Failing worker");
    worker.body = [](Worker&) { throw UQErrno(UQErrno::_E_::Range); };
    worker.mf_start();
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<UQLogCapture::Entry> entries = capture.mf_getEntries();
    ASSERT_EQ(entries.size(), 1u);
    EXPECT_EQ(entries[0].dwThreadId, worker.mf_getThreadId());
    EXPECT_NE(entries[0].dwThreadId, GetCurrentThreadId());
    EXPECT_TRUE(entries[0].bLanguageSelected);
}

TEST(UQThreads, ThreadCannotWaitForItself) {
    LogCheck log;
    Worker worker(L"Selfish worker", 0);
    std::atomic<std::uint32_t> result{0};
    worker.body = [&](Worker& w) { result = w.mf_stopWait(INFINITE).mf_getNumber(); };
    worker.mf_start();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(result.load(), 1131u);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQThreads::mf_stopWait",
                                                  "Thread 'Selfish worker' cannot wait for itself"}}));
}

TEST(UQThreads, OnStartAndOnStopRunOnTheThreadAroundTheBody) {
    Worker worker;
    std::atomic<DWORD> startThread{0};
    worker.onStart = [&] { startThread = GetCurrentThreadId(); };
    worker.body = [](Worker& w) { w.mf_stop(); };
    worker.mf_start();
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(startThread.load(), worker.mf_getThreadId());
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "execute", "stop"}));
}

TEST(UQThreads, StopBeforeTheBodyRunsSkipsIt) {
    Worker worker;
    Signal release;
    worker.onStart = [&] { ASSERT_TRUE(release.waitFor()); };
    worker.mf_start();
    worker.mf_stop();
    release.raise();
    EXPECT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(worker.steps(), (std::vector<std::string>{"start", "stop"}));
}

// The progress dialogs' hand-off: the GUI installs a switch into the worker and trips it; the worker
// notices, ends its work and the GUI waits for it.
TEST(UQThreads, CancelSwitchInstalledIntoTheThreadEndsItsWork) {
    UQCancelSwitch cancel;
    Worker worker(L"Cancellable worker", 0);
    worker.mf_installCancelSwitch(&cancel);
    std::atomic<int> bSawCancel{0};
    worker.body = [&](Worker& w) {
        // Work in steps, looking at the switch between them.
        while (!w.mf_isCancelled())
            w.mf_getCancelSwitch()->mf_waitCancelled(LIMIT_MS);
        bSawCancel = w.mf_isCancelled();
    };
    worker.mf_start();
    ASSERT_TRUE(worker.executed.waitFor());
    UQCancelSwitch guiCopy(cancel); // what the dialog keeps
    EXPECT_EQ(guiCopy.mf_implTryCancel(), 1);
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(bSawCancel.load(), 1);
}

TEST(UQThreads, CopyHasTheNameAndSwitchButNoThread) {
    UQCancelSwitch cancel;
    Worker worker(L"Original worker");
    worker.mf_installCancelSwitch(&cancel);
    worker.body = [](Worker& w) { w.waitForStop(); };
    worker.mf_start();
    {
        Worker copy(worker);
        EXPECT_EQ(copy.mf_getName(), CString(L"Original worker"));
        EXPECT_EQ(copy.mf_getType(), UQThreadContext::TYPE_WORKER);
        EXPECT_EQ(copy.mf_isRepeating(), 1);
        EXPECT_EQ(copy.mf_getCancelSwitch(), &cancel);
        EXPECT_FALSE(copy.mf_isRunning());
    }
    EXPECT_TRUE(worker.mf_isRunning());
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
}

TEST(UQThreads, ThreadsOfSeveralObjectsRunSideBySide) {
    std::vector<std::unique_ptr<Worker>> workers;
    for (int i = 0; i < 4; ++i) {
        workers.emplace_back(new Worker(i % 2 == 0 ? L"Even worker" : L"Odd worker"));
        workers.back()->body = [](Worker& w) { w.waitForStop(); };
        workers.back()->mf_start();
    }
    for (auto& w : workers)
        ASSERT_TRUE(w->executed.waitFor());
    for (int i = 0; i < 4; ++i) {
        std::lock_guard<std::mutex> lock(workers[i]->mutex);
        EXPECT_EQ(workers[i]->sThreadName, workers[i]->mf_getName());
    }
    for (auto& w : workers)
        w->mf_stop();
    for (auto& w : workers)
        EXPECT_EQ(w->mf_wait(LIMIT_MS).mf_getNumber(), 0u);
}

// A worker whose thread has ended (or never ran) goes without a word. (A thread still running when the
// base's destructor runs is waited for after a LEVEL_E record; that is a derived class's mistake, a race
// on the object's virtual table, and so not exercised here.)
TEST(UQThreads, DestroyingAnEndedOrUnstartedWorkerLogsNothing) {
    LogCheck log;
    {
        Worker ended(L"Ended worker", 0);
        ended.mf_start();
        ASSERT_EQ(ended.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
        Worker unstarted(L"Unstarted worker");
    }
    EXPECT_EQ(log.count(), 0u);
}

namespace {

// A one-job worker that deletes itself when its job is done; its steps note into records that the test
// shares with it, so that they outlive both.
struct SelfDeletionRecord {
    Signal gone;
    std::atomic<int> stops{0};
};

class SelfDeletingWorker : public UQThreads {
public:
    explicit SelfDeletingWorker(std::shared_ptr<SelfDeletionRecord> record)
        : UQThreads(L"Self-deleting worker", UQThreadContext::TYPE_WORKER, 1), m_record(std::move(record)) {}
    ~SelfDeletingWorker() override { m_record->gone.raise(); }
    void mf_implExecute(int) override { delete this; }
    void mf_implExecuteOnStop(int) override { ++m_record->stops; }

private:
    std::shared_ptr<SelfDeletionRecord> m_record;
};

} // namespace

// The thread touches the object no more once its body has destroyed it (AddressSanitizer would see it).
TEST(UQThreads, BodyMayDestroyItsOwnObject) {
    LogCheck log;
    auto record = std::make_shared<SelfDeletionRecord>();
    (new SelfDeletingWorker(record))->mf_start();
    ASSERT_TRUE(record->gone.waitFor());
    EXPECT_EQ(record->stops.load(), 0);
    EXPECT_EQ(log.count(), 0u);
}
