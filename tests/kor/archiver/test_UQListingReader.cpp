#include "guibase/filelist/UQListingFileList.h"
#include "interfaces/korarchiver.h"
#include "support/PathList.h"

#include "support/LogCheck.h"

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

const CString NAME = L"listing.txt";

// One reported entry, as the tests compare it.
struct Entry {
    std::uint32_t number;
    std::string path;
    std::uint32_t version;
    std::string result;
    int severity;

    friend bool operator==(const Entry& a, const Entry& b) {
        return a.number == b.number && a.path == b.path && a.version == b.version && a.result == b.result &&
               a.severity == b.severity;
    }
    friend std::ostream& operator<<(std::ostream& os, const Entry& e) {
        return os << "{" << e.number << ", \"" << e.path << "\", " << e.version << ", \"" << e.result
                  << "\", " << e.severity << "}";
    }
};

// Records what the reader reports; refuses the paths it is told to refuse.
class RecordingListener : public UVListingFileReader {
public:
    void mf_onMigrationEntry(std::uint32_t number, const UQFileTime& time, const CString& path,
                             std::uint32_t version, const CString& result,
                             const UQSeverity& severity) override {
        if (utf8(path) == refuse)
            throw UQErrno(UQErrno::_E_::State);
        EXPECT_EQ(time.mf_getValue(), 0u);
        entries.push_back(Entry{number, utf8(path), version, utf8(result), severity.mf_getValue()});
    }

    std::string refuse;
    std::vector<Entry> entries;
};

std::string stubText() {
    return utf8(UQString(UQErrno::_I_::StubFile.mf_getMessageNumber()).mf_getText());
}

// "<name>:<line>: <what>" details of the errors, in order.
std::vector<std::string> details(const UQListingReader::Result& result) {
    std::vector<std::string> out;
    for (const UQErrno& e : result.errors)
        out.push_back(utf8(e.mf_getDetail()));
    return out;
}

std::vector<std::string> categories(const UQListingReader::Result& result) {
    std::vector<std::string> out;
    for (const UQErrno& e : result.errors)
        out.push_back(utf8(e.mf_getData().mf_getValue()->mf_getName()));
    return out;
}

// The one error of a one-line listing.
std::string errorOf(const std::string& line) {
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText(line + "\n", NAME, listener);
    EXPECT_EQ(result.uEntries, 0u) << line;
    EXPECT_TRUE(listener.entries.empty()) << line;
    if (result.errors.size() != 1)
        return "errors: " + std::to_string(result.errors.size());
    EXPECT_EQ(categories(result)[0], "_E_::Format");
    return details(result)[0];
}

CString samplePath() {
    return CString::FromUtf8(KOR_LISTING_SAMPLE);
}

// A scratch file in the temporary directory, named per process so that parallel runs do not meet; removed
// again.
class ScratchFile {
public:
    // The name in UTF-8, so that it means the same on both targets.
    ScratchFile(const std::string& utf8Name, const std::string& bytes)
        : m_path(std::filesystem::temp_directory_path() /
                 std::filesystem::u8path(std::to_string(GetCurrentProcessId()) + "-" + utf8Name)) {
        std::ofstream out(m_path, std::ios::binary);
        out << bytes;
    }
    ~ScratchFile() {
        std::error_code ignored;
        std::filesystem::remove(m_path, ignored);
    }
    CString mf_getPath() const { return CString::FromUtf8(m_path.u8string()); }

private:
    std::filesystem::path m_path;
};

} // namespace

TEST(UQListingReader, ReadsEveryStatusWithItsResultAndSeverity) {
    RecordingListener listener;
    const UQListingReader::Result result =
        UQListingReader::mf_readText("C:\\a.txt\t1\tmigrated\n"
                                     "C:\\b.txt\t2\tmigrated\tPremigrated\n"
                                     "C:\\c.txt\t3\tstub\n"
                                     "C:\\d.txt\t4\twarning\tMigrated with warnings\n"
                                     "C:\\e.txt\t5\tfailed\tAccess denied\n",
                                     NAME, listener);
    EXPECT_EQ(result.uEntries, 5u);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(listener.entries,
              (std::vector<Entry>{{1, "C:\\a.txt", 1, "Migrated", UVSeverity::GREEN},
                                  {2, "C:\\b.txt", 2, "Premigrated", UVSeverity::GREEN},
                                  {3, "C:\\c.txt", 3, stubText(), UVSeverity::GREEN},
                                  {4, "C:\\d.txt", 4, "Migrated with warnings", UVSeverity::YELLOW},
                                  {5, "C:\\e.txt", 5, "Access denied", UVSeverity::RED}}));
}

