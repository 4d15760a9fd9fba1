// Native stand-in for the kernel32 functions the library uses, with the Windows results.
#include "win32.h"

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>

#include <sys/syscall.h>
#include <unistd.h>

namespace {

thread_local DWORD t_lastError = 0;

constexpr ULONGLONG kTicksPerMs = 10000;
constexpr ULONGLONG kTicksPerSecond = 10000000;
constexpr ULONGLONG kTicksPerDay = 864000000000ull;
constexpr ULONGLONG kMaxFileTime = 0x7FFFFFFFFFFFFFFFull;
// Days from 1601-01-01 to 1970-01-01.
constexpr ULONGLONG kUnixEpochTicks = 116444736000000000ull;

bool isLeap(unsigned y) {
    return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

unsigned monthLength(unsigned y, unsigned m) {
    static const unsigned char kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && isLeap(y) ? 29u : kDays[m - 1];
}

// Days since 1601-01-01 of a proleptic Gregorian date.
ULONGLONG daysFromCivil(unsigned y, unsigned m, unsigned d) {
    const ULONGLONG yy = y - 1601;
    ULONGLONG days = yy * 365 + yy / 4 - yy / 100 + yy / 400;
    for (unsigned k = 1; k < m; ++k)
        days += monthLength(y, k);
    return days + d - 1;
}

struct Event {
    std::mutex mutex;
    std::condition_variable cond;
    bool manualReset;
    bool signaled;
};

} // namespace

extern "C" {

void SetLastError(DWORD e) {
    t_lastError = e;
}
DWORD GetLastError(void) {
    return t_lastError;
}
DWORD GetCurrentThreadId(void) {
    return static_cast<DWORD>(::syscall(SYS_gettid));
}
DWORD GetCurrentProcessId(void) {
    return static_cast<DWORD>(::getpid());
}

void InitializeCriticalSection(LPCRITICAL_SECTION cs) {
    cs->impl = new std::recursive_mutex;
}
void EnterCriticalSection(LPCRITICAL_SECTION cs) {
    static_cast<std::recursive_mutex*>(cs->impl)->lock();
}
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION cs) {
    return static_cast<std::recursive_mutex*>(cs->impl)->try_lock() ? TRUE : FALSE;
}
void LeaveCriticalSection(LPCRITICAL_SECTION cs) {
    static_cast<std::recursive_mutex*>(cs->impl)->unlock();
}
void DeleteCriticalSection(LPCRITICAL_SECTION cs) {
    delete static_cast<std::recursive_mutex*>(cs->impl);
    cs->impl = nullptr;
}

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL manualReset, BOOL initialState, LPCWSTR name) {
    if (name != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER); // named events are not part of this subset
        return nullptr;
    }
    Event* e = new (std::nothrow) Event;
    if (e == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    e->manualReset = manualReset != FALSE;
    e->signaled = initialState != FALSE;
    return e;
}

BOOL SetEvent(HANDLE h) {
    if (h == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    Event* e = static_cast<Event*>(h);
    {
        std::lock_guard<std::mutex> lock(e->mutex);
        e->signaled = true;
    }
    if (e->manualReset)
        e->cond.notify_all();
    else
        e->cond.notify_one();
    return TRUE;
}

BOOL ResetEvent(HANDLE h) {
    if (h == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    Event* e = static_cast<Event*>(h);
    std::lock_guard<std::mutex> lock(e->mutex);
    e->signaled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE h, DWORD ms) {
    if (h == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    Event* e = static_cast<Event*>(h);
    std::unique_lock<std::mutex> lock(e->mutex);
    if (ms == INFINITE) {
        e->cond.wait(lock, [e] { return e->signaled; });
    } else if (!e->cond.wait_for(lock, std::chrono::milliseconds(ms), [e] { return e->signaled; })) {
        return WAIT_TIMEOUT;
    }
    if (!e->manualReset)
        e->signaled = false;
    return WAIT_OBJECT_0;
}

BOOL CloseHandle(HANDLE h) {
    if (h == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    delete static_cast<Event*>(h);
    return TRUE;
}

void Sleep(DWORD ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

BOOL FileTimeToSystemTime(const FILETIME* ft, LPSYSTEMTIME st) {
    if (ft == nullptr || st == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const ULONGLONG t = (static_cast<ULONGLONG>(ft->dwHighDateTime) << 32) | ft->dwLowDateTime;
    if (t > kMaxFileTime) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    ULONGLONG days = t / kTicksPerDay;
    const ULONGLONG rest = t % kTicksPerDay;
    st->wDayOfWeek = static_cast<WORD>((days + 1) % 7); // 1601-01-01 was a Monday
    st->wHour = static_cast<WORD>(rest / (3600 * kTicksPerSecond));
    st->wMinute = static_cast<WORD>(rest / (60 * kTicksPerSecond) % 60);
    st->wSecond = static_cast<WORD>(rest / kTicksPerSecond % 60);
    st->wMilliseconds = static_cast<WORD>(rest / kTicksPerMs % 1000);
    // 400-year cycles of 146097 days, then centuries, 4-year cycles and years.
    unsigned year = 1601 + static_cast<unsigned>(days / 146097) * 400;
    days %= 146097;
    ULONGLONG c = days / 36524;
    if (c == 4)
        c = 3;
    year += static_cast<unsigned>(c) * 100;
    days -= c * 36524;
    year += static_cast<unsigned>(days / 1461) * 4;
    days %= 1461;
    ULONGLONG y = days / 365;
    if (y == 4)
        y = 3;
    year += static_cast<unsigned>(y);
    days -= y * 365;
    unsigned month = 1;
    while (days >= monthLength(year, month)) {
        days -= monthLength(year, month);
        ++month;
    }
    st->wYear = static_cast<WORD>(year);
    st->wMonth = static_cast<WORD>(month);
    st->wDay = static_cast<WORD>(days + 1);
    return TRUE;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* st, LPFILETIME ft) {
    if (st == nullptr || ft == nullptr || st->wYear < 1601 || st->wYear > 30827 || st->wMonth < 1 ||
        st->wMonth > 12 || st->wDay < 1 || st->wDay > monthLength(st->wYear, st->wMonth) || st->wHour > 23 ||
        st->wMinute > 59 || st->wSecond > 59 || st->wMilliseconds > 999) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const ULONGLONG t = daysFromCivil(st->wYear, st->wMonth, st->wDay) * kTicksPerDay +
                        ((st->wHour * 60ull + st->wMinute) * 60ull + st->wSecond) * kTicksPerSecond +
                        st->wMilliseconds * kTicksPerMs;
    ft->dwLowDateTime = static_cast<DWORD>(t);
    ft->dwHighDateTime = static_cast<DWORD>(t >> 32);
    return TRUE;
}

void GetSystemTimeAsFileTime(LPFILETIME ft) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const ULONGLONG t =
        kUnixEpochTicks +
        static_cast<ULONGLONG>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()) * 10;
    ft->dwLowDateTime = static_cast<DWORD>(t);
    ft->dwHighDateTime = static_cast<DWORD>(t >> 32);
}

void GetSystemTime(LPSYSTEMTIME st) {
    FILETIME ft;
    GetSystemTimeAsFileTime(&ft);
    FileTimeToSystemTime(&ft, st);
}

} // extern "C"
