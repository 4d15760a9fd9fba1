// The bar dialog with a real worker: counters, the bar's percentage and style, its own cancel button, the
// records of an unknown action from both classes, and a template that lacks the bar.
#include "DialogDriver.h"
#include "ProgressTestSupport.h"

#include "guibase/wizard/UQProgressBarDialog.h"
#include "korlang_ids.h"

using namespace toolkittest;
using namespace progresstest;

namespace {

const std::string SET_PROGRESS = "UQProgressBar::mf_implSetProgress";
const std::string SET_RUNNING = "UQProgressBar::mf_implSetRunning";
const std::string SET_STYLE = "UQProgressBar::mf_implSetStyle";
const std::string TAB = "    ";

HINSTANCE language() {
    return UQLanguage::mf_getUserLanguageHandle();
}

class UQProgressBarDialogTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
};

struct BarState {
    int nPos = -1;
    int nLow = -1;
    int nHigh = -1;
    bool bMarqueeStyle = true;
};

BarState barOf(HWND _hDlg) {
    BarState state;
    HWND hBar = GetDlgItem(_hDlg, IDC_PROGRESS_BAR);
    PBRANGE range{};
    SendMessageW(hBar, PBM_GETRANGE, FALSE, reinterpret_cast<LPARAM>(&range));
    state.nPos = static_cast<int>(SendMessageW(hBar, PBM_GETPOS, 0, 0));
    state.nLow = range.iLow;
    state.nHigh = range.iHigh;
    state.bMarqueeStyle = (GetWindowLongW(hBar, GWL_STYLE) & PBS_MARQUEE) != 0;
    return state;
}

// The records of opening: the fresh bar is attached (a stopped marquee), then set to 0 %.
std::vector<LogLine> openingRecords() {
    return {
        {'G', SET_STYLE, "Set progress bar style to STYLE_MARQUEE"},
        {'G', SET_PROGRESS, "Set progress bar progress to NONE (STYLE_MARQUEE, not applicable)"},
        {'G', SET_RUNNING, "Set progress bar running state to FALSE (STYLE_MARQUEE)"},
        {'G', SET_STYLE, "Set progress bar style to STYLE_PERCENT"},
        {'G', SET_PROGRESS, "Set progress bar progress to 0% (STYLE_PERCENT)"},
    };
}

} // namespace

TEST_F(UQProgressBarDialogTest, EventsOfEveryActionSetCountersBarAndTheCancelButton) {
    UQProgressBarDialog* pDialog = nullptr;
    BarState atOpen, atQuarter;
    std::string sCurrentAtOpen = "?", sStatus, sCurrent, sTotal;
    bool bCancelAfterDisable = true, bCancelAfterEnable = false;
    ScriptedWorker worker([&](ScriptedWorker&) {
        const HWND hDlg = pDialog->mf_getDialog();
        atOpen = barOf(hDlg);
        sCurrentAtOpen = itemText(hDlg, IDC_PROGRESS_CURRENT);
        publish(UQProgressEvent::ACTION_START);
        publish(UQProgressEvent::ACTION_PROGRESS, L"Copying b.doc", 1234, 5678, 512, 2048);
        atQuarter = barOf(hDlg);
        sStatus = itemText(hDlg, IDC_PROGRESS_STATUS);
        sCurrent = itemText(hDlg, IDC_PROGRESS_CURRENT);
        sTotal = itemText(hDlg, IDC_PROGRESS_TOTAL);
        publish(UQProgressEvent::ACTION_DISABLE_CANCEL);
        bCancelAfterDisable = isEnabled(hDlg, IDC_PROGRESS_CANCEL);
        publish(UQProgressEvent::ACTION_ENABLE_CANCEL);
        bCancelAfterEnable = isEnabled(hDlg, IDC_PROGRESS_CANCEL);
        publish(9);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.onlyWatchTheTime();
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS_BAR), 0);
    EXPECT_FALSE(worker.mf_isRunning());
    EXPECT_EQ(atOpen.nPos, 0);
    EXPECT_EQ(atOpen.nLow, 0);
    EXPECT_EQ(atOpen.nHigh, 100);
    EXPECT_FALSE(atOpen.bMarqueeStyle);
    EXPECT_EQ(sCurrentAtOpen, "");
    EXPECT_EQ(atQuarter.nPos, 25);
    EXPECT_EQ(sStatus, "Copying b.doc");
    EXPECT_EQ(sCurrent, "1,234");
    EXPECT_EQ(sTotal, "5,678");
    EXPECT_FALSE(bCancelAfterDisable);
    EXPECT_TRUE(bCancelAfterEnable);
    EXPECT_EQ(dialog.mf_getProgressBar().mf_getProgress(), 25ul);
    std::vector<LogLine> expected = openingRecords();
    expected.push_back({'G', SET_PROGRESS, "Set progress bar progress to 25% (STYLE_PERCENT)"});
    expected.push_back({'D', "UQProgressDialog::mf_onEvent", "Unexpected progress-event action: 9"});
    expected.push_back({'D', "UQProgressBarDialog::mf_onEvent", "Unexpected progress-event action: 9"});
    EXPECT_EQ(log.lines(), expected);
}

