// What korguibase calls of korarchiver, the product family's archiver library: migration entries, backup
// events, the listing reader, and the history search with its query data.
#pragma once

#include "interfaces/korbase.h"
#include "interfaces/korutil.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#if defined(_WIN32)
#if defined(KORARCHIVER_BUILD)
#define KORARCHIVER_API __declspec(dllexport)
#else
#define KORARCHIVER_API __declspec(dllimport)
#endif
#else
#define KORARCHIVER_API __attribute__((visibility("default")))
#endif

// A migrated file as the server's catalogue of migrated files holds it.
class KORARCHIVER_API UQCMEntry {
public:
    UQCMEntry(const CString& _sUNCPath, std::uint32_t _uVersion, const UQFileSize& _size,
              const UQFileTime& _lastWriteTime);
    UQCMEntry(const UQCMEntry&) = default;
    UQCMEntry& operator=(const UQCMEntry&) = default;
    virtual ~UQCMEntry();

    const CString& mf_getUNCPath() const noexcept { return m_sUNCPath; }
    std::uint32_t mf_getVersion() const noexcept { return m_uVersion; }
    const UQFileSize& mf_getSize() const noexcept { return m_size; }
    const UQFileTime& mf_getLastWriteTime() const noexcept { return m_lastWriteTime; }
    // "'<path>' v<version> <size> bytes <time>".
    CString mf_toShortString() const;

private:
    CString m_sUNCPath;
    std::uint32_t m_uVersion;
    UQFileSize m_size;
    UQFileTime m_lastWriteTime;
};

// A file that a backup run handled.
class KORARCHIVER_API UQBackupEvent : public UQEventStatus {
public:
    UQBackupEvent(const CString& _sPath, const UQSeverity& _severity, const CString& _sOutcome);
    ~UQBackupEvent() override;

    const CString& mf_getPath() const noexcept { return m_sPath; }
    // "BackupEvent path='<path>' outcome='<outcome>'".
    virtual CString mf_toString() const;

private:
    CString m_sPath;
};

// The listener through which a listing reader reports the migrated files of a listing.
class KORARCHIVER_API UVListingFileReader {
public:
    virtual ~UVListingFileReader();
    // _uNumber and _time are the listing's own entry number and time; lists of migrated files do not use
    // them.
    virtual void mf_onMigrationEntry(std::uint32_t _uNumber, const UQFileTime& _time, const CString& _sPath,
                                     std::uint32_t _uVersion, const CString& _sResult,
                                     const UQSeverity& _severity) = 0;
};

// Hears now and then how far a long read of a listing or a history store has come, on the thread that
// reads, every 4096 lines. It must not throw.
class KORARCHIVER_API UVReadProgress {
public:
    virtual ~UVReadProgress();
    // _uLines lines read so far (comments and malformed ones included), the first _uBytes bytes of
    // _uTotalBytes; _uTotalBytes is 0 where the size is not known.
    virtual void mf_onReadProgress(std::uint64_t _uLines, std::uint64_t _uBytes,
                                   std::uint64_t _uTotalBytes) noexcept = 0;
};

// Reads a listing file (docs/listing-format.md) and reports every good line to the listener. A malformed
// line, or one the listener refuses, becomes a UQErrno naming the file and line, and reading goes on.
class KORARCHIVER_API UQListingReader {
public:
    struct Result {
        std::uint32_t uEntries = 0;  // lines reported to the listener and taken
        std::vector<UQErrno> errors; // one per line that was not taken, in file order
    };

    // A file that cannot be opened or read throws UQErrno::_E_::File naming it. _pProgress, if given,
    // hears how far the reading of the lines has come.
    static Result mf_read(const CString& _sFile, UVListingFileReader& _rListener,
                          UVReadProgress* _pProgress = nullptr);
    // The same over text already in memory; _sName is used in the errors.
    static Result mf_readText(const std::string& _utf8Text, const CString& _sName,
                              UVListingFileReader& _rListener, UVReadProgress* _pProgress = nullptr);
};

// Writes the lines of a listing file (docs/listing-format.md), such as the excerpt the client saves, so that
// the listing reader takes back every line it writes.
class KORARCHIVER_API UQListingWriter {
public:
    enum STATUS { STATUS_MIGRATED, STATUS_STUB, STATUS_WARNING, STATUS_FAILED };

