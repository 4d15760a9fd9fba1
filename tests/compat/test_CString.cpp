// CString with MFC's meaning: wide, reference-counted, copy on write.
#include "compat/afx.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

namespace {

// Runs f and answers whether it threw MFC's invalid-argument exception (a pointer to a static object).
template <class F> bool throwsInvalidArg(F&& f) {
    try {
        f();
    } catch (CInvalidArgException* e) {
        e->Delete();
        return true;
    }
    return false;
}

} // namespace

TEST(CStringConstruct, DefaultIsEmptyAndTerminated) {
    const CString s;
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(0, s.GetLength());
    ASSERT_NE(nullptr, s.GetString());
    EXPECT_EQ(L'\0', s.GetString()[0]);
}

TEST(CStringConstruct, FromNullPointerIsEmpty) {
    const CString s(static_cast<const wchar_t*>(nullptr));
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(L'\0', *static_cast<const wchar_t*>(s));
}

TEST(CStringConstruct, FromCountedTextTakesExactlyThatManyCharacters) {
    const CString s(L"abcdef", 3);
    EXPECT_EQ(3, s.GetLength());
    EXPECT_EQ(CString(L"abc"), s);
}

TEST(CStringConstruct, ZeroCountIsEmpty) {
    const CString s(L"abc", 0);
    EXPECT_TRUE(s.IsEmpty());
}

TEST(CStringConstruct, NegativeCountIsAnInvalidArgument) {
    EXPECT_TRUE(throwsInvalidArg([] { CString s(L"abc", -1); }));
}

TEST(CStringConstruct, RepeatedCharacter) {
    EXPECT_EQ(CString(L"xxxx"), CString(L'x', 4));
    EXPECT_EQ(CString(L"y"), CString(L'y'));
    EXPECT_TRUE(CString(L'z', 0).IsEmpty());
    EXPECT_TRUE(CString(L'z', -3).IsEmpty());
}

TEST(CStringConstruct, FromStdWstringKeepsEveryCharacter) {
    const std::wstring w(L"a\0b", 3);
    const CString s(w);
    EXPECT_EQ(3, s.GetLength());
    EXPECT_EQ(L'\0', s.GetAt(1));
    EXPECT_EQ(L'b', s.GetAt(2));
}

TEST(CStringAssign, FromTextCharacterAndOtherString) {
    CString s;
    s = L"first";
    EXPECT_EQ(CString(L"first"), s);
    s = L'c';
    EXPECT_EQ(CString(L"c"), s);
    const CString other(L"other");
    s = other;
    EXPECT_EQ(other, s);
    s = static_cast<const wchar_t*>(nullptr);
    EXPECT_TRUE(s.IsEmpty());
}

TEST(CStringAssign, FromATailOfItself) {
    CString s(L"0123456789");
    s = s.GetString() + 4;
    EXPECT_EQ(CString(L"456789"), s);
}

TEST(CStringAssign, ToItself) {
    CString s(L"same");
    const CString& alias = s;
    s = alias;
    EXPECT_EQ(CString(L"same"), s);
}

TEST(CStringAssign, MoveLeavesSourceEmpty) {
    CString a(L"moved");
    CString b(std::move(a));
    EXPECT_EQ(CString(L"moved"), b);
    EXPECT_TRUE(a.IsEmpty()); // NOLINT(bugprone-use-after-move): the moved-from state is defined
    CString c;
    c = std::move(b);
    EXPECT_EQ(CString(L"moved"), c);
}

TEST(CStringEmpty, EmptyReleasesTheText) {
    CString s(L"text");
    s.Empty();
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(0, s.GetLength());
    EXPECT_EQ(L'\0', s.GetString()[0]);
}

TEST(CStringCopyOnWrite, CopiesShareTheBufferUntilOneIsWritten) {
    CString a(L"shared");
    CString b(a);
    EXPECT_EQ(a.GetString(), b.GetString());
    b.SetAt(0, L'S');
    EXPECT_NE(a.GetString(), b.GetString());
    EXPECT_EQ(CString(L"shared"), a);
    EXPECT_EQ(CString(L"Shared"), b);
}

