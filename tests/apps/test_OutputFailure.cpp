// korfiles's output: tables written row by row in pieces, columns that a long path does not widen, and a
// standard output that fails (a full disk) or is closed by its reader (a pipe into head).
#include "ConsoleOutput.h"
#include "KorFilesTestSupport.h"
#include "KorFilesTool.h"
#include "TableWriter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <system_error>
#include <vector>

#if defined(_WIN32)
#include <fcntl.h>
#include <io.h>
#else
#include <unistd.h>
#endif

namespace {

// Counts the pieces it is handed; fails every write from the _nFailAt-th on (1 = the first) with _nError.
struct PieceOutput : TextOutput {
    PieceOutput(int _nFailAt = 0, int _nError = 0) : nFailAt(_nFailAt), nError(_nError) {}
    void mf_write(const std::string& s) noexcept override {
        if (nFailed != 0)
            return;
        ++nWrites;
        if (nFailAt != 0 && nWrites >= nFailAt) {
            nFailed = nError;
            return;
        }
        largest = s.size() > largest ? s.size() : largest;
        text += s;
    }
    int mf_getError() const noexcept override { return nFailed; }

    int nFailAt;
    int nError;
    int nFailed = 0;
    int nWrites = 0;
    std::size_t largest = 0;
    std::string text;
};

// A file versions file of _nFiles files with one version each, paths of about 60 characters.
std::string manyFiles(int _nFiles) {
    std::string text;
    for (int i = 0; i < _nFiles; ++i)
        text += "C:\\Projects\\Reports\\2024\\quarterly\\summary-number-" + std::to_string(100000 + i) +
                ".docx\t1\t10\t2024-01-02 03:04:05\tMigrated\n";
    return text;
}

// The write end of a pipe whose read end is closed already: every write fails as into a finished head.
class ClosedPipe {
public:
    ClosedPipe() {
#if defined(_WIN32)
        HANDLE read = nullptr;
        HANDLE write = nullptr;
        EXPECT_TRUE(CreatePipe(&read, &write, nullptr, 0));
        CloseHandle(read);
        const int fd = _open_osfhandle(reinterpret_cast<intptr_t>(write), _O_WRONLY | _O_BINARY);
        EXPECT_NE(-1, fd);
        m_pFile = _fdopen(fd, "wb");
#else
        // The program ignores SIGPIPE so that the write fails with EPIPE; so does this test, while it runs.
        m_previous = std::signal(SIGPIPE, SIG_IGN);
        int fds[2] = {-1, -1};
        EXPECT_EQ(0, pipe(fds));
        close(fds[0]);
        m_pFile = fdopen(fds[1], "wb");
#endif
        EXPECT_NE(nullptr, m_pFile);
    }
    ClosedPipe(const ClosedPipe&) = delete;
    ClosedPipe& operator=(const ClosedPipe&) = delete;
    ~ClosedPipe() {
        if (m_pFile != nullptr)
            std::fclose(m_pFile);
#if !defined(_WIN32)
        std::signal(SIGPIPE, m_previous);
#endif
    }
    std::FILE* file() const {
        return m_pFile;
    }

private:
    std::FILE* m_pFile = nullptr;
#if !defined(_WIN32)
    void (*m_previous)(int) = SIG_DFL;
#endif
};

std::vector<CString> cells(const char* _pszPath, const char* _pszVersions, const char* _pszResult) {
    return {CString::FromUtf8(_pszPath), CString::FromUtf8(_pszVersions), CString::FromUtf8(_pszResult)};
}

} // namespace

TEST(TableWriter, ALongPathOverflowsItsColumnAndLeavesTheOtherLinesAsNarrowAsTheLimit) {
    const std::string longPath = "C:\\" + std::string(TableWriter::WIDTH_LIMIT + 47, 'x');
    const std::vector<CString> headers = {L"Path", L"Versions", L"Result"};
    PieceOutput out;
    TableWriter writer(headers, TableWriter::TABLE, out);
    const std::vector<CString> rows[] = {cells("C:\\a.txt", "1 - 3", "Migrated"),
                                         cells(longPath.c_str(), "2", "Recalled")};
    for (const auto& row : rows)
        writer.mf_measure(row);
    for (const auto& row : rows)
        writer.mf_writeRow(row);
    writer.mf_finish();

    const std::string padToLimit(TableWriter::WIDTH_LIMIT - 4, ' ');
    const std::string padAShort(TableWriter::WIDTH_LIMIT - 8, ' ');
    EXPECT_EQ("Path" + padToLimit + "  Versions  Result\n" +           // the column stops at the limit
                  "C:\\a.txt" + padAShort + "  1 - 3     Migrated\n" + // short lines keep to it
                  longPath + "  2  Recalled\n",                        // the long one pushes its own line
              out.text);
}

