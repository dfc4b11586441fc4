// Tests of ZkParser: single values and lists by the flags, compounds, attribute strings and the
// link-target languages.
#include "support.h"
#include "zkcommon/values/parser.h"

#include <algorithm>
#include <fstream>
#include <gtest/gtest.h>

using namespace ZkCommonNS;

namespace {

using P = ZkParser;

// A field of a table file, its backslash escapes read.
UnicodeString text(const std::string& field) {
    return UnicodeString::fromUTF8(field).unescape();
}

std::string joined(std::vector<std::string> parts) {
    std::sort(parts.begin(), parts.end());
    std::string out;
    for (const std::string& part : parts)
        out += (out.empty() ? "" : " ") + part;
    return out;
}

// "key=text" of every item of a compound in list order, "." for the empty name.
std::string items(const ZkValue& v) {
    if (!v.isCompound())
        return "not a compound: " + utf8(v.toString());
    ZkNamedValueMapIterator it(v.getNamedValueMap());
    std::vector<std::string> parts;
    while (it.hasNext()) {
        const ZkNamedValue& item = it.next();
        std::string name = utf8(item.getName().toString());
        parts.push_back((name.empty() ? "." : name) + "=" + utf8(item.toString()));
    }
    return joined(parts);
}

} // namespace

// tests/data/values/parse.tsv: text, flag names, type:unit:printed form of the value read.
TEST(ZkParser, ValuesByFlags) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/parse.tsv");
    ASSERT_GT(rows.size(), 20u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3u);
        SCOPED_TRACE(row[0] + " " + row[1]);
        int flags = 0;
        for (const auto& flag :
             std::vector<std::pair<const char*, int>>{{"NoNumber", P::NoNumber},
                                                      {"NoHashColor", P::NoHashColor},
                                                      {"List", P::List},
                                                      {"Compound", P::Compound},
                                                      {"InCompound", P::InCompound}})
            if (("|" + row[1] + "|").find("|" + std::string(flag.first) + "|") != std::string::npos)
                flags |= flag.second;
        ZkValue v = P::parse(text(row[0]), flags);
        EXPECT_EQ(utf8(text(row[2])), std::to_string(v.getValueType()) + ":" +
                                          std::to_string(v.getUnitType()) + ":" +
                                          utf8(v.toString()));
    }
    ZkValue list = P::parseCompound(u"1,2");
    ASSERT_EQ(3, list.getArrayCount());
    EXPECT_TRUE(list.getNthItem(1).isCharacter());
    EXPECT_EQ(ZkValue(3.0f, UnitPx), P::parse(u"3px", ZkTokenizer::TokenizerCSS));
    EXPECT_EQ(ZkValue(1000.0f), P::parse(u"1e3", ZkTokenizer::TokenizerCSS));
}

TEST(ZkParser, Compounds) {
    ZkValue v = P::parseCompound(u"{a: 1; b: x y; .: 2}");
    EXPECT_EQ(".=2 a=1 b=x y", items(v)); // keys a, b and the empty name
    EXPECT_TRUE(v.getNamedItem(ZkName(u"b")).isArray());
    EXPECT_EQ(ZkValue(2), v.getNamedItem(ZkName()));
    // Later keys replace earlier ones; a text that breaks off keeps what was stored.
    EXPECT_EQ("a=3", items(P::parseCompound(u"{a: 1; a: 3}")));
    EXPECT_EQ("a=1", items(P::parseCompound(u"{a: 1; b").getNthItem(0)));
    EXPECT_EQ("a=1", items(P::parseCompound(u"{a: 1; 5: 2}").getNthItem(0)));
    EXPECT_EQ("a=x", items(P::parseCompound(u"{a: x")));
    EXPECT_EQ("a= b=1", items(P::parseCompound(u"{a: ; b: 1}")));
    // Nesting beyond the reader's depth reads "{" as a character instead of recursing.
    UnicodeString deep;
    for (int i = 0; i < 20000; ++i)
        deep.append(u"{a: ");
    EXPECT_TRUE(P::parseCompound(deep).isCompound());
}

// tests/data/values/attributes.tsv: text, flag name, "ok" or "failed", the pairs read.
TEST(ZkParser, Attributes) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/attributes.tsv");
    ASSERT_GT(rows.size(), 10u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1]);
        const int flags = row[1] == "AttributesLenient"      ? P::AttributesLenient
                          : row[1] == "AttributesRepeatable" ? P::AttributesRepeatable
                                                             : 0;
        std::map<ZkName, UnicodeString> out;
        out[ZkName(u"stale")] = u"x";
        EXPECT_EQ(row[2] == "ok", P::parseAttributes(text(row[0]), out, flags));
        std::vector<std::string> parts;
        for (const auto& entry : out)
            parts.push_back(utf8(entry.first.toString()) + "=" + utf8(entry.second));
        EXPECT_EQ(utf8(text(row[3])), joined(parts));
    }
}

// tests/data/values/linktargets.tsv: the reader, the text, its option, the items read.
TEST(ZkParser, LinkTargets) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/linktargets.tsv");
    ASSERT_GT(rows.size(), 30u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1]);
        const UnicodeString link = text(row[1]);
        const std::string& f = row[0];
        ZkValue v = f == "pdf"        ? P::parsePDFOpenParameters(link, row[2] == "internal")
                    : f == "xlink"    ? P::parseXlinkHref(link)
                    : f == "internal" ? P::parseInternalDestination(link, std::stoi(row[2]))
                    : f == "dest"     ? P::parseDestinationType(link)
                    : f == "excel"    ? P::parseExcelOpenParameters(link)
                                      : P::parseUriFragmentParameters(link, row[2] == "lower");
        EXPECT_EQ(row[3], v.isNull() ? std::string("null") : items(v));
    }
}

// Every value of real stylesheets reads to the end, and every colour function in them gives a
// colour.
TEST(ZkParser, RealStylesheetValues) {
    std::ifstream in(ZK_TEST_DATA_DIR "/values/propertyvalues.txt");
    int lines = 0, colors = 0;
    for (std::string line; std::getline(in, line); ++lines) {
        SCOPED_TRACE(line);
        ZkTokenizer t(UnicodeString::fromUTF8(line), ZkTokenizer::TokenizerCSSComment);
        for (int n = 0; n < 200; ++n) {
            ZkName function;
            ZkValue v = t.nextTokenValueFunc(false, &function);
            if (v.isNull())
                break;
            std::string name = utf8(function.toString());
            if (name == "rgb" || name == "rgba" || name == "hsl" || name == "hsla" ||
                name == "cmyk" || name == "device-cmyk" || name == "rgb-icc") {
                EXPECT_TRUE(v.isColor()) << name;
                ++colors;
            }
        }
        EXPECT_EQ(ZkTokenizer::TokenEnd, t.nextToken());
    }
    EXPECT_GT(lines, 400);
    EXPECT_GT(colors, 20);
}
