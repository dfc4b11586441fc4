// Tests of ZkChar: every class at the boundaries of its ranges, conversions, escaping,
// properties and vertical orientation.
#include "zkcommon/core/char.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

using namespace ZkCommonNS;

namespace {

struct CharCase {
    UChar32 c;
    bool expected;
};

std::string hex(UChar32 c) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "U+%04X", static_cast<unsigned>(c));
    return buffer;
}

template <class Test>
void checkTable(const char* what, Test test, const std::vector<CharCase>& cases) {
    for (const CharCase& k : cases) {
        SCOPED_TRACE(std::string(what) + " " + hex(k.c));
        EXPECT_EQ(test(k.c), k.expected);
    }
}

} // namespace

TEST(ZkChar, ValidCharAtEveryBoundary) {
    checkTable("isValidChar", ZkChar::isValidChar,
               {{0x00, false},     {0x08, false},   {0x09, true},    {0x0A, true},
                {0x0B, false},     {0x0C, false},   {0x0D, true},    {0x0E, false},
                {0x1F, false},     {0x20, true},    {0x7F, true},    {0xD7FF, true},
                {0xD800, false},   {0xDFFF, false}, {0xE000, true},  {0xFFFD, true},
                {0xFFFE, false},   {0xFFFF, false}, {0x10000, true}, {0x10FFFF, true},
                {0x110000, false}, {-1, false}});
}

TEST(ZkChar, NCNameStartCharAtEveryBoundary) {
    checkTable("isNCNameStartChar", ZkChar::isNCNameStartChar,
               {{'@', false},    {'A', true},     {'Z', true},     {'[', false},    {'_', true},
                {'`', false},    {'a', true},     {'z', true},     {'{', false},    {':', false},
                {'-', false},    {'0', false},    {0xBF, false},   {0xC0, true},    {0xD6, true},
                {0xD7, false},   {0xD8, true},    {0xF6, true},    {0xF7, false},   {0xF8, true},
                {0x2FF, true},   {0x300, false},  {0x36F, false},  {0x370, true},   {0x37D, true},
                {0x37E, false},  {0x37F, true},   {0x1FFF, true},  {0x2000, false}, {0x200B, false},
                {0x200C, true},  {0x200D, true},  {0x200E, false}, {0x206F, false}, {0x2070, true},
                {0x218F, true},  {0x2190, false}, {0x2BFF, false}, {0x2C00, true},  {0x2FEF, true},
                {0x2FF0, false}, {0x3000, false}, {0x3001, true},  {0xD7FF, true},  {0xD800, false},
                {0xF8FF, false}, {0xF900, true},  {0xFDCF, true},  {0xFDD0, false}, {0xFDEF, false},
                {0xFDF0, true},  {0xFFFD, true},  {0xFFFE, false}, {0xFFFF, false}, {0x10000, true},
                {0xEFFFF, true}, {0xF0000, false}});
}

TEST(ZkChar, NCNameCharAddsDigitsAndCombiningMarks) {
    checkTable("isNCNameChar", ZkChar::isNCNameChar,
               {{'-', true},     {'.', true},     {'/', false},    {'0', true},     {'9', true},
                {':', false},    {'A', true},     {'_', true},     {' ', false},    {0xB6, false},
                {0xB7, true},    {0xB8, false},   {0x2FF, true},   {0x300, true},   {0x36F, true},
                {0x370, true},   {0x37E, false},  {0x203E, false}, {0x203F, true},  {0x2040, true},
                {0x2041, false}, {0x3000, false}, {0x10000, true}, {0xF0000, false}});
}

TEST(ZkChar, NameClassesAddTheColon) {
    EXPECT_TRUE(ZkChar::isNameStartChar(':'));
    EXPECT_TRUE(ZkChar::isNameChar(':'));
    EXPECT_FALSE(ZkChar::isNCNameStartChar(':'));
    EXPECT_FALSE(ZkChar::isNameStartChar('-'));
    EXPECT_TRUE(ZkChar::isNameChar('-'));
    EXPECT_FALSE(ZkChar::isNCNameCharForCSSExp('-'));
    EXPECT_TRUE(ZkChar::isNCNameCharForCSSExp('.'));
    EXPECT_TRUE(ZkChar::isNCNameCharForCSSExp('a'));
}

