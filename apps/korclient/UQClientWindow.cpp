#include "UQClientWindow.h"

#include "KorClientIds.h"
#include "UQClientWorker.h"
#include "UQMigrationWizard.h"
#include "UQResultList.h"
#include "UQRetrieval.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/settings/UQGuiBrowseDialog.h"
#include "guibase/settings/UQGuiRegistry.h"
#include "guibase/toolkit/UQCheckBox.h"
#include "guibase/toolkit/UQComboBox.h"
#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQDpi.h"
#include "guibase/toolkit/UQHelpDialog.h"
#include "guibase/toolkit/UQInformationBox.h"
#include "guibase/toolkit/UQLineEditor.h"
#include "guibase/toolkit/UQListPanel.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "guibase/wizard/UQProgressBarDialog.h"
#include "korlang_ids.h"

#include <commctrl.h>
#include <cwchar>
#include <unordered_map>

const wchar_t* const UQClientWindow::PATTERN_LIST_VALUE = L"HistorySearchPatterns";
const wchar_t* const UQClientWindow::PATTERN_SELECTION_VALUE = L"HistorySearchPattern";
const wchar_t* const UQClientWindow::TIP_VALUE = L"ClientStartTip";
const wchar_t* const UQClientWindow::HELP_CAPTION = L"History search help";

namespace {

const UINT WM_SHOW_TIP = WM_APP + 1;

const wchar_t* const HELP_TEXT =
    L"Type a pattern for the paths to search, for example:\r\n    *\\Finance\\*\r\n\r\n'*' stands for any "
    L"run of "
    L"characters and '?' for one; case does not matter. Choose a date range to see only the versions written "
    L"in it, hide the states you do not want to see, and tick 'Latest versions only' to see one version of "
    L"each file.\r\n\r\nPress Search. Select files and press Retrieve to copy their versions into a folder "
    L"of your choice, or Recall to bring the content of their stub files back in place.\r\n\r\nMigrate... "
    L"moves the files of a folder to the storage server and leaves stub files behind.";

class SearchSink : public UVQueryDataSink {
public:
    SearchSink(UQSearchList& _rList, UQClientWorker& _rWorker) : m_rList(_rList), m_rWorker(_rWorker) {}
    void mf_onQueryData(const UQQueryData& _data) override {
        m_rList.mf_add(_data);
        if (++m_nCount % 5000 == 0)
            m_rWorker.mf_publishProgress(L"Searching the history...", m_nCount, 0);
    }

private:
    UQSearchList& m_rList;
    UQClientWorker& m_rWorker;
    int m_nCount = 0;
};

std::wstring fileTimeOf(HWND _hDlg, int _nId, bool _bEnd) {
    SYSTEMTIME time{};
    if (SendDlgItemMessageW(_hDlg, _nId, DTM_GETSYSTEMTIME, 0, reinterpret_cast<LPARAM>(&time)) != GDT_VALID)
        return std::wstring();
    time.wHour = _bEnd ? 23 : 0;
    time.wMinute = _bEnd ? 59 : 0;
    time.wSecond = _bEnd ? 59 : 0;
    time.wMilliseconds = 0;
    FILETIME ft{};
    SystemTimeToFileTime(&time, &ft);
    return std::to_wstring((static_cast<std::uint64_t>(ft.dwHighDateTime) << 32) | ft.dwLowDateTime);
}

int checked(HWND _hDlg, int _nId) {
    int bChecked = 0;
    UQCheckBox::mf_isItemChecked(_hDlg, _nId, bChecked);
    return bChecked;
}

struct ResultsData {
    const wchar_t* pszCaption;
    const std::vector<UQFileOutcome>* pOutcomes;
};

INT_PTR CALLBACK f_ResultsCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_ResultsCallback";
    switch (_uMsg) {
    case WM_INITDIALOG:
        return UQDialogProcedure::mf_barrier(_sFunction_, L"Failure showing results:\r\n%s%s", [&] {
            const ResultsData& data = *reinterpret_cast<const ResultsData*>(_lParam);
            SetWindowTextW(_hDlg, data.pszCaption);
            HWND hList = GetDlgItem(_hDlg, IDC_RESULTS_LIST);
            UQResultList::mf_prepare(hList);
            UQResultList::mf_fill(hList, *data.pOutcomes);
            SetDlgItemTextW(_hDlg, IDC_RESULTS_TEXT, UQResultList::mf_summary(*data.pOutcomes).c_str());
            return TRUE;
        });
    case WM_COMMAND:
        if (LOWORD(_wParam) == IDOK || LOWORD(_wParam) == IDCANCEL)
            EndDialog(_hDlg, 1);
        return TRUE;
    default:
        return FALSE;
    }
}

} // namespace

