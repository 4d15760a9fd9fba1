// Allocation failures inside a list add: the category reaches the caller, the innermost record comes
// first and the add overload's own record last, nothing is half-added and the lock is free afterwards.
#include "guibase/filelist/UQFileList.h"
#include "interfaces/korbase_testing.h"

#include "FileListTestSupport.h"

#include <vector>

using namespace filelisttest;

namespace {

const char* const TIME_TEXT = "2024-03-07 14:05:09";

UQCMEntry entry(const wchar_t* path, std::uint32_t version) {
    return UQCMEntry(path, version, UQFileSize(2048), testTime());
}

std::string cmEntryText(const std::string& path, std::uint32_t version) {
    return "'" + path + "' v" + std::to_string(version) + " 2048 bytes " + TIME_TEXT;
}

std::string itemRecordTail(const std::string& path, std::uint32_t version, const std::string& size = "2048",
                           const std::string& time = TIME_TEXT) {
    return "Path='" + path + "', file-version=" + std::to_string(version) + ", file-size=" + size +
           ", last-write-time=" + time;
}

// A list that already holds a.txt (version 1), so that adds search a non-empty array.
class FileListFaults : public ::testing::Test {
protected:
    void SetUp() override { list.mf_add(entry(L"C:\\data\\a.txt", 1), L"Migrated"); }
    void TearDown() override { UQAllocationInjection::mf_clearInjection(); }

    // Another thread adds a new path right after the failure: the lock was left.
    void expectLockFree() {
        EXPECT_EQ(categoryOnOtherThread([&] { list.mf_add(entry(L"C:\\data\\z.txt", 1), L"Migrated"); }),
                  "no exception");
    }

    UQFileList list;
};

} // namespace

TEST_F(FileListFaults, NullItemAllocationIsMemoryAndAddsNothing) {
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\b.txt", 3), L"Migrated"); }), "_E_::Memory");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{{'E', "UQFileListBase::mf_implAddItem",
                               "No memory for file list item\r\n    " + itemRecordTail("C:\\data\\b.txt", 3)},
                              {'E', "UQFileList::mf_add::2",
                               "Failure adding file item: " + errorText(UQErrno::_E_::Memory) +
                                   "\r\n    CMEntry: " + cmEntryText("C:\\data\\b.txt", 3)}}));
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    expectLockFree();
    EXPECT_EQ(list.mf_getCurrentItemCount(), 2);
}

TEST_F(FileListFaults, ThrownItemAllocationKeepsItsCategory) {
    LogCheck log;
    UQAllocationInjection::mf_injectError(0, UQErrno::_E_::Internal);
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\b.txt", 3), L"Migrated"); }),
              "_E_::Internal");
    const std::string internal = errorText(UQErrno::_E_::Internal);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListBase::mf_implAddItem",
                                     "Failure creating file list item: " + internal + "\r\n    " +
                                         itemRecordTail("C:\\data\\b.txt", 3)},
                                    {'E', "UQFileList::mf_add::2",
                                     "Failure adding file item: " + internal +
                                         "\r\n    CMEntry: " + cmEntryText("C:\\data\\b.txt", 3)}}));
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    expectLockFree();
}

TEST_F(FileListFaults, NullVersionAllocationInANewItemFreesTheItem) {
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(1); // the item's memory comes, its first version's does not
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\b.txt", 3), L"Migrated"); }), "_E_::Memory");
    const std::string memory = errorText(UQErrno::_E_::Memory);
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQFileListItem::mf_implAddVersion",
             std::string(
                 "No memory for adding file item version\r\n    Version=3, size=2048, last write time=") +
                 TIME_TEXT},
            {'E', "UQFileListItem::UQFileListItem::1",
             "Failure adding version to file list: " + memory +
                 "\r\n    File-version=3, file-size=2048, last-write-time=" + TIME_TEXT},
            {'E', "UQFileListBase::mf_implAddItem",
             "Failure creating file list item: " + memory + "\r\n    " +
                 itemRecordTail("C:\\data\\b.txt", 3)},
            {'E', "UQFileList::mf_add::2",
             "Failure adding file item: " + memory +
                 "\r\n    CMEntry: " + cmEntryText("C:\\data\\b.txt", 3)}}));
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    expectLockFree();
}

