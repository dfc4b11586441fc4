// Tests of ZkUtil::formatNumber: every numbering system of the dispatch from a table of known
// answers, the width rule of decimal tokens, grouping, and a model of the decimal branch.
#include "support.h"
#include "zkcommon/text/lang.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <random>
#include <string>

using namespace ZkCommonNS;

namespace {

UnicodeString u(const std::string& text) {
    return UnicodeString::fromUTF8(text);
}

} // namespace

// tests/data/text/numberformat.tsv: format, value, language, letter value, separator, group
// size and the expected text, one case a line; grouping counts from the right.
TEST(FormatNumber, KnownAnswersOfEverySystem) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/text/numberformat.tsv");
    for (const auto& f : rows) {
        ASSERT_EQ(f.size(), 7u);
        SCOPED_TRACE("format '" + f[0] + "' value " + f[1] + " lang " + f[2]);
        ZkLang lang = f[2].empty() ? ZkLang("en") : ZkLang(u(f[2]));
        ZkNameEnum letterValue = f[3] == "alphabetic"    ? ZKN_alphabetic
                                 : f[3] == "traditional" ? ZKN_traditional
                                                         : ZKN_EMPTY;
        int groupSize = f[5].empty() ? 0 : std::stoi(f[5]);
        EXPECT_EQ(utf8(ZkUtil::formatNumber(std::stoll(f[1]), u(f[0]), u(f[4]), groupSize, lang,
                                            letterValue)),
                  f[6]);
    }
    EXPECT_GT(rows.size(), 100u);
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
