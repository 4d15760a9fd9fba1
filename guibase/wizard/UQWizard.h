#pragma once

#include "guibase/wizard/UQWizardCore.h"
#include "guibase/wizard/UQWizardPanel.h"

#include "interfaces/korbase.h"
#include "interfaces/korguibase_api.h"

#include <memory>
#include <vector>

// A modal wizard: a frame (template 528 of the caller's instance) with Back, Next and Cancel that shows
// its panels one at a time. Next on an execute panel wakes the "Wizard worker thread", which runs the
// panel's mf_execute; only a green result lets Next move on. The application derives its wizard and fills
// in mf_implInitPanel and mf_implReadPanel. The rules live in UQWizardCore; this class makes the window
// calls.
class KORGUIBASE_API UQWizard : public UQThreads {
public:
    // Index -1, no panels, both fonts and the task event created (a failing event: "Failure initializing
    // task event: %s", _E_::Initialization). The worker starts with the dialog.
    UQWizard();
    // Copies the handles, the index and the panel pointers as they are. Only the original releases them:
    // the copy owns nothing, so fonts, event and panels are never released twice; the copy must not
    // outlive the original.
    UQWizard(const UQWizard& _other);
    UQWizard& operator=(const UQWizard&) = delete;
    ~UQWizard() override;

    // The worker's body: waits for the task event, then executes the current panel or ends at shutdown.
    void mf_implExecute(int _nThread) override;

    // Called when a panel's dialog is initialised: fills it from the application's data.
    virtual void mf_implInitPanel(UQWizardPanel& _panel) = 0;
    // Called when the user leaves a panel (_bForward 1 for Next, 0 for Back): reads the panel into the
    // application's data and throws a UQErrno when the input is not acceptable.
    virtual void mf_implReadPanel(UQWizardPanel& _panel, int _bForward) = 0;

protected:
    // Starts the worker and shows panel 0.
    virtual void mf_implInitWizard();
    // Finishes with _nResult; an error is logged as "Failure finalizing wizard: %s".
    virtual void mf_implCancelWizard(int _nResult);
    // Stops the worker (waiting for it without time-out) and ends the dialog with _nResult.
    virtual void mf_implFinalizeWizard(int _nResult);

public:
    virtual void mf_onInitPanel(UQWizardPanel& _panel);
    // What a panel's mf_execute reports, on the caller's thread: green offers Next (or the finish), any
    // other result shows its message (caption 655) and keeps the execute label. Back is enabled again.
    virtual void mf_onPanelExecutionResult(const UQErrnoData& _result);
    // Back, Next and Cancel clicks (notification code 0); 1 when handled.
    virtual int mf_onCommand(unsigned short _usNotificationCode, unsigned short _usControlId);

    // Appends a panel, which the wizard then owns. Null: "NULL == _pPanel", _E_::Parameter.
    void mf_addPanel(UQWizardPanel* _pPanel);
    // Out of range: "Index %d out of range (0..%d)", _E_::Range; a null entry: "Panel with index %d is
    // NULL", _E_::ItemNotFound.
    UQWizardPanel& mf_getPanel(int _nIndex) const;
    UQWizardPanel& mf_getCurPanel() const;
    int mf_getPanelCount() const;
    int mf_getCurrentIndex() const;
    HWND mf_getHandle() const;
    const HFONT& mf_getTitleFont() const;
    const HFONT& mf_getMonospaceFont() const;

    // Runs the wizard as a modal dialog of _hInstance's template 528: 1 when finished, 0 when cancelled,
    // -1 when the dialog could not be shown.
    int mf_create(HINSTANCE _hInstance, HWND _hParent);
    // Titles and labels, then mf_implInitWizard; 1, or 0 after "Failure initializing configuration
    // wizard:\r\n%s%s".
    int mf_onInitDialog(HWND _hDlg);

private:
    class PanelView;

    void mf_implShowPanel(int _nIndex);
    void mf_implShowNextPanel();
    void mf_implShowPrevPanel();
    void mf_implSetItemText(int _nId, unsigned _uTextId);
    void mf_implEnableItem(int _nId, int _bEnable);

    HWND m_hDlg;
    std::vector<UQWizardPanel*> m_panels;
    std::unique_ptr<PanelView> m_pView;
    std::unique_ptr<UQWizardCore> m_pCore;
    HFONT m_hTitleFont;
    HFONT m_hMonospaceFont;
    int m_bOwner;
};
