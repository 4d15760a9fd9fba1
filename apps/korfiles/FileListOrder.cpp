#include "FileListOrder.h"

void FileListOrder::mf_sort(UQFileListItem::Array& _rItems, Key _key, int _bAscending) {
    // An empty array would only earn a warning in the log.
    if (_rItems.IsEmpty())
        return;
    if (_key == BY_RESULT)
        UQFileListItem::mf_sortByResult(_rItems, _bAscending);
    else
        UQFileListItem::mf_sortByPath(_rItems, _bAscending);
}
