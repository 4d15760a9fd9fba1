#pragma once

#include "interfaces/korbase.h"

// The part of a dialog that shows a severity icon, a heading and a message (items 30021, 1038 and 30022).
// The message box owns one; other panels embed one in their own dialogs. Icons come from the language
// module and are loaded once per panel, on first use.
class KORGUIBASE_API UQMessagePanel {
public:
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
    HICON mf_implLoadIcon(const UVSeverity& _severity);

private:
    HICON mf_implLoadCached(HICON& _rhIcon, WORD _wIconId);

    unsigned long m_ulIconSize;
    HMODULE m_hLanguage;
    // Loaded with LR_SHARED: the system owns them and frees them with the language module, so copies
    // of a panel may share the handles.
    HICON m_hBlankIcon;
    HICON m_hGreenIcon;
    HICON m_hYellowIcon;
    HICON m_hRedIcon;
    HWND m_hIcon;
    HWND m_hHeading;
    HWND m_hMessage;
};
