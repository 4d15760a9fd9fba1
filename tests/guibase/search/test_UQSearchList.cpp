#include "guibase/search/UQSearchList.h"
#include "interfaces/korbase_testing.h"

#include "SearchRecords.h"

#include <chrono>
#include <future>
#include <utility>
#include <vector>

using namespace search_test;

namespace {

std::vector<std::string> paths(const UQSearchFileItem::Array& items) {
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < items.GetSize(); ++i)
        out.push_back(utf8(items[i]->mf_getQueryData().mf_getObjectPath()));
    return out;
}

std::vector<std::string> fileList(UQSearchList& list, int a = 0, int b = 0, int c = 0, int d = 0, int e = 0,
                                  int f = 0) {
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, a, b, c, d, e, f);
    return paths(items);
}

std::vector<std::string> selectedList(UQSearchList& list, int byAccessOrder) {
    UQSearchFileItem::Array items;
    list.mf_getSelectedFileList(items, byAccessOrder);
    return paths(items);
}

LogLine summary(int files) {
    return {'T', "UQSearchList::mf_close",
            "Created, sorted and closed search file list (" + std::to_string(files) + " files)"};
}

// Whether another thread can take the list's lock within a few seconds.
bool lockIsFree(UQSearchList& list) {
    auto other = std::async(std::launch::async, [&list] { return list.mf_getQueryItemCount(); });
    return other.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
}

// One closed list with an item of each state, named after its state.
void addOneOfEachState(UQSearchList& list) {
    list.mf_add(record(L"\\\\srv\\1 available", 1));
    list.mf_add(record(L"\\\\srv\\2 available protected", 1, P));
    list.mf_add(record(L"\\\\srv\\3 expiring", 1, 0, expiresOn()));
    list.mf_add(record(L"\\\\srv\\4 expiring protected", 1, P, expiresOn()));
    list.mf_add(record(L"\\\\srv\\5 deleted", 1, E | D));
    list.mf_add(record(L"\\\\srv\\6 deleted protected", 1, E | D | P));
}

const std::vector<std::string> ALL_STATES = {"\\\\srv\\1 available", "\\\\srv\\2 available protected",
                                             "\\\\srv\\3 expiring",  "\\\\srv\\4 expiring protected",
                                             "\\\\srv\\5 deleted",   "\\\\srv\\6 deleted protected"};

// Closes the list over the records given and one more, "\\srv\zz", whose version finds no memory: the
// list then holds the items of the given records, unselected, and does not know their path order.
void closeWithoutKnownOrder(UQSearchList& list,
                            const std::vector<std::pair<const wchar_t*, UQQueryData::AccessKey>>& records) {
    for (const auto& r : records)
        list.mf_add(record(r.first, 1, 0, noExpiry(), r.second));
    list.mf_add(record(L"\\\\srv\\zz", 1));
    LogCheck log;
    // The sort's three buffers, then a version and an item per given record.
    UQAllocationInjection::mf_injectFailure(3 + 2 * static_cast<int>(records.size()));
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchList::mf_close", "No memory to create search file version"}}));
    EXPECT_EQ(list.mf_getFileItemCount(), records.size());
}

} // namespace

TEST(UQSearchList, NewListIsOpenAndEmpty) {
    UQSearchList list;
    EXPECT_EQ(list.mf_getQueryItemCount(), 0u);
    EXPECT_EQ(list.mf_hasProtectedItems(), 0);
    EXPECT_EQ(thrownCategory([&] { list.mf_getFileItemCount(); }), "_E_::Initialization");
}

TEST(UQSearchList, ClosingAnEmptyListLogsNoFiles) {
    LogCheck log;
    UQSearchList list;
    list.mf_close();
    EXPECT_EQ(list.mf_getFileItemCount(), 0u);
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), 0u);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{summary(0)}));
}

