#include <Orlix/foundation/CObjectMap.h>

#include "support/TreeCheck.h"

#include <gtest/gtest.h>

#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using VecInt = std::vector<int>;

struct CItem : CObject {
    CItem(VecInt& vecDeleted, int iNumber) : m_vecDeleted(vecDeleted), m_iNumber(iNumber) {}
    ~CItem() override { m_vecDeleted.push_back(m_iNumber); }
    VecInt& m_vecDeleted;
    int m_iNumber;
};

using CItemMap = CObjectMap<int, CItem, tagNumCompare<int>>;

class CObjectMapTest : public ::testing::Test {
protected:
    void fill(const VecInt& vecKey) {
        for (const int iKey : vecKey)
            EXPECT_TRUE(m_map.addItem(iKey, new CItem(m_vecDeleted, iKey)));
    }
    VecInt read() {
        VecInt vec;
        const unsigned int uiCount = m_map.buildPairs();
        for (unsigned int i = 0; i < uiCount; ++i)
            vec.push_back(m_map.getKeyAt(i));
        return vec;
    }
    VecInt m_vecDeleted;
    CItemMap m_map;
};

TEST_F(CObjectMapTest, SevenAscendingKeysMakeAFullTreeOfThreeLevels) {
    fill({1, 2, 3, 4, 5, 6, 7});
    const CItemMap::tagNode* const pRoot = m_map.getRoot();
    EXPECT_EQ(pRoot->key, 4);
    EXPECT_EQ(pRoot->iLeftHeight, 2);
    EXPECT_EQ(pRoot->iRightHeight, 2);
    EXPECT_EQ(pRoot->pLeft->key, 2);
    EXPECT_EQ(pRoot->pRight->key, 6);
    EXPECT_EQ(checkTree(m_map), "");
}

TEST_F(CObjectMapTest, AKnownKeyIsRefusedAndChangesNothing) {
    fill({3});
    CItem* const pOld = m_map.getItem(3);
    CItem item(m_vecDeleted, 9);
    EXPECT_EQ(m_map.buildPairs(), 1u);
    EXPECT_FALSE(m_map.addItem(3, &item));
    EXPECT_EQ(m_map.getItem(3), pOld);
    EXPECT_EQ(m_map.getCount(), 1u);
    EXPECT_TRUE(m_map.hasPairs());
    EXPECT_TRUE(m_vecDeleted.empty());
}

TEST_F(CObjectMapTest, SetItemDeletesTheOldValueOnceAndNeverTheSameOne) {
    fill({3});
    CItem* const pNew = new CItem(m_vecDeleted, 30);
    m_map.setItem(3, pNew);
    EXPECT_EQ(m_vecDeleted, VecInt{3});
    m_map.setItem(3, pNew);
    EXPECT_EQ(m_vecDeleted, VecInt{3});
    EXPECT_EQ(m_map.getItem(3), pNew);
    EXPECT_EQ(m_map.getCount(), 1u);
    m_map.setItem(4, nullptr);
    m_map.setItem(4, new CItem(m_vecDeleted, 4));
    EXPECT_EQ(m_vecDeleted, VecInt{3});
    EXPECT_EQ(m_map.getCount(), 2u);
}

TEST_F(CObjectMapTest, NotOwningLeavesTheValuesAlive) {
    CItem item(m_vecDeleted, 1), other(m_vecDeleted, 2);
    m_map.setOwn(false);
    m_map.addItem(1, &item);
    m_map.addItem(2, &item);
    m_map.addItem(3, &item);
    m_map.setItem(1, &other);
    EXPECT_TRUE(m_map.deleteItem(3));
    m_map.clear();
    EXPECT_TRUE(m_vecDeleted.empty());
    EXPECT_EQ(m_map.getCount(), 0u);
}

TEST_F(CObjectMapTest, DeletingRemovesTheKeyAndItsValue) {
    fill({2, 1, 3});
    EXPECT_TRUE(m_map.deleteItem(2));
    EXPECT_EQ(m_vecDeleted, VecInt{2});
    EXPECT_EQ(m_map.getItem(2), nullptr);
    EXPECT_EQ(m_map.getRoot()->key, 1) << "a tie goes left";
    EXPECT_EQ(checkTree(m_map), "");
    EXPECT_EQ(read(), (VecInt{1, 3}));
    EXPECT_FALSE(m_map.deleteItem(2));
    EXPECT_TRUE(m_map.hasPairs());
}
} // namespace
