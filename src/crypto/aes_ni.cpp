// AES with the processor's AES instructions. Only this file is compiled for them (through the
// target attribute on each function), and it is entered only after the processor check.
#include "crypto/cryptoimpl.h"

#if ZK_CRYPTO_X86

#include <immintrin.h>

#define ZK_AES_TARGET __attribute__((target("aes,sse4.1")))
#define ZK_AES_INLINE __attribute__((target("aes,sse4.1"), always_inline)) inline

namespace ZkCommonNS {
namespace detail {

namespace {

// Independent blocks are interleaved eight at a time, which hides the latency of AESENC and
// AESDEC; a chain (CBC encryption) can only go one block after the other.
constexpr std::size_t kLanes = 8;

template <int Rounds> struct RoundKeys { __m128i k[Rounds + 1]; };

template <int Rounds>
ZK_AES_INLINE void loadKeys(RoundKeys<Rounds>& keys, const unsigned char* bytes) {
#pragma GCC unroll 16
    for (int i = 0; i <= Rounds; ++i)
        keys.k[i] = _mm_load_si128(reinterpret_cast<const __m128i*>(bytes + 16 * i));
}

template <int Rounds> ZK_AES_INLINE __m128i encryptOne(const RoundKeys<Rounds>& keys, __m128i x) {
    x = _mm_xor_si128(x, keys.k[0]);
#pragma GCC unroll 16
    for (int i = 1; i < Rounds; ++i)
        x = _mm_aesenc_si128(x, keys.k[i]);
    return _mm_aesenclast_si128(x, keys.k[Rounds]);
}

template <int Rounds> ZK_AES_INLINE __m128i decryptOne(const RoundKeys<Rounds>& keys, __m128i x) {
    x = _mm_xor_si128(x, keys.k[0]);
#pragma GCC unroll 16
    for (int i = 1; i < Rounds; ++i)
        x = _mm_aesdec_si128(x, keys.k[i]);
    return _mm_aesdeclast_si128(x, keys.k[Rounds]);
}

template <int Rounds, bool Encrypt>
ZK_AES_INLINE void cryptLanes(const RoundKeys<Rounds>& keys, __m128i (&x)[kLanes]) {
#pragma GCC unroll 8
    for (std::size_t j = 0; j < kLanes; ++j)
        x[j] = _mm_xor_si128(x[j], keys.k[0]);
#pragma GCC unroll 16
    for (int i = 1; i < Rounds; ++i)
#pragma GCC unroll 8
        for (std::size_t j = 0; j < kLanes; ++j)
            x[j] = Encrypt ? _mm_aesenc_si128(x[j], keys.k[i]) : _mm_aesdec_si128(x[j], keys.k[i]);
#pragma GCC unroll 8
    for (std::size_t j = 0; j < kLanes; ++j)
        x[j] = Encrypt ? _mm_aesenclast_si128(x[j], keys.k[Rounds])
                       : _mm_aesdeclast_si128(x[j], keys.k[Rounds]);
}

ZK_AES_INLINE __m128i loadBlock(const unsigned char* p) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
}
ZK_AES_INLINE void storeBlock(unsigned char* p, __m128i x) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(p), x);
}

template <int Rounds, bool Encrypt>
ZK_AES_TARGET void ecb(const AesKeySchedule& key, const unsigned char* in, unsigned char* out,
                       std::size_t blocks) {
    RoundKeys<Rounds> keys;
    loadKeys<Rounds>(keys, Encrypt ? key.encBytes : key.decBytes);
    for (; blocks >= kLanes; blocks -= kLanes, in += 16 * kLanes, out += 16 * kLanes) {
        __m128i x[kLanes];
#pragma GCC unroll 8
        for (std::size_t j = 0; j < kLanes; ++j)
            x[j] = loadBlock(in + 16 * j);
        cryptLanes<Rounds, Encrypt>(keys, x);
#pragma GCC unroll 8
        for (std::size_t j = 0; j < kLanes; ++j)
            storeBlock(out + 16 * j, x[j]);
    }
    for (; blocks > 0; --blocks, in += 16, out += 16)
        storeBlock(out, Encrypt ? encryptOne<Rounds>(keys, loadBlock(in))
                                : decryptOne<Rounds>(keys, loadBlock(in)));
}

