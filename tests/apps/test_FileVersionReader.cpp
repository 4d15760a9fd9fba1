#include "FileVersionReader.h"

#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

// FILETIME ticks (100 ns since 1601-01-01) worked out apart from the code under test.
const std::uint64_t k20240402_091542 = 133565229420000000ull;
const std::uint64_t k20240229_000000 = 133536384000000000ull;
const std::uint64_t k99991231_235959 = 2650467743990000000ull;

struct Problems : FileVersionReader::ProblemSink {
    void mf_onProblem(int line, const std::string& problem) noexcept override {
        list.emplace_back(line, problem);
    }
    std::vector<std::pair<int, std::string>> list;
};

struct Read {
    std::vector<FileVersionRecord> records;
    Problems problems;
    int malformed = 0;
};

Read read(const std::string& text) {
    Read r;
    r.malformed = FileVersionReader::mf_read(text, r.records, r.problems);
    return r;
}

// The problem reported for a file of just that one line; fails the test if the line was accepted.
std::string problemOf(const std::string& line) {
    const Read r = read(line + "\n");
    EXPECT_TRUE(r.records.empty()) << line;
    EXPECT_EQ(1, r.malformed) << line;
    if (r.problems.list.size() != 1)
        return "no problem reported";
    EXPECT_EQ(1, r.problems.list[0].first);
    return r.problems.list[0].second;
}

// The record of a file of just that one line; fails the test if the line was refused.
FileVersionRecord recordOf(const std::string& line) {
    const Read r = read(line + "\n");
    EXPECT_EQ(0, r.malformed) << line;
    EXPECT_TRUE(r.problems.list.empty()) << (r.problems.list.empty() ? "" : r.problems.list[0].second);
    if (r.records.size() != 1)
        return FileVersionRecord();
    return r.records[0];
}

} // namespace

TEST(FileVersionReader, ReadsEveryFieldOfAFullLine) {
    LogCheck log;
    const FileVersionRecord r = recordOf(
        "C:\\Projects\\Reports\\2024\\q1-summary.docx\t3\t48213\t2024-04-02 09:15:42\tMigrated\twarning");
    EXPECT_EQ(CString(L"C:\\Projects\\Reports\\2024\\q1-summary.docx"), r.sPath);
    EXPECT_EQ(3u, r.uVersion);
    EXPECT_EQ(48213, r.size.mf_getValue());
    EXPECT_EQ(k20240402_091542, r.lastWriteTime.mf_getValue());
    EXPECT_EQ(CString(L"Migrated"), r.sResult);
    EXPECT_EQ(UVSeverity::YELLOW, r.severity.mf_getValue());
    EXPECT_EQ(1, r.nLine);
    EXPECT_EQ(0u, log.count());
}

TEST(FileVersionReader, ResultAndSeverityMayBeLeftOut) {
    const FileVersionRecord four = recordOf("C:\\a.txt\t1\t10\t2024-04-02 09:15:42");
    EXPECT_TRUE(four.sResult.IsEmpty());
    EXPECT_EQ(UVSeverity::GREEN, four.severity.mf_getValue());

    const FileVersionRecord five = recordOf("C:\\a.txt\t1\t10\t2024-04-02 09:15:42\tRecalled");
    EXPECT_EQ(CString(L"Recalled"), five.sResult);
    EXPECT_EQ(UVSeverity::GREEN, five.severity.mf_getValue());

    const FileVersionRecord emptySeverity = recordOf("C:\\a.txt\t1\t10\t2024-04-02 09:15:42\t\t");
    EXPECT_TRUE(emptySeverity.sResult.IsEmpty());
    EXPECT_EQ(UVSeverity::GREEN, emptySeverity.severity.mf_getValue());
}

TEST(FileVersionReader, SeverityWordsAreCaseBlind) {
    EXPECT_EQ(UVSeverity::RED,
              recordOf("C:\\a\t1\t1\t2024-04-02 09:15:42\tAccess denied\tERROR").severity.mf_getValue());
    EXPECT_EQ(UVSeverity::YELLOW,
              recordOf("C:\\a\t1\t1\t2024-04-02 09:15:42\tx\tWarning").severity.mf_getValue());
    EXPECT_EQ(UVSeverity::GREEN,
              recordOf("C:\\a\t1\t1\t2024-04-02 09:15:42\tx\tInfo").severity.mf_getValue());
}

