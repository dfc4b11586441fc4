// ZkValue arithmetic with its mixed-unit rules, the list-wide operations, and comparison.
//
// A bare 0 has no dimension, so it may be added to a length; subtraction and remainder compare
// units before normalising, so 2cm - 1mm is Null while 2cm + 1mm is a length in points. These
// asymmetries are what the engine's expression evaluator relies on and are kept deliberately.
#include "values/colorhooks.h"
#include "zkcommon/values/value.h"

#include <cmath>
#include <cstdint>

namespace ZkCommonNS {

namespace {

// The radian factor of normalisation differs in its last bit from the one of getRealValue.
constexpr float kRadToDegNormalize = 57.295776f;

bool isPercentUnit(ZkUnitType unit) noexcept {
    return unit == UnitPercent || unit == UnitPercent2;
}

int32_t wrapAdd(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

int32_t wrapSub(int32_t a, int32_t b) noexcept {
    return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}

float asFloat(const ZkValue& value) noexcept {
    return value.getRealValue(value.getUnitType());
}

// The figure of a side in the percentage rule of the list operations: 55 deliberately reads
// as NaN, as the engine has always done.
float percentFigure(const ZkValue& value) noexcept {
    float x = asFloat(value);
    switch (value.getUnitType()) {
    case UnitPercent:
        return x;
    case UnitNumber:
        return x * 100.0f;
    default:
        return std::nanf("");
    }
}

struct ScalingOperands {
    float a;
    float b;
    ZkUnitType ua;
    ZkUnitType ub;
};

// The operands of * and /: both sides normalised, as figures with their units, and a percentage
// on the left taken as a fraction of a plain number.
ScalingOperands scalingOperands(ZkValue left, ZkValue right) noexcept {
    left.normalizeUnit();
    right.normalizeUnit();
    ScalingOperands operands{asFloat(left), asFloat(right), left.getUnitType(),
                             right.getUnitType()};
    if (isPercentUnit(operands.ua)) {
        operands.a /= 100.0f;
        operands.ua = UnitNumber;
    }
    return operands;
}

} // namespace

void ZkValue::normalizeUnit() noexcept {
    if (!isNumeric())
        return;
    float x = numberAsFloat();
    ZkUnitType unit = getUnitType();
    switch (unit) {
    case UnitPercent:
    case UnitPercent2:
        if (isInteger())
            becomeReal(x, unit);
        return;
    case UnitRad:
        becomeReal(x * kRadToDegNormalize, UnitDeg);
        return;
    case UnitGrad:
        becomeReal(x * 0.9f, UnitDeg);
        return;
    case UnitS:
        becomeReal(x * 1000.0f, UnitMs);
        return;
    case UnitKHz:
        becomeReal(x * 1000.0f, UnitHz);
        return;
    case UnitDpi:
        setUnitType(UnitNumber);
        return;
    case UnitDpcm:
        becomeReal(x * 2.54f, UnitNumber);
        return;
    default:
        if (unit == UnitPt)
            becomeReal(x, UnitPt);
        else if (isAbsoluteLengthUnit(unit))
            becomeReal(static_cast<float>(ZkLength(x, unit)), UnitPt);
        return;
    }
}

ZkValue& ZkValue::addGeneral(const ZkValue& right) noexcept {
    if (!isNumeric() || !right.isNumeric()) {
        setNull();
        return *this;
    }
    if (right.isNumberZero())
        return *this;
    if (isNumberZero()) {
        assignKeepingName(right);
        return *this;
    }
    ZkValue other(right);
    if (getUnitType() != other.getUnitType() || getValueType() != other.getValueType()) {
        normalizeUnit();
        other.normalizeUnit();
        if (getUnitType() != other.getUnitType()) {
            setNull();
            return *this;
        }
    }
    if (isInteger() && other.isInteger())
        m_payload.integer = wrapAdd(m_payload.integer, other.m_payload.integer);
    else
        becomeReal(numberAsFloat() + other.numberAsFloat(), getUnitType());
    return *this;
}

ZkValue& ZkValue::subtractGeneral(const ZkValue& right) noexcept {
    if (!isNumeric() || !right.isNumeric()) {
        setNull();
        return *this;
    }
    if (right.isNumberZero())
        return *this;
    if (isNumberZero()) {
        assignKeepingName(-right);
        return *this;
    }
    if (getUnitType() != right.getUnitType()) {
        setNull();
        return *this;
    }
    ZkValue other(right);
    if (getValueType() != other.getValueType()) {
        normalizeUnit();
        other.normalizeUnit();
    }
    if (isInteger() && other.isInteger())
        m_payload.integer = wrapSub(m_payload.integer, other.m_payload.integer);
    else
        becomeReal(numberAsFloat() - other.numberAsFloat(), getUnitType());
    return *this;
}

ZkValue& ZkValue::operator%=(const ZkValue& right) noexcept {
    if (!isNumeric() || !right.isNumeric() || getUnitType() != right.getUnitType()) {
        setNull();
        return *this;
    }
    ZkValue other(right);
    if (getValueType() != other.getValueType()) {
        normalizeUnit();
        other.normalizeUnit();
    }
    if (isInteger() && other.isInteger()) {
        int32_t a = m_payload.integer;
        int32_t b = other.m_payload.integer;
        // A zero divisor would trap; a Null result is the value classes' way to fail.
        if (b == 0) {
            setNull();
            return *this;
        }
        int32_t r = (b == -1) ? 0 : a % b;
        // The sign test on dividend XOR remainder makes an exact negative dividend give minus
        // the divisor (-4 % 2 is -2); every other case is the truncating remainder.
        if ((a ^ r) < 0)
            r = wrapSub(r, b);
        m_payload.integer = r;
    } else {
        becomeReal(std::fmod(numberAsFloat(), other.numberAsFloat()), getUnitType());
    }
    return *this;
}

ZkValue& ZkValue::operator*=(const ZkValue& right) noexcept {
    if (!isNumeric() || !right.isNumeric()) {
        setNull();
        return *this;
    }
    auto [a, b, ua, ub] = scalingOperands(*this, right);
    if (isPercentUnit(ub)) {
        b /= 100.0f;
        ub = UnitNumber;
    }
    ZkUnitType unit;
    if (ua == UnitNumber)
        unit = ub;
    else if (ub == UnitNumber)
        unit = ua;
    else if (ua == UnitPt && ub == UnitPt)
        unit = UnitLength2;
    else if ((ua == UnitPt && ub == UnitLength2) || (ua == UnitLength2 && ub == UnitPt))
        unit = UnitLength3;
    else {
        setNull();
        return *this;
    }
    becomeReal(a * b, unit);
    return *this;
}

ZkValue& ZkValue::operator/=(const ZkValue& right) noexcept {
    if (!isNumeric() || !right.isNumeric()) {
        setNull();
        return *this;
    }
    auto [a, b, ua, ub] = scalingOperands(*this, right);
    if (isPercentUnit(ub)) {
        becomeReal(a / (b / 100.0f), ua);
        return *this;
    }
    ZkUnitType unit;
    if (ub == UnitNumber)
        unit = ua;
    else if (ua == UnitNumber)
        unit = UnitNone;
    else if (ua == ub)
        unit = UnitNumber;
    else if (ua == UnitLength3 && ub == UnitPt)
        unit = UnitLength2;
    else if (ua == UnitLength3 && ub == UnitLength2)
        unit = UnitPt;
    else if (ua == UnitLength2 && ub == UnitPt)
        unit = UnitPt;
    else
        unit = UnitNone;
    if (unit == UnitNone) {
        setNull();
        return *this;
    }
    becomeReal(a / b, unit);
    return *this;
}

ZkValue ZkValue::operator+(const ZkValue& right) const noexcept {
    ZkValue result(*this);
    result += right;
    return result;
}

ZkValue ZkValue::operator-(const ZkValue& right) const noexcept {
    ZkValue result(*this);
    result -= right;
    return result;
}

ZkValue ZkValue::operator*(const ZkValue& right) const noexcept {
    ZkValue result(*this);
    result *= right;
    return result;
}

ZkValue ZkValue::operator/(const ZkValue& right) const noexcept {
    ZkValue result(*this);
    result /= right;
    return result;
}

ZkValue ZkValue::operator%(const ZkValue& right) const noexcept {
    ZkValue result(*this);
    result %= right;
    return result;
}

ZkValue ZkValue::operator-() const noexcept {
    if (isInteger())
        return ZkValue(wrapSub(0, m_payload.integer), getUnitType());
    if (isReal())
        return ZkValue(-m_payload.real, getUnitType());
    return ZkValue();
}

ZkValue ZkValue::abs() const noexcept {
    if (isInteger())
        return m_payload.integer < 0 ? -*this : ZkValue(m_payload.integer, getUnitType());
    if (isReal())
        return ZkValue(0.0f > m_payload.real ? -m_payload.real : m_payload.real, getUnitType());
    return ZkValue();
}

ZkValue ZkValue::round() const noexcept {
    if (!isNumber())
        return ZkValue();
    if (isInteger())
        return ZkValue(m_payload.integer, UnitNumber);
    return ZkValue(std::floor(m_payload.real + 0.5f), UnitNumber);
}

ZkValue ZkValue::floor() const noexcept {
    if (!isNumber())
        return ZkValue();
    if (isInteger())
        return ZkValue(m_payload.integer, UnitNumber);
    return ZkValue(std::floor(m_payload.real), UnitNumber);
}

ZkValue ZkValue::ceiling() const noexcept {
    if (!isNumber())
        return ZkValue();
    if (isInteger())
        return ZkValue(m_payload.integer, UnitNumber);
    return ZkValue(std::ceil(m_payload.real), UnitNumber);
}

// List-wide operations ----------------------------------------------------------------------

template <class Operation> void ZkValue::applyToEachItem(Operation operation) {
    ZkPtr<ZkValueArray> items(m_payload.array);
    ZkValue result;
    for (int i = 0, count = items->getCount(); i < count; ++i) {
        ZkValue item = items->item(i);
        operation(item);
        result.addItem(item);
    }
    *this = result;
}

void ZkValue::multipleEachItem(const ZkValue& value) {
    if (isArray()) {
        applyToEachItem([&](ZkValue& item) { item.multipleEachItem(value); });
        return;
    }
    if ((isPercentage() || value.isPercentage()) && isNumeric() && value.isNumeric()) {
        float a = percentFigure(*this);
        float b = percentFigure(value);
        becomeReal(a * b / 100.0f, UnitPercent);
        return;
    }
    *this *= value;
}

void ZkValue::devideEachItem(const ZkValue& value) {
    if (isArray()) {
        applyToEachItem([&](ZkValue& item) { item.devideEachItem(value); });
        return;
    }
    if ((isPercentage() || value.isPercentage()) && isNumeric() && value.isNumeric()) {
        float a = percentFigure(*this);
        float b = percentFigure(value);
        becomeReal(a / b * 100.0f, UnitPercent);
        return;
    }
    *this /= value;
}

void ZkValue::invertItem() {
    if (isArray()) {
        applyToEachItem([](ZkValue& item) { item.invertItem(); });
        return;
    }
    *this = -*this;
}

void ZkValue::concatEachItem() {
    UnicodeString text;
    if (isArray()) {
        for (int i = 0, count = m_payload.array->getCount(); i < count; ++i)
            text.append(m_payload.array->itemRef(i).toString());
    } else {
        text = toString();
    }
    *this = ZkValue(text, UnitNone);
}

ZkValue ZkValue::sumItem(const ZkValue& base) const {
    if (isArray()) {
        int count = m_payload.array->getCount();
        if (count == 0)
            return ZkValue();
        ZkValue sum = m_payload.array->itemRef(0).sumItem(base);
        for (int i = 1; i < count; ++i)
            sum += m_payload.array->itemRef(i).sumItem(base);
        return sum;
    }
    if (isPercentage())
        return ZkValue(getRealValue(UnitNumber), UnitNumber) * base;
    return *this;
}

// Comparison --------------------------------------------------------------------------------

bool ZkValue::operator==(const ZkValue& other) const {
    ZkValueType type = getValueType();
    if (type == other.getValueType() && getUnitType() == other.getUnitType()) {
        switch (type) {
        case ValueNull:
            return true;
        case ValueInteger:
            return m_payload.integer == other.m_payload.integer;
        case ValueName:
            return m_payload.name == other.m_payload.name;
        case ValueReal:
            return m_payload.real == other.m_payload.real;
        case ValueString:
            return getStringValue() == other.getStringValue();
        case ValueRCObject:
        case ValueArray:
            return m_payload.object == other.m_payload.object;
        case ValueCompound:
            if (m_payload.map && other.m_payload.map && getUnitType() == UnitColor)
                return detail::getColorValueHooks().equal(*this, other);
            return toString() == other.toString();
        }
        return false;
    }
    if (isNumeric() && other.isNumeric()) {
        ZkValue a(*this);
        ZkValue b(other);
        a.normalizeUnit();
        b.normalizeUnit();
        return a.getUnitType() == b.getUnitType() && a.numberAsFloat() == b.numberAsFloat();
    }
    if ((isName() && other.isString()) || (isString() && other.isName()))
        return getStringValue() == other.getStringValue();
    return false;
}

bool ZkValue::operator<(const ZkValue& other) const {
    ZkValueType type = getValueType();
    ZkValueType otherType = other.getValueType();
    if (type == otherType && getUnitType() == other.getUnitType()) {
        switch (type) {
        case ValueNull:
            return false;
        case ValueInteger:
            return m_payload.integer < other.m_payload.integer;
        case ValueName:
            return static_cast<int32_t>(m_payload.name) <
                   static_cast<int32_t>(other.m_payload.name);
        case ValueReal:
            return m_payload.real < other.m_payload.real;
        case ValueString:
            return getStringValue() < other.getStringValue();
        case ValueRCObject:
        case ValueArray:
        case ValueCompound:
            return reinterpret_cast<uintptr_t>(m_payload.object) <
                   reinterpret_cast<uintptr_t>(other.m_payload.object);
        }
        return false;
    }
    if (isNumeric() && other.isNumeric()) {
        ZkValue a(*this);
        ZkValue b(other);
        a.normalizeUnit();
        b.normalizeUnit();
        if (a.getUnitType() == b.getUnitType())
            return a.numberAsFloat() < b.numberAsFloat();
        return a.getUnitType() < b.getUnitType();
    }
    if ((isName() && other.isString()) || (isString() && other.isName()))
        return getStringValue() < other.getStringValue();
    if (type != otherType)
        return type < otherType;
    return getUnitType() < other.getUnitType();
}

} // namespace ZkCommonNS
