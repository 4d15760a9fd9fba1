// The message box as a user meets it: shown through mf_show, driven from inside its modal loop with the
// keyboard, the mouse's buttons and the [x] box, and read back control by control.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQMessageBox.h"
#include "korlang_ids.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";
const char* const CALLBACK_NAME = "f_UQMessageBoxCallback";
const char* const BUTTON_CLICKED = "UQMessageBox::mf_onButtonClicked";
const char* const INIT_DIALOG = "UQMessageBox::mf_onInitDialog";

const LogLine CLOSE_BOX{'G', CALLBACK_NAME,
                        "Mouse [x] pressed, terminating dialog with result RESULT_CANCEL"};
const LogLine FOCUS_1{'G', INIT_DIALOG, "Set focus to button 1"};
const LogLine FOCUS_2{'G', INIT_DIALOG, "Set focus to button 2"};
const LogLine YES{'G', BUTTON_CLICKED, "Terminating dialog with result RESULT_YES"};

// What one look at the shown box saw.
struct Seen {
    std::string sTitle;
    std::string sHeading;
    std::string sMessage;
    std::string sButton1;
    std::string sButton2;
    bool bButton1Visible = false;
    bool bButton2Visible = false;
    bool bButton1Enabled = false;
    bool bButton2Enabled = false;
    int nFocus = 0;
    int nDefault = 0;
    HICON hIcon = nullptr;
    // The icon as it was shown; the box destroys its own icons with itself.
    std::shared_ptr<HICON__> shownIcon;
    int nMessageLength = 0;
};

Seen look(HWND _hDlg) {
    Seen seen;
    seen.sTitle = textOf(_hDlg);
    seen.sHeading = itemText(_hDlg, IDC_MESSAGE_HEADING);
    seen.sMessage = itemText(_hDlg, IDC_MESSAGE_TEXT);
    seen.sButton1 = itemText(_hDlg, IDC_MESSAGE_BUTTON1);
    seen.sButton2 = itemText(_hDlg, IDC_MESSAGE_BUTTON2);
    seen.bButton1Visible = IsWindowVisible(GetDlgItem(_hDlg, IDC_MESSAGE_BUTTON1)) != FALSE;
    seen.bButton2Visible = IsWindowVisible(GetDlgItem(_hDlg, IDC_MESSAGE_BUTTON2)) != FALSE;
    seen.bButton1Enabled = IsWindowEnabled(GetDlgItem(_hDlg, IDC_MESSAGE_BUTTON1)) != FALSE;
    seen.bButton2Enabled = IsWindowEnabled(GetDlgItem(_hDlg, IDC_MESSAGE_BUTTON2)) != FALSE;
    seen.nFocus = focusedId();
    seen.nDefault = LOWORD(SendMessageW(_hDlg, DM_GETDEFID, 0, 0));
    seen.hIcon = iconOf(_hDlg, IDC_MESSAGE_ICON);
    seen.shownIcon = copyOfIcon(seen.hIcon);
    seen.nMessageLength = GetWindowTextLengthW(GetDlgItem(_hDlg, IDC_MESSAGE_TEXT));
    return seen;
}

class UQMessageBoxTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
};

} // namespace

TEST_F(UQMessageBoxTest, ASingleButtonBoxIgnoresEscButClosesWithCancelOnTheCloseBox) {
    UQMessageBox box(L"The option file was saved.", UQSeverity(UVSeverity::GREEN),
                     UQMessageBox::BUTTONS_SINGLE, L"Backup options");
    Seen seen;
    bool bStillOpenAfterEsc = false;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDCANCEL, 0), 0);
        bStillOpenAfterEsc = IsWindowVisible(_hDlg) != FALSE;
        PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
    EXPECT_TRUE(bStillOpenAfterEsc);
    EXPECT_EQ(seen.sTitle, "Backup options");
    EXPECT_EQ(seen.sHeading, "Backup options");
    EXPECT_EQ(seen.sMessage, "The option file was saved.");
    EXPECT_FALSE(seen.bButton1Visible);
    EXPECT_TRUE(seen.bButton2Visible);
    EXPECT_EQ(seen.sButton2, "OK");
    EXPECT_EQ(seen.nFocus, IDC_MESSAGE_BUTTON2);
    EXPECT_TRUE(sameIcon(seen.shownIcon.get(), languageIcon(IDI_SEVERITY_GREEN, 16)));
    EXPECT_NE(seen.hIcon, nullptr);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{FOCUS_2,
                                    {'E', BUTTON_CLICKED, "Unexpected button resource-id (buttons=1): 2"},
                                    CLOSE_BOX}));
}

