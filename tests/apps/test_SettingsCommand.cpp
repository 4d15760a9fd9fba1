// korfiles settings: seeding and showing the GUI defaults, changing one of them, the option-file MRU, bad
// names and values, and a registry that fails.
#include "KorFilesSettingsTestSupport.h"
#include "SettingsCommand.h"
#include "interfaces/korbase_testing.h"
#include "support/KorFilesUsage.h"

#include "compat/utf8.h"

#if !defined(_WIN32)
#include <sqlite3.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <thread>

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

using namespace korfilessettings;

namespace {

LogLine mgmtClassSeeded() {
    return {'G', "UQGuiRegistry::mf_implInitializeDefaultMgmtClass",
            "Initialized default management class:\r\n" + TAB + "'HKLM\\" + MIGRATION +
                "\\MgmtClassDefault'\r\n" + TAB + "with default backup option file '" + SERVER_MGMT_CLASS +
                "'"};
}

LogLine backupBeforeMigrateSeeded() {
    return {'G', "UQGuiRegistry::mf_implInitializeBackupBeforeMigrate",
            "Initialized backup-before-migrate:\r\n" + TAB + "'HKLM\\" + BACKUP +
                "\\BackupBeforeMigrate'\r\n" + TAB + "with 1 (true)"};
}

std::vector<LogLine> mruSeeded() {
    return {
        {'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
         "Option file path '" + DYNAMIC + "' added to MRU"},
        {'G', "UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU",
         "Successfully added dynamic option file '" + DYNAMIC + "' to registry key 'BackupOptionFilesMru'"}};
}

std::string mruLines(std::initializer_list<std::string> entries) {
    std::string lines;
    for (const std::string& e : entries)
        lines += "option-file-mru: " + e + "\n";
    return lines;
}

// The store that a failure names.
std::string storeName() {
#if defined(_WIN32)
    return "the registry";
#else
    return "the registry store '" + utf8(UQRegistry::mf_getStoreFile()) + "'";
#endif
}

} // namespace

// ---------------------------------------------------------------------------------------------------------
// Showing

TEST_F(KorFilesSettingsTest, OnAFreshRegistryShowsTheSeededDefaults) {
    EXPECT_EQ(0, settings());
    EXPECT_EQ(seededDefaults(), out.text);
    EXPECT_EQ("", err.text);

    // Without the backup client's Path the option file is not seeded: its getter falls back to the
    // dynamic option file, logging why.
    const std::string pathMissing = "Key 'HKLM\\" + BACKUP_CLIENT + "' not found (value 'Path')";
    const std::string optionFileMissing =
        "Value 'BackupOptionFileDefault' not found in 'HKLM\\" + BACKUP + "'";
    std::vector<LogLine> expected = {
        mgmtClassSeeded(),
        backupBeforeMigrateSeeded(),
        {'E', "UQRegistry::mf_getValue::1", pathMissing},
        {'E', "UQGuiRegistry::mf_implInitializeDefaultBackupOptionFile",
         "Could not get B/A client installation path from registry:\r\n" + TAB + registryError(pathMissing)},
        {'E', "UQGuiRegistry::mf_initialize",
         "Failure initializing default backup option file:\r\n" + TAB + registryError(pathMissing)}};
    for (const LogLine& l : mruSeeded())
        expected.push_back(l);
    expected.push_back({'E', "UQRegistry::mf_getValue::1", optionFileMissing});
    expected.push_back({'E', "UQGuiRegistry::mf_getDefaultBackupOptionFilePath",
                        "Failure getting registry value 'BackupOptionFileDefault':\r\n" + TAB +
                            registryError(optionFileMissing) + "\r\n" + TAB + "Returning empty value ..."});
    EXPECT_EQ(expected, m_log.lines());

    // What was seeded, and the four flags that their getters create.
    EXPECT_EQ(SERVER_MGMT_CLASS, machineString(MIGRATION, L"MgmtClassDefault"));
    EXPECT_EQ(1, machineNumber(BACKUP, L"BackupBeforeMigrate"));
    for (const std::string* key : {&MIGRATION, &RETRIEVE}) {
        EXPECT_EQ(1, machineNumber(*key, L"FileSecurityDefault")) << *key;
        EXPECT_EQ(1, machineNumber(*key, L"ADStreamDefault")) << *key;
    }
    EXPECT_FALSE(machineExists(BACKUP, L"BackupOptionFileDefault"));
    EXPECT_EQ(std::vector<std::string>{DYNAMIC}, mru());
}

