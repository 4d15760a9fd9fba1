#include "compat/afxsortkey.h"
#include "guibase/foundation/UQReport.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <utility>

namespace {

int compareNoCase(const void* _pA, const void* _pB) {
    const CString* sa = *static_cast<const CString* const*>(_pA);
    const CString* sb = *static_cast<const CString* const*>(_pB);
    return sa->CompareNoCase(*sb);
}

struct FreeDeleter {
    void operator()(void* _p) const noexcept { UQAllocation::mf_free(_p); }
};

// Sorts _nCount strings in place by their order keys, each folded once: writes nothing and answers false
// when there is no memory for the keys or a string has no key, so that the comparison sorts instead. Equal
// strings keep their order, one of the orders qsort may give.
bool sortByKeys(CString* _pStrings, std::size_t _nCount) noexcept {
    if (_nCount > UINT32_MAX)
        return false;
    std::uint64_t units = 0;
    for (std::size_t i = 0; i < _nCount; ++i)
        units += AfxSortKeyTailUnits(_pStrings[i].GetLength());
    if (units >= UINT32_MAX)
        return false;
    std::unique_ptr<AfxSortKey, FreeDeleter> keys(
        static_cast<AfxSortKey*>(std::malloc(_nCount * sizeof(AfxSortKey))));
    std::unique_ptr<std::uint16_t, FreeDeleter> arena(static_cast<std::uint16_t*>(
        std::malloc((static_cast<std::size_t>(units) + 1) * sizeof(std::uint16_t))));
    if (!keys || !arena)
        return false;
    std::uint32_t offset = 0;
    for (std::size_t i = 0; i < _nCount; ++i) {
        keys.get()[i].uOffset = offset;
        offset += static_cast<std::uint32_t>(AfxSortKeyTailUnits(_pStrings[i].GetLength()));
    }
    bool bBuilt[2] = {true, true};
    auto build = [&](std::size_t _nFrom, std::size_t _nTo) {
        for (std::size_t i = _nFrom; i < _nTo; ++i) {
            AfxSortKey& key = keys.get()[i];
            if (!AfxMakeSortKey(_pStrings[i].GetString(), _pStrings[i].GetLength(), AFX_KEY_NOCASE,
                                arena.get(), key.uOffset, key))
                bBuilt[_nFrom == 0 ? 0 : 1] = false;
            key.uTie = 0;
            key.uIndex = static_cast<std::uint32_t>(i);
        }
    };
    AfxRunOnTwoThreads(_nCount, build);
    if (!bBuilt[0] || !bBuilt[1])
        return false;
    AfxSortByKeys(keys.get(), _nCount, arena.get(), 0);
    AfxSortKey* to = keys.get();
    // Gathered into sorted order, then moved back: each string read once at random, written in order.
    std::unique_ptr<CString[]> sorted(new (std::nothrow) CString[_nCount]);
    if (sorted) {
        for (std::size_t i = 0; i < _nCount; ++i)
            sorted[i] = std::move(_pStrings[to[i].uIndex]);
        for (std::size_t i = 0; i < _nCount; ++i)
            _pStrings[i] = std::move(sorted[i]);
        return true;
    }
    // Without memory for that, each cycle of the permutation moved along in place; a placed position is
    // marked as its own.
    for (std::size_t i = 0; i < _nCount; ++i) {
        if (to[i].uIndex == i)
            continue;
        CString first(std::move(_pStrings[i]));
        std::size_t j = i;
        while (to[j].uIndex != i) {
            const std::size_t from = to[j].uIndex;
            _pStrings[j] = std::move(_pStrings[from]);
            to[j].uIndex = static_cast<std::uint32_t>(j);
            j = from;
        }
        _pStrings[j] = std::move(first);
        to[j].uIndex = static_cast<std::uint32_t>(j);
    }
    return true;
}

} // namespace

template <> void UQArray<CString, const CString&>::mf_sortPointerArray() {
    static const wchar_t* const _sFunction_ = L"UQArray::mf_sortPointerArray";
    const INT_PTR n = this->GetSize();
    if (n < 2)
        return; // nothing to order, nothing to allocate

    // The pointer buffer comes first whichever way the strings are sorted, so that no memory fails the sort
    // as it always has; the keys do without it.
    const std::size_t bytes = static_cast<std::size_t>(n) * sizeof(CString*);
    std::unique_ptr<CString*, FreeDeleter> buffer(static_cast<CString**>(UQAllocation::mf_allocate(bytes)));
    if (!buffer) {
        UQReport::mf_fail(UQErrno::_E_::Memory, _sFunction_, L"No memory for %lu array entries (%lu bytes)",
                          static_cast<unsigned long>(n), static_cast<unsigned long>(bytes));
    }
    if (sortByKeys(this->m_pData, static_cast<std::size_t>(n)))
        return;

    // The comparison itself, for strings without keys or without memory for them.
    UQArray<CString, const CString&> copies;
    copies.SetSize(n);
    for (INT_PTR i = 0; i < n; ++i) {
        copies[i] = this->m_pData[i];
        buffer.get()[i] = &copies[i];
    }
    std::qsort(buffer.get(), static_cast<std::size_t>(n), sizeof(CString*), compareNoCase);
    for (INT_PTR i = 0; i < n; ++i)
        this->m_pData[i] = *buffer.get()[i];
}
