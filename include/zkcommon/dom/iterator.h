// ZkNodeIterator, a cursor over any iterable, and ZkTreeIterator, the walk with pre and post
// visits.
#ifndef ZKCOMMON_DOM_ITERATOR_H
#define ZKCOMMON_DOM_ITERATOR_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/fwd.h"

namespace ZkCommonNS {

/// A cursor over a ZkNodeIterable. It stands before the node that nextNode returns, so
/// previousNode straight after nextNode returns the same node again. It holds a reference on the
/// iterable but only a raw pointer to the node: it is valid while the tree stands.
class ZKCOMMON_API ZkNodeIterator {
public:
    /// No iterable and no current node: hasNextNode is false.
    ZkNodeIterator();
    /// Starts at the iterable's first node; a null iterable gives an empty iterator.
    explicit ZkNodeIterator(const ZkNodeIterable* iterable);
    /// Iterates `node`'s descendants from the first one, or from the node after `start`.
    /// A null `node` gives an empty iterator.
    ZkNodeIterator(const ZkNode* node, ZkNode* start);
    ZkNodeIterator(const ZkNodeIterator& other);
    ZkNodeIterator& operator=(const ZkNodeIterator& other);
    ~ZkNodeIterator();

    bool hasNextNode() const { return m_current != nullptr; }
    /// The current node, then steps forward; null when exhausted, without moving.
    ZkNode* nextNode();
    /// False at the first node and without an iterable.
    bool hasPreviousNode() const;
    /// From the end goes to the last node, otherwise one back; returns the new current node.
    ZkNode* previousNode();
    void setToEnd() { m_current = nullptr; }
    void setToStart();
    ZkNodeIterable* getIterable() const;

private:
    ZkPtr<ZkNodeIterable> m_iterable;
    ZkNode* m_current;
};

/// A walk of the subtree under a root, visiting in pre-order (1), post-order (2) or both (3). In
/// order 3 an element is visited twice and a childless non-element once. The steps use the
/// loading getters, so walking a document that is still loading pulls the loader.
class ZKCOMMON_API ZkTreeIterator {
public:
    enum TraversalOrder { PRE_ORDER = 1, POST_ORDER = 2, PRE_AND_POST_ORDER = 3 };

    /// A null root, no current node, at a post visit, order 3: yields nothing.
    ZkTreeIterator() noexcept
        : m_root(nullptr), m_current(nullptr), m_postVisit(true), m_order(PRE_AND_POST_ORDER) {}
    /// A walk from the start is (root, null, false, order); a null root yields nothing.
    ZkTreeIterator(const ZkNode* root, const ZkNode* current, bool postVisit,
                   TraversalOrder order) noexcept
        : m_root(const_cast<ZkNode*>(root)), m_current(const_cast<ZkNode*>(current)),
          m_postVisit(postVisit), m_order(order) {}

    bool operator==(const ZkTreeIterator& other) const noexcept {
        return m_root == other.m_root && m_current == other.m_current &&
               m_postVisit == other.m_postVisit && m_order == other.m_order;
    }
    bool operator!=(const ZkTreeIterator& other) const noexcept { return !(*this == other); }

    ZkNode* getRootNode() const noexcept { return m_root; }
    ZkNode* getCurrentNode() const noexcept { return m_current; }
    TraversalOrder getTraversalOrder() const noexcept { return m_order; }
    void setTraversalOrder(TraversalOrder order) noexcept { m_order = order; }
    bool atPreVisit() const noexcept { return !m_postVisit; }
    bool atPostVisit() const noexcept { return m_postVisit; }
    void setAtPreVisit(bool pre) noexcept { m_postVisit = !pre; }
    /// Set at a pre visit, the node's children are skipped by the next step.
    void setAtPostVisit(bool post) noexcept { m_postVisit = post; }
    void setCurrentNode(const ZkNode* node, bool postVisit) noexcept {
        m_current = const_cast<ZkNode*>(node);
        m_postVisit = postVisit;
    }
    /// At the root's pre visit.
    void setToStart() noexcept {
        m_current = m_root;
        m_postVisit = false;
    }
    /// At the root's post visit.
    void setToEnd() noexcept {
        m_current = m_root;
        m_postVisit = true;
    }

    bool hasNextNode() const;
    /// The next visited node; null at the end (and after it).
    ZkNode* nextNode();
    bool hasPreviousNode() const;
    /// The previous visited node in the mirrored walk; null at the start.
    ZkNode* previousNode();

private:
    ZkNode* m_root;
    ZkNode* m_current;
    bool m_postVisit;
    TraversalOrder m_order;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_ITERATOR_H
