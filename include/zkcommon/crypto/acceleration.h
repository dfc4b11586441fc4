// ZkCryptoAcceleration: which code paths the digests and ciphers take on this processor.
#ifndef ZKCOMMON_CRYPTO_ACCELERATION_H
#define ZKCOMMON_CRYPTO_ACCELERATION_H

#include "zkcommon/core/export.h"

namespace ZkCommonNS {

/// The digests and ciphers use the processor's SHA extensions (SHA-1, SHA-256), AES instructions,
/// and AVX2 with BMI2 (SHA-384, SHA-512) where it has them, found once at first use, and portable
/// code elsewhere. Setting the environment variable ZK_CRYPTO_PORTABLE to anything but "" or "0"
/// before the first use forces the portable code, as does setPortable(true). Results are the
/// same on every path.
class ZKCOMMON_API ZkCryptoAcceleration {
public:
    /// Whether SHA-1 and SHA-256 currently use the SHA extensions.
    static bool sha() noexcept;
    /// Whether AES currently uses the AES instructions.
    static bool aes() noexcept;
    /// Forces the portable code (true) or returns to what the processor offers (false). Takes
    /// effect at the next call of each operation; contexts and keys stay valid.
    static void setPortable(bool portable) noexcept;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_ACCELERATION_H
