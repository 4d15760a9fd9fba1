#pragma once

#include "guibase/filelist/UQFileListBase.h"
#include "interfaces/korarchiver.h"

// The files of a migration listing, reported by a listing reader; read back with filters that leave out
// stub files and chosen severities.
class KORGUIBASE_API UQListingFileList : public UQFileListBase, public UVListingFileReader {
public:
    UQListingFileList();
    ~UQListingFileList() override;

    // Every version is stored with size 0 and time 0: a listing carries neither. _uNumber and _time are
    // not used.
    void mf_onMigrationEntry(std::uint32_t _uNumber, const UQFileTime& _time, const CString& _sPath,
                             std::uint32_t _uVersion, const CString& _sResult,
                             const UQSeverity& _severity) override;

    using UQFileListBase::mf_getList;
    // Appends the items that no set flag leaves out, tested in this order: the result is the stub-file
    // text; the severity is green; yellow; red. All flags 0 is the unfiltered read.
    void mf_getList(UQFileListItem::Array& _rItems, int _bSkipStubFiles, int _bSkipGreen, int _bSkipYellow,
                    int _bSkipRed);
};
