// korfiles search: the history search from the store through the search list to the printed file list;
// pattern, time range, sorts, exclusions, latest versions, retrieval order, malformed records and usage.
#include "HistorySource.h"
#include "KorFilesTestSupport.h"
#include "KorFilesTool.h"
#include "SearchCommand.h"

#include "compat/utf8.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

// One file in each of the six states, their paths in the order of the states. The latest version's record
// decides: available.txt was expiring in version 1. The access keys put them in another order:
// f, c, a, d, b, e.
const char* const STATES =
    "# one file per state\n"
    "\\\\S\\a\\available.txt\t=\t1\t2023-01-01 10:00:00\t10\tS\t2024-01-01 00:00:00\t5:100\n"
    "\\\\S\\a\\available.txt\t=\t2\t2023-02-01 10:00:00\t12\tS\t-\t2:100\n"
    "\\\\S\\b\\avail-prot.txt\t=\t1\t2023-03-01 10:00:00\t10\tSP\t-\t4:100\n"
    "\\\\S\\c\\expiring.txt\t=\t1\t2023-04-01 10:00:00\t10\tA\t2025-01-01 00:00:00\t1:100\n"
    "\\\\S\\d\\expiring-prot.txt\t=\t3\t2023-05-01 10:00:00\t10\tP\t2025-01-01 00:00:00\t3:100\n"
    "\\\\S\\e\\deleted.txt\t=\t1\t2023-06-01 10:00:00\t10\tED\t-\t6:50\n"
    "\\\\S\\f\\deleted-prot.txt\t=\t1\t2023-07-01 10:00:00\t10\tSEPD\t-\t0:7\n";

const std::string A = "\\\\S\\a\\available.txt";
const std::string B = "\\\\S\\b\\avail-prot.txt";
const std::string C = "\\\\S\\c\\expiring.txt";
const std::string D = "\\\\S\\d\\expiring-prot.txt";
const std::string E = "\\\\S\\e\\deleted.txt";
const std::string F = "\\\\S\\f\\deleted-prot.txt";

const char* const CLOSE = "UQSearchList::mf_close";

LogLine closed(int files) {
    return {'T', CLOSE, "Created, sorted and closed search file list (" + std::to_string(files) + " files)"};
}

class SearchCommandTest : public ::testing::Test {
protected:
    // korfiles search ARGS on the store of STATES.
    int search(std::vector<CString> args) {
        args.insert(args.begin(), L"--store=" + m_store.path());
        return SearchCommand::mf_run(args, HistorySource::mf_sample(), out, err);
    }

    // The first column of every line after the header.
    std::vector<std::string> paths() const {
        std::vector<std::string> result;
        std::istringstream lines(out.text);
        std::string line;
        std::getline(lines, line);
        while (std::getline(lines, line))
            result.push_back(line.substr(0, line.find("  ")));
        return result;
    }

    const TempFile m_store{STATES};
    StringOutput out;
    StringOutput err;
    LogCheck log;
};

// Takes the records and the thread they came on.
struct RecordingSink : UVQueryDataSink {
    void mf_onQueryData(const UQQueryData& data) override {
        paths.push_back(utf8(data.mf_getObjectPath()));
        threads.push_back(std::this_thread::get_id());
    }
    std::vector<std::string> paths;
    std::vector<std::thread::id> threads;
};

} // namespace

// ---------------------------------------------------------------------------------------------------------
// The file list

TEST_F(SearchCommandTest, PrintsOneLinePerFileWithRangesStatusSecurityAndStreamsSortedByPath) {
    EXPECT_EQ(0, search({}));
    EXPECT_EQ("Path                     Versions  Status                 Security  Streams\n"
              "\\\\S\\a\\available.txt      1, 2      Available              Yes       No\n"
              "\\\\S\\b\\avail-prot.txt     1         Available (protected)  Yes       No\n"
              "\\\\S\\c\\expiring.txt       1         Expiring               No        Yes\n"
              "\\\\S\\d\\expiring-prot.txt  3         Expiring (protected)   No        No\n"
              "\\\\S\\e\\deleted.txt        1         Deleted                No        No\n"
              "\\\\S\\f\\deleted-prot.txt   1         Deleted (protected)    Yes       No\n",
              out.text);
    EXPECT_EQ("6 files, 7 versions, 0 malformed records skipped\n", err.text);
    EXPECT_EQ(std::vector<LogLine>{closed(6)}, log.lines());
}