class StatusItem : public UQStatusBarItem {
public:
    StatusItem(unsigned long _ulWidth, const wchar_t* _pszName)
        : UQStatusBarItem(_ulWidth), m_sName(_pszName) {}
    CString mf_getName() const override { return m_sName; }

private:
    CString m_sName;
};

INT_PTR CALLBACK f_ClientWindowCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_ClientWindowCallback";
    static const wchar_t* const NO_USER_DATA = L"No user data pointer for the client window";
    switch (_uMsg) {
    case WM_INITDIALOG:
        return UQDialogProcedure::mf_initDialog<UQClientWindow>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, L"Failure initializing the client window:\r\n%s%s",
            [&](UQClientWindow& _window) { return _window.mf_onInitDialog(_hDlg); });
    case WM_COMMAND:
        return UQDialogProcedure::mf_forward<UQClientWindow>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [&](UQClientWindow& _window) { return _window.mf_onCommand(HIWORD(_wParam), LOWORD(_wParam)); });
    case WM_NOTIFY:
        return UQDialogProcedure::mf_forward<UQClientWindow>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA,
            [&](UQClientWindow& _window) { return _window.mf_onNotify(*reinterpret_cast<NMHDR*>(_lParam)); });
    case WM_DRAWITEM:
        return UQDialogProcedure::mf_forward<UQClientWindow>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQClientWindow& _window) {
                return _window.mf_onDrawItem(*reinterpret_cast<DRAWITEMSTRUCT*>(_lParam));
            });
    case WM_SIZE:
        return UQDialogProcedure::mf_forward<UQClientWindow>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQClientWindow& _window) {
                _window.mf_onSize(LOWORD(_lParam), HIWORD(_lParam));
                return FALSE;
            });
    case WM_DPICHANGED:
        return UQDialogProcedure::mf_forward<UQClientWindow>(_hDlg, _uMsg, _sFunction_, NO_USER_DATA,
                                                             [&](UQClientWindow& _window) {
                                                                 _window.mf_onDpiChanged(LOWORD(_wParam));
                                                                 return FALSE;
                                                             });
    case WM_SHOW_TIP:
        return UQDialogProcedure::mf_forward<UQClientWindow>(_hDlg, _uMsg, _sFunction_, NO_USER_DATA,
                                                             [&](UQClientWindow& _window) {
                                                                 _window.mf_onShowTip();
                                                                 return TRUE;
                                                             });
    case WM_CLOSE:
        EndDialog(_hDlg, 0);
        return TRUE;
    default:
        return FALSE;
    }
}

UQClientWindow::UQClientWindow(const std::wstring& _sServer, const std::wstring& _sFolder)
    : m_server(_sServer), m_sFolder(_sFolder), m_sSearchName(L"All migrated files"), m_hDlg(nullptr),
      m_hList(nullptr), m_pWizard(nullptr), m_apItems{}, m_nSortColumn(0), m_bSortAscending(1) {}

UQClientWindow::~UQClientWindow() = default;

int UQClientWindow::mf_show() {
    static const wchar_t* const _sFunction_ = L"UQClientWindow::mf_show";
    SetLastError(0);
    const INT_PTR nResult = DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_KORCLIENT_MAIN),
                                            nullptr, f_ClientWindowCallback, reinterpret_cast<LPARAM>(this));
    if (nResult == -1) {
        const UQErrno error = UQReport::mf_systemError(UQErrno::_E_::Gui);
        UQReport::mf_logWrapped(error, _sFunction_, L"Failure showing the client window:\r\n%s%s");
        return 1;
    }
    m_hDlg = nullptr;
    return 0;
}

