// The management class panel in a real dialog: the combo's entries and the default class, the selection
// by prefix, every kind of class read back from the controls, the hold notes and icons, and a server
// that answers badly (no file, an empty one, malformed lines, a class without "retainInit", a comment it
// will not give, a name longer than a combo entry usually is).
#include "PanelsTestSupport.h"

#include "guibase/panels/UQMgmtClassPanel.h"
#include "guibase/settings/RegistrySandbox.h"
#include "korlang_ids.h"

#include <memory>

using namespace panelstest;
using registrytest::RegistrySandbox;
using toolkittest::iconOf;
using toolkittest::itemText;
using toolkittest::languageIcon;
using toolkittest::sameIcon;

namespace {

const char* const CLASSES =
    "# test classes\n"
    "@default\tSTANDARD\n"
    "STANDARD\tStandard migration\tI\tKept on disk.\tretainVers=30\tretainInit=CREATION\t"
    "retainMin=60\tdestName=MIGPOOL\tverExists=2\n"
    "PROJECTS\tProject shares\tW\tCheck the quota.\tretainVers=90\tretainInit=CREATION\t"
    "retainMin=180\tdestName=MIGPOOL\n"
    "PROJ\tShort projects\tI\t-\tretainVers=10\tretainInit=CREATION\tretainMin=20\tdestName=MIGPOOL\n"
    "ARCHIVE10Y\tContracts\tW\tEvent based.\tretainVers=3650\tretainInit=EVENT\tretainMin=365\t"
    "destName=TAPEPOOL\n"
    "SCRATCH\tScratch data\tI\tSeven days.\tretainVers=7\tretainInit=CREATE\tretainMin=0\t"
    "destName=DISKPOOL\n"
    "FOREVER\tResearch data\tW\tNo limit.\tretainVers=9999 (NOLIMIT)\tretainInit=CREATION\t"
    "retainMin=9999 (NOLIMIT)\tdestName=TAPEPOOL\n"
    "LEGALHOLD\tLitigation\tW\tPersonal data.\tretainVers=9999 (NOLIMIT)\tretainInit=EVENT\t"
    "retainMin=3650\tdestName=WORMPOOL\n"
    "BRANCHDOCS\tBranch offices\t!\t-\tretainVers=60\tretainInit=CREATION\tretainMin=120\t"
    "destName=MIGPOOL\n";

const std::string HOLD_NOTE =
    "Backend entries are protected by holds: files of this class stay on the server until "
    "their hold is released, whatever their retention says.";
const std::string DEFAULT_TEXT = "DEFAULT <default class of the server>";

struct Shown {
    std::string sDescription, sVers, sInit, sMin, sDest, sHeading, sMessage;
};

class UQMgmtClassPanelTest : public ::testing::Test {
protected:
    void open(const std::string& _sClasses, DWORD _dwProtection = 0) {
        const DWORD dwValue = _dwProtection;
        ASSERT_EQ(RegSetKeyValueW(m_sandbox.machine(),
                                  L"SOFTWARE\\Corvex\\Stormex\\CurrentVersion\\HSMClient\\Options",
                                  L"BackendEntryProtection", REG_DWORD, &dwValue, sizeof dwValue),
                  ERROR_SUCCESS);
        m_pFile.reset(new ScratchFile("classes.txt", _sClasses));
        m_pUse.reset(new UseClassFile(m_pFile->mf_getPath()));
        m_pPanel.reset(new UQMgmtClassPanel());
    }

    HWND dlg() const { return m_dialog.hwnd(); }
    HWND combo() const { return GetDlgItem(m_dialog.hwnd(), IDC_MGMT_CLASS_COMBO); }
    std::string file() const { return utf8(m_pFile->mf_getPath()); }

    Shown shown() const {
        return {itemText(dlg(), IDC_MGMT_DESCRIPTION), itemText(dlg(), IDC_MGMT_RETAIN_VERS),
                itemText(dlg(), IDC_MGMT_RETAIN_INIT), itemText(dlg(), IDC_MGMT_RETAIN_MIN),
                itemText(dlg(), IDC_MGMT_DEST_NAME),   itemText(dlg(), IDC_MESSAGE_HEADING),
                itemText(dlg(), IDC_MESSAGE_TEXT)};
    }

