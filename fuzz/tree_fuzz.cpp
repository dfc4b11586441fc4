// Fuzzes the tree: the input is read as a program of child and attribute changes on a small pool
// of nodes, and the rings are checked after every step. The raw input also goes through the
// pseudo-attribute reader of processing instructions.
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/dom/text.h>
#include <zkcommon/values/value.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

using namespace ZkCommonNS;

namespace {

constexpr int kPool = 8;

void check(bool condition) {
    if (!condition)
        std::abort();
}

// Every parent's ring: last's next is first, first's previous is null, links agree both ways,
// and each child names the parent.
void checkRing(const ZkNode* parent) {
    const ZkNode* last = parent->getLastChildFast();
    if (!last)
        return;
    const ZkNode* first = last->getNextLink();
    check(first->getPreviousSiblingFast() == nullptr);
    size_t count = 0;
    const ZkNode* previous = nullptr;
    for (const ZkNode* node = first; node; node = node->getNextSiblingFast()) {
        check(node->getParentNodeFast() == parent);
        check(node->getPreviousSiblingFast() == previous);
        check(++count < 100000);
        previous = node;
    }
    check(previous == last);
}

void checkAttributes(const ZkElement* element) {
    const ZkNamedNodeMap* map = element->getAttributes();
    int count = 0;
    for (ZkNode* attr = map->getFirstNode(); attr; attr = map->getNextNode(attr)) {
        check(static_cast<ZkAttr*>(attr)->getOwnerElement() == element);
        check(++count < 100000);
    }
    check(map->getCount() <= count);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const UnicodeString text =
        UnicodeString::fromUTF8(icu::StringPiece(reinterpret_cast<const char*>(data),
                                                 static_cast<int32_t>(size)));
    ZkProcessingInstruction::parseAsAttribute(text);

    ZkPtr<ZkDocument> doc(new ZkDocument());
    std::vector<ZkPtr<ZkNode>> pool;
    const ZkName names[] = {ZkName(u"a"), ZkName(u"b"), ZkName(u"p:c"), ZkName(u"xml:base"),
                            ZkName(u"xmlns"), ZkName(u"xmlns:p")};
    for (int i = 0; i < kPool; ++i) {
        if (i % 3 == 2)
            pool.emplace_back(doc->createTextNode(u"t").get());
        else
            pool.emplace_back(doc->createElement(names[i % 3]).get());
    }
    pool.emplace_back(doc.get());
    const int nodes = static_cast<int>(pool.size());

    for (size_t i = 0; i + 2 < size; i += 3) {
        ZkNode* x = pool[data[i + 1] % nodes];
        ZkNode* y = pool[data[i + 2] % nodes];
        // Cycles are allowed by the tree and would make the checks loop: refuse them here.
        const bool cycle = x == y || y->isDescendantOf(x) || x->isDescendantOf(y);
        try {
            switch (data[i] % 8) {
            case 0:
                if (!cycle || x->getParentNodeFast() == y)
                    y->appendChild(x);
                break;
            case 1:
                if (!cycle)
                    y->getParentNodeFast() ? y->getParentNodeFast()->insertBefore(x, y)
                                           : y->insertBefore(x, nullptr);
                break;
            case 2:
                y->removeChild(x);
                break;
            case 3:
                if (!cycle && y->getParentNodeFast())
                    y->getParentNodeFast()->replaceChild(x, y);
                break;
            case 4:
                if (x->isElementNode())
                    static_cast<ZkElement*>(x)->setAttribute(names[data[i + 2] % 6],
                                                             ZkValue(data[i + 2]));
                break;
            case 5:
                if (x->isElementNode())
                    static_cast<ZkElement*>(x)->setAttributeNS(
                        ZkName(data[i + 2] % 2 ? u"urn:a" : u"urn:b"), ZkName(u"p"),
                        names[data[i + 2] % 2], ZkValue(1));
                break;
            case 6:
                if (x->isElementNode())
                    static_cast<ZkElement*>(x)->removeAttribute(names[data[i + 2] % 6]);
                break;
            case 7:
                if (x->isElementNode())
                    static_cast<ZkElement*>(x)->removeAttributeNS(
                        ZkName(data[i + 2] % 2 ? u"urn:a" : u"urn:b"), names[data[i + 2] % 2]);
                break;
            }
        } catch (const ZkError&) {
        }
        for (const ZkPtr<ZkNode>& node : pool) {
            checkRing(node);
            if (node->isElementNode())
                checkAttributes(static_cast<ZkElement*>(node.get()));
        }
    }
    // The walks must agree in length forwards and backwards.
    ZkTreeIterator forward(doc, nullptr, false, ZkTreeIterator::PRE_AND_POST_ORDER);
    ZkTreeIterator backward(doc, nullptr, true, ZkTreeIterator::PRE_AND_POST_ORDER);
    int ahead = 0, back = 0;
    while (forward.nextNode())
        ++ahead;
    while (backward.previousNode())
        ++back;
    check(ahead == back);
    return 0;
}
