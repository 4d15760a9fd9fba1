// History stores with the names of a real file server: deep trees whose directories hold many files,
// a long tail of long paths, and names in several scripts (German, French, Polish, Cyrillic, Greek,
// Japanese, Chinese). Deterministic: the same record count and starting value give the same file.
#pragma once

#include <cstdint>
#include <string>

namespace realistic_history {

struct Summary {
    std::uint64_t records = 0;
    std::uint64_t files = 0;
    std::uint64_t bytes = 0;
    std::uint64_t longestPath = 0;   // in characters
    std::uint64_t pathsOver200 = 0;  // paths of more than 200 characters
    std::uint64_t nonAsciiPaths = 0; // paths with a character outside ASCII
    double averagePath = 0;          // characters
};

// Writes a store of about _uRecords records (1 to 8 versions a file, three on average) to _sFile, in the
// scattered order a server answers in: the first versions of all files, then the second versions, and so
// on. Answers 0 with _rsError set when the file cannot be written.
int writeStore(const std::string& _sFile, std::uint64_t _uRecords, std::uint64_t _uSeed, Summary& _rSummary,
               std::string& _rsError);

} // namespace realistic_history
