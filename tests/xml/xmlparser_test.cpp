// The pull parser: event sequences, the two reporting routes, line ends and positions,
// decoders and encoding changes, namespaces, entities, limits and the loader adapter.
#include "support.h"

#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <sstream>
#include <vector>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/values/value.h>
#include <zkcommon/xml/xmlloadsource.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

/// The bytes of a literal, inner NULs included.
template <size_t N> std::string bytes(const char (&text)[N]) {
    return std::string(text, N - 1);
}

ZkPtr<ZkXmlParser> open(std::istringstream& in, const std::string& input) {
    in.str(input);
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setInput(in, UnicodeString(), UnicodeString());
    return parser;
}

/// The events of a whole parse, one word each, with the text or name behind a colon.
std::string events(ZkXmlParser& parser, bool tokens) {
    std::string out;
    for (int guard = 0; guard < 10000; ++guard) {
        int event = tokens ? parser.nextToken() : parser.next();
        if (event == ZkXmlParser::END_DOCUMENT)
            break;
        if (!out.empty())
            out += " ";
        out += utf8(ZkXmlParser::getEventName(event));
        if (event == ZkXmlParser::START_TAG || event == ZkXmlParser::END_TAG)
            out += ":" + utf8(parser.getName().toString());
        else
            out += ":" + utf8(parser.getText());
    }
    return out;
}

std::string events(const std::string& input, bool tokens = false) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, input);
    return events(*parser, tokens);
}

/// The events of a whole parse, or "error " and the code and message of the error it throws.
std::string outcome(ZkXmlParser& parser) {
    try {
        return events(parser, false);
    } catch (const ZkError& error) {
        return "error " + std::to_string(error.getErrorCode()) + ": " + utf8(error.getRawMessage());
    }
}

/// The outcome of parsing `input` whole.
std::string outcomeOf(const std::string& input) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, input);
    return outcome(*parser);
}

} // namespace

TEST(XmlParser, NextMergesWhatNextTokenSplits) {
    EXPECT_EQ("START_TAG:r TEXT:ab END_TAG:r", events("<r>a<!-- c -->b</r>"));
    EXPECT_EQ("START_TAG:r TEXT:a COMMENT: c  TEXT:b END_TAG:r",
              events("<r>a<!-- c -->b</r>", true));
    EXPECT_EQ("START_TAG:r TEXT:x<y&z END_TAG:r", events("<r>x&lt;y<![CDATA[&]]>z</r>"));
    EXPECT_EQ("START_TAG:r TEXT:x ENTITY_REF:&#60; TEXT:y CDSECT:& TEXT:z END_TAG:r",
              events("<r>x&lt;y<![CDATA[&]]>z</r>", true));
    EXPECT_EQ("START_TAG:r TEXT:AB END_TAG:r", events("<r>&#x41;&#66;</r>"));
    EXPECT_EQ("IGNORABLE_WHITESPACE:\n PROCESSING_INSTRUCTION:d START_TAG:r END_TAG:r",
              events("\n<?p d ?><r/>", true));
    // next() passes over instructions unless asked to report them.
    EXPECT_EQ("START_TAG:r TEXT:ab END_TAG:r", events("<r>a<?p d?>b</r>"));
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r>a<?p d?>b</r>");
    parser->setFeature(ZkXmlParser::FEATURE_REPORT_PI, true);
    EXPECT_EQ("START_TAG:r TEXT:a PROCESSING_INSTRUCTION:d TEXT:b END_TAG:r",
              events(*parser, false));
}

TEST(XmlParser, WithoutCallbackFatalThrowsAndTheRestQueues) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r><!-- a -- b --><x/></r>");
    EXPECT_EQ("START_TAG:r START_TAG:x END_TAG:x END_TAG:r", events(*parser, false));
    ZkError error;
    ASSERT_TRUE(parser->popError(error));
    EXPECT_EQ(771, error.getErrorCode());
    EXPECT_EQ("Unexpected character '--' in comment\nCOMMENT, Line 1, Col 12.",
              utf8(error.getRawMessage()));
    EXPECT_FALSE(parser->popError(error));

    // An undefined entity is fatal without a callback: 515 becomes its twin 158.
    std::istringstream in2;
    parser = open(in2, "<r>&u;</r>");
    EXPECT_EQ(outcome(*parser),
              "error 158: Reference to undefined entity: &u;\nENTITY_REF, Line 1, Col 6.");
    parser->setFeature(ZkXmlParser::FEATURE_NO_POSITION, true);
    std::istringstream in3("<a></b>");
    parser->setInput(in3, UnicodeString(), UnicodeString());
    EXPECT_EQ(outcome(*parser), "error 134: End tag </b> does not match the start tag <a>.");
}

