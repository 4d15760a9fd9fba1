// The dialog gallery: every dialog of the library opened through its own call in its typical states, each
// state saved as one PNG. The pictures go to the folder named by KOR_GALLERY_DIR (docs/gallery/ when the
// docs_gallery target makes them); each test fails when its picture cannot be made.
#include "DialogCatalogue.h"
#include "DialogDriver.h"
#include "GallerySupport.h"
#include "Screenshot.h"
#include "ToolkitTestSupport.h"
#include "WizardTestSupport.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQCaptionMessageBox.h"
#include "guibase/toolkit/UQHelpDialog.h"
#include "guibase/toolkit/UQInformationBox.h"
#include "guibase/toolkit/UQLineEditor.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "guibase/toolkit/UQStatusBar.h"
#include "korlang_ids.h"

#include "PanelsTestSupport.h"
#include "guibase/panels/UQMgmtClassPanel.h"
#include "guibase/panels/UQSearchUserDialog.h"
#include "guibase/wizard/UQProgressBar.h"
#include "guibase/wizard/UQProgressBarDialog.h"
#include "guibase/wizard/UQProgressDialog.h"
#include "interfaces/korutil.h"
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

using namespace toolkittest;

namespace {

// A step that shows the keyboard cues, saves the picture, and then ends the dialog as _finish does.
void savePicture(HWND _hDlg, const wchar_t* _pszName) {
    EXPECT_EQ(gallery::savePicture(_hDlg, _pszName), "") << utf8(_pszName);
}

DialogDriver::Step picture(const wchar_t* _pszName, std::function<void(HWND)> _finish) {
    return [_pszName, _finish](HWND _hDlg) {
        savePicture(_hDlg, _pszName);
        _finish(_hDlg);
    };
}

std::function<void(HWND)> click(int _nId) {
    return [_nId](HWND _hDlg) { DialogDriver::click(_hDlg, _nId); };
}

void closeBox(HWND _hDlg) {
    PostMessageW(_hDlg, WM_CLOSE, 0, 0);
}

class Gallery : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
    void TearDown() override {
        EXPECT_EQ(m_driver.unexpectedDialogs(), 0);
        EXPECT_EQ(m_driver.stepsLeft(), 0);
    }
    DialogDriver m_driver;
};

} // namespace

TEST_F(Gallery, MessageBoxInformation) {
    m_driver.then(picture(L"message-box-information", click(IDC_MESSAGE_BUTTON2)));
    UQMessageBox box(L"The migration has finished. 214 files were migrated and replaced by stub files; "
                     L"their data is on the storage server.",
                     UQSeverity(UVSeverity::GREEN), UQMessageBox::BUTTONS_SINGLE, L"Migration");
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
}

TEST_F(Gallery, MessageBoxQuestion) {
    m_driver.then(picture(L"message-box-question", click(IDC_MESSAGE_BUTTON1)));
    UQMessageBox box(L"12 of the selected files are stub files. Recall their data from the storage server "
                     L"before they are retrieved?",
                     UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO, L"Retrieve");
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_YES);
}

TEST_F(Gallery, MessageBoxError) {
    m_driver.then(picture(L"message-box-error", click(IDC_MESSAGE_BUTTON2)));
    UQMessageBox box(UQErrnoData(UQErrno::_E_::Registry), CString());
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_YES);
}

TEST_F(Gallery, MessageBoxWithoutButtons) {
    m_driver.then(picture(L"message-box-no-buttons", closeBox));
    UQMessageBox box(L"Searching the history of \\\\fs01\\projects ...", UQSeverity(UVSeverity::GREEN),
                     UQMessageBox::BUTTONS_NONE, L"History search");
    EXPECT_EQ(box.mf_show(nullptr), UQMessageBox::RESULT_CANCEL);
}

