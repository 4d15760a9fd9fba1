// The object paths that one read of a history store has met. Internal to korarchiver.
#pragma once

#include "interfaces/korbase.h"

#include <cstddef>
#include <cstdint>
#include <unordered_set>
#include <utility>
#include <vector>

// Every object path read so far, once, with the versions listed for it and the line of each: a version
// listed twice is found without keeping a key per record, and the records of one file share one path
// text (a store lists each version of a file with the path written out again).
class UQStoredPathIndex {
public:
    UQStoredPathIndex() = default;
    UQStoredPathIndex(const UQStoredPathIndex&) = delete;
    UQStoredPathIndex& operator=(const UQStoredPathIndex&) = delete;

    // Notes that line _uLine lists version _uVersion of _rsPath. Paths are the same when UQPath::mf_compare
    // finds them equal, as the search list groups them. Answers 0 for a version not listed before, else
    // the line that listed it first (and notes nothing). Where the path is known spelt exactly the same,
    // _rsPath is given the known text.
    std::uint32_t mf_note(CString& _rsPath, std::uint32_t _uVersion, std::uint32_t _uLine);

    std::size_t mf_getPathCount() const noexcept { return m_paths.size(); }

private:
    struct Path {
        CString sText;
        // Of the folded text, kept: neighbours in a directory share long prefixes, and comparing them
        // character by character is what a set without it spends its time on.
        std::size_t uHash;
        // Version and line, in the order read; a file has a handful.
        mutable std::vector<std::pair<std::uint32_t, std::uint32_t>> versions;
    };
    struct FoldedHash {
        std::size_t operator()(const Path& _path) const noexcept { return _path.uHash; }
    };
    struct FoldedEqual {
        bool operator()(const Path& _a, const Path& _b) const noexcept;
    };

    static std::size_t mf_implHash(const CString& _sPath) noexcept;

    std::unordered_set<Path, FoldedHash, FoldedEqual> m_paths;
};
