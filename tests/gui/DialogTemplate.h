// A dialog template as the dialog manager reads it from a module: DLGTEMPLATEEX or the older DLGTEMPLATE,
// with every control in template order (which is the z-order and the tab order of the live dialog).
#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <vector>

struct TemplateControl {
    DWORD dwStyle = 0;
    DWORD dwExStyle = 0;
    short x = 0;
    short y = 0;
    short cx = 0;
    short cy = 0;
    int nId = 0;
    // The window class by name; the predefined classes given by number come back as their names.
    std::wstring className;
    // The text; a resource number given in place of a text comes back as "#<number>".
    std::wstring text;
};

struct DialogTemplate {
    DWORD dwStyle = 0;
    DWORD dwExStyle = 0;
    short x = 0;
    short y = 0;
    short cx = 0;
    short cy = 0;
    std::wstring title;
    WORD wPointSize = 0;
    std::wstring fontFace;
    std::vector<TemplateControl> controls;

    // Reads _uSize bytes at _pData into *this; answers "" or what is wrong with the bytes.
    std::string parse(const void* _pData, std::size_t _uSize);
};
