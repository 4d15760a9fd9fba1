// The product log file: line layout, continuation lines, rotation, location and concurrent writers.
#include "BaseTestSupport.h"
#include "support/LogCheck.h"

#include <thread>
#include <vector>

namespace {

#if defined(_WIN32)
const std::string EOL = "\r\n";
#else
const std::string EOL = "\n";
#endif
const std::string INDENT(24, ' ');

UQLogRecord record(const UQLogData& level, const wchar_t* function, const CString& text,
                   DWORD threadId = 1234) {
    UQLogRecord r{&level, function, text, threadId, fileTime(2024, 3, 7, 14, 5, 9, 250).mf_getFileTime(), 1};
    return r;
}

std::vector<std::string> splitLines(const std::string& bytes) {
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < bytes.size()) {
        const std::size_t end = bytes.find(EOL, start);
        if (end == std::string::npos) {
            lines.push_back(bytes.substr(start) + "<no line end>");
            break;
        }
        lines.push_back(bytes.substr(start, end - start));
        start = end + EOL.size();
    }
    return lines;
}

// Records of about the same size: "Record 07" and so on.
CString numberedText(int n) {
    CString s;
    s.Format(L"Record %2.2d", n);
    return s;
}

} // namespace

TEST(UQLogFileSink, LineHasTimeLevelThreadOperationAndText) {
    EXPECT_EQ(
        UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_E, L"UQFileTime::operator_add", L"a + b > MAX")),
        "2024-03-07 14:05:09.250 E 1234 UQFileTime::operator_add: a + b > MAX" + EOL);
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_G, L"UQWindow::mf_setText", L"x", 7)),
              "2024-03-07 14:05:09.250 G 7 UQWindow::mf_setText: x" + EOL);
}

TEST(UQLogFileSink, ContinuationLinesAreIndented) {
    const CString text(
        L"Failure adding file item:\r\n    [E] _E_::Memory: There is not enough memory.\r\n    Next");
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_E, L"UQFileList::mf_add::2", text)),
              "2024-03-07 14:05:09.250 E 1234 UQFileList::mf_add::2: Failure adding file item:" + EOL +
                  INDENT + "    [E] _E_::Memory: There is not enough memory." + EOL + INDENT + "    Next" +
                  EOL);
}

TEST(UQLogFileSink, LoneLineFeedsAndCarriageReturnsAlsoBreakLines) {
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_D, L"F", L"a\nb\rc")),
              "2024-03-07 14:05:09.250 D 1234 F: a" + EOL + INDENT + "b" + EOL + INDENT + "c" + EOL);
}

TEST(UQLogFileSink, TrailingLineBreaksAreDropped) {
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_T, L"F", L"done\r\n\r\n")),
              "2024-03-07 14:05:09.250 T 1234 F: done" + EOL);
}

TEST(UQLogFileSink, EmptyLinesInsideTheTextAreKept) {
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_T, L"F", L"a\r\n\r\nb")),
              "2024-03-07 14:05:09.250 T 1234 F: a" + EOL + INDENT + EOL + INDENT + "b" + EOL);
}

TEST(UQLogFileSink, TextIsWrittenAsUtf8) {
    EXPECT_EQ(
        UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_I, L"F", L"Gr\u00f6\u00dfe \u20ac \U0001F600")),
        "2024-03-07 14:05:09.250 I 1234 F: Gr\xc3\xb6\xc3\x9f"
        "e \xe2\x82\xac \xf0\x9f\x98\x80" +
            EOL);
}

TEST(UQLogFileSink, ControlCharactersBecomeReplacementCharacters) {
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_W, L"F", L"a\x1b[2Jb\tc")),
              "2024-03-07 14:05:09.250 W 1234 F: a\xef\xbf\xbd[2Jb\tc" + EOL);
}

TEST(UQLogFileSink, RecordWithoutOperationNameShowsADash) {
    EXPECT_EQ(UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_W, L"", L"text")),
              "2024-03-07 14:05:09.250 W 1234 -: text" + EOL);
}

