#include "MigrationListing.h"
#include "support/PathList.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::string stubText() {
    return utf8(UQString(UQErrno::_I_::StubFile.mf_getMessageNumber()).mf_getText());
}

// The stub-file message with its first letter in lower case.
std::string stubTextInOtherCase() {
    std::string text = stubText();
    if (!text.empty() && text[0] >= 'A' && text[0] <= 'Z')
        text[0] = static_cast<char>(text[0] - 'A' + 'a');
    return text;
}

// One file of each kind that the filters tell apart, paths in ascending order as a listing has them.
std::string mixedListing() {
    return "# one file of each kind\n"
           "C:\\l\\a-migrated.txt\t1\tmigrated\n"
           "C:\\l\\b-stub.txt\t1\tstub\n"
           "C:\\l\\b-stub.txt\t3\tstub\n"
           "C:\\l\\b-stub.txt\t2\tstub\n"
           "C:\\l\\c-stub-other-case.txt\t1\tmigrated\t" +
           stubTextInOtherCase() +
           "\n"
           "C:\\l\\d-stub-text-given.txt\t4\tmigrated\t" +
           stubText() +
           "\n"
           "C:\\l\\e-warning.txt\t2\twarning\tChanged during migration\n"
           "C:\\l\\f-failed.txt\t7\tfailed\tAccess denied\n";
}

MigrationListing::Filter filter(int bStubs, int bInformation, int bWarning, int bError) {
    MigrationListing::Filter f;
    f.bSkipStubFiles = bStubs;
    f.bSkipInformation = bInformation;
    f.bSkipWarning = bWarning;
    f.bSkipError = bError;
    return f;
}

class MigrationListingTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(listing.mf_read(mixedListing(), L"mixed.txt").empty()); }

    std::vector<std::string> kept(const MigrationListing::Filter& f) {
        UQFileListItem::Array items;
        listing.mf_getItems(items, f, FileListOrder::BY_PATH, 1);
        return paths(items);
    }

    LogCheck log;
    MigrationListing listing;
};

const std::string PATH_A = "C:\\l\\a-migrated.txt";
const std::string PATH_B = "C:\\l\\b-stub.txt";
const std::string PATH_C = "C:\\l\\c-stub-other-case.txt";
const std::string PATH_D = "C:\\l\\d-stub-text-given.txt";
const std::string PATH_E = "C:\\l\\e-warning.txt";
const std::string PATH_F = "C:\\l\\f-failed.txt";

} // namespace

TEST_F(MigrationListingTest, LinesOfOnePathBecomeOneItemWithItsVersionsNewestFirst) {
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    ASSERT_EQ(6, items.GetSize());
    const UQFileListItem* stub = items[1];
    EXPECT_EQ(PATH_B, utf8(stub->mf_getPath()));
    EXPECT_EQ(CString(L"1 - 3"), stub->mf_getRangesDisplayString());
    EXPECT_EQ(3u, stub->mf_getVersion());
    UQFileListItem::VersionArray versions;
    stub->mf_getVersions(versions);
    ASSERT_EQ(3, versions.GetSize());
    const std::uint32_t newestFirst[] = {3, 2, 1};
    for (INT_PTR i = 0; i < versions.GetSize(); ++i) {
        EXPECT_EQ(newestFirst[i], versions[i]->mf_getVersion());
        // A listing carries no sizes and no times.
        EXPECT_EQ(0, versions[i]->mf_getSize().mf_getValue());
        EXPECT_EQ(0u, versions[i]->mf_getLastWriteTime().mf_getValue());
    }
    EXPECT_EQ(stubText(), utf8(stub->mf_getResult()));
    EXPECT_EQ(UVSeverity::GREEN, stub->mf_getSeverity().mf_getValue());
    EXPECT_EQ(CString(L"Access denied"), items[5]->mf_getResult());
    EXPECT_EQ(UVSeverity::RED, items[5]->mf_getSeverity().mf_getValue());
    EXPECT_EQ(UVSeverity::YELLOW, items[4]->mf_getSeverity().mf_getValue());
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(MigrationListingTest, WithoutFiltersEveryItemIsKept) {
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_B, PATH_C, PATH_D, PATH_E, PATH_F}),
              kept(filter(0, 0, 0, 0)));
}

