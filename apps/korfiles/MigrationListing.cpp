#include "MigrationListing.h"

#include <utility>

std::vector<UQErrno> MigrationListing::mf_read(const std::string& text, const CString& name) {
    UQListingReader::Result result = UQListingReader::mf_readText(text, name, m_list);
    m_list.mf_close();
    // Newest first: the ranges string then reads upwards and the newest version is the selected one.
    m_list.mf_sortVersions(0);
    return std::move(result.errors);
}

void MigrationListing::mf_getItems(UQFileListItem::Array& items, const Filter& filter, FileListOrder::Key key,
                                   int bAscending) {
    items.RemoveAll();
    // Information, warning and error are the green, yellow and red of the list's severity tests.
    m_list.mf_getList(items, filter.bSkipStubFiles, filter.bSkipInformation, filter.bSkipWarning,
                      filter.bSkipError);
    FileListOrder::mf_sort(items, key, bAscending);
}
