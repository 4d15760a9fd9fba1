// The wizard's index, skip, label, Next and execute rules, over panels that are plain data, and the
// hand-off of an execution to the worker thread and back.
#include "ThreadTestSupport.h"
#include "support/LogCheck.h"

#include "guibase/wizard/UQWizardCore.h"

#include <mutex>
#include <string>
#include <vector>

using threadtest::LIMIT_MS;
using threadtest::Signal;

namespace {

const std::string TAB = utf8(UQLog::TAB);

struct FakePanel {
    std::wstring title;
    int bSkip = 0;
    int bExecute = 0;
    UQErrnoData result;
};

// The panel list; an entry without a panel stands for a null entry.
class FakePanels : public UQWizardCore::UVPanels {
public:
    int mf_getCount() const override { return static_cast<int>(panels.size()); }
    int mf_isPresent(int n) const override { return present[static_cast<std::size_t>(n)]; }
    int mf_isSkipped(int n) const override { return panels[static_cast<std::size_t>(n)].bSkip; }
    int mf_isExecute(int n) const override { return panels[static_cast<std::size_t>(n)].bExecute; }
    const UQErrnoData& mf_getResult(int n) const override {
        return panels[static_cast<std::size_t>(n)].result;
    }
    CString mf_getTitle(int n) const override { return panels[static_cast<std::size_t>(n)].title.c_str(); }
    void mf_execute(int n) override {
        {
            std::lock_guard<std::mutex> lock(mutex);
            executedIndexes.push_back(n);
            threadNames.push_back(utf8(UQThreadContext::mf_getThreadName()));
        }
        if (work)
            work(n);
        executed.raise();
    }

    void add(const wchar_t* title, int bSkip = 0, int bExecute = 0) {
        FakePanel panel;
        panel.title = title;
        panel.bSkip = bSkip;
        panel.bExecute = bExecute;
        panels.push_back(panel);
        present.push_back(1);
    }
    void addNull() {
        panels.push_back(FakePanel());
        present.push_back(0);
    }

    std::vector<FakePanel> panels;
    std::vector<int> present;
    std::function<void(int)> work;
    std::mutex mutex;
    std::vector<int> executedIndexes;
    std::vector<std::string> threadNames;
    Signal executed;
};

// The wizard's worker as UQWizard runs it: the core's task, again and again until shutdown.
class Worker : public UQThreads {
public:
    explicit Worker(UQWizardCore& core)
        : UQThreads(L"Wizard worker thread", UQThreadContext::TYPE_WORKER, 1), m_core(core) {}
    ~Worker() override { mf_stopWait(INFINITE); }
    void mf_implExecute(int nThread) override { m_core.mf_runTask(*this, nThread); }

private:
    UQWizardCore& m_core;
};

const std::function<void()> readsFine = [] {};

} // namespace

TEST(UQWizardCore, StartsBeforeTheFirstPanel) {
    FakePanels panels;
    UQWizardCore core(panels);
    EXPECT_EQ(core.mf_getIndex(), -1);
}

TEST(UQWizardCore, PanelMinusOneOfAnEmptyListIsOutOfRangeWithUpperBoundMinusOne) {
    FakePanels panels;
    UQWizardCore core(panels);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_checkPanel(-1); }), "_E_::Range");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWizard::mf_getPanel", "Index -1 out of range (0..-1)"}}));
}

TEST(UQWizardCore, PanelAtTheCountIsOutOfRange) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Two");
    UQWizardCore core(panels);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_checkPanel(2); }), "_E_::Range");
    EXPECT_EQ(thrownCategory([&] { core.mf_checkPanel(1); }), "no exception");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWizard::mf_getPanel", "Index 2 out of range (0..1)"}}));
}

TEST(UQWizardCore, NullEntryIsNotFound) {
    FakePanels panels;
    panels.add(L"One");
    panels.addNull();
    UQWizardCore core(panels);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_checkPanel(1); }), "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWizard::mf_getPanel", "Panel with index 1 is NULL"}}));
}