    bool iconIs(WORD _wIcon) const {
        return sameIcon(iconOf(dlg(), IDC_MESSAGE_ICON), languageIcon(_wIcon, 16));
    }

    RegistrySandbox m_sandbox;
    MgmtClassDialog m_dialog;
    std::unique_ptr<ScratchFile> m_pFile;
    std::unique_ptr<UseClassFile> m_pUse;
    std::unique_ptr<UQMgmtClassPanel> m_pPanel;
};

} // namespace

TEST_F(UQMgmtClassPanelTest, DefaultSelectsTheDefaultEntryAndIsReadBackAsDefault) {
    open(CLASSES);
    LogCheck log;
    EXPECT_EQ(m_pPanel->mf_onInitDialog(dlg(), L"DEFAULT"), 1);
    EXPECT_EQ(comboTexts(combo()),
              (std::vector<std::string>{"STANDARD", "PROJECTS", "PROJ", "ARCHIVE10Y", "SCRATCH", "FOREVER",
                                        "LEGALHOLD", "BRANCHDOCS", DEFAULT_TEXT}));
    EXPECT_EQ(SendMessageW(combo(), CB_GETCURSEL, 0, 0), 8);
    EXPECT_EQ(m_pPanel->mf_getMgmtClassName(dlg()), L"DEFAULT");
    const Shown s = shown();
    EXPECT_EQ(s.sDescription, "Standard migration");
    EXPECT_EQ(s.sVers, "30 days");
    EXPECT_EQ(s.sInit, "CREATION");
    EXPECT_EQ(s.sMin, "60 days");
    EXPECT_EQ(s.sDest, "MIGPOOL");
    EXPECT_EQ(s.sHeading, "Comment of the management class");
    EXPECT_EQ(s.sMessage, "Kept on disk.");
    EXPECT_TRUE(iconIs(IDI_SEVERITY_GREEN));
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_CLASS_LABEL), "&Management class:");
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_RETAIN_VERS_LABEL), "Keep extra versions:");
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_RETAIN_INIT_LABEL), "Retention starts at:");
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_RETAIN_MIN_LABEL), "Keep at least:");
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_DEST_NAME_LABEL), "Storage pool:");
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_RETENTION_GROUP), "Retention");
    EXPECT_EQ(itemText(dlg(), IDC_MGMT_DESCRIPTION_LABEL), "Description:");
    EXPECT_EQ(m_pPanel->mf_hasMgmtClassName(L"DEFAULT"), 1);
    EXPECT_EQ(m_pPanel->mf_hasMgmtClassName(L"standard"), 0);
    // The dialog has no item 30144: the optional label is left out without a record.
    EXPECT_EQ(log.lines(), std::vector<LogLine>());
}

TEST_F(UQMgmtClassPanelTest, APrefixSelectsTheFirstEntryBeginningWithItWhateverTheCase) {
    open(CLASSES);
    m_pPanel->mf_onInitDialog(dlg(), L"proj");
    EXPECT_EQ(m_pPanel->mf_getMgmtClassName(dlg()), L"PROJECTS");
    EXPECT_EQ(shown().sVers, "90 days");
    EXPECT_TRUE(iconIs(IDI_SEVERITY_YELLOW));
    m_pPanel->mf_setMgmtClassName(dlg(), L"PROJ");
    EXPECT_EQ(m_pPanel->mf_getMgmtClassName(dlg()), L"PROJECTS");
}

