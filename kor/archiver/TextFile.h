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

// Drops a byte order mark (EF BB BF) at the start of a line. It marks the encoding, never data: one at the
// start of any line, not only the first, is where two files were joined, and is skipped the same way.
inline void skipByteOrderMark(std::string& _rsLine) {
    if (_rsLine.compare(0, 3, "\xEF\xBB\xBF") == 0)
        _rsLine.erase(0, 3);
}
// Well-formed UTF-8: no stray continuation bytes, no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(const std::string& _text);

} // namespace kortext
