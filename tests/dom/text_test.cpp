// ZkTextNode, ZkProcessingInstruction with its pseudo-attributes, ZkDocumentFragment and the
// document's own node kinds.
#include "domtest.h"

#include <gtest/gtest.h>
#include <set>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/documentfragment.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

TEST(TextNode, ValueAndCloneKeepBidiLevelAndFlags) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkTextNode> text = doc->createTextNode(u"h\u00e9llo \U0001F600");
    EXPECT_EQ(text->getLength(), 8) << "UTF-16 units";
    EXPECT_EQ(text->getLocalName(), ZKN_H_text);
    EXPECT_TRUE(text->getNodeValue().isString());
    text->setNodeValue(ZkValue(42));
    EXPECT_EQ(utf8(text->getData()), "42") << "setting a value works on text";
    EXPECT_FALSE(text->isBidiDone());
    text->bidiDone(2);
    text->setFlag(0x40, true);
    ZkPtr<ZkNode> copy = text->cloneNode(false);
    EXPECT_EQ(static_cast<ZkTextNode*>(copy.get())->getBidiLevel(), 2);
    EXPECT_TRUE(copy->isBidiDone() && copy->getFlag(0x40));
    EXPECT_EQ(utf8(copy->getText()), "42");
    text->bidiDone(0);
    EXPECT_TRUE(text->isBidiDone()) << "level 0 counts as done";
}

TEST(ProcessingInstruction, PseudoAttributesValueAndClone) {
    // The pairs found, sorted, as name=value; a value of "!" is the bogus string.
    // clang-format off
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"href='a.css' type=\"text/css\"", "href=a.css type=text/css"}, {u"href", ""}, {u"", ""}, {u" \t\r\n", ""},
        {u"a='1' a='2'", "a=1"}, {u"a=''", "a="}, {u"a='it\"s'", "a=it\"s"}, {u"a ='x'", "a =x"}, {u"a='open", "a=!"},
        {u"a=", "a=!"}, {u"a=b c='d'", "a=! b c=d"}, {u"h\U0001F600='\U0001F600'", "h\xF0\x9F\x98\x80=\xF0\x9F\x98\x80"},
    };
    // clang-format on
    for (const auto& k : cases) {
        std::set<std::string> pairs;
        for (const auto& entry : ZkProcessingInstruction::parseAsAttribute(k.first))
            pairs.insert(utf8(entry.first) + "=" +
                         (entry.second.isBogus() ? "!" : utf8(entry.second)));
        std::string found;
        for (const std::string& pair : pairs)
            found += (found.empty() ? "" : " ") + pair;
        EXPECT_EQ(found, k.second) << utf8(k.first);
    }
    // An instruction takes no value and clones to null.
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkProcessingInstruction> pi =
        doc->createProcessingInstruction(ZkName(u"xml-stylesheet"), u"href='a.css'");
    EXPECT_EQ(pi->cloneNode(true), nullptr);
    EXPECT_EQ(errorOf([&] { pi->setNodeValue(ZkValue(1)); }),
              "11 SYSTEM ERROR: Cannot set a value on node type: ZkProcessingInstruction");
}

TEST(Document, BaseUriAndNodeKinds) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    EXPECT_FALSE(doc->isBaseUriSpecified());
    EXPECT_EQ(doc->getOwnerDocument(), nullptr);
    doc->setBaseUri(u"http://example.com/base/doc.fo");
    EXPECT_TRUE(doc->isBaseUriSpecified());
    EXPECT_EQ(utf8(doc->getDocumentUri()), "http://example.com/base/doc.fo");
    addText(doc, doc, u"\n");
    ZkElement* root = addElement(doc, doc, u"fo:root");
    EXPECT_EQ(doc->getDocumentElement(), root) << "the first element, not the first child";
    EXPECT_EQ(utf8(root->getLocalName().toString()), "root");
    ZkPtr<ZkNode> text = doc->createTextNodeElement(u"t", root);
    EXPECT_TRUE(text->isText());
    EXPECT_EQ(text->getParentNode(), nullptr);
    ZkPtr<ZkDocumentFragment> fragment = doc->createDocumentFragment();
    addText(doc, fragment, u"x");
    EXPECT_EQ(fragment->cloneNode(true), nullptr);
}
