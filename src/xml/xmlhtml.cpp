// The HTML side of the XML scanner: the syntax judgments, the grammar of implied start and end
// tags, void and raw-text elements, the `meta` element and the encoding it names.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"
#include "zkcommon/io/icuistream.h"
#include "zkcommon/io/rqcstream.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/tokenizer.h"

#include <cstring>
#include <streambuf>
#include <string>

namespace ZkCommonNS {
namespace detail {

namespace {

constexpr unsigned short kErrorEndTagMismatchHtml = 513;
constexpr unsigned short kErrorHtmlCharacter = 769;
constexpr int32_t kPrescanBytes = 16384;

inline bool isSpace(UChar32 c) {
    return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
}

// ---- The grammar of implied tags, as bits on the built-in names, so that every test is a
// table load and a mask: no text is compared per tag.

// Classes a name belongs to.
enum : uint32_t {
    kDdDt = 1u << 0,         // dd dt
    kParagraphEnd = 1u << 1, // the blocks that end a p
    kRuby = 1u << 2,         // rb rp rt
    kSection = 1u << 3,      // tbody tfoot thead
    kCell = 1u << 4,         // td th
    kRow = 1u << 5,          // tr
    kHeadContent = 1u << 6,  // what may stand in head
    kLi = 1u << 7,
    kHtmlElement = 1u << 8,
    kDialog = 1u << 9,
    kDl = 1u << 10,
    kList = 1u << 11, // menu ol ul
    kSelect = 1u << 12,
    kRubyElement = 1u << 13,
    kTable = 1u << 14,
};

// Flags of a name.
enum : uint8_t {
    kClosedBySelf = 1, // colgroup marquee nobr optgroup option
    kHead = 2,         // closed by anything but head content
    kEndsAnywhere = 4, // an end tag p means something everywhere
    kVoid = 8,         // never has content
    kRawText = 16      // script style
};

struct TagInfo {
    uint32_t classes = 0;
    uint32_t closedBy = 0; ///< classes of a tag that ends this element
    uint32_t endsIn = 0;   ///< classes of an open element in which this end tag means something
    uint8_t flags = 0;
};

class TagTable {
public:
    TagTable() : m_tags(size_t(ZKN_BUILTIN_LAST) + 1) {
        for (ZkNameEnum n : {ZKN_dd, ZKN_dt})
            add(n, kDdDt, kDdDt);
        for (ZkNameEnum n : {ZKN_address, ZKN_blockquote, ZKN_div, ZKN_dl, ZKN_fieldset, ZKN_form,
                             ZKN_h1, ZKN_h2, ZKN_h3, ZKN_h4, ZKN_h5, ZKN_h6, ZKN_hr, ZKN_menu,
                             ZKN_ol, ZKN_p, ZKN_pre, ZKN_table, ZKN_ul})
            add(n, kParagraphEnd, 0);
        for (ZkNameEnum n : {ZKN_rb, ZKN_rp, ZKN_rt})
            add(n, kRuby, kRuby);
        for (ZkNameEnum n : {ZKN_tbody, ZKN_tfoot, ZKN_thead})
            add(n, kSection, kSection);
        for (ZkNameEnum n : {ZKN_td, ZKN_th})
            add(n, kCell, kSection | kCell | kRow);
        add(ZKN_tr, kRow, kSection | kRow);
        add(ZKN_li, kLi, kLi);
        add(ZKN_p, 0, kParagraphEnd);
        for (ZkNameEnum n : {ZKN_base, ZKN_isindex, ZKN_link, ZKN_meta, ZKN_object, ZKN_script,
                             ZKN_style, ZKN_title})
            add(n, kHeadContent, 0);
        for (ZkNameEnum n : {ZKN_colgroup, ZKN_marquee, ZKN_nobr, ZKN_optgroup, ZKN_option})
            m_tags[n].flags |= kClosedBySelf;
        m_tags[ZKN_head].flags |= kHead;
        m_tags[ZKN_p].flags |= kEndsAnywhere;
        for (ZkNameEnum n : {ZKN_script, ZKN_style})
            m_tags[n].flags |= kRawText;
        // Containers, and the end tags that mean something in them.
        add(ZKN_html, kHtmlElement, 0);
        add(ZKN_dialog, kDialog, 0);
        add(ZKN_dl, kDl, 0);
        for (ZkNameEnum n : {ZKN_menu, ZKN_ol, ZKN_ul})
            add(n, kList, 0);
        add(ZKN_select, kSelect, 0);
        add(ZKN_ruby, kRubyElement, 0);
        add(ZKN_table, kTable, 0);
        for (ZkNameEnum n : {ZKN_body, ZKN_head})
            m_tags[n].endsIn = kHtmlElement;
        m_tags[ZKN_dd].endsIn = kDialog | kDl;
        m_tags[ZKN_dt].endsIn = kDl;
        m_tags[ZKN_li].endsIn = kList;
        for (ZkNameEnum n : {ZKN_optgroup, ZKN_option})
            m_tags[n].endsIn = kSelect;
        for (ZkNameEnum n : {ZKN_rb, ZKN_rp, ZKN_rt})
            m_tags[n].endsIn = kRubyElement;
        for (ZkNameEnum n : {ZKN_tbody, ZKN_tfoot, ZKN_thead})
            m_tags[n].endsIn = kTable;
        for (ZkNameEnum n : {ZKN_td, ZKN_th})
            m_tags[n].endsIn = kRow | kTable | kSection;
        m_tags[ZKN_tr].endsIn = kTable | kSection;
        for (ZkNameEnum n :
             {ZKN_area,    ZKN_base,  ZKN_basefont,     ZKN_bgsound, ZKN_br,   ZKN_col,
              ZKN_command, ZKN_embed, ZKN_event_source, ZKN_frame,   ZKN_hr,   ZKN_hype,
              ZKN_img,     ZKN_input, ZKN_isindex,      ZKN_keygen,  ZKN_link, ZKN_meta,
              ZKN_nest,    ZKN_param, ZKN_source,       ZKN_spacer,  ZKN_wbr})
            m_tags[n].flags |= kVoid;
    }

