// The dialog templates of the built language modules (korlang_en.dll, korlang_de.dll) keep the keyboard
// and screen-reader rules; each rule is its own test and names the language, the dialog, the control and
// the rule, one line per control that breaks it. Templates written in memory prove that each rule can fail.
#include "DialogCatalogue.h"
#include "TemplateBuilder.h"
#include "TemplateRules.h"

#include "interfaces/korbase.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

struct LanguageModule {
    std::string sLanguage;
    HMODULE hModule;
};

std::vector<LanguageModule> languageModules() {
    return {{"en", UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US))},
            {"de", UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN))}};
}

std::vector<WORD> dialogIds(HMODULE _hModule) {
    std::vector<WORD> ids;
    EnumResourceNamesW(
        _hModule, RT_DIALOG,
        [](HMODULE, LPCWSTR, LPWSTR _pszName, LONG_PTR _lParam) -> BOOL {
            if (IS_INTRESOURCE(_pszName))
                reinterpret_cast<std::vector<WORD>*>(_lParam)->push_back(
                    static_cast<WORD>(reinterpret_cast<ULONG_PTR>(_pszName)));
            return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&ids));
    return ids;
}

std::string loadTemplate(HMODULE _hModule, WORD _wId, DialogTemplate& _template) {
    HRSRC hResource = FindResourceW(_hModule, MAKEINTRESOURCEW(_wId), RT_DIALOG);
    HGLOBAL hData = hResource != nullptr ? LoadResource(_hModule, hResource) : nullptr;
    if (hData == nullptr)
        return "cannot be loaded (error " + std::to_string(GetLastError()) + ")";
    return _template.parse(LockResource(hData), SizeofResource(_hModule, hResource));
}

std::wstring moduleText(HMODULE _hModule, UINT _uId) {
    const wchar_t* pszText = nullptr;
    const int nLength = LoadStringW(_hModule, _uId, reinterpret_cast<LPWSTR>(&pszText), 0);
    return nLength > 0 ? std::wstring(pszText, static_cast<std::size_t>(nLength)) : std::wstring();
}

// Runs one rule over every dialog of both modules; answers how many dialogs were checked.
int expectRuleKept(Rule _rule) {
    int nChecked = 0;
    for (const LanguageModule& module : languageModules()) {
        EXPECT_NE(module.hModule, nullptr) << module.sLanguage;
        if (module.hModule == nullptr)
            continue;
        std::vector<std::wstring> frameTexts;
        for (UINT uText : DialogCatalogue::frameButtonTexts()) {
            frameTexts.push_back(moduleText(module.hModule, uText));
            EXPECT_FALSE(frameTexts.back().empty()) << module.sLanguage << " string " << uText;
        }
        for (WORD wId : dialogIds(module.hModule)) {
            const CatalogueEntry* pEntry = DialogCatalogue::find(wId);
            if (pEntry == nullptr)
                continue; // the list test names it
            DialogTemplate dialog;
            const std::string sBroken = loadTemplate(module.hModule, wId, dialog);
            EXPECT_EQ(sBroken, "") << module.sLanguage << " dialog " << wId;
            const TemplateRules rules(dialog, pEntry->kind,
                                      pEntry->kind == DialogKind::Panel ? frameTexts
                                                                        : std::vector<std::wstring>());
            for (const RuleFinding& finding : rules.check(_rule))
                ADD_FAILURE() << TemplateRules::line(module.sLanguage, wId, finding);
            ++nChecked;
        }
    }
    return nChecked;
}

int catalogueSize() {
    return static_cast<int>(DialogCatalogue::entries().size());
}

} // namespace

TEST(LanguageModuleTemplates, EveryDialogOfBothModulesIsOnTheListAndEveryListedOneIsThere) {
    for (const LanguageModule& module : languageModules()) {
        ASSERT_NE(module.hModule, nullptr) << module.sLanguage;
        const std::vector<WORD> ids = dialogIds(module.hModule);
        for (WORD wId : ids)
            EXPECT_NE(DialogCatalogue::find(wId), nullptr)
                << module.sLanguage << " dialog " << wId
                << ": not on the list of dialogs (DialogCatalogue.cpp)";
        for (const CatalogueEntry& entry : DialogCatalogue::entries()) {
            bool bThere = false;
            for (WORD wId : ids)
                bThere = bThere || wId == entry.wTemplate;
            EXPECT_TRUE(bThere) << module.sLanguage << " dialog " << entry.wTemplate << " (" << entry.pszName
                                << "): on the list but not in the module";
        }
    }
    const std::vector<LanguageModule> modules = languageModules();
    EXPECT_NE(modules[0].hModule, modules[1].hModule) << "the German module is its own";
}