TEST(UQSearchList, CloseGroupsRecordsByPathWithVersionsAscending) {
    LogCheck log;
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\share\\B", 2));
    list.mf_add(record(L"\\\\srv\\share\\A", 1));
    list.mf_add(record(L"\\\\srv\\share\\B", 1));
    EXPECT_EQ(list.mf_getQueryItemCount(), 3u);
    list.mf_close();
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{summary(2)}));
    EXPECT_EQ(list.mf_getQueryItemCount(), 0u);
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    ASSERT_EQ(items.GetSize(), 2);
    EXPECT_EQ(utf8(items[0]->mf_getPath()), "\\\\srv\\share\\A");
    EXPECT_EQ(utf8(items[0]->mf_getRangesDisplayString()), "1");
    EXPECT_EQ(utf8(items[1]->mf_getPath()), "\\\\srv\\share\\B");
    EXPECT_EQ(utf8(items[1]->mf_getRangesDisplayString()), "1, 2");
    EXPECT_EQ(items[0]->mf_getSelectedVersion(), items[0]->mf_getLatestVersion());
    EXPECT_EQ(items[1]->mf_getSelectedVersion()->mf_getVersion(), 2u);
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), 2u);
}

TEST(UQSearchList, VersionsArrivingOutOfOrderAreListedAscending) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\f", 3));
    list.mf_add(record(L"\\\\srv\\f", 1));
    list.mf_add(record(L"\\\\srv\\f", 2));
    list.mf_close();
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(utf8(items[0]->mf_getRangesDisplayString()), "1 - 3");
    EXPECT_EQ(items[0]->mf_getLatestVersion()->mf_getVersion(), 3u);
}

TEST(UQSearchList, PathsDifferingOnlyInCaseAreOneFile) {
    UQSearchList list;
    list.mf_add(record(L"\\\\SRV\\Share\\Report.docx", 2));
    list.mf_add(record(L"\\\\srv\\share\\report.docx", 1));
    list.mf_close();
    EXPECT_EQ(list.mf_getFileItemCount(), 1u);
}

TEST(UQSearchList, EqualVersionsKeepTheOrderTheyWereAdded) {
    UQSearchList list;
    list.mf_add(
        UQQueryData(L"\\\\srv\\f", L"C:\\first", 2, writeTime(), UQFileSize(1), 0, noExpiry(), {1, 0}));
    list.mf_add(
        UQQueryData(L"\\\\srv\\f", L"C:\\second", 2, writeTime(), UQFileSize(1), 0, noExpiry(), {1, 0}));
    list.mf_close();
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    ASSERT_EQ(items.GetSize(), 1);
    EXPECT_EQ(utf8(items[0]->mf_getPath()), "C:\\first");
    EXPECT_EQ(utf8(items[0]->mf_getLatestVersion()->mf_getPath()), "C:\\second");
}

TEST(UQSearchList, ClosingTwiceIsAStateError) {
    UQSearchList list;
    list.mf_close();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::State");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQSearchList::mf_close", "Search list is already closed"}}));
}

TEST(UQSearchList, AddingAfterCloseIsRefused) {
    UQSearchList list;
    list.mf_close();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_add(record(L"\\\\srv\\a", 1)); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchList::mf_add", "Search item list has already been closed"}}));
    EXPECT_EQ(list.mf_getFileItemCount(), 0u);
}

TEST(UQSearchList, ClearReopensTheList) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1));
    list.mf_close();
    list.mf_clear();
    EXPECT_EQ(thrownCategory([&] { list.mf_getFileItemCount(); }), "_E_::Initialization");
    list.mf_add(record(L"\\\\srv\\b", 1));
    list.mf_add(record(L"\\\\srv\\c", 1));
    list.mf_close();
    EXPECT_EQ(fileList(list), (std::vector<std::string>{"\\\\srv\\b", "\\\\srv\\c"}));
}

TEST(UQSearchList, ProtectedFlagSurvivesClear) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1));
    EXPECT_EQ(list.mf_hasProtectedItems(), 0);
    list.mf_add(record(L"\\\\srv\\b", 1, P));
    EXPECT_EQ(list.mf_hasProtectedItems(), 1);
    list.mf_close();
    list.mf_clear();
    EXPECT_EQ(list.mf_hasProtectedItems(), 1);
}

