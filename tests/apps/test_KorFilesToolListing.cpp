#include "KorFilesTestSupport.h"
#include "KorFilesTool.h"
#include "interfaces/korbase_testing.h"
#include "support/KorFilesUsage.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

class KorFilesListingTest : public ::testing::Test {
protected:
    void SetUp() override { UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", L','); }
    void TearDown() override { UQNumberFormatter::mf_resetConfiguration(); }

    int run(const std::vector<CString>& args, const CString& defaultListing = L"no-default-listing.txt") {
        return KorFilesTool::mf_run(args, L"no-default-input.txt", defaultListing, out, err);
    }

    // The paths of the printed table, in order; the test paths hold no two blanks in a row.
    std::vector<std::string> printedPaths() const {
        std::vector<std::string> paths;
        std::size_t start = out.text.find('\n');
        while (start != std::string::npos && start + 1 < out.text.size()) {
            const std::size_t end = out.text.find('\n', start + 1);
            const std::string line = out.text.substr(start + 1, end - start - 1);
            paths.push_back(line.substr(0, line.find("  ")));
            start = end;
        }
        return paths;
    }

    StringOutput out;
    StringOutput err;
    LogCheck log;
};

// One file of each severity, two stub files (one given by its status, one by its result text) and one
// whose result differs from the stub-file message in case only.
std::string mixedListing() {
    const std::string stub = utf8(UQString(UQErrno::_I_::StubFile.mf_getMessageNumber()).mf_getText());
    std::string otherCase = stub;
    otherCase[0] = static_cast<char>(otherCase[0] - 'A' + 'a');
    return "C:\\l\\a-migrated.txt\t1\tmigrated\n"
           "C:\\l\\b-stub.txt\t1\tstub\n"
           "C:\\l\\c-stub-other-case.txt\t1\tmigrated\t" +
           otherCase +
           "\n"
           "C:\\l\\d-stub-text-given.txt\t1\tmigrated\t" +
           stub +
           "\n"
           "C:\\l\\e-warning.txt\t2\twarning\tChanged during migration\n"
           "C:\\l\\f-failed.txt\t7\tfailed\tAccess denied\n";
}

const std::string PATH_A = "C:\\l\\a-migrated.txt";
const std::string PATH_B = "C:\\l\\b-stub.txt";
const std::string PATH_C = "C:\\l\\c-stub-other-case.txt";
const std::string PATH_D = "C:\\l\\d-stub-text-given.txt";
const std::string PATH_E = "C:\\l\\e-warning.txt";
const std::string PATH_F = "C:\\l\\f-failed.txt";

const char* const TWO_FILES = "# two files\n"
                              "C:\\Data\\a.txt\t1\tmigrated\n"
                              "C:\\Data\\a.txt\t2\tmigrated\n"
                              "C:\\Data\\a.txt\t3\tmigrated\n"
                              "C:\\Data\\b.txt\t5\twarning\tRecalled\n"
                              "C:\\Data\\b.txt\t1\tmigrated\n"
                              "C:\\Data\\b.txt\t2\tmigrated\n"
                              "C:\\Data\\b.txt\t4\tmigrated\n";

const char* const TWO_FILES_TABLE = "Path           Versions  Result    Severity\n"
                                    "C:\\Data\\a.txt  1 - 3     Migrated  Information\n"
                                    "C:\\Data\\b.txt  1, 2, 5   Recalled  Warning\n";

} // namespace

TEST_F(KorFilesListingTest, PrintsPathVersionRangesResultAndSeverityOfEachFile) {
    const TempFile file(TWO_FILES);
    EXPECT_EQ(0, run({L"--listing=" + file.path()}));
    // The first line of a path gives its result and severity; the ranges read upwards.
    EXPECT_EQ(TWO_FILES_TABLE, out.text);
    EXPECT_EQ("2 files, 7 versions, 0 malformed lines skipped\n", err.text);
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesListingTest, TheListingMayAlsoBeNamedLikeAnyFile) {
    const TempFile file(TWO_FILES);
    EXPECT_EQ(0, run({L"--listing", file.path()}));
    EXPECT_EQ(TWO_FILES_TABLE, out.text);

    StringOutput before;
    StringOutput beforeErr;
    EXPECT_EQ(0, KorFilesTool::mf_run({file.path(), L"--listing"}, L"x", L"y", before, beforeErr));
    EXPECT_EQ(TWO_FILES_TABLE, before.text);
    EXPECT_EQ("2 files, 7 versions, 0 malformed lines skipped\n", beforeErr.text);
}

