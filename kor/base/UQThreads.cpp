// The worker and timer thread bases: std::thread on both targets, so the same code runs under Wine and
// under ThreadSanitizer.
#include "interfaces/korbase.h"

#include "kor/KorReport.h"

#include <chrono>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

#if !defined(_WIN32)
#include <pthread.h>
#endif

namespace {

// ERROR_POSSIBLE_DEADLOCK: a thread asked to wait for itself.
const std::uint32_t POSSIBLE_DEADLOCK_ERROR = 1131;

// Microseconds of the steady clock: due times are kept finer than the waits, so no run comes early.
std::int64_t steadyNowUs() noexcept {
    return std::chrono::duration_cast<std::chrono::microseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

} // namespace

struct UQThreads::State {
    enum Phase { IDLE, STARTING, RUNNING, ENDED };

    State(const CString& _sName, UQThreadContext::TYPE _type, int _bRepeat)
        : sName(_sName), type(_type), bRepeat(_bRepeat != 0) {}

    const CString sName;
    const UQThreadContext::TYPE type;
    const bool bRepeat;

    std::mutex mutex;
    std::condition_variable cond;
    Phase phase = IDLE;       // under mutex
    bool bWake = false;       // under mutex
    std::thread thread;       // under mutex
    std::thread::id threadId; // under mutex
    UQErrnoData exitError;    // under mutex
    std::atomic<bool> bShutdown{false};
    std::atomic<DWORD> dwThreadId{0};
    // Set by the destructor: the thread touches the object no more (it may be destroyed by its own body).
    std::atomic<bool> bDestroyed{false};
};

namespace {

// What UQThreadContext answers on a thread of UQThreads; trivial, so that it needs no thread-exit code.
thread_local const UQThreads* t_pThreads = nullptr;
thread_local const CString* t_pName = nullptr;
thread_local int t_nType = UQThreadContext::TYPE_NONE;

// The system's name of the calling thread: SetThreadDescription on Windows, looked up at run time since
// Windows before 10 (1607) does not export it and the DLL must load there too; pthread_setname_np (15
// bytes) elsewhere.
void setSystemThreadName(const CString& _sName) noexcept {
#if defined(_WIN32)
    typedef HRESULT(WINAPI * SetThreadDescriptionFn)(HANDLE, PCWSTR);
    static const SetThreadDescriptionFn s_pfn = []() -> SetThreadDescriptionFn {
        for (const wchar_t* module : {L"kernel32.dll", L"kernelbase.dll"}) {
            HMODULE h = GetModuleHandleW(module);
            if (h == nullptr)
                continue;
            FARPROC p = GetProcAddress(h, "SetThreadDescription");
            if (p != nullptr)
                return reinterpret_cast<SetThreadDescriptionFn>(reinterpret_cast<void*>(p));
        }
        return nullptr;
    }();
    if (s_pfn != nullptr)
        s_pfn(GetCurrentThread(), _sName.GetString());
#else
    try {
        std::string utf8 = _sName.ToUtf8();
        if (utf8.size() > 15) {
            std::size_t n = 15;
            while (n > 0 && (static_cast<unsigned char>(utf8[n]) & 0xC0) == 0x80)
                --n; // cut before a continuation byte, never inside a character
            utf8.resize(n);
        }
        pthread_setname_np(pthread_self(), utf8.c_str());
    } catch (...) {
    }
#endif
}

} // namespace

CString UQThreadContext::mf_getThreadName() {
    return t_pName != nullptr ? *t_pName : CString();
}

UQThreadContext::TYPE UQThreadContext::mf_getThreadType() noexcept {
    return static_cast<TYPE>(t_nType);
}

UQThreads* UQThreadContext::mf_getCurrentThreads() noexcept {
    return const_cast<UQThreads*>(t_pThreads);
}

// ---------------------------------------------------------------------------------------------------------
// UQThreads

UQThreads::UQThreads(const CString& _sName, UQThreadContext::TYPE _type, int _bRepeat)
    : m_state(std::make_shared<State>(_sName, _type, _bRepeat)) {}

UQThreads::UQThreads(const UQThreads& _other)
    : UQCancelObject(_other),
      m_state(std::make_shared<State>(_other.m_state->sName, _other.m_state->type, _other.m_state->bRepeat)) {
}

UQThreads::~UQThreads() {
    static const wchar_t* const _sFunction_ = L"UQThreads::~UQThreads";
    State& s = *m_state;
    s.bDestroyed.store(true);
    s.bShutdown.store(true);
    std::thread thread;
    bool bRunning = false;
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.bWake = true;
        bRunning = s.phase == State::STARTING || s.phase == State::RUNNING;
        thread = std::move(s.thread);
    }
    s.cond.notify_all();
    if (!thread.joinable())
        return;
    if (thread.get_id() == std::this_thread::get_id()) {
        // Destroyed by its own thread: nobody can wait for it; the thread keeps the state alive.
        thread.detach();
        return;
    }
    if (bRunning)
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                            L"Thread '%s' is still running while destroyed; waiting for it", s.sName);
    thread.join();
}

