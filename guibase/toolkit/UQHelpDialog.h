#pragma once

#include "interfaces/korbase.h"

// A help text with the information icon and a close button.
class KORGUIBASE_API UQHelpDialog {
public:
    UQHelpDialog(const CString& _sTitle, const CString& _sHelpText);
    // The GDI object is not copied: it belongs to the dialog that set it.
    UQHelpDialog(const UQHelpDialog& _other);
    UQHelpDialog& operator=(const UQHelpDialog& _other);
    virtual ~UQHelpDialog();

    virtual int mf_onInitDialog(HWND _hDlg);
    virtual int mf_onCommand(WPARAM _wParam, LPARAM _lParam);
    // No colouring: null.
    virtual HBRUSH mf_onCtlColorStatic(WPARAM _wParam, LPARAM _lParam);
    // Throws UQErrno::_E_::Gui when the dialog cannot be created.
    virtual void mf_show(HWND _hParent);

private:
    friend INT_PTR CALLBACK f_UQHelpDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

    CString m_sTitle;
    CString m_sHelpText;

protected:
    // A GDI object a derived dialog may set; deleted with the dialog.
    HGDIOBJ m_hGdiObject;

private:
    HWND m_hDlg;
    HMODULE m_hLanguage;
};
