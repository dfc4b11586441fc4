// The pool of small fixed-size blocks behind tree nodes: per-thread free lists, no lock on the
// way in or out, shared chunks that are reused and never handed back to the system.
#ifndef ZKCOMMON_SRC_CORE_SMALLPOOL_H
#define ZKCOMMON_SRC_CORE_SMALLPOOL_H

#include "zkcommon/core/export.h"

#include <cstddef>

namespace ZkCommonNS {
namespace detail {

/// A block of at least `size` bytes, aligned for any object. Sizes above the pool's largest
/// class come from the global operator new. Throws std::bad_alloc.
ZKCOMMON_API void* smallAllocate(std::size_t size);
/// Gives back a block of smallAllocate with the same `size`; null is ignored. Any thread may
/// give back a block another thread took.
ZKCOMMON_API void smallFree(void* block, std::size_t size) noexcept;
/// The same when the size is not known (a constructor that threw inside a placement new); it
/// looks the block up under the pool's lock.
ZKCOMMON_API void smallFreeUnsized(void* block) noexcept;

/// Asks for the cache line at `address` ahead of a write; any address, null included, is safe.
inline void prefetch(const void* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address, /*rw=*/1);
#else
    (void)address;
#endif
}

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CORE_SMALLPOOL_H