    // "path<TAB>version<TAB>status[<TAB>result text]\n"; an empty result text is left out. What a listing
    // line cannot carry is refused before anything is written, logged at LEVEL_E and thrown as
    // UQErrno::_E_::Parameter naming the path: an empty path or one that begins or ends with a space, a
    // control character or an unpaired surrogate in the path or the result text ("The path 'C:\a\u0009b'
    // cannot be written to a listing: control character U+0009 at unit 5"), a warning or failure without a
    // result text.
    static std::string mf_formatLine(const CString& _sPath, std::uint32_t _uVersion, STATUS _eStatus,
                                     const CString& _sResult);
};

// ---------------------------------------------------------------------------------------------------------
// History search: the stored versions of migrated files, as the backend answers a query

class UQQueryData;

// When a stored version expires. The first word is 0 when the version has no expiry set.
struct UQExpiryTime {
    std::uint64_t uFileTime; // a file time (100 ns since 1601-01-01), 0 for none

    int mf_isSet() const noexcept { return uFileTime != 0; }
};

// The number that asks for the latest stored version of a file rather than a given one.
class UQQueryPatternVersion {
public:
    static constexpr unsigned long LATEST = 0xFFFFFFFFul;
};

// Anything that shows a stored file through one query result, so that the archiver can order it.
class KORARCHIVER_API UVQueryItem {
public:
    virtual const UQQueryData& mf_getQueryData() const = 0;
    virtual ~UVQueryItem();
};

// One stored version of one file as the backend knows it. Copies share the path texts.
class KORARCHIVER_API UQQueryData {
public:
    enum : std::uint32_t {
        FLAG_SECURITY = 0x01,         // the version carries the file's security data
        FLAG_AD_STREAMS = 0x02,       // the version carries alternate data streams
        FLAG_EVENT_BASED = 0x04,      // retention runs from an event, not from the time of storing
        FLAG_PROTECTED = 0x08,        // protected against deletion
        FLAG_DELETION_STARTED = 0x10, // the event that ends an event-based retention has come
        FLAG_ALL = 0x1F
    };

    // Where the backend reads the version: the storage volume and the position on it. The backend reads
    // fastest volume by volume, each volume from front to back (see mf_sortByAccessOrder).
    struct AccessKey {
        std::uint32_t uVolume;
        std::uint64_t uPosition;
    };

    // An empty file path, or one equal to the object path, shares the object path's text.
    UQQueryData(const CString& _sObjectPath, const CString& _sFilePath, std::uint32_t _uVersion,
                const UQFileTime& _lastWriteTime, const UQFileSize& _size, std::uint32_t _uFlags,
                const UQExpiryTime& _expiry, const AccessKey& _access);
    UQQueryData(const UQQueryData& _other);
    UQQueryData& operator=(const UQQueryData& _other);
    virtual ~UQQueryData();

    // Records live in memory from UQAllocation, so that tests can make cloning fail.
    static void* operator new(std::size_t _nBytes);
    static void* operator new(std::size_t, void* _pPlace) noexcept { return _pPlace; }
    static void operator delete(void* _p) noexcept;
    static void operator delete(void*, void*) noexcept {}

    // A new heap copy; no memory throws _E_::Memory.
    virtual UQQueryData* mf_clone() const;
    virtual std::uint32_t mf_getVersion() const;
    virtual const UQFileTime& mf_getLastWriteTime() const;
    virtual const UQFileSize& mf_getSize() const;
    virtual int mf_hasSecurity() const;
    virtual int mf_hasADStreams() const;
    virtual int mf_isEventBased() const;
    virtual int mf_isProtected() const;
    virtual int mf_isDeletionStarted() const;
    virtual UQExpiryTime mf_getExpiryTime() const;
    // "Object='<path>', file='<path>', version=3, size=1024, last-write-time=2024-03-07 14:05:09,
    // flags=SP, expiry=none, access=17:4096" for logs.
    virtual CString mf_toString() const;

    // The name under which the backend keeps the object; versions of one file share it.
    const UQPath& mf_getObjectPath() const noexcept { return m_objectPath; }
    // The file's path on the client.
    const UQPath& mf_getPath() const noexcept { return m_filePath; }
    // The file path as the user reads it: UNC form, without the "\\?\" prefix.
    CString mf_getPathDisplayString() const;
    std::uint32_t mf_getFlags() const noexcept { return m_uFlags; }
    const AccessKey& mf_getAccessKey() const noexcept { return m_access; }