TEST_F(KorFilesSettingsTest, WithTheBackupClientInstalledShowsItsOptionFile) {
    basetest::ScratchDirectory client("korfiles-settings-client");
    setBackupClientPath(client.path());
    basetest::writeFile(client.child(L"kor.opt"), "* options\n");
    const std::string optionFile = utf8(client.path()) + "\\kor.opt";

    EXPECT_EQ(0, settings());
    std::string expected = seededDefaults();
    const std::string dynamicDefault = "backup-option-file: " + TRANSLATED + "\n";
    expected.replace(expected.find(dynamicDefault), dynamicDefault.size(),
                     "backup-option-file: " + optionFile + "\n");
    EXPECT_EQ(expected, out.text);
    EXPECT_EQ(optionFile, machineString(BACKUP, L"BackupOptionFileDefault"));
    // Nothing failed this time.
    for (const LogLine& l : m_log.lines())
        EXPECT_EQ('G', l.level) << l;
}

TEST_F(KorFilesSettingsTest, ShowingAgainKeepsWhatWasChanged) {
    UQRegistry::mf_setValue(L"MgmtClassDefault", L"gold", 0, w(MIGRATION), HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"BackupBeforeMigrate", 0, w(BACKUP), HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"ADStreamDefault", 0, w(RETRIEVE), HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"BackupOptionFileDefault", L"", 0, w(BACKUP), HKEY_LOCAL_MACHINE);
    storeMru({"C:\\b.opt", "a.opt"});
    UQRegistry::mf_setValue(L"HistorySearchRoot", L"D:\\Archive", 0, L"", HKEY_CURRENT_USER);

    EXPECT_EQ(0, settings());
    EXPECT_EQ("management-class: gold\n"
              "backup-before-migrate: no\n"
              "migration-file-security: yes\n"
              "migration-alternate-data-streams: yes\n"
              "retrieval-file-security: yes\n"
              "retrieval-alternate-data-streams: no\n"
              "backup-option-file: " +
                  TRANSLATED + "\n" + mruLines({TRANSLATED, "a.opt", "C:\\b.opt"}) +
                  "history-search-root: D:\\Archive\n",
              out.text);
    // Seeding added the dynamic entry to the MRU, which is kept sorted case-blind: '<' comes first.
    EXPECT_EQ((std::vector<std::string>{DYNAMIC, "a.opt", "C:\\b.opt"}), mru());
    EXPECT_EQ("gold", machineString(MIGRATION, L"MgmtClassDefault"));
    EXPECT_EQ(0, machineNumber(BACKUP, L"BackupBeforeMigrate"));
}

TEST_F(KorFilesSettingsTest, StoredTextIsShownAsUtf8OnOneLine) {
    UQRegistry::mf_setValue(L"HistorySearchRoot", L"D:\\\x00C4rchiv\r\nzwei", 0, L"", HKEY_CURRENT_USER);
    EXPECT_EQ(0, settings());
    EXPECT_NE(std::string::npos,
              out.text.find("\nhistory-search-root: D:\\\xC3\x84rchiv\xEF\xBF\xBD\xEF\xBF\xBDzwei\n"))
        << out.text;
}

// The getters' defaults would pass for the settings: a registry that fails is reported with the first
// failure and code 3, and nothing is shown.
TEST_F(KorFilesSettingsTest, AFailingRegistryIsReportedNotShownAsTheGettersDefaults) {
    UQRegistryInjection::mf_injectFailure(0, 1000);
    EXPECT_EQ(3, settings());
    EXPECT_EQ("", out.text);
    EXPECT_EQ("korfiles: cannot read the settings from " + storeName() + ": " +
                  injected(machineValue("MgmtClassDefault", MIGRATION)) + "\n",
              err.text);
    // Each failure as the operation that met it logged it: the store first, then the GUI registry.
    std::vector<std::pair<char, std::string>> records;
    for (const LogLine& l : m_log.lines())
        records.emplace_back(l.level, l.function);
    const std::vector<std::pair<char, std::string>> expected = {
        {'E', "UQRegistry::mf_exists"},
        {'E', "UQGuiRegistry::mf_initialize"},
        {'E', "UQRegistry::mf_exists"},
        {'E', "UQGuiRegistry::mf_initialize"},
        {'E', "UQRegistry::mf_exists"},
        {'E', "UQGuiRegistry::mf_initialize"},
        {'E', "UQRegistry::mf_exists"},
        {'E', "UQGuiRegistry::mf_implInitializeBackupOptionFilePathMRU"},
        {'E', "UQRegistry::mf_getValue::1"},
        {'E', "UQGuiRegistry::mf_getDefaultMgmtClass"},
        {'E', "UQRegistry::mf_getValue::2"},
        {'E', "UQGuiRegistry::mf_isDefaultBackupBeforeMigrate"},
        {'E', "UQRegistry::mf_getOrSetValue::1"},
        {'E', "UQGuiRegistry::mf_isDefaultMigrationFileSecurity"},
        {'E', "UQRegistry::mf_getOrSetValue::1"},
        {'E', "UQGuiRegistry::mf_isDefaultMigrationADStreams"},
        {'E', "UQRegistry::mf_getOrSetValue::1"},
        {'E', "UQGuiRegistry::mf_isDefaultRetrieveFileSecurity"},
        {'E', "UQRegistry::mf_getOrSetValue::1"},
        {'E', "UQGuiRegistry::mf_isDefaultRetrieveADStreams"},
        {'E', "UQRegistry::mf_getValue::1"},
        {'E', "UQGuiRegistry::mf_getDefaultBackupOptionFilePath"},
        {'E', "UQRegistry::mf_exists"},
        {'E', "UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU"},
        {'E', "UQRegistry::mf_exists"},
        {'E', "UQGuiRegistry::mf_getHistorySearchRoot"},
    };
    EXPECT_EQ(expected, records);
    const std::string detail = injected(machineValue("MgmtClassDefault", MIGRATION));
    ASSERT_GE(m_log.lines().size(), 10u);
    EXPECT_EQ((LogLine{'E', "UQGuiRegistry::mf_getDefaultMgmtClass",
                       "Failure getting registry value 'MgmtClassDefault':\r\n" + TAB +
                           registryError(detail) + "\r\n" + TAB + "Returning empty value ..."}),
              m_log.lines()[9]);
}

