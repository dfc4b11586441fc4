// zk tree: builds a small document by hand and prints it, or the visits of a tree walk.
#include "command.h"

#include <iostream>
#include <memory>
#include <string>
#include <vector>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/loadsource.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/dom/text.h>
#include <zkcommon/values/value.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

// Escapes the characters that would make the printed line ambiguous.
std::string quoted(const UnicodeString& text) {
    std::string out = "\"";
    for (char c : utf8(text)) {
        switch (c) {
        case '\n':
            out += "\\n";
            break;
        case '\t':
            out += "\\t";
            break;
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        default:
            out += c;
        }
    }
    return out + "\"";
}

ZkElement* add(ZkNode* parent, ZkDocument* doc, const char16_t* qname) {
    ZkPtr<ZkElement> element =
        doc->createElementNS(ZkName(ZKN_NS_XSL_FO), ZkName(UnicodeString(qname)));
    parent->appendChild(element);
    return element;
}

void set(ZkElement* element, const char16_t* name, const char16_t* value) {
    element->setAttribute(ZkName(UnicodeString(name)), ZkValue(UnicodeString(value)));
}

// An XSL-FO page with a stylesheet instruction, a default and a prefixed namespace, mixed
// content and an attribute in the XML namespace.
ZkPtr<ZkDocument> buildDemo() {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkPtr<ZkProcessingInstruction> pi = doc->createProcessingInstruction(
        ZkName(u"xml-stylesheet"), u"href=\"page.css\" type=\"text/css\"");
    doc->appendChild(pi);
    ZkElement* root = add(doc, doc, u"fo:root");
    root->setAttributeXMLNS(ZkName(ZKN_NS_XSL_FO), ZkName(u"fo"));
    set(root, u"xml:lang", u"en");
    ZkElement* masters = add(root, doc, u"fo:layout-master-set");
    ZkElement* page = add(masters, doc, u"fo:simple-page-master");
    set(page, u"master-name", u"A4");
    set(page, u"page-width", u"210mm");
    set(page, u"page-height", u"297mm");
    add(page, doc, u"fo:region-body");
    ZkElement* sequence = add(root, doc, u"fo:page-sequence");
    set(sequence, u"master-reference", u"A4");
    ZkElement* flow = add(sequence, doc, u"fo:flow");
    set(flow, u"flow-name", u"xsl-region-body");
    ZkElement* block = add(flow, doc, u"fo:block");
    block->setAttribute(ZkName(u"font-size"), ZkValue(12.0f, UnitPt));
    block->appendChildText(u"Hello, ");
    ZkElement* inline_ = add(block, doc, u"fo:inline");
    set(inline_, u"font-weight", u"bold");
    inline_->appendChildText(u"tree");
    block->appendChildText(u"!");
    ZkElement* svgHost = add(flow, doc, u"fo:block");
    ZkPtr<ZkElement> svg = doc->createElementNS(ZkName(ZKN_NS_SVG), ZkName(), ZkName(u"svg"));
    svg->setAttributeXMLNS(ZkName(ZKN_NS_SVG), ZkName());
    svg->setAttribute(ZkName(u"width"), ZkValue(20));
    svgHost->appendChild(svg);
    return doc;
}

std::string describeElement(const ZkElement* element, bool withUri) {
    std::string line = utf8(element->getNodeName().toString());
    if (withUri && !element->getNamespaceUri().isEmpty())
        line += " {" + utf8(element->getNamespaceUri().toString()) + "}";
    const ZkNamedNodeMap* attributes = element->getAttributes();
    for (ZkNode* node = attributes->getFirstNode(); node; node = attributes->getNextNode(node)) {
        const ZkAttr* attr = static_cast<const ZkAttr*>(node);
        line +=
            " " + utf8(attr->getNodeName().toString()) + "=" + quoted(attr->getValue().toString());
    }
    return line;
}

std::string describe(const ZkNode* node, bool withUri) {
    switch (node->getNodeType()) {
    case ZkNode::ELEMENT_NODE:
        return describeElement(static_cast<const ZkElement*>(node), withUri);
    case ZkNode::TEXT_NODE:
        return quoted(node->getText());
    case ZkNode::PROCESSING_INSTRUCTION_NODE:
        return "<?" + utf8(node->getLocalName().toString()) + " " + utf8(node->getText()) + "?>";
    default:
        return utf8(node->getLocalName().toString());
    }
}

void printTree(const ZkDocument* doc) {
    int depth = 0;
    ZkTreeIterator walk(doc, nullptr, false, ZkTreeIterator::PRE_AND_POST_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        const bool twice = node->isElementNode() || node->hasChildNodesFast();
        if (walk.atPostVisit() && twice) {
            --depth;
            continue;
        }
        std::cout << std::string(static_cast<size_t>(depth) * 2, ' ')
                  << describe(node, /*withUri=*/true) << "\n";
        if (twice)
            ++depth;
    }
}

