// ZkNode: the child ring, the loading getters, child changes and destruction without recursion.
#include "zkcommon/dom/node.h"

#include "core/smallpool.h"
#include "dom/documentlink.h"
#include "zkcommon/core/error.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/nodelist.h"
#include "zkcommon/dom/text.h"
#include "zkcommon/values/value.h"
#include "zkcommon/xml/xmlutil.h"

#include <new>

namespace ZkCommonNS {

namespace {
// Sites passed to throwCommonError; they name the raising operation only.
constexpr int kSiteAppendChild = 1;
constexpr int kSiteInsertBefore = 2;
constexpr int kSiteRemoveChild = 3;
constexpr int kSiteReplaceChild = 4;
constexpr int kSiteSetNodeValue = 5;

// Counts a document takes on its link at a time, for the nodes it makes.
constexpr int kLinkBatch = 1024;

// Asks for what the release of `node` will touch first: the node, and a text's characters,
// whose buffer header the release reads. Both are cold in a tree being torn down.
void prefetchForRelease(const ZkNode* node) {
    detail::prefetch(node);
    if (node && node->getTypeID() == ZkTypeID::kTextNode)
        detail::prefetch(static_cast<const ZkTextNode*>(node)->getData().getBuffer());
}

const UnicodeString& newChildArg() {
    static const UnicodeString s_text(u"newChild");
    return s_text;
}
const UnicodeString& oldChildArg() {
    static const UnicodeString s_text(u"oldChild");
    return s_text;
}

// An attribute lives on its element's attribute ring and is never a child: linking it into a
// child ring would tie the two rings together.
void checkNotAttribute(const ZkNode* newChild, int site) {
    if (newChild->getNodeType() == ZkNode::ATTRIBUTE_NODE)
        throwCommonError(ZK_ERROR_UNSUPPORTED_NODE_TYPE, site, newChildArg());
}
} // namespace

void* ZkNode::operator new(std::size_t size) {
    return detail::smallAllocate(size);
}

void* ZkNode::operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return detail::smallAllocate(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

void ZkNode::operator delete(void* block, std::size_t size) noexcept {
    detail::smallFree(block, size);
}

void ZkNode::operator delete(void* block, const std::nothrow_t&) noexcept {
    // Only reached when a constructor throws inside new (std::nothrow).
    detail::smallFreeUnsized(block);
}

ZkNode::ZkNode(ZkDocument* ownerDocument)
    : m_flags(0), m_parent(nullptr), m_next(nullptr), m_previous(nullptr), m_lastChild(nullptr),
      m_document(nullptr) {
    if (!ownerDocument)
        return;
    if (static_cast<ZkNode*>(ownerDocument) == this) {
        // A document makes the link that its nodes share.
        m_document = new detail::DocumentLink{ownerDocument, {1}};
    } else if ((m_document = ownerDocument->m_document) != nullptr) {
        // The document takes counts on the link in batches and hands them out one by one: a
        // tree belongs to one thread at a time, so its nodes are made by one thread at a time.
        if (ownerDocument->m_linkReserve == 0) {
            m_document->count.fetch_add(kLinkBatch, std::memory_order_relaxed);
            ownerDocument->m_linkReserve = kLinkBatch;
        }
        --ownerDocument->m_linkReserve;
    }
}

ZkDocument* ZkNode::getOwnerDocumentField() const {
    return m_document ? m_document->document : nullptr;
}

ZkNode::~ZkNode() {
    tearDownChildren();
    if (m_document && m_document->count.fetch_sub(1, std::memory_order_acq_rel) == 1)
        delete m_document;
}

void ZkNode::tearDownChildren() {
    // The common case: a node released by its parent's teardown has already lost its children.
    if (!m_lastChild)
        return;
    // Children's destructors must not call each other down the tree: a million-deep chain would
    // exhaust the stack. The loop goes down through every child that dies with this node and
    // releases each node once its own children are gone, so that each release is shallow. A
    // child held elsewhere is only let go: it survives with its subtree. The walk follows the
    // raw links, so it never loads and makes no virtual call.
    // Nodes go last first, each subtree before its root: the reverse of the order in which a
    // load made them, so that the pool of small blocks hands the same blocks out again in the
    // same order, and the next tree is laid out in memory as this one was.
    m_flags &= ~kLoading;
    ZkNode* node = m_lastChild;
    for (;;) {
        // A cleared loading bit keeps later readers of a surviving subtree from the loader.
        node->m_flags &= ~kLoading;
        if (node->m_lastChild && node->getRefCount() <= 1) {
            node = node->m_lastChild;
            continue;
        }
        // The node is its parent's last child: off the ring, and on to its previous sibling, or
        // up to the parent, whose children are all gone by then.
        ZkNode* parent = node->m_parent;
        ZkNode* previous = node->m_previous;
        parent->m_lastChild = previous;
        if (previous)
            previous->m_next = node->m_next;
        node->m_parent = nullptr;
        node->m_next = nullptr;
        node->m_previous = nullptr;
        prefetchForRelease(previous);
        node->release();
        if (previous) {
            node = previous;
        } else {
            if (parent == this)
                return;
            node = parent;
        }
    }
}

// --- names and values ---------------------------------------------------------------------------

ZkName ZkNode::getNodeName() const {
    return ZkXmlUtil::makeQName(getPrefix(), getLocalName());
}
ZkName ZkNode::getFOName() const {
    return getLocalName();
}
ZkName ZkNode::getNamespaceUri() const {
    return ZkName();
}
ZkName ZkNode::getPrefix() const {
    return ZkName();
}
void ZkNode::setPrefix(ZkName) {}
ZkValue ZkNode::getNodeValue() const {
    return ZkValue();
}

void ZkNode::setNodeValue(const ZkValue&) {
    throwCommonError(ZK_ERROR_WRONG_STATE, kSiteSetNodeValue, getTypeName());
}

// --- navigation ---------------------------------------------------------------------------------

ZkNode* ZkNode::getParentNode() const {
    return m_parent;
}

bool ZkNode::hasChildNodes() const {
    if (m_lastChild)
        return true;
    if (m_flags & kLoading) {
        if (ZkDocument* document = getOwnerDocumentField())
            document->loadNextNode();
    }
    return m_lastChild != nullptr;
}

ZkPtr<ZkNodeList> ZkNode::getChildNodes() const {
    return ZkPtr<ZkNodeList>(new (std::nothrow) ChildNodeList(this));
}

ZkNode* ZkNode::getFirstChild() const {
    if (m_lastChild)
        return m_lastChild->m_next;
    if (m_flags & kLoading) {
        if (ZkDocument* document = getOwnerDocumentField())
            document->loadNextNode();
    }
    return m_lastChild ? m_lastChild->m_next : nullptr;
}

ZkNode* ZkNode::getLastChild() const {
    // Only the whole child list can tell which child is last.
    while (m_flags & kLoading) {
        ZkDocument* document = getOwnerDocumentField();
        if (!document || !document->loadNextNode())
            break;
    }
    return m_lastChild;
}

ZkNode* ZkNode::getPreviousSibling() const {
    return m_previous;
}

ZkNode* ZkNode::getNextSibling() const {
    if (!m_parent)
        return nullptr;
    if (m_parent->m_lastChild != this)
        return m_next;
    if (ZkDocument* document = getOwnerDocumentField()) {
        // A next sibling can only follow once this node has ended.
        while ((m_flags & kLoading) && document->loadNextNode()) {
        }
        if (m_parent && m_parent->m_lastChild == this && (m_parent->m_flags & kLoading))
            document->loadNextNode();
    }
    if (!m_parent || m_parent->m_lastChild == this)
        return nullptr;
    return m_next;
}

ZkDocument* ZkNode::getOwnerDocument() const {
    return getOwnerDocumentField();
}

// --- child changes ------------------------------------------------------------------------------

void ZkNode::checkOwner(const ZkNode* newChild) const {
    // A document's own field points to itself, so the second half lets a document accept the
    // nodes it created even when it is the parent.
    // Nodes of one document share its link; a node whose document is gone matches nothing but
    // other such nodes.
    const ZkDocument* mine = getOwnerDocumentField();
    const ZkDocument* theirs = newChild->getOwnerDocumentField();
    if (theirs != mine && static_cast<const ZkNode*>(theirs) != this)
        throwCommonError(ZK_ERROR_WRONG_DOCUMENT, kSiteAppendChild, newChildArg());
}

void ZkNode::detachFromParent(ZkNode* child) {
    if (ZkNode* parent = child->m_parent) {
        ZkPtr<ZkNode> removed = parent->removeChild(child);
    }
}

ZkNode* ZkNode::appendChild(ZkNode* newChild) {
    if (!newChild)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteAppendChild, newChildArg());
    checkOwner(newChild);
    checkNotAttribute(newChild, kSiteAppendChild);
    ZkPtr<ZkNode> hold(newChild);
    detachFromParent(newChild);
    linkAsLastChild(hold.detach());
    return newChild;
}

void ZkNode::linkAsLastChild(ZkNode* newChild) noexcept {
    newChild->m_parent = this;
    newChild->m_previous = m_lastChild;
    if (m_lastChild) {
        newChild->m_next = m_lastChild->m_next;
        m_lastChild->m_next = newChild;
    } else {
        newChild->m_next = newChild;
    }
    m_lastChild = newChild;
}

ZkNode* ZkNode::insertBefore(ZkNode* newChild, ZkNode* refChild) {
    if (!newChild)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteInsertBefore, newChildArg());
    if (!refChild)
        return appendChild(newChild);
    if (refChild->m_parent != this)
        throwCommonError(ZK_ERROR_NOT_CHILD, kSiteInsertBefore, UnicodeString(u"refChild"));
    if (newChild == refChild)
        return newChild;
    checkOwner(newChild);
    checkNotAttribute(newChild, kSiteInsertBefore);
    ZkPtr<ZkNode> hold(newChild);
    detachFromParent(newChild);