TEST(UQListingReader, StubResultIsAlwaysTheCatalogueText) {
    RecordingListener listener;
    UQListingReader::mf_readText("C:\\a.txt\t1\tstub\tsomething else\n", NAME, listener);
    ASSERT_EQ(listener.entries.size(), 1u);
    EXPECT_EQ(listener.entries[0].result, stubText());
}

TEST(UQListingReader, CommentsAndBlankLinesAreSkippedButCounted) {
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText(
        "# header\n\n   \nC:\\a.txt\t1\tmigrated\n#C:\\b.txt\t1\tmigrated\nC:\\c.txt\t1\tmigrated", NAME,
        listener);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(listener.entries, (std::vector<Entry>{{4, "C:\\a.txt", 1, "Migrated", UVSeverity::GREEN},
                                                    {6, "C:\\c.txt", 1, "Migrated", UVSeverity::GREEN}}));
}

TEST(UQListingReader, IndentedCommentsAndLinesOfBlanksAndTabsAreSkipped) {
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText(
        " \t# indented comment\n\t\t\n \t \nC:\\Build\\release#12.zip\t1\tmigrated\n", NAME, listener);
    EXPECT_TRUE(result.errors.empty());
    // A '#' after the start of a line is data.
    EXPECT_EQ(listener.entries,
              (std::vector<Entry>{{4, "C:\\Build\\release#12.zip", 1, "Migrated", UVSeverity::GREEN}}));
}

TEST(UQListingReader, ControlCharactersAreMalformed) {
    EXPECT_EQ(errorOf(std::string("C:\\a\0b\t1\tmigrated", 17)),
              "listing.txt:1: control character 0x00 at column 5 of line 'C:\\a?b\t1\tmigrated'");
    // A lone CR is no line end.
    EXPECT_EQ(
        errorOf("C:\\a\t1\tmigrated\rC:\\b\t1\tmigrated"),
        "listing.txt:1: control character 0x0D at column 16 of line 'C:\\a\t1\tmigrated?C:\\b\t1\tmigrated'");
    EXPECT_EQ(errorOf("C:\\a\x7f\x1b\t1\tfailed\tDenied"),
              "listing.txt:1: control character 0x7F at column 5 of line 'C:\\a??\t1\tfailed\tDenied'");
}

TEST(UQListingReader, FieldsAreTrimmedOfBlanks) {
    RecordingListener listener;
    UQListingReader::mf_readText(" C:\\a b.txt \t 0007 \t failed \t Access denied \n", NAME, listener);
    EXPECT_EQ(listener.entries,
              (std::vector<Entry>{{1, "C:\\a b.txt", 7, "Access denied", UVSeverity::RED}}));
}

TEST(UQListingReader, VersionRangeIsUnsigned32Bit) {
    RecordingListener listener;
    const UQListingReader::Result result =
        UQListingReader::mf_readText("C:\\a\t0\tmigrated\nC:\\a\t4294967295\tmigrated\n", NAME, listener);
    EXPECT_TRUE(result.errors.empty());
    ASSERT_EQ(listener.entries.size(), 2u);
    EXPECT_EQ(listener.entries[0].version, 0u);
    EXPECT_EQ(listener.entries[1].version, 4294967295u);
}

TEST(UQListingReader, NonAsciiPathsAreReadAsUtf8) {
    RecordingListener listener;
    UQListingReader::mf_readText("C:\\Daten\\\xC3\x9C"
                                 "bersicht \xE2\x82\xAC.docx\t1\tmigrated\n",
                                 NAME, listener);
    ASSERT_EQ(listener.entries.size(), 1u);
    const CString path = CString::FromUtf8(listener.entries[0].path);
    ASSERT_EQ(path.GetLength(), 25);
    EXPECT_EQ(path[9], static_cast<wchar_t>(0x00DC));
    EXPECT_EQ(path[19], static_cast<wchar_t>(0x20AC));
}

