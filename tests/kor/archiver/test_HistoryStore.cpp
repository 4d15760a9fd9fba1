#include "guibase/search/UQSearchList.h"
#include "interfaces/korarchiver.h"

#include "support/LogCheck.h"
#include "support/TestTime.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

const CString NAME = L"store.txt";

// Keeps what a search hands over, as texts, with the thread it came on.
class Collector : public UVQueryDataSink {
public:
    void mf_onQueryData(const UQQueryData& data) override {
        texts.push_back(utf8(data.mf_toString()));
        objectPathTexts.push_back(data.mf_getObjectPath().mf_getPath().GetString());
        filePathShared.push_back(data.mf_getPath().mf_getPath().GetString() ==
                                 data.mf_getObjectPath().mf_getPath().GetString());
        threads.insert(std::this_thread::get_id());
    }
    std::vector<std::string> texts;
    std::vector<bool> filePathShared;
    // Where each record's object path text lives: records that share one text have the same address.
    std::vector<const wchar_t*> objectPathTexts;
    std::set<std::thread::id> threads;
};

// Streams the records into a search list.
class ListSink : public UVQueryDataSink {
public:
    explicit ListSink(UQSearchList& list) : m_list(list) {}
    void mf_onQueryData(const UQQueryData& data) override { m_list.mf_add(data); }

private:
    UQSearchList& m_list;
};

UQHistoryStore::Result search(const std::string& text, Collector& sink,
                              const UQHistoryQuery& query = UQHistoryQuery()) {
    return UQHistoryStore::mf_searchText(text, NAME, query, sink);
}

std::vector<std::string> details(const UQHistoryStore::Result& result) {
    std::vector<std::string> out;
    for (const UQErrno& e : result.errors) {
        EXPECT_TRUE(e.mf_getData().mf_is(UQErrno::_E_::Format));
        out.push_back(utf8(e.mf_getDetail()));
    }
    return out;
}

const std::string GOOD = "\\\\srv\\share\\a.txt\t=\t3\t2024-03-07 14:05:09\t1024\tSP\t-\t17:4096\n";
// The next version of the same file.
const std::string GOOD4 = "\\\\srv\\share\\a.txt\t=\t4\t2024-03-08 14:05:09\t1024\tSP\t-\t17:4097\n";

std::string slurp(const char* path) {
    std::string text;
    if (FILE* f = std::fopen(path, "rb")) {
        char buffer[4096];
        std::size_t n;
        while ((n = std::fread(buffer, 1, sizeof buffer, f)) > 0)
            text.append(buffer, n);
        std::fclose(f);
    }
    return text;
}

} // namespace

TEST(UQHistoryStore, ReadsEveryFieldOfARecord) {
    Collector sink;
    const std::string text = GOOD +
                             "\\\\srv\\share\\b.txt\tC:\\data\\b.txt\t1\t2020-01-02 03:04:05.25\t0\tSAEPD\t"
                             "2021-06-30 00:00:00\t4294967295:18446744073709551615\n";
    const auto result = search(text, sink);
    EXPECT_EQ(result.uRecords, 2u);
    EXPECT_EQ(result.uMatches, 2u);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(sink.texts,
              (std::vector<std::string>{
                  "Object='\\\\srv\\share\\a.txt', file='\\\\srv\\share\\a.txt', version=3, size=1024, "
                  "last-write-time=2024-03-07 14:05:09, flags=SP, expiry=none, access=17:4096",
                  "Object='\\\\srv\\share\\b.txt', file='C:\\data\\b.txt', version=1, size=0, "
                  "last-write-time=2020-01-02 03:04:05.2500000, flags=SAEPD, expiry=2021-06-30 00:00:00, "
                  "access=4294967295:18446744073709551615"}));
    // "=" gives the file path the object path's own text.
    EXPECT_EQ(sink.filePathShared, (std::vector<bool>{true, false}));
}

TEST(UQHistoryStore, CommentsBlankLinesByteOrderMarkAndLineEnds) {
    Collector sink;
    const std::string text = "\xEF\xBB\xBF# header\r\n\r\n   \n" + GOOD.substr(0, GOOD.size() - 1) +
                             "\r\n# done\n" + GOOD4.substr(0, GOOD4.size() - 1);
    const auto result = search(text, sink);
    EXPECT_EQ(result.uRecords, 2u);
    EXPECT_TRUE(result.errors.empty());
    ASSERT_EQ(sink.texts.size(), 2u);
    EXPECT_NE(sink.texts[1].find("version=4"), std::string::npos);
}

