// File sizes as decimal numbers and as display texts.
#include "support/LogCheck.h"

#include <climits>

namespace {

std::string display(long long bytes) {
    return UQFileSize(bytes).mf_toDisplayString().ToUtf8();
}

} // namespace

TEST(UQFileSize, ToStringIsTheSignedDecimal) {
    EXPECT_EQ(UQFileSize().mf_toString().ToUtf8(), "0");
    EXPECT_EQ(UQFileSize(-5).mf_toString().ToUtf8(), "-5");
    EXPECT_EQ(UQFileSize(LLONG_MAX).mf_toString().ToUtf8(), "9223372036854775807");
    EXPECT_EQ(UQFileSize(LLONG_MIN).mf_toString().ToUtf8(), "-9223372036854775808");
}

TEST(UQFileSize, SmallSizesAreShownInBytes) {
    EXPECT_EQ(display(0), "0 Bytes");
    EXPECT_EQ(display(1), "1 Byte");
    EXPECT_EQ(display(1023), "1023 Bytes");
}

TEST(UQFileSize, LargerSizesHaveOneDecimalInTheirUnit) {
    EXPECT_EQ(display(1024), "1.0 KB");
    EXPECT_EQ(display(1536), "1.5 KB");
    EXPECT_EQ(display(5LL << 30), "5.0 GB");
    EXPECT_EQ(display(2LL << 40), "2.0 TB");
}

TEST(UQFileSize, HalfTenthsRoundUp) {
    EXPECT_EQ(display(1310720), "1.3 MB"); // 1.25 MB
    EXPECT_EQ(display(1126), "1.1 KB");    // 1.0996 KB
    EXPECT_EQ(display(1075), "1.0 KB");    // 1.0498 KB
}

TEST(UQFileSize, RoundingUpToTheNextUnitShowsThatUnit) {
    EXPECT_EQ(display(1048575), "1.0 MB"); // 1023.999 KB
    EXPECT_EQ(display(1048524), "1023.9 KB");
}

TEST(UQFileSize, TerabytesAreTheLargestUnit) {
    EXPECT_EQ(display(1024LL << 40), "1024.0 TB");
    EXPECT_EQ(display(LLONG_MAX), "8388608.0 TB");
}

TEST(UQFileSize, NegativeSizesKeepTheirSign) {
    EXPECT_EQ(display(-1536), "-1.5 KB");
    EXPECT_EQ(display(-1), "-1 Byte");
    EXPECT_EQ(display(LLONG_MIN), "-8388608.0 TB");
}

TEST(UQFileSize, EqualityComparesTheBytes) {
    EXPECT_TRUE(UQFileSize(42) == UQFileSize(42));
    EXPECT_FALSE(UQFileSize(42) == UQFileSize(43));
    EXPECT_EQ(UQFileSize(42).mf_getValue(), 42);
}
