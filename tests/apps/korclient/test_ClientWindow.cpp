// korclient's windows driven as a user drives them, through the dialogs' own messages from inside their
// modal loops: the whole tour, a corrupt history store, an invalid option file, and Cancel during a run.
#include "ClientTestSupport.h"
#include "KorClientIds.h"
#include "Screenshot.h"
#include "ToolkitTestSupport.h"
#include "UQClientSample.h"
#include "UQClientTour.h"
#include "UQClientWindow.h"
#include "UQDialogScript.h"
#include "UQMigration.h"
#include "UQMigrationWizard.h"
#include "UQRetrieval.h"
#include "UQSha256.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "korlang_ids.h"
#include "support/LogCheck.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <map>

namespace {

using namespace clienttest;

const DWORD TIME_LIMIT_MS = 60000;
const int ITEM_NEXT = 440;

// The program's start: common controls and the GUI's registry defaults, on a registry of the test's own.
class ClientWindowTest : public ::testing::Test {
protected:
    ClientWindowTest()
        : scratch(L"window"), sFiles(scratch.path() + L"\\files"), sServer(scratch.path() + L"\\server") {
        INITCOMMONCONTROLSEX controls{sizeof(controls),
                                      ICC_WIN95_CLASSES | ICC_DATE_CLASSES | ICC_STANDARD_CLASSES};
        InitCommonControlsEx(&controls);
        UQGuiRegistry::mf_initialize();
    }

    // The tip the program shows at its start on a fresh registry.
    static void closeTip(UQDialogScript& _script) {
        _script.mf_then(L"tip", [] {
            HWND hTip = UQDialogScript::mf_findDialog(L"Tip");
            if (hTip == nullptr)
                return false;
            UQDialogScript::mf_click(hTip, IDC_INFORMATION_OK);
            return true;
        });
    }

    // The main window when it is shown and takes input.
    static HWND ready(const UQClientWindow& _window) {
        HWND hMain = _window.mf_getHandle();
        return hMain != nullptr && IsWindowVisible(hMain) && IsWindowEnabled(hMain) ? hMain : nullptr;
    }

    // The result list once the main window takes input and shows _nFiles files; null before.
    static HWND listShowing(const UQClientWindow& _window, int _nFiles) {
        HWND hMain = ready(_window);
        return hMain != nullptr && _window.mf_getShownCount() == _nFiles ? GetDlgItem(hMain, IDC_MAIN_LIST)
                                                                         : nullptr;
    }

    // Clicks Search once the main window takes input and the tip is gone.
    static void search(UQDialogScript& _script, const UQClientWindow& _window) {
        _script.mf_then(L"search", [&_window] {
            HWND hMain = ready(_window);
            if (hMain == nullptr || UQDialogScript::mf_findDialog(L"Tip") != nullptr)
                return false;
            UQDialogScript::mf_click(hMain, IDC_MAIN_SEARCH);
            return true;
        });
    }

    // Files of these names, each holding "x", migrated to the test server. False when a file cannot be
    // written or the migration fails, which the test then reports with its reason.
    bool migrateFiles(std::initializer_list<const wchar_t*> _names) {
        for (const wchar_t* pszName : _names)
            if (!writeFile(sFiles + pszName, "x"))
                return false;
        UQServerDirectory server(sServer);
        std::vector<UQFileOutcome> outcomes;
        std::wstring sWhy;
        const int nMigrated = UQMigration(server, sFiles).mf_run(nullptr, nullptr, outcomes, sWhy);
        EXPECT_EQ(nMigrated, 1) << utf8(sWhy);
        return nMigrated == 1;
    }

    // The migration wizard's frame when it takes input.
    static HWND frame(const UQClientWindow& _window) {
        const UQMigrationWizard* pWizard = _window.mf_getMigrationWizard();
        HWND hFrame = pWizard != nullptr ? pWizard->mf_getHandle() : nullptr;
        return hFrame != nullptr && IsWindowVisible(hFrame) && IsWindowEnabled(hFrame) ? hFrame : nullptr;
    }

