// The pickers opened through their own calls and driven from inside their modal loops: cancelled, and a
// file chosen by typing its name and pressing OK. Wine's shell dialogs are laid out unlike Windows'; the
// steps only type into the file name box and press IDOK or IDCANCEL.
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/settings/UQFileOpenDialog.h"
#include "guibase/settings/UQGuiBrowseDialog.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "support/ScratchFile.h"

#include <dlgs.h>

#include <ctime>

using namespace toolkittest;

namespace {

const char* const OPTION_FILES = "UQGuiBrowseDialog::mf_browseOptionFiles";
const char* const EXCERPT_FILES = "UQGuiBrowseDialog::mf_browseListingExcerptFiles";

// The file name box of a common file dialog: a combo box in the explorer style, an edit in the old one.
HWND fileNameBox(HWND _hDlg) {
    HWND hBox = GetDlgItem(_hDlg, cmb13);
    return hBox != nullptr ? hBox : GetDlgItem(_hDlg, edt1);
}

DialogDriver::Step typeAndAccept(const CString& _sName) {
    return [_sName](HWND _hDlg) {
        SetWindowTextW(fileNameBox(_hDlg), _sName);
        DialogDriver::click(_hDlg, IDOK);
    };
}

void cancel(HWND _hDlg) {
    DialogDriver::click(_hDlg, IDCANCEL);
}

std::time_t localTime(int _nYear, int _nMonth, int _nDay, int _nHour, int _nMinute, int _nSecond) {
    std::tm tm = {};
    tm.tm_year = _nYear - 1900;
    tm.tm_mon = _nMonth - 1;
    tm.tm_mday = _nDay;
    tm.tm_hour = _nHour;
    tm.tm_min = _nMinute;
    tm.tm_sec = _nSecond;
    tm.tm_isdst = -1;
    return std::mktime(&tm);
}

class UQGuiBrowseDialogTest : public ::testing::Test {
protected:
    void SetUp() override { initCommonControls(); }
    registrytest::RegistrySandbox m_sandbox;
};

} // namespace

TEST_F(UQGuiBrowseDialogTest, CancellingTheOptionFilePickerEmptiesThePath) {
    ScratchFile start("start.opt", "SERVER a\n");
    UQGuiRegistry::mf_setDefaultBackupOptionFilePath(start.mf_getPath());
    std::string sTitle;
    std::string sFirstFilter;
    LRESULT nFilter = -1;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sTitle = textOf(_hDlg);
        HWND hTypes = GetDlgItem(_hDlg, cmb1);
        nFilter = SendMessageW(hTypes, CB_GETCURSEL, 0, 0);
        wchar_t szText[128] = {0};
        SendMessageW(hTypes, CB_GETLBTEXT, 0, reinterpret_cast<LPARAM>(szText));
        sFirstFilter = utf8(szText);
        cancel(_hDlg);
    });
    CString sPath = L"kept?";
    LogCheck log;
    EXPECT_EQ(UQGuiBrowseDialog::mf_browseOptionFiles(nullptr, sPath), 0);
    EXPECT_EQ(sPath, L"");
    EXPECT_EQ(driver.stepsTaken(), 1);
    EXPECT_EQ(sTitle, "Select a backup option file");
    EXPECT_EQ(sFirstFilter, "Backup option files (*.opt)");
    EXPECT_EQ(nFilter, 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'G', OPTION_FILES, "No path selected, error: 0"}}));
}

TEST_F(UQGuiBrowseDialogTest, AnOptionFileChosenByTypingItsNameAndOk) {
    ScratchFile chosen("chosen.opt", "SERVER a\n");
    DialogDriver driver;
    driver.then(typeAndAccept(chosen.mf_getPath()));
    CString sPath;
    LogCheck log;
    EXPECT_EQ(UQGuiBrowseDialog::mf_browseOptionFiles(nullptr, sPath), 1);
    EXPECT_EQ(sPath.CompareNoCase(chosen.mf_getPath()), 0) << utf8(sPath);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines.back(), (LogLine{'G', OPTION_FILES, "Path selected: '" + utf8(sPath) + "'"}));
}

TEST_F(UQGuiBrowseDialogTest, TheExcerptNameIsTheBaseNameAndTheLocalTime) {
    const std::time_t t = localTime(2024, 3, 5, 7, 8, 9);
    EXPECT_EQ(UQGuiBrowseDialog::mf_getListingExcerptName(L"X", t), L"X-20240305-070809.lxf");
    // Separators and format characters in the base name stay text.
    EXPECT_EQ(UQGuiBrowseDialog::mf_getListingExcerptName(L"a\\b%s%n", t), L"a\\b%s%n-20240305-070809.lxf");
}

