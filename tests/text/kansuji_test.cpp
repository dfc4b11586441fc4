// Tests of ZkUtil::convertKansuji in its three styles, with digit sets, marks and punctuation.
#include "support.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

// tests/data/text/kansuji.tsv: style, digit set, marks (\u escapes allowed), text, expected.
TEST(Kansuji, KnownAnswers) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/text/kansuji.tsv");
    for (const auto& fields : rows) {
        ASSERT_EQ(fields.size(), 5u);
        SCOPED_TRACE(fields[0] + " '" + fields[3] + "'");
        UnicodeString marks = UnicodeString::fromUTF8(fields[2]).unescape();
        EXPECT_EQ(utf8(ZkUtil::convertKansuji(UnicodeString::fromUTF8(fields[3]),
                                              ZkName(UnicodeString::fromUTF8(fields[0])),
                                              ZkName(UnicodeString::fromUTF8(fields[1])), marks)),
                  fields[4]);
    }
    EXPECT_GT(rows.size(), 25u);
}

TEST(Kansuji, ValuesAreFormattedFirst) {
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(1203, ZKN_readable, ZKN_kanji, UnicodeString())),
              "千二百三");
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(-12, ZKN_simple, ZKN_kanji, UnicodeString())), "-一二");
    EXPECT_EQ(
        utf8(ZkUtil::convertKansuji(1234567, ZKN_simple, ZKN_kanji, UnicodeString(), u",", 3)),
        "一、二三四、五六七");
    // An unknown style reads as simple.
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(u"42", ZkName(u"fancy"), ZKN_kanji, UnicodeString())),
              "四二");
}

TEST(Kansuji, MarksReplaceInOrder) {
    // ".", ",", ten, hundred, thousand, then the twelve group words.
    UnicodeString marks(u"pcTHKabcdefghijkl");
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(u"1.5", ZKN_simple, ZKN_latin, marks)), "１p５");
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(u"2345", ZKN_readable, ZKN_latin, marks)), "２K３H４T５");
    // Past the twelfth group word a place is written without a word.
    UnicodeString huge(u"1");
    for (int i = 0; i < 52; ++i)
        huge.append(u'0');
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(huge, ZKN_readable, ZKN_latin, marks)), "１");
    huge.setCharAt(huge.length() - 49, u'2'); // 2 * 10^48, the twelfth word
    EXPECT_EQ(utf8(ZkUtil::convertKansuji(huge, ZKN_readable, ZKN_latin, marks)), "１２l");
}

TEST(Kansuji, LongDigitRunsStayLinear) {
    UnicodeString digits;
    for (int i = 0; i < 100000; ++i)
        digits.append(static_cast<char16_t>(u'0' + i % 10));
    EXPECT_EQ(ZkUtil::convertKansuji(digits, ZKN_simple, ZKN_kanji, UnicodeString()).length(),
              100000);
    EXPECT_GT(ZkUtil::convertKansuji(digits, ZKN_readable, ZKN_kanji, UnicodeString()).length(),
              100000);
}
