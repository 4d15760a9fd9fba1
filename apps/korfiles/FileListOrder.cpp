#include "FileListOrder.h"

void FileListOrder::mf_sort(UQFileListItem::Array& items, Key key, int bAscending) {
    // An empty array would only earn a warning in the log.
    if (items.IsEmpty())
        return;
    if (key == BY_RESULT)
        UQFileListItem::mf_sortByResult(items, bAscending);
    else
        UQFileListItem::mf_sortByPath(items, bAscending);
}
