// The PNG writer of the screenshots: its checksums against their published check values, and its
// compressed stream read back by an independent reader of fixed-Huffman deflate blocks.
#include "PngWriter.h"

#include <gtest/gtest.h>

#include <cstring>
#include <random>

namespace {

// Reads a zlib stream made only of fixed-Huffman blocks (what the writer makes), RFC 1950/1951.
class FixedInflater {
public:
    explicit FixedInflater(const std::vector<std::uint8_t>& _stream) : m_stream(_stream) {}

    bool inflate(std::vector<std::uint8_t>& _out) {
        if (m_stream.size() < 6 || m_stream[0] != 0x78 || ((m_stream[0] << 8) | m_stream[1]) % 31 != 0)
            return false;
        m_nPos = 2;
        for (;;) {
            const int bFinal = bits(1);
            if (bits(2) != 1)
                return false;
            for (;;) {
                const int symbol = literalOrLength();
                if (symbol < 0)
                    return false;
                if (symbol < 256) {
                    _out.push_back(static_cast<std::uint8_t>(symbol));
                    continue;
                }
                if (symbol == 256)
                    break;
                static const int base[] = {3,  4,  5,  6,  7,  8,  9,  10, 11,  13,  15,  17,  19,  23, 27,
                                           31, 35, 43, 51, 59, 67, 83, 99, 115, 131, 163, 195, 227, 258};
                static const int extra[] = {0, 0, 0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 2, 2, 2,
                                            2, 3, 3, 3, 3, 4, 4, 4, 4, 5, 5, 5, 5, 0};
                static const int dbase[] = {1,    2,    3,    4,    5,    7,    9,    13,    17,    25,
                                            33,   49,   65,   97,   129,  193,  257,  385,   513,   769,
                                            1025, 1537, 2049, 3073, 4097, 6145, 8193, 12289, 16385, 24577};
                static const int dextra[] = {0, 0, 0, 0, 1, 1, 2, 2,  3,  3,  4,  4,  5,  5,  6,
                                             6, 7, 7, 8, 8, 9, 9, 10, 10, 11, 11, 12, 12, 13, 13};
                const int l = symbol - 257;
                if (l > 28)
                    return false;
                const int length = base[l] + bits(extra[l]);
                const int d = reversed(5);
                if (d > 29)
                    return false;
                const std::size_t distance = static_cast<std::size_t>(dbase[d] + bits(dextra[d]));
                if (distance > _out.size())
                    return false;
                for (int k = 0; k < length; ++k)
                    _out.push_back(_out[_out.size() - distance]);
            }
            if (bFinal)
                break;
        }
        // The Adler-32 of the data follows the last byte of the deflate stream.
        m_nBit = 0;
        ++m_nPos;
        if (m_nPos + 4 != m_stream.size())
            return false;
        std::uint32_t a = 1;
        std::uint32_t b = 0;
        for (std::uint8_t byte : _out) {
            a = (a + byte) % 65521u;
            b = (b + a) % 65521u;
        }
        const std::uint32_t stored = (static_cast<std::uint32_t>(m_stream[m_nPos]) << 24) |
                                     (m_stream[m_nPos + 1] << 16) | (m_stream[m_nPos + 2] << 8) |
                                     m_stream[m_nPos + 3];
        return stored == ((b << 16) | a);
    }

private:
    int bits(int _n) {
        int value = 0;
        for (int i = 0; i < _n; ++i) {
            if (m_nPos >= m_stream.size())
                return 0;
            value |= ((m_stream[m_nPos] >> m_nBit) & 1) << i;
            if (++m_nBit == 8) {
                m_nBit = 0;
                ++m_nPos;
            }
        }
        return value;
    }
    int reversed(int _n) {
        int value = 0;
        for (int i = 0; i < _n; ++i)
            value = (value << 1) | bits(1);
        return value;
    }
    int literalOrLength() {
        int code = reversed(7);
        if (code <= 0x17)
            return 256 + code;
        code = (code << 1) | bits(1);
        if (code >= 0x30 && code <= 0xBF)
            return code - 0x30;
        if (code >= 0xC0 && code <= 0xC7)
            return 280 + code - 0xC0;
        code = (code << 1) | bits(1);
        if (code >= 0x190 && code <= 0x1FF)
            return 144 + code - 0x190;
        return -1;
    }

