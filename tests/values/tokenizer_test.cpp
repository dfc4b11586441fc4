// Tests of ZkTokenizer: raw token streams of every tokenizer type, tokens as values, signs and
// exponents, functions, separated items, separators and push-back.
#include "support.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/tokenizer.h"

#include <gtest/gtest.h>

using namespace ZkCommonNS;

namespace {

using T = ZkTokenizer;

// The raw tokens of `text`, one word each.
std::string tokens(const UnicodeString& text, T::TokenizerType type) {
    T t(text, type);
    std::string out;
    for (int n = 0; n < 100; ++n) {
        int token = t.nextToken();
        if (token == T::TokenEnd)
            break;
        if (!out.empty())
            out += ' ';
        switch (token) {
        case T::TokenNumber:
            out += "num(" + utf8(ZkUtil::toString(t.getNumber())) +
                   (t.hasDecimalPoint() ? "." : "") + "," + utf8(t.getStr()) + ")";
            break;
        case T::TokenName:
            out += "name(" + utf8(t.getStr()) + ")";
            break;
        case T::TokenString:
            out += "str(" + utf8(t.getStr()) + ")";
            break;
        case T::TokenHashColor:
        case T::TokenHashColorAlpha:
            out += (token == T::TokenHashColor ? "hash(" : "hasha(") +
                   utf8(ZkUtil::toHexString(static_cast<long long>(t.getNumber()), 6)) + ")";
            break;
        default:
            if (token > 32 && token < 127)
                out += std::string("'") + static_cast<char>(token) + "'";
            else
                out += "U+" + utf8(ZkUtil::toHexString(token, 4));
        }
    }
    return out;
}

// The values of nextTokenValueSigned up to the end, each as type:unit:text.
std::string values(const UnicodeString& text, T::TokenizerType type = T::TokenizerDefault) {
    T t(text, type);
    std::string out;
    for (int n = 0; n < 100; ++n) {
        ZkValue v = t.nextTokenValueSigned();
        if (v.isNull())
            break;
        if (!out.empty())
            out += ' ';
        out += std::to_string(v.getValueType()) + ":" + std::to_string(v.getUnitType()) + ":" +
               utf8(v.toString());
    }
    return out;
}

} // namespace

