// The progress dialogs lay themselves out again when they are told of a new DPI: the dialog takes the
// suggested rectangle, every control its place scaled by the new DPI over the old, and the dialog's font
// scaled likewise; back at the first DPI everything is as it was. Wine's dialog manager scales nothing and
// Wine never sends WM_DPICHANGED, so the test sends it as Windows would. access_tests runs it at 96 DPI (to
// 192 and back), the DPI suites at the DPI their prefix starts with (to twice that and back).
#include "DialogCatalogue.h"
#include "DialogDriver.h"
#include "ProgressTestSupport.h"

#include "korlang_ids.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace toolkittest;
using namespace progresstest;

namespace {

UINT systemDpi() {
    HDC hScreen = GetDC(nullptr);
    const int nDpi = GetDeviceCaps(hScreen, LOGPIXELSY);
    ReleaseDC(nullptr, hScreen);
    return static_cast<UINT>(nDpi);
}

struct Placed {
    HWND hWnd;
    int nId;
    RECT rect;
    HFONT hFont;
};

// The visible controls of the dialog with their places in its client area.
std::vector<Placed> controlsOf(HWND _hDlg) {
    std::vector<Placed> controls;
    for (HWND hChild = GetWindow(_hDlg, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild))
            continue;
        Placed placed = {hChild,
                         GetDlgCtrlID(hChild),
                         {},
                         reinterpret_cast<HFONT>(SendMessageW(hChild, WM_GETFONT, 0, 0))};
        GetWindowRect(hChild, &placed.rect);
        MapWindowPoints(nullptr, _hDlg, reinterpret_cast<POINT*>(&placed.rect), 2);
        controls.push_back(placed);
    }
    return controls;
}

int fontHeight(HFONT _hFont) {
    LOGFONTW font = {};
    if (_hFont == nullptr || GetObjectW(_hFont, sizeof font, &font) == 0)
        return 0;
    return std::abs(font.lfHeight);
}

bool isClass(HWND _hWnd, const wchar_t* _pszClass) {
    wchar_t szClass[64] = {0};
    GetClassNameW(_hWnd, szClass, 64);
    return lstrcmpiW(szClass, _pszClass) == 0;
}

// A label's or button's text without its access key marks, measured in the control's own font against the
// control's client width; an empty string when it fits. Texts that show data (SS_NOPREFIX) are left out.
std::string misfit(HWND _hControl) {
    const bool bStatic = isClass(_hControl, L"Static");
    if (!bStatic && !isClass(_hControl, L"Button"))
        return "";
    if (bStatic && (GetWindowLongW(_hControl, GWL_STYLE) & SS_NOPREFIX) != 0)
        return "";
    wchar_t szText[256] = {0};
    GetWindowTextW(_hControl, szText, 256);
    std::wstring text;
    for (const wchar_t* p = szText; *p != L'\0'; ++p)
        if (*p != L'&' || p[1] == L'&')
            text += *p;
    if (text.empty())
        return "";
    RECT rcClient;
    GetClientRect(_hControl, &rcClient);
    HDC hDC = GetDC(_hControl);
    HGDIOBJ hOld = SelectObject(hDC, reinterpret_cast<HFONT>(SendMessageW(_hControl, WM_GETFONT, 0, 0)));
    SIZE extent = {0, 0};
    GetTextExtentPoint32W(hDC, text.c_str(), static_cast<int>(text.size()), &extent);
    SelectObject(hDC, hOld);
    ReleaseDC(_hControl, hDC);
    if (extent.cx <= rcClient.right && extent.cy <= rcClient.bottom)
        return "";
    return utf8(CString(text.c_str())) + " needs " + std::to_string(extent.cx) + "x" +
           std::to_string(extent.cy) + " px, has " + std::to_string(rcClient.right) + "x" +
           std::to_string(rcClient.bottom);
}

std::string placeText(const RECT& _rc) {
    return "(" + std::to_string(_rc.left) + "," + std::to_string(_rc.top) + ")-(" +
           std::to_string(_rc.right) + "," + std::to_string(_rc.bottom) + ")";
}

