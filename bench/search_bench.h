// The search list against its limit: the same generated history taken through the same steps by
// UQSearchList, by the fastest plain code known (order keys folded once per record, both cores) and by
// plain standard containers that compare paths character by character. Each side runs in a process of its
// own, so that each has its own peak of resident memory.
#pragma once

#include <cstdint>

namespace search_bench {

enum Phase { ADD, CLOSE, SELECT_LATEST, SORT_BY_PATH, FILTERED_LIST, ACCESS_ORDER, PHASES };

// "add", "close", ...
const char* phaseName(int phase);

// LIMIT: order keys (compat/afxsortkey.h) built once per record on two threads, sorted on two threads.
// STD_REFERENCE: std::sort with UQPath::mf_compare, which folds every character at every comparison.
enum Side { LIST, LIMIT, STD_REFERENCE };

struct Result {
    int ok;                     // 0: the side failed; error says why
    double seconds[PHASES];     // wall-clock time of each step
    double total;               // their sum
    double cpuSeconds[PHASES];  // processor time of each step, all threads of the side's process
    double cpuTotal;            // their sum
    std::uint64_t records;      // query records added
    std::uint64_t files;        // files they grouped into
    std::uint64_t filtered;     // files left by the filter (deleted ones excluded)
    std::uint64_t selected;     // files in the access-ordered selection
    std::uint64_t filteredHash; // of the filtered files in their order: path and version numbers
    std::uint64_t selectedHash; // of the selection in access order: path, selected version, volume, position
    std::uint64_t baselineKiB;  // resident memory when the side began
    std::uint64_t peakKiB;      // the side's process's peak of resident memory (VmHWM)
    char error[256];
};

// Runs one side over a generated history of _uFiles files (about three records each) with _nProducers
// adding threads, in a child process.
Result runInChildProcess(Side side, std::uint32_t files, int producers);

} // namespace search_bench
