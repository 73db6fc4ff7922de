#pragma once

#include <pthread.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

/** The least that a block costs: a free list per size under one recursive mutex, with the mark in front of each block
 *  that free tests. Everything is visible to the compiler, nothing is called through an object. */
namespace FloorHeap {

constexpr std::uint32_t MARK = 0x5AFEB10C;
constexpr std::size_t HEADER = 16;
constexpr std::size_t SIZE_MOST = 512; // larger ones come from the C library, without the mutex

inline pthread_mutex_t g_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
inline void* g_aryFree[SIZE_MOST / 8 + 1]; // heads of the free lists, one per eight bytes

inline void* allocate(std::size_t uiSize) {
    const std::uint32_t uiList = static_cast<std::uint32_t>((uiSize + 7) / 8);
    char* pUnit = nullptr;
    if (uiSize > SIZE_MOST) {
        pUnit = static_cast<char*>(std::malloc(HEADER + uiSize));
    } else {
        pthread_mutex_lock(&g_mutex);
        pUnit = static_cast<char*>(g_aryFree[uiList]);
        if (pUnit)
            std::memcpy(&g_aryFree[uiList], pUnit + HEADER, sizeof(void*));
        else
            pUnit = static_cast<char*>(std::malloc(HEADER + uiList * 8));
        pthread_mutex_unlock(&g_mutex);
    }
    std::memcpy(pUnit, &MARK, sizeof(MARK));
    std::memcpy(pUnit + sizeof(MARK), &uiList, sizeof(uiList));
    return pUnit + HEADER;
}

inline void release(void* pBlock) {
    char* const pUnit = static_cast<char*>(pBlock) - HEADER;
    std::uint32_t aryHeader[2];
    std::memcpy(aryHeader, pUnit, sizeof(aryHeader));
    if (aryHeader[0] != MARK)
        return;
    aryHeader[0] = 0;
    std::memcpy(pUnit, aryHeader, sizeof(aryHeader[0]));
    if (aryHeader[1] > SIZE_MOST / 8) {
        std::free(pUnit);
        return;
    }
    pthread_mutex_lock(&g_mutex);
    std::memcpy(pBlock, &g_aryFree[aryHeader[1]], sizeof(void*));
    g_aryFree[aryHeader[1]] = pUnit;
    pthread_mutex_unlock(&g_mutex);
}
} // namespace FloorHeap
