#include "guibase/filelist/UQFileListBase.h"

#include "guibase/foundation/UQReport.h"

#include <new>

namespace {

// The closed-phase refusal that every reading, sorting and resetting operation starts with.
bool refuseWhileOpen(int closed, UQErrnoData& error, const wchar_t* function, const wchar_t* text) {
    if (closed)
        return false;
    error = UQReport::mf_collect(UQErrno::_E_::Initialization, function, text);
    return true;
}

} // namespace

UQFileListBase::UQFileListBase() : m_bClosed(0) {}

UQFileListBase::~UQFileListBase() {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::~UQFileListBase";
    try {
        mf_implDeleteItems();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrappedInline(e, _sFunction_, L"Failure deleting file list items: %s");
    }
}

void UQFileListBase::mf_close() {
    m_lock.mf_runCollected([&](UQErrnoData&) { m_bClosed = 1; });
}

int UQFileListBase::mf_implIsClosed() {
    int closed = 0;
    m_lock.mf_runCollected([&](UQErrnoData&) { closed = m_bClosed; });
    return closed;
}

int UQFileListBase::mf_getCurrentItemCount() {
    int count = 0;
    m_lock.mf_runCollected([&](UQErrnoData&) { count = static_cast<int>(m_items.GetSize()); });
    return count;
}

std::uint32_t UQFileListBase::mf_getItemCount() {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_getItemCount";
    std::uint32_t count = 0;
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        if (refuseWhileOpen(m_bClosed, error, _sFunction_,
                            L"File item list must be close before items can be accessed"))
            return;
        count = static_cast<std::uint32_t>(m_items.GetSize());
    });
    return count;
}

void UQFileListBase::mf_getList(UQFileListItem::Array& items) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_getList";
    mf_implAppendItems(items, 0, _sFunction_);
}

void UQFileListBase::mf_getSelectedList(UQFileListItem::Array& items) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_getSelectedList";
    mf_implAppendItems(items, 1, _sFunction_);
}

void UQFileListBase::mf_implAppendItems(UQFileListItem::Array& items, int bSelectedOnly,
                                        const wchar_t* function) {
    if (items.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Parameter, function, L"Parameter list is not empty");
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        if (refuseWhileOpen(m_bClosed, error, function,
                            L"File item list must be closed before items can be accessed"))
            return;
        for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
            if (!bSelectedOnly || m_items[i]->mf_isSelected())
                items.Add(m_items[i]);
    });
}

void UQFileListBase::mf_sort(int bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_sort";
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        if (refuseWhileOpen(m_bClosed, error, _sFunction_,
                            L"File item list must be closed before items can be sorted"))
            return;
        try {
            UQFileListItem::mf_sortByPath(m_items, bAscending);
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure sorting file list: %s");
        }
    });
}

void UQFileListBase::mf_sortVersions(int bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_sortVersions";
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        if (refuseWhileOpen(m_bClosed, error, _sFunction_,
                            L"File item list must be closed before items can be sorted"))
            return;
        try {
            for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
                m_items[i]->mf_sortVersions(bAscending);
        } catch (const UQErrno& e) {
            error =
                UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure sorting file list versions: %s");
        }
    });
}

void UQFileListBase::mf_reset() {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_reset";
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        if (refuseWhileOpen(m_bClosed, error, _sFunction_,
                            L"File item list must be closed before items can be reset"))
            return;
        try {
            for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
                m_items[i]->mf_reset();
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrappedInline(
                e, _sFunction_,
                L"Failure resetting file list items: %s\r\n%sFile list items state is undefined", UQLog::TAB);
        }
    });
}

void UQFileListBase::mf_clear() {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_clear";
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        try {
            mf_implDeleteItems();
            m_bClosed = 0;
        } catch (const UQErrno& e) {
            error =
                UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure deleting file list items: %s");
        }
    });
}

void UQFileListBase::mf_implDeleteItems() {
    for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
        delete m_items[i];
    m_items.RemoveAll();
}

UQFileListItem* UQFileListBase::mf_implFind(const CString& path) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_implFind";
    UQFileListItem* found = nullptr;
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        try {
            // Items are appended, never inserted: the ascending search merges only paths added in order.
            found = const_cast<UQFileListItem*>(UQFileListItem::mf_findByPath(path, m_items, 1));
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrappedInline(
                e, _sFunction_, L"Failure searching in file list: %s\r\n%sSearch path: '%s'", UQLog::TAB,
                path);
        }
    });
    return found;
}

void UQFileListBase::mf_implAddItem(const CString& path, std::uint32_t version, const UQFileSize& size,
                                    const UQFileTime& lastWriteTime, const CString& result,
                                    const UQSeverity& severity) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_implAddItem";
    m_lock.mf_runCollected([&](UQErrnoData& error) {
        UQFileListItem* item = nullptr;
        try {
            item = mf_implFind(path);
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrappedInline(
                e, _sFunction_, L"Failure searching file list: %s\r\n%sSearch path: '%s'", UQLog::TAB, path);
            return;
        }
        if (item != nullptr) {
            // The item keeps the result and severity of its creation.
            try {
                item->mf_addVersion(version, size, lastWriteTime);
            } catch (const UQErrno& e) {
                error = UQReport::mf_collectWrappedInline(
                    e, _sFunction_,
                    L"Failure adding version to file list entry: %s\r\n%sFile list item: %s\r\n%sPath='%s', "
                    L"file-version=%lu, file-size=%s, last-write-time=%s",
                    UQLog::TAB, item->mf_getSelectedVersionDisplayString(), UQLog::TAB, path, version,
                    size.mf_toString(), lastWriteTime.mf_toString());
            }
            return;
        }
        try {
            item =
                UQAllocation::mf_create<UQFileListItem>(path, version, size, lastWriteTime, result, severity);
        } catch (const UQErrno& e) {
            error = UQReport::mf_collectWrappedInline(
                e, _sFunction_,
                L"Failure creating file list item: %s\r\n%sPath='%s', file-version=%lu, file-size=%s, "
                L"last-write-time=%s",
                UQLog::TAB, path, version, size.mf_toString(), lastWriteTime.mf_toString());
            return;
        }
        if (item == nullptr) {
            error = UQReport::mf_collect(UQErrno::_E_::Memory, _sFunction_,
                                         L"No memory for file list item\r\n%sPath='%s', file-version=%lu, "
                                         L"file-size=%s, last-write-time=%s",
                                         UQLog::TAB, path, version, size.mf_toString(),
                                         lastWriteTime.mf_toString());
            return;
        }
        UQAllocation::mf_appendOrDelete(m_items, item);
    });
}