TEST_F(SearchCommandTest, CsvAndJsonGiveOneRecordPerFileWithTheTablesColumns) {
    EXPECT_EQ(0, search({L"--format=csv", L"*avail*"}));
    EXPECT_EQ("Path,Versions,Status,Security,Streams\n"
              "\\\\S\\a\\available.txt,\"1, 2\",Available,Yes,No\n"
              "\\\\S\\b\\avail-prot.txt,1,Available (protected),Yes,No\n",
              out.text);
    EXPECT_EQ("2 files, 3 versions, 0 malformed records skipped\n", err.text);
    out.text.clear();
    err.text.clear();
    EXPECT_EQ(0, search({L"--format=json", L"*avail*"}));
    EXPECT_EQ(
        "[\n"
        "{\"path\": \"\\\\\\\\S\\\\a\\\\available.txt\", \"versions\": \"1, 2\", \"status\": \"Available\", "
        "\"security\": \"Yes\", \"streams\": \"No\"},\n"
        "{\"path\": \"\\\\\\\\S\\\\b\\\\avail-prot.txt\", \"versions\": \"1\", \"status\": "
        "\"Available (protected)\", \"security\": \"Yes\", \"streams\": \"No\"}\n"
        "]\n",
        out.text);
    EXPECT_EQ("2 files, 3 versions, 0 malformed records skipped\n", err.text);
    out.text.clear();
    err.text.clear();
    EXPECT_EQ(2, search({L"--format=xml"}));
    EXPECT_EQ(0u, err.text.find("korfiles search: --format needs table, csv or json, as in --format=csv, not "
                                "'--format=xml'\n"))
        << err.text;
}

TEST_F(SearchCommandTest, AnEmptyStorePrintsTheHeaderAlone) {
    const TempFile empty("# nothing stored yet\n");
    EXPECT_EQ(0, SearchCommand::mf_run({L"--store=" + empty.path()}, HistorySource::mf_sample(), out, err));
    EXPECT_EQ("Path  Versions  Status  Security  Streams\n", out.text);
    EXPECT_EQ("0 files, 0 versions, 0 malformed records skipped\n", err.text);
}

TEST_F(SearchCommandTest, WithoutStoreSearchesTheBuiltInSample) {
    EXPECT_EQ(0, KorFilesTool::mf_run({L"search", L"*\\Offers\\*"}, L"none.txt", L"none.txt", out, err));
    EXPECT_EQ("Path                                                 Versions  Status     Security  Streams\n"
              "\\\\FILESRV03\\Sales\\Offers\\offer 2024-031 \xC3\x98rsted.docx  1 - 3     Available  No      "
              "  No\n",
              out.text);
    EXPECT_EQ("1 file, 3 versions, 0 malformed records skipped\n", err.text);
}

TEST_F(SearchCommandTest, TheBuiltInSampleHas21FilesAndNoMalformedRecord) {
    EXPECT_EQ(0, KorFilesTool::mf_run({L"search"}, L"none.txt", L"none.txt", out, err));
    EXPECT_EQ(21u, paths().size());
    EXPECT_EQ("21 files, 60 versions, 0 malformed records skipped\n", err.text);
    EXPECT_EQ(std::vector<LogLine>{closed(21)}, log.lines());
}

// ---------------------------------------------------------------------------------------------------------
// Pattern and time range

