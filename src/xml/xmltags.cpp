// The tag half of the XML scanner: the classifier, names, start and end tags, attributes and
// namespace declarations, attribute values and references.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"
#include "zkcommon/xml/xmlutil.h"

#include <cstring>
#if defined(__SSE2__)
#include <emmintrin.h>
#endif
#include <unicode/utf16.h>

namespace ZkCommonNS {
namespace detail {

namespace {
constexpr unsigned short kErrorSecondRoot = 130;
constexpr unsigned short kErrorSecondRootHtml = 521;
constexpr unsigned short kErrorStartTagName = 132;
constexpr unsigned short kErrorEndTagName = 133;
constexpr unsigned short kErrorEndTagMismatch = 134;
constexpr unsigned short kErrorUndeclaredPrefix = 135;
constexpr unsigned short kErrorDuplicateAttribute = 136;
constexpr unsigned short kErrorAttributeName = 137;
constexpr unsigned short kErrorMissingEquals = 138;
constexpr unsigned short kErrorMissingWhitespace = 139;
constexpr unsigned short kErrorUnexpectedCharacter = 140;
constexpr unsigned short kErrorUnexpectedWhitespace = 141;
constexpr unsigned short kErrorMissingQuote = 174;
constexpr unsigned short kErrorInvalidCharacter = 180;
constexpr unsigned short kErrorUnclosedTag = 183;
constexpr unsigned short kErrorHtmlCharacter = 769;
constexpr unsigned short kErrorSlashWhitespace = 770;
constexpr unsigned short kErrorSlashCharacter = 897;
constexpr unsigned short kErrorSlashWhitespaceXhtml = 898;
/// Attribute records that are searched pairwise for duplicates; more go through a hash set.
constexpr int kLinearDuplicateCheck = 24;

inline bool isSpace(UChar32 c) {
    return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
}

UnicodeString charText(UChar32 c) {
    return c == kEof ? UnicodeString() : UnicodeString(c);
}

bool isNCName(const UnicodeString& text) {
    for (int32_t i = 0; i < text.length();) {
        UChar32 c = text.char32At(i);
        if (i == 0 ? !ZkChar::isNCNameStartChar(c) : !ZkChar::isNCNameChar(c))
            return false;
        i += U16_LENGTH(c);
    }
    return !text.isEmpty();
}

constexpr uint16_t classOf(int c) {
    return uint16_t(((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'
                         ? kNameStart | kNameChar
                     : (c >= '0' && c <= '9') || c == '-' || c == '.' ? kNameChar
                                                                      : 0) |
                    (c == '<' || c == '&' ? kStopText | kStopValue : 0) |
                    (c == ']' ? kStopText | kStopCData : 0) | (c == '-' ? kStopComment : 0) |
                    (c == '?' ? kStopPI : 0) | (c < 0x20 ? kControl : 0) |
                    (c == '"' ? kQuoteDouble : 0) | (c == '\'' ? kQuoteSingle : 0));
}

/// The end of the run of ASCII name characters (letters, digits, "_", "-" and ".") that
/// starts at `p`, below `e`: where a name read in place stops, on ":", "=", space, markup or
/// a unit that needs the full test.
inline int32_t skipNameChars(const char16_t* b, int32_t p, int32_t e) {
#if defined(__SSE2__)
    // Eight units at a time: each class is one range, tested as an unsigned "x - low <=
    // width" by a saturating subtraction; units above U+007F fall outside every range.
    const __m128i zero = _mm_setzero_si128();
    while (e - p >= 8) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + p));
        __m128i folded = _mm_or_si128(v, _mm_set1_epi16(0x20));
        __m128i letter = _mm_cmpeq_epi16(
            _mm_subs_epu16(_mm_sub_epi16(folded, _mm_set1_epi16('a')), _mm_set1_epi16(25)), zero);
        __m128i digit = _mm_cmpeq_epi16(
            _mm_subs_epu16(_mm_sub_epi16(v, _mm_set1_epi16('0')), _mm_set1_epi16(9)), zero);
        __m128i dashDot = _mm_cmpeq_epi16(
            _mm_subs_epu16(_mm_sub_epi16(v, _mm_set1_epi16('-')), _mm_set1_epi16(1)), zero);
        __m128i underscore = _mm_cmpeq_epi16(v, _mm_set1_epi16('_'));
        __m128i name = _mm_or_si128(_mm_or_si128(letter, digit), _mm_or_si128(dashDot, underscore));
        int stops = _mm_movemask_epi8(name) ^ 0xFFFF;
        if (stops)
            return p + (__builtin_ctz(unsigned(stops)) >> 1);
        p += 8;
    }
#endif
    while (p < e && b[p] < 0x80 && (kAsciiClass[b[p]] & kNameChar))
        ++p;
    return p;
}

/// The end of prefix:local or local at `p` when it lies whole in [p, e) in plain ASCII name
/// characters, with `localStart` where the local part begins; -1 when it does not, or when
/// a colon has no name after it (the slow reader reports that).
inline int32_t scanQName(const char16_t* b, int32_t p, int32_t e, int32_t& localStart) {
    if (p >= e || b[p] >= 0x80 || !(kAsciiClass[b[p]] & kNameStart))
        return -1;
    localStart = p;
    int32_t q = skipNameChars(b, p + 1, e);
    if (q < e && b[q] == ':') {
        localStart = ++q;
        if (q >= e || b[q] >= 0x80 || !(kAsciiClass[b[q]] & kNameStart))
            return -1;
        q = skipNameChars(b, q + 1, e);
    }
    return q;
}
} // namespace

