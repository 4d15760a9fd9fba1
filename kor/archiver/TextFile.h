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

// Well-formed UTF-8: no stray continuation bytes, no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(const std::string& _text);

} // namespace kortext