TEST(UQWizardCore, ForwardPassesOverSkippedPanels) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Two", 1);
    panels.add(L"Three", 1);
    panels.add(L"Four");
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    LogCheck log;
    core.mf_stepForward();
    EXPECT_EQ(core.mf_getIndex(), 3);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWizardCore, SkippedLastPanelStopsForwardOnIt) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Two");
    panels.add(L"Three", 1);
    UQWizardCore core(panels);
    core.mf_setIndex(1);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_stepForward(); }), "_E_::Internal");
    EXPECT_EQ(core.mf_getIndex(), 2);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQWizard::mf_implShowNextPanel", "Last panel must not be skipped"}}));
}

TEST(UQWizardCore, BackPassesOverSkippedPanels) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Two", 1);
    panels.add(L"Three");
    UQWizardCore core(panels);
    core.mf_setIndex(2);
    core.mf_stepBack();
    EXPECT_EQ(core.mf_getIndex(), 0);
}

TEST(UQWizardCore, BackOverSkippedPanelsDownToPanelZeroFails) {
    FakePanels panels;
    panels.add(L"One", 1);
    panels.add(L"Two", 1);
    panels.add(L"Three");
    UQWizardCore core(panels);
    core.mf_setIndex(2);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_stepBack(); }), "_E_::Internal");
    EXPECT_EQ(core.mf_getIndex(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQWizard::mf_implShowPrevPanel", "First panel must not be skipped"}}));
}

TEST(UQWizardCore, BackFromPanelZeroGoesBelowZeroSoThatShowingFailsWithTheRangeError) {
    FakePanels panels;
    panels.add(L"One");
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    core.mf_stepBack();
    EXPECT_EQ(core.mf_getIndex(), -1);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_checkPanel(core.mf_getIndex()); }), "_E_::Range");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWizard::mf_getPanel", "Index -1 out of range (0..0)"}}));
}

TEST(UQWizardCore, BackOverANullEntryFailsWithItsMessage) {
    FakePanels panels;
    panels.add(L"One");
    panels.addNull();
    panels.add(L"Three");
    UQWizardCore core(panels);
    core.mf_setIndex(2);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { core.mf_stepBack(); }), "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWizard::mf_getPanel", "Panel with index 1 is NULL"}}));
}

TEST(UQWizardCore, NextLabelIsNextBeforeTheLastPanelAndFinishOnIt) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Two");
    UQWizardCore core(panels);
    EXPECT_EQ(core.mf_getNextLabel(0), UQWizardCore::TEXT_NEXT);
    EXPECT_EQ(core.mf_getNextLabel(1), UQWizardCore::TEXT_FINISH);
}

TEST(UQWizardCore, ExecutePanelKeepsTheExecuteLabelUntilItsResultIsGreen) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    panels.add(L"Done");
    UQWizardCore core(panels);
    EXPECT_EQ(core.mf_getNextLabel(0), UQWizardCore::TEXT_EXECUTE);
    panels.panels[0].result = UQErrnoData(UQErrno::_W_::UserCanceled);
    EXPECT_EQ(core.mf_getNextLabel(0), UQWizardCore::TEXT_EXECUTE);
    panels.panels[0].result = UQErrnoData(UQErrno::_E_::System);
    EXPECT_EQ(core.mf_getNextLabel(0), UQWizardCore::TEXT_EXECUTE);
    panels.panels[0].result = UQErrnoData(UQErrno::_I_::StubFile);
    EXPECT_EQ(core.mf_getNextLabel(0), UQWizardCore::TEXT_NEXT);
}

TEST(UQWizardCore, LabelAfterSuccessIsFinishOnlyOnTheLastPanel) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    panels.add(L"Run too", 0, 1);
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    EXPECT_EQ(core.mf_getLabelAfterSuccess(), UQWizardCore::TEXT_NEXT);
    core.mf_setIndex(1);
    EXPECT_EQ(core.mf_getLabelAfterSuccess(), UQWizardCore::TEXT_FINISH);
}

TEST(UQWizardCore, NextReadsAPlainPanelAndMovesForwardOrFinishes) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Two");
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    int nReads = 0;
    UQErrnoData error;
    EXPECT_EQ(core.mf_next([&] { ++nReads; }, error), UQWizardCore::NEXT_FORWARD);
    core.mf_setIndex(1);
    EXPECT_EQ(core.mf_next([&] { ++nReads; }, error), UQWizardCore::NEXT_FINISH);
    EXPECT_EQ(nReads, 2);
    EXPECT_FALSE(error);
}

