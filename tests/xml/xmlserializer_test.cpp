// ZkXmlSerializer: call order, namespace scopes and prefixes, escaping, encodings and errors.
#include "support.h"

#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <zkcommon/core/error.h>
#include <zkcommon/xml/xmlserializer.h>

using namespace ZkCommonNS;

namespace {

const ZkName kNone;

// Dynamic names live while someone holds the shared table; the tests make names before any
// serializer or document exists, so the program holds it throughout.
struct NameTableHold {
    NameTableHold() { ZkNameTable::addRefSharedNameTable(); }
    ~NameTableHold() { ZkNameTable::releaseSharedNameTable(); }
} s_nameTableHold;

// Runs `steps` between setOutput and endDocument and returns the bytes written.
std::string write(const std::function<void(ZkXmlSerializer&)>& steps,
                  const UnicodeString& encoding = UnicodeString(u"UTF-8"), bool declare = false,
                  bool sorted = false) {
    std::ostringstream out;
    ZkPtr<ZkXmlSerializer> s = ZkXmlSerializer::createXmlSerializer();
    s->setFeature(ZkXmlSerializer::FEATURE_NO_XML_DECL, !declare);
    s->setFeature(ZkXmlSerializer::FEATURE_SORT_ATTRIBUTES, sorted);
    s->setOutput(out, encoding, UnicodeString());
    s->startDocument(UnicodeString(), UnicodeString());
    steps(*s);
    s->endDocument();
    return out.str();
}

// The code of the ZkError that `steps` raise, or 0.
int errorOf(const std::function<void(ZkXmlSerializer&)>& steps, std::string* message = nullptr) {
    std::ostringstream out;
    ZkPtr<ZkXmlSerializer> s = ZkXmlSerializer::createXmlSerializer();
    try {
        s->setOutput(out, UnicodeString(), UnicodeString());
        steps(*s);
    } catch (const ZkError& e) {
        if (message)
            *message = utf8(e.getRawMessage());
        return e.getErrorCode();
    }
    return 0;
}

} // namespace

TEST(XmlSerializer, TagsAndContent) {
    const ZkName a(u"a"), b(u"b");
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(kNone, a);
                  s.startTag(kNone, b);
                  s.endTag(kNone, b);
                  s.text(UnicodeString(u"x"));
                  s.endTag(kNone, a);
              }),
              "<a><b/>x</a>");
    // endDocument ends whatever is still open, an empty element as an empty tag.
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(kNone, a);
                  s.startTag(kNone, b);
              }),
              "<a><b/></a>");
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(kNone, a);
                  s.cdsect(UnicodeString(u"<&>"));
                  s.comment(UnicodeString(u" c "));
                  s.processingInstruction(ZkName(u"pi"), UnicodeString(u"  d  "));
                  s.processingInstruction(ZkName(u"e"), UnicodeString(u"  "));
                  s.entityRef(UnicodeString(u"nbsp"));
                  s.ignorableWhitespace(UnicodeString(u" "));
                  const UChar units[] = u"0123";
                  s.text(units, 1, 2);
              }),
              "<a><![CDATA[<&>]]><!-- c --><?pi d?><?e?>&nbsp; 12</a>");
}