TEST_F(SearchCommandTest, PatternStarMatchesAcrossBackslashesCaseBlind) {
    EXPECT_EQ(0, search({L"*\\C\\*"}));
    EXPECT_EQ(std::vector<std::string>{C}, paths());
}

TEST_F(SearchCommandTest, PatternQuestionMarkStandsForExactlyOneCharacter) {
    EXPECT_EQ(0, search({L"\\\\s\\?\\*-PROT.TXT"}));
    EXPECT_EQ((std::vector<std::string>{B, D, F}), paths());
    out.text.clear();
    // Two characters where the pattern has one.
    EXPECT_EQ(0, search({L"\\\\?\\*"}));
    EXPECT_EQ(6u, paths().size());
    out.text.clear();
    EXPECT_EQ(0, search({L"\\\\??\\*"}));
    EXPECT_EQ(std::vector<std::string>{}, paths());
}

// A pattern that is no UTF-8 could match no stored path (the store is UTF-8): it is refused, not searched.
TEST_F(SearchCommandTest, APatternThatIsNotUtf8IsBadUsage) {
    CString lone(L"*caf");
    lone += static_cast<wchar_t>(0xD800);
    lone += L"*";
    EXPECT_EQ(2, search({lone}));
    EXPECT_EQ("", out.text);
    EXPECT_EQ(0u,
              err.text.find("korfiles search: PATTERN is not valid UTF-8 (unpaired surrogate U+D800 at unit "
                            "5), so it could match no stored path\n"))
        << err.text;
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
#ifndef _WIN32
    // A Latin-1 argument: main.cpp keeps its byte 0xE9 as U+DCE9.
    const std::string bytes = "*caf\xE9*";
    const std::wstring wide = uqfmt::nativeToWide(bytes.data(), bytes.size());
    err.text.clear();
    EXPECT_EQ(2, search({CString(wide.c_str(), static_cast<int>(wide.size()))}));
    EXPECT_EQ(0u,
              err.text.find("korfiles search: PATTERN is not valid UTF-8 (byte 0xE9 at character 5), so it "
                            "could match no stored path\n"))
        << err.text;
#endif
    // Characters beyond the BMP are whole pairs and search as any other.
    CString emoji(L"*");
    emoji += static_cast<wchar_t>(0xD83D);
    emoji += static_cast<wchar_t>(0xDE00);
    emoji += L"*";
    err.text.clear();
    EXPECT_EQ(0, search({emoji}));
    EXPECT_EQ(std::vector<std::string>{}, paths());
}

TEST_F(SearchCommandTest, PatternMustMatchTheWholePath) {
    EXPECT_EQ(0, search({L"expiring.txt"}));
    EXPECT_EQ(std::vector<std::string>{}, paths());
}

TEST_F(SearchCommandTest, TimeRangeTakesWholeDaysOnTheLastWriteTime) {
    // available.txt's version 2 and expiring-prot.txt were written at 10:00 on the bounding days.
    EXPECT_EQ(0, search({L"--from=2023-02-01", L"--to=2023-05-01"}));
    EXPECT_EQ((std::vector<std::string>{A, B, C, D}), paths());
    // Version 1 of available.txt is before the range.
    EXPECT_NE(std::string::npos, out.text.find(A + "      2         Available"));
}

TEST_F(SearchCommandTest, TimeRangeOpenAtOneEnd) {
    EXPECT_EQ(0, search({L"--from=2023-06-01"}));
    EXPECT_EQ((std::vector<std::string>{E, F}), paths());
    out.text.clear();
    EXPECT_EQ(0, search({L"--to=2023-01-31"}));
    EXPECT_EQ((std::vector<std::string>{A}), paths());
    EXPECT_NE(std::string::npos, out.text.find(A + "  1         Expiring"));
}

// ---------------------------------------------------------------------------------------------------------
// Sorting

TEST_F(SearchCommandTest, SortsByPathDescending) {
    EXPECT_EQ(0, search({L"--descending"}));
    EXPECT_EQ((std::vector<std::string>{F, E, D, C, B, A}), paths());
}

