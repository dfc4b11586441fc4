// ZkUnitType, every measure the system reads and prints, and ZkLength, an absolute length held
// as one float in points.
#ifndef ZKCOMMON_VALUES_LENGTH_H
#define ZKCOMMON_VALUES_LENGTH_H

#include "zkcommon/core/export.h"

#include <cstdint>

namespace ZkCommonNS {

class ZkValue;

/// The unit of a number, or what an integer, a string or a name stands for. The numbers are
/// fixed: they are stored in six bits of every ZkValue tag.
enum ZkUnitType : int {
    UnitNone = 0,     ///< no unit
    UnitNumber = 1,   ///< plain number
    UnitPercent = 2,  ///< "%"
    UnitEm = 3,       ///< "em"
    UnitEx = 4,       ///< "ex"
    UnitPx = 5,       ///< "px": relative, its size depends on the output resolution
    UnitCm = 6,       ///< "cm"
    UnitMm = 7,       ///< "mm"
    UnitIn = 8,       ///< "in"
    UnitPt = 9,       ///< "pt", the base of every absolute length
    UnitPc = 10,      ///< "pc"
    UnitJpt = 11,     ///< "jpt", 0.3514 mm
    UnitQ = 12,       ///< "q", 0.25 mm
    UnitDeg = 13,     ///< "deg"
    UnitRad = 14,     ///< "rad"
    UnitGrad = 15,    ///< "grad"
    UnitMs = 16,      ///< "ms"
    UnitS = 17,       ///< "s"
    UnitHz = 18,      ///< "Hz"
    UnitKHz = 19,     ///< "kHz"
    UnitChar = 20,    ///< marks an integer holding a code point
    UnitLiteral = 21, ///< marks a string that was quoted in the source
    UnitUri = 22,     ///< marks a string holding a URI
    UnitName = 23,    ///< marks a name
    UnitColor = 24,   ///< marks a colour
    UnitUnused = 25,
    UnitDd = 26,      ///< "dd"
    UnitCc = 27,      ///< "cc"
    UnitDpi = 28,     ///< "dpi"
    UnitTwip = 29,    ///< "twip"
    UnitLength2 = 30, ///< a length squared in points
    UnitLength3 = 31, ///< a length cubed in points
    UnitRem = 32,     ///< "rem"
    UnitVw = 33,      ///< "vw"
    UnitVh = 34,      ///< "vh"
    UnitVmin = 35,    ///< "vmin" (also read as "vm")
    UnitVmax = 36,    ///< "vmax"
    UnitPvw = 37,     ///< "pvw"
    UnitPvh = 38,     ///< "pvh"
    UnitPvmin = 39,   ///< "pvmin"
    UnitPvmax = 40,   ///< "pvmax"
    UnitCh = 41,      ///< "ch"
    UnitWch = 42,     ///< "wch"
    UnitFr = 43,      ///< "fr"
    UnitGr = 44,      ///< "gr"
    UnitLh = 45,      ///< "lh"
    UnitRlh = 46,     ///< "rlh"
    UnitLines = 47,   ///< "lines"
    UnitDpcm = 48,    ///< "dpcm"
    UnitDppx = 49,    ///< "dppx"
    UnitEmu = 50,     ///< "emu", 1/12700 pt
    UnitPi = 51,      ///< "pi", the same as "pc"
    UnitDcem = 52,    ///< "dcem"
    UnitCap = 53,     ///< "cap"
    UnitIc = 54,      ///< "ic"
    UnitPercent2 = 55 ///< a second percentage value, printed as "%"
};

/// One past the highest unit number.
constexpr int kUnitTypeCount = 56;

/// Points per unit for the absolute lengths; 0 for every other unit and for values out of range.
ZKCOMMON_API float getUnitFactor(ZkUnitType unit) noexcept;
namespace detail {
constexpr uint64_t unitBit(ZkUnitType unit) {
    return uint64_t(1) << static_cast<int>(unit);
}
constexpr uint64_t kAbsoluteLengthUnits = unitBit(UnitCm) | unitBit(UnitMm) | unitBit(UnitIn) |
                                          unitBit(UnitPt) | unitBit(UnitPc) | unitBit(UnitJpt) |
                                          unitBit(UnitQ) | unitBit(UnitDd) | unitBit(UnitCc) |
                                          unitBit(UnitTwip) | unitBit(UnitEmu) | unitBit(UnitPi);
constexpr uint64_t kRelativeLengthUnits =
    unitBit(UnitEm) | unitBit(UnitEx) | unitBit(UnitPx) | unitBit(UnitRem) | unitBit(UnitVw) |
    unitBit(UnitVh) | unitBit(UnitVmin) | unitBit(UnitVmax) | unitBit(UnitPvw) | unitBit(UnitPvh) |
    unitBit(UnitPvmin) | unitBit(UnitPvmax) | unitBit(UnitCh) | unitBit(UnitWch) | unitBit(UnitFr) |
    unitBit(UnitGr) | unitBit(UnitLh) | unitBit(UnitRlh) | unitBit(UnitLines) | unitBit(UnitDcem) |
    unitBit(UnitCap) | unitBit(UnitIc);
} // namespace detail

/// True for the twelve absolute lengths (cm, mm, in, pt, pc, jpt, q, dd, cc, twip, emu, pi);
/// false for anything else, numbers out of range included.
inline bool isAbsoluteLengthUnit(ZkUnitType unit) noexcept {
    return static_cast<unsigned>(unit) < 64 &&
           ((detail::kAbsoluteLengthUnits >> static_cast<int>(unit)) & 1) != 0;
}
/// True for the relative lengths (em, ex, px, rem ... lines, dcem, cap, ic).
inline bool isRelativeLengthUnit(ZkUnitType unit) noexcept {
    return static_cast<unsigned>(unit) < 64 &&
           ((detail::kRelativeLengthUnits >> static_cast<int>(unit)) & 1) != 0;
}

/// An absolute length in points. NaN is auto, and also the result of every failed conversion.
/// No heap, no unit field: a bare float.
class ZKCOMMON_API ZkLength {
public:
    ZkLength() noexcept : m_points(0.0f) {}
    ZkLength(int points) noexcept : m_points(static_cast<float>(points)) {}
    ZkLength(unsigned int points) noexcept : m_points(static_cast<float>(points)) {}
    ZkLength(float points) noexcept : m_points(points) {}
    /// Narrowed to float.
    ZkLength(double points) noexcept : m_points(static_cast<float>(points)) {}
    /// `value` times the unit's factor; auto for any unit that is not an absolute length.
    ZkLength(float value, ZkUnitType unit) noexcept;
    /// The value's length (ZkValue::getLengthValue(false)); auto when it is none.
    ZkLength(const ZkValue& value) noexcept;

