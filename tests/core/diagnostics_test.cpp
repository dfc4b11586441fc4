// The XML error log, byte for byte, and message patterns.
#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/core/error.h>
#include <zkcommon/core/errorxml.h>
#include <zkcommon/core/message.h>

using namespace ZkCommonNS;

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
    EXPECT_EQ(out.str(),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<errors xmlns=\"http://www.velmora.com/names/Error\" application=\"Tool &amp; Co\""
              " version=\"2.5 &quot;beta&quot;\">\n"
              "<error level=\"3\" code=\"780\" line=\"3\" column=\"14\""
              " source=\"file:///tmp/a&amp;b.xml\">\n"
              "a &lt; b &amp; c &gt; \"d\"\n"
              "</error>\n"
              "<error level=\"2\" code=\"512\">\n"
              "ends with a line feed\n"
              "</error>\n"
              "<error level=\"4\" code=\"5\" column=\"2\">\n"
              "fatal\n"
              "</error>\n"
              "<error level=\"1\" code=\"896\" line=\"1\">\n"
              "information\n"
              "</error>\n"
              "<error>\n"
              "plain \xc3\xa9\n"
              "</error>\n"
              "<info>done &gt; 1</info>\n"
              "<info></info>\n"
              "</errors>\n");
}

TEST(ErrorXML, Prefix) {
    std::ostringstream out;
    {
        ZkErrorXML log(out, UnicodeString(), UnicodeString(), u"(c) me", u"p");
        log.errorMessage(0x200, u"w", -1, -1, u"u");
        log.infoMessage(u"i");
    }
    EXPECT_EQ(out.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                         "<p:errors xmlns:p=\"http://www.velmora.com/names/Error\""
                         " copyright=\"(c) me\">\n"
                         "<p:error level=\"2\" code=\"512\" source=\"u\">\n"
                         "w\n"
                         "</p:error>\n"
                         "<p:info>i</p:info>\n"
                         "</p:errors>\n");
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
