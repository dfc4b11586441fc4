// ZkNode: ring links, child changes with their checks and messages, destruction, searching,
// document order and inherited positions.
#include "domtest.h"

#include <functional>
#include <gtest/gtest.h>
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

::testing::AssertionResult throwsCode(const std::function<void()>& action, unsigned short code,
                                      const std::string& message) {
    try {
        action();
    } catch (const ZkError& e) {
        if (e.getErrorCode() != code || utf8(e.getRawMessage()) != message)
            return ::testing::AssertionFailure()
                   << "code " << e.getErrorCode() << " \"" << utf8(e.getRawMessage())
                   << "\", expected " << code << " \"" << message << "\"";
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "nothing thrown, expected " << message;
}

} // namespace

TEST(Node, RingLinksOfChildren) {
    Tree t;
    // The parent holds the last child; its next link closes the ring at the first.
    EXPECT_EQ(t.root->getLastChildFast(), t.c);
    EXPECT_EQ(t.c->getNextLink(), t.a) << "the last child's next link is the first child";
    EXPECT_EQ(t.a->getPreviousSiblingFast(), nullptr);
    EXPECT_EQ(t.b->getPreviousSiblingFast(), t.a);
    EXPECT_EQ(t.c->getNextSiblingFast(), nullptr);
    EXPECT_EQ(t.c->getNextSibling(), nullptr);
    EXPECT_EQ(t.root->getFirstChild(), t.a);
    EXPECT_EQ(t.a->getNextSibling(), t.b);
    EXPECT_EQ(childNames(t.root), "a,b,c");
}

TEST(Node, OnlyChildPointsToItself) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* only = addElement(doc, root, u"only");
    EXPECT_EQ(only->getNextLink(), only);
    EXPECT_EQ(only->getNextSibling(), nullptr);
    EXPECT_EQ(only->getNextSiblingFast(), nullptr);
    EXPECT_EQ(only->getPreviousSibling(), nullptr);
    EXPECT_EQ(root->getFirstChild(), only);
    EXPECT_EQ(root->getLastChild(), only);
}

TEST(Node, RemovingOnlyChildEmptiesParent) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* only = addElement(doc, root, u"only");
    ZkPtr<ZkNode> removed = root->removeChild(only);
    EXPECT_EQ(removed.get(), only);
    EXPECT_EQ(removed->getRefCount(), 1) << "the tree's reference passed to the result";
    EXPECT_EQ(root->getLastChildFast(), nullptr);
    EXPECT_FALSE(root->hasChildNodes());
    EXPECT_EQ(only->getParentNode(), nullptr);
    EXPECT_EQ(only->getNextLink(), nullptr);
    EXPECT_EQ(only->getPreviousSibling(), nullptr);
}

TEST(Node, RemoveFirstMiddleLast) {
    struct Case {
        const char* remove;
        const char* left;
    } cases[] = {{"a", "b,c"}, {"b", "a,c"}, {"c", "a,b"}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.remove);
        Tree t;
        ZkNode* victim = t.root->getChildNodeByName(ZkName(UnicodeString::fromUTF8(test.remove)));
        ZkPtr<ZkNode> removed = t.root->removeChild(victim);
        EXPECT_EQ(childNames(t.root), test.left);
        // The ring is whole again: last's next is first, first's previous is null.
        ZkNode* first = t.root->getFirstChildFast();
        EXPECT_EQ(t.root->getLastChildFast()->getNextLink(), first);
        EXPECT_EQ(first->getPreviousSibling(), nullptr);
        EXPECT_EQ(t.root->getLastChildFast()->getPreviousSibling(), first);
    }
}

TEST(Node, AppendMovesExistingChildToEnd) {
    Tree t;
    EXPECT_EQ(t.root->appendChild(t.a), t.a);
    EXPECT_EQ(childNames(t.root), "b,c,a");
    EXPECT_EQ(t.a->getRefCount(), 1);
    EXPECT_EQ(t.b->getPreviousSibling(), nullptr);
}

TEST(Node, AppendMovesFromAnotherParent) {
    Tree t;
    ZkElement* other = addElement(t.doc, t.doc, u"other");
    other->appendChild(t.b);
    EXPECT_EQ(childNames(t.root), "a,c");
    EXPECT_EQ(childNames(other), "b");
    EXPECT_EQ(t.b->getParentNode(), other);
    EXPECT_EQ(t.b->getRefCount(), 1);
}

