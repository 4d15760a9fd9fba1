#include "compat/afxsortkey.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <system_error>
#include <thread>

namespace {

// Below this many entries a second thread costs more than it saves.
constexpr std::size_t PARALLEL_MINIMUM = 16384;

class KeyLess {
public:
    KeyLess(const std::uint16_t* _pArena, unsigned _uFlags) noexcept : m_pArena(_pArena), m_uFlags(_uFlags) {}

    bool operator()(const AfxSortKey& _a, const AfxSortKey& _b) const noexcept {
        if (m_uFlags & AFX_SORT_TIE_FIRST) {
            if (_a.uTie != _b.uTie)
                return tieLess(_a, _b);
            const int c = AfxCompareSortKeys(m_pArena, _a, _b);
            if (c != 0)
                return (m_uFlags & AFX_SORT_KEY_DESCENDING) ? c > 0 : c < 0;
        } else {
            // Heads decide most comparisons without a look into the arena.
            if (_a.uHead != _b.uHead)
                return (m_uFlags & AFX_SORT_KEY_DESCENDING) ? _a.uHead > _b.uHead : _a.uHead < _b.uHead;
            const int c = AfxCompareSortKeys(m_pArena, _a, _b);
            if (c != 0)
                return (m_uFlags & AFX_SORT_KEY_DESCENDING) ? c > 0 : c < 0;
            if (_a.uTie != _b.uTie)
                return tieLess(_a, _b);
        }
        return _a.uIndex < _b.uIndex;
    }

private:
    bool tieLess(const AfxSortKey& _a, const AfxSortKey& _b) const noexcept {
        return (m_uFlags & AFX_SORT_TIE_DESCENDING) ? _a.uTie > _b.uTie : _a.uTie < _b.uTie;
    }

    const std::uint16_t* m_pArena;
    unsigned m_uFlags;
};

// The first _nOut entries of the merge of two sorted runs, from the front.
void mergeFront(const AfxSortKey* _pA, const AfxSortKey* _pAEnd, const AfxSortKey* _pB,
                const AfxSortKey* _pBEnd, AfxSortKey* _pOut, std::size_t _nOut,
                const KeyLess& _less) noexcept {
    for (std::size_t k = 0; k < _nOut; ++k) {
        if (_pB == _pBEnd || (_pA != _pAEnd && !_less(*_pB, *_pA)))
            _pOut[k] = *_pA++;
        else
            _pOut[k] = *_pB++;
    }
}

// The last _nOut entries of the same merge, from the back. No two entries are equal (uIndex differs), so
// the two ends meet without overlap or gap.
void mergeBack(const AfxSortKey* _pA, std::size_t _nA, const AfxSortKey* _pB, std::size_t _nB,
               AfxSortKey* _pOutEnd, std::size_t _nOut, const KeyLess& _less) noexcept {
    std::size_t i = _nA;
    std::size_t j = _nB;
    for (std::size_t k = 0; k < _nOut; ++k) {
        if (j == 0 || (i != 0 && _less(_pB[j - 1], _pA[i - 1])))
            *--_pOutEnd = _pA[--i];
        else
            *--_pOutEnd = _pB[--j];
    }
}

// The key units [_nDepth, _nDepth + 4) as a number, the first in the highest bits, missing units 0.
std::uint64_t wordAt(const AfxSortKey& _key, std::uint32_t _nDepth, const std::uint16_t* _pArena) noexcept {
    if (_nDepth == 0)
        return _key.uHead;
    if (_nDepth >= _key.nUnits)
        return 0;
    const std::uint32_t units = std::min<std::uint32_t>(_key.nUnits - _nDepth, AFX_SORT_KEY_HEAD_UNITS);
    const unsigned char* p =
        reinterpret_cast<const unsigned char*>(_pArena + _key.uOffset + (_nDepth - AFX_SORT_KEY_HEAD_UNITS));
    std::uint64_t word = 0;
    for (std::uint32_t j = 0; j < units; ++j)
        word |= static_cast<std::uint64_t>((p[2 * j] << 8) | p[2 * j + 1])
                << (16 * (AFX_SORT_KEY_HEAD_UNITS - 1 - j));
    return word;
}

// A key of the run being sorted with its units at the current depth.
struct Slot {
    std::uint64_t uWord;
    std::uint32_t uKey; // index of the key in the run
};

// Below this many entries the whole comparison sorts a run faster than another round of words.
constexpr std::size_t RADIX_MINIMUM = 32;
constexpr std::uint32_t RADIX_DEPTH_LIMIT = 2048;

// Sorts the slots by their keys ascending, equal keys by tie and index as _less says: an MSD radix sort on
// four key units at a time. Each round loads every slot's next four units once and sorts the slots by
// that number alone, without a look into the arena; slots with equal numbers go on to the next round,
// except keys that end within these units, which come first (a prefix sorts first) in the full order.
void radixSort(Slot* _pSlots, std::size_t _nCount, std::uint32_t _nDepth, const AfxSortKey* _pKeys,
               const std::uint16_t* _pArena, const KeyLess& _less) noexcept {
    const auto fullLess = [&](const Slot& _a, const Slot& _b) {
        return _less(_pKeys[_a.uKey], _pKeys[_b.uKey]);
    };
    // Deep rounds only come with very long shared prefixes; there the comparison keeps the stack short.
    if (_nCount < RADIX_MINIMUM || _nDepth > RADIX_DEPTH_LIMIT) {
        std::sort(_pSlots, _pSlots + _nCount, fullLess);
        return;
    }
    if (_nDepth > 0)
        for (std::size_t i = 0; i < _nCount; ++i)
            _pSlots[i].uWord = wordAt(_pKeys[_pSlots[i].uKey], _nDepth, _pArena);
    std::sort(_pSlots, _pSlots + _nCount, [](const Slot& _a, const Slot& _b) { return _a.uWord < _b.uWord; });
    const std::uint32_t next = _nDepth + AFX_SORT_KEY_HEAD_UNITS;
    for (std::size_t a = 0; a < _nCount;) {
        std::size_t b = a + 1;
        while (b < _nCount && _pSlots[b].uWord == _pSlots[a].uWord)
            ++b;
        if (b - a > 1) {
            Slot* const ended = std::partition(
                _pSlots + a, _pSlots + b, [&](const Slot& _s) { return _pKeys[_s.uKey].nUnits <= next; });
            std::sort(_pSlots + a, ended, fullLess);
            radixSort(ended, static_cast<std::size_t>(_pSlots + b - ended), next, _pKeys, _pArena, _less);
        }
        a = b;
    }
}

// Sorts a range as _less says, by the radix sort where the key decides first.
void sortRange(AfxSortKey* _pKeys, std::size_t _nCount, const std::uint16_t* _pArena, unsigned _uFlags,
               const KeyLess& _less) noexcept {
    if ((_uFlags & (AFX_SORT_TIE_FIRST | AFX_SORT_BY_COMPARISON)) != 0 || _nCount < RADIX_MINIMUM) {
        std::sort(_pKeys, _pKeys + _nCount, _less);
        return;
    }
    std::unique_ptr<Slot[]> slots(new (std::nothrow) Slot[_nCount]);
    std::unique_ptr<AfxSortKey[]> sorted(new (std::nothrow) AfxSortKey[_nCount]);
    if (!slots || !sorted) {
        std::sort(_pKeys, _pKeys + _nCount, _less);
        return;
    }
    for (std::size_t i = 0; i < _nCount; ++i)
        slots[i] = Slot{_pKeys[i].uHead, static_cast<std::uint32_t>(i)};
    // Ascending by key, equal keys in the order of _less; descending keys are that order with the runs of
    // equal keys reversed as wholes.
    const KeyLess ascending(_pArena, _uFlags & ~static_cast<unsigned>(AFX_SORT_KEY_DESCENDING));
    radixSort(slots.get(), _nCount, 0, _pKeys, _pArena, ascending);
    for (std::size_t i = 0; i < _nCount; ++i)
        sorted[i] = _pKeys[slots[i].uKey];
    std::copy(sorted.get(), sorted.get() + _nCount, _pKeys);
    if ((_uFlags & AFX_SORT_KEY_DESCENDING) == 0)
        return;
    std::reverse(_pKeys, _pKeys + _nCount);
    for (std::size_t a = 0; a < _nCount;) {
        std::size_t b = a + 1;
        while (b < _nCount && AfxCompareSortKeys(_pArena, _pKeys[a], _pKeys[b]) == 0)
            ++b;
        std::reverse(_pKeys + a, _pKeys + b);
        a = b;
    }
}

} // namespace

