// The scanner's error table: one malformed input per code it raises, with the code, the message
// and the position the callback receives.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

struct Reported {
    std::vector<ZkError> errors;
};

void collect(const ZkError& error, void* data) {
    static_cast<Reported*>(data)->errors.push_back(error);
}

/// Every diagnostic of a whole parse with next() (or nextToken()), through the callback.
std::vector<ZkError> diagnose(const std::string& input, bool tokens = false,
                              ZkName parserType = ZkName()) {
    Reported reported;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    if (!parserType.isEmpty())
        parser->setParserType(parserType, ZKN_html);
    parser->setCallbackError(collect, &reported);
    std::istringstream in(input);
    parser->setInput(in, UnicodeString(), UnicodeString());
    try {
        int guard = 0;
        while ((tokens ? parser->nextToken() : parser->next()) != ZkXmlParser::END_DOCUMENT &&
               ++guard < 1000) {
        }
    } catch (const ZkError& error) {
        if (error.getErrorCode() != 128)
            reported.errors.push_back(error);
    }
    return reported.errors;
}

struct Row {
    const char* input;
    int code;
    const char16_t* message;
    int line;
    int column;
};

// clang-format off
const Row kRows[] = {
    {"<a>", 129, u"Missing end tag.", 1, 3},
    {"<a/><b/>", 130, u"Only one top level element is allowed.", 1, 5},
    {"<!DOCTYPE 1a><a/>", 131, u"Invalid root tag name after '<!DOCTYPE'.", 1, 11},
    {"<1a/>", 132, u"Invalid start tag name.", 1, 2},
    {"<a></1a>", 133, u"Invalid end tag name.", 1, 6},
    {"<a></b>", 134, u"End tag </b> does not match the start tag <a>.", 1, 6},
    {"<p:a/>", 135, u"Undeclared namespace prefix: p", 1, 6},
    {"<a p:b='1'/>", 135, u"Undeclared namespace prefix: p", 1, 12},
    {"<a b='1' b='2'/>", 136, u"Duplicate attribute: b", 1, 16},
    {"<a p:='1'/>", 137, u"Invalid attribute name: p:", 1, 6},
    {"<a b/>", 138, u"Missing '=' after attribute name.", 1, 5},
    {"<a b='1'c='2'/>", 139, u"Missing whitespace between attributes.", 1, 9},
    {"<a b='1' ='2'/>", 140, u"Unexpected character: =", 1, 10},
    {"<a></a>x", 142, u"Unexpected text at top level of the XML document: U+0078 (x)", 1, 8},
    {"< a/>", 141, u"Unexpected whitespace after '<'.", 1, 2},
    {"<a></ a>", 141, u"Unexpected whitespace after '</'.", 1, 5},
    {"<![CDATA[x]]><a/>", 143, u"Unexpected '<![CDATA'.", 1, 9},
    {"<a>]]></a>", 144, u"Unexpected ']]>'.", 1, 5},
    {"<a><![CDATA[x</a>", 145, u"Unexpected end of input while looking for CDATA section terminator ']]>'.", 1, 17},
    {"<a><!-- x</a>", 146, u"Unexpected end of input while looking for comment terminator '-->'.", 1, 13},
    {"<a/><!DOCTYPE a>", 148, u"Unexpected DOCTYPE declaration outside of prolog.", 1, 14},
    {"<!DOCTYPE a><!DOCTYPE a><a/>", 149, u"Cannot have multiple DOCTYPE declarations.", 1, 22},
    {"<!DOCTYPEa><a/>", 170, u"Unexpected '<!DOCTYPEa'.", 1, 11},
    {"<!DOCTYPE a FOO><a/>", 151, u"External ID is expected after '<!DOCTYPE a'.", 1, 15},
    {"<!DOCTYPE a PUBLIC x><a/>", 152, u"PubidLiteral is expected after '<!DOCTYPE a PUBLIC'.", 1, 19},
    {"<!DOCTYPE a SYSTEM ><a/>", 153, u"SystemLiteral is expected after '<!DOCTYPE a SYSTEM'.", 1, 19},
    {"<!DOCTYPE a SYSTEM><a/>", 150, u"Missing whitespace after '<!DOCTYPE a SYSTEM'.", 1, 18},
    {"<!DOCTYPE a [", 154, u"Unexpected end of input in DOCTYPE declaration.", 1, 13},
    {"<a>& </a>", 155, u"Empty entity name.", 1, 5},
    {"<a>&b </a>", 156, u"Invalid character in entity reference: &b ;", 1, 6},
    {"<a>&b;</a>", 515, u"Reference to undefined entity: &b;", 1, 6},
    {"<a/><?xml version='1.0'?>", 161, u"Unexpected XML declaration.", 1, 9},
    {"<?xml encoding='UTF-8'?><a/>", 162, u"Missing 'version=' after '<?xml ' in XML declaration.", 1, 15},
    {"<?xml version '1.0'?><a/>", 163, u"Missing '=' after '<?xml version' in XML declaration.", 1, 15},
    {"<?xml?><a/>", 164, u"Missing whitespace after '<?xml' in XML declaration.", 1, 6},
    {"<?xml version='1.0'encoding='UTF-8'?><a/>", 165, u"Missing whitespace before 'encoding=' in XML declaration.", 1, 28},
    {"<?xml version='2.0'?><a/>", 166, u"Unsupported XML version: 2.0", 1, 19},
    {"<?xml version='1.0' standalone='maybe'?><a/>", 167, u"Invalid standalone declaration in XML declaration.", 1, 38},
    {"<a><![CDATA(x]]></a>", 168, u"Invalid syntax in CDATA section.", 1, 12},
    {"<a><!-x--></a>", 169, u"Invalid syntax in comment.", 1, 7},
    {"<a><!FOO></a>", 170, u"Unexpected '<!FOO'.", 1, 9},
    {"<?XML version='1.0'?><a/>", 171, u"The name 'xml' must be lower case: <?XML", 1, 6},
    {"<?pi?x?><a/>", 172, u"Missing whitespace after PI target: <?pi", 1, 6},
    {"<a><?pi x", 173, u"Unexpected end of input while looking for PI terminator '?>'.", 1, 9},
    {"<a b=1/>", 174, u"Missing quotation character (\" or ').", 1, 6},
    {"<a b='1", 175, u"Unexpected end of input while looking for literal terminator (').", 1, 7},
    {"<a b='<'/>", 176, u"Unexpected '<' in attribute value.", 1, 7},
    {"<a>&#1 ;</a>", 177, u"Unexpected whitespace in character reference: &#1;", 1, 7},
    {"<a>&#1x;</a>", 178, u"Invalid character in character reference: &#1;", 1, 7},
    {"<a>&#0;</a>", 179, u"Invalid Unicode character: &#0", 1, 7},
    {"<a>\x01</a>", 179, u"Invalid Unicode character: U+0001", 1, 3},
    {"\xEF\xBB\x41<a/>", 180, u"Invalid character.", 1, 0},
    {"<?xml version='1.0' encoding='no-such-thing'?><a/>", 181, u"Unknown or unsupported encoding: no-such-thing.", 1, 44},
    {"<a b='1'", 183, u"Unclosed tag: a", 1, 8},
    {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a/>", 185, u"Conflict encoding: ISO-8859-1.", 1, 41},
    {"<a></a >x", 142, u"Unexpected text at top level of the XML document: U+0078 (x)", 1, 9},
    {"<a></a x>", 769, u"Unexpected character: x", 1, 8},
    {"<a / >", 770, u"Unexpected whitespace after '/'.", 1, 5},
    {"<a><!-- x -- y --></a>", 771, u"Unexpected character '--' in comment", 1, 12},
    {"<a><!--> --></a>", 897, u"Unexpected character: >", 1, 7},
};
// clang-format on

} // namespace

TEST(XmlErrors, EachCodeWithMessageAndPosition) {
    for (const Row& row : kRows) {
        SCOPED_TRACE(row.input);
        std::vector<ZkError> errors = diagnose(row.input);
        ASSERT_FALSE(errors.empty());
        const ZkError& first = errors.front();
        EXPECT_EQ(row.code, first.getErrorCode());
        EXPECT_EQ(utf8(UnicodeString(row.message)), utf8(first.getRawMessage()));
        EXPECT_EQ(row.line, first.getLineNumber());
        EXPECT_EQ(row.column, first.getColumnNumber());
    }
}
