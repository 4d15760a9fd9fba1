// UTF-8 <-> wide text, for files and consoles. wchar_t is UTF-16 on Windows and UTF-32 elsewhere.
#pragma once

#include "compat/compat_api.h"

#include <cstddef>
#include <string>

namespace uqfmt {

// Invalid sequences become U+FFFD; nothing is dropped silently.
KORCOMPAT_API std::wstring utf8ToWide(const char* _pText, std::size_t _nBytes);
KORCOMPAT_API std::string wideToUtf8(const wchar_t* _pText, std::size_t _nChars);

} // namespace uqfmt