namespace {
void countCalls(const ZkError&, void* calls) {
    ++*static_cast<int*>(calls);
}
} // namespace

TEST(XmlParser, CallbackEndsNextButNotNextToken) {
    int calls = 0;
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<a><b></a>");
    parser->setCallbackError(countCalls, &calls);
    EXPECT_EQ("START_TAG:a START_TAG:b", events(*parser, false));
    EXPECT_EQ(1, calls);
    std::istringstream in2("<a><b></a>");
    parser->setInput(in2, UnicodeString(), UnicodeString());
    parser->nextToken();
    parser->nextToken();
    try {
        parser->nextToken();
        FAIL() << "no error";
    } catch (const ZkError& thrown) {
        EXPECT_EQ(128, thrown.getErrorCode());
    }
    EXPECT_EQ(2, calls);
    // The parser takes a new input after any failure.
    std::istringstream in3("<c/>");
    parser->setInput(in3, UnicodeString(), UnicodeString());
    EXPECT_EQ("START_TAG:c END_TAG:c", events(*parser, false));
}

TEST(XmlParser, GettersOutsideTheirState) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r a='1'>t</r>");
    EXPECT_EQ(-1, parser->getAttributeCount());
    EXPECT_THROW(parser->getAttributeValue(0), ZkError);
    EXPECT_THROW(parser->isEmptyElementTag(), ZkError);
    EXPECT_THROW(parser->isWhitespace(), ZkError);
    EXPECT_EQ(ZkXmlParser::START_TAG, parser->next());
    EXPECT_EQ(1, parser->getAttributeCount());
    EXPECT_EQ("1", utf8(parser->getAttributeValue(0)));
    EXPECT_EQ("1", utf8(parser->getAttributeValue(ZkName(), ZkName(u"a"))));
    EXPECT_TRUE(parser->getAttributeValue(ZkName(), ZkName(u"b")).isBogus());
    EXPECT_THROW(parser->getAttributeName(1), ZkError);
    EXPECT_THROW(parser->getAttributeName(-1), ZkError);
    EXPECT_FALSE(parser->isEmptyElementTag());
    EXPECT_EQ(ZkXmlParser::TEXT, parser->next());
    EXPECT_FALSE(parser->isWhitespace());
    EXPECT_EQ(-1, parser->getAttributeCount());
    EXPECT_EQ("TEXT, Line 1, Col 12.", utf8(parser->getPositionDescription()));
}

TEST(XmlParser, LineEndsCountOneLineEach) {
    // CR LF, CR NEL and a lone CR are one line end each; under XML 1.0 LINE SEPARATOR is none.
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r>a\r\nb\r\xC2\x85"
                                         "c\rd\xE2\x80\xA8</r>");
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    ASSERT_EQ(ZkXmlParser::TEXT, parser->next());
    EXPECT_EQ(utf8(UnicodeString(u"a\nb\nc\nd\u2028")), utf8(parser->getText()));
    EXPECT_EQ(4, parser->getLineNumber());
    std::istringstream in11;
    parser = open(in11, "<?xml version='1.1'?><r>a\xC2\x85"
                        "b\xE2\x80\xA8</r>");
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    ASSERT_EQ(ZkXmlParser::TEXT, parser->next());
    EXPECT_EQ("a\nb\n", utf8(parser->getText()));
    EXPECT_EQ(3, parser->getLineNumber());
    // XML 1.1 takes the restricted controls by reference only.
    EXPECT_EQ("START_TAG:r TEXT:\x01\xC2\x80 END_TAG:r",
              events("<?xml version='1.1'?><r>&#1;&#x80;</r>"));
    EXPECT_THROW(events("<?xml version='1.1'?><r>\xC2\x80</r>"), ZkError);
    EXPECT_THROW(events("<r>&#1;</r>"), ZkError);
}