    // A box of the program (a UQMessageBox) on the screen; null when there is none.
    static HWND box() {
        HWND hFound = nullptr;
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND _hWnd, LPARAM _lParam) -> BOOL {
                if (IsWindowVisible(_hWnd) && GetDlgItem(_hWnd, IDC_MESSAGE_TEXT) != nullptr) {
                    *reinterpret_cast<HWND*>(_lParam) = _hWnd;
                    return FALSE;
                }
                return TRUE;
            },
            reinterpret_cast<LPARAM>(&hFound));
        return hFound;
    }

    // Next on the wizard panel that holds _nItem, once it is shown and Next takes a click.
    static void next(UQDialogScript& _script, const UQClientWindow& _window, int _nItem) {
        _script.mf_then(L"next", [&_window, _nItem] {
            HWND hFrame = frame(_window);
            if (hFrame == nullptr || !IsWindowEnabled(GetDlgItem(hFrame, ITEM_NEXT)) ||
                UQDialogScript::mf_findPanel(hFrame, _nItem) == nullptr)
                return false;
            UQDialogScript::mf_click(hFrame, ITEM_NEXT);
            return true;
        });
    }

    // Yes in the box that asks whether the run should really be canceled.
    static void confirmCancel(UQDialogScript& _script) {
        _script.mf_then(L"really cancel", [] {
            HWND hBox = box();
            if (hBox == nullptr)
                return false;
            UQDialogScript::mf_click(hBox, IDC_MESSAGE_BUTTON1);
            return true;
        });
    }

    // Closes the main window once it takes input again.
    static void close(UQDialogScript& _script, const UQClientWindow& _window) {
        _script.mf_then(L"close", [&_window] {
            HWND hMain = ready(_window);
            if (hMain == nullptr || box() != nullptr)
                return false;
            PostMessageW(hMain, WM_CLOSE, 0, 0);
            return true;
        });
    }

    static std::string failuresOf(const UQDialogScript& _script) {
        std::string sText;
        for (const std::wstring& sLine : _script.mf_getFailures())
            sText += utf8(sLine) + "\n";
        for (const std::wstring& sLine : _script.mf_getTrace())
            sText += "  " + utf8(sLine) + "\n";
        return sText;
    }

    registrytest::RegistrySandbox registry;
    ScratchFolder scratch;
    std::wstring sFiles;
    std::wstring sServer;
};

// The tour a user without a display sees: after it every original file equals its retrieved and its recalled
// copy, every stub named its stored version, the search found every version, and the registry holds the
// pattern list.
TEST_F(ClientWindowTest, TourWalksMigrateSearchRetrieveAndRecallOnRealFiles) {
    UQClientTour::Summary summary;
    const int nResult = UQClientTour::mf_run(scratch.path() + L"\\tour", 40, summary);
    EXPECT_EQ(nResult, 0) << utf8(UQClientTour::mf_format(summary));
    EXPECT_EQ(summary.nFiles, 40);
    EXPECT_EQ(summary.nMigrated, 40);
    EXPECT_EQ(summary.nStubs, 40);
    EXPECT_EQ(summary.nVersionsFound, 40);
    EXPECT_EQ(summary.nRetrieved, 40);
    EXPECT_EQ(summary.nRecalled, 40);
    EXPECT_EQ(summary.bPatternRemembered, 1);
    EXPECT_TRUE(summary.failures.empty());
    // The same, looked at from outside the tour: the recalled and the retrieved trees are equal file by file.
    const std::wstring sTour = scratch.path() + L"\\tour";
    const std::vector<std::wstring> recalled = filesBelow(sTour + L"\\files");
    EXPECT_EQ(recalled.size(), 40u);
    EXPECT_EQ(recalled, filesBelow(sTour + L"\\retrieved"));
    for (const std::wstring& sFile : recalled) {
        const std::string sContent = readFile(sTour + L"\\files\\" + sFile);
        EXPECT_EQ(UQVersionRecord::mf_looksLikeStub(sContent), 0) << utf8(sFile) << " is still a stub";
        EXPECT_EQ(sContent, readFile(sTour + L"\\retrieved\\" + sFile)) << utf8(sFile);
    }
    // A picture of every screen, each a PNG.
    EXPECT_EQ(summary.pictures.size(), 12u);
    for (const std::wstring& sPicture : summary.pictures)
        EXPECT_EQ(readFile(sPicture).substr(0, 8), "\x89PNG\r\n\x1A\n") << utf8(sPicture);
    EXPECT_NE(readFile(sTour + L"\\summary.txt").find("every step passed"), std::string::npos);
}

