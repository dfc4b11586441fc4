// ZkValue, the typed value of an attribute, a property or an expression result, with
// ZkNamedValue, the containers ZkValueArray and ZkNamedValueMap, and the tri-state ZkBool, ZkInt.
#ifndef ZKCOMMON_VALUES_VALUE_H
#define ZKCOMMON_VALUES_VALUE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/values/length.h"

#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace ZkCommonNS {

class ZkColor;
class ZkValueArray;
class ZkNamedValueMap;
class ZkNamedValue;

namespace detail {
struct StringPayload;
} // namespace detail

/// The storage kind of a ZkValue; three bits of its tag.
enum ZkValueType : int {
    ValueNull = 0,
    ValueInteger = 1,  ///< signed 32-bit integer
    ValueReal = 2,     ///< 32-bit float
    ValueName = 3,     ///< a ZkName index
    ValueString = 4,   ///< text, shared by the copies of a value; may be absent
    ValueRCObject = 5, ///< a shared ZkRCObject
    ValueArray = 6,    ///< a shared ZkValueArray, may be absent
    ValueCompound = 7  ///< a shared ZkNamedValueMap, may be absent
};

/// A copyable variant of two machine words: a payload and a tag holding the type (bits 0-2),
/// the unit (bits 3-8) and, for a ZkNamedValue, a name (bits 9 up). Null, Integer, Real and Name
/// values never touch the heap. Nothing here throws: a failed conversion or operation gives the
/// Null value, NaN or the caller's default.
class ZKCOMMON_API ZkValue {
public:
    /// The shared Null value.
    static const ZkValue NULL_VALUE;

    /// The tag of a type, a unit and a name.
    static constexpr uint64_t bitfield(ZkValueType type, ZkUnitType unit,
                                       ZkNameEnum name = ZKN_EMPTY) noexcept {
        return static_cast<uint64_t>(type & 7) | (static_cast<uint64_t>(unit & 63) << 3) |
               (static_cast<uint64_t>(static_cast<uint32_t>(name)) << 9);
    }

    /// Constant: the shared NULL_VALUE is ready before any static initialiser runs.
    constexpr ZkValue() noexcept : m_payload{0}, m_tag(0) {}
    ZkValue(int value, ZkUnitType unit = UnitNumber) noexcept;
    /// Reinterpreted as a signed 32-bit integer.
    ZkValue(unsigned int value) noexcept;
    /// Narrowed to a signed 32-bit integer (the low 32 bits are kept).
    ZkValue(long value) noexcept;
    ZkValue(long long value) noexcept : ZkValue(static_cast<long>(value)) {}
    ZkValue(unsigned long value) noexcept : ZkValue(static_cast<long>(value)) {}
    ZkValue(unsigned long long value) noexcept : ZkValue(static_cast<long>(value)) {}
    ZkValue(float value, ZkUnitType unit = UnitNumber) noexcept;
    /// Narrowed to float.
    ZkValue(double value, ZkUnitType unit = UnitNumber) noexcept;
    /// A Real in points, the float taken as it is (auto stays NaN).
    ZkValue(ZkLength length) noexcept;
    ZkValue(ZkName name) noexcept;
    ZkValue(ZkNameEnum name) noexcept;
    /// The name true or false.
    ZkValue(bool value) noexcept;
    /// A String with that unit (0 unknown, 21 literal, 22 URI); the text is copied.
    ZkValue(const UnicodeString& text, ZkUnitType unit = UnitNone);
    /// A null pointer gives an empty String.
    ZkValue(const char16_t* text, ZkUnitType unit = UnitNone);
    /// UTF-8 text; a null pointer gives an empty String.
    ZkValue(const char* text, ZkUnitType unit = UnitNone);
    /// A String of the `length` characters at `text`, copied once; null `text` or a length
    /// below 1 gives an empty String.
    static ZkValue fromChars(const char16_t* text, int32_t length, ZkUnitType unit = UnitNone);
    /// Keeps the object and raises its count; a null pointer gives Null.
    ZkValue(ZkRCObject* object) noexcept;
    ZkValue(ZkValueArray* array) noexcept;
    ZkValue(ZkNamedValueMap* map) noexcept;
    /// Any other pointer would silently become the name true through the bool constructor.
    template <class T, class = std::enable_if_t<!std::is_base_of<ZkRCObject, T>::value>>
    ZkValue(const T* pointer) = delete;
    ZkValue(const ZkRCObject* object) = delete;
    /// A colour value (unit 24). Defined with the colours.
    ZkValue(const ZkColor& color);

