// Scratch directories, whole-file reads and environment overrides for the korbase tests.
#pragma once

#include "interfaces/korbase.h"
#include "support/TestTime.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace basetest {

namespace fs = std::filesystem;

// A product path (backslashes count as separators on native too) as a file-system path.
inline fs::path fsPath(const CString& path) {
#if defined(_WIN32)
    return fs::path(std::wstring(path.GetString()));
#else
    CString local(path);
    local.Replace(L'\\', L'/');
    return fs::u8path(local.ToUtf8());
#endif
}

inline CString productPath(const fs::path& path) {
#if defined(_WIN32)
    return CString(path.wstring().c_str());
#else
    return CString::FromUtf8(path.u8string());
#endif
}

// A fresh directory for one test, removed with everything in it at the end.
class ScratchDirectory {
public:
    explicit ScratchDirectory(const std::string& name) {
        m_path = fs::temp_directory_path() /
                 fs::u8path("korbase-" + std::to_string(GetCurrentProcessId()) + "-" + name);
        std::error_code ec;
        fs::remove_all(m_path, ec);
        fs::create_directories(m_path);
    }
    ~ScratchDirectory() {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    CString path() const { return productPath(m_path); }
    // A name below the directory, joined with the platform's separator.
    CString child(const wchar_t* relative) const { return productPath(m_path / fsPath(CString(relative))); }

private:
    fs::path m_path;
};

inline bool exists(const CString& path) {
    std::error_code ec;
    return fs::exists(fsPath(path), ec);
}

inline std::string readFile(const CString& path) {
#if defined(_WIN32)
    std::FILE* f = _wfopen(path, L"rb");
#else
    std::FILE* f = std::fopen(fsPath(path).c_str(), "rb");
#endif
    std::string bytes;
    if (f == nullptr)
        return "<missing>";
    char buffer[4096];
    std::size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
        bytes.append(buffer, n);
    std::fclose(f);
    return bytes;
}

inline void writeFile(const CString& path, const std::string& bytes) {
#if defined(_WIN32)
    std::FILE* f = _wfopen(path, L"wb");
#else
    std::FILE* f = std::fopen(fsPath(path).c_str(), "wb");
#endif
    ASSERT_NE(f, nullptr) << path.ToUtf8();
    std::fwrite(bytes.data(), 1, bytes.size(), f);
    std::fclose(f);
}

// Sets or removes an environment variable and puts the old value back at the end of the scope.
class EnvironmentOverride {
public:
    EnvironmentOverride(const wchar_t* name, const wchar_t* value) : m_sName(name) {
        m_bHadValue = get(name, m_sOld);
        set(name, value);
    }
    ~EnvironmentOverride() { set(m_sName, m_bHadValue ? m_sOld.GetString() : nullptr); }
    EnvironmentOverride(const EnvironmentOverride&) = delete;
    EnvironmentOverride& operator=(const EnvironmentOverride&) = delete;

private:
    static bool get(const wchar_t* name, CString& value) {
#if defined(_WIN32)
        const DWORD n = GetEnvironmentVariableW(name, nullptr, 0);
        if (n == 0)
            return false;
        GetEnvironmentVariableW(name, value.GetBuffer(static_cast<int>(n)), n);
        value.ReleaseBuffer();
        return true;
#else
        const char* v = std::getenv(CString(name).ToUtf8().c_str());
        if (v == nullptr)
            return false;
        value = CString::FromUtf8(v);
        return true;
#endif
    }
    static void set(const wchar_t* name, const wchar_t* value) {
#if defined(_WIN32)
        SetEnvironmentVariableW(name, value);
#else
        const std::string n = CString(name).ToUtf8();
        if (value == nullptr)
            ::unsetenv(n.c_str());
        else
            ::setenv(n.c_str(), CString(value).ToUtf8().c_str(), 1);
#endif
    }

    CString m_sName;
    CString m_sOld;
    bool m_bHadValue;
};

} // namespace basetest
