#include <Orlix/foundation/CObjectMap.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"
#include "support/TreeCheck.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstddef>
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

/** A map whose insides can be looked at. */
struct CItemMap : CObjectMap<int, CItem, tagNumCompare<int>> {
    using CObjectMap::m_bOwn;
    using CObjectMap::m_bUpdateNode;
    using CObjectMap::m_kDefault;
    using CObjectMap::m_pPairs;
    using CObjectMap::m_pRoot;
    using CObjectMap::m_uiCount;
    using CObjectMap::m_uiPairIndex;
};
using CTextMap = CObjectMap<CString, CString, tagStringCompare>;

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

TEST_F(CObjectMapTest, FieldsStandInTheirOrder) {
    const auto at = [this](const void* pField) {
        return reinterpret_cast<const char*>(pField) - reinterpret_cast<const char*>(&m_map);
    };
    EXPECT_EQ(at(&m_map.m_bOwn), static_cast<std::ptrdiff_t>(sizeof(CObject)));
    EXPECT_EQ(at(&m_map.m_bUpdateNode), at(&m_map.m_bOwn) + 1);
    EXPECT_EQ(at(&m_map.m_pRoot), at(&m_map.m_bOwn) + 8);
    EXPECT_EQ(at(&m_map.m_pPairs), at(&m_map.m_pRoot) + 8);
    EXPECT_EQ(at(&m_map.m_uiCount), at(&m_map.m_pPairs) + 8);
    EXPECT_EQ(at(&m_map.m_uiPairIndex), at(&m_map.m_uiCount) + 4);
    EXPECT_EQ(at(&m_map.m_kDefault), at(&m_map.m_uiPairIndex) + 4);

    using tagNode = CItemMap::tagNode;
    static_assert(offsetof(tagNode, key) == 0 && offsetof(tagNode, pValue) == 8 && offsetof(tagNode, pLeft) == 16);
    static_assert(offsetof(tagNode, pRight) == 24 && offsetof(tagNode, pParent) == 32);
    static_assert(offsetof(tagNode, iLeftHeight) == 40 && offsetof(tagNode, iRightHeight) == 44);
    static_assert(offsetof(tagNode, iBalance) == 48);
    using tagPair = CItemMap::tagPair;
    static_assert(offsetof(tagPair, pNode) == 0 && offsetof(tagPair, pValue) == 8 && sizeof(tagPair) == 16);
}

TEST_F(CObjectMapTest, ANewMapIsEmptyOwnsAndBalances) {
    EXPECT_TRUE(m_map.isOwn());
    EXPECT_TRUE(m_map.m_bUpdateNode);
    EXPECT_EQ(m_map.getRoot(), nullptr);
    EXPECT_EQ(m_map.getCount(), 0u);
    EXPECT_EQ(m_map.getItem(0), nullptr);
    EXPECT_FALSE(m_map.deleteItem(0));
    m_map.clear();
}

TEST_F(CObjectMapTest, AnEmptyMapYieldsNoPairsAndAllocatesNone) {
    EXPECT_EQ(m_map.buildPairs(), 0u);
    EXPECT_FALSE(m_map.hasPairs());
    EXPECT_EQ(m_map.getKeyAt(0), 0);
    EXPECT_EQ(m_map.getValueAt(0), nullptr);
}

TEST_F(CObjectMapTest, AWalkReadsKeysAndValuesInAscendingOrder) {
    fill({5, -3, 9});
    EXPECT_EQ(m_map.getKeyAt(0), 0) << "nothing to read before buildPairs";
    EXPECT_EQ(m_map.buildPairs(), 3u);
    EXPECT_EQ(m_map.m_uiPairIndex, 0u);
    EXPECT_EQ(m_map.getKeyAt(0), -3);
    EXPECT_EQ(m_map.getKeyAt(1), 5);
    EXPECT_EQ(m_map.getKeyAt(2), 9);
    EXPECT_EQ(m_map.getValueAt(1), m_map.getItem(5));
    for (const unsigned int uiBeyond : {3u, UINT_MAX}) {
        EXPECT_EQ(&m_map.getKeyAt(uiBeyond), &m_map.m_kDefault);
        EXPECT_EQ(m_map.getValueAt(uiBeyond), nullptr);
    }
}

