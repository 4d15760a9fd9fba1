// Icons shown at the DPI their window is drawn at. The icons belong to the top-level window of the control
// that shows them: each is loaded once per DPI at the size that DPI asks for, loaded again when the
// top-level window is told of a new DPI (WM_DPICHANGED, after the window's own answer), and destroyed with
// that window. Windows sends WM_DPICHANGED to a per-monitor window moved to a monitor of another DPI.
#pragma once

#include "interfaces/korbase.h"

#include <windows.h>

class KORGUIBASE_API UQDpiIcons {
public:
    // Shows icon _wIconId of _hModule on _hTarget at _nSize96 pixels at 96 DPI, scaled to the DPI of
    // _hTarget's top-level window (UQDpi::mf_getIconSize): as a static control's icon (STM_SETICON) and as
    // a window's small icon (WM_SETICON), each window taking the message it knows. 1 when shown; 0 when the
    // icon cannot be loaded, and _hTarget then shows none.
    static int mf_show(HWND _hTarget, HMODULE _hModule, WORD _wIconId, int _nSize96) noexcept;
    // _hTarget shows no icon and is no longer kept at the DPI.
    static void mf_clear(HWND _hTarget) noexcept;
    // The DPI the icons of _hWnd's top-level window are chosen for: the window's own DPI until a
    // WM_DPICHANGED names another.
    static UINT mf_getDpi(HWND _hWnd) noexcept;

    // A small-icon image list for list view _hList at the list's DPI, and loaded again at each new DPI with
    // the icons added to it through mf_addImage. The list view destroys its image list with itself (it
    // has no LVS_SHAREIMAGELISTS); one set before is left alone. 1 when made.
    static int mf_createImageList(HWND _hList) noexcept;
    // Adds icon _wIconId of _hModule to the list's small image list at the list's image size; its index, or
    // -1 when the list has no image list or the icon cannot be loaded.
    static int mf_addImage(HWND _hList, HMODULE _hModule, WORD _wIconId) noexcept;
    // The list's image list is no longer made again at a new DPI (it is about to be destroyed).
    static void mf_forgetImageList(HWND _hList) noexcept;
};
