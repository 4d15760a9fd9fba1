#include "UQTemporaryFile.h"

#include <utility>

UQTemporaryFile::~UQTemporaryFile() {
    mf_discard();
}

UQTemporaryFile::UQTemporaryFile(UQTemporaryFile&& _other) noexcept
    : m_file(std::move(_other.m_file)), m_sTemporary(std::move(_other.m_sTemporary)),
      m_sTarget(std::move(_other.m_sTarget)) {}

UQTemporaryFile& UQTemporaryFile::operator=(UQTemporaryFile&& _other) noexcept {
    if (this != &_other) {
        mf_discard();
        m_file = std::move(_other.m_file);
        m_sTemporary = std::move(_other.m_sTemporary);
        m_sTarget = std::move(_other.m_sTarget);
    }
    return *this;
}

DWORD UQTemporaryFile::mf_create(const std::wstring& _sTarget) {
    mf_discard();
    m_sTarget = _sTarget;
    // A name left by a killed run of a process whose number came again is passed over.
    DWORD dwError = ERROR_FILE_EXISTS;
    for (int nTry = 0; nTry < 100 && (dwError == ERROR_FILE_EXISTS || dwError == ERROR_ALREADY_EXISTS);
         ++nTry) {
        m_sTemporary = UQSafeFile::mf_temporaryName(_sTarget);
        dwError = UQSafeFile::mf_createNew(m_sTemporary, m_file);
    }
    return dwError;
}

DWORD UQTemporaryFile::mf_flush() {
    SetLastError(0);
    if (!FlushFileBuffers(m_file.mf_get()))
        return GetLastError() != 0 ? GetLastError() : ERROR_WRITE_FAULT;
    return 0;
}

DWORD UQTemporaryFile::mf_commit(int _bReplace) {
    const DWORD dwError = UQSafeFile::mf_commit(m_file.mf_get(), m_sTarget, _bReplace);
    if (dwError == 0)
        m_file.mf_reset();
    return dwError;
}

void UQTemporaryFile::mf_discard() noexcept {
    if (!m_file.mf_isValid())
        return;
    // Deleted through its own handle: no name to make, and nothing can open it between closing and deleting.
    FILE_DISPOSITION_INFO disposition{};
    disposition.DeleteFile = TRUE;
    const BOOL bMarked =
        SetFileInformationByHandle(m_file.mf_get(), FileDispositionInfo, &disposition, sizeof(disposition));
    m_file.mf_reset();
    if (bMarked)
        return;
    try {
        DeleteFileW(UQSafeFile::mf_long(m_sTemporary).c_str());
    } catch (...) {
        // Out of memory for the name: the file stays behind under its temporary name, which a migration
        // passes over.
    }
}
