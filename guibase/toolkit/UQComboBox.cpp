#include "guibase/toolkit/UQComboBox.h"

#include "guibase/toolkit/UQToolkitReport.h"
#include "guibase/toolkit/UQWindow.h"

#include <commctrl.h>
#include <cstdint>

namespace {

// Item texts that a list read takes, in characters with the terminator.
const int LIST_BUFFER_CHARS = 512;

// A message to the control. Without a control (an item form whose item is missing) the answer is CB_ERR,
// as from a control that refuses the message: a window message to no window would answer 0, which reads
// as an index, a count or a length.
LRESULT comboMessage(HWND _hWnd, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    if (_hWnd == nullptr)
        return CB_ERR;
    return SendMessageW(_hWnd, _uMsg, _wParam, _lParam);
}

CString registryPath(const CString& _sPath) {
    return _sPath.IsEmpty() ? UQWindow::mf_getRegistryRoot() : _sPath;
}

} // namespace

int UQComboBox::mf_addText(HWND _hWnd, const CString& _sText) {
    comboMessage(_hWnd, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(_sText.GetString()));
    return 1;
}

int UQComboBox::mf_addText(HWND _hWnd, const UQArray<CString>& _asTexts) {
    for (INT_PTR i = 0; i < _asTexts.GetSize(); ++i)
        comboMessage(_hWnd, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(_asTexts[i].GetString()));
    return 1;
}

int UQComboBox::mf_addTextAndData(HWND _hWnd, const CString& _sText, const void* _pData) {
    const LRESULT nIndex = comboMessage(_hWnd, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(_sText.GetString()));
    comboMessage(_hWnd, CB_SETITEMDATA, static_cast<WPARAM>(nIndex), reinterpret_cast<LPARAM>(_pData));
    return 1;
}

void UQComboBox::mf_removeAll(HWND _hWnd) {
    comboMessage(_hWnd, CB_RESETCONTENT, 0, 0);
}

int UQComboBox::mf_getCount(HWND _hWnd) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getCount";
    const LRESULT nCount = comboMessage(_hWnd, CB_GETCOUNT, 0, 0);
    if (nCount == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure querying combobox count");
        return 0;
    }
    return static_cast<int>(nCount);
}

int UQComboBox::mf_setMinVisible(HWND _hWnd, int _nCount) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_setMinVisible";
    // A control that refuses this message answers FALSE, not CB_ERR.
    const int nAnswer =
        static_cast<int>(SendMessageW(_hWnd, CB_SETMINVISIBLE, static_cast<WPARAM>(_nCount), 0));
    if (nAnswer != 0)
        UQReport::mf_log(UQLogData::LEVEL_D, _sFunction_,
                         L"Successfully set minimum visible items of combobox to %d", _nCount);
    else
        UQReport::mf_log(UQLogData::LEVEL_D, _sFunction_,
                         L"Failure setting minimum visible items of combobox to %d", _nCount);
    return nAnswer;
}

int UQComboBox::mf_getSelection(HWND _hWnd) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getSelection";
    const LRESULT nIndex = comboMessage(_hWnd, CB_GETCURSEL, 0, 0);
    if (nIndex == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No combobox item selected");
        return -1;
    }
    return static_cast<int>(nIndex);
}

int UQComboBox::mf_getSelectionText(HWND _hWnd, CString& _rsText) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getSelectionText";
    const LRESULT nIndex = comboMessage(_hWnd, CB_GETCURSEL, 0, 0);
    if (nIndex == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No combobox item selected");
        return 0;
    }
    return mf_getText(_hWnd, static_cast<int>(nIndex), _rsText);
}

void* UQComboBox::mf_getSelectionData(HWND _hWnd) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getSelectionData";
    const LRESULT nIndex = comboMessage(_hWnd, CB_GETCURSEL, 0, 0);
    if (nIndex == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No combobox item selected");
        return nullptr;
    }
    const LRESULT nData = comboMessage(_hWnd, CB_GETITEMDATA, static_cast<WPARAM>(nIndex), 0);
    if (nData == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure querying combobox data");
        return nullptr;
    }
    return reinterpret_cast<void*>(nData);
}

