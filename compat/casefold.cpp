#include "compat/afx.h"
#include "compat/afxsortkey.h"

#include <cstring>

// The tables come from Unicode's data file at build time (cmake/make_case_fold.py).
#include "compat/casefold_tables.inc"

namespace {

inline wchar_t lookUp(const unsigned char* _pIndex, const unsigned short (*_pPages)[256],
                      wchar_t _ch) noexcept {
    const unsigned u = static_cast<unsigned>(_ch);
    // Units above U+FFFF occur only in text that never was UTF-16; they have no case here.
    if (u > 0xFFFFu)
        return _ch;
    return static_cast<wchar_t>((u + _pPages[_pIndex[u >> 8]][u & 0xFFu]) & 0xFFFFu);
}

} // namespace

wchar_t AfxFoldUpper(wchar_t _ch) noexcept {
    return lookUp(FOLD_UPPER_INDEX, FOLD_UPPER_PAGES, _ch);
}

wchar_t AfxFoldLower(wchar_t _ch) noexcept {
    return lookUp(FOLD_LOWER_INDEX, FOLD_LOWER_PAGES, _ch);
}

void AfxFoldUpperRange(const wchar_t* _pSource, std::size_t _nUnits, wchar_t* _pTarget) noexcept {
    for (std::size_t i = 0; i < _nUnits; ++i)
        _pTarget[i] = lookUp(FOLD_UPPER_INDEX, FOLD_UPPER_PAGES, _pSource[i]);
}

int AfxCompareFolded(const wchar_t* _pA, int _nA, const wchar_t* _pB, int _nB) noexcept {
    const int n = _nA < _nB ? _nA : _nB;
    for (int i = 0; i < n; ++i) {
        if (_pA[i] == _pB[i])
            continue;
        const unsigned a = static_cast<unsigned>(lookUp(FOLD_UPPER_INDEX, FOLD_UPPER_PAGES, _pA[i]));
        const unsigned b = static_cast<unsigned>(lookUp(FOLD_UPPER_INDEX, FOLD_UPPER_PAGES, _pB[i]));
        if (a != b)
            return a < b ? -1 : 1;
    }
    return _nA == _nB ? 0 : (_nA < _nB ? -1 : 1);
}

bool AfxMakeSortKey(const wchar_t* _pText, int _nLength, AfxKeyOrder _order, std::uint16_t* _pArena,
                    std::uint32_t _uOffset, AfxSortKey& _rKey) noexcept {
    const bool path = _order == AFX_KEY_PATH;
    std::uint64_t head = 0;
    // Big-endian bytes, so that memcmp compares key units as numbers.
    unsigned char* tail = reinterpret_cast<unsigned char*>(_pArena + _uOffset);
    int n = 0;
    for (; n < _nLength; ++n) {
        const unsigned u = static_cast<unsigned>(_pText[n]);
        if (u == 0)
            break;
        if (u > 0xFFFFu)
            return false;
        // Every fold of a unit other than NUL is non-zero, so a separator's 0 sorts before all of them,
        // as in the comparison's order, and a missing unit (0) sorts a prefix first.
        unsigned k = 0;
        if (!(path && (u == L'\\' || u == L'/')))
            k = u < 0x80u ? (u - 'a' < 26u ? u - 0x20u : u)
                          : static_cast<unsigned>(lookUp(FOLD_UPPER_INDEX, FOLD_UPPER_PAGES, _pText[n]));
        if (n < static_cast<int>(AFX_SORT_KEY_HEAD_UNITS)) {
            head |= static_cast<std::uint64_t>(k) << (16 * (AFX_SORT_KEY_HEAD_UNITS - 1 - n));
        } else {
            *tail++ = static_cast<unsigned char>(k >> 8);
            *tail++ = static_cast<unsigned char>(k & 0xFFu);
        }
    }
    _rKey.uHead = head;
    _rKey.uOffset = _uOffset;
    _rKey.nUnits = static_cast<std::uint32_t>(n);
    return true;
}

int AfxCompareSortKeys(const std::uint16_t* _pArena, const AfxSortKey& _a, const AfxSortKey& _b) noexcept {
    if (_a.uHead != _b.uHead)
        return _a.uHead < _b.uHead ? -1 : 1;
    const std::uint32_t n = _a.nUnits < _b.nUnits ? _a.nUnits : _b.nUnits;
    if (n > AFX_SORT_KEY_HEAD_UNITS) {
        const int c = std::memcmp(_pArena + _a.uOffset, _pArena + _b.uOffset,
                                  (n - AFX_SORT_KEY_HEAD_UNITS) * sizeof(std::uint16_t));
        if (c != 0)
            return c;
    }
    return _a.nUnits == _b.nUnits ? 0 : (_a.nUnits < _b.nUnits ? -1 : 1);
}