TEST(XmlParser, DecodersAndSignatures) {
    struct Case {
        std::string bytes;
        const char16_t* text;
        const char* encoding;
    };
    // clang-format off
    const Case cases[] = {
        {bytes("\xFF\xFE<\0r\0>\0\xE9\0<\0/\0r\0>\0"), u"\u00E9", "UTF-16"},
        {bytes("<\0r\0>\0\xE9\0<\0/\0r\0>\0"), u"\u00E9", "UTF-16LE"},
        {bytes("\0<\0r\0>\xD8\x3D\xDE\x00\0<\0/\0r\0>"), u"\U0001F600", "UTF-16BE"},
        {bytes("\0\0\0<\0\0\0r\0\0\0>\0\x01\xF6\0\0\0\0<\0\0\0/\0\0\0r\0\0\0>"), u"\U0001F600", "UTF-32BE"},
        {"<?xml version='1.0' encoding='ISO-8859-2'?><r>\xA1\xFF</r>", u"\u0104\u02D9", "ISO-8859-2"},
        {"<?xml version='1.0' encoding='latin1'?><r>\xE9</r>", u"\u00E9", "ISO-8859-1"},
        {"<?xml version='1.0' encoding='ISO-8859-8'?><r>\xE0\xFF</r>", u"\u05D0\u00FF", "ISO-8859-8"},
        {"<?xml version='1.0' encoding='Shift_JIS'?><r>\x82\xA0</r>", u"\u3042", "WINDOWS31J"},
        {"<r>\xC3\xA9\xFF\xE2\x82</r>", u"\u00E9\uFFFD\uFFFD", "UTF-8"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(c.encoding);
        std::istringstream in;
        ZkPtr<ZkXmlParser> parser = open(in, c.bytes);
        ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
        ASSERT_EQ(ZkXmlParser::TEXT, parser->next());
        EXPECT_EQ(utf8(UnicodeString(c.text)), utf8(parser->getText()));
        EXPECT_EQ(c.encoding, utf8(parser->getInputEncoding()));
    }
}

TEST(XmlParser, EncodingFeatures) {
    const std::string input = "<?xml version='1.0' encoding='Shift_JIS'?><r/>";
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, input);
    parser->setFeature(ZkXmlParser::FEATURE_STRICT_ENCODING, true);
    EXPECT_EQ(outcome(*parser).substr(0, 9), "error 181");
    std::istringstream in2;
    parser = open(in2, "<?xml version='1.0' encoding='x-unknown'?><r>\xE9</r>");
    parser->setFeature(ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING, true);
    EXPECT_EQ("START_TAG:r TEXT:\xEF\xBF\xBD END_TAG:r", events(*parser, false));
    // A sniffed unit size stays whatever the declaration says.
    std::string utf16 = bytes("<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0"
                              "1\0.\0"
                              "0\0'\0 \0"
                              "e\0n\0c\0o\0d\0i\0n\0g\0=\0'\0l\0a\0t\0i\0n\0"
                              "1\0'\0?\0>\0<\0r\0/\0>\0");
    std::istringstream in3;
    parser = open(in3, utf16);
    EXPECT_EQ("START_TAG:r END_TAG:r", events(*parser, false));
    EXPECT_EQ("UTF-16LE", utf8(parser->getInputEncoding()));
}

TEST(XmlParser, HugeTextLimit) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r>1234567</r>");
    parser->setHugeTextLimit(5);
    EXPECT_THROW(events(*parser, false), ZkError);
    std::istringstream in2("<r>123456</r>");
    parser->setHugeTextLimit(0);
    parser->setInput(in2, UnicodeString(), UnicodeString());
    EXPECT_EQ("START_TAG:r TEXT:123456 END_TAG:r", events(*parser, false));
    // Comments have a limit of their own, at least 100000000.
    std::istringstream in3("<r><!--123456--></r>");
    parser->setHugeTextLimit(5);
    parser->setInput(in3, UnicodeString(), UnicodeString());
    EXPECT_EQ("START_TAG:r COMMENT:123456 END_TAG:r", events(*parser, true));
}

