#include "guibase/filelist/UQFileListBase.h"

#include "guibase/foundation/UQReport.h"

#include <new>

namespace {

// The closed-phase refusal that every reading, sorting and resetting operation starts with.
bool refuseWhileOpen(int _nClosed, UQErrnoData& _rError, const wchar_t* _pszFunction,
                     const wchar_t* _pszText) {
    if (_nClosed)
        return false;
    _rError = UQReport::mf_collect(UQErrno::_E_::Initialization, _pszFunction, _pszText);
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
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (refuseWhileOpen(m_bClosed, _rError, _sFunction_,
                            L"File item list must be close before items can be accessed"))
            return;
        count = static_cast<std::uint32_t>(m_items.GetSize());
    });
    return count;
}

void UQFileListBase::mf_getList(UQFileListItem::Array& _rItems) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_getList";
    mf_implAppendItems(_rItems, 0, _sFunction_);
}

void UQFileListBase::mf_getSelectedList(UQFileListItem::Array& _rItems) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_getSelectedList";
    mf_implAppendItems(_rItems, 1, _sFunction_);
}

void UQFileListBase::mf_implAppendItems(UQFileListItem::Array& _rItems, int _bSelectedOnly,
                                        const wchar_t* _pszFunction) {
    if (_rItems.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _pszFunction, L"Parameter list is not empty");
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (refuseWhileOpen(m_bClosed, _rError, _pszFunction,
                            L"File item list must be closed before items can be accessed"))
            return;
        for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
            if (!_bSelectedOnly || m_items[i]->mf_isSelected())
                _rItems.Add(m_items[i]);
    });
}

void UQFileListBase::mf_sort(int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_sort";
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (refuseWhileOpen(m_bClosed, _rError, _sFunction_,
                            L"File item list must be closed before items can be sorted"))
            return;
        try {
            UQFileListItem::mf_sortByPath(m_items, _bAscending);
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure sorting file list: %s");
        }
    });
}

void UQFileListBase::mf_sortVersions(int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_sortVersions";
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (refuseWhileOpen(m_bClosed, _rError, _sFunction_,
                            L"File item list must be closed before items can be sorted"))
            return;
        try {
            for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
                m_items[i]->mf_sortVersions(_bAscending);
        } catch (const UQErrno& e) {
            _rError =
                UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure sorting file list versions: %s");
        }
    });
}

void UQFileListBase::mf_reset() {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_reset";
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (refuseWhileOpen(m_bClosed, _rError, _sFunction_,
                            L"File item list must be closed before items can be reset"))
            return;
        try {
            for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
                m_items[i]->mf_reset();
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(
                e, _sFunction_,
                L"Failure resetting file list items: %s\r\n%sFile list items state is undefined", UQLog::TAB);
        }
    });
}

void UQFileListBase::mf_clear() {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_clear";
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        try {
            mf_implDeleteItems();
            m_bClosed = 0;
        } catch (const UQErrno& e) {
            _rError =
                UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure deleting file list items: %s");
        }
    });
}

void UQFileListBase::mf_implDeleteItems() {
    for (INT_PTR i = 0; i < m_items.GetSize(); ++i)
        delete m_items[i];
    m_items.RemoveAll();
}

UQFileListItem* UQFileListBase::mf_implFind(const CString& _sPath) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_implFind";
    UQFileListItem* found = nullptr;
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        try {
            // Items are appended, never inserted: the ascending search merges only paths added in order.
            found = const_cast<UQFileListItem*>(UQFileListItem::mf_findByPath(_sPath, m_items, 1));
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(
                e, _sFunction_, L"Failure searching in file list: %s\r\n%sSearch path: '%s'", UQLog::TAB,
                _sPath);
        }
    });
    return found;
}

void UQFileListBase::mf_implAddItem(const CString& _sPath, std::uint32_t _uVersion, const UQFileSize& _size,
                                    const UQFileTime& _lastWriteTime, const CString& _sResult,
                                    const UQSeverity& _severity) {
    static const wchar_t* const _sFunction_ = L"UQFileListBase::mf_implAddItem";
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        UQFileListItem* item = nullptr;
        try {
            item = mf_implFind(_sPath);
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(
                e, _sFunction_, L"Failure searching file list: %s\r\n%sSearch path: '%s'", UQLog::TAB,
                _sPath);
            return;
        }
        if (item != nullptr) {
            // The item keeps the result and severity of its creation.
            try {
                item->mf_addVersion(_uVersion, _size, _lastWriteTime);
            } catch (const UQErrno& e) {
                _rError = UQReport::mf_collectWrappedInline(
                    e, _sFunction_,
                    L"Failure adding version to file list entry: %s\r\n%sFile list item: %s\r\n%sPath='%s', "
                    L"file-version=%lu, file-size=%s, last-write-time=%s",
                    UQLog::TAB, item->mf_getSelectedVersionDisplayString(), UQLog::TAB, _sPath, _uVersion,
                    _size.mf_toString(), _lastWriteTime.mf_toString());
            }
            return;
        }
        try {
            item = UQAllocation::mf_create<UQFileListItem>(_sPath, _uVersion, _size, _lastWriteTime, _sResult,
                                                           _severity);
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(
                e, _sFunction_,
                L"Failure creating file list item: %s\r\n%sPath='%s', file-version=%lu, file-size=%s, "
                L"last-write-time=%s",
                UQLog::TAB, _sPath, _uVersion, _size.mf_toString(), _lastWriteTime.mf_toString());
            return;
        }
        if (item == nullptr) {
            _rError = UQReport::mf_collect(UQErrno::_E_::Memory, _sFunction_,
                                           L"No memory for file list item\r\n%sPath='%s', file-version=%lu, "
                                           L"file-size=%s, last-write-time=%s",
                                           UQLog::TAB, _sPath, _uVersion, _size.mf_toString(),
                                           _lastWriteTime.mf_toString());
            return;
        }
        UQAllocation::mf_appendOrDelete(m_items, item);
    });
}