TEST_F(ClientWindowTest, CorruptHistoryStoreIsNamedWithFileAndLineAndTheWindowStaysUsable) {
    ASSERT_TRUE(writeFile(sFiles + L"\\a.txt", "a"));
    ASSERT_TRUE(writeFile(sFiles + L"\\b.txt", "b"));
    UQServerDirectory server(sServer);
    std::vector<UQFileOutcome> outcomes;
    std::wstring sWhy;
    ASSERT_EQ(UQMigration(server, sFiles).mf_run(nullptr, nullptr, outcomes, sWhy), 1) << utf8(sWhy);
    // Line 4 of the store: a header line, two records, then this.
    ASSERT_TRUE(
        writeFile(server.mf_getHistoryFile(), readFile(server.mf_getHistoryFile()) + "not a record\n"));

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::vector<std::wstring> boxTexts;
    std::vector<int> shownCounts;
    closeTip(script);
    for (int nSearch = 0; nSearch < 2; ++nSearch) {
        search(script, window);
        script.mf_then(L"damage reported", [&] {
            HWND hBox = box();
            if (hBox == nullptr)
                return false;
            boxTexts.push_back(UQDialogScript::mf_getText(GetDlgItem(hBox, IDC_MESSAGE_TEXT)));
            // A box with one button has it on the right.
            UQDialogScript::mf_click(hBox, IDC_MESSAGE_BUTTON2);
            return true;
        });
        script.mf_then(L"results", [&] {
            if (ready(window) == nullptr || box() != nullptr)
                return false;
            shownCounts.push_back(window.mf_getShownCount());
            return true;
        });
    }
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    ASSERT_EQ(boxTexts.size(), 2u);
    for (const std::wstring& sText : boxTexts) {
        const std::string sExpected = "1 record of the history store is damaged and was skipped:\r\n" +
                                      utf8(server.mf_getHistoryFile()) + ":4: ";
        EXPECT_EQ(utf8(sText).compare(0, sExpected.size(), sExpected), 0) << utf8(sText);
    }
    EXPECT_EQ(shownCounts, (std::vector<int>{2, 2}));
}

TEST_F(ClientWindowTest, InvalidOptionFileIsNamedWithItsLineAndTheWizardStaysOnItsPanel) {
    ASSERT_TRUE(writeFile(sFiles + L"\\a.txt", "stays"));
    const std::wstring sOptions = scratch.path() + L"\\bad.opt";
    ASSERT_TRUE(writeFile(sOptions, "* backup options\nNOSUCHOPTION yes\n"));

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::wstring sBoxText;
    bool bStayed = false;
    closeTip(script);
    script.mf_then(L"migrate", [&] {
        HWND hMain = ready(window);
        if (hMain == nullptr || UQDialogScript::mf_findDialog(L"Tip") != nullptr)
            return false;
        UQDialogScript::mf_click(hMain, IDC_MAIN_MIGRATE);
        return true;
    });
    next(script, window, IDC_CLIENT_FOLDER_EDIT);
    next(script, window, IDC_CLIENT_CLASS_COMBO);
    script.mf_then(L"bad option file", [&] {
        HWND hFrame = frame(window);
        HWND hPanel =
            hFrame != nullptr ? UQDialogScript::mf_findPanel(hFrame, IDC_CLIENT_BACKUP_CHECK) : nullptr;
        if (hPanel == nullptr)
            return false;
        SendDlgItemMessageW(hPanel, IDC_CLIENT_BACKUP_CHECK, BM_SETCHECK, BST_CHECKED, 0);
        SetDlgItemTextW(hPanel, IDC_CLIENT_OPTION_FILE_EDIT, sOptions.c_str());
        UQDialogScript::mf_click(hFrame, ITEM_NEXT);
        return true;
    });
    script.mf_then(L"refusal", [&] {
        HWND hBox = box();
        if (hBox == nullptr)
            return false;
        sBoxText = UQDialogScript::mf_getText(GetDlgItem(hBox, IDC_MESSAGE_TEXT));
        UQDialogScript::mf_click(hBox, IDC_MESSAGE_BUTTON2);
        return true;
    });
    script.mf_then(L"still on the backup panel", [&] {
        HWND hFrame = frame(window);
        HWND hPanel =
            hFrame != nullptr ? UQDialogScript::mf_findPanel(hFrame, IDC_CLIENT_BACKUP_CHECK) : nullptr;
        if (hPanel == nullptr || box() != nullptr)
            return false;
        bStayed = true;
        // Without an option file the backup client chooses one: Next goes on.
        SetDlgItemTextW(hPanel, IDC_CLIENT_OPTION_FILE_EDIT, L"");
        UQDialogScript::mf_click(hFrame, ITEM_NEXT);
        return true;
    });
    script.mf_then(L"cancel on the run panel", [&] {
        HWND hFrame = frame(window);
        if (hFrame == nullptr || UQDialogScript::mf_findPanel(hFrame, IDC_CLIENT_RUN_LIST) == nullptr)
            return false;
        UQDialogScript::mf_click(hFrame, IDCANCEL);
        return true;
    });
    confirmCancel(script);
    close(script, window);
    LogCheck log;
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    const std::string sReason = utf8(sOptions) + ", line 2: unknown option 'NOSUCHOPTION'";
    EXPECT_EQ(utf8(sBoxText), "The option file cannot be used:\r\n" + sReason);
    EXPECT_TRUE(bStayed);
    EXPECT_EQ(readFile(sFiles + L"\\a.txt"), "stays");
    const std::vector<LogLine> lines = log.lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        LogLine{'W', "UQMigrationWizard::mf_implCheckOptionFile",
                                "Option file refused: " + sReason}),
              lines.end());
}