TEST_F(FileListFaults, NullVersionAllocationForAKnownPathLeavesTheItemAsItWas) {
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\a.txt", 2), L"Migrated"); }), "_E_::Memory");
    const std::string memory = errorText(UQErrno::_E_::Memory);
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQFileListItem::mf_implAddVersion",
             std::string(
                 "No memory for adding file item version\r\n    Version=2, size=2048, last write time=") +
                 TIME_TEXT},
            {'E', "UQFileListItem::mf_addVersion",
             "Failure adding file list entry version: %sVersion=%lu, size=%s, last write time=%s\r\n"},
            {'E', "UQFileListBase::mf_implAddItem",
             "Failure adding version to file list entry: " + memory +
                 "\r\n    File list item: a.txt - 2024-03-07 - "
                 "14:05:09\r\n    " +
                 itemRecordTail("C:\\data\\a.txt", 2)},
            {'E', "UQFileList::mf_add::2",
             "Failure adding file item: " + memory +
                 "\r\n    CMEntry: " + cmEntryText("C:\\data\\a.txt", 2)}}));
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(versions(*items[0]), (std::vector<std::uint32_t>{1}));
    EXPECT_EQ(items[0]->mf_getVersion(), 1u);
}

TEST_F(FileListFaults, ThrownVersionAllocationForAKnownPathKeepsItsCategory) {
    LogCheck log;
    UQAllocationInjection::mf_injectError(0, UQErrno::_E_::Memory);
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\a.txt", 2), L"Migrated"); }), "_E_::Memory");
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQFileListItem::mf_implAddVersion",
                                 "Failure adding file item version: " + errorText(UQErrno::_E_::Memory) +
                                     "\r\n    Version=2, size=2048, last write time=" + TIME_TEXT}));
    EXPECT_EQ(lines[1].function, "UQFileListItem::mf_addVersion");
    EXPECT_EQ(lines[2].function, "UQFileListBase::mf_implAddItem");
    EXPECT_EQ(lines[2].text.rfind("Failure adding version to file list entry: ", 0), 0u) << lines[2].text;
    EXPECT_EQ(lines[3].function, "UQFileList::mf_add::2");
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    expectLockFree();
    list.mf_close();
    EXPECT_EQ(ListItems(list)[0]->mf_getVersionCount(), 1);
}

TEST_F(FileListFaults, BackupEventFailureNamesTheEvent) {
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory(
                  [&] { list.mf_add(UQBackupEvent(L"C:\\data\\b.txt", UQSeverity::Info, L"Backed up")); }),
              "_E_::Memory");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQFileListBase::mf_implAddItem",
                   "No memory for file list item\r\n    " +
                       itemRecordTail("C:\\data\\b.txt", 0, "0", "1601-01-01 00:00:00")},
                  {'E', "UQFileList::mf_add::3",
                   "Failure adding file item: " + errorText(UQErrno::_E_::Memory) +
                       "\r\n    BackupEvent: BackupEvent path='C:\\data\\b.txt' outcome='Backed up'"}}));
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    expectLockFree();
}

TEST_F(FileListFaults, SourceEventFailureNamesTheEvent) {
    LogCheck log;
    UQAllocationInjection::mf_injectError(0, UQErrno::_E_::Memory);
    EXPECT_EQ(
        thrownCategory([&] { list.mf_add(UQSourceEvent(L"C:\\data", L"b.txt", UQSeverity::Info, L"Seen")); }),
        "_E_::Memory");
    const std::string memory = errorText(UQErrno::_E_::Memory);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQFileListBase::mf_implAddItem",
                   "Failure creating file list item: " + memory + "\r\n    " +
                       itemRecordTail("C:\\data\\b.txt", 0, "0", "1601-01-01 00:00:00")},
                  {'E', "UQFileList::mf_add::4",
                   "Failure adding file item: " + memory +
                       "\r\n    SourceEvent: SourceEvent dir='C:\\data' file='b.txt' outcome='Seen'"}}));
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    expectLockFree();
}

TEST_F(FileListFaults, RefusalOnAClosedListLeavesTheLockFree) {
    list.mf_close();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\b.txt", 1), L"Migrated"); }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(categoryOnOtherThread([&] { list.mf_clear(); }), "no exception");
    EXPECT_EQ(list.mf_getCurrentItemCount(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQFileList::mf_add::2", "File item list has already been closed"}}));
}

TEST_F(FileListFaults, TheListTakesAddsAgainAfterAFailure) {
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\data\\b.txt", 1), L"Migrated"); }), "_E_::Memory");
    list.mf_add(entry(L"C:\\data\\b.txt", 1), L"Migrated");
    list.mf_add(entry(L"C:\\data\\b.txt", 2), L"Migrated");
    list.mf_close();
    ListItems items(list);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\data\\a.txt", "C:\\data\\b.txt"}));
    EXPECT_EQ(versions(*items[1]), (std::vector<std::uint32_t>{1, 2}));
}
