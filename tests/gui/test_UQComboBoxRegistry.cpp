// UQComboBox's most-recently-used lists in the user's registry: filling a real combo box from a stored
// list and choice, and writing back what the user chose or typed.
#include "RegistryProbe.h"
#include "interfaces/korbase_testing.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQComboBox.h"
#include "guibase/toolkit/UQWindow.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";

std::vector<std::string> itemsOf(HWND _hCombo) {
    std::vector<std::string> items;
    const int nCount = static_cast<int>(SendMessageW(_hCombo, CB_GETCOUNT, 0, 0));
    for (int i = 0; i < nCount; ++i) {
        wchar_t szText[300] = {0};
        SendMessageW(_hCombo, CB_GETLBTEXT, i, reinterpret_cast<LPARAM>(szText));
        items.push_back(utf8(szText));
    }
    return items;
}

int selectionOf(HWND _hCombo) {
    return static_cast<int>(SendMessageW(_hCombo, CB_GETCURSEL, 0, 0));
}

std::vector<std::string> storedList(const CString& _sName, const CString& _sKey) {
    UQArray<CString> as;
    UQRegistry::mf_getValues(_sName, as, _sKey, HKEY_CURRENT_USER);
    std::vector<std::string> out;
    for (INT_PTR i = 0; i < as.GetSize(); ++i)
        out.push_back(utf8(as[i]));
    return out;
}

// Types into the combo box's edit field, a character at a time, as the keyboard would.
void typeInto(HWND _hCombo, const wchar_t* _pszText) {
    HWND hEdit = FindWindowExW(_hCombo, nullptr, L"Edit", nullptr);
    ASSERT_NE(hEdit, nullptr);
    for (const wchar_t* p = _pszText; *p != L'\0'; ++p)
        SendMessageW(hEdit, WM_CHAR, *p, 1);
    pumpMessages();
}

class UQComboBoxRegistry : public ::testing::Test {
protected:
    void TearDown() override { UQWindow::mf_setRegistryRoot(UQBackend::NONE); }

    const CString m_sPath = UQRegistry::mf_getRegistryRoot(L"UserSearch");
    registrytest::RegistrySandbox m_sandbox;
};

} // namespace

// --- reading ------------------------------------------------------------------------------------------

TEST_F(UQComboBoxRegistry, AStoredListWithDuplicatesFillsTheControlWithEachEntryOnceInOrder) {
    UQRegistry::mf_setValues(L"Authorities", TextList({L"a", L"b", L"a", L"c", L"b"}), m_sPath,
                             HKEY_CURRENT_USER);
    UQRegistry::mf_setValue(L"Authority", L"c", 0, m_sPath, HKEY_CURRENT_USER);
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"old entry");
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initItemFromRegistry(dialog.hwnd(), IDC_COMBO, L"Authorities", m_sPath,
                                                  L"Authority", L"default"),
              1);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"a", "b", "c"}));
    EXPECT_EQ(selectionOf(hCombo), 2);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQComboBoxRegistry, DuplicatesAreCaseSensitive) {
    UQRegistry::mf_setValues(L"Authorities", TextList({L"Domain", L"DOMAIN", L"Domain"}), m_sPath,
                             HKEY_CURRENT_USER);
    TestDialog dialog;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(dialog.item(IDC_COMBO), L"Authorities", m_sPath, CString(),
                                              CString()),
              1);
    EXPECT_EQ(itemsOf(dialog.item(IDC_COMBO)), (std::vector<std::string>{"Domain", "DOMAIN"}));
    EXPECT_EQ(selectionOf(dialog.item(IDC_COMBO)), CB_ERR) << "no selection key, no selection";
}

TEST_F(UQComboBoxRegistry, APathThatDoesNotExistLeavesTheControlUntouchedEvenWithADefault) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"keep", L"these"}));
    UQComboBox::mf_selectIndex(hCombo, 1);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(hCombo, L"Authorities", m_sPath + L"\\Missing", L"Authority",
                                              L"default"),
              0);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"keep", "these"}));
    EXPECT_EQ(selectionOf(hCombo), 1);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQComboBoxRegistry, ARegistryThatCannotTellWhetherThePathExistsLeavesTheControlUntouched) {
    UQRegistry::mf_setValues(L"Authorities", TextList({L"a"}), m_sPath, HKEY_CURRENT_USER);
    UQRegistryInjection::mf_injectFailure(0);
    const RegistryFailure refused =
        registryFailure([&] { UQRegistry::mf_PathExists(m_sPath, HKEY_CURRENT_USER); });
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"keep");
    UQRegistryInjection::mf_injectFailure(0);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(hCombo, L"Authorities", m_sPath, L"Authority", L"default"), 0);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"keep"}));
    EXPECT_EQ(log.lines(),
              (refused.lines + std::vector<LogLine>{{'E', "UQComboBox::mf_initFromRegistry",
                                                     "Failure getting registry keys 'Authorities':\r\n" +
                                                         TAB + refused.error}}));
}

