// Opening the text files that korarchiver reads (listings, history stores). Internal to korarchiver.
#pragma once

#include "compat/UQHandle.h"
#include "interfaces/korarchiver.h"

namespace kortext {

// Opens _sFile for reading in binary mode (the wide name on Windows, UTF-8 elsewhere). A file that cannot be
// opened logs "Failure opening <_pszWhat> '<file>'" at LEVEL_E under _pszFunction and throws
// UQErrno::_E_::File whose detail is "<file>: cannot open (errno N)".
UQStdFile openForReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat);

// A read that failed part-way: logs "Failure reading <_pszWhat> '<file>'" at LEVEL_E under _pszFunction and
// throws UQErrno::_E_::File whose detail is "<file>: read error".
[[noreturn]] void failReading(const CString& _sFile, const wchar_t* _pszFunction, const wchar_t* _pszWhat);

} // namespace kortext
