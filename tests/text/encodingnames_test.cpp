// Encoding names: the canonical spelling the stream layer switches on, and the name written
// into documents.
#include "support.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

namespace {

struct NameCase {
    const char* name;
    const char* expected;
};

} // namespace

// clang-format off
TEST(EncodingNames, CanonicalSpellings) {
    const NameCase cases[] = {
        {"shift_jis", "WINDOWS31J"}, {"Windows31J", "WINDOWS31J"}, {" utf-8 ", "UTF-8"}, {"gb2312", "ChineseGBK"}, {"GBK", "ChineseGBK"},
        {"big5", "ChineseBIG5"}, {"ks_c_5601-1987", "KoreanKSC"}, {"iso-ir-149", "KoreanKSC"}, {"unicode", "ISO-10646-UCS-2"},
        {"UTF-16", "ISO-10646-UCS-2"}, {"ucs-4", "ISO-10646-UCS-4"}, {"utf-16le", "UTF-16LE"}, {"ascii", "US-ASCII"}, {"ANSI_X3.4:1968", "US-ASCII"},
        {"iso_646.irv:1991", "US-ASCII"}, {"latin1", "ISO-8859-1"}, {"Latin-9", "ISO-8859-15"}, {"cyrillic", "ISO-8859-5"},
        {"iso_8859-16:2001", "ISO-8859-16"},
        {"euc-jp", "EUC-JP"}, {"iso-2022-jp", "ISO-2022-JP"}, {"x-foo", "x-foo"}, {" koi8-r ", " koi8-r "}, {"", ""},
    };
    for (const NameCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.expected, utf8(ZkUtil::getCanonicalEncoding(UnicodeString::fromUTF8(c.name))));
    }
}
// clang-format on

// clang-format off
TEST(EncodingNames, StandardSpellings) {
    const NameCase cases[] = {
        {"", "UTF-8"}, {"   ", "UTF-8"}, {"ansi_x3.4", "ANSI_X3.4-1968"}, {"ChineseBIG5", "BIG5"}, {"chinesegbk", "GBK"},
        {"ISO_646.IRV", "ISO_646.IRV:1991"},
        {"KoreanKSC", "KS_C_5601-1987"}, {"utf-8", "UTF-8"}, {"shift_jis", "Shift_JIS"}, {"latin1", "ISO-8859-1"}, {"koi8-r", "KOI8-R"},
        {"x-not-an-encoding", "X-NOT-AN-ENCODING"},
    };
    for (const NameCase& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.expected, utf8(ZkUtil::getStandardEncoding(UnicodeString::fromUTF8(c.name))));
    }
}
// clang-format on

TEST(EncodingNames, CleanupRebuildsTheTable) {
    EXPECT_EQ("WINDOWS31J", utf8(ZkUtil::getCanonicalEncoding(u"SHIFT_JIS")));
    ZkUtil::cleanup();
    EXPECT_EQ("WINDOWS31J", utf8(ZkUtil::getCanonicalEncoding(u"SHIFT_JIS")));
    ZkUtil::cleanup();
    ZkUtil::cleanup();
    EXPECT_EQ("ChineseGBK", utf8(ZkUtil::getCanonicalEncoding(u"gb2312")));
}

TEST(EncodingNames, LongPathsAreEnabled) {
    EXPECT_TRUE(ZkUtil::isSystemLongPathEnabled());
}
