#include "interfaces/korbase_testing.h"
#include "kor/KorReport.h"

#include "kor/base/UQRegistryStore.h"

#include <cstdlib>
#include <mutex>

namespace {

// The product's registry root; machine-wide settings sit in its sub keys, per-user ones in the same path
// under HKEY_CURRENT_USER.
const wchar_t* const kRegistryRoot = L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient";

// The key of an empty key path in HKEY_CURRENT_USER when it is not the product's root.
std::mutex g_userKeyLock;
CString g_sUserKey;

CString userKey() {
    std::lock_guard<std::mutex> guard(g_userKeyLock);
    return g_sUserKey.IsEmpty() ? CString(kRegistryRoot) : g_sUserKey;
}

// Per thread, so that a test's injection never hits another thread's calls.
thread_local int t_injectAfter = 0;
thread_local int t_injectCount = 0;

bool injectionDue() noexcept {
    if (t_injectCount <= 0)
        return false;
    if (t_injectAfter > 0) {
        --t_injectAfter;
        return false;
    }
    --t_injectCount;
    return true;
}

const wchar_t* hiveName(HKEY hive) noexcept {
    if (hive == HKEY_LOCAL_MACHINE)
        return L"HKLM";
    if (hive == HKEY_CURRENT_USER)
        return L"HKCU";
    return nullptr;
}

// The registry separates key names by single backslashes; leading, trailing and doubled ones would name
// keys with empty names, which it refuses.
CString normalizeKey(const CString& key) {
    CString out;
    for (int i = 0; i < key.GetLength(); ++i) {
        const wchar_t c = key[i];
        if (c == L'\\' && (out.IsEmpty() || out[out.GetLength() - 1] == L'\\'))
            continue;
        out += c;
    }
    out.TrimRight(L'\\');
    return out;
}

const wchar_t* typeText(DWORD type) noexcept {
    switch (type) {
    case korregistry::TYPE_SZ:
        return L"a string";
    case korregistry::TYPE_EXPAND_SZ:
        return L"an expandable string";
    case korregistry::TYPE_DWORD:
        return L"a number";
    case korregistry::TYPE_MULTI_SZ:
        return L"a list of strings";
    default:
        return nullptr;
    }
}

// What an operation works on: the resolved key and the words that name it in every failure text.
struct Target {
    HKEY hHive;
    CString sKey;
    CString sName;
    // "value 'Name' in 'HKLM\Key'" or "key 'HKLM\Key'".
    CString sSubject;
    CString sKeyText;
};

[[noreturn]] void fail(const UQErrnoValue& value, const wchar_t* function, const CString& text) {
    UQKorReport::mf_log(UQLogData::LEVEL_E, function, L"%s", text);
    throw UQErrno(UQErrnoData(value), text);
}

// Checks the hive, resolves the key and lets an injected failure come due: the common start of every
// operation that touches the store. _pszName null: an operation on the key itself.
Target target(const wchar_t* function, const wchar_t* name, const CString& key, HKEY hive,
              bool injectable = true) {
    Target t;
    t.hHive = hive;
    t.sKey = normalizeKey(key);
    if (t.sKey.IsEmpty() && hive == HKEY_CURRENT_USER)
        t.sKey = userKey();
    const wchar_t* hiveText = hiveName(hive);
    if (hiveText == nullptr) {
        CString text;
        if (name != nullptr)
            text.Format(L"Unknown registry hive %p for value '%s' in key '%s'",
                        static_cast<const void*>(hive), name, t.sKey);
        else
            text.Format(L"Unknown registry hive %p for key '%s'", static_cast<const void*>(hive), t.sKey);
        fail(UQErrno::_E_::Parameter, function, text);
    }
    t.sKeyText = t.sKey.IsEmpty() ? CString(hiveText) : CString(hiveText) + L"\\" + t.sKey;
    if (name != nullptr) {
        t.sName = name;
        t.sSubject.Format(L"value '%s' in '%s'", t.sName, t.sKeyText);
    } else {
        t.sSubject.Format(L"key '%s'", t.sKeyText);
    }
    if (injectable && injectionDue()) {
        CString text;
        text.Format(L"Injected failure (%s)", t.sSubject);
        fail(UQErrno::_E_::Registry, function, text);
    }
    return t;
}

void check(const wchar_t* function, const Target& t, const korregistry::Result& result) {
    CString text;
    switch (result.status) {
    case korregistry::Status::Ok:
        return;
    case korregistry::Status::KeyNotFound:
        text.Format(L"Key '%s' not found (value '%s')", t.sKeyText, t.sName);
        break;
    case korregistry::Status::ValueNotFound:
        text.Format(L"Value '%s' not found in '%s'", t.sName, t.sKeyText);
        break;
    case korregistry::Status::StoreUnavailable:
        text.Format(L"Registry store '%s' cannot be opened (%s): %s", result.sFile, t.sSubject,
                    result.sReason);
        break;
    case korregistry::Status::ReadFailed:
        text.Format(L"Failure reading %s: %s", t.sSubject, result.sReason);
        break;
    case korregistry::Status::WriteFailed:
        text.Format(L"Failure writing %s: %s", t.sSubject, result.sReason);
        break;
    case korregistry::Status::LockFailed:
        text.Format(L"Failure locking %s for an update: %s", t.sSubject, result.sReason);
        break;
    }
    fail(UQErrno::_E_::Registry, function, text);
}

void checkType(const wchar_t* function, const Target& t, const korregistry::Value& value, DWORD expected1,
               DWORD expected2, const wchar_t* expectedText) {
    const bool expectedType = value.dwType == expected1 || value.dwType == expected2;
    if (expectedType && value.sMalformed.IsEmpty())
        return;
    // Data that does not fit its type is no value of that type either.
    CString actual(expectedType ? value.sMalformed : CString(typeText(value.dwType)));
    if (actual.IsEmpty())
        actual.Format(L"of type %lu", value.dwType);
    CString text;
    text.Format(L"Value '%s' in '%s' is %s, not %s", t.sName, t.sKeyText, actual, expectedText);
    fail(UQErrno::_E_::Registry, function, text);
}

// %NAME% references by the environment, as ExpandEnvironmentStrings does: unknown names stay as written.
CString expand(const CString& text) {
#if defined(_WIN32)
    const DWORD n = ExpandEnvironmentStringsW(text, nullptr, 0);
    if (n == 0)
        return text;
    CString out;
    const DWORD m = ExpandEnvironmentStringsW(text, out.GetBuffer(static_cast<int>(n)), n);
    out.ReleaseBuffer();
    return m == 0 || m > n ? text : out;
#else
    CString out;
    int i = 0;
    while (i < text.GetLength()) {
        const int open = text.Find(L'%', i);
        const int close = open < 0 ? -1 : text.Find(L'%', open + 1);
        if (close < 0) {
            out += text.Mid(i);
            break;
        }
        out += text.Mid(i, open - i);
        const CString name = text.Mid(open + 1, close - open - 1);
        const char* value = name.IsEmpty() ? nullptr : std::getenv(name.ToUtf8().c_str());
        if (value != nullptr) {
            out += CString::FromUtf8(value);
            i = close + 1;
        } else {
            // The closing percent may open the next reference.
            out += text.Mid(open, close - open);
            i = close;
        }
    }
    return out;
#endif
}

korregistry::Value numberValue(DWORD number) {
    korregistry::Value v;
    v.dwType = korregistry::TYPE_DWORD;
    v.dwNumber = number;
    return v;
}

} // namespace