TEST(UQSearchList, QueryItemCountIsZeroAfterClose) {
    UQSearchList list;
    for (std::uint32_t v = 1; v <= 5; ++v)
        list.mf_add(record(L"\\\\srv\\a", v));
    EXPECT_EQ(list.mf_getQueryItemCount(), 5u);
    list.mf_close();
    EXPECT_EQ(list.mf_getQueryItemCount(), 0u);
    EXPECT_EQ(list.mf_getFileItemCount(), 1u);
}

TEST(UQSearchList, ClosedListOperationsRefuseAnOpenList) {
    UQSearchList list;
    LogCheck log;
    UQSearchFileItem::Array items;
    EXPECT_EQ(thrownCategory([&] { list.mf_getFileList(items, 0, 0, 0, 0, 0, 0); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_getSelectedFileList(items, 0); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_getFileItemCount(); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_getSelectedFileItemCount(); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_sortByPath(1); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_selectLatest(); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_reset(); }), "_E_::Initialization");
    EXPECT_EQ(thrownCategory([&] { list.mf_clear(); }), "_E_::Initialization");
    const std::string accessed = "File item list must be close before items can be accessed";
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchList::mf_getFileList", accessed},
                               {'E', "UQSearchList::mf_getSelectedFileList", accessed},
                               {'E', "UQSearchList::mf_getFileItemCount", accessed},
                               {'E', "UQSearchList::mf_getSelectedFileItemCount", accessed},
                               {'E', "UQSearchList::mf_sortByPath",
                                "File item list must be close before items can be sorted"},
                               {'E', "UQSearchList::mf_selectLatest", "Search item list is not closed"},
                               {'E', "UQSearchList::mf_reset", "Search item list is not closed"},
                               {'E', "UQSearchList::mf_clear", "Search item list is not closed"},
                           }));
    EXPECT_EQ(items.GetSize(), 0);
}

TEST(UQSearchList, OutputArraysMustBeEmptyWhichIsCheckedFirst) {
    UQSearchList list;
    UQSearchFileItem::Array items;
    items.Add(nullptr);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_getFileList(items, 0, 0, 0, 0, 0, 0); }), "_E_::Parameter");
    EXPECT_EQ(thrownCategory([&] { list.mf_getSelectedFileList(items, 1); }), "_E_::Parameter");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{{'E', "UQSearchList::mf_getFileList", "Parameter list is not empty"},
                              {'E', "UQSearchList::mf_getSelectedFileList", "Parameter list is not empty"}}));
    EXPECT_EQ(items.GetSize(), 1);
}

TEST(UQSearchList, FileListWithoutFlagsHasEveryItem) {
    UQSearchList list;
    addOneOfEachState(list);
    list.mf_close();
    EXPECT_EQ(fileList(list), ALL_STATES);
}

TEST(UQSearchList, EachExclusionFlagLeavesOutItsOwnClass) {
    UQSearchList list;
    addOneOfEachState(list);
    list.mf_close();
    for (int flag = 0; flag < 6; ++flag) {
        int flags[6] = {0, 0, 0, 0, 0, 0};
        flags[flag] = 1;
        std::vector<std::string> expected = ALL_STATES;
        expected.erase(expected.begin() + flag);
        EXPECT_EQ(fileList(list, flags[0], flags[1], flags[2], flags[3], flags[4], flags[5]), expected)
            << "flag " << flag + 1;
    }
    EXPECT_EQ(fileList(list, 1, 1, 1, 1, 1, 1), std::vector<std::string>());
    EXPECT_EQ(
        fileList(list, 0, 1, 0, 1, 0, 1),
        (std::vector<std::string>{"\\\\srv\\1 available", "\\\\srv\\3 expiring", "\\\\srv\\5 deleted"}));
}

TEST(UQSearchList, FlagTwoLeavesOutProtectedAvailableOnly) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\plain", 1));
    list.mf_add(record(L"\\\\srv\\kept", 1, P));
    list.mf_add(record(L"\\\\srv\\event", 1, E | P, expiresOn()));
    list.mf_close();
    EXPECT_EQ(fileList(list, 0, 1, 0, 0, 0, 0), (std::vector<std::string>{"\\\\srv\\plain"}));
}

