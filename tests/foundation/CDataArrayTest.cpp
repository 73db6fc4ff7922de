#include <Orlix/foundation/CDataArray.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <memory>
#include <random>
#include <vector>

using namespace Orlix;

namespace {

/** A class with a constructor, which counts what lives and what was assigned. */
struct CTracked {
    ORLIX_HEAP_CLASS(L"CTracked")
    CTracked() { ++s_iAlive; }
    CTracked(int iSetValue) : iValue(iSetValue) { ++s_iAlive; }
    CTracked(const CTracked& other) : iValue(other.iValue) { ++s_iAlive; }
    CTracked& operator=(const CTracked& other) {
        iValue = other.iValue;
        ++s_iAssigned;
        return *this;
    }
    ~CTracked() {
        const_cast<volatile int&>(iValue) = -1; // what is read after the end shows
        --s_iAlive;
        if (s_pDestroyed)
            s_pDestroyed->push_back(this);
    }
    bool operator==(const CTracked& other) const { return iValue == other.iValue; }
    int iValue = 7;
    static inline int s_iAlive = 0;
    static inline int s_iAssigned = 0;
    static inline std::vector<const CTracked*>* s_pDestroyed = nullptr;
};

/** A class of a host that has no operators of its own. */
struct tagForeign {
    tagForeign() = default;
    explicit tagForeign(int iSetValue) : iValue(iSetValue) {}
    tagForeign(const tagForeign&) = default;
    tagForeign& operator=(const tagForeign&) = default;
    ~tagForeign() {
        if (s_pDestroyed)
            s_pDestroyed->push_back(this);
    }
    int iValue = 3;
    static inline std::vector<const tagForeign*>* s_pDestroyed = nullptr;
    bool operator==(const tagForeign& other) const { return iValue == other.iValue; }
};

template <class T> class COpenArray : public CDataArray<T> {
public:
    using CDataArray<T>::CDataArray;
    using CDataArray<T>::m_pData;
    using CDataArray<T>::m_uiCursor;
    using CDataArray<T>::m_uiCapacity;
};

TEST(CDataArray, NewArrayHasNoBuffer) {
    COpenArray<int> ary;
    EXPECT_EQ(ary.m_pData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 0u);
    EXPECT_EQ(ary.getSize(), 0u);
}

TEST(CDataArray, CapacityFollowsTheSeries) {
    const unsigned int aryExpected[] = {1, 2, 4, 4, 7, 7, 7, 11, 11, 11, 11, 17, 17, 17, 17, 17, 17, 26};
    CDataArray<int> ary;
    for (unsigned int i = 0; i < std::size(aryExpected); ++i) {
        ary.add(static_cast<int>(i));
        EXPECT_EQ(ary.getCapacity(), aryExpected[i]) << i;
    }
}

TEST(CDataArray, InitialCapacityIsTakenExactlyAndGrowsFromThere) {
    COpenArray<int> ary(4);
    EXPECT_NE(ary.m_pData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 4u);
    for (int i = 0; i < 5; ++i)
        ary.add(i);
    EXPECT_EQ(ary.getCapacity(), 7u);
    for (int i = 5; i < 8; ++i)
        ary.add(i);
    EXPECT_EQ(ary.getCapacity(), 11u);
}

TEST(CDataArray, GrowthStopsWhereTheSeriesLeaves32Bits) {
    EXPECT_EQ(growCapacity(0, 0), 0u);
    EXPECT_EQ(growCapacity(0, 26), 26u);
    EXPECT_EQ(growCapacity(0, 27), 40u);
    EXPECT_EQ(growCapacity(0, 0xFFFFFFFFu), 0u);
    EXPECT_EQ(growCapacity(0x60000000u, 0x60000001u), 0u) << "times 3 wraps";
}

TEST(CDataArray, OneGrowthStepServesMany) {
    CDataArray<int> ary;
    ary.add(1);
    ary.ensureCapacity(10);
    EXPECT_EQ(ary.getCapacity(), 11u);
    ary.ensureCapacity(3);
    EXPECT_EQ(ary.getCapacity(), 11u);
    EXPECT_EQ(ary[0], 1);
}

TEST(CDataArray, ReadPastTheEndGivesAFreshDefault) {
    CDataArray<CTracked> ary;
    for (int i = 0; i < 3; ++i)
        ary.add(CTracked(i));
    EXPECT_EQ(ary[5].iValue, 7);
    ary[5].iValue = 99;
    EXPECT_EQ(ary.getAt(3).iValue, 7);
    EXPECT_EQ(ary.getSize(), 3u);
    EXPECT_EQ(ary.getCapacity(), 4u);
    const CDataArray<CTracked>& aryConst = ary;
    EXPECT_EQ(aryConst[3].iValue, 7);
    EXPECT_EQ(aryConst.getAt(2).iValue, 2);
}

TEST(CDataArray, DefaultOfANumberIsZeroWhateverLayThere) {
    alignas(CDataArray<int>) unsigned char aryBytes[sizeof(CDataArray<int>)];
    std::memset(aryBytes, 0xA5, sizeof(aryBytes));
    const auto* const pArray = ::new (aryBytes) CDataArray<int>;
    EXPECT_EQ((*pArray)[0], 0);
    pArray->~CDataArray();
}

TEST(CDataArray, FindGivesTheFirstMatch) {
    CDataArray<int> ary;
    EXPECT_EQ(ary.find(1), -1);
    for (int iValue : {4, 5, 4})
        ary.add(iValue);
    EXPECT_EQ(ary.find(4), 0);
    EXPECT_EQ(ary.find(5), 1);
    EXPECT_EQ(ary.find(6), -1);
}

TEST(CDataArray, RemovalKeepsOrderAndCapacityAndClearsTheSlot) {
    COpenArray<int> ary;
    for (int i = 1; i <= 4; ++i)
        ary.add(i);
    ary.removeAt(4);
    EXPECT_EQ(ary.getSize(), 4u);
    ary.removeAt(1);
    EXPECT_EQ(ary.getSize(), 3u);
    EXPECT_EQ(ary.getCapacity(), 4u);
    EXPECT_EQ(ary[0], 1);
    EXPECT_EQ(ary[1], 3);
    EXPECT_EQ(ary[2], 4);
    EXPECT_EQ(ary.m_pData[3], 0);
    ary.remove(4);
    ary.remove(17);
    EXPECT_EQ(ary.getSize(), 2u);
    EXPECT_EQ(ary.m_pData[2], 0);
}

TEST(CDataArray, ClearGivesTheBufferBack) {
    COpenArray<int> ary(3);
    ary.add(1);
    ary.m_uiCursor = 2;
    ary.clear();
    EXPECT_EQ(ary.m_pData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 0u);
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_EQ(ary.m_uiCursor, 0u);
}

TEST(CDataArray, AnElementOfTheArrayItselfIsAddedWhole) {
    CDataArray<CTracked> ary;
    ary.add(CTracked(41));
    for (int i = 0; i < 100; ++i)
        ary.add(ary[0]);
    for (unsigned int i = 0; i < ary.getSize(); ++i)
        EXPECT_EQ(ary[i].iValue, 41);
}

TEST(CDataArray, EverySlotOfAClassIsConstructedAndCopiedByAssignment) {
    const int iBefore = CTracked::s_iAlive;
    {
        COpenArray<CTracked> ary(4);
        EXPECT_EQ(CTracked::s_iAlive, iBefore + 4 + 1) << "all slots and the default element";
        CTracked value(1);
        for (int i = 0; i < 4; ++i)
            ary.add(value);
        CTracked::s_iAssigned = 0;
        std::vector<const CTracked*> vecDestroyed;
        CTracked::s_pDestroyed = &vecDestroyed;
        const CTracked* const pOld = ary.m_pData;
        ary.ensureCapacity(5);
        CTracked::s_pDestroyed = nullptr;
        EXPECT_EQ(CTracked::s_iAssigned, 4);
        ASSERT_EQ(vecDestroyed.size(), 4u);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(vecDestroyed[i], pOld + (3 - i)) << "the last one goes first";
        EXPECT_EQ(CTracked::s_iAlive, iBefore + 7 + 1 + 1);
    }
    EXPECT_EQ(CTracked::s_iAlive, iBefore);
}

TEST(CDataArray, AClassWithoutOperatorsIsServedToo) {
    COpenArray<tagForeign> ary(2);
    EXPECT_EQ(ary[0].iValue, 3);
    for (int i = 0; i < 8; ++i)
        ary.add(tagForeign{i});
    EXPECT_EQ(ary.find(tagForeign{7}), 7);
    ASSERT_EQ(ary.getCapacity(), 11u);
    for (unsigned int i = 8; i < 11; ++i)
        EXPECT_EQ(ary.m_pData[i].iValue, 3) << "all slots are constructed";
    std::vector<const tagForeign*> vecDestroyed;
    tagForeign::s_pDestroyed = &vecDestroyed;
    const tagForeign* const pOld = ary.m_pData;
    ary.clear();
    tagForeign::s_pDestroyed = nullptr;
    ASSERT_EQ(vecDestroyed.size(), 11u);
    for (std::size_t i = 0; i < 11; ++i)
        EXPECT_EQ(vecDestroyed[i], pOld + (10 - i)) << "the last one goes first";
}

TEST(CDataArray, AnImpossibleGrowthDropsTheElementAndKeepsItsBelief) {
    struct tagHuge {
        char aryBytes[1 << 20];
    };
    // 4096 slots of 1 MiB do not fit 32 bits of bytes: the buffer is never made.
    COpenArray<tagHuge> ary(4096);
    EXPECT_EQ(ary.m_pData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 4096u);
    const auto pElement = std::make_unique<tagHuge>();
    ary.add(*pElement);
    EXPECT_EQ(ary.getSize(), 0u) << "dropped, and nothing was written";
    EXPECT_EQ(ary.getCapacity(), 4096u);
}

/** A record with an allocation of its own that can be made to fail. */
struct tagScarce {
    static void* operator new[](std::size_t uiSize) noexcept {
        ++s_iAllocated;
        return s_bFail ? nullptr : CMemory::malloc(static_cast<unsigned int>(uiSize), 0);
    }
    static void operator delete[](void* pBlock) noexcept {
        if (pBlock)
            CMemory::free(pBlock);
    }
    bool operator==(const tagScarce& other) const { return iValue == other.iValue; }
    int iValue;
    static inline bool s_bFail = false;
    static inline int s_iAllocated = 0;
};

// Kept as it is: the capacity is written before the allocation, so the array believes in slots that it does not have.
TEST(CDataArray, AFailedGrowthDropsTheElementAndTheNextAddTriesAgain) {
    tagScarce::s_bFail = false;
    COpenArray<tagScarce> ary;
    ary.add(tagScarce{1});
    ary.add(tagScarce{2});
    tagScarce::s_bFail = true;
    for (int i = 0; i < 3; ++i) {
        ary.add(tagScarce{3});
        EXPECT_EQ(ary.getSize(), 2u);
        EXPECT_EQ(ary.getCapacity(), 4u);
    }
    EXPECT_EQ(ary[0].iValue, 1);
    EXPECT_EQ(ary[1].iValue, 2);
    EXPECT_EQ(ary[2].iValue, 0);
    ary.removeAt(0);
    ary.add(tagScarce{4}); // there is room for this one
    EXPECT_EQ(ary.getSize(), 2u);
    tagScarce::s_bFail = false;
    ary.add(tagScarce{5});
    EXPECT_EQ(ary.getSize(), 3u);
    EXPECT_EQ(ary.getCapacity(), 4u);
    EXPECT_EQ(ary.find(tagScarce{2}), 0);
    EXPECT_EQ(ary.find(tagScarce{5}), 2);
}

TEST(CDataArray, AFailedFirstBufferIsTriedAgainAtTheNextAdd) {
    tagScarce::s_bFail = true;
    COpenArray<tagScarce> ary(3);
    EXPECT_EQ(ary.m_pData, nullptr);
    EXPECT_EQ(ary.getCapacity(), 3u);
    tagScarce::s_bFail = false;
    ary.add(tagScarce{1});
    EXPECT_EQ(ary.getSize(), 1u);
    EXPECT_EQ(ary.getCapacity(), 3u);
}

TEST(CDataArray, ARecordWithItsOwnArrayOperatorIsAllocatedByIt) {
    tagScarce::s_bFail = false;
    tagScarce::s_iAllocated = 0;
    CDataArray<tagScarce> ary(4);
    EXPECT_EQ(tagScarce::s_iAllocated, 1);
    for (int i = 0; i < 5; ++i)
        ary.add(tagScarce{i});
    EXPECT_EQ(tagScarce::s_iAllocated, 2);
}

TEST(CDataArray, NumbersAreAPlainBlockThatIsGivenBack) {
    const void* pBlock = nullptr;
    {
        const COpenArray<unsigned int> ary(10);
        pBlock = ary.m_pData;
    }
    void* const pAgain = CMemory::malloc(40, 0); // a freed unit is the next one of its size
    EXPECT_EQ(pAgain, pBlock);
    CMemory::free(pAgain);
}

TEST(CDataArray, RemoveTakesTheFirstMatchOnly) {
    CDataArray<int> ary;
    for (int iValue : {4, 5, 4, 6})
        ary.add(iValue);
    ary.remove(4);
    EXPECT_EQ(ary.getSize(), 3u);
    EXPECT_EQ(ary[0], 5);
    EXPECT_EQ(ary[1], 4);
    EXPECT_EQ(ary[2], 6);
}

TEST(CDataArray, RemovalGivesTheFreedSlotTheDefault) {
    COpenArray<CTracked> ary;
    ary.add(CTracked(1));
    ary.add(CTracked(2));
    ary[9].iValue = 99; // gone with the next read or removal
    ary.removeAt(0);
    EXPECT_EQ(ary.m_pData[0].iValue, 2);
    EXPECT_EQ(ary.m_pData[1].iValue, 7);
    ary.removeAt(0);
    EXPECT_EQ(ary.m_pData[0].iValue, 7);
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_EQ(ary.getCapacity(), 2u);
}

TEST(CDataArray, NumberOfItsOwnIsTakenBeforeTheBufferGoes) {
    CDataArray<int> ary;
    ary.add(41);
    for (unsigned int i = 0; i < 26;
         ++i) // past six growth steps; a late read of the old buffer is the sanitizer's find
        ary.add(ary[0]);
    for (unsigned int i = 0; i < 27; ++i)
        EXPECT_EQ(ary[i], 41) << i;
}

TEST(CDataArray, BehavesLikeAVector) {
    std::mt19937 random(20211121);
    CDataArray<int> ary;
    std::vector<int> vec;
    for (int i = 0; i < 20000; ++i) {
        const int iValue = static_cast<int>(random() % 50);
        switch (random() % 8) {
        case 0:
            if (!vec.empty()) {
                const unsigned int uiIndex = random() % (vec.size() + 2);
                ary.removeAt(uiIndex);
                if (uiIndex < vec.size())
                    vec.erase(vec.begin() + uiIndex);
            }
            break;
        case 1: {
            ary.remove(iValue);
            const auto found = std::find(vec.begin(), vec.end(), iValue);
            if (found != vec.end())
                vec.erase(found);
            break;
        }
        case 2:
            if (random() % 200 == 0) {
                ary.clear();
                vec.clear();
            }
            break;
        default:
            ary.add(iValue);
            vec.push_back(iValue);
        }
        ASSERT_EQ(ary.getSize(), vec.size());
    }
    for (unsigned int i = 0; i < vec.size(); ++i)
        ASSERT_EQ(ary[i], vec[i]);
}
} // namespace
