#include "FileVersionReader.h"

#include "kor/archiver/TextFile.h"

#include <cstdio>

namespace {

const std::uint64_t MAX_VERSION = 0xFFFFFFFFull;
const std::uint64_t MAX_SIZE = 0x7FFFFFFFFFFFFFFFull;
const char* const TIME_FORM = "YYYY-MM-DD HH:MM:SS[.mmm]";

// Cut: a malformed field may be megabytes long.
std::string quoted(const std::string& _sS) {
    return "'" + kortext::echoed(_sS) + "'";
}

std::string hexByte(unsigned char _uC) {
    char buffer[8];
    std::snprintf(buffer, sizeof buffer, "0x%02X", static_cast<unsigned>(_uC));
    return buffer;
}

// Spaces around a field are layout, not data; tabs never reach here as they separate the fields.
std::string trimSpaces(const std::string& _sS) {
    const std::size_t first = _sS.find_first_not_of(' ');
    if (first == std::string::npos)
        return std::string();
    return _sS.substr(first, _sS.find_last_not_of(' ') - first + 1);
}

std::vector<std::string> splitFields(const std::string& _sLine) {
    std::vector<std::string> fields;
    std::size_t start = 0;
    for (;;) {
        const std::size_t tab = _sLine.find('\t', start);
        if (tab == std::string::npos) {
            fields.push_back(trimSpaces(_sLine.substr(start)));
            return fields;
        }
        fields.push_back(trimSpaces(_sLine.substr(start, tab - start)));
        start = tab + 1;
    }
}

enum class Number { Ok, NotNumber, Negative, TooLarge };

// Plain decimal digits with an optional leading minus, which is reported rather than accepted.
Number parseNumber(const std::string& _sS, std::uint64_t _uMax, std::uint64_t& _ruValue) {
    std::size_t i = 0;
    const bool negative = !_sS.empty() && _sS[0] == '-';
    if (negative)
        i = 1;
    if (i == _sS.size())
        return Number::NotNumber;
    std::uint64_t v = 0;
    bool tooLarge = false;
    for (; i < _sS.size(); ++i) {
        if (_sS[i] < '0' || _sS[i] > '9')
            return Number::NotNumber;
        const unsigned digit = static_cast<unsigned>(_sS[i] - '0');
        if (tooLarge || v > (_uMax - digit) / 10)
            tooLarge = true;
        else
            v = v * 10 + digit;
    }
    if (negative)
        return Number::Negative;
    if (tooLarge)
        return Number::TooLarge;
    _ruValue = v;
    return Number::Ok;
}

bool isDigits(const std::string& _sS, std::size_t _nPos, std::size_t _nCount) {
    for (std::size_t i = _nPos; i < _nPos + _nCount; ++i) {
        if (_sS[i] < '0' || _sS[i] > '9')
            return false;
    }
    return true;
}

WORD digitsValue(const std::string& _sS, std::size_t _nPos, std::size_t _nCount) {
    unsigned v = 0;
    for (std::size_t i = _nPos; i < _nPos + _nCount; ++i)
        v = v * 10 + static_cast<unsigned>(_sS[i] - '0');
    return static_cast<WORD>(v);
}

bool isLeapYear(unsigned _uYear) {
    return (_uYear % 4 == 0 && _uYear % 100 != 0) || _uYear % 400 == 0;
}

// Month lengths are checked here as well as by SystemTimeToFileTime, as Wine's version takes 29 February
// of any year.
bool isCalendarTime(const SYSTEMTIME& _st) {
    static const WORD DAYS[12] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if (_st.wMonth < 1 || _st.wMonth > 12 || _st.wDay < 1 || _st.wHour > 23 || _st.wMinute > 59 ||
        _st.wSecond > 59)
        return false;
    const WORD days = _st.wMonth == 2 && isLeapYear(_st.wYear) ? 29 : DAYS[_st.wMonth - 1];
    return _st.wDay <= days;
}

std::string asciiLower(std::string _sS) {
    for (char& c : _sS) {
        if (c >= 'A' && c <= 'Z')
            c = static_cast<char>(c - 'A' + 'a');
    }
    return _sS;
}

} // namespace

int FileVersionReader::mf_parseTime(const std::string& _sText, UQFileTime& _rTime, std::string& _rProblem) {
    const bool withMilliseconds = _sText.size() == 23;
    if ((_sText.size() != 19 && !withMilliseconds) || !isDigits(_sText, 0, 4) || _sText[4] != '-' ||
        !isDigits(_sText, 5, 2) || _sText[7] != '-' || !isDigits(_sText, 8, 2) || _sText[10] != ' ' ||
        !isDigits(_sText, 11, 2) || _sText[13] != ':' || !isDigits(_sText, 14, 2) || _sText[16] != ':' ||
        !isDigits(_sText, 17, 2) || (withMilliseconds && (_sText[19] != '.' || !isDigits(_sText, 20, 3)))) {
        _rProblem = "last write time " + quoted(_sText) + " is not in the form " + TIME_FORM;
        return 0;
    }
    SYSTEMTIME st = {};
    st.wYear = digitsValue(_sText, 0, 4);
    st.wMonth = digitsValue(_sText, 5, 2);
    st.wDay = digitsValue(_sText, 8, 2);
    st.wHour = digitsValue(_sText, 11, 2);
    st.wMinute = digitsValue(_sText, 14, 2);
    st.wSecond = digitsValue(_sText, 17, 2);
    st.wMilliseconds = withMilliseconds ? digitsValue(_sText, 20, 3) : 0;
    FILETIME ft;
    // The system adds the range of FILETIME: nothing before 1601.
    if (!isCalendarTime(st) || !SystemTimeToFileTime(&st, &ft)) {
        _rProblem = "last write time " + quoted(_sText) + " is not a valid date and time";
        return 0;
    }
    _rTime = UQFileTime(ft);
    return 1;
}

