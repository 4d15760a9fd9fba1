// The native store answers as the registry does: names fold with the one fold, the registry's limits are
// enforced the same way on both targets, %NAME% expands by the system's rules, and what the registry
// cannot hold is refused with a Parameter error that names it, leaving what is stored as it was.
#include "BaseTestSupport.h"
#include "guibase/settings/RegistrySandbox.h"
#include "support/LogCheck.h"

#include <string>
#include <vector>

namespace {

const wchar_t* const KEY = L"SOFTWARE\\korguibase\\Names";

CString units(std::initializer_list<unsigned> _list) {
    CString out;
    for (const unsigned u : _list)
        out += static_cast<wchar_t>(u);
    return out;
}

struct Thrown {
    std::string category;
    std::string detail;
};

template <class F> Thrown thrown(F&& _f) {
    try {
        _f();
    } catch (const UQErrno& e) {
        const UQErrnoValue* v = e.mf_getData().mf_getValue();
        return {v != nullptr ? utf8(v->mf_getName()) : "empty UQErrno", utf8(e.mf_getDetail())};
    }
    return {"no exception", ""};
}

CString readString(const CString& _sName, const CString& _sKey = KEY) {
    CString value;
    UQRegistry::mf_getValue(_sName, value, _sKey, HKEY_CURRENT_USER);
    return value;
}

class UQRegistryNamesTest : public ::testing::Test {
protected:
    registrytest::RegistrySandbox m_sandbox;
    LogCheck m_log;
};

} // namespace

TEST_F(UQRegistryNamesTest, ValueNamesFoldEveryLetterWithASimpleUpperCase) {
    // Armenian, Greek with tonos, Cyrillic beyond U+045F, fullwidth Latin, Latin Extended-B.
    const std::vector<std::pair<CString, CString>> names = {{L"\u0561\u0562\u0563", L"\u0531\u0532\u0533"},
                                                            {L"\u03ac\u03ce", L"\u0386\u038f"},
                                                            {L"\u0491\u04e9", L"\u0490\u04e8"},
                                                            {L"\uff41\uff42", L"\uff21\uff22"},
                                                            {L"\u0180\u01c6", L"\u0243\u01c4"}};
    for (const auto& pair : names) {
        UQRegistry::mf_setValue(pair.first, L"lower", 0, KEY, HKEY_CURRENT_USER);
        UQRegistry::mf_setValue(pair.second, L"upper", 0, KEY, HKEY_CURRENT_USER);
        EXPECT_EQ("upper", utf8(readString(pair.first))) << utf8(pair.first);
    }
}

TEST_F(UQRegistryNamesTest, KeyNamesFoldEveryLetterWithASimpleUpperCase) {
    UQRegistry::mf_setValue(L"V", L"lower", 0, L"SOFTWARE\\\u0561\u0562\u0563\\\u03ac", HKEY_CURRENT_USER);
    UQRegistry::mf_setValue(L"V", L"upper", 0, L"software\\\u0531\u0532\u0533\\\u0386", HKEY_CURRENT_USER);
    EXPECT_EQ("upper", utf8(readString(L"V", L"SOFTWARE\\\u0561\u0562\u0563\\\u03ac")));
    EXPECT_EQ(1, UQRegistry::mf_PathExists(L"Software\\\u0531\u0562\u0563", HKEY_CURRENT_USER));
    // The sharp s has no simple upper case: "STRASSE" is another key.
    UQRegistry::mf_setValue(L"V", L"x", 0, L"SOFTWARE\\stra\u00dfe", HKEY_CURRENT_USER);
    EXPECT_EQ(0, UQRegistry::mf_PathExists(L"SOFTWARE\\STRASSE", HKEY_CURRENT_USER));
}

// Each refused write below targets a name whose cut form names a value that is stored: a store that cut the
// name instead of refusing it would overwrite that value.

