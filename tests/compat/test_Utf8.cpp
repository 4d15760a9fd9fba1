// UTF-8 <-> wide text. Wide text is UTF-16 on both targets (one unit per wchar_t); the UTF-8 side is the
// same.
#include "compat/afx.h"
#include "compat/utf8.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

std::wstring toWide(const std::string& s) {
    return uqfmt::utf8ToWide(s.data(), s.size());
}
std::string toUtf8(const std::wstring& s) {
    return uqfmt::wideToUtf8(s.data(), s.size());
}

const std::wstring REPLACEMENT(1, static_cast<wchar_t>(0xFFFD));

std::wstring units(std::initializer_list<unsigned> _list) {
    std::wstring out;
    for (const unsigned u : _list)
        out += static_cast<wchar_t>(u);
    return out;
}

} // namespace

TEST(Utf8Decode, AsciiIsUnchanged) {
    EXPECT_EQ(L"plain text 123", toWide("plain text 123"));
    EXPECT_EQ(L"", toWide(""));
}

TEST(Utf8Decode, TwoThreeAndFourByteSequences) {
    EXPECT_EQ(L"\u00e4", toWide("\xC3\xA4"));
    EXPECT_EQ(L"\u20ac", toWide("\xE2\x82\xAC"));
    // A surrogate pair on both targets.
    EXPECT_EQ(units({0xD83D, 0xDE00}), toWide("\xF0\x9F\x98\x80"));
    EXPECT_EQ(units({0xDBFF, 0xDFFF}), toWide("\xF4\x8F\xBF\xBF"));
}

TEST(Utf8Decode, EmbeddedZeroIsKept) {
    const std::string in("a\0b", 3);
    EXPECT_EQ(std::wstring(L"a\0b", 3), toWide(in));
}

TEST(Utf8Decode, EveryInvalidByteBecomesOneReplacementCharacter) {
    // A continuation byte with no lead.
    EXPECT_EQ(L"a" + REPLACEMENT + L"b", toWide("a\x80"
                                                "b"));
    // Bytes that never occur in UTF-8.
    EXPECT_EQ(REPLACEMENT + REPLACEMENT, toWide("\xFE\xFF"));
    // An overlong encoding of '/': the lead and then the continuation byte.
    EXPECT_EQ(REPLACEMENT + REPLACEMENT, toWide("\xC0\xAF"));
    // An encoded surrogate.
    EXPECT_EQ(REPLACEMENT + REPLACEMENT + REPLACEMENT, toWide("\xED\xA0\x80"));
    // Beyond U+10FFFF.
    EXPECT_EQ(std::wstring(4, static_cast<wchar_t>(0xFFFD)), toWide("\xF4\x90\x80\x80"));
    // A lead byte whose sequence is cut by the next character.
    EXPECT_EQ(REPLACEMENT + L"A", toWide("\xE2"
                                         "A"));
}

TEST(Utf8Decode, ASequenceCutByTheEndOfTheText) {
    EXPECT_EQ(L"x" + REPLACEMENT + REPLACEMENT, toWide("x\xE2\x82"));
    EXPECT_EQ(L"x" + REPLACEMENT, toWide("x\xC3"));
}

TEST(Utf8Decode, CountedTextStopsAtTheCount) {
    const char text[] = "abc\xC3\xA4zzz";
    EXPECT_EQ(L"abc\u00e4", uqfmt::utf8ToWide(text, 5));
}

TEST(Utf8Encode, AsciiTwoThreeAndFourBytes) {
    EXPECT_EQ("plain", toUtf8(L"plain"));
    EXPECT_EQ("\xC3\xA4", toUtf8(L"\u00e4"));
    EXPECT_EQ("\xDF\xBF", toUtf8(L"\u07ff"));
    EXPECT_EQ("\xE0\xA0\x80", toUtf8(L"\u0800"));
    EXPECT_EQ("\xE2\x82\xAC", toUtf8(L"\u20ac"));
    EXPECT_EQ("\xEF\xBF\xBF", toUtf8(L"\uffff"));
    EXPECT_EQ("\xF0\x9F\x98\x80", toUtf8(L"\U0001F600"));
}

TEST(Utf8Encode, ALoneSurrogateBecomesTheReplacementCharacter) {
    const std::wstring high(1, static_cast<wchar_t>(0xD83D));
    const std::wstring low(1, static_cast<wchar_t>(0xDE00));
    EXPECT_EQ("\xEF\xBF\xBD", toUtf8(high));
    EXPECT_EQ("a\xEF\xBF\xBD"
              "b",
              toUtf8(L"a" + low + L"b"));
    EXPECT_EQ("\xEF\xBF\xBD"
              "b",
              toUtf8(high + L"b"));
}

TEST(Utf8Encode, EmbeddedZeroIsKept) {
    EXPECT_EQ(std::string("a\0b", 3), toUtf8(std::wstring(L"a\0b", 3)));
}