TEST(ZkChar, NameStrings) {
    struct Case {
        const char16_t* text;
        bool name;
        bool ncname;
    } cases[] = {
        {u"", false, false},          {u"a", true, true},       {u"fo:block", true, false},
        {u":x", true, false},         {u"1a", false, false},    {u"-a", false, false},
        {u"a-1.b", true, true},       {u"a b", false, false},   {u"\u65E5\u672C", true, true},
        {u"\U00010000x", true, true}, {u"x\u00B7", true, true}, {u"\u0300x", false, false},
    };
    for (const Case& k : cases) {
        UnicodeString text(k.text);
        std::string utf8;
        SCOPED_TRACE(text.toUTF8String(utf8));
        EXPECT_EQ(ZkChar::isNameStr(text), k.name);
        EXPECT_EQ(ZkChar::isNCNameStr(text), k.ncname);
    }
}

// clang-format off
TEST(ZkChar, WhiteSpaceAndBreaks) {
    checkTable("isWhitespace", [](UChar32 c) { return ZkChar::isWhitespace(c); },
               {{0x08, false}, {0x09, true}, {0x0A, true}, {0x0B, false}, {0x0C, false}, {0x0D, true}, {0x20, true}, {0xA0, false}});
    checkTable("isCssWhitespace", ZkChar::isCssWhitespace,
               {{0x09, true}, {0x0A, true}, {0x0B, false}, {0x0C, true}, {0x0D, true}, {0x20, true}, {0xA0, false}});
    checkTable("isCssWhitespaceWoNewline", ZkChar::isCssWhitespaceWoNewline, {{0x09, true}, {0x20, true}, {0x0A, false}, {0x0C, false}});
    checkTable("isCssNewline", ZkChar::isCssNewline, {{0x0A, true}, {0x0C, true}, {0x0D, true}, {0x09, false}, {0x20, false}});
    checkTable("isSpaceChar2", ZkChar::isSpaceChar2, {{0x09, true}, {0x0A, true}, {0x0D, true}, {0x20, true}, {0xA0, true}, {0x0C, false}});
    checkTable("isHardBreak", ZkChar::isHardBreak, {{0x0A, true}, {0x0C, true}, {0x0D, false}, {0x2028, true}, {0x2029, true}, {0xFFFF, false}});
    checkTable("isHardBreakOrInvalid", ZkChar::isHardBreakOrInvalid, {{0x0A, true}, {0x2029, true}, {0xFFFF, true}, {0xFFFE, false}});
}
// clang-format on

TEST(ZkChar, WhiteSpaceStrings) {
    EXPECT_TRUE(ZkChar::isEmptyOrWhitespace(UnicodeString()));
    EXPECT_FALSE(ZkChar::isWhitespace(UnicodeString()));
    EXPECT_TRUE(ZkChar::isEmptyOrWhitespace(UnicodeString(u" \t\r\n")));
    EXPECT_TRUE(ZkChar::isWhitespace(UnicodeString(u" \t\r\n")));
    EXPECT_FALSE(ZkChar::isEmptyOrWhitespace(UnicodeString(u" x ")));
    EXPECT_FALSE(ZkChar::isWhitespace(UnicodeString(u"\u00A0")));
    EXPECT_FALSE(ZkChar::isWhitespace(UnicodeString(u"\f")));
}

TEST(ZkChar, Hyphens) {
    EXPECT_TRUE(ZkChar::isHyphen('-', true));
    EXPECT_TRUE(ZkChar::isHyphen(0x2010, true));
    EXPECT_TRUE(ZkChar::isHyphen(0x2011, false));
    EXPECT_TRUE(ZkChar::isHyphen(0xAD, false));
    EXPECT_FALSE(ZkChar::isHyphen(0xAD, true));
    EXPECT_FALSE(ZkChar::isHyphen(0x2012, false));
}