int printWalk(const ZkDocument* doc, const std::string& orderName) {
    ZkTreeIterator::TraversalOrder order;
    if (orderName == "pre")
        order = ZkTreeIterator::PRE_ORDER;
    else if (orderName == "post")
        order = ZkTreeIterator::POST_ORDER;
    else if (orderName == "both")
        order = ZkTreeIterator::PRE_AND_POST_ORDER;
    else
        return fail("unknown walk order '" + orderName + "' (pre, post or both)");
    ZkTreeIterator walk(doc->getDocumentElement(), nullptr, false, order);
    while (ZkNode* node = walk.nextNode()) {
        std::cout << (walk.atPostVisit() ? "post " : "pre  ")
                  << (node->isElementNode() ? utf8(node->getNodeName().toString())
                                            : describe(node, false))
                  << "\n";
    }
    return 0;
}

// A few parser events, given as a list: start tags by name, end tags, text.
class ListSource : public ZkLoadEventSource {
public:
    struct Item {
        int event;
        const char16_t* text;
    };
    explicit ListSource(std::vector<Item> items) : m_items(std::move(items)) {}

    int next() override {
        if (m_popPending) {
            --m_depth;
            m_popPending = false;
        }
        if (m_position >= m_items.size())
            return END_DOCUMENT;
        m_current = m_items[m_position++];
        if (m_current.event == START_TAG)
            ++m_depth;
        else if (m_current.event == END_TAG)
            m_popPending = true;
        return m_current.event;
    }
    int getDepth() const override { return m_depth; }
    ZkName getNamespace() const override { return ZkName(ZKN_NS_XSL_FO); }
    ZkName getPrefix() const override { return ZkName(u"fo"); }
    ZkName getName() const override { return ZkName(m_current.text); }
    UnicodeString getText() const override { return UnicodeString(m_current.text); }
    ZkName getTarget() const override { return ZkName(); }
    int getAttributeCount() const override { return m_current.event == START_TAG ? 0 : -1; }
    ZkName getAttributeNamespace(int) const override { return ZkName(); }
    ZkName getAttributePrefix(int) const override { return ZkName(); }
    ZkName getAttributeName(int) const override { return ZkName(); }
    UnicodeString getAttributeValue(int) const override { return UnicodeString(); }
    int getLineNumber() const override { return static_cast<int>(m_position); }
    int getColumnNumber() const override { return 1; }
    void throwError(unsigned short, const UnicodeString&, const UnicodeString&) override {}
    void pushStream(const UnicodeString&, ZkName, const UnicodeString&) override {}

private:
    std::vector<Item> m_items;
    Item m_current{END_DOCUMENT, nullptr};
    size_t m_position = 0;
    int m_depth = 0;
    bool m_popPending = false;
};

// A document that tells each node its loader adds.
class TellingDocument : public ZkDocument {
public:
    ZkNode* loadNextNode() override {
        ZkNode* node = ZkDocument::loadNextNode();
        std::cout << "    load step " << ++m_steps << ": "
                  << (node ? describe(node, /*withUri=*/false) : std::string("end")) << "\n";
        return node;
    }

private:
    int m_steps = 0;
};

// Walks a document in pull mode: the walk's getters call the loader only when the next answer
// isn't in memory yet, so loading and reading interleave.
int printPull() {
    using Item = ListSource::Item;
    const int start = ZkLoadEventSource::START_TAG, end = ZkLoadEventSource::END_TAG,
              text = ZkLoadEventSource::TEXT;
    ZkPtr<TellingDocument> doc(new TellingDocument());
    doc->setLoadSource(std::make_unique<ListSource>(std::vector<Item>{{start, u"root"},
                                                                      {start, u"page-sequence"},
                                                                      {start, u"flow"},
                                                                      {start, u"block"},
                                                                      {text, u"first"},
                                                                      {end, nullptr},
                                                                      {start, u"block"},
                                                                      {text, u"second"},
                                                                      {end, nullptr},
                                                                      {end, nullptr},
                                                                      {end, nullptr},
                                                                      {end, nullptr}}));
    doc->setPullMode(true);
    doc->load();
    std::cout << "load() returned; children in memory: "
              << (doc->hasChildNodesFast() ? "some" : "none") << "\n";
    ZkTreeIterator walk(doc, nullptr, false, ZkTreeIterator::PRE_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        if (node != doc.get())
            std::cout << "visit " << describe(node, /*withUri=*/false) << "\n";
    }
    return 0;
}

int treeCommand(const Args& args) {
    ZkPtr<ZkDocument> doc = buildDemo();
    if (args.empty()) {
        printTree(doc);
        return 0;
    }
    if (args.size() == 2 && args[0] == "--walk")
        return printWalk(doc, args[1]);
    if (args.size() == 1 && args[0] == "--pull")
        return printPull();
    return usage("tree");
}

const Registration s_tree({"tree", "tree [--walk pre|post|both | --pull]",
                           "builds a small XSL-FO tree by hand and prints it with its attributes, "
                           "the visits of a tree walk over it, or a walk that pulls the loader",
                           treeCommand});

} // namespace
} // namespace zktool
