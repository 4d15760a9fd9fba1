// What korguibase calls of korbase, the product family's base library: errors, the log, the message
// catalogue, paths, number and date formatting, file times and sizes, cancel switches and cancel objects,
// threads and timer threads, events and their listeners, linked lists.
#pragma once

#include "compat/afxtempl.h"
#include "compat/win32.h"
#include "interfaces/korguibase_api.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#if defined(_WIN32)
#if defined(KORBASE_BUILD)
#define KORBASE_API __declspec(dllexport)
#else
#define KORBASE_API __declspec(dllimport)
#endif
#else
#define KORBASE_API __attribute__((visibility("default")))
#endif

// ---------------------------------------------------------------------------------------------------------
// Severity

class KORBASE_API UVSeverity {
public:
    enum Value { GREEN = 0, YELLOW = 1, RED = 2 };

    UVSeverity() noexcept : m_nValue(GREEN) {}
    explicit UVSeverity(int _nValue) noexcept : m_nValue(_nValue) {}
    UVSeverity(const UVSeverity&) noexcept = default;
    UVSeverity& operator=(const UVSeverity&) noexcept = default;
    virtual ~UVSeverity();

    // The three tests, in this order in the table of virtual operations.
    virtual int mf_isGreen() const noexcept { return m_nValue == GREEN; }
    virtual int mf_isYellow() const noexcept { return m_nValue == YELLOW; }
    virtual int mf_isRed() const noexcept { return m_nValue == RED; }
    int mf_getValue() const noexcept { return m_nValue; }
    // "Information", "Warning" or "Error"; any other value is named by its number.
    static CString mf_toString(const UVSeverity& _severity);

protected:
    int m_nValue;
};

class KORBASE_API UQSeverity : public UVSeverity {
public:
    UQSeverity() noexcept = default;
    UQSeverity(const UVSeverity& _severity) noexcept : UVSeverity(_severity) {}
    explicit UQSeverity(int _nValue) noexcept : UVSeverity(_nValue) {}
    UQSeverity(const UQSeverity&) noexcept = default;
    UQSeverity& operator=(const UQSeverity&) noexcept = default;
    UQSeverity& operator=(const UVSeverity& _severity) noexcept {
        m_nValue = _severity.mf_getValue();
        return *this;
    }
    ~UQSeverity() override;
    void mf_setValue(int _nValue) noexcept { m_nValue = _nValue; }

    static const UQSeverity Info;
    static const UQSeverity Warning;
    static const UQSeverity Error;
};

// ---------------------------------------------------------------------------------------------------------
// Errors

// An error category: a constant of korbase, compared by identity.
class KORBASE_API UQErrnoValue {
public:
    constexpr UQErrnoValue(wchar_t _cSeverity, const wchar_t* _pszName, unsigned _uMessage) noexcept
        : m_cSeverity(_cSeverity), m_pszName(_pszName), m_uMessage(_uMessage) {}
    UQErrnoValue(const UQErrnoValue&) = delete;
    UQErrnoValue& operator=(const UQErrnoValue&) = delete;

    wchar_t mf_getSeverityLetter() const noexcept { return m_cSeverity; }
    // "_E_::Parameter" and the like.
    const wchar_t* mf_getName() const noexcept { return m_pszName; }
    // Catalogue number of the category's message text.
    unsigned mf_getMessageNumber() const noexcept { return m_uMessage; }
    UQSeverity mf_getSeverity() const noexcept;

private:
    wchar_t m_cSeverity;
    const wchar_t* m_pszName;
    unsigned m_uMessage;
};

class KORBASE_API UQErrnoData {
public:
    UQErrnoData() noexcept : m_pValue(nullptr) {}
    UQErrnoData(const UQErrnoValue& _value) noexcept : m_pValue(&_value) {}
    UQErrnoData(const UQErrnoData&) noexcept = default;
    UQErrnoData& operator=(const UQErrnoData&) noexcept = default;
    ~UQErrnoData() = default;

    int mf_isError() const noexcept { return m_pValue != nullptr; }
    explicit operator bool() const noexcept { return m_pValue != nullptr; }
    const UQErrnoValue* mf_getValue() const noexcept { return m_pValue; }
    int mf_is(const UQErrnoValue& _value) const noexcept { return m_pValue == &_value; }

private:
    const UQErrnoValue* m_pValue;
};

// The thrown error: by value, caught by reference.
class KORBASE_API UQErrno {
public:
    struct KORBASE_API _E_ {
        static const UQErrnoValue Parameter;
        static const UQErrnoValue ItemNotFound;
        static const UQErrnoValue Initialization;
        static const UQErrnoValue AlreadyInitialized;
        static const UQErrnoValue Range;
        static const UQErrnoValue Memory;
        static const UQErrnoValue Gui;
        static const UQErrnoValue Conversion;
        static const UQErrnoValue Synchronization;
        static const UQErrnoValue Internal;
        static const UQErrnoValue State;
        static const UQErrnoValue DataCorrupted;
        static const UQErrnoValue Resource;
        static const UQErrnoValue System;
        static const UQErrnoValue NotImplemented;
        static const UQErrnoValue BufferTooSmall;
        static const UQErrnoValue File;
        static const UQErrnoValue Format;
        static const UQErrnoValue Registry;
    };
    struct KORBASE_API _W_ {
        static const UQErrnoValue ItemNotFound;
        static const UQErrnoValue UserCanceled;
    };
    struct KORBASE_API _I_ {
        static const UQErrnoValue StubFile;
    };

    UQErrno(const UQErrnoValue& _value);
    UQErrno(const UQErrnoData& _data);
    UQErrno(const UQErrnoData& _data, std::uint32_t _uSystemError);
    // Adds detail (a file and line, a value) to the text; the category stays what it is.
    UQErrno(const UQErrnoData& _data, const CString& _sDetail);
    UQErrno(const UQErrno& _other);
    UQErrno& operator=(const UQErrno& _other);
    virtual ~UQErrno();

    const UQErrnoData& mf_getData() const noexcept { return m_data; }
    std::uint32_t mf_getSystemError() const noexcept { return m_uSystemError; }
    const CString& mf_getDetail() const noexcept { return m_sDetail; }

