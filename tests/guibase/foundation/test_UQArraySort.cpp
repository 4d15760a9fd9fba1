#include "support/LogCheck.h"
#include "support/MixedPaths.h"

#include <algorithm>

#include <vector>

namespace {

std::vector<std::string> contents(const UQArray<CString, const CString&>& a) {
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < a.GetSize(); ++i)
        out.push_back(utf8(a[i]));
    return out;
}

// An allocation failure injected now comes due at the library's next allocation; if it is still
// pending afterwards, the library allocated nothing.
bool injectedFailureStillPending() {
    void* p = UQAllocation::mf_allocate(16);
    UQAllocation::mf_free(p);
    UQAllocationInjection::mf_clearInjection();
    return p == nullptr;
}

} // namespace

TEST(UQArraySort, StringsComeOutAscendingCaseBlind) {
    UQArray<CString, const CString&> a;
    for (const wchar_t* s : {L"delta", L"Alpha", L"charlie", L"Bravo", L"_under", L"echo"})
        a.Add(s);
    a.mf_sortPointerArray();
    // Folding to upper case puts '_' (0x5F) after the letters, as the system's ordinal case-blind order does.
    EXPECT_EQ(contents(a),
              (std::vector<std::string>{"Alpha", "Bravo", "charlie", "delta", "echo", "_under"}));
}

TEST(UQArraySort, EqualStringsStay) {
    UQArray<CString, const CString&> a;
    for (const wchar_t* s : {L"b", L"a", L"b", L"a"})
        a.Add(s);
    a.mf_sortPointerArray();
    EXPECT_EQ(contents(a), (std::vector<std::string>{"a", "a", "b", "b"}));
}

TEST(UQArraySort, StringsDifferingOnlyInCaseStayTogether) {
    UQArray<CString, const CString&> a;
    for (const wchar_t* s : {L"B", L"a", L"b", L"A"})
        a.Add(s);
    a.mf_sortPointerArray();
    const std::vector<std::string> c = contents(a);
    ASSERT_EQ(c.size(), 4u);
    // Their relative order is not defined (qsort is not stable); the groups are.
    EXPECT_TRUE((c[0] == "a" && c[1] == "A") || (c[0] == "A" && c[1] == "a"));
    EXPECT_TRUE((c[2] == "b" && c[3] == "B") || (c[2] == "B" && c[3] == "b"));
}

TEST(UQArraySort, EmptyArrayAllocatesNothingAndStaysEmpty) {
    UQArray<CString, const CString&> a;
    UQAllocationInjection::mf_injectFailure(0);
    a.mf_sortPointerArray();
    EXPECT_TRUE(injectedFailureStillPending());
    EXPECT_EQ(a.GetSize(), 0);
    EXPECT_EQ(a.GetData(), nullptr);
}

TEST(UQArraySort, OneEntryAllocatesNothingAndStaysUnchanged) {
    UQArray<CString, const CString&> a;
    a.Add(L"Only");
    UQAllocationInjection::mf_injectFailure(0);
    a.mf_sortPointerArray();
    EXPECT_TRUE(injectedFailureStillPending());
    EXPECT_EQ(contents(a), (std::vector<std::string>{"Only"}));
}

TEST(UQArraySort, NoMemoryForTheBufferIsAMemoryErrorAndLeavesTheArray) {
    LogCheck log;
    UQArray<CString, const CString&> a;
    for (const wchar_t* s : {L"c", L"b", L"a"})
        a.Add(s);
    UQAllocationInjection::mf_injectFailure(0);
    EXPECT_EQ(thrownCategory([&] { a.mf_sortPointerArray(); }), "_E_::Memory");
    UQAllocationInjection::mf_clearInjection();
    EXPECT_EQ(contents(a), (std::vector<std::string>{"c", "b", "a"}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQArray::mf_sortPointerArray",
                                                  "No memory for 3 array entries (" +
                                                      std::to_string(3 * sizeof(CString*)) + " bytes)"}}));
}

TEST(UQArraySort, SortedArrayKeepsItsCapacity) {
    UQArray<CString, const CString&> a;
    for (int i = 0; i < 10; ++i) {
        CString s;
        s.Format(L"item %d", 9 - i);
        a.Add(s);
    }
    const INT_PTR capacity = a.GetAllocSize();
    a.mf_sortPointerArray();
    EXPECT_EQ(a.GetAllocSize(), capacity);
    EXPECT_EQ(utf8(a[0]), "item 0");
    EXPECT_EQ(utf8(a[9]), "item 9");
}

TEST(UQArraySort, KeepsThePerCharacterCaseBlindOrderOnAHundredThousandMixedPaths) {
    const std::vector<CString> paths = mixed_paths::generate(100000, 2);
    UQArray<CString, const CString&> a;
    for (const CString& path : paths)
        a.Add(path);
    a.mf_sortPointerArray();
    ASSERT_EQ(a.GetSize(), static_cast<INT_PTR>(paths.size()));
    std::vector<CString> sorted(a.GetData(), a.GetData() + a.GetSize());
    // In order by the comparison of one character at a time (equal strings in any order, as qsort leaves
    // them)...
    const auto less = [](const CString& _x, const CString& _y) {
        return mixed_paths::perCharacterNoCaseCompare(_x, _y) < 0;
    };
    EXPECT_TRUE(std::is_sorted(sorted.begin(), sorted.end(), less));
    // ...and the same strings as before.
    std::vector<CString> before = paths;
    const auto ordinal = [](const CString& _x, const CString& _y) { return _x.Compare(_y) < 0; };
    std::sort(before.begin(), before.end(), ordinal);
    std::sort(sorted.begin(), sorted.end(), ordinal);
    EXPECT_TRUE(before == sorted);
}
