// Migration on real files: every file ends either migrated (a stub that names a stored version that
// verifies) or untouched, whatever interrupts or fails on the way.
#include "ClientTestSupport.h"
#include "UQMigration.h"
#include "UQRetrieval.h"
#include "UQServerDirectory.h"
#include "UQSha256.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

using namespace clienttest;

class MigrationTest : public ::testing::Test {
protected:
    MigrationTest()
        : scratch(L"migration"), sFiles(scratch.path() + L"\\files"), sServer(scratch.path() + L"\\server"),
          server(sServer) {}
    ~MigrationTest() override {
        UQMigration::mf_setStepHook(nullptr);
        UQSafeFile::mf_injectWriteFailure(0, 0);
    }

    // Writes the files (relative path -> content) into the source folder.
    void makeFiles(const std::map<std::wstring, std::string>& _files) {
        originals = _files;
        for (const auto& file : _files)
            ASSERT_TRUE(writeFile(sFiles + L"\\" + file.first, file.second)) << utf8(file.first);
    }

    int migrate(const UQCancelSwitch* _pCancel = nullptr, const UQMigration::Progress& _progress = nullptr) {
        UQMigration migration(server, sFiles);
        outcomes.clear();
        reason.clear();
        return migration.mf_run(_pCancel, _progress, outcomes, reason);
    }

    // Whether _sRelative is a stub whose stored version verifies against the original content.
    bool isVerifiedStub(const std::wstring& _sRelative) {
        UQVersionRecord stub;
        UQVersionRecord header;
        UQFileHandle version;
        std::wstring sWhy;
        const std::string& sOriginal = originals[_sRelative];
        if (!UQRetrieval::mf_readStub(sFiles + L"\\" + _sRelative, stub, sWhy) ||
            !server.mf_openVersion(stub.m_uVolume, stub.m_uPosition, stub.m_sObjectPath, stub.m_uVersion,
                                   &stub, version, header, sWhy))
            return false;
        std::string sContent;
        return UQSafeFile::mf_readStart(version.mf_get(), sOriginal.size() + 1, sContent) == 0 &&
               sContent == sOriginal &&
               stub.m_sSha256 == UQSha256::mf_hashHex(sOriginal.data(), sOriginal.size());
    }

    int historyRecords() {
        UQServerDirectory::State state;
        std::wstring sWhy;
        EXPECT_EQ(server.mf_readState(state, sWhy), 1) << utf8(sWhy);
        return static_cast<int>(state.uRecords);
    }

    // Files of the server's versions folder, temporary ones included.
    std::vector<std::wstring> storedFiles() { return filesBelow(sServer + L"\\versions"); }

    ScratchFolder scratch;
    std::wstring sFiles;
    std::wstring sServer;
    UQServerDirectory server;
    std::map<std::wstring, std::string> originals;
    std::vector<UQFileOutcome> outcomes;
    std::wstring reason;
};

