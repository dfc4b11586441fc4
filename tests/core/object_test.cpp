// Reference counting, ZkPtr ownership, type numbers and the library locks.
#include <gtest/gtest.h>
#include <thread>
#include <zkcommon/core/lock.h>
#include <zkcommon/core/name.h>
#include <zkcommon/core/object.h>

using namespace ZkCommonNS;

namespace {

class Counted : public ZkRCObject {
    ZK_DECLARE_TYPE(Counted, ZkRCObject, 0x12345678u, "Counted")
public:
    explicit Counted(int* deaths) : m_deaths(deaths) {}
    ~Counted() override { ++*m_deaths; }
    int decrement() { return decrementRefCount(); }
    void clear() { clearRefCount(); }

private:
    int* m_deaths;
};

} // namespace

TEST(RCObject, CountStartsAtZeroAndReleaseEnds) {
    int deaths = 0;
    Counted* object = new Counted(&deaths);
    EXPECT_EQ(object->getRefCount(), 0);
    EXPECT_EQ(object->addRef(), 1);
    EXPECT_EQ(object->addRef(), 2);
    EXPECT_EQ(object->removeRef(), 1); // never destroys
    EXPECT_EQ(object->release(), 0);   // the count before was 1: destroyed
    EXPECT_EQ(deaths, 1);

    // A release on a fresh object (count 0) ends it too.
    Counted* fresh = new Counted(&deaths);
    EXPECT_EQ(fresh->release(), -1);
    EXPECT_EQ(deaths, 2);

    Counted plain(&deaths);
    plain.addRef();
    plain.addRef();
    EXPECT_EQ(plain.decrement(), 1);
    plain.clear();
    EXPECT_EQ(plain.getRefCount(), 0);
}

TEST(Ptr, OwnsOneReference) {
    int deaths = 0;
    {
        ZkPtr<Counted> a(new Counted(&deaths));
        EXPECT_EQ(a->getRefCount(), 1);
        ZkPtr<Counted> b = a;
        EXPECT_EQ(a->getRefCount(), 2);
        ZkPtr<ZkRCObject> base = a;
        EXPECT_EQ(a->getRefCount(), 3);
        b = nullptr;
        base.reset();
        EXPECT_EQ(a->getRefCount(), 1);
        a = a.get(); // self-assignment keeps the object alive
        EXPECT_EQ(deaths, 0);
        ZkPtr<Counted> moved(std::move(a));
        EXPECT_TRUE(a.isNull());
        EXPECT_EQ(moved->getRefCount(), 1);
    }
    EXPECT_EQ(deaths, 1);
}

TEST(TypeID, IsAFollowsTheChain) {
    int deaths = 0;
    Counted object(&deaths);
    EXPECT_TRUE(object.isA(Counted::getStaticTypeID()));
    EXPECT_TRUE(object.isA(ZkTypeID::kRCObject));
    EXPECT_TRUE(object.isA(ZkTypeID::kObjectBase));
    EXPECT_FALSE(object.isA(ZkTypeID::kNameTable));
    EXPECT_EQ(object.getTypeName(), u"Counted");
}

TEST(Lock, RecursiveAndShared) {
    ZkLock lock;
    {
        ZkMutex outer(lock);
        ZkMutex inner(lock); // the same thread may re-enter
        ZkMutex library;
        ZkMutex libraryAgain;
    }
    ZkMutex inert(static_cast<ZkLock*>(nullptr));

    int counter = 0;
    auto work = [&] {
        for (int i = 0; i < 100000; ++i)
            ZkMutex::interlockedIncrement(counter);
        for (int i = 0; i < 50000; ++i)
            ZkMutex::interlockedDecrement(counter);
    };
    std::thread a(work), b(work);
    a.join();
    b.join();
    EXPECT_EQ(counter, 100000);
}