// Two stores joined: the second one's byte order mark starts a line and is skipped there as well, before a
// comment as before a record.
TEST(UQHistoryStore, ByteOrderMarkAtTheStartOfALaterLineIsNoPartOfThePath) {
    Collector sink;
    const auto result =
        search("\xEF\xBB\xBF" + GOOD + "\xEF\xBB\xBF# second store\n\xEF\xBB\xBF" + GOOD4, sink);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(result.uRecords, 2u);
    ASSERT_EQ(sink.texts.size(), 2u);
    EXPECT_EQ(
        sink.texts[1].rfind("Object='\\\\srv\\share\\a.txt', file='\\\\srv\\share\\a.txt', version=4", 0), 0u)
        << sink.texts[1];
}

// A version of an object path listed again (the path compared case-blind, as the search list groups them)
// is malformed the second time, as in every text format read here.
TEST(UQHistoryStore, RepeatedObjectPathAndVersionIsMalformedNamingTheFirstLine) {
    Collector sink;
    LogCheck log;
    std::string upper = GOOD;
    upper.replace(0, 17, "\\\\SRV\\SHARE\\A.TXT");
    std::string padded = GOOD;
    padded.replace(padded.find("\t3\t"), 3, "\t003\t");
    const auto result = search(GOOD + GOOD4 + upper + padded, sink);
    EXPECT_EQ(details(result),
              (std::vector<std::string>{"store.txt:3: version 3 of this path is already listed on line 1",
                                        "store.txt:4: version 3 of this path is already listed on line 1"}));
    EXPECT_EQ(result.uRecords, 2u);
    EXPECT_EQ(sink.texts.size(), 2u);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQHistoryStore::mf_searchText",
                                     "History record skipped: store.txt:3: version 3 of this path is already "
                                     "listed on line 1"},
                                    {'W', "UQHistoryStore::mf_searchText",
                                     "History record skipped: store.txt:4: version 3 of this path is already "
                                     "listed on line 1"}}));
}

// A path written with forward slashes names the same object as with backslashes, as the search list
// compares them.
TEST(UQHistoryStore, RepeatedVersionWithForwardSlashesIsMalformedToo) {
    Collector sink;
    LogCheck log;
    std::string slashes = GOOD;
    slashes.replace(0, 17, "//srv/share/a.txt");
    const auto result = search(GOOD + slashes, sink);
    EXPECT_EQ(details(result),
              (std::vector<std::string>{"store.txt:2: version 3 of this path is already listed on line 1"}));
    EXPECT_EQ(sink.texts.size(), 1u);
    EXPECT_EQ(log.lines().size(), 1u);
}

// A store writes the path out again for every version; the records of one file hand over one text, so a
// large history holds each path once. A path spelt otherwise keeps its own text.
TEST(UQHistoryStore, VersionsOfOneFileShareOnePathTextWhereSpeltAlike) {
    Collector sink;
    std::string upper = GOOD;
    upper.replace(0, 17, "\\\\SRV\\SHARE\\A.TXT");
    upper.replace(upper.find("\t3\t"), 3, "\t5\t");
    const std::string other = "\\\\srv\\share\\b.txt\t=\t3\t2024-03-07 14:05:09\t1\t-\t-\t1:1\n";
    const auto result = search(GOOD + other + GOOD4 + upper, sink);
    EXPECT_TRUE(result.errors.empty());
    ASSERT_EQ(sink.objectPathTexts.size(), 4u);
    EXPECT_EQ(sink.objectPathTexts[0], sink.objectPathTexts[2]);
    EXPECT_NE(sink.objectPathTexts[0], sink.objectPathTexts[1]);
    EXPECT_NE(sink.objectPathTexts[0], sink.objectPathTexts[3]);
    EXPECT_NE(sink.texts[3].find("Object='\\\\SRV\\SHARE\\A.TXT'"), std::string::npos) << sink.texts[3];
}

TEST(UQHistoryStore, NonAsciiPathsAreUtf8) {
    Collector sink;
    search("\\\\srv\\Sales\\M\xC3\xBCller \xC3\x98rsted.pptx\t=\t1\t2024-01-01 00:00:00\t5\t-\t-\t1:1\n",
           sink);
    ASSERT_EQ(sink.texts.size(), 1u);
    EXPECT_NE(sink.texts[0].find("M\xC3\xBCller \xC3\x98rsted.pptx"), std::string::npos);
}

