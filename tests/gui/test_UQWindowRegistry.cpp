// UQWindow's registry persistence of a window text: the registry root per backend, reading a value into a
// control, writing a control's text, and the failures of both.
#include "RegistryProbe.h"
#include "interfaces/korbase_testing.h"

#include "guibase/settings/RegistrySandbox.h"
#include "guibase/toolkit/UQWindow.h"

using namespace toolkittest;

namespace {

const std::string TAB = "    ";

class UQWindowRegistry : public ::testing::Test {
protected:
    void TearDown() override { UQWindow::mf_setRegistryRoot(UQBackend::NONE); }

    registrytest::RegistrySandbox m_sandbox;
};

CString storedValue(const CString& _sName, const CString& _sKey) {
    CString sValue;
    UQRegistry::mf_getValue(_sName, sValue, _sKey, HKEY_CURRENT_USER);
    return sValue;
}

} // namespace

TEST_F(UQWindowRegistry, TheRootIsEmptyWithoutABackendAndTheBackendsGuiPathWithOne) {
    EXPECT_EQ(UQWindow::mf_getRegistryRoot(), L"");
    UQWindow::mf_setRegistryRoot(UQBackend::VRS);
    EXPECT_EQ(UQWindow::mf_getRegistryRoot(), UQRegistry::mf_getRegistryRoot(L"VRS"));
    EXPECT_EQ(UQWindow::mf_getRegistryRoot().Right(4), L"\\VRS");
    UQWindow::mf_setRegistryRoot(UQBackend::NONE);
    EXPECT_EQ(UQWindow::mf_getRegistryRoot(), L"");
}

TEST_F(UQWindowRegistry, InitFromRegistrySetsTheStoredText) {
    UQRegistry::mf_setValue(L"LastOptionFile", L"D:\\opt\\kor.opt", 0, CString(), HKEY_CURRENT_USER);
    TestDialog dialog;
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_initItemFromRegistry(dialog.hwnd(), IDC_EDIT, L"LastOptionFile"), 1);
    CString sText;
    UQWindow::mf_getItemText(dialog.hwnd(), IDC_EDIT, sText);
    EXPECT_EQ(sText, L"D:\\opt\\kor.opt");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQWindowRegistry, InitFromRegistryReadsUnderTheBackendsRoot) {
    UQWindow::mf_setRegistryRoot(UQBackend::VRS);
    UQRegistry::mf_setValue(L"Server", L"vrs-01", 0, UQWindow::mf_getRegistryRoot(), HKEY_CURRENT_USER);
    TestDialog dialog;
    EXPECT_EQ(UQWindow::mf_initFromRegistry(dialog.item(IDC_EDIT), L"Server"), 1);
    CString sText;
    UQWindow::mf_getText(dialog.item(IDC_EDIT), sText);
    EXPECT_EQ(sText, L"vrs-01");
}

TEST_F(UQWindowRegistry, InitFromRegistryOfAMissingValueClearsTheTextAndReturnsOne) {
    const RegistryFailure missing = registryFailure([] {
        CString s;
        UQRegistry::mf_getValue(L"NotThere", s, CString(), HKEY_CURRENT_USER);
    });
    TestDialog dialog;
    SetWindowTextW(dialog.item(IDC_EDIT), L"typed before");
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_initFromRegistry(dialog.item(IDC_EDIT), L"NotThere"), 1);
    CString sText;
    UQWindow::mf_getText(dialog.item(IDC_EDIT), sText);
    EXPECT_EQ(sText, L"");
    EXPECT_EQ(log.lines(),
              (missing.lines + std::vector<LogLine>{
                                   {'E', "UQWindow::mf_initFromRegistry",
                                    "Failure getting registry keys 'NotThere':\r\n" + TAB + missing.error}}));
}

