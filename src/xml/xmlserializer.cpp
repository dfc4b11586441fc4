// ZkXmlSerializerImpl: order checks, namespace scopes, prefix choice, escaping and the byte
// writer of the XML output.
#include "zkcommon/xml/xmlserializer.h"

#include "xml/serializerscopes.h"
#include "zkcommon/core/error.h"
#include "zkcommon/io/uri.h"
#include "zkcommon/xml/xmlutil.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <ostream>
#include <unicode/uchar.h>

namespace ZkCommonNS {

namespace {

// Sites passed to throwCommonError.
constexpr int kSiteStartDocument = 1;
constexpr int kSiteAttribute = 2;
constexpr int kSiteEndTag = 3;
constexpr int kSiteDocdecl = 4;
constexpr int kSiteOutput = 5;

// The states of the writer, in the order a document passes them.
enum State : int {
    kNew = 0,
    kOutputSet = 1,
    kDocumentStarted = 2,
    kEnded = 3,
    kClosed = 4,
    kPrefixDeclared = 5,
    kTagOpen = 6,
    kTagWithAttributes = 7,
    kTagClosed = 8,
    kEndTagWritten = 9,
    kEmptyTagWritten = 10,
    kTextWritten = 11
};

// Escape masks: what writeChars turns into references besides the markup characters.
constexpr int kEscapeMarkup = 1;     // "&", "<", ">"
constexpr int kEscapeQuote = 2;      // U+0022 QUOTATION MARK
constexpr int kEscapeApostrophe = 4; // U+0027 APOSTROPHE
constexpr int kEscapeControls = 8;   // below U+0020, and U+007F DELETE
constexpr int kEscapeLineEnds = 16;  // tab, line feed, carriage return
constexpr int kEscapeReturn = 32;    // carriage return alone
// Text escapes U+000D CARRIAGE RETURN too: written raw, a reader would turn it into a line
// feed, and the text would not come back as it was.
constexpr int kTextMode = kEscapeMarkup | kEscapeReturn;
constexpr int kAttributeMode = kEscapeMarkup | kEscapeQuote | kEscapeLineEnds;
constexpr int kUriMode = kEscapeMarkup | kEscapeQuote;
constexpr int kRawMode = 0;

// Output is handed to the stream in blocks of about this size.
constexpr size_t kBufferCapacity = 16384;

// Encoding names that keep the output in ASCII: the US-ASCII family declares no encoding, the
// Shift_JIS family declares SHIFT_JIS and is otherwise written like ASCII, so that the file is
// valid under the declared encoding whatever its characters.
const char16_t* const kAsciiNames[] = {
    u"ANSI_X3.4", u"ANSI_X3.4-1968", u"ANSI_X3.4-1986",   u"ASCII",
    u"ISO646-US", u"ISO_646.IRV",    u"ISO_646.IRV:1991", u"US-ASCII"};
const char16_t* const kShiftJisNames[] = {u"SHIFT-JIS", u"SHIFT_JIS", u"WINDOWS31J"};

template <size_t N> bool isOneOf(const UnicodeString& name, const char16_t* const (&list)[N]) {
    for (const char16_t* entry : list) {
        if (name == UnicodeString(true, entry, -1))
            return true;
    }
    return false;
}

UnicodeString normalizedEncoding(const UnicodeString& name) {
    UnicodeString folded(name);
    folded.trim();
    folded.toUpper(icu::Locale::getRoot());
    return folded;
}

// A prefix made up for a namespace that has none in scope: "ns" and a number, an NCName.
ZkName freshPrefix(const detail::SerializerScopes& scopes) {
    for (;;) {
        // generateID makes "-ns" and a fresh number; the leading hyphen can't start a name.
        const UnicodeString id = ZkName::generateID(UnicodeString(u"ns")).toString();
        const ZkName prefix(UnicodeString(id, 1));
        if (scopes.getNamespace(prefix).isEmpty())
            return prefix;
    }
}

} // namespace

ZkPtr<ZkXmlSerializer> ZkXmlSerializer::createXmlSerializer() {
    return ZkPtr<ZkXmlSerializer>(new ZkXmlSerializerImpl());
}

bool ZkXmlSerializerImpl::KeyLess::operator()(const std::pair<ZkName, ZkName>& a,
                                              const std::pair<ZkName, ZkName>& b) const {
    if (a.first != b.first) {
        const int8_t order = a.first.toString().compare(b.first.toString());
        if (order != 0)
            return order < 0;
    }
    if (a.second == b.second)
        return false;
    return a.second.toString().compare(b.second.toString()) < 0;
}

ZkXmlSerializerImpl::ZkXmlSerializerImpl()
    : m_scopes(new detail::SerializerScopes()), m_out(nullptr), m_ownsOut(false), m_state(kNew),
      m_noXmlDecl(false), m_sortAttributes(false), m_asciiOut(false) {
    m_bytes.reserve(kBufferCapacity + 64);
}

ZkXmlSerializerImpl::~ZkXmlSerializerImpl() {
    closeOutput(/*report=*/false);
    delete m_scopes;
}

void ZkXmlSerializerImpl::setFeature(int feature, bool on) {
    if (feature == FEATURE_NO_XML_DECL)
        m_noXmlDecl = on;
    else if (feature == FEATURE_SORT_ATTRIBUTES)
        m_sortAttributes = on;
}

bool ZkXmlSerializerImpl::getFeature(int feature) const {
    if (feature == FEATURE_NO_XML_DECL)
        return m_noXmlDecl;
    if (feature == FEATURE_SORT_ATTRIBUTES)
        return m_sortAttributes;
    return false;
}

// --- output ----------------------------------------------------------------------------------

void ZkXmlSerializerImpl::closeOutput(bool report) {
    if (m_out) {
        if (!m_bytes.empty())
            m_out->write(m_bytes.data(), std::streamsize(m_bytes.size()));
        m_out->flush();
        const bool failed = m_out->fail();
        if (m_ownsOut) {
            static_cast<std::ofstream*>(m_out)->close();
            delete m_out;
        }
        m_out = nullptr;
        m_ownsOut = false;
        m_bytes.clear();
        if (failed && report)
            throwCommonError(ZK_ERROR_OUTPUT_STREAM, kSiteOutput);
    }
    m_bytes.clear();
    m_pending.clear();
    while (m_scopes->pop()) {
    }
}

void ZkXmlSerializerImpl::setOutput(const UnicodeString& path, const UnicodeString& encoding,
                                    const UnicodeString& standalone) {
    // A file URI names its local path; anything else is taken as a path.
    UnicodeString local =
        path.startsWith(UnicodeString(u"file:")) ? ZkUri::getLocalPath(path) : path;
    std::string bytes;
    local.toUTF8String(bytes);
    auto file = std::make_unique<std::ofstream>();
    if (!local.isEmpty() && bytes.find('\0') == std::string::npos)
        file->open(bytes, std::ios::binary | std::ios::trunc);
    if (!file->is_open())
        throwCommonError(ZK_ERROR_CANNOT_OPEN_FILE, kSiteOutput, path);
    closeOutput(/*report=*/false);
    m_out = file.release();
    m_ownsOut = true;
    m_encoding = encoding;
    m_standalone = standalone;
    setEncodingMode();
    m_state = kOutputSet;
}

void ZkXmlSerializerImpl::setOutput(std::ostream& out, const UnicodeString& encoding,
                                    const UnicodeString& standalone) {
    closeOutput(/*report=*/false);
    m_out = &out;
    m_ownsOut = false;
    m_encoding = encoding;
    m_standalone = standalone;
    setEncodingMode();
    m_state = kOutputSet;
}

void ZkXmlSerializerImpl::setEncodingMode() {
    const UnicodeString name = normalizedEncoding(m_encoding);
    m_asciiOut = isOneOf(name, kAsciiNames) || isOneOf(name, kShiftJisNames);
}

void ZkXmlSerializerImpl::guard() {
    if (!m_out)
        throwCommonError(ZK_ERROR_NO_OUTPUT_STREAM, kSiteOutput);
    if (m_out->fail())
        throwCommonError(ZK_ERROR_OUTPUT_STREAM, kSiteOutput);
}

void ZkXmlSerializerImpl::flushBuffer() {
    m_out->write(m_bytes.data(), std::streamsize(m_bytes.size()));
    m_bytes.clear();
    if (m_out->fail())
        throwCommonError(ZK_ERROR_OUTPUT_STREAM, kSiteOutput);
}

void ZkXmlSerializerImpl::flush() {
    guard();
    flushBuffer();
    m_out->flush();
    if (m_out->fail())
        throwCommonError(ZK_ERROR_OUTPUT_STREAM, kSiteOutput);
}

// --- the byte writer -------------------------------------------------------------------------

void ZkXmlSerializerImpl::writeAscii(const char* text) {
    guard();
    m_bytes.append(text);
    if (m_bytes.size() >= kBufferCapacity)
        flushBuffer();
}

void ZkXmlSerializerImpl::writeNumericReference(UChar32 c) {
    char reference[16];
    const int length = std::snprintf(reference, sizeof reference, "&#%u;", unsigned(c));
    m_bytes.append(reference, size_t(length));
}

void ZkXmlSerializerImpl::writeChars(const UChar* text, int32_t length, int mask) {
    guard();
    if (!text || length <= 0)
        return;
    for (int32_t i = 0; i < length; ++i) {
        const UChar c = text[i];
        if (c < 0x80) {
            if (mask != 0) {
                switch (c) {
                case u'&':
                    m_bytes.append("&amp;", 5);
                    continue;
                case u'<':
                    m_bytes.append("&lt;", 4);
                    continue;
                case u'>':
                    m_bytes.append("&gt;", 4);
                    continue;
                case u'"':
                    if (mask & kEscapeQuote) {
                        m_bytes.append("&quot;", 6);
                        continue;
                    }
                    break;
                case u'\'':
                    if (mask & kEscapeApostrophe) {
                        writeNumericReference(c);
                        continue;
                    }
                    break;
                case u'\r':
                    if (mask & kEscapeReturn) {
                        writeNumericReference(c);
                        continue;
                    }
                    [[fallthrough]];
                case u'\t':
                case u'\n':
                    if (mask & (kEscapeLineEnds | kEscapeControls)) {
                        writeNumericReference(c);
                        continue;
                    }
                    break;
                default:
                    if ((mask & kEscapeControls) && (c < 0x20 || c == 0x7F)) {
                        writeNumericReference(c);
                        continue;
                    }
                    break;
                }
            }
            // Other control characters can't stand in XML 1.0 and are dropped.
            if (c >= 0x20 || c == u'\t' || c == u'\n' || c == u'\r')
                m_bytes.push_back(char(c));
            continue;
        }
        UChar32 code = c;
        const bool pair = U16_IS_LEAD(c) && i + 1 < length && U16_IS_TRAIL(text[i + 1]);
        if (pair)
            code = U16_GET_SUPPLEMENTARY(c, text[i + 1]);
        if (m_asciiOut) {
            writeNumericReference(code);
        } else if (code < 0x800) {
            m_bytes.push_back(char(0xC0 | (code >> 6)));
            m_bytes.push_back(char(0x80 | (code & 0x3F)));
        } else if (pair) {
            m_bytes.push_back(char(0xF0 | (code >> 18)));
            m_bytes.push_back(char(0x80 | ((code >> 12) & 0x3F)));
            m_bytes.push_back(char(0x80 | ((code >> 6) & 0x3F)));
            m_bytes.push_back(char(0x80 | (code & 0x3F)));
        } else {
            // A lone surrogate goes out in its three-byte form, as any other BMP unit.
            m_bytes.push_back(char(0xE0 | (code >> 12)));
            m_bytes.push_back(char(0x80 | ((code >> 6) & 0x3F)));
            m_bytes.push_back(char(0x80 | (code & 0x3F)));
        }
        if (pair)
            ++i;
        if (m_bytes.size() >= kBufferCapacity)
            flushBuffer();
    }
    if (m_bytes.size() >= kBufferCapacity)
        flushBuffer();
}

void ZkXmlSerializerImpl::writeQName(ZkName prefix, ZkName name) {
    if (!prefix.isEmpty()) {
        writeChars(prefix.toString(), kRawMode);
        writeAscii(":");
    }
    writeChars(name.toString(), kRawMode);
}

void ZkXmlSerializerImpl::writeAttribute(ZkName prefix, ZkName name, const UnicodeString& value) {
    writeAscii(" ");
    writeQName(prefix, name);
    writeAscii("=\"");
    writeChars(value, kAttributeMode);
    writeAscii("\"");
}

// --- document --------------------------------------------------------------------------------

void ZkXmlSerializerImpl::startDocument(const UnicodeString& encoding,
                                        const UnicodeString& standalone) {
    if (m_state != kOutputSet)
        throwCommonError(ZK_ERROR_START_DOCUMENT_ORDER, kSiteStartDocument);
    if (!encoding.isEmpty())
        m_encoding = encoding;
    if (!standalone.isEmpty())
        m_standalone = standalone;
    m_encoding = normalizedEncoding(m_encoding);
    UnicodeString declared;
    if (isOneOf(m_encoding, kShiftJisNames))
        declared = u"SHIFT_JIS";
    else if (m_encoding == u"UTF-8")
        declared = m_encoding;
    else if (!isOneOf(m_encoding, kAsciiNames))
        m_encoding.remove(); // anything else is written as undeclared UTF-8
    setEncodingMode();
    if (!m_noXmlDecl) {
        writeAscii("<?xml version=\"1.0\"");
        if (!declared.isEmpty()) {
            writeAscii(" encoding=\"");
            writeChars(declared, kRawMode);
            writeAscii("\"");
        }
        if (!m_standalone.isEmpty()) {
            writeAscii(" standalone=\"");
            writeChars(m_standalone, kRawMode);
            writeAscii("\"");
        }
        writeAscii("?>");
    }
    if (!m_generator.isEmpty()) {
        writeAscii("<!-- ");
        writeChars(m_generator, kRawMode);
        writeAscii(" -->");
    }
    m_state = kDocumentStarted;
}

void ZkXmlSerializerImpl::endDocument() {
    while (m_scopes->getDepth() > 0) {
        if (m_scopes->getCurrentName().isEmpty() && m_state == kPrefixDeclared) {
            // Declarations made for a tag that never came.
            m_scopes->pop();
            m_state = kTagClosed;
            continue;
        }
        endTag(m_scopes->getCurrentNamespace(), m_scopes->getCurrentName());
    }
    flush();
    closeOutput(/*report=*/true);
    m_state = kEnded;
}

void ZkXmlSerializerImpl::setGenerator(const UnicodeString& text) {
    m_generator = text;
}

// --- namespaces ------------------------------------------------------------------------------

void ZkXmlSerializerImpl::openScope() {
    m_scopes->push();
}

void ZkXmlSerializerImpl::setPrefix(ZkName prefix, ZkName ns) {
    closeStartTag(/*empty=*/false);
    if (m_state != kPrefixDeclared)
        openScope();
    m_scopes->declare(prefix, ns);
    m_state = kPrefixDeclared;
}

void ZkXmlSerializerImpl::declareNamespace(ZkName prefix, ZkName ns) {
    m_scopes->declare(prefix, ns);
}

ZkName ZkXmlSerializerImpl::getPrefix(ZkName ns, bool create) {
    if (ns.isEmpty())
        return ZkName();
    ZkName prefix = m_scopes->getPrefix(ns);
    // A prefix found outside may be bound to something else by now in an inner scope.
    if (!prefix.isEmpty() && m_scopes->getNamespace(prefix) == ns)
        return prefix;
    if (!create || m_scopes->getDefaultNamespace() == ns)
        return ZkName();
    prefix = freshPrefix(*m_scopes);
    m_scopes->declare(prefix, ns);
    return prefix;
}

int ZkXmlSerializerImpl::getDepth() const {
    return m_scopes->getDepth();
}
ZkName ZkXmlSerializerImpl::getNamespace() const {
    return m_scopes->getCurrentNamespace();
}
ZkName ZkXmlSerializerImpl::getDefaultNamespace() const {
    return m_scopes->getDefaultNamespace();
}
ZkName ZkXmlSerializerImpl::getName() const {
    return m_scopes->getCurrentName();
}

// --- tags ------------------------------------------------------------------------------------

void ZkXmlSerializerImpl::startTag(ZkName ns, ZkName prefix, ZkName name) {
    startTagWith(ns, prefix, name, /*choosePrefix=*/false);
}

void ZkXmlSerializerImpl::startTag(ZkName ns, ZkName name) {
    startTagWith(ns, ZkName(), name, /*choosePrefix=*/true);
}

void ZkXmlSerializerImpl::startTagWith(ZkName ns, ZkName prefix, ZkName name, bool choosePrefix) {
    guard();
    closeStartTag(/*empty=*/false);
    if (m_state != kPrefixDeclared)
        openScope();
    // The prefix is chosen inside the new scope, so that a made-up one is declared on this tag.
    if (choosePrefix)
        prefix = getPrefix(ns, /*create=*/true);
    if (!ns.isEmpty()) {
        m_scopes->declare(prefix, ns);
    } else if (prefix.isEmpty() && !m_scopes->getDefaultNamespace().isEmpty()) {
        // An element in no namespace under a default namespace undeclares it.
        m_scopes->declare(ZkName(), ZkName());
    }
    m_scopes->setElement(prefix, name, ns);
    writeAscii("<");
    writeQName(prefix, name);
    m_state = kTagOpen;
}

void ZkXmlSerializerImpl::attribute(ZkName ns, ZkName prefix, ZkName name,
                                    const UnicodeString& value) {
    attributeWith(ns, prefix, name, value, /*choosePrefix=*/false);
}

void ZkXmlSerializerImpl::attribute(ZkName ns, ZkName name, const UnicodeString& value) {
    attributeWith(ns, ZkName(), name, value, /*choosePrefix=*/true);
}

void ZkXmlSerializerImpl::attributeWith(ZkName ns, ZkName prefix, ZkName name,
                                        const UnicodeString& value, bool choosePrefix) {
    if (m_state != kTagOpen && m_state != kTagWithAttributes)
        throwCommonError(ZK_ERROR_ATTRIBUTE_ORDER, kSiteAttribute);
    if (ns == ZKN_NS_XMLNS || name == ZKN_xmlns || prefix == ZKN_xmlns) {
        // A namespace declaration: written with the others when the tag closes. A prefix this
        // tag already binds (for its own name or an attribute written before) keeps that
        // binding: rebinding it would move what was written into another namespace.
        const ZkName declared = name == ZKN_xmlns ? ZkName() : name;
        if (!m_scopes->isDeclaredHere(declared))
            m_scopes->declare(declared, ZkName(value));
        return;
    }
    if (!ns.isEmpty()) {
        // A default namespace never applies to attributes: a namespaced attribute needs a
        // prefix of its own, and one this tag binds to another namespace is not it.
        if (!choosePrefix && !prefix.isEmpty() && m_scopes->isDeclaredHere(prefix) &&
            m_scopes->getNamespace(prefix) != ns)
            prefix = ZkName();
        if (choosePrefix || prefix.isEmpty()) {
            prefix = getPrefix(ns, /*create=*/false);
            if (prefix.isEmpty()) {
                prefix = freshPrefix(*m_scopes);
                m_scopes->declare(prefix, ns);
            }
        } else {
            m_scopes->declare(prefix, ns);
        }
    }
    if (m_sortAttributes)
        m_pending[std::make_pair(prefix, name)] = value;
    else
        writeAttribute(prefix, name, value);
    m_state = kTagWithAttributes;
}

bool ZkXmlSerializerImpl::closeStartTag(bool empty) {
    if (m_state != kTagOpen && m_state != kTagWithAttributes)
        return false;
    if (m_scopes->hasCurrentDeclarations()) {
        for (const auto& declaration : m_scopes->currentDeclarations()) {
            const ZkName prefix = declaration.first;
            const ZkName uri = declaration.second;
            if (m_sortAttributes) {
                if (prefix.isEmpty())
                    m_pending[std::make_pair(ZkName(), ZkName(ZKN_xmlns))] = uri.toString();
                else
                    m_pending[std::make_pair(ZkName(ZKN_xmlns), prefix)] = uri.toString();
                continue;
            }
            // An empty URI can only undeclare the default namespace: "xmlns:p" can't be
            // emptied in XML 1.0, so such a binding is not written.
            if (uri.isEmpty() && !prefix.isEmpty())
                continue;
            writeAscii(" xmlns");
            if (!prefix.isEmpty()) {
                writeAscii(":");
                writeChars(prefix.toString(), kRawMode);
            }
            writeAscii("=\"");
            writeChars(uri.toString(), kUriMode);
            writeAscii("\"");
        }
    }
    if (m_sortAttributes) {
        for (const auto& entry : m_pending)
            writeAttribute(entry.first.first, entry.first.second, entry.second);
        m_pending.clear();
    }
    writeAscii(empty ? "/>" : ">");
    m_state = empty ? kEmptyTagWritten : kTagClosed;
    return true;
}

void ZkXmlSerializerImpl::endTag(ZkName ns, ZkName name) {
    if (m_scopes->getDepth() < 1)
        throwCommonError(ZK_ERROR_UNEXPECTED_END_TAG, kSiteEndTag);
    const ZkName openNs = m_scopes->getCurrentNamespace();
    const ZkName openName = m_scopes->getCurrentName();
    const ZkName openPrefix = m_scopes->getCurrentPrefix();
    if (ns != openNs || name != openName) {
        const UnicodeString open =
            ZkXmlUtil::makeQNameStr(openPrefix.toString(), openName.toString());
        const UnicodeString given =
            ns == openNs ? ZkXmlUtil::makeQNameStr(openPrefix.toString(), name.toString())
                         : ZkXmlUtil::makeNSQNameStr(ns.toString(), name.toString());
        throwCommonError(ZK_ERROR_END_TAG_MISMATCH, kSiteEndTag, given, open);
    }
    if (!closeStartTag(/*empty=*/true)) {
        writeAscii("</");
        writeQName(openPrefix, openName);
        writeAscii(">");
        m_state = kEndTagWritten;
    }
    m_scopes->pop();
}

// --- content ---------------------------------------------------------------------------------

void ZkXmlSerializerImpl::text(const UChar* buffer, int start, int length) {
    closeStartTag(/*empty=*/false);
    if (buffer && start >= 0 && length > 0)
        writeChars(buffer + start, length, kTextMode);
    else
        guard();
    m_state = kTextWritten;
}

void ZkXmlSerializerImpl::text(const UnicodeString& text) {
    closeStartTag(/*empty=*/false);
    writeChars(text, kTextMode);
    m_state = kTextWritten;
}

void ZkXmlSerializerImpl::cdsect(const UnicodeString& text) {
    closeStartTag(/*empty=*/false);
    writeAscii("<![CDATA[");
    writeChars(text, kRawMode);
    writeAscii("]]>");
}

void ZkXmlSerializerImpl::entityRef(const UnicodeString& name) {
    closeStartTag(/*empty=*/false);
    writeAscii("&");
    writeChars(name, kRawMode);
    writeAscii(";");
}

void ZkXmlSerializerImpl::processingInstruction(ZkName target, const UnicodeString& data) {
    closeStartTag(/*empty=*/false);
    writeAscii("<?");
    writeChars(target.toString(), kRawMode);
    UnicodeString trimmed(data);
    trimmed.trim();
    if (!trimmed.isEmpty()) {
        writeAscii(" ");
        writeChars(trimmed, kRawMode);
    }
    writeAscii("?>");
}

void ZkXmlSerializerImpl::comment(const UnicodeString& text) {
    closeStartTag(/*empty=*/false);
    writeAscii("<!--");
    writeChars(text, kRawMode);
    writeAscii("-->");
}

void ZkXmlSerializerImpl::docdecl(const UnicodeString& text) {
    if (m_state != kDocumentStarted)
        throwCommonError(ZK_ERROR_UNEXPECTED_DOCDECL, kSiteDocdecl);
    writeAscii("<!DOCTYPE");
    if (text.isEmpty() || !u_isspace(text.char32At(0)))
        writeAscii(" ");
    writeChars(text, kRawMode);
    writeAscii(">");
}

void ZkXmlSerializerImpl::ignorableWhitespace(const UnicodeString& text) {
    closeStartTag(/*empty=*/false);
    writeChars(text, kRawMode);
}

} // namespace ZkCommonNS