// clang-format off
const uint16_t kAsciiClass[128] = {
#define ZK_ROW(n) classOf(n), classOf(n + 1), classOf(n + 2), classOf(n + 3), classOf(n + 4), \
                  classOf(n + 5), classOf(n + 6), classOf(n + 7)
    ZK_ROW(0), ZK_ROW(8), ZK_ROW(16), ZK_ROW(24), ZK_ROW(32), ZK_ROW(40), ZK_ROW(48), ZK_ROW(56),
    ZK_ROW(64), ZK_ROW(72), ZK_ROW(80), ZK_ROW(88), ZK_ROW(96), ZK_ROW(104), ZK_ROW(112),
    ZK_ROW(120),
#undef ZK_ROW
};
// clang-format on

UnicodeString qualifiedName(ZkName prefix, ZkName local) {
    return ZkXmlUtil::makeQNameStr(prefix.toString(), local.toString());
}

ZkName NameCache::internSlow(const char16_t* text, int32_t length) {
    m_lastSlot = -1;
    if (length == 0)
        return ZkName();
    if (length > kMaxLength)
        return ZkName(UnicodeString(text, length));
    if (!m_slots)
        m_slots.reset(new Slot[size_t(1) << kSlotBits]);
    ZkName name(UnicodeString(text, length));
    uint64_t head;
    uint64_t tail;
    ends(text, length, head, tail);
    size_t index = slotOf(head, tail);
    m_lastSlot = int32_t(index);
    Slot& slot = m_slots[index];
    slot.head = head;
    slot.tail = tail;
    slot.length = length;
    slot.name = name.getEnum();
    slot.plain = text[0] < 0x80 && (kAsciiClass[text[0]] & kNameStart) &&
                 skipNameChars(text, 1, length) == length;
    memcpy(slot.text, text, size_t(length) * 2);
    return name;
}

UChar32 XmlScanner::peekChar() {
    int unit = m_recording ? peekRecorded() : peekUnit();
    if (unit >= 0)
        return unit;
    UChar32 c = readChar();
    pushBack(c);
    return c;
}

int XmlScanner::classify() {
    if (m_peek >= PEEK_START_TAG)
        return m_peek;
    if (m_held != PEEK_NONE)
        return m_peek = m_held;
    int kind;
    int unit = peekUnit();
    if (m_in.parserType == ZKN_text) {
        kind = peekChar() == kEof && m_in.atEnd ? PEEK_EOF : PEEK_TEXT;
    } else if (unit >= 0 ? unit != '<' && unit != '&' : startsLineText()) {
        kind = PEEK_TEXT; // the common case, read in place
    } else {
        UChar32 c = readChar();
        if (c == '&') {
            kind = PEEK_REFERENCE;
            if (inRawText()) {
                pushBack(c);
                kind = PEEK_TEXT;
            }
        } else if (c == '<' && inRawText()) {
            // In script and style only the element's own end tag is markup.
            kind = PEEK_END_TAG;
            if (!rawTextEndFollows()) {
                pushBack(c);
                kind = PEEK_TEXT;
            }
        } else if (c == '<') {
            UChar32 second = peekChar();
            if (second == '!' || second == '/' || second == '?') {
                readChar();
                kind = second == '!' ? PEEK_BANG : second == '/' ? PEEK_END_TAG : PEEK_PI;
            } else if (second == kEof || (second < 0x80 ? !(kAsciiClass[second] & kNameStart)
                                                        : !ZkChar::isNCNameStartChar(second))) {
                // "<" before no name: HTML reads it as text, XML as a bad start tag.
                kind = PEEK_START_TAG;
                if (isHtml()) {
                    pushBack(c);
                    kind = PEEK_TEXT;
                }
            } else {
                kind = PEEK_START_TAG;
            }
        } else if (c == kEof) {
            if (!(m_in.atEnd && m_in.pos >= m_in.end))
                report(kErrorInvalidCharacter, UnicodeString(), UnicodeString());
            kind = PEEK_EOF;
        } else {
            pushBack(c);
            kind = PEEK_TEXT;
        }
    }
    m_peek = kind;
    return kind;
}

