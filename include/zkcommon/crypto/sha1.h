// SHA1_CTX: the SHA-1 message digest (FIPS 180-4), with result codes in the style of RFC 3174.
#ifndef ZKCOMMON_CRYPTO_SHA1_H
#define ZKCOMMON_CRYPTO_SHA1_H

#include "zkcommon/core/export.h"

#include <cstdint>

namespace ZkCommonNS {

/// Result codes of SHA1_CTX.
enum SHA1_Result {
    SHA1_SUCCESS = 0,
    SHA1_INPUT_TOO_LONG = 1, ///< the message passed 2^64 - 1 bits
    SHA1_STATE_ERROR = 2,    ///< Update after Final
};

/// A SHA-1 computation. A value class: copying a context forks the computation. A failure is
/// remembered: once a call has answered a non-zero code, every later call answers it too and
/// writes no digest.
class ZKCOMMON_API SHA1_CTX {
public:
    static constexpr int kDigestLength = 20;

    SHA1_CTX() noexcept;

    /// Adds `length` bytes at `data`; a null `data` adds nothing. Returns SHA1_STATE_ERROR after
    /// Final and SHA1_INPUT_TOO_LONG when the message grows past 2^64 - 1 bits.
    int Update(const unsigned char* data, unsigned int length) noexcept;
    /// Writes the 20-byte digest to `digest`. Calling it again writes the same digest; a null
    /// `digest` writes nothing. Returns the remembered failure, if any, without writing.
    int Final(unsigned char* digest) noexcept;

protected:
    std::uint32_t m_state[5];
    std::uint64_t m_length; // bytes added so far
    int m_status;
    bool m_computed;
    unsigned char m_buffer[64];
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_SHA1_H
