// The single GUI defaults: management class, the five flags, the default option file and the history
// search root. Getters never throw and fall back to their defaults; setters log what they wrote.
#include "GuiRegistryTestSupport.h"

#include <functional>

using namespace settingstest;

namespace {

struct Flag {
    const char* getter;
    const char* setter;
    int (*get)();
    int (*set)(int);
    const std::string* key;
    const wchar_t* name;
    // The setter's record up to the colon.
    const char* setText;
};

// The four flags that are created with 1 when read and missing.
const Flag CREATED_FLAGS[] = {
    {"UQGuiRegistry::mf_isDefaultMigrationFileSecurity", "UQGuiRegistry::mf_setDefaultMigrationFileSecurity",
     &UQGuiRegistry::mf_isDefaultMigrationFileSecurity, &UQGuiRegistry::mf_setDefaultMigrationFileSecurity,
     &MIGRATION, L"FileSecurityDefault", "Set migration-file-security"},
    {"UQGuiRegistry::mf_isDefaultRetrieveFileSecurity", "UQGuiRegistry::mf_setDefaultRetrieveFileSecurity",
     &UQGuiRegistry::mf_isDefaultRetrieveFileSecurity, &UQGuiRegistry::mf_setDefaultRetrieveFileSecurity,
     &RETRIEVE, L"FileSecurityDefault", "Set retrieval-file-security"},
    {"UQGuiRegistry::mf_isDefaultMigrationADStreams", "UQGuiRegistry::mf_setDefaultMigrationADStreams",
     &UQGuiRegistry::mf_isDefaultMigrationADStreams, &UQGuiRegistry::mf_setDefaultMigrationADStreams,
     &MIGRATION, L"ADStreamDefault", "Set migration-alternate-data-streams"},
    {"UQGuiRegistry::mf_isDefaultRetrieveADStreams", "UQGuiRegistry::mf_setDefaultRetrieveADStreams",
     &UQGuiRegistry::mf_isDefaultRetrieveADStreams, &UQGuiRegistry::mf_setDefaultRetrieveADStreams, &RETRIEVE,
     L"ADStreamDefault", "Set retrieval-alternate-data-streams"},
};

const Flag BACKUP_BEFORE_MIGRATE = {"UQGuiRegistry::mf_isDefaultBackupBeforeMigrate",
                                    "UQGuiRegistry::mf_setDefaultBackupBeforeMigrate",
                                    &UQGuiRegistry::mf_isDefaultBackupBeforeMigrate,
                                    &UQGuiRegistry::mf_setDefaultBackupBeforeMigrate,
                                    &BACKUP,
                                    L"BackupBeforeMigrate",
                                    "Set backup-before-migrate"};

std::string n(const wchar_t* name) {
    return utf8(name);
}

std::string setRecord(const Flag& f, int value) {
    return std::string(f.setText) + ":\r\n" + TAB + "'HKLM\\" + *f.key + "\\" + n(f.name) + "'\r\n" + TAB +
           "to " + std::to_string(value) + (value ? " (true)" : " (false)");
}

std::string getFailure(const std::string& name, const std::string& error, const std::string& fallback) {
    return "Failure getting registry value '" + name + "':\r\n" + TAB + error + "\r\n" + TAB + fallback;
}

std::string setFailure(const std::string& name, const std::string& error) {
    return "Failure setting registry value '" + name + "':\r\n" + TAB + error;
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Flags

TEST_F(GuiRegistryTest, MissingFlagsReadAs1AndAreCreatedWith1) {
    for (const Flag& f : CREATED_FLAGS) {
        EXPECT_FALSE(machineExists(*f.key, f.name)) << f.getter;
        EXPECT_EQ(f.get(), 1) << f.getter;
        EXPECT_EQ(machineNumber(*f.key, f.name), 1) << f.getter;
    }
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, FlagsAnswerTheStoredValue) {
    for (const Flag& f : CREATED_FLAGS) {
        UQRegistry::mf_setValue(f.name, 0, w(*f.key), HKEY_LOCAL_MACHINE);
        EXPECT_EQ(f.get(), 0) << f.getter;
    }
    UQRegistry::mf_setValue(L"ADStreamDefault", 7, w(RETRIEVE), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(UQGuiRegistry::mf_isDefaultRetrieveADStreams(), 7);
    EXPECT_EQ(UQGuiRegistry::mf_isDefaultMigrationADStreams(), 0);
    UQRegistry::mf_setValue(L"BackupBeforeMigrate", 0, w(BACKUP), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(UQGuiRegistry::mf_isDefaultBackupBeforeMigrate(), 0);
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, FlagSettersWriteTheValueAndLogIt) {
    std::vector<Flag> all(std::begin(CREATED_FLAGS), std::end(CREATED_FLAGS));
    all.push_back(BACKUP_BEFORE_MIGRATE);
    for (const Flag& f : all) {
        m_log.clear();
        EXPECT_EQ(f.set(0), 1) << f.setter;
        EXPECT_EQ(machineNumber(*f.key, f.name), 0) << f.setter;
        EXPECT_EQ(f.set(2), 1) << f.setter;
        EXPECT_EQ(machineNumber(*f.key, f.name), 2) << f.setter;
        EXPECT_EQ(f.get(), 2) << f.getter;
        EXPECT_EQ(m_log.lines(),
                  (std::vector<LogLine>{{'G', f.setter, setRecord(f, 0)}, {'G', f.setter, setRecord(f, 2)}}));
    }
}

TEST_F(GuiRegistryTest, MissingBackupBeforeMigrateReadsAs1WithoutBeingCreated) {
    EXPECT_EQ(UQGuiRegistry::mf_isDefaultBackupBeforeMigrate(), 1);
    const std::string detail = "Key 'HKLM\\" + BACKUP + "' not found (value 'BackupBeforeMigrate')";
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::2", detail},
                                                   {'E', "UQGuiRegistry::mf_isDefaultBackupBeforeMigrate",
                                                    getFailure("BackupBeforeMigrate", registryError(detail),
                                                               "Returning default 1 (true)...")}}));
    EXPECT_FALSE(machineExists(BACKUP, L"BackupBeforeMigrate"));
}

TEST_F(GuiRegistryTest, FlagOfAnotherTypeReadsAs1AndIsLeftAlone) {
    UQRegistry::mf_setValue(L"FileSecurityDefault", L"0", 0, w(MIGRATION), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(UQGuiRegistry::mf_isDefaultMigrationFileSecurity(), 1);
    const std::string detail =
        "Value 'FileSecurityDefault' in 'HKLM\\" + MIGRATION + "' is a string, not a number";
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getOrSetValue::1", detail},
                                                   {'E', "UQGuiRegistry::mf_isDefaultMigrationFileSecurity",
                                                    getFailure("FileSecurityDefault", registryError(detail),
                                                               "Returning default 1 (true)...")}}));
    EXPECT_EQ(machineString(MIGRATION, L"FileSecurityDefault"), "0");
}

