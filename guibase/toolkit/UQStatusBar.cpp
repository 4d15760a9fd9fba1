#include "guibase/toolkit/UQStatusBar.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQDpi.h"
#include "guibase/toolkit/UQMenu.h"
#include "guibase/toolkit/UQStatusBarAccessible.h"
#include "guibase/toolkit/UQToolkitReport.h"

#include <commctrl.h>

#include <vector>

namespace {

const UINT_PTR BAR_SUBCLASS = 1;
const UINT_PTR PARENT_SUBCLASS = 2;
// The font the bar made for a DPI other than the system's; the bar's window keeps it and deletes it.
const wchar_t* const DPI_FONT = L"UQStatusBar.font";

void replaceFont(HWND _hBar, HFONT _hFont) {
    HFONT hOld = static_cast<HFONT>(GetPropW(_hBar, DPI_FONT));
    if (_hFont != nullptr)
        SetPropW(_hBar, DPI_FONT, _hFont);
    else
        RemovePropW(_hBar, DPI_FONT);
    SendMessageW(_hBar, WM_SETFONT, reinterpret_cast<WPARAM>(_hFont), TRUE);
    if (hOld != nullptr)
        DeleteObject(hOld);
}

int systemDpi() {
    HDC hScreen = GetDC(nullptr);
    const int nDpi = hScreen != nullptr ? GetDeviceCaps(hScreen, LOGPIXELSY) : 96;
    if (hScreen != nullptr)
        ReleaseDC(nullptr, hScreen);
    return nDpi > 0 ? nDpi : 96;
}

} // namespace

UQStatusBar::UQStatusBar()
    : m_hStatusBar(nullptr), m_nWindowHeight(0), m_hContextMenus(nullptr), m_bOwner(1) {}

UQStatusBar::UQStatusBar(const UQStatusBar& _other)
    : m_hStatusBar(_other.m_hStatusBar), m_nWindowHeight(_other.m_nWindowHeight),
      m_hContextMenus(_other.m_hContextMenus), m_bOwner(0) {
    m_apItems.Copy(_other.m_apItems);
}

UQStatusBar::~UQStatusBar() {
    static const wchar_t* const _sFunction_ = L"UQStatusBar::~UQStatusBar";
    if (!m_bOwner)
        return;
    if (m_hStatusBar != nullptr && IsWindow(m_hStatusBar)) {
        RemoveWindowSubclass(m_hStatusBar, &UQStatusBar::mf_implBarProcedure, BAR_SUBCLASS);
        RemoveWindowSubclass(GetParent(m_hStatusBar), &UQStatusBar::mf_implParentProcedure, PARENT_SUBCLASS);
    }
    if (m_hContextMenus != nullptr)
        DestroyMenu(m_hContextMenus);
    for (INT_PTR i = 0; i < m_apItems.GetSize(); ++i) {
        try {
            delete m_apItems[i];
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure deleting status bar item no %d:\r\n%s%s",
                                    static_cast<int>(i));
        }
    }
    m_apItems.RemoveAll();
}

void UQStatusBar::mf_addItem(UQStatusBarItem* _pStatusBarItem) {
    static const wchar_t* const _sFunction_ = L"UQStatusBar::mf_addItem";
    if (_pStatusBarItem == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"NULL == _pStatusBarItem");
    m_apItems.Add(_pStatusBarItem);
}