    // Read only now: removing newChild from this same parent may have moved refChild's links.
    ZkNode* previous = refChild->m_previous;
    newChild->m_parent = this;
    newChild->m_next = refChild;
    newChild->m_previous = previous;
    refChild->m_previous = newChild;
    (previous ? previous : m_lastChild)->m_next = newChild;
    hold.detach();
    return newChild;
}

ZkPtr<ZkNode> ZkNode::removeChild(ZkNode* oldChild) {
    if (!oldChild)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteRemoveChild, oldChildArg());
    if (oldChild->m_parent != this)
        throwCommonError(ZK_ERROR_NOT_CHILD, kSiteRemoveChild, oldChildArg());

    ZkNode* previous = oldChild->m_previous;
    ZkNode* next = oldChild->m_next;
    oldChild->m_parent = nullptr;
    oldChild->m_next = nullptr;
    oldChild->m_previous = nullptr;
    if (oldChild != m_lastChild)
        next->m_previous = previous;
    else
        m_lastChild = previous;
    // Without a previous node the first child changed, and the ring closes through the last.
    ZkNode* before = previous ? previous : m_lastChild;
    if (before)
        before->m_next = next;

    ZkPtr<ZkNode> result(oldChild);
    oldChild->removeRef(); // the tree's reference passes to the result
    if (ZkDocument* document = getOwnerDocumentField())
        document->childRemoved(this, oldChild);
    return result;
}

