#include "guibase/filelist/UQFileListItem.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <memory>

namespace {

std::vector<std::uint32_t> numbers(const UQFileListItem::VersionArray& versions) {
    std::vector<std::uint32_t> out;
    for (INT_PTR i = 0; i < versions.GetSize(); ++i)
        out.push_back(versions[i]->mf_getVersion());
    return out;
}

} // namespace

TEST(UQFileListItemVersion, SortsByNumberInBothDirections) {
    UQFileListItem item(L"C:\\f.txt", 0, L"", UQSeverity());
    for (std::uint32_t v : {4u, 1u, 3u, 2u})
        item.mf_addVersion(v, UQFileSize(v * 10), fileTime(2024, 1, static_cast<int>(v)));
    UQFileListItem::VersionArray versions;
    item.mf_getVersions(versions);
    UQFileListItemVersion::mf_sort(versions, 1);
    EXPECT_EQ(numbers(versions), (std::vector<std::uint32_t>{1, 2, 3, 4}));
    UQFileListItemVersion::mf_sort(versions, 0);
    EXPECT_EQ(numbers(versions), (std::vector<std::uint32_t>{4, 3, 2, 1}));
    EXPECT_EQ(versions[0]->mf_getSize().mf_getValue(), 40);
    EXPECT_EQ(versions[0]->mf_getLastWriteTime(), fileTime(2024, 1, 4));
}

TEST(UQFileListItemVersion, NumbersMoreThanTwoToThe31ApartCompareReversed) {
    UQFileListItem item(L"C:\\f.txt", 0, L"", UQSeverity());
    item.mf_addVersion(0xF0000000u, UQFileSize(1), UQFileTime(0));
    item.mf_addVersion(1u, UQFileSize(1), UQFileTime(0));
    UQFileListItem::VersionArray versions;
    item.mf_getVersions(versions);
    UQFileListItemVersion::mf_sort(versions, 1);
    // 0xF0000000 - 1 taken as signed is negative: the large number sorts first.
    EXPECT_EQ(numbers(versions), (std::vector<std::uint32_t>{0xF0000000u, 1u}));
}

TEST(UQFileListItemVersion, ArrayThatNeverHeldAnythingOnlyWarns) {
    LogCheck log;
    UQFileListItem::VersionArray versions;
    UQFileListItemVersion::mf_sort(versions, 1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQFileListItemVersion::mf_sort",
                                                  "No file list item versions to sort"}}));
}

TEST(UQFileListItemVersion, CopyAndAssignmentCopyTheThreeFields) {
    UQFileListItem a(L"C:\\a.txt", 7, UQFileSize(70), fileTime(2024, 7, 7), L"", UQSeverity());
    UQFileListItem b(L"C:\\b.txt", 8, UQFileSize(80), fileTime(2024, 8, 8), L"", UQSeverity());
    UQFileListItem::VersionArray va, vb;
    a.mf_getVersions(va);
    b.mf_getVersions(vb);
    *vb[0] = *va[0];
    EXPECT_EQ(vb[0]->mf_getVersion(), 7u);
    EXPECT_EQ(vb[0]->mf_getSize().mf_getValue(), 70);
    EXPECT_EQ(vb[0]->mf_getLastWriteTime(), fileTime(2024, 7, 7));
    EXPECT_EQ(b.mf_getVersion(), 7u);
}
