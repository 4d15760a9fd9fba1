#pragma once

#include "interfaces/korbase.h"

#include <ctime>

// The shell's pickers for folders, files, backup option files and listing excerpt files. Every picker
// initialises COM for the calling thread and leaves it again; none throws for a dialog that was cancelled
// or failed: it answers 0.
class KORGUIBASE_API UQGuiBrowseDialog {
public:
    UQGuiBrowseDialog() noexcept = default;
    UQGuiBrowseDialog(const UQGuiBrowseDialog&) noexcept = default;
    UQGuiBrowseDialog& operator=(const UQGuiBrowseDialog&) noexcept = default;
    ~UQGuiBrowseDialog() = default;

    // A folder below _sRoot (the computer when empty), starting at _rsPath; 1 with the normalised folder
    // in _rsPath, else 0 with _rsPath as it was.
    static int mf_browseFolders(HWND _hOwner, const CString& _sTitle, const CString& _sPrompt,
                                const CString& _sRoot, CString& _rsPath);
    // A file below _sRoot, with an edit box when _bEditBox is set; 1 with the file in _rsPath, else 0 with
    // _rsPath as it was.
    static int mf_browseFiles(HWND _hOwner, const CString& _sTitle, const CString& _sPrompt,
                              const CString& _sRoot, int _bEditBox, CString& _rsPath);
    // An existing backup option file, starting from the default option file; 1 with the file, else 0 with
    // an empty _rsPath.
    static int mf_browseOptionFiles(HWND _hOwner, CString& _rsPath);
    // A file to save a listing excerpt in, proposed as "<base>-<local time>.lxf" in the support folder; a
    // name without an extension gets ".lxf". 1 with the file, else 0 with an empty _rsPath.
    static int mf_browseListingExcerptFiles(HWND _hOwner, const CString& _sBaseName, CString& _rsPath);
    // The same at a given time (the clock of the proposal).
    static int mf_browseListingExcerptFiles(HWND _hOwner, const CString& _sBaseName, CString& _rsPath,
                                            std::time_t _tNow);
    // "<base>-<%Y%m%d-%H%M%S of _tNow in local time>.lxf"; the base name is taken as text.
    static CString mf_getListingExcerptName(const CString& _sBaseName, std::time_t _tNow);

private:
    static int mf_implBrowse(HWND _hOwner, const CString& _sTitle, const CString& _sPrompt,
                             const CString& _sRoot, int _bEditBox, int _bFiles, CString& _rsPath);
};
