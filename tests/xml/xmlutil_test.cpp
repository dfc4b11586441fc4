// ZkXmlUtil: qualified names.
#include "support.h"

#include <gtest/gtest.h>
#include <string>
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
