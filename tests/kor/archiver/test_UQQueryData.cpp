#include "interfaces/korarchiver.h"

#include "support/LogCheck.h"
#include "support/MixedPaths.h"
#include "support/TestTime.h"

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace {

const UQFileTime WRITTEN = fileTime(2024, 3, 7, 14, 5, 9);

UQQueryData data(const wchar_t* path, std::uint32_t version, UQQueryData::AccessKey access = {1, 0},
                 std::uint32_t flags = 0) {
    return UQQueryData(path, CString(), version, WRITTEN, UQFileSize(100), flags, UQExpiryTime{0}, access);
}

// Shows one record, as the library's search items do.
class Item : public UVQueryItem {
public:
    explicit Item(const UQQueryData& data) : m_data(data) {}
    const UQQueryData& mf_getQueryData() const override { return m_data; }

private:
    UQQueryData m_data;
};

// An item that has no record to show.
class BrokenItem : public UVQueryItem {
public:
    const UQQueryData& mf_getQueryData() const override { throw UQErrno(UQErrno::_E_::Internal); }
};

// Owns records and lends them as the array the sort takes.
class Records {
public:
    ~Records() {
        for (INT_PTR i = 0; i < m_array.GetSize(); ++i)
            delete m_array[i];
    }
    void add(const UQQueryData& d) { m_array.Add(d.mf_clone()); }
    void addNull() { m_array.Add(nullptr); }
    UQArray<UQQueryData*, UQQueryData*>& array() { return m_array; }
    std::vector<std::string> keys() const {
        std::vector<std::string> out;
        for (INT_PTR i = 0; i < m_array.GetSize(); ++i) {
            const UQQueryData* d = m_array[i];
            out.push_back(d == nullptr
                              ? std::string("null")
                              : utf8(d->mf_getObjectPath()) + " v" + std::to_string(d->mf_getVersion()));
        }
        return out;
    }

private:
    UQArray<UQQueryData*, UQQueryData*> m_array;
};

std::vector<std::string> keys(const std::vector<UVQueryItem*>& items) {
    std::vector<std::string> out;
    for (const UVQueryItem* item : items)
        out.push_back(utf8(item->mf_getQueryData().mf_getObjectPath()) + " v" +
                      std::to_string(item->mf_getQueryData().mf_getVersion()));
    return out;
}

} // namespace

TEST(UQQueryData, LatestIsTheHighestNumber) {
    EXPECT_EQ(UQQueryPatternVersion::LATEST, 0xFFFFFFFFul);
}

TEST(UQQueryData, FieldsAndFlags) {
    const UQQueryData d(L"\\\\srv\\share\\a.txt", L"C:\\a.txt", 7, WRITTEN, UQFileSize(4096),
                        UQQueryData::FLAG_SECURITY | UQQueryData::FLAG_PROTECTED, UQExpiryTime{1234},
                        {17, 4096});
    EXPECT_EQ(utf8(d.mf_getObjectPath()), "\\\\srv\\share\\a.txt");
    EXPECT_EQ(utf8(d.mf_getPath()), "C:\\a.txt");
    EXPECT_EQ(d.mf_getVersion(), 7u);
    EXPECT_EQ(d.mf_getLastWriteTime(), WRITTEN);
    EXPECT_EQ(d.mf_getSize().mf_getValue(), 4096);
    EXPECT_EQ(d.mf_hasSecurity(), 1);
    EXPECT_EQ(d.mf_hasADStreams(), 0);
    EXPECT_EQ(d.mf_isEventBased(), 0);
    EXPECT_EQ(d.mf_isProtected(), 1);
    EXPECT_EQ(d.mf_isDeletionStarted(), 0);
    EXPECT_EQ(d.mf_getExpiryTime().uFileTime, 1234u);
    EXPECT_EQ(d.mf_getExpiryTime().mf_isSet(), 1);
    EXPECT_EQ(d.mf_getAccessKey().uVolume, 17u);
    EXPECT_EQ(d.mf_getAccessKey().uPosition, 4096u);
}

TEST(UQQueryData, UnknownFlagBitsAreDropped) {
    const UQQueryData d(L"\\\\srv\\a", L"", 1, WRITTEN, UQFileSize(1), 0xFFFFFFFFu, UQExpiryTime{0}, {1, 0});
    EXPECT_EQ(d.mf_getFlags(), static_cast<std::uint32_t>(UQQueryData::FLAG_ALL));
    EXPECT_EQ(d.mf_getExpiryTime().mf_isSet(), 0);
}

