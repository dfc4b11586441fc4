// Tests of ZkValue: layout, construction and tags, predicates, conversions, printing, lists
// and compounds; of ZkNamedValue, ZkValueArray, ZkBool, ZkInt and ZkName from a value.
#include "support.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/value.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <sstream>
#include <string>

using namespace ZkCommonNS;

namespace {

// An object that says when it dies.
class Probe : public ZkRCObject {
    ZK_DECLARE_TYPE(Probe, ZkRCObject, 0x12345678u, "Probe")
public:
    explicit Probe(bool* dead) : m_dead(dead) {}
    ~Probe() override { *m_dead = true; }

private:
    bool* m_dead;
};

// A unit by its printed word; "number" and "none" for the two without one, "%2" for the second
// percentage.
ZkUnitType unitOf(const std::string& word) {
    if (word.empty() || word == "number")
        return UnitNumber;
    if (word == "none" || word == "%2")
        return word == "none" ? UnitNone : UnitPercent2;
    for (int u = 0; u < kUnitTypeCount; ++u)
        if (utf8(ZkValue::getUnitString(static_cast<ZkUnitType>(u))) == word)
            return static_cast<ZkUnitType>(u);
    ADD_FAILURE() << "no unit " << word;
    return UnitNone;
}

// "-" is Null, 'text' a string, otherwise a number and a unit word: a real when the number has a
// point or an exponent, or is nan.
ZkValue valueOf(const std::string& text) {
    if (text == "-")
        return ZkValue();
    if (text[0] == '\'')
        return ZkValue(UnicodeString::fromUTF8(text.substr(1, text.size() - 2)));
    const size_t space = text.find(' ');
    const std::string number = text.substr(0, space);
    const ZkUnitType unit = unitOf(space == std::string::npos ? "" : text.substr(space + 1));
    if (number.find_first_of(".en") != std::string::npos)
        return ZkValue(std::stof(number), unit);
    return ZkValue(std::stoi(number), unit);
}

} // namespace

static_assert(sizeof(ZkValue) == 16, "two machine words");
static_assert(ZkValue::bitfield(ValueName, UnitName) == 187, "the tag of a name");

TEST(ZkValue, ConstructorsSetTypeAndUnit) {
    struct Case {
        const char* what;
        ZkValue value;
        ZkValueType type;
        ZkUnitType unit;
    } cases[] = {
        {"null", ZkValue(), ValueNull, UnitNone},
        {"int", ZkValue(5), ValueInteger, UnitNumber},
        {"unsigned", ZkValue(5u), ValueInteger, UnitNumber},
        {"long", ZkValue(5L), ValueInteger, UnitNumber},
        {"long long", ZkValue(5LL), ValueInteger, UnitNumber},
        {"size", ZkValue(sizeof(int)), ValueInteger, UnitNumber},
        {"int unit", ZkValue(5, UnitPx), ValueInteger, UnitPx},
        {"float", ZkValue(1.5f, UnitCm), ValueReal, UnitCm},
        {"double", ZkValue(1.5, UnitMm), ValueReal, UnitMm},
        {"length", ZkValue(ZkLength(3)), ValueReal, UnitPt},
        {"name", ZkValue(ZkName(ZKN_auto)), ValueName, UnitName},
        {"name enum", ZkValue(ZKN_auto), ValueName, UnitName},
        {"bool", ZkValue(true), ValueName, UnitName},
        {"string", ZkValue(UnicodeString(u"x"), UnitLiteral), ValueString, UnitLiteral},
        {"u16", ZkValue(u"x"), ValueString, UnitNone},
        {"utf8", ZkValue("x", UnitUri), ValueString, UnitUri},
        {"chars", ZkValue::fromChars(u"xyz", 2, UnitUri), ValueString, UnitUri},
        {"no chars", ZkValue::fromChars(nullptr, 5), ValueString, UnitNone},
        {"array", ZkValue(new ZkValueArray()), ValueArray, UnitNone},
        {"map", ZkValue(new ZkNamedValueMap()), ValueCompound, UnitNone},
        {"null object", ZkValue(static_cast<ZkRCObject*>(nullptr)), ValueNull, UnitNone},
        {"null array", ZkValue(static_cast<ZkValueArray*>(nullptr)), ValueNull, UnitNone},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.what);
        EXPECT_EQ(k.value.getValueType(), k.type);
        EXPECT_EQ(k.value.getUnitType(), k.unit);
    }
}