TEST(ZkTokenizer, TokenStreamsOfEveryType) {
    struct Case {
        T::TokenizerType type;
        const char16_t* text;
        const char* expected;
    };
    // clang-format off
    const Case cases[] = {
        {T::TokenizerDefault, u"", ""},
        {T::TokenizerDefault, u"10px 10 10.0 10foo", "num(10,px) num(10,) num(10.,) num(10,foo)"},
        {T::TokenizerDefault, u".5em 5. 1.2.3 10%", "num(0.5.,em) num(5.,) num(1.2.,) num(0.3.,) num(10,%)"},
        {T::TokenizerDefault, u"#abc #abcd #aabbcc #aabbccdd", "hash(AABBCC) hasha(AABBCCDD) hash(AABBCC) hasha(AABBCCDD)"},
        {T::TokenizerDefault, u"#abcde #12 #x", "'#' name(abcde) '#' num(12,) '#' name(x)"},
        {T::TokenizerDefault, u"\"abc", "'\"' name(abc)"},
        {T::TokenizerDefault, u"'a''b' \"c\"", "str(a'b) str(c)"},
        {T::TokenizerPlainQuote, u"'a''b'", "str(a) str(b)"},
        {T::TokenizerCSS, u"'a\\27 b' \"x\\\"y\"", "str(a'b) str(x\"y)"},
        {T::TokenizerDefault, u"a\\41", "name(a) '\\' num(41,)"},
        {T::TokenizerCSS, u"a\\41 b c\\\n d \\31 x", "name(aAb) name(c) name(d) name(1x)"},
        {T::TokenizerCSS, u"-zk-foo --var -x -5 -moz", "name(-zk-foo) name(--var) '-' name(x) '-' num(5,) '-' name(moz)"},
        {T::TokenizerCSS, u"1px-2px", "num(1,px-2px)"},
        {T::TokenizerCSSUnit, u"1px-2px", "num(1,px) '-' num(2,px)"},
        {T::TokenizerDefault, u"a /* c */", "name(a) '/' '*' name(c) '*' '/'"},
        {T::TokenizerCSSComment, u"a /* c */ b/**/c /* open", "name(a) name(b) name(c)"},
        {T::TokenizerMime, u"text/html; charset=\"utf-8\"", "name(text) '/' name(html) ';' name(charset) '=' str(utf-8)"},
        {T::TokenizerBlank, u"a,b  c\u00A0d\tx", "name(a,b) name(c) U+00A0 name(d\tx)"},
        {T::TokenizerDefault, u"\f a", "U+000C name(a)"},
        {T::TokenizerDefault, u"\U0001D538x \U000F0000", "name(\U0001D538x) U+F0000"},
        {T::TokenizerDefault, u"a:b(c)", "name(a) ':' name(b) '(' name(c) ')'"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        EXPECT_EQ(c.expected, tokens(c.text, c.type));
    }
}

TEST(ZkTokenizer, TokensAsValues) {
    struct Case {
        const char16_t* text;
        T::TokenizerType type;
        const char* expected; // type:unit:text of each value
    };
    // clang-format off
    const Case cases[] = {
        {u"10px", T::TokenizerDefault, "2:5:10px"},
        {u"10", T::TokenizerDefault, "1:1:10"},
        {u"10.0", T::TokenizerDefault, "2:1:10"},
        {u"10foo", T::TokenizerDefault, "1:1:10 3:23:foo"},
        {u"3000000000", T::TokenizerDefault, "2:1:3e+09"},
        {u"12PX 5HZ 5khz 2Hz 50% 3VM", T::TokenizerDefault, "2:5:12px 2:18:5Hz 2:19:5kHz 2:18:2Hz 2:2:50% 2:35:3vmin"},
        {u"-5 +5 - 5 -.5 -x", T::TokenizerDefault, "1:1:-5 1:1:5 1:20:- 1:1:5 2:1:-0.5 1:20:- 3:23:x"},
        {u"-", T::TokenizerDefault, "1:20:-"},
        {u"'lit' name", T::TokenizerDefault, "4:21:lit 3:23:name"},
        {u"#abc", T::TokenizerDefault, "1:24:#AABBCC"},
        {u"1e3 1em 1e3px -1e-3 2E2%", T::TokenizerCSS, "2:1:1000 2:3:1em 2:5:1000px 2:1:-0.001 2:2:200%"},
        {u"1e3", T::TokenizerDefault, "1:1:1 3:23:e3"},
        {u"2e x", T::TokenizerCSS, "1:1:2 3:23:e 3:23:x"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        EXPECT_EQ(c.expected, values(c.text, c.type));
    }
    T alpha(u"#abcd");
    ZkColor color = alpha.nextTokenValue().getColorValue(true);
    EXPECT_EQ(0xAABBCCu, static_cast<unsigned>(color));
    EXPECT_FLOAT_EQ(0xDD / 255.0f, color.getAlpha());
    T unsigned5(u"-5");
    EXPECT_TRUE(unsigned5.nextTokenValue().isCharacter());
    T exp(u"1e3");
    EXPECT_EQ(ZkValue(1000.0f), exp.nextTokenValueExp());
    T d(u"-2.5e2 x");
    EXPECT_EQ(-250.0, d.nextTokenDoubleExp());
    EXPECT_EQ(0.0, d.nextTokenDoubleExp());
}

TEST(ZkTokenizer, Functions) {
    struct Case {
        const char16_t* text;
        int unit;
        const char* expected;
    };
    // clang-format off
    const Case cases[] = {
        {u"url( 'a b' )", UnitUri, "a b"},
        {u"URL(x.png)", UnitUri, "x.png"},
        {u"local(Foo Bar)", 63, "Foo Bar"},
        {u"local('Foo Bar')", 63, "Foo Bar"},
        {u"format(\"woff\")", 62, "woff"},
        {u"calc(1px + 2px)", UnitNone, "calc(1px + 2px)"},
        {u"(a b)", UnitNone, "(a b)"},
        {u"f(g(h(1)), 2)", UnitNone, "f(g(h(1)), 2)"},
        {u"f(1", UnitNone, "f(1"},
        {u"rgb(1, 2, 3)", UnitColor, "#010203"},
        {u"hsl(1, 2, 3)", UnitNone, "hsl(1, 2, 3)"},
        {u"-5px", UnitPx, "-5px"},
        {u"name", UnitName, "name"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        T t(c.text);
        ZkValue v = t.nextTokenValueFunc();
        EXPECT_EQ(c.unit, v.getUnitType());
        EXPECT_EQ(c.expected, utf8(v.toString()));
        EXPECT_TRUE(t.nextTokenValue().isNull());
    }
    T named(u"rgb(1, 2, 3) x");
    ZkName name;
    EXPECT_EQ("rgb(1, 2, 3)", utf8(named.nextTokenValueFunc(/*asText=*/true, &name).toString()));
    EXPECT_EQ("rgb", utf8(name.toString()));
    EXPECT_EQ("x", utf8(named.nextTokenValueFunc().toString()));
    // Deep nesting is read without deep recursion and keeps its text.
    UnicodeString deep;
    for (int i = 0; i < 100000; ++i)
        deep.append(u"f(");
    T t(deep);
    EXPECT_TRUE(t.nextTokenValueFunc().isString());
}

TEST(ZkTokenizer, SeparatedValues) {
    struct Case {
        const char16_t* text;
        char16_t sep;
        bool keepQuotes;
        const char* expected; // items joined by '|'
    };
    // clang-format off
    const Case cases[] = {
        {u"a, \"b,c\" , d", u',', false, "a|b,c|d"},
        {u"a, \"b,c\" , d", u',', true, "a|\"b,c\"|d"},
        {u"a b , c", u',', false, "a b |c"},
        {u"x\"y\" z, w", u',', false, "x\"y\" z|w"},
        {u"a,,b", u',', false, "a||b"},
        {u"'open, x", u',', false, "open, x"},
        {u"k=v&q='a&b'", u'&', false, "k=v|q='a&b'"},
        {u"  a  b  ", u' ', false, "a|b"},
        {u"", u',', false, ""},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.text));
        T t(c.text);
        std::string out;
        for (int n = 0; n < 20; ++n) {
            UnicodeString item = t.nextSeparatedValue(c.sep, c.keepQuotes);
            if (t.getTokenType() == T::TokenEnd)
                break;
            EXPECT_EQ(T::TokenString, t.getTokenType());
            out += (n ? "|" : "") + utf8(item);
        }
        EXPECT_EQ(c.expected, out);
    }
    // An embedded U+0000 with no separator cannot stall the reader.
    T nul(UnicodeString(u"a\0b", 3));
    int items = 0;
    while (items < 10 && (nul.nextSeparatedValue(0), nul.getTokenType() != T::TokenEnd))
        ++items;
    EXPECT_LT(items, 10);
}

TEST(ZkTokenizer, SeparatorsAndPushBack) {
    T t(u"  x , y");
    EXPECT_FALSE(t.skipSeparator(u','));
    EXPECT_EQ(2, t.getOffset());
    EXPECT_EQ(T::TokenName, t.nextToken());
    EXPECT_TRUE(t.scanSeparator(u','));
    EXPECT_EQ(3, t.getOffset());
    t.pushBack();
    EXPECT_TRUE(t.isPushedBack());
    EXPECT_FALSE(t.skipSeparator(u','));
    EXPECT_FALSE(t.scanSeparator(u','));
    EXPECT_EQ(3, t.getOffset());
    EXPECT_EQ(T::TokenName, t.nextToken());
    EXPECT_EQ("x", utf8(t.getStr()));
    EXPECT_TRUE(t.skipSeparator(u','));
    EXPECT_EQ(6, t.getOffset());

    // A pushed-back sign comes again with its number.
    T sign(u"-5");
    EXPECT_EQ(u'-', sign.nextToken());
    sign.pushBack();
    EXPECT_EQ(ZkValue(-5), sign.nextTokenValueSigned());

    // A copy shares the buffer: a look-ahead's cursor can be given to the source.
    T source(u"a b c");
    source.nextToken();
    T look(source);
    look.nextToken();
    source.setPtr(look.getPtr());
    EXPECT_EQ("c", utf8(source.nextTokenValue().toString()));
    T moved(std::move(look));
    EXPECT_EQ("c", utf8(moved.nextTokenValue().toString()));
    EXPECT_TRUE(look.nextTokenValue().isNull()); // NOLINT: a moved-from tokenizer reads nothing
    source.setPtr(u"elsewhere");                 // ignored
    EXPECT_TRUE(source.nextTokenValue().isNull());
    UnicodeString bogus;
    bogus.setToBogus();
    EXPECT_EQ(T::TokenEnd, T(bogus).nextToken());
}
