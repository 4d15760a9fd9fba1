// The line editor as a user types into it: OK only while the line has text, the text taken on OK, the
// [x] box answering 1 with the text given, Cancel and Esc answering 0, and the starting selection.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQLineEditor.h"
#include "korlang_ids.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";

class UQLineEditorTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
    UQLineEditor m_editor{L"Rename search", L"&Name of the search:"};
};

struct Selection {
    DWORD dwStart = 99;
    DWORD dwEnd = 99;
};

Selection selectionOf(HWND _hEdit) {
    Selection selection;
    SendMessageW(_hEdit, EM_GETSEL, reinterpret_cast<WPARAM>(&selection.dwStart),
                 reinterpret_cast<LPARAM>(&selection.dwEnd));
    return selection;
}

} // namespace

TEST_F(UQLineEditorTest, AnEmptyStartDisablesOkUntilSomethingIsTyped) {
    std::string sTitle, sLabel, sOk, sCancel;
    bool bOkAtStart = true;
    int nFocus = 0;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sTitle = textOf(_hDlg);
        sLabel = itemText(_hDlg, IDC_LINE_LABEL);
        sOk = itemText(_hDlg, IDOK);
        sCancel = itemText(_hDlg, IDCANCEL);
        bOkAtStart = IsWindowEnabled(GetDlgItem(_hDlg, IDOK)) != FALSE;
        nFocus = focusedId();
        typeText(GetDlgItem(_hDlg, IDC_LINE_EDIT), L"Finance 2024");
        // Posted after the keys, so it is handled once they have been.
        DialogDriver::click(_hDlg, IDOK);
    });
    LogCheck log;
    EXPECT_EQ(m_editor.mf_show(nullptr), 1);
    EXPECT_EQ(sTitle, "Rename search");
    EXPECT_EQ(sLabel, "&Name of the search:");
    EXPECT_EQ(sOk, "OK");
    EXPECT_EQ(sCancel, "Cancel");
    EXPECT_FALSE(bOkAtStart);
    EXPECT_EQ(nFocus, IDC_LINE_EDIT);
    EXPECT_EQ(m_editor.mf_getText(), L"Finance 2024");
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQLineEditorTest, OkStaysDisabledWhileTheLineIsEmptiedAgain) {
    bool bOkWithText = false;
    bool bOkEmptied = true;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        HWND hEdit = GetDlgItem(_hDlg, IDC_LINE_EDIT);
        SetWindowTextW(hEdit, L"x");
        bOkWithText = IsWindowEnabled(GetDlgItem(_hDlg, IDOK)) != FALSE;
        SetWindowTextW(hEdit, L"");
        bOkEmptied = IsWindowEnabled(GetDlgItem(_hDlg, IDOK)) != FALSE;
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    EXPECT_TRUE(bOkWithText);
    EXPECT_FALSE(bOkEmptied);
}

TEST_F(UQLineEditorTest, TheCloseBoxAnswersOneAndKeepsTheTextGiven) {
    m_editor.mf_setText(L"Old name", 0);
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SetWindowTextW(GetDlgItem(_hDlg, IDC_LINE_EDIT), L"New name");
        PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0);
    });
    LogCheck log;
    EXPECT_EQ(m_editor.mf_show(nullptr), 1);
    EXPECT_EQ(m_editor.mf_getText(), L"Old name");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQLineEditorTest, CancelAndEscAnswerZeroAndKeepTheTextGiven) {
    m_editor.mf_setText(L"Old name", 1);
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SetWindowTextW(GetDlgItem(_hDlg, IDC_LINE_EDIT), L"Typed");
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    driver.then([](HWND _hDlg) {
        SetWindowTextW(GetDlgItem(_hDlg, IDC_LINE_EDIT), L"Typed");
        pressKey(VK_ESCAPE);
    });
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    EXPECT_EQ(m_editor.mf_getText(), L"Old name");
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    EXPECT_EQ(m_editor.mf_getText(), L"Old name");
}

TEST_F(UQLineEditorTest, EnterConfirmsTheTypedLine) {
    m_editor.mf_setText(L"Old", 1);
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        typeText(GetDlgItem(_hDlg, IDC_LINE_EDIT), L"New");
        PostMessageW(GetDlgItem(_hDlg, IDC_LINE_EDIT), WM_KEYDOWN, VK_RETURN, 1);
    });
    EXPECT_EQ(m_editor.mf_show(nullptr), 1);
    // The typed keys replaced the selected starting text.
    EXPECT_EQ(m_editor.mf_getText(), L"New");
}

TEST_F(UQLineEditorTest, TheStartingTextIsSelectedOnlyWhenAskedFor) {
    Selection plain;
    Selection selected;
    std::string sPlain;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sPlain = itemText(_hDlg, IDC_LINE_EDIT);
        plain = selectionOf(GetDlgItem(_hDlg, IDC_LINE_EDIT));
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    driver.then([&](HWND _hDlg) {
        selected = selectionOf(GetDlgItem(_hDlg, IDC_LINE_EDIT));
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    m_editor.mf_setText(L"Quarterly", 0);
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    m_editor.mf_setText(L"Quarterly", 1);
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    EXPECT_EQ(sPlain, "Quarterly");
    EXPECT_EQ(plain.dwStart, plain.dwEnd);
    EXPECT_EQ(selected.dwStart, 0u);
    EXPECT_EQ(selected.dwEnd, 9u);
}

TEST_F(UQLineEditorTest, AnUnexpectedCommandIsAWarning) {
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(4242, 0), 0);
        DialogDriver::click(_hDlg, IDCANCEL);
    });
    LogCheck log;
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQLineEditor::mf_implOnCommand", "Unexpected command 4242"}}));
}

TEST_F(UQLineEditorTest, AParentThatIsNoWindowAnswersZeroWithoutADialog) {
    HWND hGone = destroyedWindow();
    // DialogBoxParamW answers 0 for an owner that is no window, on Windows as on Wine.
    EXPECT_EQ(DialogBoxParamW(UQLanguage::mf_getUserLanguageHandle(), MAKEINTRESOURCEW(IDD_LINE_EDITOR),
                              hGone, inertProcedure, 0),
              0);
    m_editor.mf_setText(L"kept", 0);
    DialogDriver driver;
    LogCheck log;
    EXPECT_EQ(m_editor.mf_show(hGone), 0);
    EXPECT_EQ(m_editor.mf_getText(), L"kept");
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQLineEditorTest, WithoutAnObjectTheCallbackLogsItsLiteralsPerMessage) {
    DialogDriver driver;
    driver.then([](HWND _hDlg) {
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, 0);
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDOK, 0), 0);
        SendMessageW(_hDlg, WM_CLOSE, 0, 0);
        EndDialog(_hDlg, 0);
    });
    LogCheck log;
    EXPECT_EQ(m_editor.mf_show(nullptr), 0);
    const std::vector<LogLine> lines = log.lines();
    const LogLine command{'E', "f_LineEditorDialogCallback", "No user data pointer in call WM_COMMAND"};
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], command);
    EXPECT_EQ(lines[1],
              (LogLine{'E', "f_LineEditorDialogCallback", "No user data pointer in call WM_CONTEXTMENU"}));
    // The edit's focus notifications as the dialog ends are commands too.
    for (std::size_t i = 2; i < lines.size(); ++i)
        EXPECT_EQ(lines[i], command);
}
