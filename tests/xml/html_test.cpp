// HTML syntax: how the parser settles on HTML or XHTML, and how tag soup becomes events: implied
// and void elements, stray end tags, raw text, implied namespaces, references and meta charsets.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/element.h>
#include <zkcommon/io/uri.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

const std::string kSamples = ZK_TEST_DATA_DIR "/xml/html/";

void collect(const ZkError& error, void* data) {
    *static_cast<std::string*>(data) += " #" + std::to_string(error.getErrorCode());
}

/// The events of a whole parse in a short form: "<p>" and "</p>" for tags (with the namespace
/// as "{svg}" when it is not XHTML), text as it stands, and " #code" for each error.
std::string events(const std::string& input, ZkName type = ZkName(ZKN_html)) {
    std::istringstream in(input);
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    if (!type.isEmpty())
        parser->setParserType(type, ZkName(ZKN_html));
    std::string out;
    parser->setCallbackError(collect, &out);
    parser->setInput(in, UnicodeString(), UnicodeString());
    for (int guard = 0; guard < 1000; ++guard) {
        int event = parser->next();
        if (event == ZkXmlParser::END_DOCUMENT)
            break;
        std::string name = utf8(parser->getName().toString());
        if (event == ZkXmlParser::START_TAG) {
            ZkName ns = parser->getNamespace();
            std::string space = ns == ZKN_NS_XHTML    ? ""
                                : ns == ZKN_NS_SVG    ? "{svg}"
                                : ns == ZKN_NS_MATHML ? "{math}"
                                : ns.isEmpty()        ? "{}"
                                                      : "{" + utf8(ns.toString()) + "}";
            out += "<" + space + name + ">";
        } else if (event == ZkXmlParser::END_TAG) {
            out += "</" + name + ">";
        } else {
            out += utf8(parser->getText());
        }
    }
    return out;
}

UnicodeString qualifiedName(ZkXmlParser* parser, int i) {
    UnicodeString prefix = parser->getAttributePrefix(i).toString();
    UnicodeString local = parser->getAttributeName(i).toString();
    return prefix.isEmpty() ? local : prefix + u":" + local;
}

struct Row {
    const char* input;
    const char* expected;
};

void check(const Row* rows, size_t count, ZkName type = ZkName(ZKN_html)) {
    for (size_t i = 0; i < count; ++i)
        EXPECT_EQ(rows[i].expected, events(rows[i].input, type)) << rows[i].input;
}

/// The text of the saved tree of `path`, loaded by a document.
std::string loadHtml(const std::string& path) {
    ZkPtr<ZkDocument> document(new ZkDocument());
    std::string errors;
    document->getParser()->setCallbackError(collect, &errors);
    document->load(UnicodeString::fromUTF8(path));
    return utf8(document->saveXml()) + errors;
}

} // namespace

