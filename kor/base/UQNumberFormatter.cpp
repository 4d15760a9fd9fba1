#include "interfaces/korbase.h"
#include "kor/KorReport.h"

#include "kor/base/Environment.h"

#include <cstdlib>
#include <mutex>

namespace {

const wchar_t* const DEFAULT_DATE_FORMAT = L"yyyy-MM-dd";
const wchar_t* const DEFAULT_TIME_FORMAT = L"HH:mm:ss";
const wchar_t DEFAULT_GROUP_SEPARATOR = L',';
const wchar_t* const FILE_TIME_ERROR = L"FILETIME ERROR";

struct Configuration {
    CString sDate;
    CString sTime;
    wchar_t cGroup = DEFAULT_GROUP_SEPARATOR;
    bool bLoaded = false;
};

std::mutex& configurationMutex() {
    static std::mutex s_mutex;
    return s_mutex;
}

Configuration& configuration() {
    static Configuration s_configuration;
    return s_configuration;
}

// A digit or a minus sign would make formatted numbers ambiguous.
bool isUsableSeparator(wchar_t _cC) noexcept {
    return !(_cC >= L'0' && _cC <= L'9') && _cC != L'-';
}

// The defaults, or what KOR_DATE_FORMAT, KOR_TIME_FORMAT and KOR_GROUP_SEPARATOR say. Called under the lock.
void loadDefaults(Configuration& _rC) {
    _rC.sDate = korenv::variable(L"KOR_DATE_FORMAT");
    if (_rC.sDate.IsEmpty())
        _rC.sDate = DEFAULT_DATE_FORMAT;
    _rC.sTime = korenv::variable(L"KOR_TIME_FORMAT");
    if (_rC.sTime.IsEmpty())
        _rC.sTime = DEFAULT_TIME_FORMAT;
    const CString group = korenv::variable(L"KOR_GROUP_SEPARATOR");
    if (group.GetLength() == 1 && isUsableSeparator(group[0]))
        _rC.cGroup = group[0];
    else if (group == L"none")
        _rC.cGroup = 0;
    else
        _rC.cGroup = DEFAULT_GROUP_SEPARATOR;
    _rC.bLoaded = true;
}

Configuration snapshot() {
    std::lock_guard<std::mutex> lock(configurationMutex());
    Configuration& c = configuration();
    if (!c.bLoaded)
        loadDefaults(c);
    return c;
}

void appendNumber(CString& _rsOut, unsigned _uValue, int _nDigits) {
    _rsOut.AppendFormat(L"%0*u", _nDigits, _uValue);
}

// Expands a date or time pattern with the fields of st. Text in single quotes is copied as it stands
// ('' is one quote); characters that are no field letters are copied too.
CString expandPattern(const CString& _sPattern, const SYSTEMTIME& _st) {
    CString out;
    const int n = _sPattern.GetLength();
    int i = 0;
    while (i < n) {
        const wchar_t c = _sPattern[i];
        if (c == L'\'') {
            ++i;
            while (i < n) {
                if (_sPattern[i] == L'\'') {
                    if (i + 1 < n && _sPattern[i + 1] == L'\'') {
                        out += L'\'';
                        i += 2;
                        continue;
                    }
                    ++i;
                    break;
                }
                out += _sPattern[i++];
            }
            continue;
        }
        int run = 1;
        while (i + run < n && _sPattern[i + run] == c)
            ++run;
        int used = run;
        switch (c) {
        case L'y':
            if (run >= 4) {
                appendNumber(out, _st.wYear, 4);
                used = 4;
            } else if (run >= 2) {
                appendNumber(out, _st.wYear % 100, 2);
                used = 2;
            } else {
                appendNumber(out, _st.wYear % 10, 1);
            }
            break;
        case L'M':
        case L'd':
        case L'H':
        case L'm':
        case L's': {
            // One letter: the number as it is; two or more: two digits.
            const unsigned field = c == L'M'   ? _st.wMonth
                                   : c == L'd' ? _st.wDay
                                   : c == L'H' ? _st.wHour
                                   : c == L'm' ? _st.wMinute
                                               : _st.wSecond;
            used = run >= 2 ? 2 : 1;
            appendNumber(out, field, used);
            break;
        }
        case L'h':
            used = run >= 2 ? 2 : 1;
            appendNumber(out, _st.wHour % 12 == 0 ? 12u : _st.wHour % 12u, used);
            break;
        case L't':
            used = run >= 2 ? 2 : 1;
            out += used == 2 ? (_st.wHour < 12 ? L"AM" : L"PM") : (_st.wHour < 12 ? L"A" : L"P");
            break;
        default:
            used = 1;
            out += c;
            break;
        }
        i += used;
    }
    return out;
}

// Converts with FileTimeToSystemTime; a failure is logged under the caller's name.
bool toSystemTime(const UQFileTime& _time, SYSTEMTIME& _rSt, const wchar_t* _pszFunction) {
    const FILETIME ft = _time.mf_getFileTime();
    SetLastError(0);
    if (FileTimeToSystemTime(&ft, &_rSt))
        return true;
    UQKorReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Failure converting FILETIME to SYSTEMTIME: %s",
                        UQKorReport::mf_systemError(UQErrno::_E_::Conversion).mf_toString());
    return false;
}

} // namespace