TEST(FileVersionReader, MillisecondsAddToTheTime) {
    EXPECT_EQ(k20240402_091542 + 2500000u,
              recordOf("C:\\a\t1\t1\t2024-04-02 09:15:42.250").lastWriteTime.mf_getValue());
    EXPECT_EQ(k20240402_091542 + 9990000u,
              recordOf("C:\\a\t1\t1\t2024-04-02 09:15:42.999").lastWriteTime.mf_getValue());
}

TEST(FileVersionReader, TakesTheWholeRangeOfEachNumberAndTime) {
    const FileVersionRecord high = recordOf("C:\\a\t4294967295\t9223372036854775807\t9999-12-31 23:59:59");
    EXPECT_EQ(4294967295u, high.uVersion);
    EXPECT_EQ(INT64_MAX, high.size.mf_getValue());
    EXPECT_EQ(k99991231_235959, high.lastWriteTime.mf_getValue());

    const FileVersionRecord low = recordOf("C:\\a\t0\t0\t1601-01-01 00:00:00");
    EXPECT_EQ(0u, low.uVersion);
    EXPECT_EQ(0, low.size.mf_getValue());
    EXPECT_EQ(0u, low.lastWriteTime.mf_getValue());

    EXPECT_EQ(7u, recordOf("C:\\a\t007\t0010\t2024-04-02 09:15:42").uVersion);
}

TEST(FileVersionReader, LeapDayIsAValidDate) {
    EXPECT_EQ(k20240229_000000, recordOf("C:\\a\t1\t1\t2024-02-29 00:00:00").lastWriteTime.mf_getValue());
}

TEST(FileVersionReader, SpacesAroundFieldsAreNotData) {
    const FileVersionRecord r =
        recordOf("  C:\\My Files\\a b.txt \t 3 \t 10 \t 2024-04-02 09:15:42 \t Stub file \t info ");
    EXPECT_EQ(CString(L"C:\\My Files\\a b.txt"), r.sPath);
    EXPECT_EQ(3u, r.uVersion);
    EXPECT_EQ(10, r.size.mf_getValue());
    EXPECT_EQ(k20240402_091542, r.lastWriteTime.mf_getValue());
    EXPECT_EQ(CString(L"Stub file"), r.sResult);
}

TEST(FileVersionReader, PercentAndAsteriskInPathsAndResultsAreData) {
    const FileVersionRecord r =
        recordOf("C:\\50% off\\%s %d %n\\*.*\t1\t1\t2024-04-02 09:15:42\t100% %s done");
    EXPECT_EQ(CString(L"C:\\50% off\\%s %d %n\\*.*"), r.sPath);
    EXPECT_EQ(CString(L"100% %s done"), r.sResult);
}

TEST(FileVersionReader, HashInsideAPathIsData) {
    EXPECT_EQ(CString(L"C:\\Build\\release#12.zip"),
              recordOf("C:\\Build\\release#12.zip\t1\t1\t2024-04-02 09:15:42").sPath);
}

TEST(FileVersionReader, NonAsciiTextIsDecodedFromUtf8) {
    const FileVersionRecord r =
        recordOf("C:\\Pr\xC3\xA4sentation\\\xE6\x97\xA5\xE6\x9C\xAC \xF0\x9F\x93\x84.pptx\t1\t1\t"
                 "2024-04-02 09:15:42\t\xC3\x9C"
                 "bertragen");
    EXPECT_EQ(CString(L"C:\\Pr\u00E4sentation\\\u65E5\u672C \U0001F4C4.pptx"), r.sPath);
    EXPECT_EQ(CString(L"\u00DCbertragen"), r.sResult);
}

TEST(FileVersionReader, CommentsAndBlankLinesAreSkippedButCounted) {
    const Read r = read("# header\n\n   \t \n  # indented comment\nC:\\a\t1\t1\t2024-04-02 09:15:42\n");
    EXPECT_EQ(0, r.malformed);
    EXPECT_TRUE(r.problems.list.empty());
    ASSERT_EQ(1u, r.records.size());
    EXPECT_EQ(5, r.records[0].nLine);
}