TEST(ZkValue, CopyAndMoveFollowOwnership) {
    ZkValue text(UnicodeString(u"abc"));
    ZkValue copy(text);
    EXPECT_EQ(copy.toString(), UnicodeString(u"abc"));
    ZkValue moved(std::move(copy));
    EXPECT_TRUE(copy.isNull()); // NOLINT: the moved-from value is Null by contract
    EXPECT_EQ(moved.toString(), UnicodeString(u"abc"));
    ZkValue assigned;
    assigned = moved;
    assigned = assigned;
    EXPECT_EQ(assigned.toString(), UnicodeString(u"abc"));
    assigned.clear();
    EXPECT_TRUE(assigned.isNull());

    bool dead = false;
    {
        ZkValue object(new Probe(&dead));
        EXPECT_EQ(object.getRCObject()->getRefCount(), 1);
        ZkValue second(object);
        EXPECT_EQ(object.getRCObject()->getRefCount(), 2);
        EXPECT_EQ(second.toString(), UnicodeString(u"##Probe"));
        object = ZkValue(7);
        EXPECT_FALSE(dead);
    }
    EXPECT_TRUE(dead);
}

TEST(ZkValue, AssigningAnItemOfItsOwnArray) {
    ZkValue list;
    list.addItem(ZkValue(u"first"));
    list.addItem(ZkValue(u"second"));
    const ZkValue& inside = list.getValueArray()->itemRef(1);
    list = inside; // the array dies during the assignment
    EXPECT_EQ(list.toString(), UnicodeString(u"second"));
}

TEST(ZkValue, Predicates) {
    // A bool is a name; true and yes are true, false and no false, nothing else either.
    EXPECT_EQ(ZkValue(false).getNameValue(), ZkName(ZKN_false));
    EXPECT_TRUE(ZkValue(true).isTrue() && ZkValue(ZKN_yes).isTrue() && ZkValue::isTrue(ZKN_yes));
    EXPECT_TRUE(ZkValue(false).isFalse() && ZkValue(ZKN_no).isFalse());
    EXPECT_FALSE(ZkValue(1).isTrue() || ZkValue(u"true").isTrue() || ZkValue::isTrue(ZKN_no));
    ZkValue character(0x41, UnitChar);
    EXPECT_TRUE(character.isNumeric());
    EXPECT_FALSE(character.isNumericalValue());
    EXPECT_EQ(character.getCharacterValue(), 0x41);
    EXPECT_EQ(ZkValue(5).getCharacterValue(), -1);
    EXPECT_TRUE(ZkValue(5, UnitPercent2).isPercentage());
    EXPECT_TRUE(ZkValue(1.0f, UnitTwip).isAbsoluteLength());
    EXPECT_TRUE(ZkValue(1.0f, UnitIc).isRelativeLength());
    EXPECT_FALSE(ZkValue(1.0f, UnitDpcm).isRelativeLength());
    EXPECT_TRUE(ZkValue(0xFF0000, UnitColor).isColor());
    EXPECT_FALSE(ZkValue(u"red", UnitColor).isColor());
    EXPECT_TRUE(ZkValue(-1.0f, UnitPt).isNegativeValue());
    EXPECT_FALSE(ZkValue(-1, UnitChar).isNegativeValue());
    EXPECT_TRUE(ZkValue(0).isNumberZero());
    EXPECT_TRUE(ZkValue(0.0f).isNumberZero());
    EXPECT_FALSE(ZkValue(0.0f, UnitPt).isNumberZero());
    EXPECT_TRUE(ZkValue().isEmpty());
    EXPECT_TRUE(ZkValue(ZKN_EMPTY).isEmpty());
    EXPECT_TRUE(ZkValue(u"").isEmpty());
    EXPECT_FALSE(ZkValue(u" ").isEmpty());
    EXPECT_FALSE(ZkValue(0).isEmpty());
    EXPECT_FALSE(ZkValue(new ZkValueArray()).isEmpty());
}