    const std::vector<std::uint8_t>& m_stream;
    std::size_t m_nPos = 0;
    int m_nBit = 0;
};

std::vector<std::uint8_t> roundTrip(const std::vector<std::uint8_t>& _data) {
    std::vector<std::uint8_t> out;
    EXPECT_TRUE(FixedInflater(png::zlibCompress(_data)).inflate(out));
    return out;
}

} // namespace

TEST(PngWriter, Crc32HasItsCheckValue) {
    const char* text = "123456789";
    EXPECT_EQ(png::crc32(reinterpret_cast<const std::uint8_t*>(text), std::strlen(text)), 0xCBF43926u);
}

TEST(PngWriter, CompressedDataReadsBackUnchanged) {
    EXPECT_EQ(roundTrip({}), std::vector<std::uint8_t>{});
    const std::vector<std::uint8_t> one = {42};
    EXPECT_EQ(roundTrip(one), one);
    // Long runs (matches of the longest length and at every distance) and noise (literals of every value).
    std::vector<std::uint8_t> mixed(70000, 0xEE);
    std::mt19937 random(7);
    for (std::size_t i = 20000; i < 40000; ++i)
        mixed[i] = static_cast<std::uint8_t>(random());
    for (std::size_t i = 40000; i < 70000; ++i)
        mixed[i] = static_cast<std::uint8_t>(i % 251);
    EXPECT_EQ(roundTrip(mixed), mixed);
}

TEST(PngWriter, ScreenshotsOfDialogsCompressWell) {
    std::vector<std::uint8_t> plain(300 * 200 * 3, 0xF0);
    EXPECT_LT(png::zlibCompress(plain).size(), plain.size() / 50);
}

TEST(PngWriter, ImagesHaveTheSignatureHeaderAndEndChunks) {
    const std::vector<std::uint8_t> rgb = {255, 0, 0, 0, 255, 0, 0, 0, 255, 255, 255, 255};
    const std::vector<std::uint8_t> image = png::encode(rgb, 2, 2);
    ASSERT_GT(image.size(), 8u + 25u + 12u);
    EXPECT_EQ(std::vector<std::uint8_t>(image.begin(), image.begin() + 8),
              (std::vector<std::uint8_t>{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'}));
    // IHDR: 13 bytes, 2 x 2, 8-bit RGB.
    EXPECT_EQ(std::vector<std::uint8_t>(image.begin() + 8, image.begin() + 33),
              (std::vector<std::uint8_t>{0, 0, 0, 13,        'I',       'H',       'D',      'R', 0,
                                         0, 0, 2, 0,         0,         0,         2,        8,   2,
                                         0, 0, 0, image[29], image[30], image[31], image[32]}));
    EXPECT_EQ(png::crc32(&image[12], 17), (static_cast<std::uint32_t>(image[29]) << 24) | (image[30] << 16) |
                                              (image[31] << 8) | image[32]);
    EXPECT_EQ(std::vector<std::uint8_t>(image.end() - 12, image.end()),
              (std::vector<std::uint8_t>{0, 0, 0, 0, 'I', 'E', 'N', 'D', 0xAE, 0x42, 0x60, 0x82}));
    // The image data: each row a filter byte and its filtered pixels.
    const std::size_t idatLength = (image[33] << 24) | (image[34] << 16) | (image[35] << 8) | image[36];
    const std::vector<std::uint8_t> idat(image.begin() + 41, image.begin() + 41 + idatLength);
    std::vector<std::uint8_t> rows;
    ASSERT_TRUE(FixedInflater(idat).inflate(rows));
    EXPECT_EQ(rows.size(), 2u * (1 + 2 * 3));
}
