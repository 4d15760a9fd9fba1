// The backup client's validation of option files: the shipped sample, each kind of invalid file with its
// file and line, and the instances a backend gets.
#include "support/LogCheck.h"
#include "support/ScratchFile.h"

#include "interfaces/korarchiver.h"

#include <memory>

namespace {

// Validates _sPath; the error's text (empty when valid) and the data it left in the error argument.
struct Validation {
    int bValid = -1;
    std::string sError;
    std::string sCategory;
    std::string sDataCategory;
};

Validation validate(const CString& _sPath) {
    Validation result;
    std::unique_ptr<UQBackup, void (*)(UQBackup*)> instance(UQBackup::mf_createInstance(UQBackend::VRS),
                                                            UQBackup::mf_deleteInstance);
    UQBackupOptions options;
    options.mf_setOptionsFilePath(_sPath);
    UQErrnoData error;
    try {
        result.bValid = UQBackup::mf_validateOptions(instance.get(), options, error);
    } catch (const UQErrno& e) {
        result.sError = utf8(e.mf_getDetail());
        result.sCategory = utf8(e.mf_getData().mf_getValue()->mf_getName());
    }
    result.sDataCategory = error.mf_getValue() != nullptr ? utf8(error.mf_getValue()->mf_getName()) : "";
    return result;
}

std::string pathOf(const ScratchFile& _file) {
    return utf8(_file.mf_getPath());
}

} // namespace

TEST(UQBackup, TheShippedSampleIsValidAndItsOptionsAreRead) {
    UQBackupOptions options;
    options.mf_setOptionsFilePath(CString::FromUtf8(KOR_OPTION_SAMPLE));
    UQBackup* pInstance = UQBackup::mf_createInstance(UQBackend::VRS);
    UQErrnoData error;
    LogCheck log;
    EXPECT_EQ(UQBackup::mf_validateOptions(pInstance, options, error), 1);
    UQBackup::mf_deleteInstance(pInstance);
    EXPECT_FALSE(error);
    ASSERT_EQ(options.mf_getOptions().size(), 12u);
    EXPECT_EQ(options.mf_getOptions()[0].first, L"SERVER");
    EXPECT_EQ(options.mf_getOptions()[0].second, L"vrs-01.corvex.example");
    EXPECT_EQ(options.mf_getOptions()[8].second, L"C:\\Program Files\\Stormex\\baclient\\backup.log");
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQBackup, NamesAreCaseBlindAndABomCommentsAndBlankLinesAreAllowed) {
    ScratchFile file("mixed.opt",
                     "\xEF\xBB\xBF* comment\r\n\r\n   # indented comment\r\nserver\tvrs\r\nPort 1\r\n");
    EXPECT_EQ(validate(file.mf_getPath()).bValid, 1);
}

TEST(UQBackup, TheDynamicOptionFileIsValid) {
    EXPECT_EQ(validate(CString()).bValid, 1);
}

TEST(UQBackup, AFileThatDoesNotExistIsAFileErrorNamingIt) {
    const CString sMissing = ScratchFile("gone.opt", "").mf_getPath();
    const Validation result = validate(sMissing);
    EXPECT_EQ(result.bValid, -1);
    EXPECT_EQ(result.sCategory, "_E_::File");
    EXPECT_EQ(result.sDataCategory, "_E_::File");
    EXPECT_EQ(result.sError.rfind(utf8(sMissing) + ": cannot be opened: ", 0), 0u) << result.sError;
}

TEST(UQBackup, AFolderIsAFileError) {
    ScratchFile folder("folder.opt");
    const Validation result = validate(folder.mf_getPath());
    EXPECT_EQ(result.sCategory, "_E_::File");
    EXPECT_EQ(result.sError, pathOf(folder) + ": is a folder");
}

TEST(UQBackup, AnEmptyFileHoldsNoOption) {
    ScratchFile empty("empty.opt", "* only a comment\n\n");
    const Validation result = validate(empty.mf_getPath());
    EXPECT_EQ(result.sCategory, "_E_::Format");
    EXPECT_EQ(result.sError, pathOf(empty) + ": holds no option");
}

TEST(UQBackup, EachInvalidLineIsNamedWithItsNumber) {
    const struct {
        const char* pszBytes;
        const char* pszError;
    } cases[] = {
        {"SERVER a\nVERBOSE yes\n", "line 2: unknown option 'VERBOSE'"},
        {"PORT 0\n", "line 1: option PORT takes a number from 1 to 65535, not '0'"},
        {"PORT 15x0\n", "line 1: option PORT takes a number from 1 to 65535, not '15x0'"},
        {"SESSIONS 11\n", "line 1: option SESSIONS takes a number from 1 to 10, not '11'"},
        {"COMPRESSION maybe\n", "line 1: option COMPRESSION takes YES or NO, not 'maybe'"},
        {"PASSWORD_ACCESS always\n", "line 1: option PASSWORD_ACCESS takes PROMPT or GENERATE, not 'always'"},
        {"SERVER\n", "line 1: option SERVER takes a text of 1 to 255 characters"},
        {"SERVER=vrs\n", "line 1: an option line is NAME value"},
        {"* c\nSERVER a\nSERVER b\n", "line 3: option SERVER is given again (first at line 2)"},
        {"SERVER a\n\x01NODE b\n", "line 2: the line holds a control character"},
        {"SERVER caf\xE9\n", "line 1: the line is not UTF-8 text"},
    };
    for (const auto& c : cases) {
        ScratchFile file("invalid.opt", c.pszBytes);
        const Validation result = validate(file.mf_getPath());
        EXPECT_EQ(result.sCategory, "_E_::Format") << c.pszBytes;
        EXPECT_EQ(result.sError, pathOf(file) + ", " + c.pszError) << c.pszBytes;
    }
}

TEST(UQBackup, AnOverlongLineIsRefusedAndItsEchoIsCut) {
    ScratchFile longLine("long.opt", "SERVER a\nINCLUDE " + std::string(2000, 'x') + "\n");
    EXPECT_EQ(validate(longLine.mf_getPath()).sError,
              pathOf(longLine) + ", line 2: the line is longer than 1024 bytes");
    ScratchFile longValue("value.opt", "COMPRESSION " + std::string(500, 'y') + "\n");
    const Validation result = validate(longValue.mf_getPath());
    EXPECT_EQ(result.sError, pathOf(longValue) + ", line 1: option COMPRESSION takes YES or NO, not '" +
                                 std::string(80, 'y') + "...'");
}

TEST(UQBackup, IncludeAndExcludeMayRepeat) {
    ScratchFile file("repeat.opt", "INCLUDE a\nINCLUDE b\nEXCLUDE c\nEXCLUDE d\n");
    EXPECT_EQ(validate(file.mf_getPath()).bValid, 1);
}

TEST(UQBackup, OnlyTheVrsBackendHasABackupClient) {
    EXPECT_EQ(thrownCategory([] { UQBackup::mf_createInstance(UQBackend::NONE); }), "_E_::Parameter");
    EXPECT_EQ(thrownCategory([] { UQBackup::mf_deleteInstance(nullptr); }), "_E_::Parameter");
    UQBackupOptions options;
    UQErrnoData error;
    EXPECT_EQ(thrownCategory([&] { UQBackup::mf_validateOptions(nullptr, options, error); }),
              "_E_::Parameter");
    EXPECT_TRUE(error.mf_is(UQErrno::_E_::Parameter));
}
