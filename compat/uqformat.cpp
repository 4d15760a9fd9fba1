#include "uqformat.h"

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
long long truncated(double d) {
    if (d != d)
        return 0;
    if (d >= 9223372036854775807.0)
        return LLONG_MAX;
    if (d <= -9223372036854775808.0)
        return LLONG_MIN;
    return static_cast<long long>(d);
}

long long signedValue(const Arg& a, int bits) {
    unsigned long long raw = 0;
    switch (a.kind) {
    case Arg::SIGNED:
        raw = static_cast<unsigned long long>(a.i);
        break;
    case Arg::UNSIGNED:
    case Arg::WIDE_CHAR:
        raw = a.u;
        break;
    case Arg::POINTER:
        raw = reinterpret_cast<std::uintptr_t>(a.p);
        break;
    case Arg::FLOAT:
        raw = static_cast<unsigned long long>(truncated(a.d));
        break;
    default:
        raw = 0;
        break;
    }
    if (bits == 8)
        return static_cast<signed char>(raw & 0xFFu);
    if (bits == 16)
        return static_cast<short>(raw & 0xFFFFu);
    if (bits == 32)
        return static_cast<int>(raw & 0xFFFFFFFFu);
    return static_cast<long long>(raw);
}

unsigned long long unsignedValue(const Arg& a, int bits) {
    const unsigned long long raw = static_cast<unsigned long long>(signedValue(a, 64));
    if (bits == 8)
        return raw & 0xFFu;
    if (bits == 16)
        return raw & 0xFFFFu;
    if (bits == 32)
        return raw & 0xFFFFFFFFu;
    return raw;
}

void pad(std::wstring& out, int n, wchar_t c) {
    if (n > 0)
        out.append(static_cast<std::size_t>(n), c);
}

// Places a body (digits or text) with sign/prefix into its field.
void emitField(std::wstring& out, const Conversion& s, const std::wstring& prefix, const std::wstring& body,
               bool zeroPadAllowed) {
    const int len = static_cast<int>(prefix.size() + body.size());
    const int fill = s.width > len ? s.width - len : 0;
    if (s.left) {
        out += prefix;
        out += body;
        pad(out, fill, L' ');
    } else if (s.zero && zeroPadAllowed) {
        out += prefix;
        pad(out, fill, L'0');
        out += body;
    } else {
        pad(out, fill, L' ');
        out += prefix;
        out += body;
    }
}

