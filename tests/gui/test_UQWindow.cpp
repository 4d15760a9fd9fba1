// UQWindow on the controls of a real dialog: item lookup, enabling, hiding, focus, texts, numbers, icons,
// fonts and text widths, with the records of every failure.
#include "ToolkitTestSupport.h"

#include "compat/UQHandle.h"
#include "guibase/toolkit/UQWindow.h"
#include "korlang_ids.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";

LogLine missingItemLine(const char* _pszFunction, int _nId, DWORD _dwError) {
    return LogLine{'E', _pszFunction,
                   "Failure getting item with id=" + std::to_string(_nId) + ":\r\n" + TAB +
                       errorText(UQErrno::_E_::ItemNotFound, _dwError)};
}

// A window class whose text length answer is longer than the text it then gives: a text that changes
// while it is read.
LRESULT CALLBACK shrinkingTextProcedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    if (_uMsg == WM_GETTEXTLENGTH)
        return 10;
    if (_uMsg == WM_GETTEXT && _wParam >= 4) {
        lstrcpyW(reinterpret_cast<LPWSTR>(_lParam), L"abc");
        return 3;
    }
    return DefWindowProcW(_hWnd, _uMsg, _wParam, _lParam);
}

HWND createShrinkingTextWindow() {
    WNDCLASSW wc;
    ZeroMemory(&wc, sizeof wc);
    wc.lpfnWndProc = shrinkingTextProcedure;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"KorShrinkingText";
    RegisterClassW(&wc);
    return CreateWindowExW(0, L"KorShrinkingText", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                           GetModuleHandleW(nullptr), nullptr);
}

LOGFONTW fontOf(HWND _hWnd) {
    LOGFONTW lf;
    ZeroMemory(&lf, sizeof lf);
    GetObjectW(reinterpret_cast<HFONT>(SendMessageW(_hWnd, WM_GETFONT, 0, 0)), sizeof lf, &lf);
    return lf;
}

} // namespace

// --- lookup -------------------------------------------------------------------------------------------

TEST(UQWindow, GetItemAnswersTheDialogsItem) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_getItem(dialog.hwnd(), IDC_EDIT), dialog.item(IDC_EDIT));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, GetItemOfAMissingIdLogsOneRecordAndAnswersNull) {
    TestDialog dialog;
    // Windows leaves ERROR_CONTROL_ID_NOT_FOUND (1421) after GetDlgItem of a missing id; Wine leaves 0.
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_getItem(dialog.hwnd(), IDC_MISSING), nullptr);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError)}));
}

TEST(UQWindow, HasItemOfAMissingIdAnswersZeroWithoutARecord) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_hasItem(dialog.hwnd(), IDC_EDIT), 1);
    EXPECT_EQ(UQWindow::mf_hasItem(dialog.hwnd(), IDC_MISSING), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, HasItemOfAWindowThatIsGoneLogsTheFailureUnderTheLookupsName) {
    HWND hGone = destroyedWindow();
    // Windows leaves ERROR_INVALID_WINDOW_HANDLE after GetDlgItem of a window that is gone; Wine leaves 0,
    // which reads as a missing item.
    SetLastError(0);
    GetDlgItem(hGone, IDC_EDIT);
    const DWORD dwError = GetLastError();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_hasItem(hGone, IDC_EDIT), 0);
    if (dwError == 0) {
        EXPECT_EQ(log.lines(), std::vector<LogLine>{});
    } else {
        EXPECT_EQ(dwError, static_cast<DWORD>(ERROR_INVALID_WINDOW_HANDLE));
        EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQWindow::mf_getItem",
                                                      "Failure checking item existence, id=1003:\r\n" + TAB +
                                                          errorText(UQErrno::_E_::ItemNotFound, dwError)}}));
    }
}

// --- enabling, hiding, focus --------------------------------------------------------------------------

