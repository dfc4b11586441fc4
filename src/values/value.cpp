// ZkValue: construction, ownership of the payload, predicates, conversions, printing, lists and
// compounds; also ZkName's constructor from a value. Arithmetic and comparison are in
// value_arith.cpp, the containers in valuearray.cpp and namedvaluemap.cpp.
#include "zkcommon/values/value.h"

#include "core/smallpool.h"
#include "values/colorhooks.h"
#include "zkcommon/text/util.h"

#include <atomic>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace ZkCommonNS {

/// The payload of a String value: a count and a length, the characters behind them.
struct detail::StringPayload {
    std::atomic<int32_t> count;
    int32_t length;
    const char16_t* chars() const noexcept { return reinterpret_cast<const char16_t*>(this + 1); }
    char16_t* chars() noexcept { return reinterpret_cast<char16_t*>(this + 1); }
};
static_assert(sizeof(detail::StringPayload) == 8, "the characters follow at an even offset");

namespace {

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

// Every attribute a document loads has a string value, so a string payload is one block from
// the pool of small blocks: a count and a length, the characters behind them. It never changes
// once made, so the copies of a value share it.
using detail::StringPayload;

std::size_t stringBytes(int32_t length) noexcept {
    return sizeof(StringPayload) + std::size_t(length) * sizeof(char16_t);
}

StringPayload* newString(const char16_t* text, int32_t length) {
    if (!text || length < 0)
        length = 0;
    StringPayload* string =
        new (detail::smallAllocate(stringBytes(length))) StringPayload{{1}, length};
    if (length > 0)
        std::memcpy(string->chars(), text, std::size_t(length) * sizeof(char16_t));
    return string;
}

StringPayload* newString(const UnicodeString& text) {
    return newString(text.getBuffer(), text.length());
}

void releaseString(StringPayload* string) noexcept {
    if (string && string->count.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        const int32_t length = string->length;
        string->~StringPayload();
        detail::smallFree(string, stringBytes(length));
    }
}

UnicodeString stringText(const StringPayload* string) {
    return string ? UnicodeString(string->chars(), string->length) : UnicodeString();
}

UnicodeString colorToHexText(const ZkValue& value) {
    if (!value.isInteger())
        return UnicodeString();
    UnicodeString text(u'#');
    text.append(ZkUtil::toHexString(value.getIntegerValue(0) & 0xFFFFFF, 6));
    return text;
}

bool colorsEqualByText(const ZkValue& a, const ZkValue& b) {
    return a.toString() == b.toString();
}

detail::ColorValueHooks s_colorHooks = {&colorToHexText, &colorsEqualByText};

// The item text inside an Array or a Compound: strings are quoted so the list reads back.
UnicodeString itemText(const ZkValue& item) {
    if (!item.isString())
        return item.toString();
    if (item.getUnitType() == UnitUri)
        return ZkUtil::quoteUri(item.getStringValue());
    return ZkUtil::quoteString(item.getStringValue(), ZkUtil::QUOTE_XSL);
}

} // namespace

void detail::setColorValueHooks(const ColorValueHooks& hooks) {
    if (hooks.toString)
        s_colorHooks.toString = hooks.toString;
    if (hooks.equal)
        s_colorHooks.equal = hooks.equal;
}

const detail::ColorValueHooks& detail::getColorValueHooks() {
    return s_colorHooks;
}

const ZkValue ZkValue::NULL_VALUE;
const ZkNamedValue ZkNamedValue::NULL_VALUE;

// Construction ------------------------------------------------------------------------------

ZkValue::ZkValue(int value, ZkUnitType unit) noexcept : m_tag(bitfield(ValueInteger, unit)) {
    m_payload.bits = 0;
    m_payload.integer = value;
}

ZkValue::ZkValue(unsigned int value) noexcept : ZkValue(static_cast<int>(value), UnitNumber) {}

ZkValue::ZkValue(long value) noexcept : ZkValue(static_cast<int>(value), UnitNumber) {}

ZkValue::ZkValue(float value, ZkUnitType unit) noexcept : m_tag(bitfield(ValueReal, unit)) {
    m_payload.bits = 0;
    m_payload.real = value;
}

ZkValue::ZkValue(double value, ZkUnitType unit) noexcept
    : ZkValue(static_cast<float>(value), unit) {}

