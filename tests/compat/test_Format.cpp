// The one formatting engine: Windows wide-printf meaning on both targets, type-safe arguments.
#include "compat/afx.h"
#include "compat/uqformat.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cwchar>
#include <limits>
#include <string>

namespace {

template <class... A> std::wstring fmt(const wchar_t* f, const A&... args) {
    return uqfmt::format(f, args...);
}

enum Colour { RED = 2, GREEN = 7 };
enum class Size : unsigned short { LARGE = 65535 };

} // namespace

TEST(FormatText, PlainTextAndPercentSigns) {
    EXPECT_EQ(L"", fmt(L""));
    EXPECT_EQ(L"no conversions", fmt(L"no conversions"));
    EXPECT_EQ(L"100%", fmt(L"100%%"));
    EXPECT_EQ(L"%%", fmt(L"%%%%"));
    EXPECT_EQ(L"a%b", fmt(L"a%%b", 1));
}

TEST(FormatText, NullFormatGivesNothing) {
    EXPECT_EQ(L"", fmt(static_cast<const wchar_t*>(nullptr), 1));
}

TEST(FormatSigned, DecimalWithFlagsWidthAndPrecision) {
    EXPECT_EQ(L"42", fmt(L"%d", 42));
    EXPECT_EQ(L"-42", fmt(L"%d", -42));
    EXPECT_EQ(L"42", fmt(L"%i", 42));
    EXPECT_EQ(L"   42", fmt(L"%5d", 42));
    EXPECT_EQ(L"42   |", fmt(L"%-5d|", 42));
    EXPECT_EQ(L"-0042", fmt(L"%05d", -42));
    EXPECT_EQ(L"+42", fmt(L"%+d", 42));
    EXPECT_EQ(L"-42", fmt(L"%+d", -42));
    EXPECT_EQ(L" 42", fmt(L"% d", 42));
    EXPECT_EQ(L"+42", fmt(L"%+ d", 42));
    EXPECT_EQ(L"007", fmt(L"%.3d", 7));
    EXPECT_EQ(L"-007", fmt(L"%.3d", -7));
    EXPECT_EQ(L"  007", fmt(L"%5.3d", 7));
    EXPECT_EQ(L"  007", fmt(L"%05.3d", 7)); // a precision turns the 0 flag off
    EXPECT_EQ(L"007  |", fmt(L"%-05.3d|", 7));
    EXPECT_EQ(L"", fmt(L"%.0d", 0));
    EXPECT_EQ(L"   ", fmt(L"%3.0d", 0));
    EXPECT_EQ(L"0", fmt(L"%d", 0));
    EXPECT_EQ(L"12345", fmt(L"%3d", 12345));
}

TEST(FormatSigned, ThirtyTwoBitLimits) {
    EXPECT_EQ(L"2147483647", fmt(L"%d", std::numeric_limits<std::int32_t>::max()));
    EXPECT_EQ(L"-2147483648", fmt(L"%d", std::numeric_limits<std::int32_t>::min()));
}

TEST(FormatSigned, SixtyFourBitValuesAreCutToThirtyTwoBits) {
    EXPECT_EQ(L"1", fmt(L"%d", 0x100000001LL));
    EXPECT_EQ(L"-1", fmt(L"%d", 0xFFFFFFFFull));
    EXPECT_EQ(L"-2147483648", fmt(L"%d", 2147483648LL));
    EXPECT_EQ(L"-2147483648", fmt(L"%ld", 2147483648LL)); // long is 32 bits on Windows
    EXPECT_EQ(L"0", fmt(L"%i", 0x100000000LL));
}

TEST(FormatUnsigned, DecimalAndThirtyTwoBitCut) {
    EXPECT_EQ(L"42", fmt(L"%u", 42u));
    EXPECT_EQ(L"4294967295", fmt(L"%u", -1));
    EXPECT_EQ(L"0", fmt(L"%u", 4294967296ull));
    EXPECT_EQ(L"4294967295", fmt(L"%lu", 4294967295ul));
    EXPECT_EQ(L"4294967295", fmt(L"%lu", 4294967295ull));
    EXPECT_EQ(L"0", fmt(L"%lu", 4294967296ull));
    EXPECT_EQ(L"7", fmt(L"%+u", 7u)); // signs belong to signed conversions only
}

