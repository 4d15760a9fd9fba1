// Environment look-ups shared by korbase's services (log file, registry store, number formats).
#pragma once

#include "interfaces/korbase.h"

namespace korenv {

// The value of an environment variable; empty when it is not set. On Windows it sees changes made with
// SetEnvironmentVariableW after the C runtime copied the block.
CString variable(const wchar_t* _pszName);

#if !defined(_WIN32)
// An XDG base directory: $_pszXdgVariable when it is absolute (the XDG rules ignore a relative one), else
// the home directory ($HOME, then the user database, then /tmp) with _pszHomeSubdirectory appended. No
// trailing slash.
CString userDirectory(const wchar_t* _pszXdgVariable, const wchar_t* _pszHomeSubdirectory);
#endif

} // namespace korenv
