#include "guibase/settings/UQFileOpenDialog.h"

#include "guibase/foundation/UQReport.h"

#include <shobjidl.h>

namespace {

const HRESULT CANCELLED = HRESULT_FROM_WIN32(ERROR_CANCELLED);
const DWORD COM_FLAGS = COINIT_APARTMENTTHREADED | COINIT_DISABLE_OLE1DDE;

} // namespace

UQFileOpenDialog::UQFileOpenDialog() : m_pDialog(nullptr) {
    static const wchar_t* const _sFunction_ = L"UQFileOpenDialog::UQFileOpenDialog";
    HRESULT hr = CoInitializeEx(nullptr, COM_FLAGS);
    if (FAILED(hr)) {
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_,
                          L"Failure initializing COM library:\r\n%sReturn value: %ld", UQLog::TAB,
                          static_cast<long>(hr));
    }
    hr = CoCreateInstance(CLSID_FileOpenDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IFileOpenDialog,
                          reinterpret_cast<void**>(&m_pDialog));
    if (FAILED(hr) || m_pDialog == nullptr) {
        // The destructor does not run for an object whose constructor threw.
        CoUninitialize();
        UQReport::mf_fail(UQErrno::_E_::Gui, _sFunction_,
                          L"Failure creating file dialog instance:\r\n%sReturn value: 0x%x", UQLog::TAB,
                          static_cast<unsigned>(hr));
    }
}

UQFileOpenDialog::UQFileOpenDialog(const UQFileOpenDialog& _other) : m_pDialog(_other.m_pDialog) {
    // Each object holds one start of COM and one reference, released by its own destructor.
    CoInitializeEx(nullptr, COM_FLAGS);
    if (m_pDialog != nullptr)
        m_pDialog->AddRef();
}

UQFileOpenDialog& UQFileOpenDialog::operator=(const UQFileOpenDialog& _other) {
    if (_other.m_pDialog != nullptr)
        _other.m_pDialog->AddRef();
    if (m_pDialog != nullptr)
        m_pDialog->Release();
    m_pDialog = _other.m_pDialog;
    return *this;
}

UQFileOpenDialog::~UQFileOpenDialog() {
    if (m_pDialog != nullptr)
        m_pDialog->Release();
    CoUninitialize();
}

int UQFileOpenDialog::mf_implSetStartFolder(const CString&) {
    return 0;
}

int UQFileOpenDialog::mf_show(HWND _hOwner, const CString& _sTitle, const CString& _sFolder) {
    static const wchar_t* const _sFunction_ = L"UQFileOpenDialog::mf_show";
    mf_implSetStartFolder(_sFolder);
    m_pDialog->SetTitle(_sTitle);
    FILEOPENDIALOGOPTIONS options = 0;
    m_pDialog->GetOptions(&options);
    m_pDialog->SetOptions(options | FOS_FORCEFILESYSTEM | FOS_HIDEMRUPLACES | FOS_HIDEPINNEDPLACES);
    const HRESULT hr = m_pDialog->Show(_hOwner);
    if (hr == S_OK)
        return 1;
    if (hr == CANCELLED)
        return 0;
    UQReport::mf_fail(UQErrno::_E_::Gui, _sFunction_, L"Failure showing file dialog:\r\n%sReturn value: 0x%x",
                      UQLog::TAB, static_cast<unsigned>(hr));
}

CString UQFileOpenDialog::mf_getPath() {
    static const wchar_t* const _sFunction_ = L"UQFileOpenDialog::mf_getPath";
    IShellItem* pItem = nullptr;
    HRESULT hr = m_pDialog->GetResult(&pItem);
    if (FAILED(hr) || pItem == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting file dialog result:\r\n%sReturn value: 0x%x", UQLog::TAB,
                         static_cast<unsigned>(hr));
        return CString();
    }
    wchar_t* pszPath = nullptr;
    hr = pItem->GetDisplayName(SIGDN_FILESYSPATH, &pszPath);
    pItem->Release();
    if (FAILED(hr) || pszPath == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting display name from file dialog result:\r\n%sReturn value: 0x%x",
                         UQLog::TAB, static_cast<unsigned>(hr));
        return CString();
    }
    const CString sPath(pszPath);
    CoTaskMemFree(pszPath);
    return sPath;
}
