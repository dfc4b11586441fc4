// Encoding names: the canonical spelling the stream layer switches on, and the name written
// into documents.
#include "support.h"
#include "zkcommon/text/util.h"

#include <gtest/gtest.h>
#include <string>

using namespace ZkCommonNS;

// tests/data/text/encodingnames.tsv: "canonical" or "standard", the name, the expected spelling.
TEST(EncodingNames, CanonicalAndStandardSpellings) {
    const auto rows = readTable(ZK_TEST_DATA_DIR "/text/encodingnames.tsv");
    ASSERT_GT(rows.size(), 30u);
    for (const auto& row : rows) {
        ASSERT_EQ(row.size(), 3u);
        SCOPED_TRACE(row[0] + " '" + row[1] + "'");
        const UnicodeString name = UnicodeString::fromUTF8(row[1]);
        EXPECT_EQ(row[2], utf8(row[0] == "canonical" ? ZkUtil::getCanonicalEncoding(name)
                                                     : ZkUtil::getStandardEncoding(name)));
    }
}

TEST(EncodingNames, CleanupRebuildsTheTable) {
    EXPECT_EQ("WINDOWS31J", utf8(ZkUtil::getCanonicalEncoding(u"SHIFT_JIS")));
    ZkUtil::cleanup();
    EXPECT_EQ("WINDOWS31J", utf8(ZkUtil::getCanonicalEncoding(u"SHIFT_JIS")));
    ZkUtil::cleanup();
    ZkUtil::cleanup();
    EXPECT_EQ("ChineseGBK", utf8(ZkUtil::getCanonicalEncoding(u"gb2312")));
    EXPECT_TRUE(ZkUtil::isSystemLongPathEnabled());
}
