#include "interfaces/korbase.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

// One flag for a switch and all its copies; the last copy to go deletes it.
struct UQCancelSwitch::Shared {
    std::atomic<long> nRefs{1};
    std::atomic<bool> bCancelled{false};
    UQErrnoData pendingReason; // under mutex: the reason of the cancel being made
    UQErrnoData reason;        // under mutex: the reason of the cancel that tripped the switch
    std::mutex mutex;
    std::mutex pendingMutex; // one reasoned cancel at a time, so that reasons never mix
    std::condition_variable cond;

    Shared* retain() noexcept {
        nRefs.fetch_add(1, std::memory_order_relaxed);
        return this;
    }
    void release() noexcept {
        if (nRefs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete this;
    }
};

UQCancelSwitch::UQCancelSwitch() : m_pShared(new Shared) {}

UQCancelSwitch::UQCancelSwitch(const UQCancelSwitch& _other) noexcept
    : m_pShared(_other.m_pShared->retain()) {}

UQCancelSwitch& UQCancelSwitch::operator=(const UQCancelSwitch& _other) noexcept {
    Shared* previous = m_pShared;
    m_pShared = _other.m_pShared->retain();
    previous->release();
    return *this;
}

UQCancelSwitch::~UQCancelSwitch() {
    m_pShared->release();
}

int UQCancelSwitch::mf_implTryCancel() noexcept {
    try {
        {
            std::lock_guard<std::mutex> lock(m_pShared->mutex);
            if (m_pShared->bCancelled.load(std::memory_order_relaxed))
                return 0;
            m_pShared->reason = m_pShared->pendingReason;
            m_pShared->pendingReason = UQErrnoData();
            m_pShared->bCancelled.store(true, std::memory_order_release);
        }
        m_pShared->cond.notify_all();
        return 1;
    } catch (...) {
        // The mutex could not be taken: still mark the switch, the waiters see it at their time-out.
        return m_pShared->bCancelled.exchange(true) ? 0 : 1;
    }
}

int UQCancelSwitch::mf_implTryCancel(const UQErrnoData& _reason) noexcept {
    try {
        // The _reason waits beside the flag for the virtual cancel, which takes it when it sets the flag;
        // the mutex is not held across the virtual call, which a derived switch may extend.
        std::lock_guard<std::mutex> lock(m_pShared->pendingMutex);
        {
            std::lock_guard<std::mutex> inner(m_pShared->mutex);
            if (m_pShared->bCancelled.load(std::memory_order_relaxed))
                return 0;
            m_pShared->pendingReason = _reason;
        }
        const int cancelled = mf_implTryCancel();
        std::lock_guard<std::mutex> inner(m_pShared->mutex);
        m_pShared->pendingReason = UQErrnoData();
        return cancelled;
    } catch (...) {
        return mf_implTryCancel();
    }
}

UQErrnoData UQCancelSwitch::mf_getCancelReason() const noexcept {
    try {
        std::lock_guard<std::mutex> lock(m_pShared->mutex);
        return m_pShared->reason;
    } catch (...) {
        return UQErrnoData();
    }
}

int UQCancelSwitch::mf_isCancelled() const noexcept {
    return m_pShared->bCancelled.load(std::memory_order_acquire);
}

int UQCancelSwitch::mf_waitCancelled(DWORD _dwMilliseconds) const noexcept {
    try {
        std::unique_lock<std::mutex> lock(m_pShared->mutex);
        const auto cancelled = [this] { return m_pShared->bCancelled.load(std::memory_order_acquire); };
        if (_dwMilliseconds == INFINITE)
            m_pShared->cond.wait(lock, cancelled);
        else
            m_pShared->cond.wait_for(lock, std::chrono::milliseconds(_dwMilliseconds), cancelled);
    } catch (...) {
    }
    return mf_isCancelled();
}

void UQCancelSwitch::mf_reset() noexcept {
    try {
        std::lock_guard<std::mutex> lock(m_pShared->mutex);
        m_pShared->reason = UQErrnoData();
        m_pShared->bCancelled.store(false, std::memory_order_release);
    } catch (...) {
        m_pShared->bCancelled.store(false, std::memory_order_release);
    }
}
