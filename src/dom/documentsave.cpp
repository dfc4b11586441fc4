// ZkDocument: saving, a walk of the tree that drives the serializer, whole or streamed.
#include "zkcommon/core/error.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/dom/iterator.h"
#include "zkcommon/dom/namednodemap.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/value.h"
#include "zkcommon/xml/xmlparser.h"
#include "zkcommon/xml/xmlserializer.h"

#include <sstream>

namespace ZkCommonNS {

namespace {
constexpr int kSiteDoSave = 60;
constexpr int kSiteSaveDocumentElement = 61;
} // namespace

ZkXmlSerializer* ZkDocument::getSerializer() {
    if (!m_serializer)
        m_serializer = ZkXmlSerializer::createXmlSerializer();
    return m_serializer;
}

ZkXmlSerializer* ZkDocument::getSerializer() const {
    return m_serializer;
}

void ZkDocument::setSerializer(ZkXmlSerializer* serializer) {
    m_serializer = serializer;
}

// A failure halfway leaves the serializer in a state no later call can use: it is dropped.
template <class Steps> void ZkDocument::saveGuarded(Steps steps) {
    try {
        steps(*getSerializer());
    } catch (...) {
        setSerializer(nullptr);
        throw;
    }
}

void ZkDocument::save(const UnicodeString& path, ZkNode* root, const UnicodeString& encoding,
                      const UnicodeString& standalone) {
    saveGuarded([&](ZkXmlSerializer& out) {
        out.setOutput(path, encoding, standalone);
        out.startDocument(UnicodeString(), UnicodeString());
        doSave(root ? root : this, false, nullptr, nullptr);
        out.endDocument();
    });
}

void ZkDocument::save(std::ostream& stream, ZkNode* root, const UnicodeString& encoding,
                      const UnicodeString& standalone) {
    save(UnicodeString(), UnicodeString(), stream, root, encoding, standalone);
}

void ZkDocument::save(const UnicodeString& comment, const UnicodeString& doctype,
                      std::ostream& stream, ZkNode* root, const UnicodeString& encoding,
                      const UnicodeString& standalone) {
    saveGuarded([&](ZkXmlSerializer& out) {
        out.setOutput(stream, encoding, standalone);
        out.startDocument(UnicodeString(), UnicodeString());
        if (!comment.isEmpty())
            out.comment(comment);
        if (!doctype.isEmpty())
            out.docdecl(doctype);
        doSave(root ? root : this, false, nullptr, nullptr);
        out.endDocument();
    });
}

UnicodeString ZkDocument::saveXml(ZkNode* root) {
    if (!root)
        root = this;
    std::ostringstream bytes;
    saveGuarded([&](ZkXmlSerializer& out) {
        out.setOutput(bytes, UnicodeString(u"UTF-8"), UnicodeString());
        // A subtree is a fragment: it gets no XML declaration.
        if (root == this)
            out.startDocument(UnicodeString(), UnicodeString());
        doSave(root, false, nullptr, nullptr);
        out.endDocument();
    });
    const std::string text = bytes.str();
    return UnicodeString::fromUTF8(text);
}

void ZkDocument::saveDocumentElement(const UnicodeString& path) {
    ZkElement* element = getDocumentElement();
    if (!element)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteSaveDocumentElement,
                         UnicodeString(u"documentElement"));
    ZkXmlSerializer* out = getSerializer();
    out->setOutput(path, UnicodeString(), UnicodeString());
    out->startDocument(UnicodeString(), UnicodeString());
    doSave(element, true, nullptr, nullptr);
}

void ZkDocument::saveDocumentElement(std::ostream& stream) {
    ZkElement* element = getDocumentElement();
    if (!element)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteSaveDocumentElement,
                         UnicodeString(u"documentElement"));
    ZkXmlSerializer* out = getSerializer();
    out->setOutput(stream, UnicodeString(), UnicodeString());
    out->startDocument(UnicodeString(), UnicodeString());
    doSave(element, true, nullptr, nullptr);
}

void ZkDocument::saveChildElement(ZkNode* node) {
    if (node)
        doSave(node, false, nullptr, nullptr);
}

void ZkDocument::closeDocumentElement() {
    ZkXmlSerializer* out = getSerializer();
    if (ZkElement* element = getDocumentElement())
        out->endTag(element->getNamespaceUri(), element->getLocalName());
    out->endDocument();
}

