// zk tree: builds a small document by hand and prints it, or the visits of a tree walk.
#include "command.h"

#include <iostream>
#include <string>
#include <zkcommon/dom/attr.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/dom/namednodemap.h>
#include <zkcommon/dom/processinginstruction.h>
#include <zkcommon/dom/text.h>
#include <zkcommon/values/value.h>

namespace zktool {
namespace {

using namespace ZkCommonNS;

std::string utf8(const UnicodeString& text) {
    std::string out;
    return text.toUTF8String(out);
}

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

int treeCommand(const Args& args) {
    ZkPtr<ZkDocument> doc = buildDemo();
    if (args.empty()) {
        printTree(doc);
        return 0;
    }
    if (args.size() == 2 && args[0] == "--walk")
        return printWalk(doc, args[1]);
    return usage("tree");
}

const Registration s_tree({"tree", "tree [--walk pre|post|both]",
                           "builds a small XSL-FO tree by hand and prints it with its attributes, "
                           "or the visits of a tree walk over it",
                           treeCommand});

} // namespace
} // namespace zktool
