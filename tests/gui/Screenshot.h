// Pictures of windows for docs/: an in-process copy of a window as it shows on the screen (BitBlt from
// its window DC, which Wine's null display driver supports), written as PNG.
#pragma once

#include "interfaces/korbase.h"

#include <cstdint>
#include <string>
#include <vector>

namespace screenshot {

// The window, title bar and menu included, as top-down RGB rows; false when it cannot be copied.
bool capture(HWND _hWnd, std::vector<std::uint8_t>& _rgb, int& _nWidth, int& _nHeight);

// The rectangle _rc of the window's client area as it shows on the screen, repainted first, as top-down RGB
// rows; false when it cannot be copied.
bool captureClient(HWND _hWnd, const RECT& _rc, std::vector<std::uint8_t>& _rgb);

// How many colours a picture has (counted up to 64): one colour means nothing was drawn.
int colourCount(const std::vector<std::uint8_t>& _rgb);

// Repaints the window and its children now, captures it and writes the PNG. Answers an empty text on
// success, else what went wrong.
std::string save(HWND _hWnd, const std::wstring& _path);

// Several windows as they lie on the screen (a dialog and its open menu), each copied from its own window
// DC into one picture of the rectangle that holds them all; later windows lie on top.
std::string saveTogether(const std::vector<HWND>& _windows, const std::wstring& _path);

} // namespace screenshot
