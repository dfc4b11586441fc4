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

TEST(ZkLength, FromValuesAndRounding) {
    EXPECT_EQ(static_cast<float>(ZkLength(ZkValue(2.0f, UnitIn))), 144.0f);
    EXPECT_TRUE(ZkLength(ZkValue(2.0f, UnitEm)).isAuto());
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

TEST(ZkLength, AutoAndTheLimits) {
    ZkLength automatic = ZkLength::autoLength();
    EXPECT_TRUE(automatic.eq(ZkLength::autoLength())); // unlike the float comparison
    EXPECT_FALSE(static_cast<float>(automatic) == static_cast<float>(ZkLength::autoLength()));
    EXPECT_FALSE(automatic.eq(ZkLength(0)));
    EXPECT_FALSE(ZkLength(0).eq(automatic));
    EXPECT_FALSE(automatic.isInvalid());
    EXPECT_FALSE(ZkLength(283464.5f).isInvalid());
    EXPECT_TRUE(ZkLength(283465.0f).isInvalid());
    EXPECT_TRUE(ZkLength(-283465.0f).isInvalid());
    EXPECT_FALSE(automatic.isZero() || automatic.isNegative() || automatic.isPositive());
    EXPECT_FALSE(automatic.isAlmostEqual(automatic, 1.0f));
    EXPECT_FALSE(automatic.isAlmostZero(1.0f));
    EXPECT_FALSE(automatic.isAlmostZeroOrNegative(1.0f));
    EXPECT_FALSE(automatic.isAlmostZeroOrPositive(1.0f));
    // Arithmetic and compound assignment keep auto auto.
    EXPECT_TRUE((automatic + 1).isAuto());
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
