// What happened to one file of a migration, retrieval or recall: the line the user reads in the result
// list and the log.
#pragma once

#include <cstdint>
#include <string>

struct UQFileOutcome {
    enum SEVERITY { GREEN = 0, YELLOW = 1, RED = 2 };

    std::wstring sPath;   // the file on the client (or, for a refused server name, that name)
    std::wstring sResult; // "Migrated", "Retrieved", or what went wrong and why
    SEVERITY eSeverity = GREEN;
    std::uint32_t uVersion = 0;
    std::uint64_t uSize = 0;
    std::uint64_t uLastWriteTime = 0; // file time of the content
};
