#include "guibase/foundation/UQWildcard.h"

#include "guibase/foundation/UQReport.h"

UQWildcard::UQWildcard(int bCaseSensitive) noexcept : m_bWildcard(0), m_bCaseSensitive(bCaseSensitive) {}

UQWildcard::UQWildcard(const CString& pattern, int bCaseSensitive)
    : m_bWildcard(0), m_bCaseSensitive(bCaseSensitive) {
    mf_implInitialize(pattern);
}

UQWildcard::~UQWildcard() = default;

void UQWildcard::mf_implInitialize(const CString& pattern) {
    static const wchar_t* const _sFunction_ = L"UQWildcard::mf_implInitialize";
    if (pattern.IsEmpty())
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"No pattern");
    m_sPattern = pattern;
    if (m_bCaseSensitive == 0)
        m_sPattern.MakeUpper();
    m_bWildcard = m_sPattern.FindOneOf(L"*?") >= 0 ? 1 : 0;
}

int UQWildcard::mf_matches(const CString& text) const {
    static const wchar_t* const _sFunction_ = L"UQWildcard::mf_matches";
    if (m_sPattern.IsEmpty())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"Pattern not initialized");
    CString upper;
    if (m_bCaseSensitive == 0) {
        upper = text;
        upper.MakeUpper();
    }
    const wchar_t* t = m_bCaseSensitive == 0 ? upper.GetString() : text.GetString();
    const wchar_t* p = m_sPattern.GetString();

    // Literal prefix up to the first '*'.
    while (*t != 0 && *p != L'*') {
        if (*p != *t && *p != L'?')
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
        } else if (*p == *t || *p == L'?') {
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
