// The plain progress dialog with a real worker thread: events of every action while it is open, Cancel and
// the [x] box that only trip the switch, the end action that ends it with 0 after the worker, control 376
// that ends it with 1 at once, and the failures around it.
#include "DialogDriver.h"
#include "ProgressTestSupport.h"

#include "guibase/wizard/UQProgressDialog.h"
#include "korlang_ids.h"

using namespace toolkittest;
using namespace progresstest;

namespace {

const std::string ON_EVENT = "UQProgressDialog::mf_onEvent";
const std::string CALLBACK_NAME = "f_ProgressDialogCallback";
const std::string TAB = "    ";

HINSTANCE language() {
    return UQLanguage::mf_getUserLanguageHandle();
}

HINSTANCE testResources() {
    return GetModuleHandleW(nullptr);
}

class UQProgressDialogTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
};

// Counts the close requests (WM_USER + 1) that reach dialogs of this thread.
class CloseRequestCounter {
public:
    CloseRequestCounter() {
        s_nCount = 0;
        m_hHook = SetWindowsHookExW(WH_GETMESSAGE, &CloseRequestCounter::hook, nullptr, GetCurrentThreadId());
    }
    ~CloseRequestCounter() { UnhookWindowsHookEx(m_hHook); }
    CloseRequestCounter(const CloseRequestCounter&) = delete;
    CloseRequestCounter& operator=(const CloseRequestCounter&) = delete;
    int count() const { return s_nCount; }

private:
    static LRESULT CALLBACK hook(int _nCode, WPARAM _wParam, LPARAM _lParam) {
        const MSG* pMsg = reinterpret_cast<const MSG*>(_lParam);
        if (_nCode == HC_ACTION && _wParam == PM_REMOVE && pMsg->message == WM_USER + 1)
            ++s_nCount;
        return CallNextHookEx(nullptr, _nCode, _wParam, _lParam);
    }
    static int s_nCount;
    HHOOK m_hHook;
};
int CloseRequestCounter::s_nCount = 0;

} // namespace

TEST_F(UQProgressDialogTest, EventsOfEveryActionUpdateTheOpenDialogAndCancelWaitsForTheEndAction) {
    UQProgressDialog* pDialog = nullptr;
    std::string sAfterStart = "?", sAfterProgress, sTitle;
    bool bCancelAfterDisable = true, bCancelAfterEnable = false, bCancelled = false, bOpenAfterCancel = false;
    ScriptedWorker worker([&](ScriptedWorker& _worker) {
        const HWND hDlg = pDialog->mf_getDialog();
        sTitle = textOf(hDlg);
        publish(UQProgressEvent::ACTION_START, L"ignored");
        sAfterStart = itemText(hDlg, IDC_PROGRESS_STATUS);
        publish(UQProgressEvent::ACTION_PROGRESS, L"Copying C:\\data\\a.txt");
        sAfterProgress = itemText(hDlg, IDC_PROGRESS_STATUS);
        publish(UQProgressEvent::ACTION_DISABLE_CANCEL);
        bCancelAfterDisable = isEnabled(hDlg, IDCANCEL);
        publish(UQProgressEvent::ACTION_ENABLE_CANCEL);
        bCancelAfterEnable = isEnabled(hDlg, IDCANCEL);
        publish(7);
        bCancelled = _worker.waitCancelled() != 0;
        bOpenAfterCancel = IsWindowVisible(hDlg) != FALSE;
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDCANCEL); });
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_FALSE(worker.mf_isRunning());
    EXPECT_EQ(sTitle, "Copying files");
    EXPECT_EQ(sAfterStart, "");
    EXPECT_EQ(sAfterProgress, "Copying C:\\data\\a.txt");
    EXPECT_FALSE(bCancelAfterDisable);
    EXPECT_TRUE(bCancelAfterEnable);
    EXPECT_TRUE(bCancelled);
    EXPECT_TRUE(bOpenAfterCancel);
    EXPECT_EQ(dialog.mf_getCancelSwitch().mf_getCancelReason().mf_getValue(), &UQErrno::_W_::UserCanceled);
    EXPECT_EQ(dialog.mf_getDialog(), nullptr);
    EXPECT_FALSE(driver.timedOut());
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'D', ON_EVENT, "Unexpected progress-event action: 7"}}));
}