TEST(CStringCopyOnWrite, EveryMutatorLeavesTheOtherCopyAlone) {
    const CString original(L"  Mixed Text  ");
    struct Case {
        const char* name;
        void (*mutate)(CString&);
    };
    const Case cases[] = {
        {"MakeUpper", [](CString& s) { s.MakeUpper(); }},
        {"MakeLower", [](CString& s) { s.MakeLower(); }},
        {"MakeReverse", [](CString& s) { s.MakeReverse(); }},
        {"Trim", [](CString& s) { s.Trim(); }},
        {"TrimLeft", [](CString& s) { s.TrimLeft(); }},
        {"TrimRight", [](CString& s) { s.TrimRight(); }},
        {"Replace char", [](CString& s) { s.Replace(L'x', L'y'); }},
        {"Replace text", [](CString& s) { s.Replace(L"Text", L"Words"); }},
        {"Remove", [](CString& s) { s.Remove(L' '); }},
        {"Insert", [](CString& s) { s.Insert(2, L"++"); }},
        {"Delete", [](CString& s) { s.Delete(2, 3); }},
        {"SetAt", [](CString& s) { s.SetAt(2, L'#'); }},
        {"append", [](CString& s) { s += L"tail"; }},
        {"AppendFormat", [](CString& s) { s.AppendFormat(L"%d", 7); }},
        {"GetBuffer write",
         [](CString& s) {
             s.GetBuffer()[2] = L'!';
             s.ReleaseBuffer();
         }},
    };
    for (const Case& c : cases) {
        CString copy(original);
        c.mutate(copy);
        EXPECT_NE(original, copy) << c.name;
        EXPECT_EQ(CString(L"  Mixed Text  "), original) << c.name;
    }
}

TEST(CStringCopyOnWrite, CopyOfACopyOutlivesTheFirst) {
    CString* first = new CString(L"lives on");
    const CString second(*first);
    delete first;
    EXPECT_EQ(CString(L"lives on"), second);
}

TEST(CStringAppend, TextCharacterAndString) {
    CString s(L"a");
    s += L"bc";
    s += L'd';
    s += CString(L"ef");
    s += static_cast<const wchar_t*>(nullptr);
    EXPECT_EQ(CString(L"abcdef"), s);
}

TEST(CStringAppend, SelfAppendDoublesTheText) {
    CString s(L"ab");
    s += s;
    EXPECT_EQ(CString(L"abab"), s);
    s += s.GetString();
    EXPECT_EQ(CString(L"abababab"), s);
}

TEST(CStringAppend, AppendingATailOfItselfWhileGrowing) {
    CString s(L"0123456789");
    for (int i = 0; i < 5; ++i)
        s += s.GetString() + s.GetLength() - 3;
    EXPECT_EQ(CString(L"0123456789789789789789789"), s);
}

TEST(CStringAppend, SelfAppendOfASharedBufferLeavesTheCopy) {
    CString a(L"xy");
    const CString b(a);
    a += a;
    EXPECT_EQ(CString(L"xyxy"), a);
    EXPECT_EQ(CString(L"xy"), b);
}

TEST(CStringConcat, AllOperatorForms) {
    const CString a(L"ab");
    EXPECT_EQ(CString(L"abcd"), a + CString(L"cd"));
    EXPECT_EQ(CString(L"abcd"), a + L"cd");
    EXPECT_EQ(CString(L"cdab"), L"cd" + a);
    EXPECT_EQ(CString(L"abc"), a + L'c');
    EXPECT_EQ(CString(L"cab"), L'c' + a);
    EXPECT_EQ(CString(L"abab"), a + a);
    EXPECT_EQ(CString(L"ab"), a + CString());
}

