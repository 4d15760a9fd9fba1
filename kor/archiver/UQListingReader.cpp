#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

#include "kor/archiver/TextFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

namespace {

// How often a progress listener hears of the read.
const std::uint32_t PROGRESS_LINES = 4096;

std::vector<std::string> splitTabs(const std::string& _sLine) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = _sLine.find('\t', start);
        fields.push_back(_sLine.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
        if (tab == std::string::npos)
            return fields;
        start = tab + 1;
    }
}

// Blanks around a field are not part of it.
std::string trim(const std::string& _sS) {
    std::size_t a = 0, b = _sS.size();
    while (a < b && _sS[a] == ' ')
        ++a;
    while (b > a && _sS[b - 1] == ' ')
        --b;
    return _sS.substr(a, b - a);
}

// The first character that is neither a blank nor a tab; 0 for a blank line.
char firstNonBlank(const std::string& _sLine) {
    const std::size_t i = _sLine.find_first_not_of(" \t");
    return i == std::string::npos ? '\0' : _sLine[i];
}

// Control characters other than the tab (a lone CR among them) have no place in a listing line: the
// position of the first one, or npos.
std::size_t findControlCharacter(const std::string& _sLine) {
    for (std::size_t i = 0; i < _sLine.size(); ++i) {
        const unsigned char u = static_cast<unsigned char>(_sLine[i]);
        if ((u < 0x20 && u != '\t') || u == 0x7F)
            return i;
    }
    return std::string::npos;
}

enum class VersionParse { Ok, NotANumber, TooLarge };

// Decimal digits only; leading zeros are allowed, values above 2^32 - 1 are not.
VersionParse parseVersion(const std::string& _sText, std::uint32_t& _ruVersion) {
    if (_sText.empty())
        return VersionParse::NotANumber;
    std::uint64_t v = 0;
    bool tooLarge = false;
    for (char c : _sText) {
        if (c < '0' || c > '9')
            return VersionParse::NotANumber;
        if (!tooLarge) {
            v = v * 10 + static_cast<unsigned>(c - '0');
            tooLarge = v > 0xFFFFFFFFull;
        }
    }
    if (tooLarge)
        return VersionParse::TooLarge;
    _ruVersion = static_cast<std::uint32_t>(v);
    return VersionParse::Ok;
}

UQErrno lineError(const CString& _sName, std::uint32_t _uLine, const wchar_t* _pszWhat,
                  const std::string& _sValue) {
    CString detail;
    detail.Format(L"%s:%lu: %s '%s'", _sName, _uLine, _pszWhat, CString::FromUtf8(kortext::echoed(_sValue)));
    return UQErrno(UQErrnoData(UQErrno::_E_::Format), detail);
}

} // namespace

