// Known answers of the digests (RFC 1321's suite, FIPS 180's examples, from a data file) on both
// code paths and in pieces of every awkward size, forks by copying, the state after Final, and
// SHA-1's result codes.
#include "cryptotest.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <zkcommon/crypto/md5.h>
#include <zkcommon/crypto/sha1.h>
#include <zkcommon/crypto/sha256.h>
#include <zkcommon/crypto/sha512.h>

using namespace ZkCommonNS;
using namespace zkcryptotest;

namespace {

const unsigned char* bytes(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The hex digest of `message` repeated `repeat` times, fed in pieces of `piece` bytes (0: whole).
template <class Context, int Length>
std::string digestOf(const std::string& message, int repeat, size_t piece) {
    Context ctx;
    const size_t step = piece == 0 ? message.size() + 1 : piece;
    for (int r = 0; r < repeat; ++r)
        for (size_t at = 0; at < message.size(); at += step)
            ctx.Update(bytes(message) + at,
                       static_cast<unsigned>(std::min(step, message.size() - at)));
    unsigned char out[Length];
    ctx.Final(out);
    return toHex(out, Length);
}

using DigestFunction = std::string (*)(const std::string&, int, size_t);
const std::map<std::string, DigestFunction> kDigests = {
    {"md5", digestOf<MD5_CTX, 16>},       {"sha1", digestOf<SHA1_CTX, 20>},
    {"sha256", digestOf<SHA256_CTX, 32>}, {"sha384", digestOf<SHA384_CTX, 48>},
    {"sha512", digestOf<SHA512_CTX, 64>},
};

std::string digest(const std::string& algorithm, const std::string& message) {
    return kDigests.at(algorithm)(message, 1, 0);
}

} // namespace

TEST(Digest, StandardVectorsWholeAndInPieces) {
    const auto vectors = readVectors("digests.txt", 4); // algorithm, repeat, digest, message
    ASSERT_EQ(vectors.size(), 28u);
    onEveryPath([&] {
        for (const auto& v : vectors) {
            const int repeat = std::stoi(v[1]);
            SCOPED_TRACE(v[0] + " " + v[3].substr(0, 20) + " x" + v[1]);
            EXPECT_EQ(kDigests.at(v[0])(v[3], repeat, 0), v[2]);
            // Every way the buffered tail can meet a block boundary.
            for (size_t piece : {1, 7, 63, 65, 127})
                EXPECT_TRUE(repeat != 1 || kDigests.at(v[0])(v[3], 1, piece) == v[2]) << piece;
        }
    });
}

TEST(Digest, CopyForksAndFinalStartsOver) {
    SHA256_CTX prefix;
    prefix.Update(bytes("ab"), 2);
    SHA256_CTX fork = prefix;
    prefix.Update(bytes("c"), 1);
    fork.Update(bytes("d"), 1);
    unsigned char a[32], b[32];
    prefix.Final(a);
    fork.Final(b);
    EXPECT_EQ(toHex(a, 32), digest("sha256", "abc"));
    EXPECT_EQ(toHex(b, 32), digest("sha256", "abd"));
    // Final starts over; a null pointer adds nothing.
    MD5_CTX md5;
    SHA384_CTX sha384;
    unsigned char out[48];
    md5.Update(bytes("abc"), 3);
    md5.Final(out);
    md5.Update(nullptr, 100);
    md5.Final(out);
    EXPECT_EQ(toHex(out, 16), digest("md5", ""));
    sha384.Update(bytes("abc"), 3);
    sha384.Final(nullptr);
    sha384.Update(bytes("abc"), 3);
    sha384.Final(out);
    EXPECT_EQ(toHex(out, 48), digest("sha384", "abc"));
}

TEST(Sha1, FinalRepeatsAndUpdateAfterFinalIsRemembered) {
    SHA1_CTX ctx;
    ASSERT_EQ(ctx.Update(nullptr, 5), SHA1_SUCCESS);
    ASSERT_EQ(ctx.Update(bytes("abc"), 3), SHA1_SUCCESS);
    unsigned char first[20], second[20] = {};
    ASSERT_EQ(ctx.Final(first), SHA1_SUCCESS);
    ASSERT_EQ(ctx.Final(second), SHA1_SUCCESS);
    EXPECT_EQ(toHex(second, 20), toHex(first, 20));

    EXPECT_EQ(ctx.Update(bytes("abc"), 3), SHA1_STATE_ERROR);
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