TEST(ZkValue, ContainersAndObjects) {
    // Each container answers only for its own kind.
    EXPECT_EQ(ZkValue(new ZkValueArray()).getNamedValueMap(), nullptr);
    EXPECT_EQ(ZkValue(new ZkNamedValueMap()).getValueArray(), nullptr);
    EXPECT_EQ(ZkValue(5).getRCObject(), nullptr);
    EXPECT_EQ(ZkValue().getArrayCount(), 0);
    EXPECT_EQ(ZkValue(5).getArrayCount(), 1);
    // An Array tag without a pointer is no array.
    ZkValue hollow;
    hollow.setValueUnitType(ValueArray);
    EXPECT_FALSE(hollow.isArray());
    EXPECT_FALSE(hollow.isRCObject());
    EXPECT_EQ(hollow.getArrayCount(), 1);
    EXPECT_EQ(hollow.toString(), UnicodeString());
    // Nor is a Compound tag without a map: it prints nothing and has no length.
    hollow.setValueUnitType(ValueCompound);
    EXPECT_EQ(hollow.toString(), UnicodeString());
    EXPECT_TRUE(hollow.getLengthValue().isAuto());
}

TEST(ZkValue, IntegerConversion) {
    EXPECT_EQ(ZkValue(7).getIntegerValue(0), 7);
    EXPECT_EQ(ZkValue(2.5f).getIntegerValue(0), 3);
    EXPECT_EQ(ZkValue(-2.5f).getIntegerValue(0), -2);
    EXPECT_EQ(ZkValue(1e20f).getIntegerValue(0), 2147483647);
    EXPECT_EQ(ZkValue(-1e20f).getIntegerValue(0), std::numeric_limits<int>::min());
    EXPECT_EQ(ZkValue(std::nanf("")).getIntegerValue(-9), -9);
    EXPECT_EQ(ZkValue(u"12").getIntegerValue(-1), -1);
    EXPECT_EQ(ZkValue(3.7f, UnitCm).getIntegerValue(0), 4);
}

// tests/data/values/conversions.tsv: getRealValue into every unit family, and normalizeUnit.
TEST(ZkValue, RealValueConversionsAndNormalizing) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/values/conversions.tsv");
    ASSERT_GT(rows.size(), 35u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 4u);
        SCOPED_TRACE(row[0] + " " + row[1] + " " + row[2]);
        ZkValue value = valueOf(row[1]);
        std::istringstream expected(row[3]);
        std::string type = "real", unit = row[2], number;
        if (row[0] == "normalize") {
            value.normalizeUnit();
            expected >> type >> unit;
            EXPECT_EQ(type == "real" ? ValueReal : ValueInteger, value.getValueType());
            EXPECT_EQ(unitOf(unit), value.getUnitType());
        }
        expected >> number;
        const float actual = value.getRealValue(unitOf(unit));
        if (number == "nan")
            EXPECT_TRUE(std::isnan(actual)) << actual;
        else
            EXPECT_FLOAT_EQ(actual, std::stof(number));
    }
    ZkValue text(u"x");
    text.normalizeUnit();
    EXPECT_TRUE(text.isString());
}

TEST(ZkValue, LengthConversion) {
    EXPECT_EQ(static_cast<float>(ZkValue(3.0f, UnitPt).getLengthValue()), 3.0f);
    EXPECT_EQ(static_cast<float>(ZkValue(1, UnitIn).getLengthValue()), 72.0f);
    EXPECT_TRUE(ZkValue(0).getLengthValue(false).isAuto());
    EXPECT_TRUE(ZkValue(0).getLengthValue(true).isZero());
    EXPECT_TRUE(ZkValue(1).getLengthValue(true).isAuto());
    EXPECT_TRUE(ZkValue(1.0f, UnitEm).getLengthValue(true).isAuto());
    EXPECT_TRUE(ZkValue(u"1pt").getLengthValue().isAuto());

    ZkValue range;
    range.setNamedItem(ZkName(ZKN_minimum), ZkValue(1.0f, UnitPt));
    range.setNamedItem(ZkName(ZKN_optimum), ZkValue(2.0f, UnitPt));
    EXPECT_EQ(static_cast<float>(range.getLengthValue()), 2.0f);
    range.setNamedItem(ZkName(), ZkValue(3.0f, UnitPt));
    EXPECT_EQ(static_cast<float>(range.getLengthValue()), 3.0f);
    range.setNamedItem(ZkName(ZKN_length), ZkValue(4.0f, UnitPt));
    EXPECT_EQ(static_cast<float>(range.getLengthValue()), 4.0f);
    ZkValue noLength;
    noLength.setNamedItem(ZkName(ZKN_minimum), ZkValue(1.0f, UnitPt));
    EXPECT_TRUE(noLength.getLengthValue().isAuto());
}