template <int Rounds>
ZK_AES_TARGET void cbcEncrypt(const AesKeySchedule& key, unsigned char iv[16],
                              const unsigned char* in, unsigned char* out, std::size_t blocks) {
    RoundKeys<Rounds> keys;
    loadKeys<Rounds>(keys, key.encBytes);
    __m128i chain = loadBlock(iv);
    for (; blocks > 0; --blocks, in += 16, out += 16) {
        // The first round key joins the plaintext off the chain's critical path.
        __m128i x = _mm_xor_si128(chain, _mm_xor_si128(loadBlock(in), keys.k[0]));
#pragma GCC unroll 16
        for (int i = 1; i < Rounds; ++i)
            x = _mm_aesenc_si128(x, keys.k[i]);
        chain = _mm_aesenclast_si128(x, keys.k[Rounds]);
        storeBlock(out, chain);
    }
    storeBlock(iv, chain);
}

template <int Rounds>
ZK_AES_TARGET void cbcDecrypt(const AesKeySchedule& key, unsigned char iv[16],
                              const unsigned char* in, unsigned char* out, std::size_t blocks) {
    RoundKeys<Rounds> keys;
    loadKeys<Rounds>(keys, key.decBytes);
    __m128i chain = loadBlock(iv);
    for (; blocks >= kLanes; blocks -= kLanes, in += 16 * kLanes, out += 16 * kLanes) {
        __m128i x[kLanes];
#pragma GCC unroll 8
        for (std::size_t j = 0; j < kLanes; ++j)
            x[j] = loadBlock(in + 16 * j);
        cryptLanes<Rounds, false>(keys, x);
        // The ciphertext is read again rather than held in registers, which the round keys
        // fill; going backwards keeps that right when `out` is `in`.
        const __m128i nextChain = loadBlock(in + 16 * (kLanes - 1));
#pragma GCC unroll 8
        for (std::size_t j = kLanes - 1; j > 0; --j)
            storeBlock(out + 16 * j, _mm_xor_si128(x[j], loadBlock(in + 16 * (j - 1))));
        storeBlock(out, _mm_xor_si128(x[0], chain));
        chain = nextChain;
    }
    for (; blocks > 0; --blocks, in += 16, out += 16) {
        const __m128i cipher = loadBlock(in);
        storeBlock(out, _mm_xor_si128(decryptOne<Rounds>(keys, cipher), chain));
        chain = cipher;
    }
    storeBlock(iv, chain);
}

} // namespace

void aesEcbEncryptNi(const AesKeySchedule& key, const unsigned char* in, unsigned char* out,
                     std::size_t blocks) noexcept {
    switch (key.rounds) {
    case 10:
        return ecb<10, true>(key, in, out, blocks);
    case 12:
        return ecb<12, true>(key, in, out, blocks);
    default:
        return ecb<14, true>(key, in, out, blocks);
    }
}

void aesEcbDecryptNi(const AesKeySchedule& key, const unsigned char* in, unsigned char* out,
                     std::size_t blocks) noexcept {
    switch (key.rounds) {
    case 10:
        return ecb<10, false>(key, in, out, blocks);
    case 12:
        return ecb<12, false>(key, in, out, blocks);
    default:
        return ecb<14, false>(key, in, out, blocks);
    }
}

void aesCbcEncryptNi(const AesKeySchedule& key, unsigned char iv[16], const unsigned char* in,
                     unsigned char* out, std::size_t blocks) noexcept {
    switch (key.rounds) {
    case 10:
        return cbcEncrypt<10>(key, iv, in, out, blocks);
    case 12:
        return cbcEncrypt<12>(key, iv, in, out, blocks);
    default:
        return cbcEncrypt<14>(key, iv, in, out, blocks);
    }
}

void aesCbcDecryptNi(const AesKeySchedule& key, unsigned char iv[16], const unsigned char* in,
                     unsigned char* out, std::size_t blocks) noexcept {
    switch (key.rounds) {
    case 10:
        return cbcDecrypt<10>(key, iv, in, out, blocks);
    case 12:
        return cbcDecrypt<12>(key, iv, in, out, blocks);
    default:
        return cbcDecrypt<14>(key, iv, in, out, blocks);
    }
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZK_CRYPTO_X86