TEST_F(KorFilesListingTest, WithoutAFileTheDefaultListingIsRead) {
    const TempFile file(TWO_FILES);
    EXPECT_EQ(0, run({L"--listing"}, file.path()));
    EXPECT_EQ(TWO_FILES_TABLE, out.text);
    EXPECT_EQ("2 files, 7 versions, 0 malformed lines skipped\n", err.text);
}

TEST_F(KorFilesListingTest, WithoutListingAListingIsReadAsFileVersionsAndFails) {
    // The default mode stays the file versions format: a listing line lacks its size and time there.
    const TempFile file("C:\\Data\\a.txt\t1\tmigrated\n");
    EXPECT_EQ(1, run({file.path()}));
    EXPECT_EQ(file.name() + ":1: missing last write time\n0 files, 0 versions, 1 malformed line skipped\n",
              err.text);
    EXPECT_EQ("Path  Versions  Selected version  Result  Severity\n", out.text);
}

TEST_F(KorFilesListingTest, SkipOptionsLeaveOutTheirSeverities) {
    const TempFile file(mixedListing());
    struct Case {
        std::vector<CString> options;
        std::vector<std::string> kept;
    };
    const std::vector<Case> cases = {
        {{}, {PATH_A, PATH_B, PATH_C, PATH_D, PATH_E, PATH_F}},
        {{L"--skip=info"}, {PATH_E, PATH_F}},
        {{L"--skip=warning"}, {PATH_A, PATH_B, PATH_C, PATH_D, PATH_F}},
        {{L"--skip=error"}, {PATH_A, PATH_B, PATH_C, PATH_D, PATH_E}},
        {{L"--skip=info,warning"}, {PATH_F}},
        {{L"--skip=warning,error"}, {PATH_A, PATH_B, PATH_C, PATH_D}},
        {{L"--skip=error,info"}, {PATH_E}},
        {{L"--skip=info,warning,error"}, {}},
        {{L"--skip=error,warning,info,error"}, {}},
        // Several --skip options add up.
        {{L"--skip=info", L"--skip=error"}, {PATH_E}},
        {{L"--skip=warning", L"--skip=warning"}, {PATH_A, PATH_B, PATH_C, PATH_D, PATH_F}},
    };
    for (const Case& c : cases) {
        out.text.clear();
        err.text.clear();
        std::vector<CString> args = c.options;
        args.push_back(L"--listing=" + file.path());
        EXPECT_EQ(0, run(args)) << utf8(args[0]);
        EXPECT_EQ(c.kept, printedPaths()) << utf8(args[0]);
        // Every file of the listing has one version.
        const long long n = static_cast<long long>(c.kept.size());
        EXPECT_EQ(KorFilesTool::mf_countLine(n, n, 0, "malformed line"), err.text) << utf8(args[0]);
    }
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesListingTest, NoStubsLeavesOutExactlyTheStubFileMessageAndCombinesWithSkip) {
    const TempFile file(mixedListing());
    struct Case {
        std::vector<CString> options;
        std::vector<std::string> kept;
    };
    // The stub line and the line that gives the message itself go; the message in another case stays.
    const std::vector<Case> cases = {
        {{L"--no-stubs"}, {PATH_A, PATH_C, PATH_E, PATH_F}},
        {{L"--no-stubs", L"--skip=error"}, {PATH_A, PATH_C, PATH_E}},
        {{L"--skip=warning,error", L"--no-stubs"}, {PATH_A, PATH_C}},
        {{L"--no-stubs", L"--skip=info"}, {PATH_E, PATH_F}},
        {{L"--no-stubs", L"--no-stubs", L"--skip=info,warning,error"}, {}},
    };
    for (const Case& c : cases) {
        out.text.clear();
        err.text.clear();
        std::vector<CString> args = c.options;
        args.push_back(L"--listing");
        args.push_back(file.path());
        EXPECT_EQ(0, run(args)) << utf8(args[0]);
        EXPECT_EQ(c.kept, printedPaths()) << utf8(args[0]);
        const long long n = static_cast<long long>(c.kept.size());
        EXPECT_EQ(KorFilesTool::mf_countLine(n, n, 0, "malformed line"), err.text) << utf8(args[0]);
    }
}

