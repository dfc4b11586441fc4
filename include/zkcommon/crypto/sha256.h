// SHA256_CTX: the SHA-256 message digest (FIPS 180-4).
#ifndef ZKCOMMON_CRYPTO_SHA256_H
#define ZKCOMMON_CRYPTO_SHA256_H

#include "zkcommon/core/export.h"

#include <cstddef>
#include <cstdint>

namespace ZkCommonNS {

/// A SHA-256 computation. A value class: copying a context forks the computation.
class ZKCOMMON_API SHA256_CTX {
public:
    static constexpr int kDigestLength = 32;

    SHA256_CTX() noexcept;

    /// Adds `length` bytes at `data`; a null `data` adds nothing.
    void Update(const unsigned char* data, unsigned long long length) noexcept;
    /// Writes the 32-byte digest of everything added to `digest`; the context then starts over
    /// with an empty message.
    void Final(unsigned char* digest) noexcept;

protected:
    /// Runs the compression function over `blocks` whole 64-byte blocks at `data`.
    void Transform(const unsigned char* data, std::size_t blocks) noexcept;
    /// Pads the buffered tail with the bit length and compresses it; the state is then the digest.
    void Last() noexcept;

    std::uint32_t m_state[8];
    std::uint64_t m_length; // bytes added so far
    unsigned char m_buffer[64];
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_SHA256_H
