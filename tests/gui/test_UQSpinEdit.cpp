// UQSpinEdit on a real up-down control with its buddy edit.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQSpinEdit.h"

using namespace toolkittest;

namespace {

std::pair<int, int> range(HWND _hSpin) {
    int nMin = 0;
    int nMax = 0;
    SendMessageW(_hSpin, UDM_GETRANGE32, reinterpret_cast<WPARAM>(&nMin), reinterpret_cast<LPARAM>(&nMax));
    return {nMin, nMax};
}

} // namespace

TEST(UQSpinEdit, SetRangeWithinTheLimitsIsPassedOnWithoutRecords) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQSpinEdit::mf_setItemRange(dialog.hwnd(), IDC_SPIN, 1, 99), 1);
    EXPECT_EQ(range(dialog.item(IDC_SPIN)), std::make_pair(1, 99));
    EXPECT_EQ(UQSpinEdit::mf_setRange(dialog.item(IDC_SPIN), -32767, 32767), 1);
    EXPECT_EQ(range(dialog.item(IDC_SPIN)), std::make_pair(-32767, 32767));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQSpinEdit, SetRangeClampsBothEndsWithTwoWarnings) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQSpinEdit::mf_setRange(dialog.item(IDC_SPIN), -100000, 100000), 1);
    EXPECT_EQ(range(dialog.item(IDC_SPIN)), std::make_pair(-32767, 32767));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQSpinEdit::mf_setRange",
                                     "Set minimum value -100000 to minimum spin control value -32767"},
                                    {'W', "UQSpinEdit::mf_setRange",
                                     "Set maximum value 100000 to maximum spin control value 32767"}}));
}

TEST(UQSpinEdit, SetRangeClampsOneEndWithOneWarning) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQSpinEdit::mf_setRange(dialog.item(IDC_SPIN), 0, 40000), 1);
    EXPECT_EQ(range(dialog.item(IDC_SPIN)), std::make_pair(0, 32767));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQSpinEdit::mf_setRange",
                                     "Set maximum value 40000 to maximum spin control value 32767"}}));
}

TEST(UQSpinEdit, AMinimumAboveTheMaximumIsPassedOnUnchanged) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQSpinEdit::mf_setRange(dialog.item(IDC_SPIN), 5, 1), 1);
    EXPECT_EQ(range(dialog.item(IDC_SPIN)), std::make_pair(5, 1));
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQSpinEdit, TheBuddyShowsAPositionWithinTheNewRange) {
    TestDialog dialog;
    UQSpinEdit::mf_setItemRange(dialog.hwnd(), IDC_SPIN, 10, 20);
    SendMessageW(dialog.item(IDC_SPIN), UDM_SETPOS32, 0, 15);
    wchar_t szText[16] = {0};
    GetWindowTextW(dialog.item(IDC_SPIN_EDIT), szText, 16);
    EXPECT_STREQ(szText, L"15");
}

TEST(UQSpinEdit, SetItemRangeOfAMissingItemLeavesTwoRecords) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    const std::string error = errorText(UQErrno::_E_::ItemNotFound, dwError);
    LogCheck log;
    EXPECT_EQ(UQSpinEdit::mf_setItemRange(dialog.hwnd(), IDC_MISSING, 0, 1), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQWindow::mf_getItem",
                                                  "Failure getting item with id=4242:\r\n    " + error},
                                                 {'E', "UQSpinEdit::mf_setItemRange",
                                                  "Failure getting item with id=4242:\r\n    " + error}}));
}