TEST(UQWindow, EnableItemDisablesAndEnablesTheControl) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_enableItem(dialog.hwnd(), IDC_EDIT, 0), 1);
    EXPECT_FALSE(IsWindowEnabled(dialog.item(IDC_EDIT)));
    EXPECT_EQ(UQWindow::mf_enable(dialog.item(IDC_EDIT), 1), 1);
    EXPECT_TRUE(IsWindowEnabled(dialog.item(IDC_EDIT)));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, EnableOfAWindowThatIsGoneLogsAGuiFailure) {
    HWND hGone = destroyedWindow();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_enable(hGone, 0), 0);
    EXPECT_EQ(UQWindow::mf_enable(hGone, 1), 0);
    const std::string error = errorText(UQErrno::_E_::Gui, ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQWindow::mf_enable", "Failure disabling window:\r\n" + TAB + error},
                               {'E', "UQWindow::mf_enable", "Failure enabling window:\r\n" + TAB + error}}));
}

TEST(UQWindow, EnableItemOfAMissingItemLeavesTwoRecords) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_enableItem(dialog.hwnd(), IDC_MISSING, 1), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                                    missingItemLine("UQWindow::mf_enableItem", IDC_MISSING, dwError)}));
}

TEST(UQWindow, HideItemHidesAndShowsTheControl) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_hideItem(dialog.hwnd(), IDC_CHECK, 1), 1);
    EXPECT_FALSE(IsWindowVisible(dialog.item(IDC_CHECK)));
    // Wine leaves ERROR_ACCESS_DENIED after showing a child window; it is shown all the same.
    EXPECT_EQ(UQWindow::mf_hide(dialog.item(IDC_CHECK), 0), 1);
    EXPECT_TRUE(IsWindowVisible(dialog.item(IDC_CHECK)));
    EXPECT_EQ(UQWindow::mf_hideItem(dialog.hwnd(), IDC_CHECK, 0), 1) << "showing a shown control";
    EXPECT_EQ(log.lines(), std::vector<LogLine>{});
}

TEST(UQWindow, HideOfAWindowThatIsGoneLogsAGuiFailure) {
    HWND hGone = destroyedWindow();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_hide(hGone, 1), 0);
    EXPECT_EQ(UQWindow::mf_hide(hGone, 0), 0);
    const std::string error = errorText(UQErrno::_E_::Gui, ERROR_INVALID_WINDOW_HANDLE);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQWindow::mf_hide", "Failure hiding window:\r\n" + TAB + error},
                               {'E', "UQWindow::mf_hide", "Failure showing window:\r\n" + TAB + error}}));
}

TEST(UQWindow, HideItemOfAMissingItemLogsUnderTheNameOfEnableItem) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_hideItem(dialog.hwnd(), IDC_MISSING, 1), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                                    missingItemLine("UQWindow::mf_enableItem", IDC_MISSING, dwError)}));
}

TEST(UQWindow, FocusItemGivesTheControlTheKeyboardFocus) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_focusItem(dialog.hwnd(), IDC_COMBO), 1);
    EXPECT_TRUE(GetFocus() == dialog.item(IDC_COMBO) || IsChild(dialog.item(IDC_COMBO), GetFocus()));
    EXPECT_EQ(UQWindow::mf_focus(dialog.item(IDC_EDIT)), 1);
    EXPECT_EQ(GetFocus(), dialog.item(IDC_EDIT));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, FocusOfAWindowThatIsGoneLogsAGuiFailure) {
    HWND hGone = destroyedWindow();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_focus(hGone), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWindow::mf_focus",
                                     "Failure focusing window:\r\n" + TAB +
                                         errorText(UQErrno::_E_::Gui, ERROR_INVALID_WINDOW_HANDLE)}}));
}

TEST(UQWindow, FocusItemOfAMissingItemLeavesTwoRecords) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_focusItem(dialog.hwnd(), IDC_MISSING), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                                    missingItemLine("UQWindow::mf_focusItem", IDC_MISSING, dwError)}));
}

// --- texts --------------------------------------------------------------------------------------------

