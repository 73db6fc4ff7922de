#include <Orlix/foundation/CObjectArray.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <random>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

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
    using CObjectArray<CItem>::m_uiCursor;
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

TEST(CObjectArray, AnObjectTakesThePlaceOfAnother) {
    VecInt vecDeleted;
    CItem outside(vecDeleted, 9);
    COpenArray ary;
    ary.add(nullptr);
    ary.add(new CItem(vecDeleted, 1));
    CItem* const pSecond = new CItem(vecDeleted, 2);
    ary.setAt(0, pSecond);
    ary.setAt(0, pSecond);
    EXPECT_EQ(vecDeleted, VecInt{}) << "neither null nor itself is deleted";
    EXPECT_EQ(ary[0], pSecond);
    CItem* const pThird = new CItem(vecDeleted, 3);
    ary.setAt(1, pThird);
    EXPECT_EQ(vecDeleted, VecInt{1});
    EXPECT_EQ(ary[1], pThird);
    ary.setAt(2, &outside); // past the end: it stays the caller's
    EXPECT_EQ(ary.getSize(), 2u);
    ary.setAt(1, nullptr);
    EXPECT_EQ(vecDeleted, (VecInt{1, 3}));
    ary.setOwn(false);
    ary.setAt(0, &outside);
    EXPECT_EQ(vecDeleted, (VecInt{1, 3})) << "not owned, not deleted";
    delete pSecond;
}

TEST(CObjectArray, ReadPastTheEndIsNull) {
    CObjectArray<CItem> ary(3);
    EXPECT_EQ(ary[0], nullptr);
    EXPECT_EQ(ary.getAt(100), nullptr);
}

TEST(CObjectArray, NewArrayHasNoBuffer) {
    const COpenArray ary;
    EXPECT_EQ(ary.m_ppData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 0u);
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_EQ(ary.m_uiCursor, 0u);
    EXPECT_EQ(ary.find(nullptr), -1);
}

TEST(CObjectArray, CapacityFollowsTheSeriesAndUnusedSlotsAreNull) {
    const unsigned int aryExpected[] = {1, 2, 4, 4, 7, 7, 7, 11, 11, 11, 11, 17, 17, 17, 17, 17, 17, 26};
    VecInt vecDeleted;
    CItem item(vecDeleted, 1);
    COpenArray ary;
    ary.setOwn(false);
    for (unsigned int i = 0; i < std::size(aryExpected); ++i) {
        ary.add(&item);
        EXPECT_EQ(ary.getCapacity(), aryExpected[i]) << i;
        for (unsigned int j = ary.getSize(); j < ary.getCapacity(); ++j)
            ASSERT_EQ(ary.m_ppData[j], nullptr);
    }
}

TEST(CObjectArray, OneGrowthStepServesMany) {
    VecInt vecDeleted;
    CObjectArray<CItem> ary(4);
    ary.add(new CItem(vecDeleted, 1));
    ary.ensureCapacity(4);
    EXPECT_EQ(ary.getCapacity(), 4u);
    ary.ensureCapacity(12);
    EXPECT_EQ(ary.getCapacity(), 17u);
    EXPECT_EQ(ary[0]->m_iNumber, 1);
}

