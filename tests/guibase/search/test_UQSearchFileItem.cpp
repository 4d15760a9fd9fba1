#include "guibase/search/UQSearchFileItem.h"
#include "support/MixedPaths.h"
#include "support/PathList.h"

#include "SearchRecords.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <random>
#include <vector>

using namespace search_test;

// Adds versions the way only a list could, but in any order.
struct UQSearchFileItemTestAccess {
    static void add(UQSearchFileItem& item, UQSearchFileVersion* version) { item.mf_implAddVersion(version); }
    static void dropVersions(UQSearchFileItem& item) {
        item.m_pSelectedVersion = nullptr;
        item.m_versions.mf_clearList(1);
    }
};

namespace {

const wchar_t* const PATH = L"\\\\srv\\share\\file.txt";

UQSearchFileVersion* version(std::uint32_t number, std::uint32_t flags = 0, const wchar_t* path = PATH) {
    return new UQSearchFileVersion(newRecord(path, number, flags));
}

// An item with versions of these numbers, added in this order.
std::unique_ptr<UQSearchFileItem> itemWith(std::initializer_list<std::uint32_t> numbers,
                                           const wchar_t* path = PATH, std::uint32_t flags = 0) {
    auto it = numbers.begin();
    auto item = std::make_unique<UQSearchFileItem>(version(*it, flags, path));
    for (++it; it != numbers.end(); ++it)
        UQSearchFileItemTestAccess::add(*item, version(*it, flags, path));
    return item;
}

std::vector<std::uint32_t> numbers(const UQSearchFileItem& item, int ascending = 1) {
    UQSearchFileItem::VersionArray versions;
    item.mf_getVersions(ascending, versions);
    std::vector<std::uint32_t> out;
    for (INT_PTR i = 0; i < versions.GetSize(); ++i)
        out.push_back(versions[i]->mf_getVersion());
    return out;
}

// Owns the items of a sort test and lends them as an array.
class ItemSet {
public:
    UQSearchFileItem* add(const wchar_t* path, std::uint32_t flags = 0,
                          UQExpiryTime expiry = UQExpiryTime{0}) {
        m_items.push_back(
            std::make_unique<UQSearchFileItem>(new UQSearchFileVersion(newRecord(path, 1, flags, expiry))));
        m_items.back()->mf_setSelected(1, UQQueryPatternVersion::LATEST);
        m_array.Add(m_items.back().get());
        return m_items.back().get();
    }
    UQSearchFileItem::Array& array() { return m_array; }

private:
    std::vector<std::unique_ptr<UQSearchFileItem>> m_items;
    UQSearchFileItem::Array m_array;
};

} // namespace

TEST(UQSearchFileItem, NewItemHoldsItsOneVersionUnselected) {
    UQSearchFileVersion* v = version(4);
    UQSearchFileItem item(v);
    EXPECT_EQ(item.mf_getVersionCount(), 1);
    EXPECT_EQ(item.mf_getLatestVersion(), v);
    EXPECT_EQ(item.mf_isSelected(), 0);
    EXPECT_EQ(item.mf_getSelectedVersion(), nullptr);
}

TEST(UQSearchFileItem, VersionsAddedOutOfOrderAreKeptAscending) {
    auto item = std::make_unique<UQSearchFileItem>(new UQSearchFileVersion(
        new UQQueryData(PATH, L"C:\\three.txt", 3, writeTime(), UQFileSize(3), 0, noExpiry(), {1, 0})));
    UQSearchFileItemTestAccess::add(
        *item, new UQSearchFileVersion(new UQQueryData(PATH, L"C:\\one.txt", 1, writeTime(), UQFileSize(1), 0,
                                                       noExpiry(), {1, 0})));
    UQSearchFileItemTestAccess::add(
        *item, new UQSearchFileVersion(new UQQueryData(PATH, L"C:\\two.txt", 2, writeTime(), UQFileSize(2), 0,
                                                       noExpiry(), {1, 0})));
    EXPECT_EQ(numbers(*item), (std::vector<std::uint32_t>{1, 2, 3}));
    EXPECT_EQ(item->mf_getLatestVersion()->mf_getVersion(), 3u);
    EXPECT_EQ(utf8(item->mf_getPath()), "C:\\one.txt");
    EXPECT_EQ(item->mf_getQueryData().mf_getVersion(), 3u);
}