    // One line for the log: "[E] _E_::Range: <message>[ (<detail>)][ (system error N: <system message>)]".
    CString mf_toString() const;
    // The category's message text alone.
    CString mf_getString() const;
    // The text shown to the user: the prefix, the message and, on a new line, the detail.
    static CString mf_toGuiMessage(const UQErrnoData& _data, const CString& _sPrefix);
    // The system's message for a Win32 error number, without trailing line breaks.
    static CString mf_getSystemMessage(std::uint32_t _uSystemError);

private:
    UQErrnoData m_data;
    std::uint32_t m_uSystemError;
    CString m_sDetail;
};

// A thread's stop result.
class KORBASE_API UQErrnoNumber {
public:
    constexpr UQErrnoNumber(std::uint32_t _uNumber = 0) noexcept : m_uNumber(_uNumber) {}
    constexpr std::uint32_t mf_getNumber() const noexcept { return m_uNumber; }

private:
    std::uint32_t m_uNumber;
};

// ---------------------------------------------------------------------------------------------------------
// Log

class KORBASE_API UQLogData {
public:
    constexpr UQLogData(wchar_t _cLetter, int _nLevel) noexcept : m_cLetter(_cLetter), m_nLevel(_nLevel) {}
    UQLogData(const UQLogData&) = delete;
    UQLogData& operator=(const UQLogData&) = delete;

    wchar_t mf_getLetter() const noexcept { return m_cLetter; }
    int mf_getLevel() const noexcept { return m_nLevel; }

    static const UQLogData LEVEL_E;
    static const UQLogData LEVEL_W;
    static const UQLogData LEVEL_I;
    static const UQLogData LEVEL_D;
    static const UQLogData LEVEL_T;
    static const UQLogData LEVEL_G;

private:
    wchar_t m_cLetter;
    int m_nLevel;
};

struct UQLogRecord {
    const UQLogData* pLevel;
    const wchar_t* pszFunction;
    CString sText;
    DWORD dwThreadId;
    FILETIME ftTime;
    // Whether UQThreadContext::mf_setLoggingLanguage ran on this thread since its previous record.
    int bLanguageSelected;
};

// Where records go. Sinks must not throw.
class KORBASE_API UVLogSink {
public:
    virtual ~UVLogSink();
    virtual void mf_write(const UQLogRecord& _record) noexcept = 0;
};

class UQThreads;

class KORBASE_API UQThreadContext {
public:
    // The kind of a thread that UQThreads runs; TYPE_NONE for every other thread.
    enum TYPE { TYPE_NONE = 0, TYPE_WORKER = 1, TYPE_TIMER = 2 };
    // Selects the calling thread's logging language for the records that follow.
    static void mf_setLoggingLanguage() noexcept;
    // Reads and clears the mark that mf_setLoggingLanguage left on this thread.
    static int mf_takeLoggingLanguageMark() noexcept;
    // The name, type and object of the UQThreads whose thread calls this; an empty name, TYPE_NONE and
    // null on any other thread (the main thread, threads the caller made itself).
    static CString mf_getThreadName();
    static TYPE mf_getThreadType() noexcept;
    static UQThreads* mf_getCurrentThreads() noexcept;
};

class KORBASE_API UQLog {
public:
    // Four blanks: the indent of a continuation line.
    static const wchar_t* const TAB;

    template <class... A>
    static void mf_writeMessage(const UQLogData& _level, const wchar_t* _pszFunction,
                                const wchar_t* _pszFormat, const A&... _args) noexcept {
        try {
            mf_writeText(_level, _pszFunction, CString(uqfmt::format(_pszFormat, _args...)));
        } catch (...) {
            mf_writeText(_level, _pszFunction, CString());
        }
    }
    static void mf_writeText(const UQLogData& _level, const wchar_t* _pszFunction,
                             const CString& _sText) noexcept;

    // Installs a sink and returns the one it replaces; null restores the product log file.
    static UVLogSink* mf_setSink(UVLogSink* _pSink) noexcept;
};

// The product log: one UTF-8 text file, a line per record, rotated by size. The file and its directories
// are created by the first record; records from several threads never mix. When the file cannot be
// written the record is lost and the next one tries again: writing never throws.
class KORBASE_API UQLogFileSink : public UVLogSink {
public:
    // An empty path means mf_getDefaultPath(). A record that would take the file beyond _uMaxBytes (0: no
    // limit) first moves it to path.1 (path.1 to path.2 and so on; path._nKeepFiles is dropped); with
    // _nKeepFiles 0 the file starts afresh instead. A record larger than the limit gets a file of its own.
    explicit UQLogFileSink(const CString& _sPath = CString(), std::uint64_t _uMaxBytes = 4u << 20,
                           int _nKeepFiles = 3);
    UQLogFileSink(const UQLogFileSink&) = delete;
    UQLogFileSink& operator=(const UQLogFileSink&) = delete;
    ~UQLogFileSink() override;

    void mf_write(const UQLogRecord& _record) noexcept override;
    const CString& mf_getPath() const noexcept { return m_sPath; }
    // KOR_LOG_FILE if set; else %LOCALAPPDATA%\Corvex\Stormex\Logs\korguibase.log on Windows and
    // $XDG_STATE_HOME (or ~/.local/state)/korguibase/korguibase.log elsewhere.
    static CString mf_getDefaultPath();
    // "2024-03-07 14:05:09.250 E 1234 UQFileTime::operator_add: text" (UTC, the level letter, the thread
    // id, the operation or "-"), then each further line of the text (split at CR LF, LF or CR; trailing
    // breaks dropped) indented by 24 blanks, so that only a record's first line starts with a digit. Other
    // control characters but TAB become U+FFFD. Lines end in CR LF on Windows and LF elsewhere.
    static std::string mf_formatLine(const UQLogRecord& _record);

private:
    struct Impl;
    std::unique_ptr<Impl> m_pImpl;
    CString m_sPath;
};

// ---------------------------------------------------------------------------------------------------------
// Message catalogue