void* UQComboBox::mf_getSelectionTextAndData(HWND _hWnd, CString& _rsText) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getSelectionTextAndData";
    const LRESULT nIndex = comboMessage(_hWnd, CB_GETCURSEL, 0, 0);
    if (nIndex == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No combobox item selected");
        return nullptr;
    }
    if (!mf_getText(_hWnd, static_cast<int>(nIndex), _rsText))
        return nullptr;
    const LRESULT nData = comboMessage(_hWnd, CB_GETITEMDATA, static_cast<WPARAM>(nIndex), 0);
    if (nData == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure querying combobox data");
        return nullptr;
    }
    return reinterpret_cast<void*>(nData);
}

void* UQComboBox::mf_getData(HWND _hWnd, int _nIndex) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getData";
    const LRESULT nData = comboMessage(_hWnd, CB_GETITEMDATA, static_cast<WPARAM>(_nIndex), 0);
    if (nData == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure querying combobox data");
        return nullptr;
    }
    return reinterpret_cast<void*>(nData);
}

int UQComboBox::mf_getText(HWND _hWnd, int _nIndex, CString& _rsText) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getText::1";
    const int nLimit = MAX_TEXT_LENGTH;
    const LRESULT nLength = comboMessage(_hWnd, CB_GETLBTEXTLEN, static_cast<WPARAM>(_nIndex), 0);
    if (nLength == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Could not get text length of selected combobox item with index=%d", _nIndex);
        return 0;
    }
    if (nLength > nLimit) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Length of combobox entry with index=%d exceeds %d chars", _nIndex, nLimit);
        return 0;
    }
    wchar_t szText[MAX_TEXT_LENGTH + 1] = {0};
    if (comboMessage(_hWnd, CB_GETLBTEXT, static_cast<WPARAM>(_nIndex), reinterpret_cast<LPARAM>(szText)) ==
        CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Could not get text length of selected combobox item with index=%d", _nIndex);
        return 0;
    }
    _rsText = szText;
    _rsText.Trim();
    return 1;
}

int UQComboBox::mf_getText(HWND _hWnd, UQArray<CString>& _rasTexts) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_getText::2";
    const LRESULT nCount = comboMessage(_hWnd, CB_GETCOUNT, 0, 0);
    if (nCount < 1)
        return 1;
    for (int nIndex = 0; nIndex < static_cast<int>(nCount); ++nIndex) {
        const LRESULT nLength = comboMessage(_hWnd, CB_GETLBTEXTLEN, static_cast<WPARAM>(nIndex), 0);
        if (nLength == CB_ERR || nLength >= LIST_BUFFER_CHARS) {
            // The buffer's size in bytes, named characters: the record has always read so.
            const std::uint32_t uBufferBytes = LIST_BUFFER_CHARS * sizeof(wchar_t);
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                             L"Buffer (%lu chars) too small to catch value with index=%d", uBufferBytes,
                             nIndex);
            continue;
        }
        wchar_t szText[LIST_BUFFER_CHARS] = {0};
        comboMessage(_hWnd, CB_GETLBTEXT, static_cast<WPARAM>(nIndex), reinterpret_cast<LPARAM>(szText));
        CString sText(szText);
        sText.Trim();
        _rasTexts.Add(sText);
    }
    return 1;
}

int UQComboBox::mf_selectIndex(HWND _hWnd, int _nIndex) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_selectItem::1";
    if (comboMessage(_hWnd, CB_SETCURSEL, static_cast<WPARAM>(_nIndex), 0) == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Item with index=%d not found in combobox list",
                         _nIndex);
        return 0;
    }
    return 1;
}

int UQComboBox::mf_selectText(HWND _hWnd, const CString& _sText, int _bExact) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_selectItem::2";
    if (!_bExact) {
        if (comboMessage(_hWnd, CB_SELECTSTRING, static_cast<WPARAM>(-1),
                         reinterpret_cast<LPARAM>(_sText.GetString())) == CB_ERR) {
            UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"Item '%s' not found in combobox list",
                             _sText);
            return 0;
        }
        return 1;
    }
    // Callers rely on 1 here, found or not.
    const int nCount = mf_getCount(_hWnd);
    for (int nIndex = 0; nIndex < nCount; ++nIndex) {
        CString sItem;
        if (mf_getText(_hWnd, nIndex, sItem) && sItem.Compare(_sText) == 0) {
            mf_selectIndex(_hWnd, nIndex);
            break;
        }
    }
    return 1;
}

int UQComboBox::mf_hasText(HWND _hWnd, const CString& _sText) {
    return comboMessage(_hWnd, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1),
                        reinterpret_cast<LPARAM>(_sText.GetString())) != CB_ERR
               ? 1
               : 0;
}