    const TagInfo& operator[](ZkName name) const {
        uint32_t n = uint32_t(name.getEnum());
        return n < m_tags.size() ? m_tags[n] : m_none;
    }

private:
    void add(ZkNameEnum name, uint32_t classes, uint32_t closedBy) {
        m_tags[name].classes |= classes;
        m_tags[name].closedBy |= closedBy;
    }

    std::vector<TagInfo> m_tags;
    TagInfo m_none;
};

// Built at load time from constants alone: no guard on the hot path.
const TagTable s_tags;

inline const TagTable& tags() {
    return s_tags;
}

/// The start or end tag `next` ends the open element `open`.
bool closes(ZkName open, ZkName next) {
    const TagInfo& o = tags()[open];
    if (!o.closedBy && !o.flags)
        return false;
    const TagInfo& n = tags()[next];
    return (o.closedBy & n.classes) || ((o.flags & kClosedBySelf) && open == next) ||
           ((o.flags & kHead) && !(n.classes & kHeadContent));
}

/// The end tag `end` means something while `open` is open.
bool endsIn(ZkName end, ZkName open) {
    const TagInfo& e = tags()[end];
    return (e.flags & kEndsAnywhere) || (e.endsIn & tags()[open].classes);
}

/// A stream that serves some bytes first and then the rest of another stream.
class PrefixedBuffer : public std::streambuf {
public:
    PrefixedBuffer(std::string prefix, std::streambuf* rest)
        : m_prefix(std::move(prefix)), m_rest(rest) {
        char* begin = &m_prefix[0];
        setg(begin, begin, begin + m_prefix.size());
    }

protected:
    int_type underflow() override {
        if (gptr() < egptr())
            return traits_type::to_int_type(*gptr());
        if (!m_rest)
            return traits_type::eof();
        std::streamsize got = m_rest->sgetn(m_block, sizeof m_block);
        if (got <= 0)
            return traits_type::eof();
        setg(m_block, m_block, m_block + got);
        return traits_type::to_int_type(*gptr());
    }

private:
    std::string m_prefix;
    std::streambuf* m_rest;
    char m_block[8192];
};

class PrefixedStream : public std::istream {
public:
    PrefixedStream(std::string prefix, std::streambuf* rest)
        : std::istream(nullptr), m_buffer(std::move(prefix), rest) {
        rdbuf(&m_buffer);
    }

private:
    PrefixedBuffer m_buffer;
};

} // namespace

std::unique_ptr<std::istream> makePrefixedStream(std::string bytes, std::streambuf* rest) {
    return std::make_unique<PrefixedStream>(std::move(bytes), rest);
}

namespace {

bool isWideDecoder(ZkNameEnum id) {
    return id == ZKN_UTF_16 || id == ZKN_UTF_16BE || id == ZKN_UTF_16LE || id == ZKN_UTF_32 ||
           id == ZKN_UTF_32BE || id == ZKN_UTF_32LE;
}

inline char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? char(c + 32) : c;
}

/// Whether `text` at `at` starts with the lower-case ASCII word `word`, in any case.
bool startsWithWord(const std::string& text, size_t at, const char* word) {
    for (size_t i = 0; word[i]; ++i)
        if (at + i >= text.size() || asciiLower(text[at + i]) != word[i])
            return false;
    return true;
}

/// The charset named by the `meta` charset or http-equiv content of a tag's attributes.
std::string charsetOf(const std::string& charset, const std::string& httpEquiv,
                      const std::string& content) {
    if (!charset.empty())
        return charset;
    if (httpEquiv != "content-type")
        return std::string();
    size_t at = content.find("charset");
    if (at == std::string::npos)
        return std::string();
    at += 7;
    while (at < content.size() && (content[at] == ' ' || content[at] == '='))
        ++at;
    size_t end = at;
    while (end < content.size() && content[end] != ';' && content[end] != ',' &&
           content[end] != ' ' && content[end] != '"' && content[end] != '\'')
        ++end;
    return content.substr(at, end - at);
}

/// Finds a `meta` charset in the first bytes of a document. Comments are skipped; the tag's
/// attributes are read as HTML writes them, quoted or not.
std::string findMetaCharset(const std::string& text) {
    size_t at = 0;
    while ((at = text.find('<', at)) != std::string::npos) {
        if (text.compare(at, 4, "<!--") == 0) {
            size_t end = text.find("-->", at + 4);
            if (end == std::string::npos)
                return std::string();
            at = end + 3;
            continue;
        }
        if (!startsWithWord(text, at + 1, "meta") || at + 5 >= text.size() ||
            !(isSpace(uint8_t(text[at + 5])) || text[at + 5] == '/')) {
            ++at;
            continue;
        }
        at += 5;
        std::string charset, httpEquiv, content;
        for (;;) {
            while (at < text.size() && (isSpace(uint8_t(text[at])) || text[at] == '/'))
                ++at;
            if (at >= text.size() || text[at] == '>')
                break;
            size_t nameStart = at;
            while (at < text.size() && !isSpace(uint8_t(text[at])) && text[at] != '=' &&
                   text[at] != '>' && text[at] != '/')
                ++at;
            std::string name;
            for (size_t i = nameStart; i < at; ++i)
                name += asciiLower(text[i]);
            while (at < text.size() && isSpace(uint8_t(text[at])))
                ++at;
            std::string value;
            if (at < text.size() && text[at] == '=') {
                ++at;
                while (at < text.size() && isSpace(uint8_t(text[at])))
                    ++at;
                if (at < text.size() && (text[at] == '"' || text[at] == '\'')) {
                    char quote = text[at++];
                    size_t end = text.find(quote, at);
                    if (end == std::string::npos)
                        return std::string();
                    value = text.substr(at, end - at);
                    at = end + 1;
                } else {
                    while (at < text.size() && !isSpace(uint8_t(text[at])) && text[at] != '>')
                        value += text[at++];
                }
            }
            for (char& c : value)
                c = asciiLower(c);
            if (name == "charset")
                charset = value;
            else if (name == "http-equiv")
                httpEquiv = value;
            else if (name == "content")
                content = value;
        }
        std::string found = charsetOf(charset, httpEquiv, content);
        if (!found.empty())
            return found;
    }
    return std::string();
}

} // namespace

// ---- The judgments

bool XmlScanner::judgeHtml() const {
    auto keep = [this](bool answer) {
        m_htmlGuess = answer ? 1 : 0;
        return answer;
    };
    auto settle = [this](ZkNameEnum type, bool answer) {
        m_settledType = type;
        return answer;
    };
    if (!m_parserType.isEmpty() && m_parserType != ZKN_auto)
        return m_parserType == ZKN_html ? settle(ZKN_html, true) : keep(false);
    if (isXhtml())
        return settle(ZKN_xhtml, false);
    if (m_contentType.isEmpty()) {
        if (m_defaultType == ZKN_html && (m_extension == u".html" || m_extension == u".htm"))
            return settle(ZKN_html, true);
        if (!m_hasXmlDecl && m_pubid.indexOf(u" HTML ") >= 0)
            return settle(ZKN_html, true);
        if (!m_hasXmlDecl && m_rootNamespace.isEmpty() && !m_firstElement.isEmpty() &&
            (m_firstElement == ZKN_html || m_firstElement.lowerName() == ZKN_html))
            return settle(ZKN_html, true);
        return keep(false);
    }
    // A text/html input settles at the first question and answers it no; every later one is
    // answered yes.
    if (m_contentType == u"text/html")
        return settle(ZKN_html, false);
    return keep(false);
}

bool XmlScanner::judgeXhtml() const {
    auto keep = [this](bool answer) {
        m_xhtmlGuess = answer ? 1 : 0;
        return answer;
    };
    auto settle = [this](ZkNameEnum type, bool answer) {
        m_settledType = type;
        return answer;
    };
    if (!m_parserType.isEmpty() && m_parserType != ZKN_auto)
        return m_parserType == ZKN_xhtml ? settle(ZKN_xhtml, true) : keep(false);
    if (m_contentType.isEmpty()) {
        if (m_defaultType == ZKN_html) {
            if (m_extension == u".xht" || m_extension == u".xhtm" || m_extension == u".xhtml")
                return settle(ZKN_xhtml, true);
            if (m_extension == u".html" || m_extension == u".htm")
                return settle(ZKN_html, false);
        }
        if (!m_hasXmlDecl) {
            if (m_pubid.indexOf(u" HTML ") >= 0)
                return settle(ZKN_html, false);
            if (m_pubid.indexOf(u" XHTML ") >= 0)
                return settle(ZKN_xhtml, true);
        }
        if (m_defaultType == ZKN_xhtml && m_rootNamespace == ZKN_NS_XHTML)
            return settle(ZKN_xhtml, true);
        return keep(false);
    }
    if (m_contentType == u"application/xhtml+xml")
        return settle(ZKN_xhtml, true);
    return keep(false);
}

// ---- Raw text

bool XmlScanner::inRawText() const {
    if (m_open.empty())
        return false;
    ZkName local = m_open.back().local;
    return (local == ZKN_script || local == ZKN_style) && int(m_open.size()) > 0 && isHtml();
}

bool XmlScanner::rawTextEndFollows() {
    // "<" is read. Only "</", the element's name in any case, white space and ">" end it.
    const char16_t* name = m_open.back().local == ZKN_script ? u"script" : u"style";
    UnicodeString seen;
    bool match = false;
    UChar32 c = readChar();
    if (c == '/') {
        seen.append(c);
        match = true;
        for (int i = 0; name[i] && match; ++i) {
            c = readChar();
            if (c == kEof)
                return pushBackText(seen), false;
            seen.append(c);
            match = (c >= 'A' && c <= 'Z' ? c + 32 : c) == name[i];
        }
        if (match) {
            c = readChar();
            while (isSpace(c)) {
                seen.append(c);
                c = readChar();
            }
            match = c == '>';
            if (c != kEof)
                seen.append(c);
        }
    } else if (c != kEof) {
        seen.append(c);
    }
    if (match)
        pushBackText(seen.getBuffer() + 1, seen.length() - 1); // the end tag is read after "</"
    else
        pushBackText(seen);
    return match;
}

// ---- Implied tags

void XmlScanner::countOpen(OpenElement& element) {
    int32_t n = element.local.getEnum();
    if (n <= ZKN_BUILTIN_LAST) {
        if (m_openCounts.empty())
            m_openCounts.assign(size_t(ZKN_BUILTIN_LAST) + 1, 0);
        ++m_openCounts[size_t(n)];
    } else {
        ++m_openCountsDynamic[n];
    }
    element.counted = true;
}

void XmlScanner::openImplied(ZkName local) {
    m_event = ZkXmlParser::START_TAG;
    m_peek = PEEK_NONE;
    m_attributeCount = 0;
    m_emptyTag = false;
    m_in.rootSeenHere = true;
    if (m_firstElement.isEmpty()) {
        m_firstElement = local;
        hintsChanged();
    }
    OpenElement element;
    element.prefix = ZkName();
    element.local = local;
    element.bindingStart = int32_t(m_bindings.size());
    m_open.push_back(element);
    finishStartTag();
}

bool XmlScanner::impliedBeforeStartTag(ZkName local) {
    auto again = [this, local] {
        // The tag is met again after the event made here, with the name already read.
        m_held = PEEK_START_TAG;
        m_heldPrefix = ZkName();
        m_heldLocal = local;
    };
    if (int(m_open.size()) > m_in.baseDepth) {
        const OpenElement& open = m_open.back();
        if (open.ns != ZKN_NS_XHTML || !open.prefix.isEmpty())
            return false;
        if (closes(open.local, local)) {
            again();
            m_event = ZkXmlParser::END_TAG;
            m_peek = PEEK_NONE;
            return true;
        }
        if (open.local == ZKN_html && local != ZKN_head && local != ZKN_body) {
            again();
            openImplied(tags()[local].classes & kHeadContent ? ZKN_head : ZKN_body);
            return true;
        }
        return false;
    }
    if (m_open.empty() && !m_rootSeen && m_doctypeName == ZKN_html && local != ZKN_html) {
        again();
        m_firstElement = ZKN_html;
        hintsChanged();
        openImplied(ZKN_html);
        return true;
    }
    return false;
}

bool XmlScanner::recoverEndTag(ZkName prefix, ZkName local) {
    const OpenElement& open = m_open.back();
    auto endOpen = [this, prefix, local] {
        // The open element ends here; the end tag is met again, with the name already read.
        m_held = PEEK_END_TAG;
        m_heldPrefix = prefix;
        m_heldLocal = local;
        m_event = ZkXmlParser::END_TAG;
        m_peek = PEEK_NONE;
        return true;
    };
    bool onStack = false;
    if (!endsIn(local, open.local)) {
        if (prefix.isEmpty()) {
            int32_t n = local.getEnum();
            if (n <= ZKN_BUILTIN_LAST) {
                onStack = !m_openCounts.empty() && m_openCounts[size_t(n)] > 0;
            } else {
                auto found = m_openCountsDynamic.find(n);
                onStack = found != m_openCountsDynamic.end() && found->second > 0;
            }
        } else {
            for (size_t i = m_open.size(); i-- > size_t(m_in.baseDepth);) {
                if (m_open[i].local == local && m_open[i].prefix == prefix) {
                    onStack = true;
                    break;
                }
            }
        }
        if (onStack && endsIn(open.local, local))
            return endOpen();
    }
    if (prefix.isEmpty() && closes(open.local, local))
        return endOpen();
    report(kErrorEndTagMismatchHtml, qualifiedName(prefix, local), openQName());
    if (onStack)
        return endOpen();
    // A stray end tag stands for an empty element.
    m_event = ZkXmlParser::START_TAG;
    m_attributeCount = 0;
    OpenElement element;
    element.prefix = prefix;
    element.local = local;
    element.bindingStart = int32_t(m_bindings.size());
    m_open.push_back(element);
    finishStartTag();
    m_emptyTag = true;
    m_peek = PEEK_EMPTY_TAG;
    skipWhitespace();
    UChar32 c = readChar();
    if (c != '>' && c != kEof) {
        report(kErrorHtmlCharacter, UnicodeString(c), UnicodeString());
        while (c != '>' && c != kEof)
            c = readChar();
    }
    return true;
}

bool XmlScanner::impliedByText(int32_t start) {
    // Text before the root implies html, with a DOCTYPE html or without one, so that a
    // document keeps one root element; text in html implies body after a DOCTYPE html.
    bool beforeRoot = m_open.empty() && !m_rootSeen;
    bool inHtml = m_doctypeName == ZKN_html && m_open.size() == 1 &&
                  m_open.back().local == ZKN_html && m_open.back().ns == ZKN_NS_XHTML;
    if (!beforeRoot && !inHtml)
        return false;
    int32_t limit = m_text.length();
    int32_t i = start;
    while (i < limit && isSpace(m_text[i]))
        ++i;
    if (i == limit)
        return false;
    UnicodeString text(m_text, start);
    m_text.truncate(start);
    pushBackText(text);
    if (beforeRoot) {
        m_firstElement = ZKN_html;
        hintsChanged();
    }
    openImplied(beforeRoot ? ZKN_html : ZKN_body);
    return true;
}

void XmlScanner::readUnquotedValue(UnicodeString& out) {
    for (;;) {
        // The plain run in place, in one piece.
        InputState& in = m_in;
        if (in.pos >= in.rawLimit) {
            const char16_t* b = in.chars.get();
            int32_t p = in.pos;
            while (p < in.end) {
                char16_t u = b[p];
                if (u <= ' ' || u == '>' || u == '&' || u == '/' || u >= m_fastLimit)
                    break;
                ++p;
            }
            if (p > in.pos) {
                out.append(b + in.pos, p - in.pos);
                in.column += p - in.pos;
                in.pos = p;
            }
        }
        UChar32 c = peekChar();
        if (c == kEof || isSpace(c) || c == '>')
            return;
        readChar();
        if (c == '/' && peekChar() == '>') {
            pushBack(c);
            return;
        }
        if (c == '&') {
            readReference(&out);
            continue;
        }
        out.append(c);
    }
}

void XmlScanner::htmlLiteral(UnicodeString* out, const UnicodeString& text) {
    if (out) {
        out->append(text);
        return;
    }
    m_event = ZkXmlParser::TEXT;
    appendText(text.getBuffer(), text.length());
}

bool XmlScanner::htmlReference(UnicodeString* out, ZkName name, UChar32& c) {
    bool semicolon = c == ';';
    if (!semicolon) {
        pushBack(c); // no ";" is needed
        c = ';';
    }
    if (findEntity(name) || m_externalEntities.count(name.getEnum()))
        return true;
    // A name with no replacement stays as it was written, and is not reported.
    UnicodeString text(u'&');
    text.append(name.toString());
    if (semicolon)
        text.append(u';');
    htmlLiteral(out, text);
    return false;
}

// ---- After a start tag

void XmlScanner::finishHtmlStartTag() {
    const OpenElement& element = m_open.back();
    if (element.ns != ZKN_NS_XHTML)
        return;
    const TagInfo& info = tags()[element.local];
    if (element.local == ZKN_meta)
        applyMeta();
    if (m_emptyTag || !(info.flags & kVoid))
        return;
    // A void element is empty unless its own end tag follows at once.
    bool own = false;
    if (peekChar() == '<') {
        UnicodeString name = qualifiedName(element.prefix, element.local);
        UnicodeString seen;
        UChar32 c = readChar();
        seen.append(c);
        c = readChar();
        own = c == '/';
        if (c != kEof)
            seen.append(c);
        for (int32_t i = 0; own && i < name.length(); ++i) {
            c = readChar();
            if (c == kEof) {
                own = false;
                break;
            }
            seen.append(c);
            own = (c >= 'A' && c <= 'Z' ? c + 32 : c) == name[i];
        }
        if (own) {
            c = readChar();
            while (isSpace(c)) {
                seen.append(c);
                c = readChar();
            }
            own = c == '>';
            if (c != kEof)
                seen.append(c);
        }
        pushBackText(seen);
    }
    if (!own) {
        m_emptyTag = true;
        m_peek = PEEK_EMPTY_TAG;
    }
}

void XmlScanner::applyMeta() {
    UnicodeString charset;
    UnicodeString content;
    UnicodeString httpEquiv;
    for (int i = 0; i < m_attributeCount; ++i) {
        const Attribute& attribute = m_attributes[size_t(i)];
        if (!attribute.prefix.isEmpty())
            continue;
        if (attribute.local == ZKN_charset)
            charset = ZkChar::toAsciiLower(attributeValue(attribute));
        else if (attribute.local == ZKN_content)
            content = ZkChar::toAsciiLower(attributeValue(attribute));
        else if (attribute.local == ZKN_http_equiv)
            httpEquiv = ZkChar::toAsciiLower(attributeValue(attribute));
    }
    if (httpEquiv == u"content-type") {
        ZkTokenizer values(content);
        UnicodeString first = values.nextSeparatedValue(u';');
        if (!first.isEmpty() && m_metaContentType.isEmpty())
            m_metaContentType = first;
        for (int guard = 0; guard < 64; ++guard) {
            UnicodeString value = values.nextSeparatedValue(u';');
            if (values.getTokenType() == ZkTokenizer::TokenEnd)
                break;
            int32_t equals = value.indexOf(u'=');
            if (equals < 0)
                continue;
            UnicodeString name(value, 0, equals);
            name.trim();
            if (name != u"charset")
                continue;
            UnicodeString rest(value, equals + 1);
            int32_t comma = rest.indexOf(u',');
            if (comma >= 0)
                rest.truncate(comma);
            rest.trim();
            if (rest.length() >= 2 && (rest[0] == '"' || rest[0] == '\'') &&
                rest[rest.length() - 1] == rest[0])
                rest = UnicodeString(rest, 1, rest.length() - 2);
            charset = rest;
        }
    } else if (httpEquiv == u"content-language") {
        m_language = content;
        m_language.trim();
    }
    charset.trim();
    if (!charset.isEmpty())
        switchEncoding(charset);
}

// ---- Encodings

void XmlScanner::switchEncoding(const UnicodeString& requested) {
    InputState& in = m_in;
    // Only the document's own stream, read by a decoder of this reader: a conversion stream in
    // place, a signature or a wide form settled by sniffing stays.
    if (!m_frames.empty() || in.stream != in.underlying || !in.underlying || in.bomSeen ||
        isWideDecoder(in.encodingId))
        return;
    UnicodeString name = ZkUtil::getCanonicalEncoding(requested);
    name.trim();
    if (name.isEmpty())
        return;
    UnicodeString upper = name;
    ZkChar::toAsciiUpper(upper);
    ZkNameEnum id = ZkNameTable::getBuiltinNameEnum(upper);
    if (id != ZKN_EMPTY && id == in.encodingId)
        return;
    if (isWideDecoder(id))
        return; // a byte stream that calls itself UTF-16 is not
    // What was decoded ahead of the tag goes back to bytes, in front of the bytes not yet
    // decoded; text already read stays as it was read.
    int32_t from = in.pos > in.rawLimit ? in.pos : in.rawLimit;
    std::string again;
    int32_t blockStart = in.end - in.blockUnits;
    if (from < in.end && in.blockUnits > 0 && from >= blockStart && in.decoder) {
        // The unread units all come from the last block: decode its bytes again up to the
        // read position, and hand on the bytes from there.
        int32_t units = from - blockStart;
        std::unique_ptr<char16_t[]> scratch(new char16_t[size_t(units) + 2]);
        const uint8_t* bytes = reinterpret_cast<const uint8_t*>(in.blockBytes.data());
        int32_t size = int32_t(in.blockBytes.size());
        int32_t consumed = 0;
        int32_t produced = 0;
        while (produced < units) {
            int32_t want = units - produced;
            int32_t used = 0;
            int32_t got =
                in.decoder(bytes + consumed, size - consumed, true, scratch.get() + produced,
                           want < 2 ? 2 : want, want < 2 ? 1 : INT32_MAX, used);
            if (got <= 0)
                break;
            produced += got;
            consumed += used;
        }
        if (produced == units) {
            again.assign(in.blockBytes, size_t(consumed), std::string::npos);
            in.end = from;
        }
    }
    in.blockUnits = 0;
    if (from < in.end) {
        UnicodeString ahead(in.chars.get() + from, in.end - from);
        bool bytes = in.encodingId == ZKN_EMPTY || in.encodingId == ZKN_US_ASCII ||
                     in.encodingId == ZKN_ISO_8859_1;
        if (bytes) {
            again.reserve(size_t(ahead.length()));
            for (int32_t i = 0; i < ahead.length(); ++i)
                again += char(uint8_t(ahead[i]));
        } else if (in.encodingId == ZKN_UTF_8) {
            ahead.toUTF8String(again);
        } else {
            std::string codepage;
            in.encodingName.toUTF8String(codepage);
            int32_t length = ahead.extract(0, ahead.length(), nullptr, 0, codepage.c_str());
            again.resize(size_t(length));
            ahead.extract(0, ahead.length(), &again[0], uint32_t(length), codepage.c_str());
        }
        in.end = from;
    }
    if (in.bytePos < in.byteEnd)
        again.append(reinterpret_cast<const char*>(in.bytes.get() + in.bytePos),
                     size_t(in.byteEnd - in.bytePos));
    in.bytePos = in.byteEnd = 0;
    if (!again.empty()) {
        // The bytes go into a stream in front of the rest, and the new decoding reads from it.
        in.prefixed = makePrefixedStream(std::move(again), in.underlying->rdbuf());
        in.stream = in.prefixed.get();
        in.atEnd = false;
    }
    // The conversion forms read from the current stream: it stands in for the underlying one
    // while the encoding changes. A name no converter knows is passed over: a page's own label
    // is a hint, and pages carry wrong ones.
    std::istream* underlying = in.underlying;
    in.underlying = in.stream;
    bool lax = m_features[ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING];
    bool strict = m_features[ZkXmlParser::FEATURE_STRICT_ENCODING];
    m_features[ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING] = true;
    m_features[ZkXmlParser::FEATURE_STRICT_ENCODING] = false;
    try {
        changeEncoding(name);
    } catch (...) {
        in.underlying = underlying;
        m_features[ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING] = lax;
        m_features[ZkXmlParser::FEATURE_STRICT_ENCODING] = strict;
        throw;
    }
    in.underlying = underlying;
    m_features[ZkXmlParser::FEATURE_LAX_UNKNOWN_ENCODING] = lax;
    m_features[ZkXmlParser::FEATURE_STRICT_ENCODING] = strict;
}

void XmlScanner::prescanMeta() {
    InputState& in = m_in;
    if (!m_frames.empty() || in.stream != in.underlying || !in.underlying || in.bomSeen ||
        isWideDecoder(in.encodingId) || !m_requestedEncoding.isEmpty() || m_parserType == ZKN_xml ||
        m_parserType == ZKN_xhtml || m_parserType == ZKN_text)
        return;
    // Read ahead without decoding, where the first bytes or the hints point to HTML.
    bool hinted = m_contentType == u"text/html" || m_extension == u".html" ||
                  m_extension == u".htm" || m_parserType == ZKN_html;
    const uint8_t* first = in.bytes.get() + in.bytePos;
    int32_t held = in.byteEnd - in.bytePos;
    bool looks = held >= 3 && first[0] == '<' &&
                 ((first[1] == '!' && (first[2] == 'd' || first[2] == 'D')) ||
                  ((first[1] == 'h' || first[1] == 'H') && (first[2] == 't' || first[2] == 'T')));
    if (!hinted && !looks)
        return;
    while (in.byteEnd - in.bytePos < kPrescanBytes && !in.atEnd) {
        int32_t room = in.byteCapacity - in.byteEnd;
        if (room <= 0)
            break;
        int32_t got = readBytes(in.bytes.get() + in.byteEnd, room);
        if (got <= 0) {
            in.atEnd = true;
            break;
        }
        in.byteEnd += got;
    }
    std::string head(reinterpret_cast<const char*>(in.bytes.get() + in.bytePos),
                     size_t(in.byteEnd - in.bytePos));
    if (startsWithWord(head, 0, "<?xml"))
        return;
    bool html = hinted;
    if (!html) {
        // Looks like HTML: a DOCTYPE html or an html element near the start.
        std::string lower(head, 0, 1024);
        for (char& c : lower)
            c = asciiLower(c);
        html = lower.find("<!doctype html") != std::string::npos ||
               lower.find("<html") != std::string::npos;
    }
    if (!html)
        return;
    std::string found = findMetaCharset(head);
    if (found.empty())
        return;
    m_metaCharsetSeen = true;
    switchEncoding(UnicodeString::fromUTF8(found));
}

} // namespace detail
} // namespace ZkCommonNS
