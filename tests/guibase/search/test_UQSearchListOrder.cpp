// A close large enough for two threads, and the orders that follow it, against the per-character
// comparison: 100 000 records of generated and hand-made paths (separators of both kinds, case variants,
// letters beyond Latin, prefixes of each other, equal paths with several versions), many sharing a place on
// the backend, so that the path decides the access order's ties.
#include "guibase/search/UQSearchList.h"

#include "SearchRecords.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

using namespace search_test;

namespace {

struct Added {
    CString path;
    std::uint32_t version;
    UQQueryData::AccessKey access;
    std::size_t order; // when it was added
};

CString generatedPath(std::mt19937& random) {
    static const wchar_t* const PARTS[] = {
        L"Dir",
        L"dir",
        L"DIR",
        L"dir-2",
        L"dir.1",
        L"a",
        L"A",
        L"ä",
        L"Ä",
        L"straße",
        L"STRASSE",
        L"\u03a3\u03bf\u03c6",
        L"\u03c3\u03bf\u03c6",
        L"\u0416\u0443\u043a",
        L"\u0436\u0443\u043a",
        L"x y",
        L"_",
        L"~",
        L"0",
        L"10",
        L"9",
        L"\u65e5\u672c",
        // A character beyond the first plane, as its two UTF-16 units.
        L"\xD83D\xDE00",
    };
    const std::size_t partCount = sizeof PARTS / sizeof PARTS[0];
    CString path = random() % 2 ? L"\\\\srv\\share" : L"C:";
    const int depth = 1 + static_cast<int>(random() % 5);
    for (int i = 0; i < depth; ++i) {
        path += random() % 7 == 0 ? L"/" : L"\\";
        path += PARTS[random() % partCount];
        if (random() % 3 == 0)
            path += PARTS[random() % partCount];
    }
    return path;
}

std::vector<Added> records(std::size_t count) {
    std::mt19937 random(20261124);
    std::vector<Added> out;
    const CString handMade[] = {L"\\\\srv\\share\\dir",
                                L"\\\\srv\\share\\dir\\",
                                L"\\\\srv\\share\\dir/x",
                                L"\\\\srv\\share\\DIR\\x",
                                L"\\\\srv\\share\\dir-2",
                                L"\\\\srv\\share\\dir\\x",
                                L"C:",
                                L"C:\\",
                                L"c:\\"};
    for (const CString& path : handMade)
        for (std::uint32_t version = 3; version > 0; --version)
            out.push_back(Added{path, version, {1, 7}, out.size()});
    while (out.size() < count) {
        const CString path = generatedPath(random);
        // Some files get several versions, added out of order and in different case.
        const int versions = 1 + static_cast<int>(random() % 3);
        for (int v = 0; v < versions && out.size() < count; ++v) {
            CString variant = path;
            if (random() % 4 == 0)
                variant.MakeUpper();
            out.push_back(Added{variant,
                                1 + static_cast<std::uint32_t>(random() % 4),
                                {static_cast<std::uint32_t>(random() % 3), random() % 40},
                                out.size()});
        }
    }
    std::shuffle(out.begin(), out.end(), random);
    for (std::size_t i = 0; i < out.size(); ++i)
        out[i].order = i;
    return out;
}

// What the list must show: groups of records whose paths compare equal, by path, versions ascending
// and equal versions in the order added; the file's latest record is the last.
std::vector<std::vector<Added>> expectedFiles(std::vector<Added> all) {
    std::stable_sort(all.begin(), all.end(), [](const Added& a, const Added& b) {
        const int c = UQPath::mf_compare(a.path, b.path);
        return c != 0 ? c < 0 : a.version < b.version;
    });
    std::vector<std::vector<Added>> files;
    for (const Added& a : all) {
        if (files.empty() || UQPath::mf_compare(files.back().back().path, a.path) != 0)
            files.emplace_back();
        files.back().push_back(a);
    }
    return files;
}

std::string describe(const std::vector<Added>& file) {
    std::string versions;
    for (const Added& a : file)
        versions += (versions.empty() ? "" : ",") + std::to_string(a.version);
    return utf8(file.back().path) + " [" + versions + "]";
}

std::vector<std::string> listed(const UQSearchFileItem::Array& items) {
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < items.GetSize(); ++i) {
        std::string versions;
        UQSearchFileItem::VersionArray all;
        items[i]->mf_getVersions(1, all);
        for (INT_PTR v = 0; v < all.GetSize(); ++v)
            versions += (versions.empty() ? "" : ",") + std::to_string(all[v]->mf_getVersion());
        out.push_back(utf8(items[i]->mf_getQueryData().mf_getObjectPath()) + " [" + versions + "]");
    }
    return out;
}

std::vector<std::string> listedFiles(UQSearchList& list) {
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    return listed(items);
}

class LargeSearchList : public ::testing::Test {
protected:
    static constexpr std::size_t COUNT = 100000;
    // The records and what the comparison makes of them, once for every test.
    static void SetUpTestSuite() {
        all = new std::vector<Added>(records(COUNT));
        expected = new std::vector<std::string>();
        for (const std::vector<Added>& file : expectedFiles(*all))
            expected->push_back(describe(file));
    }
    static void TearDownTestSuite() {
        delete all;
        delete expected;
    }
    void SetUp() override {
        for (const Added& a : *all)
            list.mf_add(record(a.path.GetString(), a.version, 0, noExpiry(), a.access));
        list.mf_close();
    }
    static std::vector<Added>* all;
    static std::vector<std::string>* expected;
    UQSearchList list;
};

std::vector<Added>* LargeSearchList::all = nullptr;
std::vector<std::string>* LargeSearchList::expected = nullptr;

} // namespace

TEST_F(LargeSearchList, CloseGroupsAndOrdersAsThePerCharacterComparison) {
    ASSERT_GT(expected->size(), 30000u);
    EXPECT_EQ(listedFiles(list), *expected);
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), expected->size());
}

TEST_F(LargeSearchList, PathSortsInBothDirectionsAsTheComparison) {
    list.mf_sortByPath(0);
    const std::vector<std::string> descending(expected->rbegin(), expected->rend());
    EXPECT_EQ(listedFiles(list), descending);
    list.mf_sortByPath(0);
    EXPECT_EQ(listedFiles(list), descending);
    list.mf_sortByPath(1);
    EXPECT_EQ(listedFiles(list), *expected);
}

TEST_F(LargeSearchList, AccessOrderIsTheComparisonSortsInEitherPathOrder) {
    for (int ascending : {1, 0}) {
        list.mf_sortByPath(ascending);
        UQSearchFileItem::Array selected;
        list.mf_getSelectedFileList(selected, 0);
        std::vector<UVQueryItem*> queryItems(selected.GetData(), selected.GetData() + selected.GetSize());
        UQQueryData::mf_sortByAccessOrder(queryItems.data(), static_cast<INT_PTR>(queryItems.size()));
        UQSearchFileItem::Array byComparison;
        for (UVQueryItem* item : queryItems)
            byComparison.Add(static_cast<UQSearchFileItem*>(item));
        UQSearchFileItem::Array byList;
        list.mf_getSelectedFileList(byList, 1);
        EXPECT_EQ(listed(byList), listed(byComparison)) << "path order ascending: " << ascending;
    }
}
