#pragma once

namespace Orlix {

/** The system's heap, which the whole process shares. */
class CImpHeap {
public:
    /** Gives each block of a MiB and more pages of its own for good: only such a block grows without a copy, and its
     *  pages go back when it is freed. Left to itself the system's heap raises that size to that of the largest block
     *  freed so far, up to 32 MiB, and a block below it is copied when it grows. */
    static void mapLargeBlocks() noexcept;
};
} // namespace Orlix
