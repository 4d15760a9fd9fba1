#include "FileVersionList.h"
#include "support/PathList.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

FileVersionRecord record(const wchar_t* path, std::uint32_t version, int line, const wchar_t* result = L"",
                         const UQSeverity& severity = UQSeverity::Info) {
    FileVersionRecord r;
    r.sPath = path;
    r.uVersion = version;
    r.size = UQFileSize(1000 + version);
    r.lastWriteTime = UQFileTime(133565229420000000ull + version * UQFileTime::TICKS_PER_DAY);
    r.sResult = result;
    r.severity = severity;
    r.nLine = line;
    return r;
}

void add(FileVersionList& list, const FileVersionRecord& r) {
    std::string problem;
    ASSERT_EQ(1, list.mf_add(r, problem)) << problem;
    EXPECT_EQ("", problem);
}

} // namespace

TEST(FileVersionList, LinesOfOnePathBecomeOneItemWithEveryVersion) {
    LogCheck log;
    FileVersionList list;
    add(list, record(L"C:\\Reports\\q1.docx", 1, 1, L"Migrated", UQSeverity::Warning));
    add(list, record(L"C:\\Reports\\q1.docx", 3, 2));
    add(list, record(L"C:\\Reports\\q1.docx", 2, 3));
    ASSERT_EQ(1, list.mf_getCount());
    const UQFileListItem* item = list.mf_find(L"C:\\Reports\\q1.docx");
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(3, item->mf_getVersionCount());
    EXPECT_EQ(CString(L"1 - 3"), item->mf_getRangesDisplayString());
    EXPECT_EQ(3u, item->mf_getVersion());
    EXPECT_EQ(1003, item->mf_getSize().mf_getValue());
    EXPECT_EQ(CString(L"Migrated"), item->mf_getResult());
    EXPECT_EQ(UVSeverity::YELLOW, item->mf_getSeverity().mf_getValue());
    EXPECT_EQ(0u, log.count());
}

TEST(FileVersionList, TheFirstLineOfAPathGivesResultAndSeverity) {
    FileVersionList list;
    add(list, record(L"C:\\a.txt", 2, 1, L"Recalled", UQSeverity::Info));
    add(list, record(L"C:\\a.txt", 5, 2, L"Access denied", UQSeverity::Error));
    const UQFileListItem* item = list.mf_find(L"C:\\a.txt");
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(CString(L"Recalled"), item->mf_getResult());
    EXPECT_EQ(UVSeverity::GREEN, item->mf_getSeverity().mf_getValue());
    EXPECT_EQ(5u, item->mf_getVersion());
}

TEST(FileVersionList, VersionsInAnyOrderGiveTheRangesOfTheirNumbers) {
    FileVersionList list;
    add(list, record(L"C:\\gap.txt", 5, 1));
    add(list, record(L"C:\\gap.txt", 1, 2));
    add(list, record(L"C:\\gap.txt", 4, 3));
    add(list, record(L"C:\\gap.txt", 2, 4));
    for (std::uint32_t v : {7u, 1u, 4u, 6u, 3u, 2u})
        add(list, record(L"C:\\runs.txt", v, 10 + static_cast<int>(v)));
    add(list, record(L"C:\\one.txt", 4, 20));

    EXPECT_EQ(CString(L"1, 2, 5"), list.mf_find(L"C:\\gap.txt")->mf_getRangesDisplayString());
    EXPECT_EQ(5u, list.mf_find(L"C:\\gap.txt")->mf_getVersion());
    // 1-4 and 6-7: a run after the first shows only its end.
    EXPECT_EQ(CString(L"1 - 4, 7"), list.mf_find(L"C:\\runs.txt")->mf_getRangesDisplayString());
    EXPECT_EQ(7u, list.mf_find(L"C:\\runs.txt")->mf_getVersion());
    EXPECT_EQ(CString(L"4"), list.mf_find(L"C:\\one.txt")->mf_getRangesDisplayString());
}

TEST(FileVersionList, AVersionListedTwiceForAPathIsRefused) {
    FileVersionList list;
    add(list, record(L"C:\\a.txt", 3, 4));
    add(list, record(L"C:\\b.txt", 3, 5));
    std::string problem;
    EXPECT_EQ(0, list.mf_add(record(L"C:\\a.txt", 3, 9), problem));
    EXPECT_EQ("version 3 of this path is already listed on line 4", problem);
    EXPECT_EQ(1, list.mf_find(L"C:\\a.txt")->mf_getVersionCount());
    EXPECT_EQ(2, list.mf_getCount());
}