TEST(UQQueryData, FilePathSharesTheObjectPathsTextWhenTheyAreEqual) {
    const CString object = L"\\\\srv\\share\\a.txt";
    const UQQueryData empty(object, CString(), 1, WRITTEN, UQFileSize(1), 0, UQExpiryTime{0}, {1, 0});
    EXPECT_EQ(empty.mf_getPath().mf_getPath().GetString(), empty.mf_getObjectPath().mf_getPath().GetString());
    const UQQueryData equal(object, CString(L"\\\\srv\\share\\a.txt"), 1, WRITTEN, UQFileSize(1), 0,
                            UQExpiryTime{0}, {1, 0});
    EXPECT_EQ(equal.mf_getPath().mf_getPath().GetString(), equal.mf_getObjectPath().mf_getPath().GetString());
    const UQQueryData other(object, CString(L"C:\\a.txt"), 1, WRITTEN, UQFileSize(1), 0, UQExpiryTime{0},
                            {1, 0});
    EXPECT_NE(other.mf_getPath().mf_getPath().GetString(), other.mf_getObjectPath().mf_getPath().GetString());
    // A copy shares both.
    const UQQueryData copy(other);
    EXPECT_EQ(copy.mf_getPath().mf_getPath().GetString(), other.mf_getPath().mf_getPath().GetString());
}

TEST(UQQueryData, DescribingText) {
    const UQQueryData d(L"\\\\srv\\share\\a.txt", L"C:\\a.txt", 3, fileTime(2024, 3, 7, 14, 5, 9),
                        UQFileSize(1024), UQQueryData::FLAG_SECURITY | UQQueryData::FLAG_PROTECTED,
                        UQExpiryTime{0}, {17, 4096});
    EXPECT_EQ(utf8(d.mf_toString()),
              "Object='\\\\srv\\share\\a.txt', file='C:\\a.txt', version=3, size=1024, "
              "last-write-time=2024-03-07 14:05:09, flags=SP, expiry=none, access=17:4096");
    const UQQueryData e(L"\\\\srv\\b", L"", 1, UQFileTime(fileTime(2020, 1, 2).mf_getValue() + 5),
                        UQFileSize(0), UQQueryData::FLAG_ALL,
                        UQExpiryTime{fileTime(2021, 1, 2, 3, 4, 5).mf_getValue()}, {0, 0});
    EXPECT_EQ(utf8(e.mf_toString()), "Object='\\\\srv\\b', file='\\\\srv\\b', version=1, size=0, "
                                     "last-write-time=2020-01-02 00:00:00.0000005, flags=SAEPD, "
                                     "expiry=2021-01-02 03:04:05, access=0:0");
}

TEST(UQQueryData, PathDisplayStringIsTheUNCForm) {
    const UQQueryData d(L"\\\\srv\\share\\a.txt", L"\\\\?\\UNC\\srv\\share\\a.txt", 1, WRITTEN, UQFileSize(1),
                        0, UQExpiryTime{0}, {1, 0});
    EXPECT_EQ(utf8(d.mf_getPathDisplayString()), "\\\\srv\\share\\a.txt");
    const UQQueryData local(L"\\\\srv\\c", L"\\\\?\\C:\\data\\b.txt", 1, WRITTEN, UQFileSize(1), 0,
                            UQExpiryTime{0}, {1, 0});
    EXPECT_EQ(utf8(local.mf_getPathDisplayString()), "C:\\data\\b.txt");
}

TEST(UQQueryData, CloneIsAnEqualCopyOfItsOwn) {
    const UQQueryData d = data(L"\\\\srv\\a", 5, {2, 9}, UQQueryData::FLAG_AD_STREAMS);
    std::unique_ptr<UQQueryData> clone(d.mf_clone());
    ASSERT_NE(clone.get(), &d);
    EXPECT_EQ(utf8(clone->mf_toString()), utf8(d.mf_toString()));
}

TEST(UQQueryData, CloneWithoutMemoryIsLoggedAndThrown) {
    const UQQueryData d = data(L"\\\\srv\\a", 5);
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { delete d.mf_clone(); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQQueryData::mf_clone",
                                     "No memory to clone query data:\r\n    " + utf8(d.mf_toString())}}));
}