TEST(UQSearchFileItem, EqualNumbersKeepTheirOrderOfArrival) {
    UQSearchFileVersion* first = version(2);
    UQSearchFileVersion* one = version(1);
    UQSearchFileVersion* second = version(2);
    UQSearchFileItem item(first);
    UQSearchFileItemTestAccess::add(item, one);
    UQSearchFileItemTestAccess::add(item, second);
    UQSearchFileItem::VersionArray versions;
    item.mf_getVersions(1, versions);
    ASSERT_EQ(versions.GetSize(), 3);
    EXPECT_EQ(versions[0], one);
    EXPECT_EQ(versions[1], first);
    EXPECT_EQ(versions[2], second);
    EXPECT_EQ(item.mf_getLatestVersion(), second);
}

TEST(UQSearchFileItem, NullVersionIsRefused) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQSearchFileItem item(nullptr); }), "_E_::Parameter");
    auto item = itemWith({1});
    EXPECT_EQ(thrownCategory([&] { UQSearchFileItemTestAccess::add(*item, nullptr); }), "_E_::Parameter");
    const LogLine line{'E', "UQSearchFileItem::mf_implAddVersion", "NULL == _pVersion"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{line, line}));
    EXPECT_EQ(item->mf_getVersionCount(), 1);
}

TEST(UQSearchFileItem, GetVersionsInBothDirections) {
    auto item = itemWith({2, 5, 3});
    EXPECT_EQ(numbers(*item, 1), (std::vector<std::uint32_t>{2, 3, 5}));
    EXPECT_EQ(numbers(*item, 0), (std::vector<std::uint32_t>{5, 3, 2}));
}

TEST(UQSearchFileItem, GetVersionsRefusesANonEmptyArray) {
    LogCheck log;
    auto item = itemWith({1, 2});
    UQSearchFileItem::VersionArray versions;
    versions.Add(nullptr);
    EXPECT_EQ(thrownCategory([&] { item->mf_getVersions(1, versions); }), "_E_::Parameter");
    EXPECT_EQ(versions.GetSize(), 1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQSearchFileItem::mf_getVersions",
                                                  "Search file version list parameter is not empty"}}));
}

TEST(UQSearchFileItem, RangesOfVersionNumbers) {
    EXPECT_EQ(utf8(itemWith({5})->mf_getRangesDisplayString()), "5");
    EXPECT_EQ(utf8(itemWith({4, 5})->mf_getRangesDisplayString()), "4, 5");
    EXPECT_EQ(utf8(itemWith({4, 5, 6})->mf_getRangesDisplayString()), "4 - 6");
    EXPECT_EQ(utf8(itemWith({1, 3})->mf_getRangesDisplayString()), "1, 3");
    EXPECT_EQ(utf8(itemWith({1, 2, 3, 5, 7, 8})->mf_getRangesDisplayString()), "1 - 3, 5, 7, 8");
    EXPECT_EQ(utf8(itemWith({8, 1, 3, 2, 7, 5})->mf_getRangesDisplayString()), "1 - 3, 5, 7, 8");
    EXPECT_EQ(utf8(itemWith({1, 2, 4, 5, 6, 9})->mf_getRangesDisplayString()), "1, 2, 4 - 6, 9");
}

// The largest version number is followed by no other: 4294967295 + 1 does not wrap to 0.
TEST(UQSearchFileItem, RangesAtTheLargestVersionNumber) {
    EXPECT_EQ(utf8(itemWith({4294967295u})->mf_getRangesDisplayString()), "4294967295");
    EXPECT_EQ(utf8(itemWith({0, 4294967295u})->mf_getRangesDisplayString()), "0, 4294967295");
    EXPECT_EQ(utf8(itemWith({4294967294u, 4294967295u})->mf_getRangesDisplayString()),
              "4294967294, 4294967295");
    EXPECT_EQ(utf8(itemWith({4294967293u, 4294967294u, 4294967295u})->mf_getRangesDisplayString()),
              "4294967293 - 4294967295");
    EXPECT_EQ(utf8(itemWith({4294967295u, 4294967295u})->mf_getRangesDisplayString()),
              "4294967295, 4294967295");
}

