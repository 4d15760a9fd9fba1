#include "guibase/foundation/UQReport.h"

#include <cstdint>

namespace {

const wchar_t* const FILE_TIME_ERROR = L"FILETIME ERROR";

// Converts or logs the failure under the caller's name; a failed conversion answers false.
bool toSystemTime(const UQFileTime& _time, SYSTEMTIME& _rSt, const wchar_t* _pszFunction) {
    const FILETIME ft = _time.mf_getFileTime();
    SetLastError(0);
    if (!FileTimeToSystemTime(&ft, &_rSt)) {
        UQReport::mf_logWrappedInline(UQReport::mf_systemError(UQErrno::_E_::Conversion), _pszFunction,
                                      L"Failure converting FILETIME to SYSTEMTIME: %s");
        return false;
    }
    return true;
}

} // namespace

CString UQFileTime::mf_toString() const {
    static const wchar_t* const _sFunction_ = L"UQFileTime::mf_toString";
    try {
        SYSTEMTIME st;
        if (!toSystemTime(*this, st, _sFunction_))
            return FILE_TIME_ERROR;
        CString s;
        s.Format(L"%4.4u-%2.2u-%2.2u%c%2.2u:%2.2u:%2.2u", st.wYear, st.wMonth, st.wDay, L' ', st.wHour,
                 st.wMinute, st.wSecond);
        return s;
    } catch (...) {
        return FILE_TIME_ERROR;
    }
}

CString UQFileTime::mf_toFullString() const {
    static const wchar_t* const _sFunction_ = L"UQFileTime::mf_toFullString";
    try {
        SYSTEMTIME st;
        if (!toSystemTime(*this, st, _sFunction_))
            return FILE_TIME_ERROR;
        CString s;
        s.Format(L"%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u", st.wYear, st.wMonth, st.wDay, st.wHour,
                 st.wMinute, st.wSecond, st.wMilliseconds);
        return s;
    } catch (...) {
        return FILE_TIME_ERROR;
    }
}

UQFileTime UQFileTime::operator+(const UQFileTime& _other) const {
    static const wchar_t* const _sFunction_ = L"UQFileTime::operator_add";
    const std::uint64_t max = 0x7FFFFFFFFFFFFFFFull;
    // Compared as signed 64-bit values, as the file times are.
    const std::int64_t headroom = static_cast<std::int64_t>(max - m_uTicks);
    if (headroom >= static_cast<std::int64_t>(_other.m_uTicks))
        return UQFileTime(m_uTicks + _other.m_uTicks);
    UQReport::mf_fail(UQErrno::_E_::Range, _sFunction_, L"%s + %s > MAX", mf_toFullString(),
                      _other.mf_toFullString());
}
