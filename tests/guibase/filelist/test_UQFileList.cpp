#include "guibase/filelist/UQFileList.h"

#include "FileListTestSupport.h"

#include <vector>

using namespace filelisttest;

namespace {

UQCMEntry entry(const wchar_t* path, std::uint32_t version, std::int64_t size = 2048) {
    return UQCMEntry(path, version, UQFileSize(size), testTime());
}

void addAll(UQFileList& list, std::initializer_list<const wchar_t*> paths) {
    for (const wchar_t* p : paths)
        list.mf_add(entry(p, 1), L"Migrated");
}

} // namespace

TEST(UQFileList, NewListIsOpenAndEmpty) {
    LogCheck log;
    UQFileList list;
    EXPECT_EQ(list.mf_implIsClosed(), 0);
    EXPECT_EQ(list.mf_getCurrentItemCount(), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQFileList, CMEntryGivesPathVersionSizeTimeAndResult) {
    UQFileList list;
    list.mf_add(entry(L"\\\\srv\\data\\a.txt", 3, 4096), L"Migrated");
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    const UQFileListItem& item = *items[0];
    EXPECT_EQ(utf8(item.mf_getPath()), "\\\\srv\\data\\a.txt");
    EXPECT_EQ(item.mf_getVersion(), 3u);
    EXPECT_EQ(item.mf_getSize().mf_getValue(), 4096);
    EXPECT_EQ(item.mf_getLastWriteTime(), testTime());
    EXPECT_EQ(utf8(item.mf_getResult()), "Migrated");
    EXPECT_EQ(item.mf_isSelected(), 0);
}

TEST(UQFileList, BackupEventGivesVersionZeroAndTheOutcomeText) {
    UQFileList list;
    list.mf_add(UQBackupEvent(L"C:\\work\\report.doc", UQSeverity::Error, L"Access denied"));
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(utf8(items[0]->mf_getPath()), "C:\\work\\report.doc");
    EXPECT_EQ(items[0]->mf_getVersion(), 0u);
    EXPECT_EQ(items[0]->mf_getSize().mf_getValue(), 0);
    EXPECT_EQ(items[0]->mf_getLastWriteTime().mf_getValue(), 0u);
    EXPECT_EQ(utf8(items[0]->mf_getResult()), "Access denied");
    // The list stores a default severity whatever the event says.
    EXPECT_EQ(items[0]->mf_getSeverity().mf_getValue(), UQSeverity().mf_getValue());
}

TEST(UQFileList, SourceEventJoinsDirectoryAndFileName) {
    UQFileList list;
    list.mf_add(UQSourceEvent(L"C:\\work", L"a.txt", UQSeverity::Info, L"Premigrated"));
    list.mf_add(UQSourceEvent(L"C:\\work\\", L"b.txt", UQSeverity::Warning, L"Skipped"));
    list.mf_close();
    ListItems items(list);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\work\\a.txt", "C:\\work\\b.txt"}));
    EXPECT_EQ(utf8(items[0]->mf_getResult()), "Premigrated");
    EXPECT_EQ(utf8(items[1]->mf_getResult()), "Skipped");
    EXPECT_EQ(items[1]->mf_getVersion(), 0u);
    EXPECT_EQ(items[1]->mf_getSize().mf_getValue(), 0);
    EXPECT_EQ(items[1]->mf_getLastWriteTime().mf_getValue(), 0u);
}

TEST(UQFileList, SamePathTwiceGivesOneItemWithTwoVersionsHighestSelected) {
    LogCheck log;
    UQFileList list;
    list.mf_add(entry(L"C:\\data\\a.txt", 4), L"Migrated");
    list.mf_add(entry(L"C:\\data\\a.txt", 2, 99), L"Failed");
    EXPECT_EQ(list.mf_getCurrentItemCount(), 1);
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(versions(*items[0]), (std::vector<std::uint32_t>{4, 2}));
    EXPECT_EQ(items[0]->mf_getVersion(), 4u);
    EXPECT_EQ(items[0]->mf_getVersionIndex(), 0);
    // The item keeps the result of its creation.
    EXPECT_EQ(utf8(items[0]->mf_getResult()), "Migrated");
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQFileList, LaterHigherVersionOfTheSamePathTakesTheSelection) {
    UQFileList list;
    list.mf_add(entry(L"C:\\data\\a.txt", 1), L"Migrated");
    list.mf_add(entry(L"C:\\data\\a.txt", 7, 700), L"Migrated");
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(items[0]->mf_getVersion(), 7u);
    EXPECT_EQ(items[0]->mf_getSize().mf_getValue(), 700);
}

TEST(UQFileList, PathsInAscendingOrderMergeWithTheirItems) {
    UQFileList list;
    addAll(list, {L"C:\\a", L"C:\\a", L"C:\\b", L"C:\\c", L"C:\\c", L"C:\\c"});
    list.mf_close();
    ListItems items(list);
    EXPECT_EQ(paths(items), (std::vector<std::string>{"C:\\a", "C:\\b", "C:\\c"}));
    EXPECT_EQ(items[0]->mf_getVersionCount(), 2);
    EXPECT_EQ(items[1]->mf_getVersionCount(), 1);
    EXPECT_EQ(items[2]->mf_getVersionCount(), 3);
}

TEST(UQFileList, PathsOutOfOrderGiveASecondItemForTheSamePath) {
    // b is appended after a and a1, where the halving search for b never looks.
    UQFileList list;
    addAll(list, {L"b", L"a", L"a1", L"b"});
    list.mf_close();
    EXPECT_EQ(paths(ListItems(list)), (std::vector<std::string>{"b", "a", "a1", "b"}));
}

TEST(UQFileList, PathsBAThenBAgainGiveTwoItemsForB) {
    // The search of [b, a] for b looks at the middle (a) first, goes right and misses the first b.
    UQFileList list;
    addAll(list, {L"b", L"a", L"b"});
    list.mf_close();
    EXPECT_EQ(paths(ListItems(list)), (std::vector<std::string>{"b", "a", "b"}));
}

TEST(UQFileList, PathsDifferingInCaseAreDifferentItems) {
    UQFileList list;
    addAll(list, {L"C:\\A.txt", L"C:\\a.txt"});
    list.mf_close();
    EXPECT_EQ(list.mf_getItemCount(), 2u);
}

TEST(UQFileList, GetListOnAnOpenListFailsWithInitialization) {
    UQFileList list;
    addAll(list, {L"C:\\a"});
    LogCheck log;
    UQFileListItem::Array items;
    EXPECT_EQ(thrownCategory([&] { list.mf_getList(items); }), "_E_::Initialization");
    EXPECT_EQ(items.GetSize(), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListBase::mf_getList",
                                     "File item list must be closed before items can be accessed"}}));
}

