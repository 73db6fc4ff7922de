#include <Orlix/foundation/CObject.h>

#include <Orlix/foundation/CObjectPoolRef.h>

#include <gtest/gtest.h>

using namespace Orlix;

namespace {

class CCounted : public CObject {
public:
    explicit CCounted(int& iDestroyed) : m_iDestroyed(iDestroyed) {}
    ~CCounted() override { ++m_iDestroyed; }

private:
    int& m_iDestroyed;
};

class CPool : public CObjectPoolRef {
public:
    void recycleObject(CObject* pObject) override {
        ++m_iRecycled;
        m_pLast = pObject;
    }
    int m_iRecycled = 0;
    CObject* m_pLast = nullptr;
};

TEST(CObject, ReleaseOfAFreshObjectIsHarmless) {
    int iDestroyed = 0;
    CCounted object(iDestroyed);
    EXPECT_EQ(object.release(), 0);
    EXPECT_EQ(object.getRef(), 0);
    EXPECT_EQ(iDestroyed, 0);
}

TEST(CObject, LastReleaseDeletes) {
    int iDestroyed = 0;
    auto* const pObject = new CCounted(iDestroyed);
    pObject->addRef();
    pObject->addRef();
    EXPECT_EQ(pObject->getRef(), 2);
    EXPECT_EQ(pObject->release(), 1);
    EXPECT_EQ(iDestroyed, 0);
    EXPECT_EQ(pObject->release(), 0);
    EXPECT_EQ(iDestroyed, 1);
}

TEST(CObject, LastReleaseHandsThePooledObjectBackOnceAndAlive) {
    int iDestroyed = 0;
    CPool pool;
    CCounted object(iDestroyed);
    object.setObjectPool(&pool);
    object.addRef();
    EXPECT_EQ(object.release(), 0);
    EXPECT_EQ(object.release(), 0);
    EXPECT_EQ(pool.m_iRecycled, 1);
    EXPECT_EQ(pool.m_pLast, &object);
    EXPECT_EQ(iDestroyed, 0);
}

TEST(CObject, CopyStartsWithoutReferencesAndPool) {
    CPool pool;
    CObject source;
    source.addRef();
    source.setObjectPool(&pool);
    auto* const pCopy = new CObject(source);
    EXPECT_EQ(pCopy->getRef(), 0);
    CObject assigned;
    assigned.addRef();
    assigned = source;
    EXPECT_EQ(assigned.getRef(), 1);
    pCopy->addRef();
    EXPECT_EQ(pCopy->release(), 0) << "deleted, not handed to the source's pool";
    EXPECT_EQ(pool.m_iRecycled, 0);
}
} // namespace
