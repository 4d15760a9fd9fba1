#include "guibase/wizard/UQProgressDialog.h"

#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQToolkitReport.h"
#include "guibase/toolkit/UQWindow.h"
#include "interfaces/korutil.h"

#include <commctrl.h>

// The dialog callback; a friend of the class, defined below.
INT_PTR CALLBACK f_ProgressDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

const int ITEM_STATUS = 341;
const int ITEM_CLOSE = 376;
const UINT MSG_WORK_ENDED = WM_USER + 1;

// The worker is waited for in slices, taking in the messages its thread sends in between.
const unsigned long WAIT_SLICE_MS = 2;

// Shared by every message on purpose: the text names the message it was first written for.
const wchar_t* const NO_USER_DATA = L"No user data pointer in call WM_COMMAND";

} // namespace

UQProgressDialog::UQProgressDialog(const CString& _sTitle, UQThreads& _rWorker)
    : UQProgressDialog(_sTitle, _rWorker, 1) {}

UQProgressDialog::UQProgressDialog(const CString& _sTitle, UQThreads& _rWorker, int _bRegister)
    : UQEventListener(UQEVENT_ID_PROGRESS, 0), m_sTitle(_sTitle), m_pWorker(&_rWorker), m_hDlg(nullptr) {
    m_pWorker->mf_installCancelSwitch(&m_cancelSwitch);
    // Registered last, so that no event of a worker already publishing reaches a half-built dialog.
    if (_bRegister)
        mf_register();
}

UQProgressDialog::UQProgressDialog(const UQProgressDialog& _other)
    : UQEventListener(_other), m_sTitle(_other.m_sTitle), m_pWorker(_other.m_pWorker),
      m_cancelSwitch(_other.m_cancelSwitch), m_hDlg(_other.m_hDlg.load()), m_layout(_other.m_layout) {}

UQProgressDialog::~UQProgressDialog() {
    mf_unregister();
}

const CString UQProgressDialog::mf_toString() const {
    return L"progress-dialog";
}

void UQProgressDialog::mf_onEvent(const UQEvent& _event) {
    static const wchar_t* const _sFunction_ = L"UQProgressDialog::mf_onEvent";
    const UQProgressEvent* pEvent = dynamic_cast<const UQProgressEvent*>(&_event);
    if (pEvent == nullptr)
        return;
    // Before the dialog opens and after it has ended there are no controls to update.
    const HWND hDlg = m_hDlg.load();
    const std::uint32_t uAction = pEvent->mf_getAction();
    switch (uAction) {
    case UQProgressEvent::ACTION_PROGRESS:
        if (hDlg != nullptr && UQWindow::mf_hasItem(hDlg, ITEM_STATUS))
            UQWindow::mf_setItemText(hDlg, ITEM_STATUS, pEvent->mf_getText());
        break;
    case UQProgressEvent::ACTION_START:
        break;
    case UQProgressEvent::ACTION_END:
        // The first half of the end: the dialog's own thread waits for the worker and ends the dialog.
        try {
            m_pWorker->mf_stop();
            if (hDlg != nullptr) {
                SetLastError(0);
                if (!PostMessageW(hDlg, MSG_WORK_ENDED, 0, 0))
                    throw UQToolkitReport::mf_systemError(UQErrno::_E_::Gui);
            }
        } catch (const UQErrno& e) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                             L"Failure stopping/waiting for thread to terminate:\r\n%s%s", UQLog::TAB,
                             e.mf_toString());
        }
        break;
    case UQProgressEvent::ACTION_ENABLE_CANCEL:
    case UQProgressEvent::ACTION_DISABLE_CANCEL:
        if (hDlg != nullptr && UQWindow::mf_hasItem(hDlg, IDCANCEL))
            UQWindow::mf_enableItem(hDlg, IDCANCEL, uAction == UQProgressEvent::ACTION_ENABLE_CANCEL ? 1 : 0);
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_D, _sFunction_, L"Unexpected progress-event action: %d",
                         static_cast<int>(uAction));
        break;
    }
}

int UQProgressDialog::mf_implOnInitDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQProgressDialog::mf_implOnInitDialog";
    m_hDlg.store(_hDlg);
    SetWindowTextW(_hDlg, m_sTitle);
    try {
        m_pWorker->mf_start();
    } catch (const UQErrno& e) {
        // The dialog stays open: the user closes it with 376.
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure starting threads:\r\n%s%s", UQLog::TAB,
                         e.mf_toString());
    }
    // The keyboard starts on Cancel, the default button, not on the first button in tab order.
    HWND hCancel = GetDlgItem(_hDlg, IDCANCEL);
    if (hCancel == nullptr)
        hCancel = GetDlgItem(_hDlg, 142);
    if (hCancel != nullptr)
        SetFocus(hCancel);
    m_layout.mf_capture(_hDlg);
    return 0;
}

