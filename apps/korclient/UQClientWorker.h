// A worker thread for one job of the client (a search, a retrieval) under a progress dialog: it runs the
// job once, publishes its course as progress events and its end, and keeps anything the job throws from
// leaving the thread.
#pragma once

#include "interfaces/korbase.h"

#include <functional>
#include <string>

class UQClientWorker : public UQThreads {
public:
    using Job = std::function<void(UQClientWorker& _worker)>;

    UQClientWorker(const CString& _sName, Job _job);
    UQClientWorker(const UQClientWorker&) = delete;
    UQClientWorker& operator=(const UQClientWorker&) = delete;
    ~UQClientWorker() override;

    void mf_implExecute(int _nThread) override;
    // Publishes the progress of the job: a text, files done and in all.
    void mf_publishProgress(const CString& _sText, int _nDone, int _nTotal);
    // What ended the job abnormally; empty when it ended normally.
    const std::wstring& mf_getFailure() const noexcept { return m_sFailure; }

private:
    Job m_job;
    std::wstring m_sFailure;
};
