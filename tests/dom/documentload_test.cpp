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
    EXPECT_EQ(treeText(doc), "<?xml-stylesheet>fo:root('text'<?pi>'more')");
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

TEST(DocumentLoad, RefusedSubtreesAndXIncludeWithoutHref) {
    const Event root{Event::Start, u"root"}, end{Event::End}, hidden{Event::Text, u"hidden"};
    // clang-format off
    const struct { const char* what; std::vector<Event> events; const char* expected; } cases[] = {
        // Nested: only the outer end tag ends the skip.
        {"refused by the document", {root, {Event::Start, u"skip"}, {Event::Start, u"skip"}, hidden, end, {Event::Start, u"inner"}, end, end,
                                     {Event::Start, u"kept"}, end, end}, "root(kept())"},
        {"refused by the parent", {root, {Event::Start, u"refused"}, hidden, end, {Event::Text, u"after"}, end}, "root('after')"},
        // The wrapper was made by the application; the end of "wrapped" returns to root past it.
        {"wrapped by the parent", {root, {Event::Start, u"wrapped"}, {Event::Text, u"in"}, end, {Event::Start, u"sibling"}, end, end},
         "root(wrapper(wrapped('in'))sibling())"},
        {"include without href", {root, {Event::Start, u"xi:include", kXInclude}, {Event::Start, u"xi:fallback", kXInclude}, hidden, end, end,
                                  {Event::Text, u"after"}, end}, "root('after')"},
    };
    // clang-format on
    for (const auto& k : cases) {
        SCOPED_TRACE(k.what);
        ZkPtr<ProbeDocument> doc(new ProbeDocument(k.events));
        doc->startFull();
        EXPECT_EQ(treeText(doc), k.expected);
        EXPECT_TRUE(doc->script().pushed.empty());
        EXPECT_TRUE(doc->script().reported.empty());
        EXPECT_EQ(doc->hasXInclude(), std::string(k.what) == "include without href");
    }
}

TEST(DocumentLoad, XIncludePushesStreamsAndReportsProblems) {
    using Attributes = std::vector<std::array<const char16_t*, 3>>;
    // clang-format off
    const struct { const char16_t* element; Attributes attributes; const char* pushed; const char* reported; const char* tree; } cases[] = {
        {u"xi:include", {{nullptr, u"href", u"part.txt"}, {nullptr, u"parse", u"text"}, {nullptr, u"encoding", u"UTF-8"}},
         "part.txt text UTF-8", "", "root('included')"}, // in the place of the include element
        {u"xi:include", {{nullptr, u"href", u"part.xml"}}, "part.xml xml ", "", "root('included')"}, // parse defaults to xml
        {u"xi:include", {{nullptr, u"href", u"a.xml"}, {nullptr, u"parse", u"html"}}, "", "187 parse html", "root()"},
        // An unknown XInclude element is dropped alone; its content goes on as usual.
        {u"xi:other", {}, "", "186 xi:other ", "root('inside')"},
    };
    // clang-format on
    for (const auto& k : cases) {
        SCOPED_TRACE(k.tree);
        std::vector<Event> events = {{Event::Start, u"root"},
                                     {Event::Start, k.element, kXInclude, k.attributes}};
        if (k.attributes.empty())
            events.push_back({Event::Text, u"inside"});
        events.insert(events.end(), {{Event::End}, {Event::End}});
        ZkPtr<ScriptedDocument> doc(new ScriptedDocument(events));
        doc->script().included = {{Event::Text, u"included"}};
        doc->startFull();
        EXPECT_EQ(treeText(doc), k.tree);
        EXPECT_EQ(doc->script().pushed,
                  k.pushed[0] ? std::vector<std::string>{k.pushed} : std::vector<std::string>());
        EXPECT_EQ(doc->script().reported, k.reported[0] ? std::vector<std::string>{k.reported}
                                                        : std::vector<std::string>());
    }
}

TEST(DocumentLoad, UnplaceableEventRaises) {
    ZkPtr<ScriptedDocument> doc(
        new ScriptedDocument({{Event::Start, u"root"}, {Event::Other}, {Event::End}}));
    doc->startPull();
    ZkNode* root = doc->getFirstChild();
    EXPECT_EQ(errorOf([&] { root->getFirstChild(); }),
              "11 SYSTEM ERROR: Cannot set a value on node type.");
    EXPECT_TRUE(root->isLoading()) << "the tree keeps what was built, still open";
    EXPECT_EQ(root->getFirstChildFast(), nullptr);
}

TEST(DocumentLoad, TruncatedInputEndsTheLoad) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument(
        {{Event::Start, u"root"}, {Event::Start, u"open"}, {Event::Text, u"cut"}}));
    doc->startPull();
    ZkNode* root = doc->getFirstChild();
    EXPECT_EQ(nameOf(root->getLastChild()), "open") << "the getters end at the end of input";
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_TRUE(root->isLoading()) << "only the innermost open node was finished";
    EXPECT_EQ(root->getNextSibling(), nullptr);
}

TEST(DocumentLoad, SourceCanBeReplacedAndRemoved) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument({{Event::Start, u"a"}, {Event::End}}));
    doc->startFull();
    EXPECT_EQ(treeText(doc), "a()");
    doc->setLoadSource(
        std::make_unique<ScriptedSource>(std::vector<Event>{{Event::Start, u"b"}, {Event::End}}));
    doc->load();
    EXPECT_EQ(treeText(doc), "b()") << "a load replaces the children";
    doc->setLoadSource(nullptr);
    EXPECT_EQ(doc->getLoadSource(), nullptr);
    doc->load();
    EXPECT_EQ(treeText(doc), "");
}