TEST(UQFileList, GetListIntoANonEmptyArrayFailsWithParameterAndLeavesTheArray) {
    UQFileList list;
    addAll(list, {L"C:\\a", L"C:\\b"});
    list.mf_close();
    UQFileListItem foreign(L"C:\\foreign", 5, UQFileSize(1), testTime(), L"", UQSeverity());
    UQFileListItem::Array items;
    items.Add(&foreign);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_getList(items); }), "_E_::Parameter");
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(items[0], &foreign);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListBase::mf_getList", "Parameter list is not empty"}}));
}

TEST(UQFileList, TheOutputArrayIsCheckedBeforeTheListState) {
    UQFileList list;
    UQFileListItem foreign(L"C:\\foreign", 5, UQFileSize(1), testTime(), L"", UQSeverity());
    UQFileListItem::Array items;
    items.Add(&foreign);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_getList(items); }), "_E_::Parameter");
    EXPECT_EQ(thrownCategory([&] { list.mf_getSelectedList(items); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQFileListBase::mf_getList", "Parameter list is not empty"},
                               {'E', "UQFileListBase::mf_getSelectedList", "Parameter list is not empty"}}));
    EXPECT_EQ(items.GetSize(), 1);
}

TEST(UQFileList, GetListGivesEveryItemInListOrder) {
    UQFileList list;
    addAll(list, {L"C:\\a", L"C:\\b", L"C:\\c"});
    list.mf_close();
    ListItems first(list);
    ListItems second(list);
    EXPECT_EQ(paths(first), (std::vector<std::string>{"C:\\a", "C:\\b", "C:\\c"}));
    // Borrowed pointers: both reads see the same items.
    for (INT_PTR i = 0; i < first.GetSize(); ++i)
        EXPECT_EQ(first[i], second[i]);
}

