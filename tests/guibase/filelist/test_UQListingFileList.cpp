#include "guibase/filelist/UQListingFileList.h"
#include "interfaces/korbase_testing.h"

#include "FileListTestSupport.h"

#include <vector>

using namespace filelisttest;

namespace {

const UQSeverity GREEN(UVSeverity::GREEN), YELLOW(UVSeverity::YELLOW), RED(UVSeverity::RED);

CString stubText() {
    return UQString(UQErrno::_I_::StubFile.mf_getMessageNumber());
}

// Entries come through the listener interface, as a listing reader reports them.
void report(UVListingFileReader& reader, const wchar_t* path, std::uint32_t version, const CString& result,
            const UQSeverity& severity) {
    reader.mf_onMigrationEntry(17, testTime(), path, version, result, severity);
}

std::vector<std::string> filtered(UQListingFileList& list, int stub, int green, int yellow, int red) {
    UQFileListItem::Array items;
    list.mf_getList(items, stub, green, yellow, red);
    return paths(items);
}

// a: stub file (green), b: result that differs from the stub text only in case (green), c: migrated
// (green), d: warning (yellow), e: failure (red).
class ListingFilter : public ::testing::Test {
protected:
    void SetUp() override {
        CString differentCase = stubText();
        differentCase.MakeUpper();
        ASSERT_NE(differentCase.Compare(stubText()), 0);
        report(list, L"C:\\a", 1, stubText(), GREEN);
        report(list, L"C:\\b", 1, differentCase, GREEN);
        report(list, L"C:\\c", 1, L"Migrated", GREEN);
        report(list, L"C:\\d", 1, L"Migrated with warnings", YELLOW);
        report(list, L"C:\\e", 1, L"Access denied", RED);
        list.mf_close();
    }

    UQListingFileList list;
};

} // namespace

TEST(UQListingFileList, TwoVersionsOfAPathGiveOneItemWithEmptySizesAndTimes) {
    UQListingFileList list;
    report(list, L"C:\\data\\a.txt", 1, L"Migrated", GREEN);
    report(list, L"C:\\data\\a.txt", 2, L"Access denied", RED);
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    UQFileListItem& item = *items[0];
    list.mf_sortVersions(0);
    EXPECT_EQ(utf8(item.mf_getRangesDisplayString()), "1, 2");
    EXPECT_EQ(item.mf_getVersion(), 2u);
    UQFileListItem::VersionArray all;
    item.mf_getVersions(all);
    ASSERT_EQ(all.GetSize(), 2);
    for (INT_PTR i = 0; i < all.GetSize(); ++i) {
        // The entry's own time (testTime) is not used.
        EXPECT_EQ(all[i]->mf_getSize().mf_getValue(), 0);
        EXPECT_EQ(all[i]->mf_getLastWriteTime().mf_getValue(), 0u);
    }
    // The first entry's result and severity stay.
    EXPECT_EQ(utf8(item.mf_getResult()), "Migrated");
    EXPECT_TRUE(item.mf_getSeverity().mf_isGreen());
}

TEST(UQListingFileList, EntryKeepsItsResultAndSeverity) {
    UQListingFileList list;
    report(list, L"C:\\data\\a.txt", 4, L"Access denied", RED);
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(utf8(items[0]->mf_getResult()), "Access denied");
    EXPECT_TRUE(items[0]->mf_getSeverity().mf_isRed());
    EXPECT_EQ(items[0]->mf_getVersion(), 4u);
}

TEST(UQListingFileList, EntryAfterCloseIsRefusedAndAddsNothing) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    list.mf_close();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { report(list, L"C:\\a", 2, L"Migrated", GREEN); }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(thrownCategory([&] { report(list, L"C:\\b", 1, L"Migrated", GREEN); }),
              "_E_::AlreadyInitialized");
    const LogLine refused{'E', "UQListingFileList::mf_onMigrationEntry",
                          "File item list has already been closed"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{refused, refused}));
    EXPECT_EQ(list.mf_getItemCount(), 1u);
    EXPECT_EQ(ListItems(list)[0]->mf_getVersionCount(), 1);
}

TEST(UQListingFileList, GetListOnAnOpenListFailsEvenWithoutFilters) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    LogCheck log;
    UQFileListItem::Array items;
    EXPECT_EQ(thrownCategory([&] { list.mf_getList(items, 0, 0, 0, 0); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_getList(items, 1, 1, 1, 1); }), "_E_::Initialization");
    EXPECT_EQ(items.GetSize(), 0);
    const LogLine open{'E', "UQListingFileList::mf_getList", "File item list must be closed"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{open, open}));
}

TEST(UQListingFileList, UnfilteredReadIsTheBaseReadWithItsChecks) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    list.mf_close();
    UQFileListItem foreign(L"C:\\foreign", 1, UQFileSize(), UQFileTime(), L"", UQSeverity());
    UQFileListItem::Array items;
    items.Add(&foreign);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_getList(items, 0, 0, 0, 0); }), "_E_::Parameter");
    EXPECT_EQ(items.GetSize(), 1);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListBase::mf_getList", "Parameter list is not empty"}}));
}

