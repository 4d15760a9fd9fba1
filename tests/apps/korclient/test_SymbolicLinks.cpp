// Symbolic links planted in the destination, the server folder or the folder to migrate lead somewhere the
// user did not choose: none is followed for reading or writing, and what it leads to keeps every byte.
// Wine 8 shows a Linux folder link as a reparse point and resolves its final path; a Linux file link shows as
// the plain file it leads to (no FILE_ATTRIBUTE_REPARSE_POINT), so only its final path betrays it there.
#include "ClientTestSupport.h"
#include "UQMigration.h"
#include "UQRetrieval.h"
#include "UQServerDirectory.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace clienttest;

class SymbolicLinkTest : public ::testing::Test {
protected:
    SymbolicLinkTest()
        : scratch(L"links"), sFiles(scratch.path() + L"\\files"), sServer(scratch.path() + L"\\server"),
          sDestination(scratch.path() + L"\\retrieved"), sOutside(scratch.path() + L"\\outside"),
          server(sServer) {
        CreateDirectoryW(UQSafeFile::mf_long(sDestination).c_str(), nullptr);
        CreateDirectoryW(UQSafeFile::mf_long(sOutside).c_str(), nullptr);
        writeFile(sOutside + L"\\precious.txt", "precious");
    }
    // The links go first, so that clearing the scratch folder cannot reach through them.
    ~SymbolicLinkTest() override {
        for (const std::wstring& sLink : links)
            removeSymbolicLink(sLink);
    }

    bool plant(const std::wstring& _sTarget, const std::wstring& _sLink, bool _bFolder) {
        links.push_back(_sLink);
        return plantSymbolicLink(_sTarget, _sLink, _bFolder);
    }

    UQRetrieval::Request craft(std::uint64_t _uPosition, const std::wstring& _sName,
                               const std::string& _sContent) {
        return craftVersion(server, _uPosition, _sName, _sContent);
    }

    int retrieve(const std::vector<UQRetrieval::Request>& _requests) {
        outcomes.clear();
        reason.clear();
        return UQRetrieval(server).mf_retrieve(_requests, sDestination, nullptr, nullptr, outcomes, reason);
    }

    int migrate() {
        outcomes.clear();
        reason.clear();
        return UQMigration(server, sFiles).mf_run(nullptr, nullptr, outcomes, reason);
    }

    // The outside folder holds its one file with its bytes, and nothing more.
    void expectOutsideUntouched() {
        EXPECT_EQ(filesBelow(sOutside), std::vector<std::wstring>{L"precious.txt"});
        EXPECT_EQ(readFile(sOutside + L"\\precious.txt"), "precious");
    }

    ScratchFolder scratch;
    std::wstring sFiles;
    std::wstring sServer;
    std::wstring sDestination;
    std::wstring sOutside;
    UQServerDirectory server;
    std::vector<UQFileOutcome> outcomes;
    std::wstring reason;
    std::vector<std::wstring> links;
};

TEST_F(SymbolicLinkTest, FolderLinkInTheDestinationIsNotFollowedForWriting) {
    ASSERT_TRUE(plant(sOutside, sDestination + L"\\deep", true));
    LogCheck log;
    ASSERT_EQ(retrieve({craft(1, L"deep\\planted.txt", "planted"), craft(2, L"plain.txt", "plain")}), 1)
        << utf8(reason);
    ASSERT_EQ(outcomes.size(), 2u);
    const std::wstring sLink = sDestination + L"\\deep";
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::RED);
    const std::string sResult = utf8(outcomes[0].sResult);
    EXPECT_EQ(sResult.rfind("Not retrieved: '" + utf8(sLink) +
                                "' is a link or junction, or no folder: not followed (it leads to '",
                            0),
              0u)
        << sResult;
    EXPECT_EQ(utf8(outcomes[1].sResult), "Retrieved");
    EXPECT_EQ(readFile(sDestination + L"\\plain.txt"), "plain");
    expectOutsideUntouched();
    const std::vector<LogLine> lines = log.lines();
    EXPECT_NE(std::find_if(lines.begin(), lines.end(),
                           [&](const LogLine& _line) {
                               return _line.text.find(utf8(sLink) + "' is a link or junction") !=
                                      std::string::npos;
                           }),
              lines.end());
}

