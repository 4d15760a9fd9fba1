// The storage server's stand-in: a folder that holds the history store ("history.txt") and one file per
// stored version ("versions\<volume>\<position / 100>\<position>.ver": a header naming the object, then the
// content).
// docs/server-directory-format.md describes it. Whatever is read from it is checked before it is used.
#pragma once

#include "UQSafeFile.h"
#include "UQVersionRecord.h"

#include "interfaces/korarchiver.h"

#include <map>
#include <string>
#include <vector>

class UQServerDirectory {
public:
    // The one volume the stand-in writes to.
    static const std::uint32_t VOLUME = 1;
    // Versions are kept in folders of this many positions: a folder of every version would make each new
    // name a search through all of them on a file system whose names are case-blind by a scan (Wine's).
    static const std::uint64_t POSITIONS_PER_FOLDER = 100;

    // What a writer must know of the history before it adds to it.
    struct State {
        std::uint64_t uNextPosition = 1;
        std::map<std::wstring, std::uint32_t> latestVersions; // by upper-case object path
        std::uint32_t uRecords = 0;
        std::vector<std::wstring> errors; // "history.txt:12: ..." per malformed record
    };

    explicit UQServerDirectory(const std::wstring& _sRoot);
    UQServerDirectory(const UQServerDirectory&) = delete;
    UQServerDirectory& operator=(const UQServerDirectory&) = delete;
    UQServerDirectory(UQServerDirectory&&) = default;
    UQServerDirectory& operator=(UQServerDirectory&&) = default;

    const std::wstring& mf_getRoot() const noexcept { return m_sRoot; }
    std::wstring mf_getHistoryFile() const { return m_sRoot + L"\\history.txt"; }
    std::wstring mf_getVersionFile(std::uint32_t _uVolume, std::uint64_t _uPosition) const;
    // Where the first servers kept every version of a volume, in one folder; still read.
    std::wstring mf_getUngroupedVersionFile(std::uint32_t _uVolume, std::uint64_t _uPosition) const;

    // Creates the folder, its history store and its versions folder where they are missing.
    int mf_prepare(std::wstring& _rsReason);
    // One writer at a time: holds "server.lock" open exclusively, waiting up to _dwTimeoutMs.
    int mf_lock(UQFileHandle& _rLock, DWORD _dwTimeoutMs, std::wstring& _rsReason);
    // Reads the history store; a store that cannot be read answers 0 with the reason. The next position
    // also passes every stored version on disk, recorded or not.
    int mf_readState(State& _rState, std::wstring& _rsReason) const;

    // Stores the content of _hSource (read from its current position, _rRecord.m_uSize bytes expected) as
    // the version _rRecord names, and fills in its hash. The file is complete and on disk when this
    // answers 1; on a failure it is deleted.
    int mf_storeVersion(HANDLE _hSource, UQVersionRecord& _rRecord, std::wstring& _rsReason);
    // The history store held open for the appends of one run of a writer (which holds server.lock).
    struct HistoryAppender {
        UQFileHandle file;
        // Whether the store is known to end with a line end: a store whose last line has none (written by
        // hand, or cut by a failed append) must not swallow the next record.
        bool bEndsWithLineEnd = false;
    };
    int mf_openHistory(HistoryAppender& _rAppender, std::wstring& _rsReason) const;
    // Appends a record to the history store and flushes it to disk; 0 with the reason when it cannot be
    // written or the store cannot hold its path.
    int mf_appendHistory(HistoryAppender& _rAppender, const UQQueryData& _record,
                         std::wstring& _rsReason) const;

    // Opens the stored version at _uVolume:_uPosition and checks its header against what the caller
    // expects of it: the object path and version, and (when given) size and hash. Answers 1 with the header
    // in _rHeader and the file positioned at the content. A reader of many versions passes the server
    // folder as it really is (mf_getRealRoot) rather than have it looked up for each.
    int mf_openVersion(std::uint32_t _uVolume, std::uint64_t _uPosition, const std::wstring& _sObjectPath,
                       std::uint32_t _uVersion, const UQVersionRecord* _pExpected, UQFileHandle& _rFile,
                       UQVersionRecord& _rHeader, std::wstring& _rsReason,
                       const std::wstring* _psRealRoot = nullptr) const;
    // Where the server folder really is (links resolved); empty when it cannot be opened.
    std::wstring mf_getRealRoot() const;
    // Copies the content of an opened version to _hTarget and checks its size and hash on the way; the
    // caller flushes the copy.
    static int mf_copyContent(HANDLE _hVersion, const UQVersionRecord& _header, HANDLE _hTarget,
                              std::wstring& _rsReason);

private:
    void mf_implSkipOrphans(State& _rState) const;
    void mf_implSkipOrphansIn(const std::wstring& _sFolder, State& _rState) const;

    std::wstring m_sRoot;
    // The versions folder last seen to be a real folder inside the server folder.
    std::wstring m_sCheckedFolder;
};
