// What a screen reader hears of the progress dialogs: the bar raises a value change when its position
// moves (the same position again raises nothing), and the bar is named by the label right before it.
// Wine delivers NotifyWinEvent to an out-of-context SetWinEventHook as Windows does; Windows' own progress
// control may raise a value change of its own as well, Wine's raises none.
#include "DialogDriver.h"
#include "ProgressTestSupport.h"

#include "guibase/wizard/UQProgressBarDialog.h"
#include "guibase/wizard/UQProgressDialog.h"
#include "korlang_ids.h"

#include <commctrl.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace toolkittest;
using namespace progresstest;

namespace {

struct WinEvent {
    DWORD dwEvent;
    HWND hWnd;
    LONG lObject;
    LONG lChild;
};
std::vector<WinEvent> g_winEvents;

void CALLBACK noteWinEvent(HWINEVENTHOOK, DWORD _dwEvent, HWND _hWnd, LONG _lObject, LONG _lChild, DWORD,
                           DWORD) {
    g_winEvents.push_back({_dwEvent, _hWnd, _lObject, _lChild});
}

// Value changes from this process, out of context: they arrive as messages of this (the dialog's) thread.
class ValueChanges {
public:
    ValueChanges() {
        g_winEvents.clear();
        m_hHook = SetWinEventHook(EVENT_OBJECT_VALUECHANGE, EVENT_OBJECT_VALUECHANGE, nullptr, noteWinEvent,
                                  GetCurrentProcessId(), 0, WINEVENT_OUTOFCONTEXT);
    }
    ValueChanges(const ValueChanges&) = delete;
    ValueChanges& operator=(const ValueChanges&) = delete;
    ~ValueChanges() {
        if (m_hHook != nullptr)
            UnhookWinEvent(m_hHook);
    }
    bool hooked() const { return m_hHook != nullptr; }

    // Takes in what is still queued, at most half a second: events come late, never early.
    std::vector<WinEvent> collected() const {
        const ULONGLONG uDeadline = GetTickCount64() + 500;
        while (GetTickCount64() < uDeadline) {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 20, QS_ALLINPUT);
            pumpMessages();
        }
        return g_winEvents;
    }

private:
    HWINEVENTHOOK m_hHook = nullptr;
};

HINSTANCE language() {
    return UQLanguage::mf_getUserLanguageHandle();
}

} // namespace

TEST(ProgressAccessible, TheBarDialogRaisesAValueChangeForEachNewPositionAndNoneForTheSameAgain) {
    initCommonControls();
    UQProgressBarDialog* pDialog = nullptr;
    HWND hBar = nullptr;
    ScriptedWorker worker([&](ScriptedWorker&) {
        hBar = GetDlgItem(pDialog->mf_getDialog(), IDC_PROGRESS_BAR);
        publish(UQProgressEvent::ACTION_PROGRESS, L"a.doc", 1, 4, 512, 2048);
        publish(UQProgressEvent::ACTION_PROGRESS, L"b.doc", 2, 4, 512, 2048);
        publish(UQProgressEvent::ACTION_PROGRESS, L"c.doc", 3, 4, 1024, 2048);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    pDialog = &dialog;
    ValueChanges changes;
    ASSERT_TRUE(changes.hooked());
    DialogDriver driver;
    driver.onlyWatchTheTime();
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS_BAR), 0);
    ASSERT_NE(hBar, nullptr);
    int nFromBar = 0;
    for (const WinEvent& event : changes.collected()) {
        if (event.hWnd != hBar)
            continue;
        ++nFromBar;
        EXPECT_EQ(event.lObject, OBJID_CLIENT);
        EXPECT_EQ(event.lChild, CHILDID_SELF);
    }
    // 0 at opening is where a new bar stands; 25 %, 25 % again, 50 %: two moves.
    EXPECT_EQ(nFromBar, 2);
}

TEST(ProgressAccessible, ThePlainDialogHasNoBarAndRaisesNoValueChange) {
    initCommonControls();
    UQProgressDialog* pDialog = nullptr;
    bool bHasBar = true;
    ScriptedWorker worker([&](ScriptedWorker&) {
        bHasBar = FindWindowExW(pDialog->mf_getDialog(), nullptr, PROGRESS_CLASSW, nullptr) != nullptr;
        publish(UQProgressEvent::ACTION_PROGRESS, L"a.doc", 1, 4, 512, 2048);
        publish(UQProgressEvent::ACTION_PROGRESS, L"b.doc", 2, 4, 1024, 2048);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressDialog dialog(L"Recalling files", worker);
    pDialog = &dialog;
    ValueChanges changes;
    ASSERT_TRUE(changes.hooked());
    DialogDriver driver;
    driver.onlyWatchTheTime();
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS), 0);
    EXPECT_FALSE(bHasBar);
    EXPECT_EQ(changes.collected().size(), 0u) << "its status text is a name, not a value";
}

TEST(ProgressAccessible, TheBarIsNamedByTheLabelRightBeforeIt) {
    initCommonControls();
    UQProgressBarDialog* pDialog = nullptr;
    HWND hLabel = nullptr;
    CString sLabel;
    LONG lLabelStyle = 0;
    ScriptedWorker worker([&](ScriptedWorker&) {
        const HWND hBar = GetDlgItem(pDialog->mf_getDialog(), IDC_PROGRESS_BAR);
        // Windows names a control by the static before it in z order (which is the tab order).
        hLabel = GetWindow(hBar, GW_HWNDPREV);
        wchar_t szText[128] = {};
        GetWindowTextW(hLabel, szText, 128);
        sLabel = szText;
        lLabelStyle = GetWindowLongW(hLabel, GWL_STYLE);
        publish(UQProgressEvent::ACTION_END);
    });
    UQProgressBarDialog dialog(L"Retrieving files", worker);
    pDialog = &dialog;
    DialogDriver driver;
    driver.onlyWatchTheTime();
    EXPECT_EQ(dialog.mf_execute(language(), nullptr, IDD_PROGRESS_BAR), 0);
    ASSERT_NE(hLabel, nullptr);
    EXPECT_EQ(utf8(sLabel), "Progress:");
    EXPECT_EQ(lLabelStyle & SS_NOPREFIX, 0) << "a label, not a status text";
}
