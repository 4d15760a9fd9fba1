// The intrusive list: order, ownership, copies through the clone function, failures on the way.
#include "support/LogCheck.h"

#include <vector>

namespace {

// A search-file-version stand-in that counts the live instances, so that leaks and double deletes show.
class Version : public UQLinkedListItem {
public:
    explicit Version(int number) : m_nNumber(number) { ++s_nAlive; }
    Version(const Version& other) : UQLinkedListItem(other), m_nNumber(other.m_nNumber) { ++s_nAlive; }
    ~Version() override { --s_nAlive; }

    int m_nNumber;
    static int s_nAlive;
};
int Version::s_nAlive = 0;

UQLinkedListItem* cloneVersion(const UQLinkedListItem& item) {
    return new Version(static_cast<const Version&>(item));
}

// Fails on the second item it is asked for.
int g_nCloneCalls = 0;
UQLinkedListItem* cloneReturningNullOnSecond(const UQLinkedListItem& item) {
    return ++g_nCloneCalls == 2 ? nullptr : cloneVersion(item);
}
UQLinkedListItem* cloneThrowingOnSecond(const UQLinkedListItem& item) {
    if (++g_nCloneCalls == 2)
        throw UQErrno(UQErrno::_E_::Resource);
    return cloneVersion(item);
}

std::vector<int> forward(const UQLinkedList& list) {
    std::vector<int> numbers;
    for (UQLinkedListItem* i = list.mf_getHead(); i != nullptr; i = list.mf_getNext(i))
        numbers.push_back(static_cast<Version*>(i)->m_nNumber);
    return numbers;
}

std::vector<int> backward(const UQLinkedList& list) {
    std::vector<int> numbers;
    for (UQLinkedListItem* i = list.mf_getTail(); i != nullptr; i = list.mf_getPrevious(i))
        numbers.push_back(static_cast<Version*>(i)->m_nNumber);
    return numbers;
}

class UQLinkedListTest : public ::testing::Test {
protected:
    UQLinkedListTest() {
        Version::s_nAlive = 0;
        g_nCloneCalls = 0;
    }
    ~UQLinkedListTest() override { EXPECT_EQ(Version::s_nAlive, 0) << "items leaked or deleted twice"; }
};

} // namespace

TEST_F(UQLinkedListTest, EmptyListHasNoEnds) {
    const UQLinkedList list;
    EXPECT_TRUE(list.mf_isEmpty());
    EXPECT_EQ(list.mf_getCount(), 0);
    EXPECT_EQ(list.mf_getHead(), nullptr);
    EXPECT_EQ(list.mf_getTail(), nullptr);
}

TEST_F(UQLinkedListTest, ItemsKeepTheOrderTheyWereAddedIn) {
    UQLinkedList list;
    list.mf_addTail(new Version(2));
    list.mf_addTail(new Version(3));
    list.mf_addHead(new Version(1));
    EXPECT_EQ(list.mf_getCount(), 3);
    EXPECT_EQ(forward(list), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(backward(list), (std::vector<int>{3, 2, 1}));
}

TEST_F(UQLinkedListTest, NextAndPreviousAreNullAtTheEnds) {
    UQLinkedList list;
    Version* only = new Version(1);
    list.mf_addTail(only);
    EXPECT_EQ(list.mf_getHead(), only);
    EXPECT_EQ(list.mf_getTail(), only);
    EXPECT_EQ(list.mf_getNext(only), nullptr);
    EXPECT_EQ(list.mf_getPrevious(only), nullptr);
    EXPECT_EQ(list.mf_getNext(nullptr), nullptr);
}

TEST_F(UQLinkedListTest, InsertAfterAPositionOrAtTheHead) {
    UQLinkedList list;
    Version* one = new Version(1);
    list.mf_addTail(one);
    list.mf_addTail(new Version(3));
    list.mf_insertAfter(one, new Version(2));
    list.mf_insertAfter(nullptr, new Version(0));
    EXPECT_EQ(forward(list), (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(list.mf_getCount(), 4);
}

TEST_F(UQLinkedListTest, RemovedItemIsUnlinkedAndStaysAlive) {
    UQLinkedList list;
    list.mf_addTail(new Version(1));
    Version* two = new Version(2);
    list.mf_addTail(two);
    list.mf_addTail(new Version(3));
    list.mf_remove(two);
    EXPECT_FALSE(two->mf_isLinked());
    EXPECT_EQ(forward(list), (std::vector<int>{1, 3}));
    EXPECT_EQ(list.mf_getCount(), 2);
    delete two;
}

TEST_F(UQLinkedListTest, RemovingAnUnlinkedItemIsAHarmlessWarning) {
    LogCheck log;
    UQLinkedList list;
    list.mf_addTail(new Version(1));
    Version loose(9);
    list.mf_remove(&loose);
    EXPECT_EQ(list.mf_getCount(), 1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'W', "UQLinkedList::mf_remove", "Item is not in a list, nothing removed"}}));
}

