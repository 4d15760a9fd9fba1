#pragma once

#include "interfaces/korbase.h"

// One column of a list panel: its title, its width in pixels and its list-view format (LVCFMT_LEFT 0,
// LVCFMT_RIGHT 1, LVCFMT_CENTER 2).
struct UQListColumnInfo {
    CString m_sText;
    int m_nWidth = 0;
    int m_nFormat = 0;

    UQListColumnInfo() = default;
    UQListColumnInfo(const CString& _sText, int _nWidth, int _nFormat)
        : m_sText(_sText), m_nWidth(_nWidth), m_nFormat(_nFormat) {}
};
