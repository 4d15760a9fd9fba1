#include "kor/base/Environment.h"

#include <cstdlib>

#if !defined(_WIN32)
#include <pwd.h>
#include <unistd.h>
#endif

namespace korenv {

CString variable(const wchar_t* _pszName) {
#if defined(_WIN32)
    wchar_t buffer[1024];
    const DWORD n = GetEnvironmentVariableW(_pszName, buffer, 1024);
    if (n == 0)
        return CString();
    if (n < 1024)
        return CString(buffer, static_cast<int>(n));
    CString value;
    const DWORD m = GetEnvironmentVariableW(_pszName, value.GetBuffer(static_cast<int>(n)), n);
    value.ReleaseBuffer(m < n ? static_cast<int>(m) : 0);
    return value;
#else
    const char* value = std::getenv(CString(_pszName).ToUtf8().c_str());
    return value != nullptr ? CString::FromUtf8(value) : CString();
#endif
}

#if !defined(_WIN32)
CString userDirectory(const wchar_t* _pszXdgVariable, const wchar_t* _pszHomeSubdirectory) {
    CString base = variable(_pszXdgVariable);
    if (base.IsEmpty() || base[0] != L'/') {
        base = variable(L"HOME");
        if (base.IsEmpty()) {
            const passwd* pw = ::getpwuid(::getuid());
            if (pw != nullptr && pw->pw_dir != nullptr)
                base = CString::FromUtf8(pw->pw_dir);
        }
        if (base.IsEmpty())
            base = L"/tmp";
        base.TrimRight(L'/');
        base += L'/';
        base += _pszHomeSubdirectory;
    }
    base.TrimRight(L'/');
    return base;
}
#endif

} // namespace korenv
