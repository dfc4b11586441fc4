// Live node lists: the iterable source, the child list and the filtered descendant list.
#ifndef ZKCOMMON_DOM_NODELIST_H
#define ZKCOMMON_DOM_NODELIST_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/fwd.h"
#include "zkcommon/dom/iterator.h"

namespace ZkCommonNS {

/// The abstract source of an iteration. Lists are descriptions of a query on the current tree:
/// they hold raw node pointers and are valid only while the tree stands.
class ZKCOMMON_API ZkNodeIterable : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkNodeIterable, ZkRCObject, ZkTypeID::kNodeIterable, "ZkNodeIterable")

public:
    /// An iterator at the first node.
    virtual ZkNodeIterator getIterator() const;
    /// Null when there is none.
    virtual ZkNode* getFirstNode() const = 0;
    /// Null when there is none.
    virtual ZkNode* getLastNode() const = 0;
    /// Null after the last node or for a null `node`.
    virtual ZkNode* getNextNode(ZkNode* node) const = 0;
    /// Null before the first node or for a null `node`.
    virtual ZkNode* getPreviousNode(ZkNode* node) const = 0;
};

/// A counted list; counting and indexing walk, so each call costs the list's length.
class ZKCOMMON_API ZkNodeList : public ZkNodeIterable {
    ZK_DECLARE_TYPE(ZkNodeList, ZkNodeIterable, ZkTypeID::kNodeList, "ZkNodeList")

public:
    virtual int getCount() const = 0;
    /// Null for a negative index or one at or past the end.
    virtual ZkNode* item(int index) const = 0;
};

/// The live children of a node. Every operation forwards to the node's loading getters.
class ZKCOMMON_API ChildNodeList : public ZkNodeList {
    ZK_DECLARE_TYPE(ChildNodeList, ZkNodeList, ZkTypeID::kChildNodeList, "ChildNodeList")

public:
    /// The parent is not counted; a null parent gives an empty list.
    explicit ChildNodeList(const ZkNode* parent) : m_parent(const_cast<ZkNode*>(parent)) {}

    ZkNode* getFirstNode() const override;
    ZkNode* getLastNode() const override;
    ZkNode* getNextNode(ZkNode* node) const override;
    ZkNode* getPreviousNode(ZkNode* node) const override;
    int getCount() const override;
    ZkNode* item(int index) const override;

private:
    ZkNode* m_parent;
};

/// The descendants of a root in document order, the root excluded, through one of three filters.
class ZKCOMMON_API TreeNodeList : public ZkNodeList {
    ZK_DECLARE_TYPE(TreeNodeList, ZkNodeList, ZkTypeID::kTreeNodeList, "TreeNodeList")

public:
    enum FilterMode {
        ALL_NODES = 0,          ///< every descendant, whatever its kind
        ELEMENTS_BY_NAME = 1,   ///< elements by local name
        ELEMENTS_BY_NAME_NS = 2 ///< elements by namespace URI and local name
    };

    /// "*" in either name position is a wildcard. An unknown mode accepts nothing; a null root
    /// gives an empty list.
    TreeNodeList(const ZkNode* root, int mode, ZkName uri = ZkName(), ZkName local = ZkName())
        : m_root(const_cast<ZkNode*>(root)), m_mode(mode), m_uri(uri), m_local(local) {}

    ZkNode* getFirstNode() const override;
    ZkNode* getLastNode() const override;
    ZkNode* getNextNode(ZkNode* node) const override;
    ZkNode* getPreviousNode(ZkNode* node) const override;
    int getCount() const override;
    ZkNode* item(int index) const override;

    ZkNode* getRootNode() const { return m_root; }
    int getFilterMode() const { return m_mode; }

private:
    bool accepts(const ZkNode* node) const;

    ZkNode* m_root;
    int m_mode;
    ZkName m_uri;
    ZkName m_local;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_NODELIST_H
