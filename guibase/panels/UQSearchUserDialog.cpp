#include "guibase/panels/UQSearchUserDialog.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/foundation/UQWildcard.h"
#include "guibase/toolkit/UQComboBox.h"
#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQListPanel.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "guibase/toolkit/UQSortOrder.h"
#include "guibase/toolkit/UQWindow.h"

#include <cwchar>
#include <memory>

// The dialog callback; a friend of the class, defined below.
INT_PTR CALLBACK f_SearchUserDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

const int TEMPLATE_SEARCH_USER = 10054;
const int ITEM_OK = 30033;
const int ITEM_CANCEL = 142;
const int ITEM_AUTHORITY_LABEL = 30186;
const int ITEM_FILTER_LABEL = 30187;
const int ITEM_AUTHORITY = 30059;
const int ITEM_USER_LIST = 30081;
const int ITEM_FILTER = 30078;
const int ITEM_LIST_BUTTON = 30077;
const int ITEM_START_MESSAGE = 30095;

const unsigned TEXT_TITLE = 4317;
const unsigned TEXT_AUTHORITY_LABEL = 3917;
const unsigned TEXT_FILTER_LABEL = 3650;
const unsigned TEXT_LIST_BUTTON = 3655;
const unsigned TEXT_OK = 3070;
const unsigned TEXT_CANCEL = 3044;
const unsigned TEXT_LOCAL_COMPUTER = 3900;
const unsigned TEXT_PRIMARY_CONTROLLER = 4139;
const unsigned TEXT_START = 3171;
const unsigned TEXT_PLEASE_WAIT = 4167;
const unsigned TEXT_COLUMN = 4561;
const WORD ICON_USER = 561;
const unsigned long TOOLTIP_DELAY_MS = 30000;
// The start message's background, as GetSysColor numbers it.
const int START_MESSAGE_COLOR = 20;
// The scroll bar width that UQListPanel::mf_adjustColumnWidths leaves room for.
const int ASSUMED_SCROLL_BAR_WIDTH = 16;

const wchar_t* const VALUE_AUTHORITY = L"SearchUserAuthority";
const wchar_t* const NO_USER_DATA = L"No user data pointer in call WM_COMMAND";
// Shared with the history dialog, whose text it is.
const wchar_t* const INIT_FAILURE = L"Failure initializing history dialog:\r\n%s%s";

int CALLBACK compareUsers(LPARAM _lParam1, LPARAM _lParam2, LPARAM _lParamSort) {
    const UQSid* pA = reinterpret_cast<const UQSid*>(_lParam1);
    const UQSid* pB = reinterpret_cast<const UQSid*>(_lParam2);
    if (pA == nullptr || pB == nullptr)
        return pA == pB ? 0 : (pA == nullptr ? 1 : -1);
    const int nOrder = pA->mf_getDisplayName().CompareNoCase(pB->mf_getDisplayName());
    return _lParamSort != 0 ? nOrder : -nOrder;
}

} // namespace

UQSearchUserDialog::UQSearchUserDialog()
    : m_hDlg(nullptr), m_hStartMessage(nullptr), m_hAuthorityCombo(nullptr), m_hUserList(nullptr),
      m_hFilterEdit(nullptr), m_hListButton(nullptr), m_nCurrentPage(-1), m_pResultUser(nullptr),
      m_pResultAuthority(nullptr) {}

UQSearchUserDialog::~UQSearchUserDialog() {
    // A list view destroys its own image list with itself; this covers a dialog object that outlives a
    // list view still open (a property page).
    if (m_hUserList != nullptr && IsWindow(m_hUserList))
        UQListPanel::mf_deleteImageList(m_hUserList);
    for (INT_PTR i = 0; i < m_apPages.GetSize(); ++i)
        delete m_apPages.GetAt(i);
    m_apPages.RemoveAll();
}

int UQSearchUserDialog::mf_show(HWND _hParent) {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_show";
    const INT_PTR nResult =
        UQDialogProcedure::mf_showModal(_hParent, TEMPLATE_SEARCH_USER, f_SearchUserDialogCallback, this,
                                        _sFunction_, L"Failure showing user search dialog:\r\n%s%s");
    m_hDlg = m_hStartMessage = m_hAuthorityCombo = m_hUserList = m_hFilterEdit = m_hListButton = nullptr;
    return nResult == 1 ? 1 : 0;
}