TEST_F(Gallery, CaptionMessageBox) {
    m_driver.then(picture(L"caption-message-box", click(IDC_MESSAGE_BUTTON2)));
    UQCaptionMessageBox box(
        L"Files that have not been accessed for 90 days are migrated to the storage server "
        L"and replaced by stub files. Opening a stub file recalls its data.",
        UQMessageBox::BUTTONS_YES_NO, L"Migration settings", L"Stormex HSM Client");
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_NO);
}

TEST_F(Gallery, InformationBox) {
    registrytest::RegistrySandbox sandbox;
    m_driver.then(picture(L"information-box", click(IDC_INFORMATION_OK)));
    UQInformationBox box(L"Tip", L"Migrated files stay visible in their folders as stub files.",
                         L"A stub file is recalled from the storage server when a program opens it. "
                         L"Search the history to retrieve older versions.",
                         L"GalleryTip");
    box.mf_show(nullptr);
}

TEST_F(Gallery, HelpDialog) {
    m_driver.then(picture(L"help-dialog", click(IDCANCEL)));
    UQHelpDialog help(L"History search",
                      L"Type a pattern for the paths to search, such as *\\Finance\\*.\r\n\r\n"
                      L"'*' stands for any run of characters and '?' for one character; case does not "
                      L"matter.\r\n\r\nChoose a date range to see only the versions migrated in it, and "
                      L"tick 'Latest versions only' to see one version of each file.\r\n\r\n"
                      L"Press Search. The files found are listed with their versions; select some and "
                      L"press Retrieve to restore them to a folder of your choice.");
    help.mf_show(nullptr);
}

TEST_F(Gallery, LineEditor) {
    m_driver.then(picture(L"line-editor", click(IDOK)));
    UQLineEditor editor(L"Rename search", L"&Name of the saved search:");
    editor.mf_setText(L"Finance 2024, latest versions", 1);
    EXPECT_EQ(editor.mf_show(nullptr), 1);
}

TEST_F(Gallery, LineEditorEmpty) {
    m_driver.then(picture(L"line-editor-empty", click(IDCANCEL)));
    UQLineEditor editor(L"New search", L"&Name of the saved search:");
    EXPECT_EQ(editor.mf_show(nullptr), 0);
}

namespace {

// The status bar dialog of the tests with three parts: files, selection, store.
HWND openStatusBarDialog(UQStatusBar& _bar) {
    toolkittest::NamedStatusItem* pFiles = new toolkittest::NamedStatusItem(30, L"Files");
    toolkittest::NamedStatusItem* pSelection = new toolkittest::NamedStatusItem(30, L"Selection");
    toolkittest::NamedStatusItem* pStore = new toolkittest::NamedStatusItem(40, L"Store");
    _bar.mf_addItem(pFiles);
    _bar.mf_addItem(pSelection);
    _bar.mf_addItem(pStore);
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_STATUS_BAR), nullptr,
                                   toolkittest::statusBarHostProcedure, reinterpret_cast<LPARAM>(&_bar));
    _bar.mf_onInitDialog(hDlg, LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_STATUS_MENUS)));
    pFiles->mf_updateContent(languageIcon(IDI_SEVERITY_GREEN, 16), L"1 234 files");
    pSelection->mf_updateContent(languageIcon(IDI_SEVERITY_YELLOW, 16), L"12 selected, 3 stub files");
    pStore->mf_updateContent(languageIcon(IDI_BLANK, 16), L"Store: history.kst");
    SetWindowPos(hDlg, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    setClientSize(hDlg, 600, 120);
    pumpMessages();
    SetForegroundWindow(hDlg);
    SendMessageW(hDlg, WM_NCACTIVATE, TRUE, 0);
    return hDlg;
}

} // namespace

TEST(GalleryStatusBar, ThreeParts) {
    initCommonControls();
    UQStatusBar bar;
    HWND hDlg = openStatusBarDialog(bar);
    EXPECT_EQ(screenshot::save(hDlg, gallery::pictureDir() + L"\\status-bar.png"), "");
    DestroyWindow(hDlg);
}

