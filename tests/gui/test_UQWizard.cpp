// The wizard as the user meets it: a real frame with real panels, driven through its modal loop. Back,
// Next, Cancel, skipped panels, execute panels whose work runs on the "Wizard worker thread", input that is
// refused, and every failure the wizard logs.
#include "ToolkitTestSupport.h"
#include "WizardTestSupport.h"

#include "korlang_ids.h"

#include <tlhelp32.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

using namespace wizardtest;
using toolkittest::itemText;
using toolkittest::textOf;

namespace {

const std::string TAB = utf8(UQLog::TAB);

std::string errorText(const UQErrnoValue& _value) {
    return utf8(UQErrno(_value).mf_toString());
}

HINSTANCE frameInstance() {
    return GetModuleHandleW(nullptr);
}

// The records of a level and above that tell of a failure (E and W), in order.
std::vector<LogLine> failures(const LogCheck& _log) {
    std::vector<LogLine> lines;
    for (const LogLine& line : _log.lines()) {
        if (line.level == 'E' || line.level == 'W')
            lines.push_back(line);
    }
    return lines;
}

// The handles the process has open: GetProcessHandleCount where it answers, else (Wine answers 0) every
// handle value that GetHandleInformation accepts.
DWORD handlesOfProcess() {
    DWORD dwCount = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &dwCount) && dwCount != 0)
        return dwCount;
    for (std::uintptr_t uValue = 4; uValue < 0x40000; uValue += 4) {
        DWORD dwFlags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(uValue), &dwFlags))
            ++dwCount;
    }
    return dwCount;
}

int threadsOfProcess() {
    HANDLE hSnapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (hSnapshot == INVALID_HANDLE_VALUE)
        return -1;
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    int nThreads = 0;
    for (BOOL bMore = Thread32First(hSnapshot, &entry); bMore; bMore = Thread32Next(hSnapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId())
            ++nThreads;
    }
    CloseHandle(hSnapshot);
    return nThreads;
}

class Wizard : public ::testing::Test {
protected:
    void SetUp() override { toolkittest::initCommonControls(); }
};

} // namespace

TEST_F(Wizard, NextLeadsThroughEveryPanelAndFinishesWithOne) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME, TITLE_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_NAME, TITLE_NAME);
    wizard.add(IDD_WIZARD_PANEL_DONE, TITLE_DONE);
    std::vector<std::string> seen;
    Script script(wizard);
    script
        .then([&] {
            HWND hFrame = wizard.mf_getHandle();
            if (!frameReady(wizard))
                return false;
            seen = {textOf(hFrame),
                    itemText(hFrame, ITEM_TITLE),
                    itemText(hFrame, ITEM_BACK),
                    itemText(hFrame, ITEM_NEXT),
                    itemText(hFrame, IDCANCEL),
                    IsWindowEnabled(GetDlgItem(hFrame, ITEM_BACK)) ? "back enabled" : "back disabled",
                    std::to_string(visiblePanels(hFrame))};
            return true;
        })
        .click(ITEM_NEXT)
        .then([&] {
            HWND hFrame = wizard.mf_getHandle();
            if (wizard.mf_getCurrentIndex() != 1)
                return false;
            seen.push_back(itemText(hFrame, ITEM_TITLE));
            seen.push_back(itemText(hFrame, ITEM_NEXT));
            seen.push_back(IsWindowEnabled(GetDlgItem(hFrame, ITEM_BACK)) ? "back enabled" : "back disabled");
            return true;
        })
        .click(ITEM_NEXT)
        .then([&] {
            if (wizard.mf_getCurrentIndex() != 2)
                return false;
            seen.push_back(itemText(wizard.mf_getHandle(), ITEM_NEXT));
            seen.push_back(std::to_string(visiblePanels(wizard.mf_getHandle())));
            return true;
        })
        .click(ITEM_NEXT);
    LogCheck log;
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    EXPECT_EQ(seen, (std::vector<std::string>{text(4533), text(TITLE_WELCOME), text(3880), text(933),
                                              text(3155), "back disabled", "1", text(TITLE_NAME), text(933),
                                              "back enabled", text(932), "1"}));
    // The last panel is read too before the wizard finishes.
    EXPECT_EQ(wizard.reads, (std::vector<std::pair<int, int>>{{0, 1}, {1, 1}, {2, 1}}));
    EXPECT_EQ(wizard.inits, (std::vector<int>{0, 1, 2}));
    EXPECT_FALSE(wizard.mf_isRunning());
    EXPECT_EQ(script.actionsLeft(), 0);
    EXPECT_EQ(failures(log), std::vector<LogLine>());
}