    // By object path (UQPath::mf_compare) in the first direction, then by version number in the second
    // (non-zero: ascending). Stable: records equal in both keep their order. Null entries go to the end.
    // Needs a buffer of half the array's size; no memory throws _E_::Memory and leaves the array as it was.
    static void mf_sortByPathAndVersion(int _bPathAscending, int _bVersionAscending,
                                        UQArray<UQQueryData*, UQQueryData*>& _rData);
    // The same over items, each by the record it shows. An item that cannot show one throws its error
    // before anything is moved.
    static void mf_sortByPathAndVersion(int _bPathAscending, int _bVersionAscending, UVQueryItem** _ppItems,
                                        INT_PTR _nCount);
    // The backend's access order: volume ascending, then position on the volume ascending, then object path
    // and version ascending. Stable; fails as the sort above does.
    static void mf_sortByAccessOrder(UVQueryItem** _ppItems, INT_PTR _nCount);

private:
    UQPath m_objectPath;
    UQPath m_filePath;
    std::uint32_t m_uVersion;
    std::uint32_t m_uFlags;
    UQFileTime m_lastWriteTime;
    UQFileSize m_size;
    UQExpiryTime m_expiry;
    AccessKey m_access;
};

// Takes the records of a search, one call per matching stored version, on the searching thread. A
// UQErrno thrown here ends the search with that error.
class KORARCHIVER_API UVQueryDataSink {
public:
    virtual ~UVQueryDataSink();
    virtual void mf_onQueryData(const UQQueryData& _queryData) = 0;
};

// Matches a text against a pattern of '*' (any run of characters, also none) and '?' (exactly one),
// case-blind by upper-casing both, with one back-tracking point: the matching of the library's wildcards.
class KORARCHIVER_API UQPathPattern {
public:
    // An empty pattern throws _E_::Parameter.
    explicit UQPathPattern(const CString& _sPattern);
    int mf_matches(const CString& _sText) const;
    // Upper case.
    const CString& mf_getPattern() const noexcept { return m_sPattern; }

private:
    CString m_sPattern;
};

// What a history search asks for.
struct UQHistoryQuery {
    CString sPattern;    // over the file path (UQPathPattern); empty: every path
    UQFileTime fromTime; // last write time at or after this; 0: no lower bound
    UQFileTime toTime;   // last write time at or before this; 0: no upper bound
};

// The history of stored object versions, kept in a text file (docs/history-store-format.md). The store
// is read afresh by every search, so that searches see what was added since.
class KORARCHIVER_API UQHistoryStore {
public:
    struct Result {
        std::uint32_t uRecords = 0;  // good records read
        std::uint32_t uMatches = 0;  // records handed to the sink
        std::vector<UQErrno> errors; // one _E_::Format per malformed record ("file:line: ..."), in file order
    };

    explicit UQHistoryStore(const CString& _sFile);
    const CString& mf_getFile() const noexcept { return m_sFile; }

    // Reads the store and hands each matching record to the sink, in file order, on the calling thread.
    // Malformed records are logged and skipped. A store that cannot be read throws _E_::File; a tripped
    // cancel switch ends the search with _W_::UserCanceled; a UQErrno of the sink ends it with that error.
    // _pProgress, if given, hears how far the reading has come, with the file's size.
    Result mf_search(const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                     const UQCancelSwitch* _pCancel = nullptr, UVReadProgress* _pProgress = nullptr) const;
    // The same over store text in memory; _sName stands for the file in errors.
    static Result mf_searchText(const std::string& _utf8Text, const CString& _sName,
                                const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                                const UQCancelSwitch* _pCancel = nullptr,
                                UVReadProgress* _pProgress = nullptr);
    // One record as a store line, without the line end. A path that a line cannot carry (a control
    // character, an unpaired surrogate) is logged and thrown as _E_::Parameter, naming the path.
    static std::string mf_formatRecord(const UQQueryData& _data);

private:
    CString m_sFile;
};

// A history search on a thread of its own: it starts on construction and hands the records to the sink
// on that thread. Nothing the search throws leaves the thread; mf_wait hands it to the caller.
class KORARCHIVER_API UQHistorySearch {
public:
    // _pProgress, if given, hears how far the reading has come, on the search's thread.
    UQHistorySearch(const UQHistoryStore& _store, const UQHistoryQuery& _query, UVQueryDataSink& _rSink,
                    UVReadProgress* _pProgress = nullptr);
    UQHistorySearch(const UQHistorySearch&) = delete;
    UQHistorySearch& operator=(const UQHistorySearch&) = delete;
    // Cancels a search still running and waits for it.
    ~UQHistorySearch();

    // Asks the search to stop after the record at hand; it then ends with _W_::UserCanceled.
    void mf_cancel() noexcept;
    // Waits for the end of the search and returns its result, or throws the UQErrno it ended with. Only
    // the first call waits; later calls answer the same.
    UQHistoryStore::Result mf_wait();

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
};

