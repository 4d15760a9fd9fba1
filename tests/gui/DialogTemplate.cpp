#include "DialogTemplate.h"

#include <cstring>

namespace {

// A bounds-checked reader over the template's bytes; the first read past the end marks it broken.
class Reader {
public:
    Reader(const BYTE* _pData, std::size_t _uSize) : m_pData(_pData), m_uSize(_uSize) {}

    bool broken() const noexcept { return m_bBroken; }

    template <typename T> T read() {
        T value{};
        if (m_uPos + sizeof(T) > m_uSize) {
            m_bBroken = true;
            return value;
        }
        std::memcpy(&value, m_pData + m_uPos, sizeof(T));
        m_uPos += sizeof(T);
        return value;
    }

    std::wstring readString() {
        std::wstring text;
        for (;;) {
            const wchar_t c = static_cast<wchar_t>(read<WORD>());
            if (m_bBroken || c == L'\0')
                return text;
            text.push_back(c);
        }
    }

    // A menu, class or text field: a string, or 0xFFFF and a number.
    std::wstring readNameOrNumber(WORD* _pNumber) {
        *_pNumber = 0;
        if (m_uPos + sizeof(WORD) <= m_uSize) {
            WORD wFirst = 0;
            std::memcpy(&wFirst, m_pData + m_uPos, sizeof(WORD));
            if (wFirst == 0xFFFF) {
                m_uPos += sizeof(WORD);
                *_pNumber = read<WORD>();
                return std::wstring();
            }
        }
        return readString();
    }

    void skip(std::size_t _uBytes) {
        if (m_uPos + _uBytes > m_uSize)
            m_bBroken = true;
        else
            m_uPos += _uBytes;
    }

    // Controls start on a DWORD boundary of the template.
    void alignToDword() { skip((4 - m_uPos % 4) % 4); }

private:
    const BYTE* m_pData;
    std::size_t m_uSize;
    std::size_t m_uPos = 0;
    bool m_bBroken = false;
};

std::wstring predefinedClass(WORD _wNumber) {
    switch (_wNumber) {
    case 0x0080:
        return L"Button";
    case 0x0081:
        return L"Edit";
    case 0x0082:
        return L"Static";
    case 0x0083:
        return L"ListBox";
    case 0x0084:
        return L"ScrollBar";
    case 0x0085:
        return L"ComboBox";
    default:
        return L"#" + std::to_wstring(_wNumber);
    }
}

} // namespace

std::string DialogTemplate::parse(const void* _pData, std::size_t _uSize) {
    *this = DialogTemplate();
    if (_pData == nullptr)
        return "no template data";
    Reader reader(static_cast<const BYTE*>(_pData), _uSize);
    const WORD wVersion = reader.read<WORD>();
    const WORD wSignature = reader.read<WORD>();
    const bool bExtended = wVersion == 1 && wSignature == 0xFFFF;
    WORD wCount = 0;
    if (bExtended) {
        reader.read<DWORD>(); // help id
        dwExStyle = reader.read<DWORD>();
        dwStyle = reader.read<DWORD>();
    } else {
        dwStyle = MAKELONG(wVersion, wSignature);
        dwExStyle = reader.read<DWORD>();
    }
    wCount = reader.read<WORD>();
    x = reader.read<short>();
    y = reader.read<short>();
    cx = reader.read<short>();
    cy = reader.read<short>();
    WORD wNumber = 0;
    reader.readNameOrNumber(&wNumber); // menu
    reader.readNameOrNumber(&wNumber); // window class
    title = reader.readString();
    if ((dwStyle & DS_SETFONT) != 0) {
        wPointSize = reader.read<WORD>();
        if (bExtended) {
            reader.read<WORD>(); // weight
            reader.read<BYTE>(); // italic
            reader.read<BYTE>(); // character set
        }
        fontFace = reader.readString();
    }
    for (WORD i = 0; i < wCount && !reader.broken(); ++i) {
        reader.alignToDword();
        TemplateControl control;
        if (bExtended) {
            reader.read<DWORD>(); // help id
            control.dwExStyle = reader.read<DWORD>();
            control.dwStyle = reader.read<DWORD>();
        } else {
            control.dwStyle = reader.read<DWORD>();
            control.dwExStyle = reader.read<DWORD>();
        }
        control.x = reader.read<short>();
        control.y = reader.read<short>();
        control.cx = reader.read<short>();
        control.cy = reader.read<short>();
        // Ids are 16 bits in both forms; -1 is stored as 0xFFFF (or 0xFFFFFFFF).
        control.nId = bExtended ? static_cast<short>(LOWORD(reader.read<DWORD>())) : reader.read<short>();
        control.className = reader.readNameOrNumber(&wNumber);
        if (wNumber != 0)
            control.className = predefinedClass(wNumber);
        control.text = reader.readNameOrNumber(&wNumber);
        if (wNumber != 0)
            control.text = L"#" + std::to_wstring(wNumber);
        reader.skip(reader.read<WORD>()); // creation data
        controls.push_back(control);
    }
    if (reader.broken())
        return "the template ends before its " + std::to_string(wCount) + " controls do";
    return "";
}