TEST(FormatUnsigned, FixedWidthDatePieces) {
    EXPECT_EQ(L"0007", fmt(L"%4.4u", 7u));
    EXPECT_EQ(L"2024", fmt(L"%4.4u", 2024u));
    EXPECT_EQ(L"12345", fmt(L"%4.4u", 12345u));
    EXPECT_EQ(L"005", fmt(L"%3.3u", 5u));
    EXPECT_EQ(L"999", fmt(L"%3.3u", 999u));
    EXPECT_EQ(L"09", fmt(L"%2.2u", 9));
    EXPECT_EQ(L"2024-02-29 23:59:59.999",
              fmt(L"%4.4u-%2.2u-%2.2u %2.2u:%2.2u:%2.2u.%3.3u", 2024, 2, 29, 23, 59, 59, 999));
}

TEST(FormatHex, LowerUpperAlternateAndPadded) {
    EXPECT_EQ(L"ff", fmt(L"%x", 255));
    EXPECT_EQ(L"FF", fmt(L"%X", 255));
    EXPECT_EQ(L"0xff", fmt(L"%#x", 255));
    EXPECT_EQ(L"0XFF", fmt(L"%#X", 255));
    EXPECT_EQ(L"0", fmt(L"%#x", 0)); // no prefix for zero
    EXPECT_EQ(L"0000001f", fmt(L"%8.8x", 0x1F));
    EXPECT_EQ(L"0000001F", fmt(L"%08X", 0x1F));
    EXPECT_EQ(L"0x001f", fmt(L"%#06x", 0x1F));
    EXPECT_EQ(L"    1f", fmt(L"%6x", 0x1F));
    EXPECT_EQ(L"ffffffff", fmt(L"%x", -1));
    EXPECT_EQ(L"80070005", fmt(L"%x", static_cast<long>(0x80070005L)));
}

TEST(FormatHex, SixtyFourBitValuesAreCutToThirtyTwoBits) {
    EXPECT_EQ(L"56789abc", fmt(L"%x", 0x123456789ABCull));
    EXPECT_EQ(L"56789ABC", fmt(L"%X", 0x123456789ABCull));
    EXPECT_EQ(L"123456789ABC", fmt(L"%I64X", 0x123456789ABCull));
    EXPECT_EQ(L"ffffffffffffffff", fmt(L"%I64x", -1LL));
}

TEST(FormatOctal, PlainAndAlternate) {
    EXPECT_EQ(L"10", fmt(L"%o", 8));
    EXPECT_EQ(L"010", fmt(L"%#o", 8));
    EXPECT_EQ(L"0", fmt(L"%#o", 0));
    EXPECT_EQ(L"37777777777", fmt(L"%o", -1));
}

