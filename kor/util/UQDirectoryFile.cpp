#include "interfaces/korutil.h"

#include "compat/UQHandle.h"
#include "kor/KorReport.h"

#include <cerrno>
#include <cstdio>
#include <set>
#include <system_error>

namespace {

std::vector<std::string> splitTabs(const std::string& _sLine) {
    std::vector<std::string> fields;
    std::size_t nStart = 0;
    for (;;) {
        const std::size_t nTab = _sLine.find('\t', nStart);
        fields.push_back(
            _sLine.substr(nStart, nTab == std::string::npos ? std::string::npos : nTab - nStart));
        if (nTab == std::string::npos)
            return fields;
        nStart = nTab + 1;
    }
}

bool hasControlCharacter(const std::string& _sLine) {
    for (char c : _sLine) {
        const unsigned char u = static_cast<unsigned char>(c);
        if ((u < 0x20 && u != '\t') || u == 0x7F)
            return true;
    }
    return false;
}

bool parseNumber(const std::string& _sText, std::uint64_t _uMax, std::uint64_t& _ruValue) {
    if (_sText.empty() || _sText.size() > 20)
        return false;
    std::uint64_t uValue = 0;
    for (char c : _sText) {
        if (c < '0' || c > '9')
            return false;
        const std::uint64_t uDigit = static_cast<std::uint64_t>(c - '0');
        if (uValue > (_uMax - uDigit) / 10)
            return false;
        uValue = uValue * 10 + uDigit;
    }
    _ruValue = uValue;
    return true;
}

bool isSidString(const std::string& _sText) {
    if (_sText.compare(0, 4, "S-1-") != 0 || _sText.size() == 4)
        return false;
    char cPrevious = '-';
    for (std::size_t i = 4; i < _sText.size(); ++i) {
        const char c = _sText[i];
        if (c == '-' ? cPrevious == '-' : (c < '0' || c > '9'))
            return false;
        cPrevious = c;
    }
    return cPrevious != '-';
}

class Reader {
public:
    Reader(const CString& _sName, UQDirectoryFile::Result& _rResult) : m_sName(_sName), m_rResult(_rResult) {}

    void mf_line(const std::string& _sLine, unsigned _uLine) {
        if (_sLine.find_first_not_of(" \t") == std::string::npos || _sLine[0] == '#')
            return;
        if (CString::FromUtf8(_sLine).ToUtf8() != _sLine)
            return mf_bad(_uLine, "invalid UTF-8");
        if (hasControlCharacter(_sLine))
            return mf_bad(_uLine, "control character");
        const std::vector<std::string> fields = splitTabs(_sLine);
        const std::string& sKind = fields[0];
        if (sKind == "controller")
            return mf_controller(fields, _uLine);
        if (sKind != "user" && sKind != "generate" && sKind != "silent")
            return mf_bad(_uLine, "unknown line kind '" + sKind + "' (controller, user, generate or silent)");
        if (m_rResult.controllers.empty())
            return mf_bad(_uLine, "'" + sKind + "' before the first controller line");
        UQDirectoryController& controller = m_rResult.controllers.back();
        if (sKind == "silent") {
            if (fields.size() != 1)
                return mf_bad(_uLine, "expected 'silent' alone");
            controller.bAnswers = 0;
        } else if (sKind == "generate") {
            std::uint64_t uCount = 0, uStart = 0;
            if (fields.size() != 3)
                return mf_bad(_uLine, "expected generate, count and starting value");
            if (!parseNumber(fields[1], 1000000, uCount))
                return mf_bad(_uLine, "bad user count '" + fields[1] + "' (0 to 1000000)");
            if (!parseNumber(fields[2], UINT64_MAX, uStart))
                return mf_bad(_uLine, "bad starting value '" + fields[2] + "'");
            controller.uGenerated = static_cast<std::uint32_t>(uCount);
            controller.uStartValue = uStart;
        } else {
            if (fields.size() != 4)
                return mf_bad(_uLine, "expected user, SID, account name and second text, found " +
                                          std::to_string(fields.size()) + " fields");
            if (!isSidString(fields[1]))
                return mf_bad(_uLine, "bad SID '" + fields[1] + "'");
            if (fields[2].empty())
                return mf_bad(_uLine, "empty account name");
            controller.users.emplace_back(CString::FromUtf8(fields[1]), CString::FromUtf8(fields[2]),
                                          fields[3] == "-" ? CString() : CString::FromUtf8(fields[3]));
        }
    }

private:
    void mf_controller(const std::vector<std::string>& _fields, unsigned _uLine) {
        if (_fields.size() != 4)
            return mf_bad(_uLine, "expected controller, name, display name and primary or -, found " +
                                      std::to_string(_fields.size()) + " fields");
        if (_fields[1].empty() || _fields[2].empty())
            return mf_bad(_uLine, "empty controller name");
        if (_fields[3] != "primary" && _fields[3] != "-")
            return mf_bad(_uLine, "bad mark '" + _fields[3] + "' (primary or -)");
        if (!m_names.insert(_fields[1]).second)
            return mf_bad(_uLine, "controller '" + _fields[1] + "' is listed twice");
        UQDirectoryController controller;
        controller.sName = CString::FromUtf8(_fields[1]);
        controller.sDisplayName = CString::FromUtf8(_fields[2]);
        controller.bMarked = _fields[3] == "primary" ? 1 : 0;
        m_rResult.controllers.push_back(controller);
    }

