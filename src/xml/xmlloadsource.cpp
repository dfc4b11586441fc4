// ZkXmlParserLoadSource: the document loader's events from a pull parser.
#include "zkcommon/xml/xmlloadsource.h"

namespace ZkCommonNS {

ZkXmlParserLoadSource::ZkXmlParserLoadSource(ZkPtr<ZkXmlParser> parser)
    : m_parser(std::move(parser)),
      m_direct(m_parser && m_parser->getTypeID() == ZkTypeID::kXmlParserImpl) {}

ZkXmlParserLoadSource::~ZkXmlParserLoadSource() = default;

int ZkXmlParserLoadSource::next() {
    return m_parser ? m_parser->next() : END_DOCUMENT;
}

int ZkXmlParserLoadSource::getDepth() const {
    return m_parser ? m_parser->getDepth() : 0;
}

ZkName ZkXmlParserLoadSource::getNamespace() const {
    return m_parser ? m_parser->getNamespace() : ZkName();
}

ZkName ZkXmlParserLoadSource::getPrefix() const {
    return m_parser ? m_parser->getPrefix() : ZkName();
}

ZkName ZkXmlParserLoadSource::getName() const {
    return m_parser ? m_parser->getName() : ZkName();
}

UnicodeString ZkXmlParserLoadSource::getText() const {
    // The parser's text shares its buffer with the string returned: no character is copied
    // here.
    return m_parser ? m_parser->getText() : UnicodeString();
}

UnicodeString ZkXmlParserLoadSource::getNodeText() const {
    if (!m_direct)
        return ZkLoadEventSource::getNodeText();
    // A derived parser might change its texts in getText(); this one is read in place.
    int32_t start = 0;
    const UnicodeString& buffer =
        static_cast<const ZkXmlParserImpl*>(m_parser.get())->getTextBuffer(start);
    const int32_t length = buffer.length() - start;
    UnicodeString text(length, UChar32(0), 0); // an empty string with room for length
    text.append(buffer, start, length);
    return text;
}

ZkName ZkXmlParserLoadSource::getTarget() const {
    return m_parser ? m_parser->getTarget() : ZkName();
}

int ZkXmlParserLoadSource::getAttributeCount() const {
    return m_parser ? m_parser->getAttributeCount() : -1;
}

ZkName ZkXmlParserLoadSource::getAttributeNamespace(int index) const {
    return m_parser ? m_parser->getAttributeNamespace(index) : ZkName();
}

ZkName ZkXmlParserLoadSource::getAttributePrefix(int index) const {
    return m_parser ? m_parser->getAttributePrefix(index) : ZkName();
}

ZkName ZkXmlParserLoadSource::getAttributeName(int index) const {
    return m_parser ? m_parser->getAttributeName(index) : ZkName();
}

UnicodeString ZkXmlParserLoadSource::getAttributeValue(int index) const {
    return m_parser ? m_parser->getAttributeValue(index) : UnicodeString();
}

bool ZkXmlParserLoadSource::lendAttribute(int index, LentAttribute& out) const {
    if (!m_direct)
        return false;
    out.chars = static_cast<const ZkXmlParserImpl*>(m_parser.get())
                    ->getAttributeInPlace(index, out.ns, out.prefix, out.local, out.length);
    return true;
}

int ZkXmlParserLoadSource::getLineNumber() const {
    return m_parser ? m_parser->getLineNumber() : -1;
}

int ZkXmlParserLoadSource::getColumnNumber() const {
    return m_parser ? m_parser->getColumnNumber() : -1;
}

void ZkXmlParserLoadSource::throwError(unsigned short code, const UnicodeString& arg1,
                                       const UnicodeString& arg2) {
    if (m_parser)
        m_parser->throwError(code, arg1, arg2);
}

void ZkXmlParserLoadSource::pushStream(const UnicodeString& uri, ZkName parserType,
                                       const UnicodeString& encoding) {
    if (m_parser)
        m_parser->pushStream(uri, parserType, encoding);
}

} // namespace ZkCommonNS