UQListingReader::Result UQListingReader::mf_readText(const std::string& _utf8Text, const CString& _sName,
                                                     UVListingFileReader& _rListener,
                                                     UVReadProgress* _pProgress) {
    static const wchar_t* const _sFunction_ = L"UQListingReader::mf_readText";
    Result result;
    std::size_t start = 0;
    std::uint32_t lineNumber = 0;
    // The line that listed each version of a path first ("path\tversion"): the listener would merge a
    // repeated one into the item silently.
    std::unordered_map<std::string, std::uint32_t> firstLines;
    const CString stubText = UQString(UQErrno::_I_::StubFile.mf_getMessageNumber());
    while (start < _utf8Text.size()) {
        const std::size_t end = _utf8Text.find('\n', start);
        std::string line =
            _utf8Text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? _utf8Text.size() : end + 1;
        ++lineNumber;
        if (_pProgress != nullptr && lineNumber % PROGRESS_LINES == 0)
            _pProgress->mf_onReadProgress(lineNumber, start, _utf8Text.size());
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        kortext::skipByteOrderMark(line);
        const char first = firstNonBlank(line);
        if (first == '\0' || first == '#')
            continue;
        // A listing written in another encoding would give paths that name no file.
        const std::size_t invalid = kortext::findInvalidUtf8(line);
        if (invalid != std::string::npos) {
            CString detail;
            detail.Format(L"%s:%lu: invalid UTF-8 (byte 0x%02X at column %lu) in '%s'", _sName, lineNumber,
                          static_cast<unsigned>(static_cast<unsigned char>(line[invalid])),
                          static_cast<std::uint32_t>(invalid + 1),
                          CString::FromUtf8(kortext::escapedBytes(line)));
            result.errors.push_back(UQErrno(UQErrnoData(UQErrno::_E_::Format), detail));
            continue;
        }
        const std::size_t control = findControlCharacter(line);
        if (control != std::string::npos) {
            // Named by code and column: the character itself would not show in the log.
            CString what;
            what.Format(L"control character 0x%02X at column %lu of line",
                        static_cast<unsigned>(line[control]), static_cast<std::uint32_t>(control + 1));
            std::string shown = line;
            for (std::size_t i = control; i < shown.size(); i = findControlCharacter(shown))
                shown[i] = '?';
            result.errors.push_back(lineError(_sName, lineNumber, what, shown));
            continue;
        }
        const std::vector<std::string> fields = splitTabs(line);
        if (fields.size() < 3 || fields.size() > 4) {
            result.errors.push_back(
                lineError(_sName, lineNumber, L"expected 3 or 4 tab-separated fields in", line));
            continue;
        }
        const std::string path = trim(fields[0]);
        std::uint32_t version = 0;
        if (path.empty()) {
            result.errors.push_back(lineError(_sName, lineNumber, L"empty path in", line));
            continue;
        }
        const VersionParse parsed = parseVersion(trim(fields[1]), version);
        if (parsed != VersionParse::Ok) {
            result.errors.push_back(lineError(
                _sName, lineNumber,
                parsed == VersionParse::TooLarge ? L"version number out of range" : L"bad version number",
                fields[1]));
            continue;
        }
        const auto known = firstLines.emplace(path + '\t' + std::to_string(version), lineNumber);
        if (!known.second) {
            CString detail;
            detail.Format(L"%s:%lu: version %lu of this path is already listed on line %lu", _sName,
                          lineNumber, version, known.first->second);
            result.errors.push_back(UQErrno(UQErrnoData(UQErrno::_E_::Format), detail));
            continue;
        }
        const std::string status = trim(fields[2]);
        const CString given = fields.size() == 4 ? CString::FromUtf8(trim(fields[3])) : CString();
        UQSeverity severity;
        CString resultText;
        if (status == "migrated") {
            severity = UQSeverity::Info;
            resultText = given.IsEmpty() ? CString(L"Migrated") : given;
        } else if (status == "stub") {
            severity = UQSeverity::Info;
            resultText = stubText;
        } else if (status == "warning" || status == "failed") {
            if (given.IsEmpty()) {
                result.errors.push_back(lineError(_sName, lineNumber, L"no result text for status", status));
                continue;
            }
            severity = status == "warning" ? UQSeverity::Warning : UQSeverity::Error;
            resultText = given;
        } else {
            result.errors.push_back(lineError(_sName, lineNumber, L"unknown status", status));
            continue;
        }
        try {
            _rListener.mf_onMigrationEntry(lineNumber, UQFileTime(0), CString::FromUtf8(path), version,
                                           resultText, severity);
            ++result.uEntries;
        } catch (const UQErrno& e) {
            CString detail;
            detail.Format(L"%s:%lu: entry refused: %s", _sName, lineNumber, e.mf_toString());
            result.errors.push_back(UQErrno(e.mf_getData(), detail));
        }
    }
    for (const UQErrno& e : result.errors) {
        UQKorReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Listing line skipped: %s", e.mf_getDetail());
    }
    return result;
}

UQListingReader::Result UQListingReader::mf_read(const CString& _sFile, UVListingFileReader& _rListener,
                                                 UVReadProgress* _pProgress) {
    static const wchar_t* const _sFunction_ = L"UQListingReader::mf_read";
    UQStdFile f(kortext::openForReading(_sFile, _sFunction_, L"listing file"));
    std::string text;
    char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f.mf_get())) > 0)
        text.append(buffer, n);
    // Set by the read that failed, the last call before.
    const int readError = errno;
    const bool failed = std::ferror(f.mf_get()) != 0;
    f.mf_reset();
    if (failed)
        UQKorReport::mf_fail(
            UQErrno(UQErrnoData(UQErrno::_E_::File), kortext::readErrorDetail(_sFile, readError)),
            _sFunction_, L"Failure reading listing file '%s'", _sFile);
    return mf_readText(text, _sFile, _rListener, _pProgress);
}
