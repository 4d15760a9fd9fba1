#include "guibase/toolkit/UQDialogDpiLayout.h"

#include "guibase/toolkit/UQDpi.h"

namespace {

int scaled(LONG _lValue, UINT _uDpi, UINT _uFirstDpi) {
    return MulDiv(static_cast<int>(_lValue), static_cast<int>(_uDpi), static_cast<int>(_uFirstDpi));
}

} // namespace

UQDialogDpiLayout::UQDialogDpiLayout() noexcept : m_hDlg(nullptr), m_uFirstDpi(0), m_uDpi(0) {}

UQDialogDpiLayout::UQDialogDpiLayout(const UQDialogDpiLayout&) noexcept : UQDialogDpiLayout() {}

UQDialogDpiLayout::~UQDialogDpiLayout() {
    mf_release();
}

void UQDialogDpiLayout::mf_capture(HWND _hDlg) {
    mf_release();
    if (_hDlg == nullptr)
        return;
    m_hDlg = _hDlg;
    m_uFirstDpi = UQDpi::mf_getWindowDpi(_hDlg);
    m_uDpi = m_uFirstDpi;
    for (HWND hChild = GetWindow(_hDlg, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        Control control = {hChild, {}, reinterpret_cast<HFONT>(SendMessageW(hChild, WM_GETFONT, 0, 0))};
        GetWindowRect(hChild, &control.rect);
        MapWindowPoints(nullptr, _hDlg, reinterpret_cast<POINT*>(&control.rect), 2);
        m_controls.push_back(control);
    }
    // The library scales the dialog; the dialog manager would scale it a second time.
    UQDpi::mf_setDialogDpiChangeBehavior(_hDlg, UQDpi::DIALOG_KEEPS_ITS_LAYOUT,
                                         UQDpi::DIALOG_KEEPS_ITS_LAYOUT);
}

void UQDialogDpiLayout::mf_apply(UINT _uDpi, const RECT* _pSuggested) {
    if (m_hDlg == nullptr || _uDpi == 0)
        return;
    if (_pSuggested != nullptr)
        SetWindowPos(m_hDlg, nullptr, _pSuggested->left, _pSuggested->top,
                     _pSuggested->right - _pSuggested->left, _pSuggested->bottom - _pSuggested->top,
                     SWP_NOZORDER | SWP_NOACTIVATE);
    // Made before anything changes, so that nothing after it can fail half-way.
    std::vector<std::pair<HFONT, HFONT>> fonts;
    fonts.reserve(m_controls.size());
    if (_uDpi != m_uFirstDpi) {
        for (const Control& control : m_controls) {
            bool bKnown = control.hFont == nullptr;
            for (const auto& font : fonts)
                bKnown = bKnown || font.first == control.hFont;
            LOGFONTW logFont = {};
            if (bKnown || GetObjectW(control.hFont, sizeof logFont, &logFont) == 0)
                continue;
            logFont.lfHeight = scaled(logFont.lfHeight, _uDpi, m_uFirstDpi);
            logFont.lfWidth = scaled(logFont.lfWidth, _uDpi, m_uFirstDpi);
            HFONT hScaled = CreateFontIndirectW(&logFont);
            if (hScaled != nullptr)
                fonts.emplace_back(control.hFont, hScaled);
        }
    }
    // The fonts of the DPI before go once no control uses them any longer.
    fonts.swap(m_fonts);
    m_uDpi = _uDpi;
    // Edges are scaled, not sizes, so that controls side by side stay side by side.
    for (const Control& control : m_controls) {
        if (!IsWindow(control.hWnd))
            continue;
        HFONT hFont = control.hFont;
        for (const auto& font : m_fonts)
            if (font.first == control.hFont)
                hFont = font.second;
        if (hFont != nullptr)
            SendMessageW(control.hWnd, WM_SETFONT, reinterpret_cast<WPARAM>(hFont), FALSE);
        const int nLeft = scaled(control.rect.left, _uDpi, m_uFirstDpi);
        const int nTop = scaled(control.rect.top, _uDpi, m_uFirstDpi);
        SetWindowPos(control.hWnd, nullptr, nLeft, nTop,
                     scaled(control.rect.right, _uDpi, m_uFirstDpi) - nLeft,
                     scaled(control.rect.bottom, _uDpi, m_uFirstDpi) - nTop, SWP_NOZORDER | SWP_NOACTIVATE);
    }
    RedrawWindow(m_hDlg, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_ALLCHILDREN);
    for (const auto& font : fonts)
        DeleteObject(font.second);
}

void UQDialogDpiLayout::mf_release() noexcept {
    for (const auto& font : m_fonts)
        DeleteObject(font.second);
    m_fonts.clear();
    m_controls.clear();
    m_hDlg = nullptr;
    m_uFirstDpi = 0;
    m_uDpi = 0;
}
