// ZkChar vertical orientation: the class of a code point in stacked and mixed vertical text,
// from the caller's overrides or the table made by scripts/gen_vertical.py, and the characters
// that have no vertical form.
#include "zkcommon/core/char.h"

#include <algorithm>
#include <iterator>

namespace ZkCommonNS {

namespace {

struct OrientationRow {
    UChar32 first;
    UChar32 last;
    uint8_t stacked;
    uint8_t mixed;
};

const OrientationRow kOrientationRows[] = {
#include "core/verticalorientation.inc"
};

// Regenerating from another Unicode version may change the count: check the rows the tests
// name before adjusting this.
static_assert(std::size(kOrientationRows) == 191, "the orientation table has 191 rows");

struct CodeRange {
    UChar32 first;
    UChar32 last;
};

const CodeRange kNoVerticalRanges[] = {
    {0x0000, 0x10FF}, {0x1200, 0x2017}, {0x201A, 0x201B},  {0x201E, 0x201F}, {0x2022, 0x202F},
    {0x2031, 0x2031}, {0x2034, 0x203A}, {0x203C, 0x2102},  {0x2104, 0x2115}, {0x2117, 0x2120},
    {0x2122, 0x212A}, {0x212C, 0x214F}, {0x2190, 0x23FF},  {0x2500, 0x259F}, {0x25A2, 0x25B1},
    {0x25B4, 0x25BB}, {0x25BE, 0x25C5}, {0x25C8, 0x25CA},  {0x25CC, 0x25CD}, {0x25D0, 0x25EE},
    {0x25F0, 0x2604}, {0x2607, 0x263F}, {0x2641, 0x2641},  {0x2643, 0x2669}, {0x266B, 0x266C},
    {0x266E, 0x266E}, {0x2670, 0x2775}, {0x2794, 0x2E7F},  {0x3013, 0x3013}, {0x3030, 0x3030},
    {0x3190, 0x319F}, {0xA000, 0xABFF}, {0xFB00, 0xFE0F},  {0xFE70, 0xFEFF}, {0xFF0D, 0xFF0D},
    {0xFF1C, 0xFF1E}, {0xFF61, 0xFFDF}, {0xFFE8, 0x1FFFF},
};

static_assert(std::size(kNoVerticalRanges) == 38, "the no-vertical list has 38 ranges");

template <class Row, size_t N> const Row* findRow(const Row (&rows)[N], UChar32 c) noexcept {
    // The first row whose last code point is not below c; it holds c if it starts at or below.
    const Row* row = std::lower_bound(std::begin(rows), std::end(rows), c,
                                      [](const Row& r, UChar32 v) { return r.last < v; });
    return row != std::end(rows) && row->first <= c ? row : nullptr;
}

ZkChar::TR50Property classOf(uint8_t value, bool flag) noexcept {
    switch (value) {
    case 2:
        return ZkChar::TR50_ROTATED;
    case 32:
        return flag ? ZkChar::TR50_ROTATED : ZkChar::TR50_UPRIGHT;
    case 64:
        return ZkChar::TR50_CUSTOM;
    default:
        return ZkChar::TR50_UPRIGHT;
    }
}

ZkChar::TR50Property lookUp(UChar32 c, const ZkChar::TR50Overrides* overrides, bool flag,
                            bool stacked) {
    if (overrides && !overrides->empty()) {
        auto found = overrides->find(c);
        if (found != overrides->end()) {
            uint8_t value = stacked ? found->second.first : found->second.second;
            if (value != 0)
                return classOf(value, flag);
        }
    }
    std::pair<uint8_t, uint8_t> bytes = ZkChar::getTR50ClassBytes(c);
    return classOf(stacked ? bytes.first : bytes.second, flag);
}

} // namespace

std::pair<uint8_t, uint8_t> ZkChar::getTR50ClassBytes(UChar32 c) noexcept {
    const OrientationRow* row = findRow(kOrientationRows, c);
    return row ? std::make_pair(row->stacked, row->mixed) : std::make_pair<uint8_t, uint8_t>(1, 1);
}

int ZkChar::getTR50RowCount() noexcept {
    return static_cast<int>(std::size(kOrientationRows));
}

ZkChar::TR50Property ZkChar::getTR50SVO(UChar32 c, const TR50Overrides* overrides, bool flag) {
    return lookUp(c, overrides, flag, /*stacked=*/true);
}

ZkChar::TR50Property ZkChar::getTR50MVO(UChar32 c, const TR50Overrides* overrides, bool flag) {
    return lookUp(c, overrides, flag, /*stacked=*/false);
}

bool ZkChar::isNoVerticalChar(UChar32 c) noexcept {
    return findRow(kNoVerticalRanges, c) != nullptr;
}

} // namespace ZkCommonNS