TEST(Node, InsertBeforePositions) {
    struct Case {
        const char* ref;
        const char* expected;
    } cases[] = {{"a", "x,a,b,c"}, {"b", "a,x,b,c"}, {"c", "a,b,x,c"}, {nullptr, "a,b,c,x"}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.ref ? test.ref : "null");
        Tree t;
        ZkPtr<ZkElement> x = t.doc->createElement(ZkName(u"x"));
        ZkNode* ref = test.ref
                          ? t.root->getChildNodeByName(ZkName(UnicodeString::fromUTF8(test.ref)))
                          : nullptr;
        EXPECT_EQ(t.root->insertBefore(x, ref), x.get());
        EXPECT_EQ(childNames(t.root), test.expected);
        EXPECT_EQ(t.root->getLastChildFast()->getNextLink(), t.root->getFirstChildFast());
        EXPECT_EQ(x->getRefCount(), 2);
    }
}

TEST(Node, InsertBeforeMovesWithinSameParent) {
    Tree t;
    t.root->insertBefore(t.c, t.a);
    EXPECT_EQ(childNames(t.root), "c,a,b");
    t.root->insertBefore(t.c, t.b);
    EXPECT_EQ(childNames(t.root), "a,c,b");
    t.root->insertBefore(t.a, t.b);
    EXPECT_EQ(childNames(t.root), "c,a,b");
    EXPECT_EQ(t.root->getLastChildFast()->getNextLink(), t.c);
}

TEST(Node, InsertBeforeSelf) {
    Tree t;
    EXPECT_EQ(t.root->insertBefore(t.b, t.b), t.b);
    EXPECT_EQ(childNames(t.root), "a,b,c");
    EXPECT_EQ(t.b->getRefCount(), 1);
    // Not a child of this node: the parent check comes before the identity test.
    ZkPtr<ZkElement> loose = t.doc->createElement(ZkName(u"loose"));
    EXPECT_TRUE(throwsCode([&] { t.root->insertBefore(loose, loose); }, ZK_ERROR_NOT_CHILD,
                           "SYSTEM ERROR: refChild is not a child of this node."));
}

TEST(Node, ReplaceChild) {
    struct Case {
        const char* old;
        const char* expected;
    } cases[] = {{"a", "x,b,c"}, {"b", "a,x,c"}, {"c", "a,b,x"}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.old);
        Tree t;
        ZkPtr<ZkElement> x = t.doc->createElement(ZkName(u"x"));
        ZkNode* old = t.root->getChildNodeByName(ZkName(UnicodeString::fromUTF8(test.old)));
        ZkPtr<ZkNode> removed = t.root->replaceChild(x, old);
        EXPECT_EQ(removed.get(), old);
        EXPECT_EQ(removed->getRefCount(), 1);
        EXPECT_EQ(old->getParentNode(), nullptr);
        EXPECT_EQ(old->getNextLink(), nullptr);
        EXPECT_EQ(childNames(t.root), test.expected);
        EXPECT_EQ(t.root->getLastChildFast()->getNextLink(), t.root->getFirstChildFast());
        EXPECT_EQ(t.root->getFirstChildFast()->getPreviousSibling(), nullptr);
    }
}

TEST(Node, ReplaceOnlyChildAndWithSibling) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    ZkElement* only = addElement(doc, root, u"only");
    ZkPtr<ZkElement> x = doc->createElement(ZkName(u"x"));
    ZkPtr<ZkNode> removed = root->replaceChild(x, only);
    EXPECT_EQ(childNames(root), "x");
    EXPECT_EQ(x->getNextLink(), x.get());

    // The new child is a sibling: its removal runs first and changes the old child's links.
    Tree t;
    removed = t.root->replaceChild(t.c, t.a);
    EXPECT_EQ(childNames(t.root), "c,b");
    removed = t.root->replaceChild(t.c, t.b);
    EXPECT_EQ(childNames(t.root), "c");
    EXPECT_EQ(t.c->getNextLink(), t.c);
}