TEST(CStringIndex, GetAtReadsEveryCharacterAndTheTerminator) {
    const CString s(L"abc");
    EXPECT_EQ(L'a', s.GetAt(0));
    EXPECT_EQ(L'c', s.GetAt(2));
    EXPECT_EQ(L'b', s[1]);
    // MFC lets GetAt read the terminating zero.
    EXPECT_EQ(L'\0', s.GetAt(3));
}

TEST(CStringIndex, GetAtOutsideTheTextThrowsInvalidArgument) {
    const CString s(L"abc");
    EXPECT_TRUE(throwsInvalidArg([&] { (void)s.GetAt(-1); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)s.GetAt(4); }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)s[-1]; }));
    EXPECT_TRUE(throwsInvalidArg([&] { (void)s[4]; }));
    EXPECT_TRUE(throwsInvalidArg([] { (void)CString().GetAt(1); }));
}

TEST(CStringIndex, SetAtInsideTheTextOnly) {
    CString s(L"abc");
    s.SetAt(1, L'X');
    EXPECT_EQ(CString(L"aXc"), s);
    EXPECT_TRUE(throwsInvalidArg([&] { s.SetAt(-1, L'Y'); }));
    EXPECT_TRUE(throwsInvalidArg([&] { s.SetAt(3, L'Y'); }));
    EXPECT_TRUE(throwsInvalidArg([] {
        CString e;
        e.SetAt(0, L'Y');
    }));
    EXPECT_EQ(CString(L"aXc"), s);
}

TEST(CStringIndex, TheExceptionIsOneStaticObject) {
    const CString s(L"abc");
    CInvalidArgException* first = nullptr;
    CInvalidArgException* second = nullptr;
    try {
        (void)s.GetAt(10);
    } catch (CInvalidArgException* e) {
        first = e;
    }
    try {
        (void)s.GetAt(-10);
    } catch (CInvalidArgException* e) {
        second = e;
    }
    ASSERT_NE(nullptr, first);
    EXPECT_EQ(first, second);
    first->Delete(); // deleting the static exception is harmless, as in MFC
}

TEST(CStringBuffer, WriteThroughGetBufferThenReleaseAtTheTerminator) {
    CString s;
    wchar_t* p = s.GetBuffer(10);
    ASSERT_NE(nullptr, p);
    const wchar_t text[] = L"hello";
    for (int i = 0; i < 6; ++i)
        p[i] = text[i];
    s.ReleaseBuffer();
    EXPECT_EQ(5, s.GetLength());
    EXPECT_EQ(CString(L"hello"), s);
}

TEST(CStringBuffer, ReleaseWithAnExplicitLength) {
    CString s(L"abcdef");
    s.GetBuffer();
    s.ReleaseBuffer(3);
    EXPECT_EQ(CString(L"abc"), s);
    EXPECT_EQ(L'\0', s.GetString()[3]);
}

TEST(CStringBuffer, ReleaseBeyondTheBufferThrows) {
    CString s(L"abc");
    s.GetBuffer(4);
    EXPECT_TRUE(throwsInvalidArg([&] { s.ReleaseBuffer(1000); }));
}

TEST(CStringBuffer, GetBufferKeepsTheTextAndGrows) {
    CString s(L"abc");
    wchar_t* p = s.GetBuffer(20);
    EXPECT_EQ(L'a', p[0]);
    EXPECT_EQ(L'c', p[2]);
    p[3] = L'd';
    p[4] = L'\0';
    s.ReleaseBuffer();
    EXPECT_EQ(CString(L"abcd"), s);
}

TEST(CStringBuffer, GetBufferOfASharedStringDetachesIt) {
    CString a(L"abc");
    CString b(a);
    wchar_t* p = b.GetBuffer();
    EXPECT_NE(a.GetString(), p);
    p[0] = L'z';
    b.ReleaseBuffer();
    EXPECT_EQ(CString(L"abc"), a);
    EXPECT_EQ(CString(L"zbc"), b);
}

