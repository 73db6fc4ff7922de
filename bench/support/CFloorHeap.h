#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

/** The least that a block of the library's memory costs: a free list per size under one recursive mutex, with the mark
 *  in front of each block that free tests. Larger blocks come from the C library, without the mutex. */
class CFloorHeap {
public:
    static void* allocate(std::size_t uiSize) {
        const std::uint32_t uiList = uiSize <= LARGEST_UNIT ? static_cast<std::uint32_t>((uiSize + 7) / 8) : BIG_BLOCK;
        if (uiList == BIG_BLOCK)
            return mark(static_cast<char*>(std::malloc(HEADER + uiSize)), uiList);
        pthread_mutex_lock(&s_mutex);
        char* pUnit = static_cast<char*>(s_aryFree[uiList]);
        if (pUnit)
            std::memcpy(&s_aryFree[uiList], pUnit + HEADER, sizeof(void*));
        else
            pUnit = static_cast<char*>(std::malloc(HEADER + uiList * 8));
        void* const pBlock = mark(pUnit, uiList);
        pthread_mutex_unlock(&s_mutex);
        return pBlock;
    }

    static void release(void* pBlock) {
        char* const pUnit = static_cast<char*>(pBlock) - HEADER;
        std::uint32_t aryHeader[2];
        std::memcpy(aryHeader, pUnit, sizeof(aryHeader));
        if (aryHeader[0] != MARK)
            return;
        aryHeader[0] = 0;
        std::memcpy(pUnit, aryHeader, sizeof(aryHeader[0]));
        if (aryHeader[1] == BIG_BLOCK) {
            std::free(pUnit);
            return;
        }
        pthread_mutex_lock(&s_mutex);
        std::memcpy(pBlock, &s_aryFree[aryHeader[1]], sizeof(void*));
        s_aryFree[aryHeader[1]] = pUnit;
        pthread_mutex_unlock(&s_mutex);
    }

private:
    static constexpr std::size_t HEADER = 16;
    static constexpr std::size_t LARGEST_UNIT = 512;
    static constexpr std::uint32_t BIG_BLOCK = 65;
    static constexpr std::uint32_t MARK = 0x5AFEB10C;

    static inline pthread_mutex_t s_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
    static inline void* s_aryFree[BIG_BLOCK]; // heads of the free lists, one per eight bytes

    static void* mark(char* pUnit, std::uint32_t uiList) {
        std::memcpy(pUnit, &MARK, sizeof(MARK));
        std::memcpy(pUnit + sizeof(MARK), &uiList, sizeof(uiList));
        return pUnit + HEADER;
    }
};
