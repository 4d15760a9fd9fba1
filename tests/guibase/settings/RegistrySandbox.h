// A registry of its own for one test. Windows: HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER are redirected
// (RegOverridePredefKey) onto two fresh keys under HKCU\Software\korguibase-tests\<unique>, which is
// deleted before and after. Elsewhere: a fresh database file for UQRegistry, deleted before and after.
// The korbase tests use it too.
#pragma once

#include "interfaces/korbase.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <string>

namespace registrytest {

// "<pid>-<n>", unique within the machine for the life of the process.
inline std::string uniqueName() {
    static std::atomic<int> s_counter{0};
    return std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++s_counter);
}

#if defined(_WIN32)

class RegistrySandbox {
public:
    RegistrySandbox() {
        const std::string name = uniqueName();
        m_sPath = L"Software\\korguibase-tests\\";
        m_sPath += CString::FromUtf8(name);
        // Leftovers of a run that died with the same process id.
        RegDeleteTreeW(HKEY_CURRENT_USER, m_sPath);
        LONG rc = RegCreateKeyExW(HKEY_CURRENT_USER, m_sPath, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                  KEY_ALL_ACCESS, nullptr, &m_hScratch, nullptr);
        EXPECT_EQ(rc, ERROR_SUCCESS) << "creating HKCU\\" << m_sPath.ToUtf8();
        if (rc == ERROR_SUCCESS)
            rc = RegCreateKeyExW(m_hScratch, L"HKLM", 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                 nullptr, &m_hMachine, nullptr);
        if (rc == ERROR_SUCCESS)
            rc = RegCreateKeyExW(m_hScratch, L"HKCU", 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_ALL_ACCESS,
                                 nullptr, &m_hUser, nullptr);
        EXPECT_EQ(rc, ERROR_SUCCESS) << "creating the scratch hives";
        if (rc == ERROR_SUCCESS)
            rc = RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_hMachine);
        if (rc == ERROR_SUCCESS)
            rc = RegOverridePredefKey(HKEY_CURRENT_USER, m_hUser);
        EXPECT_EQ(rc, ERROR_SUCCESS) << "RegOverridePredefKey";
    }

    ~RegistrySandbox() {
        RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
        RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
        for (HKEY h : {m_hMachine, m_hUser, m_hScratch}) {
            if (h != nullptr)
                RegCloseKey(h);
        }
        RegDeleteTreeW(HKEY_CURRENT_USER, m_sPath);
    }

    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;

    // The keys that stand in for the hives, to look at what a test wrote without going through UQRegistry.
    HKEY machine() const noexcept { return m_hMachine; }
    HKEY user() const noexcept { return m_hUser; }
    HKEY standIn(HKEY hive) const noexcept { return hive == HKEY_LOCAL_MACHINE ? m_hMachine : m_hUser; }
    const CString& scratchPath() const noexcept { return m_sPath; }

private:
    CString m_sPath;
    HKEY m_hScratch = nullptr;
    HKEY m_hMachine = nullptr;
    HKEY m_hUser = nullptr;
};

#else

class RegistrySandbox {
public:
    RegistrySandbox() {
        m_path = std::filesystem::temp_directory_path() / ("korguibase-registry-" + uniqueName() + ".sqlite");
        removeFiles();
        UQRegistry::mf_setStoreFile(CString::FromUtf8(m_path.string()));
    }

    ~RegistrySandbox() {
        // Closes the database before its files go.
        UQRegistry::mf_setStoreFile(CString());
        removeFiles();
    }

    RegistrySandbox(const RegistrySandbox&) = delete;
    RegistrySandbox& operator=(const RegistrySandbox&) = delete;

    const std::filesystem::path& file() const noexcept { return m_path; }
    CString fileText() const { return CString::FromUtf8(m_path.string()); }

private:
    void removeFiles() {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
            std::error_code ec;
            std::filesystem::remove(m_path.string() + suffix, ec);
        }
    }

    std::filesystem::path m_path;
};

#endif

} // namespace registrytest