class KORBASE_API UQString {
public:
    // Throws UQErrno::_E_::ItemNotFound for a number the catalogue does not hold.
    explicit UQString(unsigned _uNumber);
    operator CString() const { return m_sText; }
    operator const wchar_t*() const noexcept { return m_sText; }
    const CString& mf_getText() const noexcept { return m_sText; }
    static int mf_exists(unsigned _uNumber) noexcept;

private:
    CString m_sText;
};

#if defined(_WIN32)
// The language modules: resource-only DLLs (korlang_<ISO 639 name>.dll beside korbase.dll) that hold the
// dialog templates, icons and string table of one language; the string table holds the same texts as the
// message catalogue. A module is loaded once, as an image resource, and stays loaded.
class KORBASE_API UQLanguage {
public:
    // The language number that stands for the current language, whatever it is.
    static const unsigned long CURRENT = 0x10000;

    // The module of the user's interface language (GetUserDefaultUILanguage), or of the language that the
    // environment variable KOR_LANGUAGE names by its ISO 639 name ("de", "en") when it is set.
    static HMODULE mf_getUserLanguageHandle() noexcept;
    // The module of a language (a LANGID, or CURRENT: the user's language as above). A language without a
    // module of its own gets the English one. Null, after a LEVEL_E record "Failure loading language module
    // '%s':\r\n%s%s", when the module cannot be loaded; the next call tries again.
    static HMODULE mf_getLanguageHandle(unsigned long _uLanguage) noexcept;
};
#endif

// ---------------------------------------------------------------------------------------------------------
// File sizes and file times

class KORBASE_API UQFileSize {
public:
    constexpr UQFileSize(std::int64_t _nBytes = 0) noexcept : m_nBytes(_nBytes) {}
    constexpr std::int64_t mf_getValue() const noexcept { return m_nBytes; }
    // The size as a signed decimal ("%I64d").
    CString mf_toString() const;
    // Below 1024 "N Bytes" ("1 Byte"); above, KB, MB, GB or TB (1024-based) with one decimal rounded half
    // up, e.g. "1.5 MB"; a value that rounds to 1024.0 of a unit is shown in the next one.
    CString mf_toDisplayString() const;
    friend bool operator==(const UQFileSize& _a, const UQFileSize& _b) noexcept {
        return _a.m_nBytes == _b.m_nBytes;
    }

private:
    std::int64_t m_nBytes;
};

// A Win32 FILETIME kept as it is given: no time-zone conversion anywhere.
class UQFileTime {
public:
    static constexpr std::uint64_t TICKS_PER_DAY = 864000000000ull;

    constexpr UQFileTime(std::uint64_t _uTicks = 0) noexcept : m_uTicks(_uTicks) {}
    UQFileTime(const FILETIME& _ft) noexcept
        : m_uTicks((static_cast<std::uint64_t>(_ft.dwHighDateTime) << 32) | _ft.dwLowDateTime) {}

    constexpr std::uint64_t mf_getValue() const noexcept { return m_uTicks; }
    FILETIME mf_getFileTime() const noexcept {
        FILETIME ft;
        ft.dwLowDateTime = static_cast<DWORD>(m_uTicks);
        ft.dwHighDateTime = static_cast<DWORD>(m_uTicks >> 32);
        return ft;
    }
    friend bool operator==(const UQFileTime& _a, const UQFileTime& _b) noexcept {
        return _a.m_uTicks == _b.m_uTicks;
    }
    friend bool operator<(const UQFileTime& _a, const UQFileTime& _b) noexcept {
        return _a.m_uTicks < _b.m_uTicks;
    }

    // Carried by korguibase (foundation).
    KORGUIBASE_API CString mf_toString() const;
    KORGUIBASE_API CString mf_toFullString() const;
    KORGUIBASE_API UQFileTime operator+(const UQFileTime& _other) const;

private:
    std::uint64_t m_uTicks;
};

// ---------------------------------------------------------------------------------------------------------
// The array template of the product family

template <class TYPE, class ARG_TYPE = const TYPE&> class UQArray : public CArray<TYPE, ARG_TYPE> {
public:
    // Ascending and case-blind; defined for string arrays only (korguibase, foundation).
    void mf_sortPointerArray();
};

template <> KORGUIBASE_API void UQArray<CString, const CString&>::mf_sortPointerArray();

// ---------------------------------------------------------------------------------------------------------
// Paths: backslash-separated on every platform, as the product's paths are Windows paths. A forward slash
// is taken as a separator wherever a path is split or compared, as Windows does.

class KORBASE_API UQPath {
public:
    UQPath() = default;
    UQPath(const CString& _sPath) : m_sPath(_sPath) {}
    UQPath(const wchar_t* _pszPath) : m_sPath(_pszPath) {}
    operator const CString&() const noexcept { return m_sPath; }
    const CString& mf_getPath() const noexcept { return m_sPath; }

    // "dir" + "sub" -> "dir\sub\"; the result always ends in one backslash, whatever separators the two
    // sides had at the joint. Either side may be empty; both empty give an empty result.
    static CString mf_appendDirectory(const CString& _sDirectory, const CString& _sSubDirectory);
    // "dir" + "file" -> "dir\file", with exactly one backslash between them; an empty directory gives the
    // file alone.
    static CString mf_appendFile(const CString& _sDirectory, const CString& _sFile);
    // Forward slashes become backslashes, runs of backslashes one (a leading "\\" is kept), one trailing
    // backslash is added. An empty path stays empty.
    static CString mf_normalizeDirectory(const CString& _sDirectory);
    // Whether a file or directory of that name exists; an empty path does not. Outside Windows the
    // backslashes are read as slashes.
    static int mf_exists(const CString& _sPath);
    // Everything up to and including the last backslash or the drive colon ("C:" at the start; a stream
    // colon belongs to the file part); empty when there is none.
    static CString mf_getLocationPart(const CString& _sPath);
    // Everything after the last backslash or drive colon.
    static CString mf_getFilePart(const CString& _sPath);
    // The extension (after the file part's last dot) in upper case followed by " File" ("TXT File"); empty
    // when the file part has none or ends in the dot.
    static CString mf_getFileTypeName(const CString& _sPath);
    // "\\?\UNC\server\share\x" and "\\server\share\x" stay UNC ("\\server\share\x"); "\\?\C:\x" -> "C:\x";
    // other paths come back normalised (slashes turned, runs collapsed, no trailing backslash added).
    static CString mf_getUNCPath(const CString& _sPath);
    // Case-blind, with '\' (and '/', which compares equal to it) ordered before every other character so
    // that a directory's contents sort before its siblings' names that extend it; a prefix sorts first.
    static int mf_compare(const CString& _sA, const CString& _sB) noexcept;
    int mf_compare(const UQPath& _other) const noexcept { return mf_compare(m_sPath, _other.m_sPath); }
    friend bool operator!=(const UQPath& _a, const UQPath& _b) noexcept { return _a.mf_compare(_b) != 0; }
    friend bool operator==(const UQPath& _a, const UQPath& _b) noexcept { return _a.mf_compare(_b) == 0; }

private:
    CString m_sPath;
};

