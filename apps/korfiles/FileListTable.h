#pragma once

#include "guibase/filelist/UQFileListItem.h"
#include "guibase/search/UQSearchFileItem.h"

#include <string>

// The text korfiles prints: a header line and one line per item, in columns aligned by character count.
// Paths are never shortened. UTF-8, lines ending in "\n", no trailing blanks. Every item must have a
// version.
class FileListTable {
public:
    // Path, version ranges, selected version, result and severity.
    static std::string mf_format(const UQFileListItem::Array& _items);
    // Path, version ranges, result and severity: a listing gives its versions no file time, so there is no
    // selected version to show.
    static std::string mf_formatListing(const UQFileListItem::Array& _items);
    // A history search: path, versions, status, security and alternate data streams, each item's display
    // strings. Versions are the item's version ranges, or with _bSelectedOnly the number of its selected
    // version alone (the header then says Version); the status is the selected version's, or the latest
    // one's when none is selected; security and streams are the latest record's.
    static std::string mf_formatSearch(const UQSearchFileItem::Array& _items, int _bSelectedOnly);
};
