#include "guibase/toolkit/UQLineEditor.h"

#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQEdit.h"
#include "guibase/toolkit/UQWindow.h"

// The dialog callback; a friend of the class, defined below.
INT_PTR CALLBACK f_LineEditorDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

const int TEMPLATE_LINE_EDITOR = 10046;
const int ITEM_EDIT = 184;
const int ITEM_LABEL = 30263;
const unsigned TEXT_OK = 3070;
const unsigned TEXT_CANCEL = 3044;

// Posted by the initialisation: the dialog manager selects an edit's whole text when it gives it the
// focus, so the caller's choice is made again once the dialog is up.
const UINT MSG_RESELECT = WM_APP + 1;

const wchar_t* const INIT_FAILURE = L"Failure initializing line editor dialog:\r\n%s%s";
// The texts name the message each was first written for; kept as they are.
const wchar_t* const NO_USER_DATA_COMMAND = L"No user data pointer in call WM_COMMAND";
const wchar_t* const NO_USER_DATA_CLOSE = L"No user data pointer in call WM_CONTEXTMENU";

} // namespace

UQLineEditor::UQLineEditor(const CString& _sTitle, const CString& _sLabel)
    : m_hDlg(nullptr), m_hEdit(nullptr), m_sTitle(_sTitle), m_sLabel(_sLabel), m_nSelect(0) {}

UQLineEditor::~UQLineEditor() = default;

void UQLineEditor::mf_setText(const CString& _sText, int _nSelect) {
    m_sText = _sText;
    m_nSelect = _nSelect;
}

CString UQLineEditor::mf_getText() const {
    return m_sText;
}

int UQLineEditor::mf_show(HWND _hParent) {
    static const wchar_t* const _sFunction_ = L"UQLineEditor::mf_show";
    INT_PTR nResult = 0;
    try {
        nResult =
            UQDialogProcedure::mf_showModal(_hParent, TEMPLATE_LINE_EDITOR, f_LineEditorDialogCallback, this,
                                            _sFunction_, L"Failure showing line editor dialog:\r\n%s%s");
    } catch (...) {
        m_hDlg = nullptr;
        m_hEdit = nullptr;
        throw;
    }
    m_hDlg = nullptr;
    m_hEdit = nullptr;
    return nResult != 0 ? 1 : 0;
}

int UQLineEditor::mf_implOnInitDialog(HWND _hDlg) {
    m_hDlg = _hDlg;
    m_hEdit = GetDlgItem(_hDlg, ITEM_EDIT);
    SetWindowTextW(_hDlg, m_sTitle);
    SetDlgItemTextW(_hDlg, ITEM_LABEL, m_sLabel);
    SetDlgItemTextW(_hDlg, IDOK, UQString(TEXT_OK));
    SetDlgItemTextW(_hDlg, IDCANCEL, UQString(TEXT_CANCEL));
    SetWindowTextW(m_hEdit, m_sText);
    UQEdit::mf_selectText(m_hEdit, m_nSelect > 0 ? 1 : 0);
    mf_implOnUpdateControls();
    PostMessageW(_hDlg, MSG_RESELECT, 0, 0);
    return 1;
}

int UQLineEditor::mf_implOnCommand(WPARAM _wParam, LPARAM) {
    static const wchar_t* const _sFunction_ = L"UQLineEditor::mf_implOnCommand";
    switch (LOWORD(_wParam)) {
    case IDOK:
        UQWindow::mf_getText(m_hEdit, m_sText);
        EndDialog(m_hDlg, 1);
        return 1;
    case IDCANCEL:
        EndDialog(m_hDlg, 0);
        return 0;
    case ITEM_EDIT:
        if (HIWORD(_wParam) == EN_CHANGE)
            mf_implOnUpdateControls();
        return 0;
    default:
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Unexpected command %d",
                         static_cast<int>(LOWORD(_wParam)));
        return 0;
    }
}

void UQLineEditor::mf_implOnUpdateControls() {
    EnableWindow(GetDlgItem(m_hDlg, IDOK), UQWindow::mf_hasText(m_hEdit) ? TRUE : FALSE);
    EnableWindow(GetDlgItem(m_hDlg, IDCANCEL), TRUE);
}

INT_PTR CALLBACK f_LineEditorDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_LineEditorDialogCallback";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<UQLineEditor>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA_COMMAND, INIT_FAILURE,
            [&](UQLineEditor& _editor) { return _editor.mf_implOnInitDialog(_hDlg); });
    case WM_COMMAND:
        return Procedure::mf_forward<UQLineEditor>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA_COMMAND,
            [&](UQLineEditor& _editor) { return _editor.mf_implOnCommand(_wParam, _lParam); });
    case MSG_RESELECT:
        return Procedure::mf_forward<UQLineEditor>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA_COMMAND, [](UQLineEditor& _editor) {
                return UQEdit::mf_selectText(_editor.m_hEdit, _editor.m_nSelect > 0 ? 1 : 0);
            });
    case WM_CLOSE:
        // The [x] box ends with 1 and leaves the text as it was given.
        return Procedure::mf_forward<UQLineEditor>(_hDlg, _uMsg, _sFunction_, NO_USER_DATA_CLOSE,
                                                   [](UQLineEditor& _editor) {
                                                       EndDialog(_editor.m_hDlg, 1);
                                                       return 1;
                                                   });
    default:
        return 0;
    }
}
