#include "KorFilesTestSupport.h"
#include "KorFilesTool.h"
#include "support/KorFilesUsage.h"

#include "compat/utf8.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class KorFilesToolTest : public ::testing::Test {
protected:
    void SetUp() override { UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", L','); }
    void TearDown() override { UQNumberFormatter::mf_resetConfiguration(); }

    int run(const std::vector<CString>& args, const CString& defaultInput = L"no-default-input.txt") {
        return KorFilesTool::mf_run(args, defaultInput, L"no-default-listing.txt", out, err);
    }

    StringOutput out;
    StringOutput err;
    LogCheck log;
};

const char* const TWO_FILES = "# two files, their lines mixed\n"
                              "C:\\Data\\b.txt\t2\t10\t2024-03-07 14:05:09\tRecalled\twarning\n"
                              "C:\\Data\\a.txt\t1\t5\t2024-01-02 03:04:05\tMigrated\tinfo\n"
                              "C:\\Data\\a.txt\t2\t6\t2024-01-03 03:04:05\n"
                              "C:\\Data\\b.txt\t1\t9\t2024-03-01 00:00:00\n"
                              "C:\\Data\\a.txt\t3\t7\t2024-01-04 03:04:05.500\n";

} // namespace

TEST_F(KorFilesToolTest, PrintsOneAlignedLineperPathSortedByPath) {
    const TempFile file(TWO_FILES);
    EXPECT_EQ(0, run({file.path()}));
    EXPECT_EQ("Path           Versions  Selected version               Result    Severity\n"
              "C:\\Data\\a.txt  1 - 3     a.txt - 2024-01-04 - 03:04:05  Migrated  Information\n"
              "C:\\Data\\b.txt  1, 2      b.txt - 2024-03-07 - 14:05:09  Recalled  Warning\n",
              out.text);
    EXPECT_EQ("2 files, 5 versions, 0 malformed lines skipped\n", err.text);
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesToolTest, SortsByResultDescending) {
    const TempFile file("C:\\x\\one.txt\t1\t1\t2024-01-02 03:04:05\tMigrated\n"
                        "C:\\x\\two.txt\t1\t1\t2024-01-02 03:04:05\tStub file\tinfo\n"
                        "C:\\x\\three.txt\t1\t1\t2024-01-02 03:04:05\tAccess denied\terror\n"
                        "C:\\x\\four.txt\t1\t1\t2024-01-02 03:04:05\tMigrated\n");
    EXPECT_EQ(0, run({L"--sort=result", L"--descending", file.path()}));
    EXPECT_EQ("Path            Versions  Selected version                   Result         Severity\n"
              "C:\\x\\two.txt    1         two.txt - 2024-01-02 - 03:04:05    Stub file      Information\n"
              "C:\\x\\four.txt   1         four.txt - 2024-01-02 - 03:04:05   Migrated       Information\n"
              "C:\\x\\one.txt    1         one.txt - 2024-01-02 - 03:04:05    Migrated       Information\n"
              "C:\\x\\three.txt  1         three.txt - 2024-01-02 - 03:04:05  Access denied  Error\n",
              out.text);
    EXPECT_EQ("4 files, 4 versions, 0 malformed lines skipped\n", err.text);
}

TEST_F(KorFilesToolTest, SortsByPathDescending) {
    const TempFile file(TWO_FILES);
    EXPECT_EQ(0, run({L"--descending", L"--sort=path", file.path()}));
    EXPECT_EQ("Path           Versions  Selected version               Result    Severity\n"
              "C:\\Data\\b.txt  1, 2      b.txt - 2024-03-07 - 14:05:09  Recalled  Warning\n"
              "C:\\Data\\a.txt  1 - 3     a.txt - 2024-01-04 - 03:04:05  Migrated  Information\n",
              out.text);
}

