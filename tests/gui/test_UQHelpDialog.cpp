// The help dialog: its title, the information icon, the help text and the close button; the [x] box
// logged with the message box's words; a dialog that cannot be created thrown as a GUI error.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQHelpDialog.h"
#include "korlang_ids.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";

class UQHelpDialogTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
    UQHelpDialog m_help{L"History search help", L"Type a pattern such as *\\Finance\\* and press Search."};
};

} // namespace

TEST_F(UQHelpDialogTest, ShowsTheTitleTheIconAndTheTextAndClosesWithItsButton) {
    std::string sTitle, sText, sClose;
    HICON hIcon = nullptr;
    std::shared_ptr<HICON__> shownIcon;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sTitle = textOf(_hDlg);
        sText = itemText(_hDlg, IDC_HELP_TEXT);
        sClose = itemText(_hDlg, IDCANCEL);
        hIcon = iconOf(_hDlg, IDC_HELP_ICON);
        shownIcon = copyOfIcon(hIcon);
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    LogCheck log;
    m_help.mf_show(nullptr);
    EXPECT_EQ(driver.stepsTaken(), 1);
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(sTitle, "History search help");
    EXPECT_EQ(sText, "Type a pattern such as *\\Finance\\* and press Search.");
    EXPECT_EQ(sClose, "OK");
    EXPECT_NE(hIcon, nullptr);
    EXPECT_TRUE(sameIcon(shownIcon.get(), languageIcon(IDI_SEVERITY_GREEN, GetSystemMetrics(SM_CXSMICON))));
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQHelpDialogTest, TheCloseButtonHasTheFocusAndEscClosesIt) {
    int nFocus = 0;
    DialogDriver driver;
    driver.then([&](HWND) {
        nFocus = focusedId();
        pressKey(VK_ESCAPE);
    });
    LogCheck log;
    m_help.mf_show(nullptr);
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_FALSE(driver.timedOut());
    EXPECT_EQ(nFocus, IDCANCEL);
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQHelpDialogTest, TheCloseBoxIsLoggedWithTheMessageBoxsWords) {
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0); });
    LogCheck log;
    m_help.mf_show(nullptr);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "f_UQHelpDialogCallback",
                                     "Mouse [x] pressed, terminating dialog with result RESULT_CANCEL"}}));
}

TEST_F(UQHelpDialogTest, OtherCommandsLeaveItOpen) {
    bool bOpen = false;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDOK, 0), 0);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_SETFOCUS), 0);
        bOpen = IsWindowVisible(_hDlg) != FALSE;
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    m_help.mf_show(nullptr);
    EXPECT_TRUE(bOpen);
}

TEST_F(UQHelpDialogTest, AParentThatIsNoWindowShowsNothingAndThrowsNothing) {
    HWND hGone = destroyedWindow();
    // DialogBoxParamW answers 0, not -1, for an owner that is no window (on Windows as on Wine), so no
    // dialog appears and there is no failure to report.
    SetLastError(0);
    EXPECT_EQ(DialogBoxParamW(UQLanguage::mf_getUserLanguageHandle(), MAKEINTRESOURCEW(IDD_HELP_DIALOG),
                              hGone, inertProcedure, 0),
              0);
    DialogDriver driver;
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { m_help.mf_show(hGone); }), "no exception");
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(log.count(), 0u);
}
