// ZkChar: every question about a code point (XML validity and names, white space and breaks,
// Japanese typography classes, conversions, properties, emoji, vertical orientation).
#ifndef ZKCOMMON_CORE_CHAR_H
#define ZKCOMMON_CORE_CHAR_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <unordered_map>
#include <utility>

namespace ZkCommonNS {

/// Static functions over code points, with no state; callable from any thread. Every test takes
/// any int: negative values and values above U+10FFFF simply answer false (or the neutral
/// result stated).
class ZKCOMMON_API ZkChar {
public:
    ZkChar() = delete;

    /// The class of a code point in vertical text.
    enum TR50Property : int {
        TR50_UPRIGHT = 1, ///< set upright
        TR50_ROTATED = 2, ///< rotated 90 degrees clockwise
        TR50_CUSTOM = 64  ///< a class of the caller's own, given through the overrides
    };

    /// How isInseparableCharEx treats a run of equal inseparable characters.
    enum INSEPARABLECHAR_METHOD : int {
        INSEPARABLE_PAIR = 0,       ///< any inseparable pair
        INSEPARABLE_NOT_INSIDE = 1, ///< not when the run goes on at both sides of the pair
        INSEPARABLE_ISOLATED = 2    ///< only when the run goes on at neither side
    };

    /// Per code point, a pair of class bytes (stacked, mixed); 0 means "no override".
    using TR50Overrides = std::unordered_map<UChar32, std::pair<uint8_t, uint8_t>>;

    // XML and names -------------------------------------------------------------------------
    // Plain range compares, lowest ranges first, so that ASCII answers after a few compares.

    /// XML 1.0 Char.
    static bool isValidChar(UChar32 c) noexcept {
        if (c < 0x20)
            return c == 0x09 || c == 0x0A || c == 0x0D;
        if (c <= 0xD7FF)
            return true;
        if (c < 0xE000)
            return false;
        if (c <= 0xFFFD)
            return true;
        return c >= 0x10000 && c <= 0x10FFFF;
    }
    /// XML 1.1 Char, narrower in the controls (7F to 9F other than 85 are refused).
    static bool isValidChar11(UChar32 c) noexcept {
        if (c < 0x20)
            return c == 0x09 || c == 0x0A || c == 0x0D;
        if (c <= 0x7E)
            return true;
        if (c < 0xA0)
            return c == 0x85;
        return isValidChar(c);
    }
    /// A bitmap look-up below U+10000; all of U+10000 to U+EFFFF are name characters.
    static bool isNCNameStartChar(UChar32 c) noexcept { return nameBit(0, c); }
    static bool isNCNameChar(UChar32 c) noexcept { return nameBit(1, c); }
    static bool isNameStartChar(UChar32 c) noexcept { return c == ':' || isNCNameStartChar(c); }
    static bool isNameChar(UChar32 c) noexcept { return c == ':' || isNCNameChar(c); }
    /// As isNCNameChar, but never "-" (the minus of a CSS expression).
    static bool isNCNameCharForCSSExp(UChar32 c) noexcept { return c != '-' && isNCNameChar(c); }
    /// False for the empty string.
    static bool isNameStr(const UnicodeString& s);
    static bool isNCNameStr(const UnicodeString& s);
    /// A token character of MIME (RFC 2045): 21 to 7E without the tspecials.
    static bool isMIMETokenChar(UChar32 c) noexcept;

    // White space and breaks ----------------------------------------------------------------

