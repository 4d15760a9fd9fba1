// The one case fold: Unicode's simple upper-case mapping of each UTF-16 unit. Natively it is checked against
// the Unicode data file it was generated from; on windows against the system's own ordinal case-blind
// comparison, over every unit of the BMP.
#include "compat/afx.h"
#include "compat/win32.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

std::string hex(unsigned _nUnit) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", _nUnit);
    return text;
}

} // namespace

TEST(CaseFold, IsIdempotentAndKeepsSurrogatesAndAstralUnits) {
    for (unsigned u = 0; u <= 0xFFFF; ++u) {
        const wchar_t f = AfxFoldUpper(static_cast<wchar_t>(u));
        ASSERT_EQ(f, AfxFoldUpper(f)) << hex(u);
        if (u >= 0xD800 && u <= 0xDFFF) {
            ASSERT_EQ(static_cast<wchar_t>(u), f) << hex(u);
        }
    }
    EXPECT_EQ(L'\0', AfxFoldUpper(L'\0'));
}

TEST(CaseFold, FoldsTheScriptsUsersNamedFilesIn) {
    const std::vector<std::pair<wchar_t, wchar_t>> pairs = {
        {L'a', L'A'},           {L'\u00e4', L'\u00c4'}, {L'\u00ff', L'\u0178'}, {L'\u0180', L'\u0243'},
        {L'\u01c6', L'\u01c4'}, {L'\u01c5', L'\u01c4'}, {L'\u03ac', L'\u0386'}, {L'\u03ce', L'\u038f'},
        {L'\u03c2', L'\u03a3'}, {L'\u0491', L'\u0490'}, {L'\u04e9', L'\u04e8'}, {L'\u0561', L'\u0531'},
        {L'\u10d0', L'\u1c90'}, {L'\u1f00', L'\u1f08'}, {L'\u2170', L'\u2160'}, {L'\u24d0', L'\u24b6'},
        {L'\u2c30', L'\u2c00'}, {L'\uff41', L'\uff21'}, {L'\uab70', L'\u13a0'}, {L'\u0131', L'I'}};
    for (const auto& pair : pairs)
        EXPECT_EQ(pair.second, AfxFoldUpper(pair.first)) << hex(static_cast<unsigned>(pair.first));
    // No simple single-unit upper case: these stay.
    for (const wchar_t c : {L'\u00df', L'\u0149', L'\u212a', L'\u2126', L'\u65e5', L'\u0130', L'1'})
        EXPECT_EQ(c, AfxFoldUpper(c)) << hex(static_cast<unsigned>(c));
}

#if !defined(_WIN32)

TEST(CaseFold, IsTheSimpleUpperCaseMappingOfTheUnicodeDataFile) {
    std::ifstream data(KOR_UNICODE_DATA);
    ASSERT_TRUE(data.is_open()) << KOR_UNICODE_DATA;
    std::map<unsigned, unsigned> upper;
    std::string line;
    while (std::getline(data, line)) {
        std::vector<std::string> fields;
        std::stringstream in(line);
        for (std::string field; std::getline(in, field, ';');)
            fields.push_back(field);
        if (fields.size() < 13 || fields[12].empty())
            continue;
        const unsigned unit = static_cast<unsigned>(std::stoul(fields[0], nullptr, 16));
        const unsigned mapped = static_cast<unsigned>(std::stoul(fields[12], nullptr, 16));
        if (unit <= 0xFFFF && mapped <= 0xFFFF)
            upper[unit] = mapped;
    }
    ASSERT_GT(upper.size(), 1000u);
    int nFolded = 0;
    for (unsigned u = 0; u <= 0xFFFF; ++u) {
        const auto it = upper.find(u);
        const unsigned expected = it == upper.end() ? u : it->second;
        ASSERT_EQ(expected, static_cast<unsigned>(AfxFoldUpper(static_cast<wchar_t>(u)))) << hex(u);
        nFolded += expected != u ? 1 : 0;
    }
    EXPECT_EQ(static_cast<int>(upper.size()), nFolded);
}

#else

