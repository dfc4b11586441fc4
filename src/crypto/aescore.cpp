// The portable AES: key expansion and one-block encryption and decryption with four 1 KB tables
// per direction, the tables built at compile time from the field arithmetic of FIPS 197.
#include "crypto/cryptoimpl.h"

#include <array>

namespace ZkCommonNS {
namespace detail {

namespace {

using Bytes = std::array<std::uint8_t, 256>;
using Words = std::array<std::uint32_t, 256>;

constexpr std::uint8_t xtime(std::uint8_t x) {
    return static_cast<std::uint8_t>((x << 1) ^ ((x & 0x80) != 0 ? 0x1b : 0));
}

constexpr std::uint8_t multiply(std::uint8_t a, std::uint8_t b) {
    std::uint8_t product = 0;
    for (; b != 0; b = static_cast<std::uint8_t>(b >> 1), a = xtime(a))
        if ((b & 1) != 0)
            product = static_cast<std::uint8_t>(product ^ a);
    return product;
}

constexpr std::uint8_t rotl8(std::uint8_t x, int n) {
    return static_cast<std::uint8_t>((x << n) | (x >> (8 - n)));
}

// FIPS 197 5.1.1: the multiplicative inverse followed by the affine map. p runs over the powers
// of the generator 3 while q runs over the powers of its inverse, so q is always 1 / p.
constexpr Bytes makeSbox() {
    Bytes sbox{};
    std::uint8_t p = 1, q = 1;
    do {
        p = static_cast<std::uint8_t>(p ^ xtime(p));
        q = static_cast<std::uint8_t>(q ^ (q << 1));
        q = static_cast<std::uint8_t>(q ^ (q << 2));
        q = static_cast<std::uint8_t>(q ^ (q << 4));
        if ((q & 0x80) != 0)
            q = static_cast<std::uint8_t>(q ^ 0x09);
        sbox[p] = static_cast<std::uint8_t>(q ^ rotl8(q, 1) ^ rotl8(q, 2) ^ rotl8(q, 3) ^
                                            rotl8(q, 4) ^ 0x63);
    } while (p != 1);
    sbox[0] = 0x63;
    return sbox;
}

constexpr Bytes invert(const Bytes& box) {
    Bytes inverse{};
    for (int i = 0; i < 256; ++i)
        inverse[box[i]] = static_cast<std::uint8_t>(i);
    return inverse;
}

constexpr std::uint32_t word(std::uint8_t b0, std::uint8_t b1, std::uint8_t b2, std::uint8_t b3) {
    return (std::uint32_t(b0) << 24) | (std::uint32_t(b1) << 16) | (std::uint32_t(b2) << 8) | b3;
}

constexpr std::uint32_t rotr(std::uint32_t x, int n) {
    return n == 0 ? x : (x >> n) | (x << (32 - n));
}

// Column i of MixColumns (2 3 1 1) applied to S[x], rotated right by 8 * rotation.
constexpr Words makeEncTable(const Bytes& sbox, int rotation) {
    Words table{};
    for (int i = 0; i < 256; ++i) {
        const std::uint8_t s = sbox[i];
        table[i] = rotr(word(multiply(s, 2), s, s, multiply(s, 3)), 8 * rotation);
    }
    return table;
}

// The same for InvMixColumns (14 9 13 11) over InvS[x].
constexpr Words makeDecTable(const Bytes& inverse, int rotation) {
    Words table{};
    for (int i = 0; i < 256; ++i) {
        const std::uint8_t s = inverse[i];
        table[i] = rotr(word(multiply(s, 14), multiply(s, 9), multiply(s, 13), multiply(s, 11)),
                        8 * rotation);
    }
    return table;
}

constexpr Bytes kSbox = makeSbox();
constexpr Bytes kInvSbox = invert(kSbox);
constexpr Words kTe0 = makeEncTable(kSbox, 0), kTe1 = makeEncTable(kSbox, 1),
                kTe2 = makeEncTable(kSbox, 2), kTe3 = makeEncTable(kSbox, 3);
constexpr Words kTd0 = makeDecTable(kInvSbox, 0), kTd1 = makeDecTable(kInvSbox, 1),
                kTd2 = makeDecTable(kInvSbox, 2), kTd3 = makeDecTable(kInvSbox, 3);

static_assert(kSbox[0x53] == 0xed && kSbox[0x00] == 0x63 && kSbox[0xff] == 0x16,
              "FIPS 197 figure 7");
static_assert(kInvSbox[0xed] == 0x53, "FIPS 197 figure 14");

inline std::uint32_t subWord(std::uint32_t w) noexcept {
    return word(kSbox[w >> 24], kSbox[(w >> 16) & 0xff], kSbox[(w >> 8) & 0xff], kSbox[w & 0xff]);
}

// InvMixColumns of one round-key word: the decryption tables undo the S-box first.
inline std::uint32_t invMixColumn(std::uint32_t w) noexcept {
    return kTd0[kSbox[w >> 24]] ^ kTd1[kSbox[(w >> 16) & 0xff]] ^ kTd2[kSbox[(w >> 8) & 0xff]] ^
           kTd3[kSbox[w & 0xff]];
}

inline std::uint32_t byteAt(std::uint32_t w, int shift) noexcept {
    return (w >> shift) & 0xff;
}

} // namespace

void aesExpandKey(AesKeySchedule& schedule, const unsigned char* key, int keyBytes) noexcept {
    // FIPS 197 5.2.
    const int nk = keyBytes / 4;
    const int rounds = nk + 6;
    const int total = 4 * (rounds + 1);
    schedule.rounds = rounds;
    std::uint32_t* w = schedule.encWords;
    for (int i = 0; i < nk; ++i)
        w[i] = loadBE32(key + 4 * i);
    std::uint8_t rcon = 1;
    for (int i = nk; i < total; ++i) {
        std::uint32_t temp = w[i - 1];
        if (i % nk == 0) {
            temp = subWord((temp << 8) | (temp >> 24)) ^ (std::uint32_t(rcon) << 24);
            rcon = xtime(rcon);
        } else if (nk > 6 && i % nk == 4) {
            temp = subWord(temp);
        }
        w[i] = w[i - nk] ^ temp;
    }
    // FIPS 197 5.3.5: the equivalent inverse cipher takes the round keys in reverse order, with
    // InvMixColumns applied to all but the first and the last.
    std::uint32_t* d = schedule.decWords;
    for (int round = 0; round <= rounds; ++round)
        for (int c = 0; c < 4; ++c) {
            const std::uint32_t k = w[4 * (rounds - round) + c];
            d[4 * round + c] = round == 0 || round == rounds ? k : invMixColumn(k);
        }
    for (int i = 0; i < total; ++i) {
        storeBE32(schedule.encBytes + 4 * i, w[i]);
        storeBE32(schedule.decBytes + 4 * i, d[i]);
    }
}

void aesEncryptBlock(const AesKeySchedule& key, const unsigned char* in,
                     unsigned char* out) noexcept {
    const std::uint32_t* rk = key.encWords;
    std::uint32_t s0 = loadBE32(in) ^ rk[0], s1 = loadBE32(in + 4) ^ rk[1];
    std::uint32_t s2 = loadBE32(in + 8) ^ rk[2], s3 = loadBE32(in + 12) ^ rk[3];
    for (int round = 1; round < key.rounds; ++round) {
        rk += 4;
        const std::uint32_t t0 =
            kTe0[s0 >> 24] ^ kTe1[byteAt(s1, 16)] ^ kTe2[byteAt(s2, 8)] ^ kTe3[s3 & 0xff] ^ rk[0];
        const std::uint32_t t1 =
            kTe0[s1 >> 24] ^ kTe1[byteAt(s2, 16)] ^ kTe2[byteAt(s3, 8)] ^ kTe3[s0 & 0xff] ^ rk[1];
        const std::uint32_t t2 =
            kTe0[s2 >> 24] ^ kTe1[byteAt(s3, 16)] ^ kTe2[byteAt(s0, 8)] ^ kTe3[s1 & 0xff] ^ rk[2];
        const std::uint32_t t3 =
            kTe0[s3 >> 24] ^ kTe1[byteAt(s0, 16)] ^ kTe2[byteAt(s1, 8)] ^ kTe3[s2 & 0xff] ^ rk[3];
        s0 = t0, s1 = t1, s2 = t2, s3 = t3;
    }
    rk += 4;
    // The last round has no MixColumns: S-box, ShiftRows and the key.
    storeBE32(out,
              word(kSbox[s0 >> 24], kSbox[byteAt(s1, 16)], kSbox[byteAt(s2, 8)], kSbox[s3 & 0xff]) ^
                  rk[0]);
    storeBE32(out + 4,
              word(kSbox[s1 >> 24], kSbox[byteAt(s2, 16)], kSbox[byteAt(s3, 8)], kSbox[s0 & 0xff]) ^
                  rk[1]);
    storeBE32(out + 8,
              word(kSbox[s2 >> 24], kSbox[byteAt(s3, 16)], kSbox[byteAt(s0, 8)], kSbox[s1 & 0xff]) ^
                  rk[2]);
    storeBE32(out + 12,
              word(kSbox[s3 >> 24], kSbox[byteAt(s0, 16)], kSbox[byteAt(s1, 8)], kSbox[s2 & 0xff]) ^
                  rk[3]);
}

void aesDecryptBlock(const AesKeySchedule& key, const unsigned char* in,
                     unsigned char* out) noexcept {
    const std::uint32_t* rk = key.decWords;
    std::uint32_t s0 = loadBE32(in) ^ rk[0], s1 = loadBE32(in + 4) ^ rk[1];
    std::uint32_t s2 = loadBE32(in + 8) ^ rk[2], s3 = loadBE32(in + 12) ^ rk[3];
    for (int round = 1; round < key.rounds; ++round) {
        rk += 4;
        const std::uint32_t t0 =
            kTd0[s0 >> 24] ^ kTd1[byteAt(s3, 16)] ^ kTd2[byteAt(s2, 8)] ^ kTd3[s1 & 0xff] ^ rk[0];
        const std::uint32_t t1 =
            kTd0[s1 >> 24] ^ kTd1[byteAt(s0, 16)] ^ kTd2[byteAt(s3, 8)] ^ kTd3[s2 & 0xff] ^ rk[1];
        const std::uint32_t t2 =
            kTd0[s2 >> 24] ^ kTd1[byteAt(s1, 16)] ^ kTd2[byteAt(s0, 8)] ^ kTd3[s3 & 0xff] ^ rk[2];
        const std::uint32_t t3 =
            kTd0[s3 >> 24] ^ kTd1[byteAt(s2, 16)] ^ kTd2[byteAt(s1, 8)] ^ kTd3[s0 & 0xff] ^ rk[3];
        s0 = t0, s1 = t1, s2 = t2, s3 = t3;
    }
    rk += 4;
    storeBE32(out, word(kInvSbox[s0 >> 24], kInvSbox[byteAt(s3, 16)], kInvSbox[byteAt(s2, 8)],
                        kInvSbox[s1 & 0xff]) ^
                       rk[0]);
    storeBE32(out + 4, word(kInvSbox[s1 >> 24], kInvSbox[byteAt(s0, 16)], kInvSbox[byteAt(s3, 8)],
                            kInvSbox[s2 & 0xff]) ^
                           rk[1]);
    storeBE32(out + 8, word(kInvSbox[s2 >> 24], kInvSbox[byteAt(s1, 16)], kInvSbox[byteAt(s0, 8)],
                            kInvSbox[s3 & 0xff]) ^
                           rk[2]);
    storeBE32(out + 12, word(kInvSbox[s3 >> 24], kInvSbox[byteAt(s2, 16)], kInvSbox[byteAt(s1, 8)],
                             kInvSbox[s0 & 0xff]) ^
                            rk[3]);
}

} // namespace detail
} // namespace ZkCommonNS
