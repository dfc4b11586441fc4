// Tests of ZkUtil::CounterStyle: every predefined style against a table of known markers, each
// system on hand-built styles, padding, affixes and the fallback chain.
#include "support.h"
#include "zkcommon/text/counterstyle.h"

#include <atomic>
#include <fstream>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

using namespace ZkCommonNS;
using CounterStyle = ZkUtil::CounterStyle;

namespace {

const CounterStyle& predefined(const char16_t* name) {
    const CounterStyle* style = ZkUtil::getPredefinedCounterStyle(ZkName(name), nullptr);
    if (!style)
        throw std::runtime_error("no predefined style " + utf8(UnicodeString(name)));
    return *style;
}

std::string marker(const CounterStyle& style, long long value, bool plain = false) {
    return utf8(style.formatNumber(value, &ZkUtil::getPredefinedCounterStyle, nullptr, plain));
}

// A caller's table of @counter-style rules.
using RuleTable = std::map<ZkName, CounterStyle>;

const CounterStyle* lookupRule(ZkName name, void* data) {
    auto* table = static_cast<RuleTable*>(data);
    auto hit = table->find(name);
    return hit == table->end() ? nullptr : &hit->second;
}

} // namespace

// tests/data/text/counterstyles.tsv holds, for every predefined style, 0, 1, 2, -1, the ends of
// its range or symbol list and the first value past them (the fallback).
TEST(CounterStyle, PredefinedStylesMatchTheTable) {
    std::ifstream in(ZK_TEST_DATA_DIR "/text/counterstyles.tsv");
    ASSERT_TRUE(in) << "missing counterstyles.tsv";
    std::set<std::string> styles;
    std::string line;
    int rows = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#')
            continue;
        std::istringstream fields(line);
        std::string name, value, expected;
        std::getline(fields, name, '\t');
        std::getline(fields, value, '\t');
        std::getline(fields, expected);
        SCOPED_TRACE(name + " " + value);
        ASSERT_GE(expected.size(), 2u);
        expected = expected.substr(1, expected.size() - 2); // the quotes keep trailing blanks
        const CounterStyle* style =
            ZkUtil::getPredefinedCounterStyle(ZkName(UnicodeString::fromUTF8(name)), nullptr);
        ASSERT_NE(style, nullptr);
        EXPECT_TRUE(style->isPredefined());
        EXPECT_EQ(marker(*style, std::stoll(value)), expected);
        styles.insert(name);
        ++rows;
    }
    EXPECT_EQ(styles.size(), 154u);
    EXPECT_GT(rows, 900);
}

TEST(CounterStyle, KnownMarkers) {
    // Markers past the sampled values of tests/data/text/counterstyles.tsv.
    // clang-format off
    struct Case { const char16_t* style; long long value; const char* expected; } cases[] = {
        {u"lower-alpha", 702, "zz. "}, {u"lower-alpha", 703, "aaa. "},
        {u"upper-roman", 1994, "MCMXCIV. "},
        {u"decimal", -5, "-5. "}, {u"decimal", -9223372036854775807LL - 1, "-9223372036854775808. "},
        {u"disc", 123456, "\u2022 "}, {u"disc", -3, "\u2022 "},
        {u"simp-chinese-informal", 10, "\u5341\u3001"}, {u"simp-chinese-informal", 12, "\u5341\u4E8C\u3001"}, {u"simp-chinese-informal", 101, "\u4E00\u767E\u96F6\u4E00\u3001"}, {u"simp-chinese-informal", 110, "\u4E00\u767E\u4E00\u5341\u3001"},
        {u"simp-chinese-formal", 12, "\u58F9\u62FE\u8D30\u3001"},
        {u"trad-chinese-informal", 1001, "\u4E00\u5343\u96F6\u4E00\u3001"}, {u"trad-chinese-informal", 20, "\u4E8C\u5341\u3001"},
        {u"hebrew", 15, "\u05D8\u05D5. "}, {u"hebrew", 16, "\u05D8\u05D6. "}, {u"hebrew", 5784, "\u05D4\u05F3\u05EA\u05E9\u05E4\u05D3. "},
        {u"ethiopic-numeric", 100, "\u137B/ "}, {u"ethiopic-numeric", 10000, "\u137C/ "}, {u"ethiopic-numeric", 78010092, "\u1378\u1370\u137B\u1369\u137C\u137A\u136A/ "},
        {u"circled-decimal", 21, "\u3251 "},
        {u"decimal-leading-zero", 7, "07. "},
        {u"lower-greek", 17, "\u03C1. "}, {u"lower-greek", 18, "\u03C3. "},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(UnicodeString(c.style)) + " " + std::to_string(c.value));
        EXPECT_EQ(marker(predefined(c.style), c.value), c.expected);
    }
}

