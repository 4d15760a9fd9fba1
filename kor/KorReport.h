// How the stand-ins for the closed libraries (korbase, korutil, korarchiver) report their own failures:
// the conventions of spec Part 1.1 that guibase follows through UQReport, kept once for the three
// libraries. Internal to kor/: no consumer includes it.
#pragma once

#include "interfaces/korbase.h"

#include <cstdint>

class UQKorReport {
public:
    // One record, with the logging language selected right before it.
    template <class... A>
    static void mf_log(const UQLogData& _level, const wchar_t* _pszFunction, const wchar_t* _pszFormat,
                       const A&... _args) noexcept {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(_level, _pszFunction, _pszFormat, _args...);
    }

    // Direct failure: a LEVEL_E record, then the category thrown, with a detail text when one is given.
    template <class... A>
    [[noreturn]] static void mf_fail(const UQErrnoValue& _value, const wchar_t* _pszFunction,
                                     const wchar_t* _pszFormat, const A&... _args) {
        mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFormat, _args...);
        throw UQErrno(_value);
    }
    template <class... A>
    [[noreturn]] static void mf_failWithDetail(const UQErrnoValue& _value, const CString& _sDetail,
                                               const wchar_t* _pszFunction, const wchar_t* _pszFormat,
                                               const A&... _args) {
        mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFormat, _args...);
        throw UQErrno(UQErrnoData(_value), _sDetail);
    }

    // A system call's failure: the category with the system error number GetLastError() gives now.
    static UQErrno mf_systemError(const UQErrnoValue& _value) {
        return UQErrno(UQErrnoData(_value), static_cast<std::uint32_t>(GetLastError()));
    }
};
