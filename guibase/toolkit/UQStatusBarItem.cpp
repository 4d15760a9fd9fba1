#include "guibase/toolkit/UQStatusBarItem.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQStatusBarAccessible.h"

UQStatusBarItem::UQStatusBarItem(unsigned long _ulWidth)
    : m_ulWidth(_ulWidth), m_hIcon(nullptr), m_sText(L"<not-initialized>"), m_hStatusBar(nullptr), m_rect(),
      m_hContextMenu(nullptr), m_bContextMenuEnabled(1) {}

UQStatusBarItem::~UQStatusBarItem() = default;

void UQStatusBarItem::mf_update() {}

void UQStatusBarItem::mf_updateContent(HICON _hIcon, const CString& _sText) {
    const bool bNewText = m_sText != _sText;
    m_hIcon = _hIcon;
    m_sText = _sText;
    // The bar knows the item's part and tells screen readers that its name changed.
    if (bNewText && m_hStatusBar != nullptr)
        SendMessageW(m_hStatusBar, UQStatusBarAccessible::mf_changedMessage(), 0,
                     reinterpret_cast<LPARAM>(this));
    mf_implRepaint();
}

int UQStatusBarItem::mf_onInitDialog(HWND _hStatusBar, HMENU _hContextMenu) {
    m_hStatusBar = _hStatusBar;
    m_hContextMenu = _hContextMenu;
    return 1;
}

int UQStatusBarItem::mf_onDrawItem(const DRAWITEMSTRUCT& _drawItem) {
    // The icon at the size it was loaded at, which its owner chose for the bar's DPI.
    int nIconWidth = 16;
    ICONINFO info = {};
    if (m_hIcon != nullptr && GetIconInfo(m_hIcon, &info)) {
        BITMAP bitmap = {};
        if (GetObjectW(info.hbmMask, sizeof bitmap, &bitmap) != 0)
            nIconWidth = bitmap.bmWidth;
        DeleteObject(info.hbmMask);
        if (info.hbmColor != nullptr)
            DeleteObject(info.hbmColor);
        DrawIconEx(_drawItem.hDC, _drawItem.rcItem.left + 6, _drawItem.rcItem.top + 1, m_hIcon, 0, 0, 0,
                   nullptr, DI_NORMAL);
    }
    RECT rcText = _drawItem.rcItem;
    rcText.left += 6 + nIconWidth + 6;
    SetBkMode(_drawItem.hDC, TRANSPARENT);
    // The bar's DC comes with black text: in a high-contrast set with a black face it would not be seen.
    SetTextColor(_drawItem.hDC, GetSysColor(COLOR_BTNTEXT));
    DrawTextW(_drawItem.hDC, m_sText, m_sText.GetLength(), &rcText, DT_SINGLELINE | DT_VCENTER);
    m_rect = _drawItem.rcItem;
    return 1;
}

HMENU UQStatusBarItem::mf_getContextMenu(int _nX, int _nY) {
    static const wchar_t* const _sFunction_ = L"UQStatusBarItem::mf_onContextMenu";
    const POINT point = {_nX, _nY};
    if (!PtInRect(&m_rect, point))
        return nullptr;
    if (!m_bContextMenuEnabled) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"%s: Context menu is disabled", mf_getName());
        return nullptr;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"%s: Context menu ...", mf_getName());
    return m_hContextMenu;
}

void UQStatusBarItem::mf_implRepaint() {
    RedrawWindow(m_hStatusBar, nullptr, nullptr, RDW_INVALIDATE);
}