TEST_F(Wizard, TitleLineUsesTheTitleFontAndTheFontsAreAsPrescribed) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    HFONT hTitleLineFont = nullptr;
    Script script(wizard);
    script
        .then([&] {
            if (!frameReady(wizard))
                return false;
            hTitleLineFont = reinterpret_cast<HFONT>(
                SendMessageW(GetDlgItem(wizard.mf_getHandle(), ITEM_TITLE), WM_GETFONT, 0, 0));
            return true;
        })
        .click(ITEM_NEXT);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    EXPECT_EQ(hTitleLineFont, wizard.mf_getTitleFont());
    LOGFONTW title = {};
    LOGFONTW mono = {};
    ASSERT_NE(GetObjectW(wizard.mf_getTitleFont(), sizeof(title), &title), 0);
    ASSERT_NE(GetObjectW(wizard.mf_getMonospaceFont(), sizeof(mono), &mono), 0);
    EXPECT_EQ(title.lfHeight, 16);
    EXPECT_EQ(title.lfWeight, 700);
    EXPECT_EQ(title.lfPitchAndFamily, 0);
    EXPECT_EQ(mono.lfHeight, 14);
    EXPECT_EQ(mono.lfWeight, 400);
    EXPECT_EQ(mono.lfPitchAndFamily, 0x31);
}

TEST_F(Wizard, StaticTextsOfTheFrameSitOnTheHighlightColour) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    LRESULT nBrush = 0;
    COLORREF background = 0;
    Script script(wizard);
    script
        .then([&] {
            if (!frameReady(wizard))
                return false;
            HDC hDC = CreateCompatibleDC(nullptr);
            nBrush = SendMessageW(wizard.mf_getHandle(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(hDC),
                                  reinterpret_cast<LPARAM>(GetDlgItem(wizard.mf_getHandle(), ITEM_TITLE)));
            background = GetBkColor(hDC);
            DeleteDC(hDC);
            return true;
        })
        .click(ITEM_NEXT);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    EXPECT_EQ(reinterpret_cast<HBRUSH>(nBrush), GetSysColorBrush(COLOR_BTNHIGHLIGHT));
    EXPECT_EQ(background, GetSysColor(COLOR_BTNHIGHLIGHT));
}

TEST_F(Wizard, BackShowsTheEarlierPanelAsANewDialogAndHidesTheOldOnes) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME, TITLE_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_NAME, TITLE_NAME);
    std::vector<std::string> seen;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 1; })
        .click(ITEM_BACK)
        .then([&] {
            HWND hFrame = wizard.mf_getHandle();
            if (wizard.mf_getCurrentIndex() != 0)
                return false;
            seen = {itemText(hFrame, ITEM_TITLE), itemText(hFrame, ITEM_NEXT),
                    IsWindowEnabled(GetDlgItem(hFrame, ITEM_BACK)) ? "back enabled" : "back disabled",
                    IsWindowEnabled(GetDlgItem(hFrame, ITEM_NEXT)) ? "next enabled" : "next disabled",
                    std::to_string(visiblePanels(hFrame))};
            return true;
        })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(seen, (std::vector<std::string>{text(TITLE_WELCOME), text(933), "back disabled", "next enabled",
                                              "1"}));
    EXPECT_EQ(wizard.reads, (std::vector<std::pair<int, int>>{{0, 1}, {1, 0}}));
    // Every showing creates the panel anew.
    EXPECT_EQ(wizard.inits, (std::vector<int>{0, 1, 0}));
}

TEST_F(Wizard, BackNeverFailsBecauseOfInvalidInput) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_NAME, TITLE_NAME);
    wizard.onRead = [](UQWizardPanel&, int _bForward) {
        if (!_bForward)
            throw UQErrno(UQErrno::_E_::Parameter);
    };
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 1; })
        .click(ITEM_BACK)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 0; })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    LogCheck log;
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(script.answered, (std::vector<std::string>{text(804)}));
    EXPECT_EQ(failures(log), std::vector<LogLine>());
}

