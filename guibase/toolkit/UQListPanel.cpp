#include "guibase/toolkit/UQListPanel.h"

#include "compat/UQHandle.h"
#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQDpiIcons.h"
#include "guibase/toolkit/UQWindow.h"

#include <climits>
#include <commctrl.h>

const wchar_t* const UQListPanel::FAILURE_TEXT = L"<Failure Getting Item>";

namespace {

// Texts are read into zeroed buffers of this many characters: at most 511 and the terminator.
const int TEXT_BUFFER_CHARS = 512;

// Allowance for a vertical scroll bar; fixed, not the system metric.
const int SCROLL_BAR_WIDTH = 16;

// A float truncated toward zero as the processor does it: a value beyond int (or no number at all, as
// after a division by a zero total) becomes INT_MIN instead of undefined behaviour.
int truncateToInt(float _f) {
    if (!(_f >= -2147483648.0f && _f < 2147483648.0f))
        return INT_MIN;
    return static_cast<int>(_f);
}

int queryColumnWidth(HWND _hWnd, int _nIndex, int& _rnWidth) {
    LVCOLUMNW column;
    ZeroMemory(&column, sizeof column);
    column.mask = LVCF_WIDTH;
    if (!SendMessageW(_hWnd, LVM_GETCOLUMNW, static_cast<WPARAM>(_nIndex), reinterpret_cast<LPARAM>(&column)))
        return 0;
    _rnWidth = column.cx;
    return 1;
}

} // namespace

