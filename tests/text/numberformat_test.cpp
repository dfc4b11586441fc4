// Tests of ZkUtil::formatNumber: every numbering system of the dispatch from a table of known
// answers, the width rule of decimal tokens, grouping, and a model of the decimal branch.
#include "support.h"
#include "zkcommon/text/lang.h"
#include "zkcommon/text/util.h"

#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <string>
#include <vector>

using namespace ZkCommonNS;

namespace {

std::vector<std::string> splitTabs(const std::string& line) {
    std::vector<std::string> fields;
    size_t start = 0;
    for (;;) {
        size_t tab = line.find('\t', start);
        fields.push_back(line.substr(start, tab == std::string::npos ? tab : tab - start));
        if (tab == std::string::npos)
            return fields;
        start = tab + 1;
    }
}

UnicodeString u(const std::string& text) {
    return UnicodeString::fromUTF8(text);
}

} // namespace

// tests/data/text/numberformat.tsv: format, value, language, letter value, separator, group
// size and the expected text, one case a line.
TEST(FormatNumber, KnownAnswersOfEverySystem) {
    std::ifstream in(ZK_TEST_DATA_DIR "/text/numberformat.tsv");
    ASSERT_TRUE(in);
    std::string line;
    int rows = 0;
    while (std::getline(in, line)) {
        if (line.empty() || line.rfind("# ", 0) == 0)
            continue;
        std::vector<std::string> f = splitTabs(line);
        ASSERT_EQ(f.size(), 7u) << line;
        SCOPED_TRACE("format '" + f[0] + "' value " + f[1] + " lang " + f[2]);
        ZkLang lang = f[2].empty() ? ZkLang("en") : ZkLang(u(f[2]));
        ZkNameEnum letterValue = f[3] == "alphabetic"    ? ZKN_alphabetic
                                 : f[3] == "traditional" ? ZKN_traditional
                                                         : ZKN_EMPTY;
        int groupSize = f[5].empty() ? 0 : std::stoi(f[5]);
        EXPECT_EQ(utf8(ZkUtil::formatNumber(std::stoll(f[1]), u(f[0]), u(f[4]), groupSize, lang,
                                            letterValue)),
                  f[6]);
        ++rows;
    }
    EXPECT_GT(rows, 100);
}

TEST(FormatNumber, ShortOverload) {
    ZkLang lang("en");
    EXPECT_EQ(utf8(ZkUtil::formatNumber(5, u"1", lang)), "5");
    EXPECT_EQ(utf8(ZkUtil::formatNumber(-5, u"1", lang)), "-5");
    EXPECT_EQ(utf8(ZkUtil::formatNumber(27, u"a", lang)), "aa");
    EXPECT_EQ(utf8(ZkUtil::formatNumber(-9223372036854775807LL - 1, u"1", lang)),
              "-9223372036854775808");
    EXPECT_EQ(utf8(ZkUtil::formatNumber(-9223372036854775807LL - 1, u"a", lang)),
              "-9223372036854775808");
    // The longest alphabetic text of a 64-bit value.
    EXPECT_EQ(ZkUtil::formatNumber(9223372036854775807LL, u"a", lang).length(), 14);
}

TEST(FormatNumber, GroupingCountsFromTheRight) {
    ZkLang lang("en");
    // clang-format off
    struct Case { long long value; const char16_t* format; const char16_t* separator; int size; const char* expected; } cases[] = {
        {1234567, u"1", u",", 3, "1,234,567"}, {123, u"1", u",", 3, "123"},
        {1234, u"1", u",", 0, "1234"},          {1234, u"1", u"", 3, "1234"},
        {1234567, u"1", u"\u2009", 2, "1\u200923\u200945\u200967"},
        {1234567, u"\u0661", u"\u066C", 3, "\u0661\u066C\u0662\u0663\u0664\u066C\u0665\u0666\u0667"},
        {12, u"0001", u",", 3, "0,012"}, {-1234, u"1", u",", 3, "-1,234"},
        {0, u"a", u",", 3, "0"}, {-12345, u"i", u".", 3, "-12.345"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected);
        EXPECT_EQ(
            utf8(ZkUtil::formatNumber(c.value, c.format, c.separator, c.size, lang, ZKN_EMPTY)),
            c.expected);
    }
}

// The decimal branch against printf over random values and widths.
TEST(FormatNumber, DecimalTokensAgreeWithPrintf) {
    std::mt19937_64 random(7);
    ZkLang lang("en");
    for (int i = 0; i < 2000; ++i) {
        long long value = static_cast<long long>(random()) >> (random() % 64);
        int width = 1 + static_cast<int>(random() % 25);
        UnicodeString token;
        for (int k = 1; k < width; ++k)
            token.append(u'0');
        token.append(u'1');
        char expected[64];
        std::snprintf(expected, sizeof expected, "%0*lld", width, value);
        SCOPED_TRACE(expected);
        EXPECT_EQ(utf8(ZkUtil::formatNumber(value, token, lang)), expected);
    }
}
