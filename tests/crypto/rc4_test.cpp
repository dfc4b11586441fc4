// RC4_KEY against RFC 6229's key streams, and its handling of calls in pieces and bad keys.
#include "cryptotest.h"

#include <gtest/gtest.h>
#include <zkcommon/crypto/rc4.h>

using namespace ZkCommonNS;
using namespace zkcryptotest;

TEST(Rc4, Rfc6229KeyStreams) {
    const auto rows = readVectors("rfc6229.txt", 3); // key, offset, key stream there
    ASSERT_EQ(rows.size(), 14u * 18u);
    for (const auto& row : rows) {
        const std::string &keyHex = row[0], &streamHex = row[2];
        const size_t offset = std::stoul(row[1]);
        SCOPED_TRACE(keyHex + " " + row[1]);
        const Bytes key = fromHex(keyHex);
        RC4_KEY rc4(static_cast<int>(key.size()), key.data());
        // Zeros encrypt to the key stream itself; the skipped part goes in one call, the row in
        // another, so the state must carry across calls.
        Bytes zeros(offset + 16, 0), out(offset + 16, 0xee);
        if (offset > 0) {
            ASSERT_EQ(rc4.RC4(static_cast<int>(offset), zeros.data(), out.data()),
                      static_cast<int>(offset));
        }
        ASSERT_EQ(rc4.RC4(16, zeros.data() + offset, out.data() + offset), 16);
        EXPECT_EQ(toHex(out.data() + offset, 16), streamHex);
    }
}

TEST(Rc4, InPlaceRoundTripAndCopies) {
    const Bytes key = fromText("Secret");
    Bytes text = fromText("Attack at dawn, and bring the long documents along.");
    const Bytes original = text;
    RC4_KEY encrypt(static_cast<int>(key.size()), key.data());
    RC4_KEY decrypt = encrypt;
    encrypt.RC4(static_cast<int>(text.size()), text.data(), text.data());
    EXPECT_NE(text, original);
    // A copy goes on from the same point on its own: decrypting in two calls undoes it.
    decrypt.RC4(10, text.data(), text.data());
    decrypt.RC4(static_cast<int>(text.size()) - 10, text.data() + 10, text.data() + 10);
    EXPECT_EQ(text, original);
}

TEST(Rc4, NoKeyOrNoInputDoesNothing) {
    const unsigned char key[1] = {1};
    unsigned char in[4] = {1, 2, 3, 4}, out[4] = {9, 9, 9, 9};
    RC4_KEY empty(0, key), null(5, nullptr), good(1, key);
    EXPECT_FALSE(empty.isValid());
    EXPECT_FALSE(null.isValid());
    EXPECT_TRUE(good.isValid());
    EXPECT_EQ(empty.RC4(4, in, out), 0);
    EXPECT_EQ(null.RC4(4, in, out), 0);
    EXPECT_EQ(good.RC4(0, in, out), 0);
    EXPECT_EQ(good.RC4(-1, in, out), 0);
    EXPECT_EQ(good.RC4(4, nullptr, out), 0);
    EXPECT_EQ(toHex(out, 4), "09090909");
}
