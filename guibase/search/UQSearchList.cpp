#include "guibase/search/UQSearchList.h"

#include "guibase/foundation/UQReport.h"

#include <memory>

namespace {

// Hands the items to one of the archiver's sorts, which take them as query items, and puts them back in
// the order it chose. A failed sort leaves the items as they were.
template <class Sort> void sortAsQueryItems(UQSearchFileItem::Array& _rItems, const Sort& _sort) {
    const INT_PTR count = _rItems.GetSize();
    if (count < 2)
        return;
    UQArray<UVQueryItem*, UVQueryItem*> queryItems;
    queryItems.SetSize(count);
    for (INT_PTR i = 0; i < count; ++i)
        queryItems[i] = _rItems[i];
    _sort(queryItems.GetData(), count);
    for (INT_PTR i = 0; i < count; ++i)
        _rItems[i] = static_cast<UQSearchFileItem*>(queryItems[i]);
}

// Makes a part of the list (a version of a record, an item of a version) in memory from UQAllocation. A
// failure is logged under _pszFunction, as the wrapped failure _pszFailure of query data no. _nIndex or,
// without memory, as _pszNoMemory, and its error data is returned.
template <class TYPE, class ARG>
UQErrnoData createPart(TYPE*& _rpPart, ARG* _pArg, int _nIndex, const wchar_t* _pszFunction,
                       const wchar_t* _pszFailure, const wchar_t* _pszNoMemory) {
    try {
        _rpPart = UQAllocation::mf_create<TYPE>(_pArg);
    } catch (const UQErrno& e) {
        return UQReport::mf_collectWrapped(e, _pszFunction, _pszFailure, _nIndex);
    }
    if (_rpPart == nullptr)
        return UQReport::mf_collect(UQErrno::_E_::Memory, _pszFunction, _pszNoMemory);
    return UQErrnoData();
}

} // namespace

UQSearchList::UQSearchList() : m_bClosed(0), m_bHasProtectedItems(0) {}

UQSearchList::~UQSearchList() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::~UQSearchList";
    try {
        mf_implDeleteItems();
    } catch (const UQErrno& e) {
        UQReport::mf_logWrappedInline(e, _sFunction_, L"Failure deleting file list items: %s");
    }
    // Records of a list that was never closed are the list's too.
    mf_implDeleteQueryData();
}

int UQSearchList::mf_implIsClosed() {
    int closed = 0;
    m_lock.mf_runCollected([&](UQErrnoData&) { closed = m_bClosed; });
    return closed;
}

void UQSearchList::mf_add(const UQQueryData& _queryData) {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_add";
    if (m_bClosed.load())
        UQReport::mf_fail(UQErrno::_E_::AlreadyInitialized, _sFunction_,
                          L"Search item list has already been closed");
    // Before the clone, so that the flag stays set even when cloning fails.
    if (_queryData.mf_isProtected())
        m_bHasProtectedItems.store(1, std::memory_order_relaxed);
    // Cloned before the lock is taken, so that producers take turns only for the append.
    UQQueryData* pClone = nullptr;
    UQErrnoData cloneError;
    try {
        pClone = _queryData.mf_clone();
    } catch (const UQErrno& e) {
        cloneError = UQReport::mf_collectWrappedInline(
            e, _sFunction_, L"Failure clone/adding query data item: %s\r\n%sQuery-data: %s", UQLog::TAB,
            _queryData.mf_toString());
    }
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (cloneError) {
            _rError = cloneError;
            return;
        }
        // The list may have been closed since the check; a record added now would never be grouped.
        if (m_bClosed) {
            delete pClone;
            _rError = UQReport::mf_collect(UQErrno::_E_::AlreadyInitialized, _sFunction_,
                                           L"Search item list has already been closed");
            return;
        }
        try {
            UQAllocation::mf_appendOrDelete(m_queryData, pClone);
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrappedInline(
                e, _sFunction_, L"Failure clone/adding query data item: %s\r\n%sQuery-data: %s", UQLog::TAB,
                _queryData.mf_toString());
        }
    });
}

