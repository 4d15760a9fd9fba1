#include "interfaces/korbase.h"

int UQPatternMatch::mf_matches(const wchar_t* p, const wchar_t* t, int bFoldText) noexcept {
    auto at = [bFoldText](const wchar_t* c) { return bFoldText ? AfxFoldUpper(*c) : *c; };
    // Literal prefix up to the first '*'.
    while (*t != 0 && *p != L'*') {
        if (*p != at(t) && *p != L'?')
            return 0;
        ++p;
        ++t;
    }
    // One back-tracking point: the last '*' seen and where its run of text began.
    const wchar_t* starNext = nullptr;
    const wchar_t* textNext = nullptr;
    while (*t != 0) {
        if (*p == L'*') {
            if (*++p == 0)
                return 1;
            starNext = p;
            textNext = t + 1;
        } else if (*p == at(t) || *p == L'?') {
            ++p;
            ++t;
        } else {
            p = starNext;
            t = textNext++;
        }
    }
    while (*p == L'*')
        ++p;
    return *p == 0 ? 1 : 0;
}
