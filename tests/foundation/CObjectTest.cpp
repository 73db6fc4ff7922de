#include <Orlix/foundation/CObject.h>

#include <Orlix/foundation/CObjectPoolRef.h>

#include "support/ChildProcess.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstring>

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

TEST(CObject, ReleaseOfANegativeCountGivesItBackUntouched) {
    class COverReleased : public CObject {
    public:
        COverReleased() { m_iRef = -3; }
    } object;
    EXPECT_EQ(object.release(), -3);
    EXPECT_EQ(object.getRef(), -3);
}

TEST(CObject, ResetChangesNothing) {
    CPool pool;
    CObject object;
    object.addRef();
    object.setObjectPool(&pool);
    object.reset();
    EXPECT_EQ(object.getRef(), 1);
    EXPECT_EQ(object.release(), 0);
    EXPECT_EQ(pool.m_iRecycled, 1);
}

TEST(CObject, PoolTakenAwayNoLongerGetsTheObject) {
    int iDestroyed = 0;
    CPool pool;
    auto* const pObject = new CCounted(iDestroyed);
    pObject->setObjectPool(&pool);
    pObject->setObjectPool(nullptr);
    pObject->addRef();
    EXPECT_EQ(pObject->release(), 0);
    EXPECT_EQ(pool.m_iRecycled, 0);
    EXPECT_EQ(iDestroyed, 1);
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

class CHeapObject {
    ORLIX_HEAP_CLASS(L"COuter::CHeapObject")

public:
    CHeapObject() { ++s_iBuilt; }
    ~CHeapObject() { --s_iBuilt; }
    static int s_iBuilt;

private:
    [[maybe_unused]] unsigned char m_aryBytes[60] = {};
};
int CHeapObject::s_iBuilt = 0;

// The owner in front of a block: null on the system heap, a pool otherwise.
const void* getOwner(const void* pBlock) {
    const void* pOwner = nullptr;
    std::memcpy(&pOwner, static_cast<const unsigned char*>(pBlock) - 16, sizeof(pOwner));
    return pOwner;
}

TEST(CObjectHeap, SingleObjectsComeFromThePoolsAndGoBack) {
    auto* const pObject = new CHeapObject;
    EXPECT_NE(getOwner(pObject), nullptr);
    EXPECT_EQ(CHeapObject::s_iBuilt, 1);
    delete pObject;
    EXPECT_EQ(CHeapObject::s_iBuilt, 0);
    void* const pAgain = CMemory::malloc(sizeof(CHeapObject), 0);
    EXPECT_EQ(pAgain, pObject);
    CMemory::free(pAgain);
}

TEST(CObjectHeap, ArraysTakeTheSameRoute) {
    void* const pBlock = CHeapObject::operator new[](100);
    EXPECT_NE(getOwner(pBlock), nullptr);
    CHeapObject::operator delete[](pBlock);
    void* const pAgain = CMemory::malloc(100, 0);
    EXPECT_EQ(pAgain, pBlock);
    CMemory::free(pAgain);
    CHeapObject* const aryObject = new CHeapObject[3];
    EXPECT_EQ(CHeapObject::s_iBuilt, 3);
    delete[] aryObject;
    EXPECT_EQ(CHeapObject::s_iBuilt, 0);
}

TEST(CObjectHeap, WithoutMemoryNoConstructorRuns) {
    volatile std::size_t uiCount = 0x10000000; // 16 GB of objects, beyond what the route can count
    CHeapObject* const aryObject = new CHeapObject[uiCount];
    EXPECT_EQ(aryObject, nullptr);
    EXPECT_EQ(CHeapObject::s_iBuilt, 0);
    EXPECT_EQ(CHeapObject::operator new(UINT_MAX), nullptr);
}

TEST(CObjectHeap, DeletesNullInSilence) {
    const OrlixTest::tagChildResult result = OrlixTest::runInChild([] {
        CHeapObject::operator delete(nullptr);
        CHeapObject::operator delete[](nullptr);
        return 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}

TEST(CObjectHeap, DeletionThroughTheRootReachesThePool) {
    int iDestroyed = 0;
    CObject* const pObject = new CCounted(iDestroyed); // names no class of its own, so the root's operators serve
    EXPECT_NE(getOwner(pObject), nullptr);
    delete pObject;
    EXPECT_EQ(iDestroyed, 1);
    void* const pAgain = CMemory::malloc(sizeof(CCounted), 0);
    EXPECT_EQ(pAgain, pObject);
    CMemory::free(pAgain);
}
} // namespace