TEST_F(KorFilesSettingsTest, AFlagOfAnotherTypeIsReportedNotShownAsYes) {
    UQRegistry::mf_setValue(L"BackupBeforeMigrate", L"no", 0, w(BACKUP), HKEY_LOCAL_MACHINE);
    EXPECT_EQ(3, settings());
    EXPECT_EQ("", out.text);
    EXPECT_EQ("korfiles: cannot read the settings from " + storeName() +
                  ": Value 'BackupBeforeMigrate' in 'HKLM\\" + BACKUP + "' is a string, not a number\n",
              err.text);
}

#if !defined(_WIN32)

namespace {

// Sets the data of a stored value past the registry, as another program or a damaged file might.
void storeRaw(const std::string& file, const std::string& nameKey, const std::string& data) {
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open_v2(file.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    const std::string sql =
        "UPDATE registry_value SET data = " + data + " WHERE name_key = '" + nameKey + "'";
    EXPECT_EQ(sqlite3_exec(db, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    EXPECT_EQ(sqlite3_changes(db), 1) << sql;
    sqlite3_close_v2(db);
}

} // namespace

TEST_F(KorFilesSettingsTest, AFlagStoredOutOfRangeOrAsTextIsReportedNotShown) {
    for (const char* data : {"-1", "4294967296", "'1'", "NULL"}) {
        EXPECT_EQ(0, settings());
        UQRegistry::mf_setStoreFile(CString());
        storeRaw(utf8(m_sandbox.fileText()), "BACKUPBEFOREMIGRATE", data);
        UQRegistry::mf_setStoreFile(m_sandbox.fileText());
        EXPECT_EQ(3, settings()) << data;
        EXPECT_EQ("", out.text) << data;
        EXPECT_NE(std::string::npos,
                  err.text.find(": Value 'BackupBeforeMigrate' in 'HKLM\\" + BACKUP + "' is a number "))
            << err.text;
        UQRegistry::mf_setValue(L"BackupBeforeMigrate", 1, w(BACKUP), HKEY_LOCAL_MACHINE);
    }
}

TEST_F(KorFilesSettingsTest, ABrokenStoreIsReportedNamingItsFileWithCode3) {
    basetest::ScratchDirectory dir("settings-broken");
    const CString garbage = dir.child(L"garbage.sqlite");
    basetest::writeFile(garbage, std::string(8192, 'x'));
    const CString newer = dir.child(L"newer.sqlite");
    {
        sqlite3* db = nullptr;
        ASSERT_EQ(
            sqlite3_open_v2(utf8(newer).c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr),
            SQLITE_OK);
        EXPECT_EQ(sqlite3_exec(db, "PRAGMA user_version = 9", nullptr, nullptr, nullptr), SQLITE_OK);
        sqlite3_close_v2(db);
    }
    const struct {
        CString file;
        std::string reason;
    } cases[] = {{garbage, "file is not a database"},
                 {newer, "schema version 9 is newer than this program's (1)"},
                 {dir.path(), "it is a directory, not a database file"}};
    for (const auto& c : cases) {
        m_log.clear();
        EXPECT_EQ(3, settings({L"--registry=" + c.file})) << utf8(c.file);
        EXPECT_EQ("", out.text);
        EXPECT_EQ("korfiles: cannot read the settings from the registry store '" + utf8(c.file) +
                      "': Registry store '" + utf8(c.file) +
                      "' cannot be opened (value 'MgmtClassDefault' in 'HKLM\\" + MIGRATION +
                      "'): " + c.reason + "\n",
                  err.text);
        ASSERT_FALSE(m_log.lines().empty());
        EXPECT_EQ(m_log.lines()[0].level, 'E');
        EXPECT_EQ(m_log.lines()[0].function, "UQRegistry::mf_exists");
    }
    EXPECT_EQ(basetest::readFile(garbage), std::string(8192, 'x')) << "left as it was";
}

// A store that the user may only read (mode 0444 in a directory of mode 0555, read by another user when the
// test runs as root) shows what it holds, not the getters' defaults.
TEST_F(KorFilesSettingsTest, AStoreThatMayOnlyBeReadShowsItsValues) {
    basetest::ScratchDirectory dir("settings-read-only");
    const CString file = dir.child(L"registry.sqlite");
    ASSERT_EQ(0, settings({L"--registry=" + file, L"set", L"management-class", L"Gold"}));
    ASSERT_EQ(0, settings({L"--registry=" + file, L"set", L"backup-before-migrate", L"no"}));
    ASSERT_EQ(0, settings({L"--registry=" + file}));
    const std::string expected = out.text;
    ASSERT_EQ(0u, expected.find("management-class: Gold\nbackup-before-migrate: no\n")) << expected;
    const std::string path = utf8(file);
    const std::string directory = utf8(dir.path());
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(directory.c_str(), 0555), 0);

    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
            ::_exit(10);
        if (::access(path.c_str(), W_OK) == 0)
            ::_exit(11);
        const int code = settings({L"--registry=" + file});
        if (code != 0) {
            std::fprintf(stderr, "read-only settings: %d %s", code, err.text.c_str());
            ::_exit(12);
        }
        ::_exit(out.text == expected && err.text.empty() ? 0 : 13);
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int status = 0;
    pid_t done = 0;
    while ((done = ::waitpid(child, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (done == 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
    }
    ::chmod(directory.c_str(), 0755);
    ::chmod(path.c_str(), 0644);
    ASSERT_NE(done, 0) << "the reader did not end within the time limit";
    EXPECT_TRUE(WIFEXITED(status)) << status;
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

#endif

// ---------------------------------------------------------------------------------------------------------
// Setting one value

TEST_F(KorFilesSettingsTest, SetFlagsThenShowThem) {
    struct Case {
        const wchar_t* name;
        const char* setter;
        const std::string* key;
        const wchar_t* value;
        const char* record;
    };
    const Case cases[] = {
        {L"backup-before-migrate", "UQGuiRegistry::mf_setDefaultBackupBeforeMigrate", &BACKUP,
         L"BackupBeforeMigrate", "Set backup-before-migrate"},
        {L"migration-file-security", "UQGuiRegistry::mf_setDefaultMigrationFileSecurity", &MIGRATION,
         L"FileSecurityDefault", "Set migration-file-security"},
        {L"migration-alternate-data-streams", "UQGuiRegistry::mf_setDefaultMigrationADStreams", &MIGRATION,
         L"ADStreamDefault", "Set migration-alternate-data-streams"},
        {L"retrieval-file-security", "UQGuiRegistry::mf_setDefaultRetrieveFileSecurity", &RETRIEVE,
         L"FileSecurityDefault", "Set retrieval-file-security"},
        {L"retrieval-alternate-data-streams", "UQGuiRegistry::mf_setDefaultRetrieveADStreams", &RETRIEVE,
         L"ADStreamDefault", "Set retrieval-alternate-data-streams"},
    };
    const struct {
        const wchar_t* word;
        int flag;
    } words[] = {{L"no", 0}, {L"false", 0}, {L"0", 0}, {L"yes", 1}, {L"true", 1}, {L"1", 1}};
    for (const Case& c : cases) {
        const std::string name = utf8(c.name);
        for (const auto& v : words) {
            m_log.clear();
            EXPECT_EQ(0, settings({L"set", c.name, v.word})) << name << " " << utf8(v.word);
            // Shown as read back.
            EXPECT_EQ(name + (v.flag ? ": yes\n" : ": no\n"), out.text);
            EXPECT_EQ("", err.text);
            EXPECT_EQ(v.flag, machineNumber(*c.key, c.value));
            EXPECT_EQ(
                (std::vector<LogLine>{{'G', c.setter,
                                       std::string(c.record) + ":\r\n" + TAB + "'HKLM\\" + *c.key + "\\" +
                                           utf8(c.value) + "'\r\n" + TAB + "to " + std::to_string(v.flag) +
                                           (v.flag ? " (true)" : " (false)")}}),
                m_log.lines());
        }
        // Left at no for the show below.
        EXPECT_EQ(0, settings({L"set", c.name, L"no"}));
    }
    EXPECT_EQ(0, settings());
    std::string expected = seededDefaults();
    for (const Case& c : cases) {
        const std::string yes = utf8(c.name) + ": yes\n";
        expected.replace(expected.find(yes), yes.size(), utf8(c.name) + ": no\n");
    }
    EXPECT_EQ(expected, out.text);
}

TEST_F(KorFilesSettingsTest, SetManagementClassThenShowIt) {
    EXPECT_EQ(0, settings({L"set", L"management-class", L"Gold \x00DC"}));
    EXPECT_EQ("management-class: Gold \xC3\x9C\n", out.text);
    EXPECT_EQ("Gold \xC3\x9C", machineString(MIGRATION, L"MgmtClassDefault"));
    EXPECT_EQ((std::vector<LogLine>{{'G', "UQGuiRegistry::mf_setDefaultMgmtClass",
                                     "Set default management class:\r\n" + TAB + "'HKLM\\" + MIGRATION +
                                         "\\MgmtClassDefault'\r\n" + TAB + "to 'Gold \xC3\x9C'"}}),
              m_log.lines());

    // Seeding leaves it; the show has it.
    EXPECT_EQ(0, settings());
    EXPECT_EQ(0u, out.text.find("management-class: Gold \xC3\x9C\n"));

    // DEFAULT, as shown for the server's default class, is stored as its placeholder.
    EXPECT_EQ(0, settings({L"set", L"management-class", L"DEFAULT"}));
    EXPECT_EQ("management-class: DEFAULT\n", out.text);
    EXPECT_EQ(SERVER_MGMT_CLASS, machineString(MIGRATION, L"MgmtClassDefault"));
    // Any other spelling is a class name.
    EXPECT_EQ(0, settings({L"set", L"management-class", L"default"}));
    EXPECT_EQ("management-class: default\n", out.text);
    EXPECT_EQ("default", machineString(MIGRATION, L"MgmtClassDefault"));
}

TEST_F(KorFilesSettingsTest, SetBackupOptionFileThenShowIt) {
    EXPECT_EQ(0, settings({L"set", L"backup-option-file", L"D:\\Backup Client\\kor.opt"}));
    EXPECT_EQ("backup-option-file: D:\\Backup Client\\kor.opt\n", out.text);
    EXPECT_EQ("D:\\Backup Client\\kor.opt", machineString(BACKUP, L"BackupOptionFileDefault"));
    EXPECT_EQ((std::vector<LogLine>{{'G', "UQGuiRegistry::mf_setDefaultBackupOptionFilePath",
                                     "Set default backup option file:\r\n" + TAB + "'HKLM\\" + BACKUP +
                                         "\\BackupOptionFileDefault'\r\n" + TAB +
                                         "to 'D:\\Backup Client\\kor.opt'"}}),
              m_log.lines());
    EXPECT_EQ(0, settings());
    EXPECT_NE(std::string::npos, out.text.find("\nbackup-option-file: D:\\Backup Client\\kor.opt\n"));

    // DEFAULT, the placeholder and the name shown for it all stand for the dynamic option file: empty.
    for (const std::string& dynamic : {std::string("DEFAULT"), DYNAMIC, TRANSLATED}) {
        UQRegistry::mf_setValue(L"BackupOptionFileDefault", L"x.opt", 0, w(BACKUP), HKEY_LOCAL_MACHINE);
        EXPECT_EQ(0, settings({L"set", L"backup-option-file", w(dynamic)})) << dynamic;
        EXPECT_EQ("backup-option-file: " + TRANSLATED + "\n", out.text) << dynamic;
        EXPECT_EQ("", machineString(BACKUP, L"BackupOptionFileDefault")) << dynamic;
    }
}

TEST_F(KorFilesSettingsTest, SetHistorySearchRootThenShowItAndClearIt) {
    EXPECT_EQ(0, settings({L"set", L"history-search-root", L"\\\\fs01\\projects"}));
    EXPECT_EQ("history-search-root: \\\\fs01\\projects\n", out.text);
    // It logs nothing when it works.
    EXPECT_EQ(std::vector<LogLine>{}, m_log.lines());
    EXPECT_EQ(0, settings());
    EXPECT_NE(std::string::npos, out.text.find("\nhistory-search-root: \\\\fs01\\projects\n"));

    EXPECT_EQ(0, settings({L"set", L"history-search-root", L""}));
    EXPECT_EQ("history-search-root:\n", out.text);
    CString stored = L"unchanged";
    UQRegistry::mf_getValue(L"HistorySearchRoot", stored, L"", HKEY_CURRENT_USER);
    EXPECT_EQ("", utf8(stored));
}

TEST_F(KorFilesSettingsTest, AValueStartingWithADashFollowsDoubleDash) {
    EXPECT_EQ(0, settings({L"set", L"management-class", L"--", L"-archive-"}));
    EXPECT_EQ("management-class: -archive-\n", out.text);
    EXPECT_EQ(2, settings({L"set", L"management-class", L"-archive-"}));
    EXPECT_EQ("korfiles: unknown option '-archive-'\n" + KORFILES_USAGE, err.text);
}

// ---------------------------------------------------------------------------------------------------------
// The option-file MRU

TEST_F(KorFilesSettingsTest, MruAddShowsTheSortedListAndRefusesACaseBlindDuplicate) {
    EXPECT_EQ(0, settings({L"mru", L"add", L"c:\\A.OPT"}));
    // The shown list always has the dynamic entry; the stored one has what was added.
    EXPECT_EQ(mruLines({"c:\\A.OPT", TRANSLATED}), out.text);
    EXPECT_EQ("", err.text);
    EXPECT_EQ(std::vector<std::string>{"c:\\A.OPT"}, mru());
    EXPECT_EQ((std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'c:\\A.OPT' added to MRU"}}),
              m_log.lines());

    EXPECT_EQ(0, settings({L"mru", L"add", L"B.opt"}));
    EXPECT_EQ(0, settings({L"mru", L"add", L"a.opt"}));
    EXPECT_EQ(mruLines({"a.opt", "B.opt", "c:\\A.OPT", TRANSLATED}), out.text);

    m_log.clear();
    EXPECT_EQ(1, settings({L"mru", L"add", L"C:\\a.opt"}));
    EXPECT_EQ("", out.text);
    EXPECT_EQ("korfiles: 'C:\\a.opt' is in the option-file MRU already\n", err.text);
    EXPECT_EQ((std::vector<std::string>{"a.opt", "B.opt", "c:\\A.OPT"}), mru());
    EXPECT_EQ((std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'C:\\a.opt' exists, not added to MRU"}}),
              m_log.lines());
}

TEST_F(KorFilesSettingsTest, MruRemoveTakesTheEntryEqualIgnoringCase) {
    storeMru({"a.opt", "c:\\A.OPT", DYNAMIC.c_str()});
    EXPECT_EQ(0, settings({L"mru", L"remove", L"C:\\a.opt"}));
    EXPECT_EQ(mruLines({TRANSLATED, "a.opt"}), out.text);
    EXPECT_EQ((std::vector<std::string>{DYNAMIC, "a.opt"}), mru());
    EXPECT_EQ((std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'C:\\a.opt' removed from MRU"}}),
              m_log.lines());

    m_log.clear();
    EXPECT_EQ(1, settings({L"mru", L"remove", L"C:\\A.opt"}));
    EXPECT_EQ("korfiles: 'C:\\A.opt' is not in the option-file MRU\n", err.text);
    EXPECT_EQ("", out.text);
    EXPECT_EQ((std::vector<std::string>{DYNAMIC, "a.opt"}), mru());
    EXPECT_EQ((std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path does 'C:\\A.opt' not exist, not removed from MRU"}}),
              m_log.lines());
}

TEST_F(KorFilesSettingsTest, MruDefaultAndTheShownNameMeanTheDynamicOptionFile) {
    storeMru({"a.opt", DYNAMIC.c_str()});
    EXPECT_EQ(0, settings({L"mru", L"remove", L"DEFAULT"}));
    EXPECT_EQ(std::vector<std::string>{"a.opt"}, mru());
    // Shown all the same, as the GUI always offers it.
    EXPECT_EQ(mruLines({"a.opt", TRANSLATED}), out.text);

    EXPECT_EQ(0, settings({L"mru", L"add", w(TRANSLATED)}));
    EXPECT_EQ((std::vector<std::string>{DYNAMIC, "a.opt"}), mru());
    EXPECT_EQ(1, settings({L"mru", L"add", L"DEFAULT"}));
    EXPECT_EQ("korfiles: 'DEFAULT' is in the option-file MRU already\n", err.text);
}

// ---------------------------------------------------------------------------------------------------------
// Bad names, values and command lines

TEST_F(KorFilesSettingsTest, UnknownNameOrBadValueGivesOneLineWithCode2AndTouchesNothing) {
    struct Case {
        std::vector<CString> args;
        std::string error;
    };
    const std::vector<Case> cases = {
        {{L"set", L"colour", L"blue"},
         "unknown setting 'colour'; the settings are management-class, backup-before-migrate, "
         "migration-file-security, migration-alternate-data-streams, retrieval-file-security, "
         "retrieval-alternate-data-streams, backup-option-file, option-file-mru, history-search-root"},
        {{L"set", L"Management-Class", L"gold"},
         "unknown setting 'Management-Class'; the settings are management-class, backup-before-migrate, "
         "migration-file-security, migration-alternate-data-streams, retrieval-file-security, "
         "retrieval-alternate-data-streams, backup-option-file, option-file-mru, history-search-root"},
        {{L"set", L"backup-before-migrate", L"maybe"},
         "backup-before-migrate takes yes or no (or true, false, 1, 0), not 'maybe'"},
        {{L"set", L"retrieval-file-security", L"Yes"},
         "retrieval-file-security takes yes or no (or true, false, 1, 0), not 'Yes'"},
        {{L"set", L"migration-alternate-data-streams", L""},
         "migration-alternate-data-streams takes yes or no (or true, false, 1, 0), not ''"},
        {{L"set", L"management-class", L""},
         "management-class needs a class name, or DEFAULT for the server's default class"},
        {{L"set", L"management-class", L"gold\nsilver"},
         "the value for management-class holds a control character"},
        {{L"set", L"backup-option-file", L""},
         "backup-option-file needs a file path, or DEFAULT for the option file the backup client chooses"},
        {{L"set", L"history-search-root", L"D:\\a\tb"},
         "the value for history-search-root holds a control character"},
        {{L"set", L"option-file-mru", L"a.opt"},
         "option-file-mru is changed with 'korfiles settings mru add PATH' and 'mru remove PATH'"},
        {{L"mru", L"add", L""}, "an option file path cannot be empty"},
        {{L"mru", L"remove", L"a\x0007.opt"}, "the option file path holds a control character"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(2, settings(c.args)) << c.error;
        EXPECT_EQ("korfiles: " + c.error + "\n", err.text);
        EXPECT_EQ("", out.text);
    }
    // Nothing was read or written.
    EXPECT_EQ(std::vector<LogLine>{}, m_log.lines());
    EXPECT_FALSE(UQRegistry::mf_PathExists(w(ROOT), HKEY_LOCAL_MACHINE));
    EXPECT_FALSE(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER));
}

TEST_F(KorFilesSettingsTest, MalformedCommandLineGivesOneLineAndTheUsageWithCode2) {
    struct Case {
        std::vector<CString> args;
        std::string error;
    };
    const std::vector<Case> cases = {
        {{L"set", L"management-class"}, "settings set needs NAME and VALUE"},
        {{L"set"}, "settings set needs NAME and VALUE"},
        {{L"set", L"management-class", L"gold", L"silver"}, "settings set needs NAME and VALUE"},
        {{L"mru", L"add"}, "settings mru needs add PATH or remove PATH"},
        {{L"mru", L"clear", L"a.opt"}, "settings mru needs add PATH or remove PATH"},
        {{L"mru", L"Add", L"a.opt"}, "settings mru needs add PATH or remove PATH"},
        {{L"show"}, "unknown settings command 'show'; the commands are set and mru"},
        {{L"--verbose"}, "unknown option '--verbose'"},
#if defined(_WIN32)
        {{L"--registry"}, "--registry needs a KEY, as in --registry=KEY"},
        {{L"--registry="}, "--registry needs a KEY, as in --registry=KEY"},
#else
        {{L"--registry"}, "--registry needs a FILE, as in --registry=FILE"},
        {{L"--registry="}, "--registry needs a FILE, as in --registry=FILE"},
#endif
        {{L"--registry=a", L"--registry=b"}, "only one --registry may be given"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(2, settings(c.args)) << c.error;
        EXPECT_EQ("korfiles: " + c.error + "\n" + KORFILES_USAGE, err.text);
        EXPECT_EQ("", out.text);
    }
    EXPECT_EQ(std::vector<LogLine>{}, m_log.lines());
}

TEST_F(KorFilesSettingsTest, SettingsIsACommandOnlyAsTheFirstArgument) {
    // A file of that name is still read as before.
    EXPECT_EQ(3, run({L"--", L"settings"}));
    EXPECT_EQ("korfiles: cannot read 'settings': No such file or directory\n", err.text);
    EXPECT_EQ(3, run({L"--listing", L"settings"}));
    EXPECT_EQ("korfiles: cannot read 'settings': No such file or directory\n", err.text);
    // And --registry belongs to the command.
    EXPECT_EQ(2, run({L"--registry=x.sqlite"}));
    EXPECT_EQ("korfiles: --registry is an option of settings, as in korfiles settings --registry=...\n" +
                  KORFILES_USAGE,
              err.text);
    EXPECT_EQ(std::vector<LogLine>{}, m_log.lines());
}

TEST_F(KorFilesSettingsTest, HelpDescribesTheCommandAndItsSettings) {
    EXPECT_EQ(0, settings({L"--help"}));
    EXPECT_EQ(
        "Usage: korfiles settings [--registry=STORE] [set NAME VALUE | mru add PATH | mru remove PATH]\n\n" +
            SettingsCommand::mf_getHelp(),
        out.text);
    EXPECT_EQ("", err.text);
    // The program's help has it too, after the usage of every form.
    EXPECT_EQ(0, run({L"-h"}));
    EXPECT_EQ(0u, out.text.find(KORFILES_USAGE));
    EXPECT_NE(std::string::npos, out.text.find(SettingsCommand::mf_getHelp()));
    for (const char* name :
         {"management-class", "backup-before-migrate", "migration-file-security",
          "migration-alternate-data-streams", "retrieval-file-security", "retrieval-alternate-data-streams",
          "backup-option-file", "option-file-mru", "history-search-root", "--registry="})
        EXPECT_NE(std::string::npos, out.text.find("\n  " + std::string(name))) << name;
    EXPECT_EQ(std::vector<LogLine>{}, m_log.lines());
}

// ---------------------------------------------------------------------------------------------------------
// A registry that refuses the change

TEST_F(KorFilesSettingsTest, ASetterThatFailsGivesOneLineWithCode1) {
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(1, settings({L"set", L"management-class", L"gold"}));
    const std::string detail = injected(machineValue("MgmtClassDefault", MIGRATION));
    EXPECT_EQ("korfiles: cannot set management-class: " + registryError(detail) + "\n", err.text);
    EXPECT_EQ("", out.text);
    EXPECT_EQ((std::vector<LogLine>{
                  {'E', "UQRegistry::mf_setValue::1", detail},
                  {'E', "UQGuiRegistry::mf_setDefaultMgmtClass",
                   "Failure setting registry value 'MgmtClassDefault':\r\n" + TAB + registryError(detail)}}),
              m_log.lines());
    EXPECT_FALSE(machineExists(MIGRATION, L"MgmtClassDefault"));

    m_log.clear();
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(1, settings({L"set", L"retrieval-file-security", L"no"}));
    const std::string flagDetail = injected(machineValue("FileSecurityDefault", RETRIEVE));
    EXPECT_EQ("korfiles: cannot set retrieval-file-security: " + registryError(flagDetail) + "\n", err.text);
    EXPECT_EQ(2u, m_log.count());

    m_log.clear();
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(1, settings({L"set", L"history-search-root", L"D:\\x"}));
    const std::string rootDetail = injected(userValue("HistorySearchRoot"));
    EXPECT_EQ("korfiles: cannot set history-search-root: " + registryError(rootDetail) + "\n", err.text);
    EXPECT_EQ(2u, m_log.count());
}

TEST_F(KorFilesSettingsTest, TheThrowingOptionFileSetterIsReportedByItsError) {
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(1, settings({L"set", L"backup-option-file", L"x.opt"}));
    // The error names the value written, where the setter's record names BackupBeforeMigrate.
    const std::string detail = injected(machineValue("BackupOptionFileDefault", BACKUP));
    EXPECT_EQ("korfiles: cannot set backup-option-file: " + registryError(detail) + "\n", err.text);
    EXPECT_EQ((std::vector<LogLine>{{'E', "UQRegistry::mf_setValue::1", detail},
                                    {'E', "UQGuiRegistry::mf_setDefaultBackupOptionFilePath",
                                     "Failure setting registry value 'BackupBeforeMigrate':\r\n" + TAB +
                                         registryError(detail)}}),
              m_log.lines());
    EXPECT_FALSE(machineExists(BACKUP, L"BackupOptionFileDefault"));
}

TEST_F(KorFilesSettingsTest, AFailedMruWriteGivesCode1ThoughTheUpdateAnswers1) {
    // The existence check passes (the value is missing), the write fails.
    UQRegistryInjection::mf_injectFailure(1, 1);
    EXPECT_EQ(1, settings({L"mru", L"add", L"a.opt"}));
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ("korfiles: cannot add 'a.opt' to the option-file MRU: " + registryError(detail) + "\n",
              err.text);
    EXPECT_EQ("", out.text);
    EXPECT_EQ((std::vector<LogLine>{{'E', "UQRegistry::mf_setValues", detail},
                                    {'E', "UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU",
                                     "Failure sorting/writing registry values 'BackupOptionFilesMru':\r\n" +
                                         TAB + registryError(detail)},
                                    {'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'a.opt' added to MRU"}}),
              m_log.lines());
    EXPECT_FALSE(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER));

    // A failed read ends a removal before anything changes.
    storeMru({"a.opt"});
    m_log.clear();
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(1, settings({L"mru", L"remove", L"a.opt"}));
    const std::string readDetail = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ("korfiles: cannot remove 'a.opt' from the option-file MRU: " + registryError(readDetail) + "\n",
              err.text);
    EXPECT_EQ(std::vector<std::string>{"a.opt"}, mru());
}

// A character beyond the BMP is a surrogate pair on both targets, valid text stored as given.
TEST_F(KorFilesSettingsTest, AValueWithCharactersBeyondTheBmpIsStored) {
    CString value(L"D:\\Fotos ");
    value += static_cast<wchar_t>(0xD83C);
    value += static_cast<wchar_t>(0xDF34);
    EXPECT_EQ(0, settings({L"set", L"history-search-root", value}));
    EXPECT_EQ("", err.text);
    CString stored;
    UQRegistry::mf_getValue(L"HistorySearchRoot", stored, L"", HKEY_CURRENT_USER);
    EXPECT_EQ(utf8(value), utf8(stored));
}

// An argument keeps the bytes that are not UTF-8 (main.cpp); a value that holds one is refused, not stored
// with U+FFFD in its place.
TEST_F(KorFilesSettingsTest, AValueThatIsNotUtf8IsBadUsageAndNothingIsStored) {
    const std::string bytes = "D:\\Archiv\xFF\xFE";
    const std::wstring wide = uqfmt::nativeToWide(bytes.data(), bytes.size());
    const CString value(wide.c_str(), static_cast<int>(wide.size()));
    EXPECT_EQ(2, settings({L"set", L"history-search-root", value}));
    EXPECT_EQ("", out.text);
    EXPECT_EQ("korfiles: the value for history-search-root is not valid UTF-8\n", err.text);
    EXPECT_EQ(2, settings({L"mru", L"add", value}));
    EXPECT_EQ("korfiles: the option file path is not valid UTF-8\n", err.text);
    EXPECT_EQ(0, UQRegistry::mf_exists(L"HistorySearchRoot", L"", HKEY_CURRENT_USER));
    EXPECT_EQ(0, UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER));
    EXPECT_EQ(0u, m_log.count());
}