TEST(UQHistoryStore, MalformedRecordsAreReportedWithFileAndLineAndSkipped) {
    Collector sink;
    LogCheck log;
    const std::string text = "# bad records\n"
                             "\\\\srv\\a\t=\t1\n"
                             "\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\tx1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\t4294967296\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-02-30 10:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t-5\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t1\tSX\t-\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t1\tSS\t-\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t1\t-\tnever\t1:1\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t17\n"
                             "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t4294967296:1\n"
                             "\\\\srv\\M\xFCller\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\rb\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             " \t \n" +
                             GOOD;
    const auto result = search(text, sink);
    const std::vector<std::string> expected = {
        "store.txt:2: expected 8 tab-separated fields, found 3",
        "store.txt:3: empty object path",
        "store.txt:4: empty file path (write = for the object path)",
        "store.txt:5: bad version number 'x1'",
        "store.txt:6: bad version number '4294967296'",
        "store.txt:7: bad last write time '2024-02-30 10:00:00'",
        "store.txt:8: bad last write time '2024-01-01'",
        "store.txt:9: bad size '-5'",
        "store.txt:10: bad flags 'SX'",
        "store.txt:11: bad flags 'SS'",
        "store.txt:12: bad expiry time 'never'",
        "store.txt:13: bad access key '17'",
        "store.txt:14: bad access key '4294967296:1'",
        "store.txt:15: invalid UTF-8 (byte 0xFC at column 8) in "
        "'\\\\srv\\M\\xFCller\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1'",
        "store.txt:16: control character 0x0D at column 8",
    };
    EXPECT_EQ(details(result), expected);
    EXPECT_EQ(result.uRecords, 1u);
    EXPECT_EQ(sink.texts.size(), 1u);
    std::vector<LogLine> lines;
    for (const std::string& detail : expected)
        lines.push_back({'W', "UQHistoryStore::mf_searchText", "History record skipped: " + detail});
    EXPECT_EQ(log.lines(), lines);
}

TEST(UQHistoryStore, OnlyWellFormedUtf8IsRead) {
    const auto line = [](const std::string& name) {
        return "\\\\srv\\" + name + "\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n";
    };
    // The record quoted back, its bytes that are no UTF-8 as \xNN.
    const auto shownLine = [](const std::string& shownName) {
        return "\\\\srv\\" + shownName + "\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1'";
    };
    Collector sink;
    LogCheck log;
    const auto result =
        search(line("smile \xF0\x9F\x98\x80") + line("overlong \xC0\x80") + line("surrogate \xED\xA0\x80") +
                   line("beyond \xF4\x90\x80\x80") + line("cut \xE2\x82") + line("euro \xE2\x82\xAC"),
               sink);
    EXPECT_EQ(
        details(result),
        (std::vector<std::string>{
            "store.txt:2: invalid UTF-8 (byte 0xC0 at column 16) in '" + shownLine("overlong \\xC0\\x80"),
            "store.txt:3: invalid UTF-8 (byte 0xED at column 17) in '" +
                shownLine("surrogate \\xED\\xA0\\x80"),
            "store.txt:4: invalid UTF-8 (byte 0xF4 at column 14) in '" +
                shownLine("beyond \\xF4\\x90\\x80\\x80"),
            "store.txt:5: invalid UTF-8 (byte 0xE2 at column 11) in '" + shownLine("cut \\xE2\\x82")}));
    EXPECT_EQ(result.uRecords, 2u);
    EXPECT_EQ(log.count(), 4u);
}

// A malformed field is quoted back up to 200 bytes, cut at a character boundary with how much was left
// out: a megabyte line must not become a megabyte message and log record.
TEST(UQHistoryStore, AnEchoedFieldIsCutWithAMarker) {
    Collector sink;
    LogCheck log;
    const std::string longVersion = "\xC3\xA9" + std::string(1 << 20, '9');
    std::string line = GOOD;
    line.replace(line.find("\t3\t"), 3, "\t" + longVersion + "\t");
    const auto result = search(line, sink);
    const std::string expected = "store.txt:1: bad version number '\xC3\xA9" + std::string(198, '9') +
                                 "... (" + std::to_string(longVersion.size() - 200) + " more bytes)'";
    EXPECT_EQ(details(result), (std::vector<std::string>{expected}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQHistoryStore::mf_searchText",
                                                  "History record skipped: " + expected}}));
}