TEST_F(Wizard, CancelAnsweredNoStaysAndYesEndsWithZero) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_NAME);
    int nIndexAfterNo = -2;
    int bVisibleAfterNo = 0;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 1; })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON2)
        .then([&] {
            if (!frameReady(wizard))
                return false;
            nIndexAfterNo = wizard.mf_getCurrentIndex();
            bVisibleAfterNo = IsWindowVisible(wizard.mf_getHandle());
            return true;
        })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(nIndexAfterNo, 1);
    EXPECT_NE(bVisibleAfterNo, 0);
    EXPECT_EQ(script.answered, (std::vector<std::string>{text(804), text(804)}));
    EXPECT_FALSE(wizard.mf_isRunning());
}

TEST_F(Wizard, SkippedPanelsArePassedOverBothWays) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_NAME).mf_setSkipPanel(1);
    wizard.add(IDD_WIZARD_PANEL_NAME).mf_setSkipPanel(1);
    wizard.add(IDD_WIZARD_PANEL_DONE);
    std::vector<int> indexes;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .then([&] {
            if (wizard.mf_getCurrentIndex() <= 0)
                return false;
            indexes.push_back(wizard.mf_getCurrentIndex());
            return true;
        })
        .click(ITEM_BACK)
        .then([&] {
            if (wizard.mf_getCurrentIndex() == 3)
                return false;
            indexes.push_back(wizard.mf_getCurrentIndex());
            return true;
        })
        .click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 3; })
        .click(ITEM_NEXT);
    LogCheck log;
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    EXPECT_EQ(indexes, (std::vector<int>{3, 0}));
    EXPECT_EQ(wizard.inits, (std::vector<int>{0, 3, 0, 3}));
    EXPECT_EQ(failures(log), std::vector<LogLine>());
}

TEST_F(Wizard, SkippedLastPanelMakesNextFailOnTheLastButOneAndTheDialogStays) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_NAME);
    wizard.add(IDD_WIZARD_PANEL_DONE).mf_setSkipPanel(1);
    LogCheck log;
    std::vector<LogLine> afterNext;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 1; })
        .then([&] {
            log.clear();
            return true;
        })
        .click(ITEM_NEXT)
        .then([&] {
            if (wizard.mf_getCurrentIndex() != 2)
                return false;
            afterNext = failures(log);
            return true;
        })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(afterNext,
              (std::vector<LogLine>{{'E', "UQWizard::mf_implShowNextPanel", "Last panel must not be skipped"},
                                    {'E', "f_WizardDialogProcedure",
                                     "Failure calling on-command of configuration wizard:\r\n" + TAB +
                                         errorText(UQErrno::_E_::Internal)}}));
}

TEST_F(Wizard, BackOverSkippedPanelsDownToPanelZeroFailsAndTheDialogStays) {
    TestWizard wizard;
    // Panel 0 is shown on the first showing although it is skipped: nothing checks it then.
    wizard.add(IDD_WIZARD_PANEL_WELCOME, TITLE_WELCOME).mf_setSkipPanel(1);
    wizard.add(IDD_WIZARD_PANEL_NAME, TITLE_NAME).mf_setSkipPanel(1);
    wizard.add(IDD_WIZARD_PANEL_DONE, TITLE_DONE);
    LogCheck log;
    std::string firstTitle;
    std::vector<LogLine> afterBack;
    Script script(wizard);
    script
        .then([&] {
            if (!frameReady(wizard))
                return false;
            firstTitle = itemText(wizard.mf_getHandle(), ITEM_TITLE);
            return true;
        })
        .click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 2; })
        .then([&] {
            log.clear();
            return true;
        })
        .click(ITEM_BACK)
        .then([&] {
            if (wizard.mf_getCurrentIndex() != 0)
                return false;
            afterBack = failures(log);
            return true;
        })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(firstTitle, text(TITLE_WELCOME));
    EXPECT_EQ(afterBack, (std::vector<LogLine>{
                             {'E', "UQWizard::mf_implShowPrevPanel", "First panel must not be skipped"},
                             {'E', "f_WizardDialogProcedure",
                              "Failure calling on-command of configuration wizard:\r\n" + TAB +
                                  errorText(UQErrno::_E_::Internal)}}));
}

