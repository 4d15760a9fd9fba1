// korfiles settings --registry=STORE: the settings go to the chosen store (native: a database file,
// Windows: a key under HKEY_CURRENT_USER standing in for both hives), and the process has its own
// registry back afterwards.
#include "KorFilesSettingsTestSupport.h"
#include "interfaces/korbase_testing.h"

#include <algorithm>

using namespace korfilessettings;

namespace {

class SettingsRegistryChoiceTest : public ::testing::Test {
protected:
    void TearDown() override { UQRegistryInjection::mf_clearInjection(); }

    int settings(std::vector<CString> args) {
        args.insert(args.begin(), L"settings");
        out.text.clear();
        err.text.clear();
        return KorFilesTool::mf_run(args, L"no-default-input.txt", L"no-default-listing.txt", out, err);
    }

    StringOutput out;
    StringOutput err;
    LogCheck log;
};

} // namespace

#if defined(_WIN32)

namespace {

// A key under HKEY_CURRENT_USER for one test, deleted before and after.
class ScratchKey {
public:
    ScratchKey() : m_sPath(L"Software\\korguibase-tests\\") {
        m_sPath += CString::FromUtf8(registrytest::uniqueName() + "-korfiles");
        RegDeleteTreeW(HKEY_CURRENT_USER, m_sPath);
    }
    ~ScratchKey() { RegDeleteTreeW(HKEY_CURRENT_USER, m_sPath); }
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    const CString& path() const { return m_sPath; }

    // A string value below the stand-in of a hive ("HKLM" or "HKCU"), read past UQRegistry; "(missing)"
    // when there is none.
    std::string string(const wchar_t* hive, const std::string& key, const wchar_t* name) const {
        const CString full = m_sPath + L"\\" + hive + (key.empty() ? CString() : L"\\" + w(key));
        return readString(HKEY_CURRENT_USER, full, name);
    }

    static std::string readString(HKEY root, const CString& key, const wchar_t* name) {
        wchar_t buffer[512];
        DWORD size = sizeof buffer;
        const LONG rc = RegGetValueW(root, key, name, RRF_RT_REG_SZ, nullptr, buffer, &size);
        return rc == ERROR_SUCCESS ? utf8(buffer) : std::string("(missing)");
    }

private:
    CString m_sPath;
};

bool keyExists(HKEY root, const CString& key) {
    HKEY h = nullptr;
    if (RegOpenKeyExW(root, key, 0, KEY_READ, &h) != ERROR_SUCCESS)
        return false;
    RegCloseKey(h);
    return true;
}

} // namespace

TEST_F(SettingsRegistryChoiceTest, TheKeyTakesTheSettingsAndTheHivesAreGivenBackAfterwards) {
    const ScratchKey key;
    const std::string option = "--registry=" + utf8(key.path());
    // Unique, so that the real hives cannot hold it by chance.
    const std::string mgmtClass = "gold-" + registrytest::uniqueName();

    EXPECT_EQ(0, settings({w(option), L"set", L"management-class", w(mgmtClass)}));
    EXPECT_EQ("management-class: " + mgmtClass + "\n", out.text);
    EXPECT_EQ("", err.text);
    EXPECT_EQ(mgmtClass, key.string(L"HKLM", MIGRATION, L"MgmtClassDefault"));

    EXPECT_EQ(0, settings({w(option), L"set", L"history-search-root", L"D:\\Archive"}));
    EXPECT_EQ("D:\\Archive", key.string(L"HKCU", ROOT, L"HistorySearchRoot"));

    // Seeding in the key too: the show of a key that holds only these two.
    EXPECT_EQ(0, settings({w(option)}));
    std::string expected = seededDefaults();
    expected.replace(0, expected.find('\n') + 1, "management-class: " + mgmtClass + "\n");
    expected.replace(expected.find("history-search-root:\n"), std::string::npos,
                     "history-search-root: D:\\Archive\n");
    EXPECT_EQ(expected, out.text);
    // No backup client in the key, so no default option file either.
    EXPECT_EQ("(missing)", key.string(L"HKLM", BACKUP, L"BackupOptionFileDefault"));
    EXPECT_TRUE(keyExists(HKEY_CURRENT_USER, key.path() + L"\\HKLM\\" + w(RETRIEVE)));

    // The process sees its own hives again: the real HKEY_LOCAL_MACHINE has what the scratch key has not,
    // and none of the values went there.
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"));
    EXPECT_FALSE(keyExists(HKEY_CURRENT_USER, key.path() + L"\\HKLM\\SOFTWARE\\Microsoft"));
    EXPECT_NE(mgmtClass, ScratchKey::readString(HKEY_LOCAL_MACHINE, w(MIGRATION), L"MgmtClassDefault"));
    EXPECT_TRUE(keyExists(HKEY_CURRENT_USER, key.path()));
}

