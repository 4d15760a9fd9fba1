#pragma once

#include "interfaces/korbase.h"

// An informational text with a check box for not showing it again. The user's choice is kept per box as
// a number under its registry value name in HKEY_CURRENT_USER: 1 show, 0 never show again; a missing
// value means show.
class KORGUIBASE_API UQInformationBox {
public:
    UQInformationBox(const CString& _sTitle, const CString& _sText1, const CString& _sText2,
                     const CString& _sRegistryValueName);
    UQInformationBox(const UQInformationBox& _other) = default;
    UQInformationBox& operator=(const UQInformationBox& _other) = default;
    virtual ~UQInformationBox();

    virtual int mf_onInitDialog(HWND _hDlg);
    // Shows the box unless the user has switched it off; a dialog that cannot be shown is not reported.
    virtual void mf_show(HWND _hParent);

private:
    friend INT_PTR CALLBACK f_InformationBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

    int mf_implIsEnabled() const;
    void mf_implSetEnabled(int _bEnabled);
    void mf_implOnExit();

    CString m_sTitle;
    CString m_sText1;
    CString m_sText2;
    CString m_sRegistryValueName;
    HWND m_hDlg;
};
