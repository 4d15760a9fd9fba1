// Retrieval and recall read what the server and the stubs on disk say, and trust none of it: a damaged or
// crafted stored version or stub fails that file with a clear result, leaves the stub as it was, and
// nothing is written outside the folder the user chose.
#include "ClientTestSupport.h"
#include "UQMigration.h"
#include "UQRetrieval.h"
#include "UQServerDirectory.h"
#include "UQServerName.h"
#include "UQSha256.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

namespace {

using namespace clienttest;

class RetrievalTest : public ::testing::Test {
protected:
    RetrievalTest()
        : scratch(L"retrieval"), sFiles(scratch.path() + L"\\files"), sServer(scratch.path() + L"\\server"),
          sDestination(scratch.path() + L"\\box\\retrieved"), server(sServer) {
        // The destination's parent exists, as a folder the user picks does; the destination itself is made.
        CreateDirectoryW(UQSafeFile::mf_long(scratch.path() + L"\\box").c_str(), nullptr);
    }
    ~RetrievalTest() override { UQSafeFile::mf_injectWriteFailure(0, 0); }

    // Migrates one file and answers the path of its stub.
    std::wstring migrated(const std::wstring& _sRelative, const std::string& _sContent) {
        EXPECT_TRUE(writeFile(sFiles + L"\\" + _sRelative, _sContent));
        UQMigration migration(server, sFiles);
        std::vector<UQFileOutcome> outcomes;
        std::wstring sWhy;
        EXPECT_EQ(migration.mf_run(nullptr, nullptr, outcomes, sWhy), 1) << utf8(sWhy);
        return sFiles + L"\\" + _sRelative;
    }

    // The stored version a stub names.
    std::wstring versionFileOf(const std::wstring& _sStub) {
        UQVersionRecord stub;
        std::wstring sWhy;
        EXPECT_EQ(UQRetrieval::mf_readStub(_sStub, stub, sWhy), 1) << utf8(sWhy);
        return server.mf_getVersionFile(stub.m_uVolume, stub.m_uPosition);
    }

    UQRetrieval::Request craft(std::uint64_t _uPosition, const std::wstring& _sName,
                               const std::string& _sContent) {
        return craftVersion(server, _uPosition, _sName, _sContent);
    }

    int retrieve(const std::vector<UQRetrieval::Request>& _requests, const UQCancelSwitch* _pCancel = nullptr,
                 const UQRetrieval::Progress& _progress = nullptr) {
        UQRetrieval retrieval(server);
        outcomes.clear();
        reason.clear();
        return retrieval.mf_retrieve(_requests, sDestination, _pCancel, _progress, outcomes, reason);
    }

    // Recalls _sStub, expects it to fail with _sReason and the stub to stay byte for byte.
    void expectRecallRefused(const std::wstring& _sStub, const std::string& _sReason) {
        const std::string sBefore = readFile(_sStub);
        LogCheck log;
        const UQFileOutcome outcome = UQRetrieval(server).mf_recall(_sStub);
        EXPECT_EQ(outcome.eSeverity, UQFileOutcome::RED);
        EXPECT_EQ(utf8(outcome.sResult), _sReason);
        EXPECT_EQ(readFile(_sStub), sBefore) << "the stub changed";
        const std::vector<LogLine> lines = log.lines();
        EXPECT_NE(std::find(lines.begin(), lines.end(),
                            LogLine{'W', "UQRetrieval::mf_recall", utf8(_sStub) + ": " + _sReason}),
                  lines.end());
        for (const std::wstring& sFile : filesBelow(scratch.path()))
            EXPECT_EQ(sFile.find(L".kortmp-"), std::wstring::npos) << "left behind: " << utf8(sFile);
    }