// ---------------------------------------------------------------------------------------------------------
// Registry

// The product's settings: named values under key paths in two hives, HKEY_LOCAL_MACHINE and
// HKEY_CURRENT_USER. Three types: strings (REG_SZ, or REG_EXPAND_SZ whose %NAME% references are expanded
// when read), 32-bit numbers (REG_DWORD) and lists of strings (REG_MULTI_SZ). On Windows this is the
// registry itself; elsewhere one SQLite database with the same hives, key paths, names and types
// (docs/registry.md). Key paths and value names are case-blind; a key path's leading, trailing and doubled
// backslashes do not count. In HKEY_CURRENT_USER an empty key path is the product's per-user key,
// mf_getRegistryRoot(""). Writing creates the key and its parents.
//
// Every operation that touches the store reports a failure as the library does: one LEVEL_E record under
// its own name ("UQRegistry::mf_getValue::1"), then a thrown UQErrno whose detail is the record's text and
// names the hive, the key and the value. A missing key or value, a value of another type, a store that
// cannot be opened or written: UQErrno::_E_::Registry; an unknown hive or a list with an empty entry:
// UQErrno::_E_::Parameter.
class KORBASE_API UQRegistry {
public:
    // "SOFTWARE\Corvex\Stormex\CurrentVersion\HSMClient" followed by a backslash and the sub key
    // ("Migration", "Backup", "Retrieve", "Options"); an empty sub key gives the root itself.
    static CString mf_getRegistryRoot(const CString& _sSubKey);

    // A string value (REG_SZ or REG_EXPAND_SZ).
    static void mf_getValue(const CString& _sName, CString& _rsValue, const CString& _sKey, HKEY _hHive);
    // A number (REG_DWORD), its 32 bits taken as int.
    static void mf_getValue(const CString& _sName, int& _rnValue, const CString& _sKey, HKEY _hHive);
    // A list of strings (REG_MULTI_SZ); the array is emptied first.
    static void mf_getValues(const CString& _sName, UQArray<CString>& _rasValues, const CString& _sKey,
                             HKEY _hHive);
    // Writes a string: REG_SZ when _bExpandable is 0, else REG_EXPAND_SZ.
    static void mf_setValue(const CString& _sName, const CString& _sValue, int _bExpandable,
                            const CString& _sKey, HKEY _hHive);
    static void mf_setValue(const CString& _sName, int _nValue, const CString& _sKey, HKEY _hHive);
    // Writes a list of strings. An empty entry cannot be kept in a REG_MULTI_SZ (it would end the list),
    // so a list holding one is refused with UQErrno::_E_::Parameter and nothing is written.
    static void mf_setValues(const CString& _sName, const UQArray<CString>& _asValues, const CString& _sKey,
                             HKEY _hHive);
    // Reads the number into the in/out argument; when the value does not exist, writes the argument's
    // value (the caller's default) and leaves it. Answers 1 when the value existed, 0 when it was written.
    // A value of another type is an error, not replaced.
    static int mf_getOrSetValue(const CString& _sName, int& _rnValue, const CString& _sKey, HKEY _hHive);
    static int mf_getOrSetValue(const CString& _sName, DWORD& _rdwValue, const CString& _sKey, HKEY _hHive);
    // Whether the value exists (of any type); a missing key answers 0.
    static int mf_exists(const CString& _sName, const CString& _sKey, HKEY _hHive);
    // Whether the key exists; the hive itself always does.
    static int mf_PathExists(const CString& _sKey, HKEY _hHive);

    // The key that an empty key path names in HKEY_CURRENT_USER: the key set here, or
    // mf_getRegistryRoot("") while none is (an empty _sKey goes back to that). The GUI sets the current
    // backend's key (UQWindow::mf_setRegistryRoot), so that per-user values written to the empty path are
    // read back under that key. One for the process.
    static void mf_setUserKey(const CString& _sKey);
    static CString mf_getUserKey();

    // Its failure injection for tests: UQRegistryInjection (interfaces/korbase_testing.h).

private:
    friend class UQRegistryUpdate;
    // UQRegistryUpdate's work, done here where the store's failures are worded.
    static void* mf_implBeginUpdate(const wchar_t* _pszFunction, const CString& _sName, const CString& _sKey,
                                    HKEY _hHive);
    static void mf_implCommitUpdate(const wchar_t* _pszFunction, void* _pLock, const CString& _sName,
                                    const CString& _sKey, HKEY _hHive);

public:
#if !defined(_WIN32)
    // The database file of the store: the file set here, else KOR_REGISTRY_FILE when set, else
    // mf_getDefaultStoreFile(). An empty path goes back to that choice. Takes effect with the next
    // operation; the file and its directories are created by the first one.
    static void mf_setStoreFile(const CString& _sPath);
    static CString mf_getStoreFile();
    // $XDG_CONFIG_HOME (or ~/.config)/korguibase/registry.sqlite.
    static CString mf_getDefaultStoreFile();
#endif
};

