// Tests of ZkLength and the unit words of ZkUtil.
#include "zkcommon/text/util.h"
#include "zkcommon/values/length.h"
#include "zkcommon/values/value.h"

#include <cmath>
#include <cstring>
#include <gtest/gtest.h>

using namespace ZkCommonNS;

namespace {

uint32_t bitsOf(float value) {
    uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

} // namespace

TEST(ZkLength, FactorsAreTheNearestFloats) {
    struct Case {
        ZkUnitType unit;
        uint32_t bits;
    } cases[] = {
        {UnitCm, 0x41E2C58B}, {UnitMm, 0x40356AD6},   {UnitIn, 0x42900000},  {UnitPt, 0x3F800000},
        {UnitPc, 0x41400000}, {UnitJpt, 0x3F7F000C},  {UnitQ, 0x3F356AD6},   {UnitDd, 0x3F88AC5C},
        {UnitCc, 0x414D028A}, {UnitTwip, 0x3D4CCCCD}, {UnitEmu, 0x38A5214D}, {UnitPi, 0x41400000},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(static_cast<int>(k.unit));
        EXPECT_EQ(bitsOf(getUnitFactor(k.unit)), k.bits);
        EXPECT_EQ(bitsOf(static_cast<float>(ZkLength(1.0f, k.unit))), k.bits);
        EXPECT_TRUE(isAbsoluteLengthUnit(k.unit));
    }
    EXPECT_EQ(bitsOf(72.0f / 2.54f), 0x41E2C58Bu);
    EXPECT_EQ(bitsOf(72.0f / 25.4f), 0x40356AD6u);
}

TEST(ZkLength, OtherUnitsAreAuto) {
    for (int u = 0; u < kUnitTypeCount; ++u) {
        ZkUnitType unit = static_cast<ZkUnitType>(u);
        SCOPED_TRACE(u);
        if (isAbsoluteLengthUnit(unit))
            continue;
        EXPECT_TRUE(ZkLength(1.0f, unit).isAuto());
        EXPECT_TRUE(std::isnan(ZkLength(10).getRealValue(unit)));
    }
    EXPECT_TRUE(ZkLength(1.0f, UnitPx).isAuto());
    EXPECT_TRUE(ZkLength(1.0f, static_cast<ZkUnitType>(99)).isAuto());
}

TEST(ZkLength, RoundTripsAreExact) {
    EXPECT_EQ(ZkLength(1.0f, UnitCm).getRealValue(UnitCm), 1.0f);
    EXPECT_EQ(static_cast<float>(ZkLength(1.0f, UnitIn)), 72.0f);
    EXPECT_TRUE(ZkLength(1.0f, UnitPi).eq(ZkLength(1.0f, UnitPc)));
    for (int u : {6, 7, 8, 9, 10, 11, 12, 26, 27, 29, 50, 51}) {
        SCOPED_TRACE(u);
        ZkUnitType unit = static_cast<ZkUnitType>(u);
        EXPECT_FLOAT_EQ(ZkLength(3.0f, unit).getRealValue(unit), 3.0f);
    }
    EXPECT_FLOAT_EQ(ZkLength(1.0f, UnitIn).getRealValue(UnitMm), 25.4f);
}

TEST(ZkLength, Construction) {
    EXPECT_EQ(static_cast<float>(ZkLength()), 0.0f);
    EXPECT_EQ(static_cast<float>(ZkLength(3)), 3.0f);
    EXPECT_EQ(static_cast<float>(ZkLength(3u)), 3.0f);
    EXPECT_EQ(static_cast<float>(ZkLength(2.5)), 2.5f);
    EXPECT_TRUE(ZkLength::autoLength().isAuto());
    EXPECT_EQ(static_cast<float>(ZkLength(ZkValue(2.0f, UnitIn))), 144.0f);
    EXPECT_TRUE(ZkLength(ZkValue(2.0f, UnitEm)).isAuto());
}

TEST(ZkLength, IntegerAndPixelRounding) {
    EXPECT_EQ(ZkLength(-1.7f).getIntegerValue(UnitPt), -1);
    EXPECT_EQ(ZkLength(1.5f).getIntegerValue(UnitPt), 2);
    EXPECT_EQ(ZkLength(-1.5f).getIntegerValue(UnitPt), -1);
    EXPECT_EQ(ZkLength(72.0f).getIntegerValue(UnitIn), 1);
    EXPECT_EQ(ZkLength::autoLength().getIntegerValue(UnitPt), 0);
    EXPECT_EQ(ZkLength(10).getIntegerValue(UnitPx), 0);
    EXPECT_EQ(ZkLength(-0.5f).getPixelCount(96.0f), -1);
    EXPECT_EQ(ZkLength(0.5f).getPixelCount(96.0f), 1);
    EXPECT_EQ(ZkLength(72.0f).getPixelCount(96.0f), 96);
    EXPECT_EQ(ZkLength(0.3f).getPixelCount(96.0f), 0);
    EXPECT_EQ(ZkLength::autoLength().getPixelCount(96.0f), 0);
}

TEST(ZkLength, Tests) {
    ZkLength automatic = ZkLength::autoLength();
    EXPECT_TRUE(automatic.eq(ZkLength::autoLength()));
    EXPECT_FALSE(static_cast<float>(automatic) == static_cast<float>(ZkLength::autoLength()));
    EXPECT_FALSE(automatic.eq(ZkLength(0)));
    EXPECT_FALSE(ZkLength(0).eq(automatic));
    EXPECT_TRUE(ZkLength(2).eq(ZkLength(2.0f)));
    EXPECT_FALSE(automatic.isInvalid());
    EXPECT_FALSE(ZkLength(283464.5f).isInvalid());
    EXPECT_TRUE(ZkLength(283465.0f).isInvalid());
    EXPECT_TRUE(ZkLength(-283465.0f).isInvalid());
    EXPECT_TRUE(ZkLength(0).isZero());
    EXPECT_TRUE(ZkLength(-1).isNegative());
    EXPECT_TRUE(ZkLength(1).isPositive());
    EXPECT_FALSE(automatic.isZero() || automatic.isNegative() || automatic.isPositive());
}

TEST(ZkLength, Tolerances) {
    ZkLength a(10.0f);
    EXPECT_TRUE(a.isAlmostEqual(ZkLength(10.05f), 0.1f));
    EXPECT_FALSE(a.isAlmostEqual(ZkLength(10.2f), 0.1f));
    EXPECT_TRUE(ZkLength(0.05f).isAlmostZero(0.1f));
    EXPECT_TRUE(ZkLength(-0.05f).isAlmostZero(0.1f));
    EXPECT_FALSE(ZkLength(0.2f).isAlmostZero(0.1f));
    EXPECT_TRUE(ZkLength(0.05f).isAlmostZeroOrNegative(0.1f));
    EXPECT_TRUE(ZkLength(-5.0f).isAlmostZeroOrNegative(0.1f));
    EXPECT_FALSE(ZkLength(0.2f).isAlmostZeroOrNegative(0.1f));
    EXPECT_TRUE(ZkLength(-0.05f).isAlmostZeroOrPositive(0.1f));
    EXPECT_FALSE(ZkLength(-0.2f).isAlmostZeroOrPositive(0.1f));
    ZkLength automatic = ZkLength::autoLength();
    EXPECT_FALSE(automatic.isAlmostEqual(automatic, 1.0f));
    EXPECT_FALSE(automatic.isAlmostZero(1.0f));
    EXPECT_FALSE(automatic.isAlmostZeroOrNegative(1.0f));
    EXPECT_FALSE(automatic.isAlmostZeroOrPositive(1.0f));
}

TEST(ZkLength, Arithmetic) {
    ZkLength a(10.0f);
    EXPECT_EQ(static_cast<float>(a + 2), 12.0f);
    EXPECT_EQ(static_cast<float>(a - 2L), 8.0f);
    EXPECT_EQ(static_cast<float>(a * 1.5f), 15.0f);
    EXPECT_EQ(static_cast<float>(a / 4.0), 2.5f);
    EXPECT_EQ(static_cast<float>(-a), -10.0f);
    EXPECT_EQ(static_cast<float>(+a), 10.0f);
    EXPECT_TRUE((ZkLength::autoLength() + 1).isAuto());
    a += ZkLength(5);
    EXPECT_EQ(static_cast<float>(a), 15.0f);
    a -= 5.0f;
    a *= 2.0f;
    a /= 4.0f;
    EXPECT_EQ(static_cast<float>(a), 5.0f);
    ZkLength automatic = ZkLength::autoLength();
    automatic += 3.0f;
    automatic -= ZkLength(1);
    automatic *= 0.0f;
    automatic /= 1.0f;
    EXPECT_TRUE(automatic.isAuto());
}

TEST(ZkUnits, WordsAndTheirInverse) {
    for (int u = 0; u < kUnitTypeCount; ++u) {
        ZkUnitType unit = static_cast<ZkUnitType>(u);
        ZkName word = ZkUtil::toUnitName(unit);
        SCOPED_TRACE(u);
        if (word.isEmpty())
            continue;
        ZkUnitType back = ZkUtil::toUnitType(word, false);
        // Both percentage units print "%", which reads back as 2.
        EXPECT_EQ(back, u == UnitPercent2 ? UnitPercent : unit);
    }
    for (int u : {0, 1, 20, 21, 22, 23, 24, 25, 30, 31}) {
        SCOPED_TRACE(u);
        EXPECT_TRUE(ZkUtil::toUnitName(static_cast<ZkUnitType>(u)).isEmpty());
    }
    EXPECT_TRUE(ZkUtil::toUnitName(static_cast<ZkUnitType>(56)).isEmpty());
    EXPECT_EQ(ZkValue::getUnitString(UnitKHz), UnicodeString(u"kHz"));
    EXPECT_EQ(ZkValue::getUnitString(UnitPercent2), UnicodeString(u"%"));
}

TEST(ZkUnits, TypeWordsOnlyWithTheFlag) {
    struct Case {
        const char16_t* word;
        ZkUnitType withFlag;
    } cases[] = {
        {u"integer", UnitNumber}, {u"number", UnitNumber}, {u"length", UnitPt},
        {u"angle", UnitDeg},      {u"time", UnitS},        {u"frequency", UnitHz},
        {u"string", UnitLiteral}, {u"url", UnitUri},       {u"name", UnitName},
        {u"color", UnitColor},
    };
    for (const Case& k : cases) {
        ZkName word{UnicodeString(k.word)};
        EXPECT_EQ(ZkUtil::toUnitType(word, false), UnitNone);
        EXPECT_EQ(ZkUtil::toUnitType(word, true), k.withFlag);
    }
    EXPECT_EQ(ZkUtil::toUnitType(ZkName(UnicodeString(u"vm")), false), UnitVmin);
    EXPECT_EQ(ZkUtil::toUnitType(ZkName(UnicodeString(u"HZ")), false), UnitNone);
    EXPECT_EQ(ZkUtil::toUnitType(ZkName(UnicodeString(u"furlong")), true), UnitNone);
    EXPECT_EQ(ZkUtil::toUnitType(ZkName(), true), UnitNone);
}
