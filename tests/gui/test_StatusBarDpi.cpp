// The status bar re-lays itself out when its dialog's DPI changes. Wine never sends WM_DPICHANGED, so the
// test sends it as Windows would: the new DPI and the rectangle suggested for the dialog.
#include "ToolkitTestIds.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQStatusBar.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <memory>

namespace {

int fontHeightOf(HWND _hWnd) {
    HFONT hFont = reinterpret_cast<HFONT>(SendMessageW(_hWnd, WM_GETFONT, 0, 0));
    if (hFont == nullptr)
        hFont = static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
    LOGFONTW font = {};
    GetObjectW(hFont, sizeof(font), &font);
    return font.lfHeight < 0 ? -font.lfHeight : font.lfHeight;
}

int systemDpi() {
    HDC hScreen = GetDC(nullptr);
    const int nDpi = GetDeviceCaps(hScreen, LOGPIXELSY);
    ReleaseDC(nullptr, hScreen);
    return nDpi;
}

RECT windowRect(HWND _hWnd) {
    RECT rc = {};
    GetWindowRect(_hWnd, &rc);
    return rc;
}

RECT clientRect(HWND _hWnd) {
    RECT rc = {};
    GetClientRect(_hWnd, &rc);
    return rc;
}

} // namespace

TEST(StatusBarDpi, OnADoubledDpiTheDialogTakesTheSuggestedRectangleAndTheBarItsFontHeightAndParts) {
    toolkittest::initCommonControls();
    UQStatusBar bar;
    bar.mf_addItem(new toolkittest::NamedStatusItem(40, L"Files"));
    bar.mf_addItem(new toolkittest::NamedStatusItem(60, L"Store"));
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                   toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&bar));
    ASSERT_NE(hDlg, nullptr);
    bar.mf_onInitDialog(hDlg, nullptr);
    ShowWindow(hDlg, SW_SHOW);
    toolkittest::setClientSize(hDlg, 400, 100);
    toolkittest::pumpMessages();
    const HWND hBar = bar.mf_getWindowHandle();
    const int nDpi = systemDpi();
    const int nFontBefore = fontHeightOf(hBar);
    const int nHeightBefore = clientRect(hBar).bottom;
    ASSERT_EQ(bar.mf_getWindowHeight(), nHeightBefore);

    const RECT rcBefore = windowRect(hDlg);
    RECT rcSuggested = {rcBefore.left, rcBefore.top, rcBefore.left + 2 * (rcBefore.right - rcBefore.left),
                        rcBefore.top + 2 * (rcBefore.bottom - rcBefore.top)};
    SendMessageW(hDlg, WM_DPICHANGED, MAKEWPARAM(2 * nDpi, 2 * nDpi), reinterpret_cast<LPARAM>(&rcSuggested));
    toolkittest::pumpMessages();

    const RECT rcAfter = windowRect(hDlg);
    EXPECT_EQ(rcAfter.right - rcAfter.left, rcSuggested.right - rcSuggested.left);
    EXPECT_EQ(rcAfter.bottom - rcAfter.top, rcSuggested.bottom - rcSuggested.top);
    EXPECT_NEAR(fontHeightOf(hBar), 2 * nFontBefore, 1);
    const int nHeightAfter = clientRect(hBar).bottom;
    EXPECT_GE(nHeightAfter, nHeightBefore + nFontBefore * 3 / 4) << "the bar grows with its font";
    EXPECT_EQ(bar.mf_getWindowHeight(), nHeightAfter);
    // At the foot of the dialog, as wide as it, the first part 40 % of it.
    const RECT rcClient = clientRect(hDlg);
    RECT rcBar = windowRect(hBar);
    MapWindowPoints(nullptr, hDlg, reinterpret_cast<POINT*>(&rcBar), 2);
    EXPECT_EQ(rcBar.bottom, rcClient.bottom);
    EXPECT_EQ(rcBar.right - rcBar.left, rcClient.right);
    int anEdges[2] = {};
    ASSERT_EQ(SendMessageW(hBar, SB_GETPARTS, 2, reinterpret_cast<LPARAM>(anEdges)), 2);
    EXPECT_EQ(anEdges[0], clientRect(hBar).right * 40 / 100);

    // Back at the system DPI the bar is as it was.
    SendMessageW(hDlg, WM_DPICHANGED, MAKEWPARAM(nDpi, nDpi), reinterpret_cast<LPARAM>(&rcBefore));
    toolkittest::pumpMessages();
    EXPECT_EQ(fontHeightOf(hBar), nFontBefore);
    EXPECT_EQ(clientRect(hBar).bottom, nHeightBefore);
    DestroyWindow(hDlg);
}

TEST(StatusBarDpi, ABarDestroyedBeforeItsDialogNoLongerWatchesTheDialog) {
    toolkittest::initCommonControls();
    auto pBar = std::make_unique<UQStatusBar>();
    pBar->mf_addItem(new toolkittest::NamedStatusItem(100, L"Files"));
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                   toolkittest::statusBarHostProcedure, 0);
    ASSERT_NE(hDlg, nullptr);
    pBar->mf_onInitDialog(hDlg, nullptr);
    DestroyWindow(pBar->mf_getWindowHandle());
    pBar.reset();
    const RECT rcBefore = windowRect(hDlg);
    RECT rcSuggested = {rcBefore.left, rcBefore.top, rcBefore.right + 100, rcBefore.bottom + 100};
    SendMessageW(hDlg, WM_DPICHANGED, MAKEWPARAM(2 * systemDpi(), 2 * systemDpi()),
                 reinterpret_cast<LPARAM>(&rcSuggested));
    // Wine's dialog takes no rectangle by itself; Windows' per-monitor v2 dialog would.
    const RECT rcAfter = windowRect(hDlg);
    EXPECT_EQ(rcAfter.right - rcAfter.left, rcBefore.right - rcBefore.left);
    DestroyWindow(hDlg);
}