TEST_F(SymbolicLinkTest, FileLinkInTheDestinationIsNotWrittenThrough) {
    ASSERT_TRUE(plant(sOutside + L"\\precious.txt", sDestination + L"\\a.txt", false));
    ASSERT_EQ(retrieve({craft(1, L"a.txt", "planted over")}), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(outcomes[0].sResult), "Not retrieved: a file of this name exists already and is kept");
    expectOutsideUntouched();
}

TEST_F(SymbolicLinkTest, StoredVersionThatLinksOutOfTheServerFolderIsNotRead) {
    const UQRetrieval::Request request = craft(1, L"a.txt", "stored elsewhere");
    const std::wstring sVersion = server.mf_getVersionFile(UQServerDirectory::VOLUME, 1);
    // The version's bytes are whole and verify; only where they lie is wrong.
    ASSERT_TRUE(MoveFileW(UQSafeFile::mf_long(sVersion).c_str(),
                          UQSafeFile::mf_long(sOutside + L"\\version").c_str()));
    ASSERT_TRUE(plant(sOutside + L"\\version", sVersion, false));
    ASSERT_EQ(retrieve({request}), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::RED);
    EXPECT_EQ(utf8(outcomes[0].sResult),
              "Not retrieved: '" + utf8(sVersion) + "' leads out of the server folder: not read");
    EXPECT_TRUE(filesBelow(sDestination).empty());
}

TEST_F(SymbolicLinkTest, FolderOfAHundredVersionsThatLinksOutOfTheServerIsNotWrittenThrough) {
    std::wstring sWhy;
    ASSERT_EQ(server.mf_prepare(sWhy), 1) << utf8(sWhy);
    const std::wstring sHundred = sServer + L"\\versions\\1\\0";
    ASSERT_TRUE(plant(sOutside, sHundred, true));
    ASSERT_TRUE(writeFile(sFiles + L"\\a.txt", "keep me"));
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    ASSERT_EQ(outcomes.size(), 1u);
    EXPECT_EQ(outcomes[0].eSeverity, UQFileOutcome::RED);
    const std::string sResult = utf8(outcomes[0].sResult);
    EXPECT_EQ(sResult.rfind("Not migrated (the file is kept): cannot write to the server: '", 0), 0u)
        << sResult;
    EXPECT_NE(sResult.find("' is a link or junction, or no folder: not followed"), std::string::npos)
        << sResult;
    EXPECT_EQ(readFile(sFiles + L"\\a.txt"), "keep me");
    expectOutsideUntouched();
}

TEST_F(SymbolicLinkTest, MigrationDoesNotFollowAFolderLinkOutOfTheSourceFolder) {
    ASSERT_TRUE(writeFile(sFiles + L"\\own.txt", "own"));
    ASSERT_TRUE(plant(sOutside, sFiles + L"\\elsewhere", true));
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    const UQFileOutcome link = outcomeOf(outcomes, sFiles + L"\\elsewhere");
    EXPECT_EQ(link.eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(link.sResult), "Skipped: a link is not followed");
    EXPECT_EQ(outcomeOf(outcomes, sFiles + L"\\elsewhere\\precious.txt").sPath, L"");
    EXPECT_EQ(utf8(outcomeOf(outcomes, sFiles + L"\\own.txt").sResult).rfind("Migrated", 0), 0u);
    expectOutsideUntouched();
}

TEST_F(SymbolicLinkTest, MigrationDoesNotFollowAFileLinkOutOfTheSourceFolder) {
    ASSERT_TRUE(writeFile(sFiles + L"\\own.txt", "own"));
    ASSERT_TRUE(plant(sOutside + L"\\precious.txt", sFiles + L"\\link.txt", false));
    ASSERT_EQ(migrate(), 1) << utf8(reason);
    const UQFileOutcome link = outcomeOf(outcomes, sFiles + L"\\link.txt");
    EXPECT_EQ(link.eSeverity, UQFileOutcome::YELLOW);
    EXPECT_EQ(utf8(link.sResult), "Skipped: a link is not followed");
    EXPECT_EQ(readFile(sFiles + L"\\link.txt"), "precious") << "the link itself was replaced";
    expectOutsideUntouched();
}

} // namespace
