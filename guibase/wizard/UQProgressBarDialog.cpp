#include "guibase/wizard/UQProgressBarDialog.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQWindow.h"
#include "interfaces/korutil.h"

namespace {

const int ITEM_BAR = 336;
const int ITEM_CURRENT = 342;
const int ITEM_TOTAL = 343;
const int ITEM_CANCEL = 142;

} // namespace

UQProgressBarDialog::UQProgressBarDialog(const CString& _sTitle, UQThreads& _rWorker)
    : UQProgressDialog(_sTitle, _rWorker, 0) {
    mf_register();
}

UQProgressBarDialog::UQProgressBarDialog(const UQProgressBarDialog& _other)
    : UQProgressDialog(_other), m_progressBar(_other.m_progressBar) {}

UQProgressBarDialog::~UQProgressBarDialog() {
    mf_unregister();
}

const CString UQProgressBarDialog::mf_toString() const {
    return L"progress-bar-dialog";
}

void UQProgressBarDialog::mf_onEvent(const UQEvent& _event) {
    static const wchar_t* const _sFunction_ = L"UQProgressBarDialog::mf_onEvent";
    try {
        UQProgressDialog::mf_onEvent(_event);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure calling UQProgressDialog::mf_onEvent:\r\n%s%s", UQLog::TAB,
                         e.mf_toString());
    }
    const UQProgressEvent* pEvent = dynamic_cast<const UQProgressEvent*>(&_event);
    if (pEvent == nullptr)
        return;
    const HWND hDlg = mf_getDialog();
    const std::uint32_t uAction = pEvent->mf_getAction();
    switch (uAction) {
    case UQProgressEvent::ACTION_PROGRESS:
        if (hDlg == nullptr)
            break;
        UQWindow::mf_setItemText(hDlg, ITEM_CURRENT,
                                 UQNumberFormatter::mf_formatNumber(pEvent->mf_getCurObjects()));
        UQWindow::mf_setItemText(hDlg, ITEM_TOTAL,
                                 UQNumberFormatter::mf_formatNumber(pEvent->mf_getTotalObjects()));
        m_progressBar.mf_setProgress(pEvent->mf_calcCurDataPercent());
        break;
    case UQProgressEvent::ACTION_START:
    case UQProgressEvent::ACTION_END:
        break;
    case UQProgressEvent::ACTION_ENABLE_CANCEL:
    case UQProgressEvent::ACTION_DISABLE_CANCEL:
        if (hDlg != nullptr)
            UQWindow::mf_enableItem(hDlg, ITEM_CANCEL,
                                    uAction == UQProgressEvent::ACTION_ENABLE_CANCEL ? 1 : 0);
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_D, _sFunction_, L"Unexpected progress-event action: %d",
                         static_cast<int>(uAction));
        break;
    }
}

int UQProgressBarDialog::mf_implOnInitDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQProgressBarDialog::mf_implOnInitDialog";
    try {
        UQWindow::mf_setItemText(_hDlg, ITEM_CURRENT, CString());
        UQWindow::mf_setItemText(_hDlg, ITEM_TOTAL, CString());
        // A missing bar is only logged by the lookup.
        HWND hBar = UQWindow::mf_getItem(_hDlg, ITEM_BAR);
        if (hBar != nullptr)
            m_progressBar.mf_setProgressBar(hBar);
        m_progressBar.mf_setProgress(0);
        UQProgressDialog::mf_implOnInitDialog(_hDlg);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure initializing progress-bar-dialog:\r\n%s%s", UQLog::TAB, e.mf_toString());
    }
    return 0;
}