#if !defined(_WIN32)
// A directory opens as a file here and fails when read: the detail gives the system's reason.
TEST(UQHistoryStore, AReadErrorGivesTheSystemsReason) {
    LogCheck log;
    Collector sink;
    const CString directory = CString::FromUtf8(std::filesystem::temp_directory_path().string());
    UQHistoryStore store(directory);
    std::string detail;
    try {
        store.mf_search(UQHistoryQuery(), sink);
    } catch (const UQErrno& e) {
        detail = utf8(e.mf_getDetail());
    }
    EXPECT_EQ(detail, utf8(directory) + ": read error: Is a directory (errno 21)");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQHistoryStore::mf_search",
                                     "Failure reading history store '" + utf8(directory) + "'"}}));
}
#endif

TEST(UQHistoryStore, PatternMatchesTheFilePathCaseBlind) {
    Collector sink;
    const std::string text =
        "\\\\srv\\Finance\\Report 01.XLSX\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
        "\\\\srv\\Finance\\Report 02.docx\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:2\n"
        "\\\\srv\\object\t\\\\srv\\Sales\\report 03.xlsx\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:3\n";
    UQHistoryQuery query;
    query.sPattern = L"*\\report ??.xlsx";
    const auto result = search(text, sink, query);
    EXPECT_EQ(result.uRecords, 3u);
    EXPECT_EQ(result.uMatches, 2u);
    ASSERT_EQ(sink.texts.size(), 2u);
    EXPECT_NE(sink.texts[0].find("Report 01.XLSX"), std::string::npos);
    EXPECT_NE(sink.texts[1].find("report 03.xlsx"), std::string::npos);
}

TEST(UQHistoryStore, TimeRangeIncludesBothEnds) {
    const std::string text = "\\\\srv\\a\t=\t1\t2024-01-01 00:00:00\t1\t-\t-\t1:1\n"
                             "\\\\srv\\a\t=\t2\t2024-01-02 00:00:00\t1\t-\t-\t1:2\n"
                             "\\\\srv\\a\t=\t3\t2024-01-03 00:00:00\t1\t-\t-\t1:3\n";
    UQHistoryQuery query;
    query.fromTime = fileTime(2024, 1, 2);
    Collector from;
    EXPECT_EQ(search(text, from, query).uMatches, 2u);
    query.toTime = fileTime(2024, 1, 2);
    Collector both;
    EXPECT_EQ(search(text, both, query).uMatches, 1u);
    query.fromTime = UQFileTime(0);
    Collector to;
    EXPECT_EQ(search(text, to, query).uMatches, 2u);
}

TEST(UQHistoryStore, FormattedRecordsReadBackTheSame) {
    const UQQueryData records[] = {
        UQQueryData(L"\\\\srv\\share\\a b.txt", L"C:\\local\\a b.txt", 42,
                    UQFileTime(fileTime(2023, 5, 6).mf_getValue() + 1234567), UQFileSize(123456789),
                    UQQueryData::FLAG_AD_STREAMS | UQQueryData::FLAG_DELETION_STARTED,
                    UQExpiryTime{fileTime(2026, 1, 1, 12).mf_getValue()}, {9, 77}),
        UQQueryData(L"\\\\srv\\x", L"", 0, fileTime(1601, 1, 1), UQFileSize(0), 0, UQExpiryTime{0}, {0, 0}),
    };
    std::string text;
    for (const UQQueryData& r : records)
        text += UQHistoryStore::mf_formatRecord(r) + "\n";
    EXPECT_EQ(UQHistoryStore::mf_formatRecord(records[1]),
              "\\\\srv\\x\t=\t0\t1601-01-01 00:00:00\t0\t-\t-\t0:0");
    Collector sink;
    const auto result = search(text, sink);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(sink.texts,
              (std::vector<std::string>{utf8(records[0].mf_toString()), utf8(records[1].mf_toString())}));
}

