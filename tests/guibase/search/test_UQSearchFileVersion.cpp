#include "guibase/search/UQSearchFileVersion.h"

#include "SearchRecords.h"

#include <memory>

using namespace search_test;

namespace {

std::unique_ptr<UQSearchFileVersion> versionOf(std::uint32_t flags, UQExpiryTime expiry = UQExpiryTime{0}) {
    return std::make_unique<UQSearchFileVersion>(newRecord(L"\\\\srv\\share\\a.txt", 1, flags, expiry));
}

} // namespace

TEST(UQSearchFileVersion, StatusOfEachStateAndProtection) {
    struct Case {
        std::uint32_t flags;
        UQExpiryTime expiry;
        int index;
        unsigned text;
    };
    const Case cases[] = {
        {0, noExpiry(), 0, 3102},  {P, noExpiry(), 1, 3104},     {0, expiresOn(), 2, 3530},
        {P, expiresOn(), 3, 3532}, {E | D, noExpiry(), 4, 3343}, {E | D | P, noExpiry(), 5, 3345},
    };
    for (const Case& c : cases) {
        const auto version = versionOf(c.flags, c.expiry);
        EXPECT_EQ(version->mf_getStatusIndex(), c.index);
        EXPECT_EQ(utf8(version->mf_getStatusString()), catalogue(c.text));
    }
}

TEST(UQSearchFileVersion, StatusTextsAreTheCatalogueTexts) {
    EXPECT_EQ(utf8(versionOf(0)->mf_getStatusString()), "Available");
    EXPECT_EQ(utf8(versionOf(P)->mf_getStatusString()), "Available (protected)");
    EXPECT_EQ(utf8(versionOf(0, expiresOn())->mf_getStatusString()), "Expiring");
    EXPECT_EQ(utf8(versionOf(P, expiresOn())->mf_getStatusString()), "Expiring (protected)");
    EXPECT_EQ(utf8(versionOf(E | D)->mf_getStatusString()), "Deleted");
    EXPECT_EQ(utf8(versionOf(E | D | P)->mf_getStatusString()), "Deleted (protected)");
}

TEST(UQSearchFileVersion, EventBasedDeletedProtectedIsIndexFive) {
    const auto version = versionOf(E | D | P, expiresOn());
    EXPECT_EQ(version->mf_getStatusIndex(), 5);
    EXPECT_EQ(version->mf_isDeleted(), 1);
    EXPECT_EQ(version->mf_isExpiring(), 0);
    EXPECT_EQ(version->mf_isAvailable(), 0);
}

TEST(UQSearchFileVersion, EventBasedWithoutDeletionIsAvailableEvenWithExpiry) {
    const auto plain = versionOf(E, expiresOn());
    EXPECT_EQ(plain->mf_getStatusIndex(), 0);
    EXPECT_EQ(plain->mf_isExpiring(), 0);
    EXPECT_EQ(plain->mf_isAvailable(), 1);
    EXPECT_EQ(plain->mf_isDeleted(), 0);
    EXPECT_EQ(versionOf(E | P, expiresOn())->mf_getStatusIndex(), 1);
}

TEST(UQSearchFileVersion, DeletionStartedWithoutEventBaseIsNotDeleted) {
    const auto version = versionOf(D);
    EXPECT_EQ(version->mf_getStatusIndex(), 0);
    EXPECT_EQ(version->mf_isDeleted(), 0);
    EXPECT_EQ(version->mf_isDeletionStarted(), 1);
    EXPECT_EQ(version->mf_isAvailable(), 1);
}

TEST(UQSearchFileVersion, ForwardsTheRecord) {
    const UQQueryData data(L"\\\\srv\\share\\object.txt", L"C:\\data\\file.txt", 7, writeTime(),
                           UQFileSize(4096), P, noExpiry(), {3, 99});
    UQSearchFileVersion version(data.mf_clone());
    EXPECT_EQ(utf8(version.mf_getPath()), "C:\\data\\file.txt");
    EXPECT_EQ(version.mf_getVersion(), 7u);
    EXPECT_EQ(version.mf_getSize().mf_getValue(), 4096);
    EXPECT_EQ(version.mf_getLastWriteTime(), writeTime());
    EXPECT_EQ(version.mf_isProtected(), 1);
    EXPECT_EQ(version.mf_isEventBased(), 0);
    EXPECT_EQ(utf8(version.mf_getQueryData()->mf_getObjectPath()), "\\\\srv\\share\\object.txt");
}

TEST(UQSearchFileVersion, StateIsAskedLiveButTheStatusTextStays) {
    LiveRecord::State state;
    UQSearchFileVersion version(new LiveRecord(record(L"\\\\srv\\share\\a.txt", 1), &state));
    EXPECT_EQ(version.mf_getStatusIndex(), 0);
    state.bEventBased = 1;
    state.bDeletionStarted = 1;
    state.bProtected = 1;
    EXPECT_EQ(version.mf_isDeleted(), 1);
    EXPECT_EQ(version.mf_isProtected(), 1);
    EXPECT_EQ(version.mf_isAvailable(), 0);
    EXPECT_EQ(version.mf_getStatusIndex(), 0);
    EXPECT_EQ(utf8(version.mf_getStatusString()), catalogue(3102));
    state = LiveRecord::State();
    state.uExpiry = 5;
    EXPECT_EQ(version.mf_isExpiring(), 1);
    EXPECT_EQ(version.mf_isAvailable(), 0);
}

TEST(UQSearchFileVersion, NullRecordIsRefused) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQSearchFileVersion version(nullptr); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'E', "UQSearchFileVersion::UQSearchFileVersion", "NULL == _pQueryData"}}));
}

TEST(UQSearchFileVersion, DestroyingTheVersionDeletesItsRecord) {
    const int before = CountedRecord::alive();
    {
        UQSearchFileVersion version(new CountedRecord(record(L"\\\\srv\\share\\a.txt", 1)));
        EXPECT_EQ(CountedRecord::alive(), before + 1);
    }
    EXPECT_EQ(CountedRecord::alive(), before);
}

TEST(UQSearchFileVersion, ConstructionLogsNothing) {
    LogCheck log;
    versionOf(E | D | P);
    EXPECT_EQ(log.count(), 0u);
}