TEST_F(SettingsRegistryChoiceTest, AKeyThatCannotBeCreatedChangesNothingAndGivesCode1) {
    // A key name may not be longer than 255 characters.
    const CString tooLong = L"Software\\korguibase-tests\\" + CString(std::wstring(300, L'k').c_str());
    EXPECT_EQ(1, settings({L"--registry=" + tooLong, L"set", L"history-search-root", L"D:\\x"}));
    const std::string prefix =
        "korfiles: cannot use the registry key 'HKEY_CURRENT_USER\\" + utf8(tooLong) + "': system error ";
    EXPECT_EQ(prefix, err.text.substr(0, prefix.size()));
    EXPECT_EQ('\n', err.text.back());
    EXPECT_EQ(1u, std::count(err.text.begin(), err.text.end(), '\n'));
    EXPECT_EQ("", out.text);
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
    EXPECT_TRUE(keyExists(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion"));
}

#else

TEST_F(SettingsRegistryChoiceTest, TheFileTakesTheSettingsAndTheStoreInUseIsGivenBackAfterwards) {
    // Two fresh database files: the one chosen on the command line, and the one in use.
    const registrytest::RegistrySandbox chosen;
    const registrytest::RegistrySandbox inUse;
    const std::string option = "--registry=" + chosen.file().string();

    EXPECT_EQ(0, settings({w(option), L"set", L"management-class", L"gold"}));
    EXPECT_EQ("management-class: gold\n", out.text);
    EXPECT_EQ("", err.text);
    EXPECT_EQ(0, settings({w(option), L"mru", L"add", L"a.opt"}));
    EXPECT_EQ(0, settings({w(option)}));
    std::string expected = seededDefaults();
    expected.replace(0, expected.find('\n') + 1, "management-class: gold\n");
    expected.replace(expected.find(SHOWN_DYNAMIC), SHOWN_DYNAMIC.size(),
                     "option-file-mru: " + TRANSLATED + "\noption-file-mru: a.opt\n");
    EXPECT_EQ(expected, out.text);

    // The store in use is in use again, and holds nothing of it.
    EXPECT_EQ(utf8(inUse.fileText()), utf8(UQRegistry::mf_getStoreFile()));
    EXPECT_FALSE(UQRegistry::mf_PathExists(w(ROOT), HKEY_LOCAL_MACHINE));
    EXPECT_FALSE(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER));

    // The chosen file has it all.
    UQRegistry::mf_setStoreFile(chosen.fileText());
    CString mgmtClass;
    UQRegistry::mf_getValue(L"MgmtClassDefault", mgmtClass, w(MIGRATION), HKEY_LOCAL_MACHINE);
    EXPECT_EQ("gold", utf8(mgmtClass));
    UQArray<CString> entries;
    UQRegistry::mf_getValues(L"BackupOptionFilesMru", entries, L"", HKEY_CURRENT_USER);
    EXPECT_EQ((std::vector<std::string>{DYNAMIC, "a.opt"}), strings(entries));
    UQRegistry::mf_setStoreFile(inUse.fileText());
}

TEST_F(SettingsRegistryChoiceTest, AFileThatCannotBeOpenedIsReportedAndRefusesChanges) {
    const registrytest::RegistrySandbox inUse;
    // Its directory would have to be made inside a plain file.
    const TempFile plain("not a directory\n");
    const std::string file = plain.name() + "/registry.sqlite";
    const std::string option = "--registry=" + file;

    // Not the getters' defaults, which would pass for the settings.
    EXPECT_EQ(3, settings({w(option)}));
    EXPECT_EQ("", out.text);
    const std::string shownPrefix = "korfiles: cannot read the settings from the registry store '" + file +
                                    "': Registry store '" + file +
                                    "' cannot be opened (value 'MgmtClassDefault' in 'HKLM\\" + MIGRATION +
                                    "'): unable to open database file\n";
    EXPECT_EQ(shownPrefix, err.text);
    for (const LogLine& l : log.lines())
        EXPECT_EQ('E', l.level) << l;

    log.clear();
    EXPECT_EQ(1, settings({w(option), L"set", L"management-class", L"gold"}));
    // The line ends in the store's own reason (SQLite's message) and the error's closing parenthesis.
    std::string prefix =
        "korfiles: cannot set management-class: " +
        registryError("Registry store '" + file + "' cannot be opened (value 'MgmtClassDefault' in 'HKLM\\" +
                      MIGRATION + "'): ");
    prefix.pop_back();
    EXPECT_EQ(prefix, err.text.substr(0, prefix.size())) << err.text;
    EXPECT_LT(prefix.size() + 2, err.text.size());
    EXPECT_EQ(")\n", err.text.substr(err.text.size() - 2));
    EXPECT_EQ(1u, std::count(err.text.begin(), err.text.end(), '\n'));
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(2u, lines.size());
    EXPECT_EQ("UQRegistry::mf_setValue::1", lines[0].function);
    EXPECT_EQ("UQGuiRegistry::mf_setDefaultMgmtClass", lines[1].function);
    EXPECT_EQ(utf8(inUse.fileText()), utf8(UQRegistry::mf_getStoreFile()));
}

#endif
