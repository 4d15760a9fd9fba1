// How every operation of the library reports: the logging language is selected right before each record,
// and a failure is logged where it arises before its category is thrown or collected. One helper for each
// failure shape of the error conventions:
//   1 direct failure     mf_fail
//   2 collected failure  mf_collect, and mf_collectWrapped for a caught error
//   3 wrapped failure    mf_logWrapped / mf_collectWrapped (error text on its own line, ":\r\n%s%s") and
//                        mf_logWrappedInline / mf_collectWrappedInline (error text after ": %s")
//   4 failure result     mf_logError at any level, with the error that mf_systemError built
//   5 system failure     mf_systemError, after SetLastError(0) and the failed call
#pragma once

#include "interfaces/korbase.h"

#include <cstdint>

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

    // The error of a system call that has just failed: the category with GetLastError(), read at once.
    static UQErrno mf_systemError(const UQErrnoValue& _value) {
        return UQErrno(UQErrnoData(_value), static_cast<std::uint32_t>(GetLastError()));
    }

    // A record that carries an error on an indented continuation line: the format ends in ":\r\n%s%s" and
    // takes _args, then UQLog::TAB and the error's mf_toString().
    template <class... A>
    static void mf_logError(const UQLogData& _level, const UQErrno& _error, const wchar_t* _pszFunction,
                            const wchar_t* _pszFormat, const A&... _args) {
        mf_log(_level, _pszFunction, _pszFormat, _args..., UQLog::TAB, _error.mf_toString());
    }

    // The same with the error's text first, on the record's first line (": %s"), then _args.
    template <class... A>
    static void mf_logErrorInline(const UQLogData& _level, const UQErrno& _error, const wchar_t* _pszFunction,
                                  const wchar_t* _pszFormat, const A&... _args) {
        mf_log(_level, _pszFunction, _pszFormat, _error.mf_toString(), _args...);
    }

    // Wrapped failure: a caught error logged at LEVEL_E, "Failure ...:\r\n%s%s". The caller then throws it
    // on, collects it (mf_collectWrapped) or goes on with a default.
    template <class... A>
    static void mf_logWrapped(const UQErrno& _error, const wchar_t* _pszFunction, const wchar_t* _pszFormat,
                              const A&... _args) {
        mf_logError(UQLogData::LEVEL_E, _error, _pszFunction, _pszFormat, _args...);
    }

    // Wrapped failure worded on one line: "Failure ...: %s", further context lines after it.
    template <class... A>
    static void mf_logWrappedInline(const UQErrno& _error, const wchar_t* _pszFunction,
                                    const wchar_t* _pszFormat, const A&... _args) {
        mf_logErrorInline(UQLogData::LEVEL_E, _error, _pszFunction, _pszFormat, _args...);
    }

    // Wrapped failure collected: logs as mf_logWrapped and hands back the caught error's data, so that
    // the operation throws the same category at its single exit.
    template <class... A>
    static UQErrnoData mf_collectWrapped(const UQErrno& _error, const wchar_t* _pszFunction,
                                         const wchar_t* _pszFormat, const A&... _args) {
        mf_logWrapped(_error, _pszFunction, _pszFormat, _args...);
        return _error.mf_getData();
    }

    // The same, worded as mf_logWrappedInline.
    template <class... A>
    static UQErrnoData mf_collectWrappedInline(const UQErrno& _error, const wchar_t* _pszFunction,
                                               const wchar_t* _pszFormat, const A&... _args) {
        mf_logWrappedInline(_error, _pszFunction, _pszFormat, _args...);
        return _error.mf_getData();
    }
};
