// SHA256_CTX: FIPS 180-4's SHA-256, with the SHA extensions where the processor has them.
#include "zkcommon/crypto/sha256.h"

#include "crypto/cryptoimpl.h"

#include <cstring>

namespace ZkCommonNS {

namespace detail {

// FIPS 180-4 4.2.2; the SHA extension code reads them four at a time.
alignas(16) extern const std::uint32_t kSha256Constants[64] = {
    0x428a2f98, 0x71374491, 0xb5c0fbcf, 0xe9b5dba5, 0x3956c25b, 0x59f111f1, 0x923f82a4, 0xab1c5ed5,
    0xd807aa98, 0x12835b01, 0x243185be, 0x550c7dc3, 0x72be5d74, 0x80deb1fe, 0x9bdc06a7, 0xc19bf174,
    0xe49b69c1, 0xefbe4786, 0x0fc19dc6, 0x240ca1cc, 0x2de92c6f, 0x4a7484aa, 0x5cb0a9dc, 0x76f988da,
    0x983e5152, 0xa831c66d, 0xb00327c8, 0xbf597fc7, 0xc6e00bf3, 0xd5a79147, 0x06ca6351, 0x14292967,
    0x27b70a85, 0x2e1b2138, 0x4d2c6dfc, 0x53380d13, 0x650a7354, 0x766a0abb, 0x81c2c92e, 0x92722c85,
    0xa2bfe8a1, 0xa81a664b, 0xc24b8b70, 0xc76c51a3, 0xd192e819, 0xd6990624, 0xf40e3585, 0x106aa070,
    0x19a4c116, 0x1e376c08, 0x2748774c, 0x34b0bcb5, 0x391c0cb3, 0x4ed8aa4a, 0x5b9cca4f, 0x682e6ff3,
    0x748f82ee, 0x78a5636f, 0x84c87814, 0x8cc70208, 0x90befffa, 0xa4506ceb, 0xbef9a3f7, 0xc67178f2};

} // namespace detail

namespace {

using detail::kSha256Constants;
using detail::loadBE32;
using detail::rotr32;

inline std::uint32_t bigSigma0(std::uint32_t x) noexcept {
    return rotr32(x, 2) ^ rotr32(x, 13) ^ rotr32(x, 22);
}
inline std::uint32_t bigSigma1(std::uint32_t x) noexcept {
    return rotr32(x, 6) ^ rotr32(x, 11) ^ rotr32(x, 25);
}
inline std::uint32_t smallSigma0(std::uint32_t x) noexcept {
    return rotr32(x, 7) ^ rotr32(x, 18) ^ (x >> 3);
}
inline std::uint32_t smallSigma1(std::uint32_t x) noexcept {
    return rotr32(x, 17) ^ rotr32(x, 19) ^ (x >> 10);
}

// One round, with the eight working variables renamed instead of moved: the caller rotates the
// argument order. `wk` is the schedule word plus the round constant.
#define ZK_SHA256_ROUND(a, b, c, d, e, f, g, h, wk)                                                \
    do {                                                                                           \
        const std::uint32_t t1 = h + (wk) + bigSigma1(e) + (g ^ (e & (f ^ g)));                    \
        const std::uint32_t t2 = bigSigma0(a) + ((a & b) | (c & (a | b)));                         \
        d += t1;                                                                                   \
        h = t1 + t2;                                                                               \
    } while (0)

void sha256BlocksPortable(std::uint32_t state[8], const unsigned char* data,
                          std::size_t blocks) noexcept {
    for (; blocks > 0; --blocks, data += 64) {
        // The whole schedule plus the constants first: the rounds' critical path then holds only
        // their own arithmetic, and the schedule's work overlaps it.
        std::uint32_t w[64];
#pragma GCC unroll 16
        for (int i = 0; i < 16; ++i)
            w[i] = loadBE32(data + 4 * i);
#pragma GCC unroll 48
        for (int i = 16; i < 64; ++i)
            w[i] = smallSigma1(w[i - 2]) + w[i - 7] + smallSigma0(w[i - 15]) + w[i - 16];
#pragma GCC unroll 64
        for (int i = 0; i < 64; ++i)
            w[i] += kSha256Constants[i];
        std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
        std::uint32_t e = state[4], f = state[5], g = state[6], h = state[7];
#pragma GCC unroll 8
        for (int t = 0; t < 64; t += 8) {
            ZK_SHA256_ROUND(a, b, c, d, e, f, g, h, w[t]);
            ZK_SHA256_ROUND(h, a, b, c, d, e, f, g, w[t + 1]);
            ZK_SHA256_ROUND(g, h, a, b, c, d, e, f, w[t + 2]);
            ZK_SHA256_ROUND(f, g, h, a, b, c, d, e, w[t + 3]);
            ZK_SHA256_ROUND(e, f, g, h, a, b, c, d, w[t + 4]);
            ZK_SHA256_ROUND(d, e, f, g, h, a, b, c, w[t + 5]);
            ZK_SHA256_ROUND(c, d, e, f, g, h, a, b, w[t + 6]);
            ZK_SHA256_ROUND(b, c, d, e, f, g, h, a, w[t + 7]);
        }
        state[0] += a, state[1] += b, state[2] += c, state[3] += d;
        state[4] += e, state[5] += f, state[6] += g, state[7] += h;
    }
}

#undef ZK_SHA256_ROUND

const std::uint32_t kInitial[8] = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                   0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};

} // namespace

SHA256_CTX::SHA256_CTX() noexcept : m_length(0), m_buffer() {
    std::memcpy(m_state, kInitial, sizeof m_state);
}

void SHA256_CTX::Transform(const unsigned char* data, std::size_t blocks) noexcept {
#if ZK_CRYPTO_X86
    if (detail::useShaExtensions())
        return detail::sha256BlocksShaNi(m_state, data, blocks);
#endif
    sha256BlocksPortable(m_state, data, blocks);
}

void SHA256_CTX::Update(const unsigned char* data, unsigned long long length) noexcept {
    if (data == nullptr || length == 0)
        return;
    detail::absorb<64>(
        m_buffer, m_length, data, length,
        [this](const unsigned char* blocks, std::size_t count) { Transform(blocks, count); });
}

void SHA256_CTX::Last() noexcept {
    // FIPS 180-4 5.1.1: a 1 bit, zeros to 56 mod 64, then the bit count, high byte first.
    std::size_t used = static_cast<std::size_t>(m_length & 63);
    m_buffer[used++] = 0x80;
    if (used > 56) {
        std::memset(m_buffer + used, 0, 64 - used);
        Transform(m_buffer, 1);
        used = 0;
    }
    std::memset(m_buffer + used, 0, 56 - used);
    detail::storeBE64(m_buffer + 56, m_length << 3);
    Transform(m_buffer, 1);
}

void SHA256_CTX::Final(unsigned char* digest) noexcept {
    Last();
    if (digest != nullptr)
        for (int i = 0; i < 8; ++i)
            detail::storeBE32(digest + 4 * i, m_state[i]);
    *this = SHA256_CTX();
}

} // namespace ZkCommonNS
