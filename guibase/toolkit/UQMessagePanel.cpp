#include "guibase/toolkit/UQMessagePanel.h"

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

void setIcon(HWND _hItem, HICON _hIcon) {
    if (_hItem != nullptr)
        SendMessageW(_hItem, STM_SETICON, reinterpret_cast<WPARAM>(_hIcon), 0);
}

} // namespace

UQMessagePanel::UQMessagePanel(unsigned long _ulIconSize)
    : m_ulIconSize(_ulIconSize), m_hLanguage(nullptr), m_hBlankIcon(nullptr), m_hGreenIcon(nullptr),
      m_hYellowIcon(nullptr), m_hRedIcon(nullptr), m_hIcon(nullptr), m_hHeading(nullptr),
      m_hMessage(nullptr) {}

UQMessagePanel::~UQMessagePanel() {
    // DeleteObject does not free an icon, least of all a shared one: the calls stay for the handles a
    // derived panel may have put here, and a copy's destructor cannot release an icon twice.
    for (HICON hIcon : {m_hBlankIcon, m_hGreenIcon, m_hYellowIcon, m_hRedIcon}) {
        if (hIcon != nullptr)
            DeleteObject(hIcon);
    }
}

int UQMessagePanel::mf_onInitDialog(HWND _hDlg) {
    m_hLanguage = UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT);
    m_hIcon = GetDlgItem(_hDlg, ITEM_ICON);
    m_hHeading = GetDlgItem(_hDlg, ITEM_HEADING);
    m_hMessage = GetDlgItem(_hDlg, ITEM_MESSAGE);
    return 1;
}

void UQMessagePanel::mf_hide() {
    setIcon(m_hIcon, mf_implLoadCached(m_hBlankIcon, ICON_BLANK));
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
    setIcon(m_hIcon, mf_implLoadIcon(_severity));
    setText(m_hHeading, _sHeading);
    setText(m_hMessage, _sMessage);
}

HICON UQMessagePanel::mf_implLoadIcon(const UVSeverity& _severity) {
    if (_severity.mf_isGreen())
        return mf_implLoadCached(m_hGreenIcon, ICON_GREEN);
    if (_severity.mf_isYellow())
        return mf_implLoadCached(m_hYellowIcon, ICON_YELLOW);
    if (_severity.mf_isRed())
        return mf_implLoadCached(m_hRedIcon, ICON_RED);
    return nullptr;
}

HICON UQMessagePanel::mf_implLoadCached(HICON& _rhIcon, WORD _wIconId) {
    if (_rhIcon == nullptr && m_hLanguage != nullptr)
        _rhIcon = static_cast<HICON>(LoadImageW(m_hLanguage, MAKEINTRESOURCEW(_wIconId), IMAGE_ICON,
                                                static_cast<int>(m_ulIconSize),
                                                static_cast<int>(m_ulIconSize), LR_SHARED));
    return _rhIcon;
}