// Kept as it is: the array believes in slots that it does not have.
TEST(CObjectArray, WithoutMemoryAnAddedObjectIsDroppedAndNotDeleted) {
    VecInt vecDeleted;
    CItem item(vecDeleted, 1);
    COpenArray ary(0x20000000); // 4 GiB of pointers, which 32 bits cannot count
    EXPECT_EQ(ary.m_ppData, nullptr);
    ary.add(&item);
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_EQ(ary.getCapacity(), 0x20000000u);
    EXPECT_EQ(ary[0], nullptr);
    EXPECT_TRUE(vecDeleted.empty());
    ary.clear();
    EXPECT_EQ(ary.getCapacity(), 0u);
    ary.setOwn(false);
    ary.add(&item);
    EXPECT_EQ(ary[0], &item);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
// Kept as it is: the capacity is written before the allocation.
TEST(CObjectArray, AFailedGrowthKeepsTheElementsAndTheNextAddTriesAgain) {
    const tagChildResult result = OrlixTest::runInChild([] {
        VecInt vecDeleted;
        CItem item(vecDeleted, 1);
        COpenArray ary(4);
        ary.setOwn(false);
        for (int i = 0; i < 4; ++i)
            ary.add(&item);
        if (!limitMemory(50000000))
            return 1;
        ary.ensureCapacity(20000000);
        const unsigned int uiCapacity = ary.getCapacity();
        ary.add(&item);
        if (uiCapacity < 20000000 || ary.getCapacity() != uiCapacity || ary.getSize() != 4 || ary[3] != &item)
            return 2;
        unlimitMemory();
        ary.add(&item);
        return ary.getSize() == 5 && ary[4] == &item && ary.getCapacity() == uiCapacity ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}
#endif

TEST(CObjectArray, ClearGivesTheBufferBack) {
    VecInt vecDeleted;
    COpenArray ary;
    ary.add(new CItem(vecDeleted, 1));
    ary.m_uiCursor = 1;
    ary.clear();
    EXPECT_EQ(vecDeleted, (VecInt{1}));
    EXPECT_EQ(ary.m_ppData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 0u);
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_EQ(ary.m_uiCursor, 0u);
}

TEST(CObjectArray, RemoveTakesTheFirstPlaceOnly) {
    VecInt vecDeleted;
    CItem first(vecDeleted, 1), second(vecDeleted, 2);
    CObjectArray<CItem> ary;
    ary.setOwn(false);
    for (CItem* pItem : {&first, &second, &first})
        ary.add(pItem);
    ary.remove(&first);
    ASSERT_EQ(ary.getSize(), 2u);
    EXPECT_EQ(ary[0], &second);
    EXPECT_EQ(ary[1], &first);
}

TEST(CObjectArray, RemovalOfANullElementClosesTheGap) {
    VecInt vecDeleted;
    CObjectArray<CItem> ary;
    ary.add(nullptr);
    ary.add(new CItem(vecDeleted, 1));
    EXPECT_EQ(ary.find(nullptr), 0);
    ary.removeAt(0);
    ASSERT_EQ(ary.getSize(), 1u);
    EXPECT_EQ(ary[0]->m_iNumber, 1);
    EXPECT_TRUE(vecDeleted.empty());
}

TEST(CObjectArray, ClearDeletesWhatADestructorAddsMeanwhile) {
    struct CBreeder : CObject {
        CBreeder(CObjectArray<CBreeder>& ary, int& iDeleted, bool bBreeds)
            : m_ary(ary), m_iDeleted(iDeleted), m_bBreeds(bBreeds) {}
        ~CBreeder() override {
            ++m_iDeleted;
            if (m_bBreeds)
                m_ary.add(new CBreeder(m_ary, m_iDeleted, false));
        }
        CObjectArray<CBreeder>& m_ary;
        int& m_iDeleted;
        bool m_bBreeds;
    };
    int iDeleted = 0;
    CObjectArray<CBreeder> ary;
    for (int i = 0; i < 3; ++i)
        ary.add(new CBreeder(ary, iDeleted, true));
    ary.clear();
    EXPECT_EQ(iDeleted, 6);
    EXPECT_EQ(ary.getSize(), 0u);
}

TEST(CObjectArray, BehavesLikeAVector) {
    std::mt19937 random(34);
    VecInt vecDeleted, vecExpected;
    CObjectArray<CItem> ary;
    std::vector<CItem*> vec;
    for (int i = 0; i < 5000; ++i) {
        const unsigned int uiIndex = random() % 30;
        if (random() % 5 < 3) {
            CItem* const pItem = new CItem(vecDeleted, i);
            ary.add(pItem);
            vec.push_back(pItem);
        } else if (uiIndex < vec.size()) {
            vecExpected.push_back(vec[uiIndex]->m_iNumber);
            if (i % 2 == 0)
                ary.remove(vec[uiIndex]);
            else
                ary.removeAt(uiIndex);
            vec.erase(vec.begin() + uiIndex);
        } else {
            ary.removeAt(static_cast<unsigned int>(vec.size()));
        }
        ASSERT_EQ(ary.getSize(), vec.size());
        ASSERT_EQ(vecDeleted, vecExpected);
    }
    for (unsigned int i = 0; i < vec.size(); ++i) {
        ASSERT_EQ(ary[i], vec[i]);
        ASSERT_EQ(ary.find(vec[i]), static_cast<int>(i));
    }
}

TEST(CObjectArray, RemovesAllThatMatchInOneWalk) {
    VecInt vecDeleted;
    COpenArray ary;
    for (int i = 0; i < 7; ++i)
        ary.add(new CItem(vecDeleted, i));
    ary.removeMatching([](const CItem* pItem) { return pItem->m_iNumber % 3 == 0; });
    EXPECT_EQ(vecDeleted, (VecInt{0, 3, 6}));
    ASSERT_EQ(ary.getSize(), 4u);
    const int aryLeft[] = {1, 2, 4, 5};
    for (unsigned int i = 0; i < 4; ++i)
        EXPECT_EQ(ary[i]->m_iNumber, aryLeft[i]);
    for (unsigned int i = 4; i < ary.getCapacity(); ++i)
        EXPECT_EQ(ary.m_ppData[i], nullptr) << i;
    ary.removeMatching([](const CItem*) { return true; });
    EXPECT_EQ(ary.getSize(), 0u);
    COpenArray aryEmpty;
    aryEmpty.removeMatching([](const CItem*) { return true; });
    EXPECT_EQ(aryEmpty.getCapacity(), 0u);
}

TEST(CObjectArray, TakesAllElementsOfAnother) {
    VecInt vecDeleted;
    COpenArray ary, aryOther;
    for (int i = 0; i < 3; ++i)
        ary.add(new CItem(vecDeleted, i));
    for (int i = 3; i < 8; ++i)
        aryOther.add(new CItem(vecDeleted, i));
    EXPECT_TRUE(ary.takeAll(aryOther));
    EXPECT_EQ(ary.getSize(), 8u);
    EXPECT_EQ(ary.getCapacity(), 11u) << "by the growth series: 4, 7, 11";
    for (unsigned int i = 0; i < 8; ++i)
        EXPECT_EQ(ary[i]->m_iNumber, static_cast<int>(i));
    EXPECT_EQ(aryOther.getSize(), 0u);
    EXPECT_EQ(aryOther.getCapacity(), 0u);
    EXPECT_EQ(aryOther.m_ppData, nullptr);
    EXPECT_TRUE(aryOther.isOwn());
    EXPECT_FALSE(ary.takeAll(ary)) << "from itself nothing";
    EXPECT_EQ(ary.getSize(), 8u);
    EXPECT_TRUE(vecDeleted.empty());
}

TEST(CObjectArray, WhatOneOfTheTwoDoesNotOwnStaysInBoth) {
    VecInt vecDeleted;
    CItem item(vecDeleted, 1);
    CObjectArray<CItem> ary, aryOther;
    ary.setOwn(false);
    aryOther.setOwn(false);
    aryOther.add(&item);
    EXPECT_TRUE(ary.takeAll(aryOther));
    EXPECT_EQ(ary[0], &item);
    EXPECT_EQ(aryOther[0], &item);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST(CObjectArray, WithoutMemoryItTakesNothingOfAnother) {
    const tagChildResult result = runInChild([] {
        VecInt vecDeleted;
        CItem item(vecDeleted, 1);
        CObjectArray<CItem> ary, aryOther;
        ary.setOwn(false);
        aryOther.setOwn(false);
        ary.add(&item);
        ary.add(&item);
        ary.add(&item); // one slot is left
        for (int i = 0; i < 5000; ++i)
            aryOther.add(&item);
        if (!limitMemory(0))
            return 1;
        useUpMemory();
        const bool bTaken = ary.takeAll(aryOther);
        unlimitMemory();
        return !bTaken && ary.getSize() == 3 && aryOther.getSize() == 5000 ? 0 : 2;
    });
    EXPECT_EQ(result.iExitCode, 0);
}
#endif
} // namespace
