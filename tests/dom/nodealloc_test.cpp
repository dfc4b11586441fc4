// Node allocation: nodes outlive their document, a throwing constructor gives its block back,
// and trees built on one thread die on another.
#include "domtest.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <thread>
#include <vector>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/values/value.h>

using namespace ZkCommonNS;
using namespace domtest;

namespace {

class ThrowingElement : public ElementNS {
public:
    explicit ThrowingElement(ZkDocument* doc) : ElementNS(doc, ZkName(), ZkName(), ZkName(u"x")) {
        throw std::runtime_error("refused");
    }
};

// A derived node larger than the pool's largest block.
class BigText : public ZkTextNode {
public:
    explicit BigText(ZkDocument* doc) : ZkTextNode(doc, UnicodeString(u"big")) { m_pad[0] = 1; }
    char m_pad[512];
};

ZkPtr<ZkDocument> makeTree(int width) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkElement* root = addElement(doc, doc, u"root");
    for (int i = 0; i < width; ++i) {
        ZkElement* child = addElement(doc, root, u"item");
        child->setAttribute(ZkName(u"n"), ZkValue(i));
        addText(doc, child, u"text");
    }
    return doc;
}

} // namespace

TEST(NodeAlloc, HeldNodesOutliveTheDocument) {
    ZkPtr<ZkElement> kept;
    ZkPtr<ZkNode> text;
    ZkPtr<ZkNamedNodeMap> map;
    ZkPtr<ZkAttr> attr;
    {
        ZkPtr<ZkDocument> doc = makeTree(100);
        ZkElement* first = static_cast<ZkElement*>(doc->getDocumentElement()->getFirstChild());
        kept = static_cast<ZkElement*>(first->getNextSibling());
        text = doc->getDocumentElement()->getLastChild()->getFirstChild();
        map = first->getAttributes(); // the element itself goes with the document
        attr = first->getAttributeNode(ZkName(u"n"));
    }
    EXPECT_EQ(attr->getOwnerElement(), nullptr);
    EXPECT_EQ(attr->getValue().getIntegerValue(-1), 0);
    EXPECT_EQ(map->getCount(), 0);
    EXPECT_EQ(map->getFirstNode(), nullptr);
    EXPECT_EQ(map->getNamedItem(ZkName(u"n")), nullptr);
    EXPECT_EQ(kept->getAttribute(ZkName(u"n")).toString(), UnicodeString(u"1"));
    EXPECT_EQ(utf8(kept->getFirstChildFast()->getText()), "text");
    EXPECT_EQ(utf8(text->getText()), "text");
    EXPECT_EQ(kept->getParentNodeFast(), nullptr);
    // The blocks of the dead document are handed out again; the survivors are untouched.
    ZkPtr<ZkDocument> other = makeTree(200);
    EXPECT_EQ(kept->getAttribute(ZkName(u"n")).toString(), UnicodeString(u"1"));
    EXPECT_EQ(utf8(text->getText()), "text");
}

TEST(NodeAlloc, ManyHeldNodesOutliveTheDocument) {
    // Thousands of nodes, so that the document's counts on the link run out and are taken
    // again several times; every 97th item survives with its attribute and text. Whoever keeps
    // nodes beyond their document keeps the shared name table too.
    ZkPtr<ZkNameTable> names(ZkNameTable::getSharedNameTable());
    std::vector<ZkPtr<ZkElement>> kept;
    {
        ZkPtr<ZkDocument> doc = makeTree(5000);
        int index = 0;
        for (ZkNode* item = doc->getDocumentElement()->getFirstChild(); item;
             item = item->getNextSibling(), ++index) {
            if (index % 97 == 0)
                kept.emplace_back(static_cast<ZkElement*>(item));
        }
    }
    ZkPtr<ZkDocument> other = makeTree(3000);
    ASSERT_EQ(kept.size(), 52u);
    for (size_t i = 0; i < kept.size(); ++i) {
        EXPECT_EQ(kept[i]->getAttribute(ZkName(u"n")).getIntegerValue(-1), int(i) * 97);
        EXPECT_EQ(utf8(kept[i]->getFirstChildFast()->getText()), "text");
        EXPECT_EQ(kept[i]->getOwnerDocument(), nullptr);
    }
}

TEST(NodeAlloc, ThrowingConstructorAndLargeNodes) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    EXPECT_THROW(new (std::nothrow) ThrowingElement(doc), std::runtime_error);
    EXPECT_THROW(new ThrowingElement(doc), std::runtime_error);
    ZkPtr<BigText> big(new (std::nothrow) BigText(doc));
    doc->appendChild(big);
    EXPECT_EQ(utf8(doc->getFirstChild()->getText()), "big");
    ZkPtr<BigText> other(new BigText(doc));
    EXPECT_EQ(other->m_pad[0], 1);
}

TEST(NodeAlloc, TreesDieOnAnotherThread) {
    std::vector<ZkPtr<ZkDocument>> made(40);
    std::thread builder([&made] {
        for (auto& doc : made)
            doc = makeTree(500);
    });
    builder.join();
    // This thread frees blocks it never took, then builds from them.
    int items = 0;
    for (auto& doc : made) {
        items += doc->getDocumentElement()->getChildNodeCount();
        doc = nullptr;
    }
    EXPECT_EQ(items, 40 * 500);
    for (int round = 0; round < 3; ++round) {
        std::vector<std::thread> workers;
        for (int t = 0; t < 2; ++t) {
            workers.emplace_back([] {
                for (int i = 0; i < 20; ++i) {
                    ZkPtr<ZkDocument> doc = makeTree(300);
                    EXPECT_EQ(doc->getDocumentElement()->getChildNodeCount(), 300);
                }
            });
        }
        for (auto& worker : workers)
            worker.join();
    }
}