TEST(UQLogFileSink, WritesRecordsIntoANewDirectory) {
    basetest::ScratchDirectory dir("log-create");
    const CString path = dir.child(L"Protokoll \u00dc\u20ac/nested/korguibase.log");
    {
        UQLogFileSink sink(path);
        EXPECT_EQ(sink.mf_getPath(), path);
        sink.mf_write(record(UQLogData::LEVEL_E, L"A::b", L"first"));
        sink.mf_write(record(UQLogData::LEVEL_W, L"A::c", L"second\r\n    more"));
    }
    EXPECT_EQ(basetest::readFile(path), "2024-03-07 14:05:09.250 E 1234 A::b: first" + EOL +
                                            "2024-03-07 14:05:09.250 W 1234 A::c: second" + EOL + INDENT +
                                            "    more" + EOL);
}

TEST(UQLogFileSink, AppendsToAnExistingLog) {
    basetest::ScratchDirectory dir("log-append");
    const CString path = dir.child(L"korguibase.log");
    basetest::writeFile(path, "earlier" + EOL);
    {
        UQLogFileSink sink(path);
        sink.mf_write(record(UQLogData::LEVEL_I, L"A::b", L"later"));
    }
    EXPECT_EQ(basetest::readFile(path), "earlier" + EOL + "2024-03-07 14:05:09.250 I 1234 A::b: later" + EOL);
}

TEST(UQLogFileSink, FileIsOnlyCreatedByTheFirstRecord) {
    basetest::ScratchDirectory dir("log-lazy");
    const CString path = dir.child(L"korguibase.log");
    { UQLogFileSink sink(path); }
    EXPECT_FALSE(basetest::exists(path));
}

TEST(UQLogFileSink, RotatesBySizeAndKeepsTheNewestFiles) {
    basetest::ScratchDirectory dir("log-rotate");
    const CString path = dir.child(L"korguibase.log");
    const std::size_t lineSize =
        UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_T, L"R", numberedText(0))).size();
    {
        // Two records fit into a file, the third starts the next one.
        UQLogFileSink sink(path, 2 * lineSize + 1, 2);
        for (int n = 1; n <= 9; ++n)
            sink.mf_write(record(UQLogData::LEVEL_T, L"R", numberedText(n)));
    }
    const auto line = [](int n) {
        return UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_T, L"R", numberedText(n)));
    };
    EXPECT_EQ(basetest::readFile(path), line(9));
    EXPECT_EQ(basetest::readFile(path + L".1"), line(7) + line(8));
    EXPECT_EQ(basetest::readFile(path + L".2"), line(5) + line(6));
    EXPECT_FALSE(basetest::exists(path + L".3"));
}

TEST(UQLogFileSink, RotationCountsWhatTheFileAlreadyHeld) {
    basetest::ScratchDirectory dir("log-rotate-existing");
    const CString path = dir.child(L"korguibase.log");
    basetest::writeFile(path, std::string(100, 'x') + EOL);
    {
        UQLogFileSink sink(path, 100, 1);
        sink.mf_write(record(UQLogData::LEVEL_T, L"R", L"new"));
    }
    EXPECT_EQ(basetest::readFile(path + L".1"), std::string(100, 'x') + EOL);
    EXPECT_EQ(basetest::readFile(path), "2024-03-07 14:05:09.250 T 1234 R: new" + EOL);
}

TEST(UQLogFileSink, WithoutFilesToKeepTheLogStartsAfresh) {
    basetest::ScratchDirectory dir("log-rotate-none");
    const CString path = dir.child(L"korguibase.log");
    const std::size_t lineSize =
        UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_T, L"R", numberedText(0))).size();
    {
        UQLogFileSink sink(path, lineSize, 0);
        for (int n = 1; n <= 3; ++n)
            sink.mf_write(record(UQLogData::LEVEL_T, L"R", numberedText(n)));
    }
    EXPECT_EQ(basetest::readFile(path),
              UQLogFileSink::mf_formatLine(record(UQLogData::LEVEL_T, L"R", numberedText(3))));
    EXPECT_FALSE(basetest::exists(path + L".1"));
}

