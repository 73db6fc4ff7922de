#pragma once

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace OrlixTest {

inline std::ptrdiff_t countThreads() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/task"), std::filesystem::directory_iterator());
}

/** Of the program before main: its own, and what a sanitizer has. */
inline const std::ptrdiff_t THREADS_LEAST = countThreads();

/** Before a fork: lets threads that have ended, but that nobody joins, leave the system. One that is still about to go
 *  may hold a lock of a sanitizer, and then the child hangs. */
inline void awaitSingleThread() {
    const auto timeEnd = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (countThreads() > THREADS_LEAST && std::chrono::steady_clock::now() < timeEnd)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
}
} // namespace OrlixTest
