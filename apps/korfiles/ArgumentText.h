// Text arguments that no stored text can equal. On Linux an argument keeps each byte that is no UTF-8 as the
// lone surrogate U+DC80 + byte (main.cpp), so that a file name still names its file; a pattern or a value
// that holds one could only be stored or matched changed.
#pragma once

#include "compat/afx.h"

#include <string>

class ArgumentText {
public:
    // The index of the first unpaired surrogate of _sText, or -1. A surrogate pair is one character.
    static int mf_findUnpairedSurrogate(const CString& _sText);
    // What is wrong at _nIndex, for a message: "byte 0xE9 at character 4" where the unit holds a byte that
    // was no UTF-8 (Linux), else "unpaired surrogate U+D800 at unit 4".
    static std::string mf_describe(const CString& _sText, int _nIndex);
};
