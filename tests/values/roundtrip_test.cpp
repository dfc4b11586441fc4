// Round trips: for 10,000 generated values of every printable type and unit, the value parser
// reads ZkValue::toString() back to an equal value; for colours of every model, parseColor
// reads ZkColor::toString() back to an equal colour.
#include "support.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/parser.h"

#include <gtest/gtest.h>
#include <random>

using namespace ZkCommonNS;

namespace {

// The units with a word: the ones a number can carry through text. 55 prints as "%" and reads
// back as 2, so it is left out.
std::vector<ZkUnitType> wordedUnits() {
    std::vector<ZkUnitType> units;
    for (int u = UnitPercent; u < kUnitTypeCount; ++u)
        if (u != 55 && !ZkValue::getUnitString(static_cast<ZkUnitType>(u)).isEmpty())
            units.push_back(static_cast<ZkUnitType>(u));
    return units;
}

class Generator {
public:
    explicit Generator(uint32_t seed) : m_random(seed), m_units(wordedUnits()) {}

    int pick(int n) { return std::uniform_int_distribution<int>(0, n - 1)(m_random); }

    // A float that prints in at most six digits without an exponent, so that %g keeps it.
    float niceReal() {
        int digits = pick(6) + 1;
        int scale = pick(digits);
        int mantissa = pick(1000000) % static_cast<int>(std::pow(10, digits));
        double x = mantissa / std::pow(10.0, scale);
        if (x != 0.0 && x < 0.01)
            x = 0.5;
        return static_cast<float>(pick(2) ? -x : x);
    }
    float fraction() { return static_cast<float>(pick(101)) / 100.0f; }

    UnicodeString name() {
        static const char16_t kStart[] = u"abcdefghijklmnopqrstuvwxyzABCXYZ_\u00E9\u6F22";
        static const char16_t kRest[] = u"abcxyz0129-._\u00B7";
        UnicodeString text(kStart[pick(sizeof(kStart) / 2 - 1)]);
        for (int n = pick(8); n > 0; --n)
            text.append(kRest[pick(sizeof(kRest) / 2 - 1)]);
        return text;
    }

    UnicodeString literal() {
        static const char16_t kChars[] = u"ab \"'\\;{}:#,.-\n\u00E9\U0001F600x";
        UnicodeString text;
        for (int n = pick(10); n > 0; --n) {
            int i = pick(sizeof(kChars) / 2 - 1);
            // the emoji is two units: take it whole
            if (U16_IS_TRAIL(kChars[i]))
                --i;
            text.append(kChars[i]);
            if (U16_IS_LEAD(kChars[i]))
                text.append(kChars[i + 1]);
        }
        return text;
    }

    ZkValue scalar(bool inContainer) {
        switch (pick(inContainer ? 8 : 6)) {
        case 0:
            return ZkValue(pick(2) ? pick(2000001) - 1000000 : (pick(2) ? INT32_MIN : INT32_MAX));
        case 1:
            return ZkValue(niceReal(), UnitNumber);
        case 2:
            return ZkValue(niceReal(), m_units[pick(static_cast<int>(m_units.size()))]);
        case 3:
            return ZkValue(pick(100000) - 50000, m_units[pick(static_cast<int>(m_units.size()))]);
        case 4:
            return ZkValue(ZkName(name()));
        case 5:
            return ZkValue(ZkColor(static_cast<unsigned>(pick(0x1000000))));
        case 6:
            return ZkValue(literal(), UnitLiteral);
        default: {
            static const char16_t kChars[] = u",/*=!@()?&|~^[]<>";
            return ZkValue(static_cast<int>(kChars[pick(sizeof(kChars) / 2 - 1)]), UnitChar);
        }
        }
    }

    ZkValue array(int depth) {
        ZkValue v;
        for (int n = pick(4) + 2; n > 0; --n)
            v.addItem(depth < 3 && pick(6) == 0 ? compound(depth + 1) : scalar(true));
        return v;
    }

    ZkValue compound(int depth) {
        ZkPtr<ZkNamedValueMap> map(new ZkNamedValueMap());
        for (int n = pick(4); n > 0; --n) {
            ZkName key = pick(5) == 0 ? ZkName() : ZkName(name());
            int kind = depth < 3 ? pick(4) : pick(2);
            map->setNamedItem(key, kind == 0   ? scalar(true)
                                   : kind == 1 ? array(depth + 1)
                                               : compound(depth + 1));
        }
        return ZkValue(map.get());
    }

    ZkValue value() {
        switch (pick(4)) {
        case 0:
        case 1:
            return scalar(false);
        case 2:
            return array(0);
        default:
            return compound(0);
        }
    }