int UQProgressDialog::mf_implOnDpiChanged(UINT _uDpi, const RECT* _pSuggested) {
    m_layout.mf_apply(_uDpi, _pSuggested);
    return 1;
}

int UQProgressDialog::mf_implOnNotify(NMHDR*) {
    return 1;
}

int UQProgressDialog::mf_implOnCommand(WPARAM _wParam, LPARAM) {
    switch (LOWORD(_wParam)) {
    case IDCANCEL:
    case 142:
        // The dialog stays until the worker has noticed and reports its end.
        m_cancelSwitch.mf_implTryCancel(UQErrnoData(UQErrno::_W_::UserCanceled));
        return 1;
    default:
        return 0;
    }
}

void UQProgressDialog::mf_implOnUpdateControls() {}

int UQProgressDialog::mf_execute(HINSTANCE _hInstance, HWND _hParent, unsigned short _usTemplateId) {
    static const wchar_t* const _sFunction_ = L"UQProgressDialog::mf_execute";
    SetLastError(0);
    const INT_PTR nResult = DialogBoxParamW(_hInstance, MAKEINTRESOURCEW(_usTemplateId), _hParent,
                                            f_ProgressDialogCallback, reinterpret_cast<LPARAM>(this));
    m_hDlg.store(nullptr);
    // The dialog and its controls are gone: the fonts made for another DPI can go too.
    m_layout.mf_release();
    if (nResult == 0 || nResult == 1)
        return static_cast<int>(nResult);
    const UQErrno error = UQToolkitReport::mf_systemError(UQErrno::_E_::Gui);
    UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure showing progress dialog:\r\n%s%s", UQLog::TAB,
                     error.mf_toString());
    throw error;
}

int UQProgressDialog::mf_implOnWorkEnded() {
    // A worker may publish after its end action; its control updates are messages sent to this thread,
    // which Win32 delivers only while this thread is in a message function. Waiting in slices and taking
    // them in between keeps either thread from waiting for the other.
    while (m_pWorker->mf_stopWait(WAIT_SLICE_MS).mf_getNumber() == WAIT_TIMEOUT) {
        MSG msg;
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
    EndDialog(m_hDlg.load(), 0);
    return 0;
}

int UQProgressDialog::mf_implOnClose() {
    // Like Cancel: the dialog still waits for the end action.
    m_cancelSwitch.mf_implTryCancel(UQErrnoData(UQErrno::_W_::UserCanceled));
    return 0;
}

INT_PTR CALLBACK f_ProgressDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_ProgressDialogCallback";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<UQProgressDialog>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, L"Failure initializing progress dialog:\r\n%s%s",
            [&](UQProgressDialog& _dialog) { return _dialog.mf_implOnInitDialog(_hDlg); });
    case WM_COMMAND:
        // Answered before the object is looked at: it neither cancels nor waits for the worker.
        if (LOWORD(_wParam) == ITEM_CLOSE) {
            EndDialog(_hDlg, 1);
            return 1;
        }
        return Procedure::mf_forward<UQProgressDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [&](UQProgressDialog& _dialog) { return _dialog.mf_implOnCommand(_wParam, _lParam); });
    case WM_NOTIFY: {
        NMHDR* pNmhdr = reinterpret_cast<NMHDR*>(_lParam);
        if (pNmhdr == nullptr || pNmhdr->code != LVN_GETDISPINFOW)
            return 0;
        return Procedure::mf_forward<UQProgressDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [&](UQProgressDialog& _dialog) { return _dialog.mf_implOnNotify(pNmhdr); });
    }
    case WM_DPICHANGED:
        return Procedure::mf_forward<UQProgressDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQProgressDialog& _dialog) {
                return _dialog.mf_implOnDpiChanged(LOWORD(_wParam), reinterpret_cast<const RECT*>(_lParam));
            });
    case MSG_WORK_ENDED:
        return Procedure::mf_forward<UQProgressDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [](UQProgressDialog& _dialog) { return _dialog.mf_implOnWorkEnded(); });
    case WM_CLOSE:
        return Procedure::mf_forward<UQProgressDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [](UQProgressDialog& _dialog) { return _dialog.mf_implOnClose(); });
    default:
        return 0;
    }
}
