// ZkUtil: the static class of small utilities (units, quoting, Base64, bits, dates, number text)
// and the home of the text services that other files add to it.
#ifndef ZKCOMMON_TEXT_UTIL_H
#define ZKCOMMON_TEXT_UTIL_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/name.h"
#include "zkcommon/core/unicode.h"

#include <cstdint>
#include <iosfwd>

namespace ZkCommonNS {

enum ZkUnitType : int;

/// Static operations only; the class is never instantiated.
class ZKCOMMON_API ZkUtil {
public:
    ZkUtil() = delete;

    // ---------------------------------------------------------------------------------------
    // Base64: src/text/base64.cpp

    /// Reads `in` to its end in blocks and returns the Base64 text (standard alphabet, "="
    /// padding, no line breaks). `size` is only a reservation hint; a stream that fails at once
    /// gives the empty string.
    static UnicodeString encodeBase64(std::istream& in, int size);
    static UnicodeString encodeBase64(std::istream& in);
    /// Encodes a memory block; a null pointer or a length of 0 or below gives the empty string.
    static UnicodeString encodeBase64(const unsigned char* data, int length);
    /// Writes the decoded bytes of `text` to `out`. Characters outside the alphabet (line breaks,
    /// blanks) are skipped; the first "=" ends the decoding; a trailing partial group of one
    /// character yields nothing. A negative `length` means up to the terminating zero.
    static void decodeBase64(const char16_t* text, int length, std::ostream& out);

    // ---------------------------------------------------------------------------------------
    // Bits: src/text/bits.cpp. The buffer is big-endian in bits: bit 0 is the high bit of
    // byte 0. No bounds are checked: the caller owns the buffer size.

    static int fetchBit1(const unsigned char* data, int index) noexcept;
    static int fetchBit2(const unsigned char* data, int index) noexcept;
    static int fetchBit4(const unsigned char* data, int index) noexcept;
    static int fetchBit8(const unsigned char* data, int index) noexcept;
    /// Two 12-bit elements share three bytes.
    static int fetchBit12(const unsigned char* data, int index) noexcept;
    static int fetchBit16(const unsigned char* data, int index) noexcept;
    static int fetchBit24(const unsigned char* data, int index) noexcept;
    static uint32_t fetchBit32(const unsigned char* data, int index) noexcept;
    /// Sets (to one) every bit of element `index` of that width.
    static void patchBit1(unsigned char* data, int index) noexcept;
    static void patchBit2(unsigned char* data, int index) noexcept;
    static void patchBit4(unsigned char* data, int index) noexcept;

    /// A reader and a writer over one bit buffer, each with its own position. Outside the
    /// `bits` of the buffer a read gives 0 and a write is dropped (the position still moves);
    /// `endFetch`/`endPatch` tell when to stop.
    class ZKCOMMON_API BitIterator {
    public:
        BitIterator(unsigned char* data, int bits) noexcept;
        /// A read-only iterator: `patch` on it does nothing.
        BitIterator(const unsigned char* data, int bits) noexcept;

        /// Reads one bit and advances.
        bool fetch() noexcept;
        /// Reads `n` bits (up to 32), high bit first; `n` of 0 or below gives 0.
        uint32_t fetch(int n) noexcept;
        /// Writes one bit and advances.
        void patch(bool value) noexcept;
        void advanceFetch() noexcept { ++m_fetchPos; }
        void advanceFetch(int count) noexcept { m_fetchPos += count; }
        void advancePatch() noexcept { ++m_patchPos; }
        void advancePatch(int count) noexcept { m_patchPos += count; }
        void seekFetch(int pos) noexcept { m_fetchPos = pos; }
        void seekPatch(int pos) noexcept { m_patchPos = pos; }
        int getFetchPos() const noexcept { return m_fetchPos; }
        int getPatchPos() const noexcept { return m_patchPos; }
        /// True when no bit (or fewer than `ahead` bits) is left to read.
        bool endFetch() const noexcept { return m_fetchPos >= m_bits; }
        bool endFetch(int ahead) const noexcept { return m_fetchPos + ahead > m_bits; }
        bool endPatch() const noexcept { return m_patchPos >= m_bits; }
        bool endPatch(int ahead) const noexcept { return m_patchPos + ahead > m_bits; }
        /// Moves to another buffer; both positions stay where they are.
        void resizeData(unsigned char* data, int bits) noexcept;
        /// The length of the run of `value` bits from the fetch position, at most `limit`, and
        /// never past the end; the fetch position does not move.
        int countRun(bool value, int limit) const noexcept;
        int getBitCount() const noexcept { return m_bits; }

    private:
        const unsigned char* m_read;
        unsigned char* m_write;
        int m_bits;
        int m_fetchPos = 0;
        int m_patchPos = 0;
    };

    // ---------------------------------------------------------------------------------------
    // Dates on the Modified Julian Day: src/text/dates.cpp. Julian calendar before 1582-10-15,
    // Gregorian from then on. Out-of-range fields are not checked; they count on arithmetically.

    static int modifiedJulianDay(int year, int month, int day) noexcept;
    static void mjd2Date(int mjd, int& year, int& month, int& day) noexcept;
    /// 0 is Sunday; always 0..6, also for negative days.
    static int mjd2WeekDay(int mjd) noexcept;

    // ---------------------------------------------------------------------------------------
    // Quoting: src/text/quoting.cpp

