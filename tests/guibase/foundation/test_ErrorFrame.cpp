// The conventions every operation follows: collected failures leave the lock free, wrapped failures keep
// their category, system failures carry the error taken right after the call, warnings never throw.
#include "guibase/filelist/UQFileListItem.h"
#include "guibase/foundation/UQCriticalSection.h"
#include "guibase/foundation/UQReport.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <atomic>
#include <chrono>
#include <thread>

namespace {

// A locked object in the collected-failure shape.
class Counter {
public:
    void add(int n) {
        static const wchar_t* const _sFunction_ = L"Counter::add";
        m_lock.mf_runCollected([&](UQErrnoData& error) {
            if (n < 0) {
                error = UQReport::mf_collect(UQErrno::_E_::Range, _sFunction_, L"Index %d out of range", n);
                return;
            }
            m_nValue += n;
        });
    }
    int value() {
        int v = 0;
        m_lock.mf_runCollected([&](UQErrnoData&) { v = m_nValue; });
        return v;
    }
    UQCriticalSection& lock() { return m_lock; }

private:
    UQCriticalSection m_lock;
    int m_nValue = 0;
};

} // namespace

TEST(ErrorFrame, CollectedFailureLeavesTheLockFreeForASecondThread) {
    LogCheck log;
    Counter counter;
    EXPECT_EQ(thrownCategory([&] { counter.add(-1); }), "_E_::Range");
    std::atomic<int> entered{0};
    std::thread other([&] {
        if (counter.lock().mf_tryEnter()) {
            entered = 1;
            counter.lock().mf_leave();
        }
        counter.add(5);
    });
    other.join();
    EXPECT_EQ(entered.load(), 1);
    EXPECT_EQ(counter.value(), 5);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "Counter::add", "Index -1 out of range"}}));
}

TEST(ErrorFrame, ThrowingBodyAlsoLeavesTheLock) {
    Counter counter;
    EXPECT_EQ(thrownCategory([&] {
                  counter.lock().mf_runCollected([](UQErrnoData&) { throw UQErrno(UQErrno::_E_::Internal); });
              }),
              "_E_::Internal");
    bool entered = false;
    std::thread other([&] {
        entered = counter.lock().mf_tryEnter() != 0;
        if (entered)
            counter.lock().mf_leave();
    });
    other.join();
    EXPECT_TRUE(entered);
}

TEST(ErrorFrame, LockIsReentrantForItsOwner) {
    Counter counter;
    counter.lock().mf_runCollected([&](UQErrnoData&) { counter.add(2); });
    EXPECT_EQ(counter.value(), 2);
}

TEST(ErrorFrame, WrappedMemoryFailureReachesTheCallerWithItsCategoryInnerRecordFirst) {
    LogCheck log;
    const UQFileTime t = fileTime(2024, 3, 7, 14, 5, 9);
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] {
                  UQFileListItem item(L"C:\\data\\a.txt", 7, UQFileSize(100), t, L"Migrated",
                                      UQSeverity::Info);
              }),
              "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::string memory = utf8(UQErrno(UQErrno::_E_::Memory).mf_toString());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQFileListItem::mf_implAddVersion",
                   "No memory for adding file item version\r\n    Version=7, size=100, last write "
                   "time=2024-03-07 14:05:09"},
                  {'E', "UQFileListItem::UQFileListItem::1",
                   "Failure adding version to file list: " + memory +
                       "\r\n    File-version=7, file-size=100, last-write-time=2024-03-07 14:05:09"}}));
}

TEST(ErrorFrame, FailedCallThatSetsNoErrorNumberGivesSystemErrorZero) {
    SetLastError(5);
    SetLastError(0); // cleared before the call, as every reported system call is
    const auto silentlyFailingCall = []() -> BOOL { return FALSE; };
    ASSERT_FALSE(silentlyFailingCall());
    const UQErrno error(UQErrno::_E_::Gui, static_cast<std::uint32_t>(GetLastError()));
    EXPECT_EQ(error.mf_getSystemError(), 0u);
    EXPECT_EQ(utf8(error.mf_toString()).find("system error"), std::string::npos);
}

TEST(ErrorFrame, WarningsNeverThrow) {
    LogCheck log;
    UQFileListItem::Array empty;
    UQFileListItem::mf_sortByPath(empty, 1);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQFileListItem::mf_sortByPath", "No file list items to sort"}}));
}

TEST(ErrorFrame, LogArgumentsAreDataNeverFormat) {
    LogCheck log;
    UQReport::mf_log(UQLogData::LEVEL_D, L"ErrorFrame::test", L"Width of string '%s': %d", L"%s%d%n*?", 42);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'D', "ErrorFrame::test", "Width of string '%s%d%n*?': 42"}}));
}

TEST(ErrorFrame, EveryRecordIsPrecededByTheLoggingLanguageOnItsOwnThread) {
    UQLogCapture capture;
    std::thread worker([] { UQReport::mf_log(UQLogData::LEVEL_T, L"Worker::run", L"on a worker"); });
    worker.join();
    // Selecting the language on this thread does not count for a record written without it.
    UQThreadContext::mf_setLoggingLanguage();
    std::thread bare([] { UQLog::mf_writeMessage(UQLogData::LEVEL_T, L"Worker::run", L"without language"); });
    bare.join();
    const std::vector<UQLogCapture::Entry> entries = capture.mf_getEntries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].bLanguageSelected, 1);
    EXPECT_EQ(entries[1].bLanguageSelected, 0);
    UQThreadContext::mf_takeLoggingLanguageMark();
}
