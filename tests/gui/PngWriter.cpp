#include "PngWriter.h"

#include <cstdio>
#include <cstdlib>

namespace png {

namespace {

// Bits go out least significant first, as deflate packs them.
class BitWriter {
public:
    void bits(std::uint32_t _uValue, int _nCount) {
        for (int i = 0; i < _nCount; ++i) {
            m_uByte |= ((_uValue >> i) & 1u) << m_nBit;
            if (++m_nBit == 8)
                flush();
        }
    }
    // Huffman codes go out most significant bit first.
    void code(std::uint32_t _uCode, int _nLength) {
        for (int i = _nLength - 1; i >= 0; --i)
            bits((_uCode >> i) & 1u, 1);
    }
    std::vector<std::uint8_t> finish() {
        if (m_nBit > 0)
            flush();
        return std::move(m_bytes);
    }

private:
    void flush() {
        m_bytes.push_back(static_cast<std::uint8_t>(m_uByte));
        m_uByte = 0;
        m_nBit = 0;
    }

    std::vector<std::uint8_t> m_bytes;
    std::uint32_t m_uByte = 0;
    int m_nBit = 0;
};

// The fixed literal/length code of RFC 1951, 3.2.6.
void literalOrLength(BitWriter& _out, int _nSymbol) {
    if (_nSymbol < 144)
        _out.code(0x30 + _nSymbol, 8);
    else if (_nSymbol < 256)
        _out.code(0x190 + (_nSymbol - 144), 9);
    else if (_nSymbol < 280)
        _out.code(_nSymbol - 256, 7);
    else
        _out.code(0xC0 + (_nSymbol - 280), 8);
}

const int LENGTH_BASE[29] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                             31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
const int LENGTH_EXTRA[29] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                              2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
const int DISTANCE_BASE[30] = {1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                               33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                               1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
const int DISTANCE_EXTRA[30] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};

void match(BitWriter& _out, int _nLength, int _nDistance) {
    int l = 28;
    while (LENGTH_BASE[l] > _nLength)
        --l;
    literalOrLength(_out, 257 + l);
    _out.bits(static_cast<std::uint32_t>(_nLength - LENGTH_BASE[l]), LENGTH_EXTRA[l]);
    int d = 29;
    while (DISTANCE_BASE[d] > _nDistance)
        --d;
    _out.code(static_cast<std::uint32_t>(d), 5);
    _out.bits(static_cast<std::uint32_t>(_nDistance - DISTANCE_BASE[d]), DISTANCE_EXTRA[d]);
}

std::vector<std::uint8_t> deflate(const std::vector<std::uint8_t>& _data) {
    const int WINDOW = 32768;
    const int MAX_MATCH = 258;
    const int MAX_CHAIN = 48;
    const int HASH_SIZE = 1 << 15;
    BitWriter out;
    out.bits(1, 1); // the final block
    out.bits(1, 2); // fixed Huffman codes
    std::vector<int> head(HASH_SIZE, -1);
    std::vector<int> previous(_data.size(), -1);
    const int n = static_cast<int>(_data.size());
    auto hashAt = [&](int _i) {
        return ((_data[_i] << 10) ^ (_data[_i + 1] << 5) ^ _data[_i + 2]) & (HASH_SIZE - 1);
    };
    auto insert = [&](int _i) {
        if (_i + 2 < n) {
            const int h = hashAt(_i);
            previous[_i] = head[h];
            head[h] = _i;
        }
    };
    int i = 0;
    while (i < n) {
        int bestLength = 0;
        int bestDistance = 0;
        if (i + 2 < n) {
            int candidate = head[hashAt(i)];
            for (int chain = 0; candidate >= 0 && i - candidate <= WINDOW && chain < MAX_CHAIN; ++chain) {
                int length = 0;
                while (length < MAX_MATCH && i + length < n && _data[candidate + length] == _data[i + length])
                    ++length;
                if (length > bestLength) {
                    bestLength = length;
                    bestDistance = i - candidate;
                    if (length == MAX_MATCH)
                        break;
                }
                candidate = previous[candidate];
            }
        }
        if (bestLength >= 3) {
            match(out, bestLength, bestDistance);
            for (int k = 0; k < bestLength; ++k)
                insert(i + k);
            i += bestLength;
        } else {
            literalOrLength(out, _data[i]);
            insert(i);
            ++i;
        }
    }
    literalOrLength(out, 256);
    return out.finish();
}

std::uint32_t adler32(const std::vector<std::uint8_t>& _data) {
    std::uint32_t a = 1;
    std::uint32_t b = 0;
    for (std::uint8_t byte : _data) {
        a = (a + byte) % 65521u;
        b = (b + a) % 65521u;
    }
    return (b << 16) | a;
}

void bigEndian(std::vector<std::uint8_t>& _out, std::uint32_t _u) {
    _out.push_back(static_cast<std::uint8_t>(_u >> 24));
    _out.push_back(static_cast<std::uint8_t>(_u >> 16));
    _out.push_back(static_cast<std::uint8_t>(_u >> 8));
    _out.push_back(static_cast<std::uint8_t>(_u));
}

void chunk(std::vector<std::uint8_t>& _out, const char* _pszType, const std::vector<std::uint8_t>& _data) {
    bigEndian(_out, static_cast<std::uint32_t>(_data.size()));
    std::vector<std::uint8_t> typed(_pszType, _pszType + 4);
    typed.insert(typed.end(), _data.begin(), _data.end());
    _out.insert(_out.end(), typed.begin(), typed.end());
    bigEndian(_out, crc32(typed.data(), typed.size()));
}

int paeth(int _a, int _b, int _c) {
    const int p = _a + _b - _c;
    const int pa = std::abs(p - _a);
    const int pb = std::abs(p - _b);
    const int pc = std::abs(p - _c);
    if (pa <= pb && pa <= pc)
        return _a;
    return pb <= pc ? _b : _c;
}

} // namespace

std::uint32_t crc32(const std::uint8_t* _p, std::size_t _n, std::uint32_t _uCrc) {
    static std::uint32_t table[256];
    static bool bReady = false;
    if (!bReady) {
        for (std::uint32_t i = 0; i < 256; ++i) {
            std::uint32_t c = i;
            for (int k = 0; k < 8; ++k)
                c = (c & 1u) ? 0xEDB88320u ^ (c >> 1) : c >> 1;
            table[i] = c;
        }
        bReady = true;
    }
    std::uint32_t c = _uCrc ^ 0xFFFFFFFFu;
    for (std::size_t i = 0; i < _n; ++i)
        c = table[(c ^ _p[i]) & 0xFFu] ^ (c >> 8);
    return c ^ 0xFFFFFFFFu;
}

std::vector<std::uint8_t> zlibCompress(const std::vector<std::uint8_t>& _data) {
    std::vector<std::uint8_t> out = {0x78, 0x01};
    const std::vector<std::uint8_t> body = deflate(_data);
    out.insert(out.end(), body.begin(), body.end());
    bigEndian(out, adler32(_data));
    return out;
}

std::vector<std::uint8_t> encode(const std::vector<std::uint8_t>& _rgb, int _nWidth, int _nHeight) {
    const std::size_t stride = static_cast<std::size_t>(_nWidth) * 3;
    std::vector<std::uint8_t> filtered;
    filtered.reserve((stride + 1) * static_cast<std::size_t>(_nHeight));
    std::vector<std::uint8_t> candidate(stride);
    for (int y = 0; y < _nHeight; ++y) {
        const std::uint8_t* row = &_rgb[stride * y];
        const std::uint8_t* up = y > 0 ? &_rgb[stride * (y - 1)] : nullptr;
        // Each row gets the filter with the smallest sum of residues, the usual choice.
        int bestFilter = 0;
        long bestSum = -1;
        std::vector<std::uint8_t> best;
        for (int filter = 0; filter < 5; ++filter) {
            long sum = 0;
            for (std::size_t x = 0; x < stride; ++x) {
                const int a = x >= 3 ? row[x - 3] : 0;
                const int b = up != nullptr ? up[x] : 0;
                const int c = (x >= 3 && up != nullptr) ? up[x - 3] : 0;
                int predicted = 0;
                switch (filter) {
                case 1:
                    predicted = a;
                    break;
                case 2:
                    predicted = b;
                    break;
                case 3:
                    predicted = (a + b) / 2;
                    break;
                case 4:
                    predicted = paeth(a, b, c);
                    break;
                default:
                    break;
                }
                candidate[x] = static_cast<std::uint8_t>(row[x] - predicted);
                sum += std::abs(static_cast<std::int8_t>(candidate[x]));
            }
            if (bestSum < 0 || sum < bestSum) {
                bestSum = sum;
                bestFilter = filter;
                best = candidate;
            }
        }
        filtered.push_back(static_cast<std::uint8_t>(bestFilter));
        filtered.insert(filtered.end(), best.begin(), best.end());
    }
    std::vector<std::uint8_t> out = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    std::vector<std::uint8_t> header;
    bigEndian(header, static_cast<std::uint32_t>(_nWidth));
    bigEndian(header, static_cast<std::uint32_t>(_nHeight));
    header.insert(header.end(), {8, 2, 0, 0, 0});
    chunk(out, "IHDR", header);
    chunk(out, "IDAT", zlibCompress(filtered));
    chunk(out, "IEND", {});
    return out;
}

bool writeFile(const std::wstring& _path, const std::vector<std::uint8_t>& _bytes) {
    std::FILE* f = _wfopen(_path.c_str(), L"wb");
    if (f == nullptr)
        return false;
    const bool bWritten = std::fwrite(_bytes.data(), 1, _bytes.size(), f) == _bytes.size();
    return std::fclose(f) == 0 && bWritten;
}

} // namespace png