TEST(FileVersionReader, CrLfLineEndsAreNotPartOfTheLastField) {
    const Read r = read(
        "# comment\r\nC:\\a\t1\t1\t2024-04-02 09:15:42\tMigrated\r\nC:\\b\t2\t1\t2024-04-02 09:15:42\r\n");
    EXPECT_EQ(0, r.malformed);
    ASSERT_EQ(2u, r.records.size());
    EXPECT_EQ(CString(L"Migrated"), r.records[0].sResult);
    EXPECT_EQ(2, r.records[0].nLine);
    EXPECT_EQ(k20240402_091542, r.records[1].lastWriteTime.mf_getValue());
    EXPECT_EQ(3, r.records[1].nLine);
}

TEST(FileVersionReader, LastLineNeedsNoLineEnd) {
    const Read r = read("C:\\a\t1\t1\t2024-04-02 09:15:42\nC:\\b\t2\t1\t2024-04-02 09:15:42\tRecalled");
    ASSERT_EQ(2u, r.records.size());
    EXPECT_EQ(CString(L"Recalled"), r.records[1].sResult);
}

TEST(FileVersionReader, ByteOrderMarkAtTheStartIsSkipped) {
    const Read r = read("\xEF\xBB\xBF"
                        "C:\\a\t1\t1\t2024-04-02 09:15:42\n");
    EXPECT_EQ(0, r.malformed);
    ASSERT_EQ(1u, r.records.size());
    EXPECT_EQ(CString(L"C:\\a"), r.records[0].sPath);
    EXPECT_EQ(1, r.records[0].nLine);

    const Read bomOnly = read("\xEF\xBB\xBF");
    EXPECT_EQ(0, bomOnly.malformed);
    EXPECT_TRUE(bomOnly.records.empty());
}

// Two files joined: the second one's byte order mark starts a line and is skipped there as well.
TEST(FileVersionReader, ByteOrderMarkAtTheStartOfALaterLineIsNoPartOfThePath) {
    const Read r = read("\xEF\xBB\xBF"
                        "C:\\a\t1\t1\t2024-04-02 09:15:42\n"
                        "\xEF\xBB\xBF# second file\r\n"
                        "\xEF\xBB\xBF"
                        "C:\\b\t1\t1\t2024-04-02 09:15:42\r\n");
    EXPECT_EQ(0, r.malformed);
    EXPECT_TRUE(r.problems.list.empty());
    ASSERT_EQ(2u, r.records.size());
    EXPECT_EQ(CString(L"C:\\b"), r.records[1].sPath);
    EXPECT_EQ(3, r.records[1].nLine);
}

TEST(FileVersionReader, EmptyTextHasNoLines) {
    const Read r = read("");
    EXPECT_EQ(0, r.malformed);
    EXPECT_TRUE(r.records.empty());
    EXPECT_TRUE(r.problems.list.empty());
}

