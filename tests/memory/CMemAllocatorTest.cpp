#include <Orlix/memory/CMemAllocator.h>

#include <Orlix/foundation/CAutoSync.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

using namespace Orlix;
using namespace OrlixTest;

namespace {

// Shows the fields, and releases the pools with the object.
class CProbe : public CMemAllocator {
public:
    CProbe() = default;
    CProbe(unsigned int uiAlignment, unsigned int uiPoolCount) { initialize(uiAlignment, uiPoolCount); }
    ~CProbe() override { unInitialize(); }

    unsigned int getMask() const { return m_uiAlignmentMask; }
    unsigned int getPoolHeader() const { return m_uiPoolBlockHeaderSize; }
    unsigned int getBigHeader() const { return m_uiBigBlockHeaderSize; }
    unsigned int getPoolCount() const { return m_uiPoolCount; }
    tagMemPool* getPools() const { return m_pPools; }
    CSyncObject& getLock() { return m_syncPools; }
};

template <class T> T readBefore(const void* pBlock, unsigned int uiBytes) {
    T value;
    std::memcpy(&value, static_cast<const unsigned char*>(pBlock) - uiBytes, sizeof(T));
    return value;
}

unsigned int lowBits(const void* pAddress) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pAddress));
}

std::string invalidPointerLine(const void* pBlock) {
    char aryLine[160];
    std::snprintf(aryLine, sizeof(aryLine),
                  "[Warning][OrlixEngine] Free(0x%x): Invalid Pointer, Maybe it had been freed or crashed.\n",
                  lowBits(pBlock));
    return aryLine;
}

TEST(CMemAllocator, InitializeRoundsTheAlignmentAndSizesTheHeaders) {
    const struct {
        unsigned int uiAlignment, uiMask, uiPoolHeader, uiBigHeader;
    } aryRow[] = {
        {0, 3, 24, 16},   {1, 1, 24, 16},   {2, 1, 24, 16},   {3, 3, 24, 16},        {4, 3, 24, 16},
        {5, 5, 24, 16},   {7, 7, 24, 16},   {8, 7, 24, 16},   {15, 15, 32, 16},      {16, 15, 32, 16},
        {32, 31, 48, 32}, {64, 63, 48, 64}, {63, 63, 48, 64}, {UINT_MAX, 3, 24, 16}, {UINT_MAX - 38, 3, 24, 16}};
    for (const auto& row : aryRow) {
        const CProbe probe(row.uiAlignment, 0);
        EXPECT_EQ(probe.getMask(), row.uiMask) << row.uiAlignment;
        EXPECT_EQ(probe.getPoolHeader(), row.uiPoolHeader) << row.uiAlignment;
        EXPECT_EQ(probe.getBigHeader(), row.uiBigHeader) << row.uiAlignment;
    }
}

TEST(CMemAllocator, StartsWithoutPoolsAndWithTheDefaults) {
    const CProbe probe;
    EXPECT_EQ(probe.getPools(), nullptr);
    EXPECT_EQ(probe.getPoolCount(), 0u);
    EXPECT_EQ(probe.getMask(), 3u);
    EXPECT_EQ(probe.getPoolHeader(), 24u);
    EXPECT_EQ(probe.getBigHeader(), 16u);
}

TEST(CMemAllocator, InitializeClearsTheTable) {
    const CProbe probe(4, 3);
    ASSERT_EQ(probe.getPoolCount(), 3u);
    for (unsigned int i = 0; i < 3; ++i) {
        EXPECT_EQ(probe.getPools()[i].uiUnitSize, 0u);
        EXPECT_EQ(probe.getPools()[i].uiDataSize, 0u);
        EXPECT_EQ(probe.getPools()[i].pBlocks, nullptr);
    }
}