INT_PTR UQClientWindow::mf_onInitDialog(HWND _hDlg) {
    m_hDlg = _hDlg;
    m_hList = GetDlgItem(_hDlg, IDC_MAIN_LIST);
    // The list starts closed and empty, as after a search that found nothing: each search clears it.
    m_searchList.mf_close();
    SetDlgItemTextW(_hDlg, IDC_MAIN_SEARCH_NAME, m_sSearchName.c_str());
    UQComboBox::mf_initItemFromRegistry(_hDlg, IDC_MAIN_PATTERN, PATTERN_LIST_VALUE, CString(),
                                        PATTERN_SELECTION_VALUE, L"*");
    UQCheckBox::mf_setItemChecked(_hDlg, IDC_MAIN_LATEST, 1);
    SendDlgItemMessageW(_hDlg, IDC_MAIN_FROM, DTM_SETSYSTEMTIME, GDT_NONE, 0);
    SendDlgItemMessageW(_hDlg, IDC_MAIN_TO, DTM_SETSYSTEMTIME, GDT_NONE, 0);
    UQListPanel::mf_initFullRowSelect(m_hList);
    // Paths are long, the other columns hold a word or a number; their headers need room for the wider
    // margins of a header drawn without visual styles (high contrast).
    UQListPanel::mf_insertColumn(m_hList, 0, L"File", 330, LVCFMT_LEFT);
    UQListPanel::mf_insertColumn(m_hList, 1, L"Versions", 65, LVCFMT_LEFT);
    UQListPanel::mf_insertColumn(m_hList, 2, L"Status", 95, LVCFMT_LEFT);
    UQListPanel::mf_insertColumn(m_hList, 3, L"Security", 70, LVCFMT_LEFT);
    UQListPanel::mf_insertColumn(m_hList, 4, L"Streams", 70, LVCFMT_LEFT);
    UQListPanel::mf_adjustColumnWidths(m_hList, 1);
    UQListPanel::mf_setHeaderSortIcon(m_hList, 0, UQSortOrder(UQSortOrder::ASCENDING));
    m_pStatusBar.reset(new UQStatusBar());
    m_apItems[0] = new StatusItem(30, L"Files");
    m_apItems[1] = new StatusItem(30, L"Selection");
    m_apItems[2] = new StatusItem(40, L"Store");
    for (StatusItem* pItem : m_apItems)
        m_pStatusBar->mf_addItem(pItem);
    m_pStatusBar->mf_onInitDialog(
        _hDlg, LoadMenuW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDR_KORCLIENT_STATUS_MENUS)));
    RECT client{};
    GetClientRect(_hDlg, &client);
    m_pStatusBar->mf_onSizeEvent(client.right, client.bottom);
    mf_implLoadStatusIcons(UQDpi::mf_getWindowDpi(_hDlg));
    PostMessageW(_hDlg, WM_SHOW_TIP, 0, 0);
    // The pattern is what a user changes first.
    SetFocus(GetDlgItem(_hDlg, IDC_MAIN_PATTERN));
    return FALSE;
}

void UQClientWindow::mf_onShowTip() {
    // A modal dialog shows itself once its queue is first empty; the tip comes before that and would stand
    // alone on the screen.
    ShowWindow(m_hDlg, SW_SHOW);
    UpdateWindow(m_hDlg);
    UQInformationBox tip(L"Tip", L"Migrated files stay in their folders as stub files.",
                         L"Search the history to find every version the storage server keeps, retrieve "
                         L"versions into a folder of your choice, or recall stub files in place.",
                         TIP_VALUE);
    tip.mf_show(m_hDlg);
}

INT_PTR UQClientWindow::mf_onCommand(unsigned short _usCode, unsigned short _usId) {
    switch (_usId) {
    case IDC_MAIN_SEARCH:
        mf_implSearch();
        return TRUE;
    case IDC_MAIN_RETRIEVE:
        mf_implRetrieve();
        return TRUE;
    case IDC_MAIN_RECALL:
        mf_implRecall();
        return TRUE;
    case IDC_MAIN_MIGRATE:
        mf_implMigrate();
        return TRUE;
    case IDC_MAIN_HELP: {
        UQHelpDialog help(HELP_CAPTION, HELP_TEXT);
        help.mf_show(m_hDlg);
        return TRUE;
    }
    case IDC_MAIN_RENAME:
        mf_implRename();
        return TRUE;
    case IDC_MAIN_LIST:
        UQListPanel::mf_setSelectedIndex(m_hList, -1);
        return TRUE;
    case IDCANCEL:
        EndDialog(m_hDlg, 0);
        return TRUE;
    default:
        return FALSE;
    }
}

