// The DTD reader: entity declarations of both subsets, parameter entities, conditional sections,
// the built-in entity sets chosen by the DOCTYPE, the MathML scope, and expansions that never end.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
#include <vector>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

struct Outcome {
    std::string text; ///< all character data of the document, entities expanded
    int code = 0;     ///< the fatal error, or 0
    std::string message;
};

Outcome parse(const std::string& input, const std::string& base = std::string(),
              std::initializer_list<ZkXmlParser::Feature> features = {}) {
    Outcome outcome;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    for (ZkXmlParser::Feature feature : features)
        parser->setFeature(feature, true);
    std::istringstream in(input);
    try {
        parser->setInput(in, UnicodeString(), UnicodeString::fromUTF8(base));
        for (int event; (event = parser->next()) != ZkXmlParser::END_DOCUMENT;) {
            if (event == ZkXmlParser::TEXT)
                outcome.text += utf8(parser->getText());
            if (event == ZkXmlParser::START_TAG) {
                for (int i = 0; i < parser->getAttributeCount(); ++i)
                    if (parser->getAttributeNamespace(i) != ZKN_NS_XMLNS)
                        outcome.text += "[" + utf8(parser->getAttributeValue(i)) + "]";
            }
        }
    } catch (const ZkError& error) {
        outcome.code = error.getErrorCode();
        outcome.message = utf8(error.getRawMessage());
    }
    return outcome;
}

std::string fileUri(const std::string& path) {
    return "file://" + path;
}

} // namespace

TEST(XmlDtd, InternalEntities) {
    struct Row {
        const char* input;
        const char* text;
    };
    // clang-format off
    const Row rows[] = {
        {"<!DOCTYPE x [<!ENTITY a \"1\"><!ENTITY a \"2\">]><x>&a;</x>", "1"},
        {"<!DOCTYPE x [<!ENTITY b \"B\"><!ENTITY a \"&#x41;&b;\">]><x>&a;</x>", "AB"},
        {"<!DOCTYPE x [<!ENTITY a \"1\t2\r\n3&#9;4\">]><x>&a;</x>", "1 2 3\t4"},
        {"<!DOCTYPE x [<!ENTITY a '\"&amp;&#34;'>]><x y=\"&a;\">&a;</x>", "[\"&\"]\"&\""},
        {"<!DOCTYPE x [<!ENTITY a \"v&#38;#38;w\">]><x y='&a;'/>", "[v&w]"},
        {"<!DOCTYPE x [<!ENTITY e \"<y>t</y>\">]><x>&e;&e;</x>", "tt"},
        {"<!DOCTYPE x [<!ENTITY % p \"<!ENTITY q 'Q'>\"> %p;]><x>&q;</x>", "Q"},
        {"<!DOCTYPE x [<!ENTITY % p 'x'><!ENTITY % p 'y'>]><x>z</x>", "z"},
        {"<!DOCTYPE x [<!ELEMENT x (#PCDATA)><!ATTLIST x a CDATA 'd>'><!NOTATION n SYSTEM 'n'>"
         "<!-- <!ENTITY c 'no'> --><?pi <!ENTITY c 'no'>?><!ENTITY c 'yes'>]><x>&c;</x>", "yes"},
        {"<!DOCTYPE x [<!ENTITY lt \"<\">]><x>&lt;</x>", "<"},
    };
    // clang-format on
    for (const Row& row : rows) {
        Outcome outcome = parse(row.input);
        EXPECT_EQ(outcome.code, 0) << row.input << ": " << outcome.message;
        EXPECT_EQ(outcome.text, row.text) << row.input;
    }
}

namespace {

/// A parse whose errors go to a callback, so that the lower levels let it go on.
struct Lenient {
    std::string doctype; ///< the text of the DOCDECL event
    std::string text;    ///< character data, entities expanded
    std::vector<int> codes;
};

Lenient lenient(const std::string& input, std::initializer_list<ZkXmlParser::Feature> features) {
    Lenient out;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, true);
    for (ZkXmlParser::Feature feature : features)
        parser->setFeature(feature, true);
    parser->setCallbackError(
        [](const ZkError& error, void* codes) {
            static_cast<std::vector<int>*>(codes)->push_back(error.getErrorCode());
        },
        &out.codes);
    std::istringstream in(input);
    parser->setInput(in, UnicodeString(), UnicodeString());
    int event;
    while ((event = parser->nextToken()) != ZkXmlParser::DOCDECL &&
           event != ZkXmlParser::END_DOCUMENT) {
    }
    if (event == ZkXmlParser::DOCDECL)
        out.doctype = utf8(parser->getText());
    while ((event = parser->next()) != ZkXmlParser::END_DOCUMENT)
        if (event == ZkXmlParser::TEXT)
            out.text += utf8(parser->getText());
    return out;
}

} // namespace

