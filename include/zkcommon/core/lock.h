// ZkLock, the library's recursive lock, and ZkMutex, its scoped guard.
#ifndef ZKCOMMON_CORE_LOCK_H
#define ZKCOMMON_CORE_LOCK_H

#include "zkcommon/core/export.h"

#include <mutex>

namespace ZkCommonNS {

/// A recursive lock: the same thread may take it again.
class ZKCOMMON_API ZkLock {
public:
    ZkLock() = default;
    ZkLock(const ZkLock&) = delete;
    ZkLock& operator=(const ZkLock&) = delete;

    void lock() { m_mutex.lock(); }
    void unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// Scoped guard over a ZkLock. The default constructor takes the one library-wide lock; a guard
/// over a null lock is legal and does nothing.
class ZKCOMMON_API ZkMutex {
public:
    ZkMutex();
    explicit ZkMutex(ZkLock& lock) : m_lock(&lock) { this->lock(); }
    explicit ZkMutex(ZkLock* lock) : m_lock(lock) { this->lock(); }
    ~ZkMutex() { unlock(); }
    ZkMutex(const ZkMutex&) = delete;
    ZkMutex& operator=(const ZkMutex&) = delete;

    /// Atomic increment of `value`; the new value.
    static int interlockedIncrement(int& value);
    /// Atomic decrement of `value`; the new value.
    static int interlockedDecrement(int& value);

private:
    void lock() {
        if (m_lock)
            m_lock->lock();
    }
    void unlock() {
        if (m_lock)
            m_lock->unlock();
    }
    ZkLock* m_lock;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_LOCK_H
