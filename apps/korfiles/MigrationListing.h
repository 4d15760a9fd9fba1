#pragma once

#include "FileListOrder.h"

#include "guibase/filelist/UQListingFileList.h"

#include <string>
#include <vector>

// The files of a migration listing (path, version, status and result per line; see docs/korfiles.md) as
// the client's listing file list holds them: one item per path with every version listed for it.
class MigrationListing {
public:
    // What to leave out, as the listing dialog offers it. Severities are those of the items' results.
    struct Filter {
        int bSkipStubFiles = 0;
        int bSkipInformation = 0;
        int bSkipWarning = 0;
        int bSkipError = 0;
    };

    MigrationListing() = default;
    MigrationListing(const MigrationListing&) = delete;
    MigrationListing& operator=(const MigrationListing&) = delete;

    // Reads the listing's text (UTF-8) through the listing reader and hands its entries to the list in
    // ascending path order, the order the list's find-or-add relies on, so that the lines of one path make
    // one item wherever they stand; lines of one path keep their order, and the first gives the item's
    // result. Then closes the list and sorts every item's versions newest first. Answers one error per
    // line that was not taken, those of the reader in file order and then any the list refused; each
    // one's detail reads "<_sName>:<line>: <what is wrong>". _pProgress, if given, hears how far the
    // reading has come. Only one listing per object.
    std::vector<UQErrno> mf_read(const std::string& _sText, const CString& _sName,
                                 UVReadProgress* _pProgress = nullptr);

    // Replaces what _rItems holds with the items that the filter keeps, in the asked order. The listing
    // keeps ownership. Only after mf_read.
    void mf_getItems(UQFileListItem::Array& _rItems, const Filter& _filter, FileListOrder::Key _key,
                     int _bAscending);

private:
    UQListingFileList m_list;
};