TEST(UQFileList, SelectedListGivesTheSelectedItemsInListOrder) {
    UQFileList list;
    addAll(list, {L"C:\\a", L"C:\\b", L"C:\\c", L"C:\\d"});
    list.mf_close();
    ListItems all(list);
    all[3]->mf_setSelected(1);
    all[1]->mf_setSelected(1);
    UQFileListItem::Array selected;
    list.mf_getSelectedList(selected);
    EXPECT_EQ(paths(selected), (std::vector<std::string>{"C:\\b", "C:\\d"}));
}

TEST(UQFileList, SelectedListWithNothingSelectedIsEmpty) {
    UQFileList list;
    addAll(list, {L"C:\\a"});
    list.mf_close();
    UQFileListItem::Array selected;
    list.mf_getSelectedList(selected);
    EXPECT_EQ(selected.GetSize(), 0);
}

TEST(UQFileList, SelectedListOnAnOpenListFailsWithInitialization) {
    UQFileList list;
    LogCheck log;
    UQFileListItem::Array items;
    EXPECT_EQ(thrownCategory([&] { list.mf_getSelectedList(items); }), "_E_::Initialization");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListBase::mf_getSelectedList",
                                     "File item list must be closed before items can be accessed"}}));
}

TEST(UQFileList, ItemCountOfAnOpenListFailsWhileTheCurrentCountAnswers) {
    UQFileList list;
    addAll(list, {L"C:\\a", L"C:\\b"});
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_getItemCount(); }), "_E_::Initialization");
    EXPECT_EQ(list.mf_getCurrentItemCount(), 2);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileListBase::mf_getItemCount",
                                     "File item list must be close before items can be accessed"}}));
    list.mf_close();
    EXPECT_EQ(list.mf_getItemCount(), 2u);
    EXPECT_EQ(list.mf_getCurrentItemCount(), 2);
}

TEST(UQFileList, ClosingTwiceKeepsTheListClosed) {
    UQFileList list;
    list.mf_close();
    list.mf_close();
    EXPECT_EQ(list.mf_implIsClosed(), 1);
}

TEST(UQFileList, ClearOnAClosedListLeavesAnEmptyOpenListThatTakesAdds) {
    UQFileList list;
    addAll(list, {L"C:\\a", L"C:\\b"});
    list.mf_close();
    list.mf_clear();
    EXPECT_EQ(list.mf_implIsClosed(), 0);
    EXPECT_EQ(list.mf_getCurrentItemCount(), 0);
    list.mf_add(entry(L"C:\\z", 9), L"Migrated");
    list.mf_close();
    EXPECT_EQ(paths(ListItems(list)), (std::vector<std::string>{"C:\\z"}));
}

TEST(UQFileList, ClearOnAnOpenListEmptiesIt) {
    UQFileList list;
    addAll(list, {L"C:\\a"});
    list.mf_clear();
    EXPECT_EQ(list.mf_implIsClosed(), 0);
    EXPECT_EQ(list.mf_getCurrentItemCount(), 0);
}

TEST(UQFileList, EveryAddOverloadIsRefusedOnAClosedListAndAddsNothing) {
    UQFileList list;
    addAll(list, {L"C:\\a"});
    list.mf_close();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\b", 1), L"Migrated"); }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(thrownCategory([&] { list.mf_add(UQBackupEvent(L"C:\\c", UQSeverity::Info, L"Backed up")); }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(thrownCategory([&] { list.mf_add(UQSourceEvent(L"C:\\", L"d", UQSeverity::Info, L"Seen")); }),
              "_E_::AlreadyInitialized");
    // The same path as the one item must not gain a version either.
    EXPECT_EQ(thrownCategory([&] { list.mf_add(entry(L"C:\\a", 2), L"Migrated"); }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQFileList::mf_add::2", "File item list has already been closed"},
                               {'E', "UQFileList::mf_add::3", "File item list has already been closed"},
                               {'E', "UQFileList::mf_add::4", "File item list has already been closed"},
                               {'E', "UQFileList::mf_add::2", "File item list has already been closed"}}));
    EXPECT_EQ(list.mf_getItemCount(), 1u);
    ListItems items(list);
    EXPECT_EQ(items[0]->mf_getVersionCount(), 1);
}