TEST(UQListingReader, WrongFieldCountIsMalformed) {
    EXPECT_EQ(errorOf("C:\\a.txt\t1"),
              "listing.txt:1: expected 3 or 4 tab-separated fields in 'C:\\a.txt\t1'");
    EXPECT_EQ(errorOf("C:\\a.txt"), "listing.txt:1: expected 3 or 4 tab-separated fields in 'C:\\a.txt'");
    EXPECT_EQ(errorOf("C:\\a.txt\t1\tfailed\tDenied\textra"),
              "listing.txt:1: expected 3 or 4 tab-separated fields in 'C:\\a.txt\t1\tfailed\tDenied\textra'");
    // Blanks instead of tabs do not separate fields.
    EXPECT_EQ(errorOf("C:\\a.txt 1 migrated"),
              "listing.txt:1: expected 3 or 4 tab-separated fields in 'C:\\a.txt 1 migrated'");
}

TEST(UQListingReader, EmptyPathIsMalformed) {
    EXPECT_EQ(errorOf("\t1\tmigrated"), "listing.txt:1: empty path in '\t1\tmigrated'");
    EXPECT_EQ(errorOf("   \t1\tmigrated"), "listing.txt:1: empty path in '   \t1\tmigrated'");
}

TEST(UQListingReader, BadVersionIsMalformed) {
    EXPECT_EQ(errorOf("C:\\a\t\tmigrated"), "listing.txt:1: bad version number ''");
    EXPECT_EQ(errorOf("C:\\a\tv2\tmigrated"), "listing.txt:1: bad version number 'v2'");
    EXPECT_EQ(errorOf("C:\\a\t-1\tmigrated"), "listing.txt:1: bad version number '-1'");
    EXPECT_EQ(errorOf("C:\\a\t+1\tmigrated"), "listing.txt:1: bad version number '+1'");
    EXPECT_EQ(errorOf("C:\\a\t1.5\tmigrated"), "listing.txt:1: bad version number '1.5'");
    EXPECT_EQ(errorOf("C:\\a\t0x10\tmigrated"), "listing.txt:1: bad version number '0x10'");
}

TEST(UQListingReader, OverflowingVersionIsMalformed) {
    EXPECT_EQ(errorOf("C:\\a\t4294967296\tmigrated"),
              "listing.txt:1: version number out of range '4294967296'");
    EXPECT_EQ(errorOf("C:\\a\t99999999999999999999999\tmigrated"),
              "listing.txt:1: version number out of range '99999999999999999999999'");
}

TEST(UQListingReader, UnknownStatusIsMalformed) {
    EXPECT_EQ(errorOf("C:\\a\t1\tdeleted"), "listing.txt:1: unknown status 'deleted'");
    // Status words are lower case.
    EXPECT_EQ(errorOf("C:\\a\t1\tMigrated"), "listing.txt:1: unknown status 'Migrated'");
    EXPECT_EQ(errorOf("C:\\a\t1\t"), "listing.txt:1: unknown status ''");
}

TEST(UQListingReader, WarningAndFailureNeedAResultText) {
    EXPECT_EQ(errorOf("C:\\a\t1\twarning"), "listing.txt:1: no result text for status 'warning'");
    EXPECT_EQ(errorOf("C:\\a\t1\tfailed\t"), "listing.txt:1: no result text for status 'failed'");
    EXPECT_EQ(errorOf("C:\\a\t1\tfailed\t   "), "listing.txt:1: no result text for status 'failed'");
}

