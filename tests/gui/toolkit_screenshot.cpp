// Fills the toolkit test dialog through the toolkit's own helpers, as a dialog of the product would, and
// saves a picture of it: an in-process copy of the window (BitBlt from GetWindowDC) written as PNG.
//
//     toolkit_screenshot.exe OUTPUT.png
//
// Answers 0 when the picture was written, 1 otherwise.
#include "PngWriter.h"
#include "Screenshot.h"
#include "ToolkitTestIds.h"
#include "support/TestTime.h"

#include "compat/UQHandle.h"
#include "guibase/toolkit/UQCheckBox.h"
#include "guibase/toolkit/UQComboBox.h"
#include "guibase/toolkit/UQDateTimeControl.h"
#include "guibase/toolkit/UQListPanel.h"
#include "guibase/toolkit/UQSpinEdit.h"
#include "guibase/toolkit/UQWindow.h"
#include "korlang_ids.h"

#include <commctrl.h>

#include <cstdio>

namespace {

INT_PTR CALLBACK screenshotProcedure(HWND, UINT _uMsg, WPARAM, LPARAM) {
    return _uMsg == WM_INITDIALOG ? TRUE : FALSE;
}

void pump() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

struct Row {
    const wchar_t* pszPath;
    const wchar_t* pszSize;
    const wchar_t* pszState;
    unsigned long uIcon;
};

HFONT fill(HWND _hDlg) {
    UQWindow::mf_setIcon(_hDlg, IDI_SEVERITY_GREEN);
    UQWindow::mf_setItemIcon(_hDlg, IDC_STATIC_ICON, IDI_SEVERITY_GREEN);
    HFONT hBold = UQWindow::mf_setItemFontAttributes(_hDlg, IDC_LABEL, 1, 0);
    UQWindow::mf_setItemText(_hDlg, IDC_EDIT, L"C:\\Program Files\\Stormex\\baclient\\kor.opt");
    UQCheckBox::mf_setItemChecked(_hDlg, IDC_CHECK, 1);
    SendDlgItemMessageW(_hDlg, IDC_CHECK3, BM_SETCHECK, BST_INDETERMINATE, 0);
    UQSpinEdit::mf_setItemRange(_hDlg, IDC_SPIN, 1, 99);
    SendDlgItemMessageW(_hDlg, IDC_SPIN, UDM_SETPOS32, 0, 3);
    UQDateTimeControl::mf_setItemDateFormat(_hDlg, IDC_DATE);
    UQDateTimeControl::mf_setItemTimeFormat(_hDlg, IDC_TIME);
    UQDateTimeControl::mf_setItem(_hDlg, IDC_DATE, IDC_TIME, fileTime(2024, 3, 5, 23, 15, 30));
    // A fixed date, so that the picture is the same every day.
    UQDateTimeControl::mf_setItemDateFormat(_hDlg, IDC_DATE_NONE);
    UQDateTimeControl::mf_setItem(_hDlg, IDC_DATE_NONE, fileTime(2024, 4, 1, 0, 0, 0));

    for (const wchar_t* pszAuthority : {L"<local computer>", L"CORVEX", L"CORVEX-LAB"})
        UQComboBox::mf_addItemText(_hDlg, IDC_COMBO, pszAuthority);
    UQComboBox::mf_selectItemText(_hDlg, IDC_COMBO, L"CORVEX", 1);

    HWND hList = GetDlgItem(_hDlg, IDC_LIST);
    UQListPanel::mf_initFullRowSelect(hList);
    UQListColumnInfos columns;
    columns.Add(UQListColumnInfo(L"Path", 200, LVCFMT_LEFT));
    columns.Add(UQListColumnInfo(L"Size", 70, LVCFMT_RIGHT));
    columns.Add(UQListColumnInfo(L"State", 110, LVCFMT_LEFT));
    UQListPanel::mf_insertColumns(hList, columns);
    UQListPanel::mf_createImageList(hList);
    const Row rows[] = {
        {L"\\\\fs01\\projects\\plan.docx", L"1.5 MB", L"Available", IDI_SEVERITY_GREEN},
        {L"\\\\fs01\\projects\\budget.xlsx", L"84.0 KB", L"Expiring", IDI_SEVERITY_YELLOW},
        {L"\\\\fs01\\archive\\2019.pst", L"2.1 GB", L"Deleted", IDI_SEVERITY_RED},
        {L"\\\\fs01\\home\\jdoe", L"", L"User", IDI_USER},
    };
    int nItem = 0;
    for (const Row& row : rows) {
        LVITEMW item;
        ZeroMemory(&item, sizeof item);
        item.iItem = nItem;
        SendMessageW(hList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
        UQListPanel::mf_setText(row.pszPath, hList, nItem, 0);
        UQListPanel::mf_setText(row.pszSize, hList, nItem, 1);
        UQListPanel::mf_setText(row.pszState, hList, nItem, 2);
        UQListPanel::mf_setIcon(hList, nItem, UQListPanel::mf_addIcon(hList, row.uIcon));
        ++nItem;
    }
    UQListPanel::mf_adjustColumnWidths(hList, 1);
    UQListPanel::mf_setHeaderSortIcon(hList, 0, UQSortOrder(UQSortOrder::ASCENDING));
    UQListPanel::mf_setSelectedIndex(hList, 1);
    return hBold;
}

} // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc != 2) {
        std::fwprintf(stderr, L"usage: toolkit_screenshot OUTPUT.png\n");
        return 1;
    }
    INITCOMMONCONTROLSEX icc;
    icc.dwSize = sizeof icc;
    icc.dwICC = ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_DATE_CLASSES | ICC_UPDOWN_CLASS;
    InitCommonControlsEx(&icc);
    HWND hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_TOOLKIT_TEST), nullptr,
                                   screenshotProcedure, 0);
    if (hDlg == nullptr) {
        std::fwprintf(stderr, L"toolkit_screenshot: the dialog cannot be created (error %lu)\n",
                      GetLastError());
        return 1;
    }
    UQFont boldFont(fill(hDlg));
    SetWindowPos(hDlg, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_SHOWWINDOW);
    UQWindow::mf_focusItem(hDlg, IDC_LIST);
    pump();
    RedrawWindow(hDlg, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_FRAME | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    pump();

    std::vector<std::uint8_t> rgb;
    int nWidth = 0;
    int nHeight = 0;
    const bool bCaptured = screenshot::capture(hDlg, rgb, nWidth, nHeight);
    SendDlgItemMessageW(hDlg, IDC_LABEL, WM_SETFONT, 0, FALSE);
    boldFont.mf_reset();
    UQListPanel::mf_deleteImageList(GetDlgItem(hDlg, IDC_LIST));
    DestroyWindow(hDlg);
    if (!bCaptured || screenshot::colourCount(rgb) < 8) {
        std::fwprintf(stderr, L"toolkit_screenshot: nothing was drawn\n");
        return 1;
    }
    if (!png::writeFile(argv[1], png::encode(rgb, nWidth, nHeight))) {
        std::fwprintf(stderr, L"toolkit_screenshot: cannot write %ls\n", argv[1]);
        return 1;
    }
    std::fwprintf(stdout, L"%ls: %dx%d\n", argv[1], nWidth, nHeight);
    return 0;
}
