#pragma once

#include "interfaces/korbase.h"

// Up-down controls.
class KORGUIBASE_API UQSpinEdit {
public:
    // The widest range that the product's spin controls offer.
    static const long MIN_VALUE = -32767;
    static const long MAX_VALUE = 32767;

    UQSpinEdit() noexcept = default;
    UQSpinEdit(const UQSpinEdit&) noexcept = default;
    UQSpinEdit& operator=(const UQSpinEdit&) noexcept = default;
    ~UQSpinEdit() = default;

    // Sets the range, clamped to MIN_VALUE..MAX_VALUE with a LEVEL_W record for each clamped end; a minimum
    // above the maximum is passed on as it is. Always 1.
    static int mf_setRange(HWND _hWnd, long _nMin, long _nMax);
    static int mf_setItemRange(HWND _hDlg, int _nId, long _nMin, long _nMax);
};
