// AES_Base, AES_Encryption and AES_Decryption: the AES block cipher (FIPS 197) in ECB, CBC and
// 1-bit CFB mode, with PKCS#7 padding.
#ifndef ZKCOMMON_CRYPTO_AES_H
#define ZKCOMMON_CRYPTO_AES_H

#include "zkcommon/core/export.h"

#include <memory>

namespace ZkCommonNS {

namespace detail {
struct AesKeySchedule;
}

/// The chaining modes.
enum AES_Mode : int {
    AES_MODE_ECB = 0,
    AES_MODE_CBC = 1,
    AES_MODE_CFB1 = 2, ///< cipher feedback, one bit at a time (most significant bit first)
};

/// Result codes of the four operations; a result of 0 or above counts what was done.
enum AES_Result {
    AES_NOTHING_DONE = 0,   ///< a null buffer, or a length of 0 or below
    AES_BAD_MODE = -1,      ///< the mode is unknown, or padding was asked of CFB
    AES_BAD_KEY = -5,       ///< no key schedule: the key length was not 16, 24 or 32, or no memory
    AES_BAD_DIRECTION = -6, ///< the key was set up for the other direction
    AES_BAD_DATA = -7,      ///< bad padding, or a padded length that is no multiple of 16
};

/// What the two directions share. Every call is one message: it starts from the IV given at
/// construction, so one object encrypts or decrypts any number of messages alike. `in` may
/// equal `out`; other overlaps are not allowed. The state checks come first, in the order key
/// (AES_BAD_KEY), direction (AES_BAD_DIRECTION), mode (AES_BAD_MODE), then the input
/// (AES_NOTHING_DONE).
///
/// Copying an object shares its key schedule, which is never changed after construction, so
/// copies may be used from different threads.
class ZKCOMMON_API AES_Base {
public:
    static constexpr int kBlockBytes = 16;

    virtual ~AES_Base() = 0;

    /// Encrypts the whole 16-byte blocks of `lengthBits` bits at `in` into `out`; a remainder
    /// of less than a block is left alone. Returns the number of bits processed.
    int blockEncrypt(const unsigned char* in, int lengthBits, unsigned char* out) const noexcept;
    /// Decrypts like blockEncrypt.
    int blockDecrypt(const unsigned char* in, int lengthBits, unsigned char* out) const noexcept;
    /// Encrypts `lengthBytes` bytes padded to whole blocks as PKCS#7 does (1 to 16 bytes each
    /// holding the count; a whole block when the input is whole). `out` takes
    /// lengthBytes / 16 * 16 + 16 bytes. ECB and CBC only. Returns the number of bytes written,
    /// or AES_BAD_DATA when that number would not fit an int.
    int padEncrypt(const unsigned char* in, int lengthBytes, unsigned char* out) const noexcept;
    /// Decrypts `lengthBytes` bytes (a multiple of 16) and checks and strips the padding;
    /// writes only message bytes to `out`. Returns the message length, or AES_BAD_DATA for a
    /// length that is no multiple of 16 or a bad padding, in which case `out` holds nothing of
    /// the message (the bytes written are cleared). ECB and CBC only.
    int padDecrypt(const unsigned char* in, int lengthBytes, unsigned char* out) const noexcept;

    /// Whether a key schedule was set up (the key length was 16, 24 or 32).
    bool hasKey() const noexcept { return m_key != nullptr; }
    AES_Mode getMode() const noexcept { return m_mode; }

protected:
    /// Sets up the schedule for `keyBytes` bytes of `key` for the given direction; a null `iv`
    /// is sixteen zero bytes.
    AES_Base(AES_Mode mode, const unsigned char* key, int keyBytes, const unsigned char* iv,
             bool encrypt) noexcept;
    AES_Base(const AES_Base&) = default;
    AES_Base& operator=(const AES_Base&) = default;

    /// 0 when an operation for `encrypt` may go ahead, else its state code.
    int checkState(bool encrypt, bool padded) const noexcept;

    std::shared_ptr<const detail::AesKeySchedule> m_key;
    AES_Mode m_mode;
    bool m_encrypt;
    unsigned char m_iv[16];
};

/// An AES key set up for encryption: the decrypting operations answer AES_BAD_DIRECTION.
class ZKCOMMON_API AES_Encryption : public AES_Base {
public:
    /// `keyBytes` is 16, 24 or 32 (10, 12 or 14 rounds); any other length, or a null key,
    /// sets up no schedule and every operation answers AES_BAD_KEY (as when no memory is left
    /// for the schedule).
    AES_Encryption(AES_Mode mode, const unsigned char* key, int keyBytes,
                   const unsigned char* iv = nullptr) noexcept;
    ~AES_Encryption() override;
};

/// An AES key set up for decryption: the encrypting operations answer AES_BAD_DIRECTION.
class ZKCOMMON_API AES_Decryption : public AES_Base {
public:
    /// As AES_Encryption. In CFB mode the cipher runs forwards in both directions, and the
    /// schedule is set up accordingly.
    AES_Decryption(AES_Mode mode, const unsigned char* key, int keyBytes,
                   const unsigned char* iv = nullptr) noexcept;
    ~AES_Decryption() override;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_AES_H
