// What korguibase calls of korutil, the product family's utility library: events about files.
#pragma once

#include "interfaces/korbase.h"

#if defined(_WIN32)
#if defined(KORUTIL_BUILD)
#define KORUTIL_API __declspec(dllexport)
#else
#define KORUTIL_API __declspec(dllimport)
#endif
#else
#define KORUTIL_API __attribute__((visibility("default")))
#endif

// The status part that file events share: how the operation on the file ended.
class KORUTIL_API UQEventStatus {
public:
    UQEventStatus(const UQSeverity& _severity, const CString& _sOutcome);
    UQEventStatus(const UQEventStatus&) = default;
    UQEventStatus& operator=(const UQEventStatus&) = default;
    virtual ~UQEventStatus();

    const UQSeverity& mf_getSeverity() const noexcept { return m_severity; }
    // The outcome as the user reads it ("Migrated", "Access denied").
    virtual CString mf_getOutcomeText() const;

private:
    UQSeverity m_severity;
    CString m_sOutcome;
};

// A file seen while walking a source directory.
class KORUTIL_API UQSourceEvent : public UQEventStatus {
public:
    UQSourceEvent(const CString& _sDirectory, const CString& _sFileName, const UQSeverity& _severity,
                  const CString& _sOutcome);
    ~UQSourceEvent() override;

    const CString& mf_getDirectory() const noexcept { return m_sDirectory; }
    const CString& mf_getFileName() const noexcept { return m_sFileName; }
    // "SourceEvent dir='<directory>' file='<name>' outcome='<outcome>'".
    virtual CString mf_toString() const;

private:
    CString m_sDirectory;
    CString m_sFileName;
};

// Progress of a worker, published under UQEVENT_ID_PROGRESS for the progress dialogs, which
// read the action, the text, the two counters and mf_calcCurDataPercent.
//
// The counters: the first is the number of objects (files) processed so far, the second the number of
// objects to process in all (0 while unknown). The data amounts (bytes) of the current data: how much of
// it is done and its total; mf_calcCurDataPercent is the done part in percent.
class KORUTIL_API UQProgressEvent : public UQEvent {
public:
    // The actions and what the progress dialogs do on each.
    enum ACTION : std::uint32_t {
        ACTION_PROGRESS = 0,       // text, counters and percentage changed
        ACTION_START = 1,          // the work began (the dialogs change nothing)
        ACTION_END = 2,            // the work ended: the dialog stops the worker and closes
        ACTION_ENABLE_CANCEL = 3,  // cancelling is possible
        ACTION_DISABLE_CANCEL = 4, // cancelling is not possible now
    };

    explicit UQProgressEvent(std::uint32_t _uAction, const CString& _sText = CString(), int _nCurObjects = 0,
                             int _nTotalObjects = 0, std::int64_t _nCurData = 0,
                             std::int64_t _nTotalData = 0);
    UQProgressEvent(const UQProgressEvent&) = default;
    UQProgressEvent& operator=(const UQProgressEvent&) = default;
    ~UQProgressEvent() override;

    std::uint32_t mf_getAction() const noexcept { return m_uAction; }
    const CString& mf_getText() const noexcept { return m_sText; }
    // The first counter (shown in control 342): objects processed so far.
    int mf_getCurObjects() const noexcept { return m_nCurObjects; }
    // The second counter (shown in control 343): objects to process in all.
    int mf_getTotalObjects() const noexcept { return m_nTotalObjects; }
    std::int64_t mf_getCurData() const noexcept { return m_nCurData; }
    std::int64_t mf_getTotalData() const noexcept { return m_nTotalData; }
    // The current data done in percent, rounded down, 0..100: 0 when the total is 0 or negative or the
    // done part negative, 100 when the done part is at or above the total. No overflow for any values.
    unsigned long mf_calcCurDataPercent() const noexcept;
    // "ProgressEvent action=0 text='...' objects=3/10 data=512/2048".
    CString mf_toString() const override;

private:
    std::uint32_t m_uAction;
    CString m_sText;
    int m_nCurObjects;
    int m_nTotalObjects;
    std::int64_t m_nCurData;
    std::int64_t m_nTotalData;
};

// The product's own places on this computer.
class KORUTIL_API UQMain {
public:
    // The folder of files the product keeps for support (listing excerpts, reports): KOR_SUPPORT_DIR when
    // set, else %LOCALAPPDATA%\Corvex\Stormex\Support on Windows and $XDG_DATA_HOME (or ~/.local/share)
    // /korguibase/support elsewhere. Created, with its parents, when it does not exist; no trailing
    // separator.
    static CString mf_getSupportPath();
};
