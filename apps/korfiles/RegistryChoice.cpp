#include "RegistryChoice.h"

#if defined(_WIN32)

namespace {

std::string systemReason(LONG rc) {
    CString s;
    s.Format(L"system error %ld: %s", static_cast<long>(rc),
             UQErrno::mf_getSystemMessage(static_cast<std::uint32_t>(rc)));
    return s.ToUtf8();
}

LONG createKey(HKEY _hParent, const CString& _sPath, UQRegistryKey& _rKey) {
    return RegCreateKeyExW(_hParent, _sPath, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS, nullptr,
                           _rKey.mf_put(), nullptr);
}

} // namespace

RegistryChoice::RegistryChoice() noexcept : m_bChosen(false) {}

RegistryChoice::~RegistryChoice() {
    if (m_bChosen) {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    }
    // The stand-in keys close with their owners.
}

int RegistryChoice::mf_choose(const CString& store, std::string& reason) {
    UQRegistryKey root;
    // Both stand-ins are opened before HKEY_CURRENT_USER is redirected, as the key is the user's own.
    LONG rc = createKey(HKEY_CURRENT_USER, store, root);
    if (rc == ERROR_SUCCESS) {
        rc = createKey(root.mf_get(), L"HKLM", m_hMachine);
        if (rc == ERROR_SUCCESS)
            rc = createKey(root.mf_get(), L"HKCU", m_hUser);
        root.mf_reset();
    }
    if (rc == ERROR_SUCCESS) {
        rc = RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_hMachine.mf_get());
        if (rc == ERROR_SUCCESS) {
            rc = RegOverridePredefKey(HKEY_CURRENT_USER, m_hUser.mf_get());
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

int RegistryChoice::mf_choose(const CString& _sStore, std::string&) {
    m_sPreviousFile = UQRegistry::mf_getStoreFile();
    UQRegistry::mf_setStoreFile(_sStore);
    m_bChosen = true;
    return 1;
}

#endif
