// korclient's own windows (korclient.rc: the history search, the result list, the wizard frame) keep the
// keyboard and screen-reader rules that the language modules' dialogs keep (tests/gui/TemplateRules.h),
// read from the templates as the program carries them.
#include "KorClientIds.h"
#include "TemplateRules.h"

#include <gtest/gtest.h>

#include <string>

namespace {

void expectRulesKept(WORD _wTemplate, DialogKind _kind) {
    HMODULE hModule = GetModuleHandleW(nullptr);
    HRSRC hResource = FindResourceW(hModule, MAKEINTRESOURCEW(_wTemplate), RT_DIALOG);
    ASSERT_NE(hResource, nullptr) << _wTemplate;
    HGLOBAL hData = LoadResource(hModule, hResource);
    ASSERT_NE(hData, nullptr) << _wTemplate;
    DialogTemplate dialog;
    ASSERT_EQ(dialog.parse(LockResource(hData), SizeofResource(hModule, hResource)), "") << _wTemplate;
    EXPECT_FALSE(dialog.controls.empty());
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
