// The SHA-512 rounds shared by the table-free portable code and the AVX2 code: the round function
// over a schedule computed ahead, plus the round constants.
#ifndef ZKCOMMON_SRC_CRYPTO_SHA512CORE_H
#define ZKCOMMON_SRC_CRYPTO_SHA512CORE_H

#include "crypto/cryptoimpl.h"

namespace ZkCommonNS {
namespace detail {

/// FIPS 180-4 4.2.3.
alignas(16) extern const std::uint64_t kSha512Constants[80];

// Always inlined, so that each caller compiles them for its own instruction set.
#define ZK_SHA512_INLINE __attribute__((always_inline)) inline

// A file that includes this one for an instruction set of its own defines the target attribute
// here first, so that the rounds can take its functions as arguments and inline them; the rounds
// are templates, instantiated by each file with types of its own.
#ifndef ZK_SHA512_ROUNDS_TARGET
#define ZK_SHA512_ROUNDS_TARGET
#endif

ZK_SHA512_INLINE std::uint64_t sha512BigSigma0(std::uint64_t x) noexcept {
    return rotr64(x, 28) ^ rotr64(x, 34) ^ rotr64(x, 39);
}
ZK_SHA512_INLINE std::uint64_t sha512BigSigma1(std::uint64_t x) noexcept {
    return rotr64(x, 14) ^ rotr64(x, 18) ^ rotr64(x, 41);
}
ZK_SHA512_INLINE std::uint64_t sha512SmallSigma0(std::uint64_t x) noexcept {
    return rotr64(x, 1) ^ rotr64(x, 8) ^ (x >> 7);
}
ZK_SHA512_INLINE std::uint64_t sha512SmallSigma1(std::uint64_t x) noexcept {
    return rotr64(x, 19) ^ rotr64(x, 61) ^ (x >> 6);
}

// One round with the working variables renamed rather than moved. `wk` is the schedule word
// plus the round constant, computed ahead so that the round's critical path through e holds only
// its own arithmetic. Maj(a, b, c) is b ^ ((a ^ b) & (b ^ c)), and this round's a ^ b is the next
// round's b ^ c: `ab` and `bc` trade places from one round to the next.
#define ZK_SHA512_ROUND(a, b, c, d, e, f, g, h, wk, ab, bc)                                        \
    do {                                                                                           \
        const std::uint64_t t1 = h + (wk) + sha512BigSigma1(e) + (g ^ (e & (f ^ g)));              \
        ab = a ^ b;                                                                                \
        d += t1;                                                                                   \
        h = t1 + sha512BigSigma0(a) + (b ^ (ab & bc));                                             \
    } while (0)

/// The 80 rounds of one block on `state`; `wk(t)` gives schedule word t plus constant t, and
/// `between(group)` runs after each group of eight rounds (other work to overlap with them).
template <class ScheduleWord, class Between>
ZK_SHA512_ROUNDS_TARGET ZK_SHA512_INLINE void sha512Rounds(std::uint64_t state[8], ScheduleWord wk,
                                                           Between between) noexcept {
    std::uint64_t a = state[0], b = state[1], c = state[2], d = state[3];
    std::uint64_t e = state[4], f = state[5], g = state[6], h = state[7];
    std::uint64_t p = 0, q = b ^ c;
#pragma GCC unroll 10
    for (int t = 0; t < 80; t += 8) {
        ZK_SHA512_ROUND(a, b, c, d, e, f, g, h, wk(t), p, q);
        ZK_SHA512_ROUND(h, a, b, c, d, e, f, g, wk(t + 1), q, p);
        ZK_SHA512_ROUND(g, h, a, b, c, d, e, f, wk(t + 2), p, q);
        ZK_SHA512_ROUND(f, g, h, a, b, c, d, e, wk(t + 3), q, p);
        ZK_SHA512_ROUND(e, f, g, h, a, b, c, d, wk(t + 4), p, q);
        ZK_SHA512_ROUND(d, e, f, g, h, a, b, c, wk(t + 5), q, p);
        ZK_SHA512_ROUND(c, d, e, f, g, h, a, b, wk(t + 6), p, q);
        ZK_SHA512_ROUND(b, c, d, e, f, g, h, a, wk(t + 7), q, p);
        between(t / 8);
    }
    state[0] += a, state[1] += b, state[2] += c, state[3] += d;
    state[4] += e, state[5] += f, state[6] += g, state[7] += h;
}

/// The same with nothing in between.
template <class ScheduleWord>
ZK_SHA512_ROUNDS_TARGET ZK_SHA512_INLINE void sha512Rounds(std::uint64_t state[8],
                                                           ScheduleWord wk) noexcept {
    sha512Rounds(state, wk, [](int) {});
}

#undef ZK_SHA512_ROUND

/// Blocks two at a time with an AVX2 schedule (and BMI2 rotates); `blocks` is even.
void sha512PairsAvx2(std::uint64_t state[8], const unsigned char* data,
                     std::size_t blocks) noexcept;

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CRYPTO_SHA512CORE_H
