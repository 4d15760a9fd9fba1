#include "UQSha256.h"

#include <cstring>

namespace {

const std::uint32_t ROUND_CONSTANTS[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

inline std::uint32_t rotate(std::uint32_t _uValue, int _nBits) noexcept {
    return (_uValue >> _nBits) | (_uValue << (32 - _nBits));
}

} // namespace

UQSha256::UQSha256() noexcept
    : m_auState{0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19},
      m_auBuffer{}, m_nBuffered(0), m_uTotalBytes(0) {}

void UQSha256::mf_implBlock(const std::uint8_t* _pBlock) noexcept {
    std::uint32_t w[64];
    for (int i = 0; i < 16; ++i)
        w[i] = (std::uint32_t(_pBlock[4 * i]) << 24) | (std::uint32_t(_pBlock[4 * i + 1]) << 16) |
               (std::uint32_t(_pBlock[4 * i + 2]) << 8) | std::uint32_t(_pBlock[4 * i + 3]);
    for (int i = 16; i < 64; ++i) {
        const std::uint32_t s0 = rotate(w[i - 15], 7) ^ rotate(w[i - 15], 18) ^ (w[i - 15] >> 3);
        const std::uint32_t s1 = rotate(w[i - 2], 17) ^ rotate(w[i - 2], 19) ^ (w[i - 2] >> 10);
        w[i] = w[i - 16] + s0 + w[i - 7] + s1;
    }
    std::uint32_t a = m_auState[0], b = m_auState[1], c = m_auState[2], d = m_auState[3];
    std::uint32_t e = m_auState[4], f = m_auState[5], g = m_auState[6], h = m_auState[7];
    for (int i = 0; i < 64; ++i) {
        const std::uint32_t t1 = h + (rotate(e, 6) ^ rotate(e, 11) ^ rotate(e, 25)) + ((e & f) ^ (~e & g)) +
                                 ROUND_CONSTANTS[i] + w[i];
        const std::uint32_t t2 =
            (rotate(a, 2) ^ rotate(a, 13) ^ rotate(a, 22)) + ((a & b) ^ (a & c) ^ (b & c));
        h = g;
        g = f;
        f = e;
        e = d + t1;
        d = c;
        c = b;
        b = a;
        a = t1 + t2;
    }
    m_auState[0] += a;
    m_auState[1] += b;
    m_auState[2] += c;
    m_auState[3] += d;
    m_auState[4] += e;
    m_auState[5] += f;
    m_auState[6] += g;
    m_auState[7] += h;
}

void UQSha256::mf_update(const void* _pData, std::size_t _nBytes) noexcept {
    const std::uint8_t* p = static_cast<const std::uint8_t*>(_pData);
    m_uTotalBytes += _nBytes;
    if (m_nBuffered > 0) {
        const std::size_t nTake = _nBytes < 64 - m_nBuffered ? _nBytes : 64 - m_nBuffered;
        std::memcpy(m_auBuffer + m_nBuffered, p, nTake);
        m_nBuffered += nTake;
        p += nTake;
        _nBytes -= nTake;
        if (m_nBuffered < 64)
            return;
        mf_implBlock(m_auBuffer);
        m_nBuffered = 0;
    }
    for (; _nBytes >= 64; p += 64, _nBytes -= 64)
        mf_implBlock(p);
    if (_nBytes > 0) {
        std::memcpy(m_auBuffer, p, _nBytes);
        m_nBuffered = _nBytes;
    }
}

std::string UQSha256::mf_finishHex() noexcept {
    const std::uint64_t uBits = m_uTotalBytes * 8;
    const std::uint8_t uPad = 0x80;
    const std::uint8_t uZero = 0;
    mf_update(&uPad, 1);
    while (m_nBuffered != 56)
        mf_update(&uZero, 1);
    std::uint8_t auLength[8];
    for (int i = 0; i < 8; ++i)
        auLength[i] = static_cast<std::uint8_t>(uBits >> (56 - 8 * i));
    mf_update(auLength, 8);
    static const char DIGITS[] = "0123456789abcdef";
    std::string sHex;
    sHex.reserve(64);
    for (std::uint32_t uWord : m_auState)
        for (int nShift = 28; nShift >= 0; nShift -= 4)
            sHex += DIGITS[(uWord >> nShift) & 0xF];
    return sHex;
}

std::string UQSha256::mf_hashHex(const void* _pData, std::size_t _nBytes) {
    UQSha256 hash;
    hash.mf_update(_pData, _nBytes);
    return hash.mf_finishHex();
}
