// ZkXmlUtil: static helpers for qualified names.
#ifndef ZKCOMMON_XML_XMLUTIL_H
#define ZKCOMMON_XML_XMLUTIL_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/object.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/io/uri.h"

#include <iosfwd>

namespace ZkCommonNS {

class ZkXmlParser;
class ZkXmlSerializer;

/// Static helpers of the XML subsystem. None of them throws.
class ZKCOMMON_API ZkXmlUtil {
public:
    ZkXmlUtil() = delete;

    /// The interned qualified name: `local` itself when `prefix` is empty, else "prefix:local".
    /// An empty `local` with a prefix gives "prefix:".
    static ZkName makeQName(ZkName prefix, ZkName local);
    /// `local` when `prefix` is empty, otherwise prefix, ":", local.
    static UnicodeString makeQNameStr(const UnicodeString& prefix, const UnicodeString& local);
    /// A text for messages by namespace: `local` for an empty namespace, "xml:" or "xmlns:" for
    /// the two reserved ones ("xmlns" alone stays so), otherwise "{ns}:local".
    static UnicodeString makeNSQNameStr(const UnicodeString& ns, const UnicodeString& local);
    /// The text before the first ":" when that colon stands at position 1 or later; else empty.
    static ZkName getPrefixFromQName(ZkName qname);
    /// The text after the first ":" at position 1 or later; else the whole name.
    static ZkName getLocalPartFromQName(ZkName qname);
    /// The position of the colon that splits `qname`, or -1 (none, or a leading colon).
    static int32_t findQNameColon(const UnicodeString& qname);

    // Parser factory.
    /// A new ZkXmlParserImpl, the library's own parser; `info`, when given, is copied.
    static ZkPtr<ZkXmlParser> createXmlParser(const ZkUri::ContentInfo* info = nullptr);

    // Serializer factory and XMP property names.
    /// A new ZkXmlSerializerImpl.
    static ZkPtr<ZkXmlSerializer> createXmlSerializer();
    /// `key` made valid as an XMP property name: every UTF-16 unit of a character that can't
    /// stand at its place in a name (":" and U+2182 never can) becomes U+2182 ROMAN NUMERAL TEN
    /// THOUSAND followed by the unit in four upper-case hexadecimal digits.
    static UnicodeString escapeXmpUserDefinedKey(const UnicodeString& key);

    // Sniffing the root element without reading the document.
    /// A lenient parser (no external DTD or entities, undefined entities and undeclared
    /// prefixes let pass, unknown encodings ignored) standing at the first start tag of `in`,
    /// or null when the input has no element. `info` and `extension` are the type hints of
    /// the stream. Fatal errors of the parser are thrown as ZkError.
    static ZkPtr<ZkXmlParser> getRootParser(std::istream& in,
                                            const ZkUri::ContentInfo* info = nullptr,
                                            const UnicodeString& extension = UnicodeString());
    /// The same for the resource `uri`; null for an empty URI. A resource that can't be
    /// opened throws ZkError 67.
    static ZkPtr<ZkXmlParser> getRootParser(const UnicodeString& uri,
                                            const UnicodeString& extension = UnicodeString());
    /// The root element's local name, with its namespace in `ns`; both empty without a root.
    static ZkName getRootName(ZkName& ns, std::istream& in,
                              const ZkUri::ContentInfo* info = nullptr,
                              const UnicodeString& extension = UnicodeString());
    static ZkName getRootName(ZkName& ns, const UnicodeString& uri,
                              const UnicodeString& extension = UnicodeString());
    /// As getRootName, except that an XSL-FO "root" carrying an XSLT "version" attribute (a
    /// literal result element used as a stylesheet) reports the XSLT namespace in `ns`.
    static ZkName getXSLStylesheetNamespace(ZkName& ns, std::istream& in);
    static ZkName getXSLStylesheetNamespace(ZkName& ns, const UnicodeString& uri);
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_XML_XMLUTIL_H
