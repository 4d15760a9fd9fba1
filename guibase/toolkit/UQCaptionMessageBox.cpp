#include "guibase/toolkit/UQCaptionMessageBox.h"

#include "guibase/foundation/UQReport.h"

namespace {

const int TEMPLATE_CAPTION = 10011;
const int ITEM_CAPTION_LINE = 10013;
const unsigned TEXT_DEFAULT_CAPTION_LINE = 3156;

CString captionLineOrDefault(const CString& _sCaptionLine) {
    return _sCaptionLine.IsEmpty() ? CString(UQString(TEXT_DEFAULT_CAPTION_LINE)) : _sCaptionLine;
}

} // namespace

UQCaptionMessageBox::UQCaptionMessageBox(const CString& _sMessage, BUTTONS _eButtons,
                                         const CString& _sCaptionLine, const CString& _sCaption)
    : UQMessageBox(_sMessage, _eButtons, _sCaption), m_sCaptionLine(captionLineOrDefault(_sCaptionLine)),
      m_hFont(nullptr) {
    static const wchar_t* const _sFunction_ = L"UQCaptionMessageBox::UQCaptionMessageBox";
    if (_sMessage.IsEmpty())
        UQReport::mf_fail(UQErrno::_E_::Parameter, _sFunction_, L"No message defined");
    m_hFont = mf_implCreateFont();
}

UQCaptionMessageBox::UQCaptionMessageBox(const UQCaptionMessageBox& _other)
    : UQMessageBox(_other), m_sCaptionLine(_other.m_sCaptionLine), m_hFont(mf_implCreateFont()) {}

UQCaptionMessageBox& UQCaptionMessageBox::operator=(const UQCaptionMessageBox& _other) {
    if (this != &_other) {
        UQMessageBox::operator=(_other);
        m_sCaptionLine = _other.m_sCaptionLine;
    }
    return *this;
}

UQCaptionMessageBox::~UQCaptionMessageBox() {
    if (m_hFont != nullptr)
        DeleteObject(m_hFont);
}

HFONT UQCaptionMessageBox::mf_implCreateFont() {
    LOGFONTW lf;
    ZeroMemory(&lf, sizeof lf);
    lf.lfHeight = 16;
    lf.lfWeight = FW_BOLD;
    return CreateFontIndirectW(&lf);
}

int UQCaptionMessageBox::mf_onInitDialog(HWND _hDlg) {
    UQMessageBox::mf_onInitDialog(_hDlg);
    HWND hCaptionLine = GetDlgItem(_hDlg, ITEM_CAPTION_LINE);
    SendMessageW(hCaptionLine, WM_SETFONT, reinterpret_cast<WPARAM>(m_hFont), FALSE);
    SetWindowTextW(hCaptionLine, m_sCaptionLine);
    return 0;
}

HBRUSH UQCaptionMessageBox::mf_onCtlColorStatic(WPARAM _wParam, LPARAM _lParam) {
    // The system's brushes are its own and never deleted; one fetch serves the process.
    static const HBRUSH BAND_BRUSH = GetSysColorBrush(COLOR_BTNHIGHLIGHT);
    if (GetDlgCtrlID(reinterpret_cast<HWND>(_lParam)) != ITEM_CAPTION_LINE)
        return nullptr;
    SetBkColor(reinterpret_cast<HDC>(_wParam), GetSysColor(COLOR_BTNHIGHLIGHT));
    return BAND_BRUSH;
}

UQMessageBox::RESULT UQCaptionMessageBox::mf_show(HWND _hParent, unsigned long _ulDefaultButton,
                                                  int _nTemplateId) {
    static const wchar_t* const _sFunction_ = L"UQCaptionMessageBox::mf_show";
    try {
        return UQMessageBox::mf_show(_hParent, _ulDefaultButton,
                                     _nTemplateId == -1 ? TEMPLATE_CAPTION : _nTemplateId);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure showing caption message box:\r\n%s%s");
        return static_cast<RESULT>(0);
    }
}
