// A scratch file (or folder) in the temporary directory, named per process so that parallel runs do not
// meet; removed again.
#pragma once

#include "interfaces/korbase.h"

#include <filesystem>
#include <fstream>
#include <string>

class ScratchFile {
public:
    // The name in UTF-8, so that it means the same on both targets.
    ScratchFile(const std::string& _utf8Name, const std::string& _bytes)
        : m_path(std::filesystem::temp_directory_path() /
                 std::filesystem::u8path(std::to_string(GetCurrentProcessId()) + "-" + _utf8Name)) {
        std::ofstream out(m_path, std::ios::binary);
        out << _bytes;
    }
    // A folder of that name.
    explicit ScratchFile(const std::string& _utf8Name)
        : m_path(std::filesystem::temp_directory_path() /
                 std::filesystem::u8path(std::to_string(GetCurrentProcessId()) + "-" + _utf8Name)) {
        std::filesystem::create_directories(m_path);
    }
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    CString mf_getPath() const { return CString::FromUtf8(m_path.u8string()); }

private:
    std::filesystem::path m_path;
};