CString UQNumberFormatter::mf_formatNumber(std::int64_t _nNumber) {
    const wchar_t group = snapshot().cGroup;
    // Through the unsigned magnitude, so that the smallest value has one too.
    std::uint64_t magnitude = _nNumber < 0
                                  ? static_cast<std::uint64_t>(0) - static_cast<std::uint64_t>(_nNumber)
                                  : static_cast<std::uint64_t>(_nNumber);
    wchar_t buffer[40];
    int pos = 40;
    int digits = 0;
    do {
        if (digits > 0 && digits % 3 == 0 && group != 0)
            buffer[--pos] = group;
        buffer[--pos] = static_cast<wchar_t>(L'0' + magnitude % 10);
        magnitude /= 10;
        ++digits;
    } while (magnitude != 0);
    if (_nNumber < 0)
        buffer[--pos] = L'-';
    return CString(buffer + pos, 40 - pos);
}

CString UQNumberFormatter::mf_normalizeNumber(const CString& _sNumber) {
    const wchar_t group = snapshot().cGroup;
    CString out;
    for (int i = 0; i < _sNumber.GetLength(); ++i) {
        const wchar_t c = _sNumber[i];
        // No-break spaces are the group separators of many locales.
        if ((group != 0 && c == group) || c == L' ' || c == L'\t' || c == 0x00A0 || c == 0x202F)
            continue;
        out += c;
    }
    return out;
}

CString UQNumberFormatter::mf_formatDate(const UQFileTime& _time) {
    static const wchar_t* const _sFunction_ = L"UQNumberFormatter::mf_formatDate";
    SYSTEMTIME st;
    if (!toSystemTime(_time, st, _sFunction_))
        return FILE_TIME_ERROR;
    return expandPattern(snapshot().sDate, st);
}

CString UQNumberFormatter::mf_formatTime(const UQFileTime& _time) {
    static const wchar_t* const _sFunction_ = L"UQNumberFormatter::mf_formatTime";
    SYSTEMTIME st;
    if (!toSystemTime(_time, st, _sFunction_))
        return FILE_TIME_ERROR;
    return expandPattern(snapshot().sTime, st);
}

CString UQNumberFormatter::mf_getConfiguredDateFormat() {
    return snapshot().sDate;
}

CString UQNumberFormatter::mf_getConfiguredTimeFormat() {
    return snapshot().sTime;
}

void UQNumberFormatter::mf_configure(const CString& _sDateFormat, const CString& _sTimeFormat,
                                     wchar_t _cGroupSeparator) {
    static const wchar_t* const _sFunction_ = L"UQNumberFormatter::mf_configure";
    if (_sDateFormat.IsEmpty() || _sTimeFormat.IsEmpty()) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Parameter), _sFunction_,
                             L"Empty format: date='%s', time='%s'", _sDateFormat, _sTimeFormat);
    }
    if (_cGroupSeparator != 0 && !isUsableSeparator(_cGroupSeparator)) {
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::Parameter), _sFunction_,
                             L"Group separator '%c' is not usable", _cGroupSeparator);
    }
    std::lock_guard<std::mutex> lock(configurationMutex());
    Configuration& c = configuration();
    c.sDate = _sDateFormat;
    c.sTime = _sTimeFormat;
    c.cGroup = _cGroupSeparator;
    c.bLoaded = true;
}

void UQNumberFormatter::mf_resetConfiguration() {
    std::lock_guard<std::mutex> lock(configurationMutex());
    loadDefaults(configuration());
}
