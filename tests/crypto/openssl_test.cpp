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
    EXPECT_EQ(ourDigest<MD5_CTX>(message, 16, random), opensslDigest(EVP_md5(), message));
    EXPECT_EQ(ourDigest<SHA1_CTX>(message, 20, random), opensslDigest(EVP_sha1(), message));
    EXPECT_EQ(ourDigest<SHA256_CTX>(message, 32, random), opensslDigest(EVP_sha256(), message));
    EXPECT_EQ(ourDigest<SHA384_CTX>(message, 48, random), opensslDigest(EVP_sha384(), message));
    EXPECT_EQ(ourDigest<SHA512_CTX>(message, 64, random), opensslDigest(EVP_sha512(), message));
}

const EVP_CIPHER* opensslCipher(AES_Mode mode, size_t keyBytes) {
    const char* kMode[] = {"ecb", "cbc", "cfb1"};
    const std::string name = "aes-" + std::to_string(keyBytes * 8) + "-" + kMode[mode];
    return EVP_get_cipherbyname(name.c_str());
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

TEST(OpenSsl, DigestsOfEveryLengthUpTo1000AndSomeMegabytes) {
    onEveryPath([] {
        std::mt19937_64 random(1000);
        std::vector<size_t> lengths = {size_t(1) << 20, (size_t(3) << 20) + 12345};
        for (size_t length = 0; length <= 1000; ++length)
            lengths.push_back(length);
        for (size_t length : lengths) {
            SCOPED_TRACE(length);
            compareDigests(randomBytes(random, length), random);
            if (HasFailure())
                return;
        }
    });
}

TEST(OpenSsl, AesBlockModesAndPkcs7Padding) {
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
            EXPECT_EQ(cipher, opensslCrypt(mode, key, iv, plain, true, false));
            EXPECT_EQ(decrypt.blockDecrypt(cipher.data(), expectedBits, back.data()), expectedBits);
            EXPECT_EQ(back, plain);
            if (mode == AES_MODE_CFB1)
                continue;
            // Padded: a message of any length, whole blocks out.
            const size_t length = 1 + random() % 300;
            const Bytes message = randomBytes(random, length);
            Bytes padded(length / 16 * 16 + 16);
            EXPECT_EQ(encrypt.padEncrypt(message.data(), int(length), padded.data()),
                      int(padded.size()));
            EXPECT_EQ(padded, opensslCrypt(mode, key, iv, message, true, true));
            back.resize(padded.size());
            EXPECT_EQ(decrypt.padDecrypt(padded.data(), int(padded.size()), back.data()),
                      int(length));
            EXPECT_EQ(Bytes(back.begin(), back.begin() + long(length)), message);
            // A damaged last block: OpenSSL and we refuse the same ones.
            padded[padded.size() - 1 - random() % 16] ^=
                static_cast<unsigned char>(1 + random() % 255);
            const bool theyAccept = !opensslCrypt(mode, key, iv, padded, false, true).empty();
            const int ours = decrypt.padDecrypt(padded.data(), int(padded.size()), back.data());
            EXPECT_EQ(ours != AES_BAD_DATA, theyAccept);
        }
    });
}

#endif // ZK_HAVE_OPENSSL
