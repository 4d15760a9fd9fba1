#include "UQMigration.h"

#include "UQTemporaryFile.h"

#include "guibase/foundation/UQReport.h"

namespace {

std::function<void(int)> g_stepHook;

void step(int _nStep) {
    if (g_stepHook)
        g_stepHook(_nStep);
}

// A stored file's outcome (its version, size and time kept) told what became of the file itself.
void storedBut(UQFileOutcome& _rOutcome, UQFileOutcome::SEVERITY _eSeverity, std::wstring _sResult) {
    _rOutcome.eSeverity = _eSeverity;
    _rOutcome.sResult = std::move(_sResult);
}

// A file whose version is stored and durable: its record is added to the history store, then its stub is
// written beside it and put in its place. The file is held against writers until its stub is written.
struct StubJob : UQFinishQueue::Job {
    StubJob(UQServerDirectory& _rServer, UQServerDirectory::HistoryAppender& _rHistory)
        : rServer(_rServer), rHistory(_rHistory) {}

    // A version that no record names is not left behind.
    ~StubJob() override {
        if (bRecorded)
            return;
        try {
            DeleteFileW(
                UQSafeFile::mf_long(rServer.mf_getVersionFile(record.m_uVolume, record.m_uPosition)).c_str());
        } catch (...) {
            // Out of memory for the name: the version stays, and the next run passes over it.
        }
    }

    void mf_finish(UQFileOutcome& _rOutcome) override {
        std::wstring sReason;
        const UQQueryData entry(CString(sFile.c_str()), CString(), record.m_uVersion,
                                UQFileTime(before.ftLastWrite),
                                UQFileSize(static_cast<std::int64_t>(record.m_uSize)), 0, UQExpiryTime{0},
                                UQQueryData::AccessKey{record.m_uVolume, record.m_uPosition});
        if (!rServer.mf_appendHistory(rHistory, entry, sReason)) {
            _rOutcome = UQFileOutcome::mf_of(sFile, UQFileOutcome::RED,
                                             L"Not migrated (the file is kept): " + sReason);
            return;
        }
        bRecorded = true;
        step(2);
        UQSafeFile::Stamp after;
        if (UQSafeFile::mf_stamp(original.mf_get(), after) != 0 || after.uSize != before.uSize ||
            after.uLastWriteTime != before.uLastWriteTime) {
            storedBut(_rOutcome, UQFileOutcome::YELLOW,
                      L"Stored, but the file changed meanwhile: it is kept and not replaced by a stub");
            return;
        }
        const std::string sStub = record.mf_formatStub();
        UQTemporaryFile stub;
        DWORD dwError = stub.mf_create(sFile);
        if (dwError == 0)
            dwError = UQSafeFile::mf_writeAll(stub.mf_get(), sStub.data(), sStub.size());
        // The stub keeps the file's time, so that it sorts and shows as the file did.
        if (dwError == 0)
            SetFileTime(stub.mf_get(), nullptr, nullptr, &before.ftLastWrite);
        if (dwError == 0)
            dwError = stub.mf_flush();
        if (dwError != 0) {
            storedBut(_rOutcome, UQFileOutcome::RED,
                      L"Stored, but no stub could be written (the file is kept): " +
                          UQSafeFile::mf_systemText(dwError));
            return;
        }
        step(3);
        original.mf_reset();
        if (GetFileAttributesW(UQSafeFile::mf_long(sFile).c_str()) == INVALID_FILE_ATTRIBUTES) {
            storedBut(_rOutcome, UQFileOutcome::YELLOW,
                      L"The file vanished during migration; its stored version is kept");
            return;
        }
        dwError = stub.mf_commit(1);
        if (dwError != 0) {
            storedBut(_rOutcome, UQFileOutcome::RED,
                      L"Stored, but the file could not be replaced by its stub (the file is kept): " +
                          UQSafeFile::mf_systemText(dwError));
            return;
        }
        step(4);
    }

    UQServerDirectory& rServer;
    UQServerDirectory::HistoryAppender& rHistory;
    std::wstring sFile;
    UQFileHandle original;
    UQSafeFile::Stamp before;
    UQVersionRecord record;
    bool bRecorded = false;
};

} // namespace

UQMigration::UQMigration(UQServerDirectory& _rServer, const std::wstring& _sSourceFolder)
    : m_rServer(_rServer), m_sSource(_sSourceFolder) {}

void UQMigration::mf_setStepHook(std::function<void(int)> _hook) {
    g_stepHook = std::move(_hook);
}

