#pragma once

#include "guibase/filelist/UQFileListItem.h"

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
};