    /// A Null, Integer, Real or Name value is copied as two words, without a call.
    ZkValue(const ZkValue& other) : m_payload(other.m_payload), m_tag(other.m_tag) {
        if ((m_tag & 7) >= ValueString)
            acquirePayload();
    }
    ZkValue(ZkValue&& other) noexcept : m_payload(other.m_payload), m_tag(other.m_tag) {
        other.m_payload.bits = 0;
        other.m_tag = 0;
    }
    ~ZkValue() {
        if ((m_tag & 7) >= ValueString)
            releasePayload();
    }
    ZkValue& operator=(const ZkValue& other) {
        if ((m_tag & 7) < ValueString && (other.m_tag & 7) < ValueString) {
            m_payload = other.m_payload;
            m_tag = other.m_tag;
            return *this;
        }
        return assignOwning(other);
    }
    ZkValue& operator=(ZkValue&& other) noexcept;
    /// Assigns NULL_VALUE (a name kept in the tag goes too).
    void clear() noexcept;

    // Predicates ---------------------------------------------------------------------------

    bool isNull() const noexcept { return getValueType() == ValueNull; }
    bool isInteger() const noexcept { return getValueType() == ValueInteger; }
    bool isReal() const noexcept { return getValueType() == ValueReal; }
    bool isName() const noexcept { return getValueType() == ValueName; }
    bool isString() const noexcept { return getValueType() == ValueString; }
    /// Integer or Real, any unit, a character included.
    bool isNumeric() const noexcept {
        return getValueType() == ValueInteger || getValueType() == ValueReal;
    }
    bool isNumericalValue() const noexcept { return isNumeric() && getUnitType() != UnitChar; }
    bool isUnitNumber() const noexcept { return isNumeric() && getUnitType() != UnitNumber; }
    bool isNumber() const noexcept { return isNumeric() && getUnitType() == UnitNumber; }
    bool isNumberOrPercentage() const noexcept {
        ZkUnitType unit = getUnitType();
        return isNumeric() && (unit == UnitNumber || unit == UnitPercent || unit == UnitPercent2);
    }
    bool isPercentage() const noexcept {
        ZkUnitType unit = getUnitType();
        return isNumeric() && (unit == UnitPercent || unit == UnitPercent2);
    }
    bool isAbsoluteLength() const noexcept {
        return isNumeric() && isAbsoluteLengthUnit(getUnitType());
    }
    bool isRelativeLength() const noexcept {
        return isNumeric() && isRelativeLengthUnit(getUnitType());
    }
    bool isAngle() const noexcept {
        ZkUnitType unit = getUnitType();
        return isNumeric() && unit >= UnitDeg && unit <= UnitGrad;
    }
    bool isCharacter() const noexcept {
        return getValueType() == ValueInteger && getUnitType() == UnitChar;
    }
    /// Unit 24 on an Integer, or on a Compound with a map.
    bool isColor() const noexcept;
    bool isLiteralString() const noexcept { return isString() && getUnitType() == UnitLiteral; }
    bool isUriString() const noexcept { return isString() && getUnitType() == UnitUri; }
    bool isUnknownString() const noexcept { return isString() && getUnitType() == UnitNone; }
    bool isArray() const noexcept {
        return getValueType() == ValueArray && m_payload.array != nullptr;
    }
    bool isCompound() const noexcept {
        return getValueType() == ValueCompound && m_payload.map != nullptr;
    }
    /// Type 5, or an Array or Compound with a pointer.
    bool isRCObject() const noexcept;
    /// Null, the empty name, or a String of length zero.
    bool isEmpty() const noexcept;
    /// The name true or yes.
    bool isTrue() const noexcept { return isName() && isTrue(getNameEnum()); }
    static bool isTrue(ZkNameEnum name) noexcept { return name == ZKN_true || name == ZKN_yes; }
    /// The name false or no.
    bool isFalse() const noexcept {
        return isName() && (getNameEnum() == ZKN_false || getNameEnum() == ZKN_no);
    }
    /// Numeric, not a character, and below 0.
    bool isNegativeValue() const noexcept;
    /// A plain number (unit 1) equal to 0.
    bool isNumberZero() const noexcept;

    // Accessors ----------------------------------------------------------------------------

