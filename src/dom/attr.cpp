// ZkAttr, Attr and AttrNS.
#include "zkcommon/dom/attr.h"

#include "zkcommon/dom/document.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/xml/xmlutil.h"

namespace ZkCommonNS {

// --- ZkAttr -------------------------------------------------------------------------------------

ZkAttr::~ZkAttr() = default;

int ZkAttr::getNodeType() const {
    return ATTRIBUTE_NODE;
}
ZkNode* ZkAttr::getParentNode() const {
    return nullptr;
}
ZkNode* ZkAttr::getPreviousSibling() const {
    return nullptr;
}
ZkNode* ZkAttr::getNextSibling() const {
    return nullptr;
}
UnicodeString ZkAttr::getText() const {
    return getValue().toString();
}
void ZkAttr::setText(const UnicodeString& text) {
    setValue(ZkValue(text));
}

ZkElement* ZkAttr::getOwnerElement() const {
    return m_ownerElement;
}

int ZkAttr::getSourceLineNumber() const {
    return m_ownerElement ? m_ownerElement->getSourceLineNumber() : -1;
}

int ZkAttr::getSourceColumnNumber() const {
    return m_ownerElement ? m_ownerElement->getSourceColumnNumber() : -1;
}

UnicodeString ZkAttr::getBaseUri() const {
    if (const ZkElement* owner = getOwnerElement())
        return owner->getBaseUri();
    ZkDocument* document = getOwnerDocumentField();
    return document ? document->getBaseUri() : UnicodeString();
}

// --- Attr ---------------------------------------------------------------------------------------

Attr::Attr(ZkDocument* ownerDocument, ZkName local)
    : ZkAttr(ownerDocument), m_value(ZkValue(), local) {}

Attr::~Attr() = default;

ZkName Attr::getNodeName() const {
    return m_value.getName();
}
ZkName Attr::getLocalName() const {
    return m_value.getName();
}
ZkValue Attr::getNodeValue() const {
    return getValue();
}
void Attr::setNodeValue(const ZkValue& value) {
    setValue(value);
}

ZkValue Attr::getValue() const {
    // The name bits are the attribute's own business, not part of the value handed out.
    return ZkNamedValue(m_value, ZkName());
}

void Attr::setValue(const ZkValue& value) {
    m_value.setValue(value); // the name bits stay
}

// --- AttrNS -------------------------------------------------------------------------------------

AttrNS::AttrNS(ZkDocument* ownerDocument, ZkName uri, ZkName prefix, ZkName local)
    : Attr(ownerDocument, local), m_uri(uri), m_prefix(prefix),
      m_qname(ZkXmlUtil::makeQName(prefix, local)) {}

AttrNS::~AttrNS() = default;

ZkName AttrNS::getNamespaceUri() const {
    if (!m_prefix.isEmpty() && m_uri.isEmpty())
        return lookupNamespaceUri(m_prefix);
    return m_uri;
}

void AttrNS::setPrefix(ZkName prefix) {
    if (prefix == m_prefix)
        return;
    m_prefix = prefix;
    m_qname = ZkXmlUtil::makeQName(prefix, getLocalName());
}

} // namespace ZkCommonNS
