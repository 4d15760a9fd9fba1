// Order keys of the one case fold (AfxFoldUpper). A text is folded once into 16-bit key units stored
// big-endian, so that comparing two keys bytewise orders the texts exactly as the case-blind comparison
// they stand for, without folding a character at every comparison of a sort:
//   AFX_KEY_NOCASE  CString::CompareNoCase;
//   AFX_KEY_PATH    UQPath::mf_compare, where '\' and '/' come before every other character.
// A text ends at its first NUL, as both comparisons end there. A shorter text that is a prefix of a longer
// one comes first, as in both comparisons.
#pragma once

#include "compat/compat_api.h"

#include <cstddef>
#include <cstdint>

enum AfxKeyOrder { AFX_KEY_NOCASE, AFX_KEY_PATH };

// One entry of a keyed sort: the key's first four units as a number (the first unit in the highest bits,
// missing units 0), where its further units lie in the key arena, and what decides between equal keys.
struct AfxSortKey {
    std::uint64_t uHead;
    std::uint32_t uOffset; // of the fifth key unit in the arena, in units
    std::uint32_t nUnits;  // key units in all
    std::uint32_t uTie;    // compared before or after the key (a version, a status rank)
    std::uint32_t uIndex;  // position before the sort: the last tie, so that every sort is a stable one
};

// Key units of the head, which the arena does not hold.
constexpr std::uint32_t AFX_SORT_KEY_HEAD_UNITS = 4;

// How many arena units the key of a text of _nLength units needs at most.
inline std::size_t AfxSortKeyTailUnits(int _nLength) noexcept {
    return _nLength > static_cast<int>(AFX_SORT_KEY_HEAD_UNITS)
               ? static_cast<std::size_t>(_nLength) - AFX_SORT_KEY_HEAD_UNITS
               : 0;
}

// Builds the key of the text's first _nLength units (or up to a NUL before them) into _rKey, writing the
// units after the head to _pArena + _uOffset (room for AfxSortKeyTailUnits(_nLength) units). Sets uHead,
// uOffset and nUnits; the caller sets uTie and uIndex. Returns false when a unit lies beyond U+FFFF (text
// that never was UTF-16), which has no 16-bit key: such texts need the comparison itself.
KORCOMPAT_API bool AfxMakeSortKey(const wchar_t* _pText, int _nLength, AfxKeyOrder _order,
                                  std::uint16_t* _pArena, std::uint32_t _uOffset, AfxSortKey& _rKey) noexcept;

// <0, 0 or >0: the order of the two texts whose keys these are (ties not looked at).
KORCOMPAT_API int AfxCompareSortKeys(const std::uint16_t* _pArena, const AfxSortKey& _a,
                                     const AfxSortKey& _b) noexcept;

enum : unsigned {
    AFX_SORT_KEY_DESCENDING = 1, // keys from the greatest
    AFX_SORT_TIE_DESCENDING = 2, // ties from the greatest
    AFX_SORT_TIE_FIRST = 4,      // the tie decides first, the key between equal ties
    AFX_SORT_BY_COMPARISON = 8   // a comparison sort even where the key decides first (for measuring)
};

// Sorts the entries by key and tie as _uFlags say, then by uIndex ascending. Where the key decides first,
// by an MSD radix sort on four key units at a time, which loads the units of a key once per round instead
// of at every comparison; otherwise by comparisons. With many entries, on two threads: the caller's sorts one
// half while a second thread sorts the other, then both merge, one from each end; that thread is joined
// before the function returns. Without memory for the merge or without a thread, the caller's thread sorts
// alone; the result is the same.
KORCOMPAT_API void AfxSortByKeys(AfxSortKey* _pKeys, std::size_t _nCount, const std::uint16_t* _pArena,
                                 unsigned _uFlags) noexcept;

// Runs _pWork(_pContext, from, to) over [0, _nCount) in two halves, the second on a thread of its own that is
// joined before the function returns; without a thread, or for few entries, the caller's thread runs both.
// _pWork must not throw.
KORCOMPAT_API void AfxRunOnTwoThreads(std::size_t _nCount, void (*_pWork)(void*, std::size_t, std::size_t),
                                      void* _pContext) noexcept;

// The same with a callable taking (from, to).
template <class Work> void AfxRunOnTwoThreads(std::size_t _nCount, Work& _work) noexcept {
    AfxRunOnTwoThreads(
        _nCount,
        [](void* _pContext, std::size_t _nFrom, std::size_t _nTo) {
            (*static_cast<Work*>(_pContext))(_nFrom, _nTo);
        },
        &_work);
}
