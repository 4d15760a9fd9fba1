#include "UQVersionRecord.h"

#include "compat/utf8.h"

#include <vector>

const char* const UQVersionRecord::STUB_MAGIC = "KORSTUB 1";
const char* const UQVersionRecord::DATA_MAGIC = "KORDATA 1";

namespace {

std::string utf8(const std::wstring& _sText) {
    return uqfmt::wideToUtf8(_sText.data(), _sText.size());
}

std::wstring wide(const std::string& _sText) {
    return uqfmt::utf8ToWide(_sText.data(), _sText.size());
}

// Decimal digits only, no sign, no leading blank, within _uMax.
bool parseNumber(const std::string& _sText, std::uint64_t _uMax, std::uint64_t& _ruValue) {
    if (_sText.empty() || _sText.size() > 20)
        return false;
    std::uint64_t uValue = 0;
    for (char ch : _sText) {
        if (ch < '0' || ch > '9')
            return false;
        const std::uint64_t uDigit = static_cast<std::uint64_t>(ch - '0');
        if (uValue > (_uMax - uDigit) / 10)
            return false;
        uValue = uValue * 10 + uDigit;
    }
    _ruValue = uValue;
    return true;
}

bool isHash(const std::string& _sText) {
    if (_sText.size() != 64)
        return false;
    for (char ch : _sText)
        if (!((ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'f')))
            return false;
    return true;
}

// Valid UTF-8 without control characters: the text survives the way to UTF-16 and back unchanged.
bool isCleanText(const std::string& _sText) {
    for (unsigned char ch : _sText)
        if (ch < 0x20 || ch == 0x7F)
            return false;
    const std::wstring sWide = wide(_sText);
    return utf8(sWide) == _sText;
}

std::wstring widen(const char* _pszText) {
    return wide(std::string(_pszText));
}

} // namespace

std::string UQVersionRecord::mf_formatStub() const {
    std::string sText = STUB_MAGIC;
    sText += "\nobject=" + utf8(m_sObjectPath);
    sText += "\nversion=" + std::to_string(m_uVersion);
    sText += "\naccess=" + std::to_string(m_uVolume) + ":" + std::to_string(m_uPosition);
    sText += "\nsize=" + std::to_string(m_uSize);
    sText += "\nsha256=" + m_sSha256 + "\n";
    return sText;
}

std::string UQVersionRecord::mf_formatHeader() const {
    std::string sText = DATA_MAGIC;
    sText += "\nobject=" + utf8(m_sObjectPath);
    sText += "\nname=" + utf8(m_sName);
    sText += "\nversion=" + std::to_string(m_uVersion);
    sText += "\nsize=" + std::to_string(m_uSize);
    sText += "\nsha256=" + m_sSha256 + "\n\n";
    return sText;
}

int UQVersionRecord::mf_looksLikeStub(const std::string& _sStart) {
    const std::string sMagic = std::string(STUB_MAGIC) + "\n";
    return _sStart.compare(0, sMagic.size(), sMagic) == 0 ? 1 : 0;
}

int UQVersionRecord::mf_parseStub(const std::string& _sText, UQVersionRecord& _rRecord,
                                  std::wstring& _rsReason) {
    if (_sText.size() > MAX_STUB_BYTES) {
        _rsReason = L"larger than a stub file can be";
        return 0;
    }
    if (!mf_looksLikeStub(_sText)) {
        _rsReason = L"not a stub file (its first line is not \"" + widen(STUB_MAGIC) + L"\")";
        return 0;
    }
    return mf_implParseLines(_sText, _sText.size(), 0, _rRecord, _rsReason);
}

int UQVersionRecord::mf_parseHeader(const std::string& _sText, UQVersionRecord& _rRecord,
                                    std::size_t& _rnHeaderBytes, std::wstring& _rsReason) {
    const std::string sMagic = std::string(DATA_MAGIC) + "\n";
    if (_sText.compare(0, sMagic.size(), sMagic) != 0) {
        _rsReason = L"not a stored version (its first line is not \"" + widen(DATA_MAGIC) + L"\")";
        return 0;
    }
    const std::size_t nEnd = _sText.find("\n\n");
    if (nEnd == std::string::npos || nEnd + 2 > MAX_HEADER_BYTES) {
        _rsReason = L"header cut short (no empty line ends it)";
        return 0;
    }
    if (!mf_implParseLines(_sText, nEnd + 1, 1, _rRecord, _rsReason))
        return 0;
    _rnHeaderBytes = nEnd + 2;
    return 1;
}

int UQVersionRecord::mf_implParseLines(const std::string& _sText, std::size_t _nEnd, int _bHeader,
                                       UQVersionRecord& _rRecord, std::wstring& _rsReason) {
    static const char* const STUB_KEYS[] = {"object", "version", "access", "size", "sha256"};
    static const char* const HEADER_KEYS[] = {"object", "name", "version", "size", "sha256"};
    const char* const* ppKeys = _bHeader ? HEADER_KEYS : STUB_KEYS;
    UQVersionRecord record;
    std::size_t nPos = _sText.find('\n') + 1;
    for (int nKey = 0; nKey < 5; ++nKey) {
        const std::size_t nLineEnd = _sText.find('\n', nPos);
        if (nLineEnd == std::string::npos || nLineEnd >= _nEnd) {
            _rsReason = L"cut short: line '" + widen(ppKeys[nKey]) + L"=' is missing";
            return 0;
        }
        const std::string sLine = _sText.substr(nPos, nLineEnd - nPos);
        nPos = nLineEnd + 1;
        const std::string sKey = std::string(ppKeys[nKey]) + "=";
        if (sLine.compare(0, sKey.size(), sKey) != 0) {
            _rsReason = L"line " + std::to_wstring(nKey + 2) + L" is not '" + widen(ppKeys[nKey]) + L"='";
            return 0;
        }
        const std::string sValue = sLine.substr(sKey.size());
        std::uint64_t uNumber = 0;
        bool bGood = true;
        switch (nKey == 0 ? 'o' : ppKeys[nKey][0]) {
        case 'o':
            bGood = !sValue.empty() && isCleanText(sValue);
            record.m_sObjectPath = wide(sValue);
            break;
        case 'n':
            bGood = !sValue.empty() && isCleanText(sValue);
            record.m_sName = wide(sValue);
            break;
        case 'v':
            bGood = parseNumber(sValue, 0xFFFFFFFFull, uNumber);
            record.m_uVersion = static_cast<std::uint32_t>(uNumber);
            break;
        case 'a': {
            const std::size_t nColon = sValue.find(':');
            std::uint64_t uVolume = 0;
            bGood = nColon != std::string::npos &&
                    parseNumber(sValue.substr(0, nColon), 0xFFFFFFFFull, uVolume) &&
                    parseNumber(sValue.substr(nColon + 1), ~0ull, record.m_uPosition);
            record.m_uVolume = static_cast<std::uint32_t>(uVolume);
            break;
        }
        case 's':
            if (ppKeys[nKey][1] == 'i')
                bGood = parseNumber(sValue, 0x7FFFFFFFFFFFFFFFull, record.m_uSize);
            else {
                bGood = isHash(sValue);
                record.m_sSha256 = sValue;
            }
            break;
        default:
            bGood = false;
        }
        if (!bGood) {
            _rsReason = L"bad value of '" + widen(ppKeys[nKey]) + L"' on line " + std::to_wstring(nKey + 2);
            return 0;
        }
    }
    if (nPos != _nEnd) {
        _rsReason = L"unexpected text after line 6";
        return 0;
    }
    _rRecord = record;
    return 1;
}