TEST_F(KorFilesToolTest, MalformedLinesAreReportedInLineOrderAndTheRestIsPrinted) {
    const TempFile file("\xEF\xBB\xBF# with a byte order mark and CRLF\r\n"
                        "C:\\a.txt\t2\t10\t2024-03-07 14:05:09\r\n"
                        "C:\\a.txt\t2\t11\t2024-03-08 14:05:09\r\n"
                        "C:\\b.txt\t1\t-4\t2024-03-07 14:05:09\r\n"
                        "C:\\c.txt\t1\t4\t2023-02-30 14:05:09\r\n"
                        "C:\\d.txt\t4294967296\t4\t2023-02-28 14:05:09\r\n"
                        "C:\\e.txt\t1\r\n"
                        "C:\\f.txt\t1\t4\t2023-02-28 14:05:09\tRecalled\r\n");
    EXPECT_EQ(1, run({file.path()}));
    const std::string name = file.name();
    EXPECT_EQ(name + ":3: version 2 of this path is already listed on line 2\n" + name +
                  ":4: size '-4' is negative\n" + name +
                  ":5: last write time '2023-02-30 14:05:09' is not a valid date and time\n" + name +
                  ":6: version '4294967296' is out of range (0 to 4294967295)\n" + name +
                  ":7: missing size and last write time\n2 files, 2 versions, 5 malformed lines skipped\n",
              err.text);
    EXPECT_EQ("Path      Versions  Selected version               Result    Severity\n"
              "C:\\a.txt  2         a.txt - 2024-03-07 - 14:05:09            Information\n"
              "C:\\f.txt  1         f.txt - 2023-02-28 - 14:05:09  Recalled  Information\n",
              out.text);
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesToolTest, AnEmptyFilePrintsTheHeaderOnly) {
    const TempFile file("");
    EXPECT_EQ(0, run({file.path()}));
    EXPECT_EQ("Path  Versions  Selected version  Result  Severity\n", out.text);
    EXPECT_EQ("0 files, 0 versions, 0 malformed lines skipped\n", err.text);
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesToolTest, WithoutAFileTheDefaultInputIsRead) {
    const TempFile file("C:\\only.txt\t9\t1\t2024-01-02 03:04:05\tStub file\twarning\n");
    EXPECT_EQ(0, run({}, file.path()));
    EXPECT_EQ("Path         Versions  Selected version                  Result     Severity\n"
              "C:\\only.txt  9         only.txt - 2024-01-02 - 03:04:05  Stub file  Warning\n",
              out.text);
}

TEST_F(KorFilesToolTest, AFileThatCannotBeOpenedEndsWithCode3) {
    const TempFile file("");
    const CString missing = file.path() + L".missing";
    EXPECT_EQ(3, run({missing}));
    EXPECT_EQ("korfiles: cannot read '" + utf8(missing) + "': No such file or directory\n", err.text);
    EXPECT_EQ("", out.text);
}

TEST_F(KorFilesToolTest, AMissingDefaultInputEndsWithCode3) {
    EXPECT_EQ(3, run({}, L"no-such-dir/no-such-sample.txt"));
    EXPECT_EQ("korfiles: cannot read 'no-such-dir/no-such-sample.txt': No such file or directory\n",
              err.text);
}

TEST_F(KorFilesToolTest, ADirectoryCannotBeReadEither) {
    const CString directory = fromPath(std::filesystem::temp_directory_path());
    EXPECT_EQ(3, run({directory}));
    const std::string prefix = "korfiles: cannot read '" + utf8(directory) + "': ";
    EXPECT_EQ(prefix, err.text.substr(0, prefix.size()));
    EXPECT_EQ("", out.text);
}

