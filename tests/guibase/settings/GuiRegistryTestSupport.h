// Shared setup of the GUI registry tests: a registry of the test's own, the log, the value names and the
// texts that records carry.
#pragma once

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "kor/base/BaseTestSupport.h"
#include "support/LogCheck.h"

#include <initializer_list>
#include <string>
#include <vector>

namespace settingstest {

const std::string TAB = "    ";
const std::string ROOT = "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient";
const std::string MIGRATION = ROOT + "\\Migration";
const std::string BACKUP = ROOT + "\\Backup";
const std::string RETRIEVE = ROOT + "\\Retrieve";
const std::string SERVER_MGMT_CLASS = "<VRS server default mgmt class>";
const std::string DYNAMIC = "<B/A client chooses options file>";
const std::string DYNAMIC_NAME = "Option file chosen by the backup client";
const std::string TRANSLATED = "DEFAULT <" + DYNAMIC_NAME + ">";

inline CString w(const std::string& s) {
    return CString::FromUtf8(s);
}

// The one-line text of a registry failure with the given detail.
inline std::string registryError(const std::string& detail) {
    return "[E] _E_::Registry: A registry value could not be read or written. (" + detail + ")";
}

inline std::string injected(const std::string& subject) {
    return "Injected failure (" + subject + ")";
}

// "value 'Name' in 'HKLM\<key>'", as registry failures name a value.
inline std::string machineValue(const std::string& name, const std::string& key) {
    return "value '" + name + "' in 'HKLM\\" + key + "'";
}

inline std::string userValue(const std::string& name) {
    return "value '" + name + "' in 'HKCU\\" + ROOT + "'";
}

inline std::vector<std::string> strings(const UQArray<CString>& a) {
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < a.GetSize(); ++i)
        out.push_back(utf8(a[i]));
    return out;
}

class GuiRegistryTest : public ::testing::Test {
protected:
    void TearDown() override {
        UQRegistryInjection::mf_clearInjection();
        UQAllocationInjection::mf_clearInjection();
    }

    // The stored MRU, read past UQGuiRegistry.
    static std::vector<std::string> mru() {
        UQArray<CString> entries;
        UQRegistry::mf_getValues(L"BackupOptionFilesMru", entries, L"", HKEY_CURRENT_USER);
        return strings(entries);
    }

    static void storeMru(std::initializer_list<const char*> entries) {
        UQArray<CString> list;
        for (const char* e : entries)
            list.Add(w(e));
        UQRegistry::mf_setValues(L"BackupOptionFilesMru", list, L"", HKEY_CURRENT_USER);
    }

    static std::string machineString(const std::string& key, const wchar_t* name) {
        CString value;
        UQRegistry::mf_getValue(name, value, w(key), HKEY_LOCAL_MACHINE);
        return utf8(value);
    }

    static int machineNumber(const std::string& key, const wchar_t* name) {
        int n = -1;
        UQRegistry::mf_getValue(name, n, w(key), HKEY_LOCAL_MACHINE);
        return n;
    }

    static bool machineExists(const std::string& key, const wchar_t* name) {
        return UQRegistry::mf_exists(name, w(key), HKEY_LOCAL_MACHINE) != 0;
    }

    // The backup client's installation directory as its "Path" value names it.
    static void setBackupClientPath(const CString& directory) {
        UQRegistry::mf_setValue(L"Path", directory, 0,
                                L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient",
                                HKEY_LOCAL_MACHINE);
    }

    registrytest::RegistrySandbox m_sandbox;
    LogCheck m_log;
};

} // namespace settingstest