void emitInteger(std::wstring& out, const Conversion& s, const Arg* a) {
    const int bits = s.bits;
    std::wstring prefix;
    unsigned long long mag = 0;
    unsigned base = 10;
    bool upper = false;
    if (s.conv == L'd' || s.conv == L'i') {
        const long long v = a ? signedValue(*a, bits) : 0;
        if (v < 0) {
            prefix = L"-";
            mag = 0ull - static_cast<unsigned long long>(v);
        } else {
            mag = static_cast<unsigned long long>(v);
            if (s.plus)
                prefix = L"+";
            else if (s.space)
                prefix = L" ";
        }
    } else {
        mag = a ? unsignedValue(*a, bits) : 0;
        if (s.conv == L'x' || s.conv == L'X') {
            base = 16;
            upper = s.conv == L'X';
            if (s.alt && mag != 0)
                prefix = upper ? L"0X" : L"0x";
        } else if (s.conv == L'o') {
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
    const int minDigits = s.precision >= 0 ? s.precision : 1;
    if (s.conv == L'o' && s.alt && (n == 0 || minDigits > n) == false)
        body += L'0';
    for (int i = n; i < minDigits; ++i)
        body += L'0';
    while (n > 0)
        body += buf[--n];
    emitField(out, s, prefix, body, s.precision < 0);
}

void emitText(std::wstring& out, const Conversion& s, const Arg* a) {
    std::wstring text;
    if (a == nullptr) {
        text.clear();
    } else if (a->kind == Arg::WIDE_TEXT) {
        if (a->ws == nullptr) {
            text = L"(null)";
        } else if (s.precision >= 0) {
            const wchar_t* p = a->ws;
            std::size_t n = 0;
            while (static_cast<int>(n) < s.precision && p[n] != 0)
                ++n;
            text.assign(p, n);
        } else {
            text = a->ws;
        }
    } else if (a->kind == Arg::NARROW_TEXT) {
        text = a->s == nullptr ? std::wstring(L"(null)") : utf8ToWide(a->s, std::strlen(a->s));
    } else if (a->kind == Arg::WIDE_CHAR) {
        text.assign(1, static_cast<wchar_t>(a->u));
    } else if (a->kind == Arg::POINTER && a->p == nullptr) {
        text = L"(null)";
    } else {
        // A number given for a string conversion is shown as the number.
        Conversion num = s;
        num.conv = a->kind == Arg::UNSIGNED ? L'u' : L'd';
        num.precision = -1;
        num.bits = 64;
        emitInteger(out, num, a);
        return;
    }
    if (s.precision >= 0 && static_cast<int>(text.size()) > s.precision)
        text.resize(static_cast<std::size_t>(s.precision));
    emitField(out, s, std::wstring(), text, false);
}

void emitChar(std::wstring& out, const Conversion& s, const Arg* a) {
    // %C and %hc take a narrow character, %c and %lc a wide one.
    const bool narrow = s.conv == L'C' || s.narrowText;
    wchar_t c = 0;
    if (a != nullptr) {
        if (a->kind == Arg::WIDE_TEXT)
            c = a->ws != nullptr ? a->ws[0] : 0;
        else if (a->kind == Arg::NARROW_TEXT)
            c = a->s != nullptr ? static_cast<wchar_t>(static_cast<unsigned char>(a->s[0])) : 0;
        else if (narrow)
            c = static_cast<wchar_t>(unsignedValue(*a, 8));
        else if (a->kind == Arg::WIDE_CHAR)
            c = static_cast<wchar_t>(a->u); // already a wchar_t of this platform
        else
            c = static_cast<wchar_t>(unsignedValue(*a, 16)); // a number is cut to a Windows wchar_t
    }
    const std::wstring body(1, c);
    emitField(out, s, std::wstring(), body, false);
}

void emitPointer(std::wstring& out, const Conversion& s, const Arg* a) {
    unsigned long long v = 0;
    if (a != nullptr && a->kind == Arg::WIDE_TEXT)
        v = reinterpret_cast<std::uintptr_t>(a->ws); // the address of the text, as Windows shows it
    else if (a != nullptr && a->kind == Arg::NARROW_TEXT)
        v = reinterpret_cast<std::uintptr_t>(a->s);
    else if (a != nullptr)
        v = unsignedValue(*a, 64);
    wchar_t buf[24];
    std::swprintf(buf, 24, L"%016llX", v);
    emitField(out, s, std::wstring(), buf, false);
}

void emitFloat(std::wstring& out, const Conversion& s, const Arg* a) {
    double v = 0.0;
    if (a != nullptr) {
        if (a->kind == Arg::FLOAT)
            v = a->d;
        else if (a->kind == Arg::UNSIGNED || a->kind == Arg::WIDE_CHAR)
            v = static_cast<double>(a->u);
        else if (a->kind == Arg::SIGNED)
            v = static_cast<double>(a->i);
    }
    char cformat[32];
    int k = 0;
    cformat[k++] = '%';
    if (s.left)
        cformat[k++] = '-';
    if (s.plus)
        cformat[k++] = '+';
    if (s.space)
        cformat[k++] = ' ';
    if (s.alt)
        cformat[k++] = '#';
    if (s.zero)
        cformat[k++] = '0';
    cformat[k++] = '*';
    cformat[k++] = '.';
    cformat[k++] = '*';
    cformat[k++] = static_cast<char>(s.conv);
    cformat[k] = 0;
    char buf[512];
    const int width = s.width < 0 ? 0 : (s.width > 400 ? 400 : s.width);
    const int prec = s.precision < 0 ? 6 : (s.precision > 100 ? 100 : s.precision);
    int n = std::snprintf(buf, sizeof buf, cformat, width, prec, v);
    if (n < 0)
        n = 0;
    if (n >= static_cast<int>(sizeof buf))
        n = static_cast<int>(sizeof buf) - 1;
    for (int i = 0; i < n; ++i)
        out += static_cast<wchar_t>(static_cast<unsigned char>(buf[i]));
}

// Widths and precisions are limited to kMaxField, written or taken from an argument alike.
constexpr int kMaxField = 100000;

int readNumber(const wchar_t*& p) {
    long long n = 0;
    while (*p >= L'0' && *p <= L'9') {
        if (n <= kMaxField)
            n = n * 10 + (*p - L'0');
        ++p;
    }
    return static_cast<int>(n > kMaxField ? kMaxField : n);
}

} // namespace

void formatInto(std::wstring& out, const wchar_t* fmt, const Arg* args, std::size_t nArgs) {
    if (fmt == nullptr)
        return;
    std::size_t argIndex = 0;
    const wchar_t* p = fmt;
    while (*p != 0) {
        if (*p != L'%') {
            const wchar_t* run = p;
            while (*p != 0 && *p != L'%')
                ++p;
            out.append(run, static_cast<std::size_t>(p - run));
            continue;
        }
        const wchar_t* start = p++;
        if (*p == L'%') {
            out += L'%';
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
            const Arg* w = nextArg(args, nArgs, argIndex);
            long long v = w ? signedValue(*w, 32) : 0;
            if (v < 0) {
                s.left = true;
                v = -v;
            }
            s.width = static_cast<int>(v > kMaxField ? kMaxField : v);
        } else {
            if (*p >= L'1' && *p <= L'9')
                s.width = readNumber(p);
        }
        if (*p == L'.') {
            ++p;
            if (*p == L'*') {
                ++p;
                const Arg* w = nextArg(args, nArgs, argIndex);
                const long long v = w ? signedValue(*w, 32) : 0;
                s.precision = v < 0 ? -1 : static_cast<int>(v > kMaxField ? kMaxField : v);
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
            out.append(start);
            break;
        }
        ++p;
        const bool takesArg = std::wcschr(L"diuxXosScCpfFeEgGaAn", s.conv) != nullptr;
        if (!takesArg) {
            out.append(start,
                       static_cast<std::size_t>(p - start)); // an unknown conversion is written as it stands
            continue;
        }
        const Arg* a = nextArg(args, nArgs, argIndex);
        if (a == nullptr)
            continue; // a missing argument renders as nothing
        switch (s.conv) {
        case L'd':
        case L'i':
        case L'u':
        case L'x':
        case L'X':
        case L'o':
            emitInteger(out, s, a);
            break;
        case L's':
        case L'S':
            emitText(out, s, a);
            break;
        case L'c':
        case L'C':
            emitChar(out, s, a);
            break;
        case L'p':
            emitPointer(out, s, a);
            break;
        case L'n':
            break; // never writes through an argument
        default:
            emitFloat(out, s, a);
            break;
        }
    }
}

} // namespace uqfmt
