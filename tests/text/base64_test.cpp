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
    const char* cases[][2] = {
        {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"foob", "Zm9vYg=="}, {"fooba", "Zm9vYmE="}, {"foobar", "Zm9vYmFy"},
    };
    for (const auto& k : cases) {
        SCOPED_TRACE(k[0]);
        std::string plain(k[0]);
        std::istringstream in(plain);
        EXPECT_EQ(utf8(ZkUtil::encodeBase64(in)), k[1]);
        EXPECT_EQ(utf8(ZkUtil::encodeBase64(reinterpret_cast<const unsigned char*>(plain.data()),
                                            static_cast<int>(plain.size()))), k[1]);
        EXPECT_EQ(decode(UnicodeString::fromUTF8(k[1])), plain);
    }
}

TEST(ZkUtilBase64, DecodingIsTolerant) {
    // Line breaks and foreign characters are skipped, "=" ends the text, a partial group gives
    // its whole bytes.
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"Zm9v\r\nYmFy", "foobar"}, {u" Z m 9 v ", "foo"}, {u"Zm9v[]^_`YmFy", "foobar"}, {u"Zm9v\u3042YmFy", "foobar"},
        {u"Zm8=Zm9v", "fo"}, {u"=Zm9v", ""}, {u"Zm9vYg", "foob"}, {u"Zm9vYmE", "fooba"}, {u"Zm9vY", "foo"},
    };
    for (const auto& k : cases)
        EXPECT_EQ(decode(UnicodeString(k.first)), k.second) << utf8(UnicodeString(k.first));
}
// clang-format on

TEST(ZkUtilBase64, NullEmptyAndFailedInput) {
    std::ostringstream out;
    ZkUtil::decodeBase64(nullptr, 4, out);
    EXPECT_EQ(out.str(), "");
    ZkUtil::decodeBase64(u"Zm9v", -1, out);
    EXPECT_EQ(out.str(), "foo");
    EXPECT_EQ(utf8(ZkUtil::encodeBase64(nullptr, 3)), "");
    EXPECT_EQ(utf8(ZkUtil::encodeBase64(reinterpret_cast<const unsigned char*>("x"), 0)), "");
    std::istringstream failed("data");
    failed.setstate(std::ios::failbit);
    EXPECT_TRUE(ZkUtil::encodeBase64(failed, 4).isEmpty());
}

TEST(ZkUtilBase64, AllBytesRoundTripWrappedAtEveryWidth) {
    // Longer than one 3072-byte read block and not a multiple of three.
    std::string data;
    for (int i = 0; i < 10000; ++i)
        data.push_back(static_cast<char>((i * 7 + i / 256) & 0xFF));
    std::istringstream in(data);
    UnicodeString encoded = ZkUtil::encodeBase64(in, static_cast<int>(data.size()));
    EXPECT_EQ(encoded.length(), (10000 + 2) / 3 * 4);
    EXPECT_EQ(encoded.indexOf(u'\n'), -1);
    EXPECT_EQ(decode(encoded), data);
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
