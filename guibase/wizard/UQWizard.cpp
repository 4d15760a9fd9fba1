#include "guibase/wizard/UQWizard.h"

#include "guibase/foundation/UQReport.h"
#include "guibase/toolkit/UQDialogProcedure.h"
#include "guibase/toolkit/UQMessageBox.h"
#include "guibase/toolkit/UQToolkitReport.h"
#include "guibase/toolkit/UQWindow.h"

namespace {

const int TEMPLATE_FRAME = 528;
const int ITEM_BACK = 432;
const int ITEM_NEXT = 440;
const int ITEM_TITLE = 945;
// COLOR_BTNHIGHLIGHT: the colour the frame's static texts sit on.
const int FRAME_TEXT_BACKGROUND = 20;

HFONT createFont(LONG _lHeight, LONG _lWeight, BYTE _bPitchAndFamily) {
    LOGFONTW font = {};
    font.lfHeight = _lHeight;
    font.lfWeight = _lWeight;
    font.lfPitchAndFamily = _bPitchAndFamily;
    return CreateFontIndirectW(&font);
}

} // namespace

INT_PTR CALLBACK f_WizardDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

// The keyboard goes to the first field of a panel that the user has stepped to; a panel without one
// leaves it on the button pressed, unless that button has just been disabled (Back on the first panel).
void focusPanel(HWND _hFrame, HWND _hPanel) {
    for (HWND hChild = GetWindow(_hPanel, GW_CHILD); hChild != nullptr;
         hChild = GetWindow(hChild, GW_HWNDNEXT)) {
        if (IsWindowVisible(hChild) && IsWindowEnabled(hChild) &&
            (GetWindowLongW(hChild, GWL_STYLE) & WS_TABSTOP) != 0) {
            SendMessageW(_hFrame, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(hChild), TRUE);
            return;
        }
    }
    HWND hFocus = GetFocus();
    if (hFocus == nullptr || !IsWindowEnabled(hFocus))
        SendMessageW(_hFrame, WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(GetDlgItem(_hFrame, ITEM_NEXT)), TRUE);
}

} // namespace

INT_PTR CALLBACK f_WizardDialogProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_WizardDialogProcedure";
    static const wchar_t* const NO_USER_DATA = L"No user data pointer in configuration panel";
    switch (_uMsg) {
    case WM_INITDIALOG:
        return UQDialogProcedure::mf_initDialog<UQWizard>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, L"Failure initializing configuration wizard:\r\n%s%s",
            [&](UQWizard& _wizard) { return _wizard.mf_onInitDialog(_hDlg); });
    case WM_COMMAND: {
        UQWizard* pWizard = UQDialogProcedure::mf_fetch<UQWizard>(_hDlg, _sFunction_, NO_USER_DATA);
        if (pWizard == nullptr)
            return 0;
        return UQDialogProcedure::mf_barrier(
            _sFunction_, L"Failure calling on-command of configuration wizard:\r\n%s%s",
            [&] { return pWizard->mf_onCommand(HIWORD(_wParam), LOWORD(_wParam)); });
    }
    case WM_CTLCOLORSTATIC: {
        // A system colour brush belongs to the system: fetched once, never deleted.
        static const HBRUSH hBrush = GetSysColorBrush(FRAME_TEXT_BACKGROUND);
        SetBkColor(reinterpret_cast<HDC>(_wParam), GetSysColor(FRAME_TEXT_BACKGROUND));
        return UQDialogProcedure::mf_brushResult(hBrush);
    }
    default:
        return 0;
    }
}

// The panel list as the rules see it.
class UQWizard::PanelView final : public UQWizardCore::UVPanels {
public:
    explicit PanelView(const std::vector<UQWizardPanel*>& _panels) : m_panels(_panels) {}
    int mf_getCount() const override { return static_cast<int>(m_panels.size()); }
    int mf_isPresent(int _nIndex) const override { return mf_at(_nIndex) != nullptr; }
    int mf_isSkipped(int _nIndex) const override { return mf_at(_nIndex)->mf_isSkipPanel(); }
    int mf_isExecute(int _nIndex) const override { return mf_at(_nIndex)->mf_isExecutePanel(); }
    const UQErrnoData& mf_getResult(int _nIndex) const override {
        return mf_at(_nIndex)->mf_getExecutionResult();
    }
    CString mf_getTitle(int _nIndex) const override { return mf_at(_nIndex)->mf_getTitle(); }
    void mf_execute(int _nIndex) override { mf_at(_nIndex)->mf_execute(); }

private:
    UQWizardPanel* mf_at(int _nIndex) const { return m_panels[static_cast<std::size_t>(_nIndex)]; }
    const std::vector<UQWizardPanel*>& m_panels;
};

UQWizard::UQWizard()
    : UQThreads(L"Wizard worker thread", UQThreadContext::TYPE_WORKER, 1), m_hDlg(nullptr), m_panels(),
      m_pView(new PanelView(m_panels)), m_pCore(new UQWizardCore(*m_pView)),
      m_hTitleFont(createFont(16, FW_BOLD, 0)),
      m_hMonospaceFont(createFont(14, FW_NORMAL, FIXED_PITCH | FF_MODERN)), m_bOwner(1) {}

