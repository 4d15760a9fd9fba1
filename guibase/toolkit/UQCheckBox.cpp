#include "guibase/toolkit/UQCheckBox.h"

#include "guibase/toolkit/UQWindow.h"

int UQCheckBox::mf_isChecked(HWND _hWnd, int& _rbChecked) {
    switch (SendMessageW(_hWnd, BM_GETCHECK, 0, 0)) {
    case BST_UNCHECKED:
        _rbChecked = 0;
        return 1;
    case BST_CHECKED:
        _rbChecked = 1;
        return 1;
    default:
        return 0;
    }
}

int UQCheckBox::mf_isItemChecked(HWND _hDlg, int _nId, int& _rbChecked) {
    return mf_isChecked(UQWindow::mf_getItem(_hDlg, _nId), _rbChecked);
}

int UQCheckBox::mf_setChecked(HWND _hWnd, int _bChecked) {
    SendMessageW(_hWnd, BM_SETCHECK, _bChecked ? BST_CHECKED : BST_UNCHECKED, 0);
    return 1;
}

int UQCheckBox::mf_setItemChecked(HWND _hDlg, int _nId, int _bChecked) {
    return mf_setChecked(UQWindow::mf_getItem(_hDlg, _nId), _bChecked);
}
