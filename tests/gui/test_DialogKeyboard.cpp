// Every dialog of the list (DialogCatalogue.cpp), in English and German, opened through the library and
// used by keys alone: Tab and Shift+Tab visit exactly the visible, enabled tab stops in tab order and wrap,
// the first focus is where a user expects it, a label's Alt+key moves to its input, no two access keys are
// alike, Enter presses the default button, Esc cancels, and the dialog closes by keys alone.
// The keys go through IsDialogMessageW as the modal loop hands them over (Shift through SetKeyboardState);
// GetNextDlgTabItem is not asked, so the order is the one the dialog manager itself takes.
#include "DialogCatalogue.h"
#include "DialogDriver.h"
#include "TemplateRules.h"
#include "ToolkitTestSupport.h"
#include "WizardTestSupport.h"

#include "korlang_ids.h"

#include "interfaces/korbase.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cwctype>
#include <map>
#include <string>
#include <vector>

namespace {

const DWORD DIALOG_LIMIT_MS = 8000;

// One key press as the modal loop delivers it: IsDialogMessageW first, the window procedure otherwise.
void press(HWND _hDlg, UINT _uMessage, WPARAM _wKey, bool _bShift = false) {
    BYTE keys[256];
    GetKeyboardState(keys);
    const BYTE bShiftBefore = keys[VK_SHIFT];
    keys[VK_SHIFT] = _bShift ? 0x80 : 0;
    SetKeyboardState(keys);
    HWND hTarget = GetFocus() != nullptr ? GetFocus() : _hDlg;
    const LPARAM lParam = _uMessage == WM_SYSCHAR ? (1 | (1 << 29)) : 1;
    MSG msg = {hTarget, _uMessage, _wKey, lParam, static_cast<DWORD>(GetMessageTime()), {0, 0}};
    if (!IsDialogMessageW(_hDlg, &msg)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    if (_uMessage == WM_KEYDOWN) {
        MSG up = {
            hTarget, WM_KEYUP, _wKey, static_cast<LPARAM>(0xC0000001u), static_cast<DWORD>(GetMessageTime()),
            {0, 0}};
        if (IsWindow(hTarget) && !IsDialogMessageW(_hDlg, &up))
            DispatchMessageW(&up);
    }
    keys[VK_SHIFT] = bShiftBefore;
    SetKeyboardState(keys);
}

bool isControlParent(HWND _hWnd) {
    return (GetWindowLongW(_hWnd, GWL_EXSTYLE) & WS_EX_CONTROLPARENT) != 0;
}

// The tab stops of a dialog in tab order, through the panels it hosts (WS_EX_CONTROLPARENT).
void collectTabStops(HWND _hParent, std::vector<HWND>& _stops) {
    for (HWND hChild = GetWindow(_hParent, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild) || !IsWindowEnabled(hChild))
            continue;
        if (isControlParent(hChild))
            collectTabStops(hChild, _stops);
        else if ((GetWindowLongW(hChild, GWL_STYLE) & WS_TABSTOP) != 0)
            _stops.push_back(hChild);
    }
}

// The control of _stops that has the focus (a combo box's edit counts as the combo), or null.
HWND focusedStop(const std::vector<HWND>& _stops) {
    HWND hFocus = GetFocus();
    for (HWND hStop : _stops)
        if (hStop == hFocus || IsChild(hStop, hFocus))
            return hStop;
    return hFocus;
}

std::string idOf(HWND _hWnd) {
    return _hWnd == nullptr ? std::string("none") : std::to_string(GetDlgCtrlID(_hWnd));
}

std::string ids(const std::vector<HWND>& _windows) {
    std::string text;
    for (HWND hWnd : _windows)
        text += (text.empty() ? "" : " ") + idOf(hWnd);
    return text;
}

std::wstring textOfWindow(HWND _hWnd) {
    wchar_t szText[512] = {0};
    GetWindowTextW(_hWnd, szText, 512);
    return szText;
}

bool isClass(HWND _hWnd, const wchar_t* _pszClass) {
    wchar_t szClass[64] = {0};
    GetClassNameW(_hWnd, szClass, 64);
    return lstrcmpiW(szClass, _pszClass) == 0;
}

// Every window of the dialog that shows an access key: buttons and statics without SS_NOPREFIX.
void collectKeyed(HWND _hParent, std::vector<HWND>& _keyed) {
    for (HWND hChild = GetWindow(_hParent, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild))
            continue;
        if (isControlParent(hChild)) {
            collectKeyed(hChild, _keyed);
            continue;
        }
        const bool bStatic = isClass(hChild, L"Static");
        if ((bStatic && (GetWindowLongW(hChild, GWL_STYLE) & SS_NOPREFIX) == 0) || isClass(hChild, L"Button"))
            if (TemplateRules::accessKey(textOfWindow(hChild)) != 0)
                _keyed.push_back(hChild);
    }
}

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
    const wchar_t key = TemplateRules::accessKey(textOfWindow(GetDlgItem(_hBox, 30026)));
    EXPECT_NE(key, 0) << "the yes button has an access key";
    press(_hBox, WM_SYSCHAR, static_cast<WPARAM>(towlower(key)));
}