TEST(ZkValue, NamesAndStrings) {
    ZkValue name(ZKN_auto);
    EXPECT_EQ(name.getNameValue(), ZkName(ZKN_auto));
    EXPECT_EQ(name.getStringValue(), UnicodeString(u"auto"));
    EXPECT_EQ(name.toZkName(), ZkName(ZKN_auto));
    EXPECT_TRUE(ZkValue(5).getNameValue().isEmpty());
    EXPECT_EQ(ZkValue(5, UnitPx).toZkName().toString(), UnicodeString(u"5px"));
    EXPECT_EQ(ZkValue(ZkName(UnicodeString(u"Bold"))).getLowerNameValue(), ZkName(ZKN_bold));
    EXPECT_TRUE(ZkValue(u"Bold").getLowerNameValue().isEmpty());
    EXPECT_EQ(ZkValue(u"text").getStringValue(), UnicodeString(u"text"));
    EXPECT_TRUE(ZkValue(5).getStringValue().isEmpty());
    EXPECT_EQ(UnicodeString(ZkValue(u"x")), UnicodeString(u"x"));
    EXPECT_EQ(ZkName(ZkValue(ZKN_auto)), ZkName(ZKN_auto));
    EXPECT_EQ(ZkName(ZkValue(u"auto")), ZkName(ZKN_auto));
    EXPECT_EQ(ZkName(ZkValue(12, UnitPt)).toString(), UnicodeString(u"12pt"));
    EXPECT_TRUE(ZkName(ZkValue()).isEmpty());
}

// clang-format off
TEST(ZkValue, ToStringForms) {
    struct Case {
        ZkValue value;
        const char16_t* expected;
    } cases[] = {
        {ZkValue(), u""}, {ZkValue(12), u"12"}, {ZkValue(-3, UnitPx), u"-3px"},
        {ZkValue(50, UnitPercent2), u"50%"},
        {ZkValue(0x3042, UnitChar), u"\u3042"},
        {ZkValue(0x1F600, UnitChar), u"\U0001F600"},
        {ZkValue(1.5f, UnitCm), u"1.5cm"},
        {ZkValue(0.1f), u"0.1"},
        {ZkValue(1234567.0f, UnitPt), u"1.23457e+06pt"},
        {ZkValue(std::nanf(""), UnitPt), u"nan"},
        {ZkValue(2.0f, UnitLength2), u"2"},
        {ZkValue(ZKN_auto), u"auto"},
        {ZkValue(u"quoted", UnitLiteral), u"quoted"},
        {ZkValue(0x00FF80, UnitColor), u"#00FF80"},
    };
    int index = 0;
    for (const Case& k : cases) {
        SCOPED_TRACE(index++);
        EXPECT_EQ(utf8(k.value.toString()), utf8(UnicodeString(k.expected)));
    }
    EXPECT_EQ(ZkValue(u"MiXed").toString(true), UnicodeString(u"mixed"));
    EXPECT_EQ(ZkValue(u"MiXed").toString(false), UnicodeString(u"MiXed"));
}
// clang-format on

TEST(ZkValue, ListAndCompoundPrinting) {
    ZkValue list;
    list.addItem(ZkValue(1.0f, UnitPt));
    list.addItem(ZkValue(u"a b", UnitLiteral));
    list.addItem(ZkValue(u"x.png", UnitUri));
    list.addItem(ZkValue(ZKN_auto));
    EXPECT_EQ(utf8(list.toString()), "1pt \"a b\" url(\"x.png\") auto");

    ZkValue compound;
    compound.setNamedItem(ZkName(), ZkValue(1.0f, UnitPt));
    compound.setNamedItem(ZkName(ZKN_optimum), ZkValue(u"it's"));
    compound.setNamedItem(ZkName(ZKN_minimum), ZkValue());
    EXPECT_EQ(utf8(compound.toString()), "{.: 1pt; optimum: \"it's\"}");
}

