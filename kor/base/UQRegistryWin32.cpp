// The registry on Windows. The predefined hive handles are passed to the registry functions as they are,
// so that a process that redirects them (RegOverridePredefKey) finds its values where it put them.
#include "compat/UQHandle.h"
#include "kor/base/UQRegistryStore.h"

#include <new>

namespace korregistry {

namespace {

CString systemReason(LONG rc) {
    CString s;
    s.Format(L"system error %lu: %s", static_cast<unsigned long>(rc),
             UQErrno::mf_getSystemMessage(static_cast<std::uint32_t>(rc)));
    return s;
}

Result failure(Status status, LONG rc) {
    Result r;
    r.status = status;
    if (rc != ERROR_SUCCESS)
        r.sReason = systemReason(rc);
    return r;
}

typedef UQRegistryKey Key;

// How long a write waits for another process's update of the same value, as the native store waits.
const DWORD UPDATE_WAIT_MS = 30000;

// "Local\korguibase-registry-<hash>" of the hive, key and name, folded as the registry compares them:
// object names cannot hold backslashes and are limited in length, so the value is named by a hash. Two
// values that meet in a hash only wait for each other.
CString mutexName(HKEY hive, const CString& key, const CString& name) {
    CString text;
    text.Format(L"%s\\%s\\%s", hive == HKEY_LOCAL_MACHINE ? L"HKLM" : L"HKCU", key, name);
    text.MakeUpper();
    unsigned long long hash = 14695981039346656037ull;
    for (int i = 0; i < text.GetLength(); ++i) {
        hash ^= static_cast<unsigned long long>(text[i]);
        hash *= 1099511628211ull;
    }
    CString out;
    out.Format(L"Local\\korguibase-registry-%8.8x%8.8x", static_cast<unsigned>(hash >> 32),
               static_cast<unsigned>(hash & 0xFFFFFFFFu));
    return out;
}

// The named mutex of one value, taken for the life of the object. The registry makes each single write
// atomic, not a read followed by a write: every write of the value and every update take this mutex, so
// an update's read and write see no other write in between. Recursive within a thread, as the mutex is.
class ValueMutex {
public:
    ValueMutex(HKEY hive, const CString& key, const CString& name) noexcept
        : m_h(nullptr), m_rc(ERROR_SUCCESS) {
        SetLastError(0);
        m_h = CreateMutexW(nullptr, FALSE, mutexName(hive, key, name));
        if (m_h == nullptr) {
            m_rc = static_cast<LONG>(GetLastError());
            return;
        }
        const DWORD wait = WaitForSingleObject(m_h, UPDATE_WAIT_MS);
        // An owner that died without releasing it left the value as the registry has it: whole.
        if (wait == WAIT_OBJECT_0 || wait == WAIT_ABANDONED)
            return;
        m_rc = wait == WAIT_TIMEOUT ? static_cast<LONG>(ERROR_TIMEOUT) : static_cast<LONG>(GetLastError());
        CloseHandle(m_h);
        m_h = nullptr;
    }
    ~ValueMutex() {
        if (m_h != nullptr) {
            ReleaseMutex(m_h);
            CloseHandle(m_h);
        }
    }
    ValueMutex(const ValueMutex&) = delete;
    ValueMutex& operator=(const ValueMutex&) = delete;

    // ERROR_SUCCESS when held.
    LONG rc() const noexcept { return m_rc; }

private:
    HANDLE m_h;
    LONG m_rc;
};

LONG openKey(HKEY hive, const CString& key, REGSAM access, Key& out) {
    return RegOpenKeyExW(hive, key, 0, access, out.mf_put());
}

LONG createKey(HKEY hive, const CString& key, Key& out) {
    return RegCreateKeyExW(hive, key, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_QUERY_VALUE | KEY_SET_VALUE,
                           nullptr, out.mf_put(), nullptr);
}

// A string of a value's data: up to its first terminator, or all of it when it has none.
CString textOf(const wchar_t* chars, std::size_t count) {
    std::size_t n = 0;
    while (n < count && chars[n] != L'\0')
        ++n;
    return CString(chars, static_cast<int>(n));
}

// Reads type and data, growing the buffer while the value grows under it.
LONG queryValue(HKEY h, const CString& name, Value& value) {
    std::vector<BYTE> buffer;
    DWORD type = REG_NONE;
    DWORD size = 0;
    LONG rc = RegQueryValueExW(h, name, nullptr, &type, nullptr, &size);
    for (;;) {
        if (rc != ERROR_SUCCESS)
            return rc;
        // Room for two terminators that the stored data may lack.
        buffer.assign(static_cast<std::size_t>(size) + 2 * sizeof(wchar_t), 0);
        DWORD got = size;
        rc = RegQueryValueExW(h, name, nullptr, &type, buffer.data(), &got);
        if (rc == ERROR_MORE_DATA) {
            size = got;
            rc = ERROR_SUCCESS;
            continue;
        }
        if (rc != ERROR_SUCCESS)
            return rc;
        size = got;
        break;
    }
    value.dwType = type;
    const wchar_t* chars = reinterpret_cast<const wchar_t*>(buffer.data());
    const std::size_t count = size / sizeof(wchar_t);
    switch (type) {
    case REG_SZ:
    case REG_EXPAND_SZ:
        value.sText = textOf(chars, count);
        break;
    case REG_DWORD:
        if (size != sizeof(DWORD))
            return ERROR_INVALID_DATA;
        value.dwNumber = *reinterpret_cast<const DWORD*>(buffer.data());
        break;
    case REG_MULTI_SZ: {
        // Entries end at their terminators; an empty entry (two terminators) ends the list.
        std::size_t i = 0;
        while (i < count && chars[i] != L'\0') {
            const CString entry = textOf(chars + i, count - i);
            value.asList.push_back(entry);
            i += static_cast<std::size_t>(entry.GetLength()) + 1;
        }
        break;
    }
    default:
        break;
    }
    return ERROR_SUCCESS;
}

LONG setValue(HKEY h, const CString& name, const Value& value) {
    switch (value.dwType) {
    case TYPE_DWORD:
        return RegSetValueExW(h, name, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value.dwNumber),
                              sizeof(DWORD));
    case TYPE_MULTI_SZ: {
        std::vector<wchar_t> data;
        for (const CString& s : value.asList) {
            data.insert(data.end(), s.GetString(), s.GetString() + s.GetLength());
            data.push_back(L'\0');
        }
        data.push_back(L'\0');
        return RegSetValueExW(h, name, 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(data.data()),
                              static_cast<DWORD>(data.size() * sizeof(wchar_t)));
    }
    default:
        return RegSetValueExW(h, name, 0, value.dwType,
                              reinterpret_cast<const BYTE*>(value.sText.GetString()),
                              static_cast<DWORD>((value.sText.GetLength() + 1) * sizeof(wchar_t)));
    }
}

} // namespace

