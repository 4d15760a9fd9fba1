#include "guibase/settings/UQGuiBrowseDialog.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/settings/ShellIdList.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "interfaces/korutil.h"

#include <commdlg.h>
#include <shellapi.h>
#include <shlobj.h>

#include <cwchar>
#include <vector>

namespace {

const unsigned TEXT_SELECT_FILE = 653;
const unsigned TEXT_SELECT_FOLDER = 654;
const unsigned TEXT_ALL_FILES = 3026;
const unsigned TEXT_LISTING_EXCERPTS = 3888;
const unsigned TEXT_SELECT_OPTION_FILE = 4337;
const unsigned TEXT_SAVE_EXCERPT = 4343;
const unsigned TEXT_OPTION_FILES = 4502;
const wchar_t* const OPTION_EXTENSION = L"opt";
const wchar_t* const EXCERPT_EXTENSION = L"lxf";

const DWORD COMMON_DIALOG_FLAGS = OFN_HIDEREADONLY | OFN_NONETWORKBUTTON | OFN_EXPLORER | OFN_DONTADDTORECENT;
// The file name the dialogs are told they may write: the buffer holds that many characters.
const DWORD FILE_NAME_CHARACTERS = 520;
const std::size_t FILTER_CHARACTERS = 256;

// What the folder picker's callback needs.
struct BrowseState {
    CString sTitle;
    CString sPath;
    int bFiles;
};

LPITEMIDLIST computerToIdList() {
    static const wchar_t* const _sFunction_ = L"UQGuiBrowseDialog::mf_implComputerToIdList";
    LPITEMIDLIST pIdList = nullptr;
    const HRESULT hr = SHGetFolderLocation(nullptr, CSIDL_DRIVES, nullptr, 0, &pIdList);
    if (FAILED(hr)) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure retrieving id-list of computer-folder:\r\n%sResult value: 0x%p",
                         UQLog::TAB, reinterpret_cast<const void*>(static_cast<INT_PTR>(hr)));
        return nullptr;
    }
    return pIdList;
}

int isFolder(LPCITEMIDLIST _pIdList) {
    static const wchar_t* const _sFunction_ = L"UQGuiBrowseDialog::mf_implIsFolder";
    SHFILEINFOW info;
    ZeroMemory(&info, sizeof info);
    info.dwAttributes = SFGAO_FOLDER;
    const DWORD_PTR uResult = SHGetFileInfoW(reinterpret_cast<LPCWSTR>(_pIdList), 0, &info, sizeof info,
                                             SHGFI_PIDL | SHGFI_ATTRIBUTES | SHGFI_ATTR_SPECIFIED);
    if (uResult == 0) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting file info from id-list, result=0x%p",
                         reinterpret_cast<const void*>(uResult));
        return 0;
    }
    return (info.dwAttributes & SFGAO_FOLDER) != 0 ? 1 : 0;
}

CString idListToPath(LPCITEMIDLIST _pIdList) {
    static const wchar_t* const _sFunction_ = L"UQGuiBrowseDialog::mf_implIdListToPath";
    if (_pIdList == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"NULL == _pIdList");
    std::vector<wchar_t> buffer(MAX_PATH + 1, L'\0');
    if (!SHGetPathFromIDListW(_pIdList, buffer.data())) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure getting path from id-list");
        return CString();
    }
    return CString(buffer.data());
}

int CALLBACK browseCallback(HWND _hWnd, UINT _uMsg, LPARAM _lParam, LPARAM _lData) {
    const BrowseState* pState = reinterpret_cast<const BrowseState*>(_lData);
    try {
        if (_uMsg == BFFM_INITIALIZED) {
            if (!pState->sTitle.IsEmpty())
                SetWindowTextW(_hWnd, pState->sTitle);
            if (!pState->sPath.IsEmpty())
                SendMessageW(_hWnd, BFFM_SETSELECTIONW, TRUE,
                             reinterpret_cast<LPARAM>(static_cast<const wchar_t*>(pState->sPath)));
        } else if (_uMsg == BFFM_SELCHANGED && pState->bFiles) {
            SendMessageW(_hWnd, BFFM_ENABLEOK, 0, isFolder(reinterpret_cast<LPCITEMIDLIST>(_lParam)) ? 0 : 1);
        }
    } catch (...) {
        // Nothing leaves a callback of the shell.
    }
    return 0;
}