    /// TAB, LF, CR, SPACE.
    static bool isWhitespace(UChar32 c) noexcept {
        return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D;
    }
    /// True for the empty string.
    static bool isEmptyOrWhitespace(const UnicodeString& s);
    /// False for the empty string.
    static bool isWhitespace(const UnicodeString& s);
    static bool isCssWhitespace(UChar32 c) noexcept {
        return c == 0x20 || c == 0x0A || c == 0x09 || c == 0x0D || c == 0x0C;
    }
    static bool isCssWhitespaceWoNewline(UChar32 c) noexcept { return c == 0x20 || c == 0x09; }
    static bool isCssNewline(UChar32 c) noexcept { return c == 0x0A || c == 0x0C || c == 0x0D; }
    static bool isSpaceChar(UChar32 c) noexcept { return c == 0x20 || c == 0xA0; }
    static bool isSpaceChar2(UChar32 c) noexcept { return isWhitespace(c) || c == 0xA0; }
    static bool isFixedWidthSpaceChar(UChar32 c) noexcept {
        return (c >= 0x2000 && c <= 0x200A) || c == 0x205F;
    }
    static bool isZeroWidthSpaceChar(UChar32 c) noexcept { return c == 0x200B || c == 0xFEFF; }
    static bool isHardBreak(UChar32 c) noexcept {
        return c == 0x0A || c == 0x0C || c == 0x2028 || c == 0x2029;
    }
    /// Also U+FFFF, the scanners' end-of-input sentinel.
    static bool isHardBreakOrInvalid(UChar32 c) noexcept { return isHardBreak(c) || c == 0xFFFF; }
    /// A character that takes no width and is no variation of a glyph's shape.
    static bool isZeroWidthControlCode(UChar32 c) noexcept;
    /// "-", U+2010 HYPHEN, U+2011 NON-BREAKING HYPHEN; U+00AD SOFT HYPHEN only when
    /// `excludeSoftHyphen` is false.
    static bool isHyphen(UChar32 c, bool excludeSoftHyphen) noexcept;

    // Japanese typography -------------------------------------------------------------------

    /// East Asian Width Halfwidth.
    static bool isHankaku(UChar32 c) noexcept;
    static bool isHankaku(UEastAsianWidth width) noexcept { return width == U_EA_HALFWIDTH; }
    /// Fullwidth or Wide.
    static bool isZenkaku(UChar32 c) noexcept;
    static bool isZenkaku(UEastAsianWidth width) noexcept {
        return width == U_EA_FULLWIDTH || width == U_EA_WIDE;
    }
    /// Ambiguous, Fullwidth or Wide.
    static bool isZenkakuAmbiguous(UChar32 c) noexcept;
    static bool isZenkakuAmbiguous(UEastAsianWidth width) noexcept {
        return width == U_EA_AMBIGUOUS || isZenkaku(width);
    }
    /// Below 80, or half-width katakana.
    static bool isHankakuChar(UChar32 c) noexcept {
        return (c >= 0 && c < 0x80) || (c >= 0xFF61 && c <= 0xFF9F);
    }
    static bool isHankakuKana(UChar32 c) noexcept { return c >= 0xFF61 && c <= 0xFF9F; }
    /// Set half width by legacy Japanese fonts: Latin-1 and the Windows-1252 extras.
    static bool isHalf(UChar32 c) noexcept;
    static bool isFullStopChar(UChar32 c) noexcept { return c == 0x3002 || c == 0xFF0E; }
    static bool isZenkakuMidDotEtc(UChar32 c) noexcept {
        return c == 0x30FB || c == 0xFF1A || c == 0xFF1B;
    }
    static bool isOpenParenEtc(UChar32 c) noexcept;
    static bool isCloseParenEtc(UChar32 c) noexcept;
    static bool isHalfPunct(UChar32 c) noexcept {
        return isOpenParenEtc(c) || isCloseParenEtc(c) || isZenkakuMidDotEtc(c);
    }
    /// U+FF5E FULLWIDTH TILDE counts as punctuation whatever the property says.
    static bool isPunct(UChar32 c) noexcept;
    static bool isPunct(UCharCategory category) noexcept;
    /// Small kana and iteration marks that may not start a line (JIS X 4051).
    static bool isNonStarterJIS(UChar32 c) noexcept;
    /// The symbols of JIS X 0208 row 1 and 2 that have a proper full-width form.
    static bool isSymbolJIS(UChar32 c) noexcept;
    static bool isKanaKanjiCJK(UChar32 c) noexcept;
    static bool isAmbiguousHan(UChar32 c) noexcept;
    static bool isRadical(UChar32 c) noexcept {
        return (c >= 0x2E80 && c <= 0x2EF3) || (c >= 0x2F00 && c <= 0x2FD5);
    }
    /// Two characters that must not be broken apart: two equal dashes or leaders, or a
    /// kana repeat mark upper half before its lower half.
    static bool isInseparableChar(UChar32 c1, UChar32 c2) noexcept;
    /// isInseparableChar on the code point at `index` of `s` and the next one, refined by
    /// `method` for runs. An index outside the string gives false.
    static bool isInseparableCharEx(const UnicodeString& s, int index,
                                    INSEPARABLECHAR_METHOD method);

