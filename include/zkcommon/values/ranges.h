// ZkPageRange, the page list of printing options ("1-3, 5, 8-"), and ZkUnicodeRange, the
// character ranges of font selection ("U+0-7F, U+4??").
#ifndef ZKCOMMON_VALUES_RANGES_H
#define ZKCOMMON_VALUES_RANGES_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/unicode.h"

#include <utility>
#include <vector>

namespace ZkCommonNS {

class ZkValue;

/// Pairs (first, last) in the order parsed, not merged. An open end is 0x7FFFFFFF.
class ZKCOMMON_API ZkPageRange {
public:
    using Range = std::pair<int, int>;

    /// Replaces the ranges by those of `text`. A first page above the last, an overflowing
    /// number or any other character gives false (the ranges read so far stay); the empty text
    /// gives true with no ranges.
    bool parsePageRange(const UnicodeString& text);
    /// Whether `text` parses.
    static bool checkPageRange(const UnicodeString& text);
    bool empty() const noexcept { return m_ranges.empty(); }
    /// The first page of the first range; -1 when there is none.
    int getFirstPage() const noexcept { return m_ranges.empty() ? -1 : m_ranges[0].first; }
    const std::vector<Range>& getRange() const noexcept { return m_ranges; }
    bool inRange(long page) const noexcept;
    /// One range of one page.
    bool isSingle() const noexcept {
        return m_ranges.size() == 1 && m_ranges[0].first == m_ranges[0].second;
    }

private:
    void addRange(long first, long last);
    std::vector<Range> m_ranges;
};

/// Sorted, disjoint code point ranges; touching ranges merge.
class ZKCOMMON_API ZkUnicodeRange {
public:
    struct URange {
        int from;
        int to;
        bool operator==(const URange& other) const noexcept {
            return from == other.from && to == other.to;
        }
    };

    /// A range with from above to, or outside 0..U+10FFFF, is ignored.
    void addRange(const URange& range);
    void addRange(const ZkUnicodeRange& other);
    void clearRange() noexcept { m_ranges.clear(); }
    /// 0 to U+10FFFF.
    void fullRange();
    bool inRange(int c) const noexcept;
    bool isEmpty() const noexcept { return m_ranges.empty(); }
    bool isFullRange() const noexcept;
    bool operator==(const ZkUnicodeRange& other) const noexcept {
        return m_ranges == other.m_ranges;
    }
    bool operator!=(const ZkUnicodeRange& other) const noexcept { return !(*this == other); }
    const std::vector<URange>& getRanges() const noexcept { return m_ranges; }

    /// Adds the ranges of "U+hhhh", "U+hhhh-kkkk", "U+hh??" and quoted strings, separated by
    /// commas. False when the scan stops before the end; the ranges read so far stay.
    bool parseUnicodeRange(const UnicodeString& text);
    /// A String or Name by its text, an Array item by item; false for anything else.
    bool parseUnicodeRange(const ZkValue& value);
    /// As above on a zero-terminated text; `*end` (when given) receives where the scan stopped.
    bool parseUnicodeRange(const char16_t* text, const char16_t** end);
    /// The ranges in the shortest wildcard form, joined by ", ".
    UnicodeString toString() const;

private:
    std::vector<URange> m_ranges;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_VALUES_RANGES_H
