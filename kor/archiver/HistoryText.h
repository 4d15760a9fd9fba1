// The texts of history records shared by the query data's describing text and the history store: times
// and flags. Internal to korarchiver.
#pragma once

#include "interfaces/korarchiver.h"

#include <cstdio>
#include <string>

namespace korhistory {

constexpr std::uint64_t TICKS_PER_SECOND = 10000000u;

// "2024-03-07 14:05:09", with ".1234567" when the time has a fraction of a second, so that a store keeps
// every file time exactly; "FILETIME ERROR" when the time has no calendar form.
inline std::string formatTime(std::uint64_t _uTicks) {
    const std::uint64_t fraction = _uTicks % TICKS_PER_SECOND;
    const FILETIME ft = UQFileTime(_uTicks - fraction).mf_getFileTime();
    SYSTEMTIME st;
    if (!FileTimeToSystemTime(&ft, &st))
        return "FILETIME ERROR";
    char text[64];
    if (fraction != 0)
        std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u.%07u", st.wYear, st.wMonth, st.wDay,
                      st.wHour, st.wMinute, st.wSecond, static_cast<unsigned>(fraction));
    else
        std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", st.wYear, st.wMonth, st.wDay,
                      st.wHour, st.wMinute, st.wSecond);
    return text;
}

// Reads exactly _nDigits decimal digits at _rPos.
inline bool readDigits(const std::string& _sText, std::size_t& _rnPos, std::size_t _nDigits,
                       unsigned& _ruValue) {
    if (_rnPos + _nDigits > _sText.size())
        return false;
    _ruValue = 0;
    for (std::size_t i = 0; i < _nDigits; ++i) {
        const char c = _sText[_rnPos + i];
        if (c < '0' || c > '9')
            return false;
        _ruValue = _ruValue * 10 + static_cast<unsigned>(c - '0');
    }
    _rnPos += _nDigits;
    return true;
}

// "YYYY-MM-DD HH:MM:SS" with an optional fraction of 1 to 7 digits; false for anything else or a date
// that does not exist.
inline bool parseTime(const std::string& _sText, std::uint64_t& _ruTicks) {
    std::size_t pos = 0;
    unsigned year, month, day, hour, minute, second;
    const auto expect = [&](char _cC) {
        if (pos >= _sText.size() || _sText[pos] != _cC)
            return false;
        ++pos;
        return true;
    };
    if (!readDigits(_sText, pos, 4, year) || !expect('-') || !readDigits(_sText, pos, 2, month) ||
        !expect('-') || !readDigits(_sText, pos, 2, day) || !expect(' ') ||
        !readDigits(_sText, pos, 2, hour) || !expect(':') || !readDigits(_sText, pos, 2, minute) ||
        !expect(':') || !readDigits(_sText, pos, 2, second))
        return false;
    std::uint64_t fraction = 0;
    if (pos < _sText.size() && _sText[pos] == '.') {
        ++pos;
        std::size_t digits = 0;
        while (pos < _sText.size() && digits < 7 && _sText[pos] >= '0' && _sText[pos] <= '9') {
            fraction = fraction * 10 + static_cast<unsigned>(_sText[pos] - '0');
            ++pos;
            ++digits;
        }
        if (digits == 0)
            return false;
        for (; digits < 7; ++digits)
            fraction *= 10;
    }
    if (pos != _sText.size())
        return false;
    SYSTEMTIME st = {};
    st.wYear = static_cast<WORD>(year);
    st.wMonth = static_cast<WORD>(month);
    st.wDay = static_cast<WORD>(day);
    st.wHour = static_cast<WORD>(hour);
    st.wMinute = static_cast<WORD>(minute);
    st.wSecond = static_cast<WORD>(second);
    FILETIME ft;
    if (year < 1601 || !SystemTimeToFileTime(&st, &ft))
        return false;
    // An impossible date must never roll over into a real one, whichever kernel32 converts it.
    SYSTEMTIME back;
    if (!FileTimeToSystemTime(&ft, &back) || back.wYear != st.wYear || back.wMonth != st.wMonth ||
        back.wDay != st.wDay || back.wHour != st.wHour || back.wMinute != st.wMinute ||
        back.wSecond != st.wSecond)
        return false;
    _ruTicks = UQFileTime(ft).mf_getValue() + fraction;
    return true;
}

// The flags as letters in a fixed order: S security, A alternate data streams, E event based, P protected,
// D deletion started; "-" for none.
inline std::string formatFlags(std::uint32_t _uFlags) {
    std::string text;
    if (_uFlags & UQQueryData::FLAG_SECURITY)
        text += 'S';
    if (_uFlags & UQQueryData::FLAG_AD_STREAMS)
        text += 'A';
    if (_uFlags & UQQueryData::FLAG_EVENT_BASED)
        text += 'E';
    if (_uFlags & UQQueryData::FLAG_PROTECTED)
        text += 'P';
    if (_uFlags & UQQueryData::FLAG_DELETION_STARTED)
        text += 'D';
    return text.empty() ? std::string("-") : text;
}

} // namespace korhistory