bool XmlScanner::skipWhitespace() {
    bool skipped = false;
    InputState& in = m_in;
    if (in.pos >= in.rawLimit && !m_recording) {
        // Spaces, tabs and line feeds in place, counted as the reader counts them.
        const char16_t* b = in.chars.get();
        int32_t p = in.pos;
        int32_t lineStart = -1;
        for (; p < in.end; ++p) {
            char16_t c = b[p];
            if (c == ' ' || c == '\t')
                continue;
            if (c != '\n')
                break;
            ++in.line;
            lineStart = p + 1;
        }
        in.column = lineStart >= 0 ? p - lineStart : in.column + (p - in.pos);
        skipped = p > in.pos;
        in.pos = p;
        if (p < in.end && b[p] > ' ')
            return skipped;
    } else if (in.pos >= in.rawLimit) {
        const char16_t* b = in.chars.get();
        int32_t p = in.pos;
        while (p < in.end && b[p] == ' ')
            ++p;
        appendText(b + in.pos, p - in.pos);
        if (p < in.end && b[p] > ' ') {
            skipped = p > in.pos;
            in.column += p - in.pos;
            in.pos = p;
            return skipped;
        }
        in.column += p - in.pos;
        skipped = p > in.pos;
        in.pos = p;
    }
    for (;;) {
        int unit = peekUnit();
        if (unit == ' ' || unit == '\t') {
            ++m_in.pos;
            ++m_in.column;
            skipped = true;
            continue;
        }
        if (unit >= 0 || (m_recording && (unit = peekRecorded()) >= 0 && !isSpace(unit)))
            return skipped;
        UChar32 c = readChar();
        if (!isSpace(c)) {
            pushBack(c);
            return skipped;
        }
        skipped = true;
    }
}

ZkName XmlScanner::readName(bool fold) {
    InputState& in = m_in;
    if (in.pos >= in.rawLimit && in.pos < in.end) {
        const char16_t* b = in.chars.get();
        int32_t p = in.pos;
        char16_t c = b[p];
        if (c < 0x80 && (kAsciiClass[c] & kNameStart)) {
            int32_t e = in.end;
            int32_t q = skipNameChars(b, p + 1, e);
            if (q < e && b[q] < 0x80) {
                if (m_recording)
                    appendText(b + p, q - p);
                in.pos = q;
                in.column += q - p;
                int32_t length = q - p;
                const char16_t* text = b + p;
                char16_t lowered[64];
                if (fold) {
                    // HTML names: capitals folded in a copy, only when there are any.
                    int32_t i = 0;
                    while (i < length && !(text[i] >= 'A' && text[i] <= 'Z'))
                        ++i;
                    if (i < length) {
                        if (length > 64)
                            return ZkName(UnicodeString(text, length).toLower());
                        for (int32_t k = 0; k < length; ++k) {
                            char16_t u = text[k];
                            lowered[k] = u >= 'A' && u <= 'Z' ? char16_t(u + 32) : u;
                        }
                        text = lowered;
                    }
                }
                return m_names.intern(text, length);
            }
        }
    }
    return readNameSlow(fold);
}

ZkName XmlScanner::readNameSlow(bool fold) {
    m_scratch.remove();
    UChar32 c = readChar();
    if (c == kEof || !ZkChar::isNCNameStartChar(c)) {
        pushBack(c);
        return ZkName();
    }
    m_scratch.append(c);
    for (;;) {
        c = readChar();
        if (c == kEof || !ZkChar::isNCNameChar(c)) {
            pushBack(c);
            break;
        }
        m_scratch.append(c);
    }
    if (fold)
        m_scratch.toLower();
    return m_names.intern(m_scratch.getBuffer(), m_scratch.length());
}

void XmlScanner::internQName(const char16_t* text, int32_t localStart, int32_t length,
                             ZkName& prefix, ZkName& local) {
    m_qnamePrefixSlot = -1;
    if (localStart > 0) {
        prefix = m_names.intern(text, localStart - 1);
        m_qnamePrefixSlot = m_names.lastSlot();
    }
    const char16_t* localText = text + localStart;
    int32_t localLength = length - localStart;
    local = m_names.intern(localText, localLength);
    m_qnameLocalSlot = m_names.lastSlot();
}

bool XmlScanner::readQName(ZkName& prefix, ZkName& local, bool& colonWithoutLocal, bool fold) {
    colonWithoutLocal = false;
    prefix = ZkName();
    InputState& in = m_in;
    if (!fold && !m_recording && in.pos >= in.rawLimit) {
        // The whole name in place, ended by an ASCII unit: both parts at once.
        const char16_t* b = in.chars.get();
        int32_t localStart;
        int32_t end = scanQName(b, in.pos, in.end, localStart);
        if (end >= 0 && end < in.end && b[end] < 0x80) {
            internQName(b + in.pos, localStart - in.pos, end - in.pos, prefix, local);
            in.column += end - in.pos;
            in.pos = end;
            return true;
        }
    }
    m_qnamePrefixSlot = m_qnameLocalSlot = -1;
    local = readName(fold);
    if (local.isEmpty())
        return false;
    int unit = peekUnit();
    if (unit == ':' || (unit < 0 && peekChar() == ':')) {
        readChar();
        prefix = local;
        local = readName(fold);
        colonWithoutLocal = local.isEmpty();
    }
    return true;
}

