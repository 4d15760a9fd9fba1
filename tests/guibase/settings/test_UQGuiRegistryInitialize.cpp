// Seeding the GUI defaults at start-up: missing values get their defaults, existing ones are never
// touched, and a step that fails is logged while the next one still runs.
#include "GuiRegistryTestSupport.h"

using namespace settingstest;

namespace {

const std::string BACKUP_CLIENT = "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient";

class GuiRegistryInitializeTest : public GuiRegistryTest {
protected:
    GuiRegistryInitializeTest() : m_client("settings-backup-client") {}

    // The backup client installed with its kor.opt; answers the option file's path as the registry gets it.
    std::string installBackupClient(bool withOptionFile = true) {
        setBackupClientPath(m_client.path());
        if (withOptionFile)
            basetest::writeFile(m_client.child(L"kor.opt"), "* options\n");
        return utf8(m_client.path()) + "\\kor.opt";
    }

    static std::vector<LogLine> mruSeeded() {
        return {{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                 "Option file path '" + DYNAMIC + "' added to MRU"},
                {'G', "UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU",
                 "Successfully added dynamic option file '" + DYNAMIC +
                     "' to registry key 'BackupOptionFilesMru'"}};
    }

    static LogLine mgmtClassSeeded() {
        return {'G', "UQGuiRegistry::mf_implInitializeDefaultMgmtClass",
                "Initialized default management class:\r\n" + TAB + "'HKLM\\" + MIGRATION +
                    "\\MgmtClassDefault'\r\n" + TAB + "with default backup option file '" +
                    SERVER_MGMT_CLASS + "'"};
    }

    static LogLine backupBeforeMigrateSeeded() {
        return {'G', "UQGuiRegistry::mf_implInitializeBackupBeforeMigrate",
                "Initialized backup-before-migrate:\r\n" + TAB + "'HKLM\\" + BACKUP +
                    "\\BackupBeforeMigrate'\r\n" + TAB + "with 1 (true)"};
    }

    static LogLine optionFileSeeded(const std::string& path) {
        return {'G', "UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile",
                "Initialized default backup option file:\r\n" + TAB + "'HKLM\\" + BACKUP +
                    "\\BackupOptionFileDefault'\r\n" + TAB + "with default backup option file '" + path +
                    "'"};
    }

    static std::vector<LogLine> concat(std::initializer_list<std::vector<LogLine>> parts) {
        std::vector<LogLine> all;
        for (const auto& p : parts)
            all.insert(all.end(), p.begin(), p.end());
        return all;
    }

    // Everything seeded already, so that the steps only look.
    static void presetEverything() {
        UQRegistry::mf_setValue(L"MgmtClassDefault", L"gold", 0, w(MIGRATION), HKEY_LOCAL_MACHINE);
        UQRegistry::mf_setValue(L"BackupBeforeMigrate", 0, w(BACKUP), HKEY_LOCAL_MACHINE);
        UQRegistry::mf_setValue(L"BackupOptionFileDefault", L"D:\\opt\\x.opt", 0, w(BACKUP),
                                HKEY_LOCAL_MACHINE);
        storeMru({"b.opt", "<B/A client chooses options file>"});
    }

    basetest::ScratchDirectory m_client;
};

} // namespace

TEST_F(GuiRegistryInitializeTest, SeedsEveryDefaultOfAnEmptyRegistry) {
    const std::string optionFile = installBackupClient();
    UQGuiRegistry::mf_initialize();
    EXPECT_EQ(m_log.lines(),
              concat({{mgmtClassSeeded(), backupBeforeMigrateSeeded(), optionFileSeeded(optionFile)},
                      mruSeeded()}));
    EXPECT_EQ(machineString(MIGRATION, L"MgmtClassDefault"), SERVER_MGMT_CLASS);
    EXPECT_EQ(machineNumber(BACKUP, L"BackupBeforeMigrate"), 1);
    EXPECT_EQ(machineString(BACKUP, L"BackupOptionFileDefault"), optionFile);
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC}));
    // The flags are created by their getters, not here.
    EXPECT_FALSE(machineExists(MIGRATION, L"FileSecurityDefault"));
    EXPECT_FALSE(machineExists(RETRIEVE, L"ADStreamDefault"));
}