CString UQSearchUserDialog::mf_implStartText() {
    // The button's label without its access key: the message is no label, and an '&' in a static would
    // give it the button's key.
    CString sLabel = UQString(TEXT_LIST_BUTTON).mf_getText();
    CString sPlain;
    for (int i = 0; i < sLabel.GetLength(); ++i) {
        if (sLabel[i] == L'&' && i + 1 < sLabel.GetLength())
            ++i;
        sPlain += sLabel[i];
    }
    CString sText;
    sText.Format(UQString(TEXT_START), sPlain);
    return sText;
}

int UQSearchUserDialog::mf_implOnInitDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_implOnInitDialog";
    m_hDlg = _hDlg;
    UQSidAuthority* pLocalComputer = nullptr;
    UQArray<UQSidAuthority*, UQSidAuthority*> apControllers;
    try {
        pLocalComputer = UQDomain::mf_getLocalComputer();
        UQDomain::mf_getDomainControllers(apControllers);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure getting sid authorities:\r\n%s%s",
                         UQLog::TAB, e.mf_toString());
        return 0;
    }
    UQWindow::mf_setText(_hDlg, UQString(TEXT_TITLE));
    UQWindow::mf_setItemText(_hDlg, ITEM_AUTHORITY_LABEL, UQString(TEXT_AUTHORITY_LABEL));
    UQWindow::mf_setItemText(_hDlg, ITEM_FILTER_LABEL, UQString(TEXT_FILTER_LABEL));
    UQWindow::mf_setItemText(_hDlg, ITEM_LIST_BUTTON, UQString(TEXT_LIST_BUTTON));
    UQWindow::mf_setItemText(_hDlg, ITEM_OK, UQString(TEXT_OK));
    UQWindow::mf_setItemText(_hDlg, ITEM_CANCEL, UQString(TEXT_CANCEL));
    m_hStartMessage = UQWindow::mf_getItem(_hDlg, ITEM_START_MESSAGE);
    m_hAuthorityCombo = UQWindow::mf_getItem(_hDlg, ITEM_AUTHORITY);
    m_hUserList = UQWindow::mf_getItem(_hDlg, ITEM_USER_LIST);
    m_hFilterEdit = UQWindow::mf_getItem(_hDlg, ITEM_FILTER);
    m_hListButton = UQWindow::mf_getItem(_hDlg, ITEM_LIST_BUTTON);

    const CString sSaved = mf_implRestoreRegistrySettings();
    int nDefaultPage = -1;
    const auto addPage = [&](UQSidAuthority* _pAuthority, const CString& _sText) {
        std::unique_ptr<UQPageData> pPage(new UQPageData(_pAuthority));
        m_apPages.Add(pPage.get());
        pPage.release();
        UQComboBox::mf_addTextAndData(m_hAuthorityCombo, _sText, _pAuthority);
        return static_cast<int>(m_apPages.GetSize()) - 1;
    };
    if (pLocalComputer != nullptr) {
        CString sText;
        sText.Format(L"%s  (%s)", pLocalComputer->mf_getDisplayName(),
                     UQString(TEXT_LOCAL_COMPUTER).mf_getText());
        nDefaultPage = addPage(pLocalComputer, sText);
        if (pLocalComputer->mf_getName() == sSaved)
            m_nCurrentPage = nDefaultPage;
    }
    for (INT_PTR i = 0; i < apControllers.GetSize(); ++i) {
        UQSidAuthority* pController = apControllers[i];
        if (pController == nullptr)
            continue;
        CString sText = pController->mf_getDisplayName();
        if (pController->mf_isMarked())
            sText.Format(L"%s  (%s)", pController->mf_getDisplayName(),
                         UQString(TEXT_PRIMARY_CONTROLLER).mf_getText());
        const int nPage = addPage(pController, sText);
        if (pController->mf_isMarked()) {
            nDefaultPage = nPage;
            if (pController->mf_getName() == sSaved)
                m_nCurrentPage = nPage;
        }
    }
    if (m_nCurrentPage < 0)
        m_nCurrentPage = nDefaultPage;
    UQComboBox::mf_selectIndex(m_hAuthorityCombo, m_nCurrentPage);

    UQWindow::mf_setText(m_hFilterEdit, L"*");
    mf_implDisplayStartMessage(mf_implStartText());

    UQListPanel::mf_initTooltips(m_hUserList, 0);
    HWND hToolTip = reinterpret_cast<HWND>(SendMessageW(m_hUserList, LVM_GETTOOLTIPS, 0, 0));
    SendMessageW(hToolTip, TTM_SETDELAYTIME, TTDT_AUTOPOP, MAKELPARAM(TOOLTIP_DELAY_MS, 0));
    UQListPanel::mf_insertColumn(m_hUserList, 0, UQString(TEXT_COLUMN), 100, LVCFMT_LEFT);
    UQListPanel::mf_adjustColumnWidths(m_hUserList, 1);
    // The adjustment leaves room for a scroll bar of 16 pixels; where the system's is wider, a listed page
    // would also get a horizontal scroll bar for the difference.
    const int nExtra = GetSystemMetrics(SM_CXVSCROLL) - ASSUMED_SCROLL_BAR_WIDTH;
    if (nExtra > 0)
        UQListPanel::mf_setColumnWidth(m_hUserList, 0,
                                       UQListPanel::mf_getColumnWidth(m_hUserList, 0) - nExtra);
    UQListPanel::mf_createImageList(m_hUserList);
    UQListPanel::mf_addIcon(m_hUserList, ICON_USER);
    mf_implOnUpdateControls();
    return 1;
}

