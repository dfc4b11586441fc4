// The object frame's out-of-line parts and the library-wide lock.
#include "zkcommon/core/object.h"

#include "zkcommon/core/lock.h"

namespace ZkCommonNS {

ZkObjectBase::~ZkObjectBase() = default;
ZkRCObject::~ZkRCObject() = default;

void ZkRCObject::DebugPrintInstanceCount(const char*) {}
void ZkRCObject::DebugPrintInstanceId(const char*, int) {}

namespace {
// Built at load time with the other statics and never destroyed, so that code running in later
// static destructors can still take it.
ZkLock& libraryLock() {
    static ZkLock* lock = new ZkLock;
    return *lock;
}
const bool s_libraryLockBuilt = (libraryLock(), true);
} // namespace

ZkMutex::ZkMutex() : m_lock(&libraryLock()) {
    lock();
}

// C++17 has no atomic_ref; the GCC and Clang builtins give a full-barrier operation on a plain int.
int ZkMutex::interlockedIncrement(int& value) {
    return __atomic_add_fetch(&value, 1, __ATOMIC_SEQ_CST);
}

int ZkMutex::interlockedDecrement(int& value) {
    return __atomic_sub_fetch(&value, 1, __ATOMIC_SEQ_CST);
}

} // namespace ZkCommonNS
