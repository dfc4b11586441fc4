// RC4_KEY: the RC4 stream cipher.
#ifndef ZKCOMMON_CRYPTO_RC4_H
#define ZKCOMMON_CRYPTO_RC4_H

#include "zkcommon/core/export.h"

namespace ZkCommonNS {

/// An RC4 key stream. Encryption and decryption are the same operation; the stream goes on
/// across calls. A value class: a copy continues from the same point independently.
class ZKCOMMON_API RC4_KEY {
public:
    /// Runs the key schedule over `keyLength` bytes of `key` (only the first 256 take part, as
    /// the algorithm defines). A null key or a length of 0 or below leaves the object without a
    /// key: RC4 then answers 0 and writes nothing.
    RC4_KEY(int keyLength, const unsigned char* key) noexcept;

    /// XORs `length` bytes of `in` with the key stream into `out`; `in` may equal `out`. Returns
    /// the number of bytes processed: 0 for a null buffer, a length of 0 or below, or no key.
    int RC4(int length, const unsigned char* in, unsigned char* out) noexcept;

    /// Whether the key schedule ran.
    bool isValid() const noexcept { return m_valid; }

protected:
    unsigned char m_s[256];
    unsigned char m_i;
    unsigned char m_j;
    bool m_valid;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_RC4_H
