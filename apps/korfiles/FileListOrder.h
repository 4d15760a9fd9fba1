#pragma once

#include "guibase/filelist/UQFileListItem.h"

// The orders korfiles prints file list items in, the same for both kinds of input.
class FileListOrder {
public:
    enum Key { BY_PATH, BY_RESULT };

    // By path, or by result text with equal results by path ascending, in the given direction (non-zero:
    // ascending). Comparisons are ordinal and case-sensitive.
    static void mf_sort(UQFileListItem::Array& _rItems, Key _key, int _bAscending);
};
