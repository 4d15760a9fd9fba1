#pragma once

#include "guibase/filelist/UQFileListBase.h"
#include "interfaces/korarchiver.h"
#include "interfaces/korutil.h"

// The file list of a migration, recall or backup run, filled from archiver and progress events.
class KORGUIBASE_API UQFileList : public UQFileListBase {
public:
    UQFileList();
    ~UQFileList() override;

    // A migration entry with the result text to show for it.
    void mf_add(const UQCMEntry& _entry, const CString& _sResult);
    // A file of a backup run: no version, size or time; the result is the event's outcome.
    void mf_add(const UQBackupEvent& _event);
    // A file of a source directory: path = directory + file name; the result is the event's outcome.
    void mf_add(const UQSourceEvent& _event);

private:
    template <class Describe>
    void mf_implAddOpen(const wchar_t* _pszFunction, const CString& _sPath, std::uint32_t _uVersion,
                        const UQFileSize& _size, const UQFileTime& _time, const CString& _sResult,
                        const wchar_t* _pszFailureFormat, Describe&& _describe);
};
