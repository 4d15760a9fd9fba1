#pragma once

#include "interfaces/korbase.h"

// One part of a status bar: an owner-drawn cell with a small icon and one line of text, an optional
// context menu and an update hook. Derived items name themselves and refresh their content in mf_update.
class KORGUIBASE_API UQStatusBarItem {
public:
    // _ulWidth: the part's share of the bar in percent.
    explicit UQStatusBarItem(unsigned long _ulWidth);
    UQStatusBarItem(const UQStatusBarItem& _other) = default;
    UQStatusBarItem& operator=(const UQStatusBarItem& _other) = default;
    virtual ~UQStatusBarItem();

    // Does nothing here; a derived item refreshes what it shows.
    virtual void mf_update();
    // Shows another icon (not owned) and text: the bar is repainted.
    virtual void mf_updateContent(HICON _hIcon, const CString& _sText);
    // Keeps the bar and the item's context menu (may be null); answers 1.
    virtual int mf_onInitDialog(HWND _hStatusBar, HMENU _hContextMenu);
    // The icon at its own size (16x16 pixels at 96 DPI), 6 from the part's left edge and 1 from its top,
    // the text 6 pixels after it (from 28 for a 16-pixel icon); keeps the part's rectangle for hit-testing;
    // answers 1.
    virtual int mf_onDrawItem(const DRAWITEMSTRUCT& _drawItem);
    // The item's menu for a right click at a point of the bar's client area inside the part as last
    // drawn; null outside it (without a record), when disabled, or when the item has none.
    virtual HMENU mf_getContextMenu(int _nX, int _nY);
    // The item's name in log records.
    virtual CString mf_getName() const = 0;

    unsigned long mf_getWidth() const noexcept { return m_ulWidth; }
    // The text shown, which is also the part's name for screen readers.
    CString mf_getText() const { return m_sText; }
    RECT mf_getRectangle() const noexcept { return m_rect; }
    void mf_enableContextMenu(int _bEnable) noexcept { m_bContextMenuEnabled = _bEnable; }

protected:
    void mf_implRepaint();

private:
    unsigned long m_ulWidth;
    HICON m_hIcon;
    CString m_sText;
    HWND m_hStatusBar;
    RECT m_rect;
    HMENU m_hContextMenu;
    int m_bContextMenuEnabled;
};
