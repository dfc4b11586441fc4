// AES against FIPS 197's and SP 800-38A's vectors on both code paths, and the result codes of
// every operation: padding, bad padding, bad keys, the wrong direction, bad modes and lengths.
#include "cryptotest.h"

#include <gtest/gtest.h>
#include <memory>
#include <zkcommon/crypto/aes.h>

using namespace ZkCommonNS;
using namespace zkcryptotest;

namespace {

struct BlockVector {
    const char* key;
    const char* plain;
    const char* cipher;
};

// clang-format off
const BlockVector kFips197[] = {
    // Appendix B
    {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734", "3925841d02dc09fbdc118597196a0b32"},
    // Appendix C.1, C.2, C.3
    {"000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff", "69c4e0d86a7b0430d8cdb78070b4c55a"},
    {"000102030405060708090a0b0c0d0e0f1011121314151617", "00112233445566778899aabbccddeeff", "dda97ca4864cdfe06eaf70a0ec0d7191"},
    {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f", "00112233445566778899aabbccddeeff", "8ea2b7ca516745bfeafc49904b496089"},
};
// clang-format on

// SP 800-38A F.2.1 to F.2.6: CBC with the same IV and four plaintext blocks for each key size.
const char kSp800Iv[] = "000102030405060708090a0b0c0d0e0f";
const char kSp800Plain[] = "6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                           "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710";
// clang-format off
const BlockVector kSp800Cbc[] = {
    {"2b7e151628aed2a6abf7158809cf4f3c", kSp800Plain, "7649abac8119b246cee98e9b12e9197d5086cb9b507219ee95db113a917678b273bed6b8e3c1743b7116e69e222295163ff1caa1681fac09120eca307586e1a7"},
    {"8e73b0f7da0e6452c810f32b809079e562f8ead2522c6b7b", kSp800Plain, "4f021db243bc633d7178183a9fa071e8b4d9ada9ad7dedf4e5e738763f69145a571b242012fb7ae07fa9baac3df102e008b0e27988598881d920a9e64f5615cd"},
    {"603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4", kSp800Plain, "f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b"},
};
// clang-format on

int bits(size_t bytes) {
    return static_cast<int>(bytes * 8);
}

} // namespace

TEST(Aes, Fips197Vectors) {
    onEveryPath([] {
        for (const BlockVector& v : kFips197) {
            SCOPED_TRACE(v.key);
            const Bytes key = fromHex(v.key), plain = fromHex(v.plain);
            AES_Encryption encrypt(AES_MODE_ECB, key.data(), static_cast<int>(key.size()));
            AES_Decryption decrypt(AES_MODE_ECB, key.data(), static_cast<int>(key.size()));
            Bytes out(16), back(16);
            ASSERT_EQ(encrypt.blockEncrypt(plain.data(), 128, out.data()), 128);
            EXPECT_EQ(toHex(out), v.cipher);
            ASSERT_EQ(decrypt.blockDecrypt(out.data(), 128, back.data()), 128);
            EXPECT_EQ(toHex(back), v.plain);
        }
    });
}

TEST(Aes, CbcVectorsInPlace) {
    onEveryPath([] {
        for (const BlockVector& v : kSp800Cbc) {
            SCOPED_TRACE(v.key);
            const Bytes key = fromHex(v.key), iv = fromHex(kSp800Iv);
            Bytes data = fromHex(v.plain);
            AES_Encryption encrypt(AES_MODE_CBC, key.data(), static_cast<int>(key.size()),
                                   iv.data());
            ASSERT_EQ(encrypt.blockEncrypt(data.data(), bits(data.size()), data.data()), 512);
            EXPECT_EQ(toHex(data), v.cipher);
            AES_Decryption decrypt(AES_MODE_CBC, key.data(), static_cast<int>(key.size()),
                                   iv.data());
            ASSERT_EQ(decrypt.blockDecrypt(data.data(), bits(data.size()), data.data()), 512);
            EXPECT_EQ(toHex(data), v.plain);
        }
    });
}

TEST(Aes, EveryCallStartsFromTheIvAndANullIvIsZeros) {
    const Bytes key = fromHex(kSp800Cbc[0].key), zeros(16, 0), plain = fromHex(kSp800Plain);
    AES_Encryption withNull(AES_MODE_CBC, key.data(), 16, nullptr);
    AES_Encryption withZeros(AES_MODE_CBC, key.data(), 16, zeros.data());
    Bytes first(64), second(64), third(64);
    withNull.blockEncrypt(plain.data(), 512, first.data());
    withNull.blockEncrypt(plain.data(), 512, second.data());
    withZeros.blockEncrypt(plain.data(), 512, third.data());
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, third);
}

TEST(Aes, BlockLengthsCountWholeBlocksOnly) {
    const Bytes key(16, 1);
    AES_Encryption encrypt(AES_MODE_ECB, key.data(), 16);
    Bytes in(48, 7), out(48, 0xee);
    EXPECT_EQ(encrypt.blockEncrypt(in.data(), 100, out.data()), 0);
    EXPECT_EQ(out, Bytes(48, 0xee));
    EXPECT_EQ(encrypt.blockEncrypt(in.data(), 128, out.data()), 128);
    EXPECT_EQ(encrypt.blockEncrypt(in.data(), 383, out.data()), 256);
    // The bytes past the whole blocks stay as they were.
    EXPECT_EQ(Bytes(out.begin() + 32, out.end()), Bytes(16, 0xee));
    EXPECT_EQ(encrypt.blockEncrypt(in.data(), 0, out.data()), AES_NOTHING_DONE);
    EXPECT_EQ(encrypt.blockEncrypt(in.data(), -128, out.data()), AES_NOTHING_DONE);
    EXPECT_EQ(encrypt.blockEncrypt(nullptr, 128, out.data()), AES_NOTHING_DONE);
}

TEST(Aes, PaddingFillsToWholeBlocks) {
    onEveryPath([] {
        const Bytes key(32, 9), iv(16, 3);
        AES_Encryption encrypt(AES_MODE_CBC, key.data(), 32, iv.data());
        AES_Decryption decrypt(AES_MODE_CBC, key.data(), 32, iv.data());
        AES_Decryption raw(AES_MODE_CBC, key.data(), 32, iv.data());
        for (int length : {1, 15, 16, 17, 31, 32, 100}) {
            SCOPED_TRACE(length);
            Bytes plain(static_cast<size_t>(length));
            for (int i = 0; i < length; ++i)
                plain[static_cast<size_t>(i)] = static_cast<unsigned char>(i * 7);
            const int padded = (length / 16 + 1) * 16;
            Bytes cipher(static_cast<size_t>(padded));
            ASSERT_EQ(encrypt.padEncrypt(plain.data(), length, cipher.data()), padded);
            // The filler is the count of padding bytes, a whole block of 16s for whole input.
            Bytes clear(cipher.size());
            raw.blockDecrypt(cipher.data(), bits(cipher.size()), clear.data());
            const unsigned char fill = static_cast<unsigned char>(padded - length);
            EXPECT_EQ(Bytes(clear.begin() + length, clear.end()),
                      Bytes(static_cast<size_t>(fill), fill));
            Bytes back(cipher.size(), 0xee);
            ASSERT_EQ(decrypt.padDecrypt(cipher.data(), padded, back.data()), length);
            EXPECT_EQ(Bytes(back.begin(), back.begin() + length), plain);
            // Only message bytes are written.
            EXPECT_EQ(back[static_cast<size_t>(length)], 0xee);
            // In place both ways.
            Bytes inPlace(cipher.size());
            std::copy(plain.begin(), plain.end(), inPlace.begin());
            ASSERT_EQ(encrypt.padEncrypt(inPlace.data(), length, inPlace.data()), padded);
            EXPECT_EQ(inPlace, cipher);
            ASSERT_EQ(decrypt.padDecrypt(inPlace.data(), padded, inPlace.data()), length);
            EXPECT_EQ(Bytes(inPlace.begin(), inPlace.begin() + length), plain);
        }
    });
}

TEST(Aes, BadPaddingIsRefusedAndLeavesNoMessage) {
    const Bytes key(16, 5);
    AES_Encryption encrypt(AES_MODE_ECB, key.data(), 16);
    AES_Decryption decrypt(AES_MODE_ECB, key.data(), 16);
    // clang-format off
    const char* const lastBlocks[] = {
        "00000000000000000000000000000000", // a filler count of 0
        "11111111111111111111111111111111", // 17
        "ffffffffffffffffffffffffffffffff", // 255
        "41414141414141414141414141030203", // three bytes of 3 expected, one is 2
        "41414141414141414141414141414110", // 16, but the block is not all 16s
    };
    // clang-format on
    for (const char* last : lastBlocks) {
        SCOPED_TRACE(last);
        Bytes plain = fromHex("4d6573736167652031323334353637383930" + std::string(28, '0'));
        plain.resize(16);
        const Bytes tail = fromHex(last);
        plain.insert(plain.end(), tail.begin(), tail.end());
        Bytes cipher(32);
        ASSERT_EQ(encrypt.blockEncrypt(plain.data(), 256, cipher.data()), 256);
        Bytes out(32, 0xee);
        EXPECT_EQ(decrypt.padDecrypt(cipher.data(), 32, out.data()), AES_BAD_DATA);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 16), Bytes(16, 0));
    }
    Bytes out(32);
    EXPECT_EQ(decrypt.padDecrypt(key.data(), 15, out.data()), AES_BAD_DATA);
    EXPECT_EQ(decrypt.padDecrypt(key.data(), 0, out.data()), AES_NOTHING_DONE);
}

