#include <Orlix/foundation/CDataMap.h>

#include "support/TreeCheck.h"

#include <gtest/gtest.h>

#include <utility>

using namespace Orlix;
using namespace OrlixTest;

namespace {

using CTextMap = CDataMap<int, CString, tagNumCompare<int>>;

TEST(CDataMap, HoldsValuesByValue) {
    CTextMap map;
    CString strText(L"one");
    EXPECT_TRUE(map.addItem(1, strText));
    EXPECT_FALSE(map.addItem(1, L"other"));
    strText = L"changed";
    EXPECT_EQ(*map.getItem(1), L"one");
    map.setItem(1, L"two");
    map.setItem(0, L"zero");
    EXPECT_EQ(*map.getItem(1), L"two");
    EXPECT_EQ(map.getItem(2), nullptr);
    EXPECT_EQ(map.buildPairs(), 2u);
    EXPECT_EQ(map.getValueAt(0), map.getItem(0));
    EXPECT_EQ(map.getKeyAt(1), 1);
    EXPECT_EQ(checkTree(map), "");
}

TEST(CDataMap, HoldsCreatorsByName) {
    using FCreate = CObject* (*)();
    CDataMap<CString, FCreate, tagStringCompare> map;
    const FCreate fnCreate = []() -> CObject* { return new CString(L"made"); };
    CString strName(L"moved");
    EXPECT_TRUE(map.addItem(L"none", nullptr));
    EXPECT_TRUE(map.addItem(std::move(strName), fnCreate));
    EXPECT_TRUE(strName.isEmpty());
    EXPECT_EQ(*map.getItem(L"none"), nullptr) << "a stored null is not an absent key";
    EXPECT_EQ(map.getItem(L"absent"), nullptr);
    CObject* const pMade = (*map.getItem(L"moved"))();
    EXPECT_EQ(*static_cast<CString*>(pMade), L"made");
    delete pMade;
    EXPECT_TRUE(map.deleteItem(L"none"));
    EXPECT_FALSE(map.deleteItem(L"none"));
}

TEST(CDataMap, ReplacingAndRemovingDropThePairs) {
    CTextMap map;
    map.addItem(1, L"one");
    map.buildPairs();
    map.setItem(1, L"other");
    EXPECT_FALSE(map.hasPairs());
    map.buildPairs();
    EXPECT_FALSE(map.addItem(1, L"third"));
    EXPECT_FALSE(map.deleteItem(2));
    EXPECT_TRUE(map.hasPairs());
    map.deleteItem(1);
    EXPECT_FALSE(map.hasPairs());
}

TEST(CDataMap, DestroysEachKeyAndValueOnce) {
    struct tagCounter {
        explicit tagCounter(int& iLive) : m_iLive(iLive) { ++m_iLive; }
        tagCounter(const tagCounter& other) : m_iLive(other.m_iLive) { ++m_iLive; }
        ~tagCounter() { --m_iLive; }
        int& m_iLive;
    };
    int iLive = 0;
    {
        CDataMap<int, tagCounter, tagNumCompare<int>> map;
        const tagCounter counter(iLive);
        for (int i = 0; i < 10; ++i)
            map.addItem(i, counter);
        EXPECT_FALSE(map.addItem(0, counter));
        EXPECT_EQ(iLive, 11);
        map.deleteItem(3);
        EXPECT_EQ(iLive, 10);
    }
    EXPECT_EQ(iLive, 0);
}
} // namespace
