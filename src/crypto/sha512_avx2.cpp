// SHA-512 two blocks at a time: the message schedules of both are computed side by side in the
// two 128-bit lanes of AVX2 registers, two words per lane per step, and the rounds then run on
// each block in turn with BMI2's rotates. The schedule of the next pair is computed between the
// round groups of this one, so the vector units work while the scalar ones do.
//
// The rounds run as a loop of eight-round groups rather than fully unrolled: the loop stays
// small enough for the processor's decoded-instruction cache, and the front end, not the
// arithmetic, is what limits fully unrolled code. The schedule therefore lives in memory, where a
// step at a run-time index can reach the words it needs. Only this file is compiled for AVX2
// (through the target attribute on each function), and it is entered only after the processor
// check.
#define ZK_SHA512_ROUNDS_TARGET __attribute__((target("avx2,bmi2")))
#include "crypto/sha512core.h"

#if ZK_CRYPTO_X86

#include <immintrin.h>

#define ZK_AVX2_TARGET __attribute__((target("avx2,bmi2")))
#define ZK_AVX2_INLINE __attribute__((target("avx2,bmi2"), always_inline)) inline

namespace ZkCommonNS {
namespace detail {

namespace {

template <int N> ZK_AVX2_INLINE __m256i rotr(__m256i x) {
    return _mm256_or_si256(_mm256_srli_epi64(x, N), _mm256_slli_epi64(x, 64 - N));
}

ZK_AVX2_INLINE __m256i smallSigma0(__m256i x) {
    return _mm256_xor_si256(_mm256_xor_si256(rotr<1>(x), rotr<8>(x)), _mm256_srli_epi64(x, 7));
}

ZK_AVX2_INLINE __m256i smallSigma1(__m256i x) {
    return _mm256_xor_si256(_mm256_xor_si256(rotr<19>(x), rotr<61>(x)), _mm256_srli_epi64(x, 6));
}

ZK_AVX2_INLINE std::uint64_t ror(std::uint64_t x, int n) {
    return (x >> n) | (x << (64 - n));
}

/// The schedule of a pair of blocks. Step s makes words 2s and 2s + 1 of both blocks: the first
/// block's in the low lane, the second's in the high lane. `w[s]` keeps step s, `wk[s]` the same
/// plus the round constants, which is what the rounds read.
struct alignas(32) PairSchedule {
    std::uint64_t wk[40][4];
    std::uint64_t w[40][4];
};

ZK_AVX2_INLINE __m256i load256(const std::uint64_t* p) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(p));
}

ZK_AVX2_INLINE void store256(std::uint64_t* p, __m256i x) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(p), x);
}

/// Keeps step `x` at `w` (a row of PairSchedule::w) and its sum with the constants `k` at the
/// matching row of `wk`.
ZK_AVX2_INLINE void put(std::uint64_t* w, const std::uint64_t* k, __m256i x) {
    constexpr std::ptrdiff_t kToWk = -40 * 4; // from a row of w to the same row of wk
    store256(w, x);
    store256(w + kToWk, _mm256_add_epi64(x, _mm256_broadcastsi128_si256(_mm_load_si128(
                                                reinterpret_cast<const __m128i*>(k)))));
}

/// Steps 0 to 7: the message words, byte-swapped.
ZK_AVX2_INLINE void loadSteps(PairSchedule& schedule, const unsigned char* first,
                              const unsigned char* second) {
    const __m256i byteSwap = _mm256_set_epi64x(0x08090a0b0c0d0e0fLL, 0x0001020304050607LL,
                                               0x08090a0b0c0d0e0fLL, 0x0001020304050607LL);
#pragma GCC unroll 8
    for (int s = 0; s < 8; ++s) {
        const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first + 16 * s));
        const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(second + 16 * s));
        put(schedule.w[s], kSha512Constants + 2 * s,
            _mm256_shuffle_epi8(_mm256_set_m128i(high, low), byteSwap));
    }
}

/// Two steps s and s + 1 (8 <= s < 40), where `w` is row s and `k` the constants of step s:
/// W[t] = s1(W[t-2]) + W[t-7] + s0(W[t-15]) + W[t-16]; the pairs starting at odd words come
/// from two neighbours by a byte alignment.
ZK_AVX2_INLINE void twoSteps(std::uint64_t* w, const std::uint64_t* k) {
    __m256i previous = load256(w - 4);
#pragma GCC unroll 2
    for (int i = 0; i < 2; ++i, w += 4, k += 2) {
        const __m256i w16 = load256(w - 32);
        const __m256i w15 = _mm256_alignr_epi8(load256(w - 28), w16, 8);
        const __m256i w7 = _mm256_alignr_epi8(load256(w - 12), load256(w - 16), 8);
        previous = _mm256_add_epi64(_mm256_add_epi64(w16, smallSigma0(w15)),
                                    _mm256_add_epi64(w7, smallSigma1(previous)));
        put(w, k, previous);
    }
}

