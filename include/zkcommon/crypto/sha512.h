// SHA512_CTX and SHA384_CTX: the SHA-512 and SHA-384 message digests (FIPS 180-4).
#ifndef ZKCOMMON_CRYPTO_SHA512_H
#define ZKCOMMON_CRYPTO_SHA512_H

#include "zkcommon/core/export.h"

#include <cstddef>
#include <cstdint>

namespace ZkCommonNS {

/// A SHA-512 computation. A value class: copying a context forks the computation.
class ZKCOMMON_API SHA512_CTX {
public:
    static constexpr int kDigestLength = 64;

    SHA512_CTX() noexcept;

    /// Adds `length` bytes at `data`; a null `data` adds nothing.
    void Update(const unsigned char* data, unsigned long long length) noexcept;
    /// Writes the 64-byte digest of everything added to `digest`; the context then starts over
    /// with an empty message.
    void Final(unsigned char* digest) noexcept;

protected:
    /// Starts from the eight words of `initial` (SHA-384 and the truncated forms differ only here).
    explicit SHA512_CTX(const std::uint64_t* initial) noexcept;
    /// Runs the compression function over `blocks` whole 128-byte blocks at `data`.
    void Transform(const unsigned char* data, std::size_t blocks) noexcept;
    /// Pads the buffered tail with the bit length and compresses it; the state is then the digest.
    void Last() noexcept;
    /// Writes the first `length` bytes of the big-endian state and starts over from `initial`.
    void emit(unsigned char* digest, int length, const std::uint64_t* initial) noexcept;

    std::uint64_t m_state[8];
    std::uint64_t m_length; // bytes added so far; the bit count's high word is m_length >> 61
    unsigned char m_buffer[128];
};

/// A SHA-384 computation: SHA-512 with its own initial values, cut to 48 bytes.
class ZKCOMMON_API SHA384_CTX : protected SHA512_CTX {
public:
    static constexpr int kDigestLength = 48;

    SHA384_CTX() noexcept;

    using SHA512_CTX::Update;
    /// Writes the 48-byte digest of everything added to `digest`; the context then starts over
    /// with an empty message.
    void Final(unsigned char* digest) noexcept;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_SHA512_H