TEST(UQWindow, SetItemTextAndGetItemTextRoundTrip) {
    TestDialog dialog;
    LogCheck log;
    const CString sText(L"C:\\Program Files\\Stormex\\kor.opt \x00e4\x20ac");
    EXPECT_EQ(UQWindow::mf_setItemText(dialog.hwnd(), IDC_EDIT, sText), 1);
    CString sRead(L"stale");
    UQWindow::mf_getItemText(dialog.hwnd(), IDC_EDIT, sRead);
    EXPECT_EQ(sRead, sText);
    EXPECT_EQ(UQWindow::mf_setText(dialog.item(IDC_EDIT), CString()), 1);
    UQWindow::mf_getText(dialog.item(IDC_EDIT), sRead);
    EXPECT_EQ(sRead, L"");
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, SetTextOfAWindowThatIsGoneLogsItemNotFound) {
    HWND hGone = destroyedWindow();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setText(hGone, L"x"), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQWindow::mf_setText",
                                "Failure setting window text:\r\n" + TAB +
                                    errorText(UQErrno::_E_::ItemNotFound, ERROR_INVALID_WINDOW_HANDLE)}}));
}

TEST(UQWindow, GetItemTextOfAMissingItemAnswersAnEmptyTextNotItemNotFound) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    CString sText(L"stale");
    UQWindow::mf_getItemText(dialog.hwnd(), IDC_MISSING, sText);
    EXPECT_EQ(sText, L"");
    // The text is then read from the null handle, which has no text length to give.
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                               missingItemLine("UQWindow::mf_getItemText", IDC_MISSING, dwError),
                               {'D', "UQWindow::mf_getText",
                                "Window text length is 0, errno:\r\n" + TAB +
                                    errorText(UQErrno::_W_::ItemNotFound, ERROR_INVALID_WINDOW_HANDLE)}}));
}

TEST(UQWindow, GetTextOfATextThatChangesWhileReadAnswersTheFailureText) {
    HWND hWnd = createShrinkingTextWindow();
    ASSERT_NE(hWnd, nullptr);
    LogCheck log;
    CString sText;
    UQWindow::mf_getText(hWnd, sText);
    EXPECT_EQ(sText, L"<failure getting window text>");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'D', "UQWindow::mf_getText",
                                                  "Failure getting window text:\r\n" + TAB +
                                                      errorText(UQErrno::_E_::BufferTooSmall, 0)}}));
    DestroyWindow(hWnd);
}

TEST(UQWindow, HasTextTellsAnEmptyFromAFilledControl) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_hasItemText(dialog.hwnd(), IDC_EDIT), 0);
    SetWindowTextW(dialog.item(IDC_EDIT), L"x");
    EXPECT_EQ(UQWindow::mf_hasText(dialog.item(IDC_EDIT)), 1);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, HasTextOfAWindowThatIsGoneThrowsAfterItsRecord) {
    HWND hGone = destroyedWindow();
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { UQWindow::mf_hasText(hGone); }), "_W_::ItemNotFound");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQWindow::mf_hasText",
                                "Window text length is 0, errno:\r\n" + TAB +
                                    errorText(UQErrno::_W_::ItemNotFound, ERROR_INVALID_WINDOW_HANDLE)}}));
}

TEST(UQWindow, HasItemTextOfAMissingItemThrowsAfterTwoRecords) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { UQWindow::mf_hasItemText(dialog.hwnd(), IDC_MISSING); }),
              "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                                    missingItemLine("UQWindow::mf_hasItemText", IDC_MISSING, dwError)}));
}

// --- numbers ------------------------------------------------------------------------------------------

