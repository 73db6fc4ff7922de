#pragma once

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace OrlixTest {

inline std::ptrdiff_t countThreads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator());
}

/** The threads that the program always has: its own, and what a sanitizer starts behind the first of others. Call it
 *  while there are no others. */
inline std::ptrdiff_t countOwnThreads() {
    std::thread([] {}).join();
    std::ptrdiff_t iLeast = countThreads();
    for (int i = 0; i < 100; ++i) // the joined one may still be on its way out
        iLeast = std::min(iLeast, countThreads());
    return iLeast;
}

/** Before a fork: lets threads that have ended, but that nobody joins, leave the system. One that is still about to go
 *  may hold a lock of a sanitizer, and then the child hangs. The first call comes before the threads. */
inline void awaitSingleThread() {
    static const std::ptrdiff_t s_iLeast = countOwnThreads();
    const auto timeEnd = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (countThreads() > s_iLeast && std::chrono::steady_clock::now() < timeEnd)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
}
} // namespace OrlixTest
