// ZkAttr, the attribute node, with its concrete kinds Attr and AttrNS.
#ifndef ZKCOMMON_DOM_ATTR_H
#define ZKCOMMON_DOM_ATTR_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/dom/node.h"
#include "zkcommon/values/value.h"

namespace ZkCommonNS {

/// An attribute. It is not in the tree: parent and siblings read as null, also through the raw
/// Fast getters. Its sibling fields form the attribute ring of the element's map; the owner
/// element has a field of its own.
class ZKCOMMON_API ZkAttr : public ZkNode {
    ZK_DECLARE_TYPE(ZkAttr, ZkNode, ZkTypeID::kAttr, "ZkAttr")

public:
    int getNodeType() const override;
    /// Always null: an attribute has no parent in the tree.
    ZkNode* getParentNode() const override;
    ZkNode* getPreviousSibling() const override;
    ZkNode* getNextSibling() const override;
    /// The value as a string.
    UnicodeString getText() const override;
    /// Stores `text` as a string value.
    void setText(const UnicodeString& text) override;
    /// The owner element's base URI, or the owner document's.
    UnicodeString getBaseUri() const override;
    /// The owner element's position; -1 without one.
    int getSourceLineNumber() const override;
    int getSourceColumnNumber() const override;

    virtual ZkValue getValue() const = 0;
    virtual void setValue(const ZkValue& value) = 0;
    /// Null while the attribute belongs to no element.
    virtual ZkElement* getOwnerElement() const;

protected:
    explicit ZkAttr(ZkDocument* ownerDocument)
        : ZkNode(ownerDocument), m_ownerElement(nullptr), m_namespaceKey(0), m_nameKey(0),
          m_keyed(0) {}
    ~ZkAttr() override;

private:
    friend class AttrNodeMap;

    // Kept apart from the tree's parent link, which stays null: an attribute is never a child,
    // and no child operation or raw walk may mistake its element for a parent.
    ZkElement* m_ownerElement;
    // The map's keys for this attribute while it is on a map: (namespace URI, local name) and
    // qualified name as name numbers, taken when it joined, and which of the two look-ups find
    // it by them.
    uint64_t m_namespaceKey;
    uint32_t m_nameKey;
    uint8_t m_keyed;
};

/// An attribute without namespace. Name and value are one record: the value's name bits hold
/// the local name, so setting a value never renames the attribute.
class ZKCOMMON_API Attr : public ZkAttr {
public:
    /// The value starts as Null.
    Attr(ZkDocument* ownerDocument, ZkName local);

    ZkName getNodeName() const override;
    ZkName getLocalName() const override;
    ZkValue getNodeValue() const override;
    void setNodeValue(const ZkValue& value) override;
    /// A copy of the stored value without the name bits.
    ZkValue getValue() const override;
    /// Copies `value`; the attribute's local name replaces any name the value carried.
    void setValue(const ZkValue& value) override;

protected:
    ~Attr() override;

private:
    friend class ZkElement; // the loader moves a value in

    ZkNamedValue m_value;
};

/// An attribute with a namespace URI and a prefix.
class ZKCOMMON_API AttrNS : public Attr {
    ZK_DECLARE_TYPE(AttrNS, ZkAttr, ZkTypeID::kAttrNS, "AttrNS")

public:
    AttrNS(ZkDocument* ownerDocument, ZkName uri, ZkName prefix, ZkName local);

    /// With a prefix and no stored URI, the URI declared for the prefix; else the stored one.
    ZkName getNamespaceUri() const override;
    ZkName getPrefix() const override { return m_prefix; }
    void setPrefix(ZkName prefix) override;
    /// "prefix:local", or the local name alone.
    ZkName getNodeName() const override { return m_qname; }

protected:
    ~AttrNS() override;

private:
    ZkName m_uri;
    ZkName m_prefix;
    // Interned once: the map keys on it at every add, rename and removal.
    ZkName m_qname;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_ATTR_H
