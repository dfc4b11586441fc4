// MD5_CTX: RFC 1321's four rounds of sixteen steps over 64-byte blocks.
#include "zkcommon/crypto/md5.h"

#include "crypto/cryptoimpl.h"

#include <cstring>

namespace ZkCommonNS {

namespace {

using detail::loadLE32;
using detail::rotl32;

// G is written as a sum of disjoint terms: (b & d) and (c & ~d) never share a bit, so the two
// halves can be computed side by side.
#define ZK_MD5_STEP(f, a, b, c, d, x, t, s)                                                        \
    a += f(b, c, d) + (x) + (t);                                                                   \
    a = rotl32(a, s) + (b)
#define ZK_MD5_F(b, c, d) ((d) ^ ((b) & ((c) ^ (d))))
#define ZK_MD5_G(b, c, d) (((b) & (d)) + ((c) & ~(d)))
#define ZK_MD5_H(b, c, d) ((b) ^ (c) ^ (d))
#define ZK_MD5_I(b, c, d) ((c) ^ ((b) | ~(d)))

void md5Blocks(std::uint32_t state[4], const unsigned char* data, std::size_t blocks) noexcept {
    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3];
    for (; blocks > 0; --blocks, data += 64) {
        std::uint32_t x[16];
        for (int i = 0; i < 16; ++i)
            x[i] = loadLE32(data + 4 * i);
        const std::uint32_t a0 = a, b0 = b, c0 = c, d0 = d;

        ZK_MD5_STEP(ZK_MD5_F, a, b, c, d, x[0], 0xd76aa478, 7);
        ZK_MD5_STEP(ZK_MD5_F, d, a, b, c, x[1], 0xe8c7b756, 12);
        ZK_MD5_STEP(ZK_MD5_F, c, d, a, b, x[2], 0x242070db, 17);
        ZK_MD5_STEP(ZK_MD5_F, b, c, d, a, x[3], 0xc1bdceee, 22);
        ZK_MD5_STEP(ZK_MD5_F, a, b, c, d, x[4], 0xf57c0faf, 7);
        ZK_MD5_STEP(ZK_MD5_F, d, a, b, c, x[5], 0x4787c62a, 12);
        ZK_MD5_STEP(ZK_MD5_F, c, d, a, b, x[6], 0xa8304613, 17);
        ZK_MD5_STEP(ZK_MD5_F, b, c, d, a, x[7], 0xfd469501, 22);
        ZK_MD5_STEP(ZK_MD5_F, a, b, c, d, x[8], 0x698098d8, 7);
        ZK_MD5_STEP(ZK_MD5_F, d, a, b, c, x[9], 0x8b44f7af, 12);
        ZK_MD5_STEP(ZK_MD5_F, c, d, a, b, x[10], 0xffff5bb1, 17);
        ZK_MD5_STEP(ZK_MD5_F, b, c, d, a, x[11], 0x895cd7be, 22);
        ZK_MD5_STEP(ZK_MD5_F, a, b, c, d, x[12], 0x6b901122, 7);
        ZK_MD5_STEP(ZK_MD5_F, d, a, b, c, x[13], 0xfd987193, 12);
        ZK_MD5_STEP(ZK_MD5_F, c, d, a, b, x[14], 0xa679438e, 17);
        ZK_MD5_STEP(ZK_MD5_F, b, c, d, a, x[15], 0x49b40821, 22);

        ZK_MD5_STEP(ZK_MD5_G, a, b, c, d, x[1], 0xf61e2562, 5);
        ZK_MD5_STEP(ZK_MD5_G, d, a, b, c, x[6], 0xc040b340, 9);
        ZK_MD5_STEP(ZK_MD5_G, c, d, a, b, x[11], 0x265e5a51, 14);
        ZK_MD5_STEP(ZK_MD5_G, b, c, d, a, x[0], 0xe9b6c7aa, 20);
        ZK_MD5_STEP(ZK_MD5_G, a, b, c, d, x[5], 0xd62f105d, 5);
        ZK_MD5_STEP(ZK_MD5_G, d, a, b, c, x[10], 0x02441453, 9);
        ZK_MD5_STEP(ZK_MD5_G, c, d, a, b, x[15], 0xd8a1e681, 14);
        ZK_MD5_STEP(ZK_MD5_G, b, c, d, a, x[4], 0xe7d3fbc8, 20);
        ZK_MD5_STEP(ZK_MD5_G, a, b, c, d, x[9], 0x21e1cde6, 5);
        ZK_MD5_STEP(ZK_MD5_G, d, a, b, c, x[14], 0xc33707d6, 9);
        ZK_MD5_STEP(ZK_MD5_G, c, d, a, b, x[3], 0xf4d50d87, 14);
        ZK_MD5_STEP(ZK_MD5_G, b, c, d, a, x[8], 0x455a14ed, 20);
        ZK_MD5_STEP(ZK_MD5_G, a, b, c, d, x[13], 0xa9e3e905, 5);
        ZK_MD5_STEP(ZK_MD5_G, d, a, b, c, x[2], 0xfcefa3f8, 9);
        ZK_MD5_STEP(ZK_MD5_G, c, d, a, b, x[7], 0x676f02d9, 14);
        ZK_MD5_STEP(ZK_MD5_G, b, c, d, a, x[12], 0x8d2a4c8a, 20);

        ZK_MD5_STEP(ZK_MD5_H, a, b, c, d, x[5], 0xfffa3942, 4);
        ZK_MD5_STEP(ZK_MD5_H, d, a, b, c, x[8], 0x8771f681, 11);
        ZK_MD5_STEP(ZK_MD5_H, c, d, a, b, x[11], 0x6d9d6122, 16);
        ZK_MD5_STEP(ZK_MD5_H, b, c, d, a, x[14], 0xfde5380c, 23);
        ZK_MD5_STEP(ZK_MD5_H, a, b, c, d, x[1], 0xa4beea44, 4);
        ZK_MD5_STEP(ZK_MD5_H, d, a, b, c, x[4], 0x4bdecfa9, 11);
        ZK_MD5_STEP(ZK_MD5_H, c, d, a, b, x[7], 0xf6bb4b60, 16);
        ZK_MD5_STEP(ZK_MD5_H, b, c, d, a, x[10], 0xbebfbc70, 23);
        ZK_MD5_STEP(ZK_MD5_H, a, b, c, d, x[13], 0x289b7ec6, 4);
        ZK_MD5_STEP(ZK_MD5_H, d, a, b, c, x[0], 0xeaa127fa, 11);
        ZK_MD5_STEP(ZK_MD5_H, c, d, a, b, x[3], 0xd4ef3085, 16);
        ZK_MD5_STEP(ZK_MD5_H, b, c, d, a, x[6], 0x04881d05, 23);
        ZK_MD5_STEP(ZK_MD5_H, a, b, c, d, x[9], 0xd9d4d039, 4);
        ZK_MD5_STEP(ZK_MD5_H, d, a, b, c, x[12], 0xe6db99e5, 11);
        ZK_MD5_STEP(ZK_MD5_H, c, d, a, b, x[15], 0x1fa27cf8, 16);
        ZK_MD5_STEP(ZK_MD5_H, b, c, d, a, x[2], 0xc4ac5665, 23);

        ZK_MD5_STEP(ZK_MD5_I, a, b, c, d, x[0], 0xf4292244, 6);
        ZK_MD5_STEP(ZK_MD5_I, d, a, b, c, x[7], 0x432aff97, 10);
        ZK_MD5_STEP(ZK_MD5_I, c, d, a, b, x[14], 0xab9423a7, 15);
        ZK_MD5_STEP(ZK_MD5_I, b, c, d, a, x[5], 0xfc93a039, 21);
        ZK_MD5_STEP(ZK_MD5_I, a, b, c, d, x[12], 0x655b59c3, 6);
        ZK_MD5_STEP(ZK_MD5_I, d, a, b, c, x[3], 0x8f0ccc92, 10);
        ZK_MD5_STEP(ZK_MD5_I, c, d, a, b, x[10], 0xffeff47d, 15);
        ZK_MD5_STEP(ZK_MD5_I, b, c, d, a, x[1], 0x85845dd1, 21);
        ZK_MD5_STEP(ZK_MD5_I, a, b, c, d, x[8], 0x6fa87e4f, 6);
        ZK_MD5_STEP(ZK_MD5_I, d, a, b, c, x[15], 0xfe2ce6e0, 10);
        ZK_MD5_STEP(ZK_MD5_I, c, d, a, b, x[6], 0xa3014314, 15);
        ZK_MD5_STEP(ZK_MD5_I, b, c, d, a, x[13], 0x4e0811a1, 21);
        ZK_MD5_STEP(ZK_MD5_I, a, b, c, d, x[4], 0xf7537e82, 6);
        ZK_MD5_STEP(ZK_MD5_I, d, a, b, c, x[11], 0xbd3af235, 10);
        ZK_MD5_STEP(ZK_MD5_I, c, d, a, b, x[2], 0x2ad7d2bb, 15);
        ZK_MD5_STEP(ZK_MD5_I, b, c, d, a, x[9], 0xeb86d391, 21);

        a += a0;
        b += b0;
        c += c0;
        d += d0;
    }
    state[0] = a;
    state[1] = b;
    state[2] = c;
    state[3] = d;
}

#undef ZK_MD5_STEP
#undef ZK_MD5_F
#undef ZK_MD5_G
#undef ZK_MD5_H
#undef ZK_MD5_I

const std::uint32_t kInitial[4] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476};

} // namespace