TEST(TableWriter, ColumnsNarrowerThanTheLimitAreAsWideAsTheirWidestCell) {
    PieceOutput out;
    TableWriter writer({L"Path", L"Versions"}, TableWriter::TABLE, out);
    const std::vector<CString> rows[] = {{L"C:\\a.txt", L"1"}, {L"C:\\longer\\b.txt", L"1 - 20, 22"}};
    for (const auto& row : rows)
        writer.mf_measure(row);
    for (const auto& row : rows)
        writer.mf_writeRow(row);
    writer.mf_finish();
    EXPECT_EQ("Path             Versions\n"
              "C:\\a.txt         1\n"
              "C:\\longer\\b.txt  1 - 20, 22\n",
              out.text);
}

TEST(TableWriter, RowsReachTheOutputInPiecesOfBoundedSizeNotAsOneText) {
    PieceOutput out;
    TableWriter writer({L"Path", L"Versions"}, TableWriter::CSV, out);
    const int rows = 20000;
    for (int i = 0; i < rows; ++i)
        writer.mf_writeRow({CString::FromUtf8("C:\\data\\file-" + std::to_string(i) + ".txt"), L"1"});
    writer.mf_finish();

    EXPECT_GT(out.nWrites, 5);
    // A piece is handed over as soon as it holds PIECE_BYTES, so it exceeds that by one row at most.
    EXPECT_LT(out.largest, TableWriter::PIECE_BYTES + 64);
    EXPECT_EQ(std::string("Path,Versions\nC:\\data\\file-0.txt,1\n"), out.text.substr(0, 35));
    EXPECT_EQ(static_cast<std::size_t>(rows + 1),
              static_cast<std::size_t>(std::count(out.text.begin(), out.text.end(), '\n')));
}

TEST(TableWriter, NoRowsGiveTheHeaderOrAnEmptyJsonArray) {
    PieceOutput table;
    TableWriter(std::vector<CString>{L"Path", L"Versions"}, TableWriter::TABLE, table).mf_finish();
    EXPECT_EQ("Path  Versions\n", table.text);
    PieceOutput json;
    TableWriter(std::vector<CString>{L"Path", L"Versions"}, TableWriter::JSON, json).mf_finish();
    EXPECT_EQ("[\n]\n", json.text);
}

TEST(KorFilesOutputFailure, AFullDiskEndsTheTableAtTheFirstFailedPieceWithCode5AndItsReason) {
    const TempFile file(manyFiles(5000));
    PieceOutput out(2, ENOSPC);
    StringOutput err;
    EXPECT_EQ(KorFilesTool::EXIT_OUTPUT_FAILED,
              KorFilesTool::mf_run({file.path()}, L"unused.txt", L"unused-listing.txt", out, err));
    // Nothing after the failed piece was even tried, and no count line claims files that were not printed.
    EXPECT_EQ(2, out.nWrites);
    EXPECT_EQ("korfiles: cannot write to standard output: " +
                  std::error_code(ENOSPC, std::generic_category()).message() + "\n",
              err.text);
}

TEST(KorFilesOutputFailure, AFailedHelpOrVersionIsReportedToo) {
    PieceOutput out(1, EIO);
    StringOutput err;
    EXPECT_EQ(KorFilesTool::EXIT_OUTPUT_FAILED,
              KorFilesTool::mf_run({L"--version"}, L"unused.txt", L"unused-listing.txt", out, err));
    EXPECT_EQ("korfiles: cannot write to standard output: " +
                  std::error_code(EIO, std::generic_category()).message() + "\n",
              err.text);
}

TEST(KorFilesOutputFailure, AClosedPipeEndsTheSearchQuietlyWithCode6) {
    const ClosedPipe pipe;
    ConsoleOutput out(pipe.file());
    StringOutput err;
    EXPECT_EQ(KorFilesTool::EXIT_OUTPUT_CLOSED,
              KorFilesTool::mf_run({L"search"}, L"unused.txt", L"unused-listing.txt", out, err));
    EXPECT_EQ(EPIPE, out.mf_getError());
    EXPECT_EQ("", err.text);
}

TEST(KorFilesOutputFailure, AClosedPipeEndsAFileVersionsTableQuietlyWithCode6) {
    const TempFile file(manyFiles(3000));
    const ClosedPipe pipe;
    ConsoleOutput out(pipe.file());
    StringOutput err;
    EXPECT_EQ(KorFilesTool::EXIT_OUTPUT_CLOSED,
              KorFilesTool::mf_run({file.path()}, L"unused.txt", L"unused-listing.txt", out, err));
    EXPECT_EQ("", err.text);
}

#if !defined(_WIN32)
// Windows has no device that is always full.
TEST(KorFilesOutputFailure, DevFullGivesCode5AndNoSpaceLeftOnDevice) {
    std::FILE* full = std::fopen("/dev/full", "wb");
    ASSERT_NE(nullptr, full);
    ConsoleOutput out(full);
    StringOutput err;
    const int code = KorFilesTool::mf_run({L"search"}, L"unused.txt", L"unused-listing.txt", out, err);
    std::fclose(full);
    EXPECT_EQ(KorFilesTool::EXIT_OUTPUT_FAILED, code);
    EXPECT_EQ("korfiles: cannot write to standard output: No space left on device\n", err.text);
}
#endif
