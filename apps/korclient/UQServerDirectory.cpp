#include "UQServerDirectory.h"

#include "UQSha256.h"

#include "compat/utf8.h"

#include <algorithm>

namespace {

const std::size_t COPY_BUFFER_BYTES = 256 * 1024;

// A buffer for copying _uSize bytes: one more than the content of a small file, so that its end is seen in
// the second read. Most files are small, and a large buffer for each cost more than copying it.
std::vector<char> copyBuffer(std::uint64_t _uSize) {
    return std::vector<char>(
        static_cast<std::size_t>(std::min<std::uint64_t>(COPY_BUFFER_BYTES, _uSize + 1)));
}

// The number a name of decimal digits (at most 19) and then _pszEnd stands for; false for any other name.
bool numberOf(const std::wstring& _sName, const wchar_t* _pszEnd, std::uint64_t& _ruNumber) {
    std::uint64_t uNumber = 0;
    std::size_t nDigits = 0;
    while (nDigits < _sName.size() && _sName[nDigits] >= L'0' && _sName[nDigits] <= L'9' && nDigits < 19)
        uNumber = uNumber * 10 + static_cast<std::uint64_t>(_sName[nDigits++] - L'0');
    if (nDigits == 0 || _sName.compare(nDigits, std::wstring::npos, _pszEnd) != 0)
        return false;
    _ruNumber = uNumber;
    return true;
}

// Collects what a writer needs from every record of the store.
class StateSink : public UVQueryDataSink {
public:
    explicit StateSink(UQServerDirectory::State& _rState) : m_rState(_rState) {}
    void mf_onQueryData(const UQQueryData& _data) override {
        const std::wstring sKey =
            UQSafeFile::mf_upper(std::wstring(_data.mf_getObjectPath().mf_getPath().GetString()));
        std::uint32_t& ruLatest = m_rState.latestVersions[sKey];
        if (_data.mf_getVersion() > ruLatest)
            ruLatest = _data.mf_getVersion();
        const UQQueryData::AccessKey& key = _data.mf_getAccessKey();
        if (key.uVolume == UQServerDirectory::VOLUME && key.uPosition >= m_rState.uNextPosition)
            m_rState.uNextPosition = key.uPosition + 1;
    }

private:
    UQServerDirectory::State& m_rState;
};

} // namespace

UQServerDirectory::UQServerDirectory(const std::wstring& _sRoot) : m_sRoot(_sRoot) {}

std::wstring UQServerDirectory::mf_getVersionFile(std::uint32_t _uVolume, std::uint64_t _uPosition) const {
    return m_sRoot + L"\\versions\\" + std::to_wstring(_uVolume) + L"\\" +
           std::to_wstring(_uPosition / POSITIONS_PER_FOLDER) + L"\\" + std::to_wstring(_uPosition) + L".ver";
}

std::wstring UQServerDirectory::mf_getUngroupedVersionFile(std::uint32_t _uVolume,
                                                           std::uint64_t _uPosition) const {
    return m_sRoot + L"\\versions\\" + std::to_wstring(_uVolume) + L"\\" + std::to_wstring(_uPosition) +
           L".ver";
}

int UQServerDirectory::mf_prepare(std::wstring& _rsReason) {
    const std::wstring sParts[] = {m_sRoot, m_sRoot + L"\\versions",
                                   m_sRoot + L"\\versions\\" + std::to_wstring(VOLUME)};
    for (const std::wstring& sFolder : sParts) {
        SetLastError(0);
        if (!CreateDirectoryW(UQSafeFile::mf_long(sFolder).c_str(), nullptr) &&
            GetLastError() != ERROR_ALREADY_EXISTS) {
            _rsReason =
                L"cannot create folder '" + sFolder + L"': " + UQSafeFile::mf_systemText(GetLastError());
            return 0;
        }
    }
    const std::wstring sHistory = mf_getHistoryFile();
    if (GetFileAttributesW(UQSafeFile::mf_long(sHistory).c_str()) == INVALID_FILE_ATTRIBUTES) {
        const DWORD dwError = UQSafeFile::mf_writeFileAtomically(
            sHistory, "# object path\tfile path\tversion\tlast write\tsize\tflags\texpiry\tvolume:position\n",
            0);
        if (dwError != 0 && dwError != ERROR_ALREADY_EXISTS && dwError != ERROR_FILE_EXISTS) {
            _rsReason = L"cannot create '" + sHistory + L"': " + UQSafeFile::mf_systemText(dwError);
            return 0;
        }
    }
    return 1;
}

