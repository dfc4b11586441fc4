// ZkDocument: the node factories and the state of the incremental loader.
#include "zkcommon/dom/document.h"

#include "dom/documentlink.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/documentfragment.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/dom/loadsource.h"
#include "zkcommon/dom/processinginstruction.h"
#include "zkcommon/dom/text.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/xml/xmlparser.h"
#include "zkcommon/xml/xmlserializer.h"
#include "zkcommon/xml/xmlutil.h"

#include <new>

namespace ZkCommonNS {

ZkDocument::ZkDocument()
    : ZkNode(this), m_nameTable(ZkNameTable::addRefSharedNameTable()), m_lastLoadingNode(nullptr),
      m_skipDepth(0), m_nextElementId(0), m_linkReserve(0), m_pullMode(false),
      m_xincludeSeen(false) {}

ZkDocument::~ZkDocument() {
    // From now on no node that outlives the document, in the tree or held apart from it, can
    // reach it: their loading getters find no document to pull.
    if (m_document) {
        m_document->document = nullptr;
        // The document's own count keeps the link from reaching zero here.
        m_document->count.fetch_sub(m_linkReserve, std::memory_order_acq_rel);
        m_linkReserve = 0;
    }
    m_lastLoadingHold.reset();
    // The name table goes first; the tree itself is taken down by the node destructor, which
    // touches no names.
    if (m_nameTable) {
        m_nameTable = nullptr;
        ZkNameTable::releaseSharedNameTable();
    }
    m_parser = nullptr;
    m_source.reset();
    m_serializer = nullptr;
    setLastLoadingNode(nullptr);
}

ZkName ZkDocument::getLocalName() const {
    return ZkName(ZKN_H_document);
}
int ZkDocument::getNodeType() const {
    return DOCUMENT_NODE;
}
ZkDocument* ZkDocument::getOwnerDocument() const {
    return nullptr;
}

UnicodeString ZkDocument::getBaseUri() const {
    return m_baseUri.isEmpty() ? m_documentUri : m_baseUri;
}

UnicodeString ZkDocument::getDocumentUri() const {
    return m_documentUri.isEmpty() ? m_baseUri : m_documentUri;
}

void ZkDocument::setBaseUri(const UnicodeString& text) {
    ZkUri uri(text);
    uri.checkRedirection();
    m_baseUri = uri.toString();
}

// --- factories ----------------------------------------------------------------------------------

ZkElement* ZkDocument::getDocumentElement() const {
    for (ZkNode* child = getFirstChild(); child; child = child->getNextSibling()) {
        if (child->isA(ZkTypeID::kElement))
            return static_cast<ZkElement*>(child);
    }
    return nullptr;
}

ZkPtr<ZkElement> ZkDocument::createElement(ZkName qname) {
    return ZkPtr<ZkElement>(new (std::nothrow) Element(this, ZkXmlUtil::getPrefixFromQName(qname),
                                                       ZkXmlUtil::getLocalPartFromQName(qname)));
}

ZkPtr<ZkElement> ZkDocument::createElementNS(ZkName uri, ZkName prefix, ZkName local) {
    return ZkPtr<ZkElement>(new (std::nothrow) ElementNS(this, uri, prefix, local));
}

ZkPtr<ZkElement> ZkDocument::createElementNS(ZkName uri, ZkName qname) {
    return createElementNS(uri, ZkXmlUtil::getPrefixFromQName(qname),
                           ZkXmlUtil::getLocalPartFromQName(qname));
}

ZkPtr<ZkTextNode> ZkDocument::createTextNode(const UnicodeString& text) {
    return ZkPtr<ZkTextNode>(new (std::nothrow) ZkTextNode(this, text));
}

ZkPtr<ZkProcessingInstruction> ZkDocument::createProcessingInstruction(ZkName target,
                                                                       const UnicodeString& data) {
    return ZkPtr<ZkProcessingInstruction>(new (std::nothrow)
                                              ZkProcessingInstruction(this, target, data));
}

ZkPtr<ZkDocumentFragment> ZkDocument::createDocumentFragment() {
    return ZkPtr<ZkDocumentFragment>(new (std::nothrow) ZkDocumentFragment(this));
}

ZkPtr<ZkAttr> ZkDocument::createAttribute(ZkName qname) {
    const UnicodeString& text = qname.toString();
    const int32_t colon = ZkXmlUtil::findQNameColon(text);
    const ZkName prefix = colon < 0 ? ZkName() : ZkName(UnicodeString(text, 0, colon));
    ZkName uri;
    if (qname == ZKN_xmlns) {
        uri = ZKN_NS_XMLNS;
    } else if (prefix.isEmpty()) {
        return ZkPtr<ZkAttr>(new (std::nothrow) Attr(this, qname));
    } else if (prefix == ZKN_xlink) {
        uri = ZKN_NS_XLINK;
    } else if (prefix == ZKN_xml) {
        uri = ZKN_NS_XML;
    } else if (prefix == ZKN_xmlns) {
        uri = ZKN_NS_XMLNS;
    } else {
        uri = lookupNamespaceUri(prefix);
    }
    const ZkName local = colon < 0 ? qname : ZkName(UnicodeString(text, colon + 1));
    // An undeclared prefix gives no attribute at all.
    if (local.isEmpty() || (uri.isEmpty() && !prefix.isEmpty()))
        return ZkPtr<ZkAttr>();
    return ZkPtr<ZkAttr>(new (std::nothrow) AttrNS(this, uri, prefix, local));
}

ZkPtr<ZkAttr> ZkDocument::createAttributeNS(ZkName uri, ZkName prefix, ZkName local) {
    if (uri.isEmpty() && prefix.isEmpty())
        return ZkPtr<ZkAttr>(new (std::nothrow) Attr(this, local));
    return ZkPtr<ZkAttr>(new (std::nothrow) AttrNS(this, uri, prefix, local));
}

ZkPtr<ZkAttr> ZkDocument::createAttributeNS(ZkName uri, ZkName qname) {
    return createAttributeNS(uri, ZkXmlUtil::getPrefixFromQName(qname),
                             ZkXmlUtil::getLocalPartFromQName(qname));
}

ZkPtr<ZkNode> ZkDocument::createTextNodeElement(const UnicodeString& text, ZkNode*) {
    return ZkPtr<ZkNode>(createTextNode(text).get());
}

} // namespace ZkCommonNS