TEST_F(KorFilesListingTest, AFilterThatLeavesNothingPrintsTheHeaderOnly) {
    const TempFile file(mixedListing());
    EXPECT_EQ(0, run({L"--listing=" + file.path(), L"--skip=info,warning,error"}));
    EXPECT_EQ("Path  Versions  Result  Severity\n", out.text);
}

TEST_F(KorFilesListingTest, SortsByResultOrPathInEitherDirection) {
    const TempFile file(mixedListing());
    EXPECT_EQ(0, run({L"--listing=" + file.path(), L"--sort=result", L"--no-stubs"}));
    // Ordinal: upper case before lower case.
    EXPECT_EQ((std::vector<std::string>{PATH_F, PATH_E, PATH_A, PATH_C}), printedPaths());
    out.text.clear();
    EXPECT_EQ(0, run({L"--listing=" + file.path(), L"--sort=result", L"--descending"}));
    // Equal results stay by path ascending.
    EXPECT_EQ((std::vector<std::string>{PATH_C, PATH_B, PATH_D, PATH_A, PATH_E, PATH_F}), printedPaths());
    out.text.clear();
    EXPECT_EQ(0, run({L"--descending", L"--listing=" + file.path(), L"--skip=info"}));
    EXPECT_EQ((std::vector<std::string>{PATH_F, PATH_E}), printedPaths());
}

TEST_F(KorFilesListingTest, MalformedLinesAreReportedInTheReadersWordsAndSkippedWithCode1) {
    const TempFile file("\xEF\xBB\xBF# a listing with CRLF line ends\r\n"
                        "C:\\m\\a.txt\t1\tmigrated\r\n"
                        "C:\\m\\b.txt\tx\tmigrated\r\n"
                        "C:\\m\\c.txt\t4294967296\tmigrated\r\n"
                        "C:\\m\\d.txt\t1\tarchived\r\n"
                        "C:\\m\\e.txt\t1\tfailed\r\n"
                        "C:\\m\\f.txt\t2\twarning\tSlow\r\n");
    EXPECT_EQ(1, run({L"--listing=" + file.path()}));
    const std::string name = file.name();
    const std::vector<std::string> details = {
        name + ":3: bad version number 'x'", name + ":4: version number out of range '4294967296'",
        name + ":5: unknown status 'archived'", name + ":6: no result text for status 'failed'"};
    std::string expectedErr;
    std::vector<LogLine> expectedLog;
    for (const std::string& detail : details) {
        expectedErr += detail + "\n";
        expectedLog.push_back({'W', "UQListingReader::mf_readText", "Listing line skipped: " + detail});
    }
    EXPECT_EQ(expectedErr + "2 files, 2 versions, 4 malformed lines skipped\n", err.text);
    EXPECT_EQ("Path        Versions  Result    Severity\n"
              "C:\\m\\a.txt  1         Migrated  Information\n"
              "C:\\m\\f.txt  2         Slow      Warning\n",
              out.text);
    EXPECT_EQ(expectedLog, log.lines());
}

// A line in Latin-1 is reported whole with its line and its bytes as they are in the file; nothing of it is
// taken, and the lines around it are.
TEST_F(KorFilesListingTest, ALineThatIsNotUtf8IsReportedWithItsBytesAndTakesNothing) {
    const TempFile file("C:\\m\\a.txt\t1\tmigrated\n"
                        "C:\\m\\caf\xE9.txt\t1\tmigrated\n"
                        "C:\\m\\z.txt\t1\tfailed\tDenied \xE2\x80\x94 \xFF\n"
                        "C:\\m\\\xC3\xA9t\xC3\xA9.txt\t1\tmigrated\n");
    EXPECT_EQ(1, run({L"--listing=" + file.path()}));
    const std::string name = file.name();
    EXPECT_EQ(
        name + ":2: invalid UTF-8 (byte 0xE9 at column 9) in 'C:\\m\\caf\\xE9.txt\t1\tmigrated'\n" + name +
            ":3: invalid UTF-8 (byte 0xFF at column 32) in 'C:\\m\\z.txt\t1\tfailed\tDenied \xE2\x80\x94 "
            "\\xFF'\n2 files, 2 versions, 2 malformed lines skipped\n",
        err.text);
    EXPECT_EQ("Path          Versions  Result    Severity\n"
              "C:\\m\\a.txt    1         Migrated  Information\n"
              "C:\\m\\\xC3\xA9t\xC3\xA9.txt  1         Migrated  Information\n",
              out.text);
}