void XmlScanner::scanStartTag() {
    m_event = ZkXmlParser::START_TAG;
    m_attributeCount = 0;
    if (int(m_open.size()) == m_in.baseDepth && m_in.rootSeenHere) {
        report(isHtml() ? kErrorSecondRootHtml : kErrorSecondRoot, UnicodeString(),
               UnicodeString());
        endDocument();
        return;
    }
    ZkName prefix;
    ZkName local;
    bool colonOnly = false;
    // Once HTML is settled the names are folded as they are read.
    bool folded = m_settledType == ZKN_html;
    int32_t prefixSlot = -1;
    int32_t localSlot = -1;
    if (m_held == PEEK_START_TAG) {
        m_held = PEEK_NONE; // the name read before an implied event
        prefix = m_heldPrefix;
        local = m_heldLocal;
        folded = true;
    } else {
        if (isSpace(peekChar()))
            report(kErrorUnexpectedWhitespace, UnicodeString(u"<"), UnicodeString());
        if (!readQName(prefix, local, colonOnly, folded) || colonOnly) {
            report(kErrorStartTagName, UnicodeString(), UnicodeString());
            if (local.isEmpty())
                local = prefix;
        }
        prefixSlot = m_qnamePrefixSlot;
        localSlot = m_qnameLocalSlot;
    }
    if (m_firstElement.isEmpty()) {
        m_firstElement = local;
        hintsChanged();
    }
    m_in.rootSeenHere = true;
    if (isHtml()) {
        if (!folded) {
            prefix = prefix.lowerName();
            local = local.lowerName();
        }
        if (prefix.isEmpty() && impliedBeforeStartTag(local))
            return;
    }
    OpenElement element;
    element.prefix = prefix;
    element.local = local;
    element.bindingStart = int32_t(m_bindings.size());
    element.prefixSlot = prefixSlot;
    element.localSlot = localSlot;
    m_open.push_back(element);
    scanAttributes();
    scanTagEnd();
    finishStartTag();
}

UnicodeString XmlScanner::openQName() const {
    const OpenElement& element = m_open.back();
    return qualifiedName(element.prefix, element.local);
}

void XmlScanner::scanAttributes() {
    uint32_t kind =
        (uint32_t(m_open.back().local.getEnum()) * 0x9E3779B1u) >> (32 - kPredictedKindBits);
    int32_t* predicted = m_attributeSlots[kind];
    m_prefixedAttributes = false;
    for (;;) {
        bool html = isHtml();
        ZkName prefix;
        ZkName local;
        char16_t quote = 0;
        InputState& in = m_in;
        if (!html && in.pos >= in.rawLimit && in.end - in.pos > 1 && in.chars[in.pos] == ' ' &&
            in.chars[in.pos + 1] < 0x80 && (kAsciiClass[in.chars[in.pos + 1]] & kNameStart) &&
            !m_recording) {
            // One space and a name: what skipWhitespace would do, then the common shape.
            ++in.pos;
            ++in.column;
            quote = readAttributeHead(prefix, local, predicted);
            if (quote == 0 && !scanAttributeSlow(in.chars[in.pos], html, prefix, local))
                continue;
        } else {
            bool spaced = skipWhitespace();
            int unit = peekUnit();
            UChar32 c = unit >= 0 ? unit : peekChar();
            if (c == '>' || c == '/')
                return;
            if (c == kEof) {
                report(kErrorUnclosedTag, openQName(), UnicodeString());
                return;
            }
            html = isHtml();
            if (!spaced && !html)
                return; // the tag end reports what stands here
            quote = html ? 0 : readAttributeHead(prefix, local, predicted);
            if (quote == 0 && !scanAttributeSlow(c, html, prefix, local))
                continue;
        }
        if (quote != 0)
            readValue(quote, newAttribute(prefix, local));
        Attribute& attribute = m_attributes[size_t(m_attributeCount)];
        ++m_attributeCount;
        if (!prefix.isEmpty())
            m_prefixedAttributes = true;
        if (prefix == ZKN_xmlns) {
            declareNamespace(local, ZkName(attributeValue(attribute)));
            attribute.ns = ZKN_NS_XMLNS;
        } else if (prefix.isEmpty() && local == ZKN_xmlns) {
            ZkName uri(attributeValue(attribute));
            declareNamespace(ZkName(), uri);
            attribute.ns = ZKN_NS_XMLNS;
            // An XHTML root declared so, where XHTML is the default type, is XHTML.
            if (html && uri == ZKN_NS_XHTML && m_open.size() == 1 &&
                m_open.back().local == ZKN_html && m_open.back().prefix.isEmpty() &&
                m_defaultType == ZKN_xhtml)
                m_settledType = ZKN_xhtml;
        }
    }
}

char16_t XmlScanner::readAttributeHead(ZkName& prefix, ZkName& local, int32_t* predicted) {
    InputState& in = m_in;
    if (in.pos < in.rawLimit || m_recording)
        return 0;
    const char16_t* b = in.chars.get();
    int32_t position = m_attributeCount < kPredictedAttributes ? m_attributeCount : -1;
    int32_t guess = position >= 0 ? predicted[position] : -1;
    if (guess >= 0) {
        // The name read here in the last tag, when "=" and a quote follow it: any name would
        // end before "=", so this is the name the full reading would find.
        int32_t length = m_names.matchSlot(guess, b + in.pos, in.end - in.pos - 2);
        int32_t p = in.pos + length;
        if (length > 0 && b[p] == '=' && (b[p + 1] == '"' || b[p + 1] == '\'')) {
            local = m_names.slotName(guess);
            in.column += length + 2;
            in.pos = p + 2;
            return b[p + 1];
        }
    }
    int32_t localStart;
    int32_t p = scanQName(b, in.pos, in.end, localStart);
    if (p < 0 || in.end - p < 2 || b[p] != '=' || (b[p + 1] != '"' && b[p + 1] != '\''))
        return 0;
    internQName(b + in.pos, localStart - in.pos, p - in.pos, prefix, local);
    if (position >= 0 && localStart == in.pos)
        predicted[position] = m_names.lastSlot();
    in.column += p + 2 - in.pos;
    in.pos = p + 2;
    return b[p + 1];
}

