#include <Orlix/memory/CMemAllocator.h>

#include <Orlix/foundation/CAutoSync.h>

#include "memory/PoolGuard.h"

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <cwchar>

namespace Orlix {
namespace {

// In front of every block: the owning pool (null for a big block), then the check word. In a released unit the link
// to the next one takes the place of the check word, so that a live block and nothing else passes the check.
constexpr unsigned int UNIT_HEADER_SIZE = 16;
constexpr unsigned int CHECK_WORD_OFFSET = 8;
constexpr unsigned int CHECK_WORD_KEY = 0x837A46C2;

// The steps of the manager's own table: with it the first guess at a pool is always right.
constexpr unsigned int USUAL_POOL_STEP = 8;

using tagMemPool = CMemAllocator::tagMemPool;
using tagMemPoolBlock = CMemAllocator::tagMemPoolBlock;

template <class T> T load(const unsigned char* pFrom) {
    T value;
    std::memcpy(&value, pFrom, sizeof(T));
    return value;
}

template <class T> void store(unsigned char* pTo, T value) { std::memcpy(pTo, &value, sizeof(T)); }

unsigned int getCheckWord(const unsigned char* pHeader) {
    return static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pHeader)) ^ CHECK_WORD_KEY;
}

bool isLive(const unsigned char* pHeader) {
    return load<unsigned int>(pHeader + CHECK_WORD_OFFSET) == getCheckWord(pHeader);
}

void* markLive(unsigned char* pHeader) {
    store(pHeader + CHECK_WORD_OFFSET, getCheckWord(pHeader));
    return pHeader + UNIT_HEADER_SIZE;
}

// The system's wide stream takes its buffers with its first line, and without memory for the narrow one it writes
// behind a wide one of no size. Warnings come just then, so here it gets a buffer that needs no memory.
void lendBufferToStdout() {
    static char s_aryBuffer[1024];
    if (std::fwide(stdout, 0) != 0)
        return;                                  // it has had its first line
    void* volatile pProbe = std::malloc(BUFSIZ); // volatile, or a compiler takes the probe for needless
    if (!pProbe)
        std::setvbuf(stdout, s_aryBuffer, _IOLBF, sizeof(s_aryBuffer));
    std::free(pProbe);
}

void printWarning(const wchar_t* szFormat, unsigned int uiValue) {
    flockfile(stdout);
    lendBufferToStdout();
    std::wprintf(szFormat, uiValue);
    funlockfile(stdout);
}

void freeBlocks(tagMemPool& pool) {
    while (tagMemPoolBlock* const pBlock = pool.pBlocks) {
        pool.pBlocks = pBlock->pNext;
        openBytes(pBlock, pBlock->uiSize);
        std::free(pBlock);
    }
}
} // namespace

CMemAllocator::CMemAllocator()
    : m_pPools(nullptr), m_uiPoolCount(0), m_uiAlignmentMask(3), m_uiPoolBlockHeaderSize(24),
      m_uiBigBlockHeaderSize(16) {}

CMemAllocator::~CMemAllocator() = default;

void CMemAllocator::initialize(unsigned int uiAlignment, unsigned int uiPoolCount) {
    freeAllPool();
    const unsigned int uiEven = (uiAlignment + 1) & ~1u;
    // An alignment so large that the sums below wrap would leave no room for the headers: keep what was there.
    if (uiEven != 0 && uiEven <= UINT_MAX - 39) {
        m_uiAlignmentMask = uiEven - 1;
        m_uiBigBlockHeaderSize = (uiEven + 15) & (0u - uiEven);
        m_uiPoolBlockHeaderSize = ((uiEven + 39) & (0u - uiEven)) - 16;
    }
    if (uiPoolCount == 0)
        return;
    m_pPools = static_cast<tagMemPool*>(std::calloc(uiPoolCount, sizeof(tagMemPool)));
    if (m_pPools)
        m_uiPoolCount = uiPoolCount;
}

