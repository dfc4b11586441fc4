// Tests of ZkTokenizer: raw token streams of every tokenizer type, tokens as values, signs and
// exponents, functions, separated items, separators and push-back.
#include "support.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/tokenizer.h"

#include <algorithm>
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

// tests/data/values/tokens.tsv: raw token streams of every tokenizer type, tokens as values,
// functions and separated items.
TEST(ZkTokenizer, TableOfTokenStreams) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/tokens.tsv");
    ASSERT_GT(rows.size(), 50u);
    const std::string types[] = {"Default", "CSS",   "CSSComment", "CSSUnit",
                                 "Mime",    "Blank", "PlainQuote"};
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1] + " " + row[2]);
        const UnicodeString text = UnicodeString::fromUTF8(row[2]).unescape();
        const std::string expected = utf8(UnicodeString::fromUTF8(row[3]).unescape());
        const auto type =
            static_cast<T::TokenizerType>(std::find(types, types + 7, row[1]) - types);
        if (row[0] == "tokens") {
            EXPECT_EQ(expected, tokens(text, type));
        } else if (row[0] == "values") {
            EXPECT_EQ(expected, values(text, type));
        } else if (row[0] == "function") {
            T t(text);
            ZkValue v = t.nextTokenValueFunc();
            EXPECT_EQ(std::stoi(row[1]), v.getUnitType());
            EXPECT_EQ(expected, utf8(v.toString()));
            EXPECT_TRUE(t.nextTokenValue().isNull());
        } else {
            T t(text);
            std::string out;
            for (int n = 0; n < 20; ++n) {
                UnicodeString item = t.nextSeparatedValue(UnicodeString::fromUTF8(row[1])[0],
                                                          row[0] == "separated-quoted");
                if (t.getTokenType() == T::TokenEnd)
                    break;
                EXPECT_EQ(T::TokenString, t.getTokenType());
                out += (n ? "|" : "") + utf8(item);
            }
            EXPECT_EQ(expected, out);
        }
    }
}

TEST(ZkTokenizer, ValueReaders) {
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
