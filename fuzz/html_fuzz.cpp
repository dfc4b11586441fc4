// Fuzzes the HTML reader: the input is read as HTML by the pull parser, every event's getters
// read, and then loaded as an HTML document, whole and in pull mode. Whatever loads without a
// fatal error must save as XML, and the saved text must load again as well-formed XML.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <zkcommon/core/error.h>
#include <zkcommon/dom/document.h>
#include <zkcommon/dom/iterator.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

const UnicodeString kUri(u"file:///fuzz/input.html");

void noteError(const ZkError& error, void* fatal) {
    if (getErrorLevel(error.getErrorCode()) == ZK_ERROR_LEVEL_FATAL)
        *static_cast<bool*>(fatal) = true;
}

// Nothing outside the input is read; instructions are reported so that they are scanned too.
// The syntax is fixed, never guessed: HTML for the input, XML for the saved text.
void configure(ZkXmlParser& parser, bool html) {
    parser.setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, true);
    parser.setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY, true);
    parser.setFeature(ZkXmlParser::FEATURE_REPORT_PI, true);
    parser.setParserType(html ? ZKN_html : ZKN_xml, ZKN_html);
}

void parseEvents(const std::string& bytes) {
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    configure(*parser, /*html=*/true);
    std::istringstream in(bytes);
    try {
        parser->setInput(in, UnicodeString(), kUri);
        for (int event; (event = parser->nextToken()) != ZkXmlParser::END_DOCUMENT;) {
            parser->getName();
            parser->getNamespace();
            parser->getText();
            parser->getDepth();
            parser->isHTMLSyntax();
            if (event == ZkXmlParser::START_TAG) {
                for (int i = 0; i < parser->getAttributeCount(); ++i)
                    parser->getAttributeValue(i);
                parser->isEmptyElementTag();
            }
        }
        parser->getLanguage();
    } catch (const ZkError&) {
    }
    ZkError error;
    while (parser->popError(error)) {
    }
}

ZkPtr<ZkDocument> newDocument(bool html, bool* fatal) {
    ZkPtr<ZkDocument> doc(new ZkDocument());
    ZkXmlParser* parser = doc->getParser();
    parser->setCallbackError(noteError, fatal);
    configure(*parser, html);
    return doc;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    parseEvents(bytes);

    // A pull load, driven to its end through the loading getters.
    try {
        bool fatal = false;
        ZkPtr<ZkDocument> doc = newDocument(/*html=*/true, &fatal);
        doc->setPullMode(true);
        std::istringstream in(bytes);
        doc->load(in, nullptr, kUri);
        ZkTreeIterator walk(doc.get(), nullptr, false, ZkTreeIterator::PRE_ORDER);
        while (walk.nextNode()) {
        }
        if (!fatal)
            doc->saveXml();
    } catch (const ZkError&) {
    }

    bool fatal = false;
    UnicodeString saved;
    try {
        ZkPtr<ZkDocument> doc = newDocument(/*html=*/true, &fatal);
        std::istringstream in(bytes);
        doc->load(in, nullptr, kUri);
        if (fatal)
            return 0;
        saved = doc->saveXml();
    } catch (const ZkError&) {
        return 0;
    }

    // The saved text is XML.
    bool again = false;
    ZkPtr<ZkDocument> reloaded = newDocument(/*html=*/false, &again);
    try {
        reloaded->loadXml(saved);
    } catch (const ZkError&) {
        again = true;
    }
    if (again)
        std::abort();
    return 0;
}
