#include "RegistryChoice.h"

#if defined(_WIN32)

namespace {

std::string systemReason(LONG rc) {
    CString s;
    s.Format(L"system error %ld: %s", static_cast<long>(rc),
             UQErrno::mf_getSystemMessage(static_cast<std::uint32_t>(rc)));
    return s.ToUtf8();
}

LONG createKey(HKEY parent, const CString& path, HKEY& key) {
    return RegCreateKeyExW(parent, path, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr, &key,
                           nullptr);
}

} // namespace

RegistryChoice::RegistryChoice() noexcept : m_bChosen(false), m_hMachine(nullptr), m_hUser(nullptr) {}

RegistryChoice::~RegistryChoice() {
    if (m_bChosen) {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    }
    for (HKEY h : {m_hMachine, m_hUser}) {
        if (h != nullptr)
            RegCloseKey(h);
    }
}

int RegistryChoice::mf_choose(const CString& store, std::string& reason) {
    HKEY hRoot = nullptr;
    // Both stand-ins are opened before HKEY_CURRENT_USER is redirected, as the key is the user's own.
    LONG rc = createKey(HKEY_CURRENT_USER, store, hRoot);
    if (rc == ERROR_SUCCESS) {
        rc = createKey(hRoot, L"HKLM", m_hMachine);
        if (rc == ERROR_SUCCESS)
            rc = createKey(hRoot, L"HKCU", m_hUser);
        RegCloseKey(hRoot);
    }
    if (rc == ERROR_SUCCESS) {
        rc = RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_hMachine);
        if (rc == ERROR_SUCCESS) {
            rc = RegOverridePredefKey(HKEY_CURRENT_USER, m_hUser);
            if (rc != ERROR_SUCCESS)
                RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        }
    }
    if (rc != ERROR_SUCCESS) {
        reason =
            "cannot use the registry key 'HKEY_CURRENT_USER\\" + store.ToUtf8() + "': " + systemReason(rc);
        return 0;
    }
    m_bChosen = true;
    return 1;
}

#else

RegistryChoice::RegistryChoice() noexcept : m_bChosen(false) {}

RegistryChoice::~RegistryChoice() {
    if (!m_bChosen)
        return;
    try {
        UQRegistry::mf_setStoreFile(m_sPreviousFile);
    } catch (...) {
        // Out of memory: the process goes on with the chosen file.
    }
}

int RegistryChoice::mf_choose(const CString& store, std::string&) {
    m_sPreviousFile = UQRegistry::mf_getStoreFile();
    UQRegistry::mf_setStoreFile(store);
    m_bChosen = true;
    return 1;
}

#endif