MD5_CTX::MD5_CTX() noexcept : m_length(0), m_buffer() {
    std::memcpy(m_state, kInitial, sizeof m_state);
}

void MD5_CTX::Update(const unsigned char* data, unsigned long long length) noexcept {
    if (data == nullptr || length == 0)
        return;
    detail::absorb<64>(m_buffer, m_length, data, length,
                       [this](const unsigned char* blocks, std::size_t count) {
                           md5Blocks(m_state, blocks, count);
                       });
}

void MD5_CTX::Final(unsigned char* digest) noexcept {
    // RFC 1321 3.1-3.2: a 1 bit, zeros to 56 mod 64, then the bit count, low byte first.
    const std::uint64_t bits = m_length << 3;
    std::size_t used = static_cast<std::size_t>(m_length & 63);
    m_buffer[used++] = 0x80;
    if (used > 56) {
        std::memset(m_buffer + used, 0, 64 - used);
        md5Blocks(m_state, m_buffer, 1);
        used = 0;
    }
    std::memset(m_buffer + used, 0, 56 - used);
    detail::storeLE32(m_buffer + 56, static_cast<std::uint32_t>(bits));
    detail::storeLE32(m_buffer + 60, static_cast<std::uint32_t>(bits >> 32));
    md5Blocks(m_state, m_buffer, 1);
    if (digest != nullptr)
        for (int i = 0; i < 4; ++i)
            detail::storeLE32(digest + 4 * i, m_state[i]);
    *this = MD5_CTX();
}

} // namespace ZkCommonNS
