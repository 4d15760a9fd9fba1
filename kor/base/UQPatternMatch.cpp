#include "interfaces/korbase.h"

int UQPatternMatch::mf_matches(const wchar_t* _pszPattern, const wchar_t* _pszText, int _bFoldText) noexcept {
    auto at = [_bFoldText](const wchar_t* _pszC) { return _bFoldText ? AfxFoldUpper(*_pszC) : *_pszC; };
    // Literal prefix up to the first '*'.
    while (*_pszText != 0 && *_pszPattern != L'*') {
        if (*_pszPattern != at(_pszText) && *_pszPattern != L'?')
            return 0;
        ++_pszPattern;
        ++_pszText;
    }
    // One back-tracking point: the last '*' seen and where its run of text began.
    const wchar_t* starNext = nullptr;
    const wchar_t* textNext = nullptr;
    while (*_pszText != 0) {
        if (*_pszPattern == L'*') {
            if (*++_pszPattern == 0)
                return 1;
            starNext = _pszPattern;
            textNext = _pszText + 1;
        } else if (*_pszPattern == at(_pszText) || *_pszPattern == L'?') {
            ++_pszPattern;
            ++_pszText;
        } else {
            _pszPattern = starNext;
            _pszText = textNext++;
        }
    }
    while (*_pszPattern == L'*')
        ++_pszPattern;
    return *_pszPattern == 0 ? 1 : 0;
}
