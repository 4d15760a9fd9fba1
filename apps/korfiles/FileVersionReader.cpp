#include "FileVersionReader.h"

#include "kor/archiver/TextFile.h"

#include <cstdio>

namespace {

const std::uint64_t kMaxVersion = 0xFFFFFFFFull;
const std::uint64_t kMaxSize = 0x7FFFFFFFFFFFFFFFull;
const char* const kTimeForm = "YYYY-MM-DD HH:MM:SS[.mmm]";

// Cut: a malformed field may be megabytes long.
std::string quoted(const std::string& s) {
    return "'" + kortext::echoed(s) + "'";
}

// Byte offset of the first byte that does not belong to a well-formed UTF-8 sequence (overlong forms,
// surrogates and code points above U+10FFFF included), or npos.
std::size_t findInvalidUtf8(const std::string& s) {
    const auto* p = reinterpret_cast<const unsigned char*>(s.data());
    const std::size_t n = s.size();
    std::size_t i = 0;
    while (i < n) {
        const unsigned char c = p[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        std::size_t extra;
        std::uint32_t cp;
        std::uint32_t min;
        if ((c & 0xE0) == 0xC0) {
            extra = 1;
            cp = c & 0x1Fu;
            min = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            cp = c & 0x0Fu;
            min = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            cp = c & 0x07u;
            min = 0x10000;
        } else {
            return i;
        }
        if (n - i <= extra)
            return i;
        for (std::size_t k = 1; k <= extra; ++k) {
            if ((p[i + k] & 0xC0) != 0x80)
                return i;
            cp = (cp << 6) | (p[i + k] & 0x3Fu);
        }
        if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF))
            return i;
        i += extra + 1;
    }
    return std::string::npos;
}

std::string hexByte(unsigned char c) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "0x%02X", static_cast<unsigned>(c));
    return buffer;
}

// Spaces around a field are layout, not data; tabs never reach here as they separate the fields.
std::string trimSpaces(const std::string& s) {
    const std::size_t first = s.find_first_not_of(' ');
    if (first == std::string::npos)
        return std::string();
    return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> splitFields(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = line.find('\t', start);
        if (tab == std::string::npos) {
            fields.push_back(trimSpaces(line.substr(start)));
            return fields;
        }
        fields.push_back(trimSpaces(line.substr(start, tab - start)));
        start = tab + 1;
    }
}

enum class Number { Ok, NotNumber, Negative, TooLarge };

// Plain decimal digits with an optional leading minus, which is reported rather than accepted.
Number parseNumber(const std::string& s, std::uint64_t max, std::uint64_t& value) {
    std::size_t i = 0;
    const bool negative = !s.empty() && s[0] == '-';
    if (negative)
        i = 1;
    if (i == s.size())
        return Number::NotNumber;
    std::uint64_t v = 0;
    bool tooLarge = false;
    for (; i < s.size(); ++i) {
        if (s[i] < '0' || s[i] > '9')
            return Number::NotNumber;
        const unsigned digit = static_cast<unsigned>(s[i] - '0');
        if (tooLarge || v > (max - digit) / 10)
            tooLarge = true;
        else
            v = v * 10 + digit;
    }
    if (negative)
        return Number::Negative;
    if (tooLarge)
        return Number::TooLarge;
    value = v;
    return Number::Ok;
}

bool isDigits(const std::string& s, std::size_t pos, std::size_t count) {
    for (std::size_t i = pos; i < pos + count; ++i) {
        if (s[i] < '0' || s[i] > '9')
            return false;
    }
    return true;
}

WORD digitsValue(const std::string& s, std::size_t pos, std::size_t count) {
    unsigned v = 0;
    for (std::size_t i = pos; i < pos + count; ++i)
        v = v * 10 + static_cast<unsigned>(s[i] - '0');
    return static_cast<WORD>(v);
}

