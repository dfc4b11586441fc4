// Tests of ZkUtil::CounterStyle: every predefined style against a table of known markers, each
// system on hand-built styles, padding, affixes and the fallback chain.
#include "support.h"
#include "zkcommon/text/counterstyle.h"

#include <atomic>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>
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
// its range or symbol list and the first value past them (the fallback), then markers of the
// additive, CJK and Ethiopic systems past those samples.
TEST(CounterStyle, PredefinedStylesMatchTheTable) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/text/counterstyles.tsv");
    std::set<std::string> styles;
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3u);
        SCOPED_TRACE(row[0] + " " + row[1]);
        ASSERT_GE(row[2].size(), 2u);
        const CounterStyle* style =
            ZkUtil::getPredefinedCounterStyle(ZkName(UnicodeString::fromUTF8(row[0])), nullptr);
        ASSERT_NE(style, nullptr);
        EXPECT_TRUE(style->isPredefined());
        // The quotes keep trailing blanks.
        EXPECT_EQ(marker(*style, std::stoll(row[1])), row[2].substr(1, row[2].size() - 2));
        styles.insert(row[0]);
    }
    EXPECT_EQ(styles.size(), 154u);
    EXPECT_GT(rows.size(), 900u);
}

TEST(CounterStyle, LookupPlainFormAndCleanup) {
    EXPECT_EQ(ZkUtil::getPredefinedCounterStyle(ZkName(), nullptr), nullptr);
    EXPECT_EQ(ZkUtil::getPredefinedCounterStyle(ZkName(u"no-such-style-here"), nullptr), nullptr);
    EXPECT_EQ(ZkUtil::getPredefinedCounterStyle(ZkName(ZKN_div), nullptr), nullptr);
    // A pair of names shares the data but each is a style of its own.
    const CounterStyle& alpha = predefined(u"lower-alpha");
    const CounterStyle& latin = predefined(u"lower-latin");
    EXPECT_NE(&alpha, &latin);
    EXPECT_FALSE(alpha < latin || latin < alpha);
    EXPECT_EQ(marker(alpha, 1, /*plain=*/true), "a");
    EXPECT_EQ(marker(predefined(u"decimal"), -3, true), "-3");
    EXPECT_EQ(marker(predefined(u"lower-roman"), 5000, true), "5000");
    ZkUtil::cleanup();
    EXPECT_EQ(marker(predefined(u"upper-roman"), 9), "IX. ");
}

TEST(CounterStyle, EachSystemOnItsOwnSymbols) {
    CounterStyle cyclic(ZKN_cyclic);
    cyclic.addSymbols("xyz");
    CounterStyle symbolic(ZKN_symbolic);
    symbolic.addSymbols(CounterStyle::Symbol(u"*"), CounterStyle::Symbol(u"\u2020"), 0);
    CounterStyle fixed(ZKN_fixed);
    fixed.setFirst(5);
    fixed.addSymbols('a', 'b', 'c', 0);
    CounterStyle additive(ZKN_additive);
    additive.addAdditiveSymbol(5, "V");
    additive.addAdditiveSymbol(1, 'I');
    CounterStyle gaps(ZKN_additive); // a remainder that no weight covers
    gaps.addAdditiveSymbol(3, "c");
    CounterStyle oneDigit(ZKN_numeric); // numeric needs two symbols
    oneDigit.addSymbol('0');
    CounterStyle unknown(ZkName(u"no-such-system"));
    // clang-format off
    const struct { const CounterStyle& style; long long value; const char* expected; } cases[] = {
        {cyclic, 1, "x. "}, {cyclic, 4, "x. "}, {cyclic, 0, "z. "}, {cyclic, -1, "y. "},
        {symbolic, 3, "**. "}, {symbolic, 4, "\u2020\u2020. "}, {symbolic, 0, "0. "},
        {fixed, 5, "a. "}, {fixed, 7, "c. "}, {fixed, 4, "4. "}, {fixed, 8, "8. "},
        {additive, 7, "VII. "}, {additive, 0, "0. "}, {additive, -7, "-7. "},
        {gaps, 7, "7. "}, {oneDigit, 5, "5. "}, {unknown, 5, "5. "},
    };
    // clang-format on
    for (const auto& c : cases)
        EXPECT_EQ(utf8(c.style.formatNumber(c.value)), c.expected) << c.value;
    additive.addAdditiveSymbol(0, "N");
    EXPECT_EQ(utf8(additive.formatNumber(0)), "N. ");
    additive.addRange(-10, 10);
    EXPECT_EQ(utf8(additive.formatNumber(-7)), "-VII. ");
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