// Holds one registry value still while it is read, changed and written back, so that an update of another
// thread or process cannot slip in between and be lost, or make this one lost. The operations of the
// holding thread work as usual inside it; other threads and processes that write the value wait (natively
// the whole store waits: the update is one write transaction). Natively the update's writes last only once
// mf_commit has succeeded, and are rolled back when the object goes without it; on Windows every write
// lands when made and the object holds a named mutex that every write of the value takes too. The
// constructor counts for no injected failure (UQRegistryInjection::mf_injectFailure).
class KORBASE_API UQRegistryUpdate {
public:
    // Waits as long as a write waits for another process (docs/registry.md). A failure is logged under
    // "UQRegistryUpdate::UQRegistryUpdate" and thrown as UQErrno::_E_::Registry.
    UQRegistryUpdate(const CString& _sName, const CString& _sKey, HKEY _hHive);
    ~UQRegistryUpdate();
    UQRegistryUpdate(const UQRegistryUpdate&) = delete;
    UQRegistryUpdate& operator=(const UQRegistryUpdate&) = delete;
    // The update moves with the object; it stays with the thread that began it.
    UQRegistryUpdate(UQRegistryUpdate&& _other) noexcept;
    UQRegistryUpdate& operator=(UQRegistryUpdate&& _other) noexcept;

    // Makes the writes made inside the update last. A failure is logged under "UQRegistryUpdate::mf_commit"
    // and thrown as UQErrno::_E_::Registry; the writes are then rolled back when the object goes.
    void mf_commit();

private:
    void mf_implRelease() noexcept;

    void* m_pLock;
    CString m_sName;
    CString m_sKey;
    HKEY m_hHive;
};

// ---------------------------------------------------------------------------------------------------------
// Hosts and attribute lists

// A machine that services are asked on. A default-constructed host is the local client.
class UQHost {
public:
    UQHost() = default;
    explicit UQHost(const CString& _sName) : m_sName(_sName) {}

    // Empty for the local client.
    const CString& mf_getName() const noexcept { return m_sName; }
    int mf_isLocal() const noexcept { return m_sName.IsEmpty() ? 1 : 0; }

private:
    CString m_sName;
};

// One attribute record: key, then value.
struct KORBASE_API UQAttribute {
    CString m_sKey;
    CString m_sValue;
};

// Attribute records looked up by exact key. The list owns its records. It lives here rather than in
// korguibase because the archiver's management classes hand their attributes out in it.
class KORBASE_API UQAttributeList : public UQArray<UQAttribute*, UQAttribute*> {
public:
    UQAttributeList() = default;
    UQAttributeList(const UQAttributeList& _other);
    UQAttributeList& operator=(const UQAttributeList& _other);
    ~UQAttributeList() override;

    void mf_addAttribute(const CString& _sKey, const CString& _sValue);
    // The first record whose key equals _sKey (case-sensitive); none: _E_::ItemNotFound, logged as
    // "Attribute key='%s' not found".
    CString& mf_getAttributeValue(const CString& _sKey);
    void mf_clear() noexcept;
};

// ---------------------------------------------------------------------------------------------------------
// '*' and '?' matching, shared by the wildcards of the library and the archiver's path patterns

class KORBASE_API UQPatternMatch {
public:
    // '*' stands for any run of characters (also none), '?' for exactly one; single pass with one
    // back-tracking point; no escape. With _bFoldText the text is upper-cased character by character as
    // it is read (the folding of CString::MakeUpper), so the pattern must already be upper case.
    static int mf_matches(const wchar_t* _pszPattern, const wchar_t* _pszText, int _bFoldText) noexcept;
};

// ---------------------------------------------------------------------------------------------------------
// Numbers, dates and times in the configured formats

// The configuration is one for the process; changing it while other threads format is safe.
class KORBASE_API UQNumberFormatter {
public:
    // 1234567 -> "1,234,567" with the configured group separator; no grouping without a separator.
    static CString mf_formatNumber(std::int64_t _nNumber);
    // Takes away the configured group separator and blanks (also no-break spaces): "1,234 567" -> "1234567".
    static CString mf_normalizeNumber(const CString& _sNumber);
    // The date part of the file time (UTC, as kept) in the configured date format. A time that
    // FileTimeToSystemTime refuses gives "FILETIME ERROR" and a LEVEL_E record
    // "Failure converting FILETIME to SYSTEMTIME: %s" with the error's text; nothing is thrown.
    static CString mf_formatDate(const UQFileTime& _time);
    // The time of day, as mf_formatDate does the date.
    static CString mf_formatTime(const UQFileTime& _time);
    // Date-time picker patterns: "yyyy-MM-dd" and "HH:mm:ss" unless configured otherwise.
    static CString mf_getConfiguredDateFormat();
    static CString mf_getConfiguredTimeFormat();
    // Patterns use yyyy, yy, y, MM, M, dd, d, HH, H, hh, h, mm, m, ss, s, tt ("AM"/"PM"), t ("A"/"P");
    // text in single quotes is copied ('' is a quote), as are other characters. The group separator is one
    // character, 0 for none. An empty pattern, or a digit or '-' as separator: _E_::Parameter, logged,
    // and the configuration stays as it was.
    static void mf_configure(const CString& _sDateFormat, const CString& _sTimeFormat,
                             wchar_t _cGroupSeparator);
    // Back to the defaults, or to the KOR_DATE_FORMAT, KOR_TIME_FORMAT and KOR_GROUP_SEPARATOR (one
    // character, or "none") environment variables where they are set; also what the first use reads.
    static void mf_resetConfiguration();
};

// ---------------------------------------------------------------------------------------------------------
// Cancellation

// A shared cancel flag. Copies share the flag, which lives until the last copy goes; all operations are
// safe from any thread.
class KORBASE_API UQCancelSwitch {
public:
    UQCancelSwitch();
    UQCancelSwitch(const UQCancelSwitch& _other) noexcept;
    UQCancelSwitch& operator=(const UQCancelSwitch& _other) noexcept;
    virtual ~UQCancelSwitch();