int UQComboBox::mf_hasIndex(HWND _hWnd, int _nIndex) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_hasIndex";
    if (_nIndex < 0) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Negative index");
        return 0;
    }
    const LRESULT nCount = comboMessage(_hWnd, CB_GETCOUNT, 0, 0);
    if (nCount == CB_ERR) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure querying combobox count");
        return 0;
    }
    return _nIndex < nCount ? 1 : 0;
}

int UQComboBox::mf_initFromRegistry(HWND _hWnd, const CString& _sListKey, const CString& _sPath,
                                    const CString& _sSelectionKey, const CString& _sDefaultText) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_initFromRegistry";
    const CString sPath = registryPath(_sPath);
    try {
        if (!UQRegistry::mf_PathExists(sPath, HKEY_CURRENT_USER))
            return 0;
    } catch (const UQErrno& e) {
        // A registry that cannot tell is taken as one without the key: the control stays as it is.
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure getting registry keys '%s':\r\n%s%s", _sListKey);
        return 0;
    }

    UQArray<CString> asList;
    try {
        UQRegistry::mf_getValues(_sListKey, asList, sPath, HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure getting registry keys '%s':\r\n%s%s", _sListKey);
    }

    if (asList.GetSize() == 0) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"No list values found in '%s\\%s'", sPath,
                         _sListKey);
        if (_sDefaultText.IsEmpty())
            return 0;
        comboMessage(_hWnd, CB_RESETCONTENT, 0, 0);
        comboMessage(_hWnd, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(_sDefaultText.GetString()));
        mf_selectIndex(_hWnd, 0);
        return 1;
    }

    // The first occurrence of each entry keeps its place.
    for (INT_PTR i = 0; i < asList.GetSize(); ++i) {
        for (INT_PTR j = asList.GetSize() - 1; j > i; --j) {
            if (asList[j].Compare(asList[i]) == 0)
                asList.RemoveAt(j);
        }
    }

    try {
        comboMessage(_hWnd, CB_RESETCONTENT, 0, 0);
        mf_addText(_hWnd, asList);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(
            e, _sFunction_, L"Failure setting combobox text items (registry key '%s'):\r\n%s%s", _sListKey);
    }

    if (!_sSelectionKey.IsEmpty()) {
        CString sValue;
        try {
            UQRegistry::mf_getValue(_sSelectionKey, sValue, sPath, HKEY_CURRENT_USER);
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure getting registry selection key '%s':\r\n%s%s",
                                    _sSelectionKey);
        }
        try {
            // Exact selection answers 1 even when nothing matched: only an empty value falls back to the
            // first entry.
            if (sValue.IsEmpty() || !mf_selectText(_hWnd, sValue, 1)) {
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                 L"Selecting 1st index instead of registry selection value '%s'", sValue);
                mf_selectIndex(_hWnd, 0);
            }
        } catch (const UQErrno& e) {
            UQReport::mf_logWrapped(e, _sFunction_,
                                    L"Failure selecting combobox text item '%s' (registry key '%s'):\r\n%s%s",
                                    sValue, _sSelectionKey);
        }
    }
    return 1;
}

int UQComboBox::mf_saveToRegistry(HWND _hWnd, const CString& _sListKey, const CString& _sPath,
                                  const CString& _sSelectionKey) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_saveToRegistry";
    const CString sPath = registryPath(_sPath);
    CString sCurrent;
    UQArray<CString> asList;
    int nSelection = -1;
    try {
        UQWindow::mf_getText(_hWnd, sCurrent);
        mf_getText(_hWnd, asList);
        nSelection = mf_getSelection(_hWnd);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(
            e, _sFunction_, L"Failure getting combobox text items (registry key '%s'):\r\n%s%s", _sListKey);
        return 0;
    }

    // A text typed into the edit field becomes the last entry.
    if (nSelection < 0)
        asList.Add(sCurrent);

    try {
        UQRegistry::mf_setValues(_sListKey, asList, sPath, HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry keys '%s':\r\n%s%s", _sListKey);
    }
    if (!_sSelectionKey.IsEmpty()) {
        try {
            UQRegistry::mf_setValue(_sSelectionKey, sCurrent, 0, sPath, HKEY_CURRENT_USER);
        } catch (const UQErrno& e) {
            // Names the list key, as the record always has.
            UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting registry keys '%s':\r\n%s%s",
                                    _sListKey);
        }
    }
    return 1;
}

int UQComboBox::mf_addItemText(HWND _hDlg, int _nId, const CString& _sText) {
    return mf_addText(UQWindow::mf_getItem(_hDlg, _nId), _sText);
}

