// ZkNodeIterable, ChildNodeList and TreeNodeList: live views of the tree.
#include "zkcommon/dom/nodelist.h"

#include "zkcommon/dom/node.h"

namespace ZkCommonNS {

ZkNodeIterator ZkNodeIterable::getIterator() const {
    return ZkNodeIterator(this);
}

// --- ChildNodeList ------------------------------------------------------------------------------

ZkNode* ChildNodeList::getFirstNode() const {
    return m_parent ? m_parent->getFirstChild() : nullptr;
}

ZkNode* ChildNodeList::getLastNode() const {
    return m_parent ? m_parent->getLastChild() : nullptr;
}

ZkNode* ChildNodeList::getNextNode(ZkNode* node) const {
    return node ? node->getNextSibling() : nullptr;
}

ZkNode* ChildNodeList::getPreviousNode(ZkNode* node) const {
    return node ? node->getPreviousSibling() : nullptr;
}

int ChildNodeList::getCount() const {
    return m_parent ? m_parent->getChildNodeCount() : 0;
}

ZkNode* ChildNodeList::item(int index) const {
    if (index < 0 || !m_parent)
        return nullptr;
    ZkNode* node = m_parent->getFirstChild();
    while (node && index > 0) {
        node = node->getNextSibling();
        --index;
    }
    return node;
}

// --- TreeNodeList -------------------------------------------------------------------------------

bool TreeNodeList::accepts(const ZkNode* node) const {
    switch (m_mode) {
    case ALL_NODES:
        return true;
    case ELEMENTS_BY_NAME:
        return node->isElementNode() && (m_local == ZKN_STAR || node->getLocalName() == m_local);
    case ELEMENTS_BY_NAME_NS:
        return node->isElementNode() && (m_local == ZKN_STAR || node->getLocalName() == m_local) &&
               (m_uri == ZKN_STAR || node->getNamespaceUri() == m_uri);
    default:
        return false;
    }
}

ZkNode* TreeNodeList::getNextNode(ZkNode* node) const {
    if (!m_root)
        return nullptr;
    while (node) {
        if (node->hasChildNodes()) {
            node = node->getFirstChild();
        } else {
            // Climb until a node has a next sibling; the root ends the walk.
            for (;;) {
                if (node == m_root)
                    return nullptr;
                if (ZkNode* next = node->getNextSibling()) {
                    node = next;
                    break;
                }
                node = node->getParentNode();
                if (!node)
                    return nullptr; // not under the root
            }
        }
        if (accepts(node))
            return node;
    }
    return nullptr;
}

ZkNode* TreeNodeList::getPreviousNode(ZkNode* node) const {
    if (!m_root)
        return nullptr;
    while (node && node != m_root) {
        if (ZkNode* previous = node->getPreviousSibling()) {
            node = previous;
            while (ZkNode* last = node->getLastChild())
                node = last;
        } else {
            node = node->getParentNode();
            if (!node || node == m_root)
                return nullptr;
        }
        if (accepts(node))
            return node;
    }
    return nullptr;
}

ZkNode* TreeNodeList::getFirstNode() const {
    return getNextNode(m_root);
}

ZkNode* TreeNodeList::getLastNode() const {
    if (!m_root)
        return nullptr;
    ZkNode* node = m_root->getLastChild();
    if (!node)
        return nullptr;
    while (ZkNode* last = node->getLastChild())
        node = last;
    return accepts(node) ? node : getPreviousNode(node);
}

int TreeNodeList::getCount() const {
    int count = 0;
    for (ZkNode* node = getFirstNode(); node; node = getNextNode(node))
        ++count;
    return count;
}

ZkNode* TreeNodeList::item(int index) const {
    if (index < 0)
        return nullptr;
    ZkNode* node = getFirstNode();
    while (node && index > 0) {
        node = getNextNode(node);
        --index;
    }
    return node;
}

} // namespace ZkCommonNS