    // Marks the switch cancelled and wakes every waiter; answers 1 if this call cancelled it.
    virtual int mf_implTryCancel() noexcept;
    // The same, giving the reason (the progress dialogs pass UQErrno::_W_::UserCanceled): kept when this
    // call is the one that cancels, through the virtual mf_implTryCancel().
    int mf_implTryCancel(const UQErrnoData& _reason) noexcept;
    // The reason given by the cancel that tripped the switch; none when it is not cancelled or was
    // cancelled without one.
    UQErrnoData mf_getCancelReason() const noexcept;
    int mf_isCancelled() const noexcept;
    // Waits until cancelled or the time-out (ms, or INFINITE) passes; answers 1 when cancelled.
    int mf_waitCancelled(DWORD _dwMilliseconds) const noexcept;
    // Clears the flag (and the reason) for every copy, so that the switch can be tripped again.
    void mf_reset() noexcept;

private:
    struct Shared;
    Shared* m_pShared;
};

// Base interface of everything that can be cancelled through a UQCancelSwitch.
class UVCancelObject {
public:
    virtual ~UVCancelObject() = default;
    virtual void mf_installCancelSwitch(UQCancelSwitch* _pSwitch) = 0;
    virtual UQCancelSwitch* mf_getCancelSwitch() const noexcept = 0;
    // Trips the installed switch; nothing happens without one.
    virtual void mf_cancel() noexcept = 0;
};

// Base of cancellable workers (UQThreads, UQTimerThread and the GUI's timer and wizard derive from it):
// holds the installed cancel switch, which it does not own. The pointer is exchanged atomically, because a
// worker thread may read it while the GUI thread installs or propagates it.
class KORBASE_API UQCancelObject : public UVCancelObject {
public:
    UQCancelObject() noexcept;
    // A copy shares the source's switch.
    UQCancelObject(const UQCancelObject& _other) noexcept;
    UQCancelObject& operator=(const UQCancelObject& _other) noexcept;
    ~UQCancelObject() override;

    // Null: "Resetting cancel switch to NULL is not allowed", _E_::Parameter; a switch already installed:
    // "Cancel switch is already set", _E_::AlreadyInitialized (LEVEL_E under
    // "UQCancelObject::mf_installCancelSwitch").
    void mf_installCancelSwitch(UQCancelSwitch* _pSwitch) override;
    UQCancelSwitch* mf_getCancelSwitch() const noexcept override;
    // Calls mf_implTryCancel of the installed switch; nothing without one.
    void mf_cancel() noexcept override;
    // Gives _rTarget this object's switch. No switch here: "No cancel switch to propagate",
    // _E_::Initialization; the target has one and _bOverwrite is 0: "Target cancle switch is already
    // initialized", _E_::AlreadyInitialized (LEVEL_E under "UQCancelObject::mf_implPropagateCancelSwitch").
    virtual void mf_implPropagateCancelSwitch(UQCancelObject& _rTarget, int _bOverwrite);

private:
    std::atomic<UQCancelSwitch*> m_pCancelSwitch;
};

// ---------------------------------------------------------------------------------------------------------
// Threads (docs/korbase.md, "Threads")

// A named thread that calls its body, mf_implExecute, on a std::thread. One thread per object at a time;
// after it has ended the object can be started again. The thread selects its logging language before
// every record it writes, carries its name (UQThreadContext::mf_getThreadName, and the system's thread
// name where the system has one) and lets no exception out: a UQErrno thrown by a step is logged under
// "UQThreads::mf_implRun" with the thread's name and ends the thread; any other exception too.
//
// On the thread: mf_implExecuteOnStart(0); then, while shutdown is not marked, mf_implExecute(0), again
// after each return when the object repeats (the constructor's flag), once when it does not; then
// mf_implExecuteOnStop(0), also after a failure. The int argument is the index of the object's thread,
// always 0 here; mf_isShutdown takes it back.
//
// A derived class must end the thread in its own destructor (mf_stopWait), as its steps are virtual;
// the base's destructor marks shutdown and waits for a thread still running, after logging that it had to.
// A body may destroy its own object (destroyed on its thread, the thread is detached); the thread then
// calls none of the object's steps any more, mf_implExecuteOnStop neither.
class KORBASE_API UQThreads : public UQCancelObject {
public:
    // _bRepeat non-zero: the body is called again after each return until shutdown; 0: once.
    UQThreads(const CString& _sName, UQThreadContext::TYPE _type, int _bRepeat);
    // Copies name, type, flag and the cancel switch, not a running thread: the copy is not started.
    UQThreads(const UQThreads& _other);
    ~UQThreads() override;

    // Steps run on the thread; the base's do nothing.
    virtual void mf_implExecuteOnStart(int _nThread);
    virtual void mf_implExecuteOnStop(int _nThread);
    virtual void mf_implExecute(int _nThread) = 0;

    // Clears shutdown and starts the thread; does not wait for it. A thread of this object that is still
    // running: "Thread '%s' is already running", _E_::AlreadyInitialized; the system refusing a thread:
    // "Failure creating thread '%s': %s", _E_::System (LEVEL_E under "UQThreads::mf_start").
    virtual void mf_start();
    // Returns once the started thread has run mf_implExecuteOnStart (or has already ended). Never
    // started: "Thread '%s' has not been started", _E_::Initialization (under "UQThreads::mf_startWait").
    virtual void mf_startWait();
    // Marks shutdown and wakes a wait of mf_implWait; returns at once. Safe from any thread, the object's
    // own included; a body that does not return by itself must look at mf_isShutdown or its cancel switch.
    virtual void mf_stop();
    // mf_stop, then waits up to _ulTimeoutMs (INFINITE: no limit) for the thread to end. 0 when it has
    // ended (or none was started), WAIT_TIMEOUT (258) when it still runs at the limit (wait again later).
    // Called on the object's own thread it cannot wait: ERROR_POSSIBLE_DEADLOCK (1131), logged at LEVEL_E
    // "Thread '%s' cannot wait for itself" under "UQThreads::mf_stopWait" (or "UQThreads::mf_wait").
    virtual UQErrnoNumber mf_stopWait(unsigned long _ulTimeoutMs);
    // Waits as mf_stopWait does, with the same results, without marking shutdown: for a thread that ends
    // by itself (a body that does not repeat, a timer's last run).
    UQErrnoNumber mf_wait(unsigned long _ulTimeoutMs);