TEST(CStringBuffer, GetBufferSetLengthSetsTheLength) {
    CString s;
    wchar_t* p = s.GetBufferSetLength(3);
    p[0] = L'x';
    p[1] = L'y';
    p[2] = L'z';
    EXPECT_EQ(3, s.GetLength());
    s.ReleaseBuffer(3);
    EXPECT_EQ(CString(L"xyz"), s);
}

TEST(CStringBuffer, NegativeBufferLengthThrows) {
    CString s(L"abc");
    EXPECT_TRUE(throwsInvalidArg([&] { s.GetBuffer(-1); }));
    EXPECT_EQ(CString(L"abc"), s);
}

TEST(CStringBuffer, PreallocateKeepsTheText) {
    CString s(L"abc");
    s.Preallocate(100);
    EXPECT_EQ(CString(L"abc"), s);
    const wchar_t* before = s.GetString();
    for (int i = 0; i < 90; ++i)
        s += L'.';
    EXPECT_EQ(before, s.GetString()); // the room was reserved up front
    EXPECT_EQ(93, s.GetLength());
}

TEST(CStringCompare, OrdinalAndCaseSensitive) {
    const CString s(L"abc");
    EXPECT_EQ(0, s.Compare(L"abc"));
    EXPECT_LT(s.Compare(L"abd"), 0);
    EXPECT_GT(s.Compare(L"abb"), 0);
    EXPECT_LT(s.Compare(L"abcd"), 0);
    EXPECT_GT(s.Compare(L"ab"), 0);
    // Ordinal: lower case letters sort after all upper case ones.
    EXPECT_GT(s.Compare(L"ABC"), 0);
    EXPECT_GT(CString(L"a").Compare(L"Z"), 0);
    // Code unit order, not the order of a language.
    EXPECT_GT(CString(L"\u00e9").Compare(L"f"), 0);
    EXPECT_EQ(0, CString().Compare(L""));
}

TEST(CStringCompare, NoCaseFoldsBothSidesToUpperCase) {
    const CString s(L"Hello");
    EXPECT_EQ(0, s.CompareNoCase(L"hELLO"));
    EXPECT_LT(s.CompareNoCase(L"HELLP"), 0);
    EXPECT_GT(s.CompareNoCase(L"hell"), 0);
    EXPECT_EQ(0, CString(L"\u00c4\u00d6\u00dc").CompareNoCase(L"\u00e4\u00f6\u00fc"));
    EXPECT_EQ(0, CString(L"\u0394\u0416").CompareNoCase(L"\u03b4\u0436"));
    // Folding to upper case puts '_' (0x5F) after the letters, as CompareStringOrdinal with ignore-case does.
    EXPECT_GT(CString(L"_").CompareNoCase(L"A"), 0);
    EXPECT_GT(CString(L"_").CompareNoCase(L"z"), 0);
    EXPECT_LT(CString(L"_").CompareNoCase(L"\u00e0"), 0);
}

TEST(CStringCompare, NoCaseFoldsEveryScriptWithASimpleUpperCase) {
    // Cyrillic beyond U+045F, Greek with tonos, Armenian, fullwidth Latin, Latin Extended-B.
    EXPECT_EQ(
        0,
        CString(L"\u0490\u0430\u043d\u043e\u043a.txt").CompareNoCase(L"\u0491\u0430\u043d\u043e\u043a.TXT"));
    EXPECT_EQ(0, CString(L"\u03a3\u03b7\u03bc\u03b5\u03b9\u03ce\u03c3\u03b5\u03b9\u03c2")
                     .CompareNoCase(L"\u03a3\u0397\u039c\u0395\u0399\u038f\u03a3\u0395\u0399\u03a3"));
    EXPECT_EQ(0, CString(L"\u0561\u0562\u0563").CompareNoCase(L"\u0531\u0532\u0533"));
    EXPECT_EQ(0, CString(L"\uff41\uff42").CompareNoCase(L"\uff21\uff22"));
    EXPECT_EQ(0, CString(L"\u01c6\u0180").CompareNoCase(L"\u01c4\u0243"));
    // No simple upper-case mapping, no fold: the German sharp s and the Kelvin sign stay themselves.
    EXPECT_NE(0, CString(L"stra\u00dfe").CompareNoCase(L"STRASSE"));
    EXPECT_NE(0, CString(L"\u212a").CompareNoCase(L"k"));
    // CJK has no case; a surrogate never folds, so astral letters with a case (Deseret) stay apart.
    EXPECT_EQ(0, CString(L"\u65e5\u672c").CompareNoCase(L"\u65e5\u672c"));
    EXPECT_NE(0, CString(L"\xd801\xdc00").CompareNoCase(L"\xd801\xdc28"));
}

