// AttrNodeMap: the attribute ring of an element and its two ordered maps.
#include "zkcommon/dom/namednodemap.h"

#include "core/smallpool.h"
#include "zkcommon/dom/attr.h"
#include "zkcommon/dom/element.h"

namespace ZkCommonNS {

void* AttrNodeMap::operator new(std::size_t size) {
    return detail::smallAllocate(size);
}

void AttrNodeMap::operator delete(void* block, std::size_t size) noexcept {
    detail::smallFree(block, size);
}

AttrNodeMap::AttrNodeMap(ZkElement* owner) : m_anchor(nullptr), m_owner(owner) {}

AttrNodeMap::~AttrNodeMap() {
    clear();
}

void AttrNodeMap::clear() {
    if (isEmpty())
        return;
    ZkNode* last = m_anchor;
    ZkNode* node = last->m_next;
    m_anchor = nullptr;
    m_byName.clear();
    m_byNamespace.clear();
    // From first to last; each attribute loses its links before the map's reference goes.
    for (;;) {
        ZkNode* next = node->m_next;
        const bool wasLast = node == last;
        static_cast<ZkAttr*>(node)->m_ownerElement = nullptr;
        node->m_next = nullptr;
        node->m_previous = nullptr;
        node->release();
        if (wasLast)
            break;
        node = next;
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
    auto found = m_byName.find(qname.getEnum());
    return found == m_byName.end() ? nullptr : found->second;
}

ZkNode* AttrNodeMap::getNamedItemNS(ZkName uri, ZkName local) const {
    auto found = m_byNamespace.find(NamespaceKey(uri.getEnum(), local.getEnum()));
    return found == m_byNamespace.end() ? nullptr : found->second;
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
    if (!attr || attr->m_ownerElement || attr->m_parent || attr->m_next || !m_owner)
        return false;
    const NamespaceKey key(attr->getNamespaceUri().getEnum(), attr->getLocalName().getEnum());
    const ZkNameEnum qname = attr->getNodeName().getEnum();
    // An attribute that neither map would take could never be found or removed by name.
    if (m_byNamespace.count(key) != 0 && m_byName.count(qname) != 0)
        return false;
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
    // An existing key stays: a second attribute of the same qualified name but another URI is
    // found by namespace only.
    m_byNamespace.emplace(key, attr);
    m_byName.emplace(qname, attr);
    return true;
}

void AttrNodeMap::changePrefix(ZkAttr* attr, ZkName prefix) {
    if (!attr || !attr->m_ownerElement || attr->m_ownerElement != m_owner)
        return;
    auto old = m_byName.find(attr->getNodeName().getEnum());
    if (old != m_byName.end() && old->second == attr)
        m_byName.erase(old);
    attr->setPrefix(prefix);
    m_byName.emplace(attr->getNodeName().getEnum(), attr);
}

ZkPtr<ZkAttr> AttrNodeMap::unlink(ZkAttr* attr, NameMap::iterator byName,
                                  NamespaceMap::iterator byNs) {
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
    // Only entries that point at this attribute go: a same-named one may own the key.
    if (byNs != m_byNamespace.end() && byNs->second == attr) {
        m_byNamespace.erase(byNs);
    } else {
        // The key was derived again and may have moved: the URI of a prefixed attribute without
        // a stored URI follows the declarations. Search by pointer so no entry is left dangling.
        for (auto entry = m_byNamespace.begin(); entry != m_byNamespace.end(); ++entry) {
            if (entry->second == attr) {
                m_byNamespace.erase(entry);
                break;
            }
        }
    }
    if (byName != m_byName.end() && byName->second == attr)
        m_byName.erase(byName);
    attr->m_next = nullptr;
    attr->m_previous = nullptr;
    attr->m_ownerElement = nullptr;

    ZkPtr<ZkAttr> result(attr);
    attr->removeRef(); // the map's reference passes to the result
    return result;
}

ZkPtr<ZkAttr> AttrNodeMap::removeNamedItem(ZkName qname) {
    auto byName = m_byName.find(qname.getEnum());
    if (byName == m_byName.end())
        return ZkPtr<ZkAttr>();
    ZkAttr* attr = byName->second;
    auto byNs = m_byNamespace.find(
        NamespaceKey(attr->getNamespaceUri().getEnum(), attr->getLocalName().getEnum()));
    return unlink(attr, byName, byNs);
}

ZkPtr<ZkAttr> AttrNodeMap::removeNamedItemNS(ZkName uri, ZkName local) {
    auto byNs = m_byNamespace.find(NamespaceKey(uri.getEnum(), local.getEnum()));
    if (byNs == m_byNamespace.end())
        return ZkPtr<ZkAttr>();
    ZkAttr* attr = byNs->second;
    auto byName = m_byName.find(attr->getNodeName().getEnum());
    return unlink(attr, byName, byNs);
}

ZkPtr<ZkAttr> AttrNodeMap::removeNode(ZkAttr* attr) {
    if (isEmpty())
        return ZkPtr<ZkAttr>();
    auto byName = m_byName.find(attr->getNodeName().getEnum());
    if (byName == m_byName.end())
        return ZkPtr<ZkAttr>();
    // The look-up is by qualified name, so the attribute removed is the one the map holds under
    // that name, which need not be `attr` itself; its own entries are the ones to erase.
    ZkAttr* held = byName->second;
    auto byNs = m_byNamespace.find(
        NamespaceKey(held->getNamespaceUri().getEnum(), held->getLocalName().getEnum()));
    ZkPtr<ZkAttr> removed = unlink(held, byName, byNs);
    if (held == attr)
        return removed;
    return ZkPtr<ZkAttr>(attr);
}

} // namespace ZkCommonNS
