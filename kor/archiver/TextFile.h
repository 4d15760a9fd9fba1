// Opening the text files that korarchiver reads (listings, history stores). Internal to korarchiver.
#pragma once

#include "compat/UQHandle.h"
#include "interfaces/korarchiver.h"

#include <cstddef>
#include <cstdio>
#include <string>

namespace kortext {

// Opens _sFile for reading in binary mode (the wide name on Windows, UTF-8 elsewhere). A file that cannot be
// opened logs "Failure opening <_pszWhat> '<file>'" at LEVEL_E under _pszFunction and throws
// UQErrno::_E_::File whose detail is "<file>: cannot open: <the system's reason> (errno N)".
FILE* openForReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat);

// "<file>: read error: <the system's reason> (errno N)", the detail of a file that failed while read.
CString readErrorDetail(const CString& _sFile, int _nErrno);

// At most ECHO_LIMIT bytes of input quoted back in a message, cut at a character boundary and marked
// "... (N more bytes)": a malformed line may be megabytes long, and the log and the user need its start.
// Inline, so that korfiles's own reader cuts its echoes the same way.
constexpr std::size_t ECHO_LIMIT = 200;
inline std::string echoed(const std::string& _sInput) {
    if (_sInput.size() <= ECHO_LIMIT)
        return _sInput;
    std::size_t nCut = ECHO_LIMIT;
    // Not inside a UTF-8 sequence: continuation bytes are 10xxxxxx.
    while (nCut > 0 && (static_cast<unsigned char>(_sInput[nCut]) & 0xC0) == 0x80)
        --nCut;
    return _sInput.substr(0, nCut) + "... (" + std::to_string(_sInput.size() - nCut) + " more bytes)";
}

// The length of the well-formed UTF-8 sequence at _pText (at most _nBytes long): 1 to 4, or 0 where the byte
// starts none (a stray continuation byte, an overlong form, an encoded surrogate, a code point above
// U+10FFFF, a sequence cut short).
inline std::size_t utf8SequenceLength(const unsigned char* _pText, std::size_t _nBytes) {
    const unsigned c = _pText[0];
    if (c < 0x80)
        return 1;
    std::size_t nMore = 0;
    unsigned low = 0x80, high = 0xBF;
    if (c >= 0xC2 && c <= 0xDF) {
        nMore = 1;
    } else if (c >= 0xE0 && c <= 0xEF) {
        nMore = 2;
        low = c == 0xE0 ? 0xA0 : 0x80;
        high = c == 0xED ? 0x9F : 0xBF;
    } else if (c >= 0xF0 && c <= 0xF4) {
        nMore = 3;
        low = c == 0xF0 ? 0x90 : 0x80;
        high = c == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (_nBytes <= nMore || _pText[1] < low || _pText[1] > high)
        return 0;
    for (std::size_t i = 2; i <= nMore; ++i)
        if (_pText[i] < 0x80 || _pText[i] > 0xBF)
            return 0;
    return nMore + 1;
}

// The offset of the first byte that starts no well-formed UTF-8 sequence, or npos.
inline std::size_t findInvalidUtf8(const std::string& _sText) {
    const auto* p = reinterpret_cast<const unsigned char*>(_sText.data());
    for (std::size_t i = 0; i < _sText.size();) {
        const std::size_t nLength = utf8SequenceLength(p + i, _sText.size() - i);
        if (nLength == 0)
            return i;
        i += nLength;
    }
    return std::string::npos;
}

// A line in another encoding quoted back as bytes: every byte that is no part of well-formed UTF-8, and
// every control character but the tab, as \xNN, the rest as it is. U+FFFD in their place would hide which
// bytes the file holds. Cut after ECHO_LIMIT bytes as echoed() cuts.
inline std::string escapedBytes(const std::string& _sInput) {
    static const char HEX[] = "0123456789ABCDEF";
    const auto* p = reinterpret_cast<const unsigned char*>(_sInput.data());
    const std::size_t n = _sInput.size();
    std::string out;
    std::size_t i = 0;
    while (i < n && i < ECHO_LIMIT) {
        const std::size_t nLength = utf8SequenceLength(p + i, n - i);
        const unsigned c = p[i];
        if (nLength == 0 || (nLength == 1 && ((c < 0x20 && c != '\t') || c == 0x7F))) {
            out += "\\x";
            out += HEX[c >> 4];
            out += HEX[c & 0xF];
            ++i;
        } else {
            out.append(_sInput, i, nLength);
            i += nLength;
        }
    }
    if (i < n)
        out += "... (" + std::to_string(n - i) + " more bytes)";
    return out;
}

// Drops a byte order mark (EF BB BF) at the start of a line. It marks the encoding, never data: one at the
// start of any line, not only the first, is where two files were joined, and is skipped the same way.
inline void skipByteOrderMark(std::string& _rsLine) {
    if (_rsLine.compare(0, 3, "\xEF\xBB\xBF") == 0)
        _rsLine.erase(0, 3);
}
// Well-formed UTF-8: no stray continuation bytes, no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(const std::string& _text);

// Where a name or text holds what a line of a text file cannot carry: a control character (it would split the
// line or its fields; Windows file names hold none) or an unpaired surrogate (UTF-8 has no form for it). The
// index of the first such unit with _rsWhat saying what it is ("control character U+0009"), or -1.
int findUnwritable(const CString& _sText, CString& _rsWhat);

// _sText for a message: control characters and unpaired surrogates as \uXXXX, the rest as it is.
CString shownText(const CString& _sText);

} // namespace kortext