bool XmlScanner::scanAttributeSlow(UChar32 c, bool html, ZkName& prefix, ZkName& local) {
    bool colonOnly = false;
    bool dropped = false;
    if (!readQName(prefix, local, colonOnly, html)) {
        if (html && c != '"' && c != '\'' && c != '=') {
            // Junk that cannot begin a name is a name all the same, to the next space.
            UnicodeString junk;
            for (;;) {
                c = readChar();
                if (c == kEof || isSpace(c) || c == '>' || c == '/' || c == '"' || c == '\'' ||
                    c == '=') {
                    pushBack(c);
                    break;
                }
                junk.append(c);
            }
            if (junk.isEmpty()) {
                report(kErrorHtmlCharacter, charText(readChar()), UnicodeString());
                return false;
            }
            // Read as a name, but kept only when it is one: the element must save as XML.
            dropped = !isNCName(junk);
            if (dropped)
                report(kErrorHtmlCharacter, junk, UnicodeString());
            else
                local = ZkName(junk.toLower());
        } else {
            c = readChar();
            report(html ? kErrorHtmlCharacter : kErrorUnexpectedCharacter, charText(c),
                   UnicodeString());
            return false;
        }
    }
    if (colonOnly)
        report(kErrorAttributeName, prefix.toString() + u":", UnicodeString());
    // The common shape name="value" is taken in place; anything else goes step by step.
    if (peekUnit() == '=') {
        ++m_in.pos;
        ++m_in.column;
        c = '=';
    } else {
        skipWhitespace();
        // HTML looks before it reads, so that what follows stays in place.
        c = html ? peekChar() : readChar();
        if (html && c == '=')
            readChar();
    }
    Attribute& attribute = newAttribute(prefix, local);
    if (c != '=') {
        if (!html) { // HTML: an attribute without "=" has an empty value
            pushBack(c);
            report(kErrorMissingEquals, UnicodeString(), UnicodeString());
        }
    } else {
        int quote = peekUnit();
        if (quote == '"' || quote == '\'') {
            ++m_in.pos;
            ++m_in.column;
            c = quote;
        } else {
            skipWhitespace();
            c = html ? peekChar() : readChar();
            if (html && (c == '"' || c == '\''))
                readChar();
        }
        if (c == '"' || c == '\'') {
            readValue(char16_t(c), attribute);
        } else if (html) {
            readUnquotedValue(attribute.value);
        } else {
            pushBack(c);
            report(kErrorMissingQuote, UnicodeString(), UnicodeString());
        }
    }
    return !dropped;
}

void XmlScanner::scanTagEnd() {
    UChar32 c = readChar();
    if (c == '>')
        return;
    if (c == '/') {
        bool reportedCharacter = false;
        bool reportedSpace = false;
        for (;;) {
            c = readChar();
            if (c == '>') {
                m_emptyTag = true;
                m_peek = PEEK_EMPTY_TAG;
                return;
            }
            if (c == kEof) {
                // Deliberately the comment's message: no code of its own exists.
                report(146, UnicodeString(), UnicodeString());
                return;
            }
            if (isSpace(c)) {
                if (!reportedSpace) {
                    reportedSpace = true;
                    report(isXhtml() || isHtml() ? kErrorSlashWhitespaceXhtml
                                                 : kErrorSlashWhitespace,
                           UnicodeString(u"/"), UnicodeString());
                }
            } else if (!reportedCharacter) {
                reportedCharacter = true;
                report(isXhtml() || isHtml() ? kErrorSlashCharacter : kErrorUnexpectedCharacter,
                       charText(c), UnicodeString());
            }
        }
    }
    if (c == kEof) {
        report(kErrorUnclosedTag, openQName(), UnicodeString());
        return;
    }
    if (ZkChar::isNCNameStartChar(c))
        report(kErrorMissingWhitespace, UnicodeString(), UnicodeString());
    else
        report(kErrorUnexpectedCharacter, charText(c), UnicodeString());
}