int UQServerDirectory::mf_lock(UQFileHandle& _rLock, DWORD _dwTimeoutMs, std::wstring& _rsReason) {
    const std::wstring sLock = UQSafeFile::mf_long(m_sRoot + L"\\server.lock");
    const ULONGLONG uDeadline = GetTickCount64() + _dwTimeoutMs;
    while (true) {
        SetLastError(0);
        HANDLE hLock = CreateFileW(sLock.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                                   FILE_ATTRIBUTE_NORMAL, nullptr);
        if (hLock != INVALID_HANDLE_VALUE) {
            _rLock = UQFileHandle(hLock);
            return 1;
        }
        const DWORD dwError = GetLastError();
        if (dwError != ERROR_SHARING_VIOLATION || GetTickCount64() >= uDeadline) {
            _rsReason =
                L"the server folder is in use by another writer: " + UQSafeFile::mf_systemText(dwError);
            return 0;
        }
        Sleep(20);
    }
}

int UQServerDirectory::mf_readState(State& _rState, std::wstring& _rsReason) const {
    StateSink sink(_rState);
    try {
        const UQHistoryStore store(CString(mf_getHistoryFile().c_str()));
        const UQHistoryStore::Result result = store.mf_search(UQHistoryQuery(), sink);
        _rState.uRecords = result.uRecords;
        mf_implSkipOrphans(_rState);
        for (const UQErrno& error : result.errors)
            _rState.errors.push_back(error.mf_getDetail().GetString());
        return 1;
    } catch (const UQErrno& e) {
        _rsReason = e.mf_getDetail().IsEmpty() ? std::wstring(e.mf_toString().GetString())
                                               : std::wstring(e.mf_getDetail().GetString());
        return 0;
    }
}

std::wstring UQServerDirectory::mf_getRealRoot() const {
    UQFileHandle root;
    return UQSafeFile::mf_openFolder(m_sRoot, root) == 0 ? UQSafeFile::mf_finalPath(root.mf_get(), m_sRoot)
                                                         : std::wstring();
}

void UQServerDirectory::mf_implSkipOrphans(State& _rState) const {
    // A migration interrupted after storing a version and before recording it leaves a version file that
    // no record names. It is never read, but its place is taken: new versions go after it. Only the folders
    // of positions from the next one on can hold such a file.
    const std::wstring sVolume = m_sRoot + L"\\versions\\" + std::to_wstring(VOLUME);
    mf_implSkipOrphansIn(sVolume, _rState);
    WIN32_FIND_DATAW data{};
    const UQFindHandle find(FindFirstFileExW(UQSafeFile::mf_long(sVolume + L"\\*").c_str(), FindExInfoBasic,
                                             &data, FindExSearchLimitToDirectories, nullptr, 0));
    if (!find)
        return;
    std::vector<std::uint64_t> folders;
    do {
        std::uint64_t uFolder = 0;
        if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && numberOf(data.cFileName, L"", uFolder) &&
            uFolder >= _rState.uNextPosition / POSITIONS_PER_FOLDER)
            folders.push_back(uFolder);
    } while (FindNextFileW(find.mf_get(), &data));
    for (std::uint64_t uFolder : folders)
        mf_implSkipOrphansIn(sVolume + L"\\" + std::to_wstring(uFolder), _rState);
}

void UQServerDirectory::mf_implSkipOrphansIn(const std::wstring& _sFolder, State& _rState) const {
    WIN32_FIND_DATAW data{};
    const UQFindHandle find(FindFirstFileW(UQSafeFile::mf_long(_sFolder + L"\\*.ver").c_str(), &data));
    if (!find)
        return;
    do {
        std::uint64_t uPosition = 0;
        if (numberOf(data.cFileName, L".ver", uPosition) && uPosition >= _rState.uNextPosition)
            _rState.uNextPosition = uPosition + 1;
    } while (FindNextFileW(find.mf_get(), &data));
}

