// ZkUtil::convertKansuji: the digit runs of a text as Japanese numerals, in the simple,
// grouping and readable styles.
#include "text/numerals.h"
#include "zkcommon/text/lang.h"
#include "zkcommon/text/util.h"

namespace ZkCommonNS {
namespace detail {

namespace {

// U+3007 IDEOGRAPHIC NUMBER ZERO, then the kanji of one to nine.
constexpr UChar32 kKanjiDigits[10] = {0x3007, 0x4E00, 0x4E8C, 0x4E09, 0x56DB,
                                      0x4E94, 0x516D, 0x4E03, 0x516B, 0x4E5D};
// KATAKANA MIDDLE DOT for the point, IDEOGRAPHIC COMMA for the comma, ten, hundred, thousand,
// and the group words from ten thousand (man) to 10^48 (goku).
constexpr UChar32 kDefaultMarks[KansujiParams::kMarkCount] = {
    0x30FB, 0x3001, 0x5341, 0x767E, 0x5343, 0x4E07, 0x5104, 0x5146, 0x4EAC,
    0x5793, 0x79ED, 0x7A63, 0x6E9D, 0x6F97, 0x6B63, 0x8F09, 0x6975};

bool isDigit(char16_t c) noexcept {
    return c >= u'0' && c <= u'9';
}

// One run of digits [start, limit) of `text`.
class NumberWriter {
public:
    NumberWriter(const UnicodeString& text, const KansujiParams& params, UnicodeString& out)
        : m_text(text), m_params(params), m_out(out) {}

    void simple(int start, int limit) {
        for (int i = start; i < limit; ++i)
            m_out.append(digit(i));
    }

    // Every digit is written; each group of four ends with its word, and the groups of zeros
    // at the end vanish with their words.
    void grouping(int start, int limit) {
        int lastNonZero = lastNonZeroDigit(start, limit);
        if (lastNonZero < 0) {
            simple(start, limit);
            return;
        }
        int lastGroup = (limit - 1 - lastNonZero) / 4; // group of the last non-zero digit
        for (int i = start; i < limit; ++i) {
            int place = limit - 1 - i;
            m_out.append(digit(i));
            if (place % 4 == 0) {
                int group = place / 4;
                appendGroupWord(group);
                if (group == lastGroup)
                    return;
            }
        }
    }

    // Within each group of four the digits are read with ten, hundred and thousand; a one is
    // not written before these units, and a group of zeros writes nothing, word included.
    void readable(int start, int limit) {
        if (lastNonZeroDigit(start, limit) < 0) {
            m_out.append(m_params.digits[0]);
            return;
        }
        int length = limit - start;
        int groups = (length + 3) / 4;
        for (int group = groups - 1; group >= 0; --group) {
            bool any = false;
            for (int unit = 3; unit >= 0; --unit) {
                int place = group * 4 + unit;
                if (place >= length)
                    continue;
                int i = limit - 1 - place;
                int value = m_text.charAt(i) - u'0';
                if (value == 0)
                    continue;
                any = true;
                if (unit == 0 || value != 1 || m_params.oneBeforeUnits)
                    m_out.append(m_params.digits[value]);
                if (unit > 0)
                    m_out.append(m_params.marks[KansujiParams::kTen + unit - 1]);
            }
            if (any)
                appendGroupWord(group);
        }
    }

private:
    UChar32 digit(int i) const { return m_params.digits[m_text.charAt(i) - u'0']; }

    int lastNonZeroDigit(int start, int limit) const {
        for (int i = limit - 1; i >= start; --i)
            if (m_text.charAt(i) != u'0')
                return i;
        return -1;
    }

    // Group 0 has no word; past the twelfth word a place is written without one.
    void appendGroupWord(int group) {
        if (group >= 1 && group <= KansujiParams::kGroupWordCount)
            m_out.append(m_params.marks[KansujiParams::kFirstGroupWord + group - 1]);
    }