    ScratchFolder scratch;
    std::wstring sFiles;
    std::wstring sServer;
    std::wstring sDestination;
    UQServerDirectory server;
    std::vector<UQFileOutcome> outcomes;
    std::wstring reason;
};

TEST_F(RetrievalTest, RecallReplacesTheStubByTheContent) {
    const std::string sContent = contentOf(1, 70000);
    const std::wstring sStub = migrated(L"a.bin", sContent);
    ASSERT_NE(readFile(sStub), sContent);
    const UQFileOutcome outcome = UQRetrieval(server).mf_recall(sStub);
    EXPECT_EQ(outcome.eSeverity, UQFileOutcome::GREEN);
    EXPECT_EQ(utf8(outcome.sResult), "Recalled");
    EXPECT_EQ(readFile(sStub), sContent);
}

TEST_F(RetrievalTest, RecallWithTheStoredDataDeletedFailsAndKeepsTheStub) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(2, 5000));
    const std::wstring sVersion = versionFileOf(sStub);
    ASSERT_TRUE(DeleteFileW(UQSafeFile::mf_long(sVersion).c_str()));
    expectRecallRefused(sStub, "Not recalled, the stub is kept: the server holds no data for version 1 (" +
                                   utf8(sVersion) + " is missing)");
}

TEST_F(RetrievalTest, RecallWithShorterStoredDataFailsAndKeepsTheStub) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(3, 5000));
    const std::wstring sVersion = versionFileOf(sStub);
    const std::string sStored = readFile(sVersion);
    ASSERT_TRUE(writeFile(sVersion, sStored.substr(0, sStored.size() - 10)));
    expectRecallRefused(
        sStub,
        "Not recalled, the stub is kept: the stored data is shorter than recorded (4990 of 5000 bytes)");
}

TEST_F(RetrievalTest, RecallWithLongerStoredDataFailsAndKeepsTheStub) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(4, 5000));
    const std::wstring sVersion = versionFileOf(sStub);
    ASSERT_TRUE(writeFile(sVersion, readFile(sVersion) + "more"));
    expectRecallRefused(sStub, "Not recalled, the stub is kept: the stored data is longer than recorded");
}

TEST_F(RetrievalTest, RecallWithChangedStoredDataFailsAndKeepsTheStub) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(5, 5000));
    const std::wstring sVersion = versionFileOf(sStub);
    std::string sStored = readFile(sVersion);
    sStored[sStored.size() - 100] ^= 0x20;
    ASSERT_TRUE(writeFile(sVersion, sStored));
    expectRecallRefused(sStub, "Not recalled, the stub is kept: the stored data does not match its hash");
}

TEST_F(RetrievalTest, RecallOfAVersionWhoseHeaderDiffersFromTheStubFailsAndKeepsTheStub) {
    const std::string sContent = contentOf(6, 5000);
    const std::wstring sStub = migrated(L"a.bin", sContent);
    const std::wstring sVersion = versionFileOf(sStub);
    // Another content stored consistently in place of the one the stub recorded.
    const std::string sOther = contentOf(7, 5000);
    UQVersionRecord header;
    std::size_t nBytes = 0;
    std::wstring sWhy;
    ASSERT_EQ(UQVersionRecord::mf_parseHeader(readFile(sVersion), header, nBytes, sWhy), 1) << utf8(sWhy);
    header.m_sSha256 = UQSha256::mf_hashHex(sOther.data(), sOther.size());
    ASSERT_TRUE(writeFile(sVersion, header.mf_formatHeader() + sOther));
    expectRecallRefused(sStub, "Not recalled, the stub is kept: the stored data of '" + utf8(sVersion) +
                                   "' differs from what the stub records");
}

TEST_F(RetrievalTest, TruncatedStubFailsAndStaysAsItWas) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(8, 100));
    const std::string sText = readFile(sStub);
    ASSERT_TRUE(writeFile(sStub, sText.substr(0, sText.find("size="))));
    expectRecallRefused(sStub, "Not recalled: cut short: line 'size=' is missing");
}

TEST_F(RetrievalTest, StubThatNamesAVersionTheServerDoesNotHoldFailsAndStays) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(9, 100));
    const std::string sText = readFile(sStub);
    std::string sCrafted = sText;
    sCrafted.replace(sCrafted.find("version=1"), 9, "version=7");
    ASSERT_TRUE(writeFile(sStub, sCrafted));
    expectRecallRefused(sStub, "Not recalled, the stub is kept: '" + utf8(versionFileOf(sStub)) +
                                   "' holds version 1 of '" + utf8(sStub) + "', not the version asked for");
}