TEST_F(CObjectMapTest, EveryChangeDropsThePairsAndNothingElseDoes) {
    fill({1, 2, 3});
    const auto isDropped = [this] {
        const bool bDropped = !m_map.hasPairs() && m_map.m_uiPairIndex == 0;
        m_map.buildPairs();
        m_map.m_uiPairIndex = 2;
        return bDropped;
    };
    EXPECT_TRUE(isDropped()) << "insertion";
    EXPECT_FALSE(m_map.addItem(2, nullptr) || m_map.deleteItem(7) || m_map.getItem(7));
    EXPECT_FALSE(m_map.deleteItemByDLR(m_map.getRoot(), 7) || isDropped()) << "refusals";
    m_map.setItem(2, m_map.getItem(2));
    EXPECT_TRUE(isDropped()) << "replacement, also by the same value";
    m_map.setItem(4, nullptr);
    EXPECT_TRUE(isDropped()) << "insertion by replacement";
    m_map.deleteItem(4);
    EXPECT_TRUE(isDropped()) << "removal";
    EXPECT_EQ(read(), (VecInt{1, 2, 3}));
    m_map.clear();
    EXPECT_TRUE(isDropped()) << "clear";
    fill({8});
    EXPECT_TRUE(isDropped()) << "the first insertion";
    EXPECT_EQ(read(), VecInt{8}) << "a new walk sees what was inserted";
}

TEST_F(CObjectMapTest, ClearAndDestructionDeleteWhatIsBelowFirst) {
    fill({4, 2, 6, 1, 3, 5, 7});
    m_map.buildPairs();
    m_map.clear();
    EXPECT_EQ(m_vecDeleted, (VecInt{1, 3, 2, 5, 7, 6, 4}));
    EXPECT_EQ(m_map.getRoot(), nullptr);
    EXPECT_EQ(m_map.getCount(), 0u);
    EXPECT_FALSE(m_map.hasPairs());
    EXPECT_TRUE(m_map.m_bUpdateNode);
    VecInt vecDeleted;
    {
        CItemMap map;
        map.addItem(1, new CItem(vecDeleted, 1));
        map.addItem(2, new CItem(vecDeleted, 2));
        map.addItem(3, nullptr);
    }
    EXPECT_EQ(vecDeleted, (VecInt{1, 2}));
}

TEST_F(CObjectMapTest, DeletesObjectsDirectlyAndNotByReference) {
    fill({1});
    m_map.getItem(1)->addRef();
    m_map.getItem(1)->addRef();
    m_map.deleteItem(1);
    EXPECT_EQ(m_vecDeleted, VecInt{1});
}

TEST_F(CObjectMapTest, TheHigherSideGivesTheReplacementAndATieTheLeftOne) {
    const struct {
        VecInt vecKey;
        int iRemoved, iRoot;
    } aryRow[] = {
        {{4}, 4, 0},                        // no children
        {{4, 2}, 4, 2},                     // one child
        {{4, 6}, 4, 6},                     //
        {{4, 2, 6}, 4, 2},                  // tie: the left child itself
        {{4, 2, 6, 7}, 4, 6},               // the right side is higher: the right child itself
        {{4, 2, 6, 1, 3, 5, 7}, 4, 3},      // tie: the greatest of the left side
        {{4, 2, 6, 5, 7}, 4, 5},            // the right side is higher: the least of the right side
        {{4, 2, 6, 1, 5, 7, 0}, 4, 2},      // the replacement is the left child, with a left child of its own
        {{8, 4, 10, 2, 6, 9, 11, 5}, 8, 6}, // the replacement leaves a left child in its place
        {{4, 2, 8, 1, 6, 10, 7}, 4, 6},     // the replacement leaves a right child in its place
    };
    for (const auto& row : aryRow) {
        SCOPED_TRACE(testing::Message() << "row " << (&row - aryRow));
        m_map.clear();
        fill(row.vecKey);
        ASSERT_EQ(m_map.getRoot()->key, row.iRemoved);
        EXPECT_TRUE(m_map.deleteItem(row.iRemoved));
        EXPECT_EQ(m_map.getRoot() ? m_map.getRoot()->key : 0, row.iRoot);
        EXPECT_EQ(m_map.getCount(), row.vecKey.size() - 1);
        EXPECT_EQ(checkTree(m_map), "");
    }
}

