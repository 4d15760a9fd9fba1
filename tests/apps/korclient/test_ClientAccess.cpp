// korclient's own windows held to the live checks of the library's dialogs (tests/gui/DialogLiveChecks.h):
// the history search with its results, the result list of a retrieval and the migration wizard's frame,
// each opened through the program's own code on a migrated sample and used by keys alone. Tab and
// Shift+Tab visit every tab stop in order and wrap, the first focus is where a user starts, a label's
// Alt+key moves to its input, no two access keys are alike, Enter presses the default button, Esc closes
// the window (the wizard after asking), every text fits its control, and no control leaves its window or
// covers another. korclient_gui_tests runs this at 96 DPI; korclient_gui_tests_dpi120, _dpi144 and _dpi192
// run it again in a Wine prefix whose LogPixels was set before the program started. The same windows are
// photographed for the gallery at 150 % and in high contrast.
#include "ClientTestSupport.h"
#include "DialogDriver.h"
#include "DialogLiveChecks.h"
#include "GallerySupport.h"
#include "KorClientIds.h"
#include "UQClientSample.h"
#include "UQClientWindow.h"
#include "UQDialogScript.h"
#include "UQMigration.h"
#include "UQMigrationWizard.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "korlang_ids.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace {

using namespace clienttest;
using namespace livecheck;

const DWORD SCRIPT_LIMIT_MS = 60000;
const DWORD DIALOG_LIMIT_MS = 8000;
const int ITEM_NEXT = 440;

enum class Window { HistorySearch, ResultList, WizardFrame };

struct ClientWindowCase {
    Window which;
    const char* pszName;
    // The control that has the focus when the window takes input.
    int nFirstFocus;
    // Esc asks first (the wizard); Alt+Y answers yes.
    bool bAsks;
};

const ClientWindowCase WINDOWS[] = {
    {Window::HistorySearch, "history-search", IDC_MAIN_PATTERN, false},
    {Window::ResultList, "result-list", IDC_RESULTS_LIST, false},
    {Window::WizardFrame, "wizard-frame", IDC_CLIENT_FOLDER_EDIT, true},
};

// Esc as a user presses it; the wizard's question is answered yes by its key. Answers whether the window
// went; one that stays is ended, so that the test goes on.
bool closeByKeys(HWND _hWnd, bool _bAsks) {
    DialogDriver driver(DIALOG_LIMIT_MS);
    if (_bAsks)
        driver.then([](HWND _hBox) { answerByKey(_hBox, IDC_MESSAGE_BUTTON1); });
    press(_hWnd, WM_KEYDOWN, VK_ESCAPE);
    const bool bClosed = !IsWindow(_hWnd) || !IsWindowVisible(_hWnd);
    if (!bClosed)
        EndDialog(_hWnd, IDCANCEL);
    return bClosed && !driver.timedOut() && driver.stepsLeft() == 0 && driver.unexpectedDialogs() == 0;
}

// The program's start on a registry of the test's own, with a sample of files already migrated to the
// test's server, so that a search finds them and a retrieval has something to retrieve.
class ClientAccess : public ::testing::Test {
protected:
    ClientAccess() : ClientAccess(std::wstring()) {}
    // _sRoot: where the sample lies, instead of a scratch folder (the gallery's short path, so that the
    // windows show whole paths); emptied before and removed after.
    explicit ClientAccess(const std::wstring& _sRoot)
        : scratch(L"access"), sRoot(_sRoot.empty() ? scratch.path() : _sRoot), sFiles(sRoot + L"\\files"),
          sServer(sRoot + L"\\server"), sRetrieved(sRoot + L"\\retrieved") {
        if (!_sRoot.empty()) {
            UQClientSample::mf_removeTree(sRoot);
            CreateDirectoryW(sRoot.c_str(), nullptr);
        }
    }
    ~ClientAccess() override {
        if (sRoot != scratch.path())
            UQClientSample::mf_removeTree(sRoot);
    }

