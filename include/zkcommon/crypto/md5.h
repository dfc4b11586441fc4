// MD5_CTX: the MD5 message digest (RFC 1321).
#ifndef ZKCOMMON_CRYPTO_MD5_H
#define ZKCOMMON_CRYPTO_MD5_H

#include "zkcommon/core/export.h"

#include <cstdint>

namespace ZkCommonNS {

/// An MD5 computation. A value class: copying a context forks the computation, so the digest of a
/// common prefix is computed once.
class ZKCOMMON_API MD5_CTX {
public:
    static constexpr int kDigestLength = 16;

    MD5_CTX() noexcept;

    /// Adds `length` bytes at `data`; a null `data` adds nothing.
    void Update(const unsigned char* data, unsigned long long length) noexcept;
    /// Writes the 16-byte digest of everything added to `digest`; the context then starts over
    /// with an empty message.
    void Final(unsigned char* digest) noexcept;

protected:
    std::uint32_t m_state[4];
    std::uint64_t m_length; // bytes added so far
    unsigned char m_buffer[64];
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_MD5_H
