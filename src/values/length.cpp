// ZkLength: conversions between points and the absolute units, and the unit classes.
#include "zkcommon/values/length.h"

#include "zkcommon/values/value.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace ZkCommonNS {

namespace {

float floatFromBits(uint32_t bits) noexcept {
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

// Points per unit. The factors are given as float bit patterns so that every build gets the
// same nearest float: 72/2.54 for cm, 72/25.4 for mm, 0.3514 mm for jpt, 0.25 mm for q,
// 1/12700 for emu; dd and cc stand as the typographers define them.
struct UnitFactors {
    float factor[kUnitTypeCount] = {};
    UnitFactors() noexcept {
        factor[UnitCm] = floatFromBits(0x41E2C58B);
        factor[UnitMm] = floatFromBits(0x40356AD6);
        factor[UnitIn] = 72.0f;
        factor[UnitPt] = 1.0f;
        factor[UnitPc] = 12.0f;
        factor[UnitJpt] = floatFromBits(0x3F7F000C);
        factor[UnitQ] = floatFromBits(0x3F356AD6);
        factor[UnitDd] = floatFromBits(0x3F88AC5C);
        factor[UnitCc] = floatFromBits(0x414D028A);
        factor[UnitTwip] = floatFromBits(0x3D4CCCCD);
        factor[UnitEmu] = floatFromBits(0x38A5214D);
        factor[UnitPi] = 12.0f;
    }
};

const UnitFactors s_factors;

// 100000 mm in points: beyond it a length is taken for garbage.
constexpr float kInvalidLimit = 283464.5625f;

} // namespace

float getUnitFactor(ZkUnitType unit) noexcept {
    int index = static_cast<int>(unit);
    return index >= 0 && index < kUnitTypeCount ? s_factors.factor[index] : 0.0f;
}

ZkLength::ZkLength(float value, ZkUnitType unit) noexcept {
    float factor = getUnitFactor(unit);
    m_points = factor != 0.0f ? value * factor : std::numeric_limits<float>::quiet_NaN();
}

ZkLength::ZkLength(const ZkValue& value) noexcept
    : m_points(value.getLengthValue(false).m_points) {}

ZkLength ZkLength::autoLength() noexcept {
    return ZkLength(std::numeric_limits<float>::quiet_NaN());
}

float ZkLength::getRealValue(ZkUnitType unit) const noexcept {
    float factor = getUnitFactor(unit);
    // A division rather than a product with the inverse keeps round trips exact.
    return factor != 0.0f ? m_points / factor : std::numeric_limits<float>::quiet_NaN();
}

int ZkLength::getIntegerValue(ZkUnitType unit) const noexcept {
    float value = getRealValue(unit) + 0.5f;
    if (!(value > -2147483648.0f && value < 2147483648.0f))
        return 0;
    return static_cast<int>(value);
}

int ZkLength::getPixelCount(float dpi) const noexcept {
    float x = dpi * m_points / 72.0f;
    if (!(x > -2147483648.0f && x < 2147483648.0f))
        return 0;
    return static_cast<int>(x < 0.0f ? x - 0.5f : x + 0.5f);
}

bool ZkLength::isInvalid() const noexcept {
    return m_points < -kInvalidLimit || m_points > kInvalidLimit;
}

} // namespace ZkCommonNS
