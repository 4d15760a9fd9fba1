// A file written under a temporary name beside the one it is to have, and deleted unless it gets that name:
// whatever fails or throws on the way, nothing half-written stays behind and nothing reads it before it is
// whole.
#pragma once

#include "UQSafeFile.h"

#include <string>

class UQTemporaryFile {
public:
    UQTemporaryFile() = default;
    // Deletes the file unless it was given its name.
    ~UQTemporaryFile();
    UQTemporaryFile(UQTemporaryFile&& _other) noexcept;
    UQTemporaryFile& operator=(UQTemporaryFile&& _other) noexcept;
    UQTemporaryFile(const UQTemporaryFile&) = delete;
    UQTemporaryFile& operator=(const UQTemporaryFile&) = delete;

    // Creates the temporary file for _sTarget, open for writing; 0, or the system error.
    DWORD mf_create(const std::wstring& _sTarget);
    HANDLE mf_get() const noexcept { return m_file.mf_get(); }
    bool mf_isOpen() const noexcept { return m_file.mf_isValid() != 0; }
    // Makes what was written durable; 0, or the system error.
    DWORD mf_flush();
    // Gives the file its name in one step (_bReplace: an existing file of that name is replaced) and closes
    // it; 0, or the system error, and the file stays temporary.
    DWORD mf_commit(int _bReplace);
    // Closes and deletes the file now.
    void mf_discard() noexcept;

private:
    UQFileHandle m_file;
    std::wstring m_sTemporary;
    std::wstring m_sTarget;
};