INT_PTR UQClientWindow::mf_onNotify(const NMHDR& _header) {
    if (_header.idFrom == IDC_MAIN_LIST && _header.code == LVN_COLUMNCLICK) {
        mf_implSortBy(reinterpret_cast<const NMLISTVIEW&>(_header).iSubItem);
        return TRUE;
    }
    // The header cannot take the focus: Ctrl+1 ... Ctrl+9 in the list sort as a click on that column does.
    if (_header.idFrom == IDC_MAIN_LIST && _header.code == LVN_KEYDOWN) {
        const int nColumn =
            UQListPanel::mf_getSortColumnOfKey(m_hList, reinterpret_cast<const NMLVKEYDOWN&>(_header).wVKey);
        if (nColumn >= 0) {
            mf_implSortBy(nColumn);
            return TRUE;
        }
        // Ctrl+A selects every row, as "Select all" of the status bar's menu does for the mouse.
        if (reinterpret_cast<const NMLVKEYDOWN&>(_header).wVKey == 'A' && GetKeyState(VK_CONTROL) < 0 &&
            GetKeyState(VK_MENU) >= 0) {
            UQListPanel::mf_setSelectedIndex(m_hList, -1);
            return TRUE;
        }
    }
    if (_header.idFrom == IDC_MAIN_LIST && _header.code == LVN_GETDISPINFOW) {
        mf_implGetRowText(*reinterpret_cast<NMLVDISPINFOW*>(const_cast<NMHDR*>(&_header)));
        return TRUE;
    }
    if (_header.idFrom == IDC_MAIN_LIST && _header.code == LVN_ODFINDITEMW) {
        // The row plus one, so that the barrier's 0 after a failure answers "not found" rather than row 0.
        const INT_PTR nFoundPlusOne = UQDialogProcedure::mf_barrier(
            L"UQClientWindow::mf_onNotify", UQDialogProcedure::HANDLER_FAILURE,
            [&] { return mf_implFindRow(reinterpret_cast<const NMLVFINDITEMW&>(_header)) + 1; },
            static_cast<unsigned>(WM_NOTIFY));
        return UQDialogProcedure::mf_setMessageResult(m_hDlg, nFoundPlusOne - 1);
    }
    // A range of rows selected at once (Shift+click) comes as one LVN_ODSTATECHANGED.
    if (_header.idFrom == IDC_MAIN_LIST &&
        (_header.code == LVN_ITEMCHANGED || _header.code == LVN_ODSTATECHANGED))
        mf_implUpdateStatus();
    if (_header.hwndFrom == m_pStatusBar->mf_getWindowHandle() && _header.code == NM_RCLICK) {
        POINT point{};
        GetCursorPos(&point);
        POINT client = point;
        ScreenToClient(_header.hwndFrom, &client);
        HMENU hMenu = m_pStatusBar->mf_getContextMenu(client.x, client.y);
        if (hMenu != nullptr)
            TrackPopupMenu(hMenu, TPM_RIGHTBUTTON, point.x, point.y, 0, m_hDlg, nullptr);
        return TRUE;
    }
    return FALSE;
}

INT_PTR UQClientWindow::mf_onDrawItem(const DRAWITEMSTRUCT& _item) {
    return m_pStatusBar ? m_pStatusBar->mf_onDrawItem(_item) : FALSE;
}

void UQClientWindow::mf_onSize(int _nWidth, int _nHeight) {
    if (m_pStatusBar && m_pStatusBar->mf_getWindowHandle() != nullptr)
        m_pStatusBar->mf_onSizeEvent(_nWidth, _nHeight);
}

void UQClientWindow::mf_implError(const std::wstring& _sText, int _bWarning) {
    m_sLastError = _sText;
    UQMessageBox box(CString(_sText.c_str()), UQSeverity(_bWarning ? UVSeverity::YELLOW : UVSeverity::RED),
                     UQMessageBox::BUTTONS_SINGLE, L"History search");
    box.mf_show(m_hDlg);
}