TEST(Html, SettlesFromTheHints) {
    // Each row: parser type, content type, extension, input, then the answers of three
    // questions in turn ("h" HTML, "x" XHTML, "-" neither) asked after the first event.
    struct Case {
        const char* type;
        const char* contentType;
        const char* extension;
        const char* input;
        const char* answers;
    };
    // clang-format off
    const Case cases[] = {
        {"auto", "", "", "<r/>", "---"},
        {"html", "", ".xhtml", "<r/>", "hhh"},
        {"xhtml", "text/html", "", "<r/>", "xxx"},
        {"xml", "", ".html", "<html/>", "---"},
        {"auto", "", ".html", "<r/>", "hhh"},
        {"auto", "", ".HTM", "<r/>", "hhh"},
        {"auto", "", ".xhtml", "<html/>", "xxx"},
        {"auto", "", ".xht", "<r/>", "xxx"},
        {"auto", "", "", "<HTML/>", "hhh"},
        {"auto", "", "", "<?xml version='1.0'?><html/>", "---"},
        {"auto", "", "", "<html xmlns='urn:x'/>", "hhh"},
        {"auto", "", "", "<!DOCTYPE html PUBLIC '-//W3C//DTD HTML 4.01//EN'><r/>", "hhh"},
        {"auto", "", "", "<!DOCTYPE html PUBLIC '-//W3C//DTD XHTML 1.0 Strict//EN'><r/>", "xxx"},
        {"auto", "application/xhtml+xml", ".html", "<r/>", "xxx"},
        {"auto", "text/xml", ".html", "<html/>", "---"},
    };
    // clang-format on
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.input) + " " + c.type + " " + c.contentType + c.extension);
        std::istringstream in(c.input);
        ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
        parser->setParserType(ZkName(UnicodeString::fromUTF8(c.type)), ZkName(ZKN_html));
        ZkUri::ContentInfo info;
        info.contentType = UnicodeString::fromUTF8(c.contentType);
        parser->setStreamType(&info, UnicodeString::fromUTF8(c.extension));
        parser->setInput(in, UnicodeString(), UnicodeString());
        parser->next();
        std::string answers;
        for (int i = 0; i < 3; ++i) {
            bool xhtml = parser->isXHTMLSyntax();
            bool html = parser->isHTMLSyntax();
            EXPECT_EQ(!html, parser->isXML());
            answers += html ? "h" : xhtml ? "x" : "-";
        }
        EXPECT_EQ(c.answers, answers);
    }
}

TEST(Html, TextHtmlAnswersNoOnceThenYes) {
    std::istringstream in("<p>a");
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    ZkUri::ContentInfo info;
    info.contentType = u"Text/HTML";
    parser->setStreamType(&info, u".xhtml"); // the extension is not looked at
    parser->setInput(in, UnicodeString(), UnicodeString());
    EXPECT_FALSE(parser->isHTMLSyntax());
    EXPECT_TRUE(parser->isHTMLSyntax());
    EXPECT_FALSE(parser->isXHTMLSyntax());
}

TEST(Html, XhtmlRootSettlesXhtmlWhereItIsTheDefault) {
    std::istringstream in("<html xmlns='http://www.w3.org/1999/xhtml'><br></br></html>");
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setParserType(ZkName(ZKN_auto), ZkName(ZKN_xhtml));
    parser->setInput(in, UnicodeString(), UnicodeString());
    EXPECT_EQ(ZkXmlParser::START_TAG, parser->next());
    EXPECT_TRUE(parser->isXHTMLSyntax());
    EXPECT_FALSE(parser->isHTMLSyntax());
}

TEST(Html, ImpliedTags) {
    // clang-format off
    const Row rows[] = {
        {"<body><p>a<p>b</body>", "<body><p>a</p><p>b</p></body>"},
        {"<ul><li>a<li>b</ul>", "<ul><li>a</li><li>b</li></ul>"},
        {"<dl><dt>a<dd>b<dt>c</dl>", "<dl><dt>a</dt><dd>b</dd><dt>c</dt></dl>"},
        {"<table><tr><td>a<td>b<tr><td>c</table>", "<table><tr><td>a</td><td>b</td></tr><tr><td>c</td></tr></table>"},
        {"<table><thead><tr><th>h<tbody><tr><td>d</table>", "<table><thead><tr><th>h</th></tr></thead><tbody><tr><td>d</td></tr></tbody></table>"},
        {"<select><option>a<option>b<optgroup><option>c</select>", "<select><option>a</option><option>b<optgroup><option>c</option></optgroup></option></select>"},
        {"<ruby>a<rt>b<rp>c</ruby>", "<ruby>a<rt>b</rt><rp>c</rp></ruby>"},
        {"<div><p>a<div>b</div></div>", "<div><p>a</p><div>b</div></div>"},
        {"<div><p>a<span>b</div>", "<div><p>a<span>b #513</span></p></div>"},
        {"<html><title>t</title><p>x", "<html><head><title>t</title></head><body><p>x</p></body></html>"},
        {"<html><meta charset=utf-8><link rel=x><div>", "<html><head><meta></meta><link></link></head><body><div></div></body></html>"},
        {"<HTML><Head></HEAD><BODY CLASS=a>x</Body></Html>", "<html><head></head><body>x</body></html>"},
        {"<!DOCTYPE html><p>x</p>", "<html><body><p>x</p></body></html>"},
        {"<!doctype HTML>\n  text", "<html><body>\n  text</body></html>"},
        {"<!DOCTYPE html><html>\n<p>a</p>b</html>", "<html>\n<body><p>a</p>b</body></html>"},
        {"text <b>x</b><b>y</b>", "<html>text <body><b>x</b><b>y</b></body></html>"},
        {"<![CDATA[top]]><p>x</p>", "<html>top<body><p>x</p></body></html>"},
        {"&amp;&x<p>y</p>", "<html>&&x<body><p>y</p></body></html>"},
        {"<p>x</p>&amp;", "<p>x</p> #142"},
        {"<p>a</p><p>b</p>", "<p>a</p> #521"},
    };
    // clang-format on
    check(rows, sizeof rows / sizeof *rows);
}

