#pragma once

#include "guibase/toolkit/UQMessageBox.h"

// A message box with a bold caption line on a highlighted band (item 10013).
class KORGUIBASE_API UQCaptionMessageBox : public UQMessageBox {
public:
    // An empty caption line becomes text 3156. Throws UQErrno::_E_::Parameter for an empty message.
    UQCaptionMessageBox(const CString& _sMessage, BUTTONS _eButtons, const CString& _sCaptionLine,
                        const CString& _sCaption);
    // The copy has a font of its own, so that each box deletes only what it made.
    UQCaptionMessageBox(const UQCaptionMessageBox& _other);
    UQCaptionMessageBox& operator=(const UQCaptionMessageBox& _other);
    ~UQCaptionMessageBox() override;

    int mf_onInitDialog(HWND _hDlg) override;
    // The band's colours: COLOR_BTNHIGHLIGHT behind item 10013; null for every other control.
    HBRUSH mf_onCtlColorStatic(WPARAM _wParam, LPARAM _lParam) override;
    // As the message box's, with template -1 meaning the caption box's own template (10011); a dialog
    // that cannot be shown is logged and answers 0, none of the RESULTs.
    RESULT mf_show(HWND _hParent, unsigned long _ulDefaultButton = 2, int _nTemplateId = -1) override;

private:
    static HFONT mf_implCreateFont();

    CString m_sCaptionLine;
    HFONT m_hFont;
};
