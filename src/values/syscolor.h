// The platform's system colours behind one call, so that another platform is an added file.
#ifndef ZKCOMMON_SRC_VALUES_SYSCOLOR_H
#define ZKCOMMON_SRC_VALUES_SYSCOLOR_H

#include <cstdint>

namespace ZkCommonNS {
namespace detail {

/// The number of system colour slots.
constexpr int kSystemColorCount = 25;

/// The colour of system slot `index` (0..24) as a word in blue-green-red order, the order in
/// which desktop platforms answer; 0 for a slot out of range.
uint32_t getSystemColorBGR(int index) noexcept;

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_VALUES_SYSCOLOR_H
