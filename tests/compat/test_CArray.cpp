// CArray (and the product's UQArray on top of it) with MFC's growth rule and bounds checks.
#include "compat/afxtempl.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

struct Item {
    int value;
};

template <class F> bool throwsInvalidArg(F&& f) {
    try {
        f();
    } catch (CInvalidArgException* e) {
        e->Delete();
        return true;
    }
    return false;
}

// The capacities seen while adding one element at a time to an empty array, as (size, capacity) after
// each growth: the first allocation takes 1, then the automatic step is size / 8 clamped to 4..1024.
const std::vector<std::pair<INT_PTR, INT_PTR>> ADD_GROWTH = {
    {1, 1},   {2, 5},   {6, 9},   {10, 13}, {14, 17}, {18, 21}, {22, 25}, {26, 29}, {30, 33},  {34, 37},
    {38, 41}, {42, 46}, {47, 51}, {52, 57}, {58, 64}, {65, 72}, {73, 81}, {82, 91}, {92, 102},
};

} // namespace

// Pointer arrays: MFC's CArray and the product's UQArray must grow alike.
template <class A> class PointerArrayTest : public ::testing::Test {};
using PointerArrays = ::testing::Types<CArray<Item*, Item*>, UQArray<Item*, Item*>>;
TYPED_TEST_SUITE(PointerArrayTest, PointerArrays);