TEST(XmlParser, NamespacesAndImpliedOnes) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser =
        open(in, "<svg><p:a xmlns:p='u' p:x='1' y='2'><b xmlns=''/></p:a></svg>");
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    EXPECT_EQ(ZKN_NS_SVG, parser->getNamespace());
    EXPECT_EQ(ZKN_NS_XLINK, parser->getNamespace(ZKN_xlink));
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    EXPECT_EQ(ZkName(u"u"), parser->getNamespace());
    EXPECT_EQ(ZkName(u"p"), parser->getPrefix());
    EXPECT_EQ("1", utf8(parser->getAttributeValue(ZkName(u"u"), ZkName(u"x"))));
    EXPECT_EQ("2", utf8(parser->getAttributeValue(ZkName(), ZkName(u"y"))));
    EXPECT_EQ(ZkName(u"u"), parser->getAttributeNamespace(1));
    EXPECT_EQ(ZKN_NS_XMLNS, parser->getAttributeNamespace(0));
    EXPECT_EQ(2, parser->getDepth());
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    EXPECT_EQ(ZkName(), parser->getNamespace());
    ASSERT_EQ(ZkXmlParser::END_TAG, parser->next());
    ASSERT_EQ(ZkXmlParser::END_TAG, parser->next());
    ASSERT_EQ(ZkXmlParser::END_TAG, parser->next());
    EXPECT_EQ(ZKN_NS_SVG, parser->getNamespace());
    EXPECT_EQ(ZkName(), parser->getNamespace(ZkName(u"p")));
    // The same local name in one namespace under two prefixes is a duplicate.
    std::istringstream in2;
    parser = open(in2, "<a xmlns:p='u' p:b='1' xmlns:q='u' q:b='2'/>");
    EXPECT_EQ(outcome(*parser), "error 136: Duplicate attribute: q:b\nSTART_TAG, Line 1, Col 44.");
}

TEST(XmlParser, EntitiesExpandAndLoopsStop) {
    struct Row {
        const char* input;
        const char16_t* e; ///< the replacement texts given to the parser
        const char16_t* f;
        const char* expected;
    };
    // clang-format off
    const Row rows[] = {
        {"<r>&e;</r>", u"x&amp;<b/>y", u"", "START_TAG:r TEXT:x& START_TAG:b END_TAG:b TEXT:y END_TAG:r"},
        {"<r>&e;&e;</r>", u"z", u"", "START_TAG:r TEXT:zz END_TAG:r"},
        {"<r>&e;</r>", u"a&f;", u"<b/>&e;", "error 184: Looped entity reference: &e;\nENTITY_REF, Line 1, Col 6."},
        {"<r a='&e;'/>", u"&f;", u"&e;", "error 184: Looped entity reference: &e;\nSTART_TAG, Line 1, Col 9."},
    };
    // clang-format on
    for (const Row& row : rows) {
        std::istringstream in;
        ZkPtr<ZkXmlParser> parser = open(in, row.input);
        parser->defineEntityReplacementText(ZkName(u"e"), row.e);
        parser->defineEntityReplacementText(ZkName(u"f"), row.f);
        EXPECT_EQ(outcome(*parser), row.expected) << row.input;
    }
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r a='[&e;]'/>");
    parser->defineEntityReplacementText(ZkName(u"e"), u"x&amp;\ty");
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    EXPECT_EQ("[x& y]", utf8(parser->getAttributeValue(0)));
    std::istringstream in5;
    parser = open(in5, "<r>&u;</r>");
    parser->setFeature(ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY, true);
    EXPECT_EQ("START_TAG:r END_TAG:r", events(*parser, false));
}

TEST(XmlParser, PushedTextStream) {
    TempDir dir;
    dir.file("inc.txt", "<not> & markup");
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    in.str("<r>a</r>");
    parser->setInput(in, UnicodeString(), UnicodeString::fromUTF8("file://" + dir.path() + "/"));
    ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
    parser->pushStream(u"inc.txt", ZKN_text, UnicodeString());
    ASSERT_EQ(ZkXmlParser::TEXT, parser->next());
    EXPECT_EQ("<not> & markupa", utf8(parser->getText()));
    EXPECT_THROW(parser->pushStream(u"missing.txt", ZKN_text, UnicodeString()), ZkError);
}