TEST_F(UQLinkedListTest, ItemAlreadyInAListIsNotInsertedTwice) {
    LogCheck log;
    UQLinkedList list;
    Version* one = new Version(1);
    list.mf_addTail(one);
    list.mf_addTail(one);
    EXPECT_EQ(list.mf_getCount(), 1);
    EXPECT_EQ(forward(list), (std::vector<int>{1}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQLinkedList::mf_insertAfter",
                                                  "Item is already in a list, not inserted"}}));
}

TEST_F(UQLinkedListTest, NullItemIsNotInserted) {
    LogCheck log;
    UQLinkedList list;
    list.mf_addHead(nullptr);
    EXPECT_TRUE(list.mf_isEmpty());
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQLinkedList::mf_insertAfter", "NULL item not inserted"}}));
}

TEST_F(UQLinkedListTest, InsertAfterAnUnlinkedPositionIsRefused) {
    LogCheck log;
    UQLinkedList list;
    list.mf_addTail(new Version(1));
    Version loose(9);
    Version* item = new Version(2);
    list.mf_insertAfter(&loose, item);
    EXPECT_EQ(list.mf_getCount(), 1);
    EXPECT_FALSE(item->mf_isLinked());
    delete item;
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQLinkedList::mf_insertAfter",
                                                  "Position is not in a list, item not inserted"}}));
}

TEST_F(UQLinkedListTest, OwnerDeletesItsItemsOnClearWithDeletion) {
    UQLinkedList list;
    list.mf_addTail(new Version(1));
    list.mf_addTail(new Version(2));
    list.mf_clearList(1);
    EXPECT_EQ(Version::s_nAlive, 0);
    EXPECT_TRUE(list.mf_isEmpty());
    EXPECT_EQ(list.mf_getHead(), nullptr);
}

TEST_F(UQLinkedListTest, ClearWithoutDeletionUnlinksTheItems) {
    UQLinkedList list;
    Version* one = new Version(1);
    Version* two = new Version(2);
    list.mf_addTail(one);
    list.mf_addTail(two);
    list.mf_clearList(0);
    EXPECT_TRUE(list.mf_isEmpty());
    EXPECT_EQ(Version::s_nAlive, 2);
    EXPECT_FALSE(one->mf_isLinked());
    EXPECT_FALSE(two->mf_isLinked());
    delete one;
    delete two;
}

TEST_F(UQLinkedListTest, ListWithoutOwnershipNeverDeletes) {
    Version one(1);
    Version two(2);
    {
        UQLinkedList list(0);
        list.mf_addTail(&one);
        list.mf_addTail(&two);
        list.mf_clearList(1);
        EXPECT_FALSE(one.mf_isLinked());
        list.mf_addTail(&one);
    }
    EXPECT_FALSE(one.mf_isLinked());
    EXPECT_EQ(Version::s_nAlive, 2);
}

TEST_F(UQLinkedListTest, OwnerDeletesItsItemsWhenDestroyed) {
    {
        UQLinkedList list;
        list.mf_addTail(new Version(1));
        list.mf_addTail(new Version(2));
    }
    EXPECT_EQ(Version::s_nAlive, 0);
}

TEST_F(UQLinkedListTest, CopyHoldsClonesInTheSameOrder) {
    UQLinkedList original(1, cloneVersion);
    Version* first = new Version(1);
    original.mf_addTail(first);
    original.mf_addTail(new Version(2));
    const UQLinkedList copy(original);
    EXPECT_EQ(forward(copy), (std::vector<int>{1, 2}));
    EXPECT_NE(copy.mf_getHead(), first);
    EXPECT_EQ(Version::s_nAlive, 4);
    original.mf_clearList(1);
    EXPECT_EQ(forward(copy), (std::vector<int>{1, 2}));
}

TEST_F(UQLinkedListTest, CopyOfAListWithoutOwnershipOwnsItsClones) {
    Version one(1);
    {
        UQLinkedList borrowed(0, cloneVersion);
        borrowed.mf_addTail(&one);
        const UQLinkedList copy(borrowed);
        EXPECT_EQ(Version::s_nAlive, 2);
    }
    EXPECT_EQ(Version::s_nAlive, 1);
}