TEST_F(MigrationTest, EveryFileBecomesAStubThatNamesItsVerifiedVersion) {
    makeFiles({{L"a.txt", contentOf(1, 1000)}, {L"sub\\b.bin", contentOf(2, 300000)}, {L"empty.txt", ""}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 3u);
    for (const UQFileOutcome& outcome : outcomes) {
        EXPECT_EQ(outcome.eSeverity, UQFileOutcome::GREEN) << utf8(outcome.sPath);
        EXPECT_EQ(utf8(outcome.sResult), "Migrated");
        EXPECT_EQ(outcome.uVersion, 1u);
    }
    for (const auto& file : originals)
        EXPECT_TRUE(isVerifiedStub(file.first)) << utf8(file.first);
    EXPECT_EQ(historyRecords(), 3);
    EXPECT_EQ(storedFiles(), (std::vector<std::wstring>{L"1\\0\\1.ver", L"1\\0\\2.ver", L"1\\0\\3.ver"}));
}

TEST_F(MigrationTest, PathOfMoreThan300CharactersIsMigratedAndRecalled) {
    std::wstring sDeep;
    while (sDeep.size() < 300)
        sDeep += L"a folder with a long name\\";
    sDeep += L"file.txt";
    ASSERT_GT((sFiles + L"\\" + sDeep).size(), 300u);
    makeFiles({{sDeep, contentOf(3, 5000)}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::GREEN) << utf8(outcomes[0].sResult);
    EXPECT_TRUE(isVerifiedStub(sDeep));
    const UQFileOutcome recalled = UQRetrieval(server).mf_recall(sFiles + L"\\" + sDeep);
    EXPECT_EQ(utf8(recalled.sResult), "Recalled");
    EXPECT_EQ(readFile(sFiles + L"\\" + sDeep), originals[sDeep]);
}

TEST_F(MigrationTest, NonLatinNamesAreMigratedAndRecalled) {
    const std::wstring sName =
        L"\u00DCbersicht\\\u041E\u0442\u0447\u0451\u0442\u044B\\\u5831\u544A \u2013 \u03A3.txt";
    makeFiles({{sName, contentOf(4, 777)}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(utf8(outcomes[0].sPath), utf8(sFiles + L"\\" + sName));
    EXPECT_TRUE(isVerifiedStub(sName));
    EXPECT_EQ(utf8(UQRetrieval(server).mf_recall(sFiles + L"\\" + sName).sResult), "Recalled");
    EXPECT_EQ(readFile(sFiles + L"\\" + sName), originals[sName]);
}

TEST_F(MigrationTest, CancelMidwayLeavesEachFileMigratedWithItsStubOrUntouched) {
    const int FILES = 20;
    std::map<std::wstring, std::string> files;
    for (int i = 0; i < FILES; ++i)
        files[L"file" + std::to_wstring(i) + L".bin"] = contentOf(10 + i, 20000);
    makeFiles(files);
    UQCancelSwitch cancel;
    LogCheck log;
    ASSERT_EQ(migrate(&cancel,
                      [&](int _nDone, int, const std::wstring&) {
                          if (_nDone == 4)
                              cancel.mf_implTryCancel();
                      }),
              1)
        << utf8(reason);
    // The files already stored when Cancel came get their stubs too, at most the queue's depth of them
    // beside the one at hand.
    const std::size_t nStarted = outcomes.size();
    ASSERT_GE(nStarted, 4u);
    EXPECT_LE(nStarted, 4u + UQFinishQueue::DEPTH + 1);
    for (const UQFileOutcome& outcome : outcomes)
        EXPECT_EQ(utf8(outcome.sResult), "Migrated") << utf8(outcome.sPath);
    int nStubs = 0;
    int nUntouched = 0;
    for (const auto& file : originals) {
        if (isVerifiedStub(file.first))
            ++nStubs;
        else if (readFile(sFiles + L"\\" + file.first) == file.second)
            ++nUntouched;
        else
            ADD_FAILURE() << utf8(file.first) << " is neither a verified stub nor untouched";
    }
    EXPECT_EQ(nStubs, static_cast<int>(nStarted));
    EXPECT_EQ(nUntouched, FILES - static_cast<int>(nStarted));
    EXPECT_EQ(historyRecords(), static_cast<int>(nStarted));
    EXPECT_EQ(storedFiles().size(), nStarted);
    // No temporary file is left anywhere.
    for (const std::wstring& sFile : filesBelow(scratch.path()))
        EXPECT_EQ(sFile.find(L".kortmp-"), std::wstring::npos) << utf8(sFile);
    const std::vector<LogLine> lines = log.lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        LogLine{'W', "UQMigration::mf_run",
                                "Migration canceled after " + std::to_string(nStarted) + " of 20 files"}),
              lines.end());
}

TEST_F(MigrationTest, FullDiskOnTheServerFailsTheFileWithAClearResultAndKeepsIt) {
    makeFiles({{L"a.bin", contentOf(5, 100000)}, {L"b.bin", contentOf(6, 100)}});
    // The server's disk fills while the first file's content is written; the failure happens once.
    UQSafeFile::mf_injectWriteFailure(5000, ERROR_DISK_FULL);
    LogCheck log;
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    const UQFileOutcome failed = outcomeOf(outcomes, sFiles + L"\\a.bin");
    EXPECT_EQ(failed.eSeverity, UQFileOutcome::RED);
    const std::string sExpected = "Not migrated (the file is kept): cannot write to the server: " +
                                  utf8(UQSafeFile::mf_systemText(ERROR_DISK_FULL));
    EXPECT_EQ(utf8(failed.sResult), sExpected);
    EXPECT_NE(utf8(failed.sResult).find("(error 112)"), std::string::npos);
    EXPECT_EQ(readFile(sFiles + L"\\a.bin"), originals[L"a.bin"]);
    // The next file goes on; nothing of the failed one stays on the server.
    EXPECT_TRUE(isVerifiedStub(L"b.bin"));
    EXPECT_EQ(storedFiles(), (std::vector<std::wstring>{L"1\\0\\2.ver"}));
    EXPECT_EQ(historyRecords(), 1);
    const std::vector<LogLine> lines = log.lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(),
                        LogLine{'W', "UQMigration::mf_run", utf8(sFiles + L"\\a.bin: ") + sExpected}),
              lines.end());
}