TEST_F(RetrievalTest, StubThatPointsWhereTheServerHoldsNothingFailsAndStays) {
    const std::wstring sStub = migrated(L"a.bin", contentOf(10, 100));
    std::string sCrafted = readFile(sStub);
    sCrafted.replace(sCrafted.find("access=1:1"), 10, "access=9:77");
    ASSERT_TRUE(writeFile(sStub, sCrafted));
    expectRecallRefused(sStub, "Not recalled, the stub is kept: the server holds no data for version 1 (" +
                                   utf8(server.mf_getVersionFile(9, 77)) + " is missing)");
}

TEST_F(RetrievalTest, OrdinaryFileIsNoStubToRecall) {
    ASSERT_TRUE(writeFile(sFiles + L"\\plain.txt", "plain"));
    expectRecallRefused(sFiles + L"\\plain.txt",
                        "Not recalled: not a stub file (its first line is not \"KORSTUB 1\")");
}

TEST_F(RetrievalTest, RetrievedVersionsEqualTheOriginalsInTheChosenFolder) {
    const std::string sA = contentOf(11, 1000);
    const std::string sB = contentOf(12, 400000);
    std::vector<UQRetrieval::Request> requests{craft(1, L"a.bin", sA), craft(2, L"deep\\er\\b.bin", sB)};
    ASSERT_EQ(retrieve(requests), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 2u);
    for (const UQFileOutcome& outcome : outcomes)
        EXPECT_EQ(utf8(outcome.sResult), "Retrieved") << utf8(outcome.sPath);
    EXPECT_EQ(readFile(sDestination + L"\\a.bin"), sA);
    EXPECT_EQ(readFile(sDestination + L"\\deep\\er\\b.bin"), sB);
    EXPECT_EQ(filesBelow(scratch.path() + L"\\box"),
              (std::vector<std::wstring>{L"retrieved\\a.bin", L"retrieved\\deep\\er\\b.bin"}));
}

