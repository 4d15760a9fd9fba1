// The registry on Windows. The predefined hive handles are passed to the registry functions as they are,
// so that a process that redirects them (RegOverridePredefKey) finds its values where it put them.
#include "compat/UQHandle.h"
#include "kor/base/UQRegistryStore.h"

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
