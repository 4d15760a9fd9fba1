#include "UQServerName.h"

#include <cwctype>

namespace {

std::wstring hexOf(unsigned _uValue) {
    static const wchar_t DIGITS[] = L"0123456789ABCDEF";
    std::wstring sHex = L"0x";
    sHex += DIGITS[(_uValue >> 4) & 0xF];
    sHex += DIGITS[_uValue & 0xF];
    return sHex;
}

} // namespace

int UQServerName::mf_check(const std::wstring& _sName, std::wstring& _rsReason) {
    if (_sName.empty()) {
        _rsReason = L"empty name";
        return 0;
    }
    if (_sName.size() > MAX_LENGTH) {
        _rsReason = L"longer than 32767 characters";
        return 0;
    }
    for (wchar_t ch : _sName) {
        if (ch < 0x20 || ch == 0x7F) {
            _rsReason = L"control character " + hexOf(static_cast<unsigned>(ch));
            return 0;
        }
    }
    if (_sName.find(L'/') != std::wstring::npos) {
        _rsReason = L"contains '/' (only '\\' separates parts)";
        return 0;
    }
    if (_sName[0] == L'\\') {
        _rsReason = L"absolute path (begins with '\\')";
        return 0;
    }
    if (_sName.size() >= 2 && _sName[1] == L':') {
        _rsReason = L"names a drive";
        return 0;
    }
    if (_sName.find(L':') != std::wstring::npos) {
        _rsReason = L"names an alternate data stream (contains ':')";
        return 0;
    }
    std::size_t nStart = 0;
    while (true) {
        const std::size_t nEnd = _sName.find(L'\\', nStart);
        const std::wstring sPart =
            _sName.substr(nStart, nEnd == std::wstring::npos ? std::wstring::npos : nEnd - nStart);
        if (!mf_implCheckPart(sPart, _rsReason))
            return 0;
        if (nEnd == std::wstring::npos)
            return 1;
        nStart = nEnd + 1;
    }
}

int UQServerName::mf_implCheckPart(const std::wstring& _sPart, std::wstring& _rsReason) {
    if (_sPart.empty()) {
        _rsReason = L"empty part (two '\\' in a row or one at the end)";
        return 0;
    }
    if (_sPart == L"." || _sPart == L"..") {
        _rsReason = L"part '" + _sPart + L"' leaves its folder";
        return 0;
    }
    const wchar_t chLast = _sPart.back();
    if (chLast == L'.' || chLast == L' ') {
        _rsReason = L"part '" + _sPart + L"' ends in a dot or a space";
        return 0;
    }
    for (wchar_t ch : _sPart) {
        if (ch == L'<' || ch == L'>' || ch == L'"' || ch == L'|' || ch == L'?' || ch == L'*') {
            _rsReason = L"part '" + _sPart + L"' holds a character Windows does not allow in names";
            return 0;
        }
    }
    if (mf_implIsDeviceName(_sPart)) {
        _rsReason = L"part '" + _sPart + L"' is a device name";
        return 0;
    }
    return 1;
}

// CON, PRN, AUX, NUL, COM1-COM9 and LPT1-LPT9 open the device whatever extension follows, and Windows
// ignores spaces before the extension.
int UQServerName::mf_implIsDeviceName(const std::wstring& _sPart) {
    std::wstring sBase = _sPart.substr(0, _sPart.find(L'.'));
    while (!sBase.empty() && sBase.back() == L' ')
        sBase.pop_back();
    for (wchar_t& ch : sBase)
        ch = static_cast<wchar_t>(std::towupper(ch));
    if (sBase == L"CON" || sBase == L"PRN" || sBase == L"AUX" || sBase == L"NUL" || sBase == L"CONIN$" ||
        sBase == L"CONOUT$")
        return 1;
    if (sBase.size() == 4 && (sBase.compare(0, 3, L"COM") == 0 || sBase.compare(0, 3, L"LPT") == 0)) {
        const wchar_t chDigit = sBase[3];
        // The superscript digits name the same ports.
        return (chDigit >= L'1' && chDigit <= L'9') || chDigit == 0xB9 || chDigit == 0xB2 || chDigit == 0xB3;
    }
    return 0;
}