TEST(UQListingReader, InvalidUtf8IsMalformedAndShownAsBytes) {
    // A listing written in Latin-1: the byte 0xDC alone is no UTF-8.
    EXPECT_EQ(errorOf("C:\\\xDC"
                      "bersicht.docx\t1\tmigrated"),
              "listing.txt:1: invalid UTF-8 (byte 0xDC at column 4) in 'C:\\\\xDC"
              "bersicht.docx\t1\tmigrated'");
    // An overlong form of '\\' and a UTF-16 surrogate encoded as UTF-8; the valid characters stay.
    EXPECT_EQ(
        errorOf("C:\xC1\x9C"
                "a\t1\tmigrated\t\xC3\xBC"),
        "listing.txt:1: invalid UTF-8 (byte 0xC1 at column 3) in 'C:\\xC1\\x9Ca\t1\tmigrated\t\xC3\xBC'");
    EXPECT_EQ(errorOf("C:\\\xED\xA0\x80"
                      "a\t1\tmigrated"),
              "listing.txt:1: invalid UTF-8 (byte 0xED at column 4) in 'C:\\\\xED\\xA0\\x80a\t1\tmigrated'");
}

TEST(UQListingReader, MalformedLinesLoseNoGoodLine) {
    const std::vector<std::string> bad = {"C:\\bad\t1",
                                          "\t1\tmigrated",
                                          "C:\\bad\tone\tmigrated",
                                          "C:\\bad\t4294967296\tmigrated",
                                          "C:\\bad\t1\tarchived",
                                          "C:\\bad\t1\twarning",
                                          "C:\\bad\t1\tfailed\t",
                                          "C:\\bad\xFF\t1\tmigrated",
                                          "C:\\bad\t1\tmigrated\tMigrated\textra"};
    std::string text;
    std::vector<Entry> expected;
    std::vector<std::string> expectedErrorLines;
    std::uint32_t line = 0;
    for (int round = 0; round < 3; ++round)
        for (const std::string& b : bad) {
            text += b + "\n";
            expectedErrorLines.push_back("listing.txt:" + std::to_string(++line) + ":");
            const std::string path = "C:\\good\\" + std::to_string(line + 1) + ".txt";
            text += path + "\t" + std::to_string(line + 1) + "\tmigrated\n";
            expected.push_back(Entry{++line, path, line, "Migrated", UVSeverity::GREEN});
        }
    LogCheck log;
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText(text, NAME, listener);
    EXPECT_EQ(listener.entries, expected);
    EXPECT_EQ(result.uEntries, expected.size());
    ASSERT_EQ(result.errors.size(), expectedErrorLines.size());
    for (std::size_t i = 0; i < result.errors.size(); ++i) {
        EXPECT_EQ(details(result)[i].rfind(expectedErrorLines[i] + " ", 0), 0u) << details(result)[i];
        EXPECT_EQ(categories(result)[i], "_E_::Format");
    }
    // Every skipped line is also logged as a warning, in file order.
    const std::vector<LogLine> lines = log.lines();
    ASSERT_EQ(lines.size(), result.errors.size());
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_EQ(lines[i], (LogLine{'W', "UQListingReader::mf_readText",
                                     "Listing line skipped: " + details(result)[i]}));
}

TEST(UQListingReader, ErrorTextNamesCategoryFileAndLine) {
    RecordingListener listener;
    const UQListingReader::Result result =
        UQListingReader::mf_readText("C:\\a\t1\tmigrated\nC:\\b\tx\tmigrated\n", NAME, listener);
    ASSERT_EQ(result.errors.size(), 1u);
    EXPECT_EQ(utf8(result.errors[0].mf_toString()),
              utf8(UQErrno(UQErrno::_E_::Format).mf_toString()) + " (listing.txt:2: bad version number 'x')");
}

TEST(UQListingReader, CrLfLinesReadLikeLfLines) {
    const std::string lf =
        "# listing\nC:\\a\t1\tmigrated\n\nC:\\a\t2\tfailed\tAccess denied\nC:\\b\t1\tstub\n";
    std::string crlf;
    for (char c : lf)
        crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    RecordingListener fromLf, fromCrLf;
    const UQListingReader::Result a = UQListingReader::mf_readText(lf, NAME, fromLf);
    const UQListingReader::Result b = UQListingReader::mf_readText(crlf, NAME, fromCrLf);
    EXPECT_TRUE(b.errors.empty());
    EXPECT_EQ(b.uEntries, 3u);
    EXPECT_EQ(fromCrLf.entries, fromLf.entries);
    EXPECT_EQ(fromCrLf.entries[1], (Entry{4, "C:\\a", 2, "Access denied", UVSeverity::RED}));
}