// clang-format off
TEST(ZkChar, EastAsianWidths) {
    EXPECT_TRUE(ZkChar::isHankaku(0xFF71));
    EXPECT_FALSE(ZkChar::isHankaku('a'));
    EXPECT_TRUE(ZkChar::isZenkaku(0x3042));
    EXPECT_TRUE(ZkChar::isZenkaku(0xFF21));
    EXPECT_FALSE(ZkChar::isZenkaku(0xB0));
    EXPECT_TRUE(ZkChar::isZenkakuAmbiguous(0xB0));
    EXPECT_TRUE(ZkChar::isHankaku(U_EA_HALFWIDTH));
    EXPECT_FALSE(ZkChar::isHankaku(U_EA_NARROW));
    checkTable("isHankakuChar", ZkChar::isHankakuChar,
               {{0x00, true}, {0x7F, true}, {0x80, false}, {0xFF60, false}, {0xFF61, true}, {0xFF9F, true}, {0xFFA0, false}});
}
// clang-format on

// clang-format off
TEST(ZkChar, JapanesePunctuationClasses) {
    checkTable("isOpenParenEtc", ZkChar::isOpenParenEtc,
               {{'(', true}, {'[', true}, {0x300C, true}, {0xFF08, true}, {0x2018, true}, {0x201C, true}, {')', false}, {0x2019, false},
                {'a', false}});
    checkTable("isCloseParenEtc", ZkChar::isCloseParenEtc,
               {{')', true}, {']', true}, {0x300D, true}, {0x3001, true}, {0x3002, true}, {0x2019, true}, {0x201D, true}, {'(', false},
                {'a', false}});
    EXPECT_TRUE(ZkChar::isHalfPunct(0x300C));
    EXPECT_TRUE(ZkChar::isHalfPunct(0x30FB));
    EXPECT_FALSE(ZkChar::isHalfPunct(0x3042));
}
// clang-format on

TEST(ZkChar, FullwidthTildeIsAlwaysPunctuation) {
    EXPECT_TRUE(ZkChar::isPunct(0xFF5E));
    EXPECT_FALSE(ZkChar::isPunct(ZkChar::getCategory(0xFF5E)));
    EXPECT_TRUE(ZkChar::isPunct('-'));
    EXPECT_TRUE(ZkChar::isPunct('('));
    EXPECT_TRUE(ZkChar::isPunct('_'));
    EXPECT_TRUE(ZkChar::isPunct(0x00AB));
    EXPECT_TRUE(ZkChar::isPunct(0x00BB));
    EXPECT_FALSE(ZkChar::isPunct('+'));
    EXPECT_FALSE(ZkChar::isPunct('a'));
}

TEST(ZkChar, InseparablePairs) {
    EXPECT_TRUE(ZkChar::isInseparableChar(0x2014, 0x2014));
    EXPECT_TRUE(ZkChar::isInseparableChar(0x2015, 0x2015));
    EXPECT_TRUE(ZkChar::isInseparableChar(0x2024, 0x2024));
    EXPECT_TRUE(ZkChar::isInseparableChar(0x2025, 0x2025));
    EXPECT_TRUE(ZkChar::isInseparableChar(0x2026, 0x2026));
    EXPECT_FALSE(ZkChar::isInseparableChar(0x2014, 0x2015));
    EXPECT_TRUE(ZkChar::isInseparableChar(0x3033, 0x3035));
    EXPECT_TRUE(ZkChar::isInseparableChar(0x3034, 0x3035));
    EXPECT_FALSE(ZkChar::isInseparableChar(0x3035, 0x3033));
    EXPECT_FALSE(ZkChar::isInseparableChar('a', 'a'));
}

TEST(ZkChar, InseparableRunsByMethod) {
    struct Case {
        const char16_t* text;
        int index;
        bool pair;
        bool notInside;
        bool isolated;
    } cases[] = {
        {u"\u2026\u2026", 0, true, true, true},
        {u"a\u2026\u2026b", 1, true, true, true},
        {u"\u2026\u2026\u2026", 0, true, true, false},
        {u"\u2026\u2026\u2026", 1, true, true, false},
        {u"\u2026\u2026\u2026\u2026", 1, true, false, false},
        {u"\u2026", 0, false, false, false},
        {u"\u3033\u3035\u3035", 0, true, true, true},
        {u"ab", 0, false, false, false},
        {u"\u2026\u2026", 5, false, false, false},
    };
    for (const Case& k : cases) {
        SCOPED_TRACE(k.index);
        UnicodeString text(k.text);
        EXPECT_EQ(ZkChar::isInseparableCharEx(text, k.index, ZkChar::INSEPARABLE_PAIR), k.pair);
        EXPECT_EQ(ZkChar::isInseparableCharEx(text, k.index, ZkChar::INSEPARABLE_NOT_INSIDE),
                  k.notInside);
        EXPECT_EQ(ZkChar::isInseparableCharEx(text, k.index, ZkChar::INSEPARABLE_ISOLATED),
                  k.isolated);
    }
}

