#include "guibase/toolkit/UQMessagePanel.h"

#include "guibase/toolkit/UQDpiIcons.h"

namespace {

const WORD ICON_GREEN = 10002;
const WORD ICON_YELLOW = 10004;
const WORD ICON_RED = 10005;
const WORD ICON_BLANK = 10006;
const int ITEM_ICON = 30021;
const int ITEM_HEADING = 1038;
const int ITEM_MESSAGE = 30022;

void setText(HWND _hItem, const CString& _sText) {
    if (_hItem != nullptr)
        SendMessageW(_hItem, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(static_cast<const wchar_t*>(_sText)));
}

} // namespace

UQMessagePanel::UQMessagePanel(unsigned long _ulIconSize)
    : m_ulIconSize(_ulIconSize), m_hLanguage(nullptr), m_hIcon(nullptr), m_hHeading(nullptr),
      m_hMessage(nullptr) {}

// The icons belong to the dialog, not to the panel or its copies.
UQMessagePanel::~UQMessagePanel() = default;

int UQMessagePanel::mf_onInitDialog(HWND _hDlg) {
    m_hLanguage = UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT);
    m_hIcon = GetDlgItem(_hDlg, ITEM_ICON);
    m_hHeading = GetDlgItem(_hDlg, ITEM_HEADING);
    m_hMessage = GetDlgItem(_hDlg, ITEM_MESSAGE);
    return 1;
}

void UQMessagePanel::mf_hide() {
    mf_implShowIcon(ICON_BLANK);
    setText(m_hHeading, CString());
    setText(m_hMessage, CString());
}

void UQMessagePanel::mf_setMessage(const UQErrnoData& _data) {
    const CString sMessage = UQErrno::mf_toGuiMessage(_data, CString());
    const UQErrnoValue* pValue = _data.mf_getValue();
    const UQSeverity severity = pValue != nullptr ? pValue->mf_getSeverity() : UQSeverity();
    mf_setMessage(severity, UVSeverity::mf_toString(severity), sMessage);
}

void UQMessagePanel::mf_setMessage(const UQErrno& _error) {
    mf_setMessage(_error.mf_getData());
}

void UQMessagePanel::mf_setMessage(const UVSeverity& _severity, const CString& _sHeading,
                                   const CString& _sMessage) {
    mf_implShowIcon(mf_implIconOf(_severity));
    setText(m_hHeading, _sHeading);
    setText(m_hMessage, _sMessage);
}

WORD UQMessagePanel::mf_implIconOf(const UVSeverity& _severity) {
    if (_severity.mf_isGreen())
        return ICON_GREEN;
    if (_severity.mf_isYellow())
        return ICON_YELLOW;
    if (_severity.mf_isRed())
        return ICON_RED;
    return 0;
}

void UQMessagePanel::mf_implShowIcon(WORD _wIconId) {
    if (m_hIcon == nullptr)
        return;
    if (_wIconId == 0 || m_hLanguage == nullptr)
        UQDpiIcons::mf_clear(m_hIcon);
    else
        UQDpiIcons::mf_show(m_hIcon, m_hLanguage, _wIconId, static_cast<int>(m_ulIconSize));
}
