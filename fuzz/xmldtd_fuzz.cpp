// Fuzzes the XML reader with a DOCTYPE in front of the content: the input is parsed to its end
// as it stands, with the lax features and with an error callback, with a small text limit so that
// growing expansions stop early. Errors are expected; crashes, hangs and leaks are not.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <zkcommon/core/error.h>
#include <zkcommon/xml/xmlparser.h>

using namespace ZkCommonNS;

namespace {

void ignore(const ZkError&, void*) {}

/// `lax` sets the lax features; `lenient` sends errors to a callback, so that every error
/// below the fatal level lets the reading go on.
void parse(const std::string& input, bool lax, bool lenient) {
    ZkPtr<ZkXmlParser> parser = ZkXmlParser::createXmlParser();
    if (lenient)
        parser->setCallbackError(ignore, nullptr);
    parser->setHugeTextLimit(100000);
    // Nothing outside the input is read: no external subset, no external entity.
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, true);
    parser->setFeature(ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY, true);
    if (lax) {
        parser->setFeature(ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY, true);
        parser->setFeature(ZkXmlParser::FEATURE_LAX_DTD_ERRORS, true);
    }
    std::istringstream in(input);
    try {
        parser->setInput(in, UnicodeString(), UnicodeString());
        for (int event; (event = parser->next()) != ZkXmlParser::END_DOCUMENT;) {
            if (event == ZkXmlParser::TEXT || event == ZkXmlParser::DOCDECL)
                (void)parser->getText();
        }
    } catch (const ZkError&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string input(reinterpret_cast<const char*>(data), size);
    parse(input, false, false);
    parse(input, true, false);
    parse(input, false, true);
    return 0;
}
