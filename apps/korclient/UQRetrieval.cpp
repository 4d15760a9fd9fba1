#include "UQRetrieval.h"

#include "UQServerName.h"
#include "UQTemporaryFile.h"

#include "guibase/foundation/UQReport.h"

namespace {

// A retrieved file written under its temporary name and checked: flushed, then given its name (never
// replacing one), or deleted.
struct NamingJob : UQFinishQueue::Job {
    UQTemporaryFile file;
    std::wstring sTarget;

    void mf_finish(UQFileOutcome& _rOutcome) override {
        DWORD dwError = file.mf_flush();
        if (dwError == 0)
            dwError = file.mf_commit(0);
        if (dwError == 0)
            return;
        file.mf_discard();
        if (dwError == ERROR_ALREADY_EXISTS || dwError == ERROR_FILE_EXISTS)
            _rOutcome =
                UQFileOutcome::mf_of(sTarget, UQFileOutcome::YELLOW,
                                     L"Not retrieved: a file of this name exists already and is kept");
        else
            _rOutcome =
                UQFileOutcome::mf_of(sTarget, UQFileOutcome::RED,
                                     L"Not retrieved: cannot write: " + UQSafeFile::mf_systemText(dwError));
    }
};

} // namespace

UQRetrieval::UQRetrieval(const UQServerDirectory& _server) : m_server(_server) {}

int UQRetrieval::mf_retrieve(const std::vector<Request>& _requests, const std::wstring& _sDestination,
                             const UQCancelSwitch* _pCancel, const Progress& _progress,
                             std::vector<UQFileOutcome>& _rOutcomes, std::wstring& _rsReason) {
    static const wchar_t* const _sFunction_ = L"UQRetrieval::mf_retrieve";
    SetLastError(0);
    if (!CreateDirectoryW(UQSafeFile::mf_long(_sDestination).c_str(), nullptr) &&
        GetLastError() != ERROR_ALREADY_EXISTS) {
        _rsReason = L"The folder '" + _sDestination + L"' cannot be created: " +
                    UQSafeFile::mf_systemText(GetLastError());
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"%s", _rsReason.c_str());
        return 0;
    }
    // The folder the user chose is taken as it really is; below it nothing is followed.
    UQFileHandle folder;
    const DWORD dwError = UQSafeFile::mf_openFolder(_sDestination, folder);
    const std::wstring sReal =
        dwError == 0 ? UQSafeFile::mf_finalPath(folder.mf_get(), _sDestination) : std::wstring();
    if (sReal.empty()) {
        _rsReason =
            L"The folder '" + _sDestination + L"' cannot be used: " + UQSafeFile::mf_systemText(dwError);
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"%s", _rsReason.c_str());
        return 0;
    }
    Run run;
    run.sDestination = sReal;
    run.sServerRoot = m_server.mf_getRealRoot();
    const int nTotal = static_cast<int>(_requests.size());
    // Files are read and checked here while the ones before them are flushed and named by the queue.
    UQFinishQueue finishing(L"Not retrieved: out of memory");
    const int nStarted = finishing.mf_runAll(
        nTotal, _pCancel,
        [&](int _nIndex) { return mf_implWrite(_requests[static_cast<std::size_t>(_nIndex)], run); },
        [&](int _nIndex, UQFileOutcome& _rOutcome) {
            _rOutcome.mf_log(_sFunction_);
            _rOutcomes.push_back(std::move(_rOutcome));
            if (_progress)
                _progress(_nIndex + 1, nTotal, _requests[static_cast<std::size_t>(_nIndex)].sObjectPath);
        });
    if (nStarted < nTotal)
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Retrieval canceled after %d of %d files",
                         nStarted, nTotal);
    return 1;
}

UQFinishQueue::Item UQRetrieval::mf_implWrite(const Request& _request, Run& _rRun) {
    UQFinishQueue::Item item;
    item.outcome = mf_implWriteTo(_request, _rRun, item);
    return item;
}

