// SHA512_CTX and SHA384_CTX: FIPS 180-4's SHA-512 and its truncation SHA-384.
#include "zkcommon/crypto/sha512.h"

#include "crypto/sha512core.h"

#include <cstring>

namespace ZkCommonNS {

namespace detail {

alignas(16) extern const std::uint64_t kSha512Constants[80] = {
    0x428a2f98d728ae22, 0x7137449123ef65cd, 0xb5c0fbcfec4d3b2f, 0xe9b5dba58189dbbc,
    0x3956c25bf348b538, 0x59f111f1b605d019, 0x923f82a4af194f9b, 0xab1c5ed5da6d8118,
    0xd807aa98a3030242, 0x12835b0145706fbe, 0x243185be4ee4b28c, 0x550c7dc3d5ffb4e2,
    0x72be5d74f27b896f, 0x80deb1fe3b1696b1, 0x9bdc06a725c71235, 0xc19bf174cf692694,
    0xe49b69c19ef14ad2, 0xefbe4786384f25e3, 0x0fc19dc68b8cd5b5, 0x240ca1cc77ac9c65,
    0x2de92c6f592b0275, 0x4a7484aa6ea6e483, 0x5cb0a9dcbd41fbd4, 0x76f988da831153b5,
    0x983e5152ee66dfab, 0xa831c66d2db43210, 0xb00327c898fb213f, 0xbf597fc7beef0ee4,
    0xc6e00bf33da88fc2, 0xd5a79147930aa725, 0x06ca6351e003826f, 0x142929670a0e6e70,
    0x27b70a8546d22ffc, 0x2e1b21385c26c926, 0x4d2c6dfc5ac42aed, 0x53380d139d95b3df,
    0x650a73548baf63de, 0x766a0abb3c77b2a8, 0x81c2c92e47edaee6, 0x92722c851482353b,
    0xa2bfe8a14cf10364, 0xa81a664bbc423001, 0xc24b8b70d0f89791, 0xc76c51a30654be30,
    0xd192e819d6ef5218, 0xd69906245565a910, 0xf40e35855771202a, 0x106aa07032bbd1b8,
    0x19a4c116b8d2d0c8, 0x1e376c085141ab53, 0x2748774cdf8eeb99, 0x34b0bcb5e19b48a8,
    0x391c0cb3c5c95a63, 0x4ed8aa4ae3418acb, 0x5b9cca4f7763e373, 0x682e6ff3d6b2b8a3,
    0x748f82ee5defb2fc, 0x78a5636f43172f60, 0x84c87814a1f0ab72, 0x8cc702081a6439ec,
    0x90befffa23631e28, 0xa4506cebde82bde9, 0xbef9a3f7b2c67915, 0xc67178f2e372532b,
    0xca273eceea26619c, 0xd186b8c721c0c207, 0xeada7dd6cde0eb1e, 0xf57d4f7fee6ed178,
    0x06f067aa72176fba, 0x0a637dc5a2c898a6, 0x113f9804bef90dae, 0x1b710b35131c471b,
    0x28db77f523047d84, 0x32caab7b40c72493, 0x3c9ebe0a15c9bebc, 0x431d67c49c100d4c,
    0x4cc5d4becb3e42b6, 0x597f299cfc657e2a, 0x5fcb6fab3ad6faec, 0x6c44198c4a475817};

} // namespace detail

namespace {

using detail::kSha512Constants;

// The whole compression, with the rounds as a loop of sixteen rather than fully unrolled (which
// the decoders, not the arithmetic, would limit) and the schedule as a window of sixteen words,
// advanced between groups. Instantiated for plain x86-64 and, through the always-inline body, for
// processors with BMI2, whose three-operand rotate saves a copy per rotation.
ZK_SHA512_INLINE void sha512BlocksBody(std::uint64_t state[8], const unsigned char* data,
                                       std::size_t blocks) noexcept {
    for (; blocks > 0; --blocks, data += 128) {
        std::uint64_t w[16];
#pragma GCC unroll 16
        for (int i = 0; i < 16; ++i)
            w[i] = detail::loadBE64(data + 8 * i);
        std::uint64_t a = state[0], b = state[1], c = state[2], d = state[3];
        std::uint64_t e = state[4], f = state[5], g = state[6], h = state[7];
        std::uint64_t p = 0, q = b ^ c;
        for (const std::uint64_t* k = kSha512Constants;; k += 16) {
            ZK_SHA512_FOUR_ROUNDS(a, b, c, d, e, f, g, h, w[0] + k[0], w[1] + k[1], w[2] + k[2],
                                  w[3] + k[3]);
            ZK_SHA512_FOUR_ROUNDS(e, f, g, h, a, b, c, d, w[4] + k[4], w[5] + k[5], w[6] + k[6],
                                  w[7] + k[7]);
            ZK_SHA512_FOUR_ROUNDS(a, b, c, d, e, f, g, h, w[8] + k[8], w[9] + k[9], w[10] + k[10],
                                  w[11] + k[11]);
            ZK_SHA512_FOUR_ROUNDS(e, f, g, h, a, b, c, d, w[12] + k[12], w[13] + k[13],
                                  w[14] + k[14], w[15] + k[15]);
            if (k == kSha512Constants + 64)
                break;
                // W[t] = s1(W[t-2]) + W[t-7] + s0(W[t-15]) + W[t-16], in place: the words of the
                // window already advanced are the newer ones.
#pragma GCC unroll 16
            for (int i = 0; i < 16; ++i)
                w[i] += detail::sha512SmallSigma1(w[(i + 14) & 15]) + w[(i + 9) & 15] +
                        detail::sha512SmallSigma0(w[(i + 1) & 15]);
        }
        state[0] += a, state[1] += b, state[2] += c, state[3] += d;
        state[4] += e, state[5] += f, state[6] += g, state[7] += h;
    }
}

void sha512BlocksPortable(std::uint64_t state[8], const unsigned char* data,
                          std::size_t blocks) noexcept {
    sha512BlocksBody(state, data, blocks);
}

#if ZK_CRYPTO_X86
__attribute__((target("bmi2"))) void
sha512BlocksBmi2(std::uint64_t state[8], const unsigned char* data, std::size_t blocks) noexcept {
    sha512BlocksBody(state, data, blocks);
}
#endif

void sha512Blocks(std::uint64_t state[8], const unsigned char* data, std::size_t blocks) noexcept {
#if ZK_CRYPTO_X86
    if (detail::useAvx2()) {
        const std::size_t pairs = blocks & ~std::size_t(1);
        if (pairs != 0)
            detail::sha512PairsAvx2(state, data, pairs);
        data += pairs * 128;
        blocks -= pairs;
    }
    if (detail::useBmi2())
        return sha512BlocksBmi2(state, data, blocks);
#endif
    sha512BlocksPortable(state, data, blocks);
}

const std::uint64_t kInitial512[8] = {0x6a09e667f3bcc908, 0xbb67ae8584caa73b, 0x3c6ef372fe94f82b,
                                      0xa54ff53a5f1d36f1, 0x510e527fade682d1, 0x9b05688c2b3e6c1f,
                                      0x1f83d9abfb41bd6b, 0x5be0cd19137e2179};
const std::uint64_t kInitial384[8] = {0xcbbb9d5dc1059ed8, 0x629a292a367cd507, 0x9159015a3070dd17,
                                      0x152fecd8f70e5939, 0x67332667ffc00b31, 0x8eb44a8768581511,
                                      0xdb0c2e0d64f98fa7, 0x47b5481dbefa4fa4};

} // namespace

SHA512_CTX::SHA512_CTX() noexcept : SHA512_CTX(kInitial512) {}

SHA512_CTX::SHA512_CTX(const std::uint64_t* initial) noexcept : m_length(0), m_buffer() {
    std::memcpy(m_state, initial, sizeof m_state);
}

void SHA512_CTX::Transform(const unsigned char* data, std::size_t blocks) noexcept {
    sha512Blocks(m_state, data, blocks);
}

void SHA512_CTX::Update(const unsigned char* data, unsigned long long length) noexcept {
    if (data == nullptr || length == 0)
        return;
    detail::absorb<128>(
        m_buffer, m_length, data, length,
        [this](const unsigned char* blocks, std::size_t count) { Transform(blocks, count); });
}

void SHA512_CTX::Last() noexcept {
    // FIPS 180-4 5.1.2: a 1 bit, zeros to 112 mod 128, then the 128-bit bit count. A byte count
    // held in 64 bits gives the count's high word from its top three bits.
    std::size_t used = static_cast<std::size_t>(m_length & 127);
    m_buffer[used++] = 0x80;
    if (used > 112) {
        std::memset(m_buffer + used, 0, 128 - used);
        Transform(m_buffer, 1);
        used = 0;
    }
    std::memset(m_buffer + used, 0, 112 - used);
    detail::storeBE64(m_buffer + 112, m_length >> 61);
    detail::storeBE64(m_buffer + 120, m_length << 3);
    Transform(m_buffer, 1);
}

void SHA512_CTX::emit(unsigned char* digest, int length, const std::uint64_t* initial) noexcept {
    Last();
    if (digest != nullptr) {
        unsigned char full[64];
        for (int i = 0; i < 8; ++i)
            detail::storeBE64(full + 8 * i, m_state[i]);
        std::memcpy(digest, full, static_cast<std::size_t>(length));
    }
    std::memcpy(m_state, initial, sizeof m_state);
    m_length = 0;
    std::memset(m_buffer, 0, sizeof m_buffer);
}

void SHA512_CTX::Final(unsigned char* digest) noexcept {
    emit(digest, kDigestLength, kInitial512);
}

SHA384_CTX::SHA384_CTX() noexcept : SHA512_CTX(kInitial384) {}

void SHA384_CTX::Final(unsigned char* digest) noexcept {
    emit(digest, kDigestLength, kInitial384);
}

} // namespace ZkCommonNS
