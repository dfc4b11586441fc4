// AttrNodeMap: the attribute ring of an element and its two look-ups.
#include "zkcommon/dom/namednodemap.h"

#include "core/smallpool.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/element.h"

#include <algorithm>
#include <memory>
#include <new>
#include <unordered_map>

namespace ZkCommonNS {

// --- the look-ups -------------------------------------------------------------------------------

struct AttrNodeMap::Hashed {
    std::unordered_map<uint64_t, ZkAttr*> byNamespace;
    std::unordered_map<uint64_t, ZkAttr*> byName;
};

void* AttrNodeMap::operator new(std::size_t size) {
    return detail::smallAllocate(size);
}

void AttrNodeMap::operator delete(void* block, std::size_t size) noexcept {
    detail::smallFree(block, size);
}

AttrNodeMap::AttrNodeMap(ZkElement* owner)
    : m_anchor(nullptr), m_owner(owner), m_size(0), m_nameCount(0), m_hashed(nullptr) {}

AttrNodeMap::~AttrNodeMap() {
    clear();
}

ZkAttr* AttrNodeMap::find(uint8_t lookUp, uint64_t key) const {
    const bool byNamespace = lookUp == kByNamespace;
    if (m_hashed) {
        const auto& table = byNamespace ? m_hashed->byNamespace : m_hashed->byName;
        auto found = table.find(key);
        return found == table.end() ? nullptr : found->second;
    }
    if (!m_anchor)
        return nullptr;
    ZkNode* node = m_anchor;
    do {
        node = node->m_next;
        ZkAttr* attr = static_cast<ZkAttr*>(node);
        if ((byNamespace ? attr->m_namespaceKey : attr->m_nameKey) == key &&
            (attr->m_keyed & lookUp))
            return attr;
    } while (node != m_anchor);
    return nullptr;
}

void AttrNodeMap::hash(std::size_t count) {
    // Built aside first: a failure leaves the map as it was.
    std::unique_ptr<Hashed> hashed(new Hashed());
    hashed->byNamespace.reserve(count);
    hashed->byName.reserve(count);
    for (ZkNode* node = getFirstNode(); node; node = getNextNode(node)) {
        ZkAttr* attr = static_cast<ZkAttr*>(node);
        if (attr->m_keyed & kByNamespace)
            hashed->byNamespace.emplace(attr->m_namespaceKey, attr);
        if (attr->m_keyed & kByName)
            hashed->byName.emplace(attr->m_nameKey, attr);
    }
    delete m_hashed;
    m_hashed = hashed.release();
}

void AttrNodeMap::reserve(int count) {
    if (count <= 0)
        return;
    const std::size_t total = std::size_t(m_size) + std::size_t(count);
    if (m_hashed) {
        m_hashed->byNamespace.reserve(total);
        m_hashed->byName.reserve(total);
    } else if (total > kRingLimit) {
        hash(total);
    }
}

void AttrNodeMap::clear() {
    delete m_hashed;
    m_hashed = nullptr;
    if (isEmpty())
        return;
    ZkNode* node = m_anchor;
    m_anchor = nullptr;
    m_size = m_nameCount = 0;
    // From last to first, the reverse of the order of addition (see ZkNode::tearDownChildren);
    // each attribute loses its links before the map's reference goes.
    while (node) {
        ZkNode* previous = node->m_previous;
        // The attributes of a torn-down tree are cold: fetch the next while this one goes.
        detail::prefetch(previous);
        ZkAttr* attr = static_cast<ZkAttr*>(node);
        attr->m_ownerElement = nullptr;
        attr->m_keyed = 0;
        node->m_next = nullptr;
        node->m_previous = nullptr;
        node->release();
        node = previous;
    }
}

void AttrNodeMap::detachFromOwner() {
    clear();
    m_owner = nullptr;
}

// --- iteration along the ring -------------------------------------------------------------------

ZkNode* AttrNodeMap::getFirstNode() const {
    return m_anchor ? m_anchor->m_next : nullptr;
}
ZkNode* AttrNodeMap::getLastNode() const {
    return m_anchor;
}

ZkNode* AttrNodeMap::getNextNode(ZkNode* node) const {
    if (!node || node == m_anchor)
        return nullptr;
    return node->m_next;
}

ZkNode* AttrNodeMap::getPreviousNode(ZkNode* node) const {
    return node ? node->m_previous : nullptr;
}

int AttrNodeMap::getCount() const {
    return static_cast<int>(m_nameCount);
}

ZkNode* AttrNodeMap::item(int index) const {
    if (index < 0)
        return nullptr;
    for (ZkNode* node = getFirstNode(); node; node = getNextNode(node)) {
        if (index-- == 0)
            return node;
    }
    return nullptr;
}

// --- look-ups -----------------------------------------------------------------------------------

ZkNode* AttrNodeMap::getNamedItem(ZkName qname) const {
    return find(kByName, nameKey(qname));
}

ZkNode* AttrNodeMap::getNamedItemNS(ZkName uri, ZkName local) const {
    return find(kByNamespace, namespaceKey(uri, local));
}

void AttrNodeMap::getNamedItemLocal(ZkName local, std::vector<ZkPtr<ZkAttr>>* out) const {
    if (!out)
        return;
    for (ZkNode* node = getFirstNode(); node; node = getNextNode(node)) {
        if (node->getLocalName() == local)
            out->emplace_back(static_cast<ZkAttr*>(node));
    }
}

// --- changes ------------------------------------------------------------------------------------

bool AttrNodeMap::addNode(ZkAttr* attr) {
    return link(attr, /*addRef=*/true);
}

bool AttrNodeMap::addNode(ZkPtr<ZkAttr>&& attr) {
    if (!link(attr.get(), /*addRef=*/false))
        return false;
    attr.detach(); // the reference now belongs to the map
    return true;
}

bool AttrNodeMap::link(ZkAttr* attr, bool addRef) {
    if (!attr || attr->m_ownerElement || attr->m_parent || attr->m_next || !m_owner)
        return false;
    return linkKeyed(attr, namespaceKey(attr->getNamespaceUri(), attr->getLocalName()),
                     nameKey(attr->getNodeName()), addRef);
}

bool AttrNodeMap::linkKeyed(ZkAttr* attr, uint64_t key, uint64_t qname, bool addRef) {
    // An attribute that neither look-up would take could never be found or removed by name;
    // an existing key stays: a second attribute of the same qualified name but another URI is
    // found by namespace only.
    ZkAttr* byNamespace;
    ZkAttr* byName;
    probe(key, qname, byNamespace, byName);
    if (byNamespace && byName)
        return false;
    linkProbed(attr, key, qname, !byNamespace, !byName, addRef);
    return true;
}

void AttrNodeMap::probe(uint64_t key, uint64_t qname, ZkAttr*& byNamespace, ZkAttr*& byName) const {
    if (m_hashed || !m_anchor) {
        byNamespace = find(kByNamespace, key);
        byName = find(kByName, qname);
        return;
    }
    // One pass over the ring for both keys.
    byNamespace = byName = nullptr;
    ZkNode* node = m_anchor;
    do {
        node = node->m_next;
        ZkAttr* attr = static_cast<ZkAttr*>(node);
        if (attr->m_namespaceKey == key && (attr->m_keyed & kByNamespace))
            byNamespace = attr;
        if (attr->m_nameKey == qname && (attr->m_keyed & kByName))
            byName = attr;
    } while (node != m_anchor);
}

void AttrNodeMap::linkProbed(ZkAttr* attr, uint64_t key, uint64_t qname, bool nsFree, bool nameFree,
                             bool addRef) {
    if (m_hashed || m_size + 1 > kRingLimit) {
        if (!m_hashed)
            hash(std::size_t(m_size) * 2);
        // A failure of either insertion leaves the map as it was.
        if (nsFree)
            m_hashed->byNamespace.emplace(key, attr);
        if (nameFree) {
            try {
                m_hashed->byName.emplace(qname, attr);
            } catch (...) {
                if (nsFree)
                    m_hashed->byNamespace.erase(key);
                throw;
            }
        }
    }
    attr->m_namespaceKey = key;
    attr->m_nameKey = uint32_t(qname);
    attr->m_keyed = uint8_t((nsFree ? kByNamespace : 0) | (nameFree ? kByName : 0));
    if (addRef)
        attr->addRef();
    attr->m_ownerElement = m_owner;
    if (!m_anchor) {
        attr->m_next = attr;
        attr->m_previous = nullptr;
    } else {
        attr->m_previous = m_anchor;
        attr->m_next = m_anchor->m_next;
        m_anchor->m_next = attr;
    }
    m_anchor = attr;
    ++m_size;
    if (nameFree)
        ++m_nameCount;
}

void AttrNodeMap::changePrefix(ZkAttr* attr, ZkName prefix) {
    if (!attr || !attr->m_ownerElement || attr->m_ownerElement != m_owner)
        return;
    if (attr->m_keyed & kByName) {
        if (m_hashed)
            m_hashed->byName.erase(attr->m_nameKey);
        attr->m_keyed &= uint8_t(~kByName);
        --m_nameCount;
    }
    attr->setPrefix(prefix);
    const uint64_t qname = nameKey(attr->getNodeName());
    attr->m_nameKey = uint32_t(qname);
    if (find(kByName, qname))
        return; // found by namespace only, as when it joined beside a same-named one
    if (m_hashed)
        m_hashed->byName.emplace(qname, attr);
    attr->m_keyed |= kByName;
    ++m_nameCount;
}

ZkPtr<ZkAttr> AttrNodeMap::unlink(ZkAttr* attr) {
    ZkNode* previous = attr->m_previous;
    ZkNode* next = attr->m_next;
    if (previous)
        previous->m_next = next;
    if (attr != m_anchor) {
        next->m_previous = previous;
        if (!previous)
            m_anchor->m_next = next; // the first attribute changed
    } else {
        // With no previous the ring is empty.
        m_anchor = previous;
    }
    // The attribute's own keys are the ones it was entered under, whatever its names say now
    // (the URI of a prefixed attribute without a stored URI follows the declarations).
    if (m_hashed) {
        if (attr->m_keyed & kByNamespace)
            m_hashed->byNamespace.erase(attr->m_namespaceKey);
        if (attr->m_keyed & kByName)
            m_hashed->byName.erase(attr->m_nameKey);
    }
    if (attr->m_keyed & kByName)
        --m_nameCount;
    --m_size;
    attr->m_keyed = 0;
    attr->m_next = nullptr;
    attr->m_previous = nullptr;
    attr->m_ownerElement = nullptr;

    ZkPtr<ZkAttr> result(attr);
    attr->removeRef(); // the map's reference passes to the result
    return result;
}

ZkPtr<ZkAttr> AttrNodeMap::removeNamedItem(ZkName qname) {
    ZkAttr* attr = find(kByName, nameKey(qname));
    return attr ? unlink(attr) : ZkPtr<ZkAttr>();
}

ZkPtr<ZkAttr> AttrNodeMap::removeNamedItemNS(ZkName uri, ZkName local) {
    ZkAttr* attr = find(kByNamespace, namespaceKey(uri, local));
    return attr ? unlink(attr) : ZkPtr<ZkAttr>();
}

ZkPtr<ZkAttr> AttrNodeMap::removeNode(ZkAttr* attr) {
    if (isEmpty())
        return ZkPtr<ZkAttr>();
    // The look-up is by qualified name, so the attribute removed is the one the map holds under
    // that name, which need not be `attr` itself.
    ZkAttr* held = find(kByName, nameKey(attr->getNodeName()));
    if (!held)
        return ZkPtr<ZkAttr>();
    ZkPtr<ZkAttr> removed = unlink(held);
    if (held == attr)
        return removed;
    return ZkPtr<ZkAttr>(attr);
}

} // namespace ZkCommonNS