TEST_F(RetrievalTest, VersionInTheOneFolderOfEarlierServersIsRetrievedAndRecalled) {
    const std::string sContent = contentOf(12, 3000);
    const std::wstring sStub = migrated(L"a.bin", sContent);
    // The layout of earlier servers: every version of a volume in one folder.
    const std::wstring sGrouped = versionFileOf(sStub);
    UQVersionRecord stub;
    std::wstring sWhy;
    ASSERT_EQ(UQRetrieval::mf_readStub(sStub, stub, sWhy), 1) << utf8(sWhy);
    const std::wstring sUngrouped = server.mf_getUngroupedVersionFile(stub.m_uVolume, stub.m_uPosition);
    ASSERT_NE(sUngrouped, sGrouped);
    ASSERT_TRUE(
        MoveFileExW(UQSafeFile::mf_long(sGrouped).c_str(), UQSafeFile::mf_long(sUngrouped).c_str(), 0))
        << GetLastError();
    UQRetrieval::Request request;
    request.sObjectPath = stub.m_sObjectPath;
    request.uVersion = stub.m_uVersion;
    request.uVolume = stub.m_uVolume;
    request.uPosition = stub.m_uPosition;
    ASSERT_EQ(retrieve({request}), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Retrieved");
    EXPECT_EQ(readFile(sDestination + L"\\a.bin"), sContent);
    EXPECT_EQ(utf8(UQRetrieval(server).mf_recall(sStub).sResult), "Recalled");
    EXPECT_EQ(readFile(sStub), sContent);
}

TEST_F(RetrievalTest, ExistingFileIsNeverOverwritten) {
    ASSERT_TRUE(writeFile(sDestination + L"\\a.bin", "mine"));
    ASSERT_EQ(retrieve({craft(1, L"a.bin", "theirs")}), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Not retrieved: a file of this name exists already and is kept");
    EXPECT_EQ(readFile(sDestination + L"\\a.bin"), "mine");
}

// Wine 8 makes hard links (CreateHardLinkW) but no symbolic links or junctions: the hard link is the link a
// test can plant here.
TEST_F(RetrievalTest, HardLinkPlantedInTheDestinationIsNotWrittenThrough) {
    const std::wstring sOutside = scratch.path() + L"\\outside.txt";
    ASSERT_TRUE(writeFile(sOutside, "precious"));
    ASSERT_TRUE(CreateDirectoryW(UQSafeFile::mf_long(sDestination).c_str(), nullptr));
    ASSERT_TRUE(CreateHardLinkW(UQSafeFile::mf_long(sDestination + L"\\a.bin").c_str(),
                                UQSafeFile::mf_long(sOutside).c_str(), nullptr));
    ASSERT_EQ(retrieve({craft(1, L"a.bin", "planted over")}), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Not retrieved: a file of this name exists already and is kept");
    EXPECT_EQ(readFile(sOutside), "precious");
    EXPECT_EQ(readFile(sDestination + L"\\a.bin"), "precious");
}

TEST_F(RetrievalTest, RecallOfAStubThatIsAHardLinkReplacesTheNameOnlyAndTheOtherFileKeepsItsBytes) {
    const std::string sContent = contentOf(14, 3000);
    const std::wstring sStub = migrated(L"a.bin", sContent);
    const std::string sStubText = readFile(sStub);
    const std::wstring sOther = scratch.path() + L"\\other-name.txt";
    ASSERT_TRUE(
        CreateHardLinkW(UQSafeFile::mf_long(sOther).c_str(), UQSafeFile::mf_long(sStub).c_str(), nullptr));
    const UQFileOutcome outcome = UQRetrieval(server).mf_recall(sStub);
    EXPECT_EQ(utf8(outcome.sResult), "Recalled");
    EXPECT_EQ(readFile(sStub), sContent);
    EXPECT_EQ(readFile(sOther), sStubText);
}

TEST_F(RetrievalTest, ChangedStoredDataIsNotRetrievedAndLeavesNothingBehind) {
    UQRetrieval::Request request = craft(1, L"a.bin", "original content");
    const std::wstring sVersion = server.mf_getVersionFile(UQServerDirectory::VOLUME, 1);
    std::string sStored = readFile(sVersion);
    sStored.back() = 'X';
    ASSERT_TRUE(writeFile(sVersion, sStored));
    ASSERT_EQ(retrieve({request}), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::RED);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Not retrieved: the stored data does not match its hash");
    EXPECT_TRUE(filesBelow(sDestination).empty());
}

TEST_F(RetrievalTest, FullDiskFailsTheFileAndLeavesNothingBehind) {
    std::vector<UQRetrieval::Request> requests{craft(1, L"a.bin", contentOf(13, 50000)),
                                               craft(2, L"b.bin", "b")};
    UQSafeFile::mf_injectWriteFailure(100, ERROR_DISK_FULL);
    ASSERT_EQ(retrieve(requests), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 2u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::RED);
    EXPECT_EQ(utf8(outcomes[0].sResult),
              "Not retrieved: cannot write: " + utf8(UQSafeFile::mf_systemText(ERROR_DISK_FULL)));
    EXPECT_EQ(utf8(outcomes[1].sResult), "Retrieved");
    EXPECT_EQ(filesBelow(sDestination), (std::vector<std::wstring>{L"b.bin"}));
}

// Files are flushed and named behind the reading of the next ones; outcomes and progress still come in the
// order of the requests, whether a file failed while read or while named.
TEST_F(RetrievalTest, OutcomesAndProgressKeepTheOrderOfTheRequestsWhateverHappensToEach) {
    ASSERT_TRUE(writeFile(sDestination + L"\\taken.bin", "mine"));
    std::vector<UQRetrieval::Request> requests;
    std::vector<std::string> expected;
    for (int i = 1; i <= 15; ++i) {
        std::wstring sName = L"f" + std::to_wstring(i) + L".bin";
        std::string sResult = "Retrieved";
        if (i % 5 == 2) {
            sName = L"taken.bin";
            sResult = "Not retrieved: a file of this name exists already and is kept";
        }
        UQRetrieval::Request request = craft(static_cast<std::uint64_t>(i), sName, contentOf(i, 3000));
        if (i % 5 == 4) {
            // No data for this one: it fails while read, before anything is written.
            request.uPosition = 1000 + static_cast<std::uint64_t>(i);
            sResult = "Not retrieved: the server holds no data for version 1 (" +
                      utf8(server.mf_getVersionFile(UQServerDirectory::VOLUME, request.uPosition)) +
                      " is missing)";
        }
        requests.push_back(request);
        expected.push_back(sResult);
    }
    std::vector<int> progress;
    std::vector<std::wstring> progressPaths;
    ASSERT_EQ(retrieve(requests, nullptr,
                       [&](int _nDone, int _nTotal, const std::wstring& _sPath) {
                           EXPECT_EQ(_nTotal, 15);
                           progress.push_back(_nDone);
                           progressPaths.push_back(_sPath);
                       }),
              1)
        << utf8(reason);
    ASSERT_EQ(outcomes.size(), 15u);
    ASSERT_EQ(progress.size(), 15u);
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        EXPECT_EQ(utf8(outcomes[i].sResult), expected[i]) << "request " << i + 1;
        EXPECT_EQ(progress[i], static_cast<int>(i + 1));
        EXPECT_EQ(utf8(progressPaths[i]), utf8(requests[i].sObjectPath));
        if (expected[i] == "Retrieved") {
            EXPECT_EQ(readFile(outcomes[i].sPath), contentOf(static_cast<int>(i + 1), 3000))
                << "request " << i + 1;
        }
    }
    EXPECT_EQ(readFile(sDestination + L"\\taken.bin"), "mine");
    for (const std::wstring& sFile : filesBelow(scratch.path()))
        EXPECT_EQ(sFile.find(L".kortmp-"), std::wstring::npos) << "left behind: " << utf8(sFile);
}

TEST_F(RetrievalTest, CancelMidwayStopsTheRunAndLeavesWholeFilesOnly) {
    const int FILES = 20;
    std::vector<UQRetrieval::Request> requests;
    for (int i = 1; i <= FILES; ++i)
        requests.push_back(
            craft(static_cast<std::uint64_t>(i), L"f" + std::to_wstring(i) + L".bin", contentOf(i, 9000)));
    UQCancelSwitch cancel;
    LogCheck log;
    ASSERT_EQ(retrieve(requests, &cancel,
                       [&](int _nDone, int, const std::wstring&) {
                           if (_nDone == 2)
                               cancel.mf_implTryCancel();
                       }),
              1)
        << utf8(reason);
    // The files already written when Cancel came are finished too, at most the queue's depth of them.
    ASSERT_GE(outcomes.size(), 2u);
    EXPECT_LE(outcomes.size(), 2u + UQFinishQueue::DEPTH + 1);
    std::vector<std::wstring> retrieved;
    for (std::size_t i = 0; i < outcomes.size(); ++i) {
        const std::wstring sName = L"f" + std::to_wstring(i + 1) + L".bin";
        EXPECT_EQ(utf8(outcomes[i].sPath), utf8(sDestination + L"\\" + sName));
        EXPECT_EQ(utf8(outcomes[i].sResult), "Retrieved");
        EXPECT_EQ(readFile(sDestination + L"\\" + sName), contentOf(static_cast<int>(i + 1), 9000));
        retrieved.push_back(sName);
    }
    std::sort(retrieved.begin(), retrieved.end());
    EXPECT_EQ(filesBelow(sDestination), retrieved);
    const std::vector<LogLine> lines = log.lines();
    EXPECT_NE(
        std::find(lines.begin(), lines.end(),
                  LogLine{'W', "UQRetrieval::mf_retrieve",
                          "Retrieval canceled after " + std::to_string(outcomes.size()) + " of 20 files"}),
        lines.end());
}

// Every crafted name is refused on its own file; the good files of the same retrieval are retrieved, and
// nothing appears outside the destination.
TEST_F(RetrievalTest, CraftedNamesFromTheServerAreRefusedAndTheOthersGoOn) {
    const std::wstring CRAFTED[] = {L"..\\..\\x.txt",
                                    L"\\x.txt",
                                    L"C:\\Windows\\korclient-crafted.txt",
                                    L"D:x.txt",
                                    L"\\\\host\\share\\x",
                                    L"\\\\?\\C:\\korclient-crafted.txt",
                                    L"\\\\.\\x",
                                    L"a/b.txt",
                                    L"a\\b/..\\..\\..\\c.txt",
                                    L"x.txt:stream",
                                    L"CON",
                                    L"nul.txt",
                                    L"docs\\COM1\\x.txt",
                                    L"LPT9.log",
                                    L"x.txt.",
                                    L"x.txt ",
                                    std::wstring(L"a\x01.txt"),
                                    std::wstring(32768, L'a')};
    std::vector<UQRetrieval::Request> requests{craft(1, L"good-first.txt", "first")};
    std::uint64_t uPosition = 2;
    for (const std::wstring& sName : CRAFTED)
        requests.push_back(craft(uPosition++, sName, "crafted"));
    requests.push_back(craft(uPosition, L"good-last.txt", "last"));
    LogCheck log;
    ASSERT_EQ(retrieve(requests), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), requests.size());
    EXPECT_EQ(utf8(outcomes.front().sResult), "Retrieved");
    EXPECT_EQ(utf8(outcomes.back().sResult), "Retrieved");
    const std::vector<LogLine> lines = log.lines();
    for (std::size_t i = 0; i < std::size(CRAFTED); ++i) {
        const UQFileOutcome& outcome = outcomes[i + 1];
        std::wstring sRule;
        ASSERT_EQ(UQServerName::mf_check(CRAFTED[i], sRule), 0);
        // A control character cannot even stand in the stored header: the header itself is refused.
        const bool bControl =
            std::any_of(CRAFTED[i].begin(), CRAFTED[i].end(), [](wchar_t _ch) { return _ch < 0x20; });
        const std::string sExpected =
            bControl ? "Not retrieved: '" + utf8(server.mf_getVersionFile(UQServerDirectory::VOLUME, i + 2)) +
                           "' is damaged: bad value of 'name' on line 3"
                     : "Refused: the server names the file '" + utf8(CRAFTED[i]) + "': " + utf8(sRule);
        EXPECT_EQ(outcome.eSeverity, UQFileOutcome::RED) << i;
        EXPECT_EQ(utf8(outcome.sResult), sExpected) << i;
        EXPECT_NE(std::find(lines.begin(), lines.end(),
                            LogLine{'W', "UQRetrieval::mf_retrieve", utf8(outcome.sPath) + ": " + sExpected}),
                  lines.end())
            << i;
    }
    // The destination holds the good files; its folder and the scratch folder hold nothing else.
    EXPECT_EQ(filesBelow(scratch.path() + L"\\box"),
              (std::vector<std::wstring>{L"retrieved\\good-first.txt", L"retrieved\\good-last.txt"}));
    EXPECT_FALSE(exists(scratch.path() + L"\\x.txt"));
    EXPECT_FALSE(exists(L"C:\\x.txt"));
    EXPECT_FALSE(exists(L"C:\\korclient-crafted.txt"));
    EXPECT_FALSE(exists(L"C:\\Windows\\korclient-crafted.txt"));
}

TEST_F(RetrievalTest, TwoRetrievalsIntoTheSameFolderLeaveEveryFileWholeOrReported) {
    std::vector<UQRetrieval::Request> requests;
    for (int i = 1; i <= 40; ++i)
        requests.push_back(craft(static_cast<std::uint64_t>(i), L"sub\\f" + std::to_wstring(i) + L".bin",
                                 contentOf(100 + i, 20000)));
    std::vector<UQFileOutcome> first;
    std::vector<UQFileOutcome> second;
    std::wstring sFirstWhy;
    std::wstring sSecondWhy;
    std::thread other([&] {
        UQRetrieval(server).mf_retrieve(requests, sDestination, nullptr, nullptr, second, sSecondWhy);
    });
    UQRetrieval(server).mf_retrieve(requests, sDestination, nullptr, nullptr, first, sFirstWhy);
    other.join();
    ASSERT_EQ(first.size(), requests.size()) << utf8(sFirstWhy);
    ASSERT_EQ(second.size(), requests.size()) << utf8(sSecondWhy);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const std::string sFirst = utf8(first[i].sResult);
        const std::string sSecond = utf8(second[i].sResult);
        // One of the two wrote the file; the other found it there and kept it.
        EXPECT_TRUE((sFirst == "Retrieved") != (sSecond == "Retrieved")) << sFirst << " / " << sSecond;
        EXPECT_TRUE(sFirst == "Retrieved" ||
                    sFirst == "Not retrieved: a file of this name exists already and is kept")
            << sFirst;
        EXPECT_TRUE(sSecond == "Retrieved" ||
                    sSecond == "Not retrieved: a file of this name exists already and is kept")
            << sSecond;
        EXPECT_EQ(readFile(sDestination + L"\\sub\\f" + std::to_wstring(i + 1) + L".bin"),
                  contentOf(101 + static_cast<int>(i), 20000));
    }
    EXPECT_EQ(filesBelow(sDestination).size(), requests.size());
}