// Makes large, realistic histories: _uFiles files of 1 to 5 versions (3 on average), paths of 60 to 130
// characters on a few file servers, some versions protected, expiring, deleted, with security data or
// alternate data streams. The records come in storage order, not in path order. The same starting value gives
// the same history.
class KORARCHIVER_API UQHistoryGenerator {
public:
    explicit UQHistoryGenerator(std::uint32_t _uFiles, std::uint64_t _uSeed = 1);

    // Five slots per file, visited in a scattered order; a slot beyond its file's version count is empty.
    std::uint64_t mf_getSlotCount() const noexcept { return static_cast<std::uint64_t>(m_uFiles) * 5u; }
    // The records in the slots [_uFirstSlot, _uEndSlot).
    std::uint64_t mf_countRecords(std::uint64_t _uFirstSlot, std::uint64_t _uEndSlot) const noexcept;
    // Hands the records of those slots to the sink in slot order; returns how many. Different threads may
    // generate different ranges at the same time.
    std::uint64_t mf_generate(std::uint64_t _uFirstSlot, std::uint64_t _uEndSlot,
                              UVQueryDataSink& _rSink) const;
    // Writes every record as a store file with a header comment; a file that cannot be written throws
    // _E_::File.
    void mf_writeStore(const CString& _sFile) const;

private:
    std::uint64_t mf_implFileOfSlot(std::uint64_t _uSlot, std::uint32_t& _rVersionIndex) const noexcept;

    std::uint32_t m_uFiles;
    std::uint64_t m_uSeed;
    std::uint64_t m_uStep;
};

// ---------------------------------------------------------------------------------------------------------
// Backends

// The kind of storage server the client works with. Each backend keeps the GUI's per-user values under a
// registry sub key of its own, named by its prefix; NONE stands for no particular backend.
class KORARCHIVER_API UQBackend {
public:
    static const UQBackend NONE;
    static const UQBackend VRS;

    UQBackend(const UQBackend&) noexcept = default;
    UQBackend& operator=(const UQBackend&) noexcept = default;
    ~UQBackend() = default;

    int mf_getValue() const noexcept { return m_nValue; }
    // The backend's registry sub key: empty for NONE, "VRS" for the VRS server.
    static CString mf_getPrefix(const UQBackend& _backend);

    friend bool operator==(const UQBackend& _a, const UQBackend& _b) noexcept {
        return _a.m_nValue == _b.m_nValue;
    }
    friend bool operator!=(const UQBackend& _a, const UQBackend& _b) noexcept {
        return _a.m_nValue != _b.m_nValue;
    }

private:
    explicit UQBackend(int _nValue) noexcept : m_nValue(_nValue) {}

    int m_nValue;
};

// The options a backup of the backup client runs with: chiefly its option file. Filled by the validation
// with the options the file holds.
class KORARCHIVER_API UQBackupOptions {
public:
    UQBackupOptions();
    UQBackupOptions(const UQBackupOptions&) = default;
    UQBackupOptions& operator=(const UQBackupOptions&) = default;
    virtual ~UQBackupOptions();

    // An empty path stands for the dynamic option file that the backup client writes itself.
    void mf_setOptionsFilePath(const CString& _sPath) { m_sOptionsFilePath = _sPath; }
    const CString& mf_getOptionsFilePath() const noexcept { return m_sOptionsFilePath; }

    // The options read by the last validation: upper-case names and their values, in file order.
    const std::vector<std::pair<CString, CString>>& mf_getOptions() const noexcept { return m_options; }
    void mf_setOptions(std::vector<std::pair<CString, CString>> _options) { m_options = std::move(_options); }

private:
    CString m_sOptionsFilePath;
    std::vector<std::pair<CString, CString>> m_options;
};

// The backup client of a backend (docs/option-file-format.md). Instances are made and deleted through the
// static operations, as the client's library hands them out.
class KORARCHIVER_API UQBackup {
public:
    UQBackup(const UQBackup&) = delete;
    UQBackup& operator=(const UQBackup&) = delete;
    virtual ~UQBackup();

    // A client for the backend; only UQBackend::VRS has one (UQErrno::_E_::Parameter otherwise).
    static UQBackup* mf_createInstance(const UQBackend& _backend);
    // Deletes an instance; null is refused with UQErrno::_E_::Parameter.
    static void mf_deleteInstance(UQBackup* _pInstance);
    // Reads and checks the option file of _options (an empty path is the dynamic file and valid) and
    // answers 1 when it is valid. An invalid file throws UQErrno whose detail names the file and the line:
    // _E_::File when it cannot be read, _E_::Format for what it holds; _rError gets the same data.
    static int mf_validateOptions(UQBackup* _pInstance, UQBackupOptions& _options, UQErrnoData& _rError);

