// The wildcard matcher: pattern and text from the input (split at the first NUL byte). Case-sensitive
// answers are compared with a plain reference matcher; case-blind ones only have to come back.
#include "FuzzSupport.h"

#include "compat/utf8.h"
#include "guibase/foundation/UQWildcard.h"

#include <string>
#include <vector>

namespace {

// '*' any run of characters, '?' exactly one, anything else itself.
bool referenceMatch(const std::wstring& _sPattern, const std::wstring& _sText) {
    std::vector<char> row(_sText.size() + 1, 0), next(_sText.size() + 1, 0);
    row[0] = 1;
    for (const wchar_t c : _sPattern) {
        std::fill(next.begin(), next.end(), 0);
        if (c == L'*') {
            char reached = 0;
            for (std::size_t j = 0; j <= _sText.size(); ++j) {
                reached = static_cast<char>(reached | row[j]);
                next[j] = reached;
            }
        } else {
            for (std::size_t j = 0; j < _sText.size(); ++j)
                next[j + 1] = static_cast<char>(row[j] && (c == L'?' || c == _sText[j]));
        }
        row.swap(next);
    }
    return row[_sText.size()] != 0;
}

} // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    f_discardLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* _pData, std::size_t _nSize) {
    if (_nSize == 0)
        return 0;
    const int bCaseSensitive = _pData[0] & 1;
    const std::string rest = f_bytes(_pData + 1, _nSize - 1);
    const std::size_t split = rest.find('\0');
    const std::string patternBytes = rest.substr(0, split);
    const std::string textBytes = split == std::string::npos ? std::string() : rest.substr(split + 1);
    const std::wstring sPattern = uqfmt::utf8ToWide(patternBytes.data(), patternBytes.size());
    const std::wstring sText = uqfmt::utf8ToWide(textBytes.data(), textBytes.size());
    // CString ends at an embedded NUL, as the Windows strings it stands for do.
    if (sPattern.find(L'\0') != std::wstring::npos || sText.find(L'\0') != std::wstring::npos)
        return 0;
    try {
        const UQWildcard wildcard(CString(sPattern.c_str()), bCaseSensitive);
        const int bMatches = wildcard.mf_matches(CString(sText.c_str()));
        if (bCaseSensitive)
            f_require((bMatches != 0) == referenceMatch(sPattern, sText),
                      "case-sensitive match as the reference");
    } catch (const UQErrno&) {
        f_require(sPattern.empty(), "only an empty pattern is refused");
    }
    return 0;
}