    void SetUp() override {
        INITCOMMONCONTROLSEX controls{sizeof(controls),
                                      ICC_WIN95_CLASSES | ICC_DATE_CLASSES | ICC_STANDARD_CLASSES};
        InitCommonControlsEx(&controls);
        UQGuiRegistry::mf_initialize();
        std::map<std::wstring, std::string> hashes;
        std::wstring sReason;
        ASSERT_NE(UQClientSample::mf_generate(sFiles, 6, hashes, sReason), 0) << utf8(sReason);
        UQServerDirectory server(sServer);
        std::vector<UQFileOutcome> outcomes;
        ASSERT_EQ(UQMigration(server, sFiles).mf_run(nullptr, nullptr, outcomes, sReason), 1)
            << utf8(sReason);
    }

    // Opens window _which through the program's own code: the history search after a search has shown every
    // migrated file (all selected), the result list of retrieving them, or the migration wizard on its first
    // panel. _check gets it once it takes input and must close it; what is left is closed afterwards.
    void open(Window _which, const std::function<void(HWND)>& _check) {
        UQClientWindow window(sServer, sFiles);
        window.mf_setRetrieveFolder(sRetrieved);
        UQDialogScript script(SCRIPT_LIMIT_MS);
        const auto ready = [&window]() -> HWND {
            HWND hMain = window.mf_getHandle();
            return hMain != nullptr && IsWindowVisible(hMain) && IsWindowEnabled(hMain) ? hMain : nullptr;
        };
        script.mf_then(L"tip", [] {
            HWND hTip = UQDialogScript::mf_findDialog(L"Tip");
            if (hTip == nullptr)
                return false;
            UQDialogScript::mf_click(hTip, IDC_INFORMATION_OK);
            return true;
        });
        script.mf_then(L"search", [&] {
            HWND hMain = ready();
            if (hMain == nullptr || UQDialogScript::mf_findDialog(L"Tip") != nullptr)
                return false;
            UQDialogScript::mf_type(GetDlgItem(hMain, IDC_MAIN_PATTERN), sFiles + L"\\*");
            UQDialogScript::mf_click(hMain, IDC_MAIN_SEARCH);
            return true;
        });
        script.mf_then(L"results", [&] {
            HWND hMain = ready();
            if (hMain == nullptr || UQDialogScript::mf_findDialog(L"History search") != nullptr ||
                window.mf_getShownCount() == 0)
                return false;
            LVITEMW state{};
            state.stateMask = LVIS_SELECTED;
            state.state = LVIS_SELECTED;
            SendDlgItemMessageW(hMain, IDC_MAIN_LIST, LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                                reinterpret_cast<LPARAM>(&state));
            if (_which == Window::HistorySearch) {
                _check(hMain);
            } else {
                UQDialogScript::mf_click(hMain,
                                         _which == Window::ResultList ? IDC_MAIN_RETRIEVE : IDC_MAIN_MIGRATE);
            }
            return true;
        });
        if (_which == Window::ResultList) {
            script.mf_then(L"result list", [&] {
                HWND hResults = UQDialogScript::mf_findDialog(L"Retrieve");
                if (hResults == nullptr || GetDlgItem(hResults, IDC_RESULTS_LIST) == nullptr)
                    return false;
                _check(hResults);
                return true;
            });
        } else if (_which == Window::WizardFrame) {
            script.mf_then(L"wizard", [&] {
                const UQMigrationWizard* pWizard = window.mf_getMigrationWizard();
                HWND hFrame = pWizard != nullptr ? pWizard->mf_getHandle() : nullptr;
                if (hFrame == nullptr || !IsWindowVisible(hFrame) || !IsWindowEnabled(hFrame) ||
                    UQDialogScript::mf_findPanel(hFrame, IDC_CLIENT_FOLDER_EDIT) == nullptr)
                    return false;
                _check(hFrame);
                return true;
            });
        }
        if (_which != Window::HistorySearch) {
            script.mf_then(L"close", [&] {
                HWND hMain = ready();
                if (hMain == nullptr || window.mf_getMigrationWizard() != nullptr ||
                    UQDialogScript::mf_findDialog(L"Retrieve") != nullptr)
                    return false;
                PostMessageW(hMain, WM_CLOSE, 0, 0);
                return true;
            });
        }
        EXPECT_EQ(window.mf_show(), 0);
        std::string sFailures;
        for (const std::wstring& sLine : script.mf_getFailures())
            sFailures += utf8(sLine) + "\n";
        EXPECT_TRUE(script.mf_isFinished()) << sFailures;
    }

