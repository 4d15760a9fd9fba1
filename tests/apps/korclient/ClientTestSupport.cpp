#include "ClientTestSupport.h"

#include "UQClientSample.h"
#include "UQSha256.h"

#include "compat/utf8.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace clienttest {

namespace {

std::atomic<int> g_nScratch{0};

void collect(const std::wstring& _sFolder, const std::wstring& _sRelative,
             std::vector<std::wstring>& _rFiles) {
    WIN32_FIND_DATAW data{};
    const UQFindHandle find(FindFirstFileW(UQSafeFile::mf_long(_sFolder + L"\\*").c_str(), &data));
    if (!find)
        return;
    do {
        const std::wstring sName = data.cFileName;
        if (sName == L"." || sName == L"..")
            continue;
        const std::wstring sRelative = _sRelative.empty() ? sName : _sRelative + L"\\" + sName;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) &&
            !(data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT))
            collect(_sFolder + L"\\" + sName, sRelative, _rFiles);
        else
            _rFiles.push_back(sRelative);
    } while (FindNextFileW(find.mf_get(), &data));
}

} // namespace

ScratchFolder::ScratchFolder(const std::wstring& _sName) {
    wchar_t szTemp[MAX_PATH + 1] = {};
    GetTempPathW(MAX_PATH, szTemp);
    m_sPath = UQSafeFile::mf_absolute(std::wstring(szTemp) + L"korclient-" + _sName + L"-" +
                                      std::to_wstring(GetCurrentProcessId()) + L"-" +
                                      std::to_wstring(++g_nScratch));
    UQClientSample::mf_removeTree(m_sPath);
    CreateDirectoryW(UQSafeFile::mf_long(m_sPath).c_str(), nullptr);
}

ScratchFolder::~ScratchFolder() {
    UQClientSample::mf_removeTree(m_sPath);
}

std::string utf8(const std::wstring& _sText) {
    return uqfmt::wideToUtf8(_sText.data(), _sText.size());
}

