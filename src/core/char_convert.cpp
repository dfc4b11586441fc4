// ZkChar conversions: full width, kana, ASCII case, mirroring, UTF decoding helpers, and the
// escaping of NCNames and CSS identifiers.
#include "zkcommon/core/char.h"

#include <string>

namespace ZkCommonNS {

namespace {

// Full-width forms of U+FF61 to U+FFA0 by distance from U+FF61.
const char16_t kZenkakuKana[64] = {
    0x3002, 0x300C, 0x300D, 0x3001, 0x30FB, 0x30F2,                         // FF61-FF66
    0x30A1, 0x30A3, 0x30A5, 0x30A7, 0x30A9, 0x30E3, 0x30E5, 0x30E7, 0x30C3, // FF67-FF6F
    0x30FC,                                                                 // FF70
    0x30A2, 0x30A4, 0x30A6, 0x30A8, 0x30AA, 0x30AB, 0x30AD, 0x30AF, 0x30B1, // FF71-FF79
    0x30B3, 0x30B5, 0x30B7, 0x30B9, 0x30BB, 0x30BD, 0x30BF, 0x30C1, 0x30C4, // FF7A-FF82
    0x30C6, 0x30C8, 0x30CA, 0x30CB, 0x30CC, 0x30CD, 0x30CE, 0x30CF, 0x30D2, // FF83-FF8B
    0x30D5, 0x30D8, 0x30DB, 0x30DE, 0x30DF, 0x30E0, 0x30E1, 0x30E2, 0x30E4, // FF8C-FF94
    0x30E6, 0x30E8, 0x30E9, 0x30EA, 0x30EB, 0x30EC, 0x30ED, 0x30EF, 0x30F3, // FF95-FF9D
    0x309B, 0x309C,                                                         // FF9E-FF9F
    0x3164,                                                                 // FFA0 filler
};

// U+31F0 to U+31FF, the small katakana for Ainu, to their plain forms.
const char16_t kSmallKatakanaExt[16] = {
    0x30AF, 0x30B7, 0x30B9, 0x30C8, 0x30CC, 0x30CF, 0x30D2, 0x30D5,
    0x30D8, 0x30DB, 0x30E0, 0x30E9, 0x30EA, 0x30EB, 0x30EC, 0x30ED,
};

char16_t fullsizeKana(char16_t c) noexcept {
    switch (c) {
    // Hiragana and katakana small vowels, tsu, ya, yu, yo and wa sit one below the plain form.
    case 0x3041:
    case 0x3043:
    case 0x3045:
    case 0x3047:
    case 0x3049:
    case 0x3063:
    case 0x3083:
    case 0x3085:
    case 0x3087:
    case 0x308E:
    case 0x30A1:
    case 0x30A3:
    case 0x30A5:
    case 0x30A7:
    case 0x30A9:
    case 0x30C3:
    case 0x30E3:
    case 0x30E5:
    case 0x30E7:
    case 0x30EE:
        return static_cast<char16_t>(c + 1);
    case 0x3095:
        return 0x304B; // SMALL KA
    case 0x3096:
        return 0x3051; // SMALL KE
    case 0x30F5:
        return 0x30AB;
    case 0x30F6:
        return 0x30B1;
    default:
        if (c >= 0x31F0 && c <= 0x31FF)
            return kSmallKatakanaExt[c - 0x31F0];
        return c;
    }
}

void appendEscapedUtf8(UnicodeString& out, UChar32 c, UChar32 esc) {
    static const char16_t kDigits[] = u"0123456789ABCDEF";
    uint8_t bytes[4];
    int length = 0;
    U8_APPEND_UNSAFE(bytes, length, c);
    for (int i = 0; i < length; ++i) {
        out.append(esc);
        out.append(kDigits[bytes[i] >> 4]);
        out.append(kDigits[bytes[i] & 15]);
    }
}

// UTF-8 as escapeNCNameStr writes it: well-formed UTF-8, and also the three-byte form of a lone
// surrogate (ED A0..BF 80..BF), which a string may hold and the escape writes; anything else
// ill-formed gives U+FFFD.
void appendDecodedUtf8(UnicodeString& out, const std::string& bytes) {
    const uint8_t* data = reinterpret_cast<const uint8_t*>(bytes.data());
    const int32_t length = static_cast<int32_t>(bytes.size());
    for (int32_t i = 0; i < length;) {
        if (data[i] == 0xED && i + 2 < length && data[i + 1] >= 0xA0 && data[i + 1] <= 0xBF &&
            (data[i + 2] & 0xC0) == 0x80) {
            out.append(
                static_cast<char16_t>(0xD000 | ((data[i + 1] & 0x3F) << 6) | (data[i + 2] & 0x3F)));
            i += 3;
            continue;
        }
        UChar32 c;
        U8_NEXT(data, i, length, c);
        out.append(c < 0 ? UChar32(0xFFFD) : c);
    }
}

int hexValue(UChar32 c) noexcept {
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

bool isCssIdentStart(UChar32 c) noexcept {
    if (c < 0x80)
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    return c == 0xB7 || (c >= 0xC0 && c <= 0xD6) || (c >= 0xD8 && c <= 0xF6) ||
           (c >= 0xF8 && c <= 0x37D) || (c >= 0x37F && c <= 0x1FFF) || c == 0x200C || c == 0x200D ||
           c == 0x203F || c == 0x2040 || (c >= 0x2070 && c <= 0x218F) ||
           (c >= 0x2C00 && c <= 0x2FEF) || (c >= 0x3001 && c <= 0xD7FF) ||
           (c >= 0xF900 && c <= 0xFDCF) || (c >= 0xFDF0 && c <= 0xFFFD) || c >= 0x10000;
}

bool isCssIdentChar(UChar32 c) noexcept {
    return isCssIdentStart(c) || (c >= '0' && c <= '9') || c == '-';
}

} // namespace

UnicodeString ZkChar::toZenkaku(UnicodeString& s) {
    int length = s.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = s.charAt(i);
        // U+FF01 to U+FF5E are U+0021 to U+007E moved by FEE0.
        if (c >= 0x21 && c <= 0x7E)
            s.setCharAt(i, static_cast<char16_t>(c + 0xFEE0));
    }
    return s;
}

UnicodeString ZkChar::toZenkakuKana(UnicodeString& s) {
    int length = s.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = s.charAt(i);
        if (c >= 0xFF61 && c <= 0xFFA0)
            s.setCharAt(i, kZenkakuKana[c - 0xFF61]);
    }
    return s;
}

