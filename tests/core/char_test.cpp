// Tests of ZkChar: the character classes at the boundaries of their ranges (from a data file),
// conversions, escaping and vertical orientation.
#include "support.h"
#include "zkcommon/core/char.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>

using namespace ZkCommonNS;

namespace {

std::string hex(UChar32 c) {
    char buffer[16];
    std::snprintf(buffer, sizeof buffer, "U+%04X", static_cast<unsigned>(c));
    return buffer;
}

// clang-format off
const std::map<std::string, std::function<bool(UChar32)>> kClasses = {
    {"isValidChar", ZkChar::isValidChar}, {"isNCNameStartChar", ZkChar::isNCNameStartChar},
    {"isNCNameChar", ZkChar::isNCNameChar}, {"isCssWhitespace", ZkChar::isCssWhitespace},
    {"isWhitespace", [](UChar32 c) { return ZkChar::isWhitespace(c); }},
    {"isHardBreak", ZkChar::isHardBreak}, {"isHyphen", [](UChar32 c) { return ZkChar::isHyphen(c, false); }},
    {"isHyphen(strict)", [](UChar32 c) { return ZkChar::isHyphen(c, true); }},
    {"isHankaku", [](UChar32 c) { return ZkChar::isHankaku(c); }}, {"isZenkaku", [](UChar32 c) { return ZkChar::isZenkaku(c); }},
    {"isZenkakuAmbiguous", [](UChar32 c) { return ZkChar::isZenkakuAmbiguous(c); }},
    {"isOpenParenEtc", ZkChar::isOpenParenEtc}, {"isCloseParenEtc", ZkChar::isCloseParenEtc}, {"isHalfPunct", ZkChar::isHalfPunct},
    {"isPunct", [](UChar32 c) { return ZkChar::isPunct(c); }}, {"isLetter", ZkChar::isLetter}, {"isNumber", ZkChar::isNumber},
    {"isSymbol", ZkChar::isSymbol}, {"isControl", ZkChar::isControl}, {"isGraphemeCluster", ZkChar::isGraphemeCluster},
    {"isAlphabetic", ZkChar::isAlphabetic}, {"isUndefined", ZkChar::isUndefined}, {"isCurrencySymbol", ZkChar::isCurrencySymbol},
    {"isArabicScript", ZkChar::isArabicScript}, {"isMathOperator", ZkChar::isMathOperator}, {"isBullet", ZkChar::isBullet},
    {"isEmoji", [](UChar32 c) { return ZkChar::isEmoji(c, false); }}, {"isEmoji(all)", [](UChar32 c) { return ZkChar::isEmoji(c, true); }},
    {"isNoVerticalChar", ZkChar::isNoVerticalChar},
};
// clang-format on

} // namespace

TEST(ZkChar, ClassesAtTheirBoundaries) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/core/charclasses.tsv");
    ASSERT_EQ(rows.size(), kClasses.size());
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3u) << row[0];
        const auto test = kClasses.find(row[0]);
        ASSERT_NE(test, kClasses.end()) << row[0];
        for (int column : {1, 2}) {
            std::istringstream points(row[size_t(column)]);
            for (std::string point; points >> point;) {
                const UChar32 c = UChar32(std::strtol(point.c_str(), nullptr, 16));
                EXPECT_EQ(test->second(c), column == 1) << row[0] << " " << hex(c);
            }
        }
    }
    // The fullwidth tilde is punctuation whatever its category says.
    EXPECT_FALSE(ZkChar::isPunct(ZkChar::getCategory(0xFF5E)));
}

TEST(ZkChar, NameStrings) {
    // clang-format off
    const struct { const char16_t* text; bool name, ncname; } cases[] = {
        {u"", false, false}, {u"a", true, true}, {u"fo:block", true, false}, {u":x", true, false}, {u"1a", false, false},
        {u"-a", false, false}, {u"a-1.b", true, true}, {u"a b", false, false}, {u"\u65E5\u672C", true, true},
        {u"\U00010000x", true, true}, {u"x\u00B7", true, true}, {u"\u0300x", false, false},
    };
    // clang-format on
    for (const auto& k : cases) {
        EXPECT_EQ(ZkChar::isNameStr(k.text), k.name) << utf8(k.text);
        EXPECT_EQ(ZkChar::isNCNameStr(k.text), k.ncname) << utf8(k.text);
    }
    // clang-format off
    const struct { const char16_t* text; bool emptyOrWhite, white; } blanks[] = {
        {u"", true, false}, {u" \t\r\n", true, true}, {u" x ", false, false}, {u"\u00A0", false, false}, {u"\f", false, false},
    };
    // clang-format on
    for (const auto& k : blanks) {
        EXPECT_EQ(ZkChar::isEmptyOrWhitespace(k.text), k.emptyOrWhite) << utf8(k.text);
        EXPECT_EQ(ZkChar::isWhitespace(UnicodeString(k.text)), k.white) << utf8(k.text);
    }
}