TEST(ZkChar, ToZenkakuLeavesSpaceAlone) {
    UnicodeString text(u"A b~!\u3042");
    UnicodeString result = ZkChar::toZenkaku(text);
    EXPECT_EQ(result, UnicodeString(u"\uFF21 \uFF42\uFF5E\uFF01\u3042"));
    EXPECT_EQ(text, result);
}

TEST(ZkChar, ToZenkakuKana) {
    UnicodeString text(u"\uFF76\uFF9E\uFF71\uFF61\uFF67\uFF70\uFF9Dx");
    EXPECT_EQ(ZkChar::toZenkakuKana(text),
              UnicodeString(u"\u30AB\u309B\u30A2\u3002\u30A1\u30FC\u30F3x"));
}

TEST(ZkChar, ToFullsizeKana) {
    UnicodeString text(u"\u3041\u3063\u308E\u3095\u3096\u30A1\u30C3\u30F5\u30F6\u31F0\u31F1"
                       u"\u31FF\u3042");
    EXPECT_EQ(ZkChar::toFullsizeKana(text),
              UnicodeString(u"\u3042\u3064\u308F\u304B\u3051\u30A2\u30C4\u30AB\u30B1\u30AF"
                            u"\u30B7\u30ED\u3042"));
}

TEST(ZkChar, AsciiCaseOnlyTouchesAsciiLetters) {
    const UnicodeString text(u"AbZ\u00C9\u00E9[`");
    EXPECT_EQ(ZkChar::toAsciiLower(text), UnicodeString(u"abz\u00C9\u00E9[`"));
    EXPECT_EQ(ZkChar::toAsciiUpper(text), UnicodeString(u"ABZ\u00C9\u00E9[`"));
    UnicodeString inPlace(u"MiXeD");
    ZkChar::toAsciiLower(inPlace);
    EXPECT_EQ(inPlace, UnicodeString(u"mixed"));
    ZkChar::toAsciiUpper(inPlace);
    EXPECT_EQ(inPlace, UnicodeString(u"MIXED"));
}

TEST(ZkChar, MirrorString) {
    EXPECT_EQ(ZkChar::getMirrorString(UnicodeString(u"(a<\u300C]")), UnicodeString(u")a>\u300D["));
}

TEST(ZkChar, Utf8Decoding) {
    EXPECT_EQ(ZkChar::UTF8toUChar32('A', 0, 0, 0), 0x41);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xC3, 0xA9, 0, 0), 0xE9);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xC3, 0x28, 0, 0), 0xFFFD);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xE3, 0x81, 0x82, 0), 0x3042);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xE3, 0x81, 0x02, 0), 0xFFFD);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xF0, 0x9F, 0x98, 0x80), 0x1F600);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xF0, 0x9F, 0x98, 0x00), 0xFFFD);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0x80, 0, 0, 0), 0xFFFD);
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xFF, 0x80, 0x80, 0x80), 0xFFFD);
    // Overlong forms are not refused.
    EXPECT_EQ(ZkChar::UTF8toUChar32(0xC0, 0x80, 0, 0), 0);
}

TEST(ZkChar, Utf16Decoding) {
    EXPECT_EQ(ZkChar::UTF16toUChar32(0xD83D, 0xDE00), 0x1F600);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0xD83D, 0x0041), 0xFFFD);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0xDE00, 0x0041), 0xDE00);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0x0041, 0xDE00), 0x41);
}

TEST(ZkChar, HexDigitsOfBothCases) {
    EXPECT_EQ(ZkChar::hex2dig('0'), 0);
    EXPECT_EQ(ZkChar::hex2dig('9'), 9);
    EXPECT_EQ(ZkChar::hex2dig('a'), 10);
    EXPECT_EQ(ZkChar::hex2dig('A'), 10);
    EXPECT_EQ(ZkChar::hex2dig('f'), 15);
    EXPECT_EQ(ZkChar::hex2dig('F'), 15);
}

