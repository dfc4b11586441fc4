// ZkXmlSerializer: the push writer of XML, and ZkXmlSerializerImpl, its implementation.
#ifndef ZKCOMMON_XML_XMLSERIALIZER_H
#define ZKCOMMON_XML_XMLSERIALIZER_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"

#include <iosfwd>
#include <map>
#include <string>
#include <utility>

namespace ZkCommonNS {

namespace detail {
class SerializerScopes;
}

/// Writes a document stated call by call: it checks the order of the calls, keeps namespace
/// scopes, chooses prefixes and escapes text. The output is one line; nothing is indented and
/// no line break is added. Order errors throw ZkError (codes 12 to 16); after one the object is
/// usable again only through setOutput. Names and the content of comments, CDATA sections and
/// instructions are written as given, without checks.
class ZKCOMMON_API ZkXmlSerializer : public ZkRCObject {
    ZK_DECLARE_TYPE(ZkXmlSerializer, ZkRCObject, ZkTypeID::kXmlSerializer, "ZkXmlSerializer")

public:
    enum Feature {
        /// startDocument writes no XML declaration.
        FEATURE_NO_XML_DECL = 0,
        /// The attributes and namespace declarations of a tag are written in sorted order when
        /// the tag closes.
        FEATURE_SORT_ATTRIBUTES = 1
    };

    /// A new ZkXmlSerializerImpl.
    static ZkPtr<ZkXmlSerializer> createXmlSerializer();

    /// Unknown feature numbers are ignored (and read false).
    virtual void setFeature(int feature, bool on) = 0;
    virtual bool getFeature(int feature) const = 0;
    /// Opens the file `path` (a local path or a file URI) for writing; the serializer owns it.
    /// Throws ZkError 67 with the path when it cannot be opened. Whatever was open before is
    /// flushed, closed and forgotten.
    virtual void setOutput(const UnicodeString& path, const UnicodeString& encoding,
                           const UnicodeString& standalone) = 0;
    /// Writes to `out`, which stays the caller's and must outlive the writing.
    virtual void setOutput(std::ostream& out, const UnicodeString& encoding,
                           const UnicodeString& standalone) = 0;
    /// Writes the XML declaration (unless FEATURE_NO_XML_DECL) and the generator comment.
    /// Throws ZkError 12 unless called right after setOutput. A non-empty argument replaces
    /// the one given to setOutput. Encodings other than UTF-8, the US-ASCII family and the
    /// Shift_JIS family are dropped: the output is then UTF-8 with no declared encoding.
    virtual void startDocument(const UnicodeString& encoding, const UnicodeString& standalone) = 0;
    /// Ends every open element, flushes and closes the output.
    virtual void endDocument() = 0;
    /// Declares `prefix` for `ns` on the next start tag.
    virtual void setPrefix(ZkName prefix, ZkName ns) = 0;
    /// A prefix in scope for `ns`; the empty name when the default namespace serves or `ns` is
    /// empty. With `create`, a missing prefix is made up and declared in the current scope.
    virtual ZkName getPrefix(ZkName ns, bool create) = 0;
    /// The number of open elements.
    virtual int getDepth() const = 0;
    /// The namespace URI and local name of the open element; empty at depth 0.
    virtual ZkName getNamespace() const = 0;
    virtual ZkName getDefaultNamespace() const = 0;
    virtual ZkName getName() const = 0;
    /// Writes a start tag with `prefix`; a non-empty `ns` is declared for it when needed.
    virtual void startTag(ZkName ns, ZkName prefix, ZkName name) = 0;
    /// Writes a start tag with the prefix of getPrefix(ns, true).
    virtual void startTag(ZkName ns, ZkName name) = 0;
    /// Throws ZkError 13 unless a start tag is open. An attribute in the XMLNS namespace or
    /// named "xmlns" declares a namespace instead of being written.
    virtual void attribute(ZkName ns, ZkName prefix, ZkName name, const UnicodeString& value) = 0;
    virtual void attribute(ZkName ns, ZkName name, const UnicodeString& value) = 0;
    /// Declares the pair in the current scope; no tag is closed.
    virtual void declareNamespace(ZkName prefix, ZkName ns) = 0;
    /// Throws ZkError 14 with no element open and 15 when `ns` and `name` are not those of the
    /// open element. An element without content is written as an empty element tag.
    virtual void endTag(ZkName ns, ZkName name) = 0;
    /// Character data; "&", "<" and ">" are escaped. A negative start or length writes nothing.
    virtual void text(const UChar* buffer, int start, int length) = 0;
    virtual void text(const UnicodeString& text) = 0;
    virtual void cdsect(const UnicodeString& text) = 0;
    virtual void entityRef(const UnicodeString& name) = 0;
    virtual void processingInstruction(ZkName target, const UnicodeString& data) = 0;
    virtual void comment(const UnicodeString& text) = 0;
    /// Throws ZkError 16 unless called right after startDocument (comments and instructions
    /// may stand between).
    virtual void docdecl(const UnicodeString& text) = 0;
    /// Written as it stands.
    virtual void ignorableWhitespace(const UnicodeString& text) = 0;
    /// Throws ZkError 69 without an output and 71 when the output failed.
    virtual void flush() = 0;
    /// A text written as a comment after the XML declaration.
    virtual void setGenerator(const UnicodeString& text) = 0;
};

/// The serializer of the library. It gathers bytes in a buffer and hands them to the output
/// stream in blocks, at flush and at endDocument.
class ZKCOMMON_API ZkXmlSerializerImpl : public ZkXmlSerializer {
    ZK_DECLARE_TYPE(ZkXmlSerializerImpl, ZkXmlSerializer, ZkTypeID::kXmlSerializerImpl,
                    "ZkXmlSerializerImpl")

public:
    ZkXmlSerializerImpl();
    ZkXmlSerializerImpl(const ZkXmlSerializerImpl&) = delete;
    ZkXmlSerializerImpl& operator=(const ZkXmlSerializerImpl&) = delete;

