#include <Orlix/foundation/CObjectArray.h>

#include <gtest/gtest.h>

#include <vector>

using namespace Orlix;

namespace {

struct CItem : CObject {
    CItem(std::vector<int>& vecDeleted, int iNumber) : m_vecDeleted(vecDeleted), m_iNumber(iNumber) {}
    ~CItem() override { m_vecDeleted.push_back(m_iNumber); }
    std::vector<int>& m_vecDeleted;
    int m_iNumber;
};

class COpenArray : public CObjectArray<CItem> {
public:
    using CObjectArray<CItem>::CObjectArray;
    using CObjectArray<CItem>::m_ppData;
};

using VecInt = std::vector<int>;

TEST(CObjectArray, OwnsFromTheStartAndDeletesUpwards) {
    VecInt vecDeleted;
    {
        CObjectArray<CItem> ary;
        EXPECT_TRUE(ary.isOwn());
        for (int i = 0; i < 3; ++i)
            ary.add(new CItem(vecDeleted, i));
        ary.add(nullptr);
        EXPECT_EQ(ary.getSize(), 4u);
        EXPECT_EQ(ary.getCapacity(), 4u);
    }
    EXPECT_EQ(vecDeleted, (VecInt{0, 1, 2}));
}

TEST(CObjectArray, NotOwningLeavesTheObjectsAlive) {
    VecInt vecDeleted;
    CItem item(vecDeleted, 1);
    CObjectArray<CItem> ary;
    ary.setOwn(false);
    EXPECT_FALSE(ary.isOwn());
    ary.add(&item);
    ary.add(&item);
    ary.removeAt(0);
    ary.clear();
    EXPECT_TRUE(vecDeleted.empty());
    EXPECT_EQ(ary.getCapacity(), 0u);
}

TEST(CObjectArray, UnusedSlotsAreNull) {
    COpenArray ary(5);
    ASSERT_NE(ary.m_ppData, nullptr);
    for (unsigned int i = 0; i < 5; ++i)
        EXPECT_EQ(ary.m_ppData[i], nullptr);
}

TEST(CObjectArray, RemovalDeletesAndClosesTheGap) {
    VecInt vecDeleted;
    COpenArray ary;
    for (int i = 0; i < 4; ++i)
        ary.add(new CItem(vecDeleted, i));
    CItem* const pThird = ary[2];
    EXPECT_EQ(ary.find(pThird), 2);
    ary.removeAt(9);
    ary.removeAt(1);
    EXPECT_EQ(vecDeleted, (VecInt{1}));
    EXPECT_EQ(ary.getAt(1), pThird);
    EXPECT_EQ(ary.m_ppData[3], nullptr);
    ary.remove(pThird);
    EXPECT_EQ(vecDeleted, (VecInt{1, 2}));
    CItem stranger(vecDeleted, 9);
    ary.remove(&stranger);
    EXPECT_EQ(ary.getSize(), 2u);
    EXPECT_EQ(ary.find(&stranger), -1);
    EXPECT_EQ(ary.getCapacity(), 4u);
}

TEST(CObjectArray, ReadPastTheEndIsNull) {
    CObjectArray<CItem> ary(3);
    EXPECT_EQ(ary[0], nullptr);
    EXPECT_EQ(ary.getAt(100), nullptr);
}
} // namespace
