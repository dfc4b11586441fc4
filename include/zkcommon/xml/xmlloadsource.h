// ZkXmlParserLoadSource: feeds a document's loader from a pull parser.
#ifndef ZKCOMMON_XML_XMLLOADSOURCE_H
#define ZKCOMMON_XML_XMLLOADSOURCE_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/object.h"
#include "zkcommon/dom/loadsource.h"
#include "zkcommon/xml/xmlparser.h"

namespace ZkCommonNS {

/// The loader's view of a ZkXmlParser: next() is the parser's coalescing next(), so the loader
/// sees one TEXT for adjacent character data, references and CDATA sections; comments, white
/// space outside the root and the DOCTYPE never reach it. Text is handed over as the parser's
/// own string, shared and not copied again. Errors of the parser pass through unchanged.
class ZKCOMMON_API ZkXmlParserLoadSource : public ZkLoadEventSource {
public:
    /// A null parser gives a source that is at its end at once.
    explicit ZkXmlParserLoadSource(ZkPtr<ZkXmlParser> parser);
    ~ZkXmlParserLoadSource() override;

    ZkXmlParser* getParser() const { return m_parser.get(); }

    int next() override;
    int getDepth() const override;
    ZkName getNamespace() const override;
    ZkName getPrefix() const override;
    ZkName getName() const override;
    UnicodeString getText() const override;
    /// Copied once, straight from the parser's buffer, when the parser is a ZkXmlParserImpl.
    UnicodeString getNodeText() const override;
    ZkName getTarget() const override;
    int getAttributeCount() const override;
    ZkName getAttributeNamespace(int index) const override;
    ZkName getAttributePrefix(int index) const override;
    ZkName getAttributeName(int index) const override;
    UnicodeString getAttributeValue(int index) const override;
    /// Lends the values of a ZkXmlParserImpl straight from its buffers.
    bool lendAttribute(int index, LentAttribute& out) const override;
    int getLineNumber() const override;
    int getColumnNumber() const override;
    void throwError(unsigned short code, const UnicodeString& arg1,
                    const UnicodeString& arg2) override;
    void pushStream(const UnicodeString& uri, ZkName parserType,
                    const UnicodeString& encoding) override;

private:
    ZkPtr<ZkXmlParser> m_parser;
    bool m_direct; ///< the parser is exactly a ZkXmlParserImpl, whose buffer can be read in place
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_XML_XMLLOADSOURCE_H
