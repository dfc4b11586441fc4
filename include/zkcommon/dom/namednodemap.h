// ZkNamedNodeMap, the attribute map interface, and AttrNodeMap, its ring-and-two-maps store.
#ifndef ZKCOMMON_DOM_NAMEDNODEMAP_H
#define ZKCOMMON_DOM_NAMEDNODEMAP_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/nodelist.h"

#include <cstddef>
#include <functional>
#include <map>
#include <utility>
#include <vector>

namespace ZkCommonNS {

/// The attributes of an element, found by qualified name or by namespace URI and local name.
/// Iteration visits them in the order in which they were added.
class ZKCOMMON_API ZkNamedNodeMap : public ZkNodeIterable {
    ZK_DECLARE_TYPE(ZkNamedNodeMap, ZkNodeIterable, ZkTypeID::kNamedNodeMap, "ZkNamedNodeMap")

public:
    /// The number of attributes findable by qualified name.
    virtual int getCount() const = 0;
    /// Null for a negative index or one at or past the end.
    virtual ZkNode* item(int index) const = 0;
    /// Null when missing.
    virtual ZkNode* getNamedItem(ZkName qname) const = 0;
    /// Null when missing.
    virtual ZkNode* getNamedItemNS(ZkName uri, ZkName local) const = 0;
    /// Appends all attributes of that local name, any namespace, in order; null `out` is ignored.
    virtual void getNamedItemLocal(ZkName local, std::vector<ZkPtr<ZkAttr>>* out) const = 0;
    /// Null when there was nothing to remove.
    virtual ZkPtr<ZkAttr> removeNamedItem(ZkName qname) = 0;
    virtual ZkPtr<ZkAttr> removeNamedItemNS(ZkName uri, ZkName local) = 0;
};

/// The attribute store of an element: a ring in order of addition (the anchor is the last
/// attribute, null while the map is empty), a map from (namespace URI, local name) and a map
/// from qualified name, both ordered by name number so that a look-up never compares text. The
/// map holds one reference on each attribute; each attribute on the ring is in at least one map.
class ZKCOMMON_API AttrNodeMap : public ZkNamedNodeMap {
    ZK_DECLARE_TYPE(AttrNodeMap, ZkNamedNodeMap, ZkTypeID::kAttrNodeMap, "AttrNodeMap")

public:
    explicit AttrNodeMap(ZkElement* owner);
    /// Every element has a map: they come from the same pool of small blocks as nodes.
    static void* operator new(std::size_t size);
    static void operator delete(void* block, std::size_t size) noexcept;
    ~AttrNodeMap() override;
    AttrNodeMap(const AttrNodeMap&) = delete;
    AttrNodeMap& operator=(const AttrNodeMap&) = delete;

    ZkNode* getFirstNode() const override;
    ZkNode* getLastNode() const override;
    ZkNode* getNextNode(ZkNode* node) const override;
    ZkNode* getPreviousNode(ZkNode* node) const override;

    int getCount() const override;
    ZkNode* item(int index) const override;
    ZkNode* getNamedItem(ZkName qname) const override;
    ZkNode* getNamedItemNS(ZkName uri, ZkName local) const override;
    void getNamedItemLocal(ZkName local, std::vector<ZkPtr<ZkAttr>>* out) const override;
    ZkPtr<ZkAttr> removeNamedItem(ZkName qname) override;
    ZkPtr<ZkAttr> removeNamedItemNS(ZkName uri, ZkName local) override;

    /// Links `attr` at the end of the ring and offers it to both maps, where an existing key
    /// stays as it was. False, and nothing changes, for a null `attr`, one that already has an
    /// owner element or sits in a tree, a map without owner, or an attribute whose qualified
    /// name and (namespace URI, local name) are both taken: it could never be found again.
    bool addNode(ZkAttr* attr);
    /// Re-enters `attr` under its qualified name after `prefix` replaced its prefix; its place
    /// on the ring stays. Ignored for null or an attribute of another map.
    void changePrefix(ZkAttr* attr, ZkName prefix);
    /// Removes the attribute whose qualified name `attr` has; the map's reference goes to the
    /// result. Null when there is no such name. `attr` itself must not be null.
    ZkPtr<ZkAttr> removeNode(ZkAttr* attr);
    bool isEmpty() const { return m_anchor == nullptr; }
    /// Detaches and releases every attribute; the map is empty and keeps its owner.
    void clear();
    /// Empties the map and forgets its owner, which is going away while someone else still
    /// holds the map; attributes can no longer be added.
    void detachFromOwner();

private:
    // The maps' entries come from the same pool as the nodes: an element's attributes cost no
    // call to the general allocator.
    template <class T> struct PoolAllocator {
        using value_type = T;
        PoolAllocator() = default;
        template <class U> PoolAllocator(const PoolAllocator<U>&) noexcept {}
        T* allocate(std::size_t n) {
            return static_cast<T*>(AttrNodeMap::operator new(n * sizeof(T)));
        }
        void deallocate(T* block, std::size_t n) noexcept {
            AttrNodeMap::operator delete(block, n * sizeof(T));
        }
        template <class U> bool operator==(const PoolAllocator<U>&) const noexcept { return true; }
        template <class U> bool operator!=(const PoolAllocator<U>&) const noexcept { return false; }
    };
    using NamespaceKey = std::pair<ZkNameEnum, ZkNameEnum>;
    using NamespaceMap = std::map<NamespaceKey, ZkAttr*, std::less<NamespaceKey>,
                                  PoolAllocator<std::pair<const NamespaceKey, ZkAttr*>>>;
    using NameMap = std::map<ZkNameEnum, ZkAttr*, std::less<ZkNameEnum>,
                             PoolAllocator<std::pair<const ZkNameEnum, ZkAttr*>>>;

    ZkPtr<ZkAttr> unlink(ZkAttr* attr, NameMap::iterator byName, NamespaceMap::iterator byNs);

    ZkNode* m_anchor;
    ZkElement* m_owner;
    NamespaceMap m_byNamespace;
    NameMap m_byName;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_NAMEDNODEMAP_H
