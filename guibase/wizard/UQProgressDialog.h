#pragma once

#include "guibase/toolkit/UQDialogDpiLayout.h"
#include "interfaces/korbase.h"

#include <atomic>

// A modal dialog that runs the application's worker and shows its course. The worker is started when the
// dialog opens and publishes UQProgressEvent objects; the dialog shows their text (control 341), switches
// Cancel (2) on and off, and ends itself with 0 once the worker reports its end. Cancel and the [x] box trip
// the cancel switch installed into the worker; control 376 ends the dialog with 1 at once. Told of a new DPI
// (WM_DPICHANGED), the dialog takes the suggested rectangle and scales its controls and their font to it.
class KORGUIBASE_API UQProgressDialog : public UQEventListener {
public:
    // Installs the dialog's cancel switch into the worker; the worker's "Cancel switch is already set"
    // passes on. The worker is not owned and must outlive the dialog's use of it.
    UQProgressDialog(const CString& _sTitle, UQThreads& _rWorker);
    UQProgressDialog(const UQProgressDialog& _other);
    UQProgressDialog& operator=(const UQProgressDialog&) = delete;
    ~UQProgressDialog() override;

    // Called on the publishing thread.
    void mf_onEvent(const UQEvent& _event) override;
    const CString mf_toString() const override;
    virtual int mf_implOnInitDialog(HWND _hDlg);
    virtual int mf_implOnNotify(NMHDR* _pNmhdr);
    virtual int mf_implOnCommand(WPARAM _wParam, LPARAM _lParam);
    virtual void mf_implOnUpdateControls();
    // WM_DPICHANGED: the new DPI and the rectangle suggested for the dialog; answers 1.
    virtual int mf_implOnDpiChanged(UINT _uDpi, const RECT* _pSuggested);
    // Shows the dialog from the template _usTemplateId of _hInstance and answers 0 (the work ended) or 1
    // (control 376). Any other end throws UQErrno::_E_::Gui with the system error, after a record.
    virtual int mf_execute(HINSTANCE _hInstance, HWND _hParent, unsigned short _usTemplateId);

    UQCancelSwitch& mf_getCancelSwitch() noexcept { return m_cancelSwitch; }
    // The open dialog; null before it opens and after it has ended.
    HWND mf_getDialog() const noexcept { return m_hDlg.load(); }

protected:
    // For derived dialogs that register only once their own part is built.
    UQProgressDialog(const CString& _sTitle, UQThreads& _rWorker, int _bRegister);

private:
    friend INT_PTR CALLBACK f_ProgressDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

    // The end of the work on the dialog's thread: waits for the worker, then ends the dialog with 0.
    int mf_implOnWorkEnded();
    int mf_implOnClose();

    CString m_sTitle;
    UQThreads* m_pWorker;
    UQCancelSwitch m_cancelSwitch;
    std::atomic<HWND> m_hDlg;
    // Only the dialog's own thread uses it.
    UQDialogDpiLayout m_layout;
};