TEST_F(MigrationListingTest, SkippingStubFilesLeavesOutExactlyTheStubFileMessageWhateverTheStatus) {
    // The stub line and the migrated line that gives the message itself go; the message in other case
    // stays.
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_C, PATH_E, PATH_F}), kept(filter(1, 0, 0, 0)));
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(MigrationListingTest, EachSeverityFilterLeavesOutThatSeverityOnly) {
    EXPECT_EQ((std::vector<std::string>{PATH_E, PATH_F}), kept(filter(0, 1, 0, 0)));
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_B, PATH_C, PATH_D, PATH_F}), kept(filter(0, 0, 1, 0)));
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_B, PATH_C, PATH_D, PATH_E}), kept(filter(0, 0, 0, 1)));
}

TEST_F(MigrationListingTest, FiltersCombine) {
    EXPECT_EQ((std::vector<std::string>{PATH_F}), kept(filter(0, 1, 1, 0)));
    EXPECT_EQ((std::vector<std::string>{PATH_E}), kept(filter(0, 1, 0, 1)));
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_B, PATH_C, PATH_D}), kept(filter(0, 0, 1, 1)));
    EXPECT_EQ(std::vector<std::string>{}, kept(filter(0, 1, 1, 1)));
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_C, PATH_E}), kept(filter(1, 0, 0, 1)));
    EXPECT_EQ((std::vector<std::string>{PATH_A, PATH_C}), kept(filter(1, 0, 1, 1)));
    EXPECT_EQ((std::vector<std::string>{PATH_E, PATH_F}), kept(filter(1, 1, 0, 0)));
    EXPECT_EQ(std::vector<std::string>{}, kept(filter(1, 1, 1, 1)));
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST_F(MigrationListingTest, ItemsComeInTheAskedOrder) {
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 0);
    EXPECT_EQ((std::vector<std::string>{PATH_F, PATH_E, PATH_D, PATH_C, PATH_B, PATH_A}), paths(items));
    // Ordinal: "Access denied", "Changed during migration", "Migrated", then the message starting with
    // 'T' before the one with 't'; the two equal results by path.
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_RESULT, 1);
    EXPECT_EQ((std::vector<std::string>{PATH_F, PATH_E, PATH_A, PATH_B, PATH_D, PATH_C}), paths(items));
    listing.mf_getItems(items, filter(1, 0, 0, 0), FileListOrder::BY_RESULT, 0);
    EXPECT_EQ((std::vector<std::string>{PATH_C, PATH_A, PATH_E, PATH_F}), paths(items));
}

TEST_F(MigrationListingTest, AskingAgainReplacesWhatTheArrayHeld) {
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    EXPECT_EQ(6, items.GetSize());
    listing.mf_getItems(items, filter(0, 0, 1, 0), FileListOrder::BY_PATH, 1);
    EXPECT_EQ(5, items.GetSize());
}

TEST(MigrationListing, LinesTheReaderDoesNotTakeComeBackInFileOrderAndTheRestIsRead) {
    LogCheck log;
    MigrationListing listing;
    const std::vector<UQErrno> errors = listing.mf_read("C:\\m\\a.txt\t1\tmigrated\n"
                                                        "C:\\m\\b.txt\tx\tmigrated\n"
                                                        "\n"
                                                        "C:\\m\\d.txt\t1\tarchived\n"
                                                        "C:\\m\\e.txt\t1\tfailed\n"
                                                        "C:\\m\\f.txt\t2\twarning\tSlow\n",
                                                        L"bad.txt");
    std::vector<std::string> details;
    for (const UQErrno& e : errors) {
        details.push_back(utf8(e.mf_getDetail()));
        EXPECT_EQ(&UQErrno::_E_::Format, e.mf_getData().mf_getValue());
    }
    const std::vector<std::string> expected = {"bad.txt:2: bad version number 'x'",
                                               "bad.txt:4: unknown status 'archived'",
                                               "bad.txt:5: no result text for status 'failed'"};
    EXPECT_EQ(expected, details);
    std::vector<LogLine> expectedLog;
    for (const std::string& detail : expected)
        expectedLog.push_back({'W', "UQListingReader::mf_readText", "Listing line skipped: " + detail});
    EXPECT_EQ(expectedLog, log.lines());

    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    EXPECT_EQ((std::vector<std::string>{"C:\\m\\a.txt", "C:\\m\\f.txt"}), paths(items));
}

