// SHA1_CTX: FIPS 180-4's SHA-1, with the SHA extensions where the processor has them.
#include "zkcommon/crypto/sha1.h"

#include "crypto/cryptoimpl.h"

#include <cstring>

namespace ZkCommonNS {

namespace {

using detail::loadBE32;
using detail::rotl32;

// FIPS 180-4 6.1.2, with the schedule kept in a 16-word ring.
void sha1BlocksPortable(std::uint32_t state[5], const unsigned char* data,
                        std::size_t blocks) noexcept {
    std::uint32_t a = state[0], b = state[1], c = state[2], d = state[3], e = state[4];
    for (; blocks > 0; --blocks, data += 64) {
        std::uint32_t w[16];
        for (int i = 0; i < 16; ++i)
            w[i] = loadBE32(data + 4 * i);
        const std::uint32_t a0 = a, b0 = b, c0 = c, d0 = d, e0 = e;
        auto word = [&w](int t) {
            if (t < 16)
                return w[t];
            const std::uint32_t x =
                w[(t - 3) & 15] ^ w[(t - 8) & 15] ^ w[(t - 14) & 15] ^ w[t & 15];
            return w[t & 15] = rotl32(x, 1);
        };
        int t = 0;
        for (; t < 20; ++t) {
            const std::uint32_t f = d ^ (b & (c ^ d));
            const std::uint32_t next = rotl32(a, 5) + f + e + 0x5a827999 + word(t);
            e = d, d = c, c = rotl32(b, 30), b = a, a = next;
        }
        for (; t < 40; ++t) {
            const std::uint32_t next = rotl32(a, 5) + (b ^ c ^ d) + e + 0x6ed9eba1 + word(t);
            e = d, d = c, c = rotl32(b, 30), b = a, a = next;
        }
        for (; t < 60; ++t) {
            const std::uint32_t f = (b & c) | (d & (b | c));
            const std::uint32_t next = rotl32(a, 5) + f + e + 0x8f1bbcdc + word(t);
            e = d, d = c, c = rotl32(b, 30), b = a, a = next;
        }
        for (; t < 80; ++t) {
            const std::uint32_t next = rotl32(a, 5) + (b ^ c ^ d) + e + 0xca62c1d6 + word(t);
            e = d, d = c, c = rotl32(b, 30), b = a, a = next;
        }
        a += a0, b += b0, c += c0, d += d0, e += e0;
    }
    state[0] = a, state[1] = b, state[2] = c, state[3] = d, state[4] = e;
}

void sha1Blocks(std::uint32_t state[5], const unsigned char* data, std::size_t blocks) noexcept {
#if ZK_CRYPTO_X86
    if (detail::useShaExtensions())
        return detail::sha1BlocksShaNi(state, data, blocks);
#endif
    sha1BlocksPortable(state, data, blocks);
}

const std::uint32_t kInitial[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};

// The message may hold at most 2^64 - 1 bits, that is fewer than 2^61 bytes.
constexpr std::uint64_t kMaxBytes = (std::uint64_t(1) << 61) - 1;

} // namespace

SHA1_CTX::SHA1_CTX() noexcept : m_length(0), m_status(SHA1_SUCCESS), m_computed(false), m_buffer() {
    std::memcpy(m_state, kInitial, sizeof m_state);
}

int SHA1_CTX::Update(const unsigned char* data, unsigned int length) noexcept {
    if (m_status != SHA1_SUCCESS)
        return m_status;
    if (m_computed)
        return m_status = SHA1_STATE_ERROR;
    if (data == nullptr || length == 0)
        return SHA1_SUCCESS;
    if (length > kMaxBytes - m_length)
        return m_status = SHA1_INPUT_TOO_LONG;
    detail::absorb<64>(m_buffer, m_length, data, length,
                       [this](const unsigned char* blocks, std::size_t count) {
                           sha1Blocks(m_state, blocks, count);
                       });
    return SHA1_SUCCESS;
}

int SHA1_CTX::Final(unsigned char* digest) noexcept {
    if (m_status != SHA1_SUCCESS)
        return m_status;
    if (!m_computed) {
        // FIPS 180-4 5.1.1: a 1 bit, zeros to 56 mod 64, then the bit count, high byte first.
        std::size_t used = static_cast<std::size_t>(m_length & 63);
        m_buffer[used++] = 0x80;
        if (used > 56) {
            std::memset(m_buffer + used, 0, 64 - used);
            sha1Blocks(m_state, m_buffer, 1);
            used = 0;
        }
        std::memset(m_buffer + used, 0, 56 - used);
        detail::storeBE64(m_buffer + 56, m_length << 3);
        sha1Blocks(m_state, m_buffer, 1);
        std::memset(m_buffer, 0, sizeof m_buffer);
        m_computed = true;
    }
    if (digest != nullptr)
        for (int i = 0; i < 5; ++i)
            detail::storeBE32(digest + 4 * i, m_state[i]);
    return SHA1_SUCCESS;
}

} // namespace ZkCommonNS