void UQListPanel::mf_initFullRowSelect(HWND _hWnd) {
    SendMessageW(_hWnd, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
}

void UQListPanel::mf_initTooltips(HWND _hWnd, unsigned long _uDelay) {
    const DWORD dwStyles = LVS_EX_INFOTIP | LVS_EX_LABELTIP;
    SendMessageW(_hWnd, LVM_SETEXTENDEDLISTVIEWSTYLE, dwStyles, dwStyles);
    HWND hTooltip = reinterpret_cast<HWND>(SendMessageW(_hWnd, LVM_GETTOOLTIPS, 0, 0));
    SendMessageW(hTooltip, TTM_SETDELAYTIME, TTDT_INITIAL, MAKELPARAM(_uDelay & 0xFFFFu, 0));
}

void UQListPanel::mf_insertColumn(HWND _hWnd, int _nIndex, const UQListColumnInfo& _info) {
    mf_insertColumn(_hWnd, _nIndex, _info.m_sText, _info.m_nWidth, _info.m_nFormat);
}

void UQListPanel::mf_insertColumn(HWND _hWnd, int _nIndex, const CString& _sText, int _nWidth, int _nFormat) {
    LVCOLUMNW column;
    ZeroMemory(&column, sizeof column);
    column.mask = LVCF_FMT | LVCF_WIDTH | LVCF_TEXT | LVCF_SUBITEM;
    column.fmt = _nFormat;
    column.cx = _nWidth;
    column.pszText = const_cast<LPWSTR>(_sText.GetString());
    column.iSubItem = _nIndex;
    if (_nIndex == 0 && _nFormat != LVCFMT_LEFT) {
        // A list view draws its column 0 left-aligned whatever its format: insert the column twice and drop
        // the first copy, so that the aligned one becomes column 0.
        SendMessageW(_hWnd, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
        SendMessageW(_hWnd, LVM_INSERTCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
        SendMessageW(_hWnd, LVM_DELETECOLUMN, 0, 0);
        return;
    }
    SendMessageW(_hWnd, LVM_INSERTCOLUMNW, static_cast<WPARAM>(_nIndex), reinterpret_cast<LPARAM>(&column));
}

void UQListPanel::mf_insertColumns(HWND _hWnd, const UQListColumnInfos& _infos) {
    for (INT_PTR i = 0; i < _infos.GetSize(); ++i)
        mf_insertColumn(_hWnd, static_cast<int>(i), _infos[i]);
}

void UQListPanel::mf_removeColumn(HWND _hWnd, int _nIndex) {
    SendMessageW(_hWnd, LVM_DELETECOLUMN, static_cast<WPARAM>(_nIndex), 0);
}

int UQListPanel::mf_getColumnCount(HWND _hWnd) {
    return static_cast<int>(SendMessageW(mf_getHeader(_hWnd), HDM_GETITEMCOUNT, 0, 0));
}

int UQListPanel::mf_hasColumn(HWND _hWnd, int _nIndex) {
    LVCOLUMNW column;
    ZeroMemory(&column, sizeof column);
    column.mask = LVCF_FMT;
    return SendMessageW(_hWnd, LVM_GETCOLUMNW, static_cast<WPARAM>(_nIndex),
                        reinterpret_cast<LPARAM>(&column))
               ? 1
               : 0;
}

int UQListPanel::mf_getColumnWidth(HWND _hWnd, int _nIndex) {
    int nWidth = 0;
    return queryColumnWidth(_hWnd, _nIndex, nWidth) ? nWidth : 0;
}

void UQListPanel::mf_setColumnWidth(HWND _hWnd, int _nIndex, int _nWidth) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_setColumnWidth";
    if (!SendMessageW(_hWnd, LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(_nIndex), MAKELPARAM(_nWidth, 0)))
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Failure setting width=%d of column with index=%d",
                         _nWidth, _nIndex);
}

int UQListPanel::mf_calcColumnWidthSum(HWND _hWnd) {
    int nSum = 0;
    int nWidth = 0;
    for (int nIndex = 0; queryColumnWidth(_hWnd, nIndex, nWidth); ++nIndex)
        nSum += nWidth;
    return nSum;
}

int UQListPanel::mf_calcColumnWidth(HWND _hWnd, int _nColumn, const CString& _sText1, const CString& _sText2,
                                    int _bFill) {
    if (_sText1.IsEmpty() && _sText2.IsEmpty())
        return 20;
    const int nWidth1 = UQWindow::mf_getTextWidth(_hWnd, _sText1);
    if (!_bFill) {
        if (_sText2.IsEmpty())
            return nWidth1 + 2;
        const int nWidth2 = UQWindow::mf_getTextWidth(_hWnd, _sText2);
        return (nWidth1 > nWidth2 ? nWidth1 : nWidth2) + 2;
    }
    RECT rc = {0, 0, 0, 0};
    GetClientRect(_hWnd, &rc);
    int nRest = rc.right;
    int nWidth = 0;
    for (int nIndex = 0; queryColumnWidth(_hWnd, nIndex, nWidth); ++nIndex) {
        if (nIndex != _nColumn)
            nRest -= nWidth;
    }
    return nWidth1 <= nRest ? nRest : nWidth1 + 2;
}

void UQListPanel::mf_adjustColumnWidths(HWND _hWnd, int _bScrollBar) {
    int nTotal = 0;
    int nColumns = 0;
    int nWidth = 0;
    while (queryColumnWidth(_hWnd, nColumns, nWidth)) {
        nTotal += nWidth;
        ++nColumns;
    }
    RECT rc = {0, 0, 0, 0};
    GetClientRect(_hWnd, &rc);
    const int nAvailable = rc.right - rc.left - (_bScrollBar ? SCROLL_BAR_WIDTH : 0);
    const float fFactor = static_cast<float>(nAvailable) / static_cast<float>(nTotal);
    int nSum = 0;
    for (int nIndex = nColumns - 1; nIndex >= 1; --nIndex) {
        queryColumnWidth(_hWnd, nIndex, nWidth);
        LVCOLUMNW column;
        ZeroMemory(&column, sizeof column);
        column.mask = LVCF_WIDTH;
        column.cx = truncateToInt(static_cast<float>(nWidth) * fFactor);
        SendMessageW(_hWnd, LVM_SETCOLUMNW, static_cast<WPARAM>(nIndex), reinterpret_cast<LPARAM>(&column));
        nSum += column.cx;
    }
    // Rounding losses all land in the first column.
    LVCOLUMNW first;
    ZeroMemory(&first, sizeof first);
    first.mask = LVCF_WIDTH;
    first.cx = nAvailable - nSum;
    SendMessageW(_hWnd, LVM_SETCOLUMNW, 0, reinterpret_cast<LPARAM>(&first));
}

HWND UQListPanel::mf_getHeader(HWND _hWnd) {
    return reinterpret_cast<HWND>(SendMessageW(_hWnd, LVM_GETHEADER, 0, 0));
}

int UQListPanel::mf_getHeaderWidth(HWND _hWnd, int _nColumn) {
    HDITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = HDI_WIDTH;
    if (!SendMessageW(mf_getHeader(_hWnd), HDM_GETITEMW, static_cast<WPARAM>(_nColumn),
                      reinterpret_cast<LPARAM>(&item)))
        return -1;
    return item.cxy;
}

CString UQListPanel::mf_getHeaderText(HWND _hWnd, int _nColumn) {
    wchar_t szText[TEXT_BUFFER_CHARS] = {0};
    HDITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = HDI_TEXT;
    item.pszText = szText;
    item.cchTextMax = TEXT_BUFFER_CHARS;
    if (!SendMessageW(mf_getHeader(_hWnd), HDM_GETITEMW, static_cast<WPARAM>(_nColumn),
                      reinterpret_cast<LPARAM>(&item)))
        return CString();
    return CString(item.pszText);
}

void UQListPanel::mf_setHeaderSortIcon(HWND _hWnd, int _nColumn, const UQSortOrder& _order) {
    HWND hHeader = mf_getHeader(_hWnd);
    HDITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = HDI_FORMAT;
    SendMessageW(hHeader, HDM_GETITEMW, static_cast<WPARAM>(_nColumn), reinterpret_cast<LPARAM>(&item));
    item.fmt |= _order.mf_getValue() == UQSortOrder::ASCENDING ? HDF_SORTUP : HDF_SORTDOWN;
    SendMessageW(hHeader, HDM_SETITEMW, static_cast<WPARAM>(_nColumn), reinterpret_cast<LPARAM>(&item));
}

int UQListPanel::mf_getSortColumnOfKey(HWND _hWnd, WORD _wKey) {
    if (GetKeyState(VK_CONTROL) >= 0 || GetKeyState(VK_MENU) < 0 || _wKey < '1' || _wKey > '9')
        return -1;
    const int nColumn = _wKey - '1';
    return nColumn < mf_getColumnCount(_hWnd) ? nColumn : -1;
}

void UQListPanel::mf_createImageList(HWND _hWnd) {
    // At the small icon size of the list's DPI, made again at a new DPI with the icons added below.
    UQDpiIcons::mf_createImageList(_hWnd);
}

void UQListPanel::mf_deleteImageList(HWND _hWnd) {
    UQDpiIcons::mf_forgetImageList(_hWnd);
    UQImageList list(reinterpret_cast<HIMAGELIST>(SendMessageW(_hWnd, LVM_GETIMAGELIST, LVSIL_SMALL, 0)));
    if (!list)
        return;
    list.mf_reset();
    SendMessageW(_hWnd, LVM_SETIMAGELIST, LVSIL_SMALL, 0);
}

int UQListPanel::mf_addIcon(HWND _hWnd, unsigned long _uResourceId) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_addIcon";
    HIMAGELIST hList = reinterpret_cast<HIMAGELIST>(SendMessageW(_hWnd, LVM_GETIMAGELIST, LVSIL_SMALL, 0));
    if (hList == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Could not get image list from list panel");
        return -1;
    }
    // Loaded at the image list's size, which is the size of the list's DPI.
    const int nIndex = UQDpiIcons::mf_addImage(_hWnd, UQLanguage::mf_getUserLanguageHandle(),
                                               static_cast<WORD>(_uResourceId));
    if (nIndex < 0)
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Could not load icon with resource-id=%lu",
                         static_cast<std::uint32_t>(_uResourceId));
    return nIndex;
}