TEST(UQQueryData, SortByPathAscendingThenVersionInEitherDirection) {
    Records r;
    r.add(data(L"\\\\srv\\b", 2));
    r.add(data(L"\\\\srv\\A", 2));
    r.add(data(L"\\\\srv\\b", 1));
    r.add(data(L"\\\\srv\\a", 1));
    UQQueryData::mf_sortByPathAndVersion(1, 1, r.array());
    EXPECT_EQ(r.keys(),
              (std::vector<std::string>{"\\\\srv\\a v1", "\\\\srv\\A v2", "\\\\srv\\b v1", "\\\\srv\\b v2"}));
    UQQueryData::mf_sortByPathAndVersion(1, 0, r.array());
    EXPECT_EQ(r.keys(),
              (std::vector<std::string>{"\\\\srv\\A v2", "\\\\srv\\a v1", "\\\\srv\\b v2", "\\\\srv\\b v1"}));
    UQQueryData::mf_sortByPathAndVersion(0, 1, r.array());
    EXPECT_EQ(r.keys(),
              (std::vector<std::string>{"\\\\srv\\b v1", "\\\\srv\\b v2", "\\\\srv\\a v1", "\\\\srv\\A v2"}));
}

TEST(UQQueryData, SortOrdersADirectoryBeforeNamesThatExtendIt) {
    Records r;
    r.add(data(L"\\\\srv\\dir-2\\x", 1));
    r.add(data(L"\\\\srv\\dir\\z", 1));
    r.add(data(L"\\\\srv\\dir", 1));
    UQQueryData::mf_sortByPathAndVersion(1, 1, r.array());
    EXPECT_EQ(r.keys(),
              (std::vector<std::string>{"\\\\srv\\dir v1", "\\\\srv\\dir\\z v1", "\\\\srv\\dir-2\\x v1"}));
}

TEST(UQQueryData, SortIsStableAndPutsNullsLast) {
    Records r;
    r.addNull();
    r.add(UQQueryData(L"\\\\srv\\a", L"C:\\first", 1, WRITTEN, UQFileSize(1), 0, UQExpiryTime{0}, {1, 0}));
    r.addNull();
    r.add(UQQueryData(L"\\\\SRV\\A", L"C:\\second", 1, WRITTEN, UQFileSize(1), 0, UQExpiryTime{0}, {1, 0}));
    r.add(data(L"\\\\srv\\0", 1));
    for (int pathAscending = 0; pathAscending < 2; ++pathAscending) {
        UQQueryData::mf_sortByPathAndVersion(pathAscending, 1, r.array());
        const auto& a = r.array();
        ASSERT_EQ(a.GetSize(), 5);
        EXPECT_EQ(a[3], nullptr);
        EXPECT_EQ(a[4], nullptr);
        const int first = pathAscending ? 1 : 0;
        EXPECT_EQ(utf8(a[first]->mf_getPath()), "C:\\first");
        EXPECT_EQ(utf8(a[first + 1]->mf_getPath()), "C:\\second");
    }
}

TEST(UQQueryData, SortAgreesWithAStableReferenceSortOnManyRecords) {
    std::mt19937 random(42);
    Records r;
    for (int i = 0; i < 3000; ++i) {
        CString path;
        path.Format(L"\\\\srv\\dir %d\\File %d.txt", static_cast<int>(random() % 7),
                    static_cast<int>(random() % 300));
        if (random() % 2)
            path.MakeUpper();
        r.add(UQQueryData(path, CString(), static_cast<std::uint32_t>(random() % 4), WRITTEN, UQFileSize(i),
                          0, UQExpiryTime{0}, {1, static_cast<std::uint64_t>(i)}));
    }
    for (int pathAscending = 0; pathAscending < 2; ++pathAscending) {
        for (int versionAscending = 0; versionAscending < 2; ++versionAscending) {
            std::vector<UQQueryData*> expected(r.array().GetData(),
                                               r.array().GetData() + r.array().GetSize());
            std::stable_sort(
                expected.begin(), expected.end(), [&](const UQQueryData* a, const UQQueryData* b) {
                    const int c = UQPath::mf_compare(a->mf_getObjectPath(), b->mf_getObjectPath());
                    if (c != 0)
                        return pathAscending ? c < 0 : c > 0;
                    return versionAscending ? a->mf_getVersion() < b->mf_getVersion()
                                            : a->mf_getVersion() > b->mf_getVersion();
                });
            UQQueryData::mf_sortByPathAndVersion(pathAscending, versionAscending, r.array());
            const std::vector<UQQueryData*> actual(r.array().GetData(),
                                                   r.array().GetData() + r.array().GetSize());
            EXPECT_TRUE(actual == expected) << "path " << pathAscending << " version " << versionAscending;
        }
    }
}