TEST(UQSearchList, FilterClassifiesTheLatestVersionLive) {
    LiveRecord::State state;
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\f", 1, 0, expiresOn()));
    list.mf_add(LiveRecord(record(L"\\\\srv\\f", 2), &state));
    list.mf_close();
    // The older version expires; the latest decides.
    EXPECT_EQ(fileList(list, 0, 0, 1, 0, 0, 0), std::vector<std::string>{"\\\\srv\\f"});
    EXPECT_EQ(fileList(list, 1, 0, 0, 0, 0, 0), std::vector<std::string>());
    state.bEventBased = 1;
    state.bDeletionStarted = 1;
    EXPECT_EQ(fileList(list, 1, 0, 0, 0, 0, 0), std::vector<std::string>{"\\\\srv\\f"});
    EXPECT_EQ(fileList(list, 0, 0, 0, 0, 1, 0), std::vector<std::string>());
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(utf8(items[0]->mf_getLatestVersion()->mf_getStatusString()), catalogue(3102));
}

TEST(UQSearchList, ResetDeselectsAndSelectLatestSelectsEveryItem) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1));
    list.mf_add(record(L"\\\\srv\\a", 2));
    list.mf_add(record(L"\\\\srv\\b", 1));
    list.mf_close();
    list.mf_reset();
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), 0u);
    EXPECT_EQ(selectedList(list, 0), std::vector<std::string>());
    EXPECT_EQ(selectedList(list, 1), std::vector<std::string>());
    list.mf_selectLatest();
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), 2u);
    EXPECT_EQ(selectedList(list, 0), (std::vector<std::string>{"\\\\srv\\a", "\\\\srv\\b"}));
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(items[0]->mf_getSelectedVersion()->mf_getVersion(), 2u);
}

TEST(UQSearchList, SelectedListLeavesOutUnselectedItems) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1));
    list.mf_add(record(L"\\\\srv\\b", 1));
    list.mf_add(record(L"\\\\srv\\c", 1));
    list.mf_close();
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    items[1]->mf_setSelected(0, 0);
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), 2u);
    EXPECT_EQ(selectedList(list, 0), (std::vector<std::string>{"\\\\srv\\a", "\\\\srv\\c"}));
}

TEST(UQSearchList, SelectedListInBackendAccessOrder) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1, 0, noExpiry(), {2, 10}));
    list.mf_add(record(L"\\\\srv\\b", 1, 0, noExpiry(), {1, 900}));
    list.mf_add(record(L"\\\\srv\\c", 1, 0, noExpiry(), {1, 20}));
    // Only the latest version's place counts.
    list.mf_add(record(L"\\\\srv\\d", 1, 0, noExpiry(), {1, 1}));
    list.mf_add(record(L"\\\\srv\\d", 2, 0, noExpiry(), {3, 5}));
    list.mf_close();
    EXPECT_EQ(selectedList(list, 1),
              (std::vector<std::string>{"\\\\srv\\c", "\\\\srv\\b", "\\\\srv\\a", "\\\\srv\\d"}));
    EXPECT_EQ(selectedList(list, 0),
              (std::vector<std::string>{"\\\\srv\\a", "\\\\srv\\b", "\\\\srv\\c", "\\\\srv\\d"}));
}

TEST(UQSearchList, SortByPathInBothDirections) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\dir\\x", 1));
    list.mf_add(record(L"\\\\srv\\dir-2", 1));
    list.mf_add(record(L"\\\\srv\\Dir\\a", 1));
    list.mf_close();
    // A directory's contents come before a sibling whose name extends the directory's.
    EXPECT_EQ(fileList(list),
              (std::vector<std::string>{"\\\\srv\\Dir\\a", "\\\\srv\\dir\\x", "\\\\srv\\dir-2"}));
    list.mf_sortByPath(0);
    EXPECT_EQ(fileList(list),
              (std::vector<std::string>{"\\\\srv\\dir-2", "\\\\srv\\dir\\x", "\\\\srv\\Dir\\a"}));
    list.mf_sortByPath(1);
    EXPECT_EQ(fileList(list),
              (std::vector<std::string>{"\\\\srv\\Dir\\a", "\\\\srv\\dir\\x", "\\\\srv\\dir-2"}));
}

