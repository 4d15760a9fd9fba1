#pragma once

#include "interfaces/korbase.h"

#include <atomic>
#include <cstdint>

// A timer thread that delivers one window message synchronously to one window on every run. The last run
// of a timer started for a number of runs sets the expired flag before its message, so the receiver's
// handler knows that no further message follows.
class KORGUIBASE_API UQGuiTimer : public UQTimerThread {
public:
    explicit UQGuiTimer(const CString& _sName);
    UQGuiTimer(const UQGuiTimer& _other);
    ~UQGuiTimer() override;

    // Called before the timer is started.
    void mf_setWindowMessage(HWND _hWnd, unsigned int _uMessage, std::uint64_t _uWParam,
                             std::int64_t _nLParam);
    // The flag; a plain int, as a const-qualified scalar result would only draw a warning.
    int mf_hasExpired() const;

    // One run: SendMessageW of the stored message, so two runs never overlap in the receiver.
    void mf_implExecuteTimer() override;

private:
    HWND m_hWnd;
    unsigned int m_uMessage;
    std::uint64_t m_uWParam;
    std::int64_t m_nLParam;
    std::atomic<int> m_bExpired;
};
