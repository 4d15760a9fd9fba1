// How korbase's own operations report, as the library does: the logging language is selected
// right before each record, and a failure is logged where it arises before its category is thrown.
#pragma once

#include "interfaces/korbase.h"

namespace korreport {

template <class... A>
void log(const UQLogData& _level, const wchar_t* _pszFunction, const wchar_t* _pszFormat,
         const A&... _args) noexcept {
    UQThreadContext::mf_setLoggingLanguage();
    UQLog::mf_writeMessage(_level, _pszFunction, _pszFormat, _args...);
}

template <class... A>
[[noreturn]] void fail(const UQErrnoValue& _value, const wchar_t* _pszFunction, const wchar_t* _pszFormat,
                       const A&... _args) {
    log(UQLogData::LEVEL_E, _pszFunction, _pszFormat, _args...);
    throw UQErrno(_value);
}

} // namespace korreport
