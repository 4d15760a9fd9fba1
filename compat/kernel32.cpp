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

constexpr ULONGLONG TICKS_PER_MS = 10000;
constexpr ULONGLONG TICKS_PER_SECOND = 10000000;
constexpr ULONGLONG TICKS_PER_DAY = 864000000000ull;
constexpr ULONGLONG MAX_FILE_TIME = 0x7FFFFFFFFFFFFFFFull;
// Days from 1601-01-01 to 1970-01-01.
constexpr ULONGLONG UNIX_EPOCH_TICKS = 116444736000000000ull;

bool isLeap(unsigned _uY) {
    return (_uY % 4 == 0 && _uY % 100 != 0) || _uY % 400 == 0;
}

unsigned monthLength(unsigned _uY, unsigned _uM) {
    static const unsigned char DAYS[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return _uM == 2 && isLeap(_uY) ? 29u : DAYS[_uM - 1];
}

// Days since 1601-01-01 of a proleptic Gregorian date.
ULONGLONG daysFromCivil(unsigned _uY, unsigned _uM, unsigned _uD) {
    const ULONGLONG yy = _uY - 1601;
    ULONGLONG days = yy * 365 + yy / 4 - yy / 100 + yy / 400;
    for (unsigned k = 1; k < _uM; ++k)
        days += monthLength(_uY, k);
    return days + _uD - 1;
}

struct Event {
    std::mutex mutex;
    std::condition_variable cond;
    bool manualReset;
    bool signaled;
};

} // namespace

extern "C" {

void SetLastError(DWORD _dwE) {
    t_lastError = _dwE;
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

void InitializeCriticalSection(LPCRITICAL_SECTION _cs) {
    _cs->impl = new std::recursive_mutex;
}
void EnterCriticalSection(LPCRITICAL_SECTION _cs) {
    static_cast<std::recursive_mutex*>(_cs->impl)->lock();
}
BOOL TryEnterCriticalSection(LPCRITICAL_SECTION _cs) {
    return static_cast<std::recursive_mutex*>(_cs->impl)->try_lock() ? TRUE : FALSE;
}
void LeaveCriticalSection(LPCRITICAL_SECTION _cs) {
    static_cast<std::recursive_mutex*>(_cs->impl)->unlock();
}
void DeleteCriticalSection(LPCRITICAL_SECTION _cs) {
    delete static_cast<std::recursive_mutex*>(_cs->impl);
    _cs->impl = nullptr;
}

HANDLE CreateEventW(LPSECURITY_ATTRIBUTES, BOOL _manualReset, BOOL _initialState, LPCWSTR _name) {
    if (_name != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER); // named events are not part of this subset
        return nullptr;
    }
    Event* e = new (std::nothrow) Event;
    if (e == nullptr) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    e->manualReset = _manualReset != FALSE;
    e->signaled = _initialState != FALSE;
    return e;
}

BOOL SetEvent(HANDLE _hH) {
    if (_hH == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    Event* e = static_cast<Event*>(_hH);
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

BOOL ResetEvent(HANDLE _hH) {
    if (_hH == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    Event* e = static_cast<Event*>(_hH);
    std::lock_guard<std::mutex> lock(e->mutex);
    e->signaled = false;
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE _hH, DWORD _dwMs) {
    if (_hH == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return WAIT_FAILED;
    }
    Event* e = static_cast<Event*>(_hH);
    std::unique_lock<std::mutex> lock(e->mutex);
    if (_dwMs == INFINITE) {
        e->cond.wait(lock, [e] { return e->signaled; });
    } else if (!e->cond.wait_for(lock, std::chrono::milliseconds(_dwMs), [e] { return e->signaled; })) {
        return WAIT_TIMEOUT;
    }
    if (!e->manualReset)
        e->signaled = false;
    return WAIT_OBJECT_0;
}

BOOL CloseHandle(HANDLE _hH) {
    if (_hH == nullptr) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    delete static_cast<Event*>(_hH);
    return TRUE;
}

void Sleep(DWORD _dwMs) {
    std::this_thread::sleep_for(std::chrono::milliseconds(_dwMs));
}

BOOL FileTimeToSystemTime(const FILETIME* _pFt, LPSYSTEMTIME _st) {
    if (_pFt == nullptr || _st == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const ULONGLONG t = (static_cast<ULONGLONG>(_pFt->dwHighDateTime) << 32) | _pFt->dwLowDateTime;
    if (t > MAX_FILE_TIME) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    ULONGLONG days = t / TICKS_PER_DAY;
    const ULONGLONG rest = t % TICKS_PER_DAY;
    _st->wDayOfWeek = static_cast<WORD>((days + 1) % 7); // 1601-01-01 was a Monday
    _st->wHour = static_cast<WORD>(rest / (3600 * TICKS_PER_SECOND));
    _st->wMinute = static_cast<WORD>(rest / (60 * TICKS_PER_SECOND) % 60);
    _st->wSecond = static_cast<WORD>(rest / TICKS_PER_SECOND % 60);
    _st->wMilliseconds = static_cast<WORD>(rest / TICKS_PER_MS % 1000);
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
    _st->wYear = static_cast<WORD>(year);
    _st->wMonth = static_cast<WORD>(month);
    _st->wDay = static_cast<WORD>(days + 1);
    return TRUE;
}

BOOL SystemTimeToFileTime(const SYSTEMTIME* _pSt, LPFILETIME _ft) {
    if (_pSt == nullptr || _ft == nullptr || _pSt->wYear < 1601 || _pSt->wYear > 30827 || _pSt->wMonth < 1 ||
        _pSt->wMonth > 12 || _pSt->wDay < 1 || _pSt->wDay > monthLength(_pSt->wYear, _pSt->wMonth) ||
        _pSt->wHour > 23 || _pSt->wMinute > 59 || _pSt->wSecond > 59 || _pSt->wMilliseconds > 999) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const ULONGLONG t = daysFromCivil(_pSt->wYear, _pSt->wMonth, _pSt->wDay) * TICKS_PER_DAY +
                        ((_pSt->wHour * 60ull + _pSt->wMinute) * 60ull + _pSt->wSecond) * TICKS_PER_SECOND +
                        _pSt->wMilliseconds * TICKS_PER_MS;
    _ft->dwLowDateTime = static_cast<DWORD>(t);
    _ft->dwHighDateTime = static_cast<DWORD>(t >> 32);
    return TRUE;
}

void GetSystemTimeAsFileTime(LPFILETIME _ft) {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const ULONGLONG t =
        UNIX_EPOCH_TICKS +
        static_cast<ULONGLONG>(std::chrono::duration_cast<std::chrono::microseconds>(now).count()) * 10;
    _ft->dwLowDateTime = static_cast<DWORD>(t);
    _ft->dwHighDateTime = static_cast<DWORD>(t >> 32);
}

void GetSystemTime(LPSYSTEMTIME _st) {
    FILETIME ft;
    GetSystemTimeAsFileTime(&ft);
    FileTimeToSystemTime(&ft, _st);
}

} // extern "C"
