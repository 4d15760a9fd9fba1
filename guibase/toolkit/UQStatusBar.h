#pragma once

#include "guibase/toolkit/UQStatusBarItem.h"

// A status bar at the bottom of a dialog (control id 1039), divided into owner-drawn parts whose widths
// are percentages of the bar. The bar owns its items and its context menu container.
class KORGUIBASE_API UQStatusBar {
public:
    static const int CONTROL_ID = 1039;

    UQStatusBar();
    // A copy works on the same window and items but owns neither the items nor the menu container: only
    // the original deletes them, so nothing is released twice.
    UQStatusBar(const UQStatusBar& _other);
    UQStatusBar& operator=(const UQStatusBar& _other) = delete;
    virtual ~UQStatusBar();

    // Creates the bar in _hParent; each item gets the submenu of _hContextMenus titled with its index
    // ("0", "1", ...). The bar takes _hContextMenus and destroys it. Answers 1.
    virtual int mf_onInitDialog(HWND _hParent, HMENU _hContextMenus);
    // WM_DRAWITEM: 0 for another control, else what the item with itemID answers. An itemID beyond the
    // items raises the invalid-argument exception of the array.
    virtual int mf_onDrawItem(const DRAWITEMSTRUCT& _drawItem);
    // WM_SIZE: the bar moves itself to the parent's bottom and the parts are laid out again; answers 1.
    virtual int mf_onSizeEvent(int _nWidth, int _nHeight);
    // Asks every item to refresh; an item's failure is logged and the others still run.
    virtual void mf_update();
    // The first item's menu for a right click at a point of the bar's client area, or null.
    virtual HMENU mf_getContextMenu(int _nX, int _nY);

    // Appends an item (owned from here on); a null item throws UQErrno::_E_::Parameter.
    void mf_addItem(UQStatusBarItem* _pStatusBarItem);
    HWND mf_getWindowHandle() const noexcept { return m_hStatusBar; }
    int mf_getWindowHeight() const noexcept { return m_nWindowHeight; }

private:
    void mf_implSetStatusBarParts();
    // The bar's own answers: its IAccessible (WM_GETOBJECT), its parts' texts for it, and the name-change
    // event when an item shows another text.
    static LRESULT CALLBACK mf_implBarProcedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam,
                                                UINT_PTR _uId, DWORD_PTR _dwBar) noexcept;
    // The parent's WM_DPICHANGED: the parent takes the suggested rectangle, the bar a font of the new DPI,
    // its height and its parts.
    static LRESULT CALLBACK mf_implParentProcedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam,
                                                   UINT_PTR _uId, DWORD_PTR _dwBar) noexcept;
    void mf_implApplyDpi(UINT _uDpi);

    HWND m_hStatusBar;
    int m_nWindowHeight;
    HMENU m_hContextMenus;
    UQArray<UQStatusBarItem*, UQStatusBarItem*> m_apItems;
    int m_bOwner;
};