TEST(UQLogFileSink, RecordLargerThanTheLimitGetsAFileOfItsOwn) {
    basetest::ScratchDirectory dir("log-rotate-large");
    const CString path = dir.child(L"korguibase.log");
    const CString large(L'z', 300);
    {
        UQLogFileSink sink(path, 100, 3);
        sink.mf_write(record(UQLogData::LEVEL_T, L"R", L"small"));
        sink.mf_write(record(UQLogData::LEVEL_T, L"R", large));
        sink.mf_write(record(UQLogData::LEVEL_T, L"R", L"after"));
    }
    EXPECT_EQ(basetest::readFile(path + L".2"), "2024-03-07 14:05:09.250 T 1234 R: small" + EOL);
    EXPECT_EQ(basetest::readFile(path + L".1"),
              "2024-03-07 14:05:09.250 T 1234 R: " + std::string(300, 'z') + EOL);
    EXPECT_EQ(basetest::readFile(path), "2024-03-07 14:05:09.250 T 1234 R: after" + EOL);
}

TEST(UQLogFileSink, UnwritableLocationLosesRecordsQuietly) {
    basetest::ScratchDirectory dir("log-unwritable");
    const CString blocker = dir.child(L"blocker");
    basetest::writeFile(blocker, "a file where a directory should be");
    const CString path = dir.child(L"blocker/korguibase.log");
    UQLogFileSink sink(path);
    sink.mf_write(record(UQLogData::LEVEL_E, L"A::b", L"lost"));
    EXPECT_FALSE(basetest::exists(path));
    EXPECT_EQ(basetest::readFile(blocker), "a file where a directory should be");
}

TEST(UQLogFileSink, ConcurrentWritersNeverMixTheirLines) {
    basetest::ScratchDirectory dir("log-threads");
    const CString path = dir.child(L"korguibase.log");
    const int THREADS = 4;
    const int RECORDS = 200;
    {
        UQLogFileSink sink(path);
        std::vector<std::thread> threads;
        for (int t = 0; t < THREADS; ++t) {
            threads.emplace_back([&sink, t] {
                for (int n = 0; n < RECORDS; ++n) {
                    CString text;
                    text.Format(L"writer %d record %3.3d\r\n    continued", t, n);
                    sink.mf_write(record(UQLogData::LEVEL_T, L"W", text, static_cast<DWORD>(t)));
                }
            });
        }
        for (std::thread& t : threads)
            t.join();
    }
    const std::vector<std::string> lines = splitLines(basetest::readFile(path));
    ASSERT_EQ(lines.size(), static_cast<std::size_t>(2 * THREADS * RECORDS));
    std::vector<int> next(THREADS, 0);
    for (std::size_t i = 0; i < lines.size(); i += 2) {
        const std::string& first = lines[i];
        ASSERT_EQ(first.compare(0, 24, "2024-03-07 14:05:09.250 "), 0) << first;
        int thread = -1;
        int number = -1;
        ASSERT_EQ(std::sscanf(first.c_str() + 24, "T %*d W: writer %d record %d", &thread, &number), 2)
            << first;
        ASSERT_TRUE(thread >= 0 && thread < THREADS) << first;
        EXPECT_EQ(number, next[thread]++) << first;
        EXPECT_EQ(lines[i + 1], INDENT + "    continued");
    }
}

