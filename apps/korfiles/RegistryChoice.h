#pragma once

#include "compat/UQHandle.h"
#include "interfaces/korbase.h"

#include <string>

// The registry that the settings command reads and writes, chosen with --registry for the lifetime of the
// object and given back when it goes.
// - native: the database file of UQRegistry's store (mf_setStoreFile); the file used before is used again
//   afterwards.
// - Windows: a key under HKEY_CURRENT_USER whose sub keys HKLM and HKCU stand in for HKEY_LOCAL_MACHINE
//   and HKEY_CURRENT_USER (RegOverridePredefKey, for this process only); both are created when missing.
//   Afterwards the process sees its own hives again.
// Without a choice the registry stays as it is.
class RegistryChoice {
public:
    RegistryChoice() noexcept;
    RegistryChoice(const RegistryChoice&) = delete;
    RegistryChoice& operator=(const RegistryChoice&) = delete;
    ~RegistryChoice();

    // Answers 0 with the reason when the store cannot be taken (Windows: a key that cannot be created or
    // redirected onto); nothing is changed then. One choice per object.
    int mf_choose(const CString& _sStore, std::string& _rsReason);

private:
    bool m_bChosen;
#if defined(_WIN32)
    UQRegistryKey m_hMachine;
    UQRegistryKey m_hUser;
#else
    CString m_sPreviousFile;
#endif
};