TEST_F(Wizard, RefusedInputShowsItsMessageAndTheWizardStays) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_NAME, TITLE_NAME);
    wizard.add(IDD_WIZARD_PANEL_DONE);
    wizard.onRead = [](UQWizardPanel&, int _bForward) {
        if (_bForward)
            throw UQErrno(UQErrno::_E_::Parameter);
    };
    std::string boxText;
    int nIndexAfter = -2;
    LogCheck log;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .then([&] {
            HWND hBox = boxOf(0, text(806));
            if (hBox == nullptr)
                return false;
            boxText = itemText(hBox, IDC_MESSAGE_TEXT);
            return true;
        })
        .answer(text(806), IDC_MESSAGE_BUTTON2)
        .then([&] {
            if (!frameReady(wizard))
                return false;
            nIndexAfter = wizard.mf_getCurrentIndex();
            return true;
        })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(nIndexAfter, 0);
    EXPECT_EQ(boxText, utf8(UQErrno::mf_toGuiMessage(UQErrnoData(UQErrno::_E_::Parameter), CString())));
    EXPECT_EQ(failures(log),
              (std::vector<LogLine>{{'W', "UQWizard::mf_onCommand",
                                     "Failure reading/executing panel '" + text(TITLE_NAME) +
                                         "', index=0:\r\n" + TAB + errorText(UQErrno::_E_::Parameter)}}));
}

TEST_F(Wizard, OnlyPanelExecutesOnTheWorkerThenFinishes) {
    TestWizard wizard;
    RunPanel& run = wizard.addRun();
    std::vector<std::string> labels;
    Script script(wizard);
    script
        .then([&] {
            if (!frameReady(wizard))
                return false;
            labels.push_back(itemText(wizard.mf_getHandle(), ITEM_NEXT));
            return true;
        })
        .click(ITEM_NEXT)
        .then([&] {
            if (itemText(wizard.mf_getHandle(), ITEM_NEXT) != text(932))
                return false;
            labels.push_back(itemText(wizard.mf_getHandle(), ITEM_NEXT));
            return true;
        })
        .click(ITEM_NEXT);
    LogCheck log;
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    EXPECT_EQ(labels, (std::vector<std::string>{text(3095), text(932)}));
    EXPECT_EQ(run.executions.load(), 1);
    // An execute panel is not read: its work is its input.
    EXPECT_EQ(wizard.reads, (std::vector<std::pair<int, int>>{}));
    std::lock_guard<std::mutex> lock(run.mutex);
    ASSERT_EQ(run.threadIds.size(), 1u);
    EXPECT_NE(run.threadIds[0], GetCurrentThreadId());
    EXPECT_EQ(run.threadNames, (std::vector<std::string>{"Wizard worker thread"}));
    EXPECT_EQ(failures(log), std::vector<LogLine>());
}

TEST_F(Wizard, RedAndYellowResultsShowTheirMessageAndKeepTheExecuteLabelUntilGreen) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    RunPanel& run = wizard.addRun();
    wizard.add(IDD_WIZARD_PANEL_DONE);
    run.work = [](RunPanel& _panel) {
        switch (_panel.executions.load()) {
        case 1:
            return UQErrnoData(UQErrno::_E_::System);
        case 2:
            return UQErrnoData(UQErrno::_W_::UserCanceled);
        default:
            return UQErrnoData(UQErrno::_I_::StubFile);
        }
    };
    std::vector<std::string> labels;
    std::vector<std::string> boxTexts;
    auto noteLabel = [&](int _nReturned) {
        return [&, _nReturned] {
            if (run.returned.load() != _nReturned || !frameReady(wizard))
                return false;
            labels.push_back(itemText(wizard.mf_getHandle(), ITEM_NEXT));
            labels.push_back(IsWindowEnabled(GetDlgItem(wizard.mf_getHandle(), ITEM_BACK)) ? "back enabled"
                                                                                           : "back disabled");
            return true;
        };
    };
    auto noteBox = [&] {
        return [&] {
            HWND hBox = boxOf(wizard.mf_getThreadId(), text(655));
            if (hBox == nullptr)
                return false;
            boxTexts.push_back(itemText(hBox, IDC_MESSAGE_TEXT));
            return true;
        };
    };
    LogCheck log;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 1; })
        .click(ITEM_NEXT)
        .then(noteBox())
        .answerWorkerBox(text(655), IDC_MESSAGE_BUTTON2)
        .then(noteLabel(1))
        .click(ITEM_NEXT)
        .then(noteBox())
        .answerWorkerBox(text(655), IDC_MESSAGE_BUTTON2)
        .then(noteLabel(2))
        .click(ITEM_NEXT)
        .then(noteLabel(3))
        .click(ITEM_NEXT)
        .waitUntil([&] { return wizard.mf_getCurrentIndex() == 2; })
        .click(ITEM_NEXT);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    EXPECT_EQ(run.executions.load(), 3);
    EXPECT_EQ(labels, (std::vector<std::string>{text(3095), "back enabled", text(3095), "back enabled",
                                                text(933), "back enabled"}));
    EXPECT_EQ(boxTexts,
              (std::vector<std::string>{
                  utf8(UQErrno::mf_toGuiMessage(UQErrnoData(UQErrno::_E_::System), CString())),
                  utf8(UQErrno::mf_toGuiMessage(UQErrnoData(UQErrno::_W_::UserCanceled), CString()))}));
    EXPECT_EQ(failures(log),
              (std::vector<LogLine>{
                  {'E', "UQWizard::mf_onPanelExecutionResult",
                   "Failure executing panel:\r\n" + TAB + errorText(UQErrno::_E_::System)},
                  {'E', "UQWizard::mf_onPanelExecutionResult",
                   "Failure executing panel:\r\n" + TAB + errorText(UQErrno::_W_::UserCanceled)}}));
}