ZkValue::ZkValue(ZkLength length) noexcept : ZkValue(static_cast<float>(length), UnitPt) {}

ZkValue::ZkValue(ZkName name) noexcept : ZkValue(name.getEnum()) {}

ZkValue::ZkValue(ZkNameEnum name) noexcept : m_tag(bitfield(ValueName, UnitName)) {
    m_payload.bits = 0;
    m_payload.name = name;
}

ZkValue::ZkValue(bool value) noexcept : ZkValue(value ? ZKN_true : ZKN_false) {}

ZkValue::ZkValue(const UnicodeString& text, ZkUnitType unit) : m_tag(bitfield(ValueString, unit)) {
    m_payload.bits = 0;
    m_payload.string = newString(text);
}

ZkValue::ZkValue(const char16_t* text, ZkUnitType unit) : m_tag(bitfield(ValueString, unit)) {
    m_payload.bits = 0;
    m_payload.string =
        newString(text, text ? int32_t(std::char_traits<char16_t>::length(text)) : 0);
}

ZkValue::ZkValue(const char* text, ZkUnitType unit) : m_tag(bitfield(ValueString, unit)) {
    m_payload.bits = 0;
    m_payload.string = newString(text ? UnicodeString::fromUTF8(text) : UnicodeString());
}

ZkValue ZkValue::fromChars(const char16_t* text, int32_t length, ZkUnitType unit) {
    ZkValue value;
    value.m_payload.string = newString(text, length);
    value.m_tag = bitfield(ValueString, unit);
    return value;
}

ZkValue::ZkValue(ZkRCObject* object) noexcept {
    m_payload.bits = 0;
    m_tag = 0;
    if (object) {
        object->addRef();
        m_payload.object = object;
        m_tag = bitfield(ValueRCObject, UnitNone);
    }
}

ZkValue::ZkValue(ZkValueArray* array) noexcept {
    m_payload.bits = 0;
    m_tag = 0;
    if (array) {
        array->addRef();
        m_payload.array = array;
        m_tag = bitfield(ValueArray, UnitNone);
    }
}

ZkValue::ZkValue(ZkNamedValueMap* map) noexcept {
    m_payload.bits = 0;
    m_tag = 0;
    if (map) {
        map->addRef();
        m_payload.map = map;
        m_tag = bitfield(ValueCompound, UnitNone);
    }
}

ZkValue& ZkValue::assignOwning(const ZkValue& other) {
    if (this != &other) {
        // Copy first: `other` may live inside the container this value is about to release.
        ZkValue copy(other);
        *this = std::move(copy);
    }
    return *this;
}

ZkValue& ZkValue::operator=(ZkValue&& other) noexcept {
    if (this != &other) {
        Payload payload = other.m_payload;
        uint64_t tag = other.m_tag;
        other.m_payload.bits = 0;
        other.m_tag = 0;
        if ((m_tag & 7) >= ValueString)
            releasePayload();
        m_payload = payload;
        m_tag = tag;
    }
    return *this;
}

void ZkValue::clear() noexcept {
    setNull();
}

void ZkValue::setNull() noexcept {
    ZkValue old(std::move(*this));
    (void)old;
}

void ZkValue::becomeReal(float value, ZkUnitType unit) noexcept {
    uint64_t name = m_tag & ~uint64_t(511);
    if ((m_tag & 7) >= ValueString)
        releasePayload();
    m_payload.bits = 0;
    m_payload.real = value;
    m_tag = bitfield(ValueReal, unit) | name;
}

void ZkValue::releasePayload() noexcept {
    switch (getValueType()) {
    case ValueString:
        releaseString(m_payload.string);
        break;
    case ValueRCObject:
    case ValueArray:
    case ValueCompound:
        if (m_payload.object)
            m_payload.object->release();
        break;
    default:
        break;
    }
    m_payload.bits = 0;
}

void ZkValue::acquirePayload() {
    switch (getValueType()) {
    case ValueString:
        if (m_payload.string)
            m_payload.string->count.fetch_add(1, std::memory_order_relaxed);
        break;
    case ValueRCObject:
    case ValueArray:
    case ValueCompound:
        if (m_payload.object)
            m_payload.object->addRef();
        break;
    default:
        break;
    }
}

void ZkValue::assignKeepingName(const ZkValue& other) {
    uint64_t name = m_tag & ~uint64_t(511);
    *this = other;
    m_tag = (m_tag & 511) | name;
}

