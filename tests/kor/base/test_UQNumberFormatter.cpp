// Numbers, dates and times in the configured formats.
#include "BaseTestSupport.h"
#include "support/LogCheck.h"

#include <atomic>
#include <climits>
#include <thread>

namespace {

std::string s(const CString& c) {
    return c.ToUtf8();
}

// Every test starts from the built-in defaults and leaves them behind.
class UQNumberFormatterTest : public ::testing::Test {
protected:
    UQNumberFormatterTest()
        : m_date(L"KOR_DATE_FORMAT", nullptr), m_time(L"KOR_TIME_FORMAT", nullptr),
          m_group(L"KOR_GROUP_SEPARATOR", nullptr) {
        UQNumberFormatter::mf_resetConfiguration();
    }
    ~UQNumberFormatterTest() override { UQNumberFormatter::mf_resetConfiguration(); }

    basetest::EnvironmentOverride m_date;
    basetest::EnvironmentOverride m_time;
    basetest::EnvironmentOverride m_group;
};

const UQFileTime AFTERNOON = fileTime(2024, 3, 7, 14, 5, 9, 250);

} // namespace

TEST_F(UQNumberFormatterTest, NumbersAreGroupedByThousands) {
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(0)), "0");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(999)), "999");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1000)), "1,000");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234567)), "1,234,567");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(-1234567)), "-1,234,567");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(-999)), "-999");
}

TEST_F(UQNumberFormatterTest, ExtremeNumbersAreGroupedToo) {
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(LLONG_MAX)), "9,223,372,036,854,775,807");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(LLONG_MIN)), "-9,223,372,036,854,775,808");
}

TEST_F(UQNumberFormatterTest, ConfiguredSeparatorIsUsed) {
    UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", L'.');
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234567)), "1.234.567");
    UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", 0x00A0);
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234)), "1\xc2\xa0"
                                                           "234");
}

TEST_F(UQNumberFormatterTest, NoSeparatorMeansNoGrouping) {
    UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", 0);
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234567)), "1234567");
}

TEST_F(UQNumberFormatterTest, DigitAsSeparatorIsRefusedAndLogged) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQNumberFormatter::mf_configure(L"dd.MM.yyyy", L"HH:mm", L'5'); }),
              "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQNumberFormatter::mf_configure",
                                                  "Group separator '5' is not usable"}}));
    // Nothing of the refused configuration was taken.
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredDateFormat()), "yyyy-MM-dd");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1000)), "1,000");
}

TEST_F(UQNumberFormatterTest, EmptyPatternIsRefusedAndLogged) {
    LogCheck log;
    EXPECT_EQ(thrownCategory([] { UQNumberFormatter::mf_configure(L"", L"HH:mm", L','); }), "_E_::Parameter");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQNumberFormatter::mf_configure",
                                                  "Empty format: date='', time='HH:mm'"}}));
}

TEST_F(UQNumberFormatterTest, NormalizeTakesAwaySeparatorsAndBlanks) {
    EXPECT_EQ(s(UQNumberFormatter::mf_normalizeNumber(L"1,234 567")), "1234567");
    EXPECT_EQ(s(UQNumberFormatter::mf_normalizeNumber(L" -1,000\t")), "-1000");
    EXPECT_EQ(s(UQNumberFormatter::mf_normalizeNumber(L"1\u00a0234\u202f567")), "1234567");
    EXPECT_EQ(s(UQNumberFormatter::mf_normalizeNumber(L"")), "");
}

TEST_F(UQNumberFormatterTest, NormalizeKeepsCommaWhenItIsNotTheSeparator) {
    UQNumberFormatter::mf_configure(L"dd.MM.yyyy", L"HH:mm:ss", L'.');
    EXPECT_EQ(s(UQNumberFormatter::mf_normalizeNumber(L"1.234.567")), "1234567");
    EXPECT_EQ(s(UQNumberFormatter::mf_normalizeNumber(L"1,5")), "1,5");
}

TEST_F(UQNumberFormatterTest, NormalizeUndoesFormat) {
    for (const long long n : {0LL, 7LL, -12345LL, 1000000LL, LLONG_MAX, LLONG_MIN}) {
        CString plain;
        plain.Format(L"%I64d", n);
        EXPECT_EQ(UQNumberFormatter::mf_normalizeNumber(UQNumberFormatter::mf_formatNumber(n)), plain) << n;
    }
}

TEST_F(UQNumberFormatterTest, DefaultPatterns) {
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredDateFormat()), "yyyy-MM-dd");
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredTimeFormat()), "HH:mm:ss");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(AFTERNOON)), "2024-03-07");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(AFTERNOON)), "14:05:09");
}

TEST_F(UQNumberFormatterTest, FileTimeZeroIsTheFirstDayOf1601) {
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(UQFileTime(0))), "1601-01-01");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(UQFileTime(0))), "00:00:00");
}

