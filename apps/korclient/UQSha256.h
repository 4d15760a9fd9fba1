// SHA-256 of stored data, so that recall and retrieval can prove that what they read is what was stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

class UQSha256 {
public:
    UQSha256() noexcept;

    void mf_update(const void* _pData, std::size_t _nBytes) noexcept;
    // The digest as 64 lower-case hex digits; the object is spent afterwards.
    std::string mf_finishHex() noexcept;

    static std::string mf_hashHex(const void* _pData, std::size_t _nBytes);

private:
    void mf_implBlock(const std::uint8_t* _pBlock) noexcept;

    std::uint32_t m_auState[8];
    std::uint8_t m_auBuffer[64];
    std::size_t m_nBuffered;
    std::uint64_t m_uTotalBytes;
};
