// The rules a name read from the storage server must pass before the client writes a file under it: a
// relative path of plain parts that stays inside the folder it is joined to on every Windows file system.
#pragma once

#include <string>

class UQServerName {
public:
    // The longest name the client takes, in UTF-16 units: the limit of a Windows path.
    static const std::size_t MAX_LENGTH = 32767;

    // 1 when _sName is a safe relative name; else 0 and the rule it breaks in _rsReason.
    static int mf_check(const std::wstring& _sName, std::wstring& _rsReason);

private:
    static int mf_implCheckPart(const std::wstring& _sPart, std::wstring& _rsReason);
    static int mf_implIsDeviceName(const std::wstring& _sPart);
};
