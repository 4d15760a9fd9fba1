#include "Screenshot.h"

#include "PngWriter.h"

#include <algorithm>
#include <set>

namespace screenshot {

namespace {

bool copyDC(HDC hWindowDC, int _nLeft, int _nTop, std::vector<std::uint8_t>& _rgb, int _nWidth,
            int _nHeight) {
    HDC hMemoryDC = CreateCompatibleDC(hWindowDC);
    BITMAPINFO info;
    ZeroMemory(&info, sizeof info);
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = _nWidth;
    info.bmiHeader.biHeight = -_nHeight;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    void* pBits = nullptr;
    HBITMAP hBitmap = CreateDIBSection(hWindowDC, &info, DIB_RGB_COLORS, &pBits, nullptr, 0);
    bool bCopied = false;
    if (hBitmap != nullptr && pBits != nullptr) {
        HGDIOBJ hOld = SelectObject(hMemoryDC, hBitmap);
        bCopied = BitBlt(hMemoryDC, 0, 0, _nWidth, _nHeight, hWindowDC, _nLeft, _nTop, SRCCOPY) != FALSE;
        GdiFlush();
        const std::uint8_t* pBgra = static_cast<const std::uint8_t*>(pBits);
        _rgb.resize(static_cast<std::size_t>(_nWidth) * _nHeight * 3);
        for (std::size_t i = 0; i < static_cast<std::size_t>(_nWidth) * _nHeight; ++i) {
            _rgb[i * 3] = pBgra[i * 4 + 2];
            _rgb[i * 3 + 1] = pBgra[i * 4 + 1];
            _rgb[i * 3 + 2] = pBgra[i * 4];
        }
        SelectObject(hMemoryDC, hOld);
    }
    if (hBitmap != nullptr)
        DeleteObject(hBitmap);
    DeleteDC(hMemoryDC);
    return bCopied;
}

std::string write(const std::vector<std::uint8_t>& _rgb, int _nWidth, int _nHeight,
                  const std::wstring& _path) {
    if (colourCount(_rgb) < 4)
        return "nothing was drawn";
    if (!png::writeFile(_path, png::encode(_rgb, _nWidth, _nHeight)))
        return "the picture cannot be written";
    return std::string();
}

} // namespace

bool capture(HWND _hWnd, std::vector<std::uint8_t>& _rgb, int& _nWidth, int& _nHeight) {
    RECT rc;
    GetWindowRect(_hWnd, &rc);
    _nWidth = rc.right - rc.left;
    _nHeight = rc.bottom - rc.top;
    HDC hWindowDC = GetWindowDC(_hWnd);
    const bool bCopied = copyDC(hWindowDC, 0, 0, _rgb, _nWidth, _nHeight);
    ReleaseDC(_hWnd, hWindowDC);
    return bCopied;
}

bool captureClient(HWND _hWnd, const RECT& _rc, std::vector<std::uint8_t>& _rgb) {
    RedrawWindow(_hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
    HDC hClientDC = GetDC(_hWnd);
    const bool bCopied =
        copyDC(hClientDC, _rc.left, _rc.top, _rgb, _rc.right - _rc.left, _rc.bottom - _rc.top);
    ReleaseDC(_hWnd, hClientDC);
    return bCopied;
}

int colourCount(const std::vector<std::uint8_t>& _rgb) {
    std::set<std::uint32_t> colours;
    for (std::size_t i = 0; i + 2 < _rgb.size() && colours.size() < 64; i += 3)
        colours.insert((static_cast<std::uint32_t>(_rgb[i]) << 16) | (_rgb[i + 1] << 8) | _rgb[i + 2]);
    return static_cast<int>(colours.size());
}

std::string save(HWND _hWnd, const std::wstring& _path) {
    RedrawWindow(_hWnd, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_FRAME | RDW_ERASE | RDW_ALLCHILDREN | RDW_UPDATENOW);
    std::vector<std::uint8_t> rgb;
    int nWidth = 0;
    int nHeight = 0;
    if (!capture(_hWnd, rgb, nWidth, nHeight))
        return "the window cannot be copied";
    return write(rgb, nWidth, nHeight, _path);
}

std::string saveTogether(const std::vector<HWND>& _windows, const std::wstring& _path) {
    RECT rcAll = {0, 0, 0, 0};
    for (HWND hWnd : _windows) {
        RECT rc;
        GetWindowRect(hWnd, &rc);
        UnionRect(&rcAll, &rcAll, &rc);
    }
    const int nWidth = rcAll.right - rcAll.left;
    const int nHeight = rcAll.bottom - rcAll.top;
    // What no window covers shows the desktop's colour.
    const COLORREF crDesktop = GetSysColor(COLOR_DESKTOP);
    std::vector<std::uint8_t> rgb(static_cast<std::size_t>(nWidth) * nHeight * 3);
    for (std::size_t i = 0; i < rgb.size(); i += 3) {
        rgb[i] = GetRValue(crDesktop);
        rgb[i + 1] = GetGValue(crDesktop);
        rgb[i + 2] = GetBValue(crDesktop);
    }
    for (HWND hWnd : _windows) {
        RECT rc;
        GetWindowRect(hWnd, &rc);
        std::vector<std::uint8_t> window;
        int nWindowWidth = 0;
        int nWindowHeight = 0;
        if (!capture(hWnd, window, nWindowWidth, nWindowHeight))
            return "a window cannot be copied";
        for (int y = 0; y < nWindowHeight; ++y) {
            const std::size_t uTo =
                (static_cast<std::size_t>(y + rc.top - rcAll.top) * nWidth + (rc.left - rcAll.left)) * 3;
            std::copy_n(window.begin() + static_cast<std::ptrdiff_t>(y) * nWindowWidth * 3, nWindowWidth * 3,
                        rgb.begin() + static_cast<std::ptrdiff_t>(uTo));
        }
    }
    return write(rgb, nWidth, nHeight, _path);
}

} // namespace screenshot