TEST_F(ClientWindowTest, CancelDuringTheRunLeavesEachFileMigratedWithItsStubOrUntouched) {
    std::map<std::wstring, std::string> hashes;
    std::wstring sWhy;
    ASSERT_EQ(UQClientSample::mf_generate(sFiles, 300, hashes, sWhy), 1) << utf8(sWhy);

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    closeTip(script);
    script.mf_then(L"migrate", [&] {
        HWND hMain = ready(window);
        if (hMain == nullptr || UQDialogScript::mf_findDialog(L"Tip") != nullptr)
            return false;
        UQDialogScript::mf_click(hMain, IDC_MAIN_MIGRATE);
        return true;
    });
    next(script, window, IDC_CLIENT_FOLDER_EDIT);
    next(script, window, IDC_CLIENT_CLASS_COMBO);
    next(script, window, IDC_CLIENT_BACKUP_CHECK);
    script.mf_then(L"execute, then cancel", [&] {
        HWND hFrame = frame(window);
        if (hFrame == nullptr || UQDialogScript::mf_findPanel(hFrame, IDC_CLIENT_RUN_LIST) == nullptr)
            return false;
        UQDialogScript::mf_click(hFrame, ITEM_NEXT);
        UQDialogScript::mf_click(hFrame, IDCANCEL);
        return true;
    });
    confirmCancel(script);
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    // The run ended after the file at hand: some files are migrated, the rest untouched, none lost.
    EXPECT_LT(window.mf_getMigrationOutcomes().size(), 300u);
    UQServerDirectory server(sServer);
    int nStubs = 0;
    int nUntouched = 0;
    for (const auto& entry : hashes) {
        const std::wstring sPath = sFiles + L"\\" + entry.first;
        UQVersionRecord stub;
        UQVersionRecord header;
        UQFileHandle version;
        if (UQClientSample::mf_hashFile(sPath) == entry.second) {
            ++nUntouched;
        } else if (UQRetrieval::mf_readStub(sPath, stub, sWhy) && stub.m_sSha256 == entry.second &&
                   server.mf_openVersion(stub.m_uVolume, stub.m_uPosition, stub.m_sObjectPath,
                                         stub.m_uVersion, &stub, version, header, sWhy)) {
            ++nStubs;
        } else {
            ADD_FAILURE() << utf8(entry.first) << " is neither untouched nor a stub of its stored version";
        }
    }
    EXPECT_EQ(nStubs + nUntouched, 300);
    EXPECT_GT(nUntouched, 0);
    for (const std::wstring& sFile : filesBelow(scratch.path()))
        EXPECT_EQ(sFile.find(L".kortmp-"), std::wstring::npos) << "left behind: " << utf8(sFile);
}

} // namespace

namespace {

// The sort arrow of each column: 'u' up, 'd' down, '-' none.
std::string sortArrows(HWND _hList) {
    HWND hHeader = ListView_GetHeader(_hList);
    std::string sArrows;
    for (int i = 0; i < Header_GetItemCount(hHeader); ++i) {
        HDITEMW item{};
        item.mask = HDI_FORMAT;
        Header_GetItem(hHeader, i, &item);
        sArrows += (item.fmt & HDF_SORTUP) != 0 ? 'u' : (item.fmt & HDF_SORTDOWN) != 0 ? 'd' : '-';
    }
    return sArrows;
}

std::vector<std::wstring> firstColumn(HWND _hList) {
    std::vector<std::wstring> rows;
    for (int i = 0; i < ListView_GetItemCount(_hList); ++i) {
        wchar_t szText[MAX_PATH] = {0};
        ListView_GetItemText(_hList, i, 0, szText, MAX_PATH);
        rows.push_back(szText);
    }
    return rows;
}

} // namespace