TEST_F(MigrationTest, FullDiskWhileTheHistoryRecordIsAddedRemovesTheStoredVersionAndKeepsTheFile) {
    const std::string sContent = contentOf(7, 3000);
    makeFiles({{L"a.bin", sContent}});
    // The stored version is written as header, content and the header again with its hash; the failure
    // hits the next write, the history record.
    UQVersionRecord record;
    record.m_sObjectPath = sFiles + L"\\a.bin";
    record.m_sName = L"a.bin";
    record.m_uVersion = 1;
    record.m_uSize = sContent.size();
    record.m_sSha256.assign(64, '0');
    const std::size_t nHeader = record.mf_formatHeader().size();
    // The new server's empty history store is written first, before the count begins.
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    UQSafeFile::mf_injectWriteFailure(2 * nHeader + sContent.size() + 1, ERROR_DISK_FULL);
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::RED);
    EXPECT_NE(
        utf8(outcomes[0].sResult).find("Not migrated (the file is kept): cannot add to the history store"),
        std::string::npos)
        << utf8(outcomes[0].sResult);
    EXPECT_EQ(readFile(sFiles + L"\\a.bin"), sContent);
    EXPECT_TRUE(storedFiles().empty());
    EXPECT_EQ(historyRecords(), 0);
}

TEST_F(MigrationTest, FileChangedWhileItIsStoredKeepsItsContentAndItsStoredVersion) {
    const std::string sContent = contentOf(8, 4000);
    makeFiles({{L"busy.txt", sContent}});
    // The migration holds the file against writers; its time can still be set, and that is a change.
    UQMigration::mf_setStepHook([&](int _nStep) {
        if (_nStep != 2)
            return;
        const UQFileHandle file(CreateFileW(UQSafeFile::mf_long(sFiles + L"\\busy.txt").c_str(),
                                            FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            nullptr, OPEN_EXISTING, 0, nullptr));
        ASSERT_TRUE(file.mf_isValid()) << GetLastError();
        const FILETIME later{0x12345678u, 0x01D00000u};
        ASSERT_TRUE(SetFileTime(file.mf_get(), nullptr, nullptr, &later)) << GetLastError();
    });
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(outcomes[0].sResult),
              "Stored, but the file changed meanwhile: it is kept and not replaced by a stub");
    EXPECT_EQ(readFile(sFiles + L"\\busy.txt"), sContent);
    EXPECT_EQ(historyRecords(), 1);
    EXPECT_EQ(storedFiles(), (std::vector<std::wstring>{L"1\\0\\1.ver"}));
}

