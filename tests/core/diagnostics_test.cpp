// The XML error log, byte for byte against the logs in tests/data/core, and message patterns.
#include "support.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/core/error.h>
#include <zkcommon/core/errorxml.h>
#include <zkcommon/core/message.h>

using namespace ZkCommonNS;

namespace {
std::string expected(const std::string& name) {
    std::ifstream in(ZK_TEST_DATA_DIR "/core/" + name, std::ios::binary);
    return readAll(in);
}
} // namespace

TEST(ErrorXML, FullLogWithoutPrefix) {
    std::ostringstream out;
    {
        ZkErrorXML log(out, u"Tool & Co", u"2.5 \"beta\"", UnicodeString(), UnicodeString());
        log.errorMessage(ZkError(0x300 | 12, u"a < b & c > \"d\"", UnicodeString(), 3, 14,
                                 u"file:///tmp/a&b.xml"));
        log.errorMessage(ZkError()); // code 0 leaves no trace
        log.errorMessage(0x200, u"ends with a line feed\n", 0, -1, UnicodeString());
        log.errorMessage(5, u"fatal", -1, 2, UnicodeString());
        log.errorMessage(0x380, u"information", 1, 0, UnicodeString());
        log.errorMessage(UnicodeString());
        log.errorMessage(u"plain \u00e9");
        log.infoMessage(u"done > 1");
        log.infoMessage(UnicodeString());
    }
    EXPECT_EQ(out.str(), expected("errorlog.xml"));
}

TEST(ErrorXML, Prefix) {
    std::ostringstream out;
    {
        ZkErrorXML log(out, UnicodeString(), UnicodeString(), u"(c) me", u"p");
        log.errorMessage(0x200, u"w", -1, -1, u"u");
        log.infoMessage(u"i");
    }
    EXPECT_EQ(out.str(), expected("errorlog-prefix.xml"));
}

TEST(Message, FillsArguments) {
    UnicodeString none;
    EXPECT_EQ(ZkMessage("Element {0} in {1}.", u"fo:block", u"a.fo", none, none, none).toString(),
              u"Element fo:block in a.fo.");
    EXPECT_EQ(ZkMessage(u"{4}{3}{2}{1}{0}", u"a", u"b", u"c", u"d", u"e").toString(), u"edcba");
    // A single quote escapes, as in every ICU pattern.
    EXPECT_EQ(ZkMessage("it''s '{0}' {0}", u"x", none, none, none, none).toString(), u"it's {0} x");
    // A bad pattern gives no exception.
    ZkMessage bad("unclosed {0", u"x", none, none, none, none);
    (void)bad.toString();
}