void ZkValue::moveKeepingName(ZkValue&& other) noexcept {
    uint64_t name = m_tag & ~uint64_t(511);
    *this = std::move(other);
    m_tag = (m_tag & 511) | name;
}

// Predicates --------------------------------------------------------------------------------

bool ZkValue::isColor() const noexcept {
    return getUnitType() == UnitColor && (isInteger() || isCompound());
}

bool ZkValue::isRCObject() const noexcept {
    switch (getValueType()) {
    case ValueRCObject:
        return true;
    case ValueArray:
    case ValueCompound:
        return m_payload.object != nullptr;
    default:
        return false;
    }
}

bool ZkValue::isEmpty() const noexcept {
    switch (getValueType()) {
    case ValueNull:
        return true;
    case ValueName:
        return m_payload.name == ZKN_EMPTY;
    case ValueString:
        return !m_payload.string || m_payload.string->length == 0;
    default:
        return false;
    }
}

bool ZkValue::isNegativeValue() const noexcept {
    return isNumericalValue() && numberAsFloat() < 0.0f;
}

bool ZkValue::isNumberZero() const noexcept {
    return isNumber() && (isInteger() ? m_payload.integer == 0 : m_payload.real == 0.0f);
}

// Accessors ---------------------------------------------------------------------------------

ZkRCObject* ZkValue::getRCObject() const noexcept {
    switch (getValueType()) {
    case ValueRCObject:
    case ValueArray:
    case ValueCompound:
        return m_payload.object;
    default:
        return nullptr;
    }
}

int ZkValue::getArrayCount() const noexcept {
    if (isNull())
        return 0;
    if (isArray())
        return m_payload.array->getCount();
    return 1;
}

// Conversions -------------------------------------------------------------------------------

int ZkValue::getIntegerValue(int dflt) const noexcept {
    if (isInteger())
        return m_payload.integer;
    if (!isReal())
        return dflt;
    float x = std::floor(m_payload.real + 0.5f);
    if (x != x)
        return dflt;
    if (x >= 2147483647.0f)
        return std::numeric_limits<int>::max();
    if (x <= -2147483648.0f)
        return std::numeric_limits<int>::min();
    return static_cast<int>(x);
}

UChar32 ZkValue::getCharacterValue() const noexcept {
    return isCharacter() ? m_payload.integer : -1;
}

float ZkValue::getRealValue(ZkUnitType target) const noexcept {
    if (!isNumeric())
        return kNaN;
    float x = numberAsFloat();
    ZkUnitType unit = getUnitType();
    if (target == unit || target == UnitNone)
        return x;
    switch (target) {
    case UnitNumber:
        if (unit == UnitPercent || unit == UnitPercent2)
            return x / 100.0f;
        if (unit == UnitDpi)
            return x;
        if (unit == UnitDpcm)
            return x * 2.54f;
        return kNaN;
    case UnitPercent:
    case UnitPercent2:
        return unit == UnitNumber ? x * 100.0f : kNaN;
    case UnitDeg:
        if (unit == UnitNumber)
            return x;
        if (unit == UnitRad)
            return x * 57.29578f;
        if (unit == UnitGrad)
            return x * 0.9f;
        return kNaN;
    case UnitRad:
        if (unit == UnitNumber || unit == UnitDeg)
            return x * 0.017453292f;
        if (unit == UnitGrad)
            return x * 0.015707964f;
        return kNaN;
    case UnitGrad:
        // The degree-to-grad factor is the radian one; callers depend on it as it stands.
        if (unit == UnitNumber || unit == UnitDeg)
            return x * 0.017453292f;
        if (unit == UnitRad)
            return x * 63.661976f;
        return kNaN;
    case UnitMs:
        return unit == UnitS ? x * 1000.0f : kNaN;
    case UnitS:
        return unit == UnitMs ? x / 1000.0f : kNaN;
    case UnitHz:
        return unit == UnitKHz ? x * 1000.0f : kNaN;
    case UnitKHz:
        return unit == UnitHz ? x / 1000.0f : kNaN;
    case UnitDpi:
        if (unit == UnitNumber)
            return x;
        if (unit == UnitDpcm)
            return x * 2.54f;
        return kNaN;
    case UnitDpcm:
        return unit == UnitNumber || unit == UnitDpi ? x / 2.54f : kNaN;
    default:
        if (isAbsoluteLengthUnit(target) && isAbsoluteLengthUnit(unit))
            return ZkLength(x, unit).getRealValue(target);
        return kNaN;
    }
}