// The column headers take no focus: Ctrl+1 ... Ctrl+9 in the list sort by that column as a click on its
// header does, a second press turning the order round; a digit past the last column does nothing.
TEST_F(ClientWindowTest, CtrlAndAColumnsNumberSortTheListWithoutAMouse) {
    ASSERT_TRUE(migrateFiles({L"\\b.txt", L"\\c.txt", L"\\a.txt"}));

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::vector<std::string> arrows;
    std::vector<std::vector<std::wstring>> orders;
    closeTip(script);
    search(script, window);
    script.mf_then(L"sort by keys", [&] {
        HWND hList = listShowing(window, 3);
        if (hList == nullptr)
            return false;
        SetFocus(hList);
        for (char cDigit : {'1', '1', '3', '9'}) {
            toolkittest::pressInList(hList, static_cast<WPARAM>(cDigit), false, true);
            arrows.push_back(sortArrows(hList));
            orders.push_back(firstColumn(hList));
        }
        return true;
    });
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    ASSERT_EQ(arrows.size(), 4u);
    ASSERT_EQ(orders[0].size(), 3u);
    // The first press sorts by path one way, the second the other way round.
    EXPECT_EQ(arrows[0].substr(0, 1) + arrows[1].substr(0, 1) == "ud" ||
                  arrows[0].substr(0, 1) + arrows[1].substr(0, 1) == "du",
              true)
        << arrows[0] << " " << arrows[1];
    std::vector<std::wstring> reversed(orders[0].rbegin(), orders[0].rend());
    EXPECT_EQ(orders[1], reversed);
    EXPECT_TRUE(std::is_sorted(orders[0].begin(), orders[0].end()) ||
                std::is_sorted(reversed.begin(), reversed.end()));
    // Ctrl+3 sorts by the third column (status), upward, and the path column loses its arrow.
    EXPECT_EQ(arrows[2].substr(0, 3), "--u");
    EXPECT_EQ(arrows[3], arrows[2]) << "the list has fewer than nine columns";
}

// The status bar's menus answer a right click only; what they offer has keys: "Select all" is Ctrl+A in the
// list, "Retrieve..." Alt+R and "Search again" Enter.
TEST_F(ClientWindowTest, CtrlASelectsEveryRowAsTheStatusBarsSelectAllDoes) {
    ASSERT_TRUE(migrateFiles({L"\\b.txt", L"\\c.txt", L"\\a.txt"}));

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::vector<int> selected;
    closeTip(script);
    search(script, window);
    script.mf_then(L"select all by keys", [&] {
        HWND hList = listShowing(window, 3);
        if (hList == nullptr)
            return false;
        SetFocus(hList);
        ListView_SetItemState(hList, -1, 0, LVIS_SELECTED);
        selected.push_back(static_cast<int>(ListView_GetSelectedCount(hList)));
        toolkittest::pressInList(hList, 'A', false, true);
        selected.push_back(static_cast<int>(ListView_GetSelectedCount(hList)));
        return true;
    });
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    EXPECT_EQ(selected, (std::vector<int>{0, 3}));
}

