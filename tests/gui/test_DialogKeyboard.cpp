// Every dialog of the list (DialogCatalogue.cpp), in English and German, opened through the library and
// used by keys alone: Tab and Shift+Tab visit exactly the visible, enabled tab stops in tab order and wrap,
// the first focus is where a user expects it, a label's Alt+key moves to its input, no two access keys are
// alike, Enter presses the default button, Esc cancels, and the dialog closes by keys alone.
// The keys go through IsDialogMessageW as the modal loop hands them over (Shift through SetKeyboardState);
// GetNextDlgTabItem is not asked, so the order is the one the dialog manager itself takes.
#include "DialogCatalogue.h"
#include "DialogDriver.h"
#include "DialogLiveChecks.h"
#include "TemplateRules.h"
#include "ToolkitTestSupport.h"
#include "WizardTestSupport.h"

#include "korlang_ids.h"

#include "interfaces/korbase.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cwctype>
#include <string>
#include <vector>

namespace {

const DWORD DIALOG_LIMIT_MS = 8000;

using namespace livecheck;

class DialogKeyboard : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        toolkittest::initCommonControls();
        ASSERT_TRUE(
            SetEnvironmentVariableW(L"KOR_LANGUAGE", std::string(GetParam()) == "de" ? L"de" : L"en"));
    }
    void TearDown() override { SetEnvironmentVariableW(L"KOR_LANGUAGE", nullptr); }

    std::string where(const CatalogueEntry& _entry) const {
        return std::string(GetParam()) + " dialog " + std::to_string(_entry.wTemplate) + " (" +
               _entry.pszName + ")";
    }
};

// The wizard's question whether to cancel: Alt+Y (Alt+J) answers yes, by the key of its first button.
void answerYesByKey(HWND _hBox) {
    EXPECT_NE(TemplateRules::accessKey(textOfWindow(GetDlgItem(_hBox, 30026))), 0)
        << "the yes button has an access key";
    answerByKey(_hBox, 30026);
}

// Closes a dialog by keys: Enter where Esc is ignored, Esc elsewhere.
void closeByKey(HWND _hDlg, const CatalogueEntry& _entry) {
    press(_hDlg, WM_KEYDOWN, _entry.esc == EscAnswer::Ignored ? VK_RETURN : VK_ESCAPE);
}

} // namespace

TEST_P(DialogKeyboard, TabAndShiftTabVisitEveryTabStopInOrderAndWrap) {
    int nDialogs = 0;
    for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
        SCOPED_TRACE(where(entry));
        DialogDriver driver(DIALOG_LIMIT_MS);
        // Read while the windows live: ids of gone windows are all 0 and would compare equal.
        std::string sStops, sFirst, sForward, sBackward, sExpectedForward, sExpectedBackward;
        driver.then([&](HWND _hDlg) {
            const TabWalk walk = walkTabStops(_hDlg);
            sStops = walk.sStops;
            sFirst = walk.sFirst;
            sForward = walk.sForward;
            sBackward = walk.sBackward;
            sExpectedForward = walk.sExpectedForward;
            sExpectedBackward = walk.sExpectedBackward;
            closeByKey(_hDlg, entry);
        });
        if (entry.esc == EscAnswer::Asks)
            driver.then(answerYesByKey);
        entry.open();
        ++nDialogs;
        EXPECT_FALSE(driver.timedOut());
        EXPECT_EQ(driver.stepsLeft(), 0);
        EXPECT_EQ(driver.unexpectedDialogs(), 0);
        EXPECT_NE(sStops, "");
        EXPECT_EQ(sFirst, std::to_string(entry.nFirstFocus)) << "first focus; tab stops: " << sStops;
        EXPECT_EQ(sForward, sExpectedForward) << "Tab";
        EXPECT_EQ(sBackward, sExpectedBackward) << "Shift+Tab";
        std::printf("%s: tab stops %s, first %s\n", where(entry).c_str(), sStops.c_str(), sFirst.c_str());
    }
    EXPECT_EQ(nDialogs, static_cast<int>(DialogCatalogue::entries().size()));
}

