#pragma once

#include "guibase/filelist/UQFileListItem.h"
#include "guibase/foundation/UQCriticalSection.h"

// The items that one operation of the client produced. Open while producers add files; once closed it is
// read, sorted, reset and cleared. Every operation takes the list's re-entrant lock and throws only after
// leaving it. The list owns its items; lists are not copyable.
class KORGUIBASE_API UQFileListBase {
public:
    UQFileListBase();
    UQFileListBase(const UQFileListBase&) = delete;
    UQFileListBase& operator=(const UQFileListBase&) = delete;
    virtual ~UQFileListBase();

    void mf_close();
    int mf_implIsClosed();
    // The number of items now, open or closed.
    int mf_getCurrentItemCount();
    // Closed lists only.
    std::uint32_t mf_getItemCount();
    // Appends every item (or every selected item) in list order to an empty array; closed lists only. The
    // pointers stay valid until the list is cleared or destroyed.
    void mf_getList(UQFileListItem::Array& _rItems);
    void mf_getSelectedList(UQFileListItem::Array& _rItems);
    void mf_sort(int _bAscending);
    void mf_sortVersions(int _bAscending);
    void mf_reset();
    // Deletes every item and opens the list again.
    void mf_clear();

protected:
    // Finds the item of the path (by halving search, so only paths added in ascending order merge) and adds
    // the version to it, or appends a new item. Takes the lock itself; throws after logging.
    void mf_implAddItem(const CString& _sPath, std::uint32_t _uVersion, const UQFileSize& _size,
                        const UQFileTime& _lastWriteTime, const CString& _sResult,
                        const UQSeverity& _severity);
    // The caller holds the lock.
    void mf_implDeleteItems();
    // Runs _body under the lock in the collected-failure shape.
    template <class Body> void mf_implLocked(Body&& _body) { m_lock.mf_runCollected(_body); }
    int mf_implIsClosedUnlocked() const noexcept { return m_bClosed; }
    const UQFileListItem::Array& mf_implItems() const noexcept { return m_items; }

private:
    UQFileListItem* mf_implFind(const CString& _sPath);
    // The two reads: every item, or the selected ones; logged under _pszFunction.
    void mf_implAppendItems(UQFileListItem::Array& _rItems, int _bSelectedOnly, const wchar_t* _pszFunction);

    UQCriticalSection m_lock;
    int m_bClosed;
    UQFileListItem::Array m_items;
};
