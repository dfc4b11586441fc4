// Standard exceptions reach callers as ZkError: interning when memory runs out, checked with a
// global allocator that fails on demand.
#include "zkcommon/core/error.h"
#include "zkcommon/core/name.h"

#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {
std::atomic<bool> s_failAllocations{false};
} // namespace

// GCC sees only the inlined malloc and free behind new and delete and takes the pair for a
// mismatch; here they are the allocator itself.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif
void* operator new(std::size_t size) {
    if (s_failAllocations.load(std::memory_order_relaxed))
        throw std::bad_alloc();
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

TEST(StandardExceptions, InterningOutOfMemoryIsZkError) {
    // The table grows in blocks: among a few dozen fresh names one needs memory.
    unsigned short code = 0;
    UnicodeString message;
    int failedAt = -1;
    for (int i = 0; i < 64 && failedAt < 0; ++i) {
        const UnicodeString text =
            UnicodeString(u"fresh-name-") + UnicodeString(char16_t(u'A' + i));
        s_failAllocations = true;
        try {
            ZkName fresh(text);
        } catch (const ZkError& e) {
            code = e.getErrorCode();
            message = e.getRawMessage();
            failedAt = i;
        } catch (...) {
            code = 0xFFFF;
            failedAt = i;
        }
        s_failAllocations = false;
    }
    ASSERT_GE(failedAt, 0);
    EXPECT_EQ(code, ZK_ERROR_OUT_OF_MEMORY);
    EXPECT_EQ(message, UnicodeString(u"SYSTEM ERROR: Out of memory."));
    // The table is whole afterwards: the name interns now.
    const UnicodeString text =
        UnicodeString(u"fresh-name-") + UnicodeString(char16_t(u'A' + failedAt));
    EXPECT_EQ(ZkName(text).toString(), text);
}

TEST(StandardExceptions, LastErrorMessageIsEmptyForUnknownNumbers) {
    const UnicodeString known = ZkError::getLastErrorMessage(2); // ENOENT: trimmed system text
    EXPECT_FALSE(known.isEmpty());
    EXPECT_NE(known.charAt(known.length() - 1), u' ');
    EXPECT_TRUE(ZkError::getLastErrorMessage(99999).isEmpty());
    EXPECT_TRUE(ZkError::getLastErrorMessage(0xFFFFFFFFul).isEmpty());
}