int UQStatusBar::mf_onInitDialog(HWND _hParent, HMENU _hContextMenus) {
    m_hStatusBar = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE, 0, 0, 0, 0, _hParent,
                                   reinterpret_cast<HMENU>(static_cast<INT_PTR>(CONTROL_ID)),
                                   UQLanguage::mf_getUserLanguageHandle(), nullptr);
    m_hContextMenus = _hContextMenus;
    if (m_hStatusBar != nullptr) {
        SetWindowSubclass(m_hStatusBar, &UQStatusBar::mf_implBarProcedure, BAR_SUBCLASS,
                          reinterpret_cast<DWORD_PTR>(this));
        SetWindowSubclass(_hParent, &UQStatusBar::mf_implParentProcedure, PARENT_SUBCLASS,
                          reinterpret_cast<DWORD_PTR>(this));
        // The bar places itself and sizes its parts from its width; the dialog manager's scaling would fight
        // it.
        UQDpi::mf_setDialogControlDpiChangeBehavior(m_hStatusBar, UQDpi::CONTROL_KEEPS_ITS_LAYOUT,
                                                    UQDpi::CONTROL_KEEPS_ITS_LAYOUT);
    }
    mf_implSetStatusBarParts();
    for (INT_PTR i = 0; i < m_apItems.GetSize(); ++i) {
        HMENU hMenu = nullptr;
        if (m_hContextMenus != nullptr) {
            CString sTitle;
            sTitle.Format(L"%d", static_cast<int>(i));
            hMenu = UQMenu::mf_getSubMenuByTitle(m_hContextMenus, sTitle);
        }
        m_apItems[i]->mf_onInitDialog(m_hStatusBar, hMenu);
        SendMessageW(m_hStatusBar, SB_SETTEXTW, static_cast<WPARAM>(i) | SBT_OWNERDRAW, 0);
    }
    RECT rc = {0, 0, 0, 0};
    GetClientRect(m_hStatusBar, &rc);
    m_nWindowHeight = rc.bottom - rc.top;
    return 1;
}

void UQStatusBar::mf_implSetStatusBarParts() {
    static const wchar_t* const _sFunction_ = L"UQStatusBar::mf_implSetStatusBarParts";
    RECT rc = {0, 0, 0, 0};
    GetClientRect(m_hStatusBar, &rc);
    const long lWidth = rc.right - rc.left;
    // An entry past 102 percent keeps the value it was given here; the control then sorts it out.
    std::vector<int> edges(static_cast<std::size_t>(m_apItems.GetSize()), 0);
    unsigned long ulSum = 0;
    for (INT_PTR i = 0; i < m_apItems.GetSize(); ++i) {
        ulSum += m_apItems[i]->mf_getWidth();
        if (ulSum >= 103)
            UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_,
                             L"Statusbar item %d width exceeds total width (%lu%c)", static_cast<int>(i),
                             ulSum, L'%');
        else if (ulSum >= 98)
            edges[static_cast<std::size_t>(i)] = -1;
        else
            edges[static_cast<std::size_t>(i)] = static_cast<int>(lWidth * static_cast<long>(ulSum) / 100);
    }
    SetLastError(0);
    if (!SendMessageW(m_hStatusBar, SB_SETPARTS, static_cast<WPARAM>(edges.size()),
                      reinterpret_cast<LPARAM>(edges.data()))) {
        const UQErrno error = UQToolkitReport::mf_systemError(UQErrno::_E_::Gui);
        // The format has no placeholders for the tab and the error: the record ends with the line break.
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure setting parts:\r\n", UQLog::TAB,
                         error.mf_toString());
    }
}

int UQStatusBar::mf_onSizeEvent(int, int) {
    SetWindowPos(m_hStatusBar, nullptr, 0, 0, 0, 0, SWP_NOZORDER);
    mf_implSetStatusBarParts();
    return 1;
}

int UQStatusBar::mf_onDrawItem(const DRAWITEMSTRUCT& _drawItem) {
    if (_drawItem.CtlID != static_cast<UINT>(CONTROL_ID))
        return 0;
    return m_apItems.GetAt(static_cast<INT_PTR>(_drawItem.itemID))->mf_onDrawItem(_drawItem);
}

void UQStatusBar::mf_update() {
    static const wchar_t* const _sFunction_ = L"UQStatusBar::mf_update";
    for (INT_PTR i = 0; i < m_apItems.GetSize(); ++i) {
        try {
            m_apItems[i]->mf_update();
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure updating item %d (%s):\r\n%s%s",
                                    static_cast<int>(i), m_apItems[i]->mf_getName());
        }
    }
}

HMENU UQStatusBar::mf_getContextMenu(int _nX, int _nY) {
    for (INT_PTR i = 0; i < m_apItems.GetSize(); ++i) {
        HMENU hMenu = m_apItems[i]->mf_getContextMenu(_nX, _nY);
        if (hMenu != nullptr)
            return hMenu;
    }
    return nullptr;
}

