// Faults of the tree found in review: attributes in child operations and raw walks, walks over
// depth as loops, a loader whose open node is dropped, the attribute map's precondition, and
// application overrides of the inherited look-ups.
#include "domtest.h"

#include <functional>
#include <gtest/gtest.h>
#include <stdexcept>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

struct AttrTree {
    ZkPtr<ZkDocument> doc{new ZkDocument()};
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* a = addElement(doc, root, u"a");
    ZkElement* b = addElement(doc, root, u"b");
    ZkAttr* x;
    ZkAttr* y;
    AttrTree() {
        a->setAttribute(ZkName(u"x"), ZkValue(1));
        a->setAttribute(ZkName(u"y"), ZkValue(2));
        x = a->getAttributeNode(ZkName(u"x"));
        y = a->getAttributeNode(ZkName(u"y"));
    }
};

} // namespace

TEST(TreeRepair, AttributeIsNeverAChild) {
    AttrTree t;
    ZkPtr<ZkElement> loose = t.doc->createElement(ZkName(u"loose"));
    ZkPtr<ZkAttr> free = t.doc->createAttribute(ZkName(u"free"));
    // clang-format off
    const std::vector<std::pair<std::function<void()>, unsigned short>> cases = {
        {[&] { t.a->removeChild(t.x); }, 9},
        {[&] { t.a->replaceChild(loose, t.x); }, 9},
        {[&] { t.a->insertBefore(loose, t.y); }, 9},
        {[&] { t.b->appendChild(t.x); }, 18},
        {[&] { t.b->appendChild(free); }, 18},
        {[&] { t.root->insertBefore(t.y, t.b); }, 18},
        {[&] { t.root->replaceChild(t.x, t.b); }, 18},
    };
    // clang-format on
    for (size_t i = 0; i < cases.size(); ++i) {
        SCOPED_TRACE(i);
        const std::string error = errorOf(cases[i].first);
        EXPECT_EQ(error.substr(0, error.find(' ')), std::to_string(cases[i].second)) << error;
    }
    // Nothing moved: both rings are as they were, and teardown finds them intact.
    EXPECT_EQ(childNames(t.root), "a,b");
    EXPECT_EQ(childNames(t.a), "");
    EXPECT_EQ(t.a->getAttributes()->getCount(), 2);
    EXPECT_EQ(t.x->getOwnerElement(), t.a);
    EXPECT_EQ(t.a->getAttributes()->item(1), t.y);
}

TEST(TreeRepair, RawWalksFromAttributesEnd) {
    AttrTree t;
    EXPECT_EQ(t.y->getNextSiblingFast(), nullptr);
    EXPECT_EQ(t.y->getPreviousSiblingFast(), nullptr);
    EXPECT_EQ(t.x->getParentNodeFast(), nullptr);
    EXPECT_FALSE(t.y->isPrecedingOf(t.b));
    EXPECT_FALSE(t.b->isPrecedingOf(t.x));
    EXPECT_FALSE(t.x->isFollowingOf(t.y));
    EXPECT_FALSE(t.x->isDescendantOf(t.a));
    EXPECT_EQ(t.x->getCommonAncestor(t.b), nullptr);
    EXPECT_EQ(t.x->getNodeDepth(), 0);
    EXPECT_EQ(t.x->getOwnerElement(), t.a);
}

TEST(TreeRepair, AttributeMapRefusesAnUnfindableAttribute) {
    AttrTree t;
    auto* map = static_cast<AttrNodeMap*>(t.a->getAttributes());
    ZkPtr<ZkAttr> twin = t.doc->createAttribute(ZkName(u"x"));
    EXPECT_FALSE(map->addNode(twin)) << "name and namespace key both taken";
    EXPECT_EQ(twin->getOwnerElement(), nullptr);
    EXPECT_EQ(twin->getRefCount(), 1);
    // Two attributes findable by namespace only; removing both empties the ring and the map.
    ZkPtr<ZkAttr> other = t.doc->createAttributeNS(ZkName(u"urn:o"), ZkName(), ZkName(u"x"));
    EXPECT_TRUE(map->addNode(other));
    EXPECT_EQ(map->getCount(), 2);
    t.a->removeAttribute(ZkName(u"x"));
    t.a->removeAttribute(ZkName(u"y"));
    EXPECT_FALSE(map->isEmpty()) << "the ring still holds the namespaced one";
    EXPECT_EQ(map->getFirstNode(), other.get());
    t.a->removeAttributeNS(ZkName(u"urn:o"), ZkName(u"x"));
    EXPECT_TRUE(map->isEmpty());
    EXPECT_EQ(map->getFirstNode(), nullptr);
    t.a->setAttribute(ZkName(u"z"), ZkValue(3));
    EXPECT_EQ(t.a->getAttributeNode(ZkName(u"z"))->getOwnerElement(), t.a);
}

