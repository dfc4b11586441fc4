// ZkNode: ring links, child changes with their checks and messages, destruction, searching,
// document order and inherited positions.
#include "domtest.h"

#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/documentfragment.h>
#include <zkcommon/dom/nodelist.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

struct Tree {
    ZkPtr<ZkDocument> doc{new ZkDocument()};
    ZkElement* root = nullptr;
    ZkElement* a = nullptr;
    ZkElement* b = nullptr;
    ZkElement* c = nullptr;
    Tree() {
        root = addElement(doc, doc, u"root");
        a = addElement(doc, root, u"a");
        b = addElement(doc, root, u"b");
        c = addElement(doc, root, u"c");
    }
};

} // namespace

TEST(Node, RingLinks) {
    Tree t;
    // The parent holds the last child; its next link closes the ring at the first.
    EXPECT_EQ(t.c->getNextLink(), t.a) << "the last child's next link is the first child";
    EXPECT_EQ(t.b->getPreviousSiblingFast(), t.a);
    EXPECT_EQ(t.c->getNextSiblingFast(), nullptr);
    // An only child points to itself; its removal empties the parent.
    ZkElement* only = addElement(t.doc, t.a, u"only");
    EXPECT_EQ(only->getNextLink(), only);
    EXPECT_EQ(only->getNextSibling(), nullptr);
    EXPECT_EQ(only->getPreviousSibling(), nullptr);
    EXPECT_EQ(t.a->getFirstChild(), only);
    EXPECT_EQ(t.a->getLastChild(), only);
    ZkPtr<ZkNode> removed = t.a->removeChild(only);
    EXPECT_EQ(removed->getRefCount(), 1) << "the tree's reference passed to the result";
    EXPECT_FALSE(t.a->hasChildNodes());
    EXPECT_EQ(only->getParentNode(), nullptr);
    EXPECT_EQ(only->getNextLink(), nullptr);
    // Replacing an only child.
    t.a->appendChild(only);
    ZkPtr<ZkElement> x = t.doc->createElement(ZkName(u"x"));
    removed = t.a->replaceChild(x, only);
    EXPECT_EQ(childNames(t.a), "x");
    EXPECT_EQ(x->getNextLink(), x.get());
}

TEST(Node, ChildChangesAtEveryPosition) {
    // On root(a,b,c); x is a new element, "-" no node. A node given that is already a child
    // moves; the node's removal runs first and may change the reference's links.
    // clang-format off
    const struct { const char* op; const char* node; const char* ref; const char* expected; } cases[] = {
        {"remove", "a", "-", "b,c"}, {"remove", "b", "-", "a,c"}, {"remove", "c", "-", "a,b"},
        {"insert", "x", "a", "x,a,b,c"}, {"insert", "x", "b", "a,x,b,c"}, {"insert", "x", "c", "a,b,x,c"}, {"insert", "x", "-", "a,b,c,x"},
        {"insert", "c", "a", "c,a,b"}, {"insert", "a", "c", "b,a,c"}, {"insert", "c", "b", "a,c,b"}, {"insert", "b", "b", "a,b,c"},
        {"replace", "x", "a", "x,b,c"}, {"replace", "x", "b", "a,x,c"}, {"replace", "x", "c", "a,b,x"},
        {"replace", "c", "a", "c,b"}, {"replace", "a", "c", "b,a"}, {"replace", "b", "b", "a,b,c"},
        {"append", "a", "-", "b,c,a"}, {"append", "b", "-", "a,c,b"}, {"append", "c", "-", "a,b,c"}, {"append", "x", "-", "a,b,c,x"},
    };
    // clang-format on
    for (const auto& k : cases) {
        SCOPED_TRACE(std::string(k.op) + " " + k.node + " " + k.ref);
        Tree t;
        ZkPtr<ZkElement> x = t.doc->createElement(ZkName(u"x"));
        auto find = [&](const char* name) -> ZkNode* {
            if (name[0] == 'x')
                return x.get();
            return t.root->getChildNodeByName(ZkName(UnicodeString::fromUTF8(name)));
        };
        ZkNode* node = find(k.node);
        ZkNode* ref = k.ref[0] == '-' ? nullptr : find(k.ref);
        const std::string op = k.op;
        {
            ZkPtr<ZkNode> result;
            if (op == "remove") {
                result = t.root->removeChild(node);
                EXPECT_EQ(result.get(), node);
            } else if (op == "insert") {
                EXPECT_EQ(t.root->insertBefore(node, ref), node);
            } else if (op == "replace") {
                result = t.root->replaceChild(node, ref);
                EXPECT_EQ(result.get(), ref);
                if (node == ref) {
                    EXPECT_EQ(ref->getRefCount(), 2) << "one higher while the result lives";
                }
            } else {
                EXPECT_EQ(t.root->appendChild(node), node);
            }
            EXPECT_EQ(childNames(t.root), k.expected);
            // The ring is whole again: last's next is first, first's previous is null.
            ZkNode* first = t.root->getFirstChildFast();
            EXPECT_EQ(t.root->getLastChildFast()->getNextLink(), first);
            EXPECT_EQ(first->getPreviousSibling(), nullptr);
            ZkNode* gone = op == "remove" ? node : op == "replace" && node != ref ? ref : nullptr;
            if (gone) {
                EXPECT_EQ(gone->getParentNode(), nullptr);
                EXPECT_EQ(gone->getNextLink(), nullptr);
                EXPECT_EQ(gone->getRefCount(), 1);
            }
        }
        for (ZkNode* child = t.root->getFirstChildFast(); child;
             child = child->getNextSiblingFast())
            EXPECT_EQ(child->getRefCount(), child == x.get() ? 2 : 1) << nameOf(child);
    }
}

