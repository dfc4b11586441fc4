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

// --- the look-up index --------------------------------------------------------------------------

struct AttrNodeMap::Index::Hashed {
    std::unordered_map<uint64_t, ZkAttr*> table;
};

ZkAttr* AttrNodeMap::Index::find(uint64_t key) const {
    if (m_hashed) {
        auto found = m_hashed->table.find(key);
        return found == m_hashed->table.end() ? nullptr : found->second;
    }
    for (const Entry* entry = m_entries; entry != m_entries + m_size; ++entry) {
        if (entry->key == key)
            return entry->attr;
    }
    return nullptr;
}

bool AttrNodeMap::Index::insert(uint64_t key, ZkAttr* attr) {
    if (m_hashed)
        return m_hashed->table.emplace(key, attr).second;
    if (find(key))
        return false;
    insertNew(key, attr);
    return true;
}

void AttrNodeMap::Index::insertNew(uint64_t key, ZkAttr* attr) {
    if (m_hashed) {
        m_hashed->table.emplace(key, attr);
        return;
    }
    if (m_size == m_capacity) {
        if (m_capacity >= kFlatLimit) {
            // Built aside first: a failure leaves the array as it was.
            std::unique_ptr<Hashed> hashed(new Hashed());
            hashed->table.reserve(std::size_t(m_size) * 2);
            for (const Entry* entry = m_entries; entry != m_entries + m_size; ++entry)
                hashed->table.emplace(entry->key, entry->attr);
            hashed->table.emplace(key, attr);
            detail::smallFree(m_entries, m_capacity * sizeof(Entry));
            m_entries = nullptr;
            m_size = m_capacity = 0;
            m_hashed = hashed.release();
            return;
        }
        reserve(m_capacity == 0 ? 4 : m_capacity * 2);
    }
    m_entries[m_size++] = Entry{key, attr};
}

bool AttrNodeMap::Index::erase(uint64_t key, const ZkAttr* attr) {
    if (m_hashed) {
        auto found = m_hashed->table.find(key);
        if (found == m_hashed->table.end() || found->second != attr)
            return false;
        m_hashed->table.erase(found);
        return true;
    }
    for (Entry* entry = m_entries; entry != m_entries + m_size; ++entry) {
        if (entry->key == key) {
            if (entry->attr != attr)
                return false;
            // Keys are unique, so their order is of no account: the last entry fills the gap.
            *entry = m_entries[--m_size];
            return true;
        }
    }
    return false;
}

void AttrNodeMap::Index::eraseValue(const ZkAttr* attr) {
    if (m_hashed) {
        for (auto entry = m_hashed->table.begin(); entry != m_hashed->table.end(); ++entry) {
            if (entry->second == attr) {
                m_hashed->table.erase(entry);
                return;
            }
        }
        return;
    }
    for (Entry* entry = m_entries; entry != m_entries + m_size; ++entry) {
        if (entry->attr == attr) {
            *entry = m_entries[--m_size];
            return;
        }
    }
}

std::size_t AttrNodeMap::Index::size() const {
    return m_hashed ? m_hashed->table.size() : m_size;
}

void AttrNodeMap::Index::clear() {
    delete m_hashed;
    m_hashed = nullptr;
    detail::smallFree(m_entries, m_capacity * sizeof(Entry));
    m_entries = nullptr;
    m_size = m_capacity = 0;
}

void AttrNodeMap::Index::reserve(uint32_t count) {
    count = std::min(count, kFlatLimit);
    if (m_hashed || count <= m_capacity)
        return;
    Entry* entries = static_cast<Entry*>(detail::smallAllocate(count * sizeof(Entry)));
    std::copy(m_entries, m_entries + m_size, entries);
    detail::smallFree(m_entries, m_capacity * sizeof(Entry));
    m_entries = entries;
    m_capacity = count;
}

// --- the map ------------------------------------------------------------------------------------

void* AttrNodeMap::operator new(std::size_t size) {
    return detail::smallAllocate(size);
}

void AttrNodeMap::operator delete(void* block, std::size_t size) noexcept {
    detail::smallFree(block, size);
}

AttrNodeMap::AttrNodeMap(ZkElement* owner) : m_anchor(nullptr), m_owner(owner) {}

void AttrNodeMap::reserve(int count) {
    if (count <= 0)
        return;
    const uint32_t total = uint32_t(std::min<std::size_t>(m_byName.size() + std::size_t(count),
                                                          std::size_t(Index::kFlatLimit)));
    m_byName.reserve(total);
    m_byNamespace.reserve(total);
}