    // Whether shutdown is marked (mf_stop, mf_stopWait, the end of a timer's runs).
    int mf_isShutdown(int _nThread = 0) const noexcept;
    // Started and not yet ended.
    int mf_isRunning() const noexcept;
    // Whether the installed cancel switch has been tripped; 0 without one.
    int mf_isCancelled() const noexcept;
    const CString& mf_getName() const noexcept;
    UQThreadContext::TYPE mf_getType() const noexcept;
    int mf_isRepeating() const noexcept;
    // The system thread id of the running or last thread; 0 before the first start.
    DWORD mf_getThreadId() const noexcept;
    // The category of the UQErrno that ended the last run; none after a normal end (and before a start).
    UQErrnoData mf_getExitError() const noexcept;

protected:
    // For bodies that wait: returns after _ulMs (INFINITE: no limit) with 0, or earlier with 1 when
    // shutdown is marked or mf_implWakeUp was called (the wake-up is used up by this). Never throws.
    int mf_implWait(unsigned long _ulMs) noexcept;
    void mf_implWakeUp() noexcept;

private:
    UQThreads& operator=(const UQThreads&) = delete;
    struct State;
    static void mf_implRun(UQThreads* _pThis, std::shared_ptr<State> _state) noexcept;
    UQErrnoNumber mf_implWaitEnd(unsigned long _ulTimeoutMs, const wchar_t* _pszFunction);
    std::shared_ptr<State> m_state;
};

// A timer thread: started for a number of runs at an interval, it calls mf_implExecuteTimer once per run
// and counts the runs. Each call of its body mf_implExecute is one run: wait for the run's time, then
// mf_implExecuteTimer. After the last run it marks shutdown, so its thread ends by itself.
//
// Run k (from 0) is due _ulFirstDelayMs + k * _ulIntervalMs after mf_start; a run that comes late moves
// the following ones (no catching up in bursts). 0 runs: the timer runs until mf_stop and never reaches a
// last run (UQGuiTimer never expires). mf_wakeUp makes the waiting run happen at once.
class KORBASE_API UQTimerThread : public UQThreads {
public:
    // _type is TYPE_TIMER for every timer of the library; the interval is what mf_start() without
    // arguments uses.
    explicit UQTimerThread(const CString& _sName, UQThreadContext::TYPE _type = UQThreadContext::TYPE_TIMER,
                           unsigned long _ulIntervalMs = 1000);
    UQTimerThread(const CString& _sName, unsigned long _ulIntervalMs);
    UQTimerThread(const UQTimerThread& _other);
    ~UQTimerThread() override;

    // One run: waits for the run's time, then mf_implExecuteTimer, then counts it.
    void mf_implExecute(int _nThread) override;
    // The interval given at construction, 0 runs (until stopped), the first run after one interval.
    void mf_start() override;
    void mf_stop() override;
    // The work of one run; the base does nothing. Runs on the timer thread.
    virtual void mf_implExecuteTimer();
    // Starts the thread for _nRuns runs (0: until stopped) every _ulIntervalMs, the first one
    // _ulFirstDelayMs after the start. A negative count: "Invalid number of runs %d", _E_::Parameter; a
    // timer still running: as UQThreads::mf_start (both logged under "UQTimerThread::mf_start").
    virtual void mf_start(unsigned long _ulIntervalMs, int _nRuns, unsigned long _ulFirstDelayMs);
    // The run being waited for happens now; the next one is due an interval later.
    virtual void mf_wakeUp();

    // The number of runs the timer was started for (0: until stopped) and the runs made since; a run is
    // counted when its mf_implExecuteTimer has returned, so inside it mf_getRuns() - mf_getRunsMade() is 1
    // for the last run.
    int mf_getRuns() const noexcept;
    int mf_getRunsMade() const noexcept;
    unsigned long mf_getInterval() const noexcept;
    // Within mf_implExecuteTimer: whether this run is the last one the timer was started for.
    int mf_isLastRun() const noexcept;

private:
    std::atomic<unsigned long> m_ulInterval;
    std::atomic<unsigned long> m_ulFirstDelay;
    std::atomic<int> m_nRuns;
    std::atomic<int> m_nRunsMade;
    std::atomic<int> m_bFirstRun;
    std::int64_t m_nDueUs; // on the timer thread only: steady-clock microseconds of the next run
};

// ---------------------------------------------------------------------------------------------------------
// Events (docs/korbase.md, "Events")

// The id under which events are published; listeners register for one id.
typedef std::uint64_t UQEVENT_ID;
// The id of the progress events of workers (korutil's UQProgressEvent).
const UQEVENT_ID UQEVENT_ID_PROGRESS = 0x0040000000000000ull;

// Base of events: an id and a text for the log. Publishing hands the event to every listener registered
// for its id, one after the other, on the publishing thread.
class KORBASE_API UQEvent {
public:
    explicit UQEvent(UQEVENT_ID _id) noexcept : m_id(_id) {}
    UQEvent(const UQEvent&) noexcept = default;
    UQEvent& operator=(const UQEvent&) noexcept = default;
    virtual ~UQEvent();

    UQEVENT_ID mf_getId() const noexcept { return m_id; }
    // "Event id=0x0040000000000000".
    virtual CString mf_toString() const;
    // UQEventManager::mf_publish(*this).
    int mf_publish() const;

private:
    UQEVENT_ID m_id;
};

// Base of classes that receive events of one id. Constructing registers the listener, destroying (or
// mf_unregister) unregisters it; once mf_unregister has returned, mf_onEvent is not called any more, and
// it waits for a delivery to this listener that another thread has under way. A listener may unregister
// (also destroy) itself from inside its own mf_onEvent: that delivery is not waited for.
//
// A derived class should call mf_unregister first thing in its destructor, so that no delivery reaches it
// while its own part is being destroyed; for the same reason a listener made while another thread
// publishes its id registers at the end of its own constructor (the two-argument constructor). A
// listener's mf_onEvent must not wait for the thread that destroys it.
class KORBASE_API UQEventListener {
public:
    explicit UQEventListener(UQEVENT_ID _id);
    // With _bRegister 0 the listener starts unregistered: a class whose listeners are made while another
    // thread publishes their id calls mf_register at the end of its own constructor, so that no event
    // reaches a listener whose derived part is not yet constructed.
    UQEventListener(UQEVENT_ID _id, int _bRegister);
    // The copy is registered for the same id (if the original is registered).
    UQEventListener(const UQEventListener& _other);
    // Takes over the other's id; registered as this one was.
    UQEventListener& operator=(const UQEventListener& _other);
    virtual ~UQEventListener();

