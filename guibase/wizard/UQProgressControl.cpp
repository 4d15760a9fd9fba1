#include "guibase/wizard/UQProgressControl.h"

#include <string>

namespace {

std::string messageName(UINT _uMsg) {
    switch (_uMsg) {
    case PBM_SETRANGE:
        return "PBM_SETRANGE";
    case PBM_SETPOS:
        return "PBM_SETPOS";
    case PBM_SETSTEP:
        return "PBM_SETSTEP";
    case PBM_SETBARCOLOR:
        return "PBM_SETBARCOLOR";
    case PBM_SETMARQUEE:
        return "PBM_SETMARQUEE";
    case PBM_SETBKCOLOR:
        return "PBM_SETBKCOLOR";
    default:
        return "message " + std::to_string(_uMsg);
    }
}

} // namespace

LRESULT SendMessageW(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    if (_hWnd == nullptr)
        return 0;
    return reinterpret_cast<UQProgressControl*>(_hWnd)->mf_onMessage(_uMsg, _wParam, _lParam);
}

LONG GetWindowLongW(HWND _hWnd, int _nIndex) {
    if (_hWnd == nullptr || _nIndex != GWL_STYLE)
        return 0;
    return reinterpret_cast<UQProgressControl*>(_hWnd)->mf_getStyle();
}

LONG SetWindowLongW(HWND _hWnd, int _nIndex, LONG _lValue) {
    if (_hWnd == nullptr || _nIndex != GWL_STYLE)
        return 0;
    return reinterpret_cast<UQProgressControl*>(_hWnd)->mf_setStyle(_lValue);
}

UQProgressControl::UQProgressControl()
    : m_lStyle(0), m_nPos(0), m_nLow(0), m_nHigh(100), m_nStep(10), m_bMarquee(0) {}

UQProgressControl::~UQProgressControl() = default;

LRESULT UQProgressControl::mf_onMessage(UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_trace.push_back(messageName(_uMsg) + " " + std::to_string(_wParam) + " " + std::to_string(_lParam));
    LRESULT nPrevious = 0;
    switch (_uMsg) {
    case PBM_SETRANGE:
        nPrevious = static_cast<LRESULT>((m_nLow & 0xFFFF) | ((m_nHigh & 0xFFFF) << 16));
        m_nLow = static_cast<int>(_lParam & 0xFFFF);
        m_nHigh = static_cast<int>((_lParam >> 16) & 0xFFFF);
        break;
    case PBM_SETPOS:
        nPrevious = m_nPos;
        m_nPos = static_cast<int>(_wParam);
        break;
    case PBM_SETSTEP:
        nPrevious = m_nStep;
        m_nStep = static_cast<int>(_wParam);
        break;
    case PBM_SETMARQUEE:
        m_bMarquee = _wParam != 0 ? 1 : 0;
        nPrevious = 1;
        break;
    default:
        break;
    }
    return nPrevious;
}

LONG UQProgressControl::mf_getStyle() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_lStyle;
}

LONG UQProgressControl::mf_setStyle(LONG _lStyle) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const LONG lPrevious = m_lStyle;
    if ((lPrevious & PBS_MARQUEE) != (_lStyle & PBS_MARQUEE))
        m_trace.push_back((_lStyle & PBS_MARQUEE) != 0 ? "style +PBS_MARQUEE" : "style -PBS_MARQUEE");
    m_lStyle = _lStyle;
    return lPrevious;
}

std::vector<std::string> UQProgressControl::mf_getTrace() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_trace;
}

void UQProgressControl::mf_clearTrace() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_trace.clear();
}

int UQProgressControl::mf_getPos() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_nPos;
}

int UQProgressControl::mf_isMarqueeOn() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_bMarquee;
}
