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
    // Folding as the text is read copies none of the many paths of a search.
    return UQPatternMatch::mf_matches(m_sPattern, text, 1);
}
