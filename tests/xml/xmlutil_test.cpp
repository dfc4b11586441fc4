// ZkXmlUtil: qualified names.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <zkcommon/core/error.h>
#include <zkcommon/xml/xmlparser.h>
#include <zkcommon/xml/xmlutil.h>

using namespace ZkCommonNS;

TEST(XmlUtil, MakeQName) {
    EXPECT_EQ(ZkXmlUtil::makeQName(ZkName(), ZkName(u"a")), ZkName(u"a"));
    EXPECT_EQ(ZkXmlUtil::makeQName(ZkName(u"p"), ZkName(u"a")), ZkName(u"p:a"));
    EXPECT_EQ(ZkXmlUtil::makeQName(ZkName(ZKN_xml), ZkName(ZKN_lang)), ZkName(u"xml:lang"));
    EXPECT_EQ(utf8(ZkXmlUtil::makeQNameStr(u"", u"x")), "x");
    EXPECT_EQ(utf8(ZkXmlUtil::makeQNameStr(u"fo", u"block")), "fo:block");
}

TEST(XmlUtil, MakeNSQNameStr) {
    struct Case {
        const char16_t* ns;
        const char16_t* local;
        const char* expected;
    } cases[] = {
        {u"", u"a", "a"},
        {u"http://www.w3.org/XML/1998/namespace", u"lang", "xml:lang"},
        {u"http://www.w3.org/2000/xmlns/", u"xmlns", "xmlns"},
        {u"http://www.w3.org/2000/xmlns/", u"p", "xmlns:p"},
        {u"urn:x", u"a", "{urn:x}:a"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(utf8(test.ns));
        EXPECT_EQ(utf8(ZkXmlUtil::makeNSQNameStr(test.ns, test.local)), test.expected);
    }
}

TEST(XmlUtil, SplitQName) {
    struct Case {
        const char16_t* qname;
        const char* prefix;
        const char* local;
    } cases[] = {
        {u"a", "", "a"},   {u"p:a", "p", "a"}, {u"p:a:b", "p", "a:b"},
        {u":a", "", ":a"}, {u"p:", "p", ""},   {u"", "", ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(utf8(test.qname));
        EXPECT_EQ(utf8(ZkXmlUtil::getPrefixFromQName(ZkName(test.qname)).toString()), test.prefix);
        EXPECT_EQ(utf8(ZkXmlUtil::getLocalPartFromQName(ZkName(test.qname)).toString()),
                  test.local);
    }
}

TEST(XmlUtil, EscapeXmpUserDefinedKey) {
    // clang-format off
    struct Case { const char16_t* key; const char16_t* expected; } cases[] = {
        {u"name", u"name"},
        {u"a b", u"a\u21820020b"},
        {u"1st", u"\u21820031st"},
        {u"a1-.\u00B7\u0301", u"a1-.\u00B7\u0301"},
        {u"-a", u"\u2182002Da"},
        {u"p:q", u"p\u2182003Aq"},
        {u"\u2182", u"\u21822182"},
        {u"x\U000F0000", u"x\u2182DB80\u2182DC00"},
        {u"\U00010000", u"\U00010000"},
        {u"", u""},
    };
    // clang-format on
    for (const Case& test : cases) {
        SCOPED_TRACE(utf8(test.key));
        EXPECT_EQ(utf8(ZkXmlUtil::escapeXmpUserDefinedKey(test.key)), utf8(test.expected));
    }
}

TEST(XmlUtil, RootSniffing) {
    const std::string fo = "http://www.w3.org/1999/XSL/Format";
    const std::string xslt = "http://www.w3.org/1999/XSL/Transform";
    // clang-format off
    struct Case { std::string input; const char* name; std::string ns; std::string stylesheet; } cases[] = {
        {"<?xml version='1.0'?><!-- c --><fo:root xmlns:fo='" + fo + "'><fo:x/></fo:root>", "root", fo, fo},
        {"<fo:root xmlns:fo='" + fo + "' xmlns:xsl='" + xslt + "' xsl:version='1.0'/>", "root", fo, xslt},
        {"<fo:root xmlns:fo='" + fo + "' version='1.0'/>", "root", fo, fo},
        {"<xsl:stylesheet xmlns:xsl='" + xslt + "' version='1.0'/>", "stylesheet", xslt, xslt},
        {"<x:a>&undefined;</x:a>", "a", "", ""},
        {"<?xml version='1.0'?><!-- no element -->", "", "", ""},
        {"", "", "", ""},
        {"   ", "", "", ""},
    };
    // clang-format on
    for (const Case& test : cases) {
        SCOPED_TRACE(test.input);
        std::istringstream in(test.input);
        ZkName ns(u"unset");
        EXPECT_EQ(utf8(ZkXmlUtil::getRootName(ns, in).toString()), test.name);
        EXPECT_EQ(utf8(ns.toString()), test.ns);
        std::istringstream again(test.input);
        ns = ZkName(u"unset");
        ZkXmlUtil::getXSLStylesheetNamespace(ns, again);
        EXPECT_EQ(utf8(ns.toString()), test.stylesheet);
    }
}

TEST(XmlUtil, RootSniffingByUri) {
    TempDir dir;
    const std::string path = dir.file("a.xml", "<a xmlns='urn:a'><b/></a>");
    ZkName ns;
    EXPECT_EQ(ZkXmlUtil::getRootName(ns, UnicodeString::fromUTF8(path)), ZkName(u"a"));
    EXPECT_EQ(ns, ZkName(u"urn:a"));
    EXPECT_EQ(ZkXmlUtil::getRootParser(UnicodeString()), nullptr);
    ZkPtr<ZkXmlParser> parser = ZkXmlUtil::getRootParser(UnicodeString::fromUTF8(path));
    ASSERT_NE(parser, nullptr);
    EXPECT_EQ(parser->getEventType(), ZkXmlParser::START_TAG);
    EXPECT_EQ(parser->getDepth(), 1);
    try {
        ZkXmlUtil::getRootName(ns, UnicodeString::fromUTF8(dir.path() + "/missing.xml"));
        FAIL() << "opened a missing file";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), 67);
    }
}
