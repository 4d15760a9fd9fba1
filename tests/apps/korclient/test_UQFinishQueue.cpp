// The queue that finishes files on a thread of its own: outcomes in the order of the files, on the caller's
// thread, a bounded number waiting, Cancel between two files, and a job that throws.
#include "UQFinishQueue.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <atomic>
#include <new>
#include <string>
#include <vector>

namespace {

struct Counts {
    std::atomic<int> nStarted{0};
    std::atomic<int> nFinished{0};
    std::atomic<int> nMostWaiting{0};
    std::atomic<int> nDestroyed{0};
    std::atomic<DWORD> dwJobThread{0};
};

// Takes a little while, says on which thread it ran, and answers "finished <n>".
class SlowJob : public UQFinishQueue::Job {
public:
    SlowJob(Counts& _rCounts, int _nIndex, bool _bThrow)
        : m_rCounts(_rCounts), m_nIndex(_nIndex), m_bThrow(_bThrow) {}
    ~SlowJob() override { ++m_rCounts.nDestroyed; }

    void mf_finish(UQFileOutcome& _rOutcome) override {
        m_rCounts.dwJobThread = GetCurrentThreadId();
        Sleep(static_cast<DWORD>(m_nIndex % 3));
        if (m_bThrow)
            throw std::bad_alloc();
        _rOutcome.sResult = L"finished " + std::to_wstring(m_nIndex);
        ++m_rCounts.nFinished;
    }

private:
    Counts& m_rCounts;
    int m_nIndex;
    bool m_bThrow;
};

UQFinishQueue::Item item(Counts& _rCounts, int _nIndex, bool _bDecided, bool _bThrow = false) {
    const int nWaiting = ++_rCounts.nStarted - _rCounts.nFinished;
    if (nWaiting > _rCounts.nMostWaiting)
        _rCounts.nMostWaiting = nWaiting;
    UQFinishQueue::Item result;
    result.outcome = UQFileOutcome::mf_of(L"C:\\file" + std::to_wstring(_nIndex), UQFileOutcome::GREEN, L"");
    if (_bDecided) {
        result.outcome.eSeverity = UQFileOutcome::RED;
        result.outcome.sResult = L"decided " + std::to_wstring(_nIndex);
        ++_rCounts.nFinished;
    } else {
        result.job.reset(new SlowJob(_rCounts, _nIndex, _bThrow));
    }
    return result;
}

TEST(FinishQueue, OutcomesLeaveInTheOrderOfTheFilesOnTheCallersThread) {
    const int FILES = 40;
    Counts counts;
    std::vector<std::wstring> results;
    std::vector<int> indexes;
    const DWORD dwCaller = GetCurrentThreadId();
    bool bOnCaller = true;
    int nStarted = 0;
    {
        UQFinishQueue queue(L"out of memory");
        nStarted = queue.mf_runAll(
            FILES, nullptr, [&](int _nIndex) { return item(counts, _nIndex, _nIndex % 5 == 3); },
            [&](int _nIndex, UQFileOutcome& _rOutcome) {
                bOnCaller = bOnCaller && GetCurrentThreadId() == dwCaller;
                indexes.push_back(_nIndex);
                results.push_back(_rOutcome.sResult);
            });
    }
    EXPECT_EQ(nStarted, FILES);
    ASSERT_EQ(static_cast<int>(results.size()), FILES);
    for (int i = 0; i < FILES; ++i) {
        EXPECT_EQ(indexes[static_cast<std::size_t>(i)], i);
        EXPECT_EQ(results[static_cast<std::size_t>(i)],
                  (i % 5 == 3 ? L"decided " : L"finished ") + std::to_wstring(i));
    }
    EXPECT_TRUE(bOnCaller) << "an outcome was handed over on the queue's thread";
    EXPECT_NE(counts.dwJobThread.load(), dwCaller);
    EXPECT_EQ(counts.nDestroyed, FILES - FILES / 5);
}

TEST(FinishQueue, AtMostItsDepthOfFilesWaitBesideTheOneBeingStarted) {
    Counts counts;
    UQFinishQueue queue(L"out of memory");
    queue.mf_runAll(
        30, nullptr, [&](int _nIndex) { return item(counts, _nIndex, false); }, [](int, UQFileOutcome&) {});
    EXPECT_LE(counts.nMostWaiting, static_cast<int>(UQFinishQueue::DEPTH) + 1);
    EXPECT_EQ(counts.nFinished, 30);
}

TEST(FinishQueue, JobThatThrowsGetsTheGivenResultAndIsDestroyedAndTheOthersGoOn) {
    Counts counts;
    std::vector<UQFileOutcome> outcomes;
    {
        UQFinishQueue queue(L"out of memory");
        queue.mf_runAll(
            3, nullptr, [&](int _nIndex) { return item(counts, _nIndex, false, _nIndex == 1); },
            [&](int, UQFileOutcome& _rOutcome) { outcomes.push_back(_rOutcome); });
    }
    ASSERT_EQ(outcomes.size(), 3u);
    EXPECT_EQ(outcomes[1].sPath, L"C:\\file1");
    EXPECT_EQ(outcomes[1].eSeverity, UQFileOutcome::RED);
    EXPECT_EQ(outcomes[1].sResult, L"out of memory");
    EXPECT_EQ(outcomes[0].sResult, L"finished 0");
    EXPECT_EQ(outcomes[2].sResult, L"finished 2");
    EXPECT_EQ(counts.nDestroyed, 3);
}

TEST(FinishQueue, CancelStopsTheStartingAndTheFilesStartedAreFinished) {
    const int FILES = 50;
    Counts counts;
    UQCancelSwitch cancel;
    int nTaken = 0;
    int nStarted = 0;
    {
        UQFinishQueue queue(L"out of memory");
        nStarted = queue.mf_runAll(
            FILES, &cancel, [&](int _nIndex) { return item(counts, _nIndex, false); },
            [&](int _nIndex, UQFileOutcome&) {
                ++nTaken;
                if (_nIndex == 1)
                    cancel.mf_implTryCancel();
            });
    }
    EXPECT_GE(nStarted, 2);
    EXPECT_LE(nStarted, 2 + static_cast<int>(UQFinishQueue::DEPTH) + 1);
    EXPECT_EQ(nTaken, nStarted);
    EXPECT_EQ(counts.nStarted, nStarted);
    EXPECT_EQ(counts.nFinished, nStarted);
}

TEST(FinishQueue, StartThatThrowsReachesTheCallerAfterTheFilesStartedAreFinishedAndTold) {
    Counts counts;
    std::vector<int> taken;
    bool bThrown = false;
    {
        UQFinishQueue queue(L"out of memory");
        try {
            queue.mf_runAll(
                10, nullptr,
                [&](int _nIndex) {
                    if (_nIndex == 3)
                        throw std::bad_alloc();
                    return item(counts, _nIndex, false);
                },
                [&](int _nIndex, UQFileOutcome&) { taken.push_back(_nIndex); });
        } catch (const std::bad_alloc&) {
            bThrown = true;
        }
    }
    EXPECT_TRUE(bThrown);
    EXPECT_EQ(taken, (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(counts.nFinished, 3);
}

TEST(FinishQueue, NothingToStartHandsNothingOver) {
    UQFinishQueue queue(L"out of memory");
    int nTaken = 0;
    EXPECT_EQ(
        queue.mf_runAll(
            0, nullptr, [](int) { return UQFinishQueue::Item(); }, [&](int, UQFileOutcome&) { ++nTaken; }),
        0);
    EXPECT_EQ(nTaken, 0);
}

} // namespace
