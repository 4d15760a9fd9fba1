// The outcome of a migration, retrieval or recall as the user sees it: a UQFileList of the files with
// their result texts and severities, shown in a list view with a severity icon per file, and saved as a
// listing excerpt.
#pragma once

#include "UQFileOutcome.h"

#include <windows.h>

#include <string>
#include <vector>

class UQResultList {
public:
    // Columns and severity icons of an empty list view.
    static void mf_prepare(HWND _hList);
    // Shows the outcomes through a file list, sorted by path. Safe from a worker thread (the list view's
    // messages are sent to its own thread).
    static void mf_fill(HWND _hList, const std::vector<UQFileOutcome>& _outcomes);
    // "214 files: 210 done, 3 with warnings, 1 failed".
    static std::wstring mf_summary(const std::vector<UQFileOutcome>& _outcomes);
    // Writes the outcomes as a listing excerpt (docs/listing-format.md); 0 with nothing written on failure,
    // and _rsError says why (an outcome a listing cannot carry names its path).
    static int mf_saveListing(const std::vector<UQFileOutcome>& _outcomes, const std::wstring& _sFile,
                              std::wstring& _rsError);
};