UnicodeString ZkChar::toFullsizeKana(UnicodeString& s) {
    int length = s.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = s.charAt(i);
        char16_t full = fullsizeKana(c);
        if (full != c)
            s.setCharAt(i, full);
    }
    return s;
}

UnicodeString ZkChar::toAsciiLower(const UnicodeString& s) {
    UnicodeString copy(s);
    toAsciiLower(copy);
    return copy;
}

UnicodeString& ZkChar::toAsciiLower(UnicodeString& s) {
    int length = s.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = s.charAt(i);
        if (c >= 'A' && c <= 'Z')
            s.setCharAt(i, static_cast<char16_t>(c + 32));
    }
    return s;
}

UnicodeString ZkChar::toAsciiUpper(const UnicodeString& s) {
    UnicodeString copy(s);
    toAsciiUpper(copy);
    return copy;
}

UnicodeString& ZkChar::toAsciiUpper(UnicodeString& s) {
    int length = s.length();
    for (int i = 0; i < length; ++i) {
        char16_t c = s.charAt(i);
        if (c >= 'a' && c <= 'z')
            s.setCharAt(i, static_cast<char16_t>(c - 32));
    }
    return s;
}

UnicodeString ZkChar::getMirrorString(const UnicodeString& s) {
    UnicodeString out;
    int length = s.length();
    for (int i = 0; i < length;) {
        UChar32 c = s.char32At(i);
        i += U16_LENGTH(c);
        out.append(u_charMirror(c));
    }
    return out;
}

