// A dialog that lays itself out again when it is told of a new DPI (WM_DPICHANGED): the dialog takes the
// rectangle suggested for it, each of its controls the place it had at the dialog's first DPI scaled to the
// new one, and each control its first font scaled likewise. Windows' dialog manager would scale a
// per-monitor dialog by itself; it is asked to leave the dialog alone (SetDialogDpiChangeBehavior, looked
// up), so that the dialog looks the same on Windows and on systems whose dialog manager scales nothing (Wine
// 8).
#pragma once

#include "interfaces/korbase.h"

#include <windows.h>

#include <utility>
#include <vector>

class KORGUIBASE_API UQDialogDpiLayout {
public:
    UQDialogDpiLayout() noexcept;
    // A copy keeps nothing of the original: it lays out a dialog only after a capture of its own.
    UQDialogDpiLayout(const UQDialogDpiLayout& _other) noexcept;
    UQDialogDpiLayout& operator=(const UQDialogDpiLayout&) = delete;
    ~UQDialogDpiLayout();

    // Keeps the places and fonts of the dialog's controls as they are now, at the dialog's DPI (call it on
    // WM_INITDIALOG, once the dialog is laid out); a capture before is released.
    void mf_capture(HWND _hDlg);
    // The dialog's WM_DPICHANGED: _uDpi is the new DPI, _pSuggested the rectangle suggested for the dialog
    // (null: the dialog keeps its rectangle). At the first DPI every control has its own place and font
    // again. Does nothing before a capture.
    void mf_apply(UINT _uDpi, const RECT* _pSuggested);
    // Deletes the fonts made for other DPIs; call it once the dialog is gone (its controls use them).
    void mf_release() noexcept;
    // The DPI the dialog is laid out for; 0 before a capture.
    UINT mf_getDpi() const noexcept { return m_uDpi; }

private:
    struct Control {
        HWND hWnd;
        RECT rect;
        HFONT hFont;
    };

    HWND m_hDlg;
    UINT m_uFirstDpi;
    UINT m_uDpi;
    std::vector<Control> m_controls;
    // A control's first font and the copy made of it for the current DPI.
    std::vector<std::pair<HFONT, HFONT>> m_fonts;
};
