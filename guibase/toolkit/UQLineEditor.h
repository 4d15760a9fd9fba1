#pragma once

#include "interfaces/korbase.h"

// Asks the user for one line of text. OK is enabled only while the line is not empty.
class KORGUIBASE_API UQLineEditor {
public:
    UQLineEditor(const CString& _sTitle, const CString& _sLabel);
    UQLineEditor(const UQLineEditor& _other) = default;
    UQLineEditor& operator=(const UQLineEditor& _other) = default;
    virtual ~UQLineEditor();

    // The text shown when the dialog opens, fully selected when _nSelect is above 0.
    void mf_setText(const CString& _sText, int _nSelect);
    // After OK the text entered; otherwise the text given.
    CString mf_getText() const;
    // 1 when the dialog ended with OK or the [x] box, 0 when cancelled. Throws UQErrno::_E_::Gui when the
    // dialog cannot be created.
    int mf_show(HWND _hParent);

private:
    friend INT_PTR CALLBACK f_LineEditorDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam,
                                                       LPARAM _lParam);

    int mf_implOnInitDialog(HWND _hDlg);
    int mf_implOnCommand(WPARAM _wParam, LPARAM _lParam);
    void mf_implOnUpdateControls();

    HWND m_hDlg;
    HWND m_hEdit;
    CString m_sTitle;
    CString m_sLabel;
    CString m_sText;
    int m_nSelect;
};
