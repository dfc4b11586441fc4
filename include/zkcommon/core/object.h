// The object frame: type numbers without RTTI, the atomic reference count and ZkPtr.
#ifndef ZKCOMMON_CORE_OBJECT_H
#define ZKCOMMON_CORE_OBJECT_H

#include "zkcommon/core/export.h"
#include "zkcommon/core/typeids.h"
#include "zkcommon/core/unicode.h"

#include <atomic>
#include <utility>

namespace ZkCommonNS {

/// Declares the type number, isA chain and type name of a class whose direct base is `Base`.
/// isA compares with this class's number and then asks the base statically, so the chain is
/// resolved at compile time and walks no list at run time.
// clang-format off
#define ZK_DECLARE_TYPE(Class, Base, ID, Name)                                                     \
public:                                                                                            \
    static unsigned int getStaticTypeID() { return ID; }                                           \
    unsigned int getTypeID() const override { return ID; }                                         \
    bool isA(unsigned int id) const override { return id == (ID) || Base::isA(id); }               \
    UnicodeString getTypeName() const override { return UnicodeString(true, u##Name, -1); }
// clang-format on

/// The abstract root of every run-time object of the library.
class ZKCOMMON_API ZkObjectBase {
public:
    ZkObjectBase() = default;
    ZkObjectBase(const ZkObjectBase&) {}
    ZkObjectBase& operator=(const ZkObjectBase&) { return *this; }
    virtual ~ZkObjectBase();
    virtual unsigned int getTypeID() const = 0;
    virtual bool isA(unsigned int id) const { return id == ZkTypeID::kObjectBase; }
    virtual UnicodeString getTypeName() const = 0;
    static unsigned int getStaticTypeID() { return ZkTypeID::kObjectBase; }
};

/// An object that lives by references. The count starts at 0: a fresh object is owned by nobody
/// until the first ZkPtr or addRef, and one that never met either is its creator's to delete.
class ZKCOMMON_API ZkRCObject : public ZkObjectBase {
    ZK_DECLARE_TYPE(ZkRCObject, ZkObjectBase, ZkTypeID::kRCObject, "ZkRCObject")

public:
    ZkRCObject() : m_refCount(0) {}
    ZkRCObject(const ZkRCObject&) : ZkObjectBase(), m_refCount(0) {}
    ZkRCObject& operator=(const ZkRCObject&) { return *this; }
    ~ZkRCObject() override;

    /// Atomic increment; the new count.
    int addRef() const { return m_refCount.fetch_add(1, std::memory_order_acq_rel) + 1; }
    /// Atomic decrement. Destroys the object when the count before the decrement was below 2,
    /// so a release on a fresh object (count 0) ends it too. Returns the count before minus 1.
    int release() const {
        int before = m_refCount.fetch_sub(1, std::memory_order_acq_rel);
        if (before < 2)
            delete this;
        return before - 1;
    }
    /// Atomic decrement that never destroys: for an owner that gives the object up.
    int removeRef() const { return m_refCount.fetch_sub(1, std::memory_order_acq_rel) - 1; }
    /// A plain read of the count.
    int getRefCount() const { return m_refCount.load(std::memory_order_relaxed); }

    /// Hooks for instance tracing; they print nothing in this build.
    static void DebugPrintInstanceCount(const char* label);
    static void DebugPrintInstanceId(const char* label, int id);

protected:
    void clearRefCount() { m_refCount.store(0, std::memory_order_relaxed); }
    /// Plain, non-atomic decrement for single-owner moments; never destroys.
    int decrementRefCount() {
        int value = m_refCount.load(std::memory_order_relaxed) - 1;
        m_refCount.store(value, std::memory_order_relaxed);
        return value;
    }

private:
    mutable std::atomic<int> m_refCount;
};

/// Owning smart pointer over a ZkRCObject; null is allowed.
template <class T> class ZkPtr {
public:
    ZkPtr() noexcept : m_ptr(nullptr) {}
    ZkPtr(std::nullptr_t) noexcept : m_ptr(nullptr) {}
    ZkPtr(T* ptr) : m_ptr(ptr) { acquire(); }
    ZkPtr(const ZkPtr& other) : m_ptr(other.m_ptr) { acquire(); }
    ZkPtr(ZkPtr&& other) noexcept : m_ptr(other.m_ptr) { other.m_ptr = nullptr; }
    template <class U> ZkPtr(const ZkPtr<U>& other) : m_ptr(other.get()) { acquire(); }
    ~ZkPtr() { drop(); }

    ZkPtr& operator=(const ZkPtr& other) {
        reset(other.m_ptr);
        return *this;
    }
    ZkPtr& operator=(ZkPtr&& other) noexcept {
        if (this != &other) {
            T* old = m_ptr;
            m_ptr = other.m_ptr;
            other.m_ptr = nullptr;
            if (old)
                old->release();
        }
        return *this;
    }
    ZkPtr& operator=(T* ptr) {
        reset(ptr);
        return *this;
    }
    /// Points at `ptr`; the new reference is taken before the old one is dropped, so
    /// resetting to the same object is safe.
    void reset(T* ptr = nullptr) {
        if (ptr)
            ptr->addRef();
        T* old = m_ptr;
        m_ptr = ptr;
        if (old)
            old->release();
    }
    /// Gives up the pointer without touching the count.
    T* detach() noexcept {
        T* ptr = m_ptr;
        m_ptr = nullptr;
        return ptr;
    }

    T* get() const noexcept { return m_ptr; }
    T* operator->() const noexcept { return m_ptr; }
    T& operator*() const noexcept { return *m_ptr; }
    operator T*() const noexcept { return m_ptr; }
    explicit operator bool() const noexcept { return m_ptr != nullptr; }
    bool isNull() const noexcept { return m_ptr == nullptr; }

private:
    void acquire() {
        if (m_ptr)
            m_ptr->addRef();
    }
    void drop() {
        if (m_ptr)
            m_ptr->release();
    }
    T* m_ptr;
};

} // namespace ZkCommonNS

#endif // ZKCOMMON_CORE_OBJECT_H