TEST(CounterStyle, PlainLeavesOutTheAffixes) {
    EXPECT_EQ(marker(predefined(u"lower-alpha"), 1, /*plain=*/true), "a");
    EXPECT_EQ(marker(predefined(u"decimal"), -3, true), "-3");
    EXPECT_EQ(marker(predefined(u"lower-roman"), 5000, true), "5000");
}

TEST(CounterStyle, UnknownNamesGiveNull) {
    EXPECT_EQ(ZkUtil::getPredefinedCounterStyle(ZkName(), nullptr), nullptr);
    EXPECT_EQ(ZkUtil::getPredefinedCounterStyle(ZkName(u"no-such-style-here"), nullptr), nullptr);
    EXPECT_EQ(ZkUtil::getPredefinedCounterStyle(ZkName(ZKN_div), nullptr), nullptr);
    // A pair of names shares the data but each is a style of its own.
    const CounterStyle& alpha = predefined(u"lower-alpha");
    const CounterStyle& latin = predefined(u"lower-latin");
    EXPECT_NE(&alpha, &latin);
    EXPECT_FALSE(alpha < latin || latin < alpha);
}

TEST(CounterStyle, CleanupRebuildsOnDemand) {
    const CounterStyle& before = predefined(u"upper-roman");
    EXPECT_EQ(marker(before, 9), "IX. ");
    ZkUtil::cleanup();
    EXPECT_EQ(marker(predefined(u"upper-roman"), 9), "IX. ");
}

TEST(CounterStyle, EachSystemOnItsOwnSymbols) {
    CounterStyle cyclic(ZKN_cyclic);
    cyclic.addSymbols("xyz");
    EXPECT_EQ(utf8(cyclic.formatNumber(1)), "x. ");
    EXPECT_EQ(utf8(cyclic.formatNumber(4)), "x. ");
    EXPECT_EQ(utf8(cyclic.formatNumber(0)), "z. ");
    EXPECT_EQ(utf8(cyclic.formatNumber(-1)), "y. ");

    CounterStyle symbolic(ZKN_symbolic);
    symbolic.addSymbols(CounterStyle::Symbol(u"*"), CounterStyle::Symbol(u"\u2020"), 0);
    EXPECT_EQ(utf8(symbolic.formatNumber(3)), "**. ");
    EXPECT_EQ(utf8(symbolic.formatNumber(4)), "\u2020\u2020. ");
    EXPECT_EQ(utf8(symbolic.formatNumber(0)), "0. ");

    CounterStyle fixed(ZKN_fixed);
    fixed.setFirst(5);
    fixed.addSymbols('a', 'b', 'c', 0);
    EXPECT_EQ(utf8(fixed.formatNumber(5)), "a. ");
    EXPECT_EQ(utf8(fixed.formatNumber(7)), "c. ");
    EXPECT_EQ(utf8(fixed.formatNumber(4)), "4. ");
    EXPECT_EQ(utf8(fixed.formatNumber(8)), "8. ");

    CounterStyle additive(ZKN_additive);
    additive.addAdditiveSymbol(5, "V");
    additive.addAdditiveSymbol(1, 'I');
    EXPECT_EQ(utf8(additive.formatNumber(7)), "VII. ");
    EXPECT_EQ(utf8(additive.formatNumber(0)), "0. ") << "no zero-weight symbol";
    additive.addAdditiveSymbol(0, "N");
    EXPECT_EQ(utf8(additive.formatNumber(0)), "N. ");
    EXPECT_EQ(utf8(additive.formatNumber(-7)), "-7. ") << "below the additive range";
    additive.addRange(-10, 10);
    EXPECT_EQ(utf8(additive.formatNumber(-7)), "-VII. ");

    CounterStyle gaps(ZKN_additive);
    gaps.addAdditiveSymbol(3, "c");
    EXPECT_EQ(utf8(gaps.formatNumber(7)), "7. ") << "a remainder that no weight covers";

    CounterStyle none(ZKN_numeric);
    none.addSymbol('0');
    EXPECT_EQ(utf8(none.formatNumber(5)), "5. ") << "numeric needs two symbols";
    CounterStyle unknown(ZkName(u"no-such-system"));
    EXPECT_EQ(utf8(unknown.formatNumber(5)), "5. ");
}

