// Forward declarations of the digest and cipher classes.
#ifndef ZKCOMMON_CRYPTO_FWD_H
#define ZKCOMMON_CRYPTO_FWD_H

namespace ZkCommonNS {
class MD5_CTX;
class SHA1_CTX;
class SHA256_CTX;
class SHA384_CTX;
class SHA512_CTX;
class RC4_KEY;
class AES_Base;
class AES_Encryption;
class AES_Decryption;
class ZkCryptoAcceleration;
} // namespace ZkCommonNS

#endif // ZKCOMMON_CRYPTO_FWD_H
