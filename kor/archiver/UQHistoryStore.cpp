#include "interfaces/korarchiver.h"
#include "kor/KorReport.h"

#include "kor/archiver/HistoryText.h"
#include "kor/archiver/TextFile.h"
#include "kor/archiver/UQStoredPathIndex.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#if defined(_WIN32)
#include <io.h>
#else
#include <sys/stat.h>
#endif

namespace {

const wchar_t* const SEARCH_FUNCTION = L"UQHistoryStore::mf_searchText";
constexpr std::size_t FIELD_COUNT = 8;
// How often a progress listener hears of the read.
constexpr std::uint32_t PROGRESS_LINES = 4096;

std::string trimBlanks(const std::string& _sS) {
    std::size_t a = 0, b = _sS.size();
    while (a < b && _sS[a] == ' ')
        ++a;
    while (b > a && _sS[b - 1] == ' ')
        --b;
    return _sS.substr(a, b - a);
}

bool parseUnsigned(const std::string& _sText, std::uint64_t _uMax, std::uint64_t& _ruValue) {
    if (_sText.empty() || _sText.size() > 20)
        return false;
    std::uint64_t v = 0;
    for (char c : _sText) {
        if (c < '0' || c > '9')
            return false;
        const unsigned digit = static_cast<unsigned>(c - '0');
        if (v > (_uMax - digit) / 10)
            return false;
        v = v * 10 + digit;
    }
    _ruValue = v;
    return true;
}

bool parseFlags(const std::string& _sText, std::uint32_t& _ruFlags) {
    _ruFlags = 0;
    if (_sText == "-")
        return true;
    if (_sText.empty())
        return false;
    for (char c : _sText) {
        std::uint32_t flag = 0;
        switch (c) {
        case 'S':
            flag = UQQueryData::FLAG_SECURITY;
            break;
        case 'A':
            flag = UQQueryData::FLAG_AD_STREAMS;
            break;
        case 'E':
            flag = UQQueryData::FLAG_EVENT_BASED;
            break;
        case 'P':
            flag = UQQueryData::FLAG_PROTECTED;
            break;
        case 'D':
            flag = UQQueryData::FLAG_DELETION_STARTED;
            break;
        default:
            return false;
        }
        if (_ruFlags & flag)
            return false;
        _ruFlags |= flag;
    }
    return true;
}

// The position of the first control character other than the tab, or npos.
std::size_t findControlCharacter(const std::string& _sText) {
    for (std::size_t i = 0; i < _sText.size(); ++i) {
        const unsigned u = static_cast<unsigned char>(_sText[i]);
        if ((u < 0x20 && u != '\t') || u == 0x7F)
            return i;
    }
    return std::string::npos;
}

// "volume:position".
bool parseAccessKey(const std::string& _sText, UQQueryData::AccessKey& _rKey) {
    const std::size_t colon = _sText.find(':');
    if (colon == std::string::npos)
        return false;
    std::uint64_t volume = 0, position = 0;
    if (!parseUnsigned(_sText.substr(0, colon), 0xFFFFFFFFull, volume) ||
        !parseUnsigned(_sText.substr(colon + 1), UINT64_MAX, position))
        return false;
    _rKey.uVolume = static_cast<std::uint32_t>(volume);
    _rKey.uPosition = position;
    return true;
}

// Turns store lines into records and hands the matching ones on.
class LineReader {
public:
    LineReader(const CString& _sName, const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
               const UQCancelSwitch* _pCancel, UQHistoryStore::Result& _rResult, UVReadProgress* _pProgress,
               std::uint64_t _uTotalBytes)
        : m_name(_sName), m_query(_query), m_sink(_rSink), m_cancel(_pCancel), m_result(_rResult), m_uLine(0),
          m_pProgress(_pProgress), m_uTotalBytes(_uTotalBytes), m_uFed(0) {
        if (!_query.sPattern.IsEmpty())
            m_pattern.reset(new UQPathPattern(_query.sPattern));
    }