void XmlScanner::finishStartTag() {
    OpenElement& element = m_open.back();
    bool root = !m_rootSeen;
    bool html = isHtml();
    if (root || (html && element.prefix.isEmpty())) {
        // Chart, MathML and SVG elements need no declaration of their namespace, unless they
        // declare a default of their own.
        ZkName implied;
        if (element.local == ZKN_chart)
            implied = ZKN_NS_CHARTML;
        else if (element.local == ZKN_math)
            implied = ZKN_NS_MATHML;
        else if (element.local == ZKN_svg)
            implied = ZKN_NS_SVG;
        if (!implied.isEmpty() && element.prefix.isEmpty()) {
            auto own = m_prefixTop.find(0);
            bool declaredHere = own != m_prefixTop.end() && own->second >= element.bindingStart;
            if (!declaredHere && resolvePrefix(ZkName()) != implied)
                declareNamespace(ZkName(), implied);
            if ((implied == ZKN_NS_CHARTML || implied == ZKN_NS_SVG) &&
                resolvePrefix(ZKN_xlink).isEmpty())
                declareNamespace(ZKN_xlink, ZKN_NS_XLINK);
        }
    }
    if (root && html) {
        // HTML elements are in the XHTML namespace, whatever prefix they carry.
        if (resolvePrefix(element.prefix).isEmpty())
            declareNamespace(element.prefix, ZKN_NS_XHTML);
    }
    element.ns = resolvePrefix(element.prefix);
    // HTML: an undeclared prefix names its own namespace, as it does on attributes, so that
    // the element saves as namespace-well-formed XML.
    if (html && !element.prefix.isEmpty() && element.ns.isEmpty())
        element.ns = element.prefix;
    if (!element.prefix.isEmpty() && element.ns.isEmpty() && !html &&
        !m_features[ZkXmlParser::FEATURE_LAX_ELEMENT_PREFIX])
        report(kErrorUndeclaredPrefix, element.prefix.toString(), UnicodeString());
    if (root) {
        m_rootSeen = true;
        m_rootNamespace = element.ns;
        hintsChanged();
        // The character entities of the syntax come with its first element.
        if (html) {
            loadEntitySet(kEntitySetHtml);
            if (!m_htmlDefaultCharset.isEmpty() && !m_metaCharsetSeen &&
                m_requestedEncoding.isEmpty())
                switchEncoding(m_htmlDefaultCharset);
        }
        if (isXhtml())
            loadEntitySet(kEntitySetXhtml);
    }
    if (html) {
        if (element.prefix.isEmpty())
            countOpen(element);
        finishHtmlStartTag();
    }
    if (element.local == ZKN_math && element.ns == ZKN_NS_MATHML)
        enterMathScope();
    // Attribute namespaces, then duplicates by (local name, namespace).
    bool lax = m_features[ZkXmlParser::FEATURE_LAX_ATTRIBUTE_PREFIX] || isHtml();
    for (int i = 0; m_prefixedAttributes && i < m_attributeCount; ++i) {
        Attribute& attribute = m_attributes[size_t(i)];
        if (attribute.prefix.isEmpty() || !attribute.ns.isEmpty())
            continue;
        attribute.ns = resolvePrefix(attribute.prefix);
        if (attribute.ns.isEmpty()) {
            if (lax)
                attribute.ns = attribute.prefix;
            else
                report(kErrorUndeclaredPrefix, attribute.prefix.toString(), UnicodeString());
        }
    }
    if (m_attributeCount <= kLinearDuplicateCheck) {
        // One bit of 256 per (local name, namespace) pair: only an attribute whose bit an
        // earlier one set is compared with the earlier ones.
        uint64_t seen[4] = {0, 0, 0, 0};
        for (int i = 0; i < m_attributeCount; ++i) {
            const Attribute& attribute = m_attributes[size_t(i)];
            uint32_t mixed = (uint32_t(attribute.local.getEnum()) * 0x9E3779B1u +
                              uint32_t(attribute.ns.getEnum())) *
                             0x85EBCA6Bu;
            uint64_t& word = seen[mixed >> 30];
            uint64_t bit = uint64_t(1) << ((mixed >> 24) & 63);
            bool maybe = (word & bit) != 0;
            word |= bit;
            if (!maybe)
                continue;
            for (int j = 0; j < i; ++j) {
                const Attribute& earlier = m_attributes[size_t(j)];
                if (earlier.local == attribute.local && earlier.ns == attribute.ns)
                    report(kErrorDuplicateAttribute,
                           qualifiedName(attribute.prefix, attribute.local), UnicodeString());
            }
        }
    } else {
        // Many attributes: one probe each in an open-addressing table instead of a pairwise
        // search, so 100,000 attributes cost 100,000 probes.
        size_t capacity = 16;
        while (capacity < size_t(m_attributeCount) * 2)
            capacity *= 2;
        m_attributeKeys.assign(capacity, 0);
        for (int i = 0; i < m_attributeCount; ++i) {
            const Attribute& attribute = m_attributes[size_t(i)];
            // Local names are never empty, so a key is never 0, the empty slot.
            uint64_t key = (uint64_t(uint32_t(attribute.local.getEnum())) << 32) |
                           uint32_t(attribute.ns.getEnum());
            size_t slot = size_t((key * 0x9E3779B97F4A7C15ull) >> 20) & (capacity - 1);
            while (m_attributeKeys[slot] != 0 && m_attributeKeys[slot] != key)
                slot = (slot + 1) & (capacity - 1);
            if (m_attributeKeys[slot] == key)
                report(kErrorDuplicateAttribute, qualifiedName(attribute.prefix, attribute.local),
                       UnicodeString());
            m_attributeKeys[slot] = key;
        }
    }
}

