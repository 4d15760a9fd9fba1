// What korguibase calls of korutil, the product family's utility library: events about files.
#pragma once

#include "interfaces/korbase.h"

#include <cstdint>
#include <string>
#include <vector>

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

// ---------------------------------------------------------------------------------------------------------
// Accounts: security identifiers, users and the authorities that know them

// A security identifier with the name it is shown under.
class KORUTIL_API UQSid {
public:
    UQSid(const CString& _sSidString, const CString& _sDisplayName);
    UQSid(const UQSid& _other) = default;
    UQSid& operator=(const UQSid& _other) = default;
    virtual ~UQSid();

    // "S-1-5-21-...".
    virtual CString mf_getSidString() const;
    // The account name as lists show it.
    virtual const CString& mf_getDisplayName() const noexcept;

private:
    CString m_sSidString;
    CString m_sDisplayName;
};

// A user account: a SID with a second text (the full name or the account's comment).
class KORUTIL_API UQUser : public UQSid {
public:
    UQUser(const CString& _sSidString, const CString& _sDisplayName, const CString& _sSecondText);
    UQUser(const UQUser& _other) = default;
    UQUser& operator=(const UQUser& _other) = default;
    ~UQUser() override;

    int mf_hasSecondText() const noexcept { return m_sSecondText.IsEmpty() ? 0 : 1; }
    const CString& mf_getSecondText() const noexcept { return m_sSecondText; }

private:
    CString m_sSecondText;
};

// Something that knows user accounts: the local computer or a domain controller.
class KORUTIL_API UQSidAuthority {
public:
    UQSidAuthority(const CString& _sName, const CString& _sDisplayName, int _bMarked);
    UQSidAuthority(const UQSidAuthority&) = delete;
    UQSidAuthority& operator=(const UQSidAuthority&) = delete;
    virtual ~UQSidAuthority();

    // The authority's network name, which the GUI remembers.
    const CString& mf_getName() const noexcept { return m_sName; }
    const CString& mf_getDisplayName() const noexcept { return m_sDisplayName; }
    // A domain controller marked as the domain's primary one; 0 for the local computer.
    int mf_isMarked() const noexcept { return m_bMarked; }
    // Appends a new UQUser for every user account of the authority, in the authority's order; the caller
    // owns them. An authority that does not answer throws a UQErrno (logged), and the array then holds
    // what it held before.
    virtual void mf_queryDisplayUsers(UQArray<UQSid*, UQSid*>& _rUsers) const = 0;

private:
    CString m_sName;
    CString m_sDisplayName;
    int m_bMarked;
};

// The computer's own accounts and the domain it belongs to. The authorities belong to korutil and live
// until the process ends.
class KORUTIL_API UQDomain {
public:
    // The local computer: its accounts from the system's account database (Windows: the local security
    // database through NetUserEnum; elsewhere the user database through getpwent, with SIDs formed from the
    // uid as Samba forms them, "S-1-22-1-<uid>").
    static UQSidAuthority* mf_getLocalComputer();
    // Appends the domain controllers of the domain, from the directory file chosen by
    // mf_getDirectoryFile (docs/directory-format.md); none without a file. A file that cannot be read
    // throws _E_::File; malformed lines are logged at LEVEL_W and skipped.
    static void mf_getDomainControllers(UQArray<UQSidAuthority*, UQSidAuthority*>& _rControllers);

    // The directory file: the file set here, else KOR_DIRECTORY_FILE when set, else none (a computer
    // outside any domain). An empty path goes back to that choice.
    static void mf_setDirectoryFile(const CString& _sFile);
    static CString mf_getDirectoryFile();
};

// One domain controller of a directory file: its users come from that file, read afresh by every query.
struct UQDirectoryController {
    CString sName;
    CString sDisplayName;
    int bMarked = 0;
    int bAnswers = 1;              // 0: the controller does not answer queries
    std::vector<UQUser> users;     // listed in the file
    std::uint32_t uGenerated = 0;  // users made by UQUserGenerator after the listed ones
    std::uint64_t uStartValue = 1; // the generator's starting value
};

// Reads a directory file (docs/directory-format.md).
class KORUTIL_API UQDirectoryFile {
public:
    struct Result {
        std::vector<UQDirectoryController> controllers; // in file order
        std::vector<UQErrno> errors; // one _E_::Format per malformed line ("file:line: ..."), in file order
    };

    // A file that cannot be opened or read throws _E_::File naming it.
    static Result mf_read(const CString& _sFile);
    static Result mf_readText(const std::string& _utf8Text, const CString& _sName);
};

// Makes realistic user accounts of a domain: account names, full names, SIDs under one domain SID. The
// same count and starting value give the same users.
class KORUTIL_API UQUserGenerator {
public:
    UQUserGenerator(std::uint32_t _uCount, std::uint64_t _uStartValue);
    // Appends new UQUser objects; the caller owns them.
    void mf_generate(UQArray<UQSid*, UQSid*>& _rUsers) const;
    // User _uIndex alone.
    UQUser mf_getUser(std::uint32_t _uIndex) const;

private:
    std::uint32_t m_uCount;
    std::uint64_t m_uStartValue;
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
