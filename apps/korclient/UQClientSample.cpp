#include "UQClientSample.h"

#include "UQSafeFile.h"
#include "UQSha256.h"

#include <vector>

int UQClientSample::mf_generate(const std::wstring& _sFolder, int _nFiles,
                                std::map<std::wstring, std::string>& _rHashes, std::wstring& _rsReason) {
    static const wchar_t* const FOLDERS[] = {
        L"Finance\\2023",   L"Finance\\2024", L"Projects\\Atlas\\Drawings", L"Projects\\Atlas\\Reports",
        L"Human Resources", L"Archive\\Old",  L"Übersicht\\Отчёты\\報告",   L"Scans"};
    static const wchar_t* const EXTENSIONS[] = {L".txt", L".docx", L".xlsx", L".pdf", L".dwg"};
    CreateDirectoryW(UQSafeFile::mf_long(_sFolder).c_str(), nullptr);
    std::wstring sLongFolder = L"Deep";
    while (sLongFolder.size() < 260)
        sLongFolder += L"\\a folder with a rather long name to make a deep path";
    std::uint64_t uState = 0x9E3779B97F4A7C15ull;
    auto next = [&] {
        uState ^= uState << 13;
        uState ^= uState >> 7;
        uState ^= uState << 17;
        return uState;
    };
    for (int i = 0; i < _nFiles; ++i) {
        std::wstring sRelative;
        if (i == 0)
            sRelative = sLongFolder + L"\\very deep file.txt";
        else if (i == 1)
            sRelative = L"Übersicht\\Отчёты\\報告\\Jahresübersicht – Σύνοψη.txt";
        else
            sRelative = std::wstring(FOLDERS[i % 8]) + L"\\file " + std::to_wstring(i) + EXTENSIONS[i % 5];
        const std::wstring sPath = _sFolder + L"\\" + sRelative;
        const std::size_t nSlash = sRelative.rfind(L'\\');
        if (UQSafeFile::mf_createFolders(_sFolder, sRelative.substr(0, nSlash), _rsReason) != 0)
            return 0;
        const std::size_t nSize =
            i % 50 == 7 ? 0 : static_cast<std::size_t>(next() % (i % 10 == 3 ? 400000 : 40000));
        std::string sContent(nSize, '\0');
        for (std::size_t n = 0; n < nSize; n += 8) {
            const std::uint64_t uWord = next();
            for (std::size_t b = 0; b < 8 && n + b < nSize; ++b)
                sContent[n + b] =
                    static_cast<char>(i % 3 == 0 ? 'a' + (uWord >> (8 * b)) % 26 : uWord >> (8 * b));
        }
        const DWORD dwError = UQSafeFile::mf_writeFileAtomically(sPath, sContent, 0);
        if (dwError != 0) {
            _rsReason = L"cannot write '" + sPath + L"': " + UQSafeFile::mf_systemText(dwError);
            return 0;
        }
        _rHashes[sRelative] = UQSha256::mf_hashHex(sContent.data(), sContent.size());
    }
    return 1;
}

std::string UQClientSample::mf_hashFile(const std::wstring& _sPath) {
    UQFileHandle file;
    if (UQSafeFile::mf_openRead(_sPath, file) != 0)
        return std::string();
    UQSha256 hash;
    std::vector<char> buffer(1 << 16);
    DWORD dwRead = 0;
    while (ReadFile(file.mf_get(), buffer.data(), static_cast<DWORD>(buffer.size()), &dwRead, nullptr) &&
           dwRead > 0)
        hash.mf_update(buffer.data(), dwRead);
    return hash.mf_finishHex();
}

void UQClientSample::mf_removeTree(const std::wstring& _sFolder) {
    WIN32_FIND_DATAW data{};
    UQFindHandle find(FindFirstFileW(UQSafeFile::mf_long(_sFolder + L"\\*").c_str(), &data));
    if (find) {
        do {
            const std::wstring sName = data.cFileName;
            if (sName == L"." || sName == L"..")
                continue;
            const std::wstring sPath = _sFolder + L"\\" + sName;
            UQFileHandle folder;
            const bool bRealFolder =
                (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) &&
                !(data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) &&
                UQSafeFile::mf_openFolder(sPath, folder) == 0 &&
                UQSafeFile::mf_isWithin(UQSafeFile::mf_finalPath(folder.mf_get(), sPath), sPath) &&
                UQSafeFile::mf_isWithin(sPath, UQSafeFile::mf_finalPath(folder.mf_get(), sPath));
            folder.mf_reset();
            if (bRealFolder) {
                mf_removeTree(sPath);
            } else {
                SetFileAttributesW(UQSafeFile::mf_long(sPath).c_str(), FILE_ATTRIBUTE_NORMAL);
                if (!DeleteFileW(UQSafeFile::mf_long(sPath).c_str()))
                    RemoveDirectoryW(UQSafeFile::mf_long(sPath).c_str());
            }
        } while (FindNextFileW(find.mf_get(), &data));
    }
    RemoveDirectoryW(UQSafeFile::mf_long(_sFolder).c_str());
}