bool writeFile(const std::wstring& _sPath, const std::string& _sContent) {
    const std::size_t nSlash = _sPath.rfind(L'\\');
    std::wstring sFolder = _sPath.substr(0, nSlash);
    // Every folder on the way, from the first that is missing.
    std::vector<std::wstring> missing;
    while (GetFileAttributesW(UQSafeFile::mf_long(sFolder).c_str()) == INVALID_FILE_ATTRIBUTES) {
        missing.push_back(sFolder);
        sFolder = sFolder.substr(0, sFolder.rfind(L'\\'));
    }
    for (auto it = missing.rbegin(); it != missing.rend(); ++it)
        CreateDirectoryW(UQSafeFile::mf_long(*it).c_str(), nullptr);
    const UQFileHandle file(CreateFileW(UQSafeFile::mf_long(_sPath).c_str(), GENERIC_WRITE, 0, nullptr,
                                        CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && UQSafeFile::mf_writeAll(file.mf_get(), _sContent.data(), _sContent.size()) == 0;
}

std::string readFile(const std::wstring& _sPath) {
    UQFileHandle file;
    std::string sText;
    LARGE_INTEGER size{};
    // One byte more than the size, so that a file that grows meanwhile shows.
    if (UQSafeFile::mf_openRead(_sPath, file) != 0 || !GetFileSizeEx(file.mf_get(), &size) ||
        UQSafeFile::mf_readStart(file.mf_get(), static_cast<std::size_t>(size.QuadPart) + 1, sText) != 0)
        return "<missing>";
    return sText;
}

bool exists(const std::wstring& _sPath) {
    return GetFileAttributesW(UQSafeFile::mf_long(_sPath).c_str()) != INVALID_FILE_ATTRIBUTES;
}

std::vector<std::wstring> filesBelow(const std::wstring& _sFolder) {
    std::vector<std::wstring> files;
    collect(_sFolder, std::wstring(), files);
    std::sort(files.begin(), files.end());
    return files;
}

std::string contentOf(int _nStart, std::size_t _nBytes) {
    std::string sContent(_nBytes, '\0');
    std::uint32_t uState = 2463534242u + static_cast<std::uint32_t>(_nStart) * 2654435761u;
    for (char& ch : sContent) {
        uState ^= uState << 13;
        uState ^= uState >> 17;
        uState ^= uState << 5;
        ch = static_cast<char>(uState);
    }
    return sContent;
}

UQRetrieval::Request craftVersion(UQServerDirectory& _rServer, std::uint64_t _uPosition,
                                  const std::wstring& _sName, const std::string& _sContent) {
    std::wstring sWhy;
    EXPECT_EQ(_rServer.mf_prepare(sWhy), 1) << utf8(sWhy);
    UQVersionRecord record;
    record.m_sObjectPath = L"C:\\data\\object" + std::to_wstring(_uPosition);
    record.m_sName = _sName;
    record.m_uVersion = 1;
    record.m_uSize = _sContent.size();
    record.m_sSha256 = UQSha256::mf_hashHex(_sContent.data(), _sContent.size());
    EXPECT_TRUE(writeFile(_rServer.mf_getVersionFile(UQServerDirectory::VOLUME, _uPosition),
                          record.mf_formatHeader() + _sContent));
    UQRetrieval::Request request;
    request.sObjectPath = record.m_sObjectPath;
    request.uVersion = 1;
    request.uVolume = UQServerDirectory::VOLUME;
    request.uPosition = _uPosition;
    return request;
}

UQFileOutcome outcomeOf(const std::vector<UQFileOutcome>& _outcomes, const std::wstring& _sPath) {
    for (const UQFileOutcome& outcome : _outcomes)
        if (outcome.sPath == _sPath)
            return outcome;
    return UQFileOutcome();
}

namespace {

// A path as Wine's Linux side sees it; empty outside Wine. Wine allocates it on the process heap.
std::string unixPathOf(const std::wstring& _sPath) {
    using UnixFileName = char*(CDECL*)(LPCWSTR);
    const auto toUnix = reinterpret_cast<UnixFileName>(reinterpret_cast<void*>(
        GetProcAddress(GetModuleHandleW(L"kernel32.dll"), "wine_get_unix_file_name")));
    if (toUnix == nullptr)
        return std::string();
    char* pszUnix = toUnix(_sPath.c_str());
    if (pszUnix == nullptr)
        return std::string();
    std::string sUnix(pszUnix);
    HeapFree(GetProcessHeap(), 0, pszUnix);
    return sUnix;
}

} // namespace

namespace {

// Runs a Linux program with _sArguments under Wine, and waits (a limited time) until _until() holds: Wine
// starts a Linux program as it starts a Windows one, but its exit code does not come back.
template <class CONDITION>
bool runLinuxProgram(const wchar_t* _sProgram, std::wstring _sArguments, CONDITION _until) {
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (!CreateProcessW(_sProgram, _sArguments.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                        &process))
        return false;
    const UQProcessHandle child(process.hProcess);
    const UQProcessHandle thread(process.hThread);
    for (int i = 0; i < 200; ++i) {
        if (_until())
            return true;
        Sleep(50);
    }
    return false;
}

std::wstring quoted(const std::string& _sUnixPath) {
    return L"\"" + uqfmt::utf8ToWide(_sUnixPath.data(), _sUnixPath.size()) + L"\"";
}

bool linkExists(const std::wstring& _sLink) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    return GetFileAttributesExW(_sLink.c_str(), GetFileExInfoStandard, &data) != 0;
}

} // namespace

bool plantSymbolicLink(const std::wstring& _sTarget, const std::wstring& _sLink, bool _bFolder) {
    const std::string sTarget = unixPathOf(_sTarget);
    const std::string sLink = unixPathOf(_sLink);
    if (sTarget.empty() || sLink.empty())
        return CreateSymbolicLinkW(_sLink.c_str(), _sTarget.c_str(),
                                   _bFolder ? SYMBOLIC_LINK_FLAG_DIRECTORY : 0) &&
               linkExists(_sLink);
    // -T: a name that exists already is an error, never a folder to put the link into.
    if (linkExists(_sLink))
        return false;
    return runLinuxProgram(L"Z:\\bin\\ln", L"ln -s -T " + quoted(sTarget) + L" " + quoted(sLink),
                           [&] { return linkExists(_sLink); });
}

bool removeSymbolicLink(const std::wstring& _sLink) {
    const std::string sLink = unixPathOf(_sLink);
    // Wine removes neither a Linux folder link (DeleteFileW) nor through it (RemoveDirectoryW).
    if (sLink.empty())
        return DeleteFileW(_sLink.c_str()) || RemoveDirectoryW(_sLink.c_str());
    return runLinuxProgram(L"Z:\\bin\\rm", L"rm -f -- " + quoted(sLink), [&] { return !linkExists(_sLink); });
}

} // namespace clienttest