    // The next piece of the text; lines may be split across pieces.
    void feed(const char* _pszData, std::size_t _nSize) {
        std::size_t start = 0;
        while (start < _nSize) {
            const void* found = std::memchr(_pszData + start, '\n', _nSize - start);
            if (found == nullptr) {
                m_carry.append(_pszData + start, _nSize - start);
                break;
            }
            const std::size_t end = static_cast<std::size_t>(static_cast<const char*>(found) - _pszData);
            if (m_carry.empty()) {
                line(std::string(_pszData + start, end - start));
            } else {
                m_carry.append(_pszData + start, end - start);
                std::string text;
                text.swap(m_carry);
                line(text);
            }
            start = end + 1;
            if (m_pProgress != nullptr && m_uLine % PROGRESS_LINES == 0)
                m_pProgress->mf_onReadProgress(m_uLine, m_uFed + start, m_uTotalBytes);
        }
        m_uFed += _nSize;
    }

    void finish() {
        if (!m_carry.empty()) {
            std::string text;
            text.swap(m_carry);
            line(text);
        }
    }

private:
    void line(std::string _sText) {
        ++m_uLine;
        if (m_cancel != nullptr && m_cancel->mf_isCancelled()) {
            UQKorReport::mf_log(UQLogData::LEVEL_W, SEARCH_FUNCTION, L"History search canceled at %s:%lu",
                                m_name, m_uLine);
            throw UQErrno(UQErrno::_W_::UserCanceled);
        }
        if (!_sText.empty() && _sText.back() == '\r')
            _sText.pop_back();
        kortext::skipByteOrderMark(_sText);
        if (_sText.empty() || _sText[0] == '#' || _sText.find_first_not_of(" \t") == std::string::npos)
            return;
        const std::size_t invalid = kortext::findInvalidUtf8(_sText);
        if (invalid != std::string::npos) {
            CString what;
            what.Format(L"invalid UTF-8 (byte 0x%02X at column %lu) in '%s'",
                        static_cast<unsigned>(static_cast<unsigned char>(_sText[invalid])),
                        static_cast<std::uint32_t>(invalid + 1),
                        CString::FromUtf8(kortext::escapedBytes(_sText)));
            return skip(what);
        }
        const std::size_t control = findControlCharacter(_sText);
        if (control != std::string::npos) {
            CString what;
            what.Format(L"control character 0x%02X at column %lu",
                        static_cast<unsigned>(static_cast<unsigned char>(_sText[control])),
                        static_cast<std::uint32_t>(control + 1));
            return skip(what);
        }
        std::vector<std::string> fields;
        std::size_t start = 0;
        for (;;) {
            const std::size_t tab = _sText.find('\t', start);
            fields.push_back(
                _sText.substr(start, tab == std::string::npos ? std::string::npos : tab - start));
            if (tab == std::string::npos)
                break;
            start = tab + 1;
        }
        if (fields.size() != FIELD_COUNT) {
            CString what;
            what.Format(L"expected %d tab-separated fields, found %d", static_cast<int>(FIELD_COUNT),
                        static_cast<int>(fields.size()));
            skip(what);
            return;
        }
        const std::string& objectPath = fields[0];
        const std::string& filePath = fields[1];
        const std::string version = trimBlanks(fields[2]);
        const std::string lastWrite = trimBlanks(fields[3]);
        const std::string size = trimBlanks(fields[4]);
        const std::string flagText = trimBlanks(fields[5]);
        const std::string expiry = trimBlanks(fields[6]);
        const std::string access = trimBlanks(fields[7]);
        std::uint64_t uVersion = 0, uLastWrite = 0, uSize = 0, uExpiry = 0;
        std::uint32_t flags = 0;
        UQQueryData::AccessKey key = {0, 0};
        if (trimBlanks(objectPath).empty())
            return skip(L"empty object path");
        if (trimBlanks(filePath).empty())
            return skip(L"empty file path (write = for the object path)");
        if (!parseUnsigned(version, 0xFFFFFFFFull, uVersion))
            return skip(L"bad version number", version);
        if (!korhistory::parseTime(lastWrite, uLastWrite))
            return skip(L"bad last write time", lastWrite);
        if (!parseUnsigned(size, 0x7FFFFFFFFFFFFFFFull, uSize))
            return skip(L"bad size", size);
        if (!parseFlags(flagText, flags))
            return skip(L"bad flags", flagText);
        if (expiry != "-" && !korhistory::parseTime(expiry, uExpiry))
            return skip(L"bad expiry time", expiry);
        if (!parseAccessKey(access, key))
            return skip(L"bad access key", access);
        // The search list groups the versions of a file by object path, case-blind: a version listed twice
        // would show twice.
        CString sObjectPath = CString::FromUtf8(objectPath);
        const std::uint32_t firstLine =
            m_index.mf_note(sObjectPath, static_cast<std::uint32_t>(uVersion), m_uLine);
        if (firstLine != 0) {
            CString what;
            what.Format(L"version %lu of this path is already listed on line %lu",
                        static_cast<std::uint32_t>(uVersion), firstLine);
            return skip(what);
        }
        ++m_result.uRecords;

        if (m_query.fromTime.mf_getValue() != 0 && uLastWrite < m_query.fromTime.mf_getValue())
            return;
        if (m_query.toTime.mf_getValue() != 0 && uLastWrite > m_query.toTime.mf_getValue())
            return;
        const CString sFilePath = filePath == "=" ? sObjectPath : CString::FromUtf8(filePath);
        if (m_pattern && !m_pattern->mf_matches(sFilePath))
            return;
        const UQQueryData data(sObjectPath, sFilePath, static_cast<std::uint32_t>(uVersion),
                               UQFileTime(uLastWrite), UQFileSize(static_cast<std::int64_t>(uSize)), flags,
                               UQExpiryTime{uExpiry}, key);
        try {
            m_sink.mf_onQueryData(data);
        } catch (const UQErrno& e) {
            UQKorReport::mf_log(UQLogData::LEVEL_E, SEARCH_FUNCTION,
                                L"Failure handing over the record of %s:%lu:\r\n%s%s", m_name, m_uLine,
                                UQLog::TAB, e.mf_toString());
            throw;
        }
        ++m_result.uMatches;
    }

