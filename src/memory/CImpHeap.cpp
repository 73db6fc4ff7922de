#include "memory/CImpHeap.h"

#include <malloc.h>

namespace Orlix {

void CImpHeap::mapLargeBlocks() noexcept {
#ifdef M_MMAP_THRESHOLD // of glibc; naming a size ends the raising
    constexpr int MAPPED_BYTES = 1 << 20;
    mallopt(M_MMAP_THRESHOLD, MAPPED_BYTES);
    // Twice as much may lie free at the heap's end, as the heap itself keeps it, or the blocks below that size would go
    // back to the system one by one.
    mallopt(M_TRIM_THRESHOLD, 2 * MAPPED_BYTES);
#endif
}
} // namespace Orlix
