// ZkChar properties: thin ICU wrappers, category groups, currency signs, blocks and emoji.
#include "zkcommon/core/char.h"

#include <algorithm>
#include <iterator>

namespace ZkCommonNS {

namespace {

const UChar32 kBullets[] = {
    0x2022, 0x2023, 0x2043, 0x204C, 0x204D, 0x2219, 0x25D8,
    0x25E6, 0x2619, 0x2765, 0x2767, 0x29BE, 0x29BF,
};

// Currency signs apart from the U+20A1 to U+20BD run; all known to every ICU, so that a sign
// added to the character database after the ICU in use still counts as defined.
const UChar32 kCurrencySigns[] = {
    0x24, 0xA2, 0xA3, 0xA4, 0xA5, 0xA838, 0xFDFC, 0xFE69, 0xFF04, 0xFFE0, 0xFFE1, 0xFFE5, 0xFFE6,
};

bool inRange(UChar32 c) noexcept {
    return c >= 0 && c <= 0x10FFFF;
}

} // namespace

UCharCategory ZkChar::getCategory(UChar32 c) noexcept {
    return inRange(c) ? static_cast<UCharCategory>(u_charType(c)) : U_UNASSIGNED;
}

UEastAsianWidth ZkChar::getEastAsianWidth(UChar32 c) noexcept {
    return static_cast<UEastAsianWidth>(getIntPropertyValue(c, UCHAR_EAST_ASIAN_WIDTH));
}

ULineBreak ZkChar::getLineBreak(UChar32 c) noexcept {
    return static_cast<ULineBreak>(getIntPropertyValue(c, UCHAR_LINE_BREAK));
}

int32_t ZkChar::getIntPropertyValue(UChar32 c, UProperty property) noexcept {
    return inRange(c) ? u_getIntPropertyValue(c, property) : 0;
}

bool ZkChar::isLetter(UChar32 c) noexcept {
    return inRange(c) && (U_GET_GC_MASK(c) & U_GC_L_MASK) != 0;
}

bool ZkChar::isNumber(UChar32 c) noexcept {
    return inRange(c) && (U_GET_GC_MASK(c) & U_GC_N_MASK) != 0;
}

bool ZkChar::isSymbol(UChar32 c) noexcept {
    return inRange(c) && (U_GET_GC_MASK(c) & U_GC_S_MASK) != 0;
}

bool ZkChar::isControl(UChar32 c) noexcept {
    return !inRange(c) || (U_GET_GC_MASK(c) & U_GC_C_MASK) != 0;
}

bool ZkChar::isGraphemeCluster(UChar32 c) noexcept {
    if (!inRange(c))
        return false;
    constexpr uint32_t kJoining =
        U_GC_MN_MASK | U_GC_ME_MASK | U_GC_MC_MASK | U_GC_CC_MASK | U_GC_CF_MASK;
    return (U_GET_GC_MASK(c) & kJoining) == 0;
}

bool ZkChar::isAlphabetic(UChar32 c) noexcept {
    return inRange(c) && u_isUAlphabetic(c);
}

bool ZkChar::isUndefined(UChar32 c) noexcept {
    if (!inRange(c))
        return true;
    return !u_isdefined(c) && !isCurrencySymbol(c);
}

bool ZkChar::isCurrencySymbol(UChar32 c) noexcept {
    if (c >= 0x20A1 && c <= 0x20BD)
        return true;
    return std::binary_search(std::begin(kCurrencySigns), std::end(kCurrencySigns), c);
}

bool ZkChar::isMathOperator(UChar32 c) noexcept {
    return (c >= 0x2200 && c <= 0x22FF) || (c >= 0x27C0 && c <= 0x27FF) ||
           (c >= 0x2980 && c <= 0x2AFF) || (c >= 0x1D400 && c <= 0x1D7FF);
}

bool ZkChar::isBullet(UChar32 c) noexcept {
    return std::binary_search(std::begin(kBullets), std::end(kBullets), c);
}

bool ZkChar::isEmoji(UChar32 c, bool all) noexcept {
    if (!all && !(c >= 0x1F000 && c <= 0x1FFFD))
        return false;
    return inRange(c) && u_hasBinaryProperty(c, UCHAR_EMOJI);
}

} // namespace ZkCommonNS
