#include <cstdio>
// The product's registry: values by hive, key path and name, three types, case-blind paths; every failure
// logged where it arises and thrown with the hive, key and value in its text. Each test has a registry of
// its own (RegistrySandbox).
#include "BaseTestSupport.h"
#include "guibase/settings/RegistrySandbox.h"
#include "support/LogCheck.h"

#include <atomic>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sqlite3.h>

#include <chrono>
#include <csignal>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

const wchar_t* const KEY = L"SOFTWARE\\korguibase\\Test";

std::string s(const CString& c) {
    return c.ToUtf8();
}

std::vector<std::string> list(const UQArray<CString>& a) {
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < a.GetSize(); ++i)
        out.push_back(s(a[i]));
    return out;
}

void fill(UQArray<CString>& a, std::initializer_list<const wchar_t*> entries) {
    a.RemoveAll();
    for (const wchar_t* e : entries)
        a.Add(e);
}

// The category and detail of the UQErrno that f throws.
struct Thrown {
    std::string category;
    std::string detail;
    std::string text;
};

template <class F> Thrown thrown(F&& f) {
    try {
        f();
    } catch (const UQErrno& e) {
        const UQErrnoValue* v = e.mf_getData().mf_getValue();
        return {v != nullptr ? utf8(v->mf_getName()) : "empty UQErrno", s(e.mf_getDetail()),
                s(e.mf_toString())};
    }
    return {"no exception", "", ""};
}

class UQRegistryTest : public ::testing::Test {
protected:
    void TearDown() override { UQRegistryInjection::mf_clearInjection(); }

    registrytest::RegistrySandbox m_sandbox;
    LogCheck m_log;
};

} // namespace

TEST_F(UQRegistryTest, RootIsTheProductKeyWithTheSubKeyAppended) {
    EXPECT_EQ(s(UQRegistry::mf_getRegistryRoot(L"Migration")),
              "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Migration");
    EXPECT_EQ(s(UQRegistry::mf_getRegistryRoot(L"Options")),
              "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Options");
    EXPECT_EQ(s(UQRegistry::mf_getRegistryRoot(L"")), "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient");
    EXPECT_EQ(s(UQRegistry::mf_getRegistryRoot(L"\\Backup\\")),
              "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Backup");
}