TEST(LanguageModuleTemplates, NoTwoAccessKeysAlikeInADialogNorInAPanelWithTheWizardsButtons) {
    EXPECT_EQ(expectRuleKept(Rule::AccessKeys), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, EveryInputHasALabelRightBeforeIt) {
    EXPECT_EQ(expectRuleKept(Rule::LabelBeforeInput), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, EveryInteractiveControlAndNoStaticIsATabStop) {
    EXPECT_EQ(expectRuleKept(Rule::TabStop), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, RadioGroupsBeginAndEndWithWsGroup) {
    EXPECT_EQ(expectRuleKept(Rule::RadioGroup), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, ExactlyOneDefaultButtonAndNoneInAPanel) {
    EXPECT_EQ(expectRuleKept(Rule::DefaultButton), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, DialogsWithAChoiceHaveACancelButton) {
    EXPECT_EQ(expectRuleKept(Rule::Cancel), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, EveryControlLiesInsideItsDialog) {
    EXPECT_EQ(expectRuleKept(Rule::InsideDialog), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, TabOrderFollowsReadingOrder) {
    EXPECT_EQ(expectRuleKept(Rule::ReadingOrder), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, EveryDialogUsesTheShellFont) {
    EXPECT_EQ(expectRuleKept(Rule::ShellFont), 2 * catalogueSize());
}

TEST(LanguageModuleTemplates, TextsSetAtRunTimeThatLabelNothingShowAmpersands) {
    EXPECT_EQ(expectRuleKept(Rule::NoPrefix), 2 * catalogueSize());
}

namespace {

const DWORD DIALOG_STYLE = DS_SHELLFONT | DS_MODALFRAME | WS_POPUP | WS_CAPTION | WS_SYSMENU;
const DWORD VISIBLE = WS_VISIBLE;

// A small dialog that keeps every rule; each broken one below changes one thing of it.
TemplateBuilder wellMade() {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Static", L"&Name:", 10, VISIBLE | SS_LEFT, 7, 9, 40, 8)
        .control(L"Edit", L"", 11, VISIBLE | WS_TABSTOP | ES_AUTOHSCROLL, 50, 7, 143, 14)
        .control(L"Button", L"&Fast", 12, VISIBLE | WS_TABSTOP | WS_GROUP | BS_AUTORADIOBUTTON, 7, 28, 60, 10)
        .control(L"Button", L"&Thorough", 13, VISIBLE | BS_AUTORADIOBUTTON, 70, 28, 60, 10)
        .control(L"Static", L"", 14, VISIBLE | WS_GROUP | SS_LEFT | SS_NOPREFIX, 7, 42, 186, 8)
        .control(L"Button", L"OK", IDOK, VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 87, 59, 50, 14)
        .control(L"Button", L"Cancel", IDCANCEL, VISIBLE | WS_TABSTOP, 143, 59, 50, 14);
    return builder;
}

// The findings of _rule on a template written by _builder, as lines.
std::vector<std::string> findings(const TemplateBuilder& _builder, Rule _rule,
                                  DialogKind _kind = DialogKind::Dialog,
                                  std::vector<std::wstring> _host = {}) {
    const std::vector<BYTE> bytes = _builder.bytes();
    DialogTemplate dialog;
    EXPECT_EQ(dialog.parse(bytes.data(), bytes.size()), "");
    std::vector<std::string> lines;
    for (const RuleFinding& finding : TemplateRules(dialog, _kind, std::move(_host)).check(_rule))
        lines.push_back(TemplateRules::line("xx", 900, finding));
    return lines;
}

using Lines = std::vector<std::string>;

} // namespace

TEST(BrokenTemplates, AWellMadeDialogKeepsEveryRule) {
    const std::vector<BYTE> bytes = wellMade().bytes();
    DialogTemplate dialog;
    ASSERT_EQ(dialog.parse(bytes.data(), bytes.size()), "");
    ASSERT_EQ(dialog.controls.size(), 7u);
    EXPECT_EQ(dialog.controls[1].className, L"Edit");
    EXPECT_EQ(dialog.controls[0].text, L"&Name:");
    EXPECT_EQ(dialog.controls[5].nId, IDOK);
    EXPECT_EQ(dialog.fontFace, L"MS Shell Dlg");
    for (Rule rule : TemplateRules::all())
        EXPECT_EQ(findings(wellMade(), rule), Lines()) << TemplateRules::name(rule);
}

TEST(BrokenTemplates, ATruncatedTemplateIsReportedNotRead) {
    std::vector<BYTE> bytes = wellMade().bytes();
    bytes.resize(bytes.size() - 6);
    DialogTemplate dialog;
    EXPECT_EQ(dialog.parse(bytes.data(), bytes.size()), "the template ends before its 7 controls do");
}

TEST(BrokenTemplates, TwoControlsWithOneAccessKey) {
    TemplateBuilder builder = wellMade();
    builder.control(L"Button", L"&name it", 20, VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX, 7, 74, 60, 4);
    EXPECT_EQ(
        findings(builder, Rule::AccessKeys),
        Lines{"xx dialog 900 control 20: access keys: \"&name it\" has the key of control 10 \"&Name:\""});
}

TEST(BrokenTemplates, APanelWhoseKeyTheWizardsBackButtonHas) {
    TemplateBuilder panel(DS_SHELLFONT | DS_CONTROL | WS_CHILD, 200, 60);
    panel.control(L"Button", L"&Back up first", 30, VISIBLE | WS_TABSTOP | BS_AUTOCHECKBOX, 0, 0, 100, 10);
    EXPECT_EQ(
        findings(panel, Rule::AccessKeys, DialogKind::Panel, {L"< &Back", L"&Next >"}),
        Lines{"xx dialog 900 control 30: access keys: \"&Back up first\" has the key of the frame's button "
              "\"< &Back\""});
    EXPECT_EQ(findings(panel, Rule::AccessKeys, DialogKind::Dialog), Lines()) << "alone it is fine";
}

TEST(BrokenTemplates, AnAmpersandInADataStaticIsNoKeyAndADoubledOneIsNone) {
    TemplateBuilder builder = wellMade();
    builder.control(L"Static", L"C:\\R&D", 21, VISIBLE | SS_LEFT | SS_NOPREFIX, 7, 52, 60, 4)
        .control(L"Static", L"&&Name", 22, VISIBLE | SS_LEFT, 70, 52, 60, 4);
    EXPECT_EQ(findings(builder, Rule::AccessKeys), Lines());
}

TEST(BrokenTemplates, AnInputAfterAButtonHasNoLabel) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Button", L"&Browse", 40, VISIBLE | WS_TABSTOP, 7, 7, 50, 14)
        .control(WC_LISTVIEWW, L"", 41, VISIBLE | WS_TABSTOP | LVS_REPORT, 7, 25, 186, 30);
    EXPECT_EQ(
        findings(builder, Rule::LabelBeforeInput),
        Lines{"xx dialog 900 control 41: label before input: no text static comes right before it in tab "
              "order"});
}

TEST(BrokenTemplates, AnInputNamedByAStaticThatShowsData) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Static", L"", 42, VISIBLE | SS_NOPREFIX, 7, 7, 186, 8)
        .control(L"ComboBox", L"", 43, VISIBLE | WS_TABSTOP | CBS_DROPDOWNLIST, 7, 18, 186, 60);
    EXPECT_EQ(findings(builder, Rule::LabelBeforeInput),
              Lines{"xx dialog 900 control 43: label before input: the static before it (42) shows data "
                    "(SS_NOPREFIX), not a label"});
}

TEST(BrokenTemplates, AProgressBarAfterAStatusTextHasNoNameAndOneAfterALabelHas) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Static", L"", 48, VISIBLE | SS_NOPREFIX, 7, 7, 186, 8)
        .control(PROGRESS_CLASSW, L"", 49, VISIBLE | WS_BORDER, 7, 18, 186, 12)
        .control(L"Static", L"Progress:", 50, VISIBLE, 7, 35, 40, 8)
        .control(PROGRESS_CLASSW, L"", 51, VISIBLE | WS_BORDER, 50, 35, 143, 12);
    EXPECT_EQ(findings(builder, Rule::LabelBeforeInput),
              Lines{"xx dialog 900 control 49: label before input: the static before it (48) shows data "
                    "(SS_NOPREFIX), not a label"});
    EXPECT_EQ(findings(builder, Rule::TabStop), Lines()) << "a bar is no tab stop";
}

TEST(BrokenTemplates, AHiddenStaticOrAnIconBetweenLabelAndInputDoesNotCount) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Static", L"&Users:", 44, VISIBLE, 7, 7, 186, 8)
        .control(L"Static", L"", 45, SS_NOPREFIX, 14, 30, 100, 8)
        .control(L"Static", L"", 46, VISIBLE | SS_ICON, 7, 18, 10, 10)
        .control(WC_LISTVIEWW, L"", 47, VISIBLE | WS_TABSTOP | LVS_REPORT, 20, 18, 170, 30);
    EXPECT_EQ(findings(builder, Rule::LabelBeforeInput), Lines());
}

TEST(BrokenTemplates, ACheckBoxWithoutTabStopAndAStaticWithOne) {
    TemplateBuilder builder = wellMade();
    builder.control(L"Button", L"&Keep", 50, VISIBLE | BS_AUTOCHECKBOX, 7, 74, 40, 4)
        .control(L"Static", L"note", 51, VISIBLE | WS_TABSTOP, 50, 74, 40, 4)
        .control(L"Button", L"", 52, VISIBLE | WS_TABSTOP | BS_GROUPBOX, 100, 74, 40, 4)
        .control(L"Edit", L"", 53, VISIBLE | ES_READONLY | ES_MULTILINE, 150, 74, 40, 4);
    EXPECT_EQ(findings(builder, Rule::TabStop),
              (Lines{"xx dialog 900 control 50: tab stop: interactive control without WS_TABSTOP",
                     "xx dialog 900 control 51: tab stop: a control that takes no input has WS_TABSTOP",
                     "xx dialog 900 control 52: tab stop: a control that takes no input has WS_TABSTOP"}))
        << "a read-only edit (53) is a text to read and may be left out of the tab order";
}

TEST(BrokenTemplates, ASecondRadioButtonThatIsATabStop) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Button", L"&A", 53, VISIBLE | WS_TABSTOP | WS_GROUP | BS_AUTORADIOBUTTON, 7, 7, 40, 10)
        .control(L"Button", L"&B", 54, VISIBLE | WS_TABSTOP | BS_AUTORADIOBUTTON, 50, 7, 40, 10);
    EXPECT_EQ(findings(builder, Rule::TabStop),
              Lines{"xx dialog 900 control 54: tab stop: a radio button after the first of its group has "
                    "WS_TABSTOP"});
}

TEST(BrokenTemplates, RadioGroupsWithoutTheirBeginningOrEnd) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Button", L"&OK", IDOK, VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 7, 7, 40, 14)
        .control(L"Button", L"&A", 60, VISIBLE | WS_TABSTOP | BS_AUTORADIOBUTTON, 7, 25, 40, 10)
        .control(L"Button", L"&B", 61, VISIBLE | BS_AUTORADIOBUTTON, 50, 25, 40, 10)
        .control(L"Button", L"&Cancel", IDCANCEL, VISIBLE | WS_TABSTOP, 7, 40, 40, 14);
    EXPECT_EQ(
        findings(builder, Rule::RadioGroup),
        (Lines{"xx dialog 900 control 60: radio group: the first radio button lacks WS_GROUP",
               "xx dialog 900 control 2: radio group: the control after a radio group lacks WS_GROUP, so "
               "the group does not end"}));
}

TEST(BrokenTemplates, NoDefaultButtonTwoOfThemAndOneInAPanel) {
    TemplateBuilder none(DIALOG_STYLE, 200, 80);
    none.control(L"Button", L"Cancel", IDCANCEL, VISIBLE | WS_TABSTOP, 7, 7, 50, 14);
    EXPECT_EQ(findings(none, Rule::DefaultButton),
              Lines{"xx dialog 900 control 0: default button: no default button"});
    TemplateBuilder two = wellMade();
    two.control(L"Button", L"&Apply", 70, VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 7, 74, 50, 4);
    EXPECT_EQ(findings(two, Rule::DefaultButton),
              Lines{"xx dialog 900 control 70: default button: a second default button besides 1"});
    TemplateBuilder panel(DS_SHELLFONT | DS_CONTROL | WS_CHILD, 200, 60);
    panel.control(L"Button", L"&Check", 71, VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 0, 0, 50, 14);
    EXPECT_EQ(
        findings(panel, Rule::DefaultButton, DialogKind::Panel),
        Lines{"xx dialog 900 control 71: default button: a panel has a default button (the frame's Next "
              "is)"});
}

TEST(BrokenTemplates, ADialogWithAChoiceButNoCancelAndANoticeThatNeedsNone) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Button", L"OK", IDOK, VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 7, 7, 50, 14)
        .control(L"Button", L"Close", 80, VISIBLE | WS_TABSTOP, 60, 7, 50, 14);
    EXPECT_EQ(findings(builder, Rule::Cancel),
              Lines{"xx dialog 900 control 0: cancel: no Cancel button (IDCANCEL or 142)"});
    EXPECT_EQ(findings(builder, Rule::Cancel, DialogKind::Notice), Lines());
}

TEST(BrokenTemplates, AControlThatLeavesTheDialog) {
    TemplateBuilder builder = wellMade();
    builder.control(L"Static", L"wide", 90, VISIBLE | SS_NOPREFIX, 150, 74, 60, 4)
        .control(L"ComboBox", L"", 91, VISIBLE | WS_TABSTOP | CBS_DROPDOWNLIST, 7, 60, 60, 100);
    EXPECT_EQ(
        findings(builder, Rule::InsideDialog),
        Lines{"xx dialog 900 control 90: inside the dialog: (150, 74, 60, 4) leaves the dialog of 200 x 80"})
        << "a combo box's drop-down list may leave it";
}

TEST(BrokenTemplates, TabOrderThatJumpsUpOrBack) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Button", L"OK", IDOK, VISIBLE | WS_TABSTOP | BS_DEFPUSHBUTTON, 87, 59, 50, 14)
        .control(L"Button", L"Cancel", IDCANCEL, VISIBLE | WS_TABSTOP, 30, 59, 50, 14)
        .control(L"Static", L"top", 95, VISIBLE, 7, 7, 50, 8);
    EXPECT_EQ(findings(builder, Rule::ReadingOrder),
              (Lines{"xx dialog 900 control 2: reading order: left of control 1 that comes before it",
                     "xx dialog 900 control 95: reading order: above control 2 that comes before it"}));
}

