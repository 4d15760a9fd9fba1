// The progress bar's state rules applied to the real common control: what the control shows after each
// rule, read back from the control itself.
#include "ProgressTestSupport.h"

#include "guibase/wizard/UQProgressBar.h"

using namespace toolkittest;

namespace {

const std::string SET_PROGRESS = "UQProgressBar::mf_implSetProgress";

// A progress-bar control in a window of its own.
class RealBar {
public:
    RealBar() {
        initCommonControls();
        m_hWnd = CreateWindowExW(0, PROGRESS_CLASSW, L"", WS_POPUP, 0, 0, 200, 20, nullptr, nullptr,
                                 GetModuleHandleW(nullptr), nullptr);
    }
    ~RealBar() { DestroyWindow(m_hWnd); }
    RealBar(const RealBar&) = delete;
    RealBar& operator=(const RealBar&) = delete;

    HWND hwnd() const { return m_hWnd; }
    int pos() const { return static_cast<int>(SendMessageW(m_hWnd, PBM_GETPOS, 0, 0)); }
    int high() const { return static_cast<int>(SendMessageW(m_hWnd, PBM_GETRANGE, FALSE, 0)); }
    int step() const { return static_cast<int>(SendMessageW(m_hWnd, PBM_GETSTEP, 0, 0)); }
    bool marquee() const { return (GetWindowLongW(m_hWnd, GWL_STYLE) & PBS_MARQUEE) != 0; }

private:
    HWND m_hWnd;
};

} // namespace

TEST(UQProgressBarControl, AttachingToABarAt40PercentShowsPercentStyleRangeStepAndPosition) {
    RealBar control;
    SetWindowLongW(control.hwnd(), GWL_STYLE, GetWindowLongW(control.hwnd(), GWL_STYLE) | PBS_MARQUEE);
    UQProgressBar bar;
    bar.mf_setProgress(40);
    bar.mf_setProgressBar(control.hwnd());
    EXPECT_FALSE(control.marquee());
    EXPECT_EQ(control.high(), 100);
    EXPECT_EQ(control.step(), 1);
    EXPECT_EQ(control.pos(), 40);
}

TEST(UQProgressBarControl, APercentAbove100LeavesTheControlWhereItWas) {
    RealBar control;
    UQProgressBar bar;
    bar.mf_setProgressBar(control.hwnd());
    bar.mf_setProgress(30);
    LogCheck log;
    bar.mf_setProgress(101);
    EXPECT_EQ(control.pos(), 30);
    EXPECT_EQ(bar.mf_getProgress(), 101ul);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', SET_PROGRESS, "Unexpected percent value: 101"}}));
}

TEST(UQProgressBarControl, IncreasingAFreshBarMakesAPercentBarAtZero) {
    RealBar control;
    UQProgressBar bar;
    bar.mf_setProgressBar(control.hwnd());
    EXPECT_TRUE(control.marquee());
    bar.mf_increaseProgress(1);
    EXPECT_FALSE(control.marquee());
    EXPECT_EQ(control.pos(), 0);
    EXPECT_EQ(control.high(), 100);
}

TEST(UQProgressBarControl, NoneSwitchesTheControlBackToAMarquee) {
    RealBar control;
    UQProgressBar bar;
    bar.mf_setProgressBar(control.hwnd());
    bar.mf_setProgress(60);
    bar.mf_setRunning(1);
    bar.mf_setProgress(UQProgressBar::NONE);
    EXPECT_TRUE(control.marquee());
    EXPECT_EQ(bar.mf_getStyle(), UQProgressBar::STYLE_MARQUEE);
}

TEST(UQProgressBarControl, ColoursReachTheControl) {
    RealBar control;
    UQProgressBar bar;
    bar.mf_setProgressBar(control.hwnd());
    bar.mf_setColor(0x12, 0x34, 0x56);
    bar.mf_setBackgroundColor(1, 2, 3);
    EXPECT_EQ(static_cast<COLORREF>(SendMessageW(control.hwnd(), PBM_GETBARCOLOR, 0, 0)),
              RGB(0x12, 0x34, 0x56));
    EXPECT_EQ(static_cast<COLORREF>(SendMessageW(control.hwnd(), PBM_GETBKCOLOR, 0, 0)), RGB(1, 2, 3));
}