void UQSearchList::mf_close() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_close";
    if (mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::State, _sFunction_, L"Search list is already closed");
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        if (m_bClosed) {
            _rError =
                UQReport::mf_collect(UQErrno::_E_::State, _sFunction_, L"Search list is already closed");
            return;
        }
        // However the grouping ends, the list is closed and the records no version took are gone.
        struct Finish {
            UQSearchList& list;
            ~Finish() {
                list.m_bClosed = 1;
                list.mf_implDeleteQueryData();
            }
        } finish{*this};
        _rError = mf_implGroup();
    });
}

UQErrnoData UQSearchList::mf_implGroup() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_close";
    const INT_PTR count = m_queryData.GetSize();
    if (count > 0) {
        try {
            UQQueryData::mf_sortByPathAndVersion(1, 1, m_queryData);
        } catch (const UQErrno& e) {
            return UQReport::mf_collectWrapped(e, _sFunction_,
                                               L"Failure sorting query data list (%d items):\r\n%s%s",
                                               static_cast<int>(count));
        }
    }
    UQSearchFileItem* current = nullptr;
    const UQQueryData* previous = nullptr;
    for (INT_PTR i = 0; i < count; ++i) {
        UQQueryData* record = m_queryData[i];
        if (record == nullptr)
            return UQReport::mf_collect(UQErrno::_E_::DataCorrupted, _sFunction_,
                                        L"Query data no. %d is NULL", static_cast<int>(i));
        UQSearchFileVersion* version = nullptr;
        UQErrnoData error = createPart(version, record, static_cast<int>(i), _sFunction_,
                                       L"Failure creating search file version of query data no. %d:\r\n%s%s",
                                       L"No memory to create search file version");
        if (error)
            return error;
        // The version owns the record from here on, and the list or an item owns the version.
        m_queryData[i] = nullptr;
        std::unique_ptr<UQSearchFileVersion> pVersion(version);
        if (i > 0 && previous != nullptr && !(previous->mf_getObjectPath() != record->mf_getObjectPath())) {
            if (current == nullptr)
                return UQReport::mf_collect(UQErrno::_E_::Internal, _sFunction_,
                                            L"No current file item at query data index %d",
                                            static_cast<int>(i));
            current->mf_implAddVersion(pVersion.get());
            // The item owns the version now.
            static_cast<void>(pVersion.release());
        } else {
            error = createPart(current, pVersion.get(), static_cast<int>(i), _sFunction_,
                               L"Failure creating search file item of query data no. %d:\r\n%s%s",
                               L"No memory to create search file item");
            if (error)
                return error;
            static_cast<void>(pVersion.release());
            UQAllocation::mf_appendOrDelete(m_fileItems, current);
        }
        previous = record;
    }
    // After closing, every file is selected with its latest version.
    for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
        m_fileItems[i]->mf_setSelected(1, UQQueryPatternVersion::LATEST);
    UQReport::mf_log(UQLogData::LEVEL_T, _sFunction_,
                     L"Created, sorted and closed search file list (%d files)",
                     static_cast<int>(m_fileItems.GetSize()));
    return UQErrnoData();
}

std::uint32_t UQSearchList::mf_getQueryItemCount() {
    std::uint32_t count = 0;
    m_lock.mf_runCollected([&](UQErrnoData&) { count = static_cast<std::uint32_t>(m_queryData.GetSize()); });
    return count;
}

std::uint32_t UQSearchList::mf_getFileItemCount() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_getFileItemCount";
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_,
                          L"File item list must be close before items can be accessed");
    std::uint32_t count = 0;
    m_lock.mf_runCollected([&](UQErrnoData&) { count = static_cast<std::uint32_t>(m_fileItems.GetSize()); });
    return count;
}

std::uint32_t UQSearchList::mf_getSelectedFileItemCount() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_getSelectedFileItemCount";
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_,
                          L"File item list must be close before items can be accessed");
    std::uint32_t count = 0;
    m_lock.mf_runCollected([&](UQErrnoData&) {
        for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
            if (m_fileItems[i]->mf_isSelected())
                ++count;
    });
    return count;
}