TEST_F(KorFilesListingTest, FiltersApplyToTheLinesThatWereRead) {
    const TempFile file("C:\\m\\a.txt\t1\tmigrated\n"
                        "C:\\m\\b.txt\t1\twarning\n"
                        "C:\\m\\c.txt\t1\twarning\tSlow\n"
                        "C:\\m\\d.txt\t1\tstub\n");
    EXPECT_EQ(1, run({L"--listing=" + file.path(), L"--no-stubs", L"--skip=warning"}));
    EXPECT_EQ(file.name() +
                  ":2: no result text for status 'warning'\n1 file, 1 version, 1 malformed line skipped\n",
              err.text);
    EXPECT_EQ((std::vector<std::string>{"C:\\m\\a.txt"}), printedPaths());
}

TEST_F(KorFilesListingTest, AnEntryTheListCannotStoreIsReportedAndSkippedWithCode1) {
    const TempFile file("C:\\n\\a.txt\t1\tmigrated\n"
                        "C:\\n\\b.txt\t1\tstub\n");
    // The first allocation of the list is the item of the first line.
    UQAllocationInjection::mf_injectFailure(0);
    const int code = run({L"--listing=" + file.path()});
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(1, code);
    const std::string detail =
        file.name() + ":1: entry refused: [E] _E_::Memory: There is not enough memory.";
    EXPECT_EQ(detail + "\n1 file, 1 version, 1 malformed line skipped\n", err.text);
    EXPECT_EQ((std::vector<std::string>{"C:\\n\\b.txt"}), printedPaths());
    const std::vector<LogLine> expected = {
        {'E', "UQFileListBase::mf_implAddItem",
         "No memory for file list item\r\n    Path='C:\\n\\a.txt', file-version=1, file-size=0, "
         "last-write-time=1601-01-01 00:00:00"},
        {'E', "UQListingFileList::mf_onMigrationEntry",
         "Failure adding file item 'C:\\n\\a.txt', version=1:\r\n    [E] _E_::Memory: There is not enough "
         "memory."},
        {'W', "MigrationListing::mf_read", "Listing line skipped: " + detail}};
    EXPECT_EQ(expected, log.lines());
}

TEST_F(KorFilesListingTest, AnEmptyListingPrintsTheHeaderOnly) {
    const TempFile file("# nothing was migrated\n\n");
    EXPECT_EQ(0, run({L"--listing=" + file.path()}));
    EXPECT_EQ("Path  Versions  Result  Severity\n", out.text);
    EXPECT_EQ("0 files, 0 versions, 0 malformed lines skipped\n", err.text);
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesListingTest, AListingThatCannotBeReadEndsWithCode3) {
    const TempFile file("");
    const CString missing = file.path() + L".missing";
    EXPECT_EQ(3, run({L"--listing=" + missing}));
    EXPECT_EQ("korfiles: cannot read '" + utf8(missing) + "': No such file or directory\n", err.text);
    EXPECT_EQ("", out.text);

    StringOutput defaultOut;
    StringOutput defaultErr;
    EXPECT_EQ(3, KorFilesTool::mf_run({L"--listing", L"--no-stubs"}, L"x",
                                      L"no-such-dir/korfiles-listing.txt", defaultOut, defaultErr));
    EXPECT_EQ("korfiles: cannot read 'no-such-dir/korfiles-listing.txt': No such file or directory\n",
              defaultErr.text);
    EXPECT_EQ("", defaultOut.text);
}

