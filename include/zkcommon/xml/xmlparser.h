// ZkXmlParser, the pull-event interface of the XML and HTML parsers, and ZkXmlParserImpl, the
// library's own scanner behind it.
#ifndef ZKCOMMON_XML_XMLPARSER_H
#define ZKCOMMON_XML_XMLPARSER_H

#include "zkcommon/core/error.h"
#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/io/uri.h"

#include <iosfwd>
#include <memory>

namespace ZkCommonNS {

namespace detail {
class XmlScanner;
}

/// A pull parser: open an input, ask for the next event, read the current event's names,
/// attributes and text. Every operation has a default here, so an implementation overrides
/// only what it supports: string getters give an empty string, flags false, counts -1, and the
/// setters do nothing.
class ZKCOMMON_API ZkXmlParser : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkXmlParser, ZkRCObject, ZkTypeID::kXmlParser, "ZkXmlParser")

public:
    /// The events, in the words getPositionDescription prints.
    enum EventType {
        START_DOCUMENT = 0,         ///< before the first event
        END_DOCUMENT = 1,           ///< input exhausted; stays so
        START_TAG = 2,              ///< element start; attributes available
        END_TAG = 3,                ///< element end, also after an empty element tag
        TEXT = 4,                   ///< character data
        CDSECT = 5,                 ///< CDATA section
        ENTITY_REF = 6,             ///< general entity or character reference
        IGNORABLE_WHITESPACE = 7,   ///< white space outside the root element
        PROCESSING_INSTRUCTION = 8, ///< processing instruction
        COMMENT = 9,                ///< comment
        DOCDECL = 10                ///< document type declaration
    };

    /// Switches, all false in a new parser and kept across setInput.
    enum Feature {
        FEATURE_NO_EXTERNAL_DTD = 0,         ///< no external subset, no DOCTYPE entity sets
        FEATURE_IGNORE_UNDEFINED_ENTITY = 1, ///< an undefined entity is empty, unreported
        FEATURE_LAX_ATTRIBUTE_PREFIX = 2,    ///< an undeclared attribute prefix is its own URI
        FEATURE_LAX_DTD_ERRORS = 3,          ///< errors of the external subset are swallowed
        FEATURE_LAX_UNKNOWN_ENCODING = 4,    ///< an unknown encoding name is ignored
        FEATURE_STRICT_ENCODING = 5,         ///< only the built-in decoders; else code 181
        FEATURE_NO_POSITION = 6,             ///< getPositionDescription is empty
        FEATURE_NO_CHAR_CHECK = 7,           ///< characters are not tested for XML validity
        FEATURE_REPORT_PI = 8,               ///< next() also stops at instructions
        FEATURE_NO_EXTERNAL_ENTITY = 9,      ///< an external entity raises 516, unopened
        FEATURE_LAX_ELEMENT_PREFIX = 10,     ///< an undeclared element prefix raises nothing
    };
    static constexpr int kFeatureCount = 11;

    /// Receives every diagnostic of the scanner when installed; see setCallbackError.
    using ErrorCallback = void (*)(const ZkError& error, void* userData);

    /// A new ZkXmlParserImpl; `info`, when given, is copied and kept for the parser's life.
    static ZkPtr<ZkXmlParser> createXmlParser(const ZkUri::ContentInfo* info = nullptr);

    // 1. Features.
    virtual void setFeature(Feature feature, bool value);
    virtual bool getFeature(Feature feature) const;
    // 2. Type hints for a stream input: content type and language of `info` (when given) and
    // the lower-cased file extension.
    virtual void setStreamType(const ZkUri::ContentInfo* info, const UnicodeString& extension);
    // 3. The error sink: every diagnostic goes to `callback` with `userData`; after a fatal one
    // the parse stops with ZkError 128. Null restores throwing and queueing.
    virtual void setCallbackError(ErrorCallback callback, void* userData);
    // 4, 5. Opens an input and starts over. The URI form raises ZkError 67 when the resource
    // cannot be opened, 68 when it is empty and 70 when it cannot be read; the stream form
    // borrows `in` and raises 11, 68 or 70 the same way. A non-empty `encoding` overrides what
    // the input says; `baseUri` overrides the base of relative references.
    virtual void setInput(ZkUri& uri, const UnicodeString& encoding, const UnicodeString& baseUri);
    virtual void setInput(std::istream& in, const UnicodeString& encoding,
                          const UnicodeString& baseUri);
    /// Builds a ZkUri from `uri` and calls the ZkUri form.
    void setInput(const UnicodeString& uri, const UnicodeString& encoding,
                  const UnicodeString& baseUri);
    // 6. Input bookkeeping.
    /// Overrides the URI that positions and errors report.
    virtual void setInputUri(const ZkUri& uri);
    virtual UnicodeString getInputUri() const;
    /// Closes every open input (pushed ones included); getters keep the last event.
    virtual void closeStream();
    virtual UnicodeString getInputEncoding() const;
    // 7. Adds or replaces a general entity for the current document.
    virtual void defineEntityReplacementText(ZkName name, const UnicodeString& text);
    // 8. Namespace scopes: the number of bindings declared at `depth`, the binding `i` of the
    // innermost element, and resolution of a prefix in the open scopes.
    virtual int getNamespaceCount(int depth) const;
    virtual ZkName getNamespacePrefix(int i) const;
    virtual ZkName getNamespaceUri(int i) const;
    /// The element's namespace at START_TAG and END_TAG, else the empty name.
    virtual ZkName getNamespace() const;
    virtual ZkName getNamespace(ZkName prefix) const;
    // 9. Position.
    virtual int getDepth() const;
    /// The event's word, the URI, line and column: "START_TAG, 'file:///a.xml', Line 3, Col 7."
    virtual UnicodeString getPositionDescription() const;
    /// -1 when there is no input.
    virtual int getLineNumber() const;
    virtual int getColumnNumber() const;
    // 10. The current event.
    /// At TEXT, CDSECT and IGNORABLE_WHITESPACE; elsewhere raises ZkError 11.
    virtual bool isWhitespace() const;
    virtual UnicodeString getText() const;
    virtual ZkName getTarget() const;
    virtual bool hasXmlDecl() const;
    virtual ZkName getName() const;
    virtual ZkName getPrefix() const;
    /// At START_TAG; elsewhere raises ZkError 11.
    virtual bool isEmptyElementTag() const;
    // 11. Attributes of a START_TAG; an index outside 0..count-1 raises ZkError 4.
    /// -1 outside START_TAG.
    virtual int getAttributeCount() const;
    virtual ZkName getAttributeNamespace(int index) const;
    virtual ZkName getAttributeName(int index) const;
    virtual ZkName getAttributePrefix(int index) const;
    /// The value of the attribute with this namespace and local name; the bogus string when
    /// there is none. Outside START_TAG raises ZkError 4.
    virtual UnicodeString getAttributeValue(ZkName ns, ZkName name) const;
    virtual UnicodeString getAttributeValue(int index) const;
    // 12. Events.
    virtual int getEventType() const;
    /// The next event, with adjacent text, references and comments merged into one TEXT.
    virtual int next();
    /// The next event exactly as scanned.
    virtual int nextToken();
    // 13.
    virtual UnicodeString getBaseUri() const;
    // 14. Reads `uri` (resolved against the base) before the rest of the input, as `parserType`
    // ("xml" or "text") in `encoding`. A file that cannot be opened raises ZkError 67; another
    // resource that cannot be opened is skipped.
    virtual void pushStream(const UnicodeString& uri, ZkName parserType,
                            const UnicodeString& encoding);
    // 15. The one route of every diagnostic: to the callback, else thrown when fatal, else
    // queued for popError.
    virtual void throwError(unsigned short code, const UnicodeString& arg1,
                            const UnicodeString& arg2);
    /// Moves the oldest queued diagnostic into `error`; false when none is queued.
    virtual bool popError(ZkError& error);
    /// Queues a copy stamped with the current line, column and input URI.
    virtual void pushError(const ZkError& error);
    // 16. Entity sets, restarting and closing.
    virtual void addMathMLEntities();
    /// A snapshot of the entity tables for recoverEntityMaps; null when unsupported.
    virtual const void* saveEntityMaps();
    /// Restores a snapshot and releases it (sets `maps` to null).
    virtual void recoverEntityMaps(const void*& maps);
    /// Reads the same input again from its start.
    virtual void rewind();
    /// Whether END_DOCUMENT closes the input by itself (true in a new parser).
    virtual void setAutoClose(bool autoClose);
    // 17. Syntax of the current input.
    virtual bool isXML() const;
    virtual bool isHTMLSyntax() const;
    virtual bool isXHTMLSyntax() const;
    // 18.
    virtual void setParserType(ZkName type, ZkName defaultType);
    virtual void setHtmlDefaultCharset(const UnicodeString& charset);
    // 19.
    virtual UnicodeString getLanguage() const;
    virtual UnicodeString getPubidLiteral() const;
    virtual UnicodeString getExternalDTD() const;
    // 20. 0 restores the default 10000000 UTF-16 units; a negative limit turns the check off.
    virtual void setHugeTextLimit(int limit);

    /// The word of an event number ("START_TAG"); empty outside 0..10.
    static UnicodeString getEventName(int eventType);
};