TEST_F(MigrationTest, ReadOnlyFileIsSkippedWithAResultAndKept) {
    makeFiles({{L"locked.txt", "keep me"}, {L"free.txt", "move me"}});
    ASSERT_TRUE(
        SetFileAttributesW(UQSafeFile::mf_long(sFiles + L"\\locked.txt").c_str(), FILE_ATTRIBUTE_READONLY));
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    const UQFileOutcome skipped = outcomeOf(outcomes, sFiles + L"\\locked.txt");
    EXPECT_EQ(skipped.eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(skipped.sResult), "Skipped: the file is read-only and cannot be replaced by a stub");
    EXPECT_EQ(readFile(sFiles + L"\\locked.txt"), "keep me");
    EXPECT_TRUE(isVerifiedStub(L"free.txt"));
    EXPECT_EQ(historyRecords(), 1);
    SetFileAttributesW(UQSafeFile::mf_long(sFiles + L"\\locked.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(MigrationTest, FileThatVanishesBeforeItsTurnIsReportedAndTheOthersGoOn) {
    makeFiles({{L"1.txt", "one"}, {L"2.txt", "two"}, {L"3.txt", "three"}});
    // The first file's version is stored before the next file is opened.
    bool bDeleted = false;
    UQMigration::mf_setStepHook([&](int _nStep) {
        if (_nStep == 1 && !bDeleted)
            bDeleted = DeleteFileW(UQSafeFile::mf_long(sFiles + L"\\2.txt").c_str()) != FALSE;
    });
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_TRUE(bDeleted);
    const UQFileOutcome vanished = outcomeOf(outcomes, sFiles + L"\\2.txt");
    EXPECT_EQ(vanished.eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(vanished.sResult), "Skipped: the file vanished before it was migrated");
    EXPECT_TRUE(isVerifiedStub(L"1.txt"));
    EXPECT_TRUE(isVerifiedStub(L"3.txt"));
    EXPECT_EQ(historyRecords(), 2);
}

TEST_F(MigrationTest, FolderThatDoesNotExistIsRefusedWithItsName) {
    LogCheck log;
    EXPECT_EQ(migrate(), 0);
    EXPECT_EQ(utf8(reason), "The folder '" + utf8(sFiles) + "' cannot be migrated: " +
                                utf8(UQSafeFile::mf_systemText(ERROR_FILE_NOT_FOUND)));
    EXPECT_TRUE(outcomes.empty());
    const std::vector<LogLine> lines = log.lines();
    EXPECT_NE(std::find(lines.begin(), lines.end(), LogLine{'E', "UQMigration::mf_run", utf8(reason)}),
              lines.end());
}

TEST_F(MigrationTest, FileIsNoFolderToMigrate) {
    makeFiles({{L"a.txt", "a"}});
    UQMigration migration(server, sFiles + L"\\a.txt");
    EXPECT_EQ(migration.mf_run(nullptr, nullptr, outcomes, reason), 0);
    EXPECT_EQ(utf8(reason), "The folder '" + utf8(sFiles) + "\\a.txt' cannot be migrated: it is no folder");
    EXPECT_EQ(readFile(sFiles + L"\\a.txt"), "a");
}

TEST_F(MigrationTest, StubIsNotMigratedAgain) {
    makeFiles({{L"a.txt", contentOf(8, 100)}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    const std::string sStub = readFile(sFiles + L"\\a.txt");
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Skipped: the file is a stub already");
    EXPECT_EQ(readFile(sFiles + L"\\a.txt"), sStub);
    EXPECT_EQ(historyRecords(), 1);
}

TEST_F(MigrationTest, FileMigratedAgainAfterRecallBecomesTheNextVersion) {
    makeFiles({{L"a.txt", "first"}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(utf8(UQRetrieval(server).mf_recall(sFiles + L"\\a.txt").sResult), "Recalled");
    ASSERT_TRUE(writeFile(sFiles + L"\\a.txt", "second"));
    originals[L"a.txt"] = "second";
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].uVersion, 2u);
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    EXPECT_EQ(historyRecords(), 2);
}

TEST_F(MigrationTest, VersionLeftByAnInterruptedMigrationDoesNotBlockTheNextRun) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    // Stored, never recorded: what a migration killed right after storing leaves.
    const std::string sOrphan = "KORDATA 1\n...";
    ASSERT_TRUE(writeFile(server.mf_getVersionFile(UQServerDirectory::VOLUME, 1), sOrphan));
    makeFiles({{L"a.txt", "a"}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Migrated");
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    EXPECT_EQ(storedFiles(), (std::vector<std::wstring>{L"1\\0\\1.ver", L"1\\0\\2.ver"}));
    EXPECT_EQ(readFile(server.mf_getVersionFile(UQServerDirectory::VOLUME, 1)), sOrphan);
}

TEST_F(MigrationTest, VersionsAreKeptInFoldersOfAHundredPositions) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    // The last position of folder 1 is taken; the next versions begin folder 2.
    ASSERT_TRUE(writeFile(server.mf_getVersionFile(UQServerDirectory::VOLUME, 199), "KORDATA 1\n..."));
    makeFiles({{L"a.txt", "a"}, {L"b.txt", "b"}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    EXPECT_TRUE(isVerifiedStub(L"b.txt"));
    EXPECT_EQ(storedFiles(),
              (std::vector<std::wstring>{L"1\\1\\199.ver", L"1\\2\\200.ver", L"1\\2\\201.ver"}));
}

TEST_F(MigrationTest, FileThatTakesAVersionsPlaceMeanwhileIsKeptAndItsFileIsNotMigrated) {
    makeFiles({{L"1.txt", "one"}, {L"2.txt", "two"}});
    // Something else writes where the second version goes once the first is stored.
    const std::wstring sSecond = server.mf_getVersionFile(UQServerDirectory::VOLUME, 2);
    bool bPlanted = false;
    UQMigration::mf_setStepHook([&](int _nStep) {
        if (_nStep == 1 && !bPlanted)
            bPlanted = writeFile(sSecond, "not a version");
    });
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_TRUE(bPlanted);
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::GREEN) << utf8(outcomes[0].sResult);
    EXPECT_EQ(outcomes[1].eSeverity, UQFileOutcome::RED);
    EXPECT_EQ(utf8(outcomes[1].sResult), "Not migrated (the file is kept): cannot store the version as '" +
                                             utf8(sSecond) +
                                             "': " + utf8(UQSafeFile::mf_systemText(ERROR_FILE_EXISTS)));
    const std::wstring sKept = outcomes[1].sPath;
    EXPECT_EQ(readFile(sKept), originals[sKept.substr(sFiles.size() + 1)]);
    EXPECT_EQ(readFile(sSecond), "not a version");
    EXPECT_EQ(historyRecords(), 1);
}

TEST_F(MigrationTest, RecordWhosePathTheStoreCannotHoldIsRefusedWithTheReasonAndNothingIsWritten) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    const std::string sBefore = readFile(server.mf_getHistoryFile());
    UQServerDirectory::HistoryAppender history;
    ASSERT_EQ(server.mf_openHistory(history, sWhy), 1) << utf8(sWhy);
    const UQQueryData record(CString(L"C:\\data\\bell\x0007.txt"), CString(), 1, UQFileTime(0), UQFileSize(5),
                             0, UQExpiryTime{0}, UQQueryData::AccessKey{UQServerDirectory::VOLUME, 1});
    LogCheck log;
    EXPECT_EQ(server.mf_appendHistory(history, record, sWhy), 0);
    EXPECT_EQ(
        utf8(sWhy),
        "The object path 'C:\\data\\bell\\u0007.txt' cannot be stored: control character U+0007 at unit 13");
    // The store says why in its own log record; the caller decides what becomes of the file.
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQHistoryStore::mf_formatRecord", utf8(sWhy)}}));
    history = UQServerDirectory::HistoryAppender();
    EXPECT_EQ(readFile(server.mf_getHistoryFile()), sBefore);
}

TEST_F(MigrationTest, RecordsAddedToAStoreWithoutAFinalLineEndEachGetALineOfTheirOwn) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    // A record added by hand, its line not ended.
    const UQQueryData byHand(CString(L"C:\\elsewhere\\old.txt"), CString(), 3, UQFileTime(0), UQFileSize(5),
                             0, UQExpiryTime{0}, UQQueryData::AccessKey{UQServerDirectory::VOLUME, 40});
    const std::string sByHand = UQHistoryStore::mf_formatRecord(byHand);
    ASSERT_TRUE(writeFile(server.mf_getHistoryFile(), readFile(server.mf_getHistoryFile()) + sByHand));
    makeFiles({{L"a.txt", "a"}, {L"b.txt", "b"}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    EXPECT_TRUE(isVerifiedStub(L"b.txt"));
    UQServerDirectory::State state;
    ASSERT_EQ(server.mf_readState(state, sWhy), 1) << utf8(sWhy);
    EXPECT_TRUE(state.errors.empty()) << utf8(state.errors.front());
    EXPECT_EQ(state.uRecords, 3u);
    EXPECT_EQ(state.latestVersions[L"C:\\ELSEWHERE\\OLD.TXT"], 3u);
    EXPECT_NE(readFile(server.mf_getHistoryFile()).find(sByHand + "\n"), std::string::npos);
    EXPECT_EQ(storedFiles(), (std::vector<std::wstring>{L"1\\0\\41.ver", L"1\\0\\42.ver"}));
}

TEST_F(MigrationTest, VersionLeftAfterTheLastRecordInItsHundredIsPassed) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    ASSERT_TRUE(
        writeFile(server.mf_getHistoryFile(),
                  "# object path\tfile path\tversion\tlast write\tsize\tflags\texpiry\tvolume:position\n"
                  "C:\\old.txt\t=\t1\t2024-03-05 09:12:44.1234567\t3\t-\t-\t1:150\n"));
    // Left by interrupted runs: one after the last record, in the same hundred; one long before it.
    ASSERT_TRUE(writeFile(server.mf_getVersionFile(UQServerDirectory::VOLUME, 199), "KORDATA 1\n..."));
    ASSERT_TRUE(writeFile(server.mf_getVersionFile(UQServerDirectory::VOLUME, 42), "KORDATA 1\n..."));
    makeFiles({{L"a.txt", "a"}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    EXPECT_EQ(storedFiles(),
              (std::vector<std::wstring>{L"1\\0\\42.ver", L"1\\1\\199.ver", L"1\\2\\200.ver"}));
}

TEST_F(MigrationTest, VersionLeftInTheOneFolderOfEarlierServersDoesNotBlockTheNextRun) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    // Earlier servers kept every version of a volume in one folder.
    ASSERT_TRUE(writeFile(server.mf_getUngroupedVersionFile(UQServerDirectory::VOLUME, 7), "KORDATA 1\n..."));
    makeFiles({{L"a.txt", "a"}});
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Migrated");
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    EXPECT_EQ(storedFiles(), (std::vector<std::wstring>{L"1\\0\\8.ver", L"1\\7.ver"}));
}

TEST_F(MigrationTest, CorruptHistoryStoreNamesFileAndLineAndTheMigrationGoesOn) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    ASSERT_TRUE(writeFile(server.mf_getHistoryFile(),
                          "# object path\tfile path\tversion\tlast write\tsize\tflags\t"
                          "expiry\tvolume:position\nthis is no record\n"));
    makeFiles({{L"a.txt", "a"}});
    LogCheck log;
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    EXPECT_TRUE(isVerifiedStub(L"a.txt"));
    bool bNamed = false;
    for (const LogLine& line : log.lines())
        bNamed =
            bNamed ||
            (line.level == 'W' && line.function == "UQMigration::mf_run" &&
             line.text.find("History record skipped: " + utf8(server.mf_getHistoryFile()) + ":2: ") == 0);
    EXPECT_TRUE(bNamed) << "no record names the store's file and line";
}

} // namespace