TEST(ZkValue, QuotedForms) {
    ZkValue literal(u"a'b", UnitLiteral);
    ZkValue uri(u"a\"b.png", UnitUri);
    ZkValue unknown(u"plain");
    EXPECT_EQ(utf8(literal.toQuotedString(ZkUtil::QUOTE_XSL)), "\"a'b\"");
    EXPECT_EQ(utf8(unknown.toQuotedString(ZkUtil::QUOTE_XSL)), "plain");
    EXPECT_EQ(utf8(uri.toUrlString(ZkUtil::QUOTE_XSL)), "url('a\"b.png')");
    EXPECT_EQ(utf8(unknown.toUrlString(ZkUtil::QUOTE_XSL)), "\"plain\"");
    EXPECT_EQ(utf8(uri.toValueText(true, false)), "url(\"a%22b.png\")");
    EXPECT_EQ(utf8(literal.toValueText(false, false)), "\"a'b\"");
    EXPECT_EQ(utf8(ZkValue(u"a\nb", UnitLiteral).toCssText()), "\"a\\A b\"");
    EXPECT_EQ(utf8(unknown.toValueText(false, false)), "plain");
    EXPECT_EQ(utf8(unknown.toValueText(false, true)), "\"plain\"");
    EXPECT_EQ(utf8(ZkValue(3, UnitPx).toValueText(true, true)), "3px");
}

TEST(ZkValue, AddItemSharesThenMakesAList) {
    // The first addItem takes the value itself, so an array given to it stays shared.
    ZkValue inner;
    inner.addItem(ZkValue(1));
    inner.addItem(ZkValue(2));
    ZkValue outer;
    outer.addItem(inner);
    EXPECT_EQ(outer.getValueArray(), inner.getValueArray());
    // A list is made from the second item on.
    ZkValue value;
    value.addItem(ZkValue(1));
    EXPECT_TRUE(value.isInteger());
    EXPECT_EQ(value.getArrayCount(), 1);
    value.addItem(ZkValue(2));
    EXPECT_TRUE(value.isArray());
    EXPECT_EQ(value.getArrayCount(), 2);
    EXPECT_EQ(value.getNthItem(1), ZkValue(2));
    EXPECT_TRUE(value.getNthItem(2).isNull());
    EXPECT_TRUE(value.getNthItem(-1).isNull());
    ZkValue scalar(5);
    EXPECT_EQ(scalar.getNthItem(0), scalar);
    EXPECT_TRUE(scalar.getNthItem(1).isNull());
}

TEST(ZkValue, MakeArrayAndCompound) {
    ZkValue value(3);
    value.makeArray();
    EXPECT_TRUE(value.isArray());
    EXPECT_EQ(value.getArrayCount(), 1);
    ZkValueArray* array = value.getValueArray();
    value.makeArray();
    EXPECT_EQ(value.getValueArray(), array);
    ZkValue empty;
    empty.makeArray();
    EXPECT_TRUE(empty.isArray());
    EXPECT_EQ(empty.getArrayCount(), 0);

    ZkValue compound(2.0f, UnitPt);
    compound.makeCompound();
    EXPECT_TRUE(compound.isCompound());
    EXPECT_EQ(compound.getNamedItem(ZkName()), ZkValue(2.0f, UnitPt));
    EXPECT_TRUE(compound.getNamedItem(ZkName(ZKN_length)).isNull());
    ZkValue scalar(4);
    EXPECT_EQ(scalar.getNamedItem(ZkName()), scalar);
    EXPECT_TRUE(scalar.getNamedItem(ZkName(ZKN_length)).isNull());
}

TEST(ZkValue, RemoveNamedItemCollapses) {
    ZkValue value(1.0f, UnitPt);
    value.setNamedItem(ZkName(ZKN_minimum), ZkValue(0.5f, UnitPt));
    EXPECT_TRUE(value.isCompound());
    value.removeNamedItem(ZkName(ZKN_minimum), true);
    EXPECT_TRUE(value.isReal());
    EXPECT_EQ(value, ZkValue(1.0f, UnitPt));

    ZkValue other;
    other.setNamedItem(ZkName(ZKN_minimum), ZkValue(1));
    other.setNamedItem(ZkName(ZKN_maximum), ZkValue(2));
    other.removeNamedItem(ZkName(ZKN_minimum), true);
    EXPECT_TRUE(other.isNull());

    ZkValue kept;
    kept.setNamedItem(ZkName(ZKN_minimum), ZkValue(1));
    kept.setNamedItem(ZkName(ZKN_maximum), ZkValue(2));
    kept.removeNamedItem(ZkName(ZKN_minimum), false);
    EXPECT_TRUE(kept.isCompound());
    ZkValue scalar(3);
    scalar.removeNamedItem(ZkName(), true);
    EXPECT_EQ(scalar, ZkValue(3));
}

