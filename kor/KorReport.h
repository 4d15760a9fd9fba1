// How the stand-ins for the closed libraries (korbase, korutil, korarchiver) report their own failures,
// with the error conventions that guibase follows through UQReport; kept once for the three libraries.
// Internal to kor/: no consumer includes it.
#pragma once

#include "interfaces/korbase.h"

#include <cstdint>

class UQKorReport {
public:
    // A system call's failure: the category with the system error number that GetLastError() gives now.
    static UQErrno mf_systemError(const UQErrnoValue& _value) {
        return UQErrno(UQErrnoData(_value), static_cast<std::uint32_t>(GetLastError()));
    }

    // Direct failure: a LEVEL_E record, then _error thrown (a category, or one with a detail text).
    template <class... A>
    [[noreturn]] static void mf_fail(const UQErrno& _error, const wchar_t* _pszOperation,
                                     const wchar_t* _pszFormat, const A&... _args) {
        mf_log(UQLogData::LEVEL_E, _pszOperation, _pszFormat, _args...);
        throw _error;
    }

    // One record of _pszOperation, with the logging language selected right before it.
    template <class... A>
    static void mf_log(const UQLogData& _level, const wchar_t* _pszOperation, const wchar_t* _pszFormat,
                       const A&... _args) noexcept {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(_level, _pszOperation, _pszFormat, _args...);
    }
};