    ZkValueType getValueType() const noexcept {
        return static_cast<ZkValueType>(static_cast<uint32_t>(m_tag) & 7);
    }
    ZkUnitType getUnitType() const noexcept {
        return static_cast<ZkUnitType>((static_cast<uint32_t>(m_tag) >> 3) & 63);
    }
    /// Changes the type bits only; the payload is reinterpreted, not converted or released.
    void setValueType(ZkValueType type) noexcept {
        m_tag = (m_tag & ~uint64_t(7)) | static_cast<uint64_t>(type & 7);
    }
    /// Changes the unit bits only.
    void setUnitType(ZkUnitType unit) noexcept {
        m_tag = (m_tag & ~(uint64_t(63) << 3)) | (static_cast<uint64_t>(unit & 63) << 3);
    }
    /// The whole tag from the type alone (unit and name cleared).
    void setValueUnitType(ZkValueType type) noexcept { m_tag = bitfield(type, UnitNone); }
    void setValueUnitType(ZkValueType type, ZkUnitType unit) noexcept {
        m_tag = bitfield(type, unit);
    }
    /// Clears the whole tag; the payload is neither released nor cleared.
    void setValueUnitType() noexcept { m_tag = 0; }
    /// Writes payload and tag without releasing anything: only for values known to be numeric.
    void setRealValue(float value, ZkUnitType unit) noexcept {
        m_payload.real = value;
        m_tag = bitfield(ValueReal, unit);
    }
    /// The object of types 5, 6 and 7; null otherwise.
    ZkRCObject* getRCObject() const noexcept;
    ZkValueArray* getValueArray() const noexcept {
        return getValueType() == ValueArray ? m_payload.array : nullptr;
    }
    ZkNamedValueMap* getNamedValueMap() const noexcept {
        return getValueType() == ValueCompound ? m_payload.map : nullptr;
    }
    /// 0 for Null, the count of an Array with a pointer, 1 otherwise.
    int getArrayCount() const noexcept;

    // Conversions --------------------------------------------------------------------------

    /// Integer: itself; Real: floor(x + 0.5), clamped to the int range (NaN gives `dflt`);
    /// anything else `dflt`.
    int getIntegerValue(int dflt = 0) const noexcept;
    /// The code point of a character value, otherwise -1.
    UChar32 getCharacterValue() const noexcept;
    /// The number in the target unit; NaN for non-numeric values and impossible conversions.
    float getRealValue(ZkUnitType target) const noexcept;
    /// The absolute length in points; auto (NaN) when it is none. A plain 0 counts as a length
    /// only with `zeroIsLength`.
    ZkLength getLengthValue(bool zeroIsLength = false) const noexcept;
    /// The name of a Name value, otherwise the empty name.
    ZkName getNameValue() const noexcept;
    ZkNameEnum getNameEnum() const noexcept { return isName() ? m_payload.name : ZKN_EMPTY; }
    /// The lower-cased name of a Name value, otherwise the empty name.
    ZkName getLowerNameValue() const;
    /// The name of a Name value, otherwise toString() interned.
    ZkName toZkName() const;
    /// The text of a Name or a String, otherwise the empty string.
    UnicodeString getStringValue() const;
    /// The colour of a colour value, a colour name or colour text; on failure the transparent
    /// colour, or the invalid one with `invalidOnFail`. getColorValue() is
    /// getColorValue(false). Both are defined with the value parser's colour code.
    ZkColor getColorValue() const;
    ZkColor getColorValue(bool invalidOnFail) const;

    /// The printed form (see the type's rules); Null prints empty.
    UnicodeString toString() const;
    UnicodeString toString(bool lower) const;
    operator UnicodeString() const { return toString(); }
    /// toString(), quoted with ZkUtil::quoteString in `mode` only for a literal string.
    UnicodeString toQuotedString(int mode) const;
    /// toString() quoted in `mode`, wrapped in url(...) for a URI string.
    UnicodeString toUrlString(int mode) const;
    /// The form to write back into XSL (mode 7) or CSS (mode 43) text.
    UnicodeString toValueText(bool css, bool quoteAll) const;
    UnicodeString toCssText() const { return toValueText(/*css=*/true, /*quoteAll=*/false); }
    /// The word of `unit`; empty for units without a word.
    static UnicodeString getUnitString(ZkUnitType unit);
    /// A copy owning fresh containers; nested containers stay shared.
    ZkValue clone() const;

    // Lists and compounds ------------------------------------------------------------------