void UQThreads::mf_implExecuteOnStart(int) {}

void UQThreads::mf_implExecuteOnStop(int) {}

void UQThreads::mf_start() {
    static const wchar_t* const _sFunction_ = L"UQThreads::mf_start";
    State& s = *m_state;
    std::thread previous;
    {
        std::unique_lock<std::mutex> lock(s.mutex);
        if (s.phase == State::STARTING || s.phase == State::RUNNING) {
            lock.unlock();
            UQKorReport::mf_fail(UQErrno(UQErrno::_E_::AlreadyInitialized), _sFunction_,
                                 L"Thread '%s' is already running", s.sName);
        }
        previous = std::move(s.thread); // a thread that has ended and was not waited for
    }
    if (previous.joinable())
        previous.join();
    CString sError;
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.bShutdown.store(false);
        s.bWake = false;
        s.exitError = UQErrnoData();
        s.phase = State::STARTING;
        try {
            s.thread = std::thread(&UQThreads::mf_implRun, this, m_state);
            s.threadId = s.thread.get_id();
        } catch (const std::exception& e) {
            s.phase = State::IDLE;
            sError = CString::FromUtf8(e.what());
        }
    }
    if (!sError.IsEmpty())
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::System), _sFunction_, L"Failure creating thread '%s': %s",
                             s.sName, sError);
}

void UQThreads::mf_startWait() {
    static const wchar_t* const _sFunction_ = L"UQThreads::mf_startWait";
    State& s = *m_state;
    std::unique_lock<std::mutex> lock(s.mutex);
    if (s.phase == State::IDLE) {
        lock.unlock();
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Initialization), _sFunction_,
                             L"Thread '%s' has not been started", s.sName);
    }
    s.cond.wait(lock, [&s] { return s.phase != State::STARTING; });
}

void UQThreads::mf_stop() {
    State& s = *m_state;
    s.bShutdown.store(true);
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.bWake = true;
    }
    s.cond.notify_all();
}

UQErrnoNumber UQThreads::mf_stopWait(unsigned long _ulTimeoutMs) {
    static const wchar_t* const _sFunction_ = L"UQThreads::mf_stopWait";
    mf_stop();
    return mf_implWaitEnd(_ulTimeoutMs, _sFunction_);
}

UQErrnoNumber UQThreads::mf_wait(unsigned long _ulTimeoutMs) {
    static const wchar_t* const _sFunction_ = L"UQThreads::mf_wait";
    return mf_implWaitEnd(_ulTimeoutMs, _sFunction_);
}

UQErrnoNumber UQThreads::mf_implWaitEnd(unsigned long _ulTimeoutMs, const wchar_t* _pszFunction) {
    State& s = *m_state;
    std::thread thread;
    {
        std::unique_lock<std::mutex> lock(s.mutex);
        if (s.phase == State::IDLE)
            return UQErrnoNumber(0);
        if (s.phase != State::ENDED && s.threadId == std::this_thread::get_id()) {
            lock.unlock();
            UQKorReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Thread '%s' cannot wait for itself",
                                s.sName);
            return UQErrnoNumber(POSSIBLE_DEADLOCK_ERROR);
        }
        const auto ended = [&s] { return s.phase == State::ENDED; };
        if (_ulTimeoutMs == INFINITE)
            s.cond.wait(lock, ended);
        else if (!s.cond.wait_for(lock, std::chrono::milliseconds(_ulTimeoutMs), ended))
            return UQErrnoNumber(WAIT_TIMEOUT);
        thread = std::move(s.thread);
    }
    // The thread has run its last step; joining only collects it.
    if (thread.joinable() && thread.get_id() != std::this_thread::get_id())
        thread.join();
    else if (thread.joinable())
        thread.detach();
    return UQErrnoNumber(0);
}

