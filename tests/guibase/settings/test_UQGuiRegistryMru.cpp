// The most-recently-used list of backup option files: the dynamic entry translated on the way to the GUI
// and back, stored sorted case-blind without exact duplicates, updated by adding and removing ignoring case.
#include "GuiRegistryTestSupport.h"

#include <algorithm>

using namespace settingstest;

namespace {

UQArray<CString>& fill(UQArray<CString>& a, std::initializer_list<std::string> entries) {
    a.RemoveAll();
    for (const std::string& e : entries)
        a.Add(w(e));
    return a;
}

const std::string READ_FAILURE = "Failure reading registry values 'BackupOptionFilesMru':\r\n";
const std::string WRITE_FAILURE = "Failure sorting/writing registry values 'BackupOptionFilesMru':\r\n";

} // namespace

TEST(GuiRegistryCatalogue, Text3144NamesTheDynamicOptionFile) {
    EXPECT_EQ(utf8(UQString(3144).mf_getText()), DYNAMIC_NAME);
}

// ---------------------------------------------------------------------------------------------------------
// Reading

TEST_F(GuiRegistryTest, EmptyRegistryGivesOnlyTheTranslatedDynamicEntry) {
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths), 1);
    EXPECT_EQ(strings(paths), (std::vector<std::string>{TRANSLATED}));
    EXPECT_EQ(m_log.count(), 0u);
    EXPECT_EQ(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER), 0);
}

TEST_F(GuiRegistryTest, StoredPlaceholderIsTranslatedWhereItStands) {
    storeMru({"a.opt", "<B/A client chooses options file>", "b.opt", "<B/A client chooses options file>"});
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths), 1);
    EXPECT_EQ(strings(paths), (std::vector<std::string>{"a.opt", TRANSLATED, "b.opt", TRANSLATED}));
}

TEST_F(GuiRegistryTest, MruWithoutThePlaceholderGetsTheTranslatedEntryAtTheEnd) {
    storeMru({"b.opt", "a.opt", "<b/a client chooses options file>"});
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths), 1);
    EXPECT_EQ(strings(paths),
              (std::vector<std::string>{"b.opt", "a.opt", "<b/a client chooses options file>", TRANSLATED}));
}

TEST_F(GuiRegistryTest, FailingCheckEmptiesTheListAndAnswers0) {
    storeMru({"a.opt"});
    UQRegistryInjection::mf_injectFailure(0, 1);
    UQArray<CString> paths;
    paths.Add(L"stale");
    EXPECT_EQ(UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths), 0);
    EXPECT_EQ(paths.GetSize(), 0);
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_exists", detail},
                                    {'E', "UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU",
                                     READ_FAILURE + TAB + registryError(detail)}}));
}

TEST_F(GuiRegistryTest, MruOfAnotherTypeIsAReadFailure) {
    UQRegistry::mf_setValue(L"BackupOptionFilesMru", L"a.opt", 0, L"", HKEY_CURRENT_USER);
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths), 0);
    EXPECT_EQ(paths.GetSize(), 0);
    const std::string detail =
        "Value 'BackupOptionFilesMru' in 'HKCU\\" + ROOT + "' is a string, not a list of strings";
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_getValues", detail},
                                    {'E', "UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU",
                                     READ_FAILURE + TAB + registryError(detail)}}));
}

// ---------------------------------------------------------------------------------------------------------
// Storing

TEST_F(GuiRegistryTest, StoringSortsIgnoringCaseAndDropsOnlyExactDuplicates) {
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(
                  fill(paths, {"b.opt", "A.opt", "a.opt", "b.opt"})),
              1);
    const std::vector<std::string> stored = mru();
    ASSERT_EQ(stored.size(), 3u);
    // The sort does not fix the order of entries that are equal but for case.
    const std::vector<std::string> firstTwo(stored.begin(), stored.begin() + 2);
    EXPECT_TRUE(firstTwo == (std::vector<std::string>{"A.opt", "a.opt"}) ||
                firstTwo == (std::vector<std::string>{"a.opt", "A.opt"}))
        << stored[0] << ", " << stored[1];
    EXPECT_EQ(stored[2], "b.opt");
    EXPECT_EQ(m_log.count(), 0u);
}

