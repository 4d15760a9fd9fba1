#include "guibase/foundation/UQWildcard.h"

#include "support/LogCheck.h"

namespace {

int matches(const wchar_t* pattern, const wchar_t* text, int caseSensitive = 0) {
    UQWildcard w(caseSensitive);
    w.mf_implInitialize(pattern);
    return w.mf_matches(text);
}

} // namespace

TEST(UQWildcard, CaseBlindWhenTheCaseFlagIsZero) {
    EXPECT_EQ(matches(L"A*B", L"ab", 0), 1);
    EXPECT_EQ(matches(L"A*B", L"ab", 1), 0);
    EXPECT_EQ(matches(L"A*B", L"AxxB", 1), 1);
}

TEST(UQWildcard, CaseBlindPatternIsStoredUpperCased) {
    UQWildcard w;
    w.mf_implInitialize(L"report*.docx");
    EXPECT_EQ(w.mf_getPattern(), CString(L"REPORT*.DOCX"));
    UQWildcard exact(1);
    exact.mf_implInitialize(L"report*.docx");
    EXPECT_EQ(exact.mf_getPattern(), CString(L"report*.docx"));
}

TEST(UQWildcard, OneAsteriskMatchesTheEmptyText) {
    EXPECT_EQ(matches(L"*", L""), 1);
}

TEST(UQWildcard, OneQuestionMarkDoesNotMatchTheEmptyText) {
    EXPECT_EQ(matches(L"?", L""), 0);
    EXPECT_EQ(matches(L"?", L"x"), 1);
    EXPECT_EQ(matches(L"?", L"xy"), 0);
}

TEST(UQWildcard, StarDotTxtMatchesATextWithSeveralDots) {
    EXPECT_EQ(matches(L"*.txt", L"a.b.txt"), 1);
    EXPECT_EQ(matches(L"*.txt", L"a.b.txt.bak"), 0);
}

TEST(UQWildcard, BacktracksOverRepeatedSeparators) {
    EXPECT_EQ(matches(L"a*b*c", L"axbxbxc"), 1);
    EXPECT_EQ(matches(L"a*b*c", L"axbxbx"), 0);
    EXPECT_EQ(matches(L"*ab", L"aab"), 1);
}

TEST(UQWildcard, LiteralPrefixMustMatchExactly) {
    EXPECT_EQ(matches(L"abc", L"abc"), 1);
    EXPECT_EQ(matches(L"abc", L"abcd"), 0);
    EXPECT_EQ(matches(L"abcd", L"abc"), 0);
    EXPECT_EQ(matches(L"a?c", L"abc"), 1);
    EXPECT_EQ(matches(L"x*", L"abc"), 0);
}

TEST(UQWildcard, TrailingAsterisksMatchTheEndOfText) {
    EXPECT_EQ(matches(L"abc***", L"abc"), 1);
    EXPECT_EQ(matches(L"**", L""), 1);
}

TEST(UQWildcard, PatternCharactersInTheTextAreOrdinaryCharacters) {
    // No escape exists: a literal '*' or '?' cannot be matched by itself, only by a wildcard.
    EXPECT_EQ(matches(L"100%", L"100%"), 1);
    EXPECT_EQ(matches(L"a?b", L"a*b"), 1);
    EXPECT_EQ(matches(L"%s%d", L"%s%d"), 1);
}

TEST(UQWildcard, WildcardFlagIsSetOnlyForAsteriskOrQuestionMark) {
    UQWildcard w;
    w.mf_implInitialize(L"plain.txt");
    EXPECT_EQ(w.mf_hasWildcards(), 0);
    w.mf_implInitialize(L"pl?in.txt");
    EXPECT_EQ(w.mf_hasWildcards(), 1);
    // Matching does not consult the flag.
    EXPECT_EQ(w.mf_matches(L"PLAIN.TXT"), 1);
}

TEST(UQWildcard, EmptyPatternIsAParameterError) {
    LogCheck log;
    UQWildcard w;
    EXPECT_EQ(thrownCategory([&] { w.mf_implInitialize(CString()); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQWildcard::mf_implInitialize", "No pattern"}}));
}

TEST(UQWildcard, MatchingWithoutPatternIsAnInitializationError) {
    LogCheck log;
    UQWildcard w;
    EXPECT_EQ(thrownCategory([&] { w.mf_matches(L"x"); }), "_E_::Initialization");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWildcard::mf_matches", "Pattern not initialized"}}));
}

TEST(UQWildcard, CaseBlindMatchingFoldsEveryScriptWithASimpleUpperCase) {
    // Cyrillic beyond U+045F, Greek with tonos and final sigma, Armenian, fullwidth Latin, Latin Extended-B.
    EXPECT_EQ(matches(L"*\u0491\u0430\u043d\u043e\u043a*", L"C:\\u\\\u0490\u0430\u043d\u043e\u043a.txt"), 1);
    EXPECT_EQ(matches(L"*\u03a3\u0397\u039c\u0395\u0399\u038f\u03a3\u0395\u0399\u03a3*",
                      L"\u03a3\u03b7\u03bc\u03b5\u03b9\u03ce\u03c3\u03b5\u03b9\u03c2.doc"),
              1);
    EXPECT_EQ(matches(L"\u0561\u0562?", L"\u0531\u0532\u0533"), 1);
    EXPECT_EQ(matches(L"\uff41*", L"\uff21\uff22"), 1);
    EXPECT_EQ(matches(L"\u01c6*", L"\u01c4x"), 1);
    // Case-sensitive matching folds nothing.
    EXPECT_EQ(matches(L"\u0491*", L"\u0490", 1), 0);
}

TEST(UQWildcard, QuestionMarkIsOneUtf16UnitSoAnAstralCharacterTakesTwo) {
    const wchar_t emoji[] = {L'e', L'-', static_cast<wchar_t>(0xD83D), static_cast<wchar_t>(0xDE00), L'.',
                             L't', 0};
    EXPECT_EQ(matches(L"e-??.t", emoji), 1);
    EXPECT_EQ(matches(L"e-?.t", emoji), 0);
}