TEST_F(CObjectMapTest, DeletingByDLRLooksBelowTheNodeOnly) {
    fill({4, 2, 6, 1, 3, 5, 7});
    CItemMap::tagNode* const pRoot = m_map.getRoot();
    EXPECT_FALSE(m_map.deleteItemByDLR(nullptr, 4));
    EXPECT_FALSE(m_map.deleteItemByDLR(pRoot, 4)) << "the node itself";
    EXPECT_FALSE(m_map.deleteItemByDLR(pRoot->pLeft, 7)) << "another branch";
    EXPECT_FALSE(m_map.deleteItemByDLR(pRoot->pLeft->pLeft, 1));
    EXPECT_TRUE(m_map.deleteItemByDLR(pRoot->pLeft, 1));
    EXPECT_TRUE(m_map.deleteItemByDLR(pRoot, 6));
    EXPECT_EQ(m_vecDeleted, (VecInt{1, 6}));
    EXPECT_EQ(read(), (VecInt{2, 3, 4, 5, 7}));
    EXPECT_EQ(checkTree(m_map), "");
}

TEST_F(CObjectMapTest, UpdatingANodeMendsTheWayToTheRootUnlessBalancingIsOff) {
    fill({4, 2, 6, 1});
    CItemMap::tagNode* const pRoot = m_map.getRoot();
    const auto spoil = [pRoot] { pRoot->iLeftHeight = pRoot->iBalance = pRoot->pLeft->iBalance = 7; };
    spoil();
    m_map.updateNode(nullptr);
    EXPECT_EQ(pRoot->iBalance, 7);
    m_map.m_bUpdateNode = false;
    m_map.updateNode(pRoot->pLeft->pLeft);
    EXPECT_EQ(pRoot->iBalance, 7);
    m_map.m_bUpdateNode = true;
    m_map.updateNode(pRoot->pLeft->pLeft);
    EXPECT_EQ(checkTree(m_map), "");
}

TEST_F(CObjectMapTest, WithBalancingOffNothingTurns) {
    m_map.m_bUpdateNode = false;
    fill({1, 2, 3, 4});
    EXPECT_EQ(m_map.getRoot()->key, 1);
    EXPECT_TRUE(m_map.deleteItem(3));
    EXPECT_EQ(m_map.getRoot()->pRight->pRight->key, 4);
    m_map.m_bUpdateNode = true;
    EXPECT_EQ(read(), (VecInt{1, 2, 4}));
}

TEST_F(CObjectMapTest, DeletingASubtreeTakesItOutOfTheMap) {
    fill({4, 2, 6, 1, 3, 5, 7});
    m_map.deleteTree(nullptr);
    EXPECT_EQ(m_map.getCount(), 7u);
    m_map.buildPairs();
    m_map.deleteTree(m_map.getRoot()->pLeft);
    EXPECT_EQ(m_vecDeleted, (VecInt{1, 3, 2}));
    EXPECT_FALSE(m_map.hasPairs());
    EXPECT_EQ(read(), (VecInt{4, 5, 6, 7}));
    EXPECT_EQ(checkTree(m_map), "");
    m_map.deleteTree(m_map.getRoot());
    EXPECT_EQ(m_map.getRoot(), nullptr);
    EXPECT_EQ(m_map.getCount(), 0u);
    EXPECT_EQ(m_vecDeleted.size(), 7u);
}

