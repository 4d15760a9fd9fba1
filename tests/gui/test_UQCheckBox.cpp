// UQCheckBox on a real two-state and a real three-state check box.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQCheckBox.h"

using namespace toolkittest;

TEST(UQCheckBox, SetCheckedAndIsCheckedRoundTrip) {
    TestDialog dialog;
    LogCheck log;
    int bChecked = -1;
    EXPECT_EQ(UQCheckBox::mf_isItemChecked(dialog.hwnd(), IDC_CHECK, bChecked), 1);
    EXPECT_EQ(bChecked, 0);
    EXPECT_EQ(UQCheckBox::mf_setItemChecked(dialog.hwnd(), IDC_CHECK, 1), 1);
    EXPECT_EQ(SendMessageW(dialog.item(IDC_CHECK), BM_GETCHECK, 0, 0), BST_CHECKED);
    EXPECT_EQ(UQCheckBox::mf_isChecked(dialog.item(IDC_CHECK), bChecked), 1);
    EXPECT_EQ(bChecked, 1);
    EXPECT_EQ(UQCheckBox::mf_setChecked(dialog.item(IDC_CHECK), 0), 1);
    EXPECT_EQ(UQCheckBox::mf_isChecked(dialog.item(IDC_CHECK), bChecked), 1);
    EXPECT_EQ(bChecked, 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQCheckBox, AnyNonZeroValueChecks) {
    TestDialog dialog;
    EXPECT_EQ(UQCheckBox::mf_setChecked(dialog.item(IDC_CHECK3), 7), 1);
    EXPECT_EQ(SendMessageW(dialog.item(IDC_CHECK3), BM_GETCHECK, 0, 0), BST_CHECKED);
}

TEST(UQCheckBox, TheIndeterminateStateIsNoAnswerAndLeavesTheOutputAlone) {
    TestDialog dialog;
    SendMessageW(dialog.item(IDC_CHECK3), BM_SETCHECK, BST_INDETERMINATE, 0);
    ASSERT_EQ(SendMessageW(dialog.item(IDC_CHECK3), BM_GETCHECK, 0, 0), BST_INDETERMINATE);
    LogCheck log;
    int bChecked = 5;
    EXPECT_EQ(UQCheckBox::mf_isChecked(dialog.item(IDC_CHECK3), bChecked), 0);
    EXPECT_EQ(bChecked, 5);
    EXPECT_EQ(UQCheckBox::mf_isItemChecked(dialog.hwnd(), IDC_CHECK3, bChecked), 0);
    EXPECT_EQ(bChecked, 5);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQCheckBox, AMissingItemReportsUncheckedWithSuccessAfterTheLookupsRecord) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    LogCheck log;
    int bChecked = 1;
    EXPECT_EQ(UQCheckBox::mf_isItemChecked(dialog.hwnd(), IDC_MISSING, bChecked), 1);
    EXPECT_EQ(bChecked, 0);
    EXPECT_EQ(UQCheckBox::mf_setItemChecked(dialog.hwnd(), IDC_MISSING, 1), 1);
    const LogLine lookup{'E', "UQWindow::mf_getItem",
                         "Failure getting item with id=4242:\r\n    " +
                             errorText(UQErrno::_E_::ItemNotFound, dwError)};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{lookup, lookup}));
}
