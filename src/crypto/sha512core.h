// The SHA-512 round shared by the portable code and the AVX2 code, and the round constants.
#ifndef ZKCOMMON_SRC_CRYPTO_SHA512CORE_H
#define ZKCOMMON_SRC_CRYPTO_SHA512CORE_H

#include "crypto/cryptoimpl.h"

namespace ZkCommonNS {
namespace detail {

/// FIPS 180-4 4.2.3.
alignas(16) extern const std::uint64_t kSha512Constants[80];

// Always inlined, so that each caller compiles them for its own instruction set (BMI2's
// three-operand rotate saves a copy per rotation).
#define ZK_SHA512_INLINE __attribute__((always_inline)) inline

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

// One round with the working variables renamed rather than moved: a caller runs rounds in
// groups of a multiple of eight, naming the variables one place further each round. `wk` is the
// schedule word plus the round constant, computed ahead so that the round's critical path through
// e holds only its own arithmetic. Maj(a, b, c) is b ^ ((a ^ b) & (b ^ c)), and this round's
// a ^ b is the next round's b ^ c: `ab` and `bc` trade places from one round to the next.
#define ZK_SHA512_ROUND(a, b, c, d, e, f, g, h, wk, ab, bc)                                        \
    do {                                                                                           \
        const std::uint64_t t1 =                                                                   \
            h + (wk) + ::ZkCommonNS::detail::sha512BigSigma1(e) + (g ^ (e & (f ^ g)));             \
        ab = a ^ b;                                                                                \
        d += t1;                                                                                   \
        h = t1 + ::ZkCommonNS::detail::sha512BigSigma0(a) + (b ^ (ab & bc));                       \
    } while (0)

// Four rounds on the words w0 to w3 (schedule plus constant), with `p` and `q` the two
// variables that carry b ^ c; the next four take the names shifted by four.
#define ZK_SHA512_FOUR_ROUNDS(a, b, c, d, e, f, g, h, w0, w1, w2, w3)                              \
    do {                                                                                           \
        ZK_SHA512_ROUND(a, b, c, d, e, f, g, h, w0, p, q);                                         \
        ZK_SHA512_ROUND(h, a, b, c, d, e, f, g, w1, q, p);                                         \
        ZK_SHA512_ROUND(g, h, a, b, c, d, e, f, w2, p, q);                                         \
        ZK_SHA512_ROUND(f, g, h, a, b, c, d, e, w3, q, p);                                         \
    } while (0)

/// Blocks two at a time with an AVX2 schedule (and BMI2 rotates); `blocks` is even.
void sha512PairsAvx2(std::uint64_t state[8], const unsigned char* data,
                     std::size_t blocks) noexcept;

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CRYPTO_SHA512CORE_H