TEST_F(KorFilesToolTest, BadUsageGivesOneLineAndTheUsageWithCode2) {
    const std::string& usage = KORFILES_USAGE;
    struct Case {
        std::vector<CString> args;
        std::string error;
    };
    const std::vector<Case> cases = {
        {{L"--verbose"}, "korfiles: unknown option '--verbose'\n"},
        {{L"-x", L"a.txt"}, "korfiles: unknown option '-x'\n"},
        {{L"--sort=size"}, "korfiles: --sort needs path or result, as in --sort=result, not '--sort=size'\n"},
        {{L"--sort", L"path"}, "korfiles: --sort needs path or result, as in --sort=result, not '--sort'\n"},
        {{L"a.txt", L"b.txt"}, "korfiles: only one file may be given, not both 'a.txt' and 'b.txt'\n"},
    };
    for (const Case& c : cases) {
        StringOutput caseOut;
        StringOutput caseErr;
        EXPECT_EQ(2, KorFilesTool::mf_run(c.args, L"unused.txt", L"unused-listing.txt", caseOut, caseErr));
        EXPECT_EQ(c.error + usage, caseErr.text);
        EXPECT_EQ("", caseOut.text);
    }
}

TEST_F(KorFilesToolTest, HelpGoesToStandardOutputAndNamesBothDefaultInputs) {
    EXPECT_EQ(0, KorFilesTool::mf_run({L"--help"}, L"C:\\korfiles\\korfiles-sample.txt",
                                      L"C:\\korfiles\\korfiles-listing.txt", out, err));
    EXPECT_EQ(
        KorFilesTool::mf_getHelp(L"C:\\korfiles\\korfiles-sample.txt", L"C:\\korfiles\\korfiles-listing.txt"),
        out.text);
    EXPECT_EQ(0u, out.text.find("Usage: korfiles [--sort=path|result] [--descending] [FILE]\n"
                                "       korfiles --listing[=FILE] [--no-stubs] [--skip=info,warning,error]"));
    EXPECT_NE(std::string::npos, out.text.find("\n  C:\\korfiles\\korfiles-sample.txt\n"));
    EXPECT_NE(std::string::npos, out.text.find("\n  C:\\korfiles\\korfiles-listing.txt\n"));
    for (const char* option :
         {"\n  --listing ", "\n  --listing=FILE ", "\n  --no-stubs ", "\n  --skip=SEVERITIES "})
        EXPECT_NE(std::string::npos, out.text.find(option)) << option;
    EXPECT_EQ("", err.text);

    StringOutput shortOut;
    StringOutput shortErr;
    EXPECT_EQ(0, KorFilesTool::mf_run({L"-h"}, L"x", L"y", shortOut, shortErr));
    EXPECT_EQ(KorFilesTool::mf_getHelp(L"x", L"y"), shortOut.text);
}

// Quotes, commas, blanks at the ends and control characters survive both formats for programs.
TEST_F(KorFilesToolTest, CsvAndJsonQuoteWhatTheirSyntaxNeeds) {
    const TempFile file("C:\\a \"b\", c.txt\t1\t5\t2024-01-02 03:04:05\tDone; 5% \\ ok\twarning\n");
    EXPECT_EQ(0, run({L"--format=csv", file.path()}));
    EXPECT_EQ("Path,Versions,Selected version,Result,Severity\n"
              "\"C:\\a \"\"b\"\", c.txt\",1,\"a \"\"b\"\", c.txt - 2024-01-02 - 03:04:05\",Done; 5% \\ "
              "ok,Warning\n",
              out.text);
    out.text.clear();
    EXPECT_EQ(0, run({L"--format=json", file.path()}));
    EXPECT_EQ("[\n{\"path\": \"C:\\\\a \\\"b\\\", c.txt\", \"versions\": \"1\", \"selectedVersion\": \"a "
              "\\\"b\\\", c.txt - 2024-01-02 - 03:04:05\", \"result\": \"Done; 5% \\\\ ok\", \"severity\": "
              "\"Warning\"}\n]\n",
              out.text);
}

TEST_F(KorFilesToolTest, JsonOfNoFilesIsAnEmptyArray) {
    const TempFile file("# nothing\n");
    EXPECT_EQ(0, run({L"--format=json", file.path()}));
    EXPECT_EQ("[\n]\n", out.text);
}