TEST(BrokenTemplates, AnotherFontOrNoShellFontFlag) {
    TemplateBuilder tahoma(DIALOG_STYLE, 200, 80, L"Tahoma");
    EXPECT_EQ(findings(tahoma, Rule::ShellFont),
              Lines{"xx dialog 900 control 0: shell font: font \"Tahoma\" instead of \"MS Shell Dlg\""});
    TemplateBuilder plain(DS_SETFONT | WS_POPUP | WS_CAPTION, 200, 80);
    EXPECT_EQ(
        findings(plain, Rule::ShellFont),
        Lines{"xx dialog 900 control 0: shell font: DS_SETFONT | DS_FIXEDSYS (DS_SHELLFONT) is not set"});
}

TEST(BrokenTemplates, ARunTimeTextThatLabelsNothingButTurnsAmpersandsIntoKeys) {
    TemplateBuilder builder(DIALOG_STYLE, 200, 80);
    builder.control(L"Static", L"", 96, VISIBLE, 7, 7, 186, 8)
        .control(L"Static", L"", 97, VISIBLE, 7, 20, 40, 8)
        .control(L"Edit", L"", 98, VISIBLE | WS_TABSTOP, 50, 18, 143, 14);
    EXPECT_EQ(findings(builder, Rule::NoPrefix),
              Lines{"xx dialog 900 control 96: no prefix: a text set at run time that labels no input lacks "
                    "SS_NOPREFIX"})
        << "97 labels the edit, its key is wanted";
}