int UQServerDirectory::mf_storeVersion(HANDLE _hSource, UQVersionRecord& _rRecord, std::wstring& _rsReason) {
    const std::wstring sTarget = mf_getVersionFile(_rRecord.m_uVolume, _rRecord.m_uPosition);
    // The folder of the version's hundred, made by the first version that goes there, must be a real folder
    // inside the server folder; once seen to be one, the next versions of the hundred trust it.
    const std::wstring sFolder = sTarget.substr(0, sTarget.rfind(L'\\'));
    if (sFolder != m_sCheckedFolder) {
        const std::wstring sRealRoot = mf_getRealRoot();
        std::wstring sWhy = L"cannot open the server folder '" + m_sRoot + L"'";
        if (sRealRoot.empty() ||
            UQSafeFile::mf_createFolders(sRealRoot, sFolder.substr(m_sRoot.size() + 1), sWhy) != 0) {
            _rsReason = L"cannot write to the server: " + sWhy;
            return 0;
        }
        m_sCheckedFolder = sFolder;
    }
    // No temporary name: no record names the position yet, so nothing reads the file before it is whole,
    // and one left half-written by a crash only takes its position (mf_readState passes it).
    UQFileHandle file;
    DWORD dwError = UQSafeFile::mf_createNew(sTarget, file);
    if (dwError == ERROR_FILE_EXISTS || dwError == ERROR_ALREADY_EXISTS) {
        _rsReason = L"cannot store the version as '" + sTarget + L"': " + UQSafeFile::mf_systemText(dwError);
        return 0;
    }
    if (dwError != 0) {
        _rsReason = L"cannot write to the server: " + UQSafeFile::mf_systemText(dwError);
        return 0;
    }
    auto fail = [&](const std::wstring& _sReason) {
        file.mf_reset();
        DeleteFileW(UQSafeFile::mf_long(sTarget).c_str());
        _rsReason = _sReason;
        return 0;
    };
    // The hash is known only after the content: the header is written with a placeholder of the same
    // length and completed at the end.
    _rRecord.m_sSha256.assign(64, '0');
    const std::string sHeader = _rRecord.mf_formatHeader();
    dwError = UQSafeFile::mf_writeAll(file.mf_get(), sHeader.data(), sHeader.size());
    UQSha256 hash;
    std::vector<char> buffer = copyBuffer(_rRecord.m_uSize);
    std::uint64_t uCopied = 0;
    while (dwError == 0) {
        DWORD dwRead = 0;
        SetLastError(0);
        if (!ReadFile(_hSource, buffer.data(), static_cast<DWORD>(buffer.size()), &dwRead, nullptr))
            return fail(L"cannot read the file: " + UQSafeFile::mf_systemText(GetLastError()));
        if (dwRead == 0)
            break;
        hash.mf_update(buffer.data(), dwRead);
        uCopied += dwRead;
        dwError = UQSafeFile::mf_writeAll(file.mf_get(), buffer.data(), dwRead);
    }
    if (dwError != 0)
        return fail(L"cannot write to the server: " + UQSafeFile::mf_systemText(dwError));
    if (uCopied != _rRecord.m_uSize)
        return fail(L"the file changed while it was read (" + std::to_wstring(uCopied) +
                    L" bytes instead of " + std::to_wstring(_rRecord.m_uSize) + L")");
    _rRecord.m_sSha256 = hash.mf_finishHex();
    const std::string sFinalHeader = _rRecord.mf_formatHeader();
    LARGE_INTEGER start{};
    SetLastError(0);
    if (!SetFilePointerEx(file.mf_get(), start, nullptr, FILE_BEGIN))
        return fail(L"cannot write to the server: " + UQSafeFile::mf_systemText(GetLastError()));
    dwError = UQSafeFile::mf_writeAll(file.mf_get(), sFinalHeader.data(), sFinalHeader.size());
    if (dwError == 0 && !FlushFileBuffers(file.mf_get()))
        dwError = GetLastError();
    if (dwError != 0)
        return fail(L"cannot write to the server: " + UQSafeFile::mf_systemText(dwError));
    return 1;
}

