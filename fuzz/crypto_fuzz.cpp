// Fuzzes the digests and ciphers for agreement between the processor's code and the portable
// code, and for round trips: AES padding and CBC/ECB/CFB, padDecrypt of arbitrary ciphertext,
// RC4. Input: a byte choosing key size and mode, then key and IV bytes, then the message.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>
#include <zkcommon/crypto/acceleration.h>
#include <zkcommon/crypto/aes.h>
#include <zkcommon/crypto/rc4.h>
#include <zkcommon/crypto/sha1.h>
#include <zkcommon/crypto/sha256.h>
#include <zkcommon/crypto/sha512.h>

using namespace ZkCommonNS;

namespace {

void check(bool condition) {
    if (!condition)
        std::abort();
}

using Bytes = std::vector<unsigned char>;

// Digests of `message` fed in two pieces split at `split`, concatenated.
Bytes digests(const uint8_t* message, size_t size, size_t split) {
    Bytes out(20 + 32 + 64);
    SHA1_CTX sha1;
    sha1.Update(message, static_cast<unsigned>(split));
    sha1.Update(message + split, static_cast<unsigned>(size - split));
    sha1.Final(out.data());
    SHA256_CTX sha256;
    sha256.Update(message, split);
    sha256.Update(message + split, size - split);
    sha256.Final(out.data() + 20);
    SHA512_CTX sha512;
    sha512.Update(message, split);
    sha512.Update(message + split, size - split);
    sha512.Final(out.data() + 52);
    return out;
}

struct AesRun {
    Bytes padded, back, block, raw;
    int paddedLength = 0, backLength = 0, blockBits = 0, rawLength = 0;
    bool operator==(const AesRun& other) const {
        return padded == other.padded && back == other.back && block == other.block &&
               raw == other.raw && paddedLength == other.paddedLength &&
               backLength == other.backLength && blockBits == other.blockBits &&
               rawLength == other.rawLength;
    }
};

AesRun aes(AES_Mode mode, const uint8_t* key, int keyBytes, const uint8_t* iv,
           const uint8_t* message, int size) {
    AesRun run;
    AES_Encryption encrypt(mode, key, keyBytes, iv);
    AES_Decryption decrypt(mode, key, keyBytes, iv);
    run.padded.assign(static_cast<size_t>(size) / 16 * 16 + 16, 0);
    run.back.assign(run.padded.size(), 0);
    run.block.assign(static_cast<size_t>(size), 0);
    run.raw.assign(static_cast<size_t>(size), 0);
    run.paddedLength = encrypt.padEncrypt(message, size, run.padded.data());
    if (run.paddedLength > 0)
        run.backLength = decrypt.padDecrypt(run.padded.data(), run.paddedLength, run.back.data());
    run.blockBits = encrypt.blockEncrypt(message, size * 8, run.block.data());
    // Arbitrary bytes as ciphertext: padDecrypt must refuse or strip, never overrun.
    run.rawLength = decrypt.padDecrypt(message, size, run.raw.data());
    return run;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 1 + 32 + 16 || size > 2048)
        return 0;
    const int keyBytes = 16 + 8 * (data[0] % 3);
    const AES_Mode mode = static_cast<AES_Mode>((data[0] >> 2) % 3);
    const uint8_t* key = data + 1;
    const uint8_t* iv = data + 33;
    const uint8_t* message = data + 49;
    // CFB takes 128 cipher calls a block: its messages are kept short to keep the runs fast.
    const size_t length = mode == AES_MODE_CFB1 ? std::min<size_t>(size - 49, 256) : size - 49;
    const size_t split = length == 0 ? 0 : data[0] % (length + 1);

    ZkCryptoAcceleration::setPortable(false);
    const Bytes fast = digests(message, length, split);
    const AesRun fastAes = aes(mode, key, keyBytes, iv, message, static_cast<int>(length));
    ZkCryptoAcceleration::setPortable(true);
    const Bytes portable = digests(message, length, length);
    const AesRun portableAes = aes(mode, key, keyBytes, iv, message, static_cast<int>(length));
    ZkCryptoAcceleration::setPortable(false);
    check(fast == portable);
    check(fastAes == portableAes);

    if (mode == AES_MODE_CFB1) {
        check(fastAes.paddedLength == AES_BAD_MODE);
    } else if (length > 0) {
        check(fastAes.paddedLength == static_cast<int>(length / 16 * 16 + 16));
        check(fastAes.backLength == static_cast<int>(length));
        check(std::memcmp(fastAes.back.data(), message, length) == 0);
        check(fastAes.rawLength == AES_BAD_DATA ||
              (fastAes.rawLength >= 0 && fastAes.rawLength < static_cast<int>(length)));
    }
    check(fastAes.blockBits == static_cast<int>(length / 16 * 128) || length == 0);

    Bytes stream(length), back(length);
    RC4_KEY rc4(keyBytes, key), rc4Back(keyBytes, key);
    rc4.RC4(static_cast<int>(length), message, stream.data());
    rc4Back.RC4(static_cast<int>(split), stream.data(), back.data());
    rc4Back.RC4(static_cast<int>(length - split), stream.data() + split, back.data() + split);
    check(length == 0 || std::memcmp(back.data(), message, length) == 0);
    return 0;
}