TEST_F(UQMessageBoxTest, TheEscKeyOfASingleButtonBoxIsIgnoredAsTheDialogManagerDeliversIt) {
    UQMessageBox box(L"Done.", UQMessageBox::BUTTONS_SINGLE, L"Caption");
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        pressKey(VK_ESCAPE);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{FOCUS_2,
                                    {'E', BUTTON_CLICKED, "Unexpected button resource-id (buttons=1): 2"},
                                    CLOSE_BOX}));
}

TEST_F(UQMessageBoxTest, TheOnlyButtonAnswersYes) {
    UQMessageBox box(L"Done.", UQMessageBox::BUTTONS_SINGLE, L"Caption");
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2); });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{FOCUS_2, YES}));
}

TEST_F(UQMessageBoxTest, EnterPressesTheFocusedButton) {
    UQMessageBox box(L"Done.", UQMessageBox::BUTTONS_SINGLE, L"Caption");
    DialogDriver driver;
    driver.then([](HWND) { pressKey(VK_RETURN); });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{FOCUS_2, YES}));
}

TEST_F(UQMessageBoxTest, ABoxWithoutButtonsEndsOnlyByTheCloseBox) {
    UQMessageBox box(L"Searching the history ...", UQMessageBox::BUTTONS_NONE, L"Search");
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDCANCEL, 0), 0);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_MESSAGE_BUTTON2, 0), 0);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
    EXPECT_FALSE(seen.bButton1Visible);
    EXPECT_FALSE(seen.bButton2Visible);
    const LogLine unexpected{'E', BUTTON_CLICKED, "Unexpected buttons value: 0"};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{unexpected, unexpected, CLOSE_BOX}));
}

TEST_F(UQMessageBoxTest, YesNoWithDefaultOneFocusesYesAndYesAnswersYes) {
    UQMessageBox box(L"Migrate 12 files?", UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO,
                     L"Migration");
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON1);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_YES);
    EXPECT_TRUE(seen.bButton1Visible);
    EXPECT_TRUE(seen.bButton2Visible);
    EXPECT_EQ(seen.sButton1, "&Yes");
    EXPECT_EQ(seen.sButton2, "&No");
    EXPECT_EQ(seen.nFocus, IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(seen.nDefault, IDC_MESSAGE_BUTTON1);
    EXPECT_TRUE(sameIcon(seen.shownIcon.get(), languageIcon(IDI_SEVERITY_YELLOW, 16)));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{FOCUS_1, YES}));
}

TEST_F(UQMessageBoxTest, YesNoAnswersNoFromTheSecondButtonAndCancelFromEsc) {
    UQMessageBox no(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, L"Migration");
    UQMessageBox esc(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, L"Migration");
    DialogDriver driver;
    int nFocus = 0;
    driver.then([&](HWND _hDlg) {
        nFocus = focusedId();
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    driver.then([](HWND) { pressKey(VK_ESCAPE); });
    LogCheck log;
    EXPECT_EQ(no.mf_show(nullptr, 2), UQMessageBox::RESULT_NO);
    EXPECT_EQ(nFocus, IDC_MESSAGE_BUTTON2);
    EXPECT_EQ(esc.mf_show(nullptr, 2), UQMessageBox::RESULT_CANCEL);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               FOCUS_2,
                               {'G', BUTTON_CLICKED, "Terminating dialog with result RESULT_NO"},
                               FOCUS_2,
                               {'G', BUTTON_CLICKED,
                                "Keyboard <Esc> pressed, terminating dialog with result RESULT_CANCEL"}}));
}

TEST_F(UQMessageBoxTest, ADefaultButtonOfThreeInYesNoModeIsLoggedAndFocusesNeither) {
    UQMessageBox box(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, L"Migration");
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(4242, 0), 0);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr, 3), UQMessageBox::RESULT_NO);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', INIT_DIALOG, "Unexpected default button index 3"},
                                    {'E', BUTTON_CLICKED, "Unexpected button resource-id (buttons=2): 4242"},
                                    {'G', BUTTON_CLICKED, "Terminating dialog with result RESULT_NO"}}));
}