class UQWindowNumbers : public ::testing::Test {
protected:
    void SetUp() override { UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", L'.'); }
    void TearDown() override { UQNumberFormatter::mf_resetConfiguration(); }
};

TEST_F(UQWindowNumbers, SetNumberWritesTheConfiguredGrouping) {
    TestDialog dialog;
    EXPECT_EQ(UQWindow::mf_setItemNumber(dialog.hwnd(), IDC_EDIT, 1234567), 1);
    CString sText;
    UQWindow::mf_getItemText(dialog.hwnd(), IDC_EDIT, sText);
    EXPECT_EQ(sText, L"1.234.567");
    EXPECT_EQ(UQWindow::mf_setNumber(dialog.item(IDC_EDIT), -42), 1);
    UQWindow::mf_getText(dialog.item(IDC_EDIT), sText);
    EXPECT_EQ(sText, L"-42");
}

TEST_F(UQWindowNumbers, GetNumberReadsGroupedTextsAndAnswersZeroForNoNumber) {
    TestDialog dialog;
    HWND hEdit = dialog.item(IDC_EDIT);
    SetWindowTextW(hEdit, L"1.234.567");
    EXPECT_EQ(UQWindow::mf_getNumber(hEdit), 1234567);
    SetWindowTextW(hEdit, L" -17");
    EXPECT_EQ(UQWindow::mf_getItemNumber(dialog.hwnd(), IDC_EDIT), -17);
    SetWindowTextW(hEdit, L"twelve");
    EXPECT_EQ(UQWindow::mf_getNumber(hEdit), 0);
    SetWindowTextW(hEdit, L"");
    EXPECT_EQ(UQWindow::mf_getNumber(hEdit), 0);
}

TEST_F(UQWindowNumbers, SetItemNumberOfAMissingItemLogsUnderSetItemText) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setItemNumber(dialog.hwnd(), IDC_MISSING, 5), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                                    missingItemLine("UQWindow::mf_setItemText", IDC_MISSING, dwError)}));
}

// --- icons --------------------------------------------------------------------------------------------

TEST(UQWindow, SetIconGivesADialogItsSmallIconAndAStaticControlItsIcon) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setIcon(dialog.hwnd(), IDI_SEVERITY_GREEN), 1);
    HICON hDialogIcon = reinterpret_cast<HICON>(SendMessageW(dialog.hwnd(), WM_GETICON, ICON_SMALL, 0));
    EXPECT_NE(hDialogIcon, nullptr);
    EXPECT_EQ(UQWindow::mf_setItemIcon(dialog.hwnd(), IDC_STATIC_ICON, IDI_SEVERITY_RED), 1);
    HICON hStaticIcon =
        reinterpret_cast<HICON>(SendMessageW(dialog.item(IDC_STATIC_ICON), STM_GETICON, 0, 0));
    ASSERT_NE(hStaticIcon, nullptr);
    EXPECT_NE(hStaticIcon, hDialogIcon);
    ICONINFO info;
    ASSERT_TRUE(GetIconInfo(hStaticIcon, &info));
    BITMAP bitmap;
    GetObjectW(info.hbmMask, sizeof bitmap, &bitmap);
    EXPECT_EQ(bitmap.bmWidth, GetSystemMetrics(SM_CXSMICON));
    DeleteObject(info.hbmMask);
    if (info.hbmColor != nullptr)
        DeleteObject(info.hbmColor);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, SetIconOfAnIconTheModuleLacksAnswersZeroWithoutARecord) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setItemIcon(dialog.hwnd(), IDC_STATIC_ICON, 9999), 0);
    EXPECT_EQ(SendMessageW(dialog.item(IDC_STATIC_ICON), STM_GETICON, 0, 0), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQWindow, SetItemIconOfAMissingItemLogsUnderTheHandleFormsName) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setItemIcon(dialog.hwnd(), IDC_MISSING, IDI_SEVERITY_GREEN), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                                    missingItemLine("UQWindow::mf_setIcon", IDC_MISSING, dwError)}));
}

// --- fonts --------------------------------------------------------------------------------------------