TEST(FileVersionReader, MissingFieldsAreNamed) {
    EXPECT_EQ("missing version, size and last write time", problemOf("C:\\a"));
    EXPECT_EQ("missing size and last write time", problemOf("C:\\a\t1"));
    EXPECT_EQ("missing last write time", problemOf("C:\\a\t1\t10"));
    EXPECT_EQ("missing path", problemOf("\t1\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("missing version", problemOf("C:\\a\t\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("missing size", problemOf("C:\\a\t1\t \t2024-04-02 09:15:42"));
    EXPECT_EQ("missing last write time", problemOf("C:\\a\t1\t10\t\tMigrated"));
}

TEST(FileVersionReader, MoreThanSixFieldsAreTooMany) {
    EXPECT_EQ("too many fields: 7 (at most 6)",
              problemOf("C:\\a\t1\t10\t2024-04-02 09:15:42\tMigrated\tinfo\textra"));
}

TEST(FileVersionReader, VersionMustBeAnUnsigned32BitNumber) {
    EXPECT_EQ("version '3a' is not a whole number", problemOf("C:\\a\t3a\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("version '+3' is not a whole number", problemOf("C:\\a\t+3\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("version '1.5' is not a whole number", problemOf("C:\\a\t1.5\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("version '-' is not a whole number", problemOf("C:\\a\t-\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("version '4294967296' is out of range (0 to 4294967295)",
              problemOf("C:\\a\t4294967296\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("version '99999999999999999999999' is out of range (0 to 4294967295)",
              problemOf("C:\\a\t99999999999999999999999\t10\t2024-04-02 09:15:42"));
    EXPECT_EQ("version '-1' is out of range (0 to 4294967295)",
              problemOf("C:\\a\t-1\t10\t2024-04-02 09:15:42"));
}

TEST(FileVersionReader, SizeMustBeANonNegativeNumberOfBytes) {
    EXPECT_EQ("size '-5' is negative", problemOf("C:\\a\t1\t-5\t2024-04-02 09:15:42"));
    EXPECT_EQ("size '1,024' is not a whole number of bytes",
              problemOf("C:\\a\t1\t1,024\t2024-04-02 09:15:42"));
    EXPECT_EQ("size '12 KB' is not a whole number of bytes",
              problemOf("C:\\a\t1\t12 KB\t2024-04-02 09:15:42"));
    EXPECT_EQ("size '9223372036854775808' is too large (at most 9223372036854775807)",
              problemOf("C:\\a\t1\t9223372036854775808\t2024-04-02 09:15:42"));
}

TEST(FileVersionReader, DatesThatDoNotExistAreRefused) {
    EXPECT_EQ("last write time '2023-02-30 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-02-30 10:00:00"));
    // Wine 8.0's SystemTimeToFileTime takes 29 February of any year; Windows and this reader do not.
    EXPECT_EQ("last write time '2023-02-29 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-02-29 10:00:00"));
    EXPECT_EQ("last write time '1900-02-29 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t1900-02-29 10:00:00"));
    EXPECT_EQ("last write time '2023-04-31 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-04-31 10:00:00"));
    EXPECT_EQ("last write time '2023-13-01 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-13-01 10:00:00"));
    EXPECT_EQ("last write time '2023-00-10 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-00-10 10:00:00"));
    EXPECT_EQ("last write time '2023-01-00 10:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-01-00 10:00:00"));
    EXPECT_EQ("last write time '2023-01-01 24:00:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-01-01 24:00:00"));
    EXPECT_EQ("last write time '2023-01-01 10:60:00' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-01-01 10:60:00"));
    EXPECT_EQ("last write time '2023-01-01 10:00:60' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t2023-01-01 10:00:60"));
    // FILETIME starts in 1601.
    EXPECT_EQ("last write time '1600-12-31 23:59:59' is not a valid date and time",
              problemOf("C:\\a\t1\t1\t1600-12-31 23:59:59"));
}

TEST(FileVersionReader, TimesNotInTheOneFormAreRefused) {
    for (const char* time : {"2023-2-3 10:00:00", "2023-02-03T10:00:00", "2023-02-03", "2023-02-03 10:00",
                             "2023-02-03 10:00:00.5", "2023-02-03 10:00:00.1234", "2023/02/03 10:00:00",
                             "03.02.2023 10:00:00", "2023-02-03  10:00:00", "2023-02-03 10:00:0x"}) {
        EXPECT_EQ(std::string("last write time '") + time + "' is not in the form YYYY-MM-DD HH:MM:SS[.mmm]",
                  problemOf(std::string("C:\\a\t1\t1\t") + time));
    }
}

TEST(FileVersionReader, SeverityMustBeOneOfThreeWords) {
    EXPECT_EQ("severity 'fatal' is not info, warning or error",
              problemOf("C:\\a\t1\t1\t2024-04-02 09:15:42\tMigrated\tfatal"));
    EXPECT_EQ("severity 'information' is not info, warning or error",
              problemOf("C:\\a\t1\t1\t2024-04-02 09:15:42\tMigrated\tinformation"));
}