TEST_F(KorFilesToolTest, VersionPrintsTheProgramsVersion) {
    EXPECT_EQ(0, run({L"--version"}));
    EXPECT_EQ("korfiles 0.1.0\n", out.text);
    EXPECT_EQ("", err.text);
}

TEST_F(KorFilesToolTest, HelpNamesTheProductLog) {
    EXPECT_EQ(0, run({L"--help"}));
    EXPECT_NE(std::string::npos,
              out.text.find("\nFailures of the library are recorded in the product log (KOR_LOG_FILE names "
                            "another file):\n  " +
                            utf8(UQLogFileSink::mf_getDefaultPath()) + "\n"))
        << out.text;
}

// "-" is standard input; its problems are named after it. Standard input is this test process's own, so it
// is pointed at a file for the run.
TEST_F(KorFilesToolTest, DashReadsStandardInput) {
    const TempFile file(std::string(TWO_FILES) + "C:\\Data\\c.txt\tx\t1\t2024-01-02 03:04:05\n");
#if defined(_WIN32)
    ASSERT_NE(nullptr, _wfreopen(file.path(), L"rb", stdin));
#else
    ASSERT_NE(nullptr, std::freopen(file.name().c_str(), "rb", stdin));
#endif
    EXPECT_EQ(1, run({L"-"}));
    EXPECT_NE(std::string::npos, out.text.find("C:\\Data\\b.txt  1, 2")) << out.text;
    EXPECT_EQ("(standard input):7: version 'x' is not a whole number\n2 files, 5 versions, 1 malformed line "
              "skipped\n",
              err.text);
}

TEST_F(KorFilesToolTest, DoubleDashMakesTheNextArgumentTheFile) {
    EXPECT_EQ(3, run({L"--", L"--descending"}));
    EXPECT_EQ("korfiles: cannot read '--descending': No such file or directory\n", err.text);
}

TEST_F(KorFilesToolTest, ANonAsciiPathIsPrintedAsUtf8AndAlignedByCharacters) {
    const TempFile file("C:\\Pr\xC3\xA4sentation.pptx\t2\t1\t2024-01-02 03:04:05\tMigrated\n"
                        "C:\\z.txt\t1\t1\t2024-01-02 03:04:05\tMigrated\n");
    EXPECT_EQ(0, run({file.path()}));
    EXPECT_EQ(
        "Path                  Versions  Selected version                           Result    Severity\n"
        "C:\\Pr\xC3\xA4sentation.pptx  2         Pr\xC3\xA4sentation.pptx - 2024-01-02 - 03:04:05  Migrated  "
        "Information\n"
        "C:\\z.txt              1         z.txt - 2024-01-02 - 03:04:05              Migrated  "
        "Information\n",
        out.text);
}

#if !defined(_WIN32)

// A file name that is not UTF-8 (a Latin-1 byte) reaches the system as the bytes given, as main passes it.
TEST_F(KorFilesToolTest, AFileNameThatIsNotUtf8OpensTheFileItNames) {
    const std::string name = (std::filesystem::temp_directory_path() /
                              ("korfiles-caf\xE9-" + std::to_string(GetCurrentProcessId()) + ".txt"))
                                 .string();
    std::FILE* f = std::fopen(name.c_str(), "wb");
    ASSERT_NE(nullptr, f);
    const std::string content = TWO_FILES;
    ASSERT_EQ(content.size(), std::fwrite(content.data(), 1, content.size(), f));
    std::fclose(f);
    const std::wstring arg = uqfmt::nativeToWide(name.data(), name.size());
    EXPECT_EQ(0, run({CString(arg.c_str(), static_cast<int>(arg.size()))}));
    EXPECT_EQ("2 files, 5 versions, 0 malformed lines skipped\n", err.text);
    EXPECT_NE(std::string::npos, out.text.find("C:\\Data\\b.txt  1, 2")) << out.text;
    std::remove(name.c_str());
}

#endif
