#include "interfaces/korbase_testing.h"
#include "kor/KorReport.h"

#include "kor/base/Environment.h"
#include "kor/base/UQRegistryStore.h"

#include <cstdlib>
#include <mutex>

namespace {

// The product's registry root; machine-wide settings sit in its sub keys, per-user ones in the same path
// under HKEY_CURRENT_USER.
const wchar_t* const REGISTRY_ROOT = L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient";

// The key of an empty key path in HKEY_CURRENT_USER when it is not the product's root.
std::mutex g_userKeyLock;
CString g_sUserKey;

CString userKey() {
    std::lock_guard<std::mutex> guard(g_userKeyLock);
    return g_sUserKey.IsEmpty() ? CString(REGISTRY_ROOT) : g_sUserKey;
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

const wchar_t* hiveName(HKEY _hHive) noexcept {
    if (_hHive == HKEY_LOCAL_MACHINE)
        return L"HKLM";
    if (_hHive == HKEY_CURRENT_USER)
        return L"HKCU";
    return nullptr;
}

// The units before the first NUL: what the registry sees of a text passed as a C string.
int lengthOf(const CString& _sText) noexcept {
    const wchar_t* p = _sText.GetString();
    int n = 0;
    while (n < _sText.GetLength() && p[n] != 0)
        ++n;
    return n;
}

// The registry's limits, in UTF-16 units.
const int VALUE_NAME_LIMIT = 16383;
const int KEY_NAME_LIMIT = 255;

// The registry separates key names by single backslashes; leading, trailing and doubled ones would name
// keys with empty names, which it refuses. A NUL ends the path, as the registry reads it (target() refuses
// one before this matters).
CString normalizeKey(const CString& _sKey) {
    CString out;
    const int n = lengthOf(_sKey);
    for (int i = 0; i < n; ++i) {
        const wchar_t c = _sKey[i];
        if (c == L'\\' && (out.IsEmpty() || out[out.GetLength() - 1] == L'\\'))
            continue;
        out += c;
    }
    out.TrimRight(L'\\');
    return out;
}

// A long name shown in a failure text: its start, enough to recognise it.
CString shortened(const CString& _sText) {
    return _sText.GetLength() <= 40 ? _sText : _sText.Left(40) + L"...";
}

const wchar_t* typeText(DWORD _dwType) noexcept {
    switch (_dwType) {
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

[[noreturn]] void fail(const UQErrnoValue& _value, const wchar_t* _pszFunction, const CString& _sText) {
    UQKorReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"%s", _sText);
    throw UQErrno(UQErrnoData(_value), _sText);
}

// A name for a failure text, its NULs as \0.
CString shownWithNuls(const CString& _sText) {
    CString out;
    for (int i = 0; i < _sText.GetLength(); ++i) {
        if (_sText[i] == 0)
            out += L"\\0";
        else
            out += _sText[i];
    }
    return out;
}

// Checks the hive, resolves the key and lets an injected failure come due: the common start of every
// operation that touches the store. _pName null: an operation on the key itself.
Target target(const wchar_t* _pszFunction, const CString* _pName, const CString& _sKey, HKEY _hHive,
              bool _bInjectable = true) {
    const wchar_t* const _pszName = _pName != nullptr ? _pName->GetString() : nullptr;
    Target t;
    t.hHive = _hHive;
    t.sKey = normalizeKey(_sKey);
    if (t.sKey.IsEmpty() && _hHive == HKEY_CURRENT_USER)
        t.sKey = userKey();
    const wchar_t* hiveText = hiveName(_hHive);
    if (hiveText == nullptr) {
        CString text;
        if (_pszName != nullptr)
            text.Format(L"Unknown registry hive %p for value '%s' in key '%s'",
                        static_cast<const void*>(_hHive), _pszName, t.sKey);
        else
            text.Format(L"Unknown registry hive %p for key '%s'", static_cast<const void*>(_hHive), t.sKey);
        fail(UQErrno::_E_::Parameter, _pszFunction, text);
    }
    t.sKeyText = t.sKey.IsEmpty() ? CString(hiveText) : CString(hiveText) + L"\\" + t.sKey;
    if (_pszName != nullptr) {
        t.sName = _pszName;
        t.sSubject.Format(L"value '%s' in '%s'", t.sName, t.sKeyText);
    } else {
        t.sSubject.Format(L"key '%s'", t.sKeyText);
    }
    // What the registry cannot hold is refused the same way on both targets, before the store is touched.
    // The registry reads names as C strings: a NUL would end them early, and the write would land on
    // another key or value than the one asked for.
    const int nKeyNul = lengthOf(_sKey);
    if (nKeyNul < _sKey.GetLength()) {
        CString text;
        text.Format(
            L"Key path '%s' in '%s' holds a NUL character at unit %d; the registry ends a name at a NUL",
            shortened(shownWithNuls(_sKey)), hiveText, nKeyNul + 1);
        fail(UQErrno::_E_::Parameter, _pszFunction, text);
    }
    if (_pName != nullptr && lengthOf(*_pName) < _pName->GetLength()) {
        CString text;
        text.Format(
            L"Value name '%s' in '%s' holds a NUL character at unit %d; the registry ends a name at a NUL",
            shortened(shownWithNuls(*_pName)), t.sKeyText, lengthOf(*_pName) + 1);
        fail(UQErrno::_E_::Parameter, _pszFunction, text);
    }
    for (int start = 0; start < t.sKey.GetLength();) {
        int end = t.sKey.Find(L'\\', start);
        if (end < 0)
            end = t.sKey.GetLength();
        if (end - start > KEY_NAME_LIMIT) {
            CString text;
            text.Format(L"Key name '%s' (%d units) in '%s' is longer than the registry's limit of %d units",
                        shortened(t.sKey.Mid(start, end - start)), end - start, shortened(t.sKeyText),
                        KEY_NAME_LIMIT);
            fail(UQErrno::_E_::Parameter, _pszFunction, text);
        }
        start = end + 1;
    }
    if (t.sName.GetLength() > VALUE_NAME_LIMIT) {
        CString text;
        text.Format(L"Value name '%s' (%d units) in '%s' is longer than the registry's limit of %d units",
                    shortened(t.sName), t.sName.GetLength(), t.sKeyText, VALUE_NAME_LIMIT);
        fail(UQErrno::_E_::Parameter, _pszFunction, text);
    }
    if (_bInjectable && injectionDue()) {
        CString text;
        text.Format(L"Injected failure (%s)", t.sSubject);
        fail(UQErrno::_E_::Registry, _pszFunction, text);
    }
    return t;
}

void check(const wchar_t* _pszFunction, const Target& _t, const korregistry::Result& _result) {
    CString text;
    switch (_result.status) {
    case korregistry::Status::Ok:
        return;
    case korregistry::Status::KeyNotFound:
        text.Format(L"Key '%s' not found (value '%s')", _t.sKeyText, _t.sName);
        break;
    case korregistry::Status::ValueNotFound:
        text.Format(L"Value '%s' not found in '%s'", _t.sName, _t.sKeyText);
        break;
    case korregistry::Status::StoreUnavailable:
        text.Format(L"Registry store '%s' cannot be opened (%s): %s", _result.sFile, _t.sSubject,
                    _result.sReason);
        break;
    case korregistry::Status::ReadFailed:
        text.Format(L"Failure reading %s: %s", _t.sSubject, _result.sReason);
        break;
    case korregistry::Status::WriteFailed:
        text.Format(L"Failure writing %s: %s", _t.sSubject, _result.sReason);
        break;
    case korregistry::Status::LockFailed:
        text.Format(L"Failure locking %s for an update: %s", _t.sSubject, _result.sReason);
        break;
    }
    fail(UQErrno::_E_::Registry, _pszFunction, text);
}

void checkType(const wchar_t* _pszFunction, const Target& _t, const korregistry::Value& _value,
               DWORD _dwExpected1, DWORD _dwExpected2, const wchar_t* _pszExpectedText) {
    const bool expectedType = _value.dwType == _dwExpected1 || _value.dwType == _dwExpected2;
    if (expectedType && _value.sMalformed.IsEmpty())
        return;
    // Data that does not fit its type is no value of that type either.
    CString actual(expectedType ? _value.sMalformed : CString(typeText(_value.dwType)));
    if (actual.IsEmpty())
        actual.Format(L"of type %lu", _value.dwType);
    CString text;
    text.Format(L"Value '%s' in '%s' is %s, not %s", _t.sName, _t.sKeyText, actual, _pszExpectedText);
    fail(UQErrno::_E_::Registry, _pszFunction, text);
}

// %NAME% references by the environment, by ExpandEnvironmentStringsW's rules: a name is looked up
// case-blind; an unknown reference stays as written, its closing '%' included, and scanning goes on after
// it; a '%' without a closing one is kept. Done here on both targets, since the system call cuts its result
// at 32 766 units and a registry value may be longer.
CString expand(const CString& _sText) {
    CString out;
    const int n = _sText.GetLength();
    int i = 0;
    while (i < n) {
        const int open = _sText.Find(L'%', i);
        const int close = open < 0 ? -1 : _sText.Find(L'%', open + 1);
        if (close < 0) {
            out += _sText.Mid(i);
            break;
        }
        out += _sText.Mid(i, open - i);
        bool found = false;
        const CString value = korenv::expansionVariable(_sText.Mid(open + 1, close - open - 1), found);
        out += found ? value : _sText.Mid(open, close - open + 1);
        i = close + 1;
    }
    return out;
}

korregistry::Value numberValue(DWORD _dwNumber) {
    korregistry::Value v;
    v.dwType = korregistry::TYPE_DWORD;
    v.dwNumber = _dwNumber;
    return v;
}

} // namespace

CString UQRegistry::mf_getRegistryRoot(const CString& _sSubKey) {
    const CString sub = normalizeKey(_sSubKey);
    return sub.IsEmpty() ? CString(REGISTRY_ROOT) : CString(REGISTRY_ROOT) + L"\\" + sub;
}

void UQRegistry::mf_getValue(const CString& _sName, CString& _rsValue, const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getValue::1";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    check(_sFunction_, t, korregistry::read(t.hHive, t.sKey, t.sName, v));
    checkType(_sFunction_, t, v, korregistry::TYPE_SZ, korregistry::TYPE_EXPAND_SZ, L"a string");
    _rsValue = v.dwType == korregistry::TYPE_EXPAND_SZ ? expand(v.sText) : v.sText;
}

void UQRegistry::mf_getValue(const CString& _sName, int& _rnValue, const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getValue::2";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    check(_sFunction_, t, korregistry::read(t.hHive, t.sKey, t.sName, v));
    checkType(_sFunction_, t, v, korregistry::TYPE_DWORD, korregistry::TYPE_DWORD, L"a number");
    _rnValue = static_cast<int>(v.dwNumber);
}

void UQRegistry::mf_getValues(const CString& _sName, UQArray<CString>& _rasValues, const CString& _sKey,
                              HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getValues";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    check(_sFunction_, t, korregistry::read(t.hHive, t.sKey, t.sName, v));
    checkType(_sFunction_, t, v, korregistry::TYPE_MULTI_SZ, korregistry::TYPE_MULTI_SZ,
              L"a list of strings");
    _rasValues.RemoveAll();
    for (const CString& s : v.asList)
        _rasValues.Add(s);
}

void UQRegistry::mf_setValue(const CString& _sName, const CString& _sValue, int _bExpandable,
                             const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_setValue::1";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    v.dwType = _bExpandable ? korregistry::TYPE_EXPAND_SZ : korregistry::TYPE_SZ;
    // The registry would keep the units after a NUL but read the string only up to it.
    const int nNul = lengthOf(_sValue);
    if (nNul < _sValue.GetLength()) {
        CString text;
        text.Format(
            L"The string for %s holds a NUL character at unit %d; the registry ends a string at a NUL",
            t.sSubject, nNul + 1);
        fail(UQErrno::_E_::Parameter, _sFunction_, text);
    }
    v.sText = _sValue;
    check(_sFunction_, t, korregistry::write(t.hHive, t.sKey, t.sName, v));
}

void UQRegistry::mf_setValue(const CString& _sName, int _nValue, const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_setValue::2";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    check(_sFunction_, t,
          korregistry::write(t.hHive, t.sKey, t.sName, numberValue(static_cast<DWORD>(_nValue))));
}

void UQRegistry::mf_setValues(const CString& _sName, const UQArray<CString>& _asValues, const CString& _sKey,
                              HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_setValues";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    v.dwType = korregistry::TYPE_MULTI_SZ;
    for (INT_PTR i = 0; i < _asValues.GetSize(); ++i) {
        if (_asValues[i].IsEmpty()) {
            CString text;
            text.Format(L"Entry %d of the list for %s is empty; a list of strings ends at an empty entry",
                        static_cast<int>(i), t.sSubject);
            fail(UQErrno::_E_::Parameter, _sFunction_, text);
        }
        // In a REG_MULTI_SZ a NUL ends the entry and an empty one the list: such an entry cannot be kept.
        const int nul = lengthOf(_asValues[i]);
        if (nul < _asValues[i].GetLength()) {
            CString text;
            text.Format(
                L"Entry %d of the list for %s holds a NUL character at unit %d; a list of strings ends "
                L"an entry at a NUL",
                static_cast<int>(i), t.sSubject, nul + 1);
            fail(UQErrno::_E_::Parameter, _sFunction_, text);
        }
        v.asList.push_back(_asValues[i]);
    }
    check(_sFunction_, t, korregistry::write(t.hHive, t.sKey, t.sName, v));
}

int UQRegistry::mf_getOrSetValue(const CString& _sName, int& _rnValue, const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getOrSetValue::1";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    bool written = false;
    check(_sFunction_, t,
          korregistry::readOrWrite(t.hHive, t.sKey, t.sName, numberValue(static_cast<DWORD>(_rnValue)), v,
                                   written));
    checkType(_sFunction_, t, v, korregistry::TYPE_DWORD, korregistry::TYPE_DWORD, L"a number");
    _rnValue = static_cast<int>(v.dwNumber);
    return written ? 0 : 1;
}

int UQRegistry::mf_getOrSetValue(const CString& _sName, DWORD& _rdwValue, const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_getOrSetValue::2";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    korregistry::Value v;
    bool written = false;
    check(_sFunction_, t,
          korregistry::readOrWrite(t.hHive, t.sKey, t.sName, numberValue(_rdwValue), v, written));
    checkType(_sFunction_, t, v, korregistry::TYPE_DWORD, korregistry::TYPE_DWORD, L"a number");
    _rdwValue = v.dwNumber;
    return written ? 0 : 1;
}

int UQRegistry::mf_exists(const CString& _sName, const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_exists";
    const Target t = target(_sFunction_, &_sName, _sKey, _hHive);
    bool exists = false;
    check(_sFunction_, t, korregistry::valueExists(t.hHive, t.sKey, t.sName, exists));
    return exists ? 1 : 0;
}

void* UQRegistry::mf_implBeginUpdate(const wchar_t* _pszFunction, const CString& _sName, const CString& _sKey,
                                     HKEY _hHive) {
    const Target t = target(_pszFunction, &_sName, _sKey, _hHive, false);
    void* pLock = nullptr;
    check(_pszFunction, t, korregistry::beginUpdate(t.hHive, t.sKey, t.sName, pLock));
    return pLock;
}

void UQRegistry::mf_implCommitUpdate(const wchar_t* _pszFunction, void* _pLock, const CString& _sName,
                                     const CString& _sKey, HKEY _hHive) {
    const Target t = target(_pszFunction, &_sName, _sKey, _hHive, false);
    check(_pszFunction, t, korregistry::commitUpdate(_pLock));
}

void UQRegistry::mf_setUserKey(const CString& _sKey) {
    const CString normalized = normalizeKey(_sKey);
    std::lock_guard<std::mutex> guard(g_userKeyLock);
    g_sUserKey = normalized;
}

CString UQRegistry::mf_getUserKey() {
    return userKey();
}

int UQRegistry::mf_PathExists(const CString& _sKey, HKEY _hHive) {
    static const wchar_t* const _sFunction_ = L"UQRegistry::mf_PathExists";
    const Target t = target(_sFunction_, nullptr, _sKey, _hHive);
    bool exists = false;
    check(_sFunction_, t, korregistry::keyExists(t.hHive, t.sKey, exists));
    return exists ? 1 : 0;
}

void UQRegistryInjection::mf_injectFailure(int _nAfter, int _nCount) noexcept {
    t_injectAfter = _nAfter > 0 ? _nAfter : 0;
    t_injectCount = _nCount > 0 ? _nCount : 0;
}

void UQRegistryInjection::mf_clearInjection() noexcept {
    t_injectAfter = 0;
    t_injectCount = 0;
}

#if !defined(_WIN32)
void UQRegistry::mf_setStoreFile(const CString& _sPath) {
    korregistry::setFile(_sPath);
}

CString UQRegistry::mf_getStoreFile() {
    return korregistry::currentFile();
}

CString UQRegistry::mf_getDefaultStoreFile() {
    return korregistry::defaultFile();
}
#endif
