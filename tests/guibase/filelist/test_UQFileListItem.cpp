#include "guibase/filelist/UQFileListItem.h"
#include "support/PathList.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <memory>
#include <vector>

namespace {

const UQFileTime TIME = fileTime(2024, 3, 7, 14, 5, 9);

UQFileListItem makeItem(const wchar_t* path, std::uint32_t version = 1, const wchar_t* result = L"Migrated") {
    return UQFileListItem(path, version, UQFileSize(1024), TIME, result, UQSeverity::Info);
}

// An item whose versions array holds these numbers in this order.
std::unique_ptr<UQFileListItem> itemWithVersions(std::initializer_list<std::uint32_t> versions) {
    auto item = std::make_unique<UQFileListItem>(L"C:\\data\\file.txt", 0, CString(), UQSeverity());
    for (std::uint32_t v : versions)
        item->mf_addVersion(v, UQFileSize(10), TIME);
    return item;
}

} // namespace

TEST(UQFileListItem, NewItemWithOneVersionSelectsIt) {
    UQFileListItem item = makeItem(L"C:\\data\\a.txt", 4);
    EXPECT_EQ(item.mf_getVersionIndex(), 0);
    EXPECT_EQ(item.mf_getVersion(), 4u);
    EXPECT_EQ(item.mf_getSize().mf_getValue(), 1024);
    EXPECT_EQ(item.mf_getLastWriteTime(), TIME);
    EXPECT_EQ(item.mf_isSelected(), 0);
}

TEST(UQFileListItem, AddingVersionsSelectsTheHighest) {
    auto item = itemWithVersions({3, 5, 4});
    EXPECT_EQ(item->mf_getVersion(), 5u);
    EXPECT_EQ(item->mf_getVersionIndex(), 1);
}

TEST(UQFileListItem, EqualHighestVersionLeavesTheFirstSelected) {
    auto item = itemWithVersions({3, 5, 4, 5});
    EXPECT_EQ(item->mf_getVersionIndex(), 1);
}

TEST(UQFileListItem, VersionsCompareUnsigned) {
    auto item = itemWithVersions({1, 0x80000000u});
    EXPECT_EQ(item->mf_getVersion(), 0x80000000u);
}

TEST(UQFileListItem, ItemWithoutVersionsHasNoVersionToRead) {
    LogCheck log;
    UQFileListItem item(L"C:\\data\\none.txt", 0, L"Listed", UQSeverity::Info);
    EXPECT_EQ(thrownCategory([&] { item.mf_getVersion(); }), "_E_::Range");
    EXPECT_EQ(thrownCategory([&] { item.mf_getSize(); }), "_E_::Range");
    EXPECT_EQ(thrownCategory([&] { item.mf_getLastWriteTime(); }), "_E_::Range");
    const LogLine line{'E', "UQFileListItem::mf_implGetSelectedVersionItem", "Index -1 out of range"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{line, line, line}));
}

TEST(UQFileListItem, SelectedVersionDisplayStringFailsLikeTheSelectedVersion) {
    LogCheck log;
    UQFileListItem item(L"C:\\data\\none.txt", 0, L"Listed", UQSeverity::Info);
    EXPECT_EQ(thrownCategory([&] { item.mf_getSelectedVersionDisplayString(); }), "_E_::Range");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQFileListItem::mf_implGetSelectedVersionItem",
                                                  "Index -1 out of range"}}));
}

TEST(UQFileListItem, CompletingFromTheFilesystemIsNotImplemented) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQFileListItem item(L"C:\\x", 1, L"", UQSeverity()); }),
              "_E_::NotImplemented");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQFileListItem::UQFileListItem::2",
                                                  "Option _bCompleteUsingFilesystem not yet implemented"}}));
}