TEST_F(KorFilesListingTest, BadListingOptionsGiveOneLineAndTheUsageWithCode2) {
    struct Case {
        std::vector<CString> args;
        std::string error;
    };
    const std::string skipNeeds =
        "--skip needs info, warning or error, several separated by commas, as in --skip=info,warning, not ";
    const std::vector<Case> cases = {
        {{L"--listing", L"--skip"}, skipNeeds + "'--skip'"},
        {{L"--listing", L"--skip="}, skipNeeds + "'--skip='"},
        {{L"--listing", L"--skip=fatal"}, skipNeeds + "'--skip=fatal'"},
        {{L"--listing", L"--skip=Info"}, skipNeeds + "'--skip=Info'"},
        {{L"--listing", L"--skip=info,"}, skipNeeds + "'--skip=info,'"},
        {{L"--listing", L"--skip=,error"}, skipNeeds + "'--skip=,error'"},
        {{L"--listing", L"--skip=info,,error"}, skipNeeds + "'--skip=info,,error'"},
        {{L"--listing", L"--skip=info;warning"}, skipNeeds + "'--skip=info;warning'"},
        {{L"--listing", L"--skip=info, warning"}, skipNeeds + "'--skip=info, warning'"},
        {{L"--listing", L"--skip", L"info"}, skipNeeds + "'--skip'"},
        {{L"--listing="}, "--listing= needs a file name, as in --listing=listing.txt"},
        {{L"--listing=a.txt", L"b.txt"}, "only one file may be given, not both 'a.txt' and 'b.txt'"},
        {{L"a.txt", L"--listing=b.txt"}, "only one file may be given, not both 'a.txt' and 'b.txt'"},
        {{L"--listing=a.txt", L"--listing=b.txt"},
         "only one file may be given, not both 'a.txt' and 'b.txt'"},
        {{L"--no-stubs"}, "'--no-stubs' filters a listing and needs --listing"},
        {{L"--skip=error", L"--no-stubs", L"a.txt"}, "'--skip=error' filters a listing and needs --listing"},
        {{L"--listing", L"--no-stub"}, "unknown option '--no-stub'"},
        {{L"--listings"}, "unknown option '--listings'"},
        {{L"--listing", L"--skip-info"}, "unknown option '--skip-info'"},
    };
    for (const Case& c : cases) {
        StringOutput caseOut;
        StringOutput caseErr;
        EXPECT_EQ(2, KorFilesTool::mf_run(c.args, L"unused.txt", L"unused-listing.txt", caseOut, caseErr))
            << c.error;
        EXPECT_EQ("korfiles: " + c.error + "\n" + KORFILES_USAGE, caseErr.text);
        EXPECT_EQ("", caseOut.text);
    }
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(KorFilesListingTest, DoubleDashMakesAnOptionLikeArgumentTheListing) {
    EXPECT_EQ(3, run({L"--listing", L"--", L"--no-stubs"}));
    EXPECT_EQ("korfiles: cannot read '--no-stubs': No such file or directory\n", err.text);
}

TEST_F(KorFilesListingTest, ANonAsciiPathIsPrintedAsUtf8AndAlignedByCharacters) {
    const TempFile file("C:\\Pr\xC3\xA4sentation.pptx\t2\tmigrated\n"
                        "C:\\z.txt\t1\tfailed\tAccess denied\n");
    EXPECT_EQ(0, run({L"--listing=" + file.path()}));
    EXPECT_EQ("Path                  Versions  Result         Severity\n"
              "C:\\Pr\xC3\xA4sentation.pptx  2         Migrated       Information\n"
              "C:\\z.txt              1         Access denied  Error\n",
              out.text);
}

// Out-of-order lines are merged into their path's item: no second row for the same path.
TEST_F(KorFilesListingTest, OutOfOrderLinesOfAPathGiveOneRow) {
    const TempFile file("C:\\n\\b.txt\t1\tmigrated\n"
                        "C:\\n\\a.txt\t1\tmigrated\n"
                        "C:\\n\\b.txt\t2\tmigrated\n");
    EXPECT_EQ(0, run({L"--listing=" + file.path()}));
    EXPECT_EQ((std::vector<std::string>{"C:\\n\\a.txt", "C:\\n\\b.txt"}), printedPaths());
    EXPECT_EQ("2 files, 3 versions, 0 malformed lines skipped\n", err.text);
}