int UQSearchUserDialog::mf_implOnCommand(unsigned short _uNotificationCode, unsigned short _uControlId) {
    switch (_uControlId) {
    case ITEM_AUTHORITY:
        if (_uNotificationCode == CBN_SELENDOK)
            mf_implOnUpdateAuthority();
        else if (_uNotificationCode == CBN_SETFOCUS)
            SendMessageW(m_hDlg, DM_SETDEFID, ITEM_LIST_BUTTON, 0);
        return 0;
    case ITEM_FILTER:
        // Enter in the filter lists: the list button is the default button while the filter has the focus.
        if (_uNotificationCode == EN_SETFOCUS)
            SendMessageW(m_hDlg, DM_SETDEFID, ITEM_LIST_BUTTON, 0);
        return 0;
    case ITEM_LIST_BUTTON:
        if (_uNotificationCode == BN_CLICKED)
            mf_implOnUpdateList();
        return 0;
    case IDOK:
        // Enter where no enabled default button takes it: lists, as a property page does on PSN_APPLY.
        if (mf_implIsListingFocus())
            mf_implOnUpdateList();
        return 0;
    default:
        return 0;
    }
}

int UQSearchUserDialog::mf_implIsListingFocus() const {
    HWND hFocus = GetFocus();
    if (hFocus == nullptr)
        return 0;
    // The edit of a drop-down combo box is a child of the combo.
    return hFocus == m_hAuthorityCombo || GetParent(hFocus) == m_hAuthorityCombo || hFocus == m_hFilterEdit ||
                   hFocus == m_hListButton || hFocus == m_hUserList
               ? 1
               : 0;
}

void UQSearchUserDialog::mf_implOnUpdateAuthority() {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_implOnUpdateAuthority";
    const int nIndex = UQComboBox::mf_getSelection(m_hAuthorityCombo);
    if (nIndex < 0)
        return;
    if (nIndex >= m_apPages.GetSize()) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"Selected combobox index out of range");
        return;
    }
    if (nIndex == m_nCurrentPage) {
        UQReport::mf_log(UQLogData::LEVEL_D, _sFunction_,
                         L"Authority page has not changed, nothing to do ...");
        return;
    }
    mf_implInitializePage(nIndex);
    m_nCurrentPage = nIndex;
}

void UQSearchUserDialog::mf_implInitializePage(int _nPage) {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_implInitializePage";
    if (_nPage < 0 || _nPage >= m_apPages.GetSize()) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Page index out of range: %d >= %d", _nPage,
                         static_cast<int>(m_apPages.GetSize()));
        return;
    }
    UQPageData& page = *m_apPages[_nPage];
    mf_implRestoreFilterSettings(page);
    SendMessageW(m_hUserList, LVM_DELETEALLITEMS, 0, 0);
    for (INT_PTR i = 0; i < page.m_apFilteredUsers.GetSize(); ++i) {
        const UQSid* pSid = page.m_apFilteredUsers[i];
        if (pSid == nullptr) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Sid quota with index=%d is NULL",
                             static_cast<int>(i));
            continue;
        }
        mf_implDisplaySid(static_cast<int>(i), pSid);
    }
    mf_implDisplayStartMessage(page.m_apUsers.GetSize() == 0 ? mf_implStartText() : CString());
    mf_implSort();
    mf_implOnUpdateControls();
    mf_implStoreRegistrySettings(page);
}