TEST(CMemAllocator, RecordsAreLaidOutAsTheHeadersCount) {
    using tagPool = CMemAllocator::tagMemPool;
    using tagBlock = CMemAllocator::tagMemPoolBlock;
    const std::size_t aryPool[] = {offsetof(tagPool, uiUnitSize),     offsetof(tagPool, uiDataSize),
                                   offsetof(tagPool, uiInitialCount), offsetof(tagPool, uiGrowCount),
                                   offsetof(tagPool, uiTotalCount),   offsetof(tagPool, pBlocks),
                                   offsetof(tagPool, pFreeUnits),     sizeof(tagPool)};
    EXPECT_EQ(std::vector<std::size_t>(std::begin(aryPool), std::end(aryPool)),
              (std::vector<std::size_t>{0, 4, 8, 12, 16, 24, 32, 40}));
    const std::size_t aryBlock[] = {offsetof(tagBlock, uiSize), offsetof(tagBlock, uiUnitCount),
                                    offsetof(tagBlock, uiUsedCount), offsetof(tagBlock, pNext), sizeof(tagBlock)};
    EXPECT_EQ(std::vector<std::size_t>(std::begin(aryBlock), std::end(aryBlock)),
              (std::vector<std::size_t>{0, 4, 8, 16, 24}));
}

TEST(CMemAllocator, InitializeAgainStartsWithAnEmptyTable) {
    CProbe probe(16, 2);
    probe.createPool(0, 16, 4, 4);
    probe.createPool(1, 32, 4, 4);
    EXPECT_NE(probe.malloc(20), nullptr); // its block goes with the old table, which the address sanitizer watches
    probe.initialize(0, 1);
    ASSERT_EQ(probe.getPoolCount(), 1u);
    EXPECT_EQ(probe.getPools()[0].uiUnitSize, 0u);
    EXPECT_EQ(probe.getPools()[0].pBlocks, nullptr);
    EXPECT_EQ(probe.getMask(), 15u) << "0 keeps the alignment";
    probe.initialize(4, 0);
    EXPECT_EQ(probe.getPools(), nullptr);
    EXPECT_EQ(probe.getMask(), 3u);
}

TEST(CMemAllocator, CreatePoolAgainForgetsWhatThePoolHeld) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 0, 0);
    CMemAllocator::tagMemPool& pool = probe.getPools()[0];
    unsigned char aryUnit[24] = {};
    pool.uiTotalCount = 9;
    pool.pFreeUnits = aryUnit;
    probe.createPool(0, 12, 3, 2);
    EXPECT_EQ(pool.uiDataSize, 12u);
    EXPECT_EQ(pool.uiTotalCount, 0u);
    EXPECT_EQ(pool.pFreeUnits, nullptr);
    EXPECT_EQ(pool.pBlocks, nullptr);
}

TEST(CMemAllocator, AddPoolBlockGrowsWithoutCarving) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 3, 2);
    CMemAllocator::tagMemPool& pool = probe.getPools()[0];
    EXPECT_TRUE(probe.addPoolBlock(&pool));
    const auto* const pFirst = pool.pBlocks;
    EXPECT_EQ(pFirst->uiUnitCount, 3u);
    EXPECT_TRUE(probe.addPoolBlock(&pool));
    EXPECT_EQ(pool.pBlocks->pNext, pFirst);
    EXPECT_EQ(pool.pBlocks->uiUnitCount, 2u);
    EXPECT_EQ(pool.pBlocks->uiUsedCount, 0u);
    EXPECT_EQ(pool.uiTotalCount, 5u);
    // Only the newest block is carved, whatever the older ones still hold.
    for (int i = 0; i < 2; ++i)
        EXPECT_NE(probe.allocUnit(&pool), nullptr);
    EXPECT_EQ(pool.pBlocks->uiUsedCount, 2u);
    EXPECT_NE(probe.allocUnit(&pool), nullptr);
    EXPECT_EQ(pool.uiTotalCount, 7u);
    EXPECT_EQ(pFirst->uiUsedCount, 0u);
}

