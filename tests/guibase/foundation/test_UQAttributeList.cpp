#include "guibase/foundation/UQAttributeList.h"

#include "support/LogCheck.h"

TEST(UQAttributeList, TwoRecordsOfTheSameKeyGiveTheFirstValue) {
    UQAttributeList list;
    list.mf_addAttribute(L"RETVER", L"30");
    list.mf_addAttribute(L"RETONLY", L"60");
    list.mf_addAttribute(L"RETVER", L"90");
    EXPECT_EQ(list.mf_getAttributeValue(L"RETVER"), CString(L"30"));
    EXPECT_EQ(list.mf_getAttributeValue(L"RETONLY"), CString(L"60"));
}

TEST(UQAttributeList, ValueIsReturnedByReference) {
    UQAttributeList list;
    list.mf_addAttribute(L"Key", L"old");
    list.mf_getAttributeValue(L"Key") = L"new";
    EXPECT_EQ(list.mf_getAttributeValue(L"Key"), CString(L"new"));
}

TEST(UQAttributeList, KeysCompareCaseSensitively) {
    LogCheck log;
    UQAttributeList list;
    list.mf_addAttribute(L"RetVer", L"30");
    EXPECT_EQ(thrownCategory([&] { list.mf_getAttributeValue(L"RETVER"); }), "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQAttributeList::mf_getAttributeValue",
                                                  "Attribute key='RETVER' not found"}}));
}

TEST(UQAttributeList, MissingKeyWithPercentSignsIsLoggedAsData) {
    LogCheck log;
    UQAttributeList list;
    EXPECT_EQ(thrownCategory([&] { list.mf_getAttributeValue(L"%s%d%n"); }), "_E_::ItemNotFound");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQAttributeList::mf_getAttributeValue",
                                                  "Attribute key='%s%d%n' not found"}}));
}

TEST(UQAttributeList, CopyHoldsItsOwnRecords) {
    UQAttributeList list;
    list.mf_addAttribute(L"A", L"1");
    UQAttributeList copy(list);
    copy.mf_getAttributeValue(L"A") = L"2";
    EXPECT_EQ(list.mf_getAttributeValue(L"A"), CString(L"1"));
    EXPECT_EQ(copy.mf_getAttributeValue(L"A"), CString(L"2"));
    EXPECT_EQ(copy.GetSize(), 1);
}
