#include "guibase/search/UQSearchList.h"

#include "compat/afxsortkey.h"
#include "guibase/foundation/UQReport.h"

#include <algorithm>
#include <cstdint>
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

// Appends as UQAllocation::mf_appendOrDelete does, but a large array grows by half its size rather than
// by the array's own step of at most 1024 elements, each of which moves all of it (while producers wait for
// the lock, in mf_add).
template <class TYPE> void appendOrDelete(UQArray<TYPE*, TYPE*>& _rArray, TYPE* _pObject) {
    const INT_PTR size = _rArray.GetSize();
    if (size == _rArray.GetAllocSize() && size >= 8192) {
        try {
            _rArray.SetSize(size, size / 2);
        } catch (...) {
            delete _pObject;
            throw;
        }
    }
    UQAllocation::mf_appendOrDelete(_rArray, _pObject);
}

// Lets an output array take up to _nCount items in one allocation, and gives it back its own growth
// afterwards.
class OneAllocation {
public:
    OneAllocation(UQSearchFileItem::Array& _rArray, INT_PTR _nCount)
        : m_rArray(_rArray), m_nGrowBy(_rArray.GetGrowBy()) {
        if (_nCount > 0)
            m_rArray.SetSize(m_rArray.GetSize(), _nCount);
    }
    OneAllocation(const OneAllocation&) = delete;
    OneAllocation& operator=(const OneAllocation&) = delete;
    ~OneAllocation() { m_rArray.SetSize(m_rArray.GetSize(), m_nGrowBy); }

private:
    UQSearchFileItem::Array& m_rArray;
    INT_PTR m_nGrowBy;
};

// How many records ahead of its turn a record is fetched into the cache.
constexpr INT_PTR PREFETCH_DISTANCE = 8;

inline void prefetch(const void* _p) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(_p);
#else
    static_cast<void>(_p);
#endif
}

// Selected items, taken from the list in path order (ascending or descending), into the order of
// UQQueryData::mf_sortByAccessOrder: volume, position, then path and version. Two items' paths never
// compare equal, so their places in path order decide the ties without comparing a path. Answers false,
// with the items as they were, when there is no memory for the sort.
bool sortByAccessAndRank(UQSearchFileItem::Array& _rItems, bool _bAscending) {
    struct Entry {
        std::uint64_t uPosition;
        std::uint32_t uVolume;
        std::uint32_t uRank;
    };
    const INT_PTR count = _rItems.GetSize();
    if (count < 2)
        return true;
    const std::size_t n = static_cast<std::size_t>(count);
    if (n > UINT32_MAX || n > SIZE_MAX / (sizeof(Entry) + sizeof(UQSearchFileItem*)))
        return false;
    void* memory = UQAllocation::mf_allocate(n * (sizeof(Entry) + sizeof(UQSearchFileItem*)));
    if (memory == nullptr)
        return false;
    const std::unique_ptr<void, void (*)(void*)> owner(memory, &UQAllocation::mf_free);
    Entry* entries = static_cast<Entry*>(memory);
    UQSearchFileItem** inPathOrder = reinterpret_cast<UQSearchFileItem**>(entries + n);
    for (std::size_t i = 0; i < n; ++i) {
        UQSearchFileItem* item = _rItems[static_cast<INT_PTR>(i)];
        const std::size_t rank = _bAscending ? i : n - 1 - i;
        inPathOrder[rank] = item;
        const UQQueryData::AccessKey& access = item->mf_getQueryData().mf_getAccessKey();
        entries[i] = Entry{access.uPosition, access.uVolume, static_cast<std::uint32_t>(rank)};
    }
    std::sort(entries, entries + n, [](const Entry& _a, const Entry& _b) noexcept {
        if (_a.uVolume != _b.uVolume)
            return _a.uVolume < _b.uVolume;
        if (_a.uPosition != _b.uPosition)
            return _a.uPosition < _b.uPosition;
        return _a.uRank < _b.uRank;
    });
    for (std::size_t i = 0; i < n; ++i)
        _rItems[static_cast<INT_PTR>(i)] = inPathOrder[entries[i].uRank];
    return true;
}

// Runs _body, which returns its collected failure. A thrown UQErrno was logged where it arose; anything
// else thrown is an array that found no memory, logged here. Nothing leaves: the body may run on a
// thread of the close's own.
template <class Body>
UQErrnoData collectFailure(const wchar_t* _pszFunction, const wchar_t* _pszNoMemory, Body&& _body) noexcept {
    try {
        return _body();
    } catch (const UQErrno& e) {
        return e.mf_getData();
    } catch (...) {
        return UQReport::mf_collect(UQErrno::_E_::Memory, _pszFunction, _pszNoMemory);
    }
}

} // namespace

UQSearchList::UQSearchList() : m_iPathOrder(0), m_bClosed(0), m_bHasProtectedItems(0) {}

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
            appendOrDelete(m_queryData, pClone);
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
    // The sort puts null records last: everything before the first one is grouped.
    INT_PTR records = 0;
    while (records < count && m_queryData[records] != nullptr)
        ++records;
    UQErrnoData error = mf_implGroupRecords(records);
    if (!error && records < count)
        error = UQReport::mf_collect(UQErrno::_E_::DataCorrupted, _sFunction_, L"Query data no. %d is NULL",
                                     static_cast<int>(records));
    if (error)
        return error;
    m_iPathOrder = 1;
    UQReport::mf_log(UQLogData::LEVEL_T, _sFunction_,
                     L"Created, sorted and closed search file list (%d files)",
                     static_cast<int>(m_fileItems.GetSize()));
    return UQErrnoData();
}

