// ZkNode, the base of every tree object: the child ring, the loading and Fast getters, child
// changes, searches, document order and namespace look-ups.
#ifndef ZKCOMMON_DOM_NODE_H
#define ZKCOMMON_DOM_NODE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/dom/fwd.h"
#include "zkcommon/dom/iterator.h"

#include <cstddef>
#include <new>

namespace ZkCommonNS {

class ZkValue;
namespace detail {
struct DocumentLink;
}

/// A node of the tree. Children sit on a ring reached from the last child: the last child's next
/// link is the first child, the first child's previous link is null. The tree holds one reference
/// per child; parent and sibling links are borrowed. Getters come in a loading form, which may pull
/// the owner document's loader, and a non-virtual Fast form, which reports what is in memory.
class ZKCOMMON_API ZkNode : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkNode, ZkRCObject, ZkTypeID::kNode, "ZkNode")

public:
    enum ZkNodeType {
        ELEMENT_NODE = 1,
        ATTRIBUTE_NODE = 2,
        TEXT_NODE = 3,
        ENTITY_NODE = 6,
        PROCESSING_INSTRUCTION_NODE = 7,
        DOCUMENT_NODE = 9,
        DOCUMENT_TYPE_NODE = 10,
        DOCUMENT_FRAGMENT_NODE = 11,
        NOTATION_NODE = 12
    };

    /// Flag bits; all others are free for the application.
    static constexpr int kLoading = 0x1;
    static constexpr int kLoadDone = 0x2;
    static constexpr int kComplemental = 0x4;

    // Nodes of every kind, an application's own included, come from the library's pool of
    // small blocks: a thread takes and gives back blocks without a lock, and a node lives by
    // its references alone, so one held after its document is gone stays valid.
    static void* operator new(std::size_t size);
    /// Null when memory fails.
    static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
    static void operator delete(void* block, std::size_t size) noexcept;
    static void operator delete(void* block, const std::nothrow_t&) noexcept;

    ZkNode(const ZkNode&) = delete;
    ZkNode& operator=(const ZkNode&) = delete;

    // --- names and values -------------------------------------------------------------------

    /// The qualified name of getPrefix and getLocalName.
    virtual ZkName getNodeName() const;
    virtual ZkName getLocalName() const = 0;
    /// By default the local name.
    virtual ZkName getFOName() const;
    /// Empty by default.
    virtual ZkName getNamespaceUri() const;
    /// Empty by default.
    virtual ZkName getPrefix() const;
    /// Ignored by default.
    virtual void setPrefix(ZkName prefix);
    /// An empty (Null) value by default.
    virtual ZkValue getNodeValue() const;
    /// Throws ZkError 11 ("Cannot set a value on node type: " and the type name) by default.
    virtual void setNodeValue(const ZkValue& value);
    virtual int getNodeType() const = 0;

    // --- navigation (loading forms) -----------------------------------------------------------

    /// The parent field; never loads.
    virtual ZkNode* getParentNode() const;
    /// Loads one step on a loading node without children yet.
    virtual bool hasChildNodes() const;
    /// A fresh live list of the children; null on memory failure.
    virtual ZkPtr<ZkNodeList> getChildNodes() const;
    /// Loads at most one step on a loading node without children yet.
    virtual ZkNode* getFirstChild() const;
    /// Loads until the node ends (or the loader stops).
    virtual ZkNode* getLastChild() const;
    /// The previous field; never loads.
    virtual ZkNode* getPreviousSibling() const;
    /// Loads as far as needed to know whether a next sibling exists.
    virtual ZkNode* getNextSibling() const;
    /// The owner document; a document answers null for itself.
    virtual ZkDocument* getOwnerDocument() const;

    // --- child changes ------------------------------------------------------------------------

    /// Throws ZkError 3 ("newChild is null."), 9 (refChild not a child), 6 (owner document) or
    /// 18 (an attribute, which is never a child) and changes nothing then. A node that already
    /// has a parent is removed there first. Returns `newChild`.
    virtual ZkNode* insertBefore(ZkNode* newChild, ZkNode* refChild);
    /// Throws ZkError 3 (newChild, then oldChild), 9 (oldChild not a child), 6 or 18, in that
    /// order. An attribute is never a child: as `oldChild` it gives 9.
    virtual ZkPtr<ZkNode> replaceChild(ZkNode* newChild, ZkNode* oldChild);
    /// Throws ZkError 3 ("oldChild is null.") or 9 ("oldChild is not a child of this node.").
    virtual ZkPtr<ZkNode> removeChild(ZkNode* oldChild);
    /// Throws ZkError 3 or 6 with "newChild", or 18 for an attribute; moves a child of this node
    /// to the end.
    virtual ZkNode* appendChild(ZkNode* newChild);

    /// Null by default.
    virtual ZkNamedNodeMap* getAttributes() const;
    /// False by default.
    virtual bool hasAttributes() const;

    /// Null by default (the node kind cannot be cloned).
    virtual ZkPtr<ZkNode> cloneNode(bool deep) const;
    /// Copies the flags word to `to`; a null `to` is ignored.
    virtual void cloneMembers(ZkNode* to) const;

    // --- namespaces ---------------------------------------------------------------------------

    /// The empty name when no declaration in scope binds `uri`.
    virtual ZkName lookupPrefix(ZkName uri) const;
    /// False when no scope decides.
    virtual bool isDefaultNamespace(ZkName uri) const;
    /// The empty name when `prefix` is not declared.
    virtual ZkName lookupNamespaceUri(ZkName prefix) const;

    /// Called by the loader when a start tag's attributes are all set; nothing by default.
    virtual void finishAttributes();

    // --- kind predicates (all false in this library unless stated) ----------------------------

    virtual bool isElementNode() const;
    virtual bool isProcessingInstruction() const;
    virtual bool isText() const;
    virtual bool isFO() const;
    virtual bool isQTFO() const;
    virtual bool isCSS() const;
    virtual bool isHTML() const;
    virtual bool isHTMLSyntax() const;
    virtual bool isXHTMLSyntax() const;
    virtual bool isXML() const;
    virtual bool isBlock() const;
    virtual bool isInline() const;
    virtual bool isInlineBlock() const;
    virtual bool isBlockOrBdo(bool bdo) const;
    virtual bool isBidiOverride() const;
    virtual bool isNeutral() const;
    virtual bool isOutOfLine() const;

    /// Empty by default.
    virtual UnicodeString getText() const;
    /// Ignored by default.
    virtual void setText(const UnicodeString& text);

    // --- lists --------------------------------------------------------------------------------

    /// Descendant elements by local name ("*" matches any); null on memory failure.
    virtual ZkPtr<ZkNodeList> getElementsByTagName(ZkName local) const;
    /// Descendant elements by namespace URI and local name ("*" matches any in either place).
    virtual ZkPtr<ZkNodeList> getElementsByTagNameNS(ZkName uri, ZkName local) const;
    /// Every descendant, of any kind, in document order; the node itself is not included.
    virtual ZkPtr<ZkNodeList> getDescendantNodes() const;
    /// Iterates the descendants, from the first one or from the node after `start`.
    virtual ZkNodeIterator getIterator(ZkNode* start = nullptr) const;

    /// A hook for derived classes; forwards to appendChild and may return another node or null.
    virtual ZkNode* appendChildEx(ZkNode* newChild);
    /// Appends a text node made by the owner document's createTextNodeElement. Returns null when
    /// there is no owner document or the document makes no node.
    virtual ZkNode* appendChildText(const UnicodeString& text);

    /// The parent's base URI, else the owner document's, else empty.
    virtual UnicodeString getBaseUri() const;

    /// The previous sibling's number, else the parent's, else -1.
    virtual int getSourceLineNumber() const;
    /// Ignored by default.
    virtual void setSourceLineNumber(int line);
    /// The previous sibling's number, else the parent's, else -1.
    virtual int getSourceColumnNumber() const;
    /// Ignored by default.
    virtual void setSourceColumnNumber(int column);
    virtual bool isArea() const;
    virtual bool saveTextTag() const;

    /// False by default.
    virtual bool isBidiDone() const;
    /// Ignored by default.
    virtual void bidiDone(int level);

    // --- Fast getters: non-virtual, never load ------------------------------------------------

    ZkNode* getFirstChildFast() const { return m_lastChild ? m_lastChild->m_next : nullptr; }
    ZkNode* getLastChildFast() const { return m_lastChild; }
    /// Null at the parent's last child and on a node without parent.
    ZkNode* getNextSiblingFast() const {
        return (m_parent && m_parent->m_lastChild != this) ? m_next : nullptr;
    }
    /// Null on the first child and on a node without parent (an attribute among them).
    ZkNode* getPreviousSiblingFast() const { return m_parent ? m_previous : nullptr; }
    ZkNode* getParentNodeFast() const { return m_parent; }
    bool hasChildNodesFast() const { return m_lastChild != nullptr; }
    /// The raw next link: the last child's points to the first child, so it is never null inside
    /// a parent and must not be followed without comparing with the parent's last child. On an
    /// attribute it is the attribute ring of its element.
    ZkNode* getNextLink() const { return m_next; }

    // --- flags --------------------------------------------------------------------------------

    bool isLoading() const { return (m_flags & kLoading) != 0; }
    /// True once the loader opened the node, before and after it is done.
    bool isLoaded() const { return (m_flags & (kLoading | kLoadDone)) != 0; }
    /// Turns the loading bit into the load-done bit; nothing on a node that is not loading.
    void setLoadDone() {
        if (m_flags & kLoading)
            m_flags = (m_flags & ~kLoading) | kLoadDone;
    }
    /// True if any bit of `mask` is set.
    bool getFlag(int mask) const { return (m_flags & mask) != 0; }
    void setFlag(int mask, bool on) { m_flags = on ? (m_flags | mask) : (m_flags & ~mask); }
    int getFlags() const { return m_flags; }

    // --- counting and searching (they step with the loading getters) --------------------------

    int getChildNodeCount() const;
    int countFollowingSiblings() const;
    int countPrecedingSiblings() const;
    /// The nodes from `node` back to its first sibling, `node` included; 0 for null.
    int getPreviousOrSelfNodeCount(const ZkNode* node) const;
    /// Parents up to, not counting, a document; the document element has depth 0.
    int getNodeDepth() const;
    /// The first child with that local name, after `after` when it is given; null if none.
    ZkNode* getChildNodeByName(ZkName local, const ZkNode* after = nullptr) const;
    ZkNode* getChildNodeByNameNS(ZkName uri, ZkName local, const ZkNode* after = nullptr) const;
    ZkNode* getChildNodeByTypeID(unsigned int id) const;
    ZkNode* getAncestorByName(ZkName local) const;
    ZkNode* getAncestorByName2(ZkName a, ZkName b) const;
    /// `list` ends at an empty name; a null list finds nothing.
    ZkNode* getAncestorByNames(const ZkName* list) const;
    ZkNode* getAncestorByNameNS(ZkName uri, ZkName local) const;
    ZkNode* getAncestorByTypeID(unsigned int id) const;
    ZkNode* getAncestorOrSelfByName(ZkName local) const;
    ZkNode* getAncestorOrSelfByName2(ZkName a, ZkName b) const;
    ZkNode* getAncestorOrSelfByNames(const ZkName* list) const;
    ZkNode* getAncestorOrSelfByTypeID(unsigned int id) const;
    /// Null when `other` is null or the trees are apart.
    ZkNode* getCommonAncestor(const ZkNode* other) const;
    ZkNode* getCommonAncestorOrSelf(const ZkNode* other) const;
    /// False for null.
    bool isDescendantOf(const ZkNode* node) const;
    bool isDescendantOrSelfOf(const ZkNode* node) const;
    /// Same local name and namespace URI; false for null.
    bool isSameOfType(const ZkNode* other) const;
    ZkNode* getParentNodeUncomplemental() const;
    UnicodeString getInnerText() const;
    ZkNode* getNextSiblingOrSelfIgnoreEmptyOrWhitespace() const;

    /// True if `other` ends before this node starts; false for null, ancestors and descendants.
    bool isFollowingOf(const ZkNode* other) const;
    /// True if `other` starts after this node ends; never loads.
    bool isPrecedingOf(const ZkNode* other) const;

    // --- convenience changes ------------------------------------------------------------------

    /// Appends a line feed through appendChildText.
    ZkNode* appendChildTextLF();
    /// Inserts a line-feed text node before `refChild` (null appends); see insertBefore.
    ZkNode* insertBeforeTextLF(ZkNode* refChild);
    /// Moves `first` and its following siblings, up to and without `stop`, to the end of this.
    void appendChildren(ZkNode* first, ZkNode* stop);
    /// Detaches every child, last to first, releasing the tree's reference on each.
    void removeAllChildNodes();
    /// Tears down every descendant without atomics; only for a tree no other thread touches.
    /// Returns the number of nodes taken off. A held node loses its links and children too.
    long deleteAllChildNodes();
    static long deleteAllChildNodes(ZkNode* lastChild);

protected:
    explicit ZkNode(ZkDocument* ownerDocument);
    /// Takes the subtree down without recursion; a held descendant survives with its subtree.
    ~ZkNode() override;

    /// The owner document field, which for a document is the document itself; null once the
    /// document is gone, so that a node that outlives it never reaches its loader.
    ZkDocument* getOwnerDocumentField() const;

private:
    friend class AttrNodeMap;
    friend class ZkAttr;
    friend class ZkDocument;

    void checkOwner(const ZkNode* newChild) const;
    /// Links `newChild`, which has no parent, after the last child; the reference it brings is
    /// the tree's from now on.
    void linkAsLastChild(ZkNode* newChild) noexcept;
    void tearDownChildren();
    void detachFromParent(ZkNode* child);
    ZkName lookupPrefixFrom(ZkName uri, const ZkNode* start) const;

    int m_flags;
    ZkNode* m_parent;
    ZkNode* m_next;
    ZkNode* m_previous;
    ZkNode* m_lastChild;
    // Shared by the document and every node it made; the document clears it when it goes.
    detail::DocumentLink* m_document;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_NODE_H