TEST(XmlDtd, DoctypeTextAndUndefinedReferences) {
    struct Row {
        const char* input;
        const char* doctype;
        const char* text;
        std::vector<int> codes;
        bool ignoreUndefined;
    };
    // The DOCTYPE's text runs from behind "<!DOCTYPE" to its closing ">", line ends read as one
    // line feed; a parameter reference gives way to what it stands for; an undefined one stays
    // as "&#37;" text. An entity value keeps its raw text; an undefined reference in it is data.
    // clang-format off
    const Row rows[] = {
        {"<!DOCTYPE x><x/>", " x", "", {}, false},
        {"<!DOCTYPE  p:x  PUBLIC '-//A//B' \"b.dtd\"  ><x/>", "  p:x  PUBLIC '-//A//B' \"b.dtd\"  ", "", {}, false},
        {"<!DOCTYPE x [\r\n<!ENTITY a \"1&#38;#38;\r\n2\">\r<!-- > --><?p >?>]><x>&a;</x>",
         " x [\n<!ENTITY a \"1&#38;#38;\n2\">\n<!-- > --><?p >?>]", "1& 2", {}, false},
        {"<!DOCTYPE x [<!ENTITY % p \"<!ENTITY q 'Q'>\">%p;]><x>&q;</x>",
         " x [<!ENTITY % p \"<!ENTITY q 'Q'>\"> <!ENTITY q 'Q'> ]", "Q", {}, false},
        {"<!DOCTYPE x [%u;%u; %v;<!ELEMENT x %u;>]><x/>",
         " x [&#37;u;&#37;u; &#37;v;<!ELEMENT x &#37;u;>]", "", {514, 514}, false},
        {"<!DOCTYPE x [%u;<!ELEMENT x %u;>]><x/>", " x [<!ELEMENT x >]", "", {}, true},
        {"<!DOCTYPE x [<!ENTITY a \"&b;&b;&c;\"><!ENTITY b 'B'>]><x>&a;|&b;</x>",
         " x [<!ENTITY a \"&b;&b;&c;\"><!ENTITY b 'B'>]", "&b;&b;&c;|B", {515, 515}, false},
        {"<!DOCTYPE x [<!ENTITY a \"&b;\"><!ENTITY b 'B'>]><x>&a;</x>",
         " x [<!ENTITY a \"&b;\"><!ENTITY b 'B'>]", "&b;", {}, true},
    };
    // clang-format on
    for (const Row& row : rows) {
        Lenient out = lenient(row.input, {});
        if (row.ignoreUndefined)
            out = lenient(row.input, {ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY});
        EXPECT_EQ(out.doctype, row.doctype) << row.input;
        EXPECT_EQ(out.text, row.text) << row.input;
        EXPECT_EQ(out.codes, row.codes) << row.input;
    }
}

TEST(XmlDtd, ConditionalSectionsAndParameterEntities) {
    TempDir dir;
    dir.file("ext.dtd", "<?xml version='1.0' encoding='UTF-8'?>\n"
                        "<!ENTITY % on 'INCLUDE'>\n"
                        "<![%on;[ <!ENTITY a 'included'> ]]>\n"
                        "<![IGNORE[ <!ENTITY b 'ignored'> ]]>\n"
                        "<![IGNORE[ ] <!ENTITY c 'stray'> ]]> <!ENTITY c 'after'>\n"
                        "<!ENTITY % more SYSTEM 'more.ent'> %more;\n"
                        "<!ENTITY a 'second'>\n");
    dir.file("more.ent", "<!ENTITY d 'from more'><!ENTITY b 'declared'>");
    std::string doc = dir.file("doc.xml", "<!DOCTYPE x SYSTEM 'ext.dtd' [<!ENTITY d 'own'>]>"
                                          "<x>&a;|&b;|&c;|&d;</x>");
    std::ifstream file(doc);
    Outcome outcome = parse(readAll(file), fileUri(doc));
    EXPECT_EQ(outcome.code, 0) << outcome.message;
    // A stray "]" ends an ignored section one "]" early: "c" is then declared by what follows
    // the first "]]>"; the internal subset wins over the external one.
    EXPECT_EQ(outcome.text, "included|declared|after|own");
}

namespace {

std::string laughs(int levels, int fanOut) {
    std::string doc = "<!DOCTYPE x [<!ENTITY l0 \"lol\">";
    for (int level = 1; level <= levels; ++level) {
        doc += "<!ENTITY l" + std::to_string(level) + " \"";
        for (int i = 0; i < fanOut; ++i)
            doc += "&l" + std::to_string(level - 1) + ";";
        doc += "\">";
    }
    return doc + "]>";
}

} // namespace