UQWizard::UQWizard(const UQWizard& _other)
    : UQThreads(_other), m_hDlg(_other.m_hDlg), m_panels(_other.m_panels), m_pView(new PanelView(m_panels)),
      m_pCore(new UQWizardCore(*m_pView, *_other.m_pCore)), m_hTitleFont(_other.m_hTitleFont),
      m_hMonospaceFont(_other.m_hMonospaceFont), m_bOwner(0) {}

UQWizard::~UQWizard() {
    // The body is virtual: the thread ends here, before this part of the object goes.
    if (mf_isRunning())
        m_pCore->mf_stopWorker(*this);
    if (!m_bOwner)
        return;
    for (UQWizardPanel* pPanel : m_panels)
        delete pPanel;
    m_panels.clear();
    if (m_hTitleFont != nullptr)
        DeleteObject(m_hTitleFont);
    if (m_hMonospaceFont != nullptr)
        DeleteObject(m_hMonospaceFont);
}

void UQWizard::mf_implExecute(int _nThread) {
    m_pCore->mf_runTask(*this, _nThread);
}

void UQWizard::mf_addPanel(UQWizardPanel* _pPanel) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_addPanel";
    if (_pPanel == nullptr)
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"NULL == _pPanel");
    m_panels.push_back(_pPanel);
}

UQWizardPanel& UQWizard::mf_getPanel(int _nIndex) const {
    m_pCore->mf_checkPanel(_nIndex);
    return *m_panels[static_cast<std::size_t>(_nIndex)];
}

UQWizardPanel& UQWizard::mf_getCurPanel() const {
    return mf_getPanel(m_pCore->mf_getIndex());
}

int UQWizard::mf_getPanelCount() const {
    return static_cast<int>(m_panels.size());
}

int UQWizard::mf_getCurrentIndex() const {
    return m_pCore->mf_getIndex();
}

HWND UQWizard::mf_getHandle() const {
    return m_hDlg;
}

const HFONT& UQWizard::mf_getTitleFont() const {
    return m_hTitleFont;
}

const HFONT& UQWizard::mf_getMonospaceFont() const {
    return m_hMonospaceFont;
}

int UQWizard::mf_create(HINSTANCE _hInstance, HWND _hParent) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_create";
    SetLastError(0);
    const INT_PTR nResult = DialogBoxParamW(_hInstance, MAKEINTRESOURCEW(TEMPLATE_FRAME), _hParent,
                                            f_WizardDialogProcedure, reinterpret_cast<LPARAM>(this));
    if (nResult == -1) {
        const UQErrno error = UQToolkitReport::mf_systemError(UQErrno::_E_::Gui);
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure showing wizard dialog:\r\n%s%s",
                         UQLog::TAB, error.mf_toString());
    }
    // A dialog ended by other means than Finish or Cancel leaves no worker behind.
    if (mf_isRunning())
        m_pCore->mf_stopWorker(*this);
    m_hDlg = nullptr;
    return static_cast<int>(nResult);
}

int UQWizard::mf_onInitDialog(HWND _hDlg) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_onInitDialog";
    m_hDlg = _hDlg;
    UQWindow::mf_setText(m_hDlg, UQString(UQWizardCore::TEXT_TITLE));
    mf_implSetItemText(ITEM_BACK, UQWizardCore::TEXT_BACK);
    mf_implSetItemText(ITEM_NEXT, UQWizardCore::TEXT_NEXT_INITIAL);
    mf_implSetItemText(IDCANCEL, UQWizardCore::TEXT_CANCEL);
    try {
        mf_implInitWizard();
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure initializing configuration wizard:\r\n%s%s", UQLog::TAB, e.mf_toString());
        return 0;
    }
    return 1;
}

void UQWizard::mf_implInitWizard() {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implInitWizard";
    try {
        mf_start();
        mf_startWait();
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure starting wizard worker thread:\r\n%s%s",
                         UQLog::TAB, e.mf_toString());
        throw;
    }
    m_pCore->mf_setIndex(0);
    try {
        mf_implShowPanel(0);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure showing panel with index=%d: %s",
                         m_pCore->mf_getIndex(), e.mf_toString());
        throw;
    }
}

void UQWizard::mf_implShowPanel(int _nIndex) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implShowPanel";
    UQWizardPanel& panel = mf_getPanel(_nIndex);
    HWND hTitle = GetDlgItem(m_hDlg, ITEM_TITLE);
    SendMessageW(hTitle, WM_SETFONT, reinterpret_cast<WPARAM>(m_hTitleFont), FALSE);
    UQWindow::mf_setText(hTitle, panel.mf_getTitle());
    mf_implEnableItem(ITEM_BACK, _nIndex != 0);
    mf_implSetItemText(ITEM_NEXT, m_pCore->mf_getNextLabel(_nIndex));
    try {
        panel.mf_create();
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure initializing panel '%s':\r\n%s%s",
                         panel.mf_getTitle(), UQLog::TAB, e.mf_toString());
        throw;
    }
    // The first panel gets its focus from the dialog manager once WM_INITDIALOG has answered 1.
    if (IsWindowVisible(m_hDlg))
        focusPanel(m_hDlg, panel.mf_getHandle());
    RedrawWindow(m_hDlg, nullptr, nullptr, RDW_INVALIDATE | RDW_ALLCHILDREN);
}

