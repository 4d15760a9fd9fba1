// What the gallery's pictures share, for the library's dialogs (gallery.cpp) and korclient's windows
// (korclient_gui_tests): where the pictures go, a picture with the keyboard cues shown, and a high-contrast
// colour set for the length of a test.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace gallery {

// The folder named by KOR_GALLERY_DIR (created), else "gallery".
std::wstring pictureDir();
// Shows the keyboard cues (focus rectangle, access keys) as after a key press, draws the title bar as the
// active window's, and saves the window as <pictureDir>\<_sName>.png. Answers "" or what went wrong.
std::string savePicture(HWND _hWnd, const std::wstring& _sName);

// A white-on-black high-contrast set for the length of a test, and Windows' way of drawing in it: without
// visual styles (Wine keeps its theme in any colours, so the windows made meanwhile are drawn without it).
// The colours in use before are put back when the object goes.
class HighContrast {
public:
    HighContrast();
    ~HighContrast();
    HighContrast(const HighContrast&) = delete;
    HighContrast& operator=(const HighContrast&) = delete;

    // Draws _hWnd and its children without visual styles from now on, as Windows draws them in high
    // contrast: Wine's status bar keeps its theme's light face otherwise, under text in the set's white.
    static void dropTheme(HWND _hWnd);

private:
    std::vector<COLORREF> m_before;
};

} // namespace gallery
