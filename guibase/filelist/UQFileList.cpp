#include "guibase/filelist/UQFileList.h"

#include "guibase/foundation/UQReport.h"

UQFileList::UQFileList() = default;
UQFileList::~UQFileList() = default;

template <class Describe>
void UQFileList::mf_implAddOpen(const wchar_t* function, const CString& path, std::uint32_t version,
                                const UQFileSize& size, const UQFileTime& time, const CString& result,
                                const wchar_t* failureFormat, Describe&& describe) {
    mf_implLocked([&](UQErrnoData& error) {
        if (mf_implIsClosedUnlocked()) {
            error = UQReport::mf_collect(UQErrno::_E_::AlreadyInitialized, function,
                                         L"File item list has already been closed");
            return;
        }
        try {
            mf_implAddItem(path, version, size, time, result, UQSeverity());
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrappedInline(e, function, failureFormat, UQLog::TAB, describe());
        }
    });
}

void UQFileList::mf_add(const UQCMEntry& entry, const CString& result) {
    static const wchar_t* const _sFunction_ = L"UQFileList::mf_add::2";
    mf_implAddOpen(_sFunction_, entry.mf_getUNCPath(), entry.mf_getVersion(), entry.mf_getSize(),
                   entry.mf_getLastWriteTime(), result, L"Failure adding file item: %s\r\n%sCMEntry: %s",
                   [&] { return entry.mf_toShortString(); });
}

void UQFileList::mf_add(const UQBackupEvent& event) {
    static const wchar_t* const _sFunction_ = L"UQFileList::mf_add::3";
    mf_implAddOpen(_sFunction_, event.mf_getPath(), 0, UQFileSize(0), UQFileTime(0),
                   event.mf_getOutcomeText(), L"Failure adding file item: %s\r\n%sBackupEvent: %s",
                   [&] { return event.mf_toString(); });
}

void UQFileList::mf_add(const UQSourceEvent& event) {
    static const wchar_t* const _sFunction_ = L"UQFileList::mf_add::4";
    mf_implAddOpen(_sFunction_, UQPath::mf_appendFile(event.mf_getDirectory(), event.mf_getFileName()), 0,
                   UQFileSize(0), UQFileTime(0), event.mf_getOutcomeText(),
                   L"Failure adding file item: %s\r\n%sSourceEvent: %s", [&] { return event.mf_toString(); });
}