int UQServerDirectory::mf_openHistory(HistoryAppender& _rAppender, std::wstring& _rsReason) const {
    const std::wstring sHistory = mf_getHistoryFile();
    SetLastError(0);
    UQFileHandle file(CreateFileW(UQSafeFile::mf_long(sHistory).c_str(), GENERIC_READ | FILE_APPEND_DATA,
                                  FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!file.mf_isValid()) {
        _rsReason = L"cannot open the history store '" + sHistory + L"': " +
                    UQSafeFile::mf_systemText(GetLastError());
        return 0;
    }
    _rAppender.file = std::move(file);
    _rAppender.bEndsWithLineEnd = false;
    return 1;
}

int UQServerDirectory::mf_appendHistory(HistoryAppender& _rAppender, const UQQueryData& _record,
                                        std::wstring& _rsReason) const {
    std::string sLine;
    try {
        sLine = UQHistoryStore::mf_formatRecord(_record) + "\n";
    } catch (const UQErrno& e) {
        // A path the store cannot hold (a control character, half of a surrogate pair).
        _rsReason = e.mf_getDetail().GetString();
        return 0;
    }
    if (!_rAppender.bEndsWithLineEnd) {
        LARGE_INTEGER size{};
        if (GetFileSizeEx(_rAppender.file.mf_get(), &size) && size.QuadPart > 0) {
            LARGE_INTEGER last{};
            last.QuadPart = size.QuadPart - 1;
            char chLast = '\n';
            DWORD dwRead = 0;
            if (SetFilePointerEx(_rAppender.file.mf_get(), last, nullptr, FILE_BEGIN) &&
                ReadFile(_rAppender.file.mf_get(), &chLast, 1, &dwRead, nullptr) && dwRead == 1 &&
                chLast != '\n')
                sLine.insert(sLine.begin(), '\n');
        }
    }
    DWORD dwError = UQSafeFile::mf_writeAll(_rAppender.file.mf_get(), sLine.data(), sLine.size());
    if (dwError == 0 && !FlushFileBuffers(_rAppender.file.mf_get()))
        dwError = GetLastError();
    // Part of a failed line may have reached the store; the next append looks again.
    _rAppender.bEndsWithLineEnd = dwError == 0;
    if (dwError != 0) {
        _rsReason = L"cannot add to the history store '" + mf_getHistoryFile() + L"': " +
                    UQSafeFile::mf_systemText(dwError);
        return 0;
    }
    return 1;
}

int UQServerDirectory::mf_openVersion(std::uint32_t _uVolume, std::uint64_t _uPosition,
                                      const std::wstring& _sObjectPath, std::uint32_t _uVersion,
                                      const UQVersionRecord* _pExpected, UQFileHandle& _rFile,
                                      UQVersionRecord& _rHeader, std::wstring& _rsReason,
                                      const std::wstring* _psRealRoot) const {
    std::wstring sFile = mf_getVersionFile(_uVolume, _uPosition);
    DWORD dwError = UQSafeFile::mf_openRead(sFile, _rFile);
    if (dwError == ERROR_FILE_NOT_FOUND || dwError == ERROR_PATH_NOT_FOUND) {
        const std::wstring sUngrouped = mf_getUngroupedVersionFile(_uVolume, _uPosition);
        const DWORD dwUngrouped = UQSafeFile::mf_openRead(sUngrouped, _rFile);
        if (dwUngrouped != ERROR_FILE_NOT_FOUND && dwUngrouped != ERROR_PATH_NOT_FOUND) {
            sFile = sUngrouped;
            dwError = dwUngrouped;
        }
    }
    if (dwError == ERROR_FILE_NOT_FOUND || dwError == ERROR_PATH_NOT_FOUND) {
        _rsReason = L"the server holds no data for version " + std::to_wstring(_uVersion) + L" (" + sFile +
                    L" is missing)";
        return 0;
    }
    if (dwError != 0) {
        _rsReason = L"cannot read '" + sFile + L"': " + UQSafeFile::mf_systemText(dwError);
        return 0;
    }
    // A link planted in the server folder could hand out any file of the computer.
    const std::wstring sRealRoot = _psRealRoot != nullptr ? *_psRealRoot : mf_getRealRoot();
    if (sRealRoot.empty() ||
        !UQSafeFile::mf_isWithin(UQSafeFile::mf_finalPath(_rFile.mf_get(), sFile), sRealRoot)) {
        _rsReason = L"'" + sFile + L"' leads out of the server folder: not read";
        return 0;
    }
    std::string sStart;
    if (UQSafeFile::mf_readStart(_rFile.mf_get(), UQVersionRecord::MAX_HEADER_BYTES, sStart) != 0) {
        _rsReason = L"cannot read '" + sFile + L"'";
        return 0;
    }
    std::size_t nHeaderBytes = 0;
    std::wstring sWhy;
    if (!UQVersionRecord::mf_parseHeader(sStart, _rHeader, nHeaderBytes, sWhy)) {
        _rsReason = L"'" + sFile + L"' is damaged: " + sWhy;
        return 0;
    }
    if (UQSafeFile::mf_upper(_rHeader.m_sObjectPath) != UQSafeFile::mf_upper(_sObjectPath) ||
        _rHeader.m_uVersion != _uVersion) {
        _rsReason = L"'" + sFile + L"' holds version " + std::to_wstring(_rHeader.m_uVersion) + L" of '" +
                    _rHeader.m_sObjectPath + L"', not the version asked for";
        return 0;
    }
    if (_pExpected != nullptr &&
        (_pExpected->m_uSize != _rHeader.m_uSize || _pExpected->m_sSha256 != _rHeader.m_sSha256)) {
        _rsReason = L"the stored data of '" + sFile + L"' differs from what the stub records";
        return 0;
    }
    _rHeader.m_uVolume = _uVolume;
    _rHeader.m_uPosition = _uPosition;
    LARGE_INTEGER offset{};
    offset.QuadPart = static_cast<LONGLONG>(nHeaderBytes);
    if (!SetFilePointerEx(_rFile.mf_get(), offset, nullptr, FILE_BEGIN)) {
        _rsReason = L"cannot read '" + sFile + L"'";
        return 0;
    }
    return 1;
}

int UQServerDirectory::mf_copyContent(HANDLE _hVersion, const UQVersionRecord& _header, HANDLE _hTarget,
                                      std::wstring& _rsReason) {
    UQSha256 hash;
    std::vector<char> buffer = copyBuffer(_header.m_uSize);
    std::uint64_t uCopied = 0;
    while (true) {
        DWORD dwRead = 0;
        SetLastError(0);
        if (!ReadFile(_hVersion, buffer.data(), static_cast<DWORD>(buffer.size()), &dwRead, nullptr)) {
            _rsReason = L"cannot read the stored data: " + UQSafeFile::mf_systemText(GetLastError());
            return 0;
        }
        if (dwRead == 0)
            break;
        uCopied += dwRead;
        if (uCopied > _header.m_uSize) {
            _rsReason = L"the stored data is longer than recorded";
            return 0;
        }
        hash.mf_update(buffer.data(), dwRead);
        const DWORD dwError = UQSafeFile::mf_writeAll(_hTarget, buffer.data(), dwRead);
        if (dwError != 0) {
            _rsReason = L"cannot write: " + UQSafeFile::mf_systemText(dwError);
            return 0;
        }
    }
    if (uCopied < _header.m_uSize) {
        _rsReason = L"the stored data is shorter than recorded (" + std::to_wstring(uCopied) + L" of " +
                    std::to_wstring(_header.m_uSize) + L" bytes)";
        return 0;
    }
    if (hash.mf_finishHex() != _header.m_sSha256) {
        _rsReason = L"the stored data does not match its hash";
        return 0;
    }
    return 1;
}