TEST(ZkChar, LastCodePoint) {
    EXPECT_EQ(ZkChar::last32(UnicodeString(u"ab")), 'b');
    EXPECT_EQ(ZkChar::last32(UnicodeString(u"a\U0001F600")), 0x1F600);
    EXPECT_EQ(ZkChar::last32(UnicodeString()), U_SENTINEL);
}

// clang-format off
TEST(ZkChar, NCNameEscapingRoundTrips) {
    struct Case {
        const char16_t* text;
        const char16_t* escaped;
    } cases[] = {
        {u"abc", u"abc"}, {u"1abc", u"_31abc"}, {u"a b", u"a_20b"}, {u"a_b", u"a_5Fb"}, {u"-x", u"_2Dx"}, {u"x-y.z", u"x-y.z"},
        {u"a\u00A0", u"a_C2_A0"}, {u"\U0001F600", u"\U0001F600"}, {u"a/\u3000", u"a_2F_E3_80_80"}, {u"", u""},
    };
    for (const Case& k : cases) {
        UnicodeString text(k.text);
        std::string utf8;
        SCOPED_TRACE(text.toUTF8String(utf8));
        UnicodeString escaped = ZkChar::escapeNCNameStr(text, '_');
        EXPECT_EQ(escaped, UnicodeString(k.escaped));
        if (!text.isEmpty()) {
            EXPECT_TRUE(ZkChar::isNCNameStr(escaped));
        }
        EXPECT_EQ(ZkChar::unescapeNCNameStr(escaped, '_'), text);
    }
}
// clang-format on

TEST(ZkChar, NCNameEscapingRoundTripsLoneSurrogates) {
    // clang-format off
    const char16_t units[][4] = {{u'a', 0xD800, u'b', 0}, {0xDC00, 0}, {u'x', 0xDBFF, 0},
                                 {0xDFFF, 0xD800, 0}};
    // clang-format on
    for (const auto& text : units) {
        UnicodeString original(text);
        UnicodeString escaped = ZkChar::escapeNCNameStr(original, '_');
        EXPECT_TRUE(ZkChar::isNCNameStr(escaped));
        EXPECT_EQ(ZkChar::unescapeNCNameStr(escaped, '_'), original);
    }
}

TEST(ZkChar, NCNameUnescapingKeepsStrayEscapes) {
    EXPECT_EQ(ZkChar::unescapeNCNameStr(UnicodeString(u"a_zz"), '_'), UnicodeString(u"a_zz"));
    EXPECT_EQ(ZkChar::unescapeNCNameStr(UnicodeString(u"a_4"), '_'), UnicodeString(u"a_4"));
    EXPECT_EQ(ZkChar::unescapeNCNameStr(UnicodeString(u"_FF"), '_'), UnicodeString(u"\uFFFD"));
}

TEST(ZkChar, CssIdentifierRepair) {
    struct Case {
        const char16_t* text;
        const char16_t* expected;
    } cases[] = {
        {u"", u""},          {u"abc", u"abc"},
        {u"1abc", u"_abc"},  {u"-abc", u"-abc"},
        {u"--x", u"--x"},    {u"-1", u"-_"},
        {u"--1", u"--1"},    {u"a b.c", u"a_b_c"},
        {u"a-1", u"a-1"},    {u"\u00B7a", u"\u00B7a"},
        {u"a\u00D7", u"a_"}, {u"\U0001F600", u"\U0001F600"},
        {u"-", u"-"},
    };
    for (const Case& k : cases) {
        UnicodeString text(k.text);
        std::string utf8;
        SCOPED_TRACE(text.toUTF8String(utf8));
        EXPECT_EQ(ZkChar::replaceToCSSIdentTokenStr(text, '_'), UnicodeString(k.expected));
    }
}

