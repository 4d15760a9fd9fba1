#pragma once

#include "guibase/toolkit/UQListColumnInfos.h"
#include "guibase/toolkit/UQSortOrder.h"

// Report-style list views: columns (a right-aligned or centred first column included), widths that fill
// the visible width, the header's sort arrow, a small-icon image list, and item texts, data, icons and
// selection. Texts are read up to 511 characters.
class KORGUIBASE_API UQListPanel {
public:
    // What mf_getData and mf_getText answer for an item that cannot be read; compare against it, never use
    // it as data.
    static const wchar_t* const FAILURE_TEXT;

    UQListPanel() noexcept = default;
    UQListPanel(const UQListPanel&) noexcept = default;
    UQListPanel& operator=(const UQListPanel&) noexcept = default;
    ~UQListPanel() = default;

    static void mf_initFullRowSelect(HWND _hWnd);
    // Info and label tips, shown after _uDelay milliseconds.
    static void mf_initTooltips(HWND _hWnd, unsigned long _uDelay);

    static void mf_insertColumn(HWND _hWnd, int _nIndex, const UQListColumnInfo& _info);
    static void mf_insertColumn(HWND _hWnd, int _nIndex, const CString& _sText, int _nWidth, int _nFormat);
    static void mf_insertColumns(HWND _hWnd, const UQListColumnInfos& _infos);
    static void mf_removeColumn(HWND _hWnd, int _nIndex);
    static int mf_getColumnCount(HWND _hWnd);
    static int mf_hasColumn(HWND _hWnd, int _nIndex);
    // 0 for a column that does not exist.
    static int mf_getColumnWidth(HWND _hWnd, int _nIndex);
    static void mf_setColumnWidth(HWND _hWnd, int _nIndex, int _nWidth);
    static int mf_calcColumnWidthSum(HWND _hWnd);
    // The width that fits the wider of the two texts, or with _bFill the rest of the list's width when the
    // first text fits into it. 20 for two empty texts.
    static int mf_calcColumnWidth(HWND _hWnd, int _nColumn, const CString& _sText1, const CString& _sText2,
                                  int _bFill);
    // Scales every column so that together they fill the client width (less 16 pixels for a vertical
    // scroll bar); rounding losses go to the first column.
    static void mf_adjustColumnWidths(HWND _hWnd, int _bScrollBar);

    static HWND mf_getHeader(HWND _hWnd);
    // -1 when the header item cannot be read.
    static int mf_getHeaderWidth(HWND _hWnd, int _nColumn);
    static CString mf_getHeaderText(HWND _hWnd, int _nColumn);
    // Adds the arrow of _order to the column's header; arrows set before stay.
    static void mf_setHeaderSortIcon(HWND _hWnd, int _nColumn, const UQSortOrder& _order);
    // The column that a key pressed in the list (LVN_KEYDOWN) sorts by: Ctrl+1 the first, up to Ctrl+9,
    // while the list has that column; -1 for any other key. A header takes no keyboard focus, so this is how
    // a list is sorted without a mouse.
    static int mf_getSortColumnOfKey(HWND _hWnd, WORD _wKey);

    // A small-icon image list for the list; one set before is not destroyed.
    static void mf_createImageList(HWND _hWnd);
    static void mf_deleteImageList(HWND _hWnd);
    // Adds an icon of the user's language module to the image list; its image index, or -1.
    static int mf_addIcon(HWND _hWnd, unsigned long _uResourceId);
    static void mf_setIcon(HWND _hWnd, int _nItem, int _nImage);

    static void mf_setData(const void* _pData, HWND _hWnd, int _nItem);
    static const void* mf_getData(HWND _hWnd, int _nItem);
    static void mf_setText(const CString& _sText, HWND _hWnd, int _nItem, int _nSubItem);
    static CString mf_getText(HWND _hWnd, int _nItem, int _nSubItem);
    static int mf_getCount(HWND _hWnd);

    // Selects one more item (-1: all); the others keep their state and the focus stays.
    static void mf_setSelectedIndex(HWND _hWnd, int _nIndex);
    // The selected item when exactly one is selected, else -1.
    static int mf_getSelectedIndex(HWND _hWnd);
    static int mf_hasSelectedIndex(HWND _hWnd);
};
