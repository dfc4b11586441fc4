// The loading getters against a document that loads one node per step.
#include "domtest.h"

#include <gtest/gtest.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/nodelist.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

// <root><a>one<b/></a>two<c/></root>
std::vector<Event> sampleEvents() {
    return {{Event::Start, u"root"}, {Event::Start, u"a"},         {Event::Text, u"one"},
            {Event::Start, u"b"},    {Event::End, nullptr},        {Event::End, nullptr},
            {Event::Text, u"two"},   {Event::Start, u"c"},         {Event::End, nullptr},
            {Event::End, nullptr},   {Event::EndDocument, nullptr}};
}

ZkPtr<ScriptedDocument> pulledDocument() {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument(sampleEvents()));
    doc->startPull();
    return doc;
}

} // namespace

TEST(Loading, GettersLoadAtMostOneStep) {
    ZkPtr<ScriptedDocument> doc = pulledDocument();
    EXPECT_TRUE(doc->isLoading());
    EXPECT_EQ(doc->getLastLoadingNode(), doc.get());
    // The Fast getters never load, nor does a node without a parent look for siblings.
    EXPECT_EQ(doc->getFirstChildFast(), nullptr);
    EXPECT_EQ(doc->getLastChildFast(), nullptr);
    EXPECT_FALSE(doc->hasChildNodesFast());
    EXPECT_EQ(doc->getNextSibling(), nullptr);
    EXPECT_EQ(doc->calls(), 0);
    EXPECT_TRUE(doc->hasChildNodes());
    EXPECT_EQ(doc->calls(), 1);
    ZkNode* root = doc->getFirstChild();
    EXPECT_EQ(nameOf(root), "root");
    EXPECT_EQ(doc->calls(), 1) << "known children are served from memory";
    ZkNode* a = root->getFirstChild();
    EXPECT_EQ(nameOf(a), "a");
    EXPECT_EQ(doc->calls(), 2);
    EXPECT_TRUE(a->isLoading());
    EXPECT_EQ(a->getFirstChildFast(), nullptr) << "nothing beyond the step was read";
    ZkNode* b = a->getFirstChild()->getNextSibling();
    ASSERT_EQ(nameOf(b), "b");
    const int before = doc->calls();
    EXPECT_EQ(b->getFirstChild(), nullptr); // b is open: one step reads its end tag and "two"
    EXPECT_EQ(doc->calls(), before + 1);
    EXPECT_FALSE(b->isLoading());
    EXPECT_EQ(b->getFirstChild(), nullptr);
    EXPECT_EQ(doc->calls(), before + 1) << "a finished node never loads";
}

TEST(Loading, LastChildLoadsUntilNodeEnds) {
    ZkPtr<ScriptedDocument> doc = pulledDocument();
    ZkNode* root = doc->getFirstChild();
    ZkNode* a = root->getFirstChild();
    EXPECT_EQ(nameOf(a->getLastChild()), "b");
    EXPECT_FALSE(a->isLoading());
    EXPECT_TRUE(root->isLoading()) << "only as far as a's end";
    EXPECT_EQ(nameOf(root->getLastChildFast()), "'two'");
    ZkNode* last = root->getLastChild();
    EXPECT_EQ(nameOf(last), "c");
    EXPECT_FALSE(root->isLoading());
    EXPECT_TRUE(root->isLoaded());
    EXPECT_EQ(childNames(root), "a,'two',c");
    // A step doesn't stop at an end tag: the one that ended root read on to the document's end.
    EXPECT_FALSE(doc->isLoading());
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_EQ(doc->getLastChild(), root);
}

TEST(Loading, NextSiblingFinishesNodeFirst) {
    ZkPtr<ScriptedDocument> doc = pulledDocument();
    ZkNode* root = doc->getFirstChild();
    ZkNode* a = root->getFirstChild();
    EXPECT_EQ(root->getLastChildFast(), a);
    // a is the parent's last child so far: it must end first, then one more step finds "two".
    ZkNode* two = a->getNextSibling();
    EXPECT_EQ(nameOf(two), "'two'");
    EXPECT_FALSE(a->isLoading());
    EXPECT_EQ(childNames(a), "'one',b");
    ZkNode* c = two->getNextSibling();
    EXPECT_EQ(nameOf(c), "c");
    EXPECT_EQ(c->getNextSibling(), nullptr);
    EXPECT_FALSE(root->isLoading());
}