    /// The auto length (NaN, bits 0x7FC00000).
    static ZkLength autoLength() noexcept;

    /// Points over the unit's factor; NaN for a unit that is not an absolute length.
    float getRealValue(ZkUnitType unit) const noexcept;
    /// getRealValue(unit) + 0.5 truncated toward zero; 0 for NaN or out-of-range results.
    int getIntegerValue(ZkUnitType unit) const noexcept;
    /// Device pixels at `dpi`, rounded half away from zero; 0 for auto.
    int getPixelCount(float dpi) const noexcept;
    operator float() const noexcept { return m_points; }
    float getPoints() const noexcept { return m_points; }

    bool isAuto() const noexcept { return m_points != m_points; }
    /// Beyond plus or minus 100000 mm; auto is not invalid.
    bool isInvalid() const noexcept;
    bool isZero() const noexcept { return m_points == 0.0f; }
    bool isNegative() const noexcept { return m_points < 0.0f; }
    bool isPositive() const noexcept { return m_points > 0.0f; }
    /// The tolerance tests give false when either side is auto.
    bool isAlmostEqual(ZkLength other, float tolerance) const noexcept {
        float d = m_points - other.m_points;
        return -tolerance <= d && d <= tolerance;
    }
    bool isAlmostZero(float tolerance) const noexcept {
        return -tolerance <= m_points && m_points <= tolerance;
    }
    bool isAlmostZeroOrNegative(float tolerance) const noexcept { return m_points <= tolerance; }
    bool isAlmostZeroOrPositive(float tolerance) const noexcept { return m_points >= -tolerance; }
    /// Equality in which auto equals auto.
    bool eq(ZkLength other) const noexcept {
        return isAuto() ? other.isAuto() : (!other.isAuto() && m_points == other.m_points);
    }

    ZkLength operator+(int v) const noexcept { return ZkLength(m_points + static_cast<float>(v)); }
    ZkLength operator+(long v) const noexcept { return ZkLength(m_points + static_cast<float>(v)); }
    ZkLength operator+(float v) const noexcept { return ZkLength(m_points + v); }
    ZkLength operator+(double v) const noexcept {
        return ZkLength(m_points + static_cast<float>(v));
    }
    ZkLength operator-(int v) const noexcept { return ZkLength(m_points - static_cast<float>(v)); }
    ZkLength operator-(long v) const noexcept { return ZkLength(m_points - static_cast<float>(v)); }
    ZkLength operator-(float v) const noexcept { return ZkLength(m_points - v); }
    ZkLength operator-(double v) const noexcept {
        return ZkLength(m_points - static_cast<float>(v));
    }
    ZkLength operator*(int v) const noexcept { return ZkLength(m_points * static_cast<float>(v)); }
    ZkLength operator*(long v) const noexcept { return ZkLength(m_points * static_cast<float>(v)); }
    ZkLength operator*(float v) const noexcept { return ZkLength(m_points * v); }
    ZkLength operator*(double v) const noexcept {
        return ZkLength(m_points * static_cast<float>(v));
    }
    ZkLength operator/(int v) const noexcept { return ZkLength(m_points / static_cast<float>(v)); }
    ZkLength operator/(long v) const noexcept { return ZkLength(m_points / static_cast<float>(v)); }
    ZkLength operator/(float v) const noexcept { return ZkLength(m_points / v); }
    ZkLength operator/(double v) const noexcept {
        return ZkLength(m_points / static_cast<float>(v));
    }
    ZkLength operator+() const noexcept { return *this; }
    ZkLength operator-() const noexcept { return ZkLength(-m_points); }

    /// The compound assignments leave an auto left side auto.
    ZkLength& operator*=(float v) noexcept {
        if (!isAuto())
            m_points *= v;
        return *this;
    }
    ZkLength& operator/=(float v) noexcept {
        if (!isAuto())
            m_points /= v;
        return *this;
    }
    ZkLength& operator+=(float v) noexcept {
        if (!isAuto())
            m_points += v;
        return *this;
    }
    ZkLength& operator-=(float v) noexcept {
        if (!isAuto())
            m_points -= v;
        return *this;
    }
    ZkLength& operator+=(ZkLength v) noexcept { return *this += v.m_points; }
    ZkLength& operator-=(ZkLength v) noexcept { return *this -= v.m_points; }

private:
    float m_points;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_LENGTH_H