TEST(XmlDtd, ExpansionsThatNeverEndStop) {
    // A billion laughs, in text and in an attribute value.
    Outcome text = parse(laughs(9, 10) + "<x>&l9;</x>");
    EXPECT_EQ(text.code, 190) << text.message;
    Outcome value = parse(laughs(9, 10) + "<x a='&l9;'/>");
    EXPECT_EQ(value.code, 190) << value.message;
    // Quadratic blowup: one large entity referred to many times.
    std::string big(100000, 'a');
    std::string refs;
    for (int i = 0; i < 200; ++i)
        refs += "&b;";
    Outcome quadratic = parse("<!DOCTYPE x [<!ENTITY b \"" + big + "\">]><x>" + refs + "</x>");
    EXPECT_EQ(quadratic.code, 190) << quadratic.message;
    // Cycles that yield no text, general and parameter.
    // A declaration names only entities declared before it: general cycles come from texts
    // the caller defines (see the parser's tests).
    Outcome parameter = parse("<!DOCTYPE x [<!ENTITY % p \"%p;\">]><x/>");
    EXPECT_EQ(parameter.code, 140); // the internal subset takes no reference inside a declaration
    TempDir dir;
    dir.file("loop.dtd", "<!ENTITY % p '&#37;q;'><!ENTITY % q '&#37;p;'> %p;");
    std::string doc = dir.file("doc.xml", "<!DOCTYPE x SYSTEM 'loop.dtd'><x/>");
    Outcome external = parse("<!DOCTYPE x SYSTEM 'loop.dtd'><x/>", fileUri(doc));
    EXPECT_EQ(external.code, 184) << external.message;
    // External entities that include themselves.
    dir.file("self.dtd", "<!ENTITY % self SYSTEM 'self.dtd'> %self;");
    EXPECT_EQ(parse("<!DOCTYPE x SYSTEM 'self.dtd'><x/>", fileUri(doc)).code, 184);
    dir.file("self.ent", "<y>&self;</y>");
    EXPECT_EQ(
        parse("<!DOCTYPE x [<!ENTITY self SYSTEM 'self.ent'>]><x>&self;</x>", fileUri(doc)).code,
        184);
    // Parameter entities that multiply: in the subset and in values built from values.
    std::string spaces = "<!DOCTYPE x [<!ENTITY % s0 ' '>";
    for (int level = 1; level <= 9; ++level) {
        std::string previous = "%s" + std::to_string(level - 1) + ";";
        spaces +=
            "<!ENTITY % s" + std::to_string(level) + " '&#37;s" + std::to_string(level - 1) + ";";
        for (int i = 1; i < 10; ++i)
            spaces += "&#37;s" + std::to_string(level - 1) + ";";
        spaces += "'>";
    }
    EXPECT_EQ(parse(spaces + "%s9;]><x/>").code, 190);
    std::string values;
    for (int level = 1; level <= 9; ++level) {
        values += "<!ENTITY % v" + std::to_string(level) + " '";
        for (int i = 0; i < 10; ++i)
            values += "%v" + std::to_string(level - 1) + ";";
        values += "'>";
    }
    dir.file("values.dtd", "<!ENTITY % v0 'xxxxxxxxxx'>" + values);
    Outcome grown = parse("<!DOCTYPE x SYSTEM 'values.dtd'><x/>", fileUri(doc));
    EXPECT_EQ(grown.code, 190) << grown.message;
    // The same expansions within the limit are whole.
    Outcome small = parse(laughs(3, 3) + "<x>&l3;</x>");
    EXPECT_EQ(small.code, 0);
    EXPECT_EQ(small.text.size(), 81u);
}

TEST(XmlDtd, BuiltInSetsFromTheDoctype) {
    // Well-known identifiers stand for their DTDs, which are never fetched.
    Outcome mathml =
        parse("<!DOCTYPE math SYSTEM \"http://www.w3.org/Math/DTD/mathml2/mathml2.dtd\">"
              "<math>&alpha;&zopf;&NotEqualTilde;</math>");
    EXPECT_EQ(mathml.code, 0) << mathml.message;
    EXPECT_EQ(mathml.text, "\u03B1\U0001D56B\u2242\u0338");
    Outcome xhtml = parse("<!DOCTYPE html PUBLIC \"-//W3C//DTD XHTML 1.0 Strict//EN\" "
                          "\"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd\">"
                          "<html>&nbsp;&eacute;&lt;&amp;</html>");
    EXPECT_EQ(xhtml.code, 0) << xhtml.message;
    EXPECT_EQ(xhtml.text, "\u00A0\u00E9<&");
    Outcome publicOnly =
        parse("<!DOCTYPE html PUBLIC \"-//W3C//DTD HTML 4.01//EN\"><html>&copy;</html>");
    EXPECT_EQ(publicOnly.text, "\u00A9");
    // A document's own declaration wins over the set; with the feature off nothing is loaded.
    Outcome own = parse("<!DOCTYPE math SYSTEM \"http://www.w3.org/TR/MathML2/dtd/mathml2.dtd\" "
                        "[<!ENTITY alpha \"A\">]><math>&alpha;</math>");
    EXPECT_EQ(own.text, "A");
    Outcome off = parse("<!DOCTYPE math SYSTEM \"http://www.w3.org/Math/DTD/mathml2/mathml2.dtd\">"
                        "<math>&alpha;</math>",
                        std::string(), {ZkXmlParser::FEATURE_NO_EXTERNAL_DTD});
    EXPECT_EQ(off.code, 158);
}

