#include <Orlix/memory/CMemAllocator.h>

#include <gtest/gtest.h>

using namespace Orlix;

namespace {

TEST(CMemAllocator, ReleasedUnitsComeBackLastInFirstOut) {
    CMemAllocator allocator;
    allocator.initialize(4, 1);
    allocator.createPool(0, 8, 2, 1);
    void* const pFirst = allocator.malloc(8);
    void* const pSecond = allocator.malloc(8);
    allocator.free(pFirst);
    allocator.free(pSecond);
    EXPECT_EQ(allocator.malloc(1), pSecond);
    EXPECT_EQ(allocator.malloc(1), pFirst);
    allocator.unInitialize();
}
} // namespace