TEST(UQWizardCore, RefusedInputIsLoggedAsWarningAndKept) {
    FakePanels panels;
    panels.add(L"Name");
    panels.add(L"Two");
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    LogCheck log;
    UQErrnoData error;
    EXPECT_EQ(core.mf_next([] { throw UQErrno(UQErrno::_E_::Parameter); }, error),
              UQWizardCore::NEXT_REFUSED);
    EXPECT_TRUE(error.mf_is(UQErrno::_E_::Parameter));
    EXPECT_EQ(core.mf_getIndex(), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQWizard::mf_onCommand",
                                     "Failure reading/executing panel 'Name', index=0:\r\n" + TAB +
                                         utf8(UQErrno(UQErrno::_E_::Parameter).mf_toString())}}));
}

TEST(UQWizardCore, BackIgnoresRefusedInput) {
    FakePanels panels;
    panels.add(L"One");
    UQWizardCore core(panels);
    LogCheck log;
    int nReads = 0;
    core.mf_readBeforeBack([&] {
        ++nReads;
        throw UQErrno(UQErrno::_E_::Parameter);
    });
    EXPECT_EQ(nReads, 1);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWizardCore, NextOnAnExecutePanelReadsNothingAndSignalsTheTask) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    int nReads = 0;
    UQErrnoData error;
    EXPECT_EQ(core.mf_next([&] { ++nReads; }, error), UQWizardCore::NEXT_EXECUTING);
    EXPECT_EQ(nReads, 0);
    // The signal stays set for the worker (auto-reset: one wait takes it).
    EXPECT_EQ(WaitForSingleObject(core.mf_getTaskEvent(), 0), WAIT_OBJECT_0);
    EXPECT_EQ(WaitForSingleObject(core.mf_getTaskEvent(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST(UQWizardCore, NextOnAnExecutedPanelWithGreenResultMovesWithoutReading) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    panels.panels[0].result = UQErrnoData(UQErrno::_I_::StubFile);
    int nReads = 0;
    UQErrnoData error;
    EXPECT_EQ(core.mf_next([&] { ++nReads; }, error), UQWizardCore::NEXT_FINISH);
    EXPECT_EQ(nReads, 0);
    EXPECT_EQ(WaitForSingleObject(core.mf_getTaskEvent(), 0), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST(UQWizardCore, ResultSetButNotGreenExecutesAgain) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    panels.panels[0].result = UQErrnoData(UQErrno::_W_::UserCanceled);
    UQErrnoData error;
    EXPECT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
}

TEST(UQWizardCore, WorkerExecutesTheCurrentPanelOnItsOwnThreadForEachSignal) {
    FakePanels panels;
    panels.add(L"One");
    panels.add(L"Run", 0, 1);
    UQWizardCore core(panels);
    Worker worker(core);
    worker.mf_start();
    worker.mf_startWait();
    core.mf_setIndex(1);
    UQErrnoData error;
    ASSERT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
    ASSERT_TRUE(panels.executed.waitFor(1));
    ASSERT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
    ASSERT_TRUE(panels.executed.waitFor(2));
    LogCheck log;
    core.mf_stopWorker(worker);
    EXPECT_FALSE(worker.mf_isRunning());
    std::lock_guard<std::mutex> lock(panels.mutex);
    EXPECT_EQ(panels.executedIndexes, (std::vector<int>{1, 1}));
    EXPECT_EQ(panels.threadNames, (std::vector<std::string>{"Wizard worker thread", "Wizard worker thread"}));
    // Whether the worker reports its exit depends on where the shutdown finds it; no failure either way.
    for (const LogLine& line : log.lines())
        EXPECT_EQ(line,
                  (LogLine{'T', "UQWizard::mf_implExecute", "Shutdown was signaled, exiting thread ..."}));
}

TEST(UQWizardCore, TaskWokenAtShutdownReportsTheExitAndExecutesNothing) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    UQWizardCore core(panels);
    core.mf_setIndex(0);
    Worker worker(core);
    worker.mf_stop();
    core.mf_signalTask(L"test");
    LogCheck log;
    core.mf_runTask(worker, 0);
    EXPECT_EQ(panels.executed.count(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'T', "UQWizard::mf_implExecute",
                                                  "Shutdown was signaled, exiting thread ..."}}));
}

