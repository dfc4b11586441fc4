// ZkUtil::formatNumber: a value by the format token of XSL-FO and XSLT numbering, a dispatch on
// the token's characters to decimal digits of the scripts, alphabets and numeral systems.
#include "text/numerals.h"
#include "zkcommon/text/lang.h"
#include "zkcommon/text/util.h"

#include <cstring>
#include <iterator>

namespace ZkCommonNS {

namespace {

// Lower-case alphabets; the upper-case forms come from u_toupper.
const char16_t kEnglish[] = u"abcdefghijklmnopqrstuvwxyz";
const char16_t kItalian[] = u"abcdefghilmnopqrstuvz";
const char16_t kIrish[] = u"abcdefghilmnoprstu";
const char16_t kSwedish[] = u"abcdefghijklmnopqrstuvwxyz\u00E5\u00E4\u00F6";
const char16_t kNorwegian[] = u"abcdefghijklmnopqrstuvwxyz\u00E6\u00F8\u00E5";
const char16_t kCyrillic[] = u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439"
                             u"\u043A\u043B\u043C\u043D\u043E\u043F\u0440\u0441\u0442\u0443"
                             u"\u0444\u0445\u0446\u0447\u0448\u0449\u044D\u044E\u044F";
const char16_t kBulgarian[] = u"\u0430\u0431\u0432\u0433\u0434\u0435\u0436\u0437\u0438\u0439"
                              u"\u043A\u043B\u043C\u043D\u043E\u043F\u0440\u0441\u0442\u0443"
                              u"\u0444\u0445\u0446\u0447\u0448\u0449\u044A\u044C\u044E\u044F";
const char16_t kUkrainian[] = u"\u0430\u0431\u0432\u0433\u0434\u0435\u0454\u0436\u0437\u0438"
                              u"\u0456\u043A\u043B\u043C\u043D\u043E\u043F\u0440\u0441\u0442"
                              u"\u0443\u0444\u0445\u0446\u0447\u0448\u0449\u044E\u044F";
const char16_t kBelarusian[] = u"\u0430\u0431\u0432\u0433\u0434\u0435\u0451\u0436\u0437\u0456"
                               u"\u0439\u043A\u043B\u043C\u043D\u043E\u043F\u0440\u0441\u0442"
                               u"\u0443\u045E\u0444\u0445\u0446\u0447\u0448\u044B\u044C\u044D"
                               u"\u044E\u044F";
const char16_t kMacedonian[] = u"\u0430\u0431\u0432\u0433\u0434\u0453\u0435\u0436\u0437\u0455"
                               u"\u0438\u0458\u043A\u043B\u0459\u043C\u043D\u045A\u043E\u043F"
                               u"\u0440\u0441\u0442\u045C\u0443\u0444\u0445\u0446\u0447\u045F"
                               u"\u0448";
const char16_t kSerbian[] = u"\u0430\u0431\u0432\u0433\u0434\u0452\u0435\u0436\u0437\u0438"
                            u"\u0458\u043A\u043B\u0459\u043C\u043D\u045A\u043E\u043F\u0440"
                            u"\u0441\u0442\u045B\u0443\u0444\u0445\u0446\u0447\u045F\u0448";
const char16_t kGreek[] = u"\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6\u03B7\u03B8\u03B9\u03BA\u03BB"
                          u"\u03BC\u03BD\u03BE\u03BF\u03C0\u03C1\u03C3\u03C4\u03C5\u03C6\u03C7"
                          u"\u03C8\u03C9";
const char16_t kHebrewLetters[] = u"\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8\u05D9"
                                  u"\u05DB\u05DC\u05DE\u05E0\u05E1\u05E2\u05E4\u05E6\u05E7\u05E8"
                                  u"\u05E9\u05EA";
// The abjad order, from ALEF WITH HAMZA ABOVE.
const char16_t kAbjadLetters[] = u"\u0623\u0628\u062C\u062F\u0647\u0648\u0632\u062D\u0637\u064A"
                                 u"\u0643\u0644\u0645\u0646\u0633\u0639\u0641\u0635\u0642\u0631"
                                 u"\u0634\u062A\u062B\u062E\u0630\u0636\u0638\u063A";
const char16_t kKatakana[] =
    u"アイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモ"
    u"ヤユヨラリルレロワヰヱヲン";
const char16_t kKatakanaIroha[] = u"イロハニホヘトチリヌルヲワカヨタレソツネナラムウヰノオクヤマ"
                                  u"ケフコエテアサキユメミシヱヒモセス";
const char16_t kHiragana[] =
    u"あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめも"
    u"やゆよらりるれろわゐゑをん";
const char16_t kHiraganaIroha[] = u"いろはにほへとちりぬるをわかよたれそつねならむうゐのおくやま"
                                  u"けふこえてあさきゆめみしゑひもせす";
const char16_t kHalfwidthKatakana[] = u"ｱｲｳｴｵｶｷｸｹｺｻｼｽｾｿﾀﾁﾂﾃﾄﾅﾆﾇﾈﾉﾊﾋﾌﾍﾎﾏﾐﾑﾒﾓﾔﾕﾖﾗﾘﾙﾚﾛﾜｦﾝ";
const char16_t kHangulConsonants[] = u"ㄱㄴㄷㄹㅁㅂㅅㅇㅈㅊㅋㅌㅍㅎ";
const char16_t kHangulSyllables[] = u"가나다라마바사아자차카타파하";
const char16_t kFullwidthLatin[] = u"ａｂｃｄｅｆｇｈｉｊｋｌｍｎｏｐｑｒｓｔｕｖｗｘｙｚ";

// The ten heavenly stems and twelve earthly branches of the sexagenary cycle.
const char16_t kStems[] = u"甲乙丙丁戊己庚辛壬癸";
const char16_t kBranches[] = u"子丑寅卯辰巳午未申酉戌亥";

// The digit one of each script whose digits the decimal branch writes.
const UChar32 kDigitOnes[] = {0x0031, 0x0661, 0x06F1, 0x0967, 0x09E7, 0x0A67, 0x0AE7, 0x0B67,
                              0x0CE7, 0x0D67, 0x0E51, 0x0ED1, 0x1041, 0x17E1, 0x1811, 0xFF11};

struct LanguageAlphabet {
    const char* language;
    const char16_t* letters;
};

const LanguageAlphabet kLatinAlphabets[] = {
    {"it", kItalian},   {"ga", kIrish},     {"sv", kSwedish},   {"fi", kSwedish},
    {"da", kNorwegian}, {"no", kNorwegian}, {"nb", kNorwegian}, {"nn", kNorwegian},
};

const LanguageAlphabet kCyrillicAlphabets[] = {
    {"bg", kBulgarian},  {"uk", kUkrainian}, {"be", kBelarusian},
    {"mk", kMacedonian}, {"sr", kSerbian},
};

const char16_t* alphabetOf(const LanguageAlphabet* table, size_t count, const ZkLang& lang,
                           const char16_t* fallback) {
    const char* language = lang.getLocale().getLanguage();
    for (size_t i = 0; i < count; ++i)
        if (std::strcmp(table[i].language, language) == 0)
            return table[i].letters;
    return fallback;
}

// Letters, decimal digits and the number forms. Other numbers (IDEOGRAPHIC NUMBER ZERO, circled
// digits) and the enclosed alphanumerics count too, so that every token of the dispatch below
// can be written.
bool isTokenChar(UChar32 c) {
    if (u_isalnum(c) || (c >= 0x2160 && c <= 0x2183) || c == 0xB2 || c == 0xB3 || c == 0xB9 ||
        (c >= 0x2070 && c <= 0x2089) || (c >= 0x1369 && c <= 0x137C) ||
        (c >= 0x2460 && c <= 0x24FF))
        return true;
    int8_t type = u_charType(c);
    return type == U_LETTER_NUMBER || type == U_OTHER_NUMBER;
}

unsigned long long magnitudeOf(long long value) {
    return value < 0 ? 0ULL - static_cast<unsigned long long>(value)
                     : static_cast<unsigned long long>(value);
}

// Puts `separator` before each group of `groupSize` digits counted from the right of the
// digits in [start, text.length()).
void groupDigits(UnicodeString& text, int start, const UnicodeString& separator, int groupSize) {
    if (separator.isEmpty() || groupSize <= 0)
        return;
    int digits = text.countChar32(start);
    if (digits <= groupSize)
        return;
    UnicodeString grouped(text, 0, start);
    int index = 0;
    for (int i = start; i < text.length(); ++index) {
        if (index > 0 && (digits - index) % groupSize == 0)
            grouped.append(separator);
        UChar32 c = text.char32At(i);
        grouped.append(c);
        i += U16_LENGTH(c);
    }
    text = grouped;
}

// The value in the digits of the script whose zero is `zero`, zero-padded to `width`
// characters in the manner of "%0*lld" (the sign counts in the width), then grouped.
void appendDecimal(long long value, int width, UChar32 zero, const UnicodeString& separator,
                   int groupSize, UnicodeString& out) {
    unsigned long long magnitude = magnitudeOf(value);
    char digits[24];
    int count = 0;
    do {
        digits[count++] = static_cast<char>(magnitude % 10);
        magnitude /= 10;
    } while (magnitude != 0);
    int sign = value < 0 ? 1 : 0;
    int pad = width - count - sign;
    bool grouped = !separator.isEmpty() && groupSize > 0 && count + (pad > 0 ? pad : 0) > groupSize;
    if (zero <= 0xFFFF && !grouped && width <= 64) {
        // The usual case: one buffer, one append.
        char16_t buffer[96];
        int length = 0;
        if (sign)
            buffer[length++] = u'-';
        for (; pad > 0; --pad)
            buffer[length++] = static_cast<char16_t>(zero);
        while (count > 0)
            buffer[length++] = static_cast<char16_t>(zero + digits[--count]);
        out.append(buffer, 0, length);
        return;
    }
    UnicodeString text;
    if (sign)
        text.append(u'-');
    int start = text.length();
    for (; pad > 0; --pad)
        text.append(zero);
    while (count > 0)
        text.append(static_cast<UChar32>(zero + digits[--count]));
    groupDigits(text, start, separator, groupSize);
    out.append(text);
}

// The zero of a script when `c` is its digit one, else -1.
UChar32 zeroOfDigitOne(UChar32 c) {
    for (UChar32 one : kDigitOnes)
        if (one == c)
            return c - 1;
    // Other scripts' decimal digits work alike; TAMIL DIGIT ONE selects Tamil numerals.
    if (c != 0x0BE7 && u_charType(c) == U_DECIMAL_DIGIT_NUMBER && u_charDigitValue(c) == 1)
        return c - 1;
    return -1;
}

bool appendLetters(unsigned long long value, const char16_t* letters, bool upper,
                   UnicodeString& out) {
    int start = out.length();
    if (!detail::appendAlphabetic(value, letters, out))
        return false;
    if (upper) {
        UnicodeString tail(out, start);
        UnicodeString upperTail;
        for (int i = 0; i < tail.length();) {
            UChar32 c = tail.char32At(i);
            upperTail.append(u_toupper(c));
            i += U16_LENGTH(c);
        }
        out.truncate(start);
        out.append(upperTail);
    }
    return true;
}

// Japanese numerals through the kansuji converter; `formal` uses the digits and units of
// legal documents.
bool appendKanji(unsigned long long value, detail::KansujiParams::Style style, bool formal,
                 UnicodeString& out) {
    detail::KansujiParams params;
    params.style = style;
    if (formal) {
        static const UChar32 kFormalDigits[10] = {0x96F6, 0x58F1, 0x5F10, 0x53C2, 0x56DB,
                                                  0x4F0D, 0x516D, 0x4E03, 0x516B, 0x4E5D};
        for (int i = 0; i < 10; ++i)
            params.digits[i] = kFormalDigits[i];
        params.marks[detail::KansujiParams::kTen] = 0x62FE;            // shuu (ten)
        params.marks[detail::KansujiParams::kThousand] = 0x9621;       // sen (thousand)
        params.marks[detail::KansujiParams::kFirstGroupWord] = 0x842C; // man (ten thousand)
        params.oneBeforeUnits = true; // nothing can be slipped in front of a unit
    }
    char buffer[24];
    int length = 0;
    do {
        buffer[length++] = static_cast<char>('0' + value % 10);
        value /= 10;
    } while (value != 0);
    UnicodeString digits;
    while (length > 0)
        digits.append(static_cast<char16_t>(buffer[--length]));
    detail::appendKansuji(digits, params, out);
    return true;
}

// The token converted, or false to write the value in decimal.
bool convertToken(long long value, const UnicodeString& token, const UnicodeString& separator,
                  int groupSize, const ZkLang& lang, ZkNameEnum letterValue, UnicodeString& out) {
    UChar32 first = token.char32At(0);
    UChar32 last = token.char32At(token.moveIndex32(token.length(), -1));
    UChar32 zero = zeroOfDigitOne(last);
    if (zero >= 0) {
        int width = 0;
        bool allZero = true;
        for (int i = 0; i < token.length(); ++width) {
            UChar32 c = token.char32At(i);
            i += U16_LENGTH(c);
            if (i < token.length() && c != zero)
                allZero = false;
        }
        if (allZero) {
            appendDecimal(value, width, zero, separator, groupSize, out);
            return true;
        }
    }
    if (token == UnicodeString(u"\u7532\u5B50")) {
        if (value < 1 || value > 60)
            return false;
        out.append(kStems[(value - 1) % 10]).append(kBranches[(value - 1) % 12]);
        return true;
    }
    if (value <= 0)
        return false; // the letter and numeral systems start at 1
    unsigned long long v = static_cast<unsigned long long>(value);
    bool alphabetic = letterValue == ZKN_alphabetic;
    bool traditional = letterValue == ZKN_traditional;
    switch (first) {
    case u'A':
    case u'a':
        return appendLetters(
            v, alphabetOf(kLatinAlphabets, std::size(kLatinAlphabets), lang, kEnglish),
            first == u'A', out);
    case u'I':
    case u'i':
        if (alphabetic)
            return appendLetters(
                v, alphabetOf(kLatinAlphabets, std::size(kLatinAlphabets), lang, kEnglish),
                first == u'I', out);
        return detail::appendRoman(v, first == u'I' ? u"IVXLCDM" : u"ivxlcdm", out);
    case 0x00C5:
    case 0x00E5:
        return appendLetters(v, kNorwegian, first == 0x00C5, out);
    case 0x0391:
    case 0x03B1:
        if (traditional)
            return detail::appendGreekNumeral(v, first == 0x0391, out);
        return appendLetters(v, kGreek, first == 0x0391, out);
    case 0x0410:
    case 0x0430:
        return appendLetters(
            v, alphabetOf(kCyrillicAlphabets, std::size(kCyrillicAlphabets), lang, kCyrillic),
            first == 0x0410, out);
    case 0x0531:
    case 0x0561:
        if (alphabetic) {
            UnicodeString letters;
            for (char16_t c = 0x0561; c <= 0x0586; ++c)
                letters.append(c);
            return appendLetters(v, letters.getTerminatedBuffer(), first == 0x0531, out);
        }
        return detail::appendArmenianNumeral(v, first == 0x0531, out);
    case 0x05D0:
        if (alphabetic)
            return appendLetters(v, kHebrewLetters, false, out);
        return detail::appendHebrewNumeral(v, out);
    case 0x0623:
        if (traditional)
            return detail::appendAbjadNumeral(v, out);
        return appendLetters(v, kAbjadLetters, false, out);
    case 0x0710:
        return detail::appendSyriacNumeral(v, out);
    case 0x0BE7:
        return detail::appendTamilNumeral(v, out);
    case 0x10D0:
        if (alphabetic) {
            UnicodeString letters;
            for (char16_t c = 0x10D0; c <= 0x10F0; ++c)
                letters.append(c);
            return appendLetters(v, letters.getTerminatedBuffer(), false, out);
        }
        return detail::appendGeorgianNumeral(v, out);
    case 0x1369:
        return detail::appendEthiopicNumeral(v, out);
    case 0x3042:
        return appendLetters(v, kHiragana, false, out);
    case 0x3044:
        return appendLetters(v, kHiraganaIroha, false, out);
    case 0x30A2:
        return appendLetters(v, kKatakana, false, out);
    case 0x30A4:
        return appendLetters(v, kKatakanaIroha, false, out);
    case 0x3131:
        return appendLetters(v, kHangulConsonants, false, out);
    case 0xAC00:
        return appendLetters(v, kHangulSyllables, false, out);
    case 0xFF21:
    case 0xFF41:
        return appendLetters(v, kFullwidthLatin, first == 0xFF21, out);
    case 0xFF29:
        return detail::appendRoman(v, u"ＩＶＸＬＣＤＭ", out);
    case 0xFF49:
        return detail::appendRoman(v, u"ｉｖｘｌｃｄｍ", out);
    case 0xFF71:
        return appendLetters(v, kHalfwidthKatakana, false, out);
    case 0x3007: // IDEOGRAPHIC NUMBER ZERO: digit by digit
        return appendKanji(v, detail::KansujiParams::kSimple, false, out);
    case 0x4E00: // one, ten: read out with units
    case 0x5341:
        return appendKanji(v, detail::KansujiParams::kReadable, false, out);
    case 0x58F1: // the formal one of legal and financial documents
    case 0x58F9:
        return appendKanji(v, detail::KansujiParams::kReadable, true, out);
    default:
        break;
    }
    // Roman number forms: single characters up to twelve, then letters.
    if (first >= 0x2160 && first <= 0x216F)
        return v <= 12 ? (out.append(static_cast<UChar32>(0x2160 + v - 1)), true)
                       : detail::appendRoman(v, u"IVXLCDM", out);
    if (first >= 0x2170 && first <= 0x217F)
        return v <= 12 ? (out.append(static_cast<UChar32>(0x2170 + v - 1)), true)
                       : detail::appendRoman(v, u"ivxlcdm", out);
    // Enclosed forms: the value added to the base, as far as the run of forms goes.
    static const struct {
        UChar32 base;
        int count;
    } kEnclosed[] = {{0x2460, 20}, {0x2474, 20}, {0x2488, 20},
                     {0x249C, 26}, {0x24B6, 26}, {0x24D0, 26}};
    for (const auto& run : kEnclosed) {
        if (first == run.base) {
            if (v > static_cast<unsigned long long>(run.count))
                return false;
            out.append(static_cast<UChar32>(run.base + v - 1));
            return true;
        }
    }
    return false; // any other token reads as "1"
}

} // namespace

UnicodeString ZkUtil::formatNumber(long long value, const UnicodeString& format,
                                   const UnicodeString& separator, int groupSize,
                                   const ZkLang& lang, ZkNameEnum letterValue) {
    UnicodeString out;
    int length = format.length();
    if (length == 0 || (length == 1 && format.charAt(0) == u'1')) {
        appendDecimal(value, 1, u'0', separator, groupSize, out);
        return out;
    }
    int start = 0;
    while (start < length) {
        UChar32 c = format.char32At(start);
        if (isTokenChar(c))
            break;
        start += U16_LENGTH(c);
    }
    if (start >= length) {
        // No token (an empty format included): the text stays in front of the decimal value.
        out.append(format);
        appendDecimal(value, 1, u'0', separator, groupSize, out);
        return out;
    }
    int limit = start;
    while (limit < length) {
        UChar32 c = format.char32At(limit);
        if (!isTokenChar(c))
            break;
        limit += U16_LENGTH(c);
    }
    out.append(format, 0, start);
    UnicodeString part;
    const UnicodeString* token = &format;
    if (start != 0 || limit != length) {
        part.setTo(format, start, limit - start);
        token = &part;
    }
    if (!convertToken(value, *token, separator, groupSize, lang, letterValue, out))
        appendDecimal(value, 1, u'0', separator, groupSize, out);
    out.append(format, limit, length - limit);
    return out;
}

UnicodeString ZkUtil::formatNumber(long long value, const UnicodeString& format,
                                   const ZkLang& lang) {
    return formatNumber(value, format, UnicodeString(), 0, lang, ZKN_EMPTY);
}

} // namespace ZkCommonNS
