// UTF-8 <-> wide text, for files and consoles. Wide text is UTF-16 on every target (on Linux each wchar_t
// holds one UTF-16 unit), so a character beyond the BMP is a surrogate pair everywhere.
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

// Lossless for any UTF-16 text, unpaired surrogates included (generalized UTF-8, "WTF-8": a lone surrogate is
// its three-byte form, a pair one four-byte character). For stores that must give back what they were
// given; valid UTF-16 gives plain UTF-8.
KORCOMPAT_API std::string wideToWtf8(const wchar_t* _pText, std::size_t _nChars);
KORCOMPAT_API std::wstring wtf8ToWide(const char* _pText, std::size_t _nBytes);

} // namespace uqfmt
