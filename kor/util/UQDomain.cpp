#include "interfaces/korutil.h"

#include "kor/KorReport.h"
#include "kor/util/UQControllerAuthority.h"
#include "kor/util/UQLocalComputer.h"

#include <cstdlib>
#include <memory>
#include <mutex>

namespace {

std::mutex g_lock;
CString g_sDirectoryFile;
// Every authority handed out stays valid until the process ends: callers keep pointers to them.
std::vector<std::unique_ptr<UQControllerAuthority>> g_controllers;

CString environmentFile() {
#if defined(_WIN32)
    std::vector<wchar_t> buffer(32768);
    const DWORD dwLength = GetEnvironmentVariableW(L"KOR_DIRECTORY_FILE", buffer.data(), 32768);
    return dwLength > 0 && dwLength < 32768 ? CString(buffer.data()) : CString();
#else
    const char* pszValue = std::getenv("KOR_DIRECTORY_FILE");
    return pszValue != nullptr ? CString::FromUtf8(pszValue) : CString();
#endif
}

// The same controller of the same file answers the same object.
UQSidAuthority* controllerFor(const CString& _sFile, const UQDirectoryController& _controller) {
    for (const std::unique_ptr<UQControllerAuthority>& pKnown : g_controllers) {
        if (pKnown->mf_getName() == _controller.sName &&
            pKnown->mf_getDisplayName() == _controller.sDisplayName &&
            pKnown->mf_isMarked() == _controller.bMarked && pKnown->mf_getFile() == _sFile)
            return pKnown.get();
    }
    g_controllers.emplace_back(new UQControllerAuthority(_sFile, _controller));
    return g_controllers.back().get();
}

} // namespace

UQSidAuthority* UQDomain::mf_getLocalComputer() {
    static UQLocalComputer s_computer;
    return &s_computer;
}

void UQDomain::mf_getDomainControllers(UQArray<UQSidAuthority*, UQSidAuthority*>& _rControllers) {
    static const wchar_t* const _sFunction_ = L"UQDomain::mf_getDomainControllers";
    const CString sFile = mf_getDirectoryFile();
    if (sFile.IsEmpty())
        return;
    const UQDirectoryFile::Result result = UQDirectoryFile::mf_read(sFile);
    for (const UQErrno& error : result.errors) {
        UQKorReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Directory line skipped: %s",
                            error.mf_getDetail());
    }
    std::lock_guard<std::mutex> lock(g_lock);
    for (const UQDirectoryController& controller : result.controllers)
        _rControllers.Add(controllerFor(sFile, controller));
}

void UQDomain::mf_setDirectoryFile(const CString& _sFile) {
    std::lock_guard<std::mutex> lock(g_lock);
    g_sDirectoryFile = _sFile;
}

CString UQDomain::mf_getDirectoryFile() {
    {
        std::lock_guard<std::mutex> lock(g_lock);
        if (!g_sDirectoryFile.IsEmpty())
            return g_sDirectoryFile;
    }
    return environmentFile();
}