namespace {

std::string g_sMenuPicture = "the menu did not open";

// Fires inside the menu's own loop: the dialog and the open menu together, then the menu is closed.
void CALLBACK photographMenu(HWND, UINT, UINT_PTR _uTimer, DWORD) {
    KillTimer(nullptr, _uTimer);
    HWND hMenu = FindWindowW(L"#32768", nullptr);
    HWND hDlg = FindWindowW(nullptr, L"History search");
    if (hMenu != nullptr && hDlg != nullptr) {
        RedrawWindow(hMenu, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
        g_sMenuPicture =
            screenshot::saveTogether({hDlg, hMenu}, gallery::pictureDir() + L"\\status-bar-context-menu.png");
    }
    EndMenu();
}

} // namespace

TEST(GalleryStatusBar, ContextMenuOpen) {
    initCommonControls();
    UQStatusBar bar;
    HWND hDlg = openStatusBarDialog(bar);
    // A right click in the middle part, as WM_CONTEXTMENU brings it.
    RECT rcBar;
    GetWindowRect(bar.mf_getWindowHandle(), &rcBar);
    POINT point = {rcBar.left + 250, rcBar.top + 8};
    POINT client = point;
    ScreenToClient(bar.mf_getWindowHandle(), &client);
    HMENU hMenu = bar.mf_getContextMenu(client.x, client.y);
    ASSERT_NE(hMenu, nullptr);
    const UINT_PTR uTimer = SetTimer(nullptr, 0, 200, photographMenu);
    ASSERT_NE(uTimer, 0u);
    TrackPopupMenuEx(hMenu, TPM_LEFTALIGN | TPM_BOTTOMALIGN | TPM_RIGHTBUTTON, point.x, point.y, hDlg,
                     nullptr);
    EXPECT_EQ(g_sMenuPicture, "");
    DestroyWindow(hDlg);
}

namespace {

// A worker that shows one state of its work and waits for Cancel (at most ten seconds) before it ends.
class GalleryWorker : public UQThreads {
public:
    explicit GalleryWorker(std::function<void()> _publish)
        : UQThreads(L"Gallery worker", UQThreadContext::TYPE_WORKER, 0), m_publish(std::move(_publish)) {}
    ~GalleryWorker() override { mf_stopWait(10000); }
    void mf_implExecute(int) override {
        m_publish();
        if (mf_getCancelSwitch() != nullptr)
            mf_getCancelSwitch()->mf_waitCancelled(10000);
        UQProgressEvent(UQProgressEvent::ACTION_END).mf_publish();
    }

private:
    std::function<void()> m_publish;
};

// The worker's texts reach the dialog as messages sent to this thread, the status line first and the
// counts last: take them in until control _nLastId shows text (at most five seconds), so that the picture
// shows the whole state.
std::function<void(HWND)> afterText(int _nLastId, std::function<void(HWND)> _then) {
    return [_nLastId, _then](HWND _hDlg) {
        const auto takeSentMessages = [] {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_SENDMESSAGE);
            MSG msg;
            PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
        };
        const ULONGLONG uDeadline = GetTickCount64() + 5000;
        while (itemText(_hDlg, _nLastId).empty() && GetTickCount64() < uDeadline)
            takeSentMessages();
        EXPECT_NE(itemText(_hDlg, _nLastId), "");
        // The bar's position follows the last text: a short while more for it.
        const ULONGLONG uSettled = GetTickCount64() + 200;
        while (GetTickCount64() < uSettled)
            takeSentMessages();
        _then(_hDlg);
    };
}

} // namespace

TEST_F(Gallery, ProgressDialog) {
    GalleryWorker worker([] {
        UQProgressEvent(UQProgressEvent::ACTION_PROGRESS,
                        L"Migrating C:\\Finance\\2024\\Quarterly report.xlsx")
            .mf_publish();
    });
    UQProgressDialog dialog(L"Migrating files", worker);
    m_driver.then(afterText(IDC_PROGRESS_STATUS, picture(L"progress-dialog", click(IDCANCEL))));
    EXPECT_EQ(dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS), 0);
}