void UQClientWindow::mf_implSearch() {
    static const wchar_t* const _sFunction_ = L"UQClientWindow::mf_implSearch";
    UQComboBox::mf_saveItemToRegistry(m_hDlg, IDC_MAIN_PATTERN, PATTERN_LIST_VALUE, CString(),
                                      PATTERN_SELECTION_VALUE);
    CString sPattern;
    HWND hCombo = GetDlgItem(m_hDlg, IDC_MAIN_PATTERN);
    std::wstring sTyped(static_cast<std::size_t>(GetWindowTextLengthW(hCombo)) + 1, L'\0');
    GetWindowTextW(hCombo, &sTyped[0], static_cast<int>(sTyped.size()));
    sTyped.resize(wcslen(sTyped.c_str()));
    UQHistoryQuery query;
    query.sPattern = sTyped == L"*" ? CString() : CString(sTyped.c_str());
    const std::wstring sFrom = fileTimeOf(m_hDlg, IDC_MAIN_FROM, false);
    const std::wstring sTo = fileTimeOf(m_hDlg, IDC_MAIN_TO, true);
    query.fromTime = UQFileTime(sFrom.empty() ? 0 : std::stoull(sFrom));
    query.toTime = UQFileTime(sTo.empty() ? 0 : std::stoull(sTo));

    m_shown.RemoveAll();
    SendMessageW(m_hList, LVM_DELETEALLITEMS, 0, 0);
    m_searchList.mf_clear();
    UQHistoryStore::Result result;
    std::wstring sFailure;
    const UQHistoryStore store(CString(m_server.mf_getHistoryFile().c_str()));
    UQClientWorker worker(L"History search", [&](UQClientWorker& _worker) {
        SearchSink sink(m_searchList, _worker);
        try {
            result = store.mf_search(query, sink, _worker.mf_getCancelSwitch());
        } catch (const UQErrno& e) {
            sFailure =
                e.mf_getDetail().IsEmpty() ? e.mf_toString().GetString() : e.mf_getDetail().GetString();
        }
    });
    UQProgressBarDialog progress(L"History search", worker);
    progress.mf_execute(UQLanguage::mf_getUserLanguageHandle(), m_hDlg, IDD_PROGRESS_BAR);
    m_searchList.mf_close();
    if (!sFailure.empty()) {
        UQReport::mf_log(UQLogData::LEVEL_W, _sFunction_, L"History search ended: %s", sFailure.c_str());
        mf_implError(L"The history search did not complete:\r\n" + sFailure, 1);
    } else if (!result.errors.empty()) {
        std::wstring sText = result.errors.size() == 1
                                 ? std::wstring(L"1 record of the history store is damaged and was skipped:")
                                 : std::to_wstring(result.errors.size()) +
                                       L" records of the history store are damaged and were skipped:";
        for (std::size_t i = 0; i < result.errors.size() && i < 5; ++i)
            sText += L"\r\n" + std::wstring(result.errors[i].mf_getDetail().GetString());
        mf_implError(sText, 1);
    }
    mf_implShow();
}

void UQClientWindow::mf_implShow() {
    m_shown.RemoveAll();
    m_searchList.mf_getFileList(
        m_shown, checked(m_hDlg, IDC_MAIN_EXCLUDE_AVAILABLE),
        checked(m_hDlg, IDC_MAIN_EXCLUDE_AVAILABLE_PROTECTED), checked(m_hDlg, IDC_MAIN_EXCLUDE_EXPIRING),
        checked(m_hDlg, IDC_MAIN_EXCLUDE_EXPIRING_PROTECTED), checked(m_hDlg, IDC_MAIN_EXCLUDE_DELETED),
        checked(m_hDlg, IDC_MAIN_EXCLUDE_DELETED_PROTECTED));
    if (checked(m_hDlg, IDC_MAIN_LATEST))
        m_searchList.mf_selectLatest();
    // The list holds no rows of its own: it asks for the texts of the rows it draws (LVN_GETDISPINFO), so
    // a search of any size is shown at once.
    SendMessageW(m_hList, LVM_DELETEALLITEMS, 0, 0);
    SendMessageW(m_hList, LVM_SETITEMCOUNT, static_cast<WPARAM>(m_shown.GetSize()), 0);
    InvalidateRect(m_hList, nullptr, TRUE);
    mf_implUpdateStatus();
}

