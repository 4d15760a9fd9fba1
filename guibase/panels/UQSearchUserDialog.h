#pragma once

#include "guibase/panels/UQPageData.h"

#include <commctrl.h>

// Lets the user pick one user account of the local computer or of a domain controller. One page per
// authority keeps its users, the filter typed for it and the users that pass the filter; an authority is
// queried only when the user asks for the list, and afresh each time. The authority last used is kept in
// the user's registry value "SearchUserAuthority". The same code serves the quota property page of the
// product, hence the "UQQuotaPanel::..." names of some records and the property-sheet notifications.
class KORGUIBASE_API UQSearchUserDialog {
public:
    UQSearchUserDialog();
    UQSearchUserDialog(const UQSearchUserDialog&) = delete;
    UQSearchUserDialog& operator=(const UQSearchUserDialog&) = delete;
    virtual ~UQSearchUserDialog();

    // Modal (template 10054); 1 when a user was chosen, 0 otherwise. Throws UQErrno::_E_::Gui when the
    // dialog cannot be created.
    int mf_show(HWND _hParent);
    // The chosen user and its authority; they live as long as this object (the authority as long as the
    // process).
    const UQUser* mf_getResultUser() const noexcept { return m_pResultUser; }
    const UQSidAuthority* mf_getResultAuthority() const noexcept { return m_pResultAuthority; }

protected:
    virtual void mf_implSort();
    virtual void mf_implOnSortColumn(NMLISTVIEW* _pNmListView, int _nValue);
    virtual void mf_implOnToolTip(NMLVGETINFOTIPW* _pToolTip);
    virtual int mf_implOnInitDialog(HWND _hDlg);
    virtual int mf_implOnCommand(unsigned short _uNotificationCode, unsigned short _uControlId);
    virtual void mf_implCreateSidArray(UQSidAuthority& _rAuthority, UQArray<UQSid*, UQSid*>& _rUsers);

    void mf_implDisplaySid(int _nIndex, const UQSid* _pSid);
    void mf_implDisplayStartMessage(const CString& _sText);
    void mf_implFilterSidList(UQPageData& _rPage);
    int mf_implHasSids() const;
    void mf_implInitializePage(int _nPage);
    void mf_implOnUpdateAuthority();
    void mf_implOnUpdateControls();
    void mf_implOnUpdateList();
    int mf_implSetResults();
    void mf_implStoreFilterSettings(UQPageData& _rPage);
    void mf_implRestoreFilterSettings(UQPageData& _rPage);
    void mf_implStoreRegistrySettings(UQPageData& _rPage);
    CString mf_implRestoreRegistrySettings();

private:
    friend INT_PTR CALLBACK f_SearchUserDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam,
                                                       LPARAM _lParam);

    // The guidance shown over a list that has not been listed yet.
    static CString mf_implStartText();
    int mf_implIsListingFocus() const;
    void mf_implSortItems(int _bAscending);

    HWND m_hDlg;
    HWND m_hStartMessage;
    HWND m_hAuthorityCombo;
    HWND m_hUserList;
    HWND m_hFilterEdit;
    HWND m_hListButton;
    int m_nCurrentPage;
    UQArray<UQPageData*, UQPageData*> m_apPages;
    const UQUser* m_pResultUser;
    const UQSidAuthority* m_pResultAuthority;
};
