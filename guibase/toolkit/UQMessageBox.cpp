#include "guibase/toolkit/UQMessageBox.h"

#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQToolkitReport.h"

// The dialog callback; a friend of the class, defined below.
INT_PTR CALLBACK f_UQMessageBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

const int TEMPLATE_INFORMATION = 10009;
const int TEMPLATE_WARNING = 10025;
const int ITEM_BUTTON1 = 30026;
const int ITEM_BUTTON2 = 30027;
const int ITEM_MESSAGE = 30022;
const unsigned TEXT_DEFAULT_CAPTION = 786;
const unsigned TEXT_SINGLE_BUTTON = 3070;
const unsigned TEXT_BUTTON1 = 3092;
const unsigned TEXT_BUTTON2 = 3067;

const wchar_t* const ON_BUTTON_CLICKED = L"UQMessageBox::mf_onButtonClicked";
const wchar_t* const NO_USER_DATA = L"No user data pointer in message box panel";
const wchar_t* const INIT_FAILURE = L"Failure initializing message box:\r\n%s%s";

CString captionOrDefault(const CString& _sCaption) {
    return _sCaption.IsEmpty() ? CString(UQString(TEXT_DEFAULT_CAPTION)) : _sCaption;
}

UQSeverity severityOf(const UQErrnoData& _data) {
    const UQErrnoValue* pValue = _data.mf_getValue();
    return pValue != nullptr ? pValue->mf_getSeverity() : UQSeverity();
}

void setText(HWND _hWnd, const CString& _sText) {
    SendMessageW(_hWnd, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(static_cast<const wchar_t*>(_sText)));
}

// Called while no dialog is shown, an operation that works on the dialog only says so.
int isShown(HWND _hDlg, const wchar_t* _pszFunction) {
    if (_hDlg != nullptr)
        return 1;
    UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Message box is not shown");
    return 0;
}

} // namespace

UQMessageBox::UQMessageBox(const CString& _sMessage, const UVSeverity& _severity, BUTTONS _eButtons,
                           const CString& _sCaption)
    : m_sCaption(captionOrDefault(_sCaption)), m_severity(_severity), m_sMessage(_sMessage),
      m_eButtons(_eButtons), m_ulDefaultButton(2), m_hDlg(nullptr), m_panel(16) {}

UQMessageBox::UQMessageBox(const CString& _sMessage, BUTTONS _eButtons, const CString& _sCaption)
    : UQMessageBox(_sMessage, UQSeverity(), _eButtons, _sCaption) {}

UQMessageBox::UQMessageBox(const UQErrnoData& _data, const CString& _sCaption)
    : UQMessageBox(UQErrno::mf_toGuiMessage(_data, CString()), severityOf(_data), BUTTONS_SINGLE, _sCaption) {
}

UQMessageBox::~UQMessageBox() = default;

UQMessageBox::RESULT UQMessageBox::mf_show(HWND _hParent, unsigned long _ulDefaultButton, int _nTemplateId) {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_show";
    m_ulDefaultButton = _ulDefaultButton;
    if (_nTemplateId == -1)
        _nTemplateId = m_severity.mf_getValue() != 0 ? TEMPLATE_WARNING : TEMPLATE_INFORMATION;
    INT_PTR nResult = 0;
    try {
        nResult = UQDialogProcedure::mf_showModal(_hParent, _nTemplateId, f_UQMessageBoxCallback, this,
                                                  _sFunction_, L"Failure showing message box:\r\n%s%s");
    } catch (...) {
        m_hDlg = nullptr;
        throw;
    }
    // The dialog is gone: operations that work on it must not reach a handle that may be reused.
    m_hDlg = nullptr;
    return static_cast<RESULT>(nResult);
}

int UQMessageBox::mf_onInitDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_onInitDialog";
    m_hDlg = _hDlg;
    m_panel.mf_onInitDialog(_hDlg);
    m_panel.mf_setMessage(m_severity, m_sCaption, m_sMessage);
    SetWindowTextW(_hDlg, m_sCaption);
    setText(GetDlgItem(_hDlg, ITEM_MESSAGE), m_sMessage);

    HWND hButton1 = GetDlgItem(_hDlg, ITEM_BUTTON1);
    HWND hButton2 = GetDlgItem(_hDlg, ITEM_BUTTON2);
    switch (m_eButtons) {
    case BUTTONS_NONE:
        ShowWindow(hButton1, SW_HIDE);
        ShowWindow(hButton2, SW_HIDE);
        break;
    case BUTTONS_SINGLE:
        ShowWindow(hButton1, SW_HIDE);
        ShowWindow(hButton2, SW_SHOW);
        setText(hButton2, UQString(TEXT_SINGLE_BUTTON));
        mf_implFocusButton(2);
        break;
    case BUTTONS_YES_NO:
        ShowWindow(hButton1, SW_SHOW);
        ShowWindow(hButton2, SW_SHOW);
        setText(hButton1, UQString(TEXT_BUTTON1));
        setText(hButton2, UQString(TEXT_BUTTON2));
        if (m_ulDefaultButton == 1 || m_ulDefaultButton == 2)
            mf_implFocusButton(m_ulDefaultButton);
        else
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Unexpected default button index %lu",
                             m_ulDefaultButton);
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Unexpected buttons value: %d",
                         static_cast<int>(m_eButtons));
        break;
    }
    // The box has placed the focus itself.
    return 0;
}

