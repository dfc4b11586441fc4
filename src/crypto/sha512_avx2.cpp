// SHA-512 two blocks at a time: the message schedules of both are computed side by side in the
// two 128-bit lanes of AVX2 registers, two words per lane per step, and the rounds then run on
// each block in turn with BMI2's rotates. Only this file is compiled for AVX2 (through the target
// attribute on each function), and it is entered only after the processor check.
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

} // namespace

ZK_AVX2_TARGET void sha512PairsAvx2(std::uint64_t state[8], const unsigned char* data,
                                    std::size_t blocks) noexcept {
    // Reverses the bytes of each 64-bit word.
    const __m256i byteSwap = _mm256_set_epi64x(0x08090a0b0c0d0e0fLL, 0x0001020304050607LL,
                                               0x08090a0b0c0d0e0fLL, 0x0001020304050607LL);
    for (; blocks >= 2; blocks -= 2, data += 256) {
        // x[s] holds words 2s and 2s + 1 of the first block in its low lane and of the second
        // block in its high lane; wk[s] the same plus the round constants.
        __m256i x[40];
        alignas(32) std::uint64_t wk[40][4];
#pragma GCC unroll 8
        for (int s = 0; s < 8; ++s) {
            const __m128i first = _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 16 * s));
            const __m128i second =
                _mm_loadu_si128(reinterpret_cast<const __m128i*>(data + 128 + 16 * s));
            x[s] = _mm256_shuffle_epi8(_mm256_set_m128i(second, first), byteSwap);
        }
        // W[t] = s1(W[t-2]) + W[t-7] + s0(W[t-15]) + W[t-16], for t = 2s and 2s + 1 at once: the
        // pairs starting at odd words come from two neighbours by a byte alignment.
#pragma GCC unroll 32
        for (int s = 8; s < 40; ++s) {
            const __m256i w15 = _mm256_alignr_epi8(x[s - 7], x[s - 8], 8);
            const __m256i w7 = _mm256_alignr_epi8(x[s - 3], x[s - 4], 8);
            x[s] = _mm256_add_epi64(_mm256_add_epi64(x[s - 8], smallSigma0(w15)),
                                    _mm256_add_epi64(w7, smallSigma1(x[s - 1])));
        }
#pragma GCC unroll 40
        for (int s = 0; s < 40; ++s) {
            const __m256i k = _mm256_broadcastsi128_si256(
                _mm_load_si128(reinterpret_cast<const __m128i*>(kSha512Constants + 2 * s)));
            _mm256_store_si256(reinterpret_cast<__m256i*>(wk[s]), _mm256_add_epi64(x[s], k));
        }
        sha512Rounds(state, [&wk](int t) { return wk[t >> 1][t & 1]; });
        sha512Rounds(state, [&wk](int t) { return wk[t >> 1][2 + (t & 1)]; });
    }
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZK_CRYPTO_X86
