// Text outputs and temporary files for the korfiles tests.
#pragma once

#include "TextOutput.h"

#include "support/LogCheck.h"

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <string>

struct StringOutput : TextOutput {
    void mf_write(const std::string& s) noexcept override { text += s; }
    std::string text;
};

inline CString fromPath(const std::filesystem::path& p) {
#if defined(_WIN32)
    return CString(p.wstring());
#else
    return CString::FromUtf8(p.string());
#endif
}

// A file of the given bytes in the temporary directory, removed again at the end of the test.
class TempFile {
public:
    explicit TempFile(const std::string& content) {
        static std::atomic<int> s_counter{0};
        m_path = std::filesystem::temp_directory_path() /
                 ("korfiles-test-" + std::to_string(GetCurrentProcessId()) + "-" +
                  std::to_string(++s_counter) + ".txt");
#if defined(_WIN32)
        std::FILE* f = _wfopen(m_path.wstring().c_str(), L"wb");
#else
        std::FILE* f = std::fopen(m_path.string().c_str(), "wb");
#endif
        EXPECT_NE(nullptr, f);
        if (f != nullptr) {
            EXPECT_EQ(content.size(), std::fwrite(content.data(), 1, content.size(), f));
            std::fclose(f);
        }
    }
    TempFile(const TempFile&) = delete;
    TempFile& operator=(const TempFile&) = delete;
    ~TempFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    CString path() const {
        return fromPath(m_path);
    }
    std::string name() const {
        return utf8(path());
    }

private:
    std::filesystem::path m_path;
};
