// Writes a DLGTEMPLATEEX in memory, as windres would, so that a test can feed the template rules a dialog
// that breaks one of them.
#pragma once

#include <windows.h>

#include <vector>

class TemplateBuilder {
public:
    TemplateBuilder(DWORD _dwStyle, short _cx, short _cy, const wchar_t* _pszFont = L"MS Shell Dlg");

    TemplateBuilder& control(const wchar_t* _pszClass, const wchar_t* _pszText, int _nId, DWORD _dwStyle,
                             short _x, short _y, short _cx, short _cy);

    std::vector<BYTE> bytes() const;

private:
    struct Item {
        const wchar_t* pszClass;
        const wchar_t* pszText;
        int nId;
        DWORD dwStyle;
        short x, y, cx, cy;
    };
    DWORD m_dwStyle;
    short m_cx;
    short m_cy;
    const wchar_t* m_pszFont;
    std::vector<Item> m_items;
};
