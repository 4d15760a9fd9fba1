// The caption message box: a bold caption line on a band in the highlight colour, the message box's
// buttons through its virtual slots, an empty message refused, and a failed show turned into 0.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/toolkit/UQCaptionMessageBox.h"
#include "korlang_ids.h"

#include <memory>

using namespace toolkittest;

namespace {

const std::string TAB = "    ";

class UQCaptionMessageBoxTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
};

} // namespace

TEST_F(UQCaptionMessageBoxTest, TheCaptionLineIsBoldOnTheHighlightBand) {
    UQCaptionMessageBox box(L"The history store was searched.", UQMessageBox::BUTTONS_SINGLE,
                            L"History search", L"Search");
    std::string sCaptionLine;
    std::string sMessage;
    LOGFONTW font;
    ZeroMemory(&font, sizeof font);
    LRESULT nBandBrush = 0;
    COLORREF crBandBackground = CLR_INVALID;
    LRESULT nOtherBrush = -1;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sCaptionLine = itemText(_hDlg, IDC_MESSAGE_CAPTION_LINE);
        sMessage = itemText(_hDlg, IDC_MESSAGE_TEXT);
        HWND hBand = GetDlgItem(_hDlg, IDC_MESSAGE_CAPTION_LINE);
        GetObjectW(reinterpret_cast<HFONT>(SendMessageW(hBand, WM_GETFONT, 0, 0)), sizeof font, &font);
        HDC hDC = GetDC(hBand);
        SetBkColor(hDC, RGB(1, 2, 3));
        nBandBrush = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                                  reinterpret_cast<LPARAM>(hBand));
        crBandBackground = GetBkColor(hDC);
        ReleaseDC(hBand, hDC);
        HWND hText = GetDlgItem(_hDlg, IDC_MESSAGE_TEXT);
        hDC = GetDC(hText);
        nOtherBrush = SendMessageW(_hDlg, WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                                   reinterpret_cast<LPARAM>(hText));
        ReleaseDC(hText, hDC);
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    LogCheck log;
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
    EXPECT_EQ(sCaptionLine, "History search");
    EXPECT_EQ(sMessage, "The history store was searched.");
    EXPECT_EQ(font.lfHeight, 16);
    EXPECT_EQ(font.lfWeight, FW_BOLD);
    EXPECT_EQ(nBandBrush, reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNHIGHLIGHT)));
    EXPECT_EQ(crBandBackground, GetSysColor(COLOR_BTNHIGHLIGHT));
    // Other statics are the dialog manager's: the face colour.
    EXPECT_EQ(nOtherBrush, reinterpret_cast<LRESULT>(GetSysColorBrush(COLOR_BTNFACE)));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'G', "UQMessageBox::mf_onInitDialog", "Set focus to button 2"},
                  {'G', "UQMessageBox::mf_onButtonClicked", "Terminating dialog with result RESULT_YES"}}));
}

TEST_F(UQCaptionMessageBoxTest, AnEmptyCaptionLineShowsTheDefaultText) {
    UQCaptionMessageBox box(L"Migrate?", UQMessageBox::BUTTONS_YES_NO, CString(), CString());
    std::string sCaptionLine;
    std::string sTitle;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sCaptionLine = itemText(_hDlg, IDC_MESSAGE_CAPTION_LINE);
        sTitle = textOf(_hDlg);
        pressKey(VK_ESCAPE);
    });
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_CANCEL);
    EXPECT_EQ(sCaptionLine, "Hierarchical Storage Management");
    EXPECT_EQ(sTitle, "Stormex HSM Client");
}

TEST_F(UQCaptionMessageBoxTest, AnEmptyMessageIsRefused) {
    LogCheck log;
    EXPECT_EQ(
        thrownCategory([] { UQCaptionMessageBox box(CString(), UQMessageBox::BUTTONS_SINGLE, L"x", L"y"); }),
        "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQCaptionMessageBox::UQCaptionMessageBox", "No message defined"}}));
}

TEST_F(UQCaptionMessageBoxTest, ATemplateThatDoesNotExistIsLoggedTwiceAndAnswersZero) {
    UQCaptionMessageBox box(L"text", UQMessageBox::BUTTONS_SINGLE, L"line", L"caption");
    const std::string sError = errorText(UQErrno::_E_::Gui, ERROR_RESOURCE_NAME_NOT_FOUND);
    LogCheck log;
    EXPECT_EQ(static_cast<int>(box.mf_show(nullptr, 2, 4711)), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQMessageBox::mf_show", "Failure showing message box:\r\n" + TAB + sError},
                  {'E', "UQCaptionMessageBox::mf_show",
                   "Failure showing caption message box:\r\n" + TAB + sError}}));
}

TEST_F(UQCaptionMessageBoxTest, ThroughTheMessageBoxItStillTakesItsOwnTemplateAndBand) {
    UQCaptionMessageBox caption(L"text", UQMessageBox::BUTTONS_SINGLE, L"The band", L"caption");
    UQMessageBox& box = caption;
    std::string sCaptionLine;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sCaptionLine = itemText(_hDlg, IDC_MESSAGE_CAPTION_LINE);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
    EXPECT_EQ(sCaptionLine, "The band");
}

TEST_F(UQCaptionMessageBoxTest, ACopyKeepsItsBandFontWhenTheOriginalIsGone) {
    std::unique_ptr<UQCaptionMessageBox> pCopy;
    {
        const UQCaptionMessageBox original(L"text", UQMessageBox::BUTTONS_SINGLE, L"line", L"caption");
        pCopy = std::make_unique<UQCaptionMessageBox>(original);
    }
    LOGFONTW font;
    ZeroMemory(&font, sizeof font);
    int nBytes = 0;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        HWND hBand = GetDlgItem(_hDlg, IDC_MESSAGE_CAPTION_LINE);
        nBytes =
            GetObjectW(reinterpret_cast<HFONT>(SendMessageW(hBand, WM_GETFONT, 0, 0)), sizeof font, &font);
        PostMessageW(_hDlg, WM_CLOSE, 0, 0);
    });
    EXPECT_EQ(pCopy->mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
    EXPECT_EQ(nBytes, static_cast<int>(sizeof font));
    EXPECT_EQ(font.lfWeight, FW_BOLD);
}