CString UQRegistry::mf_getRegistryRoot(const CString& subKey) {
    const CString sub = normalizeKey(subKey);
    return sub.IsEmpty() ? CString(kRegistryRoot) : CString(kRegistryRoot) + L"\\" + sub;
}

void UQRegistry::mf_getValue(const CString& name, CString& value, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getValue::1";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    check(_sFunction_, t, korregistry::read(t.hHive, t.sKey, t.sName, v));
    checkType(_sFunction_, t, v, korregistry::TYPE_SZ, korregistry::TYPE_EXPAND_SZ, L"a string");
    value = v.dwType == korregistry::TYPE_EXPAND_SZ ? expand(v.sText) : v.sText;
}

void UQRegistry::mf_getValue(const CString& name, int& value, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getValue::2";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    check(_sFunction_, t, korregistry::read(t.hHive, t.sKey, t.sName, v));
    checkType(_sFunction_, t, v, korregistry::TYPE_DWORD, korregistry::TYPE_DWORD, L"a number");
    value = static_cast<int>(v.dwNumber);
}

void UQRegistry::mf_getValues(const CString& name, UQArray<CString>& values, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getValues";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    check(_sFunction_, t, korregistry::read(t.hHive, t.sKey, t.sName, v));
    checkType(_sFunction_, t, v, korregistry::TYPE_MULTI_SZ, korregistry::TYPE_MULTI_SZ,
              L"a list of strings");
    values.RemoveAll();
    for (const CString& s : v.asList)
        values.Add(s);
}