    /// Bits of a quoting mode; the modes in use are 3, 7 (XSL values) and 43 (CSS).
    enum QuoteMode : int {
        QUOTE_DOUBLE = 1,
        QUOTE_SINGLE = 2,
        QUOTE_DOUBLED = 4,
        QUOTE_BACKSLASH = 8,
        QUOTE_UNICODE = 16,
        QUOTE_CSS = 32,
        QUOTE_XSL_PLAIN = 3,
        QUOTE_XSL = 7,
        QUOTE_CSS_STRING = 43
    };

    /// Encloses and escapes `text` for `mode`; never fails.
    static UnicodeString quoteString(const UnicodeString& text, int mode);
    /// Reads one quoted string from `text` (leading white space skipped). On success `*end`
    /// (when not null) is behind the closing quote. A missing closing quote, a quote that the
    /// mode does not allow or a null `text` give the bogus string, `*end` then at the failure.
    static UnicodeString parseString(const char16_t* text, const char16_t** end, int mode);
    /// The content of a quoted `text`, trimmed first; the bogus string when it is not one.
    static UnicodeString unquoteString(const UnicodeString& text, int mode);
    /// url("...") with every double quote as "%22".
    static UnicodeString quoteUri(const UnicodeString& text);

    // ---------------------------------------------------------------------------------------
    // Number text under the C locale: src/text/numbers.cpp

    /// Once per process, thread-safe; every number/text conversion calls it first.
    static void setLocaleC();
    /// The decimal value of the digits of the span; a non-digit, an empty span or an overflow
    /// gives -1. A `length` of 0 or below means up to the end.
    static int parseDigits(const UnicodeString& text, int start, int length);
    /// Skips white space and reads decimal digits; -1 (and `*end` at the start) without one.
    static int parseDigits(const char16_t* text, const char16_t** end);
    /// Skips white space and reads hex digits (at most `maxDigits` when above 0); 0 and `*end`
    /// at the start without one.
    static unsigned long parseHexNum(const char16_t* text, const char16_t** end, int maxDigits);
    /// Skips white space, reads [sign] digits [. digits] and converts in the C locale. No digits:
    /// 0, `*end` at the start and `*error` true. More than 98 characters: 0 without moving.
    static double parseNumber(const char16_t* text, const char16_t** end, bool* hasPoint,
                              bool* error);
    /// Half away from zero; NaN and out-of-range values give 0.
    static int roundToInteger(float value) noexcept;
    static int roundToInteger(double value) noexcept;
    static double getNaN() noexcept;
    static float getNaNf() noexcept;
    static bool isNaN(float value) noexcept { return value != value; }
    static bool isNaN(double value) noexcept { return value != value; }
    static UnicodeString toString(int value);
    static UnicodeString toString(long long value);
    /// "%g" in the C locale (so NaN prints "nan" and infinity "inf").
    static UnicodeString toString(double value);
    /// Upper-case hex digits, zero-padded to `width` (no padding when 0 or below).
    static UnicodeString toHexString(int value, int width);
    static UnicodeString toHexString(long long value, int width);

    // ---------------------------------------------------------------------------------------
    // Spaces: src/text/spaces.cpp

    /// Runs of TAB, LF, CR and blank become one blank; leading and trailing runs go.
    static UnicodeString normalizeSpaces(const UnicodeString& text);
    /// Removes every blank, TAB, LF and CR.
    static UnicodeString omitSpace(const UnicodeString& text);

    // ---------------------------------------------------------------------------------------
    // Units: src/values/units.cpp

    /// The word of a unit as a built-in name; the empty name for units without a word and for
    /// values out of range.
    static ZkName toUnitName(ZkUnitType unit) noexcept;
    /// The unit of a word; 0 (no unit) for unknown words. With `typeWords` the type keywords of
    /// attribute references are read too.
    static ZkUnitType toUnitType(ZkName word, bool typeWords) noexcept;

    // ---------------------------------------------------------------------------------------
    // Life cycle: src/text/util.cpp

    /// Frees the process-wide caches of this class; later calls rebuild them on demand.
    static void cleanup();

    // ---------------------------------------------------------------------------------------
    // Encoding names: src/text/encodingnames.cpp

    /// The one spelling of an encoding name that the stream layer switches on ("shift_jis"
    /// gives "WINDOWS31J"). The name is trimmed and upper-cased for the look-up; an empty name
    /// and a name not in the alias table come back exactly as given.
    static UnicodeString getCanonicalEncoding(const UnicodeString& name);
    /// The name to write into a document: "UTF-8" for an empty name, the registered spelling
    /// for the library's own aliases, else ICU's standard name or the upper-cased name when ICU
    /// does not know it. Never fails.
    static UnicodeString getStandardEncoding(const UnicodeString& name);
    /// Whether file paths may exceed the old 260-character limit; always true on POSIX systems.
    static bool isSystemLongPathEnabled() noexcept;

    // ---------------------------------------------------------------------------------------
    // URI unquoting for the value tokenizer: src/text/unquoteuri.cpp

    /// The URI of `url(...)` text: the function name (any case) and parentheses removed,
    /// trimmed, and a quoted string read with CSS escapes. Text that is not `url(...)` is
    /// trimmed and unquoted alike; an unterminated quote leaves the text as it stands.
    static UnicodeString unquoteUri(const UnicodeString& text);

    // ---------------------------------------------------------------------------------------
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_TEXT_UTIL_H
