#include <Orlix/foundation/CArrayIndex.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

using namespace Orlix;

namespace {

std::vector<unsigned int> read(const CDataArray<unsigned int>& ary) {
    std::vector<unsigned int> vec;
    for (unsigned int i = 0; i < ary.getSize(); ++i)
        vec.push_back(ary[i]);
    return vec;
}

TEST(CArrayIndex, KeepsElementsDifferentAndInOrder) {
    CDataArray<unsigned int> ary;
    CArrayIndex<unsigned int> index(ary);
    EXPECT_EQ(index.find(5), -1);
    EXPECT_TRUE(index.add(5));
    EXPECT_TRUE(index.add(0));
    EXPECT_FALSE(index.add(5)) << "there already";
    EXPECT_EQ(read(ary), (std::vector<unsigned int>{5, 0}));
    EXPECT_FALSE(index.remove(1));
    EXPECT_TRUE(index.remove(5));
    EXPECT_EQ(read(ary), std::vector<unsigned int>{0});
    index.clear();
    EXPECT_EQ(ary.getSize(), 0u);
    EXPECT_EQ(index.find(0), -1);
}

TEST(CArrayIndex, FindsInLongArraysWhatTheArrayFinds) {
    for (const unsigned int uiSpan : {30u, 36u, 70u, 3000u}) { // around the length from which hashing begins
        std::mt19937 random(uiSpan);
        CDataArray<unsigned int> ary;
        CArrayIndex<unsigned int> index(ary);
        std::vector<unsigned int> vecModel;
        for (int i = 0; i < 20000; ++i) {
            const unsigned int uiElement = random() % uiSpan;
            const auto found = std::find(vecModel.begin(), vecModel.end(), uiElement);
            // Long stretches of growing and of shrinking, so that all lengths come up in both directions.
            if (random() % 4 == 0 || i / 5000 % 2 == 0) {
                ASSERT_EQ(index.add(uiElement), found == vecModel.end());
                if (found == vecModel.end())
                    vecModel.push_back(uiElement);
            } else {
                ASSERT_EQ(index.remove(uiElement), found != vecModel.end());
                if (found != vecModel.end())
                    vecModel.erase(found);
            }
            const unsigned int uiAsked = random() % uiSpan;
            ASSERT_EQ(index.find(uiAsked), ary.find(uiAsked)) << "step " << i;
            if (i % 100 == 0) {
                ASSERT_EQ(read(ary), vecModel) << "step " << i;
            }
        }
        ASSERT_EQ(read(ary), vecModel);
    }
}

TEST(CArrayIndex, FollowsAnArrayThatWasChangedDirectly) {
    CDataArray<unsigned int> ary;
    CArrayIndex<unsigned int> index(ary);
    for (unsigned int i = 0; i < 100; ++i)
        index.add(i);
    ary.add(1000);
    EXPECT_EQ(index.find(1000), 100);
    EXPECT_TRUE(index.add(1001));
    ary.removeAt(0);
    EXPECT_EQ(index.find(0), -1);
    EXPECT_EQ(index.find(1001), 100);
    ary.clear();
    EXPECT_EQ(index.find(50), -1);
    EXPECT_TRUE(index.add(50));
    EXPECT_EQ(index.find(50), 0);
}

TEST(CArrayIndex, FindsPointersToo) {
    std::vector<int> vec(200);
    CDataArray<int*> ary;
    CArrayIndex<int*> index(ary);
    for (int& iElement : vec)
        EXPECT_TRUE(index.add(&iElement));
    for (int i = 0; i < 200; ++i)
        EXPECT_EQ(index.find(&vec[static_cast<std::size_t>(i)]), i);
    EXPECT_TRUE(index.remove(&vec[0]));
    EXPECT_EQ(index.find(&vec[199]), 198);
    EXPECT_EQ(index.find(nullptr), -1);
}

TEST(CArrayIndex, RemovesByPlace) {
    CDataArray<unsigned int> ary;
    CArrayIndex<unsigned int> index(ary);
    for (unsigned int i = 0; i < 100; ++i)
        index.add(i);
    for (unsigned int i = 0; i < 100; ++i) { // always the first one, so that all others move
        EXPECT_EQ(index.find(99), static_cast<int>(99 - i));
        index.removeAt(0);
        EXPECT_EQ(index.find(i), -1);
    }
    EXPECT_EQ(ary.getSize(), 0u);
}
} // namespace