void UQRegistry::mf_setValue(const CString& name, const CString& value, int bExpandable, const CString& key,
                             HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_setValue::1";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    v.dwType = bExpandable ? korregistry::TYPE_EXPAND_SZ : korregistry::TYPE_SZ;
    v.sText = value;
    check(_sFunction_, t, korregistry::write(t.hHive, t.sKey, t.sName, v));
}

void UQRegistry::mf_setValue(const CString& name, int value, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_setValue::2";
    const Target t = target(_sFunction_, name, key, hive);
    check(_sFunction_, t,
          korregistry::write(t.hHive, t.sKey, t.sName, numberValue(static_cast<DWORD>(value))));
}

void UQRegistry::mf_setValues(const CString& name, const UQArray<CString>& values, const CString& key,
                              HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_setValues";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    v.dwType = korregistry::TYPE_MULTI_SZ;
    for (INT_PTR i = 0; i < values.GetSize(); ++i) {
        if (values[i].IsEmpty()) {
            CString text;
            text.Format(L"Entry %d of the list for %s is empty", static_cast<int>(i), t.sSubject);
            fail(UQErrno::_E_::Parameter, _sFunction_, text);
        }
        v.asList.push_back(values[i]);
    }
    check(_sFunction_, t, korregistry::write(t.hHive, t.sKey, t.sName, v));
}

int UQRegistry::mf_getOrSetValue(const CString& name, int& value, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getOrSetValue::1";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    bool written = false;
    check(_sFunction_, t,
          korregistry::readOrWrite(t.hHive, t.sKey, t.sName, numberValue(static_cast<DWORD>(value)), v,
                                   written));
    checkType(_sFunction_, t, v, korregistry::TYPE_DWORD, korregistry::TYPE_DWORD, L"a number");
    value = static_cast<int>(v.dwNumber);
    return written ? 0 : 1;
}

int UQRegistry::mf_getOrSetValue(const CString& name, DWORD& value, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getOrSetValue::2";
    const Target t = target(_sFunction_, name, key, hive);
    korregistry::Value v;
    bool written = false;
    check(_sFunction_, t, korregistry::readOrWrite(t.hHive, t.sKey, t.sName, numberValue(value), v, written));
    checkType(_sFunction_, t, v, korregistry::TYPE_DWORD, korregistry::TYPE_DWORD, L"a number");
    value = v.dwNumber;
    return written ? 0 : 1;
}

int UQRegistry::mf_exists(const CString& name, const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_exists";
    const Target t = target(_sFunction_, name, key, hive);
    bool exists = false;
    check(_sFunction_, t, korregistry::valueExists(t.hHive, t.sKey, t.sName, exists));
    return exists ? 1 : 0;
}

void* UQRegistry::mf_implBeginUpdate(const wchar_t* _pszFunction, const CString& _sName, const CString& _sKey,
                                     HKEY _hHive) {
    const Target t = target(_pszFunction, _sName, _sKey, _hHive, false);
    void* pLock = nullptr;
    check(_pszFunction, t, korregistry::beginUpdate(t.hHive, t.sKey, t.sName, pLock));
    return pLock;
}

void UQRegistry::mf_implCommitUpdate(const wchar_t* _pszFunction, void* _pLock, const CString& _sName,
                                     const CString& _sKey, HKEY _hHive) {
    const Target t = target(_pszFunction, _sName, _sKey, _hHive, false);
    check(_pszFunction, t, korregistry::commitUpdate(_pLock));
}

void UQRegistry::mf_setUserKey(const CString& key) {
    const CString normalized = normalizeKey(key);
    std::lock_guard<std::mutex> guard(g_userKeyLock);
    g_sUserKey = normalized;
}

CString UQRegistry::mf_getUserKey() {
    return userKey();
}

int UQRegistry::mf_PathExists(const CString& key, HKEY hive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_PathExists";
    const Target t = target(_sFunction_, nullptr, key, hive);
    bool exists = false;
    check(_sFunction_, t, korregistry::keyExists(t.hHive, t.sKey, exists));
    return exists ? 1 : 0;
}

void UQRegistryInjection::mf_injectFailure(int after, int count) noexcept {
    t_injectAfter = after > 0 ? after : 0;
    t_injectCount = count > 0 ? count : 0;
}

void UQRegistryInjection::mf_clearInjection() noexcept {
    t_injectAfter = 0;
    t_injectCount = 0;
}

#if !defined(_WIN32)
void UQRegistry::mf_setStoreFile(const CString& path) {
    korregistry::setFile(path);
}

CString UQRegistry::mf_getStoreFile() {
    return korregistry::currentFile();
}

CString UQRegistry::mf_getDefaultStoreFile() {
    return korregistry::defaultFile();
}
#endif