TEST_F(Wizard, GuiThreadStaysResponsiveWhileAPanelExecutesForTwoSeconds) {
    TestWizard wizard;
    RunPanel& run = wizard.addRun();
    HANDLE hNever = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    // Two seconds of work: a wait that nothing ends early.
    run.work = [hNever](RunPanel&) {
        WaitForSingleObject(hNever, 2000);
        return UQErrnoData(UQErrno::_I_::StubFile);
    };
    static int s_nTicks = 0;
    s_nTicks = 0;
    const UINT_PTR uTimer = SetTimer(nullptr, 0, 50, [](HWND, UINT, UINT_PTR, DWORD) { ++s_nTicks; });
    int nTicksAtStart = 0;
    int nTicksAtEnd = 0;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .then([&] {
            if (run.executions.load() != 1)
                return false;
            nTicksAtStart = s_nTicks;
            return true;
        })
        .then([&] {
            if (run.returned.load() != 1)
                return false;
            nTicksAtEnd = s_nTicks;
            return true;
        })
        .waitUntil([&] { return itemText(wizard.mf_getHandle(), ITEM_NEXT) == text(932); })
        .click(ITEM_NEXT);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 1);
    KillTimer(nullptr, uTimer);
    CloseHandle(hNever);
    // 2 s at 50 ms: some 40 ticks; a blocked GUI thread would handle none.
    EXPECT_GE(nTicksAtEnd - nTicksAtStart, 10);
}

TEST_F(Wizard, ExecutionThatThrowsEndsTheWorkerAndCancelStillFinishes) {
    TestWizard wizard;
    RunPanel& run = wizard.addRun();
    run.work = [](RunPanel&) -> UQErrnoData { throw UQErrno(UQErrno::_E_::System); };
    LogCheck log;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return run.executions.load() == 1 && !wizard.mf_isRunning(); })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_EQ(run.returned.load(), 0);
    EXPECT_TRUE(wizard.mf_getExitError().mf_is(UQErrno::_E_::System));
    EXPECT_EQ(failures(log),
              (std::vector<LogLine>{{'E', "UQWizard::mf_implExecute",
                                     "Failure executing panel 0 (" + text(TITLE_RUN) + "):\r\n" + TAB +
                                         errorText(UQErrno::_E_::System)},
                                    {'E', "UQThreads::mf_implRun",
                                     "Failure in mf_implExecute of thread 'Wizard worker thread':\r\n" + TAB +
                                         errorText(UQErrno::_E_::System)}}));
}

TEST_F(Wizard, ExecutionThatRunsUntilCancelledEndsWhenCancelStopsTheWorker) {
    TestWizard wizard;
    RunPanel& run = wizard.addRun();
    HANDLE hNever = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    // Works until the wizard is closing, at most 15 s; then it reports nothing.
    run.work = [&wizard, hNever](RunPanel& _panel) {
        const ULONGLONG uEnd = GetTickCount64() + 15000;
        while (!wizard.mf_isShutdown() && GetTickCount64() < uEnd)
            WaitForSingleObject(hNever, 10);
        _panel.report = 0;
        return UQErrnoData(UQErrno::_W_::UserCanceled);
    };
    Script script(wizard);
    script.click(ITEM_NEXT)
        .waitUntil([&] { return run.executions.load() == 1; })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    const ULONGLONG uStart = GetTickCount64();
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_LT(GetTickCount64() - uStart, 10000u);
    EXPECT_EQ(run.returned.load(), 1);
    EXPECT_FALSE(wizard.mf_isRunning());
    CloseHandle(hNever);
}

