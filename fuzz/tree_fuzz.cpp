// Fuzzes the tree: the input is read as a program of child and attribute changes on a small pool
// of nodes, and the rings are checked after every step; then as a stream of load events, pulled
// through the loading getters. The raw input also goes through the pseudo-attribute reader of
// processing instructions.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <vector>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/loadsource.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/dom/text.h>
#include <zkcommon/values/value.h>

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

// Events from the input bytes, with a depth kept as a parser keeps it (an unbalanced end tag is
// reported at depth 0 and changes nothing).
class ByteSource : public ZkLoadEventSource {
public:
    ByteSource(const uint8_t* data, size_t size) : m_data(data), m_size(size) {}

    int next() override {
        if (m_pop) {
            --m_depth;
            m_pop = false;
        }
        if (m_position >= m_size)
            return m_event = END_DOCUMENT;
        m_byte = m_data[m_position++];
        switch (m_byte % 8) {
        case 0:
        case 1:
            ++m_depth;
            return m_event = START_TAG;
        case 2:
        case 3:
            m_pop = m_depth > 0;
            return m_event = END_TAG;
        case 4:
            return m_event = TEXT;
        case 5:
            return m_event = PROCESSING_INSTRUCTION;
        case 6:
            return m_event = m_byte == 6 ? END_DOCUMENT : TEXT;
        default:
            return m_event = m_byte == 7 ? 9 : START_TAG + (++m_depth, 0);
        }
    }
    int getDepth() const override { return m_depth; }
    ZkName getNamespace() const override {
        return (m_byte >> 3) % 4 == 0 ? ZkName(ZKN_NS_XINCLUDE) : ZkName();
    }
    ZkName getPrefix() const override { return ZkName(); }
    ZkName getName() const override {
        static const ZkName names[] = {ZkName(ZKN_include), ZkName(u"a"), ZkName(u"b"),
                                       ZkName(u"c")};
        return names[(m_byte >> 5) % 4];
    }
    UnicodeString getText() const override { return UnicodeString(u"t"); }
    ZkName getTarget() const override { return ZkName(u"pi"); }
    int getAttributeCount() const override { return m_event == START_TAG ? m_byte % 3 : -1; }
    ZkName getAttributeNamespace(int) const override { return ZkName(); }
    ZkName getAttributePrefix(int) const override { return ZkName(); }
    ZkName getAttributeName(int i) const override {
        static const ZkName names[] = {ZkName(ZKN_href), ZkName(ZKN_parse)};
        return names[i % 2];
    }
    UnicodeString getAttributeValue(int i) const override {
        return i == 0 ? UnicodeString(u"x.xml") : UnicodeString(u"text");
    }
    int getLineNumber() const override { return int(m_position); }
    int getColumnNumber() const override { return 1; }
    void throwError(unsigned short, const UnicodeString&, const UnicodeString&) override {}
    void pushStream(const UnicodeString&, ZkName, const UnicodeString&) override {}

private:
    const uint8_t* m_data;
    size_t m_size;
    size_t m_position = 0;
    uint8_t m_byte = 0;
    int m_event = START_DOCUMENT;
    int m_depth = 0;
    bool m_pop = false;
};

// Walks what is in memory with the Fast getters: the loading ones would pull the loader again.
void checkTree(const ZkNode* root) {
    const ZkNode* node = root;
    while (node) {
        checkRing(node);
        if (const ZkNode* child = node->getFirstChildFast()) {
            node = child;
            continue;
        }
        while (node != root && !node->getNextSiblingFast())
            node = node->getParentNodeFast();
        node = node == root ? nullptr : node->getNextSiblingFast();
    }
}

void loadEvents(const uint8_t* data, size_t size) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    doc->setLoadSource(std::make_unique<ByteSource>(data, size));
    doc->setPullMode(size % 2 == 0);
    try {
        doc->load();
        // Pull the rest through the getters, from the back and from the front.
        if (ZkNode* first = doc->getFirstChild())
            first->getLastChild();
        checkTree(doc);
    } catch (const ZkError&) {
        checkTree(doc);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const UnicodeString text = UnicodeString::fromUTF8(
        icu::StringPiece(reinterpret_cast<const char*>(data), static_cast<int32_t>(size)));
    ZkProcessingInstruction::parseAsAttribute(text);

    ZkPtr<ZkDocument> doc(new ZkDocument());
    std::vector<ZkPtr<ZkNode>> pool;
    const ZkName names[] = {ZkName(u"a"),        ZkName(u"b"),     ZkName(u"p:c"),
                            ZkName(u"xml:base"), ZkName(u"xmlns"), ZkName(u"xmlns:p")};
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

    loadEvents(data, size);
    return 0;
}