TEST_F(UQGuiBrowseDialogTest, TheExcerptPickerProposesTheNameAndCancellingEmptiesThePath) {
    std::string sProposed;
    std::string sTitle;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        sProposed = textOf(fileNameBox(_hDlg));
        sTitle = textOf(_hDlg);
        cancel(_hDlg);
    });
    CString sPath = L"kept?";
    LogCheck log;
    EXPECT_EQ(
        UQGuiBrowseDialog::mf_browseListingExcerptFiles(nullptr, L"X", sPath, localTime(2024, 3, 5, 7, 8, 9)),
        0);
    EXPECT_EQ(sProposed, "X-20240305-070809.lxf");
    EXPECT_EQ(sTitle, "Save the listing excerpt");
    EXPECT_EQ(sPath, L"");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'G', EXCERPT_FILES, "No path selected, error: 0"}}));
}

TEST_F(UQGuiBrowseDialogTest, AnExcerptSavedWithoutAnExtensionGetsLxf) {
    ScratchFile folder("excerpts");
    const CString sFolder = folder.mf_getPath();
    const struct {
        const wchar_t* pszTyped;
        const wchar_t* pszSaved;
    } cases[] = {{L"report", L"report.lxf"}, {L"report.", L"report.lxf"}, {L"report.txt", L"report.txt"}};
    for (const auto& c : cases) {
        DialogDriver driver;
        driver.then(typeAndAccept(sFolder + L"\\" + c.pszTyped));
        CString sPath;
        LogCheck log;
        EXPECT_EQ(UQGuiBrowseDialog::mf_browseListingExcerptFiles(nullptr, L"base", sPath), 1)
            << utf8(c.pszTyped);
        EXPECT_EQ(sPath, sFolder + L"\\" + c.pszSaved) << utf8(c.pszTyped);
        EXPECT_EQ(log.lines(),
                  (std::vector<LogLine>{{'G', EXCERPT_FILES, "Path selected: '" + utf8(sPath) + "'"}}));
    }
}

TEST_F(UQGuiBrowseDialogTest, CancellingTheFolderAndFilePickersKeepsThePath) {
    DialogDriver driver;
    std::string sFolderTitle;
    std::string sFileTitle;
    driver.then([&](HWND _hDlg) {
        sFolderTitle = textOf(_hDlg);
        cancel(_hDlg);
    });
    driver.then([&](HWND _hDlg) {
        sFileTitle = textOf(_hDlg);
        cancel(_hDlg);
    });
    CString sFolder = L"C:\\windows";
    CString sFile = L"C:\\windows\\win.ini";
    LogCheck log;
    EXPECT_EQ(
        UQGuiBrowseDialog::mf_browseFolders(nullptr, CString(), L"Folder to migrate:", CString(), sFolder),
        0);
    EXPECT_EQ(UQGuiBrowseDialog::mf_browseFiles(nullptr, L"Option file", L"File:", CString(), 1, sFile), 0);
    EXPECT_EQ(driver.stepsTaken(), 2);
    EXPECT_EQ(sFolder, L"C:\\windows");
    EXPECT_EQ(sFile, L"C:\\windows\\win.ini");
    // An empty title is the text of the picker's kind; a given one is shown as it is.
    EXPECT_EQ(sFolderTitle, "Select a folder");
    EXPECT_EQ(sFileTitle, "Option file");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQGuiBrowseDialogTest, ARootThatCannotBeParsedIsLoggedAndTheComputerIsNotUsed) {
    DialogDriver driver;
    driver.then(cancel);
    CString sFolder;
    LogCheck log;
    EXPECT_EQ(UQGuiBrowseDialog::mf_browseFolders(nullptr, L"t", L"p", L"Q:\\no\\such\\root", sFolder), 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].function, "UQFileOpenDialog::mf_implPathToIdList");
    EXPECT_EQ(
        lines[0].text.rfind("Failure parsing display name 'Q:\\no\\such\\root':\r\n    Return value: 0x", 0),
        0u)
        << lines[0].text;
}

TEST(UQFileOpenDialog, CancellingAnswersZeroAndThereIsNoPath) {
    initCommonControls();
    // Wine's item-based dialog is cancelled from the driver like any other; it cannot be driven further.
    DialogDriver driver;
    driver.then(cancel);
    UQFileOpenDialog dialog;
    LogCheck log;
    EXPECT_EQ(dialog.mf_show(nullptr, L"Open a listing", L"C:\\"), 0);
    EXPECT_EQ(driver.unexpectedDialogs(), 0);
    EXPECT_EQ(dialog.mf_getPath(), L"");
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].function, "UQFileOpenDialog::mf_getPath");
    EXPECT_EQ(lines[0].text.rfind("Failure getting file dialog result:\r\n    Return value: 0x", 0), 0u)
        << lines[0].text;
}

TEST(UQFileOpenDialog, ACopySharesTheDialogObject) {
    UQFileOpenDialog original;
    {
        UQFileOpenDialog copy(original);
        UQFileOpenDialog other;
        other = copy;
    }
    // The original's object is still alive: its result can be asked for.
    LogCheck log;
    EXPECT_EQ(original.mf_getPath(), L"");
    EXPECT_EQ(log.count(), 1u);
}
