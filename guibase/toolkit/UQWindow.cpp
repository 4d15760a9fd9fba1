#include "guibase/toolkit/UQWindow.h"

#include "guibase/toolkit/UQDpiIcons.h"
#include "guibase/toolkit/UQToolkitReport.h"

#include <cstdio>
#include <vector>

CString UQWindow::m_sRegistryRoot;

namespace {

// A handle form that makes one Win32 call: success when the call left no error behind.
int logIfFailed(const wchar_t* _pszFunction, const UQErrnoValue& _value, const wchar_t* _pszFormat,
                const wchar_t* _pszAction) {
    if (GetLastError() == 0)
        return 1;
    const UQErrno error = UQReport::mf_systemError(_value);
    if (_pszAction != nullptr)
        UQReport::mf_logWrapped(error, _pszFunction, _pszFormat, _pszAction);
    else
        UQReport::mf_logWrapped(error, _pszFunction, _pszFormat);
    return 0;
}

} // namespace

HWND UQWindow::mf_getItem(HWND _hDlg, int _nId) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_getItem";
    SetLastError(0);
    HWND hItem = GetDlgItem(_hDlg, _nId);
    if (hItem == nullptr) {
        const UQErrno error = UQReport::mf_systemError(UQErrno::_E_::ItemNotFound);
        UQReport::mf_logWrapped(error, _sFunction_, L"Failure getting item with id=%d:\r\n%s%s", _nId);
        // The item forms report the same error after this record.
        SetLastError(error.mf_getSystemError());
    }
    return hItem;
}

int UQWindow::mf_hasItem(HWND _hDlg, int _nId) {
    // Reports under the lookup's name, as the lookup it stands for.
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_getItem";
    SetLastError(0);
    if (GetDlgItem(_hDlg, _nId) != nullptr)
        return 1;
    const DWORD dwError = GetLastError();
    // Windows names a missing id with ERROR_CONTROL_ID_NOT_FOUND; Wine leaves the last error at 0. Both
    // mean that the dialog has no such item.
    if (dwError == ERROR_CONTROL_ID_NOT_FOUND || dwError == 0)
        return 0;
    UQReport::mf_logWrapped(UQReport::mf_systemError(UQErrno::_E_::ItemNotFound), _sFunction_,
                            L"Failure checking item existence, id=%d:\r\n%s%s", _nId);
    return 0;
}

int UQWindow::mf_enable(HWND _hWnd, int _bEnable) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_enable";
    SetLastError(0);
    EnableWindow(_hWnd, _bEnable ? TRUE : FALSE);
    return logIfFailed(_sFunction_, UQErrno::_E_::Gui, L"Failure %s window:\r\n%s%s",
                       _bEnable ? L"enabling" : L"disabling");
}

int UQWindow::mf_enableItem(HWND _hDlg, int _nId, int _bEnable) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_enableItem";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_enable(hItem, _bEnable);
}

int UQWindow::mf_hide(HWND _hWnd, int _bHide) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_hide";
    SetLastError(0);
    ShowWindow(_hWnd, _bHide ? SW_HIDE : SW_SHOWNORMAL);
    // Wine leaves ERROR_ACCESS_DENIED after showing a child window, which cannot be activated, though the
    // window is shown: a window that is in the state asked for has been shown or hidden.
    if (GetLastError() != 0 && IsWindow(_hWnd) &&
        ((GetWindowLongW(_hWnd, GWL_STYLE) & WS_VISIBLE) != 0) == !_bHide)
        SetLastError(0);
    return logIfFailed(_sFunction_, UQErrno::_E_::Gui, L"Failure %s window:\r\n%s%s",
                       _bHide ? L"hiding" : L"showing");
}

int UQWindow::mf_hideItem(HWND _hDlg, int _nId, int _bHide) {
    // Reports under the name of the operation it was written from.
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_enableItem";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_hide(hItem, _bHide);
}

int UQWindow::mf_focus(HWND _hWnd) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_focus";
    SetLastError(0);
    SetFocus(_hWnd);
    return logIfFailed(_sFunction_, UQErrno::_E_::Gui, L"Failure focusing window:\r\n%s%s", nullptr);
}

int UQWindow::mf_focusItem(HWND _hDlg, int _nId) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_focusItem";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_focus(hItem);
}