TEST(UQSearchFileItem, RepeatedNumberIsListedAgain) {
    EXPECT_EQ(utf8(itemWith({2, 2})->mf_getRangesDisplayString()), "2, 2");
    EXPECT_EQ(utf8(itemWith({1, 2, 2, 3})->mf_getRangesDisplayString()), "1, 2, 2, 3");
}

TEST(UQSearchFileItem, SelectionByLatestAndByTheOldestNumber) {
    auto item = itemWith({3, 4, 6});
    item->mf_setSelected(1, UQQueryPatternVersion::LATEST);
    EXPECT_EQ(item->mf_isSelected(), 1);
    EXPECT_EQ(item->mf_getSelectedVersion()->mf_getVersion(), 6u);
    item->mf_setSelected(1, 3);
    EXPECT_EQ(item->mf_getSelectedVersion()->mf_getVersion(), 3u);
    item->mf_setSelected(0, 6);
    EXPECT_EQ(item->mf_isSelected(), 0);
    EXPECT_EQ(item->mf_getSelectedVersion(), nullptr);
    item->mf_setSelected(1, UQQueryPatternVersion::LATEST);
    item->mf_setSelected(0, UQQueryPatternVersion::LATEST);
    EXPECT_EQ(item->mf_getSelectedVersion(), nullptr);
}

TEST(UQSearchFileItem, QueryDataIsTheLatestRecord) {
    auto item = itemWith({1, 9, 4});
    EXPECT_EQ(item->mf_getQueryData().mf_getVersion(), 9u);
    EXPECT_EQ(&item->mf_getQueryData(), item->mf_getLatestVersion()->mf_getQueryData());
}

TEST(UQSearchFileItem, QueryDataWithoutAnyVersionIsAnInternalError) {
    LogCheck log;
    auto item = itemWith({1});
    UQSearchFileItemTestAccess::dropVersions(*item);
    EXPECT_EQ(item->mf_getLatestVersion(), nullptr);
    EXPECT_EQ(thrownCategory([&] { item->mf_getQueryData(); }), "_E_::Internal");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQSearchFileItem::mf_getQueryData",
                                                  "Found latest version without query data"}}));
}

TEST(UQSearchFileItem, PathsForDisplay) {
    UQSearchFileItem item(
        new UQSearchFileVersion(new UQQueryData(L"\\\\srv\\share\\a.txt", L"\\\\?\\UNC\\srv\\share\\a.txt", 1,
                                                writeTime(), UQFileSize(1), 0, noExpiry(), {1, 0})));
    EXPECT_EQ(utf8(item.mf_getPath()), "\\\\?\\UNC\\srv\\share\\a.txt");
    EXPECT_EQ(utf8(item.mf_getUNCPath()), "\\\\srv\\share\\a.txt");
    EXPECT_EQ(utf8(item.mf_getPathDisplayString()), "\\\\srv\\share\\a.txt");
}

TEST(UQSearchFileItem, SecurityAndStreamTextsFollowTheLatestVersion) {
    auto item = itemWith({1});
    UQSearchFileItemTestAccess::add(*item, version(2, S | A));
    EXPECT_EQ(utf8(item->mf_getSecurityDisplayString()), catalogue(4519));
    EXPECT_EQ(utf8(item->mf_getADStreamsDisplayString()), catalogue(4519));
    UQSearchFileItemTestAccess::add(*item, version(3, S));
    EXPECT_EQ(utf8(item->mf_getSecurityDisplayString()), "Yes");
    EXPECT_EQ(utf8(item->mf_getADStreamsDisplayString()), "No");
    EXPECT_EQ(utf8(itemWith({1}, PATH, A)->mf_getSecurityDisplayString()), catalogue(3545));
}

TEST(UQSearchFileItem, SortingAnArrayThatNeverGrewOnlyWarns) {
    LogCheck log;
    UQSearchFileItem::Array items;
    UQSearchFileItem::mf_sortByPath(items, 1);
    UQSearchFileItem::mf_sortByStatus(items, 1);
    UQSearchFileItem::mf_sortBySecurity(items, 0);
    UQSearchFileItem::mf_sortByADStreams(items, 0);
    EXPECT_EQ(items.GetSize(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'W', "UQSearchFileItem::mf_sortByPath", "No file list items to sort"},
                               {'W', "UQFileListItem::mf_sortByStatus", "No file list items to sort"},
                               {'W', "UQFileListItem::mf_sortBySecurity", "No file list items to sort"},
                               {'W', "UQFileListItem::mf_sortBySecurity", "No file list items to sort"}}));
}

