// The name table: built-in names resolved without locks, dynamic names interned process-wide.
#include "zkcommon/core/name.h"

#include "core/stdguard.h"
#include "zkcommon/core/lock.h"

#include <atomic>
#include <deque>
#include <string>
#include <vector>

namespace ZkCommonNS {

namespace {

const char16_t* const kBuiltinLiterals[] = {
    u"",
#include "namestrings.inc"
};
static_assert(sizeof kBuiltinLiterals / sizeof kBuiltinLiterals[0] == ZKN_BUILTIN_LAST + 1,
              "the generated table and the enumeration disagree");

/// The built-in names: strings that alias the literals, and an open-addressing hash table of
/// their numbers. Both are read-only after construction and read without a lock.
class BuiltinNames {
public:
    BuiltinNames() {
        for (int32_t i = 0; i <= ZKN_BUILTIN_LAST; ++i)
            m_strings[i].setTo(true, kBuiltinLiterals[i], -1); // aliases the literal
        for (int32_t i = 1; i <= ZKN_BUILTIN_LAST; ++i) {
            uint32_t slot = uint32_t(m_strings[i].hashCode()) & kMask;
            while (m_slots[slot] != 0)
                slot = (slot + 1) & kMask;
            m_slots[slot] = int16_t(i);
        }
    }

    ZkNameEnum find(const UnicodeString& text) const {
        return text.isEmpty() ? ZKN_EMPTY : find(text, text.hashCode());
    }

    ZkNameEnum find(const UnicodeString& text, int32_t hash) const {
        for (uint32_t slot = uint32_t(hash) & kMask;; slot = (slot + 1) & kMask) {
            int16_t index = m_slots[slot];
            if (index == 0)
                return ZKN_EMPTY;
            if (m_strings[index] == text)
                return ZkNameEnum(index);
        }
    }

    const UnicodeString& string(int32_t index) const { return m_strings[index]; }

private:
    static constexpr uint32_t kSlots = 8192; // more than twice the names: short probe runs
    static constexpr uint32_t kMask = kSlots - 1;
    UnicodeString m_strings[ZKN_BUILTIN_LAST + 1];
    int16_t m_slots[kSlots] = {};
};

// Both live until the process ends, so that names stay readable from static destructors.
const BuiltinNames& builtins() {
    static const BuiltinNames* names = new BuiltinNames;
    return *names;
}
ZkLock& sharedTableLock() {
    static ZkLock* lock = new ZkLock;
    return *lock;
}
const bool s_builtinsBuilt = (builtins(), sharedTableLock(), true);

const UnicodeString& emptyString() {
    return builtins().string(0);
}

std::atomic<ZkNameTable*> s_sharedNameTable{nullptr};

} // namespace

/// Dynamic names: their strings in number order and an open-addressing index over them that
/// keeps each string's hash, so a probe compares text only on a full hash match.
struct ZkNameTable::Impl {
    struct Slot {
        int32_t hash;
        int32_t index; // into strings, plus one; 0 marks a free slot
    };

    // A deque keeps references to its elements valid as it grows, so a string handed out by
    // reference survives later interning by other threads.
    std::deque<UnicodeString> strings;
    std::vector<Slot> slots = std::vector<Slot>(16);
    std::atomic<int32_t> last{ZKN_BUILTIN_LAST};

    ZkNameEnum find(const UnicodeString& text, int32_t hash) const {
        const size_t mask = slots.size() - 1;
        for (size_t slot = size_t(uint32_t(hash)) & mask;; slot = (slot + 1) & mask) {
            const Slot& entry = slots[slot];
            if (entry.index == 0)
                return ZKN_EMPTY;
            if (entry.hash == hash && strings[size_t(entry.index - 1)] == text)
                return ZkNameEnum(kFirstDynamicName + entry.index - 1);
        }
    }

    void place(int32_t hash, int32_t index) {
        const size_t mask = slots.size() - 1;
        size_t slot = size_t(uint32_t(hash)) & mask;
        while (slots[slot].index != 0)
            slot = (slot + 1) & mask;
        slots[slot] = Slot{hash, index};
    }