TEST_F(UQProgressDialogTest, TheCloseBoxTripsTheSwitchAndTheDialogWaitsForTheEndAction) {
    UQProgressDialog* pDialog = nullptr;
    bool bCancelled = false, bOpenAfterCancel = false;
    ScriptedWorker worker([&](ScriptedWorker& _worker) {
        bCancelled = _worker.waitCancelled() != 0;
        bOpenAfterCancel = IsWindowVisible(pDialog->mf_getDialog()) != FALSE;
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.then([](HWND _hDlg) { PostMessageW(_hDlg, WM_SYSCOMMAND, SC_CLOSE, 0); });
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_TRUE(bCancelled);
    EXPECT_TRUE(bOpenAfterCancel);
    EXPECT_FALSE(worker.mf_isRunning());
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQProgressDialogTest, TheEndActionEndsTheDialogWithZeroOnceTheWorkerHasEnded) {
    std::atomic<bool> bReturned{false};
    bool bReturnedBeforeWorkerEnd = true;
    ScriptedWorker worker([&](ScriptedWorker&) {
        publish(UQProgressEvent::ACTION_PROGRESS, L"Last file");
        publish(UQProgressEvent::ACTION_END);
        // Still inside the worker after the end action: the dialog waits for it.
        bReturnedBeforeWorkerEnd = bReturned.load();
    });
    UQProgressDialog dialog(L"Copying files", worker);
    DialogDriver driver;
    driver.onlyWatchTheTime();
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    bReturned = true;
    EXPECT_FALSE(worker.mf_isRunning());
    EXPECT_FALSE(bReturnedBeforeWorkerEnd);
    EXPECT_FALSE(dialog.mf_getCancelSwitch().mf_isCancelled());
    EXPECT_FALSE(driver.timedOut());
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQProgressDialogTest, Control376EndsTheDialogWithOneAtOnceWithoutCancellingTheWorker) {
    ScriptedWorker worker([](ScriptedWorker& _worker) {
        if (_worker.waitCancelled())
            publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    DialogDriver driver;
    driver.then([](HWND _hDlg) { DialogDriver::click(_hDlg, IDC_PROGRESS_CLOSE); });
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 1);
    EXPECT_TRUE(worker.mf_isRunning());
    EXPECT_FALSE(dialog.mf_getCancelSwitch().mf_isCancelled());
    // The application ends its worker itself; the end action finds no dialog any more.
    dialog.mf_getCancelSwitch().mf_implTryCancel();
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQProgressDialogTest, EventsAfterTheEndActionStillReachTheDialogAndTheFirstCloseRequestEndsIt) {
    UQProgressDialog* pDialog = nullptr;
    std::string sAfterEnd;
    ScriptedWorker worker([&](ScriptedWorker&) {
        publish(UQProgressEvent::ACTION_END);
        publish(UQProgressEvent::ACTION_PROGRESS, L"After the end");
        sAfterEnd = itemText(pDialog->mf_getDialog(), IDC_PROGRESS_STATUS);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.onlyWatchTheTime();
    CloseRequestCounter requests;
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_FALSE(worker.mf_isRunning());
    pumpMessages();
    // The second request arrives while the first one waits for the worker; the dialog ends after the first
    // and its window takes the second with it.
    EXPECT_EQ(requests.count(), 1);
    EXPECT_EQ(sAfterEnd, "After the end");
    EXPECT_FALSE(driver.timedOut());
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQProgressDialogTest, AnActionOneEventChangesNothing) {
    UQProgressDialog* pDialog = nullptr;
    std::string sBefore = "?", sAfter = "!";
    bool bCancelEnabled = false;
    ScriptedWorker worker([&](ScriptedWorker&) {
        const HWND hDlg = pDialog->mf_getDialog();
        publish(UQProgressEvent::ACTION_PROGRESS, L"Before");
        sBefore = itemText(hDlg, IDC_PROGRESS_STATUS);
        publish(UQProgressEvent::ACTION_START, L"Start text");
        sAfter = itemText(hDlg, IDC_PROGRESS_STATUS);
        bCancelEnabled = isEnabled(hDlg, IDCANCEL);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.onlyWatchTheTime();
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_EQ(sBefore, "Before");
    EXPECT_EQ(sAfter, "Before");
    EXPECT_TRUE(bCancelEnabled);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQProgressDialogTest, ProgressOnADialogWithoutStatusTextChangesNothing) {
    UQProgressDialog* pDialog = nullptr;
    std::string sTitle;
    bool bCancelAfterDisable = true;
    ScriptedWorker worker([&](ScriptedWorker&) {
        const HWND hDlg = pDialog->mf_getDialog();
        publish(UQProgressEvent::ACTION_PROGRESS, L"Nowhere to show");
        sTitle = textOf(hDlg);
        publish(UQProgressEvent::ACTION_DISABLE_CANCEL);
        bCancelAfterDisable = isEnabled(hDlg, IDCANCEL);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.onlyWatchTheTime();
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(testResources(), nullptr, IDD_PROGRESS_NO_STATUS), 0);
    EXPECT_EQ(sTitle, "Copying files");
    EXPECT_FALSE(bCancelAfterDisable);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQProgressDialogTest, OtherNotificationsAreNotLookedAtAndMessagesWithoutUserDataAreLogged) {
    ScriptedWorker worker([](ScriptedWorker& _worker) {
        if (_worker.waitCancelled())
            publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    std::size_t nAfterOtherNotify = 99;
    LogCheck log;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, 0);
        NMHDR nmhdr{};
        nmhdr.hwndFrom = _hDlg;
        nmhdr.code = NM_CLICK;
        SendMessageW(_hDlg, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&nmhdr));
        nAfterOtherNotify = log.count();
        nmhdr.code = LVN_GETDISPINFOW;
        SendMessageW(_hDlg, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&nmhdr));
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
        // Answered before the user data is looked at.
        DialogDriver::click(_hDlg, IDC_PROGRESS_CLOSE);
    });
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 1);
    EXPECT_EQ(nAfterOtherNotify, 0u);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', CALLBACK_NAME, "No user data pointer in call WM_COMMAND"},
                               {'E', CALLBACK_NAME, "No user data pointer in call WM_COMMAND"},
                           }));
    dialog.mf_getCancelSwitch().mf_implTryCancel();
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
}

TEST_F(UQProgressDialogTest, AWorkerThatCannotStartIsLoggedAndTheDialogStaysOpenToBeClosed) {
    ScriptedWorker worker([](ScriptedWorker& _worker) {
        if (_worker.waitCancelled())
            publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    // Already running: the dialog's start fails.
    worker.mf_start();
    bool bOpen = false;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        bOpen = IsWindowVisible(_hDlg) != FALSE;
        DialogDriver::click(_hDlg, IDC_PROGRESS_CLOSE);
    });
    LogCheck log;
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 1);
    EXPECT_TRUE(bOpen);
    const std::string sError = errorText(UQErrno::_E_::AlreadyInitialized, 0);
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQThreads::mf_start", "Thread 'Progress test worker' is already running"},
            {'E', "UQProgressDialog::mf_implOnInitDialog", "Failure starting threads:\r\n" + TAB + sError},
        }));
    dialog.mf_getCancelSwitch().mf_implTryCancel();
    EXPECT_EQ(worker.mf_stopWait(LIMIT_MS).mf_getNumber(), 0u);
}

