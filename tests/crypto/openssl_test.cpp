// Differential tests against OpenSSL's libcrypto: random messages of every length from 0 to
// 1,000 bytes and a few megabytes, split into random Update pieces, give the same digests; random
// keys, IVs and messages give the same AES output and the same padding. Both code paths.
#include "cryptotest.h"

#if ZK_HAVE_OPENSSL

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <random>
#include <zkcommon/crypto/aes.h>
#include <zkcommon/crypto/md5.h>
#include <zkcommon/crypto/sha1.h>
#include <zkcommon/crypto/sha256.h>
#include <zkcommon/crypto/sha512.h>

using namespace ZkCommonNS;
using namespace zkcryptotest;

namespace {

Bytes randomBytes(std::mt19937_64& random, size_t length) {
    Bytes bytes(length);
    for (unsigned char& b : bytes)
        b = static_cast<unsigned char>(random());
    return bytes;
}

Bytes opensslDigest(const EVP_MD* md, const Bytes& message) {
    unsigned char out[EVP_MAX_MD_SIZE];
    unsigned length = 0;
    EXPECT_EQ(EVP_Digest(message.data(), message.size(), out, &length, md, nullptr), 1);
    return Bytes(out, out + length);
}

/// Our digest of `message`, fed in random pieces.
template <class Context>
Bytes ourDigest(const Bytes& message, size_t digestLength, std::mt19937_64& random) {
    Context ctx;
    size_t at = 0;
    while (at < message.size()) {
        // Mostly small pieces, now and then a large one.
        const size_t limit = random() % 8 == 0 ? message.size() : 200;
        const size_t piece = std::min<size_t>(random() % (limit + 1), message.size() - at);
        ctx.Update(message.data() + at, static_cast<unsigned>(piece));
        at += piece;
    }
    Bytes out(digestLength);
    ctx.Final(out.data());
    return out;
}

void compareDigests(const Bytes& message, std::mt19937_64& random) {
    EXPECT_EQ(toHex(ourDigest<MD5_CTX>(message, 16, random)),
              toHex(opensslDigest(EVP_md5(), message)));
    EXPECT_EQ(toHex(ourDigest<SHA1_CTX>(message, 20, random)),
              toHex(opensslDigest(EVP_sha1(), message)));
    EXPECT_EQ(toHex(ourDigest<SHA256_CTX>(message, 32, random)),
              toHex(opensslDigest(EVP_sha256(), message)));
    EXPECT_EQ(toHex(ourDigest<SHA384_CTX>(message, 48, random)),
              toHex(opensslDigest(EVP_sha384(), message)));
    EXPECT_EQ(toHex(ourDigest<SHA512_CTX>(message, 64, random)),
              toHex(opensslDigest(EVP_sha512(), message)));
}

const EVP_CIPHER* opensslCipher(AES_Mode mode, size_t keyBytes) {
    switch (mode) {
    case AES_MODE_ECB:
        return keyBytes == 16   ? EVP_aes_128_ecb()
               : keyBytes == 24 ? EVP_aes_192_ecb()
                                : EVP_aes_256_ecb();
    case AES_MODE_CBC:
        return keyBytes == 16   ? EVP_aes_128_cbc()
               : keyBytes == 24 ? EVP_aes_192_cbc()
                                : EVP_aes_256_cbc();
    default:
        return keyBytes == 16   ? EVP_aes_128_cfb1()
               : keyBytes == 24 ? EVP_aes_192_cfb1()
                                : EVP_aes_256_cfb1();
    }
}

Bytes opensslCrypt(AES_Mode mode, const Bytes& key, const Bytes& iv, const Bytes& in, bool encrypt,
                   bool pad) {
    EVP_CIPHER_CTX* ctx = EVP_CIPHER_CTX_new();
    Bytes out(in.size() + 32);
    int length = 0, tail = 0;
    EXPECT_EQ(EVP_CipherInit_ex(ctx, opensslCipher(mode, key.size()), nullptr, key.data(),
                                mode == AES_MODE_ECB ? nullptr : iv.data(), encrypt ? 1 : 0),
              1);
    EVP_CIPHER_CTX_set_padding(ctx, pad ? 1 : 0);
    EXPECT_EQ(EVP_CipherUpdate(ctx, out.data(), &length, in.data(), static_cast<int>(in.size())),
              1);
    const int finished = EVP_CipherFinal_ex(ctx, out.data() + length, &tail);
    EVP_CIPHER_CTX_free(ctx);
    if (finished != 1)
        return Bytes();
    out.resize(static_cast<size_t>(length + tail));
    return out;
}

} // namespace