TEST(UQListingFileList, FilteredReadAppendsToANonEmptyArray) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    report(list, L"C:\\b", 1, L"Access denied", RED);
    list.mf_close();
    UQFileListItem foreign(L"C:\\foreign", 1, UQFileSize(), UQFileTime(), L"", UQSeverity());
    UQFileListItem::Array items;
    items.Add(&foreign);
    LogCheck log;
    list.mf_getList(items, 0, 0, 0, 1);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\foreign", "C:\\a"}));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQListingFileList, FilteredReadOfAnEmptyListIsEmpty) {
    UQListingFileList list;
    list.mf_close();
    EXPECT_EQ(filtered(list, 1, 0, 0, 0), std::vector<std::string>{});
}

TEST_F(ListingFilter, NoFlagGivesEveryItem) {
    EXPECT_EQ(filtered(list, 0, 0, 0, 0),
              (std::vector<std::string>{"C:\\a", "C:\\b", "C:\\c", "C:\\d", "C:\\e"}));
}

TEST_F(ListingFilter, StubFlagLeavesOutExactlyTheStubTextCaseSensitively) {
    EXPECT_EQ(filtered(list, 1, 0, 0, 0), (std::vector<std::string>{"C:\\b", "C:\\c", "C:\\d", "C:\\e"}));
}

TEST_F(ListingFilter, SecondFlagLeavesOutGreen) {
    EXPECT_EQ(filtered(list, 0, 1, 0, 0), (std::vector<std::string>{"C:\\d", "C:\\e"}));
}

TEST_F(ListingFilter, ThirdFlagLeavesOutYellow) {
    EXPECT_EQ(filtered(list, 0, 0, 1, 0), (std::vector<std::string>{"C:\\a", "C:\\b", "C:\\c", "C:\\e"}));
}

TEST_F(ListingFilter, FourthFlagLeavesOutRed) {
    EXPECT_EQ(filtered(list, 0, 0, 0, 1), (std::vector<std::string>{"C:\\a", "C:\\b", "C:\\c", "C:\\d"}));
}

TEST_F(ListingFilter, FlagsCombine) {
    EXPECT_EQ(filtered(list, 1, 0, 1, 1), (std::vector<std::string>{"C:\\b", "C:\\c"}));
    EXPECT_EQ(filtered(list, 1, 1, 1, 1), std::vector<std::string>{});
}

TEST(UQListingFileList, ClearOpensTheListForANewListing) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    list.mf_close();
    list.mf_clear();
    report(list, L"C:\\b", 1, L"Migrated", GREEN);
    list.mf_close();
    EXPECT_EQ(filtered(list, 0, 0, 0, 1), (std::vector<std::string>{"C:\\b"}));
}

TEST(UQListingFileList, FailedEntryIsWrappedAndAddsNothing) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { report(list, L"C:\\b", 3, L"Migrated", GREEN); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQFileListBase::mf_implAddItem",
             "No memory for file list item\r\n    Path='C:\\b', file-version=3, file-size=0, "
             "last-write-time=1601-01-01 00:00:00"},
            {'E', "UQListingFileList::mf_onMigrationEntry",
             "Failure adding file item 'C:\\b', version=3:\r\n    " + errorText(UQErrno::_E_::Memory)}}));
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    EXPECT_EQ(categoryOnOtherThread([&] { report(list, L"C:\\c", 1, L"Migrated", GREEN); }), "no exception");
    EXPECT_EQ(list.mf_getCurrentItemCount(), 2);
}

TEST(UQListingFileList, FailedVersionForAKnownPathIsWrappedAndLeavesTheItem) {
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    LogCheck log;
    UQAllocationInjection::mf_injectError(0, UQErrno::_E_::Memory);
    EXPECT_EQ(thrownCategory([&] { report(list, L"C:\\a", 2, L"Migrated", GREEN); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].function, "UQFileListItem::mf_implAddVersion");
    EXPECT_EQ(lines[2].function, "UQFileListBase::mf_implAddItem");
    EXPECT_EQ(lines[3], (LogLine{'E', "UQListingFileList::mf_onMigrationEntry",
                                 "Failure adding file item 'C:\\a', version=2:\r\n    " +
                                     errorText(UQErrno::_E_::Memory)}));
    list.mf_close();
    EXPECT_EQ(versions(*ListItems(list)[0]), (std::vector<std::uint32_t>{1}));
}

TEST(UQListingFileList, SurrogatesOrderBeforeThePrivateUseAreaSoAPathIsFoundAgain) {
    // Entries in UTF-16 order: U+1F600 (a surrogate pair) sorts before U+E000, as on Windows.
    const CString emoji = CString(L"C:\\") + static_cast<wchar_t>(0xD83D) + static_cast<wchar_t>(0xDE00);
    const CString privateUse = CString(L"C:\\") + static_cast<wchar_t>(0xE000);
    UQListingFileList list;
    report(list, L"C:\\a", 1, L"Migrated", GREEN);
    report(list, emoji, 1, L"Migrated", GREEN);
    report(list, privateUse, 1, L"Migrated", GREEN);
    report(list, privateUse, 2, L"Migrated", GREEN);
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 3);
    EXPECT_EQ(items[1]->mf_getPath(), emoji);
    EXPECT_EQ(versions(*items[2]), (std::vector<std::uint32_t>{1, 2}));
}