TEST_F(SearchCommandTest, SortsByStatusTextInBothDirections) {
    EXPECT_EQ(0, search({L"--sort=status"}));
    EXPECT_EQ((std::vector<std::string>{A, B, E, F, C, D}), paths());
    out.text.clear();
    EXPECT_EQ(0, search({L"--sort=status", L"--descending"}));
    EXPECT_EQ((std::vector<std::string>{D, C, F, E, B, A}), paths());
}

TEST_F(SearchCommandTest, SortsBySecurityWithTiesByPathAscendingInBothDirections) {
    EXPECT_EQ(0, search({L"--sort=security"}));
    EXPECT_EQ((std::vector<std::string>{C, D, E, A, B, F}), paths());
    out.text.clear();
    EXPECT_EQ(0, search({L"--descending", L"--sort=security"}));
    EXPECT_EQ((std::vector<std::string>{A, B, F, C, D, E}), paths());
}

TEST_F(SearchCommandTest, SortsByStreamsWithTiesByPathAscendingInBothDirections) {
    EXPECT_EQ(0, search({L"--sort=streams"}));
    EXPECT_EQ((std::vector<std::string>{A, B, D, E, F, C}), paths());
    out.text.clear();
    EXPECT_EQ(0, search({L"--sort=streams", L"--descending"}));
    EXPECT_EQ((std::vector<std::string>{C, A, B, D, E, F}), paths());
}

// ---------------------------------------------------------------------------------------------------------
// Exclusions

TEST_F(SearchCommandTest, EachExclusionLeavesOutTheFilesOfItsStateAlone) {
    const wchar_t* const words[6] = {L"available", L"available-protected", L"expiring", L"expiring-protected",
                                     L"deleted",   L"deleted-protected"};
    const std::string all[6] = {A, B, C, D, E, F};
    for (int i = 0; i < 6; ++i) {
        out.text.clear();
        EXPECT_EQ(0, search({CString(L"--exclude=") + words[i]})) << utf8(words[i]);
        std::vector<std::string> expected;
        for (int j = 0; j < 6; ++j) {
            if (j != i)
                expected.push_back(all[j]);
        }
        EXPECT_EQ(expected, paths()) << utf8(words[i]);
    }
}

TEST_F(SearchCommandTest, ExclusionsCombineWithinAndAcrossOptions) {
    EXPECT_EQ(0, search({L"--exclude=available,deleted", L"--exclude=expiring-protected"}));
    EXPECT_EQ((std::vector<std::string>{B, C, F}), paths());
    out.text.clear();
    EXPECT_EQ(0, search({L"--exclude=available,available-protected,expiring,expiring-protected,deleted,"
                         L"deleted-protected"}));
    EXPECT_EQ("Path  Versions  Status  Security  Streams\n", out.text);
}

TEST_F(SearchCommandTest, ExclusionGoesByTheLatestVersion) {
    // Version 1 of available.txt is expiring; its latest is not.
    EXPECT_EQ(0, search({L"--exclude=expiring"}));
    EXPECT_EQ((std::vector<std::string>{A, B, D, E, F}), paths());
}

// ---------------------------------------------------------------------------------------------------------
// Latest versions and retrieval order

TEST_F(SearchCommandTest, LatestOnlyShowsTheSelectedVersionNumberInsteadOfTheRanges) {
    EXPECT_EQ(0, search({L"--latest-only", L"--exclude=deleted,deleted-protected", L"--sort=status"}));
    EXPECT_EQ("Path                     Version  Status                 Security  Streams\n"
              "\\\\S\\a\\available.txt      2        Available              Yes       No\n"
              "\\\\S\\b\\avail-prot.txt     1        Available (protected)  Yes       No\n"
              "\\\\S\\c\\expiring.txt       1        Expiring               No        Yes\n"
              "\\\\S\\d\\expiring-prot.txt  3        Expiring (protected)   No        No\n",
              out.text);
    EXPECT_EQ("4 files, 5 versions, 0 malformed records skipped\n", err.text);
}

