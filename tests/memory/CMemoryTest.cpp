#include <Orlix/memory/CMemory.h>

#include "support/ChildProcess.h"
#include "support/Sanitizer.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

using namespace Orlix;
using namespace OrlixTest;

namespace {

TEST(CMemory, GivesBlocksOfAnySizeAlignedTo8Bytes) {
    for (unsigned int uiSize : {0u, 1u, 8u, 511u, 512u, 513u, 100000u}) {
        void* const pBlock = CMemory::malloc(uiSize, 0);
        ASSERT_NE(pBlock, nullptr) << uiSize;
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(pBlock) % 8, 0u) << uiSize;
        std::memset(pBlock, 0x5A, uiSize);
        CMemory::free(pBlock);
    }
}

TEST(CMemory, BlockComesFromAPoolUpTo512Bytes) {
    const struct {
        unsigned int uiSize;
        bool bPool;
    } aryRow[] = {{0, true}, {8, true}, {512, true}, {513, false}, {5000, false}};
    for (const auto& row : aryRow) {
        void* const pBlock = CMemory::malloc(row.uiSize, 3);
        void* pOwner = nullptr;
        std::memcpy(&pOwner, static_cast<unsigned char*>(pBlock) - 16, sizeof(pOwner));
        EXPECT_EQ(pOwner != nullptr, row.bPool) << row.uiSize;
        CMemory::free(pBlock);
    }
}

TEST(CMemory, FreedUnitIsTheNextOneOfItsSize) {
    void* const pBlock = CMemory::malloc(300, 0);
    CMemory::free(pBlock);
    void* const pAgain = CMemory::malloc(297, 0);
    EXPECT_EQ(pAgain, pBlock);
    CMemory::free(pAgain);
}

TEST(CMemory, ImpossibleSizeGivesNull) { EXPECT_EQ(CMemory::malloc(UINT_MAX, 0), nullptr); }

TEST(CMemory, NumbersNoClassWithoutAChecker) { EXPECT_EQ(CMemory::registClassName(L"CAnything"), 0u); }

TEST(CMemory, ClassBlockKeepsANumberAndAsksAgainForNone) {
    std::atomic<unsigned int> uiNone{0}, uiKnown{5};
    void* const pFirst = CMemory::mallocForClass(40, uiNone, L"CAnything");
    void* const pSecond = CMemory::mallocForClass(40, uiKnown, L"CAnything");
    EXPECT_NE(pFirst, nullptr);
    EXPECT_NE(pSecond, nullptr);
    EXPECT_EQ(uiNone, 0u);
    EXPECT_EQ(uiKnown, 5u);
    CMemory::free(pFirst);
    CMemory::free(pSecond);
}

TEST(CMemory, ClassBlockBeyond32BitsGivesNull) {
    std::atomic<unsigned int> uiID{0};
    EXPECT_EQ(CMemory::mallocForClass(std::size_t{UINT_MAX} + 1, uiID, L"CAnything"), nullptr);
    EXPECT_EQ(CMemory::mallocForClass(std::size_t{UINT_MAX} + 9, uiID, L"CAnything"), nullptr);
}

#ifndef ORLIX_TEST_ASAN // what stands in front of a foreign block is read on purpose, and the sanitizer stops there
TEST(CMemory, BlockOfTheSystemHeapIsReportedAndNotReleased) {
    auto* const pForeign = static_cast<unsigned char*>(std::malloc(64));
    std::memset(pForeign, 0x77, 64);
    const tagChildResult result = runInChild([&] {
        CMemory::free(pForeign);
        for (int i = 0; i < 64; ++i)
            if (pForeign[i] != 0x77)
                return 1;
        void* const pOther = std::malloc(64); // a released block would be the next one of its size
        return pOther == pForeign ? 2 : 0;
    });
    char aryLine[160];
    std::snprintf(aryLine, sizeof(aryLine),
                  "[Warning][OrlixEngine] Free(0x%x): Invalid Pointer, Maybe it had been freed or crashed.\n",
                  static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pForeign)));
    EXPECT_EQ(result.iExitCode, 0);
    EXPECT_EQ(result.strOutput, aryLine);
    std::free(pForeign);
}
#endif
} // namespace
