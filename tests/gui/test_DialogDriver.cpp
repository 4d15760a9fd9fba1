// The modal-dialog driver itself: scripted steps run on the dialogs as they appear, a dialog without a
// step is cancelled and counted, and a dialog that will not close is ended at the time limit.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include <gtest/gtest-spi.h>

using namespace toolkittest;

namespace {

// Ends on OK and Cancel, keeping the text of the probe label for the test to see.
INT_PTR CALLBACK closingProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM) {
    if (_uMsg == WM_INITDIALOG)
        return TRUE;
    if (_uMsg == WM_COMMAND && (LOWORD(_wParam) == IDOK || LOWORD(_wParam) == IDCANCEL)) {
        EndDialog(_hDlg, LOWORD(_wParam));
        return TRUE;
    }
    return FALSE;
}

// Ignores every command: only the driver's time limit can end it.
INT_PTR CALLBACK stubbornProcedure(HWND, UINT _uMsg, WPARAM, LPARAM) {
    return _uMsg == WM_INITDIALOG ? TRUE : FALSE;
}

INT_PTR showProbe(DLGPROC _procedure) {
    return DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROBE), nullptr, _procedure, 0);
}

} // namespace

TEST(DialogDriver, RunsTheScriptedStepOnTheDialogThatAppears) {
    initCommonControls();
    DialogDriver driver;
    HWND hSeen = nullptr;
    driver.then([&](HWND _hDlg) {
        hSeen = _hDlg;
        SetDlgItemTextW(_hDlg, IDC_PROBE_TEXT, L"driven");
        DialogDriver::click(_hDlg, IDOK);
    });
    EXPECT_EQ(showProbe(closingProcedure), IDOK);
    EXPECT_NE(hSeen, nullptr);
    EXPECT_EQ(driver.stepsTaken(), 1);
    EXPECT_EQ(driver.stepsLeft(), 0);
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_FALSE(driver.timedOut());
}

TEST(DialogDriver, TakesOneStepPerDialogInOrder) {
    initCommonControls();
    DialogDriver driver;
    std::vector<int> order;
    driver.then([&](HWND _hDlg) {
        order.push_back(1);
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    driver.then([&](HWND _hDlg) {
        order.push_back(2);
        DialogDriver::click(_hDlg, IDOK);
    });
    EXPECT_EQ(showProbe(closingProcedure), IDCANCEL);
    EXPECT_EQ(showProbe(closingProcedure), IDOK);
    EXPECT_EQ(order, (std::vector<int>{1, 2}));
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
}

TEST(DialogDriver, CancelsAndCountsADialogWithNoStepLeft) {
    initCommonControls();
    DialogDriver driver;
    EXPECT_EQ(showProbe(closingProcedure), IDCANCEL);
    EXPECT_EQ(driver.unexpectedDialogs(), 1);
    EXPECT_FALSE(driver.timedOut());
}

TEST(DialogDriver, EndsADialogThatWillNotCloseAtTheTimeLimit) {
    initCommonControls();
    // The failure that the driver reports at its time limit is this test's expectation, not its result.
    ::testing::TestPartResultArray failures;
    INT_PTR nResult = 0;
    int nUnexpected = 0;
    bool bTimedOut = false;
    {
        ::testing::ScopedFakeTestPartResultReporter reporter(
            ::testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
        DialogDriver driver(300);
        nResult = showProbe(stubbornProcedure);
        nUnexpected = driver.unexpectedDialogs();
        bTimedOut = driver.timedOut();
    }
    EXPECT_EQ(nResult, IDCANCEL);
    EXPECT_EQ(nUnexpected, 1);
    EXPECT_TRUE(bTimedOut);
    ASSERT_EQ(failures.size(), 1);
    EXPECT_NE(std::string(failures.GetTestPartResult(0).message()).find("time limit reached"),
              std::string::npos);
}

TEST(DialogDriver, LeavesATestsModelessDialogAlone) {
    TestDialog dialog;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDOK); });
    EXPECT_EQ(showProbe(closingProcedure), IDOK);
    EXPECT_TRUE(IsWindowVisible(dialog.hwnd()));
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
}
