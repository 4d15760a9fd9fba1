// The hash that proves stored data unchanged: the published test vectors, fed whole and in uneven pieces.
#include "UQSha256.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(UQSha256, EmptyInput) {
    EXPECT_EQ(UQSha256::mf_hashHex("", 0),
              "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(UQSha256, ThreeBytes) {
    EXPECT_EQ(UQSha256::mf_hashHex("abc", 3),
              "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

TEST(UQSha256, TwoBlocksWhereThePaddingSpills) {
    const std::string sText = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
    EXPECT_EQ(UQSha256::mf_hashHex(sText.data(), sText.size()),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
}

TEST(UQSha256, MillionBytesInUnevenPieces) {
    const std::string sPiece(1024, 'a');
    UQSha256 hash;
    std::size_t nLeft = 1000000;
    for (std::size_t nStep = 1; nLeft > 0; nStep = nStep % 997 + 13) {
        const std::size_t n = nStep < nLeft ? nStep : nLeft;
        hash.mf_update(sPiece.data(), n);
        nLeft -= n;
    }
    EXPECT_EQ(hash.mf_finishHex(), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(UQSha256, EveryLengthAroundTheBlockEndHashesAsOnePiece) {
    const std::string sText(130, 'q');
    for (std::size_t n = 50; n <= 130; ++n) {
        UQSha256 pieces;
        pieces.mf_update(sText.data(), n / 2);
        pieces.mf_update(sText.data() + n / 2, n - n / 2);
        EXPECT_EQ(pieces.mf_finishHex(), UQSha256::mf_hashHex(sText.data(), n)) << n << " bytes";
    }
}

} // namespace
