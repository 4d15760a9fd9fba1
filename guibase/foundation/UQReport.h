// How every operation of the library reports: the logging language is selected right before each record,
// and a failure is logged where it arises before its category is thrown or collected.
#pragma once

#include "interfaces/korbase.h"

class UQReport {
public:
    template <class... A>
    static void mf_log(const UQLogData& _level, const wchar_t* _pszFunction, const wchar_t* _pszFormat,
                       const A&... _args) noexcept {
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(_level, _pszFunction, _pszFormat, _args...);
    }

    // Direct failure: log at LEVEL_E and throw the category.
    template <class... A>
    [[noreturn]] static void mf_fail(const UQErrnoValue& _value, const wchar_t* _pszFunction,
                                     const wchar_t* _pszFormat, const A&... _args) {
        mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFormat, _args...);
        throw UQErrno(_value);
    }

    // Collected failure: log at LEVEL_E and hand back the error data for the operation's single exit.
    template <class... A>
    static UQErrnoData mf_collect(const UQErrnoValue& _value, const wchar_t* _pszFunction,
                                  const wchar_t* _pszFormat, const A&... _args) noexcept {
        mf_log(UQLogData::LEVEL_E, _pszFunction, _pszFormat, _args...);
        return UQErrnoData(_value);
    }
};
