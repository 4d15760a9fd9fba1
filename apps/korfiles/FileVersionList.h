#pragma once

#include "FileListOrder.h"
#include "FileVersionRecord.h"

#include "guibase/filelist/UQFileListItem.h"

#include <map>
#include <string>
#include <utility>

// The file list items of a file versions file: one item per path, holding every version listed for it.
// The list owns its items.
class FileVersionList {
public:
    FileVersionList() = default;
    FileVersionList(const FileVersionList&) = delete;
    FileVersionList& operator=(const FileVersionList&) = delete;
    ~FileVersionList();

    // Adds the record's version to the item of its path, creating the item (with the record's result and
    // severity) for a path not seen before. A version number the path already has is refused: answers 0
    // with _rProblem naming the line that listed it first. Library failures come out as UQErrno.
    int mf_add(const FileVersionRecord& _record, std::string& _rProblem);

    int mf_getCount() const noexcept { return static_cast<int>(m_items.size()); }
    // The item of exactly that path (case-sensitive), or null.
    const UQFileListItem* mf_find(const CString& _sPath);
    // Replaces what _rItems holds with the items in the asked order; the list keeps ownership.
    void mf_getSorted(UQFileListItem::Array& _rItems, FileListOrder::Key _key, int _bAscending);

private:
    // Ordinal, case-sensitive: the order of UQFileListItem's path sort.
    struct PathLess {
        bool operator()(const CString& _a, const CString& _b) const { return _a.Compare(_b) < 0; }
    };
    struct Entry {
        UQFileListItem* pItem;
        // Versions were added since the item's versions were last sorted.
        bool bUnsorted;
    };

    // Sorts the item's versions newest first once all of them are in, not with each one added: sorting
    // every time made a path of n versions cost n^2 log n.
    static UQFileListItem* mf_implSorted(Entry& _rEntry);

    std::map<CString, Entry, PathLess> m_items;
    // The line that listed each (path, version) first.
    std::map<std::pair<CString, std::uint32_t>, int> m_firstLines;
};
