// ZkElement, Element and ElementNS: attribute operations, cloning, base URI and positions.
#include "zkcommon/dom/element.h"

#include "dom/inheritwalk.h"
#include "zkcommon/core/error.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/namednodemap.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/values/value.h"
#include "zkcommon/xml/xmlutil.h"

#include <new>
#include <utility>

namespace ZkCommonNS {

namespace {
constexpr int kSiteRemoveAttributeNode = 20;

ZkAttr* asAttr(ZkNode* node) {
    return node && node->isA(ZkTypeID::kAttr) ? static_cast<ZkAttr*>(node) : nullptr;
}

// The local name under which `prefix` is declared: "xmlns" itself for the default namespace.
ZkName xmlnsLocal(ZkName prefix) {
    return prefix.isEmpty() ? ZkName(ZKN_xmlns) : prefix;
}
// The prefix of that declaration: none for xmlns="...", "xmlns" for xmlns:p="...".
ZkName xmlnsPrefix(ZkName prefix) {
    return prefix.isEmpty() ? ZkName() : ZkName(ZKN_xmlns);
}
} // namespace

ZkCssDebugBlock::~ZkCssDebugBlock() = default;

// --- ZkElement ----------------------------------------------------------------------------------

ZkElement::ZkElement(ZkDocument* ownerDocument)
    : ZkNode(ownerDocument), m_attributes(new AttrNodeMap(this)),
      m_elementId(ownerDocument ? ownerDocument->m_nextElementId++ : 0), m_sourceLine(-1),
      m_sourceColumn(-1) {}

ZkElement::~ZkElement() {
    // A map that outlives its element must not keep attributes that point back at it.
    if (m_attributes && m_attributes->getRefCount() > 1)
        static_cast<AttrNodeMap*>(m_attributes.get())->detachFromOwner();
}

int ZkElement::getNodeType() const {
    return ELEMENT_NODE;
}
bool ZkElement::isElementNode() const {
    return true;
}
ZkNamedNodeMap* ZkElement::getAttributes() const {
    return m_attributes.get();
}
bool ZkElement::hasAttributes() const {
    return m_attributes && m_attributes->getCount() > 0;
}

ZkValue ZkElement::getAttribute(ZkName qname) const {
    ZkAttr* attr = asAttr(m_attributes->getNamedItem(qname));
    return attr ? attr->getValue() : ZkValue();
}

ZkValue ZkElement::getAttributeNS(ZkName uri, ZkName local) const {
    ZkAttr* attr = asAttr(m_attributes->getNamedItemNS(uri, local));
    return attr ? attr->getValue() : ZkValue();
}

void ZkElement::setAttribute(ZkName qname, const ZkValue& value) {
    ZkAttr* attr = asAttr(m_attributes->getNamedItem(qname));
    ZkPtr<ZkAttr> created;
    if (!attr) {
        ZkDocument* document = getOwnerDocumentField();
        if (!document)
            return;
        created = document->createAttribute(qname);
        if (!created)
            return; // an undeclared prefix: nothing is stored
        attr = created;
        // The map takes over the reference; a refused attribute stays with `created`.
        static_cast<AttrNodeMap*>(m_attributes.get())->addNode(std::move(created));
    }
    attr->setValue(value);
}

void ZkElement::setAttributeNS(ZkName uri, ZkName prefix, ZkName local, const ZkValue& value) {
    if (local.isEmpty())
        return;
    if (uri.isEmpty() && !prefix.isEmpty())
        return; // a prefix without a namespace is dropped, not reported
    AttrNodeMap* map = static_cast<AttrNodeMap*>(m_attributes.get());
    ZkAttr* attr = asAttr(map->getNamedItemNS(uri, local));
    ZkPtr<ZkAttr> created;
    if (!attr) {
        ZkDocument* document = getOwnerDocumentField();
        if (!document)
            return;
        created = document->createAttributeNS(uri, prefix, local);
        if (!created)
            return;
        attr = created;
        map->addNode(std::move(created));
    } else {
        // Keeps its place in the order; only its qualified name changes.
        map->changePrefix(attr, prefix);
    }
    attr->setValue(value);
}

void ZkElement::setAttributeNS(ZkName uri, ZkName qname, const ZkValue& value) {
    setAttributeNS(uri, ZkXmlUtil::getPrefixFromQName(qname),
                   ZkXmlUtil::getLocalPartFromQName(qname), value);
}

void ZkElement::removeAttribute(ZkName qname) {
    m_attributes->removeNamedItem(qname);
}

void ZkElement::removeAttributeNS(ZkName uri, ZkName local) {
    m_attributes->removeNamedItemNS(uri, local);
}

ZkAttr* ZkElement::getAttributeNode(ZkName qname) const {
    return asAttr(m_attributes->getNamedItem(qname));
}

ZkAttr* ZkElement::getAttributeNodeNS(ZkName uri, ZkName local) const {
    return asAttr(m_attributes->getNamedItemNS(uri, local));
}

void ZkElement::getAttributeNodeLocal(ZkName local, std::vector<ZkPtr<ZkAttr>>* out) const {
    if (out)
        m_attributes->getNamedItemLocal(local, out);
}

ZkPtr<ZkAttr> ZkElement::removeAttributeNode(ZkAttr* attr) {
    if (!attr)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteRemoveAttributeNode,
                         UnicodeString(u"oldAttr"));
    return static_cast<AttrNodeMap*>(m_attributes.get())->removeNode(attr);
}

