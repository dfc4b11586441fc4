// Tests of the number text functions of ZkUtil and of its space helpers.
#include "support.h"
#include "zkcommon/text/util.h"

#include <clocale>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <string>

using namespace ZkCommonNS;

TEST(ZkUtilNumbers, ParseDigitsAndHex) {
    UnicodeString text(u"12a345");
    EXPECT_EQ(ZkUtil::parseDigits(text, 0, 0), -1);
    EXPECT_EQ(ZkUtil::parseDigits(text, 0, 2), 12);
    EXPECT_EQ(ZkUtil::parseDigits(text, 3, 0), 345);
    EXPECT_EQ(ZkUtil::parseDigits(text, 3, -5), 345);
    EXPECT_EQ(ZkUtil::parseDigits(text, 3, 99), 345);
    EXPECT_EQ(ZkUtil::parseDigits(text, 3, std::numeric_limits<int>::max()), 345);
    EXPECT_EQ(ZkUtil::parseDigits(text, 6, 0), -1);
    EXPECT_EQ(ZkUtil::parseDigits(text, -1, 0), -1);
    EXPECT_EQ(ZkUtil::parseDigits(UnicodeString(), 0, 0), -1);
    EXPECT_EQ(ZkUtil::parseDigits(UnicodeString(u"99999999999"), 0, 0), -1);
    EXPECT_EQ(ZkUtil::parseDigits(UnicodeString(u"2147483647"), 0, 0), 2147483647);

    const char16_t* end = nullptr;
    const char16_t* spaced = u"  42px";
    EXPECT_EQ(ZkUtil::parseDigits(spaced, &end), 42);
    EXPECT_EQ(end, spaced + 4);
    const char16_t* none = u"  px";
    EXPECT_EQ(ZkUtil::parseDigits(none, &end), -1);
    EXPECT_EQ(end, none);

    const char16_t* hex = u" 1aF9g";
    EXPECT_EQ(ZkUtil::parseHexNum(hex, &end, 0), 0x1AF9u);
    EXPECT_EQ(end, hex + 5);
    EXPECT_EQ(ZkUtil::parseHexNum(hex, &end, 2), 0x1Au);
    EXPECT_EQ(end, hex + 3);
    EXPECT_EQ(ZkUtil::parseHexNum(u"xyz", &end, 0), 0u);
}

TEST(ZkUtilNumbers, ParseNumber) {
    struct Case {
        const char16_t* text;
        double value;
        int consumed;
        bool hasPoint;
        bool error;
    } cases[] = {
        {u"5.", 5.0, 2, true, false},      {u"5.5em", 5.5, 3, true, false},
        {u" -12", -12.0, 4, false, false}, {u"+.5", 0.5, 3, true, false},
        {u".5", 0.5, 2, true, false},      {u".x", 0.0, 0, false, true},
        {u"-", 0.0, 0, false, true},       {u"abc", 0.0, 0, false, true},
        {u"1e5", 1.0, 1, false, false},    {u"007", 7.0, 3, false, false},
        {u"1.2.3", 1.2, 3, true, false},
    };
    for (const Case& k : cases) {
        UnicodeString source(k.text);
        SCOPED_TRACE(utf8(source));
        const char16_t* end = nullptr;
        bool hasPoint = false;
        bool error = false;
        double value = ZkUtil::parseNumber(k.text, &end, &hasPoint, &error);
        EXPECT_DOUBLE_EQ(value, k.value);
        EXPECT_EQ(end - k.text, k.consumed);
        EXPECT_EQ(hasPoint, k.hasPoint);
        EXPECT_EQ(error, k.error);
    }
}

TEST(ZkUtilNumbers, OverlongNumberIsRefused) {
    std::u16string digits(120, u'1');
    const char16_t* end = nullptr;
    bool error = false;
    EXPECT_EQ(ZkUtil::parseNumber(digits.c_str(), &end, nullptr, &error), 0.0);
    EXPECT_EQ(end, digits.c_str());
    EXPECT_TRUE(error);
}

TEST(ZkUtilNumbers, IgnoresTheProcessLocale) {
    // A locale with a decimal comma, when the system has one; the C locale otherwise.
    const char* previous = std::setlocale(LC_NUMERIC, nullptr);
    std::string saved = previous ? previous : "C";
    bool switched = std::setlocale(LC_NUMERIC, "de_DE.UTF-8") != nullptr;
    EXPECT_EQ(utf8(ZkUtil::toString(1.5)), "1.5");
    EXPECT_DOUBLE_EQ(ZkUtil::parseNumber(u"2.25", nullptr, nullptr, nullptr), 2.25);
    std::setlocale(LC_NUMERIC, saved.c_str());
    if (!switched)
        GTEST_LOG_(INFO) << "de_DE.UTF-8 is not installed; checked under the C locale only";
}

TEST(ZkUtilNumbers, RoundToIntegerAndNaN) {
    EXPECT_EQ(ZkUtil::roundToInteger(2.5f), 3);
    EXPECT_EQ(ZkUtil::roundToInteger(-2.5f), -3);
    EXPECT_EQ(ZkUtil::roundToInteger(2.4f), 2);
    EXPECT_EQ(ZkUtil::roundToInteger(-0.4), 0);
    EXPECT_EQ(ZkUtil::roundToInteger(1e20), 0);
    EXPECT_EQ(ZkUtil::roundToInteger(ZkUtil::getNaNf()), 0);
    EXPECT_TRUE(ZkUtil::isNaN(ZkUtil::getNaN()));
    EXPECT_FALSE(ZkUtil::isNaN(1.0f));
}

TEST(ZkUtilNumbers, Printing) {
    EXPECT_EQ(utf8(ZkUtil::toString(-42)), "-42");
    EXPECT_EQ(utf8(ZkUtil::toString(1234567890123LL)), "1234567890123");
    EXPECT_EQ(utf8(ZkUtil::toString(0.1)), "0.1");
    EXPECT_EQ(utf8(ZkUtil::toString(1234567.0)), "1.23457e+06");
    EXPECT_EQ(utf8(ZkUtil::toString(100.0)), "100");
    EXPECT_EQ(utf8(ZkUtil::toHexString(255, 4)), "00FF");
    EXPECT_EQ(utf8(ZkUtil::toHexString(0, 0)), "0");
    EXPECT_EQ(utf8(ZkUtil::toHexString(-1, 2)), "FFFFFFFF");
    EXPECT_EQ(utf8(ZkUtil::toHexString(0x123456789LL, 12)), "000123456789");
}

TEST(ZkUtilSpaces, NormalizeAndOmit) {
    struct Case {
        const char16_t* text;
        const char16_t* expected;
    } cases[] = {
        {u"  a \n b ", u"a b"}, {u"", u""},          {u" \t\r\n", u""},
        {u"a", u"a"},           {u"a\t\tb", u"a b"}, {u"a\u00A0 b", u"a\u00A0 b"},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(utf8(UnicodeString(k.text)));
        EXPECT_EQ(ZkUtil::normalizeSpaces(UnicodeString(k.text)), UnicodeString(k.expected));
    }
    EXPECT_EQ(ZkUtil::omitSpace(UnicodeString(u" a \t b\r\nc ")), UnicodeString(u"abc"));
    EXPECT_EQ(ZkUtil::omitSpace(UnicodeString(u"a\u3000b")), UnicodeString(u"a\u3000b"));
}
