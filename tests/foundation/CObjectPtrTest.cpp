#include <Orlix/foundation/CObjectPtr.h>

#include <Orlix/foundation/CObject.h>

#include <gtest/gtest.h>

#include <utility>

using namespace Orlix;

namespace {

class CCounted : public CObject {
public:
    explicit CCounted(int& iDestroyed) : m_iDestroyed(iDestroyed) {}
    ~CCounted() override { ++m_iDestroyed; }
    int getSeven() const { return 7; }

private:
    int& m_iDestroyed;
};

// Owns the next object as a list would: releasing the one releases the other.
class CChained : public CCounted {
public:
    explicit CChained(int& iDestroyed) : CCounted(iDestroyed) {}
    CObjectPtr<CChained> m_ptrNext;
};

class CObjectPtrTest : public testing::Test {
protected:
    int m_iDestroyed = 0;
};

TEST_F(CObjectPtrTest, GivesItsReferenceBackWhenDeletedAsItsBase) {
    class CDerivedPtr : public CObjectPtr<CCounted> {
    public:
        explicit CDerivedPtr(CCounted* pObject) : CObjectPtr<CCounted>(pObject), m_ptrOwn(pObject) {}
        CObjectPtr<CCounted> m_ptrOwn;
    };
    CCounted* const pObject = new CCounted(m_iDestroyed);
    CObjectPtr<CCounted>* const pPtr = new CDerivedPtr(pObject);
    EXPECT_EQ(pObject->getRef(), 2);
    delete pPtr;
    EXPECT_EQ(m_iDestroyed, 1);
}

TEST_F(CObjectPtrTest, StartsEmpty) {
    const CObjectPtr<CObject> ptr;
    EXPECT_TRUE(ptr.isEmpty());
    EXPECT_FALSE(static_cast<bool>(ptr));
    EXPECT_EQ(ptr.getPtr(), nullptr);
    EXPECT_TRUE(ptr == nullptr);
}

TEST_F(CObjectPtrTest, TakesAReferenceAndGivesItBack) {
    CCounted* const pObject = new CCounted(m_iDestroyed);
    {
        const CObjectPtr<CCounted> ptr(pObject);
        EXPECT_EQ(pObject->getRef(), 1);
        EXPECT_FALSE(ptr.isEmpty());
        EXPECT_TRUE(static_cast<bool>(ptr));
        EXPECT_TRUE(ptr == pObject);
        EXPECT_FALSE(ptr != pObject);
        EXPECT_EQ(ptr->getSeven(), 7);
        EXPECT_EQ(&*ptr, pObject);
        EXPECT_EQ(m_iDestroyed, 0);
    }
    EXPECT_EQ(m_iDestroyed, 1);
}

TEST_F(CObjectPtrTest, TakesNullWithoutAReference) {
    const CObjectPtr<CCounted> ptr(nullptr);
    EXPECT_TRUE(ptr.isEmpty());
}

TEST_F(CObjectPtrTest, CopyTakesOneMoreReference) {
    const CObjectPtr<CCounted> ptr(new CCounted(m_iDestroyed));
    {
        const CObjectPtr<CCounted> ptrCopy(ptr);
        EXPECT_EQ(ptr->getRef(), 2);
        EXPECT_EQ(ptrCopy.getPtr(), ptr.getPtr());
    }
    EXPECT_EQ(ptr->getRef(), 1);
}

TEST_F(CObjectPtrTest, MoveKeepsTheCountAndEmptiesTheSource) {
    CObjectPtr<CCounted> ptr(new CCounted(m_iDestroyed));
    CObjectPtr<CCounted> ptrMoved(std::move(ptr));
    EXPECT_TRUE(ptr.isEmpty());
    EXPECT_EQ(ptrMoved->getRef(), 1);
    ptr = std::move(ptrMoved);
    EXPECT_TRUE(ptrMoved.isEmpty());
    EXPECT_EQ(ptr->getRef(), 1);
    EXPECT_EQ(m_iDestroyed, 0);
}

TEST_F(CObjectPtrTest, MoveAssignmentReleasesTheOldObject) {
    CObjectPtr<CCounted> ptr(new CCounted(m_iDestroyed));
    ptr = CObjectPtr<CCounted>(new CCounted(m_iDestroyed));
    EXPECT_EQ(m_iDestroyed, 1);
    EXPECT_EQ(ptr->getRef(), 1);
}

TEST_F(CObjectPtrTest, AssignmentOfItsOwnPointerKeepsTheCount) {
    CObjectPtr<CCounted> ptr(new CCounted(m_iDestroyed));
    CObjectPtr<CCounted>& ptrSelf = ptr;
    ptr = ptr.getPtr();
    EXPECT_EQ(ptr->getRef(), 1);
    ptr = ptrSelf;
    EXPECT_EQ(ptr->getRef(), 1);
    ptr = std::move(ptrSelf);
    EXPECT_EQ(ptr->getRef(), 1);
    EXPECT_EQ(m_iDestroyed, 0);
}

TEST_F(CObjectPtrTest, AssignmentReleasesTheOldAndReferencesTheNew) {
    CObjectPtr<CCounted> ptr(new CCounted(m_iDestroyed));
    CCounted* const pNew = new CCounted(m_iDestroyed);
    ptr = pNew;
    EXPECT_EQ(m_iDestroyed, 1);
    EXPECT_EQ(pNew->getRef(), 1);
    const CObjectPtr<CCounted> ptrOther(new CCounted(m_iDestroyed));
    ptr = ptrOther;
    EXPECT_EQ(m_iDestroyed, 2);
    EXPECT_EQ(ptrOther->getRef(), 2);
    ptr = nullptr;
    EXPECT_TRUE(ptr.isEmpty());
    EXPECT_EQ(ptrOther->getRef(), 1);
}

TEST_F(CObjectPtrTest, AssignmentOfWhatTheOldObjectOwnsKeepsItAlive) {
    CObjectPtr<CChained> ptr(new CChained(m_iDestroyed));
    CChained* const pNext = new CChained(m_iDestroyed);
    ptr->m_ptrNext = pNext;
    ptr = pNext;
    EXPECT_EQ(m_iDestroyed, 1);
    EXPECT_EQ(pNext->getRef(), 1);
}
} // namespace