TEST(FileVersionReader, InvalidUtf8IsRefusedWithItsColumnAndBytes) {
    EXPECT_EQ("not valid UTF-8 (byte 0xE4 at column 6) in 'C:\\Pr\\xE4sentation\t1\t1\t2024-04-02 09:15:42'",
              problemOf("C:\\Pr\xE4sentation\t1\t1\t2024-04-02 09:15:42"));
    // Overlong form of '/'.
    EXPECT_EQ("not valid UTF-8 (byte 0xC0 at column 4) in 'C:\\\\xC0\\xAF\t1\t1\t2024-04-02 09:15:42'",
              problemOf("C:\\\xC0\xAF\t1\t1\t2024-04-02 09:15:42"));
    // An encoded UTF-16 surrogate.
    EXPECT_EQ("not valid UTF-8 (byte 0xED at column 4) in 'C:\\\\xED\\xA0\\x80\t1\t1\t2024-04-02 09:15:42'",
              problemOf("C:\\\xED\xA0\x80\t1\t1\t2024-04-02 09:15:42"));
    // Above U+10FFFF.
    EXPECT_EQ("not valid UTF-8 (byte 0xF4 at column 4) in "
              "'C:\\\\xF4\\x90\\x80\\x80\t1\t1\t2024-04-02 09:15:42'",
              problemOf("C:\\\xF4\x90\x80\x80\t1\t1\t2024-04-02 09:15:42"));
    // Cut short at the end of the line; the valid characters before it stay as they are.
    EXPECT_EQ("not valid UTF-8 (byte 0xE6 at column 36) in 'C:\\\xC3\xA4\t1\t1\t2024-04-02 09:15:42\tDone "
              "\\xE6\\x97'",
              problemOf("C:\\\xC3\xA4\t1\t1\t2024-04-02 09:15:42\tDone \xE6\x97"));
}

TEST(FileVersionReader, ControlCharactersAreRefused) {
    EXPECT_EQ("control character 0x01 at column 4", problemOf("C:\\\x01"
                                                              "a\t1\t1\t2024-04-02 09:15:42"));
    std::string withNul = "C:\\a";
    withNul += '\0';
    withNul += "b\t1\t1\t2024-04-02 09:15:42";
    EXPECT_EQ("control character 0x00 at column 5", problemOf(withNul));
    EXPECT_EQ("control character 0x7F at column 4", problemOf("C:\\\x7F\t1\t1\t2024-04-02 09:15:42"));
    // A lone carriage return is not a line end.
    EXPECT_EQ("control character 0x0D at column 5", problemOf("C:\\a\rC:\\b\t1\t1\t2024-04-02 09:15:42"));
}

TEST(FileVersionReader, MalformedLinesAreSkippedAndReadingGoesOn) {
    const Read r = read("C:\\a\t1\t1\t2024-04-02 09:15:42\n"
                        "C:\\b\tone\t1\t2024-04-02 09:15:42\n"
                        "# comment\n"
                        "C:\\c\t1\t-1\t2024-04-02 09:15:42\n"
                        "C:\\d\t2\t1\t2024-04-02 09:15:42\n");
    EXPECT_EQ(2, r.malformed);
    const std::vector<std::pair<int, std::string>> expected = {{2, "version 'one' is not a whole number"},
                                                               {4, "size '-1' is negative"}};
    EXPECT_EQ(expected, r.problems.list);
    ASSERT_EQ(2u, r.records.size());
    EXPECT_EQ(CString(L"C:\\a"), r.records[0].sPath);
    EXPECT_EQ(1, r.records[0].nLine);
    EXPECT_EQ(CString(L"C:\\d"), r.records[1].sPath);
    EXPECT_EQ(5, r.records[1].nLine);
}

TEST(FileVersionReader, ParseLineTellsBlankAndCommentLinesFromMalformedOnes) {
    FileVersionRecord record;
    std::string problem = "left over";
    EXPECT_EQ(0, FileVersionReader::mf_parseLine("# comment", record, problem));
    EXPECT_EQ("", problem);
    EXPECT_EQ(0, FileVersionReader::mf_parseLine("", record, problem));
    EXPECT_EQ("", problem);
    EXPECT_EQ(0, FileVersionReader::mf_parseLine("C:\\a", record, problem));
    EXPECT_EQ("missing version, size and last write time", problem);
    EXPECT_EQ(1, FileVersionReader::mf_parseLine("C:\\a\t1\t1\t2024-04-02 09:15:42", record, problem));
    EXPECT_EQ("", problem);
}
