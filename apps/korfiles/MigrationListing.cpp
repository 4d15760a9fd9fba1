#include "MigrationListing.h"

#include <utility>

std::vector<UQErrno> MigrationListing::mf_read(const std::string& _sText, const CString& _sName) {
    UQListingReader::Result result = UQListingReader::mf_readText(_sText, _sName, m_list);
    m_list.mf_close();
    // Newest first: the ranges string then reads upwards and the newest version is the selected one.
    m_list.mf_sortVersions(0);
    return std::move(result.errors);
}

void MigrationListing::mf_getItems(UQFileListItem::Array& _rItems, const Filter& _filter,
                                   FileListOrder::Key _key, int _bAscending) {
    _rItems.RemoveAll();
    // Information, warning and error are the green, yellow and red of the list's severity tests.
    m_list.mf_getList(_rItems, _filter.bSkipStubFiles, _filter.bSkipInformation, _filter.bSkipWarning,
                      _filter.bSkipError);
    FileListOrder::mf_sort(_rItems, _key, _bAscending);
}