TEST_F(GuiRegistryInitializeTest, NeverOverwritesExistingValues) {
    presetEverything();
    UQGuiRegistry::mf_initialize();
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{
                  {'G', "UQGuiRegistry::mf_implInitializeDefaultMgmtClass",
                   "Migration class default 'MgmtClassDefault' already initialized"},
                  {'G', "UQGuiRegistry::mf_implInitializeBackupBeforeMigrate",
                   "Backup-before-migrate 'BackupBeforeMigrate' already initialized"},
                  {'G', "UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile",
                   "Backup option file default 'BackupOptionFileDefault' already initialized"},
                  {'G', "UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU",
                   "Successfully checked registry 'BackupOptionFilesMru' for dynamic option file:\r\n" + TAB +
                       "'" + DYNAMIC + "'"}}));
    EXPECT_EQ(machineString(MIGRATION, L"MgmtClassDefault"), "gold");
    EXPECT_EQ(machineNumber(BACKUP, L"BackupBeforeMigrate"), 0);
    EXPECT_EQ(machineString(BACKUP, L"BackupOptionFileDefault"), "D:\\opt\\x.opt");
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt", DYNAMIC}));
}

TEST_F(GuiRegistryInitializeTest, RunningItAgainChangesNothing) {
    const std::string optionFile = installBackupClient();
    UQGuiRegistry::mf_initialize();
    // The option file going away later does not empty the seeded default.
    basetest::ScratchDirectory other("settings-other-client");
    setBackupClientPath(other.path());
    m_log.clear();
    UQGuiRegistry::mf_initialize();
    EXPECT_EQ(m_log.lines().size(), 4u);
    EXPECT_EQ(machineString(MIGRATION, L"MgmtClassDefault"), SERVER_MGMT_CLASS);
    EXPECT_EQ(machineNumber(BACKUP, L"BackupBeforeMigrate"), 1);
    EXPECT_EQ(machineString(BACKUP, L"BackupOptionFileDefault"), optionFile);
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC}));
}

TEST_F(GuiRegistryInitializeTest, WithoutTheBackupClientsPathLogsTheFailureAndStillSeedsTheMru) {
    UQGuiRegistry::mf_initialize();
    const std::string detail = "Key 'HKLM\\" + BACKUP_CLIENT + "' not found (value 'Path')";
    EXPECT_EQ(
        m_log.lines(),
        concat(
            {{mgmtClassSeeded(),
              backupBeforeMigrateSeeded(),
              {'E', "UQRegistry::mf_getValue::1", detail},
              {'E', "UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile",
               "Could not get B/A client installation path from registry:\r\n" + TAB + registryError(detail)},
              {'E', "UQGuiRegistry::mf_initialize",
               "Failure initializing default backup option file:\r\n" + TAB + registryError(detail)}},
             mruSeeded()}));
    EXPECT_FALSE(machineExists(BACKUP, L"BackupOptionFileDefault"));
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC}));
}

TEST_F(GuiRegistryInitializeTest, MissingOptionFileSeedsAnEmptyDefaultForTheDynamicOptionFile) {
    const std::string optionFile = installBackupClient(false);
    UQGuiRegistry::mf_initialize();
    const std::vector<LogLine> lines = m_log.lines();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[2],
              (LogLine{'G', "UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile",
                       "Backup option file default '" + optionFile + "' does not exist\r\n" + TAB +
                           "Initializing default backup option files 'BackupOptionFileDefault' empty "
                           "(dynamic option file)"}));
    EXPECT_EQ(lines[3], optionFileSeeded(""));
    EXPECT_TRUE(machineExists(BACKUP, L"BackupOptionFileDefault"));
    EXPECT_EQ(machineString(BACKUP, L"BackupOptionFileDefault"), "");
}

