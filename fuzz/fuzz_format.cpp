// The formatting engine with outside text as an argument of the formats the library uses, and with a format
// of any shape over a fixed set of typed arguments (mismatched and surplus arguments are defined).
#include "FuzzSupport.h"

#include "compat/afx.h"
#include "compat/utf8.h"

#include <algorithm>
#include <string>

namespace {

// Up to the first NUL, where a Windows string ends.
std::wstring outsideText(const std::string& _bytes) {
    const std::wstring sText = uqfmt::utf8ToWide(_bytes.data(), _bytes.size());
    return sText.substr(0, sText.find(L'\0'));
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    if (_nSize == 0)
        return 0;
    const std::uint8_t uMode = _pData[0];
    const std::wstring sText = outsideText(f_bytes(_pData + 1, _nSize - 1));
    const CString text(sText.c_str(), static_cast<int>(sText.size()));
    CString out;
    switch (uMode % 8) {
    case 0:
        out.Format(L"%s", text);
        f_require(std::wstring(out) == sText, "%s copies its argument");
        break;
    case 1:
        out.Format(L"[%s]", static_cast<const wchar_t*>(text));
        f_require(out.GetLength() >= 2 && out[0] == L'[' && out[out.GetLength() - 1] == L']',
                  "literal text around %s stays");
        break;
    case 2: {
        out.Format(L"%.5s", text);
        const std::wstring cut(sText.c_str(), std::min<std::size_t>(sText.size(), 5));
        f_require(std::wstring(out) == cut, "%.5s keeps at most five characters");
        break;
    }
    case 3:
        out.Format(L"%-20s|", text);
        f_require(out.GetLength() >= 21 && out[out.GetLength() - 1] == L'|', "%-20s pads to twenty");
        break;
    case 4:
        out.Format(L"Failure opening '%s':\r\n%s%s (%d, %c, %I64d)", text, UQLog::TAB, text, 42,
                   sText.empty() ? L'-' : sText[0], static_cast<std::int64_t>(_nSize));
        break;
    case 5:
        out.Format(L"%10.3s|%8.8x|%3.3u|%p", text, static_cast<unsigned>(_nSize), 7u,
                   static_cast<const void*>(&out));
        break;
    case 6: {
        // Any format over typed arguments, one of them outside text.
        const std::wstring fmt = sText;
        out.Format(fmt.c_str(), 17, text, L'x', static_cast<std::int64_t>(-5), 3.5,
                   static_cast<const void*>(nullptr));
        break;
    }
    default: {
        // Any format with no argument at all: conversions without arguments must not read past them.
        const std::wstring fmt = sText;
        out.Format(fmt.c_str());
        break;
    }
    }
    return 0;
}
