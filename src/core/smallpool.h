// The pool of small fixed-size blocks behind tree nodes: per-thread free lists, no lock on the
// way in or out, shared chunks that are reused and never handed back to the system. Taking and
// giving a block is inline: a pop or push on the calling thread's list.
#ifndef ZKCOMMON_SRC_CORE_SMALLPOOL_H
#define ZKCOMMON_SRC_CORE_SMALLPOOL_H

#include <cstddef>
#include <cstdint>

// Under AddressSanitizer every block comes from the global operator new, so that the sanitizer
// sees each node's life.
#if defined(__SANITIZE_ADDRESS__)
#define ZK_POOL_DISABLED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZK_POOL_DISABLED 1
#endif
#endif

namespace ZkCommonNS {
namespace detail {

/// Asks for the cache line at `address` ahead of a write; any address, null included, is safe.
inline void prefetch(const void* address) noexcept {
#if defined(__GNUC__)
    __builtin_prefetch(address, /*rw=*/1);
#else
    (void)address;
#endif
}

namespace pool {

constexpr std::size_t kGranule = 16;
constexpr std::size_t kLargest = 256;
constexpr int kClassCount = int(kLargest / kGranule);
// A thread keeps at most this many free blocks of a class; past it the whole list goes to the
// shared reserve as one batch, so that a thread that only frees (a consumer of another thread's
// trees) doesn't hoard memory, and a thread that runs dry takes a batch back in one step.
constexpr uint32_t kThreadLimit = 2048;

struct FreeBlock {
    FreeBlock* next;
};

// Trivial on purpose, without member initialisers: a thread_local of a type with a non-trivial
// constructor is initialised lazily, behind a guard checked on every access. Locals are
// value-initialised instead.
struct FreeList {
    FreeBlock* head;
    uint32_t count;

    void push(FreeBlock* block) noexcept {
        block->next = head;
        head = block;
        ++count;
    }
    FreeBlock* pop() noexcept {
        FreeBlock* block = head;
        if (block) {
            head = block->next;
            --count;
            // The next pop reads the new head's link: a freed tree leaves its blocks cold and
            // scattered, and without this each node's birth would wait for memory.
            prefetch(head);
        }
        return block;
    }
};

// The lists of a thread. Trivial to construct and destroy, so that reaching them costs no
// initialisation check, and they can be read during the thread's exit.
struct ThreadLists {
    FreeList lists[kClassCount];
    bool registered; ///< the owner will hand the lists back at the thread's exit
    bool gone;       ///< the owner has run: the thread is on the locked path from now on
};

// The lists are reached on every node's birth and death: in a shared library the default TLS
// model costs a call to the dynamic linker for each access, the initial-exec model one load.
// The block is small enough for the static TLS reserve of a library loaded at run time. With
// `__thread` the compiler knows there is no initialiser to run, so no access checks for one.
#if defined(__GNUC__)
extern __thread ThreadLists t_lists __attribute__((tls_model("initial-exec")));
#else
extern thread_local ThreadLists t_lists;
#endif

inline int classOf(std::size_t size) noexcept {
    return int((size + kGranule - 1) / kGranule) - 1;
}

// The paths that leave the thread's own lists.
void* allocateSlow(std::size_t size);
void freeSlow(void* block, std::size_t size) noexcept;

} // namespace pool

/// A block of at least `size` bytes, aligned for any object. Sizes above the pool's largest
/// class come from the global operator new. Throws std::bad_alloc.
inline void* smallAllocate(std::size_t size) {
#ifndef ZK_POOL_DISABLED
    if (size - 1 < pool::kLargest) {
        pool::FreeList& list = pool::t_lists.lists[pool::classOf(size)];
        if (list.head)
            return list.pop();
    }
#endif
    return pool::allocateSlow(size);
}

/// Gives back a block of smallAllocate with the same `size`; null is ignored. Any thread may
/// give back a block another thread took.
inline void smallFree(void* block, std::size_t size) noexcept {
#ifndef ZK_POOL_DISABLED
    if (block && size - 1 < pool::kLargest) {
        pool::ThreadLists& local = pool::t_lists;
        pool::FreeList& list = local.lists[pool::classOf(size)];
        if (local.registered && !local.gone && list.count + 1 < pool::kThreadLimit) {
            list.push(static_cast<pool::FreeBlock*>(block));
            return;
        }
    }
#endif
    pool::freeSlow(block, size);
}

/// The same when the size is not known (a constructor that threw inside a placement new); it
/// looks the block up under the pool's lock.
void smallFreeUnsized(void* block) noexcept;

} // namespace detail
} // namespace ZkCommonNS

#endif // ZKCOMMON_SRC_CORE_SMALLPOOL_H