bool ZkElement::hasAttribute(ZkName qname) const {
    return asAttr(m_attributes->getNamedItem(qname)) != nullptr;
}

bool ZkElement::hasAttributeNS(ZkName uri, ZkName local) const {
    return asAttr(m_attributes->getNamedItemNS(uri, local)) != nullptr;
}

bool ZkElement::hasAttributeLocal(ZkName local) const {
    for (ZkNode* node = m_attributes->getFirstNode(); node;
         node = m_attributes->getNextNode(node)) {
        if (node->getLocalName() == local)
            return true;
    }
    return false;
}

void ZkElement::setAttributeEx(ZkName uri, ZkName prefix, ZkName local, const UnicodeString& text) {
    setAttributeNS(uri, prefix, local, ZkValue(text));
}

void ZkElement::loadAttribute(ZkName uri, ZkName prefix, ZkName local, const UChar* chars,
                              int32_t length) {
    ZkDocument* document = getOwnerDocumentField();
    // Dropped names keep the general rules.
    if (local.isEmpty() || (uri.isEmpty() && !prefix.isEmpty()) || !document) {
        setAttributeNS(uri, prefix, local, ZkValue::fromChars(chars, length));
        return;
    }
    // As the document's createAttributeNS makes them, whose qualified name is at hand without a
    // virtual call.
    Attr* attr;
    ZkName qname = local;
    if (uri.isEmpty() && prefix.isEmpty()) {
        attr = new (std::nothrow) Attr(document, local);
    } else {
        AttrNS* named = new (std::nothrow) AttrNS(document, uri, prefix, local);
        if (named)
            qname = named->AttrNS::getNodeName();
        attr = named;
    }
    if (!attr)
        return;
    AttrNodeMap* map = static_cast<AttrNodeMap*>(m_attributes.get());
    const uint64_t key = AttrNodeMap::namespaceKey(uri, local);
    const uint64_t qnameKey = AttrNodeMap::nameKey(qname);
    ZkAttr* byNamespace;
    ZkAttr* byName;
    map->probe(key, qnameKey, byNamespace, byName);
    if (byNamespace) {
        // A repeated (URI, local name) sets the attribute already there.
        attr->release(); // never referenced: this ends it
        setAttributeNS(uri, prefix, local, ZkValue::fromChars(chars, length));
        return;
    }
    try {
        attr->m_value.setValue(ZkValue::fromChars(chars, length));
        map->linkProbed(attr, key, qnameKey, /*nsFree=*/true, /*nameFree=*/!byName,
                        /*addRef=*/true);
    } catch (...) {
        attr->release();
        throw;
    }
}

void ZkElement::getAttributeLocal(ZkName local, std::vector<ZkValue>* out) const {
    if (!out)
        return;
    for (ZkNode* node = m_attributes->getFirstNode(); node;
         node = m_attributes->getNextNode(node)) {
        if (node->getLocalName() == local) {
            if (ZkAttr* attr = asAttr(node))
                out->push_back(attr->getValue());
        }
    }
}

ZkName ZkElement::getAttributeXMLNS(ZkName prefix) const {
    ZkAttr* attr = asAttr(m_attributes->getNamedItemNS(ZKN_NS_XMLNS, xmlnsLocal(prefix)));
    return attr ? attr->getValue().toZkName() : ZkName();
}

void ZkElement::setAttributeXMLNS(ZkName uri, ZkName prefix) {
    setAttributeNS(ZKN_NS_XMLNS, xmlnsPrefix(prefix), xmlnsLocal(prefix), ZkValue(uri));
}

void ZkElement::removeAttributeXMLNS(ZkName prefix) {
    removeAttributeNS(ZKN_NS_XMLNS, xmlnsLocal(prefix));
}

const ZkCssDeclarationDebugInfo* ZkElement::getCssDeclaration(int index) const {
    if (!m_cssDebug || index < 0 || index >= m_cssDebug->getDeclarationCount())
        return nullptr;
    return m_cssDebug->getDeclaration(index);
}