void XmlScanner::declareNamespace(ZkName prefix, ZkName uri) {
    if (resolvePrefix(prefix) == uri)
        return; // an outer scope says the same
    auto found = m_prefixTop.find(prefix.getEnum());
    int32_t previous = found == m_prefixTop.end() ? -1 : found->second;
    ++m_bindingsGeneration;
    m_prefixTop[prefix.getEnum()] = int32_t(m_bindings.size());
    m_bindings.push_back(NsBinding{prefix, uri, previous});
}

ZkName XmlScanner::resolvePrefix(ZkName prefix) const {
    if (prefix == ZKN_xml)
        return ZKN_NS_XML;
    if (prefix == ZKN_xmlns)
        return ZKN_NS_XMLNS;
    // Elements mostly repeat the prefix of the one before: its answer stands until a
    // binding is made or dropped.
    if (prefix == m_resolvedPrefix && m_resolvedGeneration == m_bindingsGeneration)
        return m_resolvedUri;
    auto found = m_prefixTop.find(prefix.getEnum());
    ZkName uri = found == m_prefixTop.end() ? ZkName() : m_bindings[size_t(found->second)].uri;
    m_resolvedPrefix = prefix;
    m_resolvedUri = uri;
    m_resolvedGeneration = m_bindingsGeneration;
    return uri;
}

void XmlScanner::closeElement() {
    if (m_open.empty())
        return;
    leaveMathScope();
    const OpenElement& element = m_open.back();
    if (element.counted) {
        int32_t n = element.local.getEnum();
        if (n <= ZKN_BUILTIN_LAST)
            --m_openCounts[size_t(n)];
        else if (--m_openCountsDynamic[n] == 0)
            m_openCountsDynamic.erase(n);
    }
    int32_t start = element.bindingStart;
    if (start < int32_t(m_bindings.size()))
        ++m_bindingsGeneration;
    for (int32_t i = int32_t(m_bindings.size()) - 1; i >= start; --i) {
        const NsBinding& binding = m_bindings[size_t(i)];
        if (binding.previous < 0)
            m_prefixTop.erase(binding.prefix.getEnum());
        else
            m_prefixTop[binding.prefix.getEnum()] = binding.previous;
    }
    m_bindings.resize(size_t(start));
    m_open.pop_back();
}

bool XmlScanner::closesInPlace() {
    InputState& in = m_in;
    if (m_open.empty() || int(m_open.size()) <= in.baseDepth || in.pos < in.rawLimit || m_recording)
        return false;
    const OpenElement& open = m_open.back();
    const char16_t* b = in.chars.get();
    int32_t p = in.pos;
    int32_t e = in.end;
    if (!open.prefix.isEmpty()) {
        if (open.prefixSlot < 0 || m_names.slotName(open.prefixSlot) != open.prefix)
            return false;
        int32_t length = m_names.matchSlot(open.prefixSlot, b + p, e - p);
        if (length == 0 || p + length >= e || b[p + length] != ':')
            return false;
        p += length + 1;
    }
    if (open.localSlot < 0 || m_names.slotName(open.localSlot) != open.local)
        return false;
    int32_t length = m_names.matchSlot(open.localSlot, b + p, e - p);
    // The name must end there: ">" or white space after it.
    if (length == 0 || p + length >= e ||
        (b[p + length] != '>' && b[p + length] != ' ' && b[p + length] != '\n'))
        return false;
    p += length;
    in.column += p - in.pos;
    in.pos = p;
    return true;
}

void XmlScanner::scanEndTag() {
    m_event = ZkXmlParser::END_TAG;
    ZkName prefix;
    ZkName local;
    bool colonOnly = false;
    bool html = isHtml();
    if (m_held == PEEK_END_TAG) {
        m_held = PEEK_NONE; // the name read before an implied end
        prefix = m_heldPrefix;
        local = m_heldLocal;
    } else if (!html && closesInPlace()) {
        prefix = m_open.back().prefix;
        local = m_open.back().local;
    } else {
        if (isSpace(peekChar()))
            report(kErrorUnexpectedWhitespace, UnicodeString(u"</"), UnicodeString());
        if (!readQName(prefix, local, colonOnly, html) || colonOnly)
            report(kErrorEndTagName, UnicodeString(), UnicodeString());
    }
    if (m_open.empty() || int(m_open.size()) <= m_in.baseDepth || m_open.back().prefix != prefix ||
        m_open.back().local != local) {
        // HTML recovers in any namespace: an SVG or MathML element left open inside HTML is
        // closed by the end tag of an element around it.
        if (html && !m_open.empty() && int(m_open.size()) > m_in.baseDepth && !local.isEmpty() &&
            recoverEndTag(prefix, local))
            return;
        UnicodeString open = m_open.empty() ? UnicodeString() : openQName();
        report(kErrorEndTagMismatch, qualifiedName(prefix, local), open);
        if (m_open.empty()) {
            // Nothing to close: what follows is read as if the tag were not there.
            m_event = ZkXmlParser::END_DOCUMENT;
            endDocument();
            return;
        }
    }
    skipWhitespace();
    UChar32 c = readChar();
    if (c == kEof && !isHtml()) {
        // The input ends inside the tag: that is no stray character but an unclosed tag.
        report(kErrorUnclosedTag, UnicodeString(u"</") + qualifiedName(prefix, local),
               UnicodeString());
    } else if (c != '>') {
        report(kErrorHtmlCharacter, charText(c), UnicodeString());
        while (c != '>' && c != kEof)
            c = readChar();
    }
}