// Closes a dialog by keys: Enter where Esc is ignored, Esc elsewhere.
void closeByKey(HWND _hDlg, const CatalogueEntry& _entry) {
    press(_hDlg, WM_KEYDOWN, _entry.esc == EscAnswer::Ignored ? VK_RETURN : VK_ESCAPE);
}

// Notes the button whose command reaches the dialog, on its way to the dialog procedure.
LRESULT CALLBACK noteCommand(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam, UINT_PTR,
                             DWORD_PTR _dwData) {
    if (_uMsg == WM_COMMAND && HIWORD(_wParam) == BN_CLICKED)
        *reinterpret_cast<int*>(_dwData) = LOWORD(_wParam);
    return DefSubclassProc(_hWnd, _uMsg, _wParam, _lParam);
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
            std::vector<HWND> stops;
            collectTabStops(_hDlg, stops);
            HWND hFirst = focusedStop(stops);
            std::vector<HWND> forward;
            std::vector<HWND> backward;
            for (std::size_t i = 0; i < stops.size(); ++i) {
                press(_hDlg, WM_KEYDOWN, VK_TAB);
                forward.push_back(focusedStop(stops));
            }
            for (std::size_t i = 0; i < stops.size(); ++i) {
                press(_hDlg, WM_KEYDOWN, VK_TAB, true);
                backward.push_back(focusedStop(stops));
            }
            // From the first focus on: each following stop, wrapping round to the first focus.
            std::vector<HWND> expectedForward;
            std::vector<HWND> expectedBackward;
            std::size_t uStart = 0;
            while (uStart < stops.size() && stops[uStart] != hFirst)
                ++uStart;
            for (std::size_t i = 1; i <= stops.size() && uStart < stops.size(); ++i) {
                expectedForward.push_back(stops[(uStart + i) % stops.size()]);
                expectedBackward.push_back(stops[(uStart + stops.size() * 2 - i) % stops.size()]);
            }
            sStops = ids(stops);
            sFirst = idOf(hFirst);
            sForward = ids(forward);
            sBackward = ids(backward);
            sExpectedForward = ids(expectedForward);
            sExpectedBackward = ids(expectedBackward);
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
            std::vector<HWND> keyed;
            collectKeyed(_hDlg, keyed);
            std::map<wchar_t, HWND> owners;
            for (HWND hWnd : keyed) {
                const wchar_t key = TemplateRules::accessKey(textOfWindow(hWnd));
                if (owners.count(key) != 0)
                    duplicates.push_back(idOf(owners[key]) + " and " + idOf(hWnd));
                owners[key] = hWnd;
            }
            // A label hands its key on to the next control in tab order.
            std::vector<HWND> stops;
            collectTabStops(_hDlg, stops);
            for (HWND hWnd : keyed) {
                if (!isClass(hWnd, L"Static"))
                    continue;
                HWND hNext = GetWindow(hWnd, GW_HWNDNEXT);
                while (hNext != nullptr &&
                       (!IsWindowVisible(hNext) || (GetWindowLongW(hNext, GWL_STYLE) & WS_TABSTOP) == 0))
                    hNext = GetWindow(hNext, GW_HWNDNEXT);
                if (hNext == nullptr || !IsWindowEnabled(hNext))
                    continue;
                ++nLabels;
                press(_hDlg, WM_SYSCHAR,
                      static_cast<WPARAM>(towlower(TemplateRules::accessKey(textOfWindow(hWnd)))));
                if (focusedStop(stops) != hNext)
                    missed.push_back(idOf(hWnd) + " -> " + idOf(focusedStop(stops)) + " instead of " +
                                     idOf(hNext));
            }
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
            const LRESULT lDefault = SendMessageW(_hDlg, DM_GETDEFID, 0, 0);
            nDefault = HIWORD(lDefault) == DC_HASDEFID ? LOWORD(lDefault) : 0;
            // The command Enter sends is caught on its way to the dialog procedure.
            SetWindowSubclass(_hDlg, noteCommand, 1, reinterpret_cast<DWORD_PTR>(&nPressed));
            press(_hDlg, WM_KEYDOWN, VK_RETURN);
            if (IsWindow(_hDlg))
                RemoveWindowSubclass(_hDlg, noteCommand, 1);
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