const ZkCssDeclarationDebugInfo* ZkElement::getCssVariable(int index) const {
    if (!m_cssDebug || index < 0 || index >= m_cssDebug->getVariableCount())
        return nullptr;
    return m_cssDebug->getVariable(index);
}

void ZkElement::setCssDebugBlock(std::unique_ptr<ZkCssDebugBlock> block) {
    m_cssDebug = std::move(block);
}

ZkPtr<ZkNode> ZkElement::cloneNode(bool deep) const {
    ZkDocument* document = getOwnerDocumentField();
    if (!document)
        return ZkPtr<ZkNode>();
    ZkPtr<ZkElement> clone =
        document->createElementNS(getNamespaceUri(), getPrefix(), getLocalName());
    if (!clone)
        return ZkPtr<ZkNode>();
    for (ZkNode* node = m_attributes->getFirstNode(); node;
         node = m_attributes->getNextNode(node)) {
        if (ZkAttr* attr = asAttr(node))
            clone->setAttributeNS(attr->getNamespaceUri(), attr->getPrefix(), attr->getLocalName(),
                                  attr->getValue());
    }
    cloneMembers(clone);
    if (!deep)
        return ZkPtr<ZkNode>(clone.get());
    if (detail::InheritWalk* walk = detail::walkAsking(detail::InheritKind::kDeepClone, this)) {
        detail::deferTo(walk, this); // the walk copies the children
        return ZkPtr<ZkNode>(clone.get());
    }
    // Each descendant is cloned through its own cloneNode(true), in a loop rather than by
    // recursion; an element of this library leaves its children to the loop.
    detail::InheritWalk own;
    detail::InheritScope scope(detail::InheritKind::kDeepClone, &own);
    const ZkNode* source = getFirstChild();
    ZkNode* target = clone; // the copy of source's parent
    while (source) {
        own.asking = source;
        own.deferred = false;
        ZkPtr<ZkNode> copy = source->cloneNode(true);
        if (copy)
            target->appendChild(copy);
        if (copy && own.deferred) {
            if (const ZkNode* first = source->getFirstChild()) {
                source = first;
                target = copy;
                continue;
            }
        }
        for (;;) {
            if (const ZkNode* next = source->getNextSibling()) {
                source = next;
                break;
            }
            source = source->getParentNode();
            if (!source || source == this) {
                source = nullptr;
                break;
            }
            target = target->getParentNodeFast();
        }
    }
    return ZkPtr<ZkNode>(clone.get());
}

UnicodeString ZkElement::getBaseUri() const {
    ZkAttr* attr = asAttr(m_attributes->getNamedItemNS(ZKN_NS_XML, ZKN_base));
    const UnicodeString base = attr ? attr->getValue().toString() : UnicodeString();
    if (base.isEmpty())
        return ZkNode::getBaseUri();
    ZkNode* parent = getParentNode();
    if (!parent || ZkUri(base).isAbsolute())
        return base;
    // The parent's base is found by a loop, not by recursion: trees are millions deep.
    if (detail::InheritWalk* walk = detail::walkAsking(detail::InheritKind::kBaseUri, this)) {
        detail::deferTo(walk, parent);
        walk->relative = base;
        return UnicodeString();
    }
    return detail::inheritBaseUri(parent, base);
}

int ZkElement::getSourceLineNumber() const {
    return m_sourceLine != -1 ? m_sourceLine : ZkNode::getSourceLineNumber();
}
void ZkElement::setSourceLineNumber(int line) {
    m_sourceLine = line;
}
int ZkElement::getSourceColumnNumber() const {
    return m_sourceColumn != -1 ? m_sourceColumn : ZkNode::getSourceColumnNumber();
}
void ZkElement::setSourceColumnNumber(int column) {
    m_sourceColumn = column;
}

// --- Element and ElementNS ----------------------------------------------------------------------

Element::Element(ZkDocument* ownerDocument, ZkName prefix, ZkName local)
    : ZkElement(ownerDocument), m_prefix(prefix), m_local(local) {}
Element::~Element() = default;

ZkName Element::getNamespaceUri() const {
    return lookupNamespaceUri(m_prefix);
}

void Element::setPrefix(ZkName prefix) {
    m_prefix = prefix;
    m_qname = ZkName();
}

ZkName Element::getNodeName() const {
    if (m_prefix.isEmpty())
        return m_local;
    if (m_qname.isEmpty())
        m_qname = ZkXmlUtil::makeQName(m_prefix, m_local);
    return m_qname;
}

ElementNS::ElementNS(ZkDocument* ownerDocument, ZkName uri, ZkName prefix, ZkName local)
    : Element(ownerDocument, prefix, local), m_uri(uri) {}
ElementNS::~ElementNS() = default;

} // namespace ZkCommonNS
