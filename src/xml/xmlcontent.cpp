// The content half of the XML scanner: character data, CDATA sections, comments, processing
// instructions, the XML and text declarations and the DOCTYPE.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"

#include <cstdio>
#include <unicode/ustring.h>

namespace ZkCommonNS {
namespace detail {

namespace {
constexpr unsigned short kErrorUnexpectedCharacter = 140;
constexpr unsigned short kErrorTopLevelText = 142;
constexpr unsigned short kErrorUnexpectedMarkedSection = 143;
constexpr unsigned short kErrorCDataEnd = 144;
constexpr unsigned short kErrorCDataUnterminated = 145;
constexpr unsigned short kErrorCommentUnterminated = 146;
constexpr unsigned short kErrorDoctypeOutsideProlog = 148;
constexpr unsigned short kErrorSecondDoctype = 149;
constexpr unsigned short kErrorMissingWhitespaceAfter = 150;
constexpr unsigned short kErrorExternalId = 151;
constexpr unsigned short kErrorPubidLiteral = 152;
constexpr unsigned short kErrorSystemLiteral = 153;
constexpr unsigned short kErrorDeclarationEnd = 154;
constexpr unsigned short kErrorDoctypeName = 131;
constexpr unsigned short kErrorXmlDeclarationPlace = 161;
constexpr unsigned short kErrorMissingVersion = 162;
constexpr unsigned short kErrorDeclarationEquals = 163;
constexpr unsigned short kErrorDeclarationSpaceAfter = 164;
constexpr unsigned short kErrorDeclarationSpaceBefore = 165;
constexpr unsigned short kErrorVersion = 166;
constexpr unsigned short kErrorStandalone = 167;
constexpr unsigned short kErrorCDataSyntax = 168;
constexpr unsigned short kErrorCommentSyntax = 169;
constexpr unsigned short kErrorBang = 170;
constexpr unsigned short kErrorXmlCase = 171;
constexpr unsigned short kErrorPITarget = 172;
constexpr unsigned short kErrorPIUnterminated = 173;
constexpr unsigned short kErrorConflictEncoding = 185;
constexpr unsigned short kErrorUnknownEncoding = 181;
constexpr unsigned short kErrorDashesInComment = 771;
constexpr unsigned short kErrorDashesInCommentHtml = 899;
constexpr unsigned short kErrorCommentOpen = 897;

inline bool isSpace(UChar32 c) {
    return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
}

UnicodeString describe(UChar32 c) {
    char text[16];
    snprintf(text, sizeof text, "U+%04X (", unsigned(c));
    UnicodeString out(text, -1, US_INV);
    out.append(c).append(u')');
    return out;
}

bool isUtf16Family(ZkNameEnum id) {
    return id == ZKN_UTF_16 || id == ZKN_UTF_16BE || id == ZKN_UTF_16LE;
}

bool isUtf32Family(ZkNameEnum id) {
    return id == ZKN_UTF_32 || id == ZKN_UTF_32BE || id == ZKN_UTF_32LE;
}

/// XML's EncName: a letter, then letters, digits, ".", "_" and "-". A declaration that names
/// anything else is refused before it is looked up, even where trimming would repair it.
bool isEncodingName(const UnicodeString& name) {
    if (name.isEmpty())
        return false;
    for (int32_t i = 0; i < name.length(); ++i) {
        char16_t c = name[i];
        bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (!letter && (i == 0 || !((c >= '0' && c <= '9') || c == '.' || c == '_' || c == '-')))
            return false;
    }
    return true;
}

UnicodeString trimmed(const UnicodeString& text, int32_t start) {
    int32_t limit = text.length();
    while (start < limit && isSpace(text[start]))
        ++start;
    while (limit > start && isSpace(text[limit - 1]))
        --limit;
    return UnicodeString(text, start, limit - start);
}
} // namespace

void XmlScanner::scanText() {
    m_event = ZkXmlParser::TEXT;
    int32_t start = m_text.length();
    if (m_in.parserType == ZKN_text) {
        // An included text file: everything to its end is data.
        for (;;) {
            scanRun(m_text, 0, 0, /*value=*/false);
            UChar32 c = readChar();
            if (c == kEof)
                break;
            if (!appendChar(c))
                return;
        }
        popFrame();
        return;
    }
    bool topLevel = m_open.empty();
    bool raw = inRawText();
    for (;;) {
        if (!topLevel)
            scanRun(m_text, raw ? kStopRawText : kStopText, 0, /*value=*/false);
        int unit = peekUnit();
        if ((unit == '<' || (unit == '&' && !raw)) && m_text.length() > start)
            break; // markup follows, left in place
        UChar32 c = readChar();
        if (c == '<' && m_text.length() == start && (raw || isHtml())) {
            // The classifier sent "<" here: HTML's "<" before no name, or in raw text.
            if (raw && rawCData())
                continue;
            if (!appendChar(c))
                return;
            continue;
        }
        if ((c == '&' && !raw) || c == '<' || c == kEof) {
            pushBack(c);
            break;
        }
        if (raw) {
            if (!appendChar(c))
                return;
            continue;
        }
        if (c == ']') {
            // "]]>" may not stand in text; "]]" alone and a lone "]" are data.
            if (peekChar() == ']') {
                readChar();
                if (peekChar() == '>') {
                    report(kErrorCDataEnd, UnicodeString(), UnicodeString());
                } else {
                    pushBack(']');
                }
            }
        } else if (topLevel && !isSpace(c) && !isHtml()) {
            report(kErrorTopLevelText, describe(c), UnicodeString());
        }
        if (!appendChar(c))
            return;
    }
    if (int(m_open.size()) == m_in.baseDepth) {
        int32_t limit = m_text.length();
        int32_t i = start;
        while (i < limit && isSpace(m_text[i]))
            ++i;
        if (i == limit)
            m_event = ZkXmlParser::IGNORABLE_WHITESPACE;
        else if (isHtml() && !m_rootSeen)
            impliedByText(start); // kept as text, or pushed back for an implied html
        else
            report(kErrorTopLevelText, describe(m_text.char32At(i)), UnicodeString());
    } else if (m_open.size() == 1 && isHtml()) {
        impliedByText(start);
    }
}

bool XmlScanner::rawCData() {
    // "<" is read in raw text: a CDATA section is one only in MathML and SVG, after an XML
    // declaration, or in XHTML.
    ZkName ns = m_open.back().ns;
    if (!(m_hasXmlDecl || ns == ZKN_NS_MATHML || ns == ZKN_NS_SVG || isXhtml()))
        return false;
    static const char16_t kOpen[] = u"![CDATA[";
    UnicodeString seen;
    for (int i = 0; kOpen[i]; ++i) {
        UChar32 c = readChar();
        if (c != kEof)
            seen.append(c);
        if (c != kOpen[i]) {
            pushBackText(seen);
            return false;
        }
    }
    scanCData();
    m_event = ZkXmlParser::TEXT;
    return true;
}

void XmlScanner::scanCData() {
    m_event = ZkXmlParser::CDSECT;
    for (;;) {
        scanRun(m_text, kStopCData, 0, /*value=*/false);
        UChar32 c = readChar();
        if (c == kEof) {
            report(kErrorCDataUnterminated, UnicodeString(), UnicodeString());
            return;
        }
        if (c == ']' && peekChar() == ']') {
            readChar();
            if (peekChar() == '>') {
                readChar();
                return;
            }
            pushBack(']');
        }
        if (!appendChar(c))
            return;
    }
}

void XmlScanner::takeOwnText(int32_t start, bool trim) {
    if (trim)
        m_ownText = trimmed(m_text, start);
    else
        m_ownText.setTo(m_text, start);
    m_text.truncate(start);
    m_useOwnText = true;
}

void XmlScanner::scanComment() {
    m_event = ZkXmlParser::COMMENT;
    int32_t start = m_text.length();
    if (peekChar() == '>')
        report(kErrorCommentOpen, UnicodeString(u">"), UnicodeString());
    for (;;) {
        scanRun(m_text, kStopComment, 0, /*value=*/false);
        UChar32 c = readChar();
        if (c == kEof) {
            report(kErrorCommentUnterminated, UnicodeString(), UnicodeString());
            break;
        }
        if (c == '-' && peekChar() == '-') {
            readChar();
            if (peekChar() == '>') {
                readChar();
                break;
            }
            bool markup = isHtml() || isXhtml();
            report(markup ? kErrorDashesInCommentHtml : kErrorDashesInComment, UnicodeString(),
                   UnicodeString());
            appendChar('-');
            if (markup)
                appendChar('-'); // the doubled hyphen stays, with a third as data
            c = '-';
        }
        appendChar(c);
    }
    takeOwnText(start, /*trim=*/false);
}

void XmlScanner::scanProcessingInstruction() {
    ZkName target = readName();
    if (target == ZKN_xml) {
        scanXmlDeclaration();
        return;
    }
    m_event = ZkXmlParser::PROCESSING_INSTRUCTION;
    if (target.toString().caseCompare(u"xml", 0) == 0)
        report(kErrorXmlCase, target.toString(), UnicodeString());
    m_target = target;
    int32_t start = m_text.length();
    UChar32 c = readChar();
    if (c == '?' && peekChar() == '>') {
        readChar();
        takeOwnText(start, /*trim=*/true);
        return;
    }
    if (!isSpace(c) || target.isEmpty())
        report(kErrorPITarget, target.toString(), UnicodeString());
    for (;;) {
        scanRun(m_text, kStopPI, 0, /*value=*/false);
        c = readChar();
        if (c == kEof) {
            report(kErrorPIUnterminated, UnicodeString(), UnicodeString());
            break;
        }
        if (c == '?' && peekChar() == '>') {
            readChar();
            break;
        }
        m_text.append(c); // instruction data has no limit
    }
    takeOwnText(start, /*trim=*/true);
}

void XmlScanner::readDeclarationValue(const char16_t* name, UnicodeString& value) {
    skipWhitespace();
    if (readChar() != '=') {
        pushBack(kEof);
        report(kErrorDeclarationEquals, UnicodeString(name), UnicodeString());
    }
    skipWhitespace();
    readLiteral(LITERAL_PLAIN, value);
}

void XmlScanner::scanXmlDeclaration() {
    if (m_event != ZkXmlParser::START_DOCUMENT || m_hasXmlDecl)
        report(kErrorXmlDeclarationPlace, UnicodeString(), UnicodeString());
    if (!skipWhitespace())
        report(kErrorDeclarationSpaceAfter, UnicodeString(u"<?xml"), UnicodeString());
    UnicodeString value;
    if (readName() != ZKN_version)
        report(kErrorMissingVersion, UnicodeString(), UnicodeString());
    readDeclarationValue(u"<?xml version", value);
    if (value == u"1.1")
        setXml11(true);
    else if (value != u"1.0")
        report(kErrorVersion, value, UnicodeString());
    bool spaced = skipWhitespace();
    ZkName name = peekChar() == '?' ? ZkName() : readName();
    if (name == ZKN_encoding) {
        if (!spaced)
            report(kErrorDeclarationSpaceBefore, UnicodeString(u"encoding="), UnicodeString());
        readDeclarationValue(u"encoding", value);
        if (!isEncodingName(value))
            report(kErrorUnknownEncoding, value, UnicodeString());
        applyDeclaredEncoding(value);
        spaced = skipWhitespace();
        name = peekChar() == '?' ? ZkName() : readName();
    }
    if (name == ZKN_standalone) {
        if (!spaced)
            report(kErrorDeclarationSpaceBefore, UnicodeString(u"standalone="), UnicodeString());
        readDeclarationValue(u"standalone", value);
        if (value != u"yes" && value != u"no")
            report(kErrorStandalone, UnicodeString(), UnicodeString());
        skipWhitespace();
        name = ZkName();
    }
    if (!name.isEmpty())
        report(kErrorUnexpectedCharacter, name.toString(), UnicodeString());
    UChar32 c = readChar();
    if (c != '?' || peekChar() != '>')
        report(kErrorUnexpectedCharacter, UnicodeString(c), UnicodeString());
    readChar();
    m_hasXmlDecl = true;
    hintsChanged();
}

void XmlScanner::applyDeclaredEncoding(const UnicodeString& value) {
    bool mainStream = m_in.stream == m_in.underlying;
    ZkNameEnum before = m_in.encodingId;
    UnicodeString beforeName = m_in.encodingName;
    changeEncoding(value);
    if (!mainStream || m_in.encodingId == before)
        return;
    ZkNameEnum after = m_in.encodingId;
    if (m_in.bomSeen) {
        // A signature settles the encoding; the declaration may only name its family.
        bool agrees = isUtf16Family(before)   ? after == ZKN_UTF_16
                      : isUtf32Family(before) ? after == ZKN_UTF_32
                      : before == ZKN_UTF_8   ? after == ZKN_UTF_8
                                              : true;
        if (!agrees)
            report(kErrorConflictEncoding, value, UnicodeString());
    }
    if (isUtf16Family(before) || isUtf32Family(before)) {
        // Sniffing saw the unit size; a declaration cannot change it.
        m_in.conversion.reset();
        m_in.stream = m_in.underlying;
        setDecoder(before, beforeName);
    }
}

bool XmlScanner::readTextDeclaration() {
    static const char16_t kOpen[] = u"<?xml";
    UnicodeString seen;
    for (int i = 0; i < 5; ++i) {
        UChar32 c = readChar();
        if (c == kEof)
            break;
        seen.append(c);
        if (c != kOpen[i])
            break;
    }
    if (seen != kOpen || !isSpace(peekChar())) {
        pushBackText(seen);
        return false;
    }
    skipWhitespace();
    UnicodeString value;
    ZkName name = readName();
    if (name == ZKN_version) {
        readDeclarationValue(u"<?xml version", value);
        if (value == u"1.1")
            setXml11(true);
        skipWhitespace();
        name = readName();
    }
    if (name == ZKN_encoding) {
        readDeclarationValue(u"encoding", value);
        applyDeclaredEncoding(value);
        skipWhitespace();
        name = readName();
    }
    if (name == ZKN_standalone) {
        readDeclarationValue(u"standalone", value);
        skipWhitespace();
    }
    UChar32 c = readChar();
    if (c != '?' || peekChar() != '>')
        report(kErrorUnexpectedCharacter, UnicodeString(c), UnicodeString());
    readChar();
    return true;
}

void XmlScanner::scanBang() {
    UChar32 c = readChar();
    if (c == '[') {
        ZkName name = readName();
        if (name == ZKN_CDATA) {
            bool top = int(m_open.size()) == m_in.baseDepth;
            if (top && isHtml() && !m_rootSeen && m_open.empty()) {
                // HTML: a section before the root is content of an implied html.
                pushBackText(UnicodeString(u"<![CDATA"));
                m_firstElement = ZKN_html;
                hintsChanged();
                openImplied(ZKN_html);
                return;
            }
            if (top && (!isHtml() || m_rootSeen))
                report(kErrorUnexpectedMarkedSection, name.toString(), UnicodeString());
            if (readChar() != '[')
                report(kErrorCDataSyntax, UnicodeString(), UnicodeString());
            scanCData();
            return;
        }
        // A marked section other than CDATA has no place in a document.
        if (!isHtml())
            report(kErrorUnexpectedMarkedSection, name.toString(), UnicodeString());
        m_event = ZkXmlParser::COMMENT;
        for (UChar32 previous = 0;; previous = c) {
            c = readChar();
            if (c == kEof) {
                report(kErrorCDataUnterminated, UnicodeString(), UnicodeString());
                break;
            }
            if (previous == ']' && c == '>')
                break;
        }
        m_ownText.remove();
        m_useOwnText = true;
        return;
    }
    if (c == '-') {
        if (readChar() != '-')
            report(kErrorCommentSyntax, UnicodeString(), UnicodeString());
        scanComment();
        return;
    }
    pushBack(c);
    ZkName name = readName();
    if (name == ZKN_DOCTYPE) {
        scanDoctype();
        return;
    }
    if (!name.isEmpty() && !m_hasXmlDecl && m_parserType != ZKN_xml &&
        name.toString().caseCompare(u"DOCTYPE", 0) == 0) {
        // "<!doctype html" in any case: white space and the name html must follow.
        UnicodeString seen;
        UChar32 space = readChar();
        if (isSpace(space)) {
            seen.append(space);
            while (isSpace(c = readChar()))
                seen.append(c);
            pushBack(c);
            ZkName root = readName();
            seen.append(root.toString());
            pushBackText(seen);
            if (!root.isEmpty() && root.toString().caseCompare(u"html", 0) == 0) {
                scanDoctype();
                return;
            }
        } else {
            pushBack(space);
        }
    }
    report(kErrorBang, name.toString(), UnicodeString());
    m_event = ZkXmlParser::COMMENT;
    m_ownText.remove();
    m_useOwnText = true;
}

void XmlScanner::readExternalId(const UnicodeString& head) {
    // After the root name and white space: SYSTEM or PUBLIC with their literals; with the
    // DOCTYPE name html the keywords may come in any case.
    ZkName keyword = readName();
    UnicodeString word = keyword.toString();
    if (m_doctypeName == ZKN_html)
        word.toUpper();
    bool isPublic = word == UnicodeString(u"PUBLIC");
    if (!isPublic && word != UnicodeString(u"SYSTEM")) {
        if (!keyword.isEmpty())
            report(kErrorExternalId, head, UnicodeString());
        return;
    }
    UnicodeString said = head + u" " + word;
    if (!skipWhitespace())
        report(kErrorMissingWhitespaceAfter, said, UnicodeString());
    if (isPublic) {
        UChar32 quote = peekChar();
        if (quote != '"' && quote != '\'')
            report(kErrorPubidLiteral, said, UnicodeString());
        readLiteral(LITERAL_PLAIN, m_pubid);
        for (int32_t i = 0; i < m_pubid.length(); ++i) {
            char16_t c = m_pubid[i];
            bool pubidChar = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                             (c >= '0' && c <= '9') || u_strchr(u" \r\n-'()+,./:=?;!*#@$_%", c);
            if (!pubidChar) {
                report(kErrorPubidLiteral, said, UnicodeString());
                break;
            }
        }
        // ">" ends the identifiers at once (HTML writes a public identifier alone); a system
        // literal follows white space.
        if (peekChar() == '>')
            return;
        if (!skipWhitespace()) {
            report(kErrorMissingWhitespaceAfter, said + u" \"" + m_pubid + u"\"", UnicodeString());
            return;
        }
        UChar32 next = peekChar();
        if (next == '"' || next == '\'')
            readLiteral(LITERAL_PLAIN, m_systemId);
        return;
    }
    UChar32 quote = peekChar();
    if (quote != '"' && quote != '\'') {
        report(kErrorSystemLiteral, said, UnicodeString());
        return;
    }
    readLiteral(LITERAL_PLAIN, m_systemId);
}

void XmlScanner::scanDoctype() {
    m_event = ZkXmlParser::DOCDECL;
    // After the root only a DOCTYPE of a pushed input that already had one passes on to the
    // next test.
    if (m_rootSeen && (!m_doctypeSeen || m_frames.empty()))
        report(kErrorDoctypeOutsideProlog, UnicodeString(), UnicodeString());
    if (m_doctypeSeen)
        report(kErrorSecondDoctype, UnicodeString(), UnicodeString());
    m_doctypeSeen = true;
    if (!skipWhitespace())
        report(kErrorMissingWhitespaceAfter, UnicodeString(u"<!DOCTYPE"), UnicodeString());
    ZkName prefix;
    ZkName local;
    bool colonOnly = false;
    if (!readQName(prefix, local, colonOnly) || colonOnly)
        report(kErrorDoctypeName, UnicodeString(), UnicodeString());
    m_ownText = prefix.isEmpty() ? local.toString() : prefix.toString() + u":" + local.toString();
    m_useOwnText = true;
    m_doctypeName = ZkName(UnicodeString(m_ownText).toLower());
    UnicodeString head = UnicodeString(u"<!DOCTYPE ") + m_ownText;
    UChar32 next = peekChar();
    if (skipWhitespace())
        readExternalId(head);
    else if (next != '[' && next != '>' && next != kEof)
        report(kErrorMissingWhitespaceAfter, head, UnicodeString());
    skipWhitespace();
    if (peekChar() == '[') {
        readChar();
        m_includeDepth = 0;
        scanSubset(/*external=*/false);
    }
    skipWhitespace();
    UChar32 c = readChar();
    if (c == kEof)
        report(kErrorDeclarationEnd, UnicodeString(u"DOCTYPE"), UnicodeString());
    else if (c != '>')
        report(kErrorUnexpectedCharacter, UnicodeString(c), UnicodeString());
    hintsChanged();
    applyDoctypeIdentifiers();
}

} // namespace detail
} // namespace ZkCommonNS
