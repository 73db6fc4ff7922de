#include <Orlix/memory/CMemAllocator.h>
#include <Orlix/memory/CMemManager.h>
#include <Orlix/memory/CMemory.h>
#include <Orlix/memory/IMemManagerListener.h>

#include "support/ChildProcess.h"
#include "support/MemoryLimit.h"
#include "support/PoolUnits.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <string>

using namespace Orlix;
using namespace OrlixTest;

namespace {

void* ownerOf(const void* pBlock) {
    void* pOwner = nullptr;
    std::memcpy(&pOwner, static_cast<const unsigned char*>(pBlock) - 16, sizeof(pOwner));
    return pOwner;
}

unsigned int checkWordOf(const void* pBlock) {
    unsigned int uiWord = 0;
    std::memcpy(&uiWord, static_cast<const unsigned char*>(pBlock) - 8, sizeof(uiWord));
    return uiWord;
}

unsigned int markOf(const void* pBlock) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pBlock) - 16) ^ 0x837A46C2;
}

unsigned char patternAt(unsigned int uiIndex) { return static_cast<unsigned char>(uiIndex * 7 + (uiIndex >> 9)); }

/** Writes the pattern from one index to another. */
void fill(void* pBlock, unsigned int uiFrom, unsigned int uiTo) {
    for (unsigned int i = uiFrom; i < uiTo; ++i)
        static_cast<unsigned char*>(pBlock)[i] = patternAt(i);
}

/** @return the first index below uiEnd that is not of the pattern; uiEnd if all are. */
unsigned int findSpoiled(const void* pBlock, unsigned int uiEnd) {
    unsigned int i = 0;
    while (i < uiEnd && static_cast<const unsigned char*>(pBlock)[i] == patternAt(i))
        ++i;
    return i;
}

TEST(CMemoryExtend, KeepsContentAndMarkAtEverySize) {
    unsigned int uiSize = 513;
    void* pBlock = CMemory::malloc(uiSize, 0);
    fill(pBlock, 0, uiSize);
    for (const unsigned int uiNext : {513u, 514u, 1500u, 70000u, 140000u, 1500000u, 40000000u, 41000000u}) {
        pBlock = CMemory::extend(pBlock, uiNext);
        ASSERT_NE(pBlock, nullptr) << uiNext;
        EXPECT_EQ(findSpoiled(pBlock, uiSize), uiSize) << uiNext;
        EXPECT_EQ(ownerOf(pBlock), nullptr) << uiNext;
        EXPECT_EQ(checkWordOf(pBlock), markOf(pBlock)) << uiNext;
        fill(pBlock, uiSize, uiNext);
        uiSize = uiNext;
    }
    CMemory::free(pBlock);
}

TEST(CMemoryExtend, HeaderOfAnotherAlignmentStaysInFront) {
    CMemAllocator allocator;
    allocator.initialize(64, 0);
    void* pBlock = allocator.malloc(1000);
    fill(pBlock, 0, 1000);
    pBlock = allocator.extend(pBlock, 5000000);
    ASSERT_NE(pBlock, nullptr);
    EXPECT_EQ(findSpoiled(pBlock, 1000), 1000u);
    EXPECT_EQ(checkWordOf(pBlock), markOf(pBlock));
    allocator.free(pBlock);
}

TEST(CMemoryExtend, UnitsOfPoolsAreLeftAlone) {
    for (const unsigned int uiSize : {0u, 8u, 512u}) {
        void* const pBlock = CMemory::malloc(uiSize, 0);
        const long lUnits = countLiveUnits();
        EXPECT_EQ(CMemory::extend(pBlock, 512), nullptr) << uiSize;
        EXPECT_EQ(CMemory::extend(pBlock, 5000), nullptr) << uiSize;
        EXPECT_EQ(countLiveUnits(), lUnits) << uiSize;
        EXPECT_NE(ownerOf(pBlock), nullptr) << uiSize;
        CMemory::free(pBlock);
    }
}

TEST(CMemoryExtend, SizeThatAPoolServesIsLeftToThePool) {
    CMemAllocator allocator;
    void* const pBlock = allocator.malloc(100); // no pools yet
    allocator.initialize(4, 1);
    allocator.createPool(0, 200, 1, 1);
    EXPECT_EQ(allocator.extend(pBlock, 200), nullptr);
    void* const pLarger = allocator.extend(pBlock, 201);
    ASSERT_NE(pLarger, nullptr);
    allocator.free(pLarger);
    allocator.unInitialize();
}

TEST(CMemoryExtend, SizeThatWrapsWithItsHeaderGivesNull) {
    void* const pBlock = CMemory::malloc(1000, 0);
    fill(pBlock, 0, 1000);
    EXPECT_EQ(CMemory::extend(pBlock, UINT_MAX), nullptr);
    EXPECT_EQ(CMemory::extend(pBlock, UINT_MAX - 15), nullptr);
    EXPECT_EQ(findSpoiled(pBlock, 1000), 1000u);
    CMemory::free(pBlock);
}

TEST(CMemoryExtend, BlockWithoutTheMarkIsLeftAloneInSilence) {
    alignas(16) unsigned char aryForeign[64] = {};
    const tagChildResult result = runInChild([&] { return CMemory::extend(aryForeign + 32, 5000) ? 1 : 0; });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}

#if !defined(ORLIX_TEST_ASAN) && !defined(ORLIX_TEST_TSAN) // both end the process when memory runs out
class CCountingListener : public IMemManagerListener {
public:
    void onMemoryShortage() override { ++m_iCalls; }
    int m_iCalls = 0;
};

TEST(CMemoryExtend, WithoutMemoryTheBlockStaysAndNobodyIsAsked) {
    const tagChildResult result = runInChild([] {
        CCountingListener listener;
        CMemManager::getInstance()->setListener(&listener);
        void* const pBlock = CMemory::malloc(1000, 0);
        fill(pBlock, 0, 1000);
        if (!limitMemory(100000000) || CMemory::extend(pBlock, 300000000))
            return 1;
        return findSpoiled(pBlock, 1000) == 1000 && checkWordOf(pBlock) == markOf(pBlock) && listener.m_iCalls == 0 ? 0
                                                                                                                    : 2;
    });
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, "");
}
#endif
} // namespace
