#include "guibase/wizard/UQWizardPanel.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/wizard/UQWizard.h"

namespace {

const int ITEM_PLACEHOLDER = 444;
// The length GetWindowPlacement expects in the structure it fills.
const UINT PLACEMENT_LENGTH = 44;

} // namespace

INT_PTR CALLBACK f_WizardPanelDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

INT_PTR CALLBACK f_WizardPanelDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_WizardPanelDialogProcedure";
    switch (_uMsg) {
    case WM_INITDIALOG: {
        UQWizardPanel* pPanel = UQDialogProcedure::mf_storeOnInit<UQWizardPanel>(_hDlg, _lParam);
        if (pPanel == nullptr)
            return 0;
        return UQDialogProcedure::mf_barrier(
            _sFunction_, L"Failure initializing dialog '%s':\r\n%s%s",
            [&] { return pPanel->mf_onInitDialog(_hDlg); }, pPanel->mf_getTitle());
    }
    case WM_COMMAND: {
        // No panel means no title to name.
        UQWizardPanel* pPanel = UQDialogProcedure::mf_fetch<UQWizardPanel>(
            _hDlg, _sFunction_, L"No user data pointer in panel '%s'", CString());
        if (pPanel == nullptr)
            return 0;
        return UQDialogProcedure::mf_barrier(
            _sFunction_, L"Failure calling on-command for panel '%s':\r\n%s%s",
            [&] { return pPanel->mf_onCommand(HIWORD(_wParam), LOWORD(_wParam)); }, pPanel->mf_getTitle());
    }
    case WM_NCDESTROY:
        UQDialogProcedure::mf_clearUserData(_hDlg);
        return 0;
    default:
        return 0;
    }
}

UQWizardPanel::UQWizardPanel(UQWizard& _wizard, int _nIndex, unsigned int _uTitleStringId,
                             unsigned int _uResourceId, int _bExecutePanel)
    : m_nIndex(_nIndex), m_sTitle(UQString(_uTitleStringId)), m_pWizard(&_wizard), m_bSkip(0),
      m_uResourceId(_uResourceId), m_hWnd(nullptr), m_bExecute(_bExecutePanel), m_executionResult() {}

UQWizardPanel::~UQWizardPanel() = default;

void UQWizardPanel::mf_execute() {}

void UQWizardPanel::mf_resetExecutionResult() {
    m_executionResult = UQErrnoData();
}

int UQWizardPanel::mf_onInitDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQWizardPanel::mf_onInitDialog";
    m_hWnd = _hDlg;
    try {
        m_pWizard->mf_onInitPanel(*this);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure initializing '%s':\r\n%s%s", m_sTitle,
                         UQLog::TAB, e.mf_toString());
        return 0;
    }
    return 1;
}

int UQWizardPanel::mf_onCommand(unsigned short, unsigned short) {
    return 0;
}

int UQWizardPanel::mf_create() {
    static const wchar_t* const _sFunction_ = L"UQWizardPanel::mf_create";
    HWND hFrame = m_pWizard->mf_getHandle();
    HWND hWnd = CreateDialogParamW(UQLanguage::mf_getUserLanguageHandle(), MAKEINTRESOURCEW(m_uResourceId),
                                   hFrame, f_WizardPanelDialogProcedure, reinterpret_cast<LPARAM>(this));
    if (hWnd == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Resource, _sFunction_,
                          L"Failure creating wizard panel, resource-id=%lu",
                          static_cast<unsigned long>(m_uResourceId));
    m_hWnd = hWnd;
    WINDOWPLACEMENT placement = {};
    placement.length = PLACEMENT_LENGTH;
    GetWindowPlacement(GetDlgItem(hFrame, ITEM_PLACEHOLDER), &placement);
    SetWindowPlacement(m_hWnd, &placement);
    // Right after the placeholder in z-order, so that Tab reaches the panel's fields before the frame's
    // Back, Next and Cancel, as they are read.
    SetWindowPos(m_hWnd, GetDlgItem(hFrame, ITEM_PLACEHOLDER), 0, 0, 0, 0,
                 SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_NOREDRAW);
    return 1;
}

void UQWizardPanel::mf_setSkipPanel(int _bSkip) {
    m_bSkip = _bSkip;
}

int UQWizardPanel::mf_isSkipPanel() const {
    return m_bSkip;
}

int UQWizardPanel::mf_isExecutePanel() const {
    return m_bExecute;
}

const UQErrnoData& UQWizardPanel::mf_getExecutionResult() const {
    return m_executionResult;
}

int UQWizardPanel::mf_getIndex() const {
    return m_nIndex;
}

const CString& UQWizardPanel::mf_getTitle() const {
    return m_sTitle;
}

UQWizard& UQWizardPanel::mf_getWizard() const {
    return *m_pWizard;
}

unsigned int UQWizardPanel::mf_getResourceId() const {
    return m_uResourceId;
}

HWND UQWizardPanel::mf_getHandle() const {
    return m_hWnd;
}

void UQWizardPanel::mf_setExecutionResult(const UQErrnoData& _result) {
    m_executionResult = _result;
}