int UQWindow::mf_setText(HWND _hWnd, const CString& _sText) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_setText";
    SetLastError(0);
    if (SetWindowTextW(_hWnd, _sText))
        return 1;
    UQReport::mf_logWrapped(UQReport::mf_systemError(UQErrno::_E_::ItemNotFound), _sFunction_,
                            L"Failure setting window text:\r\n%s%s");
    return 0;
}

int UQWindow::mf_setItemText(HWND _hDlg, int _nId, const CString& _sText) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_setItemText";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_setText(hItem, _sText);
}

void UQWindow::mf_getText(HWND _hWnd, CString& _rsText) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_getText";
    _rsText.Empty();
    SetLastError(0);
    const int nLength = GetWindowTextLengthW(_hWnd);
    if (nLength == 0 && GetLastError() != 0) {
        UQReport::mf_logError(UQLogData::LEVEL_D, UQReport::mf_systemError(UQErrno::_W_::ItemNotFound),
                              _sFunction_, L"Window text length is 0, errno:\r\n%s%s");
        return;
    }
    std::vector<wchar_t> buffer(static_cast<std::size_t>(nLength) + 1, L'\0');
    SetLastError(0);
    const int nGot = GetWindowTextW(_hWnd, buffer.data(), nLength + 1);
    if (nGot != nLength) {
        UQReport::mf_logError(UQLogData::LEVEL_D, UQReport::mf_systemError(UQErrno::_E_::BufferTooSmall),
                              _sFunction_, L"Failure getting window text:\r\n%s%s");
        _rsText = L"<failure getting window text>";
        return;
    }
    _rsText = buffer.data();
}

void UQWindow::mf_getItemText(HWND _hDlg, int _nId, CString& _rsText) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_getItemText";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        _rsText = L"<item not found>";
    }
    // Also with a missing item, which empties the text again: callers get an empty string.
    mf_getText(hItem, _rsText);
}

int UQWindow::mf_hasText(HWND _hWnd) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_hasText";
    SetLastError(0);
    if (GetWindowTextLengthW(_hWnd) != 0)
        return 1;
    if (GetLastError() == 0)
        return 0;
    const UQErrno error = UQReport::mf_systemError(UQErrno::_W_::ItemNotFound);
    UQReport::mf_logWrapped(error, _sFunction_, L"Window text length is 0, errno:\r\n%s%s");
    throw error;
}

int UQWindow::mf_hasItemText(HWND _hDlg, int _nId) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_hasItemText";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        const UQErrno error = UQReport::mf_systemError(UQErrno::_E_::ItemNotFound);
        UQReport::mf_logWrapped(error, _sFunction_, L"Failure getting item with id=%d:\r\n%s%s", _nId);
        throw error;
    }
    return mf_hasText(hItem);
}

int UQWindow::mf_getNumber(HWND _hWnd) {
    CString sText;
    mf_getText(_hWnd, sText);
    const CString sNumber = UQNumberFormatter::mf_normalizeNumber(sText);
    int nNumber = 0;
    if (std::swscanf(sNumber.GetString(), L"%d", &nNumber) != 1)
        return 0;
    return nNumber;
}

int UQWindow::mf_getItemNumber(HWND _hDlg, int _nId) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_getItemNumber";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_getNumber(hItem);
}

int UQWindow::mf_setNumber(HWND _hWnd, int _nNumber) {
    return mf_setText(_hWnd, UQNumberFormatter::mf_formatNumber(_nNumber));
}

int UQWindow::mf_setItemNumber(HWND _hDlg, int _nId, int _nNumber) {
    // Formats first: a missing item is reported by mf_setItemText.
    return mf_setItemText(_hDlg, _nId, UQNumberFormatter::mf_formatNumber(_nNumber));
}

int UQWindow::mf_setIcon(HWND _hWnd, WORD _wIconId) {
    // The small icon size of the window's DPI; the window keeps the icon and destroys it with itself.
    return UQDpiIcons::mf_show(_hWnd, UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT), _wIconId, 16);
}

int UQWindow::mf_setItemIcon(HWND _hDlg, int _nId, WORD _wIconId) {
    // Reports under the handle form's name.
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_setIcon";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_setIcon(hItem, _wIconId);
}