TEST(ZkValue, CloneOwnsFreshContainers) {
    ZkValue inner;
    inner.addItem(ZkValue(1));
    inner.addItem(ZkValue(2));
    ZkValue outer;
    outer.makeArray();
    outer.addItem(inner);
    outer.addItem(ZkValue(3));
    ZkValue copy = outer.clone();
    EXPECT_NE(copy.getValueArray(), outer.getValueArray());
    EXPECT_EQ(copy.getNthItem(0).getValueArray(), inner.getValueArray());
    copy.addItem(ZkValue(4));
    EXPECT_EQ(outer.getArrayCount(), 2);
    EXPECT_EQ(copy.getArrayCount(), 3);
    ZkValue plain(u"x");
    EXPECT_EQ(plain.clone(), plain);
}

TEST(ZkNamedValue, NameBitsTravelWithTheValue) {
    ZkNamedValue named(ZkValue(5, UnitPx), ZkName(ZKN_width));
    EXPECT_EQ(named.getName(), ZkName(ZKN_width));
    EXPECT_EQ(named.getUnitType(), UnitPx);
    EXPECT_EQ(named.getIntegerValue(0), 5);
    named.setValue(ZkValue(u"auto"));
    EXPECT_EQ(named.getName(), ZkName(ZKN_width));
    EXPECT_TRUE(named.isString());
    named.setName(ZkName(ZKN_height));
    EXPECT_EQ(named.getName(), ZkName(ZKN_height));
    EXPECT_TRUE(named.isString());
    // A value moved in keeps the name too, and the source is left Null.
    ZkValue moved = ZkValue::fromChars(u"12345", 3);
    named.setValue(std::move(moved));
    EXPECT_EQ(named.getName(), ZkName(ZKN_height));
    EXPECT_EQ(named.toString(), UnicodeString(u"123"));
    EXPECT_TRUE(moved.isNull()); // NOLINT(bugprone-use-after-move)
    EXPECT_TRUE(ZkValue::fromChars(u"abc", -1).isEmpty());
    ZkNamedValue copy(named);
    EXPECT_EQ(copy.getName(), ZkName(ZKN_height));
    EXPECT_TRUE(ZkNamedValue::NULL_VALUE.isNull());
    EXPECT_TRUE(ZkNamedValue::NULL_VALUE.getName().isEmpty());
    // A dynamic name far above the built-in ones fits the tag too.
    ZkName dynamic(UnicodeString(u"zk-test-dynamic-name"));
    named.setName(dynamic);
    EXPECT_EQ(named.getName(), dynamic);
}

TEST(ZkValueArray, ItemsAndBounds) {
    ZkPtr<ZkValueArray> array(new ZkValueArray());
    array->addItem(ZkValue(1));
    array->addItem(ZkValue(u"two"));
    EXPECT_EQ(array->getCount(), 2);
    EXPECT_EQ(array->item(1), ZkValue(u"two"));
    EXPECT_EQ(array->getNthItem(0), ZkValue(1));
    EXPECT_TRUE(array->item(-1).isNull());
    EXPECT_TRUE(array->item(2).isNull());
    array->setItem(0, ZkValue(9));
    array->setItem(5, ZkValue(9));
    EXPECT_EQ(array->item(0), ZkValue(9));
    ZkPtr<ZkValueArray> copy = array->clone();
    array->clear();
    EXPECT_EQ(array->getCount(), 0);
    EXPECT_EQ(copy->getCount(), 2);
}

TEST(ZkBoolAndZkInt, UndefinedStates) {
    ZkBool undefined;
    EXPECT_TRUE(undefined.isTrue(true));
    EXPECT_FALSE(undefined.isTrue(false));
    EXPECT_FALSE(undefined == false || undefined == true);
    EXPECT_TRUE(undefined == ZkBool());
    ZkBool yes(true);
    EXPECT_TRUE(yes.isTrue(false));
    EXPECT_FALSE(yes == ZkBool());

    ZkInt value;
    EXPECT_TRUE(value.isUndef());
    EXPECT_EQ(static_cast<int>(value), std::numeric_limits<int>::min());
    value = 5;
    EXPECT_FALSE(value.isUndef());
    value.setUndef();
    // The arithmetic looks at the raw number only.
    EXPECT_EQ(static_cast<int>(value + 1), std::numeric_limits<int>::min() + 1);
    EXPECT_EQ(static_cast<int>(value - 1), std::numeric_limits<int>::max());
}
