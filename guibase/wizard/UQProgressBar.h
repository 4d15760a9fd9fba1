#pragma once

#include "guibase/wizard/UQProgressControl.h"
#include "interfaces/korbase.h"

#include <cstdint>
#include <mutex>

// The state of one progress indicator (style, running flag, percentage) mirrored onto a progress-bar
// control whenever one is attached. A known percentage makes it a percent bar, NONE an animated marquee.
// State changes are serialised, so that several publishing threads may drive one bar; a control is sent
// its messages while the bar is held, so the control's thread must not wait for the bar meanwhile.
class KORGUIBASE_API UQProgressBar {
public:
    enum STYLE : std::uint32_t { STYLE_MARQUEE = 1, STYLE_PERCENT = 2 };
    // No percentage known.
    static const std::uint32_t NONE = 0xFFFFFFFFu;

    UQProgressBar();
    UQProgressBar(const UQProgressBar& _other);
    UQProgressBar& operator=(const UQProgressBar& _other);
    virtual ~UQProgressBar();

    // Stores the control (null: forgets it) and applies the whole state to it, forced.
    void mf_setProgressBar(HWND _hControl);
    void mf_setProgress(unsigned long _ulPercent);
    // Adds in unsigned 32-bit arithmetic: NONE + 1 is 0 %.
    void mf_increaseProgress(unsigned long _ulDelta);
    void mf_setRunning(int _bRunning);
    void mf_setColor(unsigned char _ucRed, unsigned char _ucGreen, unsigned char _ucBlue);
    void mf_setBackgroundColor(unsigned char _ucRed, unsigned char _ucGreen, unsigned char _ucBlue);

    STYLE mf_getStyle() const;
    int mf_isRunning() const;
    unsigned long mf_getProgress() const;
    HWND mf_getProgressBar() const;

private:
    void mf_implSetProgress(unsigned long _ulPercent, int _bForced);
    void mf_implSetRunning(int _bRunning, int _bForced);
    void mf_implSetStyle(STYLE _eStyle, int _bForced);

    STYLE m_eStyle;
    int m_bRunning;
    std::uint32_t m_uProgress;
    HWND m_hControl;
    mutable std::mutex m_mutex;
};
