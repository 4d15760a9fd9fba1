// Calendar times for tests: a SYSTEMTIME and a file time from calendar fields (UTC, as the library keeps
// them). The one place the tests build them.
#pragma once

#include "interfaces/korbase.h"

inline SYSTEMTIME systemTime(int _nYear, int _nMonth, int _nDay, int _nHour = 0, int _nMinute = 0,
                             int _nSecond = 0, int _nMilliseconds = 0, int _nDayOfWeek = 0) {
    // In the order of the structure's fields: year, month, day of the week, day, hour, minute, second, ms.
    const SYSTEMTIME st = {static_cast<WORD>(_nYear),      static_cast<WORD>(_nMonth),
                           static_cast<WORD>(_nDayOfWeek), static_cast<WORD>(_nDay),
                           static_cast<WORD>(_nHour),      static_cast<WORD>(_nMinute),
                           static_cast<WORD>(_nSecond),    static_cast<WORD>(_nMilliseconds)};
    return st;
}

// 0 when SystemTimeToFileTime refuses the fields.
inline UQFileTime fileTime(int _nYear, int _nMonth, int _nDay, int _nHour = 0, int _nMinute = 0,
                           int _nSecond = 0, int _nMilliseconds = 0) {
    const SYSTEMTIME st = systemTime(_nYear, _nMonth, _nDay, _nHour, _nMinute, _nSecond, _nMilliseconds);
    FILETIME ft{};
    SystemTimeToFileTime(&st, &ft);
    return UQFileTime(ft);
}
