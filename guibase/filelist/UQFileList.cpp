#include "guibase/filelist/UQFileList.h"

#include "guibase/foundation/UQReport.h"

UQFileList::UQFileList() = default;
UQFileList::~UQFileList() = default;

template <class Describe>
void UQFileList::mf_implAddOpen(const wchar_t* _pszFunction, const CString& _sPath, std::uint32_t _uVersion,
                                const UQFileSize& _size, const UQFileTime& _time, const CString& _sResult,
                                const wchar_t* _pszFailureFormat, Describe&& _describe) {
    mf_implLocked([&](UQErrnoData& _rError) {
        if (mf_implIsClosedUnlocked()) {
            _rError = UQReport::mf_collect(UQErrno::_E_::AlreadyInitialized, _pszFunction,
                                           L"File item list has already been closed");
            return;
        }
        try {
            mf_implAddItem(_sPath, _uVersion, _size, _time, _sResult, UQSeverity());
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(e, _pszFunction, _pszFailureFormat, UQLog::TAB,
                                                        _describe());
        }
    });
}

void UQFileList::mf_add(const UQCMEntry& _entry, const CString& _sResult) {
    static const wchar_t* const _sFunction_ = L"UQFileList::mf_add::2";
    mf_implAddOpen(_sFunction_, _entry.mf_getUNCPath(), _entry.mf_getVersion(), _entry.mf_getSize(),
                   _entry.mf_getLastWriteTime(), _sResult, L"Failure adding file item: %s\r\n%sCMEntry: %s",
                   [&] { return _entry.mf_toShortString(); });
}

void UQFileList::mf_add(const UQBackupEvent& _event) {
    static const wchar_t* const _sFunction_ = L"UQFileList::mf_add::3";
    mf_implAddOpen(_sFunction_, _event.mf_getPath(), 0, UQFileSize(0), UQFileTime(0),
                   _event.mf_getOutcomeText(), L"Failure adding file item: %s\r\n%sBackupEvent: %s",
                   [&] { return _event.mf_toString(); });
}

void UQFileList::mf_add(const UQSourceEvent& _event) {
    static const wchar_t* const _sFunction_ = L"UQFileList::mf_add::4";
    mf_implAddOpen(_sFunction_, UQPath::mf_appendFile(_event.mf_getDirectory(), _event.mf_getFileName()), 0,
                   UQFileSize(0), UQFileTime(0), _event.mf_getOutcomeText(),
                   L"Failure adding file item: %s\r\n%sSourceEvent: %s",
                   [&] { return _event.mf_toString(); });
}
