// Tests of ZkValue arithmetic with its mixed-unit rules, the list-wide operations and the
// comparisons.
#include "zkcommon/values/value.h"

#include <cmath>
#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

namespace {

std::string describe(const ZkValue& value) {
    std::string s;
    return "type " + std::to_string(value.getValueType()) + " unit " +
           std::to_string(value.getUnitType()) + " [" + value.toString().toUTF8String(s) + "]";
}

::testing::AssertionResult isValue(const ZkValue& actual, ZkValueType type, ZkUnitType unit,
                                   float number) {
    bool ok = actual.getValueType() == type && actual.getUnitType() == unit;
    if (ok && type != ValueNull) {
        float x = actual.getRealValue(unit);
        ok = std::fabs(x - number) <= 1e-4f * std::fmax(1.0f, std::fabs(number));
    }
    if (ok)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << describe(actual) << ", expected type " << type
                                         << " unit " << unit << " value " << number;
}

::testing::AssertionResult isNull(const ZkValue& actual) {
    if (actual.isNull())
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << describe(actual) << ", expected Null";
}

const float kCm = 28.346457f;
const float kMm = 2.8346457f;

} // namespace

TEST(ZkValueArith, OperatorsByTheUnitRules) {
    struct Case {
        ZkValue actual;
        ZkValueType type; // ValueNull: no result
        ZkUnitType unit;
        float number;
    };
    // clang-format off
    const Case cases[] = {
        // zero has no dimension
        {ZkValue(0) + ZkValue(2, UnitCm), ValueInteger, UnitCm, 2},
        {ZkValue(2, UnitCm) + ZkValue(0), ValueInteger, UnitCm, 2},
        {ZkValue(0) - ZkValue(2, UnitCm), ValueInteger, UnitCm, -2},
        {ZkValue(2, UnitCm) - ZkValue(0), ValueInteger, UnitCm, 2},
        {ZkValue(0.0f) + ZkValue(1.5f, UnitEm), ValueReal, UnitEm, 1.5f},
        // mixed units add but do not subtract
        {ZkValue(2, UnitCm) + ZkValue(1, UnitMm), ValueReal, UnitPt, 2 * kCm + kMm},
        {ZkValue(2, UnitCm) - ZkValue(1, UnitMm), ValueNull, UnitNone, 0},
        {ZkValue(2, UnitCm) - ZkValue(1, UnitCm), ValueInteger, UnitCm, 1},
        {ZkValue(1) + ZkValue(1.5f), ValueReal, UnitNumber, 2.5f},
        {ZkValue(2, UnitPx) + ZkValue(3), ValueNull, UnitNone, 0},
        {ZkValue(2, UnitPx) + ZkValue(3, UnitEm), ValueNull, UnitNone, 0},
        {ZkValue(1, UnitS) + ZkValue(500, UnitMs), ValueReal, UnitMs, 1500},
        {ZkValue(2, UnitCm) - ZkValue(0.5f, UnitCm), ValueReal, UnitPt, 1.5f * kCm},
        {ZkValue(3, UnitPx) + ZkValue(4, UnitPx), ValueInteger, UnitPx, 7},
        // non numeric sides give null
        {ZkValue(u"a") + ZkValue(1), ValueNull, UnitNone, 0},
        {ZkValue(1) + ZkValue(u"a"), ValueNull, UnitNone, 0},
        {ZkValue(u"a") - ZkValue(0), ValueNull, UnitNone, 0},
        {ZkValue(ZKN_auto) * ZkValue(2), ValueNull, UnitNone, 0},
        {ZkValue() / ZkValue(2), ValueNull, UnitNone, 0},
        {ZkValue(4) % ZkValue(), ValueNull, UnitNone, 0},
        // integer overflow wraps
        {ZkValue(2147483647) + ZkValue(1), ValueInteger, UnitNumber, -2147483648.0f},
        // products
        {ZkValue(3) * ZkValue(2, UnitCm), ValueReal, UnitPt, 6 * kCm},
        {ZkValue(2, UnitPt) * ZkValue(3, UnitPt), ValueReal, UnitLength2, 6},
        {ZkValue(4, UnitPt) * (ZkValue(2, UnitPt) * ZkValue(3, UnitPt)), ValueReal, UnitLength3, 24},
        {ZkValue(50, UnitPercent) * ZkValue(4), ValueReal, UnitNumber, 2},
        {ZkValue(50, UnitPercent) * ZkValue(2, UnitCm), ValueReal, UnitPt, kCm},
        {ZkValue(2) * ZkValue(3), ValueReal, UnitNumber, 6},
        {ZkValue(2, UnitEm) * ZkValue(3, UnitPx), ValueNull, UnitNone, 0},
        {ZkValue(2) * ZkValue(90, UnitDeg), ValueReal, UnitDeg, 180},
        // quotients
        {ZkValue(6, UnitPt) / ZkValue(2, UnitPt), ValueReal, UnitNumber, 3},
        {ZkValue(6, UnitCm) / ZkValue(2), ValueReal, UnitPt, 3 * kCm},
        {ZkValue(6) / ZkValue(2, UnitPt), ValueNull, UnitNone, 0},
        {ZkValue(50, UnitPercent) / ZkValue(2), ValueReal, UnitNumber, 0.25f},
        {ZkValue(10, UnitPt) / ZkValue(50, UnitPercent), ValueReal, UnitPt, 20},
        {ZkValue(24.0f, UnitLength3) / ZkValue(2, UnitPt), ValueReal, UnitLength2, 12},
        {ZkValue(24.0f, UnitLength3) / ZkValue(6.0f, UnitLength2), ValueReal, UnitPt, 4},
        {ZkValue(6.0f, UnitLength2) / ZkValue(2, UnitPt), ValueReal, UnitPt, 3},
        {ZkValue(2, UnitPt) / ZkValue(6.0f, UnitLength2), ValueNull, UnitNone, 0},
        {ZkValue(2, UnitEm) / ZkValue(2, UnitPx), ValueNull, UnitNone, 0},
        // remainders
        {ZkValue(-4) % ZkValue(2), ValueInteger, UnitNumber, -2},
        {ZkValue(4) % ZkValue(2), ValueInteger, UnitNumber, 0},
        {ZkValue(-3) % ZkValue(2), ValueInteger, UnitNumber, -1},
        {ZkValue(7) % ZkValue(3), ValueInteger, UnitNumber, 1},
        {ZkValue(7) % ZkValue(-3), ValueInteger, UnitNumber, 1},
        {ZkValue(5.5f) % ZkValue(2), ValueReal, UnitNumber, 1.5f},
        {ZkValue(7, UnitPx) % ZkValue(4, UnitPx), ValueInteger, UnitPx, 3},
        {ZkValue(2, UnitCm) % ZkValue(1, UnitMm), ValueNull, UnitNone, 0},
        {ZkValue(0) % ZkValue(2, UnitCm), ValueNull, UnitNone, 0},
        {ZkValue(5) % ZkValue(0), ValueNull, UnitNone, 0},
        // Divides exactly with a negative dividend: minus the divisor, by the sign rule.
        {ZkValue(-2147483647 - 1) % ZkValue(-1), ValueInteger, UnitNumber, 1},
        // unary minus and abs
        {-ZkValue(3, UnitPx), ValueInteger, UnitPx, -3},
        {-ZkValue(u"x"), ValueNull, UnitNone, 0},
        {ZkValue(-3, UnitPx).abs(), ValueInteger, UnitPx, 3},
        {ZkValue(-2.5f, UnitEm).abs(), ValueReal, UnitEm, 2.5f},
        {ZkValue(ZKN_auto).abs(), ValueNull, UnitNone, 0},
        // rounding
        {ZkValue(2.5f, UnitCm).round(), ValueNull, UnitNone, 0},
        {ZkValue(2.5f).round(), ValueReal, UnitNumber, 3},
        {ZkValue(-2.5f).round(), ValueReal, UnitNumber, -2},
        {ZkValue(-0.5f).round(), ValueReal, UnitNumber, 0},
        {ZkValue(2.7f).floor(), ValueReal, UnitNumber, 2},
        {ZkValue(-2.2f).floor(), ValueReal, UnitNumber, -3},
        {ZkValue(2.2f).ceiling(), ValueReal, UnitNumber, 3},
        {ZkValue(7).round(), ValueInteger, UnitNumber, 7},
        {ZkValue(u"2").floor(), ValueNull, UnitNone, 0},
    };
    // clang-format on
    int index = 0;
    for (const Case& c : cases) {
        SCOPED_TRACE(index++);
        EXPECT_TRUE(c.type == ValueNull ? isNull(c.actual)
                                        : isValue(c.actual, c.type, c.unit, c.number));
    }
}

