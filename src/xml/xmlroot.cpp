// ZkXmlUtil: the root element of a document, read with a lenient parser that stops there.
#include "zkcommon/core/error.h"
#include "zkcommon/xml/xmlparser.h"
#include "zkcommon/xml/xmlutil.h"

#include <istream>

namespace ZkCommonNS {

namespace {

ZkPtr<ZkXmlParser> lenientParser() {
    ZkPtr<ZkXmlParser> parser(new ZkXmlParserImpl());
    for (ZkXmlParser::Feature feature :
         {ZkXmlParser::FEATURE_NO_EXTERNAL_DTD, ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY,
          ZkXmlParser::FEATURE_LAX_ATTRIBUTE_PREFIX, ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING,
          ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY, ZkXmlParser::FEATURE_LAX_ELEMENT_PREFIX})
        parser->setFeature(feature, true);
    return parser;
}

// An empty input has no root element, like any other document without one: it gives null
// rather than the parser's end-of-input error. Other errors go to the caller.
template <class Open> bool openInput(ZkXmlParser&, Open open) {
    try {
        open();
    } catch (const ZkError& error) {
        if (error.getErrorCode() == ZK_ERROR_UNEXPECTED_EOF)
            return false;
        throw;
    }
    return true;
}

// Reads to the first start tag; null when the document ends first.
ZkPtr<ZkXmlParser> toFirstStartTag(ZkPtr<ZkXmlParser> parser) {
    for (;;) {
        const int event = parser->next();
        if (event == ZkXmlParser::START_TAG)
            return parser;
        if (event == ZkXmlParser::END_DOCUMENT)
            return ZkPtr<ZkXmlParser>();
    }
}

ZkName rootName(ZkName& ns, ZkXmlParser* parser) {
    ns = parser ? parser->getNamespace() : ZkName();
    return parser ? parser->getName() : ZkName();
}

// A simplified stylesheet is an XSL-FO root element with an XSLT "version" attribute.
ZkName stylesheetNamespace(ZkName& ns, ZkXmlParser* parser) {
    const ZkName local = rootName(ns, parser);
    if (parser && ns == ZKN_NS_XSL_FO && local == ZKN_root) {
        for (int i = parser->getAttributeCount() - 1; i >= 0; --i) {
            if (parser->getAttributeNamespace(i) == ZKN_NS_XSLT &&
                parser->getAttributeName(i) == ZKN_version) {
                ns = ZKN_NS_XSLT;
                break;
            }
        }
    }
    return local;
}

} // namespace

ZkPtr<ZkXmlParser> ZkXmlUtil::getRootParser(std::istream& in, const ZkUri::ContentInfo* info,
                                            const UnicodeString& extension) {
    ZkPtr<ZkXmlParser> parser = lenientParser();
    parser->setStreamType(info, extension);
    if (!openInput(*parser, [&] { parser->setInput(in, UnicodeString(), UnicodeString()); }))
        return ZkPtr<ZkXmlParser>();
    return toFirstStartTag(parser);
}

ZkPtr<ZkXmlParser> ZkXmlUtil::getRootParser(const UnicodeString& uri,
                                            const UnicodeString& extension) {
    if (uri.isEmpty())
        return ZkPtr<ZkXmlParser>();
    ZkPtr<ZkXmlParser> parser = lenientParser();
    if (!extension.isEmpty())
        parser->setStreamType(nullptr, extension);
    if (!openInput(*parser, [&] { parser->setInput(uri, UnicodeString(), UnicodeString()); }))
        return ZkPtr<ZkXmlParser>();
    return toFirstStartTag(parser);
}

ZkName ZkXmlUtil::getRootName(ZkName& ns, std::istream& in, const ZkUri::ContentInfo* info,
                              const UnicodeString& extension) {
    return rootName(ns, getRootParser(in, info, extension));
}

ZkName ZkXmlUtil::getRootName(ZkName& ns, const UnicodeString& uri,
                              const UnicodeString& extension) {
    return rootName(ns, getRootParser(uri, extension));
}

ZkName ZkXmlUtil::getXSLStylesheetNamespace(ZkName& ns, std::istream& in) {
    return stylesheetNamespace(ns, getRootParser(in));
}

ZkName ZkXmlUtil::getXSLStylesheetNamespace(ZkName& ns, const UnicodeString& uri) {
    return stylesheetNamespace(ns, getRootParser(uri));
}

} // namespace ZkCommonNS
