#pragma once

#include <Orlix/foundation/CSyncObject.h>

#include <cstdint>

namespace Orlix {

/** Serves small blocks from pools of equal units, and large ones from the system heap.
 *
 *  Set it up in this order: construct, initialize, one createPool per index in ascending size. Then malloc and free
 *  from any thread; unInitialize before the destruction. Memory of a pool never goes back to the system heap before
 *  unInitialize. Ownership: blocks belong to the caller until free. */
class ORLIX_API CMemAllocator {
    ORLIX_HEAP_CLASS(L"CMemAllocator")

public:
    /** Starts every malloc block of a pool; its units follow behind it. */
    struct tagMemPoolBlock {
        unsigned int uiSize; // bytes of the whole block
        unsigned int uiUnitCount;
        unsigned int uiUsedCount; // units carved so far, which never goes back
        tagMemPoolBlock* pNext;   // the older block
    };

    /** One size of units. */
    struct tagMemPool {
        unsigned int uiUnitSize; // data size plus the unit's header
        unsigned int uiDataSize; // the largest request this pool serves
        unsigned int uiInitialCount;
        unsigned int uiGrowCount;
        unsigned int uiTotalCount; // units in all its blocks
        tagMemPoolBlock* pBlocks;  // newest first; only the newest is ever carved
        unsigned char* pFreeUnits; // headers of released units, last in first out
    };

    /** Has no pools yet: every request is a big block. */
    CMemAllocator();
    CMemAllocator(const CMemAllocator&) = delete;
    CMemAllocator& operator=(const CMemAllocator&) = delete;
    /** Does not release the pools: call unInitialize before. */
    virtual ~CMemAllocator();

    /** Makes an empty pool table. Without memory for it there are no pools.
     *  @param uiAlignment of the units in bytes, rounded up to an even number; 0 keeps the default of 4, and so
     *  does one that does not fit 32 bits with the headers. */
    void initialize(unsigned int uiAlignment, unsigned int uiPoolCount);

    /** Describes one pool; it takes no memory before its first use. Not beside malloc or free.
     *  @param uiIndex place in the table; at or past its end nothing happens.
     *  @param uiSize bytes, rounded up to the alignment. @param uiInitialCount units in the first block, 0 for
     *  uiGrowCount. @param uiGrowCount units in each later one. */
    void createPool(unsigned int uiIndex, unsigned int uiSize, unsigned int uiInitialCount, unsigned int uiGrowCount);

    /** Takes a block from the smallest pool that fits, from the system heap when there is none or when that pool
     *  cannot grow. @return null without memory, and for a size that does not fit 32 bits with its header. */
    void* malloc(unsigned int uiSize);

    /** Gives a block back. A block that does not carry the mark of a live one (foreign, overwritten, freed before) is
     *  reported on standard output and left alone. @param pBlock never null: what precedes it is read untested. */
    void free(void* pBlock);

    /** Makes a big block larger; the system moves its pages instead of copying them where it can.
     *  @param pBlock as for free; it must be no larger than uiSize.
     *  @return the block, which may have moved; null, and it stays as it was, without memory, for a unit of a pool, for
     *  a size that a pool serves, and for a block without the mark of a live one. */
    void* extend(void* pBlock, unsigned int uiSize);

    /** Releases all pools, live units included; from then on every request is a big block. */
    void unInitialize();

    /** @return the smallest pool that serves uiSize; null if there is none. Of pools of equal size any may come. */
    tagMemPool* findFitPool(unsigned int uiSize);

    /** One unit of a pool, grown by a block where needed. @return null if it cannot grow. */
    void* allocUnit(tagMemPool* pPool);

    /** Grows a pool by one block; the lock must be held. A failure is reported on standard output.
     *  @return false if there is no memory or the block would hold no unit. */
    bool addPoolBlock(tagMemPool* pPool);

    /** Frees the blocks of all pools and the table. */
    void freeAllPool();

protected:
    tagMemPool* m_pPools; // owned, ascending by data size
    unsigned int m_uiPoolCount;
    unsigned int m_uiAlignmentMask;
    unsigned int m_uiPoolBlockHeaderSize;
    unsigned int m_uiBigBlockHeaderSize;
    CSyncObject m_syncPools; // guards what changes in the pools; the table itself is fixed after the set-up

private:
    tagMemPool* searchFitPool(unsigned int uiSize);
    void* allocBigBlock(unsigned int uiSize);
    void* markBigBlock(void* pMemory);
    unsigned char* carveUnit(tagMemPool* pPool);
};
} // namespace Orlix