TEST_F(UQRegistryTest, StringIsReadBackAsWrittenAndOverwritten) {
    UQRegistry::mf_setValue(L"Text", L"first", 0, KEY, HKEY_LOCAL_MACHINE);
    CString value;
    UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "first");
    UQRegistry::mf_setValue(L"Text", L"C:\\Program Files\\Gr\u00f6\u00dfe \u20ac", 0, KEY,
                            HKEY_LOCAL_MACHINE);
    UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "C:\\Program Files\\Gr\xc3\xb6\xc3\x9f"
                        "e \xe2\x82\xac");
    UQRegistry::mf_setValue(L"Text", L"", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "");
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQRegistryTest, NumberKeepsAll32Bits) {
    UQRegistry::mf_setValue(L"Number", -1, KEY, HKEY_CURRENT_USER);
    int n = 0;
    UQRegistry::mf_getValue(L"Number", n, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(n, -1);
    DWORD dw = 7;
    EXPECT_EQ(UQRegistry::mf_getOrSetValue(L"Number", dw, KEY, HKEY_CURRENT_USER), 1);
    EXPECT_EQ(dw, 0xFFFFFFFFu);
    UQRegistry::mf_setValue(L"Number", 0x7FFFFFFF, KEY, HKEY_CURRENT_USER);
    UQRegistry::mf_getValue(L"Number", n, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(n, 0x7FFFFFFF);
}

TEST_F(UQRegistryTest, ListKeepsOrderAndEveryCharacter) {
    UQArray<CString> in;
    fill(in, {L"b.opt", L"A.opt", L"a.opt", L"\u00c4\u20ac \\\\server\\share\\x.opt"});
    UQRegistry::mf_setValues(L"List", in, KEY, HKEY_CURRENT_USER);
    UQArray<CString> out;
    out.Add(L"left over");
    UQRegistry::mf_getValues(L"List", out, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(list(out), (std::vector<std::string>{"b.opt", "A.opt", "a.opt",
                                                   "\xc3\x84\xe2\x82\xac \\\\server\\share\\x.opt"}));
}

TEST_F(UQRegistryTest, EmptyListIsKeptAsAnEmptyList) {
    UQArray<CString> none;
    UQRegistry::mf_setValues(L"List", none, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(UQRegistry::mf_exists(L"List", KEY, HKEY_CURRENT_USER), 1);
    UQArray<CString> out;
    out.Add(L"left over");
    UQRegistry::mf_getValues(L"List", out, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(out.GetSize(), 0);
}

TEST_F(UQRegistryTest, ListWithAnEmptyEntryIsRefusedAndNothingIsWritten) {
    UQArray<CString> in;
    fill(in, {L"a.opt", L"", L"b.opt"});
    const Thrown t = thrown([&] { UQRegistry::mf_setValues(L"List", in, KEY, HKEY_CURRENT_USER); });
    EXPECT_EQ(t.category, "_E_::Parameter");
    EXPECT_EQ(
        t.detail,
        "Entry 1 of the list for value 'List' in 'HKCU\\SOFTWARE\\korguibase\\Test' is empty; a list of "
        "strings ends at an empty entry");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_setValues", t.detail}}));
    EXPECT_EQ(UQRegistry::mf_exists(L"List", KEY, HKEY_CURRENT_USER), 0);
}

TEST_F(UQRegistryTest, KeyPathsAndValueNamesAreCaseBlind) {
    UQRegistry::mf_setValue(L"MgmtClassDefault", L"gold", 0, L"Software\\Corvex\\Migration",
                            HKEY_LOCAL_MACHINE);
    CString value;
    UQRegistry::mf_getValue(L"MGMTCLASSDEFAULT", value, L"SOFTWARE\\CORVEX\\migration", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "gold");
    UQRegistry::mf_setValue(L"mgmtclassdefault", L"silver", 0, L"software\\corvex\\MIGRATION",
                            HKEY_LOCAL_MACHINE);
    UQRegistry::mf_getValue(L"MgmtClassDefault", value, L"Software\\Corvex\\Migration", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "silver");
    EXPECT_EQ(UQRegistry::mf_PathExists(L"SOFTWARE\\corvex", HKEY_LOCAL_MACHINE), 1);
}

TEST_F(UQRegistryTest, LeadingTrailingAndDoubledBackslashesDoNotCount) {
    UQRegistry::mf_setValue(L"Text", L"x", 0, L"\\SOFTWARE\\\\korguibase\\Test\\", HKEY_LOCAL_MACHINE);
    CString value;
    UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "x");
}

TEST_F(UQRegistryTest, HivesAreSeparate) {
    UQRegistry::mf_setValue(L"Text", L"machine", 0, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(UQRegistry::mf_exists(L"Text", KEY, HKEY_CURRENT_USER), 0);
    EXPECT_EQ(UQRegistry::mf_PathExists(KEY, HKEY_CURRENT_USER), 0);
    UQRegistry::mf_setValue(L"Text", L"user", 0, KEY, HKEY_CURRENT_USER);
    CString machine, user;
    UQRegistry::mf_getValue(L"Text", machine, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_getValue(L"Text", user, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(s(machine), "machine");
    EXPECT_EQ(s(user), "user");
}

TEST_F(UQRegistryTest, EmptyUserKeyIsTheProductsPerUserKey) {
    UQRegistry::mf_setValue(L"HistorySearchRoot", L"\\\\server\\share", 0, L"", HKEY_CURRENT_USER);
    CString value;
    UQRegistry::mf_getValue(L"HistorySearchRoot", value, UQRegistry::mf_getRegistryRoot(L""),
                            HKEY_CURRENT_USER);
    EXPECT_EQ(s(value), "\\\\server\\share");
    EXPECT_EQ(
        UQRegistry::mf_PathExists(L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient", HKEY_CURRENT_USER),
        1);
    EXPECT_EQ(UQRegistry::mf_exists(L"HistorySearchRoot", L"", HKEY_LOCAL_MACHINE), 0);
}

TEST_F(UQRegistryTest, MissingValueIsARegistryErrorNamingHiveKeyAndValue) {
    UQRegistry::mf_setValue(L"Other", 1, KEY, HKEY_LOCAL_MACHINE);
    CString value(L"unchanged");
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Absent", value, KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail, "Value 'Absent' not found in 'HKLM\\SOFTWARE\\korguibase\\Test'");
    EXPECT_EQ(t.text,
              "[E] _E_::Registry: A registry value could not be read or written. (Value 'Absent' not found "
              "in 'HKLM\\SOFTWARE\\korguibase\\Test')");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::1", t.detail}}));
    EXPECT_EQ(s(value), "unchanged");
}

TEST_F(UQRegistryTest, MissingKeyIsARegistryErrorNamingTheKey) {
    UQArray<CString> out;
    const Thrown t =
        thrown([&] { UQRegistry::mf_getValues(L"List", out, L"SOFTWARE\\Nowhere", HKEY_CURRENT_USER); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail, "Key 'HKCU\\SOFTWARE\\Nowhere' not found (value 'List')");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValues", t.detail}}));
}

TEST_F(UQRegistryTest, MissingValueUnderTheEmptyUserKeyNamesThePerUserKey) {
    int n = 0;
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Flag", n, L"", HKEY_CURRENT_USER); });
    EXPECT_EQ(t.detail,
              "Key 'HKCU\\SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient' not found (value 'Flag')");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::2", t.detail}}));
}

TEST_F(UQRegistryTest, ValueOfAnotherTypeIsARegistryError) {
    UQRegistry::mf_setValue(L"Text", L"1", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Number", 1, KEY, HKEY_LOCAL_MACHINE);
    UQArray<CString> entries;
    fill(entries, {L"x"});
    UQRegistry::mf_setValues(L"List", entries, KEY, HKEY_LOCAL_MACHINE);

    int n = 0;
    CString text;
    UQArray<CString> out;
    DWORD dw = 5;
    int flag = 5;
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getValue(L"Text", n, KEY, HKEY_LOCAL_MACHINE); }).category,
              "_E_::Registry");
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getValue(L"Number", text, KEY, HKEY_LOCAL_MACHINE); }).category,
              "_E_::Registry");
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getValues(L"Text", out, KEY, HKEY_LOCAL_MACHINE); }).category,
              "_E_::Registry");
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getValue(L"List", text, KEY, HKEY_LOCAL_MACHINE); }).category,
              "_E_::Registry");
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getOrSetValue(L"Text", dw, KEY, HKEY_LOCAL_MACHINE); }).category,
              "_E_::Registry");
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getOrSetValue(L"List", flag, KEY, HKEY_LOCAL_MACHINE); }).category,
              "_E_::Registry");
    const std::string key = "'HKLM\\SOFTWARE\\korguibase\\Test'";
    EXPECT_EQ(
        m_log.lines(),
        (std::vector<LogLine>{
            {'E', "UQRegistry::mf_getValue::2", "Value 'Text' in " + key + " is a string, not a number"},
            {'E', "UQRegistry::mf_getValue::1", "Value 'Number' in " + key + " is a number, not a string"},
            {'E', "UQRegistry::mf_getValues",
             "Value 'Text' in " + key + " is a string, not a list of strings"},
            {'E', "UQRegistry::mf_getValue::1",
             "Value 'List' in " + key + " is a list of strings, not a string"},
            {'E', "UQRegistry::mf_getOrSetValue::2", "Value 'Text' in " + key + " is a string, not a number"},
            {'E', "UQRegistry::mf_getOrSetValue::1",
             "Value 'List' in " + key + " is a list of strings, not a number"}}));
    // The value of the other type stays as it was.
    UQRegistry::mf_getValue(L"Text", text, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(text), "1");
    EXPECT_EQ(dw, 5u);
    EXPECT_EQ(flag, 5);
}