// The list holds no rows of its own: it asks the window for each text it shows or is asked for, finds rows
// by their path through the window, and a range selected from the keyboard counts in the status bar.
TEST_F(ClientWindowTest, TheListAsksTheWindowForItsRowsAndFindsThemByPath) {
    ASSERT_TRUE(migrateFiles({L"\\b.txt", L"\\c.txt", L"\\a.txt"}));

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::vector<std::wstring> cells;
    std::wstring sCut;
    std::vector<int> found;
    std::wstring sStatusAfterRange;
    int nSelectedAfterRange = -1;
    closeTip(script);
    search(script, window);
    script.mf_then(L"ask the list", [&] {
        HWND hList = listShowing(window, 3);
        if (hList == nullptr)
            return false;
        for (int nColumn = 0; nColumn < 5; ++nColumn) {
            wchar_t szText[MAX_PATH] = {0};
            ListView_GetItemText(hList, 1, nColumn, szText, MAX_PATH);
            cells.push_back(szText);
        }
        wchar_t szShort[6] = {L'x', L'x', L'x', L'x', L'x', L'x'};
        ListView_GetItemText(hList, 1, 0, szShort, 6);
        sCut.assign(szShort, wcsnlen(szShort, 6));
        const std::wstring sFolder = sFiles + L"\\";
        const std::wstring sB = sFolder + L"B";
        const std::wstring sC = sFolder + L"c.txt";
        LVFINDINFOW partial{LVFI_PARTIAL, sB.c_str(), 0, {}, 0};
        LVFINDINFOW exact{LVFI_STRING, sC.c_str(), 0, {}, 0};
        LVFINDINFOW missing{LVFI_PARTIAL, L"D:\\", 0, {}, 0};
        const std::wstring sA = sFolder + L"a";
        LVFINDINFOW wrapped{LVFI_PARTIAL | LVFI_WRAP, sA.c_str(), 0, {}, 0};
        LVFINDINFOW unwrapped{LVFI_PARTIAL, sA.c_str(), 0, {}, 0};
        found.push_back(ListView_FindItem(hList, -1, &partial));
        found.push_back(ListView_FindItem(hList, -1, &exact));
        found.push_back(ListView_FindItem(hList, -1, &missing));
        found.push_back(ListView_FindItem(hList, 1, &wrapped));
        found.push_back(ListView_FindItem(hList, 1, &unwrapped));
        // A start past the last row finds nothing, unless the search wraps.
        LVFINDINFOW wrappedB{LVFI_PARTIAL | LVFI_WRAP, sB.c_str(), 0, {}, 0};
        found.push_back(ListView_FindItem(hList, 3, &partial));
        found.push_back(ListView_FindItem(hList, 3, &wrappedB));
        // Home, then Shift+End: the rows from the first to the last, selected in one go. Windows tells of
        // the range with LVN_ODSTATECHANGED; Wine 8 sends LVN_ITEMCHANGED.
        SetFocus(hList);
        toolkittest::pressInList(hList, VK_HOME);
        toolkittest::pressInList(hList, VK_END, true);
        nSelectedAfterRange = static_cast<int>(ListView_GetSelectedCount(hList));
        sStatusAfterRange = window.mf_getStatusText(1);
        return true;
    });
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    EXPECT_EQ(cells, (std::vector<std::wstring>{sFiles + L"\\b.txt", L"1", L"Available", L"No", L"No"}));
    EXPECT_EQ(sCut, (sFiles + L"\\b.txt").substr(0, 5)) << "a short buffer gets the text cut to its size";
    EXPECT_EQ(found, (std::vector<int>{1, 2, -1, 0, -1, -1, 1}));
    EXPECT_EQ(nSelectedAfterRange, 3);
    EXPECT_EQ(sStatusAfterRange, L"3 selected");
}

// A sort moves the files, not the selection: the files selected before are selected in their new rows, the
// focused file keeps the focus, and a list with every row selected stays so.
TEST_F(ClientWindowTest, SortKeepsTheSelectedFilesSelectedInTheirNewRows) {
    ASSERT_TRUE(migrateFiles({L"\\b.txt", L"\\c.txt", L"\\a.txt"}));

    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::vector<int> rowsBefore;
    std::vector<int> rowsAfter;
    std::vector<std::wstring> order;
    int nFocused = -1;
    std::wstring sStatus;
    std::vector<int> allAfter;
    closeTip(script);
    search(script, window);
    script.mf_then(L"select, then sort", [&] {
        HWND hList = listShowing(window, 3);
        if (hList == nullptr)
            return false;
        SetFocus(hList);
        ListView_SetItemState(hList, -1, 0, LVIS_SELECTED);
        ListView_SetItemState(hList, 0, LVIS_SELECTED | LVIS_FOCUSED, LVIS_SELECTED | LVIS_FOCUSED);
        rowsBefore = toolkittest::selectedRows(hList);
        toolkittest::pressInList(hList, '1', false, true);
        rowsAfter = toolkittest::selectedRows(hList);
        order = firstColumn(hList);
        nFocused = ListView_GetNextItem(hList, -1, LVNI_FOCUSED);
        sStatus = window.mf_getStatusText(1);
        toolkittest::pressInList(hList, 'A', false, true);
        toolkittest::pressInList(hList, '1', false, true);
        allAfter = toolkittest::selectedRows(hList);
        return true;
    });
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    EXPECT_EQ(rowsBefore, std::vector<int>{0});
    ASSERT_EQ(order.size(), 3u);
    EXPECT_EQ(order[2], sFiles + L"\\a.txt") << "the first sort by path turns the order round";
    EXPECT_EQ(rowsAfter, std::vector<int>{2});
    EXPECT_EQ(nFocused, 2);
    EXPECT_EQ(sStatus, L"1 selected");
    EXPECT_EQ(allAfter, (std::vector<int>{0, 1, 2}));
}

