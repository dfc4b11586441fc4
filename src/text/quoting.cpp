// Quoting of ZkUtil: quoteString, parseString, unquoteString and quoteUri under the quote
// modes 3 and 7 (XSL values: quotes, doubling) and 43 (CSS: backslash escapes).
#include "zkcommon/text/util.h"

namespace ZkCommonNS {

namespace {

constexpr UChar32 kReplacement = 0xFFFD;

bool isSpace(UChar32 c) noexcept {
    return c == u' ' || c == u'\t' || c == u'\n' || c == u'\r' || c == u'\f';
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

void appendHex4(UnicodeString& out, char16_t unit) {
    static const char16_t kDigits[] = u"0123456789ABCDEF";
    out.append(u"\\u");
    for (int shift = 12; shift >= 0; shift -= 4)
        out.append(kDigits[(unit >> shift) & 15]);
}

// The quote a mode encloses with: with both kinds allowed, double quotes unless the text holds
// a double quote and no single quote.
char16_t chooseQuote(const UnicodeString& text, int mode) {
    bool doubleOk = (mode & ZkUtil::QUOTE_DOUBLE) != 0;
    bool singleOk = (mode & ZkUtil::QUOTE_SINGLE) != 0;
    if (doubleOk && singleOk)
        return text.indexOf(u'"') >= 0 && text.indexOf(u'\'') < 0 ? u'\'' : u'"';
    if (doubleOk)
        return u'"';
    if (singleOk)
        return u'\'';
    return 0;
}

} // namespace

UnicodeString ZkUtil::quoteString(const UnicodeString& text, int mode) {
    char16_t quote = chooseQuote(text, mode);
    UnicodeString out;
    out.getBuffer(text.length() + 8);
    out.releaseBuffer(0);
    if (quote)
        out.append(quote);
    int length = text.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = text.charAt(i);
        if ((mode & QUOTE_UNICODE) &&
            (c < 0x20 || c > 0x7E || c == u'"' || c == u'\'' || c == u'\\')) {
            appendHex4(out, c);
            continue;
        }
        if (mode & QUOTE_BACKSLASH) {
            const char16_t* escape = nullptr;
            switch (c) {
            case u'\n':
                escape = u"\\A";
                break;
            case u'\f':
                escape = u"\\C";
                break;
            case u'\r':
                escape = u"\\D";
                break;
            case u'\\':
                escape = u"\\5C";
                break;
            case u'\'':
                if (quote == u'\'')
                    escape = u"\\27";
                break;
            case u'"':
                // Not doubled in this mode, so it must be escaped to keep the string closed.
                if (quote == u'"' && !(mode & QUOTE_DOUBLED))
                    escape = u"\\22";
                break;
            default:
                break;
            }
            if (escape) {
                out.append(escape);
                // A following hex digit or blank would otherwise join the escape.
                if (i + 1 < length) {
                    char16_t next = text.charAt(i + 1);
                    if (hexValue(next) >= 0 || isSpace(next))
                        out.append(u' ');
                }
                continue;
            }
        }
        if ((mode & QUOTE_DOUBLED) && quote && c == quote) {
            out.append(c);
            out.append(c);
            continue;
        }
        out.append(c);
    }
    if (quote)
        out.append(quote);
    return out;
}

UnicodeString ZkUtil::parseString(const char16_t* text, const char16_t** end, int mode) {
    UnicodeString result;
    if (end)
        *end = text;
    if (!text) {
        result.setToBogus();
        return result;
    }
    const char16_t* p = text;
    while (isSpace(*p))
        ++p;
    char16_t quote = 0;
    if (mode & (QUOTE_DOUBLE | QUOTE_SINGLE)) {
        bool allowed =
            (*p == u'"' && (mode & QUOTE_DOUBLE)) || (*p == u'\'' && (mode & QUOTE_SINGLE));
        if (!allowed) {
            if (end)
                *end = p;
            result.setToBogus();
            return result;
        }
        quote = *p++;
    }
    for (;;) {
        char16_t c = *p;
        if (c == 0) {
            if (quote) {
                if (end)
                    *end = p;
                result.setToBogus();
                return result;
            }
            break;
        }
        if (quote && c == quote) {
            if ((mode & QUOTE_DOUBLED) && p[1] == quote) {
                result.append(quote);
                p += 2;
                continue;
            }
            ++p;
            break;
        }
        if (c == u'\\' && (mode & QUOTE_UNICODE) && p[1] == u'u' && hexValue(p[2]) >= 0 &&
            hexValue(p[3]) >= 0 && hexValue(p[4]) >= 0 && hexValue(p[5]) >= 0) {
            int value = 0;
            for (int k = 2; k < 6; ++k)
                value = value * 16 + hexValue(p[k]);
            result.append(static_cast<char16_t>(value));
            p += 6;
            continue;
        }
        if (c == u'\\' && (mode & QUOTE_BACKSLASH)) {
            char16_t next = p[1];
            if (next == 0) {
                // A lone backslash at the end: the string stops there.
                ++p;
                continue;
            }
            if (next == u'\n' || next == u'\f') {
                p += 2;
                continue;
            }
            if (next == u'\r') {
                p += next == u'\r' && p[2] == u'\n' ? 3 : 2;
                continue;
            }
            if (hexValue(next) >= 0) {
                // CSS escape: up to six hex digits, then one white space is part of it.
                ++p;
                UChar32 value = 0;
                int digits = 0;
                while (digits < 6 && hexValue(*p) >= 0) {
                    value = value * 16 + hexValue(*p);
                    ++p;
                    ++digits;
                }
                if (*p == u'\r' && p[1] == u'\n')
                    p += 2;
                else if (isSpace(*p))
                    ++p;
                if (value == 0 || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF))
                    value = kReplacement;
                result.append(value);
                continue;
            }
            result.append(next);
            p += 2;
            continue;
        }
        result.append(c);
        ++p;
    }
    if (end)
        *end = p;
    return result;
}

UnicodeString ZkUtil::unquoteString(const UnicodeString& text, int mode) {
    UnicodeString trimmed(text);
    trimmed.trim();
    const char16_t* start = trimmed.getTerminatedBuffer();
    UnicodeString result;
    if (!start) {
        result.setToBogus();
        return result;
    }
    int length = trimmed.length();
    const char16_t* end = start;
    result = parseString(start, &end, mode);
    bool quoted = length > 0 && (start[0] == u'"' || start[0] == u'\'');
    if (!result.isBogus() && (end == start + length || !quoted))
        return result;
    // Without doubling or escapes an inner quote cannot be written, so a text enclosed in one
    // kind of quote is taken as it stands.
    if (!(mode & (QUOTE_DOUBLED | QUOTE_BACKSLASH)) && length >= 2 && quoted &&
        start[length - 1] == start[0]) {
        bool allowed = (start[0] == u'"' && (mode & QUOTE_DOUBLE)) ||
                       (start[0] == u'\'' && (mode & QUOTE_SINGLE));
        if (allowed)
            return UnicodeString(trimmed, 1, length - 2);
    }
    result.setToBogus();
    return result;
}

UnicodeString ZkUtil::quoteUri(const UnicodeString& text) {
    UnicodeString out(u"url(\"");
    int length = text.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = text.charAt(i);
        if (c == u'"')
            out.append(u"%22");
        else
            out.append(c);
    }
    out.append(u"\")");
    return out;
}

} // namespace ZkCommonNS