TEST_F(Gallery, ProgressBarDialog) {
    GalleryWorker worker([] {
        UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, L"Retrieving C:\\Finance\\2024\\Budget.docx", 86,
                        214, 40, 100)
            .mf_publish();
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    m_driver.then(afterText(IDC_PROGRESS_TOTAL, picture(L"progress-bar-dialog", click(IDC_PROGRESS_CANCEL))));
    EXPECT_EQ(dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS_BAR), 0);
}

TEST_F(Gallery, ProgressBarDialogMarquee) {
    GalleryWorker worker([] {
        UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, L"Querying the storage server for C:\\Finance")
            .mf_publish();
    });
    UQProgressBarDialog dialog(L"Searching the history", worker);
    // No percentage known: the bar becomes a running marquee, as a client shows while a count is unknown.
    UQProgressBar marquee;
    m_driver.then(afterText(IDC_PROGRESS_TOTAL, [&marquee](HWND _hDlg) {
        marquee.mf_setProgressBar(GetDlgItem(_hDlg, IDC_PROGRESS_BAR));
        marquee.mf_setRunning(1);
        // Let the block travel into the bar (the control moves it on its own timer) before the picture.
        const ULONGLONG uUntil = GetTickCount64() + 700;
        MSG msg;
        while (GetTickCount64() < uUntil) {
            while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
                TranslateMessage(&msg);
                DispatchMessageW(&msg);
            }
            Sleep(10);
        }
        picture(L"progress-bar-dialog-marquee", click(IDC_PROGRESS_CANCEL))(_hDlg);
    }));
    EXPECT_EQ(dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS_BAR), 0);
    EXPECT_EQ(marquee.mf_getStyle(), UQProgressBar::STYLE_MARQUEE);
}

namespace {

// An application's dialog around the management class panel, as a migration dialog has it.
INT_PTR CALLBACK mgmtClassDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    UQMgmtClassPanel* pPanel = reinterpret_cast<UQMgmtClassPanel*>(GetWindowLongPtrW(_hDlg, GWLP_USERDATA));
    switch (_uMsg) {
    case WM_INITDIALOG:
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, _lParam);
        reinterpret_cast<UQMgmtClassPanel*>(_lParam)->mf_onInitDialog(_hDlg, L"ARCHIVE10Y");
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(_wParam) == IDC_MGMT_CLASS_COMBO && HIWORD(_wParam) == CBN_SELCHANGE && pPanel != nullptr)
            pPanel->mf_onUpdateDialog(_hDlg);
        if (LOWORD(_wParam) == IDOK || LOWORD(_wParam) == IDCANCEL)
            EndDialog(_hDlg, LOWORD(_wParam));
        return TRUE;
    default:
        return FALSE;
    }
}

} // namespace

TEST_F(Gallery, MgmtClassPanelEventClassUnderHold) {
    registrytest::RegistrySandbox sandbox;
    const DWORD dwHold = 1;
    ASSERT_EQ(RegSetKeyValueW(sandbox.machine(),
                              L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Options",
                              L"BackendEntryProtection", REG_DWORD, &dwHold, sizeof dwHold),
              ERROR_SUCCESS);
    // The sample classes built into korarchiver.
    UQArchiverMain::mf_setMgmtClassFile(CString());
    UQMgmtClassPanel panel;
    m_driver.then(picture(L"mgmt-class-panel-event-hold", click(IDOK)));
    EXPECT_EQ(DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_MGMT_CLASS_TEST), nullptr,
                              mgmtClassDialogProcedure, reinterpret_cast<LPARAM>(&panel)),
              IDOK);
}

