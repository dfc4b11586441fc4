// ZkPageRange and ZkUnicodeRange: parsing, merging and printing.
#include "zkcommon/values/ranges.h"

#include "zkcommon/text/util.h"
#include "zkcommon/values/value.h"

#include <algorithm>
#include <cstdint>

namespace ZkCommonNS {

namespace {

constexpr int kOpenEnd = 0x7FFFFFFF;
constexpr int kMaxCodePoint = 0x10FFFF;

bool isBlank(char16_t c) noexcept {
    return c == 0x20 || c == 0x09 || c == 0x0A || c == 0x0D;
}
bool isDigit(char16_t c) noexcept {
    return c >= u'0' && c <= u'9';
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

// Digits at p; -1 on overflow of 32 bits, the sign of the check.
long readDigits(const char16_t*& p) noexcept {
    int64_t n = 0;
    bool overflow = false;
    while (isDigit(*p)) {
        n = n * 10 + (*p++ - u'0');
        if (n > INT32_MAX) {
            overflow = true;
            n = INT32_MAX;
        }
    }
    return overflow ? -1 : static_cast<long>(n);
}

} // namespace

// Page ranges -------------------------------------------------------------------------------

void ZkPageRange::addRange(long first, long last) {
    m_ranges.emplace_back(static_cast<int>(first), static_cast<int>(last));
}

bool ZkPageRange::parsePageRange(const UnicodeString& text) {
    m_ranges.clear();
    UnicodeString copy = text;
    const char16_t* p = copy.getTerminatedBuffer();
    if (!p)
        return false;
    const char16_t* limit = p + copy.length();
    auto skip = [&]() {
        while (p < limit && isBlank(*p))
            ++p;
    };
    skip();
    if (p >= limit)
        return true;
    for (;;) {
        skip();
        long first, last;
        if (p < limit && *p == u'-') {
            first = 0;
        } else if (p < limit && isDigit(*p)) {
            first = readDigits(p);
            if (first < 0)
                return false;
            skip();
        } else {
            return false;
        }
        if (p < limit && *p == u'-') {
            ++p;
            skip();
            if (p < limit && isDigit(*p)) {
                last = readDigits(p);
                if (last < 0)
                    return false;
                if (last == 0)
                    last = kOpenEnd;
            } else {
                last = kOpenEnd;
            }
        } else {
            last = first;
        }
        if (first > last)
            return false;
        addRange(first, last);
        skip();
        if (p >= limit)
            return true;
        if (*p != u',')
            return false;
        ++p;
    }
}

bool ZkPageRange::checkPageRange(const UnicodeString& text) {
    ZkPageRange scratch;
    return scratch.parsePageRange(text);
}

bool ZkPageRange::inRange(long page) const noexcept {
    for (const Range& r : m_ranges)
        if (page >= r.first && page <= r.second)
            return true;
    return false;
}

// Unicode ranges ----------------------------------------------------------------------------

void ZkUnicodeRange::addRange(const URange& range) {
    if (range.from > range.to || range.from < 0 || range.to > kMaxCodePoint)
        return;
    // The first range that ends at or after the one before `range` starts: it overlaps or
    // touches, or lies wholly behind.
    auto it = std::lower_bound(m_ranges.begin(), m_ranges.end(), range.from,
                               [](const URange& r, int from) { return r.to + 1 < from; });
    if (it == m_ranges.end() || it->from > range.to + 1) {
        m_ranges.insert(it, range);
        return;
    }
    it->from = std::min(it->from, range.from);
    it->to = std::max(it->to, range.to);
    auto next = it + 1;
    auto absorbed = next;
    while (absorbed != m_ranges.end() && absorbed->from <= it->to + 1) {
        it->to = std::max(it->to, absorbed->to);
        ++absorbed;
    }
    m_ranges.erase(next, absorbed);
}

void ZkUnicodeRange::addRange(const ZkUnicodeRange& other) {
    if (&other == this)
        return;
    for (const URange& r : other.m_ranges)
        addRange(r);
}

void ZkUnicodeRange::fullRange() {
    m_ranges.assign(1, URange{0, kMaxCodePoint});
}

bool ZkUnicodeRange::isFullRange() const noexcept {
    return m_ranges.size() == 1 && m_ranges[0].from == 0 && m_ranges[0].to == kMaxCodePoint;
}

bool ZkUnicodeRange::inRange(int c) const noexcept {
    auto it = std::lower_bound(m_ranges.begin(), m_ranges.end(), c,
                               [](const URange& r, int x) { return r.to < x; });
    return it != m_ranges.end() && it->from <= c;
}

bool ZkUnicodeRange::parseUnicodeRange(const UnicodeString& text) {
    UnicodeString copy = text;
    const char16_t* buffer = copy.getTerminatedBuffer();
    if (!buffer)
        return false;
    // An embedded U+0000 stops the scan before the end: that is a failure.
    const char16_t* end = nullptr;
    return parseUnicodeRange(buffer, &end) && end == buffer + copy.length();
}

bool ZkUnicodeRange::parseUnicodeRange(const ZkValue& value) {
    if (value.isString() || value.isName())
        return parseUnicodeRange(value.getStringValue());
    if (!value.isArray())
        return false;
    bool ok = true;
    for (int i = 0; i < value.getArrayCount(); ++i) {
        ZkValue item = value.getNthItem(i);
        if (item.isCharacter() && item.getCharacterValue() == u',')
            continue; // a list read by the value parser keeps its commas
        ok = parseUnicodeRange(item) && ok;
    }
    return ok;
}

bool ZkUnicodeRange::parseUnicodeRange(const char16_t* text, const char16_t** end) {
    const char16_t* p = text ? text : u"";
    auto skip = [&]() {
        while (isBlank(*p))
            ++p;
    };
    auto finish = [&](bool ok) {
        if (end)
            *end = p;
        return ok;
    };
    skip();
    if (!*p)
        return finish(true);
    for (;;) {
        skip();
        if (*p == u'"' || *p == u'\'') {
            const char16_t* after = nullptr;
            UnicodeString s = ZkUtil::parseString(p, &after, ZkUtil::QUOTE_CSS_STRING);
            if (s.isBogus())
                return finish(false);
            for (int32_t i = 0; i < s.length();) {
                UChar32 c = s.char32At(i);
                addRange(URange{c, c});
                i = s.moveIndex32(i, 1);
            }
            p = after;
        } else if ((*p == u'U' || *p == u'u') && p[1] == u'+' &&
                   (hexValue(p[2]) >= 0 || p[2] == u'?')) {
            const char16_t* q = p + 2;
            int from = 0, digits = 0;
            while (hexValue(*q) >= 0 && digits < 6) {
                from = from * 16 + hexValue(*q++);
                ++digits;
            }
            int to = from;
            bool wildcard = false;
            while (*q == u'?' && digits < 6) {
                from *= 16;
                to = to * 16 + 15;
                ++digits;
                ++q;
                wildcard = true;
            }
            if (!wildcard && *q == u'-') {
                ++q;
                if (hexValue(*q) >= 0) {
                    to = 0;
                    for (int n = 0; hexValue(*q) >= 0 && n < 6; ++n)
                        to = to * 16 + hexValue(*q++);
                } else {
                    to = kMaxCodePoint;
                }
            }
            if (from > to || to > kMaxCodePoint || hexValue(*q) >= 0 || *q == u'?')
                return finish(false);
            p = q;
            addRange(URange{from, to});
        } else {
            return finish(false);
        }
        skip();
        if (!*p)
            return finish(true);
        if (*p != u',')
            return finish(false);
        ++p;
    }
}

UnicodeString ZkUnicodeRange::toString() const {
    UnicodeString text;
    auto hex = [](int value, int width) { return ZkUtil::toHexString(value, width); };
    auto aligned = [](const URange& r, int bits) {
        int mask = (1 << bits) - 1;
        return (r.from & mask) == 0 && (r.to & mask) == mask && (r.from >> bits) == (r.to >> bits);
    };
    for (size_t i = 0; i < m_ranges.size(); ++i) {
        const URange& r = m_ranges[i];
        if (i > 0)
            text.append(u", ");
        text.append(u"U+");
        if (r.from == r.to)
            text.append(hex(r.from, 4));
        else if (aligned(r, 16))
            text.append(r.from == 0 ? UnicodeString() : hex(r.from >> 16, 0)).append(u"????");
        else if (aligned(r, 12))
            text.append(hex(r.from >> 12, 0)).append(u"???");
        else if (aligned(r, 8))
            text.append(hex(r.from >> 8, 2)).append(u"??");
        else if (aligned(r, 4))
            text.append(hex(r.from >> 4, 3)).append(u"?");
        else
            text.append(hex(r.from, 4)).append(u'-').append(hex(r.to, 4));
    }
    return text;
}

} // namespace ZkCommonNS