void AfxSortByKeys(AfxSortKey* _pKeys, std::size_t _nCount, const std::uint16_t* _pArena,
                   unsigned _uFlags) noexcept {
    const KeyLess less(_pArena, _uFlags);
    if (_nCount < 2)
        return;
    AfxSortKey* merged = nullptr;
    if (_nCount >= PARALLEL_MINIMUM && std::thread::hardware_concurrency() > 1)
        merged = static_cast<AfxSortKey*>(std::malloc(_nCount * sizeof(AfxSortKey)));
    if (merged == nullptr) {
        sortRange(_pKeys, _nCount, _pArena, _uFlags, less);
        return;
    }
    const std::size_t half = _nCount / 2;
    AfxSortKey* const second = _pKeys + half;
    const std::size_t secondCount = _nCount - half;
    try {
        std::thread sorter([=] { sortRange(second, secondCount, _pArena, _uFlags, less); });
        sortRange(_pKeys, half, _pArena, _uFlags, less);
        sorter.join();
        std::thread back(
            [=] { mergeBack(_pKeys, half, second, secondCount, merged + _nCount, _nCount - half, less); });
        mergeFront(_pKeys, second, second, second + secondCount, merged, half, less);
        back.join();
    } catch (const std::system_error&) {
        // No second thread: whatever was sorted or merged so far, sorting the whole range is right.
        std::free(merged);
        sortRange(_pKeys, _nCount, _pArena, _uFlags, less);
        return;
    }
    std::memcpy(_pKeys, merged, _nCount * sizeof(AfxSortKey));
    std::free(merged);
}

void AfxRunOnTwoThreads(std::size_t _nCount, void (*_pWork)(void*, std::size_t, std::size_t),
                        void* _pContext) noexcept {
    const std::size_t half = _nCount / 2;
    if (_nCount >= PARALLEL_MINIMUM && std::thread::hardware_concurrency() > 1) {
        try {
            std::thread other([=] { _pWork(_pContext, half, _nCount); });
            _pWork(_pContext, 0, half);
            other.join();
            return;
        } catch (const std::system_error&) {
            // No second thread: the caller's thread does it all.
        }
    }
    _pWork(_pContext, 0, _nCount);
}