TEST_F(UQComboBoxRegistry, AnExistingPathWithoutAListGivesTheDefaultTextSelected) {
    UQRegistry::mf_setValue(L"Other", L"x", 0, m_sPath, HKEY_CURRENT_USER);
    const RegistryFailure missing = registryFailure([&] {
        UQArray<CString> as;
        UQRegistry::mf_getValues(L"Authorities", as, m_sPath, HKEY_CURRENT_USER);
    });
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"replaced");
    LogCheck log;
    EXPECT_EQ(
        UQComboBox::mf_initFromRegistry(hCombo, L"Authorities", m_sPath, L"Authority", L"<local computer>"),
        1);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"<local computer>"}));
    EXPECT_EQ(selectionOf(hCombo), 0);
    EXPECT_EQ(log.lines(),
              (missing.lines + std::vector<LogLine>{
                                   {'E', "UQComboBox::mf_initFromRegistry",
                                    "Failure getting registry keys 'Authorities':\r\n" + TAB + missing.error},
                                   {'G', "UQComboBox::mf_initFromRegistry",
                                    "No list values found in '" + utf8(m_sPath) + "\\Authorities'"}}));
}

TEST_F(UQComboBoxRegistry, AnExistingPathWithoutAListOrDefaultLeavesTheControlUntouched) {
    UQRegistry::mf_setValue(L"Other", L"x", 0, m_sPath, HKEY_CURRENT_USER);
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"keep");
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(hCombo, L"Authorities", m_sPath, L"Authority", CString()), 0);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"keep"}));
}

TEST_F(UQComboBoxRegistry, AnEmptyStoredChoiceSelectsTheFirstEntry) {
    UQRegistry::mf_setValues(L"Authorities", TextList({L"a", L"b"}), m_sPath, HKEY_CURRENT_USER);
    UQRegistry::mf_setValue(L"Authority", CString(), 0, m_sPath, HKEY_CURRENT_USER);
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(dialog.item(IDC_COMBO), L"Authorities", m_sPath, L"Authority",
                                              CString()),
              1);
    EXPECT_EQ(selectionOf(dialog.item(IDC_COMBO)), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "UQComboBox::mf_initFromRegistry",
                                     "Selecting 1st index instead of registry selection value ''"}}));
}

TEST_F(UQComboBoxRegistry, AStoredChoiceNoLongerInTheListLeavesNoSelection) {
    UQRegistry::mf_setValues(L"Authorities", TextList({L"a", L"b"}), m_sPath, HKEY_CURRENT_USER);
    UQRegistry::mf_setValue(L"Authority", L"gone", 0, m_sPath, HKEY_CURRENT_USER);
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(dialog.item(IDC_COMBO), L"Authorities", m_sPath, L"Authority",
                                              CString()),
              1);
    EXPECT_EQ(selectionOf(dialog.item(IDC_COMBO)), CB_ERR);
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQComboBoxRegistry, AMissingChoiceValueIsLoggedAndTheFirstEntrySelected) {
    UQRegistry::mf_setValues(L"Authorities", TextList({L"a", L"b"}), m_sPath, HKEY_CURRENT_USER);
    const RegistryFailure missing = registryFailure([&] {
        CString s;
        UQRegistry::mf_getValue(L"Authority", s, m_sPath, HKEY_CURRENT_USER);
    });
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(dialog.item(IDC_COMBO), L"Authorities", m_sPath, L"Authority",
                                              CString()),
              1);
    EXPECT_EQ(selectionOf(dialog.item(IDC_COMBO)), 0);
    EXPECT_EQ(log.lines(),
              (missing.lines +
               std::vector<LogLine>{
                   {'E', "UQComboBox::mf_initFromRegistry",
                    "Failure getting registry selection key 'Authority':\r\n" + TAB + missing.error},
                   {'G', "UQComboBox::mf_initFromRegistry",
                    "Selecting 1st index instead of registry selection value ''"}}));
}

TEST_F(UQComboBoxRegistry, AnEmptyPathMeansTheWindowRegistryRoot) {
    UQWindow::mf_setRegistryRoot(UQBackend::VRS);
    UQRegistry::mf_setValues(L"Authorities", TextList({L"vrs"}), UQWindow::mf_getRegistryRoot(),
                             HKEY_CURRENT_USER);
    TestDialog dialog;
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(dialog.item(IDC_COMBO), L"Authorities", CString(), CString(),
                                              CString()),
              1);
    EXPECT_EQ(itemsOf(dialog.item(IDC_COMBO)), (std::vector<std::string>{"vrs"}));
}

// --- writing ------------------------------------------------------------------------------------------

TEST_F(UQComboBoxRegistry, ATypedTextIsSavedAsTheLastEntryAndAsTheChoice) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"a", L"b"}));
    typeInto(hCombo, L"new");
    ASSERT_EQ(selectionOf(hCombo), CB_ERR);
    LogCheck log;
    EXPECT_EQ(
        UQComboBox::mf_saveItemToRegistry(dialog.hwnd(), IDC_COMBO, L"Authorities", m_sPath, L"Authority"),
        1);
    EXPECT_EQ(storedList(L"Authorities", m_sPath), (std::vector<std::string>{"a", "b", "new"}));
    CString sChoice;
    UQRegistry::mf_getValue(L"Authority", sChoice, m_sPath, HKEY_CURRENT_USER);
    EXPECT_EQ(sChoice, L"new");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'G', "UQComboBox::mf_getSelection", "No combobox item selected"}}));
}