// The rectangle Windows suggests for a dialog at a new DPI: its client area scaled, the frame around it.
RECT suggestedRectangle(HWND _hDlg, UINT _uFrom, UINT _uTo) {
    RECT rcWindow;
    GetWindowRect(_hDlg, &rcWindow);
    RECT rcClient;
    GetClientRect(_hDlg, &rcClient);
    RECT rc = {0, 0, MulDiv(rcClient.right, static_cast<int>(_uTo), static_cast<int>(_uFrom)),
               MulDiv(rcClient.bottom, static_cast<int>(_uTo), static_cast<int>(_uFrom))};
    AdjustWindowRectEx(&rc, static_cast<DWORD>(GetWindowLongW(_hDlg, GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongW(_hDlg, GWL_EXSTYLE)));
    OffsetRect(&rc, rcWindow.left - rc.left, rcWindow.top - rc.top);
    return rc;
}

// Doubles the dialog's DPI and checks the layout; back at the first DPI everything is as it was. With
// _bStayDoubled the dialog ends at the doubled DPI. The font made for it is answered in _rhDoubledFont.
void checkDoubling(HWND _hDlg, int _nBar, bool _bStayDoubled, HFONT& _rhDoubledFont,
                   std::vector<std::string>& _problems) {
    const UINT uDpi = systemDpi();
    const std::vector<Placed> before = controlsOf(_hDlg);
    RECT rcWindowBefore;
    GetWindowRect(_hDlg, &rcWindowBefore);
    const RECT rcSuggested = suggestedRectangle(_hDlg, uDpi, 2 * uDpi);
    SendMessageW(_hDlg, WM_DPICHANGED, MAKEWPARAM(2 * uDpi, 2 * uDpi),
                 reinterpret_cast<LPARAM>(&rcSuggested));
    pumpMessages();

    RECT rcWindow;
    GetWindowRect(_hDlg, &rcWindow);
    if (!EqualRect(&rcWindow, &rcSuggested))
        _problems.push_back("the dialog is at " + placeText(rcWindow) + ", not at the suggested " +
                            placeText(rcSuggested));
    RECT rcClient;
    GetClientRect(_hDlg, &rcClient);
    const std::vector<Placed> after = controlsOf(_hDlg);
    if (after.size() != before.size() || after.empty()) {
        _problems.push_back("visible controls before " + std::to_string(before.size()) + ", after " +
                            std::to_string(after.size()));
        return;
    }
    bool bBarSeen = false;
    for (std::size_t i = 0; i < after.size(); ++i) {
        const Placed& one = after[i];
        const std::string sControl = "control " + std::to_string(one.nId) + " ";
        const RECT& was = before[i].rect;
        const RECT& is = one.rect;
        if (std::abs(is.left - 2 * was.left) > 2 || std::abs(is.top - 2 * was.top) > 2 ||
            std::abs(is.right - 2 * was.right) > 2 || std::abs(is.bottom - 2 * was.bottom) > 2)
            _problems.push_back(sControl + "at " + placeText(is) + ", was at " + placeText(was) +
                                ": not scaled by 2");
        RECT rcInside;
        if (!IntersectRect(&rcInside, &is, &rcClient) || !EqualRect(&rcInside, &is))
            _problems.push_back(sControl + "at " + placeText(is) + " leaves the client area " +
                                placeText(rcClient));
        for (std::size_t j = i + 1; j < after.size(); ++j) {
            RECT rcBoth;
            if (IntersectRect(&rcBoth, &is, &after[j].rect))
                _problems.push_back(sControl + "lies over control " + std::to_string(after[j].nId));
        }
        // A control without a font of its own (the bar) draws no text.
        const int nWas = fontHeight(before[i].hFont);
        const int nIs = fontHeight(one.hFont);
        if (nWas != 0 && std::abs(nIs - 2 * nWas) > 1)
            _problems.push_back(sControl + "has a font " + std::to_string(nIs) + " px high, was " +
                                std::to_string(nWas));
        const std::string sMisfit = misfit(one.hWnd);
        if (!sMisfit.empty())
            _problems.push_back(sControl + "text does not fit: " + sMisfit);
        if (one.nId == _nBar)
            bBarSeen = true;
        if (_rhDoubledFont == nullptr && nWas != 0)
            _rhDoubledFont = one.hFont;
    }
    if (_nBar != 0 && !bBarSeen)
        _problems.push_back("no bar " + std::to_string(_nBar));
    if (_bStayDoubled)
        return;

    SendMessageW(_hDlg, WM_DPICHANGED, MAKEWPARAM(uDpi, uDpi), reinterpret_cast<LPARAM>(&rcWindowBefore));
    pumpMessages();
    const std::vector<Placed> back = controlsOf(_hDlg);
    for (std::size_t i = 0; i < back.size() && i < before.size(); ++i) {
        if (!EqualRect(&back[i].rect, &before[i].rect))
            _problems.push_back("back at " + std::to_string(uDpi) + " DPI control " +
                                std::to_string(back[i].nId) + " is at " + placeText(back[i].rect) +
                                ", was at " + placeText(before[i].rect));
        if (back[i].hFont != before[i].hFont)
            _problems.push_back("back at " + std::to_string(uDpi) + " DPI control " +
                                std::to_string(back[i].nId) + " has not its first font again");
    }
    if (_rhDoubledFont != nullptr && GetObjectType(_rhDoubledFont) != 0)
        _problems.push_back("the font made for the doubled DPI is still there");
}

// Runs one of the two dialogs with a worker that reports progress and ends when Cancel is pressed.
void runDialog(bool _bBar, bool _bStayDoubled, HFONT& _rhDoubledFont, std::vector<std::string>& _problems,
               bool& _bTimedOut) {
    DialogDriver driver(LIMIT_MS);
    driver.then([&](HWND _hDlg) {
        checkDoubling(_hDlg, _bBar ? IDC_PROGRESS_BAR : 0, _bStayDoubled, _rhDoubledFont, _problems);
        DialogDriver::click(_hDlg, _bBar ? IDC_PROGRESS_CANCEL : IDCANCEL);
    });
    DialogCatalogue::runProgress(_bBar);
    _bTimedOut = driver.timedOut();
}

} // namespace