TEST(UQHistoryStore, FormattingRefusesPathsALineCannotCarry) {
    const auto record = [](const CString& _sObjectPath, const CString& _sFilePath) {
        return UQQueryData(_sObjectPath, _sFilePath, 1, fileTime(2024, 1, 1), UQFileSize(1), 0,
                           UQExpiryTime{0}, {0, 0});
    };
    LogCheck log;
    const CString tab(L"C:\\u\\tab\t.txt");
    EXPECT_EQ(thrownCategory([&] { UQHistoryStore::mf_formatRecord(record(tab, L"")); }), "_E_::Parameter");
    CString lineBreak(L"C:\\u\\line\nbreak.txt");
    EXPECT_EQ(thrownCategory([&] { UQHistoryStore::mf_formatRecord(record(L"C:\\x", lineBreak)); }),
              "_E_::Parameter");
    CString lone(L"C:\\u\\lone");
    lone += static_cast<wchar_t>(0xD83D);
    EXPECT_EQ(thrownCategory([&] { UQHistoryStore::mf_formatRecord(record(lone, L"")); }), "_E_::Parameter");
    EXPECT_EQ(
        log.lines(),
        (std::vector<LogLine>{
            {'E', "UQHistoryStore::mf_formatRecord",
             "The object path 'C:\\u\\tab\\u0009.txt' cannot be stored: control character U+0009 at unit 9"},
            {'E', "UQHistoryStore::mf_formatRecord",
             "The file path 'C:\\u\\line\\u000Abreak.txt' cannot be stored: control character U+000A at unit "
             "10"},
            {'E', "UQHistoryStore::mf_formatRecord",
             "The object path 'C:\\u\\lone\\uD83D' cannot be stored: unpaired surrogate U+D83D at unit "
             "10"}}));
    // A surrogate pair is one character beyond the BMP, written as UTF-8.
    CString emoji(L"C:\\u\\emoji-");
    emoji += static_cast<wchar_t>(0xD83D);
    emoji += static_cast<wchar_t>(0xDE00);
    EXPECT_EQ(UQHistoryStore::mf_formatRecord(record(emoji, L"")).substr(0, 15),
              "C:\\u\\emoji-\xF0\x9F\x98\x80");
}

TEST(UQHistoryStore, TheShippedSampleReadsCleanly) {
    UQHistoryStore store(CString::FromUtf8(KOR_HISTORY_SAMPLE));
    UQSearchList list;
    ListSink sink(list);
    const auto result = store.mf_search(UQHistoryQuery(), sink);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(result.uRecords, 60u);
    EXPECT_EQ(result.uMatches, 60u);
    EXPECT_EQ(list.mf_hasProtectedItems(), 1);
    list.mf_close();
    EXPECT_EQ(list.mf_getFileItemCount(), 21u);
    // Every state is there: each exclusion flag takes away at least one file.
    const auto countWithout = [&list](int flag) {
        int flags[6] = {0, 0, 0, 0, 0, 0};
        flags[flag] = 1;
        UQSearchFileItem::Array items;
        list.mf_getFileList(items, flags[0], flags[1], flags[2], flags[3], flags[4], flags[5]);
        return items.GetSize();
    };
    for (int flag = 0; flag < 6; ++flag)
        EXPECT_LT(countWithout(flag), 21) << "flag " << flag + 1;
    UQSearchFileItem::Array all;
    list.mf_getFileList(all, 0, 0, 0, 0, 0, 0);
    int withSecurity = 0, withStreams = 0, withGap = 0;
    for (INT_PTR i = 0; i < all.GetSize(); ++i) {
        withSecurity += all[i]->mf_getQueryData().mf_hasSecurity();
        withStreams += all[i]->mf_getQueryData().mf_hasADStreams();
        withGap += utf8(all[i]->mf_getRangesDisplayString()) == "1 - 3, 5, 6";
    }
    EXPECT_GT(withSecurity, 0);
    EXPECT_GT(withStreams, 0);
    EXPECT_EQ(withGap, 1);
}

TEST(UQHistoryStore, AStoreThatCannotBeOpenedIsAFileError) {
    LogCheck log;
    UQHistoryStore store(L"no such history.txt");
    Collector sink;
    try {
        store.mf_search(UQHistoryQuery(), sink);
        ADD_FAILURE() << "no exception";
    } catch (const UQErrno& e) {
        EXPECT_TRUE(e.mf_getData().mf_is(UQErrno::_E_::File));
        EXPECT_EQ(utf8(e.mf_getDetail()).rfind("no such history.txt: cannot open", 0), 0u);
    }
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQHistoryStore::mf_search",
                                                  "Failure opening history store 'no such history.txt'"}}));
}

TEST(UQHistoryStore, ASinkErrorEndsTheSearch) {
    class Refusing : public UVQueryDataSink {
    public:
        void mf_onQueryData(const UQQueryData&) override {
            ++calls;
            throw UQErrno(UQErrno::_E_::AlreadyInitialized);
        }
        int calls = 0;
    } sink;
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] {
                  UQHistoryStore::mf_searchText("# x\n" + GOOD + GOOD, NAME, UQHistoryQuery(), sink);
              }),
              "_E_::AlreadyInitialized");
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQHistoryStore::mf_searchText",
                                     "Failure handing over the record of store.txt:2:\r\n    " +
                                         utf8(UQErrno(UQErrno::_E_::AlreadyInitialized).mf_toString())}}));
}