// clang-format off
TEST(ZkChar, PropertyGroups) {
    checkTable("isLetter", ZkChar::isLetter, {{'a', true}, {0x3042, true}, {'1', false}});
    checkTable("isNumber", ZkChar::isNumber, {{'1', true}, {0x2160, true}, {0xB2, true}});
    checkTable("isLetterNumber", ZkChar::isLetterNumber, {{'x', true}, {'-', false}});
    checkTable("isSymbol", ZkChar::isSymbol, {{'+', true}, {'$', true}, {'^', true}, {0xA9, true}});
    checkTable("isControl", ZkChar::isControl, {{0x01, true}, {0x200B, true}, {0xE000, true}, {0xD800, true}, {0x0378, true}, {'a', false}});
    checkTable("isGraphemeCluster", ZkChar::isGraphemeCluster, {{'a', true}, {0x301, false}, {0x200D, false}, {0x0A, false}});
    checkTable("isAlphabetic", ZkChar::isAlphabetic, {{0x3042, true}, {'1', false}});
    // clang-format on
    EXPECT_EQ(ZkChar::getCategory('A'), U_UPPERCASE_LETTER);
    EXPECT_EQ(ZkChar::getEastAsianWidth(0x3042), U_EA_WIDE);
    EXPECT_EQ(ZkChar::getLineBreak('('), U_LB_OPEN_PUNCTUATION);
    EXPECT_EQ(ZkChar::getIntPropertyValue('A', UCHAR_GENERAL_CATEGORY), U_UPPERCASE_LETTER);
    EXPECT_EQ(ZkChar::getCategory(-5), U_UNASSIGNED);
}

// clang-format off
TEST(ZkChar, CurrencySignsCountAsDefined) {
    checkTable("isCurrencySymbol", ZkChar::isCurrencySymbol,
               {{'$', true}, {0xA2, true}, {0xA3, true}, {0xA5, true}, {0x20A0, false}, {0x20A1, true}, {0x20BD, true}, {0x20BE, false},
                {0xA838, true}, {0xFDFC, true}, {0xFE69, true}, {0xFF04, true}, {0xFFE0, true}, {0xFFE1, true}, {0xFFE5, true}, {0xFFE6, true},
                {'a', false}});
    EXPECT_TRUE(ZkChar::isUndefined(0x0378));
    EXPECT_FALSE(ZkChar::isUndefined('a'));
    EXPECT_FALSE(ZkChar::isUndefined(0x20BD));
    EXPECT_TRUE(ZkChar::isUndefined(0x110000));
}
// clang-format on

// clang-format off
TEST(ZkChar, ScriptsAndBlocks) {
    checkTable("isArabic", ZkChar::isArabic,
               {{0x5FF, false}, {0x600, true}, {0x660, true}, {0x6FF, true}, {0x700, false}});
    checkTable("isArabicScript", ZkChar::isArabicScript,
               {{0x600, true}, {0x65F, true}, {0x660, false}, {0x669, false}, {0x66A, true}, {0x6EF, true}, {0x6F0, false}, {0x6F9, false},
                {0x6FA, true}, {0x700, false}});
    checkTable("isHebrewScript", ZkChar::isHebrewScript,
               {{0x58F, false}, {0x590, true}, {0x5FF, true}, {0x600, false}});
    checkTable("isDevanagariScript", ZkChar::isDevanagariScript,
               {{0x8FF, false}, {0x900, true}, {0x97F, true}, {0x980, false}});
    checkTable("isPUA", ZkChar::isPUA,
               {{0xDFFF, false}, {0xE000, true}, {0xF8FF, true}, {0xF900, false}});
    checkTable("isMathOperator", ZkChar::isMathOperator,
               {{0x21FF, false}, {0x2200, true}, {0x22FF, true}, {0x2300, false}, {0x27BF, false}, {0x27C0, true}, {0x27FF, true}, {0x2800, false},
                {0x297F, false}, {0x2980, true}, {0x2AFF, true}, {0x2B00, false}, {0x1D3FF, false}, {0x1D400, true}, {0x1D7FF, true},
                {0x1D800, false}});
    checkTable("isBullet", ZkChar::isBullet,
               {{0x2022, true}, {0x2023, true}, {0x2024, false}, {0x2043, true}, {0x204C, true}, {0x204D, true}, {0x2219, true}, {0x25D8, true},
                {0x25E6, true}, {0x2619, true}, {0x2765, true}, {0x2767, true}, {0x29BE, true}, {0x29BF, true}, {0x25CF, false}});
}
// clang-format on

