// The message panel inside a dialog of its own (as the management-class panels embed it): the icon of each
// severity, the heading and the message, an error's text for the user, the blank state, and a dialog
// that lacks some of the panel's items.
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQMessagePanel.h"
#include "korlang_ids.h"

using namespace toolkittest;

namespace {

class PanelDialog {
public:
    explicit PanelDialog(int _nTemplate) {
        initCommonControls();
        m_hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(_nTemplate), nullptr,
                                    inertProcedure, 0);
        EXPECT_NE(m_hDlg, nullptr);
    }
    ~PanelDialog() { DestroyWindow(m_hDlg); }
    PanelDialog(const PanelDialog&) = delete;
    PanelDialog& operator=(const PanelDialog&) = delete;

    HWND m_hDlg;
};

} // namespace

TEST(UQMessagePanel, InitialisationAnswersOneAndChangesNothingShown) {
    PanelDialog dialog(IDD_MESSAGE_PANEL);
    UQMessagePanel panel;
    LogCheck log;
    EXPECT_EQ(panel.mf_onInitDialog(dialog.m_hDlg), 1);
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_HEADING), "old heading");
    EXPECT_EQ(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), nullptr);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQMessagePanel, EachSeverityShowsItsIconWithTheHeadingAndTheMessage) {
    PanelDialog dialog(IDD_MESSAGE_PANEL);
    UQMessagePanel panel(32);
    panel.mf_onInitDialog(dialog.m_hDlg);
    const struct {
        int nSeverity;
        WORD wIcon;
    } cases[] = {{UVSeverity::GREEN, IDI_SEVERITY_GREEN},
                 {UVSeverity::YELLOW, IDI_SEVERITY_YELLOW},
                 {UVSeverity::RED, IDI_SEVERITY_RED}};
    for (const auto& c : cases) {
        panel.mf_setMessage(UQSeverity(c.nSeverity), L"Heading %s", L"Message %n");
        EXPECT_TRUE(sameIcon(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), languageIcon(c.wIcon, 32)))
            << c.nSeverity;
        EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_HEADING), "Heading %s");
        EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_TEXT), "Message %n");
    }
    // Loaded once per panel: the same handle each time the severity comes again.
    panel.mf_setMessage(UQSeverity(UVSeverity::RED), L"h", L"m");
    const HICON hRed = iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON);
    panel.mf_setMessage(UQSeverity(UVSeverity::GREEN), L"h", L"m");
    panel.mf_setMessage(UQSeverity(UVSeverity::RED), L"h", L"m");
    EXPECT_EQ(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), hRed);
}

TEST(UQMessagePanel, ASeverityThatIsNoneOfTheThreeClearsTheIcon) {
    PanelDialog dialog(IDD_MESSAGE_PANEL);
    UQMessagePanel panel;
    panel.mf_onInitDialog(dialog.m_hDlg);
    panel.mf_setMessage(UQSeverity(UVSeverity::RED), L"h", L"m");
    ASSERT_NE(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), nullptr);
    panel.mf_setMessage(UQSeverity(-1), L"h2", L"m2");
    EXPECT_EQ(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), nullptr);
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_TEXT), "m2");
}

TEST(UQMessagePanel, AnErrorShowsItsTextForTheUserUnderItsSeveritysName) {
    PanelDialog dialog(IDD_MESSAGE_PANEL);
    UQMessagePanel panel;
    panel.mf_onInitDialog(dialog.m_hDlg);
    const UQErrnoData warning(UQErrno::_W_::UserCanceled);
    panel.mf_setMessage(warning);
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_HEADING),
              utf8(UVSeverity::mf_toString(UQSeverity::Warning)));
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_TEXT), utf8(UQErrno::mf_toGuiMessage(warning, CString())));
    EXPECT_TRUE(sameIcon(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), languageIcon(IDI_SEVERITY_YELLOW, 16)));

    const UQErrno error(UQErrnoData(UQErrno::_E_::File), 5u);
    panel.mf_setMessage(error);
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_HEADING), utf8(UVSeverity::mf_toString(UQSeverity::Error)));
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_TEXT),
              utf8(UQErrno::mf_toGuiMessage(UQErrnoData(UQErrno::_E_::File), CString())));
    EXPECT_TRUE(sameIcon(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), languageIcon(IDI_SEVERITY_RED, 16)));
}

TEST(UQMessagePanel, HideShowsTheBlankIconAndEmptyTextsAndKeepsTheItemsVisible) {
    PanelDialog dialog(IDD_MESSAGE_PANEL);
    UQMessagePanel panel;
    panel.mf_onInitDialog(dialog.m_hDlg);
    panel.mf_setMessage(UQSeverity(UVSeverity::RED), L"Heading", L"Message");
    panel.mf_hide();
    EXPECT_TRUE(sameIcon(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), languageIcon(IDI_BLANK, 16)));
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_HEADING), "");
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_TEXT), "");
    for (int nId : {IDC_MESSAGE_ICON, IDC_MESSAGE_HEADING, IDC_MESSAGE_TEXT})
        EXPECT_TRUE(GetWindowLongW(GetDlgItem(dialog.m_hDlg, nId), GWL_STYLE) & WS_VISIBLE) << nId;
}

TEST(UQMessagePanel, ADialogWithoutSomeItemsGetsTheOnesItHas) {
    PanelDialog dialog(IDD_MESSAGE_PANEL_PARTIAL);
    UQMessagePanel panel;
    LogCheck log;
    EXPECT_EQ(panel.mf_onInitDialog(dialog.m_hDlg), 1);
    panel.mf_setMessage(UQSeverity(UVSeverity::GREEN), L"Heading", L"Only the message");
    panel.mf_hide();
    panel.mf_setMessage(UQSeverity(UVSeverity::GREEN), L"Heading", L"Only the message");
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_TEXT), "Only the message");
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQMessagePanel, APanelBeforeItsInitialisationChangesNothing) {
    UQMessagePanel panel;
    LogCheck log;
    panel.mf_setMessage(UQSeverity(UVSeverity::RED), L"Heading", L"Message");
    panel.mf_hide();
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQMessagePanel, ACopyWorksOnTheSameItems) {
    PanelDialog dialog(IDD_MESSAGE_PANEL);
    UQMessagePanel panel;
    panel.mf_onInitDialog(dialog.m_hDlg);
    panel.mf_setMessage(UQSeverity(UVSeverity::GREEN), L"h", L"m");
    {
        UQMessagePanel copy(panel);
        copy.mf_setMessage(UQSeverity(UVSeverity::YELLOW), L"from the copy", L"copy");
    }
    EXPECT_EQ(itemText(dialog.m_hDlg, IDC_MESSAGE_HEADING), "from the copy");
    // The copy's end released nothing the panel still shows.
    panel.mf_setMessage(UQSeverity(UVSeverity::GREEN), L"h", L"m");
    EXPECT_TRUE(sameIcon(iconOf(dialog.m_hDlg, IDC_MESSAGE_ICON), languageIcon(IDI_SEVERITY_GREEN, 16)));
}
