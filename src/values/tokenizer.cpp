// ZkTokenizer: one cursor over a zero-terminated UTF-16 buffer, the token rules of each
// tokenizer type, and the readers that turn tokens into values, signed numbers, exponents,
// function calls and separated items.
#include "zkcommon/values/tokenizer.h"

#include "text/clocale.h"
#include "values/parserinternal.h"
#include "zkcommon/core/char.h"
#include "zkcommon/text/util.h"
#include "zkcommon/values/color.h"
#include "zkcommon/values/parser.h"

#include <cmath>
#include <string>

namespace ZkCommonNS {

namespace {

const char16_t kEmptyBuffer[1] = {0};

// Nested calls deeper than this are kept as their raw text instead of being read argument by
// argument, so that hostile input cannot drive the recursion.
constexpr int kMaxFunctionNesting = 32;

bool isBlank(char16_t c) noexcept {
    return c == 0x20 || c == 0x09 || c == 0x0A || c == 0x0D;
}
bool isDigit(char16_t c) noexcept {
    return c >= u'0' && c <= u'9';
}
int hexValue(char16_t c) noexcept {
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}
bool isAsciiLetter(char16_t c) noexcept {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z');
}

// The code point at p (p < limit).
UChar32 codePointAt(const char16_t* p, const char16_t* limit, int& length) noexcept {
    UChar32 c = p[0];
    length = 1;
    if (U16_IS_LEAD(c) && p + 1 < limit && U16_IS_TRAIL(p[1])) {
        c = U16_GET_SUPPLEMENTARY(c, p[1]);
        length = 2;
    }
    return c;
}

bool isNameChar(UChar32 c) noexcept {
    return ZkChar::isNCNameChar(c);
}

} // namespace

// Life cycle --------------------------------------------------------------------------------

ZkTokenizer::ZkTokenizer(const UnicodeString& text, TokenizerType type) : m_tokenizerType(type) {
    // One deep copy with room for the terminating zero, so that the buffer is ours alone and
    // terminating it moves nothing.
    auto own = std::make_shared<UnicodeString>();
    int32_t length = text.isBogus() ? 0 : text.length();
    if (char16_t* buffer = own->getBuffer(length + 1)) {
        text.extract(0, length, buffer);
        own->releaseBuffer(length);
    }
    m_start = own->getTerminatedBuffer();
    m_text = std::move(own);
    if (!m_start) { // out of memory: read nothing
        m_start = kEmptyBuffer;
        m_limit = m_start;
    } else {
        m_limit = m_start + m_text->length();
    }
    m_ptr = m_start;
}

ZkTokenizer::ZkTokenizer(const ZkTokenizer& other) = default;
ZkTokenizer& ZkTokenizer::operator=(const ZkTokenizer& other) = default;

ZkTokenizer::ZkTokenizer(ZkTokenizer&& other) noexcept
    : m_text(std::move(other.m_text)), m_start(other.m_start), m_ptr(other.m_ptr),
      m_limit(other.m_limit), m_tokenizerType(other.m_tokenizerType),
      m_tokenType(other.m_tokenType), m_number(other.m_number),
      m_tokenText(std::move(other.m_tokenText)), m_pushedBack(other.m_pushedBack),
      m_quoted(other.m_quoted), m_decimalPoint(other.m_decimalPoint),
      m_valueNumber(other.m_valueNumber) {
    other.becomeEmpty();
}

ZkTokenizer& ZkTokenizer::operator=(ZkTokenizer&& other) noexcept {
    if (this != &other) {
        m_text = std::move(other.m_text);
        m_start = other.m_start;
        m_ptr = other.m_ptr;
        m_limit = other.m_limit;
        m_tokenizerType = other.m_tokenizerType;
        m_tokenType = other.m_tokenType;
        m_number = other.m_number;
        m_tokenText = std::move(other.m_tokenText);
        m_pushedBack = other.m_pushedBack;
        m_quoted = other.m_quoted;
        m_decimalPoint = other.m_decimalPoint;
        m_valueNumber = other.m_valueNumber;
        other.becomeEmpty();
    }
    return *this;
}

ZkTokenizer::~ZkTokenizer() = default;

void ZkTokenizer::becomeEmpty() noexcept {
    m_text.reset();
    m_start = m_ptr = m_limit = kEmptyBuffer;
    m_tokenType = TokenNone;
    m_number = 0.0;
    m_pushedBack = false;
}

void ZkTokenizer::setPtr(const char16_t* ptr) noexcept {
    if (ptr >= m_start && ptr <= m_limit)
        m_ptr = ptr;
}

int ZkTokenizer::quoteMode() const noexcept {
    if (isCSSTokenizer())
        return ZkUtil::QUOTE_CSS_STRING;
    return m_tokenizerType == TokenizerPlainQuote ? ZkUtil::QUOTE_XSL_PLAIN : ZkUtil::QUOTE_XSL;
}

// White space and separators ----------------------------------------------------------------

int ZkTokenizer::skipWhitespace() noexcept {
    const char16_t* from = m_ptr;
    for (;;) {
        while (m_ptr < m_limit && isBlank(*m_ptr))
            ++m_ptr;
        // A comment counts as white space in the comment type; an unterminated one runs to the
        // end of the text.
        if (m_tokenizerType == TokenizerCSSComment && m_ptr + 1 < m_limit && m_ptr[0] == u'/' &&
            m_ptr[1] == u'*') {
            const char16_t* p = m_ptr + 2;
            while (p + 1 < m_limit && !(p[0] == u'*' && p[1] == u'/'))
                ++p;
            m_ptr = p + 1 < m_limit ? p + 2 : m_limit;
            continue;
        }
        break;
    }
    return static_cast<int>(m_ptr - from);
}

bool ZkTokenizer::scanSeparator(char16_t c) const noexcept {
    if (m_pushedBack)
        return false;
    ZkTokenizer& self = const_cast<ZkTokenizer&>(*this);
    const char16_t* save = m_ptr;
    self.skipWhitespace();
    bool found = m_ptr < m_limit && *m_ptr == c;
    self.m_ptr = save;
    return found;
}

bool ZkTokenizer::skipSeparator(char16_t c) noexcept {
    if (m_pushedBack)
        return false;
    skipWhitespace();
    if (m_ptr < m_limit && *m_ptr == c) {
        ++m_ptr;
        skipWhitespace();
        return true;
    }
    return false;
}

// Tokens ------------------------------------------------------------------------------------

bool ZkTokenizer::checkCSSName() const noexcept {
    if (!isCSSTokenizer() || m_ptr >= m_limit || *m_ptr != u'-')
        return false;
    const char16_t* p = m_ptr + 1;
    if (p < m_limit && *p == u'-')
        return true; // a custom name
    // A vendor prefix: letters up to a second hyphen.
    const char16_t* letters = p;
    while (p < m_limit && isAsciiLetter(*p))
        ++p;
    return p > letters && p < m_limit && *p == u'-';
}

void ZkTokenizer::scanCSSName() {
    m_tokenText.remove();
    const char16_t* runStart = m_ptr;
    while (m_ptr < m_limit) {
        char16_t c = *m_ptr;
        if (c == u'\\') {
            m_tokenText.append(runStart, static_cast<int32_t>(m_ptr - runStart));
            ++m_ptr;
            if (m_ptr >= m_limit) {
                runStart = m_ptr;
                break; // a backslash at the end ends the name
            }
            char16_t next = *m_ptr;
            if (next == u'\n' || next == u'\f') {
                ++m_ptr;
            } else if (next == u'\r') {
                ++m_ptr;
                if (m_ptr < m_limit && *m_ptr == u'\n')
                    ++m_ptr;
            } else if (hexValue(next) >= 0) {
                UChar32 value = 0;
                for (int i = 0; i < 6 && m_ptr < m_limit && hexValue(*m_ptr) >= 0; ++i)
                    value = value * 16 + hexValue(*m_ptr++);
                if (m_ptr < m_limit && (isBlank(*m_ptr) || *m_ptr == u'\f'))
                    ++m_ptr;
                if (value == 0 || value > 0x10FFFF || U_IS_SURROGATE(value))
                    value = 0xFFFD;
                m_tokenText.append(value);
            } else {
                int length;
                m_tokenText.append(codePointAt(m_ptr, m_limit, length));
                m_ptr += length;
            }
            runStart = m_ptr;
            continue;
        }
        int length;
        UChar32 cp = codePointAt(m_ptr, m_limit, length);
        if (!isNameChar(cp))
            break;
        m_ptr += length;
    }
    m_tokenText.append(runStart, static_cast<int32_t>(m_ptr - runStart));
}

void ZkTokenizer::scanNameRun() {
    const char16_t* from = m_ptr;
    switch (m_tokenizerType) {
    case TokenizerMime:
        while (m_ptr < m_limit && ZkChar::isMIMETokenChar(*m_ptr))
            ++m_ptr;
        break;
    case TokenizerBlank:
        while (m_ptr < m_limit && *m_ptr != u' ' && *m_ptr != 0xA0)
            ++m_ptr;
        break;
    default:
        while (m_ptr < m_limit) {
            int length;
            if (!isNameChar(codePointAt(m_ptr, m_limit, length)))
                break;
            m_ptr += length;
        }
        break;
    }
    m_tokenText.setTo(from, static_cast<int32_t>(m_ptr - from));
}

// [digits] [. digits]: the number text is ASCII, converted by strtod in the C locale.
int ZkTokenizer::scanNumber() {
    const char16_t* from = m_ptr;
    while (m_ptr < m_limit && isDigit(*m_ptr))
        ++m_ptr;
    if (m_ptr < m_limit && *m_ptr == u'.' && (m_ptr > from || isDigit(m_ptr[1]))) {
        m_decimalPoint = true;
        ++m_ptr;
        while (m_ptr < m_limit && isDigit(*m_ptr))
            ++m_ptr;
    }
    // Up to 15 significant digits and 22 decimals the value is exact by one division, as
    // strtod's own fast path has it; longer numbers go through strtod.
    constexpr int kExactDigits = 15;
    static const double kPowersOf10[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                         1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                         1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    uint64_t mantissa = 0;
    int digits = 0, decimals = 0;
    bool fraction = false;
    for (const char16_t* p = from; p < m_ptr; ++p) {
        if (*p == u'.') {
            fraction = true;
            continue;
        }
        if (mantissa == 0 && *p == u'0') { // leading zeros count for nothing
            decimals += fraction;
            continue;
        }
        mantissa = mantissa * 10 + static_cast<uint64_t>(*p - u'0');
        ++digits;
        decimals += fraction;
        if (digits > kExactDigits)
            break;
    }
    if (digits <= kExactDigits && decimals <= 22) {
        m_number = static_cast<double>(mantissa) / kPowersOf10[decimals];
        return scanUnit();
    }
    char small[64];
    std::string large;
    char* text = small;
    size_t length = static_cast<size_t>(m_ptr - from);
    if (length >= sizeof(small)) {
        large.resize(length + 1);
        text = &large[0];
    }
    for (size_t i = 0; i < length; ++i)
        text[i] = static_cast<char>(from[i]);
    text[length] = 0;
    m_number = detail::parseDoubleC(text, nullptr);
    return scanUnit();
}

// The unit behind a number: a percent sign, or a name; in the unit type a hyphen ends it.
int ZkTokenizer::scanUnit() {
    const char16_t* unitStart = m_ptr;
    if (m_ptr < m_limit && *m_ptr == u'%') {
        ++m_ptr;
    } else if (m_ptr < m_limit) {
        int cpLength;
        if (ZkChar::isNCNameStartChar(codePointAt(m_ptr, m_limit, cpLength))) {
            m_ptr += cpLength;
            while (m_ptr < m_limit) {
                UChar32 c = codePointAt(m_ptr, m_limit, cpLength);
                if (!isNameChar(c) || (c == u'-' && m_tokenizerType == TokenizerCSSUnit))
                    break;
                m_ptr += cpLength;
            }
        }
    }
    m_tokenText.setTo(unitStart, static_cast<int32_t>(m_ptr - unitStart));
    return m_tokenType = TokenNumber;
}

int ZkTokenizer::nextToken() {
    if (m_pushedBack) {
        m_pushedBack = false;
        return m_tokenType;
    }
    m_tokenText.remove();
    m_number = 0.0;
    m_decimalPoint = false;
    skipWhitespace();
    if (m_ptr >= m_limit)
        return m_tokenType = TokenEnd;
    char16_t c = *m_ptr;

    if (c == u'"' || c == u'\'') {
        const char16_t* end = nullptr;
        UnicodeString content = ZkUtil::parseString(m_ptr, &end, quoteMode());
        // An embedded U+0000 ends the scan of the string early: that is an unterminated one.
        if (!content.isBogus() && end <= m_limit) {
            m_tokenText = content;
            m_quoted = true;
            m_ptr = end;
            return m_tokenType = TokenString;
        }
        ++m_ptr;
        return m_tokenType = c;
    }
    m_quoted = false;

    int length;
    UChar32 cp = codePointAt(m_ptr, m_limit, length);
    switch (m_tokenizerType) {
    case TokenizerCSS:
    case TokenizerCSSComment:
    case TokenizerCSSUnit:
        if (c == u'\\' || ZkChar::isNCNameStartChar(cp) || checkCSSName()) {
            scanCSSName();
            return m_tokenType = TokenName;
        }
        break;
    case TokenizerMime:
        if (ZkChar::isMIMETokenChar(c)) {
            scanNameRun();
            return m_tokenType = TokenName;
        }
        break;
    case TokenizerBlank:
        if (c != u' ' && c != 0xA0) {
            scanNameRun();
            return m_tokenType = TokenName;
        }
        break;
    default:
        if (ZkChar::isNCNameStartChar(cp)) {
            scanNameRun();
            return m_tokenType = TokenName;
        }
        break;
    }

    if (isDigit(c) || (c == u'.' && m_ptr + 1 < m_limit && isDigit(m_ptr[1])))
        return scanNumber();

    if (c == u'#' && m_ptr + 1 < m_limit && hexValue(m_ptr[1]) >= 0) {
        const char16_t* p = m_ptr + 1;
        while (p < m_limit && hexValue(*p) >= 0)
            ++p;
        int digits = static_cast<int>(p - m_ptr - 1);
        if (digits == 3 || digits == 4 || digits == 6 || digits == 8) {
            uint32_t word = 0;
            for (const char16_t* q = m_ptr + 1; q < p; ++q) {
                uint32_t h = static_cast<uint32_t>(hexValue(*q));
                word = digits <= 4 ? (word << 8) | (h * 17) : (word << 4) | h;
            }
            m_ptr = p;
            m_number = static_cast<double>(word);
            return m_tokenType =
                       (digits == 3 || digits == 6) ? TokenHashColor : TokenHashColorAlpha;
        }
    }

    m_ptr += length;
    return m_tokenType = cp;
}

// Values ------------------------------------------------------------------------------------

ZkValue ZkTokenizer::nextTokenValue(bool negate) {
    int type = nextToken();
    switch (type) {
    case TokenHashColorAlpha: {
        uint32_t word = static_cast<uint32_t>(m_number);
        ZkColor color(word >> 8);
        color.setAlpha(static_cast<float>(word & 255) / 255.0f, /*strict=*/false);
        return ZkValue(color);
    }
    case TokenHashColor:
        return ZkValue(ZkColor(static_cast<uint32_t>(m_number)));
    case TokenString:
        return ZkValue(m_tokenText, UnitLiteral);
    case TokenName:
        return ZkValue(ZkName(m_tokenText));
    case TokenEnd:
        return ZkValue();
    case TokenNumber: {
        double n = negate ? -m_number : m_number;
        m_valueNumber = n;
        if (!m_tokenText.isEmpty()) {
            ZkUnitType unit = detail::unitOfWord(m_tokenText);
            if (unit != UnitNone)
                return ZkValue(n, unit);
            // An unknown unit goes back into the stream: "1e3" reads its exponent later.
            m_ptr -= m_tokenText.length();
            m_tokenText.remove();
        }
        // "-0" stays a Real: an Integer has no negative zero to print back.
        bool integral = !m_decimalPoint && n == std::floor(n) && n >= -2147483648.0 &&
                        n <= 2147483647.0 && !(n == 0.0 && std::signbit(n));
        if (integral)
            return ZkValue(static_cast<int>(n));
        return ZkValue(n, UnitNumber);
    }
    default:
        return ZkValue(type, UnitChar);
    }
}

ZkValue ZkTokenizer::nextTokenValueSigned() {
    return nextTokenValueSigned(isCSSTokenizer());
}

ZkValue ZkTokenizer::nextTokenValueExp() {
    return nextTokenValueSigned(/*exponent=*/true);
}

ZkValue ZkTokenizer::nextTokenValueSigned(bool exponent) {
    if (m_pushedBack) {
        ZkValue pushed = nextTokenValue(false);
        if (!pushed.isCharacter())
            return pushed;
        // Give the character back and read it again below, a sign perhaps with its number.
        m_ptr -= U16_LENGTH(pushed.getCharacterValue());
        if (m_ptr < m_start)
            m_ptr = m_start;
    }
    skipWhitespace();
    ZkValue value;
    const char16_t* p = m_ptr;
    if (p + 1 < m_limit && (*p == u'-' || *p == u'+') &&
        (isDigit(p[1]) || (p[1] == u'.' && p + 2 < m_limit && isDigit(p[2])))) {
        ++m_ptr;
        value = nextTokenValue(*p == u'-');
        if (!value.isNumericalValue()) {
            m_ptr = p;
            value = nextTokenValue(false);
        }
    } else {
        value = nextTokenValue(false);
    }
    if (exponent)
        eNotation(value);
    return value;
}

std::pair<double, double> ZkTokenizer::eNotation(ZkValue& value) {
    double mantissa = m_valueNumber;
    if (!value.isNumericalValue() || value.getUnitType() != UnitNumber || m_ptr >= m_limit ||
        (*m_ptr != u'e' && *m_ptr != u'E'))
        return {mantissa, 0.0};
    const char16_t* save = m_ptr;
    ++m_ptr;
    ZkValue exp = nextTokenValueSigned(/*exponent=*/false);
    if (!exp.isNumericalValue()) {
        m_ptr = save;
        m_valueNumber = mantissa;
        return {mantissa, 0.0};
    }
    double e = m_valueNumber;
    value = ZkValue(std::pow(10.0, e) * mantissa, exp.getUnitType());
    m_valueNumber = mantissa;
    return {mantissa, e};
}

double ZkTokenizer::nextTokenDoubleExp() {
    ZkValue value = nextTokenValueSigned(/*exponent=*/false);
    if (!value.isNumericalValue())
        return 0.0;
    std::pair<double, double> me = eNotation(value);
    return me.first * std::pow(10.0, me.second);
}

ZkValue ZkTokenizer::nextTokenValueFunc(bool asText, ZkName* funcName) {
    return nextTokenValueFuncDepth(asText, funcName, 0);
}

ZkValue ZkTokenizer::nextTokenValueFuncDepth(bool asText, ZkName* funcName, int depth) {
    if (m_pushedBack && m_tokenType > 32) {
        m_ptr -= U16_LENGTH(m_tokenType);
        if (m_ptr < m_start)
            m_ptr = m_start;
        m_pushedBack = false;
    }
    skipWhitespace();
    const char16_t* start = m_ptr;
    ZkValue value = nextTokenValueSigned(/*exponent=*/true);
    UnicodeString name;
    const char16_t* open; // the "("
    if (value.isCharacter() && value.getCharacterValue() == u'(') {
        open = m_ptr - 1;
    } else if (value.isName() && m_ptr < m_limit && *m_ptr == u'(') {
        name = m_tokenText;
        open = m_ptr++;
    } else {
        return value;
    }
    if (funcName)
        *funcName = ZkName(name);

    // The arguments, up to the matching ")" or the end of the text.
    int argumentCount = 0;
    ZkValue single;
    if (depth < kMaxFunctionNesting) {
        for (;;) {
            ZkValue arg = nextTokenValueFuncDepth(false, nullptr, depth + 1);
            if (arg.isNull() || (arg.isCharacter() && arg.getCharacterValue() == u')'))
                break;
            if (++argumentCount == 1)
                single = arg;
        }
    } else {
        // Too deep to read by value: skip to the matching parenthesis by counting.
        argumentCount = 2;
        for (int level = 1; level > 0;) {
            int type = nextToken();
            if (type == TokenEnd)
                break;
            if (type == u'(')
                ++level;
            else if (type == u')')
                --level;
        }
    }
    const char16_t* close = m_ptr; // behind ")" or at the end
    UnicodeString parenthesised(open, static_cast<int32_t>(close - open));
    if (asText) {
        name.append(parenthesised);
        return ZkValue(name, UnitNone);
    }
    UnicodeString lower = name;
    lower.toLower(Locale::getRoot());
    ZkNameEnum known = ZkNameTable::getBuiltinNameEnum(lower);
    switch (known) {
    case ZKN_rgb:
    case ZKN_rgb_icc:
    case ZKN_rgba:
    case ZKN_cmyk:
    case ZKN_cmyka:
    case ZKN_device_cmyk:
    case ZKN_hsl:
    case ZKN_hsla:
    case ZKN_icc_color:
    case ZKN_system_color:
        return ZkParser::parseColor(UnicodeString(start, static_cast<int32_t>(close - start)),
                                    /*allowIcc=*/true, nullptr);
    case ZKN_url:
        return ZkValue(
            ZkUtil::unquoteUri(UnicodeString(start, static_cast<int32_t>(close - start))), UnitUri);
    case ZKN_local:
    case ZKN_format: {
        ZkUnitType unit = static_cast<ZkUnitType>(known == ZKN_local ? 63 : 62);
        if (argumentCount == 1)
            return ZkValue(single.toString(), unit);
        UnicodeString inner = parenthesised.tempSubString(1);
        if (inner.endsWith(u")"))
            inner.truncate(inner.length() - 1);
        return ZkValue(inner.trim(), unit);
    }
    default:
        name.append(parenthesised);
        return ZkValue(name, UnitNone);
    }
}

UnicodeString ZkTokenizer::nextSeparatedValue(char16_t sep, bool keepQuotes) {
    if (m_pushedBack) {
        m_pushedBack = false;
        return m_tokenText;
    }
    skipWhitespace();
    m_tokenText.remove();
    if (m_ptr >= m_limit) {
        m_tokenType = TokenEnd;
        m_number = 0.0;
        return UnicodeString();
    }
    int quotedParts = 0;
    int plainParts = 0;
    bool unterminated = false;
    int mode = quoteMode();
    for (;;) {
        char16_t c = m_ptr < m_limit ? *m_ptr : 0;
        if ((c == u'"' || c == u'\'') && m_ptr < m_limit) {
            const char16_t* end = nullptr;
            UnicodeString content = ZkUtil::parseString(m_ptr, &end, mode);
            if (!content.isBogus() && end <= m_limit) {
                m_tokenText.append(c).append(content).append(c);
                m_ptr = end;
            } else {
                m_tokenText.append(m_ptr, static_cast<int32_t>(m_limit - m_ptr));
                m_ptr = m_limit;
                unterminated = true;
            }
            m_quoted = true;
            ++quotedParts;
        } else {
            const char16_t* from = m_ptr;
            while (m_ptr < m_limit && (*m_ptr != sep || sep == 0) && *m_ptr != u'"' &&
                   *m_ptr != u'\'')
                ++m_ptr;
            m_tokenText.append(from, static_cast<int32_t>(m_ptr - from));
            m_quoted = false;
            ++plainParts;
        }
        int skipped = skipWhitespace();
        if (m_ptr >= m_limit || sep == 0 || isBlank(sep))
            break;
        if (*m_ptr == sep) {
            ++m_ptr;
            skipWhitespace();
            break;
        }
        if (skipped > 0)
            m_tokenText.append(u' ');
    }
    m_tokenType = TokenString;
    if (quotedParts == 1 && plainParts == 0 && !keepQuotes) {
        m_tokenText.remove(0, 1);
        if (!unterminated)
            m_tokenText.truncate(m_tokenText.length() - 1);
    }
    return m_tokenText;
}

} // namespace ZkCommonNS
