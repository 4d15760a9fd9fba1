// The information box and the choice it remembers, on a registry of the test's own: shown while the
// value is missing, switched off by the check box with OK or the [x] box, and shown again when the value
// cannot be read.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"
#include "interfaces/korbase_testing.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQInformationBox.h"
#include "korlang_ids.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";
const char* const CALLBACK_NAME = "f_InformationBoxCallback";
const wchar_t* const VALUE = L"ShowMigrationTip";

const LogLine OK_PRESSED{'G', CALLBACK_NAME, "Ok pressed, terminating information box"};
const LogLine CLOSE_BOX{'G', CALLBACK_NAME, "Mouse [x] pressed, terminating information box"};
const LogLine DISABLED{'T', "UQInformationBox::mf_implSetEnabled",
                       "The dialog was disabled by the user and will not be shown again"};

class UQInformationBoxTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }

    static int storedValue() {
        int nValue = -1;
        UQRegistry::mf_getValue(VALUE, nValue, CString(), HKEY_CURRENT_USER);
        return nValue;
    }

    UQInformationBox m_box{L"Migration tip", L"Files are replaced by stub files.",
                           L"A stub file is recalled when it is opened.", VALUE};
    registrytest::RegistrySandbox m_sandbox;
};

void tickAndPressOk(HWND _hDlg) {
    SendDlgItemMessageW(_hDlg, IDC_INFORMATION_CHECK, BM_CLICK, 0, 0);
    DialogDriver::click(_hDlg, IDC_INFORMATION_OK);
}

} // namespace

TEST_F(UQInformationBoxTest, ABoxNeverSwitchedOffShowsItsTextsAndAnUncheckedBox) {
    std::string sTitle, sText1, sText2, sOk, sCheck;
    LRESULT nCheck = -1;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sTitle = textOf(_hDlg);
        sText1 = itemText(_hDlg, IDC_INFORMATION_TEXT1);
        sText2 = itemText(_hDlg, IDC_INFORMATION_TEXT2);
        sOk = itemText(_hDlg, IDC_INFORMATION_OK);
        sCheck = itemText(_hDlg, IDC_INFORMATION_CHECK);
        nCheck = SendDlgItemMessageW(_hDlg, IDC_INFORMATION_CHECK, BM_GETCHECK, 0, 0);
        DialogDriver::click(_hDlg, IDC_INFORMATION_OK);
    });
    LogCheck log;
    m_box.mf_show(nullptr);
    EXPECT_EQ(driver.stepsTaken(), 1);
    EXPECT_EQ(sTitle, "Migration tip");
    EXPECT_EQ(sText1, "Files are replaced by stub files.");
    EXPECT_EQ(sText2, "A stub file is recalled when it is opened.");
    EXPECT_EQ(sOk, "OK");
    EXPECT_EQ(sCheck, "   &Do not show this message again");
    EXPECT_EQ(nCheck, BST_UNCHECKED);
    // OK without the tick keeps the box on: 1.
    EXPECT_EQ(storedValue(), 1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{OK_PRESSED}));
}

TEST_F(UQInformationBoxTest, TickedAndConfirmedTheBoxIsNotShownAgain) {
    DialogDriver driver;
    driver.then(tickAndPressOk);
    LogCheck log;
    m_box.mf_show(nullptr);
    EXPECT_EQ(storedValue(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{OK_PRESSED, DISABLED}));
    log.clear();
    // No step is left: a dialog now would be cancelled and counted as unexpected.
    m_box.mf_show(nullptr);
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'T', "UQInformationBox::mf_show",
                                     "Information dialog 'ShowMigrationTip' is disabled by user"}}));
}

TEST_F(UQInformationBoxTest, TheCloseBoxSavesTheTickAsOkDoes) {
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SendDlgItemMessageW(_hDlg, IDC_INFORMATION_CHECK, BM_CLICK, 0, 0);
        PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0);
    });
    LogCheck log;
    m_box.mf_show(nullptr);
    EXPECT_EQ(storedValue(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{CLOSE_BOX, DISABLED}));
}

TEST_F(UQInformationBoxTest, EscAndOtherCommandsAreIgnored) {
    bool bOpenAfterEsc = false;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDCANCEL, 0), 0);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_INFORMATION_OK, BN_SETFOCUS), 0);
        bOpenAfterEsc = IsWindowVisible(_hDlg) != FALSE;
        DialogDriver::click(_hDlg, IDC_INFORMATION_OK);
    });
    LogCheck log;
    m_box.mf_show(nullptr);
    EXPECT_TRUE(bOpenAfterEsc);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{OK_PRESSED}));
}

TEST_F(UQInformationBoxTest, AValueOfZeroWrittenElsewhereSwitchesTheBoxOff) {
    UQRegistry::mf_setValue(VALUE, 0, CString(), HKEY_CURRENT_USER);
    DialogDriver driver;
    LogCheck log;
    m_box.mf_show(nullptr);
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(log.count(), 1u);
}

TEST_F(UQInformationBoxTest, AValueThatHoldsAStringIsLoggedAndTheBoxIsShown) {
    UQRegistry::mf_setValue(VALUE, L"no", 0, CString(), HKEY_CURRENT_USER);
    // What the registry reports for the wrong type, to compare the box's record with.
    std::string sError;
    {
        LogCheck quiet;
        try {
            int nValue = 1;
            UQRegistry::mf_getOrSetValue(VALUE, nValue, CString(), HKEY_CURRENT_USER);
        } catch (const UQErrno& e) {
            sError = utf8(e.mf_toString());
        }
    }
    ASSERT_FALSE(sError.empty());
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDC_INFORMATION_OK); });
    LogCheck log;
    m_box.mf_show(nullptr);
    EXPECT_EQ(driver.stepsTaken(), 1);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[lines.size() - 2],
              (LogLine{'E', "UQInformationBox::mf_implIsEnabled",
                       "Failure checking if information dialog is enabled:\r\n" + TAB + sError + "\r\n" +
                           TAB + "Returning 'dialog enabled' ..."}));
    EXPECT_EQ(lines.back(), OK_PRESSED);
}

TEST_F(UQInformationBoxTest, AFailedWriteIsLoggedAndTheChoiceStillReported) {
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        // The next store operation is the write of the choice.
        UQRegistryInjection::mf_injectFailure(0);
        tickAndPressOk(_hDlg);
    });
    LogCheck log;
    m_box.mf_show(nullptr);
    UQRegistryInjection::mf_clearInjection();
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 3u);
    EXPECT_EQ(lines.front(), OK_PRESSED);
    EXPECT_EQ(lines[lines.size() - 2].function, "UQInformationBox::mf_implSetEnabled");
    EXPECT_EQ(
        lines[lines.size() - 2].text.rfind("Failure setting information dialog to 'disabled':\r\n" + TAB, 0),
        0u);
    EXPECT_EQ(lines.back(), DISABLED);
    EXPECT_FALSE(UQRegistry::mf_exists(VALUE, CString(), HKEY_CURRENT_USER));
}