int FileVersionReader::mf_parseLine(const std::string& _sLine, FileVersionRecord& _rRecord,
                                    std::string& _rProblem) {
    _rProblem.clear();
    const std::size_t invalid = kortext::findInvalidUtf8(_sLine);
    if (invalid != std::string::npos) {
        _rProblem = "not valid UTF-8 (byte " + hexByte(static_cast<unsigned char>(_sLine[invalid])) +
                    " at column " + std::to_string(invalid + 1) + ") in '" + kortext::escapedBytes(_sLine) +
                    "'";
        return 0;
    }
    for (std::size_t i = 0; i < _sLine.size(); ++i) {
        const auto c = static_cast<unsigned char>(_sLine[i]);
        if ((c < 0x20 && c != '\t') || c == 0x7F) {
            _rProblem = "control character " + hexByte(c) + " at column " + std::to_string(i + 1);
            return 0;
        }
    }
    const std::size_t first = _sLine.find_first_not_of(" \t");
    if (first == std::string::npos || _sLine[first] == '#')
        return 0;

    const std::vector<std::string> fields = splitFields(_sLine);
    static const char* const MISSING[] = {"", "missing version, size and last write time",
                                          "missing size and last write time", "missing last write time"};
    if (fields.size() < 4) {
        _rProblem = MISSING[fields.size()];
        return 0;
    }
    if (fields.size() > 6) {
        _rProblem = "too many fields: " + std::to_string(fields.size()) + " (at most 6)";
        return 0;
    }

    FileVersionRecord r;
    if (fields[0].empty()) {
        _rProblem = "missing path";
        return 0;
    }
    r.sPath = CString::FromUtf8(fields[0]);

    std::uint64_t value = 0;
    if (fields[1].empty()) {
        _rProblem = "missing version";
        return 0;
    }
    switch (parseNumber(fields[1], MAX_VERSION, value)) {
    case Number::Ok:
        r.uVersion = static_cast<std::uint32_t>(value);
        break;
    case Number::NotNumber:
        _rProblem = "version " + quoted(fields[1]) + " is not a whole number";
        return 0;
    case Number::Negative:
    case Number::TooLarge:
        _rProblem = "version " + quoted(fields[1]) + " is out of range (0 to 4294967295)";
        return 0;
    }

    if (fields[2].empty()) {
        _rProblem = "missing size";
        return 0;
    }
    switch (parseNumber(fields[2], MAX_SIZE, value)) {
    case Number::Ok:
        r.size = UQFileSize(static_cast<std::int64_t>(value));
        break;
    case Number::NotNumber:
        _rProblem = "size " + quoted(fields[2]) + " is not a whole number of bytes";
        return 0;
    case Number::Negative:
        _rProblem = "size " + quoted(fields[2]) + " is negative";
        return 0;
    case Number::TooLarge:
        _rProblem = "size " + quoted(fields[2]) + " is too large (at most 9223372036854775807)";
        return 0;
    }

    if (fields[3].empty()) {
        _rProblem = "missing last write time";
        return 0;
    }
    if (!mf_parseTime(fields[3], r.lastWriteTime, _rProblem))
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
            _rProblem = "severity " + quoted(fields[5]) + " is not info, warning or error";
            return 0;
        }
    }
    _rRecord = r;
    return 1;
}

int FileVersionReader::mf_read(const std::string& _sText, std::vector<FileVersionRecord>& _rRecords,
                               ProblemSink& _rProblems, ProgressSink* _pProgress) {
    std::size_t pos = 0;
    int lineNumber = 0;
    int malformed = 0;
    while (pos < _sText.size()) {
        ++lineNumber;
        std::size_t end = _sText.find('\n', pos);
        const std::size_t next = end == std::string::npos ? _sText.size() : end + 1;
        if (end == std::string::npos)
            end = _sText.size();
        if (end > pos && _sText[end - 1] == '\r')
            --end;
        // A byte order mark marks the encoding, never data: one at the start of any line, not only the
        // first, is where two files were joined.
        if (_sText.compare(pos, 3, "\xEF\xBB\xBF") == 0 && end - pos >= 3)
            pos += 3;
        FileVersionRecord record;
        std::string problem;
        if (mf_parseLine(_sText.substr(pos, end - pos), record, problem)) {
            record.nLine = lineNumber;
            _rRecords.push_back(record);
        } else if (!problem.empty()) {
            ++malformed;
            _rProblems.mf_onProblem(lineNumber, problem);
        }
        pos = next;
        if (_pProgress != nullptr && lineNumber % 4096 == 0)
            _pProgress->mf_onProgress(static_cast<std::uint64_t>(lineNumber), pos);
    }
    return malformed;
}
