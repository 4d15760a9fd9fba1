#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

UQPathPattern::UQPathPattern(const CString& pattern) : m_sPattern(pattern) {
    static const wchar_t* const _sFunction_ = L"UQPathPattern::UQPathPattern";
    if (pattern.IsEmpty()) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Parameter), _sFunction_, L"No pattern");
    }
    m_sPattern.MakeUpper();
}

int UQPathPattern::mf_matches(const CString& text) const {
    // Folding as the text is read copies none of the many paths of a search.
    return UQPatternMatch::mf_matches(m_sPattern, text, 1);
}