TEST(UQListingReader, LastLineWithoutLineBreakIsRead) {
    RecordingListener listener;
    const UQListingReader::Result result =
        UQListingReader::mf_readText("C:\\a\t1\tmigrated\r\nC:\\b\t1\tfailed\tDenied", NAME, listener);
    EXPECT_EQ(result.uEntries, 2u);
    EXPECT_EQ(listener.entries[1], (Entry{2, "C:\\b", 1, "Denied", UVSeverity::RED}));
}

TEST(UQListingReader, ByteOrderMarkIsNoPartOfTheFirstPath) {
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText("\xEF\xBB\xBF"
                                                                        "C:\\a\t1\tmigrated\r\n",
                                                                        NAME, listener);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(listener.entries, (std::vector<Entry>{{1, "C:\\a", 1, "Migrated", UVSeverity::GREEN}}));
}

TEST(UQListingReader, ByteOrderMarkBeforeACommentKeepsItAComment) {
    RecordingListener listener;
    const UQListingReader::Result result =
        UQListingReader::mf_readText("\xEF\xBB\xBF# listing\nC:\\a\t1\tmigrated\n", NAME, listener);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(result.uEntries, 1u);
}

// Two listings joined: the second one's byte order mark starts a line and is skipped there as well.
TEST(UQListingReader, ByteOrderMarkAtTheStartOfALaterLineIsNoPartOfThePath) {
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_readText("\xEF\xBB\xBF"
                                                                        "C:\\a\t1\tmigrated\n"
                                                                        "\xEF\xBB\xBF# second listing\n"
                                                                        "\xEF\xBB\xBF"
                                                                        "C:\\b\t1\tmigrated\n",
                                                                        NAME, listener);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(listener.entries, (std::vector<Entry>{{1, "C:\\a", 1, "Migrated", UVSeverity::GREEN},
                                                    {3, "C:\\b", 1, "Migrated", UVSeverity::GREEN}}));
}

// A version of a path listed again is malformed the second time, as in every text format read here;
// another version, or the same version of a path in other case, is not.
TEST(UQListingReader, RepeatedPathAndVersionIsMalformedNamingTheFirstLine) {
    RecordingListener listener;
    LogCheck log;
    const UQListingReader::Result result = UQListingReader::mf_readText("C:\\a\t1\tmigrated\n"
                                                                        "C:\\a\t2\tmigrated\n"
                                                                        "C:\\a\t001\tfailed\tAccess denied\n"
                                                                        "C:\\A\t1\tmigrated\n",
                                                                        NAME, listener);
    EXPECT_EQ(details(result), (std::vector<std::string>{
                                   "listing.txt:3: version 1 of this path is already listed on line 1"}));
    EXPECT_EQ(categories(result), (std::vector<std::string>{"_E_::Format"}));
    EXPECT_EQ(result.uEntries, 3u);
    EXPECT_EQ(listener.entries, (std::vector<Entry>{{1, "C:\\a", 1, "Migrated", UVSeverity::GREEN},
                                                    {2, "C:\\a", 2, "Migrated", UVSeverity::GREEN},
                                                    {4, "C:\\A", 1, "Migrated", UVSeverity::GREEN}}));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQListingReader::mf_readText",
                                     "Listing line skipped: listing.txt:3: version 1 of this path "
                                     "is already listed on line 1"}}));
}

TEST(UQListingReader, EmptyTextHasNoEntriesAndNoErrors) {
    RecordingListener listener;
    for (const char* text : {"", "\xEF\xBB\xBF", "\n\r\n"}) {
        const UQListingReader::Result result = UQListingReader::mf_readText(text, NAME, listener);
        EXPECT_EQ(result.uEntries, 0u);
        EXPECT_TRUE(result.errors.empty());
    }
    EXPECT_TRUE(listener.entries.empty());
}

