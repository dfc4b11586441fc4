// Tests of the quoting functions of ZkUtil: the modes 3, 7 and 43, parsing, unquoting, URIs.
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

namespace {

std::string utf8(const UnicodeString& text) {
    std::string s;
    return text.isBogus() ? std::string("<bogus>") : text.toUTF8String(s);
}

::testing::AssertionResult sameText(const UnicodeString& actual, const UnicodeString& expected) {
    if (actual == expected && actual.isBogus() == expected.isBogus())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << "actual [" << utf8(actual) << "] expected [" << utf8(expected) << "]";
}

// clang-format off
const char16_t* const kRoundTripTexts[] = {
    u"", u"plain", u"'", u"\"", u"a\"b", u"it's", u"both ' and \"", u"\"\"''",          // quotes
    u"back\\slash", u"\\A already escaped", u"line\nbreak", u"cr\r\nlf", u"form\ffeed", // escapes
    u"tab\tstop", u"hex after break\nA1", u" leading and trailing ",                     // blanks
    u"\u65E5\u672C\u8A9E", u"emoji \U0001F600",                                           // beyond ASCII
};
// clang-format on

} // namespace

// clang-format off
TEST(ZkUtilQuoting, QuoteStringForms) {
    const int singleCss = ZkUtil::QUOTE_SINGLE | ZkUtil::QUOTE_BACKSLASH;
    const struct { const char16_t* text; int mode; const char16_t* expected; } cases[] = {
        // Mode 3 picks the quote the text lacks; with both inside, double quotes and the text as
        // it stands. Mode 7 doubles the inner quote; mode 43 escapes CSS style.
        {u"abc", 3, u"\"abc\""}, {u"a\"b", 3, u"'a\"b'"}, {u"a'b", 3, u"\"a'b\""}, {u"a'\"b", 3, u"\"a'\"b\""},
        {u"a'\"b", 7, u"\"a'\"\"b\""}, {u"a\"b", 7, u"'a\"b'"}, {u"x", 7, u"\"x\""},
        {u"a\nb", 43, u"\"a\\A b\""}, {u"a\nz", 43, u"\"a\\Az\""}, {u"a\n b", 43, u"\"a\\A  b\""},
        {u"a\fb\rc", 43, u"\"a\\C b\\D c\""}, {u"a\\z", 43, u"\"a\\5Cz\""}, {u"a\\1", 43, u"\"a\\5C 1\""},
        {u"a\"b", 43, u"'a\"b'"}, {u"a'\"b", 43, u"\"a'\\22 b\""},
        {u"it's", singleCss, u"'it\\27s'"}, {u"it'", singleCss, u"'it\\27'"}, // single quotes escape only the quote
        {u"a\nb", ZkUtil::QUOTE_BACKSLASH, u"a\\A b"},                          // no quote bits: no enclosure
    };
    for (const auto& k : cases)
        EXPECT_TRUE(sameText(ZkUtil::quoteString(k.text, k.mode), k.expected)) << utf8(k.text) << " " << k.mode;
    EXPECT_TRUE(sameText(ZkUtil::quoteUri(u"a.png"), u"url(\"a.png\")"));
    EXPECT_TRUE(sameText(ZkUtil::quoteUri(u"a\"b\".png"), u"url(\"a%22b%22.png\")"));
    EXPECT_TRUE(sameText(ZkUtil::quoteUri(u""), u"url(\"\")"));
}
// clang-format on

TEST(ZkUtilQuoting, UnicodeEscapes) {
    const int mode = ZkUtil::QUOTE_DOUBLE | ZkUtil::QUOTE_UNICODE;
    EXPECT_TRUE(sameText(ZkUtil::quoteString(u"a\u00E9\"\\'~\n", mode),
                         u"\"a\\u00E9\\u0022\\u005C\\u0027~\\u000A\""));
    const char16_t* end = nullptr;
    const char16_t* text = u"\"a\\u00E9\\u0022\" rest";
    EXPECT_TRUE(sameText(ZkUtil::parseString(text, &end, mode), u"a\u00E9\""));
    EXPECT_EQ(end, text + 15);
}