TEST(CMemAllocator, BigBlocksAndInvalidPointersPassAHeldLock) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 4, 4);
    const tagChildResult result = runInChild([&] {
        const CAutoSync sync(probe.getLock());
        std::thread([&] { // hangs if one of them took the lock
            void* const pBig = probe.malloc(9);
            probe.free(pBig);
            alignas(16) unsigned char aryForeign[64] = {};
            probe.free(aryForeign + 32);
        })
            .join();
        return 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
}

TEST(CMemAllocator, UnitsWaitForTheLockBothWays) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 4, 4);
    std::atomic<bool> bReleased{false};
    for (const bool bFree : {false, true}) {
        void* pUnit = bFree ? probe.malloc(8) : nullptr;
        bool bAfterRelease = false;
        std::thread other;
        bReleased = false;
        {
            const CAutoSync sync(probe.getLock());
            other = std::thread([&] {
                if (bFree)
                    probe.free(pUnit);
                else
                    pUnit = probe.malloc(8);
                bAfterRelease = bReleased;
            });
            std::this_thread::sleep_for(std::chrono::milliseconds(20)); // time to come in wrongly
            bReleased = true;
        }
        other.join();
        EXPECT_TRUE(bAfterRelease) << (bFree ? "free" : "malloc");
    }
}

TEST(CMemAllocator, CreatePoolRoundsTheSizeUpForTheCaller) {
    const struct {
        unsigned int uiAlignment, uiSize, uiUnit, uiData;
    } aryRow[] = {{4, 0, 16, 0}, {4, 1, 20, 4},   {4, 4, 20, 4},      {4, 5, 24, 8},
                  {4, 8, 24, 8}, {16, 8, 32, 16}, {4, 512, 528, 512}, {16, 17, 48, 32}};
    for (const auto& row : aryRow) {
        CProbe probe(row.uiAlignment, 1);
        probe.createPool(0, row.uiSize, 7, 5);
        const CMemAllocator::tagMemPool& pool = probe.getPools()[0];
        EXPECT_EQ(pool.uiUnitSize, row.uiUnit) << row.uiSize;
        EXPECT_EQ(pool.uiDataSize, row.uiData) << row.uiSize;
        EXPECT_EQ(pool.uiInitialCount, 7u);
        EXPECT_EQ(pool.uiGrowCount, 5u);
        EXPECT_EQ(pool.uiTotalCount, 0u);
        EXPECT_EQ(pool.pBlocks, nullptr) << "a pool costs nothing before its first use";
        EXPECT_EQ(pool.pFreeUnits, nullptr);
    }
}

TEST(CMemAllocator, CreatePoolIgnoresAnIndexPastTheTable) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 1, 1);
    probe.createPool(1, 16, 1, 1);
    probe.createPool(UINT_MAX, 16, 1, 1);
    EXPECT_EQ(probe.getPools()[0].uiDataSize, 8u);
    EXPECT_EQ(probe.findFitPool(9), nullptr);
}

TEST(CMemAllocator, FindFitPoolGivesTheSmallestThatFits) {
    const std::vector<std::vector<unsigned int>> aryTable = {{8},
                                                             {8, 16},
                                                             {4, 512},
                                                             {4, 8, 12, 100, 104, 4000},
                                                             {64, 128, 256, 512, 1024, 2048, 4096},
                                                             {0, 4, 8, 16, 24, 32, 500}};
    for (const auto& arySize : aryTable) {
        CProbe probe(4, static_cast<unsigned int>(arySize.size()));
        for (unsigned int i = 0; i < arySize.size(); ++i)
            probe.createPool(i, arySize[i], 1, 1);
        for (unsigned int uiSize = 0; uiSize <= arySize.back() + 9; ++uiSize) {
            CMemAllocator::tagMemPool* pExpected = nullptr;
            for (unsigned int i = 0; i < arySize.size() && !pExpected; ++i)
                if (arySize[i] >= uiSize)
                    pExpected = &probe.getPools()[i];
            ASSERT_EQ(probe.findFitPool(uiSize), pExpected) << uiSize << " of " << arySize.size() << " pools";
        }
        EXPECT_EQ(probe.findFitPool(UINT_MAX), nullptr);
    }
}

TEST(CMemAllocator, FindFitPoolOfTheUsualTable) {
    CProbe probe(4, 64);
    for (unsigned int i = 0; i < 64; ++i)
        probe.createPool(i, 8 * (i + 1), 1, 1);
    EXPECT_EQ(probe.findFitPool(0), &probe.getPools()[0]);
    for (unsigned int uiSize = 1; uiSize <= 512; ++uiSize)
        ASSERT_EQ(probe.findFitPool(uiSize), &probe.getPools()[(uiSize - 1) / 8]) << uiSize;
    EXPECT_EQ(probe.findFitPool(513), nullptr);
}

