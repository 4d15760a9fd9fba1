#include "kor/base/Environment.h"

#include <cstdlib>
#include <cstring>
#include <string>

#if !defined(_WIN32)
#include <pwd.h>
#include <unistd.h>

extern char** environ;
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

CString expansionVariable(const CString& _sName, bool& _rbFound) {
    _rbFound = false;
    if (_sName.IsEmpty())
        return CString();
#if defined(_WIN32)
    SetLastError(ERROR_SUCCESS);
    const DWORD n = GetEnvironmentVariableW(_sName, nullptr, 0);
    if (n == 0) {
        // An empty variable answers 0 as well, but leaves no error.
        _rbFound = GetLastError() != ERROR_ENVVAR_NOT_FOUND;
        return CString();
    }
    CString value;
    const DWORD m = GetEnvironmentVariableW(_sName, value.GetBuffer(static_cast<int>(n)), n);
    value.ReleaseBuffer(m < n ? static_cast<int>(m) : 0);
    _rbFound = m < n;
    return value;
#else
    const std::string exact = _sName.ToUtf8();
    if (const char* value = std::getenv(exact.c_str())) {
        _rbFound = true;
        return CString::FromUtf8(value);
    }
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const char* equals = std::strchr(*entry, '=');
        if (equals == nullptr)
            continue;
        const CString name =
            CString::FromUtf8(std::string(*entry, static_cast<std::size_t>(equals - *entry)));
        if (name.CompareNoCase(_sName) == 0) {
            _rbFound = true;
            return CString::FromUtf8(equals + 1);
        }
    }
    return CString();
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