AttrNodeMap::~AttrNodeMap() {
    clear();
}

void AttrNodeMap::clear() {
    if (isEmpty())
        return;
    ZkNode* node = m_anchor;
    m_anchor = nullptr;
    m_byName.clear();
    m_byNamespace.clear();
    // From last to first, the reverse of the order of addition (see ZkNode::tearDownChildren);
    // each attribute loses its links before the map's reference goes.
    while (node) {
        ZkNode* previous = node->m_previous;
        // The attributes of a torn-down tree are cold: fetch the next while this one goes.
        detail::prefetch(previous);
        static_cast<ZkAttr*>(node)->m_ownerElement = nullptr;
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
    return static_cast<int>(m_byName.size());
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
    return m_byName.find(nameKey(qname));
}

ZkNode* AttrNodeMap::getNamedItemNS(ZkName uri, ZkName local) const {
    return m_byNamespace.find(namespaceKey(uri, local));
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
    // An attribute that neither look-up would take could never be found or removed by name.
    const bool nsFree = m_byNamespace.find(key) == nullptr;
    if (!nsFree && m_byName.find(qname) != nullptr)
        return false;
    // A failure of either insertion leaves the map as it was.
    const bool nameFree = nsFree ? m_byName.find(qname) == nullptr : true;
    if (nsFree)
        m_byNamespace.insertNew(key, attr);
    if (nameFree) {
        try {
            m_byName.insertNew(qname, attr);
        } catch (...) {
            if (nsFree)
                m_byNamespace.erase(key, attr);
            throw;
        }
    }
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
    // An existing key stayed: a second attribute of the same qualified name but another URI is
    // found by namespace only.
    m_anchor = attr;
    return true;
}

void AttrNodeMap::changePrefix(ZkAttr* attr, ZkName prefix) {
    if (!attr || !attr->m_ownerElement || attr->m_ownerElement != m_owner)
        return;
    m_byName.erase(nameKey(attr->getNodeName()), attr);
    attr->setPrefix(prefix);
    m_byName.insert(nameKey(attr->getNodeName()), attr);
}

ZkPtr<ZkAttr> AttrNodeMap::unlink(ZkAttr* attr, uint64_t nsKey) {
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
    // Only entries that point at this attribute go: a same-named one may own the key. The key
    // was derived again and may have moved (the URI of a prefixed attribute without a stored
    // URI follows the declarations), so a miss searches by pointer: no entry is left dangling.
    if (!m_byNamespace.erase(nsKey, attr))
        m_byNamespace.eraseValue(attr);
    // A qualified name moves only through changePrefix, which moves its entry along.
    m_byName.erase(nameKey(attr->getNodeName()), attr);
    attr->m_next = nullptr;
    attr->m_previous = nullptr;
    attr->m_ownerElement = nullptr;

    ZkPtr<ZkAttr> result(attr);
    attr->removeRef(); // the map's reference passes to the result
    return result;
}

ZkPtr<ZkAttr> AttrNodeMap::removeNamedItem(ZkName qname) {
    ZkAttr* attr = m_byName.find(nameKey(qname));
    if (!attr)
        return ZkPtr<ZkAttr>();
    return unlink(attr, namespaceKey(attr->getNamespaceUri(), attr->getLocalName()));
}

ZkPtr<ZkAttr> AttrNodeMap::removeNamedItemNS(ZkName uri, ZkName local) {
    const uint64_t key = namespaceKey(uri, local);
    ZkAttr* attr = m_byNamespace.find(key);
    if (!attr)
        return ZkPtr<ZkAttr>();
    return unlink(attr, key);
}

ZkPtr<ZkAttr> AttrNodeMap::removeNode(ZkAttr* attr) {
    if (isEmpty())
        return ZkPtr<ZkAttr>();
    // The look-up is by qualified name, so the attribute removed is the one the map holds under
    // that name, which need not be `attr` itself; its own entries are the ones to erase.
    ZkAttr* held = m_byName.find(nameKey(attr->getNodeName()));
    if (!held)
        return ZkPtr<ZkAttr>();
    ZkPtr<ZkAttr> removed =
        unlink(held, namespaceKey(held->getNamespaceUri(), held->getLocalName()));
    if (held == attr)
        return removed;
    return ZkPtr<ZkAttr>(attr);
}

} // namespace ZkCommonNS