TEST_P(DialogKeyboard, NoTwoAccessKeysAlikeAndALabelsKeyMovesToItsInput) {
    int nAllLabels = 0;
    for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
        SCOPED_TRACE(where(entry));
        DialogDriver driver(DIALOG_LIMIT_MS);
        std::vector<std::string> duplicates;
        std::vector<std::string> missed;
        int nLabels = 0;
        driver.then([&](HWND _hDlg) {
            const AccessKeys keys = checkAccessKeys(_hDlg);
            duplicates = keys.duplicates;
            missed = keys.missed;
            nLabels = keys.nLabels;
            closeByKey(_hDlg, entry);
        });
        if (entry.esc == EscAnswer::Asks)
            driver.then(answerYesByKey);
        entry.open();
        EXPECT_FALSE(driver.timedOut());
        EXPECT_EQ(driver.stepsLeft(), 0);
        EXPECT_EQ(duplicates, std::vector<std::string>());
        EXPECT_EQ(missed, std::vector<std::string>());
        if (nLabels > 0)
            std::printf("%s: %d label keys pressed\n", where(entry).c_str(), nLabels);
        nAllLabels += nLabels;
    }
    EXPECT_GE(nAllLabels, 9) << "the labels of the line editor, the user search and the panels";
}

TEST_P(DialogKeyboard, EscCancelsOrIsIgnoredByDesignAndEveryDialogClosesByKeysAlone) {
    for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
        SCOPED_TRACE(where(entry));
        DialogDriver driver(DIALOG_LIMIT_MS);
        bool bOpenAfterEsc = false;
        driver.then([&](HWND _hDlg) {
            press(_hDlg, WM_KEYDOWN, VK_ESCAPE);
            bOpenAfterEsc = IsWindow(_hDlg) && IsWindowVisible(_hDlg);
            if (entry.esc == EscAnswer::Ignored && bOpenAfterEsc)
                press(_hDlg, WM_KEYDOWN, VK_RETURN);
        });
        if (entry.esc == EscAnswer::Asks)
            driver.then(answerYesByKey);
        entry.open();
        EXPECT_FALSE(driver.timedOut()) << "the dialog did not close by keys";
        EXPECT_EQ(driver.stepsLeft(), 0);
        EXPECT_EQ(driver.unexpectedDialogs(), 0);
        if (entry.esc == EscAnswer::Ignored) {
            EXPECT_TRUE(bOpenAfterEsc) << "Esc is ignored here";
        }
    }
}

TEST_P(DialogKeyboard, EnterPressesTheDefaultButton) {
    for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
        SCOPED_TRACE(where(entry));
        DialogDriver driver(DIALOG_LIMIT_MS);
        int nDefault = -1;
        int nPressed = -1;
        driver.then([&](HWND _hDlg) {
            nDefault = defaultButton(_hDlg);
            nPressed = pressEnter(_hDlg);
            if (IsWindow(_hDlg) && IsWindowVisible(_hDlg))
                press(_hDlg, WM_KEYDOWN, VK_ESCAPE);
        });
        // An execute panel stays after Enter (it runs its work): Esc and the question end it then.
        if (entry.esc == EscAnswer::Asks)
            driver.then(answerYesByKey);
        entry.open();
        EXPECT_FALSE(driver.timedOut());
        EXPECT_NE(nDefault, 0) << "the dialog has a default button";
        EXPECT_EQ(nPressed, nDefault) << "Enter pressed another button";
    }
}

INSTANTIATE_TEST_SUITE_P(BothLanguages, DialogKeyboard, ::testing::Values("en", "de"));

TEST(WizardKeyboard, NextMovesTheKeyboardToTheNewPanelsFirstFieldAndBackNeverLeavesItOnADisabledButton) {
    toolkittest::initCommonControls();
    wizardtest::TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    wizard.add(IDD_CLIENT_PANEL_FOLDER);
    wizard.add(IDD_WIZARD_PANEL_DONE);
    std::vector<int> focus;
    DialogDriver driver(DIALOG_LIMIT_MS);
    driver.then([&](HWND _hFrame) {
        focus.push_back(GetDlgCtrlID(GetFocus()));
        press(_hFrame, WM_KEYDOWN, VK_RETURN); // Next
        focus.push_back(GetDlgCtrlID(GetFocus()));
        const wchar_t back =
            TemplateRules::accessKey(textOfWindow(GetDlgItem(_hFrame, wizardtest::ITEM_BACK)));
        press(_hFrame, WM_SYSCHAR, static_cast<WPARAM>(towlower(back)));
        // Back is disabled on the first panel: the keyboard is on Next, not on nothing.
        focus.push_back(GetDlgCtrlID(GetFocus()));
        press(_hFrame, WM_KEYDOWN, VK_ESCAPE);
    });
    driver.then(answerYesByKey);
    wizard.mf_create(GetModuleHandleW(nullptr), nullptr);
    EXPECT_FALSE(driver.timedOut());
    EXPECT_EQ(driver.stepsLeft(), 0);
    EXPECT_EQ(focus,
              (std::vector<int>{wizardtest::ITEM_NEXT, IDC_CLIENT_FOLDER_EDIT, wizardtest::ITEM_NEXT}));
}
