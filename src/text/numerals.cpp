// Numeral systems by table: Roman, letters, Greek, Armenian, Georgian, Hebrew, abjad, Syriac,
// Tamil and Ethiopic.
#include "text/numerals.h"

namespace ZkCommonNS {
namespace detail {

namespace {

// The decimal digits of a value, most significant first; returns the count.
int decimalDigits(unsigned long long value, int* digits) {
    int reversed[20];
    int count = 0;
    do {
        reversed[count++] = static_cast<int>(value % 10);
        value /= 10;
    } while (value != 0);
    for (int i = 0; i < count; ++i)
        digits[i] = reversed[count - 1 - i];
    return count;
}

// Writes the digits of a value of at most `places` places from tables of nine letters per
// place (units first); a zero digit writes nothing.
void appendByPlaceTables(unsigned long long value, const char16_t* const* tables,
                         UnicodeString& out) {
    int digits[20];
    int count = decimalDigits(value, digits);
    for (int i = 0; i < count; ++i) {
        int digit = digits[i];
        if (digit != 0)
            out.append(tables[count - 1 - i][digit - 1]);
    }
}

} // namespace

bool appendRoman(unsigned long long value, const char16_t* letters, UnicodeString& out) {
    if (value < 1 || value > 3999)
        return false;
    // The pattern of a decimal digit: 1 is the unit letter, 5 the five letter, X the next
    // place's unit.
    static const char* const kPatterns[10] = {"",  "1",  "11",  "111",  "15",
                                              "5", "51", "511", "5111", "1X"};
    int digits[20];
    int count = decimalDigits(value, digits);
    for (int i = 0; i < count; ++i) {
        int place = count - 1 - i; // 0 ones, 3 thousands
        for (const char* p = kPatterns[digits[i]]; *p; ++p) {
            int index = place * 2 + (*p == '1' ? 0 : *p == '5' ? 1 : 2);
            out.append(letters[index]);
        }
    }
    return true;
}

bool appendAlphabetic(unsigned long long value, const UChar32* letters, int count,
                      UnicodeString& out) {
    if (value < 1 || count < 1)
        return false;
    UChar32 reversed[64];
    int length = 0;
    unsigned long long n = static_cast<unsigned long long>(count);
    if (count == 1) {
        // One letter repeats: only small values are writable.
        if (value > 999)
            return false;
        for (unsigned long long i = 0; i < value; ++i)
            out.append(letters[0]);
        return true;
    }
    while (value > 0 && length < 64) {
        --value;
        reversed[length++] = letters[value % n];
        value /= n;
    }
    while (length > 0)
        out.append(reversed[--length]);
    return true;
}

bool appendAlphabetic(unsigned long long value, const char16_t* letters, UnicodeString& out) {
    UChar32 buffer[64];
    int count = 0;
    UnicodeString text(letters);
    for (int i = 0; i < text.length() && count < 64;) {
        UChar32 c = text.char32At(i);
        buffer[count++] = c;
        i += U16_LENGTH(c);
    }
    return appendAlphabetic(value, buffer, count, out);
}

bool appendGreekNumeral(unsigned long long value, bool upper, UnicodeString& out) {
    if (value < 1 || value > 9999)
        return false;
    // Units with stigma for 6, tens with koppa for 90, hundreds with sampi for 900.
    static const char16_t* const kLower[3] = {
        u"\u03B1\u03B2\u03B3\u03B4\u03B5\u03DB\u03B6\u03B7\u03B8",
        u"\u03B9\u03BA\u03BB\u03BC\u03BD\u03BE\u03BF\u03C0\u03DF",
        u"\u03C1\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9\u03E1"};
    static const char16_t* const kUpper[3] = {
        u"\u0391\u0392\u0393\u0394\u0395\u03DA\u0396\u0397\u0398",
        u"\u0399\u039A\u039B\u039C\u039D\u039E\u039F\u03A0\u03DE",
        u"\u03A1\u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\u03E0"};
    const char16_t* const* tables = upper ? kUpper : kLower;
    if (value >= 1000) {
        out.append(char16_t(0x0375)); // GREEK LOWER NUMERAL SIGN marks the thousands
        out.append(tables[0][value / 1000 - 1]);
        value %= 1000;
    }
    if (value > 0) {
        const char16_t* const placeTables[3] = {tables[0], tables[1], tables[2]};
        appendByPlaceTables(value, placeTables, out);
    }
    out.append(char16_t(0x0374)); // GREEK NUMERAL SIGN (keraia)
    return true;
}

bool appendArmenianNumeral(unsigned long long value, bool upper, UnicodeString& out) {
    if (value < 1 || value > 9999)
        return false;
    // The letters run in numeric order: U+0531 for 1 to U+0554 for 9000.
    int digits[20];
    int count = decimalDigits(value, digits);
    char16_t base = upper ? 0x0531 : 0x0561;
    for (int i = 0; i < count; ++i) {
        int place = count - 1 - i;
        if (digits[i] != 0)
            out.append(static_cast<char16_t>(base + place * 9 + digits[i] - 1));
    }
    return true;
}

bool appendGeorgianNumeral(unsigned long long value, UnicodeString& out) {
    if (value < 1 || value > 19999)
        return false;
    static const char16_t* const kTables[5] = {
        u"\u10D0\u10D1\u10D2\u10D3\u10D4\u10D5\u10D6\u10F1\u10D7",
        u"\u10D8\u10D9\u10DA\u10DB\u10DC\u10F2\u10DD\u10DE\u10DF",
        u"\u10E0\u10E1\u10E2\u10F3\u10E4\u10E5\u10E6\u10E7\u10E8",
        u"\u10E9\u10EA\u10EB\u10EC\u10ED\u10EE\u10F4\u10EF\u10F0", u"\u10F5"};
    appendByPlaceTables(value, kTables, out);
    return true;
}

namespace {

// Hebrew letters of 1..1999: hundreds above 400 repeat tav; 15 and 16 are written 9+6 and 9+7
// so as not to spell a name of God.
void appendHebrewPart(unsigned value, UnicodeString& out) {
    static const char16_t kOnes[] = u"\u05D0\u05D1\u05D2\u05D3\u05D4\u05D5\u05D6\u05D7\u05D8";
    static const char16_t kTens[] = u"\u05D9\u05DB\u05DC\u05DE\u05E0\u05E1\u05E2\u05E4\u05E6";
    static const char16_t kHundreds[] = u"\u05E7\u05E8\u05E9\u05EA";
    unsigned hundreds = value / 100;
    while (hundreds >= 4) {
        out.append(kHundreds[3]);
        hundreds -= 4;
    }
    if (hundreds > 0)
        out.append(kHundreds[hundreds - 1]);
    unsigned rest = value % 100;
    if (rest == 15 || rest == 16) {
        out.append(kOnes[8]).append(kOnes[rest - 10]);
        return;
    }
    if (rest >= 10)
        out.append(kTens[rest / 10 - 1]);
    if (rest % 10 != 0)
        out.append(kOnes[rest % 10 - 1]);
}

} // namespace

bool appendHebrewNumeral(unsigned long long value, UnicodeString& out) {
    if (value < 1 || value > 999999)
        return false;
    unsigned n = static_cast<unsigned>(value);
    if (n < 2000) {
        appendHebrewPart(n, out);
        return true;
    }
    appendHebrewPart(n / 1000, out);
    out.append(char16_t(0x05F3)); // HEBREW PUNCTUATION GERESH: thousands
    if (n % 1000 != 0)
        appendHebrewPart(n % 1000, out);
    return true;
}

bool appendAbjadNumeral(unsigned long long value, UnicodeString& out) {
    if (value < 1 || value > 1999)
        return false;
    static const char16_t* const kTables[4] = {
        u"\u0623\u0628\u062C\u062F\u0647\u0648\u0632\u062D\u0637",
        u"\u064A\u0643\u0644\u0645\u0646\u0633\u0639\u0641\u0635",
        u"\u0642\u0631\u0634\u062A\u062B\u062E\u0630\u0636\u0638", u"\u063A"};
    appendByPlaceTables(value, kTables, out);
    return true;
}

bool appendSyriacNumeral(unsigned long long value, UnicodeString& out) {
    if (value < 1 || value > 999)
        return false;
    static const char16_t kOnes[] = u"\u0710\u0712\u0713\u0715\u0717\u0718\u0719\u071A\u071B";
    static const char16_t kTens[] = u"\u071D\u071F\u0720\u0721\u0722\u0723\u0725\u0726\u0728";
    static const char16_t kHundreds[] = u"\u0729\u072A\u072B\u072C";
    unsigned hundreds = static_cast<unsigned>(value / 100);
    // 500 to 900 are taw followed by the letter of the rest: taw-qof for 500, taw-taw-qof 900.
    while (hundreds > 4) {
        out.append(kHundreds[3]);
        hundreds -= 4;
    }
    if (hundreds > 0)
        out.append(kHundreds[hundreds - 1]);
    unsigned rest = static_cast<unsigned>(value % 100);
    if (rest >= 10)
        out.append(kTens[rest / 10 - 1]);
    if (rest % 10 != 0)
        out.append(kOnes[rest % 10 - 1]);
    return true;
}

namespace {

void appendTamilPart(unsigned value, UnicodeString& out) {
    // TAMIL DIGIT ONE to NINE, and the signs for ten, hundred and thousand.
    static const char16_t kSigns[3] = {0x0BF0, 0x0BF1, 0x0BF2};
    int digits[20];
    int count = decimalDigits(value, digits);
    for (int i = 0; i < count; ++i) {
        int place = count - 1 - i;
        int digit = digits[i];
        if (digit == 0)
            continue;
        if (place == 0 || digit != 1)
            out.append(static_cast<char16_t>(0x0BE6 + digit));
        if (place > 0)
            out.append(kSigns[place - 1]);
    }
}

} // namespace

bool appendTamilNumeral(unsigned long long value, UnicodeString& out) {
    if (value < 1 || value > 999999)
        return false;
    unsigned n = static_cast<unsigned>(value);
    if (n < 10000) {
        appendTamilPart(n, out);
        return true;
    }
    // Above, the count of thousands is itself a numeral before the thousand sign.
    appendTamilPart(n / 1000, out);
    out.append(char16_t(0x0BF2));
    if (n % 1000 != 0)
        appendTamilPart(n % 1000, out);
    return true;
}

bool appendEthiopicNumeral(unsigned long long value, UnicodeString& out) {
    if (value < 1)
        return false;
    if (value == 1) {
        out.append(char16_t(0x1369)); // ETHIOPIC DIGIT ONE
        return true;
    }
    // Groups of two decimal digits from the right; group 0 is the least significant.
    int groups[16];
    int count = 0;
    for (unsigned long long n = value; n != 0; n /= 100)
        groups[count++] = static_cast<int>(n % 100);
    for (int index = count - 1; index >= 0; --index) {
        int group = groups[index];
        bool odd = index % 2 == 1;
        // A 1 alone is dropped in the leading group and in groups before the hundred sign.
        bool dropDigits = group == 0 || (group == 1 && (index == count - 1 || odd));
        if (!dropDigits) {
            if (group >= 10)
                out.append(static_cast<char16_t>(0x1372 + group / 10 - 1)); // ten to ninety
            if (group % 10 != 0)
                out.append(static_cast<char16_t>(0x1369 + group % 10 - 1)); // one to nine
        }
        if (odd && group != 0)
            out.append(char16_t(0x137B)); // ETHIOPIC NUMBER HUNDRED
        else if (!odd && index > 0)
            out.append(char16_t(0x137C)); // ETHIOPIC NUMBER TEN THOUSAND
    }
    return true;
}

} // namespace detail
} // namespace ZkCommonNS