TEST(UQQueryData, SortKeepsThePerCharacterOrderOnAHundredThousandMixedPaths) {
    // Versions 0 to 3, so that equal paths (also in other case) differ by version or tie completely.
    const std::vector<CString> paths = mixed_paths::generate(100000, 1);
    std::mt19937 random(9);
    Records r;
    std::vector<std::unique_ptr<Item>> owned;
    for (std::size_t i = 0; i < paths.size(); ++i) {
        const UQQueryData d(paths[i], CString(), static_cast<std::uint32_t>(random() % 4), WRITTEN,
                            UQFileSize(static_cast<std::int64_t>(i)), 0, UQExpiryTime{0}, {1, i});
        r.add(d);
        owned.push_back(std::make_unique<Item>(d));
    }
    for (int pathAscending = 0; pathAscending < 2; ++pathAscending) {
        for (int versionAscending = 0; versionAscending < 2; ++versionAscending) {
            const auto less = [&](const UQQueryData* _a, const UQQueryData* _b) {
                const int c =
                    mixed_paths::perCharacterPathCompare(_a->mf_getObjectPath(), _b->mf_getObjectPath());
                if (c != 0)
                    return pathAscending ? c < 0 : c > 0;
                return versionAscending ? _a->mf_getVersion() < _b->mf_getVersion()
                                        : _a->mf_getVersion() > _b->mf_getVersion();
            };
            std::vector<UQQueryData*> expected(r.array().GetData(),
                                               r.array().GetData() + r.array().GetSize());
            std::stable_sort(expected.begin(), expected.end(), less);
            UQQueryData::mf_sortByPathAndVersion(pathAscending, versionAscending, r.array());
            const std::vector<UQQueryData*> actual(r.array().GetData(),
                                                   r.array().GetData() + r.array().GetSize());
            EXPECT_TRUE(actual == expected)
                << "records, path " << pathAscending << " version " << versionAscending;

            std::vector<UVQueryItem*> items;
            for (const auto& item : owned)
                items.push_back(item.get());
            std::vector<UVQueryItem*> expectedItems = items;
            std::stable_sort(expectedItems.begin(), expectedItems.end(),
                             [&](UVQueryItem* _a, UVQueryItem* _b) {
                                 return less(&_a->mf_getQueryData(), &_b->mf_getQueryData());
                             });
            UQQueryData::mf_sortByPathAndVersion(pathAscending, versionAscending, items.data(),
                                                 static_cast<INT_PTR>(items.size()));
            EXPECT_TRUE(items == expectedItems)
                << "items, path " << pathAscending << " version " << versionAscending;
        }
    }
}

TEST(UQQueryData, SortWithoutMemoryLeavesTheArrayAsItWas) {
    Records r;
    r.add(data(L"\\\\srv\\c", 1));
    r.add(data(L"\\\\srv\\b", 1));
    r.add(data(L"\\\\srv\\a", 1));
    const auto before = r.keys();
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByPathAndVersion(1, 1, r.array()); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(r.keys(), before);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQQueryData::mf_sortByPathAndVersion::1",
                                     "No memory for 3 sort entries (" +
                                         std::to_string(3 * sizeof(std::uint64_t)) + " bytes)"}}));
}

TEST(UQQueryData, SortingOneRecordOrNoneNeedsNoMemory) {
    Records r;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByPathAndVersion(1, 1, r.array()); }), "no exception");
    UQAllocationInjection::mf_clearInjection();
    r.add(data(L"\\\\srv\\a", 1));
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByPathAndVersion(1, 1, r.array()); }), "no exception");
    Item only(data(L"\\\\srv\\b", 1));
    UVQueryItem* items[] = {&only};
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByAccessOrder(items, 1); }), "no exception");
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByPathAndVersion(1, 1, items, 1); }), "no exception");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(r.keys(), std::vector<std::string>{"\\\\srv\\a v1"});
}