TEST_F(UQMessageBoxTest, NotificationCodesAreNotCommands) {
    UQMessageBox box(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, L"Migration");
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_MESSAGE_BUTTON1, BN_SETFOCUS), 0);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr, 2), UQMessageBox::RESULT_NO);
    EXPECT_EQ(log.count(), 2u);
}

TEST_F(UQMessageBoxTest, ABoxFromErrorDataHasOneButtonTheDatasSeverityAndTheDefaultCaption) {
    const UQErrnoData data(UQErrno::_E_::Registry);
    UQMessageBox box(data, CString());
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(seen.sTitle, "Stormex HSM Client");
    EXPECT_EQ(seen.sHeading, "Stormex HSM Client");
    EXPECT_EQ(seen.sMessage, utf8(UQErrno::mf_toGuiMessage(data, CString())));
    EXPECT_FALSE(seen.bButton1Visible);
    EXPECT_TRUE(sameIcon(seen.shownIcon.get(), languageIcon(IDI_SEVERITY_RED, 16)));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{FOCUS_2, YES}));
}

TEST_F(UQMessageBoxTest, SetMessageThenResetMessageShowsTheConstructedMessageAgain) {
    UQMessageBox box(L"Recalling 3 files ...", UQMessageBox::BUTTONS_SINGLE, L"Recall");
    std::string sChanged;
    std::string sReset;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        box.mf_setMessage(L"Recalling file 2 of 3 ...");
        sChanged = itemText(_hDlg, IDC_MESSAGE_TEXT);
        box.mf_resetMessage();
        sReset = itemText(_hDlg, IDC_MESSAGE_TEXT);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(sChanged, "Recalling file 2 of 3 ...");
    EXPECT_EQ(sReset, "Recalling 3 files ...");
}

TEST_F(UQMessageBoxTest, SelectButtonMovesTheFocusAndAnUnknownButtonChangesNothing) {
    UQMessageBox box(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, L"Migration");
    int nAfterSelect1 = 0;
    int nAfterSelect3 = 0;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        box.mf_selectButton(1);
        nAfterSelect1 = focusedId();
        box.mf_selectButton(3);
        nAfterSelect3 = focusedId();
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr, 2), UQMessageBox::RESULT_NO);
    EXPECT_EQ(nAfterSelect1, IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(nAfterSelect3, IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{FOCUS_2,
                                    {'E', "UQMessageBox::mf_selectButton", "Unexpected button id: 3"},
                                    {'G', BUTTON_CLICKED, "Terminating dialog with result RESULT_NO"}}));
}

TEST_F(UQMessageBoxTest, EnableButtonsDisablesTheShownButtons) {
    UQMessageBox yesNo(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, L"Migration");
    UQMessageBox single(L"Done.", UQMessageBox::BUTTONS_SINGLE, L"Migration");
    Seen disabled;
    Seen enabled;
    Seen singleDisabled;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        yesNo.mf_enableButtons(0);
        disabled = look(_hDlg);
        yesNo.mf_enableButtons(1);
        enabled = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON1);
    });
    driver.then([&](HWND _hDlg) {
        single.mf_enableButtons(0);
        singleDisabled = look(_hDlg);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    EXPECT_EQ(yesNo.mf_show(nullptr, 2), UQMessageBox::RESULT_YES);
    EXPECT_FALSE(disabled.bButton1Enabled);
    EXPECT_FALSE(disabled.bButton2Enabled);
    EXPECT_TRUE(enabled.bButton1Enabled);
    EXPECT_TRUE(enabled.bButton2Enabled);
    EXPECT_EQ(single.mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
    EXPECT_FALSE(singleDisabled.bButton2Enabled);
}

TEST_F(UQMessageBoxTest, ATemplateThatDoesNotExistThrowsAGuiErrorWithTheSystemErrorNumber) {
    UQMessageBox box(L"text", UQMessageBox::BUTTONS_SINGLE, L"Caption");
    // What the platform answers for a missing template (ERROR_RESOURCE_NAME_NOT_FOUND on both).
    SetLastError(0);
    EXPECT_EQ(DialogBoxParamW(UQLanguage::mf_getUserLanguageHandle(), MAKEINTRESOURCEW(4711), nullptr,
                              inertProcedure, 0),
              -1);
    const DWORD dwExpected = GetLastError();
    EXPECT_EQ(dwExpected, static_cast<DWORD>(ERROR_RESOURCE_NAME_NOT_FOUND));
    LogCheck log;
    SetLastError(0xdeadbeef);
    std::uint32_t uSystemError = 0;
    EXPECT_EQ(thrownCategory([&] {
                  try {
                      box.mf_show(nullptr, 2, 4711);
                  } catch (const UQErrno& e) {
                      uSystemError = e.mf_getSystemError();
                      throw;
                  }
              }),
              "_E_::Gui");
    EXPECT_EQ(uSystemError, dwExpected);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQMessageBox::mf_show",
                                                  "Failure showing message box:\r\n" + TAB +
                                                      errorText(UQErrno::_E_::Gui, dwExpected)}}));
}

