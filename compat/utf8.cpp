#include "utf8.h"

namespace uqfmt {
namespace {

void appendCodePoint(std::wstring& out, char32_t cp) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<wchar_t>(0xD800 + (cp >> 10));
            out += static_cast<wchar_t>(0xDC00 + (cp & 0x3FF));
            return;
        }
    }
    out += static_cast<wchar_t>(cp);
}

// An invalid byte: U+FFFD, or with _bKeepBytes the character that stands for that byte.
void appendInvalid(std::wstring& out, unsigned char byte, bool keepBytes) {
    out += static_cast<wchar_t>(keepBytes ? 0xDC00 + byte : 0xFFFD);
}

std::wstring decode(const char* p, std::size_t n, bool keepBytes) {
    std::wstring out;
    out.reserve(n);
    const auto* s = reinterpret_cast<const unsigned char*>(p);
    std::size_t i = 0;
    while (i < n) {
        const unsigned char c = s[i];
        if (c < 0x80) {
            out += static_cast<wchar_t>(c);
            ++i;
            continue;
        }
        int extra = 0;
        char32_t cp = 0;
        char32_t min = 0;
        if ((c & 0xE0) == 0xC0) {
            extra = 1;
            cp = c & 0x1F;
            min = 0x80;
        } else if ((c & 0xF0) == 0xE0) {
            extra = 2;
            cp = c & 0x0F;
            min = 0x800;
        } else if ((c & 0xF8) == 0xF0) {
            extra = 3;
            cp = c & 0x07;
            min = 0x10000;
        } else {
            appendInvalid(out, c, keepBytes);
            ++i;
            continue;
        }
        if (i + static_cast<std::size_t>(extra) >= n) {
            appendInvalid(out, c, keepBytes);
            ++i;
            continue;
        }
        bool ok = true;
        for (int k = 1; k <= extra; ++k) {
            const unsigned char t = s[i + static_cast<std::size_t>(k)];
            if ((t & 0xC0) != 0x80) {
                ok = false;
                break;
            }
            cp = (cp << 6) | (t & 0x3F);
        }
        if (!ok || cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) {
            appendInvalid(out, c, keepBytes);
            ++i;
            continue;
        }
        appendCodePoint(out, cp);
        i += static_cast<std::size_t>(extra) + 1;
    }
    return out;
}

} // namespace

std::wstring utf8ToWide(const char* p, std::size_t n) {
    return decode(p, n, false);
}

std::wstring nativeToWide(const char* p, std::size_t n) {
    return decode(p, n, true);
}

std::string wideToNative(const wchar_t* p, std::size_t n) {
    std::string out;
    out.reserve(n);
    std::size_t start = 0;
    for (std::size_t i = 0; i < n; ++i) {
        const char32_t c = static_cast<char32_t>(p[i]);
        // In UTF-16 a low surrogate after a high one is half of a pair, not a kept byte.
        const bool paired = sizeof(wchar_t) == 2 && i > 0 && static_cast<char32_t>(p[i - 1]) >= 0xD800 &&
                            static_cast<char32_t>(p[i - 1]) <= 0xDBFF;
        if (c < 0xDC80 || c > 0xDCFF || paired)
            continue;
        out += wideToUtf8(p + start, i - start);
        out += static_cast<char>(c - 0xDC00);
        start = i + 1;
    }
    out += wideToUtf8(p + start, n - start);
    return out;
}

std::string wideToUtf8(const wchar_t* p, std::size_t n) {
    std::string out;
    out.reserve(n);
    for (std::size_t i = 0; i < n; ++i) {
        char32_t cp = static_cast<char32_t>(p[i]);
        if constexpr (sizeof(wchar_t) == 2) {
            cp &= 0xFFFF;
            if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < n) {
                const char32_t lo = static_cast<char32_t>(p[i + 1]) & 0xFFFF;
                if (lo >= 0xDC00 && lo <= 0xDFFF) {
                    cp = 0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00);
                    ++i;
                }
            }
        }
        if (cp >= 0xD800 && cp <= 0xDFFF)
            cp = 0xFFFD; // lone surrogate
        if (cp > 0x10FFFF)
            cp = 0xFFFD;
        if (cp < 0x80) {
            out += static_cast<char>(cp);
        } else if (cp < 0x800) {
            out += static_cast<char>(0xC0 | (cp >> 6));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else if (cp < 0x10000) {
            out += static_cast<char>(0xE0 | (cp >> 12));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        } else {
            out += static_cast<char>(0xF0 | (cp >> 18));
            out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
            out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
            out += static_cast<char>(0x80 | (cp & 0x3F));
        }
    }
    return out;
}

} // namespace uqfmt
