// AES_Base, AES_Encryption and AES_Decryption: the state checks, the chaining modes and PKCS#7
// padding over the block functions, taking the AES instructions where the processor has them.
#include "zkcommon/crypto/aes.h"

#include "crypto/cryptoimpl.h"

#include <cstring>
#include <new>

namespace ZkCommonNS {

namespace {

using detail::AesKeySchedule;

constexpr int kBlock = 16;

inline void xorBlock(unsigned char* target, const unsigned char* with) noexcept {
    for (int i = 0; i < kBlock; ++i)
        target[i] ^= with[i];
}

// ECB and CBC over `blocks` blocks; `in` may equal `out`. Every call starts from `iv`.
void encryptBlocks(const AesKeySchedule& key, AES_Mode mode, const unsigned char* iv,
                   const unsigned char* in, unsigned char* out, std::size_t blocks) noexcept {
    if (mode == AES_MODE_ECB) {
#if ZK_CRYPTO_X86
        if (detail::useAesInstructions())
            return detail::aesEcbEncryptNi(key, in, out, blocks);
#endif
        for (std::size_t i = 0; i < blocks; ++i)
            detail::aesEncryptBlock(key, in + kBlock * i, out + kBlock * i);
        return;
    }
    unsigned char chain[kBlock];
    std::memcpy(chain, iv, kBlock);
#if ZK_CRYPTO_X86
    if (detail::useAesInstructions())
        return detail::aesCbcEncryptNi(key, chain, in, out, blocks);
#endif
    for (std::size_t i = 0; i < blocks; ++i) {
        xorBlock(chain, in + kBlock * i);
        detail::aesEncryptBlock(key, chain, chain);
        std::memcpy(out + kBlock * i, chain, kBlock);
    }
}

void decryptBlocks(const AesKeySchedule& key, AES_Mode mode, const unsigned char* iv,
                   const unsigned char* in, unsigned char* out, std::size_t blocks) noexcept {
    if (mode == AES_MODE_ECB) {
#if ZK_CRYPTO_X86
        if (detail::useAesInstructions())
            return detail::aesEcbDecryptNi(key, in, out, blocks);
#endif
        for (std::size_t i = 0; i < blocks; ++i)
            detail::aesDecryptBlock(key, in + kBlock * i, out + kBlock * i);
        return;
    }
    unsigned char chain[kBlock];
    std::memcpy(chain, iv, kBlock);
#if ZK_CRYPTO_X86
    if (detail::useAesInstructions())
        return detail::aesCbcDecryptNi(key, chain, in, out, blocks);
#endif
    for (std::size_t i = 0; i < blocks; ++i) {
        // Kept before writing, since `out` may be `in`.
        unsigned char cipher[kBlock];
        std::memcpy(cipher, in + kBlock * i, kBlock);
        detail::aesDecryptBlock(key, cipher, out + kBlock * i);
        xorBlock(out + kBlock * i, chain);
        std::memcpy(chain, cipher, kBlock);
    }
}

void encryptOne(const AesKeySchedule& key, const unsigned char* in, unsigned char* out) noexcept {
#if ZK_CRYPTO_X86
    if (detail::useAesInstructions())
        return detail::aesEcbEncryptNi(key, in, out, 1);
#endif
    detail::aesEncryptBlock(key, in, out);
}

// CFB with 1-bit feedback (SP 800-38A 6.3, s = 1): each bit of the message, most significant
// first, is XORed with the top bit of the encrypted shift register, and the ciphertext bit is
// shifted into the register from the right.
void cfb1(const AesKeySchedule& key, const unsigned char* iv, const unsigned char* in,
          unsigned char* out, std::size_t bytes, bool encrypt) noexcept {
    unsigned char reg[kBlock];
    unsigned char stream[kBlock];
    std::memcpy(reg, iv, kBlock);
    for (std::size_t n = 0; n < bytes; ++n) {
        const unsigned char inByte = in[n];
        unsigned char outByte = 0;
        for (int bit = 7; bit >= 0; --bit) {
            encryptOne(key, reg, stream);
            const unsigned inBit = (inByte >> bit) & 1u;
            const unsigned outBit = inBit ^ (stream[0] >> 7);
            outByte = static_cast<unsigned char>(outByte | (outBit << bit));
            const unsigned feedback = encrypt ? outBit : inBit;
            for (int i = 0; i < kBlock - 1; ++i)
                reg[i] = static_cast<unsigned char>((reg[i] << 1) | (reg[i + 1] >> 7));
            reg[kBlock - 1] = static_cast<unsigned char>((reg[kBlock - 1] << 1) | feedback);
        }
        out[n] = outByte;
    }
}

// The round keys are the key: they are cleared before the memory goes back. The volatile
// stores keep the compiler from dropping the clearing of memory about to be freed.
void wipeSchedule(AesKeySchedule* schedule) noexcept {
    volatile unsigned char* bytes = reinterpret_cast<volatile unsigned char*>(schedule);
    for (std::size_t i = 0; i < sizeof *schedule; ++i)
        bytes[i] = 0;
    delete schedule;
}

} // namespace

AES_Base::AES_Base(AES_Mode mode, const unsigned char* key, int keyBytes, const unsigned char* iv,
                   bool encrypt) noexcept
    : m_mode(mode), m_encrypt(encrypt), m_iv() {
    if (iv != nullptr)
        std::memcpy(m_iv, iv, kBlock);
    if (key == nullptr || (keyBytes != 16 && keyBytes != 24 && keyBytes != 32))
        return;
    // Out of memory leaves the object without a key, as a bad key length does: the operations
    // then answer AES_BAD_KEY and nothing is thrown.
    try {
        std::shared_ptr<AesKeySchedule> schedule(new AesKeySchedule, wipeSchedule);
        detail::aesExpandKey(*schedule, key, keyBytes);
        m_key = std::move(schedule);
    } catch (const std::bad_alloc&) {
        m_key.reset();
    }
}

AES_Base::~AES_Base() = default;

int AES_Base::checkState(bool encrypt, bool padded) const noexcept {
    if (m_key == nullptr)
        return AES_BAD_KEY;
    if (encrypt != m_encrypt)
        return AES_BAD_DIRECTION;
    if (m_mode != AES_MODE_ECB && m_mode != AES_MODE_CBC && (padded || m_mode != AES_MODE_CFB1))
        return AES_BAD_MODE;
    return 0;
}

int AES_Base::blockEncrypt(const unsigned char* in, int lengthBits,
                           unsigned char* out) const noexcept {
    if (const int state = checkState(/*encrypt=*/true, /*padded=*/false))
        return state;
    if (in == nullptr || out == nullptr || lengthBits <= 0)
        return AES_NOTHING_DONE;
    const std::size_t blocks = static_cast<std::size_t>(lengthBits) / 128;
    if (m_mode == AES_MODE_CFB1)
        cfb1(*m_key, m_iv, in, out, blocks * kBlock, /*encrypt=*/true);
    else
        encryptBlocks(*m_key, m_mode, m_iv, in, out, blocks);
    return static_cast<int>(blocks * 128);
}

int AES_Base::blockDecrypt(const unsigned char* in, int lengthBits,
                           unsigned char* out) const noexcept {
    if (const int state = checkState(/*encrypt=*/false, /*padded=*/false))
        return state;
    if (in == nullptr || out == nullptr || lengthBits <= 0)
        return AES_NOTHING_DONE;
    const std::size_t blocks = static_cast<std::size_t>(lengthBits) / 128;
    if (m_mode == AES_MODE_CFB1)
        cfb1(*m_key, m_iv, in, out, blocks * kBlock, /*encrypt=*/false);
    else
        decryptBlocks(*m_key, m_mode, m_iv, in, out, blocks);
    return static_cast<int>(blocks * 128);
}

int AES_Base::padEncrypt(const unsigned char* in, int lengthBytes,
                         unsigned char* out) const noexcept {
    if (const int state = checkState(/*encrypt=*/true, /*padded=*/true))
        return state;
    if (in == nullptr || out == nullptr || lengthBytes <= 0)
        return AES_NOTHING_DONE;
    // The result must fit the int it is returned in.
    if (lengthBytes > 0x7fffffff - kBlock)
        return AES_BAD_DATA;
    const std::size_t whole = static_cast<std::size_t>(lengthBytes) / kBlock;
    const std::size_t rest = static_cast<std::size_t>(lengthBytes) % kBlock;
    unsigned char last[kBlock];
    std::memcpy(last, in + whole * kBlock, rest);
    std::memset(last + rest, static_cast<int>(kBlock - rest), kBlock - rest);
    encryptBlocks(*m_key, m_mode, m_iv, in, out, whole);
    // The chain goes on from the last whole ciphertext block.
    const unsigned char* chain = whole == 0 ? m_iv : out + (whole - 1) * kBlock;
    encryptBlocks(*m_key, m_mode, chain, last, out + whole * kBlock, 1);
    return static_cast<int>((whole + 1) * kBlock);
}

int AES_Base::padDecrypt(const unsigned char* in, int lengthBytes,
                         unsigned char* out) const noexcept {
    if (const int state = checkState(/*encrypt=*/false, /*padded=*/true))
        return state;
    if (in == nullptr || out == nullptr || lengthBytes <= 0)
        return AES_NOTHING_DONE;
    if (lengthBytes % kBlock != 0)
        return AES_BAD_DATA;
    const std::size_t whole = static_cast<std::size_t>(lengthBytes) / kBlock - 1;
    // The last block goes to a buffer of its own: only its message bytes reach `out`. Its chain
    // block is read before `out`, which may be `in`, is written.
    unsigned char chain[kBlock];
    std::memcpy(chain, whole == 0 ? m_iv : in + (whole - 1) * kBlock, kBlock);
    unsigned char last[kBlock];
    decryptBlocks(*m_key, m_mode, chain, in + whole * kBlock, last, 1);
    decryptBlocks(*m_key, m_mode, m_iv, in, out, whole);
    // Checked without branching on the bytes: the filler is 1 to 16 copies of its count.
    const unsigned pad = last[kBlock - 1];
    unsigned bad = (pad - 1u) >> 8 | (16u - pad) >> 8; // pad == 0 or pad > 16
    for (unsigned i = 0; i < static_cast<unsigned>(kBlock); ++i) {
        const unsigned inPad = (static_cast<unsigned>(kBlock) - 1u - i - pad) >> 8 & 1u;
        bad |= inPad & ((last[i] ^ pad) != 0 ? 1u : 0u);
    }
    if (bad != 0) {
        std::memset(out, 0, whole * kBlock);
        std::memset(last, 0, sizeof last);
        return AES_BAD_DATA;
    }
    std::memcpy(out + whole * kBlock, last, kBlock - pad);
    std::memset(last, 0, sizeof last);
    return static_cast<int>(whole * kBlock + kBlock - pad);
}

AES_Encryption::AES_Encryption(AES_Mode mode, const unsigned char* key, int keyBytes,
                               const unsigned char* iv) noexcept
    : AES_Base(mode, key, keyBytes, iv, /*encrypt=*/true) {}

AES_Encryption::~AES_Encryption() = default;

AES_Decryption::AES_Decryption(AES_Mode mode, const unsigned char* key, int keyBytes,
                               const unsigned char* iv) noexcept
    : AES_Base(mode, key, keyBytes, iv, /*encrypt=*/false) {}

AES_Decryption::~AES_Decryption() = default;

} // namespace ZkCommonNS
