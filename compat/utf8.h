// UTF-8 <-> wide text, for files and consoles. wchar_t is UTF-16 on Windows and UTF-32 elsewhere.
#pragma once

#include "compat/compat_api.h"

#include <cstddef>
#include <string>

namespace uqfmt {

// Invalid sequences become U+FFFD; nothing is dropped silently.
KORCOMPAT_API std::wstring utf8ToWide(const char* _pText, std::size_t _nBytes);
KORCOMPAT_API std::string wideToUtf8(const wchar_t* _pText, std::size_t _nChars);

// File names and arguments of POSIX systems are bytes, UTF-8 by custom only. These keep every byte: one that
// is no part of valid UTF-8 becomes U+DC80 + its value (a lone low surrogate, which valid UTF-8 never
// gives), and such a character becomes that byte again; the rest is UTF-8 as above.
KORCOMPAT_API std::wstring nativeToWide(const char* _pText, std::size_t _nBytes);
KORCOMPAT_API std::string wideToNative(const wchar_t* _pText, std::size_t _nChars);

} // namespace uqfmt