TEST(UQHistoryStore, ATrippedCancelSwitchEndsTheSearch) {
    UQCancelSwitch cancel;
    cancel.mf_implTryCancel();
    Collector sink;
    LogCheck log;
    EXPECT_EQ(
        thrownCategory([&] { UQHistoryStore::mf_searchText(GOOD, NAME, UQHistoryQuery(), sink, &cancel); }),
        "_W_::UserCanceled");
    EXPECT_TRUE(sink.texts.empty());
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'W', "UQHistoryStore::mf_searchText",
                                                  "History search canceled at store.txt:1"}}));
}

// ---------------------------------------------------------------------------------------------------------
// The search on its own thread

TEST(UQHistorySearch, StreamsTheSampleIntoASearchListFromItsOwnThread) {
    UQHistoryStore store(CString::FromUtf8(KOR_HISTORY_SAMPLE));
    UQHistoryQuery query;
    query.sPattern = L"\\\\FILESRV01\\*";
    Collector collected;
    {
        UQHistorySearch search(store, query, collected);
        const auto result = search.mf_wait();
        EXPECT_EQ(result.uRecords, 60u);
        EXPECT_EQ(result.uMatches, collected.texts.size());
        // A second wait answers the same.
        EXPECT_EQ(search.mf_wait().uMatches, result.uMatches);
    }
    EXPECT_EQ(collected.threads.size(), 1u);
    EXPECT_EQ(collected.threads.count(std::this_thread::get_id()), 0u);

    UQSearchList list;
    ListSink sink(list);
    UQHistorySearch search(store, query, sink);
    search.mf_wait();
    list.mf_close();
    UQSearchFileItem::Array items;
    list.mf_getFileList(items, 0, 0, 0, 0, 0, 0);
    ASSERT_EQ(items.GetSize(), 6);
    for (INT_PTR i = 0; i < items.GetSize(); ++i)
        EXPECT_EQ(utf8(items[i]->mf_getPath()).rfind("\\\\FILESRV01\\", 0), 0u);
}

TEST(UQHistorySearch, TheSearchErrorReachesTheCaller) {
    UQSearchList list;
    list.mf_close();
    ListSink sink(list);
    LogCheck log;
    UQHistorySearch search(UQHistoryStore(CString::FromUtf8(KOR_HISTORY_SAMPLE)), UQHistoryQuery(), sink);
    EXPECT_EQ(thrownCategory([&] { search.mf_wait(); }), "_E_::AlreadyInitialized");
    EXPECT_EQ(thrownCategory([&] { search.mf_wait(); }), "_E_::AlreadyInitialized");
    const auto lines = log.lines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], (LogLine{'E', "UQSearchList::mf_add", "Search item list has already been closed"}));
    EXPECT_EQ(lines[1].function, "UQHistoryStore::mf_searchText");
    EXPECT_EQ(lines[1].text.rfind("Failure handing over the record of ", 0), 0u);
}

TEST(UQHistorySearch, AMissingStoreIsAFileError) {
    Collector sink;
    LogCheck log;
    UQHistorySearch search(UQHistoryStore(L"missing-history.txt"), UQHistoryQuery(), sink);
    EXPECT_EQ(thrownCategory([&] { search.mf_wait(); }), "_E_::File");
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQHistoryStore::mf_search",
                                                  "Failure opening history store 'missing-history.txt'"}}));
}

TEST(UQHistorySearch, OtherExceptionsStayInTheThread) {
    class Throwing : public UVQueryDataSink {
    public:
        void mf_onQueryData(const UQQueryData&) override { throw std::runtime_error("not a UQErrno"); }
    } sink;
    LogCheck log;
    const CString file = CString::FromUtf8(KOR_HISTORY_SAMPLE);
    UQHistorySearch search((UQHistoryStore(file)), UQHistoryQuery(), sink);
    EXPECT_EQ(thrownCategory([&] { search.mf_wait(); }), "_E_::Internal");
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQHistorySearch::mf_implRun",
                                     "Unexpected exception in the history search of '" + utf8(file) + "'"}}));
}

