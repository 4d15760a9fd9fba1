#pragma once

#include "interfaces/korbase.h"

#include <memory>
#include <mutex>

// Passes every record on to where records went before it was installed (the sink in place, else the
// product log file) and keeps the text of the last LEVEL_E record. The settings command uses it to tell a
// change that the registry refused from one that was not needed: the GUI registry's setters answer 0 in
// both cases, and the MRU update may even answer 1 after a failed write, but only a failure is logged at E.
// Installed for its lifetime; the previous sink is put back when it goes.
class LogTap : public UVLogSink {
public:
    LogTap();
    LogTap(const LogTap&) = delete;
    LogTap& operator=(const LogTap&) = delete;
    ~LogTap() override;

    void mf_write(const UQLogRecord& _record) noexcept override;

    // Forgets the failures recorded so far.
    void mf_mark() noexcept;
    // Whether a LEVEL_E record came since mf_mark.
    bool mf_hasFailure() const noexcept;
    // The last line of the last LEVEL_E record since mf_mark, without its indent: the error that the
    // record ends with. Empty when there was none (or its text could not be kept).
    CString mf_getFailure() const;
    // The text of the first LEVEL_E record of a registry operation since mf_mark that tells of a broken
    // store or value (it cannot be opened or read, or a value is of another type or out of range), not of
    // a missing key or value: the getters hide both behind their defaults, and only the latter is normal.
    // Empty when there was none.
    CString mf_getStoreFailure() const;

private:
    // The product log, when no other sink was installed.
    std::unique_ptr<UQLogFileSink> m_pProductLog;
    UVLogSink* m_pPrevious;
    mutable std::mutex m_mutex;
    bool m_bFailure;
    CString m_sFailure;
    CString m_sStoreFailure;
};
