#include "ToolkitTestSupport.h"

namespace toolkittest {

namespace {

INT_PTR CALLBACK testDialogProcedure(HWND, UINT _uMsg, WPARAM, LPARAM) {
    return _uMsg == WM_INITDIALOG ? TRUE : FALSE;
}

} // namespace

INT_PTR CALLBACK inertProcedure(HWND, UINT, WPARAM, LPARAM) {
    return FALSE;
}

INT_PTR CALLBACK statusBarHostProcedure(HWND _hDlg, UINT _uMsg, WPARAM _wParam, LPARAM _lParam) {
    UQStatusBar* pBar = reinterpret_cast<UQStatusBar*>(GetWindowLongPtrW(_hDlg, GWLP_USERDATA));
    switch (_uMsg) {
    case WM_INITDIALOG:
        SetWindowLongPtrW(_hDlg, GWLP_USERDATA, _lParam);
        return TRUE;
    case WM_SIZE:
        if (pBar != nullptr && pBar->mf_getWindowHandle() != nullptr)
            pBar->mf_onSizeEvent(LOWORD(_lParam), HIWORD(_lParam));
        return FALSE;
    case WM_SYSCOLORCHANGE:
        // Common controls learn of new colours from their parent.
        if (pBar != nullptr && pBar->mf_getWindowHandle() != nullptr)
            SendMessageW(pBar->mf_getWindowHandle(), WM_SYSCOLORCHANGE, _wParam, _lParam);
        return FALSE;
    case WM_DRAWITEM:
        try {
            return pBar != nullptr ? pBar->mf_onDrawItem(*reinterpret_cast<const DRAWITEMSTRUCT*>(_lParam))
                                   : FALSE;
        } catch (...) {
            return FALSE;
        }
    default:
        return FALSE;
    }
}

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

std::string textOf(HWND _hWnd) {
    const int nLength = GetWindowTextLengthW(_hWnd);
    std::wstring text(static_cast<std::size_t>(nLength) + 1, L'\0');
    GetWindowTextW(_hWnd, &text[0], nLength + 1);
    text.resize(static_cast<std::size_t>(nLength));
    return utf8(text.c_str());
}

std::string itemText(HWND _hDlg, int _nId) {
    return textOf(GetDlgItem(_hDlg, _nId));
}

HICON iconOf(HWND _hDlg, int _nId) {
    return reinterpret_cast<HICON>(SendDlgItemMessageW(_hDlg, _nId, STM_GETICON, 0, 0));
}

HICON languageIcon(WORD _wIconId, int _nSize) {
    return static_cast<HICON>(LoadImageW(UQLanguage::mf_getLanguageHandle(UQLanguage::CURRENT),
                                         MAKEINTRESOURCEW(_wIconId), IMAGE_ICON, _nSize, _nSize, LR_SHARED));
}

namespace {

std::vector<std::uint8_t> iconPixels(HICON _hIcon, int& _nWidth, int& _nHeight) {
    std::vector<std::uint8_t> pixels;
    ICONINFO info;
    if (_hIcon == nullptr || !GetIconInfo(_hIcon, &info))
        return pixels;
    BITMAP bitmap;
    HBITMAP hColour = info.hbmColor != nullptr ? info.hbmColor : info.hbmMask;
    GetObjectW(hColour, sizeof bitmap, &bitmap);
    _nWidth = bitmap.bmWidth;
    _nHeight = bitmap.bmHeight;
    BITMAPINFO bmi;
    ZeroMemory(&bmi, sizeof bmi);
    bmi.bmiHeader.biSize = sizeof bmi.bmiHeader;
    bmi.bmiHeader.biWidth = _nWidth;
    bmi.bmiHeader.biHeight = -_nHeight;
    bmi.bmiHeader.biPlanes = 1;
    bmi.bmiHeader.biBitCount = 32;
    bmi.bmiHeader.biCompression = BI_RGB;
    pixels.resize(static_cast<std::size_t>(_nWidth) * _nHeight * 4);
    HDC hDC = GetDC(nullptr);
    GetDIBits(hDC, hColour, 0, _nHeight, pixels.data(), &bmi, DIB_RGB_COLORS);
    ReleaseDC(nullptr, hDC);
    if (info.hbmColor != nullptr)
        DeleteObject(info.hbmColor);
    DeleteObject(info.hbmMask);
    return pixels;
}

} // namespace

bool sameIcon(HICON _hA, HICON _hB) {
    int nWidthA = 0, nHeightA = 0, nWidthB = 0, nHeightB = 0;
    const std::vector<std::uint8_t> a = iconPixels(_hA, nWidthA, nHeightA);
    const std::vector<std::uint8_t> b = iconPixels(_hB, nWidthB, nHeightB);
    return !a.empty() && nWidthA == nWidthB && nHeightA == nHeightB && a == b;
}

std::shared_ptr<HICON__> copyOfIcon(HICON _hIcon) {
    HICON hCopy = _hIcon != nullptr ? CopyIcon(_hIcon) : nullptr;
    if (hCopy == nullptr)
        return nullptr;
    return std::shared_ptr<HICON__>(hCopy, [](HICON _hOwned) { DestroyIcon(_hOwned); });
}

int focusedId() {
    HWND hFocus = GetFocus();
    return hFocus != nullptr ? GetDlgCtrlID(hFocus) : 0;
}

void typeText(HWND _hWnd, const wchar_t* _pszText) {
    for (const wchar_t* p = _pszText; *p != L'\0'; ++p)
        PostMessageW(_hWnd, WM_CHAR, *p, 1);
}

void pressKey(WPARAM _vk) {
    HWND hFocus = GetFocus();
    PostMessageW(hFocus, WM_KEYDOWN, _vk, 1);
    PostMessageW(hFocus, WM_KEYUP, _vk, 0xC0000001);
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

void pressInList(HWND _hList, WPARAM _wKey, bool _bShift, bool _bCtrl) {
    BYTE keys[256];
    GetKeyboardState(keys);
    keys[VK_SHIFT] = _bShift ? 0x80 : 0;
    keys[VK_CONTROL] = _bCtrl ? 0x80 : 0;
    SetKeyboardState(keys);
    SendMessageW(_hList, WM_KEYDOWN, _wKey, 1);
    SendMessageW(_hList, WM_KEYUP, _wKey, static_cast<LPARAM>(0xC0000001u));
    keys[VK_SHIFT] = 0;
    keys[VK_CONTROL] = 0;
    SetKeyboardState(keys);
}

std::vector<int> selectedRows(HWND _hList) {
    std::vector<int> rows;
    const int nCount = static_cast<int>(SendMessageW(_hList, LVM_GETITEMCOUNT, 0, 0));
    for (int i = 0; i < nCount; ++i)
        if (SendMessageW(_hList, LVM_GETITEMSTATE, static_cast<WPARAM>(i), LVIS_SELECTED) & LVIS_SELECTED)
            rows.push_back(i);
    return rows;
}

} // namespace toolkittest
