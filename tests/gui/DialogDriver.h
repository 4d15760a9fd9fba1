// Drives the modal dialogs that the test's thread opens, as a user would, and makes sure that none of
// them can hang the test. A thread timer fires inside every modal loop of the thread (DialogBoxParamW,
// MessageBoxW, the common dialogs, nested ones); on each tick the newest visible dialog that the driver
// has not handled yet gets the next scripted step. A dialog for which no step is left is cancelled
// (IDCANCEL) and counted as unexpected. Past the time limit every dialog of the thread is ended with
// IDCANCEL and the driver reports that it timed out.
#pragma once

#include "interfaces/korbase.h"

#include <deque>
#include <functional>
#include <set>

class DialogDriver {
public:
    using Step = std::function<void(HWND _hDialog)>;

    explicit DialogDriver(DWORD _dwTimeLimitMs = 10000);
    ~DialogDriver();
    DialogDriver(const DialogDriver&) = delete;
    DialogDriver& operator=(const DialogDriver&) = delete;

    // Steps are taken in order, one for each dialog that appears.
    DialogDriver& then(Step _step);
    // Only the time limit is kept: dialogs are left to whatever else ends them (a hook of the test).
    DialogDriver& onlyWatchTheTime();

    int unexpectedDialogs() const noexcept { return m_nUnexpected; }
    int stepsLeft() const noexcept { return static_cast<int>(m_steps.size()); }
    int stepsTaken() const noexcept { return m_nTaken; }
    bool timedOut() const noexcept { return m_bTimedOut; }

    // Common steps: a click on a button (BN_CLICKED posted, as the button itself would send it).
    static void click(HWND _hDialog, int _nId);

private:
    static void CALLBACK mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept;
    void mf_onTick() noexcept;
    HWND mf_newestDialog() const;

    std::deque<Step> m_steps;
    std::set<HWND> m_preExisting;
    DialogDriver* m_pPrevious;
    UINT_PTR m_uTimer;
    ULONGLONG m_uDeadline;
    int m_nUnexpected;
    int m_nTaken;
    bool m_bTimedOut;
    bool m_bOnlyWatch;
};