TYPED_TEST(PointerArrayTest, AddToAnEmptyArrayGrowsOneThenByTheAutomaticStep) {
    TypeParam a;
    EXPECT_EQ(0, a.GetAllocSize());
    EXPECT_EQ(nullptr, a.GetData());
    Item item{0};
    std::size_t next = 0;
    for (INT_PTR n = 1; n <= 92; ++n) {
        a.Add(&item);
        ASSERT_EQ(n, a.GetSize());
        if (next < ADD_GROWTH.size() && ADD_GROWTH[next].first == n) {
            EXPECT_EQ(ADD_GROWTH[next].second, a.GetAllocSize()) << "after adding element " << n;
            ++next;
        }
    }
    EXPECT_EQ(ADD_GROWTH.size(), next);
    EXPECT_EQ(102, a.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, AtSizeEightyTheStepIsTen) {
    TypeParam a;
    a.SetSize(80);
    EXPECT_EQ(80, a.GetAllocSize());
    Item item{0};
    a.Add(&item);
    EXPECT_EQ(81, a.GetSize());
    EXPECT_EQ(90, a.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, TheStepIsCappedAt1024) {
    TypeParam a;
    a.SetSize(8192); // step exactly 1024
    a.Add(nullptr);
    EXPECT_EQ(8192 + 1024, a.GetAllocSize());
    TypeParam b;
    b.SetSize(8200); // 8200 / 8 = 1025, capped
    b.Add(nullptr);
    EXPECT_EQ(8200 + 1024, b.GetAllocSize());
    TypeParam c;
    c.SetSize(100000);
    c.Add(nullptr);
    EXPECT_EQ(100000 + 1024, c.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, TheStepIsAtLeastFour) {
    TypeParam a;
    a.SetSize(3);
    a.Add(nullptr);
    EXPECT_EQ(7, a.GetAllocSize()); // 3 / 8 = 0, raised to 4
}

TYPED_TEST(PointerArrayTest, TheAutomaticStepComesFromTheSizeNotTheCapacity) {
    TypeParam a;
    a.SetSize(100);
    a.SetSize(20); // shrinking keeps the capacity of 100
    EXPECT_EQ(100, a.GetAllocSize());
    a.SetSize(101);
    // 20 / 8 = 2, raised to 4: 100 + 4; a step from the capacity would have given 112.
    EXPECT_EQ(104, a.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, ARequestBeyondOneStepIsTakenAsItIs) {
    TypeParam a;
    a.SetSize(10);
    a.SetSize(50);
    EXPECT_EQ(50, a.GetAllocSize());
    a.SetSize(53); // 50 + 50 / 8 = 56 is larger than 53
    EXPECT_EQ(56, a.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, ExplicitGrowthStep) {
    TypeParam a;
    a.SetSize(0, 10);
    EXPECT_EQ(10, a.GetGrowBy());
    EXPECT_EQ(nullptr, a.GetData());
    a.Add(nullptr);
    EXPECT_EQ(10, a.GetAllocSize()); // the first allocation takes the larger of 1 and the step
    for (int i = 0; i < 9; ++i)
        a.Add(nullptr);
    EXPECT_EQ(10, a.GetAllocSize());
    a.Add(nullptr);
    EXPECT_EQ(20, a.GetAllocSize());
    a.SetSize(25, -1); // -1 keeps the step
    EXPECT_EQ(30, a.GetAllocSize());
    a.SetSize(31, 2);
    EXPECT_EQ(32, a.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, FirstAllocationTakesTheLargerOfSizeAndStep) {
    TypeParam a;
    a.SetSize(3, 7);
    EXPECT_EQ(3, a.GetSize());
    EXPECT_EQ(7, a.GetAllocSize());
    TypeParam b;
    b.SetSize(9, 7);
    EXPECT_EQ(9, b.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, ShrinkingKeepsTheCapacityAndTheBuffer) {
    TypeParam a;
    a.SetSize(40);
    Item* const* before = a.GetData();
    a.SetSize(5);
    EXPECT_EQ(5, a.GetSize());
    EXPECT_EQ(40, a.GetAllocSize());
    EXPECT_EQ(before, a.GetData());
}

TYPED_TEST(PointerArrayTest, SizeZeroFreesTheBufferButKeepsTheStep) {
    TypeParam a;
    a.SetSize(12, 6);
    a.SetSize(0);
    EXPECT_EQ(0, a.GetSize());
    EXPECT_EQ(0, a.GetAllocSize());
    EXPECT_EQ(nullptr, a.GetData());
    EXPECT_EQ(6, a.GetGrowBy());
    a.Add(nullptr);
    EXPECT_EQ(6, a.GetAllocSize());
}

TYPED_TEST(PointerArrayTest, RemoveAllFreesTheBuffer) {
    TypeParam a;
    a.SetSize(12);
    a.RemoveAll();
    EXPECT_EQ(0, a.GetSize());
    EXPECT_EQ(0, a.GetAllocSize());
    EXPECT_EQ(nullptr, a.GetData());
    EXPECT_TRUE(a.IsEmpty());
}

TYPED_TEST(PointerArrayTest, NewSlotsAreNullEvenWhereOldPointersWere) {
    Item items[4] = {{0}, {1}, {2}, {3}};
    TypeParam a;
    for (Item& it : items)
        a.Add(&it);
    a.SetSize(1); // the slots keep their memory
    a.SetSize(4);
    EXPECT_EQ(&items[0], a[0]);
    EXPECT_EQ(nullptr, a[1]);
    EXPECT_EQ(nullptr, a[2]);
    EXPECT_EQ(nullptr, a[3]);
    a.SetSize(20);
    for (INT_PTR i = 1; i < 20; ++i)
        EXPECT_EQ(nullptr, a[i]) << "slot " << i;
}

TYPED_TEST(PointerArrayTest, FreeExtraTrimsTheCapacityToTheSize) {
    TypeParam a;
    Item item{5};
    a.SetSize(30);
    a.SetSize(3);
    a[2] = &item;
    a.FreeExtra();
    EXPECT_EQ(3, a.GetAllocSize());
    EXPECT_EQ(&item, a[2]);
    a.SetSize(0, 0);
    a.FreeExtra();
    EXPECT_EQ(nullptr, a.GetData());
}

TYPED_TEST(PointerArrayTest, IndexMinusOneAndSizeThrowInvalidArgument) {
    TypeParam a;
    Item item{1};
    a.Add(&item);
    a.Add(&item);
    const TypeParam& c = a;
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a.GetAt(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a.GetAt(2); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)c.GetAt(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)c.GetAt(2); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.SetAt(-1, &item); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.SetAt(2, &item); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a[-1]; }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a[2]; }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)c[-1]; }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)c[2]; }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a.ElementAt(2); }));
    EXPECT_EQ(2, a.GetSize());
    EXPECT_EQ(&item, a.GetAt(1));
}