TEST(Node, AppendMovesFromAnotherParent) {
    Tree t;
    ZkElement* other = addElement(t.doc, t.doc, u"other");
    other->appendChild(t.b);
    EXPECT_EQ(childNames(t.root), "a,c");
    EXPECT_EQ(childNames(other), "b");
    EXPECT_EQ(t.b->getParentNode(), other);
    EXPECT_EQ(t.b->getRefCount(), 1);
    // Not a child of this node: the parent check comes before the identity test.
    ZkPtr<ZkElement> loose = t.doc->createElement(ZkName(u"loose"));
    EXPECT_EQ(errorOf([&] { t.root->insertBefore(loose, loose); }),
              "9 SYSTEM ERROR: refChild is not a child of this node.");
}

TEST(Node, ChildChangeErrorsInOrder) {
    Tree t;
    ZkPtr<ZkDocument> otherDoc(new ZkDocument());
    ZkPtr<ZkElement> foreign = otherDoc->createElement(ZkName(u"foreign"));
    ZkPtr<ZkElement> loose = t.doc->createElement(ZkName(u"loose"));
    const std::string nullNew = "3 SYSTEM ERROR: newChild is null.";
    const std::string nullOld = "3 SYSTEM ERROR: oldChild is null.";
    const std::string notChildRef = "9 SYSTEM ERROR: refChild is not a child of this node.";
    const std::string notChildOld = "9 SYSTEM ERROR: oldChild is not a child of this node.";
    const std::string wrongDoc = "6 SYSTEM ERROR: newChild is created from a different document.";
    // clang-format off
    const struct Case { const char* name; std::function<void()> action; std::string error; } cases[] = {
        {"append null", [&] { t.root->appendChild(nullptr); }, nullNew},
        {"append foreign", [&] { t.root->appendChild(foreign); }, wrongDoc},
        {"insert null", [&] { t.root->insertBefore(nullptr, t.a); }, nullNew},
        {"insert null before stranger", [&] { t.root->insertBefore(nullptr, loose); }, nullNew},
        {"insert before stranger", [&] { t.root->insertBefore(foreign, loose); }, notChildRef},
        {"insert foreign", [&] { t.root->insertBefore(foreign, t.a); }, wrongDoc},
        {"insert foreign at end", [&] { t.root->insertBefore(foreign, nullptr); }, wrongDoc},
        {"remove null", [&] { t.root->removeChild(nullptr); }, nullOld},
        {"remove stranger", [&] { t.root->removeChild(loose); }, notChildOld},
        {"remove grandchild", [&] { t.doc->removeChild(t.a); }, notChildOld},
        {"replace null new first", [&] { t.root->replaceChild(nullptr, nullptr); }, nullNew},
        {"replace null old", [&] { t.root->replaceChild(foreign, nullptr); }, nullOld},
        {"replace stranger", [&] { t.root->replaceChild(foreign, loose); }, notChildOld},
        {"replace with foreign", [&] { t.root->replaceChild(foreign, t.a); }, wrongDoc},
    };
    // clang-format on
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(errorOf(test.action), test.error);
        // A failed change leaves the tree as it was.
        EXPECT_EQ(childNames(t.root), "a,b,c");
        EXPECT_EQ(foreign->getRefCount(), 1);
        EXPECT_EQ(loose->getRefCount(), 1);
        EXPECT_EQ(foreign->getParentNode(), nullptr);
    }
}

