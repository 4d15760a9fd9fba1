#include "guibase/settings/ShellIdList.h"

#include "guibase/foundation/UQReport.h"

namespace uqshell {

LPITEMIDLIST pathToIdList(const CString& _sPath) {
    static const wchar_t* const _sFunction_ = L"UQFileOpenDialog::mf_implPathToIdList";
    IShellFolder* pDesktop = nullptr;
    HRESULT hr = SHGetDesktopFolder(&pDesktop);
    if (FAILED(hr) || pDesktop == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting desktop root folder:\r\n%sReturn value: 0x%x", UQLog::TAB,
                         static_cast<unsigned>(hr));
        return nullptr;
    }
    // ParseDisplayName wants a writable name.
    CString sName(_sPath);
    LPITEMIDLIST pIdList = nullptr;
    hr = pDesktop->ParseDisplayName(nullptr, nullptr, sName.GetBuffer(), nullptr, &pIdList, nullptr);
    sName.ReleaseBuffer();
    pDesktop->Release();
    if (FAILED(hr)) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure parsing display name '%s':\r\n%sReturn value: 0x%x", _sPath, UQLog::TAB,
                         static_cast<unsigned>(hr));
        return nullptr;
    }
    return pIdList;
}

void freeIdList(LPITEMIDLIST _pIdList) noexcept {
    if (_pIdList != nullptr)
        CoTaskMemFree(_pIdList);
}

ComApartment::ComApartment(const wchar_t* _pszFunction, DWORD _dwFlags) : m_bStarted(false) {
    const HRESULT hr = CoInitializeEx(nullptr, _dwFlags);
    m_bStarted = SUCCEEDED(hr);
    if (hr != S_OK && hr != S_FALSE)
        UQReport::mf_log(UQLogData::LEVEL_W, _pszFunction, L"COM library initialization returned 0x%8.8x",
                         static_cast<unsigned>(hr));
}

ComApartment::~ComApartment() {
    if (m_bStarted)
        CoUninitialize();
}

} // namespace uqshell
