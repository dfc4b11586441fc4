// Copying a numeric or name value never allocates: checked with a counting global allocator.
#include "zkcommon/values/value.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>
#include <unicode/uclean.h>
#include <vector>

namespace {

std::atomic<long> s_allocations{0};

// ICU's objects allocate through ICU's own functions, not through operator new: count those too.
void* U_CALLCONV countingAlloc(const void*, size_t size) {
    s_allocations.fetch_add(1, std::memory_order_relaxed);
    return std::malloc(size ? size : 1);
}

void* U_CALLCONV countingRealloc(const void*, void* p, size_t size) {
    s_allocations.fetch_add(1, std::memory_order_relaxed);
    return std::realloc(p, size ? size : 1);
}

void U_CALLCONV plainFree(const void*, void* p) {
    std::free(p);
}

bool installIcuCounting() {
    UErrorCode status = U_ZERO_ERROR;
    u_setMemoryFunctions(nullptr, countingAlloc, countingRealloc, plainFree, &status);
    return U_SUCCESS(status);
}

const bool s_icuCounted = installIcuCounting();

} // namespace

// Replacing the global allocator counts every heap allocation of this test program. GCC sees
// only the inlined malloc and free behind new and delete and takes the pair for a mismatch; here
// they are the allocator itself, so that warning is wrong for this file.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
void* operator new(std::size_t size) {
    s_allocations.fetch_add(1, std::memory_order_relaxed);
    if (void* p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}

void operator delete(void* p) noexcept {
    std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}

using namespace ZkCommonNS;

namespace {

template <class Body> long countAllocations(Body body) {
    long before = s_allocations.load();
    body();
    return s_allocations.load() - before;
}

} // namespace

TEST(ZkValueMemory, NumericAndNameValuesNeverAllocate) {
    std::vector<ZkValue> sources = {
        ZkValue(),     ZkValue(42),           ZkValue(1.5f, UnitCm),  ZkValue(ZKN_auto),
        ZkValue(true), ZkValue(ZkLength(12)), ZkValue(0x41, UnitChar)};
    for (const ZkValue& source : sources) {
        SCOPED_TRACE(static_cast<int>(source.getValueType()));
        long count = countAllocations([&] {
            ZkValue copy(source);
            ZkValue assigned;
            assigned = copy;
            ZkValue moved(std::move(copy));
            assigned = std::move(moved);
            ZkNamedValue named(assigned, ZkName(ZKN_width));
            ZkValue sum = assigned + assigned;
            bool same = sum == assigned;
            (void)same;
        });
        EXPECT_EQ(count, 0);
    }
}

TEST(ZkValueMemory, ArithmeticOnLengthsNeverAllocates) {
    ZkValue a(2, UnitCm);
    ZkValue b(1, UnitMm);
    long count = countAllocations([&] {
        for (int i = 0; i < 1000; ++i) {
            ZkValue r = a + b;
            r *= ZkValue(2);
            r /= ZkValue(50, UnitPercent);
            ZkLength length = r.getLengthValue();
            (void)length;
        }
    });
    EXPECT_EQ(count, 0);
}

TEST(ZkValueMemory, StringAndArrayCopiesTakeNothingFromTheHeap) {
    ASSERT_TRUE(s_icuCounted) << "ICU refused the counting allocator";
    // A copied string shares its characters with the original, which may change afterwards.
    ZkValue text(UnicodeString(u"a string long enough to live on the heap, not in the object"));
    ZkValue kept;
    EXPECT_EQ(countAllocations([&] { kept = text; }), 0);
    text = ZkValue(UnicodeString(u"changed"));
    EXPECT_EQ(kept.toString(),
              UnicodeString(u"a string long enough to live on the heap, not in the object"));
    ZkValue list;
    list.addItem(ZkValue(1));
    list.addItem(ZkValue(2));
    EXPECT_EQ(countAllocations([&] { ZkValue copy(list); }), 0);
}
