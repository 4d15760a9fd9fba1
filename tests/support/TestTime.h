// File times for tests, from calendar fields (UTC, as the library keeps them).
#pragma once

#include "interfaces/korbase.h"

inline UQFileTime fileTime(int year, int month, int day, int hour = 0, int minute = 0, int second = 0,
                           int ms = 0) {
    SYSTEMTIME st{};
    st.wYear = static_cast<WORD>(year);
    st.wMonth = static_cast<WORD>(month);
    st.wDay = static_cast<WORD>(day);
    st.wHour = static_cast<WORD>(hour);
    st.wMinute = static_cast<WORD>(minute);
    st.wSecond = static_cast<WORD>(second);
    st.wMilliseconds = static_cast<WORD>(ms);
    FILETIME ft{};
    SystemTimeToFileTime(&st, &ft);
    return UQFileTime(ft);
}
