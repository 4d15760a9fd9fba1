// A real wizard for the tests and the gallery: a derived wizard whose hooks the test fills in, panels of
// the language module's demonstration templates (an execute panel among them), and a script that drives
// the frame from a thread timer inside its modal loop, one action at a time.
#pragma once

#include "DialogDriver.h"
#include "support/LogCheck.h"

#include "guibase/wizard/UQWizard.h"
#include "guibase/wizard/UQWizardPanel.h"

#include <atomic>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

namespace wizardtest {

// The frame's items.
const int ITEM_BACK = 432;
const int ITEM_NEXT = 440;
const int ITEM_TITLE = 945;
const int ITEM_PLACEHOLDER = 444;

// Titles of the demonstration panels.
const unsigned TITLE_WELCOME = 9601;
const unsigned TITLE_NAME = 9602;
const unsigned TITLE_RUN = 9603;
const unsigned TITLE_DONE = 9604;

// A wizard whose hooks record what they were called with and do what the test gives them.
class TestWizard : public UQWizard {
public:
    ~TestWizard() override;

    void mf_implInitPanel(UQWizardPanel& _panel) override;
    void mf_implReadPanel(UQWizardPanel& _panel, int _bForward) override;

    // Adds a panel of template _uTemplate; answers it.
    UQWizardPanel& add(unsigned _uTemplate, unsigned _uTitle = TITLE_WELCOME);
    class RunPanel& addRun(unsigned _uTitle = TITLE_RUN);

    std::function<void(UQWizardPanel&)> onInit;
    std::function<void(UQWizardPanel&, int)> onRead;
    // (panel index, forward) of every read, and the index of every initialised panel.
    std::vector<std::pair<int, int>> reads;
    std::vector<int> inits;
};

// An execute panel: its work runs on the worker thread, stores its result and reports it.
class RunPanel : public UQWizardPanel {
public:
    RunPanel(UQWizard& _wizard, int _nIndex, unsigned _uTitle);
    void mf_execute() override;

    // The work; answers the result to store and report. Unset: a green result at once.
    std::function<UQErrnoData(RunPanel&)> work;
    // Whether the result is reported; a work that ends because the wizard is closing reports nothing.
    std::atomic<int> report{1};
    std::atomic<int> executions{0};
    std::atomic<int> returned{0};
    std::mutex mutex;
    std::vector<DWORD> threadIds;
    std::vector<std::string> threadNames;
};

// Drives the wizard frame: each action is tried on every tick until it answers true, then the next one.
// At the time limit the worker's boxes are closed, and a DialogDriver that only watches the time ends every
// dialog of the thread shortly after, so nothing hangs.
class Script {
public:
    using Action = std::function<bool()>;

    explicit Script(UQWizard& _wizard, DWORD _dwTimeLimitMs = 20000);
    ~Script();
    Script(const Script&) = delete;
    Script& operator=(const Script&) = delete;

    Script& then(Action _action);
    // A click on a frame button once the frame is there and takes input.
    Script& click(int _nId);
    // A click on _nButton of the message box with caption _sCaption that thread _dwThread shows (0: the
    // test's thread).
    Script& answer(const std::string& _sCaption, int _nButton, DWORD _dwThread = 0);
    // The same for a box of the wizard's worker thread.
    Script& answerWorkerBox(const std::string& _sCaption, int _nButton);
    Script& waitUntil(std::function<bool()> _condition);

    int actionsLeft() const { return static_cast<int>(m_actions.size()); }
    bool timedOut() const { return m_bTimedOut || m_driver.timedOut(); }
    // Captions of the boxes answered, in order.
    std::vector<std::string> answered;

private:
    static void CALLBACK mf_tick(HWND, UINT, UINT_PTR, DWORD) noexcept;
    void mf_onTick() noexcept;

    UQWizard& m_wizard;
    DialogDriver m_driver;
    std::deque<Action> m_actions;
    Script* m_pPrevious;
    UINT_PTR m_uTimer;
    ULONGLONG m_uDeadline;
    bool m_bTimedOut;
};

// The frame takes input (no box of this thread is open over it).
bool frameReady(const UQWizard& _wizard);
// The visible dialog of thread _dwThread whose caption is _sCaption; null when there is none.
HWND boxOf(DWORD _dwThread, const std::string& _sCaption);
// The panel dialogs of the frame that are visible.
int visiblePanels(HWND _hFrame);
// A text of the catalogue in UTF-8.
std::string text(unsigned _uId);

} // namespace wizardtest
