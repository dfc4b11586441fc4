// AES against FIPS 197's and SP 800-38A's vectors (from a data file) on both code paths, and the
// result codes of every operation: padding, bad padding, bad keys, the wrong direction, bad
// modes and lengths.
#include "cryptotest.h"

#include <gtest/gtest.h>
#include <memory>
#include <zkcommon/crypto/aes.h>

using namespace ZkCommonNS;
using namespace zkcryptotest;

namespace {

int bits(size_t bytes) {
    return static_cast<int>(bytes * 8);
}

} // namespace

TEST(Aes, KnownAnswersInPlace) {
    const auto rows = readVectors("aes.txt", 5);
    ASSERT_EQ(rows.size(), 8u);
    onEveryPath([&] {
        for (const auto& row : rows) {
            SCOPED_TRACE(row[0] + " " + row[1]);
            const std::string &mode = row[0], &keyHex = row[1], &ivHex = row[2];
            const std::string &plainHex = row[3], &cipherHex = row[4];
            const AES_Mode m = mode == "cbc"    ? AES_MODE_CBC
                               : mode == "cfb1" ? AES_MODE_CFB1
                                                : AES_MODE_ECB;
            const Bytes key = fromHex(keyHex), iv = fromHex(ivHex == "-" ? "" : ivHex);
            const unsigned char* ivp = iv.empty() ? nullptr : iv.data();
            Bytes data = fromHex(plainHex);
            AES_Encryption encrypt(m, key.data(), static_cast<int>(key.size()), ivp);
            AES_Decryption decrypt(m, key.data(), static_cast<int>(key.size()), ivp);
            const int length = bits(data.size());
            ASSERT_EQ(encrypt.blockEncrypt(data.data(), length, data.data()), length);
            EXPECT_EQ(toHex(data).substr(0, cipherHex.size()), cipherHex);
            ASSERT_EQ(decrypt.blockDecrypt(data.data(), length, data.data()), length);
            EXPECT_EQ(toHex(data), plainHex);
        }
    });
}

TEST(Aes, EveryCallStartsFromTheIvAndANullIvIsZeros) {
    const Bytes key(16, 0x2b), zeros(16, 0), plain(64, 0x6b);
    AES_Encryption withNull(AES_MODE_CBC, key.data(), 16, nullptr);
    AES_Encryption withZeros(AES_MODE_CBC, key.data(), 16, zeros.data());
    Bytes first(64), second(64), third(64);
    withNull.blockEncrypt(plain.data(), 512, first.data());
    withNull.blockEncrypt(plain.data(), 512, second.data());
    withZeros.blockEncrypt(plain.data(), 512, third.data());
    EXPECT_EQ(first, second);
    EXPECT_EQ(first, third);
    // A copy shares the key and outlives the original.
    auto original = std::make_unique<AES_Encryption>(AES_MODE_CBC, key.data(), 16, nullptr);
    AES_Encryption copy = *original;
    original.reset();
    copy.blockEncrypt(plain.data(), 512, second.data());
    EXPECT_EQ(second, first);
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
            decrypt.blockDecrypt(cipher.data(), bits(cipher.size()), clear.data());
            const unsigned char fill = static_cast<unsigned char>(padded - length);
            EXPECT_EQ(Bytes(clear.begin() + length, clear.end()), Bytes(size_t(fill), fill));
            Bytes back(cipher.size(), 0xee);
            ASSERT_EQ(decrypt.padDecrypt(cipher.data(), padded, back.data()), length);
            EXPECT_EQ(Bytes(back.begin(), back.begin() + length), plain);
            EXPECT_EQ(back[static_cast<size_t>(length)], 0xee) << "only message bytes are written";
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
        Bytes plain = fromHex("4d657373616765203132333435363738" + std::string(last));
        Bytes cipher(32), out(32, 0xee);
        ASSERT_EQ(encrypt.blockEncrypt(plain.data(), 256, cipher.data()), 256);
        EXPECT_EQ(decrypt.padDecrypt(cipher.data(), 32, out.data()), AES_BAD_DATA);
        EXPECT_EQ(Bytes(out.begin(), out.begin() + 16), Bytes(16, 0));
    }
    Bytes out(32);
    EXPECT_EQ(decrypt.padDecrypt(key.data(), 15, out.data()), AES_BAD_DATA);
    EXPECT_EQ(decrypt.padDecrypt(key.data(), 0, out.data()), AES_NOTHING_DONE);
}

TEST(Aes, BadKeysDirectionsAndModes) {
    const Bytes key(64, 1);
    Bytes in(32, 2), out(48);
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

    AES_Encryption encrypt(AES_MODE_CBC, key.data(), 24);
    AES_Decryption decrypt(AES_MODE_CBC, key.data(), 24);
    EXPECT_EQ(encrypt.blockDecrypt(in.data(), 256, out.data()), AES_BAD_DIRECTION);
    EXPECT_EQ(encrypt.padDecrypt(in.data(), 32, out.data()), AES_BAD_DIRECTION);
    EXPECT_EQ(decrypt.blockEncrypt(in.data(), 256, out.data()), AES_BAD_DIRECTION);
    EXPECT_EQ(decrypt.padEncrypt(in.data(), 32, out.data()), AES_BAD_DIRECTION);
    const AES_Base& base = decrypt; // through the base class too
    EXPECT_EQ(base.blockEncrypt(in.data(), 256, out.data()), AES_BAD_DIRECTION);

    AES_Encryption cfb(AES_MODE_CFB1, key.data(), 16);
    AES_Decryption cfbBack(AES_MODE_CFB1, key.data(), 16);
    EXPECT_EQ(cfb.padEncrypt(in.data(), 20, out.data()), AES_BAD_MODE);
    EXPECT_EQ(cfbBack.padDecrypt(in.data(), 32, out.data()), AES_BAD_MODE);
    AES_Encryption unknown(static_cast<AES_Mode>(7), key.data(), 16);
    EXPECT_EQ(unknown.blockEncrypt(in.data(), 256, out.data()), AES_BAD_MODE);
    EXPECT_EQ(unknown.padEncrypt(in.data(), 20, out.data()), AES_BAD_MODE);
}