TEST_F(Wizard, NullPanelIsRefused) {
    TestWizard wizard;
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { wizard.mf_addPanel(nullptr); }), "_E_::Parameter");
    EXPECT_EQ(wizard.mf_getPanelCount(), 0);
    EXPECT_EQ(log.lines(), (std::vector<LogLine>{{'E', "UQWizard::mf_addPanel", "NULL == _pPanel"}}));
}

TEST_F(Wizard, PanelIndexesOutsideTheListAreOutOfRange) {
    TestWizard wizard;
    LogCheck log;
    EXPECT_EQ(thrownCategory([&] { wizard.mf_getPanel(-1); }), "_E_::Range");
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    wizard.add(IDD_WIZARD_PANEL_DONE);
    EXPECT_EQ(thrownCategory([&] { wizard.mf_getPanel(2); }), "_E_::Range");
    EXPECT_EQ(thrownCategory([&] { wizard.mf_getCurPanel(); }), "_E_::Range");
    EXPECT_EQ(&wizard.mf_getPanel(1).mf_getWizard(), static_cast<UQWizard*>(&wizard));
    EXPECT_EQ(log.lines(),
              (std::vector<LogLine>{{'E', "UQWizard::mf_getPanel", "Index -1 out of range (0..-1)"},
                                    {'E', "UQWizard::mf_getPanel", "Index 2 out of range (0..1)"},
                                    {'E', "UQWizard::mf_getPanel", "Index -1 out of range (0..1)"}}));
}

TEST_F(Wizard, PanelWithoutTemplateIsAResourceErrorAndTheWizardStaysUsable) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME, TITLE_WELCOME);
    wizard.add(4242, TITLE_NAME);
    LogCheck log;
    std::vector<LogLine> afterNext;
    int nIndexAfterBack = -2;
    Script script(wizard);
    script.click(ITEM_NEXT)
        .then([&] {
            if (wizard.mf_getCurrentIndex() != 1)
                return false;
            afterNext = failures(log);
            return true;
        })
        .click(ITEM_BACK)
        .then([&] {
            if (wizard.mf_getCurrentIndex() != 0)
                return false;
            nIndexAfterBack = 0;
            return true;
        })
        .click(IDCANCEL)
        .answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    const std::string sResource = errorText(UQErrno::_E_::Resource);
    EXPECT_EQ(afterNext,
              (std::vector<LogLine>{
                  {'E', "UQWizardPanel::mf_create", "Failure creating wizard panel, resource-id=4242"},
                  {'E', "UQWizard::mf_implShowPanel",
                   "Failure initializing panel '" + text(TITLE_NAME) + "':\r\n" + TAB + sResource},
                  {'E', "UQWizard::mf_implShowNextPanel", "Failure showing panel with index=1: " + sResource},
                  {'E', "f_WizardDialogProcedure",
                   "Failure calling on-command of configuration wizard:\r\n" + TAB + sResource}}));
    EXPECT_EQ(nIndexAfterBack, 0);
}

TEST_F(Wizard, WizardWithoutPanelsLogsItsFailureAndCanBeCancelled) {
    TestWizard wizard;
    LogCheck log;
    Script script(wizard);
    script.click(IDCANCEL).answer(text(804), IDC_MESSAGE_BUTTON1);
    EXPECT_EQ(wizard.mf_create(frameInstance(), nullptr), 0);
    EXPECT_FALSE(wizard.mf_isRunning());
    const std::string sRange = errorText(UQErrno::_E_::Range);
    EXPECT_EQ(failures(log),
              (std::vector<LogLine>{
                  {'E', "UQWizard::mf_getPanel", "Index 0 out of range (0..-1)"},
                  {'E', "UQWizard::mf_implInitWizard", "Failure showing panel with index=0: " + sRange},
                  {'E', "UQWizard::mf_onInitDialog",
                   "Failure initializing configuration wizard:\r\n" + TAB + sRange}}));
}