TEST_F(UQRegistryTest, WritingAnotherTypeReplacesTheValue) {
    UQRegistry::mf_setValue(L"Value", L"text", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Value", 3, KEY, HKEY_LOCAL_MACHINE);
    int n = 0;
    UQRegistry::mf_getValue(L"Value", n, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(n, 3);
}

TEST_F(UQRegistryTest, GetOrSetWritesTheDefaultOnlyWhenTheValueIsMissing) {
    int n = 1;
    EXPECT_EQ(
        UQRegistry::mf_getOrSetValue(L"FileSecurityDefault", n, L"SOFTWARE\\New\\Key", HKEY_LOCAL_MACHINE),
        0);
    EXPECT_EQ(n, 1);
    int stored = 0;
    UQRegistry::mf_getValue(L"FileSecurityDefault", stored, L"SOFTWARE\\New\\Key", HKEY_LOCAL_MACHINE);
    EXPECT_EQ(stored, 1);

    UQRegistry::mf_setValue(L"FileSecurityDefault", 0, L"SOFTWARE\\New\\Key", HKEY_LOCAL_MACHINE);
    n = 1;
    EXPECT_EQ(
        UQRegistry::mf_getOrSetValue(L"FileSecurityDefault", n, L"SOFTWARE\\New\\Key", HKEY_LOCAL_MACHINE),
        1);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQRegistryTest, GetOrSetOfAnUnsignedNumber) {
    DWORD dw = 0xDEADBEEFu;
    EXPECT_EQ(UQRegistry::mf_getOrSetValue(L"Mask", dw, KEY, HKEY_CURRENT_USER), 0);
    dw = 0;
    EXPECT_EQ(UQRegistry::mf_getOrSetValue(L"Mask", dw, KEY, HKEY_CURRENT_USER), 1);
    EXPECT_EQ(dw, 0xDEADBEEFu);
}

TEST_F(UQRegistryTest, ExistenceOfValuesAndKeysIsAnsweredWithoutLogging) {
    EXPECT_EQ(UQRegistry::mf_exists(L"Text", KEY, HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(UQRegistry::mf_PathExists(KEY, HKEY_LOCAL_MACHINE), 0);
    UQRegistry::mf_setValue(L"Text", L"x", 0, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(UQRegistry::mf_exists(L"Text", KEY, HKEY_LOCAL_MACHINE), 1);
    EXPECT_EQ(UQRegistry::mf_exists(L"Other", KEY, HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(UQRegistry::mf_PathExists(KEY, HKEY_LOCAL_MACHINE), 1);
    EXPECT_EQ(UQRegistry::mf_PathExists(L"SOFTWARE\\korguibase", HKEY_LOCAL_MACHINE), 1);
    EXPECT_EQ(UQRegistry::mf_PathExists(L"SOFTWARE\\korguibase\\Test\\Deeper", HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(UQRegistry::mf_PathExists(L"SOFTWARE\\korguib", HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(UQRegistry::mf_PathExists(L"", HKEY_LOCAL_MACHINE), 1);
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQRegistryTest, ExpandableStringIsExpandedWhenRead) {
    basetest::EnvironmentOverride dir(L"KORREG_TEST_DIR", L"D:\\Backup Client");
    basetest::EnvironmentOverride unset(L"KORREG_TEST_UNSET", nullptr);
    UQRegistry::mf_setValue(L"Path", L"%KORREG_TEST_DIR%\\kor.opt", 1, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Plain", L"%KORREG_TEST_DIR%\\kor.opt", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Unknown", L"%KORREG_TEST_UNSET%\\%KORREG_TEST_DIR%", 1, KEY,
                            HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Single", L"100% sure", 1, KEY, HKEY_LOCAL_MACHINE);
    CString value;
    UQRegistry::mf_getValue(L"Path", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "D:\\Backup Client\\kor.opt");
    UQRegistry::mf_getValue(L"Plain", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "%KORREG_TEST_DIR%\\kor.opt");
    UQRegistry::mf_getValue(L"Unknown", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "%KORREG_TEST_UNSET%\\D:\\Backup Client");
    UQRegistry::mf_getValue(L"Single", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "100% sure");
}

TEST_F(UQRegistryTest, UnknownHiveIsAParameterError) {
    const HKEY classesRoot =
        reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<LONG>(0x80000000u)));
    CString value;
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Text", value, KEY, classesRoot); });
    EXPECT_EQ(t.category, "_E_::Parameter");
    EXPECT_EQ(t.detail,
              "Unknown registry hive FFFFFFFF80000000 for value 'Text' in key 'SOFTWARE\\korguibase\\Test'");
    const Thrown k = thrown([&] { UQRegistry::mf_PathExists(KEY, nullptr); });
    EXPECT_EQ(k.category, "_E_::Parameter");
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQRegistry::mf_getValue::1", t.detail},
                  {'E', "UQRegistry::mf_PathExists",
                   "Unknown registry hive 0000000000000000 for key 'SOFTWARE\\korguibase\\Test'"}}));
}

TEST_F(UQRegistryTest, InjectedFailuresComeDueInTurnAndEnd) {
    UQRegistryInjection::mf_injectFailure(1, 2);
    UQRegistry::mf_setValue(L"A", 1, KEY, HKEY_LOCAL_MACHINE);
    int n = 0;
    const Thrown first = thrown([&] { UQRegistry::mf_getValue(L"A", n, KEY, HKEY_LOCAL_MACHINE); });
    const Thrown second = thrown([&] { UQRegistry::mf_PathExists(KEY, HKEY_CURRENT_USER); });
    EXPECT_EQ(first.category, "_E_::Registry");
    EXPECT_EQ(first.detail, "Injected failure (value 'A' in 'HKLM\\SOFTWARE\\korguibase\\Test')");
    EXPECT_EQ(second.category, "_E_::Registry");
    EXPECT_EQ(second.detail, "Injected failure (key 'HKCU\\SOFTWARE\\korguibase\\Test')");
    UQRegistry::mf_getValue(L"A", n, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::2", first.detail},
                                                   {'E', "UQRegistry::mf_PathExists", second.detail}}));
}

TEST_F(UQRegistryTest, InjectionLeavesTheRegistryRootAndOtherThreadsAlone) {
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(s(UQRegistry::mf_getRegistryRoot(L"Backup")),
              "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Backup");
    std::string other;
    std::thread worker(
        [&] { other = thrownCategory([] { UQRegistry::mf_setValue(L"B", 2, KEY, HKEY_LOCAL_MACHINE); }); });
    worker.join();
    EXPECT_EQ(other, "no exception");
    EXPECT_EQ(thrownCategory([] { UQRegistry::mf_exists(L"B", KEY, HKEY_LOCAL_MACHINE); }), "_E_::Registry");
    EXPECT_EQ(UQRegistry::mf_exists(L"B", KEY, HKEY_LOCAL_MACHINE), 1);
}

TEST_F(UQRegistryTest, ClearedInjectionNoLongerFails) {
    UQRegistryInjection::mf_injectFailure(0, 3);
    UQRegistryInjection::mf_clearInjection();
    EXPECT_EQ(UQRegistry::mf_exists(L"B", KEY, HKEY_LOCAL_MACHINE), 0);
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQRegistryTest, ThreadsWritingAtOnceLoseNothing) {
    const int THREADS = 4;
    const int EACH = 50;
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t) {
        threads.emplace_back([t, &failures] {
            for (int i = 0; i < EACH; ++i) {
                CString name;
                name.Format(L"T%d-%d", t, i);
                try {
                    UQRegistry::mf_setValue(name, t * 1000 + i, KEY, HKEY_CURRENT_USER);
                } catch (const UQErrno&) {
                    ++failures;
                }
            }
        });
    }
    for (std::thread& t : threads)
        t.join();
    EXPECT_EQ(failures.load(), 0);
    for (int t = 0; t < THREADS; ++t) {
        for (int i = 0; i < EACH; ++i) {
            CString name;
            name.Format(L"T%d-%d", t, i);
            int n = -1;
            UQRegistry::mf_getValue(name, n, KEY, HKEY_CURRENT_USER);
            EXPECT_EQ(n, t * 1000 + i) << s(name);
        }
    }
}

#if defined(_WIN32)

namespace {

struct Raw {
    LONG rc;
    DWORD type;
    std::vector<BYTE> bytes;
};

// A value as the registry holds it, read past UQRegistry through the key standing in for the hive.
Raw rawValue(HKEY standIn, const wchar_t* key, const wchar_t* name) {
    Raw r{ERROR_SUCCESS, REG_NONE, {}};
    HKEY h = nullptr;
    r.rc = RegOpenKeyExW(standIn, key, 0, KEY_QUERY_VALUE, &h);
    if (r.rc != ERROR_SUCCESS)
        return r;
    DWORD size = 0;
    r.rc = RegQueryValueExW(h, name, nullptr, &r.type, nullptr, &size);
    if (r.rc == ERROR_SUCCESS) {
        r.bytes.resize(size);
        r.rc = RegQueryValueExW(h, name, nullptr, &r.type, r.bytes.data(), &size);
    }
    RegCloseKey(h);
    return r;
}

std::vector<BYTE> utf16(const wchar_t* text, std::size_t chars) {
    const BYTE* p = reinterpret_cast<const BYTE*>(text);
    return std::vector<BYTE>(p, p + chars * sizeof(wchar_t));
}

} // namespace

TEST_F(UQRegistryTest, ValuesAreStoredWithTheRegistrysOwnTypes) {
    UQRegistry::mf_setValue(L"Text", L"abc", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Expand", L"%TEMP%", 1, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Number", 0x01020304, KEY, HKEY_LOCAL_MACHINE);
    UQArray<CString> entries;
    fill(entries, {L"x", L"yz"});
    UQRegistry::mf_setValues(L"List", entries, L"", HKEY_CURRENT_USER);

    const Raw text = rawValue(m_sandbox.machine(), KEY, L"Text");
    EXPECT_EQ(text.rc, ERROR_SUCCESS);
    EXPECT_EQ(text.type, static_cast<DWORD>(REG_SZ));
    EXPECT_EQ(text.bytes, utf16(L"abc", 4));
    const Raw expand = rawValue(m_sandbox.machine(), KEY, L"Expand");
    EXPECT_EQ(expand.type, static_cast<DWORD>(REG_EXPAND_SZ));
    EXPECT_EQ(expand.bytes, utf16(L"%TEMP%", 7));
    const Raw number = rawValue(m_sandbox.machine(), KEY, L"Number");
    EXPECT_EQ(number.type, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(number.bytes, (std::vector<BYTE>{4, 3, 2, 1}));
    const Raw multi =
        rawValue(m_sandbox.user(), L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient", L"List");
    EXPECT_EQ(multi.type, static_cast<DWORD>(REG_MULTI_SZ));
    EXPECT_EQ(multi.bytes, utf16(L"x\0yz\0", 6));
}

TEST_F(UQRegistryTest, ValueOfATypeThatIsNotReadIsNamedByItsNumber) {
    HKEY h = nullptr;
    ASSERT_EQ(RegCreateKeyExW(m_sandbox.machine(), KEY, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &h, nullptr),
              ERROR_SUCCESS);
    const BYTE bytes[] = {1, 2, 3};
    ASSERT_EQ(RegSetValueExW(h, L"Binary", 0, REG_BINARY, bytes, sizeof bytes), ERROR_SUCCESS);
    RegCloseKey(h);
    CString value;
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Binary", value, KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.detail, "Value 'Binary' in 'HKLM\\SOFTWARE\\korguibase\\Test' is of type 3, not a string");
    EXPECT_EQ(UQRegistry::mf_exists(L"Binary", KEY, HKEY_LOCAL_MACHINE), 1);
}

TEST_F(UQRegistryTest, ListEndsAtItsFirstEmptyEntryAsWindowsReadsIt) {
    HKEY h = nullptr;
    ASSERT_EQ(RegCreateKeyExW(m_sandbox.user(), KEY, 0, nullptr, 0, KEY_SET_VALUE, nullptr, &h, nullptr),
              ERROR_SUCCESS);
    // Written by someone else: no final terminator, and an empty entry in the middle.
    const wchar_t data[] = L"a\0\0b";
    ASSERT_EQ(
        RegSetValueExW(h, L"List", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(data), 4 * sizeof(wchar_t)),
        ERROR_SUCCESS);
    const wchar_t unterminated[] = {L'x', L'y'};
    ASSERT_EQ(RegSetValueExW(h, L"Text", 0, REG_SZ, reinterpret_cast<const BYTE*>(unterminated),
                             sizeof unterminated),
              ERROR_SUCCESS);
    RegCloseKey(h);
    UQArray<CString> out;
    UQRegistry::mf_getValues(L"List", out, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(list(out), (std::vector<std::string>{"a"}));
    CString text;
    UQRegistry::mf_getValue(L"Text", text, KEY, HKEY_CURRENT_USER);
    EXPECT_EQ(s(text), "xy");
}

#else

namespace {

// The database past UQRegistry: one row of registry_value, or "<none>".
struct Row {
    std::string hive, pathKey, nameKey, name;
    long long type = -1;
    std::string data;
};

class Database {
public:
    explicit Database(const std::filesystem::path& file) {
        EXPECT_EQ(sqlite3_open_v2(file.c_str(), &m_db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
    }
    ~Database() { sqlite3_close_v2(m_db); }
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    std::vector<std::string> column(const char* sql) {
        std::vector<std::string> out;
        sqlite3_stmt* st = nullptr;
        EXPECT_EQ(sqlite3_prepare_v2(m_db, sql, -1, &st, nullptr), SQLITE_OK) << sqlite3_errmsg(m_db);
        while (st != nullptr && sqlite3_step(st) == SQLITE_ROW) {
            const void* blob = sqlite3_column_blob(st, 0);
            out.emplace_back(static_cast<const char*>(blob),
                             static_cast<std::size_t>(sqlite3_column_bytes(st, 0)));
        }
        sqlite3_finalize(st);
        return out;
    }
    void exec(const char* sql) {
        EXPECT_EQ(sqlite3_exec(m_db, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    }

private:
    sqlite3* m_db = nullptr;
};

} // namespace

TEST_F(UQRegistryTest, ValuesAreStoredInTheDocumentedSchema) {
    UQRegistry::mf_setValue(L"Text", L"abc", 0, L"Software\\Korguibase\\Test", HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Number", -2, KEY, HKEY_LOCAL_MACHINE);
    UQArray<CString> entries;
    fill(entries, {L"x", L"yz"});
    UQRegistry::mf_setValues(L"List", entries, L"", HKEY_CURRENT_USER);

    Database db(m_sandbox.file());
    EXPECT_EQ(
        db.column("SELECT hive || '|' || path_key || '|' || path FROM registry_key ORDER BY hive, path_key"),
        (std::vector<std::string>{
            "HKCU|SOFTWARE|SOFTWARE", "HKCU|SOFTWARE\\CORVEX|SOFTWARE\\Corvex",
            "HKCU|SOFTWARE\\CORVEX\\STORMEX|SOFTWARE\\Corvex\\Stormex",
            "HKCU|SOFTWARE\\CORVEX\\STORMEX\\CURRENTVERSION|SOFTWARE\\Corvex\\Stormex\\CurrentVersion",
            "HKCU|SOFTWARE\\CORVEX\\STORMEX\\CURRENTVERSION\\HSMCLIENT|"
            "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient",
            "HKLM|SOFTWARE|Software", "HKLM|SOFTWARE\\KORGUIBASE|Software\\Korguibase",
            "HKLM|SOFTWARE\\KORGUIBASE\\TEST|Software\\Korguibase\\Test"}));
    EXPECT_EQ(
        db.column("SELECT hive || '|' || path_key || '|' || name_key || '|' || name || '|' || type"
                  " FROM registry_value ORDER BY hive, path_key, name_key"),
        (std::vector<std::string>{"HKCU|SOFTWARE\\CORVEX\\STORMEX\\CURRENTVERSION\\HSMCLIENT|LIST|List|7",
                                  "HKLM|SOFTWARE\\KORGUIBASE\\TEST|NUMBER|Number|4",
                                  "HKLM|SOFTWARE\\KORGUIBASE\\TEST|TEXT|Text|1"}));
    EXPECT_EQ(db.column("SELECT data FROM registry_value WHERE name_key = 'TEXT'"),
              (std::vector<std::string>{"abc"}));
    EXPECT_EQ(db.column("SELECT CAST(data AS TEXT) FROM registry_value WHERE name_key = 'NUMBER'"),
              (std::vector<std::string>{"4294967294"}));
    EXPECT_EQ(db.column("SELECT data FROM registry_value WHERE name_key = 'LIST'"),
              (std::vector<std::string>{std::string("x\0yz\0", 5)}));
    EXPECT_EQ(db.column("PRAGMA journal_mode"), (std::vector<std::string>{"wal"}));
    EXPECT_EQ(db.column("PRAGMA user_version"), (std::vector<std::string>{"1"}));
}

TEST_F(UQRegistryTest, ValueOfATypeThatIsNotReadIsNamedByItsNumber) {
    UQRegistry::mf_setValue(L"Binary", L"", 0, KEY, HKEY_LOCAL_MACHINE);
    {
        Database db(m_sandbox.file());
        db.exec("UPDATE registry_value SET type = 3, data = x'010203' WHERE name_key = 'BINARY'");
    }
    CString value;
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Binary", value, KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.detail, "Value 'Binary' in 'HKLM\\SOFTWARE\\korguibase\\Test' is of type 3, not a string");
    EXPECT_EQ(UQRegistry::mf_exists(L"Binary", KEY, HKEY_LOCAL_MACHINE), 1);
}

TEST_F(UQRegistryTest, StoreFileIsTheCallsThenTheEnvironmentsThenTheDefault) {
    basetest::ScratchDirectory dir("registry-file");
    const CString fromEnvironment = dir.child(L"env.sqlite");
    basetest::EnvironmentOverride env(L"KOR_REGISTRY_FILE", fromEnvironment);
    EXPECT_EQ(s(UQRegistry::mf_getStoreFile()), s(m_sandbox.fileText()));
    UQRegistry::mf_setStoreFile(CString());
    EXPECT_EQ(s(UQRegistry::mf_getStoreFile()), s(fromEnvironment));
    UQRegistry::mf_setValue(L"Text", L"in env file", 0, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_TRUE(basetest::exists(fromEnvironment));
    {
        basetest::EnvironmentOverride none(L"KOR_REGISTRY_FILE", nullptr);
        EXPECT_EQ(s(UQRegistry::mf_getStoreFile()), s(UQRegistry::mf_getDefaultStoreFile()));
    }
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    EXPECT_EQ(UQRegistry::mf_exists(L"Text", KEY, HKEY_LOCAL_MACHINE), 0);
}

TEST_F(UQRegistryTest, DefaultFileIsUnderTheUsersConfigurationDirectory) {
    {
        basetest::EnvironmentOverride xdg(L"XDG_CONFIG_HOME", L"/srv/conf/");
        EXPECT_EQ(s(UQRegistry::mf_getDefaultStoreFile()), "/srv/conf/korguibase/registry.sqlite");
    }
    basetest::EnvironmentOverride home(L"HOME", L"/home/someone");
    {
        basetest::EnvironmentOverride xdg(L"XDG_CONFIG_HOME", nullptr);
        EXPECT_EQ(s(UQRegistry::mf_getDefaultStoreFile()),
                  "/home/someone/.config/korguibase/registry.sqlite");
    }
    // A relative XDG_CONFIG_HOME does not count.
    basetest::EnvironmentOverride relative(L"XDG_CONFIG_HOME", L"conf");
    EXPECT_EQ(s(UQRegistry::mf_getDefaultStoreFile()), "/home/someone/.config/korguibase/registry.sqlite");
}

TEST_F(UQRegistryTest, MissingDirectoriesOfTheStoreAreCreated) {
    basetest::ScratchDirectory dir("registry-dirs");
    const CString file = dir.child(L"a\\b\\registry.sqlite");
    UQRegistry::mf_setStoreFile(file);
    UQRegistry::mf_setValue(L"Text", L"x", 0, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_TRUE(basetest::exists(file));
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
}

TEST_F(UQRegistryTest, StoreThatCannotBeOpenedIsARegistryErrorNamingTheFile) {
    basetest::ScratchDirectory dir("registry-unopenable");
    basetest::writeFile(dir.child(L"plain.txt"), "not a directory");
    const CString file = dir.child(L"plain.txt\\registry.sqlite");
    UQRegistry::mf_setStoreFile(file);
    CString value;
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail,
              "Registry store '" + s(file) +
                  "' cannot be opened (value 'Text' in 'HKLM\\SOFTWARE\\korguibase\\Test'): unable to open "
                  "database file");
    EXPECT_EQ(thrownCategory([] { UQRegistry::mf_PathExists(KEY, HKEY_CURRENT_USER); }), "_E_::Registry");
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQRegistry::mf_getValue::1", t.detail},
                  {'E', "UQRegistry::mf_PathExists",
                   "Registry store '" + s(file) +
                       "' cannot be opened (key 'HKCU\\SOFTWARE\\korguibase\\Test'): unable to open "
                       "database file"}}));
    // A usable file works at once.
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    EXPECT_EQ(UQRegistry::mf_PathExists(KEY, HKEY_CURRENT_USER), 0);
}

TEST_F(UQRegistryTest, FileThatIsNotADatabaseIsARegistryError) {
    basetest::ScratchDirectory dir("registry-garbage");
    const CString file = dir.child(L"garbage.sqlite");
    basetest::writeFile(file, std::string(4096, 'x'));
    UQRegistry::mf_setStoreFile(file);
    const Thrown t = thrown([] { UQRegistry::mf_setValue(L"Text", L"x", 0, KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail,
              "Registry store '" + s(file) +
                  "' cannot be opened (value 'Text' in 'HKLM\\SOFTWARE\\korguibase\\Test'): file is not a "
                  "database");
    EXPECT_EQ(basetest::readFile(file), std::string(4096, 'x'));
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
}

TEST_F(UQRegistryTest, ValuesSurviveClosingAndReopeningTheStore) {
    UQRegistry::mf_setValue(L"Text", L"kept", 0, KEY, HKEY_LOCAL_MACHINE);
    basetest::ScratchDirectory dir("registry-other");
    UQRegistry::mf_setStoreFile(dir.child(L"other.sqlite"));
    EXPECT_EQ(UQRegistry::mf_exists(L"Text", KEY, HKEY_LOCAL_MACHINE), 0);
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    CString value;
    UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE);
    EXPECT_EQ(s(value), "kept");
}

// A number whose stored data is no 32-bit number is no number: read as one it is a type error naming what
// is stored, never a silent 0 or the low 32 bits, and mf_getOrSetValue leaves it as it is.
TEST_F(UQRegistryTest, StoredNumberThatNoDwordCanHoldIsATypeError) {
    const std::string subject = "Value 'Number' in 'HKLM\\SOFTWARE\\korguibase\\Test' is ";
    const struct {
        const char* data;
        std::string expected;
    } cases[] = {{"4294967296", "a number out of range (4294967296), not a number"},
                 {"-1", "a number out of range (-1), not a number"},
                 {"'1'", "a number stored as text, not a number"},
                 {"NULL", "a number stored as NULL, not a number"},
                 {"1.5", "a number stored as a real number, not a number"}};
    for (const auto& c : cases) {
        UQRegistry::mf_setValue(L"Number", 7, KEY, HKEY_LOCAL_MACHINE);
        {
            Database db(m_sandbox.file());
            db.exec(("UPDATE registry_value SET data = " + std::string(c.data) + " WHERE name_key = 'NUMBER'")
                        .c_str());
        }
        m_log.clear();
        int n = 12345;
        const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Number", n, KEY, HKEY_LOCAL_MACHINE); });
        EXPECT_EQ(t.category, "_E_::Registry") << c.data;
        EXPECT_EQ(t.detail, subject + c.expected) << c.data;
        EXPECT_EQ(n, 12345) << c.data;
        DWORD dw = 1;
        const Thrown g =
            thrown([&] { UQRegistry::mf_getOrSetValue(L"Number", dw, KEY, HKEY_LOCAL_MACHINE); });
        EXPECT_EQ(g.detail, subject + c.expected) << c.data;
        EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::2", t.detail},
                                                       {'E', "UQRegistry::mf_getOrSetValue::2", g.detail}}))
            << c.data;
        Database db(m_sandbox.file());
        EXPECT_EQ(db.column("SELECT quote(data) FROM registry_value WHERE name_key = 'NUMBER'"),
                  (std::vector<std::string>{c.data}))
            << "left as it is";
    }
}

TEST_F(UQRegistryTest, StoredStringOrListOfTheWrongStorageIsATypeError) {
    UQRegistry::mf_setValue(L"Text", L"x", 0, KEY, HKEY_LOCAL_MACHINE);
    UQArray<CString> entries;
    fill(entries, {L"a"});
    UQRegistry::mf_setValues(L"List", entries, KEY, HKEY_LOCAL_MACHINE);
    {
        Database db(m_sandbox.file());
        db.exec("UPDATE registry_value SET data = NULL WHERE name_key = 'TEXT'");
        db.exec("UPDATE registry_value SET data = 5 WHERE name_key = 'LIST'");
    }
    CString value;
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE); }).detail,
              "Value 'Text' in 'HKLM\\SOFTWARE\\korguibase\\Test' is a string stored as NULL, not a string");
    EXPECT_EQ(thrown([&] { UQRegistry::mf_getValues(L"List", entries, KEY, HKEY_LOCAL_MACHINE); }).detail,
              "Value 'List' in 'HKLM\\SOFTWARE\\korguibase\\Test' is a list of strings stored as an integer, "
              "not a list of strings");
    EXPECT_EQ(m_log.count(), 2u);
}

TEST_F(UQRegistryTest, DirectoryGivenAsTheStoreIsARegistryErrorNamingIt) {
    basetest::ScratchDirectory dir("registry-directory");
    UQRegistry::mf_setStoreFile(dir.path());
    CString value;
    const Thrown t = thrown([&] { UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail,
              "Registry store '" + s(dir.path()) +
                  "' cannot be opened (value 'Text' in 'HKLM\\SOFTWARE\\korguibase\\Test'): it is a "
                  "directory, not a database file");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_getValue::1", t.detail}}));
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
}

TEST_F(UQRegistryTest, StoreOfANewerSchemaIsRefusedAndLeftAsItIs) {
    UQRegistry::mf_setValue(L"Text", L"x", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setStoreFile(CString());
    {
        Database db(m_sandbox.file());
        db.exec("PRAGMA journal_mode=DELETE");
        db.exec("PRAGMA user_version = 2");
    }
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    EXPECT_EQ(
        thrown([] { UQRegistry::mf_exists(L"Text", KEY, HKEY_LOCAL_MACHINE); }).detail,
        "Registry store '" + s(m_sandbox.fileText()) +
            "' cannot be opened (value 'Text' in 'HKLM\\SOFTWARE\\korguibase\\Test'): schema version 2 is "
            "newer than this program's (1)");
    UQRegistry::mf_setStoreFile(CString());
    Database db(m_sandbox.file());
    EXPECT_EQ(db.column("PRAGMA journal_mode"), (std::vector<std::string>{"delete"}))
        << "not switched to WAL";
}

namespace {

// Fills the store with enough values to span many pages and closes it, so that the file alone holds them.
void fillAndClose(const CString& file) {
    UQRegistry::mf_setStoreFile(file);
    for (int i = 0; i < 300; ++i) {
        CString name;
        name.Format(L"Value%03d", i);
        UQRegistry::mf_setValue(name, CString(L'v', 200), 0, KEY, HKEY_LOCAL_MACHINE);
    }
    UQRegistry::mf_setStoreFile(CString());
}

} // namespace

TEST_F(UQRegistryTest, TruncatedStoreIsARegistryErrorNotAnEmptyStore) {
    fillAndClose(m_sandbox.fileText());
    const std::uintmax_t size = std::filesystem::file_size(m_sandbox.file());
    ASSERT_GT(size, 16384u);
    std::filesystem::resize_file(m_sandbox.file(), size / 2);
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    const Thrown t = thrown([] { UQRegistry::mf_exists(L"Value299", KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail, "Registry store '" + s(m_sandbox.fileText()) +
                            "' cannot be opened (value 'Value299' in 'HKLM\\SOFTWARE\\korguibase\\Test'): "
                            "database disk image is malformed");
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_exists", t.detail}}));
}

TEST_F(UQRegistryTest, DamagedStoreIsARegistryErrorNotAnEmptyStore) {
    fillAndClose(m_sandbox.fileText());
    {
        // The last page: leaves of the value table, whose cells the damage makes unreadable.
        std::FILE* f = std::fopen(m_sandbox.file().c_str(), "r+b");
        ASSERT_NE(f, nullptr);
        ASSERT_EQ(std::fseek(f, -4096, SEEK_END), 0);
        const std::string garbage(4096, '\xA5');
        ASSERT_EQ(std::fwrite(garbage.data(), 1, garbage.size(), f), garbage.size());
        std::fclose(f);
    }
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    const Thrown t = thrown([] { UQRegistry::mf_PathExists(KEY, HKEY_LOCAL_MACHINE); });
    EXPECT_EQ(t.category, "_E_::Registry");
    EXPECT_EQ(t.detail.rfind("Registry store '" + s(m_sandbox.fileText()) +
                                 "' cannot be opened (key 'HKLM\\SOFTWARE\\korguibase\\Test'): ",
                             0),
              0u)
        << t.detail;
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{{'E', "UQRegistry::mf_PathExists", t.detail}}));
}

namespace {

// The child's side of a read-only store test: a process that may only read the file (as root, it first
// becomes the unprivileged user nobody, since root may write every file whatever its mode). Exit 0: the
// value read back and the write refused as a registry error; else a number naming the step that failed.
[[noreturn]] void readOnlyReader(const CString& file) {
    if (::geteuid() == 0 && (::setgid(65534) != 0 || ::setuid(65534) != 0))
        ::_exit(10);
    if (::access(file.ToUtf8().c_str(), W_OK) == 0)
        ::_exit(11);
    UQRegistry::mf_setStoreFile(file);
    try {
        CString value;
        UQRegistry::mf_getValue(L"Text", value, KEY, HKEY_LOCAL_MACHINE);
        if (value != L"kept")
            ::_exit(12);
        int n = 0;
        UQRegistry::mf_getValue(L"Number", n, KEY, HKEY_LOCAL_MACHINE);
        if (n != 7)
            ::_exit(13);
    } catch (const UQErrno& e) {
        std::fprintf(stderr, "read-only reader: %s\n", e.mf_toString().ToUtf8().c_str());
        ::_exit(14);
    } catch (...) {
        ::_exit(15);
    }
    try {
        UQRegistry::mf_setValue(L"Text", L"changed", 0, KEY, HKEY_LOCAL_MACHINE);
        ::_exit(16);
    } catch (const UQErrno& e) {
        if (e.mf_getDetail().Find(L"readonly") < 0) {
            std::fprintf(stderr, "read-only writer: %s\n", e.mf_toString().ToUtf8().c_str());
            ::_exit(17);
        }
    } catch (...) {
        ::_exit(18);
    }
    ::_exit(0);
}

int runReadOnlyReader(const CString& file) {
    const pid_t child = ::fork();
    if (child < 0)
        return -1;
    if (child == 0)
        readOnlyReader(file);
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    int status = 0;
    pid_t done = 0;
    while ((done = ::waitpid(child, &status, WNOHANG)) == 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    if (done == 0) {
        ::kill(child, SIGKILL);
        ::waitpid(child, &status, 0);
        return -2;
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -3;
}

} // namespace

// A store that the user may only read (mode 0444, and its directory 0555 so that not even SQLite's
// shared-memory file can be made beside it) is read, not answered with defaults.
TEST_F(UQRegistryTest, StoreThatMayOnlyBeReadIsReadAndRefusesWrites) {
    basetest::ScratchDirectory dir("registry-read-only");
    const CString file = dir.child(L"registry.sqlite");
    UQRegistry::mf_setStoreFile(file);
    UQRegistry::mf_setValue(L"Text", L"kept", 0, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setValue(L"Number", 7, KEY, HKEY_LOCAL_MACHINE);
    UQRegistry::mf_setStoreFile(m_sandbox.fileText());
    const std::string path = file.ToUtf8();
    const std::string directory = dir.path().ToUtf8();
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(directory.c_str(), 0555), 0);
    EXPECT_EQ(runReadOnlyReader(file), 0);
    // With a directory the user may write, SQLite keeps its shared memory there as usual.
    ASSERT_EQ(::chmod(directory.c_str(), 0777), 0);
    EXPECT_EQ(runReadOnlyReader(file), 0);
    ::chmod(path.c_str(), 0644);
    ::chmod(directory.c_str(), 0755);
    EXPECT_EQ(m_log.count(), 0u);
}

namespace {

// What writer process number `i` stores: strings, lists and numbers in turn, each a pattern of its own
// number long enough to span several database pages, so that a torn write cannot pass for a whole one.
CString valueName(const char* prefix, int i) {
    CString name;
    name.Format(L"%s%05d", CString::FromUtf8(prefix), i);
    return name;
}

CString pattern(int i, int part) {
    CString text;
    text.Format(L"<%d.%d:", i, part);
    for (int k = 0; k < 600; ++k)
        text += static_cast<wchar_t>(L'a' + (i * 7 + part * 3 + k) % 26);
    text.AppendFormat(L":%d.%d>", i, part);
    return text;
}

DWORD numberOf(int i) {
    return static_cast<DWORD>(i) * 2654435761u;
}

void writeOne(const char* prefix, int i) {
    const CString name = valueName(prefix, i);
    switch (i % 3) {
    case 0:
        UQRegistry::mf_setValue(name, pattern(i, 0), 0, KEY, HKEY_LOCAL_MACHINE);
        break;
    case 1: {
        UQArray<CString> entries;
        for (int part = 0; part < 3; ++part)
            entries.Add(pattern(i, part));
        UQRegistry::mf_setValues(name, entries, KEY, HKEY_LOCAL_MACHINE);
        break;
    }
    default:
        UQRegistry::mf_setValue(name, static_cast<int>(numberOf(i)), KEY, HKEY_LOCAL_MACHINE);
        break;
    }
}

// "" when the value is there and whole, else what is wrong.
std::string checkOne(const char* prefix, int i) {
    const CString name = valueName(prefix, i);
    try {
        switch (i % 3) {
        case 0: {
            CString value;
            UQRegistry::mf_getValue(name, value, KEY, HKEY_LOCAL_MACHINE);
            return value == pattern(i, 0) ? "" : "string differs";
        }
        case 1: {
            UQArray<CString> entries;
            UQRegistry::mf_getValues(name, entries, KEY, HKEY_LOCAL_MACHINE);
            if (entries.GetSize() != 3)
                return "list has " + std::to_string(entries.GetSize()) + " entries";
            for (int part = 0; part < 3; ++part) {
                if (entries[part] != pattern(i, part))
                    return "list entry differs";
            }
            return "";
        }
        default: {
            int n = 0;
            UQRegistry::mf_getValue(name, n, KEY, HKEY_LOCAL_MACHINE);
            return static_cast<DWORD>(n) == numberOf(i) ? "" : "number differs";
        }
        }
    } catch (const UQErrno& e) {
        return s(e.mf_toString());
    }
}

// The child's side: write values first..first+count-1 into the file and report each committed write as
// its number through the pipe. Never returns.
[[noreturn]] void writerProcess(int reportFd, int startFd, const CString& file, const char* prefix,
                                int count) {
    UQRegistry::mf_setStoreFile(file);
    if (startFd >= 0) {
        char go = 0;
        if (::read(startFd, &go, 1) != 1)
            ::_exit(3);
    }
    for (int i = 0; i < count; ++i) {
        try {
            writeOne(prefix, i);
        } catch (const UQErrno& e) {
            std::fprintf(stderr, "writer %s%d: %s\n", prefix, i, e.mf_toString().ToUtf8().c_str());
            ::_exit(2);
        } catch (...) {
            ::_exit(2);
        }
        if (::write(reportFd, &i, sizeof i) != static_cast<ssize_t>(sizeof i))
            ::_exit(4);
    }
    ::_exit(0);
}

// Reads reported numbers until the pipe is closed or `until` of them have arrived; gives up after the
// time limit so that a stuck writer cannot hang the test.
void readReports(int fd, std::vector<int>& reports, std::string& pending, std::size_t until, int limitMs) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(limitMs);
    while (reports.size() < until) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        if (left.count() <= 0)
            return;
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(left.count())) <= 0)
            return;
        char buffer[4096];
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n <= 0)
            return;
        pending.append(buffer, static_cast<std::size_t>(n));
        while (pending.size() >= sizeof(int)) {
            int i;
            std::memcpy(&i, pending.data(), sizeof i);
            reports.push_back(i);
            pending.erase(0, sizeof i);
        }
    }
}

} // namespace

TEST_F(UQRegistryTest, WriterKilledInTheMiddleLeavesEveryReportedValueWholeAndNoneTorn) {
    const int VALUES = 10000;
    const std::size_t KILL_AFTER = 1000;
    int fds[2];
    ASSERT_EQ(::pipe(fds), 0);
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        ::close(fds[0]);
        writerProcess(fds[1], -1, m_sandbox.fileText(), "V", VALUES);
    }
    ::close(fds[1]);
    std::vector<int> reports;
    std::string pending;
    readReports(fds[0], reports, pending, KILL_AFTER, 120000);
    ::kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    // Reports that were in the pipe when the writer died count as well: their values were committed.
    readReports(fds[0], reports, pending, VALUES + 1, 10000);
    ::close(fds[0]);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the writer ended by itself with status " << status;
    EXPECT_EQ(WTERMSIG(status), SIGKILL);
    ASSERT_GE(reports.size(), KILL_AFTER);
    ASSERT_LT(reports.size(), static_cast<std::size_t>(VALUES));

    for (std::size_t k = 0; k < reports.size(); ++k)
        ASSERT_EQ(reports[k], static_cast<int>(k)) << "reports arrive in writing order";
    for (int i = 0; i < static_cast<int>(reports.size()); ++i)
        EXPECT_EQ(checkOne("V", i), "") << "reported value " << i;
    // The write in flight is there whole or not at all; nothing after it is there.
    const int inFlight = static_cast<int>(reports.size());
    const CString inFlightName = valueName("V", inFlight);
    if (UQRegistry::mf_exists(inFlightName, KEY, HKEY_LOCAL_MACHINE)) {
        EXPECT_EQ(checkOne("V", inFlight), "");
    }
    for (int i = inFlight + 1; i < VALUES; ++i)
        ASSERT_EQ(UQRegistry::mf_exists(valueName("V", i), KEY, HKEY_LOCAL_MACHINE), 0) << i;

    Database db(m_sandbox.file());
    EXPECT_EQ(db.column("PRAGMA integrity_check"), (std::vector<std::string>{"ok"}));
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(UQRegistryTest, TwoProcessesWritingAtOnceLoseNothing) {
    const int EACH = 300;
    int report[2];
    int start[2];
    ASSERT_EQ(::pipe(report), 0);
    ASSERT_EQ(::pipe(start), 0);
    pid_t children[2];
    const char* prefixes[2] = {"A", "B"};
    for (int c = 0; c < 2; ++c) {
        children[c] = ::fork();
        ASSERT_GE(children[c], 0);
        if (children[c] == 0) {
            ::close(report[0]);
            ::close(start[1]);
            // Both open the same new file: the first creates it while the second waits its turn.
            writerProcess(report[1], start[0], m_sandbox.fileText(), prefixes[c], EACH);
        }
    }
    ::close(report[1]);
    ::close(start[0]);
    // Released together.
    const char go[2] = {'g', 'g'};
    ASSERT_EQ(::write(start[1], go, 2), 2);
    ::close(start[1]);
    std::vector<int> reports;
    std::string pending;
    readReports(report[0], reports, pending, 2 * EACH, 120000);
    ::close(report[0]);
    for (pid_t child : children) {
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "writer status " << status;
    }
    EXPECT_EQ(reports.size(), static_cast<std::size_t>(2 * EACH));
    for (const char* prefix : prefixes) {
        for (int i = 0; i < EACH; ++i)
            EXPECT_EQ(checkOne(prefix, i), "") << prefix << i;
    }
    EXPECT_EQ(m_log.count(), 0u);
}

#endif