TEST(CStringCompare, MakeUpperUsesTheSameFoldAsCompareNoCase) {
    CString s(L"\u0491\u03ce\u0561\uff41\u01c6\u00df\u00ff");
    s.MakeUpper();
    EXPECT_EQ(CString(L"\u0490\u038f\u0531\uff21\u01c4\u00df\u0178"), s);
    CString l(s);
    l.MakeLower();
    EXPECT_EQ(CString(L"\u0491\u03ce\u0561\uff41\u01c6\u00df\u00ff"), l);
}

TEST(CStringCompare, FoldRangeAndCompareFoldedAgreeWithCompareNoCase) {
    const wchar_t source[] = L"a\u0491z\u03c2_";
    wchar_t target[6] = {};
    AfxFoldUpperRange(source, 5, target);
    EXPECT_EQ(CString(L"A\u0490Z\u03a3_"), CString(target, 5));
    EXPECT_EQ(0, AfxCompareFolded(L"ab", 2, L"AB", 2));
    EXPECT_LT(AfxCompareFolded(L"ab", 2, L"ABC", 3), 0);
    EXPECT_GT(AfxCompareFolded(L"_", 1, L"Z", 1), 0);
    EXPECT_LT(AfxCompareFolded(L"\xd83d", 1, L"\ue000", 1), 0);
}

TEST(CStringCompare, Operators) {
    const CString a(L"apple");
    const CString b(L"banana");
    EXPECT_TRUE(a == L"apple");
    EXPECT_TRUE(L"apple" == a);
    EXPECT_TRUE(a != b);
    EXPECT_TRUE(a != L"Apple");
    EXPECT_TRUE(L"Apple" != a);
    EXPECT_FALSE(a != CString(L"apple"));
    EXPECT_TRUE(a < b);
    EXPECT_TRUE(b > a);
    EXPECT_FALSE(a < a);
}

TEST(CStringCase, MakeUpperAndMakeLower) {
    CString s(L"Mixed Case 123 \u00e4\u00df\u00ff");
    EXPECT_EQ(CString(L"MIXED CASE 123 \u00c4\u00df\u0178"), s.MakeUpper());
    EXPECT_EQ(CString(L"mixed case 123 \u00e4\u00df\u00ff"), s.MakeLower());
}

TEST(CStringCase, MakeUpperReturnsItself) {
    CString s(L"abc");
    CString& r = s.MakeUpper();
    EXPECT_EQ(&s, &r);
}

TEST(CStringCase, MakeReverse) {
    CString s(L"abc");
    EXPECT_EQ(CString(L"cba"), s.MakeReverse());
    CString one(L"x");
    EXPECT_EQ(CString(L"x"), one.MakeReverse());
}

TEST(CStringTrim, WhiteSpaceOnBothSides) {
    CString s(L" \t\r\n text \t\n");
    EXPECT_EQ(CString(L"text"), s.Trim());
    CString blank(L" \t ");
    EXPECT_TRUE(blank.Trim().IsEmpty());
}

TEST(CStringTrim, LeftAndRightWhiteSpace) {
    CString l(L"  left  ");
    EXPECT_EQ(CString(L"left  "), l.TrimLeft());
    CString r(L"  right  ");
    EXPECT_EQ(CString(L"  right"), r.TrimRight());
}

