// SHA-512 two blocks at a time: the message schedules of both are computed side by side in the
// two 128-bit lanes of AVX2 registers, two words per lane per step, and the rounds then run on
// each block in turn with BMI2's rotates. The schedule of the next pair is computed between the
// round groups of this one, so the vector units work while the scalar ones do. Only this file is
// compiled for AVX2 (through the target attribute on each function), and it is entered only
// after the processor check.
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

/// The schedule of a pair of blocks. Step s makes words 2s and 2s + 1 of both blocks: the first
/// block's in the low lane, the second's in the high lane. `x` keeps the last eight steps;
/// `wk[s]` receives step s plus the round constants.
struct PairSchedule {
    __m256i x[8];
    alignas(32) std::uint64_t wk[40][4];

    ZK_AVX2_INLINE void store(int s) {
        const __m256i k = _mm256_broadcastsi128_si256(
            _mm_load_si128(reinterpret_cast<const __m128i*>(kSha512Constants + 2 * s)));
        _mm256_store_si256(reinterpret_cast<__m256i*>(wk[s]), _mm256_add_epi64(x[s & 7], k));
    }

    /// Steps 0 to 7: the message words, byte-swapped.
    ZK_AVX2_INLINE void load(const unsigned char* first, const unsigned char* second) {
        const __m256i byteSwap = _mm256_set_epi64x(0x08090a0b0c0d0e0fLL, 0x0001020304050607LL,
                                                   0x08090a0b0c0d0e0fLL, 0x0001020304050607LL);
#pragma GCC unroll 8
        for (int s = 0; s < 8; ++s) {
            const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(first + 16 * s));
            const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(second + 16 * s));
            x[s] = _mm256_shuffle_epi8(_mm256_set_m128i(high, low), byteSwap);
            store(s);
        }
    }

    /// Steps from `start` to `limit` (8 <= start, limit <= 40). W[t] = s1(W[t-2]) + W[t-7] +
    /// s0(W[t-15]) + W[t-16]; the pairs starting at odd words come from two neighbours by a
    /// byte alignment.
    ZK_AVX2_INLINE void steps(int start, int limit) {
#pragma GCC unroll 4
        for (int s = start; s < limit; ++s) {
            const __m256i w15 = _mm256_alignr_epi8(x[(s - 7) & 7], x[(s - 8) & 7], 8);
            const __m256i w7 = _mm256_alignr_epi8(x[(s - 3) & 7], x[(s - 4) & 7], 8);
            x[s & 7] = _mm256_add_epi64(_mm256_add_epi64(x[(s - 8) & 7], smallSigma0(w15)),
                                        _mm256_add_epi64(w7, smallSigma1(x[(s - 1) & 7])));
            store(s);
        }
    }
};

// The 32 computed steps spread over the 20 round groups of a pair.
constexpr int stepLimit(int group) {
    return 8 + 32 * (group + 1) / 20;
}

// The schedule words of the pair's first and second block, and the share of the next pair's
// schedule that runs after each round group; functors rather than lambdas, since they must carry
// the target attribute to be inlined here.
struct FirstBlockWord {
    const PairSchedule& schedule;
    ZK_AVX2_INLINE std::uint64_t operator()(int t) const { return schedule.wk[t >> 1][t & 1]; }
};
struct SecondBlockWord {
    const PairSchedule& schedule;
    ZK_AVX2_INLINE std::uint64_t operator()(int t) const {
        return schedule.wk[t >> 1][2 + (t & 1)];
    }
};
struct NextSteps {
    PairSchedule& schedule;
    int firstGroup; // 0 for the pair's first block, 10 for its second
    ZK_AVX2_INLINE void operator()(int group) const {
        const int k = firstGroup + group;
        schedule.steps(k == 0 ? 8 : stepLimit(k - 1), stepLimit(k));
    }
};

} // namespace

ZK_AVX2_TARGET void sha512PairsAvx2(std::uint64_t state[8], const unsigned char* data,
                                    std::size_t blocks) noexcept {
    // After the last pair the next schedule is computed from zeros and never used, which keeps
    // the loop free of a branch per group.
    alignas(32) static const unsigned char kZeros[256] = {};
    PairSchedule schedules[2];
    schedules[0].load(data, data + 128);
    schedules[0].steps(8, 40);
    for (int current = 0; blocks >= 2; blocks -= 2, data += 256, current ^= 1) {
        PairSchedule& now = schedules[current];
        PairSchedule& next = schedules[current ^ 1];
        const unsigned char* nextData = blocks >= 4 ? data + 256 : kZeros;
        next.load(nextData, nextData + 128);
        sha512Rounds(state, FirstBlockWord{now}, NextSteps{next, 0});
        sha512Rounds(state, SecondBlockWord{now}, NextSteps{next, 10});
    }
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZK_CRYPTO_X86
