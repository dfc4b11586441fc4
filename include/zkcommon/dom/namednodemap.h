// ZkNamedNodeMap, the attribute map interface, and AttrNodeMap, its ring-and-index store.
#ifndef ZKCOMMON_DOM_NAMEDNODEMAP_H
#define ZKCOMMON_DOM_NAMEDNODEMAP_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/nodelist.h"

#include <cstddef>
#include <cstdint>
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
/// attribute, null while the map is empty) with two look-ups, by (namespace URI, local name) and
/// by qualified name, both keyed by name numbers so that a look-up never compares text. Each
/// attribute keeps its own keys; a map of a few attributes searches its ring, a larger one two
/// hash tables. The map holds one reference on each attribute; each attribute on the ring is in
/// at least one look-up.
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

    /// Links `attr` at the end of the ring and offers it to both look-ups, where an existing key
    /// stays as it was. False, and nothing changes, for a null `attr`, one that already has an
    /// owner element or sits in a tree, a map without owner, or an attribute whose qualified
    /// name and (namespace URI, local name) are both taken: it could never be found again.
    bool addNode(ZkAttr* attr);
    /// The same, taking over the reference `attr` holds, which is null afterwards; on false it
    /// stays with `attr`.
    bool addNode(ZkPtr<ZkAttr>&& attr);
    /// Re-enters `attr` under its qualified name after `prefix` replaced its prefix; its place
    /// on the ring stays. Ignored for null or an attribute of another map.
    void changePrefix(ZkAttr* attr, ZkName prefix);
    /// Removes the attribute whose qualified name `attr` has; the map's reference goes to the
    /// result. Null when there is no such name. `attr` itself must not be null.
    ZkPtr<ZkAttr> removeNode(ZkAttr* attr);
    bool isEmpty() const { return m_anchor == nullptr; }
    /// Makes room for `count` more attributes ahead of a run of additions (the loader knows
    /// how many a start tag brings). Throws std::bad_alloc.
    void reserve(int count);
    /// Detaches and releases every attribute; the map is empty and keeps its owner.
    void clear();
    /// Empties the map and forgets its owner, which is going away while someone else still
    /// holds the map; attributes can no longer be added.
    void detachFromOwner();

private:
    friend class ZkElement; // the loader links attributes of known names

    /// Up to this many attributes the look-ups search the ring; past it they use hash tables.
    static constexpr uint32_t kRingLimit = 16;
    struct Hashed;

    static uint64_t nameKey(ZkName qname) { return uint64_t(uint32_t(qname.getEnum())); }
    static uint64_t namespaceKey(ZkName uri, ZkName local) {
        return (uint64_t(uint32_t(uri.getEnum())) << 32) | uint32_t(local.getEnum());
    }

    /// The look-ups, as bits of ZkAttr::m_keyed.
    static constexpr uint8_t kByNamespace = 1;
    static constexpr uint8_t kByName = 2;
    /// The attribute entered under `key` in the look-up `lookUp`.
    ZkAttr* find(uint8_t lookUp, uint64_t key) const;
    ZkPtr<ZkAttr> unlink(ZkAttr* attr);
    bool link(ZkAttr* attr, bool addRef);
    /// link() for an attribute whose keys are already known.
    bool linkKeyed(ZkAttr* attr, uint64_t nsKey, uint64_t qnameKey, bool addRef);
    /// The attributes that hold the two keys in their look-ups, null where a key is free.
    void probe(uint64_t nsKey, uint64_t qnameKey, ZkAttr*& byNamespace, ZkAttr*& byName) const;
    /// Links `attr` under its keys after probe(), into the look-ups where they were free (at
    /// least one). Throws std::bad_alloc, leaving the map as it was.
    void linkProbed(ZkAttr* attr, uint64_t nsKey, uint64_t qnameKey, bool nsFree, bool nameFree,
                    bool addRef);
    /// Moves the look-ups into hash tables with room for `count` attributes.
    void hash(std::size_t count);

    ZkNode* m_anchor;
    ZkElement* m_owner;
    uint32_t m_size;      ///< attributes on the ring
    uint32_t m_nameCount; ///< of them, those found by qualified name
    Hashed* m_hashed;     ///< set once the map outgrew its ring search
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_DOM_NAMEDNODEMAP_H