TEST(ZkValueArith, ChainsInfinityAndSignedZero) {
    ZkValue cube = ZkValue(2, UnitPt) * ZkValue(3, UnitPt) * ZkValue(4, UnitPt);
    EXPECT_TRUE(isValue(cube, ValueReal, UnitLength3, 24));
    EXPECT_TRUE(isNull(cube * ZkValue(1, UnitPt)));
    ZkValue infinite = ZkValue(1) / ZkValue(0);
    EXPECT_TRUE(infinite.isReal());
    EXPECT_TRUE(std::isinf(infinite.getRealValue(UnitNumber)));
    ZkValue negativeZero = -ZkValue(0.0f, UnitPt);
    EXPECT_TRUE(std::signbit(negativeZero.getRealValue(UnitPt)));
    EXPECT_TRUE(std::signbit(ZkValue(-0.0f).abs().getRealValue(UnitNumber)));
}

TEST(ZkValueArith, RadianFactorsDifferInTheLastBit) {
    ZkValue normalized(1.0f, UnitRad);
    normalized.normalizeUnit();
    EXPECT_EQ(normalized.getRealValue(UnitDeg), 57.295776f);
    EXPECT_EQ(ZkValue(1.0f, UnitRad).getRealValue(UnitDeg), 57.29578f);
    EXPECT_NE(57.295776f, 57.29578f);
    // Degrees to grads uses the radian factor.
    EXPECT_NEAR(ZkValue(90.0f, UnitDeg).getRealValue(UnitGrad), 1.5708f, 1e-4f);
}