TEST_F(SearchCommandTest, RetrievalOrderListsTheSelectedFilesByVolumeAndPosition) {
    EXPECT_EQ(0, search({L"--retrieval-order"}));
    EXPECT_EQ((std::vector<std::string>{F, C, A, D, B, E}), paths());
    // The full ranges stay without --latest-only.
    EXPECT_NE(std::string::npos, out.text.find(A + "      1, 2"));
}

TEST_F(SearchCommandTest, RetrievalOrderKeepsTheExclusions) {
    EXPECT_EQ(0, search({L"--retrieval-order", L"--latest-only", L"--exclude=deleted-protected,available"}));
    EXPECT_EQ((std::vector<std::string>{C, D, B, E}), paths());
    EXPECT_EQ(0u, out.text.rfind("Path                     Version  Status", 0));
}

TEST_F(SearchCommandTest, RetrievalOrderOfTheSampleFollowsTheAccessKeysOfTheLatestVersions) {
    EXPECT_EQ(0, KorFilesTool::mf_run({L"search", L"*\\Atlas\\*", L"--retrieval-order", L"--latest-only"},
                                      L"none.txt", L"none.txt", out, err));
    // housing assembly 4 at 29:2428606135, minutes 3 at 37:3582841244, design notes 4 at 40:5101868205.
    EXPECT_EQ(
        (std::vector<std::string>{"\\\\FILESRV01\\Projects\\Atlas\\Drawings\\housing assembly rev C.dwg",
                                  "\\\\FILESRV01\\Projects\\Atlas\\Meeting Minutes\\minutes 2024-02-12.docx",
                                  "\\\\FILESRV01\\Projects\\Atlas\\Design\\Atlas design notes.docx"}),
        paths());
}

// ---------------------------------------------------------------------------------------------------------
// The search's thread

TEST(HistorySource, TheSampleIsSearchedOnAWorkerThread) {
    RecordingSink sink;
    UQHistoryQuery query;
    query.sPattern = L"*\\Jane Doe\\*";
    const UQHistoryStore::Result result = HistorySource::mf_sample().mf_search(query, sink);
    EXPECT_EQ(60u, result.uRecords);
    EXPECT_EQ(2u, result.uMatches);
    EXPECT_TRUE(result.errors.empty());
    ASSERT_EQ(2u, sink.threads.size());
    EXPECT_NE(std::this_thread::get_id(), sink.threads[0]);
    EXPECT_EQ(sink.threads[0], sink.threads[1]);
}

TEST(HistorySource, AStoreFileIsSearchedOnAWorkerThread) {
    const TempFile store(STATES);
    RecordingSink sink;
    const UQHistoryStore::Result result =
        HistorySource::mf_file(store.path()).mf_search(UQHistoryQuery(), sink);
    EXPECT_EQ(7u, result.uMatches);
    EXPECT_EQ((std::vector<std::string>{A, A, B, C, D, E, F}), sink.paths);
    ASSERT_EQ(7u, sink.threads.size());
    EXPECT_NE(std::this_thread::get_id(), sink.threads[0]);
}

// ---------------------------------------------------------------------------------------------------------
// Malformed records and unreadable stores

TEST_F(SearchCommandTest, ARecordThatIsNotUtf8IsReportedWithItsBytesAndTakesNothing) {
    const TempFile store("\\\\S\\x\\M\xFCller.txt\t=\t1\t2023-01-01 10:00:00\t10\t-\t-\t1:1\n"
                         "\\\\S\\x\\M\xC3\xBCller.txt\t=\t1\t2023-01-01 10:00:00\t10\t-\t-\t1:2\n");
    EXPECT_EQ(1, SearchCommand::mf_run({L"--store=" + store.path()}, HistorySource::mf_sample(), out, err));
    EXPECT_EQ(store.name() +
                  ":1: invalid UTF-8 (byte 0xFC at column 8) in '\\\\S\\x\\M\\xFCller.txt\t=\t1\t2023-01-01 "
                  "10:00:00\t10\t-\t-\t1:1'\n1 file, 1 version, 1 malformed record skipped\n",
              err.text);
    EXPECT_EQ("Path              Versions  Status     Security  Streams\n"
              "\\\\S\\x\\M\xC3\xBCller.txt  1         Available  No        No\n",
              out.text);
}