TEST(CMemAllocator, FindFitPoolStopsAtTheFirstEqualSizeItMeets) {
    CProbe probe(4, 5); // the middles are 2, then 0 or 3
    const unsigned int arySize[] = {8, 8, 8, 16, 16};
    for (unsigned int i = 0; i < 5; ++i)
        probe.createPool(i, arySize[i], 1, 1);
    EXPECT_EQ(probe.findFitPool(8), &probe.getPools()[2]);
    EXPECT_EQ(probe.findFitPool(16), &probe.getPools()[4]) << "the last one is looked at first";
    EXPECT_EQ(probe.findFitPool(7), &probe.getPools()[0]);
    EXPECT_EQ(probe.findFitPool(9), &probe.getPools()[3]);
}

TEST(CMemAllocator, WithoutPoolsFindsNoneAndServesBigBlocks) {
    CProbe probe;
    EXPECT_EQ(probe.findFitPool(0), nullptr);
    void* const pBlock = probe.malloc(8);
    ASSERT_NE(pBlock, nullptr);
    EXPECT_EQ(readBefore<void*>(pBlock, 16), nullptr);
    probe.free(pBlock);
}

TEST(CMemAllocator, RequestGoesToItsPoolAndOneByteMoreToTheNext) {
    CProbe probe(4, 2);
    probe.createPool(0, 8, 4, 4);
    probe.createPool(1, 16, 4, 4);
    const struct { unsigned int uiSize, uiPool; } aryRow[] = {{0, 0}, {1, 0}, {8, 0}, {9, 1}, {16, 1}};
    for (const auto& row : aryRow) {
        void* const pBlock = probe.malloc(row.uiSize);
        EXPECT_EQ(readBefore<CMemAllocator::tagMemPool*>(pBlock, 16), &probe.getPools()[row.uiPool]) << row.uiSize;
        probe.free(pBlock);
    }
    void* const pBig = probe.malloc(17);
    EXPECT_EQ(readBefore<void*>(pBig, 16), nullptr);
    probe.free(pBig);
}

TEST(CMemAllocator, HeaderHoldsTheOwnerAndTheCheckWord) {
    for (const unsigned int uiAlignment : {4u, 16u, 64u}) {
        CProbe probe(uiAlignment, 1);
        probe.createPool(0, 8, 4, 4);
        for (const unsigned int uiSize : {8u, 5000u}) {
            void* const pBlock = probe.malloc(uiSize);
            const unsigned char* const pHeader = static_cast<unsigned char*>(pBlock) - 16;
            EXPECT_EQ(readBefore<void*>(pBlock, 16), uiSize == 8 ? probe.getPools() : nullptr);
            EXPECT_EQ(readBefore<unsigned int>(pBlock, 8), lowBits(pHeader) ^ 0x837A46C2u);
            std::memset(pBlock, 0xA5, uiSize);
            probe.free(pBlock);
        }
    }
}

TEST(CMemAllocator, UnitsFollowTheBlockHeaderOneUnitSizeApart) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 3, 2);
    const unsigned char* const pFirst = static_cast<unsigned char*>(probe.malloc(8));
    const CMemAllocator::tagMemPool& pool = probe.getPools()[0];
    const auto* const pBlock = pool.pBlocks;
    EXPECT_EQ(pFirst, reinterpret_cast<const unsigned char*>(pBlock) + 24 + 16);
    EXPECT_EQ(probe.malloc(8), pFirst + 24);
    EXPECT_EQ(probe.malloc(8), pFirst + 48);
    EXPECT_EQ(pBlock->uiSize, 24u + 3 * 24u);
    EXPECT_EQ(pBlock->uiUnitCount, 3u);
    EXPECT_EQ(pBlock->uiUsedCount, 3u);
    EXPECT_EQ(pBlock->pNext, nullptr);
    EXPECT_EQ(pool.uiTotalCount, 3u);
}