int UQMessageBox::mf_implFocusButton(unsigned long _ulButton) {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_onInitDialog";
    HWND hButton = GetDlgItem(m_hDlg, _ulButton == 1 ? ITEM_BUTTON1 : ITEM_BUTTON2);
    SetLastError(0);
    SetFocus(hButton);
    if (GetLastError() == 0) {
        // The focused button is the default one too, so that it is marked as such and Enter presses it
        // wherever the focus goes.
        SendMessageW(m_hDlg, DM_SETDEFID, static_cast<WPARAM>(GetDlgCtrlID(hButton)), 0);
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                         _ulButton == 1 ? L"Set focus to button 1" : L"Set focus to button 2");
        return 1;
    }
    const UQErrno error = UQToolkitReport::mf_systemError(UQErrno::_E_::System);
    UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                     _ulButton == 1 ? L"Could not set focus to button 1:\r\n%s%s"
                                    : L"Could not set focus to button 2:\r\n%s%s",
                     UQLog::TAB, error.mf_toString());
    return 0;
}

int UQMessageBox::mf_onCommand(WPARAM _wParam, LPARAM) {
    static const wchar_t* const _sFunction_ = ON_BUTTON_CLICKED;
    if (HIWORD(_wParam) != 0)
        return 0;
    const int nId = LOWORD(_wParam);
    switch (m_eButtons) {
    case BUTTONS_SINGLE:
        if (nId == ITEM_BUTTON2) {
            UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Terminating dialog with result RESULT_YES");
            EndDialog(m_hDlg, RESULT_YES);
            return 1;
        }
        break;
    case BUTTONS_YES_NO:
        switch (nId) {
        case IDCANCEL:
            UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                             L"Keyboard <Esc> pressed, terminating dialog with result RESULT_CANCEL");
            EndDialog(m_hDlg, RESULT_CANCEL);
            return 1;
        case ITEM_BUTTON1:
            UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Terminating dialog with result RESULT_YES");
            EndDialog(m_hDlg, RESULT_YES);
            return 1;
        case ITEM_BUTTON2:
            UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Terminating dialog with result RESULT_NO");
            EndDialog(m_hDlg, RESULT_NO);
            return 1;
        default:
            break;
        }
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Unexpected buttons value: %d",
                         static_cast<int>(m_eButtons));
        return 0;
    }
    UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Unexpected button resource-id (buttons=%d): %d",
                     static_cast<int>(m_eButtons), nId);
    return 0;
}

HBRUSH UQMessageBox::mf_onCtlColorStatic(WPARAM, LPARAM) {
    return nullptr;
}

void UQMessageBox::mf_setMessage(const CString& _sMessage) {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_setMessage";
    if (isShown(m_hDlg, _sFunction_))
        setText(GetDlgItem(m_hDlg, ITEM_MESSAGE), _sMessage);
}

void UQMessageBox::mf_resetMessage() {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_resetMessage";
    if (isShown(m_hDlg, _sFunction_))
        setText(GetDlgItem(m_hDlg, ITEM_MESSAGE), m_sMessage);
}

void UQMessageBox::mf_enableButtons(int _bEnable) {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_enableButtons";
    if (!isShown(m_hDlg, _sFunction_))
        return;
    if (m_eButtons == BUTTONS_SINGLE) {
        EnableWindow(GetDlgItem(m_hDlg, ITEM_BUTTON2), _bEnable ? TRUE : FALSE);
    } else if (m_eButtons == BUTTONS_YES_NO) {
        EnableWindow(GetDlgItem(m_hDlg, ITEM_BUTTON1), _bEnable ? TRUE : FALSE);
        EnableWindow(GetDlgItem(m_hDlg, ITEM_BUTTON2), _bEnable ? TRUE : FALSE);
    }
}

void UQMessageBox::mf_selectButton(unsigned long _ulButton) {
    static const wchar_t* const _sFunction_ = L"UQMessageBox::mf_selectButton";
    if (_ulButton != 1 && _ulButton != 2) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Unexpected button id: %lu", _ulButton);
        return;
    }
    if (!isShown(m_hDlg, _sFunction_))
        return;
    HWND hButton = GetDlgItem(m_hDlg, _ulButton == 1 ? ITEM_BUTTON1 : ITEM_BUTTON2);
    SendMessageW(m_hDlg, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(hButton), TRUE);
}

INT_PTR CALLBACK f_UQMessageBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_UQMessageBoxCallback";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<UQMessageBox>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, INIT_FAILURE,
            [&](UQMessageBox& _box) { return _box.mf_onInitDialog(_hDlg); });
    case WM_COMMAND:
        return Procedure::mf_forward<UQMessageBox>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [&](UQMessageBox& _box) { return _box.mf_onCommand(_wParam, _lParam); });
    case WM_CTLCOLORSTATIC:
        return Procedure::mf_forward<UQMessageBox>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQMessageBox& _box) {
                return Procedure::mf_brushResult(_box.mf_onCtlColorStatic(_wParam, _lParam));
            });
    case WM_CLOSE:
        return Procedure::mf_forward<UQMessageBox>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [](UQMessageBox& _box) {
                // The [x] box ends every box, whatever its buttons.
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                 L"Mouse [x] pressed, terminating dialog with result RESULT_CANCEL");
                EndDialog(_box.m_hDlg, UQMessageBox::RESULT_CANCEL);
                return 1;
            });
    default:
        return 0;
    }
}