TEST_F(UQProgressDialogTest, ASecondDialogOnAWorkerWithASwitchPassesTheFailureOn) {
    ScriptedWorker worker([](ScriptedWorker&) {});
    UQProgressDialog first(L"First", worker);
    const int nListeners = UQEventManager::mf_getListenerCount(UQEVENT_ID_PROGRESS);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { UQProgressDialog second(L"Second", worker); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(UQEventManager::mf_getListenerCount(UQEVENT_ID_PROGRESS), nListeners);
    EXPECT_EQ(worker.mf_getCancelSwitch(), &first.mf_getCancelSwitch());
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQCancelObject::mf_installCancelSwitch",
                                                  "Cancel switch is already set"}}));
}

TEST_F(UQProgressDialogTest, AMissingTemplateIsThrownAsAGuiFailure) {
    ScriptedWorker worker([](ScriptedWorker&) {});
    UQProgressDialog dialog(L"Copying files", worker);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { dialog.mf_execute(language(), nullptr, 999); }), "_E_::Gui");
    EXPECT_FALSE(worker.mf_isRunning());
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].level, 'E');
    EXPECT_EQ(lines[0].function, "UQProgressDialog::mf_execute");
    EXPECT_EQ(lines[0].text, "Failure showing progress dialog:\r\n" + TAB +
                                 errorText(UQErrno::_E_::Gui, ERROR_RESOURCE_NAME_NOT_FOUND));
}

TEST_F(UQProgressDialogTest, TheListenerNamesItself) {
    ScriptedWorker worker([](ScriptedWorker&) {});
    UQProgressDialog dialog(L"Copying files", worker);
    EXPECT_EQ(dialog.mf_toString(), L"progress-dialog");
    EXPECT_EQ(dialog.mf_getEventId(), 0x0040000000000000ull);
    EXPECT_TRUE(dialog.mf_isRegistered());
}

TEST_F(UQProgressDialogTest, ACopyMadeWhileOpenHasTheDialogHandleAndSharesTheWorkersCancelSwitch) {
    ScriptedWorker worker([](ScriptedWorker& _worker) {
        if (_worker.waitCancelled())
            publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Copying files", worker);
    HWND hCopied = nullptr, hOpen = nullptr;
    int bCancelledThroughCopy = 0;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        hOpen = _hDlg;
        UQProgressDialog copy(dialog);
        hCopied = copy.mf_getDialog();
        // The copy trips the very switch the worker holds: the worker ends and so does the dialog.
        bCancelledThroughCopy = copy.mf_getCancelSwitch().mf_implTryCancel();
    });
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_NE(hOpen, nullptr);
    EXPECT_EQ(hCopied, hOpen);
    EXPECT_EQ(bCancelledThroughCopy, 1);
    EXPECT_TRUE(dialog.mf_getCancelSwitch().mf_isCancelled());
    EXPECT_EQ(worker.mf_getCancelSwitch(), &dialog.mf_getCancelSwitch());
}
