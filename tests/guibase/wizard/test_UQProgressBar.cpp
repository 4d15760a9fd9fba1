// The progress bar's state rules: the style follows whether a percentage is known, out-of-range values are
// kept but not shown, repeated values send nothing, and attaching a control replays the whole state.
#include "guibase/wizard/UQProgressBar.h"
#include "support/LogCheck.h"

#include <gtest/gtest.h>

namespace {

const std::string SET_PROGRESS = "UQProgressBar::mf_implSetProgress";
const std::string SET_RUNNING = "UQProgressBar::mf_implSetRunning";
const std::string SET_STYLE = "UQProgressBar::mf_implSetStyle";

using Trace = std::vector<std::string>;

} // namespace

TEST(UQProgressBar, StartsAsAMarqueeThatIsNotRunningWithoutPercentage) {
    UQProgressBar bar;
    EXPECT_EQ(bar.mf_getStyle(), UQProgressBar::STYLE_MARQUEE);
    EXPECT_EQ(bar.mf_isRunning(), 0);
    EXPECT_EQ(bar.mf_getProgress(), 0xFFFFFFFFul);
    EXPECT_EQ(bar.mf_getProgressBar(), nullptr);
}

TEST(UQProgressBar, AttachingAControlToABarAt40PercentSetsPercentStyleRangeStepAndPosition) {
    UQProgressBar bar;
    LogCheck log;
    bar.mf_setProgress(40);
    UQProgressControl control;
    control.mf_setStyle(PBS_MARQUEE);
    control.mf_clearTrace();
    bar.mf_setProgressBar(control.mf_getHandle());
    EXPECT_EQ(control.mf_getTrace(),
              (Trace{"style -PBS_MARQUEE", "PBM_SETRANGE 0 6553600", "PBM_SETSTEP 1 0", "PBM_SETPOS 40 0"}));
    EXPECT_EQ(control.mf_getPos(), 40);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'G', SET_PROGRESS, "Set progress bar progress to 40% (STYLE_PERCENT)"},
                               {'G', SET_STYLE, "Set progress bar style to STYLE_PERCENT"},
                               {'G', SET_PROGRESS, "Set progress bar progress to 40% (STYLE_PERCENT)"},
                               {'G', SET_RUNNING,
                                "Set progress bar running state to FALSE (STYLE_PERCENT, not applicable)"},
                           }));
}

TEST(UQProgressBar, AFreshBarAttachedBecomesAStoppedMarquee) {
    UQProgressBar bar;
    UQProgressControl control;
    LogCheck log;
    bar.mf_setProgressBar(control.mf_getHandle());
    EXPECT_EQ(control.mf_getTrace(), (Trace{"style +PBS_MARQUEE", "PBM_SETMARQUEE 0 0"}));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'G', SET_STYLE, "Set progress bar style to STYLE_MARQUEE"},
                  {'G', SET_PROGRESS, "Set progress bar progress to NONE (STYLE_MARQUEE, not applicable)"},
                  {'G', SET_RUNNING, "Set progress bar running state to FALSE (STYLE_MARQUEE)"},
              }));
}

TEST(UQProgressBar, APercentAbove100IsLoggedAndStoredButNotShownAndRepeatingItDoesNothing) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    bar.mf_setProgress(30);
    control.mf_clearTrace();
    LogCheck log;
    bar.mf_setProgress(101);
    EXPECT_EQ(bar.mf_getProgress(), 101ul);
    EXPECT_EQ(control.mf_getTrace(), Trace());
    EXPECT_EQ(control.mf_getPos(), 30);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', SET_PROGRESS, "Unexpected percent value: 101"}}));
    log.clear();
    bar.mf_setProgress(101);
    EXPECT_EQ(log.count(), 0u);
    EXPECT_EQ(control.mf_getTrace(), Trace());
}

TEST(UQProgressBar, IncreasingAFreshBarByOneWrapsToZeroPercent) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    control.mf_clearTrace();
    LogCheck log;
    bar.mf_increaseProgress(1);
    EXPECT_EQ(bar.mf_getProgress(), 0ul);
    EXPECT_EQ(bar.mf_getStyle(), UQProgressBar::STYLE_PERCENT);
    EXPECT_EQ(control.mf_getTrace(),
              (Trace{"style -PBS_MARQUEE", "PBM_SETRANGE 0 6553600", "PBM_SETSTEP 1 0", "PBM_SETPOS 0 0"}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'G', SET_STYLE, "Set progress bar style to STYLE_PERCENT"},
                               {'G', SET_PROGRESS, "Set progress bar progress to 0% (STYLE_PERCENT)"},
                           }));
}

TEST(UQProgressBar, IncreasingAddsInUnsigned32BitArithmetic) {
    UQProgressBar bar;
    bar.mf_setProgress(10);
    bar.mf_increaseProgress(0xFFFFFFFFul);
    EXPECT_EQ(bar.mf_getProgress(), 9ul);
}