int UQMigration::mf_run(const UQCancelSwitch* _pCancel, const Progress& _progress,
                        std::vector<UQFileOutcome>& _rOutcomes, std::wstring& _rsReason) {
    static const wchar_t* const _sFunction_ = L"UQMigration::mf_run";
    UQFileHandle folder;
    const DWORD dwError = UQSafeFile::mf_openFolder(m_sSource, folder);
    UQSafeFile::Stamp folderStamp;
    if (dwError != 0 || UQSafeFile::mf_stamp(folder.mf_get(), folderStamp) != 0 ||
        !(folderStamp.dwAttributes & FILE_ATTRIBUTE_DIRECTORY)) {
        _rsReason = L"The folder '" + m_sSource + L"' cannot be migrated: " +
                    (dwError != 0 ? UQSafeFile::mf_systemText(dwError) : std::wstring(L"it is no folder"));
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"%s", _rsReason.c_str());
        return 0;
    }
    m_sRealSource = UQSafeFile::mf_finalPath(folder.mf_get(), m_sSource);
    UQFileHandle lock;
    UQServerDirectory::State state;
    UQServerDirectory::HistoryAppender history;
    if (!m_rServer.mf_prepare(_rsReason) || !m_rServer.mf_lock(lock, 30000, _rsReason) ||
        !m_rServer.mf_readState(state, _rsReason) || !m_rServer.mf_openHistory(history, _rsReason)) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Migration of '%s' not begun: %s",
                         m_sSource.c_str(), _rsReason.c_str());
        return 0;
    }
    for (const std::wstring& sError : state.errors)
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"History record skipped: %s", sError.c_str());
    std::vector<std::wstring> files;
    mf_implListFiles(m_sSource, files, _rOutcomes);
    const int nTotal = static_cast<int>(files.size());
    // Versions are stored here while the files before are recorded and replaced by their stubs. Declared
    // after the lock and the history it writes to: its thread ends before they go.
    UQFinishQueue finishing(L"Stored, but no stub could be written (the file is kept): out of memory");
    const int nStarted = finishing.mf_runAll(
        nTotal, _pCancel,
        [&](int _nIndex) { return mf_implMigrate(files[static_cast<std::size_t>(_nIndex)], state, history); },
        [&](int _nIndex, UQFileOutcome& _rOutcome) {
            _rOutcome.mf_log(_sFunction_);
            _rOutcomes.push_back(std::move(_rOutcome));
            if (_progress)
                _progress(_nIndex + 1, nTotal, files[static_cast<std::size_t>(_nIndex)]);
        });
    if (nStarted < nTotal)
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Migration canceled after %d of %d files",
                         nStarted, nTotal);
    return 1;
}

void UQMigration::mf_implListFiles(const std::wstring& _sFolder, std::vector<std::wstring>& _rFiles,
                                   std::vector<UQFileOutcome>& _rOutcomes) {
    WIN32_FIND_DATAW data{};
    const UQFindHandle find(FindFirstFileExW(UQSafeFile::mf_long(_sFolder + L"\\*").c_str(), FindExInfoBasic,
                                             &data, FindExSearchNameMatch, nullptr,
                                             FIND_FIRST_EX_LARGE_FETCH));
    if (!find) {
        _rOutcomes.push_back(UQFileOutcome::mf_of(_sFolder, UQFileOutcome::RED,
                                                  L"Not migrated: the folder cannot be read: " +
                                                      UQSafeFile::mf_systemText(GetLastError())));
        return;
    }
    std::vector<std::wstring> folders;
    do {
        const std::wstring sName = data.cFileName;
        if (sName == L"." || sName == L"..")
            continue;
        const std::wstring sPath = _sFolder + L"\\" + sName;
        if (data.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT)
            _rOutcomes.push_back(
                UQFileOutcome::mf_of(sPath, UQFileOutcome::YELLOW, L"Skipped: a link is not followed"));
        else if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
            folders.push_back(sPath);
        else if (sName.compare(0, 8, L".kortmp-") != 0)
            _rFiles.push_back(sPath);
    } while (FindNextFileW(find.mf_get(), &data));
    for (const std::wstring& sFolder : folders) {
        // A folder that is a link in disguise (one the system does not mark) leads elsewhere.
        UQFileHandle handle;
        if (UQSafeFile::mf_openFolder(sFolder, handle) == 0 &&
            UQSafeFile::mf_upper(UQSafeFile::mf_finalPath(handle.mf_get(), sFolder)) !=
                UQSafeFile::mf_upper(UQSafeFile::mf_absolute(sFolder)) &&
            !UQSafeFile::mf_isWithin(UQSafeFile::mf_finalPath(handle.mf_get(), sFolder), m_sRealSource)) {
            _rOutcomes.push_back(
                UQFileOutcome::mf_of(sFolder, UQFileOutcome::YELLOW, L"Skipped: a link is not followed"));
            continue;
        }
        mf_implListFiles(sFolder, _rFiles, _rOutcomes);
    }
}