TEST(TreeRepair, DeepTreeAnswersOnTheDefaultStack) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->setBaseUri(UnicodeString(u"http://h/a/b/"));
    ZkNode* node = addElement(doc, doc, u"root");
    static_cast<ZkElement*>(node)->setAttributeNS(ZkName(u"http://www.w3.org/XML/1998/namespace"),
                                                  ZkName(u"xml"), ZkName(u"base"),
                                                  ZkValue(UnicodeString(u"c/")));
    // ElementNS: a plain Element looks its namespace up through every level above it.
    for (int i = 0; i < 200000; ++i)
        node = node->appendChild(doc->createElementNS(ZkName(), ZkName(), ZkName(u"e")));
    ZkNode* leaf = addText(doc, node, u"t");
    EXPECT_EQ(utf8(leaf->getBaseUri()), "http://h/a/b/c/");
    EXPECT_EQ(leaf->getSourceLineNumber(), -1);
    EXPECT_EQ(leaf->lookupNamespaceUri(ZkName(u"p")), ZkName());
    EXPECT_FALSE(leaf->isDefaultNamespace(ZkName(u"urn:x")));
    EXPECT_EQ(leaf->lookupPrefix(ZkName(u"urn:x")), ZkName());
    // A deep clone copies every level, through each node's own cloneNode.
    ZkPtr<ZkNode> copy = doc->getFirstChild()->cloneNode(true);
    int depth = 0;
    for (ZkNode* n = copy; n; n = n->getFirstChildFast())
        ++depth;
    EXPECT_EQ(depth, 200002);
    EXPECT_EQ(copy->getInnerText(), UnicodeString(u"t"));
    EXPECT_EQ(copy->deleteAllChildNodes(), 200001);
    EXPECT_EQ(doc->deleteAllChildNodes(), 200002);
}

namespace {
// An application element that answers the inherited look-ups itself.
class AppElement : public ElementNS {
public:
    AppElement(ZkDocument* doc) : ElementNS(doc, ZkName(), ZkName(), ZkName(u"app")) {}
    int getSourceLineNumber() const override { return 77; }
    int getSourceColumnNumber() const override { return 5; }
    ZkName lookupNamespaceUri(ZkName prefix) const override {
        return prefix == ZkName(u"q") ? ZkName(u"urn:app") : ElementNS::lookupNamespaceUri(prefix);
    }
    bool isDefaultNamespace(ZkName uri) const override { return uri == ZkName(u"urn:app"); }
    UnicodeString getBaseUri() const override { return UnicodeString(u"http://app/"); }
};
} // namespace

TEST(TreeRepair, InheritedLookUpsAskTheNeighboursOverride) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkElement> app(new AppElement(doc));
    doc->appendChild(app);
    ZkElement* mid = addElement(doc, app, u"p:mid"); // a prefix: the default scope is above
    mid->setAttribute(ZkName(u"xml:base"), ZkValue(UnicodeString(u"sub/")));
    ZkNode* before = addText(doc, app, u"x");
    ZkNode* text = addText(doc, mid, u"t");
    EXPECT_EQ(before->getSourceLineNumber(), 77) << "previous sibling's own override";
    EXPECT_EQ(text->getSourceLineNumber(), 77) << "through mid to its parent's override";
    EXPECT_EQ(text->getSourceColumnNumber(), 5);
    EXPECT_EQ(text->lookupNamespaceUri(ZkName(u"q")), ZkName(u"urn:app"));
    EXPECT_EQ(mid->lookupNamespaceUri(ZkName(u"r")), ZkName());
    EXPECT_TRUE(text->isDefaultNamespace(ZkName(u"urn:app")));
    EXPECT_EQ(utf8(text->getBaseUri()), "http://app/sub/");
    EXPECT_EQ(mid->getAttributeNode(ZkName(u"xml:base"))->getSourceLineNumber(), 77);
}

TEST(TreeRepair, LoaderSurvivesItsOpenNodeBeingDropped) {
    std::vector<Event> events = {{Event::Start, u"r"}, {Event::Start, u"a"}, {Event::Text, u"1"},
                                 {Event::Text, u"2"},  {Event::End},         {Event::Start, u"c"},
                                 {Event::End},         {Event::End}};
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument(events));
    doc->startPull();
    ZkNode* r = doc->getFirstChild();
    ZkNode* a = r->getFirstChild();
    ASSERT_TRUE(a->isLoading());
    r->removeChild(a); // the result, the only outside reference, goes at once
    while (doc->loadNextNode()) {
    }
    EXPECT_EQ(childNames(r), "");
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
}

TEST(TreeRepair, StandardExceptionsOfTheSourceAreZkError) {
    struct Throwing : ScriptedSource {
        bool memory;
        explicit Throwing(bool m) : ScriptedSource({}), memory(m) {}
        int next() override {
            if (memory)
                throw std::bad_alloc();
            throw std::runtime_error("disk on fire");
        }
    };
    for (bool memory : {true, false}) {
        ZkPtr<ZkDocument> doc(new ZkDocument());
        doc->setLoadSource(std::make_unique<Throwing>(memory));
        doc->setPullMode(true);
        doc->load();
        EXPECT_EQ(errorOf([&] { doc->loadNextNode(); }),
                  memory ? "1 SYSTEM ERROR: Out of memory."
                         : "2 SYSTEM ERROR: C++ exception: disk on fire");
    }
}
