#pragma once

#include "interfaces/korbase.h"
#include "interfaces/korguibase_api.h"

class UQWizard;

// One page of a UQWizard: a modeless child dialog of the user's language module, created anew in the
// wizard's frame every time it is shown. An execute panel's mf_execute runs on the wizard's worker thread.
// The panel's state lives in the application's data, never in its dialog.
class KORGUIBASE_API UQWizardPanel {
public:
    // The title is loaded from _uTitleStringId; the panel is not skipped, has no window and no result.
    UQWizardPanel(UQWizard& _wizard, int _nIndex, unsigned int _uTitleStringId, unsigned int _uResourceId,
                  int _bExecutePanel);
    UQWizardPanel(const UQWizardPanel& _other) = default;
    UQWizardPanel& operator=(const UQWizardPanel&) = delete;
    virtual ~UQWizardPanel();

    // The work of an execute panel, on the worker thread: a derived panel stores its outcome with
    // mf_setExecutionResult and reports it through UQWizard::mf_onPanelExecutionResult. The base does
    // nothing.
    virtual void mf_execute();
    virtual void mf_resetExecutionResult();
    // Keeps the window and lets the wizard fill the panel (UQWizard::mf_onInitPanel); answers 1, or 0
    // after "Failure initializing '%s':\r\n%s%s" when that throws.
    virtual int mf_onInitDialog(HWND _hDlg);
    // The base handles no command: 0.
    virtual int mf_onCommand(unsigned short _usNotificationCode, unsigned short _usControlId);

    // Creates the panel's dialog in the wizard's frame at the place of the frame's placeholder (444);
    // answers 1. Failure: "Failure creating wizard panel, resource-id=%lu", _E_::Resource.
    int mf_create();

    void mf_setSkipPanel(int _bSkip);
    int mf_isSkipPanel() const;
    int mf_isExecutePanel() const;
    const UQErrnoData& mf_getExecutionResult() const;
    int mf_getIndex() const;
    const CString& mf_getTitle() const;
    UQWizard& mf_getWizard() const;
    unsigned int mf_getResourceId() const;
    HWND mf_getHandle() const;

protected:
    void mf_setExecutionResult(const UQErrnoData& _result);

private:
    int m_nIndex;
    CString m_sTitle;
    UQWizard* m_pWizard;
    int m_bSkip;
    unsigned int m_uResourceId;
    HWND m_hWnd;
    int m_bExecute;
    UQErrnoData m_executionResult;
};
