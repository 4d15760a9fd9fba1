// DPI calls of user32 and comctl32 that only newer Windows has. Each is looked up when first used, never
// imported, so that the library still loads where one is missing (older Windows, Wine 8); there the call
// does nothing, or the answer comes from the older calls.
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

    // The DPI the window is drawn at: GetDpiForWindow (Windows 10 1607) where the system has it, else the
    // LOGPIXELSY of the window's DC; 96 when neither answers.
    static UINT mf_getWindowDpi(HWND _hWnd) noexcept;
    // The DPI of the screen as the process sees it (LOGPIXELSY of the screen); 96 when it cannot be read.
    static UINT mf_getSystemDpi() noexcept;
    // A system metric at a DPI: GetSystemMetricsForDpi where the system has it, else the metric at the
    // system DPI scaled to _uDpi.
    static int mf_getSystemMetricForDpi(int _nIndex, UINT _uDpi) noexcept;
    // The size at _uDpi of an icon that is _nSize96 pixels wide at 96 DPI: the system's small or large icon
    // size at that DPI for 16 and 32 (SM_CXSMICON, SM_CXICON), the size scaled by _uDpi / 96 otherwise.
    static int mf_getIconSize(int _nSize96, UINT _uDpi) noexcept;
    // Icon _wIconId of _hModule at _nSize pixels, owned by the caller (DestroyIcon): LoadIconWithScaleDown
    // where comctl32 has it, which draws a larger image of the icon down rather than a smaller one up, else
    // LoadImageW. Null when the module has no such icon.
    static HICON mf_loadIcon(HMODULE _hModule, WORD _wIconId, int _nSize) noexcept;

    // DDC_DISABLE_ALL: the dialog manager leaves a dialog that lays itself out alone at a new DPI.
    static const DWORD DIALOG_KEEPS_ITS_LAYOUT = 0x0001;
    // DCDC_DISABLE_RELAYOUT: the dialog manager leaves a control that lays itself out alone.
    static const DWORD CONTROL_KEEPS_ITS_LAYOUT = 0x0002;
};
