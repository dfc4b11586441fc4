// Interned names: ZkName, the built-in numbers of ZkNameEnum, the process-wide ZkNameTable.
#ifndef ZKCOMMON_CORE_NAME_H
#define ZKCOMMON_CORE_NAME_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <memory>

namespace ZkCommonNS {

class ZkValue;

/// 0 is the empty name, 1 to ZKN_BUILTIN_LAST the built-in names, anything above a dynamic name
/// numbered in order of first use in this process.
enum ZkNameEnum : int32_t {
    ZKN_EMPTY = 0,
#include "zkcommon/core/nameenum.inc"
};

/// The first number of a dynamic name.
constexpr int32_t kFirstDynamicName = ZKN_BUILTIN_LAST + 1;

/// An interned name; comparisons are by number and case matters.
class ZKCOMMON_API ZkName {
public:
    ZkName() noexcept : m_name(ZKN_EMPTY) {}
    ZkName(ZkNameEnum name) noexcept : m_name(name) {}
    /// Interns `text` in the shared table; throws ZkError 1 when memory runs out.
    ZkName(const UnicodeString& text);
    ZkName(const char16_t* text) : ZkName(UnicodeString(text)) {}
    /// A value of the name type gives its number directly; any other value is turned to a
    /// string with toString and interned (Null gives the empty name).
    ZkName(const ZkValue& value);

    bool operator==(ZkName other) const noexcept { return m_name == other.m_name; }
    bool operator!=(ZkName other) const noexcept { return m_name != other.m_name; }
    bool operator==(ZkNameEnum other) const noexcept { return m_name == other; }
    bool operator!=(ZkNameEnum other) const noexcept { return m_name != other; }
    /// Compares the numbers, not the texts.
    bool operator<(ZkName other) const noexcept { return m_name < other.m_name; }

    operator ZkNameEnum() const noexcept { return m_name; }
    operator const UnicodeString&() const { return toString(); }
    ZkNameEnum getEnum() const noexcept { return m_name; }
    const UnicodeString& toString() const;
    const UnicodeString& toZkString() const { return toString(); }

    bool isEmpty() const noexcept { return m_name == ZKN_EMPTY; }
    /// True up to the last built-in number, the empty name included.
    bool isBuiltin() const noexcept { return m_name <= ZKN_BUILTIN_LAST; }

    /// True when every UTF-16 unit is in 32..64 or 91..126 (no capitals, controls or non-ASCII).
    bool isLowerName() const;
    /// The name itself when isLowerName, else the lower-cased text interned.
    ZkName lowerName() const;
    /// The lower-cased text without interning.
    UnicodeString toLowerString() const;
    /// The CSS-wide keywords inherit, default, initial, unset and revert.
    static bool isInheritEtc(ZkName name) noexcept;
    /// "-", `prefix` (or "N"), and the shared table's last number plus 1, interned. Not checked
    /// for being fresh: a text already interned returns that name.
    static ZkName generateID(const UnicodeString& prefix);

private:
    ZkNameEnum m_name;
};

/// The interning table. One shared instance serves the whole process; built-in names need no
/// table and no lock.
class ZKCOMMON_API ZkNameTable : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkNameTable, ZkRCObject, ZkTypeID::kNameTable, "ZkNameTable")

public:
    ZkNameTable();
    ~ZkNameTable() override;
    ZkNameTable(const ZkNameTable&) = delete;
    ZkNameTable& operator=(const ZkNameTable&) = delete;

    /// 0 for an empty or non-built-in text; never creates.
    static ZkNameEnum getBuiltinNameEnum(const UnicodeString& text);
    /// Empty for a number outside 1..ZKN_BUILTIN_LAST.
    static const UnicodeString& getBuiltinNameString(ZkNameEnum name);
    /// Interns `text`: built-in names without a lock, others under the table lock.
    static ZkNameEnum getSharedNameEnum(const UnicodeString& text);
    /// The text of any number; empty for one that is unknown or void.
    static const UnicodeString& getSharedNameString(ZkNameEnum name);
    /// The shared table, created on first need; takes no reference.
    static ZkNameTable* getSharedNameTable();
    static ZkNameTable* addRefSharedNameTable();
    static void releaseSharedNameTable();
    /// Destroys the shared table whatever its count; for process shutdown.
    static void cleanup();

    ZkNameEnum getNameEnum(const UnicodeString& text);
    const UnicodeString& getNameString(ZkNameEnum name) const;
    /// Looks up without creating and without a lock: safe only while nobody adds names.
    ZkNameEnum lookupName(const UnicodeString& text) const;
    ZkNameEnum getNameLast() const;

private:
    struct Impl;
    ZkNameEnum internMutexed(const UnicodeString& text, int32_t hash);
    std::unique_ptr<Impl> m_impl;
};

/// A view onto an array of names that it does not own.
class ZKCOMMON_API ZkNameList {
public:
    ZkNameList() noexcept : m_items(nullptr), m_count(0) {}
    /// Counts up to the terminating empty name; null gives an empty list.
    explicit ZkNameList(const ZkNameEnum* items) noexcept;
    ZkNameList(const ZkNameEnum* items, int count) noexcept
        : m_items(items), m_count(items ? count : 0) {}

    int getCount() const noexcept { return m_count; }
    /// The empty name at or past the end.
    ZkName getItem(int i) const noexcept { return i < m_count ? ZkName(m_items[i]) : ZkName(); }
    bool hasItem(ZkName name) const noexcept { return indexOf(name) >= 0; }
    /// -1 when missing.
    int indexOf(ZkName name) const noexcept;

protected:
    const ZkNameEnum* m_items;
    int m_count;
};

/// A name list that owns its array; slots start uninitialised.
class ZKCOMMON_API ZkNameListInstance {
public:
    explicit ZkNameListInstance(int count);
    ~ZkNameListInstance();
    ZkNameListInstance(const ZkNameListInstance&) = delete;
    ZkNameListInstance& operator=(const ZkNameListInstance&) = delete;

    /// Stores without a bounds test.
    void setItem(ZkName name, int i) noexcept { m_block[i] = name; }
    int getCount() const noexcept { return m_list.getCount(); }
    bool hasItem(ZkName name) const noexcept { return m_list.hasItem(name); }
    ZkName getItem(int i) const noexcept { return m_list.getItem(i); }
    const ZkNameList& getList() const noexcept { return m_list; }

private:
    ZkNameEnum* m_block;
    ZkNameList m_list;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_NAME_H
