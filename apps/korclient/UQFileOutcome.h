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

    static UQFileOutcome mf_of(const std::wstring& _sPath, SEVERITY _eSeverity,
                               const std::wstring& _sResult) {
        UQFileOutcome result;
        result.sPath = _sPath;
        result.eSeverity = _eSeverity;
        result.sResult = _sResult;
        return result;
    }
    // Logs the outcome under _pszFunction: a trace for a green one, a warning otherwise.
    void mf_log(const wchar_t* _pszFunction) const;
};
