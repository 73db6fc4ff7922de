#include <Orlix/foundation/CObjectList.h>

#include <gtest/gtest.h>

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
    CObjectList<CItem> m_lst;
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