UQFinishQueue::Item UQMigration::mf_implMigrate(const std::wstring& _sFile, UQServerDirectory::State& _rState,
                                                UQServerDirectory::HistoryAppender& _rHistory) {
    UQFinishQueue::Item item;
    item.outcome = mf_implStore(_sFile, _rState, _rHistory, item);
    return item;
}

UQFileOutcome UQMigration::mf_implStore(const std::wstring& _sFile, UQServerDirectory::State& _rState,
                                        UQServerDirectory::HistoryAppender& _rHistory,
                                        UQFinishQueue::Item& _rItem) {
    UQFileHandle source;
    DWORD dwError = UQSafeFile::mf_openRead(_sFile, source);
    if (dwError == ERROR_FILE_NOT_FOUND || dwError == ERROR_PATH_NOT_FOUND)
        return UQFileOutcome::mf_of(_sFile, UQFileOutcome::YELLOW,
                                    L"Skipped: the file vanished before it was migrated");
    if (dwError != 0)
        return UQFileOutcome::mf_of(_sFile, UQFileOutcome::RED,
                                    L"Not migrated: the file cannot be read: " +
                                        UQSafeFile::mf_systemText(dwError));
    UQSafeFile::Stamp before;
    dwError = UQSafeFile::mf_stamp(source.mf_get(), before);
    if (dwError != 0)
        return UQFileOutcome::mf_of(_sFile, UQFileOutcome::RED,
                                    L"Not migrated: the file cannot be read: " +
                                        UQSafeFile::mf_systemText(dwError));
    if (before.dwAttributes & FILE_ATTRIBUTE_READONLY)
        return UQFileOutcome::mf_of(_sFile, UQFileOutcome::YELLOW,
                                    L"Skipped: the file is read-only and cannot be replaced by a stub");
    if ((before.dwAttributes & FILE_ATTRIBUTE_REPARSE_POINT) ||
        !UQSafeFile::mf_isWithin(UQSafeFile::mf_finalPath(source.mf_get(), _sFile), m_sRealSource))
        return UQFileOutcome::mf_of(_sFile, UQFileOutcome::YELLOW, L"Skipped: a link is not followed");
    const std::uint64_t uSize = before.uSize;
    if (uSize <= UQVersionRecord::MAX_STUB_BYTES) {
        std::string sStart;
        if (UQSafeFile::mf_readStart(source.mf_get(), UQVersionRecord::MAX_STUB_BYTES, sStart) == 0 &&
            UQVersionRecord::mf_looksLikeStub(sStart))
            return UQFileOutcome::mf_of(_sFile, UQFileOutcome::YELLOW,
                                        L"Skipped: the file is a stub already");
        LARGE_INTEGER start{};
        SetFilePointerEx(source.mf_get(), start, nullptr, FILE_BEGIN);
    }

    UQVersionRecord record;
    record.m_sObjectPath = _sFile;
    record.m_sName = _sFile.size() > m_sSource.size() ? _sFile.substr(m_sSource.size() + 1) : _sFile;
    std::uint32_t& ruLatest = _rState.latestVersions[UQSafeFile::mf_upper(_sFile)];
    record.m_uVersion = ruLatest + 1;
    record.m_uVolume = UQServerDirectory::VOLUME;
    record.m_uPosition = _rState.uNextPosition++;
    record.m_uSize = uSize;
    std::wstring sReason;
    if (!m_rServer.mf_storeVersion(source.mf_get(), record, sReason))
        return UQFileOutcome::mf_of(_sFile, UQFileOutcome::RED,
                                    L"Not migrated (the file is kept): " + sReason);
    step(1);
    ruLatest = record.m_uVersion;
    auto job = std::make_unique<StubJob>(m_rServer, _rHistory);
    job->sFile = _sFile;
    job->original = std::move(source);
    job->before = before;
    job->record = std::move(record);
    _rItem.job = std::move(job);
    UQFileOutcome result = UQFileOutcome::mf_of(_sFile, UQFileOutcome::GREEN, L"Migrated");
    result.uVersion = ruLatest;
    result.uSize = uSize;
    result.uLastWriteTime = before.uLastWriteTime;
    return result;
}