    static std::string where(const ClientWindowCase& _case) {
        return std::string("korclient ") + _case.pszName + " at " + std::to_string(systemDpi()) + " DPI";
    }

    registrytest::RegistrySandbox registry;
    ScratchFolder scratch;
    std::wstring sRoot;
    std::wstring sFiles;
    std::wstring sServer;
    std::wstring sRetrieved;
};

class ClientKeyboard : public ClientAccess {};
class ClientTextFit : public ClientAccess {};

} // namespace

TEST_F(ClientKeyboard, TabAndShiftTabVisitEveryTabStopInOrderAndWrap) {
    for (const ClientWindowCase& window : WINDOWS) {
        SCOPED_TRACE(where(window));
        TabWalk walk;
        bool bClosed = false;
        open(window.which, [&](HWND _hWnd) {
            walk = walkTabStops(_hWnd);
            bClosed = closeByKeys(_hWnd, window.bAsks);
        });
        EXPECT_NE(walk.sStops, "");
        EXPECT_EQ(walk.sFirst, std::to_string(window.nFirstFocus))
            << "first focus; tab stops: " << walk.sStops;
        EXPECT_EQ(walk.sForward, walk.sExpectedForward) << "Tab";
        EXPECT_EQ(walk.sBackward, walk.sExpectedBackward) << "Shift+Tab";
        EXPECT_TRUE(bClosed) << "closed by keys";
        std::printf("%s: tab stops %s, first %s\n", where(window).c_str(), walk.sStops.c_str(),
                    walk.sFirst.c_str());
    }
}

TEST_F(ClientKeyboard, NoTwoAccessKeysAlikeAndALabelsKeyMovesToItsInput) {
    int nAllLabels = 0;
    for (const ClientWindowCase& window : WINDOWS) {
        SCOPED_TRACE(where(window));
        AccessKeys keys;
        open(window.which, [&](HWND _hWnd) {
            keys = checkAccessKeys(_hWnd);
            closeByKeys(_hWnd, window.bAsks);
        });
        EXPECT_EQ(keys.duplicates, std::vector<std::string>());
        EXPECT_EQ(keys.missed, std::vector<std::string>());
        std::printf("%s: %d label keys pressed\n", where(window).c_str(), keys.nLabels);
        nAllLabels += keys.nLabels;
    }
    EXPECT_GE(nAllLabels, 6) << "Pattern, From, To, Results, Files and the folder panel's labels";
}

TEST_F(ClientKeyboard, EscClosesEveryWindowTheWizardAfterAsking) {
    for (const ClientWindowCase& window : WINDOWS) {
        SCOPED_TRACE(where(window));
        bool bClosed = false;
        open(window.which, [&](HWND _hWnd) { bClosed = closeByKeys(_hWnd, window.bAsks); });
        EXPECT_TRUE(bClosed) << "Esc closes the window";
    }
}