    void mf_bad(unsigned _uLine, const std::string& _sWhat) {
        CString sDetail;
        sDetail.Format(L"%s:%u: %s", m_sName, _uLine, CString::FromUtf8(_sWhat));
        m_rResult.errors.emplace_back(UQErrnoData(UQErrno::_E_::Format), sDetail);
    }

    CString m_sName;
    UQDirectoryFile::Result& m_rResult;
    std::set<std::string> m_names;
};

[[noreturn]] void fileFailure(const wchar_t* _pszFunction, const wchar_t* _pszFormat, const CString& _sFile,
                              const CString& _sDetail) {
    UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::File), _sDetail), _pszFunction, _pszFormat,
                         _sFile);
}

} // namespace

UQDirectoryFile::Result UQDirectoryFile::mf_readText(const std::string& _utf8Text, const CString& _sName) {
    Result result;
    Reader reader(_sName, result);
    std::size_t nStart = _utf8Text.compare(0, 3, "\xEF\xBB\xBF") == 0 ? 3 : 0;
    unsigned uLine = 0;
    while (nStart < _utf8Text.size()) {
        std::size_t nEnd = _utf8Text.find('\n', nStart);
        if (nEnd == std::string::npos)
            nEnd = _utf8Text.size();
        std::string sLine = _utf8Text.substr(nStart, nEnd - nStart);
        if (!sLine.empty() && sLine.back() == '\r')
            sLine.pop_back();
        reader.mf_line(sLine, ++uLine);
        nStart = nEnd + 1;
    }
    return result;
}

UQDirectoryFile::Result UQDirectoryFile::mf_read(const CString& _sFile) {
    static const wchar_t* const _sFunction_ = L"UQDirectoryFile::mf_read";
#if defined(_WIN32)
    FILE* pFile = _wfopen(_sFile, L"rb");
#else
    FILE* pFile = std::fopen(_sFile.ToUtf8().c_str(), "rb");
#endif
    const int nOpenError = errno;
    if (pFile == nullptr) {
        CString sDetail;
        // Worded as korarchiver words the files it cannot open.
        sDetail.Format(L"%s: cannot open: %s (errno %d)", _sFile,
                       CString::FromUtf8(std::error_code(nOpenError, std::generic_category()).message()),
                       nOpenError);
        fileFailure(_sFunction_, L"Failure opening directory file '%s'", _sFile, sDetail);
    }
    const UQStdFile file(pFile);
    std::string sText;
    char buffer[65536];
    std::size_t nRead;
    while ((nRead = std::fread(buffer, 1, sizeof buffer, pFile)) > 0)
        sText.append(buffer, nRead);
    if (std::ferror(pFile) != 0) {
        CString sDetail;
        sDetail.Format(L"%s: read error", _sFile);
        fileFailure(_sFunction_, L"Failure reading directory file '%s'", _sFile, sDetail);
    }
    return mf_readText(sText, _sFile);
}