TEST_F(Gallery, SearchUserFilteredAndSorted) {
    registrytest::RegistrySandbox sandbox;
    ScratchFile directory("gallery-directory.txt",
                          "controller\tCORVEX-DC01\tCORVEX-DC01\tprimary\ngenerate\t3000\t20240307\n"
                          "controller\tCORVEX-DC02\tCORVEX-DC02\t-\ngenerate\t200\t5\n");
    panelstest::UseDirectoryFile use(directory.mf_getPath());
    m_driver.then([](HWND _hDlg) {
        SetWindowTextW(GetDlgItem(_hDlg, IDC_SEARCH_USER_FILTER), L"a*r*");
        SendMessageW(_hDlg, WM_COMMAND, MAKEWPARAM(IDC_SEARCH_USER_LIST_BUTTON, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(_hDlg, IDC_SEARCH_USER_LIST_BUTTON)));
        HWND hList = GetDlgItem(_hDlg, IDC_SEARCH_USER_LIST);
        LVITEMW state;
        ZeroMemory(&state, sizeof state);
        state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
        state.state = LVIS_SELECTED | LVIS_FOCUSED;
        SendMessageW(hList, LVM_SETITEMSTATE, 2, reinterpret_cast<LPARAM>(&state));
        SetFocus(hList);
        picture(L"search-user-filtered-sorted", click(IDC_SEARCH_USER_OK))(_hDlg);
    });
    UQSearchUserDialog dialog;
    EXPECT_EQ(dialog.mf_show(nullptr), 1);
    ASSERT_NE(dialog.mf_getResultUser(), nullptr);
}

TEST_F(Gallery, SearchUserBeforeListing) {
    registrytest::RegistrySandbox sandbox;
    ScratchFile directory("gallery-directory-start.txt",
                          "controller\tCORVEX-DC01\tCORVEX-DC01\tprimary\ngenerate\t10\t1\n");
    panelstest::UseDirectoryFile use(directory.mf_getPath());
    m_driver.then(picture(L"search-user-start", click(IDC_SEARCH_USER_CANCEL)));
    UQSearchUserDialog dialog;
    EXPECT_EQ(dialog.mf_show(nullptr), 0);
}

// The wizard is driven by its own script; the fixture's driver would take its frame for an unexpected
// dialog.
TEST(GalleryWizard, FirstPanelExecutePanelBeforeAndAfterAndFinishPanel) {
    initCommonControls();
    wizardtest::TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME, wizardtest::TITLE_WELCOME);
    wizardtest::RunPanel& run = wizard.addRun();
    wizard.add(IDD_WIZARD_PANEL_DONE, wizardtest::TITLE_DONE);
    run.work = [](wizardtest::RunPanel& _panel) {
        SetDlgItemTextW(_panel.mf_getHandle(), IDC_WIZARD_PANEL_RESULT,
                        L"Connected to backup.example.org:1500 as client WS-0147.");
        return UQErrnoData(UQErrno::_I_::StubFile);
    };
    auto snap = [&wizard](int _nIndex, const wchar_t* _pszName, std::function<bool()> _ready) {
        return [&wizard, _nIndex, _pszName, _ready] {
            if (wizard.mf_getCurrentIndex() != _nIndex || !wizardtest::frameReady(wizard) || !_ready())
                return false;
            savePicture(wizard.mf_getHandle(), _pszName);
            return true;
        };
    };
    auto always = [] { return true; };
    wizardtest::Script script(wizard);
    script.then(snap(0, L"wizard-first-panel", always))
        .click(wizardtest::ITEM_NEXT)
        .then(snap(1, L"wizard-execute-panel", always))
        .click(wizardtest::ITEM_NEXT)
        .then(snap(1, L"wizard-execute-panel-done", [&] { return run.returned.load() == 1; }))
        .click(wizardtest::ITEM_NEXT)
        .then(snap(2, L"wizard-finish-panel", always))
        .click(wizardtest::ITEM_NEXT);
    EXPECT_EQ(wizard.mf_create(GetModuleHandleW(nullptr), nullptr), 1);
    EXPECT_EQ(script.actionsLeft(), 0);
}