    // Called on the publishing thread for each event of the id. The base does nothing. A UQErrno or other
    // exception thrown here is logged under "UQEventManager::mf_publish" and the delivery goes on.
    virtual void mf_onEvent(const UQEvent& _event);
    // Names the listener in log records; "event-listener" for the base.
    virtual const CString mf_toString() const;

    UQEVENT_ID mf_getEventId() const noexcept;
    int mf_isRegistered() const noexcept;
    // Both idempotent; safe from any thread, the publishing one too.
    void mf_register();
    void mf_unregister() noexcept;

    // The listener's entry in the event machinery (opaque).
    struct Node;

private:
    std::shared_ptr<Node> m_node;
};

// The machinery between publishers and listeners; all of it safe from any thread.
class KORBASE_API UQEventManager {
public:
    // Calls mf_onEvent of every listener registered for the event's id when the call starts (in the order
    // they registered, skipping any that unregistered meanwhile), on the calling thread. Listeners may
    // publish, register and unregister from inside mf_onEvent. Answers how many listeners received it.
    static int mf_publish(const UQEvent& _event);
    static int mf_getListenerCount(UQEVENT_ID _id);
};

// Allocation that tests can make fail (UQAllocationInjection): the library allocates its list items,
// versions and sort buffers through it.
class KORBASE_API UQAllocation {
public:
    // malloc; null when it fails or when an injected failure comes due on this thread. An injected error
    // comes out as a thrown UQErrno of its category instead.
    static void* mf_allocate(std::size_t _nBytes);
    static void mf_free(void* _p) noexcept;
    // The class-specific operator new of the classes allocated through mf_allocate: std::bad_alloc for
    // null.
    static void* mf_allocateOrThrow(std::size_t _nBytes);

    // A TYPE made in memory from mf_allocate; null when mf_allocate gives none. When the constructor
    // throws, the memory is freed and the exception goes on.
    template <class TYPE, class... A> static TYPE* mf_create(A&&... _args) {
        void* pMemory = mf_allocate(sizeof(TYPE));
        if (pMemory == nullptr)
            return nullptr;
        try {
            return ::new (pMemory) TYPE(std::forward<A>(_args)...);
        } catch (...) {
            mf_free(pMemory);
            throw;
        }
    }

    // Appends _pObject to an array of owned pointers; when the append throws, the object is deleted
    // and the exception goes on.
    template <class ARRAY, class TYPE> static void mf_appendOrDelete(ARRAY& _array, TYPE* _pObject) {
        try {
            _array.Add(_pObject);
        } catch (...) {
            delete _pObject;
            throw;
        }
    }
    // Its failure injection for tests: UQAllocationInjection (interfaces/korbase_testing.h).
};

// ---------------------------------------------------------------------------------------------------------
// Intrusive list

class KORBASE_API UQLinkedListItem {
public:
    UQLinkedListItem() noexcept : m_pNext(this), m_pPrevious(this) {}
    UQLinkedListItem(const UQLinkedListItem&) noexcept : m_pNext(this), m_pPrevious(this) {}
    UQLinkedListItem& operator=(const UQLinkedListItem&) noexcept { return *this; }
    // An item still in a list takes itself out of the chain; the list's count is then stale, so remove
    // items before deleting them.
    virtual ~UQLinkedListItem();

    UQLinkedListItem* mf_getNext() const noexcept { return m_pNext; }
    UQLinkedListItem* mf_getPrevious() const noexcept { return m_pPrevious; }
    int mf_isLinked() const noexcept { return m_pNext != this; }

private:
    friend class UQLinkedList;
    UQLinkedListItem* m_pNext;
    UQLinkedListItem* m_pPrevious;
};

// A circular list around a sentinel. A list created with ownership deletes its items on
// mf_clearList(1) and in its destructor. Copies hold copies of the items, made by the clone function the
// list was given, and own them; copying a non-empty list that has none throws
// UQErrno::_E_::NotImplemented, a clone that comes back null _E_::Memory (both logged under
// "UQLinkedList::mf_implCopyFrom"). A failed copy leaves no clones behind, and a failed assignment leaves
// the target as it was. An item is in one list at a time: inserting a null or linked item, or after a
// position in no list, is logged and ignored; removing an item in no list is logged as a warning.
class KORBASE_API UQLinkedList {
public:
    typedef UQLinkedListItem* (*CloneItem)(const UQLinkedListItem& _item);

    explicit UQLinkedList(int _bOwner = 1, CloneItem _pfnClone = nullptr) noexcept;
    UQLinkedList(const UQLinkedList& _other);
    UQLinkedList& operator=(const UQLinkedList& _other);
    virtual ~UQLinkedList();

    void mf_addTail(UQLinkedListItem* _pItem) noexcept;
    void mf_addHead(UQLinkedListItem* _pItem) noexcept;
    // A null position inserts at the head.
    void mf_insertAfter(UQLinkedListItem* _pPosition, UQLinkedListItem* _pItem) noexcept;
    void mf_remove(UQLinkedListItem* _pItem) noexcept;
    // Null at the ends, and for a null item.
    UQLinkedListItem* mf_getHead() const noexcept;
    UQLinkedListItem* mf_getTail() const noexcept;
    UQLinkedListItem* mf_getNext(const UQLinkedListItem* _pItem) const noexcept;
    UQLinkedListItem* mf_getPrevious(const UQLinkedListItem* _pItem) const noexcept;
    int mf_getCount() const noexcept { return m_nCount; }
    int mf_isEmpty() const noexcept { return m_nCount == 0; }
    // Unlinks every item, deleting them when _bDelete is non-zero and the list owns its items.
    void mf_clearList(int _bDelete) noexcept;

private:
    void mf_implCopyFrom(const UQLinkedList& _other);

    UQLinkedListItem m_sentinel;
    int m_nCount;
    int m_bOwner;
    CloneItem m_pfnClone;
};
