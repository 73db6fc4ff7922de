#pragma once

#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>

namespace OrlixTest {

/** Keeps the process from growing by more than uiExtraBytes from here on; for child processes only. */
inline bool limitMemory(unsigned long uiExtraBytes) {
    std::FILE* const pFile = std::fopen("/proc/self/statm", "r");
    unsigned long uiPages = 0;
    const bool bRead = pFile && std::fscanf(pFile, "%lu", &uiPages) == 1;
    if (pFile)
        std::fclose(pFile);
    const rlimit limit{uiPages * static_cast<unsigned long>(sysconf(_SC_PAGESIZE)) + uiExtraBytes, RLIM_INFINITY};
    return bRead && setrlimit(RLIMIT_AS, &limit) == 0;
}

inline bool unlimitMemory() {
    const rlimit limit{RLIM_INFINITY, RLIM_INFINITY};
    return setrlimit(RLIMIT_AS, &limit) == 0;
}

/** Takes all that the limited process can still have from the system heap, down to the smallest block. A thread that
 *  ended earlier leaves a reserve behind, and the heap tries only one of those for each request that fails. */
inline void useUpMemory() {
    constexpr int TRIES = 64;
    void* volatile pTaken = nullptr; // keeps the compiler from leaving the unused blocks out
    for (std::size_t uiSize = std::size_t{1} << 20; uiSize >= 8; uiSize = uiSize > 1024 ? uiSize / 2 : uiSize - 8)
        for (int iFailed = 0; iFailed < TRIES; iFailed = pTaken ? 0 : iFailed + 1)
            pTaken = std::malloc(uiSize);
}
} // namespace OrlixTest
