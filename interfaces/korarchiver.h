// What korguibase calls of korarchiver, the product family's archiver library: migration entries, backup
// events and the listing reader.
#pragma once

#include "korbase.h"
#include "korutil.h"

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

// Reads a listing file (docs/listing-format.md) and reports every good line to the listener. A malformed
// line, or one the listener refuses, becomes a UQErrno naming the file and line, and reading goes on.
class KORARCHIVER_API UQListingReader {
public:
    struct Result {
        std::uint32_t uEntries = 0;  // lines reported to the listener and taken
        std::vector<UQErrno> errors; // one per line that was not taken, in file order
    };

    // A file that cannot be opened or read throws UQErrno::_E_::File naming it.
    static Result mf_read(const CString& _sFile, UVListingFileReader& _rListener);
    // The same over text already in memory; _sName is used in the errors.
    static Result mf_readText(const std::string& _utf8Text, const CString& _sName,
                              UVListingFileReader& _rListener);
};
