#include <Orlix/foundation/CObjectList.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

using namespace Orlix;

namespace {

using VecInt = std::vector<int>;

struct CItem : CObject {
    CItem(VecInt& vecDeleted, int iNumber) : m_vecDeleted(vecDeleted), m_iNumber(iNumber) {}
    ~CItem() override { m_vecDeleted.push_back(m_iNumber); }
    VecInt& m_vecDeleted;
    int m_iNumber;
};

class COpenList : public CObjectList<CItem> {
public:
    using CObjectList<CItem>::m_pCursor;
    using CObjectList<CItem>::m_pHead;
    using CObjectList<CItem>::m_pTail;

    bool hasNoLinks() const { return !m_pHead && !m_pTail && !m_pCursor; }
};

class CObjectListTest : public ::testing::Test {
protected:
    void fill(int iCount) {
        for (int i = 0; i < iCount; ++i)
            m_lst.add(new CItem(m_vecDeleted, i));
    }
    VecInt read() {
        VecInt vec;
        m_lst.toHead();
        while (const CItem* pItem = m_lst.next())
            vec.push_back(pItem->m_iNumber);
        return vec;
    }
    VecInt m_vecDeleted;
    COpenList m_lst;
};

TEST_F(CObjectListTest, DeletesFromTheHeadOnWithoutLookingAtReferences) {
    EXPECT_TRUE(m_lst.isOwn());
    fill(3);
    m_lst.add(nullptr);
    m_lst.getAt(1)->addRef();
    m_lst.clear();
    EXPECT_EQ(m_vecDeleted, (VecInt{0, 1, 2}));
    EXPECT_EQ(m_lst.getSize(), 0u);
    EXPECT_EQ(m_lst.getAt(0), nullptr);
}

TEST_F(CObjectListTest, FirstElementIsHeadTailAndCursor) {
    EXPECT_TRUE(m_lst.hasNoLinks());
    EXPECT_EQ(m_lst.getSize(), 0u);
    fill(1);
    ASSERT_NE(m_lst.m_pHead, nullptr);
    EXPECT_EQ(m_lst.m_pTail, m_lst.m_pHead);
    EXPECT_EQ(m_lst.m_pCursor, m_lst.m_pHead);
    fill(1);
    EXPECT_EQ(m_lst.m_pCursor, m_lst.m_pHead);
    EXPECT_EQ(m_lst.m_pHead->pPrev, nullptr);
    EXPECT_EQ(m_lst.m_pHead->pNext, m_lst.m_pTail);
    EXPECT_EQ(m_lst.m_pTail->pPrev, m_lst.m_pHead);
    EXPECT_EQ(m_lst.m_pTail->pNext, nullptr);
}

TEST_F(CObjectListTest, LosesAllLinksWithItsLastElement) {
    fill(1);
    m_lst.remove(m_lst.getAt(0));
    EXPECT_TRUE(m_lst.hasNoLinks());
    fill(1);
    m_lst.removeAt(0);
    EXPECT_TRUE(m_lst.hasNoLinks());
    fill(1);
    delete m_lst.removeHead();
    EXPECT_TRUE(m_lst.hasNoLinks());
    fill(3);
    m_lst.clear();
    EXPECT_TRUE(m_lst.hasNoLinks());
    EXPECT_EQ(m_lst.getSize(), 0u);
}

TEST_F(CObjectListTest, EndsKeepNoLinkToARemovedNeighbour) {
    fill(4);
    m_lst.removeAt(0);
    EXPECT_EQ(m_lst.m_pHead->pPrev, nullptr);
    m_lst.removeAt(2);
    EXPECT_EQ(m_lst.m_pTail->pNext, nullptr);
    fill(1);
    delete m_lst.removeHead();
    EXPECT_EQ(m_lst.m_pHead->pPrev, nullptr);
}

TEST_F(CObjectListTest, GetAtTheMiddleComesFromTheTail) {
    fill(6);
    auto* const pThird = m_lst.m_pHead->pNext->pNext;
    m_lst.m_pHead->pNext->pNext = nullptr; // met only by a walk from the head
    EXPECT_EQ(m_lst.getAt(3)->m_iNumber, 3);
    m_lst.m_pHead->pNext->pNext = pThird;
    auto* const pFourth = pThird->pNext;
    pFourth->pPrev = nullptr; // met only by a walk from the tail
    EXPECT_EQ(m_lst.getAt(2)->m_iNumber, 2);
    pFourth->pPrev = pThird;
    EXPECT_EQ(m_lst.getAt(6), nullptr);
}

TEST_F(CObjectListTest, RemoveTakesTheHeadThenTheTailThenTheFirstBetween) {
    CItem item(m_vecDeleted, 7), other(m_vecDeleted, 1);
    m_lst.setOwn(false);
    for (CItem* pItem : {&item, &other, &item, &other, &item, &other, &item})
        m_lst.add(pItem);
    m_lst.remove(&item);
    EXPECT_EQ(read(), (VecInt{1, 7, 1, 7, 1, 7}));
    m_lst.remove(&item);
    EXPECT_EQ(read(), (VecInt{1, 7, 1, 7, 1}));
    m_lst.remove(&item);
    EXPECT_EQ(read(), (VecInt{1, 1, 7, 1}));
}

// An element is deleted when it is out of the chain and still counted.
TEST_F(CObjectListTest, SizeFallsAfterTheDeletion) {
    struct CCounting : CObject {
        CCounting(CObjectList<CCounting>& lst, VecInt& vecSize) : m_lst(lst), m_vecSize(vecSize) {}
        ~CCounting() override { m_vecSize.push_back(static_cast<int>(m_lst.getSize())); }
        CObjectList<CCounting>& m_lst;
        VecInt& m_vecSize;
    };
    VecInt vecSize;
    CObjectList<CCounting> lst;
    for (int i = 0; i < 5; ++i)
        lst.add(new CCounting(lst, vecSize));
    lst.removeAt(0);
    lst.remove(lst.getAt(3));
    lst.removeAt(1);
    EXPECT_EQ(vecSize, (VecInt{5, 4, 3}));
    lst.clear();
    EXPECT_EQ(vecSize, (VecInt{5, 4, 3, 2, 2})) << "clear counts down once, at its end";
}

TEST_F(CObjectListTest, RemovesHeadTailInnerAndSole) {
    fill(5);
    m_lst.remove(m_lst.getAt(0));
    m_lst.remove(m_lst.getAt(3));
    m_lst.remove(m_lst.getAt(1));
    EXPECT_EQ(m_vecDeleted, (VecInt{0, 4, 2}));
    EXPECT_EQ(read(), (VecInt{1, 3}));
    m_lst.removeAt(2);
    m_lst.removeAt(1);
    m_lst.remove(m_lst.getAt(0));
    EXPECT_EQ(m_vecDeleted, (VecInt{0, 4, 2, 3, 1}));
    EXPECT_EQ(m_lst.getSize(), 0u);
}

TEST_F(CObjectListTest, RemovingAStrangerChangesNothing) {
    VecInt vecOther;
    CItem stranger(vecOther, 9);
    m_lst.remove(&stranger);
    fill(1);
    m_lst.remove(&stranger);
    fill(2);
    m_lst.remove(&stranger);
    EXPECT_EQ(m_lst.getSize(), 3u);
    EXPECT_TRUE(vecOther.empty());
}

TEST_F(CObjectListTest, RemoveHeadGivesTheObjectBackAlive) {
    fill(2);
    CItem* const pItem = m_lst.removeHead();
    EXPECT_EQ(pItem->m_iNumber, 0);
    EXPECT_TRUE(m_vecDeleted.empty());
    delete pItem;
    delete m_lst.removeHead();
    EXPECT_EQ(m_lst.removeHead(), nullptr);
}

TEST_F(CObjectListTest, NotOwningLeavesTheObjectsAlive) {
    CItem item(m_vecDeleted, 4);
    m_lst.setOwn(false);
    m_lst.add(&item);
    m_lst.add(&item);
    m_lst.add(&item);
    m_lst.removeAt(1);
    m_lst.remove(&item);
    m_lst.clear();
    EXPECT_TRUE(m_vecDeleted.empty());
}

TEST_F(CObjectListTest, AWalkThatRemovesWhatItReadsVisitsEachOnce) {
    fill(6);
    VecInt vec;
    m_lst.toTail();
    while (CItem* pItem = m_lst.previous()) {
        vec.push_back(pItem->m_iNumber);
        if (pItem->m_iNumber % 2 == 0)
            m_lst.remove(pItem);
    }
    EXPECT_EQ(vec, (VecInt{5, 4, 3, 2, 1, 0}));
    EXPECT_EQ(read(), (VecInt{1, 3, 5}));
}

TEST_F(CObjectListTest, MovesTheVisitedElementWithoutEndingTheWalk) {
    CObjectList<CItem> lstTarget;
    fill(5);
    m_lst.toHead();
    while (const CItem* pItem = m_lst.next()) {
        if (pItem->m_iNumber != 2) {
            m_lst.moveVisitedTo(lstTarget);
            m_lst.moveVisitedTo(lstTarget); // gone already: nothing happens
        }
    }
    EXPECT_EQ(read(), (VecInt{2}));
    EXPECT_TRUE(m_vecDeleted.empty());
    EXPECT_EQ(lstTarget.getSize(), 4u);
    lstTarget.clear();
    EXPECT_EQ(m_vecDeleted, (VecInt{0, 1, 3, 4}));
}

TEST_F(CObjectListTest, AnElementMovesToTheTailOfItsOwnList) {
    for (int iCount = 1; iCount <= 3; ++iCount) {
        m_lst.clear();
        fill(iCount);
        m_vecDeleted.clear();
        m_lst.toHead();
        CItem* const pHead = m_lst.next();
        m_lst.moveVisitedTo(m_lst);
        EXPECT_EQ(m_lst.getSize(), static_cast<unsigned int>(iCount));
        EXPECT_EQ(m_lst.getAt(static_cast<unsigned int>(iCount) - 1), pHead);
        EXPECT_EQ(m_lst.m_pTail->pNext, nullptr);
        EXPECT_EQ(m_lst.m_pHead->pPrev, nullptr);
    }
    EXPECT_EQ(read(), (VecInt{1, 2, 0}));
    EXPECT_EQ(m_vecDeleted, VecInt{});
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST_F(CObjectListTest, WithoutMemoryAnAddedObjectIsDroppedAndNotDeleted) {
    CItem item(m_vecDeleted, 1);
    const OrlixTest::tagChildResult result = OrlixTest::runInChild([this, &item] {
        m_lst.setOwn(false);
        if (!OrlixTest::limitMemory(4000000))
            return 1;
        m_lst.add(&item); // so that the pool has its first block
        OrlixTest::useUpMemory();
        for (unsigned int i = 1; i < 1000000 && m_lst.getSize() == i; ++i)
            m_lst.add(&item);
        const unsigned int uiSize = m_lst.getSize();
        m_lst.add(&item);
        if (uiSize == 1000000 || m_lst.getSize() != uiSize || m_lst.m_pTail->pNext)
            return 2;
        m_lst.removeHead();
        m_lst.add(&item); // into the node that was given back
        return m_lst.getSize() == uiSize && m_vecDeleted.empty() ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0);
}
#endif

TEST_F(CObjectListTest, BehavesLikeAVector) {
    std::mt19937 random(35);
    VecInt vec, vecExpected;
    for (int i = 0; i < 3000; ++i) {
        const unsigned int uiIndex = random() % 12;
        if (random() % 2 == 0) {
            m_lst.add(new CItem(m_vecDeleted, i));
            vec.push_back(i);
        } else if (uiIndex < vec.size()) {
            vecExpected.push_back(vec[uiIndex]);
            if (i % 2 == 0)
                m_lst.remove(m_lst.getAt(uiIndex));
            else
                m_lst.removeAt(uiIndex);
            vec.erase(vec.begin() + uiIndex);
        } else {
            m_lst.removeAt(static_cast<unsigned int>(vec.size()));
        }
        ASSERT_EQ(m_lst.getSize(), vec.size());
        ASSERT_EQ(read(), vec);
        ASSERT_EQ(m_vecDeleted, vecExpected);
        for (unsigned int j = 0; j < vec.size(); ++j)
            ASSERT_EQ(m_lst.getAt(j)->m_iNumber, vec[j]);
    }
}

TEST(CObjectListReentrance, ADestructorMayAddToAndRemoveFromTheListBeingCleared) {
    struct CNosy : CObject {
        CNosy(CObjectList<CNosy>& lst, int& iDeleted) : m_lst(lst), m_iDeleted(iDeleted) {}
        ~CNosy() override {
            ++m_iDeleted;
            if (m_iDeleted == 1) {
                m_lst.removeAt(0);
                m_lst.add(new CNosy(m_lst, m_iDeleted));
            }
        }
        CObjectList<CNosy>& m_lst;
        int& m_iDeleted;
    };
    int iDeleted = 0;
    CObjectList<CNosy> lst;
    for (int i = 0; i < 3; ++i)
        lst.add(new CNosy(lst, iDeleted));
    lst.clear();
    EXPECT_EQ(iDeleted, 4);
    EXPECT_EQ(lst.getSize(), 0u);
}
} // namespace
