#include "ToolkitTestSupport.h"

namespace toolkittest {

namespace {

INT_PTR CALLBACK testDialogProcedure(HWND, UINT _uMsg, WPARAM, LPARAM) {
    return _uMsg == WM_INITDIALOG ? TRUE : FALSE;
}

} // namespace

HWND destroyedWindow() {
    HWND hWnd = CreateWindowExW(0, L"Static", L"gone", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                                GetModuleHandleW(nullptr), nullptr);
    DestroyWindow(hWnd);
    return hWnd;
}

void initCommonControls() {
    INITCOMMONCONTROLSEX icc;
    icc.dwSize = sizeof icc;
    icc.dwICC = ICC_STANDARD_CLASSES | ICC_LISTVIEW_CLASSES | ICC_DATE_CLASSES | ICC_UPDOWN_CLASS |
                ICC_USEREX_CLASSES | ICC_BAR_CLASSES;
    InitCommonControlsEx(&icc);
}

void pumpMessages() {
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

TestDialog::TestDialog() {
    initCommonControls();
    m_hDlg = CreateDialogParamW(GetModuleHandleW(nullptr), MAKEINTRESOURCEW(IDD_TOOLKIT_TEST), nullptr,
                                testDialogProcedure, 0);
    EXPECT_NE(m_hDlg, nullptr) << "CreateDialogParamW failed with " << GetLastError();
    if (m_hDlg != nullptr) {
        ShowWindow(m_hDlg, SW_SHOW);
        pumpMessages();
    }
}

TestDialog::~TestDialog() {
    if (m_hDlg != nullptr)
        DestroyWindow(m_hDlg);
    pumpMessages();
}

void setClientSize(HWND _hWnd, int _nWidth, int _nHeight) {
    RECT window;
    RECT client;
    GetWindowRect(_hWnd, &window);
    GetClientRect(_hWnd, &client);
    const int nWidth = (window.right - window.left) - client.right + _nWidth;
    const int nHeight = (window.bottom - window.top) - client.bottom + _nHeight;
    SetWindowPos(_hWnd, nullptr, 0, 0, nWidth, nHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

} // namespace toolkittest
