#include "interfaces/korbase_testing.h"

#include <cstdlib>
#include <new>

namespace {
// Per thread, so that a test's injection never hits another thread's allocations.
thread_local int t_failAfter = -1;
thread_local const UQErrnoValue* t_error = nullptr;
} // namespace

void* UQAllocation::mf_allocate(std::size_t _nBytes) {
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
    return std::malloc(_nBytes == 0 ? 1 : _nBytes);
}

void UQAllocation::mf_free(void* _p) noexcept {
    std::free(_p);
}

void* UQAllocation::mf_allocateOrThrow(std::size_t _nBytes) {
    void* pMemory = mf_allocate(_nBytes);
    if (pMemory == nullptr)
        throw std::bad_alloc();
    return pMemory;
}

void UQAllocationInjection::mf_injectFailure(int _nAfter) noexcept {
    t_failAfter = _nAfter;
    t_error = nullptr;
}

void UQAllocationInjection::mf_injectError(int _nAfter, const UQErrnoValue& _value) noexcept {
    t_failAfter = _nAfter;
    t_error = &_value;
}

void UQAllocationInjection::mf_clearInjection() noexcept {
    t_failAfter = -1;
    t_error = nullptr;
}
