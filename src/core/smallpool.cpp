// The small-block pool: size classes of 16 bytes up to 256, a free list per class and thread,
// and a shared reserve that thread lists spill into and refill from in batches.
#include "smallpool.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <vector>

namespace ZkCommonNS {
namespace detail {

#ifndef ZK_POOL_DISABLED
namespace pool {
#if defined(__GNUC__)
__thread ThreadLists t_lists __attribute__((tls_model("initial-exec")));
#else
thread_local ThreadLists t_lists;
#endif
} // namespace pool

namespace {
using namespace pool;

constexpr std::size_t kChunkSize = 64 * 1024;

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

void* pool::allocateSlow(std::size_t size) {
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

void pool::freeSlow(void* block, std::size_t size) noexcept {
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
        reserve().give(cls, list); // a full list goes to the reserve in one batch
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