TEST(XmlSerializer, Declaration) {
    EXPECT_EQ(write([](ZkXmlSerializer& s) { s.startTag(kNone, ZkName(u"a")); }, u"utf-8", true),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>");
    std::ostringstream out;
    ZkPtr<ZkXmlSerializer> s = ZkXmlSerializer::createXmlSerializer();
    s->setGenerator(UnicodeString(u"made by a test"));
    s->setOutput(out, UnicodeString(u"UTF-8"), UnicodeString(u"no"));
    s->startDocument(UnicodeString(), UnicodeString(u"yes"));
    s->docdecl(UnicodeString(u"a SYSTEM \"a.dtd\""));
    s->startTag(kNone, ZkName(u"a"));
    s->endDocument();
    EXPECT_EQ(out.str(), "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"yes\"?>"
                         "<!-- made by a test --><!DOCTYPE a SYSTEM \"a.dtd\"><a/>");
}

TEST(XmlSerializer, Escaping) {
    const ZkName a(u"a"), t(u"t");
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(kNone, a);
                  s.attribute(kNone, t, UnicodeString(u"\"<&>'\t\n\r"));
                  s.text(UnicodeString(u"\"<&>'\t\n\r"));
              }),
              "<a t=\"&quot;&lt;&amp;&gt;'&#9;&#10;&#13;\">\"&lt;&amp;&gt;'\t\n&#13;</a>");
    // Control characters that XML can't carry vanish; U+007F passes.
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(kNone, a);
                  s.text(UnicodeString(u"x\u0001\u001Fy\u007F"));
              }),
              "<a>xy\x7F</a>");
}

TEST(XmlSerializer, Encodings) {
    const UnicodeString text(u"\u00E9\u3042\u20AC\U0001F600");
    auto steps = [&](ZkXmlSerializer& s) {
        s.startTag(kNone, ZkName(u"a"));
        s.text(text);
    };
    // clang-format off
    struct Case { const char16_t* encoding; const char* expected; } cases[] = {
        {u"UTF-8", "<?xml version=\"1.0\" encoding=\"UTF-8\"?><a>\xC3\xA9\xE3\x81\x82\xE2\x82\xAC\xF0\x9F\x98\x80</a>"},
        {u"ISO-8859-1", "<?xml version=\"1.0\"?><a>\xC3\xA9\xE3\x81\x82\xE2\x82\xAC\xF0\x9F\x98\x80</a>"},
        {u"", "<?xml version=\"1.0\"?><a>\xC3\xA9\xE3\x81\x82\xE2\x82\xAC\xF0\x9F\x98\x80</a>"},
        {u" us-ascii ", "<?xml version=\"1.0\"?><a>&#233;&#12354;&#8364;&#128512;</a>"},
        {u"ANSI_X3.4-1968", "<?xml version=\"1.0\"?><a>&#233;&#12354;&#8364;&#128512;</a>"},
        {u"Shift_JIS", "<?xml version=\"1.0\" encoding=\"SHIFT_JIS\"?><a>&#233;&#12354;&#8364;&#128512;</a>"},
        {u"windows31j", "<?xml version=\"1.0\" encoding=\"SHIFT_JIS\"?><a>&#233;&#12354;&#8364;&#128512;</a>"},
    };
    // clang-format on
    for (const auto& test : cases) {
        SCOPED_TRACE(utf8(test.encoding));
        EXPECT_EQ(write(steps, test.encoding, true), test.expected);
    }
    // A lone surrogate goes out in its three-byte form.
    EXPECT_EQ(write([](ZkXmlSerializer& s) {
                  s.startTag(kNone, ZkName(u"a"));
                  s.text(UnicodeString(u'\xD800'));
              }),
              "<a>\xED\xA0\x80</a>");
}

