// The shared cancel flag: copies share it, cancelling wakes every waiter.
#include "support/LogCheck.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

namespace {

// Long enough never to pass on a loaded machine; the waits end as soon as the switch is tripped.
const DWORD GENEROUS_LIMIT_MS = 10000;

} // namespace

TEST(UQCancelSwitch, FreshSwitchIsNotCancelled) {
    const UQCancelSwitch fresh;
    EXPECT_FALSE(fresh.mf_isCancelled());
    EXPECT_FALSE(fresh.mf_waitCancelled(0));
}

TEST(UQCancelSwitch, OnlyTheFirstCancelReportsThatItCancelled) {
    UQCancelSwitch cancel;
    EXPECT_EQ(cancel.mf_implTryCancel(), 1);
    EXPECT_EQ(cancel.mf_implTryCancel(), 0);
    EXPECT_TRUE(cancel.mf_isCancelled());
}

TEST(UQCancelSwitch, CopiesShareTheFlag) {
    UQCancelSwitch original;
    const UQCancelSwitch copy(original);
    original.mf_implTryCancel();
    EXPECT_TRUE(copy.mf_isCancelled());
    EXPECT_EQ(UQCancelSwitch(copy).mf_implTryCancel(), 0);
}

TEST(UQCancelSwitch, AssignmentSharesTheOtherFlagAndLeavesTheOldOne) {
    UQCancelSwitch first;
    UQCancelSwitch second;
    const UQCancelSwitch keepsFirst(first);
    first = second;
    second.mf_implTryCancel();
    EXPECT_TRUE(first.mf_isCancelled());
    EXPECT_FALSE(keepsFirst.mf_isCancelled());
}

TEST(UQCancelSwitch, SelfAssignmentKeepsTheFlag) {
    UQCancelSwitch cancel;
    cancel.mf_implTryCancel();
    UQCancelSwitch& same = cancel;
    cancel = same;
    EXPECT_TRUE(cancel.mf_isCancelled());
}

TEST(UQCancelSwitch, CopyOutlivesTheOriginal) {
    UQCancelSwitch* original = new UQCancelSwitch;
    UQCancelSwitch survivor(*original);
    delete original;
    EXPECT_EQ(survivor.mf_implTryCancel(), 1);
    EXPECT_TRUE(survivor.mf_isCancelled());
}

TEST(UQCancelSwitch, ResetClearsEveryCopy) {
    UQCancelSwitch cancel;
    const UQCancelSwitch copy(cancel);
    cancel.mf_implTryCancel();
    cancel.mf_reset();
    EXPECT_FALSE(copy.mf_isCancelled());
    EXPECT_EQ(cancel.mf_implTryCancel(), 1);
}

TEST(UQCancelSwitch, WaitEndsAtItsTimeLimitWhenNobodyCancels) {
    const UQCancelSwitch cancel;
    EXPECT_FALSE(cancel.mf_waitCancelled(5));
}

TEST(UQCancelSwitch, WaitOnCancelledSwitchReturnsAtOnce) {
    UQCancelSwitch cancel;
    cancel.mf_implTryCancel();
    EXPECT_TRUE(cancel.mf_waitCancelled(INFINITE));
}

TEST(UQCancelSwitch, CancelFromAnotherThreadWakesEveryWaiter) {
    UQCancelSwitch cancel;
    std::atomic<int> woken{0};
    std::atomic<int> waiting{0};
    std::atomic<int> timedOut{0};
    std::vector<std::thread> waiters;
    for (int i = 0; i < 3; ++i) {
        waiters.emplace_back([&, copy = UQCancelSwitch(cancel)] {
            ++waiting;
            const auto start = std::chrono::steady_clock::now();
            if (copy.mf_waitCancelled(GENEROUS_LIMIT_MS))
                ++woken;
            // Woken by the cancel, not by reaching the limit.
            if (std::chrono::steady_clock::now() - start >= std::chrono::milliseconds(GENEROUS_LIMIT_MS))
                ++timedOut;
        });
    }
    while (waiting.load() < 3)
        std::this_thread::yield();
    std::thread canceller([copy = UQCancelSwitch(cancel)]() mutable { copy.mf_implTryCancel(); });
    canceller.join();
    for (std::thread& t : waiters)
        t.join();
    EXPECT_EQ(woken.load(), 3);
    EXPECT_EQ(timedOut.load(), 0);
}

TEST(UQCancelSwitch, ConcurrentCancelsCountOnce) {
    UQCancelSwitch cancel;
    std::atomic<int> cancelled{0};
    std::atomic<bool> go{false};
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&, copy = UQCancelSwitch(cancel)]() mutable {
            while (!go.load())
                std::this_thread::yield();
            cancelled += copy.mf_implTryCancel();
        });
    }
    go = true;
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(cancelled.load(), 1);
}

namespace {

// A worker's own switch that counts the cancels reaching it, as progress dialogs derive theirs.
class CountingSwitch : public UQCancelSwitch {
public:
    int mf_implTryCancel() noexcept override {
        ++m_nCalls;
        return UQCancelSwitch::mf_implTryCancel();
    }
    int m_nCalls = 0;
};

} // namespace

TEST(UQCancelSwitch, DerivedSwitchIsCancelledThroughTheBase) {
    CountingSwitch counting;
    UQCancelSwitch& base = counting;
    EXPECT_EQ(base.mf_implTryCancel(), 1);
    EXPECT_EQ(counting.m_nCalls, 1);
    EXPECT_TRUE(counting.mf_isCancelled());
}

TEST(UQCancelSwitch, CancelWithAReasonKeepsIt) {
    UQCancelSwitch cancel;
    const UQCancelSwitch copy(cancel);
    EXPECT_FALSE(cancel.mf_getCancelReason().mf_isError());
    EXPECT_EQ(cancel.mf_implTryCancel(UQErrnoData(UQErrno::_W_::UserCanceled)), 1);
    EXPECT_TRUE(copy.mf_isCancelled());
    EXPECT_TRUE(copy.mf_getCancelReason().mf_is(UQErrno::_W_::UserCanceled));
    // A later cancel neither cancels again nor changes the reason.
    EXPECT_EQ(cancel.mf_implTryCancel(UQErrnoData(UQErrno::_E_::Internal)), 0);
    EXPECT_TRUE(cancel.mf_getCancelReason().mf_is(UQErrno::_W_::UserCanceled));
    cancel.mf_reset();
    EXPECT_FALSE(cancel.mf_getCancelReason().mf_isError());
    EXPECT_EQ(cancel.mf_implTryCancel(), 1);
    EXPECT_FALSE(cancel.mf_getCancelReason().mf_isError());
}

TEST(UQCancelSwitch, ReasonedCancelGoesThroughTheDerivedSwitch) {
    CountingSwitch counting;
    UQCancelSwitch& base = counting;
    EXPECT_EQ(base.mf_implTryCancel(UQErrnoData(UQErrno::_W_::UserCanceled)), 1);
    EXPECT_EQ(counting.m_nCalls, 1);
    EXPECT_TRUE(counting.mf_getCancelReason().mf_is(UQErrno::_W_::UserCanceled));
}
