#include "interfaces/korutil.h"

#include <cstdlib>
#include <string>

#if defined(_WIN32)
#include <vector>
#else
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

namespace {

#if defined(_WIN32)
CString variable(const wchar_t* _pszName) {
    const DWORD dwSize = GetEnvironmentVariableW(_pszName, nullptr, 0);
    if (dwSize == 0)
        return CString();
    std::vector<wchar_t> buffer(dwSize, L'\0');
    GetEnvironmentVariableW(_pszName, buffer.data(), dwSize);
    return CString(buffer.data());
}

void createFolders(const CString& _sPath) {
    for (int i = 3; i <= _sPath.GetLength(); ++i) {
        if (i == _sPath.GetLength() || _sPath[i] == L'\\' || _sPath[i] == L'/')
            CreateDirectoryW(_sPath.Left(i), nullptr);
    }
}
#else
CString variable(const char* _pszName) {
    const char* pszValue = std::getenv(_pszName);
    return pszValue != nullptr ? CString::FromUtf8(pszValue) : CString();
}

CString homeFolder() {
    CString sHome = variable("HOME");
    if (sHome.IsEmpty()) {
        const passwd* pEntry = getpwuid(getuid());
        sHome = pEntry != nullptr && pEntry->pw_dir != nullptr ? CString::FromUtf8(pEntry->pw_dir)
                                                               : CString(L"/tmp");
    }
    return sHome;
}

void createFolders(const CString& _sPath) {
    const std::string path = _sPath.ToUtf8();
    for (std::size_t i = 1; i <= path.size(); ++i) {
        if (i == path.size() || path[i] == '/')
            mkdir(path.substr(0, i).c_str(), 0700);
    }
}
#endif

CString withoutTrailingSeparator(CString _sPath) {
    while (_sPath.GetLength() > 1 && (_sPath.Right(1) == L"\\" || _sPath.Right(1) == L"/"))
        _sPath = _sPath.Left(_sPath.GetLength() - 1);
    return _sPath;
}

} // namespace

CString UQMain::mf_getSupportPath() {
#if defined(_WIN32)
    CString sPath = variable(L"KOR_SUPPORT_DIR");
    if (sPath.IsEmpty())
        sPath = variable(L"LOCALAPPDATA") + L"\\Corvex\\Stormex\\Support";
#else
    CString sPath = variable("KOR_SUPPORT_DIR");
    if (sPath.IsEmpty()) {
        CString sData = variable("XDG_DATA_HOME");
        // The XDG rules ignore a relative directory.
        if (sData.IsEmpty() || sData[0] != L'/')
            sData = homeFolder() + L"/.local/share";
        sPath = sData + L"/korguibase/support";
    }
#endif
    sPath = withoutTrailingSeparator(sPath);
    createFolders(sPath);
    return sPath;
}
