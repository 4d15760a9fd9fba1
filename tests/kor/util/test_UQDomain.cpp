// The authorities of korutil: the local computer from the system's account database, the domain
// controllers from the directory file, and a controller that does not answer.
#include "interfaces/korutil.h"

#include "support/LogCheck.h"

#if !defined(_WIN32)
#include <pwd.h>
#endif

namespace {

struct DirectoryChoice {
    ~DirectoryChoice() { UQDomain::mf_setDirectoryFile(CString()); }
};

void deleteAll(UQArray<UQSid*, UQSid*>& _rUsers) {
    for (INT_PTR i = 0; i < _rUsers.GetSize(); ++i)
        delete _rUsers[i];
    _rUsers.RemoveAll();
}

} // namespace

TEST(UQDomain, TheLocalComputerListsTheSystemsAccounts) {
    UQSidAuthority* pComputer = UQDomain::mf_getLocalComputer();
    ASSERT_NE(pComputer, nullptr);
    EXPECT_EQ(pComputer, UQDomain::mf_getLocalComputer());
    EXPECT_FALSE(pComputer->mf_getName().IsEmpty());
    EXPECT_EQ(pComputer->mf_isMarked(), 0);
    UQArray<UQSid*, UQSid*> users;
    pComputer->mf_queryDisplayUsers(users);
    ASSERT_GT(users.GetSize(), 0);
#if defined(_WIN32)
    for (INT_PTR i = 0; i < users.GetSize(); ++i)
        EXPECT_EQ(utf8(users[i]->mf_getSidString()).rfind("S-1-5-", 0), 0u)
            << utf8(users[i]->mf_getDisplayName());
#else
    // Samba's form of a Unix user's SID.
    const passwd* pRoot = getpwnam("root");
    ASSERT_NE(pRoot, nullptr);
    bool bRootFound = false;
    for (INT_PTR i = 0; i < users.GetSize(); ++i) {
        if (users[i]->mf_getDisplayName() == L"root") {
            bRootFound = true;
            EXPECT_EQ(utf8(users[i]->mf_getSidString()), "S-1-22-1-" + std::to_string(pRoot->pw_uid));
        }
    }
    EXPECT_TRUE(bRootFound);
#endif
    deleteAll(users);
}

TEST(UQDomain, WithoutADirectoryFileThereAreNoControllers) {
    DirectoryChoice restore;
    UQDomain::mf_setDirectoryFile(CString());
    if (!UQDomain::mf_getDirectoryFile().IsEmpty())
        GTEST_SKIP() << "KOR_DIRECTORY_FILE is set in this environment";
    UQArray<UQSidAuthority*, UQSidAuthority*> controllers;
    UQDomain::mf_getDomainControllers(controllers);
    EXPECT_EQ(controllers.GetSize(), 0);
}

TEST(UQDomain, TheSampleDomainAnswersWithItsControllersAndUsers) {
    DirectoryChoice restore;
    UQDomain::mf_setDirectoryFile(CString::FromUtf8(KOR_DIRECTORY_SAMPLE));
    UQArray<UQSidAuthority*, UQSidAuthority*> controllers, again;
    UQDomain::mf_getDomainControllers(controllers);
    UQDomain::mf_getDomainControllers(again);
    ASSERT_EQ(controllers.GetSize(), 4);
    // The same controller answers the same object, so that a caller's pointers stay good.
    EXPECT_EQ(controllers[0], again[0]);
    EXPECT_EQ(controllers[0]->mf_getName(), L"CORVEX-DC01");
    EXPECT_EQ(controllers[0]->mf_isMarked(), 1);
    EXPECT_EQ(controllers[2]->mf_getDisplayName(), L"Branch office Hamburg");
    UQArray<UQSid*, UQSid*> users;
    controllers[0]->mf_queryDisplayUsers(users);
    ASSERT_EQ(users.GetSize(), 4004);
    EXPECT_EQ(users[1]->mf_getDisplayName(), L"asmith");
    deleteAll(users);
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { controllers[3]->mf_queryDisplayUsers(users); }), "_E_::Resource");
    EXPECT_EQ(users.GetSize(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQControllerAuthority::mf_queryDisplayUsers",
                                                  "Domain controller 'LAB-DC01' does not answer"}}));
}
