#include "interfaces/korarchiver.h"

#include "kor/KorReport.h"
#include <cstdlib>
#include <memory>
#include <mutex>

namespace {

std::mutex g_fileLock;
CString g_sFile;

CString environmentFile() {
#if defined(_WIN32)
    wchar_t buffer[32768];
    const DWORD dwLength = GetEnvironmentVariableW(L"KOR_MGMT_CLASS_FILE", buffer, 32768);
    return dwLength > 0 && dwLength < 32768 ? CString(buffer) : CString();
#else
    const char* pszValue = std::getenv("KOR_MGMT_CLASS_FILE");
    return pszValue != nullptr ? CString::FromUtf8(pszValue) : CString();
#endif
}

// The server's answer: the classes of the chosen file, or of the built-in sample. Malformed lines are
// reported and skipped, as a server leaves out what it cannot describe.
UQMgmtClassFile::Result readServer(const wchar_t* _pszFunction) {
    const CString sFile = UQArchiverMain::mf_getMgmtClassFile();
    UQMgmtClassFile::Result result =
        sFile.IsEmpty()
            ? UQMgmtClassFile::mf_readText(UQMgmtClassFile::mf_getSampleText(), UQMgmtClassFile::SAMPLE_NAME)
            : UQMgmtClassFile::mf_read(sFile);
    for (const UQErrno& error : result.errors) {
        UQKorReport::mf_log(UQLogData::LEVEL_W, _pszFunction, L"Management class line skipped: %s",
                            error.mf_getDetail());
    }
    return result;
}

} // namespace

void UQArchiverMain::mf_setMgmtClassFile(const CString& _sFile) {
    std::lock_guard<std::mutex> lock(g_fileLock);
    g_sFile = _sFile;
}

CString UQArchiverMain::mf_getMgmtClassFile() {
    {
        std::lock_guard<std::mutex> lock(g_fileLock);
        if (!g_sFile.IsEmpty())
            return g_sFile;
    }
    return environmentFile();
}

void UQArchiverMain::mf_getMgmtClasses(UQArray<UQQueryMgmtClassData*, UQQueryMgmtClassData*>& _rList,
                                       const UQHost& _host, const CString& _sOptions) {
    static const wchar_t* const _sFunction_ = L"UQArchiverMain::mf_getMgmtClasses";
    const UQMgmtClassFile::Result result = readServer(_sFunction_);
    for (const UQQueryMgmtClassData& data : result.classes)
        UQAllocation::mf_appendOrDelete(_rList, new UQQueryMgmtClassData(data));
}

UQQueryMgmtClassData* UQArchiverMain::mf_getMgmtClass(const CString& _sName, const UQHost& _host,
                                                      const CString& _sOptions) {
    static const wchar_t* const _sFunction_ = L"UQArchiverMain::mf_getMgmtClass";
    const UQMgmtClassFile::Result result = readServer(_sFunction_);
    const bool bDefault = _sName == L"DEFAULT";
    const CString sWanted = bDefault ? result.sDefaultClass : _sName;
    if (!sWanted.IsEmpty()) {
        for (const UQQueryMgmtClassData& data : result.classes) {
            if (data.mf_getName().Compare(sWanted) == 0) {
                std::unique_ptr<UQQueryMgmtClassData> pCopy(new UQQueryMgmtClassData(data));
                if (bDefault)
                    pCopy->mf_setName(L"DEFAULT");
                return pCopy.release();
            }
        }
    }
    if (bDefault)
        UQKorReport::mf_fail(UQErrno(UQErrno::_E_::ItemNotFound), _sFunction_,
                             L"The server has no default management class");
    UQKorReport::mf_fail(UQErrno(UQErrno::_E_::ItemNotFound), _sFunction_, L"Management class '%s' not found",
                         _sName);
}
