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

void UQListingFileList::mf_onMigrationEntry(std::uint32_t, const UQFileTime&, const CString& path,
                                            std::uint32_t version, const CString& result,
                                            const UQSeverity& severity) {
    static const wchar_t* const _sFunction_ = L"UQListingFileList::mf_onMigrationEntry";
    mf_implLocked([&](UQErrnoData& error) {
        if (mf_implIsClosedUnlocked()) {
            error = UQReport::mf_collect(UQErrno::_E_::AlreadyInitialized, _sFunction_,
                                         L"File item list has already been closed");
            return;
        }
        try {
            mf_implAddItem(path, version, emptySize(), emptyTime(), result, severity);
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrapped(
                e, _sFunction_, L"Failure adding file item '%s', version=%lu:\r\n%s%s", path, version);
        }
    });
}

void UQListingFileList::mf_getList(UQFileListItem::Array& items, int bSkipStubFiles, int bSkipGreen,
                                   int bSkipYellow, int bSkipRed) {
    static const wchar_t* const _sFunction_ = L"UQListingFileList::mf_getList";
    int closed = 0;
    mf_implLocked([&](UQErrnoData&) { closed = mf_implIsClosedUnlocked(); });
    if (!closed)
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"File item list must be closed");
    if (!bSkipStubFiles && !bSkipGreen && !bSkipYellow && !bSkipRed) {
        UQFileListBase::mf_getList(items);
        return;
    }
    const CString stubFile = UQString(UQErrno::_I_::StubFile.mf_getMessageNumber());
    mf_implLocked([&](UQErrnoData&) {
        const UQFileListItem::Array& all = mf_implItems();
        for (INT_PTR i = 0; i < all.GetSize(); ++i) {
            UQFileListItem* item = all[i];
            const UQSeverity& severity = item->mf_getSeverity();
            if (bSkipStubFiles && item->mf_getResult().Compare(stubFile) == 0)
                continue;
            if (bSkipGreen && severity.mf_isGreen())
                continue;
            if (bSkipYellow && severity.mf_isYellow())
                continue;
            if (bSkipRed && severity.mf_isRed())
                continue;
            items.Add(item);
        }
    });
}