void UQClientWindow::mf_implGetRowText(NMLVDISPINFOW& _rInfo) const {
    LVITEMW& row = _rInfo.item;
    if (!(row.mask & LVIF_TEXT) || row.pszText == nullptr || row.cchTextMax <= 0)
        return;
    row.pszText[0] = L'\0';
    if (row.iItem < 0 || row.iItem >= m_shown.GetSize())
        return;
    const UQSearchFileItem& item = *m_shown[row.iItem];
    CString sText;
    switch (row.iSubItem) {
    case 0:
        sText = item.mf_getPathDisplayString();
        break;
    case 1:
        sText = item.mf_getRangesDisplayString();
        break;
    case 2: {
        const UQSearchFileVersion* pVersion = item.mf_getSelectedVersion() != nullptr
                                                  ? item.mf_getSelectedVersion()
                                                  : item.mf_getLatestVersion();
        if (pVersion != nullptr)
            sText = pVersion->mf_getStatusString();
        break;
    }
    case 3:
        sText = item.mf_getSecurityDisplayString();
        break;
    case 4:
        sText = item.mf_getADStreamsDisplayString();
        break;
    default:
        break;
    }
    // As a list that holds its own texts answers: cut to the buffer the asker gave.
    const int nCopy = sText.GetLength() < row.cchTextMax - 1 ? sText.GetLength() : row.cchTextMax - 1;
    wmemcpy(row.pszText, sText.GetString(), static_cast<std::size_t>(nCopy));
    row.pszText[nCopy] = L'\0';
}

int UQClientWindow::mf_implFindRow(const NMLVFINDITEMW& _find) const {
    const LVFINDINFOW& what = _find.lvfi;
    const int nRows = static_cast<int>(m_shown.GetSize());
    if (!(what.flags & (LVFI_STRING | LVFI_PARTIAL)) || what.psz == nullptr || nRows == 0)
        return -1;
    // iStart is the first row looked at (the list's type-ahead passes the row after the focused one); a
    // search without LVFI_WRAP that starts past the last row finds nothing.
    const int nWanted = static_cast<int>(wcslen(what.psz));
    const bool bWrap = (what.flags & LVFI_WRAP) != 0;
    if (_find.iStart >= nRows && !bWrap)
        return -1;
    const int nStart = _find.iStart >= 0 && _find.iStart < nRows ? _find.iStart : 0;
    const int nSteps = bWrap ? nRows : nRows - nStart;
    for (int i = 0; i < nSteps; ++i) {
        const int nRow = (nStart + i) % nRows;
        const CString sPath = m_shown[nRow]->mf_getPathDisplayString();
        const int nCompared = (what.flags & LVFI_PARTIAL) ? nWanted : sPath.GetLength();
        if (nCompared > sPath.GetLength() || (!(what.flags & LVFI_PARTIAL) && nWanted != sPath.GetLength()))
            continue;
        if (CompareStringOrdinal(sPath.GetString(), nCompared, what.psz, nWanted, TRUE) == CSTR_EQUAL)
            return nRow;
    }
    return -1;
}

void UQClientWindow::mf_implSortBy(int _nColumn) {
    // The list keeps its selection by row: the selected files and the focused one are taken now and
    // found again in their new rows after the sort.
    const int nRows = static_cast<int>(m_shown.GetSize());
    const int nSelected = static_cast<int>(SendMessageW(m_hList, LVM_GETSELECTEDCOUNT, 0, 0));
    std::vector<const UQSearchFileItem*> selected;
    if (nSelected > 0 && nSelected < nRows) {
        selected.reserve(static_cast<std::size_t>(nSelected));
        for (int nRow = ListView_GetNextItem(m_hList, -1, LVNI_SELECTED); nRow >= 0 && nRow < nRows;
             nRow = ListView_GetNextItem(m_hList, nRow, LVNI_SELECTED))
            selected.push_back(m_shown[nRow]);
    }
    const int nFocused = ListView_GetNextItem(m_hList, -1, LVNI_FOCUSED);
    const UQSearchFileItem* pFocused = nFocused >= 0 && nFocused < nRows ? m_shown[nFocused] : nullptr;
    m_bSortAscending = _nColumn == m_nSortColumn ? !m_bSortAscending : 1;
    m_nSortColumn = _nColumn;
    switch (_nColumn) {
    case 2:
        UQSearchFileItem::mf_sortByStatus(m_shown, m_bSortAscending);
        break;
    case 3:
        UQSearchFileItem::mf_sortBySecurity(m_shown, m_bSortAscending);
        break;
    case 4:
        UQSearchFileItem::mf_sortByADStreams(m_shown, m_bSortAscending);
        break;
    default:
        UQSearchFileItem::mf_sortByPath(m_shown, m_bSortAscending);
        break;
    }
    // The list panel only adds an arrow: the old one (another column's, or this one's other way) goes first.
    HWND hHeader = ListView_GetHeader(m_hList);
    for (int i = 0; i < Header_GetItemCount(hHeader); ++i) {
        HDITEMW column{};
        column.mask = HDI_FORMAT;
        if (Header_GetItem(hHeader, i, &column) && (column.fmt & (HDF_SORTUP | HDF_SORTDOWN)) != 0) {
            column.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
            Header_SetItem(hHeader, i, &column);
        }
    }
    UQListPanel::mf_setHeaderSortIcon(m_hList, _nColumn,
                                      UQSortOrder(m_bSortAscending ? UQSortOrder::ASCENDING : 0));
    // All rows or none selected stay so; otherwise each selected file is selected again where it went.
    if (!selected.empty() || pFocused != nullptr) {
        std::unordered_map<const UQSearchFileItem*, int> rowOf;
        rowOf.reserve(static_cast<std::size_t>(nRows));
        for (int nRow = 0; nRow < nRows; ++nRow)
            rowOf.emplace(m_shown[nRow], nRow);
        if (!selected.empty()) {
            ListView_SetItemState(m_hList, -1, 0, LVIS_SELECTED);
            for (const UQSearchFileItem* pItem : selected)
                ListView_SetItemState(m_hList, rowOf[pItem], LVIS_SELECTED, LVIS_SELECTED);
        }
        if (pFocused != nullptr)
            ListView_SetItemState(m_hList, rowOf[pFocused], LVIS_FOCUSED, LVIS_FOCUSED);
    }
    InvalidateRect(m_hList, nullptr, TRUE);
}

