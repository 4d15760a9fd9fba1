// korclient's own windows (korclient.rc: the history search, the result list, the wizard frame) keep the
// keyboard and screen-reader rules that the language modules' dialogs keep (tests/gui/TemplateRules.h),
// read from the templates as the program carries them.
#include "KorClientIds.h"
#include "TemplateRules.h"

#include <gtest/gtest.h>

#include <string>

namespace {

// The template as the program carries it; no controls when it cannot be read.
DialogTemplate templateOf(WORD _wTemplate) {
    DialogTemplate dialog;
    HMODULE hModule = GetModuleHandleW(nullptr);
    HRSRC hResource = FindResourceW(hModule, MAKEINTRESOURCEW(_wTemplate), RT_DIALOG);
    HGLOBAL hData = hResource != nullptr ? LoadResource(hModule, hResource) : nullptr;
    if (hData == nullptr)
        return dialog;
    EXPECT_EQ(dialog.parse(LockResource(hData), SizeofResource(hModule, hResource)), "") << _wTemplate;
    return dialog;
}

void expectRulesKept(WORD _wTemplate, DialogKind _kind) {
    const DialogTemplate dialog = templateOf(_wTemplate);
    ASSERT_FALSE(dialog.controls.empty()) << _wTemplate;
    for (const RuleFinding& finding : TemplateRules(dialog, _kind).checkAll())
        ADD_FAILURE() << TemplateRules::line("korclient", _wTemplate, finding);
}

} // namespace

// The main window has no Cancel button: Esc and its [x] close it, as a program's window closes.
TEST(ClientTemplates, TheHistorySearchKeepsTheRules) {
    expectRulesKept(IDD_KORCLIENT_MAIN, DialogKind::Notice);
}

TEST(ClientTemplates, TheResultListKeepsTheRules) {
    expectRulesKept(IDD_KORCLIENT_RESULTS, DialogKind::Notice);
}

TEST(ClientTemplates, TheWizardFrameKeepsTheRules) {
    expectRulesKept(528, DialogKind::Dialog);
}

// Every check box and button of the history search, the six Hide check boxes among them, is reached by an
// Alt key of its own (that no two keys are alike is the access keys rule above).
TEST(ClientTemplates, EveryCheckBoxAndButtonOfTheHistorySearchHasAnAccessKey) {
    const DialogTemplate dialog = templateOf(IDD_KORCLIENT_MAIN);
    ASSERT_FALSE(dialog.controls.empty());
    int nHideBoxes = 0;
    for (const TemplateControl& control : dialog.controls) {
        if (control.className != L"Button")
            continue;
        const DWORD dwType = control.dwStyle & BS_TYPEMASK;
        if (dwType == BS_GROUPBOX)
            continue;
        EXPECT_NE(TemplateRules::accessKey(control.text), L'\0')
            << "control " << control.nId << " has no access key";
        if (control.nId >= IDC_MAIN_EXCLUDE_AVAILABLE && control.nId <= IDC_MAIN_EXCLUDE_DELETED_PROTECTED)
            ++nHideBoxes;
    }
    EXPECT_EQ(nHideBoxes, 6);
}