TEST_F(UQMgmtClassPanelTest, EveryKindOfClassIsReadBackFromTheControls) {
    open(CLASSES);
    m_pPanel->mf_onInitDialog(dlg(), L"STANDARD");
    struct Case {
        const wchar_t* pszName;
        Shown expected;
        WORD wIcon;
    };
    const Case cases[] = {
        {L"ARCHIVE10Y",
         {"Contracts", "3650 days", "EVENT", "365 days", "TAPEPOOL", "Comment of the management class",
          "Event based."},
         IDI_SEVERITY_YELLOW},
        {L"SCRATCH",
         {"Scratch data", "7 days", "CREATE", "-", "DISKPOOL", "Comment of the management class",
          "Seven days."},
         IDI_SEVERITY_GREEN},
        {L"FOREVER",
         {"Research data", "9999 (NOLIMIT) days", "CREATION", "9999 (NOLIMIT) days", "TAPEPOOL",
          "Comment of the management class", "No limit."},
         IDI_SEVERITY_YELLOW},
        {L"PROJ",
         {"Short projects", "10 days", "CREATION", "20 days", "MIGPOOL", "Comment of the management class",
          ""},
         IDI_SEVERITY_GREEN},
    };
    for (const Case& c : cases) {
        // As the user picks it: the combo's selection, then the application's update.
        const LRESULT nIndex = SendMessageW(combo(), CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                                            reinterpret_cast<LPARAM>(c.pszName));
        SendMessageW(combo(), CB_SETCURSEL, static_cast<WPARAM>(nIndex), 0);
        m_pPanel->mf_onUpdateDialog(dlg());
        const Shown s = shown();
        EXPECT_EQ(s.sDescription, c.expected.sDescription) << utf8(c.pszName);
        EXPECT_EQ(s.sVers, c.expected.sVers) << utf8(c.pszName);
        EXPECT_EQ(s.sInit, c.expected.sInit) << utf8(c.pszName);
        EXPECT_EQ(s.sMin, c.expected.sMin) << utf8(c.pszName);
        EXPECT_EQ(s.sDest, c.expected.sDest) << utf8(c.pszName);
        EXPECT_EQ(s.sHeading, c.expected.sHeading) << utf8(c.pszName);
        EXPECT_EQ(s.sMessage, c.expected.sMessage) << utf8(c.pszName);
        EXPECT_TRUE(iconIs(c.wIcon)) << utf8(c.pszName);
        EXPECT_EQ(m_pPanel->mf_getMgmtClassName(dlg()), CString(c.pszName));
    }
    // Asked by name, a prefix of another class's name finds that class first.
    m_pPanel->mf_setMgmtClassName(dlg(), L"PROJ");
    EXPECT_EQ(m_pPanel->mf_getMgmtClassName(dlg()), L"PROJECTS");
    {}
}

TEST_F(UQMgmtClassPanelTest, UnderHoldAnEventClassAlwaysGetsTheNoteAndTheInformationIcon) {
    open(CLASSES, 1);
    m_pPanel->mf_onInitDialog(dlg(), L"LEGALHOLD");
    EXPECT_EQ(shown().sMessage, "Personal data.\r\n" + HOLD_NOTE);
    EXPECT_TRUE(iconIs(IDI_SEVERITY_GREEN));
    m_pPanel->mf_setMgmtClassName(dlg(), L"ARCHIVE10Y");
    EXPECT_EQ(shown().sMessage, "Event based.\r\n" + HOLD_NOTE);
    EXPECT_TRUE(iconIs(IDI_SEVERITY_GREEN));
}

TEST_F(UQMgmtClassPanelTest, UnderHoldAClassWithoutLimitKeepsItsCommentAndSeverity) {
    open(CLASSES, 1);
    m_pPanel->mf_onInitDialog(dlg(), L"FOREVER");
    EXPECT_EQ(shown().sMessage, "No limit.");
    EXPECT_TRUE(iconIs(IDI_SEVERITY_YELLOW));
    // A limited one gets the note.
    m_pPanel->mf_setMgmtClassName(dlg(), L"PROJECTS");
    EXPECT_EQ(shown().sMessage, "Check the quota.\r\n" + HOLD_NOTE);
    EXPECT_TRUE(iconIs(IDI_SEVERITY_GREEN));
}

TEST_F(UQMgmtClassPanelTest, ANameNotInTheListIsLoggedAndLeavesNoSelection) {
    open(CLASSES);
    LogCheck log;
    m_pPanel->mf_onInitDialog(dlg(), L"NOSUCH");
    EXPECT_EQ(SendMessageW(combo(), CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(shown().sVers, "");
    EXPECT_EQ(shown().sMessage, "");
    EXPECT_TRUE(iconIs(IDI_SEVERITY_RED));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'W', "UQComboBox::mf_selectItem::2", "Item 'NOSUCH' not found in combobox list"},
                  {'G', "UQComboBox::mf_getSelection", "No combobox item selected"}}));
}