TEST(Node, ReplaceChildWithItselfKeepsAReference) {
    Tree t;
    {
        ZkPtr<ZkNode> same = t.root->replaceChild(t.b, t.b);
        EXPECT_EQ(same.get(), t.b);
        EXPECT_EQ(t.b->getRefCount(), 2) << "one higher while the pointer lives";
        EXPECT_EQ(childNames(t.root), "a,b,c");
    }
    EXPECT_EQ(t.b->getRefCount(), 1);
}

TEST(Node, ChildChangeErrorsInOrder) {
    Tree t;
    ZkPtr<ZkDocument> otherDoc(new ZkDocument());
    ZkPtr<ZkElement> foreign = otherDoc->createElement(ZkName(u"foreign"));
    ZkPtr<ZkElement> loose = t.doc->createElement(ZkName(u"loose"));
    const std::string nullNew = "SYSTEM ERROR: newChild is null.";
    const std::string nullOld = "SYSTEM ERROR: oldChild is null.";
    const std::string notChildRef = "SYSTEM ERROR: refChild is not a child of this node.";
    const std::string notChildOld = "SYSTEM ERROR: oldChild is not a child of this node.";
    const std::string wrongDoc = "SYSTEM ERROR: newChild is created from a different document.";
    // clang-format off
    struct Case {
        const char* name;
        std::function<void()> action;
        unsigned short code;
        std::string message;
    } cases[] = {
        {"append null", [&] { t.root->appendChild(nullptr); }, ZK_ERROR_NULL_ARGUMENT, nullNew},
        {"append foreign", [&] { t.root->appendChild(foreign); }, ZK_ERROR_WRONG_DOCUMENT, wrongDoc},
        {"insert null", [&] { t.root->insertBefore(nullptr, t.a); }, ZK_ERROR_NULL_ARGUMENT, nullNew},
        {"insert null before stranger", [&] { t.root->insertBefore(nullptr, loose); },
         ZK_ERROR_NULL_ARGUMENT, nullNew},
        {"insert before stranger", [&] { t.root->insertBefore(foreign, loose); },
         ZK_ERROR_NOT_CHILD, notChildRef},
        {"insert foreign", [&] { t.root->insertBefore(foreign, t.a); }, ZK_ERROR_WRONG_DOCUMENT, wrongDoc},
        {"insert foreign at end", [&] { t.root->insertBefore(foreign, nullptr); },
         ZK_ERROR_WRONG_DOCUMENT, wrongDoc},
        {"remove null", [&] { t.root->removeChild(nullptr); }, ZK_ERROR_NULL_ARGUMENT, nullOld},
        {"remove stranger", [&] { t.root->removeChild(loose); }, ZK_ERROR_NOT_CHILD, notChildOld},
        {"remove grandchild", [&] { t.doc->removeChild(t.a); }, ZK_ERROR_NOT_CHILD, notChildOld},
        {"replace null new first", [&] { t.root->replaceChild(nullptr, nullptr); },
         ZK_ERROR_NULL_ARGUMENT, nullNew},
        {"replace null old", [&] { t.root->replaceChild(foreign, nullptr); },
         ZK_ERROR_NULL_ARGUMENT, nullOld},
        {"replace stranger", [&] { t.root->replaceChild(foreign, loose); }, ZK_ERROR_NOT_CHILD, notChildOld},
        {"replace with foreign", [&] { t.root->replaceChild(foreign, t.a); },
         ZK_ERROR_WRONG_DOCUMENT, wrongDoc},
    };
    // clang-format on
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        EXPECT_TRUE(throwsCode(test.action, test.code, test.message));
        // A failed change leaves the tree as it was.
        EXPECT_EQ(childNames(t.root), "a,b,c");
        EXPECT_EQ(foreign->getRefCount(), 1);
        EXPECT_EQ(loose->getRefCount(), 1);
        EXPECT_EQ(foreign->getParentNode(), nullptr);
    }
}

TEST(Node, DocumentAcceptsItsOwnNodes) {
    // The owner check compares with the parent's owner and with the parent itself.
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkElement> element = doc->createElement(ZkName(u"e"));
    EXPECT_EQ(doc->appendChild(element), element.get());
    EXPECT_EQ(doc->getDocumentElement(), element.get());
    EXPECT_EQ(element->getOwnerDocument(), doc.get());
    EXPECT_EQ(doc->getOwnerDocument(), nullptr);
}

