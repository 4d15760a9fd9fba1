// The test seams of korbase: the capture sink of the log and the failure injection of allocation and of
// the registry. Exported by korbase like the rest, but kept out of interfaces/korbase.h so that they are
// no part of what an ordinary consumer sees; tests include this header (tests/support/LogCheck.h does).
#pragma once

#include "interfaces/korbase.h"

#include <vector>

// Keeps every record in memory; installed for its lifetime. Used by tests.
class KORBASE_API UQLogCapture : public UVLogSink {
public:
    struct Entry {
        wchar_t cLevel;
        CString sFunction;
        CString sText;
        DWORD dwThreadId;
        int bLanguageSelected;
    };

    UQLogCapture();
    UQLogCapture(const UQLogCapture&) = delete;
    UQLogCapture& operator=(const UQLogCapture&) = delete;
    ~UQLogCapture() override;

    void mf_write(const UQLogRecord& _record) noexcept override;
    std::vector<Entry> mf_getEntries() const;
    void mf_clear();

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
    UVLogSink* m_pPrevious;
};

// Makes UQAllocation::mf_allocate fail on the calling thread; other threads are not affected.
class KORBASE_API UQAllocationInjection {
public:
    // The calling thread's allocation number _nAfter + 1, counted from now, yields null; once.
    static void mf_injectFailure(int _nAfter) noexcept;
    // The same, but that allocation throws UQErrno(_value).
    static void mf_injectError(int _nAfter, const UQErrnoValue& _value) noexcept;
    // Cancels whatever was injected on this thread.
    static void mf_clearInjection() noexcept;
};

// Makes UQRegistry's operations fail on the calling thread: of its next operations that touch the store
// (all but mf_getRegistryRoot), the ones numbered _nAfter + 1 to _nAfter + _nCount fail as a store failure
// would: logged, and thrown as UQErrno::_E_::Registry with the detail "Injected failure (...)". Other
// threads are not affected. A new injection replaces the previous one.
class KORBASE_API UQRegistryInjection {
public:
    static void mf_injectFailure(int _nAfter, int _nCount = 1) noexcept;
    // Cancels whatever was injected on this thread.
    static void mf_clearInjection() noexcept;
};