void UQListPanel::mf_setIcon(HWND _hWnd, int _nItem, int _nImage) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_setIcon";
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_IMAGE;
    item.iItem = _nItem;
    item.iSubItem = 0;
    item.iImage = _nImage;
    if (!SendMessageW(_hWnd, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item)))
        // Names the image index, as the record always has.
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure setting item to index=%d", _nImage);
}

void UQListPanel::mf_setData(const void* _pData, HWND _hWnd, int _nItem) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_setData";
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_PARAM;
    item.iItem = _nItem;
    item.iSubItem = 0;
    item.lParam = reinterpret_cast<LPARAM>(_pData);
    if (!SendMessageW(_hWnd, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item)))
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure setting data pointer of item %d", _nItem);
}

const void* UQListPanel::mf_getData(HWND _hWnd, int _nItem) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_getData";
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_PARAM;
    item.iItem = _nItem;
    if (!SendMessageW(_hWnd, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item))) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure getting item with index=%d from list",
                         _nItem);
        return FAILURE_TEXT;
    }
    return reinterpret_cast<const void*>(item.lParam);
}

void UQListPanel::mf_setText(const CString& _sText, HWND _hWnd, int _nItem, int _nSubItem) {
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.iSubItem = _nSubItem;
    item.pszText = const_cast<LPWSTR>(_sText.GetString());
    SendMessageW(_hWnd, LVM_SETITEMTEXTW, static_cast<WPARAM>(_nItem), reinterpret_cast<LPARAM>(&item));
}