TEST_F(UQProgressBarDialogTest, ItsCancelButtonTripsTheSwitchAndTheBarStaysWhereTheWorkerLeftIt) {
    UQProgressBarDialog* pDialog = nullptr;
    bool bOpenAfterCancel = false;
    BarState atEnd;
    ScriptedWorker worker([&](ScriptedWorker& _worker) {
        publish(UQProgressEvent::ACTION_PROGRESS, L"Half", 1, 2, 40, 100);
        if (_worker.waitCancelled()) {
            bOpenAfterCancel = IsWindowVisible(pDialog->mf_getDialog()) != FALSE;
            atEnd = barOf(pDialog->mf_getDialog());
            publish(UQProgressEvent::ACTION_END);
        }
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDC_PROGRESS_CANCEL); });
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS_BAR), 0);
    EXPECT_TRUE(bOpenAfterCancel);
    EXPECT_EQ(atEnd.nPos, 40);
    EXPECT_EQ(dialog.mf_getCancelSwitch().mf_getCancelReason().mf_getValue(), &UQErrno::_W_::UserCanceled);
    EXPECT_FALSE(worker.mf_isRunning());
}

TEST_F(UQProgressBarDialogTest, EscapeCancelsLikeTheCancelButton) {
    ScriptedWorker worker([&](ScriptedWorker& _worker) {
        if (_worker.waitCancelled())
            publish(UQProgressEvent::ACTION_END);
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0); });
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS_BAR), 0);
    EXPECT_TRUE(dialog.mf_getCancelSwitch().mf_isCancelled());
}

TEST_F(UQProgressBarDialogTest, ATemplateWithoutBarAndCountersIsLoggedAndStillRuns) {
    UQProgressBarDialog* pDialog = nullptr;
    std::string sStatus;
    ScriptedWorker worker([&](ScriptedWorker&) {
        publish(UQProgressEvent::ACTION_PROGRESS, L"Plain", 1, 2, 1, 2);
        sStatus = itemText(pDialog->mf_getDialog(), IDC_PROGRESS_STATUS);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.onlyWatchTheTime();
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_EQ(sStatus, "Plain");
    const std::string sMissing = errorText(UQErrno::_E_::ItemNotFound, 0);
    auto missing = [&](int _nId, const std::string& _sForm) {
        return std::vector<LogLine>{
            {'E', "UQWindow::mf_getItem",
             "Failure getting item with id=" + std::to_string(_nId) + ":\r\n" + TAB + sMissing},
            {'E', _sForm, "Failure getting item with id=" + std::to_string(_nId) + ":\r\n" + TAB + sMissing},
        };
    };
    std::vector<LogLine> expected;
    for (const LogLine& line : missing(IDC_PROGRESS_CURRENT, "UQWindow::mf_setItemText"))
        expected.push_back(line);
    for (const LogLine& line : missing(IDC_PROGRESS_TOTAL, "UQWindow::mf_setItemText"))
        expected.push_back(line);
    expected.push_back(
        {'E', "UQWindow::mf_getItem", "Failure getting item with id=336:\r\n" + TAB + sMissing});
    // Without a control the style changes silently.
    expected.push_back({'G', SET_PROGRESS, "Set progress bar progress to 0% (STYLE_PERCENT)"});
    for (const LogLine& line : missing(IDC_PROGRESS_CURRENT, "UQWindow::mf_setItemText"))
        expected.push_back(line);
    for (const LogLine& line : missing(IDC_PROGRESS_TOTAL, "UQWindow::mf_setItemText"))
        expected.push_back(line);
    expected.push_back({'G', SET_PROGRESS, "Set progress bar progress to 50% (STYLE_PERCENT)"});
    EXPECT_EQ(log.lines(), expected);
}

TEST_F(UQProgressBarDialogTest, TheListenerNamesItselfAndStartsAsAFreshBar) {
    ScriptedWorker worker([](ScriptedWorker&) {});
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    EXPECT_EQ(dialog.mf_toString(), L"progress-bar-dialog");
    EXPECT_EQ(dialog.mf_getProgressBar().mf_getStyle(), UQProgressBar::STYLE_MARQUEE);
    EXPECT_EQ(dialog.mf_getProgressBar().mf_getProgress(), 0xFFFFFFFFul);
    EXPECT_EQ(dialog.mf_getProgressBar().mf_getProgressBar(), nullptr);
    EXPECT_TRUE(dialog.mf_isRegistered());
}