TEST(ZkChar, EmojiAndVariationSelectors) {
    EXPECT_TRUE(ZkChar::isEmoji(0x1F600, false));
    EXPECT_FALSE(ZkChar::isEmoji(0x263A, false));
    EXPECT_TRUE(ZkChar::isEmoji(0x263A, true));
    EXPECT_FALSE(ZkChar::isEmoji('a', true));
    EXPECT_TRUE(ZkChar::isEmoji('#', true));
    checkTable("isEmojiKeycapBase", ZkChar::isEmojiKeycapBase,
               {{'#', true}, {'*', true}, {'0', true}, {'9', true}, {'a', false}, {'+', false}});
    checkTable("isEmojiModifierFitzpatrick", ZkChar::isEmojiModifierFitzpatrick,
               {{0x1F3FA, false}, {0x1F3FB, true}, {0x1F3FF, true}, {0x1F400, false}});
    checkTable("isEmojiRegionalIndicator", ZkChar::isEmojiRegionalIndicator,
               {{0x1F1E5, false}, {0x1F1E6, true}, {0x1F1FF, true}, {0x1F200, false}});
    checkTable("isEmojiTagModifier", ZkChar::isEmojiTagModifier,
               {{0xE001F, false}, {0xE0020, true}, {0xE007F, true}, {0xE0080, false}});
    checkTable("isVariationSelectorCharacter", ZkChar::isVariationSelectorCharacter,
               {{0xFDFF, false}, {0xFE00, true}, {0xFE0F, true}, {0xFE10, false}});
    checkTable("isIdeographicVariationSelectorCharacter",
               ZkChar::isIdeographicVariationSelectorCharacter,
               {{0xE00FF, false}, {0xE0100, true}, {0xE01EF, true}, {0xE01F0, false}});
}

TEST(ZkChar, VerticalOrientationTellingRows) {
    struct Row {
        UChar32 first;
        UChar32 last;
        int stacked;
        int mixed;
    } rows[] = {
        {0x0000, 0x001F, 2, 2},     {0x0020, 0x0027, 1, 2},   {0x3001, 0x3002, 16, 16},
        {0x3008, 0x3011, 32, 32},   {0x3014, 0x301F, 32, 32}, {0x30FC, 0x30FC, 32, 32},
        {0xFF61, 0xFF61, 16, 2},    {0xFF70, 0xFF70, 32, 2},  {0x2008, 0x2008, 8, 2},
        {0x1F200, 0x1F201, 16, 16},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(hex(row.first));
        // Every code point of the row, and the neighbours outside it differ.
        for (UChar32 c = row.first; c <= row.last; ++c) {
            auto bytes = ZkChar::getTR50ClassBytes(c);
            EXPECT_EQ(bytes.first, row.stacked);
            EXPECT_EQ(bytes.second, row.mixed);
        }
        if (row.first > 0) {
            EXPECT_NE(ZkChar::getTR50ClassBytes(row.first - 1),
                      ZkChar::getTR50ClassBytes(row.first));
        }
        EXPECT_NE(ZkChar::getTR50ClassBytes(row.last + 1), ZkChar::getTR50ClassBytes(row.last));
    }
}

TEST(ZkChar, VerticalOrientationTableShape) {
    EXPECT_EQ(ZkChar::getTR50RowCount(), 191);
    // Surrogate code points have no row.
    EXPECT_EQ(ZkChar::getTR50ClassBytes(0xD800), (std::pair<uint8_t, uint8_t>(1, 1)));
    EXPECT_EQ(ZkChar::getTR50ClassBytes(0x4E00), (std::pair<uint8_t, uint8_t>(1, 1)));
}

TEST(ZkChar, VerticalOrientationAnswers) {
    // Upright: in no row.
    EXPECT_EQ(ZkChar::getTR50SVO(0x4E00, nullptr, false), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50MVO(0x4E00, nullptr, true), ZkChar::TR50_UPRIGHT);
    // Latin: upright when stacked, rotated when mixed.
    EXPECT_EQ(ZkChar::getTR50SVO('A', nullptr, false), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50MVO('A', nullptr, false), ZkChar::TR50_ROTATED);
    // Controls: rotated in both.
    EXPECT_EQ(ZkChar::getTR50SVO(0x01, nullptr, false), ZkChar::TR50_ROTATED);
    // Transformed-rotated brackets follow the flag.
    EXPECT_EQ(ZkChar::getTR50SVO(0x3008, nullptr, false), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50SVO(0x3008, nullptr, true), ZkChar::TR50_ROTATED);
    EXPECT_EQ(ZkChar::getTR50MVO(0x30FC, nullptr, true), ZkChar::TR50_ROTATED);
    // Transformed-upright and class 8 are upright.
    EXPECT_EQ(ZkChar::getTR50SVO(0x3001, nullptr, true), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50SVO(0x2008, nullptr, true), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50MVO(0x2008, nullptr, true), ZkChar::TR50_ROTATED);
    // Out of range is upright.
    EXPECT_EQ(ZkChar::getTR50SVO(-1, nullptr, true), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50SVO(0x110000, nullptr, true), ZkChar::TR50_UPRIGHT);
}