TEST(FormatLengths, SixtyFourBitModifiers) {
    const std::int64_t mn = std::numeric_limits<std::int64_t>::min();
    EXPECT_EQ(L"-9223372036854775808", fmt(L"%I64d", mn));
    EXPECT_EQ(L"9223372036854775807", fmt(L"%I64d", std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(L"18446744073709551615", fmt(L"%I64u", std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(L"-9223372036854775808", fmt(L"%lld", mn));
    EXPECT_EQ(L"18446744073709551615", fmt(L"%llu", std::numeric_limits<std::uint64_t>::max()));
    EXPECT_EQ(L"4294967296", fmt(L"%Iu", static_cast<std::size_t>(4294967296ull)));
    EXPECT_EQ(L"4294967296", fmt(L"%zu", static_cast<std::size_t>(4294967296ull)));
    EXPECT_EQ(L"1", fmt(L"%I32d", 0x100000001LL));
    EXPECT_EQ(L"   -9223372036854775808", fmt(L"%23I64d", mn));
    EXPECT_EQ(L"00000000000000000042", fmt(L"%020I64d", 42LL));
    EXPECT_EQ(L"-123", fmt(L"%I64d", -123)); // a 32-bit argument is widened with its sign
}

TEST(FormatLengths, ShortAndCharModifiers) {
    EXPECT_EQ(L"-1", fmt(L"%hd", 65535));
    EXPECT_EQ(L"1", fmt(L"%hu", 65537));
    EXPECT_EQ(L"ffff", fmt(L"%hx", -1));
    EXPECT_EQ(L"44", fmt(L"%hhd", 300));
    EXPECT_EQ(L"-1", fmt(L"%hhd", 255));
    EXPECT_EQ(L"255", fmt(L"%hhu", -1));
}

TEST(FormatStar, WidthAndPrecisionFromArguments) {
    EXPECT_EQ(L"   42", fmt(L"%*d", 5, 42));
    EXPECT_EQ(L"42   |", fmt(L"%-*d|", 5, 42));
    EXPECT_EQ(L"42   |", fmt(L"%*d|", -5, 42)); // a negative width means left-aligned
    EXPECT_EQ(L"ab", fmt(L"%.*s", 2, L"abcdef"));
    EXPECT_EQ(L"abcdef", fmt(L"%.*s", -1, L"abcdef")); // a negative precision is none
    EXPECT_EQ(L"  007", fmt(L"%*.*d", 5, 3, 7));
}

TEST(FormatStar, WidthsAndPrecisionsAreLimitedToOneHundredThousand) {
    EXPECT_EQ(100000u, fmt(L"%200000d", 1).size());
    EXPECT_EQ(100000u, fmt(L"%*d", 2000000, 1).size());
    EXPECT_EQ(100000u, fmt(L"%.9999999d", 1).size());
    EXPECT_EQ(100000u, fmt(L"%99999999999999999999d", 1).size());
}

TEST(FormatWideString, PlainPaddedAndCut) {
    EXPECT_EQ(L"abc", fmt(L"%s", L"abc"));
    EXPECT_EQ(L"   abc", fmt(L"%6s", L"abc"));
    EXPECT_EQ(L"abc   |", fmt(L"%-6s|", L"abc"));
    EXPECT_EQ(L"ab", fmt(L"%.2s", L"abc"));
    EXPECT_EQ(L"    ab", fmt(L"%6.2s", L"abc"));
    EXPECT_EQ(L"abc", fmt(L"%ls", L"abc"));
    EXPECT_EQ(L"abc", fmt(L"%ws", L"abc"));
    EXPECT_EQ(L"", fmt(L"%s", L""));
}

TEST(FormatWideString, CStringStdWstringAndBufferArguments) {
    const CString s(L"cstring");
    EXPECT_EQ(L"[cstring]", fmt(L"[%s]", s));
    EXPECT_EQ(L"[wstring]", fmt(L"[%s]", std::wstring(L"wstring")));
    wchar_t buffer[8] = L"buffer";
    EXPECT_EQ(L"[buffer]", fmt(L"[%s]", buffer));
    wchar_t* mutablePointer = buffer;
    EXPECT_EQ(L"[buffer]", fmt(L"[%s]", mutablePointer));
    EXPECT_EQ(L"[cstr]", fmt(L"[%.4s]", s));
}

TEST(FormatWideString, NullPointerIsShownAsNull) {
    const wchar_t* none = nullptr;
    EXPECT_EQ(L"(null)", fmt(L"%s", none));
    EXPECT_EQ(L"  (null)", fmt(L"%8s", none));
    EXPECT_EQ(L"(nu", fmt(L"%.3s", none));
    EXPECT_EQ(L"(null)", fmt(L"%s", nullptr));
}

TEST(FormatWideString, PercentSignsInAnArgumentAreData) {
    EXPECT_EQ(L"100% done %s %d %%", fmt(L"%s", L"100% done %s %d %%"));
    EXPECT_EQ(L"<%s>|7", fmt(L"%s|%d", CString(L"<%s>"), 7));
}

TEST(FormatNarrowString, UpperSAndHsTakeNarrowText) {
    EXPECT_EQ(L"narrow", fmt(L"%S", "narrow"));
    EXPECT_EQ(L"narrow", fmt(L"%hs", "narrow"));
    EXPECT_EQ(L"  na", fmt(L"%4.2hs", "narrow"));
    EXPECT_EQ(L"std", fmt(L"%S", std::string("std")));
    const char* none = nullptr;
    EXPECT_EQ(L"(null)", fmt(L"%hs", none));
    // Narrow text is UTF-8.
    EXPECT_EQ(L"\u00e4\u20ac", fmt(L"%S", "\xC3\xA4\xE2\x82\xAC"));
}

TEST(FormatChar, WideCharacter) {
    EXPECT_EQ(L"A", fmt(L"%c", L'A'));
    EXPECT_EQ(L"\u00e9", fmt(L"%c", L'\u00e9'));
    EXPECT_EQ(L"\u20ac", fmt(L"%c", L'\u20ac'));
    EXPECT_EQ(L"  x", fmt(L"%3c", L'x'));
    EXPECT_EQ(L"x  |", fmt(L"%-3c|", L'x'));
    EXPECT_EQ(L"2024-02-29T10:11:12",
              fmt(L"%4.4u-%2.2u-%2.2u%c%2.2u:%2.2u:%2.2u", 2024, 2, 29, L'T', 10, 11, 12));
}

TEST(FormatChar, NumbersAreCharacterCodes) {
    EXPECT_EQ(L"A", fmt(L"%c", 65));
    EXPECT_EQ(L"\u20ac", fmt(L"%c", 0x20AC));
    EXPECT_EQ(L"A", fmt(L"%c", 0x10041)); // cut to the 16 bits of a Windows wchar_t
}

#if WCHAR_MAX > 0xFFFF
TEST(FormatChar, AWideCharacterIsNeverCutWhereWcharTIsWider) {
    const wchar_t grin = static_cast<wchar_t>(0x1F600);
    EXPECT_EQ(std::wstring(1, grin), fmt(L"%c", grin));
}
#endif

TEST(FormatChar, UpperCAndHcTakeANarrowCharacter) {
    EXPECT_EQ(L"A", fmt(L"%C", 'A'));
    EXPECT_EQ(L"A", fmt(L"%hc", 'A'));
    EXPECT_EQ(L"A", fmt(L"%hc", 0x141)); // cut to one byte
}

TEST(FormatPointer, SixteenUpperCaseHexDigits) {
    const void* p = reinterpret_cast<const void*>(static_cast<std::uintptr_t>(0x1234ABCDu));
    EXPECT_EQ(L"000000001234ABCD", fmt(L"%p", p));
    EXPECT_EQ(L"0000000000000000", fmt(L"%p", static_cast<const void*>(nullptr)));
    EXPECT_EQ(L"[  000000001234ABCD]", fmt(L"[%18p]", p));
    EXPECT_EQ(L"[000000001234ABCD  ]", fmt(L"[%-18p]", p));
    int local = 0;
    EXPECT_EQ(16u, fmt(L"%p", &local).size());
}

TEST(FormatPointer, TextArgumentsShowTheirAddress) {
    const wchar_t* wide = L"abc";
    const char* narrow = "abc";
    EXPECT_EQ(fmt(L"%p", static_cast<const void*>(wide)), fmt(L"%p", wide));
    EXPECT_EQ(fmt(L"%p", static_cast<const void*>(narrow)), fmt(L"%p", narrow));
    EXPECT_NE(L"0000000000000000", fmt(L"%p", wide));
}

TEST(FormatFloat, FixedExponentAndGeneral) {
    EXPECT_EQ(L"3.14", fmt(L"%.2f", 3.14159));
    EXPECT_EQ(L"3.141590", fmt(L"%f", 3.14159));
    EXPECT_EQ(L"  3.1", fmt(L"%5.1f", 3.14159));
    EXPECT_EQ(L"-2.50", fmt(L"%.2f", -2.5));
    EXPECT_EQ(L"1.235e+03", fmt(L"%.3e", 1234.56));
    EXPECT_EQ(L"0.0001", fmt(L"%g", 0.0001));
    EXPECT_EQ(L"3.000000", fmt(L"%f", 3));
}

TEST(FormatArguments, SurplusArgumentsAreIgnored) {
    EXPECT_EQ(L"1", fmt(L"%d", 1, 2, 3));
    EXPECT_EQ(L"text", fmt(L"text", L"unused", 42));
    CString s;
    s.Format(L"%s", L"used", L"unused");
    EXPECT_EQ(CString(L"used"), s);
}

TEST(FormatArguments, AMissingArgumentRendersAsNothing) {
    EXPECT_EQ(L"1-", fmt(L"%d-%d", 1));
    EXPECT_EQ(L"ab", fmt(L"a%sb"));
    EXPECT_EQ(L"[]", fmt(L"[%5d]"));
    EXPECT_EQ(L"x=", fmt(L"x=%c"));
}

TEST(FormatArguments, UnknownConversionIsCopiedAndTakesNoArgument) {
    EXPECT_EQ(L"%q 5", fmt(L"%q %d", 5));
    EXPECT_EQ(L"%5k|7", fmt(L"%5k|%d", 7));
    EXPECT_EQ(L"%-08.3y", fmt(L"%-08.3y"));
}

TEST(FormatArguments, ATrailingPercentIsKept) {
    EXPECT_EQ(L"abc%", fmt(L"abc%"));
    EXPECT_EQ(L"abc%-5", fmt(L"abc%-5", 1));
}

TEST(FormatArguments, CountConversionWritesNothingAndTakesItsArgument) {
    int n = 7;
    EXPECT_EQ(L"ab5", fmt(L"a%nb%d", &n, 5));
    EXPECT_EQ(7, n);
}

TEST(FormatMismatch, TheArgumentTypeDecides) {
    // A number for %s is shown as the number.
    EXPECT_EQ(L"42", fmt(L"%s", 42));
    EXPECT_EQ(L"-42", fmt(L"%s", -42));
    EXPECT_EQ(L"18446744073709551615", fmt(L"%s", std::numeric_limits<std::uint64_t>::max()));
    // Text for an integer conversion is 0.
    EXPECT_EQ(L"0", fmt(L"%d", L"text"));
    // Wide text for %S and narrow text for %s are both shown as text.
    EXPECT_EQ(L"wide", fmt(L"%S", L"wide"));
    EXPECT_EQ(L"narrow", fmt(L"%s", "narrow"));
    // A wide character for %d is its code.
    EXPECT_EQ(L"65", fmt(L"%d", L'A'));
    // Text for %c is its first character.
    EXPECT_EQ(L"t", fmt(L"%c", L"text"));
}

TEST(FormatMismatch, FloatingPointForAnIntegerConversionIsTruncated) {
    EXPECT_EQ(L"3", fmt(L"%d", 3.9));
    EXPECT_EQ(L"-3", fmt(L"%d", -3.9));
    EXPECT_EQ(L"0", fmt(L"%d", std::numeric_limits<double>::quiet_NaN()));
    EXPECT_EQ(L"9223372036854775807", fmt(L"%I64d", 1e300));
    EXPECT_EQ(L"-9223372036854775808", fmt(L"%I64d", -1e300));
    EXPECT_EQ(L"9223372036854775807", fmt(L"%I64d", std::numeric_limits<double>::infinity()));
}

TEST(FormatMismatch, BoolsAndEnumsAreNumbers) {
    EXPECT_EQ(L"1 0", fmt(L"%d %d", true, false));
    EXPECT_EQ(L"2 7", fmt(L"%d %u", RED, GREEN));
    EXPECT_EQ(L"65535", fmt(L"%u", Size::LARGE));
}

TEST(FormatCString, FormatAndAppendFormatUseTheEngine) {
    CString s;
    s.Format(L"%s has %d files (%I64d bytes)", CString(L"C:\\data"), 3, 5000000000LL);
    EXPECT_EQ(CString(L"C:\\data has 3 files (5000000000 bytes)"), s);
    s.AppendFormat(L", %3.3u%%", 7u);
    EXPECT_EQ(CString(L"C:\\data has 3 files (5000000000 bytes), 007%"), s);
}
