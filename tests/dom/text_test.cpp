// ZkTextNode, ZkProcessingInstruction with its pseudo-attributes, ZkDocumentFragment and the
// document's own node kinds.
#include "domtest.h"

#include <gtest/gtest.h>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/documentfragment.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

TEST(TextNode, DataAndValue) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkTextNode> text = doc->createTextNode(u"h\u00e9llo \U0001F600");
    EXPECT_EQ(text->getNodeType(), ZkNode::TEXT_NODE);
    EXPECT_TRUE(text->isText());
    EXPECT_FALSE(text->isElementNode());
    EXPECT_EQ(text->getLocalName(), ZKN_H_text);
    EXPECT_EQ(text->getNodeName(), ZKN_H_text);
    EXPECT_EQ(text->getLength(), 8) << "UTF-16 units";
    EXPECT_TRUE(text->getNodeValue().isString());
    text->setNodeValue(ZkValue(42));
    EXPECT_EQ(utf8(text->getData()), "42") << "setting a value works on text";
    text->setText(u"abc");
    EXPECT_EQ(utf8(text->getText()), "abc");
    text->setData(u"xyz");
    EXPECT_EQ(utf8(text->getInnerText()), "xyz");
}

TEST(TextNode, CloneKeepsBidiLevelAndFlags) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkTextNode> text = doc->createTextNode(u"t");
    EXPECT_FALSE(text->isBidiDone());
    EXPECT_EQ(text->getBidiLevel(), -1);
    text->bidiDone(2);
    text->setFlag(0x40, true);
    ZkPtr<ZkNode> copy = text->cloneNode(false);
    ASSERT_TRUE(copy);
    EXPECT_TRUE(copy->isBidiDone());
    EXPECT_EQ(static_cast<ZkTextNode*>(copy.get())->getBidiLevel(), 2);
    EXPECT_TRUE(copy->getFlag(0x40));
    EXPECT_EQ(utf8(copy->getText()), "t");
    EXPECT_EQ(copy->getOwnerDocument(), doc.get());
    text->bidiDone(0);
    EXPECT_TRUE(text->isBidiDone());
}

TEST(ProcessingInstruction, Basics) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkProcessingInstruction> pi =
        doc->createProcessingInstruction(ZkName(u"xml-stylesheet"), u"href='a.css'");
    EXPECT_EQ(pi->getNodeType(), ZkNode::PROCESSING_INSTRUCTION_NODE);
    EXPECT_TRUE(pi->isProcessingInstruction());
    EXPECT_EQ(utf8(pi->getLocalName().toString()), "xml-stylesheet");
    EXPECT_EQ(utf8(pi->getText()), "href='a.css'");
    pi->setText(u"x");
    EXPECT_EQ(utf8(pi->getData()), "x");
    EXPECT_EQ(pi->cloneNode(true), nullptr);
    try {
        pi->setNodeValue(ZkValue(1));
        ADD_FAILURE() << "no throw";
    } catch (const ZkError& e) {
        EXPECT_EQ(utf8(e.getRawMessage()),
                  "SYSTEM ERROR: Cannot set a value on node type: ZkProcessingInstruction");
    }
}

TEST(ProcessingInstruction, ParseAsAttribute) {
    struct Entry {
        const char* name;
        const char* value; // nullptr: the bogus string
    };
    struct Case {
        const char16_t* data;
        std::vector<Entry> entries;
    } cases[] = {
        {u"href='a.css' type=\"text/css\"", {{"href", "a.css"}, {"type", "text/css"}}},
        {u"href", {}},
        {u"", {}},
        {u" \t\r\n", {}},
        {u"a='1' a='2'", {{"a", "1"}}},
        {u"a=''", {{"a", ""}}},
        {u"a='it\"s'", {{"a", "it\"s"}}},
        {u"a ='x'", {{"a ", "x"}}},
        {u"a='open", {{"a", nullptr}}},
        {u"a=", {{"a", nullptr}}},
        {u"a=b c='d'", {{"a", nullptr}, {"b c", "d"}}},
        {u"h\U0001F600='\U0001F600'", {{"h\xF0\x9F\x98\x80", "\xF0\x9F\x98\x80"}}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(utf8(test.data));
        ZkProcessingInstruction::AttributeMap map =
            ZkProcessingInstruction::parseAsAttribute(test.data);
        EXPECT_EQ(map.size(), test.entries.size());
        for (const Entry& entry : test.entries) {
            auto found = map.find(UnicodeString::fromUTF8(entry.name));
            ASSERT_NE(found, map.end()) << entry.name;
            if (entry.value)
                EXPECT_EQ(utf8(found->second), entry.value);
            else
                EXPECT_TRUE(found->second.isBogus()) << entry.name;
        }
    }
}

TEST(DocumentFragment, HoldsChildren) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkDocumentFragment> fragment = doc->createDocumentFragment();
    EXPECT_EQ(fragment->getNodeType(), ZkNode::DOCUMENT_FRAGMENT_NODE);
    EXPECT_EQ(fragment->getLocalName(), ZKN_H_document_fragment);
    addText(doc, fragment, u"x");
    addElement(doc, fragment, u"y");
    EXPECT_EQ(childNames(fragment), "'x',y");
    EXPECT_EQ(fragment->cloneNode(true), nullptr);
    EXPECT_EQ(fragment->getOwnerDocument(), doc.get());
}

TEST(Document, Basics) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    EXPECT_EQ(doc->getNodeType(), ZkNode::DOCUMENT_NODE);
    EXPECT_EQ(doc->getLocalName(), ZKN_H_document);
    EXPECT_EQ(doc->getOwnerDocument(), nullptr);
    EXPECT_NE(doc->getNameTable(), nullptr);
    EXPECT_FALSE(doc->getPullMode());
    EXPECT_FALSE(doc->hasXInclude());
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_EQ(doc->getDocumentElement(), nullptr);
    EXPECT_FALSE(doc->isBaseUriSpecified());
    EXPECT_TRUE(doc->getBaseUri().isEmpty());
    doc->setBaseUri(u"http://example.com/base/doc.fo");
    EXPECT_TRUE(doc->isBaseUriSpecified());
    EXPECT_EQ(utf8(doc->getBaseUri()), "http://example.com/base/doc.fo");
    EXPECT_EQ(utf8(doc->getDocumentUri()), "http://example.com/base/doc.fo");

    addText(doc, doc, u"\n");
    ZkElement* root = addElement(doc, doc, u"fo:root");
    EXPECT_EQ(doc->getDocumentElement(), root);
    EXPECT_EQ(utf8(root->getPrefix().toString()), "fo");
    EXPECT_EQ(utf8(root->getLocalName().toString()), "root");
    EXPECT_EQ(utf8(root->getNodeName().toString()), "fo:root");
    ZkPtr<ZkElement> ns = doc->createElementNS(ZkName(ZKN_NS_XSL_FO), ZkName(u"fo:block"));
    EXPECT_EQ(ns->getNamespaceUri(), ZKN_NS_XSL_FO);
    EXPECT_EQ(utf8(ns->getNodeName().toString()), "fo:block");
    ZkPtr<ZkNode> text = doc->createTextNodeElement(u"t", root);
    EXPECT_TRUE(text->isText());
    EXPECT_EQ(text->getParentNode(), nullptr);
}