TEST(UQLogFileSink, ProductLogReceivesWhatUQLogWrites) {
    basetest::ScratchDirectory dir("log-uqlog");
    const CString path = dir.child(L"korguibase.log");
    {
        UQLogFileSink sink(path);
        UVLogSink* previous = UQLog::mf_setSink(&sink);
        UQThreadContext::mf_setLoggingLanguage();
        UQLog::mf_writeMessage(UQLogData::LEVEL_W, L"UQComboBox::mf_selectItem::1",
                               L"Item with index=%d not found in combobox list", 4);
        UQLog::mf_setSink(previous);
    }
    const std::string content = basetest::readFile(path);
    CString tail;
    tail.Format(L" W %lu UQComboBox::mf_selectItem::1: Item with index=4 not found in combobox list",
                GetCurrentThreadId());
    ASSERT_EQ(content.size(), 23 + tail.ToUtf8().size() + EOL.size()) << content;
    EXPECT_EQ(content.substr(23), tail.ToUtf8() + EOL);
    // The time is the writing moment in UTC: at least the year is the current one.
    SYSTEMTIME now;
    GetSystemTime(&now);
    EXPECT_EQ(content.substr(0, 4), std::to_string(now.wYear));
}

TEST(UQLogFileSink, EnvironmentVariableChoosesTheLogFile) {
    basetest::EnvironmentOverride file(L"KOR_LOG_FILE", L"D:\\Logs\\stormex.log");
    EXPECT_EQ(UQLogFileSink::mf_getDefaultPath().ToUtf8(), "D:\\Logs\\stormex.log");
    const UQLogFileSink sink;
    EXPECT_EQ(sink.mf_getPath().ToUtf8(), "D:\\Logs\\stormex.log");
}

#if defined(_WIN32)
TEST(UQLogFileSink, DefaultLocationIsUnderLocalApplicationData) {
    basetest::EnvironmentOverride file(L"KOR_LOG_FILE", nullptr);
    basetest::EnvironmentOverride local(L"LOCALAPPDATA", L"C:\\Users\\tester\\AppData\\Local");
    EXPECT_EQ(UQLogFileSink::mf_getDefaultPath().ToUtf8(),
              "C:\\Users\\tester\\AppData\\Local\\Corvex\\Stormex\\Logs\\korguibase.log");
}

TEST(UQLogFileSink, WithoutLocalApplicationDataTheProfileIsUsed) {
    basetest::EnvironmentOverride file(L"KOR_LOG_FILE", nullptr);
    basetest::EnvironmentOverride local(L"LOCALAPPDATA", nullptr);
    basetest::EnvironmentOverride profile(L"USERPROFILE", L"C:\\Users\\tester\\");
    EXPECT_EQ(UQLogFileSink::mf_getDefaultPath().ToUtf8(),
              "C:\\Users\\tester\\AppData\\Local\\Corvex\\Stormex\\Logs\\korguibase.log");
}
#else
TEST(UQLogFileSink, DefaultLocationIsUnderTheStateDirectory) {
    basetest::EnvironmentOverride file(L"KOR_LOG_FILE", nullptr);
    basetest::EnvironmentOverride state(L"XDG_STATE_HOME", L"/var/tmp/state/");
    EXPECT_EQ(UQLogFileSink::mf_getDefaultPath().ToUtf8(), "/var/tmp/state/korguibase/korguibase.log");
}

TEST(UQLogFileSink, RelativeStateDirectoryIsIgnoredForTheHomeDirectory) {
    basetest::EnvironmentOverride file(L"KOR_LOG_FILE", nullptr);
    basetest::EnvironmentOverride state(L"XDG_STATE_HOME", L"relative/state");
    basetest::EnvironmentOverride home(L"HOME", L"/home/tester");
    EXPECT_EQ(UQLogFileSink::mf_getDefaultPath().ToUtf8(),
              "/home/tester/.local/state/korguibase/korguibase.log");
}
#endif

TEST(UQLogFileSink, EmptyPathMeansTheDefaultLocation) {
    basetest::ScratchDirectory dir("log-default");
    const CString path = dir.child(L"default.log");
    basetest::EnvironmentOverride file(L"KOR_LOG_FILE", path);
    UQLogFileSink sink{CString()};
    sink.mf_write(record(UQLogData::LEVEL_I, L"A::b", L"to the default"));
    EXPECT_EQ(basetest::readFile(path), "2024-03-07 14:05:09.250 I 1234 A::b: to the default" + EOL);
}
