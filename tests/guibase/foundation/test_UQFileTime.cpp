#include "support/LogCheck.h"
#include "support/TestTime.h"

namespace {
std::string conversionError() {
    return utf8(UQErrno(UQErrno::_E_::Conversion, 87).mf_toString());
}
} // namespace

TEST(UQFileTime, ZeroIsTheStartOf1601) {
    LogCheck log;
    EXPECT_EQ(UQFileTime(0).mf_toString(), CString(L"1601-01-01 00:00:00"));
    EXPECT_EQ(UQFileTime(0).mf_toFullString(), CString(L"1601-01-01 00:00:00.000"));
    EXPECT_TRUE(log.lines().empty());
}

TEST(UQFileTime, DisplayStringsShowFieldsWithLeadingZeros) {
    const UQFileTime t = fileTime(2024, 3, 7, 14, 5, 9, 250);
    EXPECT_EQ(t.mf_toString(), CString(L"2024-03-07 14:05:09"));
    EXPECT_EQ(t.mf_toFullString(), CString(L"2024-03-07 14:05:09.250"));
}

TEST(UQFileTime, LargestConvertibleTimeIsShown) {
    EXPECT_EQ(UQFileTime(0x7FFFFFFFFFFFFFFFull).mf_toFullString(), CString(L"30828-09-14 02:48:05.477"));
}

TEST(UQFileTime, TimeBeyondTheConvertibleRangeGivesFileTimeErrorAndOneRecord) {
    LogCheck log;
    EXPECT_EQ(UQFileTime(0x8000000000000000ull).mf_toString(), CString(L"FILETIME ERROR"));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileTime::mf_toString",
                                     "Failure converting FILETIME to SYSTEMTIME: " + conversionError()}}));
}

TEST(UQFileTime, FullStringBeyondTheRangeLogsUnderItsOwnName) {
    LogCheck log;
    EXPECT_EQ(UQFileTime(0xFFFFFFFFFFFFFFFFull).mf_toFullString(), CString(L"FILETIME ERROR"));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileTime::mf_toFullString",
                                     "Failure converting FILETIME to SYSTEMTIME: " + conversionError()}}));
}

TEST(UQFileTime, ConversionErrorCarriesTheSystemErrorTakenAfterTheCall) {
    LogCheck log;
    SetLastError(5); // stale: cleared before the call, so the record names 87 (invalid parameter)
    UQFileTime(0x8000000000000000ull).mf_toString();
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].text.find("87"), std::string::npos) << lines[0].text;
}

TEST(UQFileTime, AddingWithinTheRangeGivesTheSum) {
    EXPECT_EQ((UQFileTime(0x7FFFFFFFFFFFFFFEull) + UQFileTime(1)).mf_getValue(), 0x7FFFFFFFFFFFFFFFull);
    const UQFileTime day = fileTime(2024, 3, 5);
    const UQFileTime timeOfDay(fileTime(1999, 1, 1, 23, 15, 30).mf_getValue() % UQFileTime::TICKS_PER_DAY);
    EXPECT_EQ((day + timeOfDay).mf_toString(), CString(L"2024-03-05 23:15:30"));
}

TEST(UQFileTime, AddingPastTheLargestSignedValueIsARangeError) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQFileTime(0x7FFFFFFFFFFFFFFFull) + UQFileTime(1); }), "_E_::Range");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQFileTime::operator_add",
                                     "30828-09-14 02:48:05.477 + 1601-01-01 00:00:00.000 > MAX"}}));
}