TEST(ZkChar, VerticalOrientationOverrides) {
    ZkChar::TR50Overrides overrides;
    overrides[0x4E00] = {2, 0}; // stacked only
    overrides['A'] = {0, 64};   // mixed only
    overrides[0x3001] = {32, 32};
    EXPECT_EQ(ZkChar::getTR50SVO(0x4E00, &overrides, false), ZkChar::TR50_ROTATED);
    EXPECT_EQ(ZkChar::getTR50MVO(0x4E00, &overrides, false), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50SVO('A', &overrides, false), ZkChar::TR50_UPRIGHT);
    EXPECT_EQ(ZkChar::getTR50MVO('A', &overrides, false), ZkChar::TR50_CUSTOM);
    EXPECT_EQ(ZkChar::getTR50SVO(0x3001, &overrides, true), ZkChar::TR50_ROTATED);
    EXPECT_EQ(ZkChar::getTR50SVO(0x3001, &overrides, false), ZkChar::TR50_UPRIGHT);
    ZkChar::TR50Overrides empty;
    EXPECT_EQ(ZkChar::getTR50MVO('A', &empty, false), ZkChar::TR50_ROTATED);
}

TEST(ZkChar, NoVerticalCharsAtEveryBoundary) {
    checkTable("isNoVerticalChar", ZkChar::isNoVerticalChar,
               {{0x0000, true},  {0x10FF, true},  {0x1100, false}, {0x11FF, false}, {0x1200, true},
                {0x2017, true},  {0x2018, false}, {0x2019, false}, {0x201A, true},  {0x201B, true},
                {0x201C, false}, {0x201E, true},  {0x2020, false}, {0x2022, true},  {0x202F, true},
                {0x2030, false}, {0x2031, true},  {0x2032, false}, {0x2034, true},  {0x203A, true},
                {0x203B, false}, {0x203C, true},  {0x2102, true},  {0x2103, false}, {0x2104, true},
                {0x2116, false}, {0x2117, true},  {0x2121, false}, {0x2122, true},  {0x212B, false},
                {0x212C, true},  {0x214F, true},  {0x2150, false}, {0x218F, false}, {0x2190, true},
                {0x23FF, true},  {0x2400, false}, {0x2500, true},  {0x259F, true},  {0x25A0, false},
                {0x25A2, true},  {0x25B2, false}, {0x25B4, true},  {0x25BC, false}, {0x25BE, true},
                {0x25C6, false}, {0x25C8, true},  {0x25CB, false}, {0x25CC, true},  {0x25CE, false},
                {0x25D0, true},  {0x25EF, false}, {0x25F0, true},  {0x2605, false}, {0x2607, true},
                {0x2640, false}, {0x2641, true},  {0x2642, false}, {0x2643, true},  {0x266A, false},
                {0x266B, true},  {0x266D, false}, {0x266E, true},  {0x266F, false}, {0x2670, true},
                {0x2775, true},  {0x2776, false}, {0x2794, true},  {0x2E7F, true},  {0x2E80, false},
                {0x3012, false}, {0x3013, true},  {0x3030, true},  {0x3031, false}, {0x3190, true},
                {0x319F, true},  {0x31A0, false}, {0x9FFF, false}, {0xA000, true},  {0xABFF, true},
                {0xAC00, false}, {0xFB00, true},  {0xFE0F, true},  {0xFE10, false}, {0xFE70, true},
                {0xFEFF, true},  {0xFF00, false}, {0xFF0D, true},  {0xFF0E, false}, {0xFF1C, true},
                {0xFF1E, true},  {0xFF1F, false}, {0xFF61, true},  {0xFFDF, true},  {0xFFE0, false},
                {0xFFE8, true},  {0x1FFFF, true}, {0x20000, false}});
}
