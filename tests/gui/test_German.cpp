// The German language module as a German user meets it: KOR_LANGUAGE=de chooses it over the English one,
// and the message box and the wizard show its texts. The expected texts are written out here, so a
// module that silently fell back to English fails.
#include "ToolkitTestSupport.h"
#include "WizardTestSupport.h"

#include "guibase/toolkit/UQMessageBox.h"
#include "korlang_ids.h"

#include <string>
#include <vector>

using namespace wizardtest;
using toolkittest::itemText;
using toolkittest::textOf;

namespace {

const wchar_t* const LANGUAGE_VARIABLE = L"KOR_LANGUAGE";

// The override is read at every look-up, so each test sets it and the next one sees it gone.
class German : public ::testing::Test {
protected:
    void SetUp() override {
        toolkittest::initCommonControls();
        ASSERT_TRUE(SetEnvironmentVariableW(LANGUAGE_VARIABLE, L"de"));
    }
    void TearDown() override { SetEnvironmentVariableW(LANGUAGE_VARIABLE, nullptr); }
};

std::string moduleText(HMODULE _hModule, unsigned _uNumber) {
    const wchar_t* pszText = nullptr;
    const int nLength = LoadStringW(_hModule, _uNumber, reinterpret_cast<LPWSTR>(&pszText), 0);
    return nLength > 0 ? utf8(CString(pszText, nLength)) : std::string();
}

} // namespace

TEST_F(German, TheOverrideChoosesTheGermanModuleBesideTheEnglishOne) {
    HMODULE hGerman = UQLanguage::mf_getUserLanguageHandle();
    HMODULE hEnglish = UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
    ASSERT_NE(hGerman, nullptr);
    ASSERT_NE(hEnglish, nullptr);
    EXPECT_NE(hGerman, hEnglish);
    EXPECT_EQ(UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT), hGerman) << "icons come from there too";
    EXPECT_EQ(UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN_AUSTRIAN)), hGerman);
    EXPECT_EQ(moduleText(hGerman, 3092), "&Ja");
    EXPECT_EQ(moduleText(hEnglish, 3092), "&Yes");
    EXPECT_EQ(utf8(CString(UQString(931))), "M\xC3\xB6"
                                            "chten Sie den Assistenten wirklich abbrechen?");
}

TEST_F(German, ALanguageWithoutAModuleAndANameThatIsNoLanguageGetEnglish) {
    HMODULE hEnglish = UQLanguage::mf_getLanguageHandle(MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US));
    for (const wchar_t* pszValue : {L"ja", L"..\\korlang_de", L"d", L"deutsch", L"d\u00e9"}) {
        ASSERT_TRUE(SetEnvironmentVariableW(LANGUAGE_VARIABLE, pszValue));
        EXPECT_EQ(UQLanguage::mf_getUserLanguageHandle(), hEnglish) << utf8(CString(pszValue));
    }
    ASSERT_TRUE(SetEnvironmentVariableW(LANGUAGE_VARIABLE, L"DE"));
    EXPECT_NE(UQLanguage::mf_getUserLanguageHandle(), hEnglish) << "the name is not case-sensitive";
}

TEST_F(German, TheMessageBoxSpeaksGerman) {
    UQMessageBox box(L"12 Dateien migrieren?", UQSeverity(UVSeverity::YELLOW), UQMessageBox::BUTTONS_YES_NO,
                     L"Migration");
    std::vector<std::string> seen;
    DialogDriver driver;
    driver.then([&](HWND _hDlg) {
        seen = {textOf(_hDlg), itemText(_hDlg, IDC_MESSAGE_TEXT), itemText(_hDlg, IDC_MESSAGE_BUTTON1),
                itemText(_hDlg, IDC_MESSAGE_BUTTON2)};
        DialogDriver::click(_hDlg, IDC_MESSAGE_BUTTON2);
    });
    EXPECT_EQ(box.mf_show(nullptr, 1), UQMessageBox::RESULT_NO);
    EXPECT_EQ(seen, (std::vector<std::string>{"Migration", "12 Dateien migrieren?", "&Ja", "&Nein"}));
}

TEST_F(German, TheWizardSpeaksGermanOnItsFrameItsPanelsAndItsQuestion) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME, TITLE_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_DONE, TITLE_DONE);
    std::vector<std::string> seen;
    std::vector<std::string> question;
    const std::string sCancelCaption = "Assistent abbrechen";
    Script script(wizard);
    script
        .then([&] {
            HWND hFrame = wizard.mf_getHandle();
            if (!frameReady(wizard))
                return false;
            seen = {textOf(hFrame), itemText(hFrame, ITEM_TITLE), itemText(hFrame, ITEM_BACK),
                    itemText(hFrame, ITEM_NEXT), itemText(hFrame, IDCANCEL)};
            return true;
        })
        .click(ITEM_NEXT)
        .then([&] {
            if (wizard.mf_getCurrentIndex() != 1)
                return false;
            seen.push_back(itemText(wizard.mf_getHandle(), ITEM_TITLE));
            seen.push_back(itemText(wizard.mf_getHandle(), ITEM_NEXT));
            return true;
        })
        .click(IDCANCEL)
        .then([&] {
            HWND hBox = boxOf(GetCurrentThreadId(), sCancelCaption);
            if (hBox == nullptr)
                return false;
            question = {itemText(hBox, IDC_MESSAGE_TEXT), itemText(hBox, IDC_MESSAGE_BUTTON1),
                        itemText(hBox, IDC_MESSAGE_BUTTON2)};
            return true;
        })
        .answer(sCancelCaption, IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(GetModuleHandleW(nullptr), nullptr), 0);
    EXPECT_EQ(seen, (std::vector<std::string>{"Einrichtungsassistent", "Willkommen",
                                              "< &Zur\xC3\xBC"
                                              "ck",
                                              "&Weiter >", "Abbrechen",
                                              "Bereit zum Abschlie\xC3\x9F"
                                              "en",
                                              "&Fertig stellen"}));
    EXPECT_EQ(question, (std::vector<std::string>{"M\xC3\xB6"
                                                  "chten Sie den Assistenten wirklich abbrechen?",
                                                  "&Ja", "&Nein"}));
    EXPECT_EQ(script.answered, std::vector<std::string>{sCancelCaption});
    EXPECT_FALSE(script.timedOut());
}
