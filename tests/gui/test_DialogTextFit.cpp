// Every dialog of the list (DialogCatalogue.cpp), in English and German, at the DPI the process started
// with: each label, button and check box text fits its control when drawn with the control's own font, and
// no control lies outside its dialog or over another. access_tests runs it at 96 DPI; access_tests_dpi144
// and access_tests_dpi192 run it again in a Wine prefix whose LogPixels was set before the process started
// (Wine reads it only then). A translation too long for its control fails with the language, the dialog,
// the control id and the text.
#include "DialogCatalogue.h"
#include "DialogDriver.h"
#include "DialogLiveChecks.h"
#include "ToolkitTestSupport.h"

#include "interfaces/korbase.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

using namespace livecheck;

namespace {

const DWORD DIALOG_LIMIT_MS = 8000;

class DialogTextFit : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        toolkittest::initCommonControls();
        ASSERT_TRUE(
            SetEnvironmentVariableW(L"KOR_LANGUAGE", std::string(GetParam()) == "de" ? L"de" : L"en"));
    }
    void TearDown() override { SetEnvironmentVariableW(L"KOR_LANGUAGE", nullptr); }
};

} // namespace

TEST_P(DialogTextFit, EveryTextFitsItsControlAndNoControlLeavesItsDialogOrCoversAnother) {
    int nTexts = 0;
    UINT uDpi = 0;
    for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
        const std::string sWhere = std::string(GetParam()) + " dialog " + std::to_string(entry.wTemplate) +
                                   " (" + entry.pszName + ")";
        DialogDriver driver(DIALOG_LIMIT_MS);
        std::vector<std::string> problems;
        driver.then([&](HWND _hDlg) {
            uDpi = systemDpi();
            problems = layoutProblems(_hDlg, nTexts);
            PostMessageW(_hDlg, WM_CLOSE, 0, 0);
        });
        // The wizard asks before it closes; the progress dialogs close when their work has ended.
        if (entry.esc == EscAnswer::Asks)
            driver.then([](HWND _hBox) { DialogDriver::click(_hBox, 30026); });
        entry.open();
        EXPECT_FALSE(driver.timedOut()) << sWhere;
        for (const std::string& sProblem : problems)
            ADD_FAILURE() << sWhere << " at " << uDpi << " DPI: " << sProblem;
    }
    EXPECT_GT(nTexts, 30) << "texts measured";
    std::printf("%s: %d texts measured at %u DPI\n", GetParam(), nTexts, uDpi);
}

INSTANTIATE_TEST_SUITE_P(BothLanguages, DialogTextFit, ::testing::Values("en", "de"));

// A translation too long for its button, on the probe dialog of the tests: the check names the text.
TEST(DialogTextFitCheck, ATextTooLongForItsButtonIsNamed) {
    toolkittest::initCommonControls();
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_PROBE), nullptr,
                                   toolkittest::inertProcedure, 0);
    ASSERT_NE(hDlg, nullptr);
    HWND hOk = GetDlgItem(hDlg, IDOK);
    EXPECT_EQ(misfit(hOk), "");
    SetWindowTextW(hOk, L"Einstellungen \x00fc"
                        L"bernehmen");
    EXPECT_EQ(misfit(hOk).rfind("\"Einstellungen \xC3\xBC"
                                "bernehmen\" needs ",
                                0),
              0u)
        << misfit(hOk);
    SetWindowTextW(GetDlgItem(hDlg, IDC_PROBE_TEXT), L"A label that runs on far beyond the probe's width");
    EXPECT_NE(misfit(GetDlgItem(hDlg, IDC_PROBE_TEXT)), "") << "a label's extra line has no room either";
    DestroyWindow(hDlg);
}
