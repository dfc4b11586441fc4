// Known answers of the digests (RFC 1321's suite, FIPS 180's examples) on both code paths, forks
// by copying, the state after Final, and SHA-1's result codes.
#include "cryptotest.h"

#include <gtest/gtest.h>
#include <string>
#include <zkcommon/crypto/md5.h>
#include <zkcommon/crypto/sha1.h>
#include <zkcommon/crypto/sha256.h>
#include <zkcommon/crypto/sha512.h>

using namespace ZkCommonNS;
using namespace zkcryptotest;

namespace {

enum class Algorithm { MD5, SHA1, SHA256, SHA384, SHA512 };

/// Feeds `message` to a fresh context of `algorithm`, `repeat` times, in pieces of `piece`
/// bytes; returns the hex digest.
std::string digest(Algorithm algorithm, const std::string& message, int repeat = 1,
                   size_t piece = 0) {
    const auto* data = reinterpret_cast<const unsigned char*>(message.data());
    unsigned char out[64] = {};
    auto feed = [&](auto&& update) {
        for (int r = 0; r < repeat; ++r) {
            const size_t step = piece == 0 ? message.size() + 1 : piece;
            for (size_t at = 0; at < message.size(); at += step)
                update(data + at, std::min(step, message.size() - at));
        }
    };
    switch (algorithm) {
    case Algorithm::MD5: {
        MD5_CTX ctx;
        feed([&](const unsigned char* p, size_t n) { ctx.Update(p, n); });
        ctx.Final(out);
        return toHex(out, 16);
    }
    case Algorithm::SHA1: {
        SHA1_CTX ctx;
        feed([&](const unsigned char* p, size_t n) {
            EXPECT_EQ(ctx.Update(p, static_cast<unsigned>(n)), SHA1_SUCCESS);
        });
        EXPECT_EQ(ctx.Final(out), SHA1_SUCCESS);
        return toHex(out, 20);
    }
    case Algorithm::SHA256: {
        SHA256_CTX ctx;
        feed([&](const unsigned char* p, size_t n) { ctx.Update(p, n); });
        ctx.Final(out);
        return toHex(out, 32);
    }
    case Algorithm::SHA384: {
        SHA384_CTX ctx;
        feed([&](const unsigned char* p, size_t n) { ctx.Update(p, n); });
        ctx.Final(out);
        return toHex(out, 48);
    }
    case Algorithm::SHA512: {
        SHA512_CTX ctx;
        feed([&](const unsigned char* p, size_t n) { ctx.Update(p, n); });
        ctx.Final(out);
        return toHex(out, 64);
    }
    }
    return "";
}

struct Vector {
    Algorithm algorithm;
    const char* message;
    int repeat;
    const char* hex;
};

const char kM448[] = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
const char kM896[] = "abcdefghbcdefghicdefghijdefghijkefghijklfghijklmghijklmnhijklmnoijklmnopjklmn"
                     "opqklmnopqrlmnopqrsmnopqrstnopqrstu";

// clang-format off
const Vector kVectors[] = {
    // RFC 1321 A.5
    {Algorithm::MD5, "", 1, "d41d8cd98f00b204e9800998ecf8427e"},
    {Algorithm::MD5, "a", 1, "0cc175b9c0f1b6a831c399e269772661"},
    {Algorithm::MD5, "abc", 1, "900150983cd24fb0d6963f7d28e17f72"},
    {Algorithm::MD5, "message digest", 1, "f96b697d7cb7938d525a2f31aaf161d0"},
    {Algorithm::MD5, "abcdefghijklmnopqrstuvwxyz", 1, "c3fcd3d76192e4007dfb496cca67e13b"},
    {Algorithm::MD5, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", 1, "d174ab98d277d9f5a5611c2c9f419d9f"},
    {Algorithm::MD5, "1234567890", 8, "57edf4a22be3c955ac49da2e2107b67a"},
    {Algorithm::MD5, "a", 1000000, "7707d6ae4e027c70eea2a935c2296f21"},
    // FIPS 180 examples: empty, "abc", 448 and 896 bits, a million "a"
    {Algorithm::SHA1, "", 1, "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
    {Algorithm::SHA1, "abc", 1, "a9993e364706816aba3e25717850c26c9cd0d89d"},
    {Algorithm::SHA1, kM448, 1, "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
    {Algorithm::SHA1, kM896, 1, "a49b2446a02c645bf419f995b67091253a04a259"},
    {Algorithm::SHA1, "a", 1000000, "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
    {Algorithm::SHA256, "", 1, "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
    {Algorithm::SHA256, "abc", 1, "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
    {Algorithm::SHA256, kM448, 1, "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
    {Algorithm::SHA256, kM896, 1, "cf5b16a778af8380036ce59e7b0492370b249b11e8f07a51afac45037afee9d1"},
    {Algorithm::SHA256, "a", 1000000, "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
    {Algorithm::SHA384, "", 1, "38b060a751ac96384cd9327eb1b1e36a21fdb71114be07434c0cc7bf63f6e1da274edebfe76f65fbd51ad2f14898b95b"},
    {Algorithm::SHA384, "abc", 1, "cb00753f45a35e8bb5a03d699ac65007272c32ab0eded1631a8b605a43ff5bed8086072ba1e7cc2358baeca134c825a7"},
    {Algorithm::SHA384, kM448, 1, "3391fdddfc8dc7393707a65b1b4709397cf8b1d162af05abfe8f450de5f36bc6b0455a8520bc4e6f5fe95b1fe3c8452b"},
    {Algorithm::SHA384, kM896, 1, "09330c33f71147e83d192fc782cd1b4753111b173b3b05d22fa08086e3b0f712fcc7c71a557e2db966c3e9fa91746039"},
    {Algorithm::SHA384, "a", 1000000, "9d0e1809716474cb086e834e310a4a1ced149e9c00f248527972cec5704c2a5b07b8b3dc38ecc4ebae97ddd87f3d8985"},
    {Algorithm::SHA512, "", 1, "cf83e1357eefb8bdf1542850d66d8007d620e4050b5715dc83f4a921d36ce9ce47d0d13c5d85f2b0ff8318d2877eec2f63b931bd47417a81a538327af927da3e"},
    {Algorithm::SHA512, "abc", 1, "ddaf35a193617abacc417349ae20413112e6fa4e89a97ea20a9eeee64b55d39a2192992a274fc1a836ba3c23a3feebbd454d4423643ce80e2a9ac94fa54ca49f"},
    {Algorithm::SHA512, kM448, 1, "204a8fc6dda82f0a0ced7beb8e08a41657c16ef468b228a8279be331a703c33596fd15c13b1b07f9aa1d3bea57789ca031ad85c7a71dd70354ec631238ca3445"},
    {Algorithm::SHA512, kM896, 1, "8e959b75dae313da8cf4f72814fc143f8f7779c6eb9f7fa17299aeadb6889018501d289e4900f7e4331b99dec4b5433ac7d329eeb6dd26545e96e55b874be909"},
    {Algorithm::SHA512, "a", 1000000, "e718483d0ce769644e2e42c7bc15b4638e1f98b13b2044285632a803afa973ebde0ff244877ea60a4cb0432ce577c31beb009c5c2c49aa2e4eadb217ad8cc09b"},
};
// clang-format on

} // namespace

TEST(Digest, StandardVectors) {
    onEveryPath([] {
        for (const Vector& v : kVectors) {
            SCOPED_TRACE(std::string(v.message).substr(0, 20) + " x" + std::to_string(v.repeat));
            EXPECT_EQ(digest(v.algorithm, v.message, v.repeat), v.hex);
        }
    });
}

TEST(Digest, StandardVectorsInOddPieces) {
    // The 896-bit message, a byte and then 7, 63, 65 and 127 bytes at a time: every way the
    // buffered tail can meet a block boundary.
    onEveryPath([] {
        for (const Vector& v : kVectors) {
            if (v.repeat != 1)
                continue;
            for (size_t piece : {1, 7, 63, 65, 127}) {
                SCOPED_TRACE(std::string(v.message).substr(0, 20) + " by " + std::to_string(piece));
                EXPECT_EQ(digest(v.algorithm, v.message, 1, piece), v.hex);
            }
        }
    });
}

TEST(Digest, CopyForksTheComputation) {
    SHA256_CTX prefix;
    prefix.Update(reinterpret_cast<const unsigned char*>("ab"), 2);
    SHA256_CTX fork = prefix;
    prefix.Update(reinterpret_cast<const unsigned char*>("c"), 1);
    fork.Update(reinterpret_cast<const unsigned char*>("d"), 1);
    unsigned char a[32], b[32];
    prefix.Final(a);
    fork.Final(b);
    EXPECT_EQ(toHex(a, 32), digest(Algorithm::SHA256, "abc"));
    EXPECT_EQ(toHex(b, 32), digest(Algorithm::SHA256, "abd"));

    SHA384_CTX one;
    one.Update(reinterpret_cast<const unsigned char*>("a"), 1);
    SHA384_CTX two = one;
    two.Update(reinterpret_cast<const unsigned char*>("bc"), 2);
    unsigned char c[48];
    two.Final(c);
    EXPECT_EQ(toHex(c, 48), digest(Algorithm::SHA384, "abc"));
}

TEST(Digest, FinalStartsOver) {
    MD5_CTX md5;
    SHA256_CTX sha256;
    SHA384_CTX sha384;
    SHA512_CTX sha512;
    unsigned char out[64];
    const auto* abc = reinterpret_cast<const unsigned char*>("abc");
    md5.Update(abc, 3);
    md5.Final(out);
    md5.Final(out);
    EXPECT_EQ(toHex(out, 16), digest(Algorithm::MD5, ""));
    sha256.Update(abc, 3);
    sha256.Final(out);
    sha256.Update(abc, 3);
    sha256.Final(out);
    EXPECT_EQ(toHex(out, 32), digest(Algorithm::SHA256, "abc"));
    sha384.Update(abc, 3);
    sha384.Final(nullptr);
    sha384.Final(out);
    EXPECT_EQ(toHex(out, 48), digest(Algorithm::SHA384, ""));
    sha512.Update(abc, 3);
    sha512.Final(out);
    sha512.Update(abc, 3);
    sha512.Final(out);
    EXPECT_EQ(toHex(out, 64), digest(Algorithm::SHA512, "abc"));
}

TEST(Digest, NullDataAddsNothing) {
    SHA256_CTX ctx;
    ctx.Update(nullptr, 100);
    unsigned char out[32];
    ctx.Final(out);
    EXPECT_EQ(toHex(out, 32), digest(Algorithm::SHA256, ""));
    SHA1_CTX sha1;
    EXPECT_EQ(sha1.Update(nullptr, 5), SHA1_SUCCESS);
    EXPECT_EQ(sha1.Final(out), SHA1_SUCCESS);
    EXPECT_EQ(toHex(out, 20), digest(Algorithm::SHA1, ""));
}

TEST(Sha1, FinalRepeatsAndUpdateAfterFinalIsRemembered) {
    SHA1_CTX ctx;
    const auto* abc = reinterpret_cast<const unsigned char*>("abc");
    ASSERT_EQ(ctx.Update(abc, 3), SHA1_SUCCESS);
    unsigned char first[20], second[20] = {};
    ASSERT_EQ(ctx.Final(first), SHA1_SUCCESS);
    ASSERT_EQ(ctx.Final(second), SHA1_SUCCESS);
    EXPECT_EQ(toHex(second, 20), toHex(first, 20));

    EXPECT_EQ(ctx.Update(abc, 3), SHA1_STATE_ERROR);
    unsigned char untouched[20] = {};
    EXPECT_EQ(ctx.Final(untouched), SHA1_STATE_ERROR);
    EXPECT_EQ(toHex(untouched, 20), std::string(40, '0'));
    EXPECT_EQ(ctx.Update(nullptr, 0), SHA1_STATE_ERROR);
}

namespace {
// Reaches the byte count, which no test could fill in earnest.
class NearlyFullSha1 : public SHA1_CTX {
public:
    explicit NearlyFullSha1(uint64_t length) { m_length = length; }
};
} // namespace

TEST(Sha1, MessageLongerThanTwoToTheSixtyFourBitsIsRefused) {
    const uint64_t maxBytes = (uint64_t(1) << 61) - 1;
    unsigned char data[64] = {};
    NearlyFullSha1 atLimit(maxBytes - 10);
    EXPECT_EQ(atLimit.Update(data, 10), SHA1_SUCCESS);
    EXPECT_EQ(atLimit.Update(data, 1), SHA1_INPUT_TOO_LONG);
    EXPECT_EQ(atLimit.Update(data, 1), SHA1_INPUT_TOO_LONG);
    unsigned char out[20];
    EXPECT_EQ(atLimit.Final(out), SHA1_INPUT_TOO_LONG);
}