TEST_F(UQMgmtClassPanelTest, AnEntryWithoutClassDataShowsTheTailOfTheDefaultText) {
    open(CLASSES);
    m_pPanel->mf_onInitDialog(dlg(), L"STANDARD");
    const LRESULT nIndex = SendMessageW(combo(), CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(L"<no data>"));
    SendMessageW(combo(), CB_SETCURSEL, static_cast<WPARAM>(nIndex), 0);
    m_pPanel->mf_onUpdateDialog(dlg());
    const Shown s = shown();
    EXPECT_EQ(s.sDescription, "The default management class of the storage server");
    EXPECT_EQ(s.sVers, "(not reported)");
    EXPECT_EQ(s.sInit, "(not reported)");
    EXPECT_EQ(s.sMin, "(not reported)");
    EXPECT_EQ(s.sDest, "(not reported)");
    EXPECT_TRUE(iconIs(IDI_SEVERITY_RED));
}

TEST_F(UQMgmtClassPanelTest, AMissingClassFileLeavesTheComboEmptyAndThePanelUsable) {
    open(CLASSES);
    const CString sMissing = m_pFile->mf_getPath() + L".missing";
    UQArchiverMain::mf_setMgmtClassFile(sMissing);
    LogCheck log;
    EXPECT_EQ(m_pPanel->mf_onInitDialog(dlg(), L"DEFAULT"), 1);
    EXPECT_EQ(comboTexts(combo()), std::vector<std::string>());
    EXPECT_EQ(m_pPanel->mf_hasMgmtClassName(L"DEFAULT"), 0);
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQMgmtClassFile::mf_read",
                                 "Failure opening management class file '" + utf8(sMissing) + "'"}));
    EXPECT_EQ(lines[1].function, "UQMgmtClassPanel::mf_onInitDialog");
    EXPECT_EQ(lines[1].text.rfind("Failure querying management classes:\r\n    [E] _E_::File: ", 0), 0u)
        << lines[1].text;
    EXPECT_NE(lines[1].text.find(utf8(sMissing) + ": cannot open: No such file or directory (errno 2)"),
              std::string::npos)
        << lines[1].text;
    EXPECT_EQ(lines[1].text.substr(lines[1].text.size() - 20), "\r\n    Continuing ...");
    EXPECT_EQ(lines[2], (LogLine{'W', "UQComboBox::mf_selectItem::2",
                                 "Item '" + DEFAULT_TEXT + "' not found in combobox list"}));
    EXPECT_EQ(lines[3], (LogLine{'G', "UQComboBox::mf_getSelection", "No combobox item selected"}));
}

TEST_F(UQMgmtClassPanelTest, AnEmptyClassFileHasNoDefaultClass) {
    open("");
    LogCheck log;
    m_pPanel->mf_onInitDialog(dlg(), L"DEFAULT");
    EXPECT_EQ(comboTexts(combo()), std::vector<std::string>());
    const std::vector<LogLine> lines = log.lines();
    ASSERT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQArchiverMain::mf_getMgmtClass",
                                 "The server has no default management class"}));
    EXPECT_EQ(lines[1], (LogLine{'E', "UQMgmtClassPanel::mf_onInitDialog",
                                 "Failure querying management classes:\r\n    " +
                                     toolkittest::errorText(UQErrno::_E_::ItemNotFound, 0) +
                                     "\r\n    Continuing ..."}));
}