TEST(Html, VoidAndStrayEndTags) {
    // clang-format off
    const Row rows[] = {
        {"<p>a<br>b<br/>c</p>", "<p>a<br></br>b<br></br>c</p>"},
        {"<p><br></br><BR></Br ></p>", "<p><br></br><br></br></p>"},
        {"<p><br></ br>x</p>", "<p><br></br> #141"},
        {"<body><p><img src=a><input disabled><hr></p>", "<body><p><img></img><input></input></p><hr></hr> #513<p></p></body>"},
        {"<b>x</i>y</b>", "<b>x #513<i></i>y</b>"},
        {"<div></p></div>", "<div> #513<p></p></div>"},
        {"<div><b><i>x</div>y", "<div><b><i>x #513</i> #513</b></div> #142"},
        {"<div><b>x</b></span junk>y</div>", "<div><b>x</b> #513 #769<span></span>y</div>"},
        {"<table><tr><td>a</table>", "<table><tr><td>a</td></tr></table>"},
        {"<ul><li>a</ul><p>", "<ul><li>a</li></ul> #521"},
        {"<a><b><c>", "<a><b><c></c></b></a>"},
        {"<body><svg><g><path d=x></svg>y</body>", "<body><{svg}svg><{svg}g><{svg}path> #513</path> #513</g></svg>y</body>"},
    };
    // clang-format on
    check(rows, sizeof rows / sizeof *rows);
}

TEST(Html, RawTextAndText) {
    // clang-format off
    const Row rows[] = {
        {"<script>if (a<b && c) x(\"</div>\");</script>", "<script>if (a<b && c) x(\"</div>\");</script>"},
        {"<style>a<b{} &amp;</STYLE >x", "<style>a<b{} &amp;</style> #142"},
        {"<body><script><!-- x --></script></body>", "<body><script><!-- x --></script></body>"},
        {"<body><script><![CDATA[a]]></script></body>", "<body><script><![CDATA[a]]></script></body>"},
        {"<body><svg><script><![CDATA[a<b]]></script></svg></body>", "<body><{svg}svg><{svg}script>a<b</script></svg></body>"},
        {"<title>a<b>c</b></title>", "<title>a<b>c</b></title>"},
        {"<p>1 < 2 <3 <= x</p>", "<p>1 < 2 <3 <= x</p>"},
        {"<p>a & b &; &#; &#x41 &#X42; &#67 &lt &ltx; &nbsp;</p>", "<p>a & b &; &#; A B C < &ltx; \u00A0</p>"},
        {"<p>\x0C&#12;</p>", "<p>\x0C\x0C</p>"},
        {"<p><!-- a -- b --></p>", "<p> #899</p>"},
        {"<p>]]></p>", "<p> #144"},
    };
    // clang-format on
    check(rows, sizeof rows / sizeof *rows);
}