std::wstring UQClientWindow::mf_getStatusText(int _nPart) const {
    if (_nPart < 0 || _nPart >= 3 || m_apItems[_nPart] == nullptr)
        return std::wstring();
    return m_apItems[_nPart]->mf_getText().GetString();
}

void UQClientWindow::mf_implUpdateStatus() {
    if (m_apItems[0] == nullptr)
        return;
    const int nSelected = static_cast<int>(SendMessageW(m_hList, LVM_GETSELECTEDCOUNT, 0, 0));
    m_apItems[0]->mf_updateContent(m_greenIcon.mf_get(),
                                   (std::to_wstring(m_shown.GetSize()) + L" files").c_str());
    m_apItems[1]->mf_updateContent(m_blankIcon.mf_get(), (std::to_wstring(nSelected) + L" selected").c_str());
    m_apItems[2]->mf_updateContent(m_blankIcon.mf_get(), (L"Store: " + m_server.mf_getHistoryFile()).c_str());
}

void UQClientWindow::mf_implLoadStatusIcons(UINT _uDpi) {
    HMODULE hLanguage = UQLanguage::mf_getUserLanguageHandle();
    const int nSize = UQDpi::mf_getIconSize(16, _uDpi);
    // The icons shown so far go only once the items show the new ones.
    UQIcon oldGreen(std::move(m_greenIcon));
    UQIcon oldBlank(std::move(m_blankIcon));
    m_greenIcon = UQIcon(UQDpi::mf_loadIcon(hLanguage, IDI_SEVERITY_GREEN, nSize));
    m_blankIcon = UQIcon(UQDpi::mf_loadIcon(hLanguage, IDI_BLANK, nSize));
    mf_implUpdateStatus();
}

void UQClientWindow::mf_onDpiChanged(UINT _uDpi) {
    if (_uDpi != 0 && m_pStatusBar)
        mf_implLoadStatusIcons(_uDpi);
}

void UQClientWindow::mf_implSelectFromList() {
    for (INT_PTR i = 0; i < m_shown.GetSize(); ++i) {
        const UINT uState =
            static_cast<UINT>(SendMessageW(m_hList, LVM_GETITEMSTATE, static_cast<WPARAM>(i), LVIS_SELECTED));
        UQSearchFileItem* pItem = m_shown[i];
        if (uState & LVIS_SELECTED) {
            if (!pItem->mf_isSelected())
                pItem->mf_setSelected(1, UQQueryPatternVersion::LATEST);
        } else {
            pItem->mf_setSelected(0, 0);
        }
    }
}