UQFileOutcome UQRetrieval::mf_implWriteTo(const Request& _request, Run& _rRun, UQFinishQueue::Item& _rItem) {
    UQFileHandle version;
    UQVersionRecord header;
    std::wstring sReason;
    if (!m_server.mf_openVersion(_request.uVolume, _request.uPosition, _request.sObjectPath,
                                 _request.uVersion, nullptr, version, header, sReason, &_rRun.sServerRoot))
        return UQFileOutcome::mf_of(_request.sObjectPath, UQFileOutcome::RED, L"Not retrieved: " + sReason);
    if (!UQServerName::mf_check(header.m_sName, sReason))
        return UQFileOutcome::mf_of(
            header.m_sName.empty() ? _request.sObjectPath : header.m_sName, UQFileOutcome::RED,
            L"Refused: the server names the file '" + header.m_sName + L"': " + sReason);
    const std::wstring sTarget = _rRun.sDestination + L"\\" + header.m_sName;
    const std::size_t nSlash = header.m_sName.rfind(L'\\');
    if (nSlash != std::wstring::npos) {
        const std::wstring sFolder = header.m_sName.substr(0, nSlash);
        const std::wstring sKey = UQSafeFile::mf_upper(sFolder);
        if (_rRun.checkedFolders.count(sKey) == 0) {
            if (UQSafeFile::mf_createFolders(_rRun.sDestination, sFolder, sReason) != 0)
                return UQFileOutcome::mf_of(sTarget, UQFileOutcome::RED, L"Not retrieved: " + sReason);
            _rRun.checkedFolders.insert(sKey);
        }
    }
    auto job = std::make_unique<NamingJob>();
    job->sTarget = sTarget;
    const DWORD dwError = job->file.mf_create(sTarget);
    if (dwError != 0)
        return UQFileOutcome::mf_of(sTarget, UQFileOutcome::RED,
                                    L"Not retrieved: cannot write: " + UQSafeFile::mf_systemText(dwError));
    if (!UQServerDirectory::mf_copyContent(version.mf_get(), header, job->file.mf_get(), sReason))
        return UQFileOutcome::mf_of(sTarget, UQFileOutcome::RED, L"Not retrieved: " + sReason);
    _rItem.job = std::move(job);
    UQFileOutcome result = UQFileOutcome::mf_of(sTarget, UQFileOutcome::GREEN, L"Retrieved");
    result.uVersion = header.m_uVersion;
    result.uSize = header.m_uSize;
    return result;
}

int UQRetrieval::mf_readStub(const std::wstring& _sPath, UQVersionRecord& _rRecord, std::wstring& _rsReason) {
    UQFileHandle file;
    const DWORD dwError = UQSafeFile::mf_openRead(_sPath, file);
    if (dwError != 0) {
        _rsReason = L"cannot read the stub: " + UQSafeFile::mf_systemText(dwError);
        return 0;
    }
    UQSafeFile::Stamp stamp;
    if (UQSafeFile::mf_stamp(file.mf_get(), stamp) != 0 ||
        (stamp.dwAttributes & FILE_ATTRIBUTE_REPARSE_POINT)) {
        _rsReason = L"the stub is a link: not followed";
        return 0;
    }
    std::string sText;
    if (UQSafeFile::mf_readStart(file.mf_get(), UQVersionRecord::MAX_STUB_BYTES + 1, sText) != 0) {
        _rsReason = L"cannot read the stub";
        return 0;
    }
    return UQVersionRecord::mf_parseStub(sText, _rRecord, _rsReason);
}

UQFileOutcome UQRetrieval::mf_recall(const std::wstring& _sStub) {
    static const wchar_t* const _sFunction_ = L"UQRetrieval::mf_recall";
    UQVersionRecord stub;
    std::wstring sReason;
    UQFileOutcome result;
    if (!mf_readStub(_sStub, stub, sReason)) {
        result = UQFileOutcome::mf_of(_sStub, UQFileOutcome::RED, L"Not recalled: " + sReason);
        result.mf_log(_sFunction_);
        return result;
    }
    UQFileHandle version;
    UQVersionRecord header;
    if (!m_server.mf_openVersion(stub.m_uVolume, stub.m_uPosition, stub.m_sObjectPath, stub.m_uVersion, &stub,
                                 version, header, sReason)) {
        result =
            UQFileOutcome::mf_of(_sStub, UQFileOutcome::RED, L"Not recalled, the stub is kept: " + sReason);
        result.mf_log(_sFunction_);
        return result;
    }
    UQTemporaryFile target;
    DWORD dwError = target.mf_create(_sStub);
    int bDone =
        dwError == 0 && UQServerDirectory::mf_copyContent(version.mf_get(), header, target.mf_get(), sReason);
    if (bDone) {
        dwError = target.mf_flush();
        bDone = dwError == 0;
    }
    if (dwError != 0)
        sReason = L"cannot write: " + UQSafeFile::mf_systemText(dwError);
    // The stub must still be the one that was read: a file written there meanwhile is not overwritten.
    UQVersionRecord again;
    std::wstring sWhy;
    if (bDone && (!mf_readStub(_sStub, again, sWhy) || again.mf_formatStub() != stub.mf_formatStub())) {
        bDone = 0;
        sReason = L"the stub changed while its data was read";
    }
    if (bDone) {
        dwError = target.mf_commit(1);
        if (dwError != 0) {
            bDone = 0;
            sReason = L"cannot replace the stub: " + UQSafeFile::mf_systemText(dwError);
        }
    }
    if (!bDone) {
        target.mf_discard();
        result =
            UQFileOutcome::mf_of(_sStub, UQFileOutcome::RED, L"Not recalled, the stub is kept: " + sReason);
    } else {
        result = UQFileOutcome::mf_of(_sStub, UQFileOutcome::GREEN, L"Recalled");
        result.uVersion = stub.m_uVersion;
        result.uSize = stub.m_uSize;
    }
    result.mf_log(_sFunction_);
    return result;
}
