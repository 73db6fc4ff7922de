#include <Orlix/foundation/MapCompare.h>

#include <gtest/gtest.h>

using namespace Orlix;

namespace {

TEST(MapCompare, NumbersByValue) {
    EXPECT_EQ(tagNumCompare<int>()(-1, 1), -1);
    EXPECT_EQ(tagNumCompare<int>()(1, 1), 0);
    EXPECT_EQ(tagNumCompare<int>()(2, 1), 1);
    EXPECT_EQ(tagNumCompare<unsigned int>()(0xFFFFFFFFu, 1), 1);
}
} // namespace
