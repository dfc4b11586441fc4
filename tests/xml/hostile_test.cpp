// Hostile shapes: deep nesting, huge values and runs, many attributes and declarations, a huge
// name. Each parses in one pass without recursion; a quadratic step would time the test out.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr int kScale = 10; // the sanitizer run uses a tenth of each size
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr int kScale = 10;
#else
constexpr int kScale = 1;
#endif
#else
constexpr int kScale = 1;
#endif

struct Parse {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    explicit Parse(std::string input) : in(std::move(input)) {
        parser->setInput(in, UnicodeString(), UnicodeString());
    }
};

std::string repeat(const std::string& piece, int count) {
    std::string out;
    out.reserve(piece.size() * size_t(count));
    for (int i = 0; i < count; ++i)
        out += piece;
    return out;
}

} // namespace

TEST(XmlHostile, MillionDeepNesting) {
    const int depth = 1000000 / kScale;
    Parse parse(repeat("<a>", depth) + repeat("</a>", depth));
    int deepest = 0;
    int ends = 0;
    for (int event; (event = parse.parser->nextToken()) != ZkXmlParser::END_DOCUMENT;) {
        deepest = std::max(deepest, parse.parser->getDepth());
        ends += event == ZkXmlParser::END_TAG;
    }
    EXPECT_EQ(depth, deepest);
    EXPECT_EQ(depth, ends);
}

TEST(XmlHostile, FiftyMegabyteValueAndText) {
    const int size = 50000000 / kScale;
    std::string run(size_t(size), 'v');
    Parse parse("<a b='" + run + "'>" + run + "</a>");
    parse.parser->setHugeTextLimit(-1);
    ASSERT_EQ(ZkXmlParser::START_TAG, parse.parser->next());
    EXPECT_EQ(size, parse.parser->getAttributeValue(0).length());
    ASSERT_EQ(ZkXmlParser::TEXT, parse.parser->next());
    EXPECT_EQ(size, parse.parser->getText().length());
    // At the default limit the same run stops with code 190.
    Parse limited("<a>" + run + "</a>");
    limited.parser->next();
    try {
        limited.parser->next();
        EXPECT_LT(size, 10000000) << "no error";
    } catch (const ZkError& error) {
        EXPECT_EQ(190, error.getErrorCode());
    }
}

TEST(XmlHostile, HundredThousandAttributes) {
    const int count = 100000 / kScale;
    std::string tag = "<a";
    for (int i = 0; i < count; ++i)
        tag += " a" + std::to_string(i) + "='" + std::to_string(i) + "'";
    Parse parse(tag + "/>");
    ASSERT_EQ(ZkXmlParser::START_TAG, parse.parser->next());
    EXPECT_EQ(count, parse.parser->getAttributeCount());
    EXPECT_EQ("7", utf8(parse.parser->getAttributeValue(7)));
    // A duplicate at the end is still found.
    Parse duplicate(tag + " a0='x'/>");
    try {
        duplicate.parser->next();
        FAIL() << "no error";
    } catch (const ZkError& error) {
        EXPECT_EQ(136, error.getErrorCode());
    }
}

TEST(XmlHostile, HundredThousandNamespaceDeclarations) {
    const int count = 100000 / kScale;
    std::string tag = "<p0:a";
    for (int i = count - 1; i >= 0; --i)
        tag += " xmlns:p" + std::to_string(i) + "='u" + std::to_string(i) + "'";
    Parse parse(tag + "><p5:b/></p0:a>");
    ASSERT_EQ(ZkXmlParser::START_TAG, parse.parser->next());
    EXPECT_EQ(ZkName(u"u0"), parse.parser->getNamespace());
    EXPECT_EQ(count, parse.parser->getNamespaceCount(1));
    ASSERT_EQ(ZkXmlParser::START_TAG, parse.parser->next());
    EXPECT_EQ(ZkName(u"u5"), parse.parser->getNamespace());
}

TEST(XmlHostile, MegabyteName) {
    std::string name(size_t(1000000 / kScale), 'n');
    Parse parse("<" + name + "></" + name + ">");
    ASSERT_EQ(ZkXmlParser::START_TAG, parse.parser->next());
    EXPECT_EQ(int32_t(name.size()), parse.parser->getName().toString().length());
    EXPECT_EQ(ZkXmlParser::END_TAG, parse.parser->next());
}