CString UQListPanel::mf_getText(HWND _hWnd, int _nItem, int _nSubItem) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_getText";
    wchar_t szText[TEXT_BUFFER_CHARS] = {0};
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_TEXT;
    item.iItem = _nItem;
    item.iSubItem = _nSubItem;
    item.pszText = szText;
    item.cchTextMax = TEXT_BUFFER_CHARS;
    if (!SendMessageW(_hWnd, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item))) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure getting item with index=%d from list",
                         _nItem);
        return CString(FAILURE_TEXT);
    }
    // The control may answer with a text of its own instead of filling the buffer.
    return CString(item.pszText != nullptr ? item.pszText : szText);
}

int UQListPanel::mf_getCount(HWND _hWnd) {
    return static_cast<int>(SendMessageW(_hWnd, LVM_GETITEMCOUNT, 0, 0));
}

void UQListPanel::mf_setSelectedIndex(HWND _hWnd, int _nIndex) {
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.stateMask = LVIS_SELECTED;
    item.state = LVIS_SELECTED;
    SendMessageW(_hWnd, LVM_SETITEMSTATE, static_cast<WPARAM>(_nIndex), reinterpret_cast<LPARAM>(&item));
}

int UQListPanel::mf_getSelectedIndex(HWND _hWnd) {
    static const wchar_t* const _sFunction_ = L"UQListPanel::mf_getSelectedIndex";
    if (SendMessageW(_hWnd, LVM_GETSELECTEDCOUNT, 0, 0) != 1) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Not exactly 1 list item selected");
        return -1;
    }
    const LRESULT nIndex =
        SendMessageW(_hWnd, LVM_GETNEXTITEM, static_cast<WPARAM>(-1), MAKELPARAM(LVNI_SELECTED, 0));
    if (nIndex < 0) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure getting selected item index from list");
        return -1;
    }
    return static_cast<int>(nIndex);
}

int UQListPanel::mf_hasSelectedIndex(HWND _hWnd) {
    return SendMessageW(_hWnd, LVM_GETSELECTEDCOUNT, 0, 0) != 0 ? 1 : 0;
}