// The filter of a common file dialog: the files of one extension first (preselected), then all files.
std::vector<wchar_t> filterFor(unsigned _uLabel, const wchar_t* _pszExtension) {
    CString sFirst;
    sFirst.Format(L"%s (*.%s)", static_cast<const wchar_t*>(UQString(_uLabel)), _pszExtension);
    CString sFirstPattern;
    sFirstPattern.Format(L"*.%s", _pszExtension);
    CString sAll;
    sAll.Format(L"%s (*.*)", static_cast<const wchar_t*>(UQString(TEXT_ALL_FILES)));
    std::vector<wchar_t> filter(FILTER_CHARACTERS, L'\0');
    std::size_t uAt = 0;
    for (const CString& sPart : {sFirst, sFirstPattern, sAll, CString(L"*.*")}) {
        // Two NULs end the list: a part that would not leave room for them is cut.
        for (int i = 0; i < sPart.GetLength() && uAt + 2 < FILTER_CHARACTERS; ++i)
            filter[uAt++] = sPart[i];
        if (uAt + 2 < FILTER_CHARACTERS)
            ++uAt;
    }
    return filter;
}

std::vector<wchar_t> fileNameBuffer(const CString& _sProposed) {
    std::vector<wchar_t> buffer(FILE_NAME_CHARACTERS, L'\0');
    for (int i = 0; i < _sProposed.GetLength() && static_cast<std::size_t>(i) + 1 < buffer.size(); ++i)
        buffer[static_cast<std::size_t>(i)] = _sProposed[i];
    return buffer;
}

OPENFILENAMEW commonDialog(HWND _hOwner, const std::vector<wchar_t>& _filter, std::vector<wchar_t>& _fileName,
                           const CString& _sInitialDirectory, const CString& _sTitle) {
    OPENFILENAMEW ofn;
    ZeroMemory(&ofn, sizeof ofn);
    ofn.lStructSize = sizeof ofn;
    ofn.hwndOwner = _hOwner;
    ofn.lpstrFilter = _filter.data();
    ofn.nFilterIndex = 1;
    ofn.lpstrFile = _fileName.data();
    ofn.nMaxFile = FILE_NAME_CHARACTERS;
    ofn.lpstrInitialDir =
        _sInitialDirectory.IsEmpty() ? nullptr : static_cast<const wchar_t*>(_sInitialDirectory);
    ofn.lpstrTitle = _sTitle;
    ofn.Flags = COMMON_DIALOG_FLAGS;
    return ofn;
}

} // namespace

int UQGuiBrowseDialog::mf_implBrowse(HWND _hOwner, const CString& _sTitle, const CString& _sPrompt,
                                     const CString& _sRoot, int _bEditBox, int _bFiles, CString& _rsPath) {
    static const wchar_t* const _sFunction_ = L"UQGuiBrowseDialog::mf_implBrowse";
    uqshell::ComApartment com(_sFunction_, COINIT_APARTMENTTHREADED);
    LPITEMIDLIST pRoot = !_sRoot.IsEmpty() ? uqshell::pathToIdList(_sRoot) : computerToIdList();

    UINT uFlags = BIF_NEWDIALOGSTYLE | (_bFiles ? BIF_BROWSEINCLUDEFILES : BIF_RETURNONLYFSDIRS);
    if (_bEditBox)
        uFlags |= BIF_EDITBOX;
    BrowseState state;
    state.sTitle =
        !_sTitle.IsEmpty() ? _sTitle : CString(UQString(_bFiles ? TEXT_SELECT_FILE : TEXT_SELECT_FOLDER));
    state.sPath = _rsPath;
    state.bFiles = _bFiles;
    std::vector<wchar_t> displayName(MAX_PATH + 1, L'\0');
    BROWSEINFOW info;
    ZeroMemory(&info, sizeof info);
    info.hwndOwner = _hOwner;
    info.pidlRoot = pRoot;
    info.pszDisplayName = displayName.data();
    info.lpszTitle = _sPrompt;
    info.ulFlags = uFlags;
    info.lpfn = browseCallback;
    info.lParam = reinterpret_cast<LPARAM>(&state);

    LPITEMIDLIST pChosen = SHBrowseForFolderW(&info);
    int bChosen = 0;
    if (pChosen != nullptr) {
        bChosen = 1;
        try {
            _rsPath = idListToPath(pChosen);
        } catch (const UQErrno&) {
            _rsPath.Empty();
        }
    }
    uqshell::freeIdList(pChosen);
    uqshell::freeIdList(pRoot);
    return bChosen;
}

