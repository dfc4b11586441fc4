// Numeral converters shared by ZkUtil::formatNumber, ZkUtil::convertKansuji and the counter
// styles. Each append function writes the numeral of a value to `out` and returns true, or
// returns false and writes nothing when the value lies outside the system's range.
#ifndef ZKCOMMON_SRC_TEXT_NUMERALS_H
#define ZKCOMMON_SRC_TEXT_NUMERALS_H

#include "zkcommon/core/unicode.h"

namespace ZkCommonNS {
namespace detail {

/// Roman numerals 1..3999 written with `letters`, the seven letters for 1, 5, 10, 50, 100, 500
/// and 1000 ("ivxlcdm").
bool appendRoman(unsigned long long value, const char16_t* letters, UnicodeString& out);
/// Bijective numbering over `count` letters (a, b, ..., z, aa, ...), from 1.
bool appendAlphabetic(unsigned long long value, const UChar32* letters, int count,
                      UnicodeString& out);
/// The same over the code points of a string.
bool appendAlphabetic(unsigned long long value, const char16_t* letters, UnicodeString& out);
/// Greek numerals 1..9999 with the keraia, thousands with the lower numeral sign.
bool appendGreekNumeral(unsigned long long value, bool upper, UnicodeString& out);
/// Armenian numerals 1..9999.
bool appendArmenianNumeral(unsigned long long value, bool upper, UnicodeString& out);
/// Georgian numerals 1..19999.
bool appendGeorgianNumeral(unsigned long long value, UnicodeString& out);
/// Hebrew numerals 1..999999: below 2000 in one part (repeated tav for the hundreds above
/// 400), above in two parts, the thousands marked with a geresh.
bool appendHebrewNumeral(unsigned long long value, UnicodeString& out);
/// Arabic abjad numerals 1..1999.
bool appendAbjadNumeral(unsigned long long value, UnicodeString& out);
/// Syriac numerals 1..999.
bool appendSyriacNumeral(unsigned long long value, UnicodeString& out);
/// Tamil numerals 1..999999 with the signs for ten, hundred and thousand.
bool appendTamilNumeral(unsigned long long value, UnicodeString& out);
/// Ethiopic numerals from 1, in pairs of digits with the signs for hundred and ten thousand.
bool appendEthiopicNumeral(unsigned long long value, UnicodeString& out);

/// The parameter set of the kansuji converter.
struct KansujiParams {
    enum Style { kSimple, kGrouping, kReadable };
    enum Mark { kPoint, kComma, kTen, kHundred, kThousand, kFirstGroupWord, kMarkCount = 17 };
    static constexpr int kGroupWordCount = 12;

    Style style = kSimple;
    /// Readable style: write the digit one before ten, hundred and thousand too.
    bool oneBeforeUnits = false;
    UChar32 digits[10];
    UChar32 marks[kMarkCount];

    /// The kanji digits and the built-in marks.
    KansujiParams();
};

/// Converts each run of ASCII digits of `text` by `params`; the rest is copied.
void appendKansuji(const UnicodeString& text, const KansujiParams& params, UnicodeString& out);

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_TEXT_NUMERALS_H
