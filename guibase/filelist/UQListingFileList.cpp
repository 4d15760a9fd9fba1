#include "guibase/filelist/UQListingFileList.h"

#include "guibase/foundation/UQReport.h"

namespace {

const UQFileSize& emptySize() {
    static const UQFileSize s_size(0);
    return s_size;
}

const UQFileTime& emptyTime() {
    static const UQFileTime s_time(0);
    return s_time;
}

} // namespace

UQListingFileList::UQListingFileList() = default;
UQListingFileList::~UQListingFileList() = default;

void UQListingFileList::mf_onMigrationEntry(std::uint32_t, const UQFileTime&, const CString& _sPath,
                                            std::uint32_t _uVersion, const CString& _sResult,
                                            const UQSeverity& _severity) {
    static const wchar_t* const _sFunction_ = L"UQListingFileList::mf_onMigrationEntry";
    mf_implLocked([&](UQErrnoData& _rError) {
        if (mf_implIsClosedUnlocked()) {
            _rError = UQReport::mf_collect(UQErrno::_E_::AlreadyInitialized, _sFunction_,
                                           L"File item list has already been closed");
            return;
        }
        try {
            mf_implAddItem(_sPath, _uVersion, emptySize(), emptyTime(), _sResult, _severity);
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrapped(
                e, _sFunction_, L"Failure adding file item '%s', version=%lu:\r\n%s%s", _sPath, _uVersion);
        }
    });
}

void UQListingFileList::mf_getList(UQFileListItem::Array& _rItems, int _bSkipStubFiles, int _bSkipGreen,
                                   int _bSkipYellow, int _bSkipRed) {
    static const wchar_t* const _sFunction_ = L"UQListingFileList::mf_getList";
    int closed = 0;
    mf_implLocked([&](UQErrnoData&) { closed = mf_implIsClosedUnlocked(); });
    if (!closed)
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"File item list must be closed");
    if (!_bSkipStubFiles && !_bSkipGreen && !_bSkipYellow && !_bSkipRed) {
        UQFileListBase::mf_getList(_rItems);
        return;
    }
    const CString stubFile = UQString(UQErrno::_I_::StubFile.mf_getMessageNumber());
    mf_implLocked([&](UQErrnoData&) {
        const UQFileListItem::Array& all = mf_implItems();
        for (INT_PTR i = 0; i < all.GetSize(); ++i) {
            UQFileListItem* item = all[i];
            const UQSeverity& severity = item->mf_getSeverity();
            if (_bSkipStubFiles && item->mf_getResult().Compare(stubFile) == 0)
                continue;
            if (_bSkipGreen && severity.mf_isGreen())
                continue;
            if (_bSkipYellow && severity.mf_isYellow())
                continue;
            if (_bSkipRed && severity.mf_isRed())
                continue;
            _rItems.Add(item);
        }
    });
}