TEST(CounterStyle, KansujiSystemGoesThroughTheConverter) {
    CounterStyle simple(ZKN_kansuji);
    simple.addSymbols(u'\u3007', u'\u4E00', u'\u4E8C', u'\u4E09', u'\u56DB', u'\u4E94', u'\u516D',
                      u'\u4E03', u'\u516B', u'\u4E5D', 0);
    EXPECT_EQ(utf8(simple.formatNumber(2024, nullptr, nullptr, true)), "\u4E8C\u3007\u4E8C\u56DB");
    EXPECT_EQ(utf8(simple.formatNumber(-12, nullptr, nullptr, true)), "-\u4E00\u4E8C");

    // 25 symbols: digits, then ten, hundred, thousand, then the group words; here the digits
    // are Latin so that the units are plain to see.
    CounterStyle readable(ZKN_kansuji);
    readable.addSymbols("0123456789THK");
    readable.addSymbols("MOCDEFGHIJKL");
    ASSERT_EQ(readable.getSymbols()->size(), 25u);
    EXPECT_EQ(utf8(readable.formatNumber(1203, nullptr, nullptr, true)), "K2H3");
    EXPECT_EQ(utf8(readable.formatNumber(20030000, nullptr, nullptr, true)), "2K3M");

    CounterStyle grouping(ZKN_kansuji);
    grouping.addSymbols("0123456789");
    grouping.addSymbols("MOCDEFGHIJKL");
    EXPECT_EQ(utf8(grouping.formatNumber(120000, nullptr, nullptr, true)), "12M");
    EXPECT_EQ(utf8(grouping.formatNumber(100020000, nullptr, nullptr, true)), "1O0002M");
}

TEST(CounterStyle, PadNegativeAndAffixes) {
    CounterStyle style(ZKN_numeric);
    style.addSymbols("0123456789");
    style.setPad(4, "0");
    style.setNegative("(", ")");
    style.setPrefix("[");
    style.setSuffix("]");
    EXPECT_EQ(utf8(style.formatNumber(42)), "[0042]");
    EXPECT_EQ(utf8(style.formatNumber(-42)), "[(0042)]");
    EXPECT_EQ(utf8(style.formatNumber(123456)), "[123456]");
    style.setPad(5, "ab"); // ceil(3 / 2) copies: a long pad may overshoot
    EXPECT_EQ(utf8(style.formatNumber(42)), "[abab42]");
    style.setPad(2147483647, "x"); // stops short of the marker limit
    EXPECT_LT(style.formatNumber(1).length(), 1100);
    style.setPad(0, "");
    style.setZero(u'\u96F6');
    EXPECT_EQ(utf8(style.formatNumber(0, nullptr, nullptr, true)), "\u96F6");
}

TEST(CounterStyle, LongResultsFallBack) {
    CounterStyle stars(ZKN_symbolic);
    stars.addSymbol('*');
    EXPECT_EQ(stars.formatNumber(999, nullptr, nullptr, true).length(), 999);
    EXPECT_EQ(utf8(stars.formatNumber(2000)), "2000. ");
    EXPECT_EQ(utf8(stars.formatNumber(9223372036854775807LL)), "9223372036854775807. ");

    CounterStyle ones(ZKN_additive);
    ones.addAdditiveSymbol(1, "|");
    EXPECT_EQ(utf8(ones.formatNumber(1000000000000LL)), "1000000000000. ");
}

TEST(CounterStyle, FallbackChains) {
    RuleTable rules;
    CounterStyle self(ZKN_alphabetic);
    self.addSymbols("ab");
    self.setPrefix("<");
    self.setSuffix(">");
    self.setFallback(ZkName(u"self"));
    rules.emplace(ZkName(u"self"), self);
    // A cycle of self-reference ends in decimal, with the asking style's affixes.
    EXPECT_EQ(utf8(rules.at(ZkName(u"self")).formatNumber(0, &lookupRule, &rules, false)), "<0>");

    // one -> two -> one: the chain stops at the style already in its fallback.
    CounterStyle one(ZKN_fixed);
    one.addSymbol('1');
    one.setFallback(ZkName(u"two"));
    CounterStyle two(ZKN_fixed);
    two.addSymbols("AB");
    two.setFirst(10);
    two.setFallback(ZkName(u"one"));
    rules.emplace(ZkName(u"one"), one);
    rules.emplace(ZkName(u"two"), two);
    const CounterStyle& first = rules.at(ZkName(u"one"));
    EXPECT_EQ(utf8(first.formatNumber(11, &lookupRule, &rules, false)), "B. ");
    EXPECT_EQ(utf8(first.formatNumber(5, &lookupRule, &rules, false)), "5. ");

    // A rule may fall back to a predefined style by name.
    CounterStyle toRoman(ZKN_fixed);
    toRoman.addSymbol('x');
    toRoman.setFallback(ZKN_upper_roman);
    EXPECT_EQ(utf8(toRoman.formatNumber(4, &lookupRule, &rules, false)), "IV. ");
    EXPECT_EQ(utf8(toRoman.formatNumber(4)), "IV. ");

    // A long chain of distinct rules ends in decimal without deep recursion.
    RuleTable chain;
    for (int i = 0; i < 200; ++i) {
        CounterStyle link(ZKN_fixed);
        link.addSymbol('z');
        link.setFallback(ZkName(UnicodeString(u"link") + ZkUtil::toString(i + 1)));
        chain.emplace(ZkName(UnicodeString(u"link") + ZkUtil::toString(i)), link);
    }
    EXPECT_EQ(utf8(chain.at(ZkName(u"link0")).formatNumber(3, &lookupRule, &chain, false)), "3. ");
    // The guards are cleared: the same style formats again.
    EXPECT_EQ(utf8(first.formatNumber(10, &lookupRule, &rules, false)), "A. ");
}