TEST_F(GuiRegistryTest, StoringKeepsEntriesThatDifferOnlyInCase) {
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {"C:\\X.OPT", "c:\\x.opt"})),
              1);
    std::vector<std::string> stored = mru();
    std::sort(stored.begin(), stored.end());
    EXPECT_EQ(stored, (std::vector<std::string>{"C:\\X.OPT", "c:\\x.opt"}));
}

TEST_F(GuiRegistryTest, StoringTheTranslatedEntryWritesThePlaceholder) {
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {"x.opt", TRANSLATED})), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC, "x.opt"}));
}

TEST_F(GuiRegistryTest, EveryEntryHoldingThePlaceholderOrItsNameBecomesOnePlaceholder) {
    UQArray<CString> paths;
    fill(paths, {"my " + DYNAMIC_NAME + ".opt", "x.opt", "[" + DYNAMIC + "]", DYNAMIC, TRANSLATED});
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(paths), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC, "x.opt"}));
}

TEST_F(GuiRegistryTest, NameOfTheDynamicEntryInOtherCaseIsAnOrdinaryPath) {
    UQArray<CString> paths;
    fill(paths, {"option file chosen by the backup client"});
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(paths), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{"option file chosen by the backup client"}));
}

TEST_F(GuiRegistryTest, StoringOneOrNoEntryWritesItAsGiven) {
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {TRANSLATED})), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC}));
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {})), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{}));
    EXPECT_EQ(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER), 1);
}

TEST_F(GuiRegistryTest, FailingWriteIsLoggedUnderItsOwnSpellingAndAnswers0) {
    storeMru({"old.opt"});
    UQRegistryInjection::mf_injectFailure(0, 1);
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {"b.opt", "a.opt"})), 0);
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_setValues", detail},
                                    {'E', "UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU",
                                     WRITE_FAILURE + TAB + registryError(detail)}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"old.opt"}));
}

TEST_F(GuiRegistryTest, FailingSortIsLoggedAndNothingIsWritten) {
    storeMru({"old.opt"});
    UQAllocationInjection::mf_injectFailure(0);
    UQArray<CString> paths;
    EXPECT_EQ(
        UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {"c.opt", "b.opt", "a.opt"})), 0);
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{
                  {'E', "UQArray::mf_sortPointerArray", "No memory for 3 array entries (24 bytes)"},
                  {'E', "UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU",
                   WRITE_FAILURE + TAB + "[E] _E_::Memory: There is not enough memory."}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"old.opt"}));
}

TEST_F(GuiRegistryTest, EmptyPathCannotBeStored) {
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_setTranslatedBackupOptionFilePathMRU(fill(paths, {"b.opt", ""})), 0);
    const std::string detail = "Entry 0 of the list for " + userValue("BackupOptionFilesMru") +
                               " is empty; a list of strings ends at an empty entry";
    EXPECT_EQ(m_log.lines(), (std::vector<LogLine>{
                                 {'E', "UQRegistry::mf_setValues", detail},
                                 {'E', "UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU",
                                  WRITE_FAILURE + TAB + "[E] _E_::Parameter: An argument is not usable. (" +
                                      detail + ")"}}));
}

// ---------------------------------------------------------------------------------------------------------
// Updating

TEST_F(GuiRegistryTest, AddingAPathPresentInOtherCaseAddsNothing) {
    storeMru({"c:\\A.OPT"});
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"C:\\a.opt", 0), 0);
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'C:\\a.opt' exists, not added to MRU"}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"c:\\A.OPT"}));
}

TEST_F(GuiRegistryTest, RemovingIgnoresCase) {
    storeMru({"b.opt", "c:\\A.OPT"});
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"C:\\A.opt", 1), 1);
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'C:\\A.opt' removed from MRU"}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt"}));
}