TEST_F(CObjectMapTest, FillingTheArrayStaysInsideIt) {
    fill({4, 2, 6, 1, 3, 5, 7});
    m_map.createIterator(m_map.getRoot()); // no array: nothing to fill
    EXPECT_FALSE(m_map.hasPairs());
    m_map.buildPairs();
    m_map.createIterator(m_map.getRoot()->pRight);
    EXPECT_EQ(m_map.m_uiPairIndex, 3u);
    EXPECT_EQ(m_map.getKeyAt(0), 5);
    EXPECT_EQ(m_map.getKeyAt(2), 7);
    EXPECT_EQ(m_map.getKeyAt(3), 4) << "the rest as it was";
    m_map.createIterator(m_map.getRoot()); // more than there is room for
    EXPECT_EQ(m_map.m_uiPairIndex, 7u);
    EXPECT_EQ(m_map.getKeyAt(6), 4);
    m_map.createIterator(nullptr);
    EXPECT_EQ(m_map.m_uiPairIndex, 7u);
}

TEST(CObjectMap, AKeyIsCopiedInOrMovedIn) {
    CTextMap map;
    CString strCopied(L"copied"), strMoved(L"moved"), strRefused(L"moved");
    const wchar_t* const pMoved = strMoved.getBuffer();
    EXPECT_TRUE(map.addItem(strCopied, new CString(L"1")));
    EXPECT_TRUE(map.addItem(std::move(strMoved), nullptr));
    EXPECT_FALSE(map.addItem(std::move(strRefused), nullptr));
    EXPECT_EQ(strCopied, L"copied");
    EXPECT_TRUE(strMoved.isEmpty());
    EXPECT_EQ(strRefused, L"moved") << "a refused key stays with the caller";
    EXPECT_EQ(map.buildPairs(), 2u);
    EXPECT_NE(map.getKeyAt(0).getBuffer(), strCopied.getBuffer());
    EXPECT_EQ(map.getKeyAt(1).getBuffer(), pMoved);
    EXPECT_EQ(*map.getItem(L"copied"), L"1");
    EXPECT_EQ(map.getItem(L"moved"), nullptr);
    EXPECT_TRUE(map.getKeyAt(2).isEmpty());
}

TEST(CObjectMap, AnArgumentMayBeTheMapsOwnKey) {
    CTextMap map;
    for (const wchar_t* pKey : {L"a", L"b", L"c", L"d"})
        map.addItem(pKey, new CString(pKey));
    map.buildPairs();
    EXPECT_TRUE(map.deleteItem(map.getKeyAt(1)));
    map.buildPairs();
    map.setItem(map.getKeyAt(0), new CString(L"new"));
    EXPECT_EQ(*map.getItem(L"a"), L"new");
    map.buildPairs();
    EXPECT_FALSE(map.addItem(map.getKeyAt(2), nullptr));
    EXPECT_EQ(map.getCount(), 3u);
}

TEST(CObjectMap, TellsNarrowTextsApartByAddress) {
    CObjectMap<const char*, CString, tagCharPtrCompare> map;
    const char aryText[2][2] = {"x", "x"};
    EXPECT_TRUE(map.addItem(aryText[0], new CString(L"first")));
    EXPECT_TRUE(map.addItem(aryText[1], new CString(L"second")));
    EXPECT_EQ(*map.getItem(aryText[1]), L"second");
}

/** A value whose destructor goes back to its map, as a listener might. */
struct CNosy : CObject {
    using TMap = CObjectMap<int, CNosy, tagNumCompare<int>>;
    CNosy(TMap& map, int iNumber, VecInt& vecSeen) : m_map(map), m_iNumber(iNumber), m_vecSeen(vecSeen) {}
    ~CNosy() override {
        m_vecSeen.push_back(static_cast<int>(m_map.getCount()));
        EXPECT_EQ(m_map.getItem(m_iNumber), nullptr);
        EXPECT_EQ(m_map.buildPairs(), m_map.getCount());
        if (m_iNumber == 2)
            m_map.addItem(20, new CNosy(m_map, 20, m_vecSeen));
        if (m_iNumber == 7)
            m_map.deleteItem(1);
    }
    TMap& m_map;
    int m_iNumber;
    VecInt& m_vecSeen;
};

