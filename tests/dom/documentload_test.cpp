// The document's loader: what each event becomes, skipped subtrees, derived documents and
// elements that refuse or redirect nodes, XInclude, and errors.
#include "domtest.h"

#include <gtest/gtest.h>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

const char16_t* const kXInclude = u"http://www.w3.org/2001/XInclude";

// An element that marks finishAttributes with bit 0x100 and, when asked to take a child named
// "wrapped", puts it into a complemental wrapper of its own making.
class ProbeElement : public ElementNS {
public:
    using ElementNS::ElementNS;
    void finishAttributes() override {
        setFlag(0x100, true);
        attributesAtFinish = getAttributes()->getCount();
    }
    ZkNode* appendChildEx(ZkNode* child) override {
        if (child->getLocalName() == ZkName(u"refused"))
            return nullptr;
        if (child->getLocalName() == ZkName(u"wrapped")) {
            ZkPtr<ZkElement> wrapper = getOwnerDocument()->createElement(ZkName(u"wrapper"));
            wrapper->setFlag(kComplemental, true);
            appendChild(wrapper);
            return wrapper->appendChild(child);
        }
        return appendChild(child);
    }
    int attributesAtFinish = -1;
};

// A document that makes ProbeElements and refuses elements named "skip".
class ProbeDocument : public ScriptedDocument {
public:
    using ScriptedDocument::ScriptedDocument;
    ZkPtr<ZkElement> createElementNS(ZkName uri, ZkName prefix, ZkName local) override {
        if (local == ZkName(u"skip"))
            return ZkPtr<ZkElement>();
        return ZkPtr<ZkElement>(new ProbeElement(this, uri, prefix, local));
    }
    using ZkDocument::createElementNS;
};

std::string dump(const ZkNode* node) {
    std::string out;
    ZkTreeIterator walk(node, nullptr, false, ZkTreeIterator::PRE_AND_POST_ORDER);
    while (ZkNode* visited = walk.nextNode()) {
        if (visited == node)
            continue;
        if (visited->isElementNode())
            out += walk.atPostVisit() ? ")" : nameOf(visited) + "(";
        else if (visited->isProcessingInstruction())
            out += "<?" + utf8(visited->getLocalName().toString()) + ">";
        else
            out += nameOf(visited);
    }
    return out;
}

} // namespace

// clang-format off
TEST(DocumentLoad, EventsBecomeNodes) {
    ZkPtr<ProbeDocument> doc(new ProbeDocument({
        {Event::Instruction, u"xml-stylesheet href='a.css'"},
        {Event::Start,
         u"fo:root",
         u"urn:fo",
         {{nullptr, u"id", u"r"}, {u"urn:x", u"x:a", u"1"}},
         3},
        {Event::Text, u"text"}, {Event::Instruction, u"pi data"}, {Event::Text, u"more"}, {Event::End}, {Event::EndDocument},
    }));
    doc->startFull();
    EXPECT_EQ(dump(doc), "<?xml-stylesheet>fo:root('text'<?pi>'more')");
    ZkElement* root = doc->getDocumentElement();
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(root->getNamespaceUri(), ZkName(u"urn:fo"));
    EXPECT_EQ(utf8(root->getPrefix().toString()), "fo");
    EXPECT_EQ(root->getSourceLineNumber(), 3);
    EXPECT_EQ(root->getSourceColumnNumber(), 1);
    EXPECT_EQ(utf8(root->getAttribute(ZkName(u"id")).toString()), "r");
    EXPECT_TRUE(root->getAttribute(ZkName(u"id")).isString()) << "the loader stores text";
    EXPECT_EQ(utf8(root->getAttributeNS(ZkName(u"urn:x"), ZkName(u"a")).toString()), "1");
    EXPECT_TRUE(root->getFlag(0x100)) << "finishAttributes ran";
    EXPECT_EQ(static_cast<ProbeElement*>(root)->attributesAtFinish, 2);
    EXPECT_FALSE(root->isLoading());
    EXPECT_TRUE(root->isLoaded());
    EXPECT_FALSE(doc->isLoading());
    ZkProcessingInstruction* pi = static_cast<ZkProcessingInstruction*>(doc->getFirstChildFast());
    EXPECT_EQ(utf8(pi->getData()), "href='a.css'");
}
// clang-format on

// clang-format off
TEST(DocumentLoad, RefusedElementSkipsSubtree) {
    ZkPtr<ProbeDocument> doc(new ProbeDocument({
        {Event::Start, u"root"},
        {Event::Start, u"skip"},
        {Event::Start, u"skip"}, // nested: only the outer end tag ends the skip
        {Event::Text, u"hidden"}, {Event::End}, {Event::Start, u"inner"}, {Event::End}, {Event::End}, {Event::Start, u"kept"}, {Event::End},
        {Event::End},
    }));
    doc->startFull();
    EXPECT_EQ(dump(doc), "root(kept())");
}
// clang-format on

// clang-format off
TEST(DocumentLoad, RefusedByParentSkipsSubtree) {
    ZkPtr<ProbeDocument> doc(new ProbeDocument({
        {Event::Start, u"root"}, {Event::Start, u"refused"}, {Event::Text, u"hidden"}, {Event::End}, {Event::Text, u"after"}, {Event::End},
    }));
    doc->startFull();
    EXPECT_EQ(dump(doc), "root('after')");
}
// clang-format on