// ---------------------------------------------------------------------------------------------------------
// Management class

TEST_F(GuiRegistryTest, ServerPlaceholderIsReadAsDEFAULT) {
    UQRegistry::mf_setValue(L"MgmtClassDefault", w(SERVER_MGMT_CLASS), 0, w(MIGRATION), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getDefaultMgmtClass()), "DEFAULT");
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, OtherManagementClassesAreReadAsStored) {
    for (const char* stored : {"GOLD", "<vrs server default mgmt class>", "DEFAULT", ""}) {
        UQRegistry::mf_setValue(L"MgmtClassDefault", w(stored), 0, w(MIGRATION), HKEY_LOCAL_MACHINE);
        EXPECT_EQ(utf8(UQGuiRegistry::mf_getDefaultMgmtClass()), stored);
    }
}

TEST_F(GuiRegistryTest, SettingTheManagementClassWritesItAsGiven) {
    EXPECT_EQ(UQGuiRegistry::mf_setDefaultMgmtClass(L"DEFAULT"), 1);
    EXPECT_EQ(machineString(MIGRATION, L"MgmtClassDefault"), "DEFAULT");
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_setDefaultMgmtClass",
                                     "Set default management class:\r\n" + TAB + "'HKLM\\" + MIGRATION +
                                         "\\MgmtClassDefault'\r\n" + TAB + "to 'DEFAULT'"}}));
}

