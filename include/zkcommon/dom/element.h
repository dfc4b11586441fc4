// ZkElement with its attribute operations, and the two concrete kinds Element and ElementNS.
#ifndef ZKCOMMON_DOM_ELEMENT_H
#define ZKCOMMON_DOM_ELEMENT_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/node.h"

#include <memory>
#include <vector>

namespace ZkCommonNS {

/// The CSS debug records kept on an element when a rule set keeps debug information: the
/// declarations that applied, the custom properties, and the implementer's own lookup data. The
/// cascade derives its match record from this interface; the element owns the block.
class ZKCOMMON_API ZkCssDebugBlock {
public:
    virtual ~ZkCssDebugBlock();
    virtual int getDeclarationCount() const = 0;
    /// Null for an index at or above the count.
    virtual const ZkCssDeclarationDebugInfo* getDeclaration(int index) const = 0;
    virtual int getVariableCount() const = 0;
    /// Null for an index at or above the count.
    virtual const ZkCssDeclarationDebugInfo* getVariable(int index) const = 0;
};

/// An element: an attribute map, a serial number from the owner document, a source position and
/// a slot for CSS debug records. Attribute operations never throw except removeAttributeNode of
/// null; a missing attribute reads as an empty value or a null pointer.
class ZKCOMMON_API ZkElement : public ZkNode {
    ZK_DECLARE_TYPE(ZkElement, ZkNode, ZkTypeID::kElement, "ZkElement")

public:
    int getNodeType() const override;
    bool isElementNode() const override;
    /// The attribute map; never null.
    ZkNamedNodeMap* getAttributes() const override;
    bool hasAttributes() const override;
    /// A new element of the same names through the owner document's createElementNS, with the
    /// attributes copied, the flags word copied and, if `deep`, clones of the children. Null
    /// without an owner document.
    ZkPtr<ZkNode> cloneNode(bool deep) const override;
    /// The `xml:base` attribute resolved against the parent's base URI.
    UnicodeString getBaseUri() const override;
    /// The stored number, or the ZkNode rule when it is -1.
    int getSourceLineNumber() const override;
    void setSourceLineNumber(int line) override;
    int getSourceColumnNumber() const override;
    void setSourceColumnNumber(int column) override;

    /// An empty value when there is no such attribute.
    virtual ZkValue getAttribute(ZkName qname) const;
    virtual ZkValue getAttributeNS(ZkName uri, ZkName local) const;
    /// Creates the attribute through the owner document when missing; nothing is stored when
    /// the document refuses the name (an undeclared prefix).
    virtual void setAttribute(ZkName qname, const ZkValue& value);
    /// Silently ignored for an empty `local`, or for a `prefix` without a `uri`. An existing
    /// attribute keeps its place and takes the new prefix.
    virtual void setAttributeNS(ZkName uri, ZkName prefix, ZkName local, const ZkValue& value);
    /// Splits `qname` at its first colon.
    virtual void setAttributeNS(ZkName uri, ZkName qname, const ZkValue& value);
    /// Nothing happens for a missing attribute.
    virtual void removeAttribute(ZkName qname);
    virtual void removeAttributeNS(ZkName uri, ZkName local);
    /// Null when missing.
    virtual ZkAttr* getAttributeNode(ZkName qname) const;
    virtual ZkAttr* getAttributeNodeNS(ZkName uri, ZkName local) const;
    /// Appends every attribute of that local name, any namespace; a null `out` does nothing.
    virtual void getAttributeNodeLocal(ZkName local, std::vector<ZkPtr<ZkAttr>>* out) const;
    /// Throws ZkError 3 ("oldAttr is null.") for null. Removes the attribute that has `attr`'s
    /// qualified name and returns `attr`; null when the map has no such name.
    virtual ZkPtr<ZkAttr> removeAttributeNode(ZkAttr* attr);
    virtual bool hasAttribute(ZkName qname) const;
    virtual bool hasAttributeNS(ZkName uri, ZkName local) const;
    virtual bool hasAttributeLocal(ZkName local) const;
    /// Stores `text` as a string value through the four-argument setAttributeNS.
    virtual void setAttributeEx(ZkName uri, ZkName prefix, ZkName local, const UnicodeString& text);

    /// The values of all attributes of that local name in order; a null `out` does nothing.
    void getAttributeLocal(ZkName local, std::vector<ZkValue>* out) const;
    /// The namespace declared for `prefix` on this element (the empty prefix for xmlns="...").
    ZkName getAttributeXMLNS(ZkName prefix) const;
    /// Declares `prefix` (empty: the default namespace) for `uri` on this element.
    void setAttributeXMLNS(ZkName uri, ZkName prefix);
    void removeAttributeXMLNS(ZkName prefix);
    unsigned int getElementId() const { return m_elementId; }

    /// Null without debug records or for an index at or above their count.
    const ZkCssDeclarationDebugInfo* getCssDeclaration(int index) const;
    const ZkCssDeclarationDebugInfo* getCssVariable(int index) const;
    ZkCssDebugBlock* getCssDebugBlock() const { return m_cssDebug.get(); }
    /// Replaces the debug block; the element owns it from now on. Null drops it.
    void setCssDebugBlock(std::unique_ptr<ZkCssDebugBlock> block);

    /// The stored positions, -1 when not set (no ZkNode fallback).
    int getStoredSourceLineNumber() const { return m_sourceLine; }
    int getStoredSourceColumnNumber() const { return m_sourceColumn; }

protected:
    explicit ZkElement(ZkDocument* ownerDocument);
    ~ZkElement() override;

private:
    friend class ZkDocument;

    // The loader's way in for an attribute of a start tag when the element and its document are
    // of this library's own classes: what setAttributeEx does, without its temporary strings and
    // values. The value is the `length` characters at `chars`.
    void loadAttribute(ZkName uri, ZkName prefix, ZkName local, const UChar* chars, int32_t length);

    ZkPtr<ZkNamedNodeMap> m_attributes;
    unsigned int m_elementId;
    int m_sourceLine;
    int m_sourceColumn;
    std::unique_ptr<ZkCssDebugBlock> m_cssDebug;
};

/// An element without a namespace of its own: its namespace URI is looked up from its prefix in
/// the declarations of the tree, so it follows them as they change.
class ZKCOMMON_API Element : public ZkElement {
    ZK_DECLARE_TYPE(Element, ZkElement, ZkTypeID::kElementPlain, "Element")

public:
    Element(ZkDocument* ownerDocument, ZkName prefix, ZkName local);

    ZkName getLocalName() const override { return m_local; }
    ZkName getPrefix() const override { return m_prefix; }
    void setPrefix(ZkName prefix) override;
    /// "prefix:local", or the local name alone.
    ZkName getNodeName() const override;
    /// lookupNamespaceUri of the prefix.
    ZkName getNamespaceUri() const override;

protected:
    ~Element() override;

private:
    ZkName m_prefix;
    ZkName m_local;
    // Interned on first use; empty until then (a qualified name is never empty for a prefix).
    mutable ZkName m_qname;
};

/// An element with a stored namespace URI.
class ZKCOMMON_API ElementNS : public Element {
    ZK_DECLARE_TYPE(ElementNS, Element, ZkTypeID::kElementNS, "ElementNS")

public:
    ElementNS(ZkDocument* ownerDocument, ZkName uri, ZkName prefix, ZkName local);

    ZkName getNamespaceUri() const override { return m_uri; }

protected:
    ~ElementNS() override;

private:
    ZkName m_uri;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_ELEMENT_H