TEST(ZkChar, InseparablePairsAndRuns) {
    // clang-format off
    const struct { UChar32 first, second; bool expected; } pairs[] = {
        {0x2014, 0x2014, true}, {0x2015, 0x2015, true}, {0x2024, 0x2024, true}, {0x2025, 0x2025, true}, {0x2026, 0x2026, true},
        {0x2014, 0x2015, false}, {0x3033, 0x3035, true}, {0x3034, 0x3035, true}, {0x3035, 0x3033, false}, {'a', 'a', false},
    };
    // clang-format on
    for (const auto& k : pairs)
        EXPECT_EQ(ZkChar::isInseparableChar(k.first, k.second), k.expected)
            << hex(k.first) << hex(k.second);
    // clang-format off
    const struct { const char16_t* text; int index; bool pair, notInside, isolated; } runs[] = {
        {u"\u2026\u2026", 0, true, true, true}, {u"a\u2026\u2026b", 1, true, true, true}, {u"\u2026\u2026\u2026", 0, true, true, false},
        {u"\u2026\u2026\u2026", 1, true, true, false}, {u"\u2026\u2026\u2026\u2026", 1, true, false, false}, {u"\u2026", 0, false, false, false},
        {u"\u3033\u3035\u3035", 0, true, true, true}, {u"ab", 0, false, false, false}, {u"\u2026\u2026", 5, false, false, false},
    };
    // clang-format on
    for (const auto& k : runs) {
        SCOPED_TRACE(utf8(k.text) + " at " + std::to_string(k.index));
        EXPECT_EQ(ZkChar::isInseparableCharEx(k.text, k.index, ZkChar::INSEPARABLE_PAIR), k.pair);
        EXPECT_EQ(ZkChar::isInseparableCharEx(k.text, k.index, ZkChar::INSEPARABLE_NOT_INSIDE),
                  k.notInside);
        EXPECT_EQ(ZkChar::isInseparableCharEx(k.text, k.index, ZkChar::INSEPARABLE_ISOLATED),
                  k.isolated);
    }
}

TEST(ZkChar, Conversions) {
    UnicodeString text(u"A b~!\u3042");
    EXPECT_EQ(ZkChar::toZenkaku(text),
              UnicodeString(u"\uFF21 \uFF42\uFF5E\uFF01\u3042")); // the space stays
    EXPECT_EQ(text, UnicodeString(u"\uFF21 \uFF42\uFF5E\uFF01\u3042")) << "in place";
    UnicodeString halfKana(u"\uFF76\uFF9E\uFF71\uFF61\uFF67\uFF70\uFF9Dx");
    EXPECT_EQ(ZkChar::toZenkakuKana(halfKana),
              UnicodeString(u"\u30AB\u309B\u30A2\u3002\u30A1\u30FC\u30F3x"));
    UnicodeString small(
        u"\u3041\u3063\u308E\u3095\u3096\u30A1\u30C3\u30F5\u30F6\u31F0\u31F1\u31FF\u3042");
    EXPECT_EQ(
        ZkChar::toFullsizeKana(small),
        UnicodeString(
            u"\u3042\u3064\u308F\u304B\u3051\u30A2\u30C4\u30AB\u30B1\u30AF\u30B7\u30ED\u3042"));
    const UnicodeString mixed(u"AbZ\u00C9\u00E9[`");
    EXPECT_EQ(ZkChar::toAsciiLower(mixed), UnicodeString(u"abz\u00C9\u00E9[`"))
        << "only ASCII letters change";
    EXPECT_EQ(ZkChar::toAsciiUpper(mixed), UnicodeString(u"ABZ\u00C9\u00E9[`"));
    UnicodeString inPlace(u"MiXeD");
    EXPECT_EQ(ZkChar::toAsciiUpper(ZkChar::toAsciiLower(inPlace)), UnicodeString(u"MIXED"));
    EXPECT_EQ(ZkChar::getMirrorString(UnicodeString(u"(a<\u300C]")), UnicodeString(u")a>\u300D["));
    EXPECT_EQ(ZkChar::last32(UnicodeString(u"a\U0001F600")), 0x1F600);
    EXPECT_EQ(ZkChar::last32(UnicodeString()), U_SENTINEL);
    EXPECT_EQ(ZkChar::hex2dig('9') + ZkChar::hex2dig('a') + ZkChar::hex2dig('F'), 9 + 10 + 15);
}

