// What a registry call that fails leaves behind, to compare a toolkit operation's records against: the
// registry's own records and the text of the error it throws.
#pragma once

#include "ToolkitTestSupport.h"

#include <string>
#include <vector>

namespace toolkittest {

struct RegistryFailure {
    std::vector<LogLine> lines;
    std::string error;
};

template <class F> RegistryFailure registryFailure(F&& _call) {
    RegistryFailure failure;
    LogCheck log;
    try {
        _call();
        ADD_FAILURE() << "the registry call did not fail";
    } catch (const UQErrno& e) {
        failure.error = utf8(e.mf_toString());
    }
    failure.lines = log.lines();
    return failure;
}

inline std::vector<LogLine> operator+(std::vector<LogLine> _a, const std::vector<LogLine>& _b) {
    _a.insert(_a.end(), _b.begin(), _b.end());
    return _a;
}

} // namespace toolkittest