TEST_F(UQComboBoxRegistry, AChosenEntryIsSavedAsTheChoiceWithoutBeingAddedAgain) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, TextList({L"a", L"b", L"c"}));
    UQComboBox::mf_selectIndex(hCombo, 1);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_saveToRegistry(hCombo, L"Authorities", m_sPath, L"Authority"), 1);
    EXPECT_EQ(storedList(L"Authorities", m_sPath), (std::vector<std::string>{"a", "b", "c"}));
    CString sChoice;
    UQRegistry::mf_getValue(L"Authority", sChoice, m_sPath, HKEY_CURRENT_USER);
    EXPECT_EQ(sChoice, L"b");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQComboBoxRegistry, ASavedListAndChoiceReadBackInOrder) {
    {
        TestDialog dialog;
        HWND hCombo = dialog.item(IDC_COMBO);
        UQComboBox::mf_addText(hCombo, TextList({L"z", L"y"}));
        typeInto(hCombo, L"x");
        UQComboBox::mf_saveToRegistry(hCombo, L"Authorities", m_sPath, L"Authority");
    }
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    EXPECT_EQ(UQComboBox::mf_initFromRegistry(hCombo, L"Authorities", m_sPath, L"Authority", CString()), 1);
    EXPECT_EQ(itemsOf(hCombo), (std::vector<std::string>{"z", "y", "x"}));
    EXPECT_EQ(selectionOf(hCombo), 2);
}

TEST_F(UQComboBoxRegistry, WithoutAChoiceKeyOnlyTheListIsWritten) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"a");
    UQComboBox::mf_selectIndex(hCombo, 0);
    EXPECT_EQ(UQComboBox::mf_saveToRegistry(hCombo, L"Authorities", m_sPath, CString()), 1);
    EXPECT_EQ(storedList(L"Authorities", m_sPath), (std::vector<std::string>{"a"}));
    EXPECT_FALSE(UQRegistry::mf_exists(L"Authority", m_sPath, HKEY_CURRENT_USER));
}

TEST_F(UQComboBoxRegistry, FailedWritesAreLoggedWithTheListKeyAndSavingStillReturnsOne) {
    TestDialog dialog;
    HWND hCombo = dialog.item(IDC_COMBO);
    UQComboBox::mf_addText(hCombo, L"a");
    UQComboBox::mf_selectIndex(hCombo, 0);
    UQRegistryInjection::mf_injectFailure(0, 2);
    const RegistryFailure list = registryFailure(
        [&] { UQRegistry::mf_setValues(L"Authorities", TextList({L"a"}), m_sPath, HKEY_CURRENT_USER); });
    const RegistryFailure choice =
        registryFailure([&] { UQRegistry::mf_setValue(L"Authority", L"a", 0, m_sPath, HKEY_CURRENT_USER); });
    UQRegistryInjection::mf_injectFailure(0, 2);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_saveToRegistry(hCombo, L"Authorities", m_sPath, L"Authority"), 1);
    EXPECT_EQ(
        log.lines(),
        (list.lines +
         std::vector<LogLine>{{'E', "UQComboBox::mf_saveToRegistry",
                               "Failure setting registry keys 'Authorities':\r\n" + TAB + list.error}} +
         choice.lines +
         std::vector<LogLine>{{'E', "UQComboBox::mf_saveToRegistry",
                               "Failure setting registry keys 'Authorities':\r\n" + TAB + choice.error}}));
    UQRegistryInjection::mf_clearInjection();
    EXPECT_FALSE(UQRegistry::mf_exists(L"Authorities", m_sPath, HKEY_CURRENT_USER));
}

TEST_F(UQComboBoxRegistry, TheRegistryItemFormsOfAMissingItemLogOnOneLineAndAnswerZero) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    const std::string error = errorText(UQErrno::_E_::ItemNotFound, dwError);
    LogCheck log;
    EXPECT_EQ(UQComboBox::mf_initItemFromRegistry(dialog.hwnd(), IDC_MISSING, L"L", m_sPath, L"S", L"d"), 0);
    EXPECT_EQ(UQComboBox::mf_saveItemToRegistry(dialog.hwnd(), IDC_MISSING, L"L", m_sPath, L"S"), 0);
    const LogLine lookup{'E', "UQWindow::mf_getItem", "Failure getting item with id=4242:\r\n" + TAB + error};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{lookup,
                                                 {'E', "UQComboBox::mf_initItemFromRegistry",
                                                  "Failure getting item with id=4242: " + error},
                                                 lookup,
                                                 {'E', "UQComboBox::mf_saveItemToRegistry",
                                                  "Failure getting item with id=4242: " + error}}));
    EXPECT_FALSE(UQRegistry::mf_PathExists(m_sPath, HKEY_CURRENT_USER));
}