TEST(ZkChar, Utf8AndUtf16Decoding) {
    // clang-format off
    const struct { int b1, b2, b3, b4; UChar32 expected; } utf8Cases[] = {
        {'A', 0, 0, 0, 0x41}, {0xC3, 0xA9, 0, 0, 0xE9}, {0xC3, 0x28, 0, 0, 0xFFFD}, {0xE3, 0x81, 0x82, 0, 0x3042},
        {0xE3, 0x81, 0x02, 0, 0xFFFD}, {0xF0, 0x9F, 0x98, 0x80, 0x1F600}, {0xF0, 0x9F, 0x98, 0x00, 0xFFFD},
        {0x80, 0, 0, 0, 0xFFFD}, {0xFF, 0x80, 0x80, 0x80, 0xFFFD},
        {0xC0, 0x80, 0, 0, 0}, // overlong forms are not refused
    };
    // clang-format on
    for (const auto& k : utf8Cases)
        EXPECT_EQ(ZkChar::UTF8toUChar32(k.b1, k.b2, k.b3, k.b4), k.expected)
            << hex(k.b1) << hex(k.b2);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0xD83D, 0xDE00), 0x1F600);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0xD83D, 0x0041), 0xFFFD);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0xDE00, 0x0041), 0xDE00);
    EXPECT_EQ(ZkChar::UTF16toUChar32(0x0041, 0xDE00), 0x41);
}

TEST(ZkChar, NCNameEscapingRoundTrips) {
    // clang-format off
    const struct { const char16_t* text; const char16_t* escaped; } cases[] = {
        {u"abc", u"abc"}, {u"1abc", u"_31abc"}, {u"a b", u"a_20b"}, {u"a_b", u"a_5Fb"}, {u"-x", u"_2Dx"}, {u"x-y.z", u"x-y.z"},
        {u"a\u00A0", u"a_C2_A0"}, {u"\U0001F600", u"\U0001F600"}, {u"a/\u3000", u"a_2F_E3_80_80"}, {u"", u""},
    };
    // clang-format on
    for (const auto& k : cases) {
        SCOPED_TRACE(utf8(k.text));
        const UnicodeString escaped = ZkChar::escapeNCNameStr(k.text, '_');
        EXPECT_EQ(escaped, UnicodeString(k.escaped));
        EXPECT_TRUE(ZkChar::isNCNameStr(escaped) || escaped.isEmpty());
        EXPECT_EQ(ZkChar::unescapeNCNameStr(escaped, '_'), UnicodeString(k.text));
    }
    // Lone surrogates escape to a name and come back as they were.
    const char16_t units[][4] = {
        {u'a', 0xD800, u'b', 0}, {0xDC00, 0}, {u'x', 0xDBFF, 0}, {0xDFFF, 0xD800, 0}};
    for (const auto& text : units) {
        const UnicodeString escaped = ZkChar::escapeNCNameStr(text, '_');
        EXPECT_TRUE(ZkChar::isNCNameStr(escaped));
        EXPECT_EQ(ZkChar::unescapeNCNameStr(escaped, '_'), UnicodeString(text));
    }
    // Stray escapes stay; a byte that is no UTF-8 becomes U+FFFD.
    EXPECT_EQ(ZkChar::unescapeNCNameStr(u"a_zz", '_'), UnicodeString(u"a_zz"));
    EXPECT_EQ(ZkChar::unescapeNCNameStr(u"a_4", '_'), UnicodeString(u"a_4"));
    EXPECT_EQ(ZkChar::unescapeNCNameStr(u"_FF", '_'), UnicodeString(u"\uFFFD"));
}