TEST_F(UQNumberFormatterTest, ConfiguredPatternsAreUsed) {
    UQNumberFormatter::mf_configure(L"dd.MM.yyyy", L"h:mm tt", L'\'');
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredDateFormat()), "dd.MM.yyyy");
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredTimeFormat()), "h:mm tt");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(AFTERNOON)), "07.03.2024");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(AFTERNOON)), "2:05 PM");
}

TEST_F(UQNumberFormatterTest, ShortFieldsHaveNoLeadingZero) {
    UQNumberFormatter::mf_configure(L"d/M/yy", L"H.m.s", L',');
    const UQFileTime morning = fileTime(2009, 1, 2, 3, 4, 5, 0);
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(morning)), "2/1/09");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(morning)), "3.4.5");
}

TEST_F(UQNumberFormatterTest, TwelveHourClockShowsMidnightAsTwelve) {
    UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"hh:mm t", L',');
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(fileTime(2024, 3, 7, 0, 30, 0, 0))), "12:30 A");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(fileTime(2024, 3, 7, 12, 0, 0, 0))), "12:00 P");
}

TEST_F(UQNumberFormatterTest, QuotedTextIsCopiedAsItStands) {
    UQNumberFormatter::mf_configure(L"'Day' d 'of' yyyy", L"HH 'o''clock'", L',');
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(AFTERNOON)), "Day 7 of 2024");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(AFTERNOON)), "14 o'clock");
}

TEST_F(UQNumberFormatterTest, FileTimeOutOfRangeGivesFileTimeErrorAndLogsIt) {
    const UQFileTime outOfRange(0x8000000000000000ull);
    // The system's own error number for this conversion goes into the record.
    const FILETIME ft = outOfRange.mf_getFileTime();
    SYSTEMTIME st;
    SetLastError(0);
    ASSERT_FALSE(FileTimeToSystemTime(&ft, &st));
    const std::string expected =
        "Failure converting FILETIME to SYSTEMTIME: " +
        s(UQErrno(UQErrno::_E_::Conversion, static_cast<std::uint32_t>(GetLastError())).mf_toString());

    LogCheck log;
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(outOfRange)), "FILETIME ERROR");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(outOfRange)), "FILETIME ERROR");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQNumberFormatter::mf_formatDate", expected},
                                                 {'E', "UQNumberFormatter::mf_formatTime", expected}}));
}

TEST_F(UQNumberFormatterTest, LargestFileTimeIsStillADate) {
    LogCheck log;
    EXPECT_EQ(s(UQNumberFormatter::mf_formatDate(UQFileTime(0x7FFFFFFFFFFFFFFFull))), "30828-09-14");
    EXPECT_EQ(log.count(), 0u);
}

TEST_F(UQNumberFormatterTest, EnvironmentChoosesTheDefaults) {
    basetest::EnvironmentOverride date(L"KOR_DATE_FORMAT", L"dd/MM/yyyy");
    basetest::EnvironmentOverride time(L"KOR_TIME_FORMAT", L"HH-mm");
    basetest::EnvironmentOverride group(L"KOR_GROUP_SEPARATOR", L"'");
    UQNumberFormatter::mf_resetConfiguration();
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredDateFormat()), "dd/MM/yyyy");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatTime(AFTERNOON)), "14-05");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234567)), "1'234'567");
}

TEST_F(UQNumberFormatterTest, EnvironmentCanTurnGroupingOff) {
    basetest::EnvironmentOverride group(L"KOR_GROUP_SEPARATOR", L"none");
    UQNumberFormatter::mf_resetConfiguration();
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234567)), "1234567");
}

TEST_F(UQNumberFormatterTest, UnusableSeparatorInTheEnvironmentFallsBackToComma) {
    basetest::EnvironmentOverride group(L"KOR_GROUP_SEPARATOR", L"7");
    UQNumberFormatter::mf_resetConfiguration();
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1234567)), "1,234,567");
}

TEST_F(UQNumberFormatterTest, ResetForgetsTheConfiguration) {
    UQNumberFormatter::mf_configure(L"d.M.yy", L"H:mm", L'.');
    UQNumberFormatter::mf_resetConfiguration();
    EXPECT_EQ(s(UQNumberFormatter::mf_getConfiguredDateFormat()), "yyyy-MM-dd");
    EXPECT_EQ(s(UQNumberFormatter::mf_formatNumber(1000)), "1,000");
}

TEST_F(UQNumberFormatterTest, ConfigurationChangesWhileOtherThreadsFormat) {
    std::atomic<bool> stop{false};
    std::atomic<int> torn{0};
    std::thread reader([&] {
        while (!stop.load()) {
            const CString date = UQNumberFormatter::mf_formatDate(AFTERNOON);
            if (date != L"2024-03-07" && date != L"07.03.2024")
                ++torn;
        }
    });
    for (int i = 0; i < 2000; ++i) {
        if (i % 2 == 0)
            UQNumberFormatter::mf_configure(L"dd.MM.yyyy", L"HH:mm:ss", L'.');
        else
            UQNumberFormatter::mf_configure(L"yyyy-MM-dd", L"HH:mm:ss", L',');
    }
    stop = true;
    reader.join();
    EXPECT_EQ(torn.load(), 0);
}
