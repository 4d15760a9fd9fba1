// UQEdit on a real edit control, and on a control that is no edit control.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQEdit.h"

using namespace toolkittest;

namespace {

DWORD selection(HWND _hEdit, DWORD& _rdwEnd) {
    DWORD dwStart = 0;
    SendMessageW(_hEdit, EM_GETSEL, reinterpret_cast<WPARAM>(&dwStart), reinterpret_cast<LPARAM>(&_rdwEnd));
    return dwStart;
}

} // namespace

TEST(UQEdit, SetReadonlyTogglesTheEditsReadOnlyStyle) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQEdit::mf_setItemReadonly(dialog.hwnd(), IDC_EDIT, 1), 1);
    EXPECT_NE(GetWindowLongW(dialog.item(IDC_EDIT), GWL_STYLE) & ES_READONLY, 0);
    EXPECT_EQ(UQEdit::mf_setReadonly(dialog.item(IDC_EDIT), 0), 1);
    EXPECT_EQ(GetWindowLongW(dialog.item(IDC_EDIT), GWL_STYLE) & ES_READONLY, 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQEdit, SetReadonlyOfAControlThatIsNoEditLogsUnderTheHandleForm) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQEdit::mf_setItemReadonly(dialog.hwnd(), IDC_CHECK, 1), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQEdit::mf_setReadonly", "Failure setting edit to r/o"}}));
}

TEST(UQEdit, SelectTextSelectsAllAndRemovesTheSelection) {
    TestDialog dialog;
    HWND hEdit = dialog.item(IDC_EDIT);
    SetWindowTextW(hEdit, L"kor.opt");
    LogCheck log;
    EXPECT_EQ(UQEdit::mf_selectItemText(dialog.hwnd(), IDC_EDIT, 1), 1);
    DWORD dwEnd = 0;
    EXPECT_EQ(selection(hEdit, dwEnd), 0u);
    EXPECT_EQ(dwEnd, 7u);
    EXPECT_EQ(UQEdit::mf_selectText(hEdit, 0), 1);
    const DWORD dwStart = selection(hEdit, dwEnd);
    EXPECT_EQ(dwStart, dwEnd) << "no selection left";
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQEdit, SelectTextOfAControlThatIsNoEditLogsUnderTheHandleForm) {
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQEdit::mf_selectText(dialog.item(IDC_LABEL), 1), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQEdit::mf_selectText", "Failure selecting edit text"}}));
}

TEST(UQEdit, ItemFormsOfAMissingItemLogOnOneLine) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    const std::string error = errorText(UQErrno::_E_::ItemNotFound, dwError);
    LogCheck log;
    EXPECT_EQ(UQEdit::mf_setItemReadonly(dialog.hwnd(), IDC_MISSING, 1), 0);
    EXPECT_EQ(UQEdit::mf_selectItemText(dialog.hwnd(), IDC_MISSING, 1), 0);
    const LogLine lookup{'E', "UQWindow::mf_getItem", "Failure getting item with id=4242:\r\n    " + error};
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  lookup,
                  {'E', "UQEdit::mf_setItemReadonly", "Failure getting item with id=4242: " + error},
                  lookup,
                  {'E', "UQEdit::mf_selectItemText", "Failure getting item with id=4242: " + error}}));
}