TEST(UQSearchFileItem, SortingAnEmptyArrayWithStorageDoesNothing) {
    LogCheck log;
    UQSearchFileItem::Array items;
    items.Add(nullptr);
    items.RemoveAt(0);
    ASSERT_NE(items.GetData(), nullptr);
    UQSearchFileItem::mf_sortByPath(items, 1);
    UQSearchFileItem::mf_sortByStatus(items, 0);
    UQSearchFileItem::mf_sortBySecurity(items, 1);
    UQSearchFileItem::mf_sortByADStreams(items, 1);
    EXPECT_EQ(items.GetSize(), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQSearchFileItem, PathSortInBothDirections) {
    ItemSet set;
    set.add(L"\\\\srv\\share\\B.txt");
    set.add(L"\\\\srv\\share\\a.txt");
    set.add(L"\\\\srv\\share\\c.txt");
    UQSearchFileItem::mf_sortByPath(set.array(), 0);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\share\\c.txt", "\\\\srv\\share\\B.txt",
                                                            "\\\\srv\\share\\a.txt"}));
    UQSearchFileItem::mf_sortByPath(set.array(), 1);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\share\\a.txt", "\\\\srv\\share\\B.txt",
                                                            "\\\\srv\\share\\c.txt"}));
}

TEST(UQSearchFileItem, PathSortUsesTheOldestVersionsFilePath) {
    ItemSet set;
    UQSearchFileItem* x = set.add(L"\\\\srv\\share\\x.txt");
    set.add(L"\\\\srv\\share\\m.txt");
    // The later version of x lives under another file path; the oldest one decides.
    UQSearchFileItemTestAccess::add(
        *x, new UQSearchFileVersion(new UQQueryData(L"\\\\srv\\share\\x.txt", L"\\\\srv\\share\\a.txt", 2,
                                                    writeTime(), UQFileSize(1), 0, noExpiry(), {1, 0})));
    UQSearchFileItem::mf_sortByPath(set.array(), 1);
    EXPECT_EQ(paths(set.array()),
              (std::vector<std::string>{"\\\\srv\\share\\m.txt", "\\\\srv\\share\\x.txt"}));
}

TEST(UQSearchFileItem, StatusSortByTextThenPathAscending) {
    ItemSet set;
    set.add(L"\\\\srv\\d\\2.txt", E | D);
    set.add(L"\\\\srv\\a\\2.txt");
    set.add(L"\\\\srv\\e\\1.txt", 0, expiresOn());
    set.add(L"\\\\srv\\a\\1.txt");
    set.add(L"\\\\srv\\d\\1.txt", E | D);
    set.add(L"\\\\srv\\p\\1.txt", P);
    // Ordinal text order: "Available" < "Available (protected)" < "Deleted" < "Expiring".
    UQSearchFileItem::mf_sortByStatus(set.array(), 1);
    EXPECT_EQ(paths(set.array()),
              (std::vector<std::string>{"\\\\srv\\a\\1.txt", "\\\\srv\\a\\2.txt", "\\\\srv\\p\\1.txt",
                                        "\\\\srv\\d\\1.txt", "\\\\srv\\d\\2.txt", "\\\\srv\\e\\1.txt"}));
    UQSearchFileItem::mf_sortByStatus(set.array(), 0);
    EXPECT_EQ(paths(set.array()),
              (std::vector<std::string>{"\\\\srv\\e\\1.txt", "\\\\srv\\d\\1.txt", "\\\\srv\\d\\2.txt",
                                        "\\\\srv\\p\\1.txt", "\\\\srv\\a\\1.txt", "\\\\srv\\a\\2.txt"}));
}

TEST(UQSearchFileItem, StatusSortReadsTheSelectedVersion) {
    ItemSet set;
    UQSearchFileItem* b = set.add(L"\\\\srv\\b.txt");
    set.add(L"\\\\srv\\a.txt", E | D);
    // b's latest version is deleted, but its selected (oldest) one is available.
    UQSearchFileItemTestAccess::add(*b, version(2, E | D, L"\\\\srv\\b.txt"));
    b->mf_setSelected(1, 1);
    UQSearchFileItem::mf_sortByStatus(set.array(), 1);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\b.txt", "\\\\srv\\a.txt"}));
}