TEST_F(UQLinkedListTest, CopyWithoutCloneFunctionIsNotImplemented) {
    LogCheck log;
    UQLinkedList original;
    original.mf_addTail(new Version(1));
    original.mf_addTail(new Version(2));
    EXPECT_EQ(thrownCategory([&] { UQLinkedList copy(original); }), "_E_::NotImplemented");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQLinkedList::mf_implCopyFrom",
                                                  "No clone function to copy 2 list items"}}));
    EXPECT_EQ(Version::s_nAlive, 2);
}

TEST_F(UQLinkedListTest, EmptyListCopiesWithoutCloneFunction) {
    const UQLinkedList original;
    const UQLinkedList copy(original);
    EXPECT_TRUE(copy.mf_isEmpty());
}

TEST_F(UQLinkedListTest, CloneWithoutMemoryFailsTheCopyAndLeavesNoClones) {
    LogCheck log;
    UQLinkedList original(1, cloneReturningNullOnSecond);
    for (int i = 1; i <= 3; ++i)
        original.mf_addTail(new Version(i));
    EXPECT_EQ(thrownCategory([&] { UQLinkedList copy(original); }), "_E_::Memory");
    EXPECT_EQ(Version::s_nAlive, 3);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQLinkedList::mf_implCopyFrom",
                                                  "No memory for a copy of list item 2 of 3"}}));
}

TEST_F(UQLinkedListTest, CloneThatThrowsPassesItsErrorOnAndLeavesNoClones) {
    UQLinkedList original(1, cloneThrowingOnSecond);
    for (int i = 1; i <= 3; ++i)
        original.mf_addTail(new Version(i));
    EXPECT_EQ(thrownCategory([&] { UQLinkedList copy(original); }), "_E_::Resource");
    EXPECT_EQ(Version::s_nAlive, 3);
}

TEST_F(UQLinkedListTest, AssignmentReplacesAndDeletesTheOldItems) {
    UQLinkedList source(1, cloneVersion);
    source.mf_addTail(new Version(7));
    source.mf_addTail(new Version(8));
    UQLinkedList target(1, cloneVersion);
    target.mf_addTail(new Version(1));
    target = source;
    EXPECT_EQ(forward(target), (std::vector<int>{7, 8}));
    EXPECT_EQ(backward(target), (std::vector<int>{8, 7}));
    EXPECT_EQ(target.mf_getCount(), 2);
    EXPECT_EQ(Version::s_nAlive, 4);
}

TEST_F(UQLinkedListTest, FailedAssignmentLeavesTheTargetAsItWas) {
    UQLinkedList source(1, cloneReturningNullOnSecond);
    source.mf_addTail(new Version(7));
    source.mf_addTail(new Version(8));
    UQLinkedList target(1, cloneVersion);
    target.mf_addTail(new Version(1));
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { target = source; }), "_E_::Memory");
    EXPECT_EQ(log.count(), 1u);
    EXPECT_EQ(forward(target), (std::vector<int>{1}));
    EXPECT_EQ(Version::s_nAlive, 3);
}

TEST_F(UQLinkedListTest, SelfAssignmentChangesNothing) {
    UQLinkedList list(1, cloneVersion);
    list.mf_addTail(new Version(1));
    UQLinkedList& same = list;
    list = same;
    EXPECT_EQ(forward(list), (std::vector<int>{1}));
    EXPECT_EQ(Version::s_nAlive, 1);
}

TEST_F(UQLinkedListTest, DeletedItemTakesItselfOutOfTheChain) {
    UQLinkedList list;
    list.mf_addTail(new Version(1));
    Version* two = new Version(2);
    list.mf_addTail(two);
    list.mf_addTail(new Version(3));
    delete two;
    EXPECT_EQ(forward(list), (std::vector<int>{1, 3}));
    EXPECT_EQ(backward(list), (std::vector<int>{3, 1}));
}

TEST_F(UQLinkedListTest, CopiedItemIsNotLinked) {
    UQLinkedList list;
    Version* one = new Version(1);
    list.mf_addTail(one);
    const Version copy(*one);
    EXPECT_TRUE(one->mf_isLinked());
    EXPECT_FALSE(copy.mf_isLinked());
    EXPECT_EQ(copy.mf_getNext(), &copy);
}
