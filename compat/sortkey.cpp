#include "compat/afxsortkey.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
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
        std::sort(_pKeys, _pKeys + _nCount, less);
        return;
    }
    const std::size_t half = _nCount / 2;
    AfxSortKey* const second = _pKeys + half;
    const std::size_t secondCount = _nCount - half;
    try {
        std::thread helper([=] { std::sort(second, second + secondCount, less); });
        std::sort(_pKeys, second, less);
        helper.join();
        std::thread back(
            [=] { mergeBack(_pKeys, half, second, secondCount, merged + _nCount, _nCount - half, less); });
        mergeFront(_pKeys, second, second, second + secondCount, merged, half, less);
        back.join();
    } catch (const std::system_error&) {
        // No helper thread: whatever was sorted or merged so far, sorting the whole range is right.
        std::free(merged);
        std::sort(_pKeys, _pKeys + _nCount, less);
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
            std::thread helper([=] { _pWork(_pContext, half, _nCount); });
            _pWork(_pContext, 0, half);
            helper.join();
            return;
        } catch (const std::system_error&) {
            // No helper: the caller's thread does it all.
        }
    }
    _pWork(_pContext, 0, _nCount);
}