TEST(XmlSerializer, NamespaceScopes) {
    const ZkName u(u"urn:u"), v(u"urn:v"), p(u"p"), a(u"a"), b(u"b"), c(u"c"), x(u"x");
    // A prefixed element declares its prefix once; children in the same namespace reuse it.
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(u, p, a);
                  s.startTag(u, p, b);
                  s.endTag(u, b);
                  s.startTag(u, b);
              }),
              "<p:a xmlns:p=\"urn:u\"><p:b/><p:b/></p:a>");
    // A default namespace serves its children; a child in no namespace undeclares it.
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(u, kNone, a);
                  s.startTag(u, b);
                  s.endTag(u, b);
                  s.startTag(kNone, c);
                  s.startTag(kNone, c);
              }),
              "<a xmlns=\"urn:u\"><b/><c xmlns=\"\"><c/></c></a>");
    // setPrefix binds on the next tag; a namespaced attribute gets a prefix, never the default.
    std::string made = write([&](ZkXmlSerializer& s) {
        s.setPrefix(p, v);
        s.startTag(u, kNone, a);
        s.attribute(v, x, UnicodeString(u"1"));
        s.attribute(u, x, UnicodeString(u"2"));
    });
    EXPECT_EQ(made.substr(0, 60).find("<a p:x=\"1\" ns"), 0u) << made;
    EXPECT_NE(made.find(" xmlns=\"urn:u\""), std::string::npos) << made;
    EXPECT_NE(made.find(" xmlns:p=\"urn:v\""), std::string::npos) << made;
    // startTag without a prefix makes one up when the namespace has none in scope.
    made = write([&](ZkXmlSerializer& s) {
        s.startTag(kNone, a);
        s.startTag(u, b);
    });
    EXPECT_EQ(made.find("<a><ns"), 0u) << made;
    EXPECT_NE(made.find("=\"urn:u\"/></a>"), std::string::npos) << made;
}

TEST(XmlSerializer, NamespaceAttributesDeclare) {
    const ZkName xmlnsNs(ZKN_NS_XMLNS), xmlns(ZKN_xmlns), p(u"p"), a(u"a");
    EXPECT_EQ(write([&](ZkXmlSerializer& s) {
                  s.startTag(ZkName(u"urn:u"), p, a);
                  s.attribute(xmlnsNs, xmlns, p, UnicodeString(u"urn:u")); // redundant
                  s.attribute(kNone, kNone, xmlns, UnicodeString(u"urn:d"));
                  s.attribute(xmlnsNs, xmlns, ZkName(u"q9"), UnicodeString(u"urn:q"));
              }),
              "<p:a xmlns=\"urn:d\" xmlns:p=\"urn:u\" xmlns:q9=\"urn:q\"/>");
    // A later declaration or attribute never rebinds a prefix the tag already uses.
    const std::string kept = write([&](ZkXmlSerializer& s) {
        s.startTag(ZkName(u"urn:u"), p, a);
        s.attribute(ZkName(u"urn:u"), p, ZkName(u"b"), UnicodeString(u"1"));
        s.attribute(xmlnsNs, xmlns, p, UnicodeString());
        s.attribute(xmlnsNs, xmlns, p, UnicodeString(u"urn:other"));
        s.attribute(ZkName(u"urn:v"), p, ZkName(u"c"), UnicodeString(u"2"));
    });
    EXPECT_EQ(kept.rfind("<p:a p:b=\"1\" ns", 0), 0u) << kept;
    EXPECT_NE(kept.find(":c=\"2\" xmlns:p=\"urn:u\" xmlns:ns"), std::string::npos) << kept;
    EXPECT_EQ(kept.find("urn:other"), std::string::npos) << kept;
}

TEST(XmlSerializer, SortedAttributes) {
    const ZkName a(u"a"), p(u"p");
    EXPECT_EQ(write(
                  [&](ZkXmlSerializer& s) {
                      s.startTag(ZkName(u"urn:u"), p, a);
                      s.attribute(kNone, ZkName(u"b"), UnicodeString(u"2"));
                      s.attribute(kNone, ZkName(u"a"), UnicodeString(u"1"));
                      s.attribute(ZkName(u"urn:u"), p, ZkName(u"c"), UnicodeString(u"3"));
                  },
                  u"UTF-8", false, true),
              "<p:a a=\"1\" b=\"2\" p:c=\"3\" xmlns:p=\"urn:u\"/>");
}