    /// Null becomes `value`; a scalar becomes an array of itself and `value`; an Array appends.
    void addItem(const ZkValue& value);
    /// Turns the value into an Array holding it (nothing when it is Null); the name is kept.
    void makeArray();
    /// Turns the value into a Compound holding it under the empty name (nothing when Null).
    void makeCompound();
    /// Item `n` of an Array, or the value itself for `n` 0; Null otherwise.
    ZkValue getNthItem(int n) const;
    /// The item of a Compound, or the value itself for the empty name; Null otherwise.
    ZkValue getNamedItem(ZkName name) const;
    void setNamedItem(ZkName name, const ZkValue& value);
    void setNamedItem(const ZkNamedValue& value);
    /// Compound only. With `collapse`, a single remaining item replaces the compound by its
    /// item under the empty name (Null when there is none).
    void removeNamedItem(ZkName name, bool collapse);

    // Arithmetic ---------------------------------------------------------------------------
    // A non-numeric side makes the left side Null; see the unit rules in value_arith.cpp.

    /// Two Reals of one unit other than the plain number add without a call.
    ZkValue& operator+=(const ZkValue& right) noexcept {
        if (!isSameRealMeasure(right))
            return addGeneral(right);
        m_payload.real += right.m_payload.real;
        return *this;
    }
    ZkValue& operator-=(const ZkValue& right) noexcept {
        if (!isSameRealMeasure(right))
            return subtractGeneral(right);
        m_payload.real -= right.m_payload.real;
        return *this;
    }
    ZkValue& operator*=(const ZkValue& right) noexcept;
    ZkValue& operator/=(const ZkValue& right) noexcept;
    ZkValue& operator%=(const ZkValue& right) noexcept;
    ZkValue operator+(const ZkValue& right) const noexcept;
    ZkValue operator-(const ZkValue& right) const noexcept;
    ZkValue operator*(const ZkValue& right) const noexcept;
    ZkValue operator/(const ZkValue& right) const noexcept;
    ZkValue operator%(const ZkValue& right) const noexcept;
    /// Numeric values negate with type and unit kept; anything else gives Null.
    ZkValue operator-() const noexcept;
    ZkValue abs() const noexcept;
    /// Only plain numbers (unit 1) have a result; anything else gives Null.
    ZkValue round() const noexcept;
    ZkValue floor() const noexcept;
    ZkValue ceiling() const noexcept;
    /// Brings the value to the base unit of its dimension (points, degrees, ms, Hz, number).
    void normalizeUnit() noexcept;
    /// Multiplies (divides) every item of a list by `value`, with the percentage rule.
    void multipleEachItem(const ZkValue& value);
    void devideEachItem(const ZkValue& value);
    /// Negates every item of a list, or the scalar.
    void invertItem();
    /// Becomes a String of the items' texts joined without separator.
    void concatEachItem();
    /// Resolves percentages against `base` and adds up the items.
    ZkValue sumItem(const ZkValue& base) const;

    // Comparison ---------------------------------------------------------------------------

    bool operator==(const ZkValue& other) const;
    bool operator!=(const ZkValue& other) const { return !(*this == other); }
    bool operator<(const ZkValue& other) const;
    bool operator<=(const ZkValue& other) const { return *this < other || *this == other; }
    bool operator>(const ZkValue& other) const { return other < *this; }
    bool operator>=(const ZkValue& other) const { return !(*this < other); }

protected:
    ZkNameEnum getTagName() const noexcept {
        return static_cast<ZkNameEnum>(static_cast<uint32_t>(m_tag) >> 9);
    }
    void setTagName(ZkNameEnum name) noexcept {
        m_tag = (m_tag & 511) | (static_cast<uint64_t>(static_cast<uint32_t>(name)) << 9);
    }
    /// Replaces type, unit and payload by those of `other`, keeping this value's name bits.
    void assignKeepingName(const ZkValue& other);
    /// The same, taking the payload of `other`, which is left Null.
    void moveKeepingName(ZkValue&& other) noexcept;

private:
    friend class ZkNamedValueMap;
    union Payload {
        uint64_t bits;
        int32_t integer;
        float real;
        ZkNameEnum name;
        detail::StringPayload* string;
        ZkRCObject* object;
        ZkValueArray* array;
        ZkNamedValueMap* map;
    };

