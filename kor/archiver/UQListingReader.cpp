#include "interfaces/korarchiver.h"

#include "kor/archiver/TextFile.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>

namespace {

// How often a progress listener hears of the read.
const std::uint32_t PROGRESS_LINES = 4096;

std::vector<std::string> splitTabs(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
        if (tab == std::string::npos)
            return fields;
        start = tab + 1;
    }
}

// Blanks around a field are not part of it.
std::string trim(const std::string& s) {
    std::size_t a = 0, b = s.size();
    while (a < b && s[a] == ' ')
        ++a;
    while (b > a && s[b - 1] == ' ')
        --b;
    return s.substr(a, b - a);
}

// The first character that is neither a blank nor a tab; 0 for a blank line.
char firstNonBlank(const std::string& line) {
    const std::size_t i = line.find_first_not_of(" \t");
    return i == std::string::npos ? '\0' : line[i];
}

// Control characters other than the tab (a lone CR among them) have no place in a listing line: the
// position of the first one, or npos.
std::size_t findControlCharacter(const std::string& line) {
    for (std::size_t i = 0; i < line.size(); ++i) {
        const unsigned char u = static_cast<unsigned char>(line[i]);
        if ((u < 0x20 && u != '\t') || u == 0x7F)
            return i;
    }
    return std::string::npos;
}

enum class VersionParse { Ok, NotANumber, TooLarge };

// Decimal digits only; leading zeros are allowed, values above 2^32 - 1 are not.
VersionParse parseVersion(const std::string& text, std::uint32_t& version) {
    if (text.empty())
        return VersionParse::NotANumber;
    std::uint64_t v = 0;
    bool tooLarge = false;
    for (char c : text) {
        if (c < '0' || c > '9')
            return VersionParse::NotANumber;
        if (!tooLarge) {
            v = v * 10 + static_cast<unsigned>(c - '0');
            tooLarge = v > 0xFFFFFFFFull;
        }
    }
    if (tooLarge)
        return VersionParse::TooLarge;
    version = static_cast<std::uint32_t>(v);
    return VersionParse::Ok;
}

UQErrno lineError(const CString& name, std::uint32_t line, const wchar_t* what, const std::string& value) {
    CString detail;
    detail.Format(L"%s:%lu: %s '%s'", name, line, what, CString::FromUtf8(kortext::echoed(value)));
    return UQErrno(UQErrnoData(UQErrno::_E_::Format), detail);
}

} // namespace

UQListingReader::Result UQListingReader::mf_readText(const std::string& text, const CString& name,
                                                     UVListingFileReader& listener,
                                                     UVReadProgress* progress) {
    static const wchar_t* const _sFunction_ = L"UQListingReader::mf_readText";
    Result result;
    std::size_t start = 0;
    std::uint32_t lineNumber = 0;
    // The line that listed each version of a path first ("path\tversion"): the listener would merge a
    // repeated one into the item silently.
    std::unordered_map<std::string, std::uint32_t> firstLines;
    const CString stubText = UQString(UQErrno::_I_::StubFile.mf_getMessageNumber());
    while (start < text.size()) {
        const std::size_t end = text.find('\n', start);
        std::string line = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? text.size() : end + 1;
        ++lineNumber;
        if (progress != nullptr && lineNumber % PROGRESS_LINES == 0)
            progress->mf_onReadProgress(lineNumber, start, text.size());
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        kortext::skipByteOrderMark(line);
        const char first = firstNonBlank(line);
        if (first == '\0' || first == '#')
            continue;
        // A listing written in another encoding would give paths that name no file.
        if (!kortext::isUtf8(line)) {
            result.errors.push_back(lineError(name, lineNumber, L"invalid UTF-8 in", line));
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
            result.errors.push_back(lineError(name, lineNumber, what, shown));
            continue;
        }
        const std::vector<std::string> fields = splitTabs(line);
        if (fields.size() < 3 || fields.size() > 4) {
            result.errors.push_back(
                lineError(name, lineNumber, L"expected 3 or 4 tab-separated fields in", line));
            continue;
        }
        const std::string path = trim(fields[0]);
        std::uint32_t version = 0;
        if (path.empty()) {
            result.errors.push_back(lineError(name, lineNumber, L"empty path in", line));
            continue;
        }
        const VersionParse parsed = parseVersion(trim(fields[1]), version);
        if (parsed != VersionParse::Ok) {
            result.errors.push_back(lineError(
                name, lineNumber,
                parsed == VersionParse::TooLarge ? L"version number out of range" : L"bad version number",
                fields[1]));
            continue;
        }
        const auto known = firstLines.emplace(path + '\t' + std::to_string(version), lineNumber);
        if (!known.second) {
            CString detail;
            detail.Format(L"%s:%lu: version %lu of this path is already listed on line %lu", name, lineNumber,
                          version, known.first->second);
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
                result.errors.push_back(lineError(name, lineNumber, L"no result text for status", status));
                continue;
            }
            severity = status == "warning" ? UQSeverity::Warning : UQSeverity::Error;
            resultText = given;
        } else {
            result.errors.push_back(lineError(name, lineNumber, L"unknown status", status));
            continue;
        }
        try {
            listener.mf_onMigrationEntry(lineNumber, UQFileTime(0), CString::FromUtf8(path), version,
                                         resultText, severity);
            ++result.uEntries;
        } catch (const UQErrno& e) {
            CString detail;
            detail.Format(L"%s:%lu: entry refused: %s", name, lineNumber, e.mf_toString());
            result.errors.push_back(UQErrno(e.mf_getData(), detail));
        }
    }
    for (const UQErrno& e : result.errors) {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_W, _sFunction_, L"Listing line skipped: %s",
                               e.mf_getDetail());
    }
    return result;
}

UQListingReader::Result UQListingReader::mf_read(const CString& file, UVListingFileReader& listener,
                                                 UVReadProgress* progress) {
    static const wchar_t* const _sFunction_ = L"UQListingReader::mf_read";
    FILE* f = kortext::openForReading(file, _sFunction_, L"listing file");
    std::string text;
    char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        text.append(buffer, n);
    // Set by the read that failed, the last call before.
    const int readError = errno;
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_E, _sFunction_, L"Failure reading listing file '%s'", file);
        const CString detail = kortext::readErrorDetail(file, readError);
        throw UQErrno(UQErrnoData(UQErrno::_E_::File), detail);
    }
    return mf_readText(text, file, listener, progress);
}
