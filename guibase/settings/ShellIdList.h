// Shell item id-lists for the pickers. Internal to korguibase.
#pragma once

#include "interfaces/korbase.h"

#include <shlobj.h>

namespace uqshell {

// The id-list of a path, parsed by the desktop folder; null after a LEVEL_E record. Both pickers report
// it under "UQFileOpenDialog::mf_implPathToIdList", the operation it was written for.
LPITEMIDLIST pathToIdList(const CString& _sPath);

// Frees an id-list the shell handed out; null is allowed.
void freeIdList(LPITEMIDLIST _pIdList) noexcept;

// COM for the calling thread while the object lives (single-threaded apartment). A start that fails is
// logged at LEVEL_W under _pszFunction and the picker goes on without it.
class ComApartment {
public:
    ComApartment(const wchar_t* _pszFunction, DWORD _dwFlags);
    ~ComApartment();
    ComApartment(const ComApartment&) = delete;
    ComApartment& operator=(const ComApartment&) = delete;

private:
    bool m_bStarted;
};

} // namespace uqshell