    void skip(const CString& _sWhat) {
        CString detail;
        detail.Format(L"%s:%lu: %s", m_name, m_uLine, _sWhat);
        m_result.errors.push_back(UQErrno(UQErrnoData(UQErrno::_E_::Format), detail));
        UQKorReport::mf_log(UQLogData::LEVEL_W, SEARCH_FUNCTION, L"History record skipped: %s", detail);
    }

    void skip(const wchar_t* _pszWhat, const std::string& _sValue) {
        CString text;
        text.Format(L"%s '%s'", _pszWhat, CString::FromUtf8(kortext::echoed(_sValue)));
        skip(text);
    }

    const CString& m_name;
    const UQHistoryQuery& m_query;
    UVQueryDataSink& m_sink;
    const UQCancelSwitch* m_cancel;
    UQHistoryStore::Result& m_result;
    std::unique_ptr<UQPathPattern> m_pattern;
    std::uint32_t m_uLine;
    std::string m_carry;
    UVReadProgress* m_pProgress;
    std::uint64_t m_uTotalBytes;
    // Bytes fed before the piece at hand.
    std::uint64_t m_uFed;
    // Each object path met, with the line of each of its versions.
    UQStoredPathIndex m_index;
};

// The size of an open file, for the progress's percentage; 0 where it cannot be told (a pipe).
std::uint64_t fileSize(FILE* _pFile) noexcept {
#if defined(_WIN32)
    const __int64 size = _filelengthi64(_fileno(_pFile));
#else
    struct stat info;
    const long long size = fstat(fileno(_pFile), &info) == 0 && S_ISREG(info.st_mode) ? info.st_size : -1;
#endif
    return size > 0 ? static_cast<std::uint64_t>(size) : 0u;
}

} // namespace

UQHistoryStore::UQHistoryStore(const CString& _sFile) : m_sFile(_sFile) {}

