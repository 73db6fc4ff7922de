#pragma once

#include <malloc.h>

/** From now on the C library's heap keeps what it got from the system. Otherwise large blocks cost page faults or not
 *  according to which of them happens to lie at the end of the heap, which has nothing to do with who asked for them.
 */
inline void keepHeap() {
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
}
