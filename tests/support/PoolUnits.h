#pragma once

#include <Orlix/memory/CMemAllocator.h>
#include <Orlix/memory/CMemManager.h>

#include <cstring>

namespace OrlixTest {

class CAllocatorAccess : public Orlix::CMemAllocator {
public:
    static long countLiveUnits(const Orlix::CMemAllocator& allocator) {
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

class CManagerAccess : public Orlix::CMemManager {
public:
    static long countLiveUnits() {
        return CAllocatorAccess::countLiveUnits(*(getInstance()->*(&CManagerAccess::m_pAllocator)));
    }
};

/** Units of the pools that are in use. */
inline long countLiveUnits() { return CManagerAccess::countLiveUnits(); }
} // namespace OrlixTest