TEST(CStringTrim, OneCharacter) {
    CString s(L"xxaxbxx");
    EXPECT_EQ(CString(L"axb"), CString(s).Trim(L'x'));
    EXPECT_EQ(CString(L"axbxx"), CString(s).TrimLeft(L'x'));
    EXPECT_EQ(CString(L"xxaxb"), CString(s).TrimRight(L'x'));
    EXPECT_EQ(CString(L"xxaxbxx"), CString(s).Trim(L'a'));
}

TEST(CStringTrim, ASetOfCharacters) {
    const CString s(L"-=+value+=-");
    EXPECT_EQ(CString(L"value"), CString(s).Trim(L"+=-"));
    EXPECT_EQ(CString(L"value+=-"), CString(s).TrimLeft(L"=-+"));
    EXPECT_EQ(CString(L"-=+value"), CString(s).TrimRight(L"-+="));
    EXPECT_EQ(s, CString(s).Trim(L""));
    EXPECT_TRUE(CString(L"+-+").Trim(L"+-").IsEmpty());
}

TEST(CStringFind, CharacterFromAStart) {
    const CString s(L"abcabc");
    EXPECT_EQ(1, s.Find(L'b'));
    EXPECT_EQ(4, s.Find(L'b', 2));
    EXPECT_EQ(-1, s.Find(L'z'));
    EXPECT_EQ(-1, s.Find(L'a', 6));
    EXPECT_EQ(-1, s.Find(L'a', -1));
    EXPECT_EQ(-1, CString().Find(L'a'));
}