TEST(Node, SetNodeValueOnElementRaises) {
    Tree t;
    EXPECT_EQ(errorOf([&] { t.a->setNodeValue(ZkValue(1)); }),
              "11 SYSTEM ERROR: Cannot set a value on node type: Element");
    EXPECT_EQ(errorOf([&] { t.doc->setNodeValue(ZkValue(1)); }),
              "11 SYSTEM ERROR: Cannot set a value on node type: ZkDocument");
    EXPECT_TRUE(t.a->getNodeValue().isNull());
}

TEST(Node, HeldGrandchildSurvivesTreeDeath) {
    // Dynamic names live in the shared table, which the document holds; whoever keeps nodes
    // beyond their document keeps the table too.
    ZkPtr<ZkNameTable> names(ZkNameTable::getSharedNameTable());
    ZkPtr<ZkNode> held;
    {
        ZkPtr<ZkDocument> doc(new ZkDocument());
        ZkElement* root = addElement(doc, doc, u"root");
        ZkElement* child = addElement(doc, root, u"child");
        ZkElement* grandchild = addElement(doc, child, u"grandchild");
        addText(doc, grandchild, u"kept text");
        addElement(doc, grandchild, u"kept");
        addElement(doc, child, u"sibling");
        held = grandchild;
    }
    EXPECT_EQ(held->getRefCount(), 1);
    EXPECT_EQ(held->getParentNode(), nullptr);
    EXPECT_EQ(held->getNextLink(), nullptr);
    EXPECT_EQ(childNames(held), "'kept text',kept");
    EXPECT_EQ(held->getFirstChild()->getParentNode(), held.get());
}

TEST(Node, DestroysMillionDeepAndMillionWideTrees) {
    for (bool deep : {true, false}) {
        ZkPtr<ZkDocument> doc(new ZkDocument());
        ZkNode* parent = addElement(doc, doc, u"root");
        for (int i = 0; i < 1000000; ++i) {
            ZkPtr<ZkDocumentFragment> node = doc->createDocumentFragment();
            parent->appendChild(node);
            if (deep)
                parent = node;
        }
        EXPECT_EQ(deep ? parent->getNodeDepth() : parent->getChildNodeCount(), 1000000);
        doc = nullptr; // must not recurse a million frames deep
    }
}

TEST(Node, RemoveAllAndDeleteAllChildNodes) {
    Tree t;
    ZkPtr<ZkNode> held(t.b);
    addText(t.doc, t.b, u"inside");
    t.root->removeAllChildNodes();
    EXPECT_FALSE(t.root->hasChildNodes());
    EXPECT_EQ(held->getRefCount(), 1);
    EXPECT_EQ(held->getParentNode(), nullptr);
    EXPECT_EQ(childNames(held), "'inside'") << "removal keeps the subtree of a held child";

    Tree u;
    addText(u.doc, u.a, u"1");
    addElement(u.doc, addElement(u.doc, u.b, u"b1"), u"b2");
    EXPECT_EQ(u.root->deleteAllChildNodes(), 6);
    EXPECT_EQ(u.root->getLastChildFast(), nullptr);
}

