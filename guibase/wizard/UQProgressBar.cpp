#include "guibase/wizard/UQProgressBar.h"

#include "guibase/foundation/UQReport.h"

#if defined(_WIN32)
#include <windows.h>
#endif

namespace {

const wchar_t* const SET_PROGRESS = L"UQProgressBar::mf_implSetProgress";
const wchar_t* const SET_RUNNING = L"UQProgressBar::mf_implSetRunning";
const wchar_t* const SET_STYLE = L"UQProgressBar::mf_implSetStyle";
const wchar_t* const UNEXPECTED_STYLE = L"Unexpected progress bar style: %d";

const wchar_t* trueOrFalse(int _bValue) {
    return _bValue ? L"TRUE" : L"FALSE";
}

LPARAM colorOf(unsigned char _ucRed, unsigned char _ucGreen, unsigned char _ucBlue) {
    return static_cast<LPARAM>(static_cast<DWORD>(_ucRed) | (static_cast<DWORD>(_ucGreen) << 8) |
                               (static_cast<DWORD>(_ucBlue) << 16));
}

} // namespace

UQProgressBar::UQProgressBar()
    : m_eStyle(STYLE_MARQUEE), m_bRunning(0), m_uProgress(NONE), m_hControl(nullptr) {}

UQProgressBar::UQProgressBar(const UQProgressBar& _other) : UQProgressBar() {
    *this = _other;
}

UQProgressBar& UQProgressBar::operator=(const UQProgressBar& _other) {
    if (this == &_other)
        return *this;
    std::scoped_lock lock(m_mutex, _other.m_mutex);
    m_eStyle = _other.m_eStyle;
    m_bRunning = _other.m_bRunning;
    m_uProgress = _other.m_uProgress;
    m_hControl = _other.m_hControl;
    return *this;
}

UQProgressBar::~UQProgressBar() = default;

void UQProgressBar::mf_setProgressBar(HWND _hControl) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_hControl = _hControl;
    if (_hControl == nullptr)
        return;
    mf_implSetProgress(m_uProgress, 1);
    mf_implSetRunning(m_bRunning, 1);
}

void UQProgressBar::mf_setProgress(unsigned long _ulPercent) {
    std::lock_guard<std::mutex> lock(m_mutex);
    mf_implSetProgress(_ulPercent, 0);
}

void UQProgressBar::mf_increaseProgress(unsigned long _ulDelta) {
    std::lock_guard<std::mutex> lock(m_mutex);
    mf_implSetProgress(static_cast<std::uint32_t>(m_uProgress + static_cast<std::uint32_t>(_ulDelta)), 0);
}

void UQProgressBar::mf_setRunning(int _bRunning) {
    std::lock_guard<std::mutex> lock(m_mutex);
    mf_implSetRunning(_bRunning, 0);
}

void UQProgressBar::mf_setColor(unsigned char _ucRed, unsigned char _ucGreen, unsigned char _ucBlue) {
    std::lock_guard<std::mutex> lock(m_mutex);
    SendMessageW(m_hControl, PBM_SETBARCOLOR, 0, colorOf(_ucRed, _ucGreen, _ucBlue));
}

void UQProgressBar::mf_setBackgroundColor(unsigned char _ucRed, unsigned char _ucGreen,
                                          unsigned char _ucBlue) {
    std::lock_guard<std::mutex> lock(m_mutex);
    SendMessageW(m_hControl, PBM_SETBKCOLOR, 0, colorOf(_ucRed, _ucGreen, _ucBlue));
}

UQProgressBar::STYLE UQProgressBar::mf_getStyle() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_eStyle;
}

int UQProgressBar::mf_isRunning() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bRunning;
}

unsigned long UQProgressBar::mf_getProgress() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_uProgress;
}

HWND UQProgressBar::mf_getProgressBar() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_hControl;
}

