#include "TemplateBuilder.h"

#include <cstring>

namespace {

template <typename T> void put(std::vector<BYTE>& _bytes, T _value) {
    const std::size_t uAt = _bytes.size();
    _bytes.resize(uAt + sizeof(T));
    std::memcpy(&_bytes[uAt], &_value, sizeof(T));
}

void putString(std::vector<BYTE>& _bytes, const wchar_t* _pszText) {
    for (const wchar_t* p = _pszText; *p != L'\0'; ++p)
        put<WORD>(_bytes, static_cast<WORD>(*p));
    put<WORD>(_bytes, 0);
}

} // namespace

TemplateBuilder::TemplateBuilder(DWORD _dwStyle, short _cx, short _cy, const wchar_t* _pszFont)
    : m_dwStyle(_dwStyle), m_cx(_cx), m_cy(_cy), m_pszFont(_pszFont) {}

TemplateBuilder& TemplateBuilder::control(const wchar_t* _pszClass, const wchar_t* _pszText, int _nId,
                                          DWORD _dwStyle, short _x, short _y, short _cx, short _cy) {
    m_items.push_back({_pszClass, _pszText, _nId, _dwStyle | WS_CHILD, _x, _y, _cx, _cy});
    return *this;
}

std::vector<BYTE> TemplateBuilder::bytes() const {
    std::vector<BYTE> bytes;
    put<WORD>(bytes, 1);
    put<WORD>(bytes, 0xFFFF);
    put<DWORD>(bytes, 0); // help id
    put<DWORD>(bytes, 0); // extended style
    put<DWORD>(bytes, m_dwStyle);
    put<WORD>(bytes, static_cast<WORD>(m_items.size()));
    for (short value : {short{0}, short{0}, m_cx, m_cy})
        put<short>(bytes, value);
    put<WORD>(bytes, 0); // no menu
    put<WORD>(bytes, 0); // the dialog class
    putString(bytes, L"Broken");
    if ((m_dwStyle & DS_SETFONT) != 0) {
        put<WORD>(bytes, 8);
        put<WORD>(bytes, FW_NORMAL);
        put<BYTE>(bytes, 0);
        put<BYTE>(bytes, DEFAULT_CHARSET);
        putString(bytes, m_pszFont);
    }
    for (const Item& item : m_items) {
        while (bytes.size() % 4 != 0)
            bytes.push_back(0);
        put<DWORD>(bytes, 0); // help id
        put<DWORD>(bytes, 0); // extended style
        put<DWORD>(bytes, item.dwStyle);
        for (short value : {item.x, item.y, item.cx, item.cy})
            put<short>(bytes, value);
        put<DWORD>(bytes, static_cast<DWORD>(static_cast<WORD>(item.nId)));
        putString(bytes, item.pszClass);
        putString(bytes, item.pszText);
        put<WORD>(bytes, 0); // no creation data
    }
    return bytes;
}