TEST(Node, CountingAndSearching) {
    Tree t;
    addElement(t.doc, t.b, u"x");
    ZkElement* y = addElement(t.doc, t.b, u"y");
    ZkElement* a2 = addElement(t.doc, t.root, u"a");
    const ZkName names[] = {ZkName(u"q"), ZkName(u"root"), ZkName()};
    ZkNode *root = t.root, *none = nullptr;
    // clang-format off
    const std::pair<int, int> counts[] = {
        {t.root->getChildNodeCount(), 4}, {t.a->countFollowingSiblings(), 3}, {t.a->countPrecedingSiblings(), 0},
        {a2->countPrecedingSiblings(), 3}, {t.root->getPreviousOrSelfNodeCount(t.c), 3}, {t.root->getPreviousOrSelfNodeCount(nullptr), 0},
        {t.root->getNodeDepth(), 0}, {y->getNodeDepth(), 2},
        {y->isDescendantOf(t.root), true}, {y->isDescendantOf(y), false}, {y->isDescendantOrSelfOf(y), true},
        {y->isDescendantOf(nullptr), false}, {t.a->isSameOfType(a2), true}, {t.a->isSameOfType(t.b), false}, {t.a->isSameOfType(nullptr), false},
    };
    const std::pair<const ZkNode*, const ZkNode*> found[] = {
        {root->getChildNodeByName(ZkName(u"a")), t.a}, {root->getChildNodeByName(ZkName(u"a"), t.a), a2},
        {root->getChildNodeByName(ZkName(u"a"), a2), none}, {root->getChildNodeByName(ZkName(u"zz")), none},
        {root->getChildNodeByNameNS(ZkName(), ZkName(u"c")), t.c}, {root->getChildNodeByTypeID(ZkTypeID::kElement), t.a},
        {root->getChildNodeByTypeID(ZkTypeID::kTextNode), none},
        {y->getAncestorByName(ZkName(u"root")), root}, {y->getAncestorByName(ZkName(u"y")), none}, {y->getAncestorOrSelfByName(ZkName(u"y")), y},
        {y->getAncestorByName2(ZkName(u"q"), ZkName(u"b")), t.b}, {y->getAncestorByNames(names), root}, {y->getAncestorByNames(nullptr), none},
        {y->getAncestorByNameNS(ZkName(), ZkName(u"b")), t.b}, {y->getAncestorByTypeID(ZkTypeID::kDocument), t.doc.get()},
        {y->getAncestorOrSelfByTypeID(ZkTypeID::kElement), y},
    };
    // clang-format on
    for (size_t i = 0; i < std::size(counts); ++i)
        EXPECT_EQ(counts[i].first, counts[i].second) << "count row " << i;
    for (size_t i = 0; i < std::size(found); ++i)
        EXPECT_EQ(found[i].first, found[i].second)
            << "search row " << i << ": " << nameOf(found[i].first);
}

TEST(Node, DocumentOrderAndCommonAncestors) {
    Tree t;
    ZkElement* x = addElement(t.doc, t.a, u"x");
    ZkElement* y = addElement(t.doc, t.c, u"y");
    ZkElement* z = addElement(t.doc, t.b, u"z");
    ZkPtr<ZkDocument> other(new ZkDocument());
    ZkElement* stranger = addElement(other, other, u"s");
    ZkNode *root = t.root, *none = nullptr;
    // The common ancestor is a strict ancestor of both; "or self" may be one of the two.
    // clang-format off
    const struct { const char* name; ZkNode *self, *other; bool following, preceding; ZkNode *common, *commonOrSelf; } cases[] = {
        {"b after a", t.b, t.a, true, false, root, root}, {"b before c", t.b, t.c, false, true, root, root},
        {"y after x (cousins)", y, x, true, false, root, root}, {"x before y", x, y, false, true, root, root},
        {"b after x (inside a)", t.b, x, true, false, root, root},
        {"ancestor is not preceding", x, t.a, false, false, root, t.a}, {"descendant is not following", t.a, x, false, false, root, t.a},
        {"z and its parent", z, t.b, false, false, root, t.b}, {"b and its child", t.b, z, false, false, root, t.b},
        {"null", t.b, nullptr, false, false, none, none}, {"other tree", z, stranger, false, false, none, none},
    };
    // clang-format on
    for (const auto& k : cases) {
        SCOPED_TRACE(k.name);
        EXPECT_EQ(k.self->isFollowingOf(k.other), k.following);
        EXPECT_EQ(k.self->isPrecedingOf(k.other), k.preceding);
        EXPECT_EQ(k.self->getCommonAncestor(k.other), k.common);
        EXPECT_EQ(k.self->getCommonAncestorOrSelf(k.other), k.commonOrSelf);
    }
    EXPECT_FALSE(t.b->isFollowingOf(t.b) || t.b->isPrecedingOf(t.b)) << "self";
}

