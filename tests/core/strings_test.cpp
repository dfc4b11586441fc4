// Tests of the small string carriers: the shared empty and bogus strings, ZkCStr, ZkUtfStr.
#include "zkcommon/core/strings.h"

#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

using namespace ZkCommonNS;

TEST(ZkStrings, SharedEmptyAndBogus) {
    // The getters make theirs on first use, ready even for another static initialiser.
    EXPECT_TRUE(ZkEmptyString::getEmptyString().isEmpty());
    EXPECT_FALSE(ZkEmptyString::getEmptyString().isBogus());
    EXPECT_TRUE(ZkBogusString::getBogusString().isBogus());
    EXPECT_TRUE(ZkEmptyString::EMPTY_VALUE.isEmpty() && ZkBogusString::BOGUS_VALUE.isBogus());
}

TEST(ZkCStr, EncodesInTheNamedEncodingOrUtf8) {
    // clang-format off
    const struct { const char16_t* text; const char* encoding; const char* bytes; bool back; } cases[] = {
        {u"/tmp/\u65E5\u672C.txt", nullptr, "/tmp/\xE6\x97\xA5\xE6\x9C\xAC.txt", true}, {u"caf\u00E9", "ISO-8859-1", "caf\xE9", true},
        {u"\u3042", "Shift_JIS", "\x82\xA0", true}, {u"\u00E9", "no-such-encoding", "\xC3\xA9", false}, // falls back to UTF-8
    };
    // clang-format on
    for (const auto& k : cases) {
        const ZkCStr text(UnicodeString(k.text), k.encoding);
        EXPECT_STREQ(text.c_str(), k.bytes);
        EXPECT_EQ(text.length8(), int(std::strlen(k.bytes)));
        if (k.back) {
            EXPECT_EQ(ZkCStr(k.bytes, k.encoding ? k.encoding : "UTF-8"), UnicodeString(k.text));
        }
    }
    EXPECT_EQ(ZkCStr(UnicodeString(u"x")).getEncoding(), "UTF-8");
}

TEST(ZkCStr, BytesFollowChangesOfTheText) {
    ZkCStr text(UnicodeString(u"abc"));
    EXPECT_STREQ(text.c_str(), "abc");
    text.append(u"def");
    EXPECT_STREQ(text.c_str(), "abcdef");
    text = UnicodeString(u"x");
    EXPECT_STREQ(text.c_str(), "x");
    ZkCStr copy(text);
    EXPECT_STREQ(copy.c_str(), "x");
    ZkCStr nothing(static_cast<const char*>(nullptr), "UTF-8");
    EXPECT_TRUE(nothing.isEmpty());
    EXPECT_STREQ(nothing.c_str(), "");
}

TEST(ZkUtfStr, XmlEscapingInOrder) {
    ZkUtfStr text(UnicodeString(u"a&b<c>\"d\"&amp;"), true);
    EXPECT_EQ(text, UnicodeString(u"a&amp;b&lt;c&gt;&quot;d&quot;&amp;amp;"));
    EXPECT_STREQ(text.c_str(), "a&amp;b&lt;c&gt;&quot;d&quot;&amp;amp;");
    ZkUtfStr plain(UnicodeString(u"<x>"), false);
    EXPECT_STREQ(plain.c_str(), "<x>");
}

TEST(ZkUtfStr, DecodesUtf8) {
    ZkUtfStr text("\xE6\x97\xA5");
    EXPECT_EQ(text, UnicodeString(u"\u65E5"));
    ZkUtfStr bad("a\xFF");
    EXPECT_EQ(bad, UnicodeString(u"a\uFFFD"));
}

TEST(ZkCStr, SharedValueReadFromManyThreads) {
    // The 8-bit form is made on first use inside const calls; concurrent readers must agree
    // (and a ThreadSanitizer run sees no race).
    const ZkCStr shared(UnicodeString(u"f\u00FCr-alle.xml"), "ISO-8859-1");
    std::vector<std::thread> readers;
    std::vector<std::string> seen(4);
    for (int t = 0; t < 4; ++t)
        readers.emplace_back([&shared, &seen, t] {
            for (int i = 0; i < 1000; ++i)
                seen[size_t(t)] = std::string(shared.c_str(), size_t(shared.length8()));
        });
    for (std::thread& reader : readers)
        reader.join();
    for (const std::string& bytes : seen)
        EXPECT_EQ(bytes, "f\xFCr-alle.xml");
}
