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

    // Feeds the listing's text (UTF-8) to the list through the listing reader, then closes the list and
    // sorts every item's versions newest first. Answers one error per line that was not taken, in file
    // order; each one's detail reads "<_sName>:<line>: <what is wrong>". Only one listing per object.
    std::vector<UQErrno> mf_read(const std::string& _sText, const CString& _sName);

    // Replaces what _rItems holds with the items that the filter keeps, in the asked order. The listing
    // keeps ownership. Only after mf_read.
    void mf_getItems(UQFileListItem::Array& _rItems, const Filter& _filter, FileListOrder::Key _key,
                     int _bAscending);

private:
    UQListingFileList m_list;
};