TEST(MigrationListing, AnEmptyListingGivesNoItemsWithoutAWarning) {
    LogCheck log;
    MigrationListing listing;
    EXPECT_TRUE(listing.mf_read("# nothing migrated\n", L"empty.txt").empty());
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_RESULT, 0);
    EXPECT_EQ(0, items.GetSize());
    listing.mf_getItems(items, filter(1, 1, 0, 0), FileListOrder::BY_PATH, 1);
    EXPECT_EQ(0, items.GetSize());
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST(MigrationListing, AnEntryTheListCannotStoreIsReportedLikeAMalformedLine) {
    UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", L',');
    MigrationListing listing;
    LogCheck log;
    // The first allocation of the list is the item of the first line.
    UQAllocationInjection::mf_injectFailure(0);
    const std::vector<UQErrno> errors = listing.mf_read("C:\\n\\a.txt\t1\tmigrated\n"
                                                        "C:\\n\\b.txt\t1\tmigrated\n",
                                                        L"nomemory.txt");
    UQAllocationInjection::mf_clearInjection();
    UQNumberFormatter::mf_resetConfiguration();
    ASSERT_EQ(1u, errors.size());
    EXPECT_EQ(&UQErrno::_E_::Memory, errors[0].mf_getData().mf_getValue());
    const std::string detail = "nomemory.txt:1: entry refused: [E] _E_::Memory: There is not enough memory.";
    EXPECT_EQ(detail, utf8(errors[0].mf_getDetail()));
    const std::vector<LogLine> expected = {
        {'E', "UQFileListBase::mf_implAddItem",
         "No memory for file list item\r\n    Path='C:\\n\\a.txt', file-version=1, file-size=0, "
         "last-write-time=1601-01-01 00:00:00"},
        {'E', "UQListingFileList::mf_onMigrationEntry",
         "Failure adding file item 'C:\\n\\a.txt', version=1:\r\n    [E] _E_::Memory: There is not enough "
         "memory."},
        {'W', "MigrationListing::mf_read", "Listing line skipped: " + detail}};
    EXPECT_EQ(expected, log.lines());
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    EXPECT_EQ((std::vector<std::string>{"C:\\n\\b.txt"}), paths(items));
}

// A listing whose lines of one path are apart (b, a, b, c, a): every path still makes one item with all
// its versions, and the first line of a path gives the result, as if the listing had been in path order.
TEST(MigrationListing, LinesOfOnePathOutOfOrderAreMergedIntoOneItem) {
    MigrationListing listing;
    LogCheck log;
    const std::vector<UQErrno> errors = listing.mf_read("C:\\d\\b.txt\t1\tmigrated\n"
                                                        "C:\\d\\a.txt\t1\twarning\tChanged\n"
                                                        "C:\\d\\b.txt\t2\tfailed\tAccess denied\n"
                                                        "C:\\d\\c.txt\t1\tmigrated\n"
                                                        "C:\\d\\a.txt\t2\tmigrated\n",
                                                        L"unordered.txt");
    EXPECT_TRUE(errors.empty());
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    ASSERT_EQ((std::vector<std::string>{"C:\\d\\a.txt", "C:\\d\\b.txt", "C:\\d\\c.txt"}), paths(items));
    EXPECT_EQ("1, 2", utf8(items[0]->mf_getRangesDisplayString()));
    EXPECT_EQ("Changed", utf8(items[0]->mf_getResult()));
    EXPECT_EQ("1, 2", utf8(items[1]->mf_getRangesDisplayString()));
    EXPECT_EQ("Migrated", utf8(items[1]->mf_getResult()));
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

// Paths differing only in case are different files to the list (ordinal compare), in any order.
TEST(MigrationListing, PathsDifferingInCaseStayTwoItemsInAnyOrder) {
    MigrationListing listing;
    EXPECT_TRUE(listing
                    .mf_read("C:\\d\\a.txt\t1\tmigrated\n"
                             "C:\\D\\A.TXT\t1\tmigrated\n"
                             "C:\\d\\a.txt\t2\tmigrated\n",
                             L"case.txt")
                    .empty());
    UQFileListItem::Array items;
    listing.mf_getItems(items, filter(0, 0, 0, 0), FileListOrder::BY_PATH, 1);
    ASSERT_EQ((std::vector<std::string>{"C:\\D\\A.TXT", "C:\\d\\a.txt"}), paths(items));
    EXPECT_EQ("1, 2", utf8(items[1]->mf_getRangesDisplayString()));
}