TEST(UQWindow, SetFontAttributesGivesABoldUnderlinedCopyThatKeepsTheRest) {
    TestDialog dialog;
    HWND hLabel = dialog.item(IDC_LABEL);
    // An italic font first, to see that what is not asked for stays.
    LOGFONTW italic = fontOf(hLabel);
    italic.lfItalic = 1;
    const UQFont italicFont(CreateFontIndirectW(&italic));
    HFONT hItalic = italicFont.mf_get();
    SendMessageW(hLabel, WM_SETFONT, reinterpret_cast<WPARAM>(hItalic), FALSE);
    LogCheck log;

    const UQFont boldFont(UQWindow::mf_setItemFontAttributes(dialog.hwnd(), IDC_LABEL, 1, 1));
    HFONT hBold = boldFont.mf_get();
    ASSERT_NE(hBold, nullptr);
    EXPECT_EQ(reinterpret_cast<HFONT>(SendMessageW(hLabel, WM_GETFONT, 0, 0)), hBold);
    const LOGFONTW bold = fontOf(hLabel);
    EXPECT_EQ(bold.lfWeight, 700);
    EXPECT_EQ(bold.lfUnderline, 1);
    EXPECT_EQ(bold.lfItalic, 1);
    EXPECT_EQ(bold.lfHeight, italic.lfHeight);
    EXPECT_STREQ(bold.lfFaceName, italic.lfFaceName);

    const UQFont plainFont(UQWindow::mf_setFontAttributes(hLabel, 0, 0));
    ASSERT_TRUE(plainFont);
    const LOGFONTW plain = fontOf(hLabel);
    EXPECT_EQ(plain.lfWeight, 400);
    EXPECT_EQ(plain.lfUnderline, 0);
    EXPECT_EQ(plain.lfItalic, 1);
    EXPECT_EQ(log.count(), 0u);

    // The fonts are deleted once the label no longer uses them.
    SendMessageW(hLabel, WM_SETFONT, 0, FALSE);
}

TEST(UQWindow, SetFontAttributesOfAWindowWithoutAFontLogsAtTheGuiLevel) {
    HWND hWnd = CreateWindowExW(0, L"Static", L"no font", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                GetModuleHandleW(nullptr), nullptr);
    ASSERT_EQ(SendMessageW(hWnd, WM_GETFONT, 0, 0), 0);
    LOGFONTW lf;
    SetLastError(0);
    GetObjectW(nullptr, sizeof lf, &lf);
    const DWORD dwError = GetLastError();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setFontAttributes(hWnd, 1, 0), nullptr);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'G', "UQWindow::mf_setFontAttributes",
                                                  "Failure getting original font information:\r\n" + TAB +
                                                      errorText(UQErrno::_E_::Gui, dwError)}}));
    DestroyWindow(hWnd);
}

TEST(UQWindow, SetItemFontAttributesOfAMissingItemAnswersNull) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_setItemFontAttributes(dialog.hwnd(), IDC_MISSING, 1, 1), nullptr);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               missingItemLine("UQWindow::mf_getItem", IDC_MISSING, dwError),
                               missingItemLine("UQWindow::mf_setItemFontAttributes", IDC_MISSING, dwError)}));
}

// --- text width ---------------------------------------------------------------------------------------

TEST(UQWindow, GetTextWidthMeasuresInTheWindowsDeviceContext) {
    TestDialog dialog;
    HWND hList = dialog.item(IDC_LIST);
    HDC hDC = GetDC(hList);
    SIZE expected = {0, 0};
    GetTextExtentPoint32W(hDC, L"Management class", 16, &expected);
    ReleaseDC(hList, hDC);
    ASSERT_GT(expected.cx, 0);
    LogCheck log;
    const int nWidth = UQWindow::mf_getTextWidth(hList, L"Management class");
    EXPECT_EQ(nWidth, expected.cx);
    EXPECT_GT(nWidth, UQWindow::mf_getTextWidth(hList, L"Class"));
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], (LogLine{'D', "UQWindow::mf_getTextWidth",
                                 "Width of string 'Management class': " + std::to_string(expected.cx)}));
    EXPECT_EQ(lines[1].function, "UQWindow::mf_getTextWidth");
}

TEST(UQWindow, GetTextWidthOfAWindowThatIsGoneKeepsTheUnclosedParenthesis) {
    HWND hGone = destroyedWindow();
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_getTextWidth(hGone, L"abc"), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "UQWindow::mf_getTextWidth",
                                     "Failure getting device context from window handle (string 'abc'"}}));
}
