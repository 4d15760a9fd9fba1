#include "guibase/foundation/UQWildcard.h"

#include "guibase/foundation/UQReport.h"

UQWildcard::UQWildcard(int _bCaseSensitive) noexcept : m_bWildcard(0), m_bCaseSensitive(_bCaseSensitive) {}

UQWildcard::UQWildcard(const CString& _sPattern, int _bCaseSensitive)
    : m_bWildcard(0), m_bCaseSensitive(_bCaseSensitive) {
    mf_implInitialize(_sPattern);
}

UQWildcard::~UQWildcard() = default;

void UQWildcard::mf_implInitialize(const CString& _sPattern) {
    static const wchar_t* const _sFunction_ = L"UQWildcard::mf_implInitialize";
    if (_sPattern.IsEmpty())
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"No pattern");
    m_sPattern = _sPattern;
    if (m_bCaseSensitive == 0)
        m_sPattern.MakeUpper();
    m_bWildcard = m_sPattern.FindOneOf(L"*?") >= 0 ? 1 : 0;
}

int UQWildcard::mf_matches(const CString& _sText) const {
    static const wchar_t* const _sFunction_ = L"UQWildcard::mf_matches";
    if (m_sPattern.IsEmpty())
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"Pattern not initialized");
    // Case-blind matching folds the text as it is read: the same as matching an upper-cased copy.
    return UQPatternMatch::mf_matches(m_sPattern, _sText, m_bCaseSensitive == 0);
}
