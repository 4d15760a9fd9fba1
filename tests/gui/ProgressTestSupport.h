// Workers for the progress dialog tests: a one-job thread that runs a script on its own thread, publishes
// progress events and reads the dialog back as it goes (cross-thread reads are answered by the dialog's
// modal loop). Every wait of a script has a time limit.
#pragma once

#include "ToolkitTestSupport.h"

#include "interfaces/korutil.h"

#include <functional>

namespace progresstest {

// The limit of every wait in these tests.
const DWORD LIMIT_MS = 10000;

class ScriptedWorker : public UQThreads {
public:
    using Script = std::function<void(ScriptedWorker& _worker)>;

    explicit ScriptedWorker(Script _script)
        : UQThreads(L"Progress test worker", UQThreadContext::TYPE_WORKER, 0), m_script(std::move(_script)) {}
    ~ScriptedWorker() override { mf_stopWait(LIMIT_MS); }

    void mf_implExecute(int) override { m_script(*this); }

    // Waits until the dialog's switch is tripped; 1 when it was within the limit.
    int waitCancelled() const {
        UQCancelSwitch* pSwitch = mf_getCancelSwitch();
        return pSwitch != nullptr ? pSwitch->mf_waitCancelled(LIMIT_MS) : 0;
    }

private:
    Script m_script;
};

inline void publish(std::uint32_t _uAction, const wchar_t* _pszText = L"", int _nCur = 0, int _nTotal = 0,
                    std::int64_t _nCurData = 0, std::int64_t _nTotalData = 0) {
    UQProgressEvent(_uAction, _pszText, _nCur, _nTotal, _nCurData, _nTotalData).mf_publish();
}

inline bool isEnabled(HWND _hDlg, int _nId) {
    return IsWindowEnabled(GetDlgItem(_hDlg, _nId)) != FALSE;
}

} // namespace progresstest
