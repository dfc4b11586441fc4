// ZkTokenizer: cuts a property value, a CSS value or a small parameter string into tokens and
// hands them out raw or as ZkValues.
#ifndef ZKCOMMON_VALUES_TOKENIZER_H
#define ZKCOMMON_VALUES_TOKENIZER_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"
#include "zkcommon/values/value.h"

#include <memory>
#include <utility>

namespace ZkCommonNS {

/// Reads a private zero-terminated copy of its text with one cursor. Nothing here throws or
/// reports: an unterminated string falls back to a character token, an unknown unit goes back
/// into the stream, a malformed hash colour falls back to the `#` character; the caller decides
/// what is an error. A copy shares its source's buffer and cursor position, so a pointer taken
/// from a look-ahead copy may be given back to the source by setPtr; the buffer lives as long as
/// any tokenizer reading it.
class ZKCOMMON_API ZkTokenizer {
public:
    /// The rules of names, comments and units.
    enum TokenizerType : int {
        TokenizerDefault = 0,    ///< names are NCNames (XSL-FO values, internal parses)
        TokenizerCSS = 1,        ///< CSS identifiers with escapes
        TokenizerCSSComment = 2, ///< as CSS, and comments are skipped with white space
        TokenizerCSSUnit = 3,    ///< as CSS, and a unit stops at a hyphen (1px-2px)
        TokenizerMime = 4,       ///< names are runs of MIME token characters
        TokenizerBlank = 5,      ///< names run up to a blank or a no-break space
        TokenizerPlainQuote = 6  ///< as the default, with strings read in quote mode 3
    };

    /// Token types; a positive type is one character, its UTF-16 code.
    enum : int {
        TokenEnd = -1,
        TokenNone = -2,
        TokenNumber = -3,
        TokenName = -4,
        TokenString = -5,
        TokenHashColor = -6,     ///< 3 or 6 hex digits; the number is the 24-bit word
        TokenHashColorAlpha = -7 ///< 4 or 8 hex digits; the number is RRGGBBAA
    };

    /// A bogus text reads as the empty text.
    explicit ZkTokenizer(const UnicodeString& text, TokenizerType type = TokenizerDefault);
    ZkTokenizer(const ZkTokenizer& other);
    ZkTokenizer(ZkTokenizer&& other) noexcept;
    ZkTokenizer& operator=(const ZkTokenizer& other);
    ZkTokenizer& operator=(ZkTokenizer&& other) noexcept;
    ~ZkTokenizer();

    /// The type of the next token; a pushed-back token comes again with its fields unchanged.
    int nextToken();
    /// The current token comes again on the next read; one level only.
    void pushBack() noexcept { m_pushedBack = true; }
    bool isPushedBack() const noexcept { return m_pushedBack; }

    /// The name, the string's content or the unit of the last token.
    const UnicodeString& getStr() const noexcept { return m_tokenText; }
    int getTokenType() const noexcept { return m_tokenType; }
    /// The number of a numeric token, or the word of a hash colour.
    double getNumber() const noexcept { return m_number; }
    bool isTokenTypeCharacter() const noexcept { return m_tokenType > 32; }
    TokenizerType getTokenizerType() const noexcept { return m_tokenizerType; }
    void setTokenizerType(TokenizerType type) noexcept { m_tokenizerType = type; }
    bool isCSSTokenizer() const noexcept {
        return m_tokenizerType >= TokenizerCSS && m_tokenizerType <= TokenizerCSSUnit;
    }

    /// The cursor in UTF-16 units from the start.
    int getOffset() const noexcept { return static_cast<int>(m_ptr - m_start); }
    const char16_t* getPtr() const noexcept { return m_ptr; }
    /// Moves the cursor; a pointer outside the buffer is ignored.
    void setPtr(const char16_t* ptr) noexcept;
    /// The buffer's first unit and its terminating zero.
    const char16_t* getStart() const noexcept { return m_start; }
    const char16_t* getLimit() const noexcept { return m_limit; }
    bool hasQuote() const noexcept { return m_quoted; }
    bool hasDecimalPoint() const noexcept { return m_decimalPoint; }

    /// Moves over TAB, LF, CR and blank; the count passed.
    int skipWhitespace() noexcept;
    /// False when a token is pushed back; else looks past white space without moving.
    bool scanSeparator(char16_t c) const noexcept;
    /// False when a token is pushed back. Moves past white space, then past `c` and the white
    /// space behind it when `c` stands there.
    bool skipSeparator(char16_t c) noexcept;

    /// The next token as a value: Null at the end, a character as Integer of unit 20.
    ZkValue nextTokenValue(bool negate = false);
    /// As nextTokenValue, with a sign before a number read into it; the exponent rule in the
    /// CSS types only.
    ZkValue nextTokenValueSigned();
    ZkValue nextTokenValueSigned(bool exponent);
    /// nextTokenValueSigned with the exponent rule.
    ZkValue nextTokenValueExp();
    /// A signed number with its exponent, as a double (0 when no number stands there).
    double nextTokenDoubleExp();
    /// A value that may be a function call or a parenthesised group; with `asText` the call is
    /// kept as its name and raw text.
    ZkValue nextTokenValueFunc(bool asText = false, ZkName* funcName = nullptr);
    /// One item of a `sep`-separated list in which quoted parts may hold the separator.
    UnicodeString nextSeparatedValue(char16_t sep, bool keepQuotes = false);

private:
    bool checkCSSName() const noexcept;
    /// Applies an exponent behind a plain number; gives the mantissa and the exponent read.
    std::pair<double, double> eNotation(ZkValue& value);
    void scanCSSName();
    void scanNameRun();
    int scanNumber();
    int scanUnit();
    ZkValue nextTokenValueFuncDepth(bool asText, ZkName* funcName, int depth);
    int quoteMode() const noexcept;
    void becomeEmpty() noexcept;

    std::shared_ptr<const UnicodeString> m_text;
    const char16_t* m_start;
    const char16_t* m_ptr;
    const char16_t* m_limit;
    TokenizerType m_tokenizerType;
    int m_tokenType = TokenNone;
    double m_number = 0.0;
    UnicodeString m_tokenText;
    bool m_pushedBack = false;
    bool m_quoted = false;
    bool m_decimalPoint = false;
    /// The last number as read into a value, its sign included: the mantissa of an exponent.
    double m_valueNumber = 0.0;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_TOKENIZER_H