TEST(FileVersionList, PathsThatDifferOnlyInCaseAreDifferentItems) {
    FileVersionList list;
    add(list, record(L"C:\\Data\\Report.txt", 1, 1, L"upper"));
    add(list, record(L"c:\\data\\report.txt", 1, 2, L"lower"));
    EXPECT_EQ(2, list.mf_getCount());
    EXPECT_EQ(CString(L"upper"), list.mf_find(L"C:\\Data\\Report.txt")->mf_getResult());
    EXPECT_EQ(CString(L"lower"), list.mf_find(L"c:\\data\\report.txt")->mf_getResult());
    EXPECT_EQ(nullptr, list.mf_find(L"C:\\DATA\\REPORT.TXT"));
}

TEST(FileVersionList, SortsByPathInEitherDirection) {
    FileVersionList list;
    for (const wchar_t* path : {L"C:\\b", L"D:\\a", L"C:\\a", L"C:\\B"})
        add(list, record(path, 1, 1));
    UQFileListItem::Array ascending;
    list.mf_getSorted(ascending, FileListOrder::BY_PATH, 1);
    EXPECT_EQ((std::vector<std::string>{"C:\\B", "C:\\a", "C:\\b", "D:\\a"}), paths(ascending));
    UQFileListItem::Array descending;
    list.mf_getSorted(descending, FileListOrder::BY_PATH, 0);
    EXPECT_EQ((std::vector<std::string>{"D:\\a", "C:\\b", "C:\\a", "C:\\B"}), paths(descending));
}

TEST(FileVersionList, SortsByResultWithEqualResultsByPathAscending) {
    FileVersionList list;
    add(list, record(L"C:\\d", 1, 1, L"Recalled"));
    add(list, record(L"C:\\c", 1, 2, L"Migrated"));
    add(list, record(L"C:\\b", 1, 3, L"Recalled"));
    add(list, record(L"C:\\a", 1, 4, L"Migrated"));
    add(list, record(L"C:\\e", 1, 5, L""));
    UQFileListItem::Array ascending;
    list.mf_getSorted(ascending, FileListOrder::BY_RESULT, 1);
    EXPECT_EQ((std::vector<std::string>{"C:\\e", "C:\\a", "C:\\c", "C:\\b", "C:\\d"}), paths(ascending));
    UQFileListItem::Array descending;
    list.mf_getSorted(descending, FileListOrder::BY_RESULT, 0);
    EXPECT_EQ((std::vector<std::string>{"C:\\b", "C:\\d", "C:\\a", "C:\\c", "C:\\e"}), paths(descending));
}

TEST(FileVersionList, AnEmptyListSortsToNothingWithoutAWarning) {
    LogCheck log;
    FileVersionList list;
    UQFileListItem::Array items;
    list.mf_getSorted(items, FileListOrder::BY_RESULT, 1);
    list.mf_getSorted(items, FileListOrder::BY_PATH, 0);
    EXPECT_EQ(0, items.GetSize());
    EXPECT_EQ(nullptr, list.mf_find(L"C:\\a"));
    EXPECT_EQ(std::vector<LogLine>{}, log.lines());
}

TEST(FileVersionList, AVersionThatCannotBeAllocatedLeavesItsItemAsItWas) {
    FileVersionList list;
    add(list, record(L"C:\\a.txt", 1, 1));
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    std::string problem;
    EXPECT_EQ("_E_::Memory", thrownCategory([&] { list.mf_add(record(L"C:\\a.txt", 2, 2), problem); }));
    UQAllocationInjection::mf_clearInjection();
    const UQFileListItem* item = list.mf_find(L"C:\\a.txt");
    ASSERT_NE(nullptr, item);
    EXPECT_EQ(1, item->mf_getVersionCount());
    EXPECT_EQ(1u, item->mf_getVersion());
    const std::string time = utf8(record(L"C:\\a.txt", 2, 2).lastWriteTime.mf_toString());
    const std::vector<LogLine> expected = {
        {'E', "UQFileListItem::mf_implAddVersion",
         "No memory for adding file item version\r\n    Version=2, size=1002, last write time=" + time},
        {'E', "UQFileListItem::mf_addVersion",
         "Failure adding file list entry version: %sVersion=%lu, size=%s, last write time=%s\r\n"}};
    EXPECT_EQ(expected, log.lines());
    // The refused line is not remembered: the same version goes in once memory is back.
    add(list, record(L"C:\\a.txt", 2, 2));
    EXPECT_EQ(CString(L"1, 2"), list.mf_find(L"C:\\a.txt")->mf_getRangesDisplayString());
}