TEST_F(GuiRegistryTest, MissingManagementClassReadsAsEmpty) {
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getDefaultMgmtClass()), "");
    const std::string detail = "Key 'HKLM\\" + MIGRATION + "' not found (value 'MgmtClassDefault')";
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::1", detail},
                                                   {'E', "UQGuiRegistry::mf_getDefaultMgmtClass",
                                                    getFailure("MgmtClassDefault", registryError(detail),
                                                               "Returning empty value ...")}}));
}

// ---------------------------------------------------------------------------------------------------------
// Default backup option file

TEST_F(GuiRegistryTest, DefaultOptionFileIsWrittenLoggedAndReadBack) {
    EXPECT_EQ(UQGuiRegistry::mf_setDefaultBackupOptionFilePath(L"D:\\Backup Client\\kor.opt"), 1);
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getDefaultBackupOptionFilePath()), "D:\\Backup Client\\kor.opt");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_setDefaultBackupOptionFilePath",
                                                    "Set default backup option file:\r\n" + TAB + "'HKLM\\" +
                                                        BACKUP + "\\BackupOptionFileDefault'\r\n" + TAB +
                                                        "to 'D:\\Backup Client\\kor.opt'"}}));
    EXPECT_EQ(UQGuiRegistry::mf_setDefaultBackupOptionFilePath(L""), 1);
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getDefaultBackupOptionFilePath()), "");
}

TEST_F(GuiRegistryTest, MissingDefaultOptionFileReadsAsEmpty) {
    UQRegistry::mf_setValue(L"BackupBeforeMigrate", 1, w(BACKUP), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getDefaultBackupOptionFilePath()), "");
    const std::string detail = "Value 'BackupOptionFileDefault' not found in 'HKLM\\" + BACKUP + "'";
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::1", detail},
                                    {'E', "UQGuiRegistry::mf_getDefaultBackupOptionFilePath",
                                     getFailure("BackupOptionFileDefault", registryError(detail),
                                                "Returning empty value ...")}}));
}

TEST_F(GuiRegistryTest, FailingDefaultOptionFileWriteNamesBackupBeforeMigrateAndThrows) {
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(thrownCategory([] { UQGuiRegistry::mf_setDefaultBackupOptionFilePath(L"x.opt"); }),
              "_E_::Registry");
    const std::string detail = injected(machineValue("BackupOptionFileDefault", BACKUP));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_setValue::1", detail},
                                    {'E', "UQGuiRegistry::mf_setDefaultBackupOptionFilePath",
                                     setFailure("BackupBeforeMigrate", registryError(detail))}}));
    EXPECT_FALSE(machineExists(BACKUP, L"BackupOptionFileDefault"));
}

// ---------------------------------------------------------------------------------------------------------
// History search root

TEST_F(GuiRegistryTest, MissingHistorySearchRootIsEmptyWithoutALogRecord) {
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getHistorySearchRoot()), "");
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, HistorySearchRootIsWrittenSilentlyToThePerUserKey) {
    EXPECT_EQ(UQGuiRegistry::mf_setHistorySearchRoot(L"\\\\server\\share\\projects"), 1);
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getHistorySearchRoot()), "\\\\server\\share\\projects");
    CString stored;
    UQRegistry::mf_getValue(L"HistorySearchRoot", stored, w(ROOT), HKEY_CURRENT_USER);
    EXPECT_EQ(utf8(stored), "\\\\server\\share\\projects");
    EXPECT_FALSE(machineExists(ROOT, L"HistorySearchRoot"));
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, HistorySearchRootOfAnotherTypeReadsAsEmpty) {
    UQRegistry::mf_setValue(L"HistorySearchRoot", 3, L"", HKEY_CURRENT_USER);
    EXPECT_EQ(utf8(UQGuiRegistry::mf_getHistorySearchRoot()), "");
    const std::string detail = "Value 'HistorySearchRoot' in 'HKCU\\" + ROOT + "' is a number, not a string";
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::1", detail},
                                                   {'E', "UQGuiRegistry::mf_getHistorySearchRoot",
                                                    getFailure("HistorySearchRoot", registryError(detail),
                                                               "Returning empty value ...")}}));
}

// ---------------------------------------------------------------------------------------------------------
// A registry that fails every call