void CMemAllocator::createPool(unsigned int uiIndex, unsigned int uiSize, unsigned int uiInitialCount,
                               unsigned int uiGrowCount) {
    if (uiIndex >= m_uiPoolCount)
        return;
    tagMemPool& pool = m_pPools[uiIndex];
    pool.uiUnitSize = (m_uiAlignmentMask + uiSize + UNIT_HEADER_SIZE) & ~m_uiAlignmentMask;
    pool.uiDataSize = pool.uiUnitSize - UNIT_HEADER_SIZE; // rounding up benefits the caller
    pool.uiInitialCount = uiInitialCount;
    pool.uiGrowCount = uiGrowCount;
    pool.uiTotalCount = 0;
    pool.pBlocks = nullptr;
    pool.pFreeUnits = nullptr;
}

void* CMemAllocator::malloc(unsigned int uiSize) {
    if (tagMemPool* const pPool = findFitPool(uiSize)) {
        if (void* const pBlock = allocUnit(pPool)) {
            openBytes(pBlock, uiSize);
            return pBlock;
        }
    }
    return allocBigBlock(uiSize);
}

void* CMemAllocator::allocBigBlock(unsigned int uiSize) {
    if (uiSize > UINT_MAX - m_uiBigBlockHeaderSize)
        return nullptr;
    return markBigBlock(std::malloc(uiSize + m_uiBigBlockHeaderSize));
}

/** Writes the header of a block of the system heap. @return behind it; null for null. */
void* CMemAllocator::markBigBlock(void* pMemory) {
    if (!pMemory)
        return nullptr;
    unsigned char* const pHeader = static_cast<unsigned char*>(pMemory) + m_uiBigBlockHeaderSize - UNIT_HEADER_SIZE;
    store<tagMemPool*>(pHeader, nullptr);
    return markLive(pHeader);
}

void CMemAllocator::free(void* pBlock) {
    unsigned char* const pHeader = static_cast<unsigned char*>(pBlock) - UNIT_HEADER_SIZE;
    if (!isLive(pHeader)) {
        printWarning(L"[Warning][OrlixEngine] Free(0x%x): Invalid Pointer, Maybe it had been freed or crashed.\n",
                     static_cast<unsigned int>(reinterpret_cast<std::uintptr_t>(pBlock)));
        return;
    }
    tagMemPool* const pPool = load<tagMemPool*>(pHeader);
    if (!pPool) {
        std::free(static_cast<unsigned char*>(pBlock) - m_uiBigBlockHeaderSize);
        return;
    }
    guardBytes(pBlock, pPool->uiDataSize);
    const CAutoSync sync(m_syncPools);
    store(pHeader + CHECK_WORD_OFFSET, pPool->pFreeUnits);
    pPool->pFreeUnits = pHeader;
}

void* CMemAllocator::extend(void* pBlock, unsigned int uiSize) {
    unsigned char* const pHeader = static_cast<unsigned char*>(pBlock) - UNIT_HEADER_SIZE;
    if (!isLive(pHeader) || load<tagMemPool*>(pHeader) || findFitPool(uiSize) ||
        uiSize > UINT_MAX - m_uiBigBlockHeaderSize)
        return nullptr;
    void* const pMemory = static_cast<unsigned char*>(pBlock) - m_uiBigBlockHeaderSize;
    return markBigBlock(std::realloc(pMemory, uiSize + m_uiBigBlockHeaderSize));
}

void CMemAllocator::unInitialize() { freeAllPool(); }

CMemAllocator::tagMemPool* CMemAllocator::findFitPool(unsigned int uiSize) {
    const unsigned int uiGuess = (uiSize - (uiSize != 0)) / USUAL_POOL_STEP;
    if (uiGuess < m_uiPoolCount && m_pPools[uiGuess].uiDataSize >= uiSize &&
        (uiGuess == 0 || m_pPools[uiGuess - 1].uiDataSize < uiSize) &&
        (uiGuess + 1 == m_uiPoolCount || m_pPools[uiGuess + 1].uiDataSize > uiSize))
        return &m_pPools[uiGuess]; // the only one that the search could stop at
    return searchFitPool(uiSize);
}

