#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

UQPathPattern::UQPathPattern(const CString& _sPattern) : m_sPattern(_sPattern) {
    static const wchar_t* const _sFunction_ = L"UQPathPattern::UQPathPattern";
    if (_sPattern.IsEmpty()) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Parameter), _sFunction_, L"No pattern");
    }
    m_sPattern.MakeUpper();
}

int UQPathPattern::mf_matches(const CString& _sText) const {
    // Folding as the text is read copies none of the many paths of a search.
    return UQPatternMatch::mf_matches(m_sPattern, _sText, 1);
}
