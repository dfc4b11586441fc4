// Tests of the Base64 functions of ZkUtil: RFC 4648 vectors, streams, tolerant decoding.
#include "support.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>

using namespace ZkCommonNS;

namespace {

std::string decode(const UnicodeString& text) {
    std::ostringstream out;
    ZkUtil::decodeBase64(text.getBuffer(), text.length(), out);
    return out.str();
}

} // namespace

// clang-format off
TEST(ZkUtilBase64, Rfc4648Vectors) {
    struct Case {
        const char* plain;
        const char16_t* encoded;
    } cases[] = {
        {"", u""}, {"f", u"Zg=="}, {"fo", u"Zm8="}, {"foo", u"Zm9v"}, {"foob", u"Zm9vYg=="}, {"fooba", u"Zm9vYmE="}, {"foobar", u"Zm9vYmFy"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.plain);
        std::istringstream in(k.plain);
        EXPECT_EQ(ZkUtil::encodeBase64(in), UnicodeString(k.encoded));
        std::string plain(k.plain);
        EXPECT_EQ(ZkUtil::encodeBase64(reinterpret_cast<const unsigned char*>(plain.data()),
                                       static_cast<int>(plain.size())),
                  UnicodeString(k.encoded));
        EXPECT_EQ(decode(UnicodeString(k.encoded)), plain);
    }
}
// clang-format on

TEST(ZkUtilBase64, AllByteValuesRoundTripAcrossReadBlocks) {
    // Longer than one 3072-byte read block and not a multiple of three.
    std::string data;
    for (int i = 0; i < 10000; ++i)
        data.push_back(static_cast<char>((i * 7 + i / 256) & 0xFF));
    std::istringstream in(data);
    UnicodeString encoded = ZkUtil::encodeBase64(in, static_cast<int>(data.size()));
    EXPECT_EQ(encoded.length(), (10000 + 2) / 3 * 4);
    EXPECT_EQ(encoded.indexOf(u'\n'), -1);
    EXPECT_EQ(decode(encoded), data);
}

TEST(ZkUtilBase64, DecodingSkipsLineBreaksAndForeignCharacters) {
    EXPECT_EQ(decode(UnicodeString(u"Zm9v\r\nYmFy")), "foobar");
    EXPECT_EQ(decode(UnicodeString(u" Z m 9 v ")), "foo");
    EXPECT_EQ(decode(UnicodeString(u"Zm9v[]^_`YmFy")), "foobar");
    EXPECT_EQ(decode(UnicodeString(u"Zm9v\u3042YmFy")), "foobar");
}

TEST(ZkUtilBase64, EqualsSignEndsDecoding) {
    EXPECT_EQ(decode(UnicodeString(u"Zm8=Zm9v")), "fo");
    EXPECT_EQ(decode(UnicodeString(u"=Zm9v")), "");
}

TEST(ZkUtilBase64, TrailingPartialGroups) {
    EXPECT_EQ(decode(UnicodeString(u"Zm9vYg")), "foob");
    EXPECT_EQ(decode(UnicodeString(u"Zm9vYmE")), "fooba");
    // One character alone carries no whole byte.
    EXPECT_EQ(decode(UnicodeString(u"Zm9vY")), "foo");
}

TEST(ZkUtilBase64, NullAndZeroTerminatedInput) {
    std::ostringstream out;
    ZkUtil::decodeBase64(nullptr, 4, out);
    EXPECT_EQ(out.str(), "");
    ZkUtil::decodeBase64(u"Zm9v", -1, out);
    EXPECT_EQ(out.str(), "foo");
    EXPECT_EQ(utf8(ZkUtil::encodeBase64(nullptr, 3)), "");
    EXPECT_EQ(utf8(ZkUtil::encodeBase64(reinterpret_cast<const unsigned char*>("x"), 0)), "");
}

TEST(ZkUtilBase64, FailedStreamGivesEmptyText) {
    std::istringstream in("data");
    in.setstate(std::ios::failbit);
    EXPECT_TRUE(ZkUtil::encodeBase64(in, 4).isEmpty());
}

TEST(ZkUtilBase64, WrappedAndUnwrappedTextDecodeAlike) {
    std::string data;
    for (int i = 0; i < 5000; ++i)
        data.push_back(static_cast<char>((i * 131 + 17) & 0xFF));
    std::istringstream in(data);
    UnicodeString encoded = ZkUtil::encodeBase64(in);
    // Breaks at every line width from 1 to 80, so that the skipped characters meet every
    // position inside a group and the fast and the careful path take turns.
    for (int width = 1; width <= 80; ++width) {
        SCOPED_TRACE(width);
        UnicodeString wrapped;
        for (int i = 0; i < encoded.length(); i += width) {
            wrapped.append(encoded, i, width);
            wrapped.append(width % 3 == 0 ? u"\r\n" : u" ");
        }
        EXPECT_EQ(decode(wrapped), data);
    }
}
