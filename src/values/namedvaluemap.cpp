// ZkNamedValueMap: a hash table from names to named values whose entries lie on one doubly
// linked list, and its iterator. A bucket is the pair (first, last) of its run on the list, so
// entries of a bucket stand together and a walk of the list visits every entry once.
#include "zkcommon/values/value.h"

#include <cstring>

namespace ZkCommonNS {

struct ZkNamedValueMap::Entry {
    ZkNamedValue value;
    Entry* prev = nullptr;
    Entry* next = nullptr;
};

struct ZkNamedValueMap::Bucket {
    Entry* first = nullptr;
    Entry* last = nullptr;
};

namespace {

constexpr uint32_t kInitialBuckets = 8;

// FNV-1a over the four little-endian bytes of the name's number, masked to 23 bits.
uint32_t hashName(ZkNameEnum name) noexcept {
    uint32_t value = static_cast<uint32_t>(name);
    uint32_t hash = 2166136261u;
    for (int i = 0; i < 4; ++i) {
        hash ^= (value >> (8 * i)) & 0xFF;
        hash *= 16777619u;
    }
    return hash & 0x7FFFFF;
}

} // namespace

ZkNamedValueMap::ZkNamedValueMap() = default;

ZkNamedValueMap::~ZkNamedValueMap() {
    clear();
    delete[] m_buckets;
}

void ZkNamedValueMap::clear() noexcept {
    Entry* entry = m_head;
    m_head = m_tail = nullptr;
    m_count = 0;
    for (uint32_t i = 0; i < m_bucketCount; ++i)
        m_buckets[i] = Bucket();
    while (entry) {
        Entry* next = entry->next;
        delete entry;
        entry = next;
    }
}

ZkNamedValueMap::Entry* ZkNamedValueMap::find(ZkName name) const noexcept {
    if (m_count == 0)
        return nullptr;
    const Bucket& bucket = m_buckets[hashName(name.getEnum()) & (m_bucketCount - 1)];
    for (Entry* entry = bucket.first; entry; entry = entry->next) {
        if (entry->value.getName() == name)
            return entry;
        if (entry == bucket.last)
            break;
    }
    return nullptr;
}

void ZkNamedValueMap::link(Entry* entry) noexcept {
    Bucket& bucket = m_buckets[hashName(entry->value.getName().getEnum()) & (m_bucketCount - 1)];
    if (!bucket.first) {
        // A new run goes to the end of the list.
        entry->prev = m_tail;
        entry->next = nullptr;
        if (m_tail)
            m_tail->next = entry;
        else
            m_head = entry;
        m_tail = entry;
        bucket.first = bucket.last = entry;
    } else {
        Entry* after = bucket.last;
        entry->prev = after;
        entry->next = after->next;
        if (after->next)
            after->next->prev = entry;
        else
            m_tail = entry;
        after->next = entry;
        bucket.last = entry;
    }
    ++m_count;
}

void ZkNamedValueMap::unlink(Entry* entry) noexcept {
    Bucket& bucket = m_buckets[hashName(entry->value.getName().getEnum()) & (m_bucketCount - 1)];
    if (bucket.first == entry && bucket.last == entry) {
        bucket.first = bucket.last = nullptr;
    } else if (bucket.first == entry) {
        bucket.first = entry->next;
    } else if (bucket.last == entry) {
        bucket.last = entry->prev;
    }
    if (entry->prev)
        entry->prev->next = entry->next;
    else
        m_head = entry->next;
    if (entry->next)
        entry->next->prev = entry->prev;
    else
        m_tail = entry->prev;
    entry->prev = entry->next = nullptr;
    --m_count;
}

void ZkNamedValueMap::grow() {
    uint32_t newCount = m_bucketCount ? m_bucketCount * 2 : kInitialBuckets;
    Bucket* buckets = new Bucket[newCount];
    Entry* entry = m_head;
    delete[] m_buckets;
    m_buckets = buckets;
    m_bucketCount = newCount;
    m_head = m_tail = nullptr;
    m_count = 0;
    while (entry) {
        Entry* next = entry->next;
        link(entry);
        entry = next;
    }
}

ZkNamedValue ZkNamedValueMap::getNamedItem(ZkName name) const {
    const Entry* entry = find(name);
    return entry ? entry->value : ZkNamedValue::NULL_VALUE;
}

bool ZkNamedValueMap::getNamedItemFast(ZkName name, ZkValue& out) const {
    if (m_count == 0)
        return false;
    const Entry* entry = find(name);
    if (!entry)
        return false;
    out = entry->value;
    return true;
}

ZkNamedValue ZkNamedValueMap::item(int index) const {
    if (index < 0 || index >= m_count)
        return ZkNamedValue::NULL_VALUE;
    const Entry* entry = m_head;
    while (index-- > 0)
        entry = entry->next;
    return entry->value;
}

void ZkNamedValueMap::setNamedItem(ZkName name, const ZkValue& value) {
    setNamedItem(ZkNamedValue(value, name));
}

void ZkNamedValueMap::setNamedItem(const ZkNamedValue& value) {
    if (Entry* entry = find(value.getName())) {
        entry->value.setValue(value);
        return;
    }
    if (m_bucketCount == 0 || static_cast<uint32_t>(m_count) + 1 > m_bucketCount)
        grow();
    Entry* entry = new Entry();
    entry->value = value;
    link(entry);
}

bool ZkNamedValueMap::removeNamedItem(ZkName name) {
    Entry* entry = find(name);
    if (!entry)
        return false;
    unlink(entry);
    delete entry;
    return true;
}

bool ZkNamedValueMap::removeNamedItem(ZkName name, const ZkValue& value) {
    Entry* entry = find(name);
    if (!entry || !(static_cast<const ZkValue&>(entry->value) == value))
        return false;
    unlink(entry);
    delete entry;
    return true;
}

ZkPtr<ZkNamedValueMap> ZkNamedValueMap::clone() const {
    ZkPtr<ZkNamedValueMap> copy(new ZkNamedValueMap());
    if (m_bucketCount == 0)
        return copy;
    // The same bucket count and the same insertion order give the same list order.
    copy->m_buckets = new Bucket[m_bucketCount];
    copy->m_bucketCount = m_bucketCount;
    for (const Entry* entry = m_head; entry; entry = entry->next) {
        Entry* fresh = new Entry();
        fresh->value = entry->value;
        copy->link(fresh);
    }
    return copy;
}

ZkNamedValueMapIterator::ZkNamedValueMapIterator(const ZkNamedValueMap* map) noexcept
    : m_map(map), m_current(map ? map->m_head : nullptr) {}

const ZkNamedValue& ZkNamedValueMapIterator::next() noexcept {
    if (!m_current)
        return ZkNamedValue::NULL_VALUE;
    const ZkNamedValue& value = m_current->value;
    m_current = m_current->next;
    return value;
}

void ZkNamedValueMapIterator::setToStart() noexcept {
    m_current = m_map ? m_map->m_head : nullptr;
}

ZkNamedValue::ZkNamedValue(const ZkValue& value, ZkName name) : ZkValue(value) {
    setTagName(name.getEnum());
}

} // namespace ZkCommonNS
