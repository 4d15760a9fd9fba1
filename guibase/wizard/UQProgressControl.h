// The progress-bar control that UQProgressBar drives. On Windows it is the common control of <commctrl.h>.
// The platform-free build has no windows: there a control handle names a UQProgressControl, a progress bar
// in memory that answers the same messages and style changes, so the bar's state rules run (and are tested)
// unchanged on every target.
#pragma once

#include "interfaces/korbase.h"

#if defined(_WIN32)
#include <commctrl.h>
#else

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

struct HWND__;
typedef HWND__* HWND;
typedef std::uintptr_t WPARAM;
typedef std::intptr_t LPARAM;
typedef std::intptr_t LRESULT;
typedef DWORD COLORREF;

#define WM_USER 0x0400u
#define PBM_SETRANGE (WM_USER + 1)
#define PBM_SETPOS (WM_USER + 2)
#define PBM_SETSTEP (WM_USER + 4)
#define PBM_SETBARCOLOR (WM_USER + 9)
#define PBM_SETMARQUEE (WM_USER + 10)
#define PBM_SETBKCOLOR 0x2001u
#define PBS_MARQUEE 0x08
#define GWL_STYLE (-16)

// The three user32 operations the bar needs, over UQProgressControl handles.
KORGUIBASE_API LRESULT SendMessageW(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);
KORGUIBASE_API LONG GetWindowLongW(HWND _hWnd, int _nIndex);
KORGUIBASE_API LONG SetWindowLongW(HWND _hWnd, int _nIndex, LONG _lValue);

// A progress bar in memory: keeps what the messages set and writes each message and style change to a
// trace ("PBM_SETPOS 40 0", "style +PBS_MARQUEE"), in the words the Win32 tests use for the real control.
class KORGUIBASE_API UQProgressControl {
public:
    UQProgressControl();
    UQProgressControl(const UQProgressControl&) = delete;
    UQProgressControl& operator=(const UQProgressControl&) = delete;
    ~UQProgressControl();

    HWND mf_getHandle() noexcept { return reinterpret_cast<HWND>(this); }
    LRESULT mf_onMessage(UINT _uMsg, WPARAM _wParam, LPARAM _lParam);
    LONG mf_getStyle() const;
    LONG mf_setStyle(LONG _lStyle);

    std::vector<std::string> mf_getTrace() const;
    void mf_clearTrace();
    int mf_getPos() const;
    int mf_isMarqueeOn() const;

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_trace;
    LONG m_lStyle;
    int m_nPos;
    int m_nLow;
    int m_nHigh;
    int m_nStep;
    int m_bMarquee;
};

#endif