    void releasePayload() noexcept;
    // Both Real with the same unit, not the plain number: the zero rules of + and - concern
    // only plain numbers, so such values add as floats.
    bool isSameRealMeasure(const ZkValue& right) const noexcept {
        uint32_t kind = static_cast<uint32_t>(m_tag) & 511;
        return kind == (static_cast<uint32_t>(right.m_tag) & 511) && (kind & 7) == ValueReal &&
               (kind >> 3) != UnitNumber;
    }
    ZkValue& addGeneral(const ZkValue& right) noexcept;
    /// Replaces a list by the list of its items, each changed by `operation`.
    template <class Operation> void applyToEachItem(Operation operation);
    ZkValue& subtractGeneral(const ZkValue& right) noexcept;
    ZkValue& assignOwning(const ZkValue& other);
    void acquirePayload();
    float numberAsFloat() const noexcept {
        return getValueType() == ValueReal ? m_payload.real : static_cast<float>(m_payload.integer);
    }
    void setNull() noexcept;
    void becomeReal(float value, ZkUnitType unit) noexcept;

    Payload m_payload;
    uint64_t m_tag;
};

static_assert(sizeof(ZkValue) == 16, "ZkValue is two machine words");

/// A ZkValue that carries a name in its tag; no larger than a ZkValue.
class ZKCOMMON_API ZkNamedValue : public ZkValue {
public:
    /// The Null value with the empty name.
    static const ZkNamedValue NULL_VALUE;

    ZkNamedValue() noexcept = default;
    /// Copies `value` and replaces its name bits by `name`.
    ZkNamedValue(const ZkValue& value, ZkName name);
    ZkName getName() const noexcept { return ZkName(getTagName()); }
    void setName(ZkName name) noexcept { setTagName(name.getEnum()); }
    /// A copy of the whole, the name bits included.
    ZkValue getValue() const { return *this; }
    /// Replaces type, unit and payload; the name stays.
    void setValue(const ZkValue& value) { assignKeepingName(value); }
    void setValue(ZkValue&& value) noexcept { moveKeepingName(std::move(value)); }
};

static_assert(sizeof(ZkNamedValue) == sizeof(ZkValue), "a name costs no space");

/// The reference-counted list behind Array values.
class ZKCOMMON_API ZkValueArray : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkValueArray, ZkRCObject, ZkTypeID::kValueArray, "ZkValueArray")

public:
    ZkValueArray() = default;
    ~ZkValueArray() override;

    void addItem(const ZkValue& value) { m_items.push_back(value); }
    void clear() noexcept { m_items.clear(); }
    int getCount() const noexcept { return static_cast<int>(m_items.size()); }
    /// A copy of the item; NULL_VALUE for a negative or too large index.
    ZkValue item(int index) const;
    ZkValue getNthItem(int index) const { return item(index); }
    /// A borrowed view of the item; NULL_VALUE out of range.
    const ZkValue& itemRef(int index) const noexcept;
    /// Replaces item `index`; does nothing out of range.
    void setItem(int index, const ZkValue& value);
    /// A new array with copies of the items.
    ZkPtr<ZkValueArray> clone() const;

private:
    std::vector<ZkValue> m_items;
};

/// The reference-counted hash map, ZkName to ZkNamedValue, behind Compound values. Entries lie
/// on one list in which entries of one bucket stand together.
class ZKCOMMON_API ZkNamedValueMap : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkNamedValueMap, ZkRCObject, ZkTypeID::kNamedValueMap, "ZkNamedValueMap")

public:
    struct Entry;

    ZkNamedValueMap();
    ~ZkNamedValueMap() override;
    ZkNamedValueMap(const ZkNamedValueMap&) = delete;
    ZkNamedValueMap& operator=(const ZkNamedValueMap&) = delete;

    int getCount() const noexcept { return m_count; }
    bool hasNamedItem(ZkName name) const noexcept { return find(name) != nullptr; }
    /// Null with the empty name when absent.
    ZkNamedValue getNamedItem(ZkName name) const;
    /// Copies the item's value into `out`; false (out unchanged) when absent.
    bool getNamedItemFast(ZkName name, ZkValue& out) const;
    /// Entry `index` in list order; Null with the empty name out of range.
    ZkNamedValue item(int index) const;
    /// Inserts, or replaces the value of the existing entry.
    void setNamedItem(ZkName name, const ZkValue& value);
    void setNamedItem(const ZkNamedValue& value);
    /// False when absent.
    bool removeNamedItem(ZkName name);
    /// Removes only when the stored value equals `value`.
    bool removeNamedItem(ZkName name, const ZkValue& value);
    void clear() noexcept;
    /// A new map with copies of the entries, in the same list order.
    ZkPtr<ZkNamedValueMap> clone() const;

