// The small-block pool: size classes of 16 bytes up to 256, a free list per class and thread,
// and a shared reserve that thread lists spill into and refill from in batches.
#include "smallpool.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <vector>

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

#ifndef ZK_POOL_DISABLED
namespace {

constexpr std::size_t kGranule = 16;
constexpr std::size_t kLargest = 256;
constexpr int kClassCount = int(kLargest / kGranule);
constexpr std::size_t kChunkSize = 64 * 1024;
// A thread keeps at most this many free blocks of a class; past it the whole list goes to the
// reserve as one batch, so that a thread that only frees (a consumer of another thread's
// trees) doesn't hoard memory, and a thread that runs dry takes a batch back in one step.
constexpr uint32_t kThreadLimit = 2048;

struct FreeBlock {
    FreeBlock* next;
};

// Trivial on purpose, without member initialisers: a thread_local of a type with a non-trivial
// constructor is initialised lazily, behind a guard checked through the dynamic linker on every
// access. Locals are value-initialised instead.
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

int classOf(std::size_t size) {
    return int((size + kGranule - 1) / kGranule) - 1;
}

// The reserve shared by all threads: whole free lists, handed over without walking them. It is
// never destroyed: blocks may be freed by static destructors after every thread cache is gone.
struct Reserve {
    std::mutex lock;
    std::vector<FreeList> batches[kClassCount];
    std::vector<std::pair<uintptr_t, int>> chunks; // start of each chunk and its class, sorted

    // Fills the empty `out` with a batch of class `cls`, carving a new chunk when the reserve
    // has none. Throws std::bad_alloc.
    void take(int cls, FreeList& out) {
        std::lock_guard<std::mutex> guard(lock);
        std::vector<FreeList>& stock = batches[cls];
        if (!stock.empty()) {
            out = stock.back();
            stock.pop_back();
            return;
        }
        const std::size_t blockSize = std::size_t(cls + 1) * kGranule;
        char* chunk = static_cast<char*>(std::malloc(kChunkSize));
        if (!chunk)
            throw std::bad_alloc();
        const uintptr_t start = reinterpret_cast<uintptr_t>(chunk);
        try {
            chunks.insert(std::upper_bound(chunks.begin(), chunks.end(), std::make_pair(start, 0)),
                          std::make_pair(start, cls));
            stock.reserve(stock.size() + 1);
        } catch (...) {
            std::free(chunk);
            throw;
        }
        // Carved from the end, so that the list hands blocks out in address order.
        for (std::size_t offset = (kChunkSize / blockSize) * blockSize; offset >= blockSize;
             offset -= blockSize)
            out.push(reinterpret_cast<FreeBlock*>(chunk + offset - blockSize));
    }

    // Takes the whole of `from`, which is left empty. A batch that can't be stored for lack of
    // memory stays with the caller.
    void give(int cls, FreeList& from) noexcept {
        if (!from.head)
            return;
        std::lock_guard<std::mutex> guard(lock);
        try {
            batches[cls].push_back(from);
        } catch (...) {
            return;
        }
        from = FreeList();
    }

    // The class of a pool block, or -1 for a block of the global operator new.
    int findClass(const void* block) {
        std::lock_guard<std::mutex> guard(lock);
        const uintptr_t address = reinterpret_cast<uintptr_t>(block);
        auto after =
            std::upper_bound(chunks.begin(), chunks.end(), std::make_pair(address, kClassCount));
        if (after == chunks.begin())
            return -1;
        --after;
        return address - after->first < kChunkSize ? after->second : -1;
    }
};

Reserve& reserve() {
    static Reserve* s_reserve = new Reserve();
    return *s_reserve;
}

// The lists of a thread. Trivial to construct and destroy, so that reaching them costs no
// initialisation check, and they can be read during the thread's exit.
struct ThreadLists {
    FreeList lists[kClassCount];
    bool registered; ///< the owner below exists and will hand the lists back
    bool gone;       ///< the owner has run: the thread is on the locked path from now on
};

// The lists are reached on every node's birth and death: in a shared library the default TLS
// model costs a call to the dynamic linker for each access, the initial-exec model one load.
// The block is small enough for the static TLS reserve of a library loaded at run time.
#if defined(__GNUC__)
__attribute__((tls_model("initial-exec")))
#endif
thread_local ThreadLists t_lists;

// Made on the thread's first refill; at the thread's exit it hands the lists to the reserve.
struct ThreadListsOwner {
    void touch() noexcept {}
    ~ThreadListsOwner() {
        t_lists.gone = true;
        for (int cls = 0; cls < kClassCount; ++cls)
            reserve().give(cls, t_lists.lists[cls]);
    }
};

thread_local ThreadListsOwner t_listsOwner;

} // namespace
#endif

void* smallAllocate(std::size_t size) {
#ifdef ZK_POOL_DISABLED
    return ::operator new(size);
#else
    if (size == 0 || size > kLargest)
        return ::operator new(size);
    const int cls = classOf(size);
    ThreadLists& local = t_lists;
    if (local.gone) {
        // A thread past its exit: one block from a batch, the rest goes back.
        FreeList batch{};
        reserve().take(cls, batch);
        FreeBlock* block = batch.pop();
        reserve().give(cls, batch);
        return block;
    }
    FreeList& list = local.lists[cls];
    if (!list.head) {
        if (!local.registered) {
            t_listsOwner.touch();
            local.registered = true;
        }
        reserve().take(cls, list);
    }
    return list.pop();
#endif
}

void smallFree(void* block, std::size_t size) noexcept {
    if (!block)
        return;
#ifdef ZK_POOL_DISABLED
    (void)size;
    ::operator delete(block);
#else
    if (size == 0 || size > kLargest) {
        ::operator delete(block);
        return;
    }
    const int cls = classOf(size);
    ThreadLists& local = t_lists;
    if (local.gone || !local.registered) {
        // A thread that never took a block, or one past its exit, gives straight back.
        FreeList one{};
        one.push(static_cast<FreeBlock*>(block));
        reserve().give(cls, one);
        return;
    }
    FreeList& list = local.lists[cls];
    list.push(static_cast<FreeBlock*>(block));
    if (list.count >= kThreadLimit)
        reserve().give(cls, list);
#endif
}

void smallFreeUnsized(void* block) noexcept {
    if (!block)
        return;
#ifdef ZK_POOL_DISABLED
    ::operator delete(block);
#else
    const int cls = reserve().findClass(block);
    if (cls < 0)
        ::operator delete(block);
    else
        smallFree(block, std::size_t(cls + 1) * kGranule);
#endif
}

} // namespace detail
} // namespace ZkCommonNS