TEST(ZkValueArith, EachItemOperations) {
    ZkValue list;
    list.addItem(ZkValue(2, UnitPt));
    list.addItem(ZkValue(50, UnitPercent));
    list.addItem(ZkValue(4));
    ZkValue doubled(list);
    doubled.multipleEachItem(ZkValue(2));
    ASSERT_EQ(doubled.getArrayCount(), 3);
    EXPECT_TRUE(isValue(doubled.getNthItem(0), ValueReal, UnitPt, 4));
    EXPECT_TRUE(isValue(doubled.getNthItem(1), ValueReal, UnitPercent, 100));
    EXPECT_TRUE(isValue(doubled.getNthItem(2), ValueReal, UnitNumber, 8));
    EXPECT_EQ(list.getArrayCount(), 3); // the copy shares, but the result is a new array
    EXPECT_TRUE(isValue(list.getNthItem(0), ValueInteger, UnitPt, 2));

    ZkValue halved(list);
    halved.devideEachItem(ZkValue(50, UnitPercent));
    // Against a percentage, a length reads as no percentage figure at all.
    EXPECT_EQ(halved.getNthItem(0).getUnitType(), UnitPercent);
    EXPECT_TRUE(std::isnan(halved.getNthItem(0).getRealValue(UnitPercent)));
    EXPECT_TRUE(isValue(halved.getNthItem(1), ValueReal, UnitPercent, 100));
    EXPECT_TRUE(isValue(halved.getNthItem(2), ValueReal, UnitPercent, 800));

    ZkValue percent(50, UnitPercent);
    percent.multipleEachItem(ZkValue(50, UnitPercent2));
    EXPECT_TRUE(std::isnan(percent.getRealValue(UnitPercent)));

    ZkValue inverted(list);
    inverted.invertItem();
    EXPECT_TRUE(isValue(inverted.getNthItem(0), ValueInteger, UnitPt, -2));
    EXPECT_TRUE(isValue(inverted.getNthItem(2), ValueInteger, UnitNumber, -4));
    ZkValue scalar(3, UnitEm);
    scalar.invertItem();
    EXPECT_TRUE(isValue(scalar, ValueInteger, UnitEm, -3));
}