TEST(CMemAllocator, LaterBlocksHaveTheGrowCountAndStandInFront) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 1, 2);
    probe.malloc(8);
    const CMemAllocator::tagMemPool& pool = probe.getPools()[0];
    const auto* const pOld = pool.pBlocks;
    const unsigned char* const pSecond = static_cast<unsigned char*>(probe.malloc(8));
    ASSERT_NE(pool.pBlocks, pOld);
    EXPECT_EQ(pool.pBlocks->pNext, pOld);
    EXPECT_EQ(pool.pBlocks->uiUnitCount, 2u);
    EXPECT_EQ(pool.pBlocks->uiUsedCount, 1u);
    EXPECT_EQ(pool.pBlocks->uiSize, 24u + 2 * 24u);
    EXPECT_EQ(pool.uiTotalCount, 3u);
    EXPECT_EQ(pSecond, reinterpret_cast<const unsigned char*>(pool.pBlocks) + 40);
}

TEST(CMemAllocator, InitialCountOfNothingUsesTheGrowCount) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 0, 5);
    probe.malloc(8);
    EXPECT_EQ(probe.getPools()[0].pBlocks->uiUnitCount, 5u);
    EXPECT_EQ(probe.getPools()[0].uiTotalCount, 5u);
}

TEST(CMemAllocator, BlockHeaderGrowsWithTheAlignment) {
    CProbe probe(16, 1);
    probe.createPool(0, 8, 2, 2);
    const unsigned char* const pFirst = static_cast<unsigned char*>(probe.malloc(8));
    EXPECT_EQ(pFirst, reinterpret_cast<const unsigned char*>(probe.getPools()[0].pBlocks) + 32 + 16);
    EXPECT_EQ(probe.malloc(8), pFirst + 32);
    EXPECT_EQ(probe.getPools()[0].pBlocks->uiSize, 32u + 2 * 32u);
}

TEST(CMemAllocator, ReleasedUnitsComeBackLastInFirstOut) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 2, 1);
    void* const pFirst = probe.malloc(8);
    void* const pSecond = probe.malloc(8);
    probe.free(pFirst);
    probe.free(pSecond);
    EXPECT_EQ(probe.getPools()[0].pFreeUnits, static_cast<unsigned char*>(pSecond) - 16);
    EXPECT_EQ(readBefore<unsigned char*>(pSecond, 8), static_cast<unsigned char*>(pFirst) - 16);
    EXPECT_EQ(readBefore<unsigned char*>(pFirst, 8), nullptr);
    EXPECT_EQ(probe.malloc(1), pSecond);
    EXPECT_EQ(probe.malloc(1), pFirst);
    EXPECT_EQ(probe.getPools()[0].pBlocks->uiUsedCount, 2u) << "carving never goes back";
}

TEST(CMemAllocator, DoubleFreeOfAUnitIsReportedAndTheFreeListStaysIntact) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 4, 1);
    void* const pFirst = probe.malloc(8);
    void* const pSecond = probe.malloc(8);
    const tagChildResult result = runInChild([&] {
        probe.free(pFirst);
        probe.free(pSecond);
        probe.free(pSecond);
        probe.free(pFirst);
        const bool bIntact = probe.malloc(8) == pSecond && probe.malloc(8) == pFirst && probe.malloc(8) != pFirst;
        return bIntact ? 0 : 1;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, invalidPointerLine(pSecond) + invalidPointerLine(pFirst));
}

TEST(CMemAllocator, ForeignPointerIsReportedAndLeftAlone) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 4, 1);
    alignas(16) unsigned char aryForeign[64] = {};
    const tagChildResult result = runInChild([&] {
        probe.free(aryForeign + 32);
        for (const unsigned char byte : aryForeign)
            if (byte != 0)
                return 1;
        return probe.getPools()[0].pFreeUnits ? 2 : 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, invalidPointerLine(aryForeign + 32));
}

