// The DTD half of the XML scanner: the internal and external subsets, entity declarations,
// parameter entities, conditional sections, the built-in character entity sets and the
// process-wide cache of external subsets. Element, attribute list and notation declarations are
// passed over: the reader collects entities and nothing else.
#include "xml/xmlscanner.h"
#include "zkcommon/core/char.h"
#include "zkcommon/core/lock.h"
#include "zkcommon/io/uri.h"

#include <map>
#include <memory>
#include <string>
#include <unicode/ustring.h>

namespace ZkCommonNS {
namespace detail {

namespace {
constexpr unsigned short kErrorUnexpectedCharacter = 140;
constexpr unsigned short kErrorMissingWhitespaceAfter = 150;
constexpr unsigned short kErrorExternalId = 151;
constexpr unsigned short kErrorPubidLiteral = 152;
constexpr unsigned short kErrorSystemLiteral = 153;
constexpr unsigned short kErrorDeclarationEnd = 154;
constexpr unsigned short kErrorEmptyEntityName = 155;
constexpr unsigned short kErrorEntityReference = 156;
constexpr unsigned short kErrorEntityName = 159;
constexpr unsigned short kErrorNData = 160;
constexpr unsigned short kErrorXmlDeclarationPlace = 161;
constexpr unsigned short kErrorCommentSyntax = 169;
constexpr unsigned short kErrorBang = 170;
constexpr unsigned short kErrorXmlCase = 171;
constexpr unsigned short kErrorPITarget = 172;
constexpr unsigned short kErrorCharRef = 178;
constexpr unsigned short kErrorInvalidUnicode = 179;
constexpr unsigned short kErrorLoopedEntity = 184;
constexpr unsigned short kErrorHugeText = 190;
constexpr unsigned short kErrorUndefinedParameter = 514;
constexpr unsigned short kErrorEmptyInput = 68;
constexpr unsigned short kErrorExternalEntity = 516;

struct EntityRow {
    const char* name;
    uint32_t first;
    uint32_t second;
};
#include "entities.inc"

inline bool isSpace(UChar32 c) {
    return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
}

UnicodeString charText(UChar32 c) {
    return c == kEof ? UnicodeString() : UnicodeString(c);
}

using EntityList = std::vector<std::pair<int32_t, UnicodeString>>;

/// The built-in sets, interned and made once per process under their lock.
ZkLock& entitySetLock() {
    static ZkLock lock;
    return lock;
}

const EntityList& entitySet(int set) {
    static EntityList sets[3];
    static bool built[3] = {};
    if (!built[set]) {
        const EntityRow* rows = set == kEntitySetMathML  ? kEntitiesMathML
                                : set == kEntitySetXhtml ? kEntitiesXhtml
                                                         : kEntitiesHtml;
        size_t count = set == kEntitySetMathML  ? sizeof kEntitiesMathML / sizeof *rows
                       : set == kEntitySetXhtml ? sizeof kEntitiesXhtml / sizeof *rows
                                                : sizeof kEntitiesHtml / sizeof *rows;
        EntityList& list = sets[set];
        list.reserve(count);
        for (size_t i = 0; i < count; ++i) {
            UnicodeString text;
            // Replacement text is read again as markup: "<" and "&" stay references.
            for (uint32_t c : {rows[i].first, rows[i].second}) {
                if (c == '<')
                    text.append(u"&#60;");
                else if (c == '&')
                    text.append(u"&#38;");
                else if (c != 0)
                    text.append(UChar32(c));
            }
            ZkName name(UnicodeString(rows[i].name, -1, US_INV));
            list.emplace_back(name.getEnum(), text);
        }
        built[set] = true;
    }
    return sets[set];
}

/// What one external subset declared, kept for the life of the process.
struct SubsetRecord {
    std::unordered_map<int32_t, UnicodeString> tables[4];
};

ZkLock& subsetCacheLock() {
    static ZkLock lock;
    return lock;
}

std::map<std::u16string, std::shared_ptr<const SubsetRecord>>& subsetCache() {
    static std::map<std::u16string, std::shared_ptr<const SubsetRecord>> cache;
    return cache;
}

std::u16string key(const UnicodeString& text) {
    return std::u16string(text.getBuffer(), size_t(text.length()));
}

bool isPubid(const UnicodeString& text) {
    for (int32_t i = 0; i < text.length(); ++i) {
        char16_t c = text[i];
        bool pubidChar = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                         (c >= '0' && c <= '9') || u_strchr(u" \r\n-'()+,./:=?;!*#@$_%", c);
        if (!pubidChar)
            return false;
    }
    return true;
}

bool startsWith(const UnicodeString& text, const char16_t* prefix) {
    return text.startsWith(UnicodeString(prefix));
}
} // namespace

bool XmlScanner::isOpenInput(const UnicodeString& uri) const {
    ZkUri resolved(ZkUri(m_in.baseUri), uri);
    UnicodeString text = resolved.toString();
    UnicodeString path = resolved.isFile() ? resolved.getLocalPath() : text;
    auto open = [&](const InputState& input) {
        return !input.stringFrame && (input.inputUri == text || input.inputUri == path);
    };
    if (open(m_in))
        return true;
    for (const InputState& frame : m_frames) {
        if (open(frame))
            return true;
    }
    return false;
}

void XmlScanner::loadEntitySet(int set) {
    ZkMutex guard(entitySetLock());
    if (m_setLoaded[set])
        return;
    m_setLoaded[set] = true;
    if (set == kEntitySetHtml) {
        // The largest set is read in place, not copied into every parser.
        static std::unordered_map<int32_t, UnicodeString> s_html;
        if (s_html.empty())
            s_html.insert(entitySet(set).begin(), entitySet(set).end());
        m_sharedEntities = &s_html;
        return;
    }
    for (const auto& entry : entitySet(set)) {
        if (m_externalEntities.count(entry.first) == 0)
            m_entities.emplace(entry.first, entry.second); // a document's own entity wins
    }
}

void XmlScanner::scanSubset(bool external) {
    for (;;) {
        UChar32 c = readChar();
        if (c == kEof) {
            if (!external || m_includeDepth > 0)
                report(kErrorDeclarationEnd, UnicodeString(external ? u"INCLUDE" : u"DOCTYPE"),
                       UnicodeString());
            return;
        }
        if (isSpace(c))
            continue;
        if (c == ']') {
            if (m_includeDepth > 0) {
                // The end of an INCLUDE section: "]]>".
                if (readChar() == ']' && readChar() == '>') {
                    --m_includeDepth;
                    continue;
                }
                report(kErrorUnexpectedCharacter, UnicodeString(u"]"), UnicodeString());
                continue;
            }
            if (!external)
                return;
            report(kErrorUnexpectedCharacter, UnicodeString(c), UnicodeString());
            continue;
        }
        if (c == '%') {
            parameterReference(external);
            continue;
        }
        if (c != '<') {
            report(kErrorUnexpectedCharacter, UnicodeString(c), UnicodeString());
            continue;
        }
        c = readChar();
        if (c == '?') {
            // A processing instruction in the subset is read and dropped; an XML declaration
            // has no place here.
            ZkName target = readName();
            UnicodeString name = target.toString();
            if (name == UnicodeString(u"xml"))
                report(kErrorXmlDeclarationPlace, UnicodeString(), UnicodeString());
            else if (UnicodeString(name).toLower() == UnicodeString(u"xml"))
                report(kErrorXmlCase, name, UnicodeString());
            c = peekChar();
            if (target.isEmpty() || (!isSpace(c) && c != '?'))
                report(kErrorPITarget, name, UnicodeString());
            for (UChar32 previous = 0;; previous = c) {
                c = readChar();
                if (c == kEof) {
                    report(kErrorDeclarationEnd, UnicodeString(u"DOCTYPE"), UnicodeString());
                    return;
                }
                if (previous == '?' && c == '>')
                    break;
            }
            continue;
        }
        if (c != '!') {
            report(kErrorUnexpectedCharacter, UnicodeString(u"<") + charText(c), UnicodeString());
            continue;
        }
        c = readChar();
        if (c == '-') {
            if (readChar() != '-')
                report(kErrorCommentSyntax, UnicodeString(), UnicodeString());
            for (int dashes = 0;;) {
                c = readChar();
                if (c == kEof) {
                    report(kErrorDeclarationEnd, UnicodeString(u"DOCTYPE"), UnicodeString());
                    return;
                }
                if (dashes >= 2 && c == '>')
                    break;
                dashes = c == '-' ? dashes + 1 : 0;
            }
            continue;
        }
        if (c == '[') {
            skipConditionalSection(external);
            continue;
        }
        pushBack(c);
        ZkName keyword = readName();
        UnicodeString word = keyword.toString();
        if (word == UnicodeString(u"ENTITY")) {
            scanEntityDeclaration(external);
        } else if (word.startsWith(UnicodeString(u"ENTITY"))) {
            report(kErrorMissingWhitespaceAfter, UnicodeString(u"<!ENTITY"), UnicodeString());
            skipDeclaration(external);
        } else if (word == UnicodeString(u"ELEMENT") || word == UnicodeString(u"ATTLIST") ||
                   word == UnicodeString(u"NOTATION")) {
            skipDeclaration(external);
        } else {
            report(kErrorBang, word, UnicodeString());
            skipDeclaration(external);
        }
    }
}

void XmlScanner::skipConditionalSection(bool external) {
    // After "<![": the keyword, perhaps from a parameter entity, then "[".
    for (;;) {
        skipWhitespace();
        if (peekChar() != '%')
            break;
        readChar();
        parameterReference(external);
    }
    ZkName keyword = readName();
    skipWhitespace();
    UChar32 c = readChar();
    UnicodeString word = keyword.toString();
    if (c != '[' || (word != UnicodeString(u"IGNORE") && word != UnicodeString(u"INCLUDE"))) {
        report(kErrorBang, UnicodeString(u"[") + word, UnicodeString());
        return;
    }
    if (word == UnicodeString(u"INCLUDE")) {
        ++m_includeDepth; // its declarations are read as they stand; "]]>" closes it
        return;
    }
    // IGNORE: the section ends at the second "]" and the ">" after it. The two need not be
    // adjacent and nothing nests: an ignored section is passed over without being read.
    int brackets = 2;
    UChar32 quote = 0;
    for (;;) {
        c = readChar();
        if (c == kEof) {
            report(kErrorDeclarationEnd, UnicodeString(u"DOCTYPE"), UnicodeString());
            return;
        }
        if (quote) {
            if (c == quote)
                quote = 0;
            continue;
        }
        if (brackets > 0) {
            if (c == ']')
                --brackets;
            continue;
        }
        if (c == '"' || c == '\'')
            quote = c;
        else if (c == '>')
            return;
    }
}

void XmlScanner::skipDeclaration(bool external) {
    // ELEMENT, ATTLIST and NOTATION: passed over to their ">", quoted strings respected and
    // parameter references replaced, since one may hold the end of the declaration.
    int depth = 1;
    UChar32 quote = 0;
    for (;;) {
        UChar32 c = readChar();
        if (c == kEof) {
            report(kErrorDeclarationEnd, UnicodeString(u"DOCTYPE"), UnicodeString());
            return;
        }
        if (quote) {
            if (c == quote)
                quote = 0;
        } else if (c == '"' || c == '\'') {
            quote = c;
        } else if (c == '%' && ZkChar::isNameStartChar(peekChar())) {
            parameterReference(external);
        } else if (c == '<') {
            ++depth;
        } else if (c == '>' && --depth == 0) {
            return;
        }
    }
}

void XmlScanner::parameterReference(bool external) {
    ZkName name = readName();
    if (name.isEmpty()) {
        report(kErrorEmptyEntityName, UnicodeString(), UnicodeString());
        return;
    }
    UChar32 c = readChar();
    if (c != ';') {
        pushBack(c);
        report(kErrorEntityReference, UnicodeString(u"%") + name.toString() + charText(c),
               UnicodeString());
        return;
    }
    auto internal = m_paramEntities.find(name.getEnum());
    if (internal != m_paramEntities.end()) {
        for (const auto& open : m_expanding) {
            if (open.first == name && open.second == 1) {
                report(kErrorLoopedEntity, UnicodeString(u"%") + name.toString(), UnicodeString());
                return;
            }
        }
        // The replacement is read again as subset text, set apart by a space on each side. All
        // that parameter entities bring into one subset counts against the text limit.
        m_subsetExpanded += internal->second.length() + 2;
        if (m_hugeTextLimit > 0 && m_subsetExpanded > m_hugeTextLimit) {
            report(kErrorHugeText, UnicodeString(), UnicodeString());
            return;
        }
        static const char16_t kEndMark[2] = {u' ', kExpansionEnd};
        pushBackText(kEndMark, 2);
        pushBackText(internal->second);
        pushBack(' ');
        m_expanding.emplace_back(name, 1);
        return;
    }
    auto outer = m_externalParamEntities.find(name.getEnum());
    if (outer == m_externalParamEntities.end()) {
        if (m_features[ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY] || external)
            return;
        if (m_reportedParams.insert(name.getEnum()).second)
            report(kErrorUndefinedParameter, name.toString(), UnicodeString());
        return;
    }
    if (m_features[ZkXmlParser::FEATURE_NO_EXTERNAL_ENTITY]) {
        report(kErrorExternalEntity,
               UnicodeString(u"<!ENTITY ") + name.toString() + u" " + outer->second,
               UnicodeString());
        return;
    }
    if (isOpenInput(outer->second)) {
        // An entity read again from within itself never ends.
        report(kErrorLoopedEntity, UnicodeString(u"%") + name.toString(), UnicodeString());
        return;
    }
    try {
        pushStream(outer->second, ZkName(), UnicodeString());
    } catch (const ZkError&) {
        if (!m_features[ZkXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITY])
            throw;
    }
}

void XmlScanner::readEntityValue(bool external, UnicodeString& value) {
    // Character references are expanded, entity references kept for their use, parameter
    // references in an external subset replaced.
    value.remove();
    UChar32 quote = readChar();
    UnicodeString raw;
    for (;;) {
        UChar32 c = readChar();
        if (c == quote)
            break;
        if (c == kEof) {
            report(kErrorDeclarationEnd, UnicodeString(u"ENTITY"), UnicodeString());
            return;
        }
        raw.append(c);
    }
    int32_t length = raw.length();
    for (int32_t i = 0; i < length;) {
        UChar32 c = raw.char32At(i);
        i += U16_LENGTH(c);
        if (c != '&' && c != '%') {
            value.append(c);
            continue;
        }
        int32_t start = i;
        if (c == '&' && i < length && raw[i] == '#') {
            bool hex = i + 1 < length && raw[i + 1] == 'x';
            int32_t j = i + (hex ? 2 : 1);
            uint32_t code = 0;
            int digits = 0;
            for (; j < length; ++j) {
                char16_t d = raw[j];
                int digit = d >= '0' && d <= '9'          ? d - '0'
                            : hex && d >= 'a' && d <= 'f' ? d - 'a' + 10
                            : hex && d >= 'A' && d <= 'F' ? d - 'A' + 10
                                                          : -1;
                if (digit < 0)
                    break;
                if (code <= 0x10FFFF)
                    code = code * (hex ? 16 : 10) + uint32_t(digit);
                ++digits;
            }
            UnicodeString body(raw, i, j - i);
            if (j >= length || raw[j] != ';' || digits == 0) {
                report(kErrorCharRef, body, UnicodeString());
                return;
            }
            bool valid = code <= 0x10FFFF && (m_xml11 ? ZkChar::isValidChar11(UChar32(code))
                                                      : ZkChar::isValidChar(UChar32(code)));
            if (!valid && !m_features[ZkXmlParser::FEATURE_NO_CHAR_CHECK])
                report(kErrorInvalidUnicode, UnicodeString(u"&") + body, UnicodeString());
            value.append(code <= 0x10FFFF ? UChar32(code) : 0xFFFD);
            i = j + 1;
            continue;
        }
        int32_t j = i;
        while (j < length && raw[j] != ';' && !isSpace(raw[j]) && raw[j] != '&' && raw[j] != '%')
            ++j;
        UnicodeString name(raw, start, j - start);
        if (name.isEmpty() || !ZkChar::isNameStartChar(name.char32At(0))) {
            report(kErrorEmptyEntityName, UnicodeString(), UnicodeString());
            return;
        }
        if (j >= length || raw[j] != ';') {
            report(kErrorEntityReference,
                   UnicodeString(c) + name + (j < length ? UnicodeString(raw[j]) : UnicodeString()),
                   UnicodeString());
            return;
        }
        i = j + 1;
        if (c == '&') {
            value.append(u'&').append(name).append(u';');
            continue;
        }
        if (!external) {
            // The internal subset takes no parameter references inside a declaration.
            report(kErrorUnexpectedCharacter, UnicodeString(u"%"), UnicodeString());
            return;
        }
        auto found = m_paramEntities.find(ZkName(name).getEnum());
        if (found != m_paramEntities.end()) {
            // Values built from values grow by multiplication: the text limit holds here too.
            if (m_hugeTextLimit > 0 &&
                int64_t(value.length()) + found->second.length() > m_hugeTextLimit) {
                report(kErrorHugeText, UnicodeString(), UnicodeString());
                return;
            }
            value.append(found->second);
        }
    }
}

void XmlScanner::scanEntityDeclaration(bool external) {
    if (!skipWhitespace())
        report(kErrorMissingWhitespaceAfter, UnicodeString(u"<!ENTITY"), UnicodeString());
    bool parameter = false;
    if (peekChar() == '%') {
        readChar();
        parameter = true;
        if (!skipWhitespace())
            report(kErrorMissingWhitespaceAfter, UnicodeString(u"<!ENTITY %"), UnicodeString());
    }
    ZkName name = readName();
    if (name.isEmpty())
        report(kErrorEntityName, UnicodeString(u"!ENTITY "), UnicodeString());
    UnicodeString declared = UnicodeString(u"<!ENTITY ") + name.toString();
    if (!skipWhitespace())
        report(kErrorMissingWhitespaceAfter, declared, UnicodeString());
    auto& internalTable = parameter ? m_paramEntities : m_entities;
    auto& externalTable = parameter ? m_externalParamEntities : m_externalEntities;
    // The first declaration of a name wins; a later one is read and dropped.
    bool fresh =
        internalTable.count(name.getEnum()) == 0 && externalTable.count(name.getEnum()) == 0;
    UChar32 quote = peekChar();
    if (quote == '"' || quote == '\'') {
        UnicodeString value;
        readEntityValue(external, value);
        if (fresh)
            internalTable.emplace(name.getEnum(), value);
    } else {
        ZkName keyword = readName();
        UnicodeString word = keyword.toString();
        if (keyword != ZKN_SYSTEM && keyword != ZKN_PUBLIC) {
            report(kErrorExternalId, declared, UnicodeString());
            return;
        }
        if (!skipWhitespace())
            report(kErrorMissingWhitespaceAfter, declared + u" " + word, UnicodeString());
        UnicodeString systemId;
        if (keyword == ZKN_PUBLIC) {
            quote = peekChar();
            if (quote != '"' && quote != '\'')
                report(kErrorPubidLiteral, declared + u" PUBLIC", UnicodeString());
            UnicodeString pubid;
            readLiteral(LITERAL_PLAIN, pubid);
            if (!isPubid(pubid))
                report(kErrorPubidLiteral, declared + u" PUBLIC", UnicodeString());
            if (!skipWhitespace())
                report(kErrorMissingWhitespaceAfter, declared + u" PUBLIC", UnicodeString());
        }
        quote = peekChar();
        if (quote != '"' && quote != '\'')
            report(kErrorSystemLiteral, declared + u" SYSTEM|PUBLIC", UnicodeString());
        readLiteral(LITERAL_PLAIN, systemId);
        // A relative identifier names a resource beside the subset that declared it.
        if (!m_in.baseUri.isEmpty())
            systemId = ZkUri(ZkUri(m_in.baseUri), systemId).toString();
        if (fresh)
            externalTable.emplace(name.getEnum(), systemId);
        bool spaced = skipWhitespace();
        if (!parameter && spaced) {
            UChar32 c = peekChar();
            if (c != '>' && c != kEof) {
                ZkName ndata = readName();
                if (ndata != ZKN_NDATA)
                    report(kErrorNData, declared + u" ... \"" + systemId + u"\"", UnicodeString());
                if (!skipWhitespace())
                    report(kErrorMissingWhitespaceAfter, UnicodeString(u"NDATA"), UnicodeString());
                if (readName().isEmpty())
                    report(kErrorEntityName, UnicodeString(u"NDATA"), UnicodeString());
            }
        }
    }
    skipWhitespace();
    UChar32 c = readChar();
    if (c != '>')
        report(kErrorUnexpectedCharacter, charText(c), UnicodeString());
}

void XmlScanner::applyDoctypeIdentifiers() {
    if (startsWith(m_pubid, u"-//W3C//DTD SVG")) {
        declareNamespace(ZkName(), ZKN_NS_SVG);
        if (resolvePrefix(ZKN_xlink).isEmpty())
            declareNamespace(ZKN_xlink, ZKN_NS_XLINK);
    }
    if (m_features[ZkXmlParser::FEATURE_NO_EXTERNAL_DTD])
        return;
    bool htmlPublic = startsWith(m_pubid, u"-//W3C//DTD HTML ");
    if (m_systemId.isEmpty()) {
        if (m_doctypeName == ZKN_html && htmlPublic)
            loadEntitySet(kEntitySetXhtml);
        return;
    }
    UnicodeString resolved = ZkUri(ZkUri(m_in.baseUri), m_systemId).toString();
    // Well-known DTDs are never fetched: a built-in set stands in for each.
    if (startsWith(resolved, u"http://www.w3.org/Graphics/SVG/"))
        return;
    if (startsWith(resolved, u"http://www.w3.org/Math/DTD/mathml") ||
        startsWith(resolved, u"http://www.w3.org/TR/MathML")) {
        loadEntitySet(kEntitySetMathML);
        return;
    }
    if (startsWith(resolved, u"http://www.w3.org/TR/xhtml") ||
        startsWith(resolved, u"http://www.w3.org/MarkUp/DTD/xhtml") || htmlPublic) {
        loadEntitySet(kEntitySetXhtml);
        return;
    }
    // Errors of the subset throw to the caller of next, whatever callback is installed.
    ZkXmlParser::ErrorCallback callback = m_callback;
    void* callbackData = m_callbackData;
    m_callback = nullptr;
    try {
        readExternalSubset(resolved);
    } catch (const ZkError&) {
        m_callback = callback;
        m_callbackData = callbackData;
        if (!m_features[ZkXmlParser::FEATURE_LAX_DTD_ERRORS])
            throw;
        return;
    }
    m_callback = callback;
    m_callbackData = callbackData;
}

void XmlScanner::readExternalSubset(const UnicodeString& resolved) {
    std::shared_ptr<const SubsetRecord> record;
    {
        ZkMutex guard(subsetCacheLock());
        auto found = subsetCache().find(key(resolved));
        if (found != subsetCache().end())
            record = found->second;
    }
    if (!record) {
        ZkPtr<ZkXmlParserImpl> reader(new ZkXmlParserImpl(m_info.get()));
        XmlScanner& subset = *reader->m_scanner;
        for (int i = 0; i < ZkXmlParser::kFeatureCount; ++i)
            subset.m_features[i] = m_features[i];
        // Parameter entities of the internal subset are seen by the external one; what it
        // then declares depends on them, so such a reading is not cached.
        bool cacheable = m_paramEntities.empty() && m_externalParamEntities.empty();
        ZkUri uri{resolved};
        try {
            subset.openUri(uri, UnicodeString(), UnicodeString());
        } catch (const ZkError& error) {
            if (error.getErrorCode() != kErrorEmptyInput)
                throw;
            return; // an empty subset declares nothing
        }
        subset.m_paramEntities = m_paramEntities;
        subset.m_externalParamEntities = m_externalParamEntities;
        subset.m_in.line = 1;
        subset.m_in.column = 0;
        subset.readTextDeclaration();
        subset.scanSubset(/*external=*/true);
        auto made = std::make_shared<SubsetRecord>();
        made->tables[0] = subset.m_entities;
        made->tables[1] = subset.m_paramEntities;
        made->tables[2] = subset.m_externalEntities;
        made->tables[3] = subset.m_externalParamEntities;
        if (cacheable) {
            ZkMutex guard(subsetCacheLock());
            subsetCache()[key(resolved)] = made;
        }
        record = made;
    }
    std::unordered_map<int32_t, UnicodeString>* internal[2] = {&m_entities, &m_paramEntities};
    std::unordered_map<int32_t, UnicodeString>* outer[2] = {&m_externalEntities,
                                                            &m_externalParamEntities};
    for (int table = 0; table < 4; ++table) {
        int kind = table % 2;
        auto& target = table < 2 ? *internal[kind] : *outer[kind];
        for (const auto& entry : record->tables[table]) {
            if (internal[kind]->count(entry.first) == 0 && outer[kind]->count(entry.first) == 0)
                target.emplace(entry.first, entry.second);
        }
    }
}

void XmlScanner::enterMathScope() {
    if (m_features[ZkXmlParser::FEATURE_NO_EXTERNAL_DTD] || m_setLoaded[kEntitySetMathML])
        return;
    int depth = int(m_open.size());
    if (depth <= 1) {
        if (!m_doctypeSeen)
            loadEntitySet(kEntitySetMathML); // for the whole document
        return;
    }
    m_mathSnapshot = m_owner.saveEntityMaps();
    m_mathScopeDepth = depth;
    loadEntitySet(kEntitySetMathML);
}

void XmlScanner::leaveMathScope() {
    if (m_mathScopeDepth < 0 || int(m_open.size()) != m_mathScopeDepth)
        return;
    m_mathScopeDepth = -1;
    m_owner.recoverEntityMaps(m_mathSnapshot);
}

} // namespace detail
} // namespace ZkCommonNS