TEST(ProgressDpi, TheBarDialogScalesItsControlsAndFontToADoubledDpiAndBack) {
    initCommonControls();
    HFONT hDoubled = nullptr;
    std::vector<std::string> problems;
    bool bTimedOut = true;
    runDialog(true, false, hDoubled, problems, bTimedOut);
    EXPECT_FALSE(bTimedOut);
    EXPECT_NE(hDoubled, nullptr);
    for (const std::string& sProblem : problems)
        ADD_FAILURE() << "progress bar dialog at " << systemDpi() << " DPI: " << sProblem;
}

TEST(ProgressDpi, ThePlainDialogScalesItsControlsAndFontToADoubledDpiAndBack) {
    initCommonControls();
    HFONT hDoubled = nullptr;
    std::vector<std::string> problems;
    bool bTimedOut = true;
    runDialog(false, false, hDoubled, problems, bTimedOut);
    EXPECT_FALSE(bTimedOut);
    EXPECT_NE(hDoubled, nullptr);
    for (const std::string& sProblem : problems)
        ADD_FAILURE() << "progress dialog at " << systemDpi() << " DPI: " << sProblem;
}

TEST(ProgressDpi, TheFontOfAnotherDpiGoesWithTheDialog) {
    initCommonControls();
    HFONT hDoubled = nullptr;
    std::vector<std::string> problems;
    bool bTimedOut = true;
    runDialog(true, true, hDoubled, problems, bTimedOut);
    EXPECT_FALSE(bTimedOut);
    for (const std::string& sProblem : problems)
        ADD_FAILURE() << "progress bar dialog at " << systemDpi() << " DPI: " << sProblem;
    ASSERT_NE(hDoubled, nullptr);
    EXPECT_EQ(GetObjectType(hDoubled), 0u) << "the font made for the doubled DPI outlived its dialog";
}