TEST_F(GuiRegistryTest, EveryGetterAndSetterSurvivesAFailingRegistry) {
    UQRegistry::mf_setValue(L"MgmtClassDefault", L"GOLD", 0, w(MIGRATION), HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"HistorySearchRoot", L"D:\\", 0, L"", HKEY_CURRENT_USER);
    storeMru({"a.opt"});
    UQRegistryInjection::mf_injectFailure(0, 1000);

    struct Call {
        const char* function;
        const char* registryFunction;
        std::string subject;
        std::function<std::string()> run;
        std::string result;
        // The operation's own record for the error text.
        std::function<std::string(const std::string&)> record;
    };
    const auto empty = [](const char* name) {
        return [name](const std::string& e) { return getFailure(name, e, "Returning empty value ..."); };
    };
    const auto one = [](const char* name) {
        return [name](const std::string& e) { return getFailure(name, e, "Returning default 1 (true)..."); };
    };
    const auto set = [](const char* name) {
        return [name](const std::string& e) { return setFailure(name, e); };
    };
    const auto number = [](int (*f)()) { return [f] { return std::to_string(f()); }; };
    const auto flag = [](int (*f)(int), int v) { return [f, v] { return std::to_string(f(v)); }; };
    const std::string mruValue = userValue("BackupOptionFilesMru");
    const std::vector<Call> calls = {
        {"UQGuiRegistry::mf_getDefaultMgmtClass", "UQRegistry::mf_getValue::1",
         machineValue("MgmtClassDefault", MIGRATION),
         [] { return utf8(UQGuiRegistry::mf_getDefaultMgmtClass()); }, "", empty("MgmtClassDefault")},
        {"UQGuiRegistry::mf_isDefaultBackupBeforeMigrate", "UQRegistry::mf_getValue::2",
         machineValue("BackupBeforeMigrate", BACKUP), number(&UQGuiRegistry::mf_isDefaultBackupBeforeMigrate),
         "1", one("BackupBeforeMigrate")},
        {"UQGuiRegistry::mf_isDefaultMigrationFileSecurity", "UQRegistry::mf_getOrSetValue::1",
         machineValue("FileSecurityDefault", MIGRATION),
         number(&UQGuiRegistry::mf_isDefaultMigrationFileSecurity), "1", one("FileSecurityDefault")},
        {"UQGuiRegistry::mf_isDefaultRetrieveFileSecurity", "UQRegistry::mf_getOrSetValue::1",
         machineValue("FileSecurityDefault", RETRIEVE),
         number(&UQGuiRegistry::mf_isDefaultRetrieveFileSecurity), "1", one("FileSecurityDefault")},
        {"UQGuiRegistry::mf_isDefaultMigrationADStreams", "UQRegistry::mf_getOrSetValue::1",
         machineValue("ADStreamDefault", MIGRATION), number(&UQGuiRegistry::mf_isDefaultMigrationADStreams),
         "1", one("ADStreamDefault")},
        {"UQGuiRegistry::mf_isDefaultRetrieveADStreams", "UQRegistry::mf_getOrSetValue::1",
         machineValue("ADStreamDefault", RETRIEVE), number(&UQGuiRegistry::mf_isDefaultRetrieveADStreams),
         "1", one("ADStreamDefault")},
        {"UQGuiRegistry::mf_getDefaultBackupOptionFilePath", "UQRegistry::mf_getValue::1",
         machineValue("BackupOptionFileDefault", BACKUP),
         [] { return utf8(UQGuiRegistry::mf_getDefaultBackupOptionFilePath()); }, "",
         empty("BackupOptionFileDefault")},
        {"UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU", "UQRegistry::mf_exists", mruValue,
         [] {
             UQArray<CString> paths;
             const int result = UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths);
             return std::to_string(result) + " with " + std::to_string(paths.GetSize()) + " entries";
         },
         "0 with 0 entries",
         [](const std::string& e) {
             return "Failure reading registry values 'BackupOptionFilesMru':\r\n" + TAB + e;
         }},
        {"UQGuiRegistry::mf_getHistorySearchRoot", "UQRegistry::mf_exists", userValue("HistorySearchRoot"),
         [] { return utf8(UQGuiRegistry::mf_getHistorySearchRoot()); }, "", empty("HistorySearchRoot")},
        {"UQGuiRegistry::mf_setDefaultMgmtClass", "UQRegistry::mf_setValue::1",
         machineValue("MgmtClassDefault", MIGRATION),
         [] { return std::to_string(UQGuiRegistry::mf_setDefaultMgmtClass(L"SILVER")); }, "0",
         set("MgmtClassDefault")},
        {"UQGuiRegistry::mf_setDefaultBackupBeforeMigrate", "UQRegistry::mf_setValue::2",
         machineValue("BackupBeforeMigrate", BACKUP),
         flag(&UQGuiRegistry::mf_setDefaultBackupBeforeMigrate, 0), "0", set("BackupBeforeMigrate")},
        {"UQGuiRegistry::mf_setDefaultMigrationFileSecurity", "UQRegistry::mf_setValue::2",
         machineValue("FileSecurityDefault", MIGRATION),
         flag(&UQGuiRegistry::mf_setDefaultMigrationFileSecurity, 0), "0", set("FileSecurityDefault")},
        {"UQGuiRegistry::mf_setDefaultRetrieveFileSecurity", "UQRegistry::mf_setValue::2",
         machineValue("FileSecurityDefault", RETRIEVE),
         flag(&UQGuiRegistry::mf_setDefaultRetrieveFileSecurity, 0), "0", set("FileSecurityDefault")},
        {"UQGuiRegistry::mf_setDefaultMigrationADStreams", "UQRegistry::mf_setValue::2",
         machineValue("ADStreamDefault", MIGRATION), flag(&UQGuiRegistry::mf_setDefaultMigrationADStreams, 0),
         "0", set("ADStreamDefault")},
        {"UQGuiRegistry::mf_setDefaultRetrieveADStreams", "UQRegistry::mf_setValue::2",
         machineValue("ADStreamDefault", RETRIEVE), flag(&UQGuiRegistry::mf_setDefaultRetrieveADStreams, 0),
         "0", set("ADStreamDefault")},
        {"UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU", "UQRegistry::mf_setValues", mruValue,
         [] {
             UQArray<CString> paths;
             paths.Add(L"b.opt");
             return std::to_string(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(paths));
         },
         "0",
         [](const std::string& e) {
             return "Failure sorting/writing registry values 'BackupOptionFilesMru':\r\n" + TAB + e;
         }},
        {"UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU", "UQRegistry::mf_exists", mruValue,
         [] {
             return std::to_string(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"b.opt", 0));
         },
         "0",
         [](const std::string& e) {
             return "Failure reading registry values 'BackupOptionFilesMru':\r\n" + TAB + e;
         }},
        {"UQGuiRegistry::mf_setHistorySearchRoot", "UQRegistry::mf_setValue::1",
         userValue("HistorySearchRoot"),
         [] { return std::to_string(UQGuiRegistry::mf_setHistorySearchRoot(L"E:\\")); }, "0",
         set("HistorySearchRoot")},
    };
    for (const Call& c : calls) {
        m_log.clear();
        std::string result = "<threw>";
        EXPECT_EQ(thrownCategory([&] { result = c.run(); }), "no exception") << c.function;
        EXPECT_EQ(result, c.result) << c.function;
        const std::string detail = injected(c.subject);
        EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', c.registryFunction, detail},
                                                       {'E', c.function, c.record(registryError(detail))}}));
    }
    // The one setter that throws.
    m_log.clear();
    EXPECT_EQ(thrownCategory([] { UQGuiRegistry::mf_setDefaultBackupOptionFilePath(L"x.opt"); }),
              "_E_::Registry");
    EXPECT_EQ(m_log.lines().size(), 2u);

    // Nothing was changed.
    UQRegistryInjection::mf_clearInjection();
    EXPECT_EQ(machineString(MIGRATION, L"MgmtClassDefault"), "GOLD");
    EXPECT_FALSE(machineExists(MIGRATION, L"FileSecurityDefault"));
    EXPECT_EQ(mru(), (std::vector<std::string>{"a.opt"}));
    CString root;
    UQRegistry::mf_getValue(L"HistorySearchRoot", root, L"", HKEY_CURRENT_USER);
    EXPECT_EQ(utf8(root), "D:\\");
}