TEST(UQListingReader, RefusedEntryIsAnErrorNamingTheLineAndReadingGoesOn) {
    RecordingListener listener;
    listener.refuse = "C:\\b";
    const UQListingReader::Result result = UQListingReader::mf_readText(
        "C:\\a\t1\tmigrated\nC:\\b\t1\tmigrated\nC:\\c\t1\tmigrated\n", NAME, listener);
    EXPECT_EQ(result.uEntries, 2u);
    EXPECT_EQ(categories(result), (std::vector<std::string>{"_E_::State"}));
    EXPECT_EQ(details(result), (std::vector<std::string>{"listing.txt:2: entry refused: " +
                                                         utf8(UQErrno(UQErrno::_E_::State).mf_toString())}));
    ASSERT_EQ(listener.entries.size(), 2u);
    EXPECT_EQ(listener.entries[1].path, "C:\\c");
}

TEST(UQListingReader, EntriesRefusedByAClosedListAreCountedAsErrors) {
    UQListingFileList list;
    list.mf_close();
    LogCheck log;
    const UQListingReader::Result result =
        UQListingReader::mf_readText("# listing\nC:\\a\t1\tmigrated\nC:\\b\t1\tstub\n", NAME, list);
    EXPECT_EQ(result.uEntries, 0u);
    EXPECT_EQ(categories(result),
              (std::vector<std::string>{"_E_::AlreadyInitialized", "_E_::AlreadyInitialized"}));
    const std::string refused = utf8(UQErrno(UQErrno::_E_::AlreadyInitialized).mf_toString());
    EXPECT_EQ(details(result), (std::vector<std::string>{"listing.txt:2: entry refused: " + refused,
                                                         "listing.txt:3: entry refused: " + refused}));
    const LogLine closed{'E', "UQListingFileList::mf_onMigrationEntry",
                         "File item list has already been closed"};
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{closed,
                                    closed,
                                    {'W', "UQListingReader::mf_readText",
                                     "Listing line skipped: listing.txt:2: entry refused: " + refused},
                                    {'W', "UQListingReader::mf_readText",
                                     "Listing line skipped: listing.txt:3: entry refused: " + refused}}));
    EXPECT_EQ(list.mf_getItemCount(), 0u);
}

TEST(UQListingReader, MissingFileIsAFileError) {
    const CString missing = samplePath() + L".missing";
    LogCheck log;
    std::string detail;
    const std::string category = thrownCategory([&] {
        try {
            RecordingListener listener;
            UQListingReader::mf_read(missing, listener);
        } catch (const UQErrno& e) {
            detail = utf8(e.mf_getDetail());
            throw;
        }
    });
    EXPECT_EQ(category, "_E_::File");
    EXPECT_EQ(detail, utf8(missing) + ": cannot open: No such file or directory (errno 2)");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQListingReader::mf_read",
                                                  "Failure opening listing file '" + utf8(missing) + "'"}}));
}

TEST(UQListingReader, FileWithBomCrLfAndNonAsciiNameIsRead) {
    const ScratchFile file("kor-listing-\xC3\x9C"
                           "bersicht.txt",
                           "\xEF\xBB\xBF"
                           "C:\\a\t1\tmigrated\r\n"
                           "C:\\a\t2\twarning\tChanged\r\n");
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_read(file.mf_getPath(), listener);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(listener.entries, (std::vector<Entry>{{1, "C:\\a", 1, "Migrated", UVSeverity::GREEN},
                                                    {2, "C:\\a", 2, "Changed", UVSeverity::YELLOW}}));
}

TEST(UQListingReader, ErrorsOfAFileNameTheFile) {
    const ScratchFile file("kor-listing-errors.txt", "C:\\a\t1\tmigrated\nC:\\b\t1\n");
    RecordingListener listener;
    const UQListingReader::Result result = UQListingReader::mf_read(file.mf_getPath(), listener);
    EXPECT_EQ(details(result),
              (std::vector<std::string>{utf8(file.mf_getPath()) +
                                        ":2: expected 3 or 4 tab-separated fields in 'C:\\b\t1'"}));
}