TEST(UQFileListItem, SetVersionIndexChecksTheRange) {
    auto item = itemWithVersions({1, 2});
    item->mf_setVersionIndex(0);
    EXPECT_EQ(item->mf_getVersion(), 1u);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { item->mf_setVersionIndex(2); }), "_E_::Range");
    EXPECT_EQ(thrownCategory([&] { item->mf_setVersionIndex(-1); }), "_E_::Range");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListItem::mf_setVersionIndex", "Index 2 out of range"},
                                    {'E', "UQFileListItem::mf_setVersionIndex", "Index -1 out of range"}}));
    EXPECT_EQ(item->mf_getVersionIndex(), 0);
}

TEST(UQFileListItem, SortingVersionsAscendingSelectsTheLast) {
    auto item = itemWithVersions({3, 1, 2});
    item->mf_sortVersions(1);
    UQFileListItem::VersionArray versions;
    item->mf_getVersions(versions);
    ASSERT_EQ(versions.GetSize(), 3);
    EXPECT_EQ(versions[0]->mf_getVersion(), 1u);
    EXPECT_EQ(versions[2]->mf_getVersion(), 3u);
    EXPECT_EQ(item->mf_getVersionIndex(), 2);
}

TEST(UQFileListItem, SortingVersionsDescendingSelectsTheFirst) {
    auto item = itemWithVersions({1, 3, 2});
    item->mf_sortVersions(0);
    EXPECT_EQ(item->mf_getVersionIndex(), 0);
    EXPECT_EQ(item->mf_getVersion(), 3u);
}

TEST(UQFileListItem, SortingNoVersionsWarnsAndLeavesNoSelection) {
    UQFileListItem item(L"C:\\data\\none.txt", 0, L"", UQSeverity());
    LogCheck log;
    item.mf_sortVersions(1);
    EXPECT_EQ(item.mf_getVersionIndex(), -1);
    item.mf_sortVersions(0);
    EXPECT_EQ(item.mf_getVersionIndex(), 0);
    const LogLine warning{'W', "UQFileListItemVersion::mf_sort", "No file list item versions to sort"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{warning, warning}));
}

