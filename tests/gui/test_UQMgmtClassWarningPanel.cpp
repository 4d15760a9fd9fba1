// The backend entry protection setting as the warning panel reads it: missing (written as 0), hold,
// an unknown number, and a value of the wrong type, which fails the panel's construction.
#include "PanelsTestSupport.h"

#include "guibase/panels/UQMgmtClassWarningPanel.h"
#include "guibase/settings/RegistrySandbox.h"

using registrytest::RegistrySandbox;

namespace {

const char* const PANEL = "UQMgmtClassWarningPanel::UQMgmtClassWarningPanel";
const wchar_t* const OPTIONS_KEY = L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Options";
const std::string OPTIONS_KEY_TEXT = "SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Options\\";

void setProtection(const RegistrySandbox& _sandbox, DWORD _dwValue) {
    ASSERT_EQ(RegSetKeyValueW(_sandbox.machine(), OPTIONS_KEY, L"BackendEntryProtection", REG_DWORD,
                              &_dwValue, sizeof _dwValue),
              ERROR_SUCCESS);
}

} // namespace

TEST(UQMgmtClassWarningPanel, AMissingSettingIsWrittenAsNotEnabled) {
    RegistrySandbox sandbox;
    LogCheck log;
    UQMgmtClassWarningPanel panel;
    EXPECT_EQ(panel.mf_isBackendEntryProtection(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'T', PANEL, "Backend entry protection method is not enabled (default)"}}));
    DWORD dwValue = 99, dwSize = sizeof dwValue, dwType = 0;
    ASSERT_EQ(RegGetValueW(sandbox.machine(), OPTIONS_KEY, L"BackendEntryProtection", RRF_RT_ANY, &dwType,
                           &dwValue, &dwSize),
              ERROR_SUCCESS);
    EXPECT_EQ(dwType, static_cast<DWORD>(REG_DWORD));
    EXPECT_EQ(dwValue, 0u);
}

TEST(UQMgmtClassWarningPanel, OneIsTheHoldMethod) {
    RegistrySandbox sandbox;
    setProtection(sandbox, 1);
    LogCheck log;
    UQMgmtClassWarningPanel panel;
    EXPECT_EQ(panel.mf_isBackendEntryProtection(), 1);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'I', PANEL, "Backend entry protection method is hold"}}));
}

TEST(UQMgmtClassWarningPanel, TwoIsLoggedAsUnknownAndTakenAsNotEnabled) {
    RegistrySandbox sandbox;
    setProtection(sandbox, 2);
    LogCheck log;
    UQMgmtClassWarningPanel panel;
    EXPECT_EQ(panel.mf_isBackendEntryProtection(), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', PANEL,
                                     "Unknown value for registry key '" + OPTIONS_KEY_TEXT +
                                         "\\BackendEntryProtection':\r\n    '2l'\r\n    Assuming "
                                         "default: 0"}}));
}

TEST(UQMgmtClassWarningPanel, AValueOfTheWrongTypeFailsTheConstruction) {
    RegistrySandbox sandbox;
    const wchar_t szText[] = L"hold";
    ASSERT_EQ(RegSetKeyValueW(sandbox.machine(), OPTIONS_KEY, L"BackendEntryProtection", REG_SZ, szText,
                              sizeof szText),
              ERROR_SUCCESS);
    // The registry service's own record and error, from the same call made directly.
    std::vector<LogLine> expected;
    std::string sError;
    {
        LogCheck direct;
        try {
            DWORD dwValue = 0;
            UQRegistry::mf_getOrSetValue(
                L"BackendEntryProtection", dwValue,
                UQPath::mf_appendDirectory(UQRegistry::mf_getRegistryRoot(CString()), L"Options"),
                HKEY_LOCAL_MACHINE);
        } catch (const UQErrno& e) {
            sError = utf8(e.mf_toString());
        }
        expected = direct.lines();
    }
    ASSERT_FALSE(sError.empty());
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQMgmtClassWarningPanel panel; }), "_E_::Registry");
    expected.push_back({'E', PANEL,
                        "Failure reading registry key '" + OPTIONS_KEY_TEXT +
                            "\\BackendEntryProtection':\r\n    " + sError + "\r\n    Assuming default: 0"});
    EXPECT_EQ(log.lines(), expected);
}
