// ZkNode: counting, searching, ancestors, document order, namespace look-ups and the positions
// and base URI that a node inherits from its surroundings.
#include "zkcommon/core/char.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/document.h"
#include "zkcommon/dom/element.h"
#include "zkcommon/dom/namednodemap.h"
#include "zkcommon/dom/node.h"
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

ZkName ZkNode::lookupNamespaceUri(ZkName prefix) const {
    const int type = getNodeType();
    if (type == ELEMENT_NODE) {
        // Walks up through elements without recursion: a very deep tree is not a deep stack.
        for (const ZkNode* element = this; element; element = parentElement(element)) {
            if (!isPlainElement(element)) {
                const ZkName uri = element->getNamespaceUri();
                if (!uri.isEmpty() && element->getPrefix() == prefix)
                    return uri;
            }
            if (!element->hasAttributes())
                continue;
            const ZkNamedNodeMap* attributes = element->getAttributes();
            for (ZkNode* attr = attributes->getFirstNode(); attr;
                 attr = attributes->getNextNode(attr)) {
                const ZkName local = attr->getLocalName();
                if ((attr->getPrefix() == ZKN_xmlns && local == prefix) ||
                    (local == ZKN_xmlns && prefix.isEmpty()))
                    return attrValueAsName(attr);
            }
        }
        return ZkName();
    }
    if (type == ATTRIBUTE_NODE) {
        const ZkElement* owner = static_cast<const ZkAttr*>(this)->getOwnerElement();
        return owner ? owner->lookupNamespaceUri(prefix) : ZkName();
    }
    if (type == DOCUMENT_NODE) {
        const ZkElement* root = static_cast<const ZkDocument*>(this)->getDocumentElement();
        return root ? root->lookupNamespaceUri(prefix) : ZkName();
    }
    if (isScopeless(type))
        return ZkName();
    return lookupNamespaceUriOnParent(prefix);
}

ZkName ZkNode::lookupNamespaceUriOnParent(ZkName prefix) const {
    const ZkNode* parent = parentElement(this);
    return parent ? parent->lookupNamespaceUri(prefix) : ZkName();
}

ZkName ZkNode::lookupPrefixFrom(ZkName uri, const ZkNode* start) const {
    for (const ZkNode* element = this; element; element = parentElement(element)) {
        if (!isPlainElement(element)) {
            const ZkName prefix = element->getPrefix();
            if (!prefix.isEmpty() && element->getNamespaceUri() == uri &&
                start->lookupNamespaceUri(prefix) == uri)
                return prefix;
        }
        if (!element->hasAttributes())
            continue;
        const ZkNamedNodeMap* attributes = element->getAttributes();
        for (ZkNode* attr = attributes->getFirstNode(); attr;
             attr = attributes->getNextNode(attr)) {
            if (attr->getPrefix() != ZKN_xmlns || attrValueAsName(attr) != uri)
                continue;
            const ZkName local = attr->getLocalName();
            // A declaration hidden by an inner one does not count.
            if (start->lookupNamespaceUri(local) == uri)
                return local;
        }
    }
    return ZkName();
}

ZkName ZkNode::lookupPrefix(ZkName uri) const {
    const int type = getNodeType();
    if (type == ELEMENT_NODE)
        return lookupPrefixFrom(uri, this);
    if (type == ATTRIBUTE_NODE) {
        const ZkElement* owner = static_cast<const ZkAttr*>(this)->getOwnerElement();
        return owner ? owner->lookupPrefix(uri) : ZkName();
    }
    if (type == DOCUMENT_NODE) {
        const ZkElement* root = static_cast<const ZkDocument*>(this)->getDocumentElement();
        return root ? root->lookupPrefix(uri) : ZkName();
    }
    if (isScopeless(type))
        return ZkName();
    const ZkNode* parent = parentElement(this);
    return parent ? parent->lookupPrefix(uri) : ZkName();
}

bool ZkNode::isDefaultNamespace(ZkName uri) const {
    const int type = getNodeType();
    if (type == ELEMENT_NODE) {
        for (const ZkNode* element = this; element; element = parentElement(element)) {
            if (element->getPrefix().isEmpty())
                return element->getNamespaceUri() == uri;
            if (!element->hasAttributes())
                continue;
            const ZkNamedNodeMap* attributes = element->getAttributes();
            for (ZkNode* attr = attributes->getFirstNode(); attr;
                 attr = attributes->getNextNode(attr)) {
                if (attr->getLocalName() == ZKN_xmlns)
                    return attrValueAsName(attr) == uri;
            }
        }
        return false;
    }
    if (type == ATTRIBUTE_NODE) {
        const ZkElement* owner = static_cast<const ZkAttr*>(this)->getOwnerElement();
        return owner && owner->isDefaultNamespace(uri);
    }
    if (type == DOCUMENT_NODE) {
        const ZkElement* root = static_cast<const ZkDocument*>(this)->getDocumentElement();
        return root && root->isDefaultNamespace(uri);
    }
    if (isScopeless(type))
        return false;
    const ZkNode* parent = parentElement(this);
    return parent && parent->isDefaultNamespace(uri);
}

// --- inherited positions and base URI -----------------------------------------------------------

namespace {
// What a node itself stores, -1 for node kinds that store nothing.
int storedLine(const ZkNode* node) {
    return node->isA(ZkTypeID::kElement)
               ? static_cast<const ZkElement*>(node)->getStoredSourceLineNumber()
               : -1;
}
int storedColumn(const ZkNode* node) {
    return node->isA(ZkTypeID::kElement)
               ? static_cast<const ZkElement*>(node)->getStoredSourceColumnNumber()
               : -1;
}

// The previous sibling's number, else the parent's, each of them by the same rule: unrolled into
// a loop so that a long run of siblings costs no stack.
// The raw links are read: an attribute thereby walks back along its ring to its owner element
// and reports the element's position.
int inheritedPosition(const ZkNode* node, int (*stored)(const ZkNode*)) {
    for (;;) {
        const ZkNode* next = node->getPreviousSiblingFast();
        if (!next)
            next = node->getParentNodeFast();
        if (!next)
            return -1;
        const int value = stored(next);
        if (value != -1)
            return value;
        node = next;
    }
}
} // namespace

int ZkNode::getSourceLineNumber() const {
    return inheritedPosition(this, storedLine);
}
int ZkNode::getSourceColumnNumber() const {
    return inheritedPosition(this, storedColumn);
}

UnicodeString ZkNode::getBaseUri() const {
    if (const ZkNode* parent = getParentNode())
        return parent->getBaseUri();
    if (m_ownerDocument && static_cast<const ZkNode*>(m_ownerDocument) != this)
        return m_ownerDocument->getBaseUri();
    return UnicodeString();
}

} // namespace ZkCommonNS