namespace {

// What the system folds a unit to when it compares names ordinally (the registry, the file system).
using RtlUpcase = WCHAR(WINAPI*)(WCHAR);

// The system folds a unit only when its upper case lowers back to it; ours is Unicode's simple upper case
// whole. They differ exactly on the units whose upper case belongs to another lower-case letter: the micro
// sign, dotless i, long s, the title-case digraphs, the iota subscript, final sigma, the Greek symbol forms,
// Cyrillic Extended-C and two more (U+1E9B, U+1FBE). Natively these fold, as Unicode says, so that
// "\u03a3\u03b7\u03bc\u03b5\u03b9\u03ce\u03c3\u03b5\u03b9\u03c2" matches
// "*\u03a3\u0397\u039c\u0395\u0399\u038f\u03a3\u0395\u0399\u03a3*".
bool foldsToAnotherLettersUpperCase(unsigned _nUnit) {
    const wchar_t c = static_cast<wchar_t>(_nUnit);
    const wchar_t upper = AfxFoldUpper(c);
    return upper != c && AfxFoldLower(upper) != c;
}

} // namespace

TEST(CaseFold, AgreesWithTheSystemsOrdinalCaseBlindComparisonOverTheWholeBmp) {
    const HMODULE ntdll = GetModuleHandleW(L"ntdll.dll");
    ASSERT_NE(nullptr, ntdll);
    const auto upcase =
        reinterpret_cast<RtlUpcase>(reinterpret_cast<void*>(GetProcAddress(ntdll, "RtlUpcaseUnicodeChar")));
    ASSERT_NE(nullptr, upcase);
    std::vector<std::string> unexplained;
    std::vector<std::string> known;
    int nCompared = 0;
    for (unsigned u = 1; u <= 0xFFFF; ++u) {
        const wchar_t c = static_cast<wchar_t>(u);
        const wchar_t ours = AfxFoldUpper(c);
        const wchar_t system = upcase(c);
        // A unit and our fold of it are one name to both sides, and so are a unit and the system's fold.
        for (const wchar_t other : {ours, system}) {
            SetLastError(0xdeadbeef);
            const int nSystem = CompareStringOrdinal(&c, 1, &other, 1, TRUE);
            ASSERT_NE(0, nSystem) << hex(u) << " error " << GetLastError();
            const bool bSystemEqual = nSystem == CSTR_EQUAL;
            const bool bOursEqual = AfxCompareFolded(&c, 1, &other, 1) == 0;
            ++nCompared;
            if (bSystemEqual != bOursEqual && !foldsToAnotherLettersUpperCase(u))
                unexplained.push_back(hex(u) + " vs " + hex(static_cast<unsigned>(other)) + ": system " +
                                      (bSystemEqual ? "equal" : "different") + ", ours " +
                                      (bOursEqual ? "equal" : "different"));
        }
        if (foldsToAnotherLettersUpperCase(u)) {
            // Listed: the system keeps it; anything else about it would be a new difference.
            known.push_back(hex(u));
            if (system != c)
                unexplained.push_back(hex(u) + " is folded by the system to " +
                                      hex(static_cast<unsigned>(system)));
        } else if (ours != system) {
            unexplained.push_back(hex(u) + " folds to " + hex(static_cast<unsigned>(ours)) +
                                  ", the system's to " + hex(static_cast<unsigned>(system)));
        }
        // Neighbours order alike: the system's case-blind order is the order of the folded units.
        if (u < 0xFFFF) {
            const wchar_t next = static_cast<wchar_t>(u + 1);
            const int nSystem = CompareStringOrdinal(&c, 1, &next, 1, TRUE) - CSTR_EQUAL;
            const int nOurs = AfxCompareFolded(&c, 1, &next, 1);
            if ((nSystem < 0) != (nOurs < 0) && !foldsToAnotherLettersUpperCase(u) &&
                !foldsToAnotherLettersUpperCase(u + 1))
                unexplained.push_back(hex(u) + " and " + hex(u + 1) + " order differently");
        }
    }
    EXPECT_EQ(2 * 0xFFFF, nCompared);
    const std::vector<std::string> listed = {
        "U+00B5", "U+0131", "U+017F", "U+01C5", "U+01C8", "U+01CB", "U+01F2", "U+0345", "U+03C2",
        "U+03D0", "U+03D1", "U+03D5", "U+03D6", "U+03F0", "U+03F1", "U+03F5", "U+1C80", "U+1C81",
        "U+1C82", "U+1C83", "U+1C84", "U+1C85", "U+1C86", "U+1C87", "U+1C88", "U+1E9B", "U+1FBE"};
    EXPECT_EQ(listed, known);
    std::string list;
    for (const std::string& s : unexplained)
        list += s + "\n";
    EXPECT_TRUE(unexplained.empty()) << unexplained.size() << " differences:\n" << list;
}

#endif