LRESULT CALLBACK UQStatusBar::mf_implBarProcedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam,
                                                  UINT_PTR, DWORD_PTR _dwBar) noexcept {
    static const wchar_t* const _sFunction_ = L"UQStatusBar::mf_implBarProcedure";
    const UQStatusBar* pBar = reinterpret_cast<const UQStatusBar*>(_dwBar);
    try {
        if (_uMsg == WM_GETOBJECT && static_cast<LONG>(_lParam) == OBJID_CLIENT) {
            UQStatusBarAccessible* pAccessible = new UQStatusBarAccessible(_hWnd);
            const LRESULT lResult = LresultFromObject(__uuidof(IAccessible), _wParam, pAccessible);
            pAccessible->Release();
            return lResult;
        }
        if (_uMsg == UQStatusBarAccessible::mf_textMessage()) {
            const INT_PTR nPart = static_cast<INT_PTR>(_wParam);
            if (nPart >= pBar->m_apItems.GetSize() || _lParam == 0)
                return 0;
            *reinterpret_cast<CString*>(_lParam) = pBar->m_apItems[nPart]->mf_getText();
            return 1;
        }
        if (_uMsg == UQStatusBarAccessible::mf_changedMessage()) {
            for (INT_PTR i = 0; i < pBar->m_apItems.GetSize(); ++i) {
                if (reinterpret_cast<LPARAM>(pBar->m_apItems[i]) == _lParam) {
                    NotifyWinEvent(EVENT_OBJECT_NAMECHANGE, _hWnd, OBJID_CLIENT, static_cast<LONG>(i + 1));
                    return 1;
                }
            }
            return 0;
        }
        if (_uMsg == WM_NCDESTROY) {
            RemoveWindowSubclass(_hWnd, &UQStatusBar::mf_implBarProcedure, BAR_SUBCLASS);
            // A bar destroyed before its dialog must not leave the dialog pointing at it.
            RemoveWindowSubclass(GetParent(_hWnd), &UQStatusBar::mf_implParentProcedure, PARENT_SUBCLASS);
            replaceFont(_hWnd, nullptr);
        }
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure answering message %u", _uMsg);
    }
    return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
}

LRESULT CALLBACK UQStatusBar::mf_implParentProcedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam,
                                                     UINT_PTR, DWORD_PTR _dwBar) noexcept {
    static const wchar_t* const _sFunction_ = L"UQStatusBar::mf_implParentProcedure";
    if (_uMsg == WM_NCDESTROY) {
        RemoveWindowSubclass(_hWnd, &UQStatusBar::mf_implParentProcedure, PARENT_SUBCLASS);
        return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    }
    if (_uMsg != WM_DPICHANGED)
        return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    // The dialog answers first; on Windows its default handling may already have taken the rectangle.
    const LRESULT lResult = DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
    try {
        const RECT* pSuggested = reinterpret_cast<const RECT*>(_lParam);
        if (pSuggested != nullptr)
            SetWindowPos(_hWnd, nullptr, pSuggested->left, pSuggested->top,
                         pSuggested->right - pSuggested->left, pSuggested->bottom - pSuggested->top,
                         SWP_NOZORDER | SWP_NOACTIVATE);
        reinterpret_cast<UQStatusBar*>(_dwBar)->mf_implApplyDpi(HIWORD(_wParam));
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure answering message %u", _uMsg);
    }
    return lResult;
}

void UQStatusBar::mf_implApplyDpi(UINT _uDpi) {
    if (m_hStatusBar == nullptr || _uDpi == 0)
        return;
    // The system's message font at the system DPI, scaled to the new one; at the system DPI the control's
    // own font comes back.
    const int nSystemDpi = systemDpi();
    HFONT hFont = nullptr;
    if (static_cast<int>(_uDpi) != nSystemDpi) {
        NONCLIENTMETRICSW metrics = {};
        metrics.cbSize = sizeof(metrics);
        if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) {
            metrics.lfMessageFont.lfHeight =
                MulDiv(metrics.lfMessageFont.lfHeight, static_cast<int>(_uDpi), nSystemDpi);
            hFont = CreateFontIndirectW(&metrics.lfMessageFont);
        }
    }
    replaceFont(m_hStatusBar, hFont);
    // A status bar takes its height from its font when it is sized, and its place from its parent.
    SetWindowPos(m_hStatusBar, nullptr, 0, 0, 0, 0, SWP_NOZORDER);
    mf_implSetStatusBarParts();
    RECT rc = {0, 0, 0, 0};
    GetClientRect(m_hStatusBar, &rc);
    m_nWindowHeight = rc.bottom - rc.top;
    InvalidateRect(m_hStatusBar, nullptr, TRUE);
}
