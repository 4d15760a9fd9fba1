#include "GallerySupport.h"

#include "Screenshot.h"

#include <uxtheme.h>

#include <cstdlib>
#include <iterator>

namespace gallery {

namespace {

const int INDEXES[] = {COLOR_WINDOW,        COLOR_WINDOWTEXT, COLOR_BTNFACE,    COLOR_BTNTEXT,
                       COLOR_3DSHADOW,      COLOR_3DLIGHT,    COLOR_GRAYTEXT,   COLOR_HIGHLIGHT,
                       COLOR_HIGHLIGHTTEXT, COLOR_3DHILIGHT,  COLOR_3DDKSHADOW, COLOR_CAPTIONTEXT,
                       COLOR_ACTIVECAPTION};

} // namespace

std::wstring pictureDir() {
    const wchar_t* pszDir = _wgetenv(L"KOR_GALLERY_DIR");
    std::wstring dir = pszDir != nullptr && *pszDir != L'\0' ? pszDir : L"gallery";
    CreateDirectoryW(dir.c_str(), nullptr);
    return dir;
}

std::string savePicture(HWND _hWnd, const std::wstring& _sName) {
    // The first window of a process may not be active yet when it is photographed: draw its title bar as
    // the active window's, as the user sees it a moment later.
    SetForegroundWindow(_hWnd);
    SendMessageW(_hWnd, WM_NCACTIVATE, TRUE, 0);
    SendMessageW(_hWnd, WM_CHANGEUISTATE, MAKEWPARAM(UIS_CLEAR, UISF_HIDEFOCUS | UISF_HIDEACCEL), 0);
    return screenshot::save(_hWnd, pictureDir() + L"\\" + _sName + L".png");
}

HighContrast::HighContrast() {
    for (int nIndex : INDEXES)
        m_before.push_back(GetSysColor(nIndex));
    const COLORREF white = RGB(255, 255, 255);
    const COLORREF black = RGB(0, 0, 0);
    const COLORREF colours[] = {black, white, black, white, white, black, RGB(0, 255, 0), RGB(0, 255, 255),
                                black, white, black, white, black};
    SetSysColors(static_cast<int>(std::size(INDEXES)), INDEXES, colours);
    SetThemeAppProperties(0);
}

void HighContrast::dropTheme(HWND _hWnd) {
    SetWindowTheme(_hWnd, L" ", L" ");
    EnumChildWindows(
        _hWnd,
        [](HWND _hChild, LPARAM) -> BOOL {
            SetWindowTheme(_hChild, L" ", L" ");
            return TRUE;
        },
        0);
    RedrawWindow(_hWnd, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
}

HighContrast::~HighContrast() {
    SetThemeAppProperties(STAP_ALLOW_NONCLIENT | STAP_ALLOW_CONTROLS | STAP_ALLOW_WEBCONTENT);
    SetSysColors(static_cast<int>(m_before.size()), INDEXES, m_before.data());
}

} // namespace gallery
