#pragma once

#include "guibase/toolkit/UQMessagePanel.h"

// The library's own modal message box: a caption, a severity icon, a heading, a message and none, one or
// two buttons. The template, the icons and the button texts come from the language module.
class KORGUIBASE_API UQMessageBox {
public:
    enum BUTTONS { BUTTONS_NONE = 0, BUTTONS_SINGLE = 1, BUTTONS_YES_NO = 2 };
    enum RESULT { RESULT_YES = 1, RESULT_NO = 2, RESULT_CANCEL = 3 };

    // An empty caption becomes text 786. The default button is 2 until mf_show sets it.
    UQMessageBox(const CString& _sMessage, const UVSeverity& _severity, BUTTONS _eButtons,
                 const CString& _sCaption);
    UQMessageBox(const CString& _sMessage, BUTTONS _eButtons, const CString& _sCaption);
    // The error's text for the user, its severity and one button.
    UQMessageBox(const UQErrnoData& _data, const CString& _sCaption);
    UQMessageBox(const UQMessageBox& _other) = default;
    UQMessageBox& operator=(const UQMessageBox& _other) = default;
    virtual ~UQMessageBox();

    virtual int mf_onInitDialog(HWND _hDlg);
    virtual int mf_onCommand(WPARAM _wParam, LPARAM _lParam);
    // The plain box colours nothing: null.
    virtual HBRUSH mf_onCtlColorStatic(WPARAM _wParam, LPARAM _lParam);
    // Shows the box modally and answers how it ended. A template id of -1 chooses 10009 for a green
    // severity and 10025 otherwise. Throws UQErrno::_E_::Gui when the dialog cannot be created.
    virtual RESULT mf_show(HWND _hParent, unsigned long _ulDefaultButton = 2, int _nTemplateId = -1);

    // While the box is shown: another text in the message item (the stored message stays), the stored
    // message back, buttons enabled or disabled, and the focus moved to button 1 or 2.
    void mf_setMessage(const CString& _sMessage);
    void mf_resetMessage();
    void mf_enableButtons(int _bEnable);
    void mf_selectButton(unsigned long _ulButton);

private:
    friend INT_PTR CALLBACK f_UQMessageBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

    int mf_implFocusButton(unsigned long _ulButton);

    CString m_sCaption;
    UQSeverity m_severity;
    CString m_sMessage;
    BUTTONS m_eButtons;
    unsigned long m_ulDefaultButton;
    HWND m_hDlg;
    UQMessagePanel m_panel;
};
