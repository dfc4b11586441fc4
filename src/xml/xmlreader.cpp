// The input layer of the XML reader: opening, input frames, sniffing, decoders and encoding
// change, and reading one character with pushback, line ends, checks and counting.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"
#include "zkcommon/io/icuistream.h"
#include "zkcommon/io/rqcstream.h"
#include "zkcommon/text/util.h"

#include <cstring>
#include <unicode/utf16.h>

namespace ZkCommonNS {
namespace detail {

namespace {
constexpr int kSiteSetInput = 60;
constexpr int kSitePushStream = 61;
constexpr int32_t kCharBlock = 32768; // decoded units per block
constexpr int32_t kByteBlock = 32768;
constexpr unsigned short kErrorInvalidCharacter = 180;
constexpr unsigned short kErrorUnknownEncoding = 181;
constexpr unsigned short kErrorInvalidUnicode = 179;

std::string toUtf8(const UnicodeString& text) {
    std::string out;
    return text.toUTF8String(out);
}

UnicodeString hexCode(UChar32 c) {
    char text[16];
    snprintf(text, sizeof text, "U+%04X", unsigned(c));
    return UnicodeString(text, -1, US_INV);
}

void closeInput(InputState& in) {
    in.conversion.reset();
    in.prefixed.reset();
    if (in.ownsUnderlying)
        delete in.underlying;
    in.stream = nullptr;
    in.underlying = nullptr;
    in.ownsUnderlying = false;
}
} // namespace

void XmlScanner::keepAttributeValues() {
    for (int i = 0; i < m_attributeCount; ++i) {
        Attribute& attribute = m_attributes[size_t(i)];
        if (attribute.viewStart >= 0) {
            attribute.value.setTo(m_in.chars.get() + attribute.viewStart, attribute.viewLength);
            attribute.viewStart = -1;
        }
    }
    m_valuesInBuffer = false;
}

void XmlScanner::closeStream() {
    if (m_valuesInBuffer)
        keepAttributeValues();
    while (!m_frames.empty()) {
        closeInput(m_in);
        m_in = std::move(m_frames.back());
        m_frames.pop_back();
    }
    closeInput(m_in);
}

void XmlScanner::reset() {
    // The read-ahead buffers are kept for the next input; everything else starts over.
    std::unique_ptr<char16_t[]> chars = std::move(m_in.chars);
    int32_t charCapacity = m_in.charCapacity;
    std::unique_ptr<uint8_t[]> bytes = std::move(m_in.bytes);
    int32_t byteCapacity = m_in.byteCapacity;
    m_frames.clear();
    m_in.conversion.reset(); // before the stream it reads
    m_in.prefixed.reset();
    m_in = InputState();
    m_in.chars = std::move(chars);
    m_in.charCapacity = charCapacity;
    m_in.bytes = std::move(bytes);
    m_in.byteCapacity = byteCapacity;
    m_in.parserType = m_parserType;
    m_in.effectiveType = m_parserType == ZKN_xhtml ? ZkName(ZKN_xhtml) : ZkName(ZKN_xml);
    m_in.decoder = getDecoder(ZKN_EMPTY);
    setXml11(false);
    m_event = ZkXmlParser::START_DOCUMENT;
    m_peek = PEEK_NONE;
    m_held = PEEK_NONE;
    m_hasXmlDecl = m_doctypeSeen = m_rootSeen = m_emptyTag = false;
    m_settledType = ZKN_EMPTY;
    hintsChanged();
    m_metaCharsetSeen = false;
    m_metaContentType.remove();
    m_openCounts.clear();
    m_openCountsDynamic.clear();
    m_firstElement = m_rootNamespace = m_entityName = m_target = ZkName();
    m_elementPrefix = m_elementName = m_elementNs = ZkName();
    m_eventLine = m_eventColumn = -1;
    m_attributeCount = 0;
    m_valuesInBuffer = false;
    m_open.clear();
    m_bindings.clear();
    m_prefixTop.clear();
    ++m_bindingsGeneration;
    m_text.remove();
    m_mark = 0;
    m_cachedText.remove();
    m_cachedValid = false;
    m_ownText.remove();
    m_useOwnText = false;
    m_pubid.remove();
    m_systemId.remove();
    if (m_entities.size() != 5) {
        m_entities.clear();
        m_entities[ZkName(u"lt")] = UnicodeString(u"&#60;");
        m_entities[ZkName(u"gt")] = UnicodeString(u">");
        m_entities[ZkName(u"amp")] = UnicodeString(u"&#38;");
        m_entities[ZkName(u"apos")] = UnicodeString(u"'");
        m_entities[ZkName(u"quot")] = UnicodeString(u"\"");
    }
    m_reportedEntities.clear();
    m_expanding.clear();
    m_paramEntities.clear();
    m_externalEntities.clear();
    m_externalParamEntities.clear();
    m_reportedParams.clear();
    m_setLoaded[0] = m_setLoaded[1] = m_setLoaded[2] = false;
    m_sharedEntities = nullptr;
    m_doctypeName = ZkName();
    m_includeDepth = 0;
    m_subsetExpanded = 0;
    m_mathScopeDepth = -1;
    if (m_mathSnapshot)
        m_owner.recoverEntityMaps(m_mathSnapshot); // frees it
}

void XmlScanner::setXml11(bool xml11) {
    m_xml11 = xml11;
    // Under XML 1.1 the C1 controls, U+0085 and U+2028 need a look; under 1.0 only what lies
    // beyond the basic plane's surrogates does.
    m_fastLimit = m_features[ZkXmlParser::FEATURE_NO_CHAR_CHECK] && !xml11 ? 0xD800
                  : xml11                                                  ? 0x7F
                                                                           : 0xD800;
}

void XmlScanner::openUri(ZkUri& uri, const UnicodeString& encoding, const UnicodeString& baseUri) {
    closeStream();
    reset();
    ZkUri::ContentInfo info;
    info.flags |= ZkUri::ContentInfo::FLAG_PARSER_INPUT;
    std::istream* stream = uri.getIStream(&info);
    if (!stream)
        throwCommonError(ZK_ERROR_CANNOT_OPEN_FILE, kSiteSetInput, uri.toString());
    m_in.inputUri = uri.getLocalPath();
    m_in.baseUri = baseUri.isEmpty() ? uri.getBaseString() : baseUri;
    m_lastUri = uri.toString();
    m_lastStream = nullptr;
    m_requestedEncoding = encoding;
    m_in.stream = m_in.underlying = stream;
    m_in.ownsUnderlying = true;
    probe();
    if (m_contentType.isEmpty())
        m_contentType = ZkChar::toAsciiLower(info.contentType);
    m_extension = ZkChar::toAsciiLower(uri.getExtension());
    m_extensionFromUri = true;
    m_language = info.language;
    hintsChanged();
    changeEncoding(encoding);
}

void XmlScanner::openStream(std::istream& in, const UnicodeString& encoding,
                            const UnicodeString& baseUri) {
    closeStream();
    reset();
    m_in.baseUri = baseUri;
    m_in.stream = m_in.underlying = &in;
    if (m_extensionFromUri) {
        m_extension.remove(); // the last input's, not this stream's
        m_extensionFromUri = false;
        hintsChanged();
    }
    m_lastUri.remove();
    m_lastStream = &in;
    m_requestedEncoding = encoding;
    probe();
    changeEncoding(encoding);
}

void XmlScanner::probe() {
    std::istream* stream = m_in.stream;
    if (!stream)
        throwCommonError(ZK_ERROR_WRONG_STATE, kSiteSetInput, m_in.inputUri);
    std::istream::int_type c = std::istream::traits_type::eof();
    try {
        c = stream->peek();
    } catch (const std::exception&) {
        throwCommonError(ZK_ERROR_INPUT_STREAM, kSiteSetInput, m_in.inputUri);
    }
    if (c == std::istream::traits_type::eof()) {
        if (stream->bad())
            throwCommonError(ZK_ERROR_INPUT_STREAM, kSiteSetInput, m_in.inputUri);
        throwCommonError(ZK_ERROR_UNEXPECTED_EOF, kSiteSetInput, m_in.inputUri);
    }
}

void XmlScanner::rewind() {
    // Keep the outermost input: frames above it go.
    if (!m_frames.empty()) {
        InputState outer = std::move(m_frames.front());
        m_frames.erase(m_frames.begin());
        closeStream();
        m_in = std::move(outer);
    }
    std::istream* underlying = m_in.underlying;
    bool owns = m_in.ownsUnderlying;
    UnicodeString baseUri = m_in.baseUri;
    if (!underlying) {
        // Closed at the end of the document: a borrowed stream is seated again, an opened
        // resource is opened again.
        if (m_lastStream) {
            underlying = m_lastStream;
            owns = false;
        } else if (!m_lastUri.isEmpty()) {
            ZkUri uri(m_lastUri, ZkUri::URISTR_URI_ASIS);
            UnicodeString base = m_in.baseUri;
            openUri(uri, m_requestedEncoding, base);
            return;
        } else {
            throwCommonError(ZK_ERROR_WRONG_STATE, kSiteSetInput, m_in.inputUri);
        }
    }
    UnicodeString inputUri = m_in.inputUri;
    m_in.conversion.reset();
    m_in.prefixed.reset();
    m_in.ownsUnderlying = false; // reset must not delete it
    reset();
    underlying->clear();
    underlying->seekg(0);
    m_in.stream = m_in.underlying = underlying;
    m_in.ownsUnderlying = owns;
    m_in.inputUri = inputUri;
    m_in.baseUri = baseUri;
    probe();
    changeEncoding(m_requestedEncoding);
}

void XmlScanner::pushStream(const UnicodeString& uri, ZkName parserType,
                            const UnicodeString& encoding) {
    ZkUri resolved(ZkUri(m_in.baseUri), uri);
    ZkUri::ContentInfo info;
    info.flags |= ZkUri::ContentInfo::FLAG_PARSER_INPUT;
    std::istream* stream = resolved.getIStream(&info);
    if (!stream) {
        if (resolved.isFile())
            throwCommonError(ZK_ERROR_CANNOT_OPEN_FILE, kSitePushStream, resolved.toString());
        return; // a remote resource that is not there is skipped
    }
    int depth = int(m_open.size());
    InputState frame;
    frame.stream = frame.underlying = stream;
    frame.ownsUnderlying = true;
    frame.inputUri = resolved.toString();
    frame.baseUri = resolved.isAbsolute() ? resolved.getBaseString() : m_in.baseUri;
    frame.parserType = m_in.parserType;
    frame.effectiveType = m_in.effectiveType;
    frame.baseDepth = m_in.baseDepth;
    frame.rootSeenHere = m_in.rootSeenHere;
    frame.decoder = getDecoder(ZKN_EMPTY);
    frame.line = 1;
    frame.column = 0;
    m_frames.push_back(std::move(m_in));
    m_in = std::move(frame);
    m_peek = PEEK_NONE;
    if (parserType == ZKN_text) {
        changeEncoding(encoding);
        m_in.parserType = ZKN_text;
        m_in.effectiveType = ZKN_html;
        sniff(/*force=*/true);
        m_in.careful = false;
        return;
    }
    if (parserType == ZKN_xml) {
        m_in.rootSeenHere = false;
        m_in.baseDepth = depth - 1;
    }
    changeEncoding(encoding);
    sniff(/*force=*/false);
    readTextDeclaration();
    m_in.careful = false;
}

bool XmlScanner::popFrame() {
    if (m_frames.empty())
        return false;
    if (m_valuesInBuffer)
        keepAttributeValues();
    closeInput(m_in);
    m_in = std::move(m_frames.back());
    m_frames.pop_back();
    m_peek = PEEK_NONE;
    return true;
}

int32_t XmlScanner::readBytes(uint8_t* target, int32_t capacity) {
    std::istream* stream = m_in.stream;
    if (!stream)
        return 0;
    std::streamsize got = 0;
    try {
        got = stream->rdbuf()->sgetn(reinterpret_cast<char*>(target), capacity);
    } catch (const std::exception&) {
        got = 0;
    }
    return got > 0 ? int32_t(got) : 0;
}

void XmlScanner::sniff(bool force) {
    InputState& in = m_in;
    if (!in.bytes) {
        in.bytes.reset(new uint8_t[kByteBlock]);
        in.byteCapacity = kByteBlock;
    }
    // Read up to four bytes one at a time, so nothing past them leaves the stream yet.
    while (in.byteEnd - in.bytePos < 4 && !in.atEnd) {
        if (in.bytePos > 0 && in.byteEnd == in.bytePos)
            in.bytePos = in.byteEnd = 0;
        std::istream::int_type c = std::istream::traits_type::eof();
        if (in.stream) {
            try {
                c = in.stream->rdbuf()->sbumpc();
            } catch (const std::exception&) {
            }
        }
        if (c == std::istream::traits_type::eof()) {
            in.atEnd = true;
            break;
        }
        in.bytes[in.byteEnd++] = uint8_t(c);
    }
    int32_t n = in.byteEnd - in.bytePos;
    const uint8_t* b = in.bytes.get() + in.bytePos;
    auto at = [&](int i) { return i < n ? int(b[i]) : -1; };
    ZkNameEnum id = ZKN_EMPTY;
    bool signature = false;
    int consume = 0;
    if (at(0) == 0 && at(1) == 0) {
        id = ZKN_UTF_32BE;
        signature = at(2) == 0xFE && at(3) == 0xFF;
        // The signature is used up as in every other form; left in, its U+FEFF would stand as
        // text before the root and fail the document.
        consume = signature ? 4 : 0;
    } else if (at(0) == 0 && at(1) > 0) {
        id = ZKN_UTF_16BE;
    } else if (at(0) == 0xEF && at(1) == 0xBB && at(2) == 0xBF) {
        id = ZKN_UTF_8;
        signature = true;
        consume = 3;
    } else if (at(0) == 0xFE && at(1) == 0xFF) {
        id = ZKN_UTF_16BE;
        signature = true;
        consume = 2;
    } else if (at(0) == 0xFF && at(1) == 0xFE) {
        signature = true;
        if (at(2) == 0 && at(3) == 0) {
            id = ZKN_UTF_32LE;
            consume = 4;
        } else {
            id = ZKN_UTF_16LE;
            consume = 2;
        }
    } else if (at(0) == 0xEF || at(0) == 0xFE || at(0) == 0xFF) {
        report(kErrorInvalidCharacter, UnicodeString(), UnicodeString());
        return;
    } else if (at(0) != '<' && !force) {
        return;
    } else if (in.encodingId != ZKN_EMPTY && in.encodingId != ZKN_UTF_16 &&
               in.encodingId != ZKN_UTF_32) {
        return;
    } else if (at(1) != 0) {
        if (force)
            return;
        id = ZKN_UTF_8;
    } else if (at(2) == 0 && at(3) > 0) {
        id = ZKN_UTF_16LE;
    } else if (at(2) == 0 && at(3) == 0) {
        id = ZKN_UTF_32LE;
    } else {
        id = ZKN_UTF_16LE;
    }
    if (n <= 0)
        return;
    in.bytePos += consume;
    in.bomSeen = signature;
    UnicodeString name = ZkName(id).toString();
    if (signature && (id == ZKN_UTF_16BE || id == ZKN_UTF_16LE))
        name = ZkName(ZKN_UTF_16).toString();
    else if (signature && (id == ZKN_UTF_32BE || id == ZKN_UTF_32LE))
        name = ZkName(ZKN_UTF_32).toString();
    setDecoder(id, name);
}

void XmlScanner::setDecoder(ZkNameEnum id, const UnicodeString& name) {
    m_in.encodingId = id;
    m_in.encodingName = name;
    m_in.decoder = getDecoder(id);
}

void XmlScanner::changeEncoding(const UnicodeString& requested) {
    UnicodeString name = ZkUtil::getCanonicalEncoding(requested);
    name.trim();
    if (name.isEmpty())
        return;
    if (m_in.stream != m_in.underlying)
        return; // a conversion stream is in place already
    UnicodeString upper = name;
    ZkChar::toAsciiUpper(upper);
    ZkNameEnum id = ZkNameTable::getBuiltinNameEnum(upper);
    ZkNameEnum current = m_in.encodingId;
    switch (id) {
    case ZKN_ANSI_X3_4:
    case ZKN_ANSI_X3_4_1968:
    case ZKN_ANSI_X3_4_1986:
    case ZKN_ASCII:
    case ZKN_ISO646_US:
    case ZKN_ISO_646_IRV:
    case ZKN_ISO_646_IRV_1991:
    case ZKN_US_ASCII:
        setDecoder(ZKN_US_ASCII, ZkName(ZKN_US_ASCII));
        return;
    case ZKN_ISO_10646_UCS_2:
    case ZKN_UCS_2:
    case ZKN_UNICODE:
    case ZKN_UTF_16:
        if (current != ZKN_UTF_16BE && current != ZKN_UTF_16LE)
            setDecoder(ZKN_UTF_16, ZkName(ZKN_UTF_16));
        return;
    case ZKN_ISO_10646_UCS_4:
    case ZKN_UCS_4:
    case ZKN_UTF_32:
        if (current != ZKN_UTF_32BE && current != ZKN_UTF_32LE)
            setDecoder(ZKN_UTF_32, ZkName(ZKN_UTF_32));
        return;
    case ZKN_ISO_8859_1:
    case ZKN_ISO_8859_1_81:
    case ZKN_ISO_8859_1_1987:
    case ZKN_LATIN1:
        setDecoder(ZKN_ISO_8859_1, ZkName(ZKN_ISO_8859_1));
        return;
    case ZKN_UTF_16BE:
    case ZKN_UTF_16LE:
    case ZKN_UTF_32BE:
    case ZKN_UTF_32LE:
    case ZKN_UTF_8:
    case ZKN_ISO_8859_2:
    case ZKN_ISO_8859_3:
    case ZKN_ISO_8859_4:
    case ZKN_ISO_8859_5:
    case ZKN_ISO_8859_6:
    case ZKN_ISO_8859_7:
    case ZKN_ISO_8859_8:
    case ZKN_ISO_8859_9:
    case ZKN_ISO_8859_10:
    case ZKN_ISO_8859_11:
    case ZKN_ISO_8859_13:
    case ZKN_ISO_8859_14:
    case ZKN_ISO_8859_15:
    case ZKN_ISO_8859_16:
        setDecoder(id, ZkName(id));
        return;
    default:
        break;
    }
    if (m_features[ZkXmlParser::FEATURE_STRICT_ENCODING]) {
        report(kErrorUnknownEncoding, requested, UnicodeString());
        return;
    }
    // A conversion stream reads the underlying stream from where the reader stopped; bytes
    // the reader holds already are handed over in front of it.
    std::string encoding = toUtf8(name);
    std::unique_ptr<std::istream> conversion;
    std::unique_ptr<std::istream> prefixed;
    std::istream* source = m_in.underlying;
    if (source && m_in.bytePos < m_in.byteEnd) {
        // Bytes read ahead and not yet decoded go in front of the rest of the stream.
        prefixed = makePrefixedStream(
            std::string(reinterpret_cast<const char*>(m_in.bytes.get() + m_in.bytePos),
                        size_t(m_in.byteEnd - m_in.bytePos)),
            source->rdbuf());
        source = prefixed.get();
    }
    if (source) {
        auto rqc = std::make_unique<ZkRQCIStream>(source, encoding.c_str(), false);
        if (rqc->is_open()) {
            conversion = std::move(rqc);
        } else {
            std::string standard = toUtf8(ZkUtil::getStandardEncoding(name));
            auto icu = std::make_unique<ZkICUIStream>(source, standard.c_str(), false);
            if (icu->is_open())
                conversion = std::move(icu);
        }
    }
    if (conversion) {
        if (prefixed) {
            m_in.conversion.reset();
            m_in.prefixed = std::move(prefixed);
            m_in.bytePos = m_in.byteEnd = 0;
        }
        m_in.conversion = std::move(conversion);
        m_in.stream = m_in.conversion.get();
        m_in.atEnd = false;
        m_in.decoder = getDecoder(U_IS_BIG_ENDIAN ? ZKN_UTF_16BE : ZKN_UTF_16LE);
        m_in.encodingId = U_IS_BIG_ENDIAN ? ZKN_UTF_16BE : ZKN_UTF_16LE;
        m_in.encodingName = name;
        return;
    }
    if (m_features[ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING]) {
        m_in.stream = m_in.underlying;
        return;
    }
    report(kErrorUnknownEncoding, requested, UnicodeString());
}

bool XmlScanner::fill() {
    InputState& in = m_in;
    if (m_valuesInBuffer)
        keepAttributeValues();
    if (in.pos >= in.end) {
        in.pos = in.end = in.rawLimit = 0;
    } else if (in.charCapacity - in.end < 16) {
        int32_t unread = in.end - in.pos;
        if (in.pos > 0) {
            memmove(in.chars.get(), in.chars.get() + in.pos, size_t(unread) * 2);
            in.rawLimit = in.rawLimit > in.pos ? in.rawLimit - in.pos : 0;
            in.end = unread;
            in.pos = 0;
        }
    }
    if (in.charCapacity - in.end < 16) {
        int32_t capacity = in.charCapacity < kCharBlock ? kCharBlock : in.charCapacity * 2;
        std::unique_ptr<char16_t[]> grown(new char16_t[size_t(capacity)]);
        if (in.end > 0)
            memcpy(grown.get(), in.chars.get(), size_t(in.end) * 2);
        in.chars = std::move(grown);
        in.charCapacity = capacity;
    }
    if (!in.bytes) {
        in.bytes.reset(new uint8_t[kByteBlock]);
        in.byteCapacity = kByteBlock;
    }
    for (;;) {
        int32_t available = in.byteEnd - in.bytePos;
        if (available > 0 || in.atEnd) {
            int32_t consumed = 0;
            int32_t room = in.charCapacity - in.end;
            if (!in.careful && room > kCharBlock)
                room = kCharBlock;
            int32_t produced =
                in.decoder(in.bytes.get() + in.bytePos, available, in.atEnd,
                           in.chars.get() + in.end, room, in.careful ? 1 : INT32_MAX, consumed);
            if (produced > 0 && m_frames.empty() && m_settledType != ZKN_xhtml) {
                // The bytes of the last block, so that a meta met in it can decode what
                // follows it again, exactly.
                in.blockBytes.assign(reinterpret_cast<const char*>(in.bytes.get() + in.bytePos),
                                     size_t(consumed));
                in.blockUnits = produced;
            }
            in.bytePos += consumed;
            in.end += produced;
            if (produced > 0)
                return true;
            if (in.atEnd)
                return false;
        }
        // Keep the tail of an incomplete sequence at the front and read on.
        if (in.bytePos > 0) {
            available = in.byteEnd - in.bytePos;
            memmove(in.bytes.get(), in.bytes.get() + in.bytePos, size_t(available));
            in.byteEnd = available;
            in.bytePos = 0;
        }
        int32_t got = 0;
        if (in.careful) {
            // One byte at a time while a declaration may still change the decoder.
            std::istream::int_type c = std::istream::traits_type::eof();
            if (in.stream) {
                try {
                    c = in.stream->rdbuf()->sbumpc();
                } catch (const std::exception&) {
                }
            }
            if (c != std::istream::traits_type::eof()) {
                in.bytes[in.byteEnd] = uint8_t(c);
                got = 1;
            }
        } else {
            got = readBytes(in.bytes.get() + in.byteEnd, in.byteCapacity - in.byteEnd);
        }
        if (got == 0)
            in.atEnd = true;
        in.byteEnd += got;
    }
}

bool XmlScanner::ensure(int32_t count) {
    while (m_in.end - m_in.pos < count) {
        int32_t before = m_in.end - m_in.pos;
        if (!fill())
            return false;
        if (m_in.end - m_in.pos == before)
            return false;
    }
    return true;
}

UChar32 XmlScanner::validate(UChar32 c) {
    if (m_features[ZkXmlParser::FEATURE_NO_CHAR_CHECK])
        return c;
    if (c == 0x0C && m_setLoaded[kEntitySetHtml])
        return c; // HTML's form feed
    bool valid = m_xml11 ? ZkChar::isValidChar11(c) : ZkChar::isValidChar(c);
    if (!valid)
        report(kErrorInvalidUnicode, hexCode(c), UnicodeString());
    return c;
}

UChar32 XmlScanner::readCharSlow() {
    if (m_recording)
        return readRecorded();
    for (;;) {
        InputState& in = m_in;
        if (in.pos >= in.end) {
            if (fill())
                continue;
            if (!in.stringFrame && in.parserType != ZKN_text && !m_frames.empty()) {
                popFrame();
                continue;
            }
            return kEof;
        }
        UChar32 c = in.chars[in.pos++];
        if (in.pos <= in.rawLimit) {
            // Pushed back: read again as it stands.
            if (c == kExpansionEnd) {
                if (!m_expanding.empty())
                    m_expanding.pop_back();
                continue;
            }
            if (U16_IS_LEAD(c) && in.pos < in.rawLimit && U16_IS_TRAIL(in.chars[in.pos]))
                c = U16_GET_SUPPLEMENTARY(c, in.chars[in.pos++]);
            return c;
        }
        if (U16_IS_LEAD(c)) {
            if ((in.pos < in.end || fill()) && U16_IS_TRAIL(in.chars[in.pos]))
                c = U16_GET_SUPPLEMENTARY(c, in.chars[in.pos++]);
            c = validate(c);
        } else if (c == 0x0D) {
            // U+000D CARRIAGE RETURN with U+000A LINE FEED or U+0085 NEXT LINE after it is one
            // line end; alone it is one too.
            if ((in.pos < in.end || fill()) &&
                (in.chars[in.pos] == 0x0A || in.chars[in.pos] == 0x85))
                ++in.pos;
            c = 0x0A;
        } else if (c == 0x85 || c == 0x2028) {
            // U+0085 NEXT LINE and U+2028 LINE SEPARATOR end lines in XML 1.1 only; they are
            // never checked.
            if (m_xml11)
                c = 0x0A;
        } else if (c != 0x0A) {
            c = validate(c);
        }
        if (c == 0x0A) {
            ++in.line;
            in.column = 0;
        } else {
            ++in.column;
        }
        return c;
    }
}

void XmlScanner::pushBack(UChar32 c) {
    if (c == kEof)
        return; // the end is read again by itself
    if (m_recording)
        unrecord(c);
    char16_t units[2];
    int32_t length = 0;
    U16_APPEND_UNSAFE(units, length, c);
    pushBackText(units, length);
}

void XmlScanner::pushBackText(const UnicodeString& text) {
    pushBackText(text.getBuffer(), text.length());
}

void XmlScanner::pushBackText(const char16_t* text, int32_t length) {
    if (length <= 0)
        return;
    InputState& in = m_in;
    bool rawAhead = in.rawLimit > in.pos;
    if (in.pos < length) {
        if (m_valuesInBuffer)
            keepAttributeValues();
        int32_t unread = in.end - in.pos;
        int32_t needed = unread + length + 16;
        if (needed > in.charCapacity) {
            int32_t capacity = needed < kCharBlock ? kCharBlock : needed * 2;
            std::unique_ptr<char16_t[]> grown(new char16_t[size_t(capacity)]);
            if (unread > 0)
                memcpy(grown.get() + length, in.chars.get() + in.pos, size_t(unread) * 2);
            in.chars = std::move(grown);
            in.charCapacity = capacity;
        } else if (unread > 0) {
            memmove(in.chars.get() + length, in.chars.get() + in.pos, size_t(unread) * 2);
        }
        if (rawAhead)
            in.rawLimit = in.rawLimit - in.pos + length;
        in.end = unread + length;
        in.pos = length;
    }
    in.pos -= length;
    memcpy(in.chars.get() + in.pos, text, size_t(length) * 2);
    if (!rawAhead)
        in.rawLimit = in.pos + length;
}

} // namespace detail
} // namespace ZkCommonNS
