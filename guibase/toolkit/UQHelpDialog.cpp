#include "guibase/toolkit/UQHelpDialog.h"

#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQWindow.h"

// The dialog callback; a friend of the class, defined below.
INT_PTR CALLBACK f_UQHelpDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

const int TEMPLATE_HELP_DIALOG = 10059;
const int ITEM_ICON = 30359;
const int ITEM_TEXT = 30375;
const WORD ICON_INFORMATION = 10002;
const unsigned TEXT_CLOSE = 3070;

// The help dialog shares the message box's literals.
const wchar_t* const NO_USER_DATA = L"No user data pointer in message box panel";
const wchar_t* const INIT_FAILURE = L"Failure initializing message box:\r\n%s%s";

} // namespace

UQHelpDialog::UQHelpDialog(const CString& _sTitle, const CString& _sHelpText)
    : m_sTitle(_sTitle), m_sHelpText(_sHelpText), m_hGdiObject(nullptr), m_hDlg(nullptr),
      m_hLanguage(nullptr) {}

UQHelpDialog::UQHelpDialog(const UQHelpDialog& _other)
    : m_sTitle(_other.m_sTitle), m_sHelpText(_other.m_sHelpText), m_hGdiObject(nullptr), m_hDlg(nullptr),
      m_hLanguage(_other.m_hLanguage) {}

UQHelpDialog& UQHelpDialog::operator=(const UQHelpDialog& _other) {
    m_sTitle = _other.m_sTitle;
    m_sHelpText = _other.m_sHelpText;
    m_hLanguage = _other.m_hLanguage;
    return *this;
}

UQHelpDialog::~UQHelpDialog() {
    if (m_hGdiObject != nullptr)
        DeleteObject(m_hGdiObject);
}

void UQHelpDialog::mf_show(HWND _hParent) {
    static const wchar_t* const _sFunction_ = L"UQHelpDialog::mf_show";
    try {
        UQDialogProcedure::mf_showModal(_hParent, TEMPLATE_HELP_DIALOG, f_UQHelpDialogCallback, this,
                                        _sFunction_, L"Failure showing message box:\r\n%s%s");
    } catch (...) {
        m_hDlg = nullptr;
        throw;
    }
    m_hDlg = nullptr;
}

int UQHelpDialog::mf_onInitDialog(HWND _hDlg) {
    m_hDlg = _hDlg;
    m_hLanguage = UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT);
    SetWindowTextW(_hDlg, m_sTitle);
    UQWindow::mf_setItemIcon(_hDlg, ITEM_ICON, ICON_INFORMATION);
    SetDlgItemTextW(_hDlg, ITEM_TEXT, m_sHelpText);
    SetDlgItemTextW(_hDlg, IDCANCEL, UQString(TEXT_CLOSE));
    return 0;
}

int UQHelpDialog::mf_onCommand(WPARAM _wParam, LPARAM) {
    if (HIWORD(_wParam) != 0 || LOWORD(_wParam) != IDCANCEL)
        return 0;
    EndDialog(m_hDlg, 0);
    return 1;
}

HBRUSH UQHelpDialog::mf_onCtlColorStatic(WPARAM, LPARAM) {
    return nullptr;
}

INT_PTR CALLBACK f_UQHelpDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_UQHelpDialogCallback";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<UQHelpDialog>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, INIT_FAILURE,
            [&](UQHelpDialog& _dialog) { return _dialog.mf_onInitDialog(_hDlg); });
    case WM_COMMAND:
        return Procedure::mf_forward<UQHelpDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [&](UQHelpDialog& _dialog) { return _dialog.mf_onCommand(_wParam, _lParam); });
    case WM_CTLCOLORSTATIC:
        return Procedure::mf_forward<UQHelpDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQHelpDialog& _dialog) {
                return Procedure::mf_brushResult(_dialog.mf_onCtlColorStatic(_wParam, _lParam));
            });
    case WM_CLOSE:
        return Procedure::mf_forward<UQHelpDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [](UQHelpDialog& _dialog) {
                // The message box's words, and the help dialog's own result.
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                 L"Mouse [x] pressed, terminating dialog with result RESULT_CANCEL");
                EndDialog(_dialog.m_hDlg, 0);
                return 1;
            });
    default:
        return 0;
    }
}