// The German row: the same dialogs with korlang_de.dll, where the longer texts must still fit.
class GalleryGerman : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        ASSERT_TRUE(SetEnvironmentVariableW(L"KOR_LANGUAGE", L"de"));
    }
    void TearDown() override {
        SetEnvironmentVariableW(L"KOR_LANGUAGE", nullptr);
        Gallery::TearDown();
    }
};

TEST_F(GalleryGerman, MessageBoxQuestion) {
    m_driver.then(picture(L"de-message-box-question", click(IDC_MESSAGE_BUTTON1)));
    UQMessageBox box(L"12 der ausgew\u00e4hlten Dateien sind Stub-Dateien. Sollen ihre Daten vor dem Abrufen "
                     L"vom Speicherserver zur\u00fcckgeholt werden?",
                     UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO, L"Abrufen");
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_YES);
}

TEST_F(GalleryGerman, InformationBox) {
    registrytest::RegistrySandbox sandbox;
    m_driver.then(picture(L"de-information-box", click(IDC_INFORMATION_OK)));
    UQInformationBox box(L"Tipp", L"Migrierte Dateien bleiben als Stub-Dateien in ihren Ordnern sichtbar.",
                         L"Eine Stub-Datei wird vom Speicherserver zur\u00fcckgeholt, wenn ein Programm sie "
                         L"\u00f6ffnet. Durchsuchen Sie den Verlauf, um \u00e4ltere Versionen abzurufen.",
                         L"GalleryTipGerman");
    box.mf_show(nullptr);
}

TEST_F(GalleryGerman, SearchUserBeforeListing) {
    registrytest::RegistrySandbox sandbox;
    ScratchFile directory("gallery-directory-de.txt",
                          "controller\tCORVEX-DC01\tCORVEX-DC01\tprimary\ngenerate\t10\t1\n");
    panelstest::UseDirectoryFile use(directory.mf_getPath());
    m_driver.then(picture(L"de-search-user-start", click(IDC_SEARCH_USER_CANCEL)));
    UQSearchUserDialog dialog;
    EXPECT_EQ(dialog.mf_show(nullptr), 0);
}

TEST_F(GalleryGerman, ProgressBarDialog) {
    GalleryWorker worker([] {
        UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, L"Abrufen von C:\\Finanzen\\2024\\Budget.docx", 86,
                        214, 40, 100)
            .mf_publish();
    });
    UQProgressBarDialog dialog(L"Dateien werden abgerufen", worker);
    m_driver.then(
        afterText(IDC_PROGRESS_TOTAL, picture(L"de-progress-bar-dialog", click(IDC_PROGRESS_CANCEL))));
    EXPECT_EQ(dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS_BAR), 0);
}

TEST(GalleryWizardGerman, FirstPanelAndExecutePanel) {
    initCommonControls();
    ASSERT_TRUE(SetEnvironmentVariableW(L"KOR_LANGUAGE", L"de"));
    {
        wizardtest::TestWizard wizard;
        wizard.add(IDD_WIZARD_PANEL_WELCOME, wizardtest::TITLE_WELCOME);
        wizard.add(IDD_WIZARD_PANEL_NAME, wizardtest::TITLE_NAME);
        wizard.addRun();
        auto snap = [&wizard](int _nIndex, const wchar_t* _pszName) {
            return [&wizard, _nIndex, _pszName] {
                if (wizard.mf_getCurrentIndex() != _nIndex || !wizardtest::frameReady(wizard))
                    return false;
                savePicture(wizard.mf_getHandle(), _pszName);
                return true;
            };
        };
        wizardtest::Script script(wizard);
        script.then(snap(0, L"de-wizard-first-panel"))
            .click(wizardtest::ITEM_NEXT)
            .then(snap(1, L"de-wizard-name-panel"))
            .click(wizardtest::ITEM_NEXT)
            .then(snap(2, L"de-wizard-execute-panel"))
            .click(IDCANCEL)
            .answer("Assistent abbrechen", IDC_MESSAGE_BUTTON1);
        EXPECT_EQ(wizard.mf_create(GetModuleHandleW(nullptr), nullptr), 0);
        EXPECT_EQ(script.actionsLeft(), 0);
    }
    SetEnvironmentVariableW(L"KOR_LANGUAGE", nullptr);
}