TEST_F(GuiRegistryInitializeTest, AddsTheDynamicEntryToAnMruWithoutIt) {
    presetEverything();
    storeMru({"C:\\x.opt"});
    UQGuiRegistry::mf_initialize();
    const std::vector<LogLine> lines = m_log.lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(std::vector<LogLine>(lines.begin() + 3, lines.end()), mruSeeded());
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC, "C:\\x.opt"}));
}

TEST_F(GuiRegistryInitializeTest, AddsTheDynamicEntryToAnEmptyMru) {
    presetEverything();
    UQArray<CString> none;
    UQRegistry::mf_setValues(L"BackupOptionFilesMru", none, L"", HKEY_CURRENT_USER);
    UQGuiRegistry::mf_initialize();
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC}));
}

TEST_F(GuiRegistryInitializeTest, PlaceholderInOtherCaseDoesNotCountButIsNotAddedTwice) {
    presetEverything();
    storeMru({"<b/a client chooses options file>"});
    UQGuiRegistry::mf_initialize();
    const std::vector<LogLine> lines = m_log.lines();
    ASSERT_EQ(lines.size(), 5u);
    // The check is exact, the update ignores case; the step reports success whatever the update did.
    EXPECT_EQ(lines[3], (LogLine{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                 "Option file path '" + DYNAMIC + "' exists, not added to MRU"}));
    EXPECT_EQ(lines[4], mruSeeded()[1]);
    EXPECT_EQ(mru(), (std::vector<std::string>{"<b/a client chooses options file>"}));
}

TEST_F(GuiRegistryInitializeTest, EveryStepFailingIsLoggedAndNothingIsThrown) {
    UQRegistryInjection::mf_injectFailure(0, 1000);
    EXPECT_EQ(thrownCategory([] { UQGuiRegistry::mf_initialize(); }), "no exception");
    const std::string mgmt = injected(machineValue("MgmtClassDefault", MIGRATION));
    const std::string before = injected(machineValue("BackupBeforeMigrate", BACKUP));
    const std::string option = injected(machineValue("BackupOptionFileDefault", BACKUP));
    const std::string list = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQRegistry::mf_exists", mgmt},
                  {'E', "UQGuiRegistry::mf_initialize",
                   "Failure initializing default management class:\r\n" + TAB + registryError(mgmt)},
                  {'E', "UQRegistry::mf_exists", before},
                  {'E', "UQGuiRegistry::mf_initialize",
                   "Failure initializing backup-before-migrate:\r\n" + TAB + registryError(before)},
                  {'E', "UQRegistry::mf_exists", option},
                  {'E', "UQGuiRegistry::mf_initialize",
                   "Failure initializing default backup option file:\r\n" + TAB + registryError(option)},
                  {'E', "UQRegistry::mf_exists", list},
                  {'E', "UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU",
                   "Failure checking registry value 'BackupOptionFilesMru' for existence:\r\n" + TAB +
                       registryError(list)}}));
}

TEST_F(GuiRegistryInitializeTest, FailureWritingTheManagementClassIsLoggedTwiceAndTheNextStepsRun) {
    const std::string optionFile = installBackupClient();
    UQRegistryInjection::mf_injectFailure(1, 1); // the check passes, the write fails
    UQGuiRegistry::mf_initialize();
    const std::string error = registryError(injected(machineValue("MgmtClassDefault", MIGRATION)));
    EXPECT_EQ(
        m_log.lines(),
        concat({{{'E', "UQRegistry::mf_setValue::1", injected(machineValue("MgmtClassDefault", MIGRATION))},
                 {'E', "UQGuiRegistry::mf_implInitializeDefaultMgmtClass",
                  "Failure setting registry value 'MgmtClassDefault':\r\n" + TAB + error},
                 {'E', "UQGuiRegistry::mf_initialize",
                  "Failure initializing default management class:\r\n" + TAB + error},
                 backupBeforeMigrateSeeded(),
                 optionFileSeeded(optionFile)},
                mruSeeded()}));
    EXPECT_FALSE(machineExists(MIGRATION, L"MgmtClassDefault"));
}

