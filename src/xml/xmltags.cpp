// The tag half of the XML scanner: the classifier, names, start and end tags, attributes and
// namespace declarations, attribute values and references.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"
#include "zkcommon/xml/xmlutil.h"

#include <cstring>
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
constexpr unsigned short kErrorTopLevelText = 142;
constexpr unsigned short kErrorEmptyEntityName = 155;
constexpr unsigned short kErrorEntityReference = 156;
constexpr unsigned short kErrorMissingQuote = 174;
constexpr unsigned short kErrorLiteralEnd = 175;
constexpr unsigned short kErrorLessThanInValue = 176;
constexpr unsigned short kErrorSpaceInCharRef = 177;
constexpr unsigned short kErrorCharRef = 178;
constexpr unsigned short kErrorInvalidUnicode = 179;
constexpr unsigned short kErrorInvalidCharacter = 180;
constexpr unsigned short kErrorUnclosedTag = 183;
constexpr unsigned short kErrorLoopedEntity = 184;
constexpr unsigned short kErrorHugeText = 190;
constexpr unsigned short kErrorUndefinedEntity = 515;
constexpr unsigned short kErrorHtmlCharacter = 769;
constexpr unsigned short kErrorSlashWhitespace = 770;
constexpr unsigned short kErrorSlashCharacter = 897;
constexpr unsigned short kErrorSlashWhitespaceXhtml = 898;
/// Attribute records that are searched pairwise for duplicates; more go through a hash set.
constexpr int kLinearDuplicateCheck = 8;

inline bool isSpace(UChar32 c) {
    return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
}

UnicodeString charText(UChar32 c) {
    return c == kEof ? UnicodeString() : UnicodeString(c);
}

constexpr uint8_t classOf(int c) {
    return uint8_t(((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'
                        ? kNameStart | kNameChar
                    : (c >= '0' && c <= '9') || c == '-' || c == '.' ? kNameChar
                                                                     : 0) |
                   (c == '<' || c == '&' ? kStopText | kStopValue : 0) |
                   (c == ']' ? kStopText | kStopCData : 0) | (c == '-' ? kStopComment : 0) |
                   (c == '?' ? kStopPI : 0));
}

} // namespace

