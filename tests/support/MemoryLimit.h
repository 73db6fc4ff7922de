#pragma once

#include <cstdio>
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
} // namespace OrlixTest
