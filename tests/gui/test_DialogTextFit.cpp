// Every dialog of the list (DialogCatalogue.cpp), in English and German, at the DPI the process started
// with: each label, button and check box text fits its control when drawn with the control's own font, and
// no control lies outside its dialog or over another. access_tests runs it at 96 DPI; access_tests_dpi144
// and access_tests_dpi192 run it again in a Wine prefix whose LogPixels was set before the process started
// (Wine reads it only then). A translation too long for its control fails with the language, the dialog,
// the control id and the text.
#include "DialogCatalogue.h"
#include "DialogDriver.h"
#include "ToolkitTestSupport.h"

#include "interfaces/korbase.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

namespace {

const DWORD DIALOG_LIMIT_MS = 8000;

bool isClass(HWND _hWnd, const wchar_t* _pszClass) {
    wchar_t szClass[64] = {0};
    GetClassNameW(_hWnd, szClass, 64);
    return lstrcmpiW(szClass, _pszClass) == 0;
}

std::wstring textOfWindow(HWND _hWnd) {
    wchar_t szText[1024] = {0};
    GetWindowTextW(_hWnd, szText, 1024);
    return szText;
}

// The wizard frame's placeholder: an empty static under the panel, where the panel is put.
const int FRAME_PLACEHOLDER = 444;

// The visible controls of a dialog, through the panels it hosts.
void collectControls(HWND _hParent, std::vector<HWND>& _controls) {
    for (HWND hChild = GetWindow(_hParent, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (!IsWindowVisible(hChild) || GetDlgCtrlID(hChild) == FRAME_PLACEHOLDER)
            continue;
        if ((GetWindowLongW(hChild, GWL_EXSTYLE) & WS_EX_CONTROLPARENT) != 0)
            collectControls(hChild, _controls);
        else
            _controls.push_back(hChild);
    }
}

std::string utf8Text(const std::wstring& _text) {
    return utf8(CString(_text.c_str()));
}

// What does not fit in control _hControl, or "".
std::string misfit(HWND _hControl) {
    const std::wstring text = textOfWindow(_hControl);
    const LONG lStyle = GetWindowLongW(_hControl, GWL_STYLE);
    const bool bStatic = isClass(_hControl, L"Static");
    const bool bButton = isClass(_hControl, L"Button");
    if (text.empty() || (!bStatic && !bButton))
        return "";
    const LONG lType = bButton ? (lStyle & BS_TYPEMASK) : (lStyle & SS_TYPEMASK);
    if (bButton && lType == BS_GROUPBOX)
        return "";
    if (bStatic && lType != SS_LEFT && lType != SS_CENTER && lType != SS_RIGHT && lType != SS_SIMPLE &&
        lType != SS_LEFTNOWORDWRAP)
        return "";
    // Texts that show data (a message, a path) are the caller's, and wrap or scroll as their control does.
    if (bStatic && (lStyle & SS_NOPREFIX) != 0)
        return "";
    RECT rcClient;
    GetClientRect(_hControl, &rcClient);
    HDC hDC = GetDC(_hControl);
    HGDIOBJ hOld = SelectObject(hDC, reinterpret_cast<HFONT>(SendMessageW(_hControl, WM_GETFONT, 0, 0)));
    int nAvailable = rcClient.right;
    if (bButton && lType != BS_PUSHBUTTON && lType != BS_DEFPUSHBUTTON)
        nAvailable -= GetSystemMetrics(SM_CXMENUCHECK) + GetSystemMetrics(SM_CXEDGE); // the box and its gap
    else if (bButton)
        nAvailable -= 2 * (GetSystemMetrics(SM_CXEDGE) + 1); // the frame and the focus rectangle
    RECT rcText = {0, 0, nAvailable, 0};
    const bool bWraps = bStatic && lType != SS_LEFTNOWORDWRAP && lType != SS_SIMPLE;
    DrawTextW(hDC, text.c_str(), static_cast<int>(text.size()), &rcText,
              DT_CALCRECT | (bWraps ? DT_WORDBREAK : DT_SINGLELINE));
    SelectObject(hDC, hOld);
    ReleaseDC(_hControl, hDC);
    const std::string sText = "\"" + utf8Text(text) + "\"";
    if (rcText.right > nAvailable)
        return sText + " needs " + std::to_string(rcText.right) + " px, has " + std::to_string(nAvailable);
    if (rcText.bottom > rcClient.bottom)
        return sText + " needs " + std::to_string(rcText.bottom) + " px high, has " +
               std::to_string(rcClient.bottom);
    return "";
}

bool isGroupBox(HWND _hWnd) {
    return isClass(_hWnd, L"Button") && (GetWindowLongW(_hWnd, GWL_STYLE) & BS_TYPEMASK) == BS_GROUPBOX;
}

// Whether _hA lies over _hB by mistake: a group box holds the controls inside it, and a note over an empty
// list (the user search's start text) lies inside the list by design.
bool overlaps(HWND _hA, HWND _hB) {
    RECT rcA;
    RECT rcB;
    RECT rcBoth;
    GetWindowRect(_hA, &rcA);
    GetWindowRect(_hB, &rcB);
    if (isGroupBox(_hA) || isGroupBox(_hB) || !IntersectRect(&rcBoth, &rcA, &rcB))
        return false;
    if (isClass(_hA, L"Static") && isClass(_hB, WC_LISTVIEWW) && EqualRect(&rcBoth, &rcA))
        return false;
    return !(isClass(_hB, L"Static") && isClass(_hA, WC_LISTVIEWW) && EqualRect(&rcBoth, &rcB));
}

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
            HDC hScreen = GetDC(nullptr);
            uDpi = static_cast<UINT>(GetDeviceCaps(hScreen, LOGPIXELSY));
            ReleaseDC(nullptr, hScreen);
            std::vector<HWND> controls;
            collectControls(_hDlg, controls);
            RECT rcDialog;
            GetClientRect(_hDlg, &rcDialog);
            MapWindowPoints(_hDlg, nullptr, reinterpret_cast<POINT*>(&rcDialog), 2);
            for (std::size_t i = 0; i < controls.size(); ++i) {
                const int nId = GetDlgCtrlID(controls[i]);
                const std::string sMisfit = misfit(controls[i]);
                if (!textOfWindow(controls[i]).empty())
                    ++nTexts;
                if (!sMisfit.empty())
                    problems.push_back("control " + std::to_string(nId) + ": text does not fit: " + sMisfit);
                RECT rcControl;
                GetWindowRect(controls[i], &rcControl);
                RECT rcInside;
                if (!IntersectRect(&rcInside, &rcControl, &rcDialog) || !EqualRect(&rcInside, &rcControl))
                    problems.push_back("control " + std::to_string(nId) + ": outside the dialog");
                for (std::size_t j = i + 1; j < controls.size(); ++j)
                    if (overlaps(controls[i], controls[j]))
                        problems.push_back("control " + std::to_string(nId) + ": lies over control " +
                                           std::to_string(GetDlgCtrlID(controls[j])));
            }
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
