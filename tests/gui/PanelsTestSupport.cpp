#include "PanelsTestSupport.h"

namespace panelstest {

namespace {

INT_PTR CALLBACK quietProcedure(HWND, UINT _uMsg, WPARAM, LPARAM) {
    return _uMsg == WM_INITDIALOG ? TRUE : FALSE;
}

} // namespace

MgmtClassDialog::MgmtClassDialog() {
    toolkittest::initCommonControls();
    m_hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_MGMT_CLASS_TEST), nullptr,
                                quietProcedure, 0);
    EXPECT_NE(m_hDlg, nullptr) << "CreateDialogParamW failed with " << GetLastError();
    if (m_hDlg != nullptr) {
        ShowWindow(m_hDlg, SW_SHOW);
        toolkittest::pumpMessages();
    }
}

MgmtClassDialog::~MgmtClassDialog() {
    if (m_hDlg != nullptr)
        DestroyWindow(m_hDlg);
    toolkittest::pumpMessages();
}

std::vector<std::string> comboTexts(HWND _hCombo) {
    std::vector<std::string> texts;
    const LRESULT nCount = SendMessageW(_hCombo, CB_GETCOUNT, 0, 0);
    for (LRESULT i = 0; i < nCount; ++i) {
        const LRESULT nLength = SendMessageW(_hCombo, CB_GETLBTEXTLEN, static_cast<WPARAM>(i), 0);
        std::wstring sText(static_cast<std::size_t>(nLength) + 1, L'\0');
        SendMessageW(_hCombo, CB_GETLBTEXT, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&sText[0]));
        texts.push_back(utf8(sText.c_str()));
    }
    return texts;
}

std::vector<std::string> listTexts(HWND _hList) {
    std::vector<std::string> texts;
    const LRESULT nCount = SendMessageW(_hList, LVM_GETITEMCOUNT, 0, 0);
    for (LRESULT i = 0; i < nCount; ++i) {
        wchar_t szText[512] = {};
        LVITEMW item;
        ZeroMemory(&item, sizeof item);
        item.iSubItem = 0;
        item.pszText = szText;
        item.cchTextMax = 512;
        SendMessageW(_hList, LVM_GETITEMTEXTW, static_cast<WPARAM>(i), reinterpret_cast<LPARAM>(&item));
        texts.push_back(utf8(szText));
    }
    return texts;
}

} // namespace panelstest