namespace {

// The width of the green icon in the status bar's first part, as the bar is drawn: the columns of the part
// that hold a green pixel, from the first to the last. 0 when there is none.
int greenIconWidth(HWND _hBar) {
    RECT rcPart{};
    std::vector<std::uint8_t> rgb;
    if (!SendMessageW(_hBar, SB_GETRECT, 0, reinterpret_cast<LPARAM>(&rcPart)) ||
        !screenshot::captureClient(_hBar, rcPart, rgb))
        return 0;
    const int nWidth = rcPart.right - rcPart.left;
    int nFirst = -1;
    int nLast = -1;
    for (std::size_t i = 0; i + 2 < rgb.size(); i += 3) {
        const int nRed = rgb[i];
        const int nGreen = rgb[i + 1];
        const int nBlue = rgb[i + 2];
        // The icon's disc is 0x1E8E3E; its anti-aliased rim is a lighter green.
        if (nGreen > 100 && nGreen > nRed + 40 && nGreen > nBlue + 30) {
            const int x = static_cast<int>((i / 3) % static_cast<std::size_t>(nWidth));
            nFirst = nFirst < 0 || x < nFirst ? x : nFirst;
            nLast = x > nLast ? x : nLast;
        }
    }
    return nFirst < 0 ? 0 : nLast - nFirst + 1;
}

UINT screenDpi() {
    HDC hScreen = GetDC(nullptr);
    const int nDpi = GetDeviceCaps(hScreen, LOGPIXELSY);
    ReleaseDC(nullptr, hScreen);
    return static_cast<UINT>(nDpi);
}

} // namespace

// The status bar's icons have the small icon size of the window's DPI and follow it when the window is told
// of another DPI (Wine never tells it; the test sends WM_DPICHANGED as Windows would), and back.
TEST_F(ClientWindowTest, TheStatusBarsIconsFollowTheWindowsDpi) {
    UQClientWindow window(sServer, sFiles);
    UQDialogScript script(TIME_LIMIT_MS);
    std::vector<int> widths;
    closeTip(script);
    script.mf_then(L"change the DPI", [&] {
        HWND hMain = ready(window);
        if (hMain == nullptr || UQDialogScript::mf_findDialog(L"Tip") != nullptr)
            return false;
        HWND hBar = GetDlgItem(hMain, 1039);
        const UINT uDpi = screenDpi();
        RECT rc{};
        GetWindowRect(hMain, &rc);
        widths.push_back(greenIconWidth(hBar));
        // The window keeps its rectangle: at twice its size the bar at its foot would lie below the 1024 x
        // 768 screen of Wine's null driver, where nothing can be read back.
        SendMessageW(hMain, WM_DPICHANGED, MAKEWPARAM(2 * uDpi, 2 * uDpi), reinterpret_cast<LPARAM>(&rc));
        widths.push_back(greenIconWidth(hBar));
        SendMessageW(hMain, WM_DPICHANGED, MAKEWPARAM(uDpi, uDpi), reinterpret_cast<LPARAM>(&rc));
        widths.push_back(greenIconWidth(hBar));
        return true;
    });
    close(script, window);
    EXPECT_EQ(window.mf_show(), 0);
    EXPECT_TRUE(script.mf_isFinished()) << failuresOf(script);
    ASSERT_EQ(widths.size(), 3u);
    const int nSmall = MulDiv(16, static_cast<int>(screenDpi()), 96);
    // The disc fills nearly the whole icon.
    EXPECT_GE(widths[0], nSmall - 2);
    EXPECT_LE(widths[0], nSmall);
    EXPECT_GE(widths[1], 2 * nSmall - 3);
    EXPECT_LE(widths[1], 2 * nSmall);
    EXPECT_EQ(widths[2], widths[0]);
}