void UQWizard::mf_implShowNextPanel() {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implShowNextPanel";
    ShowWindow(mf_getCurPanel().mf_getHandle(), SW_HIDE);
    m_pCore->mf_stepForward();
    try {
        mf_implShowPanel(m_pCore->mf_getIndex());
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure showing panel with index=%d: %s",
                         m_pCore->mf_getIndex(), e.mf_toString());
        throw;
    }
}

void UQWizard::mf_implShowPrevPanel() {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implShowPrevPanel";
    ShowWindow(mf_getCurPanel().mf_getHandle(), SW_HIDE);
    m_pCore->mf_stepBack();
    try {
        mf_implShowPanel(m_pCore->mf_getIndex());
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure showing panel with index=%d: %s",
                         m_pCore->mf_getIndex(), e.mf_toString());
        throw;
    }
    mf_implEnableItem(ITEM_NEXT, 1);
}

int UQWizard::mf_onCommand(unsigned short _usNotificationCode, unsigned short _usControlId) {
    if (_usNotificationCode != 0)
        return 0;
    switch (_usControlId) {
    case IDCANCEL: {
        UQMessageBox question(UQString(UQWizardCore::TEXT_CANCEL_QUESTION), UQMessageBox::BUTTONS_YES_NO,
                              UQString(UQWizardCore::TEXT_CANCEL_CAPTION));
        if (question.mf_show(m_hDlg) == UQMessageBox::RESULT_YES)
            mf_implCancelWizard(0);
        return 1;
    }
    case ITEM_BACK:
        m_pCore->mf_readBeforeBack([&] { mf_implReadPanel(mf_getCurPanel(), 0); });
        mf_implShowPrevPanel();
        return 1;
    case ITEM_NEXT: {
        UQErrnoData error;
        switch (m_pCore->mf_next([&] { mf_implReadPanel(mf_getCurPanel(), 1); }, error)) {
        case UQWizardCore::NEXT_EXECUTING:
            break;
        case UQWizardCore::NEXT_REFUSED: {
            UQMessageBox box(error, UQString(UQWizardCore::TEXT_READ_FAILURE_CAPTION));
            box.mf_show(m_hDlg);
            break;
        }
        case UQWizardCore::NEXT_FINISH:
            mf_implFinalizeWizard(1);
            break;
        case UQWizardCore::NEXT_FORWARD:
            mf_implShowNextPanel();
            break;
        }
        return 1;
    }
    default:
        return 0;
    }
}

void UQWizard::mf_onPanelExecutionResult(const UQErrnoData& _result) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_onPanelExecutionResult";
    if (_result && _result.mf_getValue()->mf_getSeverity().mf_isGreen()) {
        mf_implSetItemText(ITEM_NEXT, m_pCore->mf_getLabelAfterSuccess());
        mf_implEnableItem(ITEM_BACK, 1);
        return;
    }
    UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure executing panel:\r\n%s%s", UQLog::TAB,
                     UQErrno(_result).mf_toString());
    UQMessageBox box(UQErrno::mf_toGuiMessage(_result, CString()), UQSeverity::Error,
                     UQMessageBox::BUTTONS_SINGLE, UQString(UQWizardCore::TEXT_EXECUTION_FAILURE_CAPTION));
    box.mf_show(m_hDlg);
    mf_implEnableItem(ITEM_BACK, 1);
}

void UQWizard::mf_onInitPanel(UQWizardPanel& _panel) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_onInitPanel";
    try {
        mf_implInitPanel(_panel);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure initializing panel '%s':\r\n%s%s",
                         _panel.mf_getTitle(), UQLog::TAB, e.mf_toString());
    }
}

void UQWizard::mf_implCancelWizard(int _nResult) {
    static const wchar_t* const _sFunction_ = L"UQWizard::mf_implCancelWizard";
    try {
        mf_implFinalizeWizard(_nResult);
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_, L"Failure finalizing wizard: %s", e.mf_toString());
    }
}

void UQWizard::mf_implFinalizeWizard(int _nResult) {
    m_pCore->mf_stopWorker(*this);
    EndDialog(m_hDlg, _nResult);
}

void UQWizard::mf_implSetItemText(int _nId, unsigned _uTextId) {
    UQWindow::mf_setItemText(m_hDlg, _nId, UQString(_uTextId));
}

void UQWizard::mf_implEnableItem(int _nId, int _bEnable) {
    // EnableWindow answers the previous state, not success; Wine also leaves ERROR_ACCESS_DENIED behind
    // when a button's state changes while the focus moves, so the helper's last-error check would report
    // a failure that is none.
    EnableWindow(GetDlgItem(m_hDlg, _nId), _bEnable ? TRUE : FALSE);
}
