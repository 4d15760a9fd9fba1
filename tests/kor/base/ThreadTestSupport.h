// Waiting in thread tests: every wait has a time limit, and nothing waits by sleeping.
#pragma once

#include "interfaces/korbase.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace threadtest {

// Long enough never to pass on a loaded machine (Wine, sanitizers); waits end as soon as their condition
// holds, so a passing test never waits this long.
const unsigned long LIMIT_MS = 20000;

// A counter that threads raise and tests wait on.
class Signal {
public:
    void raise() {
        {
            std::lock_guard<std::mutex> lock(m_mutex);
            ++m_nCount;
        }
        m_cond.notify_all();
    }
    int count() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_nCount;
    }
    // Whether the count reached _nAtLeast within the limit.
    bool waitFor(int nAtLeast = 1, unsigned long ulLimitMs = LIMIT_MS) const {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_cond.wait_for(lock, std::chrono::milliseconds(ulLimitMs),
                               [&] { return m_nCount >= nAtLeast; });
    }

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_cond;
    int m_nCount = 0;
};

// Waits for a condition that no one signals (another object's state), yielding meanwhile.
inline bool eventually(const std::function<bool()>& condition, unsigned long ulLimitMs = LIMIT_MS) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(ulLimitMs);
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::yield();
    }
    return true;
}

// Runs f on a thread of its own and answers whether it returned within the limit; a call that does not
// (a deadlock) is left behind so that the test can fail instead of hanging.
inline bool returnsWithin(std::function<void()> f, unsigned long ulLimitMs = LIMIT_MS) {
    auto done = std::make_shared<Signal>();
    std::thread t([f = std::move(f), done] {
        f();
        done->raise();
    });
    if (done->waitFor(1, ulLimitMs)) {
        t.join();
        return true;
    }
    t.detach();
    return false;
}

inline double msSince(std::chrono::steady_clock::time_point start) {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
}

} // namespace threadtest