ZkPtr<ZkNode> ZkNode::replaceChild(ZkNode* newChild, ZkNode* oldChild) {
    if (!newChild)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteReplaceChild, newChildArg());
    if (!oldChild)
        throwCommonError(ZK_ERROR_NULL_ARGUMENT, kSiteReplaceChild, oldChildArg());
    if (oldChild->m_parent != this)
        throwCommonError(ZK_ERROR_NOT_CHILD, kSiteReplaceChild, oldChildArg());
    if (newChild == oldChild)
        return ZkPtr<ZkNode>(oldChild);
    checkOwner(newChild);
    checkNotAttribute(newChild, kSiteReplaceChild);
    ZkPtr<ZkNode> hold(newChild);
    detachFromParent(newChild);

    ZkNode* previous = oldChild->m_previous;
    ZkNode* next = oldChild->m_next;
    const bool wasLast = oldChild == m_lastChild;
    oldChild->m_parent = nullptr;
    oldChild->m_next = nullptr;
    oldChild->m_previous = nullptr;

    newChild->m_parent = this;
    newChild->m_previous = previous;
    newChild->m_next = next == oldChild ? newChild : next;
    if (wasLast)
        m_lastChild = newChild;
    else
        next->m_previous = newChild;
    if (previous)
        previous->m_next = newChild;
    else
        m_lastChild->m_next = newChild; // newChild is the new first child
    hold.detach();

    ZkPtr<ZkNode> result(oldChild);
    oldChild->removeRef();
    if (ZkDocument* document = getOwnerDocumentField())
        document->childRemoved(this, oldChild);
    return result;
}

ZkNode* ZkNode::appendChildEx(ZkNode* newChild) {
    return appendChild(newChild);
}

ZkNode* ZkNode::appendChildText(const UnicodeString& text) {
    ZkDocument* document = getOwnerDocumentField();
    if (!document)
        return nullptr;
    ZkPtr<ZkNode> node = document->createTextNodeElement(text, this);
    if (!node)
        return nullptr;
    return appendChild(node);
}

ZkNode* ZkNode::appendChildTextLF() {
    return appendChildText(UnicodeString(u'\n'));
}

ZkNode* ZkNode::insertBeforeTextLF(ZkNode* refChild) {
    ZkDocument* document = getOwnerDocumentField();
    if (!document)
        return nullptr;
    ZkPtr<ZkNode> node = document->createTextNodeElement(UnicodeString(u'\n'), this);
    if (!node)
        return nullptr;
    return insertBefore(node, refChild);
}

