#include <Orlix/memory/CMemAllocator.h>
#include <Orlix/memory/CMemManager.h>

#include <gtest/gtest.h>

#include <cstring>

// Every test gives back the pool units it took. The address sanitizer does not see them, since a pool's block stays
// reachable whatever becomes of its units.

using namespace Orlix;

namespace {

class CAllocatorAccess : public CMemAllocator {
public:
    static long countLiveUnits(const CMemAllocator& allocator) {
        long lCount = 0;
        for (unsigned int i = 0; i < allocator.*(&CAllocatorAccess::m_uiPoolCount); ++i)
            lCount += countLiveUnits((allocator.*(&CAllocatorAccess::m_pPools))[i]);
        return lCount;
    }

private:
    static long countLiveUnits(const tagMemPool& pool) {
        long lCount = 0;
        for (const tagMemPoolBlock* pBlock = pool.pBlocks; pBlock; pBlock = pBlock->pNext)
            lCount += pBlock->uiUsedCount;
        for (const unsigned char* pUnit = pool.pFreeUnits; pUnit; --lCount)
            std::memcpy(&pUnit, pUnit + 8, sizeof(pUnit));
        return lCount;
    }
};

class CManagerAccess : public CMemManager {
public:
    static long countLiveUnits() {
        return CAllocatorAccess::countLiveUnits(*(getInstance()->*(&CManagerAccess::m_pAllocator)));
    }
};

class CLeakListener : public testing::EmptyTestEventListener {
public:
    void OnTestStart(const testing::TestInfo&) override { m_lBefore = CManagerAccess::countLiveUnits(); }
    void OnTestEnd(const testing::TestInfo&) override {
        EXPECT_EQ(CManagerAccess::countLiveUnits(), m_lBefore) << "units of the pools that live before and after";
    }

private:
    long m_lBefore = 0;
};

[[maybe_unused]] const int s_iRegistered = (testing::UnitTest::GetInstance()->listeners().Append(new CLeakListener), 0);
} // namespace
