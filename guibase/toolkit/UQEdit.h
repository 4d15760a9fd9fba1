#pragma once

#include "interfaces/korbase.h"

// Edit controls: read-only state and selection. 1 for success; a control that refuses the message is
// logged under the handle form's name and answers 0.
class KORGUIBASE_API UQEdit {
public:
    UQEdit() noexcept = default;
    UQEdit(const UQEdit&) noexcept = default;
    UQEdit& operator=(const UQEdit&) noexcept = default;
    ~UQEdit() = default;

    static int mf_setReadonly(HWND _hWnd, int _bReadonly);
    static int mf_setItemReadonly(HWND _hDlg, int _nId, int _bReadonly);
    // Selects the whole text, or removes the selection.
    static int mf_selectText(HWND _hWnd, int _bSelect);
    static int mf_selectItemText(HWND _hDlg, int _nId, int _bSelect);
};