TEST(CounterStyle, CopiesAndOrder) {
    CounterStyle a(ZKN_numeric);
    a.addSymbols("01");
    a.addRange(0, 10);
    CounterStyle b(a);
    EXPECT_FALSE(a < b || b < a);
    EXPECT_NE(a.getSymbols(), b.getSymbols()) << "a deep copy";
    b.addSymbol('2');
    EXPECT_TRUE(a < b || b < a);
    CounterStyle c(ZKN_cyclic);
    c = b;
    EXPECT_EQ(c.getSymbols()->size(), 3u);
    EXPECT_EQ(utf8(c.formatNumber(5, nullptr, nullptr, true)), "12");
    EXPECT_EQ(utf8(c.formatNumber(11, nullptr, nullptr, true)), "11") << "out of range: decimal";
    c.clrRange();
    c.clrSymbols();
    EXPECT_EQ(c.getRange(), nullptr);
    EXPECT_EQ(c.getSymbols(), nullptr);
    std::set<CounterStyle> ordered{a, b, c, a};
    EXPECT_EQ(ordered.size(), 3u);

    CounterStyle::Symbol url(u"img.png", /*isUrl=*/true);
    CounterStyle::Symbol text(u"img.png");
    EXPECT_NE(url, text);
    EXPECT_TRUE(text < url);
    EXPECT_EQ(CounterStyle::Symbol(0x1F600).length(), 2);
    EXPECT_TRUE(CounterStyle::Symbol(0xD800).isEmpty());
    EXPECT_TRUE(CounterStyle::IntSymbol(1, url) < CounterStyle::IntSymbol(2, text));
}

// Alphabetic and numeric systems against a plain model over random values.
TEST(CounterStyle, AlphabeticAndNumericAgreeWithAModel) {
    std::mt19937_64 random(14);
    const std::string digits = "0123456789abcdefghij";
    for (int base = 2; base <= 20; ++base) {
        CounterStyle numeric(ZKN_numeric);
        CounterStyle alphabetic(ZKN_alphabetic);
        numeric.addSymbols(digits.substr(0, static_cast<size_t>(base)).c_str());
        alphabetic.addSymbols(digits.substr(0, static_cast<size_t>(base)).c_str());
        for (int i = 0; i < 200; ++i) {
            long long value = static_cast<long long>(random() >> (1 + random() % 63));
            std::string expectNumeric, expectAlphabetic;
            for (unsigned long long v = static_cast<unsigned long long>(value);;) {
                expectNumeric.insert(expectNumeric.begin(), digits[v % base]);
                v /= base;
                if (v == 0)
                    break;
            }
            for (unsigned long long v = static_cast<unsigned long long>(value); v > 0;) {
                --v;
                expectAlphabetic.insert(expectAlphabetic.begin(), digits[v % base]);
                v /= base;
            }
            if (value == 0)
                expectAlphabetic = "0"; // out of the alphabetic range: decimal
            SCOPED_TRACE(std::to_string(base) + " " + std::to_string(value));
            EXPECT_EQ(utf8(numeric.formatNumber(value, nullptr, nullptr, true)), expectNumeric);
            EXPECT_EQ(utf8(alphabetic.formatNumber(value, nullptr, nullptr, true)),
                      expectAlphabetic);
        }
    }
}

// The predefined styles are shared: several threads format through them and their fallbacks.
TEST(CounterStyle, SharedStylesFormatOnManyThreads) {
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&wrong, t] {
            const CounterStyle& roman = predefined(t % 2 ? u"lower-roman" : u"japanese-formal");
            for (long long value = 3990; value < 4100; ++value) {
                UnicodeString text = roman.formatNumber(value, &ZkUtil::getPredefinedCounterStyle,
                                                        nullptr, /*plain=*/true);
                if (t % 2 && value >= 4000 && text != UnicodeString(ZkUtil::toString(value)))
                    ++wrong;
                if (t % 2 == 0 && text.isEmpty())
                    ++wrong;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(wrong.load(), 0);
}