TEST(XmlParser, RewindReadsAgain) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r><a/></r>");
    parser->setAutoClose(false);
    std::string first = events(*parser, false);
    parser->rewind();
    EXPECT_EQ(first, events(*parser, false));
    // Closed at the end, a borrowed stream and an opened file are both read again.
    parser->setAutoClose(true);
    parser->rewind();
    EXPECT_EQ(first, events(*parser, false));
    parser->rewind();
    EXPECT_EQ(first, events(*parser, false));
    TempDir dir;
    ZkUri uri(UnicodeString::fromUTF8(dir.file("r.xml", "<r><a/></r>")), ZkUri::URISTR_FILEPATH);
    parser->setInput(uri, UnicodeString(), UnicodeString());
    EXPECT_EQ(first, events(*parser, false));
    parser->rewind();
    EXPECT_EQ(first, events(*parser, false));
}

TEST(XmlParser, FeedsTheDocumentLoader) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<r xmlns='u' a='1'>t<!--c-->u<b/></r>");
    ZkPtr<ZkDocument> document(new ZkDocument);
    document->setLoadSource(std::make_unique<ZkXmlParserLoadSource>(parser));
    document->load();
    ZkElement* root = document->getDocumentElement();
    ASSERT_NE(nullptr, root);
    EXPECT_EQ(ZkName(u"r"), root->getLocalName());
    EXPECT_EQ(ZkName(u"u"), root->getNamespaceUri());
    EXPECT_EQ("1", utf8(root->getAttribute(ZkName(u"a")).toString()));
    ASSERT_NE(nullptr, root->getFirstChild());
    EXPECT_EQ("tu", utf8(root->getFirstChild()->getText()));
}

namespace {

/// A stream that hands out at most seven bytes per read, so sequences and line ends split.
class TrickleBuf : public std::streambuf {
public:
    explicit TrickleBuf(std::string bytes) : m_bytes(std::move(bytes)) {}

protected:
    int_type underflow() override {
        if (m_pos >= m_bytes.size())
            return traits_type::eof();
        size_t length = std::min<size_t>(7, m_bytes.size() - m_pos);
        char* start = &m_bytes[m_pos];
        setg(start, start, start + length);
        m_pos += length;
        return traits_type::to_int_type(*start);
    }
    std::streamsize xsgetn(char* target, std::streamsize count) override {
        std::streamsize got = 0;
        if (gptr() == egptr() && underflow() == traits_type::eof())
            return 0;
        got = std::min<std::streamsize>(count, egptr() - gptr());
        memcpy(target, gptr(), size_t(got));
        gbump(int(got));
        return got;
    }

private:
    std::string m_bytes;
    size_t m_pos = 0;
};

/// `text` in `encoding` by ICU's converter, with a byte order mark for the UTF-16 and UTF-32 forms.
std::string encode(const UnicodeString& text, const char* encoding) {
    std::string out(size_t(text.length()) * 4 + 4, '\0');
    out.resize(size_t(text.extract(0, text.length(), &out[0], uint32_t(out.size()), encoding)));
    if (!strcmp(encoding, "UTF-8"))
        return out;
    const char* mark = strstr(encoding, "32")
                           ? (strstr(encoding, "LE") ? "\xFF\xFE\0\0" : "\0\0\xFE\xFF")
                           : (strstr(encoding, "LE") ? "\xFF\xFE" : "\xFE\xFF");
    return std::string(mark, strstr(encoding, "32") ? 4 : 2) + out;
}

} // namespace