TEST(UQListingSample, ReadsIntoAListingFileListWithoutErrors) {
    LogCheck log;
    UQListingFileList list;
    const UQListingReader::Result result = UQListingReader::mf_read(samplePath(), list);
    EXPECT_EQ(result.uEntries, 25u);
    EXPECT_EQ(details(result), std::vector<std::string>{});
    EXPECT_EQ(log.count(), 0u);
    list.mf_close();
    // Versions of one file come on consecutive lines in path order, so each file is one item.
    EXPECT_EQ(list.mf_getItemCount(), 15u);
}

TEST(UQListingSample, FiltersLeaveOutStubsAndSeverities) {
    UQListingFileList list;
    UQListingReader::mf_read(samplePath(), list);
    list.mf_close();
    const std::string root = "\\\\fs01\\projects\\";
    UQFileListItem::Array noStubs;
    list.mf_getList(noStubs, 1, 0, 0, 0);
    EXPECT_EQ(noStubs.GetSize(), 10);
    UQFileListItem::Array problems;
    list.mf_getList(problems, 1, 1, 0, 0);
    EXPECT_EQ(paths(problems), (std::vector<std::string>{root + "apollo\\meeting-notes.docx",
                                                         root + "apollo\\renders\\frame-0003.tif",
                                                         root + "apollo\\~$budget-2023.xlsx",
                                                         root + "cygnus\\video\\launch.mp4"}));
    // An item keeps the result of its first line: launch.mp4 failed first and was migrated later.
    EXPECT_EQ(utf8(problems[3]->mf_getResult()), "Not enough space in the storage pool");
    UQFileListItem::Array stubsAndGreen;
    list.mf_getList(stubsAndGreen, 0, 0, 1, 1);
    EXPECT_EQ(stubsAndGreen.GetSize(), 11);
}

TEST(UQListingSample, VersionRangesAfterSortingNewestFirst) {
    UQListingFileList list;
    UQListingReader::mf_read(samplePath(), list);
    list.mf_close();
    list.mf_sortVersions(0);
    UQFileListItem::Array items;
    list.mf_getList(items);
    std::vector<std::string> ranges;
    for (INT_PTR i = 0; i < items.GetSize(); ++i)
        if (items[i]->mf_getVersionCount() > 1)
            ranges.push_back(utf8(UQPath::mf_getFilePart(items[i]->mf_getPath())) + ": " +
                             utf8(items[i]->mf_getRangesDisplayString()));
    EXPECT_EQ(ranges,
              (std::vector<std::string>{"budget-2023.xlsx: 1 - 3", "supplier-b.pdf: 1, 2",
                                        "meeting-notes.docx: 4, 5", "archive-2019.zip: 1, 2",
                                        "export.csv: 7 - 9", "launch.mp4: 1, 2", "teaser.mp4: 1 - 3"}));
}

// Every 4096 lines (comments count) the listener hears the lines and bytes read and the listing's size.
TEST(UQListingReader, AProgressListenerHearsEvery4096Lines) {
    struct Recorder : UVReadProgress {
        void mf_onReadProgress(std::uint64_t _uLines, std::uint64_t _uBytes,
                               std::uint64_t _uTotalBytes) noexcept override {
            reports.push_back({_uLines, _uBytes, _uTotalBytes});
        }
        std::vector<std::vector<std::uint64_t>> reports;
    } progress;
    std::string text = "# a comment is a line too\n";
    for (int i = 1; i < 9000; ++i)
        text += "C:\\d\\f" + std::to_string(100000 + i) + ".txt\t1\tmigrated\n";
    const std::size_t lineBytes = text.size() - text.rfind('\n', text.size() - 2) - 1;
    const std::size_t commentBytes = text.find('\n') + 1;
    RecordingListener listener;
    const auto result = UQListingReader::mf_readText(text, NAME, listener, &progress);
    EXPECT_EQ(result.uEntries, 8999u);
    const std::uint64_t total = text.size();
    EXPECT_EQ(progress.reports,
              (std::vector<std::vector<std::uint64_t>>{{4096, commentBytes + 4095 * lineBytes, total},
                                                       {8192, commentBytes + 8191 * lineBytes, total}}));
}