UQHistoryStore::Result UQHistoryStore::mf_searchText(const std::string& _utf8Text, const CString& _sName,
                                                     const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                                                     const UQCancelSwitch* _pCancel,
                                                     UVReadProgress* _pProgress) {
    Result result;
    LineReader reader(_sName, _query, _rSink, _pCancel, result, _pProgress, _utf8Text.size());
    reader.feed(_utf8Text.data(), _utf8Text.size());
    reader.finish();
    return result;
}

UQHistoryStore::Result UQHistoryStore::mf_search(const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                                                 const UQCancelSwitch* _pCancel,
                                                 UVReadProgress* _pProgress) const {
    static const wchar_t* const _sFunction_ = L"UQHistoryStore::mf_search";
    // The file is closed on every way out, also when the sink or a cancellation ends the search.
    const UQStdFile file(kortext::openForReading(m_sFile, _sFunction_, L"history store"));
    FILE* f = file.mf_get();
    Result result;
    LineReader reader(m_sFile, _query, _rSink, _pCancel, result, _pProgress,
                      _pProgress != nullptr ? fileSize(f) : 0);
    std::unique_ptr<char[]> buffer(new char[1u << 16]);
    std::size_t n;
    while ((n = std::fread(buffer.get(), 1, 1u << 16, f)) > 0)
        reader.feed(buffer.get(), n);
    // Set by the read that failed, the last call before.
    const int readError = errno;
    if (std::ferror(f))
        UQKorReport::mf_fail(
            UQErrno(UQErrnoData(UQErrno::_E_::File), kortext::readErrorDetail(m_sFile, readError)),
            _sFunction_, L"Failure reading history store '%s'", m_sFile);
    reader.finish();
    return result;
}

namespace {

void refuseUnstorable(const CString& _sPath, const wchar_t* _pszWhich) {
    CString what;
    const int at = kortext::findUnwritable(_sPath, what);
    if (at < 0)
        return;
    CString text;
    text.Format(L"The %s '%s' cannot be stored: %s at unit %d", _pszWhich, kortext::shownText(_sPath), what,
                at + 1);
    UQKorReport::mf_fail(UQErrno(UQErrnoData(UQErrno::_E_::Parameter), text),
                         L"UQHistoryStore::mf_formatRecord", L"%s", text);
}

} // namespace

std::string UQHistoryStore::mf_formatRecord(const UQQueryData& _data) {
    const CString& objectPath = _data.mf_getObjectPath();
    const CString& filePath = _data.mf_getPath();
    refuseUnstorable(objectPath, L"object path");
    refuseUnstorable(filePath, L"file path");
    const UQQueryData::AccessKey& key = _data.mf_getAccessKey();
    const UQExpiryTime expiry = _data.mf_getExpiryTime();
    std::string line = objectPath.ToUtf8();
    line += '\t';
    line += filePath == objectPath ? std::string("=") : filePath.ToUtf8();
    line += '\t';
    line += std::to_string(_data.mf_getVersion());
    line += '\t';
    line += korhistory::formatTime(_data.mf_getLastWriteTime().mf_getValue());
    line += '\t';
    line += std::to_string(_data.mf_getSize().mf_getValue());
    line += '\t';
    // Through the record's own operations, so that a record that answers differently is written as it
    // answers.
    const std::uint32_t flags = (_data.mf_hasSecurity() ? UQQueryData::FLAG_SECURITY : 0u) |
                                (_data.mf_hasADStreams() ? UQQueryData::FLAG_AD_STREAMS : 0u) |
                                (_data.mf_isEventBased() ? UQQueryData::FLAG_EVENT_BASED : 0u) |
                                (_data.mf_isProtected() ? UQQueryData::FLAG_PROTECTED : 0u) |
                                (_data.mf_isDeletionStarted() ? UQQueryData::FLAG_DELETION_STARTED : 0u);
    line += korhistory::formatFlags(flags);
    line += '\t';
    line += expiry.mf_isSet() ? korhistory::formatTime(expiry.uFileTime) : std::string("-");
    line += '\t';
    line += std::to_string(key.uVolume);
    line += ':';
    line += std::to_string(key.uPosition);
    return line;
}
