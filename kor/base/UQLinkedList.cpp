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

UQLinkedList::UQLinkedList(int _bOwner, CloneItem _pfnClone) noexcept
    : m_nCount(0), m_bOwner(_bOwner != 0), m_pfnClone(_pfnClone) {}

UQLinkedList::UQLinkedList(const UQLinkedList& _other)
    : m_nCount(0), m_bOwner(_other.m_bOwner != 0 || _other.m_nCount > 0), m_pfnClone(_other.m_pfnClone) {
    mf_implCopyFrom(_other);
}

UQLinkedList& UQLinkedList::operator=(const UQLinkedList& _other) {
    if (this == &_other)
        return *this;
    // The copies are made first, so that a failure leaves this list as it was.
    UQLinkedList copy(_other);
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

void UQLinkedList::mf_addTail(UQLinkedListItem* _pItem) noexcept {
    mf_insertAfter(m_sentinel.m_pPrevious, _pItem);
}

void UQLinkedList::mf_addHead(UQLinkedListItem* _pItem) noexcept {
    mf_insertAfter(&m_sentinel, _pItem);
}

void UQLinkedList::mf_insertAfter(UQLinkedListItem* _pPosition, UQLinkedListItem* _pItem) noexcept {
    static const wchar_t* const _sFunction_ = L"UQLinkedList::mf_insertAfter";
    if (_pItem == nullptr) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"NULL item not inserted");
        return;
    }
    if (_pItem->mf_isLinked() || _pItem == &m_sentinel) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Item is already in a list, not inserted");
        return;
    }
    if (_pPosition == nullptr) {
        _pPosition = &m_sentinel;
    } else if (_pPosition != &m_sentinel && !_pPosition->mf_isLinked()) {
        UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Position is not in a list, item not inserted");
        return;
    }
    _pItem->m_pPrevious = _pPosition;
    _pItem->m_pNext = _pPosition->m_pNext;
    _pPosition->m_pNext->m_pPrevious = _pItem;
    _pPosition->m_pNext = _pItem;
    ++m_nCount;
}

void UQLinkedList::mf_remove(UQLinkedListItem* _pItem) noexcept {
    static const wchar_t* const _sFunction_ = L"UQLinkedList::mf_remove";
    if (_pItem == nullptr || _pItem == &m_sentinel || !_pItem->mf_isLinked()) {
        UQKorReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Item is not in a list, nothing removed");
        return;
    }
    _pItem->m_pPrevious->m_pNext = _pItem->m_pNext;
    _pItem->m_pNext->m_pPrevious = _pItem->m_pPrevious;
    _pItem->m_pNext = _pItem;
    _pItem->m_pPrevious = _pItem;
    --m_nCount;
}

UQLinkedListItem* UQLinkedList::mf_getHead() const noexcept {
    return m_sentinel.m_pNext != &m_sentinel ? m_sentinel.m_pNext : nullptr;
}

UQLinkedListItem* UQLinkedList::mf_getTail() const noexcept {
    return m_sentinel.m_pPrevious != &m_sentinel ? m_sentinel.m_pPrevious : nullptr;
}

UQLinkedListItem* UQLinkedList::mf_getNext(const UQLinkedListItem* _pItem) const noexcept {
    if (_pItem == nullptr || _pItem->m_pNext == &m_sentinel || _pItem->m_pNext == _pItem)
        return nullptr;
    return _pItem->m_pNext;
}

UQLinkedListItem* UQLinkedList::mf_getPrevious(const UQLinkedListItem* _pItem) const noexcept {
    if (_pItem == nullptr || _pItem->m_pPrevious == &m_sentinel || _pItem->m_pPrevious == _pItem)
        return nullptr;
    return _pItem->m_pPrevious;
}

void UQLinkedList::mf_clearList(int _bDelete) noexcept {
    const bool deleting = _bDelete != 0 && m_bOwner != 0;
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

void UQLinkedList::mf_implCopyFrom(const UQLinkedList& _other) {
    static const wchar_t* const _sFunction_ = L"UQLinkedList::mf_implCopyFrom";
    if (_other.m_nCount == 0)
        return;
    if (_other.m_pfnClone == nullptr) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::NotImplemented), _sFunction_,
                             L"No clone function to copy %d list items", _other.m_nCount);
    }
    UQErrnoData error;
    try {
        for (const UQLinkedListItem* item = _other.mf_getHead(); item != nullptr;
             item = _other.mf_getNext(item)) {
            UQLinkedListItem* copy = _other.m_pfnClone(*item);
            if (copy == nullptr) {
                UQKorReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                                    L"No memory for a copy of list item %d of %d", m_nCount + 1,
                                    _other.m_nCount);
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