TYPED_TEST(PointerArrayTest, AnEmptyArrayHasNoValidIndex) {
    TypeParam a;
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a.GetAt(0); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)a[0]; }));
    EXPECT_EQ(-1, a.GetUpperBound());
}

TYPED_TEST(PointerArrayTest, NegativeSizeThrowsAndChangesNothing) {
    TypeParam a;
    a.SetSize(3, 5);
    EXPECT_TRUE(throwsInvalidArg([&] { a.SetSize(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.SetSize(-1, 9); }));
    EXPECT_EQ(3, a.GetSize());
    EXPECT_EQ(5, a.GetAllocSize());
    EXPECT_EQ(5, a.GetGrowBy());
}

TYPED_TEST(PointerArrayTest, SetAtGrowFillsTheGapWithNull) {
    TypeParam a;
    Item item{1};
    a.SetAtGrow(3, &item);
    EXPECT_EQ(4, a.GetSize());
    EXPECT_EQ(nullptr, a[0]);
    EXPECT_EQ(&item, a[3]);
    EXPECT_TRUE(throwsInvalidArg([&] { a.SetAtGrow(-1, &item); }));
}

TYPED_TEST(PointerArrayTest, AddReturnsTheIndex) {
    TypeParam a;
    Item items[3] = {{0}, {1}, {2}};
    EXPECT_EQ(0, a.Add(&items[0]));
    EXPECT_EQ(1, a.Add(&items[1]));
    EXPECT_EQ(2, a.Add(&items[2]));
    EXPECT_EQ(3, a.GetCount());
    EXPECT_EQ(2, a.GetUpperBound());
    EXPECT_EQ(&items[1], a.GetData()[1]);
}

TYPED_TEST(PointerArrayTest, AddOfAnElementOfTheArrayWhileGrowing) {
    Item items[5] = {{0}, {1}, {2}, {3}, {4}};
    TypeParam a;
    for (Item& it : items)
        a.Add(&it);
    ASSERT_EQ(a.GetSize(), a.GetAllocSize());
    a.Add(a[0]); // the reference points into the buffer that the growth replaces
    ASSERT_EQ(6, a.GetSize());
    EXPECT_EQ(&items[0], a[5]);
    EXPECT_EQ(9, a.GetAllocSize());
}

TEST(CArrayInsertAt, IntoTheMiddleShiftsTheRest) {
    Item items[4] = {{0}, {1}, {2}, {3}};
    CArray<Item*, Item*> a;
    a.Add(&items[0]);
    a.Add(&items[1]);
    a.InsertAt(1, &items[3], 2);
    ASSERT_EQ(4, a.GetSize());
    EXPECT_EQ(&items[0], a[0]);
    EXPECT_EQ(&items[3], a[1]);
    EXPECT_EQ(&items[3], a[2]);
    EXPECT_EQ(&items[1], a[3]);
}

TEST(CArrayInsertAt, BeyondTheEndGrowsWithNullSlots) {
    Item item{7};
    CArray<Item*, Item*> a;
    a.InsertAt(2, &item);
    ASSERT_EQ(3, a.GetSize());
    EXPECT_EQ(nullptr, a[0]);
    EXPECT_EQ(nullptr, a[1]);
    EXPECT_EQ(&item, a[2]);
}

TEST(CArrayInsertAt, NegativeIndexOrNoCountThrows) {
    Item item{7};
    CArray<Item*, Item*> a;
    a.Add(&item);
    EXPECT_TRUE(throwsInvalidArg([&] { a.InsertAt(-1, &item); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.InsertAt(0, &item, 0); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.InsertAt(0, &item, -2); }));
    EXPECT_EQ(1, a.GetSize());
}

TEST(CArrayRemoveAt, RemovesAndShiftsDownKeepingCapacity) {
    CArray<CString, const CString&> a;
    for (const wchar_t* s : {L"a", L"b", L"c", L"d", L"e"})
        a.Add(CString(s));
    const INT_PTR capacity = a.GetAllocSize();
    a.RemoveAt(1, 2);
    ASSERT_EQ(3, a.GetSize());
    EXPECT_EQ(CString(L"a"), a[0]);
    EXPECT_EQ(CString(L"d"), a[1]);
    EXPECT_EQ(CString(L"e"), a[2]);
    EXPECT_EQ(capacity, a.GetAllocSize());
    a.RemoveAt(2);
    ASSERT_EQ(2, a.GetSize());
    EXPECT_EQ(CString(L"d"), a[1]);
}

TEST(CArrayRemoveAt, OutsideTheArrayThrowsAndChangesNothing) {
    CArray<int, int> a;
    a.Add(1);
    a.Add(2);
    EXPECT_TRUE(throwsInvalidArg([&] { a.RemoveAt(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.RemoveAt(2); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.RemoveAt(1, 2); }));
    EXPECT_TRUE(throwsInvalidArg([&] { a.RemoveAt(0, -1); }));
    ASSERT_EQ(2, a.GetSize());
    EXPECT_EQ(1, a[0]);
    EXPECT_EQ(2, a[1]);
    a.RemoveAt(2, 0); // removing nothing at the end is allowed
    EXPECT_EQ(2, a.GetSize());
}

TEST(CArrayAppend, AddsTheOtherArrayAndAnswersTheOldSize) {
    CArray<int, int> a;
    CArray<int, int> b;
    a.Add(1);
    b.Add(2);
    b.Add(3);
    EXPECT_EQ(1, a.Append(b));
    ASSERT_EQ(3, a.GetSize());
    EXPECT_EQ(1, a[0]);
    EXPECT_EQ(2, a[1]);
    EXPECT_EQ(3, a[2]);
    EXPECT_EQ(2, b.GetSize());
}

TEST(CArrayAppend, ToItselfThrows) {
    CArray<int, int> a;
    a.Add(1);
    EXPECT_TRUE(throwsInvalidArg([&] { a.Append(a); }));
    EXPECT_EQ(1, a.GetSize());
}

TEST(CArrayCopy, ReplacesTheContent) {
    CArray<CString, const CString&> a;
    CArray<CString, const CString&> b;
    a.Add(CString(L"old1"));
    a.Add(CString(L"old2"));
    a.Add(CString(L"old3"));
    b.Add(CString(L"new"));
    a.Copy(b);
    ASSERT_EQ(1, a.GetSize());
    EXPECT_EQ(CString(L"new"), a[0]);
    a.Copy(a);
    ASSERT_EQ(1, a.GetSize());
    EXPECT_EQ(CString(L"new"), a[0]);
    CArray<CString, const CString&> empty;
    a.Copy(empty);
    EXPECT_EQ(0, a.GetSize());
    EXPECT_EQ(nullptr, a.GetData());
}

TEST(CArrayStrings, NewSlotsAreEmptyStrings) {
    CArray<CString, const CString&> a;
    a.SetSize(3);
    for (INT_PTR i = 0; i < 3; ++i)
        EXPECT_TRUE(a[i].IsEmpty());
    a[0] = L"first";
    a[2] = L"third";
    a.SetSize(1);
    a.SetSize(3);
    EXPECT_EQ(CString(L"first"), a[0]);
    EXPECT_TRUE(a[1].IsEmpty());
    EXPECT_TRUE(a[2].IsEmpty());
}

TEST(CArrayStrings, GrowthKeepsEveryString) {
    CArray<CString, const CString&> a;
    for (int i = 0; i < 3000; ++i) {
        CString s;
        s.Format(L"item %d", i);
        a.Add(s);
    }
    ASSERT_EQ(3000, a.GetSize());
    for (int i = 0; i < 3000; i += 7) {
        CString s;
        s.Format(L"item %d", i);
        EXPECT_EQ(s, a[i]);
    }
}

TEST(CArrayStrings, AddOfAnElementOfTheArrayWhileGrowing) {
    CArray<CString, const CString&> a;
    a.Add(CString(L"only"));
    ASSERT_EQ(1, a.GetAllocSize());
    a.Add(a[0]);
    a.Add(a[1]);
    ASSERT_EQ(3, a.GetSize());
    EXPECT_EQ(CString(L"only"), a[1]);
    EXPECT_EQ(CString(L"only"), a[2]);
    for (int i = 0; i < 40; ++i)
        a.Add(a[a.GetUpperBound()]);
    EXPECT_EQ(CString(L"only"), a[a.GetUpperBound()]);
}

TEST(CArrayStrings, InsertAtOfAnElementOfTheArrayWhileGrowing) {
    CArray<CString, const CString&> a;
    a.Add(CString(L"zero"));
    a.Add(CString(L"one"));
    a.SetSize(5);
    ASSERT_EQ(5, a.GetAllocSize());
    a.InsertAt(0, a[1], 3);
    ASSERT_EQ(8, a.GetSize());
    EXPECT_EQ(CString(L"one"), a[0]);
    EXPECT_EQ(CString(L"one"), a[1]);
    EXPECT_EQ(CString(L"one"), a[2]);
    EXPECT_EQ(CString(L"zero"), a[3]);
    EXPECT_EQ(CString(L"one"), a[4]);
}

TEST(CArrayStrings, SetAtGrowOfAnElementOfTheArray) {
    CArray<CString, const CString&> a;
    a.Add(CString(L"source"));
    a.SetAtGrow(10, a[0]);
    ASSERT_EQ(11, a.GetSize());
    EXPECT_EQ(CString(L"source"), a[10]);
    EXPECT_TRUE(a[5].IsEmpty());
}

TEST(CArrayStrings, StringsStaySharedWithTheirCopies) {
    const CString s(L"shared text");
    CArray<CString, const CString&> a;
    a.Add(s);
    a.SetSize(200); // moves the elements
    EXPECT_EQ(s.GetString(), a[0].GetString());
    a[0].SetAt(0, L'S');
    EXPECT_EQ(CString(L"shared text"), s);
}

TEST(CArrayObjects, ElementsThatAreNotRelocatableSurviveGrowth) {
    CArray<std::wstring, const std::wstring&> a;
    for (int i = 0; i < 200; ++i)
        a.Add(std::wstring(static_cast<std::size_t>(i % 50) + 20, static_cast<wchar_t>(L'a' + i % 26)));
    a.InsertAt(0, a[199]);
    a.RemoveAt(10, 5);
    ASSERT_EQ(196, a.GetSize());
    EXPECT_EQ(a[0],
              std::wstring(static_cast<std::size_t>(199 % 50) + 20, static_cast<wchar_t>(L'a' + 199 % 26)));
    EXPECT_EQ(a[10],
              std::wstring(static_cast<std::size_t>(14 % 50) + 20, static_cast<wchar_t>(L'a' + 14 % 26)));
    a.SetSize(2);
    a.SetSize(4);
    EXPECT_TRUE(a[3].empty());
}

TEST(CArrayObjects, PlainValuesAreZeroFilled) {
    CArray<int, int> a;
    a.Add(5);
    a.SetSize(10);
    EXPECT_EQ(5, a[0]);
    for (INT_PTR i = 1; i < 10; ++i)
        EXPECT_EQ(0, a[i]);
}
