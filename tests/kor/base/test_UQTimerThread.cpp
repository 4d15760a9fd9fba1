// The timer thread: runs counted, intervals kept, the last run known, waking up and stopping.
#include "ThreadTestSupport.h"
#include "support/LogCheck.h"

#include <vector>

using threadtest::LIMIT_MS;
using threadtest::Signal;

namespace {

// What one run saw.
struct TimerRun {
    double dAtMs; // since the timer was started
    int nRuns;    // mf_getRuns()
    int nMade;    // mf_getRunsMade() during the run
    int bLast;    // mf_isLastRun()
    CString sThread;
    UQThreadContext::TYPE type;
};

class Timer : public UQTimerThread {
public:
    explicit Timer(const wchar_t* name = L"Test timer thread") : UQTimerThread(name) {}
    Timer(const wchar_t* name, unsigned long interval) : UQTimerThread(name, interval) {}
    ~Timer() override { mf_stopWait(INFINITE); }

    void start(unsigned long interval, int runs, unsigned long firstDelay) {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_started = std::chrono::steady_clock::now();
        }
        mf_start(interval, runs, firstDelay);
    }
    void mf_implExecuteTimer() override {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            m_runs.push_back(TimerRun{threadtest::msSince(m_started), mf_getRuns(), mf_getRunsMade(),
                                      mf_isLastRun(), UQThreadContext::mf_getThreadName(),
                                      UQThreadContext::mf_getThreadType()});
        }
        ran.raise();
    }
    std::vector<TimerRun> runs() {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_runs;
    }

    Signal ran;

private:
    std::mutex m_mutex;
    std::chrono::steady_clock::time_point m_started = std::chrono::steady_clock::now();
    std::vector<TimerRun> m_runs;
};

} // namespace

TEST(UQTimerThread, RunsAsOftenAsStartedForAndEndsByItself) {
    Timer timer(L"GUI timer");
    timer.start(5, 3, 0);
    EXPECT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u); // no stop asked for
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_EQ(runs.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(runs[i].nRuns, 3);
        EXPECT_EQ(runs[i].nMade, i);
        EXPECT_EQ(runs[i].bLast, i == 2 ? 1 : 0) << "run " << i;
        EXPECT_EQ(runs[i].sThread, CString(L"GUI timer"));
        EXPECT_EQ(runs[i].type, UQThreadContext::TYPE_TIMER);
    }
    EXPECT_EQ(timer.mf_getRunsMade(), 3);
    EXPECT_TRUE(timer.mf_isShutdown());
    EXPECT_FALSE(timer.mf_isRunning());
}

TEST(UQTimerThread, RunsAreAnIntervalApart) {
    Timer timer;
    const unsigned long interval = 40;
    timer.start(interval, 4, 0);
    ASSERT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_EQ(runs.size(), 4u);
    EXPECT_LT(runs[0].dAtMs, 1000.0); // the first at once (no delay asked for)
    for (int i = 1; i < 4; ++i) {
        // Never early: run i is due i intervals after the start (a late run does not move the due
        // times of the later ones, so two runs can be closer than an interval). Allow for clock ticks.
        EXPECT_GE(runs[i].dAtMs, i * interval - 1.0) << "run " << i;
        EXPECT_GT(runs[i].dAtMs, runs[i - 1].dAtMs) << "run " << i;
    }
    EXPECT_EQ(timer.mf_getInterval(), interval);
}

TEST(UQTimerThread, FirstRunComesAfterTheDelay) {
    Timer timer;
    timer.start(10, 2, 80);
    ASSERT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_GE(runs[0].dAtMs, 79.0);
    EXPECT_GE(runs[1].dAtMs, 89.0);
}