int UQThreads::mf_isShutdown(int) const noexcept {
    return m_state->bShutdown.load() ? 1 : 0;
}

int UQThreads::mf_isRunning() const noexcept {
    std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->phase == State::STARTING || m_state->phase == State::RUNNING;
}

int UQThreads::mf_isCancelled() const noexcept {
    const UQCancelSwitch* pSwitch = mf_getCancelSwitch();
    return pSwitch != nullptr && pSwitch->mf_isCancelled();
}

const CString& UQThreads::mf_getName() const noexcept {
    return m_state->sName;
}

UQThreadContext::TYPE UQThreads::mf_getType() const noexcept {
    return m_state->type;
}

int UQThreads::mf_isRepeating() const noexcept {
    return m_state->bRepeat ? 1 : 0;
}

DWORD UQThreads::mf_getThreadId() const noexcept {
    return m_state->dwThreadId.load();
}

UQErrnoData UQThreads::mf_getExitError() const noexcept {
    std::lock_guard<std::mutex> lock(m_state->mutex);
    return m_state->exitError;
}

int UQThreads::mf_implWait(unsigned long _ulMs) noexcept {
    State& s = *m_state;
    try {
        std::unique_lock<std::mutex> lock(s.mutex);
        const auto woken = [&s] { return s.bWake || s.bShutdown.load(); };
        bool bWoken;
        if (_ulMs == INFINITE) {
            s.cond.wait(lock, woken);
            bWoken = true;
        } else {
            bWoken = s.cond.wait_for(lock, std::chrono::milliseconds(_ulMs), woken);
        }
        if (bWoken)
            s.bWake = false;
        return bWoken ? 1 : 0;
    } catch (...) {
        return s.bShutdown.load() ? 1 : 0;
    }
}

void UQThreads::mf_implWakeUp() noexcept {
    State& s = *m_state;
    try {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.bWake = true;
    } catch (...) {
    }
    s.cond.notify_all();
}

// The thread function. It holds the state, so the state outlives the object if the object is destroyed by
// its own thread; it touches the object only until it reports its end.
void UQThreads::mf_implRun(UQThreads* _pThis, std::shared_ptr<State> _state) noexcept {
    static const wchar_t* const _sFunction_ = L"UQThreads::mf_implRun";
    State& s = *_state;
    t_pThreads = _pThis;
    t_pName = &s.sName;
    t_nType = s.type;
    s.dwThreadId.store(GetCurrentThreadId());
    setSystemThreadName(s.sName);

    UQErrnoData exitError;
    // One step of the thread; false when it failed (logged) and the thread is to end.
    const auto step = [&](const wchar_t* _pszStep, auto&& _f) -> bool {
        try {
            _f();
            return true;
        } catch (const UQErrno& e) {
            exitError = e.mf_getData();
            UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure in %s of thread '%s':\r\n%s%s",
                                _pszStep, s.sName, UQLog::TAB, e.mf_toString());
        } catch (const std::exception& e) {
            exitError = UQErrno::_E_::Internal;
            UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                L"Unexpected exception in %s of thread '%s': %s", _pszStep, s.sName,
                                CString::FromUtf8(e.what()));
        } catch (...) {
            exitError = UQErrno::_E_::Internal;
            UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                L"Unexpected exception in %s of thread '%s': unknown type", _pszStep,
                                s.sName);
        }
        return false;
    };

    const bool bStarted = step(L"mf_implExecuteOnStart", [_pThis] { _pThis->mf_implExecuteOnStart(0); });
    {
        std::lock_guard<std::mutex> lock(s.mutex);
        s.phase = State::RUNNING;
        s.cond.notify_all();
    }
    if (bStarted) {
        while (!s.bShutdown.load()) {
            if (!step(L"mf_implExecute", [_pThis] { _pThis->mf_implExecute(0); }))
                break;
            if (!s.bRepeat || s.bDestroyed.load())
                break;
        }
    }
    const UQErrnoData bodyError = exitError;
    if (!s.bDestroyed.load())
        step(L"mf_implExecuteOnStop", [_pThis] { _pThis->mf_implExecuteOnStop(0); });
    if (bodyError)
        exitError = bodyError; // the first failure is the one that ended the thread

    t_pThreads = nullptr;
    t_pName = nullptr;
    t_nType = UQThreadContext::TYPE_NONE;
    std::lock_guard<std::mutex> lock(s.mutex);
    s.exitError = exitError;
    s.phase = State::ENDED;
    s.cond.notify_all();
}