Result read(HKEY hive, const CString& key, const CString& name, Value& value) {
    Key h;
    LONG rc = openKey(hive, key, KEY_QUERY_VALUE, h);
    if (rc == ERROR_FILE_NOT_FOUND)
        return failure(Status::KeyNotFound, ERROR_SUCCESS);
    if (rc != ERROR_SUCCESS)
        return failure(Status::ReadFailed, rc);
    rc = queryValue(h.mf_get(), name, value);
    if (rc == ERROR_FILE_NOT_FOUND)
        return failure(Status::ValueNotFound, ERROR_SUCCESS);
    if (rc != ERROR_SUCCESS)
        return failure(Status::ReadFailed, rc);
    return Result();
}

Result write(HKEY hive, const CString& key, const CString& name, const Value& value) {
    const ValueMutex mutex(hive, key, name);
    if (mutex.rc() != ERROR_SUCCESS)
        return failure(Status::LockFailed, mutex.rc());
    Key h;
    LONG rc = createKey(hive, key, h);
    if (rc == ERROR_SUCCESS)
        rc = setValue(h.mf_get(), name, value);
    if (rc != ERROR_SUCCESS)
        return failure(Status::WriteFailed, rc);
    return Result();
}

Result readOrWrite(HKEY hive, const CString& key, const CString& name, const Value& dflt, Value& value,
                   bool& written) {
    written = false;
    // Else a value written by another process between the read and the write would be overwritten.
    const ValueMutex mutex(hive, key, name);
    if (mutex.rc() != ERROR_SUCCESS)
        return failure(Status::LockFailed, mutex.rc());
    // Reading first needs only read access, which a user without write access to the machine's keys has.
    {
        Key h;
        LONG rc = openKey(hive, key, KEY_QUERY_VALUE, h);
        if (rc == ERROR_SUCCESS)
            rc = queryValue(h.mf_get(), name, value);
        if (rc == ERROR_SUCCESS)
            return Result();
        if (rc != ERROR_FILE_NOT_FOUND)
            return failure(Status::ReadFailed, rc);
    }
    value = Value();
    Key h;
    LONG rc = createKey(hive, key, h);
    if (rc == ERROR_SUCCESS)
        rc = setValue(h.mf_get(), name, dflt);
    if (rc != ERROR_SUCCESS)
        return failure(Status::WriteFailed, rc);
    value = dflt;
    written = true;
    return Result();
}

Result beginUpdate(HKEY _hHive, const CString& _sKey, const CString& _sName, void*& _rpLock) {
    _rpLock = nullptr;
    ValueMutex* mutex = new (std::nothrow) ValueMutex(_hHive, _sKey, _sName);
    if (mutex == nullptr)
        return failure(Status::LockFailed, ERROR_NOT_ENOUGH_MEMORY);
    const LONG rc = mutex->rc();
    if (rc != ERROR_SUCCESS) {
        delete mutex;
        return failure(Status::LockFailed, rc);
    }
    _rpLock = mutex;
    return Result();
}

Result commitUpdate(void* _pLock) {
    if (_pLock == nullptr) {
        Result r;
        r.status = Status::WriteFailed;
        r.sReason = L"no update is held";
        return r;
    }
    // Every write landed when it was made.
    return Result();
}

void endUpdate(void* _pLock) noexcept {
    delete static_cast<ValueMutex*>(_pLock);
}

Result valueExists(HKEY hive, const CString& key, const CString& name, bool& exists) {
    exists = false;
    Key h;
    LONG rc = openKey(hive, key, KEY_QUERY_VALUE, h);
    if (rc == ERROR_FILE_NOT_FOUND)
        return Result();
    if (rc == ERROR_SUCCESS)
        rc = RegQueryValueExW(h.mf_get(), name, nullptr, nullptr, nullptr, nullptr);
    if (rc == ERROR_FILE_NOT_FOUND)
        return Result();
    if (rc != ERROR_SUCCESS)
        return failure(Status::ReadFailed, rc);
    exists = true;
    return Result();
}

Result keyExists(HKEY hive, const CString& key, bool& exists) {
    exists = false;
    Key h;
    const LONG rc = openKey(hive, key, KEY_QUERY_VALUE, h);
    if (rc == ERROR_FILE_NOT_FOUND)
        return Result();
    if (rc != ERROR_SUCCESS)
        return failure(Status::ReadFailed, rc);
    exists = true;
    return Result();
}

} // namespace korregistry