TEST(XmlSerializer, OrderErrors) {
    const ZkName a(u"a"), b(u"b"), u(u"urn:u");
    std::string message;
    // clang-format off
    EXPECT_EQ(errorOf([](ZkXmlSerializer& s) { s.startDocument(u"", u""); s.startDocument(u"", u""); }), 12);
    EXPECT_EQ(errorOf([&](ZkXmlSerializer& s) { s.attribute(kNone, a, u"1"); }), 13);
    EXPECT_EQ(errorOf([&](ZkXmlSerializer& s) { s.startTag(kNone, a); s.text(u"x"); s.attribute(kNone, a, u"1"); }), 13);
    EXPECT_EQ(errorOf([&](ZkXmlSerializer& s) { s.endTag(kNone, a); }), 14);
    EXPECT_EQ(errorOf([&](ZkXmlSerializer& s) { s.docdecl(u"a"); }), 16);
    EXPECT_EQ(errorOf([&](ZkXmlSerializer& s) { s.startDocument(u"", u""); s.startTag(kNone, a); s.docdecl(u"a"); }), 16);
    EXPECT_EQ(errorOf([&](ZkXmlSerializer& s) { s.startTag(u, kNone, a); s.endTag(u, b); }, &message), 15);
    // clang-format on
    EXPECT_EQ(message, "SYSTEM ERROR: End tag 'b' does not match the start tag 'a'.");
    EXPECT_EQ(errorOf(
                  [&](ZkXmlSerializer& s) {
                      s.startTag(u, ZkName(u"p"), a);
                      s.endTag(ZkName(u"urn:v"), a);
                  },
                  &message),
              15);
    EXPECT_EQ(message, "SYSTEM ERROR: End tag '{urn:v}:a' does not match the start tag 'p:a'.");
}

TEST(XmlSerializer, OutputErrors) {
    ZkPtr<ZkXmlSerializer> s = ZkXmlSerializer::createXmlSerializer();
    std::string uri;
    auto codeOf = [&](const std::function<void()>& step) -> int {
        try {
            step();
        } catch (const ZkError& e) {
            uri = utf8(e.getUri());
            return e.getErrorCode();
        }
        return 0;
    };
    EXPECT_EQ(codeOf([&] { s->text(UnicodeString(u"x")); }), 69) << "no output";
    EXPECT_EQ(codeOf([&] {
                  s->setOutput(UnicodeString(u"/nonexistent/dir/out.xml"), UnicodeString(),
                               UnicodeString());
              }),
              67);
    EXPECT_EQ(uri, "/nonexistent/dir/out.xml");
    std::ostringstream broken;
    broken.setstate(std::ios::badbit);
    s->setOutput(broken, UnicodeString(), UnicodeString());
    EXPECT_EQ(codeOf([&] { s->startDocument(UnicodeString(), UnicodeString()); }), 71);
    // setOutput makes the object usable again.
    std::ostringstream out;
    s->setOutput(out, UnicodeString(), UnicodeString());
    s->startDocument(UnicodeString(), UnicodeString());
    s->startTag(kNone, ZkName(u"a"));
    s->endDocument();
    EXPECT_EQ(out.str(), "<?xml version=\"1.0\"?><a/>");
}

TEST(XmlSerializer, FileOutput) {
    TempDir dir;
    const std::string path = dir.path() + "/out.xml";
    ZkPtr<ZkXmlSerializer> s = ZkXmlSerializer::createXmlSerializer();
    s->setOutput(UnicodeString::fromUTF8(path), UnicodeString(u"UTF-8"), UnicodeString());
    s->startDocument(UnicodeString(), UnicodeString());
    s->startTag(kNone, ZkName(u"a"));
    // Larger than the writer's buffer, so that it goes out in several blocks.
    UnicodeString big;
    for (int i = 0; i < 5000; ++i)
        big.append(u"\u00E9<x>&");
    s->text(big);
    s->endDocument();
    std::ifstream in(path, std::ios::binary);
    const std::string bytes = readAll(in);
    EXPECT_EQ(bytes.size(), 38u + 3u + 5000u * 16u + 4u);
    EXPECT_EQ(bytes.substr(bytes.size() - 20), "\xC3\xA9&lt;x&gt;&amp;</a>");
}
