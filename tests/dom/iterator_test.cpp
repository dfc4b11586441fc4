// ZkTreeIterator against an independent recursive walk, ZkNodeIterator and the live lists.
#include "domtest.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <random>
#include <utility>
#include <zkcommon/dom/documentfragment.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/nodelist.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

using Visit = std::pair<const ZkNode*, bool>; // node, at its post visit

// The reference: a plain recursion over the Fast getters, written from the definition of the
// orders rather than from the iterator's steps.
void referenceWalk(const ZkNode* node, ZkTreeIterator::TraversalOrder order,
                   std::vector<Visit>& out) {
    const bool hasChildren = node->getFirstChildFast() != nullptr;
    if (order != ZkTreeIterator::POST_ORDER)
        out.emplace_back(node, false);
    for (ZkNode* child = node->getFirstChildFast(); child; child = child->getNextSiblingFast())
        referenceWalk(child, order, out);
    if (order == ZkTreeIterator::POST_ORDER ||
        (order == ZkTreeIterator::PRE_AND_POST_ORDER && (node->isElementNode() || hasChildren)))
        out.emplace_back(node, true);
}

// A random tree: elements and fragments with up to five children, text leaves.
void grow(ZkDocument* doc, ZkNode* parent, std::mt19937& random, int depth) {
    std::uniform_int_distribution<int> childCount(0, 5);
    std::uniform_int_distribution<int> kind(0, 9);
    const int children = depth > 6 ? 0 : childCount(random);
    for (int i = 0; i < children; ++i) {
        const int k = kind(random);
        if (k < 4) {
            addText(doc, parent, u"t");
        } else if (k < 5) {
            ZkPtr<ZkDocumentFragment> fragment = doc->createDocumentFragment();
            parent->appendChild(fragment);
            grow(doc, fragment, random, depth + 1);
        } else {
            grow(doc, addElement(doc, parent, u"e"), random, depth + 1);
        }
    }
}

std::string describe(const std::vector<Visit>& visits) {
    std::string out;
    for (const Visit& visit : visits)
        out += nameOf(visit.first) + (visit.second ? "/ " : " ");
    return out;
}

} // namespace

TEST(TreeIterator, MatchesRecursiveWalkForwardAndBackward) {
    std::mt19937 random(20261122);
    const ZkTreeIterator::TraversalOrder orders[] = {
        ZkTreeIterator::PRE_ORDER, ZkTreeIterator::POST_ORDER, ZkTreeIterator::PRE_AND_POST_ORDER};
    for (int trial = 0; trial < 200; ++trial) {
        ZkPtr<ZkDocument> doc(new ZkDocument());
        // Roots of every kind: element, text leaf, fragment.
        ZkNode* root;
        if (trial % 10 == 0) {
            root = addText(doc, doc, u"lone");
        } else if (trial % 10 == 1) {
            ZkPtr<ZkDocumentFragment> fragment = doc->createDocumentFragment();
            doc->appendChild(fragment);
            root = fragment;
            grow(doc, root, random, 0);
        } else {
            root = addElement(doc, doc, u"root");
            grow(doc, root, random, 0);
        }
        for (ZkTreeIterator::TraversalOrder order : orders) {
            SCOPED_TRACE("trial " + std::to_string(trial) + " order " + std::to_string(order));
            std::vector<Visit> expected;
            referenceWalk(root, order, expected);

            std::vector<Visit> forward;
            ZkTreeIterator walk(root, nullptr, false, order);
            for (;;) {
                const bool more = walk.hasNextNode();
                ZkNode* node = walk.nextNode();
                ASSERT_EQ(more, node != nullptr) << "after " << describe(forward);
                if (!node)
                    break;
                forward.emplace_back(node, walk.atPostVisit());
            }
            ASSERT_EQ(describe(forward), describe(expected));
            EXPECT_EQ(walk.nextNode(), nullptr) << "stays at the end";

            // Backwards from the end: the exact reverse sequence of nodes.
            std::vector<Visit> backward;
            ZkTreeIterator back(root, nullptr, true, order);
            for (;;) {
                const bool more = back.hasPreviousNode();
                ZkNode* node = back.previousNode();
                ASSERT_EQ(more, node != nullptr);
                if (!node)
                    break;
                backward.emplace_back(node, back.atPostVisit());
            }
            ASSERT_EQ(backward.size(), expected.size());
            for (size_t i = 0; i < expected.size(); ++i) {
                const Visit& want = expected[expected.size() - 1 - i];
                ASSERT_EQ(backward[i].first, want.first) << "at " << i;
                // A node visited twice shows the same visit flag in both directions.
                if (order == ZkTreeIterator::PRE_AND_POST_ORDER &&
                    (want.first->isElementNode() || want.first->hasChildNodesFast())) {
                    EXPECT_EQ(backward[i].second, want.second) << "at " << i;
                }
            }
        }
    }
}

