#include "guibase/toolkit/UQEdit.h"

#include "guibase/toolkit/UQToolkitReport.h"
#include "guibase/toolkit/UQWindow.h"

int UQEdit::mf_setReadonly(HWND _hWnd, int _bReadonly) {
    static const wchar_t* const _sFunction_ = L"UQEdit::mf_setReadonly";
    if (SendMessageW(_hWnd, EM_SETREADONLY, _bReadonly ? TRUE : FALSE, 0) == 0) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure setting edit to r/o");
        return 0;
    }
    return 1;
}

int UQEdit::mf_setItemReadonly(HWND _hDlg, int _nId, int _bReadonly) {
    static const wchar_t* const _sFunction_ = L"UQEdit::mf_setItemReadonly";
    HWND hItem = UQWindow::mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItemOnOneLine(_sFunction_, _nId);
        return 0;
    }
    return mf_setReadonly(hItem, _bReadonly);
}

int UQEdit::mf_selectText(HWND _hWnd, int _bSelect) {
    static const wchar_t* const _sFunction_ = L"UQEdit::mf_selectText";
    // From 0 to the end selects everything; a start of -1 removes the selection.
    if (SendMessageW(_hWnd, EM_SETSEL, _bSelect ? 0 : static_cast<WPARAM>(-1), -1) == 0) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure selecting edit text");
        return 0;
    }
    return 1;
}

int UQEdit::mf_selectItemText(HWND _hDlg, int _nId, int _bSelect) {
    static const wchar_t* const _sFunction_ = L"UQEdit::mf_selectItemText";
    HWND hItem = UQWindow::mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItemOnOneLine(_sFunction_, _nId);
        return 0;
    }
    return mf_selectText(hItem, _bSelect);
}