void UQSearchUserDialog::mf_implOnUpdateList() {
    static const wchar_t* const _sFunction_ = L"UQQuotaPanel::mf_implOnUpdateList";
    if (m_nCurrentPage < 0 || m_nCurrentPage >= m_apPages.GetSize()) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Page index out of range: %d >= %d",
                         m_nCurrentPage, static_cast<int>(m_apPages.GetSize()));
        return;
    }
    UQPageData& page = *m_apPages[m_nCurrentPage];
    const int bFirstQuery = mf_implHasSids() ? 0 : 1;
    if (bFirstQuery)
        mf_implDisplayStartMessage(UQString(TEXT_PLEASE_WAIT));
    SendMessageW(m_hUserList, LVM_DELETEALLITEMS, 0, 0);
    page.mf_deleteUsers();
    try {
        mf_implCreateSidArray(*page.m_pAuthority, page.m_apUsers);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure creating sid-quota array (authority='%s'):\r\n%s%s",
                         page.m_pAuthority->mf_getName(), UQLog::TAB, e.mf_toString());
        // The user reads what went wrong in the box and, once it is closed, over the empty list.
        CString sReason = UQErrno::mf_toGuiMessage(e.mf_getData(), CString());
        if (!e.mf_getDetail().IsEmpty()) {
            sReason += L"\r\n";
            sReason += e.mf_getDetail();
        }
        UQMessageBox box(sReason, UQSeverity::Error, UQMessageBox::BUTTONS_SINGLE, CString());
        try {
            box.mf_show(m_hDlg);
        } catch (const UQErrno&) {
            // Already logged by the box; the start message below still tells the user.
        }
        mf_implDisplayStartMessage(sReason + L"\r\n\r\n" + mf_implStartText());
        mf_implOnUpdateControls();
        return;
    }
    mf_implStoreFilterSettings(page);
    try {
        mf_implFilterSidList(page);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure filtering sid list for '%s':\r\n%s%s",
                         page.m_pAuthority->mf_getName(), UQLog::TAB, e.mf_toString());
    }
    if (bFirstQuery)
        mf_implDisplayStartMessage(CString());
    SendMessageW(m_hUserList, WM_SETREDRAW, FALSE, 0);
    for (INT_PTR i = 0; i < page.m_apFilteredUsers.GetSize(); ++i) {
        const UQSid* pSid = page.m_apFilteredUsers[i];
        if (pSid == nullptr) {
            UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Filtered SID with index=%d is NULL",
                             static_cast<int>(i));
            continue;
        }
        mf_implDisplaySid(static_cast<int>(i), pSid);
    }
    mf_implSort();
    SendMessageW(m_hUserList, WM_SETREDRAW, TRUE, 0);
    RedrawWindow(m_hUserList, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
    mf_implOnUpdateControls();
}

void UQSearchUserDialog::mf_implCreateSidArray(UQSidAuthority& _rAuthority,
                                               UQArray<UQSid*, UQSid*>& _rUsers) {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_implCreateSidArray";
    if (_rUsers.GetSize() != 0)
        UQReport::mf_fail(UQErrno::_E_::Initialization, _sFunction_, L"Current sid array is not empty");
    UQArray<UQSid*, UQSid*> apUsers;
    try {
        _rAuthority.mf_queryDisplayUsers(apUsers);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure querying users of sid authority '%s':\r\n%s%s", _rAuthority.mf_getName(),
                         UQLog::TAB, e.mf_toString());
        for (INT_PTR i = 0; i < apUsers.GetSize(); ++i)
            delete apUsers.GetAt(i);
        throw;
    }
    _rUsers.Copy(apUsers);
    SendMessageW(m_hUserList, LVM_SETITEMCOUNT, static_cast<WPARAM>(_rUsers.GetSize()), 0);
}