TEST(TreeIterator, PostFlagAtPreVisitSkipsChildren) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* skipped = addElement(doc, root, u"skipped");
    addElement(doc, skipped, u"hidden");
    ZkElement* after = addElement(doc, root, u"after");
    std::string seen;
    ZkTreeIterator walk(root, nullptr, false, ZkTreeIterator::PRE_AND_POST_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        seen += nameOf(node) + (walk.atPostVisit() ? "/ " : " ");
        if (node == skipped && walk.atPreVisit())
            walk.setAtPostVisit(true);
    }
    EXPECT_EQ(seen, "root skipped after after/ root/ ");
    (void)after;
}

TEST(TreeIterator, EmptyAndRepositioned) {
    ZkTreeIterator none;
    EXPECT_FALSE(none.hasNextNode());
    EXPECT_EQ(none.nextNode(), nullptr);
    EXPECT_EQ(none.previousNode(), nullptr);
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* child = addElement(doc, root, u"child");
    ZkTreeIterator walk(root, nullptr, false, ZkTreeIterator::PRE_ORDER);
    ZkTreeIterator copy = walk;
    walk.setToStart();
    EXPECT_EQ(walk.getCurrentNode(), root);
    EXPECT_TRUE(copy != walk);
    EXPECT_EQ(walk.nextNode(), child);
    walk.setToEnd();
    EXPECT_EQ(walk.nextNode(), nullptr);
    walk.setCurrentNode(child, true);
    walk.setTraversalOrder(ZkTreeIterator::POST_ORDER);
    EXPECT_EQ(walk.nextNode(), root);
}

TEST(NodeIterator, CursorSemantics) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* a = addElement(doc, root, u"a");
    ZkNode* t = addText(doc, a, u"t");
    ZkElement* b = addElement(doc, root, u"b");

    ZkNodeIterator it(root, nullptr);
    EXPECT_FALSE(it.hasPreviousNode());
    EXPECT_EQ(it.nextNode(), a);
    EXPECT_TRUE(it.hasPreviousNode());
    EXPECT_EQ(it.previousNode(), a) << "previous after next returns the same node";
    EXPECT_EQ(it.nextNode(), a);
    EXPECT_EQ(it.nextNode(), t);
    EXPECT_EQ(it.nextNode(), b);
    EXPECT_FALSE(it.hasNextNode());
    EXPECT_EQ(it.nextNode(), nullptr);
    EXPECT_EQ(it.previousNode(), b) << "from the end to the last node";
    it.setToEnd();
    EXPECT_FALSE(it.hasNextNode());
    it.setToStart();
    EXPECT_EQ(it.nextNode(), a);

    ZkNodeIterator fromA(root, a);
    EXPECT_EQ(fromA.nextNode(), t);
    ZkNodeIterator copy = fromA;
    EXPECT_EQ(copy.nextNode(), b);
    EXPECT_EQ(fromA.nextNode(), b);

    ZkNodeIterator empty, nullIterable(static_cast<const ZkNodeIterable*>(nullptr));
    EXPECT_EQ(empty.nextNode(), nullptr);
    EXPECT_EQ(empty.previousNode(), nullptr);
    EXPECT_FALSE(nullIterable.hasNextNode() || nullIterable.hasPreviousNode());

    ZkNodeIterator viaNode = root->getIterator();
    EXPECT_EQ(viaNode.nextNode(), a);
    ZkPtr<ZkNodeList> children = root->getChildNodes();
    ZkNodeIterator overChildren = children->getIterator();
    EXPECT_EQ(overChildren.nextNode(), a);
    EXPECT_EQ(overChildren.nextNode(), b);
    EXPECT_EQ(overChildren.nextNode(), nullptr);
}