TEST(UQSearchList, DestroyingAnOpenListDeletesItsRecords) {
    const int before = CountedRecord::alive();
    {
        UQSearchList list;
        list.mf_add(CountedRecord(record(L"\\\\srv\\a", 1)));
        list.mf_add(CountedRecord(record(L"\\\\srv\\b", 1)));
        EXPECT_EQ(CountedRecord::alive(), before + 2);
    }
    EXPECT_EQ(CountedRecord::alive(), before);
}

TEST(UQSearchList, ClearAndDestructionDeleteTheRecordsOfTheItems) {
    const int before = CountedRecord::alive();
    UQSearchList list;
    list.mf_add(CountedRecord(record(L"\\\\srv\\a", 1)));
    list.mf_add(CountedRecord(record(L"\\\\srv\\a", 2)));
    list.mf_close();
    EXPECT_EQ(CountedRecord::alive(), before + 2);
    list.mf_clear();
    EXPECT_EQ(CountedRecord::alive(), before);
    list.mf_add(CountedRecord(record(L"\\\\srv\\b", 1)));
    list.mf_close();
    EXPECT_EQ(CountedRecord::alive(), before + 1);
}

// ---------------------------------------------------------------------------------------------------------
// Failures

TEST(UQSearchList, CloneThatThrowsReachesTheCallerWithTheRecordInTheLog) {
    UQSearchList list;
    const FailingCloneRecord failing(record(L"\\\\srv\\bad", 3, P), UQErrno::_E_::Resource);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_add(failing); }), "_E_::Resource");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchList::mf_add",
                                "Failure clone/adding query data item: " + errorText(UQErrno::_E_::Resource) +
                                    "\r\n    Query-data: " + utf8(failing.mf_toString())}}));
    // The flag is set before the clone.
    EXPECT_EQ(list.mf_hasProtectedItems(), 1);
    EXPECT_EQ(list.mf_getQueryItemCount(), 0u);
    EXPECT_TRUE(lockIsFree(list));
    list.mf_add(record(L"\\\\srv\\good", 1));
    EXPECT_EQ(list.mf_getQueryItemCount(), 1u);
}

TEST(UQSearchList, CloneWithoutMemoryIsAMemoryError) {
    UQSearchList list;
    const UQQueryData data = record(L"\\\\srv\\a", 1);
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_add(data); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::string described = utf8(data.mf_toString());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQQueryData::mf_clone", "No memory to clone query data:\r\n    " + described},
                  {'E', "UQSearchList::mf_add",
                   "Failure clone/adding query data item: " + errorText(UQErrno::_E_::Memory) +
                       "\r\n    Query-data: " + described}}));
    EXPECT_EQ(list.mf_getQueryItemCount(), 0u);
}

TEST(UQSearchList, NullRecordFailsTheCloseAfterTheGoodOnes) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\b", 1));
    list.mf_add(NullCloneRecord(record(L"\\\\srv\\a", 1)));
    list.mf_add(record(L"\\\\srv\\c", 1));
    EXPECT_EQ(list.mf_getQueryItemCount(), 3u);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::DataCorrupted");
    // Null records are sorted to the end.
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQSearchList::mf_close", "Query data no. 2 is NULL"}}));
    EXPECT_TRUE(lockIsFree(list));
    EXPECT_EQ(list.mf_getQueryItemCount(), 0u);
    EXPECT_EQ(fileList(list), (std::vector<std::string>{"\\\\srv\\b", "\\\\srv\\c"}));
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::State");
}

