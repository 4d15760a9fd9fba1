// The store behind UQRegistry: the registry on Windows (UQRegistryWin32.cpp), an SQLite database elsewhere
// (UQRegistryStore.cpp). It answers a status instead of throwing, so that UQRegistry words, logs and throws
// every failure in one place. Key paths arrive resolved (no empty HKEY_CURRENT_USER key) and normalised
// (no leading, trailing or doubled backslashes); the hive is HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER.
#pragma once

#include "interfaces/korbase.h"

#include <vector>

namespace korregistry {

// The registry's own type numbers, also used in the database.
enum : DWORD { TYPE_NONE = 0, TYPE_SZ = 1, TYPE_EXPAND_SZ = 2, TYPE_DWORD = 4, TYPE_MULTI_SZ = 7 };

struct Value {
    // Any type number the store holds; only the four above carry data here.
    DWORD dwType = TYPE_NONE;
    CString sText;
    DWORD dwNumber = 0;
    std::vector<CString> asList;
    // Data that does not fit the type ("a number out of range (-1)"): the value reads as of no type at all.
    CString sMalformed;
};

enum class Status { Ok, KeyNotFound, ValueNotFound, StoreUnavailable, ReadFailed, WriteFailed, LockFailed };

struct Result {
    Status status = Status::Ok;
    // Why it failed: the system's or SQLite's message.
    CString sReason;
    // StoreUnavailable: the file that could not be opened.
    CString sFile;
};

Result read(HKEY _hHive, const CString& _sKey, const CString& _sName, Value& _rValue);
// Creates the key and its parents as needed.
Result write(HKEY _hHive, const CString& _sKey, const CString& _sName, const Value& _value);
// Reads the value into _rValue; when it (or its key) is missing, writes _default and answers it in _rValue
// with _rbWritten set. The native store does both in one transaction.
Result readOrWrite(HKEY _hHive, const CString& _sKey, const CString& _sName, const Value& _default,
                   Value& _rValue, bool& _rbWritten);
// Holds one value still for a read-modify-write: the native store holds one write transaction open (the
// operations of the holding thread join it, other threads and processes wait), Windows a named mutex that
// every write of that value takes as well. _rpLock receives what endUpdate releases; null on failure.
Result beginUpdate(HKEY _hHive, const CString& _sKey, const CString& _sName, void*& _rpLock);
// Makes the writes made since beginUpdate last (native: commits); the lock stays held until endUpdate.
Result commitUpdate(void* _pLock);
// Releases the lock; what was not committed is rolled back (native). Null is ignored.
void endUpdate(void* _pLock) noexcept;
Result valueExists(HKEY _hHive, const CString& _sKey, const CString& _sName, bool& _rbExists);
Result keyExists(HKEY _hHive, const CString& _sKey, bool& _rbExists);

#if !defined(_WIN32)
void setFile(const CString& _sPath);
CString currentFile();
CString defaultFile();
#endif

} // namespace korregistry
