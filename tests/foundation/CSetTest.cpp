#include <Orlix/foundation/CSet.h>

#include <gtest/gtest.h>

using namespace Orlix;

namespace {

TEST(CSet, HoldsEachKeyOnce) {
    CSet<int, tagNumCompare<int>> set;
    EXPECT_TRUE(set.add(5));
    EXPECT_FALSE(set.add(5));
    EXPECT_TRUE(set.add(-5));
    EXPECT_EQ(set.getCount(), 2u);
    EXPECT_TRUE(set.contains(5));
    EXPECT_FALSE(set.contains(0));
    EXPECT_TRUE(set.remove(5));
    EXPECT_FALSE(set.remove(5));
    EXPECT_FALSE(set.contains(5));
    set.clear();
    EXPECT_EQ(set.getCount(), 0u);
}
} // namespace
