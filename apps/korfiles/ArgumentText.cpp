#include "ArgumentText.h"

#include <cstdio>

int ArgumentText::mf_findUnpairedSurrogate(const CString& _sText) {
    const int n = _sText.GetLength();
    for (int i = 0; i < n; ++i) {
        const unsigned u = static_cast<unsigned>(_sText[i]) & 0xFFFFu;
        if (u < 0xD800 || u > 0xDFFF)
            continue;
        if (u <= 0xDBFF && i + 1 < n && (static_cast<unsigned>(_sText[i + 1]) & 0xFC00u) == 0xDC00u) {
            ++i;
            continue;
        }
        return i;
    }
    return -1;
}

std::string ArgumentText::mf_describe(const CString& _sText, int _nIndex) {
    const unsigned u = static_cast<unsigned>(_sText[_nIndex]) & 0xFFFFu;
    char buffer[64];
#ifdef _WIN32
    // Arguments come as UTF-16 here; a lone surrogate is one as given.
    const bool bFromByte = false;
#else
    const bool bFromByte = u >= 0xDC80 && u <= 0xDCFF;
#endif
    if (bFromByte)
        std::snprintf(buffer, sizeof buffer, "byte 0x%02X at character %d", u - 0xDC00u, _nIndex + 1);
    else
        std::snprintf(buffer, sizeof buffer, "unpaired surrogate U+%04X at unit %d", u, _nIndex + 1);
    return buffer;
}
