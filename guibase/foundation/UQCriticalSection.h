#pragma once

#include "compat/UQHandle.h"
#include "interfaces/korbase.h"

// The re-entrant lock of a data model object, and the collected-failure shape that goes with it:
// failures inside are logged where they arise and thrown only after the lock is left.
class UQCriticalSection {
public:
    UQCriticalSection() noexcept { InitializeCriticalSection(&m_section); }
    UQCriticalSection(const UQCriticalSection&) = delete;
    UQCriticalSection& operator=(const UQCriticalSection&) = delete;
    ~UQCriticalSection() { DeleteCriticalSection(&m_section); }

    void mf_enter() noexcept { EnterCriticalSection(&m_section); }
    void mf_leave() noexcept { LeaveCriticalSection(&m_section); }
    int mf_tryEnter() noexcept { return TryEnterCriticalSection(&m_section) ? 1 : 0; }

    // Runs _body(error) under the lock. The body collects its failures into error (or throws UQErrno,
    // which is collected too); after the lock is left a collected error is thrown as UQErrno. Any other
    // exception also leaves the lock before it goes on.
    template <class Body> void mf_runCollected(Body&& _body) {
        UQErrnoData error;
        {
            mf_enter();
            const UQScopeExit leave([this]() noexcept { mf_leave(); });
            try {
                _body(error);
            } catch (const UQErrno& e) {
                error = e.mf_getData();
            }
        }
        if (error)
            throw UQErrno(error);
    }

private:
    CRITICAL_SECTION m_section;
};
