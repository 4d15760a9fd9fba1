// Stub files and stored-version headers are read from disk that anyone may have written: the parser takes
// exactly the texts the client writes and refuses everything else with a reason.
#include "UQVersionRecord.h"

#include "compat/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace {

const std::string HASH = "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad";

std::string utf8Of(const std::wstring& _sText) {
    return uqfmt::wideToUtf8(_sText.data(), _sText.size());
}

UQVersionRecord sampleRecord() {
    UQVersionRecord record;
    record.m_sObjectPath = L"C:\\data\\\u00DCbersicht\\\u5831\u544A.txt";
    record.m_sName = L"\u00DCbersicht\\\u5831\u544A.txt";
    record.m_uVersion = 3;
    record.m_uVolume = 1;
    record.m_uPosition = 18446744073709551615ull;
    record.m_uSize = 12345;
    record.m_sSha256 = HASH;
    return record;
}

const std::string STUB = "KORSTUB 1\n"
                         "object=C:\\data\\x.txt\n"
                         "version=3\n"
                         "access=1:42\n"
                         "size=12345\n"
                         "sha256=" +
                         HASH + "\n";

const std::string HEADER = "KORDATA 1\n"
                           "object=C:\\data\\x.txt\n"
                           "name=x.txt\n"
                           "version=3\n"
                           "size=3\n"
                           "sha256=" +
                           HASH + "\n\n";

std::string refusedStub(const std::string& _sText) {
    UQVersionRecord record;
    std::wstring sReason;
    EXPECT_EQ(UQVersionRecord::mf_parseStub(_sText, record, sReason), 0) << "accepted:\n" << _sText;
    return utf8Of(sReason);
}

std::string refusedHeader(const std::string& _sText) {
    UQVersionRecord record;
    std::wstring sReason;
    std::size_t nBytes = 0;
    EXPECT_EQ(UQVersionRecord::mf_parseHeader(_sText, record, nBytes, sReason), 0) << "accepted:\n" << _sText;
    return utf8Of(sReason);
}

std::string replaced(std::string _sText, const std::string& _sOld, const std::string& _sNew) {
    const std::size_t nAt = _sText.find(_sOld);
    EXPECT_NE(nAt, std::string::npos) << _sOld;
    if (nAt != std::string::npos)
        _sText.replace(nAt, _sOld.size(), _sNew);
    return _sText;
}

TEST(UQVersionRecord, StubRoundTripsEveryField) {
    const UQVersionRecord written = sampleRecord();
    UQVersionRecord read;
    std::wstring sReason;
    ASSERT_EQ(UQVersionRecord::mf_parseStub(written.mf_formatStub(), read, sReason), 1) << utf8Of(sReason);
    EXPECT_EQ(read.m_sObjectPath, written.m_sObjectPath);
    EXPECT_EQ(read.m_uVersion, 3u);
    EXPECT_EQ(read.m_uVolume, 1u);
    EXPECT_EQ(read.m_uPosition, 18446744073709551615ull);
    EXPECT_EQ(read.m_uSize, 12345u);
    EXPECT_EQ(read.m_sSha256, HASH);
    // The stub names no file name of its own: that is the file it lies in.
    EXPECT_TRUE(read.m_sName.empty());
}

TEST(UQVersionRecord, HeaderRoundTripsAndTellsWhereTheContentBegins) {
    const UQVersionRecord written = sampleRecord();
    const std::string sHeader = written.mf_formatHeader();
    UQVersionRecord read;
    std::wstring sReason;
    std::size_t nBytes = 0;
    ASSERT_EQ(UQVersionRecord::mf_parseHeader(sHeader + "content", read, nBytes, sReason), 1)
        << utf8Of(sReason);
    EXPECT_EQ(nBytes, sHeader.size());
    EXPECT_EQ(read.m_sObjectPath, written.m_sObjectPath);
    EXPECT_EQ(read.m_sName, written.m_sName);
    EXPECT_EQ(read.m_uVersion, 3u);
    EXPECT_EQ(read.m_uSize, 12345u);
    EXPECT_EQ(read.m_sSha256, HASH);
}

