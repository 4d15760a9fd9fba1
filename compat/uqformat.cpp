#include "compat/uqformat.h"

#include "utf8.h"

#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>

namespace uqfmt {
namespace {

struct Conversion {
    bool left = false, plus = false, space = false, alt = false, zero = false;
    int width = -1;
    int precision = -1;
    int bits = 32; // integer width in bits: 8, 16, 32 or 64
    bool narrowText = false;
    wchar_t conv = 0;
};

const Arg* nextArg(const Arg* _pArgs, std::size_t _nArgs, std::size_t& _rIndex) {
    return _rIndex < _nArgs ? &_pArgs[_rIndex++] : nullptr;
}

// A floating-point value given to an integer conversion: cut toward zero, saturated at the 64-bit limits, NaN
// as 0 (a plain cast would be undefined out of range).
long long truncated(double _fD) {
    if (_fD != _fD)
        return 0;
    if (_fD >= 9223372036854775807.0)
        return LLONG_MAX;
    if (_fD <= -9223372036854775808.0)
        return LLONG_MIN;
    return static_cast<long long>(_fD);
}

long long signedValue(const Arg& _a, int _nBits) {
    unsigned long long raw = 0;
    switch (_a.kind) {
    case Arg::SIGNED:
        raw = static_cast<unsigned long long>(_a.i);
        break;
    case Arg::UNSIGNED:
    case Arg::WIDE_CHAR:
        raw = _a.u;
        break;
    case Arg::POINTER:
        raw = reinterpret_cast<std::uintptr_t>(_a.p);
        break;
    case Arg::FLOAT:
        raw = static_cast<unsigned long long>(truncated(_a.d));
        break;
    default:
        raw = 0;
        break;
    }
    if (_nBits == 8)
        return static_cast<signed char>(raw & 0xFFu);
    if (_nBits == 16)
        return static_cast<short>(raw & 0xFFFFu);
    if (_nBits == 32)
        return static_cast<int>(raw & 0xFFFFFFFFu);
    return static_cast<long long>(raw);
}

unsigned long long unsignedValue(const Arg& _a, int _nBits) {
    const unsigned long long raw = static_cast<unsigned long long>(signedValue(_a, 64));
    if (_nBits == 8)
        return raw & 0xFFu;
    if (_nBits == 16)
        return raw & 0xFFFFu;
    if (_nBits == 32)
        return raw & 0xFFFFFFFFu;
    return raw;
}

void pad(std::wstring& _rsOut, int _nN, wchar_t _cC) {
    if (_nN > 0)
        _rsOut.append(static_cast<std::size_t>(_nN), _cC);
}

// Places a body (digits or text) with sign/prefix into its field.
void emitField(std::wstring& _rsOut, const Conversion& _s, const std::wstring& _sPrefix,
               const std::wstring& _sBody, bool _bZeroPadAllowed) {
    const int len = static_cast<int>(_sPrefix.size() + _sBody.size());
    const int fill = _s.width > len ? _s.width - len : 0;
    if (_s.left) {
        _rsOut += _sPrefix;
        _rsOut += _sBody;
        pad(_rsOut, fill, L' ');
    } else if (_s.zero && _bZeroPadAllowed) {
        _rsOut += _sPrefix;
        pad(_rsOut, fill, L'0');
        _rsOut += _sBody;
    } else {
        pad(_rsOut, fill, L' ');
        _rsOut += _sPrefix;
        _rsOut += _sBody;
    }
}

void emitInteger(std::wstring& _rsOut, const Conversion& _s, const Arg* _pA) {
    const int bits = _s.bits;
    std::wstring prefix;
    unsigned long long mag = 0;
    unsigned base = 10;
    bool upper = false;
    if (_s.conv == L'd' || _s.conv == L'i') {
        const long long v = _pA ? signedValue(*_pA, bits) : 0;
        if (v < 0) {
            prefix = L"-";
            mag = 0ull - static_cast<unsigned long long>(v);
        } else {
            mag = static_cast<unsigned long long>(v);
            if (_s.plus)
                prefix = L"+";
            else if (_s.space)
                prefix = L" ";
        }
    } else {
        mag = _pA ? unsignedValue(*_pA, bits) : 0;
        if (_s.conv == L'x' || _s.conv == L'X') {
            base = 16;
            upper = _s.conv == L'X';
            if (_s.alt && mag != 0)
                prefix = upper ? L"0X" : L"0x";
        } else if (_s.conv == L'o') {
            base = 8;
        }
    }
    const wchar_t* digits = upper ? L"0123456789ABCDEF" : L"0123456789abcdef";
    wchar_t buf[72];
    int n = 0;
    while (mag != 0) {
        buf[n++] = digits[mag % base];
        mag /= base;
    }
    std::wstring body;
    const int minDigits = _s.precision >= 0 ? _s.precision : 1;
    if (_s.conv == L'o' && _s.alt && (n == 0 || minDigits > n) == false)
        body += L'0';
    for (int i = n; i < minDigits; ++i)
        body += L'0';
    while (n > 0)
        body += buf[--n];
    emitField(_rsOut, _s, prefix, body, _s.precision < 0);
}

void emitText(std::wstring& _rsOut, const Conversion& _s, const Arg* _pA) {
    std::wstring text;
    if (_pA == nullptr) {
        text.clear();
    } else if (_pA->kind == Arg::WIDE_TEXT) {
        if (_pA->ws == nullptr) {
            text = L"(null)";
        } else if (_s.precision >= 0) {
            const wchar_t* p = _pA->ws;
            std::size_t n = 0;
            while (static_cast<int>(n) < _s.precision && p[n] != 0)
                ++n;
            text.assign(p, n);
        } else {
            text = _pA->ws;
        }
    } else if (_pA->kind == Arg::NARROW_TEXT) {
        text = _pA->s == nullptr ? std::wstring(L"(null)") : utf8ToWide(_pA->s, std::strlen(_pA->s));
    } else if (_pA->kind == Arg::WIDE_CHAR) {
        text.assign(1, static_cast<wchar_t>(_pA->u));
    } else if (_pA->kind == Arg::POINTER && _pA->p == nullptr) {
        text = L"(null)";
    } else {
        // A number given for a string conversion is shown as the number.
        Conversion num = _s;
        num.conv = _pA->kind == Arg::UNSIGNED ? L'u' : L'd';
        num.precision = -1;
        num.bits = 64;
        emitInteger(_rsOut, num, _pA);
        return;
    }
    if (_s.precision >= 0 && static_cast<int>(text.size()) > _s.precision)
        text.resize(static_cast<std::size_t>(_s.precision));
    emitField(_rsOut, _s, std::wstring(), text, false);
}

void emitChar(std::wstring& _rsOut, const Conversion& _s, const Arg* _pA) {
    // %C and %hc take a narrow character, %c and %lc a wide one.
    const bool narrow = _s.conv == L'C' || _s.narrowText;
    wchar_t c = 0;
    if (_pA != nullptr) {
        if (_pA->kind == Arg::WIDE_TEXT)
            c = _pA->ws != nullptr ? _pA->ws[0] : 0;
        else if (_pA->kind == Arg::NARROW_TEXT)
            c = _pA->s != nullptr ? static_cast<wchar_t>(static_cast<unsigned char>(_pA->s[0])) : 0;
        else if (narrow)
            c = static_cast<wchar_t>(unsignedValue(*_pA, 8));
        else if (_pA->kind == Arg::WIDE_CHAR)
            c = static_cast<wchar_t>(_pA->u); // already a wchar_t of this platform
        else
            c = static_cast<wchar_t>(unsignedValue(*_pA, 16)); // a number is cut to a Windows wchar_t
    }
    const std::wstring body(1, c);
    emitField(_rsOut, _s, std::wstring(), body, false);
}

void emitPointer(std::wstring& _rsOut, const Conversion& _s, const Arg* _pA) {
    unsigned long long v = 0;
    if (_pA != nullptr && _pA->kind == Arg::WIDE_TEXT)
        v = reinterpret_cast<std::uintptr_t>(_pA->ws); // the address of the text, as Windows shows it
    else if (_pA != nullptr && _pA->kind == Arg::NARROW_TEXT)
        v = reinterpret_cast<std::uintptr_t>(_pA->s);
    else if (_pA != nullptr)
        v = unsignedValue(*_pA, 64);
    wchar_t buf[24];
    std::swprintf(buf, 24, L"%016llX", v);
    emitField(_rsOut, _s, std::wstring(), buf, false);
}

void emitFloat(std::wstring& _rsOut, const Conversion& _s, const Arg* _pA) {
    double v = 0.0;
    if (_pA != nullptr) {
        if (_pA->kind == Arg::FLOAT)
            v = _pA->d;
        else if (_pA->kind == Arg::UNSIGNED || _pA->kind == Arg::WIDE_CHAR)
            v = static_cast<double>(_pA->u);
        else if (_pA->kind == Arg::SIGNED)
            v = static_cast<double>(_pA->i);
    }
    char cformat[32];
    int k = 0;
    cformat[k++] = '%';
    if (_s.left)
        cformat[k++] = '-';
    if (_s.plus)
        cformat[k++] = '+';
    if (_s.space)
        cformat[k++] = ' ';
    if (_s.alt)
        cformat[k++] = '#';
    if (_s.zero)
        cformat[k++] = '0';
    cformat[k++] = '*';
    cformat[k++] = '.';
    cformat[k++] = '*';
    cformat[k++] = static_cast<char>(_s.conv);
    cformat[k] = 0;
    char buf[512];
    const int width = _s.width < 0 ? 0 : (_s.width > 400 ? 400 : _s.width);
    const int prec = _s.precision < 0 ? 6 : (_s.precision > 100 ? 100 : _s.precision);
    int n = std::snprintf(buf, sizeof buf, cformat, width, prec, v);
    if (n < 0)
        n = 0;
    if (n >= static_cast<int>(sizeof buf))
        n = static_cast<int>(sizeof buf) - 1;
    for (int i = 0; i < n; ++i)
        _rsOut += static_cast<wchar_t>(static_cast<unsigned char>(buf[i]));
}

// Widths and precisions are limited to MAX_FIELD, written or taken from an argument alike.
constexpr int MAX_FIELD = 100000;

int readNumber(const wchar_t*& _pP) {
    long long n = 0;
    while (*_pP >= L'0' && *_pP <= L'9') {
        if (n <= MAX_FIELD)
            n = n * 10 + (*_pP - L'0');
        ++_pP;
    }
    return static_cast<int>(n > MAX_FIELD ? MAX_FIELD : n);
}

} // namespace

void formatInto(std::wstring& _rsOut, const wchar_t* _pszFmt, const Arg* _pArgs, std::size_t _nArgs) {
    if (_pszFmt == nullptr)
        return;
    std::size_t argIndex = 0;
    const wchar_t* p = _pszFmt;
    while (*p != 0) {
        if (*p != L'%') {
            const wchar_t* run = p;
            while (*p != 0 && *p != L'%')
                ++p;
            _rsOut.append(run, static_cast<std::size_t>(p - run));
            continue;
        }
        const wchar_t* start = p++;
        if (*p == L'%') {
            _rsOut += L'%';
            ++p;
            continue;
        }
        Conversion s;
        for (;; ++p) {
            if (*p == L'-')
                s.left = true;
            else if (*p == L'+')
                s.plus = true;
            else if (*p == L' ')
                s.space = true;
            else if (*p == L'#')
                s.alt = true;
            else if (*p == L'0')
                s.zero = true;
            else
                break;
        }
        if (*p == L'*') {
            ++p;
            const Arg* w = nextArg(_pArgs, _nArgs, argIndex);
            long long v = w ? signedValue(*w, 32) : 0;
            if (v < 0) {
                s.left = true;
                v = -v;
            }
            s.width = static_cast<int>(v > MAX_FIELD ? MAX_FIELD : v);
        } else {
            if (*p >= L'1' && *p <= L'9')
                s.width = readNumber(p);
        }
        if (*p == L'.') {
            ++p;
            if (*p == L'*') {
                ++p;
                const Arg* w = nextArg(_pArgs, _nArgs, argIndex);
                const long long v = w ? signedValue(*w, 32) : 0;
                s.precision = v < 0 ? -1 : static_cast<int>(v > MAX_FIELD ? MAX_FIELD : v);
            } else {
                s.precision = readNumber(p);
            }
        }
        // Length modifiers of the Windows CRT.
        if (p[0] == L'I' && p[1] == L'6' && p[2] == L'4') {
            s.bits = 64;
            p += 3;
        } else if (p[0] == L'I' && p[1] == L'3' && p[2] == L'2') {
            s.bits = 32;
            p += 3;
        } else if (p[0] == L'I') {
            s.bits = 64;
            ++p;
        } else if (p[0] == L'l' && p[1] == L'l') {
            s.bits = 64;
            p += 2;
        } else if (p[0] == L'h' && p[1] == L'h') {
            s.bits = 8;
            s.narrowText = true;
            p += 2;
        } else if (p[0] == L'l' || p[0] == L'w') {
            ++p; // long is 32-bit on Windows; %ls and %lc are wide anyway
        } else if (p[0] == L'h') {
            s.bits = 16;
            s.narrowText = true;
            ++p;
        } else if (p[0] == L'z' || p[0] == L'j' || p[0] == L't') {
            s.bits = 64;
            ++p;
        } else if (p[0] == L'L') {
            ++p;
        }
        s.conv = *p;
        if (s.conv == 0) {
            _rsOut.append(start);
            break;
        }
        ++p;
        const bool takesArg = std::wcschr(L"diuxXosScCpfFeEgGaAn", s.conv) != nullptr;
        if (!takesArg) {
            _rsOut.append(
                start,
                static_cast<std::size_t>(p - start)); // an unknown conversion is written as it stands
            continue;
        }
        const Arg* a = nextArg(_pArgs, _nArgs, argIndex);
        if (a == nullptr)
            continue; // a missing argument renders as nothing
        switch (s.conv) {
        case L'd':
        case L'i':
        case L'u':
        case L'x':
        case L'X':
        case L'o':
            emitInteger(_rsOut, s, a);
            break;
        case L's':
        case L'S':
            emitText(_rsOut, s, a);
            break;
        case L'c':
        case L'C':
            emitChar(_rsOut, s, a);
            break;
        case L'p':
            emitPointer(_rsOut, s, a);
            break;
        case L'n':
            break; // never writes through an argument
        default:
            emitFloat(_rsOut, s, a);
            break;
        }
    }
}

} // namespace uqfmt