/// The library's own parser of XML, XHTML and HTML. One parser belongs to one thread at a time;
/// it shares nothing mutable with other parsers but the name table and the built-in entity sets,
/// each behind its lock.
class ZKCOMMON_API ZkXmlParserImpl : public ZkXmlParser {
    ZK_DECLARE_TYPE(ZkXmlParserImpl, ZkXmlParser, ZkTypeID::kXmlParserImpl, "ZkXmlParserImpl")

public:
    /// The default of setHugeTextLimit.
    static constexpr int kDefaultHugeTextLimit = 10000000;

    explicit ZkXmlParserImpl(const ZkUri::ContentInfo* info = nullptr);
    ~ZkXmlParserImpl() override;
    ZkXmlParserImpl(const ZkXmlParserImpl&) = delete;
    ZkXmlParserImpl& operator=(const ZkXmlParserImpl&) = delete;

    void setFeature(Feature feature, bool value) override;
    bool getFeature(Feature feature) const override;
    void setStreamType(const ZkUri::ContentInfo* info, const UnicodeString& extension) override;
    void setCallbackError(ErrorCallback callback, void* userData) override;
    using ZkXmlParser::setInput;
    void setInput(ZkUri& uri, const UnicodeString& encoding, const UnicodeString& baseUri) override;
    void setInput(std::istream& in, const UnicodeString& encoding,
                  const UnicodeString& baseUri) override;
    void setInputUri(const ZkUri& uri) override;
    UnicodeString getInputUri() const override;
    void closeStream() override;
    UnicodeString getInputEncoding() const override;
    void defineEntityReplacementText(ZkName name, const UnicodeString& text) override;
    int getNamespaceCount(int depth) const override;
    ZkName getNamespacePrefix(int i) const override;
    ZkName getNamespaceUri(int i) const override;
    ZkName getNamespace() const override;
    ZkName getNamespace(ZkName prefix) const override;
    int getDepth() const override;
    UnicodeString getPositionDescription() const override;
    int getLineNumber() const override;
    int getColumnNumber() const override;
    bool isWhitespace() const override;
    UnicodeString getText() const override;
    ZkName getTarget() const override;
    bool hasXmlDecl() const override;
    ZkName getName() const override;
    ZkName getPrefix() const override;
    bool isEmptyElementTag() const override;
    int getAttributeCount() const override;
    ZkName getAttributeNamespace(int index) const override;
    ZkName getAttributeName(int index) const override;
    ZkName getAttributePrefix(int index) const override;
    UnicodeString getAttributeValue(ZkName ns, ZkName name) const override;
    UnicodeString getAttributeValue(int index) const override;
    int getEventType() const override;
    int next() override;
    int nextToken() override;
    UnicodeString getBaseUri() const override;
    void pushStream(const UnicodeString& uri, ZkName parserType,
                    const UnicodeString& encoding) override;
    void throwError(unsigned short code, const UnicodeString& arg1,
                    const UnicodeString& arg2) override;
    bool popError(ZkError& error) override;
    void pushError(const ZkError& error) override;
    void addMathMLEntities() override;
    const void* saveEntityMaps() override;
    void recoverEntityMaps(const void*& maps) override;
    void rewind() override;
    void setAutoClose(bool autoClose) override;
    bool isXML() const override;
    bool isHTMLSyntax() const override;
    bool isXHTMLSyntax() const override;
    void setParserType(ZkName type, ZkName defaultType) override;
    void setHtmlDefaultCharset(const UnicodeString& charset) override;
    UnicodeString getLanguage() const override;
    UnicodeString getPubidLiteral() const override;
    UnicodeString getExternalDTD() const override;
    void setHugeTextLimit(int limit) override;

    /// The text of the current event without building a string: valid until the next event.
    /// Empty where getText would build its value (comments, instructions, entity text).
    const UnicodeString& getTextBuffer(int32_t& start) const;
    /// The names of attribute `index` of the current start tag and its value in place:
    /// `length` characters at the result, valid until the next event. Throws ZkError as the
    /// single getters do.
    const UChar* getAttributeInPlace(int index, ZkName& ns, ZkName& prefix, ZkName& local,
                                     int32_t& length) const;
    /// The message of a scanner code with its two arguments ("XML parser error." for an
    /// unknown code).
    static UnicodeString getErrorMessage(unsigned short code, const UnicodeString& arg1,
                                         const UnicodeString& arg2);

private:
    friend class detail::XmlScanner; // reads an external subset through a parser of its own
    std::unique_ptr<detail::XmlScanner> m_scanner;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_XML_XMLPARSER_H