TEST_F(GuiRegistryTest, RemovingTakesOnlyTheFirstMatch) {
    storeMru({"a.opt", "A.opt"});
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"a.OPT", 1), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{"A.opt"}));
}

TEST_F(GuiRegistryTest, RemovingAnAbsentPathChangesNothing) {
    storeMru({"b.opt"});
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"x.opt", 1), 0);
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path does 'x.opt' not exist, not removed from MRU"}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt"}));
}

TEST_F(GuiRegistryTest, RemovingFromAMissingMruChangesNothing) {
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"x.opt", 1), 0);
    EXPECT_EQ(m_log.lines().size(), 1u);
    EXPECT_EQ(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER), 0);
}

TEST_F(GuiRegistryTest, AddingStoresTheListSorted) {
    storeMru({"b.opt", "C.opt"});
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"A.opt", 0), 1);
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'A.opt' added to MRU"}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"A.opt", "b.opt", "C.opt"}));
}

TEST_F(GuiRegistryTest, AddingToAMissingMruStoresThePathAlone) {
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"x.opt", 0), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{"x.opt"}));
}

TEST_F(GuiRegistryTest, TranslatedEntryIsAddedAndRemovedAsThePlaceholder) {
    storeMru({"x.opt"});
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(w(TRANSLATED), 0), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{DYNAMIC, "x.opt"}));
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(w(DYNAMIC_NAME), 1), 1);
    EXPECT_EQ(mru(), (std::vector<std::string>{"x.opt"}));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path '" + DYNAMIC + "' added to MRU"},
                                    {'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path '" + DYNAMIC + "' removed from MRU"}}));
}

TEST_F(GuiRegistryTest, MruHasNoLengthLimit) {
    for (int i = 99; i >= 0; --i) {
        CString path;
        path.Format(L"D:\\options\\%03d.opt", i);
        ASSERT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(path, 0), 1) << i;
    }
    const std::vector<std::string> stored = mru();
    ASSERT_EQ(stored.size(), 100u);
    EXPECT_EQ(stored.front(), "D:\\options\\000.opt");
    EXPECT_EQ(stored.back(), "D:\\options\\099.opt");
    EXPECT_TRUE(std::is_sorted(stored.begin(), stored.end()));
}

TEST_F(GuiRegistryTest, UpdateThatCannotReadTheMruAnswers0) {
    UQRegistryInjection::mf_injectFailure(0, 1);
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"x.opt", 0), 0);
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_exists", detail},
                                    {'E', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     READ_FAILURE + TAB + registryError(detail)}}));
    EXPECT_EQ(UQRegistry::mf_exists(L"BackupOptionFilesMru", L"", HKEY_CURRENT_USER), 0);
}

TEST_F(GuiRegistryTest, UpdateWhoseWriteFailsStillReportsTheChange) {
    storeMru({"b.opt"});
    UQRegistryInjection::mf_injectFailure(2, 1); // its check and read pass, the write fails
    EXPECT_EQ(UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"a.opt", 0), 1);
    const std::string detail = injected(userValue("BackupOptionFilesMru"));
    EXPECT_EQ(m_log.lines(),
              (std::vector<LogLine>{{'E', "UQRegistry::mf_setValues", detail},
                                    {'E', "UQGuiRegistry::mf_setTranlatedBackupOptionFilePathMRU",
                                     WRITE_FAILURE + TAB + registryError(detail)},
                                    {'G', "UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU",
                                     "Option file path 'a.opt' added to MRU"}}));
    EXPECT_EQ(mru(), (std::vector<std::string>{"b.opt"}));
}

TEST_F(GuiRegistryTest, MruReadBackAfterUpdatesShowsTheTranslatedEntryOnce) {
    UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(w(DYNAMIC), 0);
    UQGuiRegistry::mf_updateTranslatedBackupOptionFilePathMRU(L"z.opt", 0);
    UQArray<CString> paths;
    EXPECT_EQ(UQGuiRegistry::mf_getTranslatedBackupOptionFilePathMRU(paths), 1);
    EXPECT_EQ(strings(paths), (std::vector<std::string>{TRANSLATED, "z.opt"}));
}
