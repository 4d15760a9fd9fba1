#include "guibase/toolkit/UQInformationBox.h"

#include "guibase/toolkit/UQDialogProcedure.h"

// The dialog callback; a friend of the class, defined below.
INT_PTR CALLBACK f_InformationBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam);

namespace {

const int TEMPLATE_INFORMATION_BOX = 10036;
const int ITEM_TEXT1 = 30052;
const int ITEM_TEXT2 = 30037;
const int ITEM_OK = 30033;
const int ITEM_CHECK = 30096;
const unsigned TEXT_OK = 3070;
const unsigned TEXT_DO_NOT_SHOW = 3377;

const wchar_t* const NO_USER_DATA = L"No user data pointer in information box panel";
const wchar_t* const INIT_FAILURE = L"Failure initializing information box:\r\n%s%s";

} // namespace

UQInformationBox::UQInformationBox(const CString& _sTitle, const CString& _sText1, const CString& _sText2,
                                   const CString& _sRegistryValueName)
    : m_sTitle(_sTitle), m_sText1(_sText1), m_sText2(_sText2), m_sRegistryValueName(_sRegistryValueName),
      m_hDlg(nullptr) {}

UQInformationBox::~UQInformationBox() = default;

void UQInformationBox::mf_show(HWND _hParent) {
    static const wchar_t* const _sFunction_ = L"UQInformationBox::mf_show";
    if (!mf_implIsEnabled()) {
        UQReport::mf_log(UQLogData::LEVEL_T, _sFunction_, L"Information dialog '%s' is disabled by user",
                         m_sRegistryValueName);
        return;
    }
    DialogBoxParamW(UQLanguage::mf_getUserLanguageHandle(), MAKEINTRESOURCEW(TEMPLATE_INFORMATION_BOX),
                    _hParent, f_InformationBoxCallback, reinterpret_cast<LPARAM>(this));
    m_hDlg = nullptr;
}

int UQInformationBox::mf_onInitDialog(HWND _hDlg) {
    m_hDlg = _hDlg;
    SetWindowTextW(_hDlg, m_sTitle);
    SetDlgItemTextW(_hDlg, ITEM_TEXT1, m_sText1);
    SetDlgItemTextW(_hDlg, ITEM_TEXT2, m_sText2);
    SetDlgItemTextW(_hDlg, ITEM_OK, UQString(TEXT_OK));
    CString sCheck;
    sCheck.Format(L"   %s", static_cast<const wchar_t*>(UQString(TEXT_DO_NOT_SHOW)));
    SetDlgItemTextW(_hDlg, ITEM_CHECK, sCheck);
    SendDlgItemMessageW(_hDlg, ITEM_CHECK, BM_SETCHECK, BST_UNCHECKED, 0);
    return 1;
}

void UQInformationBox::mf_implOnExit() {
    const LRESULT nState = SendDlgItemMessageW(m_hDlg, ITEM_CHECK, BM_GETCHECK, 0, 0);
    mf_implSetEnabled(nState != BST_CHECKED ? 1 : 0);
}

void UQInformationBox::mf_implSetEnabled(int _bEnabled) {
    static const wchar_t* const _sFunction_ = L"UQInformationBox::mf_implSetEnabled";
    try {
        UQRegistry::mf_setValue(m_sRegistryValueName, _bEnabled, CString(), HKEY_CURRENT_USER);
    } catch (const UQErrno& e) {
        UQReport::mf_logWrapped(e, _sFunction_, L"Failure setting information dialog to '%s':\r\n%s%s",
                                _bEnabled ? L"enabled" : L"disabled");
    }
    if (!_bEnabled)
        UQReport::mf_log(UQLogData::LEVEL_T, _sFunction_,
                         L"The dialog was disabled by the user and will not be shown again");
}

int UQInformationBox::mf_implIsEnabled() const {
    static const wchar_t* const _sFunction_ = L"UQInformationBox::mf_implIsEnabled";
    try {
        if (!UQRegistry::mf_exists(m_sRegistryValueName, CString(), HKEY_CURRENT_USER))
            return 1;
        int nValue = 1;
        UQRegistry::mf_getOrSetValue(m_sRegistryValueName, nValue, CString(), HKEY_CURRENT_USER);
        return nValue;
    } catch (const UQErrno& e) {
        UQReport::mf_log(UQLogData::LEVEL_E, _sFunction_,
                         L"Failure checking if information dialog is enabled:\r\n%s%s\r\n%sReturning 'dialog "
                         L"enabled' ...",
                         UQLog::TAB, e.mf_toString(), UQLog::TAB);
        return 1;
    }
}

INT_PTR CALLBACK f_InformationBoxCallback(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    static const wchar_t* const _sFunction_ = L"f_InformationBoxCallback";
    using Procedure = UQDialogProcedure;
    // OK and the [x] box alike: the check box's state goes to the registry and the box ends with 0.
    const auto exitWith = [&](const wchar_t* _pszRecord) {
        return Procedure::mf_forward<UQInformationBox>(
            _hDlg, _uMsg, _sFunction_, NO_USER_DATA, [&](UQInformationBox& _box) {
                UQReport::mf_log(UQLogData::LEVEL_G, _sFunction_, _pszRecord);
                _box.mf_implOnExit();
                EndDialog(_box.m_hDlg, 0);
                return 1;
            });
    };
    switch (_uMsg) {
    case WM_INITDIALOG:
        return Procedure::mf_initDialog<UQInformationBox>(
            _hDlg, _lParam, _sFunction_, NO_USER_DATA, INIT_FAILURE,
            [&](UQInformationBox& _box) { return _box.mf_onInitDialog(_hDlg); });
    case WM_CLOSE:
        return exitWith(L"Mouse [x] pressed, terminating information box");
    case WM_COMMAND:
        if (HIWORD(_wParam) != 0 || LOWORD(_wParam) != ITEM_OK)
            return 0;
        return exitWith(L"Ok pressed, terminating information box");
    default:
        return 0;
    }
}