TEST(UQFileList, SortAndResetAreRefusedOnAnOpenList) {
    UQFileList list;
    addAll(list, {L"C:\\b", L"C:\\a"});
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_sort(1); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_sortVersions(1); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_reset(); }), "_E_::Initialization");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQFileListBase::mf_sort", "File item list must be closed before items can be sorted"},
            {'E', "UQFileListBase::mf_sortVersions",
             "File item list must be closed before items can be sorted"},
            {'E', "UQFileListBase::mf_reset", "File item list must be closed before items can be reset"}}));
    // Still open and unsorted.
    list.mf_close();
    EXPECT_EQ(paths(ListItems(list)), (std::vector<std::string>{"C:\\b", "C:\\a"}));
}

TEST(UQFileList, SortOrdersByPathInBothDirectionsCaseSensitive) {
    UQFileList list;
    addAll(list, {L"C:\\b", L"C:\\a", L"C:\\B", L"C:\\c"});
    list.mf_close();
    list.mf_sort(1);
    EXPECT_EQ(paths(ListItems(list)), (std::vector<std::string>{"C:\\B", "C:\\a", "C:\\b", "C:\\c"}));
    list.mf_sort(0);
    EXPECT_EQ(paths(ListItems(list)), (std::vector<std::string>{"C:\\c", "C:\\b", "C:\\a", "C:\\B"}));
}

TEST(UQFileList, SortingAnEmptyListOnlyWarns) {
    UQFileList list;
    list.mf_close();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_sort(1); }), "no exception");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQFileListItem::mf_sortByPath", "No file list items to sort"}}));
}

TEST(UQFileList, SortVersionsOrdersEveryItemAndSelectsItsHighest) {
    UQFileList list;
    for (std::uint32_t v : {3u, 1u, 5u, 2u})
        list.mf_add(entry(L"C:\\a", v), L"Migrated");
    for (std::uint32_t v : {2u, 9u})
        list.mf_add(entry(L"C:\\b", v), L"Migrated");
    list.mf_close();
    ListItems items(list);
    ASSERT_EQ(items.GetSize(), 2);
    items[0]->mf_setVersionIndex(1);

    list.mf_sortVersions(1);
    EXPECT_EQ(versions(*items[0]), (std::vector<std::uint32_t>{1, 2, 3, 5}));
    EXPECT_EQ(items[0]->mf_getVersionIndex(), 3);
    EXPECT_EQ(versions(*items[1]), (std::vector<std::uint32_t>{2, 9}));
    EXPECT_EQ(items[1]->mf_getVersion(), 9u);

    list.mf_sortVersions(0);
    EXPECT_EQ(versions(*items[0]), (std::vector<std::uint32_t>{5, 3, 2, 1}));
    EXPECT_EQ(items[0]->mf_getVersionIndex(), 0);
    EXPECT_EQ(items[0]->mf_getVersion(), 5u);
    EXPECT_EQ(utf8(items[0]->mf_getRangesDisplayString()), "1 - 3");
}

TEST(UQFileList, ResetClearsResultSeverityAndSelectionAndKeepsVersions) {
    UQFileList list;
    list.mf_add(entry(L"C:\\a", 1), L"Migrated");
    list.mf_add(entry(L"C:\\a", 2), L"Migrated");
    list.mf_add(entry(L"C:\\b", 1), L"Failed");
    list.mf_close();
    ListItems items(list);
    items[0]->mf_setSelected(1);
    items[1]->mf_setSelected(1);
    list.mf_reset();
    for (INT_PTR i = 0; i < items.GetSize(); ++i) {
        EXPECT_TRUE(items[i]->mf_getResult().IsEmpty());
        EXPECT_EQ(items[i]->mf_getSeverity().mf_getValue(), 0);
        EXPECT_EQ(items[i]->mf_isSelected(), 0);
    }
    EXPECT_EQ(items[0]->mf_getVersionCount(), 2);
    UQFileListItem::Array selected;
    list.mf_getSelectedList(selected);
    EXPECT_EQ(selected.GetSize(), 0);
}