    ZkNameEnum add(const UnicodeString& text, int32_t hash) {
        if ((strings.size() + 1) * 2 > slots.size()) { // keep the load at most one half
            std::vector<Slot> old(slots.size() * 2);
            old.swap(slots);
            for (const Slot& entry : old)
                if (entry.index != 0)
                    place(entry.hash, entry.index);
        }
        strings.push_back(text);
        place(hash, int32_t(strings.size()));
        int32_t number = last.load(std::memory_order_relaxed) + 1;
        last.store(number, std::memory_order_release);
        return ZkNameEnum(number);
    }
};

ZkNameTable::ZkNameTable() : m_impl(new Impl) {}

ZkNameTable::~ZkNameTable() {
    ZkNameTable* self = this;
    s_sharedNameTable.compare_exchange_strong(self, nullptr);
}

ZkNameEnum ZkNameTable::getBuiltinNameEnum(const UnicodeString& text) {
    return builtins().find(text);
}

const UnicodeString& ZkNameTable::getBuiltinNameString(ZkNameEnum name) {
    if (name < 1 || name > ZKN_BUILTIN_LAST)
        return emptyString();
    return builtins().string(name);
}

ZkNameEnum ZkNameTable::internMutexed(const UnicodeString& text, int32_t hash) {
    ZkNameEnum found = m_impl->find(text, hash);
    return found != ZKN_EMPTY ? found : m_impl->add(text, hash);
}

ZkNameEnum ZkNameTable::getSharedNameEnum(const UnicodeString& text) {
    if (text.isEmpty())
        return ZKN_EMPTY;
    const int32_t hash = text.hashCode(); // once, for both tables
    ZkNameEnum builtin = builtins().find(text, hash);
    if (builtin != ZKN_EMPTY)
        return builtin;
    return detail::guardStandardExceptions([&text, hash] {
        ZkMutex guard(sharedTableLock());
        ZkNameTable* table = s_sharedNameTable.load();
        if (!table) {
            table = new ZkNameTable;
            s_sharedNameTable.store(table);
        }
        return table->internMutexed(text, hash);
    });
}

const UnicodeString& ZkNameTable::getSharedNameString(ZkNameEnum name) {
    if (name < 1)
        return emptyString();
    if (name <= ZKN_BUILTIN_LAST)
        return builtins().string(name);
    ZkMutex guard(sharedTableLock());
    ZkNameTable* table = s_sharedNameTable.load();
    if (!table || name > table->m_impl->last.load())
        return emptyString();
    return table->m_impl->strings[size_t(name - kFirstDynamicName)];
}

ZkNameTable* ZkNameTable::getSharedNameTable() {
    ZkNameTable* table = s_sharedNameTable.load();
    if (table)
        return table;
    return detail::guardStandardExceptions([] {
        ZkMutex guard(sharedTableLock());
        ZkNameTable* made = s_sharedNameTable.load();
        if (!made) {
            made = new ZkNameTable;
            s_sharedNameTable.store(made);
        }
        return made;
    });
}

ZkNameTable* ZkNameTable::addRefSharedNameTable() {
    ZkMutex guard(sharedTableLock());
    ZkNameTable* table = getSharedNameTable();
    table->addRef();
    return table;
}

void ZkNameTable::releaseSharedNameTable() {
    ZkMutex guard(sharedTableLock());
    ZkNameTable* table = s_sharedNameTable.load();
    if (table)
        table->release(); // the destructor clears the shared pointer
}

void ZkNameTable::cleanup() {
    ZkMutex guard; // the library-wide lock: meant for shutdown, when no other thread works
    ZkNameTable* table = s_sharedNameTable.exchange(nullptr);
    delete table;
}

ZkNameEnum ZkNameTable::getNameEnum(const UnicodeString& text) {
    if (text.isEmpty())
        return ZKN_EMPTY;
    const int32_t hash = text.hashCode();
    ZkNameEnum builtin = builtins().find(text, hash);
    if (builtin != ZKN_EMPTY)
        return builtin;
    return detail::guardStandardExceptions([this, &text, hash] {
        ZkMutex guard(sharedTableLock());
        return internMutexed(text, hash);
    });
}

const UnicodeString& ZkNameTable::getNameString(ZkNameEnum name) const {
    if (name < 1 || name > m_impl->last.load())
        return emptyString();
    if (name <= ZKN_BUILTIN_LAST)
        return builtins().string(name);
    return m_impl->strings[size_t(name - kFirstDynamicName)];
}

ZkNameEnum ZkNameTable::lookupName(const UnicodeString& text) const {
    if (text.isEmpty())
        return ZKN_EMPTY;
    const int32_t hash = text.hashCode();
    ZkNameEnum builtin = builtins().find(text, hash);
    return builtin != ZKN_EMPTY ? builtin : m_impl->find(text, hash);
}

ZkNameEnum ZkNameTable::getNameLast() const {
    return ZkNameEnum(m_impl->last.load());
}

ZkName::ZkName(const UnicodeString& text) : m_name(ZkNameTable::getSharedNameEnum(text)) {}

const UnicodeString& ZkName::toString() const {
    return ZkNameTable::getSharedNameString(m_name);
}

bool ZkName::isLowerName() const {
    const UnicodeString& text = toString();
    for (int32_t i = 0, length = text.length(); i < length; ++i) {
        char16_t unit = text.charAt(i);
        if (!((unit >= 32 && unit <= 64) || (unit >= 91 && unit <= 126)))
            return false;
    }
    return true;
}

ZkName ZkName::lowerName() const {
    if (isLowerName())
        return *this;
    return ZkName(toLowerString());
}

UnicodeString ZkName::toLowerString() const {
    UnicodeString text(toString());
    return text.toLower();
}

bool ZkName::isInheritEtc(ZkName name) noexcept {
    switch (name.m_name) {
    case ZKN_inherit:
    case ZKN_default:
    case ZKN_initial:
    case ZKN_unset:
    case ZKN_revert:
        return true;
    default:
        return false;
    }
}

ZkName ZkName::generateID(const UnicodeString& prefix) {
    UnicodeString text(u"-");
    text.append(prefix.isEmpty() ? UnicodeString(u"N") : prefix);
    int32_t next = ZkNameTable::getSharedNameTable()->getNameLast() + 1;
    text.append(UnicodeString::fromUTF8(std::to_string(next)));
    return ZkName(text);
}

ZkNameList::ZkNameList(const ZkNameEnum* items) noexcept : m_items(items), m_count(0) {
    if (items)
        while (items[m_count] != ZKN_EMPTY)
            ++m_count;
}

int ZkNameList::indexOf(ZkName name) const noexcept {
    for (int i = 0; i < m_count; ++i)
        if (m_items[i] == name.getEnum())
            return i;
    return -1;
}

ZkNameListInstance::ZkNameListInstance(int count)
    : m_block(count > 0 ? new ZkNameEnum[size_t(count)] : nullptr), m_list(m_block, count) {}

ZkNameListInstance::~ZkNameListInstance() {
    delete[] m_block;
}

} // namespace ZkCommonNS
