#include "interfaces/korarchiver.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>

namespace {

struct Line {
    std::string text;
    std::uint32_t number;
};

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

std::string trim(const std::string& s) {
    std::size_t a = 0, b = s.size();
    while (a < b && (s[a] == ' ' || s[a] == '\r'))
        ++a;
    while (b > a && (s[b - 1] == ' ' || s[b - 1] == '\r'))
        --b;
    return s.substr(a, b - a);
}

bool parseVersion(const std::string& text, std::uint32_t& version) {
    if (text.empty() || text.size() > 10)
        return false;
    std::uint64_t v = 0;
    for (char c : text) {
        if (c < '0' || c > '9')
            return false;
        v = v * 10 + static_cast<unsigned>(c - '0');
    }
    if (v > 0xFFFFFFFFull)
        return false;
    version = static_cast<std::uint32_t>(v);
    return true;
}

UQErrno lineError(const CString& name, std::uint32_t line, const wchar_t* what, const std::string& value) {
    CString detail;
    detail.Format(L"%s:%lu: %s '%s'", name, line, what, CString::FromUtf8(value));
    return UQErrno(UQErrnoData(UQErrno::_E_::Format), detail);
}

} // namespace

UQListingReader::Result UQListingReader::mf_readText(const std::string& text, const CString& name,
                                                     UVListingFileReader& listener) {
    static const wchar_t* const _sFunction_ = L"UQListingReader::mf_readText";
    Result result;
    std::size_t start = 0;
    std::uint32_t lineNumber = 0;
    // A byte-order mark is no part of the first path.
    if (text.compare(0, 3, "\xEF\xBB\xBF") == 0)
        start = 3;
    const CString stubText = UQString(UQErrno::_I_::StubFile.mf_getMessageNumber());
    while (start < text.size()) {
        const std::size_t end = text.find('\n', start);
        std::string line = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        start = end == std::string::npos ? text.size() : end + 1;
        ++lineNumber;
        if (!line.empty() && line.back() == '\r')
            line.pop_back();
        if (trim(line).empty() || line[0] == '#')
            continue;
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
        if (!parseVersion(trim(fields[1]), version)) {
            result.errors.push_back(lineError(name, lineNumber, L"bad version number", fields[1]));
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

UQListingReader::Result UQListingReader::mf_read(const CString& file, UVListingFileReader& listener) {
    static const wchar_t* const _sFunction_ = L"UQListingReader::mf_read";
#if defined(_WIN32)
    FILE* f = _wfopen(file, L"rb");
#else
    FILE* f = std::fopen(file.ToUtf8().c_str(), "rb");
#endif
    const int openError = errno;
    if (f == nullptr) {
        CString detail;
        detail.Format(L"%s: cannot open (errno %d)", file, openError);
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_E, _sFunction_, L"Failure opening listing file '%s'", file);
        throw UQErrno(UQErrnoData(UQErrno::_E_::File), detail);
    }
    std::string text;
    char buffer[65536];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        text.append(buffer, n);
    const bool failed = std::ferror(f) != 0;
    std::fclose(f);
    if (failed) {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_E, _sFunction_, L"Failure reading listing file '%s'", file);
        CString detail;
        detail.Format(L"%s: read error", file);
        throw UQErrno(UQErrnoData(UQErrno::_E_::File), detail);
    }
    return mf_readText(text, file, listener);
}
