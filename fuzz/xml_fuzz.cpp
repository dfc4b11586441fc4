// The pull parser over arbitrary bytes: the first two bytes pick the features, next() or
// nextToken(), a small huge-text limit and a self-referring entity; the rest is the document.
// Every event's getters are read, and the parser is reused for a second input after the first.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

void collect(const ZkError&, void* count) {
    ++*static_cast<int*>(count);
}

void parse(ZkXmlParser& parser, const std::string& document, bool tokens) {
    std::istringstream in(document);
    try {
        parser.setInput(in, UnicodeString(), UnicodeString());
        for (int guard = 0; guard < 100000; ++guard) {
            int event = tokens ? parser.nextToken() : parser.next();
            parser.getName();
            parser.getPrefix();
            parser.getNamespace();
            parser.getText();
            parser.getDepth();
            parser.getPositionDescription();
            if (event == ZkXmlParser::START_TAG) {
                for (int i = 0; i < parser.getAttributeCount(); ++i) {
                    parser.getAttributeValue(i);
                    parser.getAttributeValue(parser.getAttributeNamespace(i),
                                             parser.getAttributeName(i));
                }
                parser.isEmptyElementTag();
            }
            if (event == ZkXmlParser::TEXT || event == ZkXmlParser::CDSECT)
                parser.isWhitespace();
            if (event == ZkXmlParser::END_DOCUMENT)
                break;
        }
    } catch (const ZkError&) {
    }
    ZkError error;
    while (parser.popError(error)) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    unsigned bits = unsigned(data[0]) | (unsigned(data[1]) << 8);
    std::string document(reinterpret_cast<const char*>(data + 2), size - 2);
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    for (int feature = 0; feature < ZkXmlParser::kFeatureCount; ++feature)
        parser->setFeature(ZkXmlParser::Feature(feature), (bits >> feature) & 1);
    bool tokens = (bits >> 11) & 1;
    if ((bits >> 12) & 1)
        parser->setHugeTextLimit(64);
    int calls = 0;
    if ((bits >> 13) & 1)
        parser->setCallbackError(collect, &calls);
    if ((bits >> 14) & 1) {
        parser->defineEntityReplacementText(ZkName(u"e"), u"<e>&e;</e>");
        parser->defineEntityReplacementText(ZkName(u"f"), u"x&#60;y&amp;");
    }
    parse(*parser, document, tokens);
    parse(*parser, "<r a='1'>t</r>", tokens);
    return 0;
}
