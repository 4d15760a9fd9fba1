// The name rules for names read from the storage server: every crafted name is its own case, refused with
// the rule it breaks; ordinary names, non-Latin ones included, pass.
#include "UQServerName.h"

#include "compat/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

struct Crafted {
    const char* label;  // the case's name
    std::wstring name;  // what the server hands out
    std::string reason; // a part of the reason the refusal gives
};

std::string utf8Of(const std::wstring& _sText) {
    return uqfmt::wideToUtf8(_sText.data(), _sText.size());
}

void PrintTo(const Crafted& _crafted, std::ostream* _pOut) {
    *_pOut << _crafted.label;
}

class RefusedServerName : public ::testing::TestWithParam<Crafted> {};

TEST_P(RefusedServerName, IsRefusedWithItsRule) {
    const Crafted& crafted = GetParam();
    std::wstring sReason;
    EXPECT_EQ(UQServerName::mf_check(crafted.name, sReason), 0) << "accepted: " << utf8Of(crafted.name);
    EXPECT_NE(utf8Of(sReason).find(crafted.reason), std::string::npos)
        << "reason: '" << utf8Of(sReason) << "', expected it to contain '" << crafted.reason << "'";
}

const Crafted REFUSED[] = {
    {"ParentParts", L"..\\..\\x.txt", "part '..' leaves its folder"},
    {"ParentPartInside", L"a\\..\\..\\x.txt", "part '..' leaves its folder"},
    {"CurrentPart", L"a\\.\\x.txt", "part '.' leaves its folder"},
    {"RootRelative", L"\\x.txt", "absolute path"},
    {"DriveAbsolute", L"C:\\Windows\\x.txt", "names a drive"},
    {"DriveRelative", L"D:x.txt", "names a drive"},
    {"UncShare", L"\\\\host\\share\\x", "absolute path"},
    {"LongPathPrefix", L"\\\\?\\C:\\x", "absolute path"},
    {"DeviceNamespace", L"\\\\.\\x", "absolute path"},
    {"ForwardSlash", L"a/b.txt", "contains '/'"},
    {"MixedSeparators", L"a\\b/..\\c.txt", "contains '/'"},
    {"SlashAbsolute", L"/etc/passwd", "contains '/'"},
    {"AlternateDataStream", L"x.txt:stream", "alternate data stream"},
    {"AlternateDataStreamOfFolder", L"ab:c\\x.txt", "alternate data stream"},
    {"DefaultStreamType", L"x.txt::$DATA", "alternate data stream"},
    {"DeviceCon", L"CON", "is a device name"},
    {"DeviceNul", L"NUL", "is a device name"},
    {"DeviceAux", L"AUX", "is a device name"},
    {"DevicePrn", L"PRN", "is a device name"},
    {"DeviceCom1", L"COM1", "is a device name"},
    {"DeviceCom9", L"COM9", "is a device name"},
    {"DeviceLpt1", L"LPT1", "is a device name"},
    {"DeviceLpt9", L"LPT9", "is a device name"},
    {"DeviceWithExtension", L"con.txt", "is a device name"},
    {"DeviceWithTwoExtensions", L"nul.tar.gz", "is a device name"},
    {"DeviceLowerCase", L"aux", "is a device name"},
    {"DeviceBeforeSpaces", L"COM3 .log", "is a device name"},
    {"DeviceAsFolder", L"docs\\LPT5\\x.txt", "part 'LPT5' is a device name"},
    {"DeviceAsLastPart", L"docs\\prn.doc", "part 'prn.doc' is a device name"},
    {"DeviceSuperscriptDigit", L"COM\u00B9", "is a device name"},
    {"DeviceConsoleInput", L"CONIN$", "is a device name"},
    {"TrailingDot", L"x.txt.", "ends in a dot or a space"},
    {"TrailingSpace", L"x.txt ", "ends in a dot or a space"},
    {"FolderWithTrailingDot", L"a.\\x.txt", "part 'a.' ends in a dot or a space"},
    {"FolderWithTrailingSpace", L"a \\x.txt", "part 'a ' ends in a dot or a space"},
    {"ControlCharacter",
     L"a\x01"
     L"b.txt",
     "control character 0x01"},
    {"Tab", L"a\tb.txt", "control character 0x09"},
    {"LineFeed", L"a\nb.txt", "control character 0x0A"},
    {"Delete",
     L"a\x7F"
     L"b.txt",
     "control character 0x7F"},
    {"NulInside", std::wstring(L"a\0b.txt", 7), "control character 0x00"},
    {"Wildcard", L"a*.txt", "does not allow in names"},
    {"QuestionMark", L"a?.txt", "does not allow in names"},
    {"Pipe", L"a|b.txt", "does not allow in names"},
    {"AngleBracket", L"a<b.txt", "does not allow in names"},
    {"Quote", L"a\"b.txt", "does not allow in names"},
    {"EmptyName", L"", "empty name"},
    {"EmptyPart", L"a\\\\b.txt", "empty part"},
    {"TrailingSeparator", L"a\\", "empty part"},
    {"OverTheLimit", std::wstring(32768, L'a'), "longer than 32767"},
    {"OverTheLimitInParts", std::wstring(16384, L'a') + L"\\" + std::wstring(16383, L'b'),
     "longer than 32767"},
};

INSTANTIATE_TEST_SUITE_P(Crafted, RefusedServerName, ::testing::ValuesIn(REFUSED),
                         [](const ::testing::TestParamInfo<Crafted>& _info) { return _info.param.label; });

struct Plain {
    const char* label;
    std::wstring name;
};

void PrintTo(const Plain& _plain, std::ostream* _pOut) {
    *_pOut << _plain.label;
}

class AcceptedServerName : public ::testing::TestWithParam<Plain> {};

TEST_P(AcceptedServerName, Passes) {
    std::wstring sReason;
    EXPECT_EQ(UQServerName::mf_check(GetParam().name, sReason), 1) << utf8Of(sReason);
}

const Plain ACCEPTED[] = {
    {"PlainFile", L"x.txt"},
    {"NestedFile", L"Finance\\2024\\report.xlsx"},
    {"NonLatin", L"\u00DCbersicht\\\u041E\u0442\u0447\u0451\u0442\u044B\\\u5831\u544A\\file.txt"},
    {"DotsInside", L"a..b\\.hidden"},
    {"DeviceNameAsPrefix", L"CONSOLE.txt"},
    {"PortNumberTen", L"COM10.txt"},
    {"DeviceNameInsideName", L"my CON.txt"},
    {"SpacesInside", L"a folder\\a file.txt"},
    {"LeadingSpace", L" x.txt"},
    {"AtTheLimit", std::wstring(32767, L'a')},
};

INSTANTIATE_TEST_SUITE_P(Plain, AcceptedServerName, ::testing::ValuesIn(ACCEPTED),
                         [](const ::testing::TestParamInfo<Plain>& _info) { return _info.param.label; });

} // namespace