int UQComboBox::mf_addItemText(HWND _hDlg, int _nId, const UQArray<CString>& _asTexts) {
    return mf_addText(UQWindow::mf_getItem(_hDlg, _nId), _asTexts);
}

int UQComboBox::mf_addItemTextAndData(HWND _hDlg, int _nId, const CString& _sText, const void* _pData) {
    return mf_addTextAndData(UQWindow::mf_getItem(_hDlg, _nId), _sText, _pData);
}

void UQComboBox::mf_removeItemAll(HWND _hDlg, int _nId) {
    mf_removeAll(UQWindow::mf_getItem(_hDlg, _nId));
}

int UQComboBox::mf_getItemCount(HWND _hDlg, int _nId) {
    return mf_getCount(UQWindow::mf_getItem(_hDlg, _nId));
}

int UQComboBox::mf_setItemMinVisible(HWND _hDlg, int _nId, int _nCount) {
    return mf_setMinVisible(UQWindow::mf_getItem(_hDlg, _nId), _nCount);
}

int UQComboBox::mf_getItemSelection(HWND _hDlg, int _nId) {
    return mf_getSelection(UQWindow::mf_getItem(_hDlg, _nId));
}

int UQComboBox::mf_getItemSelectionText(HWND _hDlg, int _nId, CString& _rsText) {
    return mf_getSelectionText(UQWindow::mf_getItem(_hDlg, _nId), _rsText);
}

void* UQComboBox::mf_getItemSelectionData(HWND _hDlg, int _nId) {
    return mf_getSelectionData(UQWindow::mf_getItem(_hDlg, _nId));
}

void* UQComboBox::mf_getItemSelectionTextAndData(HWND _hDlg, int _nId, CString& _rsText) {
    return mf_getSelectionTextAndData(UQWindow::mf_getItem(_hDlg, _nId), _rsText);
}

void* UQComboBox::mf_getItemData(HWND _hDlg, int _nId, int _nIndex) {
    return mf_getData(UQWindow::mf_getItem(_hDlg, _nId), _nIndex);
}

int UQComboBox::mf_getItemText(HWND _hDlg, int _nId, int _nIndex, CString& _rsText) {
    return mf_getText(UQWindow::mf_getItem(_hDlg, _nId), _nIndex, _rsText);
}

int UQComboBox::mf_getItemText(HWND _hDlg, int _nId, UQArray<CString>& _rasTexts) {
    return mf_getText(UQWindow::mf_getItem(_hDlg, _nId), _rasTexts);
}

int UQComboBox::mf_selectItemIndex(HWND _hDlg, int _nId, int _nIndex) {
    return mf_selectIndex(UQWindow::mf_getItem(_hDlg, _nId), _nIndex);
}

int UQComboBox::mf_selectItemText(HWND _hDlg, int _nId, const CString& _sText, int _bExact) {
    return mf_selectText(UQWindow::mf_getItem(_hDlg, _nId), _sText, _bExact);
}

int UQComboBox::mf_hasItemText(HWND _hDlg, int _nId, const CString& _sText) {
    return mf_hasText(UQWindow::mf_getItem(_hDlg, _nId), _sText);
}

int UQComboBox::mf_hasItemIndex(HWND _hDlg, int _nId, int _nIndex) {
    return mf_hasIndex(UQWindow::mf_getItem(_hDlg, _nId), _nIndex);
}

int UQComboBox::mf_initItemFromRegistry(HWND _hDlg, int _nId, const CString& _sListKey, const CString& _sPath,
                                        const CString& _sSelectionKey, const CString& _sDefaultText) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_initItemFromRegistry";
    HWND hItem = UQWindow::mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItemOnOneLine(_sFunction_, _nId);
        return 0;
    }
    return mf_initFromRegistry(hItem, _sListKey, _sPath, _sSelectionKey, _sDefaultText);
}

int UQComboBox::mf_saveItemToRegistry(HWND _hDlg, int _nId, const CString& _sListKey, const CString& _sPath,
                                      const CString& _sSelectionKey) {
    static const wchar_t* const _sFunction_ = L"UQComboBox::mf_saveItemToRegistry";
    HWND hItem = UQWindow::mf_getItem(_hDlg, _nId);
    if (hItem == nullptr) {
        UQToolkitReport::mf_logMissingItemOnOneLine(_sFunction_, _nId);
        return 0;
    }
    return mf_saveToRegistry(hItem, _sListKey, _sPath, _sSelectionKey);
}
