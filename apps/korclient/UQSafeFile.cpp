#include "UQSafeFile.h"

#include "UQTemporaryFile.h"

#include <atomic>
#include <cstddef>
#include <cstring>
#include <cwctype>
#include <vector>

namespace {

std::atomic<std::uint64_t> g_uInjectedBytesLeft{0};
std::atomic<DWORD> g_dwInjectedError{0};
std::atomic<unsigned> g_uTemporaryCounter{0};

std::wstring stripLongPrefix(const std::wstring& _sPath) {
    if (_sPath.compare(0, 8, L"\\\\?\\UNC\\") == 0)
        return L"\\\\" + _sPath.substr(8);
    if (_sPath.compare(0, 4, L"\\\\?\\") == 0)
        return _sPath.substr(4);
    return _sPath;
}

} // namespace

std::wstring UQSafeFile::mf_absolute(const std::wstring& _sPath) {
    std::wstring sPath = _sPath;
    for (wchar_t& ch : sPath)
        if (ch == L'/')
            ch = L'\\';
    const std::wstring sLong = sPath.compare(0, 4, L"\\\\?\\") == 0 ? sPath : std::wstring();
    if (!sLong.empty())
        sPath = stripLongPrefix(sLong);
    const DWORD dwNeeded = GetFullPathNameW(sPath.c_str(), 0, nullptr, nullptr);
    if (dwNeeded == 0)
        return std::wstring();
    std::vector<wchar_t> buffer(dwNeeded + 1, L'\0');
    const DWORD dwLength = GetFullPathNameW(sPath.c_str(), dwNeeded + 1, buffer.data(), nullptr);
    if (dwLength == 0 || dwLength > dwNeeded)
        return std::wstring();
    std::wstring sFull(buffer.data(), dwLength);
    while (sFull.size() > 3 && sFull.back() == L'\\')
        sFull.pop_back();
    return sFull;
}

std::wstring UQSafeFile::mf_long(const std::wstring& _sAbsolute) {
    if (_sAbsolute.compare(0, 4, L"\\\\?\\") == 0)
        return _sAbsolute;
    if (_sAbsolute.compare(0, 2, L"\\\\") == 0)
        return L"\\\\?\\UNC\\" + _sAbsolute.substr(2);
    return L"\\\\?\\" + _sAbsolute;
}

std::wstring UQSafeFile::mf_finalPath(HANDLE _hFile, const std::wstring& _sOpened) {
    // Room for the longest path at once: Wine answers 0 rather than the size needed for a path over MAX_PATH.
    std::vector<wchar_t> buffer(32769, L'\0');
    const DWORD dwLength = GetFinalPathNameByHandleW(_hFile, buffer.data(), static_cast<DWORD>(buffer.size()),
                                                     FILE_NAME_NORMALIZED | VOLUME_NAME_DOS);
    if (dwLength == 0 || dwLength >= buffer.size()) {
        // Wine 8 answers no final path beyond MAX_PATH; the name on the volume still tells where the file is,
        // and the volume is the one of the path that was opened (a link to another volume shows as a name
        // that is not the opened one).
        std::vector<std::uint8_t> info(sizeof(FILE_NAME_INFO) + 65536, 0);
        FILE_NAME_INFO* pInfo = reinterpret_cast<FILE_NAME_INFO*>(info.data());
        if (_sOpened.size() < 2 || _sOpened[1] != L':' ||
            !GetFileInformationByHandleEx(_hFile, FileNameInfo, pInfo, static_cast<DWORD>(info.size())))
            return std::wstring();
        std::wstring sPath =
            _sOpened.substr(0, 2) + std::wstring(pInfo->FileName, pInfo->FileNameLength / sizeof(wchar_t));
        while (sPath.size() > 3 && sPath.back() == L'\\')
            sPath.pop_back();
        return sPath;
    }
    std::wstring sPath = stripLongPrefix(std::wstring(buffer.data(), dwLength));
    while (sPath.size() > 3 && sPath.back() == L'\\')
        sPath.pop_back();
    return sPath;
}

std::wstring UQSafeFile::mf_upper(std::wstring _sPath) {
    for (wchar_t& ch : _sPath)
        ch = static_cast<wchar_t>(std::towupper(ch));
    return _sPath;
}

bool UQSafeFile::mf_isWithin(const std::wstring& _sPath, const std::wstring& _sFolder) {
    const std::wstring sPath = mf_upper(_sPath);
    std::wstring sFolder = mf_upper(_sFolder);
    if (sPath == sFolder)
        return true;
    if (sFolder.empty() || sFolder.back() != L'\\')
        sFolder += L'\\';
    return sPath.compare(0, sFolder.size(), sFolder) == 0;
}

