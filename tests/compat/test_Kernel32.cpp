// The kernel32 subset: Windows itself on the windows target, korcompat's stand-in on the native one. The
// same inputs must give the same outputs on both.
#include "compat/win32.h"
#include "support/TestTime.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <thread>

namespace {

bool runningUnderWine() {
#if defined(_WIN32)
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    return ntdll != nullptr && GetProcAddress(ntdll, "wine_get_version") != nullptr;
#else
    return false;
#endif
}

std::uint64_t ticksOf(const FILETIME& ft) {
    return (static_cast<std::uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime;
}

FILETIME fileTime(std::uint64_t ticks) {
    FILETIME ft;
    ft.dwLowDateTime = static_cast<DWORD>(ticks & 0xFFFFFFFFu);
    ft.dwHighDateTime = static_cast<DWORD>(ticks >> 32);
    return ft;
}

std::string show(const SYSTEMTIME& st) {
    char buf[96];
    std::snprintf(buf, sizeof buf, "%05u-%02u-%02u %02u:%02u:%02u.%03u dow %u", st.wYear, st.wMonth, st.wDay,
                  st.wHour, st.wMinute, st.wSecond, st.wMilliseconds, st.wDayOfWeek);
    return buf;
}

bool isLeap(unsigned y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}
unsigned daysIn(unsigned y, unsigned m) {
    static const unsigned DAYS[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && isLeap(y) ? 29 : DAYS[m - 1];
}

constexpr DWORD SIGNALLED = WAIT_OBJECT_0;
constexpr DWORD TIMEOUT = WAIT_TIMEOUT;
constexpr DWORD INVALID_HANDLE = ERROR_INVALID_HANDLE;
constexpr DWORD INVALID_PARAMETER = ERROR_INVALID_PARAMETER;

constexpr std::uint64_t TICKS_PER_MS = 10000;
constexpr std::uint64_t TICKS_PER_DAY = 864000000000ull;

// Which conversion a row checks.
enum Direction {
    TO_SYSTEM, // FileTimeToSystemTime(ticks) gives the fields, or fails
    TO_FILE,   // SystemTimeToFileTime(fields) gives the ticks, or fails
    BOTH,      // both of the above, so the row is a round trip
};

struct TimeRow {
    const char* name;
    Direction direction;
    std::uint64_t ticks;
    SYSTEMTIME fields;
    BOOL ok;
    DWORD error;             // the last error after a failure
    const char* wineAccepts; // non-null: Wine 8 accepts what Windows rejects (row skipped under Wine)
};

const TimeRow TIME_ROWS[] = {
    {"the epoch", BOTH, 0, systemTime(1601, 1, 1, 0, 0, 0, 0, 1), TRUE, 0, nullptr},
    {"end of the first year", BOTH, 315359999990000ull, systemTime(1601, 12, 31, 23, 59, 59, 999, 1), TRUE, 0,
     nullptr},
    {"1700 is no leap year", BOTH, 31291488000000000ull, systemTime(1700, 2, 28, 0, 0, 0, 0, 0), TRUE, 0,
     nullptr},
    {"the day after 1700-02-28", BOTH, 31292352000000000ull, systemTime(1700, 3, 1, 0, 0, 0, 0, 1), TRUE, 0,
     nullptr},
    {"the Unix epoch", BOTH, 116444736000000000ull, systemTime(1970, 1, 1, 0, 0, 0, 0, 4), TRUE, 0, nullptr},
    {"leap day 2000", BOTH, 125963012967890000ull, systemTime(2000, 2, 29, 12, 34, 56, 789, 2), TRUE, 0,
     nullptr},
    {"last moment of 2000", BOTH, 126227807999990000ull, systemTime(2000, 12, 31, 23, 59, 59, 999, 0), TRUE,
     0, nullptr},
    {"leap day 2024", BOTH, 133537247999990000ull, systemTime(2024, 2, 29, 23, 59, 59, 999, 4), TRUE, 0,
     nullptr},
    {"2023-03-01", BOTH, 133221024000000000ull, systemTime(2023, 3, 1, 0, 0, 0, 0, 3), TRUE, 0, nullptr},
    {"2100-03-01", BOTH, 157520160000000000ull, systemTime(2100, 3, 1, 0, 0, 0, 0, 1), TRUE, 0, nullptr},
    {"9999-12-31", BOTH, 2650467743999990000ull, systemTime(9999, 12, 31, 23, 59, 59, 999, 5), TRUE, 0,
     nullptr},
    {"last valid SYSTEMTIME", BOTH, 9223149887999990000ull, systemTime(30827, 12, 31, 23, 59, 59, 999, 5),
     TRUE, 0, nullptr},
    {"largest FILETIME", TO_SYSTEM, 0x7FFFFFFFFFFFFFFFull, systemTime(30828, 9, 14, 2, 48, 5, 477, 4), TRUE,
     0, nullptr},
    {"sub-millisecond ticks are cut", TO_SYSTEM, 9999, systemTime(1601, 1, 1, 0, 0, 0, 0, 1), TRUE, 0,
     nullptr},
    {"negative FILETIME", TO_SYSTEM, 0x8000000000000000ull, SYSTEMTIME{}, FALSE, INVALID_PARAMETER, nullptr},
    {"all bits set", TO_SYSTEM, 0xFFFFFFFFFFFFFFFFull, SYSTEMTIME{}, FALSE, INVALID_PARAMETER, nullptr},
    {"the day of week is ignored", TO_FILE, 116444736000000000ull, systemTime(1970, 1, 1, 0, 0, 0, 0, 6),
     TRUE, 0, nullptr},
    {"month 0", TO_FILE, 0, systemTime(2024, 0, 1, 0, 0, 0, 0, 1), FALSE, INVALID_PARAMETER, nullptr},
    {"month 13", TO_FILE, 0, systemTime(2024, 13, 1, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"day 0", TO_FILE, 0, systemTime(2024, 5, 0, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"day 32", TO_FILE, 0, systemTime(2024, 1, 32, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"hour 24", TO_FILE, 0, systemTime(2024, 5, 1, 24, 0, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"minute 60", TO_FILE, 0, systemTime(2024, 5, 1, 0, 60, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"second 60", TO_FILE, 0, systemTime(2024, 5, 1, 0, 0, 60, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"millisecond 1000", TO_FILE, 0, systemTime(2024, 5, 1, 0, 0, 0, 1000, 0), FALSE, INVALID_PARAMETER,
     nullptr},
    {"year 1600", TO_FILE, 0, systemTime(1600, 12, 31, 23, 59, 59, 999, 0), FALSE, INVALID_PARAMETER,
     nullptr},
    {"2023-02-29", TO_FILE, 0, systemTime(2023, 2, 29, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER,
     "Wine 8 accepts February 29 of a common year and gives March 1"},
    {"2100-02-29", TO_FILE, 0, systemTime(2100, 2, 29, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER,
     "Wine 8 accepts February 29 of a common year and gives March 1"},
    {"2024-02-30", TO_FILE, 0, systemTime(2024, 2, 30, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"April 31", TO_FILE, 0, systemTime(2024, 4, 31, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER, nullptr},
    {"30828-01-01", TO_FILE, 0, systemTime(30828, 1, 1, 0, 0, 0, 0, 0), FALSE, INVALID_PARAMETER,
     "Wine 8 accepts years above 30827"},
};

} // namespace

TEST(Kernel32Time, TheSameInputsGiveTheSameOutputsOnBothTargets) {
    const bool wine = runningUnderWine();
    int checked = 0;
    for (const TimeRow& row : TIME_ROWS) {
        SCOPED_TRACE(row.name);
        if (wine && row.wineAccepts != nullptr)
            continue; // see the row: Wine differs from Windows here
        if (row.direction == TO_SYSTEM || row.direction == BOTH) {
            const FILETIME ft = fileTime(row.ticks);
            SYSTEMTIME st = systemTime(1, 1, 1, 1, 1, 1, 1, 1);
            SetLastError(0);
            const BOOL ok = FileTimeToSystemTime(&ft, &st);
            EXPECT_EQ(row.ok, ok);
            if (ok && row.ok) {
                EXPECT_EQ(show(row.fields), show(st));
            }
            if (!row.ok) {
                EXPECT_EQ(row.error, GetLastError());
            }
            ++checked;
        }
        if (row.direction == TO_FILE || row.direction == BOTH) {
            FILETIME ft = fileTime(0x0123456789ABCDEFull);
            SetLastError(0);
            const BOOL ok = SystemTimeToFileTime(&row.fields, &ft);
            EXPECT_EQ(row.ok, ok);
            if (ok && row.ok) {
                EXPECT_EQ(row.ticks, ticksOf(ft));
            }
            if (!row.ok) {
                EXPECT_EQ(row.error, GetLastError());
            }
            ++checked;
        }
    }
    EXPECT_EQ(wine ? 40 : 43, checked); // the whole table ran, less the rows where Wine differs
}

TEST(Kernel32Time, WalkingDayByDayThroughFourHundredYearsAndBack) {
    // Every day from 1601-01-01 on, at a time of day that changes with the day, converts to the next
    // calendar date and back to the same ticks (cut to milliseconds).
    unsigned y = 1601, m = 1, d = 1, dow = 1;
    for (std::uint64_t day = 0; day < 146097 + 400; ++day) {
        const std::uint64_t inDay = (day * 7919 * 10000019ull) % TICKS_PER_DAY;
        const std::uint64_t ticks = day * TICKS_PER_DAY + inDay;
        const FILETIME ft = fileTime(ticks);
        SYSTEMTIME st;
        ASSERT_TRUE(FileTimeToSystemTime(&ft, &st)) << "day " << day;
        const std::uint64_t ms = inDay / TICKS_PER_MS;
        const SYSTEMTIME want = systemTime(
            static_cast<WORD>(y), static_cast<WORD>(m), static_cast<WORD>(d), static_cast<WORD>(ms / 3600000),
            static_cast<WORD>(ms / 60000 % 60), static_cast<WORD>(ms / 1000 % 60),
            static_cast<WORD>(ms % 1000), static_cast<WORD>(dow));
        ASSERT_EQ(show(want), show(st)) << "day " << day;
        FILETIME back;
        ASSERT_TRUE(SystemTimeToFileTime(&st, &back)) << show(st);
        ASSERT_EQ(ticks - ticks % TICKS_PER_MS, ticksOf(back)) << show(st);
        dow = (dow + 1) % 7;
        if (++d > daysIn(y, m)) {
            d = 1;
            if (++m > 12) {
                m = 1;
                ++y;
            }
        }
    }
}

TEST(Kernel32Time, TheLastYearsBeforeTheLargestFileTime) {
    // From 30827-01-01 to 30828-09-14 every day converts; the day of week runs on without a gap.
    const std::uint64_t first = 9223149887999990000ull / TICKS_PER_DAY - 364; // 30827-01-01
    SYSTEMTIME previous{};
    for (std::uint64_t day = first; day * TICKS_PER_DAY <= 0x7FFFFFFFFFFFFFFFull; ++day) {
        const FILETIME ft = fileTime(day * TICKS_PER_DAY);
        SYSTEMTIME st;
        ASSERT_TRUE(FileTimeToSystemTime(&ft, &st)) << "day " << day;
        if (day == first) {
            EXPECT_EQ(show(systemTime(30827, 1, 1, 0, 0, 0, 0, 5)), show(st));
        } else {
            EXPECT_EQ((previous.wDayOfWeek + 1) % 7, st.wDayOfWeek) << show(st);
        }
        previous = st;
    }
    EXPECT_EQ(show(systemTime(30828, 9, 14, 0, 0, 0, 0, 4)), show(previous));
}

TEST(Kernel32Time, SuccessLeavesTheLastErrorAlone) {
    const FILETIME ft = fileTime(116444736000000000ull);
    SYSTEMTIME st;
    SetLastError(1234);
    ASSERT_TRUE(FileTimeToSystemTime(&ft, &st));
    EXPECT_EQ(1234u, GetLastError());
    FILETIME back;
    ASSERT_TRUE(SystemTimeToFileTime(&st, &back));
    EXPECT_EQ(1234u, GetLastError());
}

TEST(Kernel32Time, SystemTimeIsNow) {
    const auto unixNow = std::chrono::duration_cast<std::chrono::milliseconds>(
                             std::chrono::system_clock::now().time_since_epoch())
                             .count();
    FILETIME ft;
    GetSystemTimeAsFileTime(&ft);
    const std::int64_t ms = static_cast<std::int64_t>((ticksOf(ft) - 116444736000000000ull) / TICKS_PER_MS);
    EXPECT_LT(ms - unixNow < 0 ? unixNow - ms : ms - unixNow, 5000);

    SYSTEMTIME st;
    GetSystemTime(&st);
    FILETIME fromSt;
    ASSERT_TRUE(SystemTimeToFileTime(&st, &fromSt));
    const std::uint64_t a = ticksOf(ft);
    const std::uint64_t b = ticksOf(fromSt);
    EXPECT_LT(b > a ? b - a : a - b, 5000 * TICKS_PER_MS);
}

namespace {

// Waits for a stage by spinning: thread start and join may call kernel32 and reset the last error, so the
// threads below meet without calling anything that could.
bool reachStage(const std::atomic<int>& stage, int wanted) {
    for (long long i = 0; i < 20000000000LL; ++i)
        if (stage.load() == wanted)
            return true;
    return false;
}

} // namespace

TEST(Kernel32LastError, EachThreadHasItsOwn) {
    std::atomic<int> stage{0};
    DWORD seenInThread = 0;
    DWORD seenInThreadLater = 0;
    std::thread t([&] {
        if (!reachStage(stage, 1))
            return;
        SetLastError(5678);
        seenInThread = GetLastError();
        stage = 2;
        if (!reachStage(stage, 3))
            return;
        seenInThreadLater = GetLastError();
        stage = 4;
    });
    SetLastError(1234);
    stage = 1;
    EXPECT_TRUE(reachStage(stage, 2));
    const DWORD seenInMain = GetLastError();
    SetLastError(4321);
    stage = 3;
    EXPECT_TRUE(reachStage(stage, 4));
    const DWORD seenInMainLater = GetLastError();
    t.join();
    EXPECT_EQ(5678u, seenInThread);
    EXPECT_EQ(1234u, seenInMain);
    EXPECT_EQ(5678u, seenInThreadLater);
    EXPECT_EQ(4321u, seenInMainLater);
}

TEST(Kernel32LastError, SetAndGetOnOneThread) {
    SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), GetLastError());
    SetLastError(0);
    EXPECT_EQ(0u, GetLastError());
}

TEST(Kernel32Thread, ThreadIdsDifferBetweenThreads) {
    const DWORD mine = GetCurrentThreadId();
    EXPECT_EQ(mine, GetCurrentThreadId());
    DWORD other = mine;
    std::thread t([&] { other = GetCurrentThreadId(); });
    t.join();
    EXPECT_NE(mine, other);
    EXPECT_NE(0u, GetCurrentProcessId());
}

TEST(Kernel32CriticalSection, TheOwningThreadEntersAgain) {
    CRITICAL_SECTION cs;
    InitializeCriticalSection(&cs);
    EnterCriticalSection(&cs);
    // Tried first, so that a lock that is not recursive fails here instead of hanging.
    ASSERT_TRUE(TryEnterCriticalSection(&cs));
    EnterCriticalSection(&cs);
    LeaveCriticalSection(&cs);
    LeaveCriticalSection(&cs);
    LeaveCriticalSection(&cs);
    DeleteCriticalSection(&cs);
}

TEST(Kernel32CriticalSection, AnotherThreadWaitsUntilEveryEntryIsLeft) {
    CRITICAL_SECTION cs;
    InitializeCriticalSection(&cs);
    EnterCriticalSection(&cs);
    ASSERT_TRUE(TryEnterCriticalSection(&cs));

    const auto tryFromAnotherThread = [&cs] {
        BOOL got = FALSE;
        std::thread t([&] {
            got = TryEnterCriticalSection(&cs);
            if (got)
                LeaveCriticalSection(&cs);
        });
        t.join();
        return got;
    };
    EXPECT_FALSE(tryFromAnotherThread());
    LeaveCriticalSection(&cs); // still held once
    EXPECT_FALSE(tryFromAnotherThread());

    std::atomic<bool> entered{false};
    std::thread waiter([&] {
        EnterCriticalSection(&cs);
        entered = true;
        LeaveCriticalSection(&cs);
    });
    Sleep(50);
    EXPECT_FALSE(entered.load());
    LeaveCriticalSection(&cs);
    waiter.join();
    EXPECT_TRUE(entered.load());
    EXPECT_TRUE(tryFromAnotherThread());
    DeleteCriticalSection(&cs);
}

namespace {

// Polls until pred() holds, for at most ten seconds.
template <class P> bool eventually(P pred) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!pred()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        Sleep(1);
    }
    return true;
}

} // namespace

TEST(Kernel32Event, AutoResetReleasesOneWaiterAndResets) {
    const HANDLE ev = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_NE(nullptr, ev);
    std::atomic<int> released{0};
    const auto wait = [&] {
        if (WaitForSingleObject(ev, 10000) == SIGNALLED)
            ++released;
    };
    std::thread a(wait);
    std::thread b(wait);
    EXPECT_TRUE(SetEvent(ev));
    EXPECT_TRUE(eventually([&] { return released.load() >= 1; }));
    Sleep(50);
    EXPECT_EQ(1, released.load());
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 0)); // releasing the waiter reset the event
    EXPECT_TRUE(SetEvent(ev));
    a.join();
    b.join();
    EXPECT_EQ(2, released.load());
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 0));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, AutoResetSignalledWithoutWaitersReleasesTheNextWaitOnly) {
    const HANDLE ev = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_NE(nullptr, ev);
    EXPECT_TRUE(SetEvent(ev));
    EXPECT_TRUE(SetEvent(ev)); // signalling twice does not count
    EXPECT_EQ(SIGNALLED, WaitForSingleObject(ev, 0));
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 0));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, InitiallySignalledAutoReset) {
    const HANDLE ev = CreateEventW(nullptr, FALSE, TRUE, nullptr);
    ASSERT_NE(nullptr, ev);
    EXPECT_EQ(SIGNALLED, WaitForSingleObject(ev, 0));
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 0));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, ManualResetStaysSignalledForEveryWaiter) {
    const HANDLE ev = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    ASSERT_NE(nullptr, ev);
    std::atomic<int> released{0};
    const auto wait = [&] {
        if (WaitForSingleObject(ev, 10000) == SIGNALLED)
            ++released;
    };
    std::thread a(wait);
    std::thread b(wait);
    std::thread c(wait);
    EXPECT_TRUE(SetEvent(ev));
    a.join();
    b.join();
    c.join();
    EXPECT_EQ(3, released.load());
    EXPECT_EQ(SIGNALLED, WaitForSingleObject(ev, 0));
    EXPECT_EQ(SIGNALLED, WaitForSingleObject(ev, INFINITE));
    EXPECT_TRUE(ResetEvent(ev));
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 0));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, InitiallySignalledManualReset) {
    const HANDLE ev = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    ASSERT_NE(nullptr, ev);
    EXPECT_EQ(SIGNALLED, WaitForSingleObject(ev, 0));
    EXPECT_EQ(SIGNALLED, WaitForSingleObject(ev, 0));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, WaitTimesOutWhenNothingSignals) {
    const HANDLE ev = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    ASSERT_NE(nullptr, ev);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 60));
    const auto waited =
        std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start)
            .count();
    EXPECT_GE(waited, 30); // it did wait, not just look
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 0));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, ResetBeforeTheWaitKeepsTheWaiterWaiting) {
    const HANDLE ev = CreateEventW(nullptr, TRUE, TRUE, nullptr);
    ASSERT_NE(nullptr, ev);
    EXPECT_TRUE(ResetEvent(ev));
    EXPECT_EQ(TIMEOUT, WaitForSingleObject(ev, 10));
    EXPECT_TRUE(CloseHandle(ev));
}

TEST(Kernel32Event, NullHandlesFailWithInvalidHandle) {
    SetLastError(0);
    EXPECT_FALSE(SetEvent(nullptr));
    EXPECT_EQ(INVALID_HANDLE, GetLastError());
    SetLastError(0);
    EXPECT_FALSE(ResetEvent(nullptr));
    EXPECT_EQ(INVALID_HANDLE, GetLastError());
    SetLastError(0);
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(nullptr, 0));
    if (!runningUnderWine()) { // Wine 8 fails here without setting the last error
        EXPECT_EQ(INVALID_HANDLE, GetLastError());
    }
    SetLastError(0);
    EXPECT_FALSE(CloseHandle(nullptr));
    if (!runningUnderWine()) { // Wine 8 fails here without setting the last error
        EXPECT_EQ(INVALID_HANDLE, GetLastError());
    }
}

#if !defined(_WIN32)
TEST(Kernel32Event, NamedEventsAreNotInTheNativeSubset) {
    SetLastError(0);
    EXPECT_EQ(nullptr, CreateEventW(nullptr, FALSE, FALSE, L"Global\\name"));
    EXPECT_EQ(INVALID_PARAMETER, GetLastError());
}
#endif
