// The stand-in directory: controllers with their listed, generated and silent users, what is malformed
// and how it is reported, and the shipped sample.
#include "interfaces/korutil.h"

#include "support/LogCheck.h"

#include <string>

namespace {

const CString NAME = L"directory.txt";

std::vector<std::string> details(const UQDirectoryFile::Result& _result) {
    std::vector<std::string> texts;
    for (const UQErrno& error : _result.errors) {
        EXPECT_TRUE(error.mf_getData().mf_is(UQErrno::_E_::Format));
        texts.push_back(utf8(error.mf_getDetail()));
    }
    return texts;
}

} // namespace

TEST(UQDirectoryFile, ControllersCarryTheirUsersMarksAndGenerators) {
    const UQDirectoryFile::Result result =
        UQDirectoryFile::mf_readText("# domain\r\ncontroller\tDC1\tFirst DC\tprimary\r\n"
                                     "user\tS-1-5-21-1-2-3-1001\tanna\tAnna Smith\r\n"
                                     "user\tS-1-5-21-1-2-3-1002\tsvc\t-\r\n"
                                     "generate\t25\t42\r\n"
                                     "controller\tDC2\tDC2\t-\nsilent\n",
                                     NAME);
    EXPECT_EQ(details(result), std::vector<std::string>());
    ASSERT_EQ(result.controllers.size(), 2u);
    const UQDirectoryController& first = result.controllers[0];
    EXPECT_EQ(first.sName, L"DC1");
    EXPECT_EQ(first.sDisplayName, L"First DC");
    EXPECT_EQ(first.bMarked, 1);
    EXPECT_EQ(first.bAnswers, 1);
    ASSERT_EQ(first.users.size(), 2u);
    EXPECT_EQ(first.users[0].mf_getSidString(), L"S-1-5-21-1-2-3-1001");
    EXPECT_EQ(first.users[0].mf_getDisplayName(), L"anna");
    EXPECT_EQ(first.users[0].mf_getSecondText(), L"Anna Smith");
    EXPECT_EQ(first.users[1].mf_hasSecondText(), 0);
    EXPECT_EQ(first.uGenerated, 25u);
    EXPECT_EQ(first.uStartValue, 42u);
    EXPECT_EQ(result.controllers[1].bMarked, 0);
    EXPECT_EQ(result.controllers[1].bAnswers, 0);
}

TEST(UQDirectoryFile, MalformedLinesNameFileAndLineAndAreSkipped) {
    const UQDirectoryFile::Result result = UQDirectoryFile::mf_readText("user\tS-1-5-1\tearly\t-\n"    // 1
                                                                        "controller\tDC1\tDC1\tmain\n" // 2
                                                                        "controller\tDC1\tDC1\t-\n"    // 3
                                                                        "controller\tDC1\tDC1\t-\n"    // 4
                                                                        "user\tS-1-5-x\tbad\t-\n"      // 5
                                                                        "user\tS-1-5-21-9\t\t-\n"      // 6
                                                                        "user\tS-1-5-21-9\tname\n"     // 7
                                                                        "generate\t2000000\t1\n"       // 8
                                                                        "generate\t10\tseven\n"        // 9
                                                                        "silent\tnow\n"                // 10
                                                                        "member\tx\n",                 // 11
                                                                        NAME);
    EXPECT_EQ(details(result),
              (std::vector<std::string>{
                  "directory.txt:1: 'user' before the first controller line",
                  "directory.txt:2: bad mark 'main' (primary or -)",
                  "directory.txt:4: controller 'DC1' is listed twice",
                  "directory.txt:5: bad SID 'S-1-5-x'",
                  "directory.txt:6: empty account name",
                  "directory.txt:7: expected user, SID, account name and second text, found 3 fields",
                  "directory.txt:8: bad user count '2000000' (0 to 1000000)",
                  "directory.txt:9: bad starting value 'seven'",
                  "directory.txt:10: expected 'silent' alone",
                  "directory.txt:11: unknown line kind 'member' (controller, user, generate or silent)",
              }));
    ASSERT_EQ(result.controllers.size(), 1u);
    EXPECT_TRUE(result.controllers[0].users.empty());
}

TEST(UQDirectoryFile, AMissingFileThrowsAFileErrorNamingIt) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQDirectoryFile::mf_read(L"no such directory.txt"); }), "_E_::File");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQDirectoryFile::mf_read",
                                     "Failure opening directory file 'no such directory.txt'"}}));
}

TEST(UQDirectoryFile, TheShippedSampleIsADomainOfSeveralControllersWithThousandsOfUsers) {
    const UQDirectoryFile::Result result = UQDirectoryFile::mf_read(CString::FromUtf8(KOR_DIRECTORY_SAMPLE));
    EXPECT_EQ(details(result), std::vector<std::string>());
    ASSERT_EQ(result.controllers.size(), 4u);
    std::uint64_t uUsers = 0;
    int nMarked = 0, nSilent = 0;
    for (const UQDirectoryController& controller : result.controllers) {
        uUsers += controller.users.size() + controller.uGenerated;
        nMarked += controller.bMarked;
        nSilent += controller.bAnswers ? 0 : 1;
    }
    EXPECT_GE(uUsers, 7000u);
    EXPECT_EQ(nMarked, 1);
    EXPECT_EQ(nSilent, 1);
    EXPECT_EQ(result.controllers[2].users[0].mf_getSecondText(), L"Karin M\u00fcller");
}