void UQSearchUserDialog::mf_implFilterSidList(UQPageData& _rPage) {
    _rPage.m_apFilteredUsers.RemoveAll();
    if (_rPage.m_sFilter.IsEmpty() || _rPage.m_sFilter == L"*") {
        _rPage.m_apFilteredUsers.Copy(_rPage.m_apUsers);
        return;
    }
    const UQWildcard pattern(_rPage.m_sFilter, 0);
    for (INT_PTR i = 0; i < _rPage.m_apUsers.GetSize(); ++i) {
        UQSid* pSid = _rPage.m_apUsers[i];
        if (pSid != nullptr && pattern.mf_matches(pSid->mf_getDisplayName()))
            _rPage.m_apFilteredUsers.Add(pSid);
    }
}

void UQSearchUserDialog::mf_implDisplaySid(int _nIndex, const UQSid* _pSid) {
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_TEXT | LVIF_IMAGE | LVIF_PARAM;
    item.iItem = _nIndex;
    item.iImage = 0;
    item.pszText = const_cast<LPWSTR>(_pSid->mf_getDisplayName().GetString());
    item.lParam = reinterpret_cast<LPARAM>(_pSid);
    SendMessageW(m_hUserList, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

void UQSearchUserDialog::mf_implSort() {
    mf_implSortItems(1);
}

void UQSearchUserDialog::mf_implSortItems(int _bAscending) {
    SendMessageW(m_hUserList, LVM_SORTITEMS, static_cast<WPARAM>(_bAscending),
                 reinterpret_cast<LPARAM>(compareUsers));
    // The header shows one arrow: the previous one goes before the new one is set.
    HWND hHeader = UQListPanel::mf_getHeader(m_hUserList);
    HDITEMW header;
    ZeroMemory(&header, sizeof header);
    header.mask = HDI_FORMAT;
    if (SendMessageW(hHeader, HDM_GETITEMW, 0, reinterpret_cast<LPARAM>(&header))) {
        header.fmt &= ~(HDF_SORTUP | HDF_SORTDOWN);
        SendMessageW(hHeader, HDM_SETITEMW, 0, reinterpret_cast<LPARAM>(&header));
    }
    UQListPanel::mf_setHeaderSortIcon(
        m_hUserList, 0, UQSortOrder(_bAscending ? UQSortOrder::ASCENDING : UQSortOrder::DESCENDING));
}

void UQSearchUserDialog::mf_implOnSortColumn(NMLISTVIEW* _pNmListView, int _nValue) {
    const int bAscending = _pNmListView != nullptr ? (_nValue == 0 ? 1 : 0) : _nValue;
    mf_implSortItems(bAscending);
}

void UQSearchUserDialog::mf_implOnToolTip(NMLVGETINFOTIPW* _pToolTip) {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_implOnToolTip";
    if (_pToolTip == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, L"NULL == _pstToolTip");
        return;
    }
    const int nSelection = UQComboBox::mf_getSelection(m_hAuthorityCombo);
    if (nSelection < 0 || UQComboBox::mf_getData(m_hAuthorityCombo, nSelection) == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting selected SID authority from combo control");
        return;
    }
    LVITEMW item;
    ZeroMemory(&item, sizeof item);
    item.mask = LVIF_PARAM;
    item.iItem = _pToolTip->iItem;
    const UQSid* pSid = SendMessageW(m_hUserList, LVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item))
                            ? reinterpret_cast<const UQSid*>(item.lParam)
                            : nullptr;
    if (pSid == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure getting selected SID from list control");
        return;
    }
    const UQUser* pUser = dynamic_cast<const UQUser*>(pSid);
    CString sTip;
    if (pUser != nullptr && pUser->mf_hasSecondText())
        sTip.Format(L"%s\r\n%s", pUser->mf_getSecondText(), pSid->mf_getSidString());
    else
        sTip.Format(L"%s", pSid->mf_getSidString());
    if (_pToolTip->pszText != nullptr && _pToolTip->cchTextMax > 0) {
        const int nCopy =
            sTip.GetLength() < _pToolTip->cchTextMax - 1 ? sTip.GetLength() : _pToolTip->cchTextMax - 1;
        wmemcpy(_pToolTip->pszText, sTip.GetString(), static_cast<std::size_t>(nCopy));
        _pToolTip->pszText[nCopy] = L'\0';
    }
}