TEST(Aes, BadKeySizes) {
    const Bytes key(64, 1);
    Bytes in(32, 2), out(32);
    for (int size : {0, 1, 8, 15, 17, 20, 31, 33, 64, -16}) {
        SCOPED_TRACE(size);
        AES_Encryption encrypt(AES_MODE_CBC, key.data(), size);
        AES_Decryption decrypt(AES_MODE_CBC, key.data(), size);
        EXPECT_FALSE(encrypt.hasKey());
        EXPECT_EQ(encrypt.blockEncrypt(in.data(), 256, out.data()), AES_BAD_KEY);
        EXPECT_EQ(encrypt.padEncrypt(in.data(), 32, out.data()), AES_BAD_KEY);
        EXPECT_EQ(decrypt.blockDecrypt(in.data(), 256, out.data()), AES_BAD_KEY);
        EXPECT_EQ(decrypt.padDecrypt(in.data(), 32, out.data()), AES_BAD_KEY);
        // The key comes before everything else, even the wrong direction or no input.
        EXPECT_EQ(encrypt.blockDecrypt(nullptr, 0, out.data()), AES_BAD_KEY);
    }
    AES_Encryption nullKey(AES_MODE_ECB, nullptr, 16);
    EXPECT_EQ(nullKey.blockEncrypt(in.data(), 128, out.data()), AES_BAD_KEY);
}