TEST_F(UQMgmtClassPanelTest, MalformedLinesAreReportedWithFileAndLineAndSkipped) {
    open(std::string(CLASSES) + "BROKEN\tonly two fields\n" + "BAD\tx\tQ\t-\tretainVers=1\n");
    LogCheck log;
    m_pPanel->mf_onInitDialog(dlg(), L"STANDARD");
    EXPECT_EQ(comboTexts(combo()).size(), 9u);
    const std::string sBroken = "Management class line skipped: " + file() +
                                ":11: expected name, description, comment severity, comment and at least one "
                                "attribute, found 2 fields";
    const std::string sBad =
        "Management class line skipped: " + file() + ":12: bad comment severity 'Q' (I, W, E or !)";
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQArchiverMain::mf_getMgmtClasses", sBroken},
                                                 {'W', "UQArchiverMain::mf_getMgmtClasses", sBad},
                                                 {'W', "UQArchiverMain::mf_getMgmtClass", sBroken},
                                                 {'W', "UQArchiverMain::mf_getMgmtClass", sBad}}));
}

TEST_F(UQMgmtClassPanelTest, AClassWithoutRetainInitFailsTheUpdate) {
    open(std::string(CLASSES) + "NOINIT\tNo start\tI\t-\tretainVers=5\tretainMin=5\tdestName=MIGPOOL\n");
    m_pPanel->mf_onInitDialog(dlg(), L"STANDARD");
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { m_pPanel->mf_setMgmtClassName(dlg(), L"NOINIT"); }), "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQAttributeList::mf_getAttributeValue",
                                                  "Attribute key='retainInit' not found"}}));
    // The controls keep what the previous class showed.
    EXPECT_EQ(shown().sDescription, "Standard migration");
}

TEST_F(UQMgmtClassPanelTest, ACommentTheServerWillNotGiveShowsAnErrorWithoutText) {
    open(CLASSES);
    m_pPanel->mf_onInitDialog(dlg(), L"STANDARD");
    LogCheck log;
    m_pPanel->mf_setMgmtClassName(dlg(), L"BRANCHDOCS");
    EXPECT_EQ(shown().sVers, "60 days");
    EXPECT_EQ(shown().sMessage, "");
    EXPECT_TRUE(iconIs(IDI_SEVERITY_RED));
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQQueryMgmtClassData::mf_queryUserComment",
                                 "Failure querying comment of management class 'BRANCHDOCS'"}));
    EXPECT_EQ(lines[1].function, "UQMgmtClassPanel::mf_onUpdateDialog");
    EXPECT_EQ(
        lines[1].text.rfind(
            "Failure querying user comment for management class 'BRANCHDOCS':\r\n    [E] _E_::Resource", 0),
        0u)
        << lines[1].text;
}

TEST_F(UQMgmtClassPanelTest, ANameLongerThanAComboEntryUsuallyIsIsKeptWhole) {
    const std::string sLong(300, 'L');
    open(std::string(CLASSES) + sLong +
         "\tLong\tI\t-\tretainVers=1\tretainInit=CREATION\tretainMin=2\tdestName=P\n");
    m_pPanel->mf_onInitDialog(dlg(), CString::FromUtf8(sLong));
    EXPECT_EQ(utf8(m_pPanel->mf_getMgmtClassName(dlg())), sLong);
    EXPECT_EQ(shown().sDescription, "Long");
    EXPECT_EQ(m_pPanel->mf_hasMgmtClassName(CString::FromUtf8(sLong)), 1);
}

TEST_F(UQMgmtClassPanelTest, ASecondInitialisationQueriesTheClassesAfresh) {
    open(CLASSES);
    m_pPanel->mf_onInitDialog(dlg(), L"STANDARD");
    EXPECT_EQ(m_pPanel->mf_hasMgmtClassName(L"PROJ"), 1);
    MgmtClassDialog second;
    ScratchFile other(
        "other.txt",
        "@default\tONLY\nONLY\tOnly\tI\t-\tretainVers=1\tretainInit=CREATION\tretainMin=2\tdestName=P\n");
    UQArchiverMain::mf_setMgmtClassFile(other.mf_getPath());
    m_pPanel->mf_onInitDialog(second.hwnd(), L"DEFAULT");
    EXPECT_EQ(comboTexts(GetDlgItem(second.hwnd(), IDC_MGMT_CLASS_COMBO)),
              (std::vector<std::string>{"ONLY", DEFAULT_TEXT}));
    EXPECT_EQ(m_pPanel->mf_hasMgmtClassName(L"PROJ"), 0);
}