TEST(UQVersionRecord, ContentThatLooksLikeAHeaderLineDoesNotConfuseTheHeader) {
    UQVersionRecord read;
    std::wstring sReason;
    std::size_t nBytes = 0;
    const std::string sText = HEADER + "sha256=0000\n\nKORDATA 1\n";
    ASSERT_EQ(UQVersionRecord::mf_parseHeader(sText, read, nBytes, sReason), 1) << utf8Of(sReason);
    EXPECT_EQ(nBytes, HEADER.size());
    EXPECT_EQ(read.m_sSha256, HASH);
}

TEST(UQVersionRecord, StubCutAtAnyByteIsRefused) {
    for (std::size_t n = 0; n < STUB.size(); ++n) {
        UQVersionRecord record;
        std::wstring sReason;
        EXPECT_EQ(UQVersionRecord::mf_parseStub(STUB.substr(0, n), record, sReason), 0) << "cut at " << n;
        EXPECT_FALSE(sReason.empty()) << "cut at " << n;
    }
}

TEST(UQVersionRecord, HeaderCutAtAnyByteIsRefused) {
    for (std::size_t n = 0; n < HEADER.size(); ++n) {
        UQVersionRecord record;
        std::wstring sReason;
        std::size_t nBytes = 0;
        EXPECT_EQ(UQVersionRecord::mf_parseHeader(HEADER.substr(0, n), record, nBytes, sReason), 0)
            << "cut at " << n;
        EXPECT_FALSE(sReason.empty()) << "cut at " << n;
    }
}

TEST(UQVersionRecord, TruncatedStubNamesTheMissingLine) {
    EXPECT_EQ(refusedStub(STUB.substr(0, STUB.find("size="))), "cut short: line 'size=' is missing");
}

TEST(UQVersionRecord, OrdinaryFileIsNoStub) {
    EXPECT_EQ(refusedStub("Quarterly report\n"), "not a stub file (its first line is not \"KORSTUB 1\")");
    EXPECT_EQ(UQVersionRecord::mf_looksLikeStub("Quarterly report\n"), 0);
    EXPECT_EQ(UQVersionRecord::mf_looksLikeStub(STUB), 1);
}

TEST(UQVersionRecord, StubOfAnotherFormatVersionIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "KORSTUB 1", "KORSTUB 2")),
              "not a stub file (its first line is not \"KORSTUB 1\")");
}

TEST(UQVersionRecord, StubLargerThanAStubCanBeIsRefused) {
    EXPECT_EQ(refusedStub(STUB + std::string(UQVersionRecord::MAX_STUB_BYTES, 'x')),
              "larger than a stub file can be");
}

TEST(UQVersionRecord, TextAfterTheLastLineIsRefused) {
    EXPECT_EQ(refusedStub(STUB + "extra=1\n"), "unexpected text after line 6");
}

TEST(UQVersionRecord, WindowsLineEndsAreRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "version=3\n", "version=3\r\n")),
              "bad value of 'version' on line 3");
}

TEST(UQVersionRecord, LinesOutOfOrderAreRefused) {
    EXPECT_EQ(
        refusedStub(replaced(replaced(STUB, "version=3\n", ""), "size=12345\n", "size=12345\nversion=3\n")),
        "line 3 is not 'version='");
}

TEST(UQVersionRecord, NegativeVersionIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "version=3", "version=-3")), "bad value of 'version' on line 3");
}

TEST(UQVersionRecord, VersionWithLeadingBlankIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "version=3", "version= 3")), "bad value of 'version' on line 3");
}

TEST(UQVersionRecord, VersionBeyond32BitsIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "version=3", "version=4294967296")),
              "bad value of 'version' on line 3");
}

