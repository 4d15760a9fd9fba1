// Writes 24-bit RGB images as PNG files, compressed with deflate (fixed Huffman codes and LZ77 matches),
// so that screenshots of dialogs need no image library.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace png {

// _rgb holds _nHeight rows of _nWidth pixels, three bytes (red, green, blue) each, top row first.
std::vector<std::uint8_t> encode(const std::vector<std::uint8_t>& _rgb, int _nWidth, int _nHeight);

// The zlib stream (RFC 1950) of _data; exposed for the tests.
std::vector<std::uint8_t> zlibCompress(const std::vector<std::uint8_t>& _data);

std::uint32_t crc32(const std::uint8_t* _p, std::size_t _n, std::uint32_t _uCrc = 0);

// False when the file cannot be written.
bool writeFile(const std::wstring& _path, const std::vector<std::uint8_t>& _bytes);

} // namespace png
