#include <Orlix/foundation/CDataList.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace Orlix;

namespace {

using VecInt = std::vector<int>;

class COpenList : public CDataList<int> {
public:
    using CDataList<int>::m_pHead;
    using CDataList<int>::m_pTail;
    using CDataList<int>::m_pCursor;
    using CDataList<int>::m_uiSize;
};

VecInt readForward(CDataList<int>& lst) {
    VecInt vec;
    lst.toHead();
    while (const int* pValue = lst.next())
        vec.push_back(*pValue);
    return vec;
}

VecInt readBackward(CDataList<int>& lst) {
    VecInt vec;
    lst.toTail();
    while (const int* pValue = lst.previous())
        vec.push_back(*pValue);
    return vec;
}

void fill(CDataList<int>& lst, const VecInt& vec) {
    for (int iValue : vec)
        lst.add(iValue);
}

TEST(CDataList, FirstElementIsHeadTailAndCursor) {
    COpenList lst;
    EXPECT_EQ(lst.m_pHead, nullptr);
    EXPECT_EQ(lst.m_pTail, nullptr);
    EXPECT_EQ(lst.m_pCursor, nullptr);
    lst.add(5);
    EXPECT_NE(lst.m_pHead, nullptr);
    EXPECT_EQ(lst.m_pHead, lst.m_pTail);
    EXPECT_EQ(lst.m_pHead, lst.m_pCursor);
    lst.add(6);
    EXPECT_EQ(lst.m_pCursor, lst.m_pHead);
    EXPECT_EQ(lst.m_pHead->pPrev, nullptr);
    EXPECT_EQ(lst.m_pTail->pNext, nullptr);
    EXPECT_EQ(lst.m_pTail->pPrev, lst.m_pHead);
}

TEST(CDataList, GetAtReachesEveryPlaceAndNothingBeyond) {
    CDataList<int> lst;
    EXPECT_EQ(lst.getAt(0), nullptr);
    fill(lst, {10, 11, 12, 13, 14, 15});
    for (unsigned int i = 0; i < 6; ++i)
        EXPECT_EQ(*lst.getAt(i), static_cast<int>(10 + i));
    EXPECT_EQ(lst.getAt(6), nullptr);
}

TEST(CDataList, GetAtTheMiddleComesFromTheTail) {
    COpenList lst;
    fill(lst, {0, 1, 2, 3, 4, 5});
    // A wrong link in the first half is met only by a walk from the head.
    auto* const pThird = lst.m_pHead->pNext->pNext;
    lst.m_pHead->pNext->pNext = nullptr;
    EXPECT_EQ(*lst.getAt(3), 3);
    lst.m_pHead->pNext->pNext = pThird;
    auto* const pFourth = pThird->pNext;
    pFourth->pPrev = nullptr;
    EXPECT_EQ(*lst.getAt(2), 2) << "below the half it comes from the head";
    pFourth->pPrev = pThird;
}

TEST(CDataList, RemoveHeadGivesTheValuesInOrderAndThenDefaults) {
    COpenList lst;
    fill(lst, {1, 2});
    EXPECT_EQ(lst.removeHead(), 1);
    EXPECT_EQ(lst.removeHead(), 2);
    EXPECT_EQ(lst.m_pHead, nullptr);
    EXPECT_EQ(lst.m_pTail, nullptr);
    EXPECT_EQ(lst.m_pCursor, nullptr);
    EXPECT_EQ(lst.removeHead(), 0);
    EXPECT_EQ(lst.getSize(), 0u);
}

TEST(CDataList, RemoveTakesTheHeadThenTheTailThenTheFirstBetween) {
    CDataList<int> lst;
    fill(lst, {7, 1, 7, 2, 7, 3, 7});
    lst.remove(7);
    EXPECT_EQ(readForward(lst), (VecInt{1, 7, 2, 7, 3, 7}));
    lst.remove(7);
    EXPECT_EQ(readForward(lst), (VecInt{1, 7, 2, 7, 3}));
    lst.remove(7);
    EXPECT_EQ(readForward(lst), (VecInt{1, 2, 7, 3}));
    lst.remove(99);
    EXPECT_EQ(readBackward(lst), (VecInt{3, 7, 2, 1}));
}

TEST(CDataList, AWalkThatRemovesWhatItReadsVisitsEachOnce) {
    CDataList<int> lst;
    fill(lst, {1, 2, 3, 4, 5});
    VecInt vec;
    lst.toHead();
    while (const int* pValue = lst.next()) {
        vec.push_back(*pValue);
        if (*pValue % 2 == 1)
            lst.remove(*pValue);
    }
    EXPECT_EQ(vec, (VecInt{1, 2, 3, 4, 5}));
    EXPECT_EQ(readForward(lst), (VecInt{2, 4}));
}

TEST(CDataList, RemovingTheNodeUnderTheCursorMovesItOn) {
    CDataList<int> lst;
    fill(lst, {1, 2, 3});
    lst.toHead();
    EXPECT_EQ(*lst.next(), 1);
    lst.remove(2);
    EXPECT_EQ(*lst.next(), 3);
    EXPECT_EQ(lst.next(), nullptr);
    EXPECT_EQ(lst.next(), nullptr);
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST(CDataList, WithoutMemoryAnAddedValueIsDropped) {
    const OrlixTest::tagChildResult result = OrlixTest::runInChild([] {
        COpenList lst;
        if (!OrlixTest::limitMemory(4000000))
            return 1;
        lst.add(0); // so that the pool has its first block
        OrlixTest::useUpMemory();
        for (unsigned int i = 1; i < 1000000 && lst.getSize() == i; ++i)
            lst.add(static_cast<int>(i));
        const unsigned int uiSize = lst.getSize();
        lst.add(-1);
        if (uiSize == 1000000 || lst.getSize() != uiSize || lst.m_pTail->tValue != static_cast<int>(uiSize) - 1)
            return 2;
        lst.removeHead();
        lst.add(-2); // into the node that was given back
        return lst.getSize() == uiSize && lst.m_pTail->tValue == -2 ? 0 : 3;
    });
    EXPECT_EQ(result.iExitCode, 0);
}
#endif

TEST(CDataList, BehavesLikeAVector) {
    std::mt19937 random(7);
    CDataList<int> lst;
    VecInt vec;
    for (int i = 0; i < 5000; ++i) {
        const unsigned int uiIndex = random() % 12;
        switch (random() % 5) {
        case 0:
            lst.removeAt(uiIndex);
            if (uiIndex < vec.size())
                vec.erase(vec.begin() + uiIndex);
            break;
        case 1:
            ASSERT_EQ(lst.removeHead(), vec.empty() ? 0 : vec.front());
            if (!vec.empty())
                vec.erase(vec.begin());
            break;
        case 2:
            if (random() % 50 == 0) {
                lst.clear();
                vec.clear();
            }
            break;
        default:
            lst.add(i);
            vec.push_back(i);
        }
        ASSERT_EQ(readForward(lst), vec);
        VecInt vecBack = readBackward(lst);
        std::reverse(vecBack.begin(), vecBack.end());
        ASSERT_EQ(vecBack, vec);
        ASSERT_EQ(lst.getSize(), vec.size());
    }
}
} // namespace