TEST(NodeList, ChildNodeListIsLive) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkPtr<ZkNodeList> list = root->getChildNodes();
    EXPECT_EQ(list->getCount(), 0);
    EXPECT_EQ(list->getFirstNode(), nullptr);
    ZkElement* a = addElement(doc, root, u"a");
    ZkElement* b = addElement(doc, root, u"b");
    EXPECT_EQ(list->getCount(), 2);
    EXPECT_EQ(list->item(1), b);
    EXPECT_EQ(list->item(2), nullptr);
    EXPECT_EQ(list->item(-1), nullptr);
    EXPECT_EQ(list->getNextNode(a), b);
    EXPECT_EQ(list->getLastNode(), b);
    EXPECT_EQ(list->getPreviousNode(b), a);
    EXPECT_EQ(list->getNextNode(nullptr), nullptr);
}

TEST(NodeList, TreeNodeListFilters) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    const ZkName ns(u"urn:ns");
    ZkElement* root = addElement(doc, doc, u"x");
    ZkElement* x1 = addElement(doc, root, u"x");
    ZkNode* text = addText(doc, x1, u"t");
    ZkElement* y = addElement(doc, x1, u"y");
    ZkPtr<ZkElement> nsX = doc->createElementNS(ns, ZkName(u"x"));
    y->appendChild(nsX);
    ZkElement* x2 = addElement(doc, root, u"x");

    // Forward by getNextNode, backward by getPreviousNode from the last node.
    auto listed = [](const ZkNodeList* list) {
        std::string forward, backward;
        for (ZkNode* node = list->getFirstNode(); node; node = list->getNextNode(node))
            forward += nameOf(node) + (node->getNamespaceUri().isEmpty() ? " " : "@ns ");
        for (ZkNode* node = list->getLastNode(); node; node = list->getPreviousNode(node))
            backward = nameOf(node) + (node->getNamespaceUri().isEmpty() ? " " : "@ns ") + backward;
        EXPECT_EQ(backward, forward);
        return forward;
    };
    // clang-format off
    const std::pair<ZkPtr<ZkNodeList>, const char*> cases[] = {
        {root->getDescendantNodes(), "x 't' y x@ns x "}, // text nodes too, never the root
        {root->getElementsByTagName(ZkName(u"*")), "x y x@ns x "}, // skips the text, goes on below it
        {root->getElementsByTagName(ZkName(u"x")), "x x@ns x "},
        {root->getElementsByTagNameNS(ns, ZkName(u"x")), "x@ns "},
        {root->getElementsByTagNameNS(ZkName(u"*"), ZkName(u"x")), "x x@ns x "},
        {root->getElementsByTagNameNS(ZkName(), ZkName(u"*")), "x y x "},
        {root->getElementsByTagName(ZkName(u"zz")), ""},
    };
    // clang-format on
    for (const auto& k : cases) {
        EXPECT_EQ(listed(k.first), k.second);
        EXPECT_EQ(k.first->getCount(),
                  int(std::count(k.second, k.second + std::strlen(k.second), ' ')));
    }
    EXPECT_EQ(cases[0].first->item(1), text);
    EXPECT_EQ(cases[6].first->item(0), nullptr);
    // The last node fails the filter: the walk goes back from it.
    addText(doc, x2, u"tail");
    EXPECT_EQ(cases[2].first->getLastNode(), x2);
}