    // Conversions: each works in place and also returns the result ---------------------------

    /// ASCII 21 to 7E to their full-width forms; other units stay (space too).
    static UnicodeString toZenkaku(UnicodeString& s);
    /// Half-width katakana to full width; units outside FF61 to FFA0 are left as they are.
    static UnicodeString toZenkakuKana(UnicodeString& s);
    /// Small kana to their plain forms.
    static UnicodeString toFullsizeKana(UnicodeString& s);
    /// Only A to Z change.
    static UnicodeString toAsciiLower(const UnicodeString& s);
    static UnicodeString& toAsciiLower(UnicodeString& s);
    /// Only a to z change.
    static UnicodeString toAsciiUpper(const UnicodeString& s);
    static UnicodeString& toAsciiUpper(UnicodeString& s);
    /// Every code point through its Bidi mirror, in the same order.
    static UnicodeString getMirrorString(const UnicodeString& s);
    /// One character from up to four bytes; a bad lead or continuation byte gives U+FFFD.
    /// Overlong forms are not checked.
    static UChar32 UTF8toUChar32(uint8_t b0, uint8_t b1, uint8_t b2, uint8_t b3) noexcept;
    /// A lead surrogate with a bad trail gives U+FFFD; a lone trail comes back as it is.
    static UChar32 UTF16toUChar32(char16_t u0, char16_t u1) noexcept;
    /// The value of a hex digit of either case; other characters give a meaningless number.
    static int hex2dig(int c) noexcept {
        return (c >= '0' && c <= '9') ? c - '0' : ((c - 1) & 15) + 10;
    }
    /// The last code point; U_SENTINEL (-1) for the empty string.
    static UChar32 last32(const UnicodeString& s);

    // Name escaping -------------------------------------------------------------------------

    /// A valid NCName: `esc` and each character that does not fit are written as the bytes of
    /// their UTF-8 form, each as `esc` and two upper-case hex digits.
    static UnicodeString escapeNCNameStr(const UnicodeString& s, UChar32 esc);
    /// The reverse; an `esc` not followed by two hex digits stays as it is, and bytes that do
    /// not form UTF-8 give U+FFFD. A lone surrogate, escaped in its three-byte form, comes back
    /// as itself, so every string round-trips.
    static UnicodeString unescapeNCNameStr(const UnicodeString& s, UChar32 esc);
    /// A CSS identifier: characters that do not fit become `repl`; empty input stays empty.
    static UnicodeString replaceToCSSIdentTokenStr(const UnicodeString& s, UChar32 repl);

    // Properties (thin ICU calls) -----------------------------------------------------------

    static UCharCategory getCategory(UChar32 c) noexcept;
    static UEastAsianWidth getEastAsianWidth(UChar32 c) noexcept;
    static ULineBreak getLineBreak(UChar32 c) noexcept;
    static int32_t getIntPropertyValue(UChar32 c, UProperty property) noexcept;
    /// Lu, Ll, Lt, Lm, Lo.
    static bool isLetter(UChar32 c) noexcept;
    /// Nd, Nl, No.
    static bool isNumber(UChar32 c) noexcept;
    static bool isLetterNumber(UChar32 c) noexcept { return isLetter(c) || isNumber(c); }
    /// Sm, Sc, Sk, So.
    static bool isSymbol(UChar32 c) noexcept;
    /// Cn, Cc, Cf, Co, Cs.
    static bool isControl(UChar32 c) noexcept;
    /// True unless Mn, Me, Mc, Cc, Cf: the character starts a cluster of its own.
    static bool isGraphemeCluster(UChar32 c) noexcept;
    static bool isAlphabetic(UChar32 c) noexcept;
    /// Not defined in the character database, new currency signs excepted.
    static bool isUndefined(UChar32 c) noexcept;
    static bool isCurrencySymbol(UChar32 c) noexcept;