// Dialogs at 150 %: only the gallery_dpi150 entry runs them, in a Wine prefix whose LogPixels is 144 and
// with KOR_GALLERY_DPI=144 naming the DPI it set. Dialog units scale every control with the font.
class GalleryDpi : public Gallery {
protected:
    void SetUp() override {
        const wchar_t* pszDpi = _wgetenv(L"KOR_GALLERY_DPI");
        if (pszDpi == nullptr || *pszDpi == L'\0')
            GTEST_SKIP() << "runs at 150 % in the gallery_dpi150 entry only";
        Gallery::SetUp();
        HDC hScreen = GetDC(nullptr);
        const int nDpi = GetDeviceCaps(hScreen, LOGPIXELSY);
        ReleaseDC(nullptr, hScreen);
        ASSERT_EQ(nDpi, _wtoi(pszDpi)) << "the prefix did not take the DPI";
    }
};

TEST_F(GalleryDpi, MessageBoxQuestionAt150Percent) {
    m_driver.then(picture(L"dpi150-message-box-question", click(IDC_MESSAGE_BUTTON1)));
    UQMessageBox box(L"12 of the selected files are stub files. Recall their data from the storage server "
                     L"before they are retrieved?",
                     UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO, L"Retrieve");
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_YES);
}

TEST_F(GalleryDpi, SearchUserBeforeListingAt150Percent) {
    registrytest::RegistrySandbox sandbox;
    ScratchFile directory("gallery-directory-dpi.txt",
                          "controller\tCORVEX-DC01\tCORVEX-DC01\tprimary\ngenerate\t10\t1\n");
    panelstest::UseDirectoryFile use(directory.mf_getPath());
    m_driver.then(picture(L"dpi150-search-user-start", click(IDC_SEARCH_USER_CANCEL)));
    UQSearchUserDialog dialog;
    EXPECT_EQ(dialog.mf_show(nullptr), 0);
}

namespace {

// Every dialog of the list (DialogCatalogue.cpp), opened as the accessibility tests open it, one picture
// each: <prefix><template>-<name>.png.
void pictureEveryDialog(const std::wstring& _sPrefix) {
    for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
        std::wstring sName = _sPrefix + std::to_wstring(entry.wTemplate) + L"-";
        for (const char* p = entry.pszName; *p != '\0'; ++p)
            sName += *p == ' ' ? L'-' : static_cast<wchar_t>(*p);
        DialogDriver driver(10000);
        driver.then([&sName](HWND _hDlg) {
            savePicture(_hDlg, sName.c_str());
            PostMessageW(_hDlg, WM_CLOSE, 0, 0);
        });
        // The wizard asks before it closes.
        if (entry.esc == EscAnswer::Asks)
            driver.then([](HWND _hBox) { DialogDriver::click(_hBox, IDC_MESSAGE_BUTTON1); });
        entry.open();
        EXPECT_FALSE(driver.timedOut()) << entry.pszName;
        EXPECT_EQ(driver.unexpectedDialogs(), 0) << entry.pszName;
    }
}

} // namespace

// Every dialog in a white-on-black high-contrast set, next to its pictures in the usual colours.
TEST(GalleryHighContrast, EveryDialogWhiteOnBlack) {
    initCommonControls();
    gallery::HighContrast colours;
    pictureEveryDialog(L"hc-");
}

TEST_F(GalleryDpi, EveryDialogAt150Percent) {
    pictureEveryDialog(L"dpi150-");
}
