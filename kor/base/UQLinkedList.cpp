#include "interfaces/korbase.h"
#include "kor/KorReport.h"

// An item deleted while still in a list takes itself out of the chain, so that its neighbours are never
// left pointing at freed memory (the list's count is then one too high: remove items before deleting them).
UQLinkedListItem::~UQLinkedListItem() {
    if (m_pNext != this) {
        m_pPrevious->m_pNext = m_pNext;
        m_pNext->m_pPrevious = m_pPrevious;
    }
}

UQLinkedList::UQLinkedList(int bOwner, CloneItem pfnClone) noexcept
    : m_nCount(0), m_bOwner(bOwner != 0), m_pfnClone(pfnClone) {}

UQLinkedList::UQLinkedList(const UQLinkedList& other)
    : m_nCount(0), m_bOwner(other.m_bOwner != 0 || other.m_nCount > 0), m_pfnClone(other.m_pfnClone) {
    mf_implCopyFrom(other);
}

UQLinkedList& UQLinkedList::operator=(const UQLinkedList& other) {
    if (this == &other)
        return *this;
    // The copies are made first, so that a failure leaves this list as it was.
    UQLinkedList copy(other);
    mf_clearList(1);
    while (!copy.mf_isEmpty()) {
        UQLinkedListItem* item = copy.mf_getHead();
        copy.mf_remove(item);
        mf_addTail(item);
    }
    m_bOwner = copy.m_bOwner;
    m_pfnClone = copy.m_pfnClone;
    return *this;
}

UQLinkedList::~UQLinkedList() {
    mf_clearList(1);
}

void UQLinkedList::mf_addTail(UQLinkedListItem* item) noexcept {
    mf_insertAfter(m_sentinel.m_pPrevious, item);
}

void UQLinkedList::mf_addHead(UQLinkedListItem* item) noexcept {
    mf_insertAfter(&m_sentinel, item);
}

void UQLinkedList::mf_insertAfter(UQLinkedListItem* position, UQLinkedListItem* item) noexcept {
    static const wchar_t* const _sFunction_ = L"UQLinkedList::mf_insertAfter";
    if (item == nullptr) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"NULL item not inserted");
        return;
    }
    if (item->mf_isLinked() || item == &m_sentinel) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Item is already in a list, not inserted");
        return;
    }
    if (position == nullptr) {
        position = &m_sentinel;
    } else if (position != &m_sentinel && !position->mf_isLinked()) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Position is not in a list, item not inserted");
        return;
    }
    item->m_pPrevious = position;
    item->m_pNext = position->m_pNext;
    position->m_pNext->m_pPrevious = item;
    position->m_pNext = item;
    ++m_nCount;
}

void UQLinkedList::mf_remove(UQLinkedListItem* item) noexcept {
    static const wchar_t* const _sFunction_ = L"UQLinkedList::mf_remove";
    if (item == nullptr || item == &m_sentinel || !item->mf_isLinked()) {
        UQKorReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Item is not in a list, nothing removed");
        return;
    }
    item->m_pPrevious->m_pNext = item->m_pNext;
    item->m_pNext->m_pPrevious = item->m_pPrevious;
    item->m_pNext = item;
    item->m_pPrevious = item;
    --m_nCount;
}

UQLinkedListItem* UQLinkedList::mf_getHead() const noexcept {
    return m_sentinel.m_pNext != &m_sentinel ? m_sentinel.m_pNext : nullptr;
}

UQLinkedListItem* UQLinkedList::mf_getTail() const noexcept {
    return m_sentinel.m_pPrevious != &m_sentinel ? m_sentinel.m_pPrevious : nullptr;
}

UQLinkedListItem* UQLinkedList::mf_getNext(const UQLinkedListItem* item) const noexcept {
    if (item == nullptr || item->m_pNext == &m_sentinel || item->m_pNext == item)
        return nullptr;
    return item->m_pNext;
}

UQLinkedListItem* UQLinkedList::mf_getPrevious(const UQLinkedListItem* item) const noexcept {
    if (item == nullptr || item->m_pPrevious == &m_sentinel || item->m_pPrevious == item)
        return nullptr;
    return item->m_pPrevious;
}

void UQLinkedList::mf_clearList(int bDelete) noexcept {
    const bool deleting = bDelete != 0 && m_bOwner != 0;
    UQLinkedListItem* item = m_sentinel.m_pNext;
    while (item != &m_sentinel) {
        UQLinkedListItem* next = item->m_pNext;
        item->m_pNext = item;
        item->m_pPrevious = item;
        if (deleting)
            delete item;
        item = next;
    }
    m_sentinel.m_pNext = &m_sentinel;
    m_sentinel.m_pPrevious = &m_sentinel;
    m_nCount = 0;
}

void UQLinkedList::mf_implCopyFrom(const UQLinkedList& other) {
    static const wchar_t* const _sFunction_ = L"UQLinkedList::mf_implCopyFrom";
    if (other.m_nCount == 0)
        return;
    if (other.m_pfnClone == nullptr) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::NotImplemented), _sFunction_,
                             L"No clone function to copy %d list items", other.m_nCount);
    }
    UQErrnoData error;
    try {
        for (const UQLinkedListItem* item = other.mf_getHead(); item != nullptr;
             item = other.mf_getNext(item)) {
            UQLinkedListItem* copy = other.m_pfnClone(*item);
            if (copy == nullptr) {
                UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                    L"No memory for a copy of list item %d of %d", m_nCount + 1,
                                    other.m_nCount);
                error = UQErrno::_E_::Memory;
                break;
            }
            mf_addTail(copy);
        }
    } catch (...) {
        // The clones made so far belong to nobody else: they go before the failure travels on.
        const bool owner = m_bOwner != 0;
        m_bOwner = 1;
        mf_clearList(1);
        m_bOwner = owner;
        throw;
    }
    if (error) {
        const bool owner = m_bOwner != 0;
        m_bOwner = 1;
        mf_clearList(1);
        m_bOwner = owner;
        throw UQErrno(error);
    }
}
