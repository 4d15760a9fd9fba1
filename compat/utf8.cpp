#include "utf8.h"

namespace uqfmt {
namespace {

// Wide text is UTF-16 on every target: a character beyond the BMP becomes a surrogate pair.
void appendCodePoint(std::wstring& _rsOut, char32_t _cp) {
    if (_cp >= 0x10000) {
        _cp -= 0x10000;
        _rsOut += static_cast<wchar_t>(0xD800 + (_cp >> 10));
        _rsOut += static_cast<wchar_t>(0xDC00 + (_cp & 0x3FF));
        return;
    }
    _rsOut += static_cast<wchar_t>(_cp);
}

void appendUtf8(std::string& _rsOut, char32_t _cp) {
    if (_cp < 0x80) {
        _rsOut += static_cast<char>(_cp);
    } else if (_cp < 0x800) {
        _rsOut += static_cast<char>(0xC0 | (_cp >> 6));
        _rsOut += static_cast<char>(0x80 | (_cp & 0x3F));
    } else if (_cp < 0x10000) {
        _rsOut += static_cast<char>(0xE0 | (_cp >> 12));
        _rsOut += static_cast<char>(0x80 | ((_cp >> 6) & 0x3F));
        _rsOut += static_cast<char>(0x80 | (_cp & 0x3F));
    } else {
        _rsOut += static_cast<char>(0xF0 | (_cp >> 18));
        _rsOut += static_cast<char>(0x80 | ((_cp >> 12) & 0x3F));
        _rsOut += static_cast<char>(0x80 | ((_cp >> 6) & 0x3F));
        _rsOut += static_cast<char>(0x80 | (_cp & 0x3F));
    }
}

// The code point at p[i] (a surrogate pair taken whole, advancing i); a lone surrogate stays itself.
char32_t codePointAt(const wchar_t* _pszP, std::size_t _nN, std::size_t& _rnI) {
    char32_t cp = static_cast<char32_t>(_pszP[_rnI]);
    if (cp >= 0xD800 && cp <= 0xDBFF && _rnI + 1 < _nN) {
        const char32_t lo = static_cast<char32_t>(_pszP[_rnI + 1]);
        if (lo >= 0xDC00 && lo <= 0xDFFF) {
            cp = 0x10000 + ((cp - 0xD800) << 10) + (lo - 0xDC00);
            ++_rnI;
        }
    }
    return cp;
}

// An invalid byte: U+FFFD, or with _bKeepBytes the character that stands for that byte.
void appendInvalid(std::wstring& _rsOut, unsigned char _uByte, bool _bKeepBytes) {
    _rsOut += static_cast<wchar_t>(_bKeepBytes ? 0xDC00 + _uByte : 0xFFFD);
}

std::wstring decode(const char* _pszP, std::size_t _nN, bool _bKeepBytes, bool _bSurrogates = false) {
    std::wstring out;
    out.reserve(_nN);
    const auto* s = reinterpret_cast<const unsigned char*>(_pszP);
    std::size_t i = 0;
    while (i < _nN) {
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
            appendInvalid(out, c, _bKeepBytes);
            ++i;
            continue;
        }
        if (i + static_cast<std::size_t>(extra) >= _nN) {
            appendInvalid(out, c, _bKeepBytes);
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
        if (!ok || cp < min || cp > 0x10FFFF || (!_bSurrogates && cp >= 0xD800 && cp <= 0xDFFF)) {
            appendInvalid(out, c, _bKeepBytes);
            ++i;
            continue;
        }
        appendCodePoint(out, cp);
        i += static_cast<std::size_t>(extra) + 1;
    }
    return out;
}

} // namespace

std::wstring utf8ToWide(const char* _pszP, std::size_t _nN) {
    return decode(_pszP, _nN, false);
}

std::wstring nativeToWide(const char* _pszP, std::size_t _nN) {
    return decode(_pszP, _nN, true);
}

std::string wideToNative(const wchar_t* _pszP, std::size_t _nN) {
    std::string out;
    out.reserve(_nN);
    std::size_t start = 0;
    for (std::size_t i = 0; i < _nN; ++i) {
        const char32_t c = static_cast<char32_t>(_pszP[i]);
        // A low surrogate after a high one is half of a pair, not a kept byte.
        const bool paired = i > 0 && static_cast<char32_t>(_pszP[i - 1]) >= 0xD800 &&
                            static_cast<char32_t>(_pszP[i - 1]) <= 0xDBFF;
        if (c < 0xDC80 || c > 0xDCFF || paired)
            continue;
        out += wideToUtf8(_pszP + start, i - start);
        out += static_cast<char>(c - 0xDC00);
        start = i + 1;
    }
    out += wideToUtf8(_pszP + start, _nN - start);
    return out;
}

std::string wideToUtf8(const wchar_t* _pszP, std::size_t _nN) {
    std::string out;
    out.reserve(_nN);
    for (std::size_t i = 0; i < _nN; ++i) {
        char32_t cp = codePointAt(_pszP, _nN, i);
        if ((cp >= 0xD800 && cp <= 0xDFFF) || cp > 0x10FFFF)
            cp = 0xFFFD; // a lone surrogate
        appendUtf8(out, cp);
    }
    return out;
}

std::string wideToWtf8(const wchar_t* _pszP, std::size_t _nN) {
    std::string out;
    out.reserve(_nN);
    for (std::size_t i = 0; i < _nN; ++i) {
        const char32_t cp = codePointAt(_pszP, _nN, i);
        appendUtf8(out, cp > 0x10FFFF ? 0xFFFD : cp);
    }
    return out;
}

std::wstring wtf8ToWide(const char* _pszP, std::size_t _nN) {
    return decode(_pszP, _nN, false, true);
}

} // namespace uqfmt