ZkLength ZkValue::getLengthValue(bool zeroIsLength) const noexcept {
    if (getValueType() == ValueCompound) {
        const ZkNamedValueMap* map = m_payload.map;
        if (!map)
            return ZkLength::autoLength();
        ZkValue part;
        if (map->getNamedItemFast(ZKN_length, part) || map->getNamedItemFast(ZKN_EMPTY, part) ||
            map->getNamedItemFast(ZKN_optimum, part))
            return part.getLengthValue(false);
        return ZkLength::autoLength();
    }
    if (!isNumeric())
        return ZkLength::autoLength();
    float x = numberAsFloat();
    ZkUnitType unit = getUnitType();
    if (unit == UnitPt)
        return ZkLength(x);
    if (isAbsoluteLengthUnit(unit))
        return ZkLength(x, unit);
    if (unit == UnitNumber && zeroIsLength && x == 0.0f)
        return ZkLength(0.0f);
    return ZkLength::autoLength();
}

ZkName ZkValue::getNameValue() const noexcept {
    return ZkName(getNameEnum());
}

ZkName ZkValue::getLowerNameValue() const {
    return isName() ? ZkName(m_payload.name).lowerName() : ZkName();
}

ZkName ZkValue::toZkName() const {
    return isName() ? ZkName(m_payload.name) : ZkName(toString());
}

UnicodeString ZkValue::getStringValue() const {
    if (isName())
        return ZkName(m_payload.name).toString();
    if (isString())
        return stringText(m_payload.string);
    return UnicodeString();
}

UnicodeString ZkValue::toString() const {
    ZkUnitType unit = getUnitType();
    switch (getValueType()) {
    case ValueNull:
        return UnicodeString();
    case ValueInteger: {
        if (unit == UnitColor)
            return s_colorHooks.toString(*this);
        if (unit == UnitChar)
            return UnicodeString(static_cast<UChar32>(m_payload.integer));
        UnicodeString text = ZkUtil::toString(m_payload.integer);
        text.append(getUnitString(unit));
        return text;
    }
    case ValueReal: {
        UnicodeString text = ZkUtil::toString(static_cast<double>(m_payload.real));
        if (m_payload.real == m_payload.real)
            text.append(getUnitString(unit));
        return text;
    }
    case ValueName:
        return ZkName(m_payload.name).toString();
    case ValueString:
        return stringText(m_payload.string);
    case ValueRCObject: {
        UnicodeString text(u"##");
        if (m_payload.object)
            text.append(m_payload.object->getTypeName());
        return text;
    }
    case ValueArray: {
        UnicodeString text;
        if (!m_payload.array)
            return text;
        int count = m_payload.array->getCount();
        for (int i = 0; i < count; ++i) {
            if (i > 0)
                text.append(u' ');
            text.append(itemText(m_payload.array->itemRef(i)));
        }
        return text;
    }
    case ValueCompound: {
        if (!m_payload.map)
            return UnicodeString();
        if (unit == UnitColor)
            return s_colorHooks.toString(*this);
        UnicodeString text(u'{');
        bool first = true;
        ZkNamedValueMapIterator it(m_payload.map);
        while (it.hasNext()) {
            const ZkNamedValue& item = it.next();
            if (item.isNull())
                continue;
            if (!first)
                text.append(u"; ");
            first = false;
            ZkName name = item.getName();
            if (name.isEmpty())
                text.append(u'.');
            else
                text.append(name.toString());
            text.append(u": ");
            text.append(itemText(item));
        }
        text.append(u'}');
        return text;
    }
    }
    return UnicodeString();
}

UnicodeString ZkValue::toString(bool lower) const {
    UnicodeString text = toString();
    if (lower)
        text.toLower(Locale::getRoot());
    return text;
}

UnicodeString ZkValue::toQuotedString(int mode) const {
    if (getUnitType() == UnitLiteral)
        return ZkUtil::quoteString(toString(), mode);
    return toString();
}

UnicodeString ZkValue::toUrlString(int mode) const {
    UnicodeString text = ZkUtil::quoteString(toString(), mode);
    if (getUnitType() != UnitUri)
        return text;
    UnicodeString url(u"url(");
    url.append(text);
    url.append(u')');
    return url;
}