TEST(Node, InnerTextAndWhitespaceSkipping) {
    Tree t;
    addText(t.doc, t.a, u"one ");
    addText(t.doc, addElement(t.doc, t.a, u"i"), u"two");
    addText(t.doc, t.a, u" three");
    EXPECT_EQ(utf8(t.a->getInnerText()), "one two three");
    EXPECT_EQ(utf8(t.a->getFirstChild()->getInnerText()), "one ");

    ZkElement* p = addElement(t.doc, t.root, u"p");
    ZkNode* blank = addText(t.doc, p, u" \t\r\n");
    addText(t.doc, p, u"");
    ZkElement* e = addElement(t.doc, p, u"e");
    EXPECT_EQ(blank->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), e);
    EXPECT_EQ(e->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), e);
    ZkNode* word = addText(t.doc, p, u" w ");
    EXPECT_EQ(word->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), word);
    ZkNode* trailing = addText(t.doc, p, u"  ");
    EXPECT_EQ(trailing->getNextSiblingOrSelfIgnoreEmptyOrWhitespace(), nullptr);
}

TEST(Node, LoadBitsAndComplementalParents) {
    Tree t;
    EXPECT_FALSE(t.a->isLoaded()) << "built by hand";
    t.a->setFlag(ZkNode::kLoading, true);
    EXPECT_TRUE(t.a->isLoaded()) << "loading counts as loaded";
    t.a->setLoadDone();
    EXPECT_FALSE(t.a->isLoading());
    ZkElement* x = addElement(t.doc, t.a, u"x");
    t.a->setFlag(ZkNode::kComplemental, true);
    EXPECT_EQ(x->getParentNodeUncomplemental(), t.root);
}

TEST(Node, InheritedSourcePositions) {
    Tree t;
    t.a->setSourceLineNumber(10);
    t.a->setSourceColumnNumber(3);
    ZkNode* text = addText(t.doc, t.root, u"after c");
    EXPECT_EQ(text->getSourceLineNumber(), 10) << "b and c have none, a has one";
    EXPECT_EQ(text->getSourceColumnNumber(), 3);
    EXPECT_EQ(t.c->getSourceLineNumber(), 10);
    t.root->setSourceLineNumber(2);
    ZkNode* first = addText(t.doc, t.a, u"in a");
    EXPECT_EQ(first->getSourceLineNumber(), 10) << "the parent's number";
    ZkPtr<ZkTextNode> loose = t.doc->createTextNode(u"loose");
    EXPECT_EQ(loose->getSourceLineNumber(), -1);
    EXPECT_EQ(t.root->getSourceLineNumber(), 2);
}

TEST(Node, AppendChildTextAndChildren) {
    Tree t;
    ZkNode* text = t.a->appendChildText(u"hello");
    t.a->appendChildTextLF();
    t.a->insertBeforeTextLF(text);
    EXPECT_EQ(childNames(t.a), "'\n','hello','\n'");

    ZkElement* target = addElement(t.doc, t.doc, u"target");
    target->appendChildren(t.a, t.c);
    EXPECT_EQ(childNames(t.root), "c");
    EXPECT_EQ(childNames(target), "a,b");
}
