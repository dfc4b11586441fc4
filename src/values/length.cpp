// ZkLength: conversions between points and the absolute units, and the unit classes.
#include "zkcommon/values/length.h"

#include "zkcommon/values/value.h"

#include <cmath>
#include <cstring>
#include <limits>

namespace ZkCommonNS {

namespace {

// Points per unit. The factors are exact float values written in hexadecimal, so that every
// build gets the same nearest float: 72/2.54 for cm, 72/25.4 for mm, 0.3514 mm for jpt, 0.25 mm
// for q, 1/12700 for emu; dd and cc stand as the typographers define them. The table is built
// by the compiler: a static initialiser elsewhere (a property default) reads it whole.
struct UnitFactors {
    float factor[kUnitTypeCount];
};

constexpr UnitFactors makeUnitFactors() noexcept {
    UnitFactors table{};
    table.factor[UnitCm] = 0x1.c58b16p+4f;
    table.factor[UnitMm] = 0x1.6ad5acp+1f;
    table.factor[UnitIn] = 72.0f;
    table.factor[UnitPt] = 1.0f;
    table.factor[UnitPc] = 12.0f;
    table.factor[UnitJpt] = 0x1.fe0018p-1f;
    table.factor[UnitQ] = 0x1.6ad5acp-1f;
    table.factor[UnitDd] = 0x1.1158b8p+0f;
    table.factor[UnitCc] = 0x1.9a0514p+3f;
    table.factor[UnitTwip] = 0x1.99999ap-5f;
    table.factor[UnitEmu] = 0x1.4a429ap-14f;
    table.factor[UnitPi] = 12.0f;
    return table;
}

constexpr UnitFactors s_factors = makeUnitFactors();
static_assert(s_factors.factor[UnitIn] == 72.0f && s_factors.factor[UnitCm] > 28.34f,
              "the factors are constants");

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
