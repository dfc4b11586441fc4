// ZkXmlParser's defaults, the factory, and ZkXmlParserImpl's public face over its scanner.
#include "zkcommon/xml/xmlparser.h"

#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"
#include "zkcommon/core/strings.h"
#include "zkcommon/xml/xmlutil.h"

namespace ZkCommonNS {

namespace {
constexpr int kSiteWhitespace = 13;
constexpr int kSiteEmptyTag = 14;
constexpr int kQualifierNamespace = 15;
constexpr int kQualifierName = 16;
constexpr int kQualifierPrefix = 17;
constexpr int kQualifierValue = 18;

const char16_t* const kEventNames[] = {u"START_DOCUMENT",
                                       u"END_DOCUMENT",
                                       u"START_TAG",
                                       u"END_TAG",
                                       u"TEXT",
                                       u"CDSECT",
                                       u"ENTITY_REF",
                                       u"IGNORABLE_WHITESPACE",
                                       u"PROCESSING_INSTRUCTION",
                                       u"COMMENT",
                                       u"DOCDECL"};
} // namespace

// ---- ZkXmlParser: the defaults of an implementation that supports little.

ZkPtr<ZkXmlParser> ZkXmlParser::createXmlParser(const ZkUri::ContentInfo* info) {
    return ZkPtr<ZkXmlParser>(new ZkXmlParserImpl(info));
}

ZkPtr<ZkXmlParser> ZkXmlUtil::createXmlParser(const ZkUri::ContentInfo* info) {
    return ZkXmlParser::createXmlParser(info);
}

UnicodeString ZkXmlParser::getEventName(int eventType) {
    if (eventType < 0 || eventType > DOCDECL)
        return UnicodeString();
    return UnicodeString(kEventNames[eventType]);
}

void ZkXmlParser::setFeature(Feature, bool) {}
bool ZkXmlParser::getFeature(Feature) const {
    return false;
}
void ZkXmlParser::setStreamType(const ZkUri::ContentInfo*, const UnicodeString&) {}
void ZkXmlParser::setCallbackError(ErrorCallback, void*) {}
void ZkXmlParser::setInput(ZkUri&, const UnicodeString&, const UnicodeString&) {}
void ZkXmlParser::setInput(std::istream&, const UnicodeString&, const UnicodeString&) {}
void ZkXmlParser::setInput(const UnicodeString& uri, const UnicodeString& encoding,
                           const UnicodeString& baseUri) {
    ZkUri parsed(uri);
    setInput(parsed, encoding, baseUri);
}
void ZkXmlParser::setInputUri(const ZkUri&) {}
UnicodeString ZkXmlParser::getInputUri() const {
    return UnicodeString();
}
void ZkXmlParser::closeStream() {}
UnicodeString ZkXmlParser::getInputEncoding() const {
    return UnicodeString();
}
void ZkXmlParser::defineEntityReplacementText(ZkName, const UnicodeString&) {}
int ZkXmlParser::getNamespaceCount(int) const {
    return 0;
}
ZkName ZkXmlParser::getNamespacePrefix(int) const {
    return ZkName();
}
ZkName ZkXmlParser::getNamespaceUri(int) const {
    return ZkName();
}
ZkName ZkXmlParser::getNamespace() const {
    return ZkName();
}
ZkName ZkXmlParser::getNamespace(ZkName) const {
    return ZkName();
}
int ZkXmlParser::getDepth() const {
    return 0;
}
UnicodeString ZkXmlParser::getPositionDescription() const {
    return UnicodeString();
}
int ZkXmlParser::getLineNumber() const {
    return -1;
}
int ZkXmlParser::getColumnNumber() const {
    return -1;
}
bool ZkXmlParser::isWhitespace() const {
    return false;
}
UnicodeString ZkXmlParser::getText() const {
    return UnicodeString();
}
ZkName ZkXmlParser::getTarget() const {
    return ZkName();
}
bool ZkXmlParser::hasXmlDecl() const {
    return false;
}
ZkName ZkXmlParser::getName() const {
    return ZkName();
}
ZkName ZkXmlParser::getPrefix() const {
    return ZkName();
}
bool ZkXmlParser::isEmptyElementTag() const {
    return false;
}
int ZkXmlParser::getAttributeCount() const {
    return -1;
}
ZkName ZkXmlParser::getAttributeNamespace(int) const {
    throwCommonError(ZK_ERROR_OUT_OF_RANGE, kQualifierNamespace);
}
ZkName ZkXmlParser::getAttributeName(int) const {
    throwCommonError(ZK_ERROR_OUT_OF_RANGE, kQualifierName);
}
ZkName ZkXmlParser::getAttributePrefix(int) const {
    throwCommonError(ZK_ERROR_OUT_OF_RANGE, kQualifierPrefix);
}
UnicodeString ZkXmlParser::getAttributeValue(ZkName, ZkName) const {
    return ZkBogusString::getBogusString();
}
UnicodeString ZkXmlParser::getAttributeValue(int) const {
    throwCommonError(ZK_ERROR_OUT_OF_RANGE, kQualifierValue);
}
int ZkXmlParser::getEventType() const {
    return END_DOCUMENT;
}
int ZkXmlParser::next() {
    return END_DOCUMENT;
}
int ZkXmlParser::nextToken() {
    return END_DOCUMENT;
}
UnicodeString ZkXmlParser::getBaseUri() const {
    return UnicodeString();
}
void ZkXmlParser::pushStream(const UnicodeString&, ZkName, const UnicodeString&) {}
void ZkXmlParser::throwError(unsigned short code, const UnicodeString& arg1,
                             const UnicodeString& arg2) {
    ZkError error(code, ZkXmlParserImpl::getErrorMessage(code, arg1, arg2), UnicodeString(), -1, -1,
                  UnicodeString());
    error.throwFatalError();
}
bool ZkXmlParser::popError(ZkError&) {
    return false;
}
void ZkXmlParser::pushError(const ZkError&) {}
void ZkXmlParser::addMathMLEntities() {}
const void* ZkXmlParser::saveEntityMaps() {
    return nullptr;
}
void ZkXmlParser::recoverEntityMaps(const void*& maps) {
    maps = nullptr;
}
void ZkXmlParser::rewind() {}
void ZkXmlParser::setAutoClose(bool) {}
bool ZkXmlParser::isXML() const {
    return false;
}
bool ZkXmlParser::isHTMLSyntax() const {
    return false;
}
bool ZkXmlParser::isXHTMLSyntax() const {
    return false;
}
void ZkXmlParser::setParserType(ZkName, ZkName) {}
void ZkXmlParser::setHtmlDefaultCharset(const UnicodeString&) {}
UnicodeString ZkXmlParser::getLanguage() const {
    return UnicodeString();
}
UnicodeString ZkXmlParser::getPubidLiteral() const {
    return UnicodeString();
}
UnicodeString ZkXmlParser::getExternalDTD() const {
    return UnicodeString();
}
void ZkXmlParser::setHugeTextLimit(int) {}

// ---- ZkXmlParserImpl

ZkXmlParserImpl::ZkXmlParserImpl(const ZkUri::ContentInfo* info)
    : m_scanner(std::make_unique<detail::XmlScanner>(*this, info)) {
    if (info) {
        m_scanner->m_contentType = ZkChar::toAsciiLower(info->contentType);
        m_scanner->m_language = info->language;
        m_scanner->hintsChanged();
    }
}

ZkXmlParserImpl::~ZkXmlParserImpl() = default;

void ZkXmlParserImpl::setFeature(Feature feature, bool value) {
    if (feature < 0 || feature >= kFeatureCount)
        return;
    m_scanner->m_features[feature] = value;
    m_scanner->setXml11(m_scanner->m_xml11);
}

bool ZkXmlParserImpl::getFeature(Feature feature) const {
    return feature >= 0 && feature < kFeatureCount && m_scanner->m_features[feature];
}

void ZkXmlParserImpl::setStreamType(const ZkUri::ContentInfo* info,
                                    const UnicodeString& extension) {
    if (info) {
        m_scanner->m_contentType = ZkChar::toAsciiLower(info->contentType);
        m_scanner->m_language = info->language;
    }
    m_scanner->m_extension = ZkChar::toAsciiLower(extension);
    m_scanner->m_extensionFromUri = false;
    m_scanner->hintsChanged();
}

void ZkXmlParserImpl::setCallbackError(ErrorCallback callback, void* userData) {
    m_scanner->m_callback = callback;
    m_scanner->m_callbackData = userData;
}

void ZkXmlParserImpl::setInput(ZkUri& uri, const UnicodeString& encoding,
                               const UnicodeString& baseUri) {
    m_scanner->openUri(uri, encoding, baseUri);
}

void ZkXmlParserImpl::setInput(std::istream& in, const UnicodeString& encoding,
                               const UnicodeString& baseUri) {
    m_scanner->openStream(in, encoding, baseUri);
}

void ZkXmlParserImpl::setInputUri(const ZkUri& uri) {
    m_scanner->m_in.inputUri = uri.toString();
    // A stream named by a file with an extension gives the extension as a hint, unless one
    // was given.
    if (m_scanner->m_extension.isEmpty() || m_scanner->m_extensionFromUri) {
        m_scanner->m_extension = ZkChar::toAsciiLower(uri.getExtension());
        m_scanner->m_extensionFromUri = true;
        m_scanner->hintsChanged();
    }
}

UnicodeString ZkXmlParserImpl::getInputUri() const {
    return m_scanner->m_in.inputUri;
}

void ZkXmlParserImpl::closeStream() {
    m_scanner->closeStream();
}

UnicodeString ZkXmlParserImpl::getInputEncoding() const {
    return m_scanner->m_in.encodingName;
}

void ZkXmlParserImpl::defineEntityReplacementText(ZkName name, const UnicodeString& text) {
    m_scanner->m_entities[name.getEnum()] = text;
}

int ZkXmlParserImpl::getNamespaceCount(int depth) const {
    // Bindings made by the open elements up to `depth` (1 is the root), counted together.
    const auto& open = m_scanner->m_open;
    if (depth <= 0)
        return 0;
    if (depth >= int(open.size()))
        return int(m_scanner->m_bindings.size());
    return open[size_t(depth)].bindingStart;
}

ZkName ZkXmlParserImpl::getNamespacePrefix(int i) const {
    const auto& bindings = m_scanner->m_bindings;
    return i >= 0 && i < int(bindings.size()) ? bindings[size_t(i)].prefix : ZkName();
}

ZkName ZkXmlParserImpl::getNamespaceUri(int i) const {
    const auto& bindings = m_scanner->m_bindings;
    return i >= 0 && i < int(bindings.size()) ? bindings[size_t(i)].uri : ZkName();
}

ZkName ZkXmlParserImpl::getNamespace() const {
    int event = m_scanner->m_event;
    if ((event != START_TAG && event != END_TAG) || m_scanner->m_open.empty())
        return ZkName();
    return m_scanner->m_open.back().ns;
}

ZkName ZkXmlParserImpl::getNamespace(ZkName prefix) const {
    return m_scanner->resolvePrefix(prefix);
}

int ZkXmlParserImpl::getDepth() const {
    return int(m_scanner->m_open.size());
}

UnicodeString ZkXmlParserImpl::getPositionDescription() const {
    return m_scanner->positionDescription();
}

int ZkXmlParserImpl::getLineNumber() const {
    return m_scanner->m_in.line;
}

int ZkXmlParserImpl::getColumnNumber() const {
    return m_scanner->m_in.column;
}

bool ZkXmlParserImpl::isWhitespace() const {
    int event = m_scanner->m_event;
    if (event != TEXT && event != CDSECT && event != IGNORABLE_WHITESPACE)
        throwCommonError(ZK_ERROR_WRONG_STATE, kSiteWhitespace);
    const UnicodeString& text = m_scanner->text();
    for (int32_t i = 0; i < text.length(); ++i) {
        char16_t c = text[i];
        if (c != 0x09 && c != 0x0A && c != 0x0D && c != 0x20)
            return false;
    }
    return true;
}

UnicodeString ZkXmlParserImpl::getText() const {
    return m_scanner->text();
}

const UnicodeString& ZkXmlParserImpl::getTextBuffer(int32_t& start) const {
    const detail::XmlScanner& scanner = *m_scanner;
    if (scanner.m_useOwnText ||
        (scanner.m_event == ENTITY_REF && !scanner.m_entityName.isEmpty())) {
        start = 0;
        return scanner.text();
    }
    start = scanner.m_mark;
    return scanner.m_text;
}

ZkName ZkXmlParserImpl::getTarget() const {
    return m_scanner->m_target;
}

bool ZkXmlParserImpl::hasXmlDecl() const {
    return m_scanner->m_hasXmlDecl;
}

ZkName ZkXmlParserImpl::getName() const {
    const detail::XmlScanner& scanner = *m_scanner;
    switch (scanner.m_event) {
    case START_TAG:
    case END_TAG:
        return scanner.m_open.empty() ? ZkName() : scanner.m_open.back().local;
    case ENTITY_REF: {
        if (!scanner.m_entityName.isEmpty())
            return scanner.m_entityName;
        const UnicodeString& text = scanner.text();
        if (text.isEmpty())
            return ZkName();
        char name[16];
        snprintf(name, sizeof name, "#x%X", unsigned(text.char32At(text.length() - 1)));
        return ZkName(UnicodeString(name, -1, US_INV));
    }
    case PROCESSING_INSTRUCTION:
        return scanner.m_target;
    default:
        return ZkName();
    }
}

ZkName ZkXmlParserImpl::getPrefix() const {
    int event = m_scanner->m_event;
    if ((event != START_TAG && event != END_TAG) || m_scanner->m_open.empty())
        return ZkName();
    return m_scanner->m_open.back().prefix;
}

bool ZkXmlParserImpl::isEmptyElementTag() const {
    if (m_scanner->m_event != START_TAG)
        throwCommonError(ZK_ERROR_WRONG_STATE, kSiteEmptyTag);
    return m_scanner->m_emptyTag;
}

int ZkXmlParserImpl::getAttributeCount() const {
    return m_scanner->m_event == START_TAG ? m_scanner->m_attributeCount : -1;
}

namespace {
const detail::Attribute& attributeAt(const detail::XmlScanner& scanner, int index, int qualifier) {
    if (scanner.m_event != ZkXmlParser::START_TAG || index < 0 || index >= scanner.m_attributeCount)
        throwCommonError(ZK_ERROR_OUT_OF_RANGE, qualifier);
    return scanner.m_attributes[size_t(index)];
}
} // namespace

ZkName ZkXmlParserImpl::getAttributeNamespace(int index) const {
    return attributeAt(*m_scanner, index, kQualifierNamespace).ns;
}

ZkName ZkXmlParserImpl::getAttributeName(int index) const {
    return attributeAt(*m_scanner, index, kQualifierName).local;
}

ZkName ZkXmlParserImpl::getAttributePrefix(int index) const {
    return attributeAt(*m_scanner, index, kQualifierPrefix).prefix;
}

UnicodeString ZkXmlParserImpl::getAttributeValue(ZkName ns, ZkName name) const {
    const detail::XmlScanner& scanner = *m_scanner;
    if (scanner.m_event != START_TAG)
        throwCommonError(ZK_ERROR_OUT_OF_RANGE, kQualifierValue);
    for (int i = 0; i < scanner.m_attributeCount; ++i) {
        const detail::Attribute& attribute = scanner.m_attributes[size_t(i)];
        if (attribute.local != name)
            continue;
        ZkName resolved = attribute.ns;
        if (attribute.prefix.isEmpty())
            resolved = ns.isEmpty() ? ZkName() : scanner.resolvePrefix(ZkName());
        if (resolved == ns)
            return scanner.attributeValue(attribute);
    }
    return ZkBogusString::getBogusString();
}

UnicodeString ZkXmlParserImpl::getAttributeValue(int index) const {
    return m_scanner->attributeValue(attributeAt(*m_scanner, index, kQualifierValue));
}

const UChar* ZkXmlParserImpl::getAttributeInPlace(int index, ZkName& ns, ZkName& prefix,
                                                  ZkName& local, int32_t& length) const {
    const detail::XmlScanner& scanner = *m_scanner;
    const detail::Attribute& attribute = attributeAt(scanner, index, kQualifierValue);
    ns = attribute.ns;
    prefix = attribute.prefix;
    local = attribute.local;
    if (attribute.viewStart >= 0) {
        length = attribute.viewLength;
        return scanner.m_in.chars.get() + attribute.viewStart;
    }
    length = attribute.value.length();
    return attribute.value.getBuffer();
}

int ZkXmlParserImpl::getEventType() const {
    return m_scanner->m_event;
}

int ZkXmlParserImpl::next() {
    return m_scanner->next();
}

int ZkXmlParserImpl::nextToken() {
    return m_scanner->nextToken();
}

UnicodeString ZkXmlParserImpl::getBaseUri() const {
    return m_scanner->m_in.baseUri;
}

void ZkXmlParserImpl::pushStream(const UnicodeString& uri, ZkName parserType,
                                 const UnicodeString& encoding) {
    m_scanner->pushStream(uri, parserType, encoding);
}

void ZkXmlParserImpl::throwError(unsigned short code, const UnicodeString& arg1,
                                 const UnicodeString& arg2) {
    m_scanner->report(code, arg1, arg2);
}

bool ZkXmlParserImpl::popError(ZkError& error) {
    auto& errors = m_scanner->m_errors;
    if (errors.empty())
        return false;
    error = errors.front();
    errors.pop_front();
    return true;
}

void ZkXmlParserImpl::pushError(const ZkError& error) {
    ZkError copy(error);
    copy.setLineNumber(m_scanner->m_in.line);
    copy.setColumnNumber(m_scanner->m_in.column);
    copy.setUri(m_scanner->m_in.inputUri);
    m_scanner->m_errors.push_back(copy);
}

void ZkXmlParserImpl::addMathMLEntities() {
    m_scanner->loadEntitySet(detail::kEntitySetMathML);
}

const void* ZkXmlParserImpl::saveEntityMaps() {
    auto* snapshot = new detail::EntityMapSnapshot;
    snapshot->general = m_scanner->m_entities;
    snapshot->parameter = m_scanner->m_paramEntities;
    snapshot->generalExternal = m_scanner->m_externalEntities;
    snapshot->parameterExternal = m_scanner->m_externalParamEntities;
    snapshot->mathmlLoaded = m_scanner->m_setLoaded[detail::kEntitySetMathML];
    return snapshot;
}

void ZkXmlParserImpl::recoverEntityMaps(const void*& maps) {
    auto* saved = static_cast<const detail::EntityMapSnapshot*>(maps);
    if (saved) {
        m_scanner->m_entities = saved->general;
        m_scanner->m_paramEntities = saved->parameter;
        m_scanner->m_externalEntities = saved->generalExternal;
        m_scanner->m_externalParamEntities = saved->parameterExternal;
        m_scanner->m_setLoaded[detail::kEntitySetMathML] = saved->mathmlLoaded;
        delete saved;
    }
    maps = nullptr;
}

void ZkXmlParserImpl::rewind() {
    m_scanner->rewind();
}

void ZkXmlParserImpl::setAutoClose(bool autoClose) {
    m_scanner->m_autoClose = autoClose;
}

bool ZkXmlParserImpl::isXML() const {
    return !m_scanner->isHtml();
}

bool ZkXmlParserImpl::isHTMLSyntax() const {
    return m_scanner->isHtml();
}

bool ZkXmlParserImpl::isXHTMLSyntax() const {
    return m_scanner->isXhtml();
}

void ZkXmlParserImpl::setParserType(ZkName type, ZkName defaultType) {
    m_scanner->m_parserType = type;
    m_scanner->m_defaultType = defaultType;
    m_scanner->m_settledType = ZKN_EMPTY;
    m_scanner->hintsChanged();
}

void ZkXmlParserImpl::setHtmlDefaultCharset(const UnicodeString& charset) {
    m_scanner->m_htmlDefaultCharset = charset;
}

UnicodeString ZkXmlParserImpl::getLanguage() const {
    return m_scanner->m_language;
}

UnicodeString ZkXmlParserImpl::getPubidLiteral() const {
    return m_scanner->m_pubid;
}

UnicodeString ZkXmlParserImpl::getExternalDTD() const {
    return m_scanner->m_systemId;
}

void ZkXmlParserImpl::setHugeTextLimit(int limit) {
    m_scanner->m_hugeTextLimit = limit == 0 ? kDefaultHugeTextLimit : limit;
}

} // namespace ZkCommonNS