void UQSearchList::mf_getFileList(UQSearchFileItem::Array& _rFiles, int _bExcludeAvailable,
                                  int _bExcludeAvailableProtected, int _bExcludeExpiring,
                                  int _bExcludeExpiringProtected, int _bExcludeDeleted,
                                  int _bExcludeDeletedProtected) {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_getFileList";
    if (_rFiles.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"Parameter list is not empty");
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_,
                          L"File item list must be close before items can be accessed");
    // Indexed like the status texts: state (available, expiring, deleted) times two, plus one if protected.
    const int excluded[6] = {_bExcludeAvailable, _bExcludeAvailableProtected,
                             _bExcludeExpiring,  _bExcludeExpiringProtected,
                             _bExcludeDeleted,   _bExcludeDeletedProtected};
    const bool filtering = _bExcludeAvailable || _bExcludeAvailableProtected || _bExcludeExpiring ||
                           _bExcludeExpiringProtected || _bExcludeDeleted || _bExcludeDeletedProtected;
    m_lock.mf_runCollected([&](UQErrnoData&) {
        for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i) {
            UQSearchFileItem* item = m_fileItems[i];
            if (filtering) {
                // Classified live on the latest record, not on the status text fixed at close.
                const UQQueryData& data = item->mf_getQueryData();
                int state = 0;
                if (data.mf_isEventBased() && data.mf_isDeletionStarted())
                    state = 4;
                else if (!data.mf_isEventBased() && data.mf_getExpiryTime().uFileTime != 0)
                    state = 2;
                if (excluded[state + (data.mf_isProtected() ? 1 : 0)])
                    continue;
            }
            _rFiles.Add(item);
        }
    });
}

void UQSearchList::mf_getSelectedFileList(UQSearchFileItem::Array& _rFiles, int _bSortByAccessOrder) {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_getSelectedFileList";
    if (_rFiles.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"Parameter list is not empty");
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_,
                          L"File item list must be close before items can be accessed");
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
            if (m_fileItems[i]->mf_isSelected())
                _rFiles.Add(m_fileItems[i]);
        if (!_bSortByAccessOrder)
            return;
        try {
            sortAsQueryItems(_rFiles, [](UVQueryItem** _pItems, INT_PTR _nCount) {
                UQQueryData::mf_sortByAccessOrder(_pItems, _nCount);
            });
        } catch (const UQErrno& e) {
            _rError = UQReport::mf_collectWrapped(
                e, _sFunction_,
                L"Failure sorting selected search file items by backend access order:\r\n%s%s");
        }
    });
}

void UQSearchList::mf_sortByPath(int _bAscending) {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_sortByPath";
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_,
                          L"File item list must be close before items can be sorted");
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        try {
            sortAsQueryItems(m_fileItems, [_bAscending](UVQueryItem** _pItems, INT_PTR _nCount) {
                UQQueryData::mf_sortByPathAndVersion(_bAscending, 1, _pItems, _nCount);
            });
        } catch (const UQErrno& e) {
            _rError =
                UQReport::mf_collectWrapped(e, _sFunction_, L"Failure sorting search list files %s:\r\n%s%s",
                                            _bAscending ? L"ascending" : L"descending");
        }
    });
}

void UQSearchList::mf_selectLatest() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_selectLatest";
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"Search item list is not closed");
    m_lock.mf_runCollected([&](UQErrnoData&) {
        for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
            m_fileItems[i]->mf_setSelected(1, UQQueryPatternVersion::LATEST);
    });
}

void UQSearchList::mf_reset() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_reset";
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"Search item list is not closed");
    m_lock.mf_runCollected([&](UQErrnoData&) {
        for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
            m_fileItems[i]->mf_setSelected(0, 0);
    });
}

void UQSearchList::mf_clear() {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_clear";
    if (!mf_implIsClosed())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"Search item list is not closed");
    m_lock.mf_runCollected([&](UQErrnoData& _rError) {
        try {
            mf_implDeleteItems();
            m_bClosed = 0;
        } catch (const UQErrno& e) {
            _rError =
                UQReport::mf_collectWrappedInline(e, _sFunction_, L"Failure deleting search file items: %s");
        }
    });
}

void UQSearchList::mf_implDeleteItems() {
    for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
        delete m_fileItems[i];
    m_fileItems.RemoveAll();
}

void UQSearchList::mf_implDeleteQueryData() noexcept {
    for (INT_PTR i = 0; i < m_queryData.GetSize(); ++i)
        delete m_queryData[i];
    m_queryData.RemoveAll();
}