TEST_F(SearchCommandTest, MalformedRecordsAreReportedWithFileAndLineAndSkipped) {
    const TempFile store("# two bad records among good ones\n"
                         "\\\\S\\x\\one.txt\t=\t1\t2023-01-01 10:00:00\t10\t-\t-\t1:1\n"
                         "\\\\S\\x\\two.txt\t=\tx1\t2023-01-01 10:00:00\t10\t-\t-\t1:2\n"
                         "\\\\S\\x\\three.txt\t=\t1\t2023-01-01 10:00:00\t10\n"
                         "\\\\S\\x\\four.txt\t=\t1\t2023-01-01 10:00:00\t10\tSQ\t-\t1:4\n");
    EXPECT_EQ(1, SearchCommand::mf_run({L"--store=" + store.path()}, HistorySource::mf_sample(), out, err));
    const std::string name = store.name();
    EXPECT_EQ(name + ":3: bad version number 'x1'\n" + name +
                  ":4: expected 8 tab-separated fields, found 5\n" + name + ":5: bad flags 'SQ'\n" +
                  "1 file, 1 version, 3 malformed records skipped\n",
              err.text);
    EXPECT_EQ("Path           Versions  Status     Security  Streams\n"
              "\\\\S\\x\\one.txt  1         Available  No        No\n",
              out.text);
    const char* const searchText = "UQHistoryStore::mf_searchText";
    EXPECT_EQ((std::vector<LogLine>{
                  {'W', searchText, "History record skipped: " + name + ":3: bad version number 'x1'"},
                  {'W', searchText,
                   "History record skipped: " + name + ":4: expected 8 tab-separated fields, found 5"},
                  {'W', searchText, "History record skipped: " + name + ":5: bad flags 'SQ'"},
                  closed(1)}),
              log.lines());
}

TEST_F(SearchCommandTest, AStoreThatCannotBeOpenedEndsWith3) {
    const std::string missing = m_store.name() + ".missing";
    EXPECT_EQ(3, SearchCommand::mf_run({CString::FromUtf8("--store=" + missing)}, HistorySource::mf_sample(),
                                       out, err));
    EXPECT_EQ("", out.text);
    EXPECT_EQ("korfiles: cannot read the history store " + missing +
                  ": cannot open: No such file or directory (errno 2)\n",
              err.text);
    EXPECT_EQ((std::vector<LogLine>{
                  {'E', "UQHistoryStore::mf_search", "Failure opening history store '" + missing + "'"}}),
              log.lines());
}

// ---------------------------------------------------------------------------------------------------------
// Usage

