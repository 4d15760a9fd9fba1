#pragma once

#include "interfaces/korbase.h"

// Check boxes. The item forms hand the looked-up handle on without testing it: a missing item answers like
// an unchecked box, after UQWindow::mf_getItem has logged.
class KORGUIBASE_API UQCheckBox {
public:
    UQCheckBox() noexcept = default;
    UQCheckBox(const UQCheckBox&) noexcept = default;
    UQCheckBox& operator=(const UQCheckBox&) noexcept = default;
    ~UQCheckBox() = default;

    // Sets _rbChecked to 0 or 1 and answers 1; the indeterminate state answers 0 and leaves it as it was.
    static int mf_isChecked(HWND _hWnd, int& _rbChecked);
    static int mf_isItemChecked(HWND _hDlg, int _nId, int& _rbChecked);
    // Always 1.
    static int mf_setChecked(HWND _hWnd, int _bChecked);
    static int mf_setItemChecked(HWND _hDlg, int _nId, int _bChecked);
};