TEST(UQFileListItem, GetVersionsNeedsAnEmptyArrayAndKeepsOwnership) {
    auto item = itemWithVersions({1, 2});
    UQFileListItem::VersionArray versions;
    item->mf_getVersions(versions);
    EXPECT_EQ(versions.GetSize(), 2);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { item->mf_getVersions(versions); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListItem::mf_getVersions", "Parameter list is not empty"}}));
    EXPECT_EQ(versions.GetSize(), 2);
}

struct RangesCase {
    std::vector<std::uint32_t> versions;
    const char* expected;
};

class UQFileListItemRanges : public ::testing::TestWithParam<RangesCase> {};

TEST_P(UQFileListItemRanges, ShowsTheRangesOfAnArraySortedNewestFirst) {
    auto item = std::make_unique<UQFileListItem>(L"C:\\data\\file.txt", 0, CString(), UQSeverity());
    for (std::uint32_t v : GetParam().versions)
        item->mf_addVersion(v, UQFileSize(1), TIME);
    EXPECT_EQ(utf8(item->mf_getRangesDisplayString()), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Table, UQFileListItemRanges,
                         ::testing::Values(RangesCase{{3, 2, 1}, "1 - 3"},
                                           RangesCase{{5, 4, 2, 1}, "1, 2, 5"},
                                           RangesCase{{7, 6, 5, 3, 1}, "1 - 7"}, RangesCase{{5, 3, 1}, "1"},
                                           RangesCase{{4}, "4"}, RangesCase{{}, ""},
                                           RangesCase{{2, 1}, "1, 2"},
                                           RangesCase{{9, 8, 7, 3, 2, 1}, "1 - 3 - 9"}));

// The largest version number is followed by no other: 4294967295 + 1 does not wrap to 0.
INSTANTIATE_TEST_SUITE_P(
    LargestVersion, UQFileListItemRanges,
    ::testing::Values(RangesCase{{4294967295u}, "4294967295"}, RangesCase{{0, 4294967295u}, "4294967295"},
                      RangesCase{{4294967295u, 0}, "0"},
                      RangesCase{{4294967295u, 4294967294u}, "4294967294, 4294967295"},
                      RangesCase{{4294967295u, 4294967294u, 4294967293u}, "4294967293 - 4294967295"}));

TEST(UQFileListItem, SelectedVersionDisplayStringShowsFilePartDateAndTime) {
    UQFileListItem item = makeItem(L"C:\\Projects\\Reports\\q1-summary.docx", 3);
    const CString expected = CString(L"q1-summary.docx - ") + UQNumberFormatter::mf_formatDate(TIME) +
                             L" - " + UQNumberFormatter::mf_formatTime(TIME);
    EXPECT_EQ(item.mf_getSelectedVersionDisplayString(), expected);
    EXPECT_EQ(item.mf_toString(), expected);
}

TEST(UQFileListItem, ResetClearsResultSeverityAndSelectionButKeepsVersions) {
    UQFileListItem item(L"C:\\data\\a.txt", 2, UQFileSize(5), TIME, L"Access denied", UQSeverity::Error);
    item.mf_addVersion(3, UQFileSize(6), TIME);
    item.mf_setSelected(1);
    item.mf_reset();
    EXPECT_EQ(item.mf_getResult(), CString());
    EXPECT_EQ(item.mf_getSeverity().mf_getValue(), 0);
    EXPECT_EQ(item.mf_isSelected(), 0);
    EXPECT_EQ(item.mf_getVersionCount(), 2);
    EXPECT_EQ(item.mf_getVersion(), 3u);
}

TEST(UQFileListItem, CopyIsUnselectedEvenWhenItsSourceIsSelected) {
    auto source = itemWithVersions({4, 9, 2});
    source->mf_setSelected(1);
    source->mf_setVersionIndex(2);
    UQFileListItem copy(*source);
    EXPECT_EQ(copy.mf_isSelected(), 0);
    EXPECT_EQ(copy.mf_getPath(), source->mf_getPath());
    EXPECT_EQ(copy.mf_getVersionCount(), 3);
    // The copy selects its highest version, not the source's selected one.
    EXPECT_EQ(copy.mf_getVersion(), 9u);
    EXPECT_EQ(source->mf_getVersion(), 2u);
}

TEST(UQFileListItem, FailedCopyLogsAndThrowsTheCategoryWithoutLeaking) {
    auto source = itemWithVersions({1, 2, 3});
    LogCheck log;
    UQAllocationInjection::mf_injectError(1, UQErrno::_E_::Memory); // the second version's allocation throws
    EXPECT_EQ(thrownCategory([&] { UQFileListItem copy(*source); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::string memory = utf8(UQErrno(UQErrno::_E_::Memory).mf_toString());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListItem::mf_implAddVersion",
                                     "Failure adding file item version: " + memory +
                                         "\r\n    Version=2, size=10, last write time=2024-03-07 14:05:09"},
                                    {'E', "UQFileListItem::UQFileListItem::3",
                                     "Failure adding file list item version: " + memory}}));
}

TEST(UQFileListItem, AddVersionFailureRecordKeepsTheSecondTextUnexpanded) {
    auto item = itemWithVersions({1});
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { item->mf_addVersion(2, UQFileSize(-5), TIME); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQFileListItem::mf_implAddVersion",
             "No memory for adding file item version\r\n    Version=2, size=-5, last write time=2024-03-07 "
             "14:05:09"},
            {'E', "UQFileListItem::mf_addVersion",
             "Failure adding file list entry version: %sVersion=%lu, size=%s, last write time=%s\r\n"}}));
    EXPECT_EQ(item->mf_getVersionCount(), 1);
}

TEST(UQFileListItem, ThrownAllocationErrorIsLoggedAndPassedOn) {
    auto item = itemWithVersions({1});
    LogCheck log;
    UQAllocationInjection::mf_injectError(0, UQErrno::_E_::Internal);
    EXPECT_EQ(thrownCategory([&] { item->mf_addVersion(2, UQFileSize(7), TIME); }), "_E_::Internal");
    UQAllocationInjection::mf_clearInjection();
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(
        lines[0],
        (LogLine{'E', "UQFileListItem::mf_implAddVersion",
                 "Failure adding file item version: " + utf8(UQErrno(UQErrno::_E_::Internal).mf_toString()) +
                     "\r\n    Version=2, size=7, last write time=2024-03-07 14:05:09"}));
    EXPECT_EQ(lines[1].function, "UQFileListItem::mf_addVersion");
}