TEST(ZkChar, CssIdentifierRepair) {
    // clang-format off
    const struct { const char16_t* text; const char16_t* expected; } cases[] = {
        {u"", u""}, {u"abc", u"abc"}, {u"1abc", u"_abc"}, {u"-abc", u"-abc"}, {u"--x", u"--x"}, {u"-1", u"-_"}, {u"--1", u"--1"},
        {u"a b.c", u"a_b_c"}, {u"a-1", u"a-1"}, {u"\u00B7a", u"\u00B7a"}, {u"a\u00D7", u"a_"}, {u"\U0001F600", u"\U0001F600"}, {u"-", u"-"},
    };
    // clang-format on
    for (const auto& k : cases)
        EXPECT_EQ(ZkChar::replaceToCSSIdentTokenStr(k.text, '_'), UnicodeString(k.expected))
            << utf8(k.text);
    EXPECT_EQ(ZkChar::getCategory(-5), U_UNASSIGNED);
    EXPECT_EQ(ZkChar::getIntPropertyValue('A', UCHAR_GENERAL_CATEGORY), U_UPPERCASE_LETTER);
}

TEST(ZkChar, VerticalOrientationTellingRows) {
    // clang-format off
    const struct { UChar32 first, last; int stacked, mixed; } rows[] = {
        {0x0000, 0x001F, 2, 2}, {0x0020, 0x0027, 1, 2}, {0x3001, 0x3002, 16, 16}, {0x3008, 0x3011, 32, 32}, {0x3014, 0x301F, 32, 32},
        {0x30FC, 0x30FC, 32, 32}, {0xFF61, 0xFF61, 16, 2}, {0xFF70, 0xFF70, 32, 2}, {0x2008, 0x2008, 8, 2}, {0x1F200, 0x1F201, 16, 16},
    };
    // clang-format on
    for (const auto& row : rows) {
        SCOPED_TRACE(hex(row.first));
        // Every code point of the row, and the neighbours outside it differ.
        for (UChar32 c = row.first; c <= row.last; ++c)
            EXPECT_EQ(ZkChar::getTR50ClassBytes(c),
                      (std::pair<uint8_t, uint8_t>(uint8_t(row.stacked), uint8_t(row.mixed))));
        if (row.first > 0) {
            EXPECT_NE(ZkChar::getTR50ClassBytes(row.first - 1),
                      ZkChar::getTR50ClassBytes(row.first));
        }
        EXPECT_NE(ZkChar::getTR50ClassBytes(row.last + 1), ZkChar::getTR50ClassBytes(row.last));
    }
    EXPECT_EQ(ZkChar::getTR50RowCount(), 191);
    EXPECT_EQ(ZkChar::getTR50ClassBytes(0xD800), (std::pair<uint8_t, uint8_t>(1, 1)))
        << "surrogates have no row";
}

TEST(ZkChar, VerticalOrientationAnswers) {
    ZkChar::TR50Overrides set, empty;
    set[0x4E00] = {2, 0}; // stacked only
    set['A'] = {0, 64};   // mixed only
    set[0x3001] = {32, 32};
    const std::map<std::string, const ZkChar::TR50Overrides*> overrides = {
        {"none", nullptr}, {"set", &set}, {"empty", &empty}};
    const std::map<std::string, ZkChar::TR50Property> answers = {{"upright", ZkChar::TR50_UPRIGHT},
                                                                 {"rotated", ZkChar::TR50_ROTATED},
                                                                 {"custom", ZkChar::TR50_CUSTOM}};
    const auto rows = readTable(ZK_TEST_DATA_DIR "/core/vertical.tsv");
    ASSERT_EQ(rows.size(), 20u);
    for (const auto& row : rows) {
        const UChar32 c = UChar32(std::strtol(row[1].c_str(), nullptr, 16));
        const auto* given = overrides.at(row[2]);
        const auto answer = row[0] == "mixed" ? ZkChar::getTR50MVO(c, given, row[3] == "1")
                                              : ZkChar::getTR50SVO(c, given, row[3] == "1");
        EXPECT_EQ(answer, answers.at(row[4])) << row[5] << " " << hex(c);
    }
}
