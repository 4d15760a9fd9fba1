#pragma once

#include "interfaces/korarchiver.h"
#include "interfaces/korbase.h"

// Static helpers for any window or dialog item: text, numbers, enabling, hiding, focus, icons, fonts, text
// width and the registry persistence of a window's text. Every operation on a dialog item exists twice: a
// handle form, and an item form (Item in its name) that looks the item up with mf_getItem and hands the
// handle on. Results are 1 for success and 0 for failure; failures are logged, and only mf_hasText and
// mf_hasItemText throw.
class KORGUIBASE_API UQWindow {
public:
    UQWindow() noexcept = default;
    UQWindow(const UQWindow&) noexcept = default;
    UQWindow(UQWindow&&) noexcept = default;
    UQWindow& operator=(const UQWindow&) noexcept = default;
    UQWindow& operator=(UQWindow&&) noexcept = default;
    ~UQWindow() = default;

    // The item, or null after a LEVEL_E record.
    static HWND mf_getItem(HWND _hDlg, int _nId);
    // 1 if the item exists; a missing item answers 0 without a record.
    static int mf_hasItem(HWND _hDlg, int _nId);

    static int mf_enable(HWND _hWnd, int _bEnable);
    static int mf_enableItem(HWND _hDlg, int _nId, int _bEnable);
    static int mf_hide(HWND _hWnd, int _bHide);
    static int mf_hideItem(HWND _hDlg, int _nId, int _bHide);
    static int mf_focus(HWND _hWnd);
    static int mf_focusItem(HWND _hDlg, int _nId);

    static int mf_setText(HWND _hWnd, const CString& _sText);
    static int mf_setItemText(HWND _hDlg, int _nId, const CString& _sText);
    // The window text; empty when there is none or it cannot be read, "<failure getting window text>" when
    // it changed while being read.
    static void mf_getText(HWND _hWnd, CString& _rsText);
    static void mf_getItemText(HWND _hDlg, int _nId, CString& _rsText);
    // Throws UQErrno when the text length cannot be told.
    static int mf_hasText(HWND _hWnd);
    static int mf_hasItemText(HWND _hDlg, int _nId);

    // The text read as a number (group separators allowed); 0 when it is none.
    static int mf_getNumber(HWND _hWnd);
    static int mf_getItemNumber(HWND _hDlg, int _nId);
    // The number with the configured group separator.
    static int mf_setNumber(HWND _hWnd, int _nNumber);
    static int mf_setItemNumber(HWND _hDlg, int _nId, int _nNumber);

    // Shows a small icon of the current language module at the small icon size of the window's DPI, and
    // again at a new DPI (UQDpiIcons): as the window's small icon and as a static control's icon. 0,
    // without a record, when the icon cannot be loaded; the window then shows none.
    static int mf_setIcon(HWND _hWnd, WORD _wIconId);
    static int mf_setItemIcon(HWND _hDlg, int _nId, WORD _wIconId);

    // Gives the window a bold and/or underlined copy of its font and answers it (null on failure); the
    // caller deletes it once the window no longer uses it.
    static HFONT mf_setFontAttributes(HWND _hWnd, int _bBold, int _bUnderline);
    static HFONT mf_setItemFontAttributes(HWND _hDlg, int _nId, int _bBold, int _bUnderline);

    // The pixel width of the text in the window's device context; 0 on failure.
    static int mf_getTextWidth(HWND _hWnd, const CString& _sText);

    // The registry path of the values that dialog items persist: empty for UQBackend::NONE, else the
    // backend's GUI registry path.
    static void mf_setRegistryRoot(const UQBackend& _backend);
    static const CString& mf_getRegistryRoot() noexcept;

    // Sets the window text from a per-user registry value (a missing value empties it); always 1.
    static int mf_initFromRegistry(HWND _hWnd, const CString& _sValueName);
    static int mf_initItemFromRegistry(HWND _hDlg, int _nId, const CString& _sValueName);
    // Writes the window text to a per-user registry value; 1 even when the write failed (it is logged).
    static int mf_saveToRegistry(HWND _hWnd, const CString& _sValueName);
    static int mf_saveItemToRegistry(HWND _hDlg, int _nId, const CString& _sValueName);

private:
    static CString m_sRegistryRoot;
};