    void setFeature(int feature, bool on) override;
    bool getFeature(int feature) const override;
    void setOutput(const UnicodeString& path, const UnicodeString& encoding,
                   const UnicodeString& standalone) override;
    void setOutput(std::ostream& out, const UnicodeString& encoding,
                   const UnicodeString& standalone) override;
    void startDocument(const UnicodeString& encoding, const UnicodeString& standalone) override;
    void endDocument() override;
    void setPrefix(ZkName prefix, ZkName ns) override;
    ZkName getPrefix(ZkName ns, bool create) override;
    int getDepth() const override;
    ZkName getNamespace() const override;
    ZkName getDefaultNamespace() const override;
    ZkName getName() const override;
    void startTag(ZkName ns, ZkName prefix, ZkName name) override;
    void startTag(ZkName ns, ZkName name) override;
    void attribute(ZkName ns, ZkName prefix, ZkName name, const UnicodeString& value) override;
    void attribute(ZkName ns, ZkName name, const UnicodeString& value) override;
    void declareNamespace(ZkName prefix, ZkName ns) override;
    void endTag(ZkName ns, ZkName name) override;
    void text(const UChar* buffer, int start, int length) override;
    void text(const UnicodeString& text) override;
    void cdsect(const UnicodeString& text) override;
    void entityRef(const UnicodeString& name) override;
    void processingInstruction(ZkName target, const UnicodeString& data) override;
    void comment(const UnicodeString& text) override;
    void docdecl(const UnicodeString& text) override;
    void ignorableWhitespace(const UnicodeString& text) override;
    void flush() override;
    void setGenerator(const UnicodeString& text) override;

protected:
    /// Hands buffered bytes on and deletes an owned output; errors are not reported here.
    ~ZkXmlSerializerImpl() override;

private:
    /// Pending attributes of a sorted tag, keyed by the texts of prefix and local name.
    struct KeyLess {
        bool operator()(const std::pair<ZkName, ZkName>& a,
                        const std::pair<ZkName, ZkName>& b) const;
    };
    using AttributeMap = std::map<std::pair<ZkName, ZkName>, UnicodeString, KeyLess>;

    void closeOutput(bool report);
    void openScope();
    bool closeStartTag(bool empty);
    void startTagWith(ZkName ns, ZkName prefix, ZkName name, bool choosePrefix);
    void attributeWith(ZkName ns, ZkName prefix, ZkName name, const UnicodeString& value,
                       bool choosePrefix);
    void writeAttribute(ZkName prefix, ZkName name, const UnicodeString& value);
    void writeQName(ZkName prefix, ZkName name);
    void writeChars(const UChar* text, int32_t length, int mask);
    void writeChars(const UnicodeString& text, int mask) {
        writeChars(text.getBuffer(), text.length(), mask);
    }
    void writeAscii(const char* text);
    void writeNumericReference(UChar32 c);
    void guard();
    void flushBuffer();
    void setEncodingMode();

    detail::SerializerScopes* m_scopes; ///< owned

    std::ostream* m_out;
    bool m_ownsOut;
    int m_state;
    UnicodeString m_encoding;
    UnicodeString m_standalone;
    UnicodeString m_generator;
    bool m_noXmlDecl;
    bool m_sortAttributes;
    bool m_asciiOut; ///< non-ASCII characters become numeric references
    AttributeMap m_pending;
    std::string m_bytes;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_XML_XMLSERIALIZER_H
