#include "interfaces/korarchiver.h"

UQPathPattern::UQPathPattern(const CString& pattern) : m_sPattern(pattern) {
    static const wchar_t* const _sFunction_ = L"UQPathPattern::UQPathPattern";
    if (pattern.IsEmpty()) {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_E, _sFunction_, L"No pattern");
        throw UQErrno(UQErrno::_E_::Parameter);
    }
    m_sPattern.MakeUpper();
}

int UQPathPattern::mf_matches(const CString& text) const {
    // The text is upper-cased character by character as it is read (the folding of CString::MakeUpper),
    // so that matching the many paths of a search copies none of them.
    const wchar_t* t = text.GetString();
    const wchar_t* p = m_sPattern.GetString();

    // Literal prefix up to the first '*'.
    while (*t != 0 && *p != L'*') {
        if (*p != AfxFoldUpper(*t) && *p != L'?')
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
        } else if (*p == AfxFoldUpper(*t) || *p == L'?') {
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