namespace {

/// The first index at or after `p` (below `e`) whose unit is not plain: below U+0020, at or
/// above `limit`, or one of the three stops.
inline int32_t skipPlain(const char16_t* b, int32_t p, int32_t e, char16_t limit, char16_t stop1,
                         char16_t stop2, char16_t stop3) {
#if defined(__SSE2__)
    // Eight units at a time; the range test is one unsigned compare done on biased signed units.
    const __m128i bias = _mm_set1_epi16(short(0x8000 - 0x20));
    const __m128i top = _mm_set1_epi16(short((limit - 0x20) ^ 0x8000));
    const __m128i s1 = _mm_set1_epi16(short(stop1));
    const __m128i s2 = _mm_set1_epi16(short(stop2));
    const __m128i s3 = _mm_set1_epi16(short(stop3));
    while (e - p >= 8) {
        __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + p));
        __m128i inRange = _mm_cmplt_epi16(_mm_add_epi16(v, bias), top);
        __m128i stops = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(v, s1), _mm_cmpeq_epi16(v, s2)),
                                     _mm_cmpeq_epi16(v, s3));
        int bad = _mm_movemask_epi8(_mm_andnot_si128(stops, inRange)) ^ 0xFFFF;
        if (bad)
            return p + (__builtin_ctz(unsigned(bad)) >> 1);
        p += 8;
    }
#endif
    for (; p < e; ++p) {
        char16_t c = b[p];
        if (c < 0x20 || c >= limit || c == stop1 || c == stop2 || c == stop3)
            break;
    }
    return p;
}

} // namespace

void XmlScanner::readValue(char16_t quote, Attribute& attribute) {
    // A value that lies whole in the buffer, with nothing to expand or normalise, is left there
    // and read by the getters in place: no copy until a caller asks.
    InputState& in = m_in;
    if (in.pos >= in.rawLimit) {
        const char16_t* b = in.chars.get();
        int32_t end = skipPlain(b, in.pos, in.end, m_fastLimit, '<', '&', quote);
        if (end < in.end && b[end] == quote) {
            attribute.viewStart = in.pos;
            attribute.viewLength = end - in.pos;
            in.column += end - in.pos + 1;
            in.pos = end + 1;
            m_valuesInBuffer = true;
            return;
        }
    }
    readAttributeValue(quote, attribute.value);
}

void XmlScanner::scanRun(UnicodeString& target, uint16_t stops, char16_t quote, bool value) {
    InputState& in = m_in;
    // The stop units of the class, at most three, for the wide skip (U+0000 stops anyway).
    char16_t stopUnits[3] = {0, 0, 0};
    switch (stops) {
    case kStopText:
        stopUnits[0] = '<';
        stopUnits[1] = '&';
        stopUnits[2] = ']';
        break;
    case kStopValue:
        stopUnits[0] = '<';
        stopUnits[1] = '&';
        stopUnits[2] = quote;
        break;
    case kStopCData:
        stopUnits[0] = ']';
        break;
    case kStopComment:
        stopUnits[0] = '-';
        break;
    case kStopPI:
        stopUnits[0] = '?';
        break;
    case kStopRawText:
        stopUnits[0] = '<';
        break;
    default:
        break;
    }
    const char16_t fastLimit = m_fastLimit;
    while (in.pos >= in.rawLimit && in.pos < in.end) {
        const char16_t* b = in.chars.get();
        int32_t p = in.pos;
        int32_t e = in.end;
        int32_t runStart = p;
        int32_t lineStart = p;
        int columnBase = in.column;
        bool replace = false;
        for (;;) {
            p = skipPlain(b, p, e, fastLimit, stopUnits[0], stopUnits[1], stopUnits[2]);
            if (p >= e)
                break;
            char16_t c = b[p];
            if (c == '\n') {
                ++in.line;
                lineStart = p + 1;
                columnBase = 0;
            } else if (c != '\t') {
                break; // a stop, or U+000D and the controls, which take the slow way
            }
            if (value) {
                replace = true; // in a value a tab or line feed becomes a space
                break;
            }
            ++p;
        }
        in.column = columnBase + (p - lineStart) + (replace && b[p] == '\t' ? 1 : 0);
        in.pos = replace ? p + 1 : p;
        if (&target == &m_text) {
            if (p > runStart && !appendText(b + runStart, p - runStart))
                return;
        } else if (p > runStart) {
            if (target.isEmpty() && !replace && p < e && b[p] == quote)
                target.setTo(b + runStart, p - runStart); // the whole value in one piece
            else
                target.append(b + runStart, p - runStart);
        }
        if (!replace)
            return;
        target.append(char16_t(' '));
    }
}

} // namespace detail
} // namespace ZkCommonNS
