// ZkNode: counting, searching, ancestors, document order, namespace look-ups and the positions
// and base URI that a node inherits from its surroundings.
#include "dom/inheritwalk.h"
#include "zkcommon/core/char.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/dom/namednodemap.h"
#include "zkcommon/dom/node.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/values/value.h"

#include <vector>

namespace ZkCommonNS {

namespace {

// An Element that is not an ElementNS has no namespace of its own: its URI is itself a look-up.
bool isPlainElement(const ZkNode* node) {
    return node->isA(ZkTypeID::kElementPlain) && !node->isA(ZkTypeID::kElementNS);
}

bool isScopeless(int type) {
    return type == ZkNode::ENTITY_NODE || type == ZkNode::DOCUMENT_TYPE_NODE ||
           type == ZkNode::DOCUMENT_FRAGMENT_NODE || type == ZkNode::NOTATION_NODE;
}

const ZkNode* parentElement(const ZkNode* node) {
    const ZkNode* parent = node->getParentNode();
    return parent && parent->getNodeType() == ZkNode::ELEMENT_NODE ? parent : nullptr;
}

ZkName attrValueAsName(const ZkNode* attr) {
    return static_cast<const ZkAttr*>(attr)->getValue().toZkName();
}

// The ancestor-or-self chain, from the node up to the top.
void collectChain(const ZkNode* node, bool fast, std::vector<const ZkNode*>& chain) {
    while (node) {
        chain.push_back(node);
        node = fast ? node->getParentNodeFast() : node->getParentNode();
    }
}

// Places `a` and `b` under their nearest common ancestor: on success `a` and `b` become the two
// distinct siblings (children of that ancestor) that contain them. False when the nodes are in
// different trees or one contains the other.
bool splitAtCommonAncestor(const ZkNode*& a, const ZkNode*& b, bool fast) {
    std::vector<const ZkNode*> chainA;
    std::vector<const ZkNode*> chainB;
    collectChain(a, fast, chainA);
    collectChain(b, fast, chainB);
    if (chainA.back() != chainB.back())
        return false;
    size_t i = chainA.size();
    size_t j = chainB.size();
    while (i > 0 && j > 0 && chainA[i - 1] == chainB[j - 1]) {
        --i;
        --j;
    }
    if (i == 0 || j == 0)
        return false;
    a = chainA[i - 1];
    b = chainB[j - 1];
    return true;
}

const ZkNode* ancestorOrSelfInclusive(const ZkNode* a, const ZkNode* b) {
    std::vector<const ZkNode*> chainA;
    std::vector<const ZkNode*> chainB;
    collectChain(a, false, chainA);
    collectChain(b, false, chainB);
    if (chainA.back() != chainB.back())
        return nullptr;
    size_t i = chainA.size();
    size_t j = chainB.size();
    const ZkNode* common = nullptr;
    while (i > 0 && j > 0 && chainA[i - 1] == chainB[j - 1]) {
        common = chainA[i - 1];
        --i;
        --j;
    }
    return common;
}

} // namespace

// --- counting -----------------------------------------------------------------------------------

int ZkNode::getChildNodeCount() const {
    int count = 0;
    for (ZkNode* child = getFirstChild(); child; child = child->getNextSibling())
        ++count;
    return count;
}

int ZkNode::countFollowingSiblings() const {
    int count = 0;
    for (ZkNode* node = getNextSibling(); node; node = node->getNextSibling())
        ++count;
    return count;
}

int ZkNode::countPrecedingSiblings() const {
    int count = 0;
    for (ZkNode* node = getPreviousSibling(); node; node = node->getPreviousSibling())
        ++count;
    return count;
}

int ZkNode::getPreviousOrSelfNodeCount(const ZkNode* node) const {
    return node ? 1 + node->countPrecedingSiblings() : 0;
}

int ZkNode::getNodeDepth() const {
    int depth = 0;
    for (ZkNode* parent = getParentNode(); parent && parent->getNodeType() != DOCUMENT_NODE;
         parent = parent->getParentNode())
        ++depth;
    return depth;
}

// --- children and ancestors by name -------------------------------------------------------------

ZkNode* ZkNode::getChildNodeByName(ZkName local, const ZkNode* after) const {
    for (ZkNode* child = after ? after->getNextSibling() : getFirstChild(); child;
         child = child->getNextSibling()) {
        if (child->getLocalName() == local)
            return child;
    }
    return nullptr;
}

ZkNode* ZkNode::getChildNodeByNameNS(ZkName uri, ZkName local, const ZkNode* after) const {
    for (ZkNode* child = after ? after->getNextSibling() : getFirstChild(); child;
         child = child->getNextSibling()) {
        if (child->getLocalName() == local && child->getNamespaceUri() == uri)
            return child;
    }
    return nullptr;
}

ZkNode* ZkNode::getChildNodeByTypeID(unsigned int id) const {
    for (ZkNode* child = getFirstChild(); child; child = child->getNextSibling()) {
        if (child->isA(id))
            return child;
    }
    return nullptr;
}

ZkNode* ZkNode::getAncestorByName(ZkName local) const {
    ZkNode* parent = getParentNode();
    return parent ? parent->getAncestorOrSelfByName(local) : nullptr;
}

ZkNode* ZkNode::getAncestorByName2(ZkName a, ZkName b) const {
    ZkNode* parent = getParentNode();
    return parent ? parent->getAncestorOrSelfByName2(a, b) : nullptr;
}

ZkNode* ZkNode::getAncestorByNames(const ZkName* list) const {
    ZkNode* parent = getParentNode();
    return parent ? parent->getAncestorOrSelfByNames(list) : nullptr;
}

ZkNode* ZkNode::getAncestorByNameNS(ZkName uri, ZkName local) const {
    for (ZkNode* node = getParentNode(); node; node = node->getParentNode()) {
        if (node->getLocalName() == local && node->getNamespaceUri() == uri)
            return node;
    }
    return nullptr;
}

ZkNode* ZkNode::getAncestorByTypeID(unsigned int id) const {
    ZkNode* parent = getParentNode();
    return parent ? parent->getAncestorOrSelfByTypeID(id) : nullptr;
}

ZkNode* ZkNode::getAncestorOrSelfByName(ZkName local) const {
    for (const ZkNode* node = this; node; node = node->getParentNode()) {
        if (node->getLocalName() == local)
            return const_cast<ZkNode*>(node);
    }
    return nullptr;
}

ZkNode* ZkNode::getAncestorOrSelfByName2(ZkName a, ZkName b) const {
    for (const ZkNode* node = this; node; node = node->getParentNode()) {
        const ZkName local = node->getLocalName();
        if (local == a || local == b)
            return const_cast<ZkNode*>(node);
    }
    return nullptr;
}

ZkNode* ZkNode::getAncestorOrSelfByNames(const ZkName* list) const {
    if (!list)
        return nullptr;
    for (const ZkNode* node = this; node; node = node->getParentNode()) {
        const ZkName local = node->getLocalName();
        for (const ZkName* name = list; !name->isEmpty(); ++name) {
            if (*name == local)
                return const_cast<ZkNode*>(node);
        }
    }
    return nullptr;
}

ZkNode* ZkNode::getAncestorOrSelfByTypeID(unsigned int id) const {
    for (const ZkNode* node = this; node; node = node->getParentNode()) {
        if (node->isA(id))
            return const_cast<ZkNode*>(node);
    }
    return nullptr;
}

ZkNode* ZkNode::getCommonAncestor(const ZkNode* other) const {
    if (!other)
        return nullptr;
    // The nearest node above both: the inclusive common ancestor, or its parent when that is
    // one of the two nodes themselves.
    const ZkNode* common = ancestorOrSelfInclusive(this, other);
    if (!common)
        return nullptr;
    if (common == this || common == other)
        common = common->getParentNode();
    return const_cast<ZkNode*>(common);
}

ZkNode* ZkNode::getCommonAncestorOrSelf(const ZkNode* other) const {
    if (!other)
        return nullptr;
    return const_cast<ZkNode*>(ancestorOrSelfInclusive(this, other));
}

bool ZkNode::isDescendantOf(const ZkNode* node) const {
    if (!node)
        return false;
    for (const ZkNode* parent = getParentNode(); parent; parent = parent->getParentNode()) {
        if (parent == node)
            return true;
    }
    return false;
}

bool ZkNode::isDescendantOrSelfOf(const ZkNode* node) const {
    return node && (node == this || isDescendantOf(node));
}

bool ZkNode::isSameOfType(const ZkNode* other) const {
    return other && getLocalName() == other->getLocalName() &&
           getNamespaceUri() == other->getNamespaceUri();
}

ZkNode* ZkNode::getParentNodeUncomplemental() const {
    for (ZkNode* node = getParentNode(); node; node = node->getParentNode()) {
        if (!(node->m_flags & kComplemental))
            return node;
    }
    return nullptr;
}

UnicodeString ZkNode::getInnerText() const {
    if (getNodeType() != ELEMENT_NODE)
        return getText();
    UnicodeString result;
    ZkTreeIterator walk(this, nullptr, false, ZkTreeIterator::PRE_ORDER);
    while (ZkNode* node = walk.nextNode()) {
        if (node != this && node->isText())
            result.append(node->getText());
    }
    return result;
}

ZkNode* ZkNode::getNextSiblingOrSelfIgnoreEmptyOrWhitespace() const {
    for (const ZkNode* node = this; node; node = node->getNextSibling()) {
        if (!node->isText() || !ZkChar::isEmptyOrWhitespace(node->getText()))
            return const_cast<ZkNode*>(node);
    }
    return nullptr;
}

// --- document order -----------------------------------------------------------------------------

bool ZkNode::isFollowingOf(const ZkNode* other) const {
    if (!other)
        return false;
    const ZkNode* mine = this;
    const ZkNode* theirs = other;
    if (!splitAtCommonAncestor(mine, theirs, /*fast=*/false))
        return false;
    for (const ZkNode* node = mine->getPreviousSibling(); node; node = node->getPreviousSibling()) {
        if (node == theirs)
            return true;
    }
    return false;
}

bool ZkNode::isPrecedingOf(const ZkNode* other) const {
    if (!other)
        return false;
    const ZkNode* mine = this;
    const ZkNode* theirs = other;
    if (!splitAtCommonAncestor(mine, theirs, /*fast=*/true))
        return false;
    for (const ZkNode* node = mine->getNextSiblingFast(); node; node = node->getNextSiblingFast()) {
        if (node == theirs)
            return true;
    }
    return false;
}

// --- namespaces ---------------------------------------------------------------------------------

// Each look-up walks up through the elements in a loop, asking every node through its virtual
// look-up: the rules below run for a node of this library's own classes, and hand the walk on
// to the next node instead of calling it, so a very deep tree is not a deep stack.

namespace {

// Where a look-up goes from a node that is no element: an attribute asks its element, a
// document its document element, the scopeless kinds end, anything else asks its parent.
const ZkNode* delegateOf(const ZkNode* node, int type, bool& ends) {
    ends = false;
    if (type == ZkNode::ATTRIBUTE_NODE)
        return static_cast<const ZkAttr*>(node)->getOwnerElement();
    if (type == ZkNode::DOCUMENT_NODE)
        return static_cast<const ZkDocument*>(node)->getDocumentElement();
    if (isScopeless(type)) {
        ends = true;
        return nullptr;
    }
    return parentElement(node);
}

// The declaration of `prefix` on `element` itself, or the empty name.
ZkName ownNamespaceUri(const ZkNode* element, ZkName prefix, bool& found) {
    found = false;
    if (!isPlainElement(element)) {
        const ZkName uri = element->getNamespaceUri();
        if (!uri.isEmpty() && element->getPrefix() == prefix) {
            found = true;
            return uri;
        }
    }
    if (!element->hasAttributes())
        return ZkName();
    const ZkNamedNodeMap* attributes = element->getAttributes();
    for (ZkNode* attr = attributes->getFirstNode(); attr; attr = attributes->getNextNode(attr)) {
        const ZkName local = attr->getLocalName();
        if ((attr->getPrefix() == ZKN_xmlns && local == prefix) ||
            (local == ZKN_xmlns && prefix.isEmpty())) {
            found = true;
            return attrValueAsName(attr);
        }
    }
    return ZkName();
}

} // namespace

ZkName ZkNode::lookupNamespaceUri(ZkName prefix) const {
    using detail::InheritKind;
    detail::InheritWalk* walk = detail::walkAsking(InheritKind::kNamespaceUri, this);
    const int type = getNodeType();
    const ZkNode* next = nullptr;
    if (type == ELEMENT_NODE) {
        bool found;
        const ZkName uri = ownNamespaceUri(this, prefix, found);
        if (found)
            return uri;
        next = parentElement(this);
    } else {
        bool ends;
        next = delegateOf(this, type, ends);
    }
    if (walk) {
        detail::deferTo(walk, next);
        return ZkName();
    }
    detail::InheritWalk own;
    detail::InheritScope scope(InheritKind::kNamespaceUri, &own);
    while (next) {
        own.asking = next;
        own.deferred = false;
        const ZkName answer = next->lookupNamespaceUri(prefix);
        if (!own.deferred)
            return answer;
        next = own.next;
    }
    return ZkName();
}

ZkName ZkNode::lookupPrefixFrom(ZkName uri, const ZkNode* start) const {
    // This element alone: the walk goes on to the parent with the same starting node.
    if (!isPlainElement(this)) {
        const ZkName prefix = getPrefix();
        if (!prefix.isEmpty() && getNamespaceUri() == uri &&
            start->lookupNamespaceUri(prefix) == uri)
            return prefix;
    }
    if (!hasAttributes())
        return ZkName();
    const ZkNamedNodeMap* attributes = getAttributes();
    for (ZkNode* attr = attributes->getFirstNode(); attr; attr = attributes->getNextNode(attr)) {
        if (attr->getPrefix() != ZKN_xmlns || attrValueAsName(attr) != uri)
            continue;
        const ZkName local = attr->getLocalName();
        // A declaration hidden by an inner one does not count.
        if (start->lookupNamespaceUri(local) == uri)
            return local;
    }
    return ZkName();
}

ZkName ZkNode::lookupPrefix(ZkName uri) const {
    using detail::InheritKind;
    detail::InheritWalk* walk = detail::walkAsking(InheritKind::kPrefix, this);
    const int type = getNodeType();
    const ZkNode* next = nullptr;
    const ZkNode* start = walk && walk->start ? walk->start : this;
    bool keepStart = false;
    if (type == ELEMENT_NODE) {
        const ZkName found = lookupPrefixFrom(uri, start);
        if (!found.isEmpty())
            return found;
        next = parentElement(this);
        keepStart = true;
    } else {
        bool ends;
        next = delegateOf(this, type, ends);
    }
    if (walk) {
        detail::deferTo(walk, next);
        // From an element the search keeps its starting node; a delegation starts afresh.
        walk->start = keepStart ? start : next;
        return ZkName();
    }
    detail::InheritWalk own;
    own.start = keepStart ? start : next;
    detail::InheritScope scope(InheritKind::kPrefix, &own);
    while (next) {
        own.asking = next;
        own.deferred = false;
        const ZkName answer = next->lookupPrefix(uri);
        if (!own.deferred)
            return answer;
        next = own.next;
    }
    return ZkName();
}

bool ZkNode::isDefaultNamespace(ZkName uri) const {
    using detail::InheritKind;
    detail::InheritWalk* walk = detail::walkAsking(InheritKind::kDefaultNamespace, this);
    const int type = getNodeType();
    const ZkNode* next = nullptr;
    if (type == ELEMENT_NODE) {
        if (getPrefix().isEmpty())
            return getNamespaceUri() == uri;
        if (hasAttributes()) {
            const ZkNamedNodeMap* attributes = getAttributes();
            for (ZkNode* attr = attributes->getFirstNode(); attr;
                 attr = attributes->getNextNode(attr)) {
                if (attr->getLocalName() == ZKN_xmlns)
                    return attrValueAsName(attr) == uri;
            }
        }
        next = parentElement(this);
    } else {
        bool ends;
        next = delegateOf(this, type, ends);
    }
    if (walk) {
        detail::deferTo(walk, next);
        return false;
    }
    detail::InheritWalk own;
    detail::InheritScope scope(InheritKind::kDefaultNamespace, &own);
    while (next) {
        own.asking = next;
        own.deferred = false;
        const bool answer = next->isDefaultNamespace(uri);
        if (!own.deferred)
            return answer;
        next = own.next;
    }
    return false;
}

// --- inherited positions and base URI -----------------------------------------------------------

namespace {
thread_local detail::InheritWalk* t_walks[detail::kInheritKinds] = {};
} // namespace

detail::InheritWalk* detail::walkAsking(InheritKind kind, const ZkNode* self) {
    InheritWalk* walk = t_walks[static_cast<int>(kind)];
    return walk && walk->asking == self ? walk : nullptr;
}

detail::InheritScope::InheritScope(InheritKind kind, InheritWalk* walk)
    : m_kind(kind), m_previous(t_walks[static_cast<int>(kind)]) {
    t_walks[static_cast<int>(kind)] = walk;
}

detail::InheritScope::~InheritScope() {
    t_walks[static_cast<int>(m_kind)] = m_previous;
}

int detail::inheritPosition(InheritKind kind, const ZkNode* first, bool sibling) {
    InheritWalk own;
    InheritScope scope(kind, &own);
    // A node without a number of its own takes its previous sibling's, and if that is -1 its
    // parent's. A sibling's own rule already ends at the same parent.
    for (const ZkNode* next = first; next;) {
        own.asking = next;
        own.deferred = false;
        const int answer = kind == InheritKind::kLine ? next->getSourceLineNumber()
                                                      : next->getSourceColumnNumber();
        if (own.deferred) {
            sibling = own.sibling;
            next = own.next;
        } else if (answer == -1 && sibling) {
            sibling = false;
            next = next->getParentNode();
        } else {
            return answer;
        }
    }
    return -1;
}

namespace {
// The node a position is asked of next: the previous sibling, else the parent.
const ZkNode* positionSource(const ZkNode* node, bool& sibling) {
    const ZkNode* previous = node->getPreviousSibling();
    sibling = previous != nullptr;
    return previous ? previous : node->getParentNode();
}

int inheritedPosition(detail::InheritKind kind, const ZkNode* node) {
    bool sibling;
    const ZkNode* next = positionSource(node, sibling);
    if (detail::InheritWalk* walk = detail::walkAsking(kind, node)) {
        detail::deferTo(walk, next);
        walk->sibling = sibling;
        return -1;
    }
    return next ? detail::inheritPosition(kind, next, sibling) : -1;
}
} // namespace

int ZkNode::getSourceLineNumber() const {
    return inheritedPosition(detail::InheritKind::kLine, this);
}

int ZkNode::getSourceColumnNumber() const {
    return inheritedPosition(detail::InheritKind::kColumn, this);
}

UnicodeString detail::inheritBaseUri(const ZkNode* first, const UnicodeString& relative) {
    InheritWalk own;
    InheritScope scope(InheritKind::kBaseUri, &own);
    std::vector<UnicodeString> pending;
    if (!relative.isEmpty())
        pending.push_back(relative);
    UnicodeString result;
    for (const ZkNode* next = first; next;) {
        own.asking = next;
        own.deferred = false;
        own.relative.remove();
        UnicodeString answer = next->getBaseUri();
        if (!own.deferred) {
            result = answer;
            break;
        }
        if (!own.relative.isEmpty())
            pending.push_back(own.relative);
        next = own.next;
    }
    // Each relative xml:base is resolved against the base found above it, outermost first.
    for (auto it = pending.rbegin(); it != pending.rend(); ++it)
        result = ZkUri(ZkUri(result), *it).toString();
    return result;
}

UnicodeString ZkNode::getBaseUri() const {
    const ZkNode* next = getParentNode();
    if (!next) {
        const ZkDocument* document = getOwnerDocumentField();
        if (static_cast<const ZkNode*>(document) != this)
            next = document;
    }
    if (detail::InheritWalk* walk = detail::walkAsking(detail::InheritKind::kBaseUri, this)) {
        detail::deferTo(walk, next);
        return UnicodeString();
    }
    return next ? detail::inheritBaseUri(next, UnicodeString()) : UnicodeString();
}

} // namespace ZkCommonNS