TEST(UQSearchList, NoMemoryForAVersionInTheMiddleOfClose) {
    const int before = CountedRecord::alive();
    UQSearchList list;
    list.mf_add(CountedRecord(record(L"\\\\srv\\c", 1)));
    list.mf_add(CountedRecord(record(L"\\\\srv\\a", 1)));
    list.mf_add(CountedRecord(record(L"\\\\srv\\b", 1)));
    list.mf_add(CountedRecord(record(L"\\\\srv\\a", 3)));
    LogCheck log;
    // The allocations of the close: the sort's positions, keys and key texts, version a1, item a,
    // version a3, version b1 ...
    UQAllocationInjection::mf_injectFailure(6);
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchList::mf_close", "No memory to create search file version"}}));
    EXPECT_TRUE(lockIsFree(list));
    // Closed, with the item built so far; the selection of the latest versions was not reached.
    EXPECT_EQ(thrownCategory([&] { list.mf_add(record(L"\\\\srv\\d", 1)); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(list.mf_getFileItemCount(), 1u);
    EXPECT_EQ(list.mf_getSelectedFileItemCount(), 0u);
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(utf8(items[0]->mf_getRangesDisplayString()), "1, 3");
    // The records no version took are gone; the item keeps its two.
    EXPECT_EQ(CountedRecord::alive(), before + 2);
    list.mf_clear();
    EXPECT_EQ(CountedRecord::alive(), before);
    list.mf_add(record(L"\\\\srv\\e", 1));
    list.mf_close();
    EXPECT_EQ(list.mf_getFileItemCount(), 1u);
}

TEST(UQSearchList, NoMemoryForAnItemInTheMiddleOfClose) {
    const int before = CountedRecord::alive();
    UQSearchList list;
    list.mf_add(CountedRecord(record(L"\\\\srv\\a", 1)));
    list.mf_add(CountedRecord(record(L"\\\\srv\\b", 1)));
    list.mf_add(CountedRecord(record(L"\\\\srv\\c", 1)));
    LogCheck log;
    // The sort's three buffers, version a, item a, version b, item b.
    UQAllocationInjection::mf_injectFailure(6);
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchList::mf_close", "No memory to create search file item"}}));
    EXPECT_TRUE(lockIsFree(list));
    EXPECT_EQ(fileList(list), std::vector<std::string>{"\\\\srv\\a"});
    EXPECT_EQ(CountedRecord::alive(), before + 1);
}

TEST(UQSearchList, ErrorWhileMakingAVersionIsWrappedAndKeepsItsCategory) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1));
    list.mf_add(record(L"\\\\srv\\b", 1));
    LogCheck log;
    UQAllocationInjection::mf_injectError(5, UQErrno::_E_::Resource);
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::Resource");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQSearchList::mf_close",
                                     "Failure creating search file version of query data no. 1:\r\n    " +
                                         errorText(UQErrno::_E_::Resource)}}));
    EXPECT_EQ(fileList(list), std::vector<std::string>{"\\\\srv\\a"});
}

TEST(UQSearchList, FailedSortLeavesAClosedEmptyList) {
    const int before = CountedRecord::alive();
    UQSearchList list;
    for (const wchar_t* path : {L"\\\\srv\\d", L"\\\\srv\\c", L"\\\\srv\\b", L"\\\\srv\\a"})
        list.mf_add(CountedRecord(record(path, 1)));
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_close(); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::string bytes = std::to_string(4 * sizeof(std::uint64_t));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQQueryData::mf_sortByPathAndVersion::1",
                                                  "No memory for 4 sort entries (" + bytes + " bytes)"},
                                                 {'E', "UQSearchList::mf_close",
                                                  "Failure sorting query data list (4 items):\r\n    " +
                                                      errorText(UQErrno::_E_::Memory)}}));
    EXPECT_TRUE(lockIsFree(list));
    EXPECT_EQ(list.mf_getFileItemCount(), 0u);
    EXPECT_EQ(CountedRecord::alive(), before);
}

TEST(UQSearchList, AccessOrderWithoutMemoryForItsShortCutTakesTheComparisonSort) {
    UQSearchList list;
    list.mf_add(record(L"\\\\srv\\a", 1, 0, noExpiry(), {2, 0}));
    list.mf_add(record(L"\\\\srv\\b", 1, 0, noExpiry(), {1, 0}));
    list.mf_add(record(L"\\\\srv\\c", 1, 0, noExpiry(), {1, 0}));
    list.mf_close();
    UQSearchFileItem::Array items;
    LogCheck log;
    // The sort by place in path order finds no memory; the comparison sort then does the work.
    UQAllocationInjection::mf_injectFailure(0);
    list.mf_getSelectedFileList(items, 1);
    UQAllocationInjection::mf_clearInjection();
    EXPECT_TRUE(log.lines().empty());
    EXPECT_EQ(paths(items), (std::vector<std::string>{"\\\\srv\\b", "\\\\srv\\c", "\\\\srv\\a"}));
}

