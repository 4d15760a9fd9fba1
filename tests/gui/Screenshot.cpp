#include "Screenshot.h"

#include "PngWriter.h"

#include <set>

namespace screenshot {

bool capture(HWND _hWnd, std::vector<std::uint8_t>& _rgb, int& _nWidth, int& _nHeight) {
    RECT rc;
    GetWindowRect(_hWnd, &rc);
    _nWidth = rc.right - rc.left;
    _nHeight = rc.bottom - rc.top;
    HDC hWindowDC = GetWindowDC(_hWnd);
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
        bCopied = BitBlt(hMemoryDC, 0, 0, _nWidth, _nHeight, hWindowDC, 0, 0, SRCCOPY) != FALSE;
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
    ReleaseDC(_hWnd, hWindowDC);
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
    if (colourCount(rgb) < 4)
        return "nothing was drawn";
    if (!png::writeFile(_path, png::encode(rgb, nWidth, nHeight)))
        return "the picture cannot be written";
    return std::string();
}

} // namespace screenshot
