// ZkNodeIterator and ZkTreeIterator.
#include "zkcommon/dom/iterator.h"

#include "zkcommon/dom/node.h"
#include "zkcommon/dom/nodelist.h"

namespace ZkCommonNS {

// --- ZkNodeIterator -----------------------------------------------------------------------------

ZkNodeIterator::ZkNodeIterator() : m_current(nullptr) {}

ZkNodeIterator::ZkNodeIterator(const ZkNodeIterable* iterable)
    : m_iterable(const_cast<ZkNodeIterable*>(iterable)),
      m_current(iterable ? iterable->getFirstNode() : nullptr) {}

ZkNodeIterator::ZkNodeIterator(const ZkNode* node, ZkNode* start) : m_current(nullptr) {
    if (!node)
        return;
    m_iterable = ZkPtr<ZkNodeIterable>(node->getDescendantNodes());
    if (m_iterable)
        m_current = start ? m_iterable->getNextNode(start) : m_iterable->getFirstNode();
}

ZkNodeIterator::ZkNodeIterator(const ZkNodeIterator& other) = default;
ZkNodeIterator& ZkNodeIterator::operator=(const ZkNodeIterator& other) = default;
ZkNodeIterator::~ZkNodeIterator() = default;

ZkNodeIterable* ZkNodeIterator::getIterable() const {
    return m_iterable.get();
}

ZkNode* ZkNodeIterator::nextNode() {
    ZkNode* node = m_current;
    if (node)
        m_current = m_iterable->getNextNode(node);
    return node;
}

bool ZkNodeIterator::hasPreviousNode() const {
    if (!m_iterable)
        return false;
    return m_current != m_iterable->getFirstNode();
}

ZkNode* ZkNodeIterator::previousNode() {
    if (!m_iterable)
        return nullptr;
    m_current = m_current ? m_iterable->getPreviousNode(m_current) : m_iterable->getLastNode();
    return m_current;
}

void ZkNodeIterator::setToStart() {
    m_current = m_iterable ? m_iterable->getFirstNode() : nullptr;
}

// --- ZkTreeIterator -----------------------------------------------------------------------------

ZkNode* ZkTreeIterator::nextNode() {
    if (!m_current) {
        if (!m_root || m_postVisit)
            return nullptr;
        m_current = m_root;
        if (m_order != POST_ORDER)
            return m_current;
    }
    for (;;) {
        if (!m_postVisit) {
            if (ZkNode* child = m_current->getFirstChild()) {
                m_current = child;
                if (m_order == POST_ORDER)
                    continue; // descend to the first leaf
                return child;
            }
            m_postVisit = true;
            if (m_order == POST_ORDER)
                return m_current;
            // Both orders: a childless non-element is visited once, an element always twice.
            if (m_order == PRE_AND_POST_ORDER && m_current->isElementNode())
                return m_current;
        }
        if (m_current == m_root) {
            m_current = nullptr;
            return nullptr;
        }
        if (ZkNode* next = m_current->getNextSibling()) {
            m_current = next;
            m_postVisit = false;
            if (m_order == POST_ORDER)
                continue;
            return next;
        }
        m_current = m_current->getParentNode();
        if (!m_current) // the tree changed under the walk: the root is no longer above
            return nullptr;
        if (m_order == PRE_ORDER)
            continue;
        return m_current;
    }
}

ZkNode* ZkTreeIterator::previousNode() {
    if (!m_current) {
        if (!m_root || !m_postVisit)
            return nullptr;
        m_current = m_root;
        if (m_order != PRE_ORDER)
            return m_current;
    }
    for (;;) {
        if (m_postVisit) {
            if (ZkNode* child = m_current->getLastChild()) {
                m_current = child;
                if (m_order == PRE_ORDER)
                    continue; // descend to the last leaf
                return child;
            }
            m_postVisit = false;
            if (m_order == PRE_ORDER)
                return m_current;
            if (m_order == PRE_AND_POST_ORDER && m_current->isElementNode())
                return m_current;
        }
        if (m_current == m_root) {
            m_current = nullptr;
            return nullptr;
        }
        if (ZkNode* previous = m_current->getPreviousSibling()) {
            m_current = previous;
            m_postVisit = true;
            if (m_order == PRE_ORDER)
                continue;
            return previous;
        }
        m_current = m_current->getParentNode();
        if (!m_current)
            return nullptr;
        if (m_order == POST_ORDER)
            continue;
        return m_current;
    }
}

bool ZkTreeIterator::hasNextNode() const {
    if (!m_root)
        return false;
    if (!m_current)
        return !m_postVisit;
    if (m_current == m_root) {
        if (m_postVisit)
            return false;
        if (m_current->hasChildNodes())
            return true;
        if (m_order == POST_ORDER)
            return true;
        return m_order == PRE_AND_POST_ORDER && m_current->isElementNode();
    }
    if (m_order != PRE_ORDER)
        return true; // at least the parent's post visit remains
    if (!m_postVisit && m_current->hasChildNodes())
        return true;
    for (const ZkNode* node = m_current; node && node != m_root; node = node->getParentNode()) {
        if (node->getNextSibling())
            return true;
    }
    return false;
}

bool ZkTreeIterator::hasPreviousNode() const {
    if (!m_root)
        return false;
    if (!m_current)
        return m_postVisit;
    if (m_current == m_root) {
        if (!m_postVisit)
            return false;
        if (m_current->hasChildNodes())
            return true;
        if (m_order == PRE_ORDER)
            return true;
        return m_order == PRE_AND_POST_ORDER && m_current->isElementNode();
    }
    if (m_order != POST_ORDER)
        return true; // at least the parent's pre visit remains
    if (m_postVisit && m_current->hasChildNodes())
        return true;
    for (const ZkNode* node = m_current; node && node != m_root; node = node->getParentNode()) {
        if (node->getPreviousSibling())
            return true;
    }
    return false;
}

} // namespace ZkCommonNS
