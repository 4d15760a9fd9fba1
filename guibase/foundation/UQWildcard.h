#pragma once

#include "interfaces/korbase.h"

// A compiled '*' and '?' pattern. With the case flag 0 it matches case-blind, by upper-casing.
class KORGUIBASE_API UQWildcard {
public:
    explicit UQWildcard(int _bCaseSensitive = 0) noexcept;
    // Compiles the pattern at once (an empty one throws _E_::Parameter).
    UQWildcard(const CString& _sPattern, int _bCaseSensitive = 0);
    UQWildcard(const UQWildcard&) = default;
    UQWildcard& operator=(const UQWildcard&) = default;
    virtual ~UQWildcard();

    void mf_implInitialize(const CString& _sPattern);
    // 1 for a match, 0 for none; an uninitialised pattern throws _E_::Initialization.
    int mf_matches(const CString& _sText) const;

    const CString& mf_getPattern() const noexcept { return m_sPattern; }
    int mf_hasWildcards() const noexcept { return m_bWildcard; }
    int mf_isCaseSensitive() const noexcept { return m_bCaseSensitive; }

private:
    CString m_sPattern;
    int m_bWildcard;
    int m_bCaseSensitive;
};