HFONT UQWindow::mf_setFontAttributes(HWND _hWnd, int _bBold, int _bUnderline) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_setFontAttributes";
    LOGFONTW lf;
    ZeroMemory(&lf, sizeof lf);
    HFONT hFont = reinterpret_cast<HFONT>(SendMessageW(_hWnd, WM_GETFONT, 0, 0));
    SetLastError(0);
    if (GetObjectW(hFont, sizeof lf, &lf) == 0) {
        UQReport::mf_logError(UQLogData::LEVEL_G, UQReport::mf_systemError(UQErrno::_E_::Gui), _sFunction_,
                              L"Failure getting original font information:\r\n%s%s");
        return nullptr;
    }
    lf.lfWeight = _bBold ? FW_BOLD : FW_NORMAL;
    lf.lfUnderline = _bUnderline ? 1 : 0;
    HFONT hNewFont = CreateFontIndirectW(&lf);
    SendMessageW(_hWnd, WM_SETFONT, reinterpret_cast<WPARAM>(hNewFont), FALSE);
    return hNewFont;
}

HFONT UQWindow::mf_setItemFontAttributes(HWND _hDlg, int _nId, int _bBold, int _bUnderline) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_setItemFontAttributes";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return nullptr;
    }
    return mf_setFontAttributes(hItem, _bBold, _bUnderline);
}

int UQWindow::mf_getTextWidth(HWND _hWnd, const CString& _sText) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_getTextWidth";
    HDC hDC = GetDC(_hWnd);
    if (hDC == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                         L"Failure getting device context from window handle (string '%s'", _sText);
        return 0;
    }
    SIZE size = {0, 0};
    if (!GetTextExtentPoint32W(hDC, _sText, _sText.GetLength(), &size)) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure getting size for string '%s'", _sText);
        ReleaseDC(_hWnd, hDC);
        return 0;
    }
    UQReport::mf_log(UQLogData::LEVEL_D, _sFunction_, L"Width of string '%s': %d", _sText,
                     static_cast<int>(size.cx));
    TEXTMETRICW tm;
    ZeroMemory(&tm, sizeof tm);
    GetTextMetricsW(hDC, &tm);
    // The device context is not released on this path; kept as the product has always done it.
    return static_cast<int>(size.cx - tm.tmOverhang);
}

void UQWindow::mf_setRegistryRoot(const UQBackend& _backend) {
    if (_backend == UQBackend::NONE)
        m_sRegistryRoot.Empty();
    else
        m_sRegistryRoot = UQRegistry::mf_getRegistryRoot(UQBackend::mf_getPrefix(_backend));
    // mf_saveToRegistry writes to the registry service's empty key path; it has to name the same key.
    UQRegistry::mf_setUserKey(m_sRegistryRoot);
}

const CString& UQWindow::mf_getRegistryRoot() noexcept {
    return m_sRegistryRoot;
}

int UQWindow::mf_initFromRegistry(HWND _hWnd, const CString& _sValueName) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_initFromRegistry";
    CString sText;
    try {
        UQRegistry::mf_getValue(_sValueName, sText, m_sRegistryRoot, HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure getting registry keys '%s':\r\n%s%s", _sValueName);
    }
    // Also after a failure: a missing value empties the window.
    try {
        mf_setText(_hWnd, sText);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting text item (registry key '%s'):\r\n%s%s",
                                _sValueName);
    }
    return 1;
}

int UQWindow::mf_initItemFromRegistry(HWND _hDlg, int _nId, const CString& _sValueName) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_initItemFromRegistry";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_initFromRegistry(hItem, _sValueName);
}

int UQWindow::mf_saveToRegistry(HWND _hWnd, const CString& _sValueName) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_saveToRegistry";
    CString sText;
    try {
        mf_getText(_hWnd, sText);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure getting text item (registry key '%s'):\r\n%s%s",
                                _sValueName);
        return 0;
    }
    try {
        // The empty key path: the registry service's per-user key, which mf_setRegistryRoot has made the
        // key that mf_initFromRegistry reads under m_sRegistryRoot.
        UQRegistry::mf_setValue(_sValueName, sText, 0, CString(), HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry key '%s':\r\n%s%s", _sValueName);
    }
    return 1;
}

int UQWindow::mf_saveItemToRegistry(HWND _hDlg, int _nId, const CString& _sValueName) {
    static const wchar_t* const _sFunction_ = L"UQWindow::mf_saveItemToRegistry";
    HWND hItem = mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItem(_sFunction_, _nId);
        return 0;
    }
    return mf_saveToRegistry(hItem, _sValueName);
}