TEST(Node, SetNodeValueOnElementRaises) {
    Tree t;
    EXPECT_TRUE(throwsCode([&] { t.a->setNodeValue(ZkValue(1)); }, ZK_ERROR_WRONG_STATE,
                           "SYSTEM ERROR: Cannot set a value on node type: Element"));
    EXPECT_TRUE(throwsCode([&] { t.doc->setNodeValue(ZkValue(1)); }, ZK_ERROR_WRONG_STATE,
                           "SYSTEM ERROR: Cannot set a value on node type: ZkDocument"));
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
        EXPECT_EQ(held->getRefCount(), 2);
    }
    ASSERT_TRUE(held);
    EXPECT_EQ(held->getRefCount(), 1);
    EXPECT_EQ(held->getParentNode(), nullptr);
    EXPECT_EQ(held->getPreviousSibling(), nullptr);
    EXPECT_EQ(held->getNextLink(), nullptr);
    EXPECT_EQ(childNames(held), "'kept text',kept");
    EXPECT_EQ(held->getFirstChild()->getParentNode(), held.get());
}

TEST(Node, DestroysMillionDeepChain) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkNode* parent = doc;
    const int depth = 1000000;
    for (int i = 0; i < depth; ++i) {
        ZkPtr<ZkDocumentFragment> node = doc->createDocumentFragment();
        parent->appendChild(node);
        parent = node;
    }
    EXPECT_EQ(parent->getNodeDepth(), depth - 1);
    doc = nullptr; // must not recurse a million frames deep
    SUCCEED();
}

TEST(Node, DestroysMillionChildren) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    for (int i = 0; i < 1000000; ++i)
        addText(doc, root, u"x");
    EXPECT_EQ(root->getChildNodeCount(), 1000000);
    doc = nullptr;
    SUCCEED();
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
    EXPECT_EQ(t.root->getChildNodeCount(), 4);
    EXPECT_EQ(t.a->countFollowingSiblings(), 3);
    EXPECT_EQ(t.a->countPrecedingSiblings(), 0);
    EXPECT_EQ(a2->countPrecedingSiblings(), 3);
    EXPECT_EQ(t.root->getPreviousOrSelfNodeCount(t.c), 3);
    EXPECT_EQ(t.root->getPreviousOrSelfNodeCount(nullptr), 0);
    EXPECT_EQ(t.root->getNodeDepth(), 0);
    EXPECT_EQ(y->getNodeDepth(), 2);
    EXPECT_EQ(t.root->getChildNodeByName(ZkName(u"a")), t.a);
    EXPECT_EQ(t.root->getChildNodeByName(ZkName(u"a"), t.a), a2);
    EXPECT_EQ(t.root->getChildNodeByName(ZkName(u"a"), a2), nullptr);
    EXPECT_EQ(t.root->getChildNodeByName(ZkName(u"zz")), nullptr);
    EXPECT_EQ(t.root->getChildNodeByNameNS(ZkName(), ZkName(u"c")), t.c);
    EXPECT_EQ(t.root->getChildNodeByTypeID(ZkTypeID::kElement), t.a);
    EXPECT_EQ(t.root->getChildNodeByTypeID(ZkTypeID::kTextNode), nullptr);

    EXPECT_EQ(y->getAncestorByName(ZkName(u"root")), t.root);
    EXPECT_EQ(y->getAncestorByName(ZkName(u"y")), nullptr);
    EXPECT_EQ(y->getAncestorOrSelfByName(ZkName(u"y")), y);
    EXPECT_EQ(y->getAncestorByName2(ZkName(u"q"), ZkName(u"b")), t.b);
    const ZkName names[] = {ZkName(u"q"), ZkName(u"root"), ZkName()};
    EXPECT_EQ(y->getAncestorByNames(names), t.root);
    EXPECT_EQ(y->getAncestorByNames(nullptr), nullptr);
    EXPECT_EQ(y->getAncestorByNameNS(ZkName(), ZkName(u"b")), t.b);
    EXPECT_EQ(y->getAncestorByTypeID(ZkTypeID::kDocument), t.doc.get());
    EXPECT_EQ(y->getAncestorOrSelfByTypeID(ZkTypeID::kElement), y);
    EXPECT_TRUE(y->isDescendantOf(t.root));
    EXPECT_FALSE(y->isDescendantOf(y));
    EXPECT_TRUE(y->isDescendantOrSelfOf(y));
    EXPECT_FALSE(y->isDescendantOf(nullptr));
    EXPECT_TRUE(t.a->isSameOfType(a2));
    EXPECT_FALSE(t.a->isSameOfType(t.b));
    EXPECT_FALSE(t.a->isSameOfType(nullptr));
}