void ZkNode::appendChildren(ZkNode* first, ZkNode* stop) {
    ZkNode* node = first;
    while (node && node != stop) {
        ZkNode* next = node->getNextSibling(); // read before the move changes it
        appendChild(node);
        node = next;
    }
}

void ZkNode::removeAllChildNodes() {
    ZkNode* child = m_lastChild;
    m_lastChild = nullptr;
    while (child) {
        ZkNode* previous = child->m_previous;
        child->m_parent = nullptr;
        child->m_next = nullptr;
        child->m_previous = nullptr;
        child->release();
        child = previous;
    }
}

long ZkNode::deleteAllChildNodes() {
    ZkNode* last = m_lastChild;
    m_lastChild = nullptr;
    return deleteAllChildNodes(last);
}

long ZkNode::deleteAllChildNodes(ZkNode* lastChild) {
    long count = 0;
    // A loop, not recursion: it goes down to the last leaf, and takes a node off only once its
    // own children are gone; the parent link, kept until then, leads back up.
    const ZkNode* top = lastChild ? lastChild->m_parent : nullptr;
    ZkNode* node = lastChild;
    while (node) {
        if (ZkNode* last = node->m_lastChild) {
            node->m_lastChild = nullptr;
            node = last;
            continue;
        }
        ZkNode* previous = node->m_previous;
        ZkNode* parent = node->m_parent;
        node->m_parent = nullptr;
        node->m_next = nullptr;
        node->m_previous = nullptr;
        ++count;
        // Plain arithmetic: the caller promised that no other thread touches the tree.
        if (node->decrementRefCount() < 1)
            delete node;
        node = previous ? previous : (parent != top ? parent : nullptr);
    }
    return count;
}

// --- defaults -----------------------------------------------------------------------------------

ZkNamedNodeMap* ZkNode::getAttributes() const {
    return nullptr;
}
bool ZkNode::hasAttributes() const {
    return false;
}
ZkPtr<ZkNode> ZkNode::cloneNode(bool) const {
    return ZkPtr<ZkNode>();
}

void ZkNode::cloneMembers(ZkNode* to) const {
    if (to)
        to->m_flags = m_flags;
}

void ZkNode::finishAttributes() {}
bool ZkNode::isElementNode() const {
    return false;
}
bool ZkNode::isProcessingInstruction() const {
    return false;
}
bool ZkNode::isText() const {
    return false;
}
bool ZkNode::isFO() const {
    return false;
}
bool ZkNode::isQTFO() const {
    return false;
}
bool ZkNode::isCSS() const {
    return false;
}
bool ZkNode::isHTML() const {
    return false;
}
bool ZkNode::isHTMLSyntax() const {
    return false;
}
bool ZkNode::isXHTMLSyntax() const {
    return false;
}
bool ZkNode::isXML() const {
    return false;
}
bool ZkNode::isBlock() const {
    return false;
}
bool ZkNode::isInline() const {
    return false;
}
bool ZkNode::isInlineBlock() const {
    return false;
}
bool ZkNode::isBlockOrBdo(bool) const {
    return false;
}
bool ZkNode::isBidiOverride() const {
    return false;
}
bool ZkNode::isNeutral() const {
    return false;
}
bool ZkNode::isOutOfLine() const {
    return false;
}
bool ZkNode::isArea() const {
    return false;
}
bool ZkNode::saveTextTag() const {
    return false;
}
UnicodeString ZkNode::getText() const {
    return UnicodeString();
}
void ZkNode::setText(const UnicodeString&) {}
bool ZkNode::isBidiDone() const {
    return false;
}
void ZkNode::bidiDone(int) {}
void ZkNode::setSourceLineNumber(int) {}
void ZkNode::setSourceColumnNumber(int) {}

// --- lists --------------------------------------------------------------------------------------

ZkPtr<ZkNodeList> ZkNode::getElementsByTagName(ZkName local) const {
    return ZkPtr<ZkNodeList>(
        new (std::nothrow) TreeNodeList(this, TreeNodeList::ELEMENTS_BY_NAME, ZkName(), local));
}

ZkPtr<ZkNodeList> ZkNode::getElementsByTagNameNS(ZkName uri, ZkName local) const {
    return ZkPtr<ZkNodeList>(new (std::nothrow)
                                 TreeNodeList(this, TreeNodeList::ELEMENTS_BY_NAME_NS, uri, local));
}

ZkPtr<ZkNodeList> ZkNode::getDescendantNodes() const {
    return ZkPtr<ZkNodeList>(new (std::nothrow) TreeNodeList(this, TreeNodeList::ALL_NODES));
}

ZkNodeIterator ZkNode::getIterator(ZkNode* start) const {
    return ZkNodeIterator(this, start);
}

} // namespace ZkCommonNS