    ZkColor color() {
        ZkColor base(static_cast<unsigned>(pick(0x1000000)));
        ZkColor c;
        switch (pick(14)) {
        case 0:
            return base;
        case 1:
            c = base;
            c.setAlpha(fraction(), true);
            return c;
        case 2:
            c.setRGBex(fraction(), fraction(), fraction(), true);
            if (pick(2))
                c.setAlpha(fraction(), true);
            return c;
        case 3:
            c.setHSL(static_cast<float>(pick(720) - 360), fraction(), fraction(), true);
            if (pick(2))
                c.setAlpha(fraction(), true);
            return c;
        case 4:
            c = ZkColor(fraction(), fraction(), fraction(), fraction());
            if (pick(2))
                c.setAlpha(fraction(), true);
            return c;
        case 5:
            return ZkColor(base, fraction(), fraction(), fraction(), fraction());
        case 6:
            return ZkColor(fraction());
        case 7:
            return ZkColor(base, fraction());
        case 8:
            return ZkColor(name(), fraction());
        case 9:
            return ZkColor(name(), fraction(), fraction(), fraction(), fraction(), fraction());
        case 10:
            return ZkColor(base, pick(4) ? name() : UnicodeString(u"All"), fraction());
        case 11:
            return ZkColor(base, name(), fraction(), fraction(), fraction(), fraction(),
                           fraction());
        case 12:
            return ZkColor(base, name(), niceReal(), niceReal(), niceReal(), niceReal());
        default:
            return ZkColor(base, u"ALL", fraction(), fraction(), fraction(), fraction(),
                           fraction());
        }
    }

private:
    std::mt19937 m_random;
    std::vector<ZkUnitType> m_units;
};

// Equal item by item: scalars by ZkValue's equality, arrays in order, compounds key by key.
::testing::AssertionResult sameValue(const ZkValue& expected, const ZkValue& actual) {
    if (expected.isArray() || expected.isCompound()) {
        if (expected.getValueType() != actual.getValueType())
            return ::testing::AssertionFailure() << "kind differs";
        if (expected.isArray()) {
            if (expected.getArrayCount() != actual.getArrayCount())
                return ::testing::AssertionFailure() << "count differs";
            for (int i = 0; i < expected.getArrayCount(); ++i) {
                auto r = sameValue(expected.getNthItem(i), actual.getNthItem(i));
                if (!r)
                    return r << " in item " << i;
            }
            return ::testing::AssertionSuccess();
        }
        if (expected.getNamedValueMap()->getCount() != actual.getNamedValueMap()->getCount())
            return ::testing::AssertionFailure() << "key count differs";
        ZkNamedValueMapIterator it(expected.getNamedValueMap());
        while (it.hasNext()) {
            const ZkNamedValue& item = it.next();
            auto r = sameValue(item.getValue(), actual.getNamedItem(item.getName()));
            if (!r)
                return r << " under " << utf8(item.getName().toString());
        }
        return ::testing::AssertionSuccess();
    }
    if (expected == actual)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure()
           << utf8(expected.toString()) << " read back as " << utf8(actual.toString()) << " (type "
           << actual.getValueType() << ", unit " << actual.getUnitType() << ")";
}

} // namespace

TEST(ValueRoundTrip, ParseOfToStringGivesTheValueBack) {
    Generator gen(20261125u);
    int kinds[8] = {};
    for (int i = 0; i < 10000; ++i) {
        ZkValue v = gen.value();
        ++kinds[v.getValueType()];
        UnicodeString text = v.toString();
        ZkValue back = ZkParser::parseCompound(text);
        ASSERT_TRUE(sameValue(v, back)) << "value " << i << ": " << utf8(text);
        ASSERT_EQ(utf8(text), utf8(back.toString())) << "value " << i;
    }
    for (ZkValueType type : {ValueInteger, ValueReal, ValueName, ValueArray, ValueCompound})
        EXPECT_GT(kinds[type], 100) << "type " << type;
}

TEST(ValueRoundTrip, ColoursOfEveryModel) {
    Generator gen(7u);
    for (int i = 0; i < 10000; ++i) {
        ZkColor c = gen.color();
        UnicodeString text = c.toString();
        ZkValue back = ZkParser::parseColor(text, /*allowIcc=*/false);
        ASSERT_TRUE(back.isColor()) << "colour " << i << ": " << utf8(text);
        ASSERT_EQ(c, back.getColorValue(true))
            << "colour " << i << ": " << utf8(text) << " as " << utf8(back.toString());
        // Through ZkValue and back as well.
        ASSERT_EQ(c, ZkValue(c).getColorValue(true)) << "colour " << i << ": " << utf8(text);
    }
}