TEST_F(Wizard, FrameTemplateMissingFromTheInstanceAnswersMinusOne) {
    TestWizard wizard;
    wizard.add(IDD_WIZARD_PANEL_WELCOME);
    LogCheck log;
    // The language module has panel templates but no frame.
    EXPECT_EQ(wizard.mf_create(UQLanguage::mf_getUserLanguageHandle(), nullptr), -1);
    EXPECT_FALSE(wizard.mf_isRunning());
    const std::vector<LogLine> lines = failures(log);
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_EQ(lines[0].function, "UQWizard::mf_create");
    EXPECT_EQ(lines[0].text.rfind("Failure showing wizard dialog:\r\n" + TAB, 0), 0u);
}

TEST_F(Wizard, CopySharesTheHandlesAndReleasesNothing) {
    HFONT hTitle = nullptr;
    HFONT hMono = nullptr;
    {
        TestWizard wizard;
        wizard.add(IDD_WIZARD_PANEL_WELCOME);
        hTitle = wizard.mf_getTitleFont();
        hMono = wizard.mf_getMonospaceFont();
        {
            const UQWizard* pOriginal = &wizard;
            const TestWizard copy(wizard);
            EXPECT_EQ(copy.mf_getTitleFont(), hTitle);
            EXPECT_EQ(copy.mf_getMonospaceFont(), hMono);
            EXPECT_EQ(&copy.mf_getPanel(0), &pOriginal->mf_getPanel(0));
        }
        // The copy is gone; the original's fonts and panels are still there.
        EXPECT_EQ(GetObjectType(hTitle), static_cast<DWORD>(OBJ_FONT));
        EXPECT_EQ(GetObjectType(hMono), static_cast<DWORD>(OBJ_FONT));
        EXPECT_EQ(wizard.mf_getPanel(0).mf_getResourceId(), static_cast<unsigned>(IDD_WIZARD_PANEL_WELCOME));
    }
    EXPECT_EQ(GetObjectType(hTitle), 0u);
    EXPECT_EQ(GetObjectType(hMono), 0u);
}

// GetGuiResources answers 0 under Wine, so fonts are counted by asking GDI about each handle seen.
TEST_F(Wizard, FiveHundredRunsLeaveNoThreadHandleOrFontBehind) {
    auto runOnce = [](std::vector<HFONT>& _fonts) {
        TestWizard wizard;
        wizard.addRun();
        _fonts.push_back(wizard.mf_getTitleFont());
        _fonts.push_back(wizard.mf_getMonospaceFont());
        Script script(wizard);
        script.click(ITEM_NEXT)
            .waitUntil([&] { return itemText(wizard.mf_getHandle(), ITEM_NEXT) == text(932); })
            .click(ITEM_NEXT);
        return wizard.mf_create(frameInstance(), nullptr);
    };
    std::vector<HFONT> fonts;
    // One run first, so that what the process sets up once (classes, the language module) is counted out.
    ASSERT_EQ(runOnce(fonts), 1);
    fonts.clear();
    const DWORD dwThreadsBefore = static_cast<DWORD>(threadsOfProcess());
    const DWORD dwHandlesBefore = handlesOfProcess();
    int nFinished = 0;
    for (int i = 0; i < 500; ++i)
        nFinished += runOnce(fonts) == 1 ? 1 : 0;
    const DWORD dwThreadsAfter = static_cast<DWORD>(threadsOfProcess());
    const DWORD dwHandlesAfter = handlesOfProcess();
    int nFontsLeft = 0;
    for (HFONT hFont : fonts)
        nFontsLeft += GetObjectType(hFont) == OBJ_FONT ? 1 : 0;
    std::printf("wizard runs: GDI objects by GetGuiResources %lu\n",
                static_cast<unsigned long>(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS)));
    std::printf("wizard runs: threads %lu -> %lu, handles %lu -> %lu, fonts made %zu, left %d\n",
                static_cast<unsigned long>(dwThreadsBefore), static_cast<unsigned long>(dwThreadsAfter),
                static_cast<unsigned long>(dwHandlesBefore), static_cast<unsigned long>(dwHandlesAfter),
                fonts.size(), nFontsLeft);
    EXPECT_EQ(nFinished, 500);
    EXPECT_EQ(dwThreadsAfter, dwThreadsBefore);
    EXPECT_NE(dwHandlesBefore, 0u);
    EXPECT_EQ(dwHandlesAfter, dwHandlesBefore);
    EXPECT_EQ(nFontsLeft, 0);
}