TEST_F(SearchCommandTest, BadOptionsGiveOneLineAndExitCode2) {
    const std::vector<std::pair<std::vector<CString>, std::string>> cases = {
        {{L"--size"}, "unknown search option '--size'"},
        {{L"--sort=size"},
         "--sort needs path, status, security or streams, as in --sort=status, not '--sort=size'"},
        {{L"--sort"}, "--sort needs path, status, security or streams, as in --sort=status, not '--sort'"},
        {{L"--exclude=gone"},
         "--exclude needs one or more of available, available-protected, expiring, "
         "expiring-protected, deleted, deleted-protected, separated by commas, not "
         "'--exclude=gone'"},
        {{L"--exclude=deleted,"},
         "--exclude needs one or more of available, available-protected, expiring, "
         "expiring-protected, deleted, deleted-protected, separated by commas, not "
         "'--exclude=deleted,'"},
        {{L"--exclude=Deleted"},
         "--exclude needs one or more of available, available-protected, expiring, "
         "expiring-protected, deleted, deleted-protected, separated by commas, not "
         "'--exclude=Deleted'"},
        {{L"--from=2023-02-30"},
         "--from needs a date YYYY-MM-DD from 1601-01-01 on, as in --from=2023-01-31, not "
         "'--from=2023-02-30'"},
        {{L"--to=2023-1-31"},
         "--to needs a date YYYY-MM-DD from 1601-01-01 on, as in --to=2023-01-31, not '--to=2023-1-31'"},
        {{L"--from=1600-12-31"},
         "--from needs a date YYYY-MM-DD from 1601-01-01 on, as in --from=2023-01-31, not "
         "'--from=1600-12-31'"},
        {{L"--from=2023-01-01", L"--from=2023-01-02"}, "only one --from may be given"},
        {{L"--from=2023-02-01", L"--to=2023-01-31"}, "--from=2023-02-01 is after --to=2023-01-31"},
        {{L"a*", L"b*"}, "only one PATTERN may be given, not both 'a*' and 'b*'"},
        {{L""}, "PATTERN may not be empty: leave it out, or give '*', to find every file"},
        {{L"--retrieval-order", L"--sort=path"},
         "--retrieval-order prints in the backend's access order and takes no '--sort=path'"},
        {{L"--descending", L"--retrieval-order"},
         "--retrieval-order prints in the backend's access order and takes no '--descending'"},
        {{L"--store="}, "--store needs a file name, as in --store=history.txt"},
    };
    for (const auto& c : cases) {
        out.text.clear();
        err.text.clear();
        EXPECT_EQ(2, SearchCommand::mf_run(c.first, HistorySource::mf_sample(), out, err)) << c.second;
        EXPECT_EQ("korfiles search: " + c.second + "\n", err.text);
        EXPECT_EQ("", out.text);
    }
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(SearchCommandTest, OnlyOneStoreMayBeGiven) {
    EXPECT_EQ(2, search({L"--store=other.txt"}));
    EXPECT_EQ("korfiles search: only one --store may be given\n", err.text);
}

TEST_F(SearchCommandTest, StoreOutsideTheSearchCommandIsBadUsage) {
    EXPECT_EQ(2, KorFilesTool::mf_run({L"--store=h.txt"}, L"none.txt", L"none.txt", out, err));
    EXPECT_EQ(0u,
              err.text.find("korfiles: --store is an option of search, as in korfiles search --store=...\n"));
}

TEST_F(SearchCommandTest, DoubleDashTakesAPatternThatStartsWithADash) {
    const TempFile store("-odd\t=\t1\t2023-01-01 10:00:00\t10\t-\t-\t1:1\n");
    EXPECT_EQ(0, SearchCommand::mf_run({L"--store=" + store.path(), L"--", L"-o*"},
                                       HistorySource::mf_sample(), out, err));
    EXPECT_EQ(std::vector<std::string>{"-odd"}, paths());
}

TEST_F(SearchCommandTest, HelpExplainsTheOptionsAndWhatLatestOnlyChanges) {
    EXPECT_EQ(0, search({L"--help"}));
    EXPECT_EQ(0u, out.text.find(std::string("Usage: ") + SearchCommand::SYNOPSIS + "\n"));
    for (const char* option : {"--store=FILE", "--from=YYYY-MM-DD", "--to=YYYY-MM-DD", "--exclude=STATES",
                               "--sort=status", "--sort=security", "--sort=streams", "--descending",
                               "--latest-only", "--retrieval-order", "instead of all version ranges"})
        EXPECT_NE(std::string::npos, out.text.find(option)) << option;
    EXPECT_EQ("", err.text);
    out.text.clear();
    EXPECT_EQ(0, KorFilesTool::mf_run({L"--help"}, L"none.txt", L"none.txt", out, err));
    EXPECT_NE(std::string::npos, out.text.find(SearchCommand::mf_getHelp()));
}