int UQGuiBrowseDialog::mf_browseFolders(HWND _hOwner, const CString& _sTitle, const CString& _sPrompt,
                                        const CString& _sRoot, CString& _rsPath) {
    CString sPath(_rsPath);
    if (!mf_implBrowse(_hOwner, _sTitle, _sPrompt, _sRoot, 0, 0, sPath) || sPath.IsEmpty())
        return 0;
    _rsPath = UQPath::mf_normalizeDirectory(sPath);
    return 1;
}

int UQGuiBrowseDialog::mf_browseFiles(HWND _hOwner, const CString& _sTitle, const CString& _sPrompt,
                                      const CString& _sRoot, int _bEditBox, CString& _rsPath) {
    CString sPath(_rsPath);
    if (!mf_implBrowse(_hOwner, _sTitle, _sPrompt, _sRoot, _bEditBox, 1, sPath) || sPath.IsEmpty())
        return 0;
    _rsPath = sPath;
    return 1;
}

int UQGuiBrowseDialog::mf_browseOptionFiles(HWND _hOwner, CString& _rsPath) {
    static const wchar_t* const _sFunction_ = L"UQGuiBrowseDialog::mf_browseOptionFiles";
    uqshell::ComApartment com(_sFunction_, COINIT_APARTMENTTHREADED);
    const std::vector<wchar_t> filter = filterFor(TEXT_OPTION_FILES, OPTION_EXTENSION);
    const CString sStart = UQGuiRegistry::mf_getDefaultBackupOptionFilePath();
    const CString sFilePart = UQPath::mf_getFilePart(sStart);
    // The bare file part is what is tested, as the product always did.
    std::vector<wchar_t> fileName = fileNameBuffer(UQPath::mf_exists(sFilePart) ? sFilePart : CString());
    const CString sInitialDirectory = UQPath::mf_getLocationPart(sStart);
    const CString sTitle = UQString(TEXT_SELECT_OPTION_FILE);
    OPENFILENAMEW ofn = commonDialog(_hOwner, filter, fileName, sInitialDirectory, sTitle);
    if (!GetOpenFileNameW(&ofn)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No path selected, error: %lu",
                         static_cast<unsigned long>(CommDlgExtendedError()));
        _rsPath.Empty();
        return 0;
    }
    _rsPath = fileName.data();
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Path selected: '%s'", _rsPath);
    return 1;
}

CString UQGuiBrowseDialog::mf_getListingExcerptName(const CString& _sBaseName, std::time_t _tNow) {
    std::tm local;
    if (localtime_s(&local, &_tNow) != 0)
        AfxThrowInvalidArgException();
    wchar_t szStamp[128] = {0};
    if (std::wcsftime(szStamp, 128, L"%Y%m%d-%H%M%S", &local) == 0)
        szStamp[0] = L'\0';
    CString sName;
    sName.Format(L"%s-%s.%s", _sBaseName, szStamp, EXCERPT_EXTENSION);
    return sName;
}

int UQGuiBrowseDialog::mf_browseListingExcerptFiles(HWND _hOwner, const CString& _sBaseName,
                                                    CString& _rsPath) {
    return mf_browseListingExcerptFiles(_hOwner, _sBaseName, _rsPath, std::time(nullptr));
}

int UQGuiBrowseDialog::mf_browseListingExcerptFiles(HWND _hOwner, const CString& _sBaseName, CString& _rsPath,
                                                    std::time_t _tNow) {
    static const wchar_t* const _sFunction_ = L"UQGuiBrowseDialog::mf_browseListingExcerptFiles";
    uqshell::ComApartment com(_sFunction_, COINIT_APARTMENTTHREADED);
    const std::vector<wchar_t> filter = filterFor(TEXT_LISTING_EXCERPTS, EXCERPT_EXTENSION);
    const CString sInitialDirectory = UQMain::mf_getSupportPath();
    std::vector<wchar_t> fileName = fileNameBuffer(mf_getListingExcerptName(_sBaseName, _tNow));
    const CString sTitle = UQString(TEXT_SAVE_EXCERPT);
    OPENFILENAMEW ofn = commonDialog(_hOwner, filter, fileName, sInitialDirectory, sTitle);
    if (!GetSaveFileNameW(&ofn)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No path selected, error: %lu",
                         static_cast<unsigned long>(CommDlgExtendedError()));
        _rsPath.Empty();
        return 0;
    }
    _rsPath = fileName.data();
    if (UQPath::mf_getFileTypeName(_rsPath).IsEmpty()) {
        _rsPath.TrimRight(L'.');
        _rsPath += L".";
        _rsPath += EXCERPT_EXTENSION;
    }
    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Path selected: '%s'", _rsPath);
    return 1;
}
