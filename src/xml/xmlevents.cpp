// The event engine of the XML scanner: nextToken, the coalescing next, the end of the
// document, the text gate and the one reporting route.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"

#include <algorithm>
#include <iterator>

namespace ZkCommonNS {
namespace detail {

namespace {
constexpr unsigned short kErrorStopped = 128;
constexpr unsigned short kErrorMissingEndTag = 129;
constexpr unsigned short kErrorUndefinedEntity = 515;
constexpr unsigned short kErrorLoopedEntity = 184;
constexpr unsigned short kErrorExternalEntity = 516;
constexpr unsigned short kErrorHugeText = 190;
constexpr int kCommentLimit = 100000000;

/// The fatal twin of a code when no callback hears it.
unsigned short fatalTwin(unsigned short code) {
    switch (code) {
    case 897:
        return 140;
    case 898:
        return 141;
    case 513:
        return 134;
    case 514:
        return 157;
    case 515:
        return 158;
    case 516:
        return 188;
    case 520:
        return 184;
    default:
        return code;
    }
}
} // namespace

UChar32 XmlScanner::plainReplacement(const UnicodeString& text) {
    if (text.length() == 1) {
        char16_t c = text[0];
        return c >= 0x20 && c < 0xD800 && c != '&' && c != '<' && c != ']' ? c : -1;
    }
    if (text.length() == 5 && text[0] == '&' && text[1] == '#' && text[4] == ';' &&
        text[2] == '3' && text[3] == '8')
        return '&';
    if (text.length() == 5 && text[0] == '&' && text[1] == '#' && text[4] == ';' &&
        text[2] == '6' && text[3] == '0')
        return '<';
    return -1;
}

XmlScanner::XmlScanner(ZkXmlParserImpl& owner, const ZkUri::ContentInfo* info)
    : m_owner(owner), m_parserType(ZKN_auto), m_defaultType(ZKN_html) {
    if (info)
        m_info = std::make_unique<ZkUri::ContentInfo>(info);
    for (auto& row : m_attributeSlots)
        std::fill(std::begin(row), std::end(row), -1);
    reset();
}

XmlScanner::~XmlScanner() {
    closeStream();
    delete static_cast<const EntityMapSnapshot*>(m_mathSnapshot);
}

void XmlScanner::report(unsigned short code, const UnicodeString& arg1, const UnicodeString& arg2) {
    int peek = m_peek;
    m_peek = PEEK_COMPOSING; // nothing may classify while the message is built
    UnicodeString message = ZkXmlParserImpl::getErrorMessage(code, arg1, arg2);
    m_peek = peek;
    if (m_callback) {
        ZkError error(code, message, UnicodeString(), m_in.line, m_in.column, m_in.inputUri);
        m_callback(error, m_callbackData);
        if (getErrorLevel(code) == ZK_ERROR_LEVEL_FATAL)
            throw ZkError(kErrorStopped, UnicodeString(), UnicodeString(), -1, -1, UnicodeString());
        return;
    }
    UnicodeString description = positionDescription();
    if (!description.isEmpty())
        message.append(u'\n').append(description);
    unsigned short twin = fatalTwin(code);
    bool positioned = !description.isEmpty();
    ZkError error(twin, message, UnicodeString(), positioned ? m_in.line : -1,
                  positioned ? m_in.column : -1, m_in.inputUri);
    if (!(twin & 0x200))
        throw error;
    m_errors.push_back(error);
}

UnicodeString XmlScanner::positionDescription() const {
    if (m_features[ZkXmlParser::FEATURE_NO_POSITION])
        return UnicodeString();
    UnicodeString out = ZkXmlParser::getEventName(m_event);
    const UnicodeString& uri = !m_in.inputUri.isEmpty() ? m_in.inputUri : m_in.baseUri;
    if (!uri.isEmpty())
        out.append(u", '").append(uri).append(u'\'');
    if (m_in.line >= 0) {
        out.append(u", Line ");
        out += UnicodeString(std::to_string(m_in.line).c_str(), -1, US_INV);
    }
    if (m_in.column >= 0) {
        out.append(u", Col ");
        out += UnicodeString(std::to_string(m_in.column).c_str(), -1, US_INV);
    }
    out.append(u'.');
    return out;
}

void XmlScanner::checkTextLimit(int32_t adding) {
    (void)adding;
    report(kErrorHugeText, UnicodeString(), UnicodeString());
}

bool XmlScanner::appendText(const char16_t* text, int32_t length) {
    int limit = m_hugeTextLimit;
    if (limit > 0) {
        if (m_event == ZkXmlParser::COMMENT) {
            int32_t room = (limit > kCommentLimit ? limit : kCommentLimit) - m_text.length() + 1;
            if (room <= 0)
                return false; // a comment past its limit loses the rest silently
            if (length > room)
                length = room;
        } else if (m_text.length() + length > limit + 1) {
            int32_t room = limit + 1 - m_text.length();
            if (room > 0)
                m_text.append(text, room);
            report(kErrorHugeText, UnicodeString(), UnicodeString());
            return false;
        }
    }
    m_text.append(text, length);
    return true;
}

bool XmlScanner::appendChar(UChar32 c) {
    char16_t units[2];
    int32_t length = 0;
    U16_APPEND_UNSAFE(units, length, c);
    return appendText(units, length);
}

const UnicodeString& XmlScanner::text() const {
    if (m_useOwnText)
        return m_ownText;
    if (!m_cachedValid) {
        if (m_event == ZkXmlParser::ENTITY_REF && !m_entityName.isEmpty()) {
            const UnicodeString* found = findEntity(m_entityName);
            m_cachedText = found ? *found : UnicodeString();
        } else {
            // One copy into the cache, whose buffer the caller's strings share; the scanner's
            // own buffer stays unshared, so it is reused without a new allocation per event.
            m_cachedText.setTo(m_text.getBuffer() + m_mark, m_text.length() - m_mark);
        }
        m_cachedValid = true;
    }
    return m_cachedText;
}

void XmlScanner::startDocument() {
    m_in.line = 1;
    m_in.column = 0;
    sniff(/*force=*/false);
    prescanMeta();
    // The syntax is judged once before the first event: a text/html input answers its first
    // question no, and the scanner asks that one.
    isHtml();
    int kind = classify();
    if (kind == PEEK_PI) {
        m_peek = PEEK_NONE;
        scanProcessingInstruction();
    }
    // The decoder is settled: from here on read in blocks.
    m_in.careful = false;
}

void XmlScanner::endDocument() {
    if (m_event != ZkXmlParser::END_DOCUMENT) {
        if (!m_open.empty() && isHtml()) {
            // HTML closes what is open, one element per event, with no message.
            m_event = ZkXmlParser::END_TAG;
            m_peek = PEEK_NONE;
            return;
        }
        if (int(m_open.size()) > 0) {
            m_event = ZkXmlParser::END_DOCUMENT;
            report(kErrorMissingEndTag, UnicodeString(), UnicodeString());
        }
    }
    m_event = ZkXmlParser::END_DOCUMENT;
    m_peek = PEEK_EOF;
    m_held = PEEK_NONE;
    if (m_autoClose)
        closeStream();
}

void XmlScanner::dispatch(int kind) {
    m_peek = PEEK_NONE;
    switch (kind) {
    case PEEK_START_TAG:
        scanStartTag();
        break;
    case PEEK_END_TAG:
        scanEndTag();
        break;
    case PEEK_TEXT:
        scanText();
        break;
    case PEEK_REFERENCE:
        if (m_open.empty() && !m_rootSeen && isHtml()) {
            // HTML: a reference before the root is text of an implied html.
            pushBack('&');
            m_firstElement = ZKN_html;
            hintsChanged();
            openImplied(ZKN_html);
            break;
        }
        readReference(nullptr);
        break;
    case PEEK_PI:
        scanProcessingInstruction();
        break;
    case PEEK_BANG:
        scanBang();
        break;
    default:
        endDocument();
        break;
    }
}

int XmlScanner::nextToken() {
    m_valuesInBuffer = false; // the start tag's values are no longer asked for
    m_text.truncate(m_mark);
    m_cachedValid = false;
    m_useOwnText = false;
    m_entityName = ZkName();
    switch (m_event) {
    case ZkXmlParser::START_DOCUMENT:
        startDocument();
        if (m_event != ZkXmlParser::START_DOCUMENT)
            return m_event;
        break;
    case ZkXmlParser::END_DOCUMENT:
        endDocument();
        return m_event;
    case ZkXmlParser::START_TAG:
        if (m_emptyTag) {
            m_emptyTag = false;
            m_peek = PEEK_NONE;
            m_event = ZkXmlParser::END_TAG;
            return m_event;
        }
        break;
    case ZkXmlParser::END_TAG:
        closeElement();
        break;
    default:
        break;
    }
    dispatch(classify());
    return m_event;
}

int XmlScanner::next() {
    m_text.remove();
    m_mark = 0;
    try {
        for (;;) {
            int event = nextToken();
            switch (event) {
            case ZkXmlParser::TEXT:
            case ZkXmlParser::CDSECT:
                break;
            case ZkXmlParser::ENTITY_REF: {
                if (m_entityName.isEmpty())
                    break; // a character reference: its character is in the text
                const UnicodeString* found = findEntity(m_entityName);
                auto outer = !found ? m_externalEntities.find(m_entityName.getEnum())
                                    : m_externalEntities.end();
                if (outer != m_externalEntities.end()) {
                    // An external parsed entity is read in place as content.
                    if (m_features[ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY])
                        report(kErrorExternalEntity, outer->second, UnicodeString());
                    else if (isOpenInput(outer->second))
                        report(kErrorLoopedEntity, m_entityName.toString(), UnicodeString());
                    else
                        pushStream(outer->second, ZkName(), UnicodeString());
                    break;
                }
                if (!found) {
                    if (!m_features[ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY])
                        report(kErrorUndefinedEntity, m_entityName.toString(), UnicodeString());
                    break;
                }
                // Entities being expanded end in a marker the reader drops; one named again
                // inside its own text loops.
                for (const auto& open : m_expanding) {
                    if (open.first == m_entityName) {
                        report(kErrorLoopedEntity, m_entityName.toString(), UnicodeString());
                        break;
                    }
                }
                // Inside an element, a text of one character that is data as it stands, or
                // the character reference the predefined "amp" and "lt" stand for, gives its
                // character at once: read back, it would give that character and nothing
                // else. Text at the top or right in an HTML root has rules of its own.
                UChar32 single =
                    int(m_open.size()) > m_in.baseDepth && !(m_open.size() == 1 && isHtml())
                        ? plainReplacement(*found)
                        : -1;
                if (single >= 0) {
                    appendChar(single);
                    break;
                }
                static const char16_t kEndMark = kExpansionEnd;
                pushBackText(&kEndMark, 1);
                pushBackText(*found);
                m_expanding.emplace_back(m_entityName, 0);
                break;
            }
            case ZkXmlParser::IGNORABLE_WHITESPACE:
            case ZkXmlParser::DOCDECL:
                m_text.truncate(m_mark);
                break;
            case ZkXmlParser::PROCESSING_INSTRUCTION:
                if (m_features[ZkXmlParser::FEATURE_REPORT_PI])
                    return event;
                break;
            case ZkXmlParser::COMMENT:
                break;
            default:
                return event;
            }
            m_mark = m_text.length();
            m_useOwnText = false;
            if (m_text.isEmpty())
                continue;
            m_event = ZkXmlParser::TEXT;
            int kind = classify();
            if (kind == PEEK_TEXT || kind == PEEK_REFERENCE || kind == PEEK_BANG)
                continue;
            if (kind == PEEK_PI && !m_features[ZkXmlParser::FEATURE_REPORT_PI])
                continue;
            m_mark = 0;
            m_cachedValid = false;
            m_entityName = ZkName();
            return ZkXmlParser::TEXT;
        }
    } catch (const ZkError& error) {
        m_mark = 0;
        if (error.getErrorCode() != kErrorStopped)
            throw;
        m_event = ZkXmlParser::END_DOCUMENT;
        m_peek = PEEK_EOF;
        if (m_autoClose)
            closeStream();
        return m_event;
    }
}

} // namespace detail
} // namespace ZkCommonNS