TEST(OpenSsl, DigestsOfEveryLengthUpTo1000) {
    onEveryPath([] {
        std::mt19937_64 random(1000);
        for (size_t length = 0; length <= 1000; ++length) {
            SCOPED_TRACE(length);
            compareDigests(randomBytes(random, length), random);
            if (HasFailure())
                return;
        }
    });
}

TEST(OpenSsl, DigestsOfSomeMegabytes) {
    onEveryPath([] {
        std::mt19937_64 random(77);
        for (size_t length : {size_t(1) << 20, (size_t(3) << 20) + 12345}) {
            SCOPED_TRACE(length);
            compareDigests(randomBytes(random, length), random);
        }
    });
}

TEST(OpenSsl, AesBlockModes) {
    onEveryPath([] {
        std::mt19937_64 random(197);
        for (int round = 0; round < 300; ++round) {
            const AES_Mode mode = static_cast<AES_Mode>(round % 3);
            const size_t keyBytes = 16 + 8 * static_cast<size_t>(random() % 3);
            // CFB takes 128 cipher calls a block: keep its messages short.
            const size_t blocks = random() % (mode == AES_MODE_CFB1 ? 4 : 40);
            const Bytes key = randomBytes(random, keyBytes), iv = randomBytes(random, 16);
            const Bytes plain = randomBytes(random, blocks * 16);
            SCOPED_TRACE("mode " + std::to_string(mode) + " key " + toHex(key) + " blocks " +
                         std::to_string(blocks));
            AES_Encryption encrypt(mode, key.data(), static_cast<int>(keyBytes), iv.data());
            AES_Decryption decrypt(mode, key.data(), static_cast<int>(keyBytes), iv.data());
            Bytes cipher(plain.size()), back(plain.size());
            const int expectedBits = static_cast<int>(blocks * 128);
            EXPECT_EQ(encrypt.blockEncrypt(plain.data(), expectedBits, cipher.data()),
                      expectedBits);
            EXPECT_EQ(toHex(cipher), toHex(opensslCrypt(mode, key, iv, plain, true, false)));
            EXPECT_EQ(decrypt.blockDecrypt(cipher.data(), expectedBits, back.data()), expectedBits);
            EXPECT_EQ(back, plain);
        }
    });
}

TEST(OpenSsl, AesPkcs7Padding) {
    onEveryPath([] {
        std::mt19937_64 random(7);
        for (int round = 0; round < 300; ++round) {
            const AES_Mode mode = round % 2 == 0 ? AES_MODE_ECB : AES_MODE_CBC;
            const size_t keyBytes = 16 + 8 * static_cast<size_t>(random() % 3);
            const size_t length = 1 + random() % 300;
            const Bytes key = randomBytes(random, keyBytes), iv = randomBytes(random, 16);
            const Bytes plain = randomBytes(random, length);
            SCOPED_TRACE("mode " + std::to_string(mode) + " length " + std::to_string(length));
            AES_Encryption encrypt(mode, key.data(), static_cast<int>(keyBytes), iv.data());
            AES_Decryption decrypt(mode, key.data(), static_cast<int>(keyBytes), iv.data());
            Bytes cipher(length / 16 * 16 + 16);
            EXPECT_EQ(encrypt.padEncrypt(plain.data(), static_cast<int>(length), cipher.data()),
                      static_cast<int>(cipher.size()));
            EXPECT_EQ(toHex(cipher), toHex(opensslCrypt(mode, key, iv, plain, true, true)));
            Bytes back(cipher.size());
            EXPECT_EQ(
                decrypt.padDecrypt(cipher.data(), static_cast<int>(cipher.size()), back.data()),
                static_cast<int>(length));
            back.resize(length);
            EXPECT_EQ(back, plain);
            // A damaged last block: OpenSSL and we refuse the same ones.
            Bytes damaged = cipher;
            damaged[damaged.size() - 1 - random() % 16] ^=
                static_cast<unsigned char>(1 + random() % 255);
            const bool theyAccept = !opensslCrypt(mode, key, iv, damaged, false, true).empty();
            const int ours =
                decrypt.padDecrypt(damaged.data(), static_cast<int>(damaged.size()), back.data());
            EXPECT_EQ(ours != AES_BAD_DATA, theyAccept);
        }
    });
}

#endif // ZK_HAVE_OPENSSL
