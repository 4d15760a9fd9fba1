#pragma once

#include "interfaces/korbase.h"

// Drop-down combo boxes: items with optional data, selection, item texts (trimmed; at most 255 characters
// by index, below 512 in lists), and a list of entries with the last chosen one kept in the user's
// registry. Every operation has a handle form and an item form (dialog handle and item id in front, Item
// in the name). Apart from the registry pair, the item forms hand the looked-up handle on without testing
// it, so a missing control answers like one that refuses every message. Nothing throws.
class KORGUIBASE_API UQComboBox {
public:
    // The longest item text that mf_getText reads by index.
    static const int MAX_TEXT_LENGTH = 255;

    UQComboBox() noexcept = default;
    UQComboBox(const UQComboBox&) noexcept = default;
    UQComboBox& operator=(const UQComboBox&) noexcept = default;
    ~UQComboBox() = default;

    // Always 1.
    static int mf_addText(HWND _hWnd, const CString& _sText);
    static int mf_addText(HWND _hWnd, const UQArray<CString>& _asTexts);
    static int mf_addTextAndData(HWND _hWnd, const CString& _sText, const void* _pData);
    static void mf_removeAll(HWND _hWnd);
    // 0 when the count cannot be read.
    static int mf_getCount(HWND _hWnd);
    static int mf_setMinVisible(HWND _hWnd, int _nCount);
    // -1 when nothing is selected.
    static int mf_getSelection(HWND _hWnd);
    static int mf_getSelectionText(HWND _hWnd, CString& _rsText);
    // Null when nothing is selected or the data cannot be read.
    static void* mf_getSelectionData(HWND _hWnd);
    static void* mf_getSelectionTextAndData(HWND _hWnd, CString& _rsText);
    static void* mf_getData(HWND _hWnd, int _nIndex);
    // The item's text, trimmed; 0, with _rsText unchanged, when it is longer than MAX_TEXT_LENGTH.
    static int mf_getText(HWND _hWnd, int _nIndex, CString& _rsText);
    // Appends every item text below 512 characters, trimmed; longer ones are logged and skipped. Always 1.
    static int mf_getText(HWND _hWnd, UQArray<CString>& _rasTexts);
    // 0 for an index that names no item; -1 clears the selection and answers 0.
    static int mf_selectIndex(HWND _hWnd, int _nIndex);
    // _bExact: the first item equal to _sText (case-sensitive), and the answer is 1 whether one was found
    // or not. Otherwise the control's own search (a case-blind prefix), 0 when nothing matched.
    static int mf_selectText(HWND _hWnd, const CString& _sText, int _bExact);
    static int mf_hasText(HWND _hWnd, const CString& _sText);
    static int mf_hasIndex(HWND _hWnd, int _nIndex);

    // Fills the control from the list value _sListKey under _sPath (empty: UQWindow::mf_getRegistryRoot())
    // in HKEY_CURRENT_USER, without duplicates, and selects the entry named by the value _sSelectionKey.
    // 0, leaving the control as it was, when the key does not exist, or when there is no list and no
    // default text.
    static int mf_initFromRegistry(HWND _hWnd, const CString& _sListKey, const CString& _sPath,
                                   const CString& _sSelectionKey, const CString& _sDefaultText);
    // Writes the entries (with a typed text that is no entry appended last) and the current text; 1 even
    // when a write failed (it is logged), 0 when the control could not be read.
    static int mf_saveToRegistry(HWND _hWnd, const CString& _sListKey, const CString& _sPath,
                                 const CString& _sSelectionKey);

    static int mf_addItemText(HWND _hDlg, int _nId, const CString& _sText);
    static int mf_addItemText(HWND _hDlg, int _nId, const UQArray<CString>& _asTexts);
    static int mf_addItemTextAndData(HWND _hDlg, int _nId, const CString& _sText, const void* _pData);
    static void mf_removeItemAll(HWND _hDlg, int _nId);
    static int mf_getItemCount(HWND _hDlg, int _nId);
    static int mf_setItemMinVisible(HWND _hDlg, int _nId, int _nCount);
    static int mf_getItemSelection(HWND _hDlg, int _nId);
    static int mf_getItemSelectionText(HWND _hDlg, int _nId, CString& _rsText);
    static void* mf_getItemSelectionData(HWND _hDlg, int _nId);
    static void* mf_getItemSelectionTextAndData(HWND _hDlg, int _nId, CString& _rsText);
    static void* mf_getItemData(HWND _hDlg, int _nId, int _nIndex);
    static int mf_getItemText(HWND _hDlg, int _nId, int _nIndex, CString& _rsText);
    static int mf_getItemText(HWND _hDlg, int _nId, UQArray<CString>& _rasTexts);
    static int mf_selectItemIndex(HWND _hDlg, int _nId, int _nIndex);
    static int mf_selectItemText(HWND _hDlg, int _nId, const CString& _sText, int _bExact);
    static int mf_hasItemText(HWND _hDlg, int _nId, const CString& _sText);
    static int mf_hasItemIndex(HWND _hDlg, int _nId, int _nIndex);
    // A missing item is logged and answers 0.
    static int mf_initItemFromRegistry(HWND _hDlg, int _nId, const CString& _sListKey, const CString& _sPath,
                                       const CString& _sSelectionKey, const CString& _sDefaultText);
    static int mf_saveItemToRegistry(HWND _hDlg, int _nId, const CString& _sListKey, const CString& _sPath,
                                     const CString& _sSelectionKey);
};