TEST(UQProgressBar, RunningInPercentStyleIsOnlyLoggedAndNotResentAfterSwitchingToMarquee) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    bar.mf_setProgress(50);
    control.mf_clearTrace();
    LogCheck log;
    bar.mf_setRunning(1);
    EXPECT_EQ(control.mf_getTrace(), Trace());
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'G', SET_RUNNING,
                                "Set progress bar running state to TRUE (STYLE_PERCENT, not applicable)"}}));
    log.clear();
    bar.mf_setProgress(0xFFFFFFFFul);
    EXPECT_EQ(control.mf_getTrace(), (Trace{"style +PBS_MARQUEE"}));
    EXPECT_EQ(control.mf_isMarqueeOn(), 0);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'G', SET_STYLE, "Set progress bar style to STYLE_MARQUEE"},
                  {'G', SET_PROGRESS, "Set progress bar progress to NONE (STYLE_MARQUEE, not applicable)"},
              }));
    // The same flag again changes nothing; attaching again sends it.
    bar.mf_setRunning(1);
    EXPECT_EQ(control.mf_isMarqueeOn(), 0);
    bar.mf_setProgressBar(control.mf_getHandle());
    EXPECT_EQ(control.mf_isMarqueeOn(), 1);
}

TEST(UQProgressBar, RunningAMarqueeAnimatesEvery60Milliseconds) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    control.mf_clearTrace();
    LogCheck log;
    bar.mf_setRunning(1);
    bar.mf_setRunning(0);
    EXPECT_EQ(control.mf_getTrace(), (Trace{"PBM_SETMARQUEE 1 60", "PBM_SETMARQUEE 0 0"}));
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{
                               {'G', SET_RUNNING, "Set progress bar running state to TRUE (STYLE_MARQUEE)"},
                               {'G', SET_RUNNING, "Set progress bar running state to FALSE (STYLE_MARQUEE)"},
                           }));
}

TEST(UQProgressBar, NoneOnAMarqueeHoldingAnOutOfRangeValueReportsTheIdenticalStyle) {
    UQProgressBar bar;
    bar.mf_setProgress(250);
    LogCheck log;
    bar.mf_setProgress(0xFFFFFFFFul);
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{
                  {'E', SET_STYLE, "Progress bar style update is identical to existing style 1"},
                  {'G', SET_PROGRESS, "Set progress bar progress to NONE (STYLE_MARQUEE, not applicable)"},
              }));
}

TEST(UQProgressBar, ChangesWithoutAControlAreKeptAndReplayedWhenOneIsAttached) {
    UQProgressBar bar;
    bar.mf_setProgress(0xFFFFFFFFul - 0); // the same NONE: nothing at all
    bar.mf_setRunning(1);
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    EXPECT_EQ(control.mf_getTrace(), (Trace{"style +PBS_MARQUEE", "PBM_SETMARQUEE 1 60"}));
    bar.mf_setProgressBar(nullptr);
    EXPECT_EQ(bar.mf_getProgressBar(), nullptr);
    bar.mf_setProgress(70);
    EXPECT_EQ(control.mf_getTrace(), (Trace{"style +PBS_MARQUEE", "PBM_SETMARQUEE 1 60"}));
}

TEST(UQProgressBar, ColoursAreSentAsRedGreenBlue) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    control.mf_clearTrace();
    bar.mf_setColor(0x12, 0x34, 0x56);
    bar.mf_setBackgroundColor(1, 2, 3);
    EXPECT_EQ(control.mf_getTrace(), (Trace{"PBM_SETBARCOLOR 0 " + std::to_string(0x563412),
                                            "PBM_SETBKCOLOR 0 " + std::to_string(0x030201)}));
}

TEST(UQProgressBar, ACopyHasAllFourFields) {
    UQProgressBar bar;
    UQProgressControl control;
    bar.mf_setProgressBar(control.mf_getHandle());
    bar.mf_setProgress(40);
    bar.mf_setRunning(1);
    const UQProgressBar copy(bar);
    EXPECT_EQ(copy.mf_getStyle(), UQProgressBar::STYLE_PERCENT);
    EXPECT_EQ(copy.mf_isRunning(), 1);
    EXPECT_EQ(copy.mf_getProgress(), 40ul);
    EXPECT_EQ(copy.mf_getProgressBar(), control.mf_getHandle());
    UQProgressBar assigned;
    assigned = bar;
    EXPECT_EQ(assigned.mf_getProgress(), 40ul);
}

TEST(UQProgressBar, AssigningReplacesEveryFieldAndSelfAssignmentKeepsThem) {
    UQProgressControl control;
    UQProgressBar source;
    source.mf_setProgressBar(control.mf_getHandle());
    source.mf_setProgress(20);
    UQProgressBar target;
    target.mf_setRunning(1);
    target = source;
    EXPECT_EQ(target.mf_getStyle(), UQProgressBar::STYLE_PERCENT);
    EXPECT_EQ(target.mf_isRunning(), 0);
    EXPECT_EQ(target.mf_getProgress(), 20ul);
    EXPECT_EQ(target.mf_getProgressBar(), control.mf_getHandle());
    UQProgressBar& alias = target;
    target = alias;
    EXPECT_EQ(target.mf_getProgress(), 20ul);
    EXPECT_EQ(target.mf_getProgressBar(), control.mf_getHandle());
}
