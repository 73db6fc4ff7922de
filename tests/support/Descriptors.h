#pragma once

#include <cstddef>
#include <filesystem>
#include <iterator>

namespace OrlixTest {

/** The open descriptors of the process, and always the same one more for the look itself. */
inline std::ptrdiff_t countDescriptors() {
    return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), std::filesystem::directory_iterator());
}
} // namespace OrlixTest
