#pragma once

#include "interfaces/korbase.h"

// The part of a dialog that shows a severity icon, a heading and a message (items 30021, 1038 and 30022).
// The message box owns one; other panels embed one in their own dialogs. Icons come from the language
// module at the size the dialog's DPI asks for, and again at a new size when the dialog is told of a new
// DPI (UQDpiIcons); the dialog keeps them and destroys them with itself.
class KORGUIBASE_API UQMessagePanel {
public:
    // _ulIconSize: the icon's size at 96 DPI; 16 and 32 follow the system's small and large icon sizes.
    explicit UQMessagePanel(unsigned long _ulIconSize = 16);
    UQMessagePanel(const UQMessagePanel& _other) = default;
    UQMessagePanel& operator=(const UQMessagePanel& _other) = default;
    virtual ~UQMessagePanel();

    // Takes the language module and the three items of the dialog; answers 1.
    virtual int mf_onInitDialog(HWND _hDlg);
    // The blank icon and empty texts; the items stay visible.
    virtual void mf_hide();
    // The error's text for the user under its severity's name.
    virtual void mf_setMessage(const UQErrnoData& _data);
    virtual void mf_setMessage(const UQErrno& _error);
    // The severity's icon (none for a severity that is neither green, yellow nor red), the heading and
    // the message; items the dialog lacks are left out.
    virtual void mf_setMessage(const UVSeverity& _severity, const CString& _sHeading,
                               const CString& _sMessage);

protected:
    // The icon resource of a severity; 0 for one that is neither green, yellow nor red.
    static WORD mf_implIconOf(const UVSeverity& _severity);

private:
    void mf_implShowIcon(WORD _wIconId);

    unsigned long m_ulIconSize;
    HMODULE m_hLanguage;
    HWND m_hIcon;
    HWND m_hHeading;
    HWND m_hMessage;
};