TEST(Html, AttributesAndNamespaces) {
    std::istringstream in("<html><body><P ID=a Class='b' hidden title=x&amp;y/z data-x=\"<\" "
                          "@click=\"f\" x:y=1></P></body></html>");
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setParserType(ZkName(ZKN_html), ZkName(ZKN_html));
    std::string errors;
    parser->setCallbackError(collect, &errors);
    parser->setInput(in, UnicodeString(), UnicodeString());
    while (parser->next() != ZkXmlParser::START_TAG || parser->getName() != ZkName(u"p")) {
    }
    std::string attributes;
    for (int i = 0; i < parser->getAttributeCount(); ++i)
        attributes +=
            utf8(qualifiedName(parser, i)) + "=" + utf8(parser->getAttributeValue(i)) + ";";
    // A name that cannot be an XML name is read and dropped, so that the element saves as XML.
    EXPECT_EQ("id=a;class=b;hidden=;title=x&y/z;data-x=<;x:y=1;", attributes);
    EXPECT_EQ(" #769", errors);
    // clang-format off
    const Row rows[] = {
        {"<body><svg><rect/></svg><math><mi>x</mi></math><chart/></body>", "<body><{svg}svg><{svg}rect></rect></svg><{math}math><{math}mi>x</mi></math><{http://www.velmora.com/names/ChartML}chart></chart></body>"},
        {"<body><svg xmlns='urn:a'><g/></svg><o:p>x</o:p></body>", "<body><{urn:a}svg><{urn:a}g></g></svg><{o}p>x</p></body>"},
    };
    // clang-format on
    check(rows, sizeof rows / sizeof *rows);
}

TEST(Html, DocumentEntitiesComeBeforeTheSharedHtmlSet) {
    EXPECT_EQ("<html><body>E\u00A0E</body></html>",
              events("<!DOCTYPE html [<!ENTITY eacute 'E'>]><html><body>&eacute;&nbsp;&eacute</"
                     "body></html>",
                     ZkName(ZKN_auto)));
    // The set goes with the HTML input: the next input, read as XML, does not know it.
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    std::string errors;
    parser->setCallbackError(collect, &errors);
    for (const char* input : {"<html><p title='&nbsp;'>&nbsp;</p></html>", "<r>&nbsp;</r>"}) {
        std::istringstream in(input);
        parser->setInput(in, UnicodeString(), UnicodeString());
        while (parser->next() != ZkXmlParser::END_DOCUMENT) {
        }
    }
    EXPECT_EQ(" #515", errors);
}

TEST(Html, MetaCharsetsLoadTheRightText) {
    // clang-format off
    const Row rows[] = {
        {"shift_jis", "<title>日本語の題</title>|<p>本文です。</p>"},
        {"euc-jp", "<title>日本語の題</title>|<p>本文です。</p>"},
        {"windows-1252", "<title>Café “Ünï”</title>|<p>naïve €5</p>"},
    };
    // clang-format on
    for (const Row& row : rows) {
        std::string expected(row.expected);
        size_t bar = expected.find('|');
        for (const char* form : {"-charset.html", "-http-equiv.html"}) {
            std::string saved = loadHtml(kSamples + row.input + form);
            EXPECT_NE(std::string::npos, saved.find(expected.substr(0, bar))) << form << saved;
            EXPECT_NE(std::string::npos, saved.find(expected.substr(bar + 1))) << form << saved;
        }
    }
}

TEST(Html, MetaChangesTheDecoderInMidStream) {
    // No prescan here: the meta is met by the scanner, and only what follows it changes.
    std::string input = "\n<html><head><title>\xE9</title>"
                        "<meta http-equiv=content-type content='text/html;charset=shift_jis'>"
                        "<meta http-equiv=Content-Language content=' ja-JP '></head>"
                        "<body>\x82\xA0</body></html>";
    std::istringstream in(input);
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setInput(in, UnicodeString(), UnicodeString());
    std::string text;
    while (parser->next() != ZkXmlParser::END_DOCUMENT)
        if (parser->getEventType() == ZkXmlParser::TEXT)
            text += utf8(parser->getText()) + "|";
    EXPECT_EQ("\u00E9|\u3042|", text);
    EXPECT_EQ("ja-jp", utf8(parser->getLanguage()));
}