UnicodeString ZkValue::toValueText(bool css, bool quoteAll) const {
    if (isString()) {
        ZkUnitType unit = getUnitType();
        if (unit == UnitUri)
            return ZkUtil::quoteUri(getStringValue());
        if (unit == UnitLiteral || quoteAll)
            return ZkUtil::quoteString(getStringValue(),
                                       css ? ZkUtil::QUOTE_CSS_STRING : ZkUtil::QUOTE_XSL);
    }
    return toString();
}

UnicodeString ZkValue::getUnitString(ZkUnitType unit) {
    return ZkUtil::toUnitName(unit).toString();
}

ZkValue ZkValue::clone() const {
    ZkValue copy(*this);
    if (isArray()) {
        ZkPtr<ZkValueArray> fresh = m_payload.array->clone();
        copy.m_payload.array->release();
        copy.m_payload.array = fresh.get();
        fresh->addRef();
    } else if (isCompound()) {
        ZkPtr<ZkNamedValueMap> fresh = m_payload.map->clone();
        copy.m_payload.map->release();
        copy.m_payload.map = fresh.get();
        fresh->addRef();
    }
    return copy;
}

// Lists and compounds -----------------------------------------------------------------------

void ZkValue::addItem(const ZkValue& value) {
    if (isNull()) {
        uint64_t name = m_tag & ~uint64_t(511);
        *this = value;
        m_tag = (m_tag & 511) | name;
        return;
    }
    // Take the copy before makeArray, which may own `value` through this very value.
    ZkValue item(value);
    item.setTagName(ZKN_EMPTY);
    makeArray();
    m_payload.array->addItem(item);
}

void ZkValue::makeArray() {
    if (isArray())
        return;
    ZkPtr<ZkValueArray> array(new ZkValueArray());
    bool emptyContainer =
        (getValueType() == ValueArray || getValueType() == ValueCompound) && !m_payload.object;
    if (!isNull() && !emptyContainer) {
        ZkValue item(*this);
        item.setTagName(ZKN_EMPTY);
        array->addItem(item);
    }
    uint64_t name = m_tag & ~uint64_t(511);
    *this = ZkValue(array.get());
    m_tag = bitfield(ValueArray, UnitNone) | name;
}

void ZkValue::makeCompound() {
    if (isCompound())
        return;
    ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
    bool emptyContainer =
        (getValueType() == ValueArray || getValueType() == ValueCompound) && !m_payload.object;
    if (!isNull() && !emptyContainer) {
        ZkValue item(*this);
        item.setTagName(ZKN_EMPTY);
        map->setNamedItem(ZkName(), item);
    }
    uint64_t name = m_tag & ~uint64_t(511);
    *this = ZkValue(map.get());
    m_tag = bitfield(ValueCompound, UnitNone) | name;
}

ZkValue ZkValue::getNthItem(int n) const {
    if (isArray())
        return m_payload.array->item(n);
    return n == 0 ? *this : ZkValue();
}

ZkValue ZkValue::getNamedItem(ZkName name) const {
    if (isCompound()) {
        ZkValue item;
        if (m_payload.map->getNamedItemFast(name, item))
            item.setTagName(ZKN_EMPTY);
        return item;
    }
    return name.isEmpty() ? *this : ZkValue();
}

void ZkValue::setNamedItem(ZkName name, const ZkValue& value) {
    ZkValue item(value);
    makeCompound();
    m_payload.map->setNamedItem(name, item);
}

void ZkValue::setNamedItem(const ZkNamedValue& value) {
    ZkNamedValue item(value);
    makeCompound();
    m_payload.map->setNamedItem(item);
}

void ZkValue::removeNamedItem(ZkName name, bool collapse) {
    if (!isCompound())
        return;
    ZkPtr<ZkNamedValueMap> map(m_payload.map);
    map->removeNamedItem(name);
    if (collapse && map->getCount() == 1) {
        ZkValue rest;
        if (map->getNamedItemFast(ZkName(), rest))
            rest.setTagName(ZKN_EMPTY);
        *this = rest;
    }
}

} // namespace ZkCommonNS

// ZkName from a value lives here: core must not see the value classes.
ZkCommonNS::ZkName::ZkName(const ZkValue& value)
    : m_name(value.isName() ? value.getNameEnum() : ZkName(value.toString()).getEnum()) {}
