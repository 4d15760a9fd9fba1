// The backup choices before a migration: their defaults from the GUI settings and the backup client's
// installation, and the validation of option files through the backup client.
#include "GuiRegistryTestSupport.h"

#include "guibase/settings/UQGuiBackupOptions.h"
#include "support/ScratchFile.h"

using namespace settingstest;

namespace {

const std::string CLIENT_KEY = "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\BackupClient";

class UQGuiBackupOptionsTest : public GuiRegistryTest {};

// What the registry logs and throws when the backup client has no "Path", learnt from the same read.
struct MissingPath {
    std::vector<LogLine> lines;
    std::string sError;
};

MissingPath missingPath() {
    MissingPath missing;
    LogCheck log;
    try {
        CString sValue;
        UQRegistry::mf_getValue(L"Path", sValue, w(CLIENT_KEY), HKEY_LOCAL_MACHINE);
    } catch (const UQErrno& e) {
        missing.sError = utf8(e.mf_toString());
    }
    missing.lines = log.lines();
    return missing;
}

std::vector<LogLine> operator+(std::vector<LogLine> _a, const std::vector<LogLine>& _b) {
    _a.insert(_a.end(), _b.begin(), _b.end());
    return _a;
}

} // namespace

TEST_F(UQGuiBackupOptionsTest, ANewObjectBacksUpFirstWithTheDynamicOptionFile) {
    UQGuiBackupOptions options;
    EXPECT_EQ(options.mf_isBackupBeforeMigrate(), 1);
    EXPECT_EQ(options.mf_getOptionsFilePath(), L"");
    options.mf_setBackupBeforeMigrate(0);
    options.mf_setOptionsFilePath(L"D:\\opt\\night.opt");
    const UQGuiBackupOptions copy(options);
    EXPECT_EQ(copy.mf_isBackupBeforeMigrate(), 0);
    EXPECT_EQ(copy.mf_getOptionsFilePath(), L"D:\\opt\\night.opt");
    EXPECT_EQ(UQGuiBackupOptions::mf_getOptionsFileDefaultName(), L"kor.opt");
    EXPECT_EQ(UQGuiBackupOptions::mf_getOptionsFileDefaultExtension(), L"opt");
}

TEST_F(UQGuiBackupOptionsTest, TheDefaultsComeFromTheGuiSettingAndTheClientsInstallation) {
    setBackupClientPath(L"C:\\Program Files\\Stormex\\baclient");
    ASSERT_EQ(UQGuiRegistry::mf_setDefaultBackupBeforeMigrate(0), 1);
    UQGuiBackupOptions options;
    m_log.clear();
    options.mf_initializeDefaults();
    EXPECT_EQ(options.mf_isBackupBeforeMigrate(), 0);
    EXPECT_EQ(options.mf_getOptionsFilePath(),
              UQPath::mf_appendFile(L"C:\\Program Files\\Stormex\\baclient", L"kor.opt"));
    EXPECT_EQ(UQGuiBackupOptions::mf_getOptionsFileDefaultDirectory(),
              L"C:\\Program Files\\Stormex\\baclient");
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQGuiBackupOptionsTest, WithoutTheClientsPathTheDefaultPathThrowsAfterLogging) {
    const MissingPath missing = missingPath();
    ASSERT_FALSE(missing.sError.empty());
    m_log.clear();
    EXPECT_EQ(thrownCategory([] { UQGuiBackupOptions::mf_getOptionsFileDefaultPath(); }), "_E_::Registry");
    const LogLine couldNot{'E', "UQGuiBackupOptions::mf_getOptionsFileDefaultDirectory",
                           "Could not get B/A client installation path from registry:\r\n" + TAB +
                               missing.sError};
    EXPECT_EQ(m_log.lines(), missing.lines + std::vector<LogLine>{couldNot});
}

TEST_F(UQGuiBackupOptionsTest, WithoutTheClientsPathInitializeDefaultsThrowsAfterLoggingTwice) {
    const MissingPath missing = missingPath();
    UQGuiBackupOptions options;
    m_log.clear();
    EXPECT_EQ(thrownCategory([&] { options.mf_initializeDefaults(); }), "_E_::Registry");
    const std::vector<LogLine> lines = m_log.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(
        lines[lines.size() - 2],
        (LogLine{'E', "UQGuiBackupOptions::mf_getOptionsFileDefaultDirectory",
                 "Could not get B/A client installation path from registry:\r\n" + TAB + missing.sError}));
    EXPECT_EQ(lines.back(),
              (LogLine{'E', "UQGuiBackupOptions::mf_initializeDefaults",
                       "Failure initializing default backup options:\r\n" + TAB + missing.sError}));
}

TEST_F(UQGuiBackupOptionsTest, AValidFileAnswersOneAndLogsNothing) {
    ScratchFile file("valid.opt", "SERVER vrs-01\nPORT 1500\n");
    UQErrnoData error;
    m_log.clear();
    EXPECT_EQ(UQGuiBackupOptions::mf_validateOptionsFile(file.mf_getPath(), error), 1);
    EXPECT_FALSE(error);
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQGuiBackupOptionsTest, AnInvalidFileAnswersZeroWithTheClientsErrorLoggedAtLevelGOnly) {
    ScratchFile file("unknown.opt", "SERVER vrs-01\nVERBOSE yes\n");
    const std::string sError = "[E] _E_::Format: " + utf8(UQString(1017).mf_getText()) + " (" +
                               utf8(file.mf_getPath()) + ", line 2: unknown option 'VERBOSE')";
    UQErrnoData error;
    m_log.clear();
    EXPECT_EQ(UQGuiBackupOptions::mf_validateOptionsFile(file.mf_getPath(), error), 0);
    EXPECT_TRUE(error.mf_is(UQErrno::_E_::Format));
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'G', "UQGuiBackupOptions::mf_validateOptionsFile",
                                                    "Backup options are not valid:\r\n" + TAB + sError}}));
}

TEST_F(UQGuiBackupOptionsTest, EveryKindOfBadFileAnswersZeroAtLevelG) {
    ScratchFile empty("empty.opt", "");
    ScratchFile folder("folder.opt");
    ScratchFile longLine("long.opt", "INCLUDE " + std::string(1100, 'a') + "\n");
    const CString sMissing = ScratchFile("missing.opt", "").mf_getPath();
    for (const CString& sPath : {sMissing, folder.mf_getPath(), empty.mf_getPath(), longLine.mf_getPath()}) {
        UQErrnoData error;
        m_log.clear();
        EXPECT_EQ(UQGuiBackupOptions::mf_validateOptionsFile(sPath, error), 0) << utf8(sPath);
        EXPECT_TRUE(error) << utf8(sPath);
        const std::vector<LogLine> lines = m_log.lines();
        ASSERT_EQ(lines.size(), 1u) << utf8(sPath);
        EXPECT_EQ(lines[0].level, 'G');
        // The record names the file.
        EXPECT_NE(lines[0].text.find(utf8(sPath)), std::string::npos) << lines[0].text;
    }
}

TEST_F(UQGuiBackupOptionsTest, TheDynamicOptionFileIsValid) {
    UQErrnoData error;
    EXPECT_EQ(UQGuiBackupOptions::mf_validateOptionsFile(CString(), error), 1);
}