TEST(UQSearchFileItem, SecuritySortDescendingPutsSecurityFirstWithPathsAscending) {
    ItemSet set;
    set.add(L"\\\\srv\\a.txt");
    set.add(L"\\\\srv\\d.txt", S);
    set.add(L"\\\\srv\\c.txt");
    set.add(L"\\\\srv\\b.txt", S);
    UQSearchFileItem::mf_sortBySecurity(set.array(), 0);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\b.txt", "\\\\srv\\d.txt",
                                                            "\\\\srv\\a.txt", "\\\\srv\\c.txt"}));
    UQSearchFileItem::mf_sortBySecurity(set.array(), 1);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\a.txt", "\\\\srv\\c.txt",
                                                            "\\\\srv\\b.txt", "\\\\srv\\d.txt"}));
}

TEST(UQSearchFileItem, StreamsSortFollowsTheStreamsFlag) {
    ItemSet set;
    set.add(L"\\\\srv\\a.txt", S);
    set.add(L"\\\\srv\\d.txt", A);
    set.add(L"\\\\srv\\c.txt", A | S);
    set.add(L"\\\\srv\\b.txt");
    UQSearchFileItem::mf_sortByADStreams(set.array(), 0);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\c.txt", "\\\\srv\\d.txt",
                                                            "\\\\srv\\a.txt", "\\\\srv\\b.txt"}));
    UQSearchFileItem::mf_sortByADStreams(set.array(), 1);
    EXPECT_EQ(paths(set.array()), (std::vector<std::string>{"\\\\srv\\a.txt", "\\\\srv\\b.txt",
                                                            "\\\\srv\\c.txt", "\\\\srv\\d.txt"}));
}

TEST(UQSearchFileItem, CopyOwnsClonesAndSelectsTheSamePlace) {
    auto original = itemWith({1, 2, 3});
    original->mf_setSelected(1, 1);
    UQSearchFileItem copy(*original);
    EXPECT_EQ(numbers(copy), (std::vector<std::uint32_t>{1, 2, 3}));
    ASSERT_NE(copy.mf_getSelectedVersion(), nullptr);
    EXPECT_EQ(copy.mf_getSelectedVersion()->mf_getVersion(), 1u);
    EXPECT_NE(copy.mf_getSelectedVersion(), original->mf_getSelectedVersion());
    EXPECT_NE(&copy.mf_getQueryData(), &original->mf_getQueryData());
    original.reset();
    EXPECT_EQ(utf8(copy.mf_getPath()), utf8(PATH));
    EXPECT_EQ(copy.mf_getQueryData().mf_getVersion(), 3u);
}

TEST(UQSearchFileItem, AssignmentReplacesTheVersions) {
    auto source = itemWith({4, 5});
    auto target = itemWith({1}, L"\\\\srv\\share\\other.txt");
    target->mf_setSelected(1, UQQueryPatternVersion::LATEST);
    *target = *source;
    EXPECT_EQ(numbers(*target), (std::vector<std::uint32_t>{4, 5}));
    EXPECT_EQ(target->mf_isSelected(), 0);
    EXPECT_EQ(utf8(target->mf_getPath()), utf8(PATH));
}

TEST(UQSearchFileItem, CopyWhoseCloneFailsLeavesNothingBehind) {
    const int before = CountedRecord::alive();
    UQSearchFileItem original(new UQSearchFileVersion(new CountedRecord(record(PATH, 1))));
    UQSearchFileItemTestAccess::add(
        original, new UQSearchFileVersion(new FailingCloneRecord(record(PATH, 2), UQErrno::_E_::Resource)));
    EXPECT_EQ(CountedRecord::alive(), before + 1);
    EXPECT_EQ(thrownCategory([&] { UQSearchFileItem copy(original); }), "_E_::Resource");
    EXPECT_EQ(CountedRecord::alive(), before + 1);
    auto target = itemWith({7});
    EXPECT_EQ(thrownCategory([&] { *target = original; }), "_E_::Resource");
    EXPECT_EQ(numbers(*target), (std::vector<std::uint32_t>{7}));
    EXPECT_EQ(CountedRecord::alive(), before + 1);
}