std::wstring UQSafeFile::mf_systemText(DWORD _dwError) {
    wchar_t* pszText = nullptr;
    const auto freeText = [&] {
        if (pszText != nullptr)
            LocalFree(pszText);
    };
    const UQScopeExit<decltype(freeText)> release(freeText);
    const DWORD dwLength = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
        _dwError, 0, reinterpret_cast<wchar_t*>(&pszText), 0, nullptr);
    std::wstring sText =
        dwLength > 0 && pszText != nullptr ? std::wstring(pszText, dwLength) : std::wstring();
    while (!sText.empty() &&
           (sText.back() == L'\n' || sText.back() == L'\r' || sText.back() == L' ' || sText.back() == L'.'))
        sText.pop_back();
    if (sText.empty())
        sText = L"system error";
    return sText + L" (error " + std::to_wstring(_dwError) + L")";
}

DWORD UQSafeFile::mf_openRead(const std::wstring& _sAbsolute, UQFileHandle& _rHandle) {
    SetLastError(0);
    HANDLE hFile =
        CreateFileW(mf_long(_sAbsolute).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                    FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_SEQUENTIAL_SCAN, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return GetLastError();
    _rHandle = UQFileHandle(hFile);
    return 0;
}

DWORD UQSafeFile::mf_openFolder(const std::wstring& _sAbsolute, UQFileHandle& _rHandle) {
    SetLastError(0);
    HANDLE hFolder = CreateFileW(mf_long(_sAbsolute).c_str(), FILE_READ_ATTRIBUTES,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                                 FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (hFolder == INVALID_HANDLE_VALUE)
        return GetLastError();
    _rHandle = UQFileHandle(hFolder);
    return 0;
}

DWORD UQSafeFile::mf_stamp(HANDLE _hFile, Stamp& _rStamp) {
    FILE_BASIC_INFO basic{};
    FILE_STANDARD_INFO standard{};
    SetLastError(0);
    if (!GetFileInformationByHandleEx(_hFile, FileBasicInfo, &basic, sizeof(basic)) ||
        !GetFileInformationByHandleEx(_hFile, FileStandardInfo, &standard, sizeof(standard))) {
        const DWORD dwError = GetLastError();
        return dwError != 0 ? dwError : ERROR_GEN_FAILURE;
    }
    _rStamp.dwAttributes = basic.FileAttributes;
    _rStamp.uSize = static_cast<std::uint64_t>(standard.EndOfFile.QuadPart);
    _rStamp.uLastWriteTime = static_cast<std::uint64_t>(basic.LastWriteTime.QuadPart);
    _rStamp.ftLastWrite.dwLowDateTime = static_cast<DWORD>(_rStamp.uLastWriteTime);
    _rStamp.ftLastWrite.dwHighDateTime = static_cast<DWORD>(_rStamp.uLastWriteTime >> 32);
    return 0;
}

DWORD UQSafeFile::mf_readStart(HANDLE _hFile, std::size_t _nMax, std::string& _rsText) {
    _rsText.assign(_nMax, '\0');
    std::size_t nRead = 0;
    while (nRead < _nMax) {
        DWORD dwChunk = 0;
        const DWORD dwWant = static_cast<DWORD>(_nMax - nRead < 65536 ? _nMax - nRead : 65536);
        SetLastError(0);
        if (!ReadFile(_hFile, &_rsText[nRead], dwWant, &dwChunk, nullptr))
            return GetLastError();
        if (dwChunk == 0)
            break;
        nRead += dwChunk;
    }
    _rsText.resize(nRead);
    return 0;
}

DWORD UQSafeFile::mf_writeAll(HANDLE _hFile, const void* _pData, std::size_t _nBytes) {
    const char* p = static_cast<const char*>(_pData);
    while (_nBytes > 0) {
        DWORD dwChunk = static_cast<DWORD>(_nBytes < (1u << 20) ? _nBytes : (1u << 20));
        // One step, so that two threads writing at once count every byte and only one of them fails.
        std::uint64_t uLeft = g_uInjectedBytesLeft.load();
        while (uLeft > 0 &&
               !g_uInjectedBytesLeft.compare_exchange_weak(uLeft, uLeft <= dwChunk ? 0 : uLeft - dwChunk)) {
        }
        if (uLeft > 0 && uLeft <= dwChunk)
            return g_dwInjectedError.load();
        DWORD dwWritten = 0;
        SetLastError(0);
        if (!WriteFile(_hFile, p, dwChunk, &dwWritten, nullptr))
            return GetLastError();
        if (dwWritten == 0)
            return ERROR_WRITE_FAULT;
        p += dwWritten;
        _nBytes -= dwWritten;
    }
    return 0;
}

DWORD UQSafeFile::mf_createNew(const std::wstring& _sAbsolute, UQFileHandle& _rHandle) {
    SetLastError(0);
    HANDLE hFile = CreateFileW(mf_long(_sAbsolute).c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0, nullptr,
                               CREATE_NEW, FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return GetLastError();
    _rHandle = UQFileHandle(hFile);
    return 0;
}

std::wstring UQSafeFile::mf_temporaryName(const std::wstring& _sTarget) {
    // A short name in the target's folder: the target's own name may already be as long as a name can be.
    const std::size_t nSlash = _sTarget.rfind(L'\\');
    const std::wstring sFolder =
        nSlash == std::wstring::npos ? std::wstring() : _sTarget.substr(0, nSlash + 1);
    return sFolder + L".kortmp-" + std::to_wstring(GetCurrentProcessId()) + L"-" +
           std::to_wstring(g_uTemporaryCounter.fetch_add(1));
}

DWORD UQSafeFile::mf_commit(HANDLE _hTemporary, const std::wstring& _sTarget, int _bReplace) {
    const std::wstring sTarget = mf_long(_sTarget);
    const std::size_t nNameBytes = sTarget.size() * sizeof(wchar_t);
    std::vector<unsigned char> buffer(offsetof(FILE_RENAME_INFO, FileName) + nNameBytes + sizeof(wchar_t));
    auto* pInfo = reinterpret_cast<FILE_RENAME_INFO*>(buffer.data());
    pInfo->ReplaceIfExists = _bReplace ? TRUE : FALSE;
    pInfo->RootDirectory = nullptr;
    pInfo->FileNameLength = static_cast<DWORD>(nNameBytes);
    std::memcpy(pInfo->FileName, sTarget.c_str(), nNameBytes + sizeof(wchar_t));
    SetLastError(0);
    if (!SetFileInformationByHandle(_hTemporary, FileRenameInfo, pInfo, static_cast<DWORD>(buffer.size())))
        return GetLastError() != 0 ? GetLastError() : ERROR_WRITE_FAULT;
    return 0;
}

DWORD UQSafeFile::mf_writeFileAtomically(const std::wstring& _sTarget, const std::string& _sContent,
                                         int _bReplace) {
    UQTemporaryFile file;
    DWORD dwError = file.mf_create(_sTarget);
    if (dwError == 0)
        dwError = mf_writeAll(file.mf_get(), _sContent.data(), _sContent.size());
    if (dwError == 0)
        dwError = file.mf_flush();
    if (dwError == 0)
        dwError = file.mf_commit(_bReplace);
    return dwError;
}

DWORD UQSafeFile::mf_createFolders(const std::wstring& _sRoot, const std::wstring& _sRelative,
                                   std::wstring& _rsReason) {
    std::wstring sPath = _sRoot;
    std::size_t nStart = 0;
    while (nStart < _sRelative.size()) {
        std::size_t nEnd = _sRelative.find(L'\\', nStart);
        if (nEnd == std::wstring::npos)
            nEnd = _sRelative.size();
        sPath += L"\\" + _sRelative.substr(nStart, nEnd - nStart);
        nStart = nEnd + 1;
        SetLastError(0);
        if (!CreateDirectoryW(mf_long(sPath).c_str(), nullptr)) {
            const DWORD dwError = GetLastError();
            if (dwError != ERROR_ALREADY_EXISTS) {
                _rsReason = L"cannot create folder '" + sPath + L"': " + mf_systemText(dwError);
                return dwError;
            }
        }
        UQFileHandle folder;
        const DWORD dwError = mf_openFolder(sPath, folder);
        if (dwError != 0) {
            _rsReason = L"cannot open folder '" + sPath + L"': " + mf_systemText(dwError);
            return dwError;
        }
        Stamp stamp;
        const std::wstring sFinal = mf_finalPath(folder.mf_get(), sPath);
        if (mf_stamp(folder.mf_get(), stamp) != 0 ||
            (stamp.dwAttributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_REPARSE_POINT)) !=
                FILE_ATTRIBUTE_DIRECTORY ||
            mf_upper(sFinal) != mf_upper(sPath)) {
            _rsReason = L"'" + sPath + L"' is a link or junction, or no folder: not followed (it leads to '" +
                        sFinal + L"')";
            return ERROR_CANT_ACCESS_FILE;
        }
    }
    return 0;
}

void UQSafeFile::mf_injectWriteFailure(std::uint64_t _uBytesLeft, DWORD _dwError) noexcept {
    g_dwInjectedError.store(_dwError);
    g_uInjectedBytesLeft.store(_uBytesLeft);
}