// ---------------------------------------------------------------------------------------------------------
// UQTimerThread

UQTimerThread::UQTimerThread(const CString& _sName, UQThreadContext::TYPE _type, unsigned long _ulIntervalMs)
    : UQThreads(_sName, _type, 1), m_ulInterval(_ulIntervalMs), m_ulFirstDelay(_ulIntervalMs), m_nRuns(0),
      m_nRunsMade(0), m_bFirstRun(1), m_nDueUs(0) {}

UQTimerThread::UQTimerThread(const CString& _sName, unsigned long _ulIntervalMs)
    : UQTimerThread(_sName, UQThreadContext::TYPE_TIMER, _ulIntervalMs) {}

UQTimerThread::UQTimerThread(const UQTimerThread& _other)
    : UQThreads(_other), m_ulInterval(_other.m_ulInterval.load()),
      m_ulFirstDelay(_other.m_ulFirstDelay.load()), m_nRuns(_other.m_nRuns.load()), m_nRunsMade(0),
      m_bFirstRun(1), m_nDueUs(0) {}

UQTimerThread::~UQTimerThread() {
    // The runs are this class's; a derived timer ends its thread in its own destructor.
    mf_stopWait(INFINITE);
}

void UQTimerThread::mf_implExecute(int _nThread) {
    if (m_bFirstRun.exchange(0))
        m_nDueUs = steadyNowUs() + static_cast<std::int64_t>(m_ulFirstDelay.load()) * 1000;
    // Wait for the run's time; a wake-up (or the stop) ends the wait early.
    for (;;) {
        if (mf_isShutdown(_nThread))
            return;
        const std::int64_t left = m_nDueUs - steadyNowUs();
        if (left <= 0)
            break;
        if (mf_implWait(static_cast<unsigned long>((left + 999) / 1000))) {
            if (mf_isShutdown(_nThread))
                return;
            m_nDueUs = steadyNowUs(); // woken up: this run happens now
            break;
        }
    }
    mf_implExecuteTimer();
    const int made = m_nRunsMade.fetch_add(1) + 1;
    const int runs = m_nRuns.load();
    if (runs > 0 && made >= runs) {
        UQThreads::mf_stop(); // the last run: the thread ends by itself
        return;
    }
    // The next run an interval after this one was due, but never in the past: no bursts to catch up.
    m_nDueUs += static_cast<std::int64_t>(m_ulInterval.load()) * 1000;
    const std::int64_t after = steadyNowUs();
    if (m_nDueUs < after)
        m_nDueUs = after;
}

void UQTimerThread::mf_start() {
    mf_start(m_ulInterval.load(), 0, m_ulInterval.load());
}

void UQTimerThread::mf_stop() {
    UQThreads::mf_stop();
}

void UQTimerThread::mf_implExecuteTimer() {}

void UQTimerThread::mf_start(unsigned long _ulIntervalMs, int _nRuns, unsigned long _ulFirstDelayMs) {
    static const wchar_t* const _sFunction_ = L"UQTimerThread::mf_start";
    if (_nRuns < 0)
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Parameter), _sFunction_, L"Invalid number of runs %d",
                             _nRuns);
    if (mf_isRunning())
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::AlreadyInitialized), _sFunction_,
                             L"Thread '%s' is already running", mf_getName());
    m_ulInterval.store(_ulIntervalMs);
    m_ulFirstDelay.store(_ulFirstDelayMs);
    m_nRuns.store(_nRuns);
    m_nRunsMade.store(0);
    m_bFirstRun.store(1);
    UQThreads::mf_start();
}

void UQTimerThread::mf_wakeUp() {
    mf_implWakeUp();
}

int UQTimerThread::mf_getRuns() const noexcept {
    return m_nRuns.load();
}

int UQTimerThread::mf_getRunsMade() const noexcept {
    return m_nRunsMade.load();
}

unsigned long UQTimerThread::mf_getInterval() const noexcept {
    return m_ulInterval.load();
}

int UQTimerThread::mf_isLastRun() const noexcept {
    return m_nRuns.load() - m_nRunsMade.load() == 1 ? 1 : 0;
}