TEST(UQVersionRecord, LargestVersionIsTaken) {
    UQVersionRecord record;
    std::wstring sReason;
    ASSERT_EQ(
        UQVersionRecord::mf_parseStub(replaced(STUB, "version=3", "version=4294967295"), record, sReason), 1)
        << utf8Of(sReason);
    EXPECT_EQ(record.m_uVersion, 4294967295u);
}

TEST(UQVersionRecord, PositionBeyond64BitsIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "access=1:42", "access=1:18446744073709551616")),
              "bad value of 'access' on line 4");
}

TEST(UQVersionRecord, AccessWithoutPositionIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "access=1:42", "access=1")), "bad value of 'access' on line 4");
}

TEST(UQVersionRecord, AccessThatIsAPathIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "access=1:42", "access=1:..\\..\\x")),
              "bad value of 'access' on line 4");
}

TEST(UQVersionRecord, SizeBeyondAFileIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "size=12345", "size=9223372036854775808")),
              "bad value of 'size' on line 5");
}

TEST(UQVersionRecord, UpperCaseHashIsRefused) {
    std::string sUpper = HASH;
    for (char& ch : sUpper)
        ch = static_cast<char>(ch >= 'a' && ch <= 'f' ? ch - 'a' + 'A' : ch);
    EXPECT_EQ(refusedStub(replaced(STUB, HASH, sUpper)), "bad value of 'sha256' on line 6");
}

TEST(UQVersionRecord, ShortHashIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, HASH, HASH.substr(1))), "bad value of 'sha256' on line 6");
}

TEST(UQVersionRecord, EmptyObjectIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "object=C:\\data\\x.txt", "object=")),
              "bad value of 'object' on line 2");
}

TEST(UQVersionRecord, ObjectWithControlCharacterIsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "x.txt", std::string("x\x01.txt"))),
              "bad value of 'object' on line 2");
}

TEST(UQVersionRecord, ObjectThatIsNoUtf8IsRefused) {
    EXPECT_EQ(refusedStub(replaced(STUB, "x.txt", "x\xC3.txt")), "bad value of 'object' on line 2");
}

TEST(UQVersionRecord, OverlongUtf8IsRefused) {
    // "/" as two bytes: a decoder that takes it would let a separator through unseen.
    EXPECT_EQ(refusedStub(replaced(STUB, "x.txt", "x\xC0\xAF.txt")), "bad value of 'object' on line 2");
}

TEST(UQVersionRecord, HeaderWithoutItsEmptyLineIsRefused) {
    EXPECT_EQ(refusedHeader(HEADER.substr(0, HEADER.size() - 1) + "content"),
              "header cut short (no empty line ends it)");
}

TEST(UQVersionRecord, HeaderWithoutNameIsRefused) {
    EXPECT_EQ(refusedHeader(replaced(HEADER, "name=x.txt\n", "")), "line 3 is not 'name='");
}

TEST(UQVersionRecord, HeaderWithEmptyNameIsRefused) {
    EXPECT_EQ(refusedHeader(replaced(HEADER, "name=x.txt", "name=")), "bad value of 'name' on line 3");
}

TEST(UQVersionRecord, HeaderEndingBeyondItsLimitIsRefused) {
    const std::string sLongName(UQVersionRecord::MAX_HEADER_BYTES, 'n');
    EXPECT_EQ(refusedHeader(replaced(HEADER, "name=x.txt", "name=" + sLongName)),
              "header cut short (no empty line ends it)");
}

TEST(UQVersionRecord, StubIsNoHeaderAndHeaderIsNoStub) {
    EXPECT_EQ(refusedHeader(STUB + "\n"), "not a stored version (its first line is not \"KORDATA 1\")");
    EXPECT_EQ(refusedStub(HEADER), "not a stub file (its first line is not \"KORSTUB 1\")");
}

} // namespace
