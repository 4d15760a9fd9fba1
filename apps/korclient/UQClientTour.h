// The tour: korclient walks migrate -> search -> retrieve -> recall by itself on a fresh sample, through the
// same windows and messages as a user's clicks, saves a picture of every screen, checks the outcome
// against the original files and writes a summary.
#pragma once

#include <string>
#include <vector>

class UQClientTour {
public:
    struct Summary {
        int nFiles = 0;         // files of the sample
        int nMigrated = 0;      // files migrated
        int nStubs = 0;         // stubs that name a stored version that verifies
        int nVersionsFound = 0; // versions the history search found
        int nRetrieved = 0;     // files retrieved whose content equals the original
        long long nBytesRetrieved = 0;
        int nRecalled = 0;          // stubs recalled whose content equals the original
        int bPatternRemembered = 0; // the registry holds the pattern list with the tour's pattern
        std::vector<std::wstring> pictures;
        std::vector<std::wstring> failures; // one line per step that failed
    };

    // Runs the tour in _sFolder (made afresh) with _nFiles sample files; answers 0 when every step passed.
    static int mf_run(const std::wstring& _sFolder, int _nFiles, Summary& _rSummary);
    // The summary as the program prints it.
    static std::wstring mf_format(const Summary& _summary);
};
