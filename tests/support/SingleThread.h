#pragma once

#include "support/Sanitizer.h"

#include <chrono>
#include <filesystem>
#include <iterator>
#include <thread>

namespace OrlixTest {

#ifdef ORLIX_TEST_TSAN
constexpr std::ptrdiff_t THREADS_LEAST = 2; // the sanitizer has one of its own
#else
constexpr std::ptrdiff_t THREADS_LEAST = 1;
#endif

/** Before a fork: lets threads that have ended, but that nobody joins, leave the system. One that is still about to go
 *  may hold a lock of a sanitizer, and then the child hangs. */
inline void awaitSingleThread() {
    const auto timeEnd = std::chrono::steady_clock::now() + std::chrono::seconds(5);
    while (std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                         std::filesystem::directory_iterator()) > THREADS_LEAST &&
           std::chrono::steady_clock::now() < timeEnd)
        std::this_thread::sleep_for(std::chrono::microseconds(100));
}
} // namespace OrlixTest
