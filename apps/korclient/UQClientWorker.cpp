#include "UQClientWorker.h"

#include "guibase/foundation/UQReport.h"
#include "interfaces/korutil.h"

UQClientWorker::UQClientWorker(const CString& _sName, Job _job)
    : UQThreads(_sName, UQThreadContext::TYPE_WORKER, 0), m_job(std::move(_job)) {}

UQClientWorker::~UQClientWorker() {
    mf_stopWait(INFINITE);
}

void UQClientWorker::mf_implExecute(int) {
    static const wchar_t* const _sFunction_ = L"UQClientWorker::mf_implExecute";
    UQProgressEvent(UQProgressEvent::ACTION_START).mf_publish();
    UQProgressEvent(UQProgressEvent::ACTION_ENABLE_CANCEL).mf_publish();
    try {
        m_job(*this);
    } catch (const UQErrno& e) {
        m_sFailure = e.mf_toString().GetString();
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure in '%s':\r\n%s%s", mf_getName());
    } catch (...) {
        m_sFailure = L"Unexpected exception";
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure in '%s':\r\n%s%s", mf_getName(),
                         UQLog::TAB, L"Unexpected exception");
    }
    UQProgressEvent(UQProgressEvent::ACTION_END).mf_publish();
}

void UQClientWorker::mf_publishProgress(const CString& _sText, int _nDone, int _nTotal) {
    UQProgressEvent(UQProgressEvent::ACTION_PROGRESS, _sText, _nDone, _nTotal, _nDone, _nTotal).mf_publish();
}