    // Scripts and blocks --------------------------------------------------------------------

    static bool isArabic(UChar32 c) noexcept { return c >= 0x600 && c <= 0x6FF; }
    /// The Arabic block without its two sets of digits.
    static bool isArabicScript(UChar32 c) noexcept {
        return isArabic(c) && !(c >= 0x660 && c <= 0x669) && !(c >= 0x6F0 && c <= 0x6F9);
    }
    static bool isHebrewScript(UChar32 c) noexcept { return c >= 0x590 && c <= 0x5FF; }
    static bool isDevanagariScript(UChar32 c) noexcept { return c >= 0x900 && c <= 0x97F; }
    static bool isPUA(UChar32 c) noexcept { return c >= 0xE000 && c <= 0xF8FF; }
    static bool isMathOperator(UChar32 c) noexcept;
    static bool isBullet(UChar32 c) noexcept;

    // Emoji and variation selectors ---------------------------------------------------------

    /// The Emoji property; with `all` false only in 1F000 to 1FFFD.
    static bool isEmoji(UChar32 c, bool all) noexcept;
    static bool isEmojiKeycapBase(UChar32 c) noexcept {
        return c == '#' || c == '*' || (c >= '0' && c <= '9');
    }
    static bool isEmojiModifierFitzpatrick(UChar32 c) noexcept {
        return c >= 0x1F3FB && c <= 0x1F3FF;
    }
    static bool isEmojiRegionalIndicator(UChar32 c) noexcept {
        return c >= 0x1F1E6 && c <= 0x1F1FF;
    }
    static bool isEmojiTagModifier(UChar32 c) noexcept { return c >= 0xE0020 && c <= 0xE007F; }
    static bool isVariationSelectorCharacter(UChar32 c) noexcept {
        return c >= 0xFE00 && c <= 0xFE0F;
    }
    static bool isIdeographicVariationSelectorCharacter(UChar32 c) noexcept {
        return c >= 0xE0100 && c <= 0xE01EF;
    }

    // Vertical orientation ------------------------------------------------------------------

    /// The class in stacked vertical text (each character upright where it can be). A
    /// non-zero stacked byte in `overrides` wins; otherwise the built-in table. `flag` decides
    /// for the transformed-rotated class: rotated when set, upright otherwise. Code points in
    /// no row, and invalid ones, are upright.
    static TR50Property getTR50SVO(UChar32 c, const TR50Overrides* overrides, bool flag);
    /// The class in mixed vertical text (Latin rotated), as getTR50SVO with the mixed byte.
    static TR50Property getTR50MVO(UChar32 c, const TR50Overrides* overrides, bool flag);
    /// The raw class bytes (stacked, mixed) of the built-in table; (1, 1) outside every row.
    static std::pair<uint8_t, uint8_t> getTR50ClassBytes(UChar32 c) noexcept;
    /// The number of rows of the built-in table.
    static int getTR50RowCount() noexcept;
    /// Characters that fonts do not carry a vertical form for.
    static bool isNoVerticalChar(UChar32 c) noexcept;

private:
    /// One bit per BMP code point: [0] NCName start characters, [1] NCName characters.
    struct NameBitmap {
        uint32_t bits[2][2048];
    };
    static const NameBitmap s_nameBitmap;
    static constexpr NameBitmap buildNameBitmap();
    static bool nameBit(int table, UChar32 c) noexcept {
        if (static_cast<uint32_t>(c) < 0x10000)
            return (s_nameBitmap.bits[table][c >> 5] >> (c & 31)) & 1;
        return c >= 0x10000 && c <= 0xEFFFF;
    }
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_CHAR_H
