// Internal interface of the crypto subsystem: byte order helpers, the processor dispatch and the
// accelerated block functions, which live in their own translation units.
#ifndef ZKCOMMON_SRC_CRYPTO_CRYPTOIMPL_H
#define ZKCOMMON_SRC_CRYPTO_CRYPTOIMPL_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__x86_64__) || defined(__i386__)
#define ZK_CRYPTO_X86 1
#else
#define ZK_CRYPTO_X86 0
#endif

namespace ZkCommonNS {
namespace detail {

inline std::uint32_t loadBE32(const unsigned char* p) noexcept {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    v = __builtin_bswap32(v);
#endif
    return v;
}
inline void storeBE32(unsigned char* p, std::uint32_t v) noexcept {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    v = __builtin_bswap32(v);
#endif
    std::memcpy(p, &v, 4);
}
inline std::uint64_t loadBE64(const unsigned char* p) noexcept {
    std::uint64_t v;
    std::memcpy(&v, p, 8);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    v = __builtin_bswap64(v);
#endif
    return v;
}
inline void storeBE64(unsigned char* p, std::uint64_t v) noexcept {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_LITTLE_ENDIAN__
    v = __builtin_bswap64(v);
#endif
    std::memcpy(p, &v, 8);
}
inline std::uint32_t loadLE32(const unsigned char* p) noexcept {
    std::uint32_t v;
    std::memcpy(&v, p, 4);
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    v = __builtin_bswap32(v);
#endif
    return v;
}
inline void storeLE32(unsigned char* p, std::uint32_t v) noexcept {
#if defined(__BYTE_ORDER__) && __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__
    v = __builtin_bswap32(v);
#endif
    std::memcpy(p, &v, 4);
}
inline std::uint32_t rotl32(std::uint32_t v, int n) noexcept {
    return (v << n) | (v >> (32 - n));
}
inline std::uint32_t rotr32(std::uint32_t v, int n) noexcept {
    return (v >> n) | (v << (32 - n));
}
inline std::uint64_t rotr64(std::uint64_t v, int n) noexcept {
    return (v >> n) | (v << (64 - n));
}

/// Adds `length` bytes at `data` to a digest whose `total` bytes so far leave a partial block in
/// `buffer`: fills the buffer, runs `compress(blocks, count)` over whole blocks straight from
/// `data`, and keeps the tail. `total` wraps as the standards' bit counts do.
template <std::size_t BlockBytes, class Compress>
void absorb(unsigned char* buffer, std::uint64_t& total, const unsigned char* data,
            unsigned long long length, Compress compress) noexcept {
    std::size_t used = static_cast<std::size_t>(total % BlockBytes);
    total += length;
    if (used != 0) {
        const std::size_t room = BlockBytes - used;
        const std::size_t take = length < room ? static_cast<std::size_t>(length) : room;
        std::memcpy(buffer + used, data, take);
        data += take;
        length -= take;
        if (take < room)
            return;
        compress(buffer, 1);
    }
    const std::size_t blocks = static_cast<std::size_t>(length / BlockBytes);
    if (blocks != 0) {
        compress(data, blocks);
        data += blocks * BlockBytes;
    }
    std::memcpy(buffer, data, static_cast<std::size_t>(length % BlockBytes));
}

/// Whether the SHA extensions (with SSSE3 and SSE4.1) are present and not switched off.
bool useShaExtensions() noexcept;
/// Whether the AES instructions (with SSE4.1) are present and not switched off.
bool useAesInstructions() noexcept;
/// Whether BMI2's rotate without flags is present and not switched off (SHA-512).
bool useBmi2() noexcept;
/// Whether AVX2 (with BMI2, and the YMM registers saved by the system) is present and not
/// switched off (SHA-512's schedule).
bool useAvx2() noexcept;

// Accelerated block functions: only called when the matching use* answers true.
void sha1BlocksShaNi(std::uint32_t state[5], const unsigned char* data,
                     std::size_t blocks) noexcept;
void sha256BlocksShaNi(std::uint32_t state[8], const unsigned char* data,
                       std::size_t blocks) noexcept;

/// The round keys of one AES key in both directions. The forward keys are those of FIPS 197's
/// key expansion; the inverse keys are those of its equivalent inverse cipher (reversed, with
/// InvMixColumns applied to the inner rounds), which the table code and AESDEC both take.
struct AesKeySchedule {
    int rounds;                 // 10, 12 or 14
    std::uint32_t encWords[60]; // big-endian words, as the tables use them
    std::uint32_t decWords[60];
    alignas(16) unsigned char encBytes[240]; // the same in memory order, as the instructions
    alignas(16) unsigned char decBytes[240]; // load them
};

/// Fills `schedule` from a 16-, 24- or 32-byte key.
void aesExpandKey(AesKeySchedule& schedule, const unsigned char* key, int keyBytes) noexcept;

// One block with the portable tables; `in` may equal `out`.
void aesEncryptBlock(const AesKeySchedule& key, const unsigned char* in,
                     unsigned char* out) noexcept;
void aesDecryptBlock(const AesKeySchedule& key, const unsigned char* in,
                     unsigned char* out) noexcept;

// Runs of blocks with the AES instructions; `iv` is updated to the last ciphertext block.
void aesEcbEncryptNi(const AesKeySchedule& key, const unsigned char* in, unsigned char* out,
                     std::size_t blocks) noexcept;
void aesEcbDecryptNi(const AesKeySchedule& key, const unsigned char* in, unsigned char* out,
                     std::size_t blocks) noexcept;
void aesCbcEncryptNi(const AesKeySchedule& key, unsigned char iv[16], const unsigned char* in,
                     unsigned char* out, std::size_t blocks) noexcept;
void aesCbcDecryptNi(const AesKeySchedule& key, unsigned char iv[16], const unsigned char* in,
                     unsigned char* out, std::size_t blocks) noexcept;

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CRYPTO_CRYPTOIMPL_H