TEST_F(ClientKeyboard, EnterPressesTheDefaultButton) {
    const int DEFAULTS[] = {IDC_MAIN_SEARCH, IDOK, ITEM_NEXT};
    int nWindow = 0;
    for (const ClientWindowCase& window : WINDOWS) {
        SCOPED_TRACE(where(window));
        int nDefault = -1;
        int nPressed = -1;
        open(window.which, [&](HWND _hWnd) {
            nDefault = defaultButton(_hWnd);
            {
                // Search runs in its progress dialog, which ends by itself; Next may ask about the folder.
                DialogDriver driver(DIALOG_LIMIT_MS);
                if (window.which == Window::HistorySearch)
                    driver.onlyWatchTheTime();
                nPressed = pressEnter(_hWnd);
                EXPECT_FALSE(driver.timedOut());
            }
            if (IsWindow(_hWnd) && IsWindowVisible(_hWnd))
                closeByKeys(_hWnd, window.bAsks);
        });
        EXPECT_EQ(nDefault, DEFAULTS[nWindow++]) << "the default button";
        EXPECT_EQ(nPressed, nDefault) << "Enter pressed another button";
    }
}

TEST_F(ClientTextFit, EveryTextFitsItsControlAndNoControlLeavesItsWindowOrCoversAnother) {
    int nTexts = 0;
    for (const ClientWindowCase& window : WINDOWS) {
        std::vector<std::string> problems;
        open(window.which, [&](HWND _hWnd) {
            problems = layoutProblems(_hWnd, nTexts);
            closeByKeys(_hWnd, window.bAsks);
        });
        for (const std::string& sProblem : problems)
            ADD_FAILURE() << where(window) << ": " << sProblem;
    }
    EXPECT_GT(nTexts, 20) << "texts measured";
    std::printf("korclient: %d texts measured at %u DPI\n", nTexts, systemDpi());
}

namespace {

// Pictures of the three windows for docs/gallery/: <_sPrefix>korclient-<name>.png.
class ClientGallery : public ClientAccess {
protected:
    ClientGallery() : ClientAccess(L"C:\\korclient") {}

    void pictureEveryWindow(const std::wstring& _sPrefix, bool _bHighContrast) {
        for (const ClientWindowCase& window : WINDOWS) {
            std::wstring sName = _sPrefix + L"korclient-";
            for (const char* p = window.pszName; *p != '\0'; ++p)
                sName += static_cast<wchar_t>(*p);
            std::string sFailure = "not shown";
            open(window.which, [&](HWND _hWnd) {
                if (_bHighContrast)
                    gallery::HighContrast::dropTheme(_hWnd);
                sFailure = gallery::savePicture(_hWnd, sName);
                closeByKeys(_hWnd, window.bAsks);
            });
            EXPECT_EQ(sFailure, "") << window.pszName;
        }
    }
};

// At 150 %: only the korclient_gallery_dpi150 entry runs them, in a Wine prefix whose LogPixels is 144 and
// with KOR_GALLERY_DPI=144 naming the DPI it set.
class ClientGalleryDpi : public ClientGallery {
protected:
    void SetUp() override {
        const wchar_t* pszDpi = _wgetenv(L"KOR_GALLERY_DPI");
        if (pszDpi == nullptr || *pszDpi == L'\0')
            GTEST_SKIP() << "runs at 150 % in the korclient_gallery_dpi150 entry only";
        ASSERT_EQ(systemDpi(), static_cast<UINT>(_wtoi(pszDpi))) << "the prefix did not take the DPI";
        ClientGallery::SetUp();
    }
};

// In high contrast: only the korclient_gallery entry runs them, which names the gallery's folder.
class ClientGalleryHighContrast : public ClientGallery {
protected:
    void SetUp() override {
        const wchar_t* pszDir = _wgetenv(L"KOR_GALLERY_DIR");
        if (pszDir == nullptr || *pszDir == L'\0')
            GTEST_SKIP() << "runs in the korclient_gallery entry only";
        ClientGallery::SetUp();
    }
};

} // namespace

TEST_F(ClientGalleryDpi, HistorySearchResultListAndWizardFrameAt150Percent) {
    pictureEveryWindow(L"dpi150-", false);
}

TEST_F(ClientGalleryHighContrast, HistorySearchResultListAndWizardFrameWhiteOnBlack) {
    gallery::HighContrast colours;
    pictureEveryWindow(L"hc-", true);
}