TEST(Utf8RoundTrip, EveryBasicPlaneCharacterOutsideTheSurrogates) {
    std::wstring all;
    for (unsigned c = 1; c < 0x10000; ++c)
        if (c < 0xD800 || c > 0xDFFF)
            all += static_cast<wchar_t>(c);
    const std::string encoded = toUtf8(all);
    EXPECT_EQ(all, toWide(encoded));
}

TEST(Utf8RoundTrip, SupplementaryPlaneCharacters) {
    const std::wstring text = units({0xD800, 0xDC00, ' ', 0xD83D, 0xDE00, ' ', 0xDBFF, 0xDFFF});
    EXPECT_EQ(text, toWide(toUtf8(text)));
    EXPECT_EQ("\xF0\x90\x80\x80 \xF0\x9F\x98\x80 \xF4\x8F\xBF\xBF", toUtf8(text));
}

TEST(Utf8RoundTrip, LoneSurrogatesAreReplacedInUtf8AndKeptInWtf8) {
    const std::wstring text = units({'a', 0xD83D, 'b', 0xDE00, 0xDE00, 0xD83D});
    EXPECT_EQ("a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD",
              toUtf8(text));
    const std::string wtf8 = uqfmt::wideToWtf8(text.data(), text.size());
    EXPECT_EQ("a\xED\xA0\xBD"
              "b\xED\xB8\x80\xED\xB8\x80\xED\xA0\xBD",
              wtf8);
    EXPECT_EQ(text, uqfmt::wtf8ToWide(wtf8.data(), wtf8.size()));
    // A pair in WTF-8 is the pair's one character, as in UTF-8.
    const std::wstring pair = units({0xD83D, 0xDE00});
    EXPECT_EQ("\xF0\x9F\x98\x80", uqfmt::wideToWtf8(pair.data(), pair.size()));
}

TEST(Utf8CString, WideLiteralsBeyondTheBmpBecomeSurrogatePairs) {
    // On Linux a wide literal holds U+1F600 in one 32-bit unit; CString keeps UTF-16, as on Windows.
    const CString s(L"x\U0001F600");
    ASSERT_EQ(3, s.GetLength());
    EXPECT_EQ(static_cast<wchar_t>(0xD83D), s[1]);
    EXPECT_EQ(static_cast<wchar_t>(0xDE00), s[2]);
    CString t(L"a");
    t += L"\U0001F600";
    EXPECT_EQ(3, t.GetLength());
    EXPECT_EQ(s.Mid(1), t.Mid(1));
}

TEST(Utf8CString, ToUtf8AndFromUtf8) {
    const CString s(L"Gr\u00fc\u00dfe \u20ac");
    EXPECT_EQ("Gr\xC3\xBC\xC3\x9F"
              "e \xE2\x82\xAC",
              s.ToUtf8());
    EXPECT_EQ(s, CString::FromUtf8("Gr\xC3\xBC\xC3\x9F"
                                   "e \xE2\x82\xAC"));
    EXPECT_TRUE(CString::FromUtf8("").IsEmpty());
    EXPECT_EQ("", CString().ToUtf8());
}

// Native names: every byte that is not UTF-8 is kept as U+DC80 + byte and comes back as that byte.
TEST(NativeNames, ALatin1ByteIsKeptAndComesBackAsItWas) {
    const std::string name = "caf\xE9 \xC3\xA9t\xE9.txt";
    const std::wstring wide = uqfmt::nativeToWide(name.data(), name.size());
    EXPECT_EQ(wide,
              (std::wstring{L'c', L'a', L'f', static_cast<wchar_t>(0xDCE9), L' ', static_cast<wchar_t>(0xE9),
                            L't', static_cast<wchar_t>(0xDCE9), L'.', L't', L'x', L't'}));
    EXPECT_EQ(uqfmt::wideToNative(wide.data(), wide.size()), name);
}

TEST(NativeNames, EveryByteSequenceRoundTrips) {
    std::string bytes;
    for (int i = 1; i < 256; ++i)
        bytes += static_cast<char>(i);
    bytes += "\xF0\x9F\x98\x80\xED\xA0\x80\xC0\xAF\xE2\x82";
    const std::wstring wide = uqfmt::nativeToWide(bytes.data(), bytes.size());
    EXPECT_EQ(uqfmt::wideToNative(wide.data(), wide.size()), bytes);
}

TEST(NativeNames, ValidUtf8AndAReplacementCharacterItselfAreUnchanged) {
    const std::string text = "\xC3\x84rchiv \xEF\xBF\xBD \xF0\x9F\x98\x80";
    const std::wstring wide = uqfmt::nativeToWide(text.data(), text.size());
    EXPECT_EQ(wide, toWide(text));
    EXPECT_EQ(uqfmt::wideToNative(wide.data(), wide.size()), text);
}