int UQSearchUserDialog::mf_implSetResults() {
    static const wchar_t* const _sFunction_ = L"UQSearchUserDialog::mf_implSetResults";
    if (!UQListPanel::mf_hasSelectedIndex(m_hUserList)) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"No sid selected");
        return 0;
    }
    const int nSelection = UQComboBox::mf_getSelection(m_hAuthorityCombo);
    const UQSidAuthority* pAuthority =
        nSelection >= 0
            ? static_cast<const UQSidAuthority*>(UQComboBox::mf_getData(m_hAuthorityCombo, nSelection))
            : nullptr;
    if (pAuthority == nullptr) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting selected SID authority from combo control");
        return 0;
    }
    const int nIndex = UQListPanel::mf_getSelectedIndex(m_hUserList);
    if (nIndex < 0) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure getting selected SID user from list control");
        return 0;
    }
    const UQSid* pSid = static_cast<const UQSid*>(UQListPanel::mf_getData(m_hUserList, nIndex));
    m_pResultUser = dynamic_cast<const UQUser*>(pSid);
    m_pResultAuthority = pAuthority;
    return 1;
}

void UQSearchUserDialog::mf_implDisplayStartMessage(const CString& _sText) {
    if (!_sText.IsEmpty()) {
        SetWindowTextW(m_hStartMessage, _sText);
        ShowWindow(m_hStartMessage, SW_SHOWNA);
        // Over the list view, which was created after it.
        SetWindowPos(m_hStartMessage, HWND_TOP, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
    } else {
        SetWindowTextW(m_hStartMessage, L"");
        ShowWindow(m_hStartMessage, SW_HIDE);
    }
    RedrawWindow(m_hStartMessage, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
}

int UQSearchUserDialog::mf_implHasSids() const {
    if (m_nCurrentPage < 0 || m_nCurrentPage >= m_apPages.GetSize())
        return 0;
    return m_apPages[m_nCurrentPage]->m_apUsers.GetSize() > 0 ? 1 : 0;
}

void UQSearchUserDialog::mf_implOnUpdateControls() {
    EnableWindow(UQWindow::mf_getItem(m_hDlg, ITEM_OK),
                 UQListPanel::mf_hasSelectedIndex(m_hUserList) ? TRUE : FALSE);
}

void UQSearchUserDialog::mf_implStoreFilterSettings(UQPageData& _rPage) {
    UQWindow::mf_getText(m_hFilterEdit, _rPage.m_sFilter);
}

void UQSearchUserDialog::mf_implRestoreFilterSettings(UQPageData& _rPage) {
    UQWindow::mf_setText(m_hFilterEdit, _rPage.m_sFilter);
}

void UQSearchUserDialog::mf_implStoreRegistrySettings(UQPageData& _rPage) {
    static const wchar_t* const _sFunction_ = L"UQQuotaPanel::mf_implStoreRegistrySettings";
    try {
        UQRegistry::mf_setValue(VALUE_AUTHORITY, _rPage.m_pAuthority->mf_getName(), 0, CString(),
                                HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Could not store current authority page setting:\r\n%s%s", UQLog::TAB,
                         e.mf_toString());
    }
}

CString UQSearchUserDialog::mf_implRestoreRegistrySettings() {
    static const wchar_t* const _sFunction_ = L"UQQuotaPanel::mf_implRestoreRegistrySettings";
    CString sName;
    try {
        if (UQRegistry::mf_exists(VALUE_AUTHORITY, CString(), HKEY_CURRENT_USER))
            UQRegistry::mf_getValue(VALUE_AUTHORITY, sName, CString(), HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Could not check/read current authority page setting:\r\n%s%s", UQLog::TAB,
                         e.mf_toString());
        sName.Empty();
    }
    return sName;
}

INT_PTR CALLBACK f_SearchUserDialogCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_SearchUserDialogCallback";
    using Procedure = UQDialogProcedure;
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<UQSearchUserDialog>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, INIT_FAILURE,
            [&](UQSearchUserDialog& _dialog) { return _dialog.mf_implOnInitDialog(_hDlg); });
    case WM_COMMAND:
        return Procedure::mf_forward<UQSearchUserDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQSearchUserDialog& _dialog) -> INT_PTR {
                const unsigned short uId = LOWORD(_wParam);
                if (uId == IDCANCEL || uId == ITEM_CANCEL) {
                    EndDialog(_hDlg, 0);
                    return 1;
                }
                if (uId == ITEM_OK) {
                    EndDialog(_hDlg, _dialog.mf_implSetResults());
                    return 1;
                }
                return _dialog.mf_implOnCommand(HIWORD(_wParam), uId);
            });
    case WM_NOTIFY: {
        const NMHDR* pHeader = reinterpret_cast<const NMHDR*>(_lParam);
        if (pHeader == nullptr)
            return 0;
        if (pHeader->code == PSN_KILLACTIVE || pHeader->code == PSN_SETACTIVE)
            return 0;
        const bool bFromList = pHeader->idFrom == static_cast<UINT_PTR>(ITEM_USER_LIST);
        if (pHeader->code != PSN_APPLY &&
            !(bFromList && (pHeader->code == LVN_GETINFOTIPW || pHeader->code == LVN_COLUMNCLICK ||
                            pHeader->code == LVN_KEYDOWN || pHeader->code == LVN_ITEMCHANGED ||
                            pHeader->code == NM_SETFOCUS)))
            return 0;
        return Procedure::mf_forward<UQSearchUserDialog>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQSearchUserDialog& _dialog) -> INT_PTR {
                switch (pHeader->code) {
                case PSN_APPLY:
                    if (!_dialog.mf_implIsListingFocus())
                        return 0;
                    _dialog.mf_implOnUpdateList();
                    return Procedure::mf_setMessageResult(_hDlg, PSNRET_INVALID_NOCHANGEPAGE);
                case LVN_GETINFOTIPW: {
                    NMLVGETINFOTIPW* pTip = reinterpret_cast<NMLVGETINFOTIPW*>(_lParam);
                    UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_,
                                     L"Received tooltip event (LVN_GETINFOTIP), item=%d, subitem=%d ...",
                                     pTip->iItem, pTip->iSubItem);
                    _dialog.mf_implOnToolTip(pTip);
                    return 1;
                }
                case LVN_COLUMNCLICK:
                    _dialog.mf_implOnSortColumn(reinterpret_cast<NMLISTVIEW*>(_lParam), 1);
                    return 0;
                case LVN_KEYDOWN: {
                    // Ctrl+1 sorts as a click on the header does, which takes no keyboard focus.
                    const NMLVKEYDOWN* pKey = reinterpret_cast<const NMLVKEYDOWN*>(_lParam);
                    if (UQListPanel::mf_getSortColumnOfKey(pHeader->hwndFrom, pKey->wVKey) < 0)
                        return 0;
                    NMLISTVIEW click;
                    ZeroMemory(&click, sizeof click);
                    click.hdr = *pHeader;
                    click.hdr.code = LVN_COLUMNCLICK;
                    click.iItem = -1;
                    click.iSubItem = pKey->wVKey - '1';
                    _dialog.mf_implOnSortColumn(&click, 1);
                    return 0;
                }
                case LVN_ITEMCHANGED:
                    _dialog.mf_implOnUpdateControls();
                    return 1;
                default:
                    // NM_SETFOCUS of the list: Enter there chooses the user.
                    SendMessageW(_hDlg, DM_SETDEFID, ITEM_OK, 0);
                    return 0;
                }
            });
    }
    case WM_CTLCOLORSTATIC: {
        if (reinterpret_cast<HWND>(_lParam) != GetDlgItem(_hDlg, ITEM_START_MESSAGE))
            return 0;
        static const HBRUSH s_hBrush = GetSysColorBrush(START_MESSAGE_COLOR);
        SetBkColor(reinterpret_cast<HDC>(_wParam), GetSysColor(START_MESSAGE_COLOR));
        return Procedure::mf_brushResult(s_hBrush);
    }
    case WM_CLOSE:
        return Procedure::mf_forward<UQSearchUserDialog>(_hDlg, _uMsg, _sFunction_, NO_USER_DATA,
                                                         [&](UQSearchUserDialog&) {
                                                             EndDialog(_hDlg, 0);
                                                             return 1;
                                                         });
    default:
        return 0;
    }
}