TEST(ZkValueArith, ConcatAndSum) {
    ZkValue list;
    list.addItem(ZkValue(u"a"));
    list.addItem(ZkValue(2, UnitPx));
    list.addItem(ZkValue(ZKN_auto));
    list.concatEachItem();
    EXPECT_TRUE(list.isUnknownString());
    EXPECT_EQ(list.toString(), UnicodeString(u"a2pxauto"));
    ZkValue scalar(3, UnitPt);
    scalar.concatEachItem();
    EXPECT_EQ(scalar, ZkValue(u"3pt"));

    ZkValue sum;
    sum.addItem(ZkValue(50, UnitPercent));
    sum.addItem(ZkValue(10, UnitPt));
    EXPECT_TRUE(isValue(sum.sumItem(ZkValue(100, UnitPt)), ValueReal, UnitPt, 60));
    EXPECT_TRUE(
        isValue(ZkValue(25, UnitPercent).sumItem(ZkValue(1, UnitIn)), ValueReal, UnitPt, 18));
    EXPECT_TRUE(isValue(ZkValue(5, UnitPt).sumItem(ZkValue(1, UnitIn)), ValueInteger, UnitPt, 5));
    ZkValue empty;
    empty.makeArray();
    EXPECT_TRUE(isNull(empty.sumItem(ZkValue(1))));
}

TEST(ZkValueCompare, Equality) {
    EXPECT_TRUE(ZkValue() == ZkValue());
    EXPECT_TRUE(ZkValue(2) == ZkValue(2));
    EXPECT_FALSE(ZkValue(2) == ZkValue(2, UnitPx));
    EXPECT_TRUE(ZkValue(1, UnitIn) == ZkValue(72.0f, UnitPt));
    EXPECT_TRUE(ZkValue(2) == ZkValue(2.0f));
    EXPECT_FALSE(ZkValue(std::nanf("")) == ZkValue(std::nanf("")));
    EXPECT_TRUE(ZkValue(u"auto") == ZkValue(ZKN_auto));
    EXPECT_TRUE(ZkValue(ZKN_auto) == ZkValue(u"auto", UnitLiteral));
    EXPECT_FALSE(ZkValue(u"a") == ZkValue(u"a", UnitLiteral));
    EXPECT_TRUE(ZkValue(u"a", UnitUri) == ZkValue(u"a", UnitUri));
    EXPECT_FALSE(ZkValue(u"1") == ZkValue(1));
    EXPECT_TRUE(ZkValue(2) != ZkValue(3));
    ZkPtr<ZkValueArray> array(new ZkValueArray());
    EXPECT_TRUE(ZkValue(array.get()) == ZkValue(array.get()));
    EXPECT_FALSE(ZkValue(array.get()) == ZkValue(new ZkValueArray()));
    ZkValue a;
    a.setNamedItem(ZkName(ZKN_minimum), ZkValue(1));
    ZkValue b;
    b.setNamedItem(ZkName(ZKN_minimum), ZkValue(1));
    EXPECT_TRUE(a == b);
    b.setNamedItem(ZkName(ZKN_minimum), ZkValue(2));
    EXPECT_FALSE(a == b);
}

TEST(ZkValueCompare, Ordering) {
    EXPECT_FALSE(ZkValue() < ZkValue());
    EXPECT_TRUE(ZkValue(1) < ZkValue(2));
    EXPECT_TRUE(ZkValue(1.0f) < ZkValue(2));
    EXPECT_TRUE(ZkValue(1, UnitCm) < ZkValue(1, UnitIn));
    // Different units after normalising order by unit number: em (3) before pt (9).
    EXPECT_TRUE(ZkValue(100, UnitEm) < ZkValue(1, UnitPt));
    EXPECT_TRUE(ZkValue(u"abc") < ZkValue(u"abd"));
    EXPECT_TRUE(ZkValue(ZKN_auto) < ZkValue(u"b"));
    EXPECT_TRUE(ZkValue(u"a") < ZkValue(ZKN_auto));
    // Otherwise by type, then by unit.
    EXPECT_TRUE(ZkValue() < ZkValue(1));
    EXPECT_TRUE(ZkValue(1) < ZkValue(u"1"));
    EXPECT_TRUE(ZkValue(u"b") < ZkValue(u"a", UnitLiteral));
    EXPECT_TRUE(ZkValue(1) <= ZkValue(1.0f));
    EXPECT_TRUE(ZkValue(2) > ZkValue(1));
    EXPECT_TRUE(ZkValue(2) >= ZkValue(2));
    EXPECT_FALSE(ZkValue(1) >= ZkValue(2));
}
