// A worker publishing 100 000 progress events (action 0) to an open UQProgressBarDialog, against the floor
// of the same worker setting the same three control texts (status, both counters) of a dialog owned by
// another thread directly. Both sides run in one process, one after the other, and the ratio of the times
// is judged against the goal. Exit code 1 when the goal is missed.
#include "guibase/wizard/UQProgressBarDialog.h"
#include "interfaces/korutil.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

const int EVENTS = 100000;
const int ROUNDS = 1;
const double GOAL = 1.3;

using Clock = std::chrono::steady_clock;

class Worker : public UQThreads {
public:
    explicit Worker(std::function<void()> _work)
        : UQThreads(L"Progress bench worker", UQThreadContext::TYPE_WORKER, 0), m_work(std::move(_work)) {}
    ~Worker() override { mf_stopWait(INFINITE); }
    void mf_implExecute(int) override { m_work(); }

private:
    std::function<void()> m_work;
};

CString statusOf(int _nIndex) {
    CString sText;
    sText.Format(L"Copying C:\\data\\file%d.txt", _nIndex % 1000);
    return sText;
}

// The library: events through the listener machinery into the bar dialog.
double timeDialog() {
    double dSeconds = 0;
    Worker worker([&] {
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < EVENTS; ++i)
            UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, statusOf(i), i, EVENTS, i, EVENTS).mf_publish();
        dSeconds = std::chrono::duration<double>(Clock::now() - start).count();
        UQProgressEvent(UQProgressEvent::ACTION_END).mf_publish();
    });
    UQProgressBarDialog dialog(L"Benchmark", worker);
    dialog.mf_execute(UQLanguage::mf_getUserLanguageHandle(), nullptr, IDD_PROGRESS_BAR);
    return dSeconds;
}

struct FloorRun {
    double dSeconds = 0;
    HWND hDlg = nullptr;
    Worker* pWorker = nullptr;
};

// The floor's dialog does nothing itself: it starts the worker once it is up and ends on IDCANCEL.
const UINT MSG_START = WM_APP + 1;

INT_PTR CALLBACK floorProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    FloorRun* pRun = reinterpret_cast<FloorRun*>(GetWindowLongPtrW(_hDlg, GWLP_USERDATA));
    switch (_uMsg) {
    case WM_INITDIALOG:
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, _lParam);
        reinterpret_cast<FloorRun*>(_lParam)->hDlg = _hDlg;
        PostMessageW(_hDlg, MSG_START, 0, 0);
        return TRUE;
    case MSG_START:
        pRun->pWorker->mf_start();
        return TRUE;
    case WM_COMMAND:
        if (LOWORD(_wParam) == IDCANCEL)
            EndDialog(_hDlg, 0);
        return TRUE;
    default:
        return FALSE;
    }
}

// The floor: the same texts set straight into the controls of a dialog of this thread, from a worker.
double timeFloor() {
    FloorRun run;
    Worker worker([&] {
        const HWND hStatus = GetDlgItem(run.hDlg, IDC_PROGRESS_STATUS);
        const HWND hCurrent = GetDlgItem(run.hDlg, IDC_PROGRESS_CURRENT);
        const HWND hTotal = GetDlgItem(run.hDlg, IDC_PROGRESS_TOTAL);
        const Clock::time_point start = Clock::now();
        for (int i = 0; i < EVENTS; ++i) {
            SetWindowTextW(hStatus, statusOf(i));
            SetWindowTextW(hCurrent, UQNumberFormatter::mf_formatNumber(i));
            SetWindowTextW(hTotal, UQNumberFormatter::mf_formatNumber(EVENTS));
        }
        run.dSeconds = std::chrono::duration<double>(Clock::now() - start).count();
        PostMessageW(run.hDlg, WM_COMMAND, IDCANCEL, 0);
    });
    run.pWorker = &worker;
    DialogBoxParamW(UQLanguage::mf_getUserLanguageHandle(), MAKEINTRESOURCEW(IDD_PROGRESS_BAR), nullptr,
                    &floorProcedure, reinterpret_cast<LPARAM>(&run));
    worker.mf_stopWait(INFINITE);
    return run.dSeconds;
}

double median(std::vector<double> _values) {
    std::sort(_values.begin(), _values.end());
    return _values[_values.size() / 2];
}

} // namespace

int wmain() {
    INITCOMMONCONTROLSEX icc{sizeof(icc), ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&icc);
    std::vector<double> dialogTimes, floorTimes;
    for (int r = 0; r < ROUNDS; ++r) {
        floorTimes.push_back(timeFloor());
        dialogTimes.push_back(timeDialog());
    }
    const double dDialog = median(dialogTimes);
    const double dFloor = median(floorTimes);
    const double dRatio = dDialog / dFloor;
    std::printf("progress events, %d per run, median of %d runs\n", EVENTS, ROUNDS);
    std::printf("  UQProgressBarDialog: %.3f s, %.0f events/s\n", dDialog, EVENTS / dDialog);
    std::printf("  floor (3 texts set directly): %.3f s, %.0f events/s\n", dFloor, EVENTS / dFloor);
    std::printf("  ratio %.3f, goal at most %.1f: %s\n", dRatio, GOAL, dRatio <= GOAL ? "met" : "MISSED");
    return dRatio <= GOAL ? 0 : 1;
}
