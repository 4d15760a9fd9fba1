// What every harness shares: a log sink that drops records (the readers log what they skip, and a file
// per record would slow the run to a crawl), and a check that ends the run as a finding.
#pragma once

#include "interfaces/korbase.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

class UQDiscardingLogSink : public UVLogSink {
public:
    void mf_write(const UQLogRecord& _record) noexcept override {}
};

// Installs the discarding sink once for the process; records are still formatted before they reach it.
inline void f_discardLog() {
    static UQDiscardingLogSink s_sink;
    static UVLogSink* const S_PREVIOUS = UQLog::mf_setSink(&s_sink);
    (void)S_PREVIOUS;
}

// A violated property is a finding like a crash: libFuzzer saves the input and the run fails.
inline void f_require(bool _bHolds, const char* _pszWhat) {
    if (!_bHolds) {
        std::fprintf(stderr, "property violated: %s\n", _pszWhat);
        std::abort();
    }
}

inline std::string f_bytes(const std::uint8_t* _pData, std::size_t _nSize) {
    return std::string(reinterpret_cast<const char*>(_pData), _nSize);
}
