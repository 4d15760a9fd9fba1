#include "guibase/wizard/UQWizardCore.h"

#include "guibase/foundation/UQReport.h"

#include <cstdint>

namespace {

// The handle value of an absent event (all ones, INVALID_HANDLE_VALUE on Windows).
HANDLE noEvent() {
    return reinterpret_cast<HANDLE>(~static_cast<std::uintptr_t>(0));
}

UQErrno systemError(const UQErrnoValue& _value) {
    return UQErrno(UQErrnoData(_value), static_cast<std::uint32_t>(GetLastError()));
}

} // namespace

UQWizardCore::UQWizardCore(UVPanels& _panels)
    : m_panels(_panels), m_nIndex(-1), m_hTaskEvent(noEvent()), m_bOwnsEvent(1) {
    static const wchar_t* const _sFunction_ = L"UQWizard::UQWizard";
    SetLastError(0);
    HANDLE hEvent = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (hEvent == nullptr) {
        const UQErrno error = systemError(UQErrno::_E_::Initialization);
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure initializing task event: %s",
                         error.mf_toString());
        throw error;
    }
    m_hTaskEvent = hEvent;
}

UQWizardCore::UQWizardCore(UVPanels& _panels, const UQWizardCore& _other)
    : m_panels(_panels), m_nIndex(_other.m_nIndex), m_hTaskEvent(_other.m_hTaskEvent), m_bOwnsEvent(0) {}

UQWizardCore::~UQWizardCore() {
    static const wchar_t* const _sFunction_ = L"UQWizard::~UQWizard";
    if (!m_bOwnsEvent || m_hTaskEvent == noEvent())
        return;
    if (!CloseHandle(m_hTaskEvent))
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure closing task-event handle");
    m_hTaskEvent = noEvent();
}

void UQWizardCore::mf_checkPanel(int _nIndex) const {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_getPanel";
    const int nCount = m_panels.mf_getCount();
    if (_nIndex < 0 || _nIndex >= nCount)
        UQReport::mf_fail(UQErrno::_E_::Range, _sFunction_, L"Index %d out of range (0..%d)", _nIndex,
                          nCount - 1);
    if (!m_panels.mf_isPresent(_nIndex))
        UQReport::mf_fail(UQErrno::_E_::ItemNotFound, _sFunction_, L"Panel with index %d is NULL", _nIndex);
}

void UQWizardCore::mf_stepForward() {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implShowNextPanel";
    const int nCount = m_panels.mf_getCount();
    ++m_nIndex;
    while (m_nIndex < nCount) {
        mf_checkPanel(m_nIndex);
        if (!m_panels.mf_isSkipped(m_nIndex))
            return;
        if (m_nIndex == nCount - 1)
            UQReport::mf_fail(UQErrno::_E_::Internal, _sFunction_, L"Last panel must not be skipped");
        ++m_nIndex;
    }
}

void UQWizardCore::mf_stepBack() {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implShowPrevPanel";
    while (m_nIndex > 0) {
        --m_nIndex;
        mf_checkPanel(m_nIndex);
        if (!m_panels.mf_isSkipped(m_nIndex))
            return;
        if (m_nIndex == 0)
            UQReport::mf_fail(UQErrno::_E_::Internal, _sFunction_, L"First panel must not be skipped");
    }
    --m_nIndex;
}

unsigned UQWizardCore::mf_getNextLabel(int _nIndex) const {
    if (m_panels.mf_isExecute(_nIndex)) {
        const UQErrnoData& result = m_panels.mf_getResult(_nIndex);
        if (!result || !result.mf_getValue()->mf_getSeverity().mf_isGreen())
            return TEXT_EXECUTE;
    }
    return _nIndex == m_panels.mf_getCount() - 1 ? TEXT_FINISH : TEXT_NEXT;
}

unsigned UQWizardCore::mf_getLabelAfterSuccess() const {
    return m_nIndex == m_panels.mf_getCount() - 1 ? TEXT_FINISH : TEXT_NEXT;
}

UQWizardCore::NEXT UQWizardCore::mf_next(const std::function<void()>& _read, UQErrnoData& _error) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_onCommand";
    UQErrnoData error;
    const int nIndex = m_nIndex;
    mf_checkPanel(nIndex);
    try {
        if (m_panels.mf_isExecute(nIndex)) {
            const UQErrnoData& result = m_panels.mf_getResult(nIndex);
            if (!result || !result.mf_getValue()->mf_getSeverity().mf_isGreen()) {
                mf_signalTask(_sFunction_);
                return NEXT_EXECUTING;
            }
        } else {
            _read();
        }
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_,
                         L"Failure reading/executing panel '%s', index=%d:\r\n%s%s",
                         m_panels.mf_getTitle(nIndex), nIndex, UQLog::TAB, e.mf_toString());
        error = e.mf_getData();
    }
    if (error) {
        _error = error;
        return NEXT_REFUSED;
    }
    return nIndex >= m_panels.mf_getCount() - 1 ? NEXT_FINISH : NEXT_FORWARD;
}

void UQWizardCore::mf_readBeforeBack(const std::function<void()>& _read) const {
    try {
        _read();
    } catch (const UQErrno&) {
        // Invalid input never keeps the user from going back.
    }
}

void UQWizardCore::mf_signalTask(const wchar_t* _pszFunction) const {
    SetLastError(0);
    if (!SetEvent(m_hTaskEvent)) {
        const UQErrno error = systemError(UQErrno::_E_::Synchronization);
        UQReport::mf_log(UQLogData::LEVEL_E, _pszFunction, L"Failure signaling task event:\r\n%s%s",
                         UQLog::TAB, error.mf_toString());
        throw error;
    }
}

void UQWizardCore::mf_runTask(const UQThreads& _thread, int _nThread) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implExecute";
    SetLastError(0);
    if (WaitForSingleObject(m_hTaskEvent, INFINITE) == WAIT_FAILED) {
        const UQErrno error = systemError(UQErrno::_E_::Synchronization);
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure waiting for task event:\r\n%s%s",
                         UQLog::TAB, error.mf_toString());
        throw error;
    }
    if (_thread.mf_isShutdown(_nThread)) {
        UQReport::mf_log(UQLogData::LEVEL_T, _sFunction_, L"Shutdown was signaled, exiting thread ...");
        return;
    }
    const int nIndex = m_nIndex;
    try {
        mf_checkPanel(nIndex);
        m_panels.mf_execute(nIndex);
    } catch (const UQErrno& e) {
        const CString sTitle = nIndex >= 0 && nIndex < m_panels.mf_getCount() && m_panels.mf_isPresent(nIndex)
                                   ? m_panels.mf_getTitle(nIndex)
                                   : CString();
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure executing panel %d (%s):\r\n%s%s", nIndex,
                         sTitle, UQLog::TAB, e.mf_toString());
        throw;
    }
}

void UQWizardCore::mf_stopWorker(UQThreads& _thread) noexcept {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implFinalizeWizard";
    try {
        _thread.mf_stop();
        mf_signalTask(_sFunction_);
        const UQErrnoNumber number = _thread.mf_stopWait(INFINITE);
        if (number.mf_getNumber() != 0)
            throw UQErrno(UQErrnoData(UQErrno::_E_::Synchronization), number.mf_getNumber());
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure stopping wizard worker thread:\r\n%s%s",
                         UQLog::TAB, e.mf_toString());
    } catch (...) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure stopping wizard worker thread:\r\n%s%s",
                         UQLog::TAB, L"Unexpected exception");
    }
}
