// The DTD reader: entity declarations of both subsets, parameter entities, conditional sections,
// the built-in entity sets chosen by the DOCTYPE, the MathML scope, and expansions that never end.
#include "support.h"

#include <gtest/gtest.h>
#include <sstream>
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
        {"<!DOCTYPE x [<!ENTITY a \"&#x41;&b;\"><!ENTITY b \"B\">]><x>&a;</x>", "AB"},
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

TEST(XmlDtd, DeclarationErrors) {
    struct Row {
        const char* input;
        int code;
        const char* message;
    };
    // clang-format off
    const Row rows[] = {
        {"<!DOCTYPE x [<!ENTITY a \"1\">", 154, "Unexpected end of input in DOCTYPE declaration."},
        {"<!DOCTYPE x [<!ENTITY a \"1>]><x/>", 154, "Unexpected end of input in ENTITY declaration."},
        {"<!DOCTYPE x [<!ENTITYa \"1\">]><x/>", 150, "Missing whitespace after '<!ENTITY'."},
        {"<!DOCTYPE x [<!ENTITY %a \"1\">]><x/>", 150, "Missing whitespace after '<!ENTITY %'."},
        {"<!DOCTYPE x [<!ENTITY  \"1\">]><x/>", 159, "Entity name is expected after '!ENTITY '."},
        {"<!DOCTYPE x [<!ENTITY a\"1\">]><x/>", 150, "Missing whitespace after '<!ENTITY a'."},
        {"<!DOCTYPE x [<!ENTITY a FOO \"1\">]><x/>", 151, "External ID is expected after '<!ENTITY a'."},
        {"<!DOCTYPE x [<!ENTITY a SYSTEM \"s\" NOTE n>]><x/>", 160,
         "NDATA is expected after '<!ENTITY a ... \"s\"'."},
        {"<!DOCTYPE x [<!ENTITY a \"1\" x>]><x/>", 140, "Unexpected character: x"},
        {"<!DOCTYPE x [ %p; ]><x/>", 157, "Reference to undefined entity: %p;"},
        {"<!DOCTYPE x [ %; ]><x/>", 155, "Empty entity name."},
        {"<!DOCTYPE x [ %p ]><x/>", 156, "Invalid character in entity reference: %p ;"},
        {"<!DOCTYPE x [ junk ]><x/>", 140, "Unexpected character: j"},
        {"<!DOCTYPE x [<!ENTITY a \"&#0;\">]><x/>", 179, "Invalid Unicode character: &#0"},
        {"<!DOCTYPE x [<!ENTITY a \"&b\">]><x/>", 156, "Invalid character in entity reference: &b;"},
        {"<x/><!DOCTYPE x>", 148, "Unexpected DOCTYPE declaration outside of prolog."},
        {"<!DOCTYPE x><!DOCTYPE x><x/>", 149, "Cannot have multiple DOCTYPE declarations."},
        {"<!DOCTYPE x [<!ENTITY e SYSTEM 'e.ent'>]><x>&e;</x>", 188,
         "External entity is not allowed: 'e.ent'."},
    };
    // clang-format on
    for (const Row& row : rows) {
        Outcome outcome =
            parse(row.input, std::string(), {ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY});
        EXPECT_EQ(outcome.code, row.code) << row.input << ": " << outcome.message;
        EXPECT_EQ(outcome.message.substr(0, outcome.message.find('\n')), row.message) << row.input;
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