TEST_F(UQMessageBoxTest, AMessageOf64KiBIsShownWhole) {
    const CString sMessage(L'x', 65536);
    UQMessageBox box(sMessage, UQMessageBox::BUTTONS_SINGLE, L"Caption");
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(seen.nMessageLength, 65536);
}

TEST_F(UQMessageBoxTest, FormatCharactersInTheTextsAreShownAsText) {
    UQMessageBox box(L"%s%n%d", UQMessageBox::BUTTONS_SINGLE, L"%s caption %n");
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(seen.sMessage, "%s%n%d");
    EXPECT_EQ(seen.sTitle, "%s caption %n");
}

TEST_F(UQMessageBoxTest, ASeverityThatIsNoneOfTheThreeShowsNoIcon) {
    UQMessageBox box(L"text", UQSeverity(7), UQMessageBox::BUTTONS_SINGLE, L"Caption");
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(seen.hIcon, nullptr);
    EXPECT_EQ(seen.sMessage, "text");
}

TEST_F(UQMessageBoxTest, TheDialogOperationsWhileNoBoxIsShownAreLoggedAndDoNothing) {
    UQMessageBox box(L"text", UQMessageBox::BUTTONS_YES_NO, L"Caption");
    LogCheck log;
    box.mf_setMessage(L"other");
    box.mf_resetMessage();
    box.mf_enableButtons(0);
    box.mf_selectButton(1);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQMessageBox::mf_setMessage", "Message box is not shown"},
                                    {'E', "UQMessageBox::mf_resetMessage", "Message box is not shown"},
                                    {'E', "UQMessageBox::mf_enableButtons", "Message box is not shown"},
                                    {'E', "UQMessageBox::mf_selectButton", "Message box is not shown"}}));
}

TEST_F(UQMessageBoxTest, AfterTheBoxHasEndedItsOperationsNoLongerReachTheOldWindow) {
    UQMessageBox box(L"text", UQMessageBox::BUTTONS_SINGLE, L"Caption");
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2); });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    LogCheck log;
    box.mf_setMessage(L"late");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQMessageBox::mf_setMessage", "Message box is not shown"}}));
}

TEST_F(UQMessageBoxTest, ThePlainBoxLeavesStaticColoursToTheDialogManager) {
    UQMessageBox box(L"text", UQMessageBox::BUTTONS_SINGLE, L"Caption");
    LRESULT nBrush = -1;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        HWND hText = GetDlgItem(_hDlg, IDC_MESSAGE_TEXT);
        HDC hDC = GetDC(hText);
        nBrush = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                              reinterpret_cast<LPARAM>(hText));
        ReleaseDC(hText, hDC);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    // The dialog manager's own answer when the procedure answers 0: the face colour, not a band's.
    EXPECT_EQ(nBrush, reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE)));
}

TEST_F(UQMessageBoxTest, ACopyShowsTheSameBox) {
    const UQMessageBox original(L"Copied text", UQSeverity(UVSeverity::RED), UQMessageBox::BUTTONS_SINGLE,
                                L"Copied caption");
    UQMessageBox copy(original);
    Seen seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = look(_hDlg);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(copy.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(seen.sTitle, "Copied caption");
    EXPECT_EQ(seen.sMessage, "Copied text");
    EXPECT_TRUE(sameIcon(seen.shownIcon.get(), languageIcon(IDI_SEVERITY_RED, 16)));
}