TEST_F(RetrievalTest, RetrievalWhileAMigrationWritesTheSameServerLeavesEveryFileWhole) {
    std::vector<UQRetrieval::Request> requests;
    for (int i = 1; i <= 30; ++i)
        requests.push_back(craft(static_cast<std::uint64_t>(1000 + i), L"r" + std::to_wstring(i) + L".bin",
                                 contentOf(200 + i, 20000)));
    for (int i = 0; i < 60; ++i)
        ASSERT_TRUE(writeFile(sFiles + L"\\m" + std::to_wstring(i) + L".bin", contentOf(300 + i, 5000)));
    std::vector<UQFileOutcome> migrated;
    std::wstring sMigrationWhy;
    std::thread migration(
        [&] { UQMigration(server, sFiles).mf_run(nullptr, nullptr, migrated, sMigrationWhy); });
    const int bRetrieved = retrieve(requests);
    migration.join();
    ASSERT_EQ(bRetrieved, 1) << utf8(reason);
    ASSERT_EQ(migrated.size(), 60u) << utf8(sMigrationWhy);
    for (int i = 1; i <= 30; ++i)
        EXPECT_EQ(readFile(sDestination + L"\\r" + std::to_wstring(i) + L".bin"), contentOf(200 + i, 20000))
            << i;
    // Every migrated file is a stub whose version holds its content; the crafted versions kept their places.
    for (int i = 0; i < 60; ++i) {
        const std::wstring sStub = sFiles + L"\\m" + std::to_wstring(i) + L".bin";
        EXPECT_EQ(utf8(outcomeOf(migrated, sStub).sResult), "Migrated");
        EXPECT_EQ(utf8(UQRetrieval(server).mf_recall(sStub).sResult), "Recalled");
        EXPECT_EQ(readFile(sStub), contentOf(300 + i, 5000));
    }
}

TEST_F(RetrievalTest, DestinationThatCannotBeMadeIsRefusedWithItsName) {
    ASSERT_TRUE(RemoveDirectoryW(UQSafeFile::mf_long(scratch.path() + L"\\box").c_str()));
    ASSERT_TRUE(writeFile(scratch.path() + L"\\box", "a file where the folder would be"));
    EXPECT_EQ(retrieve({craft(1, L"a.txt", "a")}), 0);
    EXPECT_EQ(reason.find(L"The folder '" + sDestination + L"' cannot be created: "), 0u) << utf8(reason);
    EXPECT_TRUE(outcomes.empty());
}

} // namespace