TEST_F(GuiRegistryInitializeTest, FailureWritingBackupBeforeMigrateIsLoggedTwiceAndTheNextStepsRun) {
    const std::string optionFile = installBackupClient();
    UQRegistryInjection::mf_injectFailure(3,
                                          1); // management class checked and written, then this check passes
    UQGuiRegistry::mf_initialize();
    const std::string detail = injected(machineValue("BackupBeforeMigrate", BACKUP));
    EXPECT_EQ(
        m_log.lines(),
        concat({{mgmtClassSeeded(),
                 {'E', "UQRegistry::mf_setValue::2", detail},
                 {'E', "UQGuiRegistry::mf_implInitializeBackupBeforeMigrate",
                  "Failure setting registry value 'BackupBeforeMigrate':\r\n" + TAB + registryError(detail)},
                 {'E', "UQGuiRegistry::mf_initialize",
                  "Failure initializing backup-before-migrate:\r\n" + TAB + registryError(detail)},
                 optionFileSeeded(optionFile)},
                mruSeeded()}));
    EXPECT_FALSE(machineExists(BACKUP, L"BackupBeforeMigrate"));
}

TEST_F(GuiRegistryInitializeTest, FailureWritingTheDefaultOptionFileIsLoggedTwiceAndTheMruIsSeeded) {
    installBackupClient();
    UQRegistryInjection::mf_injectFailure(
        6, 1); // two steps done, then the check and the client's path read pass
    UQGuiRegistry::mf_initialize();
    const std::string detail = injected(machineValue("BackupOptionFileDefault", BACKUP));
    EXPECT_EQ(
        m_log.lines(),
        concat(
            {{mgmtClassSeeded(),
              backupBeforeMigrateSeeded(),
              {'E', "UQRegistry::mf_setValue::1", detail},
              {'E', "UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile",
               "Failure setting registry value 'BackupOptionFileDefault':\r\n" + TAB + registryError(detail)},
              {'E', "UQGuiRegistry::mf_initialize",
               "Failure initializing default backup option file:\r\n" + TAB + registryError(detail)}},
             mruSeeded()}));
    EXPECT_FALSE(machineExists(BACKUP, L"BackupOptionFileDefault"));
}

TEST_F(GuiRegistryInitializeTest, FailureReadingTheMruEndsTheMruStepOnly) {
    presetEverything();
    UQRegistryInjection::mf_injectFailure(4, 1); // three existence checks and the MRU's pass, its read fails
    UQGuiRegistry::mf_initialize();
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    const std::vector<LogLine> lines = m_log.lines();
    ASSERT_EQ(lines.size(), 5u);
    EXPECT_EQ(std::vector<LogLine>(lines.begin() + 3, lines.end()),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_getValues", detail},
                                    {'E', "UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU",
                                     "Failure reading registry values 'BackupOptionFilesMru':\r\n" + TAB +
                                         registryError(detail)}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt", DYNAMIC}));
}

TEST_F(GuiRegistryInitializeTest, FailureWritingTheMruIsLoggedByTheStoreAndTheStepStillReportsItsAttempt) {
    presetEverything();
    storeMru({"C:\\x.opt"});
    // Checks of the three steps, the MRU's check and read, then the update's own check and read pass.
    UQRegistryInjection::mf_injectFailure(7, 1);
    UQGuiRegistry::mf_initialize();
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    const std::vector<LogLine> lines = m_log.lines();
    ASSERT_EQ(lines.size(), 7u);
    EXPECT_EQ(std::vector<LogLine>(lines.begin() + 3, lines.end()),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_setValues", detail},
                                    {'E', "UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU",
                                     "Failure sorting/writing registry values 'BackupOptionFilesMru':\r\n" +
                                         TAB + registryError(detail)},
                                    mruSeeded()[0],
                                    mruSeeded()[1]}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"C:\\x.opt"}));
}