TEST(Node, CommonAncestors) {
    Tree t;
    ZkElement* x = addElement(t.doc, t.b, u"x");
    ZkPtr<ZkDocument> other(new ZkDocument());
    ZkElement* stranger = addElement(other, other, u"s");
    EXPECT_EQ(x->getCommonAncestor(t.c), t.root);
    EXPECT_EQ(x->getCommonAncestor(t.b), t.root) << "strict ancestors of both";
    EXPECT_EQ(t.b->getCommonAncestor(x), t.root);
    EXPECT_EQ(x->getCommonAncestor(nullptr), nullptr);
    EXPECT_EQ(x->getCommonAncestor(stranger), nullptr);
    EXPECT_EQ(x->getCommonAncestorOrSelf(t.b), t.b);
    EXPECT_EQ(t.b->getCommonAncestorOrSelf(x), t.b);
    EXPECT_EQ(x->getCommonAncestorOrSelf(t.c), t.root);
    EXPECT_EQ(x->getCommonAncestorOrSelf(stranger), nullptr);
}

TEST(Node, DocumentOrder) {
    Tree t;
    ZkElement* x = addElement(t.doc, t.a, u"x");
    ZkElement* y = addElement(t.doc, t.c, u"y");
    ZkPtr<ZkDocument> other(new ZkDocument());
    ZkElement* stranger = addElement(other, other, u"s");
    struct Case {
        const char* name;
        ZkNode* self;
        ZkNode* other;
        bool following;
        bool preceding;
    } cases[] = {
        {"b after a", t.b, t.a, true, false},
        {"b before c", t.b, t.c, false, true},
        {"y after x (cousins)", y, x, true, false},
        {"x before y", x, y, false, true},
        {"b after x (inside a)", t.b, x, true, false},
        {"ancestor is not preceding", x, t.a, false, false},
        {"descendant is not following", t.a, x, false, false},
        {"self", t.b, t.b, false, false},
        {"null", t.b, nullptr, false, false},
        {"other tree", t.b, stranger, false, false},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.name);
        EXPECT_EQ(test.self->isFollowingOf(test.other), test.following);
        EXPECT_EQ(test.self->isPrecedingOf(test.other), test.preceding);
    }
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

TEST(Node, FlagsAndLoadState) {
    Tree t;
    EXPECT_FALSE(t.a->isLoaded()) << "built by hand";
    t.a->setLoadDone();
    EXPECT_EQ(t.a->getFlags(), 0);
    t.a->setFlag(ZkNode::kLoading, true);
    EXPECT_TRUE(t.a->isLoading());
    EXPECT_TRUE(t.a->isLoaded());
    t.a->setLoadDone();
    EXPECT_FALSE(t.a->isLoading());
    EXPECT_TRUE(t.a->isLoaded());
    EXPECT_TRUE(t.a->getFlag(ZkNode::kLoadDone | 0x100));
    t.a->setFlag(0x100, true);
    EXPECT_TRUE(t.a->getFlag(0x100));
    t.a->setFlag(0x100, false);
    EXPECT_FALSE(t.a->getFlag(0x100));

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
    ASSERT_NE(text, nullptr);
    EXPECT_TRUE(text->isText());
    EXPECT_EQ(utf8(text->getText()), "hello");
    ZkNode* lf = t.a->appendChildTextLF();
    EXPECT_EQ(utf8(lf->getText()), "\n");
    t.a->insertBeforeTextLF(text);
    EXPECT_EQ(childNames(t.a), "'\n','hello','\n'");

    ZkElement* target = addElement(t.doc, t.doc, u"target");
    target->appendChildren(t.a, t.c);
    EXPECT_EQ(childNames(t.root), "c");
    EXPECT_EQ(childNames(target), "a,b");
}
