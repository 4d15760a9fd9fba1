#include "compat/afx.h"

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