TEST(CStringFind, TextFromAStart) {
    const CString s(L"one two one");
    EXPECT_EQ(0, s.Find(L"one"));
    EXPECT_EQ(8, s.Find(L"one", 1));
    EXPECT_EQ(-1, s.Find(L"three"));
    EXPECT_EQ(-1, s.Find(L"one", 9));
    EXPECT_EQ(-1, s.Find(L"one", -1));
    // An empty needle is found where the search starts, up to the end of the text.
    EXPECT_EQ(0, s.Find(L""));
    EXPECT_EQ(4, s.Find(L"", 4));
    EXPECT_EQ(11, s.Find(L"", 11));
    EXPECT_EQ(-1, s.Find(L"", 12));
    EXPECT_EQ(-1, s.Find(static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(-1, s.Find(L"one two one too"));
}

TEST(CStringFind, ReverseFind) {
    const CString s(L"a\\b\\c");
    EXPECT_EQ(3, s.ReverseFind(L'\\'));
    EXPECT_EQ(0, s.ReverseFind(L'a'));
    EXPECT_EQ(-1, s.ReverseFind(L'/'));
    EXPECT_EQ(-1, CString().ReverseFind(L'a'));
}

TEST(CStringFind, FindOneOf) {
    const CString s(L"path/to\\file");
    EXPECT_EQ(4, s.FindOneOf(L"\\/"));
    EXPECT_EQ(7, s.FindOneOf(L"\\"));
    EXPECT_EQ(-1, s.FindOneOf(L"*?"));
    EXPECT_EQ(-1, s.FindOneOf(L""));
}

TEST(CStringExtract, LeftWithEveryKindOfCount) {
    const CString s(L"abcdef");
    EXPECT_EQ(CString(L"abc"), s.Left(3));
    EXPECT_TRUE(s.Left(0).IsEmpty());
    EXPECT_TRUE(s.Left(-1).IsEmpty());
    EXPECT_EQ(s, s.Left(6));
    EXPECT_EQ(s, s.Left(100));
}

TEST(CStringExtract, MidWithEveryKindOfPositionAndCount) {
    const CString s(L"abcdef");
    EXPECT_EQ(CString(L"cdef"), s.Mid(2));
    EXPECT_EQ(CString(L"cd"), s.Mid(2, 2));
    EXPECT_EQ(s, s.Mid(0));
    EXPECT_EQ(s, s.Mid(-3));
    EXPECT_EQ(CString(L"ab"), s.Mid(-3, 2));
    EXPECT_TRUE(s.Mid(6).IsEmpty());
    EXPECT_TRUE(s.Mid(10).IsEmpty());
    EXPECT_TRUE(s.Mid(10, 2).IsEmpty());
    EXPECT_EQ(CString(L"ef"), s.Mid(4, 100));
    EXPECT_TRUE(s.Mid(2, 0).IsEmpty());
    EXPECT_TRUE(s.Mid(2, -1).IsEmpty());
}

TEST(CStringExtract, RightWithEveryKindOfCount) {
    const CString s(L"abcdef");
    EXPECT_EQ(CString(L"def"), s.Right(3));
    EXPECT_TRUE(s.Right(0).IsEmpty());
    EXPECT_TRUE(s.Right(-2).IsEmpty());
    EXPECT_EQ(s, s.Right(6));
    EXPECT_EQ(s, s.Right(100));
}

TEST(CStringExtract, WholeStringResultsShareTheBuffer) {
    const CString s(L"abcdef");
    EXPECT_EQ(s.GetString(), s.Left(100).GetString());
    EXPECT_EQ(s.GetString(), s.Mid(0).GetString());
    EXPECT_EQ(s.GetString(), s.Right(6).GetString());
}

TEST(CStringReplace, CharacterCountsReplacements) {
    CString s(L"a.b.c");
    EXPECT_EQ(2, s.Replace(L'.', L'/'));
    EXPECT_EQ(CString(L"a/b/c"), s);
    EXPECT_EQ(0, s.Replace(L'.', L'/'));
}

TEST(CStringReplace, SameCharacterIsNoReplacement) {
    // MFC short-cuts this case and answers 0.
    CString s(L"aaa");
    EXPECT_EQ(0, s.Replace(L'a', L'a'));
    EXPECT_EQ(CString(L"aaa"), s);
}

TEST(CStringReplace, TextLeftToRightWithoutOverlap) {
    CString s(L"aaaaa");
    EXPECT_EQ(2, s.Replace(L"aa", L"b"));
    EXPECT_EQ(CString(L"bba"), s);
}

TEST(CStringReplace, TextByLongerShorterAndEmpty) {
    CString s(L"one two one");
    EXPECT_EQ(2, s.Replace(L"one", L"three"));
    EXPECT_EQ(CString(L"three two three"), s);
    EXPECT_EQ(1, s.Replace(L" two", L""));
    EXPECT_EQ(CString(L"three three"), s);
    EXPECT_EQ(2, s.Replace(L"three", static_cast<const wchar_t*>(nullptr)));
    EXPECT_EQ(CString(L" "), s);
}

TEST(CStringReplace, EmptyOrMissingOldTextReplacesNothing) {
    CString s(L"abc");
    EXPECT_EQ(0, s.Replace(L"", L"x"));
    EXPECT_EQ(0, s.Replace(static_cast<const wchar_t*>(nullptr), L"x"));
    EXPECT_EQ(0, s.Replace(L"zz", L"x"));
    EXPECT_EQ(CString(L"abc"), s);
}

TEST(CStringReplace, ReplacementContainingTheOldTextIsNotRescanned) {
    CString s(L"a-a");
    EXPECT_EQ(2, s.Replace(L"a", L"aa"));
    EXPECT_EQ(CString(L"aa-aa"), s);
}

TEST(CStringRemove, RemovesEveryOccurrenceAndCountsThem) {
    CString s(L"a b  c ");
    EXPECT_EQ(4, s.Remove(L' '));
    EXPECT_EQ(CString(L"abc"), s);
    EXPECT_EQ(0, s.Remove(L' '));
    EXPECT_EQ(CString(L"abc"), s);
}

TEST(CStringInsert, CharacterAndTextWithClampedPosition) {
    CString s(L"ace");
    EXPECT_EQ(4, s.Insert(1, L'b'));
    EXPECT_EQ(CString(L"abce"), s);
    EXPECT_EQ(5, s.Insert(3, L"d"));
    EXPECT_EQ(CString(L"abcde"), s);
    EXPECT_EQ(7, s.Insert(-4, L"<<"));
    EXPECT_EQ(CString(L"<<abcde"), s);
    EXPECT_EQ(9, s.Insert(100, L">>"));
    EXPECT_EQ(CString(L"<<abcde>>"), s);
    EXPECT_EQ(9, s.Insert(2, L""));
}

TEST(CStringInsert, ItselfIntoItself) {
    CString s(L"ab");
    s.Insert(1, s);
    EXPECT_EQ(CString(L"aabb"), s);
}

TEST(CStringDelete, PositionAndCountAreClamped) {
    CString s(L"abcdef");
    EXPECT_EQ(4, s.Delete(1, 2));
    EXPECT_EQ(CString(L"adef"), s);
    EXPECT_EQ(3, s.Delete(0));
    EXPECT_EQ(CString(L"def"), s);
    EXPECT_EQ(2, s.Delete(-5, 1)); // a negative position means the start
    EXPECT_EQ(CString(L"ef"), s);
    EXPECT_EQ(2, s.Delete(5, 1)); // beyond the end: nothing
    EXPECT_EQ(2, s.Delete(0, 0));
    EXPECT_EQ(2, s.Delete(0, -1));
    EXPECT_EQ(CString(L"ef"), s);
    EXPECT_EQ(1, s.Delete(1, 100)); // the count stops at the end
    EXPECT_EQ(CString(L"e"), s);
}

TEST(CStringFormat, ReplacesTheContent) {
    CString s(L"old content");
    s.Format(L"%d-%s", 42, L"new");
    EXPECT_EQ(CString(L"42-new"), s);
}

TEST(CStringFormat, ItselfAsAnArgument) {
    CString s(L"ab");
    s.Format(L"[%s|%s]", s, s);
    EXPECT_EQ(CString(L"[ab|ab]"), s);
}

TEST(CStringFormat, AppendFormatAddsToTheEnd) {
    CString s(L"count: ");
    s.AppendFormat(L"%d of %d", 3, 5);
    EXPECT_EQ(CString(L"count: 3 of 5"), s);
    s.AppendFormat(L"%s", s);
    EXPECT_EQ(CString(L"count: 3 of 5count: 3 of 5"), s);
}

TEST(CStringFormat, TextFromOutsideIsDataAsAnArgument) {
    const CString path(L"C:\\100%\\%s%d");
    CString s;
    s.Format(L"File %s", path);
    EXPECT_EQ(CString(L"File C:\\100%\\%s%d"), s);
}

TEST(CStringFold, SingleCharacters) {
    EXPECT_EQ(L'a', AfxFoldLower(L'A'));
    EXPECT_EQ(L'a', AfxFoldLower(L'a'));
    EXPECT_EQ(L'[', AfxFoldLower(L'['));
    EXPECT_EQ(L'Z', AfxFoldUpper(L'z'));
    EXPECT_EQ(L'\u00d7', AfxFoldLower(L'\u00d7')); // the multiplication sign has no case
    EXPECT_EQ(L'\u00f7', AfxFoldUpper(L'\u00f7'));
    EXPECT_EQ(L'\u0101', AfxFoldLower(L'\u0100'));
    EXPECT_EQ(L'i', AfxFoldLower(L'\u0130'));      // its simple lower case is the ASCII i
    EXPECT_EQ(L'I', AfxFoldUpper(L'\u0131'));      // and the dotless i's upper case the ASCII I
    EXPECT_EQ(L'\u03a3', AfxFoldUpper(L'\u03c2')); // final sigma
    EXPECT_EQ(L'\u0100', AfxFoldUpper(L'\u0101'));
    EXPECT_EQ(L'\u00ff', AfxFoldLower(L'\u0178'));
    EXPECT_EQ(L'\u0451', AfxFoldLower(L'\u0401'));
    EXPECT_EQ(L'\u0401', AfxFoldUpper(L'\u0451'));
}
