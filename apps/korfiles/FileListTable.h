#pragma once

#include "guibase/filelist/UQFileListItem.h"

#include <string>

// The text korfiles prints: a header line and one line per item with its path, version ranges, selected
// version, result and severity, in columns aligned by character count. Paths are never shortened.
class FileListTable {
public:
    // UTF-8, lines ending in "\n", no trailing blanks. Every item must have a version.
    static std::string mf_format(const UQFileListItem::Array& _items);
};
