// The progress line of long reads: silent for the first second and when standard error is no terminal,
// then at most five times a second, rewritten in place, and erased at the end.
#include "KorFilesTestSupport.h"
#include "ProgressLine.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

struct TerminalOutput : StringOutput {
    bool mf_isTerminal() const noexcept override { return true; }
};

// A clock that stands still until the test moves it.
struct TestClock {
    std::chrono::steady_clock::time_point now{};
    ProgressLine::Clock function() {
        return [this] { return now; };
    }
    void advance(int _nMilliseconds) { now += std::chrono::milliseconds(_nMilliseconds); }
};

} // namespace

TEST(ProgressLine, SilentForTheFirstSecondThenRewrittenInPlaceAndErasedAtTheEnd) {
    TerminalOutput err;
    TestClock clock;
    {
        ProgressLine progress(err, 1000, clock.function());
        clock.advance(999);
        progress.mf_onProgress(4096, 100);
        EXPECT_EQ("", err.text);
        clock.advance(1);
        progress.mf_onProgress(8192, 450);
        EXPECT_EQ("\rkorfiles: 8192 records read (45%)", err.text);
        // Not again within a fifth of a second.
        clock.advance(199);
        progress.mf_onProgress(12288, 600);
        EXPECT_EQ("\rkorfiles: 8192 records read (45%)", err.text);
        clock.advance(1);
        progress.mf_onProgress(12288, 1000);
        EXPECT_EQ("\rkorfiles: 8192 records read (45%)\rkorfiles: 12288 records read (100%)", err.text);
        err.text.clear();
        progress.mf_finish();
        EXPECT_EQ("\r" + std::string(35, ' ') + "\r", err.text);
        err.text.clear();
    }
    EXPECT_EQ("", err.text) << "erased once only";
}

TEST(ProgressLine, SilentWhenStandardErrorIsNoTerminal) {
    StringOutput err;
    TestClock clock;
    ProgressLine progress(err, 1000, clock.function());
    clock.advance(5000);
    progress.mf_onProgress(4096, 500);
    progress.mf_finish();
    EXPECT_EQ("", err.text);
}

TEST(ProgressLine, AShorterLineCoversTheLongerOneBeforeIt) {
    TerminalOutput err;
    TestClock clock;
    ProgressLine progress(err, 0, clock.function());
    clock.advance(1000);
    progress.mf_onProgress(123456, 10);
    clock.advance(200);
    err.text.clear();
    progress.mf_onProgress(7, 10);
    // An empty text counts as read whole.
    EXPECT_EQ("\rkorfiles: 7 records read (100%)" + std::string(5, ' '), err.text);
}

// The archiver's readers tell the file's size with every report; it makes the percentage.
TEST(ProgressLine, TheSizeAReaderReportsMakesThePercentage) {
    TerminalOutput err;
    TestClock clock;
    ProgressLine progress(err, 0, clock.function());
    clock.advance(1500);
    UVReadProgress& listener = progress;
    listener.mf_onReadProgress(4096, 250, 1000);
    EXPECT_EQ("\rkorfiles: 4096 records read (25%)", err.text);
    progress.mf_finish();
}
