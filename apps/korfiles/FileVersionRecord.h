#pragma once

#include "interfaces/korbase.h"

#include <cstdint>

// One well-formed line of a file versions file.
struct FileVersionRecord {
    CString sPath;
    std::uint32_t uVersion = 0;
    UQFileSize size;
    UQFileTime lastWriteTime;
    // Empty when the line gives none.
    CString sResult;
    // Information when the line gives none.
    UQSeverity severity;
    // 1-based, counted in the file as it is (comments and blank lines included).
    int nLine = 0;
};
