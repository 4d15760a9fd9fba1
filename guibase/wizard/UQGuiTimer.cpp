#include "guibase/wizard/UQGuiTimer.h"

namespace {

const unsigned long WAIT_SLICE_MS = 2;

} // namespace

UQGuiTimer::UQGuiTimer(const CString& _sName)
    : UQTimerThread(_sName, UQThreadContext::TYPE_TIMER), m_hWnd(nullptr), m_uMessage(0), m_uWParam(0),
      m_nLParam(0), m_bExpired(0) {}

UQGuiTimer::UQGuiTimer(const UQGuiTimer& _other)
    : UQTimerThread(_other), m_hWnd(_other.m_hWnd), m_uMessage(_other.m_uMessage),
      m_uWParam(_other.m_uWParam), m_nLParam(_other.m_nLParam), m_bExpired(_other.m_bExpired.load()) {}

UQGuiTimer::~UQGuiTimer() {
    // The runs call this object: they end before it goes. Destroyed on the receiver's thread, a run may be
    // sending to this very thread, so the wait takes in sent messages between short slices.
    while (mf_stopWait(WAIT_SLICE_MS).mf_getNumber() == WAIT_TIMEOUT) {
        MSG msg;
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
}

void UQGuiTimer::mf_setWindowMessage(HWND _hWnd, unsigned int _uMessage, std::uint64_t _uWParam,
                                     std::int64_t _nLParam) {
    m_hWnd = _hWnd;
    m_uMessage = _uMessage;
    m_uWParam = _uWParam;
    m_nLParam = _nLParam;
}

int UQGuiTimer::mf_hasExpired() const {
    return m_bExpired.load();
}

void UQGuiTimer::mf_implExecuteTimer() {
    if (mf_getRuns() - mf_getRunsMade() == 1)
        m_bExpired.store(1);
    SendMessageW(m_hWnd, m_uMessage, static_cast<WPARAM>(m_uWParam), static_cast<LPARAM>(m_nLParam));
}
