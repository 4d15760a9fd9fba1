#include "interfaces/korbase.h"

#include <cstdlib>
#include <new>

namespace {
// Per thread, so that a test's injection never hits another thread's allocations.
thread_local int t_failAfter = -1;
thread_local const UQErrnoValue* t_error = nullptr;
} // namespace

void* UQAllocation::mf_allocate(std::size_t n) {
    if (t_failAfter >= 0) {
        if (t_failAfter == 0) {
            t_failAfter = -1;
            const UQErrnoValue* error = t_error;
            t_error = nullptr;
            if (error != nullptr)
                throw UQErrno(*error);
            return nullptr;
        }
        --t_failAfter;
    }
    return std::malloc(n == 0 ? 1 : n);
}

void UQAllocation::mf_free(void* p) noexcept {
    std::free(p);
}

void* UQAllocation::mf_allocateOrThrow(std::size_t _nBytes) {
    void* pMemory = mf_allocate(_nBytes);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    return pMemory;
}

void UQAllocation::mf_injectFailure(int after) noexcept {
    t_failAfter = after;
    t_error = nullptr;
}

void UQAllocation::mf_injectError(int after, const UQErrnoValue& value) noexcept {
    t_failAfter = after;
    t_error = &value;
}

void UQAllocation::mf_clearInjection() noexcept {
    t_failAfter = -1;
    t_error = nullptr;
}