TEST(CObjectMapReentrance, ADestructorMayLookAndChange) {
    VecInt vecSeen;
    CNosy::TMap map;
    for (const int iKey : {4, 1, 7, 2})
        map.addItem(iKey, new CNosy(map, iKey, vecSeen));
    EXPECT_TRUE(map.deleteItem(7)); // which takes 1 with it
    EXPECT_EQ(vecSeen, (VecInt{3, 2}));
    EXPECT_EQ(checkTree(map), "");
    vecSeen.clear();
    map.clear(); // 2 inserts 20, which goes too
    EXPECT_EQ(vecSeen, (VecInt{0, 0, 0})) << "a map that is being cleared looks empty";
    EXPECT_EQ(map.getCount(), 0u);
    EXPECT_FALSE(map.hasPairs());
    map.addItem(5, new CNosy(map, 5, vecSeen));
    EXPECT_EQ(map.buildPairs(), 1u);
}

struct CWatcher : CObject {
    struct TMap : CObjectMap<int, CWatcher, tagNumCompare<int>> {
        using CObjectMap::m_bUpdateNode;
    };
    CWatcher(TMap& map, bool& bBalancing) : m_map(map), m_bBalancing(bBalancing) {}
    ~CWatcher() override { m_bBalancing = m_map.m_bUpdateNode; }
    TMap& m_map;
    bool& m_bBalancing;
};

TEST(CObjectMapReentrance, BalancingIsOffWhileClearRunsAndOnOtherwise) {
    bool bBalancing = false;
    CWatcher::TMap map;
    for (const int iKey : {1, 2, 3})
        map.addItem(iKey, new CWatcher(map, bBalancing));
    map.deleteItem(1);
    EXPECT_TRUE(bBalancing);
    map.clear();
    EXPECT_FALSE(bBalancing);
    EXPECT_TRUE(map.m_bUpdateNode);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // the sanitizers end the process when memory runs out
/** Makes the stack and the buffer of the wide output now: under a limit the one cannot grow, and the C library writes
 *  over foreign memory when it finds none for the other. */
void takeRoom() {
    volatile char aryStack[200000];
    for (std::size_t i = 0; i < sizeof(aryStack); i += 1000)
        aryStack[i] = 1;
    std::wprintf(L" ");
}

TEST(CObjectMapShortage, WithoutMemoryANewKeyIsRefusedAndTheTreeStaysWhole) {
    const tagChildResult result = runInChild([] {
        CObjectMap<int, CItem, tagNumCompare<int>> map;
        takeRoom();
        if (!limitMemory(30000000))
            return 1;
        int iKey = 0;
        while (map.addItem(iKey, nullptr))
            ++iKey;
        map.setItem(iKey, nullptr);
        const unsigned int uiCount = map.getCount();
        const bool bNoPairs = map.buildPairs() == 0 && !map.hasPairs() && map.getKeyAt(1) == 0 && !map.getValueAt(1);
        const bool bReplaced = map.deleteItem(0) && map.addItem(iKey, nullptr); // with the memory of the one that went
        unlimitMemory();                                                        // the stack grows by the checks
        if (uiCount != static_cast<unsigned int>(iKey) || map.getCount() != uiCount || checkTree(map) != "")
            return 2;
        return bNoPairs && bReplaced ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0);
}

TEST(CObjectMapShortage, AKeyWhoseCopyFindsNoMemoryIsNotInserted) {
    const tagChildResult result = runInChild([] {
        CTextMap map;
        map.addItem(L"m", nullptr);
        CString strLong, strMoved;
        wchar_t* const pText = static_cast<wchar_t*>(CMemory::malloc(40000000, 0));
        wmemset(pText, L'x', 9999999);
        pText[9999999] = 0;
        strLong.attach(pText, 9999999);
        takeRoom();
        if (!limitMemory(20000000))
            return 1;
        if (map.addItem(strLong, nullptr) || map.getCount() != 1 || map.getItem(CString()) || map.getRoot()->pLeft)
            return 2;
        map.setItem(strLong, nullptr);
        if (map.getCount() != 1)
            return 3;
        return map.addItem(std::move(strLong), nullptr) && map.getRoot()->pRight->key.getBuffer() == pText ? 0 : 4;
    });
    EXPECT_EQ(result.iExitCode, 0);
}
#endif
} // namespace
