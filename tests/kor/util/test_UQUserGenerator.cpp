// Generated users: the same count and starting value give the same users, names are unique, SIDs share
// one domain and differ in their last part.
#include "interfaces/korutil.h"

#include "support/LogCheck.h"

#include <set>

TEST(UQUserGenerator, TheSameStartingValueGivesTheSameUsers) {
    UQArray<UQSid*, UQSid*> first, second, other;
    UQUserGenerator(500, 11).mf_generate(first);
    UQUserGenerator(500, 11).mf_generate(second);
    UQUserGenerator(500, 12).mf_generate(other);
    ASSERT_EQ(first.GetSize(), 500);
    ASSERT_EQ(second.GetSize(), 500);
    int nDifferent = 0;
    std::set<std::string> names;
    for (INT_PTR i = 0; i < first.GetSize(); ++i) {
        EXPECT_EQ(first[i]->mf_getDisplayName(), second[i]->mf_getDisplayName());
        EXPECT_EQ(first[i]->mf_getSidString(), second[i]->mf_getSidString());
        nDifferent += first[i]->mf_getDisplayName() != other[i]->mf_getDisplayName() ? 1 : 0;
        names.insert(utf8(first[i]->mf_getDisplayName()));
        EXPECT_EQ(utf8(first[i]->mf_getSidString()).rfind("S-1-5-21-", 0), 0u);
        EXPECT_NE(dynamic_cast<const UQUser*>(first[i]), nullptr);
    }
    EXPECT_EQ(names.size(), 500u);
    EXPECT_GT(nDifferent, 400);
    EXPECT_EQ(UQUserGenerator(500, 11).mf_getUser(7).mf_getDisplayName(), first[7]->mf_getDisplayName());
    for (UQArray<UQSid*, UQSid*>* pArray : {&first, &second, &other}) {
        for (INT_PTR i = 0; i < pArray->GetSize(); ++i)
            delete pArray->GetAt(i);
    }
}

TEST(UQUserGenerator, MostUsersHaveAFullNameAndSomeServiceAccountsNone) {
    int nWithName = 0;
    for (std::uint32_t i = 0; i < 1000; ++i)
        nWithName += UQUserGenerator(1000, 3).mf_getUser(i).mf_hasSecondText();
    EXPECT_GT(nWithName, 850);
    EXPECT_LT(nWithName, 1000);
}