TEST(UQWizardCore, ResultStoredByTheWorkerIsSeenByTheNextClick) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    panels.add(L"Done");
    UQWizardCore core(panels);
    std::mutex resultMutex;
    panels.work = [&](int n) {
        std::lock_guard<std::mutex> lock(resultMutex);
        panels.panels[static_cast<std::size_t>(n)].result = UQErrnoData(UQErrno::_I_::StubFile);
    };
    Worker worker(core);
    worker.mf_start();
    worker.mf_startWait();
    core.mf_setIndex(0);
    UQErrnoData error;
    ASSERT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
    ASSERT_TRUE(panels.executed.waitFor(1));
    {
        std::lock_guard<std::mutex> lock(resultMutex);
        EXPECT_EQ(core.mf_getNextLabel(0), UQWizardCore::TEXT_NEXT);
        EXPECT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_FORWARD);
    }
    core.mf_stopWorker(worker);
    EXPECT_EQ(panels.executed.count(), 1);
}

TEST(UQWizardCore, FailingExecutionIsLoggedAndEndsTheWorker) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    panels.work = [](int) { throw UQErrno(UQErrno::_E_::System); };
    UQWizardCore core(panels);
    Worker worker(core);
    worker.mf_start();
    worker.mf_startWait();
    core.mf_setIndex(0);
    LogCheck log;
    UQErrnoData error;
    ASSERT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_TRUE(worker.mf_getExitError().mf_is(UQErrno::_E_::System));
    const std::string sError = utf8(UQErrno(UQErrno::_E_::System).mf_toString());
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 1u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQWizard::mf_implExecute",
                                 "Failure executing panel 0 (Run):\r\n" + TAB + sError}));
    // Finishing afterwards still works: the thread has ended, nothing waits for ever.
    log.clear();
    core.mf_stopWorker(worker);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWizardCore, StoppingAnIdleWorkerNeedsNoExecution) {
    FakePanels panels;
    panels.add(L"One");
    UQWizardCore core(panels);
    Worker worker(core);
    worker.mf_start();
    worker.mf_startWait();
    core.mf_stopWorker(worker);
    EXPECT_FALSE(worker.mf_isRunning());
    EXPECT_EQ(panels.executed.count(), 0);
}

TEST(UQWizardCore, StopWaitsForARunningExecutionToReturn) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    Signal started;
    Worker* pWorker = nullptr;
    // The work runs until the wizard is finishing: it watches the worker's shutdown.
    panels.work = [&](int) {
        started.raise();
        threadtest::eventually([&] { return pWorker->mf_isShutdown() != 0; });
    };
    UQWizardCore core(panels);
    Worker worker(core);
    pWorker = &worker;
    worker.mf_start();
    worker.mf_startWait();
    core.mf_setIndex(0);
    UQErrnoData error;
    ASSERT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
    ASSERT_TRUE(started.waitFor(1));
    EXPECT_TRUE(threadtest::returnsWithin([&] { core.mf_stopWorker(worker); }));
    EXPECT_EQ(panels.executed.count(), 1);
    EXPECT_FALSE(worker.mf_isRunning());
}

TEST(UQWizardCore, StopWorkerOnItsOwnThreadIsLoggedNotThrown) {
    FakePanels panels;
    panels.add(L"Run", 0, 1);
    UQWizardCore core(panels);
    Worker worker(core);
    panels.work = [&](int) { core.mf_stopWorker(worker); };
    worker.mf_start();
    worker.mf_startWait();
    core.mf_setIndex(0);
    LogCheck log;
    UQErrnoData error;
    ASSERT_EQ(core.mf_next(readsFine, error), UQWizardCore::NEXT_EXECUTING);
    ASSERT_EQ(worker.mf_wait(LIMIT_MS).mf_getNumber(), 0u);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQThreads::mf_stopWait",
                                 "Thread 'Wizard worker thread' cannot wait for itself"}));
    EXPECT_EQ(lines[1].function, "UQWizard::mf_implFinalizeWizard");
    EXPECT_EQ(lines[1].text.rfind("Failure stopping wizard worker thread:\r\n" + TAB, 0), 0u);
}
