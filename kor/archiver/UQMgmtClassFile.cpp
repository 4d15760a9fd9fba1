#include "interfaces/korarchiver.h"

#include "kor/KorReport.h"
#include "kor/archiver/TextFile.h"

#include "SampleMgmtClassText.h"

#include <cerrno>
#include <map>

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

bool isBlank(const std::string& _sLine) {
    return _sLine.find_first_not_of(" \t") == std::string::npos;
}

bool hasControlCharacter(const std::string& _sLine) {
    for (char c : _sLine) {
        const unsigned char u = static_cast<unsigned char>(c);
        if ((u < 0x20 && u != '\t') || u == 0x7F)
            return true;
    }
    return false;
}

bool isKey(const std::string& _sKey) {
    if (_sKey.empty())
        return false;
    for (char c : _sKey) {
        if (!((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9')))
            return false;
    }
    return true;
}

// "\n" in a comment stands for a line break.
CString commentText(const std::string& _sField) {
    if (_sField == "-")
        return CString();
    std::string sText;
    for (std::size_t i = 0; i < _sField.size(); ++i) {
        if (_sField[i] == '\\' && i + 1 < _sField.size() && _sField[i + 1] == 'n') {
            sText += "\r\n";
            ++i;
        } else {
            sText += _sField[i];
        }
    }
    return CString::FromUtf8(sText);
}

class Reader {
public:
    Reader(const CString& _sName, UQMgmtClassFile::Result& _rResult) : m_sName(_sName), m_rResult(_rResult) {}

    void mf_line(const std::string& _sLine, unsigned _uLine) {
        if (isBlank(_sLine) || _sLine[0] == '#')
            return;
        if (!kortext::isUtf8(_sLine))
            return mf_bad(_uLine, "invalid UTF-8");
        if (hasControlCharacter(_sLine))
            return mf_bad(_uLine, "control character");
        const std::vector<std::string> fields = splitTabs(_sLine);
        if (fields[0] == "@default")
            return mf_default(fields, _uLine);
        if (fields[0][0] == '@')
            return mf_bad(_uLine, "unknown directive '" + fields[0] + "'");
        mf_class(fields, _uLine);
    }

    void mf_finish() {
        if (!m_sDefault.IsEmpty() && m_lines.find(m_sDefault.ToUtf8()) == m_lines.end()) {
            mf_bad(m_uDefaultLine, "default class '" + m_sDefault.ToUtf8() + "' is not defined");
            m_sDefault.Empty();
        }
        m_rResult.sDefaultClass = m_sDefault;
    }

private:
    void mf_default(const std::vector<std::string>& _fields, unsigned _uLine) {
        if (_fields.size() != 2 || _fields[1].empty())
            return mf_bad(_uLine, "expected @default and one class name");
        if (m_uDefaultLine != 0)
            return mf_bad(_uLine,
                          "a second @default (the first is at line " + std::to_string(m_uDefaultLine) + ")");
        m_sDefault = CString::FromUtf8(_fields[1]);
        m_uDefaultLine = _uLine;
    }

    void mf_class(const std::vector<std::string>& _fields, unsigned _uLine) {
        if (_fields.size() < 5)
            return mf_bad(_uLine, "expected name, description, comment severity, comment and at least one "
                                  "attribute, found " +
                                      std::to_string(_fields.size()) + " fields");
        const std::string& sName = _fields[0];
        if (sName.empty())
            return mf_bad(_uLine, "empty class name");
        if (sName == "DEFAULT")
            return mf_bad(_uLine,
                          "the name DEFAULT stands for the default class; name the class and use @default");
        const auto it = m_lines.find(sName);
        if (it != m_lines.end())
            return mf_bad(_uLine, "class '" + sName + "' is defined twice (first at line " +
                                      std::to_string(it->second) + ")");
        UQSeverity severity = UQSeverity::Info;
        UQQueryMgmtClassData::CommentState eState = UQQueryMgmtClassData::COMMENT_ANSWERED;
        const std::string& sSeverity = _fields[2];
        if (sSeverity == "I")
            severity = UQSeverity::Info;
        else if (sSeverity == "W")
            severity = UQSeverity::Warning;
        else if (sSeverity == "E")
            severity = UQSeverity::Error;
        else if (sSeverity == "!")
            eState = UQQueryMgmtClassData::COMMENT_UNAVAILABLE;
        else
            return mf_bad(_uLine, "bad comment severity '" + sSeverity + "' (I, W, E or !)");
        UQAttributeList attributes;
        std::map<std::string, bool> keys;
        for (std::size_t i = 4; i < _fields.size(); ++i) {
            const std::size_t nEquals = _fields[i].find('=');
            const std::string sKey =
                nEquals == std::string::npos ? _fields[i] : _fields[i].substr(0, nEquals);
            if (nEquals == std::string::npos || !isKey(sKey))
                return mf_bad(_uLine, "bad attribute '" + _fields[i] + "' (key=value)");
            if (keys[sKey])
                return mf_bad(_uLine, "attribute '" + sKey + "' given twice");
            keys[sKey] = true;
            attributes.mf_addAttribute(CString::FromUtf8(sKey),
                                       CString::FromUtf8(_fields[i].substr(nEquals + 1)));
        }
        m_lines[sName] = _uLine;
        m_rResult.classes.emplace_back(CString::FromUtf8(sName), CString::FromUtf8(_fields[1]), attributes,
                                       severity, commentText(_fields[3]), eState);
    }

    void mf_bad(unsigned _uLine, const std::string& _sWhat) {
        CString sDetail;
        sDetail.Format(L"%s:%u: %s", m_sName, _uLine, CString::FromUtf8(_sWhat));
        m_rResult.errors.emplace_back(UQErrnoData(UQErrno::_E_::Format), sDetail);
    }

    CString m_sName;
    UQMgmtClassFile::Result& m_rResult;
    std::map<std::string, unsigned> m_lines;
    CString m_sDefault;
    unsigned m_uDefaultLine = 0;
};

} // namespace

const wchar_t* const UQMgmtClassFile::SAMPLE_NAME = L"<sample mgmtclasses.txt>";

const char* UQMgmtClassFile::mf_getSampleText() noexcept {
    return reinterpret_cast<const char*>(SAMPLE_MGMT_CLASSES);
}

UQMgmtClassFile::Result UQMgmtClassFile::mf_readText(const std::string& _utf8Text, const CString& _sName) {
    Result result;
    Reader reader(_sName, result);
    std::size_t nStart = 0;
    if (_utf8Text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        nStart = 3;
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
    reader.mf_finish();
    return result;
}

UQMgmtClassFile::Result UQMgmtClassFile::mf_read(const CString& _sFile) {
    static const wchar_t* const _sFunction_ = L"UQMgmtClassFile::mf_read";
    const UQStdFile file(kortext::openForReading(_sFile, _sFunction_, L"management class file"));
    std::string sText;
    char buffer[65536];
    std::size_t nRead;
    while ((nRead = std::fread(buffer, 1, sizeof buffer, file.mf_get())) > 0)
        sText.append(buffer, nRead);
    // Set by the read that failed, the last call before.
    const int nReadError = errno;
    if (std::ferror(file.mf_get()) != 0)
        UQKorReport::mf_fail(
            UQErrno(UQErrnoData(UQErrno::_E_::File), kortext::readErrorDetail(_sFile, nReadError)),
            _sFunction_, L"Failure reading management class file '%s'", _sFile);
    return mf_readText(sText, _sFile);
}