TEST(UQTimerThread, ZeroRunsRunUntilStoppedAndNeverReachALastRun) {
    Timer timer;
    timer.start(1, 0, 0);
    ASSERT_TRUE(timer.ran.waitFor(5));
    EXPECT_TRUE(timer.mf_isRunning());
    EXPECT_EQ(timer.mf_getRuns(), 0);
    EXPECT_EQ(timer.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_GE(runs.size(), 5u);
    for (const TimerRun& run : runs)
        EXPECT_EQ(run.bLast, 0);
    EXPECT_EQ(timer.mf_getRunsMade(), static_cast<int>(runs.size()));
}

TEST(UQTimerThread, NegativeRunsAreRefused) {
    LogCheck log;
    Timer timer(L"Bad timer");
    EXPECT_EQ(thrownCategory([&] { timer.start(10, -1, 0); }), "_E_::Parameter");
    EXPECT_FALSE(timer.mf_isRunning());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQTimerThread::mf_start", "Invalid number of runs -1"}}));
}

TEST(UQTimerThread, StartingARunningTimerIsRefused) {
    Timer timer(L"Busy timer");
    timer.start(60000, 0, 60000);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { timer.start(10, 1, 0); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQTimerThread::mf_start", "Thread 'Busy timer' is already running"}}));
    EXPECT_EQ(timer.mf_getInterval(), 60000u); // the running timer keeps its settings
    EXPECT_EQ(timer.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
}

TEST(UQTimerThread, WakeUpMakesTheWaitingRunHappenNow) {
    Timer timer;
    timer.start(60000, 2, 60000); // nothing would happen for a minute
    timer.mf_startWait();
    timer.mf_wakeUp();
    ASSERT_TRUE(timer.ran.waitFor(1));
    EXPECT_TRUE(timer.mf_isRunning());
    timer.mf_wakeUp();
    EXPECT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u); // the second run was the last
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_EQ(runs.size(), 2u);
    EXPECT_LT(runs[1].dAtMs, 60000.0);
    EXPECT_EQ(runs[1].bLast, 1);
}

TEST(UQTimerThread, StopEndsTheWaitWithoutAFurtherRun) {
    Timer timer;
    timer.start(60000, 0, 60000);
    timer.mf_startWait();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(timer.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_LT(threadtest::msSince(start), 60000.0);
    EXPECT_EQ(timer.mf_getRunsMade(), 0);
    EXPECT_TRUE(timer.runs().empty());
}

TEST(UQTimerThread, RestartCountsAfresh) {
    Timer timer;
    timer.start(1, 2, 0);
    ASSERT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(timer.mf_getRunsMade(), 2);
    timer.start(1, 3, 0);
    ASSERT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(timer.mf_getRunsMade(), 3);
    EXPECT_EQ(timer.mf_getRuns(), 3);
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_EQ(runs.size(), 5u);
    EXPECT_EQ(runs[1].bLast, 1);
    EXPECT_EQ(runs[2].nMade, 0);
    EXPECT_EQ(runs[4].bLast, 1);
}

TEST(UQTimerThread, StartWithoutArgumentsUsesTheIntervalGivenAtConstruction) {
    Timer timer(L"Steady timer", 5);
    EXPECT_EQ(timer.mf_getType(), UQThreadContext::TYPE_TIMER);
    timer.mf_start();
    ASSERT_TRUE(timer.ran.waitFor(2));
    EXPECT_EQ(timer.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<TimerRun> runs = timer.runs();
    ASSERT_GE(runs.size(), 2u);
    EXPECT_GE(runs[0].dAtMs, 4.0); // the first run an interval after the start
    EXPECT_GE(runs[1].dAtMs, 9.0);
    EXPECT_EQ(timer.mf_getRuns(), 0);
}

namespace {

// A run that throws ends the timer as any thread body does.
class FailingTimer : public UQTimerThread {
public:
    FailingTimer() : UQTimerThread(L"Failing timer") {}
    ~FailingTimer() override { mf_stopWait(INFINITE); }
    void mf_implExecuteTimer() override { throw UQErrno(UQErrno::_E_::Gui); }
};

} // namespace

TEST(UQTimerThread, FailingRunEndsTheTimerAndIsLogged) {
    LogCheck log;
    FailingTimer timer;
    timer.mf_start(1, 5, 0);
    EXPECT_EQ(timer.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(timer.mf_getRunsMade(), 0);
    EXPECT_TRUE(timer.mf_getExitError().mf_is(UQErrno::_E_::Gui));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQThreads::mf_implRun",
                                     "Failure in mf_implExecute of thread 'Failing timer':\r\n"
                                     "    [E] _E_::Gui: A window or dialog operation failed."}}));
}

TEST(UQTimerThread, CopyKeepsNameAndSettingsButNotTheThread) {
    Timer timer(L"Copied timer", 25);
    UQTimerThread copy(timer);
    EXPECT_EQ(copy.mf_getName(), CString(L"Copied timer"));
    EXPECT_EQ(copy.mf_getInterval(), 25u);
    EXPECT_EQ(copy.mf_getRunsMade(), 0);
    EXPECT_FALSE(copy.mf_isRunning());
}