void ZkDocument::doSave(ZkNode* root, bool startTagOnly, void (*callback)(ZkNode*, const void*),
                        const void* data) {
    ZkMutex guard(m_lock);
    if (!root)
        return;
    ZkXmlSerializer* out = getSerializer();
    // The parser's entity tables are kept around the walk, and a MathML root brings the MathML
    // entity names in for it. Only a parser that exists is asked: making one here would
    // replace an application's own load source.
    struct EntityMapsKeeper {
        ZkXmlParser* parser;
        const void* maps;
        ~EntityMapsKeeper() {
            if (parser)
                parser->recoverEntityMaps(maps);
        }
    } keeper{m_parser, m_parser ? m_parser->saveEntityMaps() : nullptr};
    if (m_parser && root->getNamespaceUri() == ZKN_NS_MATHML && root->getLocalName() == ZKN_math)
        m_parser->addMathMLEntities();
    ZkTreeIterator walk(root, nullptr, false, ZkTreeIterator::PRE_AND_POST_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        switch (node->getNodeType()) {
        case ELEMENT_NODE:
            if (walk.atPostVisit()) {
                out->endTag(node->getNamespaceUri(), node->getLocalName());
                break;
            }
            if (node->isText() && node->getLocalName() == ZKN_H_text) {
                // An application's element that stands for a text: its children are not
                // written, and the text goes out bare or in an extensions "text" element.
                if (!node->saveTextTag()) {
                    out->text(node->getText());
                } else {
                    const ZkName ns(ZKN_NS_EXTENSIONS);
                    ZkName prefix = out->getPrefix(ns, false);
                    if (prefix.isEmpty())
                        prefix = ZKN_qtf;
                    out->startTag(ns, prefix, ZkName(ZKN_text));
                    node->finishAttributes();
                    saveAttributes(node);
                    out->text(node->getText());
                    out->endTag(ns, ZkName(ZKN_text));
                }
                walk.setAtPostVisit(true);
                break;
            }
            out->startTag(node->getNamespaceUri(), node->getPrefix(), node->getLocalName());
            node->finishAttributes();
            if (callback)
                callback(node, data);
            else
                saveAttributes(node);
            if (startTagOnly)
                return;
            break;
        case TEXT_NODE:
            out->text(node->getText());
            break;
        case PROCESSING_INSTRUCTION_NODE:
            out->processingInstruction(node->getLocalName(), node->getText());
            break;
        case DOCUMENT_NODE:
        case DOCUMENT_FRAGMENT_NODE:
            break; // their children follow
        default:
            throwCommonError(ZK_ERROR_UNSUPPORTED_NODE_TYPE, kSiteDoSave);
        }
    }
}

void ZkDocument::saveAttributes(ZkNode* node) {
    ZkNamedNodeMap* attributes = node ? node->getAttributes() : nullptr;
    if (!attributes)
        return;
    ZkXmlSerializer* out = getSerializer();
    // Colours are written in CSS form (a name where one exists, no print model) when the
    // document element is SVG, whose attributes take CSS colours; elsewhere with their model.
    int svg = -1; // not yet looked up
    for (ZkNode* attr = attributes->getFirstNode(); attr; attr = attributes->getNextNode(attr)) {
        const ZkValue value = attr->getNodeValue();
        const ZkName uri = attr->getNamespaceUri();
        const ZkName prefix = attr->getPrefix();
        const ZkName local = attr->getLocalName();
        const ZkValueType type = value.getValueType();
        const bool color = value.getUnitType() == UnitColor &&
                           (type == ValueInteger || (type == ValueCompound && value.isCompound()));
        if (type == ValueNull || type == ValueRCObject)
            continue;
        if (color) {
            if (svg < 0) {
                ZkElement* root = getDocumentElement();
                svg = root && root->getNamespaceUri() == ZKN_NS_SVG;
            }
            out->attribute(uri, prefix, local, value.getColorValue().toString(svg != 0));
        } else if (value.isCompound()) {
            // One attribute per entry: "name.entry", or the name alone for the unnamed entry.
            ZkNamedValueMapIterator entries(value.getNamedValueMap());
            while (entries.hasNext()) {
                const ZkNamedValue& entry = entries.next();
                UnicodeString name(local.toString());
                if (!entry.getName().isEmpty())
                    name.append(u'.').append(entry.getName().toString());
                out->attribute(uri, prefix, ZkName(name),
                               entry.toValueText(/*css=*/false, /*quoteAll=*/false));
            }
        } else {
            out->attribute(uri, prefix, local,
                           value.toValueText(/*css=*/false, /*quoteAll=*/false));
        }
    }
}

} // namespace ZkCommonNS