void UQClientWindow::mf_implRetrieve() {
    mf_implSelectFromList();
    UQSearchFileItem::Array selected;
    m_searchList.mf_getSelectedFileList(selected, 1);
    if (selected.GetSize() == 0) {
        mf_implError(L"Select the files to retrieve first.", 1);
        return;
    }
    std::wstring sFolder = m_sRetrieveFolder;
    if (sFolder.empty()) {
        CString sChosen;
        if (!UQGuiBrowseDialog::mf_browseFolders(m_hDlg, L"Retrieve", L"Choose the folder to retrieve into:",
                                                 CString(), sChosen))
            return;
        sFolder = sChosen.GetString();
    }
    std::vector<UQRetrieval::Request> requests;
    for (INT_PTR i = 0; i < selected.GetSize(); ++i) {
        const UQSearchFileVersion* pVersion = selected[i]->mf_getSelectedVersion();
        if (pVersion == nullptr)
            continue;
        const UQQueryData& data = *pVersion->mf_getQueryData();
        UQRetrieval::Request request;
        request.sObjectPath = data.mf_getObjectPath().mf_getPath().GetString();
        request.uVersion = data.mf_getVersion();
        request.uVolume = data.mf_getAccessKey().uVolume;
        request.uPosition = data.mf_getAccessKey().uPosition;
        requests.push_back(request);
    }
    // The retrieval defaults of the GUI: file security and alternate data streams travel with the content
    // where the stored version carries them; the stand-in's versions carry content only.
    UQGuiRegistry::mf_isDefaultRetrieveFileSecurity();
    UQGuiRegistry::mf_isDefaultRetrieveADStreams();
    std::vector<UQFileOutcome> outcomes;
    std::wstring sReason;
    int bRan = 0;
    UQRetrieval retrieval(m_server);
    const std::wstring sAbsolute = UQSafeFile::mf_absolute(sFolder);
    UQClientWorker worker(L"Retrieval", [&](UQClientWorker& _worker) {
        bRan = retrieval.mf_retrieve(
            requests, sAbsolute, _worker.mf_getCancelSwitch(),
            [&](int _nDone, int _nTotal, const std::wstring&) {
                _worker.mf_publishProgress(L"Retrieving...", _nDone, _nTotal);
            },
            outcomes, sReason);
    });
    UQProgressBarDialog progress(L"Retrieve", worker);
    progress.mf_execute(UQLanguage::mf_getUserLanguageHandle(), m_hDlg, IDD_PROGRESS_BAR);
    if (!bRan) {
        mf_implError(sReason, 0);
        return;
    }
    m_retrieved = outcomes;
    mf_implShowResults(L"Retrieve", outcomes);
}

void UQClientWindow::mf_implRecall() {
    mf_implSelectFromList();
    UQSearchFileItem::Array selected;
    m_searchList.mf_getSelectedFileList(selected, 1);
    if (selected.GetSize() == 0) {
        mf_implError(L"Select the stub files to recall first.", 1);
        return;
    }
    std::vector<UQFileOutcome> outcomes;
    UQRetrieval retrieval(m_server);
    for (INT_PTR i = 0; i < selected.GetSize(); ++i)
        outcomes.push_back(retrieval.mf_recall(selected[i]->mf_getPath().mf_getPath().GetString()));
    m_recalled = outcomes;
    mf_implShowResults(L"Recall", outcomes);
}

void UQClientWindow::mf_implMigrate() {
    if (!m_server.mf_prepare(m_sLastError)) {
        mf_implError(m_sLastError, 0);
        return;
    }
    UQMigrationWizard wizard(m_server, m_sFolder);
    m_pWizard = &wizard;
    const int nResult = wizard.mf_create(GetModuleHandleW(nullptr), m_hDlg);
    m_pWizard = nullptr;
    m_migrated = wizard.mf_getOutcomes();
    if (nResult == 1)
        m_sFolder = wizard.mf_getFolder();
    if (!wizard.mf_getFailure().empty())
        mf_implError(wizard.mf_getFailure(), 0);
}

void UQClientWindow::mf_implRename() {
    UQLineEditor editor(L"Rename search", L"&Name of the saved search:");
    editor.mf_setText(m_sSearchName.c_str(), 1);
    if (editor.mf_show(m_hDlg) == 1) {
        const CString sName = editor.mf_getText();
        if (!sName.IsEmpty()) {
            m_sSearchName = sName.GetString();
            SetDlgItemTextW(m_hDlg, IDC_MAIN_SEARCH_NAME, m_sSearchName.c_str());
        }
    }
}

void UQClientWindow::mf_implShowResults(const wchar_t* _pszCaption,
                                        const std::vector<UQFileOutcome>& _outcomes) {
    ResultsData data{_pszCaption, &_outcomes};
    DialogBoxParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_KORCLIENT_RESULTS), m_hDlg,
                    f_ResultsCallback, reinterpret_cast<LPARAM>(&data));
}