bool isLeapYear(unsigned year) {
    return (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
}

// Month lengths are checked here as well as by SystemTimeToFileTime, as Wine's version takes 29 February
// of any year.
bool isCalendarTime(const SYSTEMTIME& st) {
    static const WORD kDays[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (st.wMonth < 1 || st.wMonth > 12 || st.wDay < 1 || st.wHour > 23 || st.wMinute > 59 || st.wSecond > 59)
        return false;
    const WORD days = st.wMonth == 2 && isLeapYear(st.wYear) ? 29 : kDays[st.wMonth - 1];
    return st.wDay <= days;
}

std::string asciiLower(std::string s) {
    for (char& c : s) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return s;
}

} // namespace

int FileVersionReader::mf_parseTime(const std::string& text, UQFileTime& time, std::string& problem) {
    const bool withMilliseconds = text.size() == 23;
    if ((text.size() != 19 && !withMilliseconds) || !isDigits(text, 0, 4) || text[4] != '-' ||
        !isDigits(text, 5, 2) || text[7] != '-' || !isDigits(text, 8, 2) || text[10] != ' ' ||
        !isDigits(text, 11, 2) || text[13] != ':' || !isDigits(text, 14, 2) || text[16] != ':' ||
        !isDigits(text, 17, 2) || (withMilliseconds && (text[19] != '.' || !isDigits(text, 20, 3)))) {
        problem = "last write time " + quoted(text) + " is not in the form " + kTimeForm;
        return 0;
    }
    SYSTEMTIME st = {};
    st.wYear = digitsValue(text, 0, 4);
    st.wMonth = digitsValue(text, 5, 2);
    st.wDay = digitsValue(text, 8, 2);
    st.wHour = digitsValue(text, 11, 2);
    st.wMinute = digitsValue(text, 14, 2);
    st.wSecond = digitsValue(text, 17, 2);
    st.wMilliseconds = withMilliseconds ? digitsValue(text, 20, 3) : 0;
    FILETIME ft;
    // The system adds the range of FILETIME: nothing before 1601.
    if (!isCalendarTime(st) || !SystemTimeToFileTime(&st, &ft)) {
        problem = "last write time " + quoted(text) + " is not a valid date and time";
        return 0;
    }
    time = UQFileTime(ft);
    return 1;
}

int FileVersionReader::mf_parseLine(const std::string& line, FileVersionRecord& record,
                                    std::string& problem) {
    problem.clear();
    const std::size_t invalid = findInvalidUtf8(line);
    if (invalid != std::string::npos) {
        problem = "not valid UTF-8 (byte " + hexByte(static_cast<unsigned char>(line[invalid])) +
                  " at column " + std::to_string(invalid + 1) + ")";
        return 0;
    }
    for (std::size_t i = 0; i < line.size(); ++i) {
        const auto c = static_cast<unsigned char>(line[i]);
        if ((c < 0x20 && c != '\t') || c == 0x7F) {
            problem = "control character " + hexByte(c) + " at column " + std::to_string(i + 1);
            return 0;
        }
    }
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string::npos || line[first] == '#')
        return 0;

    const std::vector<std::string> fields = splitFields(line);
    static const char* const kMissing[] = {"", "missing version, size and last write time",
                                           "missing size and last write time", "missing last write time"};
    if (fields.size() < 4) {
        problem = kMissing[fields.size()];
        return 0;
    }
    if (fields.size() > 6) {
        problem = "too many fields: " + std::to_string(fields.size()) + " (at most 6)";
        return 0;
    }

    FileVersionRecord r;
    if (fields[0].empty()) {
        problem = "missing path";
        return 0;
    }
    r.sPath = CString::FromUtf8(fields[0]);

    std::uint64_t value = 0;
    if (fields[1].empty()) {
        problem = "missing version";
        return 0;
    }
    switch (parseNumber(fields[1], kMaxVersion, value)) {
    case Number::Ok:
        r.uVersion = static_cast<std::uint32_t>(value);
        break;
    case Number::NotNumber:
        problem = "version " + quoted(fields[1]) + " is not a whole number";
        return 0;
    case Number::Negative:
    case Number::TooLarge:
        problem = "version " + quoted(fields[1]) + " is out of range (0 to 4294967295)";
        return 0;
    }

    if (fields[2].empty()) {
        problem = "missing size";
        return 0;
    }
    switch (parseNumber(fields[2], kMaxSize, value)) {
    case Number::Ok:
        r.size = UQFileSize(static_cast<std::int64_t>(value));
        break;
    case Number::NotNumber:
        problem = "size " + quoted(fields[2]) + " is not a whole number of bytes";
        return 0;
    case Number::Negative:
        problem = "size " + quoted(fields[2]) + " is negative";
        return 0;
    case Number::TooLarge:
        problem = "size " + quoted(fields[2]) + " is too large (at most 9223372036854775807)";
        return 0;
    }

    if (fields[3].empty()) {
        problem = "missing last write time";
        return 0;
    }
    if (!mf_parseTime(fields[3], r.lastWriteTime, problem))
        return 0;

    if (fields.size() > 4)
        r.sResult = CString::FromUtf8(fields[4]);
    if (fields.size() > 5 && !fields[5].empty()) {
        const std::string severity = asciiLower(fields[5]);
        if (severity == "info")
            r.severity = UQSeverity::Info;
        else if (severity == "warning")
            r.severity = UQSeverity::Warning;
        else if (severity == "error")
            r.severity = UQSeverity::Error;
        else {
            problem = "severity " + quoted(fields[5]) + " is not info, warning or error";
            return 0;
        }
    }
    record = r;
    return 1;
}

int FileVersionReader::mf_read(const std::string& text, std::vector<FileVersionRecord>& records,
                               ProblemSink& problems, ProgressSink* _pProgress) {
    std::size_t pos = 0;
    int lineNumber = 0;
    int malformed = 0;
    while (pos < text.size()) {
        ++lineNumber;
        std::size_t end = text.find('\n', pos);
        const std::size_t next = end == std::string::npos ? text.size() : end + 1;
        if (end == std::string::npos)
            end = text.size();
        if (end > pos && text[end - 1] == '\r')
            --end;
        // A byte order mark marks the encoding, never data: one at the start of any line, not only the
        // first, is where two files were joined.
        if (text.compare(pos, 3, "\xEF\xBB\xBF") == 0 && end - pos >= 3)
            pos += 3;
        FileVersionRecord record;
        std::string problem;
        if (mf_parseLine(text.substr(pos, end - pos), record, problem)) {
            record.nLine = lineNumber;
            records.push_back(record);
        } else if (!problem.empty()) {
            ++malformed;
            problems.mf_onProblem(lineNumber, problem);
        }
        pos = next;
        if (_pProgress != nullptr && lineNumber % 4096 == 0)
            _pProgress->mf_onProgress(static_cast<std::uint64_t>(lineNumber), pos);
    }
    return malformed;
}