TEST(Aes, WrongDirection) {
    const Bytes key(24, 1);
    Bytes in(32, 2), out(32);
    AES_Encryption encrypt(AES_MODE_CBC, key.data(), 24);
    AES_Decryption decrypt(AES_MODE_CBC, key.data(), 24);
    EXPECT_EQ(encrypt.blockDecrypt(in.data(), 256, out.data()), AES_BAD_DIRECTION);
    EXPECT_EQ(encrypt.padDecrypt(in.data(), 32, out.data()), AES_BAD_DIRECTION);
    EXPECT_EQ(decrypt.blockEncrypt(in.data(), 256, out.data()), AES_BAD_DIRECTION);
    EXPECT_EQ(decrypt.padEncrypt(in.data(), 32, out.data()), AES_BAD_DIRECTION);
    // Through the base class too.
    const AES_Base& base = decrypt;
    EXPECT_EQ(base.blockEncrypt(in.data(), 256, out.data()), AES_BAD_DIRECTION);
}

TEST(Aes, BadModes) {
    const Bytes key(16, 1);
    Bytes in(32, 2), out(48);
    AES_Encryption cfb(AES_MODE_CFB1, key.data(), 16);
    AES_Decryption cfbBack(AES_MODE_CFB1, key.data(), 16);
    EXPECT_EQ(cfb.padEncrypt(in.data(), 20, out.data()), AES_BAD_MODE);
    EXPECT_EQ(cfbBack.padDecrypt(in.data(), 32, out.data()), AES_BAD_MODE);
    AES_Encryption unknown(static_cast<AES_Mode>(7), key.data(), 16);
    EXPECT_EQ(unknown.blockEncrypt(in.data(), 256, out.data()), AES_BAD_MODE);
    EXPECT_EQ(unknown.padEncrypt(in.data(), 20, out.data()), AES_BAD_MODE);
}

TEST(Aes, Cfb1RoundTripAndBitFeedback) {
    onEveryPath([] {
        const Bytes key = fromHex("2b7e151628aed2a6abf7158809cf4f3c"), iv = fromHex(kSp800Iv);
        const Bytes plain = fromHex(kSp800Plain);
        AES_Encryption encrypt(AES_MODE_CFB1, key.data(), 16, iv.data());
        AES_Decryption decrypt(AES_MODE_CFB1, key.data(), 16, iv.data());
        Bytes cipher(64), back(64);
        ASSERT_EQ(encrypt.blockEncrypt(plain.data(), 512, cipher.data()), 512);
        // SP 800-38A F.3.1 (CFB1-AES128): the first 16 bits of the 6bc1 message.
        EXPECT_EQ(toHex(cipher.data(), 2), "68b3");
        ASSERT_EQ(decrypt.blockDecrypt(cipher.data(), 512, back.data()), 512);
        EXPECT_EQ(back, plain);
    });
}

TEST(Aes, CopiesShareTheKeyAndOutliveEachOther) {
    const Bytes key(16, 8), plain(32, 4);
    auto original = std::make_unique<AES_Encryption>(AES_MODE_ECB, key.data(), 16);
    AES_Encryption copy = *original;
    Bytes a(32), b(32);
    original->blockEncrypt(plain.data(), 256, a.data());
    original.reset();
    copy.blockEncrypt(plain.data(), 256, b.data());
    EXPECT_EQ(a, b);
}