// clang-format off
TEST(DocumentLoad, EndTagClimbsOverComplementalNodes) {
    ZkPtr<ProbeDocument> doc(new ProbeDocument({
        {Event::Start, u"root"}, {Event::Start, u"wrapped"}, {Event::Text, u"in"}, {Event::End}, {Event::Start, u"sibling"}, {Event::End},
        {Event::End},
    }));
    doc->startFull();
    // The wrapper was made by the application; the end of "wrapped" returns to root past it.
    EXPECT_EQ(dump(doc), "root(wrapper(wrapped('in'))sibling())");
}
// clang-format on

// clang-format off
TEST(DocumentLoad, XIncludeWithoutHrefVanishes) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({
        {Event::Start, u"root"},
        {Event::Start, u"xi:include", kXInclude},
        {Event::Start, u"xi:fallback", kXInclude},
        {Event::Text, u"never used"}, {Event::End}, {Event::End}, {Event::Text, u"after"}, {Event::End},
    }));
    EXPECT_FALSE(doc->hasXInclude());
    doc->startFull();
    EXPECT_EQ(dump(doc), "root('after')");
    EXPECT_TRUE(doc->hasXInclude());
    EXPECT_TRUE(doc->script().pushed.empty());
    EXPECT_TRUE(doc->script().reported.empty());
}
// clang-format on

TEST(DocumentLoad, XIncludePushesStream) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({
        {Event::Start, u"root"},
        {Event::Start,
         u"xi:include",
         kXInclude,
         {{nullptr, u"href", u"part.txt"},
          {nullptr, u"parse", u"text"},
          {nullptr, u"encoding", u"UTF-8"}}},
        {Event::End},
        {Event::End},
    }));
    doc->script().included = {{Event::Text, u"included text"}};
    doc->startFull();
    ASSERT_EQ(doc->script().pushed.size(), 1u);
    EXPECT_EQ(doc->script().pushed[0], "part.txt text UTF-8");
    EXPECT_EQ(dump(doc), "root('included text')") << "in the place of the include element";

    ZkPtr<ScriptedDocument> xml(new ScriptedDocument({
        {Event::Start, u"root"},
        {Event::Start, u"xi:include", kXInclude, {{nullptr, u"href", u"part.xml"}}},
        {Event::End},
        {Event::End},
    }));
    xml->startFull();
    ASSERT_EQ(xml->script().pushed.size(), 1u);
    EXPECT_EQ(xml->script().pushed[0], "part.xml xml ") << "parse defaults to xml";
}

// clang-format off
TEST(DocumentLoad, XIncludeProblemsAreReported) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({
        {Event::Start, u"root"},
        {Event::Start,
         u"xi:include",
         kXInclude,
         {{nullptr, u"href", u"a.xml"}, {nullptr, u"parse", u"html"}}},
        {Event::End},
        {Event::Start, u"xi:other", kXInclude},
        {Event::Text, u"inside other"}, {Event::End}, {Event::End},
    }));
    doc->startFull();
    ASSERT_EQ(doc->script().reported.size(), 2u);
    EXPECT_EQ(doc->script().reported[0], "187 parse html");
    EXPECT_EQ(doc->script().reported[1], "186 xi:other ");
    EXPECT_TRUE(doc->script().pushed.empty());
    // An unknown XInclude element is dropped alone; its content goes on as usual.
    EXPECT_EQ(dump(doc), "root('inside other')");
}
// clang-format on

// clang-format off
TEST(DocumentLoad, UnplaceableEventRaises) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({
        {Event::Start, u"root"}, {Event::Other}, {Event::End},
    }));
    doc->startPull();
    ZkNode* root = doc->getFirstChild();
    try {
        root->getFirstChild();
        ADD_FAILURE() << "no throw";
    } catch (const ZkError& e) {
        EXPECT_EQ(e.getErrorCode(), ZK_ERROR_WRONG_STATE);
        EXPECT_EQ(utf8(e.getRawMessage()), "SYSTEM ERROR: Cannot set a value on node type.");
    }
    EXPECT_TRUE(root->isLoading()) << "the tree keeps what was built, still open";
    EXPECT_EQ(root->getFirstChildFast(), nullptr);
}
// clang-format on

// clang-format off
TEST(DocumentLoad, TruncatedInputEndsTheLoad) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({
        {Event::Start, u"root"}, {Event::Start, u"open"}, {Event::Text, u"cut"},
    }));
    doc->startPull();
    ZkNode* root = doc->getFirstChild();
    EXPECT_EQ(nameOf(root->getLastChild()), "open") << "the getters end at the end of input";
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_TRUE(root->isLoading()) << "only the innermost open node was finished";
    EXPECT_EQ(root->getNextSibling(), nullptr);
}
// clang-format on

TEST(DocumentLoad, SourceCanBeReplacedAndRemoved) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({{Event::Start, u"a"}, {Event::End}}));
    doc->startFull();
    EXPECT_EQ(dump(doc), "a()");
    doc->setLoadSource(
        std::make_unique<ScriptedSource>(std::vector<Event>{{Event::Start, u"b"}, {Event::End}}));
    doc->load();
    EXPECT_EQ(dump(doc), "b()") << "a load replaces the children";
    doc->setLoadSource(nullptr);
    EXPECT_EQ(doc->getLoadSource(), nullptr);
    doc->load();
    EXPECT_EQ(dump(doc), "");
}