TEST_F(UQRegistryNamesTest, AValueNameOf16384UnitsIsRefusedAndTheValueOfItsFirst16383Stays) {
    const CString longest(L'n', 16383);
    UQRegistry::mf_setValue(longest, L"kept", 0, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ("kept", utf8(readString(longest)));
    const Thrown t =
        thrown([&] { UQRegistry::mf_setValue(longest + L"n", L"refused", 0, KEY, HKEY_CURRENT_USER); });
    EXPECT_EQ("_E_::Parameter", t.category);
    EXPECT_EQ("Value name 'nnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnnn...' (16384 units) in "
              "'HKCU\\SOFTWARE\\korguibase\\Names' is longer than the registry's limit of 16383 units",
              t.detail);
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_setValue::1", t.detail}}));
    EXPECT_EQ("kept", utf8(readString(longest)));
    // Reading and asking are refused alike, before the store is touched.
    EXPECT_EQ("_E_::Parameter", thrown([&] { readString(longest + L"n"); }).category);
    EXPECT_EQ("_E_::Parameter",
              thrown([&] { UQRegistry::mf_exists(longest + L"n", KEY, HKEY_CURRENT_USER); }).category);
}

TEST_F(UQRegistryNamesTest, AValueNameOf8192CharactersBeyondTheBmpIsRefusedAndTheValueOfItsFirstUnitsStays) {
    // 8 191 characters beyond the BMP and one more unit are the longest name; 8 192 are 16 384 units.
    CString astral;
    for (int i = 0; i < 8191; ++i)
        astral += units({0xD83D, 0xDE00});
    const CString longest = astral + units({0xD83D});
    UQRegistry::mf_setValue(longest, L"kept", 0, KEY, HKEY_CURRENT_USER);
    const Thrown t = thrown([&] {
        UQRegistry::mf_setValue(astral + units({0xD83D, 0xDE00}), L"refused", 0, KEY, HKEY_CURRENT_USER);
    });
    EXPECT_EQ("_E_::Parameter", t.category);
    EXPECT_NE(std::string::npos,
              t.detail.find("' (16384 units) in 'HKCU\\SOFTWARE\\korguibase\\Names' is longer "
                            "than the registry's limit of 16383 units"))
        << t.detail;
    EXPECT_EQ("kept", utf8(readString(longest)));
}

TEST_F(UQRegistryNamesTest, AKeyNameOf256UnitsIsRefusedAndTheKeyOfItsFirst255Stays) {
    const CString longest = CString(L"SOFTWARE\\") + CString(L'k', 255);
    UQRegistry::mf_setValue(L"V", L"kept", 0, longest, HKEY_CURRENT_USER);
    const CString tooLong = longest + L"k\\Sub";
    const Thrown t = thrown([&] { UQRegistry::mf_setValue(L"V", L"x", 0, tooLong, HKEY_CURRENT_USER); });
    EXPECT_EQ("_E_::Parameter", t.category);
    EXPECT_EQ("Key name 'kkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkkk...' (256 units) in "
              "'HKCU\\SOFTWARE\\kkkkkkkkkkkkkkkkkkkkkkkkkk...' is longer than the registry's limit of 255 "
              "units",
              t.detail);
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_setValue::1", t.detail}}));
    EXPECT_EQ("kept", utf8(readString(L"V", longest)));
    EXPECT_EQ(0, UQRegistry::mf_PathExists(longest + L"\\Sub", HKEY_CURRENT_USER));
}

TEST_F(UQRegistryNamesTest, AKeyNameOver255UnitsIsRefusedForReadsAndExistenceQuestionsToo) {
    const CString tooLong = CString(L"SOFTWARE\\") + CString(L'k', 256);
    EXPECT_EQ("_E_::Parameter",
              thrown([&] { UQRegistry::mf_PathExists(tooLong, HKEY_CURRENT_USER); }).category);
    EXPECT_EQ("_E_::Parameter", thrown([&] { readString(L"V", tooLong); }).category);
    EXPECT_EQ("_E_::Parameter",
              thrown([&] { UQRegistry::mf_exists(L"V", tooLong, HKEY_CURRENT_USER); }).category);
    EXPECT_EQ(3u, m_log.count());
}

TEST_F(UQRegistryNamesTest, ANulInsideAKeyPathIsRefusedAndTheKeyBeforeItStays) {
    UQRegistry::mf_setValue(L"V", L"kept", 0, KEY, HKEY_CURRENT_USER);
    const CString withNul(L"SOFTWARE\\korguibase\\Names\0Tail", 30);
    const Thrown t = thrown([&] { UQRegistry::mf_setValue(L"V", L"cut", 0, withNul, HKEY_CURRENT_USER); });
    EXPECT_EQ("_E_::Parameter", t.category);
    EXPECT_EQ("Key path 'SOFTWARE\\korguibase\\Names\\0Tail' in 'HKCU' holds a NUL character at unit 26; the "
              "registry ends a name at a NUL",
              t.detail);
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_setValue::1", t.detail}}));
    EXPECT_EQ("kept", utf8(readString(L"V")));
    EXPECT_EQ(0, UQRegistry::mf_PathExists(L"SOFTWARE\\korguibase\\Names\\Tail", HKEY_CURRENT_USER));
    EXPECT_EQ("_E_::Parameter",
              thrown([&] { UQRegistry::mf_PathExists(withNul, HKEY_CURRENT_USER); }).category);
}

TEST_F(UQRegistryNamesTest, ANulInsideAValueNameIsRefusedAndTheValueBeforeItStays) {
    UQRegistry::mf_setValue(L"Na", L"kept", 0, KEY, HKEY_CURRENT_USER);
    const CString withNul(L"Na\0me", 5);
    const Thrown t = thrown([&] { UQRegistry::mf_setValue(withNul, 7, KEY, HKEY_CURRENT_USER); });
    EXPECT_EQ("_E_::Parameter", t.category);
    EXPECT_EQ(
        "Value name 'Na\\0me' in 'HKCU\\SOFTWARE\\korguibase\\Names' holds a NUL character at unit 3; the "
        "registry ends a name at a NUL",
        t.detail);
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_setValue::2", t.detail}}));
    EXPECT_EQ("kept", utf8(readString(L"Na")));
    EXPECT_EQ("_E_::Parameter", thrown([&] { readString(withNul); }).category);
}

TEST_F(UQRegistryNamesTest, ANulInsideAStringIsRefusedAndTheStringBeforeStays) {
    UQRegistry::mf_setValue(L"S", L"kept", 0, KEY, HKEY_CURRENT_USER);
    for (const int bExpandable : {0, 1}) {
        const Thrown t = thrown(
            [&] { UQRegistry::mf_setValue(L"S", CString(L"a\0b", 3), bExpandable, KEY, HKEY_CURRENT_USER); });
        EXPECT_EQ("_E_::Parameter", t.category);
        EXPECT_EQ(
            "The string for value 'S' in 'HKCU\\SOFTWARE\\korguibase\\Names' holds a NUL character at unit "
            "2; the registry ends a string at a NUL",
            t.detail);
        EXPECT_EQ("kept", utf8(readString(L"S")));
    }
    EXPECT_EQ(2u, m_log.count());
}

TEST_F(UQRegistryNamesTest, AnEmptyListEntryIsRefusedAndTheListBeforeStays) {
    UQArray<CString> before;
    before.Add(L"kept");
    UQRegistry::mf_setValues(L"List", before, KEY, HKEY_CURRENT_USER);
    UQArray<CString> in;
    in.Add(L"c");
    in.Add(L"");
    in.Add(L"d");
    const Thrown t = thrown([&] { UQRegistry::mf_setValues(L"List", in, KEY, HKEY_CURRENT_USER); });
    EXPECT_EQ("_E_::Parameter", t.category);
    EXPECT_EQ(
        "Entry 1 of the list for value 'List' in 'HKCU\\SOFTWARE\\korguibase\\Names' is empty; a list of "
        "strings ends at an empty entry",
        t.detail);
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_setValues", t.detail}}));
    UQArray<CString> out;
    UQRegistry::mf_getValues(L"List", out, KEY, HKEY_CURRENT_USER);
    ASSERT_EQ(1, out.GetSize());
    EXPECT_EQ("kept", utf8(out[0]));
}

TEST_F(UQRegistryNamesTest, ANulInsideAListEntryIsRefusedAndTheListBeforeStays) {
    UQArray<CString> before;
    before.Add(L"kept");
    UQRegistry::mf_setValues(L"List", before, KEY, HKEY_CURRENT_USER);
    const std::vector<std::pair<CString, int>> entries = {
        {CString(L"\0a", 2), 1}, {CString(L"a\0", 2), 2}, {CString(L"a\0\0b", 4), 2}};
    for (const auto& entry : entries) {
        UQArray<CString> in;
        in.Add(L"c");
        in.Add(entry.first);
        const Thrown t = thrown([&] { UQRegistry::mf_setValues(L"List", in, KEY, HKEY_CURRENT_USER); });
        EXPECT_EQ("_E_::Parameter", t.category);
        EXPECT_EQ("Entry 1 of the list for value 'List' in 'HKCU\\SOFTWARE\\korguibase\\Names' holds a NUL "
                  "character at unit " +
                      std::to_string(entry.second) + "; a list of strings ends an entry at a NUL",
                  t.detail);
        UQArray<CString> out;
        UQRegistry::mf_getValues(L"List", out, KEY, HKEY_CURRENT_USER);
        ASSERT_EQ(1, out.GetSize());
        EXPECT_EQ("kept", utf8(out[0]));
    }
    EXPECT_EQ(3u, m_log.count());
}

TEST_F(UQRegistryNamesTest, ExpansionFindsVariablesCaseBlind) {
    basetest::EnvironmentOverride a(L"KOR_TEST_A", L"alpha");
    UQRegistry::mf_setValue(L"E", L"x%kor_test_a%y", 1, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ("xalphay", utf8(readString(L"E")));
}

TEST_F(UQRegistryNamesTest, UnknownReferenceStaysWholeWithItsClosingPercent) {
    basetest::EnvironmentOverride a(L"KOR_TEST_A", L"alpha");
    basetest::EnvironmentOverride nope(L"NOPE", nullptr);
    UQRegistry::mf_setValue(L"E", L"%NOPE%KOR_TEST_A%", 1, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ("%NOPE%KOR_TEST_A%", utf8(readString(L"E")));
    UQRegistry::mf_setValue(L"E", L"%%%KOR_TEST_A%%", 1, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ("%%alpha%", utf8(readString(L"E")));
}

TEST_F(UQRegistryNamesTest, ExpandableStringLongerThanTheSystemsExpansionLimitIsReadWhole) {
    basetest::EnvironmentOverride a(L"KOR_TEST_A", L"alpha");
    const CString text = CString(L'x', 40000) + L"%KOR_TEST_A%" + CString(L'y', 100);
    UQRegistry::mf_setValue(L"Long", text, 1, KEY, HKEY_CURRENT_USER);
    const CString value = readString(L"Long");
    EXPECT_EQ(40105, value.GetLength());
    EXPECT_EQ(CString(L'x', 40000) + L"alpha" + CString(L'y', 100), value);
}

// Stored below the system's limit of 32 766 units, and past it once expanded: the read buffer grows.
TEST_F(UQRegistryNamesTest, ExpandableStringThatExpandsPastTheSystemsLimitIsReadWhole) {
    const CString variable(L'v', 3000);
    basetest::EnvironmentOverride a(L"KOR_TEST_LONG", variable.GetString());
    const CString text = CString(L'x', 32000) + L"%KOR_TEST_LONG%";
    UQRegistry::mf_setValue(L"Grows", text, 1, KEY, HKEY_CURRENT_USER);
    const CString value = readString(L"Grows");
    EXPECT_EQ(35000, value.GetLength());
    EXPECT_EQ(CString(L'x', 32000) + variable, value);
    // With nothing to expand, a stored text of 70 000 units comes back as it is.
    const CString plain = CString(L'p', 70000);
    UQRegistry::mf_setValue(L"Plain", plain, 1, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(plain, readString(L"Plain"));
}

#if defined(_WIN32)
TEST_F(UQRegistryNamesTest, ExpansionAgreesWithTheSystemsBelowItsLimit) {
    basetest::EnvironmentOverride a(L"KOR_TEST_A", L"alpha");
    basetest::EnvironmentOverride nope(L"NOPE", nullptr);
    for (const wchar_t* text : {L"x%kor_test_a%y", L"%NOPE%KOR_TEST_A%", L"%%%KOR_TEST_A%%", L"100% sure",
                                L"%KOR_TEST_A", L"%NOPE%%KOR_TEST_A%", L"%", L"%%"}) {
        UQRegistry::mf_setValue(L"E", text, 1, KEY, HKEY_CURRENT_USER);
        wchar_t expected[256];
        ASSERT_NE(0u, ExpandEnvironmentStringsW(text, expected, 256)) << utf8(text);
        EXPECT_EQ(utf8(expected), utf8(readString(L"E"))) << utf8(text);
    }
}
#endif

TEST_F(UQRegistryNamesTest, UnpairedSurrogatesInNamesAndDataAreKept) {
    const CString high = units({'a', 0xD800});
    const CString low = units({'a', 0xDC00});
    const CString data = units({'x', 0xDFFF, 'y', 0xD83D});
    UQRegistry::mf_setValue(high, data, 0, KEY, HKEY_CURRENT_USER);
    UQRegistry::mf_setValue(low, L"other", 0, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(data, readString(high));
    EXPECT_EQ(CString(L"other"), readString(low));
    UQArray<CString> in;
    in.Add(data);
    in.Add(units({0xDC00}));
    UQRegistry::mf_setValues(L"List", in, KEY, HKEY_CURRENT_USER);
    UQArray<CString> out;
    UQRegistry::mf_getValues(L"List", out, KEY, HKEY_CURRENT_USER);
    ASSERT_EQ(2, out.GetSize());
    EXPECT_EQ(data, out[0]);
    EXPECT_EQ(units({0xDC00}), out[1]);
}
