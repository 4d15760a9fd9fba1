#pragma once

#include "guibase/panels/UQMgmtClassWarningPanel.h"
#include "interfaces/korarchiver.h"

// Lets the user choose one of the storage server's management classes in combo box 1027 of the
// application's dialog, and shows the chosen class's description (1031), retention (1033 to 1036) and
// comment (the warning panel). The application calls mf_onInitDialog from its WM_INITDIALOG and
// mf_onUpdateDialog when the combo's selection changes. The panel owns the classes it queried.
class KORGUIBASE_API UQMgmtClassPanel {
public:
    // Throws what the warning panel's construction throws (a registry failure).
    UQMgmtClassPanel();
    UQMgmtClassPanel(const UQMgmtClassPanel&) = delete;
    UQMgmtClassPanel& operator=(const UQMgmtClassPanel&) = delete;
    virtual ~UQMgmtClassPanel();

    // Sets the labels, queries the classes (the server's default last) into the combo and selects
    // _sClassName; answers 1. Query failures are logged and the panel goes on with what it has.
    virtual int mf_onInitDialog(HWND _hDlg, const CString& _sClassName);
    // Shows the attributes and the message of the selected class. A class without one of the four
    // retention attributes throws _E_::ItemNotFound.
    virtual void mf_onUpdateDialog(HWND _hDlg);

    // The combo's text; the default class's entry answers "DEFAULT".
    CString mf_getMgmtClassName(HWND _hDlg) const;
    // Selects the first entry that begins with the name, whatever its case ("DEFAULT": the default class's
    // entry), and updates the dialog.
    void mf_setMgmtClassName(HWND _hDlg, const CString& _sClassName);
    int mf_hasMgmtClassName(const CString& _sClassName);
    // The combo text of the server's default class: "DEFAULT <...>".
    const CString& mf_getDefaultDisplayName() const noexcept { return m_sDefaultDisplayName; }

private:
    void mf_implCleanup() noexcept;

    CString m_sDefaultDisplayName;
    UQArray<UQQueryMgmtClassData*, UQQueryMgmtClassData*> m_classes;
    UQMgmtClassWarningPanel m_warningPanel;
};
