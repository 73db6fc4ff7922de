#pragma once

#include <cstddef>
#include <malloc.h>

namespace OrlixTest {

/** What ten more runs of fnBody leave on the system heap, in bytes, once a first one has filled what stays filled.
 *  Blocks of more than 512 bytes are seen, for smaller ones come from pools. A sanitizer's heap shows nothing here, but
 *  the address sanitizer reports such blocks at exit. */
template <class F> std::size_t getLeftOnHeap(F fnBody) {
    fnBody();
    const std::size_t uiBefore = mallinfo2().uordblks;
    for (int i = 0; i < 10; ++i)
        fnBody();
    return mallinfo2().uordblks - uiBefore;
}
} // namespace OrlixTest