UChar32 ZkChar::UTF8toUChar32(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) noexcept {
    auto continuation = [](uint8_t b) { return (b & 0xC0) == 0x80; };
    if (b0 < 0x80)
        return b0;
    if (b0 < 0xC0)
        return 0xFFFD;
    if (b0 < 0xE0)
        return continuation(b1) ? ((b0 & 0x1F) << 6) | (b1 & 0x3F) : 0xFFFD;
    if (b0 < 0xF0) {
        if (!continuation(b1) || !continuation(b2))
            return 0xFFFD;
        return ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F);
    }
    if (b0 < 0xF8) {
        if (!continuation(b1) || !continuation(b2) || !continuation(b3))
            return 0xFFFD;
        UChar32 c = ((b0 & 0x07) << 18) | ((b1 & 0x3F) << 12) | ((b2 & 0x3F) << 6) | (b3 & 0x3F);
        return c <= 0x10FFFF ? c : 0xFFFD;
    }
    return 0xFFFD;
}

UChar32 ZkChar::UTF16toUChar32(char16_t u0, char16_t u1) noexcept {
    if (U16_IS_LEAD(u0))
        return U16_IS_TRAIL(u1) ? U16_GET_SUPPLEMENTARY(u0, u1) : 0xFFFD;
    return u0;
}

UChar32 ZkChar::last32(const UnicodeString& s) {
    int length = s.length();
    return length == 0 ? U_SENTINEL : s.char32At(length - 1);
}

UnicodeString ZkChar::escapeNCNameStr(const UnicodeString& s, UChar32 esc) {
    UnicodeString out;
    int length = s.length();
    for (int i = 0; i < length;) {
        UChar32 c = s.char32At(i);
        bool fits = i == 0 ? isNCNameStartChar(c) : isNCNameChar(c);
        i += U16_LENGTH(c);
        if (fits && c != esc)
            out.append(c);
        else
            appendEscapedUtf8(out, c, esc);
    }
    return out;
}

UnicodeString ZkChar::unescapeNCNameStr(const UnicodeString& s, UChar32 esc) {
    UnicodeString out;
    std::string bytes;
    int length = s.length();
    int escLength = U16_LENGTH(esc);
    for (int i = 0; i < length;) {
        UChar32 c = s.char32At(i);
        if (c == esc && i + escLength + 1 < length && hexValue(s.charAt(i + escLength)) >= 0 &&
            hexValue(s.charAt(i + escLength + 1)) >= 0) {
            bytes.push_back(static_cast<char>(hexValue(s.charAt(i + escLength)) * 16 +
                                              hexValue(s.charAt(i + escLength + 1))));
            i += escLength + 2;
            continue;
        }
        if (!bytes.empty()) {
            appendDecodedUtf8(out, bytes);
            bytes.clear();
        }
        out.append(c);
        i += U16_LENGTH(c);
    }
    if (!bytes.empty())
        appendDecodedUtf8(out, bytes);
    return out;
}

UnicodeString ZkChar::replaceToCSSIdentTokenStr(const UnicodeString& s, UChar32 repl) {
    UnicodeString out;
    int length = s.length();
    int i = 0;
    // A leading "-" may be followed by a second one ("--custom"), after which anything that is
    // an identifier character goes; after a single "-" an identifier start must come.
    bool needStart = true;
    if (length > 0 && s.charAt(0) == u'-') {
        out.append(u'-');
        i = 1;
        if (length > 1 && s.charAt(1) == u'-') {
            out.append(u'-');
            i = 2;
            needStart = false;
        }
    }
    while (i < length) {
        UChar32 c = s.char32At(i);
        i += U16_LENGTH(c);
        bool fits = needStart ? isCssIdentStart(c) : isCssIdentChar(c);
        needStart = false;
        out.append(fits ? c : repl);
    }
    return out;
}

} // namespace ZkCommonNS
