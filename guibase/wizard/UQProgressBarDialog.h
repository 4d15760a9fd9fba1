#pragma once

#include "guibase/wizard/UQProgressBar.h"
#include "guibase/wizard/UQProgressDialog.h"

// A progress dialog with a percentage bar (control 336) and two counters (342, 343); its own cancel button
// is 142.
class KORGUIBASE_API UQProgressBarDialog : public UQProgressDialog {
public:
    UQProgressBarDialog(const CString& _sTitle, UQThreads& _rWorker);
    UQProgressBarDialog(const UQProgressBarDialog& _other);
    UQProgressBarDialog& operator=(const UQProgressBarDialog&) = delete;
    ~UQProgressBarDialog() override;

    void mf_onEvent(const UQEvent& _event) override;
    const CString mf_toString() const override;
    int mf_implOnInitDialog(HWND _hDlg) override;

    const UQProgressBar& mf_getProgressBar() const noexcept { return m_progressBar; }

private:
    UQProgressBar m_progressBar;
};