TEST(UQHistorySearch, CancelStopsTheSearchAfterTheRecordAtHand) {
    // Cancels the search it belongs to on the first record; it waits until it knows that search.
    class CancelOnFirst : public UVQueryDataSink {
    public:
        void mf_onQueryData(const UQQueryData&) override {
            ++calls;
            UQHistorySearch* own = nullptr;
            while ((own = search.load()) == nullptr)
                std::this_thread::yield();
            own->mf_cancel();
        }
        std::atomic<UQHistorySearch*> search{nullptr};
        int calls = 0;
    } sink;
    const char* file = "cancel-history.txt";
    {
        const std::string text = GOOD + GOOD + GOOD;
        FILE* f = std::fopen(file, "wb");
        ASSERT_NE(f, nullptr);
        std::fwrite(text.data(), 1, text.size(), f);
        std::fclose(f);
    }
    LogCheck log;
    {
        UQHistorySearch search(UQHistoryStore(CString::FromUtf8(file)), UQHistoryQuery(), sink);
        sink.search = &search;
        EXPECT_EQ(thrownCategory([&] { search.mf_wait(); }), "_W_::UserCanceled");
    }
    EXPECT_EQ(sink.calls, 1);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'W', "UQHistoryStore::mf_searchText",
                                     "History search canceled at " + std::string(file) + ":2"}}));
    std::remove(file);
}

// ---------------------------------------------------------------------------------------------------------
// Generated histories

TEST(UQHistoryGenerator, SameSeedSameHistory) {
    Collector a, b;
    UQHistoryGenerator(500, 7).mf_generate(100, 400, a);
    UQHistoryGenerator(500, 7).mf_generate(100, 400, b);
    EXPECT_EQ(a.texts, b.texts);
    Collector c;
    UQHistoryGenerator(500, 8).mf_generate(100, 400, c);
    EXPECT_NE(a.texts, c.texts);
}

TEST(UQHistoryGenerator, RealisticFilesAndVersions) {
    class Stats : public UVQueryDataSink {
    public:
        void mf_onQueryData(const UQQueryData& d) override {
            ++records;
            const std::string path = utf8(d.mf_getObjectPath());
            minLength = std::min<std::size_t>(
                minLength, static_cast<std::size_t>(d.mf_getObjectPath().mf_getPath().GetLength()));
            maxLength = std::max<std::size_t>(
                maxLength, static_cast<std::size_t>(d.mf_getObjectPath().mf_getPath().GetLength()));
            totalLength += static_cast<std::size_t>(d.mf_getObjectPath().mf_getPath().GetLength());
            if (!versions[path].insert(d.mf_getVersion()).second)
                ++duplicates;
            if (!previous.empty() &&
                UQPath::mf_compare(CString::FromUtf8(previous), CString::FromUtf8(path)) > 0)
                ++descents;
            previous = path;
            protectedCount += d.mf_isProtected();
            security += d.mf_hasSecurity();
            streams += d.mf_hasADStreams();
            deleted += d.mf_isEventBased() && d.mf_isDeletionStarted();
            expiring += !d.mf_isEventBased() && d.mf_getExpiryTime().mf_isSet();
        }
        std::size_t records = 0, minLength = 1000, maxLength = 0, totalLength = 0, duplicates = 0,
                    descents = 0;
        int protectedCount = 0, security = 0, streams = 0, deleted = 0, expiring = 0;
        std::map<std::string, std::set<std::uint32_t>> versions;
        std::string previous;
    } stats;
    const UQHistoryGenerator generator(3000, 1);
    EXPECT_EQ(generator.mf_getSlotCount(), 15000u);
    const std::uint64_t made = generator.mf_generate(0, generator.mf_getSlotCount(), stats);
    EXPECT_EQ(made, stats.records);
    EXPECT_EQ(generator.mf_countRecords(0, generator.mf_getSlotCount()), made);
    EXPECT_EQ(generator.mf_countRecords(0, 7000) + generator.mf_countRecords(7000, 15000), made);
    EXPECT_EQ(stats.versions.size(), 3000u);
    EXPECT_EQ(stats.duplicates, 0u);
    EXPECT_GT(made, 2.8 * 3000);
    EXPECT_LT(made, 3.2 * 3000);
    EXPECT_GE(stats.minLength, 60u);
    EXPECT_LE(stats.maxLength, 130u);
    const double meanLength = static_cast<double>(stats.totalLength) / static_cast<double>(made);
    EXPECT_GT(meanLength, 75.0);
    EXPECT_LT(meanLength, 110.0);
    // Storage order, not path order.
    EXPECT_GT(stats.descents, made / 4);
    for (int count : {stats.protectedCount, stats.security, stats.streams, stats.deleted, stats.expiring})
        EXPECT_GT(count, 0);
    std::size_t oneVersion = 0, fiveVersions = 0;
    for (const auto& file : stats.versions) {
        oneVersion += file.second.size() == 1;
        fiveVersions += file.second.size() == 5;
    }
    EXPECT_GT(oneVersion, 0u);
    EXPECT_GT(fiveVersions, 0u);
}

