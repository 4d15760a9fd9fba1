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

// The product's own places on this computer.
class KORUTIL_API UQMain {
public:
    // The folder of files the product keeps for support (listing excerpts, reports): KOR_SUPPORT_DIR when
    // set, else %LOCALAPPDATA%\Corvex\Stormex\Support on Windows and $XDG_DATA_HOME (or ~/.local/share)
    // /korguibase/support elsewhere. Created, with its parents, when it does not exist; no trailing
    // separator.
    static CString mf_getSupportPath();
};
