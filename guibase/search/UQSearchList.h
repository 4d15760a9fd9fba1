#pragma once

#include "guibase/foundation/UQCriticalSection.h"
#include "guibase/search/UQSearchFileItem.h"
#include "interfaces/korarchiver.h"

#include <atomic>

// The result of a history search. Open while search threads add query data; closing sorts the records by
// path and version and groups them into one item per file with its versions, every item selected with its
// latest version. Once closed it is read, sorted and selected, and mf_clear empties and opens it again.
// Every operation takes the list's re-entrant lock and throws only after leaving it. The list owns its
// records and items; lists are not copyable.
class KORGUIBASE_API UQSearchList {
public:
    UQSearchList();
    UQSearchList(const UQSearchList&) = delete;
    UQSearchList& operator=(const UQSearchList&) = delete;
    virtual ~UQSearchList();

    // Open lists only: keeps a clone of the record.
    void mf_add(const UQQueryData& _queryData);
    // Open lists only. The list is closed afterwards also when closing fails; it then holds the items built
    // until the failure.
    void mf_close();
    // The records waiting to be grouped: 0 once closed.
    std::uint32_t mf_getQueryItemCount();
    // Whether any record added since the list was made was protected; mf_clear keeps it.
    int mf_hasProtectedItems() const noexcept { return m_bHasProtectedItems.load(std::memory_order_relaxed); }

    // Closed lists only.
    std::uint32_t mf_getFileItemCount();
    std::uint32_t mf_getSelectedFileItemCount();
    // Appends to an empty array, in list order, the items whose latest version is in no excluded class:
    // available, available and protected, expiring, expiring and protected, deleted, deleted and protected.
    // With no flag set every item is appended.
    void mf_getFileList(UQSearchFileItem::Array& _rFiles, int _bExcludeAvailable,
                        int _bExcludeAvailableProtected, int _bExcludeExpiring,
                        int _bExcludeExpiringProtected, int _bExcludeDeleted, int _bExcludeDeletedProtected);
    // Appends the selected items to an empty array, in list order or in the order the backend reads them
    // fastest (UQQueryData::mf_sortByAccessOrder).
    void mf_getSelectedFileList(UQSearchFileItem::Array& _rFiles, int _bSortByAccessOrder);
    // By the latest record's object path in that direction, versions ascending.
    void mf_sortByPath(int _bAscending);
    void mf_selectLatest();
    void mf_reset();
    // Deletes every item and opens the list again.
    void mf_clear();

private:
    int mf_implIsClosed();
    // With the lock held, or from the destructor.
    void mf_implDeleteItems();
    void mf_implDeleteQueryData() noexcept;
    // Builds the items of the sorted records; the caller holds the lock and finishes the close.
    UQErrnoData mf_implGroup();
    // The first _nRecords records (none null) into items, the caller's thread and a second one each
    // taking a half.
    UQErrnoData mf_implGroupRecords(INT_PTR _nRecords);
    // The first record at or after _nFrom (and before _nEnd) whose file differs from the one before it.
    INT_PTR mf_implGroupStart(INT_PTR _nFrom, INT_PTR _nEnd) const noexcept;
    // Items of the records [_nFrom, _nTo), which begin a file and end one, appended to _rItems and
    // selected with their latest versions.
    UQErrnoData mf_implGroupRange(INT_PTR _nFrom, INT_PTR _nTo, UQSearchFileItem::Array& _rItems);

    UQCriticalSection m_lock;
    UQArray<UQQueryData*, UQQueryData*> m_queryData;
    UQSearchFileItem::Array m_fileItems;
    // 1 while the items stand ascending by path, -1 descending, 0 when not known; paths of two items never
    // compare equal, so one order is the other reversed.
    int m_iPathOrder;
    // Written under the lock; mf_add also reads it without the lock, so that an add takes the lock once.
    std::atomic<int> m_bClosed;
    // Set by producers outside the lock and read without it.
    std::atomic<int> m_bHasProtectedItems;
};
