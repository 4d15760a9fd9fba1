// Several publishing threads driving one bar: every increase counts and the control ends where the bar
// does.
#include "guibase/wizard/UQProgressBar.h"
#include "support/LogCheck.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

TEST(UQProgressBarThreads, IncreasesFromSeveralThreadsAllCountAndTheControlShowsTheLastState) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    bar.mf_setProgress(0);
    LogCheck log;
    const int THREADS = 4;
    const int STEPS = 25;
    std::vector<std::thread> threads;
    for (int t = 0; t < THREADS; ++t)
        threads.emplace_back([&bar] {
            for (int i = 0; i < STEPS; ++i) {
                bar.mf_increaseProgress(1);
                bar.mf_setRunning(i % 2);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(bar.mf_getProgress(), 100ul);
    EXPECT_EQ(control.mf_getPos(), 100);
    EXPECT_EQ(bar.mf_getStyle(), UQProgressBar::STYLE_PERCENT);
    std::size_t nPositions = 0;
    for (const LogLine& line : log.lines())
        if (line.text.find("Set progress bar progress to ") == 0)
            ++nPositions;
    EXPECT_EQ(nPositions, static_cast<std::size_t>(THREADS * STEPS));
}

TEST(UQProgressBarThreads, SettingAndReadingFromSeveralThreadsKeepsAConsistentBar) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    LogCheck log;
    std::vector<std::thread> threads;
    for (int t = 0; t < 3; ++t)
        threads.emplace_back([&bar, t] {
            for (int i = 0; i <= 100; ++i) {
                bar.mf_setProgress(static_cast<unsigned long>((i + t) % 101));
                EXPECT_LE(bar.mf_getProgress(), 100ul);
            }
        });
    for (std::thread& thread : threads)
        thread.join();
    bar.mf_setProgress(42);
    EXPECT_EQ(control.mf_getPos(), 42);
    const UQProgressBar copy(bar);
    EXPECT_EQ(copy.mf_getProgress(), 42ul);
}
