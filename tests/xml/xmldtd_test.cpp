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
    std::string text;    ///< all character data of the document, entities expanded
    std::string doctype; ///< the text of the DOCTYPE event
    int code = 0;        ///< the fatal error, or 0
    std::string message;
    std::vector<int> reported; ///< with `lenient`, every code the error callback received
};

Outcome parse(const std::string& input, const std::string& base = std::string(),
              const std::vector<ZkXmlParser::Feature>& features = {}, bool lenient = false) {
    Outcome outcome;
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    for (ZkXmlParser::Feature feature : features)
        parser->setFeature(feature, true);
    if (lenient) {
        parser->setCallbackError(
            [](const ZkError& error, void* codes) {
                static_cast<std::vector<int>*>(codes)->push_back(error.getErrorCode());
            },
            &outcome.reported);
    }
    std::istringstream in(input);
    try {
        parser->setInput(in, UnicodeString(), UnicodeString::fromUTF8(base));
        // Tokens up to the root, so that the DOCTYPE is seen, and then whole events.
        bool prolog = true;
        for (int event; (event = prolog ? parser->nextToken() : parser->next()) !=
                        ZkXmlParser::END_DOCUMENT;) {
            prolog = prolog && event != ZkXmlParser::START_TAG;
            if (event == ZkXmlParser::DOCDECL)
                outcome.doctype = utf8(parser->getText());
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

TEST(XmlDtd, EntitiesFromDeclarationsAndBuiltInSets) {
    auto rows = readTable(ZK_TEST_DATA_DIR "/xml/entities.tsv");
    ASSERT_GT(rows.size(), 20u);
    for (auto row : rows) {
        row.resize(5);
        const std::string input = unescapeField(row[0]);
        const std::string& flags = row[4];
        std::vector<ZkXmlParser::Feature> features;
        if (flags.find("no-external-dtd") != std::string::npos)
            features.push_back(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD);
        if (flags.find("ignore-undefined") != std::string::npos)
            features.push_back(ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY);
        Outcome outcome =
            parse(input, std::string(), features, flags.find("lenient") != std::string::npos);
        std::string codes = outcome.code ? std::to_string(outcome.code) : std::string();
        for (int code : outcome.reported)
            codes += (codes.empty() ? "" : ",") + std::to_string(code);
        EXPECT_EQ(codes, row[2]) << input << ": " << outcome.message;
        EXPECT_EQ(outcome.text, unescapeField(row[1])) << input;
        if (!row[3].empty()) {
            EXPECT_EQ(outcome.doctype, unescapeField(row[3])) << input;
        }
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
    // An external parameter entity of the internal subset brings its text, declaration aside,
    // into the DOCTYPE text.
    dir.file("decl.ent", "<?xml encoding='UTF-8'?><!ENTITY e 'E'>");
    outcome = parse("<!DOCTYPE x [<!ENTITY % p SYSTEM 'decl.ent'>%p;]><x>&e;</x>", fileUri(doc));
    EXPECT_EQ(outcome.text, "E") << outcome.message;
    EXPECT_EQ(outcome.doctype, " x [<!ENTITY % p SYSTEM 'decl.ent'><!ENTITY e 'E'>]");
}

TEST(XmlDtd, DoctypeTextIsLimited) {
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    parser->setHugeTextLimit(100);
    std::istringstream in("<!DOCTYPE x [<!-- " + std::string(200, 'c') + " -->]><x/>");
    parser->setInput(in, UnicodeString(), UnicodeString());
    try {
        parser->next();
        ADD_FAILURE() << "no error";
    } catch (const ZkError& error) {
        EXPECT_EQ(error.getErrorCode(), 190);
    }
}

namespace {

/// Entities `name`0 to `name``levels`, each naming the one below `fanOut` times through `ref`.
std::string tower(const char* percent, const char* name, const char* first, const char* ref,
                  int levels, int fanOut) {
    std::string out = std::string("<!ENTITY ") + percent + name + "0 '" + first + "'>";
    for (int level = 1; level <= levels; ++level) {
        out += std::string("<!ENTITY ") + percent + name + std::to_string(level) + " '";
        for (int i = 0; i < fanOut; ++i)
            out += ref + std::string(name) + std::to_string(level - 1) + ";";
        out += "'>";
    }
    return out;
}

} // namespace

TEST(XmlDtd, ExpansionsThatNeverEndStop) {
    TempDir dir;
    std::string doc = dir.file("doc.xml", "");
    dir.file("loop.dtd", "<!ENTITY % p '&#37;q;'><!ENTITY % q '&#37;p;'> %p;");
    dir.file("self.dtd", "<!ENTITY % self SYSTEM 'self.dtd'> %self;");
    dir.file("self.ent", "<y>&self;</y>");
    dir.file("values.dtd", tower("% ", "v", "xxxxxxxxxx", "%", 9, 10));
    const std::string laughs = "<!DOCTYPE x [" + tower("", "l", "lol", "&", 9, 10) + "]>";
    std::string refs;
    for (int i = 0; i < 200; ++i)
        refs += "&b;";
    struct Row {
        std::string input;
        int code;
    };
    // clang-format off
    const Row rows[] = {
        {laughs + "<x>&l9;</x>", 190}, // a billion laughs, in text and in a value
        {laughs + "<x a='&l9;'/>", 190},
        {"<!DOCTYPE x [<!ENTITY b '" + std::string(100000, 'a') + "'>]><x>" + refs + "</x>", 190},
        {"<!DOCTYPE x [<!ENTITY % p \"%p;\">]><x/>", 140}, // no reference in an internal declaration
        {"<!DOCTYPE x SYSTEM 'loop.dtd'><x/>", 184},
        {"<!DOCTYPE x SYSTEM 'self.dtd'><x/>", 184},
        {"<!DOCTYPE x [<!ENTITY self SYSTEM 'self.ent'>]><x>&self;</x>", 184},
        {"<!DOCTYPE x [" + tower("% ", "s", " ", "&#37;", 9, 10) + "%s9;]><x/>", 190},
        {"<!DOCTYPE x SYSTEM 'values.dtd'><x/>", 190},
    };
    // clang-format on
    // A declaration names only entities declared before it: general cycles come from texts
    // the caller defines (see the parser's tests).
    for (const Row& row : rows) {
        Outcome outcome = parse(row.input, fileUri(doc));
        EXPECT_EQ(outcome.code, row.code) << row.input.substr(0, 60) << ": " << outcome.message;
    }
    // The same expansions within the limit are whole.
    Outcome small = parse("<!DOCTYPE x [" + tower("", "l", "lol", "&", 3, 3) + "]><x>&l3;</x>");
    EXPECT_EQ(small.code, 0);
    EXPECT_EQ(small.text.size(), 81u);
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