TEST(XmlDtd, XhtmlSyntaxBringsItsEntities) {
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setParserType(ZKN_xhtml, ZKN_html);
    std::istringstream in("<html><p>&nbsp;&hellip;</p></html>");
    parser->setInput(in, UnicodeString(), UnicodeString());
    std::string text;
    for (int event; (event = parser->next()) != ZkXmlParser::END_DOCUMENT;)
        if (event == ZkXmlParser::TEXT)
            text += utf8(parser->getText());
    EXPECT_EQ(text, "\u00A0\u2026");
}

TEST(XmlDtd, MathMLScope) {
    const std::string ns = " xmlns='http://www.w3.org/1998/Math/MathML'";
    Outcome inside = parse("<doc><m:math xmlns:m='http://www.w3.org/1998/Math/MathML'>&alpha;"
                           "</m:math></doc>");
    EXPECT_EQ(inside.code, 0) << inside.message;
    EXPECT_EQ(inside.text, "\u03B1");
    Outcome outside = parse("<doc><math" + ns + ">&alpha;</math>&alpha;</doc>");
    EXPECT_EQ(outside.code, 158);
    Outcome root = parse("<math" + ns + "><mi>&alpha;</mi></math>");
    EXPECT_EQ(root.code, 0);
    EXPECT_EQ(root.text, "\u03B1");
}

TEST(XmlDtd, EntityMapsApi) {
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    std::istringstream in("<!DOCTYPE x [<!ENTITY a 'doc'>]><x>&a;&b;</x>");
    parser->setInput(in, UnicodeString(), UnicodeString());
    EXPECT_EQ(parser->nextToken(), ZkXmlParser::DOCDECL);
    const void* saved = parser->saveEntityMaps();
    ASSERT_NE(saved, nullptr);
    parser->defineEntityReplacementText(ZkName(u"a"), u"mine");
    parser->defineEntityReplacementText(ZkName(u"b"), u"B");
    parser->addMathMLEntities();
    parser->recoverEntityMaps(saved);
    EXPECT_EQ(saved, nullptr);
    parser->recoverEntityMaps(saved); // a null snapshot does nothing
    parser->defineEntityReplacementText(ZkName(u"b"), u"B");
    std::string text;
    try {
        for (int event; (event = parser->next()) != ZkXmlParser::END_DOCUMENT;)
            if (event == ZkXmlParser::TEXT)
                text += utf8(parser->getText());
    } catch (const ZkError& error) {
        ADD_FAILURE() << utf8(error.getRawMessage());
    }
    EXPECT_EQ(text, "docB");
}

TEST(XmlDtd, ExternalSubsetErrorsAndCache) {
    TempDir dir;
    std::string doc = dir.file("doc.xml", "");
    const std::string missing = "<!DOCTYPE x SYSTEM 'missing.dtd'><x>t</x>";
    EXPECT_NE(parse(missing, fileUri(doc)).code, 0);
    Outcome lax = parse(missing, fileUri(doc), {ZkXmlParser::FEATURE_LAX_DTD_ERRORS});
    EXPECT_EQ(lax.code, 0) << lax.message;
    EXPECT_EQ(lax.text, "t");
    // A subset read once is kept for the process: a later change to the file is not seen.
    std::string dtd =
        dir.file("cached.dtd", "<!ENTITY e 'first'><!ENTITY u SYSTEM 'u.ent' NDATA n>");
    const std::string uses = "<!DOCTYPE x SYSTEM 'cached.dtd'><x>&e;</x>";
    EXPECT_EQ(parse(uses, fileUri(doc)).text, "first");
    dir.file("cached.dtd", "<!ENTITY e 'second'>");
    EXPECT_EQ(parse(uses, fileUri(doc)).text, "first");
    // External parsed entities are read in place; relative ids resolve beside the subset.
    dir.file("part.ent", "<y>part</y>");
    Outcome part = parse("<!DOCTYPE x [<!ENTITY p SYSTEM 'part.ent'>]><x>&p;!</x>", fileUri(doc));
    EXPECT_EQ(part.code, 0) << part.message;
    EXPECT_EQ(part.text, "part!");
}