TEST(ZkUtilQuoting, NoQuoteBitsParseToTheEnd) {
    const char16_t* end = nullptr;
    const char16_t* text = u"  a\\A b";
    EXPECT_TRUE(sameText(ZkUtil::parseString(text, &end, ZkUtil::QUOTE_BACKSLASH), u"a\nb"));
    EXPECT_EQ(*end, u'\0');
}

TEST(ZkUtilQuoting, RoundTripInModes3And7And43) {
    for (int mode : {3, 7, 43}) {
        for (const char16_t* raw : kRoundTripTexts) {
            UnicodeString text(raw);
            SCOPED_TRACE("mode " + std::to_string(mode) + " [" + utf8(text) + "]");
            UnicodeString quoted = ZkUtil::quoteString(text, mode);
            EXPECT_TRUE(sameText(ZkUtil::unquoteString(quoted, mode), text))
                << "quoted [" << utf8(quoted) << "]";
        }
    }
}

// clang-format off
TEST(ZkUtilQuoting, ParseStringStopsBehindTheClosingQuote) {
    struct Case {
        const char16_t* text;
        int mode;
        const char16_t* expected; // null: bogus
        int consumed;
    } cases[] = {
        {u"'abc' def", 7, u"abc", 5}, {u"  \"abc\"", 7, u"abc", 7}, {u"'a''b'x", 7, u"a'b", 6}, {u"'a''b'x", 3, u"a", 3},
        {u"\"a\\\"b\"", 43, u"a\"b", 6}, {u"\"a\\\nb\"", 43, u"ab", 6}, {u"\"a\\\r\nb\"", 43, u"ab", 7}, {u"\"\\41 B\"", 43, u"AB", 7},
        {u"\"\\000041B\"", 43, u"AB", 10}, {u"\"\\0\"", 43, u"\uFFFD", 4},
        {u"\"\\110000\"", 43, u"\uFFFD", 9},
        {u"\"\\1F600\"", 43, u"\U0001F600", 8},
        {u"'open", 7, nullptr, 5}, {u"x'a'", 7, nullptr, 0}, {u"'a'", 1, nullptr, 0}, {u"\"a\"", 2, nullptr, 0}, {u"\"ab\\", 43, nullptr, 4},
    };
    for (const Case& k : cases) {
        UnicodeString source(k.text);
        SCOPED_TRACE(utf8(source));
        const char16_t* end = nullptr;
        UnicodeString result = ZkUtil::parseString(k.text, &end, k.mode);
        if (k.expected) {
            EXPECT_TRUE(sameText(result, k.expected));
            EXPECT_EQ(end - k.text, k.consumed);
        } else {
            EXPECT_TRUE(result.isBogus());
        }
    }
    EXPECT_TRUE(ZkUtil::parseString(nullptr, nullptr, 7).isBogus());
}
// clang-format on

// clang-format off
TEST(ZkUtilQuoting, UnquoteString) {
    struct Case {
        const char16_t* text;
        int mode;
        const char16_t* expected; // null: bogus
    } cases[] = {
        {u"  'abc'  ", 7, u"abc"}, {u"'a''b'", 7, u"a'b"}, {u"'a' trailing", 7, nullptr}, {u"abc", 7, nullptr}, {u"'unclosed", 7, nullptr},
        {u"\"a\"b\"", 3, u"a\"b"}, {u"'a'b'", 3, u"a'b"}, {u"\"a\"b'", 3, nullptr}, {u"\"a\"b\"", 43, nullptr},
        {u"abc", ZkUtil::QUOTE_BACKSLASH, u"abc"},
        {u"\"\"", 7, u""},
    };
    for (const Case& k : cases) {
        UnicodeString source(k.text);
        SCOPED_TRACE(utf8(source) + " mode " + std::to_string(k.mode));
        UnicodeString result = ZkUtil::unquoteString(source, k.mode);
        if (k.expected)
            EXPECT_TRUE(sameText(result, k.expected));
        else
            EXPECT_TRUE(result.isBogus()) << utf8(result);
    }
}
// clang-format on