TEST(Html, MetaPastThePrescanDecodesWhatFollowsItAgain) {
    // Bytes decoded ahead as UTF-8 after a late meta are decoded again from their bytes.
    std::string input = "<!DOCTYPE html><html><head><!--" + std::string(20000, 'x') +
                        "--><meta charset=shift_jis></head><body>\x82\xA0</body></html>";
    std::istringstream in(input);
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setInput(in, UnicodeString(), UnicodeString());
    std::string text;
    while (parser->next() != ZkXmlParser::END_DOCUMENT)
        if (parser->getEventType() == ZkXmlParser::TEXT)
            text += utf8(parser->getText());
    EXPECT_EQ("\u3042", text);
}

TEST(Html, DefaultCharsetAppliesAtTheRootUnlessAMetaNamesOne) {
    for (bool meta : {false, true}) {
        std::string input = std::string("<html>") + (meta ? "<meta charset=utf-8>" : "") +
                            "<body>\xC3\xA9</body></html>";
        std::istringstream in(input);
        ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
        parser->setHtmlDefaultCharset(u"ISO-8859-2");
        parser->setInput(in, UnicodeString(), UnicodeString());
        std::string text;
        while (parser->next() != ZkXmlParser::END_DOCUMENT)
            if (parser->getEventType() == ZkXmlParser::TEXT)
                text += utf8(parser->getText());
        EXPECT_EQ(meta ? "\u00E9" : "\u0102\u0160", text);
    }
}

TEST(Html, DocumentLoadsHtmlFilesAsHtml) {
    ZkPtr<ZkDocument> document(new ZkDocument());
    document->load(UnicodeString::fromUTF8(kSamples + "windows-1252-charset.html"));
    EXPECT_TRUE(document->getParser()->isHTMLSyntax());
    EXPECT_EQ("body", utf8(document->getDocumentElement()->getLastChild()->getLocalName()));
    // A stream named by a .html file, and after it one named by no file.
    for (const char* name : {"file:///page.html", ""}) {
        std::istringstream in("<p>a</p>");
        document->load(in, nullptr, UnicodeString::fromUTF8(name));
        EXPECT_EQ(*name != 0, document->getParser()->isHTMLSyntax()) << name;
    }
}

TEST(Html, WithoutCallbackAStrayEndTagThrowsItsFatalTwin) {
    std::istringstream in("<b>x</i>");
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setParserType(ZkName(ZKN_html), ZkName(ZKN_html));
    parser->setInput(in, UnicodeString(), UnicodeString());
    try {
        while (parser->next() != ZkXmlParser::END_DOCUMENT) {
        }
        FAIL() << "no error";
    } catch (const ZkError& error) {
        EXPECT_EQ(134, error.getErrorCode());
    }
}

TEST(Html, TagSoupStaysBounded) {
    // Deep unclosed nesting closed by stray end tags, and end tags that imply nothing: the
    // events stay linear in the input.
    std::string soup = "<html><body>";
    for (int i = 0; i < 20000; ++i)
        soup += "<b><td>";
    for (int i = 0; i < 20000; ++i)
        soup += "</table></x></p>";
    std::istringstream in(soup);
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setParserType(ZkName(ZKN_html), ZkName(ZKN_html));
    std::string errors;
    parser->setCallbackError([](const ZkError&, void*) {}, nullptr);
    parser->setInput(in, UnicodeString(), UnicodeString());
    long events = 0;
    while (parser->next() != ZkXmlParser::END_DOCUMENT)
        ++events;
    EXPECT_EQ(0, parser->getDepth());
    EXPECT_LT(events, 400000);
}
