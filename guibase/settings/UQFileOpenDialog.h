#pragma once

#include "interfaces/korbase.h"

struct IFileOpenDialog;

// The shell's item-based open dialog. COM is initialised for the thread while the object lives.
class KORGUIBASE_API UQFileOpenDialog {
public:
    // Throws UQErrno::_E_::Initialization when COM cannot be initialised and _E_::Gui when the dialog object
    // cannot be made.
    UQFileOpenDialog();
    // A copy shares the dialog object (one more reference) and initialises COM once more.
    UQFileOpenDialog(const UQFileOpenDialog& _other);
    UQFileOpenDialog& operator=(const UQFileOpenDialog& _other);
    virtual ~UQFileOpenDialog();

    // 1 when a file was chosen, 0 when cancelled; another failure throws UQErrno::_E_::Gui. The folder is
    // not used.
    int mf_show(HWND _hOwner, const CString& _sTitle, const CString& _sFolder);
    // The chosen file's path; empty, after a record, when there is none.
    CString mf_getPath();

private:
    int mf_implSetStartFolder(const CString& _sFolder);

    IFileOpenDialog* m_pDialog;
};