TEST(UQSearchFileItem, DestroyingTheItemDeletesEveryRecord) {
    const int before = CountedRecord::alive();
    {
        UQSearchFileItem item(new UQSearchFileVersion(new CountedRecord(record(PATH, 1))));
        UQSearchFileItemTestAccess::add(item, new UQSearchFileVersion(new CountedRecord(record(PATH, 2))));
        EXPECT_EQ(CountedRecord::alive(), before + 2);
    }
    EXPECT_EQ(CountedRecord::alive(), before);
}

TEST(UQSearchFileItem, SortsKeepThePerCharacterOrderOnAHundredThousandMixedPaths) {
    // Mixed states and flags, some items unselected (ordered by their latest version), equal paths.
    const std::vector<CString> paths = mixed_paths::generate(100000, 4);
    const std::uint32_t flagSets[] = {0, S, A, S | A, P, E, E | D, E | D | P, S | P, A | E};
    std::mt19937 random(3);
    std::vector<std::unique_ptr<UQSearchFileItem>> owned;
    UQSearchFileItem::Array original;
    for (const CString& path : paths) {
        const std::uint32_t flags = flagSets[random() % 10];
        const UQExpiryTime expiry = random() % 3 == 0 ? expiresOn() : noExpiry();
        owned.push_back(std::make_unique<UQSearchFileItem>(
            new UQSearchFileVersion(record(path, 1, flags, expiry).mf_clone())));
        if (random() % 4 != 0)
            owned.back()->mf_setSelected(1, UQQueryPatternVersion::LATEST);
        original.Add(owned.back().get());
    }
    const auto shown = [](const UQSearchFileItem* _p) {
        return _p->mf_getSelectedVersion() != nullptr ? _p->mf_getSelectedVersion()
                                                      : _p->mf_getLatestVersion();
    };
    const auto path = [](const UQSearchFileItem* _a, const UQSearchFileItem* _b) {
        return mixed_paths::perCharacterPathCompare(_a->mf_getPath(), _b->mf_getPath());
    };
    const auto status = [&](const UQSearchFileItem* _a, const UQSearchFileItem* _b) {
        return shown(_a)->mf_getStatusString().Compare(shown(_b)->mf_getStatusString());
    };
    const auto security = [&](const UQSearchFileItem* _a, const UQSearchFileItem* _b) {
        return shown(_a)->mf_getQueryData()->mf_hasSecurity() -
               shown(_b)->mf_getQueryData()->mf_hasSecurity();
    };
    const auto streams = [&](const UQSearchFileItem* _a, const UQSearchFileItem* _b) {
        return shown(_a)->mf_getQueryData()->mf_hasADStreams() -
               shown(_b)->mf_getQueryData()->mf_hasADStreams();
    };
    using Compare = std::function<int(const UQSearchFileItem*, const UQSearchFileItem*)>;
    using Sort = void (*)(UQSearchFileItem::Array&, int);
    const std::vector<std::pair<Sort, Compare>> sorts = {{&UQSearchFileItem::mf_sortByPath, nullptr},
                                                         {&UQSearchFileItem::mf_sortByStatus, status},
                                                         {&UQSearchFileItem::mf_sortBySecurity, security},
                                                         {&UQSearchFileItem::mf_sortByADStreams, streams}};
    for (std::size_t k = 0; k < sorts.size(); ++k) {
        for (int ascending = 0; ascending < 2; ++ascending) {
            UQSearchFileItem::Array items;
            items.Copy(original);
            std::vector<UQSearchFileItem*> expected(original.GetData(),
                                                    original.GetData() + original.GetSize());
            // The qsort comparisons, one character at a time; equal items keep their order.
            std::stable_sort(expected.begin(), expected.end(),
                             [&](const UQSearchFileItem* _a, const UQSearchFileItem* _b) {
                                 const Compare& first = sorts[k].second;
                                 if (!first)
                                     return ascending ? path(_a, _b) < 0 : path(_b, _a) < 0;
                                 const int c = ascending ? first(_a, _b) : first(_b, _a);
                                 return c != 0 ? c < 0 : path(_a, _b) < 0;
                             });
            sorts[k].first(items, ascending);
            const std::vector<UQSearchFileItem*> actual(items.GetData(), items.GetData() + items.GetSize());
            EXPECT_TRUE(actual == expected) << "sort " << k << " ascending " << ascending;
        }
    }
}
