// Quoted values and references of the XML scanner: attribute values with their references
// expanded, plain literals, character references and entity references.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"

#include <cstdint>
#include <string>
#include <unicode/utf16.h>

namespace ZkCommonNS {
namespace detail {

namespace {
constexpr unsigned short kErrorTopLevelText = 142;
constexpr unsigned short kErrorEmptyEntityName = 155;
constexpr unsigned short kErrorEntityReference = 156;
constexpr unsigned short kErrorMissingQuote = 174;
constexpr unsigned short kErrorLiteralEnd = 175;
constexpr unsigned short kErrorLessThanInValue = 176;
constexpr unsigned short kErrorSpaceInCharRef = 177;
constexpr unsigned short kErrorCharRef = 178;
constexpr unsigned short kErrorInvalidUnicode = 179;
constexpr unsigned short kErrorLoopedEntity = 184;
constexpr unsigned short kErrorHugeText = 190;
constexpr unsigned short kErrorUndefinedEntity = 515;
constexpr unsigned short kErrorExternalEntity = 516;

inline bool isSpace(UChar32 c) {
    return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
}

UnicodeString charText(UChar32 c) {
    return c == kEof ? UnicodeString() : UnicodeString(c);
}
} // namespace

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
    if (c == 'x' || (c == 'X' && isHtml())) {
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
    if ((c != ';' || count == 0) && isHtml()) {
        // HTML: the digits read stand without ";"; with none the text is kept as it stood.
        pushBack(c);
        if (count == 0)
            return kEof;
    } else if (c != ';' || count == 0) {
        pushBack(c);
        report(isSpace(c) ? kErrorSpaceInCharRef : kErrorCharRef, digits, UnicodeString());
        return kEof;
    }
    // XML 1.1 lets references name the restricted controls that may not stand literally.
    bool restricted11 = (value >= 0x01 && value < 0x20) || (value >= 0x7F && value <= 0x9F);
    bool valid =
        value <= 0x10FFFF && (m_xml11 ? ZkChar::isValidChar11(UChar32(value)) || restricted11
                                      : ZkChar::isValidChar(UChar32(value)));
    valid = valid || (value == 0x0C && m_setLoaded[kEntitySetHtml]);
    if (!valid && !m_features[ZkXmlParser::FEATURE_NO_CHAR_CHECK])
        report(kErrorInvalidUnicode, UnicodeString(u"&#") + digits, UnicodeString());
    ok = true;
    return value <= 0x10FFFF ? UChar32(value) : 0xFFFD;
}

void XmlScanner::readReference(UnicodeString* out) {
    if (!out && int(m_open.size()) == m_in.baseDepth && (!isHtml() || m_rootSeen)) {
        // A reference is content: outside the root element it is text at the top level.
        report(kErrorTopLevelText, UnicodeString(u"&"), UnicodeString());
    }
    // A reference begun in an entity's text ends there: one that runs past the end of the
    // expansion is broken.
    size_t expansions = m_expanding.size();
    UChar32 c = peekChar(); // a name is read in place when it can be
    if (c == '#') {
        readChar();
        UnicodeString digits;
        bool ok = false;
        UChar32 value = readCharReference(digits, ok);
        if (!ok && isHtml()) {
            htmlLiteral(out, UnicodeString(u"&#") + digits);
            return;
        }
        if (!ok)
            return;
        if (m_expanding.size() < expansions) {
            report(kErrorCharRef, digits, UnicodeString());
            return;
        }
        if (out) {
            out->append(value);
        } else {
            m_event = ZkXmlParser::ENTITY_REF;
            m_entityName = ZkName();
            appendChar(value);
        }
        return;
    }
    ZkName name = readName();
    if (name.isEmpty() && isHtml()) {
        htmlLiteral(out, UnicodeString(u"&"));
        return;
    }
    if (name.isEmpty()) {
        report(kErrorEmptyEntityName, UnicodeString(), UnicodeString());
        return;
    }
    c = readChar();
    if (isHtml() && !htmlReference(out, name, c))
        return;
    if (c != ';' || m_expanding.size() < expansions) {
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
    const UnicodeString* found = findEntity(name);
    if (!found) {
        reportUndefined(name);
        return;
    }
    expandInto(name, *found, *out);
}

void XmlScanner::reportUndefined(ZkName name) {
    auto outer = m_externalEntities.find(name.getEnum());
    if (outer != m_externalEntities.end()) {
        // An attribute value cannot take the text of an external entity.
        report(kErrorExternalEntity, outer->second, UnicodeString());
        return;
    }
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
            const UnicodeString* found = findEntity(inner);
            if (!found) {
                reportUndefined(inner);
                continue;
            }
            stack.push_back(Level{inner, found, 0});
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