INT_PTR UQSearchList::mf_implGroupStart(INT_PTR _nFrom, INT_PTR _nEnd) const noexcept {
    INT_PTR i = _nFrom;
    while (i > 0 && i < _nEnd &&
           !(m_queryData[i - 1]->mf_getObjectPath() != m_queryData[i]->mf_getObjectPath()))
        ++i;
    return i;
}

UQErrnoData UQSearchList::mf_implGroupRecords(INT_PTR _nRecords) {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_close";
    // Loaded here, before a second thread can make versions.
    UQSearchFileVersion::mf_implLoadStatusTexts();
    // A large close groups its second half on a second thread, from the first file that starts there;
    // the halves' items are joined in order afterwards.
    UQSearchFileItem::Array secondItems;
    UQErrnoData errors[2];
    // Found before either half starts: making versions takes the records out of the array.
    const INT_PTR split = mf_implGroupStart(_nRecords / 2, _nRecords);
    auto group = [&](std::size_t _nFrom, std::size_t _nTo) noexcept {
        const int part = _nFrom == 0 ? 0 : 1;
        const INT_PTR from = part == 0 ? 0 : split;
        const INT_PTR to = static_cast<INT_PTR>(_nTo) == _nRecords ? _nRecords : split;
        errors[part] = collectFailure(_sFunction_, L"No memory for the search file items", [&] {
            return mf_implGroupRange(from, to, part == 0 ? m_fileItems : secondItems);
        });
    };
    AfxRunOnTwoThreads(static_cast<std::size_t>(_nRecords), group);
    UQErrnoData error = errors[0];
    if (!error)
        error = collectFailure(_sFunction_, L"No memory for the search file items", [&] {
            m_fileItems.Append(secondItems);
            secondItems.RemoveAll();
            return errors[1];
        });
    // Items after a failure are not kept: the list holds what was built up to it, none selected.
    for (INT_PTR i = 0; i < secondItems.GetSize(); ++i)
        delete secondItems[i];
    if (error)
        for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
            m_fileItems[i]->mf_setSelected(0, 0);
    return error;
}

UQErrnoData UQSearchList::mf_implGroupRange(INT_PTR _nFrom, INT_PTR _nTo, UQSearchFileItem::Array& _rItems) {
    static const wchar_t* const _sFunction_ = L"UQSearchList::mf_close";
    UQErrnoData error;
    const INT_PTR firstItem = _rItems.GetSize();
    UQSearchFileItem* current = nullptr;
    const UQQueryData* previous = nullptr;
    for (INT_PTR i = _nFrom; i < _nTo; ++i) {
        // Sorted, the records lie scattered in memory: each is asked for well before its turn, and its
        // path's text once the record has come.
        if (i + 2 * PREFETCH_DISTANCE < _nTo)
            prefetch(m_queryData[i + 2 * PREFETCH_DISTANCE]);
        if (i + PREFETCH_DISTANCE < _nTo)
            prefetch(static_cast<const CString&>(m_queryData[i + PREFETCH_DISTANCE]->mf_getObjectPath())
                         .GetString());
        UQQueryData* record = m_queryData[i];
        UQSearchFileVersion* version = nullptr;
        error = createPart(version, record, static_cast<int>(i), _sFunction_,
                           L"Failure creating search file version of query data no. %d:\r\n%s%s",
                           L"No memory to create search file version");
        if (error)
            break;
        // The version owns the record from here on, and the list or an item owns the version.
        m_queryData[i] = nullptr;
        std::unique_ptr<UQSearchFileVersion> pVersion(version);
        if (previous != nullptr && !(previous->mf_getObjectPath() != record->mf_getObjectPath())) {
            current->mf_implAddVersion(pVersion.get());
            // The item owns the version now.
            static_cast<void>(pVersion.release());
        } else {
            error = createPart(current, pVersion.get(), static_cast<int>(i), _sFunction_,
                               L"Failure creating search file item of query data no. %d:\r\n%s%s",
                               L"No memory to create search file item");
            if (error)
                break;
            static_cast<void>(pVersion.release());
            appendOrDelete(_rItems, current);
        }
        previous = record;
    }
    // Every file is selected with its latest version, once all are made.
    if (!error)
        for (INT_PTR i = firstItem; i < _rItems.GetSize(); ++i)
            _rItems[i]->mf_setSelected(1, UQQueryPatternVersion::LATEST);
    return error;
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
        const OneAllocation growth(_rFiles, m_fileItems.GetSize());
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
        {
            const OneAllocation growth(_rFiles, m_fileItems.GetSize());
            for (INT_PTR i = 0; i < m_fileItems.GetSize(); ++i)
                if (m_fileItems[i]->mf_isSelected())
                    _rFiles.Add(m_fileItems[i]);
        }
        if (!_bSortByAccessOrder)
            return;
        if (m_iPathOrder != 0 && sortByAccessAndRank(_rFiles, m_iPathOrder > 0))
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
        const int order = _bAscending ? 1 : -1;
        if (m_iPathOrder == order)
            return;
        if (m_iPathOrder == -order) {
            std::reverse(m_fileItems.GetData(), m_fileItems.GetData() + m_fileItems.GetSize());
            m_iPathOrder = order;
            return;
        }
        try {
            sortAsQueryItems(m_fileItems, [_bAscending](UVQueryItem** _pItems, INT_PTR _nCount) {
                UQQueryData::mf_sortByPathAndVersion(_bAscending, 1, _pItems, _nCount);
            });
            m_iPathOrder = order;
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
            m_iPathOrder = 0;
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
    // The next close starts from the array's own growth again.
    m_fileItems.SetSize(0, 0);
}

void UQSearchList::mf_implDeleteQueryData() noexcept {
    for (INT_PTR i = 0; i < m_queryData.GetSize(); ++i)
        delete m_queryData[i];
    // The next search starts from the array's own growth again.
    m_queryData.SetSize(0, 0);
}