// clang-format off
const uint8_t kAsciiClass[128] = {
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

ZkName NameCache::intern(const char16_t* text, int32_t length) {
    if (length > kMaxLength)
        return ZkName(UnicodeString(text, length));
    uint32_t hash = 2166136261u;
    for (int32_t i = 0; i < length; ++i)
        hash = (hash ^ text[i]) * 16777619u;
    if (!m_slots)
        m_slots.reset(new Slot[kSlots]);
    Slot& slot = m_slots[hash & (kSlots - 1)];
    if (slot.hash == hash && slot.length == length &&
        memcmp(slot.text, text, size_t(length) * 2) == 0)
        return slot.name;
    ZkName name(UnicodeString(text, length));
    slot.hash = hash;
    slot.length = length;
    slot.name = name.getEnum();
    memcpy(slot.text, text, size_t(length) * 2);
    return name;
}

int XmlScanner::peekUnit() const {
    const InputState& in = m_in;
    if (in.pos < in.end && in.pos >= in.rawLimit) {
        char16_t c = in.chars[in.pos];
        if (c >= 0x20 && c < m_fastLimit)
            return c;
    }
    return -1;
}

UChar32 XmlScanner::peekChar() {
    int unit = peekUnit();
    if (unit >= 0)
        return unit;
    UChar32 c = readChar();
    pushBack(c);
    return c;
}

int XmlScanner::classify() {
    if (m_peek >= PEEK_START_TAG)
        return m_peek;
    int kind;
    int unit = peekUnit();
    if (m_in.parserType == ZKN_text) {
        kind = peekChar() == kEof && m_in.atEnd ? PEEK_EOF : PEEK_TEXT;
    } else if (unit >= 0 && unit != '<' && unit != '&') {
        kind = PEEK_TEXT; // the common case, read in place
    } else {
        UChar32 c = readChar();
        if (c == '&') {
            kind = PEEK_REFERENCE;
        } else if (c == '<') {
            UChar32 second = peekChar();
            if (second == '!' || second == '/' || second == '?') {
                readChar();
                kind = second == '!' ? PEEK_BANG : second == '/' ? PEEK_END_TAG : PEEK_PI;
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
    for (;;) {
        int unit = peekUnit();
        if (unit == ' ' || unit == '\t') {
            ++m_in.pos;
            ++m_in.column;
            skipped = true;
            continue;
        }
        if (unit >= 0)
            return skipped;
        UChar32 c = readChar();
        if (!isSpace(c)) {
            pushBack(c);
            return skipped;
        }
        skipped = true;
    }
}

ZkName XmlScanner::readName() {
    InputState& in = m_in;
    if (in.pos >= in.rawLimit && in.pos < in.end) {
        const char16_t* b = in.chars.get();
        int32_t p = in.pos;
        char16_t c = b[p];
        if (c < 0x80 && (kAsciiClass[c] & kNameStart)) {
            int32_t q = p + 1;
            int32_t e = in.end;
            while (q < e && b[q] < 0x80 && (kAsciiClass[b[q]] & kNameChar))
                ++q;
            if (q < e && b[q] < 0x80) {
                in.pos = q;
                in.column += q - p;
                return m_names.intern(b + p, q - p);
            }
        }
    }
    return readNameSlow();
}

ZkName XmlScanner::readNameSlow() {
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
    return m_names.intern(m_scratch.getBuffer(), m_scratch.length());
}

bool XmlScanner::readQName(ZkName& prefix, ZkName& local, bool& colonWithoutLocal) {
    colonWithoutLocal = false;
    prefix = ZkName();
    local = readName();
    if (local.isEmpty())
        return false;
    if (peekChar() == ':') {
        readChar();
        prefix = local;
        local = readName();
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
    if (isSpace(peekChar()))
        report(kErrorUnexpectedWhitespace, UnicodeString(u"<"), UnicodeString());
    ZkName prefix;
    ZkName local;
    bool colonOnly = false;
    if (!readQName(prefix, local, colonOnly) || colonOnly) {
        report(kErrorStartTagName, UnicodeString(), UnicodeString());
        if (local.isEmpty())
            local = prefix;
    }
    if (m_firstElement.isEmpty())
        m_firstElement = local;
    m_in.rootSeenHere = true;
    // A hook for HTML's implied elements goes here, before the scope opens.
    OpenElement element;
    element.prefix = prefix;
    element.local = local;
    element.bindingStart = int32_t(m_bindings.size());
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
    for (;;) {
        bool spaced = skipWhitespace();
        UChar32 c = peekChar();
        if (c == '>' || c == '/')
            return;
        if (c == kEof) {
            report(kErrorUnclosedTag, openQName(), UnicodeString());
            return;
        }
        if (!spaced && !isHtml())
            return; // the tag end reports what stands here
        ZkName prefix;
        ZkName local;
        bool colonOnly = false;
        if (!readQName(prefix, local, colonOnly)) {
            c = readChar();
            report(isHtml() ? kErrorHtmlCharacter : kErrorUnexpectedCharacter, charText(c),
                   UnicodeString());
            continue;
        }
        if (colonOnly)
            report(kErrorAttributeName, prefix.toString() + u":", UnicodeString());
        skipWhitespace();
        c = readChar();
        if (m_attributeCount == int(m_attributes.size()))
            m_attributes.emplace_back();
        Attribute& attribute = m_attributes[size_t(m_attributeCount)];
        attribute.prefix = prefix;
        attribute.local = local;
        attribute.ns = ZkName();
        attribute.value.remove();
        if (c != '=') {
            pushBack(c);
            report(kErrorMissingEquals, UnicodeString(), UnicodeString());
        } else {
            skipWhitespace();
            c = readChar();
            if (c == '"' || c == '\'') {
                readAttributeValue(char16_t(c), attribute.value);
            } else {
                pushBack(c);
                report(kErrorMissingQuote, UnicodeString(), UnicodeString());
            }
        }
        ++m_attributeCount;
        if (prefix == ZKN_xmlns) {
            declareNamespace(local, ZkName(attribute.value));
            attribute.ns = ZKN_NS_XMLNS;
        } else if (prefix.isEmpty() && local == ZKN_xmlns) {
            declareNamespace(ZkName(), ZkName(attribute.value));
            attribute.ns = ZKN_NS_XMLNS;
        }
    }
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
    if (root || (isHtml() && element.prefix.isEmpty())) {
        // Chart, MathML and SVG roots need no declaration of their namespace.
        ZkName implied;
        if (element.local == ZKN_chart)
            implied = ZKN_NS_CHARTML;
        else if (element.local == ZKN_math)
            implied = ZKN_NS_MATHML;
        else if (element.local == ZKN_svg)
            implied = ZKN_NS_SVG;
        if (!implied.isEmpty() && element.prefix.isEmpty() && resolvePrefix(ZkName()).isEmpty())
            declareNamespace(ZkName(), implied);
        if ((implied == ZKN_NS_CHARTML || implied == ZKN_NS_SVG) &&
            resolvePrefix(ZKN_xlink).isEmpty())
            declareNamespace(ZKN_xlink, ZKN_NS_XLINK);
    }
    element.ns = resolvePrefix(element.prefix);
    if (!element.prefix.isEmpty() && element.ns.isEmpty() && !isHtml() &&
        !m_features[ZkXmlParser::FEATURE_LAX_ELEMENT_PREFIX])
        report(kErrorUndeclaredPrefix, element.prefix.toString(), UnicodeString());
    if (root) {
        m_rootSeen = true;
        m_rootNamespace = element.ns;
    }
    // Attribute namespaces, then duplicates by (local name, namespace).
    bool lax = m_features[ZkXmlParser::FEATURE_LAX_ATTRIBUTE_PREFIX] || isHtml();
    for (int i = 0; i < m_attributeCount; ++i) {
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
        for (int i = 1; i < m_attributeCount; ++i) {
            const Attribute& attribute = m_attributes[size_t(i)];
            for (int j = 0; j < i; ++j) {
                const Attribute& earlier = m_attributes[size_t(j)];
                if (earlier.local == attribute.local && earlier.ns == attribute.ns)
                    report(kErrorDuplicateAttribute,
                           qualifiedName(attribute.prefix, attribute.local), UnicodeString());
            }
        }
    } else {
        // Many attributes: one hash probe each instead of a pairwise search.
        m_attributeKeys.clear();
        for (int i = 0; i < m_attributeCount; ++i) {
            const Attribute& attribute = m_attributes[size_t(i)];
            uint64_t key = (uint64_t(uint32_t(attribute.local.getEnum())) << 32) |
                           uint32_t(attribute.ns.getEnum());
            if (!m_attributeKeys.insert(key).second)
                report(kErrorDuplicateAttribute, qualifiedName(attribute.prefix, attribute.local),
                       UnicodeString());
        }
    }
}

void XmlScanner::declareNamespace(ZkName prefix, ZkName uri) {
    if (resolvePrefix(prefix) == uri)
        return; // an outer scope says the same
    auto found = m_prefixTop.find(prefix.getEnum());
    int32_t previous = found == m_prefixTop.end() ? -1 : found->second;
    m_prefixTop[prefix.getEnum()] = int32_t(m_bindings.size());
    m_bindings.push_back(NsBinding{prefix, uri, previous});
}

ZkName XmlScanner::resolvePrefix(ZkName prefix) const {
    if (prefix == ZKN_xml)
        return ZKN_NS_XML;
    if (prefix == ZKN_xmlns)
        return ZKN_NS_XMLNS;
    auto found = m_prefixTop.find(prefix.getEnum());
    return found == m_prefixTop.end() ? ZkName() : m_bindings[size_t(found->second)].uri;
}

void XmlScanner::closeElement() {
    if (m_open.empty())
        return;
    int32_t start = m_open.back().bindingStart;
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

void XmlScanner::scanEndTag() {
    m_event = ZkXmlParser::END_TAG;
    if (isSpace(peekChar()))
        report(kErrorUnexpectedWhitespace, UnicodeString(u"</"), UnicodeString());
    ZkName prefix;
    ZkName local;
    bool colonOnly = false;
    if (!readQName(prefix, local, colonOnly) || colonOnly)
        report(kErrorEndTagName, UnicodeString(), UnicodeString());
    if (m_open.empty() || int(m_open.size()) <= m_in.baseDepth || m_open.back().prefix != prefix ||
        m_open.back().local != local) {
        UnicodeString open = m_open.empty() ? UnicodeString() : openQName();
        // A hook for HTML's end tag recovery goes here.
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

void XmlScanner::scanRun(UnicodeString& target, uint8_t stops, char16_t quote, bool value) {
    InputState& in = m_in;
    while (in.pos >= in.rawLimit && in.pos < in.end) {
        const char16_t* b = in.chars.get();
        int32_t p = in.pos;
        int32_t e = in.end;
        int32_t runStart = p;
        int32_t lineStart = p;
        int columnBase = in.column;
        char16_t replace = 0;
        for (; p < e; ++p) {
            char16_t c = b[p];
            if (c < 0x80) {
                uint8_t cls = kAsciiClass[c];
                if ((cls & stops) || c == quote)
                    break;
                if (c < 0x20) {
                    if (c == '\n') {
                        ++in.line;
                        lineStart = p + 1;
                        columnBase = 0;
                        if (value) {
                            replace = ' ';
                            break;
                        }
                    } else if (c == '\t') {
                        if (value) {
                            replace = ' ';
                            break;
                        }
                    } else {
                        break; // U+000D and the controls take the slow way
                    }
                }
            } else if (c >= m_fastLimit) {
                break;
            }
        }
        in.column = columnBase + (p - lineStart) + (replace ? 1 : 0);
        in.pos = replace ? p + 1 : p;
        if (&target == &m_text) {
            if (p > runStart && !appendText(b + runStart, p - runStart))
                return;
        } else if (p > runStart) {
            target.append(b + runStart, p - runStart);
        }
        if (!replace)
            return;
        target.append(replace);
    }
}

void XmlScanner::readAttributeValue(char16_t quote, UnicodeString& out) {
    for (;;) {
        scanRun(out, kStopValue, quote, /*value=*/true);
        UChar32 c = readChar();
        if (c == quote)
            return;
        switch (c) {
        case kEof:
            if (m_in.atEnd) {
                report(kErrorLiteralEnd, UnicodeString(quote), UnicodeString());
                return;
            }
            break;
        case '&':
            readReference(&out);
            continue;
        case '<':
            if (!isHtml())
                report(kErrorLessThanInValue, UnicodeString(), UnicodeString());
            break;
        case 0x09:
        case 0x0A:
        case 0x0D:
            c = 0x20;
            break;
        default:
            break;
        }
        out.append(c);
    }
}

void XmlScanner::readLiteral(LiteralMode mode, UnicodeString& out) {
    out.remove();
    UChar32 quote = readChar();
    if (quote != '"' && quote != '\'') {
        pushBack(quote);
        report(kErrorMissingQuote, UnicodeString(), UnicodeString());
        return;
    }
    if (mode == LITERAL_ATTRIBUTE) {
        readAttributeValue(char16_t(quote), out);
        return;
    }
    for (;;) {
        UChar32 c = readChar();
        if (c == quote)
            return;
        if (c == kEof) {
            report(kErrorLiteralEnd, UnicodeString(quote), UnicodeString());
            return;
        }
        out.append(c);
    }
}

UChar32 XmlScanner::readCharReference(UnicodeString& digits, bool& ok) {
    // "&#" has been read.
    ok = false;
    digits.remove();
    UChar32 c = readChar();
    int base = 10;
    if (c == 'x') {
        base = 16;
        digits.append(c);
        c = readChar();
    }
    uint32_t value = 0;
    int count = 0;
    for (;; c = readChar()) {
        int digit = c >= '0' && c <= '9'                 ? c - '0'
                    : base == 16 && c >= 'a' && c <= 'f' ? c - 'a' + 10
                    : base == 16 && c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                         : -1;
        if (digit < 0)
            break;
        value = value * uint32_t(base) + uint32_t(digit); // 32 bits, wrapping as it goes
        digits.append(c);
        ++count;
    }
    if (c != ';' || count == 0) {
        pushBack(c);
        report(isSpace(c) ? kErrorSpaceInCharRef : kErrorCharRef, digits, UnicodeString());
        return kEof;
    }
    bool valid = value <= 0x10FFFF &&
                 (m_xml11 ? ZkChar::isValidChar11(UChar32(value)) || (value >= 1 && value < 0x20)
                          : ZkChar::isValidChar(UChar32(value)));
    if (!valid && !m_features[ZkXmlParser::FEATURE_NO_CHAR_CHECK])
        report(kErrorInvalidUnicode, UnicodeString(u"&#") + digits, UnicodeString());
    ok = true;
    return value <= 0x10FFFF ? UChar32(value) : 0xFFFD;
}

void XmlScanner::readReference(UnicodeString* out) {
    if (!out && int(m_open.size()) == m_in.baseDepth && !isHtml()) {
        // A reference is content: outside the root element it is text at the top level.
        report(kErrorTopLevelText, UnicodeString(u"&"), UnicodeString());
    }
    UChar32 c = readChar();
    if (c == '#') {
        UnicodeString digits;
        bool ok = false;
        UChar32 value = readCharReference(digits, ok);
        if (!ok)
            return;
        if (out) {
            out->append(value);
        } else {
            m_event = ZkXmlParser::ENTITY_REF;
            m_entityName = ZkName();
            appendChar(value);
        }
        return;
    }
    pushBack(c);
    ZkName name = readName();
    if (name.isEmpty()) {
        report(kErrorEmptyEntityName, UnicodeString(), UnicodeString());
        return;
    }
    c = readChar();
    if (c != ';') {
        pushBack(c);
        report(kErrorEntityReference, UnicodeString(u"&") + name.toString() + charText(c),
               UnicodeString());
        return;
    }
    if (!out) {
        m_event = ZkXmlParser::ENTITY_REF;
        m_entityName = name;
        return;
    }
    auto found = m_entities.find(name.getEnum());
    if (found == m_entities.end()) {
        reportUndefined(name);
        return;
    }
    expandInto(name, found->second, *out);
}

void XmlScanner::reportUndefined(ZkName name) {
    if (m_features[ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY])
        return;
    if (m_reportedEntities.insert(name.getEnum()).second)
        report(kErrorUndefinedEntity, name.toString(), UnicodeString());
}

void XmlScanner::expandInto(ZkName name, const UnicodeString& replacement, UnicodeString& out) {
    // Replacement text in a value: references in it expand in turn, by an explicit stack, and
    // an entity met again inside its own expansion is a loop.
    struct Level {
        ZkName name;
        const UnicodeString* text;
        int32_t index;
    };
    std::vector<Level> stack;
    stack.push_back(Level{name, &replacement, 0});
    int64_t limit = m_hugeTextLimit > 0 ? m_hugeTextLimit : INT64_MAX;
    while (!stack.empty()) {
        Level& level = stack.back();
        const UnicodeString& text = *level.text;
        if (level.index >= text.length()) {
            stack.pop_back();
            continue;
        }
        UChar32 c = text.char32At(level.index);
        level.index += U16_LENGTH(c);
        if (c == '&') {
            int32_t semicolon = text.indexOf(u';', level.index);
            if (semicolon < 0) {
                report(kErrorEntityReference, UnicodeString(u"&"), UnicodeString());
                return;
            }
            UnicodeString body(text, level.index, semicolon - level.index);
            level.index = semicolon + 1;
            if (body.startsWith(u"#")) {
                bool hex = body.length() > 1 && body[1] == 'x';
                std::string digits;
                UnicodeString(body, hex ? 2 : 1).toUTF8String(digits);
                char* stop = nullptr;
                unsigned long value = strtoul(digits.c_str(), &stop, hex ? 16 : 10);
                if (digits.empty() || *stop || value > 0x10FFFF ||
                    !ZkChar::isValidChar(UChar32(value))) {
                    report(kErrorInvalidUnicode, UnicodeString(u"&") + body, UnicodeString());
                    value = 0xFFFD;
                }
                out.append(UChar32(value));
                continue;
            }
            ZkName inner(body);
            for (const Level& open : stack) {
                if (open.name == inner) {
                    report(kErrorLoopedEntity, body, UnicodeString());
                    return;
                }
            }
            auto found = m_entities.find(inner.getEnum());
            if (found == m_entities.end()) {
                reportUndefined(inner);
                continue;
            }
            stack.push_back(Level{inner, &found->second, 0});
            continue;
        }
        if (c == '<') {
            report(kErrorLessThanInValue, UnicodeString(), UnicodeString());
        } else if (c == 0x09 || c == 0x0A || c == 0x0D) {
            c = 0x20;
        }
        out.append(c);
        if (out.length() > limit) {
            report(kErrorHugeText, UnicodeString(), UnicodeString());
            return;
        }
    }
}

} // namespace detail
} // namespace ZkCommonNS