private:
    friend class ZkNamedValueMapIterator;
    struct Bucket;
    Entry* find(ZkName name) const noexcept;
    void unlink(Entry* entry) noexcept;
    void link(Entry* entry) noexcept;
    void grow();

    Entry* m_head = nullptr;
    Entry* m_tail = nullptr;
    Bucket* m_buckets = nullptr;
    uint32_t m_bucketCount = 0;
    int m_count = 0;
};

/// Walks the entries of a map in list order. The map must outlive the iterator and not change
/// while it walks.
class ZKCOMMON_API ZkNamedValueMapIterator {
public:
    /// A null map walks nothing.
    explicit ZkNamedValueMapIterator(const ZkNamedValueMap* map) noexcept;
    bool hasNext() const noexcept { return m_current != nullptr; }
    /// The current entry, then steps; NULL_VALUE when already at the end.
    const ZkNamedValue& next() noexcept;
    void setToStart() noexcept;

private:
    const ZkNamedValueMap* m_map;
    const ZkNamedValueMap::Entry* m_current;
};

/// A bool that may be undefined.
class ZKCOMMON_API ZkBool {
public:
    ZkBool() noexcept : m_value(false), m_undef(true) {}
    ZkBool(bool value) noexcept : m_value(value), m_undef(false) {}
    ZkBool& operator=(bool value) noexcept {
        m_value = value;
        m_undef = false;
        return *this;
    }
    void setUndef() noexcept {
        m_value = false;
        m_undef = true;
    }
    bool isUndef() const noexcept { return m_undef; }
    /// `dflt` when undefined.
    bool isTrue(bool dflt) const noexcept { return m_undef ? dflt : m_value; }
    /// False when undefined.
    bool operator==(bool value) const noexcept { return !m_undef && m_value == value; }
    bool operator!=(bool value) const noexcept { return !(*this == value); }
    /// Two undefined values are equal.
    bool operator==(const ZkBool& other) const noexcept {
        return m_undef ? other.m_undef : (!other.m_undef && m_value == other.m_value);
    }
    bool operator!=(const ZkBool& other) const noexcept { return !(*this == other); }

private:
    bool m_value;
    bool m_undef;
};

/// A 32-bit integer with 0x80000000 as undefined. The arithmetic works on the raw integer and
/// does not look at the undefined state.
class ZKCOMMON_API ZkInt {
public:
    static constexpr int32_t kUndef = INT32_MIN;

    ZkInt() noexcept : m_value(kUndef) {}
    ZkInt(int value) noexcept : m_value(value) {}
    void setUndef() noexcept { m_value = kUndef; }
    bool isUndef() const noexcept { return m_value == kUndef; }
    operator int() const noexcept { return m_value; }

    ZkInt operator+() const noexcept { return *this; }
    ZkInt operator-() const noexcept { return ZkInt(wrap(0 - int64_t(m_value))); }
    ZkInt operator+(int v) const noexcept { return ZkInt(wrap(int64_t(m_value) + v)); }
    ZkInt operator-(int v) const noexcept { return ZkInt(wrap(int64_t(m_value) - v)); }
    ZkInt operator*(int v) const noexcept { return ZkInt(wrap(int64_t(m_value) * v)); }
    /// A zero divisor is the caller's error, as for int.
    ZkInt operator/(int v) const noexcept { return ZkInt(wrap(int64_t(m_value) / v)); }
    ZkInt& operator+=(int v) noexcept { return *this = *this + v; }
    ZkInt& operator-=(int v) noexcept { return *this = *this - v; }
    ZkInt& operator*=(int v) noexcept { return *this = *this * v; }
    ZkInt& operator/=(int v) noexcept { return *this = *this / v; }
    ZkInt& operator++() noexcept { return *this += 1; }
    ZkInt& operator--() noexcept { return *this -= 1; }
    ZkInt operator++(int) noexcept {
        ZkInt old = *this;
        ++*this;
        return old;
    }
    ZkInt operator--(int) noexcept {
        ZkInt old = *this;
        --*this;
        return old;
    }

private:
    // Two's complement wrap-around instead of signed overflow.
    static int32_t wrap(int64_t value) noexcept {
        return static_cast<int32_t>(static_cast<uint32_t>(static_cast<uint64_t>(value)));
    }
    int32_t m_value;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_VALUE_H
