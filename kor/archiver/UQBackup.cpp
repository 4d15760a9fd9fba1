#include "interfaces/korarchiver.h"
#include "kor/archiver/TextFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#if !defined(_WIN32)
#include <sys/stat.h>
#endif

namespace {

// What a line may hold at most, its end not counted.
const std::size_t MAX_LINE_BYTES = 1024;

enum class ValueKind { TEXT, YES_NO, NUMBER, CHOICE };

struct OptionRule {
    const wchar_t* pszName;
    ValueKind kind;
    long lMin;
    long lMax;
    const wchar_t* pszChoices; // for CHOICE: the words, '|' between them
    bool bRepeatable;
};

// The options the backup client reads.
const OptionRule RULES[] = {
    {L"SERVER", ValueKind::TEXT, 1, 255, nullptr, false},
    {L"PORT", ValueKind::NUMBER, 1, 65535, nullptr, false},
    {L"NODE", ValueKind::TEXT, 1, 64, nullptr, false},
    {L"PASSWORD_ACCESS", ValueKind::CHOICE, 0, 0, L"PROMPT|GENERATE", false},
    {L"COMPRESSION", ValueKind::YES_NO, 0, 0, nullptr, false},
    {L"SUBDIRECTORIES", ValueKind::YES_NO, 0, 0, nullptr, false},
    {L"RETRY_COUNT", ValueKind::NUMBER, 0, 100, nullptr, false},
    {L"SESSIONS", ValueKind::NUMBER, 1, 10, nullptr, false},
    {L"LOG_FILE", ValueKind::TEXT, 1, 260, nullptr, false},
    {L"INCLUDE", ValueKind::TEXT, 1, 1024, nullptr, true},
    {L"EXCLUDE", ValueKind::TEXT, 1, 1024, nullptr, true},
};

[[noreturn]] void fail(const UQErrnoValue& _category, const CString& _sDetail) {
    throw UQErrno(UQErrnoData(_category), _sDetail);
}

[[noreturn]] void failAt(const CString& _sFile, int _nLine, const CString& _sWhat) {
    CString sDetail;
    sDetail.Format(L"%s, line %d: %s", _sFile, _nLine, _sWhat);
    fail(UQErrno::_E_::Format, sDetail);
}

// Outside text shown in a message: at most 80 characters.
CString shown(const CString& _sText) {
    return _sText.GetLength() > 80 ? _sText.Left(80) + L"..." : _sText;
}

const OptionRule* ruleOf(const CString& _sName) {
    for (const OptionRule& rule : RULES) {
        if (_sName == rule.pszName)
            return &rule;
    }
    return nullptr;
}

bool isNameCharacter(wchar_t _c) {
    return (_c >= L'A' && _c <= L'Z') || (_c >= L'a' && _c <= L'z') || (_c >= L'0' && _c <= L'9') ||
           _c == L'_';
}

// Why the value is not one the option takes, or empty when it is.
CString checkValue(const OptionRule& _rule, const CString& _sValue) {
    CString sWhy;
    CString sUpper(_sValue);
    sUpper.MakeUpper();
    switch (_rule.kind) {
    case ValueKind::TEXT:
        if (_sValue.GetLength() < _rule.lMin || _sValue.GetLength() > _rule.lMax)
            sWhy.Format(L"option %s takes a text of %ld to %ld characters", _rule.pszName, _rule.lMin,
                        _rule.lMax);
        break;
    case ValueKind::YES_NO:
        if (sUpper != L"YES" && sUpper != L"NO")
            sWhy.Format(L"option %s takes YES or NO, not '%s'", _rule.pszName, shown(_sValue));
        break;
    case ValueKind::NUMBER: {
        bool bDigits = !_sValue.IsEmpty() && _sValue.GetLength() <= 9;
        for (int i = 0; bDigits && i < _sValue.GetLength(); ++i)
            bDigits = _sValue[i] >= L'0' && _sValue[i] <= L'9';
        const long lValue = bDigits ? std::wcstol(_sValue, nullptr, 10) : -1;
        if (!bDigits || lValue < _rule.lMin || lValue > _rule.lMax)
            sWhy.Format(L"option %s takes a number from %ld to %ld, not '%s'", _rule.pszName, _rule.lMin,
                        _rule.lMax, shown(_sValue));
        break;
    }
    case ValueKind::CHOICE: {
        const CString sChoices(_rule.pszChoices);
        const CString sBounded = L"|" + sChoices + L"|";
        if (sUpper.IsEmpty() || sUpper.Find(L'|') >= 0 || sBounded.Find(L"|" + sUpper + L"|") < 0) {
            CString sList(sChoices);
            sList.Replace(L"|", L" or ");
            sWhy.Format(L"option %s takes %s, not '%s'", _rule.pszName, sList, shown(_sValue));
        }
        break;
    }
    }
    return sWhy;
}

// The file's bytes; a file that cannot be opened or read (a folder among them) is a File error.
std::string readFile(const CString& _sFile) {
    std::string bytes;
    CString sWhy;
#if defined(_WIN32)
    const DWORD dwAttributes = GetFileAttributesW(_sFile);
    if (dwAttributes != INVALID_FILE_ATTRIBUTES && (dwAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        sWhy = L"is a folder";
    FILE* f = sWhy.IsEmpty() ? _wfopen(_sFile, L"rb") : nullptr;
#else
    struct stat st;
    CString sLocal(_sFile);
    if (::stat(sLocal.ToUtf8().c_str(), &st) == 0 && S_ISDIR(st.st_mode))
        sWhy = L"is a folder";
    FILE* f = sWhy.IsEmpty() ? std::fopen(sLocal.ToUtf8().c_str(), "rb") : nullptr;
#endif
    const int nOpenError = errno;
    if (f == nullptr) {
        if (sWhy.IsEmpty())
            sWhy.Format(L"cannot be opened: %s", CString::FromUtf8(std::strerror(nOpenError)));
        CString sDetail;
        sDetail.Format(L"%s: %s", _sFile, sWhy);
        fail(UQErrno::_E_::File, sDetail);
    }
    char buffer[4096];
    std::size_t uRead = 0;
    while ((uRead = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        bytes.append(buffer, uRead);
    const bool bFailed = std::ferror(f) != 0;
    std::fclose(f);
    if (bFailed) {
        CString sDetail;
        sDetail.Format(L"%s: cannot be read", _sFile);
        fail(UQErrno::_E_::File, sDetail);
    }
    return bytes;
}

// One line's text, or a Format error naming the line.
CString decodeLine(const CString& _sFile, int _nLine, const std::string& _line) {
    if (_line.size() > MAX_LINE_BYTES) {
        CString sWhat;
        sWhat.Format(L"the line is longer than %lu bytes", static_cast<unsigned long>(MAX_LINE_BYTES));
        failAt(_sFile, _nLine, sWhat);
    }
    if (!kortext::isUtf8(_line))
        failAt(_sFile, _nLine, L"the line is not UTF-8 text");
    const CString sText = CString::FromUtf8(_line);
    for (int i = 0; i < sText.GetLength(); ++i) {
        if (sText[i] < 0x20 && sText[i] != L'\t')
            failAt(_sFile, _nLine, L"the line holds a control character");
    }
    return sText;
}

std::vector<std::pair<CString, CString>> parse(const CString& _sFile, const std::string& _bytes) {
    std::vector<std::pair<CString, CString>> options;
    std::vector<int> firstLines;
    std::size_t uStart = 0;
    if (_bytes.compare(0, 3, "\xEF\xBB\xBF") == 0)
        uStart = 3;
    int nLine = 0;
    while (uStart < _bytes.size()) {
        std::size_t uEnd = _bytes.find('\n', uStart);
        if (uEnd == std::string::npos)
            uEnd = _bytes.size();
        std::string line = _bytes.substr(uStart, uEnd - uStart);
        uStart = uEnd + 1;
        ++nLine;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        CString sLine = decodeLine(_sFile, nLine, line);
        sLine.Trim();
        if (sLine.IsEmpty() || sLine[0] == L'*' || sLine[0] == L'#')
            continue;
        int nNameEnd = 0;
        while (nNameEnd < sLine.GetLength() && isNameCharacter(sLine[nNameEnd]))
            ++nNameEnd;
        CString sName = sLine.Left(nNameEnd);
        if (sName.IsEmpty() ||
            (nNameEnd < sLine.GetLength() && sLine[nNameEnd] != L' ' && sLine[nNameEnd] != L'\t'))
            failAt(_sFile, nLine, L"an option line is NAME value");
        sName.MakeUpper();
        const OptionRule* pRule = ruleOf(sName);
        if (pRule == nullptr)
            failAt(_sFile, nLine, L"unknown option '" + shown(sLine.Left(nNameEnd)) + L"'");
        CString sValue = sLine.Mid(nNameEnd);
        sValue.Trim();
        if (sValue.GetLength() >= 2 && sValue[0] == L'"' && sValue[sValue.GetLength() - 1] == L'"')
            sValue = sValue.Mid(1, sValue.GetLength() - 2);
        const CString sWhy = checkValue(*pRule, sValue);
        if (!sWhy.IsEmpty())
            failAt(_sFile, nLine, sWhy);
        if (!pRule->bRepeatable) {
            for (std::size_t i = 0; i < options.size(); ++i) {
                if (options[i].first == sName) {
                    CString sWhat;
                    sWhat.Format(L"option %s is given again (first at line %d)", pRule->pszName,
                                 firstLines[i]);
                    failAt(_sFile, nLine, sWhat);
                }
            }
        }
        options.emplace_back(sName, sValue);
        firstLines.push_back(nLine);
    }
    if (options.empty()) {
        CString sDetail;
        sDetail.Format(L"%s: holds no option", _sFile);
        fail(UQErrno::_E_::Format, sDetail);
    }
    return options;
}

} // namespace

UQBackupOptions::UQBackupOptions() = default;
UQBackupOptions::~UQBackupOptions() = default;

UQBackup::UQBackup(const UQBackend& _backend) : m_backend(_backend) {}
UQBackup::~UQBackup() = default;

UQBackup* UQBackup::mf_createInstance(const UQBackend& _backend) {
    if (_backend != UQBackend::VRS) {
        CString sDetail;
        sDetail.Format(L"no backup client for backend %d", _backend.mf_getValue());
        fail(UQErrno::_E_::Parameter, sDetail);
    }
    return new UQBackup(_backend);
}

void UQBackup::mf_deleteInstance(UQBackup* _pInstance) {
    if (_pInstance == nullptr)
        fail(UQErrno::_E_::Parameter, L"no backup instance to delete");
    delete _pInstance;
}

int UQBackup::mf_validateOptions(UQBackup* _pInstance, UQBackupOptions& _options, UQErrnoData& _rError) {
    try {
        if (_pInstance == nullptr)
            fail(UQErrno::_E_::Parameter, L"no backup instance");
        const CString& sFile = _options.mf_getOptionsFilePath();
        if (sFile.IsEmpty()) {
            _options.mf_setOptions({});
            return 1;
        }
        _options.mf_setOptions(parse(sFile, readFile(sFile)));
        return 1;
    } catch (const UQErrno& e) {
        _rError = e.mf_getData();
        throw;
    }
}