    const UQBackend& mf_getBackend() const noexcept { return m_backend; }

private:
    explicit UQBackup(const UQBackend& _backend);

    UQBackend m_backend;
};

// ---------------------------------------------------------------------------------------------------------
// Management classes: the storage policies of the storage server

// One management class as the server reports it: its name, description, retention attributes
// ("retainVers", "retainInit", "retainMin", "destName" and the others the server keeps) and the user
// comment that the server's administrator wrote for it.
class KORARCHIVER_API UQQueryMgmtClassData {
public:
    // How the server answers the comment query: with a comment of a severity, or not at all.
    enum CommentState { COMMENT_ANSWERED = 0, COMMENT_UNAVAILABLE = 1 };

    UQQueryMgmtClassData(const CString& _sName, const CString& _sDescription,
                         const UQAttributeList& _attributes, const UQSeverity& _commentSeverity,
                         const CString& _sComment, CommentState _eCommentState = COMMENT_ANSWERED);
    UQQueryMgmtClassData(const UQQueryMgmtClassData& _other) = default;
    UQQueryMgmtClassData& operator=(const UQQueryMgmtClassData& _other) = default;
    virtual ~UQQueryMgmtClassData();

    const CString& mf_getName() const noexcept { return m_sName; }
    const CString& mf_getDescription() const noexcept { return m_sDescription; }
    UQAttributeList& mf_getAttributes() noexcept { return m_attributes; }
    const UQAttributeList& mf_getAttributes() const noexcept { return m_attributes; }
    // The user comment into _rsComment and its severity. _bForUser 1 asks for the text a user reads (the
    // only form the server keeps here). A class whose server does not answer the query throws
    // _E_::Resource, logged as "Failure querying comment of management class '%s'".
    virtual UQSeverity mf_queryUserComment(CString& _rsComment, int _bForUser) const;
    // A class of another name with the same policy (the server's default class is reported as DEFAULT).
    void mf_setName(const CString& _sName) { m_sName = _sName; }

private:
    CString m_sName;
    CString m_sDescription;
    UQAttributeList m_attributes;
    UQSeverity m_commentSeverity;
    CString m_sComment;
    CommentState m_eCommentState;
};

// Reads the storage server's management classes from a class file (docs/mgmt-class-format.md).
class KORARCHIVER_API UQMgmtClassFile {
public:
    struct Result {
        std::vector<UQQueryMgmtClassData> classes; // in file order
        CString sDefaultClass;                     // the class the "@default" line names; empty without one
        std::vector<UQErrno> errors; // one _E_::Format per malformed line ("file:line: ..."), in file order
    };

    // A file that cannot be opened or read throws _E_::File naming it ("Failure opening management class
    // file '<file>'").
    static Result mf_read(const CString& _sFile);
    // The same over text in memory; _sName stands for the file in errors.
    static Result mf_readText(const std::string& _utf8Text, const CString& _sName);
    // The sample built into korarchiver (kor/archiver/sample/mgmtclasses.txt).
    static const char* mf_getSampleText() noexcept;
    static const wchar_t* const SAMPLE_NAME;
};

// The archiver's services on a storage server.
class KORARCHIVER_API UQArchiverMain {
public:
    // Appends a new copy of every class of the server, in the class file's order; the caller owns them.
    // The server is the class file chosen by mf_getMgmtClassFile. A file that cannot be read throws
    // _E_::File; malformed lines are logged at LEVEL_W ("Management class line skipped: <file>:<line>:
    // ...") and skipped. _host and _sOptions are kept for the server's interface; the class file stands
    // for any host.
    static void mf_getMgmtClasses(UQArray<UQQueryMgmtClassData*, UQQueryMgmtClassData*>& _rList,
                                  const UQHost& _host, const CString& _sOptions);
    // A new copy of the class of that exact name; "DEFAULT" answers the server's default class under the
    // name DEFAULT. An unknown name, or DEFAULT on a server without a default class, throws
    // _E_::ItemNotFound.
    static UQQueryMgmtClassData* mf_getMgmtClass(const CString& _sName, const UQHost& _host,
                                                 const CString& _sOptions);

    // The class file: the file set here, else the KOR_MGMT_CLASS_FILE environment variable when set, else
    // the sample built into korarchiver (an empty answer). An empty path goes back to that choice.
    static void mf_setMgmtClassFile(const CString& _sFile);
    static CString mf_getMgmtClassFile();
};