TEST_F(UQWindowRegistry, SaveToRegistryWritesTheTextThatInitReadsBack) {
    TestDialog dialog;
    SetWindowTextW(dialog.item(IDC_EDIT), L"\\\\server\\share\\kor.opt");
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_saveItemToRegistry(dialog.hwnd(), IDC_EDIT, L"OptionFile"), 1);
    EXPECT_EQ(storedValue(L"OptionFile", CString()), L"\\\\server\\share\\kor.opt");
    SetWindowTextW(dialog.item(IDC_EDIT), L"");
    EXPECT_EQ(UQWindow::mf_initFromRegistry(dialog.item(IDC_EDIT), L"OptionFile"), 1);
    CString sText;
    UQWindow::mf_getText(dialog.item(IDC_EDIT), sText);
    EXPECT_EQ(sText, L"\\\\server\\share\\kor.opt");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQWindowRegistry, WithABackendTheSavedTextIsReadBackUnderTheBackendsRoot) {
    UQWindow::mf_setRegistryRoot(UQBackend::VRS);
    EXPECT_EQ(UQRegistry::mf_getUserKey(), UQWindow::mf_getRegistryRoot());
    TestDialog dialog;
    SetWindowTextW(dialog.item(IDC_EDIT), L"vrs.opt");
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_saveToRegistry(dialog.item(IDC_EDIT), L"OptionFile"), 1);
    EXPECT_EQ(storedValue(L"OptionFile", UQRegistry::mf_getRegistryRoot(L"VRS")), L"vrs.opt");
    EXPECT_FALSE(
        UQRegistry::mf_exists(L"OptionFile", UQRegistry::mf_getRegistryRoot(CString()), HKEY_CURRENT_USER));
    SetWindowTextW(dialog.item(IDC_EDIT), L"");
    EXPECT_EQ(UQWindow::mf_initFromRegistry(dialog.item(IDC_EDIT), L"OptionFile"), 1);
    CString sText;
    UQWindow::mf_getText(dialog.item(IDC_EDIT), sText);
    EXPECT_EQ(sText, L"vrs.opt");
    EXPECT_EQ(log.count(), 0u);
    UQWindow::mf_setRegistryRoot(UQBackend::NONE);
    EXPECT_EQ(UQRegistry::mf_getUserKey(), UQRegistry::mf_getRegistryRoot(CString()));
}

TEST_F(UQWindowRegistry, SaveToRegistryReturnsOneEvenWhenTheWriteFails) {
    UQRegistryInjection::mf_injectFailure(0);
    const RegistryFailure refused = registryFailure(
        [] { UQRegistry::mf_setValue(L"OptionFile", L"x", 0, CString(), HKEY_CURRENT_USER); });
    TestDialog dialog;
    SetWindowTextW(dialog.item(IDC_EDIT), L"x");
    UQRegistryInjection::mf_injectFailure(0);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_saveToRegistry(dialog.item(IDC_EDIT), L"OptionFile"), 1);
    EXPECT_EQ(log.lines(),
              (refused.lines + std::vector<LogLine>{{'E', "UQWindow::mf_saveToRegistry",
                                                     "Failure setting registry key 'OptionFile':\r\n" + TAB +
                                                         refused.error}}));
    EXPECT_FALSE(UQRegistry::mf_exists(L"OptionFile", CString(), HKEY_CURRENT_USER));
}

TEST_F(UQWindowRegistry, TheItemFormsOfAMissingItemAnswerZeroAndTouchNothing) {
    TestDialog dialog;
    const DWORD dwError = missingItemError(dialog.hwnd(), IDC_MISSING);
    const std::string error = errorText(UQErrno::_E_::ItemNotFound, dwError);
    LogCheck log;
    EXPECT_EQ(UQWindow::mf_initItemFromRegistry(dialog.hwnd(), IDC_MISSING, L"A"), 0);
    EXPECT_EQ(UQWindow::mf_saveItemToRegistry(dialog.hwnd(), IDC_MISSING, L"A"), 0);
    const LogLine lookup{'E', "UQWindow::mf_getItem", "Failure getting item with id=4242:\r\n" + TAB + error};
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{lookup,
                                                 {'E', "UQWindow::mf_initItemFromRegistry",
                                                  "Failure getting item with id=4242:\r\n" + TAB + error},
                                                 lookup,
                                                 {'E', "UQWindow::mf_saveItemToRegistry",
                                                  "Failure getting item with id=4242:\r\n" + TAB + error}}));
    EXPECT_FALSE(UQRegistry::mf_exists(L"A", CString(), HKEY_CURRENT_USER));
}