// One round with the working variables renamed rather than moved; `wk` is the schedule word plus
// the round constant. Maj(a, b, c) is b ^ ((a ^ b) & (b ^ c)), and this round's a ^ b is the
// next round's b ^ c: `ab` and `bc` trade places from one round to the next.
#define ZK_SHA512_ROUND(a, b, c, d, e, f, g, h, wk, ab, bc)                                        \
    do {                                                                                           \
        const std::uint64_t t1 =                                                                   \
            h + (wk) + (ror(e, 14) ^ ror(e, 18) ^ ror(e, 41)) + (g ^ (e & (f ^ g)));               \
        ab = a ^ b;                                                                                \
        d += t1;                                                                                   \
        h = t1 + (ror(a, 28) ^ ror(a, 34) ^ ror(a, 39)) + (b ^ (ab & bc));                         \
    } while (0)

// Eight rounds on the words at `wk`, every fourth pair of words (one block's lane of a pair
// schedule); the names come back to their places after eight.
#define ZK_SHA512_EIGHT_ROUNDS(wk)                                                                 \
    do {                                                                                           \
        ZK_SHA512_ROUND(a, b, c, d, e, f, g, h, wk[0], p, q);                                      \
        ZK_SHA512_ROUND(h, a, b, c, d, e, f, g, wk[1], q, p);                                      \
        ZK_SHA512_ROUND(g, h, a, b, c, d, e, f, wk[4], p, q);                                      \
        ZK_SHA512_ROUND(f, g, h, a, b, c, d, e, wk[5], q, p);                                      \
        ZK_SHA512_ROUND(e, f, g, h, a, b, c, d, wk[8], p, q);                                      \
        ZK_SHA512_ROUND(d, e, f, g, h, a, b, c, wk[9], q, p);                                      \
        ZK_SHA512_ROUND(c, d, e, f, g, h, a, b, wk[12], p, q);                                     \
        ZK_SHA512_ROUND(b, c, d, e, f, g, h, a, wk[13], q, p);                                     \
    } while (0)

/// The 80 rounds of one block on `state`, reading its words from `wk` (its lane of a pair
/// schedule), with two steps of the next pair's schedule after each of the first `stepGroups`
/// groups of eight rounds; `w` and `k` are the row and constants of the next step, and advance.
ZK_AVX2_INLINE void blockRounds(std::uint64_t state[8], const std::uint64_t* wk, int stepGroups,
                                std::uint64_t*& w, const std::uint64_t*& k) {
    std::uint64_t a = state[0], b = state[1], c = state[2], d = state[3];
    std::uint64_t e = state[4], f = state[5], g = state[6], h = state[7];
    std::uint64_t p = 0, q = b ^ c;
    const std::uint64_t* const stepsEnd = wk + 16 * stepGroups;
    const std::uint64_t* const end = wk + 160;
    for (; wk != stepsEnd; wk += 16, w += 8, k += 4) {
        ZK_SHA512_EIGHT_ROUNDS(wk);
        twoSteps(w, k);
    }
    for (; wk != end; wk += 16)
        ZK_SHA512_EIGHT_ROUNDS(wk);
    state[0] += a, state[1] += b, state[2] += c, state[3] += d;
    state[4] += e, state[5] += f, state[6] += g, state[7] += h;
}

#undef ZK_SHA512_EIGHT_ROUNDS
#undef ZK_SHA512_ROUND

} // namespace

ZK_AVX2_TARGET void sha512PairsAvx2(std::uint64_t state[8], const unsigned char* data,
                                    std::size_t blocks) noexcept {
    // After the last pair the next schedule is computed from zeros and never used, which keeps
    // the loop free of a branch for it.
    alignas(32) static const unsigned char kZeros[256] = {};
    PairSchedule schedules[2];
    loadSteps(schedules[0], data, data + 128);
    for (int s = 8; s < 40; s += 2)
        twoSteps(schedules[0].w[s], kSha512Constants + 2 * s);
    for (int current = 0; blocks >= 2; blocks -= 2, data += 256, current ^= 1) {
        const PairSchedule& now = schedules[current];
        PairSchedule& next = schedules[current ^ 1];
        const unsigned char* nextData = blocks >= 4 ? data + 256 : kZeros;
        loadSteps(next, nextData, nextData + 128);
        std::uint64_t* w = next.w[8];
        const std::uint64_t* k = kSha512Constants + 16;
        // 16 groups of two steps: ten after the first block's groups, six after the second's.
        blockRounds(state, &now.wk[0][0], 10, w, k);
        blockRounds(state, &now.wk[0][2], 6, w, k);
    }
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZK_CRYPTO_X86
