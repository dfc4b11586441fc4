// ZkChar: names and strings of names, white space, breaks and the Japanese typography classes.
#include "zkcommon/core/char.h"

#include <algorithm>
#include <iterator>

namespace ZkCommonNS {

namespace {

struct CodeRange {
    UChar32 first;
    UChar32 last;
};

// NameStartChar of XML 1.0 fifth edition without ":" (Namespaces in XML: NCName), below U+10000.
constexpr CodeRange kNCNameStartRanges[] = {
    {'A', 'Z'},       {'_', '_'},       {'a', 'z'},       {0xC0, 0xD6},     {0xD8, 0xF6},
    {0xF8, 0x2FF},    {0x370, 0x37D},   {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F},
    {0x2C00, 0x2FEF}, {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD},
};

// What NameChar adds to the start characters.
constexpr CodeRange kNCNameExtraRanges[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

// Walks `s` by code point: the first one through `start`, the rest through `rest`.
template <class StartTest, class RestTest>
bool allCodePoints(const UnicodeString& s, StartTest start, RestTest rest) {
    int length = s.length();
    if (length == 0)
        return false;
    for (int i = 0; i < length;) {
        UChar32 c = s.char32At(i);
        if (i == 0 ? !start(c) : !rest(c))
            return false;
        i += U16_LENGTH(c);
    }
    return true;
}

template <size_t N> bool inSortedList(const UChar32 (&list)[N], UChar32 c) {
    return std::binary_search(std::begin(list), std::end(list), c);
}

// JIS X 4051 line-start prohibitions among the small kana and iteration marks (ranges apart).
const UChar32 kNonStarterJIS[] = {
    0x3005, 0x303B, 0x3041, 0x3043, 0x3045, 0x3047, 0x3049, 0x3063, 0x3083, 0x3085, 0x3087,
    0x308E, 0x3095, 0x3096, 0x309D, 0x309E, 0x30A1, 0x30A3, 0x30A5, 0x30A7, 0x30A9, 0x30C3,
    0x30E3, 0x30E5, 0x30E7, 0x30EE, 0x30F5, 0x30F6, 0x30FC, 0x30FD, 0x30FE,
};

// Single code points of the JIS symbol list; the ranges are tested apart.
const UChar32 kSymbolJIS[] = {
    0xA7,   0xA8,   0xB0,   0xB1,   0xB4,   0xB6,   0xD7,   0xF7,   0x2010, 0x2015, 0x2018,
    0x2019, 0x201C, 0x201D, 0x2020, 0x2021, 0x2025, 0x2026, 0x2030, 0x2032, 0x2033, 0x203B,
    0x2103, 0x2116, 0x2121, 0x212B, 0x21D2, 0x21D4, 0x2200, 0x2202, 0x2203, 0x2207, 0x2208,
    0x220B, 0x2211, 0x221A, 0x2225, 0x222E, 0x2234, 0x2235, 0x223D, 0x2252, 0x2260, 0x2261,
    0x2266, 0x2267, 0x226A, 0x226B, 0x2282, 0x2283, 0x2286, 0x2287, 0x22A5, 0x22BF, 0x2312,
    0x25A0, 0x25A1, 0x25B2, 0x25B3, 0x25BC, 0x25BD, 0x25C6, 0x25C7, 0x25CB, 0x25CE, 0x25CF,
    0x25EF, 0x2605, 0x2606, 0x2640, 0x2642, 0x266A, 0x266D, 0x266F,
};

// The characters above Latin-1 that legacy Japanese fonts set half width (the Windows-1252
// extras among them).
const UChar32 kHalfExtras[] = {
    0x152,  0x153,  0x160,  0x161,  0x178,  0x17D,  0x17E,  0x192,  0x2C6,
    0x2DC,  0x2010, 0x2013, 0x2014, 0x2018, 0x2019, 0x201A, 0x201C, 0x201D,
    0x201E, 0x2020, 0x2021, 0x2022, 0x2026, 0x2030, 0x2039, 0x203A, 0x2122,
};

// Dashes and leaders that must not be split when doubled.
bool isDoublingInseparable(UChar32 c) noexcept {
    switch (c) {
    case 0x2014: // EM DASH
    case 0x2015: // HORIZONTAL BAR
    case 0x2024: // ONE DOT LEADER
    case 0x2025: // TWO DOT LEADER
    case 0x2026: // HORIZONTAL ELLIPSIS
    case 0x2E3A: // TWO-EM DASH
    case 0x2E3B: // THREE-EM DASH
        return true;
    default:
        return false;
    }
}

} // namespace

// The bitmaps are built by the compiler, so the scanners' hot test is one load and a shift.
constexpr ZkChar::NameBitmap ZkChar::buildNameBitmap() {
    ZkChar::NameBitmap map{};
    for (const CodeRange& range : kNCNameStartRanges) {
        for (UChar32 c = range.first; c <= range.last; ++c) {
            map.bits[0][c >> 5] |= uint32_t(1) << (c & 31);
            map.bits[1][c >> 5] |= uint32_t(1) << (c & 31);
        }
    }
    for (const CodeRange& range : kNCNameExtraRanges) {
        for (UChar32 c = range.first; c <= range.last; ++c)
            map.bits[1][c >> 5] |= uint32_t(1) << (c & 31);
    }
    return map;
}

const ZkChar::NameBitmap ZkChar::s_nameBitmap = buildNameBitmap();

bool ZkChar::isNameStr(const UnicodeString& s) {
    // Proves the bitmap a constant expression, hence initialised before any code runs.
    static_assert(buildNameBitmap().bits[0]['A' >> 5] != 0, "name bitmap built at compile time");
    return allCodePoints(s, isNameStartChar, isNameChar);
}

bool ZkChar::isNCNameStr(const UnicodeString& s) {
    return allCodePoints(s, isNCNameStartChar, isNCNameChar);
}

bool ZkChar::isMIMETokenChar(UChar32 c) noexcept {
    if (c < 0x21 || c > 0x7E)
        return false;
    switch (c) {
    case '"':
    case '(':
    case ')':
    case ',':
    case '/':
    case ':':
    case ';':
    case '<':
    case '=':
    case '>':
    case '?':
    case '@':
    case '[':
    case '\\':
    case ']':
        return false;
    default:
        return true;
    }
}

bool ZkChar::isEmptyOrWhitespace(const UnicodeString& s) {
    const char16_t* p = s.getBuffer();
    int length = s.length();
    for (int i = 0; i < length; ++i) {
        if (!isWhitespace(p[i]))
            return false;
    }
    return true;
}

bool ZkChar::isWhitespace(const UnicodeString& s) {
    return !s.isEmpty() && isEmptyOrWhitespace(s);
}

bool ZkChar::isZeroWidthControlCode(UChar32 c) noexcept {
    if (c == 0xAD)
        return false;
    if (isVariationSelectorCharacter(c) || isIdeographicVariationSelectorCharacter(c))
        return true;
    if (c >= 0x10000 || c < 0 || (c >= 0x20A0 && c <= 0x20CF))
        return false;
    if (u_iscntrl(c))
        return true;
    if (u_isgraph(c))
        return false;
    return !u_isblank(c);
}

bool ZkChar::isHyphen(UChar32 c, bool excludeSoftHyphen) noexcept {
    return c == '-' || c == 0x2010 || c == 0x2011 || (c == 0xAD && !excludeSoftHyphen);
}

bool ZkChar::isHankaku(UChar32 c) noexcept {
    return isHankaku(getEastAsianWidth(c));
}

bool ZkChar::isZenkaku(UChar32 c) noexcept {
    return isZenkaku(getEastAsianWidth(c));
}

bool ZkChar::isZenkakuAmbiguous(UChar32 c) noexcept {
    return isZenkakuAmbiguous(getEastAsianWidth(c));
}

bool ZkChar::isHalf(UChar32 c) noexcept {
    if (c < 0x100)
        return c >= 0;
    return inSortedList(kHalfExtras, c);
}

bool ZkChar::isOpenParenEtc(UChar32 c) noexcept {
    if (c == 0x2018 || c == 0x201C)
        return true;
    if (c < 0 || c > 0x10FFFF)
        return false;
    bool punctuation = c == 0xFF5E || (U_GET_GC_MASK(c) & U_GC_P_MASK) != 0;
    return punctuation && getLineBreak(c) == U_LB_OPEN_PUNCTUATION;
}

bool ZkChar::isCloseParenEtc(UChar32 c) noexcept {
    if (c == 0x2019 || c == 0x201D)
        return true;
    if (c < 0 || c > 0x10FFFF)
        return false;
    bool punctuation = c == 0xFF5E || (U_GET_GC_MASK(c) & U_GC_P_MASK) != 0;
    ULineBreak lb = getLineBreak(c);
    return punctuation && (lb == U_LB_CLOSE_PUNCTUATION || lb == U_LB_CLOSE_PARENTHESIS);
}

bool ZkChar::isPunct(UChar32 c) noexcept {
    // U+FF5E FULLWIDTH TILDE serves as the Japanese wave dash; it is Sm in the database.
    return c == 0xFF5E || isPunct(getCategory(c));
}

bool ZkChar::isPunct(UCharCategory category) noexcept {
    switch (category) {
    case U_DASH_PUNCTUATION:
    case U_START_PUNCTUATION:
    case U_END_PUNCTUATION:
    case U_CONNECTOR_PUNCTUATION:
    case U_OTHER_PUNCTUATION:
    case U_INITIAL_PUNCTUATION:
    case U_FINAL_PUNCTUATION:
        return true;
    default:
        return false;
    }
}

bool ZkChar::isNonStarterJIS(UChar32 c) noexcept {
    if ((c >= 0x31F0 && c <= 0x31FF) || (c >= 0xFF67 && c <= 0xFF70))
        return true;
    return inSortedList(kNonStarterJIS, c);
}

bool ZkChar::isSymbolJIS(UChar32 c) noexcept {
    if ((c >= 0x2160 && c <= 0x2169) || (c >= 0x2190 && c <= 0x2193) ||
        (c >= 0x221D && c <= 0x2220) || (c >= 0x2227 && c <= 0x222C) ||
        (c >= 0x2460 && c <= 0x2473))
        return true;
    return inSortedList(kSymbolJIS, c);
}

bool ZkChar::isKanaKanjiCJK(UChar32 c) noexcept {
    return (c >= 0x2E80 && c <= 0x2FDF) || (c >= 0x3000 && c <= 0x4DBF) ||
           (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFF00 && c <= 0xFF60) || (c >= 0xFFE0 && c <= 0xFFE7) ||
           (c >= 0x20000 && c <= 0x2FFFF);
}

bool ZkChar::isAmbiguousHan(UChar32 c) noexcept {
    return (c >= 0x2E80 && c <= 0x2FDF) || (c >= 0x3400 && c <= 0x4DB5) ||
           (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFF00 && c <= 0xFF60) || (c >= 0x20000 && c <= 0x2FFFF);
}

bool ZkChar::isInseparableChar(UChar32 c1, UChar32 c2) noexcept {
    if (c1 == c2)
        return isDoublingInseparable(c1);
    // U+3033/U+3034 VERTICAL KANA REPEAT MARK UPPER HALF before U+3035 LOWER HALF.
    return (c1 == 0x3033 || c1 == 0x3034) && c2 == 0x3035;
}

bool ZkChar::isInseparableCharEx(const UnicodeString& s, int index, INSEPARABLECHAR_METHOD method) {
    int length = s.length();
    if (index < 0 || index >= length)
        return false;
    UChar32 c1 = s.char32At(index);
    int next = index + U16_LENGTH(c1);
    if (next >= length)
        return false;
    UChar32 c2 = s.char32At(next);
    if (!isInseparableChar(c1, c2))
        return false;
    if (method == INSEPARABLE_PAIR || c1 != c2)
        return true;
    UChar32 before = index > 0 ? s.char32At(index - 1) : 0xFFFF;
    int after = next + U16_LENGTH(c2);
    UChar32 behind = after < length ? s.char32At(after) : 0xFFFF;
    bool runBefore = before == c1;
    bool runBehind = behind == c1;
    if (method == INSEPARABLE_NOT_INSIDE)
        return !(runBefore && runBehind);
    return !runBefore && !runBehind;
}

} // namespace ZkCommonNS
