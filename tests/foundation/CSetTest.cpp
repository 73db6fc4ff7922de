#include <Orlix/foundation/CSet.h>

#include <gtest/gtest.h>

#include <type_traits>

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

TEST(CSet, HidesTheMapItIs) {
    using CNumberSet = CSet<int, tagNumCompare<int>>;
    static_assert(!std::is_convertible_v<CNumberSet*, CObject*>);
    CNumberSet* const pSet = new CNumberSet;
    pSet->add(1);
    delete pSet;
}

TEST(CSet, FollowsItsComparator) {
    CSet<CString, tagStringCompareIC> set;
    EXPECT_TRUE(set.add(L"Word"));
    EXPECT_FALSE(set.add(L"wORD"));
    EXPECT_TRUE(set.contains(L"word"));
}
} // namespace