TEST(UQSearchList, FailedAccessOrderSortKeepsTheSelectedItems) {
    UQSearchList list;
    closeWithoutKnownOrder(list, {{L"\\\\srv\\a", {2, 0}}, {L"\\\\srv\\b", {1, 0}}});
    list.mf_selectLatest();
    UQSearchFileItem::Array items;
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_getSelectedFileList(items, 1); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::string bytes = std::to_string(3 * 2 * sizeof(void*));
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQQueryData::mf_sortByAccessOrder", "No memory for 3 sort entries (" + bytes + " bytes)"},
            {'E', "UQSearchList::mf_getSelectedFileList",
             "Failure sorting selected search file items by backend access order:\r\n    " +
                 errorText(UQErrno::_E_::Memory)}}));
    EXPECT_EQ(paths(items), (std::vector<std::string>{"\\\\srv\\a", "\\\\srv\\b"}));
    EXPECT_TRUE(lockIsFree(list));
}

TEST(UQSearchList, PathSortAfterCloseTurnsTheOrderWithoutMemory) {
    UQSearchList list;
    for (const wchar_t* path : {L"\\\\srv\\b", L"\\\\srv\\c", L"\\\\srv\\a"})
        list.mf_add(record(path, 1));
    list.mf_close();
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    list.mf_sortByPath(0);
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(fileList(list), (std::vector<std::string>{"\\\\srv\\c", "\\\\srv\\b", "\\\\srv\\a"}));
    UQAllocationInjection::mf_injectFailure(0);
    list.mf_sortByPath(1);
    list.mf_sortByPath(1);
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(fileList(list), (std::vector<std::string>{"\\\\srv\\a", "\\\\srv\\b", "\\\\srv\\c"}));
    EXPECT_TRUE(log.lines().empty());
}

TEST(UQSearchList, FailedPathSortKeepsTheOrder) {
    UQSearchList list;
    closeWithoutKnownOrder(list, {{L"\\\\srv\\a", {0, 0}}, {L"\\\\srv\\b", {0, 0}}});
    LogCheck log;
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { list.mf_sortByPath(0); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    const std::string bytes = std::to_string(2 * sizeof(void*));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQQueryData::mf_sortByPathAndVersion::2",
                                                  "No memory for 2 sort entries (" + bytes + " bytes)"},
                                                 {'E', "UQSearchList::mf_sortByPath",
                                                  "Failure sorting search list files descending:\r\n    " +
                                                      errorText(UQErrno::_E_::Memory)}}));
    EXPECT_TRUE(lockIsFree(list));
    EXPECT_EQ(fileList(list), (std::vector<std::string>{"\\\\srv\\a", "\\\\srv\\b"}));
    // Sorted once, the order is known again.
    list.mf_sortByPath(0);
    EXPECT_EQ(fileList(list), (std::vector<std::string>{"\\\\srv\\b", "\\\\srv\\a"}));
}

TEST(UQSearchList, PathsDifferingOnlyInCaseAreOneFileInEveryScript) {
    LogCheck log;
    UQSearchList list;
    list.mf_add(record(L"C:\\u\\\u0490\u0430\u043d\u043e\u043a.txt", 1));
    list.mf_add(record(L"C:\\u\\\u0491\u0430\u043d\u043e\u043a.txt", 2));
    list.mf_add(record(L"C:\\u\\\u03a3\u03b7\u03bc\u03b5\u03b9\u03ce\u03c3\u03b5\u03b9\u03c2", 1));
    list.mf_add(record(L"C:\\U\\\u03a3\u0397\u039c\u0395\u0399\u038f\u03a3\u0395\u0399\u03a3", 2));
    list.mf_add(record(L"C:\\u\\\uff41\u0561\u01c6", 1));
    list.mf_add(record(L"c:\\u\\\uff21\u0531\u01c4", 2));
    list.mf_close();
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{summary(3)}));
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    ASSERT_EQ(items.GetSize(), 3);
    for (INT_PTR i = 0; i < items.GetSize(); ++i)
        EXPECT_EQ(items[i]->mf_getVersionCount(), 2) << i;
}