void UQProgressBar::mf_implSetProgress(unsigned long _ulPercent, int _bForced) {
    const std::uint32_t uPercent = static_cast<std::uint32_t>(_ulPercent);
    if (!_bForced && uPercent == m_uProgress)
        return;
    // Stored before the range test: an out-of-range value stays in the object, the control keeps its own.
    m_uProgress = uPercent;
    if (uPercent != NONE && uPercent > 100) {
        UQReport::mf_log(UQLogData::LEVEL_E, SET_PROGRESS, L"Unexpected percent value: %lu",
                         static_cast<unsigned long>(uPercent));
        return;
    }
    if (uPercent == NONE)
        mf_implSetStyle(STYLE_MARQUEE, _bForced);
    else if (_bForced || m_eStyle == STYLE_MARQUEE)
        mf_implSetStyle(STYLE_PERCENT, _bForced);
    switch (m_eStyle) {
    case STYLE_MARQUEE:
        UQReport::mf_log(UQLogData::LEVEL_G, SET_PROGRESS,
                         L"Set progress bar progress to NONE (STYLE_MARQUEE, not applicable)");
        break;
    case STYLE_PERCENT: {
        // PBM_SETPOS answers the position before; a reader hears of a move only, not of a replayed state.
        const LRESULT lBefore = SendMessageW(m_hControl, PBM_SETPOS, static_cast<WPARAM>(uPercent), 0);
#if defined(_WIN32)
        if (m_hControl != nullptr && lBefore != static_cast<LRESULT>(uPercent))
            NotifyWinEvent(EVENT_OBJECT_VALUECHANGE, m_hControl, OBJID_CLIENT, CHILDID_SELF);
#else
        static_cast<void>(lBefore);
#endif
        UQReport::mf_log(UQLogData::LEVEL_G, SET_PROGRESS,
                         L"Set progress bar progress to %lu%c (STYLE_PERCENT)",
                         static_cast<unsigned long>(uPercent), L'%');
        break;
    }
    default:
        UQReport::mf_log(UQLogData::LEVEL_E, SET_PROGRESS, UNEXPECTED_STYLE, static_cast<int>(m_eStyle));
        break;
    }
}

void UQProgressBar::mf_implSetRunning(int _bRunning, int _bForced) {
    if (!_bForced && _bRunning == m_bRunning)
        return;
    m_bRunning = _bRunning;
    switch (m_eStyle) {
    case STYLE_MARQUEE:
        // The animation moves every 60 ms while running.
        SendMessageW(m_hControl, PBM_SETMARQUEE, _bRunning ? 1 : 0, _bRunning ? 60 : 0);
        UQReport::mf_log(UQLogData::LEVEL_G, SET_RUNNING,
                         L"Set progress bar running state to %s (STYLE_MARQUEE)", trueOrFalse(_bRunning));
        break;
    case STYLE_PERCENT:
        UQReport::mf_log(UQLogData::LEVEL_G, SET_RUNNING,
                         L"Set progress bar running state to %s (STYLE_PERCENT, not applicable)",
                         trueOrFalse(_bRunning));
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_E, SET_RUNNING, UNEXPECTED_STYLE, static_cast<int>(m_eStyle));
        break;
    }
}

void UQProgressBar::mf_implSetStyle(STYLE _eStyle, int _bForced) {
    if (!_bForced && _eStyle == m_eStyle) {
        UQReport::mf_log(UQLogData::LEVEL_E, SET_STYLE,
                         L"Progress bar style update is identical to existing style %d",
                         static_cast<int>(_eStyle));
        return;
    }
    m_eStyle = _eStyle;
    if (m_hControl == nullptr)
        return;
    const LONG lStyle = GetWindowLongW(m_hControl, GWL_STYLE);
    switch (_eStyle) {
    case STYLE_MARQUEE:
        if ((lStyle & PBS_MARQUEE) == 0)
            SetWindowLongW(m_hControl, GWL_STYLE, lStyle | PBS_MARQUEE);
        UQReport::mf_log(UQLogData::LEVEL_G, SET_STYLE, L"Set progress bar style to STYLE_MARQUEE");
        break;
    case STYLE_PERCENT:
        if ((lStyle & PBS_MARQUEE) != 0)
            SetWindowLongW(m_hControl, GWL_STYLE, lStyle & ~static_cast<LONG>(PBS_MARQUEE));
        SendMessageW(m_hControl, PBM_SETRANGE, 0, static_cast<LPARAM>(100) << 16);
        SendMessageW(m_hControl, PBM_SETSTEP, 1, 0);
        UQReport::mf_log(UQLogData::LEVEL_G, SET_STYLE, L"Set progress bar style to STYLE_PERCENT");
        break;
    default:
        UQReport::mf_log(UQLogData::LEVEL_E, SET_STYLE, UNEXPECTED_STYLE, static_cast<int>(_eStyle));
        break;
    }
}
