#include <Orlix/foundation/CTreeMap.h>

#include <Orlix/foundation/CDataMap.h>
#include <Orlix/foundation/CObjectMap.h>

#include "support/TreeCheck.h"
#include "support/TreeModel.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

/** A value that says how many of its kind live and how often one was deleted. */
struct CCounted {
    explicit CCounted(int iNumber) : m_iNumber(iNumber) { ++s_iLive; }
    ~CCounted() {
        --s_iLive;
        ++s_iDeleted;
    }
    ORLIX_HEAP_CLASS(L"CCounted")
    int m_iNumber;
    static int s_iLive;
    static int s_iDeleted;
};
int CCounted::s_iLive = 0;
int CCounted::s_iDeleted = 0;

using CCountedMap = CObjectMap<int, CCounted, tagNumCompare<int>>;
using CNumberMap = CDataMap<int, int, tagNumCompare<int>>;

/** Ours, the standard map and the recursive tree, changed alike. Each change says whether there was one. */
class CTwins {
public:
    bool add(int iKey, int iNumber) {
        CCounted* const pValue = new CCounted(iNumber);
        const bool bAdded = m_map.addItem(iKey, pValue);
        EXPECT_EQ(bAdded, m_mapStd.emplace(iKey, iNumber).second);
        EXPECT_EQ(bAdded, m_model.insert(iKey));
        if (!bAdded)
            delete pValue;
        return bAdded;
    }
    bool set(int iKey, int iNumber) {
        m_map.setItem(iKey, new CCounted(iNumber));
        m_mapStd[iKey] = iNumber;
        m_model.insert(iKey);
        return true;
    }
    bool remove(int iKey) {
        const bool bRemoved = m_map.deleteItem(iKey);
        EXPECT_EQ(bRemoved, m_mapStd.erase(iKey) == 1);
        EXPECT_EQ(bRemoved, m_model.remove(iKey));
        return bRemoved;
    }

    /** Empty if all three agree, otherwise the first difference. */
    std::string compare() {
        if (m_map.getCount() != m_mapStd.size() || CCounted::s_iLive != static_cast<int>(m_mapStd.size()))
            return "count of keys or of living values";
        if (!m_model.hasShapeOf(m_map.getRoot()))
            return "shape";
        if (m_map.buildPairs() != m_mapStd.size())
            return "count of pairs";
        unsigned int i = 0;
        for (const auto& [iKey, iNumber] : m_mapStd) {
            const CCounted* const pValue = m_map.getValueAt(i);
            if (m_map.getKeyAt(i++) != iKey || pValue != m_map.getItem(iKey) || pValue->m_iNumber != iNumber)
                return "pair " + std::to_string(i - 1);
        }
        return checkTree(m_map);
    }

    CCountedMap m_map;
    std::map<int, int> m_mapStd;
    CTreeModel m_model;
};

bool changeAtRandom(CTwins& twins, std::mt19937& random, int iKeys, int iNumber) {
    const int iKey = static_cast<int>(random() % static_cast<unsigned int>(iKeys)) - iKeys / 2;
    // Phases in which insertions or removals prevail, so that the tree grows full and runs empty in turn.
    const unsigned int uiRemovals = iNumber / (iKeys * 8) % 2 == 0 ? 3 : 7;
    const unsigned int uiKind = random() % 10;
    if (uiKind < uiRemovals)
        return twins.remove(iKey);
    return uiKind == 9 ? twins.set(iKey, iNumber) : twins.add(iKey, iNumber);
}

TEST(CTreeMap, EveryChangeLeavesTheTreeOfThePlainRecursiveOne) {
    for (const int iKeys : {8, 40, 300}) {
        CTwins twins;
        std::mt19937 random(static_cast<unsigned int>(iKeys));
        for (int i = 0; i < 35000; ++i) {
            const bool bPairs = twins.m_map.hasPairs();
            const bool bChanged = changeAtRandom(twins, random, iKeys, i);
            EXPECT_EQ(twins.m_map.hasPairs(), bPairs && !bChanged);
            ASSERT_EQ(twins.compare(), "") << iKeys << " keys, change " << i;
        }
    }
    EXPECT_EQ(CCounted::s_iLive, 0);
}

TEST(CTreeMap, ALargeTreeStaysBalancedAndComplete) {
    CTwins twins;
    std::mt19937 random(5);
    for (int i = 0; i < 300000; ++i) {
        changeAtRandom(twins, random, 60000, i);
        if (i % 20000 == 0) {
            ASSERT_EQ(twins.compare(), "") << "change " << i;
        }
    }
    EXPECT_EQ(twins.compare(), "");
}

TEST(CTreeMap, OrderedArrivalsAndRemovalsKeepTheHeightLow) {
    CNumberMap map;
    for (int i = 0; i < 1 << 16; ++i)
        ASSERT_TRUE(map.addItem(i, i));
    EXPECT_EQ(checkTree(map), "");
    EXPECT_EQ(map.getRoot()->iLeftHeight, 15);
    EXPECT_EQ(map.getRoot()->iRightHeight, 16);
    for (int i = 0; i < (1 << 16) - 1; ++i)
        ASSERT_TRUE(map.deleteItem(i % 2 == 0 ? i / 2 : (1 << 16) - 1 - i / 2)) << i;
    EXPECT_EQ(checkTree(map), "");
    EXPECT_EQ(map.getCount(), 1u);
    EXPECT_EQ(map.getRoot()->key, 1 << 15);
}

TEST(CTreeMap, ReplacingValuesOfADataMapFollowsTheStandardMap) {
    CNumberMap map;
    std::map<int, int> mapStd;
    std::mt19937 random(17);
    for (int i = 0; i < 50000; ++i) {
        const int iKey = static_cast<int>(random() % 200);
        switch (random() % 3) {
        case 0:
            map.setItem(iKey, i), mapStd[iKey] = i;
            break;
        case 1:
            EXPECT_EQ(map.addItem(iKey, i), mapStd.emplace(iKey, i).second);
            break;
        default:
            EXPECT_EQ(map.deleteItem(iKey), mapStd.erase(iKey) == 1);
        }
        EXPECT_FALSE(map.hasPairs() && mapStd.empty());
        ASSERT_EQ(map.buildPairs(), mapStd.size());
        unsigned int uiIndex = 0;
        for (const auto& [iStdKey, iStdValue] : mapStd) {
            ASSERT_EQ(map.getKeyAt(uiIndex), iStdKey);
            ASSERT_EQ(*map.getValueAt(uiIndex++), iStdValue);
        }
        ASSERT_EQ(checkTree(map), "");
    }
}
} // namespace