TEST(CMemAllocator, OverwrittenHeaderIsReported) {
    CProbe probe;
    unsigned char* const pBlock = static_cast<unsigned char*>(probe.malloc(100));
    const tagChildResult result = runInChild([&] {
        pBlock[-8] ^= 1;
        probe.free(pBlock);
        pBlock[-8] ^= 1;
        probe.free(pBlock); // as it was, so it goes now
        return 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, invalidPointerLine(pBlock));
    probe.free(pBlock);
}

TEST(CMemAllocator, PoolWithoutUnitsIsReportedAndTheRequestBecomesABigBlock) {
    const tagChildResult result = runInChild([] {
        CProbe probe(4, 2);
        probe.createPool(0, 8, 0, 0);
        probe.createPool(1, 16, 4, 4);
        void* const pBlock = probe.malloc(8); // never from the next larger pool
        const bool bBig = pBlock && !readBefore<void*>(pBlock, 16) && !probe.getPools()[0].pBlocks;
        probe.free(pBlock);
        return bBig ? 0 : 1;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "[Warning][OrlixEngine] Allocate memory pool block failed (size = 24).\n");
}

TEST(CMemAllocator, SizesThatWrapAreFailedPoolBlocks) {
    const struct {
        unsigned int uiSize, uiCount;
        const char* szLine;
    } aryRow[] = {// 24 + 24 * 200000000 = 4800000024, of which 32 bits are printed
                  {8, 200000000, "[Warning][OrlixEngine] Allocate memory pool block failed (size = 505032728).\n"},
                  {UINT_MAX - 15, 1, "[Warning][OrlixEngine] Allocate memory pool block failed (size = 24).\n"}};
    for (const auto& row : aryRow) {
        const tagChildResult result = runInChild([&] {
            CProbe probe(4, 1);
            probe.createPool(0, row.uiSize, row.uiCount, 1);
            void* const pBlock = probe.malloc(8);
            return pBlock && !readBefore<void*>(pBlock, 16) ? 0 : 1;
        });
        EXPECT_EQ(result.iExitCode, 0);
        EXPECT_EQ(result.strOutput, row.szLine);
    }
}

TEST(CMemAllocator, BigSizeThatWrapsWithItsHeaderGivesNull) {
    CProbe probe(64, 0);
    for (const unsigned int uiSize : {UINT_MAX, UINT_MAX - 1, UINT_MAX - 63})
        EXPECT_EQ(probe.malloc(uiSize), nullptr) << uiSize;
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
TEST(CMemAllocator, PoolThatCannotGrowFallsThroughToTheSystemHeap) {
    const tagChildResult result = runInChild([] {
        CProbe probe(4, 1);
        probe.createPool(0, 8, 1, 10000000);
        void* const pFirst = probe.malloc(8);
        if (!pFirst || !limitMemory(100000000))
            return 1;
        void* const pSecond = probe.malloc(8);
        return pSecond && !readBefore<void*>(pSecond, 16) && probe.getPools()[0].uiTotalCount == 1 ? 0 : 2;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "[Warning][OrlixEngine] Allocate memory pool block failed (size = 240000024).\n");
}

TEST(CMemAllocator, FirstWarningWithoutMemoryForABufferSpoilsNothing) {
    const tagChildResult result = runInChild([] {
        constexpr std::size_t COUNT = 64, BYTES = 24;
        CProbe probe(4, 1);
        probe.createPool(0, 16, 1, 1);
        unsigned char* aryMarked[COUNT];
        for (unsigned char*& pMarked : aryMarked) {
            pMarked = static_cast<unsigned char*>(std::malloc(BYTES));
            std::memset(pMarked, 0x5A, BYTES);
        }
        if (!limitMemory(2000000))
            return 1;
        useUpMemory();
        std::free(aryMarked[COUNT / 2]); // what a buffer of no size gets, amidst the others
        aryMarked[COUNT / 2] = aryMarked[0];
        if (probe.malloc(16))
            return 2;
        for (const unsigned char* const pMarked : aryMarked)
            for (std::size_t i = 0; i < BYTES; ++i)
                if (pMarked[i] != 0x5A)
                    return 3;
        return 0;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "[Warning][OrlixEngine] Allocate memory pool block failed (size = 56).\n");
}

TEST(CMemAllocator, BigBlockWithoutMemoryGivesNullInSilence) {
    const tagChildResult result = runInChild([] {
        CProbe probe(4, 0);
        return limitMemory(100000000) && !probe.malloc(300000000) ? 0 : 1;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}
#endif

TEST(CMemAllocator, UnInitializeLeavesBigBlocksOnly) {
    CProbe probe(4, 1);
    probe.createPool(0, 8, 1, 1);
    for (int i = 0; i < 5; ++i)
        probe.malloc(8); // live units go with their blocks
    void* const pBefore = probe.malloc(100);
    probe.unInitialize();
    EXPECT_EQ(probe.getPoolCount(), 0u);
    EXPECT_EQ(probe.getPools(), nullptr);
    EXPECT_EQ(probe.findFitPool(8), nullptr);
    void* const pAfter = probe.malloc(8);
    EXPECT_EQ(readBefore<void*>(pAfter, 16), nullptr);
    probe.free(pAfter);
    probe.free(pBefore);
    probe.freeAllPool(); // a second time finds nothing
}

TEST(CMemAllocator, RandomUseNeverOverlapsAndNeverSpoilsABlock) {
    std::mt19937 random(20240607);
    CProbe probe(4, 64);
    for (unsigned int i = 0; i < 64; ++i)
        probe.createPool(i, 8 * (i + 1), i % 3, 1 + i % 7);
    struct tagLive {
        unsigned int uiSize;
        unsigned char byte;
    };
    std::map<unsigned char*, tagLive> mapLive;
    for (int i = 0; i < 60000; ++i) {
        if (mapLive.empty() || random() % 100 < 52) {
            const tagLive live{static_cast<unsigned int>(random() % 600), static_cast<unsigned char>(random())};
            auto* const pBlock = static_cast<unsigned char*>(probe.malloc(live.uiSize));
            ASSERT_NE(pBlock, nullptr);
            const auto itNext = mapLive.upper_bound(pBlock);
            if (itNext != mapLive.end()) {
                ASSERT_LE(pBlock + live.uiSize, itNext->first - 16);
            }
            if (itNext != mapLive.begin()) {
                ASSERT_LE(std::prev(itNext)->first + std::prev(itNext)->second.uiSize, pBlock - 16);
            }
            std::memset(pBlock, live.byte, live.uiSize);
            mapLive[pBlock] = live;
        } else {
            auto it = mapLive.begin();
            std::advance(it, static_cast<long>(random() % std::min<std::size_t>(mapLive.size(), 50)));
            for (unsigned int j = 0; j < it->second.uiSize; ++j)
                ASSERT_EQ(it->first[j], it->second.byte);
            probe.free(it->first);
            mapLive.erase(it);
        }
    }
    for (const auto& pair : mapLive)
        probe.free(pair.first);
}

TEST(CMemAllocator, ServesSeveralThreads) {
    CProbe probe(4, 2);
    probe.createPool(0, 8, 3, 3);
    probe.createPool(1, 64, 3, 3);
    std::thread aryThread[4];
    bool aryGood[4] = {};
    for (unsigned int uiThread = 0; uiThread < 4; ++uiThread)
        aryThread[uiThread] = std::thread([&, uiThread] {
            bool bGood = true;
            for (unsigned int i = 0; i < 2000; ++i) {
                unsigned char* aryBlock[8];
                for (unsigned int j = 0; j < 8; ++j) {
                    aryBlock[j] = static_cast<unsigned char*>(probe.malloc(j * 10));
                    std::memset(aryBlock[j], static_cast<int>(uiThread * 16 + j), j * 10);
                }
                for (unsigned int j = 0; j < 8; ++j) {
                    for (unsigned int k = 0; k < j * 10; ++k)
                        bGood = bGood && aryBlock[j][k] == uiThread * 16 + j;
                    probe.free(aryBlock[j]);
                }
            }
            aryGood[uiThread] = bGood;
        });
    for (unsigned int uiThread = 0; uiThread < 4; ++uiThread) {
        aryThread[uiThread].join();
        EXPECT_TRUE(aryGood[uiThread]);
    }
}
} // namespace