TEST(Loading, TreeIteratorPullsWholeDocument) {
    ZkPtr<ScriptedDocument> doc = pulledDocument();
    std::string seen;
    ZkTreeIterator walk(doc, nullptr, false, ZkTreeIterator::PRE_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        if (node != doc.get())
            seen += nameOf(node) + " ";
    }
    EXPECT_EQ(seen, "root a 'one' b 'two' c ");
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    // Counting a list of children loads them all.
    doc = pulledDocument();
    EXPECT_EQ(doc->getFirstChild()->getChildNodes()->getCount(), 3);
}

TEST(Loading, AbortStopsLoadingButKeepsBits) {
    ZkPtr<ScriptedDocument> doc = pulledDocument();
    ZkNode* root = doc->getFirstChild();
    ZkNode* a = root->getFirstChild();
    doc->abort();
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_EQ(root->getLastChild(), a) << "the getters don't hang after an abort";
    EXPECT_TRUE(root->isLoading());
    EXPECT_TRUE(a->isLoading());
    EXPECT_EQ(a->getNextSibling(), nullptr);
}

TEST(Loading, FullLoadRunsToTheEndAndReplacesChildren) {
    ZkPtr<ScriptedDocument> doc(new ScriptedDocument(sampleEvents()));
    addElement(doc, doc, u"old");
    doc->startFull();
    EXPECT_EQ(doc->getLastLoadingNode(), nullptr);
    EXPECT_FALSE(doc->isLoading());
    EXPECT_EQ(childNames(doc), "root");
    EXPECT_EQ(childNames(doc->getFirstChildFast()), "a,'two',c");
    EXPECT_EQ(doc->position(), sampleEvents().size());
}

TEST(Loading, NodesOutlivingTheirDocumentNeverReachIt) {
    // Open nodes keep their loading bit; the destructor clears it on each node before the walk
    // reads that node's children, so nothing held reaches a loader that is already gone (the
    // sanitizer build catches a call into it).
    ZkPtr<ScriptedDocument> doc = pulledDocument();
    ZkPtr<ZkNode> a(doc->getFirstChild()->getFirstChild());
    ZkPtr<ZkNode> b(a->getFirstChild()->getNextSibling());
    ASSERT_TRUE(a->isLoading() && b->isLoading());
    ZkPtr<ZkElement> loose = doc->createElement(ZkName(u"loose"));
    doc = nullptr;
    EXPECT_FALSE(a->isLoading()) << "cleared by the walk even on a held node";
    EXPECT_EQ(a->getParentNode(), nullptr);
    EXPECT_EQ(a->getNextSibling(), nullptr);
    EXPECT_EQ(a->getOwnerDocument(), nullptr);
    EXPECT_EQ(b->getFirstChild(), nullptr);
    EXPECT_EQ(b->getLastChild(), nullptr);
    EXPECT_EQ(loose->getOwnerDocument(), nullptr);
    EXPECT_EQ(utf8(loose->getBaseUri()), "");
    loose->setAttribute(ZkName(u"k"), ZkValue(1)); // no document to make the attribute: ignored
    EXPECT_FALSE(loose->hasAttributes());
    EXPECT_EQ(loose->appendChildText(UnicodeString(u"x")), nullptr);
}

TEST(Loading, PlainDocumentLoadEndsAtOnce) {
    // Without a source of events the base loader finishes the target at the first step.
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    root->setFlag(ZkNode::kLoading, true);
    EXPECT_EQ(root->getFirstChild(), nullptr);
    EXPECT_TRUE(root->isLoading()) << "nothing was being loaded, so nothing was finished";
    EXPECT_EQ(doc->loadNextNode(), nullptr);
}