TEST(UQHistoryGenerator, WrittenStoresReadBackWithoutErrors) {
    const char* file = "generated-history.txt";
    const UQHistoryGenerator generator(400, 3);
    generator.mf_writeStore(CString::FromUtf8(file));
    Collector fromStore, direct;
    const auto result = UQHistoryStore(CString::FromUtf8(file)).mf_search(UQHistoryQuery(), fromStore);
    generator.mf_generate(0, generator.mf_getSlotCount(), direct);
    EXPECT_TRUE(result.errors.empty());
    EXPECT_EQ(fromStore.texts, direct.texts);
    EXPECT_EQ(slurp(file).rfind("# History store made by UQHistoryGenerator: 400 files, start 3\n", 0), 0u);
    std::remove(file);
}

namespace {

// Every report of a progress listener, with the thread it came on.
struct ProgressRecorder : UVReadProgress {
    void mf_onReadProgress(std::uint64_t _uLines, std::uint64_t _uBytes,
                           std::uint64_t _uTotalBytes) noexcept override {
        reports.push_back({_uLines, _uBytes, _uTotalBytes});
        threads.insert(std::this_thread::get_id());
    }
    std::vector<std::vector<std::uint64_t>> reports;
    std::set<std::thread::id> threads;
};

// _nLines store lines of one version each, all of the same length.
std::string storeOfLines(int _nLines) {
    std::string text;
    for (int i = 0; i < _nLines; ++i) {
        char path[32];
        std::snprintf(path, sizeof path, "\\\\srv\\s\\f%06d.txt", i);
        text += std::string(path) + "\t=\t1\t2024-03-07 14:05:09\t1\t-\t-\t1:1\n";
    }
    return text;
}

} // namespace

// Every 4096 lines the listener hears the lines and bytes read so far and the store file's size.
TEST(UQHistoryStore, AProgressListenerHearsEvery4096LinesWithTheFileSize) {
    const std::string text = storeOfLines(10000);
    const std::size_t lineBytes = text.find('\n') + 1;
    const char* file = "progress-history.txt";
    {
        std::ofstream out(file, std::ios::binary);
        out << text;
    }
    Collector sink;
    ProgressRecorder progress;
    const auto result =
        UQHistoryStore(CString::FromUtf8(file)).mf_search(UQHistoryQuery(), sink, nullptr, &progress);
    std::remove(file);
    EXPECT_EQ(result.uRecords, 10000u);
    const std::uint64_t total = text.size();
    EXPECT_EQ(progress.reports, (std::vector<std::vector<std::uint64_t>>{{4096, 4096 * lineBytes, total},
                                                                         {8192, 8192 * lineBytes, total}}));
}

// A search on its own thread tells its listener on that thread; text in memory has its size as the total.
TEST(UQHistorySearch, AProgressListenerHearsOnTheSearchThread) {
    const std::string text = storeOfLines(5000);
    const char* file = "progress-search.txt";
    {
        std::ofstream out(file, std::ios::binary);
        out << text;
    }
    Collector sink;
    ProgressRecorder progress;
    {
        UQHistorySearch search(UQHistoryStore(CString::FromUtf8(file)), UQHistoryQuery(), sink, &progress);
        EXPECT_EQ(search.mf_wait().uRecords, 5000u);
    }
    std::remove(file);
    ASSERT_EQ(progress.reports.size(), 1u);
    EXPECT_EQ(progress.reports[0][0], 4096u);
    EXPECT_EQ(progress.threads, sink.threads);
    EXPECT_EQ(progress.threads.count(std::this_thread::get_id()), 0u);

    ProgressRecorder inMemory;
    Collector memorySink;
    UQHistoryStore::mf_searchText(text, NAME, UQHistoryQuery(), memorySink, nullptr, &inMemory);
    ASSERT_EQ(inMemory.reports.size(), 1u);
    EXPECT_EQ(inMemory.reports[0][2], text.size());
}