TEST(XmlParser, EveryDecoderGivesTheSameEventsAcrossBlockEdges) {
    // A random document, larger than the read block, of ASCII, Latin, CJK and supplementary
    // characters with CR LF line ends: its events are the same in every encoding.
    srand(7);
    const char16_t* pieces[] = {u"a", u"\u00E9", u"\u4E2D", u"\U0001F600", u"\r\n",
                                u" ", u"&amp;",  u"x",      u"\r"};
    UnicodeString document(u"<r>");
    for (int i = 0; i < 40000; ++i) {
        if (i % 500 == 0)
            document.append(u"<e a='\u00E9\U0001F600'>");
        document.append(pieces[rand() % 9]);
        if (i % 500 == 499)
            document.append(u"</e>");
    }
    document.append(u"</r>");
    std::string expected;
    for (const char* encoding : {"UTF-8", "UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        SCOPED_TRACE(encoding);
        TrickleBuf buffer(encode(document, encoding));
        std::istream in(&buffer);
        ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
        parser->setInput(in, UnicodeString(), UnicodeString());
        std::string got;
        try {
            got = events(*parser, false);
        } catch (const ZkError& error) {
            FAIL() << error.getErrorCode() << " " << utf8(error.getRawMessage());
        }
        if (expected.empty())
            expected = got;
        EXPECT_EQ(expected, got);
        EXPECT_EQ(document.countChar32() > 0, got.find("\r") == std::string::npos);
    }
}

namespace {

/// A random name of `length` units: letters, digits, "_", "-" and "."; one in five carries
/// an "é", which names may hold but the in-place reader leaves to the full test.
std::string randomName(int length) {
    static const char kChars[] =
        "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-.";
    std::string name(1, kChars[rand() % 52]);
    while (int(name.size()) < length)
        name += kChars[rand() % 65];
    if (rand() % 5 == 0)
        name.insert(size_t(rand()) % name.size() + 1, "\xC3\xA9");
    return name;
}

} // namespace

TEST(XmlParser, NamesComeBackWhateverTheirLengthAndHowTheInputIsCut) {
    // Names of 1 to 40 units, many alike in their first and last four units, read both from
    // one buffer and from a stream that splits them anywhere.
    srand(11);
    std::vector<std::string> names;
    for (int i = 0; i < 300; ++i) {
        std::string name = randomName(1 + rand() % 40);
        names.push_back(name);
        if (name.size() > 9 && rand() % 2) // the same ends, another middle
            names.push_back(name.substr(0, 4) + randomName(int(name.size()) - 8) +
                            name.substr(name.size() - 4));
    }
    std::string document = "<r xmlns:p='u'>";
    for (size_t i = 0; i < names.size(); ++i) {
        const std::string& name = names[i];
        const std::string& other = names[(i * 7 + 3) % names.size()];
        std::string value = i % 3 ? "v" : "";
        document += "<" + name + " " + other + "='" + value + "' p:" + name + "='w'></" + name +
                    ">\n<p:" + other + "/>";
    }
    document += "</r>";
    for (bool trickle : {false, true}) {
        SCOPED_TRACE(trickle);
        TrickleBuf trickled(document);
        std::istringstream whole(document);
        std::istream trickledIn(&trickled);
        ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
        parser->setInput(trickle ? trickledIn : static_cast<std::istream&>(whole), UnicodeString(),
                         UnicodeString());
        ASSERT_EQ(ZkXmlParser::START_TAG, parser->next());
        for (size_t i = 0; i < names.size(); ++i) {
            UnicodeString name = UnicodeString::fromUTF8(names[i]);
            UnicodeString other = UnicodeString::fromUTF8(names[(i * 7 + 3) % names.size()]);
            ASSERT_EQ(ZkXmlParser::START_TAG, parser->next()) << i;
            ASSERT_EQ(name, parser->getName().toString()) << i;
            ASSERT_EQ(2, parser->getAttributeCount());
            EXPECT_EQ(other, parser->getAttributeName(0).toString()) << i;
            EXPECT_EQ(name, parser->getAttributeName(1).toString()) << i;
            EXPECT_EQ(ZkName(u"p"), parser->getAttributePrefix(1));
            EXPECT_EQ(ZkName(u"u"), parser->getAttributeNamespace(1));
            EXPECT_EQ(i % 3 ? "v" : "", utf8(parser->getAttributeValue(0)));
            ASSERT_EQ(ZkXmlParser::END_TAG, parser->next()) << i;
            ASSERT_EQ(name, parser->getName().toString()) << i;
            ASSERT_EQ(ZkXmlParser::TEXT, parser->next()) << i;
            EXPECT_EQ(int(i) + 2, parser->getLineNumber()) << i;
            ASSERT_EQ(ZkXmlParser::START_TAG, parser->next()) << i;
            ASSERT_EQ(other, parser->getName().toString()) << i;
            EXPECT_EQ(ZkName(u"u"), parser->getNamespace());
            ASSERT_EQ(ZkXmlParser::END_TAG, parser->next()) << i;
        }
    }
}

TEST(XmlParser, PrefixesFollowTheirBindingsThroughSiblings) {
    std::istringstream in;
    ZkPtr<ZkXmlParser> parser = open(in, "<p:a xmlns:p='u1'><p:b xmlns:p='u2'><p:c/></p:b>"
                                         "<p:d/><e xmlns:p='u3'><p:f/></e><p:g/></p:a>");
    const char* expected[] = {"a u1", "b u2", "c u2", "d u1", "e ", "f u3", "g u1"};
    std::string got;
    for (int event; (event = parser->next()) != ZkXmlParser::END_DOCUMENT;) {
        if (event == ZkXmlParser::START_TAG)
            got += utf8(parser->getName().toString()) + " " +
                   utf8(parser->getNamespace().toString()) + ",";
    }
    std::string want;
    for (const char* item : expected)
        want += std::string(item) + ",";
    EXPECT_EQ(want, got);
}

TEST(XmlParser, TheFirstDuplicateAttributeIsTheOneReported) {
    // Random attribute lists over few names, under two prefixes of one namespace and none:
    // the report names the first attribute whose (name, namespace) came before.
    srand(5);
    const char* locals[] = {"a", "b", "font-size", "c", "d", "e", "color", "f"};
    for (int round = 0; round < 400; ++round) {
        int count = 1 + rand() % 30;
        std::string tag = "<x xmlns:p='u' xmlns:q='u'";
        std::set<std::string> seen;
        std::string first;
        for (int i = 0; i < count; ++i) {
            int prefix = rand() % 3;
            std::string local = locals[rand() % (round % 2 ? 8 : 4)];
            std::string qname = (prefix == 0 ? "" : prefix == 1 ? "p:" : "q:") + local;
            tag += " " + qname + "='" + std::to_string(i) + "'";
            if (!seen.insert((prefix ? "u " : " ") + local).second && first.empty())
                first = qname;
        }
        const std::string got = outcomeOf(tag + "/>");
        if (first.empty())
            EXPECT_EQ("START_TAG:x END_TAG:x", got) << tag;
        else
            EXPECT_EQ(0u, got.find("error 136: Duplicate attribute: " + first + "\n")) << tag;
    }
}

TEST(XmlParser, PositionsAfterWhiteSpaceInTags) {
    // Reports made after line feeds, tabs and carriage returns inside tags point where the
    // reader stands.
    // clang-format off
    const char* cases[][2] = {
        {"<a\n\tb='1'\n  c='2'\n  b='3'/>", "error 136: Duplicate attribute: b\nSTART_TAG, Line 4, Col 9."},
        {"<a\r\n b='1'\t\tb='2'/>", "error 136: Duplicate attribute: b\nSTART_TAG, Line 2, Col 15."},
        {"<r><a\n\n   x='1'   \n></a\n>\n<b \n y='2' y='3'/></r>", "error 136: Duplicate attribute: y\nSTART_TAG, Line 7, Col 14."},
        {"<a b='1'\n\n c='2'\n d", "error 138: "},
    };
    // clang-format on
    for (const auto& row : cases) {
        const std::string got = outcomeOf(row[0]);
        EXPECT_EQ(0u, got.find(row[1])) << row[0] << "\n" << got;
    }
}

TEST(XmlParser, OneCharacterReferencesMergeIntoText) {
    // clang-format off
    const char* cases[][2] = {
        {"<r>a&amp;b&lt;c&gt;d&apos;e&quot;f</r>", "START_TAG:r TEXT:a&b<c>d'e\"f END_TAG:r"},
        {"<r><s>&amp;&amp;</s>&#38;&lt;</r>", "START_TAG:r START_TAG:s TEXT:&& END_TAG:s TEXT:&< END_TAG:r"},
        {"<!DOCTYPE r [<!ENTITY e 'x'><!ENTITY f ']'><!ENTITY g '&amp;'>]><r>&e;&f;&g;</r>", "START_TAG:r TEXT:x]& END_TAG:r"},
        {"<!DOCTYPE r [<!ENTITY f ']'>]><r>]&f;></r>", "START_TAG:r TEXT:]]> END_TAG:r"},
        {"<r/>&gt;", "error 142: "},
    };
    // clang-format on
    for (const auto& row : cases) {
        const std::string got = outcomeOf(row[0]);
        EXPECT_EQ(0u, got.find(row[1])) << row[0] << "\n" << got;
    }
    EXPECT_EQ("START_TAG:r TEXT:a ENTITY_REF:&#38; ENTITY_REF:> END_TAG:r",
              events("<r>a&amp;&gt;</r>", /*tokens=*/true));
}
