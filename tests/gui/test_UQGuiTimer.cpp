// The GUI timer against a real window of the test thread: every run is one synchronous message with the
// configured parameters, the last run is known inside its handler, and a timer for 0 runs never expires.
#include "ProgressTestSupport.h"

#include "guibase/wizard/UQGuiTimer.h"

#include <vector>

using namespace toolkittest;
using namespace progresstest;

namespace {

const UINT MSG_TICK = WM_APP + 7;

struct Delivery {
    WPARAM wParam;
    LPARAM lParam;
    int bExpired;
    DWORD dwThread;
};

// A window that writes down every MSG_TICK it receives, with the timer's flag as seen inside the handler.
class Receiver {
public:
    Receiver() {
        WNDCLASSW wc{};
        wc.lpfnWndProc = &Receiver::procedure;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = L"KorGuiTimerReceiver";
        RegisterClassW(&wc);
        m_hWnd = CreateWindowExW(0, wc.lpszClassName, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, wc.hInstance,
                                 nullptr);
        SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    }
    ~Receiver() { DestroyWindow(m_hWnd); }
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    HWND hwnd() const { return m_hWnd; }
    const std::vector<Delivery>& deliveries() const { return m_deliveries; }
    UQGuiTimer* pTimer = nullptr;

    // Handles messages until the condition holds or the limit has passed; answers the condition.
    template <class F> bool pumpUntil(F&& _done) {
        const ULONGLONG uDeadline = GetTickCount64() + LIMIT_MS;
        while (!_done()) {
            if (GetTickCount64() > uDeadline)
                return false;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 10, QS_ALLINPUT);
            pumpMessages();
        }
        return true;
    }

private:
    static LRESULT CALLBACK procedure(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
        Receiver* pThis = reinterpret_cast<Receiver*>(GetWindowLongPtrW(_hWnd, GWLP_USERDATA));
        if (_uMsg == MSG_TICK && pThis != nullptr) {
            pThis->m_deliveries.push_back(
                {_wParam, _lParam, pThis->pTimer->mf_hasExpired(), GetCurrentThreadId()});
            return 0;
        }
        return DefWindowProcW(_hWnd, _uMsg, _wParam, _lParam);
    }
    HWND m_hWnd;
    std::vector<Delivery> m_deliveries;
};

} // namespace

TEST(UQGuiTimer, EachRunSendsTheMessageAndTheLastRunHasExpiredInsideItsHandler) {
    Receiver receiver;
    UQGuiTimer timer(L"Progress timer");
    receiver.pTimer = &timer;
    timer.mf_setWindowMessage(receiver.hwnd(), MSG_TICK, 0x1122334455667788ull, -5);
    LogCheck log;
    timer.mf_start(20, 3, 0);
    EXPECT_TRUE(receiver.pumpUntil([&] { return !timer.mf_isRunning(); }));
    ASSERT_EQ(receiver.deliveries().size(), 3u);
    EXPECT_EQ(receiver.deliveries()[0].bExpired, 0);
    EXPECT_EQ(receiver.deliveries()[1].bExpired, 0);
    EXPECT_EQ(receiver.deliveries()[2].bExpired, 1);
    for (const Delivery& delivery : receiver.deliveries()) {
        EXPECT_EQ(delivery.wParam, static_cast<WPARAM>(0x1122334455667788ull));
        EXPECT_EQ(delivery.lParam, -5);
        // Handled by the window's own thread: the run was a synchronous send.
        EXPECT_EQ(delivery.dwThread, GetCurrentThreadId());
    }
    EXPECT_EQ(timer.mf_hasExpired(), 1);
    EXPECT_EQ(timer.mf_getType(), UQThreadContext::TYPE_TIMER);
    EXPECT_EQ(log.count(), 0u);
}

TEST(UQGuiTimer, ATimerStartedForZeroRunsRunsUntilStoppedAndNeverExpires) {
    Receiver receiver;
    UQGuiTimer timer(L"Progress timer");
    receiver.pTimer = &timer;
    timer.mf_setWindowMessage(receiver.hwnd(), MSG_TICK, 1, 2);
    timer.mf_start(5, 0, 0);
    EXPECT_TRUE(receiver.pumpUntil([&] { return receiver.deliveries().size() >= 5; }));
    // Stopped from the receiving thread: the runs' sends are taken in until the thread has ended.
    timer.mf_stop();
    EXPECT_TRUE(receiver.pumpUntil([&] { return !timer.mf_isRunning(); }));
    EXPECT_EQ(timer.mf_hasExpired(), 0);
    for (const Delivery& delivery : receiver.deliveries())
        EXPECT_EQ(delivery.bExpired, 0);
}

TEST(UQGuiTimer, DestroyingARunningTimerOnTheReceivingThreadDoesNotHang) {
    Receiver receiver;
    ULONGLONG uStart = GetTickCount64();
    {
        UQGuiTimer timer(L"Progress timer");
        receiver.pTimer = &timer;
        timer.mf_setWindowMessage(receiver.hwnd(), MSG_TICK, 0, 0);
        timer.mf_start(1, 0, 0);
        EXPECT_TRUE(receiver.pumpUntil([&] { return receiver.deliveries().size() >= 3; }));
    }
    receiver.pTimer = nullptr;
    EXPECT_LT(GetTickCount64() - uStart, static_cast<ULONGLONG>(LIMIT_MS));
}

TEST(UQGuiTimer, ACopyHasTheMessageAndTheFlag) {
    Receiver receiver;
    UQGuiTimer timer(L"Progress timer");
    receiver.pTimer = &timer;
    timer.mf_setWindowMessage(receiver.hwnd(), MSG_TICK, 3, 4);
    timer.mf_start(1, 1, 0);
    EXPECT_TRUE(receiver.pumpUntil([&] { return !timer.mf_isRunning(); }));
    UQGuiTimer copy(timer);
    EXPECT_EQ(copy.mf_hasExpired(), 1);
    EXPECT_EQ(copy.mf_getName(), CString(L"Progress timer"));
    receiver.pTimer = &copy;
    copy.mf_start(1, 1, 0);
    EXPECT_TRUE(receiver.pumpUntil([&] { return !copy.mf_isRunning(); }));
    ASSERT_EQ(receiver.deliveries().size(), 2u);
    EXPECT_EQ(receiver.deliveries()[1].wParam, 3u);
    EXPECT_EQ(receiver.deliveries()[1].lParam, 4);
}
