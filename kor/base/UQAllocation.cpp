#include "interfaces/korbase.h"

#include <cstdlib>

namespace {
thread_local int t_failAfter = -1;
}

void* UQAllocation::mf_allocate(std::size_t n) noexcept {
    if (t_failAfter >= 0) {
        if (t_failAfter == 0) {
            t_failAfter = -1;
            return nullptr;
        }
        --t_failAfter;
    }
    return std::malloc(n == 0 ? 1 : n);
}

void UQAllocation::mf_free(void* p) noexcept { std::free(p); }

void UQAllocation::mf_injectFailure(int after) noexcept { t_failAfter = after; }
