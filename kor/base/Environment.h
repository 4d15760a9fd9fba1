// Environment look-ups shared by korbase's services (log file, registry store, number formats).
#pragma once

#include "interfaces/korbase.h"

namespace korenv {

// The value of an environment variable; empty when it is not set. On Windows it sees changes made with
// SetEnvironmentVariableW after the C runtime copied the block.
CString variable(const wchar_t* _pszName);

// A variable for %NAME% expansion, found as Windows finds it: the name case-blind (natively the exact name
// first, then the first whose name folds alike). _rbFound tells an empty value from a missing variable.
CString expansionVariable(const CString& _sName, bool& _rbFound);

#if !defined(_WIN32)
// An XDG base directory: $_pszXdgVariable when it is absolute (the XDG rules ignore a relative one), else
// the home directory ($HOME, then the user database, then /tmp) with _pszHomeSubdirectory appended. No
// trailing slash.
CString userDirectory(const wchar_t* _pszXdgVariable, const wchar_t* _pszHomeSubdirectory);
#endif

} // namespace korenv