TEST(UQQueryData, ItemsSortByTheRecordsTheyShow) {
    Item b1(data(L"\\\\srv\\b", 1)), a2(data(L"\\\\srv\\a", 2)), a1(data(L"\\\\srv\\a", 1));
    std::vector<UVQueryItem*> items = {&b1, &a2, &a1};
    UQQueryData::mf_sortByPathAndVersion(0, 1, items.data(), static_cast<INT_PTR>(items.size()));
    EXPECT_EQ(keys(items), (std::vector<std::string>{"\\\\srv\\b v1", "\\\\srv\\a v1", "\\\\srv\\a v2"}));
    UQQueryData::mf_sortByPathAndVersion(1, 0, items.data(), static_cast<INT_PTR>(items.size()));
    EXPECT_EQ(keys(items), (std::vector<std::string>{"\\\\srv\\a v2", "\\\\srv\\a v1", "\\\\srv\\b v1"}));
}

TEST(UQQueryData, AccessOrderIsVolumeThenPositionThenPath) {
    Item x(data(L"\\\\srv\\x", 1, {2, 5})), y(data(L"\\\\srv\\y", 1, {1, 700})),
        z(data(L"\\\\srv\\z", 1, {1, 30})), a(data(L"\\\\srv\\a", 1, {1, 700})),
        b(data(L"\\\\srv\\a", 0, {1, 700}));
    std::vector<UVQueryItem*> items = {&x, &y, &z, &a, &b};
    UQQueryData::mf_sortByAccessOrder(items.data(), static_cast<INT_PTR>(items.size()));
    EXPECT_EQ(keys(items), (std::vector<std::string>{"\\\\srv\\z v1", "\\\\srv\\a v0", "\\\\srv\\a v1",
                                                     "\\\\srv\\y v1", "\\\\srv\\x v1"}));
}

TEST(UQQueryData, AnItemWithoutRecordFailsTheSortBeforeAnythingMoves) {
    Item b(data(L"\\\\srv\\b", 1)), a(data(L"\\\\srv\\a", 1));
    BrokenItem broken;
    std::vector<UVQueryItem*> items = {&b, &broken, &a};
    const std::vector<UVQueryItem*> before = items;
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByAccessOrder(items.data(), 3); }), "_E_::Internal");
    EXPECT_TRUE(items == before);
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByPathAndVersion(1, 1, items.data(), 3); }),
              "_E_::Internal");
    EXPECT_TRUE(items == before);
}

TEST(UQQueryData, ItemSortWithoutMemoryIsLogged) {
    Item b(data(L"\\\\srv\\b", 1)), a(data(L"\\\\srv\\a", 1));
    std::vector<UVQueryItem*> items = {&b, &a};
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { UQQueryData::mf_sortByPathAndVersion(1, 1, items.data(), 2); }),
              "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(keys(items), (std::vector<std::string>{"\\\\srv\\b v1", "\\\\srv\\a v1"}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQQueryData::mf_sortByPathAndVersion::2",
                                                  "No memory for 2 sort entries (" +
                                                      std::to_string(2 * sizeof(void*)) + " bytes)"}}));
}

TEST(UQPathPattern, MatchesLikeTheLibrarysWildcards) {
    EXPECT_EQ(UQPathPattern(L"A*B").mf_matches(L"ab"), 1);
    EXPECT_EQ(UQPathPattern(L"*").mf_matches(L""), 1);
    EXPECT_EQ(UQPathPattern(L"?").mf_matches(L""), 0);
    EXPECT_EQ(UQPathPattern(L"*.txt").mf_matches(L"a.b.txt"), 1);
    EXPECT_EQ(UQPathPattern(L"a*b*c").mf_matches(L"axbxbxc"), 1);
    EXPECT_EQ(UQPathPattern(L"a*b*c").mf_matches(L"axbxbx"), 0);
    EXPECT_EQ(
        UQPathPattern(L"\\\\srv\\*\\report ??.docx").mf_matches(L"\\\\SRV\\Finance\\2024\\Report 07.DOCX"),
        1);
    EXPECT_EQ(UQPathPattern(L"\\\\srv\\*\\report ??.docx").mf_matches(L"\\\\srv\\Finance\\report 7.docx"), 0);
    EXPECT_EQ(UQPathPattern(L"*müller*").mf_matches(L"\\\\srv\\Sales\\MÜLLER GmbH.pptx"), 1);
    EXPECT_EQ(utf8(UQPathPattern(L"*.Txt").mf_getPattern()), "*.TXT");
}

TEST(UQPathPattern, EmptyPatternIsRefused) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQPathPattern pattern(L""); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQPathPattern::UQPathPattern", "No pattern"}}));
}
