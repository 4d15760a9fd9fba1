// The one formatting engine of the product: Windows wide-printf meaning on every platform.
//
// Every argument is captured with its type, so a conversion that does not fit its argument, a missing
// argument or a surplus one is defined behaviour (see docs/formatting.md). Text from outside is only ever
// passed as an argument, never as the format.
#pragma once

#include "compat/compat_api.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

class CString;

namespace uqfmt {

struct Arg {
    enum Kind : unsigned char { NONE, SIGNED, UNSIGNED, FLOAT, WIDE_TEXT, NARROW_TEXT, WIDE_CHAR, POINTER };
    Kind kind = NONE;
    union {
        long long i;
        unsigned long long u;
        double d;
        const wchar_t* ws;
        const char* s;
        const void* p;
    };
    Arg() : u(0) {}
};

inline Arg makeArg(const wchar_t* _pszS) {
    Arg a;
    a.kind = Arg::WIDE_TEXT;
    a.ws = _pszS;
    return a;
}
inline Arg makeArg(wchar_t* _pszS) {
    return makeArg(static_cast<const wchar_t*>(_pszS));
}
inline Arg makeArg(const char* _pszS) {
    Arg a;
    a.kind = Arg::NARROW_TEXT;
    a.s = _pszS;
    return a;
}
inline Arg makeArg(char* _pszS) {
    return makeArg(static_cast<const char*>(_pszS));
}
inline Arg makeArg(const std::wstring& _sS) {
    return makeArg(_sS.c_str());
}
inline Arg makeArg(const std::string& _sS) {
    return makeArg(_sS.c_str());
}
inline Arg makeArg(wchar_t _cC) {
    Arg a;
    a.kind = Arg::WIDE_CHAR;
    a.u = static_cast<unsigned long long>(_cC);
    return a;
}
inline Arg makeArg(std::nullptr_t) {
    Arg a;
    a.kind = Arg::POINTER;
    a.p = nullptr;
    return a;
}
KORCOMPAT_API Arg makeArg(const CString& _sS);

template <class T> Arg makeArg(const T& _v) {
    Arg a;
    if constexpr (std::is_array_v<T>) {
        return makeArg(static_cast<const std::remove_extent_t<T>*>(_v));
    } else if constexpr (std::is_enum_v<T>) {
        return makeArg(static_cast<std::underlying_type_t<T>>(_v));
    } else if constexpr (std::is_class_v<T> && std::is_convertible_v<const T&, const wchar_t*>) {
        return makeArg(static_cast<const wchar_t*>(_v));
    } else if constexpr (std::is_same_v<T, bool>) {
        a.kind = Arg::SIGNED;
        a.i = _v ? 1 : 0;
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        a.kind = Arg::SIGNED;
        a.i = static_cast<long long>(_v);
    } else if constexpr (std::is_integral_v<T>) {
        a.kind = Arg::UNSIGNED;
        a.u = static_cast<unsigned long long>(_v);
    } else if constexpr (std::is_floating_point_v<T>) {
        a.kind = Arg::FLOAT;
        a.d = static_cast<double>(_v);
    } else if constexpr (std::is_pointer_v<T>) {
        a.kind = Arg::POINTER;
        a.p = static_cast<const void*>(_v);
    } else {
        static_assert(std::is_pointer_v<T>, "type cannot be a format argument");
    }
    return a;
}

// Appends the formatted text to _rOut. Never throws except std::bad_alloc.
KORCOMPAT_API void formatInto(std::wstring& _rOut, const wchar_t* _pszFormat, const Arg* _pArgs,
                              std::size_t _nArgs);

template <class... A> std::wstring format(const wchar_t* _pszFormat, const A&... _args) {
    std::wstring out;
    if constexpr (sizeof...(A) == 0) {
        formatInto(out, _pszFormat, nullptr, 0);
    } else {
        const Arg args[] = {makeArg(_args)...};
        formatInto(out, _pszFormat, args, sizeof...(A));
    }
    return out;
}

} // namespace uqfmt
