// SHA-512 two blocks at a time: the message schedules of both are computed side by side in the
// two 128-bit lanes of AVX2 registers, two words per lane per step, and the rounds then run on
// each block in turn with BMI2's rotates. The schedule of the next pair is computed between the
// rounds of this one, so the vector units work while the scalar ones do.
//
// The rounds run as a loop of sixteen-round groups rather than fully unrolled: the loop stays
// small enough for the processor's decoded-instruction cache, where fully unrolled code is
// limited by the decoders. The schedule therefore lives in memory, where a step at a run-time
// index can reach the words it needs. The 32 computed steps of a pair are spread evenly over its
// 160 rounds (one at the start of each block, then three per group), since the front end, not
// the arithmetic, is what bounds the rounds that carry them. Only this file is compiled for AVX2
// (through the target attribute on each function), and it is entered only after the processor
// check.
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

// A rotation by a whole byte is one byte shuffle.
ZK_AVX2_INLINE __m256i rotr8(__m256i x) {
    const __m256i rotation = _mm256_set_epi64x(0x080f0e0d0c0b0a09LL, 0x0007060504030201LL,
                                               0x080f0e0d0c0b0a09LL, 0x0007060504030201LL);
    return _mm256_shuffle_epi8(x, rotation);
}

ZK_AVX2_INLINE __m256i smallSigma0(__m256i x) {
    return _mm256_xor_si256(_mm256_xor_si256(rotr<1>(x), rotr8(x)), _mm256_srli_epi64(x, 7));
}

ZK_AVX2_INLINE __m256i smallSigma1(__m256i x) {
    return _mm256_xor_si256(_mm256_xor_si256(rotr<19>(x), rotr<61>(x)), _mm256_srli_epi64(x, 6));
}

/// The schedule of a pair of blocks. Step s makes words 2s and 2s + 1 of both blocks: the first
/// block's in the low lane, the second's in the high lane. `w[s]` keeps step s, `wk[s]` the same
/// plus the round constants, which is what the rounds read. `k` holds the constants in the same
/// layout, so that one pointer reaches all three: the rounds already hold most registers.
struct alignas(32) PairSchedule {
    std::uint64_t wk[40][4];
    std::uint64_t w[40][4];
    std::uint64_t k[40][4];

    ZK_AVX2_INLINE void fillConstants() {
        for (int s = 0; s < 40; ++s)
            _mm256_store_si256(reinterpret_cast<__m256i*>(k[s]),
                               _mm256_broadcastsi128_si256(_mm_load_si128(
                                   reinterpret_cast<const __m128i*>(kSha512Constants + 2 * s))));
    }
};

// From a row of PairSchedule::w to the same row of `k`, and back to `wk`.
constexpr std::ptrdiff_t kNextArray = 40 * 4;

ZK_AVX2_INLINE __m256i load256(const std::uint64_t* p) {
    return _mm256_load_si256(reinterpret_cast<const __m256i*>(p));
}

ZK_AVX2_INLINE void store256(std::uint64_t* p, __m256i x) {
    _mm256_store_si256(reinterpret_cast<__m256i*>(p), x);
}

/// Keeps step `x` at `w` (a row of PairSchedule::w) and its sum with the constants at the
/// matching row of `wk`.
ZK_AVX2_INLINE void put(std::uint64_t* w, __m256i x) {
    store256(w, x);
    store256(w - kNextArray, _mm256_add_epi64(x, load256(w + kNextArray)));
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
        put(schedule.w[s], _mm256_shuffle_epi8(_mm256_set_m128i(high, low), byteSwap));
    }
}

/// Step s (8 <= s < 40), where `w` is row s: W[t] = s1(W[t-2]) + W[t-7] + s0(W[t-15]) +
/// W[t-16]; the pairs starting at odd words come from two neighbours by a byte alignment.
ZK_AVX2_INLINE void step(std::uint64_t* w) {
    const __m256i w16 = load256(w - 32);
    const __m256i w15 = _mm256_alignr_epi8(load256(w - 28), w16, 8);
    const __m256i w7 = _mm256_alignr_epi8(load256(w - 12), load256(w - 16), 8);
    put(w, _mm256_add_epi64(_mm256_add_epi64(w16, smallSigma0(w15)),
                            _mm256_add_epi64(w7, smallSigma1(load256(w - 4)))));
}

// Four rounds on the words at `wk`, every fourth pair of words (one block's lane of a pair
// schedule).
#define ZK_SHA512_LANE_ROUNDS(a, b, c, d, e, f, g, h, wk)                                          \
    ZK_SHA512_FOUR_ROUNDS(a, b, c, d, e, f, g, h, (wk)[0], (wk)[1], (wk)[4], (wk)[5])

/// The 80 rounds of one block on `state`, reading its words from `wk` (its lane of a pair
/// schedule), with sixteen steps of the next pair's schedule among them; `w` is the row of the
/// next step, and advances.
ZK_AVX2_INLINE void blockRounds(std::uint64_t state[8], const std::uint64_t* wk,
                                std::uint64_t*& w) {
    std::uint64_t a = state[0], b = state[1], c = state[2], d = state[3];
    std::uint64_t e = state[4], f = state[5], g = state[6], h = state[7];
    std::uint64_t p = 0, q = b ^ c;
    step(w);
    w += 4;
    for (const std::uint64_t* const end = wk + 160; wk != end; wk += 32, w += 12) {
        ZK_SHA512_LANE_ROUNDS(a, b, c, d, e, f, g, h, wk);
        step(w);
        ZK_SHA512_LANE_ROUNDS(e, f, g, h, a, b, c, d, wk + 8);
        ZK_SHA512_LANE_ROUNDS(a, b, c, d, e, f, g, h, wk + 16);
        step(w + 4);
        ZK_SHA512_LANE_ROUNDS(e, f, g, h, a, b, c, d, wk + 24);
        step(w + 8);
    }
    state[0] += a, state[1] += b, state[2] += c, state[3] += d;
    state[4] += e, state[5] += f, state[6] += g, state[7] += h;
}

#undef ZK_SHA512_LANE_ROUNDS

} // namespace

ZK_AVX2_TARGET void sha512PairsAvx2(std::uint64_t state[8], const unsigned char* data,
                                    std::size_t blocks) noexcept {
    // After the last pair the next schedule is computed from zeros and never used, which keeps
    // the loop free of a branch for it.
    alignas(32) static const unsigned char kZeros[256] = {};
    PairSchedule schedules[2];
    PairSchedule* now = &schedules[0];
    PairSchedule* next = &schedules[1];
    now->fillConstants();
    next->fillConstants();
    loadSteps(*now, data, data + 128);
    for (int s = 8; s < 40; ++s)
        step(now->w[s]);
    for (; blocks >= 2; blocks -= 2, data += 256) {
        const unsigned char* nextData = blocks >= 4 ? data + 256 : kZeros;
        loadSteps(*next, nextData, nextData + 128);
        std::uint64_t* w = next->w[8];
        blockRounds(state, &now->wk[0][0], w);
        blockRounds(state, &now->wk[0][2], w);
        PairSchedule* const done = now;
        now = next;
        next = done;
    }
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZK_CRYPTO_X86
