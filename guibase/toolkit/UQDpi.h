// DPI calls of user32 that only newer Windows has. Each is looked up when first used, never imported, so
// that the library still loads where one is missing (older Windows, Wine 8); there the call does nothing.
#pragma once

#include "interfaces/korbase.h"

#include <windows.h>

class KORGUIBASE_API UQDpi {
public:
    // Mask and values as DIALOG_DPI_CHANGE_BEHAVIORS (Windows 10 1703). 1 when done, 0 when the system
    // lacks the call or refused it.
    static int mf_setDialogDpiChangeBehavior(HWND _hDlg, DWORD _dwMask, DWORD _dwValues) noexcept;
    // Mask and values as DIALOG_CONTROL_DPI_CHANGE_BEHAVIORS; the same answer.
    static int mf_setDialogControlDpiChangeBehavior(HWND _hControl, DWORD _dwMask, DWORD _dwValues) noexcept;
    // Whether the system has the two calls above.
    static int mf_hasDialogDpiChangeBehavior() noexcept;

    // DCDC_DISABLE_RELAYOUT: the dialog manager leaves a control that lays itself out alone.
    static const DWORD CONTROL_KEEPS_ITS_LAYOUT = 0x0002;
};