    const UnicodeString& m_text;
    const KansujiParams& m_params;
    UnicodeString& m_out;
};

} // namespace

KansujiParams::KansujiParams() {
    for (int i = 0; i < 10; ++i)
        digits[i] = kKanjiDigits[i];
    for (int i = 0; i < kMarkCount; ++i)
        marks[i] = kDefaultMarks[i];
}

void appendKansuji(const UnicodeString& text, const KansujiParams& params, UnicodeString& out) {
    NumberWriter writer(text, params, out);
    int length = text.length();
    bool afterPoint = false; // the run follows a decimal point: its digits are read one by one
    for (int i = 0; i < length;) {
        char16_t c = text.charAt(i);
        if (isDigit(c)) {
            int limit = i;
            while (limit < length && isDigit(text.charAt(limit)))
                ++limit;
            if (afterPoint || params.style == KansujiParams::kSimple)
                writer.simple(i, limit);
            else if (params.style == KansujiParams::kGrouping)
                writer.grouping(i, limit);
            else
                writer.readable(i, limit);
            i = limit;
            continue;
        }
        bool digitBefore = i > 0 && isDigit(text.charAt(i - 1));
        bool digitAfter = i + 1 < length && isDigit(text.charAt(i + 1));
        if ((c == u'.' || c == u',') && digitBefore && digitAfter) {
            out.append(params.marks[c == u'.' ? KansujiParams::kPoint : KansujiParams::kComma]);
            afterPoint = c == u'.';
            ++i;
            continue;
        }
        afterPoint = false;
        if (params.style == KansujiParams::kGrouping && c >= 0x21 && c <= 0x7E &&
            (digitBefore || digitAfter))
            out.append(static_cast<char16_t>(c + 0xFEE0)); // to its FULLWIDTH form
        else
            out.append(c);
        ++i;
    }
}

} // namespace detail

namespace {

detail::KansujiParams makeParams(const ZkName& style, const ZkName& digitSet,
                                 const UnicodeString& marks) {
    detail::KansujiParams params;
    if (style == ZKN_grouping)
        params.style = detail::KansujiParams::kGrouping;
    else if (style == ZKN_readable)
        params.style = detail::KansujiParams::kReadable;
    if (digitSet == ZKN_latin) {
        for (int i = 0; i < 10; ++i)
            params.digits[i] = 0xFF10 + i; // FULLWIDTH DIGIT ZERO on
    } else if (digitSet != ZKN_kanji && !digitSet.isEmpty()) {
        const UnicodeString& own = digitSet.toString();
        int slot = 0;
        for (int i = 0; i < own.length() && slot < 10; ++slot) {
            UChar32 c = own.char32At(i);
            params.digits[slot] = c;
            i += U16_LENGTH(c);
        }
    }
    int slot = 0;
    for (int i = 0; i < marks.length() && slot < detail::KansujiParams::kMarkCount; ++slot) {
        UChar32 c = marks.char32At(i);
        if (c != 0)
            params.marks[slot] = c;
        i += U16_LENGTH(c);
    }
    return params;
}

} // namespace

UnicodeString ZkUtil::convertKansuji(const UnicodeString& text, const ZkName& style,
                                     const ZkName& digitSet, const UnicodeString& marks) {
    UnicodeString out;
    detail::appendKansuji(text, makeParams(style, digitSet, marks), out);
    return out;
}

UnicodeString ZkUtil::convertKansuji(long long value, const ZkName& style, const ZkName& digitSet,
                                     const UnicodeString& marks, const UnicodeString& separator,
                                     int groupSize) {
    UnicodeString digits =
        formatNumber(value, UNICODE_STRING_SIMPLE("1"), separator, groupSize, ZkLang(), ZKN_EMPTY);
    return convertKansuji(digits, style, digitSet, marks);
}

} // namespace ZkCommonNS