// Of several pools with exactly this size it is the last of the table or the first one met, not the first in order.
CMemAllocator::tagMemPool* CMemAllocator::searchFitPool(unsigned int uiSize) {
    if (m_uiPoolCount == 0 || m_pPools[m_uiPoolCount - 1].uiDataSize < uiSize)
        return nullptr;
    if (m_pPools[m_uiPoolCount - 1].uiDataSize == uiSize)
        return &m_pPools[m_uiPoolCount - 1];
    unsigned int uiLow = 0;
    unsigned int uiEnd = m_uiPoolCount; // one past the last candidate, so that it never falls below 0
    while (uiLow < uiEnd) {
        const unsigned int uiMiddle = uiLow + (uiEnd - 1 - uiLow) / 2;
        const unsigned int uiDataSize = m_pPools[uiMiddle].uiDataSize;
        if (uiDataSize == uiSize)
            return &m_pPools[uiMiddle];
        if (uiDataSize < uiSize)
            uiLow = uiMiddle + 1;
        else
            uiEnd = uiMiddle;
    }
    return &m_pPools[uiLow];
}

void* CMemAllocator::allocUnit(tagMemPool* pPool) {
    const CAutoSync sync(m_syncPools);
    unsigned char* pHeader = pPool->pFreeUnits;
    if (pHeader) {
        pPool->pFreeUnits = load<unsigned char*>(pHeader + CHECK_WORD_OFFSET); // the owner still stands
        // The next request reads and writes it, and until then there is time to fetch it.
        __builtin_prefetch(pPool->pFreeUnits, 1);
    } else {
        pHeader = carveUnit(pPool);
        if (!pHeader)
            return nullptr;
    }
    return markLive(pHeader);
}

unsigned char* CMemAllocator::carveUnit(tagMemPool* pPool) {
    tagMemPoolBlock* pBlock = pPool->pBlocks;
    if (!pBlock || pBlock->uiUsedCount >= pBlock->uiUnitCount) {
        if (!addPoolBlock(pPool))
            return nullptr;
        pBlock = pPool->pBlocks;
    }
    unsigned char* const pHeader = reinterpret_cast<unsigned char*>(pBlock) + m_uiPoolBlockHeaderSize +
                                   std::size_t(pBlock->uiUsedCount) * pPool->uiUnitSize;
    ++pBlock->uiUsedCount;
    openBytes(pHeader, UNIT_HEADER_SIZE);
    store(pHeader, pPool);
    return pHeader;
}

bool CMemAllocator::addPoolBlock(tagMemPool* pPool) {
    const bool bFirst = !pPool->pBlocks && pPool->uiInitialCount != 0;
    const unsigned int uiCount = bFirst ? pPool->uiInitialCount : pPool->uiGrowCount;
    const std::uint64_t uiSize =
        ((m_uiAlignmentMask + 40) & ~m_uiAlignmentMask) + std::uint64_t(pPool->uiUnitSize) * uiCount - UNIT_HEADER_SIZE;
    // No units, a unit size that wrapped in createPool, or a block of 4 GiB and more: no block.
    const bool bPossible = uiCount != 0 && pPool->uiUnitSize >= UNIT_HEADER_SIZE && uiSize <= UINT_MAX;
    auto* const pBlock = static_cast<tagMemPoolBlock*>(bPossible ? std::malloc(uiSize) : nullptr);
    if (!pBlock) {
        printWarning(L"[Warning][OrlixEngine] Allocate memory pool block failed (size = %u).\n",
                     static_cast<unsigned int>(uiSize));
        return false;
    }
    pBlock->uiSize = static_cast<unsigned int>(uiSize);
    pBlock->uiUnitCount = uiCount;
    pBlock->uiUsedCount = 0;
    pBlock->pNext = pPool->pBlocks;
    pPool->pBlocks = pBlock;
    pPool->uiTotalCount += uiCount;
    guardBytes(reinterpret_cast<unsigned char*>(pBlock) + m_uiPoolBlockHeaderSize,
               pBlock->uiSize - m_uiPoolBlockHeaderSize);
    return true;
}

void CMemAllocator::freeAllPool() {
    for (unsigned int i = 0; i < m_uiPoolCount; ++i)
        freeBlocks(m_pPools[i]);
    std::free(m_pPools);
    m_pPools = nullptr;
    m_uiPoolCount = 0;
}
} // namespace Orlix
