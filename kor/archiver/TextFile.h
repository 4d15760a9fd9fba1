// Opening the text files that korarchiver reads (listings, history stores). Internal to korarchiver.
#pragma once

#include "interfaces/korarchiver.h"

#include <cstdio>
#include <string>

namespace kortext {

// Opens _sFile for reading in binary mode (the wide name on Windows, UTF-8 elsewhere). A file that cannot be
// opened logs "Failure opening <_pszWhat> '<file>'" at LEVEL_E under _pszFunction and throws
// UQErrno::_E_::File whose detail is "<file>: cannot open (errno N)".
FILE* openForReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat);

// Drops a byte order mark (EF BB BF) at the start of a line. It marks the encoding, never data: one at the
// start of any line, not only the first, is where two files were joined, and is skipped the same way.
inline void skipByteOrderMark(std::string& _rsLine) {
    if (_rsLine.compare(0, 3, "\xEF\xBB\xBF") == 0)
        _rsLine.erase(0, 3);
}

} // namespace kortext