TEST(UQFileListItem, OutOfRangeTimeInAFailureRecordReadsFileTimeError) {
    UQFileListItem item(L"C:\\data\\a.txt", 0, L"", UQSeverity());
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(
        thrownCategory([&] { item.mf_addVersion(1, UQFileSize(1), UQFileTime(0x8000000000000000ull)); }),
        "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::vector<LogLine> lines = log.lines();
    // Each failure record converts the time for its text, and each conversion logs its own failure first.
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0].function, "UQFileTime::mf_toString");
    EXPECT_EQ(
        lines[1].text,
        "No memory for adding file item version\r\n    Version=1, size=1, last write time=FILETIME ERROR");
    EXPECT_EQ(lines[2].function, "UQFileTime::mf_toString");
    EXPECT_EQ(lines[3].function, "UQFileListItem::mf_addVersion");
}

TEST(UQFileListItem, SortByPathBothDirectionsCaseSensitive) {
    UQFileListItem a = makeItem(L"C:\\b.txt"), b = makeItem(L"C:\\a.txt"), c = makeItem(L"C:\\B.txt");
    UQFileListItem::Array items;
    items.Add(&a);
    items.Add(&b);
    items.Add(&c);
    UQFileListItem::mf_sortByPath(items, 1);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\B.txt", "C:\\a.txt", "C:\\b.txt"}));
    UQFileListItem::mf_sortByPath(items, 0);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\b.txt", "C:\\a.txt", "C:\\B.txt"}));
}

TEST(UQFileListItem, EqualResultsSortByPathAscendingEvenWhenDescending) {
    UQFileListItem a = makeItem(L"C:\\c.txt", 1, L"Migrated"), b = makeItem(L"C:\\a.txt", 1, L"Migrated"),
                   c = makeItem(L"C:\\b.txt", 1, L"Access denied");
    UQFileListItem::Array items;
    items.Add(&a);
    items.Add(&b);
    items.Add(&c);
    UQFileListItem::mf_sortByResult(items, 0);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\a.txt", "C:\\c.txt", "C:\\b.txt"}));
    UQFileListItem::mf_sortByResult(items, 1);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\b.txt", "C:\\a.txt", "C:\\c.txt"}));
}

TEST(UQFileListItem, SortByResultOfAnArrayThatNeverHeldAnythingWarns) {
    LogCheck log;
    UQFileListItem::Array empty;
    UQFileListItem::mf_sortByResult(empty, 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQFileListItem::mf_sortByResult", "No file list items to sort"}}));
}

TEST(UQFileListItem, FindByPathInBothDirections) {
    UQFileListItem a = makeItem(L"C:\\a.txt"), b = makeItem(L"C:\\b.txt"), c = makeItem(L"C:\\c.txt");
    UQFileListItem::Array items;
    items.Add(&c);
    items.Add(&a);
    items.Add(&b);
    UQFileListItem::mf_sortByPath(items, 1);
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\b.txt", items, 1), &b);
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\d.txt", items, 1), nullptr);
    UQFileListItem::mf_sortByPath(items, 0);
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\a.txt", items, 0), &a);
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\c.txt", items, 0), &c);
}

TEST(UQFileListItem, PathsDifferingOnlyInCaseAreDifferentKeys) {
    UQFileListItem a = makeItem(L"C:\\Data\\File.txt");
    UQFileListItem::Array items;
    items.Add(&a);
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\Data\\File.txt", items, 1), &a);
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\data\\file.txt", items, 1), nullptr);
}

TEST(UQFileListItem, FindInAnArrayThatNeverHeldAnythingIsNull) {
    LogCheck log;
    UQFileListItem::Array empty;
    EXPECT_EQ(UQFileListItem::mf_findByPath(L"C:\\a.txt", empty, 1), nullptr);
    EXPECT_TRUE(log.lines().empty());
}
