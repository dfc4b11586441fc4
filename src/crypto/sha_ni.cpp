// SHA-1 and SHA-256 block functions with the processor's SHA extensions. Only this file is
// compiled for them (through the target attribute on each function), and it is entered only
// after the processor check.
#include "crypto/cryptoimpl.h"

#if ZK_CRYPTO_X86

#include <immintrin.h>

#define ZK_SHA_TARGET __attribute__((target("sha,ssse3,sse4.1")))
#define ZK_SHA_INLINE __attribute__((target("sha,ssse3,sse4.1"), always_inline)) inline

namespace ZkCommonNS {
namespace detail {

alignas(16) extern const std::uint32_t kSha256Constants[64];

namespace {

// Four rounds of SHA-1 on message group G (words 4G to 4G+3), whose registers rotate through
// m0..m3 as m[G % 4]. E0 and E1 alternate between holding E for this group and saving ABCD for
// the next. The schedule runs ahead: SHA1MSG1 on the group before, an XOR on the one two back,
// and SHA1MSG2 finishing the next group.
template <int G>
ZK_SHA_INLINE void sha1Group(__m128i& abcd, __m128i& e0, __m128i& e1, __m128i (&m)[4]) {
    __m128i& cur = m[G % 4];
    __m128i& eNow = (G % 2 == 0) ? e0 : e1;
    __m128i& eNext = (G % 2 == 0) ? e1 : e0;
    if (G == 0)
        eNow = _mm_add_epi32(eNow, cur);
    else
        eNow = _mm_sha1nexte_epu32(eNow, cur);
    eNext = abcd;
    if (G >= 3 && G <= 18)
        m[(G + 1) % 4] = _mm_sha1msg2_epu32(m[(G + 1) % 4], cur);
    abcd = _mm_sha1rnds4_epu32(abcd, eNow, G / 5);
    if (G >= 1 && G <= 16)
        m[(G + 3) % 4] = _mm_sha1msg1_epu32(m[(G + 3) % 4], cur);
    if (G >= 2 && G <= 17)
        m[(G + 2) % 4] = _mm_xor_si128(m[(G + 2) % 4], cur);
}

template <int... G>
ZK_SHA_INLINE void sha1Groups(__m128i& abcd, __m128i& e0, __m128i& e1, __m128i (&m)[4]) {
    (sha1Group<G>(abcd, e0, e1, m), ...);
}

// Four rounds of SHA-256 on message group G, the schedule running ahead as for SHA-1: SHA256MSG1
// on the group before, and SHA256MSG2 finishing the next group.
template <int G> ZK_SHA_INLINE void sha256Group(__m128i& state0, __m128i& state1, __m128i (&m)[4]) {
    __m128i& cur = m[G % 4];
    __m128i msg = _mm_add_epi32(
        cur, _mm_load_si128(reinterpret_cast<const __m128i*>(kSha256Constants + 4 * G)));
    state1 = _mm_sha256rnds2_epu32(state1, state0, msg);
    if (G >= 3 && G <= 14) {
        __m128i& next = m[(G + 1) % 4];
        next = _mm_add_epi32(next, _mm_alignr_epi8(cur, m[(G + 3) % 4], 4));
        next = _mm_sha256msg2_epu32(next, cur);
    }
    msg = _mm_shuffle_epi32(msg, 0x0e);
    state0 = _mm_sha256rnds2_epu32(state0, state1, msg);
    if (G >= 1 && G <= 12)
        m[(G + 3) % 4] = _mm_sha256msg1_epu32(m[(G + 3) % 4], cur);
}

template <int... G>
ZK_SHA_INLINE void sha256Groups(__m128i& state0, __m128i& state1, __m128i (&m)[4]) {
    (sha256Group<G>(state0, state1, m), ...);
}

} // namespace

ZK_SHA_TARGET void sha1BlocksShaNi(std::uint32_t state[5], const unsigned char* data,
                                   std::size_t blocks) noexcept {
    // The words go big-endian into lanes 3..0, so A sits in the top lane.
    const __m128i byteSwap = _mm_set_epi64x(0x0001020304050607LL, 0x08090a0b0c0d0e0fLL);
    __m128i abcd =
        _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)), 0x1b);
    __m128i e0 = _mm_set_epi32(static_cast<int>(state[4]), 0, 0, 0);
    for (; blocks > 0; --blocks, data += 64) {
        const __m128i abcdSaved = abcd, eSaved = e0;
        __m128i m[4];
        for (int i = 0; i < 4; ++i)
            m[i] = _mm_shuffle_epi8(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 16 * i)), byteSwap);
        __m128i e1;
        sha1Groups<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18, 19>(abcd, e0,
                                                                                         e1, m);
        e0 = _mm_sha1nexte_epu32(e0, eSaved);
        abcd = _mm_add_epi32(abcd, abcdSaved);
    }
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), _mm_shuffle_epi32(abcd, 0x1b));
    state[4] = static_cast<std::uint32_t>(_mm_extract_epi32(e0, 3));
}

ZK_SHA_TARGET void sha256BlocksShaNi(std::uint32_t state[8], const unsigned char* data,
                                     std::size_t blocks) noexcept {
    const __m128i byteSwap = _mm_set_epi64x(0x0c0d0e0f08090a0bLL, 0x0405060700010203LL);
    // SHA256RNDS2 wants the state as ABEF and CDGH.
    __m128i tmp = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state)),
                                    0xb1); // CDAB
    __m128i state1 = _mm_shuffle_epi32(_mm_loadu_si128(reinterpret_cast<const __m128i*>(state + 4)),
                                       0x1b);         // EFGH
    __m128i state0 = _mm_alignr_epi8(tmp, state1, 8); // ABEF
    state1 = _mm_blend_epi16(state1, tmp, 0xf0);      // CDGH
    for (; blocks > 0; --blocks, data += 64) {
        const __m128i saved0 = state0, saved1 = state1;
        __m128i m[4];
        for (int i = 0; i < 4; ++i)
            m[i] = _mm_shuffle_epi8(
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 16 * i)), byteSwap);
        sha256Groups<0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15>(state0, state1, m);
        state0 = _mm_add_epi32(state0, saved0);
        state1 = _mm_add_epi32(state1, saved1);
    }
    tmp = _mm_shuffle_epi32(state0, 0x1b);       // FEBA
    state1 = _mm_shuffle_epi32(state1, 0xb1);    // DCHG
    state0 = _mm_blend_epi16(tmp, state1, 0xf0); // DCBA
    state1 = _mm_alignr_epi8(state1, tmp, 8);    // ABEF -> HGFE
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state), state0);
    _mm_storeu_si128(reinterpret_cast<__m128i*>(state + 4), state1);
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZK_CRYPTO_X86
